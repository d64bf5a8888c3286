#include "PostgresServer.h"

#include "ScratchServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <libpq-fe.h>
#include <netinet/in.h>
#include <pwd.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <random>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace fs = std::filesystem;

namespace mvtest {

namespace {

// Scratch folders are <root>/mvtest-pg.<pid>.XXXXXX, so that a run can tell
// its own from those of a run that is gone.
constexpr const char* kFolderPrefix = "mvtest-pg.";
bool IsExecutable(const fs::path& p) { return access(p.c_str(), X_OK) == 0; }

// The folder of initdb, pg_ctl and postgres: $MV_POSTGRES_BIN, else the
// newest /usr/lib/postgresql/<version>/bin that has all three.
std::string FindServerBin() {
  auto complete = [](const fs::path& dir) {
    return IsExecutable(dir / "initdb") && IsExecutable(dir / "pg_ctl") && IsExecutable(dir / "postgres");
  };
  if (const char* env = std::getenv("MV_POSTGRES_BIN"); env && *env) return complete(env) ? env : "";
  std::vector<std::pair<int, fs::path>> found;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator("/usr/lib/postgresql", ec)) {
    const std::string name = entry.path().filename().string();
    if (name.empty() || name.find_first_not_of("0123456789.") != std::string::npos) continue;
    if (complete(entry.path() / "bin")) found.emplace_back(std::atoi(name.c_str()), entry.path() / "bin");
  }
  if (found.empty()) return {};
  return std::max_element(found.begin(), found.end())->second.string();
}

std::string FindRunuser() {
  for (const char* p : {"/usr/sbin/runuser", "/sbin/runuser", "/usr/bin/runuser"})
    if (IsExecutable(p)) return p;
  return {};
}

bool IsRoot() { return geteuid() == 0; }

// Runs a program to its end, output appended to `log`, in `dir`; as the
// postgres user when `asDbUser` and we are root (initdb refuses root).
// Returns its exit code, -1 when it could not run or died of a signal.
int RunProgram(std::vector<std::string> args, const std::string& log, const std::string& dir, bool asDbUser) {
  if (asDbUser && IsRoot()) args.insert(args.begin(), {FindRunuser(), "-u", "postgres", "--"});
  const pid_t pid = SpawnProgram(std::move(args), log, dir);
  return pid > 0 ? WaitProgram(pid) : -1;
}

// Stops the server of a data folder at once (the data is thrown away).
void StopCluster(const std::string& bin, const std::string& folder) {
  const std::string data = folder + "/data";
  if (!fs::exists(data + "/postmaster.pid")) return;
  if (RunProgram({bin + "/pg_ctl", "-D", data, "-m", "immediate", "-w", "-t", "20", "stop"}, "/dev/null", "/",
                 true) == 0)
    return;
  // pg_ctl could not do it: kill the postmaster named in its pid file.
  std::ifstream pidFile(data + "/postmaster.pid");
  long pid = 0;
  if (pidFile >> pid && pid > 1) kill(static_cast<pid_t>(pid), SIGKILL);
}

// Removes scratch folders of runs whose process is gone, stopping their
// servers first (a run killed together with its watchdog).
void RemoveStaleFolders(const std::string& bin) {
  RemoveStaleScratchFolders(kFolderPrefix, [&bin](const std::string& folder) { StopCluster(bin, folder); });
}

std::string Trimmed(std::string s) {
  while (!s.empty() && (s.back() == '\n' || s.back() == ' ')) s.pop_back();
  return s;
}

}  // namespace

std::string RowText(const SqlRow& row) {
  std::string out;
  for (size_t i = 0; i < row.size(); ++i) out += (i ? " | " : "") + (row[i] ? *row[i] : std::string("NULL"));
  return out;
}

bool RunningInCI() {
  const char* ci = std::getenv("CI");
  return ci && (std::strcmp(ci, "true") == 0 || std::strcmp(ci, "1") == 0);
}

