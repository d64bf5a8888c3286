// The columns of an open dataset and the values of its current row.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/dataset/FieldDef.h"
#include "support/Variant.h"

namespace mv {

// Binary data in a field or a parameter is held as one byte per UTF-16 code
// unit; adapters convert with these.
bool IsBinaryFieldType(TFieldType type);
WideString BytesToWide(std::string_view bytes);
std::string WideToBytes(WideStringView text);

// One column of an open dataset, holding the value of the current row. A
// field exists while its dataset is open; closing the dataset frees it.
//
// Values: text is kept as UTF-16; `AsString` gives it in UTF-8. Binary
// columns (ftBytes, ftVarBytes, ftBlob, ftGraphic, ftTypedBinary, ftOraBlob)
// keep one byte per code unit, so `AsString` gives the raw bytes back. A Null
// value (also when there is no current row) reads as empty text, 0 and false,
// and as a Null variant. A value that does not convert raises EConvertError
// naming the field.
class TmvField {
 public:
  TmvField(TmvFieldDef def, int index) : def_(std::move(def)), index_(index) {}

  const WideString& FieldName() const { return def_.Name; }
  TFieldType DataType() const { return def_.DataType; }
  int Size() const { return def_.Size; }
  // Position among the dataset's fields, from 0.
  int Index() const { return index_; }
  const TmvFieldDef& Def() const { return def_; }
  bool ReadOnly() const { return def_.ReadOnly(); }
  bool Required() const { return def_.Required(); }
  bool IsBinary() const { return IsBinaryFieldType(def_.DataType); }

  bool IsNull() const { return value_.IsClear(); }
  std::string AsString() const;
  WideString AsWideString() const;
  int AsInteger() const;
  int64_t AsLargeInt() const;
  double AsFloat() const;
  bool AsBoolean() const;
  // The value as the driver gave it; Null for NULL.
  TmvVariant AsVariant() const;

  // Stores the current row's value; called by the dataset.
  void SetData(TmvVariant value) { value_ = std::move(value); }

 private:
  TmvFieldDef def_;
  int index_;
  TmvVariant value_ = TmvVariant::Null();
};

// The fields of an open dataset, in column order. Names are found without
// regard to case; with duplicate names the first column wins.
class TmvFields {
 public:
  int Count() const { return static_cast<int>(items_.size()); }
  TmvField& operator[](int index) const;
  // The field of that name, or null.
  TmvField* FindField(WideStringView name) const;
  // The field of that name; raises EmvQueryBuilderError "Field 'name' not found".
  TmvField& FieldByName(WideStringView name) const;

  // Rebuilds the list from definitions, or empties it; called by the dataset.
  void Create(const TmvFieldDefs& defs);
  void Clear() { items_.clear(); }
  // Sets every value to Null (no current row).
  void ClearValues();

 private:
  std::vector<std::unique_ptr<TmvField>> items_;
};

}  // namespace mv
