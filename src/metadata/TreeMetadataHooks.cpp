// The metadata side of tree/MetadataHooks.h.
#include "metadata/MetadataContainer.h"
#include "tree/MetadataHooks.h"

namespace mv {

bool MetadataContainerHolds(const TmvMetadataContainer* container, const TmvMetadataObject* object) {
  return container && container->Contains(object);
}

const TSQLQualifiedName* MetadataDefaultDatabase(const TmvMetadataContainer* container) {
  return container ? container->DefaultDatabaseName() : nullptr;
}

const TSQLIdentifiersCollection* MetadataDefaultSchemas(const TmvMetadataContainer* container) {
  return container ? container->DefaultSchemaNames() : nullptr;
}

TmvOwned<TSQLQualifiedName> MetadataObjectNameAsObject(const TmvMetadataObject* object,
                                                       TmvObjectPrefixSkipping prefixSkipping) {
  return object->GetNameAsObject(true, true, prefixSkipping, true);
}

TastTokenIdentifier* MetadataObjectName(const TmvMetadataObject* object) {
  return const_cast<TastTokenIdentifier*>(object->Name());
}

TastTokenIdentifier* MetadataObjectAltName(const TmvMetadataObject* object) {
  if (!object || object->AltName().empty()) return nullptr;
  return const_cast<TastTokenIdentifier*>(object->AltNameId());
}

TSQLFromSource* MetadataObjectExpression(const TmvMetadataObject* object) {
  return object ? object->ExpressionAST() : nullptr;
}

bool MetadataObjectHasField(const TmvMetadataObject* object, const TmvMetadataField* field) {
  if (!object || !field) return false;
  const TmvMetadataFieldsList* fields = object->GetFields();
  for (int i = 0; i < fields->Count(); ++i)
    if (fields->Items(i) == field) return true;
  return false;
}

void MetadataFieldType(const TmvMetadataField* field, TFieldType& type, WideString& typeName) {
  type = field->FieldType();
  typeName = field->FieldTypeName();
}

TmvMetadataFieldsList* TastOwnedFieldsList::Get(TmvBaseSQLContext* context) {
  if (!list_) list_.reset(TmvCreate<TmvMetadataFieldsList>(nullptr, context).release());
  return list_.get();
}

void TastOwnedFieldsList::Deleter::operator()(TmvMetadataFieldsList* list) const { TmvOwned<TmvMetadataFieldsList> drop(list); }

TastTokenIdentifier* MetadataFieldAltName(const TmvMetadataField* field) {
  if (!field || field->AltName().empty()) return nullptr;
  return const_cast<TastTokenIdentifier*>(field->AltNameId());
}

}  // namespace mv
