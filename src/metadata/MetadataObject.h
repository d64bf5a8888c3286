// Database objects of the metadata model: tables, views, procedures and
// synonyms, with their names, fields and relations.
//
// Every name is a token of the syntax tree, so that metadata compares under
// the same rules as parsed SQL: Name and Schema are identifiers, Database and
// DBLink qualified names. FullName and SchemedName hold the parts from the
// inside out (object name first) and are built on their first read.
//
// An object belongs to at most one container, which indexes it by name and
// by alternate name; a change of either re-indexes it at once.
#pragma once

#include <vector>

#include "metadata/MetadataField.h"
#include "metadata/MetadataParameter.h"
#include "metadata/MetadataRelation.h"
#include "sqlgen/SQLOptions.h"
#include "tree/Tokens.h"

namespace mv {

class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataObjectHashBucket;
class TSQLBuilder;
class TSQLFromSource;

class TmvMetadataObject : public TmvWithAltName<TmvMetadataBase> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataObject(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataObject() override;

  // From another object: name parts, expression, flags, alternate name,
  // recommended aliases, descriptions, then fields and relations (through
  // the virtual GetFields / SetFields, so a synonym source gives its target's).
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataBase::Assign;

  // The container this object was made for or added to; may be null.
  TmvMetadataContainer* Container() const { return container_; }

  // --- Name parts ---
  const TSQLQualifiedName* DBLink() const { return dbLink_.get(); }
  const TSQLQualifiedName* Database() const { return database_.get(); }
  const TastTokenIdentifier* Schema() const { return schema_.get(); }
  const TastTokenIdentifier* Name() const { return name_.get(); }
  // Name and schema.
  const TSQLQualifiedName* SchemedName() const;
  // Name, schema, database, and the link in the link slot.
  const TSQLQualifiedName* FullName() const;

  // Setters copy the value (null clears the part), re-index the object and notify.
  void SetName(const TastTokenIdentifier* value);
  void SetSchema(const TastTokenIdentifier* value);
  void SetDatabase(const TSQLQualifiedName* value);
  void SetDBLink(const TSQLQualifiedName* value);
  // From SQL text: the name and schema as identifiers (quoted where they
  // have to be); the database and link as names, unchanged when the text
  // equals the present one, cleared by empty text, and "Invalid object name"
  // for text that is no name.
  void SetNameStr(WideStringView text);
  void SetSchemaStr(WideStringView text);
  void SetDatabaseStr(WideStringView text);
  void SetDBLinkStr(WideStringView text);

  // Text with quotes where the context's builder writes them.
  WideString NameStr() const;
  WideString SchemaStr() const;
  WideString DatabaseStr() const;
  WideString DBLinkStr() const;
  WideString FullNameStr() const;
  WideString SchemedNameStr() const;
  // The same without quotes.
  const WideString& NameStrNotQuoted() const { return name_->Token; }
  const WideString& SchemaStrNotQuoted() const { return schema_->Token; }
  WideString DatabaseStrNotQuoted() const;
  WideString DBLinkStrNotQuoted() const;
  WideString FullNameStrNotQuoted() const;
  WideString SchemedNameStrNotQuoted() const;

  // Rebuilds SchemedName and FullName where they exist and re-enters the
  // object in its container's name index.
  void UpdateNames();

  // Name, schema and database compared one by one (absent counts as empty).
  bool IsNameEqual(const TastTokenIdentifier* name, const TastTokenIdentifier* schema,
                   const TSQLQualifiedName* database) const;
  bool IsFullNameEqual(const TSQLQualifiedName* name) const;

  // The name to print for the object, without the database (and then the
  // schema) where they are the container's defaults and `prefixSkipping`
  // allows leaving them out. The caller owns the result.
  TmvOwned<TSQLQualifiedName> GetNameAsObject(bool withDatabase, bool withSchema,
                                              TmvObjectPrefixSkipping prefixSkipping, bool withName) const;
  // The same written by `builder`, with the builder's ObjectPrefixSkipping.
  WideString GetNameAsString(bool withDatabase, bool withSchema, bool withName, TSQLBuilder& builder) const;

  // --- Virtual object: a FROM source in place of a server object ---
  const WideString& Expression() const { return expression_; }
  TSQLFromSource* ExpressionAST() const { return expressionAST_.get(); }
  // Parses non-empty text as a FROM source (EmvSQLError when it is none),
  // which makes the object virtual; empty text frees the parse and keeps
  // the previous text.
  void SetExpression(WideStringView text);
  // Takes a parsed source and its text. Null frees the parse and leaves the text.
  void SetExpressionAST(TmvOwned<TSQLFromSource> expression, WideStringView text);
  bool IsVirtualCalculatedObject() const { return expressionAST_ != nullptr; }

  // --- Flags and descriptions ---
  bool System() const { return system_; }
  void SetSystem(bool value);
  // Shown by the user interface (the container may still hide it).
  bool Visible() const { return visible_; }
  void SetVisible(bool value);
  // Aliases to propose when the object joins a query; made on first read.
  TastIdentifiersList* RecomendedAliases() const;
  bool HasRecomendedAliases() const { return recomendedAliases_ != nullptr; }
  const WideString& LongDescription() const { return longDescription_; }
  void SetLongDescription(WideStringView value);
  const WideString& ShortDescription() const { return shortDescription_; }
  void SetShortDescription(WideStringView value);

  // --- Fields and relations (a synonym forwards them to its target) ---
  virtual TmvMetadataFieldsList* GetFields() const { return fields_.get(); }
  virtual void SetFields(const TmvMetadataFieldsList* value);
  virtual TmvMetadataRelationsList* GetRelations() const { return relations_.get(); }
  virtual void SetRelations(const TmvMetadataRelationsList* value);

  // The objects and relations on the other side of the container's
  // foreign keys; new lists for the caller.
  std::vector<TmvMetadataObject*> GetReferencedObjects() const;
  std::vector<TmvMetadataObject*> GetReferencingObjects() const;
  std::vector<TmvMetadataRelation*> GetReferencedRelations() const;
  std::vector<TmvMetadataRelation*> GetReferencingRelations() const;

  // --- Loading the fields ---
  // Loads unless the fields list is loaded; `connection` may be null.
  void LoadFields(TmvConnection* connection = nullptr) { LoadFieldsHelper(connection, true); }
  // The same, except that nothing is fetched while the container works offline.
  void LoadFieldsOnDemand(TmvConnection* connection = nullptr) { LoadFieldsHelper(connection, false); }
  // The dialect's query for the fields of this object (`filter` lists the
  // fields; empty means all).
  virtual WideString GetQueryToLoadFields(WideStringView filter) const;
  // Deletes the virtual calculated fields, the last first.
  void DeleteVirtualCalculatedFields();

  // --- XML (see MetadataXml.h) ---
  // The element of this kind of object in the metadata file.
  virtual const char* GetXMLItemName() const { return "object"; }
  // Loads the fields first, unless they are loaded or the container works offline.
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName) override;
  // Reads the element's children in any order, skipping those it does not know.
  virtual void LoadFromXMLNode(pugi::xml_node element);

