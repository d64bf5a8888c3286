// The extenders of the Teradata dialect (fields in TeradataNodes.def): the
// character set prefix, suffix and escape of a string, the escape of a
// Unicode name, and the TOP and QUALIFY of a select.
#pragma once

#include "tree/AstNode.h"
#include "tree/Expressions.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/teradata/TeradataNodes.gen.h"

namespace mv {

// [prefix] 'string'[suffix] [UEscape 'c'].
class TmvTeradataStringLiteralExtender : public TastExtender {
  MV_AST_NODE(TmvTeradataStringLiteralExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// U&"name" UEscape 'c' when the name has an escape; the name as usual
// otherwise.
class TmvTeradataIdentifierExtender : public TastExtender {
  MV_AST_NODE(TmvTeradataIdentifierExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Select, the mode, Top, the list, From, Where, Group By, Having, Qualify,
// Order By.
class TmvTeradataSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TmvTeradataSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* TeradataExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

}  // namespace mv
