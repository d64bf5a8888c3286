#include "metadata/MetadataParameter.h"

namespace mv {

MV_DEFINE_METADATA_CLASS(TmvMetadataParameter, TmvMetadataCollectionItemBase)
MV_DEFINE_METADATA_CLASS(TmvMetadataParametersList, TmvMetadataCollectionBase)

TmvMetadataParameter::TmvMetadataParameter(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataCollectionItemBase(parent, context),
      name_(TastCreate<TastTokenIdentifier>(context)),
      altNameId_(TastCreate<TastTokenIdentifier>(context)) {}

TmvMetadataParameter::~TmvMetadataParameter() = default;

void TmvMetadataParameter::Assign(const TmvPersistent* source) {
  const auto* other = TmvCast<TmvMetadataParameter>(source);
  if (!other) {
    TmvMetadataCollectionItemBase::Assign(source);
    return;
  }
  if (other == this) return;
  TmvUpdateBatch batch(*this);
  TmvMetadataCollectionItemBase::Assign(source);
  name_->Assign(*other->name_);
  altNameId_->Assign(*other->altNameId_);
  fieldType_ = other->fieldType_;
  size_ = other->size_;
  precision_ = other->precision_;
  scale_ = other->scale_;
  paramType_ = other->paramType_;
  shortDescription_ = other->shortDescription_;
  longDescription_ = other->longDescription_;
  NotifyUpdated();
}

void TmvMetadataParameter::SetName(const TastTokenIdentifier* token) {
  if (token == name_.get()) return;
  if (token)
    name_->Assign(*token);
  else
    name_->Clear();
  NotifyUpdated();
}

void TmvMetadataParameter::SetAltName(WideStringView value) {
  if (altNameId_->Token == value) return;
  altNameId_->SetToken(value);
  NotifyUpdated();
}

void TmvMetadataParameter::SetAltNameCaseSensitive(bool value) {
  if (altNameId_->Quoted == value) return;
  altNameId_->Quoted = value;
  NotifyUpdated();
}

void TmvMetadataParameter::SetFieldType(TFieldType value) { SetValue(fieldType_, value); }
void TmvMetadataParameter::SetSize(int32_t value) { SetValue(size_, value); }
void TmvMetadataParameter::SetPrecision(int32_t value) { SetValue(precision_, value); }
void TmvMetadataParameter::SetScale(int32_t value) { SetValue(scale_, value); }
void TmvMetadataParameter::SetParamType(TParamType value) { SetValue(paramType_, value); }
void TmvMetadataParameter::SetShortDescription(WideStringView value) { SetValue(shortDescription_, WideString(value)); }
void TmvMetadataParameter::SetLongDescription(WideStringView value) { SetValue(longDescription_, WideString(value)); }

TmvMetadataParametersList::TmvMetadataParametersList(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataCollectionOf<TmvMetadataParameter>(parent, context) {}

void TmvMetadataParametersList::Assign(const TmvPersistent* source) {
  TmvMetadataCollectionOf<TmvMetadataParameter>::Assign(source);
  if (const auto* other = TmvCast<TmvMetadataParametersList>(source)) loaded_ = other->loaded_;
}

}  // namespace mv
