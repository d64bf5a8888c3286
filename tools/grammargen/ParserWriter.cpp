#include "ParserWriter.h"

#include <functional>
#include <map>
#include <set>
#include <sstream>

#include "Output.h"

namespace grammargen {

namespace {

std::string KindList(const std::set<int>& kinds) {
  std::string out;
  for (int k : kinds) out += (out.empty() ? "" : ", ") + std::to_string(k);
  return out;
}

const char* HelperPrefix(Node::Type t) {
  return t == Node::Type::Opt ? "Opt" : t == Node::Type::Iter ? "Iter" : "Alt";
}

std::string HelperName(const Node& n) { return HelperPrefix(n.type) + std::to_string(n.number); }

// A short reminder of what a piece of grammar says, for comments.
std::string Summary(const Node& n, const TokenDescription& tokens, size_t limit = 70) {
  std::string out;
  std::function<void(const Node&)> walk = [&](const Node& x) {
    if (out.size() > limit) return;
    switch (x.type) {
      case Node::Type::Token: out += tokens.KindName(x.kind) + " "; break;
      case Node::Type::Call: out += x.rule + " "; break;
      case Node::Type::Action: break;
      case Node::Type::Seq:
        for (auto& i : x.items) walk(*i);
        break;
      case Node::Type::Alt:
        out += "( ";
        for (size_t i = 0; i < x.items.size(); ++i) {
          if (i) out += "| ";
          walk(*x.items[i]);
        }
        out += ") ";
        break;
      case Node::Type::Opt:
        out += "[ ";
        walk(*x.items[0]);
        out += "] ";
        break;
      case Node::Type::Iter:
        out += "{ ";
        walk(*x.items[0]);
        out += "} ";
        break;
    }
  };
  walk(n);
  while (!out.empty() && out.back() == ' ') out.pop_back();
  if (out.size() > limit) out = out.substr(0, limit) + " ...";
  if (out.empty()) out = "(nothing)";
  // Keep comments single-line and free of comment closers.
  for (char& c : out) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  size_t p;
  while ((p = out.find("*/")) != std::string::npos) out.replace(p, 2, "* /");
  return out;
}

// Strips the indentation the lines of an action share.
std::vector<std::string> ActionLines(const std::string& code) {
  std::vector<std::string> lines;
  std::istringstream in(code);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  while (!lines.empty() && lines.front().find_first_not_of(" \t") == std::string::npos) lines.erase(lines.begin());
  while (!lines.empty() && lines.back().find_first_not_of(" \t") == std::string::npos) lines.pop_back();
  size_t common = std::string::npos;
  for (size_t i = 0; i < lines.size(); ++i) {
    size_t indent = lines[i].find_first_not_of(" \t");
    if (indent == std::string::npos) continue;
    // The first line may follow the opening %{ on its own line or not.
    if (i == 0 && lines.size() > 1) continue;
    common = std::min(common, indent);
  }
  for (size_t i = 0; i < lines.size(); ++i) {
    size_t indent = lines[i].find_first_not_of(" \t");
    if (indent == std::string::npos) {
      lines[i].clear();
    } else if (i == 0) {
      lines[i] = lines[i].substr(indent);
    } else {
      lines[i] = lines[i].substr(std::min(common, indent));
    }
  }
  return lines;
}

class Writer {
 public:
  Writer(const Grammar& g, std::string sourceName, std::string headerName)
      : g_(g), sourceName_(std::move(sourceName)), headerName_(std::move(headerName)) {}

  GeneratedFiles Run() {
    for (const Rule& r : g_.rules) CollectHelpers(*r.body);
    FindRecursiveRules();
    WriteSource();
    WriteHeader();
    return {h_.Text(), s_.Text()};
  }

 private:
  void CollectHelpers(const Node& n) {
    if (n.type == Node::Type::Opt || n.type == Node::Type::Iter || n.type == Node::Type::Alt) helpers_.push_back(&n);
    for (auto& item : n.items) CollectHelpers(*item);
  }

