// The condition grid in both directions. A WHERE (or HAVING) tree is read as
// an OR of branches, each an AND of conditions: branch K becomes condition
// column K, and each condition goes to the row of its left-hand expression,
// with that expression taken out. Printing puts the left-hand expressions
// back, ANDs the entries of a column and ORs the columns. Whatever lies
// deeper than that outer shape stays inside one entry.
#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

#include "frontend/SQLContext.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"

namespace mv {

namespace {

TmvOwned<TSQLExpressionItem> InBrackets(TmvOwned<TSQLExpressionItem> expression) {
  auto brackets = TastCreate<TSQLExpressionBrackets>(expression->SQLContext());
  brackets->Expression.Set(std::move(expression));
  return brackets;
}

TmvOwned<TSQLExpressionItem> BracketCollection(TmvOwned<TSQLExpressionItem> expression) {
  if (TmvCast<TSQLExpressionLogicalCollection>(expression.get())) return InBrackets(std::move(expression));
  return expression;
}

// A collection of one item is that item.
TmvOwned<TSQLExpressionItem> Unwrap(TmvOwned<TSQLExpressionLogicalCollection> collection) {
  if (collection->GetCount() == 1) return collection->Extract(0);
  return collection;
}

// The rows of a select list by the text their expression prints as, the
// text TmvSelectItem::IsEqualExpression compares, for the lookups of one
// load: each condition of a long AND chain is printed once and looked up,
// instead of every row being cloned and printed again for it. Rows keep
// their places while a condition tree loads; a row filled meanwhile is
// handed to Added.
class TmvRowsByExpression {
 public:
  explicit TmvRowsByExpression(const TmvSelectList& list) : list_(list) {}

  // The first row (in list order) whose type is in `types` and whose
  // expression prints as `expression` does: FindSelectItemFrom(0, ...).
  TmvSelectItem* Find(const TastNode* expression, TmvConditionsTypes types) {
    TmvBaseSQLContext* context = list_.SQLContext();
    if (!expression || !context) return nullptr;
    if (!filled_) {
      filled_ = true;
      for (int index = 0; index < list_.Count(); ++index) Add(index, list_.Items(index));
    }
    auto found = rows_.find(const_cast<TastNode*>(expression)->SimpleSQL(context->SQLBuilderExpressionForServer()));
    if (found == rows_.end()) return nullptr;
    for (const auto& [index, row] : found->second)
      if (types.Contains(row->ConditionsType())) return row;
    return nullptr;
  }

  void Added(TmvSelectItem* row) {
    if (!filled_) return;
    // A new row is the last one but for the empty row, or a former empty row.
    for (int index = list_.Count() - 1; index >= 0; --index)
      if (list_.Items(index) == row) return Add(index, row);
  }

 private:
  void Add(int index, TmvSelectItem* row) {
    if (!row->Expression()) return;
    TmvOwned<TastNode> expression = row->GetExpression();
    auto& same = rows_[expression->SimpleSQL(list_.SQLContext()->SQLBuilderExpressionForServer())];
    const std::pair<int, TmvSelectItem*> entry(index, row);
    same.insert(std::upper_bound(same.begin(), same.end(), entry,
                                 [](const auto& a, const auto& b) { return a.first < b.first; }),
                entry);
  }

