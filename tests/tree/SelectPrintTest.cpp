// Statements and clauses printed through the one-line builder and the piped
// one: the FROM tree and its brackets, optional keywords, select item forms,
// unions, clause forms, row limits and sub-query proxies. Whole layouts
// under the format options are FormatLayoutTest's.
#include <gtest/gtest.h>

#include "TestNodes.h"
#include "TestProvider.h"
#include "Thrown.h"
#include "TreeTestUtil.h"
#include "support/Exceptions.h"
#include "tree/RowLimits.h"

using namespace mv;
using namespace mv::test;

namespace {

class SelectPrint : public TreeTest {
 protected:
  SelectPrint() { provider.innerMandatory = true; }

  WideString Piped(TastNode* node) { return Print(node, piped); }

  TSQLBuilderPiped piped;
};

}  // namespace

TEST_F(SelectPrint, TheContextsExpressionBuilderLeavesAndGroupsBare) {
  auto s = Select(c()).Star().From(FromObject(c(), {u"t"}))
               .Where(Or(c(), And(c(), Eq(u"a", u"1"), Eq(u"b", u"2")), Eq(u"c", u"3"))).Statement();
  EXPECT_EQ(s->SimpleSQL(context.SQLBuilderExpression()), u"Select * From t Where a = 1 And b = 2 Or c = 3");
}

TEST_F(SelectPrint, TheBaseBuilderLaysOutAStatementLikeThePipedOne) {
  auto s = Select(c()).Items({u"a", u"b"}).From(u"t").Statement();
  TSQLBuilder plain;
  plain.SetKeywordFormat(akfUpperCase);
  EXPECT_EQ(Print(s, plain), u"SELECT a,\r\n  b\r\nFROM t");
}

TEST_F(SelectPrint, GroupsOfSourcesNestInBrackets) {
  auto inner = Make<TSQLFromGroup>();
  inner->Add(FromObject(c(), {u"b"}));
  auto c2 = FromObject(c(), {u"c"});
  c2->JoinKind.Set(Make<TSQLJoinKindInner>());
  c2->JoinExpression.Set(Eq(Col(c(), {u"b", u"x"}), Col(c(), {u"c", u"x"})));
  inner->Add(std::move(c2));
  auto left = Make<TSQLJoinKindLeft>();
  left->OuterKeyword = true;
  // The join kind of the first item of a group is not printed.
  auto first = FromObject(c(), {u"a"});
  first->JoinKind.Set(Make<TSQLJoinKindCross>());
  auto s = Select(c()).Star().From(std::move(first))
               .Join(std::move(left), std::move(inner), Eq(Col(c(), {u"a", u"y"}), Col(c(), {u"b", u"y"})))
               .Statement();
  EXPECT_EQ(Fast(s), u"Select * From a Left Outer Join (b Inner Join c On b.x = c.x) On a.y = b.y");
  // A dialect that wants brackets around a complex join condition.
  provider.bracketsInComplexJoin = true;
  auto both = Select(c()).Star().From(FromObject(c(), {u"a"}))
                  .Join(Make<TSQLJoinKindCross>(), FromObject(c(), {u"b"}),
                        And(c(), Eq(Col(c(), {u"a", u"x"}), Col(c(), {u"b", u"x"})), Eq(u"z", u"1")))
                  .Statement();
  EXPECT_EQ(Fast(both), u"Select * From a Cross Join b On (a.x = b.x And z = 1)");
}

