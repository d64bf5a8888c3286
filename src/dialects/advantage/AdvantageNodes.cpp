#include "dialects/advantage/AdvantageNodes.h"

#include "dialects/access/AccessNodes.h"

namespace mv {

void TAdvantageSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                              const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  // The same clauses in the same places as Access.
  BuildSelectWithTopAndInto(*select, Top.get(), IntoTable.get(), builder, format);
}

}  // namespace mv
