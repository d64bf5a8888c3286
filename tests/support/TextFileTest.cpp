#include "support/TextFile.h"

#include <gtest/gtest.h>

#include "RunTool.h"
#include "Thrown.h"
#include "support/Exceptions.h"

using namespace mv;

TEST(TextFile, DecodesByByteOrderMark) {
  EXPECT_EQ(DecodeText("SELECT 1"), u"SELECT 1");
  EXPECT_EQ(DecodeText("\xEF\xBB\xBFSELECT \xC3\xA9"), u"SELECT \u00E9");
  EXPECT_EQ(DecodeText(std::string("\xFF\xFES\0\xE9\0", 6)), u"S\u00E9");
  EXPECT_EQ(DecodeText(std::string("\xFE\xFF\0S", 4)), u"S");
  EXPECT_EQ(DecodeText(""), u"");
}

TEST(TextFile, MissingFileNamesTheFile) {
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] {
              ReadTextFile("/nonexistent/dir/query.sql");
            }).find(u"/nonexistent/dir/query.sql"),
            WideString::npos);
}

TEST(TextFile, ReadsFileContents) {
  mvtest::TempFile file("\xEF\xBB\xBF" "a\r\nb");
  EXPECT_EQ(ReadTextFile(file.path()), u"a\r\nb");
}
