// Files that hold many statements, one entry each, separated by lines that
// hold only ";;" (blanks around it allowed). mvsql's batch modes, the tests
// and the benchmarks read SQL collections in this form.
#pragma once

#include <string>
#include <vector>

#include "support/WideString.h"

namespace mv {

struct TmvStatementEntry {
  int Index = 0;      // one-based number of the entry in its file
  int Line = 0;       // one-based line of the entry's first line in the file
  WideString Text;    // the entry without its separator and surrounding line ends
};

// Splits decoded text into entries. Empty entries (only blanks) are skipped
// but still counted, so Index matches the entry number of the file.
std::vector<TmvStatementEntry> SplitStatementList(WideStringView text);
// Reads and splits a file (see ReadTextFile for the encodings accepted).
std::vector<TmvStatementEntry> ReadStatementList(const std::string& path);

}  // namespace mv
