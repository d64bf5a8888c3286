// The table of sub-commands. A new sub-command is one file with its run
// function and one row here.
#include <algorithm>

#include "Command.h"

namespace mvsql {

int RunHelp(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int RunVersion(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int RunDecode(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int RunTokens(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

const std::vector<Command>& AllCommands() {
  static const std::vector<Command> commands = {
      {"help", "show help for mvsql or one of its commands", "mvsql help [COMMAND]\n", RunHelp},
      {"version", "print the version", "mvsql version\n", RunVersion},
      {"decode", "read the input and print it as UTF-8 (shows how it was decoded)",
       "mvsql decode [FILE|-]\n", RunDecode},
      {"tokens", "print the tokens of the input, one a line (kind, line:col, pos, flags, text)",
       "mvsql tokens [--dialect NAME] [FILE|-]\n"
       "  --dialect NAME  the scanner to use (default sql92)\n", RunTokens},
  };
  return commands;
}

const Command* FindCommand(const std::string& name) {
  const auto& all = AllCommands();
  auto it = std::find_if(all.begin(), all.end(), [&](const Command& c) { return name == c.name; });
  return it == all.end() ? nullptr : &*it;
}

}  // namespace mvsql
