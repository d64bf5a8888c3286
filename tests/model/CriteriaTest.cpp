// The criteria text of a cell: what a user types under a row becomes the
// condition that GetConditionString prints back (left side taken out).
#include <memory>

#include "ModelTestSupport.h"
#include "model/SelectList.h"
#include "support/LogHelper.h"
#include "tree/Expressions.h"

namespace mvtest {
namespace {

using mv::TFieldType;
using mv::TmvSelectItem;

// Dates print through the dialect's literal; this one makes them visible.
class TDateLiteralProvider : public TCapabilityProvider {
 public:
  mv::WideString QuoteDateLiteral(mv::WideStringView text) const override {
    return u"cast(" + TCapabilityProvider::QuoteDateLiteral(text) + u" as date)";
  }
};

class CriteriaTest : public ModelTest {
 protected:
  CriteriaTest() { host->SetSyntaxProvider(&dates); }
  ~CriteriaTest() override { host->SetSyntaxProvider(&provider); }

  // The row of `expression` over t(id, name, c); the field c takes the type.
  TmvSelectItem* Row(const std::string& expression, TFieldType type) {
    mv::TmvMetadataTable* table = AddTable(u"t", {u"id", u"name", u"c"});
    table->GetFields()->Items(2)->SetFieldType(type);
    Load("SELECT " + expression + " FROM t");
    return First()->SelectList()->Items(0);
  }

