// The data type and descriptions that fields and parameters both carry.
#pragma once

#include <cstdint>

#include "support/BatchUpdatable.h"
#include "support/FieldType.h"
#include "support/WideString.h"

namespace mv {

// Adds a data type (type, size, precision, scale) and a short and a long
// description to a metadata class `Base`. Each setter notifies on a change.
template <class Base>
class TmvWithDataType : public Base {
 public:
  using Base::Base;

  TFieldType FieldType() const { return fieldType_; }
  void SetFieldType(TFieldType value) { SetValueAndNotify(*this, fieldType_, value); }
  int32_t Size() const { return size_; }
  void SetSize(int32_t value) { SetValueAndNotify(*this, size_, value); }
  int32_t Precision() const { return precision_; }
  void SetPrecision(int32_t value) { SetValueAndNotify(*this, precision_, value); }
  int32_t Scale() const { return scale_; }
  void SetScale(int32_t value) { SetValueAndNotify(*this, scale_, value); }
  const WideString& ShortDescription() const { return shortDescription_; }
  void SetShortDescription(WideStringView value) { SetValueAndNotify(*this, shortDescription_, value); }
  const WideString& LongDescription() const { return longDescription_; }
  void SetLongDescription(WideStringView value) { SetValueAndNotify(*this, longDescription_, value); }

 protected:
  // Copies the type and the descriptions of `other`, without notifying.
  void AssignDataType(const TmvWithDataType& other) {
    fieldType_ = other.fieldType_;
    size_ = other.size_;
    precision_ = other.precision_;
    scale_ = other.scale_;
    shortDescription_ = other.shortDescription_;
    longDescription_ = other.longDescription_;
  }

  TFieldType fieldType_ = ftUnknown;
  int32_t size_ = 0;
  int32_t precision_ = 0;
  int32_t scale_ = 0;
  WideString shortDescription_;
  WideString longDescription_;
};

}  // namespace mv
