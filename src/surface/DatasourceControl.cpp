#include "surface/DatasourceControl.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/PaneGeometry.h"
#include "model/PropertyForms.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/MessageCatalog.h"
#include "surface/DragData.h"
#include "surface/LinkControl.h"
#include "surface/ModelMenu.h"
#include "surface/QtText.h"
#include "surface/UnionSubQueryPage.h"
#include "tree/Expressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

TmvWorkAreaCanvas* CanvasOf(const QWidget* box) { return qobject_cast<TmvWorkAreaCanvas*>(box->parentWidget()); }

constexpr int kMinWidth = 64;

}  // namespace

// --- TmvQueryBuilderDatasourceFieldsList ---

TmvQueryBuilderDatasourceFieldsList::TmvQueryBuilderDatasourceFieldsList(TmvQueryBuilderDataSourceControl* box)
    : QListWidget(box), box_(box) {
  setObjectName(QStringLiteral("FieldsList"));
  // Drops arrive at the viewport, which must take them itself.
  setAcceptDrops(true);
  viewport()->setAcceptDrops(true);
  setFrameShape(QFrame::NoFrame);
  setSelectionMode(QAbstractItemView::SingleSelection);
}

TmvMetadataField* TmvQueryBuilderDatasourceFieldsList::FieldOfRow(int row) const {
  const QListWidgetItem* it = item(row);
  return it ? reinterpret_cast<TmvMetadataField*>(it->data(Qt::UserRole).value<quintptr>()) : nullptr;
}

int TmvQueryBuilderDatasourceFieldsList::RowOfField(const TmvMetadataField* field) const {
  for (int row = 0; row < count(); ++row)
    if (FieldOfRow(row) == field) return row;
  return -1;
}

void TmvQueryBuilderDatasourceFieldsList::mousePressEvent(QMouseEvent* event) {
  box_->raise();
  pressRow_ = event->button() == Qt::LeftButton ? indexAt(event->position().toPoint()).row() : -1;
  pressPoint_ = event->position().toPoint();
  QListWidget::mousePressEvent(event);
}

void TmvQueryBuilderDatasourceFieldsList::mouseMoveEvent(QMouseEvent* event) {
  // A field row pressed right of its check box and pulled far enough starts a link.
  if (!(event->buttons() & Qt::LeftButton) || pressRow_ < 0 || !FieldOfRow(pressRow_) ||
      (event->position().toPoint() - pressPoint_).manhattanLength() < QApplication::startDragDistance()) {
    QListWidget::mouseMoveEvent(event);
    return;
  }
  auto* drag = new QDrag(this);
  drag->setMimeData(NewFieldDrag(box_, pressRow_));
  pressRow_ = -1;
  drag->exec(Qt::LinkAction);
}

void TmvQueryBuilderDatasourceFieldsList::dragEnterEvent(QDragEnterEvent* event) {
  TmvQueryBuilderDataSourceControl* box = nullptr;
  int row = -1;
  if (ReadFieldDrag(event->mimeData(), box, row))
    event->acceptProposedAction();
  else
    event->ignore();
}

void TmvQueryBuilderDatasourceFieldsList::dragMoveEvent(QDragMoveEvent* event) {
  TmvQueryBuilderDataSourceControl* box = nullptr;
  int row = -1;
  const int target = indexAt(event->position().toPoint()).row();
  if (ReadFieldDrag(event->mimeData(), box, row) && box_->CanLinkFields(box, row, target))
    event->acceptProposedAction();
  else
    event->ignore();
}

void TmvQueryBuilderDatasourceFieldsList::dropEvent(QDropEvent* event) {
  TmvQueryBuilderDataSourceControl* box = nullptr;
  int row = -1;
  const int target = indexAt(event->position().toPoint()).row();
  if (ReadFieldDrag(event->mimeData(), box, row) && box_->LinkFields(box, row, target))
    event->acceptProposedAction();
  else
    event->ignore();
}

