// mvsql transform, and the limits the query transformer writes through the
// SQL Server dialect (TOP; OFFSET/FETCH from 2012 on; ROW_NUMBER for 2005
// and 2008), with the statement that has an INTO clause passing through.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "RunTool.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "dialects/mssql/MSSQLSyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/MainThread.h"
#include "transform/QueryTransformer.h"

using mvtest::RunMvsql;

namespace {

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

struct CliCase {
  std::vector<std::string> args;
  const char* sql;
  int exitCode;
  const char* out;  // lower case, the one-line output without its CR LF; or a piece of the error
};

TEST(TransformCommand, FiltersSortsAggregatesAndErrors) {
  // A small database whose catalog binds the names.
  mvtest::TempFile database("", ".db");
  {
    mv::TmvSQLiteConnection connection(mv::UTF8Decode(database.path()));
    connection.ExecSQL(u"create table t(a integer, b integer)");
  }
  const std::vector<CliCase> cases = {
      {{}, "SELECT t.a, t.b FROM t", 0, "select t.a, t.b from t"},
      {{"--filter", "a = 1", "--filter", "b is null"}, "SELECT t.a, t.b FROM t", 0,
       "select t.a, t.b from t where (t.a = 1 or t.b is null)"},
      {{"--and", "--filter", "a not like 'x%'", "--filter", "b between 1 and 2"}, "SELECT t.a, t.b FROM t", 0,
       "select t.a, t.b from t where t.a not like 'x%' and t.b between 1 and 2"},
      {{"--sort", "b desc", "--sort", "a"}, "SELECT t.a, t.b FROM t", 0,
       "select t.a, t.b, t.b as \"t.b\", t.a as \"t.a\" from t order by \"t.b\" desc, \"t.a\""},
      {{"--aggregate", "count(*)", "--aggregate", "SUM(b)"}, "SELECT t.a, t.b FROM t", 0,
       "select count(*), sum(q.b) from (select t.a, t.b from t) q"},
      {{"--filter", "zz = 1"}, "SELECT t.a, t.b FROM t", 1, "no single output column named 'zz'"},
      {{"--filter", "a ~ 1"}, "SELECT t.a, t.b FROM t", 1, "no operator"},
      {{"--filter", "a is null 1"}, "SELECT t.a, t.b FROM t", 1, "nothing may follow 'is null'"},
      {{"--aggregate", "median(a)"}, "SELECT t.a, t.b FROM t", 1, "unknown function 'median'"},
      {{"--limit", "ten"}, "SELECT t.a FROM t", 2, "--limit takes a whole number"},
      {{"--dialect", "mssql", "--limit", "5"}, "SELECT t.a FROM t", 0, "select top 5 t.a from t"},
  };
  for (const CliCase& c : cases) {
    std::vector<std::string> args{"transform", "--one-line", "--sqlite", database.path()};
    args.insert(args.end(), c.args.begin(), c.args.end());
    args.push_back("-");
    const mvtest::ToolResult result = RunMvsql(args, c.sql);
    SCOPED_TRACE(c.sql);
    EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
    if (c.exitCode == 0)
      EXPECT_EQ(Lower(result.out), std::string(c.out) + "\r\n");
    else
      EXPECT_NE(result.err.find(c.out), std::string::npos) << result.err;
  }
}

class TransformLimits : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  TransformLimits() {
    builder->SetSyntaxProvider(provider.get());
    mv::TmvMetadataTable* table = builder->MetadataContainer()->AddTable(u"t");
    for (const char16_t* field : {u"a", u"b"}) table->GetFields()->AddField(field);
  }
  ~TransformLimits() override { mv::MainThreadDispatcher().ProcessPending(); }

  mv::TmvOwned<mv::TmvMSSQLSyntaxProvider> provider = mv::TmvCreate<mv::TmvMSSQLSyntaxProvider>();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
};

