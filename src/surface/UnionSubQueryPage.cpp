#include "surface/UnionSubQueryPage.h"

#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>

#include "component/QueryBuilder.h"
#include "component/TreeNodes.h"
#include "model/Links.h"
#include "model/PropertyForms.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "surface/DatasourceControl.h"
#include "surface/DragData.h"
#include "surface/LinkPainters.h"
#include "surface/ModelMenu.h"
#include "surface/QtText.h"
#include "surface/LinkControl.h"
#include "tree/Expressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

// The fill of the area by the darkness of its background.
QColor BackgroundOf(TmvBkImageDarkness darkness) {
  switch (darkness) {
    case bgidLight:
      return QColor(224, 223, 227);
    case bgidDark:
      return QColor(153, 153, 153);
    default:
      return QColor(255, 255, 255);
  }
}

constexpr int kMinAreaWidth = 200;

}  // namespace

// --- TmvWorkAreaCanvas ---

TmvWorkAreaCanvas::TmvWorkAreaCanvas(TmvUnionSubQuery* member, TmvQueryBuilder* builder, QWidget* parent)
    : QWidget(parent), member_(member), builder_(builder) {
  setObjectName(QStringLiteral("WorkAreaCanvas"));
  setAcceptDrops(true);
  setFocusPolicy(Qt::ClickFocus);
}

TmvWorkAreaCanvas::~TmvWorkAreaCanvas() = default;

const TmvQueryBuilderLinkPainter& TmvWorkAreaCanvas::Painter() {
  const QString name = builder_ ? ToQString(builder_->LinkPainterClassName()) : QString();
  if (!painter_ || name != painterClassName_) {
    painter_ = LinkPainters().CreateByName(name);
    painterClassName_ = name;
  }
  return *painter_;
}

TmvLinkControl* TmvWorkAreaCanvas::LinkAt(const QPoint& point) const {
  for (auto it = links_.rbegin(); it != links_.rend(); ++it) {
    TmvLinkPath path;
    if ((*it)->CalcPath(path) && IsPointOnLink(path.Points, point)) return *it;
  }
  return nullptr;
}

bool TmvWorkAreaCanvas::LinksMayChange() const {
  return !builder_ || builder_->LinkOptions().LinkManipulations() != lmDeny;
}

void TmvWorkAreaCanvas::mousePressEvent(QMouseEvent* event) {
  TmvLinkControl* link = LinkAt(event->position().toPoint());
  if (link != focusedLink_) {
    focusedLink_ = link;
    update();
  }
  if (event->button() == Qt::RightButton) {
    // A link's menu on a link, the SELECT's work-area menu elsewhere.
    if (link && LinksMayChange())
      ExecModelMenu(link->Link()->GetPopupMenu(link), event->globalPosition().toPoint(), this);
    else if (!link)
      ExecModelMenu(member_->GetPopupMenu(member_->GetControls(0)), event->globalPosition().toPoint(), this);
    return;
  }
  QWidget::mousePressEvent(event);
}

void TmvWorkAreaCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
  TmvLinkControl* control = LinkAt(event->position().toPoint());
  if (!control || event->button() != Qt::LeftButton || !LinksMayChange()) return QWidget::mouseDoubleClickEvent(event);
  PostModelAction([link = control->Link()] {
    EditProps(link);
    if (!link->GetLinkExpression()) link->RequestDestroy();
  });
}

void TmvWorkAreaCanvas::keyPressEvent(QKeyEvent* event) {
  // Delete with no shift key removes the focused link, if the host agrees.
  if (focusedLink_ && event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier && LinksMayChange()) {
    TmvLink* link = focusedLink_->Link();
    focusedLink_ = nullptr;
    link->RequestDestroy();
    return;
  }
  QWidget::keyPressEvent(event);
}

bool TmvWorkAreaCanvas::AcceptsTextDrop(const QMimeData* mime) const {
  return builder_ && builder_->OLEDragDrop() && mime->hasText() && !mime->text().trimmed().isEmpty();
}

void TmvWorkAreaCanvas::dragEnterEvent(QDragEnterEvent* event) {
  if (ReadMetadataObjectDrag(event->mimeData()) || AcceptsTextDrop(event->mimeData()))
    event->acceptProposedAction();
  else
    event->ignore();
}

void TmvWorkAreaCanvas::dropEvent(QDropEvent* event) {
  TmvMetadataObject* object = ReadMetadataObjectDrag(event->mimeData());
  const bool text = !object && AcceptsTextDrop(event->mimeData());
  if (!object && !text) return event->ignore();
  const QPoint at = event->position().toPoint();
  try {
    // Text from another program is a FROM entry as written (a table's name, a call).
    const bool added = text ? member_->AddFromExpressionAt(FromQString(event->mimeData()->text().trimmed()),
                                                           {at.x(), at.y()}, u"") != nullptr
                            : builder_ && AddMetadataObject(*builder_, member_, object, {at.x(), at.y()});
    if (!added) return event->ignore();
    event->acceptProposedAction();
  } catch (const Exception&) {
    // The model refused the object (the dialect or the host): no box.
    event->ignore();
  }
}

void TmvWorkAreaCanvas::AddLink(TmvLinkControl* link) {
  links_.push_back(link);
  update();
}

