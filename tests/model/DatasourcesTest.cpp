// Datasources of a SELECT: adding them, their aliases, names and captions,
// their fields and checks, and the host's say in adding and deleting.
#include "ModelTestSupport.h"
#include "Thrown.h"
#include "model/ModelMessages.h"

namespace mvtest {
namespace {

using mv::TmvDatasource;
using mv::TmvUnionSubQuery;

TEST_F(ModelTest, SameTableAddedAgainGetsNumberedAliases) {
  Load("SELECT * FROM x");
  for (int i = 0; i < 3; ++i) First()->AddObject(u"t", u"");
  EXPECT_EQ(Sql(), "Select * From x, t, t t1, t t2");
  // An alias that differs only by case is taken too.
  Load("SELECT * FROM Orders o");
  EXPECT_FALSE(First()->IsUniqueAlias(u"O"));
  First()->AddObject(u"O", u"");
  EXPECT_EQ(Sql(), "Select * From Orders o, O O1");
}

TEST_F(ModelTest, DerivedTablesAreNamedQueryOrByTheRunningCounter) {
  Load("SELECT * FROM x");
  EXPECT_EQ(U8(First()->AddSubQueryEvent()->GetAlias()), "Query1");
  EXPECT_EQ(U8(First()->AddFromExpression(u"(SELECT a FROM t)", u"")->GetAlias()), "Query");
  EXPECT_EQ(U8(First()->AddFromExpression(u"(SELECT a FROM t)", u"")->GetAlias()), "Query2");
  EXPECT_EQ(Sql(), "Select * From x, (Select *) Query1, (Select a From t) Query, (Select a From t) Query2");
  EXPECT_EQ(host->SubQueries().size(), 4u);
}

struct AddingError {
  const char* name;
  std::function<void(TmvUnionSubQuery*)> add;
  const char* message;
};

class AddingErrorTest : public ModelTest, public ::testing::WithParamInterface<AddingError> {};

TEST_P(AddingErrorTest, RaisesAndAddsNothing) {
  Load("SELECT * FROM x");
  if (std::string(GetParam().name) == "NoProvider") host->SetSyntaxProvider(nullptr);
  EXPECT_EQ(U8(ThrownMessage([&] { GetParam().add(First()); })), GetParam().message);
  EXPECT_EQ(First()->Datasources()->Count(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Adding, AddingErrorTest,
    ::testing::Values(
        AddingError{"NoProvider", [](TmvUnionSubQuery* s) { s->AddObject(u"t", u""); },
                    "Syntax provider is not specified"},
        AddingError{"BadObjectName", [](TmvUnionSubQuery* s) { s->AddObject(u"", u""); },
                    "Invalid object name"},
        AddingError{"BadFromExpression", [](TmvUnionSubQuery* s) { s->AddFromExpression(u"(((", u""); },
                    "Invalid FROM object expression"},
        AddingError{"BadProcedureName", [](TmvUnionSubQuery* s) { s->AddStoredProc(u"p q r", u""); },
                    "Invalid object name"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ModelTest, HostMovesChangesOrRefusesANewDatasource) {
  Load("SELECT * FROM x");
  int after = 0;
  host->OnBeforeAddDatasource = [](mv::TmvQueryModelHost*, TmvUnionSubQuery*, mv::TmvPoint& position, bool& allow,
                                   mv::TSQLFromSource* node) {
    allow = node->GetSimpleExpression(node->SQLContext()->SQLBuilderExpression()) != u"refused";
    position = {40, 30};
  };
  host->OnAfterAddDatasource = [&](mv::TmvQueryModelHost*, TmvUnionSubQuery*, TmvDatasource*) { ++after; };
  EXPECT_EQ(First()->AddObject(u"refused", u""), nullptr);
  TmvDatasource* added = First()->AddObjectAt(u"t", {5, 5}, u"");
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added->Left(), 40);
  EXPECT_EQ(added->Top(), 30);
  EXPECT_EQ(after, 1);
  EXPECT_EQ(Sql(), "Select * From x, t");
}

TEST_F(ModelTest, HostVetoKeepsADatasourceAndDeletingOneDropsWhatUsesIt) {
  Load("SELECT a.x, b.y FROM a, b WHERE b.y > 1");
  int asked = 0;
  bool allow = false;
  host->OnBeforeDeleteDatasource = [&](mv::TmvQueryModelHost*, TmvUnionSubQuery*, bool& answer, TmvDatasource*) {
    ++asked;
    answer = allow;
  };
  auto* b = First()->Datasources()->Items(1);
  EXPECT_FALSE(First()->Datasources()->Remove(b));
  EXPECT_EQ(Sql(), "Select a.x, b.y From a, b Where b.y > 1");
  allow = true;
  EXPECT_TRUE(First()->Datasources()->Remove(b));
  EXPECT_EQ(asked, 2) << "asked again after a refusal, once per request";
  EXPECT_EQ(Sql(), "Select a.x From a");
}

TEST_F(ModelTest, AliasChangeReachesEveryColumnPrefix) {
  Load("SELECT o.id FROM orders o WHERE o.id > 1 ORDER BY o.id");
  auto* orders = mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(0));
  orders->SetAlias(u"x");
  EXPECT_EQ(Sql(), "Select x.id From orders x Where x.id > 1 Order By x.id");
  orders->SetAlias(u"");
  EXPECT_EQ(Sql(), "Select orders.id From orders Where orders.id > 1 Order By orders.id");
  EXPECT_EQ(U8(orders->GetNameInQuery()), "orders");
}

TEST_F(ModelTest, CaptionsCountTheCheckedFields) {
  AddTable(u"Orders", {u"id", u"customer", u"total"});
  host->Options.TableChecksCountInCaption = true;
  struct Case {
    const char* sql;
    const char* caption;
  } cases[] = {
      {"SELECT Orders.id, Orders.total FROM Orders", "(2)Orders"},
      {"SELECT Orders.* FROM Orders", "(*)Orders"},
      {"SELECT Orders.*, Orders.id FROM Orders", "(*1)Orders"},
      {"SELECT 1 FROM Orders", "Orders"},
      {"SELECT o.id FROM Orders o", "(1)o (Orders)"},
  };
  for (const Case& c : cases) {
    Load(c.sql);
    auto* orders = mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(0));
    orders->UpdateChecks();
    EXPECT_EQ(U8(orders->Caption()), c.caption) << c.sql;
  }
  host->OnCustomizeDatasourceCaption = [](mv::TmvQueryModelHost*, TmvUnionSubQuery*, TmvDatasource*,
                                          mv::WideString& caption) { caption += u"!"; };
  mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(0))->UpdateCaption();
  EXPECT_EQ(U8(mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(0))->Caption()), "(1)o (Orders)!");
}

TEST_F(ModelTest, FieldsFollowTheOptionsKeysFirst) {
  AddTable(u"Orders", {u"id", u"total", u"Customer", u"amount"});
  struct Case {
    mv::TmvFieldsListSortType sort;
    bool keysFirst;
    const char* order;
  } cases[] = {
      {mv::flsNone, true, "id total Customer amount"},
      {mv::flsName, false, "amount Customer id total"},
      {mv::flsName, true, "id amount Customer total"},
  };
  for (const Case& c : cases) {
    host->Options.SortType = c.sort;
    host->Options.KeyFieldsFirst = c.keysFirst;
    Load("SELECT * FROM Orders");
    auto* fields = mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(0))->GetFields();
    std::string order;
    for (int i = 0; i < fields->Count(); ++i) order += (i ? " " : "") + U8(fields->Items(i)->NameStr());
    EXPECT_EQ(order, c.order);
  }
}