bool PostgresServer::Available(std::string* why) {
  static const std::string reason = [] {
    if (const char* env = std::getenv("MV_POSTGRES_BIN"); env && *env && FindServerBin().empty())
      return "$MV_POSTGRES_BIN (" + std::string(env) + ") lacks initdb, pg_ctl or postgres";
    if (FindServerBin().empty())
      return std::string(
          "PostgreSQL server programs not found (no /usr/lib/postgresql/<version>/bin with initdb, pg_ctl and "
          "postgres, nor $MV_POSTGRES_BIN; scripts/setup.sh installs them)");
    if (IsRoot() && getpwnam("postgres") == nullptr)
      return std::string("running as root, and there is no postgres user to run the PostgreSQL server as");
    if (IsRoot() && FindRunuser().empty())
      return std::string("running as root, and runuser is missing to run the PostgreSQL server as postgres");
    return std::string();
  }();
  if (why) *why = reason;
  return reason.empty();
}

PostgresServer& PostgresServer::Shared() {
  static std::mutex mutex;
  static std::unique_ptr<PostgresServer> server;
  static std::string failure;
  std::lock_guard<std::mutex> lock(mutex);
  if (!server && failure.empty()) {
    try {
      server = std::make_unique<PostgresServer>();
    } catch (const std::exception& e) {
      failure = e.what();
    }
  }
  if (!server) throw std::runtime_error(failure);
  return *server;
}

PostgresServer::PostgresServer() {
  std::string why;
  if (!Available(&why)) throw std::runtime_error(why);
  try {
    Start();
  } catch (...) {
    Stop();
    throw;
  }
}

PostgresServer::~PostgresServer() { Stop(); }

