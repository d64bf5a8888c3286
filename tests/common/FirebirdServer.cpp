#include "FirebirdServer.h"

#include "ScratchServer.h"

#include <fcntl.h>
#include <ibase.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

extern char** environ;

namespace fs = std::filesystem;

namespace mvtest {

namespace {

// Scratch folders are <root>/mvtest-fb.<pid>.XXXXXX, so that a run can tell
// its own from those of a run that is gone.
constexpr const char* kFolderPrefix = "mvtest-fb.";
bool IsExecutable(const std::string& p) { return access(p.c_str(), X_OK) == 0; }

// The server program: $MV_FIREBIRD_BIN/firebird, else the first of the usual
// folders that has it.
std::string FindServer() {
  if (const char* env = std::getenv("MV_FIREBIRD_BIN"); env && *env)
    return IsExecutable(std::string(env) + "/firebird") ? std::string(env) + "/firebird" : "";
  for (const char* dir : {"/usr/sbin", "/usr/bin", "/opt/firebird/bin"})
    if (IsExecutable(std::string(dir) + "/firebird")) return std::string(dir) + "/firebird";
  return {};
}

// The server's root folder (messages, plugins.conf, intl): the one holding
// firebird.msg.
std::string FindRoot() {
  std::vector<std::string> candidates = {"/usr/lib/x86_64-linux-gnu/firebird/3.0", "/usr/lib/aarch64-linux-gnu/firebird/3.0",
                                         "/usr/lib/firebird/3.0", "/opt/firebird"};
  if (const char* env = std::getenv("MV_FIREBIRD_ROOT"); env && *env) candidates.insert(candidates.begin(), env);
  for (const std::string& dir : candidates)
    if (access((dir + "/firebird.msg").c_str(), R_OK) == 0) return dir;
  return {};
}

// Kills the server of a scratch folder named in its pid file; the data is
// thrown away, so there is no clean shutdown to wait for.
void KillServer(const std::string& folder) {
  std::ifstream pidFile(folder + "/server.pid");
  long pid = 0;
  if (pidFile >> pid && pid > 1) kill(static_cast<pid_t>(pid), SIGKILL);
}

// The text of a status vector, its lines joined by "; ".
std::string StatusText(const ISC_STATUS* status) {
  std::string out;
  char line[1024];
  const ISC_STATUS* cursor = status;
  while (fb_interpret(line, sizeof line, &cursor) > 0)
    if (*line) out += (out.empty() ? "" : "; ") + std::string(line);
  return out.empty() ? "unknown error" : out;
}

// A database parameter block.
class Dpb {
 public:
  Dpb() : bytes_(1, static_cast<char>(isc_dpb_version1)) {}
  Dpb& Text(char tag, const std::string& value) {
    bytes_ += tag;
    bytes_ += static_cast<char>(value.size());
    bytes_ += value;
    return *this;
  }
  Dpb& Number(char tag, int value) {
    bytes_ += tag;
    bytes_ += static_cast<char>(4);
    for (int i = 0; i < 4; ++i) bytes_ += static_cast<char>((value >> (8 * i)) & 0xff);
    return *this;
  }
  short Length() const { return static_cast<short>(bytes_.size()); }
  const char* Data() const { return bytes_.data(); }

