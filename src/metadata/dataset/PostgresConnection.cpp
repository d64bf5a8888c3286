#include "metadata/dataset/PostgresConnection.h"

#include <libpq-fe.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/DateTime.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

using ResultPtr = std::unique_ptr<PGresult, void (*)(PGresult*)>;

ResultPtr Wrap(PGresult* result) { return ResultPtr(result, PQclear); }

// libpq's messages end in a line feed and continue on indented lines.
WideString OneLine(const char* message) {
  std::string text = message ? message : "";
  std::string out;
  for (char c : text) {
    if (c == '\n' || c == '\t' || c == '\r') {
      if (!out.empty() && out.back() != ' ') out += ' ';
    } else {
      out += c;
    }
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return UTF8Decode(out);
}

// The reason of a failed result: the server's primary message (with its
// detail) when there is one, else libpq's text.
WideString ResultError(const PGresult* result, pg_conn* conn) {
  if (result) {
    if (const char* primary = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY)) {
      WideString text = OneLine(primary);
      if (const char* detail = PQresultErrorField(result, PG_DIAG_MESSAGE_DETAIL)) text += u" (" + OneLine(detail) + u")";
      return text;
    }
    const char* message = PQresultErrorMessage(result);
    if (message && *message) return OneLine(message);
  }
  return OneLine(conn ? PQerrorMessage(conn) : "no connection");
}

bool Succeeded(const PGresult* result) {
  if (!result) return false;
  const ExecStatusType status = PQresultStatus(result);
  return status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK || status == PGRES_EMPTY_QUERY;
}

// Built-in type oids and what they become.
struct TPgType {
  TFieldType DataType;
  const char16_t* Name;
};

const std::map<Oid, TPgType>& BuiltinTypes() {
  static const std::map<Oid, TPgType> types = {
      {16, {ftBoolean, u"bool"}},         {17, {ftBlob, u"bytea"}},
      {18, {ftFixedChar, u"char"}},       {19, {ftWideString, u"name"}},
      {20, {ftLargeint, u"int8"}},        {21, {ftSmallint, u"int2"}},
      {23, {ftInteger, u"int4"}},         {25, {ftMemo, u"text"}},
      {26, {ftLargeint, u"oid"}},         {114, {ftMemo, u"json"}},
      {142, {ftMemo, u"xml"}},            {700, {ftFloat, u"float4"}},
      {701, {ftFloat, u"float8"}},        {790, {ftCurrency, u"money"}},
      {1042, {ftFixedChar, u"bpchar"}},   {1043, {ftWideString, u"varchar"}},
      {1082, {ftDate, u"date"}},          {1083, {ftTime, u"time"}},
      {1114, {ftDateTime, u"timestamp"}}, {1184, {ftDateTime, u"timestamptz"}},
      {1186, {ftWideString, u"interval"}}, {1266, {ftTime, u"timetz"}},
      {1560, {ftWideString, u"bit"}},     {1562, {ftWideString, u"varbit"}},
      {1700, {ftBCD, u"numeric"}},        {2950, {ftGuid, u"uuid"}},
      {3802, {ftMemo, u"jsonb"}},
  };
  return types;
}

// Size, precision and scale from a column's type modifier.
void ApplyTypeModifier(TmvFieldDef& def, Oid type, int modifier) {
  if (modifier < 0) return;
  switch (type) {
    case 1042:
    case 1043: def.Size = modifier - 4; break;  // VARHDRSZ
    case 1560:
    case 1562: def.Size = modifier; break;
    case 1700:
      def.Precision = ((modifier - 4) >> 16) & 0xffff;
      def.Scale = (modifier - 4) & 0xffff;
      break;
    default: break;
  }
}

