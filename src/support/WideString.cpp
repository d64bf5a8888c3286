// UTF-16 text routines. Case mapping goes through ICU's simple (one unit to one
// unit) mapping, with an ASCII fast path since most SQL text is ASCII.
#include "support/WideString.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <limits>

namespace mv {

namespace {

constexpr char16_t kReplacementChar = 0xFFFD;

bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void AppendUTF8(std::string& out, uint32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

void AppendUTF16(WideString& out, uint32_t cp) {
  if (cp < 0x10000) {
    out += static_cast<char16_t>(cp);
  } else {
    cp -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (cp >> 10));
    out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
  }
}

bool IsBlank(char16_t c) { return c <= u' '; }

}  // namespace

std::string UTF8Encode(WideStringView text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char16_t c = text[i];
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      uint32_t cp = 0x10000 + ((uint32_t(c) - 0xD800) << 10) + (uint32_t(text[i + 1]) - 0xDC00);
      AppendUTF8(out, cp);
      ++i;
    } else if (IsHighSurrogate(c) || IsLowSurrogate(c)) {
      AppendUTF8(out, kReplacementChar);
    } else {
      AppendUTF8(out, c);
    }
  }
  return out;
}

WideString UTF8Decode(std::string_view text) {
  WideString out;
  out.reserve(text.size());
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const size_t n = text.size();
  size_t i = 0;
  while (i < n) {
    unsigned char b = p[i];
    if (b < 0x80) {
      out += static_cast<char16_t>(b);
      ++i;
      continue;
    }
    int extra;
    uint32_t cp;
    uint32_t min;
    if ((b & 0xE0) == 0xC0) {
      extra = 1, cp = b & 0x1F, min = 0x80;
    } else if ((b & 0xF0) == 0xE0) {
      extra = 2, cp = b & 0x0F, min = 0x800;
    } else if ((b & 0xF8) == 0xF0) {
      extra = 3, cp = b & 0x07, min = 0x10000;
    } else {
      out += kReplacementChar;
      ++i;
      continue;
    }
    bool ok = true;
    for (int k = 1; k <= extra; ++k) {
      if (i + k >= n || (p[i + k] & 0xC0) != 0x80) {
        ok = false;
        break;
      }
      cp = (cp << 6) | (p[i + k] & 0x3F);
    }
    if (!ok || cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
      out += kReplacementChar;
      ++i;
      continue;
    }
    AppendUTF16(out, cp);
    i += extra + 1;
  }
  return out;
}

WideString WideFromAscii(std::string_view text) {
  WideString out(text.size(), u'\0');
  std::transform(text.begin(), text.end(), out.begin(),
                 [](char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); });
  return out;
}

std::string WideToAnsi(WideStringView text) {
  std::string out(text.size(), '\0');
  std::transform(text.begin(), text.end(), out.begin(),
                 [](char16_t c) { return c <= 0xFF ? static_cast<char>(c) : '?'; });
  return out;
}

char16_t WideUpCase(char16_t c) {
  if (c < 0x80) return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c;
  if (IsHighSurrogate(c) || IsLowSurrogate(c)) return c;
  UChar32 u = u_toupper(c);
  return u <= 0xFFFF ? static_cast<char16_t>(u) : c;
}

char16_t WideLoCase(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  if (IsHighSurrogate(c) || IsLowSurrogate(c)) return c;
  UChar32 u = u_tolower(c);
  return u <= 0xFFFF ? static_cast<char16_t>(u) : c;
}

WideString WideUpperCase(WideStringView text) {
  WideString out(text);
  for (auto& c : out) c = WideUpCase(c);
  return out;
}

WideString WideLowerCase(WideStringView text) {
  WideString out(text);
  for (auto& c : out) c = WideLoCase(c);
  return out;
}

int WideCompareStr(WideStringView a, WideStringView b) {
  int r = a.compare(b);
  return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

int WideCompareText(WideStringView a, WideStringView b) {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    char16_t x = WideUpCase(a[i]);
    char16_t y = WideUpCase(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

bool WideSameText(WideStringView a, WideStringView b) {
  return a.size() == b.size() && WideCompareText(a, b) == 0;
}

bool WideStartsText(WideStringView prefix, WideStringView text) {
  return prefix.size() <= text.size() && WideSameText(prefix, text.substr(0, prefix.size()));
}

bool WideEndsText(WideStringView suffix, WideStringView text) {
  return suffix.size() <= text.size() &&
         WideSameText(suffix, text.substr(text.size() - suffix.size()));
}

bool WideStartsStr(WideStringView prefix, WideStringView text) {
  return prefix.size() <= text.size() && text.substr(0, prefix.size()) == prefix;
}

bool AnsiSameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 32);
    if (y >= 'a' && y <= 'z') y = static_cast<char>(y - 32);
    if (x != y) return false;
  }
  return true;
}

