// Writing generated files: an indenting text builder, the banner every file
// starts with, files that are only touched when their text changes (so that
// a rebuild recompiles only what really changed), and make-style dependency
// files for the build tool.
#pragma once

#include <string>
#include <vector>

namespace grammargen {

class CodeWriter {
 public:
  // One line at the current indentation; "" gives an empty line.
  CodeWriter& Line(const std::string& text = "");
  // Code copied from a grammar, each line kept as written.
  CodeWriter& Verbatim(const std::string& code);
  void Indent() { depth_ += 2; }
  void Dedent() { depth_ -= 2; }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
  int depth_ = 0;
};

// The first lines of a generated file: what made it from which source.
std::string Banner(const std::string& source);

// Writes `text` to `path` unless the file already holds exactly that text.
void WriteIfChanged(const std::string& path, const std::string& text);

// A make-style rule: `target` depends on each of `inputs`.
void WriteDepfile(const std::string& path, const std::string& target,
                  const std::vector<std::string>& inputs);

// A C++ string literal of UTF-16 text (u"...").
std::string WideLiteral(const std::u16string& text);
// A C++ string literal of 8-bit text.
std::string NarrowLiteral(const std::string& text);

}  // namespace grammargen
