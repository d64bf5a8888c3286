// Node classes and extenders of the Informix dialect (fields in
// InformixNodes.def): the substring operator x[1,3], the constructors ROW,
// SET, MULTISET and LIST, MULTISET of a sub-query, and the extenders that
// keep SKIP and FIRST/LIMIT/MIDDLE with a select expression and the FOR
// clause with a statement.
#pragma once

#include "tree/AstNode.h"
#include "tree/Expressions.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/informix/InformixNodes.gen.h"

namespace mv {

// Select [Skip n] [First|Limit|Middle n] [mode] items, then the clauses of
// the standard; the texts print as numbers, as they were given.
class TinfSQLSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TinfSQLSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A statement with its FOR clause after the order.
class TinfSQLSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TinfSQLSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TinfSQLSubstringOperator : public TSQLExpressionOperation {
  MV_AST_NODE(TinfSQLSubstringOperator);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TinfSQLConctructorExpression : public TSQLExpressionItemWithList {
  MV_AST_NODE(TinfSQLConctructorExpression);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TinfSQLCollectionSubquery : public TSQLExpressionSelect {
  MV_AST_NODE(TinfSQLCollectionSubquery);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* InformixExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

// A keyword of the dialect in the spelling it prints with (datetime ->
// DateTime); a word not known gets a capital first letter.
WideString InformixWord(const WideString& text);

// .part after a term: a further part of a column's name, or a field of
// any other value; a null part is .*, a selection of every field.
void InformixAddField(TmvBaseSQLContext* context, TSQLExpressionItem*& item, TastToken* part);

}  // namespace mv
