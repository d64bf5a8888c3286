// mvsql roundtrip and mvsql edit: text through the query builder and back,
// and editing scripts run on the builder's model.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "Corpus.h"
#include "RunTool.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/dataset/Field.h"
#include "metadata/dataset/SQLiteConnection.h"

using mvtest::RunMvsql;

namespace {

// A small database whose catalog gives the builder its metadata.
class EditCommand : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    database = new mvtest::TempFile("", ".db");
    mv::TmvSQLiteConnection connection(mv::UTF8Decode(database->path()));
    connection.ExecSQL(
        u"create table a(id integer primary key, x integer, y text);"
        u"create table b(id integer primary key, a_id integer references a(id), z text);");
    connection.Close();
  }
  static void TearDownTestSuite() {
    delete database;
    database = nullptr;
  }

  // The one-line output of a script run on `sql`.
  static mvtest::ToolResult Edit(const std::string& script, const std::string& sql = "",
                                 std::vector<std::string> extra = {"--one-line"}) {
    mvtest::TempFile file(script, ".txt");
    std::vector<std::string> args{"edit", "--sqlite", database->path(), "--script", file.path()};
    args.insert(args.end(), extra.begin(), extra.end());
    args.push_back("-");
    return RunMvsql(args, sql);
  }

  static mvtest::TempFile* database;
};

mvtest::TempFile* EditCommand::database = nullptr;

struct RoundtripCase {
  const char* sql;
  const char* oneLine;  // what the builder gives back
};

TEST(RoundtripCommand, TextThroughTheBuilder) {
  const RoundtripCase cases[] = {
      {"select a.x , b.y from a inner join b on a.id=b.id where a.x>1 order by 1 desc",
       "Select a.x, b.y From a Inner Join b On a.id = b.id Where a.x > 1 Order By 1 Desc"},
      {"SELECT x FROM t UNION SELECT y FROM u ORDER BY 1", "Select x From t UNION Select y From u Order By 1"},
      {"SELECT t.x, COUNT(*) FROM t GROUP BY t.x HAVING COUNT(*) > 2", "Select t.x, COUNT(*) From t Group By t.x Having COUNT(*) > 2"},
      {"SELECT * FROM (SELECT q.a FROM q) d WHERE d.a IN (SELECT r.a FROM r)", "Select * From (Select q.a From q) d Where d.a In (Select r.a From r)"},
      {"", ""},
  };
  for (const RoundtripCase& c : cases) {
    auto oneLine = RunMvsql({"roundtrip", "--one-line"}, c.sql);
    ASSERT_EQ(oneLine.exitCode, 0) << c.sql << "\n" << oneLine.err;
    EXPECT_EQ(oneLine.out, std::string(c.oneLine) + "\r\n") << c.sql;
    // Laid out, it is what mvsql format makes of the builder's text, and
    // the builder takes it back unchanged.
    auto formatted = RunMvsql({"roundtrip"}, c.sql);
    ASSERT_EQ(formatted.exitCode, 0) << c.sql;
    if (*c.oneLine) {
      EXPECT_EQ(formatted.out, RunMvsql({"format"}, c.oneLine).out) << c.sql;
    }
    EXPECT_EQ(RunMvsql({"roundtrip", "--one-line"}, formatted.out).out, oneLine.out) << c.sql;
  }
}

TEST(RoundtripCommand, RefusedTextExitsWithOne) {
  for (const char* sql : {"SELECT FROM WHERE", "UPDATE t SET x = 1"}) {
    auto refused = RunMvsql({"roundtrip"}, sql);
    EXPECT_EQ(refused.exitCode, 1) << sql;
    EXPECT_EQ(refused.out, "") << sql;
    EXPECT_EQ(refused.err, RunMvsql({"parse"}, sql).err) << sql;
  }
  EXPECT_EQ(RunMvsql({"roundtrip", "--metadata", "a.xml", "--sqlite", "b.db"}).exitCode, 2);
  EXPECT_EQ(RunMvsql({"roundtrip", "--dialect", "nosuch"}, "SELECT 1").exitCode, 2);
}

