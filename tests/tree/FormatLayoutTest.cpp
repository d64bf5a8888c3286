// Golden layouts of whole statements through the piped builder, the one
// behind all formatted text: the defaults, each select format option, list,
// condition and FROM formats, the layouts of each kind of sub-query (derived
// table, expression sub-query, union member, common table expression),
// keyword case, identifier quoting, optional keywords and the right margin.
// Options are set by their property names, as a command line gives them.
#include <gtest/gtest.h>

#include "TestProvider.h"
#include "TreeTestUtil.h"

using namespace mv;
using namespace mv::test;

namespace {

class FormatLayout : public TreeTest {
 protected:
  // The text of a node through a piped builder with `settings` applied
  // ("Name=Value", property names).
  WideString Layout(TastNode* node, std::initializer_list<const char16_t*> settings = {}) {
    TSQLBuilderPiped builder;
    for (const char16_t* setting : settings) builder.PropertyTable().SetAssignment(builder, setting);
    return node->SimpleSQL(builder);
  }

  using TreeTest::Eq;
  Expr Eq(const char16_t* a1, const char16_t* a2, const char16_t* b1, const char16_t* b2) {
    return Eq(Col(c(), {a1, a2}), Col(c(), {b1, b2}));
  }

  Expr CountStar() {
    auto count = Make<TSQLExpressionAggregate>();
    count->Name.Set(Name(c(), {u"Count"}));
    return count;
  }

  // Select a, b, c
  // From t1 x Inner Join t2 y On x.id = y.id And x.k = 1
  //   Left Outer Join t3 On y.id = t3.id, t4
  // Where a = 1 And b = 2 Or c = 3
  // Group By a, b Having Count(*) > 1 Or a = 2 Order By a, b Desc
  TmvOwned<TSQLSelectStatement> Full() {
    auto left = Make<TSQLJoinKindLeft>();
    left->OuterKeyword = true;
    return Select(c())
        .Items({u"a", u"b", u"c"})
        .From(u"t1", u"x")
        .Join(Make<TSQLJoinKindInner>(), FromObject(c(), {u"t2"}, u"y"),
              And(c(), Eq(u"x", u"id", u"y", u"id"), Eq(Col(c(), {u"x", u"k"}), Num(c(), u"1"))))
        .Join(std::move(left), FromObject(c(), {u"t3"}), Eq(u"y", u"id", u"t3", u"id"))
        .From(u"t4")
        .Where(Or(c(), And(c(), Eq(u"a", u"1"), Eq(u"b", u"2")), Eq(u"c", u"3")))
        .GroupBy({u"a", u"b"})
        .Having(Or(c(), Bin(CountStar(), u">", Num(c(), u"1")), Eq(u"a", u"2")))
        .OrderBy({{u"a", false}, {u"b", true}})
        .Statement();
  }

  // Select a, b From t Where a = 1 Or b = 2 Order By a
  TmvOwned<TSQLSelectStatement> Small() {
    return Select(c())
        .Items({u"a", u"b"})
        .From(u"t")
        .Where(Or(c(), Eq(u"a", u"1"), Eq(u"b", u"2")))
        .OrderBy({{u"a", false}})
        .Statement();
  }

  // Select * From t Where `condition`
  TmvOwned<TSQLSelectStatement> Where(Expr condition) {
    return Select(c()).Star().From(u"t").Where(std::move(condition)).Statement();
  }

};

}  // namespace

// --- The main query ---

TEST_F(FormatLayout, MainQueryWithTheDefaults) {
  auto s = Full();
  EXPECT_EQ(Layout(s.get()),
            u"Select a,\r\n"
            u"  b,\r\n"
            u"  c\r\n"
            u"From t1 x\r\n"
            u"  Inner Join t2 y On x.id = y.id And x.k = 1\r\n"
            u"  Left Outer Join t3 On y.id = t3.id,\r\n"
            u"  t4\r\n"
            u"Where (a = 1 And b = 2) Or\r\n"
            u"  c = 3\r\n"
            u"Group By a,\r\n"
            u"  b\r\n"
            u"Having Count(*) > 1 Or\r\n"
            u"  a = 2\r\n"
            u"Order By a,\r\n"
            u"  b Desc");
}

