// The throw-away PostgreSQL server of the tests and the Chinook database it is
// loaded with: the same SQL text gives the same rows on SQLite and on
// PostgreSQL, and a server leaves nothing behind, also when its run dies.
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>

#include "ChinookLoader.h"
#include "PostgresServer.h"
#include "RunTool.h"
#include "ScratchServer.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::string> Column(const mvtest::SqlRows& rows) {
  std::vector<std::string> out;
  for (const auto& row : rows) out.push_back(row.at(0).value_or("NULL"));
  return out;
}

}  // namespace

// Every table arrives with its rows and keys: the tables, the rows of each in
// key order (the first column, or the first two for PlaylistTrack) and the
// foreign keys read the same on both.
TEST(PostgresChinook, TablesRowsAndKeysAsInSqlite) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  mvtest::SqliteDatabase lite(mvtest::ChinookSqlitePath());
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();

  std::vector<std::string> tables = Column(lite.Query(
      "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' ORDER BY name"));
  ASSERT_EQ(tables.size(), 11u);
  std::vector<std::string> expected = tables;
  expected.insert(expected.end(), {"Odd Table", "order"});
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(Column(pg.Query("SELECT table_name FROM information_schema.tables WHERE table_schema = 'public' "
                            "ORDER BY table_name COLLATE \"C\"")),
            expected);

  for (const std::string& table : tables) {
    const std::string sql = "SELECT * FROM \"" + table + "\" ORDER BY 1, 2";
    EXPECT_EQ(mvtest::RowsDiffer(lite.Query(sql), pg.Query(sql)), "") << table;
  }

  EXPECT_EQ(mvtest::RowsDiffer(
                lite.Query("SELECT m.name, f.\"from\", f.\"table\", f.\"to\" FROM sqlite_master m, "
                           "pragma_foreign_key_list(m.name) f WHERE m.type = 'table' ORDER BY 1, 2"),
                pg.Query("SELECT t.relname, a.attname, r.relname, ra.attname FROM pg_constraint c "
                         "JOIN pg_class t ON t.oid = c.conrelid JOIN pg_class r ON r.oid = c.confrelid "
                         "JOIN pg_attribute a ON a.attrelid = c.conrelid AND a.attnum = c.conkey[1] "
                         "JOIN pg_attribute ra ON ra.attrelid = c.confrelid AND ra.attnum = c.confkey[1] "
                         "WHERE c.contype = 'f' AND t.relname <> 'order' ORDER BY 1, 2")),
            "");
  EXPECT_EQ(Column(pg.Query("SELECT conname FROM pg_constraint WHERE contype = 'p' AND conrelid = "
                            "'\"PlaylistTrack\"'::regclass")),
            std::vector<std::string>{"PK_PlaylistTrack"});
}

