// The select list: statements read into rows and condition columns, and the
// rows printed back.
#include <gtest/gtest.h>

#include <cctype>
#include <iostream>
#include <string>
#include <vector>

#include "Corpus.h"
#include "ModelTestSupport.h"
#include "Thrown.h"
#include "model/SelectList.h"
#include "tree/SelectClauses.h"

namespace mvtest {
namespace {

using mv::TmvSelectItem;
using mv::TmvSelectList;

// One row as text: expression, then the flags that are set, the aggregate,
// the conditions type and the entries of the condition columns.
std::string Describe(const TmvSelectItem* row) {
  std::string text = U8(row->GetExpressionString());
  if (row->Select()) text += " sel";
  if (row->Aggregate()) text += " agg=" + U8(row->GetAggregateString());
  if (row->Grouping()) text += " grp";
  if (row->SortType() != mv::stNone) text += row->SortType() == mv::stAsc ? " asc" : " desc";
  static const char* const types[] = {"none", "where", "having"};
  text += std::string(" ") + types[row->ConditionsType()];
  for (int i = 0; i < row->GetConditionsCount(); ++i) text += " [" + U8(row->GetConditionString(i)) + "]";
  return text;
}

class SelectListTest : public ModelTest {
 public:
  TmvSelectList* List() const { return First()->SelectList(); }
  // The rows but the trailing empty one, which must be there and single.
  std::vector<std::string> Rows() const {
    std::vector<std::string> rows;
    const int count = List()->Count();
    EXPECT_GE(count, 1);
    EXPECT_EQ(List()->Items(count - 1)->Expression(), nullptr);
    for (int i = 0; i < count - 1; ++i) rows.push_back(Describe(List()->Items(i)));
    return rows;
  }
};

struct RoundTrip {
  const char* sql;
  std::vector<std::string> rows;
  const char* printed;  // null: the input itself
};

TEST_F(SelectListTest, StatementsBecomeRowsAndPrintBack) {
  const RoundTrip cases[] = {
      {"SELECT * FROM t", {}, nullptr},
      {"SELECT a, a FROM t", {"a sel where", "a sel where"}, nullptr},
      {"SELECT a FROM t WHERE a = 1 OR b = 2", {"a sel where [= 1]", "b where [] [= 2]"}, nullptr},
      {"SELECT a FROM t WHERE a > 1 AND a < 5", {"a sel where [> 1 And < 5]"}, nullptr},
      {"SELECT a FROM t WHERE (a = 1 OR b = 2) AND c = 3", {"a sel where [= 1 Or b = 2]", "c where [= 3]"}, nullptr},
      {"SELECT a FROM t WHERE a = 1 AND b = 2 OR a = 3", {"a sel where [= 1] [= 3]", "b where [= 2]"}, nullptr},
      {"SELECT COUNT(*) FROM t HAVING COUNT(*) > 1", {"* sel agg=Count having [> 1]"}, nullptr},
      {"SELECT a, SUM(b) FROM t GROUP BY a", {"a sel grp where", "b sel agg=Sum having"}, nullptr},
      {"SELECT COUNT(a) FROM t WHERE COUNT(a) > 1", {"Count(a) sel where [> 1]"}, nullptr},
      {"SELECT a, b FROM t ORDER BY 2 DESC", {"a sel where", "b sel where", "2 desc none"}, nullptr},
      {"SELECT a FROM t ORDER BY b", {"a sel where", "b asc none"}, nullptr},
      {"SELECT a FROM t ORDER BY a DESC", {"a sel desc where"}, nullptr},
      // A bare logical condition is held as "= True", its negation as "= False".
      {"SELECT a FROM t WHERE EXISTS(SELECT 1 FROM u)", {"a sel where", "Exists(Select 1 From u) where [= True]"},
       nullptr},
      {"SELECT a FROM t WHERE NOT EXISTS(SELECT 1 FROM u)",
       {"a sel where", "Exists(Select 1 From u) where [= False]"}, nullptr},
      {"SELECT DISTINCT a AS x FROM t", {"a sel where"}, nullptr},
      {"SELECT a FROM t UNION SELECT b FROM u ORDER BY 1", {"a sel where", "1 asc none"}, nullptr},
      // A one-part name in GROUP BY or ORDER BY finds the row that shows it.
      {"SELECT a AS x FROM t ORDER BY x", {"a sel asc where"}, nullptr},
      {"SELECT a AS x FROM t GROUP BY x", {"a sel grp where"}, "SELECT a AS x FROM t GROUP BY a"},
      // A name with a table prefix stays that table's column, whatever row
      // shows the same name.
      {"SELECT t.a AS x FROM t, u GROUP BY u.x", {"t.a sel where", "u.x grp where"}, nullptr},
      {"SELECT t.a AS x FROM t, u ORDER BY u.x DESC", {"t.a sel where", "u.x desc none"}, nullptr},
      {"SELECT t.a, u.a FROM t, u GROUP BY t.a, u.a", {"t.a sel grp where", "u.a sel grp where"}, nullptr},
      {"SELECT a.x, COUNT(*) FROM a LEFT JOIN b ON a.id = b.id WHERE a.y > 1 GROUP BY a.x ORDER BY 2 DESC",
       {"a.x sel grp where", "* sel agg=count having", "a.y where [> 1]", "2 desc none"}, nullptr},
  };
  for (const RoundTrip& c : cases) {
    Load(c.sql);
    std::vector<std::string> expected;
    for (const std::string& row : c.rows) expected.push_back(Lower(row));
    std::vector<std::string> rows;
    for (const std::string& row : Rows()) rows.push_back(Lower(row));
    EXPECT_EQ(rows, expected) << c.sql;
    EXPECT_EQ(Lower(Sql()), Lower(c.printed ? c.printed : c.sql)) << c.sql;
  }
}

TEST_F(SelectListTest, TheTrailingEmptyRowStaysSingle) {
  Load("SELECT a, b FROM t");
  ASSERT_EQ(List()->Count(), 3);
  List()->Items(1)->Clear();
  EXPECT_EQ(Rows(), std::vector<std::string>{"a sel where"});
  List()->AddEmptyRow();
  List()->InsertEmptyRow(0);
  EXPECT_EQ(Rows(), (std::vector<std::string>{" where", "a sel where"}));
  List()->Items(1)->Clear();
  EXPECT_EQ(List()->Count(), 1);
  EXPECT_EQ(Lower(Sql()), "select * from t");
}

TEST_F(SelectListTest, DeletingADatasourceTakesItsRowsAndConditions) {
  Load("SELECT t.a, u.b FROM t, u WHERE u.b = 1 AND t.a = 2 OR t.a = u.c");
  First()->Datasources()->Remove(First()->Datasources()->Items(1));
  EXPECT_EQ(Rows(), std::vector<std::string>{"t.a sel where [= 2]"});
  EXPECT_EQ(Lower(Sql()), "select t.a from t where t.a = 2");
}

TEST_F(SelectListTest, PlainSettersChangeOneRow) {
  Load("SELECT a, b FROM t");
  TmvSelectItem* a = List()->Items(0);
  TmvSelectItem* b = List()->Items(1);
  b->SetSortType(mv::stDesc);
  a->SetSortOrder(0);
  b->SetGrouping(true);
  a->SetAggregateName(u"MAX");
  EXPECT_EQ(Lower(Sql()), "select max(a), b from t group by b order by max(a), b desc");
  EXPECT_EQ(Lower(U8(First()->GetOrderByClauseString())), "max(a), b desc");
  EXPECT_EQ(U8(b->GetSortOrderString()), "2");
  EXPECT_EQ(U8(b->GetSortTypeString()), "Descending");
  a->SetAggregateName(u"Max");  // the same name again takes it off
  a->SetSortTypeString(u"");
  b->SetAggregateString(u"count distinct");
  EXPECT_EQ(Lower(Sql()), "select a, count(distinct b) from t order by count(distinct b) desc");
  a->SetSelect(false);
  EXPECT_EQ(Rows(), (std::vector<std::string>{"a where", "b sel agg=Count Distinct desc having"}));
}

TEST_F(SelectListTest, TheFirstSelectHoldsTheSortOfTheWholeQuery) {
  Load("SELECT a FROM t UNION SELECT b FROM u ORDER BY 1 DESC");
  EXPECT_EQ(Lower(U8(Member(0)->GetSql())), "select a from t order by 1 desc");
  EXPECT_EQ(Lower(U8(Member(1)->GetSql())), "select b from u");
  Member(0)->SetSql(u"SELECT c FROM v ORDER BY c");
  EXPECT_EQ(Lower(Sql()), "select c from v union select b from u order by c");
  Load("SELECT a, b FROM t ORDER BY b");
  Member(0)->SetSql(u"SELECT a FROM t");
  EXPECT_EQ(Lower(Sql()), "select a from t");
}

TEST_F(SelectListTest, ARowDropsWhatItCanNoLongerBe) {
  Load("SELECT COUNT(a) AS n FROM t GROUP BY a ORDER BY n");
  TmvSelectItem* row = List()->Items(0);
  ASSERT_EQ(row->SortType(), mv::stAsc);
  {
    // Without its aggregate a lone "*" can neither be sorted nor named.
    mv::TmvUpdateScope update(row);
    row->SetAggregate(nullptr);
    row->SetASTExpression(mv::TastCreate<mv::TSQLSelectItemAllColumns>(host->SQLContext()));
  }
  EXPECT_EQ(row->SortType(), mv::stNone);
  EXPECT_EQ(row->Alias(), nullptr);
  EXPECT_EQ(Lower(Sql()), "select * from t group by a");
}

TEST_F(SelectListTest, WhatARowCanBeFollowsItsExpression) {
  struct Case {
    const char* sql;
    const char* abilities;  // select, sort, group, conditions of the first row
  } cases[] = {
      {"SELECT a FROM t", "select sort group conditions"},
      {"SELECT 1 FROM t", "select sort group conditions"},
      {"SELECT 'x' FROM t", "select sort conditions"},
      {"SELECT t.* FROM t", "select"},
      {"SELECT COUNT(*) FROM t", "select sort conditions"},
      {"SELECT a FROM t WHERE EXISTS(SELECT 1 FROM u) ORDER BY a", "select sort group conditions"},
  };
  for (const Case& c : cases) {
    Load(c.sql);
    const TmvSelectItem* row = List()->Items(0);
    std::string abilities;
    for (auto [able, word] : {std::pair{row->IsCanSelect(), "select"}, {row->IsCanSort(), "sort"},
                              {row->IsCanGrouping(), "group"}, {row->IsSupportConditions(), "conditions"}})
      if (able) abilities += (abilities.empty() ? "" : " ") + std::string(word);
    EXPECT_EQ(abilities, c.abilities) << c.sql;
  }
  // A bare logical condition can be neither selected nor sorted in this dialect.
  const TmvSelectItem* exists = List()->Items(1);
  EXPECT_FALSE(exists->IsCanSelect());
  EXPECT_FALSE(exists->IsCanSort());
  EXPECT_TRUE(exists->IsSupportConditions());
}

TEST_F(SelectListTest, RefusalsCarryTheirTexts) {
  Load("SELECT a FROM t WHERE EXISTS (SELECT 1 FROM u)");
  TmvSelectItem* exists = List()->Items(1);
  EXPECT_EQ(U8(ThrownMessage([&] { exists->SetSelect(true); })), "This expression is not selectable");
  EXPECT_FALSE(exists->Select());
  EXPECT_EQ(U8(ThrownMessage([&] { List()->AddConditionOrder(mv::ctNone, exists); })),
            "TmvSelectList.AddConditionOrder: invalid param value: AGroup=ctNone");
}

TEST_F(SelectListTest, ASubSelectInARowHangsOnTheRow) {
  Load("SELECT (SELECT MAX(x) FROM u) AS m FROM t WHERE a IN (SELECT y FROM v)");
  EXPECT_EQ(List()->Items(0)->SubQueryProxies().size(), 1u);
  EXPECT_EQ(List()->Items(1)->SubQueryProxies().size(), 1u);
  // A sub-query in a row's expression is named by the row's alias.
  EXPECT_EQ(U8(host->SubQueries()[1]->GetCaption()), "m");
  List()->Items(1)->Clear();
  EXPECT_EQ(host->SubQueries().size(), 2u);
  EXPECT_EQ(Lower(Sql()), "select (select max(x) from u) as m from t");
  Load("SELECT (SELECT 1 FROM u) + (SELECT 2 FROM v) AS s FROM t");
  ASSERT_EQ(host->SubQueries().size(), 3u);
  EXPECT_EQ(U8(host->SubQueries()[1]->GetCaption()), "s[1]");
  EXPECT_EQ(U8(host->SubQueries()[2]->GetCaption()), "s[2]");
}

// Every statement of the corpus that parses goes into the model and back;
// what the model prints reads back to the same model.
class SelectListCorpusSlow : public ModelTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(SelectListCorpusSlow, PrintedTextIsStable) {
  MV_CORPUS_SELECTS(entries, GetParam());
  int loaded = 0, unstable = 0, failed = 0;
  for (const mv::TmvStatementEntry& entry : entries) {
    try {
      host->SQLContext()->ParseSelect(entry.Text);
    } catch (const mv::Exception&) {
      continue;
    }
    std::string first, second;
    try {
      Query()->SetSql(entry.Text);
      first = Sql();
      Query()->SetSql(U16(first));
      second = Sql();
    } catch (const mv::Exception& e) {
      if (++failed <= 5) ADD_FAILURE() << "line " << entry.Line << ": " << U8(e.Message()) << "\n" << U8(entry.Text);
      continue;
    }
    ++loaded;
    if (first != second && ++unstable <= 5)
      ADD_FAILURE() << "line " << entry.Line << "\n" << U8(entry.Text) << "\n" << first << "\n" << second;
  }
  std::cout << GetParam() << ": " << loaded << " loaded, " << unstable << " unstable, " << failed << " failed\n";
}

INSTANTIATE_TEST_SUITE_P(Corpus, SelectListCorpusSlow, ::testing::ValuesIn(kCorpusSelectFolders),
                         [](const auto& info) { return CorpusTestName(info.param); });

}  // namespace
}  // namespace mvtest