TEST_F(FormatLayout, MainPartsOnTheLineOfThePartBefore) {
  auto s = Small();
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.MainPartsFromNewLine=False"}),
            u"Select a,\r\n"
            u"  b From t Where a = 1 Or\r\n"
            u"  b = 2 Order By a");
}

TEST_F(FormatLayout, LineBreakAfterThePartKeywords) {
  auto s = Small();
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.NewLineAfterPartKeywords=True"}),
            u"Select\r\n"
            u"  a,\r\n"
            u"  b\r\n"
            u"From\r\n"
            u"  t\r\n"
            u"Where\r\n"
            u"  a = 1 Or\r\n"
            u"  b = 2\r\n"
            u"Order By\r\n"
            u"  a");
}

TEST_F(FormatLayout, GlobalAndPartIndents) {
  auto s = Small();
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.IndentGlobal=4", u"MainQueryFormat.IndentInPart=3"}),
            u"    Select a,\r\n"
            u"       b\r\n"
            u"    From t\r\n"
            u"    Where a = 1 Or\r\n"
            u"       b = 2\r\n"
            u"    Order By a");
  // No indent in the parts at all.
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.IndentInPart=0"}),
            u"Select a,\r\n"
            u"b\r\n"
            u"From t\r\n"
            u"Where a = 1 Or\r\n"
            u"b = 2\r\n"
            u"Order By a");
}

// --- List formats ---

TEST_F(FormatLayout, ListsHavingAndJoinConditionsHaveTheirOwnFormats) {
  // Each option reaches only its own part; keywords in capitals show which
  // words of each part are keywords.
  auto s = Full();
  EXPECT_EQ(Layout(s.get(),
                   {u"MainQueryFormat.SelectListFormat.NewLineAfterItem=False",
                    u"MainQueryFormat.SelectListFormat.NewLineBeforeComma=True",
                    u"MainQueryFormat.GroupByFormat.NewLineAfterItem=False",
                    u"MainQueryFormat.OrderByFormat.NewLineBeforeComma=True",
                    u"MainQueryFormat.HavingFormat.NewLineAfter=nlNone",
                    u"MainQueryFormat.FromClauseFormat.JoinConditionFormat.NewLineAfter=nlTopmostLogical",
                    u"KeywordFormat=akfUpperCase"}),
            u"SELECT a\r\n"
            u"  , b\r\n"
            u"  , c\r\n"
            u"FROM t1 x\r\n"
            u"  INNER JOIN t2 y ON x.id = y.id AND\r\n"
            u"    x.k = 1\r\n"
            u"  LEFT OUTER JOIN t3 ON y.id = t3.id,\r\n"
            u"  t4\r\n"
            u"WHERE (a = 1 AND b = 2) OR\r\n"
            u"  c = 3\r\n"
            u"GROUP BY a, b\r\n"
            u"HAVING Count(*) > 1 OR a = 2\r\n"
            u"ORDER BY a\r\n"
            u"  ,\r\n"
            u"  b DESC");
}

TEST_F(FormatLayout, WindowListHasItsOwnFormat) {
  Select select(c());
  select.Star().From(u"t");
  select.s->Window.Set(Make<TSQLWindowClause>());
  for (auto [name, word, column] : {std::tuple{u"w1", u"Partition", u"a"}, std::tuple{u"w2", u"Order", u"b"}}) {
    auto window = Make<TSQLWindowItem>();
    window->Name.Set(Id(c(), name));
    auto definition = Make<TastNodeWithList>();
    definition->Keyword(word).Space().Keyword(u"By").Space().Identifier(column);
    window->Definition.Set(std::move(definition));
    select.s->Window->Add(std::move(window));
  }
  auto s = select.Statement();
  EXPECT_EQ(Layout(s.get()),
            u"Select *\r\n"
            u"From t\r\n"
            u"Window w1 As (Partition By a),\r\n"
            u"  w2 As (Order By b)");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.WindowFormat.NewLineAfterItem=False"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Window w1 As (Partition By a), w2 As (Order By b)");
}