TEST_F(SelectPrint, OptionalKeywordsOfJoinsAndAliases) {
  auto inner = Make<TSQLJoinKindInner>();
  TSQLBuilderFast fast;
  EXPECT_EQ(Print(inner, fast), u"Inner Join");  // the dialect requires the word
  fast.SetInnerKeywordInLinks(skSkipIfPossible);
  EXPECT_EQ(Print(inner, fast), u"Inner Join");
  provider.innerMandatory = false;
  EXPECT_EQ(Print(inner, fast), u"Join");
  inner->InnerKeyword = false;
  fast.SetInnerKeywordInLinks(skDontCare);
  EXPECT_EQ(Print(inner, fast), u"Join");
  fast.SetInnerKeywordInLinks(skPrintAlways);
  EXPECT_EQ(Print(inner, fast), u"Inner Join");

  auto full = Make<TSQLJoinKindFull>();
  EXPECT_TRUE(full->IsLeftOuter() && full->IsRightOuter());
  EXPECT_EQ(Print(full, fast), u"Full Join");
  full->OuterKeyword = true;
  EXPECT_EQ(Print(full, fast), u"Full Outer Join");
  fast.SetOuterKeywordInLinks(skSkipIfPossible);
  EXPECT_EQ(Print(full, fast), u"Full Join");
  provider.outerMandatory = true;
  EXPECT_EQ(Print(full, fast), u"Full Outer Join");
  EXPECT_EQ(Print(Make<TSQLJoinKindRight>(), fast), u"Right Outer Join");
  EXPECT_EQ(Print(Make<TSQLJoinKindCross>(), fast), u"Cross Join");

  auto s = Select(c()).Item(Col(c(), {u"a"}), u"x", true).Item(Col(c(), {u"b"}), u"y", false)
               .From(FromObject(c(), {u"t"}, u"z", true)).Statement();
  EXPECT_EQ(Fast(s), u"Select a As x, b y From t As z");
  fast.SetAsKeywordInExpressionAlias(skSkipIfPossible);
  fast.SetAsKeywordInObjectAlias(skPrintAlways);
  EXPECT_EQ(Print(s, fast), u"Select a x, b y From t As z");
  provider.asInExpressionAliasMandatory = true;
  fast.SetAsKeywordInObjectAlias(skSkipIfPossible);
  EXPECT_EQ(Print(s, fast), u"Select a As x, b As y From t z");
  provider.asInObjectAliasMandatory = true;
  EXPECT_EQ(Print(s, fast), u"Select a As x, b As y From t As z");
}

TEST_F(SelectPrint, SelectItemForms) {
  auto equals = Make<TSQLSelectItemExpression>();
  auto alias = Make<TSQLAliasEqualsExpression>();
  alias->Name.Set(Id(c(), u"x"));
  equals->Alias.Set(std::move(alias));
  equals->Expression.Set(Col(c(), {u"a"}));
  EXPECT_EQ(Fast(equals), u"x = a");
  auto source = FromObject(c(), {u"dbo", u"orders"}, u"o");
  auto all = Make<TSQLSelectItemAllTableColumns>();
  all->Object.Set(Name<TSQLDatabaseObject>(c(), {u"dbo", u"orders"}));
  EXPECT_EQ(Fast(all), u"dbo.orders.*");
  all->Object->FromSource = source.get();
  EXPECT_EQ(Fast(all), u"o.*");
  auto mode = Select(c()).Item(Col(c(), {u"a"})).From(FromObject(c(), {u"t"})).Statement();
  static_cast<TSQLSubQuerySelectExpression*>(mode->GetItems(0))->SelectMode.Set(Make<TSQLSubQuerySelectModeAll>());
  EXPECT_EQ(Fast(mode), u"Select All a From t");
  static_cast<TSQLSubQuerySelectExpression*>(mode->GetItems(0))->SelectMode.Set(Make<TSQLSubQuerySelectModeDistinctRow>());
  EXPECT_EQ(Fast(mode), u"Select DistinctRow a From t");
  // An empty select list and an empty FROM clause are legal.
  auto empty = Select(c()).Statement();
  static_cast<TSQLSubQuerySelectExpression*>(empty->GetItems(0))->FromClause.Set(Make<TSQLFromClause>());
  EXPECT_EQ(Piped(empty.get()), u"Select\r\nFrom");
}

TEST_F(SelectPrint, UnionsPrintTheOperatorsBetweenMembers) {
  // (SELECT a FROM t) UNION ALL SELECT b FROM u
  auto group = Make<TSQLSubQueryExpressions>();
  group->Add(std::move(Select(c()).Item(Col(c(), {u"a"})).From(FromObject(c(), {u"t"})).s));
  group->UnionOperator = u"Except";  // the first member's operator is never printed
  auto second = std::move(Select(c()).Item(Col(c(), {u"b"})).From(FromObject(c(), {u"u"})).s);
  second->UnionAll = true;
  auto statement = Make<TSQLSelectStatement>();
  statement->Add(std::move(group));
  statement->Add(std::move(second));
  EXPECT_EQ(Piped(statement.get()), u"(Select a\r\nFrom t)\r\nUnion All\r\nSelect b\r\nFrom u");
  EXPECT_EQ(Fast(statement), u"(Select a From t) Union All Select b From u");
  EXPECT_EQ(statement->GetItems(1)->GetSimpleUnionOperator(piped), u"Union All");
  // The first select, looking into groups.
  EXPECT_EQ(statement->FirstUnionSubQuery(), static_cast<TSQLSubQueryExpressions*>(statement->GetItems(0))->GetItems(0));
  // A statement of one member prints no operator; its order by follows the union.
  auto single = Select(c()).Item(Col(c(), {u"a"})).From(FromObject(c(), {u"t"})).Statement();
  single->GetItems(0)->UnionOperator = u"Intersect";
  single->OrderBy.Set(OrderByClause(c(), {{u"a", true}, {u"b", false}}));
  EXPECT_EQ(Piped(single.get()), u"Select a\r\nFrom t\r\nOrder By a Desc,\r\n  b");
  EXPECT_EQ(Make<TSQLSelectStatement>()->FirstUnionSubQuery(), nullptr);
}

