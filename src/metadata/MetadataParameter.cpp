#include "metadata/MetadataParameter.h"

#include <pugixml.hpp>

#include <cstring>

#include "metadata/MetadataNames.h"
#include "metadata/MetadataXml.h"

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

pugi::xml_node TmvMetadataParameter::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  pugi::xml_node element = parent.append_child(nodeName);
  if (!name_->IsEmpty()) name_->GetXMLNode(element, "name");
  if (!AltName().empty()) CreateNodeWithValueParent(element, "alt_name", AltName());
  if (AltNameCaseSensitive()) CreateNodeWithValueParent(element, "alt_name_case_sens", true);
  if (fieldType_ != ftUnknown) CreateNodeWithValueParent(element, "type", int(fieldType_));
  if (size_ != 0) CreateNodeWithValueParent(element, "size", size_);
  if (precision_ != 0) CreateNodeWithValueParent(element, "precision", precision_);
  if (scale_ != 0) CreateNodeWithValueParent(element, "scale", scale_);
  if (paramType_ != ptUnknown) CreateNodeWithValueParent(element, "param_type", int(paramType_));
  if (!shortDescription_.empty()) CreateNodeWithValueParent(element, "descr", shortDescription_);
  if (!longDescription_.empty()) CreateNodeWithValueParent(element, "long_descr", longDescription_);
  return element;
}

void TmvMetadataParameter::LoadFromXMLNode(pugi::xml_node element) {
  TmvUpdateBatch batch(*this);
  name_->Clear();
  altNameId_->Clear();
  fieldType_ = ftUnknown;
  size_ = precision_ = scale_ = 0;
  paramType_ = ptUnknown;
  shortDescription_.clear();
  longDescription_.clear();
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    const char* name = child.name();
    auto is = [name](const char* tag) { return std::strcmp(name, tag) == 0; };
    if (is("name")) {
      name_->LoadFromXMLNode(child);
    } else if (is("alt_name")) {
      altNameId_->SetToken(XMLNodeText(child));
    } else if (is("alt_name_case_sens")) {
      altNameId_->Quoted = XMLNodeBool(child);
    } else if (is("type")) {
      fieldType_ = ReadXMLFieldType(child);
    } else if (is("size")) {
      size_ = XMLNodeInt(child, 0);
    } else if (is("precision")) {
      precision_ = XMLNodeInt(child, 0);
    } else if (is("scale")) {
      scale_ = XMLNodeInt(child, 0);
    } else if (is("param_type")) {
      const int value = XMLNodeInt(child, ptUnknown);
      paramType_ = value >= ptUnknown && value <= ptResult ? TParamType(value) : ptUnknown;
    } else if (is("descr")) {
      shortDescription_ = XMLNodeText(child);
    } else if (is("long_descr")) {
      longDescription_ = XMLNodeText(child);
    }
  }
  NotifyUpdated();
}

TmvMetadataParametersList::TmvMetadataParametersList(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataLoadedListOf<TmvMetadataParameter>(parent, context) {}

}  // namespace mv
