// The extender of the Access dialect (fields in AccessNodes.def): it keeps
// TOP [PERCENT] and INTO with a select and prints them in their places.
#pragma once

#include "tree/AstNode.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "dialects/access/AccessNodes.gen.h"

namespace mv {

// Select [mode] [Top n [Percent]] items [Into name] From ...
class TAccessSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TAccessSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Prints a select as Access writes one (Select [mode] [Top ...] items
// [Into name] From ...); dialects with the same clauses print through it.
void BuildSelectWithTopAndInto(TSQLSubQuerySelectExpression& select, TastNode* top, TastNode* into,
                               TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);

// The extender of that class on a node, or null.
template <class T>
T* AccessExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

}  // namespace mv
