// Node classes and extenders of the SQL Server dialect (fields in
// MSSQLNodes.def): a collation, full-text sources, the COMPUTE clause, and
// the extenders that keep TOP, INTO, GROUP BY ALL and WITH CUBE or ROLLUP,
// the COMPUTE, FOR and OPTION clauses and the table hints with the standard
// nodes and print them in the places the dialect wants them.
#pragma once

#include "tree/AstNode.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/mssql/MSSQLNodes.gen.h"

namespace mv {

// A part left out of a dotted name: prints as nothing, so that the dots
// around it stand together (db..t).
class TMSSQLEmptyNamePart : public TastTokenIdentifier {
  MV_AST_NODE(TMSSQLEmptyNamePart);

 public:
  void BuildSQLDirect(TSQLBuilder&, const TSQLBuilderSelectFormat&) override {}
};

// Collate name
class TMSSQLCollate : public TastNode {
  MV_AST_NODE(TMSSQLCollate);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// ContainsTable(table, column or (columns) or *, 'text'[, top])
class TSQLFromFullTextQuery : public TSQLFromObject {
  MV_AST_NODE(TSQLFromFullTextQuery);

 public:
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Aggregate(expression) of a COMPUTE clause.
class TSQLComputeItem : public TastNode {
  MV_AST_NODE(TSQLComputeItem);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Compute items [By expressions]
class TSQLComputeClause : public TastNodeWithList {
  MV_AST_NODE(TSQLComputeClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TMSSQLExpressionItemExtender : public TastExtender {
  MV_AST_NODE(TMSSQLExpressionItemExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TMSSQLSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TMSSQLSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TMSSQLGroupByListExtender : public TastExtender {
  MV_AST_NODE(TMSSQLGroupByListExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TMSSQLSubSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TMSSQLSubSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

};

class TMSSQLSelectStatementExtender : public TMSSQLSubSelectStatementExtender {
  MV_AST_NODE(TMSSQLSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TMSSQLFromSourceExtender : public TastExtender {
  MV_AST_NODE(TMSSQLFromSourceExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A join kind with a join hint: the kind's words with the hint before
// "Join" ("Inner Hash Join", "Left Outer Merge Join"); without one, the
// kind's own print.
class TMSSQLJoinKindExtender : public TastExtender {
  MV_AST_NODE(TMSSQLJoinKindExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* MSSQLExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

}  // namespace mv
