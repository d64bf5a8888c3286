// Converting a SELECT between dialects: what goes over and how it prints,
// what cannot and how the error names it, and Chinook queries written for
// SQLite, PostgreSQL, MySQL or Firebird that give the same rows on the other servers
// after conversion.
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "ChinookLoader.h"
#include "FirebirdChinook.h"
#include "MariaDbChinook.h"
#include "PostgresServer.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvidersList.h"
#include "sqlgen/DialectConversion.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

class DialectConversionTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }

  // The conversion, or "error: " and the message.
  static std::string Convert(const std::string& sql, const char* from, const char* to) {
    TmvOwned<TmvBaseSyntaxProvider> source(SyntaxProvidersList().FindClassByClassName(from)->CreateRaw());
    TmvOwned<TmvBaseSyntaxProvider> target(SyntaxProvidersList().FindClassByClassName(to)->CreateRaw());
    TSQLBuilderFast builder;
    try {
      return UTF8Encode(ConvertSelectDialect(UTF8Decode(sql), *source, *target, builder));
    } catch (const Exception& e) {
      return "error: " + UTF8Encode(e.Message());
    }
  }
};

constexpr const char* kPG = "TmvPGSQLSyntaxProvider";
constexpr const char* kLite = "TmvSQLiteSyntaxProvider";
constexpr const char* kMS = "TmvMSSQLSyntaxProvider";
constexpr const char* k92 = "TmvSQL92SyntaxProvider";
constexpr const char* kMy = "TmvMYSQLSyntaxProvider";
constexpr const char* kFB = "TmvFirebirdSyntaxProvider";

}  // namespace

TEST_F(DialectConversionTest, WhatGoesOverAndWhatIsNamed) {
  struct Case {
    const char* text;
    const char* from;
    const char* to;
    const char* result;
  };
  const Case cases[] = {
      {"select a from t limit 5 offset 2", kPG, kLite, "Select a From t Limit 5 Offset 2"},
      {"select top 5 a from [my t] where [b c] = 1 order by a", kMS, kPG,
       "Select a From \"my t\" Where \"b c\" = 1 Order By a Limit 5"},
      {"select \"Mixed\", plain from t", kPG, kMS, "Select Mixed, plain From t"},
      {"select a from t limit 3", kLite, k92, "error: Cannot convert to ANSI SQL92: it has no row limit (offset \"\", count \"3\")"},
      {"select a from t offset 3", kPG, kLite,
       "error: Cannot convert to SQLite: its row limit cannot say offset \"3\", count \"\""},
      {"select a into temp x from t", kPG, kLite, "error: Cannot convert to SQLite: \"Into Temporary Table x\" has no form there"},
      {"select top 10 percent a from t", kMS, kPG, "error: Cannot convert to PostgreSQL: \"Top 10 Percent\" has no form there"},
      {"select a from t inner hash join u on 1 = 1", kMS, kLite, "error: Cannot convert to SQLite: \"Hash\" has no form there"},
      {"select OPERATOR(pg_catalog.+) 1 from t", kPG, kLite,
       "error: Cannot convert to SQLite: what it would read is not in its syntax. Invalid SELECT statement.\r\n"
       " Unexpected token \"+\" at line 1, pos 28"},
      // Firebird's limits are FIRST and SKIP; ROWS is a clause of its own.
      {"select a from t rows 2 to 4", kFB, kMy, "error: Cannot convert to MySQL: \"Rows 2 To 4\" has no form there"},
      {"select first 2 skip 1 a from t", kFB, kMy, "Select a From t Limit 2 Offset 1"},
      {"select a from t where", kPG, kLite, "error: Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 22"},
      {"select a from t where b ilike 'x'", kPG, kLite,
       "error: Cannot convert to SQLite: what it would read is not in its syntax. Invalid SELECT statement.\r\n"
       " Unexpected token \"ILike\" at line 1, pos 25"},
  };
  for (const Case& c : cases) EXPECT_EQ(Convert(c.text, c.from, c.to), c.result) << c.text;
}

