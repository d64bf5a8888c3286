// The extender of the Advantage dialect (fields in AdvantageNodes.def): the
// TOP n [PERCENT | START AT m] of a select, printed after its mode, and an
// into table.
#pragma once

#include "tree/AstNode.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "dialects/advantage/AdvantageNodes.gen.h"

namespace mv {

// Select, the mode, Top, the list, Into, From, Where, Group By, Having,
// Order By, and an offset or fetch clause brought by another dialect.
class TAdvantageSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TAdvantageSubQuerySelectExpressionExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of the dialect on a select, or null.
inline TAdvantageSubQuerySelectExpressionExtender* AdvantageExtenderOf(const TastNode* node) {
  return node ? TmvCast<TAdvantageSubQuerySelectExpressionExtender>(node->Extender.get()) : nullptr;
}

}  // namespace mv
