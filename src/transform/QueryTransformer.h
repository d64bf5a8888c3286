// The query transformer: rewrites the query of a query builder for a grid
// that shows its rows, with the grid's filters, sorting, paging, hidden
// columns and totals, and leaves the builder's own query as it is. All
// rewriting happens in a scratch builder; the result is built when it is
// read and kept until something changes.
//
//   auto transformer = TmvCreate<TmvQueryTransformer>();
//   transformer->SetQueryBuilder(builder);
//   TmvOutputColumn* total = transformer->Columns().ColumnByOriginalName(u"Total");
//   transformer->Where(total->Greater(u"10")).OrderBy(total, false).Skip(u"20").Take(u"10");
//   WideString sql = transformer->GetSql();
#pragma once

#include <functional>

#include "support/Class.h"
#include "support/Event.h"
#include "support/UpdatablePersistent.h"
#include "support/WideString.h"
#include "transform/FilterConditions.h"
#include "transform/OutputColumns.h"

namespace mv {

class TmvBaseSQLBuilder;
class TmvQueryBuilder;
class TSQLSelectStatement;

enum TmvQueryTransformerSelectMode { smDefault, smAll, smDistinct };

class TmvQueryTransformer : public TmvObject {
  MV_DECLARE_CLASS()
 public:
  TmvQueryTransformer();
  ~TmvQueryTransformer() override;
  void AfterConstruction() override;
  void BeforeDestruction() override;

  // --- The source and the printer ---
  TmvQueryBuilder* QueryBuilder() const { return queryBuilder_; }
  // Not owned: follows the builder's text, dialect and destruction.
  void SetQueryBuilder(TmvQueryBuilder* value);
  TmvBaseSQLBuilder* SqlBuilder() const { return sqlBuilder_; }
  // Not owned, optional: prints the result when set.
  void SetSqlBuilder(TmvBaseSQLBuilder* value);

  // --- Settings ---
  const WideString& ResultOffset() const { return resultOffset_; }
  void SetResultOffset(const WideString& value);
  const WideString& ResultCount() const { return resultCount_; }
  void SetResultCount(const WideString& value);
  bool AlwaysWrapInSubQuery() const { return alwaysWrapInSubQuery_; }
  void SetAlwaysWrapInSubQuery(bool value);
  bool AlwaysExpandColumnsInQuery() const { return alwaysExpandColumnsInQuery_; }
  void SetAlwaysExpandColumnsInQuery(bool value);
  bool RenameDuplicatedColumns() const { return renameDuplicatedColumns_; }
  void SetRenameDuplicatedColumns(bool value);
  TmvQueryTransformerSelectMode SelectMode() const { return selectMode_; }
  void SetSelectMode(TmvQueryTransformerSelectMode value);

  TmvOutputColumnsList& Columns() const { return *columns_; }
  // The root junction; "or" until the caller says otherwise.
  TmvFilterConditionJunction& Filters() const { return *filters_; }
  TmvSortedColumnsList& Sortings() const { return *sortings_; }
  TmvAggregatedColumnsList& Aggregations() const { return *aggregations_; }

  // --- Fluent operations ---
  TmvQueryTransformer& Select(TmvOwned<TmvAggregatedColumn> aggregate, const WideString& alias = {});
  TmvQueryTransformer& SelectRecordsCount(const WideString& alias = {});
  TmvQueryTransformer& Skip(const WideString& text);
  TmvQueryTransformer& Take(const WideString& text);
  TmvQueryTransformer& OrderBy(TmvOwned<TmvSortedColumn> sorted);
  TmvQueryTransformer& OrderBy(TmvOutputColumn* column, bool ascending = true);
  TmvQueryTransformer& OrderBy(const WideString& expression, bool ascending = true);
  TmvQueryTransformer& Where(TmvOwned<TmvFilterCondition> condition);
  TmvQueryTransformer& Where(const WideString& text);

  // --- Updates: one notice for the outermost pair ---
  void BeginUpdate();
  void EndUpdate();
  bool IsUpdating() const;

  // Columns (visibility), filters, sortings, select mode, limits,
  // aggregates and the two flags of wrapping and expanding.
  void Assign(const TmvQueryTransformer& other);

  // --- The result ---
  // The transformed text: the source's own text when it cannot be
  // transformed; empty when the scratch builder refused the text. A filter
  // that does not parse raises the parser's error.
  WideString GetSql();
  // The transformed tree (owned here), generated on demand; null when there is none.
  TSQLSelectStatement* GetResultAst();
  bool IsTransformable() const;
  bool GetIsSupportLimitCount() const;
  bool GetIsSupportLimitOffset() const;

  // --- State as XML (element "transformer") ---
  WideString GetStateXml() const;
  // Raises the errors of metadata text for text that is not XML or has no
  // "transformer" element.
  void SetStateXml(const WideString& text);

  // --- Events ---
  std::function<void(TmvQueryTransformer*)> OnSQLUpdated;
  TmvNotificationEvent OnSQLUpdatedEvent;

 private:
  void Changed(TmvObject* sender);
  void SourceDestroying(TmvObject* sender);
  void SourceSQLUpdated(TmvObject* sender);
  void SourceProviderChanged(TmvObject* sender);
  void SqlBuilderDestroying(TmvObject* sender);
  void SqlBuilderChanged(TmvObject* sender);
  void HookSource(bool hook);
  void HookSqlBuilder(bool hook);
  void TakeSourceTree();
  void CleanupFilters(TmvFilterConditionJunction& junction);
  void CleanupSortings();
  void RebindAggregations();
  void ClearResult();
  TmvOwned<TSQLSelectStatement> GenerateResult();

  TmvQueryBuilder* queryBuilder_ = nullptr;
  TmvBaseSQLBuilder* sqlBuilder_ = nullptr;
  WideString resultOffset_, resultCount_;
  bool alwaysWrapInSubQuery_ = false;
  bool alwaysExpandColumnsInQuery_ = false;
  bool renameDuplicatedColumns_ = false;
  TmvQueryTransformerSelectMode selectMode_ = smDefault;
  bool destroying_ = false;
  TmvOwned<TmvUpdatablePersistent> updatable_;
  TmvOwned<TmvOutputColumnsList> columns_;
  TmvOwned<TmvFilterConditionJunction> filters_;
  TmvOwned<TmvSortedColumnsList> sortings_;
  TmvOwned<TmvAggregatedColumnsList> aggregations_;
  // The source's result tree as last seen (not owned; only compared).
  const TSQLSelectStatement* sourceTree_ = nullptr;
  TmvOwned<TSQLSelectStatement> resultTree_;
  bool resultGenerated_ = false;
};

}  // namespace mv