 protected:
  // A change of the alternate name re-enters the object in the container's
  // alternate-name index.
  void AltNameChanged() override;
  // Fetches the fields through the context (and so the syntax provider).
  virtual void LoadFieldsInternal(TmvConnection* connection) = 0;
  // The full name as the server must see it.
  WideString FullNameForServer() const;

 private:
  friend class TmvMetadataContainer;
  friend class TmvMetadataObjectHash;

  void LoadFieldsHelper(TmvConnection* connection, bool forced);
  void UpdateSchemedName() const;
  void UpdateFullName() const;
  // The relations of the container, each with its key and child objects.
  template <class Visit>
  void ForEachContainerRelation(Visit visit) const;

  TmvMetadataContainer* container_;
  // The buckets that hold the object now, and the keys it entered them by.
  TmvMetadataObjectHashBucket* nameBucket_ = nullptr;
  TmvMetadataObjectHashBucket* altNameBucket_ = nullptr;
  WideString nameKey_;
  WideString altNameKey_;

  TmvOwned<TSQLQualifiedName> dbLink_;
  TmvOwned<TSQLQualifiedName> database_;
  TmvOwned<TastTokenIdentifier> schema_;
  TmvOwned<TastTokenIdentifier> name_;
  mutable TmvOwned<TSQLQualifiedName> schemedName_;
  mutable TmvOwned<TSQLQualifiedName> fullName_;
  WideString expression_;
  TmvOwned<TSQLFromSource> expressionAST_;
  bool system_ = false;
  bool visible_ = true;
  mutable TmvOwned<TastIdentifiersList> recomendedAliases_;
  WideString longDescription_;
  WideString shortDescription_;
  TmvOwned<TmvMetadataFieldsList> fields_;
  TmvOwned<TmvMetadataRelationsList> relations_;
};

