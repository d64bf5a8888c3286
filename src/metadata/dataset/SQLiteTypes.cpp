#include "metadata/dataset/SQLiteTypes.h"

#include <vector>

namespace mv {

namespace {

// What the numbers in brackets after a type name mean.
enum class TTypeArgs { taNone, taSize, taPrecisionScale };

struct TTypeRule {
  const char16_t* Name;  // upper case, single blanks
  TFieldType DataType;
  TTypeArgs Args;
};

// Type names as tables are commonly declared, matched whole.
constexpr TTypeRule kNamedTypes[] = {
    {u"INTEGER", ftInteger, TTypeArgs::taNone},
    {u"INT", ftInteger, TTypeArgs::taNone},
    {u"INT4", ftInteger, TTypeArgs::taNone},
    {u"MEDIUMINT", ftInteger, TTypeArgs::taNone},
    {u"SMALLINT", ftSmallint, TTypeArgs::taNone},
    {u"INT2", ftSmallint, TTypeArgs::taNone},
    {u"TINYINT", ftSmallint, TTypeArgs::taNone},
    {u"BIGINT", ftLargeint, TTypeArgs::taNone},
    {u"INT8", ftLargeint, TTypeArgs::taNone},
    {u"UNSIGNED BIG INT", ftLargeint, TTypeArgs::taNone},
    {u"BOOLEAN", ftBoolean, TTypeArgs::taNone},
    {u"BOOL", ftBoolean, TTypeArgs::taNone},
    {u"BIT", ftBoolean, TTypeArgs::taNone},
    {u"REAL", ftFloat, TTypeArgs::taNone},
    {u"DOUBLE", ftFloat, TTypeArgs::taNone},
    {u"DOUBLE PRECISION", ftFloat, TTypeArgs::taNone},
    {u"FLOAT", ftFloat, TTypeArgs::taNone},
    {u"FLOAT4", ftFloat, TTypeArgs::taNone},
    {u"FLOAT8", ftFloat, TTypeArgs::taNone},
    {u"NUMERIC", ftBCD, TTypeArgs::taPrecisionScale},
    {u"DECIMAL", ftBCD, TTypeArgs::taPrecisionScale},
    {u"NUMBER", ftBCD, TTypeArgs::taPrecisionScale},
    {u"MONEY", ftCurrency, TTypeArgs::taNone},
    {u"CURRENCY", ftCurrency, TTypeArgs::taNone},
    {u"DATE", ftDate, TTypeArgs::taNone},
    {u"TIME", ftTime, TTypeArgs::taNone},
    {u"DATETIME", ftDateTime, TTypeArgs::taNone},
    {u"TIMESTAMP", ftDateTime, TTypeArgs::taNone},
    {u"CHAR", ftFixedChar, TTypeArgs::taSize},
    {u"CHARACTER", ftFixedChar, TTypeArgs::taSize},
    {u"NCHAR", ftFixedChar, TTypeArgs::taSize},
    {u"NATIVE CHARACTER", ftFixedChar, TTypeArgs::taSize},
    {u"VARCHAR", ftWideString, TTypeArgs::taSize},
    {u"NVARCHAR", ftWideString, TTypeArgs::taSize},
    {u"VARCHAR2", ftWideString, TTypeArgs::taSize},
    {u"NVARCHAR2", ftWideString, TTypeArgs::taSize},
    {u"CHARACTER VARYING", ftWideString, TTypeArgs::taSize},
    {u"VARYING CHARACTER", ftWideString, TTypeArgs::taSize},
    {u"TEXT", ftMemo, TTypeArgs::taNone},
    {u"NTEXT", ftMemo, TTypeArgs::taNone},
    {u"CLOB", ftMemo, TTypeArgs::taNone},
    {u"MEMO", ftMemo, TTypeArgs::taNone},
    {u"MEDIUMTEXT", ftMemo, TTypeArgs::taNone},
    {u"LONGTEXT", ftMemo, TTypeArgs::taNone},
    {u"JSON", ftMemo, TTypeArgs::taNone},
    {u"BLOB", ftBlob, TTypeArgs::taNone},
    {u"IMAGE", ftBlob, TTypeArgs::taNone},
    {u"LONGBLOB", ftBlob, TTypeArgs::taNone},
    {u"BINARY", ftBytes, TTypeArgs::taSize},
    {u"VARBINARY", ftVarBytes, TTypeArgs::taSize},
    {u"GUID", ftGuid, TTypeArgs::taNone},
    {u"UUID", ftGuid, TTypeArgs::taNone},
    {u"UNIQUEIDENTIFIER", ftGuid, TTypeArgs::taNone},
};

// Upper case with runs of blanks made one blank, trimmed.
WideString NormalizeName(WideStringView text) {
  WideString name;
  bool blank = false;
  for (char16_t c : WideTrim(text)) {
    if (c == u' ' || c == u'\t' || c == u'\r' || c == u'\n') {
      blank = true;
      continue;
    }
    if (blank) name += u' ';
    blank = false;
    name += WideUpCase(c);
  }
  return name;
}

std::vector<int> ParseArgs(WideStringView text) {
  std::vector<int> args;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find(u',', start);
    if (end == WideStringView::npos) end = text.size();
    int value = 0;
    args.push_back(TryStrToInt(text.substr(start, end - start), value) ? value : 0);
    start = end + 1;
  }
  return args;
}

bool Contains(const WideString& text, const char16_t* part) { return text.find(part) != WideString::npos; }

}  // namespace

TmvSQLiteColumnType SQLiteColumnType(WideStringView declared) {
  TmvSQLiteColumnType result;
  const size_t open = declared.find(u'(');
  const WideString name = NormalizeName(declared.substr(0, open));
  std::vector<int> args;
  if (open != WideStringView::npos) {
    const size_t close = declared.find(u')', open);
    args = ParseArgs(declared.substr(open + 1, close == WideStringView::npos ? WideStringView::npos : close - open - 1));
  }
  if (name.empty()) return result;

  for (const TTypeRule& rule : kNamedTypes) {
    if (name != rule.Name) continue;
    result.DataType = rule.DataType;
    if (rule.Args == TTypeArgs::taSize && !args.empty()) result.Size = args[0];
    if (rule.Args == TTypeArgs::taPrecisionScale) {
      if (!args.empty()) result.Precision = args[0];
      if (args.size() > 1) result.Scale = args[1];
    }
    return result;
  }

  // SQLite's affinity rules, in its order; a size makes text a bounded string.
  if (Contains(name, u"INT")) {
    result.DataType = ftLargeint;
  } else if (Contains(name, u"CHAR") || Contains(name, u"CLOB") || Contains(name, u"TEXT")) {
    result.Size = args.empty() ? 0 : args[0];
    result.DataType = result.Size > 0 ? ftWideString : ftMemo;
  } else if (Contains(name, u"BLOB")) {
    result.DataType = ftBlob;
  } else if (Contains(name, u"REAL") || Contains(name, u"FLOA") || Contains(name, u"DOUB")) {
    result.DataType = ftFloat;
  }
  return result;
}

}  // namespace mv
