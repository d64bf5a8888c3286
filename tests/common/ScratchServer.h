// What the throw-away database servers of the tests share: a scratch root
// for their folders, programs run with their output in a log, the clean-up
// of folders left by dead runs, and free loopback ports.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace mvtest {

// /dev/shm when it has a gigabyte to spare (servers write many files), else /tmp.
std::string ScratchRoot();

// The last lines of a log file, for failure messages.
std::string LogTail(const std::string& path, size_t lines = 15);

// Starts a program, stdin from /dev/null and its output appended to `log`,
// in `dir` ("/" when empty); its pid, or -1 when it could not start.
pid_t SpawnProgram(std::vector<std::string> args, const std::string& log, const std::string& dir = "/");
// Waits for a started program; its exit code, or -1 when it died of a signal.
int WaitProgram(pid_t pid);

// Removes the scratch folders <root>/<prefix><pid>.XXXXXX of runs whose
// process is gone, calling `stopServer` on each first.
void RemoveStaleScratchFolders(const std::string& prefix, const std::function<void(const std::string&)>& stopServer);

// A port of 127.0.0.1 that nothing listens on now; throws naming `server`.
int FreeLoopbackPort(const std::string& server);

// Whether something accepts connections on 127.0.0.1:`port`.
bool LoopbackPortAnswers(int port);
// Waits up to `limit` milliseconds for the port to stop answering; whether it did.
bool LoopbackPortClosedWithin(int port, int limitMs);
// Waits up to `limit` milliseconds for a folder to disappear; whether it did.
bool FolderGoneWithin(const std::string& folder, int limitMs);

// A watchdog: a shell named `name` in a session of its own that waits for
// the end of a pipe only this process holds, then runs `script` with `args`
// as $1, $2, ... It acts when this process dies without running its
// destructors. Gives the shell's pid and the pipe's end to keep (-1, -1
// when it could not start).
struct Watchdog {
  pid_t pid = -1;
  int pipe = -1;
};
Watchdog StartWatchdog(const std::string& name, const std::string& script, const std::vector<std::string>& args);

// A statement cut to 400 characters for messages.
std::string Abbreviated(const std::string& sql);

}  // namespace mvtest
