// Links: ON clauses split into links and printed back, where-links taken
// out of WHERE and printed first, outer sides in the three ways dialects
// write them, the AddLink family, errors, and links going with datasources.
#include <algorithm>
#include <cctype>

#include "ModelTestSupport.h"
#include "Thrown.h"
#include "model/Links.h"
#include "model/ModelMessages.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"

namespace mvtest {
namespace {

using namespace mv;

class LinksTest : public ModelTest {
 protected:
  LinksTest() { host->SetSyntaxProvider(&joins); }
  ~LinksTest() override { host->SetSyntaxProvider(&provider); }

 public:
  TmvDatasourceGroup* From() const { return First()->Datasources(); }
  TmvDatasource* Source(int index) const { return TmvCast<TmvDatasource>(From()->Items(index)); }
  std::vector<TmvLink*> AllLinks() const {
    std::vector<TmvLink*> links;
    From()->GetLinksRecursive(links);
    return links;
  }
  static std::string Name(TmvDatasourceBase* datasource) {
    auto* source = TmvCast<TmvDatasource>(datasource);
    return source ? U8(source->GetNameInQuery()) : datasource ? "(group)" : "-";
  }
  // One line per link: expression, place, simple or not, ends with their
  // outer marks, owner.
  std::vector<std::string> Links() const {
    std::vector<std::string> lines;
    for (TmvLink* link : AllLinks()) {
      std::string line = U8(link->GetLinkExpressionString());
      line += link->LinkPlace() == lpWhere ? " where" : " on";
      if (link->IsSimple()) line += " simple";
      line += " " + Name(link->LeftDatasource()) + (link->LeftType() == ltOuter ? "+" : "");
      line += ">" + Name(link->RightDatasource()) + (link->RightType() == ltOuter ? "+" : "");
      line += " @" + Name(link->JoinOwner());
      lines.push_back(line);
    }
    return lines;
  }
  // A condition bound to the first SELECT, for hand-made marks.
  TmvOwned<TSQLExpressionItem> Condition(const char16_t* text) {
    TmvOwned<TSQLExpressionItem> expression = host->SQLContext()->ParseLogicalExpression(text);
    std::vector<TSQLWithClauseItem*> cte;
    std::vector<TSQLFromSource*> sources;
    First()->GatherPrepareAndFixupContext(cte, sources, true);
    expression->PrepareAndFixupRecursive(cte, sources);
    return expression;
  }