TEST_F(SelectPrint, ClauseForms) {
  auto fetch = Make<TSQLFetchFirstClause>();
  EXPECT_EQ(Fast(fetch), u"Fetch First Row Only");
  fetch->Count.Set(Num(c(), u"10"));
  fetch->Percent = true;
  fetch->WithTies = true;
  EXPECT_EQ(Fast(fetch), u"Fetch First 10 Percent Rows With Ties");
  fetch->WithTies = false;
  fetch->Percent = false;
  EXPECT_EQ(Fast(fetch), u"Fetch First 10 Rows Only");
  // Group by forms.
  auto groupBy = Make<TSQLGroupByList>();
  groupBy->Add(Col(c(), {u"a"}));
  groupBy->Add(Col(c(), {u"b"}));
  groupBy->GroupingKind = 2;
  EXPECT_EQ(Fast(groupBy), u"Rollup(a, b)");
  groupBy->GroupingKind = 1;
  groupBy->Star = true;
  EXPECT_EQ(Fast(groupBy), u"Cube(*)");
  // Order by with Siblings, nulls ordering and collation.
  auto order = OrderByClause(c(), {{u"a", true}});
  order->Siblings = true;
  auto* item = static_cast<TSQLOrderByItem*>(order->GetItems(0));
  item->NullOrdering = 2;
  item->Collate.Set(TastCreate<TastNodeWithList>(c()));
  static_cast<TastNodeWithList*>(item->Collate.get())->Keyword(u"Collate").Space().Identifier(u"nocase");
  TSQLBuilderFast fast;
  fast.BeginBuild();
  order->BuildOrderByKeywords(fast);
  fast.Space(3);
  order->BuildSQL(fast, fast.MainQueryFormat());
  fast.EndBuild();
  EXPECT_EQ(fast.GetResult(), u"Order Siblings By a Desc Nulls Last Collate nocase");
}

TEST_F(SelectPrint, DerivedTableColumnNamesAndSubQueryFormats) {
  auto inner = Select(c()).Items({u"a", u"b"}).From(u"t").SubSelect();
  auto derived = Make<TSQLFromQuery>();
  derived->SubQuery.Set(inner->CloneAs<TSQLSubSelectStatement>());
  auto alias = Make<TSQLAliasObjectAlias>();
  alias->Name.Set(Id(c(), u"x"));
  derived->Alias.Set(std::move(alias));
  auto names = Make<TastNodeWithList>();
  names->Add(Id(c(), u"p"));
  names->Add(Id(c(), u"q"));
  derived->ColumnNames.Set(std::move(names));
  auto in = Make<TSQLExpressionInSubQuery>();
  in->Expression.Set(Col(c(), {u"x", u"p"}));
  in->SubQuery.Set(inner->CloneAs<TSQLSubSelectStatement>());
  auto s = Select(c()).Star().From(std::move(derived)).Where(std::move(in)).Statement();
  // In FROM: the main layout, indented by the FROM part; in an expression:
  // the parts stay on the line (the select list still breaks).
  EXPECT_EQ(Piped(s.get()),
            u"Select *\r\nFrom (Select a,\r\n    b\r\n  From t) x(p, q)\r\nWhere x.p In (Select a,\r\n    b From t)");
}

TEST_F(SelectPrint, RecursiveWithClause) {
  auto statement = Make<TSQLSelectStatement>();
  statement->With.Set(Make<TSQLWithClause>());
  for (const char16_t* name : {u"c", u"d"}) {
    auto item = Make<TSQLWithClauseItem>();
    item->Name.Set(Id(c(), name));
    item->ColumnNames.Set(Make<TastNodeWithList>());
    item->ColumnNames->Add(Id(c(), u"n"));
    item->Query.Set(Select(c()).Item(Num(c(), u"1")).From(u"t").SubSelect());
    statement->With->Add(std::move(item));
  }
  statement->Add(std::move(Select(c()).Items({u"n"}).From(u"c").s));
  statement->With->Modifier.Set(TastCreate<TastTokenKeyword>(c(), u"Recursive"));
  EXPECT_EQ(Fast(statement), u"With Recursive c(n) As (Select 1 From t), d(n) As (Select 1 From t) Select n From c");
}