// Aggregates, joins, dates, NULLs and the awkward names: one text, the same
// rows on both (the awkward tables made on SQLite beside an attached Chinook).
TEST(PostgresChinook, QueriesGiveTheSameRowsOnBoth) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  mvtest::SqliteDatabase lite(":memory:", true);
  for (const std::string& statement : mvtest::HostileNamesSql()) lite.Exec(statement);
  lite.Exec("ATTACH DATABASE 'file:" + mvtest::ChinookSqlitePath() + "?mode=ro' AS chinook");
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();

  const char* const queries[] = {
      R"(SELECT "BillingCountry", COUNT(*), ROUND(SUM("Total"), 2) FROM "Invoice" GROUP BY "BillingCountry"
         ORDER BY "BillingCountry")",
      R"(SELECT g."Name", COUNT(*), MIN(t."Milliseconds"), MAX(t."Milliseconds"), SUM(t."Bytes")
         FROM "Track" t JOIN "Genre" g ON g."GenreId" = t."GenreId" GROUP BY g."Name" ORDER BY g."Name")",
      R"(SELECT COUNT(DISTINCT "Composer"), COUNT("Composer"), COUNT(*), AVG("UnitPrice") FROM "Track")",
      R"(SELECT e."LastName", COUNT(c."CustomerId") FROM "Employee" e
         LEFT JOIN "Customer" c ON c."SupportRepId" = e."EmployeeId" GROUP BY e."LastName" ORDER BY 2 DESC, 1)",
      R"(SELECT a."AlbumId", a."Title", COUNT(*) FROM "Album" a JOIN "Track" t ON t."AlbumId" = a."AlbumId"
         GROUP BY a."AlbumId", a."Title" HAVING COUNT(*) > 25 ORDER BY 3 DESC, 1)",
      R"(SELECT MIN("InvoiceDate"), MAX("InvoiceDate"), SUM("Total") FROM "Invoice"
         WHERE "InvoiceDate" >= '2012-01-01')",
      R"(SELECT "CustomerId", "Company", "State", "Fax" FROM "Customer" WHERE "CustomerId" <= 6 ORDER BY 1)",
      R"(SELECT * FROM "Odd Table" ORDER BY "Row Id")",
      R"(SELECT o."group", t."MixedCase", t."Name With ""Quotes""", o."user", t."dotted.name" FROM "order" o
         LEFT JOIN "Odd Table" t ON t."Row Id" = o."Odd Table Row" ORDER BY o."group")",
      R"(SELECT "select", "it's" FROM "Odd Table" WHERE "it's" LIKE '%''%' OR "select" IS NULL ORDER BY "Row Id")",
  };
  for (const char* sql : queries) {
    const mvtest::SqlRows expected = lite.Query(sql);
    EXPECT_FALSE(expected.empty()) << sql;
    EXPECT_EQ(mvtest::RowsDiffer(expected, pg.Query(sql)), "") << sql;
  }
}

// A server of its own: a NULL is not a text, a failed statement names the
// server's reason, a folder of a run that is gone is cleaned at the start, and
// nothing is left once the server goes.
TEST(PostgresServerFixture, OwnServerCleansUpBeforeAndAfter) {
  MV_REQUIRE_POSTGRES();
  // No process has a number beyond the kernel's limit of 2^22.
  const std::string stale = "/tmp/mvtest-pg.4194305.left";
  fs::create_directories(stale + "/data");
  std::string folder;
  int port = 0;
  {
    mvtest::PostgresServer pg;
    folder = pg.Folder();
    port = pg.Port();
    EXPECT_FALSE(fs::exists(stale));
    EXPECT_TRUE(mvtest::LoopbackPortAnswers(port));
    EXPECT_EQ(pg.Query("SELECT NULL, '', 'NULL', 'Grüße'"),
              (mvtest::SqlRows{{std::nullopt, "", "NULL", "Grüße"}}));
    EXPECT_EQ(pg.Query(u"SELECT 1 WHERE false"), mvtest::SqlRows{});
    try {
      pg.Exec("SELECT * FROM no_such_table");
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
      EXPECT_NE(std::string(e.what()).find("relation \"no_such_table\" does not exist"), std::string::npos)
          << e.what();
    }
  }
  EXPECT_FALSE(fs::exists(folder));
  EXPECT_FALSE(mvtest::LoopbackPortAnswers(port));
}

// A run that ends without its destructors (as when killed or crashed) leaves
// neither a server nor its folder: the watchdog stops and removes them.
TEST(PostgresServerFixture, DeadRunLeavesNothing) {
  MV_REQUIRE_POSTGRES();
  if (std::getenv("MV_PG_ABORT_CHILD")) {
    mvtest::PostgresServer pg;
    std::cout << "folder=" << pg.Folder() << " port=" << pg.Port() << std::endl;
    std::_Exit(3);
  }
  setenv("MV_PG_ABORT_CHILD", "1", 1);
  const mvtest::ToolResult child = mvtest::RunTool(
      fs::read_symlink("/proc/self/exe").string(), {"--gtest_filter=PostgresServerFixture.DeadRunLeavesNothing"});
  unsetenv("MV_PG_ABORT_CHILD");
  std::smatch m;
  static const std::regex said("folder=(\\S+) port=(\\d+)");
  ASSERT_TRUE(std::regex_search(child.out, m, said)) << child.out << child.err;
  EXPECT_NE(child.exitCode, 0);
  EXPECT_TRUE(mvtest::FolderGoneWithin(m[1], 20000)) << m[1];
  EXPECT_TRUE(mvtest::LoopbackPortClosedWithin(std::stoi(m[2]), 5000));
}
