// A metadata provider with no SQL of its own: every operation is handed to a
// callback of the host. The host names the objects (per kind, user and
// system), the fields of a statement, the relations of a table, or fills an
// object's metadata as it likes; with a dataset callback set, the provider
// also runs SQL through the host's datasets.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "metadata/MetadataProvider.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

// One foreign key as the host reports it.
class TSQLMetadataRelation {
 public:
  explicit TSQLMetadataRelation(TmvBaseSQLContext* context);
  ~TSQLMetadataRelation();
  TSQLMetadataRelation(const TSQLMetadataRelation&) = delete;
  TSQLMetadataRelation& operator=(const TSQLMetadataRelation&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  // The table that holds the key fields (the table asked about).
  TSQLQualifiedName& TableName() const { return *tableName_; }
  TmvFieldsList& KeyFields() const { return *keyFields_; }
  // The other table, name at item 0 and schema at item 1.
  TSQLQualifiedName& ChildTable() const { return *childTable_; }
  TmvFieldsList& ChildFields() const { return *childFields_; }

 private:
  TmvBaseSQLContext* context_;
  TmvOwned<TSQLQualifiedName> tableName_;
  std::unique_ptr<TmvFieldsList> keyFields_;
  TmvOwned<TSQLQualifiedName> childTable_;
  std::unique_ptr<TmvFieldsList> childFields_;
};

using TSQLMetadataRelations = std::vector<std::unique_ptr<TSQLMetadataRelation>>;

// The host adds one name per object: item 0 the name, item 1 the schema.
using TmvGetObjectNamesEvent = std::function<void(TmvObject* sender, TSQLDatabaseObjectsList& objects)>;
// The host adds the field names of the statement.
using TmvGetSQLFieldNamesEvent = std::function<void(TmvObject* sender, WideStringView sql, TmvFieldsList& fields)>;
// The host adds the relations of the table.
using TmvGetTableRelationsEvent =
    std::function<void(TmvObject* sender, const TSQLQualifiedName& tableName, TSQLMetadataRelations& relations)>;
// The host fills the object's fields, parameters and whatever else it likes.
using TmvLoadObjectMetadataEvent =
    std::function<void(TmvObject* sender, TmvBaseSQLContext* context, TmvMetadataObject* object)>;
// The host gives a dataset on the connection.
using TmvCreateSQLDatasetEvent = std::function<void(TmvObject* sender, TmvConnection* connection, bool unidirectional,
                                                    bool readOnly, std::unique_ptr<TmvDataSet>& dataset)>;
// The host runs the statement and gives its open dataset.
using TmvExecSQLDatasetEvent = std::function<void(TmvObject* sender, WideStringView sql, const TmvParams* params,
                                                  std::unique_ptr<TmvDataSet>& dataset)>;

class TmvEventMetadataProvider : public TmvBaseMetadataProvider {
 public:
  static const TmvMetadataProviderClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }

  TmvGetObjectNamesEvent OnGetTables;
  TmvGetObjectNamesEvent OnGetSystemTables;
  TmvGetObjectNamesEvent OnGetViews;
  TmvGetObjectNamesEvent OnGetSystemViews;
  TmvGetObjectNamesEvent OnGetProcedures;
  TmvGetObjectNamesEvent OnGetSystemProcedures;
  TmvGetObjectNamesEvent OnGetSynonyms;
  TmvGetObjectNamesEvent OnGetSystemSynonyms;
  TmvGetSQLFieldNamesEvent OnGetSQLFieldNames;
  TmvGetTableRelationsEvent OnGetTableRelations;
  TmvLoadObjectMetadataEvent OnLoadObjectMetadata;
  TmvCreateSQLDatasetEvent OnCreateSQLDataset;
  TmvExecSQLDatasetEvent OnExecSQLDatasetUR;

  // The base's, and the callbacks above.
  void AssignProvider(const TmvBaseMetadataProvider& source) override;

  // True when a dataset callback is set.
  bool GetCanExecSQL() const override { return OnCreateSQLDataset || OnExecSQLDatasetUR; }
  std::unique_ptr<TmvDataSet> CreateSQLDatasetInternal(TmvConnection* connection, bool unidirectional,
                                                       bool readOnly) override;
  // The callback's dataset (null without one); the connection is not touched.
  std::unique_ptr<TmvDataSet> ExecSQLDatasetUR(TmvConnection* connection, WideStringView sql,
                                               const TmvParams* params) override;
  using TmvBaseMetadataProvider::ExecSQLDatasetUR;
  // The objects the name callbacks report, those the filter accepts; an
  // abort of the load (AbortMetadataLoading) stops it between objects. With
  // a database: the base's "not supported" error.
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // For each table of the container, the relations the callback reports for it.
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // The base's load, then OnLoadObjectMetadata, then, if the fields are
  // still not loaded, the fields of the object's fields query.
  void LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table) override;
  void LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataView* view) override;
  void LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection,
                                TmvMetadataProcedure* procedure) override;
  void LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection,
                              TmvMetadataSynonym* synonym) override;
  // Without SQL: the names OnGetSQLFieldNames reports; the list is marked
  // loaded even without the callback.
  void LoadFieldsForQuery(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql,
                          TmvMetadataFieldsList& fields) override;

 private:
  void AfterObjectLoad(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);
};

}  // namespace mv
