#include "metadata/dataset/OdbcConnection.h"

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <deque>
#include <string>
#include <vector>

#include "support/DateTime.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"

namespace mv {

namespace {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "ODBC's wide characters must be UTF-16 code units");

SQLWCHAR* Wide(const WideString& text) { return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text.c_str())); }

// The driver's diagnostic records of a handle, one after the other.
WideString Diagnostics(SQLSMALLINT type, SQLHANDLE handle) {
  WideString out;
  for (SQLSMALLINT record = 1;; ++record) {
    SQLWCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLWCHAR message[1024] = {};
    SQLSMALLINT length = 0;
    const SQLRETURN rc = SQLGetDiagRecW(type, handle, record, state, &native, message, 1024, &length);
    if (!SQL_SUCCEEDED(rc)) break;
    if (!out.empty()) out += u"; ";
    out += WideString(reinterpret_cast<const char16_t*>(message), static_cast<size_t>(std::min<SQLSMALLINT>(length, 1023)));
  }
  return out.empty() ? WideString(u"the driver gave no reason") : out;
}

// The column type of an ODBC SQL type.
TFieldType FieldTypeOf(SQLSMALLINT type) {
  switch (type) {
    case SQL_CHAR:
    case SQL_WCHAR: return ftFixedChar;
    case SQL_VARCHAR:
    case SQL_WVARCHAR: return ftWideString;
    case SQL_LONGVARCHAR:
    case SQL_WLONGVARCHAR: return ftMemo;
    case SQL_TINYINT:
    case SQL_SMALLINT: return ftSmallint;
    case SQL_INTEGER: return ftInteger;
    case SQL_BIGINT: return ftLargeint;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE: return ftFloat;
    case SQL_DECIMAL:
    case SQL_NUMERIC: return ftBCD;
    case SQL_BIT: return ftBoolean;
    case SQL_TYPE_DATE: return ftDate;
    case SQL_TYPE_TIME: return ftTime;
    case SQL_TYPE_TIMESTAMP: return ftDateTime;
    case SQL_BINARY:
    case SQL_VARBINARY: return ftVarBytes;
    case SQL_LONGVARBINARY: return ftBlob;
    case SQL_GUID: return ftGuid;
    default: return ftUnknown;
  }
}

// The connection string with the value of its password keys hidden.
WideString Masked(const WideString& connectionString) {
  WideString out;
  size_t start = 0;
  while (start <= connectionString.size()) {
    size_t end = connectionString.find(u';', start);
    if (end == WideString::npos) end = connectionString.size();
    WideString part = connectionString.substr(start, end - start);
    const size_t equal = part.find(u'=');
    if (equal != WideString::npos) {
      const WideString key = WideTrim(part.substr(0, equal));
      if (WideSameText(key, u"pwd") || WideSameText(key, u"password")) part = part.substr(0, equal + 1) + u"***";
    }
    if (!out.empty() || start > 0) out += u";";
    out += part;
    if (end == connectionString.size()) break;
    start = end + 1;
  }
  return out;
}

}  // namespace

// A query on a TmvOdbcConnection.
class TmvOdbcDataSet : public TmvDataSet {
 public:
  explicit TmvOdbcDataSet(TmvOdbcConnection* connection) : TmvDataSet(connection) {}
  ~TmvOdbcDataSet() override { FreeStatement(); }

 protected:
  void InternalPrepare(TmvFieldDefs& defs) override {
    FreeStatement();
    stmt_ = NewStatement();
    const WideString sql = Translate();
    Check(SQLPrepareW(stmt_, Wide(sql), static_cast<SQLINTEGER>(sql.size())));
    Describe(defs);
  }

  void InternalUnprepare() override { FreeStatement(); }

  void InternalOpen(TmvFieldDefs& defs) override {
    Run();
    // Some drivers describe a statement only once it has run.
    if (defs.Count() == 0) Describe(defs);
  }

  bool InternalFetch(TmvFields& fields) override {
    const SQLRETURN rc = SQLFetch(stmt_);
    if (rc == SQL_NO_DATA) return false;
    Check(rc);
    for (int i = 0; i < fields.Count(); ++i) fields[i].SetData(Value(static_cast<SQLUSMALLINT>(i + 1), i));
    return true;
  }

  void InternalRewind() override {
    SQLFreeStmt(stmt_, SQL_CLOSE);
    Run();
  }

  void InternalClose() override {
    if (stmt_) SQLFreeStmt(stmt_, SQL_CLOSE);
  }

