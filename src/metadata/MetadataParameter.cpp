#include "metadata/MetadataParameter.h"

#include "metadata/MetadataNames.h"

namespace mv {

MV_DEFINE_METADATA_CLASS(TmvMetadataParameter, TmvMetadataCollectionItemBase)
MV_DEFINE_METADATA_CLASS(TmvMetadataParametersList, TmvMetadataCollectionBase)

TmvMetadataParameter::TmvMetadataParameter(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvWithDataType(parent, context), name_(TastCreate<TastTokenIdentifier>(context)) {}

TmvMetadataParameter::~TmvMetadataParameter() = default;

void TmvMetadataParameter::Assign(const TmvPersistent* source) {
  AssignFrom<TmvMetadataParameter>(
      source, [&] { TmvMetadataCollectionItemBase::Assign(source); },
      [&](const TmvMetadataParameter& other) {
        name_->Assign(*other.name_);
        altNameId_->Assign(*other.altNameId_);
        AssignDataType(other);
        paramType_ = other.paramType_;
      });
}

void TmvMetadataParameter::SetName(const TastTokenIdentifier* token) {
  if (token == name_.get()) return;
  AssignIdentifier(*name_, token);
  NotifyUpdated();
}

void TmvMetadataParameter::SetParamType(TParamType value) { SetValueAndNotify(*this, paramType_, value); }

TmvMetadataParametersList::TmvMetadataParametersList(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataLoadedListOf<TmvMetadataParameter>(parent, context) {}

}  // namespace mv
