// The fields line of the fetchers: catalog rows become the fields of one
// metadata object's list.
//
//   TmvBaseMetadataFieldsFetcher            the walk (LoadFields) and its steps
//     TmvBaseMetadataFieldsFetcherVariants  primary key, nullable and read-only from values
//       TmvMetadataFieldsFetcherFromDataset the values from a dataset's columns
//         TmvMetadataFieldsFetcherFromQuery the dataset from a catalog statement with params
//
// A field already in the list is updated, not added again: its descriptions
// stay where it has them, and the rest is taken from the row where the
// fetcher can tell it. The type text is stored up to its first "(" (the size,
// precision and scale come from their own columns).
#pragma once

#include "metadata/dataset/Params.h"
#include "metadata/fetchers/FetcherBase.h"

namespace mv {

class TmvMetadataFieldsList;
class TSQLQualifiedName;

class TmvBaseMetadataFieldsFetcher : public TmvBaseMetadataFetcher {
 public:
  using TmvBaseMetadataFetcher::TmvBaseMetadataFetcher;

  // Finds or adds a field of `list` for every row with a name.
  void LoadFields(TmvMetadataFieldsList* list);

 protected:
  // --- The steps of the walk, one row at a time ---
  virtual void InitIterations() {}
  virtual void FirstIteration() {}
  virtual bool IsEndOfIterations() { return true; }
  // Fills the empty name; an empty name skips the row.
  virtual void CalcFieldName(TSQLQualifiedName& /*name*/) {}
  virtual bool CanCalcPrimaryKey() { return false; }
  virtual bool CalcIsPrimaryKey() { return false; }
  virtual bool CanCalcIsNullable() { return false; }
  virtual bool CalcIsNullable() { return true; }
  virtual bool CanCalcIsReadOnly() { return false; }
  virtual bool CalcIsReadOnly() { return false; }
  virtual bool CanCalcTypeOnServer() { return false; }
  virtual WideString CalcTypeOnServer() { return {}; }
  virtual bool CanCalcSize() { return false; }
  virtual int CalcSize() { return 0; }
  virtual bool CanCalcPrecision() { return false; }
  virtual int CalcPrecision() { return 0; }
  virtual bool CanCalcScale() { return false; }
  virtual int CalcScale() { return 0; }
  // The metadata model keeps no default value; the step is there for loaders.
  virtual bool CanCalcDefaultValue() { return false; }
  virtual WideString CalcDefaultValue() { return {}; }
  virtual bool CanCalcShortDescription() { return false; }
  virtual WideString CalcShortDescription() { return {}; }
  virtual bool CanCalcLongDescription() { return false; }
  virtual WideString CalcLongDescription() { return {}; }
  virtual void NextIteration() {}
  virtual void EndIterations() {}
};

// Primary key, nullable and read-only from the row's values. A boolean value
// is itself; otherwise a value like the true setting is true, one like the
// false setting false (each setting empty, one value or an array), and
// without settings the value converts to a boolean. An empty value, and one
// that does not convert, gives the default (nullable; not a key, not read-only).
class TmvBaseMetadataFieldsFetcherVariants : public TmvBaseMetadataFieldsFetcher {
 public:
  using TmvBaseMetadataFieldsFetcher::TmvBaseMetadataFieldsFetcher;

  TmvVariant PrimaryTrueValue;
  TmvVariant PrimaryFalseValue;
  TmvVariant NullableTrueValue;
  TmvVariant NullableFalseValue;
  TmvVariant ReadOnlyTrueValue;
  TmvVariant ReadOnlyFalseValue;

 protected:
  // The row's values; empty here.
  virtual TmvVariant GetPrimary() { return {}; }
  virtual TmvVariant GetNullable() { return {}; }
  virtual TmvVariant GetReadOnly() { return {}; }

