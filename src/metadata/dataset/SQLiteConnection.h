// The dataset layer on SQLite: a connection to a database file (or an
// in-memory database) and query datasets on it.
//
// Columns are described from the prepared statement: the declared type
// (SQLiteTypes.h), NOT NULL as faRequired, an AUTOINCREMENT key as ftAutoInc,
// and a column that is no table's column (an expression) as faReadonly; an
// expression's type is taken from the first row once the dataset is open.
// Values keep SQLite's storage class (integer, real, text, blob), except that
// a boolean column gives booleans; dates come as SQLite stores them. Date
// parameters are bound as "yyyy-mm-dd hh:nn:ss.zzz" text. Only the first
// statement of a command is opened; ExecSQL runs them all.
#pragma once

#include <mutex>

#include "metadata/dataset/Connection.h"

struct sqlite3;

namespace mv {

enum TmvSQLiteOpenMode {
  somReadWriteCreate,  // creates the file if it does not exist
  somReadWrite,
  somReadOnly,
};

class TmvSQLiteConnection : public TmvConnection {
 public:
  // `fileName` is a path, ":memory:" (a private in-memory database) or a
  // "file:" URI. Opening comes later (Open, or the first dataset).
  explicit TmvSQLiteConnection(WideString fileName, TmvSQLiteOpenMode mode = somReadWriteCreate);
  // A new in-memory database that the clones of this connection share: it
  // lives while one of them is open.
  static std::unique_ptr<TmvSQLiteConnection> CreateInMemory();
  ~TmvSQLiteConnection() override;

  const WideString& FileName() const { return fileName_; }
  TmvSQLiteOpenMode OpenMode() const { return mode_; }
  // How long a statement waits for a lock held by another connection (ms).
  int BusyTimeout() const { return busyTimeout_; }
  void SetBusyTimeout(int milliseconds);

  std::unique_ptr<TmvDataSet> CreateQuery() override;
  using TmvConnection::CreateQuery;
  std::unique_ptr<TmvConnection> CloneClosed() const override;
  bool SupportsCancel() const override { return true; }
  // Interrupts the statements running on this connection (sqlite3_interrupt).
  // It reaches only a statement already running: one that starts after the
  // call runs normally, so a caller racing the start repeats the call.
  bool Cancel() override;
  // The SQLite library's version ("3.40.1").
  WideString ServerVersion() override;
  WideString Description() const override;
  // SQLite has no dollar-quoted strings ($name is one of its parameter forms).
  TmvSQLParamScanOptions ParamScanOptions() const override;

 protected:
  void DoOpen() override;
  void DoClose() override;

 private:
  friend class TmvSQLiteDataSet;
  sqlite3* Handle() const { return db_; }
  void CloseHandle();

  WideString fileName_;
  TmvSQLiteOpenMode mode_;
  int busyTimeout_ = 5000;
  // Guards db_ against Cancel from another thread while the handle closes.
  std::mutex handleMutex_;
  sqlite3* db_ = nullptr;
};

}  // namespace mv