TEST_F(SelectPrint, FunctionSourcesAndTheirBrackets) {
  auto function = Make<TSQLFromFunction>();
  function->Name.Set(Name<TSQLDatabaseObject>(c(), {u"dbo", u"f"}));
  function->Name->FromSource = function.get();
  EXPECT_EQ(Fast(function), u"dbo.f()");
  provider.emptyBrackets = false;
  EXPECT_EQ(Fast(function), u"dbo.f");
  function->Params.Set(Make<TSQLExpressionsList>());
  function->Params->Add(Num(c(), u"1"));
  function->Params->Add(Str(c(), u"'x'"));
  EXPECT_EQ(Fast(function), u"dbo.f(1, 'x')");
  // Without an alias a function cannot prefix a column; with one it can.
  auto column = Name<TSQLObjectColumn>(c(), {u"v"});
  column->FromSource = function.get();
  EXPECT_EQ(Fast(column), u"v");
  auto alias = Make<TSQLAliasObjectAlias>();
  alias->Name.Set(Id(c(), u"r"));
  function->Alias.Set(std::move(alias));
  EXPECT_EQ(Fast(column), u"r.v");
  EXPECT_EQ(Fast(function), u"dbo.f(1, 'x') r");
  EXPECT_EQ(function->GetSimpleExpression(piped), u"dbo.f(1, 'x')");
  // Copies bind their own name to themselves.
  auto copy = function->CloneAs<TSQLFromFunction>();
  EXPECT_EQ(copy->Name->FromSource, copy.get());
  auto variable = Make<TSQLFromVariable>();
  variable->Variable.Set(TastCreate<TastToken>(c(), u"@t"));
  EXPECT_EQ(Fast(variable), u"@t");
}

TEST_F(SelectPrint, CopyOfAFromObjectLeavesTheWithItemEmpty) {
  auto withItem = Make<TSQLWithClauseItem>();
  auto source = FromObject(c(), {u"c"}, u"x");
  source->WithItem = withItem.get();
  auto copy = source->CloneAs<TSQLFromObject>();
  EXPECT_EQ(copy->WithItem, nullptr);
  EXPECT_EQ(copy->Object->FromSource, copy.get());
  EXPECT_EQ(Fast(copy), u"c x");
  auto target = FromObject(c(), {u"z"});
  target->WithItem = withItem.get();
  target->Assign(*source);
  EXPECT_EQ(target->WithItem, nullptr);
}

TEST_F(SelectPrint, RowLimitsOfTheDialects) {
  auto top = Make<TSQLSubQueryTopRows>();
  top->Count.Set(Num(c(), u"10"));
  EXPECT_EQ(Fast(top), u"Top 10");
  top->StartAt.Set(Num(c(), u"5"));
  top->WithTies.Set(Make<TSQLSubQueryTopWithTies>());
  EXPECT_EQ(Fast(top), u"Top 10 Start At 5 With Ties");
  auto percent = Make<TSQLSubQueryTopPercent>();
  percent->Count.Set(Num(c(), u"10"));
  percent->WithTies.Set(Make<TSQLSubQueryTopWithTies>());
  EXPECT_EQ(Fast(percent), u"Top 10 Percent With Ties");
  auto starting = Make<TSQLSubQueryTopStartingAt>();
  starting->Start.Set(Num(c(), u"3"));
  EXPECT_EQ(Fast(starting), u"Starting At 3");
  auto first = Make<TSQLSubQueryFirstSkipClause>();
  EXPECT_EQ(Fast(first), u"First");
  first->First.Set(Num(c(), u"5"));
  first->Skip.Set(Num(c(), u"10"));
  EXPECT_EQ(Fast(first), u"First 5 Skip 10");
  auto rows = Make<TSQLSubQueryRowsClause>();
  rows->Low.Set(Num(c(), u"1"));
  EXPECT_EQ(Fast(rows), u"Rows 1");
  rows->High.Set(Num(c(), u"10"));
  EXPECT_EQ(Fast(rows), u"Rows 1 To 10");
  rows->Percent = true;
  rows->WithTiesWords = true;
  EXPECT_EQ(Fast(rows), u"Rows 1 By 10 Percent With Ties");
  // Limits are plain numbers, a main part each.
  auto limit = Make<TSQLLimit>();
  limit->Limit = 10;
  auto offset = Make<TSQLOffset>();
  offset->Offset = 20;
  auto offsetLimit = Make<TSQLOffsetLimit>();
  offsetLimit->Limit = 10;
  offsetLimit->Offset = 20;
  auto limitOffset = Make<TSQLLimitOffset>();
  limitOffset->Limit = 10;
  limitOffset->Offset = 20;
  EXPECT_EQ(Fast(limit), u"Limit 10");
  EXPECT_EQ(Fast(offset), u"Offset 20");
  EXPECT_EQ(Fast(offsetLimit), u"Limit 20, 10");
  EXPECT_EQ(Fast(limitOffset), u"Limit 10 Offset 20");
  EXPECT_EQ(limitOffset->CloneAs<TSQLLimitOffset>()->Offset, 20);
  // In a statement, the limit goes on its own line.
  auto list = Make<TastNodeWithList>();
  list->Keyword(u"Select").Space().Symbol(u"*");
  list->Add(limit->CloneAs<TSQLLimit>());
  EXPECT_EQ(Piped(list.get()), u"Select *\r\nLimit 10");
}