bool ParseInt(std::string_view text, size_t& pos, int digits, int& value) {
  if (pos + static_cast<size_t>(digits) > text.size()) return false;
  value = 0;
  for (int i = 0; i < digits; ++i) {
    const char c = text[pos++];
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  return true;
}

// "yyyy-mm-dd" at `pos`.
bool ParseDate(std::string_view text, size_t& pos, TmvDateTime& date) {
  int year = 0, month = 0, day = 0;
  if (!ParseInt(text, pos, 4, year) || pos >= text.size() || text[pos++] != '-' || !ParseInt(text, pos, 2, month) ||
      pos >= text.size() || text[pos++] != '-' || !ParseInt(text, pos, 2, day))
    return false;
  return TryEncodeDate(year, month, day, date);
}

// "hh:mm:ss[.ffffff]" at `pos`; a zone after it is left where it is.
bool ParseTime(std::string_view text, size_t& pos, TmvDateTime& time) {
  int hour = 0, minute = 0, second = 0;
  if (!ParseInt(text, pos, 2, hour) || pos >= text.size() || text[pos++] != ':' || !ParseInt(text, pos, 2, minute) ||
      pos >= text.size() || text[pos++] != ':' || !ParseInt(text, pos, 2, second))
    return false;
  double fraction = 0;
  if (pos < text.size() && text[pos] == '.') {
    double scale = 0.1;
    for (++pos; pos < text.size() && text[pos] >= '0' && text[pos] <= '9'; ++pos, scale /= 10)
      fraction += (text[pos] - '0') * scale;
  }
  int ms = static_cast<int>(std::lround(fraction * 1000));
  if (ms > 999) ms = 999;
  return TryEncodeTime(hour, minute, second, ms, time);
}

// A value of a date or time column in the server's ISO output; text when it
// is none that TmvDateTime holds (infinity, BC, a year past 9999).
TmvVariant DateTimeValue(TFieldType type, std::string_view text) {
  size_t pos = 0;
  TmvDateTime date, time;
  bool ok = false;
  if (type == ftDate) {
    ok = ParseDate(text, pos, date) && pos == text.size();
    if (ok) return TmvVariant(date);
  } else if (type == ftTime) {
    ok = ParseTime(text, pos, time);
    if (ok) return TmvVariant(time);
  } else {
    ok = ParseDate(text, pos, date) && pos < text.size() && text[pos++] == ' ' && ParseTime(text, pos, time);
    if (ok) return TmvVariant(ComposeDateTime(date, time));
  }
  return TmvVariant(UTF8Decode(text));
}

// bytea in the hex output form ("\x4142").
WideString ByteaValue(std::string_view text) {
  if (text.size() < 2 || text[0] != '\\' || text[1] != 'x') return BytesToWide(text);
  auto nibble = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
  std::string bytes;
  for (size_t i = 2; i + 1 < text.size(); i += 2)
    bytes += static_cast<char>((nibble(text[i]) << 4) | nibble(text[i + 1]));
  return BytesToWide(bytes);
}

TmvVariant CellValue(TFieldType type, std::string_view text) {
  switch (type) {
    case ftBoolean: return TmvVariant(text == "t");
    case ftSmallint:
    case ftInteger:
    case ftLargeint: {
      errno = 0;
      char* end = nullptr;
      const std::string copy(text);
      const long long value = std::strtoll(copy.c_str(), &end, 10);
      if (errno == 0 && end && *end == '\0') return TmvVariant(static_cast<int64_t>(value));
      return TmvVariant(UTF8Decode(text));
    }
    case ftFloat:
    case ftBCD: {
      const std::string copy(text);
      char* end = nullptr;
      const double value = std::strtod(copy.c_str(), &end);
      if (end && *end == '\0' && !copy.empty()) return TmvVariant(value);
      return TmvVariant(UTF8Decode(text));
    }
    case ftDate:
    case ftTime:
    case ftDateTime: return DateTimeValue(type, text);
    case ftBlob: return TmvVariant(ByteaValue(text));
    default: return TmvVariant(UTF8Decode(text));
  }
}

// The text a parameter value is sent as (the server's input forms).
std::string ParamText(const TmvVariant& value) {
  switch (value.VarType()) {
    case TmvVarType::vtBoolean: return value.AsBoolean() ? "true" : "false";
    case TmvVarType::vtInteger: return std::to_string(value.AsInt64());
    case TmvVarType::vtFloat: {
      char buffer[40];
      std::snprintf(buffer, sizeof buffer, "%.17g", value.AsFloat());
      return buffer;
    }
    case TmvVarType::vtDateTime: return UTF8Encode(DateTimeToSQLText(value.AsDateTime()));
    default: return UTF8Encode(value.AsWideString());
  }
}

std::string Quoted(WideStringView name) {
  std::string out = "\"";
  for (char c : UTF8Encode(name)) {
    out += c;
    if (c == '"') out += c;
  }
  return out + "\"";
}

}  // namespace

// A query on a TmvPostgresConnection: a statement prepared under its own
// name, and the whole result of its last run.
class TmvPostgresDataSet : public TmvDataSet {
 public:
  explicit TmvPostgresDataSet(TmvPostgresConnection* connection) : TmvDataSet(connection) {}
  // The statement goes from the server too: a connection that lives long
  // and makes many datasets keeps no statements of freed ones.
  ~TmvPostgresDataSet() override { ReleaseStatement(); }

