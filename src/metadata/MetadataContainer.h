// The metadata container: owns the metadata objects of one query builder,
// finds them by name, holds the default database and schemas of the
// connection, and drives loading through the SQL context.
//
// Lookups come in three kinds for each object class:
//   Find<Kind>ByName(name, schema, database)  exact parts, no defaults
//   Find<Kind>ByFullName(name)                resolves db.schema.t, schema.t
//                                             and t with the default database
//                                             and the default schemas in order
//   Find<Kind>ByAltName(name)                 the alternate (display) name
// with <Kind> one of Object, Table, View, Procedure, Synonym. Each reads one
// bucket of the name index, so its cost does not grow with the catalog.
//
// The object list is guarded by a lock; lookups take none and the index is
// not guarded, so a background load works into a container of its own.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "metadata/MetadataObject.h"
#include "metadata/MetadataObjectHash.h"
#include "metadata/MetadataQualifiedNamesList.h"
#include "support/Event.h"

namespace mv {

class TmvMetadataFilter;

using TmvMetadataObjectNotification = std::function<void(TmvObject* sender, TmvMetadataObject* object)>;
class TmvMetadataObjectNotificationEvent : public TmvEvent<TmvObject*, TmvMetadataObject*> {};
using TmvMetadataObjectVisibleEvent = std::function<void(TmvObject* sender, TmvMetadataObject* object, bool& visible)>;

class TmvMetadataContainer : public TmvMetadataBase {
  MV_DECLARE_METADATA_CLASS()
 public:
  // The fixed number of buckets of the name index.
  static constexpr int kHashBucketCount = 1024;

  TmvMetadataContainer(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataContainer() override;
  // Clears inside an update batch, so that handlers see the removals.
  void BeforeDestruction() override;

  // From another container: its objects (cloned), loaded flag and defaults.
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataBase::Assign;

  // --- Lookups (null when nothing matches) ---
  TmvMetadataObject* FindByNameAndClass(const TastTokenIdentifier* name, const TastTokenIdentifier* schema,
                                        const TmvClass& objectClass, const TSQLQualifiedName* database) const;
  TmvMetadataObject* FindByFullNameAndClass(const TSQLQualifiedName* name, const TmvClass& objectClass) const;
  TmvMetadataObject* FindByAltNameAndClass(const TastTokenIdentifier* name, const TmvClass& objectClass) const;

  template <class T>
  T* FindByName(const TastTokenIdentifier* name, const TastTokenIdentifier* schema = nullptr,
                const TSQLQualifiedName* database = nullptr) const {
    return static_cast<T*>(FindByNameAndClass(name, schema, T::StaticClass(), database));
  }
  template <class T>
  T* FindByFullName(const TSQLQualifiedName* name) const {
    return static_cast<T*>(FindByFullNameAndClass(name, T::StaticClass()));
  }
  template <class T>
  T* FindByAltName(const TastTokenIdentifier* name) const {
    return static_cast<T*>(FindByAltNameAndClass(name, T::StaticClass()));
  }

  // The same on SQL text, which is parsed first; text that is no name finds
  // nothing (no exception). An alternate name is taken as it stands, with
  // the case flag given.
  TmvMetadataObject* FindByNameAndClass(WideStringView name, WideStringView schema, const TmvClass& objectClass,
                                        WideStringView database) const;
  TmvMetadataObject* FindByFullNameAndClass(WideStringView name, const TmvClass& objectClass) const;
  TmvMetadataObject* FindByAltNameAndClass(WideStringView name, bool caseSensitive, const TmvClass& objectClass) const;

#define MV_METADATA_FIND_FAMILY(Kind)                                                                                  \
  TmvMetadata##Kind* Find##Kind##ByName(const TastTokenIdentifier* name, const TastTokenIdentifier* schema = nullptr,  \
                                        const TSQLQualifiedName* database = nullptr) const {                           \
    return FindByName<TmvMetadata##Kind>(name, schema, database);                                                      \
  }                                                                                                                    \
  TmvMetadata##Kind* Find##Kind##ByFullName(const TSQLQualifiedName* name) const {                                     \
    return FindByFullName<TmvMetadata##Kind>(name);                                                                    \
  }                                                                                                                    \
  TmvMetadata##Kind* Find##Kind##ByAltName(const TastTokenIdentifier* name) const {                                    \
    return FindByAltName<TmvMetadata##Kind>(name);                                                                     \
  }                                                                                                                    \
  TmvMetadata##Kind* Find##Kind##ByName(WideStringView name, WideStringView schema = {}, WideStringView database = {}) \
      const {                                                                                                          \
    return static_cast<TmvMetadata##Kind*>(                                                                            \
        FindByNameAndClass(name, schema, TmvMetadata##Kind::StaticClass(), database));                                 \
  }                                                                                                                    \
  TmvMetadata##Kind* Find##Kind##ByFullName(WideStringView name) const {                                               \
    return static_cast<TmvMetadata##Kind*>(FindByFullNameAndClass(name, TmvMetadata##Kind::StaticClass()));            \
  }                                                                                                                    \
  TmvMetadata##Kind* Find##Kind##ByAltName(WideStringView name, bool caseSensitive) const {                            \
    return static_cast<TmvMetadata##Kind*>(                                                                            \
        FindByAltNameAndClass(name, caseSensitive, TmvMetadata##Kind::StaticClass()));                                 \
  }
  MV_METADATA_FIND_FAMILY(Object)
  MV_METADATA_FIND_FAMILY(Table)
  MV_METADATA_FIND_FAMILY(View)
  MV_METADATA_FIND_FAMILY(Procedure)
  MV_METADATA_FIND_FAMILY(Synonym)
