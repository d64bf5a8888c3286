// Languages held as INI text: long values, lists, writes, general settings,
// and the event-based source.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "localization/LanguageSources.h"
#include "support/Exceptions.h"

namespace mv {
namespace {

TEST(LanguageSources, ReadWideStringJoinsNumberedLines) {
  struct {
    const char16_t* lines;
    const char16_t* expected;  // null: the default
  } cases[] = {
      {u"K=one", u"one"},
      {u"K.0=a\nK.1=b\nK.2=\nK.3=d", u"a\r\nb\r\n\r\nd"},
      {u"K=a\nK.2=c", u"a\r\n\r\nc"},                 // a bare key is line 0, a gap an empty line
      {u"K.1=b\nK.0=a", u"a"},                         // the last entry gives the line count
      {u"KLonger=x\nK.x=y\nK.=z\nK.Item0=w", nullptr},  // only Key and Key.<number> count
      {u"k=lower", nullptr},
      {u"K no value", nullptr},
  };
  for (const auto& c : cases) {
    TmvQBLanguageSourceString language(u"L", WideString(u"[S]\n") + c.lines);
    WideString value;
    bool found = language.ReadWideString(u"S", u"K", value, u"default");
    EXPECT_EQ(found, c.expected != nullptr) << UTF8Encode(c.lines);
    EXPECT_EQ(value, c.expected ? c.expected : u"default") << UTF8Encode(c.lines);
  }
}

TEST(LanguageSources, ReadStringsKeepsTheDefaultLineCount) {
  const std::vector<WideString> def = {u"d0", u"d1", u"d2"};
  struct {
    const char16_t* lines;
    std::vector<WideString> expected;
  } cases[] = {
      {u"L.Item0=a\nL.Item1=b", {u"a", u"b", u"d2"}},
      {u"L.Item2=c\nL.Item0=a", {u"a", u"c", u"d2"}},  // by position in the sorted list
      {u"L.Item0=a\nL.Item1=b\nL.Item2=c\nL.Item3=x", {u"a", u"b", u"c"}},
      {u"L=a\nL.0=b", def},
  };
  for (const auto& c : cases) {
    TmvQBLanguageSourceString language(u"L", WideString(u"[S]\n") + c.lines);
    std::vector<WideString> result;
    language.ReadStrings(u"S", u"L", def, result);
    EXPECT_EQ(result, c.expected) << UTF8Encode(c.lines);
  }
}

TEST(LanguageSources, WritesReplaceWhatStartsWithTheKey) {
  TmvQBLanguageSourceString language(u"L", u"[S]\nmvQBCopy.0=a\nmvQBCopy.1=b\nmvQBCopyToNew=c\nL.Item0=x\nLZ=z\n");
  language.WriteWideString(u"S", u"mvQBCopy", u"one\r\ntwo");
  language.WriteStrings(u"S", u"L", {u"p", u"q"});
  language.WriteWideString(u"N", u"k", u"single");
  EXPECT_EQ(language.IniFile().FindSection(u"S")->GetText(),
            u"LZ=z\r\nmvQBCopy.0=one\r\nmvQBCopy.1=two\r\nL.Item0=p\r\nL.Item1=q\r\n");
  EXPECT_EQ(language.IniFile().ReadString(u"N", u"k", u""), u"single");
  language.ClearStrings(u"S", u"L");
  language.ClearWideString(u"S", u"mvQBCopy");
  EXPECT_EQ(language.IniFile().FindSection(u"S")->GetText(), u"LZ=z\r\n");
}

TEST(LanguageSources, GeneralSettings) {
  struct {
    const char16_t* settings;
    uint8_t charSet;
    TmvBiDiMode mode;
    int codePage;
    size_t problems;
  } cases[] = {
      {u"", 1, bdLeftToRight, 1250, 0},
      {u"CharSet=ANSI_CHARSET", 0, bdLeftToRight, 1250, 0},
      {u"CharSet=russian_charset", 204, bdLeftToRight, 1251, 0},
      {u"CharSet=HEBREW_CHARSET", 177, bdRightToLeft, 1255, 0},
      {u"CharSet=ARABIC_CHARSET\nBiDiMode=BiDiLeftToRight", 178, bdLeftToRight, 1256, 0},
      {u"CharSet=EASTEUROPE_CHARSET\nBiDiMode=anything", 238, bdRightToLeft, 28592, 0},
      {u"CharSet=KLINGON_CHARSET", 1, bdLeftToRight, 1250, 1},
  };
  for (const auto& c : cases) {
    TmvQBLanguageSourceString language(u"L", WideString(u"[General Settings]\n") + c.settings);
    EXPECT_EQ(language.CharSet(), c.charSet) << UTF8Encode(c.settings);
    EXPECT_EQ(language.BiDiMode(), c.mode) << UTF8Encode(c.settings);
    EXPECT_EQ(language.CodePage(), c.codePage) << UTF8Encode(c.settings);
    EXPECT_EQ(language.Problems().size(), c.problems) << UTF8Encode(c.settings);
  }
  EXPECT_EQ(GetCodePage(42), 1250);
  TmvQBLanguageSourceString written(u"W", u"");
  written.SetCharSet(178);
  written.SetBiDiMode(bdRightToLeft);
  written.WriteParams();
  EXPECT_EQ(written.IniFile().SaveToBytes(),
            "\xEF\xBB\xBF[General Settings]\r\nCharSet=ARABIC_CHARSET\r\nBiDiMode=BiDiRightToLeft\r\n");
}

TEST(LanguageSources, AnsiReadsGoThroughTheCodePage) {
  TmvQBLanguageSourceString language(u"R", u"[General Settings]\nCharSet=RUSSIAN_CHARSET\n[S]\nk=Да\n");
  std::string value;
  EXPECT_TRUE(language.ReadAnsiString(u"S", u"k", value, ""));
  EXPECT_EQ(value, "\xC4\xE0");
  EXPECT_FALSE(language.ReadAnsiString(u"S", u"none", value, "\xCD\xE5\xF2"));
  EXPECT_EQ(value, "\xCD\xE5\xF2");
}

TEST(LanguageSources, FileSourceLoadsAndSaves) {
  const std::string path = ::testing::TempDir() + "language-source-test.lng";
  {
    std::ofstream out(path, std::ios::binary);
    out << "[General Settings]\r\nCharSet=GREEK_CHARSET\r\n[Morvane]\r\nmvQBMainQuery=Κύρια\r\n";
  }
  TmvQBLanguageSourceFile language(u"Greek", path);
  EXPECT_EQ(language.CharSet(), 161);
  language.WriteWideString(u"Morvane", u"mvQBFields", u"Πεδία");
  language.SaveLanguage();
  TmvQBLanguageSourceFile again(u"Greek", path);
  WideString value;
  again.ReadWideString(u"Morvane", u"mvQBFields", value, u"");
  EXPECT_EQ(value, u"Πεδία");
  std::remove(path.c_str());
  EXPECT_THROW(TmvQBLanguageSourceFile(u"X", path), EmvQueryBuilderError);
  EXPECT_THROW(TmvQBLanguageSourceResource(u"X", u"NONE.LNG"), EmvQueryBuilderError);
}

TEST(LanguageSources, EventSourceAsksTheHostAndIgnoresWrites) {
  TmvQBLanguageSourceBase* seen = nullptr;
  TmvQBLanguageSourceEvents language(
      u"E", nullptr,
      [&](TmvQBLanguageSourceBase* sender, WideStringView section, WideStringView key, WideString& value,
          WideStringView) {
        seen = sender;
        if (section != u"S" || key != u"k") return false;
        value = u"host";
        return true;
      },
      nullptr);
  language.WriteWideString(u"S", u"other", u"x");
  WideString value;
  EXPECT_TRUE(language.ReadWideString(u"S", u"k", value, u"d"));
  EXPECT_EQ(value, u"host");
  EXPECT_FALSE(language.ReadWideString(u"S", u"other", value, u"d"));
  EXPECT_EQ(value, u"d");
  EXPECT_EQ(seen, &language);
  std::vector<WideString> list;
  EXPECT_FALSE(language.ReadStrings(u"S", u"k", {u"a"}, list));
  EXPECT_EQ(list, std::vector<WideString>{u"a"});
}

}  // namespace
}  // namespace mv
