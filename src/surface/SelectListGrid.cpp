#include "surface/SelectListGrid.h"

#include <QComboBox>
#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>
#include <QTimer>
#include <functional>

#include "component/ExpressionBuilderParams.h"
#include "component/QueryBuilder.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "model/ControlOwner.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "surface/DatasourceControl.h"
#include "surface/DragData.h"
#include "surface/ModelMenu.h"
#include "surface/QtText.h"
#include "surface/SurfaceMessages.h"
#include "tree/Expressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

// The captions of the fixed columns by their language keys.
const char16_t* const kFixedHeaders[] = {u"mvQBGCSelect",   u"mvQBGCExpression", u"mvQBGCAggregate",
                                         u"mvQBGCAlias",    u"mvQBGCSortType",   u"mvQBGCSortOrder",
                                         u"mvQBGCGrouping", u"mvQBGCCriteria"};
constexpr int kFixedColumns = TmvSelectListGrid::colCriteria;

// Edits the list columns of the grid in a combo box of the row's choices
// (still open to typed text, which the model reads as it reads any text).
class ChoiceDelegate : public QStyledItemDelegate {
 public:
  explicit ChoiceDelegate(TmvSelectListGrid* grid) : QStyledItemDelegate(grid), grid_(grid) {}
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QStringList choices = grid_->ChoicesFor(index.row(), index.column());
    if (choices.isEmpty()) return QStyledItemDelegate::createEditor(parent, option, index);
    auto* box = new QComboBox(parent);
    box->setEditable(true);
    box->addItems(choices);
    return box;
  }
  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    if (auto* box = qobject_cast<QComboBox*>(editor))
      box->setCurrentText(index.data().toString());
    else
      QStyledItemDelegate::setEditorData(editor, index);
  }
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    if (auto* box = qobject_cast<QComboBox*>(editor))
      model->setData(index, box->currentText());
    else
      QStyledItemDelegate::setModelData(editor, model, index);
  }

 private:
  TmvSelectListGrid* grid_;
};

QStringList ToStringList(const std::vector<WideString>& texts) {
  QStringList list{QString()};
  for (const WideString& text : texts) list << ToQString(text);
  return list;
}

}  // namespace

QStringList TmvSelectListGrid::ChoicesFor(int row, int column) const {
  if (row < 0 || row >= selectList_->Count()) return {};
  const TmvSelectItem* item = selectList_->Items(row);
  TmvQueryModelHost* host = selectList_->Host();
  auto* builder = dynamic_cast<TmvQueryBuilder*>(host);
  TmvBaseSyntaxProvider* provider = host ? host->SyntaxProvider() : nullptr;
  switch (column) {
    case colExpression: {
      // Each datasource's "name.*" where the dialect allows it, then its fields.
      QStringList list;
      TmvUnionSubQuery* member = selectList_->UnionSubQuery();
      TmvDatasourceList datasources;
      if (member) member->Datasources()->GetDatasources(datasources);
      const bool star = (!builder || !builder->FieldsListOptions().HideAsteriskItem()) &&
                        (!provider || provider->IsSupportAllTableFieldsSelection());
      for (TmvDatasource* datasource : datasources) {
        const QString name = ToQString(datasource->GetNameInQuery());
        if (star) list << name + QStringLiteral(".*");
        TmvMetadataFieldsList* fields = datasource->GetFields();
        for (int i = 0; fields && i < fields->Count(); ++i) {
          const TmvMetadataField* field = fields->Items(i);
          const bool alt = host->Options.UseAltNames && !field->AltName().empty();
          list << name + QLatin1Char('.') + ToQString(alt ? field->AltName() : field->NameStr());
        }
      }
      return list;
    }
    case colAggregate:
      return ToStringList(item->GetAggregateStringList());
    case colSortType: {
      std::vector<WideString> sorts{MessageText(u"mvQBSortTypeAscending"), MessageText(u"mvQBSortTypeDescending")};
      if (provider && provider->IsSupportNullOrdering() && builder &&
          builder->SelectListOptions().ShowNullOrderingInSortTypeColumn())
        for (const WideString& sort : std::vector<WideString>{sorts[0], sorts[1]})
          for (const char16_t* nulls : {u" Nulls First", u" Nulls Last"}) sorts.push_back(sort + nulls);
      return ToStringList(sorts);
    }
    case colSortOrder: {
      // One more place for a row that is not sorted yet.
      const int places = selectList_->GetOrderByItemsCount() + (item->SortType() == stNone ? 1 : 0);
      QStringList list;
      for (int place = 1; place <= places; ++place) list << QString::number(place);
      return list;
    }
    case colGrouping:
      return ToStringList(item->GetGroupingTypeStringList());
    default:
      if (column >= colCriteria && item->IsLogicalExpression()) return {QStringLiteral("= True"), QStringLiteral("= False")};
      return {};
  }
}

