#include "transform/OutputColumns.h"

#include <cstring>
#include <pugixml.hpp>

#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"
#include "transform/OutputColumnSource.h"
#include "tree/Tokens.h"

namespace mv {

MV_DEFINE_CLASS(TmvOutputColumn, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TmvOutputColumnsList, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TmvSortedColumn, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TmvAggregatedColumn, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TmvSortedColumnsList, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TmvAggregatedColumnsList, TmvUpdatablePersistent)

namespace {

constexpr const char16_t* kColumnNotFound = u"Column with name %s is not found in query.";
constexpr const char16_t* kCannotFilter = u"Cannot filter by this column.";
constexpr const char16_t* kCannotSort = u"Cannot sort by this column.";

void SetAttribute(pugi::xml_node element, const char* name, const WideString& value) {
  element.append_attribute(name).set_value(UTF8Encode(value).c_str());
}

WideString Attribute(pugi::xml_node element, const char* name) {
  return UTF8Decode(element.attribute(name).as_string());
}

TmvOutputColumn* ColumnOfElement(pugi::xml_node element, TmvOutputColumnsList* columns) {
  if (!element.attribute("column") || !columns) return nullptr;
  return columns->FindColumnByOriginalName(Attribute(element, "column"));
}

}  // namespace

// --- Output column ---

TmvOutputColumn::TmvOutputColumn(TmvOutputColumnsList* list, TmvQueryBuilder* queryBuilder, TmvOutputColumnInfo info)
    : list_(list), queryBuilder_(queryBuilder), info_(std::move(info)) {}

int TmvOutputColumn::Index() const { return list_ ? list_->IndexOf(this) : -1; }

bool TmvOutputColumn::HasUnions() const { return TransformerQueryHasUnions(queryBuilder_); }

WideString TmvOutputColumn::QuoteIdentifierIfNeeded(const WideString& name) const {
  TmvBaseSQLContext* context = queryBuilder_ ? queryBuilder_->SQLContext() : nullptr;
  if (!context || !context->SyntaxProvider() || name.empty()) return name;
  // The name is the object's real name: written as a quoted identifier, it
  // prints bare only where the dialect reads the bare name as that name (in
  // PostgreSQL "Total" keeps its quotes, total does not need them).
  TmvOwned<TastTokenIdentifier> identifier = TastCreate<TastTokenIdentifier>(context, name, true);
  return identifier->SimpleSQL(context->SQLBuilderExpressionForServer());
}

WideString TmvOutputColumn::GetExpressionForFiltration() const {
  if (!info_.ObjectName.empty()) {
    const WideString column = QuoteIdentifierIfNeeded(info_.ColumnNameInQuery);
    return HasUnions() ? column : info_.ObjectNameInQuery + u"." + column;
  }
  if (HasUnions()) return info_.Alias.empty() ? info_.ColumnNameInQuery : QuoteIdentifierIfNeeded(info_.Alias);
  return u"(" + info_.Expression + u")";
}

WideString TmvOutputColumn::GetExpressionForSorting() const {
  if (!info_.Alias.empty()) return QuoteIdentifierIfNeeded(info_.Alias);
  if (HasUnions()) return info_.ObjectName.empty() ? info_.ColumnNameInQuery : QuoteIdentifierIfNeeded(info_.ColumnName);
  return info_.Expression;
}

WideString TmvOutputColumn::GetExpressionForWrappedQuery() const {
  if (!info_.Alias.empty()) return QuoteIdentifierIfNeeded(info_.Alias);
  return info_.ObjectName.empty() ? info_.ColumnNameInQuery : QuoteIdentifierIfNeeded(info_.ColumnName);
}

TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Condition(const WideString& text) {
  if (!GetIsSupportFiltering()) throw Exception(kCannotFilter);
  return TmvCreate<TmvFilterColumnCondition>(this, u"{column}" + text);
}

TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Equal(const WideString& v) { return Condition(u" = " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_Equal(const WideString& v) { return Condition(u" <> " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Greater(const WideString& v) { return Condition(u" > " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::GreaterEqual(const WideString& v) { return Condition(u" >= " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Less(const WideString& v) { return Condition(u" < " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::LessEqual(const WideString& v) { return Condition(u" <= " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_Greater(const WideString& v) { return LessEqual(v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_GreaterEqual(const WideString& v) { return Less(v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_Less(const WideString& v) { return GreaterEqual(v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_LessEqual(const WideString& v) { return Greater(v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Like(const WideString& v) { return Condition(u" like " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_Like(const WideString& v) { return Condition(u" not like " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::In_(const WideString& v) { return Condition(u" in " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_In(const WideString& v) { return Condition(u" not in " + v); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Between(const WideString& a, const WideString& b) {
  return Condition(u" between " + a + u" and " + b);
}
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_Between(const WideString& a, const WideString& b) {
  return Condition(u" not between " + a + u" and " + b);
}
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::IsNull() { return Condition(u" is null"); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::Not_IsNull() { return Condition(u" is not null"); }
TmvOwned<TmvFilterColumnCondition> TmvOutputColumn::IsNotNull() { return Condition(u" is not null"); }

TmvOwned<TmvSortedColumn> TmvOutputColumn::Sorted(TmvQueryBuilderItemSortType type) {
  if (!GetIsSupportSorting()) throw Exception(kCannotSort);
  return TmvCreate<TmvSortedColumn>(this, type, WideString());
}

TmvOwned<TmvSortedColumn> TmvOutputColumn::Asc() { return Sorted(stAsc); }
TmvOwned<TmvSortedColumn> TmvOutputColumn::Desc() { return Sorted(stDesc); }

TmvOwned<TmvAggregatedColumn> TmvOutputColumn::Aggregate(const char16_t* function) {
  return TmvCreate<TmvAggregatedColumn>(this, WideString(), function + GetExpressionForWrappedQuery() + u")");
}

TmvOwned<TmvAggregatedColumn> TmvOutputColumn::Avg() { return Aggregate(u"Avg("); }
TmvOwned<TmvAggregatedColumn> TmvOutputColumn::Count() { return Aggregate(u"Count("); }
TmvOwned<TmvAggregatedColumn> TmvOutputColumn::Max() { return Aggregate(u"Max("); }
TmvOwned<TmvAggregatedColumn> TmvOutputColumn::Min() { return Aggregate(u"Min("); }
TmvOwned<TmvAggregatedColumn> TmvOutputColumn::Sum() { return Aggregate(u"Sum("); }

// --- The list of output columns ---

TmvOutputColumn* TmvOutputColumnsList::Items(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToWide(index) + u")");
  return items_[static_cast<size_t>(index)].get();
}

int TmvOutputColumnsList::IndexOf(const TmvOutputColumn* column) const {
  for (int i = 0; i < Count(); ++i)
    if (items_[static_cast<size_t>(i)].get() == column) return i;
  return -1;
}

namespace {

// The one index whose name matches; a second match makes it none.
template <class NameOf>
int UniqueIndex(const std::vector<TmvOwned<TmvOutputColumn>>& items, WideStringView name, NameOf nameOf) {
  int found = -1;
  for (int i = 0; i < static_cast<int>(items.size()); ++i) {
    if (WideCompareText(nameOf(*items[static_cast<size_t>(i)]), name) != 0) continue;
    if (found >= 0) return -1;
    found = i;
  }
  return found;
}

}  // namespace

int TmvOutputColumnsList::IndexOfByOriginalName(WideStringView name) const {
  return UniqueIndex(items_, name, [](const TmvOutputColumn& c) -> const WideString& { return c.OriginalName(); });
}

int TmvOutputColumnsList::IndexOfByResultName(WideStringView name) const {
  return UniqueIndex(items_, name, [](const TmvOutputColumn& c) -> const WideString& { return c.ResultName(); });
}

TmvOutputColumn* TmvOutputColumnsList::FindColumnByOriginalName(WideStringView name) const {
  const int index = IndexOfByOriginalName(name);
  return index >= 0 ? Items(index) : nullptr;
}

TmvOutputColumn* TmvOutputColumnsList::FindColumnByResultName(WideStringView name) const {
  const int index = IndexOfByResultName(name);
  return index >= 0 ? Items(index) : nullptr;
}

TmvOutputColumn* TmvOutputColumnsList::ColumnByOriginalName(WideStringView name) const {
  TmvOutputColumn* column = FindColumnByOriginalName(name);
  if (!column) throw Exception(WideFormat(kColumnNotFound, {WideString(name)}));
  return column;
}

TmvOutputColumn* TmvOutputColumnsList::ColumnByResultName(WideStringView name) const {
  TmvOutputColumn* column = FindColumnByResultName(name);
  if (!column) throw Exception(WideFormat(kColumnNotFound, {WideString(name)}));
  return column;
}

void TmvOutputColumnsList::Assign(const TmvPersistent* source) {
  auto* other = TmvCast<TmvOutputColumnsList>(source);
  if (!other) {
    TmvUpdatablePersistent::Assign(source);
    return;
  }
  TmvUpdateBatch batch(*this);
  for (const auto& column : other->items_) {
    TmvOutputColumn* mine = FindColumnByOriginalName(column->OriginalName());
    if (!mine) continue;
    mine->SetVisible(column->Visible());
    mine->SetPreassignedName(column->PreassignedName());
  }
}

TmvOutputColumn* TmvOutputColumnsList::Add(TmvQueryBuilder* queryBuilder, TmvOutputColumnInfo info) {
  auto column = TmvCreate<TmvOutputColumn>(this, queryBuilder, std::move(info));
  column->SetParent(this);
  items_.push_back(std::move(column));
  NotifyUpdated();
  return items_.back().get();
}

void TmvOutputColumnsList::Clear() {
  if (items_.empty()) return;
  items_.clear();
  NotifyUpdated();
}

void TmvOutputColumnsList::UpdateColumns(TmvQueryBuilder* queryBuilder, bool transformable) {
  TmvUpdateBatch batch(*this);
  if (!queryBuilder || !transformable) {
    Clear();
    return;
  }
  std::vector<WideString> hidden;
  for (const auto& column : items_)
    if (!column->Visible()) hidden.push_back(column->OriginalName());
  Clear();
  if (queryBuilder->IsDestroying()) return;
  for (TmvOutputColumnInfo& info : CollectOutputColumns(queryBuilder)) {
    TmvOutputColumn* column = Add(queryBuilder, std::move(info));
    for (const WideString& name : hidden)
      if (name == column->OriginalName()) column->SetVisible(false);
  }
  NotifyUpdated();
}

void TmvOutputColumnsList::Write(pugi::xml_node parent) const {
  pugi::xml_node element = parent.append_child("columns_list");
  for (const auto& column : items_) {
    pugi::xml_node child = element.append_child("column");
    SetAttribute(child, "name", column->OriginalName());
    child.append_attribute("visible").set_value(column->Visible() ? "true" : "false");
  }
}

void TmvOutputColumnsList::Read(pugi::xml_node element) {
  TmvUpdateBatch batch(*this);
  for (pugi::xml_node child = element.child("column"); child; child = child.next_sibling("column")) {
    TmvOutputColumn* column = FindColumnByOriginalName(Attribute(child, "name"));
    if (!column || !child.attribute("visible")) continue;
    const std::string visible = child.attribute("visible").as_string();
    column->SetVisible(visible == "true" || visible == "1" || visible == "True");
  }
}

// --- Sorted and aggregated columns ---

TmvSortedColumn::TmvSortedColumn(TmvOutputColumn* column, TmvQueryBuilderItemSortType sortType, WideString expression)
    : column_(column), sortType_(sortType), expression_(std::move(expression)) {
  if (column_) columnExpression_ = column_->GetExpressionForSorting();
}

void TmvSortedColumn::SetColumn(TmvOutputColumn* column) {
  column_ = column;
  columnExpression_ = column ? column->GetExpressionForSorting() : WideString();
  NotifyUpdated();
}

TmvAggregatedColumn::TmvAggregatedColumn(TmvOutputColumn* column, WideString alias, WideString expression)
    : column_(column), alias_(std::move(alias)), expression_(std::move(expression)) {
  if (column_) columnName_ = column_->OriginalName();
}

template <class T>
int TmvTransformerItemsList<T>::IndexOf(const T* item) const {
  for (int i = 0; i < Count(); ++i)
    if (items_[static_cast<size_t>(i)].get() == item) return i;
  return -1;
}

template <class T>
int TmvTransformerItemsList<T>::IndexOf(const TmvOutputColumn* column) const {
  if (!column) return -1;
  for (int i = 0; i < Count(); ++i)
    if (items_[static_cast<size_t>(i)]->Column() == column) return i;
  return -1;
}

template <class T>
int TmvTransformerItemsList<T>::IndexOf(WideStringView expression) const {
  for (int i = 0; i < Count(); ++i) {
    const T& item = *items_[static_cast<size_t>(i)];
    if (!item.Column() && item.Expression() == expression) return i;
  }
  return -1;
}

template <class T>
void TmvTransformerItemsList<T>::Delete(int index) {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToWide(index) + u")");
  items_.erase(items_.begin() + index);
  this->NotifyUpdated();
}

template <class T>
void TmvTransformerItemsList<T>::Clear() {
  if (items_.empty()) return;
  items_.clear();
  this->NotifyUpdated();
}

template <class T>
T* TmvTransformerItemsList<T>::Append(TmvOwned<T> item) {
  item->SetParent(this);
  items_.push_back(std::move(item));
  this->NotifyUpdated();
  return items_.back().get();
}

template <class T>
T* TmvTransformerItemsList<T>::Replace(int index, TmvOwned<T> item) {
  item->SetParent(this);
  items_[static_cast<size_t>(index)] = std::move(item);
  this->NotifyUpdated();
  return items_[static_cast<size_t>(index)].get();
}

template class TmvTransformerItemsList<TmvSortedColumn>;
template class TmvTransformerItemsList<TmvAggregatedColumn>;

TmvSortedColumn* TmvSortedColumnsList::Add(TmvOwned<TmvSortedColumn> item) {
  if (!item) throw EmvQueryBuilderError(u"A sorting list cannot hold a null entry");
  const int index = item->Column() ? IndexOf(item->Column()) : IndexOf(WideStringView(item->Expression()));
  return index >= 0 ? Replace(index, std::move(item)) : Append(std::move(item));
}

void TmvSortedColumnsList::Write(pugi::xml_node parent) const {
  pugi::xml_node element = parent.append_child("sort_list");
  for (const auto& item : items_) {
    pugi::xml_node child = element.append_child("sort");
    SetAttribute(child, "expression", item->Expression());
    if (item->Column()) SetAttribute(child, "column", item->Column()->OriginalName());
    child.append_attribute("type").set_value(item->SortType() == stDesc ? "desc" : "asc");
  }
}

void TmvSortedColumnsList::Read(pugi::xml_node element, TmvOutputColumnsList* columns) {
  TmvUpdateBatch batch(*this);
  Clear();
  for (pugi::xml_node child = element.child("sort"); child; child = child.next_sibling("sort")) {
    const TmvQueryBuilderItemSortType type = std::strcmp(child.attribute("type").as_string(), "desc") == 0 ? stDesc : stAsc;
    Add(TmvCreate<TmvSortedColumn>(ColumnOfElement(child, columns), type, Attribute(child, "expression")));
  }
}

TmvAggregatedColumn* TmvAggregatedColumnsList::Add(TmvOwned<TmvAggregatedColumn> item, const WideString& alias) {
  if (!item) throw EmvQueryBuilderError(u"An aggregation list cannot hold a null entry");
  if (!alias.empty()) item->SetAlias(alias);
  return Append(std::move(item));
}

void TmvAggregatedColumnsList::Write(pugi::xml_node parent) const {
  pugi::xml_node element = parent.append_child("aggregation_list");
  for (const auto& item : items_) {
    pugi::xml_node child = element.append_child("aggregation");
    if (item->Column()) SetAttribute(child, "column", item->Column()->OriginalName());
    SetAttribute(child, "expression", item->Expression());
    SetAttribute(child, "alias", item->Alias());
  }
}

void TmvAggregatedColumnsList::Read(pugi::xml_node element, TmvOutputColumnsList* columns) {
  TmvUpdateBatch batch(*this);
  Clear();
  for (pugi::xml_node child = element.child("aggregation"); child; child = child.next_sibling("aggregation")) {
    Add(TmvCreate<TmvAggregatedColumn>(ColumnOfElement(child, columns), WideString(), Attribute(child, "expression")),
        Attribute(child, "alias"));
  }
}

}  // namespace mv