// --- Condition formats ---

TEST_F(FormatLayout, ConditionsBreakAtTheirLevels) {
  // (a = 1 And b = 2) Or (c = 3 And (d = 4 Or e = 5))
  auto s = Where(Or(c(), And(c(), Eq(u"a", u"1"), Eq(u"b", u"2")),
                    And(c(), Eq(u"c", u"3"), Br(Or(c(), Eq(u"d", u"4"), Eq(u"e", u"5"))))));
  EXPECT_EQ(Layout(s.get()),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where (a = 1 And b = 2) Or\r\n"
            u"  (c = 3 And (d = 4 Or e = 5))");
  // Before every logical word; after only the outermost Or. The brackets
  // around groups indent their content like those of the tree.
  const WideString allLogical =
      u"Select *\r\n"
      u"From t\r\n"
      u"Where (a = 1\r\n"
      u"    And b = 2)\r\n"
      u"  Or\r\n"
      u"  (c = 3\r\n"
      u"    And (d = 4\r\n"
      u"      Or e = 5))";
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.WhereFormat.NewLineBefore=nlAllLogical"}), allLogical);
  // So the same condition read back from that text, with bracket nodes
  // around the groups, lays out the same.
  auto parsed = Where(Or(c(), Br(And(c(), Eq(u"a", u"1"), Eq(u"b", u"2"))),
                         Br(And(c(), Eq(u"c", u"3"), Br(Or(c(), Eq(u"d", u"4"), Eq(u"e", u"5")))))));
  EXPECT_EQ(Layout(parsed.get(), {u"MainQueryFormat.WhereFormat.NewLineBefore=nlAllLogical"}), allLogical);
  // The same without indent inside the parentheses.
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.WhereFormat.NewLineBefore=nlAllLogical",
                             u"MainQueryFormat.WhereFormat.IndentNestedConditions=0"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where (a = 1\r\n"
            u"  And b = 2)\r\n"
            u"  Or\r\n"
            u"  (c = 3\r\n"
            u"  And (d = 4\r\n"
            u"  Or e = 5))");
  // No break at all.
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.WhereFormat.NewLineAfter=nlNone"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where (a = 1 And b = 2) Or (c = 3 And (d = 4 Or e = 5))");
}

TEST_F(FormatLayout, TopmostLogicalBreaksAtTheOutermostAnd) {
  // a = 1 And (b = 2 Or c = 3) And d = 4
  auto s = Where(And(c(), Eq(u"a", u"1"), Or(c(), Eq(u"b", u"2"), Eq(u"c", u"3")), Eq(u"d", u"4")));
  // An And never breaks under the default, and an Or inside it has brackets.
  EXPECT_EQ(Layout(s.get()),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where a = 1 And (b = 2 Or c = 3) And d = 4");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.WhereFormat.NewLineAfter=nlTopmostLogical"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where a = 1 And\r\n"
            u"  (b = 2 Or c = 3) And\r\n"
            u"  d = 4");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.WhereFormat.NewLineBefore=nlTopmostLogical",
                             u"MainQueryFormat.WhereFormat.NewLineAfter=nlNone"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where a = 1\r\n"
            u"  And (b = 2 Or c = 3)\r\n"
            u"  And d = 4");
  // A single-item And at the top adds neither brackets nor a level: its Or breaks.
  auto single = Where(And(c(), Or(c(), Eq(u"a", u"1"), Eq(u"b", u"2"))));
  EXPECT_EQ(Layout(single.get()),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where a = 1 Or\r\n"
            u"  b = 2");
}