  // The rules that may call themselves, through others or directly.
  void FindRecursiveRules() {
    std::map<std::string, std::set<std::string>> calls;
    std::function<void(const std::string&, const Node&)> collect = [&](const std::string& rule, const Node& n) {
      if (n.type == Node::Type::Call) calls[rule].insert(n.rule);
      for (auto& item : n.items) collect(rule, *item);
    };
    for (const Rule& r : g_.rules) collect(r.name, *r.body);
    for (const Rule& r : g_.rules) {
      std::set<std::string> seen;
      std::vector<std::string> todo(calls[r.name].begin(), calls[r.name].end());
      while (!todo.empty()) {
        const std::string next = todo.back();
        todo.pop_back();
        if (next == r.name) {
          recursive_.insert(r.name);
          break;
        }
        if (!seen.insert(next).second) continue;
        todo.insert(todo.end(), calls[next].begin(), calls[next].end());
      }
    }
  }

  const std::string& Cls() const { return g_.parserClass; }

  // The words a kind set needs to hold every kind of the scanner.
  size_t KindWords() const { return static_cast<size_t>(g_.tokens.noSym) / 64 + 1; }

  // --- Header. ---
  void WriteHeader() {
    h_.Verbatim(Banner(sourceName_));
    h_.Line("#pragma once");
    h_.Line();
    h_.Line("#include \"frontend/Parser.h\"");
    for (const std::string& code : g_.headerCode) {
      h_.Line();
      h_.Verbatim(code);
    }
    h_.Line();
    h_.Line("namespace mv {");
    h_.Line();
    h_.Line("class " + Cls() + " : public TmvBaseParser {");
    h_.Line("  MV_DECLARE_CLASS()");
    h_.Line();
    h_.Line(" public:");
    h_.Indent();
    h_.Line(Cls() + "(TmvBaseScanner* scanner, TmvBaseSQLContext* context);");
    h_.Line("static const TmvParserClass& ParserClass();");
    h_.Line();
    h_.Line("// The size of the grammar: rules (pairs of passes) and first-pass helpers.");
    h_.Line("static constexpr int RuleCount = " + std::to_string(g_.rules.size()) + ";");
    h_.Line("static constexpr int OptCount = " + std::to_string(g_.optCount) + ";");
    h_.Line("static constexpr int IterCount = " + std::to_string(g_.iterCount) + ";");
    h_.Line("static constexpr int AltCount = " + std::to_string(g_.altCount) + ";");
    h_.Line("// 64-bit words of the kind sets of the lookahead tests (kinds up to noSym).");
    h_.Line("static constexpr size_t KindWords = " + std::to_string(KindWords()) + ";");
    h_.Line();
    h_.Line("// Entries.");
    for (const EntryKind& k : kEntryKinds) {
      h_.Line(std::string("void Parse") + k.name + "WayCalc(TmvWayPointsList& list) override;");
      h_.Line(std::string(k.resultType) + "* Parse" + k.name + "() override;");
    }
    h_.Line();
    h_.Line("// Rules: the first pass over a way list, and the second pass.");
    for (const Rule& r : g_.rules) {
      h_.Line("void " + r.name + "WayCalc(TmvWayPointsList& list);");
      h_.Line("void " + r.name + "WayBody(TmvWayPointsList& list);");
      h_.Line("void " + r.name + "(" + OneLine(r.params) + ");");
    }
    h_.Line();
    h_.Line("// Options, repetitions and choices of the first pass.");
    for (const Node* n : helpers_) {
      h_.Line("void " + HelperName(*n) + "(TmvWayPointsList& list);");
      h_.Line("void " + HelperName(*n) + "Explore(TmvWayPointsList& list);");
    }
    h_.Dedent();
    for (const std::string& code : g_.memberCode) {
      h_.Line();
      h_.Verbatim(code);
    }
    h_.Line("};");
    h_.Line();
    h_.Line("}  // namespace mv");
  }

  static std::string OneLine(const std::string& text) {
    std::string out;
    bool blank = false;
    for (char c : text) {
      if (c == '\n' || c == '\r' || c == '\t' || c == ' ') {
        blank = !out.empty();
        continue;
      }
      if (blank) out += ' ';
      blank = false;
      out += c;
    }
    return out;
  }

