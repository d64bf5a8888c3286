// What the bench tool programs share: their "--name VALUE" options, the
// frame of main (usage, messages, exit codes) and writing a file whole.
#pragma once

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace mv::bench {

// One option that takes a value, and the string that receives it.
using TmvToolOption = std::pair<const char*, std::string*>;

// Reads the options into their strings; "--help" prints the usage. An exit
// code where the program ends here: 0 after --help, 2 for any other argument.
inline std::optional<int> ParseToolOptions(int argc, char** argv, const char* program, const char* usage,
                                           std::initializer_list<TmvToolOption> options) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--help") {
      std::cout << usage;
      return 0;
    }
    std::string* target = nullptr;
    for (const auto& [name, value] : options)
      if (arg == name) target = value;
    if (!target || i + 1 >= argc) {
      std::cerr << program << ": unexpected argument '" << arg << "'\n" << usage;
      return 2;
    }
    *target = argv[++i];
  }
  return std::nullopt;
}

// The exit code for a required option left out (`what` names it).
inline int MissingToolOption(const char* program, const std::string& what, const char* usage) {
  std::cerr << program << ": " << what << " is required\n" << usage;
  return 2;
}

// Runs the work of the program; an exception is reported and gives 1.
template <class Work>
int RunTool(const char* program, Work work) {
  try {
    return work();
  } catch (const std::exception& e) {
    std::cerr << program << ": " << e.what() << "\n";
    return 1;
  }
}

inline void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace mv::bench
