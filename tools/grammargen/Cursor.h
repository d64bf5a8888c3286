// Reads the characters of a description or grammar file: blanks and
// comments (// to the end of the line, /* ... */), words, numbers, quoted
// strings, character classes, C++ code blocks %{ ... %} and balanced
// brackets. Both file formats of the generator are read through it.
#pragma once

#include <string>
#include <string_view>

#include "CharRanges.h"
#include "Diagnostics.h"

namespace grammargen {

class Cursor {
 public:
  Cursor(std::string file, std::string text) : file_(std::move(file)), text_(std::move(text)) {}
  // Reads a whole file; a missing file is an error at `from`.
  static Cursor Open(const std::string& path, const SourceLocation& from);

  const std::string& File() const { return file_; }
  SourceLocation Here() const { return {file_, line_}; }
  [[noreturn]] void Error(const std::string& message) const { Fail(Here(), message); }

  // Steps over blanks and comments.
  void SkipSpace();
  bool AtEnd();
  // The character `ahead` places on, without stepping over anything.
  char Peek(size_t ahead = 0) const {
    return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\0';
  }
  // After blanks: consumes `c` or `s` when it stands there.
  bool TryChar(char c);
  bool TryText(std::string_view s);
  void Expect(char c, std::string_view what);
  void ExpectText(std::string_view s, std::string_view what);

  // After blanks: whether a word ([A-Za-z_][A-Za-z0-9_]*) or a number starts here.
  bool AtWord();
  bool AtNumber();
  // A word; with `dashes`, a '-' between letters stays in the word (END-EXEC).
  std::string ReadWord(bool dashes = false);
  int ReadNumber();
  // A double-quoted string with the escapes \" \\ \n \r \t \xHH \uHHHH,
  // decoded from UTF-8 to UTF-16.
  std::u16string ReadString();
  // A class [...] of characters and ranges a-b, negated by a leading ^;
  // escapes as in strings, and \] \- \^.
  CharRanges ReadClass();
  // A block %{ ... %} of C++ code, returned as written.
  std::string ReadCode();
  // At `open`: the text up to the matching `close`, brackets of C++ nested
  // inside and quoted literals stepped over. The brackets are not returned.
  std::string ReadBalanced(char open, char close);

 private:
  void Step();
  uint32_t ReadEscape();
  uint32_t ReadUtf8();

  std::string file_;
  std::string text_;
  size_t pos_ = 0;
  int line_ = 1;
};

// The name of an input file without its folder and without all from its first '.':
// the stem that names what is generated from it.
std::string FileStem(const std::string& path);

}  // namespace grammargen