  // --- Source. ---
  void WriteSource() {
    s_.Verbatim(Banner(sourceName_));
    s_.Line("#include \"" + headerName_ + "\"");
    s_.Line();
    s_.Line("#include \"" + ScannerHeaderName(g_.tokens) + "\"");
    // The node classes of the entries' results, which free what a failed parse made.
    s_.Line("#include \"frontend/GrammarActions.h\"");
    for (const std::string& code : g_.sourceCode) {
      s_.Line();
      s_.Verbatim(code);
    }
    s_.Line();
    s_.Line("namespace mv {");
    s_.Line();
    s_.Line("const TmvParserClass& " + Cls() + "::ParserClass() {");
    s_.Line("  static const TmvParserClass info(");
    s_.Line("      \"" + Cls() + "\", &TmvBaseParser::StaticClass(),");
    s_.Line("      [](TmvBaseScanner* scanner, TmvBaseSQLContext* context) -> TmvBaseParser* {");
    s_.Line("        return new " + Cls() + "(scanner, context);");
    s_.Line("      });");
    s_.Line("  return info;");
    s_.Line("}");
    s_.Line();
    s_.Line("const TmvClass& " + Cls() + "::StaticClass() { return ParserClass(); }");
    s_.Line();
    s_.Line(Cls() + "::" + Cls() + "(TmvBaseScanner* scanner, TmvBaseSQLContext* context)");
    s_.Line("    : TmvBaseParser(scanner, context) {}");
    WriteEntries();
    for (size_t i = 0; i < g_.rules.size(); ++i) WriteRule(g_.rules[i], i);
    s_.Line();
    s_.Line("}  // namespace mv");
  }

  void WriteEntries() {
    for (const EntryKind& k : kEntryKinds) {
      const EntryPoint* entry = nullptr;
      for (const EntryPoint& e : g_.entries) {
        if (e.name == k.name) entry = &e;
      }
      std::string name = std::string("Parse") + k.name;
      s_.Line();
      if (!entry) {
        s_.Line("// This grammar has no rule for " + name + ": nothing parses through it.");
        s_.Line("void " + Cls() + "::" + name + "WayCalc(TmvWayPointsList& list) { list.Clear(); }");
        s_.Line();
        s_.Line(std::string(k.resultType) + "* " + Cls() + "::" + name + "() { return nullptr; }");
        continue;
      }
      s_.Line("void " + Cls() + "::" + name + "WayCalc(TmvWayPointsList& list) { " + entry->rule + "WayCalc(list); }");
      s_.Line();
      s_.Line(std::string(k.resultType) + "* " + Cls() + "::" + name + "() {");
      s_.Line("  // Held until the rule is done, so that a failure frees what it made.");
      s_.Line("  TmvHeld<" + entry->resultType + "> result;");
      s_.Line("  " + entry->rule + "(result);");
      s_.Line("  return result.Release();");
      s_.Line("}");
    }
  }

  void WriteRule(const Rule& r, size_t number) {
    s_.Line();
    s_.Line("// " + r.name + " ::= " + Summary(*r.body, g_.tokens));
    s_.Line("void " + Cls() + "::" + r.name + "WayCalc(TmvWayPointsList& list) {");
    s_.Indent();
    s_.Line("TmvRuleScope scope(*this, list);");
    s_.Line("if (!scope) return;");
    // Only a rule that may call itself can make the work of a reading grow
    // with the text; the others read a bounded piece and are not shared.
    if (recursive_.count(r.name)) {
      s_.Line("ShareRule(*this, &" + Cls() + "::" + r.name + "WayBody, " + std::to_string(number) + ", list);");
    } else {
      s_.Line(r.name + "WayBody(list);");
    }
    s_.Dedent();
    s_.Line("}");
    s_.Line();
    s_.Line("void " + Cls() + "::" + r.name + "WayBody(TmvWayPointsList& list) {");
    s_.Indent();
    FirstPass(*r.body);
    s_.Dedent();
    s_.Line("}");
    std::vector<const Node*> own;
    std::function<void(const Node&)> collect = [&](const Node& n) {
      if (n.type == Node::Type::Opt || n.type == Node::Type::Iter || n.type == Node::Type::Alt) own.push_back(&n);
      for (auto& item : n.items) collect(*item);
    };
    collect(*r.body);
    for (const Node* n : own) WriteHelper(*n);
    s_.Line();
    s_.Line("void " + Cls() + "::" + r.name + "(" + OneLine(r.params) + ") {");
    s_.Indent();
    SecondPass(*r.body);
    s_.Dedent();
    s_.Line("}");
  }

  // The first pass of a sequence element or a whole body.
  void FirstPass(const Node& n) {
    switch (n.type) {
      case Node::Type::Token: s_.Line("Expect(list, " + n.kindConstant + ");"); break;
      case Node::Type::Call: s_.Line(n.rule + "WayCalc(list);"); break;
      case Node::Type::Action: break;
      case Node::Type::Seq:
        for (auto& item : n.items) FirstPass(*item);
        break;
      default: s_.Line(HelperName(n) + "(list);"); break;
    }
  }