bool AnsiStartsText(std::string_view prefix, std::string_view text) {
  return prefix.size() <= text.size() && AnsiSameText(prefix, text.substr(0, prefix.size()));
}

size_t WidePosText(WideStringView sub, WideStringView text, size_t from) {
  if (sub.empty()) return from <= text.size() ? from : WideString::npos;
  if (sub.size() > text.size()) return WideString::npos;
  for (size_t i = from; i + sub.size() <= text.size(); ++i) {
    if (WideSameText(sub, text.substr(i, sub.size()))) return i;
  }
  return WideString::npos;
}

WideString WideStringReplace(WideStringView text, WideStringView oldPattern,
                             WideStringView newPattern, unsigned flags) {
  if (oldPattern.empty()) return WideString(text);
  const bool all = flags & rfReplaceAll;
  const bool ignoreCase = flags & rfIgnoreCase;
  WideString out;
  size_t from = 0;
  for (;;) {
    size_t at = ignoreCase ? WidePosText(oldPattern, text, from) : text.find(oldPattern, from);
    if (at == WideString::npos) break;
    out.append(text.substr(from, at - from));
    out.append(newPattern);
    from = at + oldPattern.size();
    if (!all) break;
  }
  out.append(text.substr(from));
  return out;
}

WideString WideTrim(WideStringView text) { return WideTrimRight(WideTrimLeft(text)); }

WideString WideTrimLeft(WideStringView text) {
  size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  return WideString(text.substr(i));
}

WideString WideTrimRight(WideStringView text) {
  size_t n = text.size();
  while (n > 0 && IsBlank(text[n - 1])) --n;
  return WideString(text.substr(0, n));
}

WideString IntToWide(int64_t value) { return WideFromAscii(std::to_string(value)); }

bool TryStrToInt(WideStringView text, int64_t& value) {
  size_t i = 0, n = text.size();
  while (i < n && text[i] == u' ') ++i;
  while (n > i && text[n - 1] == u' ') --n;
  bool negative = false;
  if (i < n && (text[i] == u'-' || text[i] == u'+')) negative = text[i++] == u'-';
  int base = 10;
  if (i < n && text[i] == u'$') {
    base = 16, ++i;
  } else if (i + 1 < n && text[i] == u'0' && (text[i + 1] == u'x' || text[i + 1] == u'X')) {
    base = 16, i += 2;
  }
  if (i >= n) return false;
  uint64_t acc = 0;
  const uint64_t limit = negative ? uint64_t(std::numeric_limits<int64_t>::max()) + 1
                                  : uint64_t(std::numeric_limits<int64_t>::max());
  for (; i < n; ++i) {
    char16_t c = text[i];
    int digit;
    if (c >= u'0' && c <= u'9') {
      digit = c - u'0';
    } else if (base == 16 && c >= u'a' && c <= u'f') {
      digit = c - u'a' + 10;
    } else if (base == 16 && c >= u'A' && c <= u'F') {
      digit = c - u'A' + 10;
    } else {
      return false;
    }
    if (acc > (limit - digit) / base) return false;
    acc = acc * base + digit;
  }
  value = negative ? static_cast<int64_t>(0 - acc) : static_cast<int64_t>(acc);
  return true;
}

bool TryStrToInt(WideStringView text, int& value) {
  int64_t wide;
  if (!TryStrToInt(text, wide) || wide < std::numeric_limits<int>::min() ||
      wide > std::numeric_limits<int>::max())
    return false;
  value = static_cast<int>(wide);
  return true;
}

int64_t StrToIntDef(WideStringView text, int64_t defaultValue) {
  int64_t value;
  return TryStrToInt(text, value) ? value : defaultValue;
}

uint32_t WideTextHash(WideStringView text) {
  uint32_t h = 2166136261u;
  for (char16_t c : text) {
    char16_t u = WideUpCase(c);
    h = (h ^ (u & 0xFF)) * 16777619u;
    h = (h ^ (u >> 8)) * 16777619u;
  }
  return h;
}

}  // namespace mv
