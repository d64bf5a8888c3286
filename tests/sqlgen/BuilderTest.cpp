// The builders as text sinks: pending blanks and their priorities, line
// starts, keyword case, indents, the one-line builder, and wrapping at the
// right margin in the piped builder. The settings (defaults, names, Assign)
// are FormatOptionsTest's.
#include <gtest/gtest.h>

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLBuilderPiped.h"

using namespace mv;

namespace {

// Runs `write` between BeginBuild and EndBuild and returns the text.
template <class Write>
WideString Build(TSQLBuilder& builder, Write write) {
  builder.BeginBuild();
  write(builder);
  builder.EndBuild();
  return builder.GetResult();
}

}  // namespace

TEST(SQLBuilder, SpacesMergeAndLineStartsSwallowBlanksAndEmptyLines) {
  TSQLBuilder builder;
  EXPECT_EQ(Build(builder,
                  [](TSQLBuilder& b) {
                    b.NewLine();  // a line break first gives no empty line
                    b.Space(3);   // nor does a blank at the start of a line
                    b.WriteKeyword(u"Select");
                    b.Space(3);
                    b.Space(1);
                    b.Space(2);
                    b.WriteIdentifier(u"a");
                    b.NewLine();
                    b.NewLine();  // twice is once
                    b.Space(3);
                    b.WriteKeyword(u"From");
                  }),
            u"Select a\r\nFrom");
}

TEST(SQLBuilder, PendingBlankIsWrittenBeforeTheLineEndInTheBaseBuilder) {
  TSQLBuilder plain;
  TSQLBuilderPiped piped;
  auto write = [](TSQLBuilder& b) {
    b.WriteSymbol(u"a");
    b.Space(3);
    b.NewLine();
    b.WriteSymbol(u"b");
  };
  EXPECT_EQ(Build(plain, write), u"a \r\nb");
  EXPECT_EQ(Build(piped, write), u"a\r\nb");
}

TEST(SQLBuilder, KeywordCaseChangesOnlyKeywords) {
  TSQLBuilder builder;
  auto write = [](TSQLBuilder& b) {
    b.WriteKeyword(u"Select");
    b.Space(3);
    b.WriteIdentifier(u"MixedName");
    b.Space(3);
    b.WriteString(u"'Str'");
    b.Space(3);
    b.WriteBuiltin(u"Upper");
    b.WriteSymbol(u"(");
    b.WriteNumber(u"1E5");
    b.WriteSymbol(u")");
  };
  EXPECT_EQ(Build(builder, write), u"Select MixedName 'Str' Upper(1E5)");
  builder.SetKeywordFormat(akfUpperCase);
  EXPECT_EQ(Build(builder, write), u"SELECT MixedName 'Str' Upper(1E5)");
  builder.SetKeywordFormat(akfLowerCase);
  EXPECT_EQ(Build(builder, write), u"select MixedName 'Str' Upper(1E5)");
}

TEST(SQLBuilder, IndentsAreAbsoluteAndWrittenAtLineStart) {
  TSQLBuilder builder;
  EXPECT_EQ(Build(builder,
                  [](TSQLBuilder& b) {
                    b.WriteKeyword(u"A");
                    b.AddIndent(2);
                    b.NewLine();
                    b.WriteKeyword(u"B");
                    b.AddIndent(1.5);  // 3.5 rounds up to 4 blanks
                    EXPECT_DOUBLE_EQ(b.CurrentIndent(), 3.5);
                    b.NewLine();
                    b.WriteKeyword(u"C");
                    b.EndIndent();
                    b.NewLine();
                    b.WriteKeyword(u"D");
                    b.EndIndent();
                    b.NewLine();
                    b.WriteKeyword(u"E");
                  }),
            u"A\r\n  B\r\n    C\r\n  D\r\nE");
  EXPECT_DOUBLE_EQ(builder.CurrentIndent(), 0.0);
  // A build left with an indent open: the next build starts over.
  auto open = [](TSQLBuilder& b) {
    b.AddIndent(4);
    b.WriteSymbol(u"x");
  };
  EXPECT_EQ(Build(builder, open), u"    x");
  EXPECT_EQ(Build(builder, open), u"    x");
}

TEST(SQLBuilder, FastBuilderWritesOneLine) {
  TSQLBuilderFast fast;
  EXPECT_EQ(Build(fast,
                  [](TSQLBuilder& b) {
                    b.WriteKeyword(u"Select");
                    b.AddIndent(2);
                    b.NewLine();
                    b.WriteIdentifier(u"a");
                    b.NewLine();
                    b.NewLine();
                    b.WriteKeyword(u"From");
                    b.NewLine();
                    b.Space(1);
                    b.WriteIdentifier(u"t");
                    b.EndIndent();
                  }),
            u"Select a From t");
  EXPECT_DOUBLE_EQ(fast.CurrentIndent(), 0.0);
}

// --- Wrapping in the piped builder: which break candidate wins, and what
// happens when none fits ---

