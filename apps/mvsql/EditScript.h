// The editing script of mvsql edit: one operation a line, each the step a
// user takes on the design pane or the grid below it, run on a query
// builder's model. Lines whose first non-blank character is '#' and blank
// lines are skipped. Operations act on the active SELECT of the active
// sub-query; ROW is a row of its select list counted from 1.
//
//   add-object Customer c
//   add-object Invoice i
//   link c.CustomerId = i.CustomerId left
//   check c.FirstName
//   criteria 1 "LIKE 'A%'"
//   print
//
// Arguments are words, or texts in double quotes (a quote inside doubled).
// A word may quote parts of itself: c."First Name".
#pragma once

#include <functional>
#include <string>

#include "support/WideString.h"

namespace mv {
class TmvQueryBuilder;
}

namespace mvsql {

// The first bad line of a script: nothing after it ran.
struct EditScriptError {
  int line;
  std::string message;  // why, in UTF-8
};

// Runs `script` on `builder` line by line; `print` runs for each print line.
// Raises EditScriptError at the first line that cannot be run.
void RunEditScript(mv::TmvQueryBuilder& builder, const mv::WideString& script, const std::function<void()>& print);

// The operations with their arguments, one a line, for the command's help.
std::string EditScriptSummary();

}  // namespace mvsql