TEST_F(FormatLayout, ParenthesesAroundGroupsAndCriteria) {
  auto s = Where(Or(c(), And(c(), Eq(u"a", u"1"), Eq(u"b", u"2")),
                    And(c(), Eq(u"c", u"3"), Br(Or(c(), Eq(u"d", u"4"), Eq(u"e", u"5"))))));
  EXPECT_EQ(Layout(s.get(), {u"ParenthesizeANDGroups=False"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where a = 1 And b = 2 Or\r\n"
            u"  c = 3 And (d = 4 Or e = 5)");
  // Each criterion of a multi-item And in brackets, but no second pair
  // around brackets already there; inside the brackets of a group none.
  auto and3 = Where(And(c(), Eq(u"a", u"1"), Or(c(), Eq(u"b", u"2"), Eq(u"c", u"3")), Br(Eq(u"d", u"4"))));
  EXPECT_EQ(Layout(and3.get(), {u"ParenthesizeSingleCriterion=True"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where (a = 1) And (b = 2 Or c = 3) And (d = 4)");
  // In an Or, single criteria get brackets as well.
  auto or2 = Where(Or(c(), Eq(u"a", u"1"), Eq(u"b", u"2")));
  EXPECT_EQ(Layout(or2.get(), {u"ParenthesizeSingleCriterion=True"}),
            u"Select *\r\n"
            u"From t\r\n"
            u"Where (a = 1) Or\r\n"
            u"  (b = 2)");
}

// --- FROM clause formats ---

TEST_F(FormatLayout, FromClauseLineBreaks) {
  auto s = Select(c()).Star().From(u"t1", u"x")
               .Join(Make<TSQLJoinKindInner>(), FromObject(c(), {u"t2"}, u"y"), Eq(u"x", u"id", u"y", u"id"))
               .Join(Make<TSQLJoinKindRight>(), FromObject(c(), {u"t3"}), Eq(u"y", u"id", u"t3", u"id"))
               .From(u"t4")
               .From(u"t5")
               .Statement();
  EXPECT_EQ(Layout(s.get()),
            u"Select *\r\n"
            u"From t1 x\r\n"
            u"  Inner Join t2 y On x.id = y.id\r\n"
            u"  Right Join t3 On y.id = t3.id,\r\n"
            u"  t4,\r\n"
            u"  t5");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.FromClauseFormat.NewLineAfterDatasource=False"}),
            u"Select *\r\n"
            u"From t1 x Inner Join t2 y On x.id = y.id Right Join t3 On y.id = t3.id, t4, t5");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.FromClauseFormat.NewLineAfterJoin=True",
                             u"MainQueryFormat.FromClauseFormat.NewLineBeforeJoinExpression=True"}),
            u"Select *\r\n"
            u"From t1 x\r\n"
            u"  Inner Join\r\n"
            u"  t2 y\r\n"
            u"    On x.id = y.id\r\n"
            u"  Right Join\r\n"
            u"  t3\r\n"
            u"    On y.id = t3.id,\r\n"
            u"  t4,\r\n"
            u"  t5");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.FromClauseFormat.NewLineBeforeComma=True"}),
            u"Select *\r\n"
            u"From t1 x\r\n"
            u"  Inner Join t2 y On x.id = y.id\r\n"
            u"  Right Join t3 On y.id = t3.id\r\n"
            u"  , t4\r\n"
            u"  , t5");
  // After the join word only: the comma follows NewLineAfterJoin as well.
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.FromClauseFormat.NewLineAfterDatasource=False",
                             u"MainQueryFormat.FromClauseFormat.NewLineAfterJoin=True"}),
            u"Select *\r\n"
            u"From t1 x Inner Join\r\n"
            u"  t2 y On x.id = y.id Right Join\r\n"
            u"  t3 On y.id = t3.id,\r\n"
            u"  t4,\r\n"
            u"  t5");
}

// --- Sub-queries ---

