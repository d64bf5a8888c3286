// The Informix dialect: the size of its grammar and scanner, what it reads
// and prints back (SKIP, FIRST, LIMIT, MIDDLE, UNIQUE, FOR clauses, ::
// casts, x[1,3], constructors, MULTISET of a sub-query, DATETIME and
// INTERVAL literals, UNITS, CURRENT ... TO ...), errors with their position,
// the row limits read back and written, the versions, and the catalog
// statements with hostile names.
#include <gtest/gtest.h>

#include <functional>

#include "DialectFixture.h"
#include "INFORMIXPars.h"
#include "INFORMIXScan.h"
#include "ScanTokens.h"
#include "ScriptedServer.h"
#include "dialects/informix/InformixCatalogQueries.h"
#include "dialects/informix/InformixSyntaxProvider.h"
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

class InformixDialectTest : public mvtest::DialectFixture<TmvInformixSyntaxProvider> {};

}  // namespace

TEST_F(InformixDialectTest, SizesAndLists) {
  EXPECT_EQ(INFORMIXParser::RuleCount, 51);
  // The digits of a DATETIME value are one repetition of their own, CURVAL
  // is a keyword as the keyword list spells it, and @name is a token.
  EXPECT_EQ(INFORMIXParser::IterCount, 19);
  EXPECT_EQ(INFORMIXScanner::KeywordCount, 153);
  EXPECT_EQ(INFORMIXScanner::NoSym, 194);
  EXPECT_EQ(provider_.GetKeywords().size(), 114u);
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_EQ(names.Count(), 67);
  EXPECT_EQ(provider_.ServerName(), u"Informix");
  EXPECT_EQ(provider_.GetServerVersion(), svInformixDS11);
  EXPECT_FALSE(provider_.IsSupportDerivedTables());
  for (const char16_t* sized : {u"char", u"NCHAR", u"national chararacter", u"char varying", u"nvarchar"})
    EXPECT_FALSE(provider_.IsFixedSizeType(sized)) << UTF8Encode(sized);
  for (const char16_t* fixed : {u"integer", u"lvarchar", u"datetime"}) EXPECT_TRUE(provider_.IsFixedSizeType(fixed));
  const std::pair<int, TmvInformixVersion> majors[] = {
      {8, svInformixDS8}, {9, svInformixDS9}, {10, svInformixDS10}, {11, svInformixDS11}, {14, svInformixDS11}};
  for (const auto& [major, version] : majors) EXPECT_EQ(TmvInformixSyntaxProvider::VersionOfMajor(major), version);
  EXPECT_NE(SyntaxProvidersList().FindClassByClassName("tmvinformixsyntaxprovider"), nullptr);
}

