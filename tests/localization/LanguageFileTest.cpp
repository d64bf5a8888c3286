// The language file format: decoding, lines, sections, entries, saving, and
// bad input that loads what it can.
#include <gtest/gtest.h>

#include <sstream>

#include "localization/LanguageFile.h"

namespace mv {
namespace {

const std::string kBody = "; comment\r\n[General Settings]\r\nCharSet=ANSI_CHARSET\r\n[Morvane]\r\n  key = v \r\n";

struct LoadCase {
  const char* what;
  std::string bytes;
  size_t problems;
};

TEST(LanguageFile, DecodesEveryEncodingAndReportsBadBytes) {
  std::string utf16 = "\xFF\xFE";
  for (char c : kBody) utf16 += std::string{c, '\0'};
  const LoadCase cases[] = {
      {"UTF-8 with BOM", "\xEF\xBB\xBF" + kBody, 0},
      {"UTF-8 without BOM", kBody, 0},
      {"UTF-16 LE with BOM", utf16, 0},
      {"UTF-16 with an odd last byte", utf16 + "x", 1},
      {"big-endian mark", "\xFE\xFF" + kBody, 2},  // unknown mark, then the bytes are not UTF-8
      {"cut UTF-8 mark", "\xEF\xBB" + kBody, 2},
      {"malformed UTF-8 in a value", "\xEF\xBB\xBF" + kBody + "bad=\xC3\r\n", 1},
      {"last line cut short", "\xEF\xBB\xBF" + kBody + "trunc=ab", 1},
      {"header without bracket", "\xEF\xBB\xBF" + kBody + "[Broken\r\n", 1},
  };
  for (const LoadCase& c : cases) {
    SCOPED_TRACE(c.what);
    TmvWideStringMemIniFile ini;
    std::istringstream stream(c.bytes);
    ini.LoadFromStream(stream);
    EXPECT_EQ(ini.Problems().size(), c.problems);
    EXPECT_EQ(ini.ReadString(u"Morvane", u"  key ", u"?"), u" v ");
    EXPECT_EQ(ini.ReadString(u"General Settings", u"CharSet", u"?"), u"ANSI_CHARSET");
  }
}

TEST(LanguageFile, ShortInputHasNoMarkAndNeverFails) {
  for (std::string bytes : {std::string(), std::string("\xEF\xBB\xBF"), std::string("\xFF\xFE"), std::string("[")}) {
    TmvWideStringMemIniFile ini;
    ini.LoadFromBytes(bytes);
    EXPECT_EQ(ini.Sections().Count(), 0);
  }
}

TEST(LanguageFile, LinesSectionsAndEntries) {
  TmvWideStringMemIniFile ini;
  ini.LoadFromWideString(
      u"dropped=1\nfirst\r\n[S]\f a=1\x85"
      u"b=x=y\u2028  // text editor\u2029\r\n\r\n  [ T ]  \rc=2\n;c=3\n[S]\nd=4\n[s]\ne=5");
  EXPECT_EQ(ini.Sections().Count(), 3);  // S (twice merged), " T ", s
  const TmvWideStrings* s = ini.FindSection(u"S");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->GetText(), u" a=1\r\nb=x=y\r\n  // text editor\r\nd=4\r\n");
  struct {
    const char16_t* section;
    const char16_t* key;
    const char16_t* expected;
  } reads[] = {
      {u"S", u" a", u"1"},  {u"S", u"a", u"-"},   {u"S", u"b", u"x=y"}, {u"S", u"d", u"4"},
      {u" T ", u"c", u"2"}, {u"S", u"e", u"-"},   {u"s", u"e", u"5"},   {u"S", u"  // text editor", u"-"},
      {u"", u"dropped", u"-"},
  };
  for (const auto& r : reads) EXPECT_EQ(ini.ReadString(r.section, r.key, u"-"), r.expected) << UTF8Encode(r.key);
}

TEST(LanguageFile, SavesWithMarkAndBlankLinesBetweenSections) {
  TmvWideStringMemIniFile ini;
  ini.WriteString(u"General Settings", u"CharSet", u"ANSI_CHARSET");
  ini.WriteString(u"Morvane", u"k", u"Ä");
  ini.WriteString(u"Morvane", u"k", u"é");
  EXPECT_EQ(ini.SaveToBytes(),
            "\xEF\xBB\xBF[General Settings]\r\nCharSet=ANSI_CHARSET\r\n\r\n\r\n[Morvane]\r\nk=\xC3\xA9\r\n");
  TmvWideStringMemIniFile again;
  again.LoadFromBytes(ini.SaveToBytes());
  EXPECT_EQ(again.SaveToBytes(), ini.SaveToBytes());
  EXPECT_TRUE(again.Problems().empty());
}

TEST(LanguageFile, PrefixOperations) {
  TmvWideStringMemIniFile ini;
  ini.LoadFromWideString(u"[S]\nmvQBCopy=a\nmvQBCopyToNew=b\nmvQBCut=c\nmvQBCopy no value\n");
  EXPECT_TRUE(ini.IsStringStartsExists(u"S", u"mvQBCop"));
  EXPECT_FALSE(ini.IsStringStartsExists(u"S", u"mvqbcopy"));
  ini.ClearStringStarts(u"S", u"mvQBCopy");
  EXPECT_EQ(ini.FindSection(u"S")->GetText(), u"mvQBCut=c\r\nmvQBCopy no value\r\n");
}

}  // namespace
}  // namespace mv
