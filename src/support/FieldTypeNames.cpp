#include "support/FieldTypeNames.h"

#include <iterator>

namespace mv {

namespace {

// Indexed by ordinal.
constexpr const char16_t* kFieldTypeTexts[kFieldTypeCount] = {
    u"",         u"String",      u"Smallint",  u"Integer",   u"Word",       u"Boolean",
    u"Float",    u"Currency",    u"BCD",       u"Date",      u"Time",       u"Datetime",
    u"Bytes",    u"Varbytes",    u"Autoinc",   u"Blob",      u"Memo",       u"Graphic",
    u"FmtMemo",  u"ParadoxOle",  u"DBaseOle",  u"TypedBinary", u"Cursor",   u"FixedChar",
    u"WideString", u"Largeint",  u"ATD",       u"Array",     u"Reference",  u"Dataset",
    u"Blob",     u"Clob",        u"Variant",   u"Interface", u"IDispatch",  u"Guid",
};

struct DBTypeName {
  const char16_t* text;
  TFieldType type;
};

constexpr DBTypeName kDBTypeNames[] = {
    {u"OBJECT", ftUnknown},       {u"ANSISTRING", ftString},  {u"INT16", ftSmallint},
    {u"INT32", ftInteger},        {u"UINT16", ftWord},        {u"BOOLEAN", ftBoolean},
    {u"DOUBLE", ftFloat},         {u"CURRENCY", ftCurrency},  {u"GUID", ftGuid},
    {u"DECIMAL", ftBCD},          {u"DATE", ftDate},          {u"TIME", ftTime},
    {u"DATETIME", ftDateTime},    {u"BINARY", ftBlob},        {u"ANSISTRINGFIXEDLENGTH", ftFixedChar},
    {u"STRING", ftWideString},    {u"INT64", ftLargeint},
};

struct JavaTypeNumber {
  int number;
  TFieldType type;
};

constexpr JavaTypeNumber kJavaTypeNumbers[] = {
    {-16, ftWideString}, {-15, ftWideString}, {-9, ftWideString}, {-8, ftUnknown},
    {-5, ftLargeint},    {-4, ftVarBytes},    {-3, ftVarBytes},   {-2, ftBytes},
    {-1, ftString},      {1, ftString},       {2, ftFloat},       {3, ftBCD},
    {4, ftInteger},      {5, ftSmallint},     {7, ftFloat},       {6, ftFloat},
    {8, ftFloat},        {12, ftString},      {16, ftBoolean},    {70, ftDataSet},
    {91, ftDate},        {92, ftTime},        {2001, ftUnknown},  {2002, ftUnknown},
    {2009, ftUnknown},   {2003, ftArray},     {2004, ftBlob},     {2005, ftOraClob},
    {2011, ftOraClob},   {2006, ftReference},
};

TFieldType FromOrdinal(int64_t ordinal) {
  return ordinal >= 0 && ordinal < kFieldTypeCount ? static_cast<TFieldType>(ordinal) : ftUnknown;
}

}  // namespace

WideString FieldTypeToString(TFieldType type) {
  const int ordinal = static_cast<int>(type);
  return ordinal >= 0 && ordinal < kFieldTypeCount ? WideString(kFieldTypeTexts[ordinal]) : WideString();
}

TFieldType DBTypeXMLToFieldType(WideStringView text) {
  for (const DBTypeName& entry : kDBTypeNames) {
    if (WideSameText(text, entry.text)) return entry.type;
  }
  return ftUnknown;
}

TFieldType JavaTypeXMLToFieldType(int number) {
  for (const JavaTypeNumber& entry : kJavaTypeNumbers) {
    if (entry.number == number) return entry.type;
  }
  return ftUnknown;
}

TFieldType GuessTypeFromXMLValue(const TmvVariant& value) {
  if (value.IsClear()) return ftUnknown;
  if (value.IsString()) {
    const int64_t ordinal = StrToIntDef(value.AsWideString(), -1);
    if (ordinal == -1) return DBTypeXMLToFieldType(value.AsWideString());
    return FromOrdinal(ordinal);
  }
  return FromOrdinal(value.AsInt64());
}

}  // namespace mv