  // Lookahead sets live in the function as constants, as bits.
  std::string KindsConstant(const std::string& name, const std::set<int>& kinds) {
    s_.Line("static constexpr auto " + name + " = KindBits<KindWords>({" + KindList(kinds) + "});");
    return name;
  }

  // The state tests of a set of guards, joined with &&; "" when there are none.
  static std::string StateCondition(const std::vector<Guard>& guards) {
    std::string out;
    for (const Guard& g : guards) {
      if (g.type != Guard::Type::State) continue;
      out += (out.empty() ? "" : " && ") + std::string("(") + OneLine(g.code) + ")";
    }
    return out;
  }

  // The token tests on `list`: the first kinds (unless `first` is empty) and
  // the guards in the order written. Declares the arrays they need; returns
  // the calls joined with &&, or "".
  std::string TokenTests(const std::string& list, const std::set<int>& first, const std::vector<Guard>& guards,
                         const std::string& prefix, const std::string& firstName = "First") {
    std::vector<std::string> calls;
    if (!first.empty()) calls.push_back("CheckLAToken(" + list + ", " + KindsConstant(prefix + firstName, first) + ")");
    int n = 0;
    for (const Guard& g : guards) {
      std::string name = prefix + "Guard" + std::to_string(++n);
      switch (g.type) {
        case Guard::Type::NotNext:
          calls.push_back("CheckLANotToken(" + list + ", " + KindsConstant(name, {g.kinds.begin(), g.kinds.end()}) + ")");
          break;
        case Guard::Type::NotNext2:
          calls.push_back("CheckLA2NotToken(" + list + ", " + KindsConstant(name, {g.kinds.begin(), g.kinds.end()}) + ")");
          break;
        case Guard::Type::Next:
          calls.push_back("CheckLAToken(" + list + ", " + KindsConstant(name, {g.kinds.begin(), g.kinds.end()}) + ")");
          break;
        case Guard::Type::NotNextText: calls.push_back("CheckLANotIn(" + list + ", " + g.code + ")"); break;
        case Guard::Type::Check:
          calls.push_back("CheckedGuard(" + list + ", " + g.code + "(" + list + "), \"" + g.code + "\")");
          break;
        case Guard::Type::Starts:
          calls.push_back("CheckLATokenAfter(" + list + ", " + KindsConstant(name + "Skip", {g.kinds.begin(), g.kinds.end()}) +
                          ", " + KindsConstant(name, {g.startKinds.begin(), g.startKinds.end()}) + ")");
          break;
        case Guard::Type::NotNext2Starts:
          calls.push_back("CheckLA2NotToken(" + list + ", " + KindsConstant(name, {g.startKinds.begin(), g.startKinds.end()}) + ")");
          break;
        case Guard::Type::State: break;
      }
    }
    std::string out;
    for (const std::string& c : calls) out += (out.empty() ? "" : " && ") + c;
    return out;
  }

  // The guards of an alternative or body: those it was written with.
  static const std::vector<Guard>& GuardsOf(const Node& body) { return body.guards; }

  // Whether any guard tests tokens (all but the tests of the parser's fields).
  static bool HasTokenGuards(const std::vector<Guard>& guards) {
    for (const Guard& g : guards) {
      if (g.type != Guard::Type::State) return true;
    }
    return false;
  }

  // Each helper is two functions: the path of a single way that one token
  // settles, and `...Explore` for the rest, whose lists and locals would
  // otherwise enlarge every frame of a deep nesting.
  void WriteHelper(const Node& n) {
    s_.Line();
    s_.Line("// " + Summary(n, g_.tokens));
    // The pick table, which both parts read.
    const std::vector<std::set<int>> starts = HelperStarts(n);
    pick_ = starts.empty() ? "" : "k" + HelperName(n) + "Pick";
    if (!starts.empty()) PickTable(pick_, starts);
    s_.Line("void " + Cls() + "::" + HelperName(n) + "(TmvWayPointsList& list) {");
    s_.Indent();
    s_.Line("if (list.IsEmpty()) return;");
    if (n.type == Node::Type::Opt) WriteOptPick(n);
    if (n.type == Node::Type::Iter) WriteIterPick(n);
    if (n.type == Node::Type::Alt) WriteAltPick(n);
    s_.Line(HelperName(n) + "Explore(list);");
    s_.Dedent();
    s_.Line("}");
    s_.Line();
    s_.Line("void " + Cls() + "::" + HelperName(n) + "Explore(TmvWayPointsList& list) {");
    s_.Indent();
    if (n.type == Node::Type::Opt) WriteOpt(n);
    if (n.type == Node::Type::Iter) WriteIter(n);
    if (n.type == Node::Type::Alt) WriteAlt(n);
    s_.Dedent();
    s_.Line("}");
  }

