// The command-line contract of mvsql: help, version, dispatch, input forms and exit codes.
#include <gtest/gtest.h>

#include "RunTool.h"
#include "metadata/dataset/SQLiteConnection.h"

using mvtest::RunMvsql;

TEST(MvsqlCli, HelpAndVersion) {
  auto help = RunMvsql({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.out.find("Usage: mvsql COMMAND"), std::string::npos);
  EXPECT_NE(help.out.find("decode"), std::string::npos);

  auto version = RunMvsql({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_EQ(version.out.rfind("mvsql ", 0), 0u);

  auto commandHelp = RunMvsql({"decode", "--help"});
  EXPECT_EQ(commandHelp.exitCode, 0);
  EXPECT_NE(commandHelp.out.find("mvsql decode"), std::string::npos);
}

TEST(MvsqlCli, UsageErrorsExitWithTwo) {
  EXPECT_EQ(RunMvsql({}).exitCode, 2);
  auto unknown = RunMvsql({"frobnicate"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_NE(unknown.err.find("unknown command 'frobnicate'"), std::string::npos);
  auto badOption = RunMvsql({"decode", "--nope"});
  EXPECT_EQ(badOption.exitCode, 2);
  EXPECT_NE(badOption.err.find("unknown option --nope"), std::string::npos);
  EXPECT_EQ(RunMvsql({"decode", "a.sql", "b.sql"}).exitCode, 2);
}

TEST(MvsqlCli, FailureOfTheJobExitsWithOne) {
  auto missing = RunMvsql({"decode", "/nonexistent/q.sql"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.err.find("/nonexistent/q.sql"), std::string::npos);
}

TEST(MvsqlCli, ReadsAllThreeInputEncodings) {
  // stdin, UTF-8 without BOM
  auto plain = RunMvsql({"decode", "-"}, "SELECT '\xC3\xA9'");
  EXPECT_EQ(plain.exitCode, 0);
  EXPECT_EQ(plain.out, "SELECT '\xC3\xA9'\n");
  EXPECT_NE(plain.err.find("10 UTF-16 code units"), std::string::npos);

  // file, UTF-8 with BOM
  mvtest::TempFile bom("\xEF\xBB\xBFSELECT 1", ".sql");
  auto withBom = RunMvsql({"decode", bom.path()});
  EXPECT_EQ(withBom.out, "SELECT 1\n");

  // UTF-16 LE with BOM, a supplementary character included
  const std::string utf16("\xFF\xFE" "a\0\x3D\xD8\x00\xDE", 8);
  mvtest::TempFile wide(utf16, ".sql");
  auto fromUtf16 = RunMvsql({"decode", wide.path()});
  EXPECT_EQ(fromUtf16.exitCode, 0);
  EXPECT_EQ(fromUtf16.out, "a\xF0\x9F\x98\x80\n");
  EXPECT_NE(fromUtf16.err.find("3 UTF-16 code units"), std::string::npos);
}

TEST(MvsqlCli, MetadataFromXmlAndFromSQLite) {
  auto fromXml = RunMvsql({"metadata", "--xml", std::string(MV_TEST_DATA_DIR) + "/metadata/small.xml"});
  EXPECT_EQ(fromXml.exitCode, 0) << fromXml.err;
  EXPECT_NE(fromXml.out.find("default database: db\ndefault schemas: dbo\n"), std::string::npos) << fromXml.out;
  EXPECT_NE(fromXml.out.find("tables: 1\n  db.dbo.orders: 2 fields, 1 relation\n"), std::string::npos) << fromXml.out;

  // A broken file: its error names the file, the line and the element.
  mvtest::TempFile broken("<metadata>\n  <table>\n    <name name=\"t\"\n</metadata>\n", ".xml");
  auto refused = RunMvsql({"metadata", "--xml", broken.path()});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_NE(refused.err.find("File \"" + broken.path() + "\", line 4, near element <metadata/table/name>"),
            std::string::npos)
      << refused.err;

  // A database read, written, and read back from the file gives the same summary.
  mvtest::TempFile database("", ".db");
  {
    mv::TmvSQLiteConnection connection(mv::UTF8Decode(database.path()));
    connection.ExecSQL(
        u"create table artists(id integer primary key, name varchar(40) not null);"
        u"create table albums(id integer primary key, artist_id integer references artists(id), title text);"
        u"create view titles as select title from albums;");
    connection.Close();
  }
  mvtest::TempFile written("", ".xml");
  auto summary = RunMvsql({"metadata", "--sqlite", database.path(), "--summary", "-o", written.path()});
  EXPECT_EQ(summary.exitCode, 0) << summary.err;
  EXPECT_NE(summary.out.find("tables: 2\n"), std::string::npos) << summary.out;
  EXPECT_NE(summary.out.find("views: 1\n"), std::string::npos) << summary.out;
  auto reread = RunMvsql({"metadata", "--xml", written.path()});
  EXPECT_EQ(reread.exitCode, 0) << reread.err;
  EXPECT_EQ(reread.out, summary.out);
  auto toStdout = RunMvsql({"metadata", "--sqlite", database.path()});
  EXPECT_EQ(toStdout.out, mvtest::ReadFileBytes(written.path()));

  EXPECT_EQ(RunMvsql({"metadata", "--xml", "a.xml", "--sqlite", "b.db"}).exitCode, 2);
  EXPECT_EQ(RunMvsql({"metadata", "--sqlite", "/nonexistent/x.db"}).exitCode, 1);
}
