// Node classes and extenders of the DB2 dialect (fields in DB2Nodes.def):
// the clauses of a statement's tail (FOR UPDATE, FOR READ ONLY, FOR FETCH
// ONLY, OPTIMIZE FOR, the isolation clause), and the extenders that keep
// them with a statement, a table sample with a table and LATERAL or TABLE
// with a continue handler before a sub-query, and print them in the places
// the dialect wants them.
#pragma once

#include "tree/AstNode.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/db2/DB2Nodes.gen.h"

namespace mv {

// For Update [Of a, b].
class TDB2SQLForUpdateClause : public TastNodeWithList {
  MV_AST_NODE(TDB2SQLForUpdateClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TDB2SQLForReadOnlyClause : public TastNode {
  MV_AST_NODE(TDB2SQLForReadOnlyClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TDB2SQLForFetchOnlyClause : public TastNode {
  MV_AST_NODE(TDB2SQLForFetchOnlyClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Optimize For n Rows; "Row" exactly when the count is 1, whatever was
// written.
class TDB2SQLOptimizeForClause : public TastNode {
  MV_AST_NODE(TDB2SQLOptimizeForClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// With RR|RS|CS|UR [Use And Keep Share|Update|Exclusive Locks].
class TDB2SQLIsolationClause : public TastNode {
  MV_AST_NODE(TDB2SQLIsolationClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A statement with its for, optimize and isolation clauses after the order.
class TDB2SQLSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TDB2SQLSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A table with its sample clause after the alias.
class TDB2SQLFromObjectExtender : public TastExtender {
  MV_AST_NODE(TDB2SQLFromObjectExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A sub-query source with Lateral or Table and a continue handler before it.
class TDB2SQLFromQueryExtender : public TastExtender {
  MV_AST_NODE(TDB2SQLFromQueryExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* DB2ExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

// A keyword of the dialect in the spelling it prints with (lateral ->
// Lateral, ccsid -> CCSID, varchar -> VarChar); a word not known gets a
// capital first letter.
WideString DB2Word(const WideString& text);

// Whether `first` and `second` begin a special register: CURRENT DATE,
// CURRENT LOCK TIMEOUT, CLIENT USERID and the like.
bool DB2IsSpecialRegister(WideStringView first, WideStringView second);

// Whether a plain system name token (a/b, a/2, a/b/c) has a part on each
// side of every slash, so that it can stand for a division.
bool DB2IsDivision(WideStringView text);
// The division that such a token stands for: each part a column, or a
// number where it is digits, nesting to the left.
TSQLExpressionItem* DB2SplitDivision(TmvBaseSQLContext* context, const WideString& text);

// Puts the library and the file of a system name (LIB/FILE, "LIB"/FILE,
// ...) before the parts `name` has, library first; a quoted part keeps its
// text without the quotes.
void DB2PrependSystemName(TmvBaseSQLContext* context, TSQLQualifiedName* name, const WideString& text);

}  // namespace mv
