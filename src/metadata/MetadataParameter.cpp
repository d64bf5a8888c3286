#include "metadata/MetadataParameter.h"

#include "metadata/MetadataNames.h"

namespace mv {

MV_DEFINE_METADATA_CLASS(TmvMetadataParameter, TmvMetadataCollectionItemBase)
MV_DEFINE_METADATA_CLASS(TmvMetadataParametersList, TmvMetadataCollectionBase)

TmvMetadataParameter::TmvMetadataParameter(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvWithAltName(parent, context), name_(TastCreate<TastTokenIdentifier>(context)) {}

TmvMetadataParameter::~TmvMetadataParameter() = default;

void TmvMetadataParameter::Assign(const TmvPersistent* source) {
  AssignFrom<TmvMetadataParameter>(
      source, [&] { TmvMetadataCollectionItemBase::Assign(source); },
      [&](const TmvMetadataParameter& other) {
        name_->Assign(*other.name_);
        altNameId_->Assign(*other.altNameId_);
        fieldType_ = other.fieldType_;
        size_ = other.size_;
        precision_ = other.precision_;
        scale_ = other.scale_;
        paramType_ = other.paramType_;
        shortDescription_ = other.shortDescription_;
        longDescription_ = other.longDescription_;
      });
}

void TmvMetadataParameter::SetName(const TastTokenIdentifier* token) {
  if (token == name_.get()) return;
  AssignIdentifier(*name_, token);
  NotifyUpdated();
}

void TmvMetadataParameter::SetFieldType(TFieldType value) { SetValueAndNotify(*this, fieldType_, value); }
void TmvMetadataParameter::SetSize(int32_t value) { SetValueAndNotify(*this, size_, value); }
void TmvMetadataParameter::SetPrecision(int32_t value) { SetValueAndNotify(*this, precision_, value); }
void TmvMetadataParameter::SetScale(int32_t value) { SetValueAndNotify(*this, scale_, value); }
void TmvMetadataParameter::SetParamType(TParamType value) { SetValueAndNotify(*this, paramType_, value); }
void TmvMetadataParameter::SetShortDescription(WideStringView value) {
  SetValueAndNotify(*this, shortDescription_, value);
}
void TmvMetadataParameter::SetLongDescription(WideStringView value) {
  SetValueAndNotify(*this, longDescription_, value);
}

TmvMetadataParametersList::TmvMetadataParametersList(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataLoadedListOf<TmvMetadataParameter>(parent, context) {}

}  // namespace mv
