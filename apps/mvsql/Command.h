// The sub-commands of mvsql. Each lives in a file of its own and is listed
// once in the table of Commands.cpp.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace mvsql {

// Exit codes of the tool.
enum ExitCode : int {
  kExitSuccess = 0,  // the job was done
  kExitFailure = 1,  // the job failed (bad SQL, unreadable file, ...)
  kExitUsage = 2,    // the command line was wrong
};

// Raised by argument parsing for a wrong command line; main prints it with
// the usage of the command and exits with kExitUsage.
struct UsageError {
  std::string message;
};

struct Command {
  const char* name;
  const char* summary;  // one line for the command list
  const char* usage;    // full help text of the command
  int (*run)(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
};

const std::vector<Command>& AllCommands();
const Command* FindCommand(const std::string& name);

}  // namespace mvsql