struct LimitCase {
  mv::TmvQBServerVersionMSSQL version;
  const char* source;
  const char* offset;
  const char* count;
  // Lower case, one line; pieces separated by '|' are looked for in order.
  const char* expected;
};

// Whether the pieces of `pattern` (split at '|') stand in `text` in order;
// a pattern without '|' must equal the text.
bool Matches(const std::string& text, const std::string& pattern) {
  if (pattern.find('|') == std::string::npos) return text == pattern;
  size_t at = 0;
  for (size_t start = 0; start <= pattern.size();) {
    const size_t end = std::min(pattern.find('|', start), pattern.size());
    at = text.find(pattern.substr(start, end - start), at);
    if (at == std::string::npos) return false;
    start = end + 1;
  }
  return true;
}

TEST_F(TransformLimits, SqlServerShapesByVersion) {
  const LimitCase cases[] = {
      {mv::svMSSQL2012, "SELECT t.a FROM t", "", "5", "select top 5 t.a from t"},
      {mv::svMSSQL2012, "SELECT t.a FROM t ORDER BY t.b", "10", "5",
       "select t.a from t order by t.b offset 10 rows fetch first 5 rows only"},
      {mv::svMSSQL2012, "SELECT t.a FROM t", "10", "5",
       "select t.a from t order by 'a' offset 10 rows fetch first 5 rows only"},
      {mv::svMSSQL2008, "SELECT t.a FROM t ORDER BY t.b", "10", "5",
       "row_number() over (order by t.b) as rncolumn from t|q where q.rncolumn > 10 and q.rncolumn <= 10 + 5"},
      {mv::svMSSQL2005, "SELECT t.a FROM t", "3", "",
       "select q.a from (select t.a, row_number() over (order by @@version) as rncolumn from t) q where q.rncolumn > 3"},
  };
  for (const LimitCase& c : cases) {
    SCOPED_TRACE(c.source);
    provider->SetServerVersion(c.version);
    builder->SetSql(mv::UTF8Decode(c.source));
    const mv::WideString source = builder->GetSql();
    auto transformer = mv::TmvCreate<mv::TmvQueryTransformer>();
    transformer->SetQueryBuilder(builder.get());
    EXPECT_TRUE(transformer->GetIsSupportLimitCount());
    transformer->Skip(mv::UTF8Decode(c.offset)).Take(mv::UTF8Decode(c.count));
    const std::string sql = Lower(mv::UTF8Encode(transformer->GetSql()));
    EXPECT_TRUE(Matches(sql, c.expected)) << sql;
    EXPECT_EQ(builder->GetSql(), source);
  }
}

TEST_F(TransformLimits, AQueryWithLimitsKeepsItsOrderInsideWhenWrapped) {
  provider->SetServerVersion(mv::svMSSQL2012);
  builder->SetSql(u"SELECT TOP 3 t.a, t.b FROM t ORDER BY t.b");
  auto transformer = mv::TmvCreate<mv::TmvQueryTransformer>();
  transformer->SetQueryBuilder(builder.get());
  transformer->Where(transformer->Columns().ColumnByOriginalName(u"a")->Equal(u"1"));
  EXPECT_EQ(Lower(mv::UTF8Encode(transformer->GetSql())),
            "select * from (select top 3 t.a, t.b from t order by t.b) q where t.a = 1");
}

TEST_F(TransformLimits, AStatementWithIntoPassesThrough) {
  builder->SetSql(u"SELECT t.a INTO t2 FROM t");
  const mv::WideString source = builder->GetSql();
  auto transformer = mv::TmvCreate<mv::TmvQueryTransformer>();
  transformer->SetQueryBuilder(builder.get());
  transformer->Where(u"t.a = 1").Take(u"5");
  EXPECT_FALSE(transformer->IsTransformable());
  EXPECT_EQ(transformer->GetSql(), source);
  EXPECT_EQ(transformer->Filters().Count(), 1);
}

}  // namespace
