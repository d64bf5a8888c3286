// mvsql roundtrip --layout-out writes the query with the places of its boxes,
// and --layout reads such a document back.
#include <gtest/gtest.h>

#include <string>

#include "RunTool.h"

using mvtest::RunMvsql;

namespace {

TEST(RoundtripLayout, DocumentOutAndBackIn) {
  mvtest::TempFile written("", ".xml");
  const mvtest::ToolResult out = RunMvsql(
      {"roundtrip", "--one-line", "--layout-out", written.path(), "-"}, "select a.x from a inner join b on a.id=b.id");
  ASSERT_EQ(out.exitCode, 0) << out.err;
  const std::string layout = mvtest::ReadFileBytes(written.path());
  EXPECT_NE(layout.find("<DataSource SQL=\"a\" X=\"0\" Y=\"0\" Width=\"0\" Height=\"0\" />"), std::string::npos)
      << layout;

  // The places of a stored document come in with its text, and go out again.
  std::string moved = layout;
  moved.replace(moved.find("X=\"0\""), 5, "X=\"40\"");
  mvtest::TempFile stored(moved, ".xml");
  mvtest::TempFile rewritten("", ".xml");
  const mvtest::ToolResult back =
      RunMvsql({"roundtrip", "--one-line", "--layout", stored.path(), "--layout-out", rewritten.path()});
  ASSERT_EQ(back.exitCode, 0) << back.err;
  EXPECT_EQ(back.out, out.out);
  EXPECT_EQ(mvtest::ReadFileBytes(rewritten.path()), moved);
}

TEST(RoundtripLayout, WhatIsNoLayoutDocumentIsRefused) {
  struct TCase {
    std::string text;
    std::string message;
  };
  const TCase cases[] = {
      {"<MorvaneLayout><SQL>select 1</SQL>", "not a well-formed layout document"},
      {"<properties/>", "the root element is not <MorvaneLayout>"},
      {"<MorvaneLayout><SQL>select * from b</SQL><SubQueries><SubQuery SQL=\"Select * From b\"><UnionSubQuery>"
       "<DataSource SQL=\"b\" X=\"1.5\" Y=\"2\" Width=\"3\" Height=\"4\"/></UnionSubQuery></SubQuery></SubQueries>"
       "</MorvaneLayout>",
       "'1.5' is not a valid integer value"},
  };
  for (const TCase& c : cases) {
    mvtest::TempFile file(c.text, ".xml");
    const mvtest::ToolResult result = RunMvsql({"roundtrip", "--layout", file.path()});
    EXPECT_EQ(result.exitCode, 1) << c.text;
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
  mvtest::TempFile file("<MorvaneLayout/>", ".xml");
  EXPECT_EQ(RunMvsql({"roundtrip", "--layout", file.path(), "query.sql"}).exitCode, 2);
}

}  // namespace
