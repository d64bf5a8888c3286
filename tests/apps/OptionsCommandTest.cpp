// mvsql options: the list of properties, --set, --properties and --xml, and
// the usage errors that name what was wrong.
#include <gtest/gtest.h>

#include <string>

#include "RunTool.h"

namespace {

bool HasLine(const std::string& text, const std::string& line) {
  return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

TEST(OptionsCommandTest, ListsEveryPropertyByItsName) {
  mvtest::ToolResult r = mvtest::RunMvsql({"options"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  for (const char* line : {"SnapToGrid=True", "GridSize=2", "BorderColor=$00800000",
                           "OptionsView.SplitterResizeUpdate=True",
                           "FieldsListOptions.DescriptionColumnOptions.DrawOrder=3",
                           "LinkPainterClassName=TmvQueryBuilderLinkPainterAccess"})
    EXPECT_TRUE(HasLine(r.out, line)) << line;
}

TEST(OptionsCommandTest, SetAndProperties) {
  mvtest::TempFile document(
      "<properties><visual><query-designer><work-area><snap-to-grid><value>0</value></snap-to-grid>"
      "</work-area></query-designer></visual></properties>",
      ".xml");
  mvtest::ToolResult r = mvtest::RunMvsql({"options", "--dialect", "mssql", "--properties", document.path(), "--set",
                                           "GridSize=500", "--set", "optionsview.treemargins=false"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(HasLine(r.out, "SnapToGrid=False"));
  EXPECT_TRUE(HasLine(r.out, "GridSize=100"));
  EXPECT_TRUE(HasLine(r.out, "OptionsView.TreeMargins=False"));

  r = mvtest::RunMvsql({"options", "--set", "TabHotTrack=1", "--xml"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out.rfind("<properties>", 0), 0u) << r.out;
  const size_t hotTrack = r.out.find("<hot-track>");
  ASSERT_NE(hotTrack, std::string::npos);
  EXPECT_EQ(r.out.find("<value>", hotTrack), r.out.find("<value>1</value>", hotTrack));
}

TEST(OptionsCommandTest, ErrorsNameTheCulprit) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"options", "--set", "NoSuchOption=1"}, "NoSuchOption"},
      {{"options", "--set", "GridSize=big"}, "GridSize"},
      {{"options", "--set", "BorderStyle=qbbsRound"}, "qbbsRound"},
      {{"options", "--set", "SnapToGrid"}, "SnapToGrid"},
  };
  for (const auto& [args, culprit] : cases) {
    mvtest::ToolResult r = mvtest::RunMvsql(args);
    EXPECT_EQ(r.exitCode, 2) << culprit;
    EXPECT_NE(r.err.find(culprit), std::string::npos) << r.err;
  }
  mvtest::TempFile bad("<properties><visual><query-builder><border-width><value>wide</value></border-width>"
                       "</query-builder></visual></properties>",
                       ".xml");
  mvtest::ToolResult r = mvtest::RunMvsql({"options", "--properties", bad.path()});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_NE(r.err.find("visual/query-builder/border-width"), std::string::npos) << r.err;
}

// roundtrip --properties: the builder's settings before the text.
TEST(OptionsCommandTest, RoundtripTakesProperties) {
  mvtest::TempFile quoted(
      "<properties><system><internal-sql-formatter><quote-all-identifiers><value>1</value>"
      "</quote-all-identifiers></internal-sql-formatter></system></properties>",
      ".xml");
  mvtest::ToolResult r = mvtest::RunMvsql({"roundtrip", "--one-line", "--properties", quoted.path()}, "SELECT a FROM t");
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_NE(r.out.find("\"a\""), std::string::npos) << r.out;
  mvtest::TempFile bad("<properties><system><offline-mode><value>maybe</value></offline-mode></system></properties>",
                       ".xml");
  r = mvtest::RunMvsql({"roundtrip", "--properties", bad.path()}, "SELECT a FROM t");
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_NE(r.err.find("system/offline-mode"), std::string::npos) << r.err;
}

}  // namespace
