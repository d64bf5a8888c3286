// The Chinook sample database of the shared corpus on the MariaDB test
// server, in its own database "chinook", copied from the SQLite file by our
// own loader: tables, columns, keys and indexes keep SQLite's names exactly.
// Beside them the awkward tables of HostileNamesSql(), run with ANSI_QUOTES
// so that their double-quoted names are names.
//
//   TEST(Something, SameRows) {
//     MV_REQUIRE_MARIADB_CHINOOK();
//     mvtest::MariaDbServer& db = mvtest::ChinookOnMariaDb();
//     db.Query("SELECT `Name` FROM chinook.`Genre` ORDER BY `GenreId`");
//   }
#pragma once

#include <string>
#include <vector>

#include "ChinookLoader.h"
#include "MariaDbServer.h"

namespace mvtest {

// The database Chinook is loaded into.
inline constexpr const char* kMariaDbChinookDatabase = "chinook";

// Creates every table of a SQLite database in `database` on the server
// (columns with their types mapped, NOT NULL, primary keys, indexes, foreign
// keys) and copies the rows; returns the names of the tables. Types: INTEGER
// -> int, NUMERIC(p,s) -> decimal(p,s), NVARCHAR(n) -> varchar(n), DATETIME
// -> datetime, and the like; a type it does not know is an error naming the
// table and the column.
std::vector<std::string> CopySqliteToMariaDb(const std::string& sqlitePath, MariaDbServer& server,
                                             const std::string& database);

// The shared server of this executable with Chinook and the awkward tables
// loaded into kMariaDbChinookDatabase, the first call loading them. Throws
// when the server cannot start or Chinook is absent.
MariaDbServer& ChinookOnMariaDb();

}  // namespace mvtest

#define MV_REQUIRE_MARIADB_CHINOOK() \
  MV_REQUIRE_CHINOOK();              \
  MV_REQUIRE_MARIADB()