struct ScriptCase {
  const char* script;
  const char* sql;  // the starting query
  const char* out;  // the printed queries, one a line
};

TEST_F(EditCommand, ScriptsBuildQueries) {
  const ScriptCase cases[] = {
      // Fields ticked and unticked, links of each kind, criteria in two columns, sort.
      {"add-object a\ncheck a.x\nprint\nuncheck a.x\nprint\nadd-object b\nlink a.id = b.a_id left\ncheck b.z\n"
       "check a.*\nprint\ncriteria 1 \"> 5\"\nor-criteria 1 1 \"< 2\"\nsort 1 desc\nprint",
       "",
       "Select a.x From a\nSelect * From a\nSelect b.z, a.* From a Left Join b On a.id = b.a_id\n"
       "Select b.z, a.* From a Left Join b On a.id = b.a_id Where b.z > 5 Or b.z < 2 Order By b.z Desc"},
      // An expression with an alias and an aggregate, a group key, an object removed with its link.
      {"add-object b bb\nlink a.id = bb.a_id right\ncheck a.y\nexpression \"a.x + 1\" as x1\naggregate 2 Max\n"
       "print\nremove-object bb\nprint",
       "SELECT a.y FROM a",
       "Select a.y, Max(a.x + 1) As x1 From a Right Join b bb On a.id = bb.a_id Group By a.y\n"
       "Select a.y, Max(a.x + 1) As x1 From a Group By a.y"},
      // Unions: each new SELECT becomes the active one; a member moved to the left.
      {"add-union\nadd-object b\ncheck b.z\nadd-union except\nadd-object a\ncheck a.y\nprint\nmove-union 3 left\n"
       "print\nadd-union union all\nadd-object b\ncheck b.id\nprint",
       "SELECT a.x FROM a",
       "Select a.x From a Union Select b.z From b EXCEPT Select a.y From a\n"
       "Select a.x From a EXCEPT Select a.y From a Union Select b.z From b\n"
       "Select a.x From a EXCEPT Select a.y From a Union Select b.z From b UNION All Select b.id From b"},
      // A derived table made, entered, edited and left.
      {"add-object b\nlink a.id = b.a_id full\nderived-table b\nprint\nenter Query1\nuncheck b.*\ncheck b.z\n"
       "expression \"b.id\"\nprint\nleave\ncheck Query1.z\nhide 1\nprint",
       "SELECT a.x FROM a",
       "Select a.x From a Full Join (Select * From b) Query1 On a.id = Query1.a_id\n"
       "Select a.x From a Full Join (Select b.z, b.id From b) Query1 On a.id = Query1.a_id\n"
       "Select Query1.z From a Full Join (Select b.z, b.id From b) Query1 On a.id = Query1.a_id"},
      // A sub-query of a condition, entered by its caption in quotes.
      {"enter \"SEL b.z FRM b\"\nadd-object c\nprint\nleave\ncheck a.y\nprint",
       "SELECT a.x FROM a WHERE a.x IN (SELECT b.z FROM b)",
       "Select a.x From a Where a.x In (Select b.z From b, c)\n"
       "Select a.x, a.y From a Where a.x In (Select b.z From b, c)"},
  };
  for (const ScriptCase& c : cases) {
    auto run = Edit(c.script, c.sql);
    EXPECT_EQ(run.exitCode, 0) << c.script << "\n" << run.err;
    std::string expected = c.out;
    for (size_t at = 0; (at = expected.find('\n', at)) != std::string::npos; at += 2) expected.replace(at, 1, "\r\n");
    EXPECT_EQ(run.out, expected + "\r\n") << c.script;
  }
}

struct BadLineCase {
  const char* script;
  const char* err;
};