void TmvWorkAreaCanvas::RemoveLink(TmvLinkControl* link) {
  std::erase(links_, link);
  if (focusedLink_ == link) focusedLink_ = nullptr;
  update();
}

TmvQueryBuilderDataSourceControl* TmvWorkAreaCanvas::BoxOf(const void* datasource) const {
  for (QObject* child : children())
    if (auto* box = qobject_cast<TmvQueryBuilderDataSourceControl*>(child); box && box->Datasource() == datasource)
      return box;
  return nullptr;
}

void TmvWorkAreaCanvas::UpdateExtent() {
  int right = 0, bottom = 0;
  for (QObject* child : children())
    if (auto* box = qobject_cast<TmvQueryBuilderDataSourceControl*>(child)) {
      right = std::max(right, box->geometry().right() + 1);
      bottom = std::max(bottom, box->geometry().bottom() + 1);
    }
  const int horzMargin = builder_ ? builder_->DesignPaneOptions().LayoutHorzMargin() : 20;
  const int vertMargin = builder_ ? builder_->DesignPaneOptions().LayoutVertMargin() : 10;
  QSize extent(std::max(kMinAreaWidth, right + horzMargin), bottom + vertMargin);
  if (QWidget* viewport = parentWidget()) extent = extent.expandedTo(viewport->size());
  if (extent != size()) resize(extent);
}

void TmvWorkAreaCanvas::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), BackgroundOf(builder_ ? builder_->BkImageDarkness() : bgidWhite));
  painter.setRenderHint(QPainter::Antialiasing);
  const TmvQueryBuilderLinkPainter& linkPainter = Painter();
  for (const TmvLinkControl* link : links_) link->Paint(painter, linkPainter, link == focusedLink_);
}

// --- TmvQueryBuilderWorkArea ---

TmvQueryBuilderWorkArea::TmvQueryBuilderWorkArea(TmvUnionSubQuery* member, TmvQueryBuilder* builder,
                                                 QWidget* parent)
    : QScrollArea(parent), member_(member) {
  setObjectName(QStringLiteral("WorkArea"));
  canvas_ = new TmvWorkAreaCanvas(member, builder, this);
  setWidget(canvas_);
  setWidgetResizable(false);
  setMinimumWidth(kMinAreaWidth);
}

void TmvQueryBuilderWorkArea::wheelEvent(QWheelEvent* event) {
  QScrollBar* bar = event->modifiers() == Qt::NoModifier        ? verticalScrollBar()
                    : event->modifiers() == Qt::ShiftModifier ? horizontalScrollBar()
                                                              : nullptr;
  // Some platforms turn Shift+wheel into a horizontal delta already.
  const int delta = event->angleDelta().y() != 0 ? event->angleDelta().y() : event->angleDelta().x();
  if (bar && bar->isVisible()) bar->setValue(bar->value() - delta);
  event->accept();
}

void TmvQueryBuilderWorkArea::resizeEvent(QResizeEvent* event) {
  QScrollArea::resizeEvent(event);
  canvas_->UpdateExtent();
}

// --- TmvUnionSubQueryTabSheet ---

TmvUnionSubQueryTabSheet::TmvUnionSubQueryTabSheet(TmvUnionSubQuery* member, TmvQueryBuilder* builder,
                                                   QWidget* parent)
    : QSplitter(Qt::Vertical, parent), member_(member) {
  setObjectName(QStringLiteral("UnionSubQueryPage"));
  workArea_ = new TmvQueryBuilderWorkArea(member, builder, this);
  lowerPanel_ = new QWidget(this);
  lowerPanel_->setObjectName(QStringLiteral("ColumnsPane"));
  auto* column = new QVBoxLayout(lowerPanel_);
  column->setContentsMargins(0, 0, 0, 0);
  addWidget(workArea_);
  addWidget(lowerPanel_);
  setChildrenCollapsible(true);
  if (builder && !builder->ColumnsPaneVisible()) lowerPanel_->hide();
  // A moved bar gives the SELECT its new share of the height.
  connect(this, &QSplitter::splitterMoved, this, [this] {
    if (applying_ || height() <= 0) return;
    member_->SetRatio(static_cast<double>(lowerPanel_->height()) / height());
  });
}

void TmvUnionSubQueryTabSheet::UpdateControlVisualParams(TmvQueryBuilderControlOwner*) { ApplyRatio(); }

void TmvUnionSubQueryTabSheet::resizeEvent(QResizeEvent* event) {
  QSplitter::resizeEvent(event);
  ApplyRatio();
}

void TmvUnionSubQueryTabSheet::ApplyRatio() {
  const int total = std::max(height(), 1);
  const int lower = std::min(static_cast<int>(total * member_->Ratio() + 0.5), total - 10);
  applying_ = true;
  setSizes({total - std::max(lower, 0), std::max(lower, 0)});
  applying_ = false;
}

TmvRect TmvUnionSubQueryTabSheet::GetUnionNavigatorAlignmentRect() {
  const QRect area = workArea_->viewport()->geometry();
  return {area.left(), area.top(), area.right() + 1, area.bottom() + 1};
}

void TmvUnionSubQueryTabSheet::EnsureDatasourceVisible(TmvQueryBuilderControlOwner* datasource) {
  if (TmvQueryBuilderDataSourceControl* box = workArea_->Canvas()->BoxOf(datasource))
    workArea_->ensureWidgetVisible(box, 20, 10);
}

}  // namespace mv
