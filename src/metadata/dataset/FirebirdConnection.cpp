#include "metadata/dataset/FirebirdConnection.h"

#include <ibase.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "support/DateTime.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

static_assert(std::is_same_v<isc_db_handle, unsigned int>, "the header keeps the attachment as an unsigned int");

namespace {

// The lines of a status vector joined by "; ".
WideString StatusText(const ISC_STATUS* status) {
  std::string out;
  char line[1024];
  const ISC_STATUS* cursor = status;
  while (fb_interpret(line, sizeof line, &cursor) > 0)
    if (*line) out += (out.empty() ? "" : "; ") + std::string(line);
  return UTF8Decode(out.empty() ? "unknown error" : out);
}

bool WasCancelled(const ISC_STATUS* status) {
  for (const ISC_STATUS* p = status; *p != isc_arg_end; p += 2)
    if (p[0] == isc_arg_gds && p[1] == isc_cancelled) return true;
  return false;
}

// A database parameter block.
class TDpb {
 public:
  TDpb() : bytes_(1, static_cast<char>(isc_dpb_version1)) {}
  void Text(char tag, const std::string& value) {
    bytes_ += tag;
    bytes_ += static_cast<char>(std::min<size_t>(value.size(), 255));
    bytes_.append(value, 0, std::min<size_t>(value.size(), 255));
  }
  void Number(char tag, int value) {
    bytes_ += tag;
    bytes_ += static_cast<char>(4);
    for (int i = 0; i < 4; ++i) bytes_ += static_cast<char>((value >> (8 * i)) & 0xff);
  }
  short Length() const { return static_cast<short>(bytes_.size()); }
  const char* Data() const { return bytes_.data(); }

 private:
  std::string bytes_;
};

// Read committed, reading the last committed version, and a lock conflict
// is an error at once rather than a wait.
const char kTpb[] = {isc_tpb_version3, isc_tpb_write, isc_tpb_read_committed, isc_tpb_rec_version, isc_tpb_nowait};

constexpr short kCharsetOctets = 1;
constexpr short kCharsetUnicodeFss = 3;
constexpr short kCharsetUtf8 = 4;

int BytesPerChar(short charset) {
  switch (charset & 0xff) {
    case kCharsetUnicodeFss: return 3;
    case kCharsetUtf8: return 4;
    default: return 1;
  }
}

bool IsOctets(const XSQLVAR& var) { return (var.sqlsubtype & 0xff) == kCharsetOctets; }

// What a column of the server becomes, and the type name it is shown with.
struct TColumnKind {
  TFieldType DataType;
  const char16_t* Name;
};

TColumnKind KindOf(const XSQLVAR& var) {
  const bool scaled = var.sqlscale < 0;
  switch (var.sqltype & ~1) {
    case SQL_SHORT: return scaled ? TColumnKind{ftBCD, var.sqlsubtype == 2 ? u"DECIMAL" : u"NUMERIC"} : TColumnKind{ftSmallint, u"SMALLINT"};
    case SQL_LONG: return scaled ? TColumnKind{ftBCD, var.sqlsubtype == 2 ? u"DECIMAL" : u"NUMERIC"} : TColumnKind{ftInteger, u"INTEGER"};
    case SQL_INT64: return scaled || var.sqlsubtype ? TColumnKind{ftBCD, var.sqlsubtype == 2 ? u"DECIMAL" : u"NUMERIC"} : TColumnKind{ftLargeint, u"BIGINT"};
    case SQL_FLOAT: return {ftFloat, u"FLOAT"};
    case SQL_DOUBLE:
    case SQL_D_FLOAT: return {ftFloat, u"DOUBLE PRECISION"};
    case SQL_TEXT: return IsOctets(var) ? TColumnKind{ftBytes, u"CHAR"} : TColumnKind{ftFixedChar, u"CHAR"};
    case SQL_VARYING: return IsOctets(var) ? TColumnKind{ftVarBytes, u"VARCHAR"} : TColumnKind{ftWideString, u"VARCHAR"};
    case SQL_BLOB: return var.sqlsubtype == 1 ? TColumnKind{ftMemo, u"BLOB SUB_TYPE TEXT"} : TColumnKind{ftBlob, u"BLOB"};
    case SQL_TYPE_DATE: return {ftDate, u"DATE"};
    case SQL_TYPE_TIME: return {ftTime, u"TIME"};
    case SQL_TIMESTAMP: return {ftDateTime, u"TIMESTAMP"};
    case SQL_BOOLEAN: return {ftBoolean, u"BOOLEAN"};
    case SQL_ARRAY: return {ftArray, u"ARRAY"};
    default: return {ftWideString, u""};
  }
}

// The digits the storage of a scaled integer holds.
int StoragePrecision(short sqltype) {
  switch (sqltype & ~1) {
    case SQL_SHORT: return 4;
    case SQL_LONG: return 9;
    default: return 18;
  }
}

// A scaled integer as a float, through its decimal text so that 0.1 is the
// double nearest to 0.1.
double ScaledValue(int64_t value, int scale) {
  if (scale >= 0) return static_cast<double>(value);
  const bool negative = value < 0;
  std::string digits = std::to_string(value);
  if (negative) digits.erase(0, 1);
  const size_t places = static_cast<size_t>(-scale);
  if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
  digits.insert(digits.size() - places, ".");
  const double result = std::strtod(digits.c_str(), nullptr);
  return negative ? -result : result;
}

TmvVariant DateValue(ISC_DATE date) {
  tm parts{};
  isc_decode_sql_date(&date, &parts);
  TmvDateTime value;
  if (TryEncodeDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, value)) return TmvVariant(value);
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
  return TmvVariant(UTF8Decode(text));
}

