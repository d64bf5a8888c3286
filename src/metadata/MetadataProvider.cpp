#include "metadata/MetadataProvider.h"

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/AsyncSql.h"
#include "metadata/EventMetadataProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataMessages.h"
#include "metadata/dataset/Connection.h"
#include "metadata/dataset/DataSet.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

// The message of a failure that is no std::exception.
constexpr const char16_t* kUnknownErrorText = u"Unknown error";

}  // namespace

const TmvMetadataProviderClass& TmvBaseMetadataProvider::StaticClass() {
  static const TmvMetadataProviderClass info("TmvBaseMetadataProvider", &TmvObject::StaticClass(), nullptr);
  return info;
}

const TmvMetadataProviderClass& TmvConnectionMetadataProvider::StaticClass() {
  static const TmvMetadataProviderClass info(
      "TmvConnectionMetadataProvider", &TmvBaseMetadataProvider::StaticClass(),
      []() -> TmvBaseMetadataProvider* { return new TmvConnectionMetadataProvider(); });
  return info;
}

TmvBaseMetadataProvider::TmvBaseMetadataProvider() { log_.SetPrefix(TmvLogHelper::ObjectPrefix(this)); }

TmvBaseMetadataProvider::~TmvBaseMetadataProvider() {
  // Freed without the first phase (a provider on the stack): the contexts
  // must forget it all the same.
  FireDestroying();
}

void TmvBaseMetadataProvider::BeforeDestruction() {
  FireDestroying();
  TmvObject::BeforeDestruction();
}

void TmvBaseMetadataProvider::FireDestroying() {
  if (destroyingFired_) return;
  destroyingFired_ = true;
  try {
    onDestroying_.Fire(this);
  } catch (...) {
    // The provider goes all the same.
  }
}

// --- Connection ---

bool TmvBaseMetadataProvider::IsConnected() const {
  return connection_ ? IsConnectionConnected(connection_) : connected_;
}

void TmvBaseMetadataProvider::SetConnected(bool value) {
  if (value == IsConnected()) return;
  value ? Connect() : Disconnect();
}

void TmvBaseMetadataProvider::Connect() {
  if (IsConnected()) return;
  if (OnBeforeConnect) OnBeforeConnect(this);
  DoConnect();
  if (OnAfterConnect) OnAfterConnect(this);
}

void TmvBaseMetadataProvider::Disconnect() {
  if (!IsConnected()) return;
  if (OnBeforeDisconnect) OnBeforeDisconnect(this);
  DoDisconnect();
  if (OnAfterDisconnect) OnAfterDisconnect(this);
}

void TmvBaseMetadataProvider::DoConnect() {
  connected_ = true;
  CheckConnectionSet();
  OpenConnection(connection_);
}

void TmvBaseMetadataProvider::DoDisconnect() {
  connected_ = false;
  CheckConnectionSet();
  CloseConnection(connection_);
}

void TmvBaseMetadataProvider::CheckConnectionSet() const {
  if (!connection_) throw EmvQueryBuilderError(MetadataMessageFormat(mvQBNoConnectionObject, {u"Connection"}));
}

std::unique_ptr<TmvConnection> TmvBaseMetadataProvider::CreateConnectionCopy() {
  if (!connection_) return nullptr;
  std::unique_ptr<TmvConnection> copy = connection_->CloneClosed();
  if (copy && OnCustomizeConnectionCopy) OnCustomizeConnectionCopy(this, copy.get());
  return copy;
}

void TmvBaseMetadataProvider::FreeConnection(std::unique_ptr<TmvConnection> connection) { connection.reset(); }

bool TmvBaseMetadataProvider::IsConnectionConnected(TmvConnection* connection) const {
  return connection && connection->Connected();
}

void TmvBaseMetadataProvider::OpenConnection(TmvConnection* connection) {
  if (!connection) return;
  log_.Debug(u"OpenConnection: %s", connection->Description());
  connection->Open();
  if (OnConnectionCopyConnected) OnConnectionCopyConnected(this, connection);
}