 private:
  std::string bytes_;
};

void Check(ISC_STATUS* status, const std::string& what) {
  if (status[0] == 1 && status[1]) throw std::runtime_error("Firebird: " + StatusText(status) + "\nin: " + what);
}

// "2009-01-31", "03:04:05" or "03:04:05.6780" cut to its significant digits.
std::string TimeText(ISC_TIME time) {
  tm parts{};
  isc_decode_sql_time(&time, &parts);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", parts.tm_hour, parts.tm_min, parts.tm_sec);
  std::string out = buffer;
  if (const unsigned fraction = time % 10000; fraction) {
    std::snprintf(buffer, sizeof buffer, ".%04u", fraction);
    out += buffer;
    while (out.back() == '0') out.pop_back();
  }
  return out;
}

std::string DateText(ISC_DATE date) {
  tm parts{};
  isc_decode_sql_date(&date, &parts);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
  return buffer;
}

// An integer of `scale` decimal places as written in SQL: 1234 with scale -2
// is "12.34".
std::string ScaledText(int64_t value, int scale) {
  const bool negative = value < 0;
  std::string digits = std::to_string(value);
  if (negative) digits.erase(0, 1);
  if (scale < 0) {
    const size_t places = static_cast<size_t>(-scale);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, ".");
  }
  return negative ? "-" + digits : digits;
}

// CHAR(n) comes padded to the most bytes n characters can take; its value
// is the first n characters.
int BytesPerChar(short charset) {
  switch (charset & 0xff) {
    case 3: return 3;  // UNICODE_FSS
    case 4: return 4;  // UTF8
    default: return 1;
  }
}

std::string FirstCharacters(std::string text, int count) {
  size_t i = 0;
  for (int n = 0; i < text.size() && n < count; ++n)
    do ++i;
    while (i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80);
  text.resize(i);
  return text;
}

std::string FloatText(double value) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

}  // namespace

