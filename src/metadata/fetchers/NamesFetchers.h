// The databases and schemas lines of the fetchers: catalog rows, or a list
// of names, become a list of database names or a collection of schema names.
//
//   TmvBaseMetadataDatabasesFetcher            the walk (LoadDatabases)
//     TmvMetadataDatabasesFetcherFromDataset   names from a dataset's column
//       TmvMetadataDatabasesFetcherFromQuery   the dataset from a catalog statement
//     TmvMetadataDatabasesFetcherFromStringList
//   TmvBaseMetadataSchemasFetcher              the walk (LoadSchemas); the same three levels
//
// Every name read is one part with the dialect's case flag; empty names are
// left out, and a schema already in the collection is not added again.
#pragma once

#include <vector>

#include "metadata/fetchers/FetcherBase.h"

namespace mv {

class TSQLIdentifiersCollection;
class TSQLQualifiedNamesList;

// --- Databases ---

class TmvBaseMetadataDatabasesFetcher : public TmvBaseMetadataFetcher {
 public:
  using TmvBaseMetadataFetcher::TmvBaseMetadataFetcher;

  // Appends a name to `list` for every row with a name.
  void LoadDatabases(TSQLQualifiedNamesList& list);

 protected:
  virtual void InitIterations() {}
  virtual void FirstIteration() {}
  virtual bool IsEndOfIterations() { return true; }
  // Fills the empty name.
  virtual void CalcDatabaseName(TSQLQualifiedName& /*name*/) {}
  virtual void NextIteration() {}
  virtual void EndIterations() {}
};

class TmvMetadataDatabasesFetcherFromDataset : public TmvBaseMetadataDatabasesFetcher {
 public:
  using TmvBaseMetadataDatabasesFetcher::TmvBaseMetadataDatabasesFetcher;

  TmvDataSet* Dataset() const { return dataset_; }
  void SetDataset(TmvDataSet* value) { dataset_ = value; }
  // Required: a dataset without it raises its own error.
  WideString NameFieldName;

 protected:
  void InitIterations() override { OpenCatalogDataset(dataset_); }
  void FirstIteration() override { FirstCatalogRow(dataset_); }
  bool IsEndOfIterations() override { return IsCatalogWalkOver(dataset_); }
  void CalcDatabaseName(TSQLQualifiedName& name) override;
  void NextIteration() override { dataset_->Next(); }

 private:
  TmvDataSet* dataset_ = nullptr;
};

class TmvMetadataDatabasesFetcherFromQuery
    : public TmvMetadataFetcherFromQuery<TmvMetadataDatabasesFetcherFromDataset> {
 public:
  using TmvMetadataFetcherFromQuery::TmvMetadataFetcherFromQuery;
};

class TmvMetadataDatabasesFetcherFromStringList : public TmvBaseMetadataDatabasesFetcher {
 public:
  using TmvBaseMetadataDatabasesFetcher::TmvBaseMetadataDatabasesFetcher;

  std::vector<WideString> Names;

 protected:
  void FirstIteration() override { index_ = 0; }
  bool IsEndOfIterations() override { return index_ >= Names.size(); }
  void CalcDatabaseName(TSQLQualifiedName& name) override;
  void NextIteration() override { ++index_; }

 private:
  size_t index_ = 0;
};

// --- Schemas ---

class TmvBaseMetadataSchemasFetcher : public TmvBaseMetadataFetcher {
 public:
  using TmvBaseMetadataFetcher::TmvBaseMetadataFetcher;

  // Adds every name of the rows that `collection` lacks.
  void LoadSchemas(TSQLIdentifiersCollection& collection);

 protected:
  virtual void InitIterations() {}
  virtual void FirstIteration() {}
  virtual bool IsEndOfIterations() { return true; }
  // Fills the cleared identifier.
  virtual void CalcSchemaName(TastTokenIdentifier& /*name*/) {}
  virtual void NextIteration() {}
  virtual void EndIterations() {}
};

class TmvMetadataSchemasFetcherFromDataset : public TmvBaseMetadataSchemasFetcher {
 public:
  using TmvBaseMetadataSchemasFetcher::TmvBaseMetadataSchemasFetcher;

  TmvDataSet* Dataset() const { return dataset_; }
  void SetDataset(TmvDataSet* value) { dataset_ = value; }
  // Required: a dataset without it raises its own error.
  WideString NameFieldName;

 protected:
  void InitIterations() override { OpenCatalogDataset(dataset_); }
  void FirstIteration() override { FirstCatalogRow(dataset_); }
  bool IsEndOfIterations() override { return IsCatalogWalkOver(dataset_); }
  void CalcSchemaName(TastTokenIdentifier& name) override;
  void NextIteration() override { dataset_->Next(); }

 private:
  TmvDataSet* dataset_ = nullptr;
};

class TmvMetadataSchemasFetcherFromQuery : public TmvMetadataFetcherFromQuery<TmvMetadataSchemasFetcherFromDataset> {
 public:
  using TmvMetadataFetcherFromQuery::TmvMetadataFetcherFromQuery;
};

class TmvMetadataSchemasFetcherFromStringList : public TmvBaseMetadataSchemasFetcher {
 public:
  using TmvBaseMetadataSchemasFetcher::TmvBaseMetadataSchemasFetcher;

  std::vector<WideString> Names;

 protected:
  void FirstIteration() override { index_ = 0; }
  bool IsEndOfIterations() override { return index_ >= Names.size(); }
  void CalcSchemaName(TastTokenIdentifier& name) override;
  void NextIteration() override { ++index_; }

 private:
  size_t index_ = 0;
};

}  // namespace mv