class TmvMetadataTable : public TmvMetadataObject {
  MV_DECLARE_METADATA_CLASS()
 public:
  using TmvMetadataObject::TmvMetadataObject;
  const char* GetXMLItemName() const override { return "table"; }
  WideString GetQueryToLoadFields(WideStringView filter) const override;

 protected:
  void LoadFieldsInternal(TmvConnection* connection) override;
};

class TmvMetadataView : public TmvMetadataObject {
  MV_DECLARE_METADATA_CLASS()
 public:
  using TmvMetadataObject::TmvMetadataObject;
  const char* GetXMLItemName() const override { return "view"; }
  WideString GetQueryToLoadFields(WideStringView filter) const override;

 protected:
  void LoadFieldsInternal(TmvConnection* connection) override;
};

class TmvMetadataProcedure : public TmvMetadataObject {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataProcedure(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataProcedure() override;
  // Also the parameters of another procedure.
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataObject::Assign;

  TmvMetadataParametersList* Parameters() const { return parameters_.get(); }
  // The parameters are neither written nor read with the object: they are fetched again.
  const char* GetXMLItemName() const override { return "procedure"; }
  // With loaded parameters the call passes one null per parameter.
  WideString GetQueryToLoadFields(WideStringView filter) const override;

 protected:
  void LoadFieldsInternal(TmvConnection* connection) override;

 private:
  TmvOwned<TmvMetadataParametersList> parameters_;
};

// Another name of an object. While its target is in the container, the
// fields and relations read and written are the target's; otherwise the
// synonym's own lists serve.
class TmvMetadataSynonym : public TmvMetadataObject {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataSynonym(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataSynonym() override;
  // Also the target's name.
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataObject::Assign;

  const TSQLQualifiedName* ReferencedDatabase() const { return referencedDatabase_.get(); }
  const TastTokenIdentifier* ReferencedSchema() const { return referencedSchema_.get(); }
  const TastTokenIdentifier* ReferencedName() const { return referencedName_.get(); }
  const TSQLQualifiedName* ReferencedSchemedName() const { return referencedSchemedName_.get(); }
  const TSQLQualifiedName* ReferencedFullName() const { return referencedFullName_.get(); }
  void SetReferencedDatabase(const TSQLQualifiedName* value);
  void SetReferencedSchema(const TastTokenIdentifier* value);
  void SetReferencedName(const TastTokenIdentifier* value);
  // Splits a full name into the three parts (an empty name clears them).
  void SetReferencedFullName(const TSQLQualifiedName* value);
  // The same from SQL text; "Invalid object name" for text that is no name.
  void SetReferencedFullNameStr(WideStringView text);
  WideString ReferencedFullNameStr() const;

  // The target in the container, looked up on every call; null when the
  // name is empty or the target is absent.
  TmvMetadataObject* GetReferencedObject() const;

  TmvMetadataFieldsList* GetFields() const override;
  void SetFields(const TmvMetadataFieldsList* value) override;
  TmvMetadataRelationsList* GetRelations() const override;
  void SetRelations(const TmvMetadataRelationsList* value) override;
  WideString GetQueryToLoadFields(WideStringView filter) const override;

  // The object's element, the target's fields and relations under it while
  // the target is in the container, then the target's name.
  const char* GetXMLItemName() const override { return "synonym"; }
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName) override;
  void LoadFromXMLNode(pugi::xml_node element) override;

 protected:
  void LoadFieldsInternal(TmvConnection* connection) override;

 private:
  void UpdateReferencedFullName();

  TmvOwned<TSQLQualifiedName> referencedDatabase_;
  TmvOwned<TastTokenIdentifier> referencedSchema_;
  TmvOwned<TastTokenIdentifier> referencedName_;
  TmvOwned<TSQLQualifiedName> referencedSchemedName_;
  TmvOwned<TSQLQualifiedName> referencedFullName_;
  // Set while the target is looked up, so that a synonym that (through
  // others) names itself falls back on its own lists.
  mutable bool resolving_ = false;
};

}  // namespace mv
