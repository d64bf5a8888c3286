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

}  // namespace mv
