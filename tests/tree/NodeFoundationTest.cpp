// The node foundation: field lists, generic Assign and Clone, the context's
// registry, child listing and walks, and destruction.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "TestNodes.h"
#include "TestProvider.h"
#include "TreeTestUtil.h"
#include "tree/NodeRegistry.h"

using namespace mv;
using namespace mv::test;

namespace {

std::vector<std::string> ClassNames(const TastNodeBaseList& nodes) {
  std::vector<std::string> names;
  for (TastNodeBase* node : nodes) names.emplace_back(node->ClassName());
  return names;
}

std::vector<std::string> FieldNames(const TastNodeBase& node) {
  std::vector<std::string> names;
  for (const TastFieldInfo& info : node.ClassFields().Entries()) names.emplace_back(info.Name);
  return names;
}

}  // namespace

TEST(NodeFoundation, FieldListsRunFromTheRootClassDown) {
  TmvBaseSQLContext context;
  // A node with no fields but the extender has a list of one entry.
  auto newLine = TastCreate<TastNodeNewLine>(&context);
  TastFieldsList list;
  newLine->GetASTFields(list);
  ASSERT_EQ(list.Count(), 1);
  EXPECT_EQ(list.ASTTypes[0], &TastNode::StaticClass());
  EXPECT_EQ(list.ASTFields[0], &newLine->Extender);

  auto between = TastCreate<TSQLExpressionBetween>(&context);
  EXPECT_EQ(FieldNames(*between), (std::vector<std::string>{"Extender", "Expression", "Low", "High"}));
  TastFieldsList betweenFields;
  between->GetASTFields(betweenFields);
  ASSERT_EQ(betweenFields.Count(), 4);
  EXPECT_EQ(betweenFields.ASTTypes[1], &TSQLExpressionExpressionItem::StaticClass());
  EXPECT_EQ(betweenFields.ASTTypes[3], &TSQLExpressionBetween::StaticClass());
  EXPECT_EQ(betweenFields.ASTFields[3], &between->High);

  // The ten clauses of a select expression, in printing order.
  auto select = TastCreate<TSQLSubQuerySelectExpression>(&context);
  EXPECT_EQ(FieldNames(*select),
            (std::vector<std::string>{"Extender", "SelectMode", "SelectItems", "FromClause", "Where", "GroupBy",
                                      "Having", "Window", "OrderBy", "ResultOffset", "FetchFirst"}));
  // A list stands at the position of the class that declares it.
  auto statement = TastCreate<TSQLSubSelectStatement>(&context);
  EXPECT_EQ(FieldNames(*statement),
            (std::vector<std::string>{"Extender", "Items", "With", "OrderBy", "ResultOffset", "FetchFirst"}));
}

TEST(NodeFoundation, AssignBetweenAClassAndItsSubclass) {
  TmvBaseSQLContext context;
  // Subclass to base: the base fields transfer, the rest is ignored.
  auto like = TastCreate<TSQLExpressionLikeTemplate>(&context);
  like->Expression.Set(Col(&context, {u"a"}));
  like->Template.Set(Str(&context, u"'x%'"));
  like->Negated = true;
  like->Tag = 7;
  auto between = TastCreate<TSQLExpressionBetween>(&context);
  between->Low.Set(Num(&context, u"1"));
  between->Assign(*like);
  EXPECT_EQ(between->Tag, 7);
  ASSERT_TRUE(between->Expression);
  EXPECT_EQ(Fast(between), u"a Between And");  // Low was emptied: its field is declared by Between
  EXPECT_FALSE(between->Negated);                 // Negated of Like is not Between's
  EXPECT_NE(between->Expression.get(), like->Expression.get());

  // Base to subclass: the subclass fields empty.
  auto select = TastCreate<TSQLSelectStatement>(&context);
  auto member = TastCreate<TSQLSubQuerySelectExpression>(&context);
  member->SelectItems.Set(TastCreate<TSQLSelectItems>(&context));
  member->SelectItems->Add(TastCreate<TSQLSelectItemAllColumns>(&context));
  select->Add(std::move(member));
  select->OrderBy.Set(TastCreate<TSQLOrderByClause>(&context));
  auto group = TastCreate<TSQLSubQueryExpressions>(&context);
  select->Assign(*group);  // Items is declared by the group class: emptied by an empty source
  EXPECT_EQ(select->GetCount(), 0);
  EXPECT_FALSE(select->OrderBy);

  auto source = TastCreate<TSQLSelectStatement>(&context);
  source->Add(TastCreate<TSQLSubQuerySelectExpression>(&context));
  source->OrderBy.Set(TastCreate<TSQLOrderByClause>(&context));
  group->Assign(*source);  // the members transfer to the group; the statement's clauses have no place
  EXPECT_EQ(group->GetCount(), 1);
  EXPECT_NE(group->GetItems(0), source->GetItems(0));
}