void TmvBaseMetadataProvider::CloseConnection(TmvConnection* connection) {
  if (connection) connection->Close();
}

void TmvBaseMetadataProvider::AddInternalConnectionObject(std::unique_ptr<TmvObject> object) {
  internalObjects_.push_back(std::move(object));
}

WideString TmvBaseMetadataProvider::TrimName(WideStringView text) const {
  WideString result(text);
  if (trimSpaces_) result = WideTrim(result);
  if (trimQuotes_ && !result.empty() && result[0] == u'"') result = ExtractQuotedIdentifier(result, u"\"", u"\"");
  return result;
}

WideString TmvBaseMetadataProvider::GetConnectionDescription() const { return WideFromAscii(ClassName()); }

// --- Datasets and statements ---

std::unique_ptr<TmvDataSet> TmvBaseMetadataProvider::CreateSQLDataset(TmvConnection* connection, bool unidirectional,
                                                                      bool readOnly) {
  log_.Debug(u"CreateSQLDataset: UniDirectional: %s; ReadOnly: %s", BoolToStr(unidirectional, true),
             BoolToStr(readOnly, true));
  std::unique_ptr<TmvDataSet> dataset = CreateSQLDatasetInternal(connection, unidirectional, readOnly);
  log_.Debug(u"CreateSQLDataset: Result: %p", static_cast<const void*>(dataset.get()));
  if (OnDatasetCreated) OnDatasetCreated(this, dataset.get());
  return dataset;
}

std::unique_ptr<TmvDataSet> TmvBaseMetadataProvider::CreateSQLDataset(bool unidirectional, bool readOnly) {
  CheckConnectionSet();
  return CreateSQLDataset(connection_, unidirectional, readOnly);
}

void TmvBaseMetadataProvider::SetSQLDatasetCommand(TmvDataSet* dataset, WideStringView sql) {
  log_.Debug(u"SetSQLDatasetCommand: Dataset: %p SQL: %s", static_cast<const void*>(dataset), sql);
  if (OnDatasetSetSql) OnDatasetSetSql(this, dataset, sql);
  SetSQLDatasetCommandInternal(dataset, sql);
}

void TmvBaseMetadataProvider::SetSQLDatasetCommandInternal(TmvDataSet* dataset, WideStringView sql) {
  dataset->Close();
  dataset->SetCommandText(sql);
}

void TmvBaseMetadataProvider::SetSQLDatasetParamsInternal(TmvDataSet* dataset, const TmvParams& params) {
  dataset->Close();
  dataset->Params().Assign(params);
}

void TmvBaseMetadataProvider::SetSQLDatasetParams(TmvDataSet* dataset, const TmvParams& params) {
  if (log_.IsActive()) {
    for (int i = 0; i < params.Count(); ++i) {
      const TmvParam& param = params[i];
      const bool dated = param.DataType() == ftDate || param.DataType() == ftTime || param.DataType() == ftDateTime;
      const WideString value = param.IsNull() ? WideString(u"NULL")
                               : dated        ? DateTimeToSQLText(param.AsDateTime())
                                              : param.AsWideString();
      log_.Debug(u"SetSQLDatasetParams: %s = %s", param.Name(), value);
    }
  }
  if (OnDatasetSetParams) OnDatasetSetParams(this, dataset, params);
  SetSQLDatasetParamsInternal(dataset, params);
}

const TmvParams* TmvBaseMetadataProvider::GetSQLDatasetParams(TmvDataSet* dataset) const {
  return dataset ? &dataset->Params() : nullptr;
}

std::unique_ptr<TmvDataSet> TmvBaseMetadataProvider::PrepareSQLDataset(TmvConnection* connection, WideStringView sql,
                                                                       const TmvParams* params) {
  std::unique_ptr<TmvDataSet> dataset = CreateSQLDataset(connection, true, true);
  if (!dataset) throw EmvQueryBuilderError(MetadataMessage(mvQBMetadataProviderCantExecSQL));
  SetSQLDatasetCommand(dataset.get(), sql);
  if (params && params->Count() > 0) SetSQLDatasetParams(dataset.get(), *params);
  return dataset;
}

