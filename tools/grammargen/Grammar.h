// A grammar file read into rules: elements, guards, actions and the
// parameters of the second pass, with the token description it names. See
// README.md for the file format.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Diagnostics.h"
#include "TokenDescription.h"

namespace grammargen {

// A token as a grammar writes it: a word in capitals (a keyword), a quoted
// text (a symbol or keyword), or the name of a token in the description.
struct TokenRef {
  enum class Form { Capitals, Text, Name };
  Form form = Form::Name;
  std::string spelling;  // UTF-8, without quotes
  SourceLocation where;
};

struct Guard {
  enum class Type {
    NotNext,      // CheckLANotToken
    NotNext2,     // CheckLA2NotToken
    Next,         // an extra CheckLAToken
    NotNextText,  // CheckLANotIn with a list member of the parser
    Check,        // a dialect's own test: a member function (list) -> bool
    Starts,       // CheckLATokenAfter: the next token, after any of `tokens`, starts the rule `code`
    NotNext2Starts,  // CheckLA2NotToken: the token after the next cannot start the rule `code`
    State,        // a test of the parser's fields; no token is looked at
  };
  Type type = Type::State;
  std::vector<TokenRef> tokens;  // the token tests, as written
  std::vector<int> kinds;        // ... resolved
  std::vector<int> startKinds;   // Starts: the first set of the rule, less `kinds`
  std::string code;              // NotNextText, Check: the member; Starts: the rule; State: the condition
  std::string written;           // as written, for comments in the output
  SourceLocation where;
};

struct Node {
  enum class Type { Token, Call, Action, Seq, Alt, Opt, Iter };
  Type type = Type::Seq;
  SourceLocation where;

  // Token and Call (a name is a Call until it is resolved to a token).
  TokenRef token;
  int kind = -1;
  std::string kindConstant;
  std::string rule;
  std::string args;
  bool hasArgs = false;
  // Action.
  std::string code;
  // Seq: the elements; Alt: the alternatives (each a Seq); Opt, Iter: the body.
  std::vector<std::unique_ptr<Node>> items;
  // A Seq that is an alternative or a body: the guards it starts with.
  std::vector<Guard> guards;
  // Opt: the guards of skipping it, written right after its ']'.
  std::vector<Guard> skipGuards;
  // Opt, Iter, Alt: the number of the helper, counted per type.
  int number = 0;

  bool nullable = false;
  std::set<int> first;
  std::set<int> follow;  // Opt, Iter and Alt: what may stand after them
};

struct Rule {
  std::string name;
  std::string params;  // the C++ parameters of the second pass
  SourceLocation where;
  std::unique_ptr<Node> body;

  bool nullable = false;
  bool productive = false;
  std::set<int> first;
  std::set<int> follow;
};

struct NamedSet {
  std::vector<TokenRef> tokens;
  std::vector<int> kinds;
  SourceLocation where;
};

// One of the sixteen entry points of the parser base: ParseX and its first pass.
struct EntryPoint {
  std::string name;  // Select, SubQuery, ... (without "Parse")
  std::string rule;
  std::string resultType;  // the node type the rule fills
  SourceLocation where;
};

struct Grammar {
  std::string file;
  std::string stem;
  std::string parserClass;
  std::string scannerFile;
  SourceLocation scannerWhere;
  TokenDescription tokens;
  std::vector<Rule> rules;  // in the order of the text, included files first
  std::vector<std::string> headerCode;
  std::vector<std::string> sourceCode;
  std::vector<std::string> memberCode;
  std::map<std::string, NamedSet> sets;
  std::vector<EntryPoint> entries;
  std::vector<std::string> inputs;  // every file read
  int optCount = 0;
  int iterCount = 0;
  int altCount = 0;

  Rule* FindRule(const std::string& name);
};

// The entries every parser has, in the order the parser base declares them,
// with the result type of each.
struct EntryKind {
  const char* name;
  const char* resultType;
};
extern const EntryKind kEntryKinds[8];

Grammar ReadGrammar(const std::string& path, const SourceLocation& from);

// Resolves names against the rules and the token description, checks the
// grammar (undefined names, left recursion, repetitions that can match
// nothing, rules that can never complete), computes first and follow sets
// and numbers the helpers.
void AnalyzeGrammar(Grammar& grammar);

}  // namespace grammargen
