// The SQL-92 scanner generated from src/dialects/sql92/SQL92.tokens: its
// numbering of kinds and the token forms, partial tokens and comments.
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>
#include <vector>

#include "SQL92Scan.h"
#include "ScanTokens.h"

namespace {

using mv::SQL92Scanner;
using mv::TmvToken;
using mv::WideString;
using Tok = mvtest::ScannedToken;

std::vector<Tok> Visible(const WideString& text) { return mvtest::ScanTokens<SQL92Scanner>(text); }

std::vector<TmvToken> All(const WideString& text) {
  auto scanner = mv::TmvCreate<SQL92Scanner>();
  scanner->Init(text);
  return scanner->GetTokens();
}

TEST(SQL92Kinds, KeywordsRunFrom11To237InOrderWithEndExecBetween) {
  auto keywords = SQL92Scanner::Keywords();
  ASSERT_EQ(keywords.size(), 233u);
  int32_t expected = 11;
  for (size_t i = 0; i < 226; ++i) {
    if (expected == 88) ++expected;
    EXPECT_EQ(keywords[i].Kind, expected) << keywords[i].Text;
    ++expected;
  }
  EXPECT_EQ(expected, 238);
  EXPECT_STREQ(keywords[0].Text, "avg");
  EXPECT_STREQ(keywords[225].Text, "zone");
  // The words after the comments and symbols.
  EXPECT_STREQ(keywords[226].Text, "~");
  EXPECT_STREQ(keywords[232].Text, "fn");
  EXPECT_STREQ(SQL92Scanner::KindName(189), "select");
  EXPECT_STREQ(SQL92Scanner::KindName(88), "endExec");
  EXPECT_STREQ(SQL92Scanner::KindName(271), "noSym");
}

TEST(SQL92Kinds, EveryKeywordIsFoundInAnyCaseAndNoNameNearOne) {
  std::set<std::string> words;
  for (const mv::TmvKeywordEntry& entry : SQL92Scanner::Keywords()) words.insert(entry.Text);
  for (const mv::TmvKeywordEntry& entry : SQL92Scanner::Keywords()) {
    const std::string word = entry.Text;
    if (!std::isalpha(static_cast<unsigned char>(word[0]))) continue;
    std::string upper = word, mixed = word;
    for (size_t i = 0; i < word.size(); ++i) {
      upper[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(word[i])));
      if (i % 2) mixed[i] = upper[i];
    }
    for (const std::string& spelling : {word, upper, mixed}) {
      const WideString text = mv::UTF8Decode(spelling);
      EXPECT_EQ(Visible(text), (std::vector<Tok>{{entry.Kind, text}})) << spelling;
    }
    // One letter more or less makes a name, unless that is a keyword too.
    for (const std::string& near : {word + "x", word.substr(0, word.size() - 1)}) {
      if (near.empty() || words.count(near)) continue;
      const std::vector<Tok> tokens = Visible(mv::UTF8Decode(near));
      ASSERT_EQ(tokens.size(), 1u) << near;
      EXPECT_EQ(tokens[0].kind, 5) << near;  // identifierToken
    }
  }
}

TEST(SQL92Kinds, EverySymbolHasItsKind) {
  const std::vector<std::pair<WideString, int32_t>> symbols = {
      {u";", 240}, {u"(", 241}, {u")", 242}, {u"*", 243}, {u"=", 244}, {u".*", 245}, {u"+", 246},
      {u"-", 247}, {u"||", 248}, {u"/", 249}, {u"%", 250}, {u"?", 252}, {u":", 253}, {u"{", 254},
      {u"}", 258}, {u"?=", 260}, {u"<>", 263}, {u"!=", 264}, {u"<=", 265}, {u"!>", 266}, {u"<", 267},
      {u">=", 268}, {u"!<", 269}, {u">", 270}, {u".", 9}, {u",", 10}, {u"~", 251},
      {u"d", 255}, {u"t", 256}, {u"ts", 257}, {u"guid", 259}, {u"call", 261}, {u"fn", 262}};
  for (const auto& [text, kind] : symbols) {
    EXPECT_EQ(Visible(text), (std::vector<Tok>{{kind, text}})) << mv::UTF8Encode(text);
  }
}

TEST(SQL92Forms, KeywordsInAnyCaseKeepTheirSpelling) {
  EXPECT_EQ(Visible(u"SELECT select SeLeCt"),
            (std::vector<Tok>{{189, u"SELECT"}, {189, u"select"}, {189, u"SeLeCt"}}));
  EXPECT_EQ(Visible(u"MyTable"), (std::vector<Tok>{{5, u"MyTable"}}));
  EXPECT_EQ(Visible(u"Current_Date"), (std::vector<Tok>{{SQL92Scanner::kwCURRENT_DATE, u"Current_Date"}}));
}