void TmvBaseMetadataProvider::ExecSQLInternal(TmvConnection* connection, WideStringView sql, const TmvParams* params) {
  PrepareSQLDataset(connection, sql, params)->ExecSQL();
}

void TmvBaseMetadataProvider::ExecSQL(WideStringView sql, const TmvParams* params) {
  CheckConnectionSet();
  ExecSQL(connection_, sql, params);
}

void TmvBaseMetadataProvider::ExecSQL(TmvConnection* connection, WideStringView sql, const TmvParams* params) {
  log_.Debug(u"ExecSQL: " + WideString(sql));
  if (connection && !IsConnectionConnected(connection)) OpenConnection(connection);
  ExecSQLInternal(connection, sql, params);
}

std::unique_ptr<TmvDataSet> TmvBaseMetadataProvider::ExecSQLDatasetUR(WideStringView sql, const TmvParams* params) {
  CheckConnectionSet();
  return ExecSQLDatasetUR(connection_, sql, params);
}

std::unique_ptr<TmvDataSet> TmvBaseMetadataProvider::ExecSQLDatasetUR(TmvConnection* connection, WideStringView sql,
                                                                      const TmvParams* params) {
  log_.Debug(u"ExecSQLDatasetUR: " + WideString(sql));
  if (connection && !IsConnectionConnected(connection)) OpenConnection(connection);
  std::unique_ptr<TmvDataSet> dataset;
  try {
    dataset = PrepareSQLDataset(connection, sql, params);
    dataset->Open();
    return dataset;
  } catch (const EAbort& e) {
    // An abort is no failure of the statement: it goes on as it is.
    log_.Exception(u"ExecSQLDatasetUR", e);
    throw;
  } catch (const std::exception& e) {
    log_.Exception(u"ExecSQLDatasetUR", e);
    dataset.reset();
    throw EmvQueryBuilderError(WideString(sql), MetadataMessageFormat(mvQBErrorExecQuery, {sql, ExceptionMessage(e)}));
  } catch (...) {
    // Whatever a driver throws becomes the query error; it tells nothing more.
    const WideString message = kUnknownErrorText;
    log_.Error(u"ExecSQLDatasetUR: %s", message);
    dataset.reset();
    throw EmvQueryBuilderError(WideString(sql), MetadataMessageFormat(mvQBErrorExecQuery, {sql, message}));
  }
}

bool TmvBaseMetadataProvider::CancelSQLDatasetAsync(TmvConnection*, TmvDataSet*) { return false; }

std::shared_ptr<ImvAsyncSql> TmvBaseMetadataProvider::CreateSqlAsync(TmvObject* tag) {
  std::shared_ptr<ImvAsyncSql> task = TmvCreateTask<TmvAsyncSql>(tag, this);
  task->SetOnInitThread(OnSqlAsyncInitThread);
  return task;
}

std::shared_ptr<ImvAsyncSql> TmvBaseMetadataProvider::CreateSqlAsync(TmvConnection* connection, TmvObject* tag) {
  std::shared_ptr<ImvAsyncSql> task = TmvCreateTask<TmvAsyncSql>(tag, this, connection);
  task->SetOnInitThread(OnSqlAsyncInitThread);
  return task;
}

std::shared_ptr<ImvAsyncSql> TmvBaseMetadataProvider::ExecSQLDatasetURAsync(WideStringView sql,
                                                                           const TmvParams* params) {
  CheckConnectionSet();
  std::shared_ptr<ImvAsyncSql> task = CreateSqlAsync();
  task->SetSql(sql);
  if (params) task->Params().AssignValues(*params);
  task->Run();
  return task;
}

