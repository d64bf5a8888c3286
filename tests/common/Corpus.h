// Access to the shared corpus of third-party SQL that lives outside the
// project. Tests that need it call MV_REQUIRE_CORPUS() and skip with a message
// when it is absent, so the suite also passes elsewhere.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/StatementList.h"

namespace mvtest {

// The corpus folder: $MV_CORPUS_DIR, else the folder configured at build time.
// Empty when neither exists.
std::string CorpusDir();

// Files under `relative` (a folder of the corpus) whose names end in one of
// `extensions`, sorted, searched recursively.
std::vector<std::string> CorpusFiles(const std::string& relative, const std::vector<std::string>& extensions);

// The folders of the corpus that hold a selects.sql, relative to CorpusDir().
extern const std::vector<const char*> kCorpusSelectFolders;

// The statements of a folder's selects.sql; empty, with the reason in
// `why`, when the file cannot be read.
std::vector<mv::TmvStatementEntry> CorpusSelects(const char* folder, std::string& why);

// A test name made of a folder name.
std::string CorpusTestName(const char* folder);

}  // namespace mvtest

// Declares `entries`, the statements of `folder`, or skips the test.
#define MV_CORPUS_SELECTS(entries, folder)                                               \
  MV_REQUIRE_CORPUS();                                                                   \
  std::string entries##Why;                                                              \
  const std::vector<mv::TmvStatementEntry> entries = ::mvtest::CorpusSelects(folder, entries##Why); \
  if (!entries##Why.empty()) GTEST_SKIP() << "corpus folder without its statements: " << entries##Why

#define MV_REQUIRE_CORPUS()                                                        \
  do {                                                                             \
    if (::mvtest::CorpusDir().empty()) GTEST_SKIP() << "shared SQL corpus absent"; \
  } while (0)
