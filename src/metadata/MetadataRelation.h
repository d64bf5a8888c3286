// Foreign keys as the metadata model keeps them. A relation stands in the
// relations list of one object (its key object) and names the other object
// (the child) by database, schema and name. With the foreign-key flag clear
// the key object is the referenced one and the child refers to it; with the
// flag set the key object holds the foreign key and the child is referenced.
#pragma once

#include "metadata/MetadataBase.h"
#include "metadata/MetadataQualifiedNamesList.h"
#include "tree/QualifiedNames.h"

namespace mv {

class TmvMetadataObject;

enum TmvMetadataRelationCardinality : uint8_t { mrcUnknown, mrcOne, mrcMany };

class TmvMetadataRelation : public TmvMetadataCollectionItemBase {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataRelation(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataRelation() override;

  void Assign(const TmvPersistent* source) override;
  using TmvMetadataCollectionItemBase::Assign;

  bool ForeignKey() const { return foreignKey_; }
  void SetForeignKey(bool value);

  // Fields on the key object.
  TmvMetadataQualifiedNamesList* KeyFields() const { return keyFields_.get(); }
  TmvMetadataRelationCardinality KeyCardinality() const { return keyCardinality_; }
  void SetKeyCardinality(TmvMetadataRelationCardinality value);

  // --- The child object's name ---
  const TSQLQualifiedName* ChildDatabase() const { return childDatabase_.get(); }
  const TastTokenIdentifier* ChildSchema() const { return childSchema_.get(); }
  const TastTokenIdentifier* ChildName() const { return childName_.get(); }
  // Name, schema and database as one name, rebuilt on every change of a part.
  const TSQLQualifiedName* ChildTable() const { return childTable_.get(); }
  // Setters copy (null clears) and rebuild ChildTable.
  void SetChildDatabase(const TSQLQualifiedName* value);
  void SetChildSchema(const TastTokenIdentifier* value);
  void SetChildName(const TastTokenIdentifier* value);
  // Splits a full name into the three parts (an empty name clears them).
  void SetChildTable(const TSQLQualifiedName* value);
  // The database from SQL text, as the object's SetDatabaseStr reads it.
  void SetChildDatabaseStr(WideStringView text);
  WideString ChildDatabaseStr() const;
  WideString ChildSchemaStr() const;
  WideString ChildNameStr() const;
  WideString ChildTableStr() const;
  WideString ChildDatabaseStrNotQuoted() const;
  const WideString& ChildSchemaStrNotQuoted() const { return childSchema_->Token; }
  const WideString& ChildNameStrNotQuoted() const { return childName_->Token; }
  WideString ChildTableStrNotQuoted() const;

  // Fields on the child object, pairwise with KeyFields.
  TmvMetadataQualifiedNamesList* ChildFields() const { return childFields_.get(); }
  TmvMetadataRelationCardinality ChildCardinality() const { return childCardinality_; }
  void SetChildCardinality(TmvMetadataRelationCardinality value);

  // The object whose relations list holds this relation.
  TmvMetadataObject* GetKeyMetadataObject() const;
  // The child found in the key object's container by ChildTable; null
  // without a key object or container, or when it is not there.
  TmvMetadataObject* GetChildMetadataObject() const;

  void UpdateChildFullName();

  // --- XML (see MetadataXml.h): attribute type="FK" for a foreign key;
  // cardinalities "1", "*", or empty for mrcUnknown (which reads back as the default) ---
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName) override;
  void LoadFromXMLNode(pugi::xml_node element) override;

 private:
  bool foreignKey_ = false;
  TmvOwned<TmvMetadataQualifiedNamesList> keyFields_;
  TmvMetadataRelationCardinality keyCardinality_ = mrcOne;
  TmvOwned<TSQLQualifiedName> childDatabase_;
  TmvOwned<TastTokenIdentifier> childSchema_;
  TmvOwned<TastTokenIdentifier> childName_;
  TmvOwned<TSQLQualifiedName> childTable_;
  TmvOwned<TmvMetadataQualifiedNamesList> childFields_;
  TmvMetadataRelationCardinality childCardinality_ = mrcMany;
};

class TmvMetadataRelationsList : public TmvMetadataCollectionOf<TmvMetadataRelation> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataRelationsList(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  const char* GetXMLItemName() const override { return "relation"; }

  // A new relation with those parts; the field lists are cloned.
  TmvMetadataRelation* AddRelation(const TSQLQualifiedNamesList* keyFields, const TastTokenIdentifier* childSchema,
                                   const TastTokenIdentifier* childName, const TSQLQualifiedName* childDatabase,
                                   const TSQLQualifiedNamesList* childFields);
  // The first relation with the same child and the same key and child
  // fields, pairwise and in order; -1 if none.
  int FindRelation(const TSQLQualifiedNamesList* keyFields, const TastTokenIdentifier* childSchema,
                   const TSQLQualifiedName* childDatabase, const TSQLQualifiedNamesList* childFields,
                   const TastTokenIdentifier* childName) const;
};

}  // namespace mv