// --- Copies ---

TmvOwned<TmvBaseMetadataProvider> TmvBaseMetadataProvider::CloneProvider() const {
  // Every provider class is a TmvMetadataProviderClass (StaticClass above).
  const auto& providerClass = static_cast<const TmvMetadataProviderClass&>(ClassType());
  TmvOwned<TmvBaseMetadataProvider> clone(providerClass.CreateRaw());
  if (!clone)
    throw EmvQueryBuilderError(u"The metadata provider " + WideFromAscii(ClassName()) + u" cannot be copied");
  clone->AssignProvider(*this);
  return clone;
}

void TmvBaseMetadataProvider::AssignProvider(const TmvBaseMetadataProvider& source) {
  trimSpaces_ = source.trimSpaces_;
  trimQuotes_ = source.trimQuotes_;
  log_.SetLogger(source.log_.GetLogger());
  OnBeforeConnect = source.OnBeforeConnect;
  OnAfterConnect = source.OnAfterConnect;
  OnBeforeDisconnect = source.OnBeforeDisconnect;
  OnAfterDisconnect = source.OnAfterDisconnect;
  OnCustomizeConnectionCopy = source.OnCustomizeConnectionCopy;
  OnConnectionCopyConnected = source.OnConnectionCopyConnected;
  OnDatasetCreated = source.OnDatasetCreated;
  OnDatasetSetSql = source.OnDatasetSetSql;
  OnDatasetSetParams = source.OnDatasetSetParams;
  OnSqlAsyncInitThread = source.OnSqlAsyncInitThread;
}

// --- Metadata ---

void TmvBaseMetadataProvider::GetDatabasesList(TmvBaseSQLContext*, TmvConnection*, std::vector<WideString>& list) {
  list.clear();
}

void TmvBaseMetadataProvider::GetSchemasList(TmvBaseSQLContext*, TmvConnection*, std::vector<WideString>& list,
                                             const TSQLQualifiedName*) {
  list.clear();
}

void TmvBaseMetadataProvider::LoadMetadataObjects(TmvBaseSQLContext*, TmvConnection*, TmvMetadataContainer*,
                                                  const TmvMetadataFilter*, const TSQLQualifiedName* database) {
  if (database && database->GetCount() > 0)
    throw EmvQueryBuilderError(
        MetadataMessageFormat(mvQBMetaProviderCantLoadMetadataForDatabase, {database->GetQualifiedName()}));
  throw EmvQueryBuilderError(MetadataMessage(mvQBMetaProviderCantLoadMetadata));
}

TmvOwned<TSQLQualifiedName> TmvBaseMetadataProvider::GetDefaultDatabaseName(TmvBaseSQLContext*, TmvConnection*) {
  return nullptr;
}

void TmvBaseMetadataProvider::GetDefaultSchemaNames(TmvBaseSQLContext*, TmvConnection*,
                                                    TSQLIdentifiersCollection& names) {
  names.Clear();
}

void TmvBaseMetadataProvider::LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataTable* table) {
  if (GetCanExecSQL()) LoadFieldsForTableFromDriver(context, connection, table);
}

void TmvBaseMetadataProvider::LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  TmvMetadataView* view) {
  if (GetCanExecSQL()) LoadFieldsForViewFromDriver(context, connection, view);
}

void TmvBaseMetadataProvider::LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection,
                                                       TmvMetadataProcedure* procedure) {
  if (!GetCanExecSQL()) return;
  TmvUpdateBatch batch(*procedure);
  LoadParamsForProcedureFromDriver(context, connection, procedure);
  LoadFieldsForProcedureFromDriver(context, connection, procedure);
}

void TmvBaseMetadataProvider::LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataSynonym* synonym) {
  if (GetCanExecSQL()) LoadFieldsForSynonymFromDriver(context, connection, synonym);
}

void TmvBaseMetadataProvider::LoadFieldsForTableFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                                           TmvMetadataTable* table) {
  LoadFieldsForObjectFromDriver(context, connection, table);
}

