// What a node of the syntax tree reads: the database objects and the columns
// that it and everything below it use. Each node gathers its own lists from
// its children (see TastNodeBase::CalcStatisticsRecursive); the fields of a
// derived source carry the lists of the select items behind them, so an
// outer query that reads such a field inherits what the field reads.
//
// Entries refer to metadata objects and fields without owning them; names
// are plain copies (no binding to a FROM source). A list that takes the
// entries of another list (AddObjects, AddColumns) shares them instead of
// copying: the lists of a tree are gathered from the leaves up and cleared
// from the root down, so a list never outlives the entries it shares within
// one tree. An entry that must change (a new alias) is copied first; a list
// that reads another tree's entries asks for copies.
//
//   TmvStatsObject(s)   an object by its metadata object or its name, with
//                       every alias under which it is used
//   TmvStatsColumn(s)   a column by its object and field, or by names
#pragma once

#include <memory>
#include <vector>

#include "support/Class.h"

namespace mv {

class TmvBaseSQLContext;
class TmvMetadataObject;
class TmvMetadataField;
class TSQLQualifiedName;
class TastIdentifiersList;
class TastTokenIdentifier;

class TmvStatsObject {
 public:
  // Keeps a plain copy of `name` (may be null: an empty name).
  TmvStatsObject(TmvBaseSQLContext* context, TmvMetadataObject* metadataObject, const TSQLQualifiedName* name);
  ~TmvStatsObject();
  TmvStatsObject(const TmvStatsObject&) = delete;
  TmvStatsObject& operator=(const TmvStatsObject&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  // Null for an object that the metadata container does not know.
  TmvMetadataObject* MetadataObject() const { return metadataObject_; }
  // The name as the query wrote it (the full name for a known object).
  const TSQLQualifiedName* Name() const { return name_.get(); }
  // Every alias under which the object is used; null while there is none.
  const TastIdentifiersList* Aliases() const { return aliases_.get(); }
  int AliasCount() const;
  const TastTokenIdentifier* Alias(int index) const;
  // Adds a clone of a non-empty alias that the entry has not got yet.
  void AddAlias(const TastTokenIdentifier* alias);
  void AddAliases(const TastIdentifiersList* aliases);

 private:
  TmvBaseSQLContext* context_;
  TmvMetadataObject* metadataObject_;
  TmvOwned<TSQLQualifiedName> name_;
  TmvOwned<TastIdentifiersList> aliases_;
};

class TmvStatsObjects {
 public:
  explicit TmvStatsObjects(TmvBaseSQLContext* context) : context_(context) {}
  TmvStatsObjects(const TmvStatsObjects&) = delete;
  TmvStatsObjects& operator=(const TmvStatsObjects&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  int GetCount() const { return int(items_.size()); }
  const TmvStatsObject* GetItems(int index) const { return items_[index].Entry; }

  // A new entry, always.
  const TmvStatsObject* AddObject(TmvMetadataObject* metadataObject, const TSQLQualifiedName* name);
  // With a metadata object: the entry of that object. Without: the first
  // entry without one whose name is equal (the context's name comparison).
  const TmvStatsObject* FindObject(const TmvMetadataObject* metadataObject, const TSQLQualifiedName* name) const;
  // Finds or adds the entry and gives it the alias (when not empty and new).
  // 1 when an entry was added, else 0: a new alias counts for nothing, so
  // that repeating the gathering ends.
  int AddObjectIfNotExists(TmvMetadataObject* metadataObject, const TSQLQualifiedName* name,
                           const TastTokenIdentifier* alias);
  // Each entry of `other` found or added (shared, or copied with `copy`),
  // its aliases merged; the number of entries added (0 for null).
  int AddObjects(const TmvStatsObjects* other, bool copy = false);
  // Copies of the other's entries (none for null).
  void Assign(const TmvStatsObjects* other);
  void Clear();

 private:
  struct Item {
    TmvStatsObject* Entry;
    bool Owned;
  };
  // The entry at `index`, made this list's own first.
  TmvStatsObject* OwnEntry(size_t index);
  TmvStatsObject* AddCopy(const TmvStatsObject* entry);
  int IndexOf(const TmvStatsObject* entry) const;

  TmvBaseSQLContext* context_;
  std::vector<Item> items_;
  std::vector<std::unique_ptr<TmvStatsObject>> owned_;
};

class TmvStatsColumn {
 public:
  // Keeps plain copies of the names (null: an empty name).
  TmvStatsColumn(TmvBaseSQLContext* context, TmvMetadataObject* metadataObject, const TSQLQualifiedName* objectName,
                 const TSQLQualifiedName* columnName, TmvMetadataField* field);
  ~TmvStatsColumn();
  TmvStatsColumn(const TmvStatsColumn&) = delete;
  TmvStatsColumn& operator=(const TmvStatsColumn&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  // Null when the column's object or field is not known to the container.
  TmvMetadataField* Field() const { return field_; }
  TmvMetadataObject* MetadataObject() const { return metadataObject_; }
  const TSQLQualifiedName* ObjectName() const { return objectName_.get(); }
  const TSQLQualifiedName* ColumnName() const { return columnName_.get(); }

 private:
  TmvBaseSQLContext* context_;
  TmvMetadataField* field_;
  TmvMetadataObject* metadataObject_;
  TmvOwned<TSQLQualifiedName> objectName_;
  TmvOwned<TSQLQualifiedName> columnName_;
};

class TmvStatsColumns {
 public:
  explicit TmvStatsColumns(TmvBaseSQLContext* context) : context_(context) {}
  TmvStatsColumns(const TmvStatsColumns&) = delete;
  TmvStatsColumns& operator=(const TmvStatsColumns&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  int GetCount() const { return int(items_.size()); }
  const TmvStatsColumn* GetItems(int index) const { return items_[index]; }

  // A new entry, always.
  const TmvStatsColumn* AddColumn(TmvMetadataObject* metadataObject, const TSQLQualifiedName* objectName,
                            const TSQLQualifiedName* columnName, TmvMetadataField* field);
  // Matches by what is known:
  //   object and field    both the same
  //   object, no field    the same object and an equal column name
  //   field, no object    an equal object name and the same field
  //   neither             equal object and column names
  const TmvStatsColumn* FindColumn(const TmvMetadataObject* metadataObject, const TSQLQualifiedName* objectName,
                             const TSQLQualifiedName* columnName, const TmvMetadataField* field) const;
  // 1 when an entry was added, else 0.
  int AddColumnIfNotExists(TmvMetadataObject* metadataObject, const TSQLQualifiedName* objectName,
                           const TSQLQualifiedName* columnName, TmvMetadataField* field);
  // The number of entries of `other` added (0 for null), shared or, with
  // `copy`, copied.
  int AddColumns(const TmvStatsColumns* other, bool copy = false);
  void Assign(const TmvStatsColumns* other);
  void Clear();

 private:
  TmvBaseSQLContext* context_;
  std::vector<TmvStatsColumn*> items_;
  std::vector<std::unique_ptr<TmvStatsColumn>> owned_;
};

}  // namespace mv