void TmvQueryBuilderDatasourceFieldsList::scrollContentsBy(int dx, int dy) {
  QListWidget::scrollContentsBy(dx, dy);
  box_->RealignLinks();
}

// --- TmvQueryBuilderDataSourceControl ---

TmvQueryBuilderDataSourceControl::TmvQueryBuilderDataSourceControl(TmvDatasource* datasource,
                                                                   TmvQueryBuilder* builder, QWidget* parent)
    : QFrame(parent), datasource_(datasource), builder_(builder) {
  setObjectName(QStringLiteral("DatasourceBox"));
  setFrameShape(QFrame::Box);
  setAutoFillBackground(true);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(1, 1, 1, 1);
  column->setSpacing(0);
  caption_ = new QLabel(this);
  caption_->setObjectName(QStringLiteral("Caption"));
  caption_->setContentsMargins(4, 2, 4, 2);
  caption_->setAutoFillBackground(true);
  caption_->setBackgroundRole(QPalette::Highlight);
  caption_->setForegroundRole(QPalette::HighlightedText);
  caption_->installEventFilter(this);
  auto makeButton = [this](const char* name, const QString& text) {
    auto* button = new QToolButton(this);
    button->setObjectName(QString::fromLatin1(name));
    button->setText(text);
    button->setAutoRaise(true);
    button->setFixedSize(16, 14);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
  };
  collapse_ = makeButton("CollapseButton", QStringLiteral("\u25B4"));
  connect(collapse_, &QToolButton::clicked, this, [this] {
    datasource_->SetCollapsed(!datasource_->Collapsed());
    SetOptimalHeight();
  });
  linked_ = makeButton("LinkedObjectsButton", QStringLiteral("+"));
  linked_->setToolTip(ToQString(MessageText(u"mvQBAddLinkedObject")));
  linked_->hide();
  connect(linked_, &QToolButton::clicked, this, [this] {
    for (const TmvMenuItem& item : datasource_->GetPopupMenu(this))
      if (item.Key == u"mvQBAddLinkedObject")
        ExecModelMenu(item.SubItems, linked_->mapToGlobal(QPoint(-2, linked_->height())), this);
  });
  auto* captionRow = new QHBoxLayout;
  captionRow->setSpacing(0);
  captionRow->addWidget(caption_, 1);
  captionRow->addWidget(linked_);
  captionRow->addWidget(collapse_);
  fields_ = new TmvQueryBuilderDatasourceFieldsList(this);
  fields_->installEventFilter(this);
  column->addLayout(captionRow);
  column->addWidget(fields_, 1);
  connect(fields_, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
    if (!reloading_) ClickCheck(fields_->row(item), item->checkState() == Qt::Checked);
  });
}

void TmvQueryBuilderDataSourceControl::ClickCheck(int row, bool checked) {
  if (row < 0 || row >= fields_->count()) return;
  datasource_->SetFieldChecked(fields_->FieldOfRow(row), checked);
  UpdateChecksOnFields();
}

bool TmvQueryBuilderDataSourceControl::CanLinkFields(TmvQueryBuilderDataSourceControl* source, int sourceRow,
                                                     int targetRow) const {
  if (!source || source == this || CanvasOf(source) != CanvasOf(this)) return false;
  TmvMetadataField* from = source->fields_->FieldOfRow(sourceRow);
  TmvMetadataField* to = fields_->FieldOfRow(targetRow);
  if (!from || !to || !from->Name() || !to->Name()) return false;
  TmvUnionSubQuery* member = datasource_->UnionSubQuery();
  if (!member || member != source->datasource_->UnionSubQuery()) return false;
  if (member->FindLink(source->datasource_, from->Name(), to->Name(), datasource_) ||
      member->FindLink(datasource_, to->Name(), from->Name(), source->datasource_))
    return false;
  // Links only through relations are not offered by drops yet: such a
  // drop is refused rather than made without its relation.
  if (builder_ && builder_->LinkOptions().LinkManipulations() != lmAllow) return false;
  if (builder_ && builder_->LinkOptions().LinkCompatibleTypesOnly() && from->FieldType() != to->FieldType())
    return false;
  return true;
}

