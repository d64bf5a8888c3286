// mvsql tokens: one line per token with kind, line:col, pos, flags and text.
#include <gtest/gtest.h>

#include "RunTool.h"

namespace {

using mvtest::RunMvsql;

TEST(TokensCommand, EmptyTextIsTheEndTokenAlone) {
  auto r = RunMvsql({"tokens", "--dialect", "sql92"}, "");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "0\t1:1\t0\t-\tEOF\n");
}

TEST(TokensCommand, LineEndsAndControlCharactersAreEscaped) {
  auto r = RunMvsql({"tokens", "--dialect", "sql92", "-"}, "a\r\nb\n\t'x\\y'");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out,
            "5\t1:1\t0\t-\ta\n"
            "1\t1:2\t1\t-\t\\r\\n\n"
            "5\t2:1\t3\t-\tb\n"
            "1\t2:2\t4\t-\t\\r\n"
            "2\t3:1\t5\t-\t\\t\n"
            "8\t3:2\t6\t-\t'x\\\\y'\n"
            "0\t3:7\t11\t-\tEOF\n");
}

TEST(TokensCommand, FlagsMarkCommentsAndPartialTokens) {
  auto r = RunMvsql({"tokens", "--dialect=sql92"}, "--c\n'open");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out,
            "238\t1:1\t0\tC\t--c\n"
            "1\t1:4\t3\t-\t\\r\n"
            "8\t2:1\t4\tP\t'open\n"
            "0\t2:6\t9\t-\tEOF\n");
}

TEST(TokensCommand, ReadsAFileAndKeepsTheSpelling) {
  mvtest::TempFile file("SeLeCt \xC3\xA9t\xC3\xA9", ".sql");
  auto r = RunMvsql({"tokens", "--dialect", "sql92", file.path()});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "189\t1:1\t0\t-\tSeLeCt\n2\t1:7\t6\t-\t \n5\t1:8\t7\t-\t\xC3\xA9t\xC3\xA9\n0\t1:11\t10\t-\tEOF\n");
}

}  // namespace
