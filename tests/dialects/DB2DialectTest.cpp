// The DB2 dialect: the size of its grammar and scanner, system names, what
// it reads and prints back (the statement's tail, FETCH FIRST, NULLS,
// LATERAL, VALUES, TABLE(...), TABLESAMPLE, durations, special registers,
// LISTAGG), errors with their position, the two naming conventions, the row
// limits (FETCH FIRST and the row-number wrapper, run on Chinook in SQLite)
// and the catalog statements with hostile names.
#include <gtest/gtest.h>

#include <functional>

#include "ChinookLoader.h"
#include "DB2Pars.h"
#include "DB2Scan.h"
#include "DialectFixture.h"
#include "ScanTokens.h"
#include "ScriptedServer.h"
#include "dialects/db2/DB2CatalogQueries.h"
#include "dialects/db2/DB2SyntaxProvider.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataRelation.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;

namespace {

class DB2DialectTest : public mvtest::DialectFixture<TmvDB2SyntaxProvider> {
 protected:
  void Use(TmvDb2NamingConventions convention) {
    provider_.SetNamingConvention(convention);
    context_.SetSyntaxProvider(nullptr);
    context_.SetSyntaxProvider(&provider_);
  }
  std::string Limited(const std::string& text, const char16_t* offset, const char16_t* count) {
    auto statement = context_.ParseSelect(UTF8Decode(text));
    return Print(provider_.TransformQueryLimits(statement.get(), offset, count).get());
  }
};

// The kinds of the tokens the scanner reads from `text`, blanks left out.
std::vector<int32_t> Kinds(const WideString& text) {
  std::vector<int32_t> kinds;
  for (const mvtest::ScannedToken& token : mvtest::ScanTokens<DB2Scanner>(text)) kinds.push_back(token.kind);
  return kinds;
}

}  // namespace

TEST_F(DB2DialectTest, SizesAndLists) {
  EXPECT_EQ(DB2Parser::RuleCount, 77);
  EXPECT_EQ(DB2Parser::IterCount, 25);
  EXPECT_EQ(DB2Scanner::KeywordCount, 557);
  EXPECT_EQ(DB2Scanner::NoSym, 601);
  EXPECT_EQ(provider_.GetKeywords().size(), 535u);
  EXPECT_EQ(provider_.ServerName(), u"IBM DB2");
  EXPECT_EQ(provider_.GetQueryToLoadFieldsTemplate(), u"select {0} from {1} a fetch first row only");
  EXPECT_EQ(provider_.GetSimpleEmptyFromSubquery(), u"(SELECT NULL FROM SYSIBM.SYSDUMMY1)");
  EXPECT_EQ(provider_.CreateWrapperForStoredProc(u"f(1)"), u"TABLE(f(1))");
  EXPECT_TRUE(provider_.IsFromClauseMandatory());
  for (const char16_t* sized : {u"char", u"CHARACTER", u"varchar", u"graphic", u"vargraphic"})
    EXPECT_FALSE(provider_.IsFixedSizeType(sized)) << UTF8Encode(sized);
  for (const char16_t* fixed : {u"integer", u"clob", u"timestamp"}) EXPECT_TRUE(provider_.IsFixedSizeType(fixed));
  EXPECT_NE(SyntaxProvidersList().FindClassByClassName("tmvdb2syntaxprovider"), nullptr);
}

