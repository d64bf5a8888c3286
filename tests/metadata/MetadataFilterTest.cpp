// The metadata filter: masks on the client and the condition for the server.
#include <gtest/gtest.h>

#include "MetadataTestSupport.h"
#include "Thrown.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataMask.h"
#include "support/Exceptions.h"

using namespace mv;
using namespace mv::test;

TEST(MetadataMaskTest, WildcardsMatchAsInLike) {
  EXPECT_TRUE(MatchesMask(u"ABC", u"A%", true));
  EXPECT_FALSE(MatchesMask(u"abc", u"A%", true));
  EXPECT_TRUE(MatchesMask(u"abc", u"A%", false));
  EXPECT_TRUE(MatchesMask(u"A", u"A%", true));
  EXPECT_FALSE(MatchesMask(u"BA", u"A%", true));
  EXPECT_TRUE(MatchesMask(u"xAy", u"%A%", true));
  EXPECT_TRUE(MatchesMask(u"abc", u"a_c", true));
  EXPECT_FALSE(MatchesMask(u"ac", u"a_c", true));
  EXPECT_FALSE(MatchesMask(u"abcd", u"a_c", true));
  // The first place that fits is not always the right one.
  EXPECT_TRUE(MatchesMask(u"abcabd", u"%ab_", true));
  EXPECT_TRUE(MatchesMask(u"aXbXbY", u"a%b%Y", true));
  EXPECT_FALSE(MatchesMask(u"aXbXbY", u"a%b%Z", true));
}

TEST(MetadataMaskTest, OneCharRightAfterAnyCharIsDropped) {
  for (const char16_t* text : {u"", u"x", u"xyz"})
    EXPECT_EQ(MatchesMask(text, u"%_", true), MatchesMask(text, u"%", true));
  EXPECT_TRUE(MatchesMask(u"", u"%_", true));
  EXPECT_FALSE(MatchesMask(u"", u"_", true));
  EXPECT_TRUE(MatchesMask(u"x", u"_", true));
}

TEST(MetadataMaskTest, BracketsAndQuotesHoldLiterals) {
  EXPECT_TRUE(MatchesMask(u"50%", u"50[%]", true));
  EXPECT_FALSE(MatchesMask(u"500", u"50[%]", true));
  EXPECT_TRUE(MatchesMask(u"a_b", u"a\"_\"b", true));
  EXPECT_FALSE(MatchesMask(u"axb", u"a\"_\"b", true));
  EXPECT_TRUE(MatchesMask(u"T_X1", u"%[_]X%", true));
}

TEST(MetadataMaskTest, TooManyStepsAfterAnyCharAreAnInvalidMask) {
  WideString thirty;
  for (int i = 0; i < 30; ++i) thirty += u"%a";
  EXPECT_TRUE(MatchesMask(WideString(30, u'a'), thirty, true));
  EXPECT_EQ(mvtest::ThrownMessage([&] { TMask mask(thirty + u"%a"); }), u"Invalid Mask");
  EXPECT_THROW(TMask(WideString(130, u'a')), Exception);
  EXPECT_THROW(TMask(u"[abc"), Exception);
}

class MetadataFilterTest : public MetadataTest {
 protected:
  TmvMetadataFilterItem* Item(WideStringView schemaMask, WideStringView objectMask, bool exclude = false) {
    TmvMetadataFilterItem* item = filter.Add();
    item->SetSchemaMask(schemaMask);
    item->SetObjectMask(objectMask);
    item->SetExclude(exclude);
    return item;
  }
  bool Passes(TmvMetadataObject* object) const { return filter.FilterMetadataObject(object); }
  WideString Condition(TmvMetadataFilterApplyFor kind = mfTables) const {
    return filter.CreatePrefilterCondition(&context, u"SCHEMA", u"NAME", kind);
  }

  TmvMetadataFilter filter;
};

TEST_F(MetadataFilterTest, NewItemLimitsNothing) {
  TmvMetadataTable* table = Table({u"dbo", u"t"});
  EXPECT_TRUE(Passes(table));
  EXPECT_EQ(Condition(), u"");
  filter.Add();
  EXPECT_TRUE(Passes(table));
  EXPECT_TRUE(Passes(View({u"v"})));
  EXPECT_EQ(Condition(), u"");
}

