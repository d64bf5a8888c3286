// The columns a query returns, as the query transformer sees them, and the
// sortings and aggregates made of them.
//
// An output column knows three spellings of itself: the expression a filter
// compares (on the query's own level or through the wrapper), the expression
// a sort uses, and the name by which a wrapping query reads it. It makes the
// filter conditions, sortings and aggregates that a grid asks for:
//
//   TmvOutputColumn* total = transformer->Columns().ColumnByOriginalName(u"Total");
//   transformer->Where(total->Greater(u"10")).OrderBy(total->Desc());
#pragma once

#include <vector>

#include "model/SelectList.h"
#include "tree/AstNode.h"
#include "support/FieldType.h"
#include "support/UpdatablePersistent.h"
#include "support/WideString.h"
#include "transform/FilterConditions.h"

namespace pugi {
class xml_node;
}

namespace mv {

class TmvQueryBuilder;
class TmvSelectItem;
class TmvOutputColumnsList;

// What the statistics of the source say about one column it returns
// (TmvStatisticsOutputColumn), taken when the source changed: the statistics
// themselves are made again on the next change.
struct TmvOutputColumnInfo {
  WideString Expression;
  WideString Alias;
  WideString ColumnName;  // the alias if there is one
  WideString ObjectName;  // full name of the source's object; empty for none
  WideString ObjectNameInQuery;
  WideString ColumnNameInQuery;
  TmvSelectItem* SelectItem = nullptr;  // the row of the source's model; may be absent
  TFieldType DataType = ftUnknown;
};

class TmvSortedColumn;
class TmvAggregatedColumn;

class TmvOutputColumn : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  TmvOutputColumn(TmvOutputColumnsList* list, TmvQueryBuilder* queryBuilder, TmvOutputColumnInfo info);

  TmvOutputColumnsList* List() const { return list_; }
  TmvQueryBuilder* QueryBuilder() const { return queryBuilder_; }
  const TmvOutputColumnInfo& StatisticsColumn() const { return info_; }
  const WideString& OriginalName() const { return info_.ColumnName; }
  TFieldType DataType() const { return info_.DataType; }
  int Index() const;

  bool Visible() const { return visible_; }
  void SetVisible(bool value) { SetValueAndNotify(*this, visible_, value); }
  const WideString& PreassignedName() const { return preassignedName_; }
  void SetPreassignedName(const WideString& value) { SetValueAndNotify(*this, preassignedName_, value); }
  // The name of the column in the transformed query (set by the generation).
  const WideString& ResultName() const { return resultName_; }
  void SetResultName(const WideString& value) { resultName_ = value; }

  // --- The three expressions ---
  WideString GetExpressionForFiltration() const;
  WideString GetExpressionForSorting() const;
  WideString GetExpressionForWrappedQuery() const;
  bool GetIsSupportFiltering() const { return !info_.Expression.empty(); }
  bool GetIsSupportSorting() const { return !info_.Expression.empty(); }

