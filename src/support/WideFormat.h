// The classic format function on wide strings, as language files and catalog
// queries use it: "%" [index ":"] ["-"] [width] ["." precision] type, with the
// types d u x e f g n p s and "%%" for a percent sign. Width and precision may
// be "*" (taken from the arguments). After an indexed specifier, the next
// plain one continues with the following argument.
//
//   WideFormat(u"%1:s-%0:s", {u"a", u"b"})  ->  u"b-a"
//   WideFormat(u"%d%%", {5})                ->  u"5%"
//
// A specifier that does not fit its argument, or an index beyond the
// arguments, raises EConvertError.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <variant>
#include <vector>

#include "support/WideString.h"

namespace mv {

class TmvFormatArg {
 public:
  using Value = std::variant<int64_t, double, WideString, const void*>;

  TmvFormatArg(int v) : value_(int64_t(v)) {}
  TmvFormatArg(unsigned v) : value_(int64_t(v)) {}
  TmvFormatArg(long v) : value_(int64_t(v)) {}
  TmvFormatArg(long long v) : value_(int64_t(v)) {}
  TmvFormatArg(unsigned long v) : value_(int64_t(v)) {}
  TmvFormatArg(unsigned long long v) : value_(int64_t(v)) {}
  TmvFormatArg(double v) : value_(v) {}
  TmvFormatArg(WideStringView v) : value_(WideString(v)) {}
  TmvFormatArg(const WideString& v) : value_(v) {}
  TmvFormatArg(const char16_t* v) : value_(WideString(v ? v : u"")) {}
  TmvFormatArg(const void* v) : value_(v) {}

  const Value& value() const { return value_; }

 private:
  Value value_;
};

using TmvFormatArgs = std::vector<TmvFormatArg>;

WideString WideFormat(WideStringView format, const TmvFormatArgs& args);
inline WideString WideFormat(WideStringView format, std::initializer_list<TmvFormatArg> args) {
  return WideFormat(format, TmvFormatArgs(args));
}

}  // namespace mv