  int64_t InternalExecute() override {
    FreeStatement();
    stmt_ = NewStatement();
    const WideString sql = Translate();
    Bind();
    Connection().SetRunning(stmt_);
    const SQLRETURN rc = SQLExecDirectW(stmt_, Wide(sql), static_cast<SQLINTEGER>(sql.size()));
    Connection().SetRunning(nullptr);
    if (rc != SQL_NO_DATA) Check(rc);
    SQLLEN rows = -1;
    SQLRowCount(stmt_, &rows);
    FreeStatement();
    return rows;
  }

 private:
  TmvOdbcConnection& Connection() { return static_cast<TmvOdbcConnection&>(RequireConnection()); }

  SQLHSTMT NewStatement() {
    SQLHSTMT stmt = nullptr;
    auto* dbc = static_cast<SQLHDBC>(Connection().Handle());
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, dbc, &stmt)))
      RaiseError(u"Cannot make a statement on " + Connection().Description() + u": " + Diagnostics(SQL_HANDLE_DBC, dbc));
    return stmt;
  }

  void FreeStatement() {
    if (!stmt_) return;
    SQLFreeHandle(SQL_HANDLE_STMT, stmt_);
    stmt_ = nullptr;
  }

  void Check(SQLRETURN rc) {
    if (SQL_SUCCEEDED(rc)) return;
    RaiseError(Connection().Description() + u": " + Diagnostics(SQL_HANDLE_STMT, stmt_));
  }

  // The command with `:name` placeholders made `?`; remembers the names.
  WideString Translate() {
    paramNames_.clear();
    if (!ParamCheck()) return CommandText();
    TmvTranslatedSQL translated =
        TranslateSQLParams(CommandText(), TmvParamMarker::pmQuestion, RequireConnection().ParamScanOptions());
    paramNames_ = std::move(translated.Names);
    return std::move(translated.Text);
  }

  void Describe(TmvFieldDefs& defs) {
    SQLSMALLINT count = 0;
    Check(SQLNumResultCols(stmt_, &count));
    types_.assign(static_cast<size_t>(count), SQL_UNKNOWN_TYPE);
    for (SQLUSMALLINT column = 1; column <= count; ++column) {
      SQLWCHAR name[512] = {};
      SQLSMALLINT nameLength = 0, type = 0, digits = 0, nullable = SQL_NULLABLE_UNKNOWN;
      SQLULEN size = 0;
      Check(SQLDescribeColW(stmt_, column, name, 512, &nameLength, &type, &size, &digits, &nullable));
      TmvFieldDef def;
      def.Name = WideString(reinterpret_cast<const char16_t*>(name), static_cast<size_t>(std::min<SQLSMALLINT>(nameLength, 511)));
      def.DataType = FieldTypeOf(type);
      if (def.DataType == ftBCD) {
        def.Precision = static_cast<int>(size);
        def.Scale = digits;
      } else if (def.DataType == ftFixedChar || def.DataType == ftWideString || def.DataType == ftVarBytes) {
        def.Size = static_cast<int>(std::min<SQLULEN>(size, 0x7fffffff));
      }
      if (nullable == SQL_NO_NULLS) def.Attributes |= faRequired;
      SQLWCHAR typeName[128] = {};
      SQLSMALLINT typeLength = 0;
      if (SQL_SUCCEEDED(SQLColAttributeW(stmt_, column, SQL_DESC_TYPE_NAME, typeName, sizeof typeName, &typeLength, nullptr)))
        def.TypeName = WideString(reinterpret_cast<const char16_t*>(typeName),
                                  std::min<size_t>(static_cast<size_t>(typeLength) / sizeof(SQLWCHAR), 127));
      types_[column - 1] = type;
      defs.Add(def);
    }
  }

  // Binds every placeholder to its parameter's value; the buffers live until
  // the next binding.
  void Bind() {
    SQLFreeStmt(stmt_, SQL_RESET_PARAMS);
    buffers_.clear();
    for (size_t i = 0; i < paramNames_.size(); ++i) {
      const TmvParam& param = BoundParam(paramNames_[i]);
      const TmvVariant& value = param.Value();
      Buffer& b = buffers_.emplace_back();
      const auto number = static_cast<SQLUSMALLINT>(i + 1);
      SQLRETURN rc = SQL_SUCCESS;
      switch (value.VarType()) {
        case TmvVarType::vtEmpty:
        case TmvVarType::vtNull:
          b.indicator = SQL_NULL_DATA;
          rc = SQLBindParameter(stmt_, number, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR, 1, 0, nullptr, 0, &b.indicator);
          break;
        case TmvVarType::vtBoolean:
        case TmvVarType::vtInteger:
          b.integer = value.AsInt64();
          rc = SQLBindParameter(stmt_, number, SQL_PARAM_INPUT, SQL_C_SBIGINT, SQL_BIGINT, 0, 0, &b.integer, 0, nullptr);
          break;
        case TmvVarType::vtFloat:
          b.real = value.AsFloat();
          rc = SQLBindParameter(stmt_, number, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DOUBLE, 0, 0, &b.real, 0, nullptr);
          break;
        case TmvVarType::vtDateTime:
        case TmvVarType::vtString:
          if (value.VarType() == TmvVarType::vtString && IsBinaryFieldType(param.DataType())) {
            b.bytes = WideToBytes(value.AsWideString());
            b.indicator = static_cast<SQLLEN>(b.bytes.size());
            rc = SQLBindParameter(stmt_, number, SQL_PARAM_INPUT, SQL_C_BINARY, SQL_VARBINARY,
                                  std::max<SQLULEN>(1, b.bytes.size()), 0, b.bytes.data(), b.indicator, &b.indicator);
          } else {
            b.text = value.VarType() == TmvVarType::vtDateTime ? DateTimeToSQLText(value.AsDateTime()) : value.AsWideString();
            b.indicator = static_cast<SQLLEN>(b.text.size() * sizeof(SQLWCHAR));
            rc = SQLBindParameter(stmt_, number, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR,
                                  std::max<SQLULEN>(1, b.text.size()), 0, Wide(b.text), b.indicator, &b.indicator);
          }
          break;
        case TmvVarType::vtArray:
          RaiseError(u"Parameter '" + param.Name() + u"' holds an array, which cannot be bound");
      }
      Check(rc);
    }
  }

  void Run() {
    Bind();
    Connection().SetRunning(stmt_);
    const SQLRETURN rc = SQLExecute(stmt_);
    Connection().SetRunning(nullptr);
    if (rc != SQL_NO_DATA) Check(rc);
  }

  // The value of a column of the current row, read in the C type of its SQL type.
  TmvVariant Value(SQLUSMALLINT column, int index) {
    SQLLEN indicator = 0;
    switch (types_[static_cast<size_t>(index)]) {
      case SQL_TINYINT:
      case SQL_SMALLINT:
      case SQL_INTEGER:
      case SQL_BIGINT: {
        SQLBIGINT value = 0;
        Check(SQLGetData(stmt_, column, SQL_C_SBIGINT, &value, 0, &indicator));
        return indicator == SQL_NULL_DATA ? TmvVariant::Null() : TmvVariant(static_cast<int64_t>(value));
      }
      case SQL_BIT: {
        unsigned char value = 0;
        Check(SQLGetData(stmt_, column, SQL_C_BIT, &value, 0, &indicator));
        return indicator == SQL_NULL_DATA ? TmvVariant::Null() : TmvVariant(value != 0);
      }
      case SQL_REAL:
      case SQL_FLOAT:
      case SQL_DOUBLE:
      case SQL_DECIMAL:
      case SQL_NUMERIC: {
        double value = 0;
        Check(SQLGetData(stmt_, column, SQL_C_DOUBLE, &value, 0, &indicator));
        return indicator == SQL_NULL_DATA ? TmvVariant::Null() : TmvVariant(value);
      }
      case SQL_TYPE_DATE:
      case SQL_TYPE_TIME:
      case SQL_TYPE_TIMESTAMP: {
        SQL_TIMESTAMP_STRUCT t = {};
        Check(SQLGetData(stmt_, column, SQL_C_TYPE_TIMESTAMP, &t, sizeof t, &indicator));
        if (indicator == SQL_NULL_DATA) return TmvVariant::Null();
        TmvDateTime date, time;
        if (!TryEncodeDate(t.year, t.month, t.day, date)) date = TmvDateTime();
        if (!TryEncodeTime(t.hour, t.minute, t.second, static_cast<int>(t.fraction / 1000000), time)) time = TmvDateTime();
        return TmvVariant(TmvDateTime{date.value + time.value});
      }
      case SQL_BINARY:
      case SQL_VARBINARY:
      case SQL_LONGVARBINARY: {
        std::string bytes;
        return ReadChunks(column, SQL_C_BINARY, bytes) ? TmvVariant(BytesToWide(bytes)) : TmvVariant::Null();
      }
      default: {
        std::string units;
        if (!ReadChunks(column, SQL_C_WCHAR, units)) return TmvVariant::Null();
        return TmvVariant(WideString(reinterpret_cast<const char16_t*>(units.data()), units.size() / sizeof(char16_t)));
      }
    }
  }

  // A long value in pieces; false for NULL. Wide text comes with a closing
  // zero in each piece, which is left out.
  bool ReadChunks(SQLUSMALLINT column, SQLSMALLINT cType, std::string& out) {
    char buffer[8192];
    const size_t terminator = cType == SQL_C_WCHAR ? sizeof(SQLWCHAR) : 0;
    for (;;) {
      SQLLEN indicator = 0;
      const SQLRETURN rc = SQLGetData(stmt_, column, cType, buffer, sizeof buffer, &indicator);
      if (rc == SQL_NO_DATA) return true;
      Check(rc);
      if (indicator == SQL_NULL_DATA) return false;
      const bool whole = rc == SQL_SUCCESS;
      size_t got = indicator == SQL_NO_TOTAL || static_cast<size_t>(indicator) > sizeof buffer - terminator
                       ? sizeof buffer - terminator
                       : static_cast<size_t>(indicator);
      if (!whole) got = sizeof buffer - terminator;
      out.append(buffer, got);
      if (whole) return true;
    }
  }

  struct Buffer {
    SQLLEN indicator = 0;
    SQLBIGINT integer = 0;
    double real = 0;
    WideString text;
    std::string bytes;
  };

  SQLHSTMT stmt_ = nullptr;
  std::vector<WideString> paramNames_;
  std::vector<SQLSMALLINT> types_;
  // A deque: bound buffers keep their places as more are added.
  std::deque<Buffer> buffers_;
};

