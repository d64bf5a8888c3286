// The catalog queries of SQL Server: which text each version gets, and that
// a name, however it is written, stays one token of the statement.
#include <gtest/gtest.h>

#include <functional>

#include "MSSQLScan.h"
#include "dialects/mssql/MSSQLCatalogQueries.h"

using namespace mv;

namespace {

// The kinds of the tokens the scanner reads from `text`, blanks and
// comments left out.
std::vector<int32_t> Kinds(const WideString& text) {
  TmvOwned<MSSQLScanner> scanner = TmvCreate<MSSQLScanner>();
  scanner->Init(text);
  std::vector<int32_t> kinds;
  for (const TmvToken& token : scanner->GetTokens())
    if (!token.IsHidden()) kinds.push_back(token.Kind);
  return kinds;
}

}  // namespace

TEST(MSSQLCatalogQueriesTest, EachVersionGetsItsQuery) {
  struct Case {
    WideString text;
    const char16_t* holds;
  };
  const Case cases[] = {
      {MSSQLDatabasesQuery(9), u"FROM master.sys.databases AS dtb"},
      {MSSQLDatabasesQuery(8), u"FROM master.dbo.sysdatabases AS dtb"},
      {MSSQLDatabasesQuery(7), u"EXEC sp_databases"},
      {MSSQLSchemasQuery(12, u"sales"), u"select NAME from [sales].SYS.SCHEMAS order by NAME"},
      {MSSQLSchemasQuery(8, u""), u"select NAME from SYSUSERS where ISSQLROLE=0"},
      {MSSQLObjectsQuery(10, u""), u"FROM sys.all_objects AS ao"},
      {MSSQLObjectsQuery(10, u"db"), u"HAS_PERMS_BY_NAME('[db].' + QUOTENAME(sh.name)"},
      {MSSQLObjectsQuery(8, u"db"), u"exec [db].dbo.sp_tables"},
      {MSSQLLinkedServerTablesQuery(u"srv", u"cat"), u"@table_server='srv', @table_catalog='cat'"},
      {MSSQLRelationsQuery(9, u"db"), u"DB_NAME(DB_ID('db')) as PK_TABLE_DATABASE"},
      {MSSQLRelationsQuery(8, u"db"), u"from [db].INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS rc"},
      {MSSQLTableFunctionsQuery(9, u"db"), u"FROM [db].sys.all_objects AS udf INNER JOIN [db].sys.schemas AS sudf"},
      {MSSQLTableFunctionsQuery(9, u""), u"udf.type in ('TF', 'FN', 'IF', 'FS', 'FT')"},
      {MSSQLTableFunctionsQuery(8, u"db"), u"FROM [db].dbo.sysobjects AS udf INNER JOIN [db].dbo.sysusers AS sudf"},
      {MSSQLTableFunctionsQuery(8, u""), u"OBJECTPROPERTY(udf.id, N'IsTableFunction') = 1 AND udf.name not like N'#%'"},
      {MSSQLAllObjectsProbeQuery(u"db"), u"from [db].sys.all_objects"},
      {MSSQLSynonymsQuery(u"db"), u"FROM [db].sys.synonyms AS syn INNER JOIN [db].sys.schemas AS sh"},
  };
  for (const Case& c : cases) EXPECT_NE(c.text.find(c.holds), WideString::npos) << UTF8Encode(c.text);
}

TEST(MSSQLCatalogQueriesTest, ServerVersionOfTheAnswer) {
  const int answers[][3] = {{7, 1, 7}, {10, 1, 10}, {12, 1, 12}, {6, 1, 7}, {13, 1, 12}, {15, 1, 12}, {9, 0, 12}};
  for (const auto& a : answers) EXPECT_EQ(CalcServerVersionMSSQL(a[0], a[1] != 0), a[2]) << a[0];
}

TEST(MSSQLCatalogQueriesTest, AHostileNameLeavesTheStatementAsItIs) {
  using Query = std::function<WideString(const WideString&)>;
  const Query queries[] = {
      [](const WideString& name) { return MSSQLSchemasQuery(9, name); },
      [](const WideString& name) { return MSSQLSchemasQuery(8, name); },
      [](const WideString& name) { return MSSQLObjectsQuery(9, name); },
      [](const WideString& name) { return MSSQLObjectsQuery(8, name); },
      [](const WideString& name) { return MSSQLRelationsQuery(9, name); },
      [](const WideString& name) { return MSSQLRelationsQuery(8, name); },
      [](const WideString& name) { return MSSQLLinkedServerTablesQuery(name, name); },
      [](const WideString& name) { return MSSQLTableFunctionsQuery(9, name); },
      [](const WideString& name) { return MSSQLTableFunctionsQuery(8, name); },
      [](const WideString& name) { return MSSQLAllObjectsProbeQuery(name); },
      [](const WideString& name) { return MSSQLSynonymsQuery(name); },
  };
  const WideString hostile[] = {u"x]; drop table t; --", u"o'brien' or 1=1 --", u"a]]b'' /*", u"[\"q\"]"};
  for (const Query& query : queries) {
    const std::vector<int32_t> plain = Kinds(query(u"db"));
    for (const WideString& name : hostile) EXPECT_EQ(Kinds(query(name)), plain) << UTF8Encode(query(name));
  }
}
