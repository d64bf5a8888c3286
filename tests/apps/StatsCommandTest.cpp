// mvsql stats: what a query reads and returns, as JSON, and its structure
// document; on the sample query over the Chinook database every output
// column names the table columns it is made of.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "Corpus.h"
#include "RunTool.h"

using mvtest::RunMvsql;

namespace {

// Per output column (its name in the query): its source columns.
std::map<std::string, std::set<std::string>> SourceColumns(const std::string& json) {
  static const std::regex column(
      "\"column_name_in_query\": \"([^\"]*)\",\\s*\"type\": \"[^\"]*\",\\s*\"source_columns\": \\[([^\\]]*)\\]");
  static const std::regex text("\"([^\"]*)\"");
  std::map<std::string, std::set<std::string>> out;
  for (std::sregex_iterator it(json.begin(), json.end(), column), end; it != end; ++it) {
    const std::string list = (*it)[2];
    std::set<std::string>& sources = out[(*it)[1]];
    for (std::sregex_iterator each(list.begin(), list.end(), text); each != end; ++each) sources.insert((*each)[1]);
  }
  return out;
}

// The "selected" value of a used column by its full name, " (no type)" added
// when it has no type; empty when it is not listed.
std::string Selected(const std::string& json, const std::string& fullName) {
  const std::regex entry("\"full_name\": \"" + fullName +
                         "\",\\s*\"selected\": (true|false),\\s*\"type\": \"([^\"]*)\"");
  std::smatch match;
  if (!std::regex_search(json, match, entry)) return {};
  return std::string(match[1]) + (match[2].length() ? "" : " (no type)");
}

TEST(StatsCommandChinook, SampleNamesTheSourceOfEveryOutputColumn) {
  const std::string dir = mvtest::CorpusDir();
  const std::string database = dir + "/chinook/Chinook_Sqlite.sqlite";
  if (dir.empty() || !std::filesystem::exists(database))
    GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus";
  const std::string sample = std::string(MV_TEST_DATA_DIR) + "/../../samples/sample.sql";
  const mvtest::ToolResult result = RunMvsql({"stats", "--sqlite", database, sample});
  ASSERT_EQ(result.exitCode, 0) << result.err;

  const std::map<std::string, std::set<std::string>> expected = {
      {"CustomerId", {"Customer.CustomerId"}},
      {"CustomerName", {"Customer.FirstName", "Customer.LastName"}},
      {"Invoices", {"Invoice.InvoiceId"}},
      {"Spent", {"Invoice.Total"}},
  };
  EXPECT_EQ(SourceColumns(result.out), expected) << result.out;
  // Each of them is a typed column of the table that the select list reads;
  // what only the conditions read is not selected.
  for (const auto& [name, sources] : expected)
    for (const std::string& source : sources) EXPECT_EQ(Selected(result.out, source), "true") << source;
  EXPECT_EQ(Selected(result.out, "Customer.Country"), "false");
  EXPECT_EQ(Selected(result.out, "Invoice.InvoiceDate"), "false");
}

TEST(StatsCommand, FormatsAndFailures) {
  struct Case {
    std::vector<std::string> args;
    std::string input;
    int exitCode;
    std::string found;  // in the output, or in the error output on failure
  };
  const Case cases[] = {
      {{"stats", "-"}, "select a, b from t x, t y", 0,
       "\"full_name\": \"t\",\n      \"aliases\": [\"x\", \"y\"],\n      \"known\": false"},
      {{"stats", "--format", "xml", "-"}, "select a from t order by a desc", 0,
       "<order_by_item sql=\"a Desc\" sort_type=\"desc\">"},
      {{"stats", "--dialect", "sql2003", "--format", "xml", "-"}, "with w as (select a from t) select a from w", 0,
       "<with_name>w</with_name>"},
      {{"stats", "-"}, "select a from where", 1, "Invalid SELECT statement."},
      {{"stats", "-"}, "delete from t", 1, "Not a SELECT SQL statement."},
      {{"stats", "--format", "yaml", "-"}, "select 1", 2, "json or xml"},
  };
  for (const Case& c : cases) {
    const mvtest::ToolResult result = RunMvsql(c.args, c.input);
    EXPECT_EQ(result.exitCode, c.exitCode) << c.input << "\n" << result.err;
    const std::string& text = c.exitCode == 0 ? result.out : result.err;
    EXPECT_NE(text.find(c.found), std::string::npos) << text;
  }
}

}  // namespace
