#include "support/StatementList.h"

#include <gtest/gtest.h>

#include "Corpus.h"

using namespace mv;

TEST(StatementList, SplitsOnSeparatorLinesOnly) {
  auto entries = SplitStatementList(u"SELECT 1\n;;\n\nSELECT ';;'\nFROM t\r\n  ;;  \r\nSELECT 3");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].Text, u"SELECT 1");
  EXPECT_EQ(entries[0].Line, 1);
  EXPECT_EQ(entries[1].Text, u"SELECT ';;'\nFROM t");
  EXPECT_EQ(entries[1].Line, 4);
  EXPECT_EQ(entries[2].Text, u"SELECT 3");
  EXPECT_EQ(entries[2].Index, 3);
  EXPECT_EQ(entries[2].Line, 7);
}

TEST(StatementList, BlankEntriesAreCountedButSkipped) {
  auto entries = SplitStatementList(u";;\n  \n;;\nSELECT 1\n;;\n");
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].Index, 3);
  EXPECT_TRUE(SplitStatementList(u"").empty());
}

TEST(StatementList, ReadsTheCorpusCollections) {
  MV_REQUIRE_CORPUS();
  auto entries = ReadStatementList(mvtest::CorpusDir() + "/tpch-duckdb/selects.sql");
  ASSERT_EQ(entries.size(), 22u);
  for (const auto& e : entries) EXPECT_TRUE(WideStartsText(u"SELECT", e.Text) || WideStartsText(u"WITH", e.Text));
}
