// The builders as text sinks: pending blanks and their priorities, line
// starts, keyword case, indents, the one-line builder, and settings.
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

TEST(SQLBuilder, DefaultsOfTheSettings) {
  TSQLBuilder b;
  EXPECT_EQ(b.RightMargin(), 80);
  EXPECT_EQ(b.KeywordFormat(), akfFirstUpper);
  EXPECT_EQ(b.QuoteIdentifiers(), icIfNeed);
  EXPECT_EQ(b.ObjectPrefixSkipping(), opsSkipAll);
  EXPECT_TRUE(b.UseAltNames());
  EXPECT_FALSE(b.ExpandVirtualFields());
  EXPECT_FALSE(b.ExpandVirtualObjects());
  EXPECT_EQ(b.OuterKeywordInLinks(), skDontCare);
  EXPECT_EQ(b.InnerKeywordInLinks(), skDontCare);
  EXPECT_EQ(b.AsKeywordInExpressionAlias(), skDontCare);
  EXPECT_EQ(b.AsKeywordInObjectAlias(), skDontCare);
  EXPECT_TRUE(b.ParenthesizeANDGroups());
  EXPECT_FALSE(b.ParenthesizeSingleCriterion());
  // The expression sub-query format keeps to its lines; the others are defaults.
  EXPECT_FALSE(b.ExpressionsSubQueryFormat().MainPartsFromNewLine());
  const TSQLBuilderFromClauseFormat& from = b.ExpressionsSubQueryFormat().FromClauseFormat();
  EXPECT_FALSE(from.NewLineAfterDatasource());
  EXPECT_FALSE(from.NewLineAfterJoin());
  EXPECT_FALSE(from.NewLineBeforeJoinExpression());
  EXPECT_FALSE(from.NewLineBeforeComma());
  EXPECT_TRUE(b.ExpressionsSubQueryFormat().SelectListFormat().NewLineAfterItem());
  for (TSQLBuilderSelectFormat* f : {&b.MainQueryFormat(), &b.FromSubQueryFormat(), &b.CTESubQueryFormat()}) {
    EXPECT_TRUE(f->MainPartsFromNewLine());
    EXPECT_EQ(f->IndentGlobal(), 0);
    EXPECT_EQ(f->IndentInPart(), 2);
    EXPECT_FALSE(f->NewLineAfterPartKeywords());
    EXPECT_TRUE(f->FromClauseFormat().NewLineAfterDatasource());
    EXPECT_EQ(f->WhereFormat().NewLineBefore(), nlNone);
    EXPECT_EQ(f->WhereFormat().NewLineAfter(), nlTopmostOr);
    EXPECT_EQ(f->HavingFormat().IndentNestedConditions(), 2);
    EXPECT_EQ(f->FromClauseFormat().JoinConditionFormat().NewLineAfter(), nlTopmostOr);
    EXPECT_TRUE(f->OrderByFormat().NewLineAfterItem());
    EXPECT_FALSE(f->GroupByFormat().NewLineBeforeComma());
  }
  TSQLBuilderPiped piped;
  EXPECT_FALSE(piped.DynamicIndents());
  EXPECT_FALSE(piped.DynamicRightMargin());
}

