// The throw-away MariaDB server of the tests and the Chinook database it is
// loaded with: the same rows as the SQLite file, the awkward names, and a
// server that leaves nothing behind, also when its run dies.
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <thread>

#include "MariaDbChinook.h"
#include "RunTool.h"
#include "ScratchServer.h"

namespace fs = std::filesystem;

// Every table arrives with its rows and foreign keys, and the awkward tables
// read as on SQLite (names, quotes, NULLs, non-ASCII text).
TEST(MariaDbChinook, TablesRowsKeysAndAwkwardNamesAsInSqlite) {
  MV_REQUIRE_MARIADB_CHINOOK();
  mvtest::SqliteDatabase lite(mvtest::ChinookSqlitePath());
  mvtest::SqliteDatabase odd(":memory:", true);
  for (const std::string& statement : mvtest::HostileNamesSql()) odd.Exec(statement);
  const auto start = std::chrono::steady_clock::now();
  mvtest::MariaDbServer& db = mvtest::ChinookOnMariaDb();
  std::cout << "MariaDB start + Chinook load: "
            << std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count()
            << " ms" << std::endl;

  const mvtest::SqlRows tables = lite.Query(
      "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' "
      "UNION ALL SELECT 'Odd Table' UNION ALL SELECT 'order' ORDER BY 1");
  ASSERT_EQ(tables.size(), 13u);
  EXPECT_EQ(mvtest::RowsDiffer(tables, db.Query("SELECT table_name FROM information_schema.tables WHERE "
                                                "table_schema = 'chinook' ORDER BY CAST(table_name AS BINARY)")),
            "");
  for (const mvtest::SqlRow& table : tables) {
    const std::string& name = *table[0];
    const bool awkward = name == "Odd Table" || name == "order";
    const std::string lsql = "SELECT * FROM \"" + name + "\" ORDER BY 1, 2";
    std::string msql = "SELECT * FROM chinook.`" + name + "` ORDER BY 1, 2";
    EXPECT_EQ(mvtest::RowsDiffer((awkward ? odd : lite).Query(lsql), db.Query(msql)), "") << name;
  }
  EXPECT_EQ(mvtest::RowsDiffer(
                lite.Query("SELECT m.name, f.\"from\", f.\"table\", f.\"to\" FROM sqlite_master m, "
                           "pragma_foreign_key_list(m.name) f WHERE m.type = 'table' ORDER BY 1, 2"),
                db.Query("SELECT table_name, column_name, referenced_table_name, referenced_column_name "
                         "FROM information_schema.key_column_usage WHERE table_schema = 'chinook' AND "
                         "referenced_table_name IS NOT NULL AND table_name <> 'order' ORDER BY 1, 2")),
            "");
}

// A server of its own: a NULL is not a text, a failed statement names the
// server's reason and leaves the connection usable, a folder of a run that is
// gone is cleaned at the start, and nothing is left once the server goes.
TEST(MariaDbServerFixture, OwnServerCleansUpBeforeAndAfter) {
  MV_REQUIRE_MARIADB();
  // No process has a number beyond the kernel's limit of 2^22.
  const std::string stale = "/tmp/mvtest-maria.4194305.left";
  fs::create_directories(stale + "/data");
  std::string folder;
  int port = 0;
  {
    mvtest::MariaDbServer db;
    folder = db.Folder();
    port = db.Port();
    EXPECT_FALSE(fs::exists(stale));
    EXPECT_TRUE(mvtest::LoopbackPortAnswers(port));
    try {
      db.Exec("SELECT * FROM no_such_table");
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
      EXPECT_NE(std::string(e.what()).find("no_such_table' doesn't exist"), std::string::npos) << e.what();
    }
    EXPECT_EQ(db.Query("SELECT NULL, '', 'NULL', 'Grüße 東京'; SELECT 2"), (mvtest::SqlRows{{"2"}}));
    EXPECT_EQ(db.Query(u"SELECT NULL, '', 'NULL', 'Grüße 東京'"),
              (mvtest::SqlRows{{std::nullopt, "", "NULL", "Grüße 東京"}}));
  }
  EXPECT_FALSE(fs::exists(folder));
  EXPECT_FALSE(mvtest::LoopbackPortAnswers(port));
}

// A run that ends without its destructors (as when killed or crashed) leaves
// neither a server nor its folder: the watchdog stops and removes them.
TEST(MariaDbServerFixture, DeadRunLeavesNothing) {
  MV_REQUIRE_MARIADB();
  if (std::getenv("MV_MARIADB_ABORT_CHILD")) {
    mvtest::MariaDbServer db;
    std::cout << "folder=" << db.Folder() << " port=" << db.Port() << std::endl;
    std::_Exit(3);
  }
  setenv("MV_MARIADB_ABORT_CHILD", "1", 1);
  const mvtest::ToolResult child = mvtest::RunTool(
      fs::read_symlink("/proc/self/exe").string(), {"--gtest_filter=MariaDbServerFixture.DeadRunLeavesNothing"});
  unsetenv("MV_MARIADB_ABORT_CHILD");
  std::smatch m;
  static const std::regex said("folder=(\\S+) port=(\\d+)");
  ASSERT_TRUE(std::regex_search(child.out, m, said)) << child.out << child.err;
  EXPECT_NE(child.exitCode, 0);
  EXPECT_TRUE(mvtest::FolderGoneWithin(m[1], 20000)) << m[1];
  EXPECT_TRUE(mvtest::LoopbackPortClosedWithin(std::stoi(m[2]), 5000));
}
