#include "metadata/AsyncSql.h"

#include "metadata/MetadataMessages.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/Connection.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/dataset/Params.h"
#include "support/Exceptions.h"

namespace mv {

MV_DEFINE_CLASS(TmvAsyncSql, TmvTask)

TmvAsyncSql::TmvAsyncSql(TmvObject* tag, TmvBaseMetadataProvider* provider)
    : TmvTask(tag),
      provider_(provider),
      connection_(nullptr),
      ownConnection_(true),
      params_(std::make_unique<TmvParams>()) {}

TmvAsyncSql::TmvAsyncSql(TmvObject* tag, TmvBaseMetadataProvider* provider, TmvConnection* connection)
    : TmvTask(tag),
      provider_(provider),
      connection_(connection),
      ownConnection_(connection == nullptr),
      params_(std::make_unique<TmvParams>()) {}

TmvAsyncSql::~TmvAsyncSql() {
  // The worker holds the task while it runs, so a task still running here is
  // one whose worker lets go of it right now; the steps stay for the rule.
  const TmvTaskState state = State();
  try {
    if (state == mvtRunning && GetCanCancel()) Cancel();
  } catch (...) {
    // A failing cancel leaves the wait below to end the run.
  }
  if (state == mvtRunning || state == mvtCanceling) Wait(-1);
  dataset_.reset();
  params_.reset();
  if (ownedConnection_) {
    connection_ = nullptr;
    if (provider_)
      provider_->FreeConnection(std::move(ownedConnection_));
    else
      ownedConnection_.reset();
  }
}

void TmvAsyncSql::SetSql(WideStringView sql) {
  if (sql == sql_) return;
  sql_ = WideString(sql);
  if (!provider_) {
    params_->ParseSQL(sql_);
    return;
  }
  // The params of the text, as the provider's datasets read them.
  std::unique_ptr<TmvDataSet> scratch =
      connection_ ? provider_->CreateSQLDataset(connection_, true, true) : provider_->CreateSQLDataset(true, true);
  if (!scratch) {
    params_->ParseSQL(sql_);
    return;
  }
  provider_->SetSQLDatasetCommand(scratch.get(), sql_);
  if (const TmvParams* params = provider_->GetSQLDatasetParams(scratch.get()))
    params_->Assign(*params);
  else
    params_->Clear();
}

bool TmvAsyncSql::GetCanCancel() const {
  return (provider_ && provider_->SupportCancelAsyncExecSql()) || ownConnection_;
}

bool TmvAsyncSql::CancelInternal() {
  if (!provider_) return false;
  if (!provider_->SupportCancelAsyncExecSql()) {
    // Closing ends the statement; safe only on a connection of the task's own.
    provider_->CloseConnection(connection_);
    return true;
  }
  return provider_->CancelSQLDatasetAsync(connection_, dataset_.get());
}

void TmvAsyncSql::PrepareInternal() {
  if (!provider_) throw EmvQueryBuilderError(MetadataMessage(mvQBNoMetadataProvider));
  if (!connection_) {
    provider_->CheckConnectionSet();
    ownedConnection_ = provider_->CreateConnectionCopy();
    connection_ = ownedConnection_.get();
    ownConnection_ = true;
    if (!connection_) provider_->CheckConnectionSet();
  }
  if (!returnResults_) return;
  dataset_ = provider_->CreateSQLDataset(connection_, unidirectional_, readOnly_);
  if (!dataset_) throw EmvQueryBuilderError(MetadataMessage(mvQBMetadataProviderCantExecSQL));
  provider_->SetSQLDatasetCommand(dataset_.get(), sql_);
  provider_->SetSQLDatasetParams(dataset_.get(), *params_);
  if (onCustomizeDataset_) onCustomizeDataset_(this, dataset_.get());
}

void TmvAsyncSql::RunInternal() {
  if (!provider_->IsConnectionConnected(connection_)) provider_->OpenConnection(connection_);
  if (returnResults_)
    dataset_->Open();
  else
    provider_->ExecSQL(connection_, sql_, params_.get());
}

}  // namespace mv
