// Node classes and extenders of the Sybase dialect (fields in
// SybaseNodes.def): an empty part of a dotted name, and the extenders that
// keep FIRST or TOP with a select expression, the FOR and OPTION clauses
// with a statement, table hints with a table and a join hint with a join
// kind, and print them in the places the dialect wants them.
#pragma once

#include "tree/AstNode.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/sybase/SybaseNodes.gen.h"

namespace mv {

// A part left out of a dotted name: prints as nothing, so that the dots
// around it stand together (db..t).
class TSybaseEmptyNamePart : public TastTokenIdentifier {
  MV_AST_NODE(TSybaseEmptyNamePart);

 public:
  void BuildSQLDirect(TSQLBuilder&, const TSQLBuilderSelectFormat&) override {}
};

// Select [All|Distinct] [First | Top n [Start At m]] items, then the clauses
// of the standard.
class TSybaseSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TSybaseSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A statement with its FOR and OPTION clauses after the order.
class TSybaseSubSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TSybaseSubSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The same, indented as a whole statement.
class TSybaseSelectStatementExtender : public TSybaseSubSelectStatementExtender {
  MV_AST_NODE(TSybaseSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A table with its hints after the alias.
class TSybaseFromSourceExtender : public TastExtender {
  MV_AST_NODE(TSybaseFromSourceExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A join kind with a join hint: the kind's words with the hint before
// "Join" ("Inner Hash Join", "Left Outer Merge Join"); without one, the
// kind's own print; "Join" alone for a join without ON.
class TSybaseJoinKindExtender : public TastExtender {
  MV_AST_NODE(TSybaseJoinKindExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* SybaseExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

// A word of a built-in type or a query hint in its usual spelling
// (varchar -> VarChar); a word not known keeps its text.
WideString SybaseTypeWord(const WideString& text);

}  // namespace mv
