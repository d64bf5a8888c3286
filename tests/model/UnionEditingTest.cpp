// Editing the unions of a query: moves, brackets, adding and removing
// members, the dialect's refusals, the active member.
#include <functional>

#include "ModelTestSupport.h"
#include "Thrown.h"

namespace mvtest {
namespace {

const char* const kThree = "SELECT a FROM t UNION ALL SELECT b FROM u UNION SELECT c FROM v";

struct UnionEdit {
  const char* name;
  const char* sql;
  std::function<void(ModelTest&)> edit;
  const char* expected;
};

class UnionEditingTest : public ModelTest, public ::testing::WithParamInterface<UnionEdit> {};

TEST_P(UnionEditingTest, PrintsTheEditedUnion) {
  Load(GetParam().sql);
  GetParam().edit(*this);
  EXPECT_EQ(Sql(), GetParam().expected);
  // However the members moved, the flat list of SELECTs follows SQL order.
  auto order = Query()->GetUnionSubQueriesList();
  EXPECT_EQ(order, Query()->UnionSubQueries());
}

INSTANTIATE_TEST_SUITE_P(
    Moves, UnionEditingTest,
    ::testing::Values(
        // The first member has an operator of its own that prints nowhere:
        // a move hands the operators over so that the text stays valid.
        UnionEdit{"FirstToSecond", kThree, [](ModelTest& t) { t.Member(0)->MoveRightEvent(); },
                  "Select b From u UNION All Select a From t UNION Select c From v"},
        UnionEdit{"SecondToFirst", kThree, [](ModelTest& t) { t.Member(1)->MoveLeftEvent(); },
                  "Select b From u UNION All Select a From t UNION Select c From v"},
        UnionEdit{"LastLeft", kThree, [](ModelTest& t) { t.Member(2)->MoveLeftEvent(); },
                  "Select a From t UNION Select c From v UNION All Select b From u"},
        UnionEdit{"OutermostEndsDoNotMove", kThree,
                  [](ModelTest& t) {
                    t.Member(0)->MoveLeftEvent();
                    t.Member(2)->MoveRightEvent();
                  },
                  "Select a From t UNION All Select b From u UNION Select c From v"},
        UnionEdit{"IntoGroupFromTheLeft", "SELECT a FROM t UNION (SELECT b FROM u UNION ALL SELECT c FROM v)",
                  [](ModelTest& t) { t.Member(0)->MoveRightEvent(); },
                  "(Select a From t Union Select b From u UNION All Select c From v)"},
        UnionEdit{"IntoGroupFromTheRight", "(SELECT a FROM t UNION SELECT b FROM u) UNION ALL SELECT c FROM v",
                  [](ModelTest& t) { t.Member(2)->MoveLeftEvent(); },
                  "(Select a From t UNION Select b From u UNION All Select c From v)"},
        UnionEdit{"OutOfGroupItEmpties", "SELECT a FROM t UNION ALL (SELECT b FROM u) UNION SELECT c FROM v",
                  [](ModelTest& t) {
                    t.Member(1)->MoveLeftEvent();
                    EXPECT_EQ(t.Query()->Count(), 3) << "the emptied group is gone";
                  },
                  "Select a From t UNION All Select b From u UNION Select c From v"},
        UnionEdit{"OutOfGroupAtItsEnd", "SELECT a FROM t UNION (SELECT b FROM u UNION ALL SELECT c FROM v)",
                  [](ModelTest& t) { t.Member(2)->MoveRightEvent(); },
                  "Select a From t UNION (Select b From u) UNION All Select c From v"},
        UnionEdit{"EncloseInBrackets", kThree, [](ModelTest& t) { t.Member(1)->BracketsEvent(); },
                  "Select a From t UNION All (Select b From u) UNION Select c From v"},
        UnionEdit{"RemoveBrackets", "SELECT a FROM t UNION ALL (SELECT b FROM u UNION SELECT c FROM v)",
                  [](ModelTest& t) { t.Group(1)->RemoveBracketsEvent(); },
                  "Select a From t UNION All Select b From u UNION Select c From v"},
        UnionEdit{"LeftBracketTakesItsNeighbour", "SELECT a FROM t UNION ALL SELECT b FROM u UNION (SELECT c FROM v)",
                  [](ModelTest& t) { t.Group(2)->MoveLeftForwardEvent(); },
                  "Select a From t UNION All (Select b From u Union Select c From v)"},
        UnionEdit{"LeftBracketGivesItsMemberBack", "SELECT a FROM t UNION ALL (SELECT b FROM u UNION SELECT c FROM v)",
                  [](ModelTest& t) { t.Group(1)->MoveLeftBackwardEvent(); },
                  "Select a From t UNION All Select b From u UNION (Select c From v)"},
        UnionEdit{"RightBracketTakesItsNeighbour", "(SELECT a FROM t) UNION ALL SELECT b FROM u UNION SELECT c FROM v",
                  [](ModelTest& t) { t.Group(0)->MoveRightBackwardEvent(); },
                  "(Select a From t UNION All Select b From u) UNION Select c From v"},
        UnionEdit{"RightBracketLastMemberLeavesAndGroupGoes", "(SELECT a FROM t) UNION SELECT b FROM u",
                  [](ModelTest& t) {
                    t.Group(0)->MoveRightForwardEvent();
                    EXPECT_EQ(t.Query()->Count(), 2);
                  },
                  "Select a From t UNION Select b From u"},
        UnionEdit{"RemoveMember", kThree, [](ModelTest& t) { t.Member(1)->RemoveEvent(); },
                  "Select a From t UNION Select c From v"},
        UnionEdit{"RemoveLastMemberOfGroupRemovesGroup", "SELECT a FROM t UNION (SELECT b FROM u)",
                  [](ModelTest& t) { t.Member(1)->RemoveEvent(); }, "Select a From t"},
        UnionEdit{"TheOnlySelectStays", "SELECT a FROM t", [](ModelTest& t) { t.Member(0)->RemoveEvent(); },
                  "Select a From t"},
        UnionEdit{"InsertAfter", kThree, [](ModelTest& t) { t.Member(0)->InsertAfter(t.Member(2)); },
                  "Select a From t UNION Select c From v UNION All Select b From u"},
        UnionEdit{"InsertBefore", kThree, [](ModelTest& t) { t.Member(0)->InsertBefore(t.Member(2)); },
                  "Select c From v Union Select a From t UNION All Select b From u"},
        UnionEdit{"OperatorTexts", kThree,
                  [](ModelTest& t) {
                    t.Member(1)->SetUnionOperator(u"Except ALL");  // the flag stays as it was
                    t.Member(2)->SetUnionOperatorFull(u"intersect all");
                  },
                  "Select a From t Except All Select b From u INTERSECT All Select c From v"},
        UnionEdit{"InsertAtTheFront", "SELECT a FROM t",
                  [](ModelTest& t) {
                    mv::TmvUnionSubQuery* added = t.Query()->Insert(0);
                    added->AddObject(u"w", u"");
                  },
                  "Select * From w Union Select a From t"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ModelTest, GroupIndexErrorsAreListErrors) {
  Load("SELECT a FROM t");
  EXPECT_THROW(Query()->Insert(2), mv::EListError);
  EXPECT_THROW(Query()->InsertGroup(-1), mv::EListError);
  EXPECT_EQ(Sql(), "Select a From t");
}

struct Refusal {
  const char* name;
  bool TCapabilityProvider::*capability;
  const char* sql;
  std::function<void(ModelTest&)> edit;
  const char* message;
};

class UnionRefusalTest : public ModelTest, public ::testing::WithParamInterface<Refusal> {};

TEST_P(UnionRefusalTest, RefusesBeforeAnythingChanges) {
  provider.*(GetParam().capability) = false;
  Load(GetParam().sql);
  const std::string before = Sql();
  const size_t subQueries = host->SubQueries().size();
  EXPECT_EQ(U8(ThrownMessage([&] { GetParam().edit(*this); })), GetParam().message);
  EXPECT_EQ(Sql(), before);
  EXPECT_EQ(host->SubQueries().size(), subQueries);
}

const char* const kDerived = "SELECT * FROM (SELECT a FROM t) q";

INSTANTIATE_TEST_SUITE_P(
    Dialect, UnionRefusalTest,
    ::testing::Values(
        Refusal{"Unions", &TCapabilityProvider::Unions, "SELECT a FROM t",
                [](ModelTest& t) { t.Query()->Add(); },
                "The server doesn't support unions."},
        Refusal{"UnionsInsert", &TCapabilityProvider::Unions, "SELECT a FROM t",
                [](ModelTest& t) { t.Query()->Insert(0); },
                "The server doesn't support unions."},
        Refusal{"Brackets", &TCapabilityProvider::BracketsInUnions, "SELECT a FROM t",
                [](ModelTest& t) { t.Query()->FirstSelect()->BracketsEvent(); },
                "The server doesn't support brackets in unions."},
        Refusal{"BracketsInNestedGroup", &TCapabilityProvider::SubQueryBracketsInUnions,
                "SELECT a FROM t UNION (SELECT b FROM u)",
                [](ModelTest& t) {
                  t.Group(1)->AddGroup();
                },
                "The server doesn't support brackets in unions in sub-queries."},
        Refusal{"SubQueryUnions", &TCapabilityProvider::SubQueryUnions, kDerived,
                [](ModelTest& t) { t.Derived()->Add(); }, "The server doesn't support unions in sub-queries."},
        Refusal{"SubQueryBrackets", &TCapabilityProvider::SubQueryBracketsInUnions, kDerived,
                [](ModelTest& t) { t.Derived()->AddGroup(); },
                "The server doesn't support brackets in unions in sub-queries."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ModelTest, ActiveMemberFollowsDeletionAndHostVeto) {
  Load(kThree);
  int changes = 0;
  host->OnActiveUnionSubQueryChanged = [&](mv::TmvQueryModelHost*, mv::TmvSubQuery*) { ++changes; };
  mv::TmvUnionSubQuery *a = Member(0), *b = Member(1), *c = Member(2);
  EXPECT_EQ(Query()->ActiveUnionSubQuery(), a);
  ASSERT_TRUE(Query()->SetActiveUnionSubquery(b));
  b->RemoveEvent();
  EXPECT_EQ(Query()->ActiveUnionSubQuery(), c) << "the next one";
  c->RemoveEvent();
  EXPECT_EQ(Query()->ActiveUnionSubQuery(), a) << "else the one before";
  EXPECT_EQ(changes, 3);
  Load(kThree);
  host->OnActiveUnionSubQueryChanging = [](mv::TmvQueryModelHost*, mv::TmvSubQuery*, bool& allow) { allow = false; };
  EXPECT_FALSE(Query()->SetActiveUnionSubquery(Member(2)));
  EXPECT_EQ(Query()->ActiveUnionSubQuery(), Member(0));
  host->SetSettingSql(true);  // while text is loaded the veto is not asked
  EXPECT_TRUE(Query()->SetActiveUnionSubquery(Member(2)));
  host->SetSettingSql(false);
}

TEST_F(ModelTest, NewMemberBecomesActiveAndUniqueQueryNamesRestartOnNewText) {
  Load("SELECT a FROM t");
  mv::TmvUnionSubQuery* added = First()->NewEvent();
  EXPECT_EQ(Query()->ActiveUnionSubQuery(), added);
  EXPECT_EQ(U8(host->CreateUniqueQueryNameStr()), "Query1");
  added->AddObject(u"Query2", u"");  // a name taken as an alias is skipped
  EXPECT_EQ(U8(host->CreateUniqueQueryNameStr()), "Query3");
  Load("SELECT a FROM t");
  EXPECT_EQ(U8(host->CreateUniqueQueryNameStr()), "Query1");
}

}  // namespace
}  // namespace mvtest

namespace mvtest {
namespace {

// The entries of a menu and its sub-menus, "-" for lines, "(off)" where disabled.
std::vector<std::string> Entries(const mv::TmvMenu& menu, const std::string& indent = "") {
  std::vector<std::string> lines;
  for (const mv::TmvMenuItem& item : menu) {
    lines.push_back(indent + U8(item.Caption) + (item.Enabled ? "" : " (off)"));
    for (const std::string& sub : Entries(item.SubItems, indent + "  ")) lines.push_back(sub);
  }
  return lines;
}

TEST_F(ModelTest, TheMenusOfASelectsPage) {
  Load("SELECT a FROM t UNION SELECT b FROM u");
  mv::TmvUnionSubQuery* first = Query()->UnionSubQueries()[0];
  // Without controls the work area's menu is asked with none.
  EXPECT_EQ(Entries(first->GetPopupMenu(nullptr)),
            (std::vector<std::string>{"Add Object... (off)", "Add Derived Table", "Add CTE", "  Add New CTE", "Union",
                                      "  New Union Sub-Query",
                                      "  Copy to New Union Sub-Query", "  Enclose in Brackets", "  Remove",
                                      "Properties..."}));
  // The last member of the union cannot be removed.
  Load("SELECT a FROM t");
  EXPECT_EQ(Entries(Query()->UnionSubQueries()[0]->GetPopupMenu(nullptr)).at(8), "  Remove (off)");
}

}  // namespace
}  // namespace mvtest
