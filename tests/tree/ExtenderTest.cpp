// Extenders: the provider's table, and what a change of dialect does to the
// extenders of every live node.
#include <gtest/gtest.h>

#include "TestNodes.h"
#include "TestProvider.h"
#include "Thrown.h"
#include "TreeTestUtil.h"
#include "support/Exceptions.h"
#include "tree/NodeRegistry.h"

using namespace mv;
using namespace mv::test;

namespace {

class ExtenderTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { RegisterNodeClasses_TestNodes(TastNodeClasses()); }
  TmvBaseSQLContext context;
};

template <class T>
T* ExtenderOf(TastNode* node) {
  return TmvCast<T>(node->Extender.get());
}

}  // namespace

TEST_F(ExtenderTest, TableFindsTheExactClassOrTheClosestAncestor) {
  TTestSyntaxProvider provider;
  provider.RegisterExtender(TSQLExpressionItem::StaticClass(), TTestExtenderB::StaticClass());
  provider.RegisterExtender(TSQLExpressionOperation::StaticClass(), TTestExtenderA::StaticClass());
  provider.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderA2::StaticClass());
  // The exact class wins; otherwise the closest ancestor (parent over grandparent).
  EXPECT_EQ(provider.FindExtenderClass(TSQLExpressionNot::StaticClass(), true), &TTestExtenderA2::StaticClass());
  EXPECT_EQ(provider.FindExtenderClass(TSQLExpressionLogicalOperation::StaticClass(), true),
            &TTestExtenderA::StaticClass());
  EXPECT_EQ(provider.FindExtenderClass(TSQLExpressionBetween::StaticClass(), true), &TTestExtenderA::StaticClass());
  EXPECT_EQ(provider.FindExtenderClass(TSQLExpressionColumn::StaticClass(), true), &TTestExtenderB::StaticClass());
  EXPECT_EQ(provider.FindExtenderClass(TSQLExpressionColumn::StaticClass(), false), nullptr);
  EXPECT_EQ(provider.FindExtenderClass(TastTokenKeyword::StaticClass(), true), nullptr);
  // A second pairing for the same node class is refused with the class named.
  EXPECT_EQ(mvtest::ThrownMessage(
                [&] { provider.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderB::StaticClass()); }),
            u"Extender for \"TSQLExpressionNot\" already registered!");
  provider.UnregisterExtender(TSQLExpressionNot::StaticClass());
  EXPECT_EQ(provider.FindExtenderClass(TSQLExpressionNot::StaticClass(), true), &TTestExtenderB::StaticClass());
}

TEST_F(ExtenderTest, NodesGetTheirExtenderWhenMade) {
  TTestSyntaxProvider provider;
  provider.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderA::StaticClass());
  context.SetSyntaxProvider(&provider);
  auto e = Not(Col(&context, {u"a"}));
  EXPECT_TRUE(ExtenderOf<TTestExtenderA>(e.get()));
  EXPECT_FALSE(static_cast<TSQLExpressionNot*>(e.get())->Expression->Extender);
  // The extender is a child: listed first, cloned with the node, not shared.
  TastNodeBaseList children;
  e->GetMyChildren(children);
  EXPECT_EQ(children.front(), e->Extender.get());
  ExtenderOf<TTestExtenderA>(e.get())->Note = u"kept";
  auto copy = e->CloneAs<TSQLExpressionNot>();
  ASSERT_TRUE(ExtenderOf<TTestExtenderA>(copy.get()));
  EXPECT_NE(copy->Extender.get(), e->Extender.get());
  EXPECT_EQ(ExtenderOf<TTestExtenderA>(copy.get())->Note, u"kept");
  context.SetSyntaxProvider(nullptr);
}

TEST_F(ExtenderTest, ChangeOfDialectMakesKeepsAndFreesExtenders) {
  TTestSyntaxProvider first;
  first.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderA::StaticClass());
  first.RegisterExtender(TSQLExpressionColumn::StaticClass(), TTestExtenderA::StaticClass());
  first.RegisterExtender(TSQLExpressionBrackets::StaticClass(), TTestExtenderB::StaticClass());
  TTestSyntaxProvider second;
  second.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderA2::StaticClass());  // a subclass
  second.RegisterExtender(TSQLExpressionColumn::StaticClass(), TTestExtenderB::StaticClass());  // unrelated
  second.RegisterExtender(TSQLExpressionConstant::StaticClass(), TTestExtenderB::StaticClass());  // new

  context.SetSyntaxProvider(&first);
  auto tree = And(&context, Not(Col(&context, {u"a"})), Br(Num(&context, u"1")));
  auto* negation = static_cast<TSQLExpressionNot*>(static_cast<TSQLExpressionAnd*>(tree.get())->Expression(0));
  auto* brackets = static_cast<TSQLExpressionBrackets*>(static_cast<TSQLExpressionAnd*>(tree.get())->Expression(1));
  auto* column = negation->Expression.get();
  auto* constant = brackets->Expression.get();
  ExtenderOf<TTestExtenderA>(negation)->Note = u"from the first dialect";
  ExtenderOf<TTestExtenderA>(negation)->Clause.Set(TastCreate<TastTokenKeyword>(&context, u"Extra"));
  ExtenderOf<TTestExtenderA>(column)->Note = u"column note";
  ASSERT_TRUE(ExtenderOf<TTestExtenderB>(brackets));
  EXPECT_FALSE(constant->Extender);

  int changed = 0;
  context.GetOnSyntaxProviderChanged().AddHandler(TmvHandlerId::Unique(), [&changed](TmvObject*) { ++changed; });
  context.SetSyntaxProvider(&second);
  EXPECT_EQ(changed, 1);
  // A subclass extender keeps what Assign carries: the base class's fields.
  auto* kept = ExtenderOf<TTestExtenderA2>(negation);
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->Note, u"from the first dialect");
  ASSERT_TRUE(kept->Clause);
  EXPECT_EQ(Fast(kept->Clause), u"Extra");
  // An unrelated class carries nothing of the old one.
  auto* replaced = ExtenderOf<TTestExtenderB>(column);
  ASSERT_TRUE(replaced);
  EXPECT_EQ(replaced->Note, u"");
  // One the new dialect does not have is freed; a new one is made.
  EXPECT_FALSE(brackets->Extender);
  EXPECT_TRUE(ExtenderOf<TTestExtenderB>(constant));

  // The same class again: the extender stays as it is.
  TastExtender* before = negation->Extender.get();
  context.NotifySyntaxProviderChanged();
  EXPECT_EQ(negation->Extender.get(), before);

  // No dialect: no extenders.
  context.SetSyntaxProvider(nullptr);
  EXPECT_FALSE(negation->Extender);
  EXPECT_FALSE(constant->Extender);
}

