#include "support/Variant.h"

#include <gtest/gtest.h>

#include "Thrown.h"

using namespace mv;

TEST(Variant, EmptyAndNullAreDistinct) {
  TmvVariant empty;
  TmvVariant null = TmvVariant::Null();
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_TRUE(null.IsNull());
  EXPECT_TRUE(empty.IsClear());
  EXPECT_TRUE(null.IsClear());
  EXPECT_FALSE(empty == null);
  EXPECT_TRUE(null == TmvVariant::Null());
  EXPECT_FALSE(null == TmvVariant(0));
  EXPECT_EQ(empty.AsInt64(), 0);
  EXPECT_THROW(null.AsInt64(), EVariantError);
  EXPECT_EQ(VarToWideStrDef(null, u"-"), u"-");
}

TEST(Variant, LooseEqualityAcrossTypes) {
  EXPECT_TRUE(TmvVariant(1) == TmvVariant(u"1"));
  EXPECT_TRUE(TmvVariant(u" 2.5") == TmvVariant(2.5));
  EXPECT_TRUE(TmvVariant(3) == TmvVariant(3.0));
  EXPECT_FALSE(TmvVariant(u"abc") == TmvVariant(1));
  EXPECT_FALSE(TmvVariant(u"a") == TmvVariant(u"A"));
  EXPECT_TRUE(TmvVariant(true) == TmvVariant(1));
  EXPECT_TRUE(TmvVariant(TmvVariantArray{1, u"x"}) == TmvVariant(TmvVariantArray{u"1", u"x"}));
}

TEST(Variant, Conversions) {
  EXPECT_EQ(TmvVariant(u"42").AsInteger(), 42);
  EXPECT_EQ(TmvVariant(2.5).AsWideString(), u"2.5");
  EXPECT_EQ(TmvVariant(true).AsWideString(), u"True");
  EXPECT_TRUE(TmvVariant(u"TRUE").AsBoolean());
  EXPECT_THROW(TmvVariant(u"x").AsFloat(), EVariantError);
  // Numbers in text take the C form only, whatever the locale.
  EXPECT_EQ(TmvVariant(u" 1e3 ").AsFloat(), 1000.0);
  EXPECT_THROW(TmvVariant(u"inf").AsFloat(), EVariantError);
  EXPECT_THROW(TmvVariant(u"2,5").AsFloat(), EVariantError);
  EXPECT_EQ(TmvVariant(1e20).AsWideString(), u"1e+20");
  EXPECT_EQ(TmvVariant(0.1 + 0.2).AsWideString(), u"0.3");
  EXPECT_THROW(TmvVariant(int64_t(1) << 40).AsInteger(), EVariantError);
  EXPECT_EQ(mvtest::ThrownMessage<EVariantError>([] { TmvVariant::Null().AsWideString(); }),
            u"Could not convert variant of type (Null) into type (String)");
}
