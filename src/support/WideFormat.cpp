#include "support/WideFormat.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>

#include "support/Exceptions.h"

namespace mv {

namespace {

[[noreturn]] void FormatError(WideStringView format) {
  throw EConvertError(u"Format '" + WideString(format) + u"' invalid or incompatible with argument");
}

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

WideString Pad(WideString text, int width, bool leftJustify) {
  if (width > 0 && static_cast<int>(text.size()) < width) {
    WideString fill(width - text.size(), u' ');
    text = leftJustify ? text + fill : fill + text;
  }
  return text;
}

// The floating-point forms use std::to_chars, which follows no locale: the
// decimal point is a dot even when a GUI host has switched the locale.
std::string FormatFixed(double value, int precision) {
  if (precision > 1000) precision = 1000;
  std::string buf(static_cast<size_t>(precision) + 400, '\0');
  const auto result = std::to_chars(buf.data(), buf.data() + buf.size(), value, std::chars_format::fixed, precision);
  buf.resize(result.ptr - buf.data());
  return buf;
}

// Scientific form with at least three exponent digits and `precision`
// significant digits, as the classic format function writes it: 1.5E+003.
std::string FormatScientific(double value, int precision) {
  if (precision < 1) precision = 1;
  if (precision > 18) precision = 18;
  char buf[128];
  const auto result =
      std::to_chars(buf, buf + sizeof buf, value, std::chars_format::scientific, precision - 1);
  std::string s(buf, result.ptr);
  size_t e = s.find('e');
  if (e == std::string::npos) return s;
  std::string mantissa = s.substr(0, e);
  char sign = s[e + 1];
  std::string digits = s.substr(e + 2);
  while (digits.size() < 3) digits = "0" + digits;
  return mantissa + "E" + sign + digits;
}

// Shortest general form with `precision` significant digits.
std::string FormatGeneral(double value, int precision) {
  if (precision < 1 || precision > 18) precision = 15;
  if (value == 0) return "0";
  int exponent = static_cast<int>(std::floor(std::log10(std::fabs(value))));
  if (exponent < -5 || exponent >= precision) {
    std::string s = FormatScientific(value, precision);
    // drop trailing zeros of the mantissa
    size_t e = s.find('E');
    std::string mantissa = s.substr(0, e);
    if (mantissa.find('.') != std::string::npos) {
      while (!mantissa.empty() && mantissa.back() == '0') mantissa.pop_back();
      if (!mantissa.empty() && mantissa.back() == '.') mantissa.pop_back();
    }
    return mantissa + s.substr(e);
  }
  char buf[512];
  const auto result = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, precision);
  return std::string(buf, result.ptr);
}

std::string WithThousands(const std::string& fixed) {
  size_t start = (fixed[0] == '-') ? 1 : 0;
  size_t dot = fixed.find('.');
  size_t intEnd = dot == std::string::npos ? fixed.size() : dot;
  std::string out = fixed.substr(0, start);
  for (size_t i = start; i < intEnd; ++i) {
    out += fixed[i];
    size_t left = intEnd - i - 1;
    if (left > 0 && left % 3 == 0) out += ',';
  }
  out += fixed.substr(intEnd);
  return out;
}

}  // namespace

