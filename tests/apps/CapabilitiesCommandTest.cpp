// mvsql dialects --capabilities against the capability matrix kept as test
// data (tests/data/dialects/capability-matrix.txt): for every provider of
// this build, every operation, cell by cell, with the letters of conditional
// answers resolved under a new provider's settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

#include "RunTool.h"

namespace {

std::vector<std::string> Split(const std::string& line, char separator) {
  std::vector<std::string> cells;
  std::istringstream in(line);
  for (std::string cell; std::getline(in, cell, separator);) cells.push_back(cell);
  return cells;
}

std::string Trim(const std::string& text) {
  const size_t begin = text.find_first_not_of(" `");
  const size_t end = text.find_last_not_of(" `");
  return begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

// The matrix of the test data: rows of operations, the column headings
// mapped to short names, and the default answer of each letter.
struct ExpectedMatrix {
  std::vector<std::string> columns;  // short names, in the table's order
  std::vector<std::pair<std::string, std::vector<std::string>>> rows;
  std::map<std::string, std::string> letters;
  std::map<std::string, std::string> descriptor;  // operation -> T or F

  std::string Answer(size_t row, size_t column) const {
    const std::string& cell = rows[row].second[column];
    if (cell == "T" || cell == "F") return cell;
    if (cell == "u") return descriptor.at(rows[row].first);
    return letters.at(cell);
  }
};

ExpectedMatrix ReadExpected() {
  ExpectedMatrix matrix;
  std::ifstream in(std::string(MV_TEST_DATA_DIR) + "/dialects/capability-matrix.txt");
  std::map<std::string, std::string> shortNames;
  std::vector<std::string> headings;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("| Capability", 0) == 0) {
      for (const std::string& cell : Split(line.substr(1), '|')) headings.push_back(Trim(cell));
      headings.erase(headings.begin());
    } else if (line.rfind("| `", 0) == 0) {
      std::vector<std::string> cells;
      for (const std::string& cell : Split(line.substr(1), '|')) cells.push_back(Trim(cell));
      const std::string name = cells.front();
      cells.erase(cells.begin());
      matrix.rows.emplace_back(name, cells);
    } else if (line.rfind("columns ", 0) == 0) {
      for (const std::string& pair : Split(line.substr(8), ' ')) {
        const size_t eq = pair.find('=');
        shortNames[pair.substr(0, eq)] = pair.substr(eq + 1);
      }
    } else if (line.rfind("letter ", 0) == 0) {
      const auto words = Split(line, ' ');
      matrix.letters[words[1]] = words[2];
    } else if (line.rfind("u ", 0) == 0) {
      const auto words = Split(line, ' ');
      matrix.descriptor[words[1]] = words[2];
    }
  }
  for (const std::string& heading : headings) matrix.columns.push_back(shortNames.at(heading));
  return matrix;
}

}  // namespace

TEST(CapabilitiesCommand, AgreesWithTheMatrixCellByCell) {
  const ExpectedMatrix expected = ReadExpected();
  ASSERT_EQ(expected.rows.size(), 40u);
  ASSERT_EQ(expected.columns.size(), 20u);

  const auto result = mvtest::RunMvsql({"dialects", "--capabilities"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const std::vector<std::string> lines = Split(result.out, '\n');
  ASSERT_EQ(lines.size(), expected.rows.size() + 1) << result.out;

  const std::vector<std::string> header = Split(lines[0], '\t');
  ASSERT_GE(header.size(), 2u);
  EXPECT_EQ(header[0], "Capability");
  std::vector<size_t> columnOf;  // the expected column of each printed one
  for (size_t i = 1; i < header.size(); ++i) {
    const auto it = std::find(expected.columns.begin(), expected.columns.end(), header[i]);
    ASSERT_NE(it, expected.columns.end()) << "no column for " << header[i];
    columnOf.push_back(it - expected.columns.begin());
  }
  for (size_t row = 0; row < expected.rows.size(); ++row) {
    const std::vector<std::string> cells = Split(lines[row + 1], '\t');
    ASSERT_EQ(cells.size(), header.size()) << lines[row + 1];
    EXPECT_EQ(cells[0], expected.rows[row].first);
    for (size_t i = 1; i < cells.size(); ++i)
      EXPECT_EQ(cells[i], expected.Answer(row, columnOf[i - 1])) << cells[0] << " of " << header[i];
  }
}

TEST(CapabilitiesCommand, ListsTheProvidersOfTheBuildByShortName) {
  const auto result = mvtest::RunMvsql({"dialects"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  for (const char* line : {"TmvSQL92SyntaxProvider\tsql92\tANSI SQL92\n", "TmvSQL89SyntaxProvider\tsql89\tANSI SQL89\n",
                           "TmvSQL2003SyntaxProvider\tsql2003\tANSI SQL2003\n",
                           "TmvUniversalSyntaxProvider\tuniversal\tUniversal Syntax\n"})
    EXPECT_NE(result.out.find(line), std::string::npos) << line << "in\n" << result.out;
}
