// The catalog queries of the Sybase family: which text each version and
// database gets, how a probe's answer is read, and that a name, however it
// is written, stays one token of the statement.
#include <gtest/gtest.h>

#include <functional>

#include "SybaseScan.h"
#include "dialects/sybase/SybaseCatalogQueries.h"

using namespace mv;

namespace {

// The kinds of the tokens the scanner reads from `text`, blanks and
// comments left out.
std::vector<int32_t> Kinds(const WideString& text) {
  TmvOwned<SybaseScanner> scanner = TmvCreate<SybaseScanner>();
  scanner->Init(text);
  std::vector<int32_t> kinds;
  for (const TmvToken& token : scanner->GetTokens())
    if (!token.IsHidden()) kinds.push_back(token.Kind);
  return kinds;
}

}  // namespace

TEST(SybaseCatalogQueriesTest, EachQueryHoldsItsParts) {
  struct Case {
    WideString text;
    const char16_t* holds;
  };
  const Case cases[] = {
      {kSybaseASAProbeQuery, u"select xp_msver('CompanyName')"},
      {kSybaseASEProbeQuery, u"select @@version"},
      {kSybaseDefaultDatabaseQuery, u"select cast(DB_NAME(DB_ID()) as varchar(255))"},
      {kSybaseDefaultSchemaQuery, u"select cast(user_name() as varchar(255))"},
      {kSybaseDatabasesQuery, u"exec sp_databases"},
      {kSybaseSchemasQuery, u"select NAME from SYSUSERS order by NAME"},
      {SybaseObjectsQuery(u""), u"exec dbo.sp_tables"},
      {SybaseObjectsQuery(u"sales"), u"exec [sales].dbo.sp_tables"},
      {SybaseASARelationsQuery(u""), u"from SYS.SYSFOREIGNKEY fk join SYS.SYSFKCOL k"},
      {SybaseASARelationsQuery(u"db"), u"join [db].SYS.SYSUSERPERM pu on pu.user_id = pt.creator"},
      {SybaseASARelationsQuery(u"db"), u"fk.foreign_key_id as FOREIGN_KEY_ID"},
      {SybaseASERelationsQuery(u""), u"isnull(r.pmrydbname, db_name()) as PK_DATABASE_NAME"},
      {SybaseASERelationsQuery(u"db"), u"isnull(r.frgndbname, 'db') as FK_DATABASE_NAME"},
      {SybaseASERelationsQuery(u"db"), u"col_name(r.tableid, r.fokey4) as FK_FIELD_NAME from [db].dbo.sysreferences r "
                                       u"where r.keycnt >= 4"},
      {SybaseASERelationsQuery(u"db"), u"r.constrid as FOREIGN_KEY_ID"},
      {SybaseASAFieldsQuery(u"dba", u"t"), u"select cname, coltype, length, default_value, nulls, in_primary_key "
                                           u"from SYS.SYSCOLUMNS where tname = 't' and creator = 'dba'"},
      {SybaseASEFieldsQuery(u"dbo", u"t"), u"select c.name, t.name as column_type, c.length, c.prec, c.scale, "},
      {SybaseASEFieldsQuery(u"dbo", u"t"), u"where c.id = object_id('dbo.t')"},
  };
  for (const Case& c : cases) EXPECT_NE(c.text.find(c.holds), WideString::npos) << UTF8Encode(c.text);
}

TEST(SybaseCatalogQueriesTest, ProbeAnswers) {
  EXPECT_TRUE(IsSybaseASAProbeAnswer(u"iAnywhere Solutions, Inc."));
  EXPECT_TRUE(IsSybaseASAProbeAnswer(u"SYBASE, Inc."));
  EXPECT_FALSE(IsSybaseASAProbeAnswer(u"Microsoft Corporation"));
  EXPECT_TRUE(IsSybaseASEProbeAnswer(u"Adaptive Server Enterprise/15.7/EBF 1234/P/x86_64"));
  EXPECT_FALSE(IsSybaseASEProbeAnswer(u"Microsoft SQL Server 2008"));
}

TEST(SybaseCatalogQueriesTest, AHostileNameLeavesTheStatementAsItIs) {
  using Query = std::function<WideString(const WideString&)>;
  const Query queries[] = {
      [](const WideString& name) { return SybaseObjectsQuery(name); },
      [](const WideString& name) { return SybaseASARelationsQuery(name); },
      [](const WideString& name) { return SybaseASERelationsQuery(name); },
      [](const WideString& name) { return SybaseASAFieldsQuery(name, name); },
      [](const WideString& name) { return SybaseASEFieldsQuery(name, name); },
  };
  const WideString hostile[] = {u"x]; drop table t; --", u"o'brien' or 1=1 --", u"a]]b'' /*", u"[\"q\"]"};
  for (const Query& query : queries) {
    const std::vector<int32_t> plain = Kinds(query(u"db"));
    for (const WideString& name : hostile) EXPECT_EQ(Kinds(query(name)), plain) << UTF8Encode(query(name));
  }
}
