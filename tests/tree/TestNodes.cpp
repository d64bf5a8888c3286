#include "TestNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "tree/Tokens.h"

namespace mv {

void TTestBracketingExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                              const TSQLBuilderSelectFormat& format) {
  builder.WriteSymbol(u"[");
  TastExtender::BuildSQLForNode(node, builder, format);
  builder.WriteSymbol(u"]");
}

void TTestBusyExtender::AfterConstruction() {
  TastExtender::AfterConstruction();
  Spare.Set(TastCreate<TastTokenKeyword>(SQLContext(), u"Spare"));
  TastCreate<TastTokenKeyword>(SQLContext(), u"Gone");
}

TmvOwned<TSQLSubSelectStatement> TTestProxy::GenerateASTTree(TmvBaseSQLContext* context) {
  return Statement() ? Statement()->CloneAs<TSQLSubSelectStatement>(context) : nullptr;
}

const TSQLSubSelectStatementProxyClass& TestProxyClass() {
  static const TSQLSubSelectStatementProxyClass info(
      "TTestProxy", &TTestProxy::StaticClass(),
      [](TmvBaseSQLContext* context, TmvObject* owner, TastNodeBase* parent,
         TSQLSubSelectStatement* statement) -> TSQLSubSelectStatementProxy* {
        return new TTestProxy(context, owner, parent, statement);
      });
  return info;
}

}  // namespace mv
