// The Chinook sample database of the shared corpus on a PostgreSQL test
// server, copied from its SQLite file by our own loader, so that the same SQL
// text can run on both and their rows be compared. Tables, columns and keys
// keep SQLite's names exactly (quoted: "Album", "ArtistId"). Beside them a few
// tables with awkward names for the quoting of the dialects.
//
//   TEST(Something, SameRows) {
//     MV_REQUIRE_POSTGRES_CHINOOK();
//     mvtest::SqliteDatabase lite(mvtest::ChinookSqlitePath());
//     mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();
//     const std::string sql = R"(SELECT "Name" FROM "Genre" ORDER BY "GenreId")";
//     EXPECT_EQ(mvtest::RowsDiffer(lite.Query(sql), pg.Query(sql)), "");
//   }
#pragma once

#include <string>
#include <vector>

#include "PostgresServer.h"

struct sqlite3;

namespace mvtest {

// ../shared/corpus/chinook/Chinook_Sqlite.sqlite; empty when absent.
std::string ChinookSqlitePath();

// A SQLite database for comparisons: a file opened read-only, or a writable
// one (":memory:" included).
class SqliteDatabase {
 public:
  explicit SqliteDatabase(const std::string& path, bool writable = false);
  ~SqliteDatabase();
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  // Throw std::runtime_error with SQLite's message and the statement.
  void Exec(const std::string& sql);
  // Values as SQLite renders them as text; a NULL is an empty optional.
  SqlRows Query(const std::string& sql);
  sqlite3* Handle() const { return db_; }

 private:
  std::string path_;
  sqlite3* db_ = nullptr;
};

// Creates every table of a SQLite database on the server (columns with their
// types mapped, NOT NULL, primary keys, foreign keys, indexes) and copies the
// rows; returns the names of the tables. Types: INTEGER -> integer,
// NUMERIC(p,s) -> numeric(p,s), NVARCHAR(n) -> varchar(n), DATETIME ->
// timestamp, and the like; a type it does not know is an error naming the
// table and the column.
std::vector<std::string> CopySqliteToPostgres(const std::string& sqlitePath, PostgresServer& server);

// Statements that make tables with awkward names (spaces, quotes, mixed
// case, keywords, a dot) and a few rows, valid on SQLite and PostgreSQL:
// "Odd Table" ("Row Id", "Name With ""Quotes""", "MixedCase", "select",
// "it's", "dotted.name") and "order" ("group", "Odd Table Row", "user").
const std::vector<std::string>& HostileNamesSql();

// The shared server of this executable with Chinook and the awkward tables
// loaded, the first call loading them. Throws when the server cannot start
// or Chinook is absent (MV_REQUIRE_POSTGRES_CHINOOK skips first).
PostgresServer& ChinookOnPostgres();

// The first difference between two row sets, empty when they agree. Values
// that both read as numbers are compared as numbers (relative 1e-9), since
// SQLite keeps NUMERIC columns as floating point.
std::string RowsDiffer(const SqlRows& expected, const SqlRows& actual);

}  // namespace mvtest

#define MV_REQUIRE_CHINOOK()                                        \
  do {                                                              \
    if (::mvtest::ChinookSqlitePath().empty())                      \
      GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus"; \
  } while (0)

#define MV_REQUIRE_POSTGRES_CHINOOK() \
  MV_REQUIRE_CHINOOK();               \
  MV_REQUIRE_POSTGRES()
