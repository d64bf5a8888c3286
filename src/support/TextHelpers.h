// Small text routines: SQL string quoting, parameter escaping, booleans as
// text, and the run-length form of 8-bit strings.
#pragma once

#include <string>
#include <string_view>

#include "support/WideString.h"

namespace mv {

// --- SQL string literals ---

// Doubles each single quote: it's -> it''s.
WideString SQLQuoteStringContent(WideStringView text);
// The content in single quotes: it's -> 'it''s'.
WideString SQLQuoteString(WideStringView text);
// The reverse: a text shorter than 2 characters or not in single quotes is
// returned unchanged; otherwise the quotes are stripped and each doubled
// quote inside is made single.
WideString SQLUnquoteString(WideStringView text);

// --- Parameters in an address ---

// Escapes a text for the parameters of an address: each of * # % < > [ ]
// and space, every character below 33, and every character from 129 to 255
// becomes "%" and two upper-case hexadecimal digits of its code; other
// characters below 256 stay. A character from 256 up is written in UTF-8
// and each of its bytes escaped ("€" -> "%E2%82%AC"); a surrogate pair is
// one character, an unpaired surrogate is written as U+FFFD.
WideString HTMLEncodeParams(WideStringView text);

// --- Booleans ---

// "-1" and "0", or with useBoolStrs "True" and "False".
WideString BoolToStr(bool value, bool useBoolStrs = false);

// --- Run-length form of 8-bit strings ---

// A sequence of byte pairs: count - 1, then the byte. A run holds at most
// 256 equal bytes; a longer one is split. "aaab" -> 2 'a' 0 'b'.
std::string RLEEncode(std::string_view text);
// The reverse. An odd length raises mv::Exception "Bad encoded string length".
std::string RLEDecode(std::string_view text);

}  // namespace mv
