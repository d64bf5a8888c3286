#include "TokenDescription.h"

#include <cctype>
#include <set>

#include "Cursor.h"

namespace grammargen {

std::string ToUtf8(const std::u16string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    uint32_t c = text[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size()) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

namespace {

std::u16string Lower(const std::u16string& s) {
  std::u16string out = s;
  for (char16_t& c : out) {
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
  }
  return out;
}

std::string Capitalized(const std::string& name) {
  std::string out = name;
  if (!out.empty()) out[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(out[0])));
  return out;
}

std::string UpperIdentifier(const std::string& word) {
  std::string out;
  for (char c : word) out += std::isalnum(static_cast<unsigned char>(c)) ? static_cast<char>(std::toupper(c)) : '_';
  return out;
}

Pattern CharsPattern(CharRanges chars) {
  Pattern p;
  p.type = Pattern::Type::Chars;
  p.chars = chars.FoldCase();
  return p;
}

Pattern LiteralPattern(const std::u16string& text) {
  Pattern p;
  p.type = Pattern::Type::Seq;
  for (char16_t c : text) p.parts.push_back(CharsPattern(CharRanges::Single(c)));
  return p;
}

class Reader {
 public:
  Reader(Cursor cursor, TokenDescription& out) : in_(std::move(cursor)), out_(out) {}

  void Run() {
    while (!in_.AtEnd()) Statement();
    Finish();
  }

 private:
  void Statement() {
    SourceLocation where = in_.Here();
    std::string word = in_.ReadWord(true);
    if (word == "scanner") {
      out_.scannerClass = in_.ReadWord();
    } else if (word == "set") {
      std::string name = NewName(in_.ReadWord(), where);
      in_.Expect('=', "'=' after the set's name");
      CharRanges set = SetAtom();
      while (in_.TryChar('|')) set.Add(SetAtom());
      sets_[name] = set;
    } else if (word == "fragment") {
      std::string name = NewName(in_.ReadWord(), where);
      in_.Expect('=', "'=' after the fragment's name");
      fragments_[name] = ReadPattern();
      return;
    } else if (word == "token") {
      TokenEntry e = Begin(TokenEntry::Type::Token, where);
      e.name = in_.ReadWord();
      if (in_.AtWord()) {
        std::string flag = in_.ReadWord();
        if (flag != "keywords") in_.Error("unknown flag '" + flag + "' (expected 'keywords' or '=')");
        e.checksKeywords = true;
      }
      in_.Expect('=', "'=' before the token's pattern");
      in_.SkipSpace();
      if (in_.Peek() == '"') {
        // A token that is one fixed text can be named by it in a grammar.
        Cursor probe = in_;
        std::u16string text = probe.ReadString();
        if (probe.TryChar(';')) e.text = Lower(text);
      }
      e.pattern = ReadPattern();
      e.constant = "tk" + Capitalized(e.name);
      Add(std::move(e));
      return;
    } else if (word == "partial") {
      std::string name = in_.ReadWord();
      TokenEntry* e = nullptr;
      for (TokenEntry& other : out_.entries) {
        if (other.name == name) e = &other;
      }
      if (!e || !e->IsAutomatonForm()) Fail(where, "'" + name + "' is no token or symbol defined above");
      in_.Expect('=', "'=' before the pattern");
      e->partials.push_back(ReadPattern());
      return;
    } else if (word == "symbol") {
      TokenEntry e = Begin(TokenEntry::Type::Symbol, where);
      e.name = in_.ReadWord();
      e.text = Lower(in_.ReadString());
      if (e.text.empty()) in_.Error("a symbol cannot be empty");
      e.pattern = LiteralPattern(e.text);
      e.constant = "tk" + Capitalized(e.name);
      Add(std::move(e));
    } else if (word == "keywords") {
      bool first = true;
      while (!in_.TryChar(';')) {
        TokenEntry e = Begin(TokenEntry::Type::Keyword, in_.Here(), first);
        first = false;
        std::string kw = in_.ReadWord();
        e.name = kw;
        e.text = Lower(std::u16string(kw.begin(), kw.end()));
        e.constant = "kw" + UpperIdentifier(kw);
        Add(std::move(e));
      }
      return;
    } else if (word == "keyword") {
      TokenEntry e = Begin(TokenEntry::Type::Keyword, where);
      e.name = in_.ReadWord();
      e.text = Lower(in_.ReadString());
      e.constant = "kw" + UpperIdentifier(e.name);
      Add(std::move(e));
    } else if (word == "comment") {
      TokenEntry e = Begin(TokenEntry::Type::Comment, where);
      e.name = in_.ReadWord();
      std::string form = in_.ReadWord();
      e.open = in_.ReadString();
      if (form == "line") {
        if (e.open.empty() || e.open.size() > 2) in_.Error("a line comment opens with one or two characters");
      } else if (form == "block") {
        e.blockComment = true;
        e.close = in_.ReadString();
        if (e.open.size() != 2 || e.close.size() != 2) in_.Error("a block comment opens and closes with two characters");
        if (in_.AtWord()) {
          if (in_.ReadWord() != "nested") in_.Error("expected 'nested' or ';'");
          e.nested = true;
        }
      } else {
        in_.Error("expected 'line' or 'block'");
      }
      for (char16_t c : e.open + e.close) {
        if (c >= u'A' && c <= u'Z') in_.Error("comment openers and closers are compared in small letters");
      }
      e.constant = "tk" + Capitalized(e.name);
      Add(std::move(e));
    } else if (word == "tagged-strings") {
      std::string name = in_.ReadWord();
      taggedName_ = name;
      taggedWhere_ = where;
    } else if (word == "nosym") {
      expectedNoSym_ = in_.ReadNumber();
      noSymWhere_ = where;
    } else {
      Fail(where, "unknown statement '" + word + "'");
    }
    in_.Expect(';', "';' at the end of the statement");
  }

  std::string NewName(const std::string& name, const SourceLocation& where) {
    if (sets_.count(name) || fragments_.count(name)) Fail(where, "'" + name + "' is already defined");
    return name;
  }

  TokenEntry Begin(TokenEntry::Type type, const SourceLocation& where, bool numbered = true) {
    TokenEntry e;
    e.type = type;
    e.where = where;
    if (numbered && in_.AtNumber()) {
      int n = in_.ReadNumber();
      if (n < 2) Fail(where, "kinds 0 and 1 are the end of text and the line end");
      next_ = n;
    }
    e.kind = next_++;
    return e;
  }

  void Add(TokenEntry e) {
    for (const TokenEntry& other : out_.entries) {
      if (other.kind == e.kind) Fail(e.where, "kind " + std::to_string(e.kind) + " is already taken by '" + other.name + "'");
      if (other.name == e.name) Fail(e.where, "'" + e.name + "' is already defined");
      if (other.constant == e.constant) Fail(e.where, "two kinds would share the constant " + e.constant);
      if (!e.text.empty() && other.text == e.text) {
        Fail(e.where, "the text \"" + ToUtf8(e.text) + "\" already names '" + other.name + "'");
      }
    }
    out_.entries.push_back(std::move(e));
  }

  CharRanges SetAtom() {
    in_.SkipSpace();
    if (in_.Peek() == '[') return in_.ReadClass().FoldCase();
    if (in_.Peek() == '"') {
      CharRanges set;
      for (char16_t c : in_.ReadString()) set.Add(c, c);
      return set.FoldCase();
    }
    SourceLocation where = in_.Here();
    std::string name = in_.ReadWord();
    auto it = sets_.find(name);
    if (it == sets_.end()) Fail(where, "undefined set '" + name + "'");
    return it->second;
  }

  Pattern ReadPattern() {
    Pattern p = Alternatives();
    in_.Expect(';', "';' at the end of the pattern");
    return p;
  }

  Pattern Alternatives() {
    Pattern first = Sequence();
    if (!in_.TryChar('|')) return first;
    Pattern alt;
    alt.type = Pattern::Type::Alt;
    alt.parts.push_back(std::move(first));
    do {
      alt.parts.push_back(Sequence());
    } while (in_.TryChar('|'));
    return alt;
  }

  Pattern Sequence() {
    Pattern seq;
    seq.type = Pattern::Type::Seq;
    for (;;) {
      in_.SkipSpace();
      char c = in_.Peek();
      if (c == '|' || c == ')' || c == ';' || c == '\0') break;
      Pattern atom = Atom();
      for (;;) {
        Pattern::Type t;
        if (in_.TryChar('*')) t = Pattern::Type::Star;
        else if (in_.TryChar('+')) t = Pattern::Type::Plus;
        else if (in_.TryChar('?')) t = Pattern::Type::Opt;
        else break;
        Pattern wrap;
        wrap.type = t;
        wrap.parts.push_back(std::move(atom));
        atom = std::move(wrap);
      }
      seq.parts.push_back(std::move(atom));
    }
    if (seq.parts.empty()) in_.Error("empty pattern");
    return seq;
  }

  Pattern Atom() {
    in_.SkipSpace();
    char c = in_.Peek();
    if (c == '"') {
      std::u16string text = in_.ReadString();
      if (text.empty()) in_.Error("empty string in a pattern");
      return LiteralPattern(text);
    }
    if (c == '[') return CharsPattern(in_.ReadClass());
    if (c == '(') {
      in_.TryChar('(');
      Pattern p = Alternatives();
      in_.Expect(')', "')'");
      return p;
    }
    SourceLocation where = in_.Here();
    std::string name = in_.ReadWord();
    if (auto it = sets_.find(name); it != sets_.end()) return CharsPattern(it->second);
    if (auto it = fragments_.find(name); it != fragments_.end()) return it->second;
    Fail(where, "undefined set or fragment '" + name + "'");
  }

  void Finish() {
    if (out_.scannerClass.empty()) Fail(in_.Here(), "the description has no 'scanner' statement");
    int highest = 2;
    for (const TokenEntry& e : out_.entries) highest = std::max(highest, e.kind);
    out_.noSym = highest + 1;
    if (expectedNoSym_ >= 0 && expectedNoSym_ != out_.noSym) {
      Fail(noSymWhere_, "noSym comes out as " + std::to_string(out_.noSym) + ", not " + std::to_string(expectedNoSym_));
    }
    if (!taggedName_.empty()) {
      const TokenEntry* e = out_.FindByName(taggedName_);
      if (!e || e->type != TokenEntry::Type::Token) Fail(taggedWhere_, "'" + taggedName_ + "' is no token of this description");
      out_.taggedStringKind = e->kind;
    }
  }

  Cursor in_;
  TokenDescription& out_;
  std::map<std::string, CharRanges> sets_;
  std::map<std::string, Pattern> fragments_;
  int next_ = 3;
  int expectedNoSym_ = -1;
  SourceLocation noSymWhere_;
  std::string taggedName_;
  SourceLocation taggedWhere_;
};

}  // namespace

const TokenEntry* TokenDescription::FindByName(const std::string& name) const {
  for (const TokenEntry& e : entries) {
    if (e.name == name) return &e;
  }
  return nullptr;
}

const TokenEntry* TokenDescription::FindByText(const std::u16string& text) const {
  std::u16string lower = Lower(text);
  for (const TokenEntry& e : entries) {
    if (!e.text.empty() && e.text == lower && e.type != TokenEntry::Type::Comment) return &e;
  }
  return nullptr;
}

int TokenDescription::KeywordCount() const {
  int n = 0;
  for (const TokenEntry& e : entries) n += e.type == TokenEntry::Type::Keyword;
  return n;
}

std::string TokenDescription::KindName(int kind) const {
  if (kind == 0) return "end of text";
  if (kind == 1) return "line end";
  if (kind == noSym) return "noSym";
  for (const TokenEntry& e : entries) {
    if (e.kind == kind) return e.text.empty() ? e.name : "\"" + ToUtf8(e.text) + "\"";
  }
  return "kind " + std::to_string(kind);
}

TokenDescription ReadTokenDescription(const std::string& path, const SourceLocation& from) {
  TokenDescription out;
  out.file = path;
  out.stem = FileStem(path);
  out.inputs.push_back(path);
  Reader(Cursor::Open(path, from), out).Run();
  return out;
}

}  // namespace grammargen
