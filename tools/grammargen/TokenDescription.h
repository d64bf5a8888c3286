// The token description of one dialect's scanner: the kinds and their numbers,
// the token forms as patterns, keywords, symbols and comment forms. See
// README.md for the file format.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CharRanges.h"
#include "Diagnostics.h"

namespace grammargen {

// A regular pattern over lower-cased characters.
struct Pattern {
  enum class Type { Chars, Seq, Alt, Star, Plus, Opt };
  Type type = Type::Seq;
  CharRanges chars;            // Chars
  std::vector<Pattern> parts;  // Seq and Alt: the parts; Star, Plus, Opt: one
};

struct TokenEntry {
  enum class Type { Token, Symbol, Keyword, Comment };
  Type type = Type::Token;
  int kind = 0;
  std::string name;      // as the description names it
  std::string constant;  // the C++ constant of the kind
  // The exact text for symbols, keywords and tokens whose pattern is one
  // quoted string; empty otherwise.
  std::u16string text;
  Pattern pattern;               // tokens and symbols
  // Texts on their way to this token that never complete it.
  std::vector<Pattern> partials;
  bool checksKeywords = false;   // tokens: the text goes through CheckLiteral
  bool blockComment = false;     // comments
  bool nested = false;           // block comments
  std::u16string open, close;    // comments
  SourceLocation where;

  bool IsAutomatonForm() const { return type == Type::Token || type == Type::Symbol; }
};

struct TokenDescription {
  std::string file;
  std::string stem;          // the file name without its extension
  std::string scannerClass;  // the generated class
  std::vector<TokenEntry> entries;  // in the order of the file
  int noSym = 0;                    // the highest kind: a character that starts nothing
  int taggedStringKind = -1;        // the kind of ScanTaggedString's strings, or -1
  std::vector<std::string> inputs;  // files read (the description itself)

  const TokenEntry* FindByName(const std::string& name) const;
  // A keyword, symbol or literal token by its text (compared in small letters).
  const TokenEntry* FindByText(const std::u16string& text) const;
  int KeywordCount() const;
  // Name of a kind for messages.
  std::string KindName(int kind) const;
};

// Reads a description; errors name the file and line.
TokenDescription ReadTokenDescription(const std::string& path, const SourceLocation& from);

std::string ToUtf8(const std::u16string& text);

}  // namespace grammargen
