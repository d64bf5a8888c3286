// What printing a bound name asks of the metadata model. The syntax tree
// names these operations and the metadata layer defines them
// (metadata/TreeMetadataHooks.cpp), so the tree needs none of its headers.
#pragma once

#include <memory>

#include "sqlgen/SQLOptions.h"
#include "support/Class.h"
#include "support/FieldType.h"
#include "support/WideString.h"

namespace mv {

class TmvMetadataContainer;
class TmvMetadataObject;
class TmvMetadataField;
class TmvMetadataFieldsList;
class TmvBaseSQLContext;
class TSQLQualifiedName;
class TSQLIdentifiersCollection;
class TSQLFromSource;
class TastTokenIdentifier;

// Whether the container holds the object; `object` may be a dangling
// address (it is compared, not read).
bool MetadataContainerHolds(const TmvMetadataContainer* container, const TmvMetadataObject* object);
// The container's default database (possibly empty) and default schemas.
const TSQLQualifiedName* MetadataDefaultDatabase(const TmvMetadataContainer* container);
const TSQLIdentifiersCollection* MetadataDefaultSchemas(const TmvMetadataContainer* container);
// The object's name for printing, with the database and schema left out as
// the skipping setting allows; the caller owns it.
TmvOwned<TSQLQualifiedName> MetadataObjectNameAsObject(const TmvMetadataObject* object,
                                                       TmvObjectPrefixSkipping prefixSkipping);
TastTokenIdentifier* MetadataObjectName(const TmvMetadataObject* object);
// The alternate name, or null when it is empty.
TastTokenIdentifier* MetadataObjectAltName(const TmvMetadataObject* object);
// The source of a virtual object, or null for a server object.
TSQLFromSource* MetadataObjectExpression(const TmvMetadataObject* object);
// Whether the field is one of the object's (through a synonym, its target's).
bool MetadataObjectHasField(const TmvMetadataObject* object, const TmvMetadataField* field);
// The field's alternate name, or null when it is empty.
TastTokenIdentifier* MetadataFieldAltName(const TmvMetadataField* field);

// The field's type and its text form.
void MetadataFieldType(const TmvMetadataField* field, TFieldType& type, WideString& typeName);

// A metadata fields list that a node owns: the columns a source offers, a
// select returns or a with item names. Made on first use, under the node's
// context; not a child node, and not copied by Assign (the fix-up fills it).
class TastOwnedFieldsList {
 public:
  TmvMetadataFieldsList* Get(TmvBaseSQLContext* context);
  TmvMetadataFieldsList* Peek() const { return list_.get(); }

 private:
  struct Deleter {
    void operator()(TmvMetadataFieldsList* list) const;
  };
  std::unique_ptr<TmvMetadataFieldsList, Deleter> list_;
};

}  // namespace mv
