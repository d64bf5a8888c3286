// Descriptions of a dataset's columns. A dataset fills them when it opens, and
// also without opening through `UpdateFieldDefs` (the statement is only
// prepared), which is how the metadata provider learns the columns of a query.
#pragma once

#include <cstdint>
#include <vector>

#include "support/FieldType.h"
#include "support/WideString.h"

namespace mv {

class TmvDataSet;

// Column attributes; a set of them is a bit mask.
enum TFieldAttribute : uint32_t {
  faReadonly = 1u << 0,  // the column cannot be written (an expression, a computed column)
  faRequired = 1u << 1,  // the column does not accept NULL
};
using TFieldAttributes = uint32_t;

// One column. Size is the declared length of a character or binary column
// (0 when unbounded or not given); Precision and Scale are the total and
// fractional digits of an exact numeric column (0 when not known).
struct TmvFieldDef {
  WideString Name;
  TFieldType DataType = ftUnknown;
  int Size = 0;
  int Precision = 0;
  int Scale = 0;
  TFieldAttributes Attributes = 0;
  // The driver's own spelling of the type ("varchar(30)", "int4"); may be empty.
  WideString TypeName;

  bool Required() const { return (Attributes & faRequired) != 0; }
  bool ReadOnly() const { return (Attributes & faReadonly) != 0; }
};

// The column descriptions of one dataset, in column order. Names are found
// without regard to case.
class TmvFieldDefs {
 public:
  explicit TmvFieldDefs(TmvDataSet* dataset = nullptr) : dataset_(dataset) {}

  int Count() const { return static_cast<int>(items_.size()); }
  const TmvFieldDef& Items(int index) const;
  const TmvFieldDef& operator[](int index) const { return Items(index); }
  // Index of the first definition of that name, or -1.
  int IndexOf(WideStringView name) const;
  // The definition of that name, or null.
  const TmvFieldDef* Find(WideStringView name) const;

  void Clear() { items_.clear(); }
  void Add(TmvFieldDef def) { items_.push_back(std::move(def)); }
  TmvFieldDef& Edit(int index);
  // Fills the definitions from the dataset without opening it; same as
  // `TmvDataSet::UpdateFieldDefs`.
  void Update();

  std::vector<TmvFieldDef>::const_iterator begin() const { return items_.begin(); }
  std::vector<TmvFieldDef>::const_iterator end() const { return items_.end(); }

 private:
  TmvDataSet* dataset_;
  std::vector<TmvFieldDef> items_;
};

}  // namespace mv
