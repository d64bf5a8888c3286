// The dataset layer on libpq: a connection to a PostgreSQL server and query
// datasets on it.
//
//   TmvPostgresConnection server(u"host=127.0.0.1 port=5432 dbname=shop user=reader password=...");
//   auto query = server.OpenQuery(u"select relname from pg_catalog.pg_class where relkind = :kind", &params);
//
// The connection string is libpq's (key=value pairs or a postgresql:// URI).
// Opening waits at most ConnectTimeout seconds (a connect_timeout in the
// string wins) and always talks UTF-8 with the server. Every failure is an
// EmvQueryBuilderError whose message names the server ("127.0.0.1:5432,
// database shop") and gives the server's own reason; a statement the server
// refuses leaves the connection usable (no transaction is left open).
//
// Statements: `:name` parameters become `$n` and the text is prepared under
// a name of the dataset's own, so that several datasets keep their
// statements on one connection; the column descriptions come from the
// prepared statement without running it (PQdescribePrepared), with the type
// names and NOT NULL of table columns read from the catalog in one query. A
// column that is no table's column is read-only. Rows are read as text and
// converted by type: booleans, integers, floats (numeric too), dates and
// times as TmvDateTime (a value outside what it holds, like 'infinity', stays
// text), bytea as bytes, everything else as text. Parameters are sent as
// text, a binary parameter as bytes; the server infers their types.
// Open reads the whole result; First does not run the statement again.
// ExecSQL without parameters may hold several statements.
#pragma once

#include <mutex>

#include "metadata/dataset/Connection.h"

struct pg_conn;
struct pg_cancel;

namespace mv {

class TmvPostgresConnection : public TmvConnection {
 public:
  explicit TmvPostgresConnection(WideString connectionString);
  ~TmvPostgresConnection() override;

  const WideString& ConnectionString() const { return connectionString_; }
  // Seconds to wait for the server when opening, unless the connection
  // string says otherwise (default 5).
  int ConnectTimeout() const { return connectTimeout_; }
  void SetConnectTimeout(int seconds) { connectTimeout_ = seconds; }

  std::unique_ptr<TmvDataSet> CreateQuery() override;
  using TmvConnection::CreateQuery;
  std::unique_ptr<TmvConnection> CloneClosed() const override;
  bool SupportsCancel() const override { return true; }
  // Asks the server to end the running statement (PQcancel); false while
  // not connected or when the request could not be sent.
  bool Cancel() override;
  // The server's version text ("15.8 (Debian 15.8-0+deb12u1)"); empty
  // while not connected.
  WideString ServerVersion() override;
  // "PostgreSQL: host:port/database".
  WideString Description() const override;
  // Brackets are array subscripts, not quoted names.
  TmvSQLParamScanOptions ParamScanOptions() const override;
  // "host:port, database name": how messages name the server.
  WideString ServerText() const;

 protected:
  void DoOpen() override;
  void DoClose() override;

 private:
  friend class TmvPostgresDataSet;
  pg_conn* Handle() const { return conn_; }
  // A statement name no other dataset of this connection uses.
  WideString NewStatementName();
  void CloseHandle();

  WideString connectionString_;
  int connectTimeout_ = 5;
  // Host, port and database as the string gives them, with libpq's defaults.
  WideString host_, port_, database_;
  unsigned statementCounter_ = 0;
  // Guards cancel_ against Cancel from another thread while the handle closes.
  std::mutex handleMutex_;
  pg_conn* conn_ = nullptr;
  pg_cancel* cancel_ = nullptr;
};

}  // namespace mv
