// Emits the C++ scanner class of a token description.
#pragma once

#include <string>

#include "Automaton.h"
#include "TokenDescription.h"

namespace grammargen {

struct GeneratedFiles {
  std::string header;
  std::string source;
};

// `sourceName` is the description's path as the banner shows it;
// `headerName` the file name the source includes.
GeneratedFiles WriteScanner(const TokenDescription& description, const std::string& sourceName,
                            const std::string& headerName);

// The generated scanner header of a description, e.g. SQL92Scan.h.
std::string ScannerHeaderName(const TokenDescription& description);

}  // namespace grammargen
