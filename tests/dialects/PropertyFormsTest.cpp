// The properties forms as a user drives them: the query builder holds a
// statement in a dialect, an object's form opens through the model (as the
// designer's menu entry does), the steps set or check its controls, OK runs
// the form's test, and the text of the query follows, or the test's message
// keeps the form open.
#include <gtest/gtest.h>

#include <cctype>
#include <functional>

#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "frontend/SyntaxProvidersList.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/PropertyForms.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "support/MainThread.h"

namespace {

using mv::UTF8Decode;
using mv::UTF8Encode;

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Steps: "name=text" sets an edit (or a choice's index), "+name" clicks a box
// or a radio button, "?name=text" expects that text, "?name" / "!name" a
// checked / unchecked box, "~name" a disabled control.
class Interaction : public mv::ImvUserInteraction {
 public:
  std::vector<std::string> steps;
  std::string error;  // the message of the form's test at OK
  bool InputBox(const mv::WideString&, const mv::WideString&, mv::WideString&) override { return false; }
  bool Confirm(const mv::WideString&) override { return false; }
  bool ShowPropertiesForm(mv::TmvQBPropertiesForm& form) override {
    for (const std::string& step : steps) Apply(form, step);
    try {
      form.CheckCanClose();
    } catch (const mv::Exception& e) {
      error = UTF8Encode(e.Message());
      return false;
    }
    return true;
  }

 private:
  static void Apply(mv::TmvQBPropertiesForm& form, const std::string& step) {
    const char kind = std::string("+?!~").find(step[0]) != std::string::npos ? step[0] : '=';
    const std::string body = kind == '=' ? step : step.substr(1);
    const size_t eq = body.find('=');
    const std::u16string control = UTF8Decode(body.substr(0, eq));
    const std::string value = eq == std::string::npos ? "" : body.substr(eq + 1);
    switch (kind) {
      case '+': form.Click(control); break;
      case '~': EXPECT_FALSE(form.Enabled(control)) << step; break;
      case '!': EXPECT_FALSE(form.Checked(control)) << step; break;
      case '?':
        if (eq == std::string::npos)
          EXPECT_TRUE(form.Checked(control)) << step;
        else
          EXPECT_EQ(UTF8Encode(form.Text(control)), value) << step;
        break;
      default: form.SetText(control, UTF8Decode(value));
    }
  }
};

struct FormCase {
  const char* dialect;  // a provider class
  const char* object;   // "query", "link", or the alias of a datasource
  const char* sql;
  std::vector<std::string> steps;
  const char* expected;  // the query's text after OK, lower case; or the message at OK
};

class PropertyFormsTest : public ::testing::TestWithParam<FormCase> {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  ~PropertyFormsTest() override { mv::MainThreadDispatcher().ProcessPending(); }
};

mv::TmvQueryBuilderControlOwner* FindObject(mv::TmvQueryBuilder& builder, const std::string& name) {
  mv::TmvUnionSubQuery* select = builder.Query()->FirstSelect();
  if (name == "query") return select;
  mv::TmvDatasourceGroup* group = select->Datasources();
  if (name == "link") {
    std::vector<mv::TmvLink*> links;
    group->GetLinksRecursive(links);
    return links.empty() ? nullptr : links.front();
  }
  for (int i = 0; i < group->Count(); ++i)
    if (auto* datasource = mv::TmvCast<mv::TmvDatasource>(group->Items(i)))
      if (UTF8Encode(datasource->GetNameInQuery()) == name) return datasource;
  return nullptr;
}

TEST_P(PropertyFormsTest, EditsTheQuery) {
  const FormCase& c = GetParam();
  auto provider = mv::TmvOwned<mv::TmvBaseSyntaxProvider>(
      mv::SyntaxProvidersList().FindClassByClassName(c.dialect)->CreateRaw());
  auto builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  builder->SetSyntaxProvider(provider.get());
  Interaction interaction;
  interaction.steps = c.steps;
  builder->SetUserInteraction(&interaction);
  builder->SetSql(UTF8Decode(c.sql));
  mv::TmvQueryBuilderControlOwner* object = FindObject(*builder, c.object);
  ASSERT_NE(object, nullptr) << c.object;
  const bool saved = mv::EditProps(object);
  if (!interaction.error.empty()) {
    EXPECT_FALSE(saved);
    EXPECT_EQ(interaction.error, c.expected);
    return;
  }
  EXPECT_TRUE(saved);
  EXPECT_EQ(Lower(UTF8Encode(builder->GetSql())), c.expected);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(QueryForms, PropertyFormsTest, ::testing::Values(
    FormCase{"TmvSQL92SyntaxProvider", "query", "select a from t", {"?rbNone", "+rbDistinct"}, "select distinct a from t"},
    FormCase{"TmvSQL92SyntaxProvider", "query", "select all a from t", {"?rbAll", "+rbNone"}, "select a from t"},
    FormCase{"TmvMSSQLSyntaxProvider", "query", "select a from t",
             {"~eTop", "+cbTop", "eTop=10", "+cbTopPercent", "+rbDistinct"}, "select distinct top 10 percent a from t"},
    FormCase{"TmvMSSQLSyntaxProvider", "query", "select top 5 with ties a into t2 from t order by a",
             {"?eTop=5", "?cbTopWithTies", "?eInto=t2", "+cbTop", "+cbInto"}, "select a from t order by a"},
    FormCase{"TmvMSSQLSyntaxProvider", "query", "select a from t group by a", {"+cbGroupByAll", "cbGroupByWith=2"},
             "select a from t group by all a with rollup"},
    FormCase{"TmvMSSQLSyntaxProvider", "query", "select a from t", {"~cbGroupByAll", "+cbInto", "eInto= "},
             "Invalid object name"},
    FormCase{"TmvMSAccessSyntaxProvider", "query", "select a from t", {"+rbDistinctRow", "+cbTop", "eTop=3"},
             "select distinctrow top 3 a from t"},
    FormCase{"TmvSybaseSyntaxProvider", "query", "select a from t", {"+rbTop", "eTop=3", "+cbStartingAt", "eStartingAt=5"},
             "select top 3 start at 5 a from t"},
    FormCase{"TmvSybaseSyntaxProvider", "query", "select top 3 a from t", {"?eTop=3", "+rbFirst"}, "select first a from t"},
    FormCase{"TmvAdvantageSyntaxProvider", "query", "select a from t", {"+rbTopPercent", "eTopPercent=10"},
             "select top 10 percent a from t"},
    FormCase{"TmvAdvantageSyntaxProvider", "query", "select a from t", {"+rbTop", "eTop=ten"},
             "'ten' is not a valid integer value"},
    FormCase{"TmvTeradataSyntaxProvider", "query", "select a from t", {"+cbTop", "?eTop=1", "+cbTopWithTies"},
             "select top 1 with ties a from t"},
    FormCase{"TmvPGSQLSyntaxProvider", "query", "select a from t",
             {"+cbLimit", "eLimit=5", "+cbOffset", "eOffset=10", "+checkIntoClause", "+checkTemporary", "editTableName=tmp"},
             "select a into temporary table tmp from t limit 5 offset 10"},
    FormCase{"TmvPGSQLSyntaxProvider", "query", "select a from t limit 5", {"?eLimit=5", "+cbLimit"}, "select a from t"},
    FormCase{"TmvPGSQLSyntaxProvider", "query", "select a from t", {"+checkIntoClause", "editTableName="},
             "INTO TABLE: Invalid object name"},
    FormCase{"TmvSQLiteSyntaxProvider", "query", "select a from t limit 3", {"?eLimit=3", "+cbOffset", "eOffset=2"},
             "select a from t limit 3 offset 2"},
    FormCase{"TmvNetezzaSyntaxProvider", "query", "select a from t", {"+cbLimit", "eLimit=x"},
             "'x' is not a valid integer value"},
    FormCase{"TmvMYSQLSyntaxProvider", "query", "select a from t",
             {"+cbLimit", "eLimit=5", "+cbLock", "+rbLockForUpdate"}, "select a from t limit 5 for update"},
    FormCase{"TmvMYSQLSyntaxProvider", "query", "select a from t",
             {"+cbInto", "eFileName=o'ut.txt", "+cbFTerminated", "eFTerminated=,"},
             "select a into outfile 'o''ut.txt' fields terminated by ',' from t"},
    FormCase{"TmvDB2SyntaxProvider", "query", "select a from t", {"+cbFirst", "eFirst=3"},
             "select a from t fetch first 3 rows only"},
    FormCase{"TmvFirebirdSyntaxProvider", "query", "select a from t", {"+cbFirst", "eFirst=2", "+cbSkip", "eSkip=4"},
             "select first 2 skip 4 a from t"},
    FormCase{"TmvFirebirdSyntaxProvider", "query", "select a from t", {"+cbFirst", "eFirst=2 +"},
             "Unexpected token \"EOF\" at line 1, pos 4"},
    FormCase{"TmvIBSyntaxProvider", "query", "select a from t", {"+checkRows", "editRows=1", "+checkTo", "editTo=10"},
             "select a from t rows 1 to 10"},
    FormCase{"TmvOracleSyntaxProvider", "query", "select a from t", {"+rbUnique"}, "select unique a from t"}));

INSTANTIATE_TEST_SUITE_P(LinkAndDatasourceForms, PropertyFormsTest, ::testing::Values(
    FormCase{"TmvSQL92SyntaxProvider", "link", "select * from a inner join b on a.id = b.id",
             {"?eExpression=a.id = b.id", "+cbAllFromLeft", "+cbAllFromRight"},
             "select * from a full join b on a.id = b.id"},
    // No FULL JOIN in Access: the second box clears the first.
    FormCase{"TmvMSAccessSyntaxProvider", "link", "select * from a inner join b on a.id = b.id",
             {"+cbAllFromLeft", "+cbAllFromRight", "!cbAllFromLeft"}, "select * from a right join b on a.id = b.id"},
    FormCase{"TmvSQL92SyntaxProvider", "link", "select * from a inner join b on a.id = b.id",
             {"eExpression=a.id = b.id and a.x = 1"}, "select * from a inner join b on a.id = b.id and a.x = 1"},
    FormCase{"TmvSQL92SyntaxProvider", "link", "select * from a inner join b on a.id = b.id", {"eExpression=a.id ="},
             "\"a.id =\" is not valid expression"},
    // Where-links have outer sides only where the dialect marks them.
    FormCase{"TmvSQL92SyntaxProvider", "link", "select * from a, b where a.id = b.id", {"~cbAllFromLeft"},
             "select * from a, b where a.id = b.id"},
    FormCase{"TmvSQL92SyntaxProvider", "b", "select * from t1 a, t2 b", {"?eObject=t2", "eAlias=a"},
             "Alias \"a\" already exists"},
    FormCase{"TmvSQL92SyntaxProvider", "b", "select * from t1 a, t2 b", {"eAlias=B"}, "select * from t1 a, t2 b"},
    FormCase{"TmvSQL92SyntaxProvider", "b", "select * from t1 a, t2 b", {"eAlias=c"}, "select * from t1 a, t2 c"},
    FormCase{"TmvSQL92SyntaxProvider", "q", "select * from (select 1 as x) q", {"eAlias="},
             "select * from (select 1 as x) query1"},
    FormCase{"TmvPGSQLSyntaxProvider", "q", "with q as (select 1 as x) select * from q", {"eObject=q2"},
             "with q2 as (select 1 as x) select * from q2"}));
// clang-format on

TEST(PropertyFormsClasses, DialectsWithoutAQueryForm) {
  mv::InitializeEngine();
  for (const char* dialect : {"TmvSQL89SyntaxProvider", "TmvInformixSyntaxProvider", "TmvMimerSQLSyntaxProvider"}) {
    auto provider = mv::TmvOwned<mv::TmvBaseSyntaxProvider>(
        mv::SyntaxProvidersList().FindClassByClassName(dialect)->CreateRaw());
    auto builder = mv::TmvCreate<mv::TmvQueryBuilder>();
    builder->SetSyntaxProvider(provider.get());
    builder->SetSql(u"select a from t");
    EXPECT_FALSE(mv::CanEditProps(builder->Query()->FirstSelect())) << dialect;
    EXPECT_TRUE(mv::CanEditProps(builder->Query()->FirstSelect()->Datasources()->Items(0))) << dialect;
  }
}

}  // namespace