TmvOdbcConnection::TmvOdbcConnection(WideString connectionString) : connectionString_(std::move(connectionString)) {}

TmvOdbcConnection::~TmvOdbcConnection() {
  CloseDataSets();
  CloseHandles();
}

std::unique_ptr<TmvDataSet> TmvOdbcConnection::CreateQuery() { return std::make_unique<TmvOdbcDataSet>(this); }

std::unique_ptr<TmvConnection> TmvOdbcConnection::CloneClosed() const {
  auto clone = std::make_unique<TmvOdbcConnection>(connectionString_);
  clone->loginTimeout_ = loginTimeout_;
  return clone;
}

bool TmvOdbcConnection::Cancel() {
  std::lock_guard<std::mutex> lock(runningMutex_);
  return running_ && SQL_SUCCEEDED(SQLCancel(static_cast<SQLHSTMT>(running_)));
}

void TmvOdbcConnection::SetRunning(void* statement) {
  std::lock_guard<std::mutex> lock(runningMutex_);
  running_ = statement;
}

WideString TmvOdbcConnection::ServerVersion() {
  if (!dbc_) return {};
  auto info = [this](SQLUSMALLINT what) {
    SQLWCHAR text[256] = {};
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(SQLGetInfoW(static_cast<SQLHDBC>(dbc_), what, text, sizeof text, &length))) return WideString();
    return WideString(reinterpret_cast<const char16_t*>(text),
                      std::min<size_t>(static_cast<size_t>(length) / sizeof(SQLWCHAR), 255));
  };
  return WideTrim(info(SQL_DBMS_NAME) + u" " + info(SQL_DBMS_VER));
}

