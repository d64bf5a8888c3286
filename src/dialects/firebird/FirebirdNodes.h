// Node classes and extenders of the Firebird dialect (fields in
// FirebirdNodes.def): FOR UPDATE, the predicates CONTAINING and STARTING,
// and the extenders that keep ROWS and FOR UPDATE with the statement and
// TRANSACTION, FIRST/SKIP and PLAN with the select, printing them where the
// dialect wants them.
#pragma once

#include "tree/AstNode.h"
#include "tree/ExpressionBase.h"
#include "tree/Expressions.h"
#include "tree/NodeLists.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/firebird/FirebirdNodes.gen.h"

namespace mv {

// For Update [Of a, b]
class TFirebirdSQLForUpdateClause : public TastNodeWithList {
  MV_AST_NODE(TFirebirdSQLForUpdateClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// a [Not] Containing b
class TSQLExpressionContaining : public TSQLExpressionOperationExpression {
  MV_AST_NODE(TSQLExpressionContaining);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// a [Not] Starting [With] b
class TSQLExpressionStarting : public TSQLExpressionOperationExpression {
  MV_AST_NODE(TSQLExpressionStarting);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// With, the union members, Order By, Rows, For Update.
class TFirebirdSQLSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TFirebirdSQLSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Select [Transaction name] [First n [Skip m]] [mode] items, From, Where,
// Group By, Having, Plan, Order By.
class TFirebirdSQLSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TFirebirdSQLSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* FirebirdExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

}  // namespace mv