TEST_F(ModelTest, ProcedureCallTextComesFromTheHost) {
  Load("SELECT * FROM x");
  EXPECT_EQ(First()->AddStoredProc(u"p", u""), nullptr) << "no answer: the dialog would ask, headless it is a cancel";
  host->OnQueryProcedureParameters = [](mv::TmvQueryModelHost*, const mv::WideString& name, mv::TmvMetadataProcedure*,
                                        mv::WideString& call, bool& abort) {
    abort = name == u"stop";
    call = name + u"(1, 2)";
  };
  EXPECT_EQ(First()->AddStoredProc(u"stop", u""), nullptr);
  ASSERT_NE(First()->AddStoredProc(u"p", u"r"), nullptr);
  EXPECT_EQ(Sql(), "Select * From x, p(1, 2) r");
}

TEST_F(ModelTest, ConvertingADatasourceMovesItIntoADerivedTable) {
  Load("SELECT o.id FROM orders o WHERE o.id > 1");
  auto* orders = mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(0));
  mv::TmvDatasourceQuery* derived = First()->ConvertDatasourceToDerivedTable(orders);
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(Sql(), "Select Query1.id From (Select * From orders o) Query1 Where Query1.id > 1");
}

TEST_F(ModelTest, MenusAreData) {
  AddTable(u"Orders", {u"id"});
  Load("SELECT * FROM Orders, (SELECT 1 FROM x) q");
  mv::TmvMenu menu = mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(0))->GetPopupMenu(nullptr);
  std::vector<std::string> keys;
  for (const auto& item : menu) keys.push_back(U8(item.Key));
  EXPECT_EQ(keys, (std::vector<std::string>{"mvQBCheckAll", "mvQBUncheckAll", "-", "mvQBRemove", "mvQBAddLinkedObject",
                                            "mvQBEdit", "mvQBAftofitHeight"}));
  const mv::TmvMenuItem& linked = menu[4];
  ASSERT_EQ(linked.SubItems.size(), 1u);
  EXPECT_EQ(U8(linked.SubItems[0].Caption), "No linked objects");
  EXPECT_FALSE(linked.SubItems[0].Enabled);
  menu = mv::TmvCast<TmvDatasource>(First()->Datasources()->Items(1))->GetPopupMenu(nullptr);
  menu[4].Action();  // mvQBRemove of the derived table
  EXPECT_EQ(Sql(), "Select * From Orders");
}

}  // namespace
}  // namespace mvtest
