// Node classes and extenders of the SQLite dialect (fields in
// SQLiteNodes.def): a collation, IN with a table, and the extenders that
// keep LIMIT with a statement and COLLATE with an order item and print them
// in the places the dialect wants them.
#pragma once

#include "tree/AstNode.h"
#include "tree/ExpressionBase.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/sqlite/SQLiteNodes.gen.h"

namespace mv {

// Collate name
class TSQLiteCollate : public TastNode {
  MV_AST_NODE(TSQLiteCollate);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Expression [Not] In (table)
class TSQLiteExpressionInTable : public TSQLExpressionIn {
  MV_AST_NODE(TSQLiteExpressionInTable);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A sub-select statement with its limit after the order.
class TSQLtSubSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TSQLtSubSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

};

// The same, indented as a whole statement.
class TSQLtSelectStatementExtender : public TSQLtSubSelectStatementExtender {
  MV_AST_NODE(TSQLtSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// An order item with its collation before Asc or Desc.
class TSQLOrderByItemExtender : public TastExtender {
  MV_AST_NODE(TSQLOrderByItemExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* SQLiteExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

// The number of a LIMIT or OFFSET; a text that is no integer raises
// EConvertError.
int32_t SQLiteLimitNumber(WideStringView text);
// The word of LIKE, GLOB, REGEXP or MATCH as it prints.
WideString SQLiteLikeWord(WideStringView text);

}  // namespace mv