void PostgresServer::Start() {
  bin_ = FindServerBin();
  RemoveStaleFolders(bin_);

  std::string pattern = ScratchRoot() + "/" + kFolderPrefix + std::to_string(getpid()) + ".XXXXXX";
  if (!mkdtemp(pattern.data())) throw std::runtime_error("PostgreSQL test server: cannot create " + pattern);
  folder_ = pattern;
  if (IsRoot()) {
    const passwd* user = getpwnam("postgres");
    if (!user || chown(folder_.c_str(), user->pw_uid, user->pw_gid) != 0)
      throw std::runtime_error("PostgreSQL test server: cannot give " + folder_ + " to the postgres user");
  }

  StartWatchdog();

  // initdb: trust on loopback, no syncing (the cluster lives for one run).
  const std::string data = folder_ + "/data";
  const std::string initLog = folder_ + "/initdb.log";
  const int initExit = RunProgram({bin_ + "/initdb", "-D", data, "-U", "postgres", "-A", "trust", "-E", "UTF8",
                                   "--locale=C.UTF-8", "--no-sync", "--no-instructions"},
                                  initLog, folder_, true);
  if (initExit != 0)
    throw std::runtime_error("PostgreSQL test server: initdb failed (exit " + std::to_string(initExit) + ") in " +
                             folder_ + "; " + LogTail(initLog));

  // pg_ctl start on a free port; another process may take the port between
  // the test and the server's bind, so a bind failure tries another one.
  const std::string serverLog = folder_ + "/server.log";
  for (int attempt = 1;; ++attempt) {
    port_ = FreeLoopbackPort("PostgreSQL");
    std::error_code ignored;
    fs::remove(serverLog, ignored);
    const std::string options = "-c listen_addresses=127.0.0.1 -p " + std::to_string(port_) + " -k " + folder_ +
                                " -c fsync=off -c synchronous_commit=off -c full_page_writes=off"
                                " -c TimeZone=UTC -c max_connections=20";
    const int startExit =
        RunProgram({bin_ + "/pg_ctl", "-D", data, "-l", serverLog, "-w", "-t", "60", "-o", options, "start"},
                   folder_ + "/pg_ctl.log", folder_, true);
    if (startExit == 0) break;
    StopCluster(bin_, folder_);
    std::ifstream in(serverLog);
    const std::string log((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (attempt < 3 && log.find("could not bind") != std::string::npos) continue;
    throw std::runtime_error("PostgreSQL test server: pg_ctl start failed (exit " + std::to_string(startExit) +
                             ") on port " + std::to_string(port_) + "; " + LogTail(serverLog) + "\n" +
                             LogTail(folder_ + "/pg_ctl.log", 5));
  }
  connectionString_ = "host=127.0.0.1 port=" + std::to_string(port_) + " dbname=postgres user=postgres";
  connection_ = PQconnectdb((connectionString_ + " client_encoding=UTF8 connect_timeout=20").c_str());
  if (PQstatus(connection_) != CONNECTION_OK)
    throw std::runtime_error("PostgreSQL test server: connecting to port " + std::to_string(port_) +
                             " failed: " + Trimmed(PQerrorMessage(connection_)) + "; " + LogTail(serverLog));
}

// The watchdog: a shell in a session of its own that waits for the end of a
// pipe only this process holds, then stops the server and removes the
// folder. It acts when this process dies without running its destructors.
void PostgresServer::StartWatchdog() {
  // $1 pg_ctl, $2 the data folder, $3 the scratch folder, $4 runuser when root.
  const Watchdog watchdog = mvtest::StartWatchdog(
      "mvtest-pg-watchdog",
      "read -r _; if [ -f \"$2/postmaster.pid\" ]; then ${4:+\"$4\" -u postgres --} \"$1\" -D \"$2\" "
      "-m immediate -w -t 20 stop; fi; rm -rf \"$3\"",
      {bin_ + "/pg_ctl", folder_ + "/data", folder_, IsRoot() ? FindRunuser() : ""});
  watchdogPid_ = watchdog.pid;
  watchdogPipe_ = watchdog.pipe;
}

void PostgresServer::Stop() noexcept {
  if (connection_) PQfinish(connection_);
  connection_ = nullptr;
  if (!folder_.empty()) {
    StopCluster(bin_, folder_);
    std::error_code ec;
    fs::remove_all(folder_, ec);
  }
  if (watchdogPid_ > 0) {
    kill(watchdogPid_, SIGKILL);
    while (waitpid(watchdogPid_, nullptr, 0) < 0 && errno == EINTR) {
    }
    watchdogPid_ = -1;
  }
  if (watchdogPipe_ >= 0) close(watchdogPipe_);
  watchdogPipe_ = -1;
}

int PostgresServer::ServerVersion() const { return PQserverVersion(connection_); }

namespace {

// The result of a statement; throws with the server's message when it failed.
std::unique_ptr<PGresult, void (*)(PGresult*)> Run(pg_conn* connection, const std::string& sql, bool wantRows) {
  std::unique_ptr<PGresult, void (*)(PGresult*)> result(PQexec(connection, sql.c_str()), PQclear);
  const ExecStatusType status = PQresultStatus(result.get());
  const bool ok = wantRows ? status == PGRES_TUPLES_OK
                           : status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK || status == PGRES_EMPTY_QUERY;
  if (!ok) {
    std::string message = result ? PQresultErrorMessage(result.get()) : "";
    if (message.empty()) message = PQerrorMessage(connection);
    if (message.empty()) message = std::string("unexpected result ") + PQresStatus(status);
    throw std::runtime_error("PostgreSQL: " + Trimmed(message) + "\nin: " + Abbreviated(sql));
  }
  return result;
}

}  // namespace

void PostgresServer::Exec(const std::string& sql) { Run(connection_, sql, false); }

SqlRows PostgresServer::Query(const std::string& sql) {
  auto result = Run(connection_, sql, true);
  SqlRows rows(PQntuples(result.get()));
  const int columns = PQnfields(result.get());
  for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
    rows[r].resize(columns);
    for (int c = 0; c < columns; ++c)
      if (!PQgetisnull(result.get(), r, c))
        rows[r][c] = std::string(PQgetvalue(result.get(), r, c), PQgetlength(result.get(), r, c));
  }
  return rows;
}

}  // namespace mvtest