TEST_F(FormatLayout, DerivedTableTakesTheFromSubQueryFormat) {
  auto derived = Make<TSQLFromQuery>();
  derived->SubQuery.Set(
      Select(c()).Items({u"a", u"b"}).From(u"t").Where(Or(c(), Eq(u"a", u"1"), Eq(u"b", u"2"))).SubSelect());
  auto alias = Make<TSQLAliasObjectAlias>();
  alias->Name.Set(Id(c(), u"q"));
  derived->Alias.Set(std::move(alias));
  auto s = Select(c()).Star().From(std::move(derived)).Where(Eq(Col(c(), {u"q", u"a"}), Num(c(), u"1"))).Statement();
  EXPECT_EQ(Layout(s.get()),
            u"Select *\r\n"
            u"From (Select a,\r\n"
            u"    b\r\n"
            u"  From t\r\n"
            u"  Where a = 1 Or\r\n"
            u"    b = 2) q\r\n"
            u"Where q.a = 1");
  EXPECT_EQ(Layout(s.get(), {u"FromSubQueryFormat.IndentGlobal=2"}),
            u"Select *\r\n"
            u"From (Select a,\r\n"
            u"      b\r\n"
            u"    From t\r\n"
            u"    Where a = 1 Or\r\n"
            u"      b = 2) q\r\n"
            u"Where q.a = 1");
  EXPECT_EQ(Layout(s.get(), {u"FromSubQueryFormat.MainPartsFromNewLine=False",
                             u"FromSubQueryFormat.SelectListFormat.NewLineAfterItem=False",
                             u"FromSubQueryFormat.WhereFormat.NewLineAfter=nlNone"}),
            u"Select *\r\n"
            u"From (Select a, b From t Where a = 1 Or b = 2) q\r\n"
            u"Where q.a = 1");
  // The main query's format does not reach into the derived table.
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.MainPartsFromNewLine=False"}),
            u"Select * From (Select a,\r\n"
            u"    b\r\n"
            u"  From t\r\n"
            u"  Where a = 1 Or\r\n"
            u"    b = 2) q Where q.a = 1");
}

TEST_F(FormatLayout, ExpressionSubQueryKeepsToOneRunOfLines) {
  auto in = Make<TSQLExpressionInSubQuery>();
  in->Expression.Set(Col(c(), {u"a"}));
  in->SubQuery.Set(Select(c())
                       .Items({u"b"})
                       .From(u"u")
                       .Join(Make<TSQLJoinKindInner>(), FromObject(c(), {u"v"}), Eq(u"u", u"id", u"v", u"id"))
                       .From(u"w")
                       .Where(Or(c(), Eq(u"b", u"1"), Eq(u"b", u"2")))
                       .SubSelect());
  auto s = Select(c()).Items({u"a"}).From(u"t").Where(std::move(in)).Statement();
  EXPECT_EQ(Layout(s.get()),
            u"Select a\r\n"
            u"From t\r\n"
            u"Where a In (Select b From u Inner Join v On u.id = v.id, w Where b = 1 Or\r\n"
            u"    b = 2)");
  EXPECT_EQ(Layout(s.get(), {u"ExpressionsSubQueryFormat.MainPartsFromNewLine=True"}),
            u"Select a\r\n"
            u"From t\r\n"
            u"Where a In (Select b\r\n"
            u"  From u Inner Join v On u.id = v.id, w\r\n"
            u"  Where b = 1 Or\r\n"
            u"    b = 2)");
  // A scalar sub-query in the select list, with two items: the list still breaks.
  auto scalar = Make<TSQLExpressionSelect>();
  scalar->SubQuery.Set(Select(c()).Items({u"x", u"y"}).From(u"u").SubSelect());
  auto s2 = Select(c()).Item(std::move(scalar)).From(u"t").Statement();
  EXPECT_EQ(Layout(s2.get()),
            u"Select (Select x,\r\n"
            u"    y From u)\r\n"
            u"From t");
}

TEST_F(FormatLayout, UnionMembersAndGroups) {
  // Select a From t Union All (Select b From u Union Select c From v) Order By a
  auto group = Make<TSQLSubQueryExpressions>();
  group->Add(std::move(Select(c()).Items({u"b"}).From(u"u").s));
  group->Add(std::move(Select(c()).Items({u"c"}).From(u"v").s));
  group->UnionAll = true;
  auto s = Make<TSQLSelectStatement>();
  s->Add(std::move(Select(c()).Items({u"a"}).From(u"t").s));
  s->Add(std::move(group));
  s->OrderBy.Set(OrderByClause(c(), {{u"a", false}}));
  EXPECT_EQ(Layout(s.get()),
            u"Select a\r\n"
            u"From t\r\n"
            u"Union All\r\n"
            u"(Select b\r\n"
            u"From u\r\n"
            u"Union\r\n"
            u"Select c\r\n"
            u"From v)\r\n"
            u"Order By a");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.MainPartsFromNewLine=False"}),
            u"Select a From t Union All (Select b From u Union Select c From v) Order By a");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.IndentGlobal=2", u"KeywordFormat=akfUpperCase"}),
            u"  SELECT a\r\n"
            u"  FROM t\r\n"
            u"  UNION ALL\r\n"
            u"  (SELECT b\r\n"
            u"  FROM u\r\n"
            u"  UNION\r\n"
            u"  SELECT c\r\n"
            u"  FROM v)\r\n"
            u"  ORDER BY a");
}