bool TmvQueryBuilderDataSourceControl::LinkFields(TmvQueryBuilderDataSourceControl* source, int sourceRow,
                                                  int targetRow) {
  if (!CanLinkFields(source, sourceRow, targetRow)) return false;
  TmvMetadataField* from = source->fields_->FieldOfRow(sourceRow);
  TmvMetadataField* to = fields_->FieldOfRow(targetRow);
  TmvUnionSubQuery* member = datasource_->UnionSubQuery();
  TmvQueryModelHost* host = member->Host();
  bool allow = true;
  if (host && host->OnLinkCreating)
    host->OnLinkCreating(host, member, source->datasource_, from, datasource_, to, nullptr, allow);
  if (!allow) return false;
  TmvLink* link = member->AddLink(source->datasource_, from->Name(), to->Name(), datasource_);
  if (link && host && host->OnLinkCreated) host->OnLinkCreated(host, link);
  return link != nullptr;
}

void TmvQueryBuilderDataSourceControl::UpdateControlVisualParams(TmvQueryBuilderControlOwner*) {
  caption_->setText(ToQString(datasource_->Caption()));
  fields_->setVisible(!datasource_->Collapsed());
  collapse_->setVisible(!builder_ || builder_->FieldsListOptions().ShowCollapseExpandButton());
  collapse_->setText(datasource_->Collapsed() ? QStringLiteral("\u25BE") : QStringLiteral("\u25B4"));
  UpdateLinkedObjectsButton();
  if (datasource_->Width() > 0 && datasource_->Height() > 0)
    setGeometry(datasource_->Left(), datasource_->Top(), datasource_->Width(), datasource_->Height());
  RealignLinks();
  if (TmvWorkAreaCanvas* canvas = CanvasOf(this)) canvas->UpdateExtent();
}

void TmvQueryBuilderDataSourceControl::ReloadFieldsList() {
  reloading_ = true;
  fields_->clear();
  TmvMetadataFieldsList* list = datasource_->GetFields();
  TmvQueryModelHost* host = datasource_->Host();
  TmvBaseSyntaxProvider* provider = host ? host->SyntaxProvider() : nullptr;
  auto addRow = [this](const QString& text, TmvMetadataField* field) {
    auto* row = new QListWidgetItem(text, fields_);
    row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    row->setCheckState(Qt::Unchecked);
    row->setData(Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(field)));
    if (field && field->PrimaryKey()) {
      QFont bold = row->font();
      bold.setBold(true);
      row->setFont(bold);
    }
  };
  if (provider && provider->IsSupportAllTableFieldsSelection() && !(host && host->Options.HideAsteriskItem))
    addRow(QStringLiteral("*"), nullptr);
  if (list)
    for (int i = 0; i < list->Count(); ++i) {
      TmvMetadataField* field = list->Items(i);
      const bool alt = host && host->Options.UseAltNames && !field->AltName().empty();
      const QString text = ToQString(alt ? field->AltName() : field->NameStrNotQuoted());
      if (!text.isEmpty()) addRow(text, field);
    }
  reloading_ = false;
  UpdateChecksOnFields();
}

void TmvQueryBuilderDataSourceControl::UpdateChecksOnFields() {
  reloading_ = true;
  const std::vector<TmvMetadataField*>& checked = datasource_->CheckedFields();
  for (int row = 0; row < fields_->count(); ++row) {
    const bool on = std::find(checked.begin(), checked.end(), fields_->FieldOfRow(row)) != checked.end();
    fields_->item(row)->setCheckState(on ? Qt::Checked : Qt::Unchecked);
  }
  reloading_ = false;
  caption_->setText(ToQString(datasource_->Caption()));
}

WideString TmvQueryBuilderDataSourceControl::GetCaption() { return FromQString(caption_->text()); }

