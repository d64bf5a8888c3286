// The clauses of a select: select mode and items with their aliases, group
// by, order by, window, with, result offset and fetch first.
#pragma once

#include "tree/ExpressionBase.h"
#include "tree/MetadataHooks.h"

namespace mv {

// --- Select mode ---

class TSQLSubQuerySelectMode : public TastNode {
  MV_AST_NODE(TSQLSubQuerySelectMode);
};

class TSQLSubQuerySelectModeAll : public TSQLSubQuerySelectMode {
  MV_AST_NODE(TSQLSubQuerySelectModeAll);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLSubQuerySelectModeDistinct : public TSQLSubQuerySelectMode {
  MV_AST_NODE(TSQLSubQuerySelectModeDistinct);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLSubQuerySelectModeDistinctRow : public TSQLSubQuerySelectMode {
  MV_AST_NODE(TSQLSubQuerySelectModeDistinctRow);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLSubQuerySelectModeUnique : public TSQLSubQuerySelectMode {
  MV_AST_NODE(TSQLSubQuerySelectModeUnique);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// --- Select items ---

// Items joined by "," and a blank of priority 2.
class TSQLSelectItems : public TastNodeWithList {
  MV_AST_NODE(TSQLSelectItems);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLSelectItem : public TastNode {
  MV_AST_NODE(TSQLSelectItem);
};

class TSQLSelectItemAllColumns : public TSQLSelectItem {
  MV_AST_NODE(TSQLSelectItemAllColumns);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// t.*, through the source the object is bound to.
class TSQLSelectItemAllTableColumns : public TSQLSelectItem {
  MV_AST_NODE(TSQLSelectItemAllTableColumns);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// An expression with an optional alias, written before it (alias = expr) or after it.
class TSQLSelectItemExpression : public TSQLSelectItem {
  MV_AST_NODE(TSQLSelectItemExpression);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLAliasExpression : public TastNode {
  MV_AST_NODE(TSQLAliasExpression);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLAliasEqualsExpression : public TSQLAliasExpression {
  MV_AST_NODE(TSQLAliasEqualsExpression);
};

class TSQLAliasExpressionAlias : public TSQLAliasExpression {
  MV_AST_NODE(TSQLAliasExpressionAlias);

 public:
  // ["As"] Name; the word follows the builder's AsKeywordInExpressionAlias and the dialect.
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastAliasExpressionsList : public TastNodeWithList {
  MV_AST_NODE(TastAliasExpressionsList);
};

// --- Group by, order by, window ---

class TSQLGroupByList : public TSQLExpressionsList {
  MV_AST_NODE(TSQLGroupByList);

 public:
  // "Group By"
  void BuildGroupByKeywords(TSQLBuilder& builder);
  // [Cube|Rollup (] * or the items under GroupByFormat [)]
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLOrderByClause : public TastNodeWithList {
  MV_AST_NODE(TSQLOrderByClause);

 public:
  // "Order [Siblings] By"
  void BuildOrderByKeywords(TSQLBuilder& builder);
  // The items under listFormat; without one, joined by "," and a blank of priority 2.
  void BuildOrderByList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                        const TSQLBuilderItemsListFormat* listFormat);
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLOrderByItem : public TastNode {
  MV_AST_NODE(TSQLOrderByItem);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLWindowClause : public TastNodeWithList {
  MV_AST_NODE(TSQLWindowClause);

 public:
  // "Window"
  void BuildWindowKeyword(TSQLBuilder& builder);
  void BuildWindowList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                       const TSQLBuilderItemsListFormat* listFormat);
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLWindowItem : public TastNode {
  MV_AST_NODE(TSQLWindowItem);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// --- With ---

// With [modifier] item, item ... (each item after a comma on a new line).
class TSQLWithClause : public TastNodeWithList {
  MV_AST_NODE(TSQLWithClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// name [(columns)] As (query), the query under the builder's CTESubQueryFormat.
class TSQLWithClauseItem : public TastNode {
  MV_AST_NODE(TSQLWithClauseItem);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

  // The columns the item offers, named by its column list where it has one.
  TmvMetadataFieldsList* FieldsList() const { return fieldsList_.Get(SQLContext()); }

  // Also passes what the result fields of its query read to FieldsList
  // (metadata/TreeStatistics.cpp).
  void PrepareCalcStatistics() override;
  int CalcStatistics() override;

 private:
  mutable TastOwnedFieldsList fieldsList_;
};

// --- Result offset and fetch first ---

class TSQLResultOffsetClause : public TastNode {
  MV_AST_NODE(TSQLResultOffsetClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLFetchFirstClause : public TastNode {
  MV_AST_NODE(TSQLFetchFirstClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// (names) joined by "," and a blank of priority 2, indented as a part's content.
void TastBuildColumnNames(TastNodeWithList& names, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);

}  // namespace mv
