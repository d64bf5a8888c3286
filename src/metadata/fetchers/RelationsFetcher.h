// The relations line of the fetchers: catalog rows of foreign keys become
// relations of the objects of a metadata container.
//
//   TmvBaseMetadataRelationsFetcher            the walk (LoadMetadata) and its steps
//     TmvMetadataRelationsFetcherFromDataset   the names from a dataset's columns
//       TmvMetadataRelationsFetcherFromQuery   the dataset from a catalog statement
//
// One relation is one foreign key: the primary object (the referenced one),
// the child object (the one holding the key) and their fields pairwise. With
// the container's LoadInvertedRelations clear the relation hangs on the
// primary object; set, it hangs on the child and has the foreign-key flag.
// Keys whose object is not in the container are read past without a trace;
// when the same key comes twice, the later copy stays.
//
// Rows to relations at the dataset level: each row is one pair of fields,
// and a relation ends where the key sequence does not grow, the relation id
// changes, or the rows end. With a FieldListSeparator one row holds a whole
// key, its fields as lists in two cells.
#pragma once

#include <optional>
#include <vector>

#include "metadata/fetchers/FetcherBase.h"
#include "tree/QualifiedNames.h"

namespace mv {

class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TmvMetadataRelation;

class TmvBaseMetadataRelationsFetcher : public TmvBaseMetadataFetcher {
 public:
  TmvBaseMetadataRelationsFetcher(TmvBaseSQLContext* context, TmvConnection* connection);
  ~TmvBaseMetadataRelationsFetcher() override;

  // Constant parts of the names, as SQL text (empty: none): every relation
  // read has this primary (child) object unless the rows tell otherwise.
  WideString PrimarySchema;
  WideString PrimaryName;
  WideString PrimaryDatabase;
  WideString ChildSchema;
  WideString ChildName;
  WideString ChildDatabase;

  // Adds the relations of the rows to the objects of `container`; `database`
  // (may be null) is the database of names that have none, the container's
  // default where empty. The filter isn't consulted: relations hang on
  // objects that passed it.
  void LoadMetadata(TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                    const TSQLQualifiedName* database);

 protected:
  // --- The steps of the walk. `object` and `relation` are null while the
  // rows of a relation that is not stored are read past. ---
  // Reads the constant parts.
  virtual void InitIterations();
  virtual void FirstIteration() {}
  // The constant parts in the base.
  virtual void CalcPrimaryObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                                     TastTokenIdentifier& name);
  virtual void CalcChildObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                                   TastTokenIdentifier& name);
  virtual void BeginRelation(TmvMetadataObject* /*object*/, TmvMetadataRelation* /*relation*/) {}
  virtual void BeginCalcFields(TmvMetadataObject* /*object*/, TmvMetadataRelation* /*relation*/) {}
  // One pair of fields into the empty names.
  virtual void CalcRelationFieldNames(TmvMetadataObject* /*object*/, TmvMetadataRelation* /*relation*/,
                                      TSQLQualifiedName& /*childField*/, TSQLQualifiedName& /*primaryField*/) {}
  // Tested before each pair, the first included.
  virtual bool IsEndOfRelation(TmvMetadataObject* /*object*/, TmvMetadataRelation* /*relation*/) { return true; }
  virtual void NextRelationFields(TmvMetadataObject* /*object*/, TmvMetadataRelation* /*relation*/) {}
  virtual void EndCalcFields(TmvMetadataObject* /*object*/, TmvMetadataRelation* /*relation*/) {}
  virtual void EndRelation(TmvMetadataObject* /*object*/, TmvMetadataRelation* /*relation*/) {}
  virtual void NextRelation() {}
  virtual bool IsEndOfIterations() { return true; }
  // Frees the read constant parts.
  virtual void EndIterations();

 private:
  struct TObjectParts {
    TmvOwned<TSQLQualifiedName> Database;
    TmvOwned<TastTokenIdentifier> Schema;
    TmvOwned<TastTokenIdentifier> Name;
  };
  // One relation's rows: stored on its object, or read past.
  void LoadRelation(TmvMetadataContainer* container, const TSQLQualifiedName* database,
                    const TSQLQualifiedName* fallbackDatabase);
  void SkipRelation();
  // The pairs of fields into the relation's lists.
  void ReadRelationFields(TmvMetadataObject* object, TmvMetadataRelation* relation, bool inverted);
  // A part of the constant names, as the walk reads them.
  static void CopyPart(TastTokenIdentifier& target, const TmvOwned<TastTokenIdentifier>& part);
  static void CopyPart(TSQLQualifiedName& target, const TmvOwned<TSQLQualifiedName>& part);
  TObjectParts ParseConstantParts(WideStringView database, WideStringView schema, WideStringView name) const;

  TObjectParts primaryConstant_;
  TObjectParts childConstant_;
  TObjectParts primary_;
  TObjectParts child_;
};

