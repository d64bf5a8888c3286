// Long WHERE and HAVING clauses: every condition still finds the row of its
// left-hand expression (the first one of a fitting type), and the text
// prints back as it came.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ModelTestSupport.h"
#include "model/SelectList.h"

namespace mvtest {
namespace {

class LongClauseTest : public ModelTest {
 public:
  // Each row but the trailing empty one: expression, conditions type and the
  // entries of its condition columns.
  std::vector<std::string> Rows() const {
    static const char* const types[] = {"none", "where", "having"};
    mv::TmvSelectList* list = First()->SelectList();
    std::vector<std::string> rows;
    for (int i = 0; i + 1 < list->Count(); ++i) {
      mv::TmvSelectItem* row = list->Items(i);
      std::string text = U8(row->GetExpressionString()) + " " + types[row->ConditionsType()];
      for (int c = 0; c < row->GetConditionsCount(); ++c) text += " [" + U8(row->GetConditionString(c)) + "]";
      rows.push_back(Lower(text));
    }
    return rows;
  }
};

TEST_F(LongClauseTest, ConditionsFindTheRowOfTheirExpression) {
  struct Case {
    const char* sql;
    std::vector<std::string> rows;
    const char* printed;  // null: the input itself
  };
  const Case cases[] = {
      // A shown column takes its conditions; a repeated expression joins its row.
      {"SELECT a FROM t WHERE b = 1 AND a = 2 AND b < 3", {"a where [= 2]", "b where [= 1 and < 3]"},
       "SELECT a FROM t WHERE b = 1 AND b < 3 AND a = 2"},
      // The same expression in another OR branch is another column of the row.
      {"SELECT a FROM t WHERE b = 1 AND a = 2 OR b = 3", {"a where [= 2]", "b where [= 1] [= 3]"}, nullptr},
      // Written differently, printed the same: one row.
      {"SELECT a FROM t WHERE (b) + 1 = 1 AND (b)+1 > 0", {"a where", "(b) + 1 where [= 1 and > 0]"},
       "SELECT a FROM t WHERE (b) + 1 = 1 AND (b) + 1 > 0"},
      // A row of WHERE is not one of HAVING.
      {"SELECT a FROM t WHERE a > 1 GROUP BY a HAVING a < 5", {"a where [> 1]", "a having [< 5]"}, nullptr},
  };
  for (const Case& c : cases) {
    Load(c.sql);
    EXPECT_EQ(Rows(), c.rows) << c.sql;
    EXPECT_EQ(Lower(Sql()), Lower(c.printed ? c.printed : c.sql)) << c.sql;
  }
}

// 2,000 conditions over 40 columns in 50 OR branches: 40 rows of 50 columns,
// and the text back as it came.
TEST_F(LongClauseTest, TwoThousandTermsLoadIntoTheirRows) {
  const int columns = 40, branches = 50;
  std::string sql = "SELECT c0 FROM t WHERE ";
  for (int b = 0; b < branches; ++b)
    for (int c = 0; c < columns; ++c) {
      if (b > 0 || c > 0) sql += c == 0 ? " OR " : " AND ";
      sql += "c" + std::to_string((c * 7) % columns) + " = " + std::to_string(b * columns + c);
    }
  Load(sql);
  const std::vector<std::string> rows = Rows();
  ASSERT_EQ(rows.size(), size_t(columns));
  for (int c = 0; c < columns; ++c)
    EXPECT_EQ(rows[c].substr(0, rows[c].find(" [")), "c" + std::to_string((c * 7) % columns) + " where") << c;
  EXPECT_EQ(First()->SelectList()->Items(0)->GetConditionsCount(), branches);
  EXPECT_EQ(Lower(Sql()), Lower(sql));
}

}  // namespace
}  // namespace mvtest
