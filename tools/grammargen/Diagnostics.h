// Errors of the generator: each names the file and line it is about, in the
// form compilers use, so that editors and build logs can jump to it.
#pragma once

#include <stdexcept>
#include <string>

namespace grammargen {

struct SourceLocation {
  std::string file;
  int line = 0;
};

class GeneratorError : public std::runtime_error {
 public:
  GeneratorError(const SourceLocation& where, const std::string& message)
      : std::runtime_error(where.file + ":" + std::to_string(where.line) + ": error: " + message) {}
};

[[noreturn]] inline void Fail(const SourceLocation& where, const std::string& message) {
  throw GeneratorError(where, message);
}

// A warning goes to standard error and does not stop the build.
void Warn(const SourceLocation& where, const std::string& message);

}  // namespace grammargen