  // Ways that skip the option, or leave the repetition before its first
  // round, go into `other` with the decision 0, where what follows allows.
  void WriteLeave(const Node& n, const std::string& other, const std::vector<Guard>& guards) {
    std::string state = StateCondition(guards);
    if (!HasTokenGuards(guards)) {
      // The copy takes only the ways that what follows admits.
      s_.Line("static constexpr auto kLeaveFollow = KindBits<KindWords>({" + KindList(n.follow) + "});");
      std::string add = "ListAddWithWayNode(*" + other + ", list, 0, kLeaveFollow);";
      if (state.empty()) {
        s_.Line(add);
      } else {
        s_.Line("if (" + state + ") " + add);
      }
      return;
    }
    s_.Line(other + "->CopyFrom(list);");
    std::string tests = TokenTests("*" + other, n.follow, guards, "kLeave", "Follow");
    if (!state.empty()) {
      s_.Line("if (!(" + state + ")) {");
      s_.Line("  " + other + "->Clear();");
      s_.Line("} else if (" + tests + ") {");
      s_.Line("  AddWayNode(*" + other + ", 0);");
      s_.Line("}");
    } else {
      s_.Line("if (" + tests + ") AddWayNode(*" + other + ", 0);");
    }
  }

  // A table of the token kinds (0 to noSym) with, for each, the bits of the
  // branches that kind may start; the narrowest unsigned type that holds
  // `branches` bits (at most 64).
  void PickTable(const std::string& name, const std::vector<std::set<int>>& starts) {
    const size_t branches = starts.size();
    const char* type = branches <= 8 ? "uint8_t" : branches <= 16 ? "uint16_t" : branches <= 32 ? "uint32_t" : "uint64_t";
    std::vector<uint64_t> bits(static_cast<size_t>(g_.tokens.noSym) + 1, 0);
    for (size_t b = 0; b < branches; ++b) {
      for (int kind : starts[b]) {
        if (kind >= 0 && kind <= g_.tokens.noSym) bits[static_cast<size_t>(kind)] |= uint64_t(1) << b;
      }
    }
    std::string values;
    for (size_t k = 0; k < bits.size(); ++k) values += (k ? (k % 16 ? ", " : ",\n    ") : "") + std::to_string(bits[k]);
    s_.Line("constexpr std::array<" + std::string(type) + ", " + std::to_string(bits.size()) + "> " + name + " = {");
    s_.Line("    " + values + "};");
  }

  // Two conditions joined with &&, either of which may be empty.
  static std::string Conjoin(const std::string& a, const std::string& b) {
    return a.empty() ? b : b.empty() ? a : a + " && " + b;
  }

  // Ends the helper with no way left unless `cond` holds (nothing when empty).
  void WriteRequire(const std::string& cond) {
    if (cond.empty()) return;
    s_.Line("if (!(" + cond + ")) {");
    s_.Line("  list.Clear();");
    s_.Line("  return;");
    s_.Line("}");
  }

  // switch (on) { case label: { body; leave } ... default: break; }
  void WriteSwitch(const std::string& on, const std::vector<std::pair<std::string, std::function<void()>>>& cases,
                   const std::string& leave) {
    s_.Line("switch (" + on + ") {");
    s_.Indent();
    for (const auto& [label, write] : cases) {
      s_.Line("case " + label + ": {");
      s_.Indent();
      write();
      s_.Line(leave);
      s_.Dedent();
      s_.Line("}");
    }
    s_.Line("default:");
    s_.Line("  break;");
    s_.Dedent();
    s_.Line("}");
  }