TEST_F(FormatLayout, CommonTableExpressionsTakeTheCTEFormat) {
  auto s = Make<TSQLSelectStatement>();
  s->With.Set(Make<TSQLWithClause>());
  for (const char16_t* name : {u"c1", u"c2"}) {
    auto item = Make<TSQLWithClauseItem>();
    item->Name.Set(Id(c(), name));
    item->ColumnNames.Set(Make<TastNodeWithList>());
    item->ColumnNames->Add(Id(c(), u"n"));
    item->ColumnNames->Add(Id(c(), u"m"));
    item->Query.Set(Select(c()).Items({u"n", u"m"}).From(u"t").SubSelect());
    s->With->Add(std::move(item));
  }
  s->Add(std::move(Select(c()).Items({u"n"}).From(u"c1").s));
  EXPECT_EQ(Layout(s.get()),
            u"With c1(n, m) As (Select n,\r\n"
            u"      m\r\n"
            u"    From t),\r\n"
            u"  c2(n, m) As (Select n,\r\n"
            u"      m\r\n"
            u"    From t)\r\n"
            u"Select n\r\n"
            u"From c1");
  EXPECT_EQ(Layout(s.get(), {u"CTESubQueryFormat.MainPartsFromNewLine=False",
                             u"CTESubQueryFormat.SelectListFormat.NewLineAfterItem=False"}),
            u"With c1(n, m) As (Select n, m From t),\r\n"
            u"  c2(n, m) As (Select n, m From t)\r\n"
            u"Select n\r\n"
            u"From c1");
  // The with clause follows the main query's part settings.
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.NewLineAfterPartKeywords=True", u"MainQueryFormat.IndentInPart=4",
                             u"CTESubQueryFormat.MainPartsFromNewLine=False",
                             u"CTESubQueryFormat.SelectListFormat.NewLineAfterItem=False"}),
            u"With\r\n"
            u"    c1(n, m) As (Select n, m From t),\r\n"
            u"    c2(n, m) As (Select n, m From t)\r\n"
            u"Select\r\n"
            u"    n\r\n"
            u"From\r\n"
            u"    c1");
}

// --- Words and names ---

TEST_F(FormatLayout, IdentifierQuotation) {
  // "order" is a reserved word of the test dialect; "Mixed" a plain name.
  // Quoting of single names under each case rule is NamesTest's; here every
  // name of a statement follows the option.
  auto s = Select(c()).Items({u"a", u"order", u"Mixed"}).From(u"t").Statement();
  provider.SetIdentCaseSens(icsNonSensitive);
  EXPECT_EQ(Layout(s.get()),
            u"Select a,\r\n"
            u"  \"order\",\r\n"
            u"  Mixed\r\n"
            u"From t");
  // A dialect that folds names to capitals: a name that gets quotes is folded first.
  provider.SetIdentCaseSens(icsSensitiveUpperCase);
  EXPECT_EQ(Layout(s.get(), {u"QuoteIdentifiers=icAll"}),
            u"Select \"A\",\r\n"
            u"  \"ORDER\",\r\n"
            u"  \"MIXED\"\r\n"
            u"From \"T\"");
}

// --- Right margin ---

