#include "metadata/dataset/Params.h"

#include <chrono>
#include <cmath>
#include <cstdio>

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

void TmvParam::SetValue(TmvVariant value) {
  if (dataType_ == ftUnknown) {
    switch (value.VarType()) {
      case TmvVarType::vtBoolean: dataType_ = ftBoolean; break;
      case TmvVarType::vtInteger: dataType_ = ftLargeint; break;
      case TmvVarType::vtFloat: dataType_ = ftFloat; break;
      case TmvVarType::vtDateTime: dataType_ = ftDateTime; break;
      case TmvVarType::vtString: dataType_ = ftWideString; break;
      default: break;
    }
  }
  value_ = std::move(value);
}

TmvParams& TmvParams::operator=(const TmvParams& other) {
  if (this != &other) Assign(other);
  return *this;
}

TmvParam& TmvParams::operator[](int index) const {
  if (index < 0 || index >= Count())
    throw EmvQueryBuilderError(WideFormat(u"Parameter index out of range (%d)", {index}));
  return *items_[static_cast<size_t>(index)];
}

TmvParam* TmvParams::FindParam(WideStringView name) const {
  for (const auto& param : items_)
    if (WideSameText(param->Name(), name)) return param.get();
  return nullptr;
}

TmvParam& TmvParams::ParamByName(WideStringView name) const {
  if (TmvParam* param = FindParam(name)) return *param;
  throw EmvQueryBuilderError(WideString(name), WideFormat(u"Parameter '%s' not found", {name}));
}

TmvParam& TmvParams::CreateParam(TFieldType dataType, WideStringView name, TParamType paramType) {
  items_.push_back(std::make_unique<TmvParam>(WideString(name), dataType, paramType));
  return *items_.back();
}

void TmvParams::Assign(const TmvParams& other) {
  if (this == &other) return;
  items_.clear();
  items_.reserve(other.items_.size());
  for (const auto& param : other.items_) items_.push_back(std::make_unique<TmvParam>(*param));
}

void TmvParams::AssignValues(const TmvParams& other) {
  for (const auto& source : other.items_) {
    if (TmvParam* target = FindParam(source->Name())) {
      if (target == source.get()) continue;
      target->SetDataType(source->DataType());
      target->SetParamType(source->ParamType());
      target->Clear();
      target->SetValue(source->Value());
    }
  }
}

void TmvParams::ParseSQL(WideStringView sql, const TmvSQLParamScanOptions& options) {
  items_.clear();
  for (const TmvSQLParamRef& ref : FindSQLParams(sql, options))
    if (!FindParam(ref.Name)) CreateParam(ftUnknown, ref.Name, ptInput);
}

WideString DateTimeToSQLText(TmvDateTime value) {
  using namespace std::chrono;
  constexpr int64_t kMsPerDay = 86400000;
  // The integral part counts days from 1899-12-30; the fraction is the time
  // of day whatever the sign.
  double whole = std::trunc(value.value);
  int64_t ms = std::llround(std::fabs(value.value - whole) * kMsPerDay);
  if (ms >= kMsPerDay) {
    ms -= kMsPerDay;
    whole += value.value < 0 ? -1 : 1;
  }
  const sys_days epoch = sys_days(year(1899) / December / 30);
  const year_month_day date(epoch + days(static_cast<int64_t>(whole)));
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d.%03d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(ms / 3600000), static_cast<int>(ms / 60000 % 60),
                static_cast<int>(ms / 1000 % 60), static_cast<int>(ms % 1000));
  return WideFromAscii(text);
}

}  // namespace mv