  // The path of a list of one way: the pick of its next token selects a
  // case; no branch ends the way, several fall through to the exploring code
  // after this. Each case writes its branch and returns.
  void WritePickSwitch(const std::vector<std::pair<uint64_t, std::function<void()>>>& branches) {
    std::vector<std::pair<std::string, std::function<void()>>> cases = {{"0", [&] { s_.Line("list.Clear();"); }}};
    for (const auto& [bits, write] : branches) cases.push_back({std::to_string(bits) + "u", write});
    s_.Line("if (SharedWork() && list.Count() == 1) {");
    s_.Indent();
    WriteSwitch("NextPick(list, " + pick_ + ")", cases, "return;");
    s_.Dedent();
    s_.Line("}");
  }

  // The kinds that may start a branch that reads `body` and then what
  // follows `n`: the body's first kinds, and the follow when it may read nothing.
  static std::set<int> Starts(const Node& body, const Node& n) {
    std::set<int> out = body.first;
    if (body.nullable) out.insert(n.follow.begin(), n.follow.end());
    return out;
  }

  // Every kind: a body with a guard that tests parser fields only may start anywhere.
  std::set<int> AllKinds() const {
    std::set<int> out;
    for (int k = 0; k <= g_.tokens.noSym; ++k) out.insert(k);
    return out;
  }

  // One way whose next token allows only one of taking and skipping takes
  // it alone; the way goes on in `list` and nothing is copied.
  void WriteOptPick(const Node& n) {
    const Node& body = *n.items[0];
    WritePickSwitch({{1, [&] { WriteSkipAlone(n); }},
                     {2,
                      [&] {
                        WriteTake(body, true);
                        s_.Line("DropRepeats(list);");
                      }}});
  }

  void WriteOpt(const Node& n) {
    const Node& body = *n.items[0];
    s_.Line("TmvScopedWayList skip(*this);");
    WriteLeave(n, "skip", n.skipGuards);
    WriteTake(body);
    s_.Line("list.AppendFrom(*skip);");
    s_.Line("DropRepeats(list);");
  }

  // The ways of `list` take the option's body, where its guards allow
  // (and its first kinds, unless a pick has tested them).
  void WriteTake(const Node& body, bool firstTested = false) {
    std::string state = StateCondition(GuardsOf(body));
    std::string tests =
        TokenTests("list", body.nullable || firstTested ? std::set<int>{} : body.first, GuardsOf(body), "k");
    const std::string cond = Conjoin(state, tests);
    if (cond.empty()) {
      s_.Line("AddWayNode(list, 1);");
      FirstPass(body);
    } else {
      s_.Line("if (" + cond + ") {");
      s_.Indent();
      s_.Line("AddWayNode(list, 1);");
      FirstPass(body);
      s_.Dedent();
      s_.Line("} else {");
      s_.Line("  list.Clear();");
      s_.Line("}");
    }
  }

  // The one way of `list` skips the option, where its guards allow.
  void WriteSkipAlone(const Node& n) {
    std::string state = StateCondition(n.skipGuards);
    std::string tests = HasTokenGuards(n.skipGuards) ? TokenTests("list", n.follow, n.skipGuards, "kLeave", "Follow") : "";
    const std::string cond = Conjoin(state, tests);
    if (cond.empty()) {
      s_.Line("AddWayNode(list, 0);");
    } else {
      s_.Line("if (" + cond + ") {");
      s_.Line("  AddWayNode(list, 0);");
      s_.Line("} else {");
      s_.Line("  list.Clear();");
      s_.Line("}");
    }
  }

  // Rounds in which one way can only go on, or only leave, need no copy:
  // the way goes on in `list`. A way that may do both is explored.
  void WriteIterPick(const Node& n) {
    const Node& body = *n.items[0];
    s_.Line("if (SharedWork()) {");
    s_.Indent();
    s_.Line("while (list.Count() == 1) {");
    s_.Indent();
    s_.Line("const auto pick = NextPick(list, " + pick_ + ");");
    s_.Line("if (pick == 1) {");
    s_.Line("  AddWayNode(list, 0);");
    s_.Line("  return;");
    s_.Line("}");
    s_.Line("if (pick == 0) {");
    s_.Line("  list.Clear();");
    s_.Line("  return;");
    s_.Line("}");
    s_.Line("if (pick != 2) break;");
    // The pick has tested the first kinds already.
    WriteRequire(Conjoin(StateCondition(GuardsOf(body)), TokenTests("list", {}, GuardsOf(body), "k")));
    s_.Line("AddWayNode(list, 1);");
    FirstPass(body);
    s_.Dedent();
    s_.Line("}");
    s_.Line("if (list.IsEmpty()) return;");
    s_.Dedent();
    s_.Line("}");
  }

