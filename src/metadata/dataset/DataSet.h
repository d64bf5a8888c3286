// The dataset: a statement of a connection and the rows it returns, read
// forward. This is the whole of what the engine asks of a database library;
// the metadata provider, the fetchers and background statements reach the
// server only through it and `TmvConnection`.
//
//   auto query = connection.CreateQuery(u"select name, type from sqlite_master where type = :kind");
//   query->ParamByName(u"kind").SetAsWideString(u"table");
//   for (query->Open(); !query->Eof(); query->Next())
//     use(query->FieldByName(u"NAME").AsWideString());  // names are found without regard to case
//
// Life cycle: setting the command text closes the dataset, forgets the
// prepared statement and its column descriptions, and parses the text for
// `:name` parameters (values of parameters whose names stay are kept).
// `UpdateFieldDefs` prepares the statement and describes its columns without
// running it; `Open` runs it and stands on the first row; `Close` frees the
// fields. Datasets need their connection open and open it when they need it.
//
// A dataset, like its connection, is used by one thread at a time; only
// `TmvConnection::Cancel` may be called from another thread. Failures raise
// EmvQueryBuilderError with the driver's message; its Text() is the statement.
//
// An adapter for another database library derives from TmvDataSet and
// implements the protected Internal... operations (see their comments); the
// base keeps the state, the parameters, the fields and the navigation rules.
// Its destructor frees the adapter's handles directly, without virtual calls.
#pragma once

#include <cstdint>

#include "metadata/dataset/Field.h"
#include "metadata/dataset/FieldDef.h"
#include "metadata/dataset/Params.h"

namespace mv {

class TmvConnection;

class TmvDataSet {
 public:
  // Registers with `connection`, which may be null for a dataset that needs
  // no database (the in-memory dataset).
  explicit TmvDataSet(TmvConnection* connection);
  virtual ~TmvDataSet();
  TmvDataSet(const TmvDataSet&) = delete;
  TmvDataSet& operator=(const TmvDataSet&) = delete;

  // Null once the connection has been freed.
  TmvConnection* Connection() const { return connection_; }

  // --- The statement ---
  const WideString& CommandText() const { return commandText_; }
  void SetCommandText(WideStringView sql);
  // Whether setting the command text parses it for parameters (default true).
  bool ParamCheck() const { return paramCheck_; }
  void SetParamCheck(bool value) { paramCheck_ = value; }
  TmvParams& Params() { return params_; }
  const TmvParams& Params() const { return params_; }
  TmvParam& ParamByName(WideStringView name) { return params_.ParamByName(name); }

  // --- State and navigation ---
  void Open();
  void Close();
  bool Active() const { return active_; }
  void SetActive(bool value) { value ? Open() : Close(); }
  // Back to the first row; may run the statement again.
  void First();
  void Next();
  // True past the last row, and while closed.
  bool Eof() const { return !active_ || eof_; }
  // True when the result has no rows, and while closed.
  bool IsEmpty() const { return !active_ || empty_; }
  // The number of rows, or -1 when it is not known without reading them.
  virtual int64_t RecordCount() const { return -1; }

  // --- Fields of the open dataset ---
  TmvFields& Fields() { return fields_; }
  int FieldCount() const { return fields_.Count(); }
  TmvField* FindField(WideStringView name) const { return fields_.FindField(name); }
  TmvField& FieldByName(WideStringView name) const { return fields_.FieldByName(name); }

  // --- Column descriptions ---
  TmvFieldDefs& FieldDefs() { return fieldDefs_; }
  // Fills FieldDefs by preparing the statement, without running it. While
  // open, the definitions are already current and nothing happens.
  void UpdateFieldDefs();

  // Runs the statement for its effect (no rows are kept); answers the number
  // of rows changed, or -1 when the driver does not tell. Closes first.
  int64_t ExecSQL();

 protected:
  // Prepares the statement and describes its columns into `defs` (empty on
  // entry) without running it. Called before InternalOpen when the
  // statement is not prepared yet.
  virtual void InternalPrepare(TmvFieldDefs& defs) = 0;
  // Drops the prepared statement (the command text changed or the
  // connection closes).
  virtual void InternalUnprepare() = 0;
  // Binds the parameters and runs the prepared statement; may refine `defs`
  // (e.g. types known only from the result).
  virtual void InternalOpen(TmvFieldDefs& defs) = 0;
  // Moves to the next row (the first after InternalOpen or InternalRewind)
  // and stores its values in `fields`. False when there is none.
  virtual bool InternalFetch(TmvFields& fields) = 0;
  // Goes back before the first row, running the statement again if it must.
  virtual void InternalRewind() = 0;
  // Ends the running statement; the prepared statement may stay.
  virtual void InternalClose() = 0;
  // Runs the command for its effect; rows changed or -1.
  virtual int64_t InternalExecute() = 0;

  // The open connection; raises when the dataset has none.
  TmvConnection& RequireConnection();
  // The parameter a placeholder refers to; raises "No value for parameter"
  // when it was never assigned (Null is a value).
  const TmvParam& BoundParam(WideStringView name) const;
  // Raises EmvQueryBuilderError with the statement as Text().
  [[noreturn]] void RaiseError(WideString message) const;

 private:
  friend class TmvConnection;
  // The connection closes (statements must go) or is freed.
  void ConnectionClosing();
  void ConnectionFreed() { connection_ = nullptr; }
  void Prepare();
  void Unprepare();
  // Fetches the next row and updates Eof.
  void Fetch();

  TmvConnection* connection_;
  WideString commandText_;
  bool paramCheck_ = true;
  TmvParams params_;
  TmvFieldDefs fieldDefs_{this};
  TmvFields fields_;
  bool prepared_ = false;
  bool active_ = false;
  bool eof_ = true;
  bool empty_ = true;
  // True while the current row is the first one (First needs no rewind).
  bool atFirst_ = false;
};

}  // namespace mv