// Each query, written for one server, converted to the dialect of each of
// the others, gives there the rows it gives where it was written.
TEST_F(DialectConversionTest, ChinookRowsAgreeAfterConversion) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  MV_REQUIRE_MARIADB_CHINOOK();
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::SqliteDatabase lite(mvtest::ChinookSqlitePath());
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();
  mvtest::MariaDbServer& maria = mvtest::ChinookOnMariaDb();
  maria.Exec(std::string("USE ") + mvtest::kMariaDbChinookDatabase);
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  const std::map<std::string, std::function<mvtest::SqlRows(const std::string&)>> servers = {
      {kLite, [&](const std::string& sql) { return lite.Query(sql); }},
      {kPG, [&](const std::string& sql) { return pg.Query(sql); }},
      {kMy, [&](const std::string& sql) { return maria.Query(sql); }},
      {kFB, [&](const std::string& sql) { return fb.Query(sql, mvtest::kFirebirdChinookDatabase); }},
  };
  struct Case {
    const char* from;
    const char* sql;
  };
  const Case cases[] = {
      // SQLite reads a lone double-quoted word as a string: its columns are qualified.
      {kLite, R"(SELECT t."TrackId", t."Name" FROM "Track" t WHERE t."AlbumId" = 3 ORDER BY t."TrackId" LIMIT 2 OFFSET 1)"},
      {kLite, R"(SELECT t."Name", a."Title" FROM "Track" t INNER JOIN "Album" a ON a."AlbumId" = t."AlbumId"
                 WHERE a."Title" LIKE 'B%' ORDER BY t."TrackId" LIMIT 10)"},
      {kLite, R"(SELECT i."InvoiceId" FROM "Invoice" i WHERE i."InvoiceDate" >= '2025-12-01' ORDER BY i."InvoiceId")"},
      {kLite, R"(SELECT i."BillingCountry", COUNT(*) AS n FROM "Invoice" i GROUP BY i."BillingCountry"
                 HAVING COUNT(*) > 20 ORDER BY n DESC, i."BillingCountry" LIMIT 3)"},
      {kPG, R"(SELECT "Name" FROM "Track" WHERE "Milliseconds" > 300000 ORDER BY "Milliseconds" DESC LIMIT 4)"},
      {kPG, R"(SELECT "Title" FROM "Album" WHERE "Title" LIKE '%Rock%' ORDER BY 1 LIMIT 3 OFFSET 1)"},
      {kPG, R"(SELECT c."Email", count(*) FROM "Customer" c JOIN "Invoice" i ON i."CustomerId" = c."CustomerId"
               WHERE i."InvoiceDate" < '2021-02-15' GROUP BY c."Email" ORDER BY 1)"},
      {kMy, R"(SELECT `GenreId`, `Name` FROM `Genre` WHERE `Name` LIKE 'R%' ORDER BY `GenreId` LIMIT 1, 2)"},
      {kMy, R"(SELECT p.`Name`, COUNT(*) AS tracks FROM `Playlist` p INNER JOIN `PlaylistTrack` pt
               ON pt.`PlaylistId` = p.`PlaylistId` WHERE pt.`TrackId` < 100 GROUP BY p.`Name` ORDER BY p.`Name`)"},
      {kFB, R"(SELECT FIRST 3 SKIP 2 "Name" FROM "Artist" ORDER BY "ArtistId")"},
      {kFB, R"(SELECT FIRST 2 SKIP 1 a."Title", a."AlbumId" FROM "Album" a WHERE a."ArtistId" = 90 ORDER BY a."Title")"},
      {kFB, R"(SELECT "MediaTypeId", COUNT(*) FROM "Track" WHERE "UnitPrice" > 0.99 GROUP BY "MediaTypeId" ORDER BY 1)"},
  };
  for (const Case& c : cases) {
    const mvtest::SqlRows there = servers.at(c.from)(c.sql);
    ASSERT_FALSE(there.empty()) << c.sql;
    for (const auto& [dialect, run] : servers) {
      if (dialect == c.from) continue;
      const std::string converted = Convert(c.sql, c.from, dialect.c_str());
      ASSERT_EQ(converted.rfind("error", 0), std::string::npos) << c.sql << "\n" << converted;
      EXPECT_EQ(mvtest::RowsDiffer(there, run(converted)), "") << c.sql << "\n" << converted;
    }
  }
}