  void WriteIter(const Node& n) {
    const Node& body = *n.items[0];
    // What may follow the repetition; ways leave it only where that stands.
    s_.Line("static constexpr auto kFollow = KindBits<KindWords>({" + KindList(n.follow) + "});");
    s_.Line("TmvScopedWayList done(*this);");
    s_.Line("ListAddWithWayNode(*done, list, 0, kFollow);");
    std::string state = StateCondition(GuardsOf(body));
    // The body can not match nothing (the generator refuses that), so each
    // round reads a token and the loop ends.
    std::string tests = TokenTests("list", body.first, GuardsOf(body), "k");
    const std::string cond = Conjoin(state, tests);
    s_.Line("while (!list.IsEmpty()) {");
    s_.Indent();
    s_.Line("if (!(" + cond + ")) {");
    s_.Line("  list.Clear();");
    s_.Line("  break;");
    s_.Line("}");
    s_.Line("AddWayNode(list, 1);");
    FirstPass(body);
    s_.Line("ListAddWithWayNode(*done, list, 0, kFollow);");
    s_.Dedent();
    s_.Line("}");
    s_.Line("list.MoveFrom(*done);");
    s_.Line("DropRepeats(list);");
  }

  // Each alternative starts from an empty `list` and leaves it empty: the
  // ways it completes move on to `result`.
  // The branches of a helper: an option's skipping and taking, a
  // repetition's leaving and going on, a choice's alternatives.
  std::vector<std::set<int>> HelperStarts(const Node& n) const {
    const Node& body = *n.items[0];
    if (n.type == Node::Type::Opt) return {n.follow, Starts(body, n)};
    if (n.type == Node::Type::Iter) return {n.follow, StateCondition(GuardsOf(body)).empty() ? body.first : AllKinds()};
    return AltStarts(n);
  }

  // The alternatives each token kind may start: a guard that tests the
  // parser's fields lets its alternative start anywhere. Empty for a choice
  // of more than 64 alternatives, which is always explored.
  std::vector<std::set<int>> AltStarts(const Node& n) const {
    std::vector<std::set<int>> starts;
    if (n.items.size() > 64) return starts;
    for (const auto& alt : n.items)
      starts.push_back(StateCondition(GuardsOf(*alt)).empty() ? Starts(*alt, n) : AllKinds());
    return starts;
  }

  // One way whose next token can start only one alternative takes it alone:
  // the way goes on in `list` and nothing is copied.
  void WriteAltPick(const Node& n) {
    if (pick_.empty()) return;
    std::vector<std::pair<uint64_t, std::function<void()>>> cases;
    for (size_t k = 0; k < n.items.size(); ++k) {
      cases.push_back({uint64_t(1) << k, [&, k] {
                         const Node& alt = *n.items[k];
                         // The pick has tested the first kinds already.
                         WriteRequire(Conjoin(StateCondition(GuardsOf(alt)),
                                              TokenTests("list", {}, GuardsOf(alt), "k" + std::to_string(k))));
                         s_.Line("AddWayNode(list, " + std::to_string(k) + ");");
                         FirstPass(alt);
                         s_.Line("DropRepeats(list);");
                       }});
    }
    WritePickSwitch(cases);
  }

