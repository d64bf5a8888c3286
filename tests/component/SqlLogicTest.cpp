// The meaning of the round trip, checked on a real database: the queries of
// the sqllogictest select files run on an in-memory SQLite as written and as
// the query builder gives them back, and must return the same rows. The
// builder knows the database's tables and their columns, so that columns
// bind to their tables and join conditions in WHERE become links, as they do
// for a designer on a live connection.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "BuilderRoundTrip.h"
#include "Corpus.h"
#include "dialects/EngineInit.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "QueryRows.h"
#include "metadata/dataset/SQLiteConnection.h"

namespace mvtest {
namespace {

using Rows = std::vector<std::vector<std::string>>;

// One record of a test file: a statement to run, or a query with its sort mode.
struct TLogicRecord {
  bool query = false;
  std::string sortMode;  // nosort, rowsort or valuesort
  int line = 0;
  std::string sql;
};

// Reads the records of a file in order. Records are separated by blank
// lines; a query's text ends at "----", its expected result is skipped (the
// rows are compared between the two runs, not with the file). Records for
// another database (onlyif, skipif sqlite) are left out.
std::vector<TLogicRecord> ReadLogicFile(const std::string& path) {
  std::vector<TLogicRecord> records;
  std::ifstream in(path);
  std::string line;
  int number = 0;
  const auto next = [&] {
    if (!std::getline(in, line)) return false;
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
  };
  bool skip = false;
  while (next()) {
    std::istringstream words(line);
    std::string word, arg1, arg2;
    words >> word >> arg1 >> arg2;
    if (word == "skipif" || word == "onlyif") {
      skip = skip || (word == "skipif") == (arg1 == "sqlite");
      continue;
    }
    if (word == "halt") break;
    if (word != "statement" && word != "query") continue;
    // "statement error" runs too: what follows may count on its failing.
    TLogicRecord record;
    record.query = word == "query";
    record.sortMode = record.query ? (arg2.empty() ? "nosort" : arg2) : std::string();
    record.line = number;
    while (next() && !line.empty() && line != "----") record.sql += (record.sql.empty() ? "" : "\n") + line;
    // The expected result is not read: the two runs are compared.
    if (line == "----")
      while (next() && !line.empty()) continue;
    if (!skip) records.push_back(std::move(record));
    skip = false;
  }
  return records;
}

// Runs a query and gives its rows (reals with all their digits), sorted as
// the mode asks.
Rows RunQuery(mv::TmvConnection& connection, const std::string& sql, const std::string& sortMode) {
  Rows rows = mvtest::QueryRows(connection, mv::UTF8Decode(sql), "%.15g");
  if (sortMode == "rowsort") {
    std::sort(rows.begin(), rows.end());
  } else if (sortMode == "valuesort") {
    std::vector<std::string> values;
    for (const auto& row : rows) values.insert(values.end(), row.begin(), row.end());
    std::sort(values.begin(), values.end());
    rows.assign(1, values);
  }
  return rows;
}

std::string RowsText(const Rows& rows) {
  std::string text;
  for (size_t i = 0; i < rows.size() && i < 12; ++i) {
    text += "\n    ";
    for (const std::string& value : rows[i]) text += value + " ";
  }
  if (rows.size() > 12) text += "\n    ... " + std::to_string(rows.size()) + " rows";
  return text;
}

// Describes the tables and views of the database to the builder, so that
// its columns bind to their sources and links come out of WHERE.
void DescribeSchema(mv::TmvConnection& connection, mv::TmvQueryBuilder& builder) {
  mv::TmvMetadataContainer* container = builder.MetadataContainer();
  container->Clear();
  std::vector<std::pair<mv::WideString, bool>> objects;
  std::unique_ptr<mv::TmvDataSet> list =
      connection.OpenQuery(u"SELECT name, type FROM sqlite_master WHERE type IN ('table', 'view')");
  for (; !list->Eof(); list->Next())
    objects.emplace_back(list->Fields()[0].AsWideString(), list->Fields()[1].AsWideString() == u"view");
  for (const auto& [name, view] : objects) {
    mv::TmvMetadataObject* object =
        view ? static_cast<mv::TmvMetadataObject*>(container->AddView(name)) : container->AddTable(name);
    std::unique_ptr<mv::TmvDataSet> fields = connection.CreateQuery(u"SELECT name FROM pragma_table_info(:name)");
    fields->ParamByName(u"name").SetAsWideString(name);
    for (fields->Open(); !fields->Eof(); fields->Next())
      object->GetFields()->AddField(fields->Fields()[0].AsWideString());
  }
}

class SqlLogicMeaningSlow : public ::testing::TestWithParam<const char*> {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
};

TEST_P(SqlLogicMeaningSlow, RoundTripReturnsTheSameRows) {
  MV_REQUIRE_CORPUS();
  const std::string path = CorpusDir() + "/sqllogictest/" + GetParam() + ".test";
  if (!std::ifstream(path)) GTEST_SKIP() << "no " << path;
  const std::vector<TLogicRecord> records = ReadLogicFile(path);
  ASSERT_FALSE(records.empty()) << path;

  mv::TmvSQLiteConnection connection(u":memory:");
  TReferenceBuilder builder;
  int queries = 0, run = 0, parsed = 0, rewritten = 0, same = 0, different = 0;
  size_t values = 0;
  bool schemaChanged = false;
  for (const TLogicRecord& record : records) {
    if (!record.query) {
      // Statements set the database up; one the file expects to fail may fail.
      std::unique_ptr<mv::TmvDataSet> statement = connection.CreateQuery();
      statement->SetParamCheck(false);
      statement->SetCommandText(mv::UTF8Decode(record.sql));
      try {
        statement->ExecSQL();
      } catch (const mv::Exception&) {
      }
      // A new table or view is described to the builder before the next query.
      const mv::WideString verb = mv::UTF8Decode(record.sql.substr(0, record.sql.find_first_of(" \n")));
      schemaChanged = schemaChanged || mv::WideSameText(verb, u"CREATE") || mv::WideSameText(verb, u"DROP") ||
                      mv::WideSameText(verb, u"ALTER");
      continue;
    }
    ++queries;
    Rows asWritten, roundTripRows;
    try {
      asWritten = RunQuery(connection, record.sql, record.sortMode);
    } catch (const mv::Exception&) {
      continue;
    }
    ++run;
    if (schemaChanged) DescribeSchema(connection, *builder.builder);
    schemaChanged = false;
    const mv::WideString text = mv::UTF8Decode(record.sql);
    if (!builder.Parses(text)) continue;
    ++parsed;
    std::string roundTrip, error;
    try {
      roundTrip = ToUtf8(builder.RoundTrip(text));
      if (roundTrip != ToUtf8(builder.Plain(text))) ++rewritten;
      roundTripRows = RunQuery(connection, roundTrip, record.sortMode);
    } catch (const mv::Exception& e) {
      error = ToUtf8(e.Message());
    }
    if (error.empty() && roundTripRows == asWritten) {
      ++same;
      for (const auto& row : asWritten) values += row.size();
      continue;
    }
    if (++different <= 5) {
      ADD_FAILURE() << GetParam() << ":" << record.line << " (" << record.sortMode << ")\n  " << record.sql
                    << "\n  round trip: " << roundTrip << "\n  as written:" << RowsText(asWritten)
                    << "\n  round trip:" << (error.empty() ? RowsText(roundTripRows) : " " + error);
    }
  }
  std::cout << GetParam() << ": " << queries << " queries, " << run << " run by SQLite, " << parsed << " parsed, "
            << rewritten << " changed by the model, " << same << " same rows (" << values << " values), " << different
            << " different\n"
            << std::flush;
}

// Where the model's own rules make the round trip return other rows, each
// with its reason. A case that starts to agree has been fixed: take it off.
TEST(SqlLogicMeaning, KnownDivergencesStayListed) {
  mv::InitializeEngine();
  struct TDivergence {
    const char* sql;
    const char* reason;
  };
  const TDivergence cases[] = {
      {"SELECT count(*) FROM e GROUP BY 1 + 1",
       "a constant GROUP BY key cannot group and is dropped: no group of an empty table becomes one row"},
      {"SELECT q.a AS a, q.c AS c, r.c AS c FROM x AS q, x AS r ORDER BY q.a, r.c DESC",
       "ORDER BY names a row by its alias also when an earlier output column has the same alias"},
  };
  mv::TmvSQLiteConnection connection(u":memory:");
  for (const char16_t* statement :
       {u"CREATE TABLE e(a INTEGER)", u"CREATE TABLE x(a INTEGER, c INTEGER)", u"INSERT INTO x VALUES (1, 1), (2, 2)"})
    connection.ExecSQL(statement);
  TReferenceBuilder builder;
  for (const TDivergence& c : cases) {
    const std::string roundTrip = ToUtf8(builder.RoundTrip(mv::UTF8Decode(c.sql)));
    EXPECT_NE(RunQuery(connection, roundTrip, "nosort"), RunQuery(connection, c.sql, "nosort"))
        << c.sql << "\n  " << roundTrip << "\n  agrees now; it was listed because " << c.reason;
  }
}

INSTANTIATE_TEST_SUITE_P(SelectFiles, SqlLogicMeaningSlow,
                         ::testing::Values("select1", "select2", "select3", "select4", "select5"),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
}  // namespace mvtest
