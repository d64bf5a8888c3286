// The metadata provider: the one road from the engine to a database. It
// wraps a connection of the host's dataset layer, makes datasets on it, runs
// SQL, and fills the metadata container where the syntax provider has no
// server-specific way. The host adds a subclass per data-access library (or
// uses TmvConnectionMetadataProvider on a TmvConnection of the dataset layer,
// or TmvEventMetadataProvider, which hands everything to callbacks).
//
// Registered classes are listed by MetadataProvidersList(), so that a
// provider can be chosen by class name.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "metadata/MetadataForward.h"
#include "support/Class.h"
#include "support/Event.h"
#include "support/LogHelper.h"
#include "support/WideString.h"

namespace mv {

class ImvAsyncSql;
class TmvBaseSQLContext;
class TmvDataSet;
class TmvParams;
struct TmvFieldDef;
class TSQLQualifiedName;
class TSQLIdentifiersCollection;

using TmvMetadataProviderClass = TmvClassOf<TmvBaseMetadataProvider>;
using TmvConnectionEvent = std::function<void(TmvObject* sender, TmvConnection* connection)>;
using TmvDatasetEvent = std::function<void(TmvObject* sender, TmvDataSet* dataset)>;
using TmvDatasetSetSqlEvent = std::function<void(TmvObject* sender, TmvDataSet* dataset, WideStringView sql)>;
using TmvDatasetSetParamsEvent = std::function<void(TmvObject* sender, TmvDataSet* dataset, const TmvParams& params)>;
using TmvNotifyEvent = std::function<void(TmvObject* sender)>;

class TmvBaseMetadataProvider : public TmvObject {
 public:
  static const TmvMetadataProviderClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }

  TmvBaseMetadataProvider();
  ~TmvBaseMetadataProvider() override;
  TmvBaseMetadataProvider(const TmvBaseMetadataProvider&) = delete;
  TmvBaseMetadataProvider& operator=(const TmvBaseMetadataProvider&) = delete;
  // Fires the destroying event, so that every context that holds the
  // provider forgets it (the destructor does, if this phase was skipped).
  void BeforeDestruction() override;

  // --- The connection (not owned) ---
  TmvConnection* Connection() const { return connection_; }
  void SetConnection(TmvConnection* connection) { connection_ = connection; }
  // With no connection, the connected flag; otherwise the connection's state.
  bool IsConnected() const;
  bool Connected() const { return IsConnected(); }
  void SetConnected(bool value);
  void Connect();
  void Disconnect();

  // --- Settings ---
  // Surrounding blanks and double quotes are taken off names the driver reports.
  bool TrimSpaces() const { return trimSpaces_; }
  void SetTrimSpaces(bool value) { trimSpaces_ = value; }
  bool TrimQuotes() const { return trimQuotes_; }
  void SetTrimQuotes(bool value) { trimQuotes_ = value; }
  // The blanks (TrimSpaces), then a pair of double quotes (TrimQuotes) off a name.
  WideString TrimName(WideStringView text) const;

  const std::shared_ptr<ImvLogger>& Logger() const { return log_.GetLogger(); }
  void SetLogger(std::shared_ptr<ImvLogger> logger) { log_.SetLogger(std::move(logger)); }
  const TmvLogHelper& Log() const { return log_; }

  // --- Events ---
  TmvNotifyEvent OnBeforeConnect;
  TmvNotifyEvent OnAfterConnect;
  TmvNotifyEvent OnBeforeDisconnect;
  TmvNotifyEvent OnAfterDisconnect;
  TmvConnectionEvent OnCustomizeConnectionCopy;
  TmvConnectionEvent OnConnectionCopyConnected;
  TmvDatasetEvent OnDatasetCreated;
  // Before a dataset gets its command text, and its params.
  TmvDatasetSetSqlEvent OnDatasetSetSql;
  TmvDatasetSetParamsEvent OnDatasetSetParams;
  // Handed to each statement task (CreateSqlAsync) as its OnInitThread; runs on the task's worker.
  TmvNotifyEvent OnSqlAsyncInitThread;
  // Fired once when the provider goes away.
  TmvNotificationEvent& GetOnDestroying() { return onDestroying_; }

  // --- Internal connection objects (made by CreateAndBindInternalConnectionObj) ---
  void AddInternalConnectionObject(std::unique_ptr<TmvObject> object);
  void ClearInternalConnectionObjects() { internalObjects_.clear(); }
  bool GetConnectionObjectsCreated() const { return !internalObjects_.empty(); }

