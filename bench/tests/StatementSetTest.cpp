#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include "Corpus.h"
#include "StatementSet.h"
#include "support/TextFile.h"

namespace {

namespace fs = std::filesystem;

mv::WideString W(const std::string& utf8) { return mv::UTF8Decode(utf8); }

// A scratch folder that is removed when the object goes.
class TempDir {
 public:
  TempDir() : path_(fs::temp_directory_path() / ("mvbench-" + std::to_string(::getpid()) + "-" +
                                                 std::to_string(counter_++))) {
    fs::create_directories(path_);
  }
  ~TempDir() { fs::remove_all(path_); }
  const fs::path& path() const { return path_; }
  void Write(const std::string& relative, const std::string& bytes) const {
    fs::create_directories((path_ / relative).parent_path());
    std::ofstream(path_ / relative, std::ios::binary) << bytes;
  }

 private:
  static inline int counter_ = 0;
  fs::path path_;
};

std::string ErrorOf(const std::string& setText) {
  try {
    mv::ParseStatementSet(setText, "set.txt");
  } catch (const std::runtime_error& e) {
    return e.what();
  }
  return "";
}

TEST(StatementSet, ParsesFoldersStepsCommentsAndBlankLines) {
  const auto sources = mv::ParseStatementSet(
      "# heading\n\n  tpch-duckdb   1\nsqllogictest\t20  # every 20th\ngrammars-v4-examples/sqlite 3\n", "set.txt");
  ASSERT_EQ(sources.size(), 3u);
  EXPECT_EQ(sources[0].Folder, "tpch-duckdb");
  EXPECT_EQ(sources[0].Step, 1);
  EXPECT_EQ(sources[0].Line, 3);
  EXPECT_EQ(sources[1].Folder, "sqllogictest");
  EXPECT_EQ(sources[1].Step, 20);
  EXPECT_EQ(sources[2].Folder, "grammars-v4-examples/sqlite");
  EXPECT_TRUE(mv::ParseStatementSet("", "set.txt").empty());
}

TEST(StatementSet, MalformedLinesNameFileAndLine) {
  EXPECT_EQ(ErrorOf("a 1\nb\n"), "set.txt:2: 'b' needs a step (1 takes every entry)");
  EXPECT_EQ(ErrorOf("a 0\n"), "set.txt:1: step must be a whole number of at least 1, not '0'");
  EXPECT_EQ(ErrorOf("a 2x\n"), "set.txt:1: step must be a whole number of at least 1, not '2x'");
  EXPECT_EQ(ErrorOf("a 2 3\n"), "set.txt:1: unexpected '3' after the step");
  EXPECT_EQ(ErrorOf("a 2\n\na 3\n"), "set.txt:3: folder 'a' named twice");
  EXPECT_EQ(ErrorOf("../secret 1\n"), "set.txt:1: folder must lie inside the corpus: '../secret'");
  EXPECT_EQ(ErrorOf("/etc 1\n"), "set.txt:1: folder must lie inside the corpus: '/etc'");
}

TEST(StatementSet, SamplingTakesEveryStepthEntryFromTheFirst) {
  // Entry 3 is blank in the file: it is not an entry, but the numbers keep counting.
  const auto entries = mv::SplitStatementList(W("s1\n;;\ns2\n;;\n\n;;\ns4\n;;\ns5\n;;\ns6\n;;\ns7\n"));
  ASSERT_EQ(entries.size(), 6u);
  const auto all = mv::SampleEntries(entries, "f", 1);
  EXPECT_EQ(all.size(), 6u);
  const auto sample = mv::SampleEntries(entries, "f", 3);
  ASSERT_EQ(sample.size(), 2u);
  EXPECT_EQ(sample[0].Text, u"s1");
  EXPECT_EQ(sample[0].Entry, 1);
  EXPECT_EQ(sample[0].Line, 1);
  EXPECT_EQ(sample[1].Text, u"s5");
  EXPECT_EQ(sample[1].Entry, 5);
  EXPECT_EQ(sample[1].Line, 9);
  EXPECT_EQ(sample[1].Folder, "f");
  EXPECT_EQ(mv::SampleEntries(entries, "f", 100).size(), 1u);
  EXPECT_TRUE(mv::SampleEntries({}, "f", 2).empty());
  EXPECT_THROW(mv::SampleEntries(entries, "f", 0), std::invalid_argument);
}

TEST(StatementSet, JoinedListReadsBackToTheSameTexts) {
  std::vector<mv::TmvSelectedStatement> statements = {
      {"f", 1, 1, W("SELECT 1")},
      {"f", 2, 3, W("  -- leading comment and blanks\r\nSELECT a\r\nFROM t")},
      {"g", 7, 20, W("SELECT 'na\xC3\xAFve \xE2\x82\xAC' AS \"\xF0\x9F\x98\x80\"")},
      {"g", 9, 30, W("SELECT ';;'\n  ;; x\nFROM t")},
  };
  const std::string joined = mv::JoinStatementList(statements);
  EXPECT_EQ(joined.substr(0, 13), "SELECT 1\n;;\n ");
  EXPECT_EQ(joined.back(), '\n');
  const auto back = mv::SplitStatementList(mv::DecodeText(joined));
  ASSERT_EQ(back.size(), statements.size());
  for (size_t i = 0; i < back.size(); ++i) {
    EXPECT_EQ(back[i].Text, statements[i].Text) << i;
    EXPECT_EQ(back[i].Index, static_cast<int>(i) + 1);
  }
  EXPECT_EQ(mv::JoinStatementList({}), "");
}

TEST(StatementSet, IndexListsOriginAndUtf8Bytes) {
  std::vector<mv::TmvSelectedStatement> statements = {{"f", 4, 10, W("SELECT 1")},
                                                      {"g/h", 2, 3, W("SELECT '\xE2\x82\xAC'")}};
  EXPECT_EQ(mv::StatementIndex(statements),
            "n\tfolder\tentry\tline\tbytes\n"
            "1\tf\t4\t10\t8\n"
            "2\tg/h\t2\t3\t12\n");
}

TEST(StatementSet, SelectsFromCorpusFoldersInSetOrder) {
  TempDir corpus;
  corpus.Write("b/selects.sql", "SELECT b1\n;;\nSELECT b2\n;;\nSELECT b3\n");
  corpus.Write("a/x/selects.sql", "SELECT a1\n");
  const auto sources = mv::ParseStatementSet("b 2\na/x 1\n", "set.txt");
  const auto selected = mv::SelectStatements(sources, corpus.path().string());
  ASSERT_EQ(selected.size(), 3u);
  EXPECT_EQ(selected[0].Text, u"SELECT b1");
  EXPECT_EQ(selected[1].Text, u"SELECT b3");
  EXPECT_EQ(selected[1].Entry, 3);
  EXPECT_EQ(selected[2].Text, u"SELECT a1");
  EXPECT_EQ(selected[2].Folder, "a/x");
}

TEST(StatementSet, MissingFolderIsNamed) {
  TempDir corpus;
  const auto sources = mv::ParseStatementSet("\nnowhere 1\n", "set.txt");
  try {
    mv::SelectStatements(sources, corpus.path().string());
    FAIL() << "no error for a missing folder";
  } catch (const std::runtime_error& e) {
    const std::string message = e.what();
    EXPECT_NE(message.find("nowhere/selects.sql"), std::string::npos) << message;
    EXPECT_NE(message.find("line 2"), std::string::npos) << message;
  }
}

TEST(StatementSet, CommittedSetSelectsFromTheSharedCorpus) {
  const std::string setFile = MV_BENCH_DIR "/statement-set.txt";
  const auto sources = mv::ParseStatementSet(mv::ReadAllBytes(setFile), setFile);
  ASSERT_FALSE(sources.empty());
  MV_REQUIRE_CORPUS();
  const auto selected = mv::SelectStatements(sources, mvtest::CorpusDir());
  // TPC-H twice and TPC-DS whole, then the samples.
  ASSERT_GT(selected.size(), 22u + 22u + 99u);
  EXPECT_EQ(selected[0].Folder, "tpch-sqlparser-rs");
  EXPECT_EQ(selected[44].Folder, "tpcds-duckdb");
  const auto back = mv::SplitStatementList(mv::DecodeText(mv::JoinStatementList(selected)));
  ASSERT_EQ(back.size(), selected.size());
  for (size_t i = 0; i < back.size(); ++i) ASSERT_EQ(back[i].Text, selected[i].Text) << i;
}

}  // namespace