#undef MV_METADATA_FIND_FAMILY

  // Schema, name and database read from SQL text (identifiers, and a name
  // for the database); empty text gives an empty token or name, and so does
  // text that is no name. The caller owns what comes out.
  void ParseObjectNames(WideStringView schema, WideStringView name, WideStringView database,
                        TmvOwned<TastTokenIdentifier>& schemaToken, TmvOwned<TastTokenIdentifier>& nameToken,
                        TmvOwned<TSQLQualifiedName>& databaseName) const;

  // --- Adding ---
  // A new object of `objectClass` (a metadata object class) with those
  // parts, added to the container.
  TmvMetadataObject* AddObject(const TastTokenIdentifier* schema, const TastTokenIdentifier* name,
                               const TmvMetadataClass& objectClass, bool system = false,
                               const TSQLQualifiedName* database = nullptr);
  // Split from a full name; an empty database part becomes DefaultDatabaseName.
  TmvMetadataObject* AddObject(const TSQLQualifiedName* fullName, const TmvMetadataClass& objectClass,
                               bool system = false);
  // Parsed first; "Invalid object name" for text that is no name.
  TmvMetadataObject* AddObject(WideStringView fullName, const TmvMetadataClass& objectClass, bool system = false);

  // AddTable, AddView, AddProcedure: by tokens, by a full name, by SQL text
  // of a full name, and by the three parts as SQL text.