  // --- Virtual operations ---
  // Whether the provider can run SQL at all.
  virtual bool GetCanExecSQL() const { return true; }
  // Raises "Connection object is not specified (property Connection is not assigned)".
  virtual void CheckConnectionSet() const;
  // An unconnected copy of the connection (null without one); then OnCustomizeConnectionCopy.
  virtual std::unique_ptr<TmvConnection> CreateConnectionCopy();
  virtual void FreeConnection(std::unique_ptr<TmvConnection> connection);
  virtual bool IsConnectionConnected(TmvConnection* connection) const;
  virtual void OpenConnection(TmvConnection* connection);
  virtual void CloseConnection(TmvConnection* connection);
  // Runs a statement for its effect on a dataset of the provider.
  virtual void ExecSQLInternal(TmvConnection* connection, WideStringView sql, const TmvParams* params);
  virtual std::unique_ptr<TmvDataSet> CreateSQLDatasetInternal(TmvConnection* connection, bool unidirectional,
                                                               bool readOnly) = 0;
  // Closes the dataset and sets its command text (its params).
  virtual void SetSQLDatasetCommandInternal(TmvDataSet* dataset, WideStringView sql);
  virtual void SetSQLDatasetParamsInternal(TmvDataSet* dataset, const TmvParams& params);
  // Logs each param, fires OnDatasetSetParams, sets them.
  virtual void SetSQLDatasetParams(TmvDataSet* dataset, const TmvParams& params);
  // An open, forward-only, read-only dataset of the statement; the caller
  // owns it. A failure raises EmvQueryBuilderError with the statement and
  // the driver's message.
  virtual std::unique_ptr<TmvDataSet> ExecSQLDatasetUR(TmvConnection* connection, WideStringView sql,
                                                       const TmvParams* params);
  // Whether statements may run on a task of their own; true in the base.
  virtual bool SupportAsyncExecSql() const { return true; }
  // Whether CancelSQLDatasetAsync can end a running statement; false in the base.
  virtual bool SupportCancelAsyncExecSql() const { return false; }
  // Asks the server to end the statement that `dataset` runs on `connection`,
  // from any thread; true when the request went out. False in the base.
  virtual bool CancelSQLDatasetAsync(TmvConnection* connection, TmvDataSet* dataset);
  // A started task that opens the statement on a copy of the connection.
  virtual std::shared_ptr<ImvAsyncSql> ExecSQLDatasetURAsync(WideStringView sql, const TmvParams* params = nullptr);
  virtual void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
  virtual void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                              const TSQLQualifiedName* database);
  // Raises "Automatic loading of metadata is not supported ..." in the base.
  virtual void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database);
  virtual void LoadMetadataRelations(TmvBaseSQLContext*, TmvConnection*, TmvMetadataContainer*,
                                     const TmvMetadataFilter*, const TSQLQualifiedName*) {}
  // None in the base.
  virtual TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection);
  virtual void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TSQLIdentifiersCollection& names);
  // With SQL: the fields from the driver's description of the object's query.
  virtual void LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table);
  virtual void LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataView* view);
  virtual void LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection,
                                        TmvMetadataProcedure* procedure);
  virtual void LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection,
                                      TmvMetadataSynonym* synonym);
  // Sharpens the fields list from the driver's description of the object's
  // query (see the source for the rules); the list's own order and what a
  // catalog found stay.
  virtual void LoadFieldsForObjectFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                             TmvMetadataObject* object);
  virtual void LoadFieldsForTableFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                            TmvMetadataTable* table);
  virtual void LoadFieldsForViewFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                           TmvMetadataView* view);
  virtual void LoadFieldsForProcedureFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataProcedure* procedure);
  virtual void LoadFieldsForSynonymFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                              TmvMetadataSynonym* synonym);
  virtual void LoadParamsForProcedureFromDriver(TmvBaseSQLContext*, TmvConnection*, TmvMetadataProcedure*) {}
  // The columns of a statement from the driver's description, as the list's
  // fields; sets the loaded flag.
  virtual void LoadFieldsForQuery(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql,
                                  TmvMetadataFieldsList& fields);
  // The class name in the base.
  virtual WideString GetConnectionDescription() const;
  virtual bool CanCreateInternalConnection() const { return false; }
  virtual void CreateAndBindInternalConnectionObj() { ClearInternalConnectionObjects(); }

  // --- Copies for another thread ---
  // A new provider of this class with this one's settings, logger and events
  // (AssignProvider), and no connection: a background load works on such a
  // clone with a copy of the connection. Raises for a class without a factory.
  TmvOwned<TmvBaseMetadataProvider> CloneProvider() const;
  // Takes the settings, logger and events of `source`; a subclass adds its own.
  virtual void AssignProvider(const TmvBaseMetadataProvider& source);

  // --- Non-virtual helpers ---
  // A dataset on `connection` (the provider's own with the second form,
  // which must be set); logged, and announced by OnDatasetCreated.
  std::unique_ptr<TmvDataSet> CreateSQLDataset(TmvConnection* connection, bool unidirectional, bool readOnly);
  std::unique_ptr<TmvDataSet> CreateSQLDataset(bool unidirectional, bool readOnly);
  // Logs, fires OnDatasetSetSql, sets the command text.
  void SetSQLDatasetCommand(TmvDataSet* dataset, WideStringView sql);
  const TmvParams* GetSQLDatasetParams(TmvDataSet* dataset) const;
  // Opens the connection where needed and runs the statement for its effect.
  void ExecSQL(WideStringView sql, const TmvParams* params = nullptr);
  void ExecSQL(TmvConnection* connection, WideStringView sql, const TmvParams* params = nullptr);
  std::unique_ptr<TmvDataSet> ExecSQLDatasetUR(WideStringView sql, const TmvParams* params = nullptr);
  // A new statement task (TmvAsyncSql, not started) with OnSqlAsyncInitThread
  // as its OnInitThread: the first on a copy of the connection that it makes
  // when it runs, the second on `connection`, which the caller keeps.
  std::shared_ptr<ImvAsyncSql> CreateSqlAsync(TmvObject* tag = nullptr);
  std::shared_ptr<ImvAsyncSql> CreateSqlAsync(TmvConnection* connection, TmvObject* tag);

 protected:
  virtual void DoConnect();
  virtual void DoDisconnect();
  // The connection to use: the one given, else the provider's own.
  TmvConnection* ConnectionOr(TmvConnection* connection) const { return connection ? connection : connection_; }

 private:
  // A forward-only, read-only dataset with the statement (and the params,
  // if any) set; raises where the provider makes no dataset.
  std::unique_ptr<TmvDataSet> PrepareSQLDataset(TmvConnection* connection, WideStringView sql,
                                                const TmvParams* params);
  // Updates one field from a column description (see LoadFieldsForObjectFromDriver).
  void UpdateFieldFromDef(TmvMetadataField* field, const TmvFieldDef& def, bool isNew, WideStringView quotedName);
  // Runs the object's fields query and updates the list from its description.
  void LoadFieldsFromQuery(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object,
                           WideStringView query);

  TmvConnection* connection_ = nullptr;
  bool connected_ = false;
  bool trimSpaces_ = true;
  bool trimQuotes_ = true;
  std::vector<std::unique_ptr<TmvObject>> internalObjects_;
  TmvLogHelper log_;
  TmvNotificationEvent onDestroying_;
  bool destroyingFired_ = false;

  void FireDestroying();
};

