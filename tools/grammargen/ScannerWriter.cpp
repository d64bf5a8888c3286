#include "ScannerWriter.h"

#include <algorithm>
#include <map>

#include "KeywordHash.h"
#include "Output.h"

namespace grammargen {

namespace {

std::string CharCode(uint32_t c) {
  if (c >= 0x20 && c < 0x7F && c != '\'' && c != '\\') return std::string("u'") + static_cast<char>(c) + "'";
  char buf[16];
  std::snprintf(buf, sizeof buf, "0x%04x", c);
  return buf;
}

std::string RangeTest(const DfaTransition& t) {
  if (t.lo == t.hi) return "ch == " + CharCode(t.lo);
  if (t.hi == CharRanges::kMax) return "ch >= " + CharCode(t.lo);
  if (t.lo == 0) return "ch >= 0 && ch <= " + CharCode(t.hi);
  return "(ch >= " + CharCode(t.lo) + " && ch <= " + CharCode(t.hi) + ")";
}

// Every keyword has to come out of a form whose text CheckLiteral sees.
void CheckKeywords(const TokenDescription& d, const Dfa& dfa) {
  for (const TokenEntry& e : d.entries) {
    if (e.type != TokenEntry::Type::Keyword) continue;
    for (char16_t c : e.text) {
      if (c > 0x7F) Fail(e.where, "keywords are plain ASCII");
    }
    int state = RunDfa(dfa, e.text);
    if (state <= 0 || dfa.states[state].partial || !dfa.states[state].checksKeywords) {
      Fail(e.where, "the keyword '" + ToUtf8(e.text) + "' does not scan as a token that goes through CheckLiteral");
    }
  }
}

}  // namespace

std::string ScannerHeaderName(const TokenDescription& description) {
  return description.stem + "Scan.h";
}

GeneratedFiles WriteScanner(const TokenDescription& d, const std::string& sourceName,
                            const std::string& headerName) {
  const Dfa dfa = BuildDfa(d);
  CheckKeywords(d, dfa);
  const std::string& cls = d.scannerClass;

  // The start table: the most common first state is the default, the other
  // characters get entries in the order of their codes.
  std::vector<int> first(CharRanges::kMax + 1, 0);
  for (const DfaTransition& t : dfa.start) {
    for (uint32_t c = t.lo; c <= t.hi; ++c) first[c] = t.target;
  }
  std::map<int, size_t> frequency;
  for (int s : first) ++frequency[s];
  int defaultState = 0;
  for (const auto& [state, count] : frequency) {
    if (count > frequency[defaultState]) defaultState = state;
  }
  std::vector<std::pair<uint32_t, int>> startEntries;
  for (uint32_t c = 0; c <= CharRanges::kMax; ++c) {
    if (first[c] != defaultState) startEntries.push_back({c, first[c]});
  }
  if (startEntries.size() > 2048) {
    Fail({d.file, 1}, "the start table would need " + std::to_string(startEntries.size()) +
                          " entries; let most characters start the same form");
  }

  std::vector<const TokenEntry*> byKind;
  std::vector<const TokenEntry*> keywords;
  std::vector<const TokenEntry*> comments;
  for (const TokenEntry& e : d.entries) {
    byKind.push_back(&e);
    if (e.type == TokenEntry::Type::Keyword) keywords.push_back(&e);
    if (e.type == TokenEntry::Type::Comment) comments.push_back(&e);
  }
  std::sort(byKind.begin(), byKind.end(), [](auto* a, auto* b) { return a->kind < b->kind; });

  // --- Header. ---
  CodeWriter h;
  h.Verbatim(Banner(sourceName));
  h.Line("#pragma once");
  h.Line();
  h.Line("#include <cstdint>");
  h.Line("#include <optional>");
  h.Line("#include <span>");
  h.Line();
  h.Line("#include \"frontend/Scanner.h\"");
  h.Line();
  h.Line("namespace mv {");
  h.Line();
  h.Line("class " + cls + " : public TmvBaseScanner {");
  h.Line("  MV_DECLARE_CLASS()");
  h.Line();
  h.Line(" public:");
  h.Indent();
  h.Line("// Token kinds.");
  h.Line("static constexpr int32_t tkEndOfText = 0;");
  h.Line("static constexpr int32_t tkNewLine = 1;");
  for (const TokenEntry* e : byKind) {
    h.Line("static constexpr int32_t " + e->constant + " = " + std::to_string(e->kind) + ";");
  }
  h.Line("// The kind of a character that starts nothing; the highest kind.");
  h.Line("static constexpr int32_t NoSym = " + std::to_string(d.noSym) + ";");
  h.Line("// The number of words CheckLiteral compares.");
  h.Line("static constexpr int32_t KeywordCount = " + std::to_string(keywords.size()) + ";");
  h.Line();
  h.Line(cls + "() = default;");
  h.Line("static const TmvScannerClass& ScannerClass();");
  h.Line("// The keywords in the order of the description.");
  h.Line("static std::span<const TmvKeywordEntry> Keywords();");
  h.Line("// The name of a kind as the description gives it (\"noSym\" past the end).");
  h.Line("static const char* KindName(int32_t kind);");
  h.Line();
  h.Line("void CheckLiteral(TmvToken& token) override;");
  h.Line("TmvToken NextToken() override;");
  for (size_t i = 0; i < comments.size(); ++i) {
    h.Line("// " + comments[i]->name + ": " + ToUtf8(comments[i]->open) + " ...");
    h.Line("std::optional<TmvToken> Comment" + std::to_string(i) + "();");
  }
  h.Dedent();
  h.Line();
  h.Line(" protected:");
  h.Line("  void InitInternal() override;");
  h.Line();
  h.Line(" private:");
  h.Line("  // The next state of the automaton, or 0 when it cannot move on `ch`.");
  h.Line("  static int32_t Move(int32_t state, int32_t ch);");
  h.Line("};");
  h.Line();
  h.Line("}  // namespace mv");

  // --- Source. ---
  CodeWriter s;
  s.Verbatim(Banner(sourceName));
  s.Line("#include \"" + headerName + "\"");
  s.Line();
  s.Line("#include <algorithm>");
  s.Line("#include <cstring>");
  s.Line("#include <iterator>");
  s.Line("#include <string_view>");
  s.Line();
  s.Line("namespace mv {");
  s.Line();
  s.Line("namespace {");
  s.Line();
  s.Line("// For each automaton state: the kind of a token that stops there, whether");
  s.Line("// the token is partial (no form is complete there), and whether its text");
  s.Line("// goes through CheckLiteral. State 0 is unused.");
  s.Line("struct StateInfo {");
  s.Line("  int16_t kind;");
  s.Line("  bool partial;");
  s.Line("  bool checksKeywords;");
  s.Line("};");
  s.Line("constexpr StateInfo kStates[] = {");
  for (size_t i = 0; i < dfa.states.size(); ++i) {
    const DfaState& st = dfa.states[i];
    std::string line = "    {" + std::to_string(i == 0 ? 0 : st.kind) + ", " + (st.partial ? "true" : "false") +
                       ", " + (st.checksKeywords ? "true" : "false") + "},";
    if (i > 0) line += "  // " + std::to_string(i) + ": " + d.KindName(st.kind) + (st.partial ? ", partial" : "");
    s.Line(line);
  }
  s.Line("};");
  s.Line();
  s.Line("struct StartEntry {");
  s.Line("  char16_t ch;");
  s.Line("  int16_t state;");
  s.Line("};");
  s.Line("constexpr StartEntry kStart[] = {");
  for (const auto& [c, state] : startEntries) {
    s.Line("    {" + CharCode(c) + ", " + std::to_string(state) + "},");
  }
  if (startEntries.empty()) s.Line("    {0, 0},");
  s.Line("};");
  s.Line();
  s.Line("constexpr TmvKeywordEntry kKeywords[] = {");
  for (const TokenEntry* e : keywords) {
    s.Line("    {" + NarrowLiteral(ToUtf8(e->text)) + ", " + std::to_string(e->kind) + "},");
  }
  if (keywords.empty()) s.Line("    {\"\", -1},");
  s.Line("};");
  size_t longest = 1;
  for (const TokenEntry* e : keywords) longest = std::max(longest, e->text.size());
  std::vector<std::string> words;
  for (const TokenEntry* e : keywords) words.push_back(ToUtf8(e->text));
  if (longest > 255) Fail({d.file, 1}, "a keyword is longer than 255 letters");
  KeywordHash hash;
  try {
    hash = FindKeywordHash(words);
  } catch (const std::exception& e) {
    Fail({d.file, 1}, e.what());
  }
  s.Line("// The perfect hash of the keywords: a word's hash picks a bucket, the");
  s.Line("// bucket's displacement turns the hash into the slot of its keyword.");
  s.Line("constexpr uint32_t kKeywordBuckets = " + std::to_string(hash.buckets) + ";");
  s.Line("constexpr uint32_t kKeywordSlotShift = " + std::to_string(32 - hash.slotBits) + ";");
  const auto numbers = [&](const char* declaration, const auto& values) {
    s.Line(declaration);
    std::string row = "   ";
    for (size_t i = 0; i < values.size(); ++i) {
      row += " " + std::to_string(values[i]) + ",";
      if (row.size() > 90 || i + 1 == values.size()) {
        s.Line(row);
        row = "   ";
      }
    }
    s.Line("};");
  };
  numbers("constexpr uint16_t kKeywordDisplacements[] = {", hash.displacements);
  std::vector<size_t> lengths;
  for (const std::string& w : words) lengths.push_back(w.size());
  if (lengths.empty()) lengths.push_back(0);
  numbers("// The length of each keyword of kKeywords.\nconstexpr uint8_t kKeywordLengths[] = {", lengths);
  numbers("// The keyword of each slot (an index into kKeywords), -1 where none.\nconstexpr int16_t kKeywordSlots[] = {",
          hash.slots);
  s.Line("constexpr size_t kLongestKeyword = " + std::to_string(longest) + ";");
  s.Line();
  s.Line("constexpr const char* kKindNames[] = {");
  {
    std::map<int, std::string> names{{0, "EOF"}, {1, "newLine"}};
    for (const TokenEntry* e : byKind) names[e->kind] = e->name;
    for (int k = 0; k < d.noSym; ++k) {
      auto it = names.find(k);
      s.Line("    " + NarrowLiteral(it == names.end() ? "" : it->second) + ",");
    }
  }
  s.Line("};");
  s.Line();
  s.Line("}  // namespace");
  s.Line();
  s.Line("const TmvScannerClass& " + cls + "::ScannerClass() {");
  s.Line("  static const TmvScannerClass info(\"" + cls + "\", &TmvBaseScanner::StaticClass(),");
  s.Line("                                    []() -> TmvBaseScanner* { return new " + cls + "(); });");
  s.Line("  return info;");
  s.Line("}");
  s.Line();
  s.Line("const TmvClass& " + cls + "::StaticClass() { return ScannerClass(); }");
  s.Line();
  s.Line("std::span<const TmvKeywordEntry> " + cls + "::Keywords() {");
  s.Line("  return std::span<const TmvKeywordEntry>(kKeywords, KeywordCount);");
  s.Line("}");
  s.Line();
  s.Line("const char* " + cls + "::KindName(int32_t kind) {");
  s.Line("  return kind >= 0 && kind < NoSym ? kKindNames[kind] : \"noSym\";");
  s.Line("}");
  s.Line();
  s.Line("void " + cls + "::InitInternal() {");
  s.Line("  StartTable.DefaultState = " + std::to_string(defaultState) + ";");
  if (!startEntries.empty()) s.Line("  for (const StartEntry& e : kStart) StartTable.AddEntry(e.ch, e.state);");
  s.Line("}");
  s.Line();
  s.Line("int32_t " + cls + "::Move(int32_t state, int32_t ch) {");
  s.Line("  switch (state) {");
  for (size_t i = 1; i < dfa.states.size(); ++i) {
    const DfaState& st = dfa.states[i];
    if (st.moves.empty()) continue;
    s.Line("    case " + std::to_string(i) + ":");
    for (const DfaTransition& t : st.moves) {
      s.Line("      if (" + RangeTest(t) + ") return " + std::to_string(t.target) + ";");
    }
    s.Line("      return 0;");
  }
  s.Line("    default:");
  s.Line("      return 0;");
  s.Line("  }");
  s.Line("}");
  s.Line();
  s.Line("TmvToken " + cls + "::NextToken() {");
  s.Line("  if (Ch == 13 || Ch == 10) return *NewLineToken();");
  if (d.taggedStringKind >= 0) {
    s.Line("  if (Ch == u'\\'' || Ch == u'$') {");
    s.Line("    if (auto token = ScanTaggedString(" + std::to_string(d.taggedStringKind) + ")) return std::move(*token);");
    s.Line("  }");
  }
  for (size_t i = 0; i < comments.size(); ++i) {
    s.Line("  if (Ch == " + CharCode(comments[i]->open[0]) + ") {");
    s.Line("    if (auto token = Comment" + std::to_string(i) + "()) return std::move(*token);");
    s.Line("  }");
  }
  s.Line("  TmvToken token = StartToken();");
  s.Line("  int32_t state = Ch == -1 ? -1 : StartTable.Items(static_cast<char16_t>(Ch));");
  s.Line("  TokenText.Clear();");
  s.Line("  TokenText.Append(RawCh);");
  s.Line("  NextCh();");
  s.Line("  if (state > 0) {");
  s.Line("    // As far as the automaton moves; it never backs up.");
  s.Line("    for (int32_t next; (next = Move(state, Ch)) != 0; state = next) {");
  s.Line("      TokenText.Append(RawCh);");
  s.Line("      NextCh();");
  s.Line("    }");
  s.Line("  }");
  s.Line("  token.Text = TokenText.ToWideString();");
  s.Line("  if (state < 0) {");
  s.Line("    token.Kind = tkEndOfText;");
  s.Line("  } else if (state == 0) {");
  s.Line("    token.Kind = NoSym;");
  s.Line("  } else {");
  s.Line("    token.Kind = kStates[state].kind;");
  s.Line("    token.IsPartial = kStates[state].partial;");
  s.Line("    if (kStates[state].checksKeywords) CheckLiteral(token);");
  s.Line("  }");
  s.Line("  return token;");
  s.Line("}");
  for (size_t i = 0; i < comments.size(); ++i) {
    const TokenEntry* c = comments[i];
    s.Line();
    s.Line("std::optional<TmvToken> " + cls + "::Comment" + std::to_string(i) + "() {");
    if (c->blockComment) {
      s.Line("  return ScanBlockComment(" + CharCode(c->open[1]) + ", " + CharCode(c->close[0]) + ", " +
             CharCode(c->close[1]) + ", " + (c->nested ? "true" : "false") + ", " + c->constant + ");");
    } else {
      s.Line("  return ScanLineComment(" + (c->open.size() > 1 ? CharCode(c->open[1]) : std::string("0")) + ", " +
             c->constant + ");");
    }
    s.Line("}");
  }
  s.Line();
  s.Line("void " + cls + "::CheckLiteral(TmvToken& token) {");
  if (keywords.empty()) {
    s.Line("  (void)token;");
  } else {
    s.Line("  // The text in small letters and its hash; a unit outside ASCII after");
    s.Line("  // lowering belongs to no keyword (they are plain ASCII).");
    s.Line("  const size_t n = token.Text.size();");
    s.Line("  if (n == 0 || n > kLongestKeyword) return;");
    s.Line("  char word[kLongestKeyword];");
    s.Line("  uint32_t hash = 2166136261u;");
    s.Line("  for (size_t i = 0; i < n; ++i) {");
    s.Line("    char16_t c = token.Text[i];");
    s.Line("    if (c >= u'A' && c <= u'Z') {");
    s.Line("      c = static_cast<char16_t>(c + (u'a' - u'A'));");
    s.Line("    } else if (c > 0x7F) {");
    s.Line("      c = WideLoCase(c);");
    s.Line("      if (c > 0x7F) return;");
    s.Line("    }");
    s.Line("    word[i] = static_cast<char>(c);");
    s.Line("    hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;");
    s.Line("  }");
    s.Line("  const uint32_t d = kKeywordDisplacements[hash % kKeywordBuckets];");
    if (hash.slotBits == 0) {
      s.Line("  (void)d;");
      s.Line("  const int16_t k = kKeywordSlots[0];");
    } else {
      s.Line("  const int16_t k = kKeywordSlots[((hash ^ (d * 0x9E3779B1u)) * 0x85EBCA6Bu) >> kKeywordSlotShift];");
    }
    s.Line("  if (k < 0 || kKeywordLengths[k] != n) return;");
    s.Line("  if (std::memcmp(kKeywords[k].Text, word, n) == 0) token.Kind = kKeywords[k].Kind;");
  }
  s.Line("}");
  s.Line();
  s.Line("}  // namespace mv");
  return {h.Text(), s.Text()};
}

}  // namespace grammargen
