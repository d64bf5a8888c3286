// mvsql parse and mvsql dialects: output, messages and exit codes.
#include <gtest/gtest.h>

#include "RunTool.h"

using mvtest::RunMvsql;

namespace {

TEST(ParseCommand, PrintsTheStatementBack) {
  auto r = RunMvsql({"parse", "--dialect", "sql92"}, "select a ,b from t where x=1");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "Select a, b From t Where x = 1\n");
  EXPECT_EQ(r.err, "");
  // The class name names the dialect too, in any case; sql92 is the default.
  EXPECT_EQ(RunMvsql({"parse", "--dialect", "tmvsql92syntaxprovider"}, "SELECT 1").out, "Select 1\n");
  EXPECT_EQ(RunMvsql({"parse"}, "SELECT 1").out, "Select 1\n");
}

TEST(ParseCommand, ASyntaxErrorGoesToStandardErrorWithExitOne) {
  auto empty = RunMvsql({"parse"}, "");
  EXPECT_EQ(empty.exitCode, 1);
  EXPECT_EQ(empty.out, "");
  EXPECT_EQ(empty.err, "Not a SELECT SQL statement.\r\n Unexpected token \"EOF\" at line 1, pos 1\n");
  auto fragment = RunMvsql({"parse", "--entry", "expression"}, "a +");
  EXPECT_EQ(fragment.exitCode, 1);
  EXPECT_EQ(fragment.err, " Unexpected token \"EOF\" at line 1, pos 4\n");
}

TEST(ParseCommand, TheWayOfANameOfTwoParts) {
  auto r = RunMvsql({"parse", "--entry", "object", "--way"}, "a.b");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "01000\n");
}

TEST(ParseCommand, TheTreeOfAnExpression) {
  auto r = RunMvsql({"parse", "--entry", "expression", "--tree"}, "a + 1");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out,
            "TSQLExpressionOperatorBinary\n"
            "  TSQLExpressionColumn\n"
            "    TSQLObjectColumn\n"
            "      TastTokenIdentifier \"a\"\n"
            "  TSQLOperator \"+\"\n"
            "  TSQLExpressionConstant\n"
            "    TastTokenNumber \"1\"\n");
}

TEST(ParseCommand, EveryEntry) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"subquery", "SELECT a FROM t ORDER BY a"}, {"object", "s.t"},        {"expression", "a * (b + 1)"},
      {"selectitem", "t.*"},                      {"logical", "a = 1 OR b IS NULL"}, {"fromsource", "t AS x"},
      {"identifier", "\"Name\""},
  };
  for (const auto& [entry, text] : cases) {
    auto r = RunMvsql({"parse", "--entry", entry}, text);
    EXPECT_EQ(r.exitCode, 0) << entry << ": " << r.err;
    EXPECT_FALSE(r.out.empty()) << entry;
  }
  EXPECT_EQ(RunMvsql({"parse", "--entry", "logical"}, "a = 1 or not b is null").out, "a = 1 Or Not b Is Null\n");
}

TEST(ParseCommand, WrongCommandLines) {
  auto entry = RunMvsql({"parse", "--entry", "statement"}, "SELECT 1");
  EXPECT_EQ(entry.exitCode, 2);
  EXPECT_NE(entry.err.find("unknown entry 'statement'"), std::string::npos) << entry.err;
  auto dialect = RunMvsql({"parse", "--dialect", "klingon"}, "SELECT 1");
  EXPECT_EQ(dialect.exitCode, 2);
  EXPECT_NE(dialect.err.find("unknown dialect 'klingon'"), std::string::npos) << dialect.err;
  EXPECT_NE(dialect.err.find("available: sql92"), std::string::npos) << dialect.err;
  EXPECT_EQ(RunMvsql({"parse", "--batch"}).exitCode, 2);
}

TEST(ParseCommand, ABatchReportsWhatParsesAndWhatPrintsBack) {
  mvtest::TempFile list(
      "SELECT a FROM t\n;;\nSELECT a b c\n;;\nINSERT INTO t VALUES (1)\n;;\n  \n;;\nselect 1\n;;\n"
      "select x y 'z' from t\n;;\nselect a \"q\" \"r\"\n;;\nselect f(1 2)\n;;\nselect b c zz",
      ".sql");
  auto r = RunMvsql({"parse", "--batch", "--failures", "--reasons", "5", list.path()});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  // The failures grouped by the token blamed and the one before it, names,
  // strings and numbers by their class, the largest group first, each with
  // its first statement and the blamed token marked.
  for (const char* line : {
           "\tentries=8\tparsed=2\troundtrip=2\tformat=2\n",
           "  #2 line 3: Invalid SELECT statement. Unexpected token \"c\" at line 1, pos 12\n",
           "  2\tunexpected <name> after <name>\t#2 line 3: SELECT a b >>c\n",
           "  1\tnot a select: starts with INSERT\t#3 line 5: >>INSERT INTO t VALUES (1)\n",
           "  1\tunexpected <string> after <name>\t#6 line 11: select x y >>'z' from t\n",
           "  1\tunexpected <quoted name> after <quoted name>\t#7 line 13: select a \"q\" >>\"r\"\n",
           "  1\tunexpected <number> after <number>\t#8 line 15: select f(1 >>2)\n",
       })
    EXPECT_NE(r.out.find(line), std::string::npos) << line << "\n" << r.out;
}

TEST(DialectsCommand, ListsTheRegisteredProviders) {
  auto r = RunMvsql({"dialects"});
  EXPECT_EQ(r.exitCode, 0);
  EXPECT_EQ(r.out.rfind("TmvSQL92SyntaxProvider\tsql92\tANSI SQL92\n", 0), 0u) << r.out;
  EXPECT_EQ(RunMvsql({"dialects", "x.sql"}).exitCode, 2);
}

}  // namespace