TEST_F(InformixDialectTest, Scanner) {
  using T = INFORMIXScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"a::int x[1,3]", {{T::tkIdentifierToken, u"a"}, {T::tkDoubleColon, u"::"}, {T::kwINT, u"int"},
                          {T::tkIdentifierToken, u"x"}, {T::tkLeftBracket, u"["}, {T::tkIntegerToken, u"1"},
                          {T::tkComma, u","}, {T::tkIntegerToken, u"3"}, {T::tkRightBracket, u"]"}}},
      {u"v := @p $a 0x1F", {{T::tkIdentifierToken, u"v"}, {T::tkColonEqual, u":="}, {T::tkVariableToken, u"@p"},
                           {T::tkIdentifierToken, u"$a"}, {T::tkLiteralToken, u"0x1F"}}},
      {u"\"q\"\"r\" 'it''s' Skip MIDDLE", {{T::tkQuotedIdentifierToken, u"\"q\"\"r\""},
                                          {T::tkStringToken, u"'it''s'"}, {T::kwSKIP, u"Skip"},
                                          {T::kwMIDDLE, u"MIDDLE"}}},
  };
  for (const Case& c : cases)
    EXPECT_EQ(mvtest::ScanTokens<INFORMIXScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(InformixDialectTest, ReadsAndPrintsBack) {
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select skip 5 first 10 unique a from t order by a for read only",
       "Select Skip 5 First 10 Unique a From t Order By a For Read Only"},
      {"select limit 3 * from t for update of a, b", "Select Limit 3 * From t For Update Of a, b"},
      {"select a[1,3], b::int::char(3), t.c.d, rowid, t.rowid from t",
       "Select a[1,3], b::Int::Char(3), t.c.d, RowId, t.RowId From t"},
      {"select row(1, 2), list(a, b), multiset(select b from u) from t",
       "Select Row(1, 2), List(a, b), MultiSet(Select b From u) From t"},
      {"select a + b * c - d || e, -a from t", "Select a + b * c - d || e, -a From t"},
      {"select datetime (2001-01-02 10:30:00.5) year to fraction(3), interval (5 10:30) day to minute from t",
       "Select DateTime (2001-01-02 10:30:00.5) Year To Fraction(3), Interval (5 10:30) Day To Minute From t"},
      {"select current year to second, today, 5 units day, s.nextval, dbservername from t",
       "Select Current Year To Second, Today, 5 Units Day, s.NextVal, DbServerName From t"},
      {"select cast(a as datetime year to day), cast(b as decimal(10, 2)) from t",
       "Select Cast(a As DateTime Year To Day), Cast(b As Decimal(10, 2)) From t"},
      {"select a from t union all select b from u", "Select a From t union All Select b From u"},
      {"select count(*), sum(distinct a) from t", "Select count(*), Sum(Distinct a) From t"},
      // Errors with the place where the text stops making sense.
      {"select a from (select b from u) x", "error: Invalid SELECT statement.\r\n Unexpected token \"select\" at line 1, pos 16"},
      {"select a from t except select b from u", "error: Invalid SELECT statement.\r\n Unexpected token \"select\" at line 1, pos 24"},
      {"select first a from t", "error: Invalid SELECT statement.\r\n Unexpected token \"a\" at line 1, pos 14"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(InformixDialectTest, Limits) {
  // Read back: the count text, the skip as the offset only after First or
  // Limit.
  struct Read {
    const char* text;
    bool has;
    const char16_t* offset;
    const char16_t* count;
  };
  const Read reads[] = {{"select skip 5 first 10 a from t", true, u"5", u"10"},
                        {"select skip 5 limit 10 a from t", true, u"5", u"10"},
                        {"select skip 5 middle 10 a from t", true, u"", u"10"},
                        {"select skip 5 a from t", true, u"", u""},
                        {"select a from t", false, u"", u""},
                        {"select first 2 a from t union select b from u", false, u"", u""}};
  for (const Read& r : reads) {
    auto statement = context_.ParseSelect(UTF8Decode(r.text));
    WideString offset = u"x", count = u"x";
    EXPECT_EQ(provider_.GetQueryLimits(statement.get(), offset, count), r.has) << r.text;
    EXPECT_EQ(offset, r.offset) << r.text;
    EXPECT_EQ(count, r.count) << r.text;
  }
  // Written: the texts as given, a union wrapped.
  struct Write {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Write writes[] = {
      {"select middle 3 a from t", u"10", u"5", "Select Skip 10 First 5 a From t"},
      {"select skip 2 a from t", u"", u"5", "Select First 5 a From t"},
      {"select a from t union select b from u", u"4", u"",
       "Select Skip 4 * From (Select a From t union Select b From u) q"},
      {"select a from t", u"", u"n", "Select First n a From t"},
  };
  for (const Write& w : writes) {
    auto statement = context_.ParseSelect(UTF8Decode(w.text));
    EXPECT_EQ(Print(provider_.TransformQueryLimits(statement.get(), w.offset, w.count).get()), w.print) << w.text;
  }
  EXPECT_EQ(provider_.TransformQueryLimits(nullptr, u"1", u"2"), nullptr);
}

TEST_F(InformixDialectTest, ObjectsRelationsAndFieldsFromTheServer) {
  // T and S are tables, V views; names are trimmed of the catalog's padding
  // and INFORMIX's objects are the system's.
  mvtest::ScriptedServer server;
  server.AddResult(kInformixObjectsQuery,
                   mvtest::TextTable({u"TABLE_NAME", u"TABLE_OWNER", u"TABLE_TYPE"}, {{u"orders    ", u"shop  ", u"T"},
                                                                                      {u"big", u"shop", u"V"},
                                                                                      {u"copy", u"shop", u"S"},
                                                                                      {u"systables", u"informix", u"T"},
                                                                                      {u"p", u"shop", u"P"}}));
  server.AddResult(kInformixRelationsQuery,
                   mvtest::TextTable({u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", u"PK_FIELD_NAME", u"FK_SCHEMA_NAME",
                                      u"FK_TABLE_NAME", u"FK_FIELD_NAME"},
                                     {{u"shop", u"big", u"id", u"shop", u"orders", u"big_id"}}));
  provider_.SetDetectServerVersion(false);
  context_.SetMetadataProvider(&server.metadata);
  auto container = TmvCreate<TmvMetadataContainer>(nullptr, &context_);
  context_.SetMetadataContainer(container.get());
  provider_.LoadMetadataObjects(&context_, nullptr, container.get(), nullptr, nullptr);
  provider_.LoadMetadataRelations(&context_, nullptr, container.get(), nullptr, nullptr);
  ASSERT_NO_FATAL_FAILURE(mvtest::ExpectObjects(*container, {{u"shop.orders", "TmvMetadataTable", false},
                                                             {u"shop.big", "TmvMetadataView", false},
                                                             {u"shop.copy", "TmvMetadataTable", false},
                                                             {u"informix.systables", "TmvMetadataTable", true}}));
  ASSERT_EQ(container->GetRelations().size(), 1u);
  EXPECT_EQ(container->GetRelations()[0]->ChildName()->Token, u"orders");
  server.AddResult(
      InformixFieldsQuery(u"shop", u"orders"),
      mvtest::TextTable({u"COLNAME", u"COLTYPE", u"COLLENGTH"}, {{u"id    ", u"262", u"4"}, {u"note", u"13", u"200"}}));
  TmvMetadataObject* orders = container->Items(0);
  provider_.LoadFieldsForObjectFromServer(&context_, nullptr, orders);
  ASSERT_EQ(orders->GetFields()->Count(), 2);
  EXPECT_EQ(orders->GetFields()->Items(0)->NameStrNotQuoted(), u"id");
  EXPECT_EQ(orders->GetFields()->Items(1)->FieldTypeName(), u"13");
  context_.SetMetadataContainer(nullptr);
  context_.SetMetadataProvider(nullptr);
}

TEST_F(InformixDialectTest, CatalogStatements) {
  EXPECT_EQ(WideString(kInformixProbeQuery), u"select first 1 dbinfo('version', 'full') from systables");
  EXPECT_EQ(WideString(kInformixObjectsQuery),
            u"select tabname as TABLE_NAME, owner as TABLE_OWNER, tabtype as TABLE_TYPE from systables");
  EXPECT_NE(WideString(kInformixRelationsQuery).find(u"s.constrtype = 'R'"), WideString::npos);
  EXPECT_EQ(InformixFieldsQuery(u"o", u"t"),
            u"select c.COLNAME, c.COLTYPE, c.COLLENGTH from SYSCOLUMNS c join SYSTABLES t on t.TABID = c.TABID where "
            u"t.OWNER = 'o' and t.TABNAME = 't' order by t.TABID, c.COLNO");
  // Hostile names stay one string token each.
  const auto kinds = [](const WideString& text) {
    std::vector<int32_t> result;
    for (const mvtest::ScannedToken& token : mvtest::ScanTokens<INFORMIXScanner>(text)) result.push_back(token.kind);
    return result;
  };
  const std::vector<int32_t> plain = kinds(InformixFieldsQuery(u"o", u"t"));
  for (const WideString& name : {WideString(u"o'brien' or 1=1 --"), WideString(u"x'; drop table t; --"),
                                 WideString(u"''/*")})
    EXPECT_EQ(kinds(InformixFieldsQuery(name, name)), plain) << UTF8Encode(name);
}

TEST_F(InformixDialectTest, ServerAnswers) {
  // A scripted connection answers the statements it knows and refuses any other.
  struct Case {
    const char16_t* major;  // null: the server refuses both statements
    TmvSyntaxSupportConectedServer answer;
    TmvInformixVersion version;
  };
  const Case cases[] = {{u"9", scsSupport, svInformixDS9},
                        {u"12", scsSupport, svInformixDS11},
                        {nullptr, scsNotSupport, svInformixDS11}};
  for (const Case& c : cases) {
    mvtest::ScriptedServer server;
    if (c.major) {
      for (const char16_t* sql : {kInformixProbeQuery, kInformixVersionQuery})
        server.AddResult(sql, mvtest::TextColumn(u"V", {c.major}));
      server.AddResult(kInformixSchemasQuery, mvtest::TextColumn(u"NAME", {u"informix  ", u"shop"}));
    }
    // The owners' list reads the version first.
    provider_.SetServerVersion(svInformixDS8);
    provider_.SetDetectServerVersion(true);
    EXPECT_EQ(provider_.IsSupportConnectedServer(&server.metadata, nullptr), c.answer);
    context_.SetMetadataProvider(&server.metadata);
    std::vector<WideString> owners;
    provider_.GetSchemasList(&context_, &server, owners, nullptr);
    context_.SetMetadataProvider(nullptr);
    EXPECT_EQ(provider_.GetServerVersion(), c.version);
    EXPECT_EQ(owners, (c.major ? std::vector<WideString>{u"informix", u"shop"} : std::vector<WideString>{}));
  }
  EXPECT_EQ(TmvInformixSyntaxProvider().IsSupportConnectedServer(nullptr, nullptr), scsDontKnow);
}