TEST(SQL92Forms, Names) {
  // Letters, digits, _ and $, and everything from 126 up, go on in a name.
  EXPECT_EQ(Visible(u"a_1$b"), (std::vector<Tok>{{5, u"a_1$b"}}));
  EXPECT_EQ(Visible(u"$x"), (std::vector<Tok>{{5, u"$x"}}));
  EXPECT_EQ(Visible(u"\u00e9t\u00e9 \u0444\u0430\u0439\u043b"), (std::vector<Tok>{{5, u"\u00e9t\u00e9"}, {5, u"\u0444\u0430\u0439\u043b"}}));
  // A no-break space is a name character, not white space.
  EXPECT_EQ(Visible(u"select\u00a0a"), (std::vector<Tok>{{5, u"select\u00a0a"}}));
  // A tilde continues a name: ~a is one name, a~b too.
  EXPECT_EQ(Visible(u"~a a~b"), (std::vector<Tok>{{5, u"~a"}, {5, u"a~b"}}));
  // Names that start like end-exec stay names.
  EXPECT_EQ(Visible(u"e end exec e1 ends"),
            (std::vector<Tok>{{5, u"e"}, {87, u"end"}, {SQL92Scanner::kwEXEC, u"exec"}, {5, u"e1"}, {5, u"ends"}}));
}

TEST(SQL92Forms, EndExecIsOneToken) {
  EXPECT_EQ(Visible(u"END-EXEC"), (std::vector<Tok>{{88, u"END-EXEC"}}));
  EXPECT_EQ(Visible(u"end-x"), (std::vector<Tok>{{88, u"end-", true}, {5, u"x"}}));
  EXPECT_EQ(Visible(u"end-ex;"), (std::vector<Tok>{{88, u"end-ex", true}, {240, u";"}}));
  // So "END-1" is no subtraction.
  EXPECT_EQ(Visible(u"END-1"), (std::vector<Tok>{{88, u"END-", true}, {3, u"1"}}));
}

TEST(SQL92Forms, Numbers) {
  EXPECT_EQ(Visible(u"12 1.5 1. .5 1e5 1.5E-3 2e+7"),
            (std::vector<Tok>{{3, u"12"}, {4, u"1.5"}, {4, u"1."}, {4, u".5"}, {4, u"1e5"}, {4, u"1.5E-3"}, {4, u"2e+7"}}));
  EXPECT_EQ(Visible(u"1e"), (std::vector<Tok>{{4, u"1e", true}}));
  EXPECT_EQ(Visible(u"1e+"), (std::vector<Tok>{{4, u"1e+", true}}));
  EXPECT_EQ(Visible(u"1.5e"), (std::vector<Tok>{{4, u"1.5e", true}}));
  EXPECT_EQ(Visible(u".e5"), (std::vector<Tok>{{9, u"."}, {5, u"e5"}}));
  EXPECT_EQ(Visible(u"0x1f 0X1F"), (std::vector<Tok>{{7, u"0x1f"}, {7, u"0X1F"}}));
  EXPECT_EQ(Visible(u"0x"), (std::vector<Tok>{{7, u"0x", true}}));
  EXPECT_EQ(Visible(u"0xg"), (std::vector<Tok>{{7, u"0x", true}, {5, u"g"}}));
}

TEST(SQL92Forms, StringsAndQuotedNames) {
  EXPECT_EQ(Visible(u"'a''b'"), (std::vector<Tok>{{8, u"'a''b'"}}));
  EXPECT_EQ(Visible(u"\"a\"\"b\""), (std::vector<Tok>{{6, u"\"a\"\"b\""}}));
  EXPECT_EQ(Visible(u"'abc"), (std::vector<Tok>{{8, u"'abc", true}}));
  EXPECT_EQ(Visible(u"\"abc"), (std::vector<Tok>{{6, u"\"abc", true}}));
  // A prefix letter that this dialect does not know is a name of its own.
  EXPECT_EQ(Visible(u"N'abc'"), (std::vector<Tok>{{5, u"N"}, {8, u"'abc'"}}));
  EXPECT_EQ(Visible(u"[a]]b]"),
            (std::vector<Tok>{{271, u"["}, {5, u"a"}, {271, u"]"}, {271, u"]"}, {5, u"b"}, {271, u"]"}}));
}

TEST(SQL92Forms, LineEndsInsideQuotedFormsCountNoLine) {
  auto t = All(u"'a\nb' x\ny");
  ASSERT_EQ(t.size(), 6u);
  EXPECT_EQ(t[0].Text, u"'a\nb'");
  EXPECT_EQ(t[2].Text, u"x");
  EXPECT_EQ(t[2].Line, 1) << "the string's line end is not counted";
  EXPECT_EQ(t[2].Col, 7) << "columns go on from the old line start";
  EXPECT_EQ(t[4].Text, u"y");
  EXPECT_EQ(t[4].Line, 2);
}

