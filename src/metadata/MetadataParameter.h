// Parameters of stored procedures and the list that holds them. Like a
// fields list, the parameters list has a loaded flag that Add and Insert set.
#pragma once

#include "metadata/MetadataBase.h"
#include "support/FieldType.h"
#include "tree/Tokens.h"

namespace mv {

class TmvMetadataParameter : public TmvMetadataCollectionItemBase {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataParameter(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataParameter() override;

  void Assign(const TmvPersistent* source) override;
  using TmvMetadataCollectionItemBase::Assign;

  const TastTokenIdentifier* Name() const { return name_.get(); }
  // Copies the token; null clears the name.
  void SetName(const TastTokenIdentifier* token);
  const TastTokenIdentifier* AltNameId() const { return altNameId_.get(); }
  const WideString& AltName() const { return altNameId_->Token; }
  void SetAltName(WideStringView value);
  bool AltNameCaseSensitive() const { return altNameId_->Quoted; }
  void SetAltNameCaseSensitive(bool value);

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
  template <class T>
  void SetValue(T& field, const T& value) {
    if (field == value) return;
    field = value;
    NotifyUpdated();
  }

  TmvOwned<TastTokenIdentifier> name_;
  TmvOwned<TastTokenIdentifier> altNameId_;
  TFieldType fieldType_ = ftUnknown;
  int32_t size_ = 0;
  int32_t precision_ = 0;
  int32_t scale_ = 0;
  TParamType paramType_ = ptUnknown;
  WideString shortDescription_;
  WideString longDescription_;
};

class TmvMetadataParametersList : public TmvMetadataCollectionOf<TmvMetadataParameter> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataParametersList(TmvMetadataBase* parent, TmvBaseSQLContext* context);

  bool Loaded() const { return loaded_; }
  void SetLoaded(bool value) { loaded_ = value; }

  // Items and the loaded flag of another list.
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataCollectionOf<TmvMetadataParameter>::Assign;

 protected:
  void ItemInserted(TmvMetadataCollectionItemBase*) override { loaded_ = true; }

 private:
  bool loaded_ = false;
};

}  // namespace mv