// One attachment to a database of the server, over TCP as the test user.
class FirebirdServer::Session {
 public:
  Session(const std::string& dsn, const std::string& user, const std::string& password) : dsn_(dsn) {
    ISC_STATUS_ARRAY status;
    Dpb dpb;
    dpb.Text(isc_dpb_user_name, user).Text(isc_dpb_password, password).Text(isc_dpb_lc_ctype, "UTF8");
    dpb.Number(isc_dpb_connect_timeout, 10);
    if (isc_attach_database(status, 0, dsn.c_str(), &db_, dpb.Length(), dpb.Data()))
      throw std::runtime_error("Firebird: connecting to " + dsn + " failed: " + StatusText(status));
  }
  ~Session() {
    ISC_STATUS_ARRAY status;
    if (db_) isc_detach_database(status, &db_);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void Exec(const std::string& sql) {
    ISC_STATUS_ARRAY status;
    isc_tr_handle tr = 0;
    if (isc_start_transaction(status, &tr, 1, &db_, 0, nullptr)) Check(status, "starting a transaction");
    if (isc_dsql_execute_immediate(status, &db_, &tr, 0, sql.c_str(), SQL_DIALECT_V6, nullptr)) {
      const std::string message = StatusText(status);
      isc_rollback_transaction(status, &tr);
      throw std::runtime_error("Firebird: " + message + "\nin: " + Abbreviated(sql));
    }
    if (isc_commit_transaction(status, &tr)) Check(status, "COMMIT after " + Abbreviated(sql));
  }

  SqlRows Query(const std::string& sql) {
    ISC_STATUS_ARRAY status;
    isc_tr_handle tr = 0;
    isc_stmt_handle stmt = 0;
    std::vector<char> area(XSQLDA_LENGTH(1));
    auto* out = reinterpret_cast<XSQLDA*>(area.data());
    out->version = SQLDA_VERSION1;
    out->sqln = 1;
    SqlRows rows;
    try {
      if (isc_start_transaction(status, &tr, 1, &db_, 0, nullptr)) Check(status, "starting a transaction");
      if (isc_dsql_allocate_statement(status, &db_, &stmt)) Check(status, sql);
      if (isc_dsql_prepare(status, &tr, &stmt, 0, sql.c_str(), SQL_DIALECT_V6, out)) Check(status, Abbreviated(sql));
      if (out->sqld > out->sqln) {
        const short count = out->sqld;
        area.assign(XSQLDA_LENGTH(count), 0);
        out = reinterpret_cast<XSQLDA*>(area.data());
        out->version = SQLDA_VERSION1;
        out->sqln = count;
        if (isc_dsql_describe(status, &stmt, SQL_DIALECT_V6, out)) Check(status, Abbreviated(sql));
      }
      std::vector<std::vector<char>> buffers(out->sqld);
      std::vector<short> nulls(out->sqld);
      for (int c = 0; c < out->sqld; ++c) {
        XSQLVAR& var = out->sqlvar[c];
        buffers[c].assign(var.sqllen + sizeof(short), 0);
        var.sqldata = buffers[c].data();
        var.sqlind = &nulls[c];
      }
      if (isc_dsql_execute(status, &tr, &stmt, SQL_DIALECT_V6, nullptr)) Check(status, Abbreviated(sql));
      for (;;) {
        const ISC_STATUS fetched = out->sqld ? isc_dsql_fetch(status, &stmt, SQL_DIALECT_V6, out) : 100;
        if (fetched == 100) break;
        if (fetched) Check(status, Abbreviated(sql));
        SqlRow& row = rows.emplace_back(out->sqld);
        for (int c = 0; c < out->sqld; ++c)
          if (!((out->sqlvar[c].sqltype & 1) && nulls[c] < 0)) row[c] = Text(out->sqlvar[c], tr);
      }
      isc_dsql_free_statement(status, &stmt, DSQL_drop);
      stmt = 0;
      if (isc_commit_transaction(status, &tr)) Check(status, "COMMIT");
    } catch (...) {
      if (stmt) isc_dsql_free_statement(status, &stmt, DSQL_drop);
      if (tr) isc_rollback_transaction(status, &tr);
      throw;
    }
    return rows;
  }

 private:
  std::string Text(const XSQLVAR& var, isc_tr_handle& tr) {
    const char* data = var.sqldata;
    auto read = [data](auto value) {
      std::memcpy(&value, data, sizeof value);
      return value;
    };
    switch (var.sqltype & ~1) {
      case SQL_TEXT: return FirstCharacters(std::string(data, var.sqllen), var.sqllen / BytesPerChar(var.sqlsubtype));
      case SQL_VARYING: return std::string(data + sizeof(short), read(short{}));
      case SQL_SHORT: return ScaledText(read(int16_t{}), var.sqlscale);
      case SQL_LONG: return ScaledText(read(int32_t{}), var.sqlscale);
      case SQL_INT64: return ScaledText(read(int64_t{}), var.sqlscale);
      case SQL_FLOAT: return FloatText(read(float{}));
      case SQL_DOUBLE:
      case SQL_D_FLOAT: return FloatText(read(double{}));
      case SQL_BOOLEAN: return *data ? "true" : "false";
      case SQL_TYPE_DATE: return DateText(read(ISC_DATE{}));
      case SQL_TYPE_TIME: return TimeText(read(ISC_TIME{}));
      case SQL_TIMESTAMP: {
        const ISC_TIMESTAMP stamp = read(ISC_TIMESTAMP{});
        return DateText(stamp.timestamp_date) + " " + TimeText(stamp.timestamp_time);
      }
      case SQL_BLOB: return Blob(read(ISC_QUAD{}), tr);
      default:
        throw std::runtime_error("Firebird test server: column \"" + std::string(var.aliasname, var.aliasname_length) +
                                 "\" has a type the fixture does not read (" + std::to_string(var.sqltype & ~1) + ")");
    }
  }

  std::string Blob(ISC_QUAD id, isc_tr_handle& tr) {
    ISC_STATUS_ARRAY status;
    isc_blob_handle blob = 0;
    if (isc_open_blob2(status, &db_, &tr, &blob, &id, 0, nullptr)) Check(status, "opening a blob");
    std::string out;
    char segment[8192];
    for (;;) {
      unsigned short length = 0;
      const ISC_STATUS rc = isc_get_segment(status, &blob, &length, sizeof segment, segment);
      if (rc && rc != isc_segment) break;
      out.append(segment, length);
    }
    const bool failed = status[1] && status[1] != isc_segstr_eof;
    const std::string message = failed ? StatusText(status) : "";
    isc_close_blob(status, &blob);
    if (failed) throw std::runtime_error("Firebird: reading a blob: " + message);
    return out;
  }

  std::string dsn_;
  isc_db_handle db_ = 0;
};

bool FirebirdServer::Available(std::string* why) {
  static const std::string reason = [] {
    if (FindServer().empty())
      return std::string(
          "Firebird server program not found (firebird in /usr/sbin or /usr/bin, or $MV_FIREBIRD_BIN; "
          "scripts/setup.sh installs it)");
    if (FindRoot().empty())
      return std::string("Firebird's root folder (the one with firebird.msg) not found; set $MV_FIREBIRD_ROOT");
    return std::string();
  }();
  if (why) *why = reason;
  return reason.empty();
}

FirebirdServer& FirebirdServer::Shared() {
  static std::mutex mutex;
  static std::unique_ptr<FirebirdServer> server;
  static std::string failure;
  std::lock_guard<std::mutex> lock(mutex);
  if (!server && failure.empty()) {
    try {
      server = std::make_unique<FirebirdServer>();
    } catch (const std::exception& e) {
      failure = e.what();
    }
  }
  if (!server) throw std::runtime_error(failure);
  return *server;
}

FirebirdServer::FirebirdServer() {
  std::string why;
  if (!Available(&why)) throw std::runtime_error(why);
  try {
    Start();
  } catch (...) {
    Stop();
    throw;
  }
}

FirebirdServer::~FirebirdServer() { Stop(); }

std::string FirebirdServer::Dsn(const std::string& database) const {
  return host_ + "/" + std::to_string(port_) + ":" + database;
}

namespace {

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path);
  out << text;
  if (!out.flush()) throw std::runtime_error("Firebird test server: cannot write " + path);
}