TEST_F(SelectPrint, ProxiesStandInForSubSelects) {
  // Select * From (Select a From t) x Where Exists(Select b From u)
  auto derived = Make<TSQLFromQuery>();
  auto query = Make<TSQLSubSelectStatement>();
  query->Add(std::move(Select(c()).Item(Col(c(), {u"a"})).From(FromObject(c(), {u"t"})).s));
  derived->SubQuery.Set(std::move(query));
  auto exists = Make<TSQLExpressionExists>();
  auto condition = Make<TSQLSubSelectStatement>();
  condition->Add(std::move(Select(c()).Item(Col(c(), {u"b"})).From(FromObject(c(), {u"u"})).s));
  exists->SubQuery.Set(std::move(condition));
  auto s = Select(c()).Star().From(std::move(derived)).Where(std::move(exists)).Statement();
  const WideString before = Fast(s);
  const WideString beforePiped = Piped(s.get());

  int owner = 0;
  TmvObject* ownerObject = reinterpret_cast<TmvObject*>(&owner);
  s->MoveSubQueryInProxyRecursive(ownerObject, TestProxyClass());
  // The tree keeps its shape and its text; the sub-selects are proxies now.
  EXPECT_EQ(Fast(s), before);
  EXPECT_EQ(Piped(s.get()), beforePiped);
  auto* select = static_cast<TSQLSubQuerySelectExpression*>(s->GetItems(0));
  auto* source = static_cast<TSQLFromQuery*>(select->FromClause->GetItems(0));
  auto* proxy = TmvCast<TTestProxy>(source->SubQuery.get());
  ASSERT_TRUE(proxy);
  EXPECT_EQ(proxy->Owner(), ownerObject);
  EXPECT_EQ(proxy->ParentNode(), source);
  EXPECT_TRUE(TmvCast<TTestProxy>(static_cast<TSQLExpressionExists*>(select->Where.get())->SubQuery.get()));
  // A proxy has no members and no children, refuses Add and Assign...
  EXPECT_EQ(proxy->GetCount(), 0);
  EXPECT_EQ(proxy->GetItems(0), nullptr);
  EXPECT_EQ(proxy->FirstUnionSubQuery(), nullptr);
  TastNodeBaseList children;
  proxy->GetMyChildren(children);
  EXPECT_TRUE(children.empty());
  EXPECT_EQ(mvtest::ThrownMessage([&] { proxy->Add(Make<TSQLSubQuerySelectExpression>()); }),
            u"Add can't be called with TSQLSubSelectStatementProxy");
  EXPECT_EQ(mvtest::ThrownMessage([&] { proxy->Assign(*Make<TSQLSubSelectStatement>()); }),
            u"Assign can't be called with TSQLSubSelectStatementProxy");
  // ...and its clone is a real statement.
  auto copy = proxy->Clone();
  EXPECT_EQ(std::string(copy->ClassName()), "TSQLSubSelectStatement");
  auto whole = s->CloneAs<TSQLSelectStatement>();
  EXPECT_EQ(Fast(whole), before);
  TastNodeBaseList all;
  whole->GetMyChildrenRecursive(all);
  for (TastNodeBase* node : all) EXPECT_FALSE(TmvCast<TSQLSubSelectStatementProxy>(node));
  // A second move finds no sub-select left to replace.
  TSQLSubSelectStatementProxy* sameProxy = proxy;
  s->MoveSubQueryInProxyRecursive(ownerObject, TestProxyClass());
  EXPECT_EQ(source->SubQuery.get(), sameProxy);
}
