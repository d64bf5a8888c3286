// Node classes and extenders of the PostgreSQL dialect (fields in
// PGSQLNodes.def): SELECT ... INTO, OPERATOR(schema.op), $n parameters and
// array selections, and the extenders that keep LIMIT and OFFSET with the
// statement and INTO with the select, printing them where the dialect
// wants them.
#pragma once

#include "tree/AstNode.h"
#include "tree/ExpressionBase.h"
#include "tree/Expressions.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/pgsql/PGSQLNodes.gen.h"

namespace mv {

// Into [Temporary] Table name
class TPgSQLSelectIntoClause : public TastNode {
  MV_AST_NODE(TPgSQLSelectIntoClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Operator([schema.]op)
class TPGSQLOperator : public TSQLOperator {
  MV_AST_NODE(TPGSQLOperator);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// $n, with no blank after the dollar.
class TPGSQLPositionalParam : public TSQLExpressionItem {
  MV_AST_NODE(TPGSQLPositionalParam);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// base[first] or base[first:second]
class TPGSQLExpressionArraySelection : public TSQLExpressionExpressionItem {
  MV_AST_NODE(TPGSQLExpressionArraySelection);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// With, the union members, Order By, then Limit and Offset.
class TPgSQLSubSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TPgSQLSubSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

};

// The same, indented as a whole statement.
class TPgSQLSelectStatementExtender : public TPgSQLSubSelectStatementExtender {
  MV_AST_NODE(TPgSQLSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Select list, Into, From, Where, Group By, Having, Window, Order By.
class TPgSQLSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TPgSQLSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* PgSQLExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

}  // namespace mv
