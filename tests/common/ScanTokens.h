// Scanning a text with a generated scanner, for the tests of scanners.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "frontend/Scanner.h"
#include "support/Class.h"
#include "support/WideString.h"

namespace mvtest {

// A token as the scanner tests compare it.
struct ScannedToken {
  int32_t kind;
  std::u16string text;
  bool partial = false;
  bool operator==(const ScannedToken&) const = default;
};

inline std::ostream& operator<<(std::ostream& os, const ScannedToken& t) {
  return os << "{" << t.kind << ", \"" << mv::UTF8Encode(t.text) << "\"" << (t.partial ? ", partial" : "") << "}";
}

// The tokens `Scanner` makes of a text, without the end token and, unless
// asked for, without the hidden ones.
template <class Scanner>
std::vector<ScannedToken> ScanTokens(const std::u16string& text, bool withHidden = false) {
  auto scanner = mv::TmvCreate<Scanner>();
  scanner->Init(text);
  std::vector<ScannedToken> out;
  for (const mv::TmvToken& t : scanner->GetTokens())
    if ((withHidden || !t.IsHidden()) && t.Kind != mv::tkEndOfText) out.push_back({t.Kind, t.Text, t.IsPartial});
  return out;
}

}  // namespace mvtest
