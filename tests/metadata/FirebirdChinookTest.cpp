// The throw-away Firebird server of the tests and the Chinook database it is
// loaded with: the same rows as the SQLite file, the awkward names, and a
// server that leaves nothing behind, also when its run dies.
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "FirebirdChinook.h"
#include "RunTool.h"
#include "ScratchServer.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {
long long MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}
}  // namespace

// Every table arrives with its rows and foreign keys, and the awkward tables
// read as on SQLite (names, quotes, NULLs, non-ASCII text).
TEST(FirebirdChinook, TablesRowsKeysAndAwkwardNamesAsInSqlite) {
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::SqliteDatabase lite(mvtest::ChinookSqlitePath());
  mvtest::SqliteDatabase odd(":memory:", true);
  for (const std::string& statement : mvtest::HostileNamesSql()) odd.Exec(statement);
  const auto start = Clock::now();
  mvtest::FirebirdServer::Shared();
  const long long started = MillisecondsSince(start);
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  std::cout << "Firebird start: " << started << " ms, start + Chinook load: " << MillisecondsSince(start) << " ms"
            << std::endl;
  const char* chinook = mvtest::kFirebirdChinookDatabase;

  const mvtest::SqlRows tables = lite.Query(
      "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' "
      "UNION ALL SELECT 'Odd Table' UNION ALL SELECT 'order' ORDER BY 1");
  ASSERT_EQ(tables.size(), 13u);
  EXPECT_EQ(mvtest::RowsDiffer(tables, fb.Query("SELECT TRIM(RDB$RELATION_NAME) FROM RDB$RELATIONS WHERE "
                                                "RDB$SYSTEM_FLAG = 0 ORDER BY 1",
                                                chinook)),
            "");
  for (const mvtest::SqlRow& table : tables) {
    const std::string& name = *table[0];
    const bool awkward = name == "Odd Table" || name == "order";
    const std::string sql = "SELECT * FROM \"" + name + "\" ORDER BY 1, 2";
    EXPECT_EQ(mvtest::RowsDiffer((awkward ? odd : lite).Query(sql), fb.Query(sql, chinook)), "") << name;
  }
  EXPECT_EQ(mvtest::RowsDiffer(
                lite.Query("SELECT m.name, f.\"from\", f.\"table\", f.\"to\" FROM sqlite_master m, "
                           "pragma_foreign_key_list(m.name) f WHERE m.type = 'table' ORDER BY 1, 2"),
                fb.Query("SELECT TRIM(c.RDB$RELATION_NAME), TRIM(s.RDB$FIELD_NAME), TRIM(p.RDB$RELATION_NAME), "
                         "TRIM(ps.RDB$FIELD_NAME) FROM RDB$RELATION_CONSTRAINTS c "
                         "JOIN RDB$REF_CONSTRAINTS r ON r.RDB$CONSTRAINT_NAME = c.RDB$CONSTRAINT_NAME "
                         "JOIN RDB$RELATION_CONSTRAINTS p ON p.RDB$CONSTRAINT_NAME = r.RDB$CONST_NAME_UQ "
                         "JOIN RDB$INDEX_SEGMENTS s ON s.RDB$INDEX_NAME = c.RDB$INDEX_NAME "
                         "JOIN RDB$INDEX_SEGMENTS ps ON ps.RDB$INDEX_NAME = p.RDB$INDEX_NAME "
                         "AND ps.RDB$FIELD_POSITION = s.RDB$FIELD_POSITION "
                         "WHERE c.RDB$RELATION_NAME <> 'order' ORDER BY 1, 2",
                         chinook)),
            "");
}

// A server of its own: values read back by type (a NULL is not a text), a
// failed statement names the server's reason and leaves the connection
// usable, a folder of a run that is gone is cleaned at the start, and
// nothing is left once the server goes.
TEST(FirebirdServerFixture, OwnServerCleansUpBeforeAndAfter) {
  MV_REQUIRE_FIREBIRD();
  // No process has a number beyond the kernel's limit of 2^22.
  const std::string stale = "/tmp/mvtest-fb.4194305.left";
  fs::create_directories(stale + "/lock");
  std::string folder;
  int port = 0;
  {
    const auto start = Clock::now();
    mvtest::FirebirdServer fb;
    std::cout << "Firebird start: " << MillisecondsSince(start) << " ms" << std::endl;
    folder = fb.Folder();
    port = fb.Port();
    EXPECT_FALSE(fs::exists(stale));
    EXPECT_TRUE(mvtest::LoopbackPortAnswers(port));
    try {
      fb.Exec("SELECT * FROM no_such_table");
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
      EXPECT_NE(std::string(e.what()).find("Table unknown; NO_SUCH_TABLE"), std::string::npos) << e.what();
    }
    fb.Exec("CREATE TABLE t (i INTEGER, n NUMERIC(9,3), d DOUBLE PRECISION, s VARCHAR(20), b BOOLEAN, "
            "dt DATE, tm TIME, ts TIMESTAMP, x BLOB SUB_TYPE TEXT)");
    fb.Exec("INSERT INTO t VALUES (-7, -0.05, 2.5, 'Grüße 東京', TRUE, '2009-01-31', '23:59:58.5', "
            "'2009-01-02 03:04:05', 'it''s')");
    fb.Exec("INSERT INTO t (s) VALUES ('')");
    EXPECT_EQ(fb.Query("SELECT * FROM t ORDER BY i NULLS LAST"),
              (mvtest::SqlRows{{"-7", "-0.050", "2.5", "Grüße 東京", "true", "2009-01-31", "23:59:58.5",
                                "2009-01-02 03:04:05", "it's"},
                               {std::nullopt, std::nullopt, std::nullopt, "", std::nullopt, std::nullopt,
                                std::nullopt, std::nullopt, std::nullopt}}));
  }
  EXPECT_FALSE(fs::exists(folder));
  EXPECT_FALSE(mvtest::LoopbackPortAnswers(port));
}

// A run that ends without its destructors (as when killed or crashed) leaves
// neither a server nor its folder: the watchdog stops and removes them.
TEST(FirebirdServerFixture, DeadRunLeavesNothing) {
  MV_REQUIRE_FIREBIRD();
  if (std::getenv("MV_FIREBIRD_ABORT_CHILD")) {
    mvtest::FirebirdServer fb;
    std::cout << "folder=" << fb.Folder() << " port=" << fb.Port() << std::endl;
    std::_Exit(3);
  }
  setenv("MV_FIREBIRD_ABORT_CHILD", "1", 1);
  const mvtest::ToolResult child = mvtest::RunTool(
      fs::read_symlink("/proc/self/exe").string(), {"--gtest_filter=FirebirdServerFixture.DeadRunLeavesNothing"});
  unsetenv("MV_FIREBIRD_ABORT_CHILD");
  std::smatch m;
  static const std::regex said("folder=(\\S+) port=(\\d+)");
  ASSERT_TRUE(std::regex_search(child.out, m, said)) << child.out << child.err;
  EXPECT_NE(child.exitCode, 0);
  EXPECT_TRUE(mvtest::FolderGoneWithin(m[1], 20000)) << m[1];
  EXPECT_TRUE(mvtest::LoopbackPortClosedWithin(std::stoi(m[2]), 5000));
}
