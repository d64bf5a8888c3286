// mvsql format: the statement laid out under the default options, options
// given by name, one line, and the errors of bad SQL and bad settings.
#include <gtest/gtest.h>

#include "RunTool.h"

using mvtest::RunMvsql;

namespace {

const char* kStatement =
    "select a, b from t1 inner join t2 on t1.id = t2.id\n"
    "where a = 1 and b = 2 or c in (select x from u where y = 3 or y = 4) order by a";

}  // namespace

TEST(FormatCommand, LaysOutUnderTheDefaults) {
  auto r = RunMvsql({"format", "--dialect", "sql92", "-"}, kStatement);
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out,
            "Select a,\r\n"
            "  b\r\n"
            "From t1\r\n"
            "  Inner Join t2 On t1.id = t2.id\r\n"
            "Where (a = 1 And b = 2) Or\r\n"
            "  c In (Select x From u Where y = 3 Or\r\n"
            "    y = 4)\r\n"
            "Order By a\r\n");
  EXPECT_EQ(r.err, "");
  // The dialect defaults to SQL-92, and a file serves as well as standard input.
  mvtest::TempFile file(kStatement, ".sql");
  EXPECT_EQ(RunMvsql({"format", file.path()}).out, r.out);
}

TEST(FormatCommand, OptionsByTheirPropertyNames) {
  auto r = RunMvsql({"format", "--set", "KeywordFormat=akfUpperCase", "--set=MainQueryFormat.WhereFormat.NewLineAfter=nlNone",
                     "--set", "ExpressionsSubQueryFormat.WhereFormat.NewLineAfter=nlNone", "--set",
                     "MainQueryFormat.SelectListFormat.NewLineAfterItem=false", "--set",
                     "InnerKeywordInLinks=skSkipIfPossible", "-"},
                    kStatement);
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out,
            "SELECT a, b\r\n"
            "FROM t1\r\n"
            "  INNER JOIN t2 ON t1.id = t2.id\r\n"
            "WHERE (a = 1 AND b = 2) OR c IN (SELECT x FROM u WHERE y = 3 OR y = 4)\r\n"
            "ORDER BY a\r\n");
}

TEST(FormatCommand, OneLine) {
  auto r = RunMvsql({"format", "--one-line", "--set", "KeywordFormat=akfLowerCase", "--set", "DynamicIndents=True",
                     "-"},
                    kStatement);
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out,
            "select a, b from t1 inner join t2 on t1.id = t2.id where (a = 1 and b = 2) or c in (select x from u "
            "where y = 3 or y = 4) order by a\r\n");
}

TEST(FormatCommand, ErrorsOfSQLAndOfSettings) {
  // Bad SQL: the parser's message, exit code 1, nothing on standard output.
  auto bad = RunMvsql({"format", "-"}, "select from where");
  EXPECT_EQ(bad.exitCode, 1);
  EXPECT_EQ(bad.out, "");
  EXPECT_NE(bad.err.find("Unexpected token"), std::string::npos) << bad.err;
  EXPECT_EQ(bad.err, RunMvsql({"parse", "-"}, "select from where").err);
  // Unknown option names and bad values are usage errors.
  auto unknown = RunMvsql({"format", "--set", "MainQueryFormat.Margin=1", "-"}, kStatement);
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_NE(unknown.err.find("--set MainQueryFormat.Margin=1: Unknown property \"MainQueryFormat.Margin\": "
                             "TSQLBuilderSelectFormat has no property \"Margin\""),
            std::string::npos)
      << unknown.err;
  auto value = RunMvsql({"format", "--set", "KeywordFormat=shout", "-"}, kStatement);
  EXPECT_EQ(value.exitCode, 2);
  EXPECT_NE(value.err.find("\"shout\" is not a value of TmvKeywordFormat"), std::string::npos) << value.err;
  auto noValue = RunMvsql({"format", "--set", "RightMargin", "-"}, kStatement);
  EXPECT_EQ(noValue.exitCode, 2);
  EXPECT_NE(noValue.err.find("write NAME=VALUE"), std::string::npos) << noValue.err;
}