TEST(NodeFoundation, AssignToItselfChangesNothing) {
  TmvBaseSQLContext context;
  auto e = Bin(Col(&context, {u"a"}), u"=", Num(&context, u"1"));
  e->Assign(*e);
  EXPECT_EQ(Fast(e), u"a = 1");
}

TEST(NodeFoundation, RegistryKeepsSlotsAndReusesFreedOnes) {
  TmvBaseSQLContext context;
  EXPECT_EQ(context.AstNodeCount(), 0);
  auto a = TastCreate<TastTokenKeyword>(&context, u"A");
  auto b = TastCreate<TastTokenKeyword>(&context, u"B");
  auto c = TastCreate<TastTokenKeyword>(&context, u"C");
  EXPECT_EQ(a->ContextIndex(), 0);
  EXPECT_EQ(b->ContextIndex(), 1);
  EXPECT_EQ(c->ContextIndex(), 2);
  EXPECT_EQ(context.AstNodeCount(), 3);
  b.reset();
  EXPECT_EQ(context.AstNodeCount(), 2);
  auto d = TastCreate<TastTokenKeyword>(&context, u"D");
  EXPECT_EQ(d->ContextIndex(), 1);  // the freed slot
  auto e = TastCreate<TastTokenKeyword>(&context, u"E");
  EXPECT_EQ(e->ContextIndex(), 3);
  // A tree registers every node; freeing it unregisters them all.
  {
    auto tree = And(&context, Bin(Col(&context, {u"t", u"a"}), u"=", Num(&context, u"1")), Col(&context, {u"b"}));
    EXPECT_GT(context.AstNodeCount(), 4);
  }
  EXPECT_EQ(context.AstNodeCount(), 4);
}

TEST(NodeFoundation, CloneIntoAnotherContextRegistersThere) {
  TmvBaseSQLContext first;
  TmvBaseSQLContext second;
  auto e = And(&first, Bin(Col(&first, {u"t", u"a"}), u"=", Num(&first, u"1")), Not(Col(&first, {u"b"})));
  const int nodes = first.AstNodeCount();
  TmvOwned<TSQLExpressionItem> copy = e->CloneAs<TSQLExpressionItem>(&second);
  EXPECT_EQ(first.AstNodeCount(), nodes);
  EXPECT_EQ(second.AstNodeCount(), nodes);
  TastNodeBaseList all;
  copy->GetMyChildrenRecursive(all);
  for (TastNodeBase* node : all) EXPECT_EQ(node->SQLContext(), &second);
  EXPECT_EQ(Fast(copy), Fast(e));
  // The original goes first; the copy stands on its own.
  e.reset();
  EXPECT_EQ(Fast(copy), u"t.a = 1 And Not b");
}

TEST(NodeFoundation, ChildrenOfAListNodeWithASubclassField) {
  TastNodeBaseList children;
  TmvBaseSQLContext context;
  TTestSyntaxProvider provider;
  context.SetSyntaxProvider(&provider);
  // An extender on the with clause shows where it stands among the children.
  provider.RegisterExtender(TSQLWithClause::StaticClass(), TTestExtenderB::StaticClass());
  auto with = TastCreate<TSQLWithClause>(&context);
  with->Modifier.Set(TastCreate<TastTokenKeyword>(&context, u"Recursive"));
  with->Add(TastCreate<TSQLWithClauseItem>(&context));
  with->Add(TastCreate<TSQLWithClauseItem>(&context));
  with->GetMyChildren(children);
  // The extender, then the items, then the field of the subclass.
  EXPECT_EQ(ClassNames(children), (std::vector<std::string>{"TTestExtenderB", "TSQLWithClauseItem",
                                                            "TSQLWithClauseItem", "TastTokenKeyword"}));
  EXPECT_EQ(with->FindFirstChildIndexForClass(TastNodeWithList::StaticClass()), 1);
  EXPECT_EQ(with->FindFirstChildIndexForClass(TSQLWithClause::StaticClass()), 1);
  context.SetSyntaxProvider(nullptr);
}

