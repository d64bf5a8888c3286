// The syntax errors of a batch of statements, grouped by what the parser
// stumbled over, so that a report shows which missing constructs cost the
// most statements. A group is named by the token blamed and the token
// before it, with names, numbers and strings reduced to their class
// ("unexpected ( after <name>"): the same gap in the grammar gives the same
// group whatever the statement calls its tables.
#pragma once

#include <map>
#include <ostream>
#include <string>

#include "frontend/SQLError.h"
#include "frontend/SyntaxProvider.h"
#include "support/StatementList.h"

namespace mvsql {

class FailureGroups {
 public:
  explicit FailureGroups(const mv::TmvBaseSyntaxProvider& provider);

  // Counts the failure of `entry` under its group; the first entry of a
  // group is kept as its example.
  void Add(const mv::TmvStatementEntry& entry, const mv::EmvSQLError& error);
  // A failure that is no syntax error (an exception of another kind).
  void AddOther(const mv::TmvStatementEntry& entry, const std::string& message);

  // The name of the group of a failure, as Add files it.
  std::string Reason(const mv::WideString& text, const mv::EmvSQLError& error) const;

  // The `count` largest groups, one line each: count, name, and the example
  // (entry number, line and the text around the blamed token).
  void Print(std::ostream& out, int count) const;

 private:
  struct Group {
    int count = 0;
    std::string example;
  };
  void Count(const std::string& reason, const std::string& example);
  // The class of a visible token, or its text in upper case when it has none.
  std::string TokenClass(const mv::TmvToken& token) const;

  const mv::TmvBaseSyntaxProvider& provider_;
  // The kinds the dialect's scanner gives a plain name, a string, a number
  // and a quoted name, learnt by scanning one of each.
  int32_t nameKind_ = mv::tkNone;
  int32_t stringKind_ = mv::tkNone;
  int32_t numberKind_ = mv::tkNone;
  int32_t quotedKind_ = mv::tkNone;
  std::map<std::string, Group> groups_;
};

}  // namespace mvsql
