#include "MariaDbServer.h"

#include "ScratchServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <mysql.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

extern char** environ;

namespace fs = std::filesystem;

namespace mvtest {

namespace {

// Scratch folders are <root>/mvtest-maria.<pid>.XXXXXX, so that a run can
// tell its own from those of a run that is gone.
constexpr const char* kFolderPrefix = "mvtest-maria.";
bool IsExecutable(const std::string& p) { return access(p.c_str(), X_OK) == 0; }

// A program of the server: $MV_MARIADB_BIN/<name>, else the first of the
// usual folders that has it.
std::string FindProgram(const std::string& name) {
  if (const char* env = std::getenv("MV_MARIADB_BIN"); env && *env)
    return IsExecutable(std::string(env) + "/" + name) ? std::string(env) + "/" + name : "";
  for (const char* dir : {"/usr/sbin", "/usr/bin", "/usr/local/sbin", "/usr/local/bin"})
    if (IsExecutable(std::string(dir) + "/" + name)) return std::string(dir) + "/" + name;
  return {};
}

bool IsRoot() { return geteuid() == 0; }

// Kills the server of a scratch folder named in its pid file; the data is
// thrown away, so there is no clean shutdown to wait for.
void KillServer(const std::string& folder) {
  std::ifstream pidFile(folder + "/mariadbd.pid");
  long pid = 0;
  if (pidFile >> pid && pid > 1) kill(static_cast<pid_t>(pid), SIGKILL);
}

void RemoveStaleFolders() { RemoveStaleScratchFolders(kFolderPrefix, KillServer); }

// Connects through the socket as root, or over TCP as the test user.
MYSQL* Connect(const std::string& socket, const char* user, const char* password, const char* database,
               int port, std::string& error) {
  MYSQL* connection = mysql_init(nullptr);
  if (!connection) {
    error = "out of memory";
    return nullptr;
  }
  const unsigned timeout = 20;
  mysql_options(connection, MYSQL_OPT_CONNECT_TIMEOUT, &timeout);
  mysql_options(connection, MYSQL_SET_CHARSET_NAME, "utf8mb4");
  const bool viaSocket = !socket.empty();
  if (!mysql_real_connect(connection, viaSocket ? "localhost" : "127.0.0.1", user, password, database,
                          viaSocket ? 0 : port, viaSocket ? socket.c_str() : nullptr, CLIENT_MULTI_STATEMENTS)) {
    error = mysql_error(connection);
    mysql_close(connection);
    return nullptr;
  }
  return connection;
}

}  // namespace

bool MariaDbServer::Available(std::string* why) {
  static const std::string reason = [] {
    if (FindProgram("mariadbd").empty() || FindProgram("mariadb-install-db").empty())
      return std::string(
          "MariaDB server programs not found (mariadbd and mariadb-install-db in /usr/sbin or /usr/bin, or "
          "$MV_MARIADB_BIN; scripts/setup.sh installs them)");
    return std::string();
  }();
  if (why) *why = reason;
  return reason.empty();
}

MariaDbServer& MariaDbServer::Shared() {
  static std::mutex mutex;
  static std::unique_ptr<MariaDbServer> server;
  static std::string failure;
  std::lock_guard<std::mutex> lock(mutex);
  if (!server && failure.empty()) {
    try {
      server = std::make_unique<MariaDbServer>();
    } catch (const std::exception& e) {
      failure = e.what();
    }
  }
  if (!server) throw std::runtime_error(failure);
  return *server;
}

MariaDbServer::MariaDbServer() {
  std::string why;
  if (!Available(&why)) throw std::runtime_error(why);
  try {
    Start();
  } catch (...) {
    Stop();
    throw;
  }
}

MariaDbServer::~MariaDbServer() { Stop(); }

std::string MariaDbServer::Uri(const std::string& database) const {
  return std::string("mysql://") + kUser + ":" + kPassword + "@" + host_ + ":" + std::to_string(port_) + "/" +
         database;
}

void MariaDbServer::Start() {
  RemoveStaleFolders();
  std::string pattern = ScratchRoot() + "/" + kFolderPrefix + std::to_string(getpid()) + ".XXXXXX";
  if (!mkdtemp(pattern.data())) throw std::runtime_error("MariaDB test server: cannot create " + pattern);
  folder_ = pattern;
  StartWatchdog();

  const std::string data = folder_ + "/data";
  const std::string installLog = folder_ + "/install.log";
  // A private folder for temporary tables: a starting server removes the
  // temporary files it finds in its folder, those of other servers too.
  const std::string temporary = folder_ + "/tmp";
  fs::create_directories(temporary);
  std::vector<std::string> install = {FindProgram("mariadb-install-db"), "--no-defaults", "--datadir=" + data,
                                      "--tmpdir=" + temporary,
                                      "--auth-root-authentication-method=normal", "--skip-test-db",
                                      "--skip-name-resolve"};
  if (IsRoot()) install.insert(install.begin() + 2, "--user=root");
  const pid_t installer = SpawnProgram(install, installLog);
  const int installExit = installer > 0 ? WaitProgram(installer) : -1;
  if (installExit != 0)
    throw std::runtime_error("MariaDB test server: mariadb-install-db failed (exit " + std::to_string(installExit) +
                             ") in " + folder_ + "; " + LogTail(installLog));

  // The server on a free port; another process may take the port between
  // the test and the server's bind, so a server that dies early tries
  // another one.
  const std::string socket = folder_ + "/sock";
  const std::string errorLog = folder_ + "/error.log";
  std::string error;
  for (int attempt = 1;; ++attempt) {
    port_ = FreeLoopbackPort("MariaDB");
    std::vector<std::string> server = {FindProgram("mariadbd"), "--no-defaults", "--datadir=" + data,
                                       "--tmpdir=" + temporary, "--socket=" + socket, "--port=" + std::to_string(port_),
                                       "--bind-address=127.0.0.1", "--pid-file=" + folder_ + "/mariadbd.pid",
                                       "--log-error=" + errorLog, "--skip-name-resolve", "--skip-log-bin",
                                       "--innodb-buffer-pool-size=64M", "--innodb-log-file-size=16M",
                                       "--innodb-flush-log-at-trx-commit=0", "--character-set-server=utf8mb4",
                                       "--collation-server=utf8mb4_general_ci", "--default-time-zone=+00:00",
                                       "--max-connections=30"};
    if (IsRoot()) server.insert(server.begin() + 2, "--user=root");
    serverPid_ = SpawnProgram(server, folder_ + "/mariadbd.out");
    if (serverPid_ <= 0) throw std::runtime_error("MariaDB test server: cannot start mariadbd");
    MYSQL* root = nullptr;
    bool died = false;
    for (int i = 0; i < 600 && !root; ++i) {
      int status = 0;
      if (waitpid(serverPid_, &status, WNOHANG) == serverPid_) {
        died = true;
        serverPid_ = -1;
        break;
      }
      if (access(socket.c_str(), F_OK) == 0) root = Connect(socket, "root", "", nullptr, 0, error);
      if (!root) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (root) {
      const char* setup =
          "CREATE DATABASE test; CREATE USER 'test'@'127.0.0.1' IDENTIFIED BY 'test'; "
          "GRANT ALL ON *.* TO 'test'@'127.0.0.1'";
      bool ok = mysql_query(root, setup) == 0;
      while (ok && mysql_more_results(root)) ok = mysql_next_result(root) == 0;
      if (!ok) error = mysql_error(root);
      mysql_close(root);
      if (!ok) throw std::runtime_error("MariaDB test server: creating the test user failed: " + error);
      break;
    }
    std::ifstream in(errorLog);
    const std::string log((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (died && attempt < 3 && log.find("Address already in use") != std::string::npos) continue;
    throw std::runtime_error("MariaDB test server: mariadbd " + std::string(died ? "exited" : "did not answer") +
                             " on port " + std::to_string(port_) + (error.empty() ? "" : " (" + error + ")") +
                             "; " + LogTail(errorLog));
  }
  connection_ = Connect("", kUser, kPassword, kDatabase, port_, error);
  if (!connection_)
    throw std::runtime_error("MariaDB test server: connecting to port " + std::to_string(port_) + " failed: " + error +
                             "; " + LogTail(errorLog));
}

// The watchdog: a shell in a session of its own that waits for the end of a
// pipe only this process holds, then kills the server and removes the
// folder. It acts when this process dies without running its destructors.
void MariaDbServer::StartWatchdog() {
  const Watchdog watchdog = mvtest::StartWatchdog(
      "mvtest-maria-watchdog",
      "read -r _; if [ -f \"$1/mariadbd.pid\" ]; then kill -9 \"$(cat \"$1/mariadbd.pid\")\"; fi; rm -rf \"$1\"",
      {folder_});
  watchdogPid_ = watchdog.pid;
  watchdogPipe_ = watchdog.pipe;
}

void MariaDbServer::Stop() noexcept {
  if (connection_) mysql_close(connection_);
  connection_ = nullptr;
  if (serverPid_ > 0) {
    kill(serverPid_, SIGKILL);
    WaitProgram(serverPid_);
    serverPid_ = -1;
    // The kernel may close a killed server's sockets a moment after it is reaped.
    if (port_ > 0) LoopbackPortClosedWithin(port_, 5000);
  } else if (!folder_.empty()) {
    KillServer(folder_);
  }
  if (!folder_.empty()) {
    std::error_code ec;
    fs::remove_all(folder_, ec);
  }
  if (watchdogPid_ > 0) {
    kill(watchdogPid_, SIGKILL);
    WaitProgram(watchdogPid_);
    watchdogPid_ = -1;
  }
  if (watchdogPipe_ >= 0) close(watchdogPipe_);
  watchdogPipe_ = -1;
}

namespace {

// Runs statements and reads every result; the rows of the last result that
// has any when `rows` is given. Throws with the server's message.
void Run(MYSQL* connection, const std::string& sql, SqlRows* rows) {
  auto fail = [&] {
    std::string message = mysql_error(connection);
    // Drain what is left so that the connection stays usable.
    while (mysql_more_results(connection) && mysql_next_result(connection) == 0)
      if (MYSQL_RES* r = mysql_store_result(connection)) mysql_free_result(r);
    throw std::runtime_error("MariaDB: " + message + "\nin: " + Abbreviated(sql));
  };
  if (mysql_real_query(connection, sql.data(), sql.size()) != 0) fail();
  for (;;) {
    MYSQL_RES* result = mysql_store_result(connection);
    if (!result && mysql_field_count(connection) != 0) fail();
    if (result) {
      if (rows) {
        rows->clear();
        const unsigned columns = mysql_num_fields(result);
        while (MYSQL_ROW row = mysql_fetch_row(result)) {
          const unsigned long* lengths = mysql_fetch_lengths(result);
          SqlRow& out = rows->emplace_back(columns);
          for (unsigned c = 0; c < columns; ++c)
            if (row[c]) out[c] = std::string(row[c], lengths[c]);
        }
      }
      mysql_free_result(result);
    }
    const int next = mysql_next_result(connection);
    if (next > 0) fail();
    if (next < 0) break;
  }
}

}  // namespace

void MariaDbServer::Exec(const std::string& sql) { Run(connection_, sql, nullptr); }

SqlRows MariaDbServer::Query(const std::string& sql) {
  SqlRows rows;
  Run(connection_, sql, &rows);
  return rows;
}

}  // namespace mvtest