  void WriteAlt(const Node& n) {
    const bool picks = !pick_.empty();
    s_.Line("TmvScopedWayList input(*this);");
    s_.Line("TmvScopedWayList result(*this);");
    s_.Line("input->MoveFrom(list);");
    // Otherwise every alternative some way can start runs on a copy of the
    // input (every alternative, in the reference mode).
    s_.Line(std::string("const uint64_t pick = ") + (picks ? "SharedWork() ? NextPickAll(*input, " + pick_ + ") : " : "") +
            "~uint64_t(0);");
    for (size_t k = 0; k < n.items.size(); ++k) {
      const Node& alt = *n.items[k];
      std::string prefix = "k" + std::to_string(k);
      s_.Line("// " + std::to_string(k) + ": " + Summary(alt, g_.tokens));
      std::string state = StateCondition(GuardsOf(alt));
      const std::string bit = k < 64 ? "(pick >> " + std::to_string(k) + ") & 1" : "true";
      s_.Line("if ((" + bit + ")" + (state.empty() ? "" : " && " + state) + ") {");
      s_.Indent();
      WriteBranchScope(n, k);
      if (!alt.nullable && !HasTokenGuards(GuardsOf(alt))) {
        // Only the ways whose next token can start the alternative are
        // copied, each with the decision already taken.
        KindsConstant(prefix + "First", alt.first);
        s_.Line("if (ListAddWithWayNode(list, *input, " + std::to_string(k) + ", " + prefix + "First)) {");
        s_.Indent();
        FirstPass(alt);
        s_.Line("result->AppendFrom(list);");
        s_.Dedent();
        s_.Line("}");
        s_.Dedent();
        s_.Line("}");
        continue;
      }
      s_.Line("list.CopyFrom(*input);");
      // An alternative that can match nothing has no lookahead of its own.
      std::string tests = TokenTests("list", alt.nullable ? std::set<int>{} : alt.first, GuardsOf(alt), prefix);
      if (!tests.empty()) {
        s_.Line("if (" + tests + ") {");
        s_.Indent();
      }
      s_.Line("AddWayNode(list, " + std::to_string(k) + ");");
      FirstPass(alt);
      s_.Line("result->AppendFrom(list);");
      if (!tests.empty()) {
        s_.Dedent();
        s_.Line("}");
      }
      s_.Dedent();
      s_.Line("}");
    }
    s_.Line("list.MoveFrom(*result);");
    s_.Line("DropRepeats(list);");
  }

  // While alternative k runs, the rules it enters are recorded if a later
  // alternative will still run, and looked up if an earlier one ran: the
  // later alternatives may enter them again.
  void WriteBranchScope(const Node& n, size_t k) {
    if (n.items.size() < 2) return;
    const std::string later =
        k + 1 >= n.items.size() ? "false" : k + 1 >= 64 ? "true" : "(pick >> " + std::to_string(k + 1) + ") != 0";
    const std::string earlier =
        k == 0 ? "false" : k >= 64 ? "true" : "(pick & ((uint64_t(1) << " + std::to_string(k) + ") - 1)) != 0";
    s_.Line("TmvBranchScope branch(*this, " + later + ", " + earlier + ");");
  }

  // The second pass reads one decision wherever the first recorded one.
  void SecondPass(const Node& n) {
    switch (n.type) {
      case Node::Type::Token: s_.Line("Get();"); break;
      case Node::Type::Call: s_.Line(n.rule + "(" + OneLine(n.args) + ");"); break;
      case Node::Type::Action:
        for (const std::string& line : ActionLines(n.code)) s_.Line(line);
        break;
      case Node::Type::Seq:
        for (auto& item : n.items) SecondPass(*item);
        break;
      case Node::Type::Opt:
        s_.Line("if (ReadChoice(2) == 1) {");
        s_.Indent();
        SecondPass(*n.items[0]);
        s_.Dedent();
        s_.Line("}");
        break;
      case Node::Type::Iter:
        s_.Line("while (ReadChoice(2) == 1) {");
        s_.Indent();
        SecondPass(*n.items[0]);
        s_.Dedent();
        s_.Line("}");
        break;
      case Node::Type::Alt:
        if (n.items.size() == 1) {
          s_.Line("ReadChoice(1);");
          s_.Line("{");
          s_.Indent();
          SecondPass(*n.items[0]);
          s_.Dedent();
          s_.Line("}");
          break;
        }
        std::vector<std::pair<std::string, std::function<void()>>> cases;
        for (size_t k = 0; k < n.items.size(); ++k)
          cases.push_back({std::to_string(k), [this, &n, k] { SecondPass(*n.items[k]); }});
        WriteSwitch("ReadChoice(" + std::to_string(n.items.size()) + ")", cases, "break;");
        break;
    }
  }

  const Grammar& g_;
  std::string sourceName_;
  std::string headerName_;
  std::vector<const Node*> helpers_;
  std::set<std::string> recursive_;
  std::string pick_;  // the pick table of the helper being written; empty without one
  CodeWriter h_;
  CodeWriter s_;
};

}  // namespace

GeneratedFiles WriteParser(const Grammar& grammar, const std::string& sourceName,
                           const std::string& headerName) {
  return Writer(grammar, sourceName, headerName).Run();
}

}  // namespace grammargen