 protected:
  void InternalPrepare(TmvFieldDefs& defs) override {
    TmvPostgresConnection& connection = Server();
    pg_conn* conn = connection.Handle();
    const WideString text = Translate();
    const WideString name = connection.NewStatementName();
    ResultPtr prepared = Wrap(PQprepare(conn, UTF8Encode(name).c_str(), UTF8Encode(text).c_str(),
                                        static_cast<int>(paramNames_.size()), nullptr));
    if (!Succeeded(prepared.get())) Fail(prepared.get());
    statementName_ = name;
    ResultPtr described = Wrap(PQdescribePrepared(conn, UTF8Encode(name).c_str()));
    if (!Succeeded(described.get())) {
      const WideString reason = ResultError(described.get(), conn);
      InternalUnprepare();
      RaiseError(WideFormat(u"%s: %s", {connection.ServerText(), reason}));
    }
    if (PQnparams(described.get()) != static_cast<int>(paramNames_.size()))
      RaiseError(WideFormat(u"%s: the statement has %d parameters, the command text %d",
                            {connection.ServerText(), PQnparams(described.get()),
                             static_cast<int>(paramNames_.size())}));
    Describe(conn, described.get(), defs);
  }

  void InternalUnprepare() override { ReleaseStatement(); }

  void InternalOpen(TmvFieldDefs&) override {
    result_ = Run(true);
    row_ = -1;
  }

  bool InternalFetch(TmvFields& fields) override {
    if (!result_ || row_ + 1 >= PQntuples(result_.get())) return false;
    ++row_;
    for (int i = 0; i < fields.Count(); ++i) {
      if (PQgetisnull(result_.get(), row_, i)) {
        fields[i].SetData(TmvVariant::Null());
        continue;
      }
      const std::string_view text(PQgetvalue(result_.get(), row_, i),
                                  static_cast<size_t>(PQgetlength(result_.get(), row_, i)));
      fields[i].SetData(CellValue(fields[i].DataType(), text));
    }
    return true;
  }

  void InternalRewind() override { row_ = -1; }

  void InternalClose() override {
    result_.reset();
    row_ = -1;
  }

  int64_t InternalExecute() override {
    TmvPostgresConnection& connection = Server();
    pg_conn* conn = connection.Handle();
    const WideString text = Translate();
    ResultPtr result(nullptr, PQclear);
    if (paramNames_.empty()) {
      // Several statements may stand in one text; the last result tells.
      if (!PQsendQuery(conn, UTF8Encode(text).c_str())) Fail(nullptr);
      for (PGresult* next; (next = PQgetResult(conn)) != nullptr;) {
        ResultPtr current = Wrap(next);
        if (!Succeeded(current.get())) {
          const WideString message = ResultError(current.get(), conn);
          while (PGresult* rest = PQgetResult(conn)) PQclear(rest);
          RaiseError(WideFormat(u"%s: %s", {connection.ServerText(), message}));
        }
        result = std::move(current);
      }
    } else {
      std::vector<std::string> values;
      std::vector<const char*> pointers;
      std::vector<int> lengths, formats;
      BindValues(values, pointers, lengths, formats);
      result = Wrap(PQexecParams(conn, UTF8Encode(text).c_str(), static_cast<int>(pointers.size()), nullptr,
                                 pointers.data(), lengths.data(), formats.data(), 0));
      if (!Succeeded(result.get())) Fail(result.get());
    }
    const char* tuples = result ? PQcmdTuples(result.get()) : "";
    return tuples && *tuples ? std::strtoll(tuples, nullptr, 10) : -1;
  }

 private:
  TmvPostgresConnection& Server() { return static_cast<TmvPostgresConnection&>(RequireConnection()); }

  // Frees the result and the prepared statement (on the server while the
  // connection is open).
  void ReleaseStatement() noexcept {
    result_.reset();
    if (statementName_.empty()) return;
    TmvConnection* connection = Connection();
    if (connection && connection->Connected()) {
      if (pg_conn* conn = static_cast<TmvPostgresConnection*>(connection)->Handle())
        PQclear(PQexec(conn, ("DEALLOCATE " + Quoted(statementName_)).c_str()));
    }
    statementName_.clear();
  }

