// A loosely typed value, as database fields, parameters, settings of the
// metadata fetchers and XML attribute values carry them. Empty (never
// assigned) and Null (the database NULL) are distinct states.
#pragma once

#include <cstdint>
#include <variant>
#include <vector>

#include "support/Exceptions.h"
#include "support/WideString.h"

namespace mv {

enum class TmvVarType { vtEmpty, vtNull, vtBoolean, vtInteger, vtFloat, vtDateTime, vtString, vtArray };

// Date and time as days since 1899-12-30, the fraction being the time of day.
struct TmvDateTime {
  double value = 0;
  bool operator==(const TmvDateTime& other) const = default;
};

class TmvVariant;
using TmvVariantArray = std::vector<TmvVariant>;

// A conversion between variant types that cannot be done.
class EVariantError : public Exception {
 public:
  using Exception::Exception;
  const char* ClassName() const override { return "EVariantError"; }
};

class TmvVariant {
 public:
  TmvVariant() = default;  // Empty
  TmvVariant(bool v) : value_(v) {}
  TmvVariant(int v) : value_(int64_t(v)) {}
  TmvVariant(int64_t v) : value_(v) {}
  TmvVariant(double v) : value_(v) {}
  TmvVariant(TmvDateTime v) : value_(v) {}
  TmvVariant(WideString v) : value_(std::move(v)) {}
  TmvVariant(WideStringView v) : value_(WideString(v)) {}
  TmvVariant(const char16_t* v) : value_(WideString(v)) {}
  TmvVariant(TmvVariantArray v) : value_(std::move(v)) {}

  static TmvVariant Null() {
    TmvVariant v;
    v.value_ = NullTag{};
    return v;
  }

  TmvVarType VarType() const { return static_cast<TmvVarType>(value_.index()); }
  bool IsEmpty() const { return VarType() == TmvVarType::vtEmpty; }
  bool IsNull() const { return VarType() == TmvVarType::vtNull; }
  // Null or Empty: "no value" for most callers.
  bool IsClear() const { return IsEmpty() || IsNull(); }
  bool IsArray() const { return VarType() == TmvVarType::vtArray; }
  bool IsNumeric() const { return VarType() == TmvVarType::vtInteger || VarType() == TmvVarType::vtFloat; }
  bool IsString() const { return VarType() == TmvVarType::vtString; }

  // Conversions. Empty converts to 0 / false / empty text; Null and
  // unconvertible text raise EVariantError.
  bool AsBoolean() const;
  int64_t AsInt64() const;
  int AsInteger() const;
  double AsFloat() const;
  TmvDateTime AsDateTime() const;
  WideString AsWideString() const;
  const TmvVariantArray& AsArray() const;

  // Loose equality: numbers compare by value, text against a number compares
  // as a number when the text is one, Null equals only Null, Empty only Empty.
  bool operator==(const TmvVariant& other) const;
  bool operator!=(const TmvVariant& other) const { return !(*this == other); }

  // The name of the type for messages ("Null", "Integer", "String", ...).
  const char* TypeName() const;

 private:
  struct EmptyTag {
    bool operator==(const EmptyTag&) const = default;
  };
  struct NullTag {
    bool operator==(const NullTag&) const = default;
  };
  std::variant<EmptyTag, NullTag, bool, int64_t, double, TmvDateTime, WideString, TmvVariantArray> value_;
};

// The text of a value; Null and Empty give `fallback`.
WideString VarToWideStrDef(const TmvVariant& value, WideStringView fallback);
inline WideString VarToWideStr(const TmvVariant& value) { return VarToWideStrDef(value, u""); }

}  // namespace mv
