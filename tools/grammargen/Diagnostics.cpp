#include "Diagnostics.h"

#include <iostream>

namespace grammargen {

void Warn(const SourceLocation& where, const std::string& message) {
  std::cerr << where.file << ":" << where.line << ": warning: " << message << "\n";
}

}  // namespace grammargen