TEST_F(DB2DialectTest, Scanner) {
  using T = DB2Scanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"LIB/FILE lib/\"F\" \"L\"/f \"L\"/\"F\"",
       {{T::tkSystemNameToken, u"LIB/FILE"}, {T::tkSystemQuotedNameToken, u"lib/\"F\""},
        {T::tkQuotedSystemNameToken, u"\"L\"/f"}, {T::tkQuotedSystemQuotedNameToken, u"\"L\"/\"F\""}}},
      // a/b and a/2 are names; a division needs blanks.
      {u"a/2 a / x", {{T::tkSystemNameToken, u"a/2"}, {T::tkIdentifierToken, u"a"}, {T::tkSlash, u"/"},
                      {T::tkIdentifierToken, u"x"}}},
      {u"#t @x $y a#@$", {{T::tkIdentifierToken, u"#t"}, {T::tkIdentifierToken, u"@x"},
                          {T::tkIdentifierToken, u"$y"}, {T::tkIdentifierToken, u"a#@$"}}},
      {u"N'x' X'1F' G'y' 'it''s'", {{T::tkNationalStringToken, u"N'x'"}, {T::tkHexStringToken, u"X'1F'"},
                                   {T::tkGraphicStringToken, u"G'y'"}, {T::tkStringToken, u"'it''s'"}}},
      {u"0x1F end-exec", {{T::tkIntegerToken, u"0"}, {T::tkIdentifierToken, u"x1F"}, {T::tkEndExec, u"end-exec"}}},
      {u"Minus concat ~", {{T::kwMINUS, u"Minus"}, {T::kwCONCAT, u"concat"}, {T::kwTILDE, u"~"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(mvtest::ScanTokens<DB2Scanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(DB2DialectTest, ReadsAndPrintsBack) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t order by a for update of a, b optimize for 1 rows with rs use and keep share locks",
       "Select a From t Order By a For Update Of a, b Optimize For 1 Row With RS Use And Keep Share Locks"},
      {"select a from t for read only optimize for 2 row with ur", "Select a From t For Read Only Optimize For 2 Rows With UR"},
      {"select a from t for fetch only", "Select a From t For Fetch Only"},
      {"select a from t order by a desc nulls last fetch first 5 rows only",
       "Select a From t Order By a Desc Nulls Last Fetch First 5 Rows Only"},
      {"select a from t fetch first row only union all select b from u minus select c from v",
       "Select a From t Fetch First Row Only union All Select b From u minus Select c From v"},
      {"with c (x) as (select a from t) select x from c except all select 1 from sysibm.sysdummy1",
       "With c(x) As (Select a From t) Select x From c except All Select 1 From sysibm.sysdummy1"},
      {"select a concat b || c, d + 5 days - 2 months, (a, b), -x from t",
       "Select a Concat b || c, d + 5 Days - 2 Months, (a, b), -x From t"},
      {"select current date, current timestamp, current schema, current lock timeout, user from t",
       "Select Current Date, Current TimeStamp, Current Schema, Current Lock Timeout, User From t"},
      {"select date '2001-01-01', timestamp '2001-01-01-10.00.00', n'x', x'1F' from t",
       "Select Date '2001-01-01', TimeStamp '2001-01-01-10.00.00', n'x', x'1F' From t"},
      {"select row_number() over (partition by a order by b desc), listagg(c, ',') within group (order by c) from t",
       "Select row_number() Over (Partition By a Order By b Desc), ListAgg(c, ',') Within Group (Order By c) From t"},
      {"select position('a' in b using octets), trim(l 'x' from c), cast(d as varchar(10) ccsid 1208) from t",
       "Select Position('a' In b Using Octets), Trim(L 'x' From c), Cast(d As VarChar(10) CCSID 1208) From t"},
      {"select cast(a as char(5) for bit data), cast(b as decimal(10, 2)), day(c) from t",
       "Select Cast(a As Char(5) For Bit Data), Cast(b As Decimal(10, 2)), Day(c) From t"},
      {"select x.a from t, lateral (select a from u where u.b = t.b) x", "Select x.a From t, Lateral (Select a From u Where u.b = t.b) x"},
      {"select * from (values (1, 'a'), (2, 'b')) v (n, s)", "Select * From (Values (1, 'a'), (2, 'b')) v(n, s)"},
      {"select * from table(f(1, 2)) x join t tablesample bernoulli (10) repeatable (5) on 1 = 1",
       "Select * From Table(f(1, 2)) x Inner Join t TableSample Bernoulli (10) Repeatable (5) On 1 = 1"},
      {"select * from only (t) x", "Select * From Only(t) x"},
      // Keywords that stand for names where nothing else fits.
      {"select order, from from select", "Select order, from From select"},
      // A division without blanks scans as one system name.
      {"select a/b/2, price/2 from t", "Select a / b / 2, price / 2 From t"},
      {"select count(*) from t where a = ? and b = :v and c in (select d from u)",
       "Select count(*) From t Where a = ? And b = :v And c In (Select d From u)"},
      // Errors with the place where the text stops making sense.
      {"select 1", "error: Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 9"},
      {"select a from t limit 5", "error: Invalid SELECT statement.\r\n Unexpected token \"5\" at line 1, pos 23"},
      {"select a from t optimize for 2", "error: Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 31"},
      {"select a from t with xx", "error: Invalid SELECT statement.\r\n Unexpected token \"xx\" at line 1, pos 22"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(DB2DialectTest, NamingConventions) {
  // A system name reads under both conventions; a table's parts print with
  // the convention's separator, and under system naming a bound column's
  // prefix is the object's name, its default alias.
  struct Case {
    TmvDb2NamingConventions convention;
    const char* print;
    bool defaultAliases;
  };
  const Case cases[] = {{db2ncSql, "Select LIB.T.a From LIB.T, Q.\"R s\"", false},
                        {db2ncSystem, "Select T.a From LIB/T, Q/\"R s\"", true}};
  const auto bound = [this](const std::string& text) {
    auto statement = context_.ParseSelect(UTF8Decode(text));
    statement->PrepareAndFixupRecursive();
    return Print(statement.get());
  };
  for (const Case& c : cases) {
    Use(c.convention);
    EXPECT_EQ(bound("select LIB/T.a from LIB/T, \"Q\"/\"R s\""), c.print);
    EXPECT_EQ(bound(c.print), c.print);
    EXPECT_EQ(provider_.GetUseObjectNamesAsDefaultAliases(), c.defaultAliases);
  }
  Use(db2ncSql);
}

TEST_F(DB2DialectTest, Limits) {
  struct Case {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t fetch first 3 rows only", u"", u"5", "Select a From t Fetch First 5 Rows Only"},
      {"select a from t", u"10", u"5",
       "Select q.a From (Select a, ROW_NUMBER() Over () As RNColumn From t) q Where (q.RNColumn > 10) And "
       "(q.RNColumn <= 5 + 10)"},
      {"select a from t", u"10", u"",
       "Select q.a From (Select a, ROW_NUMBER() Over () As RNColumn From t) q Where (q.RNColumn > 10)"},
      {"select a from t union select b from u", u"", u"2",
       "Select * From (Select a From t union Select b From u) q Fetch First 2 Rows Only"},
  };
  for (const Case& c : cases) {
    const std::string print = Limited(c.text, c.offset, c.count);
    EXPECT_EQ(print, c.print) << c.text;
    EXPECT_EQ(Print(print), print);
    WideString offset = u"x", count = u"x";
    auto back = context_.ParseSelect(UTF8Decode(print));
    EXPECT_EQ(provider_.GetQueryLimits(back.get(), offset, count), c.offset[0] == 0) << print;
    EXPECT_EQ(offset, u"");
    EXPECT_EQ(count, c.offset[0] == 0 ? c.count : u"");
  }
  EXPECT_THROW(Limited("select a from t", u"", u"5)"), EmvSQLError);
  EXPECT_EQ(provider_.TransformQueryLimits(nullptr, u"1", u"2"), nullptr);
}

TEST_F(DB2DialectTest, RowNumberWrapperOnChinook) {
  // The wrapper of an offset runs as it is on SQLite. FETCH FIRST (a count
  // alone) does not: SQLite has no such clause, a known divergence.
  MV_REQUIRE_CHINOOK();
  mvtest::SqliteDatabase chinook(mvtest::ChinookSqlitePath());
  const auto query = [&](const WideString& sql) { return chinook.Query(UTF8Encode(sql)); };
  for (const char16_t* text : {u"select TrackId, Name, Milliseconds from Track where GenreId = 1",
                               u"select ArtistId, Name from Artist union all select GenreId, Name from Genre"})
    ExpectLimitsOnServer(text, {{u"3", u"", 3, ~size_t(0)}, {u"4", u"6", 4, 6}, {u"5000", u"2", 5000, 0}}, query);
}

TEST_F(DB2DialectTest, ServerAnswers) {
  // A scripted connection answers the catalog statements or refuses them all.
  for (const bool answers : {true, false}) {
    mvtest::ScriptedServer server;
    if (answers) {
      server.AddResult(kDB2ProbeQuery, mvtest::TextColumn(u"USER_NAME", {u"DB2INST1"}));
      server.AddResult(kDB2DefaultDatabaseQuery, mvtest::TextColumn(u"CATALOG_NAME", {u"SAMPLE  "}));
      server.AddResult(kDB2DefaultSchemaQuery, mvtest::TextColumn(u"DEF_SCHEMA", {u"DB2INST1"}));
      server.AddResult(kDB2SchemasQuery, mvtest::TextColumn(u"NAME", {u"DB2INST1", u"SYSCAT"}));
    }
    context_.SetMetadataProvider(&server.metadata);
    EXPECT_EQ(provider_.IsSupportConnectedServer(&server.metadata, nullptr), answers ? scsSupport : scsNotSupport);
    auto database = provider_.GetDefaultDatabaseName(&context_, &server);
    EXPECT_EQ(database ? database->GetQualifiedNameWithoutQuotes() : WideString(), answers ? u"SAMPLE" : u"");
    auto schemas = TastCreate<TSQLIdentifiersCollection>(&context_);
    provider_.GetDefaultSchemaNames(&context_, &server, *schemas);
    EXPECT_EQ(schemas->ContainsSameIdStr(u"DB2INST1"), answers);
    std::vector<WideString> list;
    provider_.GetSchemasList(&context_, &server, list, nullptr);
    EXPECT_EQ(list, (answers ? std::vector<WideString>{u"DB2INST1", u"SYSCAT"} : std::vector<WideString>{}));
    context_.SetMetadataProvider(nullptr);
  }
  EXPECT_EQ(provider_.IsSupportConnectedServer(nullptr, nullptr), scsDontKnow);
}

TEST_F(DB2DialectTest, ObjectsRelationsAndFieldsFromTheServer) {
  // SYSIBM's catalog where it exists, else QSYS2's; kinds by their letters,
  // names trimmed of the catalog's padding, system schemas marked.
  for (const bool qsys2 : {false, true}) {
    mvtest::ScriptedServer server;
    const WideString exists = qsys2 ? u"select 1 from QSYS2.SYSTABLES fetch first row only"
                                    : u"select 1 from SYSIBM.SYSTABLES fetch first row only";
    server.AddResult(exists, mvtest::TextTable({u"X"}, {{u"1"}}));
    server.AddResult(
        DB2ObjectsQuery(qsys2, u"", u"(0=0)", u"(0=0)", u"(0=0)"),
        mvtest::TextTable({u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE", u"REF_TABLE_SCHEMA", u"REF_TABLE_NAME"},
                          {{u"SHOP    ", u"ORDERS  ", u"T", TmvVariant::Null(), TmvVariant::Null()},
                           {u"SHOP", u"BIG", u"V", TmvVariant::Null(), TmvVariant::Null()},
                           {u"SHOP", u"O", u"A", u"SHOP", u"ORDERS"},
                           {u"SYSIBM", u"SYSTABLES", u"T", TmvVariant::Null(), TmvVariant::Null()}}));
    server.AddResult(kDB2RelationsQuery,
                     mvtest::TextTable({u"PKTABLE_SCHEM", u"PKTABLE_NAME", u"PKCOLUMN_NAME", u"FKTABLE_SCHEM",
                                        u"FKTABLE_NAME", u"FKCOLUMN_NAME", u"KEY_SEQ"},
                                       {{u"SHOP", u"BIG", u"ID", u"SHOP", u"ORDERS", u"BIG_ID", u"1"}}));
    context_.SetMetadataProvider(&server.metadata);
    auto container = TmvCreate<TmvMetadataContainer>(nullptr, &context_);
    context_.SetMetadataContainer(container.get());
    provider_.LoadMetadataObjects(&context_, nullptr, container.get(), nullptr, nullptr);
    provider_.LoadMetadataRelations(&context_, nullptr, container.get(), nullptr, nullptr);
    EXPECT_EQ(provider_.GetUseQSYS2(), qsys2);
    ASSERT_NO_FATAL_FAILURE(mvtest::ExpectObjects(*container, {{u"SHOP.ORDERS", "TmvMetadataTable", false},
                                                               {u"SHOP.BIG", "TmvMetadataView", false},
                                                               {u"SHOP.O", "TmvMetadataSynonym", false},
                                                               {u"SYSIBM.SYSTABLES", "TmvMetadataTable", true}}));
    ASSERT_EQ(container->GetRelations().size(), 1u);
    EXPECT_EQ(container->GetRelations()[0]->ChildName()->Token, u"ORDERS");
    // The fields come from the catalog the objects came from.
    server.AddResult(DB2FieldsQuery(qsys2, u"SHOP", u"ORDERS"),
                     mvtest::TextTable({u"NAME", u"COLTYPE", u"LENGTH", u"SCALE", u"DEFAULT", u"NULLS", u"KEYSEQ",
                                        u"GENERATED", u"REMARKS", u"COLNO"},
                                       {{u"ID", u"INTEGER ", u"4", u"0", TmvVariant::Null(), u"N",
                                         TmvVariant(int64_t(1)), u"A", u"the key", u"0"},
                                        {u"NOTE", u"VARCHAR", u"200", u"0", u"''", u"Y", TmvVariant(int64_t(0)), u" ",
                                         TmvVariant::Null(), u"1"}}));
    TmvMetadataObject* orders = container->Items(0);
    provider_.LoadFieldsForObjectFromServer(&context_, nullptr, orders);
    ASSERT_EQ(orders->GetFields()->Count(), 2);
    const TmvMetadataField* id = orders->GetFields()->Items(0);
    const TmvMetadataField* note = orders->GetFields()->Items(1);
    EXPECT_EQ(id->FieldTypeName(), u"INTEGER");
    EXPECT_TRUE(id->PrimaryKey());
    EXPECT_FALSE(id->Nullable());
    EXPECT_TRUE(id->ReadOnly());
    EXPECT_EQ(note->NameStrNotQuoted(), u"NOTE");
    EXPECT_FALSE(note->PrimaryKey());
    EXPECT_TRUE(note->Nullable());
    EXPECT_FALSE(note->ReadOnly());
    context_.SetMetadataContainer(nullptr);
    context_.SetMetadataProvider(nullptr);
  }
}

TEST_F(DB2DialectTest, CatalogStatements) {
  struct Case {
    WideString text;
    const char16_t* holds;
  };
  const Case cases[] = {
      {kDB2ProbeQuery, u"select USER as USER_NAME from SYSIBM.SYSDUMMY1"},
      {kDB2DefaultSchemaQuery, u"select CURRENT SQLID as DEF_SCHEMA from SYSIBM.SYSDUMMY1"},
      {DB2ObjectsQuery(false, u"", u"T1", u"V1", u"S1"),
       u"cast(base_schema as varchar(254)) as REF_TABLE_SCHEMA, cast(base_name as varchar(254)) as REF_TABLE_NAME "
       u"from sysibm.systables) as q where (TABLE_TYPE in ('H','L','P','T','U'))and(T1) or (TABLE_TYPE in "
       u"('V','W','M','S'))and(V1) or (TABLE_TYPE in ('A','N'))and(S1) for fetch only"},
      {DB2ObjectsQuery(true, u"db", u"1=1", u"1=1", u"1=1"), u"cast(base_table_name as varchar(254)) as REF_TABLE_NAME from \"db\".qsys2.systables"},
      {DB2TableFunctionsQuery(false, u"X"), u"select * from sysibm.sysroutines where routinetype = 'F' and function_type = 'T' and (X) FOR FETCH ONLY"},
      {DB2FieldsQuery(false, u"S", u"T"), u"from sysibm.syscolumns where tbcreator = 'S' and tbname = 'T' and hidden <> 'S'"},
      {DB2FieldsQuery(true, u"S", u"T"), u"s.CARDINALITY AS keyseq"},
  };
  for (const Case& c : cases) EXPECT_NE(c.text.find(c.holds), WideString::npos) << UTF8Encode(c.text);
  // A hostile name stays one token of the statement.
  using Query = std::function<WideString(const WideString&)>;
  const Query queries[] = {
      [](const WideString& name) { return DB2ObjectsQuery(false, name, u"1=1", u"1=1", u"1=1"); },
      [](const WideString& name) { return DB2FieldsQuery(false, name, name); },
      [](const WideString& name) { return DB2FieldsQuery(true, name, name); },
  };
  const WideString hostile[] = {u"x\"; drop table t; --", u"o'brien' or 1=1 --", u"a\"\"b'' /*", u"L/F"};
  for (const Query& query : queries) {
    const std::vector<int32_t> plain = Kinds(query(u"db"));
    for (const WideString& name : hostile) EXPECT_EQ(Kinds(query(name)), plain) << UTF8Encode(query(name));
  }
}