  // The command with `:name` placeholders made `$n`; remembers the names.
  WideString Translate() {
    paramNames_.clear();
    if (!ParamCheck()) return CommandText();
    TmvTranslatedSQL translated =
        TranslateSQLParams(CommandText(), TmvParamMarker::pmDollar, Connection()->ParamScanOptions());
    paramNames_ = std::move(translated.Names);
    return std::move(translated.Text);
  }

  void BindValues(std::vector<std::string>& values, std::vector<const char*>& pointers, std::vector<int>& lengths,
                  std::vector<int>& formats) const {
    values.reserve(paramNames_.size());
    for (const WideString& name : paramNames_) {
      const TmvParam& param = BoundParam(name);
      const TmvVariant& value = param.Value();
      if (value.VarType() == TmvVarType::vtArray)
        RaiseError(WideFormat(u"Parameter '%s' holds an array, which cannot be bound", {param.Name()}));
      const bool binary = value.VarType() == TmvVarType::vtString && IsBinaryFieldType(param.DataType());
      values.push_back(value.IsClear() ? std::string() : binary ? WideToBytes(value.AsWideString()) : ParamText(value));
      formats.push_back(binary ? 1 : 0);
      lengths.push_back(static_cast<int>(values.back().size()));
    }
    for (size_t i = 0; i < paramNames_.size(); ++i)
      pointers.push_back(BoundParam(paramNames_[i]).Value().IsClear() ? nullptr : values[i].c_str());
  }

  ResultPtr Run(bool rows) {
    pg_conn* conn = Server().Handle();
    std::vector<std::string> values;
    std::vector<const char*> pointers;
    std::vector<int> lengths, formats;
    BindValues(values, pointers, lengths, formats);
    ResultPtr result = Wrap(PQexecPrepared(conn, UTF8Encode(statementName_).c_str(), static_cast<int>(pointers.size()),
                                           pointers.data(), lengths.data(), formats.data(), 0));
    if (!Succeeded(result.get()) || (rows && PQresultStatus(result.get()) == PGRES_EMPTY_QUERY)) Fail(result.get());
    return result;
  }

  // The columns of a described statement; type names and NOT NULL of table
  // columns come from the catalog, asked once for all of them.
  void Describe(pg_conn* conn, const PGresult* described, TmvFieldDefs& defs) {
    const int count = PQnfields(described);
    if (count == 0) return;
    std::string values;
    for (int i = 0; i < count; ++i) {
      TmvFieldDef def;
      def.Name = UTF8Decode(PQfname(described, i));
      const Oid type = PQftype(described, i);
      const auto known = BuiltinTypes().find(type);
      def.DataType = known != BuiltinTypes().end() ? known->second.DataType : ftWideString;
      if (known != BuiltinTypes().end()) def.TypeName = known->second.Name;
      ApplyTypeModifier(def, type, PQfmod(described, i));
      if (type == 18) def.Size = 1;
      if (PQftable(described, i) == InvalidOid) def.Attributes |= faReadonly;
      defs.Add(std::move(def));
      if (!values.empty()) values += ',';
      values += "(" + std::to_string(i) + "," + std::to_string(type) + "::oid," +
                std::to_string(PQftable(described, i)) + "::oid," + std::to_string(PQftablecol(described, i)) + ")";
    }
    const std::string sql =
        "select c.i, t.typname, coalesce(a.attnotnull, false) from (values " + values +
        ") c(i, t, r, n) left join pg_catalog.pg_type t on t.oid = c.t left join pg_catalog.pg_attribute a on "
        "a.attrelid = c.r and a.attnum = c.n";
    ResultPtr result = Wrap(PQexec(conn, sql.c_str()));
    if (!Succeeded(result.get())) return;  // the descriptions stay as the types tell them
    for (int row = 0; row < PQntuples(result.get()); ++row) {
      const int i = std::atoi(PQgetvalue(result.get(), row, 0));
      if (i < 0 || i >= defs.Count()) continue;
      TmvFieldDef& def = defs.Edit(i);
      if (!PQgetisnull(result.get(), row, 1)) def.TypeName = UTF8Decode(PQgetvalue(result.get(), row, 1));
      if (std::string_view(PQgetvalue(result.get(), row, 2)) == "t") def.Attributes |= faRequired;
    }
  }

  [[noreturn]] void Fail(const PGresult* result) {
    TmvPostgresConnection& connection = Server();
    RaiseError(WideFormat(u"%s: %s", {connection.ServerText(), ResultError(result, connection.Handle())}));
  }