// The names from the columns of a dataset, found by name; an empty column
// name means the column isn't used. The dataset is not owned.
class TmvMetadataRelationsFetcherFromDataset : public TmvBaseMetadataRelationsFetcher {
 public:
  using TmvBaseMetadataRelationsFetcher::TmvBaseMetadataRelationsFetcher;

  TmvDataSet* Dataset() const { return dataset_; }
  void SetDataset(TmvDataSet* value) { dataset_ = value; }

  WideString PrimaryDatabaseFieldName;
  WideString PrimarySchemaFieldName;
  // Required.
  WideString PrimaryNameFieldName;
  WideString ChildDatabaseFieldName;
  WideString ChildSchemaFieldName;
  // Required.
  WideString ChildNameFieldName;
  // Required: the fields of the two sides.
  WideString PrimaryFieldFieldName;
  WideString ChildFieldFieldName;
  // Integer columns that end a relation: a key sequence that does not grow,
  // a relation id that changes.
  WideString KeySequenceFieldName;
  WideString RelationIdFieldName;
  // Non-empty: one row holds a whole key, the fields as delimited lists.
  WideString FieldListSeparator;

 protected:
  void InitIterations() override;
  void FirstIteration() override { FirstCatalogRow(dataset_); }
  // A column's part where the row has one, else the constant part.
  void CalcPrimaryObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                             TastTokenIdentifier& name) override;
  void CalcChildObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                           TastTokenIdentifier& name) override;
  // Forgets the key position and keeps the row's relation id.
  void BeginRelation(TmvMetadataObject* object, TmvMetadataRelation* relation) override;
  void BeginCalcFields(TmvMetadataObject* object, TmvMetadataRelation* relation) override;
  void CalcRelationFieldNames(TmvMetadataObject* object, TmvMetadataRelation* relation, TSQLQualifiedName& childField,
                              TSQLQualifiedName& primaryField) override;
  bool IsEndOfRelation(TmvMetadataObject* object, TmvMetadataRelation* relation) override;
  void NextRelationFields(TmvMetadataObject* object, TmvMetadataRelation* relation) override;
  void NextRelation() override;
  bool IsEndOfIterations() override { return IsCatalogWalkOver(dataset_); }

 private:
  bool Separated() const { return !FieldListSeparator.empty(); }
  void CalcObjectName(WideStringView databaseColumn, WideStringView schemaColumn, WideStringView nameColumn,
                      TSQLQualifiedName& database, TastTokenIdentifier& schema, TastTokenIdentifier& name);
  // The first row of a relation: no key position yet, and its relation id.
  void StartRelationRows();
  // The trimmed text of a column (empty for one not in use).
  WideString ColumnText(WideStringView columnName) const;
  // An integer column's value; none for a column not in use or a NULL cell.
  std::optional<int64_t> ColumnInteger(WideStringView columnName) const;

  TmvDataSet* dataset_ = nullptr;
  // Without separator: the key sequence of the last pair and the relation id.
  std::optional<int64_t> keyPosition_;
  std::optional<int64_t> relationId_;
  // With separator: the two lists and the position in them.
  std::vector<WideString> primaryFields_;
  std::vector<WideString> childFields_;
  size_t listPosition_ = 0;
};

class TmvMetadataRelationsFetcherFromQuery
    : public TmvMetadataFetcherFromQuery<TmvMetadataRelationsFetcherFromDataset> {
 public:
  using TmvMetadataFetcherFromQuery::TmvMetadataFetcherFromQuery;
};

// The entries of a delimited field list: split at `separator`, each entry
// without the blanks around it, empty entries left out.
std::vector<WideString> SplitFieldList(WideStringView text, WideStringView separator);

}  // namespace mv
