// The dataset layer on the Firebird client library (fbclient, its classic
// ISC API): a connection to a Firebird (or InterBase-compatible) server and
// query datasets on it.
//
//   TmvFirebirdConnection server(u"127.0.0.1/3050:employee", u"SYSDBA", u"secret");
//   auto query = server.OpenQuery(u"select rdb$relation_name from rdb$relations where rdb$system_flag = :s", &params);
//
// The DSN is the client library's own: "host/port:path-or-alias",
// "host:path-or-alias" (port 3050) or a bare path or alias (a local
// database; a one-letter name before the colon is a drive, not a host).
// Opening waits at most ConnectTimeout seconds and always talks UTF8 with the
// server. Every failure is an EmvQueryBuilderError whose message names the
// server ("Firebird server 127.0.0.1/3050, database employee") and gives the
// server's own reason (the lines of its status vector); the password is in
// no message. A statement the server refuses is rolled back and leaves the
// connection usable.
//
// Statements: `:name` parameters become one `?` per occurrence; the text is
// prepared on the server and its columns described from the prepared
// statement without running it. A column that is no table's column is
// read-only; NOT NULL columns are required. SMALLINT, INTEGER and BIGINT come
// as integers, NUMERIC and DECIMAL with a scale as floats (Precision is what
// the storage holds: 4, 9 or 18 digits; the server does not describe the
// declared one), FLOAT and DOUBLE PRECISION as floats, CHAR and VARCHAR as
// text (CHAR padded to its declared length, character set OCTETS as bytes),
// BLOB SUB_TYPE TEXT as text and other blobs as bytes, DATE, TIME and
// TIMESTAMP as dates, BOOLEAN as a boolean. Parameters go as integers,
// floats, booleans or text (dates as text, bytes as OCTETS); the server
// converts. Each run has a transaction of its own (read committed) that ends
// with it: Open reads the whole result and commits; First does not run the
// statement again. Cancel asks the server to end the running statement
// (fb_cancel_operation).
#pragma once

#include <atomic>
#include <mutex>

#include "metadata/dataset/Connection.h"

namespace mv {

class TmvFirebirdConnection : public TmvConnection {
 public:
  TmvFirebirdConnection(WideString dsn, WideString user, WideString password);
  ~TmvFirebirdConnection() override;

  const WideString& Dsn() const { return dsn_; }
  // Seconds to wait for the server when opening (default 5).
  int ConnectTimeout() const { return connectTimeout_; }
  void SetConnectTimeout(int seconds) { connectTimeout_ = seconds; }

  std::unique_ptr<TmvDataSet> CreateQuery() override;
  using TmvConnection::CreateQuery;
  std::unique_ptr<TmvConnection> CloneClosed() const override;
  bool SupportsCancel() const override { return true; }
  // Asks the server to end the running statement; false while not connected
  // or when the request was refused.
  bool Cancel() override;
  // The server's version text ("LI-V3.0.11.33703 Firebird 3.0"); empty while
  // not connected.
  WideString ServerVersion() override;
  // "Firebird: host/port:database" ("Firebird: database" for a local one).
  WideString Description() const override;
  // No backslash escapes, # comments, bracket names or dollar quotes.
  TmvSQLParamScanOptions ParamScanOptions() const override;
  // "Firebird server host/port, database name" ("Firebird database name"
  // for a local one): how messages name the server.
  WideString ServerText() const;

  // Empty for a local database.
  const WideString& Host() const { return host_; }
  int Port() const { return port_; }
  // The path or alias.
  const WideString& Database() const { return database_; }
  const WideString& User() const { return user_; }

 protected:
  void DoOpen() override;
  void DoClose() override;

 private:
  friend class TmvFirebirdDataSet;
  // The client library's attachment handle (isc_db_handle); 0 while closed.
  unsigned int* Handle() { return &db_; }
  // Whether Cancel was delivered since the last call; clears it.
  bool TakeCancelled() { return cancelled_.exchange(false); }
  void CloseHandle() noexcept;

  WideString dsn_, user_, password_;
  WideString host_, database_;
  int port_ = 3050;
  int connectTimeout_ = 5;
  std::mutex handleMutex_;
  unsigned int db_ = 0;
  std::atomic<bool> cancelled_{false};
};

}  // namespace mv
