// A fixed, documented selection of corpus statements for comparing tools:
// which corpus folders, and every how-many-th entry of each. The selection is
// read from a small text file (bench/statement-set.txt), one folder a line:
//   <folder> <step>        # comment
// `step` 1 takes every entry of the folder's selects.sql, 20 takes the 1st,
// 21st, 41st, ... entry (counting only entries that hold text).
#pragma once

#include <string>
#include <vector>

#include "support/StatementList.h"
#include "support/WideString.h"

namespace mv {

struct TmvStatementSource {
  std::string Folder;   // folder of the corpus that holds a selects.sql
  int Step = 1;
  int Line = 0;         // line of the set file, for messages
};

struct TmvSelectedStatement {
  std::string Folder;
  int Entry = 0;        // entry number in the folder's selects.sql
  int Line = 0;         // line of the entry in that file
  WideString Text;
};

// Parses the set file's text. Raises std::runtime_error "<fileName>:<line>: ..."
// on a malformed line, a step below one or a folder named twice.
std::vector<TmvStatementSource> ParseStatementSet(const std::string& text, const std::string& fileName);

// Every `step`-th of the entries, starting with the first.
std::vector<TmvSelectedStatement> SampleEntries(const std::vector<TmvStatementEntry>& entries,
                                                const std::string& folder, int step);

// Reads <corpusDir>/<folder>/selects.sql of every source and samples it.
// Raises std::runtime_error when a file is missing.
std::vector<TmvSelectedStatement> SelectStatements(const std::vector<TmvStatementSource>& sources,
                                                   const std::string& corpusDir);

// The statements as one UTF-8 text, entries separated by lines holding only
// ";;", ending with a line end. Reading it back gives the same texts.
std::string JoinStatementList(const std::vector<TmvSelectedStatement>& statements);

// A tab-separated index of the joined list: n, folder, entry, line, bytes.
std::string StatementIndex(const std::vector<TmvSelectedStatement>& statements);

}  // namespace mv