#define MV_METADATA_ADD_FAMILY(Kind)                                                                       \
  TmvMetadata##Kind* Add##Kind(const TastTokenIdentifier* schema, const TastTokenIdentifier* name,         \
                               bool system = false, const TSQLQualifiedName* database = nullptr) {         \
    return static_cast<TmvMetadata##Kind*>(                                                                \
        AddObject(schema, name, TmvMetadata##Kind::StaticClass(), system, database));                      \
  }                                                                                                        \
  TmvMetadata##Kind* Add##Kind(const TSQLQualifiedName* fullName, bool system = false) {                   \
    return static_cast<TmvMetadata##Kind*>(AddObject(fullName, TmvMetadata##Kind::StaticClass(), system)); \
  }                                                                                                        \
  TmvMetadata##Kind* Add##Kind(WideStringView fullName, bool system = false) {                             \
    return static_cast<TmvMetadata##Kind*>(AddObject(fullName, TmvMetadata##Kind::StaticClass(), system)); \
  }                                                                                                        \
  TmvMetadata##Kind* Add##Kind(WideStringView schema, WideStringView name, bool system,                    \
                               WideStringView database = {}) {                                             \
    return static_cast<TmvMetadata##Kind*>(                                                                \
        AddObjectByTexts(schema, name, TmvMetadata##Kind::StaticClass(), system, database));               \
  }                                                                                                        \
  /* Two texts would pass the second as the system flag. */                                                \
  TmvMetadata##Kind* Add##Kind(WideStringView, const char16_t*) = delete;
  MV_METADATA_ADD_FAMILY(Table)
  MV_METADATA_ADD_FAMILY(View)
  MV_METADATA_ADD_FAMILY(Procedure)
#undef MV_METADATA_ADD_FAMILY
  TmvMetadataObject* AddObjectByTexts(WideStringView schema, WideStringView name, const TmvMetadataClass& objectClass,
                                      bool system, WideStringView database);
  // A synonym of `name` whose target is `referencedName` (left unset when empty).
  TmvMetadataSynonym* AddSynonym(const TSQLQualifiedName* name, const TSQLQualifiedName* referencedName,
                                 bool system = false);
  TmvMetadataSynonym* AddSynonym(WideStringView name, WideStringView referencedName, bool system = false);

  // --- The list ---
  int Count() const { return int(items_.size()); }
  int Capacity() const { return int(items_.capacity()); }
  void SetCapacity(int value);
  // EListError for an index out of range.
  TmvMetadataObject* Items(int index) const;
  // Takes the object over and indexes it; its position.
  int Add(TmvOwned<TmvMetadataObject> object);
  void Insert(int index, TmvOwned<TmvMetadataObject> object);
  void Delete(int index);
  // Frees the object; its former position or -1.
  int Remove(TmvMetadataObject* object);
  // Takes the object out unfreed; the caller owns it (null if it is not here).
  TmvOwned<TmvMetadataObject> Extract(TmvMetadataObject* object);
  int IndexOf(const TmvMetadataObject* object) const;
  // Whether the object is an item, in constant time; `object` may be a
  // dangling address (it is not dereferenced).
  bool Contains(const TmvMetadataObject* object) const;
  void Move(int from, int to);
  // Frees every object and the default names; the custom aggregates stay.
  void Clear();
  void SortItems(const std::function<int(const TmvMetadataObject*, const TmvMetadataObject*)>& compare);
  // By database, then schema, then name.
  void SortByNames();
  void Lock() { lock_.lock(); }
  void Unlock() { lock_.unlock(); }

  // Every relation of every object (a synonym adds its target's), in object order.
  std::vector<TmvMetadataRelation*> GetRelations() const;

  // --- Loading ---
  // Objects, then relations, then custom aggregate names, through the context.
  void LoadMetadataByFilter(const TmvMetadataFilter* filter, const TSQLQualifiedName* database = nullptr);
  void LoadMetadataByFilter(TmvConnection* connection, const TmvMetadataFilter* filter,
                            const TSQLQualifiedName* database = nullptr);
  // With a one-item filter of those masks.
  void LoadMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                          const TSQLQualifiedName* database = nullptr, bool caseSensitive = true);
  // The database as SQL text (empty: none).
  void LoadMetadataByMask(WideStringView objectMask, WideStringView schemaMask, WideStringView database,
                          bool caseSensitive = true);
  // Deletes the objects of that database (absent counts as empty) that the filter accepts.
  void ClearMetadataByFilter(const TmvMetadataFilter* filter, const TSQLQualifiedName* database = nullptr);
  void ClearMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                           const TSQLQualifiedName* database = nullptr, bool caseSensitive = true);
  void ClearMetadataByMask(WideStringView objectMask, WideStringView schemaMask, WideStringView database,
                           bool caseSensitive = true);
  // Loads the fields of every object whose list is not loaded.
  void LoadFields(TmvConnection* connection = nullptr);
  // Asks a running load to stop; safe from any thread.
  void AbortMetadataLoading() { abort_.store(true); }
  bool IsAborted() const { return abort_.load(); }

  // --- State ---
  bool WorkOffline() const { return workOffline_; }
  // Changes only the flag.
  void SetWorkOffline(bool value) { workOffline_ = value; }
  bool Loaded() const { return loaded_; }
  void SetLoaded(bool value) { loaded_ = value; }
  bool ObjectsUpdated() const { return objectsUpdated_; }
  void SetObjectsUpdated() { objectsUpdated_ = true; }
  // Which side of a foreign key a fetch stores it on.
  bool LoadInvertedRelations() const { return loadInvertedRelations_; }
  void SetLoadInvertedRelations(bool value) { loadInvertedRelations_ = value; }

  TSQLQualifiedName* DefaultDatabaseName() const { return defaultDatabaseName_.get(); }
  void SetDefaultDatabaseName(const TSQLQualifiedName* value);
  WideString DefaultDatabaseNameStr() const;
  // Read as a name from SQL text (Exception "Invalid object name" for text that is no name).
  void SetDefaultDatabaseNameStr(WideStringView value);
  TSQLIdentifiersCollection* DefaultSchemaNames() const { return defaultSchemaNames_.get(); }
  // The schemas in SQL text joined with ";".
  WideString DefaultSchemaNamesStr() const;
  // Split at each ";" outside the dialect's quotes; each piece, without the
  // blanks around it, is read as an identifier.
  void SetDefaultSchemaNamesStr(WideStringView value);
  // Aggregate functions of the server beside the dialect's own.
  TmvMetadataQualifiedNamesList* CustomAggregateFunctions() const { return customAggregateFunctions_.get(); }

  // Raise "Syntax provider is not specified" / "Metadata provider is not specified".
  void CheckSyntaxProvider() const;
  void CheckMetadataProvider() const;

  // True unless GetMetadataObjectVisible says otherwise; the object's own
  // Visible plays no part.
  bool IsMetadataObjectVisible(TmvMetadataObject* object);

  // --- XML (MetadataXml.cpp; the format is told in MetadataXml.h) ---
  // The root element `nodeName`: the default names, the custom aggregates
  // and every object, whose fields are loaded first unless they are or the
  // container works offline.
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName) override;
  // Adds the objects of a "metadata" element; the default names and custom
  // aggregates that it holds replace the present ones. A document that
  // cannot be read raises EmvMetadataXMLError and changes nothing.
  void LoadFromXMLNode(pugi::xml_node element);
  // The document as text, without a declaration.
  WideString GetXML();
  // The document with a declaration, UTF-8; "Cannot write the file" when it cannot be written.
  void SaveToXMLFile(WideStringView fileName);
  // Clear, then the Add form, in one step: what cannot be read leaves the container as it was.
  void LoadFromXML(WideStringView text);
  void LoadFromXMLFile(WideStringView fileName);
  // Adds to the objects (the same object twice in the container is allowed;
  // twice in one document is an error).
  void AddFromXML(WideStringView text);
  void AddFromXMLFile(WideStringView fileName);

  // --- Events ---
  TmvMetadataObjectVisibleEvent GetMetadataObjectVisible;
  TmvMetadataObjectNotification OnMetadataObjectAdded;
  TmvMetadataObjectNotification OnMetadataObjectRemoving;
  TmvMetadataObjectNotification OnMetadataObjectExtracting;
  TmvMetadataObjectNotification OnObjectMetadataLoading;
  TmvMetadataObjectNotification OnObjectMetadataLoaded;
  // Fired after the single handler of the same kind.
  TmvMetadataObjectNotificationEvent& GetMetadataObjectAddedEvent() { return addedEvent_; }
  TmvMetadataObjectNotificationEvent& GetMetadataObjectRemovingEvent() { return removingEvent_; }
  TmvMetadataObjectNotificationEvent& GetMetadataObjectExtractingEvent() { return extractingEvent_; }

  void DoObjectMetadataLoading(TmvMetadataObject* object);
  void DoObjectMetadataLoaded(TmvMetadataObject* object);

  // --- The name index ---
  int CalcUsedBuckets() const { return hash_.CalcUsedBuckets(); }
  void RebuildNamesHash();
  // An object's name or alternate name changed: it enters its new bucket.
  void ReHashByName(TmvMetadataObject* object);
  void ReHashByAltName(TmvMetadataObject* object);

 protected:
  // Clears the objects-updated flag after the inherited notification.
  void DoUpdated() override;

 private:
  enum class TmvNotifyAction { Added, Extracted, Deleted };
  void Notify(TmvMetadataObject* object, TmvNotifyAction action);
  void Fire(const TmvMetadataObjectNotification& handler, TmvMetadataObjectNotificationEvent& event,
            TmvMetadataObject* object);
  // The first object of the class in the candidate's bucket whose full name equals it.
  TmvMetadataObject* FindCandidate(const TSQLQualifiedName* candidate, const TmvClass& objectClass) const;
  bool SupportsSchemas() const;
  // A database name from SQL text; null for empty text.
  TmvOwned<TSQLQualifiedName> ParseDatabaseText(WideStringView database) const;
  bool SupportsDatabases() const;
  void TakeObject(TmvMetadataObject* object);
  // Reads the element into a scratch container and takes its objects over
  // (after a Clear if `replace`).
  void ReadXMLNode(pugi::xml_node element, bool replace);
  // Parses the text (of the file `fileName`, empty for none) in place and
  // reads its root; `original` gives the text again for the line of a failure.
  void ReadXMLText(std::string text, WideStringView fileName, bool replace,
                   const std::function<std::string()>& original);

  std::recursive_mutex lock_;
  std::vector<TmvOwned<TmvMetadataObject>> items_;
  std::unordered_set<const TmvMetadataObject*> members_;
  // Lookups make the buckets they read.
  mutable TmvMetadataObjectHash hash_{kHashBucketCount};
  bool workOffline_ = false;
  bool loaded_ = false;
  bool objectsUpdated_ = false;
  bool loadInvertedRelations_ = false;
  std::atomic<bool> abort_{false};
  TmvOwned<TSQLQualifiedName> defaultDatabaseName_;
  TmvOwned<TSQLIdentifiersCollection> defaultSchemaNames_;
  TmvOwned<TmvMetadataQualifiedNamesList> customAggregateFunctions_;
  TmvMetadataObjectNotificationEvent addedEvent_;
  TmvMetadataObjectNotificationEvent removingEvent_;
  TmvMetadataObjectNotificationEvent extractingEvent_;
};

}  // namespace mv