// Creates a database with the client library's embedded engine (no server,
// no password: the engine trusts the user name) and runs `statements` in it.
void CreateEmbedded(const std::string& file, const std::string& user, const std::string& securityDatabase,
                    const std::vector<std::string>& statements = {}) {
  ISC_STATUS_ARRAY status;
  const std::string config = "Providers = Engine12\nSecurityDatabase = " + securityDatabase + "\n";
  Dpb dpb;
  dpb.Text(isc_dpb_user_name, user).Text(isc_dpb_lc_ctype, "UTF8").Text(isc_dpb_set_db_charset, "UTF8");
  dpb.Text(isc_dpb_config, config);
  dpb.Number(isc_dpb_force_write, 0);
  dpb.Number(isc_dpb_sql_dialect, SQL_DIALECT_V6);
  isc_db_handle db = 0;
  if (isc_create_database(status, 0, file.c_str(), &db, dpb.Length(), dpb.Data(), 0))
    throw std::runtime_error("Firebird test server: creating " + file + " failed: " + StatusText(status));
  std::string failure;
  isc_tr_handle tr = 0;
  if (!statements.empty() && isc_start_transaction(status, &tr, 1, &db, 0, nullptr)) failure = StatusText(status);
  for (const std::string& sql : statements) {
    if (!failure.empty()) break;
    if (isc_dsql_execute_immediate(status, &db, &tr, 0, sql.c_str(), SQL_DIALECT_V6, nullptr))
      failure = StatusText(status) + " in: " + sql;
  }
  if (tr && (failure.empty() ? isc_commit_transaction(status, &tr) : isc_rollback_transaction(status, &tr)) &&
      failure.empty())
    failure = StatusText(status);
  isc_detach_database(status, &db);
  if (!failure.empty()) throw std::runtime_error("Firebird test server: setting up " + file + ": " + failure);
}

}  // namespace