TEST(SQLBuilder, AssignCopiesLayoutButNotKeywordModesOrEvents) {
  TSQLBuilderPiped source;
  source.SetRightMargin(40);
  source.SetKeywordFormat(akfLowerCase);
  source.SetQuoteIdentifiers(icAll);
  source.SetObjectPrefixSkipping(opsSkipNone);
  source.SetUseAltNames(false);
  source.SetExpandVirtualFields(true);
  source.SetExpandVirtualObjects(true);
  source.SetParenthesizeANDGroups(false);
  source.SetParenthesizeSingleCriterion(true);
  source.SetInnerKeywordInLinks(skPrintAlways);
  source.SetOuterKeywordInLinks(skSkipIfPossible);
  source.SetAsKeywordInExpressionAlias(skPrintAlways);
  source.SetAsKeywordInObjectAlias(skPrintAlways);
  source.SetDynamicIndents(true);
  source.SetDynamicRightMargin(true);
  source.MainQueryFormat().SetIndentInPart(7);
  source.CTESubQueryFormat().WhereFormat().SetNewLineAfter(nlAllLogical);
  source.OnBeginBuildSQLForNode = [](TSQLBuilder*, TastNode*) {};

  TSQLBuilderPiped piped;
  TSQLBuilderSelectFormat* mainFormat = &piped.MainQueryFormat();
  piped.Assign(source);
  EXPECT_EQ(piped.RightMargin(), 40);
  EXPECT_EQ(piped.KeywordFormat(), akfLowerCase);
  EXPECT_EQ(piped.QuoteIdentifiers(), icAll);
  EXPECT_EQ(piped.ObjectPrefixSkipping(), opsSkipNone);
  EXPECT_FALSE(piped.UseAltNames());
  EXPECT_TRUE(piped.ExpandVirtualFields());
  EXPECT_TRUE(piped.ExpandVirtualObjects());
  EXPECT_FALSE(piped.ParenthesizeANDGroups());
  EXPECT_TRUE(piped.ParenthesizeSingleCriterion());
  EXPECT_TRUE(piped.DynamicIndents());
  EXPECT_TRUE(piped.DynamicRightMargin());
  EXPECT_EQ(piped.MainQueryFormat().IndentInPart(), 7);
  EXPECT_EQ(piped.CTESubQueryFormat().WhereFormat().NewLineAfter(), nlAllLogical);
  // The owned format stays the same object; its values were copied into it.
  EXPECT_EQ(&piped.MainQueryFormat(), mainFormat);
  EXPECT_EQ(piped.InnerKeywordInLinks(), skDontCare);
  EXPECT_EQ(piped.OuterKeywordInLinks(), skDontCare);
  EXPECT_EQ(piped.AsKeywordInExpressionAlias(), skDontCare);
  EXPECT_EQ(piped.AsKeywordInObjectAlias(), skDontCare);
  EXPECT_FALSE(piped.OnBeginBuildSQLForNode);

  // A base builder takes the common settings, not the piped flags.
  TSQLBuilder base;
  base.Assign(source);
  EXPECT_EQ(base.RightMargin(), 40);
  TSQLBuilderPiped fromBase;
  fromBase.Assign(base);
  EXPECT_FALSE(fromBase.DynamicIndents());
  // Any other class falls to the inherited Assign, which refuses.
  TSQLBuilderSelectFormat format;
  EXPECT_THROW(base.Assign(&format), EConvertError);
  EXPECT_THROW(format.Assign(&base), EConvertError);
}

TEST(SQLBuilder, ChangesNotifyOnceAndOnlyOnAChange) {
  TSQLBuilder builder;
  int updates = 0;
  builder.GetOnUpdated().AddHandler(TmvHandlerId::Unique(), [&updates](TmvObject*) { ++updates; });
  builder.SetRightMargin(80);  // the same value: no notification
  EXPECT_EQ(updates, 0);
  builder.SetRightMargin(60);
  EXPECT_EQ(updates, 1);
  // A change deep inside an owned format reaches the builder.
  builder.MainQueryFormat().FromClauseFormat().JoinConditionFormat().SetIndentNestedConditions(4);
  EXPECT_EQ(updates, 2);
  // A batch reports once at its end.
  TSQLBuilder other;
  other.SetRightMargin(10);
  other.SetKeywordFormat(akfUpperCase);
  other.MainQueryFormat().SetIndentGlobal(3);
  builder.Assign(other);
  EXPECT_EQ(updates, 3);
}

TEST(SQLBuilder, FormatAssignKeepsNestedObjects) {
  TSQLBuilderSelectFormat source;
  source.SetNewLineAfterPartKeywords(true);
  source.FromClauseFormat().SetNewLineAfterJoin(true);
  source.FromClauseFormat().JoinConditionFormat().SetNewLineBefore(nlAllLogical);
  source.OrderByFormat().SetNewLineBeforeComma(true);
  TSQLBuilderSelectFormat target;
  TSQLBuilderFromClauseFormat* from = &target.FromClauseFormat();
  TSQLBuilderConditionFormat* join = &target.FromClauseFormat().JoinConditionFormat();
  target.Assign(source);
  EXPECT_EQ(&target.FromClauseFormat(), from);
  EXPECT_EQ(&target.FromClauseFormat().JoinConditionFormat(), join);
  EXPECT_TRUE(target.NewLineAfterPartKeywords());
  EXPECT_TRUE(from->NewLineAfterJoin());
  EXPECT_EQ(join->NewLineBefore(), nlAllLogical);
  EXPECT_TRUE(target.OrderByFormat().NewLineBeforeComma());
  // The setter of a nested format copies too.
  TSQLBuilderConditionFormat where;
  where.SetIndentNestedConditions(0);
  target.SetWhereFormat(where);
  EXPECT_EQ(target.WhereFormat().IndentNestedConditions(), 0);
  EXPECT_NE(&target.WhereFormat(), &where);
}
