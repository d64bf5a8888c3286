// A throw-away PostgreSQL server for tests: a private cluster in a scratch
// folder (in /dev/shm when it has room, else in /tmp), listening on
// 127.0.0.1 at a free port, with fsync off. It is stopped and its folder
// removed when the object goes, at exit, and by a watchdog process when the
// test executable dies any other way; a folder left by a killed run (the
// watchdog killed too) is cleaned at the next start.
//
//   TEST(PostgresSomething, Rows) {
//     MV_REQUIRE_POSTGRES();
//     mvtest::PostgresServer& pg = mvtest::PostgresServer::Shared();
//     pg.Exec("CREATE TABLE t (a integer)");
//     mvtest::SqlRows rows = pg.Query("SELECT a FROM t");
//   }
//
// CTest runs every test case in a process of its own and a start costs about
// a second, so a suite keeps its server tests few (tables of cases inside).
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "SqlRows.h"
#include "support/WideString.h"

struct pg_conn;

namespace mvtest {

class PostgresServer {
 public:
  // Whether the server programs can be run here; the reason when not.
  static bool Available(std::string* why = nullptr);

  // The server shared by the tests of this executable, started at its first
  // use and stopped at exit. A failed start is reported again at every call
  // rather than retried.
  static PostgresServer& Shared();

  // Starts a server; throws std::runtime_error naming the step that failed,
  // the port and the tail of the server's log, after cleaning up.
  PostgresServer();
  ~PostgresServer();
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;

  // Runs statements (several separated by semicolons are allowed); throws
  // std::runtime_error with the server's message and the statement.
  void Exec(const std::string& sql);
  void Exec(const mv::WideString& sql) { Exec(mv::UTF8Encode(sql)); }

  // The rows of a query as text in the server's output format.
  SqlRows Query(const std::string& sql);
  SqlRows Query(const mv::WideString& sql) { return Query(mv::UTF8Encode(sql)); }

  // "host=127.0.0.1 port=N dbname=postgres user=postgres": no password.
  const std::string& ConnectionString() const { return connectionString_; }
  int Port() const { return port_; }
  // The server's version number, e.g. 150018.
  int ServerVersion() const;
  // The open libpq connection of the fixture.
  pg_conn* Connection() const { return connection_; }
  // The scratch folder: data/, server.log, the socket.
  const std::string& Folder() const { return folder_; }

 private:
  void Start();
  void StartWatchdog();
  void Stop() noexcept;

  std::string folder_;
  std::string bin_;
  int port_ = 0;
  std::string connectionString_;
  pg_conn* connection_ = nullptr;
  int watchdogPid_ = -1;
  int watchdogPipe_ = -1;
};

}  // namespace mvtest

// Skips the test when no server can run here, with the reason; fails instead
// under continuous integration.
#define MV_REQUIRE_POSTGRES()                                                      \
  do {                                                                             \
    std::string mvPostgresWhy_;                                                    \
    if (!::mvtest::PostgresServer::Available(&mvPostgresWhy_)) {                   \
      if (::mvtest::RunningInCI()) GTEST_FAIL() << mvPostgresWhy_;                 \
      GTEST_SKIP() << mvPostgresWhy_;                                              \
    }                                                                              \
  } while (0)
