// Parameters of stored procedures and the list that holds them, with its
// loaded flag (see TmvMetadataLoadedListOf).
#pragma once

#include "metadata/MetadataAltName.h"
#include "support/FieldType.h"

namespace mv {

class TmvMetadataParameter : public TmvWithAltName<TmvMetadataCollectionItemBase> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataParameter(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataParameter() override;

  void Assign(const TmvPersistent* source) override;
  using TmvMetadataCollectionItemBase::Assign;

  const TastTokenIdentifier* Name() const { return name_.get(); }
  // Copies the token; null clears the name.
  void SetName(const TastTokenIdentifier* token);

  TFieldType FieldType() const { return fieldType_; }
  void SetFieldType(TFieldType value);
  int32_t Size() const { return size_; }
  void SetSize(int32_t value);
  int32_t Precision() const { return precision_; }
  void SetPrecision(int32_t value);
  int32_t Scale() const { return scale_; }
  void SetScale(int32_t value);
  TParamType ParamType() const { return paramType_; }
  void SetParamType(TParamType value);
  const WideString& ShortDescription() const { return shortDescription_; }
  void SetShortDescription(WideStringView value);
  const WideString& LongDescription() const { return longDescription_; }
  void SetLongDescription(WideStringView value);

 private:
  TmvOwned<TastTokenIdentifier> name_;
  TFieldType fieldType_ = ftUnknown;
  int32_t size_ = 0;
  int32_t precision_ = 0;
  int32_t scale_ = 0;
  TParamType paramType_ = ptUnknown;
  WideString shortDescription_;
  WideString longDescription_;
};

class TmvMetadataParametersList : public TmvMetadataLoadedListOf<TmvMetadataParameter> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataParametersList(TmvMetadataBase* parent, TmvBaseSQLContext* context);
};

}  // namespace mv
