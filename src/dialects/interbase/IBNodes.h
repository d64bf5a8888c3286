// Node classes and extenders of the InterBase dialect (fields in
// IBNodes.def): FOR UPDATE, the predicates CONTAINING and STARTING, the
// plan and its items, and the extenders that keep ROWS and FOR UPDATE with
// the outermost statement and TRANSACTION and PLAN with the select.
#pragma once

#include "tree/AstNode.h"
#include "tree/ExpressionBase.h"
#include "tree/Expressions.h"
#include "tree/NodeLists.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/interbase/IBNodes.gen.h"

namespace mv {

enum TIBPlanType : uint8_t { ptNone, ptJoin, ptMerge, ptSort, ptSortMerge };
enum TIBPlanItemType : uint8_t { piNatural, piIndex, piOrder };

// FOR UPDATE [OF a, b]
class TIBSQLForUpdateClause : public TastNodeWithList {
  MV_AST_NODE(TIBSQLForUpdateClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// a [Not] Containing b
class TIBSQLExpressionContaining : public TSQLExpressionOperationExpression {
  MV_AST_NODE(TIBSQLExpressionContaining);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// a [Not] Starting [With] b
class TIBSQLExpressionStarting : public TSQLExpressionOperationExpression {
  MV_AST_NODE(TIBSQLExpressionStarting);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// [Join | Merge | Sort | Sort Merge] (item, item)
class TIBSQLPlanExpression : public TastNodeWithList {
  MV_AST_NODE(TIBSQLPlanExpression);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// t Natural, t Index (a, b), t Order a
class TIBSQLPlanItem : public TastNodeWithList {
  MV_AST_NODE(TIBSQLPlanItem);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The union members, Order By, Rows, For Update.
class TIBSQLSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TIBSQLSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Select [Transaction name] [mode] items, From, Where, Group By, Having,
// Plan, Order By.
class TIBSQLSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TIBSQLSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* IBExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

}  // namespace mv