TEST_F(FormatLayout, LongLinesWrapAtTheRightMargin) {
  auto s = Select(c()).Items({u"alpha", u"beta", u"gamma", u"delta", u"epsilon", u"zeta"}).From(u"t").Statement();
  const auto oneLine = u"MainQueryFormat.SelectListFormat.NewLineAfterItem=False";
  EXPECT_EQ(Layout(s.get(), {oneLine}),
            u"Select alpha, beta, gamma, delta, epsilon, zeta\r\n"
            u"From t");
  EXPECT_EQ(Layout(s.get(), {oneLine, u"RightMargin=30"}),
            u"Select alpha, beta, gamma,\r\n"
            u"  delta, epsilon, zeta\r\n"
            u"From t");
  // Continuation lines under the text after the keyword.
  EXPECT_EQ(Layout(s.get(), {oneLine, u"RightMargin=30", u"DynamicIndents=True"}),
            u"Select alpha, beta, gamma,\r\n"
            u"       delta, epsilon, zeta\r\n"
            u"From t");
  // No margin: nothing wraps.
  EXPECT_EQ(Layout(s.get(), {oneLine, u"RightMargin=0"}),
            u"Select alpha, beta, gamma, delta, epsilon, zeta\r\n"
            u"From t");
}

TEST_F(FormatLayout, CaseBreaksBeforeItsBranchesFirst) {
  auto kase = Make<TSQLExpressionCaseFunction>();
  for (auto [value, result] : {std::pair{u"1", u"'x'"}, std::pair{u"2", u"'y'"}}) {
    auto branch = Make<TSQLCaseFunctionItem>();
    branch->When.Set(Eq(u"a", value));
    branch->Then.Set(Str(c(), result));
    kase->Items.Add(std::move(branch));
  }
  kase->ElseValue.Set(Str(c(), u"'z'"));
  auto s = Select(c()).Item(std::move(kase)).From(u"t").Statement();
  EXPECT_EQ(Layout(s.get()),
            u"Select Case When a = 1 Then 'x' When a = 2 Then 'y' Else 'z' End\r\n"
            u"From t");
  // The branches continue under the Case by the part indent; the second line
  // ends exactly at the margin, which still fits.
  EXPECT_EQ(Layout(s.get(), {u"RightMargin=40"}),
            u"Select Case When a = 1 Then 'x'\r\n"
            u"    When a = 2 Then 'y' Else 'z' End\r\n"
            u"From t");
  EXPECT_EQ(Layout(s.get(), {u"RightMargin=40", u"MainQueryFormat.IndentInPart=4"}),
            u"Select Case When a = 1 Then 'x'\r\n"
            u"        When a = 2 Then 'y' Else 'z' End\r\n"
            u"From t");
}

TEST_F(FormatLayout, RowLimitsAreMainParts) {
  Select select(c());
  select.Items({u"a", u"b"}).From(u"t").OrderBy({{u"a", false}});
  select.s->SelectMode.Set(Make<TSQLSubQuerySelectModeDistinct>());
  select.s->ResultOffset.Set(Make<TSQLResultOffsetClause>());
  select.s->ResultOffset->Offset.Set(Num(c(), u"5"));
  select.s->FetchFirst.Set(Make<TSQLFetchFirstClause>());
  select.s->FetchFirst->Count.Set(Num(c(), u"10"));
  auto s = select.Statement();
  EXPECT_EQ(Layout(s.get()),
            u"Select Distinct a,\r\n"
            u"  b\r\n"
            u"From t\r\n"
            u"Order By a\r\n"
            u"Offset 5 Rows\r\n"
            u"Fetch First 10 Rows Only");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.NewLineAfterPartKeywords=True"}),
            u"Select Distinct\r\n"
            u"  a,\r\n"
            u"  b\r\n"
            u"From\r\n"
            u"  t\r\n"
            u"Order By\r\n"
            u"  a\r\n"
            u"Offset\r\n"
            u"  5 Rows\r\n"
            u"Fetch First\r\n"
            u"  10 Rows Only");
  EXPECT_EQ(Layout(s.get(), {u"MainQueryFormat.MainPartsFromNewLine=False",
                             u"MainQueryFormat.SelectListFormat.NewLineAfterItem=False"}),
            u"Select Distinct a, b From t Order By a Offset 5 Rows Fetch First 10 Rows Only");
}