void FirebirdServer::Start() {
  RemoveStaleScratchFolders(kFolderPrefix, KillServer);
  std::string pattern = ScratchRoot() + "/" + kFolderPrefix + std::to_string(getpid()) + ".XXXXXX";
  if (!mkdtemp(pattern.data())) throw std::runtime_error("Firebird test server: cannot create " + pattern);
  folder_ = pattern;
  StartWatchdog();

  // The root folder of the server is the scratch folder: its own
  // firebird.conf and databases.conf beside links to the installed rest.
  const std::string root = FindRoot();
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(root, ec)) {
    const std::string name = entry.path().filename().string();
    if (name != "firebird.conf" && name != "databases.conf") fs::create_symlink(entry.path(), folder_ + "/" + name);
  }
  fs::create_directories(folder_ + "/lock");
  fs::create_directories(folder_ + "/tmp");
  const std::string security = folder_ + "/security.fdb";
  WriteFile(folder_ + "/databases.conf", "test = " + DatabaseFile("test") + "\nchinook = " + DatabaseFile("chinook") +
                                             "\nsecurity.db = " + security + "\n");

  // The embedded engine of this process writes its lock files in the
  // default folder; one that this user cannot write is replaced before the
  // library first reads its environment.
  if (access("/tmp/firebird", W_OK) != 0 && errno != ENOENT && !std::getenv("FIREBIRD_LOCK")) {
    const std::string lock = ScratchRoot() + "/mvtest-fb-lock." + std::to_string(geteuid());
    fs::create_directories(lock, ec);
    setenv("FIREBIRD_LOCK", lock.c_str(), 0);
  }
  CreateEmbedded(security, "SYSDBA", security,
                 {std::string("CREATE USER SYSDBA PASSWORD '") + kSysdbaPassword + "' USING PLUGIN Srp",
                  std::string("CREATE USER ") + kUser + " PASSWORD '" + kPassword + "' USING PLUGIN Srp"});
  // A new database costs a few hundred milliseconds; the second is a copy.
  CreateEmbedded(DatabaseFile("test"), kUser, security);
  fs::copy_file(DatabaseFile("test"), DatabaseFile("chinook"));

  // The server on a free port; another process may take the port between
  // the test and the server's bind, so a server that dies early tries
  // another one.
  const std::string output = folder_ + "/server.out";
  for (int attempt = 1;; ++attempt) {
    port_ = FreeLoopbackPort("Firebird");
    WriteFile(folder_ + "/firebird.conf", "RemoteServicePort = " + std::to_string(port_) +
                                              "\nRemoteBindAddress = 127.0.0.1\nSecurityDatabase = " + security +
                                              "\nAuthServer = Srp\nUserManager = Srp\nServerMode = Super\n"
                                              "DatabaseAccess = Restrict " + folder_ + "\n");
    serverPid_ = SpawnProgram({"/usr/bin/env", "FIREBIRD=" + folder_, "FIREBIRD_LOCK=" + folder_ + "/lock",
                               "FIREBIRD_TMP=" + folder_ + "/tmp", FindServer()},
                              output, folder_);
    if (serverPid_ <= 0) throw std::runtime_error("Firebird test server: cannot start " + FindServer());
    WriteFile(folder_ + "/server.pid", std::to_string(serverPid_) + "\n");
    bool died = false;
    bool answers = false;
    for (int i = 0; i < 300 && !answers && !died; ++i) {
      int status = 0;
      if (waitpid(serverPid_, &status, WNOHANG) == serverPid_) {
        died = true;
        serverPid_ = -1;
        break;
      }
      answers = LoopbackPortAnswers(port_);
      if (!answers) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    if (answers) break;
    if (died && attempt < 3) continue;
    throw std::runtime_error("Firebird test server: the server " + std::string(died ? "exited" : "did not answer") +
                             " on port " + std::to_string(port_) + "; " + LogTail(output));
  }
  SessionOn(kDatabase);
}

FirebirdServer::Session& FirebirdServer::SessionOn(const std::string& database) {
  auto& session = sessions_[database];
  if (!session) session = std::make_unique<Session>(Dsn(database), kUser, kPassword);
  return *session;
}

// The watchdog: a shell in a session of its own that waits for the end of a
// pipe only this process holds, then kills the server and removes the
// folder. It acts when this process dies without running its destructors.
void FirebirdServer::StartWatchdog() {
  const Watchdog watchdog = mvtest::StartWatchdog(
      "mvtest-fb-watchdog",
      "read -r _; if [ -f \"$1/server.pid\" ]; then kill -9 \"$(cat \"$1/server.pid\")\"; fi; rm -rf \"$1\"", {folder_});
  watchdogPid_ = watchdog.pid;
  watchdogPipe_ = watchdog.pipe;
}

void FirebirdServer::Stop() noexcept {
  sessions_.clear();
  if (serverPid_ > 0) {
    // The data is thrown away: no shutdown to wait for (the server may also
    // let a TERM wait).
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

void FirebirdServer::Exec(const std::string& sql, const std::string& database) { SessionOn(database).Exec(sql); }

SqlRows FirebirdServer::Query(const std::string& sql, const std::string& database) {
  return SessionOn(database).Query(sql);
}

}  // namespace mvtest
