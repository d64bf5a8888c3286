#include "Grammar.h"

#include <algorithm>
#include <cctype>
#include <functional>

#include "Cursor.h"

namespace grammargen {

const EntryKind kEntryKinds[8] = {
    {"Select", "TSQLSelectStatement"},
    {"SubQuery", "TSQLSubSelectStatement"},
    {"ObjectName", "TSQLDatabaseObject"},
    {"Expression", "TSQLExpressionItem"},
    {"SelectItem", "TSQLSelectItem"},
    {"LogicalExpression", "TSQLExpressionItem"},
    {"FromSource", "TSQLFromSource"},
    {"Identifier", "TastTokenIdentifier"},
};

Rule* Grammar::FindRule(const std::string& name) {
  for (Rule& r : rules) {
    if (r.name == name) return &r;
  }
  return nullptr;
}

namespace {

std::string Directory(const std::string& path) {
  size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string Resolve(const std::string& base, const std::string& path) {
  if (!path.empty() && path[0] == '/') return path;
  std::string joined = Directory(base) + "/" + path;
  // Fold "dir/../" so that the dependency file names each file one way.
  std::vector<std::string> parts;
  size_t start = 0;
  bool absolute = !joined.empty() && joined[0] == '/';
  while (start <= joined.size()) {
    size_t slash = joined.find('/', start);
    if (slash == std::string::npos) slash = joined.size();
    std::string part = joined.substr(start, slash - start);
    if (part == "..") {
      if (!parts.empty() && parts.back() != "..") parts.pop_back();
      else if (!absolute) parts.push_back(part);
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    start = slash + 1;
  }
  std::string out = absolute ? "/" : "";
  for (size_t i = 0; i < parts.size(); ++i) out += (i ? "/" : "") + parts[i];
  return out;
}

bool IsCapitals(const std::string& word) {
  bool letter = false;
  for (char c : word) {
    if (std::islower(static_cast<unsigned char>(c))) return false;
    letter |= std::isupper(static_cast<unsigned char>(c)) != 0;
  }
  return letter;
}

std::unique_ptr<Node> NewNode(Node::Type type, const SourceLocation& where) {
  auto n = std::make_unique<Node>();
  n->type = type;
  n->where = where;
  return n;
}

std::u16string Widen(const std::string& s) { return std::u16string(s.begin(), s.end()); }

std::string Trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t\r\n");
  if (b == std::string::npos) return "";
  return s.substr(b, s.find_last_not_of(" \t\r\n") + 1 - b);
}

// "OP N" of @version: a comparison and a number, or false.
bool ParseVersionTest(const std::string& args, std::string& op, std::string& number) {
  std::string text = Trim(args);
  for (const char* candidate : {">=", "<=", "==", "!=", ">", "<"}) {
    std::string c = candidate;
    if (text.compare(0, c.size(), c) == 0) {
      op = c;
      number = Trim(text.substr(c.size()));
      return !number.empty() && number.find_first_not_of("0123456789") == std::string::npos;
    }
  }
  return false;
}

// The node type of a parameter written "Type*& name", or "".
std::string OutParameterType(const std::string& params) {
  std::string text = Trim(params);
  size_t end = text.size();
  while (end > 0 && (std::isalnum(static_cast<unsigned char>(text[end - 1])) || text[end - 1] == '_')) --end;
  if (end == text.size() || std::isdigit(static_cast<unsigned char>(text[end]))) return "";
  text = Trim(text.substr(0, end));
  if (text.size() < 2 || text.back() != '&') return "";
  text = Trim(text.substr(0, text.size() - 1));
  if (text.empty() || text.back() != '*') return "";
  return Trim(text.substr(0, text.size() - 1));
}

// --- Reading. ---------------------------------------------------------------

class Reader {
 public:
  explicit Reader(Grammar& g) : g_(g) {}

  void ReadFile(const std::string& path, const SourceLocation& from) {
    if (std::find(stack_.begin(), stack_.end(), path) != stack_.end()) {
      Fail(from, "the grammar includes itself: " + path);
    }
    if (std::find(g_.inputs.begin(), g_.inputs.end(), path) == g_.inputs.end()) g_.inputs.push_back(path);
    stack_.push_back(path);
    Cursor in = Cursor::Open(path, from);
    while (!in.AtEnd()) Statement(in);
    stack_.pop_back();
  }

 private:
  void Statement(Cursor& in) {
    SourceLocation where = in.Here();
    std::string word = in.ReadWord();
    bool isOverride = false;
    if (word == "override" && in.AtWord()) {
      isOverride = true;
      word = in.ReadWord();
    }
    if (in.Peek() == '(' || in.TryText("::=")) {
      DefineRule(in, word, where, isOverride);
      return;
    }
    if (isOverride) in.Error("expected a rule after 'override'");
    if (word == "parser") {
      g_.parserClass = in.ReadWord();
    } else if (word == "scanner") {
      g_.scannerFile = Resolve(in.File(), ToUtf8(in.ReadString()));
      g_.scannerWhere = where;
    } else if (word == "include") {
      std::string path = Resolve(in.File(), ToUtf8(in.ReadString()));
      in.Expect(';', "';' after the included file");
      ReadFile(path, where);
      return;
    } else if (word == "header" || word == "source" || word == "members") {
      std::string code = in.ReadCode();
      (word == "header" ? g_.headerCode : word == "source" ? g_.sourceCode : g_.memberCode).push_back(code);
      return;
    } else if (word == "set") {
      std::string name = in.ReadWord();
      in.Expect('=', "'=' after the set's name");
      NamedSet set;
      set.where = where;
      while (!in.TryChar(';')) set.tokens.push_back(ReadTokenRef(in));
      if (set.tokens.empty()) Fail(where, "the set '" + name + "' is empty");
      g_.sets[name] = std::move(set);
      return;
    } else if (word == "entry") {
      std::string name = in.ReadWord();
      if (name.rfind("Parse", 0) != 0) Fail(where, "entries are named ParseX");
      name = name.substr(5);
      bool known = false;
      for (const EntryKind& k : kEntryKinds) known |= name == k.name;
      if (!known) Fail(where, "the parser base has no entry Parse" + name);
      in.Expect('=', "'=' after the entry");
      std::string rule = in.ReadWord();
      g_.entries.erase(std::remove_if(g_.entries.begin(), g_.entries.end(),
                                      [&](const EntryPoint& e) { return e.name == name; }),
                       g_.entries.end());
      g_.entries.push_back(EntryPoint{name, rule, "", where});
    } else if (word == "delete") {
      std::string name = in.ReadWord();
      auto it = std::find_if(g_.rules.begin(), g_.rules.end(), [&](const Rule& r) { return r.name == name; });
      if (it == g_.rules.end()) Fail(where, "there is no rule '" + name + "' to delete");
      g_.rules.erase(it);
    } else {
      Fail(where, "unknown statement '" + word + "' (a rule needs '::=')");
    }
    in.Expect(';', "';' at the end of the statement");
  }

  void DefineRule(Cursor& in, const std::string& name, const SourceLocation& where, bool isOverride) {
    Rule rule;
    rule.name = name;
    rule.where = where;
    if (in.Peek() == '(') {
      rule.params = in.ReadBalanced('(', ')');
      in.ExpectText("::=", "'::=' after the rule's parameters");
    }
    rule.body = Body(in);
    in.Expect(';', "';' at the end of the rule");
    if (rule.body->type == Node::Type::Seq && !rule.body->guards.empty()) rule.body = Choice(std::move(rule.body));
    Rule* existing = g_.FindRule(name);
    if (isOverride) {
      if (!existing) Fail(where, "'" + name + "' overrides no rule");
      *existing = std::move(rule);
    } else {
      if (existing) {
        Fail(where, "the rule '" + name + "' is already defined at " + existing->where.file + ":" +
                        std::to_string(existing->where.line) + " (write 'override')");
      }
      g_.rules.push_back(std::move(rule));
    }
  }

  // A choice of one alternative: guards need a decision to stand in.
  static std::unique_ptr<Node> Choice(std::unique_ptr<Node> seq) {
    auto alt = NewNode(Node::Type::Alt, seq->where);
    alt->items.push_back(std::move(seq));
    return alt;
  }

  std::unique_ptr<Node> Body(Cursor& in) {
    SourceLocation where = in.Here();
    std::vector<std::unique_ptr<Node>> alternatives;
    alternatives.push_back(Alternative(in));
    while (in.TryChar('|')) alternatives.push_back(Alternative(in));
    if (alternatives.size() == 1) return std::move(alternatives[0]);
    auto alt = NewNode(Node::Type::Alt, where);
    alt->items = std::move(alternatives);
    return alt;
  }

  std::unique_ptr<Node> Alternative(Cursor& in) {
    in.SkipSpace();
    auto seq = NewNode(Node::Type::Seq, in.Here());
    for (;;) {
      in.SkipSpace();
      char c = in.Peek();
      if (c == '|' || c == ']' || c == '}' || c == ')' || c == ';' || c == '\0') break;
      if (c == '@') {
        Guard g = ReadGuard(in);
        if (seq->items.empty()) {
          seq->guards.push_back(std::move(g));
        } else if (seq->items.back()->type == Node::Type::Opt) {
          seq->items.back()->skipGuards.push_back(std::move(g));
        } else {
          Fail(g.where, "a guard stands at the start of an alternative or right after the ']' of an option");
        }
        continue;
      }
      std::unique_ptr<Node> element = Element(in);
      if (element->type == Node::Type::Seq) {
        // A bracketed sequence without choice is no element of its own.
        for (auto& item : element->items) seq->items.push_back(std::move(item));
      } else {
        seq->items.push_back(std::move(element));
      }
    }
    return seq;
  }

  std::unique_ptr<Node> Element(Cursor& in) {
    SourceLocation where = in.Here();
    char c = in.Peek();
    if (c == '[' || c == '{') {
      in.TryChar(c);
      auto node = NewNode(c == '[' ? Node::Type::Opt : Node::Type::Iter, where);
      node->items.push_back(Body(in));
      in.Expect(c == '[' ? ']' : '}', c == '[' ? "']'" : "'}'");
      return node;
    }
    if (c == '(') {
      in.TryChar('(');
      std::unique_ptr<Node> body = Body(in);
      in.Expect(')', "')'");
      if (body->type == Node::Type::Seq && !body->guards.empty()) return Choice(std::move(body));
      return body;
    }
    if (c == '%' && in.Peek(1) == '{') {
      auto node = NewNode(Node::Type::Action, where);
      node->code = in.ReadCode();
      return node;
    }
    if (c == '"') {
      auto node = NewNode(Node::Type::Token, where);
      node->token = ReadTokenRef(in);
      return node;
    }
    if (!in.AtWord()) in.Error(std::string("unexpected '") + c + "'");
    auto node = NewNode(Node::Type::Call, where);
    node->rule = in.ReadWord(true);
    if (in.Peek() == '(') {
      node->args = in.ReadBalanced('(', ')');
      node->hasArgs = true;
    }
    return node;
  }

  static TokenRef ReadTokenRef(Cursor& in) {
    TokenRef ref;
    in.SkipSpace();
    ref.where = in.Here();
    if (in.Peek() == '"') {
      ref.form = TokenRef::Form::Text;
      ref.spelling = ToUtf8(in.ReadString());
    } else {
      ref.spelling = in.ReadWord(true);
      ref.form = IsCapitals(ref.spelling) ? TokenRef::Form::Capitals : TokenRef::Form::Name;
    }
    return ref;
  }

  static Guard ReadGuard(Cursor& in) {
    Guard g;
    g.where = in.Here();
    in.Expect('@', "'@'");
    std::string name = in.ReadWord();
    std::string args;
    bool hasArgs = in.Peek() == '(';
    if (hasArgs) args = in.ReadBalanced('(', ')');
    g.written = "@" + name + (hasArgs ? "(" + args + ")" : "");
    auto needArgs = [&](bool want) {
      if (want != hasArgs) Fail(g.where, "@" + name + (want ? " needs an argument" : " takes no argument"));
    };
    auto tokens = [&]() {
      Cursor list(g.where.file, args);
      while (!list.AtEnd()) {
        TokenRef ref = ReadTokenRef(list);
        ref.where = g.where;
        g.tokens.push_back(ref);
        list.TryChar(',');
      }
      if (g.tokens.empty()) Fail(g.where, "@" + name + " needs tokens");
    };
    auto state = [&](const std::string& condition) {
      needArgs(false);
      g.type = Guard::Type::State;
      g.code = condition;
    };
    if (name == "notNext" || name == "notNext2" || name == "next") {
      needArgs(true);
      g.type = name == "notNext" ? Guard::Type::NotNext : name == "notNext2" ? Guard::Type::NotNext2 : Guard::Type::Next;
      tokens();
    } else if (name == "notNextText" || name == "check") {
      needArgs(true);
      g.type = name == "check" ? Guard::Type::Check : Guard::Type::NotNextText;
      Cursor list(g.where.file, args);
      g.code = list.ReadWord();
      if (!list.AtEnd()) Fail(g.where, "@" + name + " takes the name of one member");
    } else if (name == "starts") {
      // @starts(rule) or @starts(rule after tokens).
      needArgs(true);
      g.type = Guard::Type::Starts;
      Cursor list(g.where.file, args);
      g.code = list.ReadWord();
      if (!list.AtEnd()) {
        if (list.ReadWord() != "after" || list.AtEnd()) Fail(g.where, "@starts takes a rule and, after 'after', tokens: @starts(query after \"(\")");
        while (!list.AtEnd()) {
          TokenRef ref = ReadTokenRef(list);
          ref.where = g.where;
          g.tokens.push_back(ref);
          list.TryChar(',');
        }
      }
    } else if (name == "notNext2Starts") {
      // @notNext2Starts(rule): the token after the next cannot start it.
      needArgs(true);
      g.type = Guard::Type::NotNext2Starts;
      Cursor list(g.where.file, args);
      g.code = list.ReadWord();
      if (!list.AtEnd()) Fail(g.where, "@notNext2Starts takes the name of one rule");
    } else if (name == "version") {
      needArgs(true);
      std::string op, number;
      if (!ParseVersionTest(args, op, number)) Fail(g.where, "@version takes a comparison and a number: @version(>= 11)");
      g.type = Guard::Type::State;
      g.code = "ServerVersion " + op + " " + number;
    } else if (name == "when") {
      needArgs(true);
      g.type = Guard::Type::State;
      g.code = args;
    } else if (name == "leftOperandRequired") {
      state("RequireLeftOperand");
    } else if (name == "leftOperandOptional") {
      state("!RequireLeftOperand");
    } else if (name == "leftIsLogical") {
      state("LeftIsLogical");
    } else if (name == "leftNotLogical") {
      state("!LeftIsLogical");
    } else if (name == "intoAllowed") {
      state("!DenyIntoClause");
    } else {
      Fail(g.where, "unknown guard @" + name);
    }
    return g;
  }

  Grammar& g_;
  std::vector<std::string> stack_;
};

// --- Analysis. ----------------------------------------------------------------

class Analyzer {
 public:
  explicit Analyzer(Grammar& g) : g_(g) {}

  void Run() {
    for (Rule& r : g_.rules) Resolve(*r.body);
    for (auto& [name, set] : g_.sets) set.kinds = Kinds(set.tokens, nullptr);
    for (Rule& r : g_.rules) ResolveGuards(*r.body);
    CheckEntries();
    ComputeNullableAndFirst();
    for (Rule& r : g_.rules) ResolveStartGuards(*r.body);
    CheckProductive();
    CheckRepetitions();
    CheckLeftRecursion();
    ComputeFollow();
    for (Rule& r : g_.rules) Number(*r.body);
    WarnUnreachable();
  }

 private:
  // Names become rule calls or tokens.
  void Resolve(Node& n) {
    if (n.type == Node::Type::Token) {
      const TokenEntry* e = FindToken(n.token);
      if (!e) Fail(n.where, "no token \"" + n.token.spelling + "\" in " + g_.tokens.file);
      SetToken(n, *e);
    } else if (n.type == Node::Type::Call) {
      Rule* rule = g_.FindRule(n.rule);
      TokenRef ref{IsCapitals(n.rule) ? TokenRef::Form::Capitals : TokenRef::Form::Name, n.rule, n.where};
      const TokenEntry* token = FindToken(ref);
      if (rule && token) Fail(n.where, "'" + n.rule + "' names both a rule and a token");
      if (!rule && token) {
        if (n.hasArgs) Fail(n.where, "the token '" + n.rule + "' takes no arguments");
        n.type = Node::Type::Token;
        n.token = ref;
        SetToken(n, *token);
      } else if (!rule) {
        Fail(n.where, "undefined symbol '" + n.rule + "'");
      }
    }
    for (auto& item : n.items) Resolve(*item);
  }

  void SetToken(Node& n, const TokenEntry& e) {
    n.kind = e.kind;
    n.kindConstant = g_.tokens.scannerClass + "::" + e.constant;
  }

  const TokenEntry* FindToken(const TokenRef& ref) const {
    switch (ref.form) {
      case TokenRef::Form::Text: return g_.tokens.FindByText(Widen(ref.spelling));
      case TokenRef::Form::Capitals: {
        if (const TokenEntry* e = g_.tokens.FindByName(ref.spelling)) return e;
        return g_.tokens.FindByText(Widen(ref.spelling));
      }
      case TokenRef::Form::Name: return g_.tokens.FindByName(ref.spelling);
    }
    return nullptr;
  }

  std::vector<int> Kinds(const std::vector<TokenRef>& refs, const Guard* guard) {
    std::set<int> kinds;
    for (const TokenRef& ref : refs) {
      if (guard && ref.form != TokenRef::Form::Text) {
        auto it = g_.sets.find(ref.spelling);
        if (it != g_.sets.end()) {
          kinds.insert(it->second.kinds.begin(), it->second.kinds.end());
          continue;
        }
      }
      const TokenEntry* e = FindToken(ref);
      if (!e) Fail(ref.where, "no token or set '" + ref.spelling + "'");
      kinds.insert(e->kind);
    }
    return std::vector<int>(kinds.begin(), kinds.end());
  }

  void ResolveGuards(Node& n) {
    for (Guard& g : n.guards) g.kinds = Kinds(g.tokens, &g);
    for (Guard& g : n.skipGuards) g.kinds = Kinds(g.tokens, &g);
    for (auto& item : n.items) ResolveGuards(*item);
  }

  // @starts takes the first set of its rule, which is known only now.
  void ResolveStartGuards(Node& n) {
    auto resolve = [&](Guard& g) {
      if (g.type != Guard::Type::Starts && g.type != Guard::Type::NotNext2Starts) return;
      const std::string guard = g.type == Guard::Type::Starts ? "@starts" : "@notNext2Starts";
      const Rule* rule = g_.FindRule(g.code);
      if (!rule) Fail(g.where, guard + " names no rule '" + g.code + "'");
      if (rule->nullable) Fail(g.where, guard + " needs a rule that cannot match nothing: '" + g.code + "' can");
      g.startKinds.clear();
      for (int kind : rule->first)
        if (std::find(g.kinds.begin(), g.kinds.end(), kind) == g.kinds.end()) g.startKinds.push_back(kind);
    };
    for (Guard& g : n.guards) resolve(g);
    for (Guard& g : n.skipGuards) resolve(g);
    for (auto& item : n.items) ResolveStartGuards(*item);
  }

  void CheckEntries() {
    for (EntryPoint& e : g_.entries) {
      Rule* rule = g_.FindRule(e.rule);
      if (!rule) Fail(e.where, "the entry Parse" + e.name + " names no rule '" + e.rule + "'");
      e.resultType = OutParameterType(rule->params);
      if (e.resultType.empty() || e.resultType.find(',') != std::string::npos) {
        Fail(e.where, "the rule '" + e.rule + "' of an entry takes one parameter 'Node*& name'");
      }
    }
  }

  // Nullable and first sets, to a fixed point over all rules.
  void ComputeNullableAndFirst() {
    for (bool changed = true; changed;) {
      changed = false;
      for (Rule& r : g_.rules) {
        Nullable(*r.body);
        if (r.body->nullable != r.nullable || r.body->first != r.first) {
          r.nullable = r.body->nullable;
          r.first = r.body->first;
          changed = true;
        }
      }
    }
  }

  void Nullable(Node& n) {
    for (auto& item : n.items) Nullable(*item);
    n.first.clear();
    switch (n.type) {
      case Node::Type::Token:
        n.nullable = false;
        n.first = {n.kind};
        break;
      case Node::Type::Call: {
        Rule* r = g_.FindRule(n.rule);
        n.nullable = r->nullable;
        n.first = r->first;
        break;
      }
      case Node::Type::Action:
        n.nullable = true;
        break;
      case Node::Type::Seq:
        n.nullable = true;
        for (auto& item : n.items) {
          n.first.insert(item->first.begin(), item->first.end());
          if (!item->nullable) {
            n.nullable = false;
            break;
          }
        }
        break;
      case Node::Type::Alt:
        n.nullable = false;
        for (auto& item : n.items) {
          n.first.insert(item->first.begin(), item->first.end());
          n.nullable |= item->nullable;
        }
        break;
      case Node::Type::Opt:
      case Node::Type::Iter:
        n.nullable = true;
        n.first = n.items[0]->first;
        break;
    }
  }

  bool Productive(const Node& n) {
    switch (n.type) {
      case Node::Type::Call: return g_.FindRule(n.rule)->productive;
      case Node::Type::Seq:
        return std::all_of(n.items.begin(), n.items.end(), [&](auto& i) { return Productive(*i); });
      case Node::Type::Alt:
        return std::any_of(n.items.begin(), n.items.end(), [&](auto& i) { return Productive(*i); });
      default: return true;
    }
  }

  void CheckProductive() {
    for (bool changed = true; changed;) {
      changed = false;
      for (Rule& r : g_.rules) {
        if (!r.productive && Productive(*r.body)) r.productive = changed = true;
      }
    }
    for (const Rule& r : g_.rules) {
      if (!r.productive) Fail(r.where, "the rule '" + r.name + "' can never be completed: every way through it calls itself again");
    }
  }

  void CheckRepetitions(const Node& n) {
    if (n.type == Node::Type::Iter && n.items[0]->nullable) {
      Fail(n.where, "the body of this repetition can match nothing, so it would repeat forever");
    }
    for (auto& item : n.items) CheckRepetitions(*item);
  }
  void CheckRepetitions() {
    for (const Rule& r : g_.rules) CheckRepetitions(*r.body);
  }

  // The rules a node may call before it reads any token, with the place of the call.
  void LeftCalls(const Node& n, std::vector<const Node*>& out) {
    switch (n.type) {
      case Node::Type::Call: out.push_back(&n); break;
      case Node::Type::Seq:
        for (auto& item : n.items) {
          LeftCalls(*item, out);
          if (!item->nullable) break;
        }
        break;
      case Node::Type::Alt:
      case Node::Type::Opt:
      case Node::Type::Iter:
        for (auto& item : n.items) LeftCalls(*item, out);
        break;
      default: break;
    }
  }

  void CheckLeftRecursion() {
    std::map<std::string, std::vector<const Node*>> edges;
    for (const Rule& r : g_.rules) LeftCalls(*r.body, edges[r.name]);
    std::map<std::string, int> state;  // 0 new, 1 on the path, 2 done
    std::vector<const Node*> path;
    std::function<void(const std::string&)> visit = [&](const std::string& rule) {
      state[rule] = 1;
      for (const Node* call : edges[rule]) {
        path.push_back(call);
        if (state[call->rule] == 1) {
          // The call that closes the cycle calls a rule still on the path:
          // either the rule the walk started from, or one entered by an
          // earlier call. The cycle runs from the call after that one.
          size_t i = 0;
          while (path[i]->rule != call->rule) ++i;
          size_t start = i + 1 == path.size() ? 0 : i + 1;
          std::string text = call->rule;
          for (size_t k = start; k < path.size(); ++k) text += " -> " + path[k]->rule;
          Fail(path[start]->where, "left recursion: " + text);
        }
        if (state[call->rule] == 0) visit(call->rule);
        path.pop_back();
      }
      state[rule] = 2;
    };
    for (const Rule& r : g_.rules) {
      if (state[r.name] == 0) {
        path.clear();
        visit(r.name);
      }
    }
  }

  // Follow sets: what may stand after each rule, option and repetition. The
  // end of the text may follow anything, since any rule may be run on its own.
  void ComputeFollow() {
    for (Rule& r : g_.rules) r.follow = {0};
    for (bool changed = true; changed;) {
      changed = false;
      for (Rule& r : g_.rules) Follow(*r.body, r.follow, changed);
    }
  }

  void Follow(Node& n, const std::set<int>& after, bool& changed) {
    switch (n.type) {
      case Node::Type::Call: {
        Rule* r = g_.FindRule(n.rule);
        size_t before = r->follow.size();
        r->follow.insert(after.begin(), after.end());
        changed |= r->follow.size() != before;
        break;
      }
      case Node::Type::Seq: {
        std::set<int> rest = after;
        for (size_t i = n.items.size(); i-- > 0;) {
          Node& item = *n.items[i];
          Follow(item, rest, changed);
          if (!item.nullable) rest.clear();
          rest.insert(item.first.begin(), item.first.end());
        }
        break;
      }
      case Node::Type::Alt:
        n.follow = after;
        for (auto& item : n.items) Follow(*item, after, changed);
        break;
      case Node::Type::Opt:
        n.follow = after;
        Follow(*n.items[0], after, changed);
        break;
      case Node::Type::Iter: {
        n.follow = after;
        std::set<int> inside = after;
        inside.insert(n.items[0]->first.begin(), n.items[0]->first.end());
        Follow(*n.items[0], inside, changed);
        break;
      }
      default: break;
    }
  }

  // Helpers are numbered per kind in the order of the text, outer first.
  void Number(Node& n) {
    if (n.type == Node::Type::Opt) n.number = ++g_.optCount;
    if (n.type == Node::Type::Iter) n.number = ++g_.iterCount;
    if (n.type == Node::Type::Alt) n.number = ++g_.altCount;
    for (auto& item : n.items) Number(*item);
  }

  void Calls(const Node& n, std::vector<std::string>& out) {
    if (n.type == Node::Type::Call) out.push_back(n.rule);
    for (auto& item : n.items) Calls(*item, out);
  }

  void WarnUnreachable() {
    // Only a complete grammar, one with all eight entries, is held to it.
    if (g_.entries.size() < std::size(kEntryKinds)) return;
    std::set<std::string> seen;
    std::vector<std::string> work;
    for (const EntryPoint& e : g_.entries) work.push_back(e.rule);
    // The goal rule, named after the parser's dialect, is kept though no entry
    // uses it; a grammar whose rules have no such name counts its first rule.
    std::string goal = g_.parserClass;
    if (goal.size() > 6 && goal.compare(goal.size() - 6, 6, "Parser") == 0) goal.resize(goal.size() - 6);
    if (g_.FindRule(goal)) {
      work.push_back(goal);
    } else if (!g_.rules.empty()) {
      work.push_back(g_.rules.front().name);
    }
    while (!work.empty()) {
      std::string name = work.back();
      work.pop_back();
      if (!seen.insert(name).second) continue;
      Calls(*g_.FindRule(name)->body, work);
    }
    for (const Rule& r : g_.rules) {
      if (!seen.count(r.name)) Warn(r.where, "the rule '" + r.name + "' is reached from no entry");
    }
  }

  Grammar& g_;
};

}  // namespace

Grammar ReadGrammar(const std::string& path, const SourceLocation& from) {
  Grammar g;
  g.file = path;
  g.stem = FileStem(path);
  Reader(g).ReadFile(path, from);
  const SourceLocation top{path, 1};
  if (g.parserClass.empty()) Fail(top, "the grammar has no 'parser' statement");
  if (g.scannerFile.empty()) Fail(top, "the grammar has no 'scanner' statement");
  if (g.rules.empty()) Fail(top, "the grammar has no rules");
  g.tokens = ReadTokenDescription(g.scannerFile, g.scannerWhere);
  g.inputs.push_back(g.scannerFile);
  return g;
}

void AnalyzeGrammar(Grammar& grammar) { Analyzer(grammar).Run(); }

}  // namespace grammargen
