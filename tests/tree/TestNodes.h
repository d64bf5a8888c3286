// Extender classes of the test dialects (fields in TestNodes.def).
#pragma once

#include "tree/AstNode.h"
#include "tree/SelectStatement.h"
#include "testtree/TestNodes.gen.h"

namespace mv {

class TTestExtenderA : public TastExtender {
  MV_AST_NODE(TTestExtenderA);
};

class TTestExtenderA2 : public TTestExtenderA {
  MV_AST_NODE(TTestExtenderA2);
};

class TTestExtenderB : public TastExtender {
  MV_AST_NODE(TTestExtenderB);
};

class TTestBracketingExtender : public TastExtender {
  MV_AST_NODE(TTestBracketingExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TTestBusyExtender : public TastExtender {
  MV_AST_NODE(TTestBusyExtender);

 public:
  // Makes a spare node and a temporary one (freed at once) in its context.
  void AfterConstruction() override;
};

class TTestProxy : public TSQLSubSelectStatementProxy {
  MV_AST_NODE(TTestProxy);

 public:
  TTestProxy(TmvBaseSQLContext* context, TmvObject* owner, TastNodeBase* parent, TSQLSubSelectStatement* statement)
      : TSQLSubSelectStatementProxy(context, owner, parent, statement) {}
  TmvOwned<TSQLSubSelectStatement> GenerateASTTree(TmvBaseSQLContext* context) override;
};

// The proxy class handed to MoveSubQueryInProxy.
const TSQLSubSelectStatementProxyClass& TestProxyClass();

}  // namespace mv
