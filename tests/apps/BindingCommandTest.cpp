// mvsql on the Chinook sample: its catalog through XML and back, and a
// statement bound to it name by name.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "Corpus.h"
#include "RunTool.h"

namespace {

const char kJoin[] =
    "SELECT c.FirstName, c.LastName, i.InvoiceId, i.Total, il.Quantity, t.Name, big.Total\n"
    "FROM Invoice i\n"
    "  JOIN Customer c ON c.CustomerId = i.CustomerId\n"
    "  JOIN InvoiceLine il ON il.InvoiceId = i.InvoiceId\n"
    "  JOIN (SELECT InvoiceId, Total FROM Invoice WHERE Total > 10) big ON big.InvoiceId = i.InvoiceId\n"
    "  JOIN Track t ON t.TrackId = il.TrackId\n"
    "WHERE i.Total > (SELECT AVG(i2.Total) FROM Invoice i2 WHERE i2.CustomerId = c.CustomerId)\n";

class ChinookCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string dir = mvtest::CorpusDir();
    database = dir + "/chinook/Chinook_Sqlite.sqlite";
    if (dir.empty() || !std::filesystem::exists(database))
      GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus";
  }
  std::string database;
};

// The lines of a tree dump that describe a name's binding.
std::vector<std::string> BindingLines(const std::string& dump) {
  std::vector<std::string> lines;
  std::istringstream in(dump);
  for (std::string line; std::getline(in, line);)
    if (line.find(" -> ") != std::string::npos) lines.push_back(line.substr(line.find_first_not_of(' ')));
  return lines;
}

TEST_F(ChinookCommands, CatalogSurvivesXmlAndBindsEveryColumn) {
  mvtest::TempFile xml("", ".xml");
  auto live = mvtest::RunMvsql({"metadata", "--sqlite", database, "--summary", "-o", xml.path()});
  ASSERT_EQ(live.exitCode, 0) << live.err;
  EXPECT_NE(live.out.find("tables: 11\n"), std::string::npos) << live.out;
  auto reread = mvtest::RunMvsql({"metadata", "--xml", xml.path()});
  ASSERT_EQ(reread.exitCode, 0) << reread.err;
  EXPECT_EQ(reread.out, live.out);

  mvtest::TempFile query(kJoin, ".sql");
  for (const std::vector<std::string>& source :
       {std::vector<std::string>{"--metadata", xml.path()}, std::vector<std::string>{"--sqlite", database}}) {
    std::vector<std::string> args{"parse", "--tree", query.path()};
    args.insert(args.begin() + 1, source.begin(), source.end());
    auto parsed = mvtest::RunMvsql(args);
    ASSERT_EQ(parsed.exitCode, 0) << parsed.err;
    const std::vector<std::string> lines = BindingLines(parsed.out);
    int fields = 0;
    int derived = 0;
    for (const std::string& line : lines) {
      EXPECT_EQ(line.find("not bound"), std::string::npos) << line;
      if (line.rfind("TSQLObjectColumn -> field ", 0) == 0) ++fields;
      if (line.rfind("TSQLObjectColumn -> column \"", 0) == 0) ++derived;
    }
    // 20 column references of the tables, 2 of the derived table.
    EXPECT_EQ(fields, 20) << parsed.out;
    EXPECT_EQ(derived, 2) << parsed.out;
  }
}

TEST_F(ChinookCommands, UnknownNamesStayAsWritten) {
  auto bound = mvtest::RunMvsql(
      {"parse", "--sqlite", database, "-"}, "SELECT a.Title, a.Nope, x.y FROM Album a, Nowhere");
  ASSERT_EQ(bound.exitCode, 0) << bound.err;
  EXPECT_EQ(bound.out, "Select a.Title, a.Nope, x.y From Album a, Nowhere\n");
  auto strict = mvtest::RunMvsql({"parse", "--sqlite", database, "--strict", "-"}, "SELECT 1 FROM Album, Nowhere");
  EXPECT_EQ(strict.exitCode, 1);
  EXPECT_EQ(strict.err, "Unknown object name: \"Nowhere\"\n");
  auto tree = mvtest::RunMvsql({"parse", "--sqlite", database, "--tree", "-"}, "SELECT x.y FROM Nowhere");
  EXPECT_EQ(BindingLines(tree.out),
            (std::vector<std::string>{"TSQLObjectColumn -> not bound", "TSQLDatabaseObject -> not bound"}));
}

}  // namespace