TmvDateTime TimeValue(ISC_TIME time) {
  tm parts{};
  isc_decode_sql_time(&time, &parts);
  TmvDateTime value;
  TryEncodeTime(parts.tm_hour, parts.tm_min, parts.tm_sec, static_cast<int>((time % ISC_TIME_SECONDS_PRECISION) / 10),
                value);
  return value;
}

// The first `count` code points of `text`.
WideString FirstCodePoints(WideString text, int count) {
  size_t i = 0;
  for (int n = 0; i < text.size() && n < count; ++n) i += (text[i] >= 0xD800 && text[i] < 0xDC00 && i + 1 < text.size()) ? 2 : 1;
  text.resize(i);
  return text;
}

ISC_TIMESTAMP Timestamp(TmvDateTime value) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
  DecodeDateTime(value, year, month, day, hour, minute, second, millisecond);
  tm parts{};
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  parts.tm_hour = hour;
  parts.tm_min = minute;
  parts.tm_sec = second;
  ISC_TIMESTAMP stamp{};
  isc_encode_timestamp(&parts, &stamp);
  stamp.timestamp_time += static_cast<ISC_TIME>(millisecond * 10);
  return stamp;
}

std::string ParamText(const TmvVariant& value) {
  if (value.VarType() == TmvVarType::vtDateTime) return UTF8Encode(DateTimeToSQLText(value.AsDateTime()));
  return UTF8Encode(value.AsWideString());
}

// An XSQLDA of `count` variables in its own storage.
class TSqlda {
 public:
  explicit TSqlda(short count = 1) { Resize(count); }
  void Resize(short count) {
    area_.assign(XSQLDA_LENGTH(std::max<short>(count, 1)), 0);
    Get()->version = SQLDA_VERSION1;
    Get()->sqln = std::max<short>(count, 1);
  }
  XSQLDA* Get() { return reinterpret_cast<XSQLDA*>(area_.data()); }
  short Count() { return Get()->sqld; }
  XSQLVAR& operator[](int i) { return Get()->sqlvar[i]; }

 private:
  std::vector<char> area_;
};

}  // namespace