namespace {

// The write stream of "Select aaaa, bbbb, cccc, dddd From t" as a select
// statement prints it with the list on one line (blanks of priority 2 after
// the commas, part content indented by 2).
void WriteSelect(TSQLBuilder& b) {
  b.WriteKeyword(u"Select");
  b.AddIndent(2);
  b.Space(3);
  const char16_t* names[] = {u"aaaa", u"bbbb", u"cccc", u"dddd"};
  for (int i = 0; i < 4; ++i) {
    if (i > 0) {
      b.WriteSymbol(u",");
      b.Space(2);
    }
    b.WriteIdentifier(names[i]);
  }
  b.EndIndent();
  b.NewLineOrSpace(true, 0);
  b.WriteKeyword(u"From");
  b.AddIndent(2);
  b.Space(1);
  b.WriteIdentifier(u"t");
  b.EndIndent();
}

// Words, each followed (but the last) by a blank of the priority given with it.
void WriteWords(TSQLBuilder& b, std::initializer_list<std::pair<const char16_t*, int>> words) {
  size_t left = words.size();
  for (auto [word, priority] : words) {
    b.WriteIdentifier(word);
    if (--left > 0) b.Space(priority);
  }
}

}  // namespace

TEST(PipedBuilder, BreakScoreCalibration) {
  // Priority 0 scores 100 wherever it stands.
  EXPECT_DOUBLE_EQ(TSQLBuilderPiped::BreakScore(0, 55.0), 100.0);
  EXPECT_DOUBLE_EQ(TSQLBuilderPiped::BreakScore(0, -3.0), 100.0);
  // A better priority buys distance: 1 at 30 columns equals 3 at 10.
  EXPECT_DOUBLE_EQ(TSQLBuilderPiped::BreakScore(1, 30.0), 70.0);
  EXPECT_DOUBLE_EQ(TSQLBuilderPiped::BreakScore(3, 10.0), 70.0);
  // The last ten columns count almost alike: 10 and 0 score the same.
  EXPECT_DOUBLE_EQ(TSQLBuilderPiped::BreakScore(2, 0.0), TSQLBuilderPiped::BreakScore(2, 10.0));
  EXPECT_DOUBLE_EQ(TSQLBuilderPiped::BreakScore(2, 5.0), 100.0 - 2 * 10.5);
  // Past the margin a distance still maps near 10.
  EXPECT_DOUBLE_EQ(TSQLBuilderPiped::BreakScore(1, -5.0), 100.0 - 9.5);
}

TEST(PipedBuilder, BreaksAtTheBestBlankBeforeTheOverflow) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(20);
  EXPECT_EQ(Build(piped, WriteSelect), u"Select aaaa, bbbb,\r\n  cccc, dddd\r\nFrom t");
  // The same stream on the one-line builder.
  TSQLBuilderFast fast;
  EXPECT_EQ(Build(fast, WriteSelect), u"Select aaaa, bbbb, cccc, dddd From t");
}

TEST(PipedBuilder, NoMarginMeansNoSoftBreak) {
  for (int margin : {0, -5}) {
    TSQLBuilderPiped piped;
    piped.SetRightMargin(margin);
    EXPECT_EQ(Build(piped, WriteSelect), u"Select aaaa, bbbb, cccc, dddd\r\nFrom t") << margin;
  }
}

TEST(PipedBuilder, TextEndingExactlyAtTheMarginFits) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(11);
  auto write = [](TSQLBuilder& b) { WriteWords(b, {{u"aaaaa", 3}, {u"bbbbb", 3}}); };
  EXPECT_EQ(Build(piped, write), u"aaaaa bbbbb");
  piped.SetRightMargin(10);
  EXPECT_EQ(Build(piped, write), u"aaaaa\r\nbbbbb");
}

TEST(PipedBuilder, WideTokenWithoutCandidateIsWrittenWithTheRestOfTheLine) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(5);
  // The first element already crosses the margin, with no candidate before
  // it: the whole line is written unbroken, although blanks follow.
  EXPECT_EQ(Build(piped, [](TSQLBuilder& b) { WriteWords(b, {{u"abcdefgh", 3}, {u"ij", 3}, {u"kl", 3}}); }),
            u"abcdefgh ij kl");
  // The hard line after it is broken again.
  EXPECT_EQ(Build(piped,
                  [](TSQLBuilder& b) {
                    WriteWords(b, {{u"abcdefgh", 3}, {u"ij", 3}});
                    b.NewLine();
                    WriteWords(b, {{u"abc", 3}, {u"de", 3}});
                  }),
            u"abcdefgh ij\r\nabc\r\nde");
}

TEST(PipedBuilder, LastOfEqualCandidatesWins) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(12);
  // Priority 0 scores 100 anywhere: the last one before the overflow wins.
  EXPECT_EQ(Build(piped, [](TSQLBuilder& b) { WriteWords(b, {{u"aa", 0}, {u"bb", 0}, {u"cc", 0}, {u"dddddd", 0}}); }),
            u"aa bb cc\r\ndddddd");
  // Priority-2 blanks 10 columns and 0 columns before the margin score
  // alike (80): the later one wins, although it is the element that crosses
  // the margin itself.
  EXPECT_EQ(Build(piped, [](TSQLBuilder& b) { WriteWords(b, {{u"aa", 2}, {u"bbbbbbbbb", 2}, {u"cc", 2}}); }),
            u"aa bbbbbbbbb\r\ncc");
}

