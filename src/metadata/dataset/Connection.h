// A connection to a database: the other half of the dataset layer. The host
// hands one to a metadata provider; the provider makes datasets on it, runs
// statements, and clones it for work on another thread.
//
// Adapters. One class pair per database library: a TmvConnection subclass
// (DoOpen, DoClose, CreateQuery, CloneClosed, and where the library allows
// Cancel, ServerVersion) and a TmvDataSet subclass. Statements come with
// named parameters; each adapter rewrites them with TranslateSQLParams
// (SQLParamScanner.h) for its library:
//   - SQLite (here): `?n`, bound by number; columns from sqlite3_prepare and
//     the column metadata; cancel by sqlite3_interrupt.
//   - libpq: `$n`; PQprepare + PQdescribePrepared describe the columns without
//     running; PQgetCancel/PQcancel cancels; ParamScanOptions without
//     bracket identifiers (brackets are array subscripts there).
//   - MariaDB C client: `?` per occurrence; mysql_stmt_prepare +
//     mysql_stmt_result_metadata; cancel by KILL QUERY on a second connection;
//     backslash escapes and # comments on.
//   - ODBC: `?` per occurrence; SQLPrepare + SQLNumResultCols/SQLDescribeCol
//     (SQLColAttribute for nullability); SQLCancel.
//   - Firebird client (fbclient, ISC API): `?` per occurrence;
//     isc_dsql_prepare + isc_dsql_describe/describe_bind; a transaction per
//     run; cancel by fb_cancel_operation.
// Text crosses into the library as UTF-8 (or SQLWCHAR for ODBC) and comes
// back as UTF-16 in the fields.
//
// Threads: a connection and its datasets are used by one thread at a time.
// Cancel may be called from any thread while another runs a statement.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "metadata/dataset/DataSet.h"
#include "metadata/dataset/SQLParamScanner.h"

namespace mv {

class TmvConnection {
 public:
  TmvConnection() = default;
  // Datasets that outlive their connection lose it (they raise when used).
  // A subclass's destructor calls CloseDataSets() and then frees its own
  // handle directly (no virtual calls in destructors).
  virtual ~TmvConnection();
  TmvConnection(const TmvConnection&) = delete;
  TmvConnection& operator=(const TmvConnection&) = delete;

  // Opening an open connection and closing a closed one do nothing. Closing
  // closes every dataset of the connection and drops their prepared statements.
  void Open();
  void Close();
  bool Connected() const { return connected_.load(); }
  void SetConnected(bool value) { value ? Open() : Close(); }

  // A new, closed dataset on this connection; the caller owns it and must
  // free it before the connection.
  virtual std::unique_ptr<TmvDataSet> CreateQuery() = 0;
  // The same with the command text set (and its parameters parsed).
  std::unique_ptr<TmvDataSet> CreateQuery(WideStringView sql);
  // Runs `sql` with the values of `params` (matched by name) and returns the
  // open dataset.
  std::unique_ptr<TmvDataSet> OpenQuery(WideStringView sql, const TmvParams* params = nullptr);
  // Runs a statement for its effect; rows changed, or -1 when not told.
  int64_t ExecSQL(WideStringView sql, const TmvParams* params = nullptr);

  // A copy with the same settings, not connected. Opening it never asks the
  // user anything: it carries what this one was opened with.
  virtual std::unique_ptr<TmvConnection> CloneClosed() const = 0;

  // Whether Cancel can end a running statement.
  virtual bool SupportsCancel() const { return false; }
  // Asks the server to end the statement that runs on this connection now;
  // the dataset running it then raises. Safe from any thread; true when the
  // request was delivered.
  virtual bool Cancel() { return false; }

  // The server's version text, or empty when not known.
  virtual WideString ServerVersion() { return {}; }
  // A short description for logs and dialogs ("SQLite: /tmp/a.db").
  virtual WideString Description() const = 0;
  // How command texts of this connection are scanned for parameters.
  virtual TmvSQLParamScanOptions ParamScanOptions() const { return {}; }

 protected:
  // Connects; raises EmvQueryBuilderError with the driver's message.
  virtual void DoOpen() = 0;
  // Disconnects; the datasets are already closed.
  virtual void DoClose() = 0;
  // Closes every dataset of the connection and drops their statements.
  void CloseDataSets();

 private:
  friend class TmvDataSet;
  void RegisterDataSet(TmvDataSet* dataset);
  void UnregisterDataSet(TmvDataSet* dataset);

  std::atomic<bool> connected_{false};
  std::mutex datasetsMutex_;
  std::vector<TmvDataSet*> datasets_;
};

}  // namespace mv
