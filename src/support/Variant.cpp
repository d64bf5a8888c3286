#include "support/Variant.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "support/FormatSettings.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

[[noreturn]] void CannotConvert(const TmvVariant& v, const char* target) {
  throw EVariantError(WideFormat(u"Could not convert variant of type (%s) into type (%s)",
                                 {WideFromAscii(v.TypeName()), WideFromAscii(target)}));
}

// Numbers in text use the C form whatever the process locale is (a GUI host
// may have switched it): a dot for the decimal point, no "inf" or "nan".
bool TextToDouble(const WideString& text, double& out) { return TryStrToFloat(text, out); }

WideString DoubleToText(double v) {
  char buf[64];
  const auto result = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 15);
  return WideFromAscii(std::string_view(buf, result.ptr - buf));
}

}  // namespace

const char* TmvVariant::TypeName() const {
  switch (VarType()) {
    case TmvVarType::vtEmpty: return "Empty";
    case TmvVarType::vtNull: return "Null";
    case TmvVarType::vtBoolean: return "Boolean";
    case TmvVarType::vtInteger: return "Int64";
    case TmvVarType::vtFloat: return "Double";
    case TmvVarType::vtDateTime: return "Date";
    case TmvVarType::vtString: return "String";
    case TmvVarType::vtArray: return "Array";
  }
  return "Unknown";
}

bool TmvVariant::AsBoolean() const {
  switch (VarType()) {
    case TmvVarType::vtEmpty: return false;
    case TmvVarType::vtBoolean: return std::get<bool>(value_);
    case TmvVarType::vtInteger: return std::get<int64_t>(value_) != 0;
    case TmvVarType::vtFloat: return std::get<double>(value_) != 0;
    case TmvVarType::vtString: {
      const WideString& s = std::get<WideString>(value_);
      if (WideSameText(s, u"true")) return true;
      if (WideSameText(s, u"false")) return false;
      int64_t n;
      if (TryStrToInt(s, n)) return n != 0;
      break;
    }
    default: break;
  }
  CannotConvert(*this, "Boolean");
}

int64_t TmvVariant::AsInt64() const {
  switch (VarType()) {
    case TmvVarType::vtEmpty: return 0;
    case TmvVarType::vtBoolean: return std::get<bool>(value_) ? 1 : 0;
    case TmvVarType::vtInteger: return std::get<int64_t>(value_);
    case TmvVarType::vtFloat:
    case TmvVarType::vtDateTime: {
      double d = VarType() == TmvVarType::vtFloat ? std::get<double>(value_)
                                                  : std::get<TmvDateTime>(value_).value;
      if (std::isfinite(d) && std::fabs(d) < 9.2e18) return static_cast<int64_t>(std::nearbyint(d));
      break;
    }
    case TmvVarType::vtString: {
      int64_t n;
      if (TryStrToInt(std::get<WideString>(value_), n)) return n;
      double d;
      if (TextToDouble(std::get<WideString>(value_), d) && std::fabs(d) < 9.2e18)
        return static_cast<int64_t>(std::nearbyint(d));
      break;
    }
    default: break;
  }
  CannotConvert(*this, "Int64");
}

int TmvVariant::AsInteger() const {
  int64_t v = AsInt64();
  if (v < std::numeric_limits<int>::min() || v > std::numeric_limits<int>::max()) CannotConvert(*this, "Integer");
  return static_cast<int>(v);
}

double TmvVariant::AsFloat() const {
  switch (VarType()) {
    case TmvVarType::vtEmpty: return 0;
    case TmvVarType::vtBoolean: return std::get<bool>(value_) ? 1 : 0;
    case TmvVarType::vtInteger: return static_cast<double>(std::get<int64_t>(value_));
    case TmvVarType::vtFloat: return std::get<double>(value_);
    case TmvVarType::vtDateTime: return std::get<TmvDateTime>(value_).value;
    case TmvVarType::vtString: {
      double d;
      if (TextToDouble(std::get<WideString>(value_), d)) return d;
      break;
    }
    default: break;
  }
  CannotConvert(*this, "Double");
}

TmvDateTime TmvVariant::AsDateTime() const {
  if (VarType() == TmvVarType::vtDateTime) return std::get<TmvDateTime>(value_);
  if (IsNumeric() || IsEmpty()) return TmvDateTime{AsFloat()};
  CannotConvert(*this, "Date");
}

WideString TmvVariant::AsWideString() const {
  switch (VarType()) {
    case TmvVarType::vtEmpty: return {};
    case TmvVarType::vtBoolean: return std::get<bool>(value_) ? u"True" : u"False";
    case TmvVarType::vtInteger: return IntToWide(std::get<int64_t>(value_));
    case TmvVarType::vtFloat: return DoubleToText(std::get<double>(value_));
    case TmvVarType::vtDateTime: return DoubleToText(std::get<TmvDateTime>(value_).value);
    case TmvVarType::vtString: return std::get<WideString>(value_);
    default: break;
  }
  CannotConvert(*this, "String");
}

const TmvVariantArray& TmvVariant::AsArray() const {
  if (!IsArray()) CannotConvert(*this, "Array");
  return std::get<TmvVariantArray>(value_);
}

bool TmvVariant::operator==(const TmvVariant& other) const {
  const TmvVarType a = VarType(), b = other.VarType();
  if (a == TmvVarType::vtNull || b == TmvVarType::vtNull) return a == b;
  if (a == TmvVarType::vtEmpty || b == TmvVarType::vtEmpty) return a == b;
  if (a == TmvVarType::vtArray || b == TmvVarType::vtArray) {
    return a == b && std::get<TmvVariantArray>(value_) == std::get<TmvVariantArray>(other.value_);
  }
  if (a == TmvVarType::vtString && b == TmvVarType::vtString)
    return std::get<WideString>(value_) == std::get<WideString>(other.value_);
  if (a == TmvVarType::vtBoolean || b == TmvVarType::vtBoolean) {
    try {
      return AsBoolean() == other.AsBoolean();
    } catch (const EVariantError&) {
      return false;
    }
  }
  // Numbers, dates, and text against a number: compare as numbers when the text is one.
  if (a == TmvVarType::vtString || b == TmvVarType::vtString) {
    const TmvVariant& text = a == TmvVarType::vtString ? *this : other;
    const TmvVariant& number = a == TmvVarType::vtString ? other : *this;
    double d;
    if (!TextToDouble(std::get<WideString>(text.value_), d)) return text.AsWideString() == number.AsWideString();
    return d == number.AsFloat();
  }
  if (a == TmvVarType::vtInteger && b == TmvVarType::vtInteger)
    return std::get<int64_t>(value_) == std::get<int64_t>(other.value_);
  return AsFloat() == other.AsFloat();
}

WideString VarToWideStrDef(const TmvVariant& value, WideStringView fallback) {
  if (value.IsClear()) return WideString(fallback);
  return value.AsWideString();
}

}  // namespace mv