TmvSelectListGrid::TmvSelectListGrid(TmvSelectList* selectList, QWidget* parent)
    : QTableWidget(parent), selectList_(selectList) {
  setObjectName(QStringLiteral("SelectListGrid"));
  setItemDelegate(new ChoiceDelegate(this));
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  verticalHeader()->setSectionsMovable(true);
  connect(verticalHeader(), &QHeaderView::sectionMoved, this,
          [this](int, int from, int to) { QTimer::singleShot(0, this, [this, from, to] { RowMoved(from, to); }); });
  setAcceptDrops(true);
  viewport()->setAcceptDrops(true);
  // A right click on a row opens the row's menu.
  setContextMenuPolicy(Qt::CustomContextMenu);
  connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint& point) {
    const int row = rowAt(point.y());
    if (row < 0 || row >= selectList_->Count()) return;
    TmvMenu menu = CellMenu(row, columnAt(point.x()));
    for (TmvMenuItem& item : selectList_->Items(row)->GetPopupMenu(this)) menu.push_back(std::move(item));
    ExecModelMenu(menu, viewport()->mapToGlobal(point), this);
  });
  // With the host's expression editor, a double click on an expression or
  // criteria cell opens it instead of the cell's own editor.
  connect(this, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
    if (!CustomBuilderAvailable(column) || row >= selectList_->Count()) return;
    closePersistentEditor(item(row, column));
    OpenCustomBuilder(row, column);
  });
  connect(this, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
    if (filling_) return;
    const int row = item->row(), column = item->column();
    const QString text = item->text();
    const bool checked = item->checkState() == Qt::Checked;
    // The model may free and rebuild rows: not inside the grid's own signal.
    QTimer::singleShot(0, this, [this, row, column, text, checked] { ApplyCell(row, column, text, checked); });
  });
}

void TmvSelectListGrid::FillList() {
  filling_ = true;
  const int conditions = std::max(selectList_->GetMaxConditionCount() + 1, 2);
  setColumnCount(kFixedColumns + conditions);
  QStringList headers;
  for (const char16_t* header : kFixedHeaders) headers << SurfaceText(header);
  for (int i = 1; i < conditions; ++i) headers << SurfaceText(u"mvQBGCOr");
  setHorizontalHeaderLabels(headers);
  setRowCount(selectList_->Count());
  for (int row = 0; row < selectList_->Count(); ++row) {
    const TmvSelectItem* item = selectList_->Items(row);
    auto cell = [&](int column, const WideString& text) {
      auto* widgetItem = new QTableWidgetItem(ToQString(text));
      setItem(row, column, widgetItem);
      return widgetItem;
    };
    QTableWidgetItem* output = cell(colOutput, {});
    output->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
    output->setCheckState(item->Select() ? Qt::Checked : Qt::Unchecked);
    cell(colExpression, item->GetExpressionString());
    cell(colAggregate, item->GetAggregateString());
    cell(colAlias, item->GetAliasString());
    cell(colSortType, item->GetSortTypeString());
    cell(colSortOrder, item->GetSortOrderString());
    cell(colGrouping, item->GetGroupingTypeString());
    for (int i = 0; i < conditions; ++i) cell(colCriteria + i, item->GetConditionString(i));
  }
  filling_ = false;
}

void TmvSelectListGrid::ApplyCell(int row, int column, const QString& text, bool checked) {
  if (row < 0 || row >= selectList_->Count()) return;
  TmvSelectItem* item = selectList_->Items(row);
  const WideString value = FromQString(text);
  try {
    switch (column) {
      case colOutput:
        item->SetSelectUI(checked);
        break;
      case colExpression:
        item->SetExpressionStringUI(value);
        break;
      case colAggregate:
        item->SetAggregateStringUI(value);
        break;
      case colAlias:
        item->SetAliasStringUI(value);
        break;
      case colSortType:
        item->SetSortTypeString(value);
        break;
      case colSortOrder:
        item->SetSortOrderString(value);
        break;
      case colGrouping:
        item->SetGroupingTypeString(value);
        break;
      default:
        item->SetConditionString(column - colCriteria, value);
        break;
    }
    lastError_.clear();
  } catch (const Exception& error) {
    lastError_ = ToQString(error.Message());
    emit EditRefused(lastError_);
  }
  // What the model made of the text (or the old value after a refusal).
  FillList();
}

bool TmvSelectListGrid::CustomBuilderAvailable(int column) const {
  auto* builder = dynamic_cast<TmvQueryBuilder*>(selectList_->Host());
  return builder && builder->OnCustomExpressionBuilder && builder->UseCustomExpressionBuilder &&
         (column == colExpression || column >= colCriteria);
}