TEST(NodeFoundation, WalksVisitInTheirOrders) {
  TmvBaseSQLContext context;
  // (a = 1) And b
  auto tree = And(&context, Br(Bin(Col(&context, {u"a"}), u"=", Num(&context, u"1"))), Col(&context, {u"b"}));
  TastNodeBaseList recursive;
  tree->GetMyChildrenRecursive(recursive);
  // Breadth-first within each subtree: the level first, then each child's.
  EXPECT_EQ(ClassNames(recursive),
            (std::vector<std::string>{"TSQLExpressionBrackets", "TSQLExpressionColumn", "TSQLExpressionOperatorBinary",
                                      "TSQLExpressionColumn", "TSQLOperator", "TSQLExpressionConstant",
                                      "TSQLObjectColumn", "TastTokenIdentifier", "TastTokenNumber", "TSQLObjectColumn",
                                      "TastTokenIdentifier"}));
  std::vector<std::string> depth;
  tree->TraverseASTTreeDepthFirst([&depth](TastNodeBase* n) { depth.emplace_back(n->ClassName()); });
  EXPECT_EQ(depth, (std::vector<std::string>{"TSQLExpressionBrackets", "TSQLExpressionOperatorBinary",
                                             "TSQLExpressionColumn", "TSQLObjectColumn", "TastTokenIdentifier",
                                             "TSQLOperator", "TSQLExpressionConstant", "TastTokenNumber",
                                             "TSQLExpressionColumn", "TSQLObjectColumn", "TastTokenIdentifier"}));
  std::vector<std::string> sibling;
  tree->TraverseASTTreeSiblingFirst([&sibling](TastNodeBase* n) { sibling.emplace_back(n->ClassName()); });
  EXPECT_EQ(sibling.size(), depth.size());
  EXPECT_EQ(sibling[0], "TSQLExpressionBrackets");
  EXPECT_EQ(sibling[1], "TSQLExpressionColumn");  // both children of the root before any grandchild
  EXPECT_EQ(sibling[2], "TSQLExpressionOperatorBinary");
}

namespace {

// Records the walk and carries the depth down as its scope.
class DepthVisitor : public TastNodeVisitor {
 public:
  struct Scope : TmvObject {
    int depth = 0;
  };
  std::vector<std::string> log;

 protected:
  TmvOwned<TmvObject> EnterIntoNode(TastNodeBase* node, TastNodeBase*, TmvObject* data) override {
    auto scope = TmvCreate<Scope>();
    scope->depth = data ? static_cast<Scope*>(data)->depth + 1 : 0;
    log.push_back("enter " + std::string(node->ClassName()) + " " + std::to_string(scope->depth));
    return scope;
  }
  void ExitFromNode(TastNodeBase* node, TastNodeBase* parent, TmvObject*, TmvObject*) override {
    log.push_back("exit " + std::string(node->ClassName()) + (parent ? "" : " (root)"));
  }
};

}  // namespace

TEST(NodeFoundation, VisitorCarriesAScopeDownTheTree) {
  TmvBaseSQLContext context;
  auto tree = Not(Col(&context, {u"a"}));
  DepthVisitor visitor;
  visitor.Visit(tree.get(), nullptr);
  EXPECT_EQ(visitor.log, (std::vector<std::string>{
                             "enter TSQLExpressionNot 0", "enter TSQLExpressionColumn 1", "enter TSQLObjectColumn 2",
                             "enter TastTokenIdentifier 3", "exit TastTokenIdentifier", "exit TSQLObjectColumn",
                             "exit TSQLExpressionColumn", "exit TSQLExpressionNot (root)"}));
}

TEST(NodeFoundation, BuildSQLFiresTheBuilderEventsAroundEachNode) {
  TmvBaseSQLContext context;
  auto e = Bin(Col(&context, {u"a"}), u"+", Num(&context, u"1"));
  TSQLBuilderFast builder;
  std::vector<std::string> events;
  builder.OnBeginBuildSQLForNode = [&](TSQLBuilder*, TastNode* node) { events.push_back("+" + std::string(node->ClassName())); };
  builder.OnEndBuildSQLForNode = [&](TSQLBuilder*, TastNode* node) { events.push_back("-" + std::string(node->ClassName())); };
  EXPECT_EQ(Print(e, builder), u"a + 1");
  ASSERT_GE(events.size(), 4u);
  EXPECT_EQ(events.front(), "+TSQLExpressionOperatorBinary");
  EXPECT_EQ(events[1], "+TSQLExpressionColumn");
  EXPECT_EQ(events.back(), "-TSQLExpressionOperatorBinary");
}

