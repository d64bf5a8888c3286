// Parameters of a statement. A dataset parses its command text for `:name`
// placeholders (see SQLParamScanner.h) and keeps one parameter per distinct
// name; callers set values before the dataset opens or executes.
#pragma once

#include <memory>
#include <vector>

#include "metadata/dataset/SQLParamScanner.h"
#include "support/FieldType.h"
#include "support/Variant.h"

namespace mv {

class TmvParam {
 public:
  explicit TmvParam(WideString name, TFieldType dataType = ftUnknown, TParamType paramType = ptInput)
      : name_(std::move(name)), dataType_(dataType), paramType_(paramType) {}

  const WideString& Name() const { return name_; }
  void SetName(WideString name) { name_ = std::move(name); }
  TParamType ParamType() const { return paramType_; }
  void SetParamType(TParamType type) { paramType_ = type; }
  TFieldType DataType() const { return dataType_; }
  void SetDataType(TFieldType type) { dataType_ = type; }

  // Empty until assigned. Assigning a value of a known kind also sets the data
  // type if none was set (text ftWideString, integer ftLargeint, float ftFloat,
  // boolean ftBoolean, date ftDateTime).
  const TmvVariant& Value() const { return value_; }
  void SetValue(TmvVariant value);
  bool IsNull() const { return value_.IsClear(); }
  // Whether a value (Null included) was ever assigned.
  bool Bound() const { return !value_.IsEmpty(); }
  void Clear() { value_ = TmvVariant(); }

  void SetAsWideString(WideStringView v) { SetValue(TmvVariant(v)); }
  void SetAsInteger(int64_t v) { SetValue(TmvVariant(v)); }
  void SetAsFloat(double v) { SetValue(TmvVariant(v)); }
  void SetAsBoolean(bool v) { SetValue(TmvVariant(v)); }
  void SetAsDateTime(TmvDateTime v) { SetValue(TmvVariant(v)); }
  void SetNull() { SetValue(TmvVariant::Null()); }
  WideString AsWideString() const { return value_.IsNull() ? WideString() : value_.AsWideString(); }
  TmvDateTime AsDateTime() const { return value_.AsDateTime(); }

 private:
  WideString name_;
  TFieldType dataType_;
  TParamType paramType_;
  TmvVariant value_;
};

// A list of parameters; names are found without regard to case. Parameters
// keep their addresses while the list lives.
class TmvParams {
 public:
  TmvParams() = default;
  TmvParams(const TmvParams& other) { Assign(other); }
  TmvParams& operator=(const TmvParams& other);

  int Count() const { return static_cast<int>(items_.size()); }
  bool IsEmpty() const { return items_.empty(); }
  TmvParam& operator[](int index) const;
  TmvParam& Items(int index) const { return (*this)[index]; }
  // The parameter of that name, or null.
  TmvParam* FindParam(WideStringView name) const;
  // The parameter of that name; raises EmvQueryBuilderError "Parameter 'name' not found".
  TmvParam& ParamByName(WideStringView name) const;

  TmvParam& CreateParam(TFieldType dataType, WideStringView name, TParamType paramType = ptInput);
  void Clear() { items_.clear(); }
  // Makes this list a copy of `other`.
  void Assign(const TmvParams& other);
  // Copies values, types and directions of the parameters of `other` that
  // have a namesake here; others stay as they are.
  void AssignValues(const TmvParams& other);
  // Rebuilds the list from the `:name` placeholders of `sql`: one parameter
  // per distinct name, in the order of first appearance.
  void ParseSQL(WideStringView sql, const TmvSQLParamScanOptions& options = {});

 private:
  std::vector<std::unique_ptr<TmvParam>> items_;
};

// A date and time as "yyyy-mm-dd hh:nn:ss.zzz" (the form logs and SQLite use).
WideString DateTimeToSQLText(TmvDateTime value);

}  // namespace mv