  bool CalcIsPrimaryKey() override;
  bool CalcIsNullable() override;
  bool CalcIsReadOnly() override;
};

// The values from the columns of a dataset, found by name; an empty column
// name means the column isn't used, and a step can calculate exactly when
// its column is there. The dataset is not owned.
class TmvMetadataFieldsFetcherFromDataset : public TmvBaseMetadataFieldsFetcherVariants {
 public:
  using TmvBaseMetadataFieldsFetcherVariants::TmvBaseMetadataFieldsFetcherVariants;

  TmvDataSet* Dataset() const { return dataset_; }
  void SetDataset(TmvDataSet* value) { dataset_ = value; }

  // Required: a dataset without it raises its own error.
  WideString NameFieldName;
  WideString PrimaryFieldName;
  WideString NullableFieldName;
  WideString ReadOnlyFieldName;
  WideString TypeFieldName;
  // Integer columns: a NULL or empty cell gives 0.
  WideString SizeFieldName;
  WideString PrecisionFieldName;
  WideString ScaleFieldName;
  WideString DefaultValueFieldName;
  WideString ShortDescriptionFieldName;
  WideString LongDescriptionFieldName;

 protected:
  void InitIterations() override { OpenCatalogDataset(dataset_); }
  void FirstIteration() override { FirstCatalogRow(dataset_); }
  bool IsEndOfIterations() override { return IsCatalogWalkOver(dataset_); }
  void NextIteration() override { dataset_->Next(); }
  void CalcFieldName(TSQLQualifiedName& name) override;
  bool CanCalcPrimaryKey() override { return Column(PrimaryFieldName) != nullptr; }
  bool CanCalcIsNullable() override { return Column(NullableFieldName) != nullptr; }
  bool CanCalcIsReadOnly() override { return Column(ReadOnlyFieldName) != nullptr; }
  bool CanCalcTypeOnServer() override { return Column(TypeFieldName) != nullptr; }
  WideString CalcTypeOnServer() override;
  bool CanCalcSize() override { return Column(SizeFieldName) != nullptr; }
  int CalcSize() override { return IntegerValue(SizeFieldName); }
  bool CanCalcPrecision() override { return Column(PrecisionFieldName) != nullptr; }
  int CalcPrecision() override { return IntegerValue(PrecisionFieldName); }
  bool CanCalcScale() override { return Column(ScaleFieldName) != nullptr; }
  int CalcScale() override { return IntegerValue(ScaleFieldName); }
  bool CanCalcDefaultValue() override { return Column(DefaultValueFieldName) != nullptr; }
  WideString CalcDefaultValue() override;
  bool CanCalcShortDescription() override { return Column(ShortDescriptionFieldName) != nullptr; }
  WideString CalcShortDescription() override;
  bool CanCalcLongDescription() override { return Column(LongDescriptionFieldName) != nullptr; }
  WideString CalcLongDescription() override;
  TmvVariant GetPrimary() override { return CatalogValue(Column(PrimaryFieldName)); }
  TmvVariant GetNullable() override { return CatalogValue(Column(NullableFieldName)); }
  TmvVariant GetReadOnly() override { return CatalogValue(Column(ReadOnlyFieldName)); }

  TmvField* Column(WideStringView name) const { return FindCatalogColumn(dataset_, name); }
  // The cell's integer; 0 for a NULL or empty cell.
  int IntegerValue(WideStringView columnName) const;

 private:
  TmvDataSet* dataset_ = nullptr;
};

// The statement runs with Params.
class TmvMetadataFieldsFetcherFromQuery : public TmvMetadataFetcherFromQuery<TmvMetadataFieldsFetcherFromDataset> {
 public:
  using TmvMetadataFetcherFromQuery::TmvMetadataFetcherFromQuery;

  const TmvParams& Params() const { return params_; }
  TmvParams& Params() { return params_; }
  // Takes a copy.
  void SetParams(const TmvParams& value) { params_.Assign(value); }

 protected:
  const TmvParams* StatementParams() const override { return &params_; }

 private:
  TmvParams params_;
};

}  // namespace mv
