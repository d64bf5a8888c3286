#include "support/WideString.h"

#include <gtest/gtest.h>

using namespace mv;

TEST(WideStringConversion, RoundTripsAllPlanes) {
  // ASCII, Latin-1, BMP (Cyrillic, CJK) and a supplementary character.
  const std::string utf8 = "a\xC3\xA9\xD0\x96\xE4\xB8\xAD\xF0\x9F\x98\x80";
  const WideString wide = UTF8Decode(utf8);
  ASSERT_EQ(wide.size(), 6u);  // the emoji takes two UTF-16 units
  EXPECT_EQ(wide[0], u'a');
  EXPECT_EQ(wide[1], u'\u00E9');
  EXPECT_EQ(wide[4], char16_t(0xD83D));
  EXPECT_EQ(wide[5], char16_t(0xDE00));
  EXPECT_EQ(UTF8Encode(wide), utf8);
}

TEST(WideStringConversion, MalformedInputBecomesReplacementCharacters) {
  EXPECT_EQ(UTF8Decode("a\xFF" "b"), u"a\uFFFD" "b");
  EXPECT_EQ(UTF8Decode("\xE4\xB8"), u"\uFFFD\uFFFD");  // truncated sequence
  EXPECT_EQ(UTF8Decode("\xC0\x80"), u"\uFFFD\uFFFD");  // overlong NUL
  EXPECT_EQ(UTF8Encode(WideString(1, char16_t(0xD800))), "\xEF\xBF\xBD");
}

TEST(WideStringCase, MapsOneUnitToOneUnit) {
  // German sharp s has no one-unit upper case and stays as it is.
  EXPECT_EQ(WideUpperCase(u"select Stra\u00DFe \u0436"), u"SELECT STRA\u00DFE \u0416");
  EXPECT_EQ(WideLowerCase(u"ÄÖÜ SQL"), u"äöü sql");
  // Length never changes, even where full case mapping would grow the text.
  EXPECT_EQ(WideUpperCase(u"\u00DF").size(), 1u);
  EXPECT_EQ(WideUpperCase(u"\uFB01").size(), 1u);
}

TEST(WideStringCompare, CaseBlindAndBinary) {
  EXPECT_EQ(WideCompareText(u"Customer", u"CUSTOMER"), 0);
  EXPECT_LT(WideCompareText(u"abc", u"ABD"), 0);
  EXPECT_GT(WideCompareText(u"abcd", u"ABC"), 0);
  EXPECT_NE(WideCompareStr(u"a", u"A"), 0);
  EXPECT_TRUE(WideSameText(u"\u0436", u"\u0416"));
  EXPECT_EQ(WideTextHash(u"Name"), WideTextHash(u"NAME"));
}

TEST(WideStringCompare, PrefixAndSuffix) {
  EXPECT_TRUE(WideStartsText(u"", u"anything"));
  EXPECT_TRUE(WideStartsText(u"", u""));
  EXPECT_TRUE(WideEndsText(u"", u"x"));
  EXPECT_TRUE(WideStartsText(u"sel", u"SELECT"));
  EXPECT_FALSE(WideStartsText(u"selects", u"SELECT"));
  EXPECT_TRUE(WideEndsText(u"ECT", u"select"));
  EXPECT_TRUE(AnsiStartsText("sel", "SELECT"));
}

TEST(WideStringReplace, FlagsSelectFirstOrAllAndCase) {
  EXPECT_EQ(WideStringReplace(u"a-b-c", u"-", u"+", 0), u"a+b-c");
  EXPECT_EQ(WideStringReplace(u"a-b-c", u"-", u"+", rfReplaceAll), u"a+b+c");
  EXPECT_EQ(WideStringReplace(u"xAx", u"a", u"b", 0), u"xAx");
  EXPECT_EQ(WideStringReplace(u"xAxa", u"a", u"b", rfIgnoreCase), u"xbxa");
  EXPECT_EQ(WideStringReplace(u"xAxa", u"a", u"b", rfIgnoreCase | rfReplaceAll), u"xbxb");
  EXPECT_EQ(WideStringReplace(u"aaa", u"aa", u"a", rfReplaceAll), u"aa");
  EXPECT_EQ(WideStringReplace(u"abc", u"", u"x", rfReplaceAll), u"abc");
}

TEST(WideStringNumbers, ParsesIntegersStrictly) {
  int64_t v = 0;
  EXPECT_TRUE(TryStrToInt(u" -42 ", v));
  EXPECT_EQ(v, -42);
  EXPECT_TRUE(TryStrToInt(u"$1F", v));
  EXPECT_EQ(v, 31);
  EXPECT_TRUE(TryStrToInt(u"-9223372036854775808", v));
  EXPECT_EQ(v, INT64_MIN);
  EXPECT_FALSE(TryStrToInt(u"9223372036854775808", v));
  EXPECT_FALSE(TryStrToInt(u"12a", v));
  EXPECT_FALSE(TryStrToInt(u"", v));
  EXPECT_FALSE(TryStrToInt(u"-", v));
  int small = 0;
  EXPECT_FALSE(TryStrToInt(u"3000000000", small));
  EXPECT_EQ(StrToIntDef(u"x", 7), 7);
}
