// The select list: statements read into rows and condition columns, and the
// rows printed back.
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "ModelTestSupport.h"
#include "Thrown.h"
#include "model/SelectList.h"

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

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
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

}  // namespace
}  // namespace mvtest