void TmvBaseMetadataProvider::LoadFieldsForViewFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                                          TmvMetadataView* view) {
  LoadFieldsForObjectFromDriver(context, connection, view);
}

void TmvBaseMetadataProvider::LoadFieldsForProcedureFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                                               TmvMetadataProcedure* procedure) {
  LoadFieldsForObjectFromDriver(context, connection, procedure);
}

void TmvBaseMetadataProvider::LoadFieldsForSynonymFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                                             TmvMetadataSynonym* synonym) {
  LoadFieldsForObjectFromDriver(context, connection, synonym);
}

// What the driver tells only sharpens what a catalog query found: size and
// precision fill a 0, nullability may only become "not null" on a known
// field, and a read-only field stays read-only.
void TmvBaseMetadataProvider::UpdateFieldFromDef(TmvMetadataField* field, const TmvFieldDef& def, bool isNew,
                                                 WideStringView name) {
  TmvUpdateBatch batch(*field);
  if (isNew) {
    TmvOwned<TastTokenIdentifier> id = TastCreate<TastTokenIdentifier>(field->SQLContext(), name, true);
    field->SetNameToken(id.get());
  }
  field->SetFieldType(def.DataType);
  // The driver's spelling of the type, without its size, as a catalog gives it.
  if (field->FieldTypeName().empty())
    field->SetFieldTypeName(WideTrim(WideStringView(def.TypeName).substr(0, def.TypeName.find(u'('))));
  if (field->Size() == 0) field->SetSize(def.Size);
  if (field->Precision() == 0) field->SetPrecision(def.Precision);
  if (field->Scale() == 0) field->SetScale(def.Scale);
  if (isNew || field->Nullable()) field->SetNullable(!def.Required());
  if (isNew || !field->ReadOnly()) field->SetReadOnly(def.ReadOnly());
}

void TmvBaseMetadataProvider::LoadFieldsFromQuery(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  TmvMetadataObject* object, WideStringView query) {
  std::unique_ptr<TmvDataSet> dataset = PrepareSQLDataset(ConnectionOr(connection), query, nullptr);
  log_.Debug(u"TmvBaseMetadataProvider.LoadFieldsForObjectFromDriver: load FIELDS from DRIVER: %s: %s",
             object->NameStr(), query);
  dataset->FieldDefs().Clear();
  dataset->FieldDefs().Update();
  TmvMetadataFieldsList* fields = object->GetFields();
  TmvUpdateBatch batch(*fields);
  const int known = fields->Count();
  try {
    for (const TmvFieldDef& def : dataset->FieldDefs()) {
      // The driver's name, taken as written (a quoted identifier).
      const WideString name = TrimName(def.Name);
      TmvOwned<TastTokenIdentifier> id = TastCreate<TastTokenIdentifier>(context, name, true);
      const int index = fields->FindFieldByName(id.get());
      if (index >= 0)
        UpdateFieldFromDef(fields->Items(index), def, false, name);
      else
        UpdateFieldFromDef(fields->Add(), def, true, name);
    }
  } catch (...) {
    // The fields this pass added go with its failure; none stays half made.
    for (int i = fields->Count(); i-- > known;) fields->Delete(i);
    throw;
  }
  fields->SetLoaded(true);
}

