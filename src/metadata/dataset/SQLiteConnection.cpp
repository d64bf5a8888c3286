#include "metadata/dataset/SQLiteConnection.h"

#include <sqlite3.h>

#include <atomic>
#include <string>
#include <vector>

#include "metadata/dataset/SQLiteTypes.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

WideString ErrorText(sqlite3* db, int rc) { return UTF8Decode(db ? sqlite3_errmsg(db) : sqlite3_errstr(rc)); }

// The type of an expression column, from the storage class of a value.
TFieldType StorageClassType(int storageClass) {
  switch (storageClass) {
    case SQLITE_INTEGER: return ftLargeint;
    case SQLITE_FLOAT: return ftFloat;
    case SQLITE_TEXT: return ftWideString;
    case SQLITE_BLOB: return ftBlob;
    default: return ftUnknown;
  }
}

}  // namespace

// A query on a TmvSQLiteConnection. Parameters are rewritten to `?n` and
// bound by number; a parameter of a text the caller wrote with ParamCheck off
// (`:x`, `@x`, `$x`) is bound from the parameter of that name.
class TmvSQLiteDataSet : public TmvDataSet {
 public:
  explicit TmvSQLiteDataSet(TmvSQLiteConnection* connection) : TmvDataSet(connection) {}
  ~TmvSQLiteDataSet() override { sqlite3_finalize(stmt_); }

 protected:
  void InternalPrepare(TmvFieldDefs& defs) override {
    sqlite3* db = Db();
    const std::string sql = UTF8Encode(Translate());
    const char* tail = nullptr;
    const int rc = sqlite3_prepare_v2(db, sql.c_str(), static_cast<int>(sql.size()), &stmt_, &tail);
    if (rc != SQLITE_OK) {
      stmt_ = nullptr;
      RaiseError(ErrorText(db, rc));
    }
    if (!stmt_) RaiseError(u"The command holds no statement");
    for (int i = 0; i < sqlite3_column_count(stmt_); ++i) defs.Add(DescribeColumn(db, i));
  }

  void InternalUnprepare() override {
    sqlite3_finalize(stmt_);
    stmt_ = nullptr;
  }

  void InternalOpen(TmvFieldDefs& defs) override {
    Bind(stmt_);
    Run();
    // Expressions have no declared type; their first value tells it.
    if (pending_ == SQLITE_ROW)
      for (int i = 0; i < defs.Count(); ++i)
        if (defs[i].DataType == ftUnknown && defs[i].TypeName.empty())
          defs.Edit(i).DataType = StorageClassType(sqlite3_column_type(stmt_, i));
  }

  bool InternalFetch(TmvFields& fields) override {
    const int rc = pending_ ? pending_ : sqlite3_step(stmt_);
    pending_ = 0;
    if (rc == SQLITE_DONE) return false;
    if (rc != SQLITE_ROW) Fail(rc);
    for (int i = 0; i < fields.Count(); ++i) fields[i].SetData(ColumnValue(i, fields[i].DataType()));
    return true;
  }

  void InternalRewind() override { Run(); }

  void InternalClose() override {
    pending_ = 0;
    if (stmt_) sqlite3_reset(stmt_);
  }

  int64_t InternalExecute() override {
    sqlite3* db = Db();
    const std::string sql = UTF8Encode(Translate());
    const char* next = sql.c_str();
    const char* end = next + sql.size();
    int64_t changes = 0;
    while (next < end) {
      sqlite3_stmt* stmt = nullptr;
      const int rc = sqlite3_prepare_v2(db, next, static_cast<int>(end - next), &stmt, &next);
      if (rc != SQLITE_OK) RaiseError(ErrorText(db, rc));
      if (!stmt) break;  // only blanks and comments remain
      try {
        Bind(stmt);
        int step;
        while ((step = sqlite3_step(stmt)) == SQLITE_ROW) {
        }
        if (step != SQLITE_DONE) RaiseError(ErrorText(db, step));
      } catch (...) {
        sqlite3_finalize(stmt);
        throw;
      }
      sqlite3_finalize(stmt);
      changes += sqlite3_changes64(db);
    }
    return changes;
  }

 private:
  sqlite3* Db() { return static_cast<TmvSQLiteConnection&>(RequireConnection()).Handle(); }

