// Datasets whose rows are given in code, and a scripted connection that
// answers statements with such rows. They behave like a driver's datasets
// (field definitions without opening, names found without regard to case,
// Null handling), so code above the dataset layer can be tested without a
// server:
//
//   TmvMemoryConnection server;
//   server.AddResult(u"select name from t", TmvMemoryTable().AddColumn(u"name", ftWideString, 30)
//                                                           .AddRow({u"a"}).AddRow({u"b"}));
//   auto query = server.OpenQuery(u"select name from t");   // two rows
//   server.Received()[0].Sql;                               // what was run
#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "metadata/dataset/Connection.h"

namespace mv {

// Columns and rows. A row holds one value per column; an Empty or Null value
// is NULL.
struct TmvMemoryTable {
  std::vector<TmvFieldDef> Columns;
  std::vector<std::vector<TmvVariant>> Rows;

  TmvMemoryTable& AddColumn(WideString name, TFieldType type, int size = 0, TFieldAttributes attributes = 0);
  TmvMemoryTable& AddColumn(TmvFieldDef def);
  // Raises EmvQueryBuilderError when the number of values is not the number of columns.
  TmvMemoryTable& AddRow(std::vector<TmvVariant> values);
};

class TmvMemoryConnection;

class TmvMemoryDataSet : public TmvDataSet {
 public:
  // A dataset of its own rows, with no connection; the command text is kept
  // but not used.
  explicit TmvMemoryDataSet(TmvMemoryTable table = {});
  // A dataset that takes its rows from the script of `connection`.
  explicit TmvMemoryDataSet(TmvMemoryConnection* connection);

  const TmvMemoryTable& Table() const { return table_; }
  // Replaces the rows of a dataset without connection; closes it.
  void SetTable(TmvMemoryTable table);
  int64_t RecordCount() const override;

 protected:
  void InternalPrepare(TmvFieldDefs& defs) override;
  void InternalUnprepare() override {}
  void InternalOpen(TmvFieldDefs& defs) override;
  bool InternalFetch(TmvFields& fields) override;
  void InternalRewind() override { row_ = 0; }
  void InternalClose() override { row_ = 0; }
  int64_t InternalExecute() override;

 private:
  // The connection of a scripted dataset (null for one of its own rows);
  // raises when the connection is gone.
  TmvMemoryConnection* Scripted();
  // Takes the rows the script gives for the command text.
  void LoadScriptedTable(TmvMemoryConnection& connection);

  bool scripted_;
  TmvMemoryTable table_;
  size_t row_ = 0;
};

enum class TmvScriptMatch {
  smExact,     // the statement equals the text (surrounding blanks aside)
  smContains,  // the statement contains the text
};

// A connection that answers from a script: statements matched in the order
// the entries were added. A query nobody scripted fails like a driver error;
// a statement run for its effect succeeds unless an error is scripted.
// Every statement run (opened or executed) is recorded with its parameters.
class TmvMemoryConnection : public TmvConnection {
 public:
  struct TmvReceivedStatement {
    WideString Sql;
    TmvParams Params;
    bool Executed = false;  // run for its effect rather than opened
  };

  TmvMemoryConnection() = default;
  ~TmvMemoryConnection() override;

  // Rows that depend on the parameters: the handler is asked when the
  // statement is prepared (values may still be unassigned) and when it opens.
  using TmvScriptHandler = std::function<TmvMemoryTable(const TmvParams& params)>;

  void AddResult(WideString sql, TmvMemoryTable table, TmvScriptMatch match = TmvScriptMatch::smExact);
  void AddHandler(WideString sql, TmvScriptHandler handler, TmvScriptMatch match = TmvScriptMatch::smExact);
  void AddError(WideString sql, WideString message, TmvScriptMatch match = TmvScriptMatch::smExact);
  // Makes Open fail with `message` (empty: opening works).
  void SetOpenError(WideString message) { openError_ = std::move(message); }

  std::vector<TmvReceivedStatement> Received() const;
  void ClearReceived();

  std::unique_ptr<TmvDataSet> CreateQuery() override;
  using TmvConnection::CreateQuery;
  // A copy of the script; the record of statements starts empty.
  std::unique_ptr<TmvConnection> CloneClosed() const override;
  WideString Description() const override { return u"Memory"; }

 protected:
  void DoOpen() override;
  void DoClose() override {}

 private:
  friend class TmvMemoryDataSet;
  struct TScriptEntry {
    WideString Sql;
    TmvScriptMatch Match;
    TmvMemoryTable Result;
    TmvScriptHandler Handler;  // when set, gives the result
    WideString Error;          // non-empty: the statement fails with this message
  };
  // The entry for `sql`, or null.
  const TScriptEntry* Find(WideStringView sql) const;
  void Record(const TmvDataSet& dataset, bool executed);

  std::vector<TScriptEntry> script_;
  WideString openError_;
  mutable std::mutex receivedMutex_;
  std::vector<TmvReceivedStatement> received_;
};

}  // namespace mv
