#include "metadata/dataset/MariaDbConnection.h"

#include <mysql.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/DateTime.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

// The client library sets itself up once per process, before any thread
// opens a connection.
void InitLibrary() {
  static std::once_flag once;
  std::call_once(once, [] { mysql_library_init(0, nullptr, nullptr); });
}

WideString Reason(const char* message) {
  std::string text = message && *message ? message : "unknown error";
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  return UTF8Decode(text);
}

std::string PercentDecoded(std::string_view text) {
  std::string out;
  auto hex = [](char c) {
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hex(text[i + 1]) >= 0 && hex(text[i + 2]) >= 0) {
      out += static_cast<char>(hex(text[i + 1]) * 16 + hex(text[i + 2]));
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

// What a column of the server becomes, and the type name it is shown with.
struct TColumnKind {
  TFieldType DataType;
  const char16_t* Name;
};

bool IsBinaryCharset(const MYSQL_FIELD& field) { return field.charsetnr == 63; }

TColumnKind KindOf(const MYSQL_FIELD& field) {
  const bool binary = IsBinaryCharset(field);
  switch (field.type) {
    case MYSQL_TYPE_TINY: return field.length == 1 ? TColumnKind{ftBoolean, u"tinyint"} : TColumnKind{ftSmallint, u"tinyint"};
    case MYSQL_TYPE_SHORT: return {ftSmallint, u"smallint"};
    case MYSQL_TYPE_YEAR: return {ftSmallint, u"year"};
    case MYSQL_TYPE_INT24: return {ftInteger, u"mediumint"};
    case MYSQL_TYPE_LONG: return {(field.flags & UNSIGNED_FLAG) ? ftLargeint : ftInteger, u"int"};
    case MYSQL_TYPE_LONGLONG: return {ftLargeint, u"bigint"};
    case MYSQL_TYPE_FLOAT: return {ftFloat, u"float"};
    case MYSQL_TYPE_DOUBLE: return {ftFloat, u"double"};
    case MYSQL_TYPE_DECIMAL:
    case MYSQL_TYPE_NEWDECIMAL: return {ftBCD, u"decimal"};
    case MYSQL_TYPE_DATE:
    case MYSQL_TYPE_NEWDATE: return {ftDate, u"date"};
    case MYSQL_TYPE_TIME: return {ftTime, u"time"};
    case MYSQL_TYPE_DATETIME: return {ftDateTime, u"datetime"};
    case MYSQL_TYPE_TIMESTAMP: return {ftDateTime, u"timestamp"};
    case MYSQL_TYPE_BIT: return {ftBytes, u"bit"};
    case MYSQL_TYPE_STRING: return binary ? TColumnKind{ftBytes, u"binary"} : TColumnKind{ftFixedChar, u"char"};
    case MYSQL_TYPE_VAR_STRING:
    case MYSQL_TYPE_VARCHAR: return binary ? TColumnKind{ftVarBytes, u"varbinary"} : TColumnKind{ftWideString, u"varchar"};
    case MYSQL_TYPE_TINY_BLOB:
    case MYSQL_TYPE_MEDIUM_BLOB:
    case MYSQL_TYPE_LONG_BLOB:
    case MYSQL_TYPE_BLOB: return binary ? TColumnKind{ftBlob, u"blob"} : TColumnKind{ftMemo, u"text"};
    case MYSQL_TYPE_JSON: return {ftMemo, u"json"};
    case MYSQL_TYPE_ENUM: return {ftWideString, u"enum"};
    case MYSQL_TYPE_SET: return {ftWideString, u"set"};
    case MYSQL_TYPE_GEOMETRY: return {ftBlob, u"geometry"};
    default: return {binary ? ftVarBytes : ftWideString, u""};
  }
}

// How a column is fetched: integers, floats and dates in their own C types,
// everything else as its bytes.
enum class TFetchAs { Integer, Float, Time, Bytes };

TFetchAs FetchAs(TFieldType type) {
  switch (type) {
    case ftBoolean:
    case ftSmallint:
    case ftInteger:
    case ftLargeint: return TFetchAs::Integer;
    case ftFloat: return TFetchAs::Float;
    case ftDate:
    case ftTime:
    case ftDateTime: return TFetchAs::Time;
    default: return TFetchAs::Bytes;
  }
}

std::string TimeText(const MYSQL_TIME& t, TFieldType type) {
  char buffer[64];
  const char* sign = t.neg ? "-" : "";
  if (type == ftDate)
    std::snprintf(buffer, sizeof buffer, "%04u-%02u-%02u", t.year, t.month, t.day);
  else if (type == ftTime)
    std::snprintf(buffer, sizeof buffer, "%s%02u:%02u:%02u", sign, t.hour, t.minute, t.second);
  else
    std::snprintf(buffer, sizeof buffer, "%04u-%02u-%02u %02u:%02u:%02u", t.year, t.month, t.day, t.hour, t.minute,
                  t.second);
  std::string text = buffer;
  if (t.second_part && type != ftDate) {
    std::snprintf(buffer, sizeof buffer, ".%06lu", t.second_part);
    text += buffer;
  }
  return text;
}

// A date or time value; text when TmvDateTime cannot hold it (zero dates, a
// negative TIME or one past 24 hours).
TmvVariant TimeValue(const MYSQL_TIME& t, TFieldType type) {
  const int ms = static_cast<int>(std::min<unsigned long>(t.second_part / 1000, 999));
  TmvDateTime date, time;
  const bool dateOk = type == ftTime || TryEncodeDate(static_cast<int>(t.year), static_cast<int>(t.month),
                                                      static_cast<int>(t.day), date);
  const bool timeOk = type == ftDate || (!t.neg && TryEncodeTime(static_cast<int>(t.hour), static_cast<int>(t.minute),
                                                                 static_cast<int>(t.second), ms, time));
  if (!dateOk || !timeOk) return TmvVariant(UTF8Decode(TimeText(t, type)));
  if (type == ftDate) return TmvVariant(date);
  if (type == ftTime) return TmvVariant(time);
  return TmvVariant(ComposeDateTime(date, time));
}

std::string ParamText(const TmvVariant& value) {
  if (value.VarType() == TmvVarType::vtDateTime) return UTF8Encode(DateTimeToSQLText(value.AsDateTime()));
  return UTF8Encode(value.AsWideString());
}

// One result column's buffers.
struct TColumnBuffer {
  TFetchAs As = TFetchAs::Bytes;
  TFieldType DataType = ftUnknown;
  bool Unsigned = false;
  long long Integer = 0;
  double Float = 0;
  MYSQL_TIME Time{};
  std::string Bytes;
  unsigned long Length = 0;
  my_bool IsNull = 0;
  my_bool Error = 0;
};

// One parameter's buffers.
struct TParamBuffer {
  long long Integer = 0;
  double Float = 0;
  std::string Bytes;
  unsigned long Length = 0;
  my_bool IsNull = 0;
};

constexpr unsigned long kInitialBytes = 256;

}  // namespace

// A query on a TmvMariaDbConnection: a server-side prepared statement and
// the whole result of its last run.
class TmvMariaDbDataSet : public TmvDataSet {
 public:
  explicit TmvMariaDbDataSet(TmvMariaDbConnection* connection) : TmvDataSet(connection) {}
  ~TmvMariaDbDataSet() override { ReleaseStatement(); }

 protected:
  void InternalPrepare(TmvFieldDefs& defs) override {
    TmvMariaDbConnection& connection = Server();
    const std::string text = UTF8Encode(Translate());
    stmt_ = mysql_stmt_init(connection.Handle());
    if (!stmt_) RaiseError(WideFormat(u"%s: %s", {connection.ServerText(), Reason(mysql_error(connection.Handle()))}));
    if (mysql_stmt_prepare(stmt_, text.data(), text.size()) != 0) Fail();
    if (mysql_stmt_param_count(stmt_) != paramNames_.size()) {
      const int count = static_cast<int>(mysql_stmt_param_count(stmt_));
      ReleaseStatement();
      RaiseError(WideFormat(u"%s: the statement has %d parameters, the command text %d",
                            {connection.ServerText(), count, static_cast<int>(paramNames_.size())}));
    }
    columns_.clear();
    MYSQL_RES* meta = mysql_stmt_result_metadata(stmt_);
    if (!meta) return;
    const unsigned count = mysql_num_fields(meta);
    const MYSQL_FIELD* fields = mysql_fetch_fields(meta);
    columns_.resize(count);
    for (unsigned i = 0; i < count; ++i) {
      const MYSQL_FIELD& field = fields[i];
      const TColumnKind kind = KindOf(field);
      TmvFieldDef def;
      def.Name = UTF8Decode(std::string_view(field.name, field.name_length));
      def.DataType = kind.DataType;
      def.TypeName = kind.Name;
      if (field.flags & UNSIGNED_FLAG) def.TypeName += u" unsigned";
      if (kind.DataType == ftBCD) {
        // The display length counts the digits, a sign and a point.
        const int scale = static_cast<int>(field.decimals);
        def.Precision = static_cast<int>(field.length) - (scale > 0 ? 1 : 0) - ((field.flags & UNSIGNED_FLAG) ? 0 : 1);
        def.Scale = scale;
      } else if (kind.DataType == ftWideString || kind.DataType == ftFixedChar || kind.DataType == ftBytes ||
                 kind.DataType == ftVarBytes) {
        const MARIADB_CHARSET_INFO* charset = IsBinaryCharset(field) ? nullptr : mariadb_get_charset_by_nr(field.charsetnr);
        const unsigned perChar = charset && charset->char_maxlen ? charset->char_maxlen : 1;
        def.Size = static_cast<int>(field.length / perChar);
      }
      if (field.flags & NOT_NULL_FLAG) def.Attributes |= faRequired;
      if (field.org_table_length == 0) def.Attributes |= faReadonly;
      TColumnBuffer& column = columns_[i];
      column.DataType = kind.DataType;
      column.As = FetchAs(kind.DataType);
      column.Unsigned = (field.flags & UNSIGNED_FLAG) != 0;
      defs.Add(std::move(def));
    }
    mysql_free_result(meta);
  }

  void InternalUnprepare() override { ReleaseStatement(); }

  void InternalOpen(TmvFieldDefs&) override {
    Execute();
    if (columns_.empty()) return;
    std::vector<MYSQL_BIND> binds(columns_.size());
    for (size_t i = 0; i < columns_.size(); ++i) {
      TColumnBuffer& column = columns_[i];
      MYSQL_BIND& bind = binds[i];
      bind.is_null = &column.IsNull;
      bind.error = &column.Error;
      bind.length = &column.Length;
      switch (column.As) {
        case TFetchAs::Integer:
          bind.buffer_type = MYSQL_TYPE_LONGLONG;
          bind.buffer = &column.Integer;
          bind.is_unsigned = column.Unsigned;
          break;
        case TFetchAs::Float:
          bind.buffer_type = MYSQL_TYPE_DOUBLE;
          bind.buffer = &column.Float;
          break;
        case TFetchAs::Time:
          bind.buffer_type = column.DataType == ftDate ? MYSQL_TYPE_DATE
                             : column.DataType == ftTime ? MYSQL_TYPE_TIME
                                                         : MYSQL_TYPE_DATETIME;
          bind.buffer = &column.Time;
          break;
        case TFetchAs::Bytes:
          column.Bytes.assign(kInitialBytes, '\0');
          bind.buffer_type = MYSQL_TYPE_STRING;
          bind.buffer = column.Bytes.data();
          bind.buffer_length = kInitialBytes;
          break;
      }
    }
    if (mysql_stmt_bind_result(stmt_, binds.data()) != 0 || mysql_stmt_store_result(stmt_) != 0) Fail();
    CheckCancelled();
  }

  bool InternalFetch(TmvFields& fields) override {
    if (columns_.empty()) return false;
    const int rc = mysql_stmt_fetch(stmt_);
    if (rc == MYSQL_NO_DATA) return false;
    if (rc == 1) Fail();
    for (int i = 0; i < fields.Count() && i < static_cast<int>(columns_.size()); ++i) {
      TColumnBuffer& column = columns_[i];
      if (column.IsNull) {
        fields[i].SetData(TmvVariant::Null());
        continue;
      }
      switch (column.As) {
        case TFetchAs::Integer:
          if (column.DataType == ftBoolean)
            fields[i].SetData(TmvVariant(column.Integer != 0));
          else if (column.Unsigned && static_cast<unsigned long long>(column.Integer) > 9223372036854775807ull)
            fields[i].SetData(TmvVariant(UTF8Decode(std::to_string(static_cast<unsigned long long>(column.Integer)))));
          else
            fields[i].SetData(TmvVariant(static_cast<int64_t>(column.Integer)));
          break;
        case TFetchAs::Float: fields[i].SetData(TmvVariant(column.Float)); break;
        case TFetchAs::Time: fields[i].SetData(TimeValue(column.Time, column.DataType)); break;
        case TFetchAs::Bytes: fields[i].SetData(BytesValue(i, column)); break;
      }
    }
    return true;
  }

  void InternalRewind() override {
    if (stmt_ && !columns_.empty()) mysql_stmt_data_seek(stmt_, 0);
  }

  void InternalClose() override {
    if (stmt_) mysql_stmt_free_result(stmt_);
  }

  int64_t InternalExecute() override {
    TmvMariaDbConnection& connection = Server();
    MYSQL* conn = connection.Handle();
    if (!ParamCheck() || TranslatedNames().empty()) {
      // Several statements may stand in one text; the last one's count tells.
      const std::string text = UTF8Encode(CommandText());
      connection.TakeCancelled();
      if (mysql_real_query(conn, text.data(), text.size()) != 0) FailConnection();
      int64_t changed = -1;
      for (;;) {
        if (MYSQL_RES* result = mysql_store_result(conn)) {
          mysql_free_result(result);
          changed = -1;
        } else if (mysql_field_count(conn) != 0) {
          FailConnection();
        } else {
          changed = static_cast<int64_t>(mysql_affected_rows(conn));
        }
        const int next = mysql_next_result(conn);
        if (next > 0) FailConnection();
        if (next < 0) break;
      }
      CheckCancelled();
      return changed;
    }
    TmvFieldDefs ignored(nullptr);
    if (!stmt_) InternalPrepare(ignored);
    Execute();
    const my_ulonglong changed = mysql_stmt_affected_rows(stmt_);
    mysql_stmt_free_result(stmt_);
    return changed == static_cast<my_ulonglong>(-1) ? -1 : static_cast<int64_t>(changed);
  }

 private:
  TmvMariaDbConnection& Server() { return static_cast<TmvMariaDbConnection&>(RequireConnection()); }

  // The names behind the `?` of the command, without keeping the text.
  std::vector<WideString> TranslatedNames() {
    Translate();
    return paramNames_;
  }

  void ReleaseStatement() noexcept {
    if (stmt_) {
      // Frees it on the server too while the connection is open; the client
      // library detaches statements from a handle it closes.
      mysql_stmt_close(stmt_);
    }
    stmt_ = nullptr;
    columns_.clear();
  }

  // The command with `:name` placeholders made `?`; remembers the names.
  WideString Translate() {
    paramNames_.clear();
    if (!ParamCheck()) return CommandText();
    TmvTranslatedSQL translated =
        TranslateSQLParams(CommandText(), TmvParamMarker::pmQuestion, Connection()->ParamScanOptions());
    paramNames_ = std::move(translated.Names);
    return std::move(translated.Text);
  }

  // Binds the parameters and runs the prepared statement.
  void Execute() {
    std::vector<TParamBuffer> values(paramNames_.size());
    std::vector<MYSQL_BIND> binds(paramNames_.size());
    for (size_t i = 0; i < paramNames_.size(); ++i) {
      const TmvParam& param = BoundParam(paramNames_[i]);
      const TmvVariant& value = param.Value();
      TParamBuffer& buffer = values[i];
      MYSQL_BIND& bind = binds[i];
      bind.is_null = &buffer.IsNull;
      if (value.IsClear()) {
        buffer.IsNull = 1;
        bind.buffer_type = MYSQL_TYPE_NULL;
        continue;
      }
      switch (value.VarType()) {
        case TmvVarType::vtArray:
          RaiseError(WideFormat(u"Parameter '%s' holds an array, which cannot be bound", {param.Name()}));
        case TmvVarType::vtBoolean:
        case TmvVarType::vtInteger:
          buffer.Integer = value.VarType() == TmvVarType::vtBoolean ? (value.AsBoolean() ? 1 : 0) : value.AsInt64();
          bind.buffer_type = MYSQL_TYPE_LONGLONG;
          bind.buffer = &buffer.Integer;
          break;
        case TmvVarType::vtFloat:
          buffer.Float = value.AsFloat();
          bind.buffer_type = MYSQL_TYPE_DOUBLE;
          bind.buffer = &buffer.Float;
          break;
        default: {
          const bool binary = value.VarType() == TmvVarType::vtString && IsBinaryFieldType(param.DataType());
          buffer.Bytes = binary ? WideToBytes(value.AsWideString()) : ParamText(value);
          buffer.Length = static_cast<unsigned long>(buffer.Bytes.size());
          bind.buffer_type = binary ? MYSQL_TYPE_BLOB : MYSQL_TYPE_STRING;
          bind.buffer = buffer.Bytes.data();
          bind.buffer_length = buffer.Length;
          bind.length = &buffer.Length;
        }
      }
    }
    mysql_stmt_free_result(stmt_);
    if (!binds.empty() && mysql_stmt_bind_param(stmt_, binds.data()) != 0) Fail();
    Server().TakeCancelled();
    if (mysql_stmt_execute(stmt_) != 0) Fail();
    CheckCancelled();
  }

  // A column's bytes: text, or bytes for binary columns; read again whole
  // when the buffer was too small.
  TmvVariant BytesValue(int index, TColumnBuffer& column) {
    std::string_view bytes(column.Bytes.data(), std::min<unsigned long>(column.Length, column.Bytes.size()));
    std::string whole;
    if (column.Length > column.Bytes.size()) {
      whole.assign(column.Length, '\0');
      MYSQL_BIND bind{};
      unsigned long length = 0;
      bind.buffer_type = MYSQL_TYPE_STRING;
      bind.buffer = whole.data();
      bind.buffer_length = column.Length;
      bind.length = &length;
      if (mysql_stmt_fetch_column(stmt_, &bind, static_cast<unsigned>(index), 0) != 0) Fail();
      bytes = whole;
    }
    if (IsBinaryFieldType(column.DataType)) return TmvVariant(BytesToWide(bytes));
    if (column.DataType == ftBCD) {
      const std::string copy(bytes);
      char* end = nullptr;
      const double value = std::strtod(copy.c_str(), &end);
      if (!copy.empty() && end && *end == '\0') return TmvVariant(value);
    }
    return TmvVariant(UTF8Decode(bytes));
  }

  // A statement that ended because of Cancel raises, also when the server
  // let it finish with a result (SLEEP answers 1 when killed).
  void CheckCancelled() {
    if (Server().TakeCancelled())
      RaiseError(WideFormat(u"%s: the statement was cancelled", {Server().ServerText()}));
  }

  [[noreturn]] void Fail() {
    TmvMariaDbConnection& connection = Server();
    const WideString reason = Reason(stmt_ ? mysql_stmt_error(stmt_) : mysql_error(connection.Handle()));
    RaiseError(WideFormat(connection.TakeCancelled() ? u"%s: the statement was cancelled (%s)" : u"%s: %s",
                          {connection.ServerText(), reason}));
  }

  [[noreturn]] void FailConnection() {
    TmvMariaDbConnection& connection = Server();
    MYSQL* conn = connection.Handle();
    const WideString reason = Reason(mysql_error(conn));
    // Drain what is left of a multi-statement text: the connection stays usable.
    while (mysql_more_results(conn) && mysql_next_result(conn) == 0)
      if (MYSQL_RES* rest = mysql_store_result(conn)) mysql_free_result(rest);
    RaiseError(WideFormat(connection.TakeCancelled() ? u"%s: the statement was cancelled (%s)" : u"%s: %s",
                          {connection.ServerText(), reason}));
  }

  MYSQL_STMT* stmt_ = nullptr;
  std::vector<WideString> paramNames_;
  std::vector<TColumnBuffer> columns_;
};

TmvMariaDbConnection::TmvMariaDbConnection(WideString uri) : uri_(std::move(uri)) {
  std::string text = UTF8Encode(uri_);
  for (const char* scheme : {"mysql://", "mariadb://"})
    if (text.rfind(scheme, 0) == 0) text.erase(0, std::strlen(scheme));
  if (const size_t query = text.find('?'); query != std::string::npos) text.erase(query);
  std::string authority = text, path;
  if (const size_t slash = text.find('/'); slash != std::string::npos) {
    authority = text.substr(0, slash);
    path = text.substr(slash + 1);
  }
  if (const size_t at = authority.rfind('@'); at != std::string::npos) {
    const std::string userInfo = authority.substr(0, at);
    authority.erase(0, at + 1);
    const size_t colon = userInfo.find(':');
    user_ = UTF8Decode(PercentDecoded(userInfo.substr(0, colon)));
    if (colon != std::string::npos) password_ = UTF8Decode(PercentDecoded(userInfo.substr(colon + 1)));
  }
  if (const size_t colon = authority.rfind(':'); colon != std::string::npos) {
    const std::string port = authority.substr(colon + 1);
    authority.erase(colon);
    char* end = nullptr;
    const long value = std::strtol(port.c_str(), &end, 10);
    port_ = !port.empty() && *end == '\0' && value > 0 && value < 65536 ? static_cast<int>(value) : -1;
  }
  host_ = UTF8Decode(PercentDecoded(authority));
  if (host_.empty()) host_ = u"localhost";
  database_ = UTF8Decode(PercentDecoded(path));
}

TmvMariaDbConnection::~TmvMariaDbConnection() {
  CloseDataSets();
  CloseHandle();
}

std::unique_ptr<TmvDataSet> TmvMariaDbConnection::CreateQuery() { return std::make_unique<TmvMariaDbDataSet>(this); }

std::unique_ptr<TmvConnection> TmvMariaDbConnection::CloneClosed() const {
  auto copy = std::make_unique<TmvMariaDbConnection>(uri_);
  copy->connectTimeout_ = connectTimeout_;
  return copy;
}

MYSQL* TmvMariaDbConnection::Connect() const {
  InitLibrary();
  if (port_ <= 0)
    throw EmvQueryBuilderError(Description(), WideFormat(u"Cannot connect to the %s: the port is not a number 1-65535",
                                                         {ServerText()}));
  MYSQL* conn = mysql_init(nullptr);
  if (!conn) throw EmvQueryBuilderError(Description(), WideFormat(u"Cannot connect to the %s: out of memory", {ServerText()}));
  const unsigned timeout = static_cast<unsigned>(connectTimeout_ > 0 ? connectTimeout_ : 5);
  mysql_optionsv(conn, MYSQL_OPT_CONNECT_TIMEOUT, &timeout);
  mysql_optionsv(conn, MYSQL_SET_CHARSET_NAME, "utf8mb4");
  const std::string host = UTF8Encode(host_), user = UTF8Encode(user_), password = UTF8Encode(password_),
                    database = UTF8Encode(database_);
  if (!mysql_real_connect(conn, host.c_str(), user.empty() ? nullptr : user.c_str(), password.c_str(),
                          database.empty() ? nullptr : database.c_str(), static_cast<unsigned>(port_), nullptr,
                          CLIENT_MULTI_STATEMENTS)) {
    const WideString reason = Reason(mysql_error(conn));
    mysql_close(conn);
    // Text() is the description, not the URI: that may hold a password.
    throw EmvQueryBuilderError(Description(), WideFormat(u"Cannot connect to the %s: %s", {ServerText(), reason}));
  }
  return conn;
}

bool TmvMariaDbConnection::Cancel() {
  unsigned long thread = 0;
  {
    std::lock_guard lock(handleMutex_);
    if (!conn_) return false;
    thread = threadId_;
  }
  try {
    MYSQL* killer = Connect();
    // Marked before the kill: the statement may end before KILL answers.
    cancelled_ = true;
    const std::string kill = "KILL QUERY " + std::to_string(thread);
    const bool done = mysql_real_query(killer, kill.data(), kill.size()) == 0;
    mysql_close(killer);
    if (!done) cancelled_ = false;
    return done;
  } catch (const EmvQueryBuilderError&) {
    return false;
  }
}

WideString TmvMariaDbConnection::ServerVersion() {
  if (!conn_) return {};
  const char* version = mysql_get_server_info(conn_);
  return version ? UTF8Decode(version) : WideString();
}

WideString TmvMariaDbConnection::Description() const {
  return WideFormat(u"MariaDB: %s:%d/%s", {host_, port_, database_});
}

TmvSQLParamScanOptions TmvMariaDbConnection::ParamScanOptions() const {
  TmvSQLParamScanOptions options;
  options.BackslashEscapes = true;
  options.HashComments = true;
  options.BracketIdentifiers = false;
  options.DollarQuotes = false;
  return options;
}

WideString TmvMariaDbConnection::ServerText() const {
  return WideFormat(u"MariaDB server %s:%d, database %s", {host_, port_, database_.empty() ? WideString(u"(none)") : database_});
}

void TmvMariaDbConnection::DoOpen() {
  MYSQL* conn = Connect();
  std::lock_guard lock(handleMutex_);
  conn_ = conn;
  threadId_ = mysql_thread_id(conn);
  cancelled_ = false;
}

void TmvMariaDbConnection::DoClose() { CloseHandle(); }

void TmvMariaDbConnection::CloseHandle() {
  std::lock_guard lock(handleMutex_);
  if (conn_) mysql_close(conn_);
  conn_ = nullptr;
  threadId_ = 0;
}

}  // namespace mv
