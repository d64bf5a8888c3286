// Emits the C++ parser class of an analysed grammar: for each rule its
// first pass `<rule>WayCalc(list)` and its second pass `<rule>(...)`, the
// numbered OptN/IterN/AltN helpers of the first pass, and the sixteen entry
// points of the parser base.
#pragma once

#include <string>

#include "Grammar.h"
#include "ScannerWriter.h"

namespace grammargen {

GeneratedFiles WriteParser(const Grammar& grammar, const std::string& sourceName,
                           const std::string& headerName);

}  // namespace grammargen