  TDateLiteralProvider dates;
};

struct CriteriaCase {
  const char* expression;  // of the row
  TFieldType type;         // of the field c
  const char* text;        // typed
  const char* condition;   // printed, compared without regard to case
};
void PrintTo(const CriteriaCase& c, std::ostream* os) { *os << c.expression << ": " << c.text; }

// x names no field: the row has none. c is the typed field.
const CriteriaCase kCases[] = {
    // Numbers, words and patterns.
    {"x", mv::ftUnknown, "10", "= 10"},
    {"x", mv::ftUnknown, " -2.5 ", "= -2.5"},
    {"x", mv::ftUnknown, "abc", "= 'abc'"},
    {"x", mv::ftUnknown, "a%", "Like 'a%'"},
    {"x", mv::ftUnknown, "'a%'", "Like 'a%'"},
    {"x", mv::ftUnknown, "Like a_b%", "Like 'a_b%'"},
    {"x", mv::ftUnknown, "'it''s'", "= 'it''s'"},
    {"x", mv::ftUnknown, "AB-12", "= 'AB-12'"},
    {"t.c", mv::ftString, "10", "= '10'"},
    {"t.c", mv::ftInteger, "10", "= 10"},
    {"t.c", mv::ftMemo, "1.5", "= '1.5'"},
    // Null words, operators, expressions.
    {"x", mv::ftUnknown, "Null", "Is Null"},
    {"x", mv::ftUnknown, "= null", "Is Null"},
    {"x", mv::ftUnknown, "Not Null", "Is Not Null"},
    {"x", mv::ftUnknown, "!=Null", "Is Not Null"},
    {"x", mv::ftUnknown, "> 5", "> 5"},
    {"x", mv::ftUnknown, "> abc", "> 'abc'"},
    {"x", mv::ftUnknown, "<> t.id", "<> t.id"},
    {"x", mv::ftUnknown, "Between 1 And 3", "Between 1 And 3"},
    {"x", mv::ftUnknown, "5 + 3", "= 5 + 3"},
    {"x", mv::ftUnknown, "x = 1", "= x = 1"},
    {"x", mv::ftUnknown, "upper(t.name)", "= upper(t.name)"},
    // An operator before text that is no SQL: a string, or a date literal.
    {"t.c", mv::ftString, ">= abc def", ">= 'abc def'"},
    {"t.c", mv::ftDate, "< 'x' y", "< cast('''x'' y' as date)"},
    // A field of the SELECT's datasources.
    {"x", mv::ftUnknown, "name", "= t.name"},
    // Dates: on a date field or a row without field, in the seven formats.
    {"t.c", mv::ftDate, "31-12-24", "= cast('31-12-24' as date)"},
    {"t.c", mv::ftDateTime, "31/12/2024", "= cast('31/12/2024' as date)"},
    {"x", mv::ftUnknown, "1.2.24", "= cast('1.2.24' as date)"},
    {"t.c", mv::ftTime, "12-31-24", "= cast('12-31-24' as date)"},
    {"t.c", mv::ftDate, "02/29/2024", "= cast('02/29/2024' as date)"},
    {"t.c", mv::ftDate, "2024-01-05", "= cast('2024-01-05' as date)"},
    {"t.c", mv::ftDate, "29.02.2023", "= '29.02.2023'"},
    {"t.c", mv::ftDate, "29.02.2024", "= cast('29.02.2024' as date)"},
    // IN lists: parsed, with words and numbers of a string field quoted;
    // built by hand when they do not parse.
    {"x", mv::ftUnknown, "IN (1, 2)", "In (1, 2)"},
    {"x", mv::ftUnknown, "not in (abc, id)", "Not In ('abc', t.id)"},
    {"t.c", mv::ftString, "in (1, 'b')", "In ('1', 'b')"},
    {"x", mv::ftUnknown, "IN (a b, 3, 2024-01-05)", "In ('a b', 3, cast('2024-01-05' as date))"},
    {"t.c", mv::ftString, "Not IN (x y, 3)", "Not In ('x y', '3')"},
};

class CriteriaTableTest : public CriteriaTest, public ::testing::WithParamInterface<CriteriaCase> {};

TEST_P(CriteriaTableTest, TextGivesCondition) {
  const CriteriaCase& c = GetParam();
  TmvSelectItem* row = Row(c.expression, c.type);
  row->SetConditionString(0, U16(c.text));
  EXPECT_TRUE(mv::WideSameText(row->GetConditionString(0), U16(c.condition)))
      << c.text << " gave " << U8(row->GetConditionString(0));
}

INSTANTIATE_TEST_SUITE_P(Criteria, CriteriaTableTest, ::testing::ValuesIn(kCases));

TEST_F(CriteriaTest, CellsPrintInWhereAndEmptyTextClearsTheEntry) {
  TmvSelectItem* row = Row("t.c", mv::ftString);
  row->SetConditionString(0, u"a%");
  row->SetConditionString(1, u"Null");
  EXPECT_EQ(Sql(), "Select t.c From t Where t.c Like 'a%' Or t.c Is Null");
  row->SetConditionString(0, u"  ");
  EXPECT_EQ(row->GetConditionsCount(), 2);
  EXPECT_EQ(row->GetConditionString(0), u"");
  row->SetConditionString(1, u"");
  EXPECT_EQ(row->GetConditionsCount(), 0);
  EXPECT_EQ(Sql(), "Select t.c From t");
}

TEST_F(CriteriaTest, CriteriaOfAnAggregateGoToHaving) {
  AddTable(u"t", {u"id"});
  Load("SELECT t.id, COUNT(*) FROM t GROUP BY t.id");
  First()->SelectList()->Items(1)->SetConditionString(0, u"> 1");
  First()->SelectList()->Items(0)->SetConditionString(0, u"5");
  EXPECT_EQ(Sql(), "Select t.id, COUNT(*) From t Where t.id = 5 Group By t.id Having COUNT(*) > 1");
}

class TRecordingLogger : public mv::ImvLogger {
 public:
  void Debug(mv::WideStringView message) override { lines.emplace_back(message); }
  void Info(mv::WideStringView) override {}
  void Warn(mv::WideStringView) override {}
  void Error(mv::WideStringView) override {}
  void Fatal(mv::WideStringView) override {}
  std::vector<mv::WideString> lines;
};

TEST_F(CriteriaTest, EachTextIsLogged) {
  TmvSelectItem* row = Row("t.c", mv::ftInteger);
  auto logger = std::make_shared<TRecordingLogger>();
  host->LogHelper().SetLogger(logger);
  row->SetConditionString(2, u"5");
  host->LogHelper().SetLogger(nullptr);
  ASSERT_EQ(logger->lines.size(), 1u);
  const std::string line = U8(logger->lines[0]);
  EXPECT_NE(line.find("TmvSelectItem(0, "), std::string::npos) << line;
  EXPECT_NE(line.find(").SetConditionString: AIndex = 2, AValue = \"5\""), std::string::npos) << line;
  EXPECT_EQ(Sql(), "Select t.c From t Where t.c = 5");
}

}  // namespace
}  // namespace mvtest
