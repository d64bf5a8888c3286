// The Chinook sample database of the shared corpus on the Firebird test
// server, in its own database (alias "chinook"), copied from the SQLite file
// by our own loader: tables, columns, keys and indexes keep SQLite's names
// exactly (quoted, case kept). Beside them the awkward tables of
// HostileNamesSql(), each multi-row INSERT split into single rows.
//
//   TEST(Something, SameRows) {
//     MV_REQUIRE_FIREBIRD_CHINOOK();
//     mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
//     fb.Query(R"(SELECT "Name" FROM "Genre" ORDER BY "GenreId")", mvtest::kFirebirdChinookDatabase);
//   }
#pragma once

#include <string>
#include <vector>

#include "ChinookLoader.h"
#include "FirebirdServer.h"

namespace mvtest {

// The alias of the database Chinook is loaded into.
inline constexpr const char* kFirebirdChinookDatabase = "chinook";

// Creates every table of a SQLite database in the server's database
// `database` (columns with their types mapped, NOT NULL, primary keys,
// indexes, foreign keys) and copies the rows; returns the names of the
// tables. Types: INTEGER -> INTEGER, NUMERIC(p,s) -> NUMERIC(p,s),
// NVARCHAR(n) -> VARCHAR(n) (the database's character set is UTF8),
// DATETIME -> TIMESTAMP, TEXT -> BLOB SUB_TYPE TEXT, and the like; a type it
// does not know is an error naming the table and the column.
std::vector<std::string> CopySqliteToFirebird(const std::string& sqlitePath, FirebirdServer& server,
                                              const std::string& database);

// The statements of HostileNamesSql() as Firebird takes them: an INSERT of
// several rows becomes one INSERT per row.
std::vector<std::string> FirebirdHostileNamesSql();

// The shared server of this executable with Chinook and the awkward tables
// loaded into kFirebirdChinookDatabase, the first call loading them. Throws
// when the server cannot start or Chinook is absent.
FirebirdServer& ChinookOnFirebird();

}  // namespace mvtest

#define MV_REQUIRE_FIREBIRD_CHINOOK() \
  MV_REQUIRE_CHINOOK();               \
  MV_REQUIRE_FIREBIRD()
