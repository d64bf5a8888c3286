// Clone of every registered node class: each class is made, its child fields
// and lists filled with nodes of their classes (to a few levels), printed,
// cloned into the same and into another context, and the copies compared.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "TestNodes.h"
#include "TestProvider.h"
#include "TreeTestUtil.h"
#include "tree/NodeRegistry.h"

using namespace mv;
using namespace mv::test;

namespace {

// Concrete registered classes that descend from `base`; a plain TastNode
// field gets an identifier, which prints something.
std::vector<const TastNodeClass*> ConcreteClassesOf(const TmvClass& base) {
  if (&base == &TastNode::StaticClass()) return {&TastTokenIdentifier::StaticClass()};
  std::vector<const TastNodeClass*> found;
  for (const TastNodeClass* c : TastNodeClasses().Classes())
    if (!c->IsAbstract() && c->InheritsFrom(base)) found.push_back(c);
  return found;
}

void Fill(TastNodeBase* node, int depth, int& serial) {
  ++serial;
  if (auto* token = TmvCast<TastToken>(node)) token->SetToken(u"t" + IntToWide(serial));
  if (auto* op = TmvCast<TSQLOperator>(node)) op->Text = u"+";
  node->Tag = serial;
  if (depth >= 3) return;
  auto& self = *node;
  for (const TastFieldInfo& info : node->ClassFields().Entries()) {
    if (info.DeclaringClass == &TastNode::StaticClass()) continue;  // the extender is the dialect's
    std::vector<const TastNodeClass*> candidates = ConcreteClassesOf(*info.NodeType);
    if (candidates.empty()) continue;
    auto make = [&](int pick) {
      const TastNodeClass* c = candidates[(serial + pick) % candidates.size()];
      TmvOwned<TastNodeBase> child(c->CreateRaw(node->SQLContext()));
      Fill(child.get(), depth + 1, serial);
      return child;
    };
    if (info.Kind == TastFieldKind::Child) {
      info.ChildAt(self).Reset(make(0).release());
    } else {
      for (int i = 0; i < 2; ++i)
        info.ListAt(self).Add(TmvOwned<TastNode>(static_cast<TastNode*>(make(i).release())));
    }
  }
}

std::vector<TastNodeBase*> AllNodes(TastNodeBase* root) {
  TastNodeBaseList list{root};
  root->GetMyChildrenRecursive(list);
  return list;
}

std::vector<std::string> Shape(TastNodeBase* root) {
  std::vector<std::string> shape;
  for (TastNodeBase* node : AllNodes(root)) shape.push_back(std::string(node->ClassName()) + "#" + std::to_string(node->Tag));
  return shape;
}

WideString PrintAny(TastNodeBase* node) {
  auto* printable = TmvCast<TastNode>(node);
  return printable ? Fast(printable) : WideString();
}

}  // namespace

TEST(CloneSweep, EveryClassClonesToAnEqualTreeWithNoSharedNode) {
  RegisterNodeClasses_TestNodes(TastNodeClasses());
  TTestSyntaxProvider provider;
  provider.builtinFunctions = {u"t9"};
  TmvBaseSQLContext context;
  TmvBaseSQLContext other;
  context.SetSyntaxProvider(&provider);
  other.SetSyntaxProvider(&provider);
  // The contexts' name caches are nodes too: fill them before counting.
  for (TmvBaseSQLContext* c : {&context, &other}) {
    auto name = Name(c, {u"f"});
    c->IsNameOfBuiltinFunction(name.get());
    c->IsNameOfAggregate(name.get());
  }
  const int cachedHere = context.AstNodeCount();
  const int cachedThere = other.AstNodeCount();

  int swept = 0;
  for (const TastNodeClass* nodeClass : TastNodeClasses().Classes()) {
    if (nodeClass->IsAbstract()) continue;
    SCOPED_TRACE(std::string(nodeClass->ClassName()));
    ++swept;
    int serial = 0;
    TmvOwned<TastNodeBase> original(nodeClass->CreateRaw(&context));
    ASSERT_TRUE(original);
    Fill(original.get(), 0, serial);
    const WideString text = PrintAny(original.get());
    const std::vector<std::string> shape = Shape(original.get());
    const int registered = context.AstNodeCount() - cachedHere;

    TmvOwned<TastNodeBase> same = original->Clone();
    TmvOwned<TastNodeBase> moved = original->Clone(&other);
    ASSERT_TRUE(same && moved);
    EXPECT_EQ(&same->NodeClass(), nodeClass);
    EXPECT_EQ(PrintAny(same.get()), text);
    EXPECT_EQ(PrintAny(moved.get()), text);
    EXPECT_EQ(Shape(same.get()), shape);
    EXPECT_EQ(Shape(moved.get()), shape);
    EXPECT_EQ(context.AstNodeCount() - cachedHere, 2 * registered);
    EXPECT_EQ(other.AstNodeCount() - cachedThere, registered);

    std::set<TastNodeBase*> originalNodes;
    for (TastNodeBase* n : AllNodes(original.get())) originalNodes.insert(n);
    for (TastNodeBase* n : AllNodes(same.get())) EXPECT_EQ(originalNodes.count(n), 0u);
    for (TastNodeBase* n : AllNodes(moved.get())) {
      EXPECT_EQ(originalNodes.count(n), 0u);
      EXPECT_EQ(n->SQLContext(), &other);
    }

    // The original goes first; the copies still print alike.
    original.reset();
    EXPECT_EQ(PrintAny(same.get()), text);
    moved.reset();
    same.reset();
    EXPECT_EQ(context.AstNodeCount(), cachedHere);
    EXPECT_EQ(other.AstNodeCount(), cachedThere);
  }
  // Every concrete class of the core table and of the test table.
  EXPECT_GE(swept, 120);
  context.SetSyntaxProvider(nullptr);
  other.SetSyntaxProvider(nullptr);
}
