#include "ScratchServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
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
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace fs = std::filesystem;

namespace mvtest {

std::string ScratchRoot() {
  struct statvfs room {};
  if (access("/dev/shm", W_OK) == 0 && statvfs("/dev/shm", &room) == 0 &&
      static_cast<unsigned long long>(room.f_bavail) * room.f_frsize >= (1ull << 30))
    return "/dev/shm";
  return "/tmp";
}

std::string LogTail(const std::string& path, size_t lines) {
  std::ifstream in(path);
  if (!in) return "(no " + path + ")";
  std::vector<std::string> all;
  for (std::string line; std::getline(in, line);) all.push_back(line);
  // Error lines above the tail come first: programs often end with pages of advice.
  const size_t tail = all.size() > lines ? all.size() - lines : 0;
  std::string out;
  for (size_t i = 0; i < tail; ++i)
    if (all[i].find("ERROR") != std::string::npos) out += "\n  " + all[i];
  for (size_t i = tail; i < all.size(); ++i) out += "\n  " + all[i];
  return out.empty() ? "(" + path + " is empty)" : path + ":" + out;
}

pid_t SpawnProgram(std::vector<std::string> args, const std::string& log, const std::string& dir) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  posix_spawn_file_actions_addclosefrom_np(&actions, 3);
  posix_spawn_file_actions_addchdir_np(&actions, dir.empty() ? "/" : dir.c_str());
  std::vector<char*> argv;
  for (auto& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? pid : -1;
}

int WaitProgram(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void RemoveStaleScratchFolders(const std::string& prefix, const std::function<void(const std::string&)>& stopServer) {
  for (const char* root : {"/dev/shm", "/tmp"}) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(root, ec)) {
      const std::string name = entry.path().filename().string();
      if (name.rfind(prefix, 0) != 0) continue;
      const long pid = std::atol(name.c_str() + prefix.size());
      if (pid <= 0 || pid == getpid() || kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH) continue;
      stopServer(entry.path().string());
      std::error_code ignored;
      fs::remove_all(entry.path(), ignored);
    }
  }
}

bool LoopbackPortAnswers(int port) {
  const int s = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (s < 0) return false;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool connected = connect(s, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  close(s);
  return connected;
}

namespace {
bool HoldsWithin(const std::function<bool()>& condition, int limitMs) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}
}  // namespace

bool LoopbackPortClosedWithin(int port, int limitMs) {
  return HoldsWithin([port] { return !LoopbackPortAnswers(port); }, limitMs);
}

bool FolderGoneWithin(const std::string& folder, int limitMs) {
  return HoldsWithin([&folder] { return !fs::exists(folder); }, limitMs);
}

Watchdog StartWatchdog(const std::string& name, const std::string& script, const std::vector<std::string>& args) {
  Watchdog watchdog;
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) return watchdog;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fds[0], 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  posix_spawn_file_actions_addclosefrom_np(&actions, 3);
  posix_spawn_file_actions_addchdir_np(&actions, "/");
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  std::vector<std::string> all = {"/bin/sh", "-c", script, name};
  all.insert(all.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& a : all) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid = -1;
  if (posix_spawn(&pid, "/bin/sh", &actions, &attributes, argv.data(), environ) == 0) {
    watchdog.pid = pid;
    watchdog.pipe = fds[1];
  } else {
    close(fds[1]);
  }
  close(fds[0]);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return watchdog;
}

int FreeLoopbackPort(const std::string& server) {
  static std::mt19937 random(std::random_device{}());
  std::uniform_int_distribution<int> pick(20000, 59999);
  for (int attempt = 0; attempt < 200; ++attempt) {
    const int port = pick(random);
    const int s = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (s < 0) break;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool free = bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(s);
    if (free) return port;
  }
  throw std::runtime_error(server + " test server: no free port on 127.0.0.1");
}

std::string Abbreviated(const std::string& sql) { return sql.size() > 400 ? sql.substr(0, 400) + "..." : sql; }

}  // namespace mvtest