  WideString statementName_;
  std::vector<WideString> paramNames_;
  ResultPtr result_{nullptr, PQclear};
  int row_ = -1;
};

TmvPostgresConnection::TmvPostgresConnection(WideString connectionString)
    : connectionString_(std::move(connectionString)) {
  // What the string names, else libpq's defaults (environment included).
  std::map<std::string, std::string> values;
  if (PQconninfoOption* defaults = PQconndefaults()) {
    for (PQconninfoOption* option = defaults; option->keyword; ++option)
      if (option->val) values[option->keyword] = option->val;
    PQconninfoFree(defaults);
  }
  if (PQconninfoOption* given = PQconninfoParse(UTF8Encode(connectionString_).c_str(), nullptr)) {
    for (PQconninfoOption* option = given; option->keyword; ++option)
      if (option->val && *option->val) values[option->keyword] = option->val;
    PQconninfoFree(given);
  }
  host_ = UTF8Decode(values.count("hostaddr") && !values.count("host") ? values["hostaddr"] : values["host"]);
  if (host_.empty()) host_ = u"localhost";
  port_ = UTF8Decode(values["port"].empty() ? std::string("5432") : values["port"]);
  database_ = UTF8Decode(values["dbname"].empty() ? values["user"] : values["dbname"]);
}

TmvPostgresConnection::~TmvPostgresConnection() {
  CloseDataSets();
  CloseHandle();
}

std::unique_ptr<TmvDataSet> TmvPostgresConnection::CreateQuery() { return std::make_unique<TmvPostgresDataSet>(this); }

std::unique_ptr<TmvConnection> TmvPostgresConnection::CloneClosed() const {
  auto copy = std::make_unique<TmvPostgresConnection>(connectionString_);
  copy->connectTimeout_ = connectTimeout_;
  return copy;
}

bool TmvPostgresConnection::Cancel() {
  std::lock_guard lock(handleMutex_);
  if (!cancel_) return false;
  char message[256];
  return PQcancel(cancel_, message, sizeof message) == 1;
}

WideString TmvPostgresConnection::ServerVersion() {
  if (!conn_) return {};
  const char* version = PQparameterStatus(conn_, "server_version");
  return version ? UTF8Decode(version) : WideString();
}

WideString TmvPostgresConnection::Description() const {
  return u"PostgreSQL: " + host_ + u":" + port_ + u"/" + database_;
}

TmvSQLParamScanOptions TmvPostgresConnection::ParamScanOptions() const {
  TmvSQLParamScanOptions options;
  options.BracketIdentifiers = false;
  return options;
}

WideString TmvPostgresConnection::ServerText() const {
  return WideFormat(u"PostgreSQL server %s:%s, database %s", {host_, port_, database_});
}

WideString TmvPostgresConnection::NewStatementName() { return WideFormat(u"mv_stmt_%d", {++statementCounter_}); }

void TmvPostgresConnection::DoOpen() {
  // The string is expanded in place of dbname: what it says wins over the
  // timeout before it, and UTF-8 after it wins over what it says.
  const std::string timeout = std::to_string(connectTimeout_);
  const std::string conninfo = UTF8Encode(connectionString_);
  const char* keywords[] = {"connect_timeout", "fallback_application_name", "dbname", "client_encoding", nullptr};
  const char* values[] = {timeout.c_str(), "mvsql", conninfo.c_str(), "UTF8", nullptr};
  pg_conn* conn = PQconnectdbParams(keywords, values, 1);
  if (!conn || PQstatus(conn) != CONNECTION_OK) {
    const WideString reason = conn ? OneLine(PQerrorMessage(conn)) : WideString(u"out of memory");
    PQfinish(conn);
    // Text() is the description, not the string: that may hold a password.
    throw EmvQueryBuilderError(Description(), WideFormat(u"Cannot connect to the %s: %s", {ServerText(), reason}));
  }
  // Notices (e.g. of DEALLOCATE) are not errors; keep them off stderr.
  PQsetNoticeProcessor(conn, [](void*, const char*) {}, nullptr);
  std::lock_guard lock(handleMutex_);
  conn_ = conn;
  cancel_ = PQgetCancel(conn);
}

void TmvPostgresConnection::DoClose() { CloseHandle(); }

void TmvPostgresConnection::CloseHandle() {
  std::lock_guard lock(handleMutex_);
  if (cancel_) PQfreeCancel(cancel_);
  cancel_ = nullptr;
  if (conn_) PQfinish(conn_);
  conn_ = nullptr;
}

}  // namespace mv
