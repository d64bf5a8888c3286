// The objects line of the fetchers: catalog rows become tables, views,
// procedures and synonyms of a metadata container.
//
//   TmvBaseMetadataObjectsFetcher            the walk (LoadMetadata) and its steps
//     TmvBaseMetadataObjectsFetcherVariants  class and system flag from type, system and user values
//       TmvMetadataObjectFetcherFromDataset  the values from a dataset's columns
//         TmvMetadataObjectFetcherFromQuery  the dataset from a catalog statement
//     TmvMetadataObjectsFetcherFromStringLists  names from lists of user, system and all objects
//
// A loader sets the column names and type values, then calls LoadMetadata:
//
//   TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
//   fetcher.SQL = u"select TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE from ... where " + WideString(mvQBTableFilterMacro);
//   fetcher.SchemaFieldName = u"TABLE_SCHEMA";
//   fetcher.NameFieldName = u"TABLE_NAME";
//   fetcher.TypeFieldName = u"TABLE_TYPE";
//   fetcher.UserTableTypeValue = u"BASE TABLE";
//   fetcher.LoadMetadata(container, filter, nullptr);
#pragma once

#include <vector>

#include "metadata/MetadataBase.h"
#include "metadata/fetchers/FetcherBase.h"
#include "tree/Tokens.h"

namespace mv {

class TmvMetadataContainer;
class TmvMetadataFilter;

class TmvBaseMetadataObjectsFetcher : public TmvBaseMetadataFetcher {
 public:
  TmvBaseMetadataObjectsFetcher(TmvBaseSQLContext* context, TmvConnection* connection);
  ~TmvBaseMetadataObjectsFetcher() override;

  // The class of a row that nothing else decides; none by default, and then
  // such rows are skipped.
  const TmvMetadataClass* DefaultObjectClass() const { return defaultObjectClass_; }
  void SetDefaultObjectClass(const TmvMetadataClass* value) { defaultObjectClass_ = value; }
  // Schemas whose objects are system objects.
  TSQLIdentifiersCollection* SystemSchemaNames() const { return systemSchemaNames_.get(); }
  // Copies the identifiers (null empties the list).
  void SetSystemSchemaNames(const TSQLIdentifiersCollection* value);
  // The filter the statement's filter macros are made from; LoadMetadata
  // sets it, and a caller that creates the dataset first sets it before.
  const TmvMetadataFilter* Filter() const { return filter_; }
  void SetFilter(const TmvMetadataFilter* value) { filter_ = value; }

  // Adds an object to `container` for every row that gives a class and a
  // name and that `filter` (if any) accepts; `database` (may be null) is the
  // database of the objects, the container's default where empty.
  void LoadMetadata(TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                    const TSQLQualifiedName* database);

 protected:
  // --- The steps of the walk, one row at a time ---
  virtual void InitIterations() {}
  virtual void FirstIteration() {}
  virtual bool IsEndOfIterations() { return true; }
  // Null skips the row; DefaultObjectClass in the base.
  virtual const TmvMetadataClass* CalcMetadataObjectClass() { return defaultObjectClass_; }
  virtual bool CalcSystemFlag() { return false; }
  // Fills the cleared tokens (they carry the dialect's case flag); an empty
  // name skips the row.
  virtual void CalcObjectName(TastTokenIdentifier& /*schema*/, TastTokenIdentifier& /*name*/) {}
  // A synonym's target.
  virtual void CalcReferencedObjectName(TSQLQualifiedName& /*database*/, TastTokenIdentifier& /*schema*/,
                                        TastTokenIdentifier& /*name*/) {}
  virtual WideString GetShortDescription() { return {}; }
  virtual WideString GetLongDescription() { return {}; }
  virtual void NextIteration() {}
  virtual void EndIterations() {}

  // The container of the running load (null outside one).
  TmvMetadataContainer* Container() const { return container_; }

 private:
  // Builds the object of one row, tests it against the filter and adds it;
  // false when the row adds nothing.
  bool LoadRow(const TSQLQualifiedName* database, const TastTokenIdentifier* emptySchema,
               TastTokenIdentifier& schema, TastTokenIdentifier& name);
  // A synonym's target parts, after the synonym is in the container.
  void LoadReferencedName(TmvMetadataObject* synonym, const TSQLQualifiedName* database,
                          const TastTokenIdentifier* emptySchema);
  bool IsSystemSchema(const TastTokenIdentifier* schema) const;

  const TmvMetadataClass* defaultObjectClass_ = nullptr;
  TmvOwned<TSQLIdentifiersCollection> systemSchemaNames_;
  const TmvMetadataFilter* filter_ = nullptr;
  TmvMetadataContainer* container_ = nullptr;
};

// Class and system flag from the values of a row. Each setting is empty, one
// value, or an array of values (a TmvVariantArray).
class TmvBaseMetadataObjectsFetcherVariants : public TmvBaseMetadataObjectsFetcher {
 public:
  using TmvBaseMetadataObjectsFetcher::TmvBaseMetadataObjectsFetcher;

