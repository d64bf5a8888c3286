// The dataset layer on ODBC (unixODBC): a connection through any ODBC
// driver, opened by a connection string, and query datasets on it. It is the
// generic adapter: a database with an ODBC driver and no adapter of its own
// is reached through it.
//
//   TmvOdbcConnection odbc(u"DRIVER=SQLite3;Database=/data/shop.db");
//   TmvOdbcConnection pg(u"DRIVER={PostgreSQL Unicode};Server=127.0.0.1;Port=5432;Database=shop;Uid=reader;Pwd=...");
//
// Text crosses as SQLWCHAR (UTF-16, as our text is). `:name` parameters
// become one `?` per occurrence; the columns come from the prepared
// statement (SQLDescribeCol; a driver that can only describe after running
// is run). Integers, floats, booleans, dates and times and binary columns
// are read in their own C types, everything else as text. Opening waits at
// most LoginTimeout seconds. Every failure is an EmvQueryBuilderError whose
// message names the data source (the connection string with its password
// hidden) and gives the driver's diagnostics; a failed statement leaves the
// connection usable. Cancel calls SQLCancel on the running statement.
#pragma once

#include <mutex>

#include "metadata/dataset/Connection.h"

namespace mv {

class TmvOdbcConnection : public TmvConnection {
 public:
  explicit TmvOdbcConnection(WideString connectionString);
  ~TmvOdbcConnection() override;

  const WideString& ConnectionString() const { return connectionString_; }
  // Seconds to wait for the data source when opening (default 5).
  int LoginTimeout() const { return loginTimeout_; }
  void SetLoginTimeout(int seconds) { loginTimeout_ = seconds; }

  std::unique_ptr<TmvDataSet> CreateQuery() override;
  using TmvConnection::CreateQuery;
  std::unique_ptr<TmvConnection> CloneClosed() const override;
  bool SupportsCancel() const override { return true; }
  bool Cancel() override;
  // The database's name and version as the driver tells them ("PostgreSQL 15.8").
  WideString ServerVersion() override;
  // "ODBC: " and the connection string with its password hidden.
  WideString Description() const override;

 protected:
  void DoOpen() override;
  void DoClose() override;

 private:
  friend class TmvOdbcDataSet;
  void* Handle() const { return dbc_; }
  // The statement that runs now, for Cancel; null when none.
  void SetRunning(void* statement);
  void CloseHandles();

  WideString connectionString_;
  int loginTimeout_ = 5;
  void* env_ = nullptr;
  void* dbc_ = nullptr;
  std::mutex runningMutex_;
  void* running_ = nullptr;
};

}  // namespace mv
