// Sub-queries: derived tables, sub-selects in expressions and common table
// expressions as parts of the model, their captions, and the text that
// follows their edits.
#include "ModelTestSupport.h"
#include "Thrown.h"
#include "model/SelectList.h"
#include "model/SubSelectProxy.h"
#include "tree/SelectClauses.h"

namespace mvtest {
namespace {

using mv::TmvSubQuery;

// Answers the model's questions as a user would.
class TUser : public mv::ImvUserInteraction {
 public:
  mv::WideString answer;
  bool confirm = true;
  bool InputBox(const mv::WideString&, const mv::WideString&, mv::WideString& value) override {
    value = answer;
    return true;
  }
  bool Confirm(const mv::WideString&) override { return confirm; }
};

TEST_F(ModelTest, CaptionsTellWhatASubQueryIs) {
  Load("SELECT a FROM (SELECT a FROM t) q WHERE a IN (SELECT b FROM u WHERE b > 1000000)");
  First()->Datasources();
  ASSERT_EQ(host->SubQueries().size(), 3u);
  EXPECT_EQ(U8(Query()->GetCaption()), "Main");
  EXPECT_EQ(U8(Derived()->GetCaption()), "q");
  TmvSubQuery* inWhere = host->SubQueries()[2];
  EXPECT_EQ(U8(inWhere->GetCaption()), "SEL b FRM u Where b > 100 ...");
  Query()->AddNewCTE(u"SELECT 1 FROM x", u"c");
  EXPECT_EQ(U8(host->SubQueries().back()->GetCaption()), "CTE: c");
  host->OnGetTabHeaderText = [](mv::TmvQueryModelHost*, TmvSubQuery*, mv::WideString& caption) { caption += u"*"; };
  EXPECT_EQ(U8(Query()->GetCaption()), "Main*");
}

TEST_F(ModelTest, EditsInsideADerivedTableReachTheOuterText) {
  Load("SELECT q.a FROM (SELECT a FROM t) q");
  TmvSubQuery* inner = Derived();
  int updates = 0;
  host->OnSQLUpdated = [&](mv::TmvQueryModelHost*) { ++updates; };
  inner->FirstSelect()->AddObject(u"u", u"");
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(Sql(), "Select q.a From (Select a From t, u) q");
  // The outer datasource's fields follow the inner output columns.
  inner->FirstSelect()->SetSql(u"SELECT a, b, c FROM t");
  EXPECT_EQ(inner->Fields()->Count(), 3);
  auto* table = mv::TmvCast<mv::TmvDatasource>(First()->Datasources()->Items(0));
  EXPECT_EQ(table->GetFields()->Count(), 3);
  EXPECT_EQ(Sql(), "Select q.a From (Select a, b, c From t) q");
  inner->SetSql(u"SELECT a FROM v UNION SELECT y FROM w");
  EXPECT_EQ(Sql(), "Select q.a From (Select a From v UNION Select y From w) q");
}

TEST_F(ModelTest, ColumnsThatLeaveASubQueryTakeTheirUsesAlong) {
  struct Case {
    const char* sql;
    const char16_t* inner;
    const char* expected;
  } cases[] = {
      {"SELECT q.a, q.b FROM (SELECT a, b FROM t) q WHERE q.a > 1 AND q.b < 2", u"SELECT a FROM t",
       "Select q.a From (Select a From t) q Where q.a > 1"},
      {"SELECT q.a FROM (SELECT a, b FROM t) q WHERE q.b < 2 OR q.a = 0 GROUP BY q.a, q.b", u"SELECT a, c FROM t",
       "Select q.a From (Select a, c From t) q Where q.a = 0 Group By q.a"},
      {"SELECT q.a FROM (SELECT a, b FROM t) q", u"SELECT b, a FROM t", "Select q.a From (Select b, a From t) q"},
  };
  for (const Case& c : cases) {
    Load(c.sql);
    Derived()->FirstSelect()->SetSql(c.inner);
    EXPECT_EQ(Sql(), c.expected) << c.sql;
  }
  // The same for an object named by a common table expression.
  Load("SELECT c.a, c.b FROM x");
  Query()->AddNewCTE(u"SELECT a, b FROM t", u"c");
  mv::TmvDatasource* use = First()->AddObject(u"c", u"");
  ASSERT_NE(use, nullptr);
  First()->SetSql(u"SELECT c.a, c.b FROM x, c");
  mv::TmvCast<mv::TmvDataSourceObject>(First()->Datasources()->Items(1))->CteSubQuery()->FirstSelect()->SetSql(u"SELECT b FROM t");
  EXPECT_EQ(Sql(), "With c As (Select b From t) Select c.b From x, c");
}

TEST_F(ModelTest, TwoSubSelectsInOneExpressionAreTwoSubQueries) {
  Load("SELECT a FROM t WHERE (SELECT 1 FROM u) = (SELECT 2 FROM v)");
  EXPECT_EQ(host->SubQueries().size(), 3u);
  // Both hang on the row of the left side, one in its expression, one in its condition.
  EXPECT_EQ(First()->SelectList()->Items(1)->SubQueryProxies().size(), 2u);
  host->SubQueries()[2]->FirstSelect()->AddObject(u"w", u"");
  EXPECT_EQ(Sql(), "Select a From t Where (Select 1 From u) = (Select 2 From v, w)");
}

TEST_F(ModelTest, CommonTableExpressionsAreAddedNamedAndUsed) {
  Load("SELECT * FROM x");
  Query()->AddNewCTE(u"SELECT a FROM t", u"c");
  auto* name = Query()->GetSubQueryAST()->With->Items.Item(0);
  EXPECT_FALSE(Query()->IsUniqueCTEName(mv::TmvCast<mv::TSQLWithClauseItem>(name)->Name.get()));
  EXPECT_EQ(U8(Query()->CreateUniqueCTEName(u"c")), "c1");
  EXPECT_EQ(U8(Query()->CreateUniqueCTEName(u"d")), "d");
  Query()->InsertNewCTE(0, u"", u"early");
  auto* use = mv::TmvCast<mv::TmvDataSourceObject>(First()->AddObject(u"c", u""));
  ASSERT_NE(use, nullptr);
  TmvSubQuery* cte = use->CteSubQuery();
  ASSERT_NE(cte, nullptr);
  EXPECT_EQ(cte->SubQueryCTEIndex(), 1);
  EXPECT_EQ(Sql(), "With early As (Select *), c As (Select a From t) Select * From x, c");
  // Its fields are the expression's output columns, and follow them.
  cte->FirstSelect()->SetSql(u"SELECT a, b FROM t");
  EXPECT_EQ(use->GetFields()->Count(), 2);
}

TEST_F(ModelTest, RenamingACommonTableExpressionChecksTheNamesInUse) {
  Load("SELECT * FROM x d");
  Query()->AddNewCTE(u"SELECT a FROM t", u"c");
  Query()->AddNewCTE(u"SELECT b FROM u", u"e");
  auto* use = mv::TmvCast<mv::TmvDataSourceObject>(First()->AddObject(u"c", u""));
  TmvSubQuery* cte = use->CteSubQuery();
  auto name = [&](const char16_t* text) { return host->SQLContext()->ParseIdentifierQuoteIfNeed(text); };
  EXPECT_FALSE(cte->CanRenameCTETo(name(u"e").get())) << "another expression's name";
  EXPECT_FALSE(cte->CanRenameCTETo(name(u"D").get())) << "an alias of the SELECT that uses it unaliased";
  use->SetAlias(u"cc");
  EXPECT_TRUE(cte->CanRenameCTETo(name(u"D").get())) << "the use carries an alias";
  cte->RenameCTE(name(u"D").get());
  EXPECT_EQ(Sql(), "With D As (Select a From t), e As (Select b From u) Select * From x d, D cc");

  TUser user;
  host->SetUserInteraction(&user);
  user.answer = u"";
  EXPECT_EQ(U8(ThrownMessage([&] { cte->RenameCTEEvent(); })), "New common table expression name cannot be empty");
  user.answer = u"e";
  EXPECT_EQ(U8(ThrownMessage([&] { cte->RenameCTEEvent(); })),
            "Name e conflicts with names already used in the query");
  user.answer = u"g";
  cte->RenameCTEEvent();
  EXPECT_EQ(Sql(), "With g As (Select a From t), e As (Select b From u) Select * From x d, g cc");
}

TEST_F(ModelTest, RemovingACommonTableExpressionRemovesTheObjectsLoadedFromIt) {
  Load("SELECT * FROM x");
  Query()->AddNewCTE(u"SELECT a FROM t", u"c");
  TmvSubQuery* cte = mv::TmvCast<mv::TmvDataSourceObject>(First()->AddObject(u"c", u""))->CteSubQuery();
  TUser user;
  host->SetUserInteraction(&user);
  user.confirm = false;
  cte->RemoveCTEEvent();
  EXPECT_EQ(host->SubQueries().size(), 2u);
  user.confirm = true;
  mv::TmvMenu menu = cte->GetPopupMenu(nullptr);
  ASSERT_EQ(menu.size(), 2u);
  EXPECT_EQ(U8(menu[1].Caption), "Rename CTE...");
  menu[0].Action();  // "Delete CTE"
  EXPECT_EQ(host->SubQueries().size(), 1u);
  EXPECT_EQ(Sql(), "Select * From x");
}

TEST_F(ModelTest, SelectsUseTheExpressionsDefinedBeforeThem) {
  Load("SELECT * FROM x");
  for (auto [text, name] : {std::pair{u"SELECT a FROM t", u"c"}, {u"SELECT b FROM u UNION SELECT b FROM w", u"d"},
                            {u"SELECT c FROM v", u"e"}})
    Query()->AddNewCTE(text, name);
  auto cte = [&](const char* caption) {
    for (TmvSubQuery* subQuery : host->SubQueries())
      if (U8(subQuery->GetCaption()) == caption) return subQuery;
    return static_cast<TmvSubQuery*>(nullptr);
  };
  auto names = [](const std::vector<mv::TSQLWithClauseItem*>& items) {
    std::string text;
    for (auto* item : items) text += U8(item->Name->Token);
    return text;
  };
  TmvSubQuery* d = cte("CTE: d");
  EXPECT_EQ(names(First()->GetUsableCTEs()), "cde");
  EXPECT_EQ(names(d->FirstSelect()->GetUsableCTEs()), "c") << "its first SELECT cannot use it";
  EXPECT_EQ(names(d->UnionSubQueries()[1]->GetUsableCTEs()), "cd") << "a recursive member can";
  provider.RecursiveCTE = false;
  EXPECT_EQ(names(d->UnionSubQueries()[1]->GetUsableCTEs()), "c");

  auto* c = mv::TmvCast<mv::TSQLWithClauseItem>(Query()->GetSubQueryAST()->With->Items.Item(0));
  First()->AddExistingCTEEvent(c);
  First()->AddExistingCTEEvent(c);
  d->FirstSelect()->AddNewCTEEvent();
  EXPECT_EQ(Sql(),
            "With c As (Select a From t), Query1 As (Select *), d As (Select b From u, Query1 UNION Select b From w), "
            "e As (Select c From v) Select * From x, c, c c1");
}

TEST_F(ModelTest, FieldsLoadedLaterReachTheDatasource) {
  mv::TmvMetadataTable* orders = AddTable(u"Orders", {});
  Load("SELECT Orders.id FROM Orders");
  auto* datasource = mv::TmvCast<mv::TmvDatasource>(First()->Datasources()->Items(0));
  EXPECT_EQ(datasource->GetFields()->Count(), 0);
  EXPECT_TRUE(datasource->CheckedFields().empty());
  orders->GetFields()->AddField(u"id");
  orders->GetFields()->AddField(u"total");
  datasource->RefreshMetadata();
  EXPECT_EQ(datasource->GetFields()->Count(), 2);
  ASSERT_EQ(datasource->CheckedFields().size(), 1u);
  EXPECT_EQ(U8(datasource->CheckedFields()[0]->NameStr()), "id");
}

}  // namespace
}  // namespace mvtest
