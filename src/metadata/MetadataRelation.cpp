#include "metadata/MetadataRelation.h"

#include <pugixml.hpp>

#include <cstring>

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataNames.h"
#include "metadata/MetadataXml.h"

namespace mv {

MV_DEFINE_METADATA_CLASS(TmvMetadataRelation, TmvMetadataCollectionItemBase)
MV_DEFINE_METADATA_CLASS(TmvMetadataRelationsList, TmvMetadataCollectionBase)

// --- TmvMetadataRelation ---

TmvMetadataRelation::TmvMetadataRelation(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataCollectionItemBase(parent, context),
      keyFields_(TmvCreate<TmvMetadataQualifiedNamesList>(this, context)),
      childDatabase_(TastCreate<TSQLQualifiedName>(context)),
      childSchema_(TastCreate<TastTokenIdentifier>(context)),
      childName_(TastCreate<TastTokenIdentifier>(context)),
      childTable_(TastCreate<TSQLQualifiedName>(context)),
      childFields_(TmvCreate<TmvMetadataQualifiedNamesList>(this, context)) {}

TmvMetadataRelation::~TmvMetadataRelation() = default;

void TmvMetadataRelation::Assign(const TmvPersistent* source) {
  AssignFrom<TmvMetadataRelation>(
      source, [&] { TmvMetadataCollectionItemBase::Assign(source); },
      [&](const TmvMetadataRelation& other) {
        foreignKey_ = other.foreignKey_;
        keyFields_->Assign(other.keyFields_.get());
        keyCardinality_ = other.keyCardinality_;
        AssignQualifiedName(*childDatabase_, other.childDatabase_.get());
        AssignIdentifier(*childSchema_, other.childSchema_.get());
        AssignIdentifier(*childName_, other.childName_.get());
        UpdateChildFullName();
        childFields_->Assign(other.childFields_.get());
        childCardinality_ = other.childCardinality_;
      });
}

void TmvMetadataRelation::SetForeignKey(bool value) { SetValueAndNotify(*this, foreignKey_, value); }
void TmvMetadataRelation::SetKeyCardinality(TmvMetadataRelationCardinality value) {
  SetValueAndNotify(*this, keyCardinality_, value);
}
void TmvMetadataRelation::SetChildCardinality(TmvMetadataRelationCardinality value) {
  SetValueAndNotify(*this, childCardinality_, value);
}

void TmvMetadataRelation::UpdateChildFullName() {
  BuildFullName(*childTable_, childName_.get(), childSchema_.get(), childDatabase_.get());
}

void TmvMetadataRelation::SetChildDatabase(const TSQLQualifiedName* value) {
  AssignQualifiedName(*childDatabase_, value);
  UpdateChildFullName();
  NotifyUpdated();
}

void TmvMetadataRelation::SetChildSchema(const TastTokenIdentifier* value) {
  AssignIdentifier(*childSchema_, value);
  UpdateChildFullName();
  NotifyUpdated();
}

void TmvMetadataRelation::SetChildName(const TastTokenIdentifier* value) {
  AssignIdentifier(*childName_, value);
  UpdateChildFullName();
  NotifyUpdated();
}

void TmvMetadataRelation::SetChildTable(const TSQLQualifiedName* value) {
  SplitFullName(SQLContext(), value, *childName_, *childSchema_, *childDatabase_);
  UpdateChildFullName();
  NotifyUpdated();
}

void TmvMetadataRelation::SetChildDatabaseStr(WideStringView text) {
  if (text == ChildDatabaseStr()) return;
  SetChildDatabase(ParseOptionalName(SQLContext(), text).get());
}

WideString TmvMetadataRelation::ChildDatabaseStr() const { return childDatabase_->GetQualifiedName(); }
WideString TmvMetadataRelation::ChildSchemaStr() const { return TokenSQL(childSchema_.get()); }
WideString TmvMetadataRelation::ChildNameStr() const { return TokenSQL(childName_.get()); }
WideString TmvMetadataRelation::ChildTableStr() const { return childTable_->GetQualifiedName(); }
WideString TmvMetadataRelation::ChildDatabaseStrNotQuoted() const {
  return childDatabase_->GetQualifiedNameWithoutQuotes();
}
WideString TmvMetadataRelation::ChildTableStrNotQuoted() const { return childTable_->GetQualifiedNameWithoutQuotes(); }

TmvMetadataObject* TmvMetadataRelation::GetKeyMetadataObject() const {
  TmvMetadataBase* list = Parent();
  return list ? TmvCast<TmvMetadataObject>(list->Parent()) : nullptr;
}

TmvMetadataObject* TmvMetadataRelation::GetChildMetadataObject() const {
  TmvMetadataObject* key = GetKeyMetadataObject();
  if (!key || !key->Container()) return nullptr;
  return key->Container()->FindObjectByFullName(childTable_.get());
}

// --- XML ---

namespace {

const char16_t* CardinalityText(TmvMetadataRelationCardinality value) {
  switch (value) {
    case mrcOne:
      return u"1";
    case mrcMany:
      return u"*";
    case mrcUnknown:
      break;
  }
  return u"";
}

// An element without text keeps `value` as it is.
void ReadCardinality(pugi::xml_node element, TmvMetadataRelationCardinality& value) {
  if (!XMLNodeHasText(element)) return;
  const WideString text = WideTrim(XMLNodeText(element));
  value = text == u"1" ? mrcOne : text == u"*" ? mrcMany : mrcUnknown;
}

}  // namespace

pugi::xml_node TmvMetadataRelation::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  pugi::xml_node element = parent.append_child(nodeName);
  if (foreignKey_) element.append_attribute("type").set_value("FK");
  keyFields_->GetXMLNode(element, "key_fields", "field_name");
  CreateNodeWithValueParent(element, "key_cardinality", CardinalityText(keyCardinality_));
  if (childDatabase_->GetCount() > 0) childDatabase_->GetXMLNode(element, "child_database", "item");
  if (!childSchema_->IsEmpty()) childSchema_->GetXMLNode(element, "child_schema");
  childName_->GetXMLNode(element, "child_name");
  childFields_->GetXMLNode(element, "child_fields", "field_name");
  CreateNodeWithValueParent(element, "child_cardinality", CardinalityText(childCardinality_));
  return element;
}

void TmvMetadataRelation::LoadFromXMLNode(pugi::xml_node element) {
  TmvUpdateBatch batch(*this);
  keyFields_->Clear();
  keyCardinality_ = mrcOne;
  childDatabase_->Clear();
  childSchema_->Clear();
  childName_->Clear();
  childFields_->Clear();
  childCardinality_ = mrcMany;
  // A type other than "FK" leaves the flag as it was.
  if (pugi::xml_attribute type = element.attribute("type"); type && WideSameText(WideTrim(UTF8Decode(type.value())), u"FK"))
    foreignKey_ = true;
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    const char* name = child.name();
    auto is = [name](const char* tag) { return std::strcmp(name, tag) == 0; };
    if (is("key_fields"))
      keyFields_->LoadFromXMLNode(child, "field_name");
    else if (is("key_cardinality"))
      ReadCardinality(child, keyCardinality_);
    else if (is("child_database"))
      childDatabase_->LoadFromXMLNode(child, "item");
    else if (is("child_schema"))
      childSchema_->LoadFromXMLNode(child);
    else if (is("child_name"))
      childName_->LoadFromXMLNode(child);
    else if (is("child_fields"))
      childFields_->LoadFromXMLNode(child, "field_name");
    else if (is("child_cardinality"))
      ReadCardinality(child, childCardinality_);
  }
  UpdateChildFullName();
  NotifyUpdated();
}

