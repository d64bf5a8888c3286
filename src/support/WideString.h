// Wide (UTF-16) text: the string type of the whole engine and the routines
// every subsystem uses on it. Positions and lengths are UTF-16 code units.
// Case mapping is one code unit in, one code unit out (simple case mapping),
// so a name never changes its length when folded.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mv {

using WideString = std::u16string;
using WideStringView = std::u16string_view;

// --- Conversion at the edges (files, command line, database adapters). ---

// UTF-16 to UTF-8. An unpaired surrogate becomes U+FFFD.
std::string UTF8Encode(WideStringView text);
// UTF-8 to UTF-16. Malformed sequences become U+FFFD, one per bad byte.
WideString UTF8Decode(std::string_view text);
// ASCII-only literal to wide text (for keywords and class names).
WideString WideFromAscii(std::string_view text);
// Wide text to 8-bit; code units above 0xFF become '?'. For keyword compares only.
std::string WideToAnsi(WideStringView text);

// --- Case mapping, one UTF-16 unit at a time. ---

char16_t WideUpCase(char16_t c);
char16_t WideLoCase(char16_t c);
WideString WideUpperCase(WideStringView text);
WideString WideLowerCase(WideStringView text);

// --- Comparison. ---

// Binary compare of code units: <0, 0, >0.
int WideCompareStr(WideStringView a, WideStringView b);
// Compare after upper-casing each unit: the one case-blind comparison of the
// engine, shared by identifier comparison, name lookup and masks.
int WideCompareText(WideStringView a, WideStringView b);
bool WideSameText(WideStringView a, WideStringView b);
// Case-blind prefix / suffix tests; an empty prefix or suffix is true.
bool WideStartsText(WideStringView prefix, WideStringView text);
bool WideEndsText(WideStringView suffix, WideStringView text);
bool WideStartsStr(WideStringView prefix, WideStringView text);
// Case-blind 8-bit compare, for keywords.
bool AnsiSameText(std::string_view a, std::string_view b);
bool AnsiStartsText(std::string_view prefix, std::string_view text);
// Position of `sub` in `text` ignoring case, or npos.
size_t WidePosText(WideStringView sub, WideStringView text, size_t from = 0);

// Flags of WideStringReplace.
enum TmvReplaceFlag : unsigned {
  rfReplaceAll = 1u << 0,
  rfIgnoreCase = 1u << 1,
};
// Replaces the first occurrence of `oldPattern` (or all with rfReplaceAll),
// exactly or ignoring case (rfIgnoreCase).
WideString WideStringReplace(WideStringView text, WideStringView oldPattern,
                             WideStringView newPattern, unsigned flags);

WideString WideTrim(WideStringView text);
WideString WideTrimLeft(WideStringView text);
WideString WideTrimRight(WideStringView text);

// --- Numbers. ---

WideString IntToWide(int64_t value);
// Decimal integer with an optional sign and surrounding blanks; also `$hex`
// and `0x` forms, as the classic StrToInt accepts them.
bool TryStrToInt(WideStringView text, int64_t& value);
bool TryStrToInt(WideStringView text, int& value);
int64_t StrToIntDef(WideStringView text, int64_t defaultValue);

// Hash of a case-folded wide string (FNV-1a over upper-cased units).
uint32_t WideTextHash(WideStringView text);

}  // namespace mv
