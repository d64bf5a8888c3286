// A throw-away Firebird 3 server for tests: a private server process in a
// scratch folder (in /dev/shm when it has room, else in /tmp) with its own
// firebird.conf, databases.conf and security database, listening on
// 127.0.0.1 at a free port. The security database, the user SYSDBA with a
// known password and a test user are made by the client library's embedded
// engine before the server starts. The server is stopped and its folder
// removed when the object goes, at exit, and by a watchdog process when the
// test executable dies any other way; a folder left by a killed run (the
// watchdog killed too) is cleaned at the next start.
//
//   TEST(FirebirdSomething, Rows) {
//     MV_REQUIRE_FIREBIRD();
//     mvtest::FirebirdServer& fb = mvtest::FirebirdServer::Shared();
//     fb.Exec("CREATE TABLE t (a integer)");
//     mvtest::SqlRows rows = fb.Query("SELECT a FROM t");
//   }
//
// The server has two databases owned by the user "TEST" (password "test"),
// known by the aliases "test" and "chinook" (the second stays empty until
// ChinookOnFirebird() loads it); DSN "127.0.0.1/PORT:test".
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "PostgresServer.h"  // SqlRow, SqlRows, RowText, RunningInCI
#include "support/WideString.h"

namespace mvtest {

class FirebirdServer {
 public:
  // Whether the server program can be run here; the reason when not.
  static bool Available(std::string* why = nullptr);

  // The server shared by the tests of this executable, started at its first
  // use and stopped at exit. A failed start is reported again at every call
  // rather than retried.
  static FirebirdServer& Shared();

  // Starts a server; throws std::runtime_error naming the step that failed,
  // the port and the tail of the server's output, after cleaning up.
  FirebirdServer();
  ~FirebirdServer();
  FirebirdServer(const FirebirdServer&) = delete;
  FirebirdServer& operator=(const FirebirdServer&) = delete;

  // Runs one statement in a transaction of its own on the fixture's
  // connection to `database` (an alias); throws std::runtime_error with the
  // server's message and the statement.
  void Exec(const std::string& sql, const std::string& database = kDatabase);
  void Exec(const mv::WideString& sql) { Exec(mv::UTF8Encode(sql)); }

  // The rows of a query as text: numbers as written in SQL, dates as
  // YYYY-MM-DD, times as HH:MM:SS (a fraction only when there is one),
  // booleans as "true"/"false", text blobs as their text.
  SqlRows Query(const std::string& sql, const std::string& database = kDatabase);
  SqlRows Query(const mv::WideString& sql) { return Query(mv::UTF8Encode(sql)); }

  int Port() const { return port_; }
  const std::string& Host() const { return host_; }
  static constexpr const char* kUser = "TEST";
  static constexpr const char* kPassword = "test";
  static constexpr const char* kSysdbaPassword = "masterkey";
  static constexpr const char* kDatabase = "test";
  // 127.0.0.1/PORT:<alias>
  std::string Dsn(const std::string& database = kDatabase) const;
  // The file of a database known by `alias`.
  std::string DatabaseFile(const std::string& alias) const { return folder_ + "/" + alias + ".fdb"; }
  // The scratch folder: firebird.conf, databases.conf, the databases, server.out.
  const std::string& Folder() const { return folder_; }

 private:
  class Session;
  void Start();
  void StartWatchdog();
  void Stop() noexcept;
  Session& SessionOn(const std::string& database);

  std::string folder_;
  std::string host_ = "127.0.0.1";
  int port_ = 0;
  int serverPid_ = -1;
  int watchdogPid_ = -1;
  int watchdogPipe_ = -1;
  std::map<std::string, std::unique_ptr<Session>> sessions_;
};

}  // namespace mvtest

// Skips the test when no server can run here, with the reason; fails instead
// under continuous integration.
#define MV_REQUIRE_FIREBIRD()                                                      \
  do {                                                                             \
    std::string mvFirebirdWhy_;                                                    \
    if (!::mvtest::FirebirdServer::Available(&mvFirebirdWhy_)) {                   \
      if (::mvtest::RunningInCI()) GTEST_FAIL() << mvFirebirdWhy_;                 \
      GTEST_SKIP() << mvFirebirdWhy_;                                              \
    }                                                                              \
  } while (0)
