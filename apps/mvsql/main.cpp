// mvsql: the engine on the command line. It reads SQL from a file or standard
// input (UTF-8, UTF-8 with BOM, or UTF-16 with BOM) and runs one sub-command on it.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Command.h"
#include "dialects/EngineInit.h"
#include "localization/LanguageManager.h"
#include "support/Exceptions.h"

namespace mvsql {

void PrintGeneralHelp(std::ostream& out) {
  out << "Usage: mvsql COMMAND [OPTIONS] [FILE|-]\n"
         "       mvsql --help | --version\n\n"
         "SQL is read from FILE, or from standard input when FILE is '-' or absent.\n"
         "Input may be UTF-8 (with or without BOM) or UTF-16 LE with BOM.\n"
         "Every command takes --language NAME|FILE: its messages come in a built-in\n"
         "language (English, German, ...) or in the language of a .LNG file.\n\n"
         "Commands:\n";
  for (const auto& c : AllCommands()) {
    std::string name = c.name;
    out << "  " << name << std::string(name.size() < 12 ? 12 - name.size() : 1, ' ') << c.summary << "\n";
  }
  out << "\nExit codes: 0 success, 1 the job failed, 2 usage error.\n"
         "Run 'mvsql help COMMAND' for the options of a command.\n";
}

int RunHelp(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.empty()) {
    PrintGeneralHelp(out);
    return kExitSuccess;
  }
  const Command* c = FindCommand(args.front());
  if (!c) {
    err << "mvsql: unknown command '" << args.front() << "'\n";
    return kExitUsage;
  }
  out << "Usage: " << c->usage;
  return kExitSuccess;
}

int RunVersion(const std::vector<std::string>&, std::ostream& out, std::ostream&) {
  out << "mvsql " << MV_VERSION << "\n";
  return kExitSuccess;
}

}  // namespace mvsql

int main(int argc, char** argv) {
  using namespace mvsql;
  mv::InitializeEngine();
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) {
    PrintGeneralHelp(std::cerr);
    return kExitUsage;
  }
  std::string name = args.front();
  args.erase(args.begin());
  if (name == "--help" || name == "-h") name = "help";
  if (name == "--version" || name == "-V") name = "version";

  const Command* command = FindCommand(name);
  if (!command) {
    std::cerr << "mvsql: unknown command '" << name << "'\n\n";
    PrintGeneralHelp(std::cerr);
    return kExitUsage;
  }
  // "--language NAME|FILE" on any command: its messages come in that language.
  for (size_t i = 0; i < args.size(); ++i) {
    std::string language;
    if (args[i] == "--language" && i + 1 < args.size()) {
      language = args[i + 1];
      args.erase(args.begin() + std::ptrdiff_t(i), args.begin() + std::ptrdiff_t(i + 2));
    } else if (args[i].rfind("--language=", 0) == 0) {
      language = args[i].substr(11);
      args.erase(args.begin() + std::ptrdiff_t(i));
    } else {
      continue;
    }
    try {
      mv::SelectLanguage(mv::mvQBLanguageManager(), language);
    } catch (const std::exception& e) {
      std::cerr << "mvsql " << name << ": " << e.what() << "\n";
      return kExitUsage;
    }
    break;
  }
  // "mvsql COMMAND --help" shows the command's usage.
  for (const auto& a : args) {
    if (a == "--help" || a == "-h") {
      std::cout << "Usage: " << command->usage;
      return kExitSuccess;
    }
  }
  try {
    return command->run(args, std::cout, std::cerr);
  } catch (const UsageError& e) {
    std::cerr << "mvsql " << name << ": " << e.message << "\nUsage: " << command->usage;
    return kExitUsage;
  } catch (const std::exception& e) {
    std::cerr << "mvsql " << name << ": " << e.what() << "\n";
    return kExitFailure;
  }
}