  const TmvSelectList& list_;
  bool filled_ = false;
  std::unordered_map<WideString, std::vector<std::pair<int, TmvSelectItem*>>> rows_;
};

}  // namespace

// --- A row's entries ---

void TmvSelectItem::RemoveLExpression(TSQLExpressionItem* condition) const {
  if (!condition) return;
  TmvOwned<TastNode> expression = GetExpression();
  if (auto* item = TmvCast<TSQLExpressionItem>(expression.get())) condition->RemoveLExpression(item);
}

void TmvSelectItem::RestoreLExpression(TSQLExpressionItem* condition, const TastNode* expression) const {
  if (auto* item = TmvCast<TSQLExpressionItem>(expression); condition && item) condition->RestoreLExpression(item);
}

void TmvSelectItem::AddCondition(int index, TmvOwned<TSQLExpressionItem> condition) {
  if (index < 0 || !condition) return;
  TmvUpdateScope update(this);
  RemoveLExpression(condition.get());
  if (index >= ConditionsListCount()) conditions_.resize(index + 1);
  TmvOwned<TSQLExpressionItem>& entry = conditions_[index];
  if (!entry) {
    entry = std::move(condition);
  } else if (auto* conjunction = TmvCast<TSQLExpressionAnd>(entry.get())) {
    if (auto* other = TmvCast<TSQLExpressionAnd>(condition.get()))
      conjunction->TakeItemsFrom(*other, false);
    else
      conjunction->Add(BracketCollection(std::move(condition)));
  } else {
    auto both = TastCreate<TSQLExpressionAnd>(SQLContext());
    both->Add(BracketCollection(std::move(entry)));
    both->Add(BracketCollection(std::move(condition)));
    entry = std::move(both);
  }
  LoadSubQueries(entry.get());
  NotifySQLUpdated();
}

// --- The list ---

int TmvSelectList::GetMaxConditionCountInternal(TmvConditionsTypes types) const {
  int count = 0;
  for (TmvSelectItem* row : items_)
    if (types.Contains(row->ConditionsType())) count = std::max(count, row->GetConditionsCount());
  return count;
}

int TmvSelectList::GetMaxConditionCount() const { return GetMaxConditionCountInternal(TmvConditionsTypes::All()); }

void TmvSelectList::GetSelectItemsWithConditionsOfTypeInColumn(int column, TmvConditionsTypes types,
                                                               std::vector<TmvSelectItem*>& list) const {
  auto qualifies = [&](TmvSelectItem* row) {
    return types.Contains(row->ConditionsType()) && row->Conditions(column) &&
           std::find(list.begin(), list.end(), row) == list.end();
  };
  // Rows in the order their conditions were read come first.
  const std::vector<TmvSelectItem*>* order = nullptr;
  if (types == TmvConditionsTypes{ctWhere}) order = &whereOrder_;
  if (types == TmvConditionsTypes{ctHaving}) order = &havingOrder_;
  if (order)
    for (TmvSelectItem* row : *order)
      if (qualifies(row)) list.push_back(row);
  for (TmvSelectItem* row : items_)
    if (qualifies(row)) list.push_back(row);
}

TmvOwned<TSQLExpressionItem> TmvSelectList::GetConditionTree(TmvConditionsTypes types) const {
  const int count = GetMaxConditionCountInternal(types);
  if (count == 0) return nullptr;
  TmvBaseSQLContext* context = SQLContext();
  auto branches = TastCreate<TSQLExpressionOr>(context);
  for (int column = 0; column < count; ++column) {
    std::vector<TmvSelectItem*> rows;
    GetSelectItemsWithConditionsOfTypeInColumn(column, types, rows);
    if (rows.empty()) continue;
    auto conjunction = TastCreate<TSQLExpressionAnd>(context);
    for (TmvSelectItem* row : rows) {
      auto condition = row->Conditions(column)->CloneAs<TSQLExpressionItem>(context);
      if (TmvCast<TSQLExpressionOr>(condition.get())) condition = InBrackets(std::move(condition));
      TmvOwned<TastNode> expression = row->GetExpression();
      row->RestoreLExpression(condition.get(), expression.get());
      if (auto* inner = TmvCast<TSQLExpressionAnd>(condition.get()))
        conjunction->TakeItemsFrom(*inner, false);
      else
        conjunction->Add(std::move(condition));
    }
    branches->Add(Unwrap(std::move(conjunction)));
  }
  if (branches->GetCount() == 0) return nullptr;
  return TransformExpression(Unwrap(std::move(branches)));
}

TmvOwned<TSQLExpressionItem> TmvSelectList::TransformExpression(TmvOwned<TSQLExpressionItem> expression) {
  return mv::TransformExpression(std::move(expression));
}

TmvOwned<TSQLExpressionItem> TmvSelectList::PrepareLogicalExpressionForLoading(
    TmvOwned<TSQLExpressionItem> expression) {
  return mv::PrepareLogicalExpressionForLoading(std::move(expression));
}

TastNode* TmvSelectList::FindExpressionItem(TmvOwned<TSQLExpressionItem>& condition) {
  TSQLExpressionItem* expression = nullptr;
  condition = TSQLExpressionItem::FindExpressionItem(std::move(condition), expression);
  return expression;
}

void TmvSelectList::AddConditionOrder(TmvConditionsType type, TmvSelectItem* item) {
  std::vector<TmvSelectItem*>* order = nullptr;
  if (type == ctWhere) order = &whereOrder_;
  if (type == ctHaving) order = &havingOrder_;
  if (!order) throw EmvQueryBuilderError(u"TmvSelectList.AddConditionOrder: invalid param value: AGroup=ctNone");
  if (std::find(order->begin(), order->end(), item) == order->end()) order->push_back(item);
}

void TmvSelectList::LoadConditionFromAST(TmvOwned<TSQLExpressionItem> expression, TmvConditionsType type) {
  TmvUpdateScope update(this);
  expression = PrepareLogicalExpressionForLoading(std::move(expression));
  if (!expression) return;
  // The outer OR gives the columns, each of its items one branch.
  std::vector<TmvOwned<TSQLExpressionItem>> branches;
  if (auto* disjunction = TmvCast<TSQLExpressionOr>(expression.get())) {
    while (disjunction->GetCount() > 0) branches.push_back(disjunction->Extract(0));
  } else {
    branches.push_back(std::move(expression));
  }
  TmvRowsByExpression rows(*this);
  for (int column = 0; column < static_cast<int>(branches.size()); ++column) {
    TmvOwned<TSQLExpressionItem> branch = ExpressionExtractFromBrackets(branches[column]);
    std::vector<TmvOwned<TSQLExpressionItem>> conditions;
    if (auto* conjunction = TmvCast<TSQLExpressionAnd>(branch.get())) {
      while (conjunction->GetCount() > 0) conditions.push_back(conjunction->Extract(0));
    } else {
      conditions.push_back(std::move(branch));
    }
    for (TmvOwned<TSQLExpressionItem>& shell : conditions) {
      TmvOwned<TSQLExpressionItem> condition = ExpressionExtractFromBrackets(shell);
      TastNode* left = FindExpressionItem(condition);
      if (!condition) continue;
      if (!left) left = condition.get();
      TmvSelectItem* row = rows.Find(left, {type, ctNone});
      if (row) {
        if (row->ConditionsType() == ctNone) row->SetConditionsType(type);
      } else {
        row = AddSelectItem(left, type);
        rows.Added(row);
      }
      row->AddCondition(column, std::move(condition));
      AddConditionOrder(type, row);
    }
  }
  NotifySQLUpdated();
}

}  // namespace mv