void TmvQueryBuilderDataSourceControl::SetCaption(const WideString& caption) { caption_->setText(ToQString(caption)); }

TmvRect TmvQueryBuilderDataSourceControl::CalcFieldRect(const WideString& fieldName) {
  // The row of the field in the coordinates of the work area; a row
  // scrolled out of the list, or a collapsed box, gives the caption's band.
  QRect band(0, 0, width(), caption_->height());
  for (int row = 0; row < fields_->count(); ++row) {
    TmvMetadataField* field = fields_->FieldOfRow(row);
    if (!field || (!WideSameText(field->NameStrNotQuoted(), fieldName) && !WideSameText(field->NameStr(), fieldName)))
      continue;
    const QRect visual = fields_->visualItemRect(fields_->item(row));
    if (fields_->isVisible() && visual.isValid() && fields_->viewport()->rect().intersects(visual)) {
      const QPoint topLeft = fields_->viewport()->mapTo(this, visual.topLeft());
      band = QRect(0, topLeft.y(), width(), visual.height());
    }
    break;
  }
  band.translate(pos());
  return {band.left(), band.top(), band.right() + 1, band.bottom() + 1};
}

void TmvQueryBuilderDataSourceControl::SetOptimalHeight() {
  const int frame = 2 * frameWidth() + 2;
  int height = caption_->sizeHint().height() + frame;
  if (!datasource_->Collapsed()) {
    const int rowHeight = fields_->count() > 0 ? fields_->sizeHintForRow(0) : fontMetrics().height();
    height += rowHeight * fields_->count() + 4;
    int limit = std::numeric_limits<int>::max();
    // A work area that is not on screen yet has no height to go by.
    if (auto* area = qobject_cast<QScrollArea*>(CanvasOf(this) ? CanvasOf(this)->parentWidget()->parentWidget()
                                                               : nullptr);
        area && area->isVisible())
      limit = std::max(60, area->viewport()->height() - 20);
    const int maxTableHeight = builder_ ? builder_->DatasourceOptions().MaxTableHeight() : 0;
    if (maxTableHeight >= 1 && maxTableHeight < limit) limit = maxTableHeight;
    height = std::min(height, limit);
  }
  datasource_->SetHeight(height);
}

int TmvQueryBuilderDataSourceControl::CalcOptimalWidth() const {
  int widest = fontMetrics().horizontalAdvance(caption_->text()) + 8;
  for (int row = 0; row < fields_->count(); ++row)
    widest = std::max(widest, fontMetrics().horizontalAdvance(fields_->item(row)->text()) + 20);
  return widest + 24;
}

void TmvQueryBuilderDataSourceControl::TuneSize() {
  SetOptimalHeight();
  int width = builder_ ? builder_->DatasourceOptions().DefaultTableWidth() : 160;
  if (builder_ && builder_->DatasourceOptions().TableWidthMode() != twmFixed) width = CalcOptimalWidth();
  datasource_->SetWidth(std::max(width, kMinWidth));
}

void TmvQueryBuilderDataSourceControl::SaveControlStateToOwner(TmvQueryBuilderControlOwner*) {
  datasource_->SetLeft(x());
  datasource_->SetTop(y());
  datasource_->SetWidth(width());
  datasource_->SetHeight(height());
}

