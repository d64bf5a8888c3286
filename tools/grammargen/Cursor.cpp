#include "Cursor.h"

#include <cctype>
#include <fstream>
#include <sstream>

namespace grammargen {

namespace {

bool IsWordStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool IsWordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

void AppendUtf16(std::u16string& out, uint32_t c) {
  if (c >= 0x10000) {
    c -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (c >> 10));
    out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
  } else {
    out += static_cast<char16_t>(c);
  }
}

}  // namespace

Cursor Cursor::Open(const std::string& path, const SourceLocation& from) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Fail(from, "cannot read " + path);
  std::ostringstream text;
  text << in.rdbuf();
  return Cursor(path, text.str());
}

std::string FileStem(const std::string& path) {
  size_t slash = path.find_last_of('/');
  std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
  return base.substr(0, base.find('.'));
}

void Cursor::Step() {
  if (pos_ < text_.size() && text_[pos_] == '\n') ++line_;
  ++pos_;
}

void Cursor::SkipSpace() {
  while (pos_ < text_.size()) {
    char c = text_[pos_];
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      Step();
    } else if (c == '/' && Peek(1) == '/') {
      while (pos_ < text_.size() && text_[pos_] != '\n') Step();
    } else if (c == '/' && Peek(1) == '*') {
      SourceLocation start = Here();
      Step();
      Step();
      while (pos_ < text_.size() && !(text_[pos_] == '*' && Peek(1) == '/')) Step();
      if (pos_ >= text_.size()) Fail(start, "comment is not closed");
      Step();
      Step();
    } else {
      break;
    }
  }
}

bool Cursor::AtEnd() {
  SkipSpace();
  return pos_ >= text_.size();
}

bool Cursor::TryChar(char c) {
  SkipSpace();
  if (Peek() != c) return false;
  Step();
  return true;
}

bool Cursor::TryText(std::string_view s) {
  SkipSpace();
  if (text_.compare(pos_, s.size(), s) != 0) return false;
  for (size_t i = 0; i < s.size(); ++i) Step();
  return true;
}

void Cursor::Expect(char c, std::string_view what) {
  if (!TryChar(c)) Error("expected " + std::string(what));
}

void Cursor::ExpectText(std::string_view s, std::string_view what) {
  if (!TryText(s)) Error("expected " + std::string(what));
}

bool Cursor::AtWord() {
  SkipSpace();
  return IsWordStart(Peek());
}

bool Cursor::AtNumber() {
  SkipSpace();
  return std::isdigit(static_cast<unsigned char>(Peek())) != 0;
}

std::string Cursor::ReadWord(bool dashes) {
  if (!AtWord()) Error("expected a name");
  std::string word;
  while (IsWordChar(Peek()) ||
         (dashes && Peek() == '-' && std::isalpha(static_cast<unsigned char>(Peek(1))))) {
    word += Peek();
    Step();
  }
  return word;
}

int Cursor::ReadNumber() {
  if (!AtNumber()) Error("expected a number");
  long value = 0;
  while (std::isdigit(static_cast<unsigned char>(Peek()))) {
    value = value * 10 + (Peek() - '0');
    if (value > 1000000) Error("number out of range");
    Step();
  }
  return static_cast<int>(value);
}

uint32_t Cursor::ReadUtf8() {
  unsigned char c = static_cast<unsigned char>(Peek());
  int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
  if (extra < 0) Error("malformed UTF-8");
  uint32_t value = extra == 0 ? c : c & (0x3F >> extra);
  Step();
  for (int i = 0; i < extra; ++i) {
    unsigned char d = static_cast<unsigned char>(Peek());
    if ((d & 0xC0) != 0x80) Error("malformed UTF-8");
    value = (value << 6) | (d & 0x3F);
    Step();
  }
  return value;
}

uint32_t Cursor::ReadEscape() {
  // At the backslash.
  Step();
  char c = Peek();
  auto hex = [&](int digits) {
    uint32_t v = 0;
    for (int i = 0; i < digits; ++i) {
      char d = Peek();
      if (!std::isxdigit(static_cast<unsigned char>(d))) Error("bad escape: expected a hexadecimal digit");
      v = v * 16 + (std::isdigit(static_cast<unsigned char>(d)) ? d - '0' : (std::tolower(d) - 'a' + 10));
      Step();
    }
    return v;
  };
  switch (c) {
    case 'n': Step(); return '\n';
    case 'r': Step(); return '\r';
    case 't': Step(); return '\t';
    case 'x': Step(); return hex(2);
    case 'u': Step(); return hex(4);
    case '\0': Error("escape at the end of the file");
    default:
      if (std::isalnum(static_cast<unsigned char>(c))) Error(std::string("unknown escape \\") + c);
      return ReadUtf8();
  }
}

std::u16string Cursor::ReadString() {
  SkipSpace();
  if (Peek() != '"') Error("expected a quoted string");
  Step();
  std::u16string out;
  for (;;) {
    char c = Peek();
    if (c == '\0' || c == '\n') Error("string is not closed on its line");
    if (c == '"') {
      Step();
      return out;
    }
    AppendUtf16(out, c == '\\' ? ReadEscape() : ReadUtf8());
  }
}

CharRanges Cursor::ReadClass() {
  SkipSpace();
  if (Peek() != '[') Error("expected a character class");
  Step();
  bool negated = false;
  if (Peek() == '^') {
    negated = true;
    Step();
  }
  CharRanges set;
  auto one = [&]() -> uint32_t {
    char c = Peek();
    if (c == '\0' || c == '\n') Error("character class is not closed on its line");
    uint32_t v = c == '\\' ? ReadEscape() : ReadUtf8();
    if (v > CharRanges::kMax) Error("characters beyond U+FFFF cannot stand in a class");
    return v;
  };
  while (Peek() != ']') {
    uint32_t lo = one();
    uint32_t hi = lo;
    if (Peek() == '-' && Peek(1) != ']') {
      Step();
      hi = one();
      if (hi < lo) Error("range runs backwards");
    }
    set.Add(lo, hi);
  }
  Step();
  return negated ? set.Complement() : set;
}

std::string Cursor::ReadCode() {
  SourceLocation start = Here();
  if (!TryText("%{")) Error("expected %{");
  size_t begin = pos_;
  while (pos_ < text_.size() && !(text_[pos_] == '%' && Peek(1) == '}')) Step();
  if (pos_ >= text_.size()) Fail(start, "code block is not closed with %}");
  std::string code = text_.substr(begin, pos_ - begin);
  Step();
  Step();
  return code;
}

std::string Cursor::ReadBalanced(char open, char close) {
  SourceLocation start = Here();
  if (Peek() != open) Error(std::string("expected ") + open);
  Step();
  size_t begin = pos_;
  int depth = 0;
  while (pos_ < text_.size()) {
    char c = Peek();
    if (c == '"' || c == '\'') {
      // A C++ literal: its brackets do not count.
      Step();
      while (pos_ < text_.size() && Peek() != c) {
        if (Peek() == '\\') Step();
        Step();
      }
    } else if (c == '(' || c == '[' || c == '{') {
      ++depth;
    } else if (c == close && depth == 0) {
      std::string inside = text_.substr(begin, pos_ - begin);
      Step();
      return inside;
    } else if (c == ')' || c == ']' || c == '}') {
      --depth;
    }
    Step();
  }
  Fail(start, std::string("no matching ") + close);
}

}  // namespace grammargen
