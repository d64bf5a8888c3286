// One SQL statement run on a worker thread through a metadata provider
// (TmvBaseMetadataProvider::CreateSqlAsync, ExecSQLDatasetURAsync).
//
//   Run (caller)     without a connection: a copy of the provider's, which
//                    the task owns; with ReturnResults a dataset on it with
//                    the statement and the params, then OnCustomizeDataset.
//   worker           opens the connection where needed, then opens the
//                    dataset (ReturnResults) or runs the statement for its
//                    effect (ExecSQL).
//   Cancel           when the provider can cancel a running statement
//                    (SupportCancelAsyncExecSql): CancelSQLDatasetAsync;
//                    otherwise only a task on a connection of its own can
//                    cancel, by closing that connection.
// The worker touches the task's connection and dataset and nothing else; read
// Dataset once the task has ended (Wait, or OnCompleted on the main thread).
#pragma once

#include <functional>
#include <memory>

#include "metadata/Task.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvConnection;
class TmvDataSet;
class TmvParams;

using TmvAsyncSqlDatasetEvent = std::function<void(TmvObject* sender, TmvDataSet* dataset)>;

class ImvAsyncSql : public virtual ImvTask {
 public:
  virtual const WideString& Sql() const = 0;
  // Stores the text and learns its parameters (Params) from a scratch
  // dataset of the provider.
  virtual void SetSql(WideStringView sql) = 0;
  virtual TmvParams& Params() = 0;
  // The results (ReturnResults), open once the task has completed.
  virtual TmvDataSet* Dataset() const = 0;
  virtual TmvConnection* Connection() const = 0;
  virtual TmvBaseMetadataProvider* MetadataProvider() const = 0;
  virtual bool ReturnResults() const = 0;
  virtual void SetReturnResults(bool value) = 0;
  virtual bool Unidirectional() const = 0;
  virtual void SetUnidirectional(bool value) = 0;
  virtual bool ReadOnly() const = 0;
  virtual void SetReadOnly(bool value) = 0;
  virtual TmvAsyncSqlDatasetEvent OnCustomizeDataset() const = 0;
  virtual void SetOnCustomizeDataset(TmvAsyncSqlDatasetEvent event) = 0;
};

class TmvAsyncSql : public TmvTask, public ImvAsyncSql {
  MV_DECLARE_CLASS()
 public:
  // On a copy of the provider's connection, made when the task runs.
  TmvAsyncSql(TmvObject* tag, TmvBaseMetadataProvider* provider);
  // On `connection`, which the caller keeps.
  TmvAsyncSql(TmvObject* tag, TmvBaseMetadataProvider* provider, TmvConnection* connection);
  // A running task that can cancel is cancelled and waited for; then the
  // dataset and params go, and a connection of the task's own is released
  // through the provider.
  ~TmvAsyncSql() override;

  // ImvAsyncSql.
  const WideString& Sql() const override { return sql_; }
  void SetSql(WideStringView sql) override;
  TmvParams& Params() override { return *params_; }
  TmvDataSet* Dataset() const override { return dataset_.get(); }
  TmvConnection* Connection() const override { return connection_; }
  TmvBaseMetadataProvider* MetadataProvider() const override { return provider_; }
  // True when the task made its connection (none was given).
  bool OwnConnection() const { return ownConnection_; }
  bool ReturnResults() const override { return returnResults_; }
  void SetReturnResults(bool value) override { returnResults_ = value; }
  bool Unidirectional() const override { return unidirectional_; }
  void SetUnidirectional(bool value) override { unidirectional_ = value; }
  bool ReadOnly() const override { return readOnly_; }
  void SetReadOnly(bool value) override { readOnly_ = value; }
  TmvAsyncSqlDatasetEvent OnCustomizeDataset() const override { return onCustomizeDataset_; }
  void SetOnCustomizeDataset(TmvAsyncSqlDatasetEvent event) override { onCustomizeDataset_ = std::move(event); }

 protected:
  // The provider cancels running statements, or the connection is the task's own.
  bool GetCanCancel() const override;
  bool CancelInternal() override;
  void PrepareInternal() override;
  void RunInternal() override;

 private:
  TmvBaseMetadataProvider* provider_;
  TmvConnection* connection_;
  // The connection the task made, which connection_ then points to.
  std::unique_ptr<TmvConnection> ownedConnection_;
  bool ownConnection_;
  bool returnResults_ = true;
  bool unidirectional_ = true;
  bool readOnly_ = true;
  WideString sql_;
  std::unique_ptr<TmvParams> params_;
  std::unique_ptr<TmvDataSet> dataset_;
  TmvAsyncSqlDatasetEvent onCustomizeDataset_;
};

}  // namespace mv