// --- TmvMetadataRelationsList ---

TmvMetadataRelationsList::TmvMetadataRelationsList(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataCollectionOf<TmvMetadataRelation>(parent, context) {}

namespace {

void CopyNames(TmvMetadataQualifiedNamesList& target, const TSQLQualifiedNamesList* source) {
  target.Clear();
  if (!source) return;
  for (int i = 0; i < source->Count(); ++i) target.Add(source->Items(i));
}

bool SameIdentifierOrEmpty(const TmvBaseSQLContext& context, const TastTokenIdentifier* a,
                           const TastTokenIdentifier* b) {
  if (IsIdentifierEmpty(a) || IsIdentifierEmpty(b)) return IsIdentifierEmpty(a) && IsIdentifierEmpty(b);
  return context.IsIdentifiersEqual(a, b);
}

bool SameNames(const TmvBaseSQLContext& context, const TmvMetadataQualifiedNamesList& a,
               const TSQLQualifiedNamesList* b) {
  const int count = b ? b->Count() : 0;
  if (a.Count() != count) return false;
  for (int i = 0; i < count; ++i)
    if (!context.IsQualifiedNamesEqual(a.Items(i), b->Items(i))) return false;
  return true;
}

}  // namespace

TmvMetadataRelation* TmvMetadataRelationsList::AddRelation(const TSQLQualifiedNamesList* keyFields,
                                                           const TastTokenIdentifier* childSchema,
                                                           const TastTokenIdentifier* childName,
                                                           const TSQLQualifiedName* childDatabase,
                                                           const TSQLQualifiedNamesList* childFields) {
  TmvUpdateBatch batch(*this);
  TmvMetadataRelation* relation = Add();
  TmvUpdateBatch relationBatch(*relation);
  CopyNames(*relation->KeyFields(), keyFields);
  relation->SetChildSchema(childSchema);
  relation->SetChildName(childName);
  relation->SetChildDatabase(childDatabase);
  CopyNames(*relation->ChildFields(), childFields);
  return relation;
}

int TmvMetadataRelationsList::FindRelation(const TSQLQualifiedNamesList* keyFields,
                                           const TastTokenIdentifier* childSchema,
                                           const TSQLQualifiedName* childDatabase,
                                           const TSQLQualifiedNamesList* childFields,
                                           const TastTokenIdentifier* childName) const {
  const TmvBaseSQLContext* context = SQLContext();
  if (!context) return -1;
  for (int i = 0; i < Count(); ++i) {
    const TmvMetadataRelation* relation = Items(i);
    if (relation->KeyFields()->Count() != (keyFields ? keyFields->Count() : 0)) continue;
    if (relation->ChildFields()->Count() != (childFields ? childFields->Count() : 0)) continue;
    if (!SameIdentifierOrEmpty(*context, relation->ChildName(), childName)) continue;
    if (!SameIdentifierOrEmpty(*context, relation->ChildSchema(), childSchema)) continue;
    if (!context->IsQualifiedNamesEqual(relation->ChildDatabase(), childDatabase)) continue;
    if (SameNames(*context, *relation->KeyFields(), keyFields) &&
        SameNames(*context, *relation->ChildFields(), childFields))
      return i;
  }
  return -1;
}

}  // namespace mv
