// What the grid of the select list calls: names and unique aliases, the
// conflict messages, the grouping and sort texts, the UI setters' effect on
// the other rows, the row menu, and the checks of datasources.
#include "ModelTestSupport.h"
#include "Thrown.h"
#include "model/ModelMessages.h"
#include "model/SelectList.h"

namespace mvtest {
namespace {

using mv::TmvSelectItem;
using mv::TmvSelectList;

class SelectItemUITest : public ModelTest {
 public:
  SelectItemUITest() {
    AddTable(u"t", {u"a", u"b"});
    host->OnUserMessage = [this](mv::TmvQueryModelHost*, const mv::TmvUserMessageParams& params) {
      messages.push_back(U8(params.MessageText));
    };
  }
  ~SelectItemUITest() override { host->OnUserMessage = nullptr; }

  TmvSelectList* List() const { return First()->SelectList(); }
  TmvSelectItem* Row(int index) const { return List()->Items(index); }
  // The empty row at the end.
  TmvSelectItem* Blank() const { return List()->Items(List()->Count() - 1); }
  mv::TmvDatasource* Table() const { return mv::TmvCast<mv::TmvDatasource>(First()->Datasources()->Items(0)); }

  std::vector<std::string> messages;
};

// --- Names and aliases ---

struct AliasCase {
  const char* sql;
  const char* typed;  // into the empty row, then selected
  const char* alias;  // that the row gets
};
void PrintTo(const AliasCase& c, std::ostream* os) { *os << c.typed; }

class NewColumnAliasTest : public SelectItemUITest, public ::testing::WithParamInterface<AliasCase> {};

TEST_P(NewColumnAliasTest, GetsAUniqueName) {
  Load(GetParam().sql);
  TmvSelectItem* row = Blank();
  row->SetExpressionStringUI(U16(GetParam().typed));
  EXPECT_TRUE(row->Select());
  EXPECT_TRUE(mv::WideSameText(row->GetAliasString(), U16(GetParam().alias)))
      << GetParam().typed << " got " << U8(row->GetAliasString());
  EXPECT_TRUE(messages.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Names, NewColumnAliasTest,
    ::testing::Values(AliasCase{"SELECT t.a FROM t", "t.b", ""},              // a name of its own
                      AliasCase{"SELECT t.a FROM t", "a", "a1"},              // the field's name is taken
                      AliasCase{"SELECT t.a, t.b AS a1 FROM t", "t.a", "a2"}, // and so is a1
                      AliasCase{"SELECT t.a FROM t", "t.a + t.b", "Column1"}, // unnamed
                      AliasCase{"SELECT t.a FROM t", "t.b * 2", "b"},         // one column named
                      AliasCase{"SELECT t.a FROM t", "'x' x", "x"}));         // its alias

TEST_F(SelectItemUITest, AggregatesNameTheirColumns) {
  Load("SELECT t.a, COUNT(*) FROM t GROUP BY t.a");
  Row(1)->CreateUniqueAlias();
  EXPECT_TRUE(mv::WideSameText(Row(1)->GetAliasString(), u"Column_Count1")) << U8(Row(1)->GetAliasString());
  Load("SELECT t.a, t.b FROM t");
  Row(1)->SetAggregateStringUI(u"sum");
  EXPECT_TRUE(mv::WideSameText(Row(1)->GetAliasString(), u"b_Sum")) << U8(Row(1)->GetAliasString());
  EXPECT_EQ(Sql(), "Select t.a, Sum(t.b) As b_Sum From t Group By t.a");
}

TEST_F(SelectItemUITest, OccupiedNamesAndConflicts) {
  Load("SELECT t.a, t.a, t.*, t.b AS c, t.a + 1 FROM t");
  const std::vector<std::vector<mv::WideString>> names = {{u"a"}, {u"a"}, {u"a", u"b"}, {u"c"}, {}};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Row(i)->GetOccupiedColumnNames(), names[i]) << i;
  EXPECT_TRUE(Row(0)->IsColumnNamesConflict());
  EXPECT_FALSE(Row(3)->IsColumnNamesConflict());
  EXPECT_TRUE(Row(4)->IsUnnamedColumn());
  EXPECT_FALSE(List()->IsUniqueColumnName(u"B", nullptr));
  EXPECT_TRUE(List()->IsUniqueColumnName(u"c", Row(3)));
  EXPECT_TRUE(List()->IsAliasAssigned(u"C"));
  EXPECT_EQ(List()->CreateUniqueAlias(u"c", 0), u"c1");
  EXPECT_EQ(List()->CreateUniqueAlias(u"x", 0), u"x");
  EXPECT_EQ(List()->CreateUniqueAlias(u"x", 1), u"x1");
  List()->AssignAliasesToDuplicateColumnNames();
  EXPECT_EQ(Sql(), "Select t.a As a1, t.a As a2, t.*, t.b As c, t.a + 1 From t");
}

// --- The three messages ---

struct MessageCase {
  const char* name;
  const char* sql;
  std::function<void(SelectItemUITest&)> act;
  const char* message;  // empty: none
  const char* result;
};
void PrintTo(const MessageCase& c, std::ostream* os) { *os << c.name; }

class ConflictMessageTest : public SelectItemUITest, public ::testing::WithParamInterface<MessageCase> {};

TEST_P(ConflictMessageTest, ReachesTheHost) {
  Load(GetParam().sql);
  GetParam().act(*this);
  const std::string message = GetParam().message;
  EXPECT_EQ(messages, message.empty() ? std::vector<std::string>{} : std::vector<std::string>{message});
  EXPECT_EQ(Sql(), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, ConflictMessageTest,
    ::testing::Values(
        MessageCase{"AliasTaken", "SELECT t.a, t.b FROM t", [](auto& t) { t.Row(1)->SetAliasStringUI(u"a"); },
                    "The column with same name already exists in the current sub-query.",
                    "Select t.a, t.b As a From t"},
        MessageCase{"SameAliasDoesNothing", "SELECT t.a, t.b AS \"a\" FROM t",
                    [](auto& t) { t.Row(1)->SetAliasStringUI(u"\"a\""); }, "", "Select t.a, t.b As a From t"},
        MessageCase{"AliasDeleted", "SELECT t.a, t.a AS x FROM t", [](auto& t) { t.Row(1)->SetAliasStringUI(u""); },
                    "Deleting an alias has led to duplicated column names in the current sub-query.",
                    "Select t.a, t.a From t"},
        MessageCase{"StarSelected", "SELECT t.a FROM t",
                    [](auto& t) {
                      TmvSelectItem* row = t.Blank();
                      row->SetFieldExpression(t.Table(), u"");
                      row->SetSelectUI(true);
                    },
                    "Adding this expression has led to duplicated column names in the current sub-query.",
                    "Select t.a, t.* From t"},
        MessageCase{"StarSelectedResolved", "SELECT t.a FROM t",
                    [](auto& t) {
                      t.host->Options.ResolveColumnNamingConflictsAutomatically = true;
                      TmvSelectItem* row = t.Blank();
                      row->SetFieldExpression(t.Table(), u"");
                      row->SetSelectUI(true);
                    },
                    "", "Select t.a As a1, t.* From t"}),
    [](const auto& info) { return std::string(info.param.name); });

// --- Grouping and sort texts ---

TEST_F(SelectItemUITest, GroupingTypeStrings) {
  Load("SELECT t.a, COUNT(t.b) FROM t GROUP BY t.a HAVING t.b > 1");
  struct Case {
    std::function<void(TmvSelectItem*)> set;
    const char* text;
  } cases[] = {
      {[](TmvSelectItem* r) { r->SetGroupingTypeString(u"where"); }, "Where"},
      {[](TmvSelectItem* r) { r->SetGroupingTypeString(u"Group By"); }, "Group By"},
      {[](TmvSelectItem* r) { r->SetGroupingTypeString(u"HAVING"); }, "Having"},
      {[](TmvSelectItem* r) { r->SetGroupingTypeString(u"Max"); }, "Max"},
  };
  for (const Case& c : cases) {
    c.set(Row(2));
    EXPECT_TRUE(mv::WideSameText(Row(2)->GetGroupingTypeString(), U16(c.text))) << c.text;
  }
  Row(2)->SetGroupingTypeString(u"group by");
  EXPECT_TRUE(Row(2)->Grouping());
  EXPECT_EQ(Row(2)->ConditionsType(), mv::ctHaving);
  // A key with criteria in WHERE has no text (the grouping check box shows it).
  Row(2)->SetConditionsType(mv::ctWhere);
  EXPECT_EQ(U8(Row(2)->GetGroupingTypeString()), "");
  const std::vector<mv::WideString> list = Row(0)->GetGroupingTypeStringList();
  ASSERT_GE(list.size(), 4u);
  EXPECT_EQ(std::vector<mv::WideString>(list.begin(), list.begin() + 3),
            (std::vector<mv::WideString>{u"Where", u"Group By", u"Having"}));
  EXPECT_FALSE(list[3].empty());
}

TEST_F(SelectItemUITest, SortStringsMustBeginWithTheWholeWord) {
  Load("SELECT t.a FROM t");
  Row(0)->SetSortTypeString(u"asc");
  EXPECT_EQ(Row(0)->SortType(), mv::stNone);
  Row(0)->SetSortTypeString(u"Ascending Nulls First");
  EXPECT_EQ(Row(0)->SortType(), mv::stAsc);
  Row(0)->SetSortTypeString(u"DESCENDING");
  EXPECT_EQ(Row(0)->SortType(), mv::stDesc);
  EXPECT_EQ(Sql(), "Select t.a From t Order By t.a Desc");
}

// --- UI setters and the other rows ---

TEST_F(SelectItemUITest, SettersKeepTheOtherRowsConsistent) {
  struct Case {
    const char* sql;
    std::function<void(SelectItemUITest&)> act;
    const char* result;
  } cases[] = {
      // Grouping one row groups every shown or sorted plain row.
      {"SELECT t.a, t.b, t.a + t.b FROM t ORDER BY t.b", [](auto& t) { t.Row(0)->SetGroupingUI(true); },
       "Select t.a, t.b, t.a + t.b From t Group By t.a, t.b, t.a + t.b Order By t.b"},
      // In the MS style the criteria of keys go to HAVING.
      {"SELECT t.a, t.b FROM t WHERE t.a = 1",
       [](auto& t) {
         t.host->Options.UseMSStyleGrouping = true;
         t.Row(0)->SetGroupingUI(true);
       },
       "Select t.a, t.b From t Group By t.a, t.b Having t.a = 1"},
      // An aggregate makes the other shown rows keys.
      {"SELECT t.a, t.b FROM t", [](auto& t) { t.Row(1)->SetAggregateStringUI(u"Count"); },
       "Select t.a, Count(t.b) As b_Count From t Group By t.a"},
      // A key given up in a grouped query is hidden and unsorted.
      {"SELECT t.a, t.b, COUNT(*) FROM t GROUP BY t.a, t.b ORDER BY t.b",
       [](auto& t) { t.Row(1)->SetGroupingUI(false); }, "Select t.a, COUNT(*) From t Group By t.a"},
      // A row typed into a grouped query is a key.
      {"SELECT t.a, COUNT(*) FROM t GROUP BY t.a", [](auto& t) { t.Blank()->SetExpressionStringUI(u"t.b"); },
       "Select t.a, COUNT(*), t.b From t Group By t.a, t.b"},
      // Criteria on a key go to HAVING by their type.
      {"SELECT t.a, COUNT(*) FROM t GROUP BY t.a",
       [](auto& t) {
         t.Row(0)->SetConditionsTypeUI(mv::ctHaving);
         t.Row(0)->SetConditionString(0, u"> 1");
       },
       "Select t.a, COUNT(*) From t Group By t.a Having t.a > 1"},
      // A hidden logical row joins each branch of WHERE.
      {"SELECT t.a FROM t WHERE t.a = 1 OR t.a = 2", [](auto& t) { t.Blank()->SetExpressionStringUI(u"t.b > 0"); },
       "Select t.a From t Where t.a = 1 And t.b > 0 Or t.a = 2 And t.b > 0"},
      // Text that is no expression is kept as a string.
      {"SELECT t.a FROM t", [](auto& t) { t.Row(0)->SetExpressionStringUI(u"a b c"); },
       "Select 'a b c' As Column1 From t"},
      // A field typed by name; an alias that needs quotes.
      {"SELECT t.a FROM t",
       [](auto& t) {
         t.Blank()->SetExpressionStringUI(u"b");
         t.Row(1)->SetAliasStringUI(u"my b");
       },
       "Select t.a, t.b As \"my b\" From t"},
  };
  for (const Case& c : cases) {
    host->Options.UseMSStyleGrouping = false;
    Load(c.sql);
    c.act(*this);
    EXPECT_EQ(Sql(), c.result) << c.sql;
  }
  EXPECT_TRUE(messages.empty());
  host->SetSyntaxProvider(nullptr);
  EXPECT_EQ(U8(ThrownMessage([&] { Row(0)->SetExpressionString(u"t.b"); })), "Syntax provider is not specified");
  host->SetSyntaxProvider(&provider);
}

// --- Fields, checks and menus ---

TEST_F(SelectItemUITest, FieldsAddedAndRemovedByName) {
  Load("SELECT t.a FROM t WHERE t.b = 1");
  mv::TmvDatasource* table = Table();
  EXPECT_EQ(List()->FindField(table, u"a"), Row(0));
  EXPECT_EQ(List()->FindField(table, u"b"), Row(1));
  EXPECT_EQ(List()->FindField(table, u""), nullptr);
  EXPECT_EQ(U8(ThrownMessage([&] { List()->AddField(table, u"a b c"); })), "Invalid field name: a b c");
  List()->AddField(table, u"b");
  List()->InsertField(0, table, u"");
  EXPECT_EQ(Sql(), "Select t.*, t.a, t.b From t Where t.b = 1");
  List()->RemoveFields(table, u"a");
  List()->RemoveFields(table, u"b");
  EXPECT_EQ(Sql(), "Select t.* From t Where t.b = 1");
  // The row of a lone column goes; the one with criteria stays hidden.
  ASSERT_EQ(List()->Count(), 3);
  EXPECT_EQ(U8(Row(1)->GetExpressionString()), "t.b");
  EXPECT_FALSE(Row(1)->Select());
  List()->AddExpression(u"t.a * 2");
  EXPECT_EQ(Sql(), "Select t.*, t.a * 2 From t Where t.b = 1");
}

TEST_F(SelectItemUITest, ChecksFollowTheRows) {
  Load("SELECT t.a FROM t WHERE t.b = 1");
  mv::TmvDatasource* table = Table();
  auto checked = [&] {
    std::vector<std::string> names;
    for (auto* field : table->CheckedFields()) names.push_back(field ? U8(field->NameStr()) : "*");
    return names;
  };
  EXPECT_EQ(checked(), std::vector<std::string>{"a"});
  table->SetFieldChecked(table->GetFields()->Items(1), true);
  table->SetFieldChecked(nullptr, true);
  EXPECT_EQ(checked(), (std::vector<std::string>{"*", "a", "b"}));
  EXPECT_EQ(Sql(), "Select t.a, t.b, t.* From t Where t.b = 1");
  table->SetFieldChecked(table->GetFields()->Items(0), false);
  table->SetFieldChecked(nullptr, false);
  EXPECT_EQ(checked(), std::vector<std::string>{"b"});
  table->GetPopupMenu(nullptr)[1].Action();  // Uncheck All
  EXPECT_EQ(Sql(), "Select * From t Where t.b = 1");
  table->GetPopupMenu(nullptr)[0].Action();  // Check All
  EXPECT_EQ(Sql(), "Select t.b, t.a From t Where t.b = 1");
  EXPECT_EQ(checked(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(SelectItemUITest, RowMenuRules) {
  Load("SELECT t.a, t.b FROM t");
  ASSERT_EQ(List()->Count(), 3);
  auto enabled = [&](int row) {
    std::string flags;
    for (const auto& item : Row(row)->GetPopupMenu(nullptr)) flags += item.IsSeparator() ? '-' : item.Enabled ? '1' : '0';
    return flags;
  };
  EXPECT_EQ(enabled(0), "01-11");
  EXPECT_EQ(enabled(1), "11-11");
  EXPECT_EQ(enabled(2), "00-00");
  Row(1)->GetPopupMenu(nullptr)[0].Action();  // Move Up
  EXPECT_EQ(Sql(), "Select t.b, t.a From t");
  Row(1)->GetPopupMenu(nullptr)[4].Action();  // Insert Empty Item
  EXPECT_EQ(List()->Count(), 4);
  Row(0)->GetPopupMenu(nullptr)[3].Action();  // Remove Item
  EXPECT_EQ(Sql(), "Select t.a From t");
  EXPECT_EQ(U8(Row(0)->GetPopupMenu(nullptr)[3].Caption), "Remove Item");
}

}  // namespace
}  // namespace mvtest