 protected:
  TCapabilityProvider joins;
};

// --- Loading and printing back ---

struct LoadCase {
  const char* name;
  const char* sql;
  std::vector<std::string> links;
  const char* printed = nullptr;  // null: the text comes back as it was
  bool whereJoins = true;         // LoadJoinsFromWhereClause
};

class LoadTest : public LinksTest, public ::testing::WithParamInterface<LoadCase> {};

TEST_P(LoadTest, MakesLinksAndPrintsBack) {
  const LoadCase& c = GetParam();
  host->Options.LoadJoinsFromWhereClause = c.whereJoins;
  Load(c.sql);
  EXPECT_EQ(Links(), c.links);
  EXPECT_EQ(Lower(Sql()), Lower(c.printed ? c.printed : c.sql));
}

const LoadCase kLoadCases[] = {
    {"InnerJoin", "SELECT * FROM a INNER JOIN b ON a.x = b.y", {"a.x = b.y on simple a>b @b"}},
    {"LeftJoin", "SELECT * FROM a LEFT OUTER JOIN b ON a.x = b.y", {"a.x = b.y on simple a+>b @b"}},
    {"RightJoin", "SELECT * FROM a RIGHT OUTER JOIN b ON b.y = a.x", {"b.y = a.x on simple a>b+ @b"}},
    {"FullJoin", "SELECT * FROM a FULL OUTER JOIN b ON a.x = b.y", {"a.x = b.y on simple a+>b+ @b"}},
    {"AndSplits",
     "SELECT * FROM a INNER JOIN b ON a.x = b.y AND a.z = b.z",
     {"a.x = b.y on simple a>b @b", "a.z = b.z on simple a>b @b"}},
    {"NoMerging",
     "SELECT * FROM a INNER JOIN b ON a.x = b.y AND a.x = b.y",
     {"a.x = b.y on simple a>b @b", "a.x = b.y on simple a>b @b"}},
    {"OrStaysWhole", "SELECT * FROM a INNER JOIN b ON a.x = b.y OR a.z = b.z", {"a.x = b.y Or a.z = b.z on a>b @b"}},
    {"OneDatasourceIsNotSimple", "SELECT * FROM a INNER JOIN b ON a.x = a.y", {"a.x = a.y on a>b @b"}},
    {"RestAfterTheSimpleLinks",
     "SELECT * FROM a INNER JOIN b ON a.z > 1 AND a.x = b.y",
     {"a.x = b.y on simple a>b @b", "a.z > 1 on a>b @b"},
     "SELECT * FROM a INNER JOIN b ON a.x = b.y AND a.z > 1"},
    {"NestedAnd",
     "SELECT * FROM a INNER JOIN b ON a.x = b.y AND (a.z = b.z AND (a.w = 1 OR b.w = a.v))",
     {"a.x = b.y on simple a>b @b", "a.z = b.z on simple a>b @b", "((a.w = 1 Or b.w = a.v)) on a>b @b"},
     "SELECT * FROM a INNER JOIN b ON a.x = b.y AND a.z = b.z AND (a.w = 1 OR b.w = a.v)"},
    // Any operand of two columns of the two sides makes a simple link, an OR too.
    {"OrOfTwoColumnsInAnAnd",
     "SELECT * FROM a INNER JOIN b ON a.x = b.y AND (a.w = 1 OR b.w = 2)",
     {"a.x = b.y on simple a>b @b", "(a.w = 1 Or b.w = 2) on simple a>b @b"}},
    {"Chain",
     "SELECT * FROM a INNER JOIN b ON a.x = b.x LEFT OUTER JOIN c ON b.y = c.y",
     {"a.x = b.x on simple a>b @b", "b.y = c.y on simple b+>c @c"}},
    {"NestedGroup",
     "SELECT * FROM a INNER JOIN (b INNER JOIN c ON b.x = c.x) ON a.x = b.x",
     {"a.x = b.x on simple a>b @(group)", "b.x = c.x on simple b>c @c"}},
    {"WhereLinkFirst",
     "SELECT * FROM a, b WHERE a.x = b.y AND a.z = 1",
     {"a.x = b.y where simple a>b @b"}},
    {"WhereLinkMovesToTheFront",
     "SELECT * FROM a, b WHERE a.z = 1 AND a.x = b.y",
     {"a.x = b.y where simple a>b @b"},
     "SELECT * FROM a, b WHERE a.x = b.y AND a.z = 1"},
    {"WhereLinkBeforeAnOr",
     "SELECT * FROM a, b WHERE a.x = b.y AND (a.z = 1 OR a.w = 2)",
     {"a.x = b.y where simple a>b @b"}},
    {"WhereLinkAlone", "SELECT * FROM a, b WHERE a.x = b.y", {"a.x = b.y where simple a>b @b"}},
    {"WhereOrIsNoLink", "SELECT * FROM a, b WHERE a.x = b.y OR a.z = 1", {}},
    {"WhereSameSourceIsNoLink", "SELECT * FROM a, b WHERE a.x = a.y", {}},
    {"WhereJoinsOff", "SELECT * FROM a, b WHERE a.x = b.y", {}, nullptr, false},
    {"NoJoins", "SELECT * FROM a, b", {}},
};

INSTANTIATE_TEST_SUITE_P(Cases, LoadTest, ::testing::ValuesIn(kLoadCases),
                         [](const auto& info) { return std::string(info.param.name); });

// --- Where-links in front of WHERE ---

struct WhereCase {
  const char* name;
  const char* where;  // null: none; "OR:" before it: an Or of that one item
  const char* printed;
};

class WhereJoinTest : public LinksTest, public ::testing::WithParamInterface<WhereCase> {};

TEST_P(WhereJoinTest, LinksComeFirst) {
  const WhereCase& c = GetParam();
  Load("SELECT * FROM a, b WHERE a.x = b.y");
  TmvOwned<TSQLExpressionItem> where;
  if (c.where) {
    std::string text = c.where;
    const bool orOfOne = text.rfind("OR:", 0) == 0;
    where = Condition(U16(orOfOne ? text.substr(3) : text).c_str());
    if (orOfOne) {
      auto disjunction = TastCreate<TSQLExpressionOr>(host->SQLContext());
      disjunction->Add(std::move(where));
      where = std::move(disjunction);
    }
  }
  TmvOwned<TSQLExpressionItem> result = From()->AddWhereJoinConditions(std::move(where));
  ASSERT_NE(result, nullptr);
  // The items of a top-level AND apart, " | " between them.
  TSQLBuilderFast& builder = host->SQLContext()->SQLBuilderExpression();
  std::string printed;
  auto* conjunction = TmvCast<TSQLExpressionAnd>(ExpressionRemoveBrackets(result.get()));
  if (auto* disjunction = TmvCast<TSQLExpressionOr>(result.get()); disjunction && disjunction->GetCount() == 1)
    conjunction = TmvCast<TSQLExpressionAnd>(disjunction->Expression(0));
  for (int i = 0; conjunction && i < conjunction->GetCount(); ++i)
    printed += (i ? " | " : "") + U8(conjunction->Expression(i)->SimpleSQL(builder));
  if (!conjunction) printed = U8(result->SimpleSQL(builder));
  EXPECT_EQ(Lower(printed), Lower(c.printed));
}

const WhereCase kWhereCases[] = {
    {"NoWhere", nullptr, "a.x = b.y"},
    {"OneCondition", "a.z = 1", "a.x = b.y | a.z = 1"},
    {"AndGetsThemInFront", "a.z = 1 AND a.w = 2", "a.x = b.y | a.z = 1 | a.w = 2"},
    {"OrGoesLast", "a.z = 1 OR a.w = 2", "a.x = b.y | a.z = 1 Or a.w = 2"},
    {"OrOfOneAnd", "OR:a.z = 1 AND a.w = 2", "a.x = b.y | a.z = 1 | a.w = 2"},
    {"OrOfOneCondition", "OR:a.z = 1", "a.x = b.y | a.z = 1"},
};

INSTANTIATE_TEST_SUITE_P(Cases, WhereJoinTest, ::testing::ValuesIn(kWhereCases),
                         [](const auto& info) { return std::string(info.param.name); });

// --- Outer sides of where-links ---

struct SideCase {
  const char* name;
  bool oracle, transactSQL;
  const char* mark;  // "a", "b": "(+)" on that side's column; "*=", "=*": the operator
  const char* sides;
};

class WhereSideTest : public LinksTest, public ::testing::WithParamInterface<SideCase> {};

TEST_P(WhereSideTest, MarksGiveTheOuterSide) {
  const SideCase& c = GetParam();
  joins.OracleJoins = c.oracle;
  joins.TransactSQLJoins = c.transactSQL;
  Load("SELECT * FROM a, b");
  TmvOwned<TSQLExpressionItem> expression = Condition(u"a.x = b.y");
  auto* binary = ExpressionGetTompostBinaryOperator(expression.get());
  const std::string mark = c.mark;
  if (mark == "*=" || mark == "=*") binary->Operator->Text = U16(mark);
  TSQLExpressionItem* side = mark == "a" ? binary->Expression.get() : mark == "b" ? binary->Right.get() : nullptr;
  if (auto* column = TmvCast<TSQLExpressionColumn>(side)) column->Column->OuterJoinMark = true;
  First()->AddLink(Source(0), Source(1), expression.get(), lpWhere);
  ASSERT_EQ(AllLinks().size(), 1u);
  TmvLink* link = AllLinks().front();
  std::string sides = std::string(link->LeftType() == ltOuter ? "outer" : "inner") + "/" +
                      (link->RightType() == ltOuter ? "outer" : "inner");
  EXPECT_EQ(sides, c.sides);
}

const SideCase kSideCases[] = {
    {"PlusOnRight", true, false, "b", "outer/inner"},
    {"PlusOnLeft", true, false, "a", "inner/outer"},
    {"StarEquals", false, true, "*=", "outer/inner"},
    {"EqualsStar", false, true, "=*", "inner/outer"},
    {"NoMark", true, true, "none", "inner/inner"},
    {"PlusAndStarTogether", true, true, "b", "outer/inner"},
};

INSTANTIATE_TEST_SUITE_P(Cases, WhereSideTest, ::testing::ValuesIn(kSideCases),
                         [](const auto& info) { return std::string(info.param.name); });

// --- Setting an outer side ---

struct SetSideCase {
  const char* name;
  bool oracle, transactSQL;
  const char* sql;  // with one where-link a.x = b.y
  bool left, right;
  const char* printed;
  const char* sides;
};

class SetSideTest : public LinksTest, public ::testing::WithParamInterface<SetSideCase> {};

TEST_P(SetSideTest, GoesIntoTheExpressionAsTheDialectWritesIt) {
  const SetSideCase& c = GetParam();
  joins.OracleJoins = c.oracle;
  joins.TransactSQLJoins = c.transactSQL;
  Load(c.sql);
  ASSERT_EQ(AllLinks().size(), 1u);
  TmvLink* link = AllLinks().front();
  link->SetLeftType(c.left ? ltOuter : ltInner);
  link->SetRightType(c.right ? ltOuter : ltInner);
  EXPECT_EQ(Lower(Sql()), Lower(c.printed));
  std::string sides = std::string(link->LeftType() == ltOuter ? "outer" : "inner") + "/" +
                      (link->RightType() == ltOuter ? "outer" : "inner");
  EXPECT_EQ(sides, c.sides);
}

const SetSideCase kSetSideCases[] = {
    {"OracleLeft", true, false, "SELECT * FROM a, b WHERE a.x = b.y", true, false,
     "SELECT * FROM a, b WHERE a.x = b.y(+)", "outer/inner"},
    {"OracleRight", true, false, "SELECT * FROM a, b WHERE a.x = b.y", false, true,
     "SELECT * FROM a, b WHERE a.x(+) = b.y", "inner/outer"},
    {"TransactSQLLeft", false, true, "SELECT * FROM a, b WHERE a.x = b.y", true, false,
     "SELECT * FROM a, b WHERE a.x *= b.y", "outer/inner"},
    {"TransactSQLRight", false, true, "SELECT * FROM a, b WHERE a.x = b.y", false, true,
     "SELECT * FROM a, b WHERE a.x =* b.y", "inner/outer"},
    {"NeitherFamilyStaysInner", false, false, "SELECT * FROM a, b WHERE a.x = b.y", true, false,
     "SELECT * FROM a, b WHERE a.x = b.y", "inner/inner"},
    {"AnsiGoesToTheJoinKind", false, false, "SELECT * FROM a INNER JOIN b ON a.x = b.y", true, false,
     "SELECT * FROM a LEFT JOIN b ON a.x = b.y", "outer/inner"},
};

INSTANTIATE_TEST_SUITE_P(Cases, SetSideTest, ::testing::ValuesIn(kSetSideCases),
                         [](const auto& info) { return std::string(info.param.name); });

// --- The link's menu: all rows of one side ---

TEST_F(LinksTest, SelectAllRowsFromASideTogglesItsOuterMark) {
  struct Case {
    const char* name;
    bool fullJoins;
    std::vector<char> clicks;  // 'L' or 'R', in order
    const char* sides;
  } cases[] = {
      {"left", true, {'L'}, "outer/inner"},
      {"left twice", true, {'L', 'L'}, "inner/inner"},
      {"both with full joins", true, {'L', 'R'}, "outer/outer"},
      {"without full joins the other side goes inner", false, {'L', 'R'}, "inner/outer"},
  };
  for (const Case& c : cases) {
    joins.FullJoin = c.fullJoins;
    Load("SELECT * FROM a INNER JOIN b ON a.x = b.y");
    TmvLink* link = AllLinks().front();
    for (char click : c.clicks) click == 'L' ? link->SelectAllRowsFromLeft() : link->SelectAllRowsFromRight();
    const std::string sides = std::string(link->LeftType() == ltOuter ? "outer" : "inner") + "/" +
                              (link->RightType() == ltOuter ? "outer" : "inner");
    EXPECT_EQ(sides, c.sides) << c.name;
  }
  // The menu names the sides by their datasources and checks the outer one.
  TmvLink* link = AllLinks().front();
  link->SelectAllRowsFromLeft();
  std::vector<std::string> entries;
  for (const TmvMenuItem& item : link->GetPopupMenu(nullptr))
    entries.push_back(U8(item.Caption) + (item.Checked ? " [x]" : "") + (item.Default ? " (default)" : ""));
  EXPECT_EQ(entries, (std::vector<std::string>{"Remove", "-", "Select all rows from a [x]", "Select all rows from b",
                                               "-", "Properties... (default)"}));
}

// --- Join kinds ---

struct JoinKindCase {
  const char* name;
  const char* sql;
  const TastNodeClass* kind;  // set on the second entry; null: a comma
  bool rightJoins;
  std::vector<std::string> links;
  const char* printed;
};

class JoinKindTest : public LinksTest, public ::testing::WithParamInterface<JoinKindCase> {};

TEST_P(JoinKindTest, SidesFollowTheKind) {
  const JoinKindCase& c = GetParam();
  joins.RightJoin = c.rightJoins;
  Load(c.sql);
  From()->Items(1)->SetJoinKindClass(c.kind);
  EXPECT_EQ(Links(), c.links);
  EXPECT_EQ(Lower(Sql()), Lower(c.printed));
}

const char* const kJoined = "SELECT * FROM a INNER JOIN b ON a.x = b.y";

const JoinKindCase kJoinKindCases[] = {
    {"Left", kJoined, &TSQLJoinKindLeft::StaticClass(), true, {"a.x = b.y on simple a+>b @b"},
     "SELECT * FROM a LEFT JOIN b ON a.x = b.y"},
    {"Right", kJoined, &TSQLJoinKindRight::StaticClass(), true, {"a.x = b.y on simple a>b+ @b"},
     "SELECT * FROM a RIGHT JOIN b ON a.x = b.y"},
    {"Full", kJoined, &TSQLJoinKindFull::StaticClass(), true, {"a.x = b.y on simple a+>b+ @b"},
     "SELECT * FROM a FULL JOIN b ON a.x = b.y"},
    {"BackToInner", "SELECT * FROM a LEFT OUTER JOIN b ON a.x = b.y", &TSQLJoinKindInner::StaticClass(), true,
     {"a.x = b.y on simple a>b @b"}, "SELECT * FROM a INNER JOIN b ON a.x = b.y"},
    // Without right joins the entry moves in front of its partner and the link turns round.
    {"RightBecomesLeft", kJoined, &TSQLJoinKindRight::StaticClass(), false, {"a.x = b.y on simple b+>a @a"},
     "SELECT * FROM b LEFT JOIN a ON a.x = b.y"},
};

INSTANTIATE_TEST_SUITE_P(Cases, JoinKindTest, ::testing::ValuesIn(kJoinKindCases),
                         [](const auto& info) { return std::string(info.param.name); });

// --- Making links by program ---

TEST_F(LinksTest, AddLinkPlacesByDialectAndOptionsAndIsFound) {
  Load("SELECT * FROM a, b");
  EXPECT_TRUE(First()->UseANSIJoins());
  TmvLink* link = First()->AddLink(Source(0), u"x", u"y", Source(1));
  ASSERT_NE(link, nullptr);
  EXPECT_EQ(Links(), std::vector<std::string>{"a.x = b.y on simple a>b @b"});
  EXPECT_EQ(First()->FindLink(Source(0), u"x", u"y", Source(1)), link);
  EXPECT_EQ(First()->FindLink(Source(1), u"y", u"x", Source(0)), nullptr);
  EXPECT_TRUE(First()->HaveAnsiJoins());
  EXPECT_FALSE(First()->HaveWhereJoins());

  host->Options.CreateWhereJoinsByDefault = true;
  Load("SELECT * FROM a, b");
  EXPECT_FALSE(First()->UseANSIJoins());
  First()->AddLink(Source(0), Source(1), u"a.z = b.z");
  EXPECT_EQ(Lower(Sql()), "select * from a, b where a.z = b.z");
  // Where-links already there keep a dialect with (+) in WHERE.
  host->Options.CreateWhereJoinsByDefault = false;
  EXPECT_TRUE(First()->UseANSIJoins());
  joins.OracleJoins = true;
  EXPECT_FALSE(First()->UseANSIJoins());
  joins.ANSIJoins = false;
  Load("SELECT * FROM a, b");
  EXPECT_FALSE(First()->UseANSIJoins());
}

TEST_F(LinksTest, AnOnClauseDropsTheMarksOfWhere) {
  joins.OracleJoins = true;
  Load("SELECT * FROM a INNER JOIN b ON a.x = b.x");
  TmvOwned<TSQLExpressionItem> expression = Condition(u"a.y = b.y");
  auto* binary = ExpressionGetTompostBinaryOperator(expression.get());
  TmvCast<TSQLExpressionColumn>(binary->Right.get())->Column->OuterJoinMark = true;
  binary->Operator->Text = u"*=";
  First()->AddLink(Source(0), Source(1), expression.get(), lpFrom);
  EXPECT_EQ(Lower(Sql()), "select * from a inner join b on a.x = b.x and a.y = b.y");
}

TEST_F(LinksTest, ANewExpressionWorksTheLinkOutAgain) {
  Load("SELECT * FROM a INNER JOIN b ON a.x = b.x");
  TmvLink* link = AllLinks().at(0);
  link->SetLinkExpressionString(u"a.x = b.x OR a.y = b.z");
  EXPECT_EQ(Links(), std::vector<std::string>{"a.x = b.x Or a.y = b.z on a>b @b"});
  EXPECT_EQ(Lower(Sql()), "select * from a inner join b on a.x = b.x or a.y = b.z");
  EXPECT_EQ(U8(ThrownMessage([&] { link->SetLinkExpressionString(u"a.x ="); })), "\"a.x =\" is not valid expression");
}

TEST_F(LinksTest, AddLinksFromExpressionSplitsUnderTheLaterDatasource) {
  Load("SELECT * FROM a INNER JOIN b ON a.x = b.x");
  std::vector<TmvLink*> made = First()->AddLinksFromExpression(Source(1), Source(0), u"a.y = b.y AND a.z > b.z + 1");
  EXPECT_EQ(made.size(), 2u);
  EXPECT_EQ(Lower(Sql()), "select * from a inner join b on a.x = b.x and a.y = b.y and a.z > b.z + 1");
}

struct ErrorCase {
  const char* name;
  std::function<void(LinksTest&)> action;
  const char* message;  // null: a list index error
};

class LinkErrors : public LinksTest, public ::testing::WithParamInterface<ErrorCase> {};

TEST_P(LinkErrors, RaiseAndMakeNothing) {
  const ErrorCase& c = GetParam();
  Load("SELECT * FROM a, b");
  if (c.message) {
    EXPECT_EQ(U8(ThrownMessage([&] { c.action(*this); })), c.message);
  } else {
    EXPECT_THROW(c.action(*this), EListError);
  }
  EXPECT_TRUE(AllLinks().empty());
  EXPECT_EQ(Lower(Sql()), "select * from a, b");
}

const ErrorCase kErrorCases[] = {
    {"FirstDatasource",
     [](LinksTest& t) { t.Source(0)->AddLinksFromExpression(t.Condition(u"a.x = b.y")); },
     "Links cannot be added to the first datasource of the group"},
    {"BadFieldName", [](LinksTest& t) { t.First()->AddLink(t.Source(0), u"x\"y", u"y", t.Source(1)); },
     "Invalid field name: x\"y"},
    {"BadExpression", [](LinksTest& t) { t.First()->AddLink(t.Source(0), t.Source(1), u"a.x = "); },
     "\"a.x = \" is not valid expression"},
    {"OneDatasource", [](LinksTest& t) { t.First()->AddLink(t.Source(0), t.Source(1), u"a.x = a.y"); }, nullptr},
    {"NoDatasource", [](LinksTest& t) { t.First()->AddLink(t.Source(0), t.Source(1), u"1 = 1"); }, nullptr},
};

INSTANTIATE_TEST_SUITE_P(Cases, LinkErrors, ::testing::ValuesIn(kErrorCases),
                         [](const auto& info) { return std::string(info.param.name); });

// --- Datasources going ---

struct DeleteCase {
  const char* name;
  const char* sql;
  int removed;  // index of the entry removed; -1: the first link itself
  std::vector<std::string> links;
  const char* printed;
};

class DeleteTest : public LinksTest, public ::testing::WithParamInterface<DeleteCase> {};

TEST_P(DeleteTest, ADatasourceTakesItsLinksAlong) {
  const DeleteCase& c = GetParam();
  Load(c.sql);
  if (c.removed < 0)
    ASSERT_TRUE(AllLinks().at(0)->RequestDestroy());
  else
    ASSERT_TRUE(From()->Remove(From()->Items(c.removed)));
  EXPECT_EQ(Links(), c.links);
  EXPECT_EQ(Lower(Sql()), Lower(c.printed));
}

const char* const kThree = "SELECT * FROM a INNER JOIN b ON a.x = b.x INNER JOIN c ON b.y = c.y AND c.z = 1";

const DeleteCase kDeleteCases[] = {
    {"Referenced", kThree, 2, {"a.x = b.x on simple a>b @b"}, "SELECT * FROM a INNER JOIN b ON a.x = b.x"},
    {"OneOfTwoLeft", "SELECT * FROM a INNER JOIN b ON a.x = b.x AND 1 = 1", 0, {}, "SELECT * FROM b"},
    // The owner would become the first entry.
    {"OwnerBecomesFirst", "SELECT * FROM a INNER JOIN b ON 1 = 1 INNER JOIN c ON b.y = c.y", 0,
     {"b.y = c.y on simple b>c @c"}, "SELECT * FROM b INNER JOIN c ON b.y = c.y"},
    // A link that is not simple goes with its owner; one between others stays.
    {"NotSimpleOwner", "SELECT * FROM a INNER JOIN b ON a.x = b.x INNER JOIN c ON a.y > 1", 2,
     {"a.x = b.x on simple a>b @b"}, "SELECT * FROM a INNER JOIN b ON a.x = b.x"},
    {"LinkDeletedByItself", "SELECT * FROM a INNER JOIN b ON a.x = b.x", -1, {}, "SELECT * FROM a, b"},
    {"NotSimpleEndMoves", "SELECT * FROM a INNER JOIN b ON a.x = b.x INNER JOIN c ON a.y > 1 AND c.y = a.y", 1,
     {"c.y = a.y on simple a>c @c", "a.y > 1 on a>c @c"}, "SELECT * FROM a INNER JOIN c ON c.y = a.y AND a.y > 1"},
};

INSTANTIATE_TEST_SUITE_P(Cases, DeleteTest, ::testing::ValuesIn(kDeleteCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(LinksTest, ANewTextTakesTheOldLinksAlong) {
  Load("SELECT * FROM a INNER JOIN (b INNER JOIN c ON 1 = 1) ON a.x = b.x");
  ASSERT_EQ(AllLinks().size(), 2u);
  Load("SELECT * FROM x");
  EXPECT_TRUE(AllLinks().empty());
}

TEST_F(LinksTest, ALinkFollowsItsDatasourceIntoADerivedTable) {
  Load("SELECT * FROM a INNER JOIN b ON a.x = b.x");
  TmvDatasourceQuery* derived = First()->ConvertDatasourceToDerivedTable(Source(1));
  ASSERT_NE(derived, nullptr);
  std::vector<TmvLink*> links = AllLinks();
  ASSERT_EQ(links.size(), 1u);
  EXPECT_EQ(links[0]->RightDatasource(), derived);
  EXPECT_EQ(links[0]->JoinOwner(), derived);
}

// Link controls, counting what the model asks of them; other owners get plain controls.
class TLinkControls : public ImvControlFactory {
 public:
  struct TControl : ImvLinkControl {
    explicit TControl(int& realigns) : realigns(realigns) {}
    void UpdateControlVisualParams(TmvQueryBuilderControlOwner*) override {}
    void Realign() override { ++realigns; }
    int& realigns;
  };
  ImvControl* CreateControl(TmvQueryBuilderControlOwner* owner, int) override {
    controls.push_back(std::make_unique<TControl>(realigns));
    if (TmvCast<TmvLink>(owner)) ++links, linkControls.push_back(controls.back().get());
    return controls.back().get();
  }
  void ShowControl(ImvControl*, bool) override {}
  void DestroyControl(ImvControl* control) override { destroyed += std::erase(linkControls, control); }
  int links = 0, realigns = 0, destroyed = 0;
  std::vector<ImvControl*> linkControls;
  std::vector<std::unique_ptr<TControl>> controls;
};

TEST_F(LinksTest, LinksGetControlsThatFollowThem) {
  TLinkControls factory;
  host->SetControlFactory(&factory);
  host->CreateControls();
  Load("SELECT * FROM a INNER JOIN b ON a.x = b.x");
  EXPECT_EQ(factory.links, 1);
  ASSERT_NE(AllLinks().at(0)->GetLinkControl(), nullptr);
  const int realigns = factory.realigns;
  First()->AddLink(Source(0), u"y", u"y", Source(1));
  EXPECT_EQ(factory.links, 2);
  EXPECT_GT(factory.realigns, realigns);
  Load("SELECT * FROM a");
  EXPECT_EQ(factory.destroyed, 2);
  host->DestroyControls();
  host->SetControlFactory(nullptr);
}

TEST_F(LinksTest, SubSelectsInALinkBelongToTheLink) {
  Load("SELECT * FROM a INNER JOIN b ON a.x = b.x AND b.y IN (SELECT y FROM c)");
  std::vector<TmvLink*> links = AllLinks();
  ASSERT_EQ(links.size(), 2u);
  EXPECT_EQ(links[1]->SubQueryProxies().size(), 1u);
  EXPECT_EQ(Lower(Sql()), "select * from a inner join b on a.x = b.x and b.y in (select y from c)");
}

}  // namespace
}  // namespace mvtest