TEST(NodeFoundation, ListLanguageComposesWhatAListPrints) {
  TmvBaseSQLContext context;
  auto list = TastCreate<TastNodeWithList>(&context);
  list->Builtin(u"Extract").Symbol(u"(").Keyword(u"Year").Space().Keyword(u"From");
  list->AddIdentifier(u"d", true, 3);
  list->ASy(u")");
  EXPECT_EQ(Fast(list), u"Extract(Year From d)");
  // Insert forms put a blank first when asked.
  list->InsertKeyword(0, u"Select", false);
  list->InsertSpace(1, 3);
  EXPECT_EQ(Fast(list), u"Select Extract(Year From d)");
  list->AddNewLine();
  list->AddSymbol(u";");
  TSQLBuilder plain;
  EXPECT_EQ(Print(list, plain), u"Select Extract(Year From d)\r\n;");
  EXPECT_EQ(list->GetCount(), 12);
  TastNode* first = list->GetItems(0);
  TmvOwned<TastNode> taken = list->Extract(first);
  EXPECT_EQ(Fast(taken), u"Select");
  EXPECT_EQ(list->IndexOf(first), -1);
}

TEST(NodeFoundation, CollectionMakesItemsOfItsClassAndRebuildsThem) {
  TmvBaseSQLContext context;
  auto ids = TastCreate<TSQLIdentifiersCollection>(&context);
  ids->AddIdentifier(u"a");
  ids->AddIdentifier(u"b");
  ASSERT_EQ(ids->GetCount(), 2);
  EXPECT_TRUE(TmvCast<TastTokenIdentifier>(ids->GetItems(0)));
  EXPECT_EQ(Fast(ids), u"");  // a collection prints nothing by itself
  // Another item class: each item is made anew and assigned from the old one.
  ids->SetItemClass(&TastTokenKeyword::StaticClass());
  auto* keyword = TmvCast<TastTokenKeyword>(ids->GetItems(1));
  ASSERT_TRUE(keyword);
  EXPECT_EQ(keyword->Token, u"b");
  auto copy = ids->CloneAs<TSQLIdentifiersCollection>();
  EXPECT_EQ(copy->ItemClass, &TastTokenKeyword::StaticClass());
  EXPECT_EQ(copy->GetCount(), 2);
}

TEST(NodeFoundation, ReferencesToASourceAreListedReplacedAndRemoved) {
  TmvBaseSQLContext context;
  auto t = FromObject(&context, {u"t"});
  auto u = FromObject(&context, {u"u"});
  // t.a = 1 And u.b = 2 And c = 3, columns bound by hand.
  auto left = Col(&context, {u"a"});
  static_cast<TSQLExpressionColumn*>(left.get())->Column->FromSource = t.get();
  auto right = Col(&context, {u"b"});
  static_cast<TSQLExpressionColumn*>(right.get())->Column->FromSource = u.get();
  auto condition = And(&context, Bin(std::move(left), u"=", Num(&context, u"1")),
                       Bin(std::move(right), u"=", Num(&context, u"2")),
                       Bin(Col(&context, {u"c"}), u"=", Num(&context, u"3")));
  EXPECT_EQ(Fast(condition), u"t.a = 1 And u.b = 2 And c = 3");
  TSQLFromSourceList sources;
  condition->GetReferencedDatasourcesRecursive(sources);
  EXPECT_EQ(sources, (TSQLFromSourceList{t.get(), u.get()}));
  TSQLObjectColumnList columns;
  condition->GetReferencedColumnsRecursive(columns);
  EXPECT_EQ(columns.size(), 3u);

  EXPECT_TRUE(condition->ReplaceReferencesToDatasourceRecursive(u.get(), t.get()));
  EXPECT_EQ(Fast(condition), u"t.a = 1 And t.b = 2 And c = 3");
  EXPECT_FALSE(condition->ReplaceReferencesToDatasourceRecursive(u.get(), t.get()));

  // Fields whose subtree refers to t are freed, from the leaves up; the
  // operands of And stay (list items are no child fields).
  EXPECT_TRUE(condition->RemoveReferencesToDatasource(t.get()));
  EXPECT_EQ(Fast(condition), u"= 1 And = 2 And c = 3");
  // A bound column cannot drop its own reference: false.
  auto column = Name<TSQLObjectColumn>(&context, {u"x"});
  column->FromSource = u.get();
  EXPECT_FALSE(column->RemoveReferencesToDatasource(u.get()));
  EXPECT_TRUE(column->RemoveReferencesToDatasource(t.get()));
}