void TmvQueryBuilderDataSourceControl::RestoreControlStateFromOwner(TmvQueryBuilderControlOwner*) {
  ReloadFieldsList();
  datasource_->UpdateCaption();
  const bool unplaced = datasource_->Left() == 0 && datasource_->Top() == 0 && datasource_->Width() == 0 &&
                        datasource_->Height() == 0;
  if (unplaced || datasource_->Width() == 0) {
    TuneSize();
  } else if (datasource_->Height() == 0) {
    SetOptimalHeight();
  }
  if (unplaced) {
    // The first free place among the boxes already on the area.
    std::vector<TmvRect> others;
    int clientWidth = 0;
    if (TmvWorkAreaCanvas* canvas = CanvasOf(this)) {
      clientWidth = canvas->parentWidget() ? canvas->parentWidget()->width() : canvas->width();
      for (QObject* child : canvas->children())
        if (auto* box = qobject_cast<TmvQueryBuilderDataSourceControl*>(child); box && box != this)
          others.push_back({box->x(), box->y(), box->x() + box->width(), box->y() + box->height()});
    }
    TmvPaneSpacing spacing;
    if (builder_) {
      const auto& options = builder_->DesignPaneOptions();
      spacing = {options.LayoutHorzMargin(), options.LayoutVertMargin(), options.LayoutHorzInterval(),
                 options.LayoutVertInterval()};
    }
    const TmvPoint place =
        FindFreePlace(others, datasource_->Width(), datasource_->Height(), clientWidth, spacing);
    datasource_->SetLeft(place.X);
    datasource_->SetTop(place.Y);
  }
  setGeometry(datasource_->Left(), datasource_->Top(), datasource_->Width(), datasource_->Height());
}

void TmvQueryBuilderDataSourceControl::UpdateLinkedObjectsButton() {
  const bool allowed = (!builder_ || builder_->DatasourceOptions().ShowLinkedObjectsButton()) &&
                       datasource_->GetMetadataObject() != nullptr;
  linked_->setVisible(allowed && fields_->hasFocus());
}

bool TmvQueryBuilderDataSourceControl::eventFilter(QObject* watched, QEvent* event) {
  if (watched == fields_) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) UpdateLinkedObjectsButton();
    return QFrame::eventFilter(watched, event);
  }
  if (watched != caption_) return QFrame::eventFilter(watched, event);
  switch (event->type()) {
    case QEvent::MouseButtonPress: {
      auto* mouse = static_cast<QMouseEvent*>(event);
      raise();
      if (mouse->button() != Qt::LeftButton) break;
      moving_ = true;
      dragOffset_ = mouse->globalPosition().toPoint() - pos();
      return true;
    }
    case QEvent::MouseButtonDblClick:
      // A double click on the caption opens the datasource's properties.
      moving_ = false;
      PostModelAction([datasource = datasource_] { EditProps(datasource); });
      return true;
    case QEvent::MouseMove: {
      auto* mouse = static_cast<QMouseEvent*>(event);
      if (!moving_) break;
      MoveTo(QRect(mouse->globalPosition().toPoint() - dragOffset_, size()));
      return true;
    }
    case QEvent::MouseButtonRelease: {
      auto* mouse = static_cast<QMouseEvent*>(event);
      moving_ = false;
      // A right click on the caption opens the datasource's menu.
      if (mouse->button() == Qt::RightButton) {
        ExecModelMenu(datasource_->GetPopupMenu(this), mouse->globalPosition().toPoint(), this);
        return true;
      }
      break;
    }
    default:
      break;
  }
  return QFrame::eventFilter(watched, event);
}

void TmvQueryBuilderDataSourceControl::MoveTo(const QRect& proposed) {
  const int grid = builder_ ? (builder_->SnapToGrid() ? builder_->GridSize() : 0) : 5;
  const TmvRect current{x(), y(), x() + width(), y() + height()};
  // The canvas is the whole scrolled area: its origin is the scroll origin.
  const TmvRect placed = SnapBoxToGrid(
      current, {proposed.left(), proposed.top(), proposed.right() + 1, proposed.bottom() + 1}, grid, 0, 0, true);
  datasource_->SetLeft(placed.Left);
  datasource_->SetTop(placed.Top);
  datasource_->SetWidth(placed.Right - placed.Left);
  datasource_->SetHeight(placed.Bottom - placed.Top);
}

void TmvQueryBuilderDataSourceControl::RealignLinks() {
  if (TmvWorkAreaCanvas* canvas = CanvasOf(this)) canvas->update();
}

}  // namespace mv