WideString WideFormat(WideStringView format, const TmvFormatArgs& args) {
  WideString out;
  out.reserve(format.size() + 16);
  size_t argIndex = 0;
  const size_t n = format.size();
  size_t i = 0;

  auto readNumber = [&](int& value) -> bool {
    if (i < n && format[i] == u'*') {
      ++i;
      if (argIndex >= args.size()) FormatError(format);
      const auto* v = std::get_if<int64_t>(&args[argIndex++].value());
      if (!v) FormatError(format);
      value = static_cast<int>(*v);
      return true;
    }
    if (i >= n || !IsDigit(format[i])) return false;
    value = 0;
    while (i < n && IsDigit(format[i])) {
      value = value * 10 + (format[i] - u'0');
      if (value > 100000) FormatError(format);
      ++i;
    }
    return true;
  };

  while (i < n) {
    char16_t c = format[i];
    if (c != u'%') {
      out += c;
      ++i;
      continue;
    }
    ++i;
    if (i >= n) FormatError(format);
    if (format[i] == u'%') {
      out += u'%';
      ++i;
      continue;
    }
    // [index ":"]
    int number = -1;
    size_t save = i;
    if (readNumber(number) && i < n && format[i] == u':') {
      argIndex = static_cast<size_t>(number);
      ++i;
      number = -1;
    } else if (number >= 0) {
      // it was the width; keep it
    } else {
      i = save;
    }
    bool leftJustify = false;
    if (number < 0 && i < n && format[i] == u'-') {
      leftJustify = true;
      ++i;
    }
    int width = number;
    if (width < 0) {
      int w;
      if (readNumber(w)) width = w;
    }
    int precision = -1;
    if (i < n && format[i] == u'.') {
      ++i;
      int p;
      if (!readNumber(p)) p = 0;
      precision = p;
    }
    if (i >= n) FormatError(format);
    char16_t type = WideUpCase(format[i++]);
    if (argIndex >= args.size()) FormatError(format);
    const auto& value = args[argIndex++].value();

    WideString piece;
    switch (type) {
      case u'D':
      case u'U': {
        const auto* v = std::get_if<int64_t>(&value);
        if (!v) FormatError(format);
        int64_t x = *v;
        if (type == u'U' && x < 0) x = static_cast<int64_t>(static_cast<uint32_t>(x));
        const bool negative = x < 0;
        const unsigned long long magnitude =
            negative ? 0ull - static_cast<unsigned long long>(x) : static_cast<unsigned long long>(x);
        std::string digits = std::to_string(magnitude);
        if (precision > static_cast<int>(digits.size()))
          digits = std::string(precision - digits.size(), '0') + digits;
        piece = WideFromAscii((negative ? "-" : "") + digits);
        break;
      }
      case u'X': {
        const auto* v = std::get_if<int64_t>(&value);
        if (!v) FormatError(format);
        char buf[32];
        std::snprintf(buf, sizeof buf, "%llX", static_cast<unsigned long long>(*v));
        std::string digits(buf);
        if (precision > static_cast<int>(digits.size()))
          digits = std::string(precision - digits.size(), '0') + digits;
        piece = WideFromAscii(digits);
        break;
      }
      case u'E':
      case u'F':
      case u'G':
      case u'N':
      case u'M': {
        // Floating-point specifiers take floating-point arguments only.
        const auto* d = std::get_if<double>(&value);
        if (!d) FormatError(format);
        const double x = *d;
        std::string s;
        if (type == u'E') s = FormatScientific(x, precision < 0 ? 15 : precision);
        else if (type == u'F') s = FormatFixed(x, precision < 0 ? 2 : precision);
        else if (type == u'G') s = FormatGeneral(x, precision < 0 ? 15 : precision);
        else s = WithThousands(FormatFixed(x, precision < 0 ? 2 : precision));
        piece = WideFromAscii(s);
        break;
      }
      case u'P': {
        const auto* v = std::get_if<const void*>(&value);
        if (!v) FormatError(format);
        char buf[32];
        std::snprintf(buf, sizeof buf, "%016llX",
                      static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(*v)));
        piece = WideFromAscii(buf);
        break;
      }
      case u'S': {
        const auto* v = std::get_if<WideString>(&value);
        if (!v) FormatError(format);
        piece = (precision >= 0 && static_cast<size_t>(precision) < v->size()) ? v->substr(0, precision)
                                                                                  : *v;
        break;
      }
      default:
        FormatError(format);
    }
    out += Pad(std::move(piece), width, leftJustify);
  }
  return out;
}

}  // namespace mv
