// Extender classes of the test dialects (fields in TestNodes.def).
#pragma once

#include "tree/AstNode.h"
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

}  // namespace mv
