// The reorder of the FROM clause: one row per case with the dialect's
// answers, the text loaded, the edit made in one update, and the FROM clause
// that comes out.
#include <functional>

#include "ModelTestSupport.h"
#include "model/Links.h"
#include "tree/FromClause.h"

namespace {

using namespace mvtest;

class ReorderTest;

struct ReorderCase {
  const char* Name;
  bool Binary, RightJoin;
  const char* Sql;
  std::function<void(ReorderTest&)> Edit;
  const char* From;
};

// Lower case with single blanks: the case of keywords is the builder's business.
std::string Normal(const std::string& text) {
  std::string out;
  for (char c : text) {
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (std::isspace(static_cast<unsigned char>(lower))) {
      if (!out.empty() && out.back() != ' ') out += ' ';
    } else {
      out += lower;
    }
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

class ReorderTest : public ModelTest, public ::testing::WithParamInterface<ReorderCase> {
 public:
  ReorderTest() {
    for (const char16_t* name : {u"a", u"b", u"c", u"d"}) AddTable(name, {u"x", u"y", u"z"});
    host->SetSyntaxProvider(&reorderProvider);
  }
  ~ReorderTest() override { host->SetSyntaxProvider(&provider); }

  // The datasource of the first SELECT named so in the query.
  mv::TmvDatasource* T(const char* name) {
    mv::TmvDatasourceList all;
    First()->Datasources()->GetDatasources(all);
    for (mv::TmvDatasource* datasource : all)
      if (U8(datasource->GetNameInQuery()) == name) return datasource;
    ADD_FAILURE() << "no datasource " << name;
    return nullptr;
  }
  // The first bracket of the first SELECT.
  mv::TmvDatasourceGroup* Bracket() {
    mv::TmvDatasourceGroup* top = First()->Datasources();
    for (int i = 0; i < top->Count(); ++i)
      if (auto* nested = mv::TmvCast<mv::TmvDatasourceGroup>(top->Items(i))) return nested;
    ADD_FAILURE() << "no bracket";
    return top;
  }
  // Removes the first link of the group, and asks for the reorder.
  void Unlink(mv::TmvDatasourceGroup* group) {
    ASSERT_GT(group->LinksCount(), 0);
    group->DestroyChild(group->Links(0));
    group->NotifyReorderNeeded();
  }
  void Link(const char* from, const char* to, const char* field) {
    First()->AddLink(T(from), U16(field), U16(field), T(to));
  }
  std::string From() { return Normal(U8(First()->GetFromClauseString())); }

  TCapabilityProvider reorderProvider;
};

const ReorderCase kCases[] = {
    {"LinkBetweenUnjoinedTablesMakesAJoin", false, true, "SELECT * FROM a, b",
     [](ReorderTest& t) { t.Link("a", "b", "x"); }, "a inner join b on a.x = b.x"},
    {"TwoJoinedPairsAreSeparatedByAComma", false, true, "SELECT * FROM a, c, b, d",
     [](ReorderTest& t) {
       t.Link("a", "b", "x");
       t.Link("c", "d", "y");
     },
     "a inner join b on a.x = b.x, c inner join d on c.y = d.y"},
    {"AJoinToAnEarlierEntryMovesTheLaterOne", false, true, "SELECT * FROM a, b, c",
     [](ReorderTest& t) { t.Link("c", "a", "x"); }, "a inner join c on c.x = a.x, b"},
    {"TheOnlyBracketDissolves", false, true, "SELECT * FROM (a CROSS JOIN b)",
     [](ReorderTest& t) { t.First()->Datasources()->NotifyReorderNeeded(); }, "a cross join b"},
    {"ABracketWithoutJoinInsideDissolves", false, true, "SELECT * FROM (a INNER JOIN b ON a.x = b.x), c",
     [](ReorderTest& t) { t.Unlink(t.Bracket()); }, "a, b, c"},
    {"EntriesNotJoinedInsideABracketLeaveIt", false, true,
     "SELECT * FROM a INNER JOIN (b INNER JOIN c ON b.y = c.y) ON a.x = b.x",
     [](ReorderTest& t) { t.Unlink(t.Bracket()); }, "a inner join b on a.x = b.x, c"},
    {"AJoinedBracketStays", false, true, "SELECT * FROM a INNER JOIN (b INNER JOIN c ON b.y = c.y) ON a.x = b.x",
     [](ReorderTest& t) { t.First()->Datasources()->NotifyReorderNeeded(); },
     "a inner join (b inner join c on b.y = c.y) on a.x = b.x"},
    {"BinaryJoinsNestLeftDeep", true, true, "SELECT * FROM a, b, c, d",
     [](ReorderTest& t) {
       t.Link("a", "b", "x");
       t.Link("b", "c", "y");
       t.Link("c", "d", "z");
     },
     "((a inner join b on a.x = b.x) inner join c on b.y = c.y) inner join d on c.z = d.z"},
    {"WithoutRightJoinsTheEntryMovesForALeftJoin", false, false, "SELECT * FROM a INNER JOIN b ON a.x = b.x",
     [](ReorderTest& t) { t.T("b")->SetJoinKindClass(&mv::TSQLJoinKindRight::StaticClass()); },
     "b left join a on a.x = b.x"},
    {"ARightJoinStaysWhereTheDialectHasIt", false, true, "SELECT * FROM a INNER JOIN b ON a.x = b.x",
     [](ReorderTest& t) { t.T("b")->SetJoinKindClass(&mv::TSQLJoinKindRight::StaticClass()); },
     "a right join b on a.x = b.x"},
    {"DeletingTheMiddleOfAChainLeavesTwoParts", false, true,
     "SELECT * FROM a INNER JOIN b ON a.x = b.x INNER JOIN c ON b.y = c.y",
     [](ReorderTest& t) { t.First()->Datasources()->Remove(t.T("b")); }, "a, c"},
};

TEST_P(ReorderTest, GivesTheFromClause) {
  const ReorderCase& row = GetParam();
  reorderProvider.ForceBinaryJoins = row.Binary;
  reorderProvider.RightJoin = row.RightJoin;
  Load(row.Sql);
  {
    mv::TmvUpdateScope update(Query());
    row.Edit(*this);
  }
  EXPECT_EQ(From(), row.From);
  // What the reorder made is an order it leaves as it is.
  mv::TmvDatasourceGroup* top = First()->Datasources();
  EXPECT_FALSE(top->IsReorderRequired());
  for (int i = 0; i < top->Count(); ++i) {
    auto* nested = mv::TmvCast<mv::TmvDatasourceGroup>(top->Items(i));
    if (nested) {
      EXPECT_FALSE(nested->IsReorderRequired());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, ReorderTest, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<ReorderCase>& info) { return info.param.Name; });

// A new where-link that repeats a join takes its outer side, marked as the
// dialect marks it; the other way round, the mark goes on the other side.
class WhereLinkFixupTest : public ReorderTest {};

TEST_F(WhereLinkFixupTest, NewWhereLinkTakesTheSidesOfTheJoinItRepeats) {
  reorderProvider.OracleJoins = true;
  Load("SELECT * FROM a LEFT JOIN b ON a.x = b.x");
  mv::TmvLink* repeated = First()->AddLink(T("b"), u"y", u"y", T("a"), mv::lpWhere);
  ASSERT_NE(repeated, nullptr);
  EXPECT_FALSE(repeated->IsNew());
  EXPECT_EQ(repeated->LeftDatasource(), T("a"));
  EXPECT_EQ(repeated->LeftType(), mv::ltOuter);
  EXPECT_EQ(repeated->RightType(), mv::ltInner);
  EXPECT_EQ(From(), "a left join b on a.x = b.x");
  EXPECT_EQ(Normal(U8(First()->GetWhereClauseString())), "b.y(+) = a.y");
}

// Many links changed in one update: the group reorders once, at its end.
TEST_F(ModelTest, ManyLinksInOneUpdateCostOneReorder) {
  for (const char16_t* name : {u"a", u"b", u"c", u"d"}) AddTable(name, {u"x", u"y"});
  Load("SELECT * FROM a, b, c, d");
  mv::TmvDatasourceGroup* top = First()->Datasources();
  auto at = [top](int i) { return mv::TmvCast<mv::TmvDatasource>(top->Items(i)); };
  const int before = mv::TmvDatasourceGroup::ReorderCount();
  {
    mv::TmvUpdateScope update(Query());
    mv::TmvLink* first = First()->AddLink(at(0), u"x", u"x", at(1));
    First()->AddLink(at(1), u"y", u"y", at(2));
    First()->AddLink(at(2), u"x", u"x", at(3));
    first->Parent()->DestroyChild(first);
    First()->AddLink(at(3), u"y", u"y", at(0));
    EXPECT_EQ(mv::TmvDatasourceGroup::ReorderCount(), before);
  }
  EXPECT_EQ(mv::TmvDatasourceGroup::ReorderCount(), before + 1);
  EXPECT_EQ(Normal(U8(First()->GetFromClauseString())),
            "a inner join d on d.y = a.y inner join c on c.x = d.x inner join b on b.y = c.y");
}

}  // namespace
