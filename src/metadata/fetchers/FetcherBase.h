// What every metadata fetcher shares: the SQL context and connection it works
// for, the trimming of the names it reads, and the reading of catalog
// datasets by column name. A fetcher walks rows and turns them into metadata;
// each line (objects, fields, relations, databases, schemas) is a base class
// that walks and stores through virtual steps, a level that reads a given
// dataset, and a level that runs a statement to get that dataset.
#pragma once

#include <memory>

#include "metadata/dataset/DataSet.h"
#include "support/Class.h"
#include "support/LogHelper.h"
#include "support/Variant.h"
#include "support/VariantHelpers.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvBaseSyntaxProvider;
class TastTokenIdentifier;
class TSQLQualifiedName;
class TmvConnection;

class TmvBaseMetadataFetcher {
 public:
  // `connection` may be null: the metadata provider's own is used.
  TmvBaseMetadataFetcher(TmvBaseSQLContext* context, TmvConnection* connection);
  virtual ~TmvBaseMetadataFetcher();
  TmvBaseMetadataFetcher(const TmvBaseMetadataFetcher&) = delete;
  TmvBaseMetadataFetcher& operator=(const TmvBaseMetadataFetcher&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  TmvConnection* Connection() const { return connection_; }

  // Blanks and a pair of double quotes taken off the names read; both off
  // until a loader whose server pads or quotes catalog values switches them on.
  bool TrimSpaces() const { return trimSpaces_; }
  void SetTrimSpaces(bool value) { trimSpaces_ = value; }
  bool TrimQuotes() const { return trimQuotes_; }
  void SetTrimQuotes(bool value) { trimQuotes_ = value; }
  // The blanks (TrimSpaces), then a pair of double quotes (TrimQuotes) off a name.
  WideString TrimName(WideStringView text) const;

 protected:
  // The context's providers; "Syntax provider is not specified" and
  // "Metadata provider is not specified" where they are missing.
  TmvBaseSyntaxProvider& SyntaxProvider() const;
  TmvBaseMetadataProvider& MetadataProvider() const;
  // The dialect's case flag, which every name read gets.
  bool IsIdentifiersCaseSensitive() const;
  // A name read from the catalog, with the dialect's case flag: the
  // identifier takes the text; the name becomes one part of it (none for
  // empty text).
  void SetCatalogIdentifier(TastTokenIdentifier& token, WideStringView text) const;
  void SetCatalogName(TSQLQualifiedName& name, WideStringView text) const;
  // The metadata provider's log (silent without one).
  const TmvLogHelper& Log() const;

  // An open catalog dataset of `sql` on the fetcher's connection; raises
  // "Executing SQL queries is not supported by this metadata provider." when
  // the provider cannot run SQL, and the provider's error when the statement fails.
  std::unique_ptr<TmvDataSet> OpenCatalogQuery(WideStringView sql, const TmvParams* params) const;
  // Raises "Executing SQL queries is not supported ..." when the provider cannot run SQL.
  void CheckCanExecSQL() const;

 private:
  TmvBaseSQLContext* context_;
  TmvConnection* connection_;
  bool trimSpaces_ = false;
  bool trimQuotes_ = false;
};

// Runs `walk`, then `end` (a fetcher's EndIterations) also when the walk
// fails; the walk's failure is the one that passes out.
template <class Walk, class End>
void WalkThenEnd(Walk walk, End end) {
  try {
    walk();
  } catch (...) {
    try {
      end();
    } catch (...) {
      // Two failures cannot travel at once.
    }
    throw;
  }
  end();
}

// Whether `value` is like `setting`, a setting of a fetcher that is empty,
// one value or an array of values: some element of an array equals it; an
// empty setting matches nothing; otherwise the two are equal (loosely, as
// variants compare: 1 is like "1").
// (IsValueLikeVariant itself is the one of support/VariantHelpers.h.)

// --- Reading catalog datasets by column name ---

// The column `name` of the dataset; null when the name is empty (the column
// isn't used), the dataset is absent or has no such column.
TmvField* FindCatalogColumn(const TmvDataSet* dataset, WideStringView name);
// The column `name`, which must be there: the dataset's own error otherwise.
TmvField& RequireCatalogColumn(const TmvDataSet* dataset, WideStringView name);
// The walk over a dataset's rows: InitIterations opens a closed dataset,
// FirstIteration goes to the first row, and the walk is over when the
// dataset is absent, empty or past its last row.
void OpenCatalogDataset(TmvDataSet* dataset);
void FirstCatalogRow(TmvDataSet* dataset);
bool IsCatalogWalkOver(const TmvDataSet* dataset);
// The value of a column as a variant: Empty for a column not in use, Null for NULL.
TmvVariant CatalogValue(const TmvField* column);
// The text of a column (empty for a column not in use and for NULL).
WideString CatalogText(const TmvField* column);
// The metadata provider of the context when it can run SQL; null otherwise.
TmvBaseMetadataProvider* CatalogSqlProvider(TmvBaseSQLContext* context);
// The text of `column` in the first row of `sql`; empty when there is none.
// A statement the server refuses raises.
WideString FirstCatalogValue(TmvBaseMetadataProvider& provider, TmvConnection* connection, WideStringView sql,
                             WideStringView column);
// That value, trimmed, as a one-part name; null without SQL, on a refused
// statement or for an empty value.
TmvOwned<TSQLQualifiedName> CatalogNameFromQuery(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 WideStringView sql, WideStringView column);

// The query level of a line, over its dataset level `DatasetLevel` (which
// has SetDataset and the virtual InitIterations and EndIterations): it runs
// `SQL` through the metadata provider and reads the dataset it gets, which it
// owns. A caller may create the dataset before the walk (a statement the
// server refuses then fails there, and the caller can skip the walk);
// otherwise InitIterations creates it. EndIterations and the destructor free it.
template <class DatasetLevel>
class TmvMetadataFetcherFromQuery : public DatasetLevel {
 public:
  using DatasetLevel::DatasetLevel;
  ~TmvMetadataFetcherFromQuery() override { DestroyDataset(); }

  // The catalog statement.
  WideString SQL;

  // Runs the statement (see StatementText) and reads its rows from now on.
  void CreateDataset() {
    DestroyDataset();
    this->CheckCanExecSQL();
    owned_ = this->OpenCatalogQuery(StatementText(), StatementParams());
    this->SetDataset(owned_.get());
  }
  void DestroyDataset() {
    if (!owned_) return;
    this->SetDataset(nullptr);
    owned_.reset();
  }
  // The dataset exists and is open.
  bool IsDatasetCreated() const { return owned_ && owned_->Active(); }

 protected:
  // The text sent to the server; SQL unless a line prepares it.
  virtual WideString StatementText() const { return SQL; }
  virtual const TmvParams* StatementParams() const { return nullptr; }

  void InitIterations() override {
    if (!IsDatasetCreated()) CreateDataset();
    DatasetLevel::InitIterations();
  }
  void EndIterations() override {
    DatasetLevel::EndIterations();
    DestroyDataset();
  }

 private:
  std::unique_ptr<TmvDataSet> owned_;
};

}  // namespace mv
