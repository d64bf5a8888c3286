#include "support/TextHelpers.h"

#include "support/Exceptions.h"

namespace mv {

WideString SQLQuoteStringContent(WideStringView text) {
  return WideStringReplace(text, u"'", u"''", rfReplaceAll);
}

WideString SQLQuoteString(WideStringView text) { return u"'" + SQLQuoteStringContent(text) + u"'"; }

WideString SQLUnquoteString(WideStringView text) {
  if (text.size() < 2 || text.front() != u'\'' || text.back() != u'\'') return WideString(text);
  return WideStringReplace(text.substr(1, text.size() - 2), u"''", u"'", rfReplaceAll);
}

namespace {

bool MustEscape(char16_t c) {
  switch (c) {
    case u'*': case u'#': case u'%': case u'<': case u'>': case u' ': case u'[': case u']':
      return true;
    default:
      return c < 33 || c >= 129;
  }
}

void AppendEscaped(WideString& out, unsigned byte) {
  static const char16_t kHex[] = u"0123456789ABCDEF";
  out += u'%';
  out += kHex[(byte >> 4) & 0xF];
  out += kHex[byte & 0xF];
}

bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

WideString HTMLEncodeParams(WideStringView text) {
  WideString out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c < 256) {
      if (MustEscape(c)) {
        AppendEscaped(out, c);
      } else {
        out += c;
      }
      continue;
    }
    // One character, a surrogate pair included, in UTF-8.
    const size_t units = IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]) ? 2 : 1;
    for (unsigned char byte : UTF8Encode(text.substr(i, units))) AppendEscaped(out, byte);
    i += units - 1;
  }
  return out;
}

WideString BoolToStr(bool value, bool useBoolStrs) {
  if (useBoolStrs) return value ? u"True" : u"False";
  return value ? u"-1" : u"0";
}

std::string RLEEncode(std::string_view text) {
  std::string out;
  size_t i = 0;
  while (i < text.size()) {
    const char byte = text[i];
    size_t run = 1;
    while (run < 256 && i + run < text.size() && text[i + run] == byte) ++run;
    out += static_cast<char>(run - 1);
    out += byte;
    i += run;
  }
  return out;
}

std::string RLEDecode(std::string_view text) {
  if (text.size() % 2 != 0) throw Exception(u"Bad encoded string length");
  std::string out;
  for (size_t i = 0; i < text.size(); i += 2) {
    out.append(static_cast<size_t>(static_cast<unsigned char>(text[i])) + 1, text[i + 1]);
  }
  return out;
}

}  // namespace mv
