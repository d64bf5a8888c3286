#include "dialects/netezza/NetezzaNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

void TmvNetezzaSubSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                           const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Limit.get(), Offset.get()}, false);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TmvNetezzaSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                        const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Limit.get(), Offset.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

}  // namespace mv