// A bad line names itself and why; what came before it was printed, nothing after it ran.
TEST_F(EditCommand, BadLineStopsTheRun) {
  const BadLineCase cases[] = {
      {"print\nfrobnicate a", "line 2: unknown operation 'frobnicate'"},
      {"print\nadd-object a\n\n# rows\ncheck a.x\ncriteria 3 \"> 1\"\nprint",
       "line 6: row 3: the select list has 2 rows"},
      {"print\ncheck q.x", "line 2: no datasource 'q' in the active SELECT"},
      {"print\nadd-object a\ncheck a.nope", "line 3: no field 'nope' in 'a'"},
      {"print\nsort 0 asc", "line 2: ROW must be a number from 1, not '0'; expected: sort ROW asc|desc"},
      {"print\nadd-object a\nsort 1 up", "line 3: asc|desc expected, not 'up'; expected: sort ROW asc|desc"},
      {"print\ncriteria 1 > 1", "line 2: \"TEXT\" must be in double quotes; expected: criteria ROW \"TEXT\""},
      {"print\nexpression \"x", "line 2: a text in double quotes is not closed"},
      {"print\nleave", "line 2: the main query is active: there is nothing to leave"},
      {"print\nprint now", "line 2: too many arguments; expected: print"},
  };
  for (const BadLineCase& c : cases) {
    auto run = Edit(c.script, "SELECT 1");
    EXPECT_EQ(run.exitCode, 1) << c.script;
    EXPECT_EQ(run.err, std::string(c.err) + "\n") << c.script;
    EXPECT_EQ(run.out, "Select 1\r\n") << c.script;
  }
  EXPECT_EQ(RunMvsql({"edit", "-"}, "SELECT 1").exitCode, 2) << "--script is required";
}

// Without FILE the query comes from standard input when it is no terminal;
// the metadata goes into the builder, and a file it cannot read fails the run.
TEST(EditCommandInput, StartingQueryAndMetadata) {
  mvtest::TempFile script("print\n", ".txt");
  auto piped = RunMvsql({"edit", "--script", script.path(), "--one-line"}, "select x from t");
  EXPECT_EQ(piped.out, "Select x From t\r\n") << piped.err;
  EXPECT_EQ(RunMvsql({"edit", "--script", script.path()}).out, "\r\n") << "empty input, empty query";

  const std::string xml = std::string(MV_TEST_DATA_DIR) + "/metadata/small.xml";
  mvtest::TempFile tick("add-object orders o\ncheck o.*\nprint\n", ".txt");
  auto ticked = RunMvsql({"edit", "--metadata", xml, "--script", tick.path(), "--one-line"});
  EXPECT_EQ(ticked.exitCode, 0) << ticked.err;
  EXPECT_EQ(ticked.out, "Select o.* From orders o\r\n");
  auto missing = RunMvsql({"roundtrip", "--metadata", "/nonexistent/m.xml"}, "SELECT 1");
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.err.find("/nonexistent/m.xml"), std::string::npos) << missing.err;
}

// The rows of a statement on a SQLite database, each a line of its values, sorted.
std::vector<std::string> Rows(mv::TmvSQLiteConnection& connection, const std::string& sql) {
  auto query = connection.CreateQuery(mv::UTF8Decode(sql));
  query->Open();
  std::vector<std::string> rows;
  for (; !query->Eof(); query->Next()) {
    std::string row;
    for (int i = 0; i < query->FieldCount(); ++i) row += query->Fields()[i].AsString() + "\t";
    rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

// The script of samples/sample-edit.txt builds the sample query from nothing:
// on the Chinook database it returns the rows of samples/sample.sql.
TEST(EditCommandChinook, SampleScriptBuildsTheSampleQuery) {
  const std::string dir = mvtest::CorpusDir();
  const std::string database = dir + "/chinook/Chinook_Sqlite.sqlite";
  if (dir.empty() || !std::filesystem::exists(database))
    GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus";
  const std::string samples = std::string(MV_TEST_DATA_DIR) + "/../../samples/";
  auto built = RunMvsql({"edit", "--sqlite", database, "--script", samples + "sample-edit.txt",
                         "--one-line", "-"});
  ASSERT_EQ(built.exitCode, 0) << built.err;

  mv::TmvSQLiteConnection chinook(mv::UTF8Decode(database), mv::somReadOnly);
  const std::vector<std::string> expected = Rows(chinook, mvtest::ReadFileBytes(samples + "sample.sql"));
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(Rows(chinook, built.out), expected) << built.out;
}

}  // namespace