// A query on a TmvFirebirdConnection: a statement prepared on the server and
// the whole result of its last run.
class TmvFirebirdDataSet : public TmvDataSet {
 public:
  explicit TmvFirebirdDataSet(TmvFirebirdConnection* connection) : TmvDataSet(connection) {}
  ~TmvFirebirdDataSet() override { ReleaseStatement(); }

 protected:
  void InternalPrepare(TmvFieldDefs& defs) override {
    TmvFirebirdConnection& connection = Server();
    const std::string text = UTF8Encode(Translate());
    ISC_STATUS_ARRAY status;
    isc_tr_handle tr = StartTransaction();
    if (isc_dsql_allocate_statement(status, connection.Handle(), &stmt_)) Fail(status, &tr);
    out_.Resize(1);
    if (isc_dsql_prepare(status, &tr, &stmt_, static_cast<unsigned short>(text.size()), text.c_str(), SQL_DIALECT_V6,
                         out_.Get()))
      Fail(status, &tr);
    if (out_.Count() > out_.Get()->sqln) {
      out_.Resize(out_.Count());
      if (isc_dsql_describe(status, &stmt_, SQL_DIALECT_V6, out_.Get())) Fail(status, &tr);
    }
    in_.Resize(1);
    if (isc_dsql_describe_bind(status, &stmt_, SQL_DIALECT_V6, in_.Get())) Fail(status, &tr);
    if (in_.Count() > in_.Get()->sqln) {
      in_.Resize(in_.Count());
      if (isc_dsql_describe_bind(status, &stmt_, SQL_DIALECT_V6, in_.Get())) Fail(status, &tr);
    }
    statementType_ = StatementType(status, &tr);
    Commit(&tr);
    if (in_.Count() != static_cast<short>(paramNames_.size())) {
      const int count = in_.Count();
      ReleaseStatement();
      RaiseError(WideFormat(u"%s: the statement has %d parameters, the command text %d",
                            {connection.ServerText(), count, static_cast<int>(paramNames_.size())}));
    }
    const int columns = out_.Count();
    buffers_.assign(columns, {});
    nulls_.assign(columns, 0);
    for (int i = 0; i < columns; ++i) {
      XSQLVAR& var = out_[i];
      const TColumnKind kind = KindOf(var);
      TmvFieldDef def;
      def.Name = UTF8Decode(std::string_view(var.aliasname, static_cast<size_t>(var.aliasname_length)));
      def.DataType = kind.DataType;
      def.TypeName = kind.Name;
      if (kind.DataType == ftBCD) {
        def.Precision = StoragePrecision(var.sqltype);
        def.Scale = -var.sqlscale;
      } else if (kind.DataType == ftFixedChar || kind.DataType == ftWideString) {
        def.Size = var.sqllen / BytesPerChar(var.sqlsubtype);
      } else if (kind.DataType == ftBytes || kind.DataType == ftVarBytes) {
        def.Size = var.sqllen;
      }
      if (!(var.sqltype & 1)) def.Attributes |= faRequired;
      if (var.relname_length == 0) def.Attributes |= faReadonly;
      buffers_[i].assign(static_cast<size_t>(var.sqllen) + sizeof(short), 0);
      var.sqldata = buffers_[i].data();
      var.sqlind = &nulls_[i];
      defs.Add(std::move(def));
    }
  }

  void InternalUnprepare() override { ReleaseStatement(); }

  void InternalOpen(TmvFieldDefs&) override {
    rows_.clear();
    next_ = 0;
    ISC_STATUS_ARRAY status;
    isc_tr_handle tr = StartTransaction();
    const bool cursor = statementType_ == isc_info_sql_stmt_select || statementType_ == isc_info_sql_stmt_select_for_upd;
    Execute(&tr, !cursor && out_.Count() > 0);
    if (cursor) {
      for (;;) {
        const ISC_STATUS fetched = isc_dsql_fetch(status, &stmt_, SQL_DIALECT_V6, out_.Get());
        if (fetched == 100) break;
        if (fetched) Fail(status, &tr, true);
        rows_.push_back(Row(&tr));
      }
      isc_dsql_free_statement(status, &stmt_, DSQL_close);
    } else if (out_.Count() > 0) {
      rows_.push_back(Row(&tr));  // the output of EXECUTE PROCEDURE
    }
    Commit(&tr);
    CheckCancelled();
  }

