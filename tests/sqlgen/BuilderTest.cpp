// The builders as text sinks: pending blanks and their priorities, line
// starts, keyword case, indents and the one-line builder. The settings
// (defaults, names, Assign) are FormatOptionsTest's.
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

TEST(SQLBuilder, SpacesMergeAndVanishAtLineStart) {
  TSQLBuilder builder;
  EXPECT_EQ(Build(builder,
                  [](TSQLBuilder& b) {
                    b.Space(3);  // first request of the build: the line start swallows it
                    b.WriteKeyword(u"Select");
                    b.Space(3);
                    b.Space(1);
                    b.Space(2);
                    b.WriteIdentifier(u"a");
                    b.NewLine();
                    b.Space(3);  // directly after a line break: no blank at the start
                    b.WriteKeyword(u"From");
                  }),
            u"Select a\r\nFrom");
}

TEST(SQLBuilder, NewLineTwiceAndFirstGiveNoEmptyLines) {
  TSQLBuilder builder;
  EXPECT_EQ(Build(builder,
                  [](TSQLBuilder& b) {
                    b.NewLine();
                    b.WriteSymbol(u"a");
                    b.NewLine();
                    b.NewLine();
                    b.WriteSymbol(u"b");
                  }),
            u"a\r\nb");
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

TEST(SQLBuilder, BuildsCanBeRepeated) {
  TSQLBuilder builder;
  auto write = [](TSQLBuilder& b) {
    b.AddIndent(4);
    b.WriteSymbol(u"x");
  };
  EXPECT_EQ(Build(builder, write), u"    x");
  // The indent stack and the result start over.
  EXPECT_EQ(Build(builder, write), u"    x");
  EXPECT_EQ(builder.GetResult(), u"    x");
}
