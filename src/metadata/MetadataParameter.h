// Parameters of stored procedures and the list that holds them, with its
// loaded flag (see TmvMetadataLoadedListOf).
#pragma once

#include "metadata/MetadataAltName.h"
#include "metadata/MetadataDataType.h"

namespace mv {

class TmvMetadataParameter : public TmvWithDataType<TmvWithAltName<TmvMetadataCollectionItemBase>> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataParameter(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataParameter() override;

  void Assign(const TmvPersistent* source) override;
  using TmvMetadataCollectionItemBase::Assign;

  const TastTokenIdentifier* Name() const { return name_.get(); }
  // Copies the token; null clears the name.
  void SetName(const TastTokenIdentifier* token);

  // Type, size, precision, scale and descriptions: see TmvWithDataType.
  TParamType ParamType() const { return paramType_; }
  void SetParamType(TParamType value);

  // --- XML (see MetadataXml.h): only what is set is written ---
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName) override;
  void LoadFromXMLNode(pugi::xml_node element) override;

 private:
  TmvOwned<TastTokenIdentifier> name_;
  TParamType paramType_ = ptUnknown;
};

class TmvMetadataParametersList : public TmvMetadataLoadedListOf<TmvMetadataParameter> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataParametersList(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  // Each parameter's element is named so.
  const char* GetXMLItemName() const override { return "parameters"; }
};

}  // namespace mv