  // --- Conditions: "{column}" followed by the operator and the values as
  // SQL text. Raise "Cannot filter by this column." on a column that
  // cannot filter. ---
  TmvOwned<TmvFilterColumnCondition> Condition(const WideString& text);
  TmvOwned<TmvFilterColumnCondition> Equal(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Not_Equal(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Greater(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> GreaterEqual(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Less(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> LessEqual(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Not_Greater(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Not_GreaterEqual(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Not_Less(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Not_LessEqual(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Like(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> Not_Like(const WideString& value);
  TmvOwned<TmvFilterColumnCondition> In_(const WideString& values);
  TmvOwned<TmvFilterColumnCondition> Not_In(const WideString& values);
  TmvOwned<TmvFilterColumnCondition> Between(const WideString& low, const WideString& high);
  TmvOwned<TmvFilterColumnCondition> Not_Between(const WideString& low, const WideString& high);
  TmvOwned<TmvFilterColumnCondition> IsNull();
  TmvOwned<TmvFilterColumnCondition> Not_IsNull();
  TmvOwned<TmvFilterColumnCondition> IsNotNull();

  // --- Sortings; raise "Cannot sort by this column." on one that cannot sort. ---
  TmvOwned<TmvSortedColumn> Asc();
  TmvOwned<TmvSortedColumn> Ascending() { return Asc(); }
  TmvOwned<TmvSortedColumn> Desc();
  TmvOwned<TmvSortedColumn> Descending() { return Desc(); }

  // --- Aggregates of the column as the wrapping query reads it. ---
  TmvOwned<TmvAggregatedColumn> Avg();
  TmvOwned<TmvAggregatedColumn> Count();
  TmvOwned<TmvAggregatedColumn> Max();
  TmvOwned<TmvAggregatedColumn> Min();
  TmvOwned<TmvAggregatedColumn> Sum();

 private:
  bool HasUnions() const;
  WideString QuoteIdentifierIfNeeded(const WideString& name) const;
  TmvOwned<TmvSortedColumn> Sorted(TmvQueryBuilderItemSortType type);
  TmvOwned<TmvAggregatedColumn> Aggregate(const char16_t* function);

  TmvOutputColumnsList* list_;
  TmvQueryBuilder* queryBuilder_;
  TmvOutputColumnInfo info_;
  bool visible_ = true;
  WideString preassignedName_;
  WideString resultName_;
};

class TmvOutputColumnsList : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  int Count() const { return static_cast<int>(items_.size()); }
  TmvOutputColumn* Items(int index) const;
  int IndexOf(const TmvOutputColumn* column) const;
  // Case-blind; a name that two columns share counts as not found (-1, null).
  int IndexOfByOriginalName(WideStringView name) const;
  int IndexOfByResultName(WideStringView name) const;
  TmvOutputColumn* FindColumnByOriginalName(WideStringView name) const;
  TmvOutputColumn* FindColumnByResultName(WideStringView name) const;
  // The same, raising "Column with name %s is not found in query.".
  TmvOutputColumn* ColumnByOriginalName(WideStringView name) const;
  TmvOutputColumn* ColumnByResultName(WideStringView name) const;

  // Visibility and preassigned names of the columns of the same original name.
  void Assign(const TmvPersistent* source) override;
  // The columns of the builder's statistics, in order; a column whose name
  // was hidden before stays hidden. Null or an untransformable source clears.
  void UpdateColumns(TmvQueryBuilder* queryBuilder, bool transformable);
  void Clear();
  // For tests and hosts that feed columns themselves.
  TmvOutputColumn* Add(TmvQueryBuilder* queryBuilder, TmvOutputColumnInfo info);

  // "columns_list" with a "column" (name, visible) per column.
  void Write(pugi::xml_node parent) const;
  // Visibility of the columns found by name; unknown names are skipped.
  void Read(pugi::xml_node element);

 private:
  std::vector<TmvOwned<TmvOutputColumn>> items_;
};

// A sort by a column (its own sorting expression) or by an expression text.
class TmvSortedColumn : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  TmvSortedColumn(TmvOutputColumn* column, TmvQueryBuilderItemSortType sortType, WideString expression);

  TmvOutputColumn* Column() const { return column_; }
  void SetColumn(TmvOutputColumn* column);
  TmvQueryBuilderItemSortType SortType() const { return sortType_; }
  void SetSortType(TmvQueryBuilderItemSortType value) { SetValueAndNotify(*this, sortType_, value); }
  // Empty when the column's own sorting expression is to be used.
  const WideString& Expression() const { return expression_; }
  void SetExpression(const WideString& value) { SetValueAndNotify(*this, expression_, value); }
  // The column's sorting expression when the entry took it.
  const WideString& ColumnExpression() const { return columnExpression_; }

 private:
  TmvOutputColumn* column_;
  TmvQueryBuilderItemSortType sortType_;
  WideString expression_;
  WideString columnExpression_;
};

// An aggregate over the wrapped query: "Sum(q.x)", "Count(*)".
class TmvAggregatedColumn : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  TmvAggregatedColumn(TmvOutputColumn* column, WideString alias, WideString expression);

  TmvOutputColumn* Column() const { return column_; }
  void SetColumn(TmvOutputColumn* column) { column_ = column; }
  // The original name of the column when the entry took it.
  const WideString& ColumnName() const { return columnName_; }
  const WideString& Alias() const { return alias_; }
  void SetAlias(const WideString& value) { SetValueAndNotify(*this, alias_, value); }
  const WideString& Expression() const { return expression_; }
  void SetExpression(const WideString& value) { SetValueAndNotify(*this, expression_, value); }

 private:
  TmvOutputColumn* column_;
  WideString columnName_;
  WideString alias_;
  WideString expression_;
};

// Owning lists of sortings and aggregates, each reporting its changes up.
template <class T>
class TmvTransformerItemsList : public TmvUpdatablePersistent {
 public:
  int Count() const { return static_cast<int>(items_.size()); }
  T* Items(int index) const { return items_.at(static_cast<size_t>(index)).get(); }
  int IndexOf(const T* item) const;
  int IndexOf(const TmvOutputColumn* column) const;
  int IndexOf(WideStringView expression) const;
  void Delete(int index);
  void Clear();
  int Remove(const T* item) { return RemoveAt(IndexOf(item)); }
  int Remove(const TmvOutputColumn* column) { return RemoveAt(IndexOf(column)); }
  int Remove(WideStringView expression) { return RemoveAt(IndexOf(expression)); }

 protected:
  T* Append(TmvOwned<T> item);
  T* Replace(int index, TmvOwned<T> item);
  int RemoveAt(int index) {
    if (index >= 0) Delete(index);
    return index;
  }
  std::vector<TmvOwned<T>> items_;
};

class TmvSortedColumnsList : public TmvTransformerItemsList<TmvSortedColumn> {
  MV_DECLARE_CLASS()
 public:
  // An entry for the same column (or, without one, the same expression)
  // is replaced in place; else the entry goes to the end.
  TmvSortedColumn* Add(TmvOwned<TmvSortedColumn> item);
  void Write(pugi::xml_node parent) const;
  void Read(pugi::xml_node element, TmvOutputColumnsList* columns);
};

class TmvAggregatedColumnsList : public TmvTransformerItemsList<TmvAggregatedColumn> {
  MV_DECLARE_CLASS()
 public:
  // Takes the aggregate with `alias` (when not empty).
  TmvAggregatedColumn* Add(TmvOwned<TmvAggregatedColumn> item, const WideString& alias);
  void Write(pugi::xml_node parent) const;
  void Read(pugi::xml_node element, TmvOutputColumnsList* columns);
};

}  // namespace mv