  // The command with `:name` placeholders made `?n`; remembers the names.
  WideString Translate() {
    paramNames_.clear();
    if (!ParamCheck()) return CommandText();
    TmvTranslatedSQL translated =
        TranslateSQLParams(CommandText(), TmvParamMarker::pmQuestionNumbered, Connection()->ParamScanOptions());
    paramNames_ = std::move(translated.Names);
    return std::move(translated.Text);
  }

  TmvFieldDef DescribeColumn(sqlite3* db, int column) const {
    TmvFieldDef def;
    def.Name = UTF8Decode(sqlite3_column_name(stmt_, column));
    if (const char* declared = sqlite3_column_decltype(stmt_, column)) {
      def.TypeName = UTF8Decode(declared);
      const TmvSQLiteColumnType type = SQLiteColumnType(def.TypeName);
      def.DataType = type.DataType;
      def.Size = type.Size;
      def.Precision = type.Precision;
      def.Scale = type.Scale;
    }
    const char* table = sqlite3_column_table_name(stmt_, column);
    const char* origin = sqlite3_column_origin_name(stmt_, column);
    if (!table || !origin) {
      def.Attributes |= faReadonly;
      return def;
    }
    int notNull = 0, primaryKey = 0, autoIncrement = 0;
    if (sqlite3_table_column_metadata(db, sqlite3_column_database_name(stmt_, column), table, origin, nullptr,
                                      nullptr, &notNull, &primaryKey, &autoIncrement) == SQLITE_OK) {
      if (notNull) def.Attributes |= faRequired;
      if (autoIncrement) def.DataType = ftAutoInc;
    }
    return def;
  }