void TmvSelectListGrid::OpenCustomBuilder(int row, int column) {
  auto* builder = dynamic_cast<TmvQueryBuilder*>(selectList_->Host());
  TmvSelectItem* item = selectList_->Items(row);
  const QRect cell(viewport()->mapToGlobal(visualItemRect(this->item(row, column)).topLeft()),
                   visualItemRect(this->item(row, column)).size());
  std::vector<WideString> completions;
  for (const QString& choice : ChoicesFor(row, colExpression)) completions.push_back(FromQString(choice));
  auto params = TmvExpressionBuilderParams::Create(builder, item, column == colExpression ? -1 : column - colCriteria,
                                                   cell.left(), cell.top(), cell.width(), cell.height(),
                                                   FromQString(this->item(row, column)->text()), completions);
  PostModelAction([builder, params] { builder->OnCustomExpressionBuilder(builder, params); });
}

TmvMenu TmvSelectListGrid::CellMenu(int row, int column) {
  TmvMenu menu;
  if (CustomBuilderAvailable(column))
    AddMenuItem(menu, u"mvQBExpressionBuilder", [this, row, column] { OpenCustomBuilder(row, column); });
  if (!menu.empty()) AddMenuItem(menu, u"-", nullptr);
  return menu;
}

void TmvSelectListGrid::RowMoved(int from, int to) {
  // The header goes back to its plain order: the refill shows the model's.
  {
    const QSignalBlocker quiet(verticalHeader());
    verticalHeader()->moveSection(to, from);
  }
  if (from < 0 || to < 0 || from >= selectList_->Count() || to >= selectList_->Count()) return;
  try {
    selectList_->Move(from, to);
  } catch (const Exception& error) {
    lastError_ = ToQString(error.Message());
    emit EditRefused(lastError_);
  }
  FillList();
}

void TmvSelectListGrid::keyPressEvent(QKeyEvent* event) {
  const int row = currentRow();
  TmvSelectItem* item = row >= 0 && row < selectList_->Count() ? selectList_->Items(row) : nullptr;
  if (item && event->key() == Qt::Key_Space && currentColumn() == colOutput && event->modifiers() == Qt::NoModifier) {
    QTableWidgetItem* check = this->item(row, colOutput);
    check->setCheckState(check->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    return;
  }
  if (item && event->modifiers() == Qt::ControlModifier) {
    std::function<void()> action;
    int nextRow = row;
    switch (event->key()) {
      case Qt::Key_Up:
        if (item->CanAcceptMoveUpEvent()) {
          action = [item] { item->MoveUpEvent(); };
          nextRow = row - 1;
        }
        break;
      case Qt::Key_Down:
        if (item->CanAcceptMoveDownEvent()) {
          action = [item] { item->MoveDownEvent(); };
          nextRow = row + 1;
        }
        break;
      case Qt::Key_Insert:
        if (item->CanAcceptInsertEmptyEvent()) action = [item] { item->InsertEmptyEvent(); };
        break;
      case Qt::Key_Delete:
        if (item->CanAcceptRemoveEvent()) action = [item] { item->RemoveEvent(); };
        break;
      default:
        break;
    }
    if (action) {
      const int column = currentColumn();
      // The model rebuilds the rows: not inside the grid's own key handler.
      QTimer::singleShot(0, this, [this, action, nextRow, column] {
        try {
          action();
        } catch (const Exception& error) {
          lastError_ = ToQString(error.Message());
          emit EditRefused(lastError_);
        }
        FillList();
        if (nextRow >= 0 && nextRow < rowCount()) setCurrentCell(nextRow, std::max(column, 0));
      });
      return;
    }
  }
  QTableWidget::keyPressEvent(event);
}

void TmvSelectListGrid::dragEnterEvent(QDragEnterEvent* event) {
  TmvQueryBuilderDataSourceControl* box = nullptr;
  int row = -1;
  if (ReadFieldDrag(event->mimeData(), box, row))
    event->acceptProposedAction();
  else
    QTableWidget::dragEnterEvent(event);
}

void TmvSelectListGrid::dragMoveEvent(QDragMoveEvent* event) {
  TmvQueryBuilderDataSourceControl* box = nullptr;
  int row = -1;
  if (ReadFieldDrag(event->mimeData(), box, row))
    event->acceptProposedAction();
  else
    QTableWidget::dragMoveEvent(event);
}

void TmvSelectListGrid::dropEvent(QDropEvent* event) {
  TmvQueryBuilderDataSourceControl* box = nullptr;
  int fieldRow = -1;
  TmvMetadataField* field = ReadFieldDrag(event->mimeData(), box, fieldRow) ? box->FieldsList()->FieldOfRow(fieldRow)
                                                                            : nullptr;
  if (!field) return event->ignore();
  const int at = rowAt(event->position().toPoint().y());
  TmvDatasource* datasource = box->Datasource();
  const WideString name = field->NameStr();
  event->acceptProposedAction();
  QTimer::singleShot(0, this, [this, datasource, name, at] {
    try {
      TmvUpdateScope update(selectList_);
      if (TmvSelectItem* item = selectList_->InsertField(at < 0 ? selectList_->Count() : at, datasource, name))
        item->SetSelectUI(true);
    } catch (const Exception& error) {
      lastError_ = ToQString(error.Message());
      emit EditRefused(lastError_);
    }
    FillList();
  });
}

}  // namespace mv
