// GROUP BY and ORDER BY of the select list in both directions, and the sort
// of a row.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"

namespace mv {

namespace {

TmvBaseSyntaxProvider* ProviderOf(const TmvQueryBuilderControlOwner* owner) {
  return owner->SQLContext() ? owner->SQLContext()->SyntaxProvider() : nullptr;
}

// A column of one unquoted-if-possible identifier.
TmvOwned<TSQLExpressionItem> ColumnOfName(TmvBaseSQLContext* context, TmvOwned<TastToken> name) {
  auto column = TastCreate<TSQLObjectColumn>(context);
  column->AddName(std::move(name));
  auto expression = TastCreate<TSQLExpressionColumn>(context);
  expression->Column.Set(std::move(column));
  return expression;
}

TmvOwned<TSQLExpressionItem> AsExpression(TmvOwned<TastNode> node) {
  auto* expression = TmvCast<TSQLExpressionItem>(node.get());
  if (!expression) return nullptr;
  node.release();
  return TmvOwned<TSQLExpressionItem>(expression);
}

// The name of a column of one part without a table prefix, or null. A
// column bound to a source names that source's field (the fix-up took its
// prefix into the binding), never an output column.
const TastToken* OnePartColumnName(const TastNode* node) {
  auto* column = TmvCast<TSQLExpressionColumn>(node);
  if (!column || !column->Column || column->Column->Items.Count() != 1) return nullptr;
  if (column->Column->FromSource) return nullptr;
  if (column->Column->DatabaseLink && column->Column->DatabaseLink->Items.Count() > 0) return nullptr;
  return column->Column->Token(0);
}

}  // namespace

// --- Sort of a row ---

int TmvSelectItem::GetSortOrder() const {
  const auto& order = selectList_->OrderBy();
  auto found = std::find(order.begin(), order.end(), this);
  return found == order.end() ? -1 : static_cast<int>(found - order.begin());
}

void TmvSelectItem::SetSortType(TmvQueryBuilderItemSortType type) {
  if (sortType_ == type) return;
  TmvUpdateScope update(this);
  sortType_ = type;
  if (type == stNone) {
    selectList_->RemoveFromOrderBy(this);
    orderByItem_.reset();
  } else {
    selectList_->AddToOrderBy(this);
    orderByItem_ = TastCreate<TSQLOrderByItem>(SQLContext());
  }
  NotifySQLUpdated();
}

void TmvSelectItem::SetSortNullOrdering(TSQLOrderByNullOrdering ordering) {
  if (sortNullOrdering_ == ordering) return;
  sortNullOrdering_ = ordering;
  NotifySQLUpdated();
}

void TmvSelectItem::SetSortOrder(int position) {
  TmvUpdateScope update(this);
  if (sortType_ == stNone) SetSortType(stAsc);
  selectList_->MoveInOrderBy(this, position);
  NotifySQLUpdated();
}

WideString TmvSelectItem::GetSortTypeString() const {
  WideString text;
  if (sortType_ == stAsc) text = MessageText(mvQBSortTypeAscending);
  if (sortType_ == stDesc) text = MessageText(mvQBSortTypeDescending);
  if (text.empty()) return text;
  if (sortNullOrdering_ == noNullsFirst) text += u" Nulls First";
  if (sortNullOrdering_ == noNullsLast) text += u" Nulls Last";
  return text;
}

void TmvSelectItem::SetSortTypeString(const WideString& text) {
  const WideString trimmed = WideTrim(text);
  TmvUpdateScope update(this);
  if (trimmed.empty()) {
    SetSortType(stNone);
    SetSortNullOrdering(noNone);
    return;
  }
  const WideString upper = WideUpperCase(trimmed);
  const WideString ascending = WideUpperCase(MessageText(mvQBSortTypeAscending));
  const WideString descending = WideUpperCase(MessageText(mvQBSortTypeDescending));
  TmvQueryBuilderItemSortType type;
  WideString rest;
  if (WideStartsStr(ascending, upper)) {
    type = stAsc;
    rest = upper.substr(ascending.size());
  } else if (WideStartsStr(descending, upper)) {
    type = stDesc;
    rest = upper.substr(descending.size());
  } else {
    return;
  }
  SetSortType(type);
  if (select_ && !IsAggregatedExpression() && selectList_->IsQueryWithGrouping()) SetGrouping(true);
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  if (provider && provider->IsSupportNullOrdering()) {
    rest = WideTrim(rest);
    SetSortNullOrdering(rest == u"NULLS FIRST" ? noNullsFirst : rest == u"NULLS LAST" ? noNullsLast : noNone);
  }
}

WideString TmvSelectItem::GetSortOrderString() const {
  const int order = GetSortOrder();
  return order < 0 ? WideString() : IntToWide(order + 1);
}

void TmvSelectItem::SetSortOrderString(const WideString& text) {
  const WideString trimmed = WideTrim(text);
  if (trimmed.empty()) {
    SetSortType(stNone);
    return;
  }
  int position = 0;
  if (!TryStrToInt(trimmed, position)) return;
  TmvUpdateScope update(this);
  if (sortType_ == stNone) SetSortType(stAsc);
  const int count = selectList_->GetOrderByItemsCount();
  SetSortOrder(std::clamp(position - 1, 0, std::max(count - 1, 0)));
}

TmvOwned<TSQLOrderByItem> TmvSelectItem::GetOrderByItem() const {
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TSQLOrderByItem> item =
      orderByItem_ ? orderByItem_->CloneAs<TSQLOrderByItem>(context) : TastCreate<TSQLOrderByItem>(context);
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  TmvSubQuery* root = UnionSubQuery() ? UnionSubQuery()->RootQuery() : nullptr;
  TmvOwned<TSQLExpressionItem> expression;
  if (select_ && root && root->IsQueryWithUnions()) {
    // After a union the sort names an output column where it can.
    const std::vector<WideString> names = GetOccupiedColumnNames();
    if (names.size() == 1)
      if (TmvOwned<TastTokenIdentifier> name = context->ParseIdentifierQuoteIfNeed(names[0]))
        expression = ColumnOfName(context, std::move(name));
  } else if (provider && provider->IsSupportOrderByAlias() && select_ && alias_ && alias_->Name) {
    expression = ColumnOfName(context, alias_->Name->CloneAs<TastToken>(context));
  }
  if (!expression) expression = AsExpression(GetExpression());
  item->Expression.Set(std::move(expression));
  item->Descending = sortType_ == stDesc;
  item->NullOrdering = sortNullOrdering_;
  return item;
}

void TmvSelectItem::LoadOrderByItemFromAST(TmvOwned<TSQLOrderByItem> item) {
  if (!item) return;
  TmvUpdateScope update(this);
  selectList_->AddToOrderBy(this);
  sortType_ = item->Descending ? stDesc : stAsc;
  sortNullOrdering_ = static_cast<TSQLOrderByNullOrdering>(item->NullOrdering);
  item->Expression.Reset();
  orderByItem_ = std::move(item);
  NotifySQLUpdated();
}

TmvOwned<TastNode> TmvSelectItem::GetGroupByItem() const {
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  if (provider && provider->IsSupportGroupByAlias() && select_ && alias_ && alias_->Name)
    return ColumnOfName(SQLContext(), alias_->Name->CloneAs<TastToken>(SQLContext()));
  return GetExpression();
}

// --- The list ---

TmvSelectItem* TmvSelectList::GetOrderByItems(int index) const {
  if (index < 0 || index >= GetOrderByItemsCount()) RaiseListIndexError(index, GetOrderByItemsCount());
  return orderBy_[index];
}

void TmvSelectList::RemoveFromOrderBy(TmvSelectItem* item) { std::erase(orderBy_, item); }

void TmvSelectList::AddToOrderBy(TmvSelectItem* item) {
  if (std::find(orderBy_.begin(), orderBy_.end(), item) == orderBy_.end()) orderBy_.push_back(item);
}

void TmvSelectList::MoveInOrderBy(TmvSelectItem* item, int position) {
  auto found = std::find(orderBy_.begin(), orderBy_.end(), item);
  if (found == orderBy_.end()) return;
  orderBy_.erase(found);
  position = std::clamp(position, 0, static_cast<int>(orderBy_.size()));
  orderBy_.insert(orderBy_.begin() + position, item);
  NotifySQLUpdated();
}

TmvSelectItem* TmvSelectList::FindRowByOccupiedName(const TastNode* expression) const {
  const TastToken* name = OnePartColumnName(expression);
  if (!name) return nullptr;
  for (TmvSelectItem* row : items_) {
    if (!row->IsCanSort() || std::find(orderBy_.begin(), orderBy_.end(), row) != orderBy_.end()) continue;
    for (const WideString& occupied : row->GetOccupiedColumnNames())
      if (WideSameText(occupied, name->Token)) return row;
  }
  return nullptr;
}

void TmvSelectList::LoadGroupByListFromAST(TmvOwned<TSQLGroupByList> list) {
  TmvUpdateScope update(this);
  if (!list) list = TastCreate<TSQLGroupByList>(SQLContext());
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  if (provider && provider->IsSupportGroupByStar() && list->Star) {
    for (TmvSelectItem* row : std::vector<TmvSelectItem*>(items_))
      if (row->Select() && !row->IsAggregatedExpression()) row->SetGrouping(true);
  } else {
    for (int i = 0; i < list->Items.Count(); ++i) {
      TastNode* node = list->Items.Item(i);
      TmvSelectItem* row = FindRowByOccupiedName(node);
      if (!row) row = FindOrAddSelectItem(node, {ctNone, ctHaving}, ctNone);
      if (row) row->SetGrouping(true);
    }
  }
  list->Items.Clear();
  groupByAST_ = std::move(list);
  NotifySQLUpdated();
}

void TmvSelectList::LoadOrderByListFromAST(TmvOwned<TSQLOrderByClause> list) {
  TmvUpdateScope update(this);
  if (!list) list = TastCreate<TSQLOrderByClause>(SQLContext());
  while (list->Items.Count() > 0) {
    TmvOwned<TastNode> node = list->Items.Extract(0);
    auto* item = TmvCast<TSQLOrderByItem>(node.get());
    if (!item || !item->Expression) continue;
    TmvSelectItem* row = FindRowByOccupiedName(item->Expression.get());
    if (!row) row = FindOrAddSelectItem(item->Expression.get(), TmvConditionsTypes::All(), ctNone);
    if (!row) continue;
    node.release();
    row->LoadOrderByItemFromAST(TmvOwned<TSQLOrderByItem>(item));
  }
  orderByAST_ = std::move(list);
  NotifySQLUpdated();
}

TmvOwned<TSQLGroupByList> TmvSelectList::GetGroupByTree() const {
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TSQLGroupByList> list =
      groupByAST_ ? groupByAST_->CloneAs<TSQLGroupByList>(context) : TastCreate<TSQLGroupByList>(context);
  list->Items.Clear();
  list->Star = false;
  TmvBaseSyntaxProvider* provider = context ? context->SyntaxProvider() : nullptr;
  bool star = false;
  if (provider && provider->IsSupportGroupByStar()) {
    bool anyGrouping = false;
    star = true;
    for (TmvSelectItem* row : items_) {
      if (!row->Expression()) continue;
      anyGrouping |= row->Grouping();
      const bool fits = (!row->Select() && !row->Grouping()) || (row->Select() && row->Grouping()) ||
                        (row->Select() && row->IsAggregatedExpression());
      if (!fits) star = false;
    }
    star = star && anyGrouping;
  }
  if (star) {
    list->Star = true;
  } else {
    for (TmvSelectItem* row : items_)
      if (row->Grouping() && row->Expression())
        if (TmvOwned<TastNode> item = row->GetGroupByItem()) list->Items.Add(std::move(item));
  }
  if (list->Items.Count() == 0 && !list->Star) return nullptr;
  return list;
}

TmvOwned<TSQLOrderByClause> TmvSelectList::GetOrderByClause() const {
  if (orderBy_.empty()) return nullptr;
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TSQLOrderByClause> clause =
      orderByAST_ ? orderByAST_->CloneAs<TSQLOrderByClause>(context) : TastCreate<TSQLOrderByClause>(context);
  clause->Items.Clear();
  for (TmvSelectItem* row : orderBy_) clause->Items.Add(row->GetOrderByItem());
  return clause;
}

}  // namespace mv