  bool InternalFetch(TmvFields& fields) override {
    if (next_ >= rows_.size()) return false;
    std::vector<TmvVariant>& row = rows_[next_++];
    for (int i = 0; i < fields.Count() && i < static_cast<int>(row.size()); ++i) fields[i].SetData(std::move(row[i]));
    return true;
  }

  void InternalRewind() override { next_ = 0; }

  void InternalClose() override {
    rows_.clear();
    next_ = 0;
  }

  int64_t InternalExecute() override {
    TmvFieldDefs ignored(nullptr);
    if (!stmt_) InternalPrepare(ignored);
    ISC_STATUS_ARRAY status;
    isc_tr_handle tr = StartTransaction();
    Execute(&tr, statementType_ == isc_info_sql_stmt_exec_procedure && out_.Count() > 0);
    const int64_t changed = RowsChanged(status);
    Commit(&tr);
    CheckCancelled();
    return changed;
  }

 private:
  TmvFirebirdConnection& Server() { return static_cast<TmvFirebirdConnection&>(RequireConnection()); }

  void ReleaseStatement() noexcept {
    if (stmt_) {
      ISC_STATUS_ARRAY status;
      isc_dsql_free_statement(status, &stmt_, DSQL_drop);
    }
    stmt_ = 0;
    buffers_.clear();
    nulls_.clear();
    rows_.clear();
    next_ = 0;
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

  isc_tr_handle StartTransaction() {
    ISC_STATUS_ARRAY status;
    isc_tr_handle tr = 0;
    if (isc_start_transaction(status, &tr, 1, Server().Handle(), static_cast<unsigned short>(sizeof kTpb), kTpb))
      Fail(status, nullptr);
    return tr;
  }

  void Commit(isc_tr_handle* tr) {
    ISC_STATUS_ARRAY status;
    if (isc_commit_transaction(status, tr)) Fail(status, tr);
  }

  int StatementType(ISC_STATUS* status, isc_tr_handle* tr) {
    const char item = isc_info_sql_stmt_type;
    char answer[16] = {};
    if (isc_dsql_sql_info(status, &stmt_, 1, &item, sizeof answer, answer)) Fail(status, tr);
    if (answer[0] != isc_info_sql_stmt_type) return 0;
    const short length = static_cast<short>(isc_vax_integer(answer + 1, 2));
    return static_cast<int>(isc_vax_integer(answer + 3, length));
  }

  // Rows the last run inserted, updated or deleted; -1 for other statements.
  int64_t RowsChanged(ISC_STATUS* status) {
    if (statementType_ != isc_info_sql_stmt_insert && statementType_ != isc_info_sql_stmt_update &&
        statementType_ != isc_info_sql_stmt_delete)
      return -1;
    const char item = isc_info_sql_records;
    char answer[64] = {};
    if (isc_dsql_sql_info(status, &stmt_, 1, &item, sizeof answer, answer) || answer[0] != isc_info_sql_records)
      return -1;
    int64_t total = 0;
    for (const char* p = answer + 3; *p != isc_info_end && p < answer + sizeof answer - 3;) {
      const char kind = *p++;
      const short length = static_cast<short>(isc_vax_integer(p, 2));
      p += 2;
      const int64_t count = isc_vax_integer(p, length);
      p += length;
      if (kind == isc_info_req_insert_count || kind == isc_info_req_update_count || kind == isc_info_req_delete_count)
        total += count;
    }
    return total;
  }

  // Binds the parameters and runs the statement in `tr`; with `singleton`
  // the output row comes with the execution (EXECUTE PROCEDURE).
  void Execute(isc_tr_handle* tr, bool singleton) {
    ISC_STATUS_ARRAY status;
    std::vector<std::string> values(paramNames_.size());
    std::vector<short> nulls(paramNames_.size(), 0);
    for (size_t i = 0; i < paramNames_.size(); ++i) {
      const TmvParam& param = BoundParam(paramNames_[i]);
      const TmvVariant& value = param.Value();
      XSQLVAR& var = in_[static_cast<int>(i)];
      const bool toBlob = (var.sqltype & ~1) == SQL_BLOB;
      std::string& bytes = values[i];
      var.sqlind = &nulls[i];
      var.sqlscale = 0;
      if (value.IsClear()) {
        nulls[i] = -1;
        var.sqltype = SQL_VARYING | 1;
        var.sqllen = 0;
        bytes.assign(sizeof(short), '\0');
      } else if (value.VarType() == TmvVarType::vtArray) {
        RaiseError(WideFormat(u"Parameter '%s' holds an array, which cannot be bound", {param.Name()}));
      } else if (value.VarType() == TmvVarType::vtBoolean && !toBlob) {
        var.sqltype = SQL_BOOLEAN | 1;
        var.sqllen = 1;
        bytes.assign(1, value.AsBoolean() ? 1 : 0);
      } else if (value.VarType() == TmvVarType::vtInteger && !toBlob) {
        const int64_t number = value.AsInt64();
        var.sqltype = SQL_INT64 | 1;
        var.sqllen = sizeof number;
        bytes.assign(reinterpret_cast<const char*>(&number), sizeof number);
      } else if (value.VarType() == TmvVarType::vtDateTime && !toBlob) {
        // In the server's own form: its DATE takes no text with a time.
        const ISC_TIMESTAMP stamp = Timestamp(value.AsDateTime());
        const short described = static_cast<short>(var.sqltype & ~1);
        if (described == SQL_TYPE_DATE || described == SQL_TYPE_TIME) {
          var.sqltype = static_cast<short>(described | 1);
          var.sqllen = sizeof(ISC_DATE);
          const ISC_DATE part = described == SQL_TYPE_DATE ? stamp.timestamp_date : stamp.timestamp_time;
          bytes.assign(reinterpret_cast<const char*>(&part), sizeof part);
        } else {
          var.sqltype = SQL_TIMESTAMP | 1;
          var.sqllen = sizeof stamp;
          bytes.assign(reinterpret_cast<const char*>(&stamp), sizeof stamp);
        }
      } else if (value.VarType() == TmvVarType::vtFloat && !toBlob) {
        const double number = value.AsFloat();
        var.sqltype = SQL_DOUBLE | 1;
        var.sqllen = sizeof number;
        bytes.assign(reinterpret_cast<const char*>(&number), sizeof number);
      } else {
        const bool binary = value.VarType() == TmvVarType::vtString && IsBinaryFieldType(param.DataType());
        const std::string data = binary ? WideToBytes(value.AsWideString()) : ParamText(value);
        if (toBlob) {
          const ISC_QUAD id = WriteBlob(tr, data);
          var.sqltype = SQL_BLOB | 1;
          var.sqllen = sizeof id;
          bytes.assign(reinterpret_cast<const char*>(&id), sizeof id);
        } else {
          if (data.size() > 32765)
            RaiseError(WideFormat(u"%s: the value of parameter '%s' is longer than 32765 bytes",
                                  {Server().ServerText(), param.Name()}));
          const short length = static_cast<short>(data.size());
          var.sqltype = SQL_VARYING | 1;
          var.sqlsubtype = binary ? kCharsetOctets : kCharsetUtf8;
          var.sqllen = length;
          bytes.assign(reinterpret_cast<const char*>(&length), sizeof length);
          bytes += data;
        }
      }
    }
    for (size_t i = 0; i < values.size(); ++i) in_[static_cast<int>(i)].sqldata = values[i].data();
    XSQLDA* in = paramNames_.empty() ? nullptr : in_.Get();
    Server().TakeCancelled();
    const ISC_STATUS rc = singleton ? isc_dsql_execute2(status, tr, &stmt_, SQL_DIALECT_V6, in, out_.Get())
                                    : isc_dsql_execute(status, tr, &stmt_, SQL_DIALECT_V6, in);
    if (rc) Fail(status, tr);
  }

  ISC_QUAD WriteBlob(isc_tr_handle* tr, const std::string& data) {
    ISC_STATUS_ARRAY status;
    isc_blob_handle blob = 0;
    ISC_QUAD id{};
    if (isc_create_blob2(status, Server().Handle(), tr, &blob, &id, 0, nullptr)) Fail(status, tr);
    for (size_t at = 0; at < data.size(); at += 32768) {
      const size_t length = std::min<size_t>(32768, data.size() - at);
      if (isc_put_segment(status, &blob, static_cast<unsigned short>(length), data.data() + at)) {
        ISC_STATUS_ARRAY ignored;
        isc_cancel_blob(ignored, &blob);
        Fail(status, tr);
      }
    }
    if (isc_close_blob(status, &blob)) Fail(status, tr);
    return id;
  }

  std::string ReadBlob(isc_tr_handle* tr, ISC_QUAD id) {
    ISC_STATUS_ARRAY status;
    isc_blob_handle blob = 0;
    if (isc_open_blob2(status, Server().Handle(), tr, &blob, &id, 0, nullptr)) Fail(status, tr, true);
    std::string out;
    char segment[16384];
    for (;;) {
      unsigned short length = 0;
      const ISC_STATUS rc = isc_get_segment(status, &blob, &length, sizeof segment, segment);
      if (rc && rc != isc_segment) break;
      out.append(segment, length);
    }
    if (status[1] && status[1] != isc_segstr_eof) {
      ISC_STATUS_ARRAY copy;
      std::memcpy(copy, status, sizeof copy);
      isc_close_blob(status, &blob);
      Fail(copy, tr, true);
    }
    isc_close_blob(status, &blob);
    return out;
  }

  // The values of the row the output area holds.
  std::vector<TmvVariant> Row(isc_tr_handle* tr) {
    std::vector<TmvVariant> row(out_.Count());
    for (int i = 0; i < out_.Count(); ++i) {
      const XSQLVAR& var = out_[i];
      if ((var.sqltype & 1) && nulls_[i] < 0) {
        row[i] = TmvVariant::Null();
        continue;
      }
      const char* data = var.sqldata;
      auto read = [data](auto value) {
        std::memcpy(&value, data, sizeof value);
        return value;
      };
      switch (var.sqltype & ~1) {
        case SQL_TEXT: {
          const std::string_view bytes(data, static_cast<size_t>(var.sqllen));
          row[i] = IsOctets(var) ? TmvVariant(BytesToWide(bytes))
                                 : TmvVariant(FirstCodePoints(UTF8Decode(bytes), var.sqllen / BytesPerChar(var.sqlsubtype)));
          break;
        }
        case SQL_VARYING: {
          const std::string_view bytes(data + sizeof(short), static_cast<size_t>(read(short{})));
          row[i] = IsOctets(var) ? TmvVariant(BytesToWide(bytes)) : TmvVariant(UTF8Decode(bytes));
          break;
        }
        case SQL_SHORT: row[i] = Integer(read(int16_t{}), var.sqlscale); break;
        case SQL_LONG: row[i] = Integer(read(int32_t{}), var.sqlscale); break;
        case SQL_INT64: row[i] = Integer(read(int64_t{}), var.sqlscale); break;
        case SQL_FLOAT: row[i] = TmvVariant(static_cast<double>(read(float{}))); break;
        case SQL_DOUBLE:
        case SQL_D_FLOAT: row[i] = TmvVariant(read(double{})); break;
        case SQL_BOOLEAN: row[i] = TmvVariant(*data != 0); break;
        case SQL_TYPE_DATE: row[i] = DateValue(read(ISC_DATE{})); break;
        case SQL_TYPE_TIME: row[i] = TmvVariant(TimeValue(read(ISC_TIME{}))); break;
        case SQL_TIMESTAMP: {
          const ISC_TIMESTAMP stamp = read(ISC_TIMESTAMP{});
          const TmvVariant date = DateValue(stamp.timestamp_date);
          row[i] = date.VarType() == TmvVarType::vtDateTime
                       ? TmvVariant(ComposeDateTime(date.AsDateTime(), TimeValue(stamp.timestamp_time)))
                       : date;
          break;
        }
        case SQL_BLOB: {
          const std::string bytes = ReadBlob(tr, read(ISC_QUAD{}));
          row[i] = var.sqlsubtype == 1 ? TmvVariant(UTF8Decode(bytes)) : TmvVariant(BytesToWide(bytes));
          break;
        }
        default: row[i] = TmvVariant::Null();  // arrays and the like: not read
      }
    }
    return row;
  }

  static TmvVariant Integer(int64_t value, short scale) {
    return scale < 0 ? TmvVariant(ScaledValue(value, scale)) : TmvVariant(value);
  }

  // A statement that ended because of Cancel raises, also when the server
  // let it finish.
  void CheckCancelled() {
    if (Server().TakeCancelled())
      RaiseError(WideFormat(u"%s: the statement was cancelled", {Server().ServerText()}));
  }

  // Raises with the server's reason after rolling `tr` back (the connection
  // stays usable); with `closeCursor` the open cursor is closed first.
  [[noreturn]] void Fail(const ISC_STATUS* status, isc_tr_handle* tr, bool closeCursor = false) {
    TmvFirebirdConnection& connection = Server();
    const WideString reason = StatusText(status);
    const bool cancelled = connection.TakeCancelled() || WasCancelled(status);
    ISC_STATUS_ARRAY ignored;
    if (closeCursor && stmt_) isc_dsql_free_statement(ignored, &stmt_, DSQL_close);
    if (tr && *tr) isc_rollback_transaction(ignored, tr);
    RaiseError(WideFormat(cancelled ? u"%s: the statement was cancelled (%s)" : u"%s: %s",
                          {connection.ServerText(), reason}));
  }

  isc_stmt_handle stmt_ = 0;
  int statementType_ = 0;
  TSqlda out_, in_;
  std::vector<std::vector<char>> buffers_;
  std::vector<short> nulls_;
  std::vector<WideString> paramNames_;
  std::vector<std::vector<TmvVariant>> rows_;
  size_t next_ = 0;
};

TmvFirebirdConnection::TmvFirebirdConnection(WideString dsn, WideString user, WideString password)
    : dsn_(std::move(dsn)), user_(std::move(user)), password_(std::move(password)) {
  // host/port:path, host:path, or a local path or alias; "C:\..." is a drive.
  const size_t colon = dsn_.find(u':');
  if (colon == WideString::npos || colon <= 1) {
    database_ = dsn_;
    return;
  }
  WideString server = dsn_.substr(0, colon);
  database_ = dsn_.substr(colon + 1);
  if (const size_t slash = server.find(u'/'); slash != WideString::npos) {
    const std::string port = UTF8Encode(server.substr(slash + 1));
    server.erase(slash);
    char* end = nullptr;
    const long value = std::strtol(port.c_str(), &end, 10);
    port_ = !port.empty() && *end == '\0' && value > 0 && value < 65536 ? static_cast<int>(value) : -1;
  }
  host_ = std::move(server);
}

TmvFirebirdConnection::~TmvFirebirdConnection() {
  CloseDataSets();
  CloseHandle();
}

std::unique_ptr<TmvDataSet> TmvFirebirdConnection::CreateQuery() { return std::make_unique<TmvFirebirdDataSet>(this); }

std::unique_ptr<TmvConnection> TmvFirebirdConnection::CloneClosed() const {
  auto copy = std::make_unique<TmvFirebirdConnection>(dsn_, user_, password_);
  copy->connectTimeout_ = connectTimeout_;
  return copy;
}

void TmvFirebirdConnection::DoOpen() {
  if (port_ <= 0)
    throw EmvQueryBuilderError(Description(), WideFormat(u"Cannot connect to the %s: the port is not a number 1-65535",
                                                         {ServerText()}));
  TDpb dpb;
  if (!user_.empty()) dpb.Text(isc_dpb_user_name, UTF8Encode(user_));
  if (!password_.empty()) dpb.Text(isc_dpb_password, UTF8Encode(password_));
  dpb.Text(isc_dpb_lc_ctype, "UTF8");
  dpb.Number(isc_dpb_connect_timeout, connectTimeout_ > 0 ? connectTimeout_ : 5);
  // The client library takes the port from the DSN itself.
  const std::string dsn = UTF8Encode(dsn_);
  ISC_STATUS_ARRAY status;
  isc_db_handle db = 0;
  if (isc_attach_database(status, 0, dsn.c_str(), &db, dpb.Length(), dpb.Data())) {
    // Text() is the description: the DSN holds no password, but keep to one form.
    throw EmvQueryBuilderError(Description(),
                               WideFormat(u"Cannot connect to the %s: %s", {ServerText(), StatusText(status)}));
  }
  std::lock_guard lock(handleMutex_);
  db_ = db;
  cancelled_ = false;
}

void TmvFirebirdConnection::DoClose() { CloseHandle(); }

void TmvFirebirdConnection::CloseHandle() noexcept {
  std::lock_guard lock(handleMutex_);
  if (db_) {
    ISC_STATUS_ARRAY status;
    isc_detach_database(status, &db_);
    // A connection that broke cannot detach; its handle is dropped all the same.
    db_ = 0;
  }
}

bool TmvFirebirdConnection::Cancel() {
  std::lock_guard lock(handleMutex_);
  if (!db_) return false;
  // Marked before the request: the statement may end before it answers.
  cancelled_ = true;
  ISC_STATUS_ARRAY status;
  if (fb_cancel_operation(status, &db_, fb_cancel_raise)) {
    cancelled_ = false;
    return false;
  }
  return true;
}

WideString TmvFirebirdConnection::ServerVersion() {
  if (!db_) return {};
  ISC_STATUS_ARRAY status;
  const char items[] = {isc_info_firebird_version, isc_info_end};
  char answer[512] = {};
  if (isc_database_info(status, &db_, sizeof items, items, sizeof answer, answer) ||
      answer[0] != isc_info_firebird_version)
    return {};
  // item, length (2), count of versions, then each as its length and text.
  const int length = static_cast<unsigned char>(answer[4]);
  return UTF8Decode(std::string_view(answer + 5, static_cast<size_t>(std::min(length, 500))));
}

WideString TmvFirebirdConnection::Description() const {
  if (host_.empty()) return WideFormat(u"Firebird: %s", {database_});
  return WideFormat(u"Firebird: %s/%d:%s", {host_, port_, database_});
}

TmvSQLParamScanOptions TmvFirebirdConnection::ParamScanOptions() const {
  TmvSQLParamScanOptions options;
  options.BackslashEscapes = false;
  options.HashComments = false;
  options.BracketIdentifiers = false;
  options.DollarQuotes = false;
  return options;
}

WideString TmvFirebirdConnection::ServerText() const {
  if (host_.empty()) return WideFormat(u"Firebird database %s", {database_});
  return WideFormat(u"Firebird server %s/%d, database %s", {host_, port_, database_});
}

}  // namespace mv
