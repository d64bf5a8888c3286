#include "support/FieldTypeNames.h"

#include <gtest/gtest.h>

#include <set>

#include "support/VariantHelpers.h"

using namespace mv;

TEST(FieldTypeNames, TextOfEachType) {
  EXPECT_EQ(FieldTypeToString(ftUnknown), u"");
  EXPECT_EQ(FieldTypeToString(ftString), u"String");
  EXPECT_EQ(FieldTypeToString(ftDateTime), u"Datetime");
  EXPECT_EQ(FieldTypeToString(ftVarBytes), u"Varbytes");
  EXPECT_EQ(FieldTypeToString(ftAutoInc), u"Autoinc");
  EXPECT_EQ(FieldTypeToString(ftADT), u"ATD");  // as the files have always spelled it
  EXPECT_EQ(FieldTypeToString(ftDataSet), u"Dataset");
  EXPECT_EQ(FieldTypeToString(ftOraBlob), u"Blob");
  EXPECT_EQ(FieldTypeToString(ftOraClob), u"Clob");
  EXPECT_EQ(FieldTypeToString(ftGuid), u"Guid");
  EXPECT_EQ(FieldTypeToString(static_cast<TFieldType>(36)), u"");
  EXPECT_EQ(FieldTypeToString(static_cast<TFieldType>(-1)), u"");
  // Every type but the unknown one has a text.
  for (int i = 1; i < kFieldTypeCount; ++i) EXPECT_FALSE(FieldTypeToString(static_cast<TFieldType>(i)).empty()) << i;
}

TEST(FieldTypeNames, DatabaseTypeNamesIgnoreCase) {
  EXPECT_EQ(DBTypeXMLToFieldType(u"INT32"), ftInteger);
  EXPECT_EQ(DBTypeXMLToFieldType(u"int32"), ftInteger);
  EXPECT_EQ(DBTypeXMLToFieldType(u"AnsiString"), ftString);
  EXPECT_EQ(DBTypeXMLToFieldType(u"String"), ftWideString);
  EXPECT_EQ(DBTypeXMLToFieldType(u"ANSISTRINGFIXEDLENGTH"), ftFixedChar);
  EXPECT_EQ(DBTypeXMLToFieldType(u"binary"), ftBlob);
  EXPECT_EQ(DBTypeXMLToFieldType(u"DECIMAL"), ftBCD);
  EXPECT_EQ(DBTypeXMLToFieldType(u"UINT16"), ftWord);
  EXPECT_EQ(DBTypeXMLToFieldType(u"GUID"), ftGuid);
  EXPECT_EQ(DBTypeXMLToFieldType(u"OBJECT"), ftUnknown);
  EXPECT_EQ(DBTypeXMLToFieldType(u"VARCHAR"), ftUnknown);
  EXPECT_EQ(DBTypeXMLToFieldType(u""), ftUnknown);
}

TEST(FieldTypeNames, JdbcTypeNumbers) {
  const std::pair<int, TFieldType> cases[] = {
      {-16, ftWideString}, {-15, ftWideString}, {-9, ftWideString}, {-8, ftUnknown}, {-5, ftLargeint},
      {-4, ftVarBytes},    {-3, ftVarBytes},    {-2, ftBytes},      {-1, ftString},  {1, ftString},
      {2, ftFloat},        {3, ftBCD},          {4, ftInteger},     {5, ftSmallint}, {6, ftFloat},
      {7, ftFloat},        {8, ftFloat},        {12, ftString},     {16, ftBoolean}, {70, ftDataSet},
      {91, ftDate},        {92, ftTime},        {2001, ftUnknown},  {2002, ftUnknown}, {2003, ftArray},
      {2004, ftBlob},      {2005, ftOraClob},   {2006, ftReference}, {2009, ftUnknown}, {2011, ftOraClob},
      {0, ftUnknown},      {93, ftUnknown},     {-7, ftUnknown},    {9999, ftUnknown},
  };
  for (const auto& [number, type] : cases) EXPECT_EQ(JavaTypeXMLToFieldType(number), type) << number;
}

TEST(FieldTypeNames, GuessFromAnXMLValue) {
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant()), ftUnknown);
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant::Null()), ftUnknown);
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(u"3")), ftInteger);
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(u" 24 ")), ftWideString);
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(u"INT64")), ftLargeint);
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(u"-1")), ftUnknown);  // -1 goes to the names, and is none
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(u"99")), ftUnknown);  // no such ordinal
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(11)), ftDateTime);
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(5.0)), ftBoolean);
  EXPECT_EQ(GuessTypeFromXMLValue(TmvVariant(u"")), ftUnknown);
}

TEST(VariantHelpers, ConvertVariantToIntDef) {
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant::Null(), 7), 7);
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(u"42"), 7), 42);
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(u"4x"), 7), 7);
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(u"99999999999"), 7), 7);  // beyond 32 bits
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(u""), 7), 7);
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(12), 7), 12);
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(true), 7), 1);
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(2.6), 7), 3);
  EXPECT_EQ(ConvertVariantToIntDef(TmvVariant(), 7), 0);  // Empty is no Null: it converts
  EXPECT_THROW(ConvertVariantToIntDef(TmvVariant(TmvVariantArray{1, 2}), 7), EVariantError);
}

TEST(VariantHelpers, IsValueLikeVariant) {
  const TmvVariant tables(TmvVariantArray{u"TABLE", u"BASE TABLE", 1});
  EXPECT_TRUE(IsValueLikeVariant(u"TABLE", tables));
  EXPECT_TRUE(IsValueLikeVariant(u"BASE TABLE", tables));
  EXPECT_TRUE(IsValueLikeVariant(1, tables));
  EXPECT_TRUE(IsValueLikeVariant(u"1", tables));  // loose equality of text and number
  EXPECT_FALSE(IsValueLikeVariant(u"table", tables));
  EXPECT_FALSE(IsValueLikeVariant(u"VIEW", tables));
  EXPECT_FALSE(IsValueLikeVariant(u"TABLE", TmvVariant()));
  EXPECT_FALSE(IsValueLikeVariant(TmvVariant(), TmvVariant()));
  EXPECT_FALSE(IsValueLikeVariant(u"TABLE", TmvVariant(TmvVariantArray{})));
  EXPECT_TRUE(IsValueLikeVariant(u"V", TmvVariant(u"V")));
  EXPECT_FALSE(IsValueLikeVariant(u"V", TmvVariant(u"T")));
  EXPECT_TRUE(IsValueLikeVariant(TmvVariant::Null(), TmvVariant::Null()));
}
