// The select list of one SELECT: its rows, the invariant that keeps one
// empty row at the end, the loading of the select clause and the final
// settling of the rows after all clauses are in.
#include "model/SelectList.h"

#include <algorithm>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "tree/Expressions.h"
#include "tree/SelectClauses.h"

namespace mv {

MV_DEFINE_CLASS(TmvSelectList, TmvQueryBuilderControlOwner)

TmvSelectList::TmvSelectList(TmvQueryModelHost* host, TmvUnionSubQuery* unionSubQuery)
    : TmvQueryBuilderControlOwner(host, unionSubQuery), unionSubQuery_(unionSubQuery) {}

TmvSelectList::~TmvSelectList() = default;

void TmvSelectList::AfterConstruction() {
  TmvQueryBuilderControlOwner::AfterConstruction();
  CreateRow(0);
}

void TmvSelectList::Destroying() { TmvQueryBuilderControlOwner::Destroying(); }

// --- Rows ---

TmvSelectItem* TmvSelectList::Items(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
  return items_[index];
}

int TmvSelectList::IndexOf(const TmvSelectItem* item) const {
  auto found = std::find(items_.begin(), items_.end(), item);
  return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
}

TmvSelectItem* TmvSelectList::CreateRow(int index) {
  auto owned = TmvCreate<TmvSelectItem>(Host(), this);
  TmvSelectItem* row = owned.get();
  RegisterChild(std::move(owned));
  items_.insert(items_.begin() + std::clamp(index, 0, Count()), row);
  row->SetUpdateParent(this);
  if (HasControls() && row->CanCreateControls()) row->CreateControl();
  return row;
}

void TmvSelectList::ItemDestroying(TmvSelectItem* item) {
  auto drop = [item](std::vector<TmvSelectItem*>& list) { std::erase(list, item); };
  drop(items_);
  drop(whereOrder_);
  drop(havingOrder_);
  drop(orderBy_);
}

TmvSelectItem* TmvSelectList::AddEmptyRow() { return InsertEmptyRow(Count()); }

TmvSelectItem* TmvSelectList::InsertEmptyRow(int index) {
  if (index < 0 || index > Count()) RaiseListIndexError(index, Count());
  TmvSelectItem* row = CreateRow(index);
  NotifySQLUpdated();
  return row;
}

void TmvSelectList::RemoveLastRow() {
  if (items_.empty()) return;
  DestroyChild(items_.back());
  NotifySQLUpdated();
}

void TmvSelectList::Delete(int index) {
  TmvSelectItem* row = Items(index);
  TmvUpdateScope update(this);
  DestroyChild(row);
  NotifySQLUpdated();
}

void TmvSelectList::Move(int from, int to) {
  if (from < 0 || from >= Count()) RaiseListIndexError(from, Count());
  if (to < 0 || to >= Count()) RaiseListIndexError(to, Count());
  if (from == to) return;
  TmvSelectItem* row = items_[from];
  items_.erase(items_.begin() + from);
  items_.insert(items_.begin() + to, row);
  NotifySQLUpdated();
}

void TmvSelectList::Clear() {
  TmvUpdateScope update(this);
  while (!items_.empty()) DestroyChild(items_.back());
  whereOrder_.clear();
  havingOrder_.clear();
  orderBy_.clear();
  NotifySQLUpdated();
}

// --- The row invariant and the grid ---

void TmvSelectList::DoAfterUpdated() {
  if (!IsDestroying()) {
    if (items_.empty() || items_.back()->Expression()) CreateRow(Count());
    while (Count() >= 2 && !items_[Count() - 1]->Expression() && !items_[Count() - 2]->Expression())
      DestroyChild(items_.back());
    FillList();
    if (unionSubQuery_ && unionSubQuery_->Datasources()) unionSubQuery_->Datasources()->UpdateChecks();
  }
  TmvQueryBuilderControlOwner::DoAfterUpdated();
}

ImvSelectListControl* TmvSelectList::SelectListControl() const {
  return dynamic_cast<ImvSelectListControl*>(GetControls(0));
}

void TmvSelectList::SetGeneralColumnsWidth(const std::vector<int32_t>& widths) {
  if (generalColumnsWidth_ == widths) return;
  generalColumnsWidth_ = widths;
  if (ImvControl* control = GetControls(0)) control->UpdateControlVisualParams(this);
}

void TmvSelectList::SetConditionsColumnsWidth(const std::vector<int32_t>& widths) {
  if (conditionsColumnsWidth_ == widths) return;
  conditionsColumnsWidth_ = widths;
  if (ImvControl* control = GetControls(0)) control->UpdateControlVisualParams(this);
}

void TmvSelectList::FillList() {
  ImvSelectListControl* control = SelectListControl();
  if (!control) return;
  filling_ = true;
  try {
    control->FillList();
  } catch (...) {
    filling_ = false;
    throw;
  }
  filling_ = false;
}

// --- Finding rows ---

TmvSelectItem* TmvSelectList::AddSelectItem(const TastNode* expression, TmvConditionsType type) {
  TmvUpdateScope update(this);
  TmvSelectItem* row = nullptr;
  for (TmvSelectItem* candidate : items_)
    if (!candidate->Expression()) {
      row = candidate;
      break;
    }
  if (!row) row = CreateRow(Count());
  row->LoadFromAST(const_cast<TastNode*>(expression));
  row->SetConditionsType(type);
  NotifySQLUpdated();
  return row;
}

TmvSelectItem* TmvSelectList::FindSelectItemFrom(int startIndex, const TastNode* expression,
                                                 TmvConditionsTypes types) const {
  for (int i = std::max(startIndex, 0); i < Count(); ++i) {
    TmvSelectItem* row = items_[i];
    if (types.Contains(row->ConditionsType()) && row->IsEqualExpression(expression)) return row;
  }
  return nullptr;
}

TmvSelectItem* TmvSelectList::FindOrAddSelectItem(const TastNode* expression, TmvConditionsTypes types,
                                                  TmvConditionsType newType) {
  return FindOrAddSelectItemFrom(0, expression, types, newType);
}

TmvSelectItem* TmvSelectList::FindOrAddSelectItemFrom(int startIndex, const TastNode* expression,
                                                      TmvConditionsTypes types, TmvConditionsType newType) {
  if (!expression) return nullptr;
  if (TmvSelectItem* row = FindSelectItemFrom(startIndex, expression, types)) {
    if (row->ConditionsType() == ctNone) row->SetConditionsType(newType);
    return row;
  }
  return AddSelectItem(expression, newType);
}

// --- Queries ---

bool TmvSelectList::IsQueryWithAggregates() const {
  return std::any_of(items_.begin(), items_.end(), [](TmvSelectItem* row) { return row->IsAggregatedExpression(); });
}

bool TmvSelectList::IsQueryWithGrouping() const {
  return std::any_of(items_.begin(), items_.end(), [](TmvSelectItem* row) { return row->Grouping(); });
}

// --- The select clause ---

void TmvSelectList::LoadSelectListFromAST(TmvOwned<TSQLSelectItems> items) {
  TmvUpdateScope update(this);
  selectItemsAST_.reset();
  if (!items) items = TastCreate<TSQLSelectItems>(SQLContext());
  bool noRows = false;
  if (items->Items.Count() == 1) {
    TastNode* only = items->Items.Item(0);
    auto* expression = TmvCast<TSQLSelectItemExpression>(only);
    // A lone "*" is what an empty grid prints anyway.
    noRows = TmvCast<TSQLSelectItemAllColumns>(only) || (expression && !expression->Expression);
  }
  if (noRows) {
    items->Items.Clear();
  } else {
    for (int i = 0; items->Items.Count() > 0; ++i) {
      TmvOwned<TastNode> item = items->Items.Extract(0);
      TmvSelectItem* row = i < Count() ? items_[i] : CreateRow(Count());
      row->conditionsType_ = ctNone;
      row->LoadFromAST(std::move(item));
      row->select_ = true;
      row->NotifySQLUpdated();
    }
  }
  selectItemsAST_ = std::move(items);
  NotifySQLUpdated();
}

void TmvSelectList::StartConditionsLoading() {
  for (TmvSelectItem* row : items_) row->conditionsType_ = ctNone;
  whereOrder_.clear();
  havingOrder_.clear();
}

void TmvSelectList::FinalizeLoading() {
  TmvUpdateScope update(this);
  for (TmvSelectItem* row : std::vector<TmvSelectItem*>(items_)) {
    if (!row->Expression()) continue;
    auto* aggregate = TmvCast<TSQLExpressionAggregate>(row->Expression());
    const bool claimable = (row->GetConditionsCount() == 0 && row->ConditionsType() == ctNone) ||
                           row->ConditionsType() == ctHaving;
    // The argument list of an aggregate as the parser makes it: none for Name(*).
    auto* arguments = aggregate ? TmvCast<TastNodeWithList>(aggregate->Argument.get()) : nullptr;
    const bool oneArgument =
        aggregate && (!aggregate->Argument || (arguments && arguments->Items.Count() == 1 &&
                                               TmvCast<TSQLExpressionItem>(arguments->Items.Item(0))));
    if (aggregate && !row->Grouping() && claimable && oneArgument && !row->aggregate_) {
      // The aggregate goes apart from what it aggregates; COUNT(*) keeps "*".
      TmvOwned<TastNode> argument =
          arguments ? arguments->Items.Extract(0) : TmvOwned<TastNode>(TastCreate<TSQLSelectItemAllColumns>(SQLContext()));
      aggregate->Argument.Reset();
      TmvOwned<TastNode> node = std::move(row->expression_);
      row->aggregate_.reset(static_cast<TSQLExpressionAggregate*>(node.release()));
      row->expression_ = std::move(argument);
      row->CalcColumnAndDatasource();
      row->NotifySQLUpdated();
    }
    if (row->ConditionsType() == ctNone) {
      const bool aggregated = row->aggregate_ || TmvCast<TSQLExpressionAggregate>(row->Expression());
      row->SetConditionsType(aggregated ? ctHaving : ctWhere);
    }
  }
  NotifySQLUpdated();
}

TmvOwned<TSQLSelectItems> TmvSelectList::GetSelectItemsTree() {
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TSQLSelectItems> items =
      selectItemsAST_ ? selectItemsAST_->CloneAs<TSQLSelectItems>(context) : TastCreate<TSQLSelectItems>(context);
  items->Items.Clear();
  for (TmvSelectItem* row : items_)
    if (row->Select() && row->Expression())
      if (TastNode* item = row->GetResultASTInternal()) items->Items.Add(TmvOwned<TastNode>(
          static_cast<TastNode*>(item->Clone(context).release())));
  // No output column prints as "*".
  if (items->Items.Count() == 0) items->Items.Add(TastCreate<TSQLSelectItemAllColumns>(context));
  return items;
}

TmvOwned<TastNode> TmvSelectList::CreateResultAST() { return GetSelectItemsTree(); }

}  // namespace mv
