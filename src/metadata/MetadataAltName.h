// The alternate (display) name that fields, parameters and objects carry:
// an identifier whose text and case flag are read and written apart.
#pragma once

#include "metadata/MetadataBase.h"
#include "tree/Tokens.h"

namespace mv {

// Adds the alternate name to a metadata class `Base`. A change of the text
// or of the case flag calls AltNameChanged, which notifies.
template <class Base>
class TmvWithAltName : public Base {
 public:
  TmvWithAltName(TmvMetadataBase* parent, TmvBaseSQLContext* context)
      : Base(parent, context), altNameId_(TastCreate<TastTokenIdentifier>(context)) {}

  const TastTokenIdentifier* AltNameId() const { return altNameId_.get(); }
  const WideString& AltName() const { return altNameId_->Token; }
  void SetAltName(WideStringView value) {
    if (altNameId_->Token == value) return;
    altNameId_->SetToken(value);
    AltNameChanged();
  }
  bool AltNameCaseSensitive() const { return altNameId_->Quoted; }
  void SetAltNameCaseSensitive(bool value) {
    if (altNameId_->Quoted == value) return;
    altNameId_->Quoted = value;
    AltNameChanged();
  }

 protected:
  virtual void AltNameChanged() { this->NotifyUpdated(); }

  TmvOwned<TastTokenIdentifier> altNameId_;
};

}  // namespace mv