void TmvBaseMetadataProvider::LoadFieldsForObjectFromDriver(TmvBaseSQLContext* context, TmvConnection* connection,
                                                            TmvMetadataObject* object) {
  const WideString query = object->GetQueryToLoadFields(u"");
  if (!query.empty()) {
    try {
      LoadFieldsFromQuery(context, connection, object, query);
      return;
    } catch (const EAbort&) {
      throw;
    } catch (const std::exception& e) {
      log_.Exception(u"LoadFieldsForObjectFromDriver", e);
    } catch (...) {
      log_.Error(u"LoadFieldsForObjectFromDriver: %s", kUnknownErrorText);
    }
  }
  // The statement for the whole object failed (or there is none): fields a
  // catalog found are described one by one.
  TmvMetadataFieldsList* fields = object->GetFields();
  if (!fields->Loaded() || fields->Count() == 0) return;
  for (int i = 0; i < fields->Count(); ++i) {
    TmvMetadataField* field = fields->Items(i);
    const WideString fieldQuery = object->GetQueryToLoadFields(field->Name()->GetQualifiedNameForServer());
    if (fieldQuery.empty()) continue;
    try {
      std::unique_ptr<TmvDataSet> dataset = CreateSQLDataset(ConnectionOr(connection), true, true);
      if (!dataset) return;
      SetSQLDatasetCommand(dataset.get(), fieldQuery);
      dataset->FieldDefs().Clear();
      dataset->FieldDefs().Update();
      if (dataset->FieldDefs().Count() > 0) UpdateFieldFromDef(field, dataset->FieldDefs()[0], false, {});
    } catch (const EAbort&) {
      throw;
    } catch (const std::exception& e) {
      log_.Exception(u"LoadFieldsForObjectFromDriver: " + field->NameStr(), e);
    } catch (...) {
      log_.Error(u"LoadFieldsForObjectFromDriver: %s: %s", field->NameStr(), kUnknownErrorText);
    }
  }
}

void TmvBaseMetadataProvider::LoadFieldsForQuery(TmvBaseSQLContext*, TmvConnection* connection, WideStringView sql,
                                                 TmvMetadataFieldsList& fields) {
  TmvUpdateBatch batch(fields);
  fields.Clear();
  if (!GetCanExecSQL() || sql.empty()) return;
  std::unique_ptr<TmvDataSet> dataset = CreateSQLDataset(ConnectionOr(connection), true, true);
  if (!dataset) return;
  SetSQLDatasetCommand(dataset.get(), sql);
  dataset->FieldDefs().Update();
  for (const TmvFieldDef& def : dataset->FieldDefs()) fields.AddField(def);
  fields.SetLoaded(true);
}

// --- TmvConnectionMetadataProvider ---

std::unique_ptr<TmvDataSet> TmvConnectionMetadataProvider::CreateSQLDatasetInternal(TmvConnection* connection, bool,
                                                                                    bool) {
  TmvConnection* target = ConnectionOr(connection);
  if (!target) CheckConnectionSet();
  return target->CreateQuery();
}

bool TmvConnectionMetadataProvider::SupportCancelAsyncExecSql() const {
  return Connection() && Connection()->SupportsCancel();
}

bool TmvConnectionMetadataProvider::CancelSQLDatasetAsync(TmvConnection* connection, TmvDataSet*) {
  TmvConnection* target = ConnectionOr(connection);
  return target && target->Cancel();
}

WideString TmvConnectionMetadataProvider::GetConnectionDescription() const {
  return Connection() ? Connection()->Description() : TmvBaseMetadataProvider::GetConnectionDescription();
}

// --- Registry ---

void TmvMetadataProvidersList::RegisterMetadataProvider(const TmvMetadataProviderClass& providerClass) {
  for (const TmvMetadataProviderClass* known : classes_)
    if (known == &providerClass) return;
  classes_.push_back(&providerClass);
}

const TmvMetadataProviderClass* TmvMetadataProvidersList::FindClassByClassName(std::string_view name) const {
  for (const TmvMetadataProviderClass* known : classes_)
    if (SameClassName(known->ClassName(), name)) return known;
  return nullptr;
}

TmvMetadataProvidersList& MetadataProvidersList() {
  static TmvMetadataProvidersList list = [] {
    TmvMetadataProvidersList builtin;
    builtin.RegisterMetadataProvider(TmvConnectionMetadataProvider::StaticClass());
    builtin.RegisterMetadataProvider(TmvEventMetadataProvider::StaticClass());
    return builtin;
  }();
  return list;
}

}  // namespace mv
