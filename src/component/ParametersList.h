// The parameters of the query builder's result tree: one entry for each
// parameter node (":p1", "?"), in the order a depth-first walk meets them,
// with what the binding learnt about it (the column it is compared with).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "support/WideString.h"

namespace mv {

class TastNodeBase;
class TmvMetadataField;
class TmvMetadataObject;
class TmvQueryBuilder;

struct TmvParameter {
  WideString Prefix;  // ":", "?", "@" ... as the dialect's scanner reads them
  WideString Tail;    // the name or number after the prefix
  uint8_t DataType = 0;
  WideString Name;
  WideString ColumnName;
  WideString ObjectName;
  TmvMetadataObject* MetadataObject = nullptr;
  TmvMetadataField* Field = nullptr;
  int32_t Index = 0;
  // How the parameter stands in the text.
  WideString GetFullName() const { return Prefix + Tail; }
};

class TmvParametersList {
 public:
  explicit TmvParametersList(TmvQueryBuilder* builder) : builder_(builder) {}
  virtual ~TmvParametersList() = default;

  // Both generate the builder's result tree first when the list is invalid.
  int GetCount();
  const TmvParameter& GetItem(int index);

  bool Valid() const { return valid_; }
  void SetParametersInvalid();
  // Collects the parameters of `node` (null: none).
  void ReloadParametersListFromAST(TastNodeBase* node);

 protected:
  virtual void SetParametersInvalidInternal() { items_.clear(); }

 private:
  void MakeValid();
  TmvQueryBuilder* builder_;
  std::vector<std::unique_ptr<TmvParameter>> items_;
  bool valid_ = true;
};

}  // namespace mv