// A provider on a connection of the engine's dataset layer: datasets are the
// connection's queries. It loads fields through the driver; objects come
// from the syntax provider's catalog queries.
class TmvConnectionMetadataProvider : public TmvBaseMetadataProvider {
 public:
  static const TmvMetadataProviderClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }

  std::unique_ptr<TmvDataSet> CreateSQLDatasetInternal(TmvConnection* connection, bool unidirectional,
                                                       bool readOnly) override;
  WideString GetConnectionDescription() const override;
  // A running statement ends by the connection's own cancel where it has one.
  bool SupportCancelAsyncExecSql() const override;
  bool CancelSQLDatasetAsync(TmvConnection* connection, TmvDataSet* dataset) override;
};

// The registered provider classes, in order of registration.
class TmvMetadataProvidersList {
 public:
  void RegisterMetadataProvider(const TmvMetadataProviderClass& providerClass);
  int Count() const { return int(classes_.size()); }
  const TmvMetadataProviderClass& Items(int index) const { return *classes_.at(size_t(index)); }
  // The first class of that name, compared without regard to case; null if none.
  const TmvMetadataProviderClass* FindClassByClassName(std::string_view name) const;

 private:
  std::vector<const TmvMetadataProviderClass*> classes_;
};

// The list of the process, with the engine's own providers registered.
TmvMetadataProvidersList& MetadataProvidersList();

}  // namespace mv