WideString TmvOdbcConnection::Description() const { return u"ODBC: " + Masked(connectionString_); }

void TmvOdbcConnection::DoOpen() {
  SQLHENV env = nullptr;
  SQLHDBC dbc = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env)))
    throw EmvQueryBuilderError(u"Cannot connect to " + Description() + u": the ODBC driver manager is not available");
  env_ = env;
  SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc))) {
    const WideString reason = Diagnostics(SQL_HANDLE_ENV, env);
    CloseHandles();
    throw EmvQueryBuilderError(u"Cannot connect to " + Description() + u": " + reason);
  }
  dbc_ = dbc;
  SQLSetConnectAttr(dbc, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(static_cast<intptr_t>(loginTimeout_)), 0);
  const SQLRETURN rc = SQLDriverConnectW(dbc, nullptr, Wide(connectionString_),
                                         static_cast<SQLSMALLINT>(connectionString_.size()), nullptr, 0, nullptr,
                                         SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(rc)) {
    const WideString reason = Diagnostics(SQL_HANDLE_DBC, dbc);
    CloseHandles();
    throw EmvQueryBuilderError(u"Cannot connect to " + Description() + u": " + reason);
  }
}

void TmvOdbcConnection::DoClose() { CloseHandles(); }

void TmvOdbcConnection::CloseHandles() {
  if (dbc_) {
    SQLDisconnect(static_cast<SQLHDBC>(dbc_));
    SQLFreeHandle(SQL_HANDLE_DBC, static_cast<SQLHDBC>(dbc_));
    dbc_ = nullptr;
  }
  if (env_) {
    SQLFreeHandle(SQL_HANDLE_ENV, static_cast<SQLHENV>(env_));
    env_ = nullptr;
  }
}

}  // namespace mv