TEST_F(ExtenderTest, ProviderNotificationsReachTheNodes) {
  TTestSyntaxProvider provider;
  context.SetSyntaxProvider(&provider);
  auto e = Not(Col(&context, {u"a"}));
  EXPECT_FALSE(e->Extender);
  // A provider that changes its table tells its contexts.
  provider.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderA::StaticClass());
  provider.SendNotifications();
  EXPECT_TRUE(ExtenderOf<TTestExtenderA>(e.get()));
  context.SetSyntaxProvider(nullptr);
}

TEST_F(ExtenderTest, ProviderThatGoesAwayIsForgotten) {
  auto provider = std::make_unique<TTestSyntaxProvider>();
  provider->RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderA::StaticClass());
  context.SetSyntaxProvider(provider.get());
  auto e = Not(Col(&context, {u"a"}));
  EXPECT_TRUE(e->Extender);
  provider.reset();
  EXPECT_EQ(context.SyntaxProvider(), nullptr);
  EXPECT_FALSE(e->Extender);
}

TEST_F(ExtenderTest, ChangeOfDialectWhileExtendersMakeAndFreeNodes) {
  TTestSyntaxProvider busy;
  // Each Not gets an extender that makes two nodes and frees one while it is made.
  busy.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestBusyExtender::StaticClass());
  TTestSyntaxProvider plain;
  plain.RegisterExtender(TSQLExpressionNot::StaticClass(), TTestExtenderA::StaticClass());

  std::vector<TmvOwned<TSQLExpressionItem>> trees;
  for (int i = 0; i < 50; ++i) trees.push_back(Not(Not(Col(&context, {u"a"}))));
  // Free a few, so the registry has holes to fill during the walk.
  for (int i = 0; i < 50; i += 7) trees[i].reset();
  const int before = context.AstNodeCount();

  context.SetSyntaxProvider(&busy);
  // Every Not has its busy extender with its spare node; nodes made during
  // the walk are registered, the temporary ones are gone again.
  int nots = 0;
  for (auto& tree : trees) {
    if (!tree) continue;
    ++nots;  // the root; the walk lists what stands below it
    tree->TraverseASTTreeDepthFirst([&nots](TastNodeBase* node) {
      if (TmvCast<TSQLExpressionNot>(node)) {
        ++nots;
        auto* extender = TmvCast<TTestBusyExtender>(static_cast<TastNode*>(node)->Extender.get());
        EXPECT_TRUE(extender && extender->Spare);
      }
    });
    EXPECT_TRUE(ExtenderOf<TTestBusyExtender>(tree.get()));
  }
  EXPECT_EQ(nots, 2 * 42);
  EXPECT_EQ(context.AstNodeCount(), before + nots);

  // Back to a dialect without them: the busy extenders and their nodes go.
  context.SetSyntaxProvider(&plain);
  EXPECT_EQ(context.AstNodeCount(), before);
  for (auto& tree : trees) {
    if (tree) {
      EXPECT_TRUE(ExtenderOf<TTestExtenderA>(tree.get()));
    }
  }
  context.SetSyntaxProvider(&busy);
  trees.clear();
  context.SetSyntaxProvider(nullptr);
  EXPECT_EQ(context.AstNodeCount(), 0);
}

TEST_F(ExtenderTest, ExtenderPrintsInsteadOfTheNode) {
  TTestSyntaxProvider provider;
  provider.RegisterExtender(TSQLExpressionBrackets::StaticClass(), TTestBracketingExtender::StaticClass());
  context.SetSyntaxProvider(&provider);
  auto e = Bin(Br(Col(&context, {u"a"})), u"+", Num(&context, u"1"));
  // The extender wraps the node's own printing.
  EXPECT_EQ(Fast(e), u"[(a)] + 1");
  context.SetSyntaxProvider(nullptr);
  EXPECT_EQ(Fast(e), u"(a) + 1");
}