TEST(NodeFoundation, TreesCanBeFreedInAnyOrder) {
  TmvBaseSQLContext context;
  std::vector<TmvOwned<TSQLExpressionItem>> trees;
  for (int i = 0; i < 6; ++i)
    trees.push_back(And(&context, Bin(Col(&context, {u"t", u"a"}), u"=", Num(&context, u"1")),
                        Or(&context, Not(Col(&context, {u"b"})), Br(Col(&context, {u"c"})))));
  trees.push_back(trees[2]->CloneAs<TSQLExpressionItem>());
  trees.push_back(trees[6]->CloneAs<TSQLExpressionItem>());
  // Free parts of trees first, then the trees, out of order.
  static_cast<TSQLExpressionAnd*>(trees[4].get())->Items.Delete(1);
  trees[5] = SimplifyLogicalExpression(std::move(trees[5]));
  for (int i : {3, 7, 0, 5, 1, 6, 4, 2}) trees[i].reset();
  EXPECT_EQ(context.AstNodeCount(), 0);
}

TEST(NodeFoundation, EditPropsAssignsTheEditedCloneWhenAccepted) {
  TmvBaseSQLContext context;
  auto e = Bin(Col(&context, {u"a"}), u"=", Num(&context, u"1"));
  // The base editor refuses: nothing changes and the clone is gone.
  const int nodes = context.AstNodeCount();
  EXPECT_FALSE(e->EditProps(nullptr));
  EXPECT_EQ(context.AstNodeCount(), nodes);
}

TEST(NodeFoundation, EveryCoreClassIsRegisteredByName) {
  const TastNodeClassRegistry& registry = TastNodeClasses();
  EXPECT_GE(registry.Classes().size(), 140u);
  EXPECT_EQ(registry.Find("tsqlexpressionbetween"), &TSQLExpressionBetween::StaticClass());
  EXPECT_EQ(registry.Find("TSQLNoSuchNode"), nullptr);
  EXPECT_TRUE(registry.Find("TSQLExpressionItem")->IsAbstract());
  EXPECT_FALSE(registry.Find("TSQLSelectStatement")->IsAbstract());
}

TEST(NodeFoundation, ContextWithFilledNameCachesGoesCleanly) {
  TTestSyntaxProvider provider;
  provider.builtinFunctions = {u"Upper", u"Lower"};
  auto context = std::make_unique<TmvBaseSQLContext>();
  context->SetSyntaxProvider(&provider);
  {
    auto name = Name(context.get(), {u"upper"});
    EXPECT_TRUE(context->IsNameOfBuiltinFunction(name.get()));
    EXPECT_TRUE(context->IsNameOfPrefixedAggregate(Name(context.get(), {u"SUM"}).get()));
    EXPECT_TRUE(context->IsNameOfStarAggregate(Name(context.get(), {u"count"}).get()));
    EXPECT_FALSE(context->IsNameOfAggregate(Name(context.get(), {u"count"}).get()));
    // Normalizing gives a name the dialect's spelling, as a built-in word.
    auto sum = Name(context.get(), {u"SUM"});
    context->AggregateNormalize(sum.get());
    ASSERT_EQ(sum->GetCount(), 1);
    EXPECT_TRUE(TmvCast<TastTokenBuiltin>(sum->Token(0)));
    EXPECT_EQ(sum->Token(0)->Token, u"Sum");
    context->BuiltinFunctionNormalize(name.get());
    EXPECT_EQ(name->Token(0)->Token, u"Upper");
    auto unknown = Name(context.get(), {u"foo"});
    context->AggregateNormalize(unknown.get());
    EXPECT_TRUE(TmvCast<TastTokenIdentifier>(unknown->Token(0)));
    // A change of dialect refills the caches from the new answers.
    provider.builtinFunctions = {u"Lower"};
    provider.SendNotifications();
    EXPECT_FALSE(context->IsNameOfBuiltinFunction(name.get()));
  }
  // Only the cached names are left, and they go with the context.
  EXPECT_GT(context->AstNodeCount(), 0);
  context.reset();
}