TEST(SQL92Forms, DotsAndStars) {
  EXPECT_EQ(Visible(u"tab.*"), (std::vector<Tok>{{5, u"tab"}, {245, u".*"}}));
  EXPECT_EQ(Visible(u"tab . *"), (std::vector<Tok>{{5, u"tab"}, {9, u"."}, {243, u"*"}}));
  // t is a word of this dialect's ODBC forms: a keyword, before the same token.
  EXPECT_EQ(Visible(u"t.*"), (std::vector<Tok>{{256, u"t"}, {245, u".*"}}));
  EXPECT_EQ(Visible(u"a.b"), (std::vector<Tok>{{5, u"a"}, {9, u"."}, {5, u"b"}}));
}

TEST(SQL92Forms, PartialOperatorsAndCharactersThatStartNothing) {
  EXPECT_EQ(Visible(u"|"), (std::vector<Tok>{{248, u"|", true}}));
  EXPECT_EQ(Visible(u"!"), (std::vector<Tok>{{264, u"!", true}}));
  EXPECT_EQ(Visible(u"a|b"), (std::vector<Tok>{{5, u"a"}, {248, u"|", true}, {5, u"b"}}));
  for (const WideString text : {u"#", u"&", u"@", u"^", u"[", u"]", u"\\", u"`"}) {
    EXPECT_EQ(Visible(text), (std::vector<Tok>{{271, text}})) << mv::UTF8Encode(text);
  }
  EXPECT_EQ(Visible(u"@a"), (std::vector<Tok>{{271, u"@"}, {5, u"a"}}));
  EXPECT_EQ(Visible(u"?=1"), (std::vector<Tok>{{260, u"?="}, {3, u"1"}}));
}

TEST(SQL92Comments, LineComments) {
  auto t = All(u"a -- note\nb");
  ASSERT_EQ(t.size(), 6u);
  EXPECT_EQ(t[2].Kind, 238);
  EXPECT_TRUE(t[2].IsComment);
  EXPECT_TRUE(t[2].IsHidden());
  EXPECT_EQ(t[2].Text, u"-- note");
  EXPECT_EQ(t[3].Kind, mv::tkNewLine) << "the line end stays a token of its own";
  auto end = All(u"x--");
  ASSERT_EQ(end.size(), 3u);
  EXPECT_EQ(end[1].Text, u"--");
  EXPECT_TRUE(end[1].IsComment);
  EXPECT_EQ(Visible(u"- -"), (std::vector<Tok>{{247, u"-"}, {247, u"-"}}));
  EXPECT_EQ(Visible(u"a-b"), (std::vector<Tok>{{5, u"a"}, {247, u"-"}, {5, u"b"}}));
}

TEST(SQL92Comments, BlockCommentsNestAndCountLines) {
  auto t = All(u"/* a /* b */ c */x");
  ASSERT_EQ(t.size(), 3u);
  EXPECT_EQ(t[0].Kind, 239);
  EXPECT_EQ(t[0].Text, u"/* a /* b */ c */");
  EXPECT_EQ(t[1].Text, u"x");
  auto open = All(u"/* a");
  ASSERT_EQ(open.size(), 2u);
  EXPECT_EQ(open[0].Text, u"/* a");
  EXPECT_TRUE(open[0].IsComment);
  EXPECT_FALSE(open[0].IsPartial) << "an open comment is a comment";
  auto lines = All(u"/* a\nb\r\nc */ x");
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0].Text, u"/* a\rb\r\nc */") << "a lone LF is kept as CR";
  EXPECT_EQ(lines[2].Line, 3);
  EXPECT_EQ(lines[2].Col, 6);
  EXPECT_EQ(Visible(u"a/b /*+ hint */"), (std::vector<Tok>{{5, u"a"}, {249, u"/"}, {5, u"b"}}));
}

TEST(SQL92Forms, TheEndTokenStandsAtTheLengthOfTheText) {
  auto t = All(u"ab\r\n");
  EXPECT_EQ(t.back().Kind, mv::tkEndOfText);
  EXPECT_EQ(t.back().Pos, 4);
  EXPECT_EQ(t.back().Line, 2);
  EXPECT_EQ(t.back().Col, 1);
  EXPECT_EQ(t.back().Text, u"EOF");
}

TEST(SQL92Forms, WhiteSpaceIsOneTokenPerRun) {
  auto t = All(u"a \t\x0b\x0c b");
  ASSERT_EQ(t.size(), 4u);
  EXPECT_EQ(t[1].Kind, 2);
  EXPECT_EQ(t[1].Text, u" \t\x0b\x0c ");
}

}  // namespace