TEST_F(MetadataFilterTest, AnItemForTablesLeavesViewsAlone) {
  Item(u"%", u"A%")->SetApplyFor(MetadataFilterKindBit(mfTables));
  EXPECT_TRUE(Passes(Table({u"Abc"})));
  EXPECT_FALSE(Passes(Table({u"Xyz"})));
  EXPECT_TRUE(Passes(View({u"Xyz"})));
  EXPECT_EQ(Condition(mfTables), u"(NAME like 'A%')");
  EXPECT_EQ(Condition(mfViews), u"");
}

TEST_F(MetadataFilterTest, ExcludeItemsAloneKeepEverythingElse) {
  Item(u"", u"%_TMP", true);
  EXPECT_TRUE(Passes(Table({u"orders"})));
  EXPECT_FALSE(Passes(Table({u"orders_TMP"})));
  EXPECT_EQ(Condition(), u"(NAME not like '%_TMP')");
}

TEST_F(MetadataFilterTest, ExcludeBeatsIncludeWhateverTheOrder) {
  Item(u"", u"ORD%", true);
  Item(u"dbo", u"%");
  EXPECT_FALSE(Passes(Table({u"dbo", u"ORDERS"})));
  EXPECT_TRUE(Passes(Table({u"dbo", u"ITEMS"})));
  // No include item matched the schema.
  EXPECT_FALSE(Passes(Table({u"hr", u"ITEMS"})));
  // An empty schema does not match "dbo".
  EXPECT_FALSE(Passes(Table({u"ITEMS"})));
}

TEST_F(MetadataFilterTest, CaseFlagsDecideMatching) {
  TmvMetadataFilterItem* item = Item(u"", u"A%");
  EXPECT_FALSE(Passes(Table({u"abc"})));
  item->SetObjectMaskCaseSensitive(false);
  EXPECT_TRUE(Passes(Table({u"abc2"})));
}

TEST_F(MetadataFilterTest, ConditionsJoinItemsAndParts) {
  Item(u"dbo", u"%");
  Item(u"%", u"A%")->SetObjectMaskCaseSensitive(false);
  Item(u"", u"%_TMP", true);
  EXPECT_EQ(Condition(), u"((SCHEMA like 'dbo')or(upper(NAME) like upper('A%')))and((NAME not like '%_TMP'))");

  filter.Clear();
  TmvMetadataFilterItem* both = Item(u"dbo", u"A%");
  both->SetObjectMaskCaseSensitive(false);
  Item(u"", u"%_TMP", true);
  Item(u"", u"X%", true);
  EXPECT_EQ(Condition(),
            u"(((SCHEMA like 'dbo'))and((upper(NAME) like upper('A%'))))and((NAME not like '%_TMP')and(NAME not like "
            u"'X%'))");
}

TEST_F(MetadataFilterTest, CaseBlindConditionsUseTheDialectsUpperFunction) {
  provider.upperFunction = u"ucase";
  Item(u"Sales", u"%")->SetSchemaMaskCaseSensitive(false);
  EXPECT_EQ(Condition(), u"(ucase(SCHEMA) like ucase('Sales'))");
}

TEST_F(MetadataFilterTest, ServerMasksTranslateWildcardsAndQuoteTheirText) {
  Item(u"", u"a[%]b_\"_\"c");
  EXPECT_EQ(filter.CreatePrefilterCondition(&context, u"s", u"n", mfTables, u"*", u"?"), u"(n like 'a%b?_c')");
  // A quote in a mask cannot end the literal early.
  filter.Clear();
  Item(u"", u"x' or 1=1 --");
  EXPECT_EQ(Condition(), u"(NAME like 'x'' or 1=1 --')");
}

TEST_F(MetadataFilterTest, AssignCopiesTheItems) {
  Item(u"dbo", u"A%", true)->SetApplyFor(MetadataFilterKindBit(mfViews) | MetadataFilterKindBit(mfSynonyms));
  TmvMetadataFilter copy;
  copy.Assign(&filter);
  ASSERT_EQ(copy.Count(), 1);
  EXPECT_EQ(copy.Items(0)->SchemaMask(), u"dbo");
  EXPECT_EQ(copy.Items(0)->ObjectMask(), u"A%");
  EXPECT_TRUE(copy.Items(0)->Exclude());
  EXPECT_TRUE(copy.Items(0)->AppliesTo(mfSynonyms));
  EXPECT_FALSE(copy.Items(0)->AppliesTo(mfTables));
}