TEST(PipedBuilder, BetterPriorityBeatsCloserBlank) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(40);
  // A priority-1 blank 30 columns before the margin scores 70; a priority-3
  // blank 9 columns before it scores 100 - 3 * 10.9 = 67.3: the first wins.
  EXPECT_EQ(Build(piped,
                  [](TSQLBuilder& b) {
                    WriteWords(b, {{u"aaaaaaaaaa", 1}, {u"bbbbbbbbbbbbbbbbbbbb", 3}, {u"cccccccccccc", 3}});
                  }),
            u"aaaaaaaaaa\r\nbbbbbbbbbbbbbbbbbbbb cccccccccccc");
}

TEST(PipedBuilder, ForbiddenBreakAndGoodBreakPoints) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(8);
  // A blank of priority -1 is no candidate: with none before the overflow
  // the line is written whole.
  EXPECT_EQ(Build(piped, [](TSQLBuilder& b) { WriteWords(b, {{u"aaaa", -1}, {u"bbbb", 3}, {u"cccc", 3}}); }),
            u"aaaa bbbb cccc");
  // A good break point breaks without taking a blank away.
  EXPECT_EQ(Build(piped,
                  [](TSQLBuilder& b) {
                    b.WriteIdentifier(u"aaaaa");
                    b.GoodNewLinePos(0);
                    b.WriteSymbol(u"(");
                    b.WriteIdentifier(u"bbbbb");
                    b.WriteSymbol(u")");
                  }),
            u"aaaaa\r\n(bbbbb)");
}

TEST(PipedBuilder, ContinuationLinesTakeTheIndentOfTheirTime) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(13);
  // The indent added inside the line takes effect only once emitted, so the
  // continuation line is indented and the first line is measured without it.
  EXPECT_EQ(Build(piped,
                  [](TSQLBuilder& b) {
                    b.WriteKeyword(u"Where");
                    b.AddIndent(4);
                    b.Space(1);
                    WriteWords(b, {{u"aaaa", 1}, {u"bbbb", 1}, {u"cccc", 1}});
                    b.EndIndent();
                  }),
            u"Where aaaa\r\n    bbbb cccc");
}

TEST(PipedBuilder, DynamicIndentsAlignUnderTheFirstWord) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(16);
  piped.SetDynamicIndents(true);
  auto write = [](TSQLBuilder& b) {
    b.WriteKeyword(u"Select");
    b.AddIndent(2);
    b.Space(3);
    WriteWords(b, {{u"aaaa", 2}, {u"bbbb", 2}, {u"cccc", 2}, {u"dddd", 2}});
    b.EndIndent();
  };
  // "Select" is 6 wide and a blank follows: continuation lines start at 7.
  EXPECT_EQ(Build(piped, write), u"Select aaaa bbbb\r\n       cccc dddd");
  piped.SetDynamicIndents(false);
  EXPECT_EQ(Build(piped, write), u"Select aaaa bbbb\r\n  cccc dddd");
}

TEST(PipedBuilder, DynamicRightMarginMeasuresFromTheIndent) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(10);
  auto write = [](TSQLBuilder& b) {
    b.WriteIdentifier(u"x");
    b.AddIndent(6);
    b.NewLine();  // the indent is in force from the second line on
    WriteWords(b, {{u"aaaa", 3}, {u"bbbb", 3}});
    b.EndIndent();
  };
  // Measured from column 0 the second line would need 15 columns.
  EXPECT_EQ(Build(piped, write), u"x\r\n      aaaa\r\n      bbbb");
  piped.SetDynamicRightMargin(true);
  EXPECT_EQ(Build(piped, write), u"x\r\n      aaaa bbbb");
}

TEST(PipedBuilder, MergedBlankTakesTheBestPriority) {
  TSQLBuilderPiped piped;
  piped.SetRightMargin(12);
  // Space(3) then Space(1) give one blank of priority 1, which beats the
  // priority-2 blank closer to the margin; with priority 3 it would lose.
  EXPECT_EQ(Build(piped,
                  [](TSQLBuilder& b) {
                    b.WriteIdentifier(u"aaaa");
                    b.Space(3);
                    b.Space(1);
                    b.WriteIdentifier(u"bbbb");
                    b.Space(2);
                    b.WriteIdentifier(u"cccccc");
                  }),
            u"aaaa\r\nbbbb cccccc");
  EXPECT_EQ(Build(piped,
                  [](TSQLBuilder& b) {
                    b.WriteIdentifier(u"aaaa");
                    b.Space(3);
                    b.WriteIdentifier(u"bbbb");
                    b.Space(2);
                    b.WriteIdentifier(u"cccccc");
                  }),
            u"aaaa bbbb\r\ncccccc");
}
