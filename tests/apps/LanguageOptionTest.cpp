// mvsql --language: the messages of any command in a built-in language or a
// language file.
#include <gtest/gtest.h>

#include "RunTool.h"

namespace {

TEST(LanguageOption, ParseErrorsComeInTheChosenLanguage) {
  struct {
    std::vector<std::string> args;
    int exitCode;
    const char* message;  // in the error output
  } cases[] = {
      {{"parse"}, 1, "Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 20"},
      {{"parse", "--language", "German"}, 1, "Ungültige SELECT-Anweisung.\r\nUnerwartetes Symbol \"EOF\" in Zeile 1, Position 20"},
      {{"parse", "--language=english"}, 1, "Invalid SELECT statement.\r\nUnexpected token \"EOF\" at line 1, pos 20"},
      {{"parse", "--language", "Klingon"}, 2, "Unknown language \"Klingon\""},
  };
  for (const auto& c : cases) {
    mvtest::ToolResult result = mvtest::RunMvsql(c.args, "select a from where");
    EXPECT_EQ(result.exitCode, c.exitCode) << c.args.back();
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
}

TEST(LanguageOption, ALanguageFileOverridesSomeKeys) {
  mvtest::TempFile file("\xEF\xBB\xBF[Morvane]\r\nmvQBBadSelectStatement=Mauvaise requête\r\n", ".lng");
  mvtest::ToolResult result = mvtest::RunMvsql({"parse", "--language", file.path()}, "select a from where");
  EXPECT_EQ(result.exitCode, 1);
  // The file lacks the token line: its English default stays.
  EXPECT_NE(result.err.find("Mauvaise requête\r\n Unexpected token \"EOF\" at line 1, pos 20"), std::string::npos)
      << result.err;
}

}  // namespace
