// The character source, the start table, the token text buffer and the
// scanner base's handling of line ends and repeated scans.
#include <gtest/gtest.h>

#include "SQL92Scan.h"
#include "frontend/ScanBuffers.h"
#include "frontend/Scanner.h"

namespace {

using mv::TmvToken;
using mv::WideString;

TEST(TmvBuffer, ReadsPeeksClampsAndStopsAtTheEnd) {
  mv::TmvBuffer b;
  b.Fill(u"ab");
  EXPECT_EQ(b.GetLength(), 2);
  EXPECT_EQ(b.Peek(), u'a');
  EXPECT_EQ(b.Read(), u'a');
  EXPECT_EQ(b.Read(), u'b');
  EXPECT_EQ(b.Read(), -1);
  EXPECT_EQ(b.GetPos(), 2) << "reading at the end does not advance";
  EXPECT_EQ(b.Peek(), -1);
  // SetPos clamps to the end and sends zero and below to one.
  for (auto [to, at] : {std::pair{10, 2}, {1, 1}, {0, 1}, {-5, 1}}) {
    b.SetPos(to);
    EXPECT_EQ(b.GetPos(), at) << to;
  }
  // GetString is one shorter than the span.
  b.Fill(u"select");
  EXPECT_EQ(b.GetString(0, 4), u"sel");
  EXPECT_EQ(b.GetString(2, 3), u"");
}

TEST(TmvCharSet, HoldsEveryCodeUnit) {
  mv::TmvCharSet set;
  EXPECT_FALSE(set.Items(u' '));
  set.SetItems(u' ', true);
  set.SetItems(0xFFFF, true);
  EXPECT_TRUE(set.Items(u' '));
  EXPECT_TRUE(set.Items(0xFFFF));
  EXPECT_FALSE(set.Items(u'!'));
}

TEST(TmvStartTable, EntriesOverrideTheDefaultAndGrowInSteps) {
  mv::TmvStartTable t;
  EXPECT_EQ(t.DefaultState, 0);
  t.DefaultState = 7;
  EXPECT_EQ(t.Items(u'a'), 7);
  EXPECT_EQ(t.Items(0x4E00), 7);
  for (char16_t c = u'0'; c <= u'9'; ++c) t.AddEntry(c, 3);
  t.SetItems(0x4E00, 9);
  EXPECT_EQ(t.Items(u'5'), 3);
  EXPECT_EQ(t.Items(0x4E00), 9);
  EXPECT_EQ(t.FindEntry(0x4E00), 10);
  EXPECT_EQ(t.FindEntry(u'a'), -1);
  t.SetItems(u'5', 4);
  EXPECT_EQ(t.Items(u'5'), 4);
  EXPECT_EQ(t.Count, 11);
  EXPECT_EQ(t.Keys.size(), 32u);
  for (char16_t c = 0x100; c < 0x100 + 30; ++c) t.AddEntry(c, 1);
  EXPECT_EQ(t.Count, 41);
  EXPECT_EQ(t.Keys.size(), 64u);
  EXPECT_EQ(t.Values.size(), 64u);
  EXPECT_EQ(t.Items(0x100 + 29), 1);
}

TEST(TmvSimpleCharBuffer, GrowsByDoublingAndClearsBackToItsStart) {
  mv::TmvSimpleCharBuffer b;
  WideString expected;
  for (int i = 0; i < 200; ++i) {
    b.Append(static_cast<char16_t>(u'a' + i % 26));
    expected += static_cast<char16_t>(u'a' + i % 26);
  }
  b.Append(u"xyz");
  expected += u"xyz";
  EXPECT_EQ(b.ToWideString(), expected);
  EXPECT_EQ(b.GetCount(), 203);
  b.Clear();
  EXPECT_EQ(b.GetCount(), 0);
  EXPECT_EQ(b.ToWideString(), u"");
  b.Append(u'q');
  EXPECT_EQ(b.ToWideString(), u"q");
}

class ScannerBase : public ::testing::Test {
 protected:
  const std::vector<TmvToken>& Scan(const WideString& text) {
    scanner->Init(text);
    return scanner->GetTokens();
  }
  // "text line:col pos" of each token, CR and LF written as \r and \n.
  std::string Dump(const WideString& text) {
    std::string out;
    for (const TmvToken& t : Scan(text)) {
      for (char16_t c : t.Text) out += c == u'\r' ? "\\r" : c == u'\n' ? "\\n" : mv::UTF8Encode(WideString(1, c));
      out += " " + std::to_string(t.Line) + ":" + std::to_string(t.Col) + " " + std::to_string(t.Pos) + "|";
    }
    return out;
  }
  mv::TmvOwned<mv::SQL92Scanner> scanner = mv::TmvCreate<mv::SQL92Scanner>();
};

TEST_F(ScannerBase, LineEndsAndPositions) {
  const std::pair<WideString, std::string> cases[] = {
      // The empty text gives one visible end token at 1:1.
      {u"", "EOF 1:1 0|"},
      // CR LF is one line end; a lone LF is stored as CR; CR CR is two.
      {u"a\r\nb", "a 1:1 0|\\r\\n 1:2 1|b 2:1 3|EOF 2:2 4|"},
      {u"a\nb", "a 1:1 0|\\r 1:2 1|b 2:1 2|EOF 2:2 3|"},
      {u"\r\rx", "\\r 1:1 0|\\r 2:1 1|x 3:1 2|EOF 3:2 3|"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Dump(text), expected) << mv::UTF8Encode(text);
  const auto& empty = Scan(u"");
  EXPECT_EQ(empty[0].Kind, mv::tkEndOfText);
  EXPECT_FALSE(empty[0].IsHidden());
  EXPECT_EQ(Scan(u"a\r\nb")[1].Kind, mv::tkNewLine);
  // Columns count UTF-16 code units: U+1F600 takes two.
  const auto& wide = Scan(u"\U0001F600 a");
  ASSERT_GE(wide.size(), 3u);
  EXPECT_EQ(wide[2].Text, u"a");
  EXPECT_EQ(wide[2].Pos, 3);
  EXPECT_EQ(wide[2].Col, 4);
}

TEST_F(ScannerBase, GetTokenClampsToTheEndToken) {
  Scan(u"a b");
  const TmvToken& end = scanner->GetToken(scanner->GetCount() - 1);
  EXPECT_EQ(end.Kind, mv::tkEndOfText);
  EXPECT_EQ(&scanner->GetToken(-1), &end);
  EXPECT_EQ(&scanner->GetToken(scanner->GetCount()), &end);
  EXPECT_EQ(&scanner->GetToken(1000), &end);
  EXPECT_EQ(end.Pos, 3);
}

TEST_F(ScannerBase, ASecondInitStartsAfresh) {
  Scan(u"a\n\nb\nc");
  ASSERT_GT(scanner->GetCount(), 5);
  EXPECT_EQ(Dump(u"x"), "x 1:1 0|EOF 1:2 1|");
}

TEST_F(ScannerBase, ScanningNeverFails) {
  // Every code unit, the odd ones included, gives tokens; the list always ends
  // with exactly one end token.
  WideString text;
  for (char32_t c = 0; c < 0x10000; c += 97) text += static_cast<char16_t>(c);
  const auto& t = Scan(text);
  int ends = 0;
  size_t covered = 0;
  for (const TmvToken& token : t) {
    ends += token.Kind == mv::tkEndOfText;
    if (token.Kind != mv::tkEndOfText) covered += token.Text.size();
  }
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(t.back().Kind, mv::tkEndOfText);
  EXPECT_EQ(covered, text.size()) << "every unit belongs to exactly one token";
}

TEST_F(ScannerBase, TheScannerClassCreatesAWorkingScanner) {
  const mv::TmvScannerClass& cls = mv::SQL92Scanner::ScannerClass();
  EXPECT_EQ(cls.ClassName(), "SQL92Scanner");
  EXPECT_TRUE(cls.InheritsFrom(mv::TmvBaseScanner::StaticClass()));
  mv::TmvOwned<mv::TmvBaseScanner> made(cls.CreateRaw());
  made->Init(u"select");
  EXPECT_EQ(made->GetToken(0).Kind, mv::SQL92Scanner::kwSELECT);
}

}  // namespace