  void Bind(sqlite3_stmt* stmt) {
    sqlite3_clear_bindings(stmt);
    for (int i = 1; i <= sqlite3_bind_parameter_count(stmt); ++i) {
      const char* marker = sqlite3_bind_parameter_name(stmt, i);
      if (!marker) RaiseError(WideFormat(u"Parameter %d has no name", {i}));
      const TmvParam& param = BoundParam(ParamName(marker));
      const TmvVariant& value = param.Value();
      int rc = SQLITE_OK;
      switch (value.VarType()) {
        case TmvVarType::vtEmpty:
        case TmvVarType::vtNull: rc = sqlite3_bind_null(stmt, i); break;
        case TmvVarType::vtBoolean:
        case TmvVarType::vtInteger: rc = sqlite3_bind_int64(stmt, i, value.AsInt64()); break;
        case TmvVarType::vtFloat: rc = sqlite3_bind_double(stmt, i, value.AsFloat()); break;
        case TmvVarType::vtDateTime: rc = BindText(stmt, i, UTF8Encode(DateTimeToSQLText(value.AsDateTime()))); break;
        case TmvVarType::vtString:
          if (IsBinaryFieldType(param.DataType())) {
            const std::string bytes = WideToBytes(value.AsWideString());
            rc = sqlite3_bind_blob64(stmt, i, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
          } else {
            rc = BindText(stmt, i, UTF8Encode(value.AsWideString()));
          }
          break;
        case TmvVarType::vtArray:
          RaiseError(WideFormat(u"Parameter '%s' holds an array, which cannot be bound", {param.Name()}));
      }
      if (rc != SQLITE_OK) RaiseError(ErrorText(sqlite3_db_handle(stmt), rc));
    }
  }

  static int BindText(sqlite3_stmt* stmt, int index, const std::string& text) {
    return sqlite3_bind_text64(stmt, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  }

  // The parameter behind a marker: `?n` of a translated text, else the name
  // after the marker's prefix character.
  WideString ParamName(const char* marker) const {
    const WideString text = UTF8Decode(marker);
    int number = 0;
    if (text.size() > 1 && text[0] == u'?' && TryStrToInt(text.substr(1), number) && number >= 1 &&
        static_cast<size_t>(number) <= paramNames_.size())
      return paramNames_[static_cast<size_t>(number - 1)];
    return text.substr(1);
  }

  // Runs the statement from its start and steps to the first row, keeping the
  // outcome for the next fetch.
  void Run() {
    sqlite3_reset(stmt_);
    pending_ = sqlite3_step(stmt_);
    if (pending_ != SQLITE_ROW && pending_ != SQLITE_DONE) Fail(pending_);
  }

  [[noreturn]] void Fail(int rc) {
    pending_ = 0;
    sqlite3* db = sqlite3_db_handle(stmt_);
    const WideString message = ErrorText(db, rc);
    sqlite3_reset(stmt_);
    RaiseError(message);
  }

  TmvVariant ColumnValue(int column, TFieldType type) const {
    switch (sqlite3_column_type(stmt_, column)) {
      case SQLITE_INTEGER: {
        const int64_t value = sqlite3_column_int64(stmt_, column);
        return type == ftBoolean ? TmvVariant(value != 0) : TmvVariant(value);
      }
      case SQLITE_FLOAT: return TmvVariant(sqlite3_column_double(stmt_, column));
      case SQLITE_TEXT: {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
        return TmvVariant(UTF8Decode(std::string_view(text, static_cast<size_t>(sqlite3_column_bytes(stmt_, column)))));
      }
      case SQLITE_BLOB: {
        const auto* data = static_cast<const char*>(sqlite3_column_blob(stmt_, column));
        return TmvVariant(BytesToWide(std::string_view(data, static_cast<size_t>(sqlite3_column_bytes(stmt_, column)))));
      }
      default: return TmvVariant::Null();
    }
  }

  sqlite3_stmt* stmt_ = nullptr;
  std::vector<WideString> paramNames_;
  // The result of a step already taken (0: none).
  int pending_ = 0;
};

TmvSQLiteConnection::TmvSQLiteConnection(WideString fileName, TmvSQLiteOpenMode mode)
    : fileName_(std::move(fileName)), mode_(mode) {}

std::unique_ptr<TmvSQLiteConnection> TmvSQLiteConnection::CreateInMemory() {
  static std::atomic<unsigned> counter{0};
  const WideString name = WideFormat(u"file:mv-memory-%d?mode=memory&cache=shared", {counter.fetch_add(1) + 1});
  return std::make_unique<TmvSQLiteConnection>(name, somReadWriteCreate);
}

TmvSQLiteConnection::~TmvSQLiteConnection() {
  CloseDataSets();
  CloseHandle();
}

void TmvSQLiteConnection::SetBusyTimeout(int milliseconds) {
  busyTimeout_ = milliseconds;
  if (db_) sqlite3_busy_timeout(db_, milliseconds);
}

std::unique_ptr<TmvDataSet> TmvSQLiteConnection::CreateQuery() { return std::make_unique<TmvSQLiteDataSet>(this); }

std::unique_ptr<TmvConnection> TmvSQLiteConnection::CloneClosed() const {
  auto copy = std::make_unique<TmvSQLiteConnection>(fileName_, mode_);
  copy->busyTimeout_ = busyTimeout_;
  return copy;
}

bool TmvSQLiteConnection::Cancel() {
  std::lock_guard lock(handleMutex_);
  if (!db_) return false;
  sqlite3_interrupt(db_);
  return true;
}

WideString TmvSQLiteConnection::ServerVersion() { return UTF8Decode(sqlite3_libversion()); }

WideString TmvSQLiteConnection::Description() const { return u"SQLite: " + fileName_; }

TmvSQLParamScanOptions TmvSQLiteConnection::ParamScanOptions() const {
  TmvSQLParamScanOptions options;
  options.DollarQuotes = false;
  return options;
}

void TmvSQLiteConnection::DoOpen() {
  int flags = SQLITE_OPEN_URI;
  switch (mode_) {
    case somReadWriteCreate: flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE; break;
    case somReadWrite: flags |= SQLITE_OPEN_READWRITE; break;
    case somReadOnly: flags |= SQLITE_OPEN_READONLY; break;
  }
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(UTF8Encode(fileName_).c_str(), &db, flags, nullptr);
  if (rc != SQLITE_OK) {
    const WideString message = ErrorText(db, rc);
    sqlite3_close_v2(db);
    throw EmvQueryBuilderError(fileName_, WideFormat(u"%s: %s", {message, fileName_}));
  }
  sqlite3_busy_timeout(db, busyTimeout_);
  std::lock_guard lock(handleMutex_);
  db_ = db;
}

void TmvSQLiteConnection::DoClose() { CloseHandle(); }

void TmvSQLiteConnection::CloseHandle() {
  std::lock_guard lock(handleMutex_);
  // The _v2 form lets statements of datasets that outlive us finish first.
  sqlite3_close_v2(db_);
  db_ = nullptr;
}

}  // namespace mv