  // A type value like these gives the kind, user or system.
  TmvVariant UserTableTypeValue;
  TmvVariant SystemTableTypeValue;
  TmvVariant UserViewTypeValue;
  TmvVariant SystemViewTypeValue;
  TmvVariant UserProcedureTypeValue;
  TmvVariant SystemProcedureTypeValue;
  TmvVariant UserSynonymTypeValue;
  TmvVariant SystemSynonymTypeValue;
  // Compared with the system value, and with the user value.
  TmvVariant SystemFlagValue;
  TmvVariant UserFlagValue;

 protected:
  // The row's type, system and user values; empty here.
  virtual TmvVariant GetType() { return {}; }
  virtual TmvVariant GetSystem() { return {}; }
  virtual TmvVariant GetUser() { return {}; }

  // An empty type gives the default class; else the first kind whose user or
  // system value the type is like (table, view, procedure, synonym), else
  // the default class.
  const TmvMetadataClass* CalcMetadataObjectClass() override;
  // A user value decides first (system unless like UserFlagValue), then a
  // system value (system if like SystemFlagValue), then the type (system if
  // like a system type value).
  bool CalcSystemFlag() override;
};

// The values from the columns of a dataset, found by name; an empty column
// name means the column isn't used. The dataset is not owned.
class TmvMetadataObjectFetcherFromDataset : public TmvBaseMetadataObjectsFetcherVariants {
 public:
  using TmvBaseMetadataObjectsFetcherVariants::TmvBaseMetadataObjectsFetcherVariants;

  TmvDataSet* Dataset() const { return dataset_; }
  void SetDataset(TmvDataSet* value) { dataset_ = value; }

  WideString SchemaFieldName;
  // Required: a dataset without it raises its own error.
  WideString NameFieldName;
  WideString TypeFieldName;
  WideString SystemFieldName;
  WideString UserFieldName;
  WideString ShortDescriptionFieldName;
  WideString LongDescriptionFieldName;
  // A synonym's target as one qualified text, or in parts.
  WideString ReferencedFullNameFieldName;
  WideString ReferencedDatabaseFieldName;
  WideString ReferencedSchemaFieldName;
  WideString ReferencedNameFieldName;

 protected:
  void InitIterations() override { OpenCatalogDataset(dataset_); }
  void FirstIteration() override { FirstCatalogRow(dataset_); }
  bool IsEndOfIterations() override { return IsCatalogWalkOver(dataset_); }
  void NextIteration() override { dataset_->Next(); }
  TmvVariant GetType() override;
  TmvVariant GetSystem() override;
  TmvVariant GetUser() override;
  void CalcObjectName(TastTokenIdentifier& schema, TastTokenIdentifier& name) override;
  void CalcReferencedObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                                TastTokenIdentifier& name) override;
  WideString GetShortDescription() override;
  WideString GetLongDescription() override;

  // The trimmed text of a column (empty for one not in use).
  WideString ColumnText(WideStringView columnName) const;

 private:
  TmvDataSet* dataset_ = nullptr;
};

// The filter macros of the statement are replaced by the filter's conditions
// on SchemaFieldName and NameFieldName (see FilterMacros.h).
class TmvMetadataObjectFetcherFromQuery : public TmvMetadataFetcherFromQuery<TmvMetadataObjectFetcherFromDataset> {
 public:
  using TmvMetadataFetcherFromQuery::TmvMetadataFetcherFromQuery;

 protected:
  WideString StatementText() const override;
};

// Names from three lists of qualified names as SQL text. Entries of
// UserObjects and SystemObjects that AllObjects lacks are added to it; an
// empty UserObjects (SystemObjects) becomes the rest of AllObjects. Every
// entry of AllObjects is an object of the default class, system unless it is
// in UserObjects. Lists are compared without regard to case.
class TmvMetadataObjectsFetcherFromStringLists : public TmvBaseMetadataObjectsFetcher {
 public:
  using TmvBaseMetadataObjectsFetcher::TmvBaseMetadataObjectsFetcher;

  std::vector<WideString> UserObjects;
  std::vector<WideString> SystemObjects;
  std::vector<WideString> AllObjects;

 protected:
  void InitIterations() override;
  void FirstIteration() override { index_ = 0; }
  bool IsEndOfIterations() override { return index_ >= AllObjects.size(); }
  bool CalcSystemFlag() override;
  // "Invalid object name" for an entry that is no name.
  void CalcObjectName(TastTokenIdentifier& schema, TastTokenIdentifier& name) override;
  void NextIteration() override { ++index_; }

 private:
  size_t index_ = 0;
};

}  // namespace mv
