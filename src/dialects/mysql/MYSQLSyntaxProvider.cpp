#include "dialects/mysql/MYSQLSyntaxProvider.h"

#include "MYSQLANSIScan.h"
#include "MYSQLPars.h"
#include "MYSQLScan.h"
#include "dialects/mysql/MYSQLNodes.h"
#include "dialects/mysql/MySQLCatalog.h"
#include "frontend/KeywordResources.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "support/DateTime.h"
#include "support/Exceptions.h"
#include "support/FormatSettings.h"
#include "support/TextHelpers.h"
#include "tree/Expressions.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvMYSQLSyntaxProvider, TmvBaseSyntaxProvider)

namespace {

const char* const kMySQLKeywords =
    "avg group_concat min max sum bit_and bit_or bit_xor std stddev stddev_pop stddev_samp var_pop var_samp "
    "variance count add all alter analyze and as asc asensitive before between bigint binary blob both by call "
    "cascade case change char character check collate column condition constraint continue convert create cross "
    "current_date current_time current_timestamp current_user cursor database databases day_hour day_microsecond "
    "day_minute day_second dec decimal declare default delayed delete desc describe deterministic distinct "
    "distinctrow div double drop dual each else elseif enclosed escaped exists exit explain false fetch float "
    "float4 float8 for force foreign from fulltext grant group having high_priority hour_microsecond hour_minute "
    "hour_second ignore in index infile inner inout insensitive insert int int1 int2 int3 int4 int8 integer "
    "interval into is iterate join key keys kill leading leave left like limit lines load localtime "
    "localtimestamp lock long longblob longtext loop low_priority match mediumblob mediumint mediumtext middleint "
    "minute_microsecond minute_second mod modifies natural not no_write_to_binlog null numeric on optimize option "
    "optionally or order out outer outfile precision primary procedure purge raid0 read reads real references "
    "regexp release rename repeat replace require restrict return revoke right rlike schema schemas "
    "second_microsecond select sensitive separator set show smallint soname spatial specific sql sqlexception "
    "sqlstate sqlwarning sql_big_result sql_calc_found_rows sql_small_result ssl starting straight_join table "
    "terminated then tinyblob tinyint tinytext to trailing trigger true undo union unique unlock unsigned update "
    "usage use using utc_date utc_time utc_timestamp values varbinary varchar varcharacter varying when where "
    "while with write x509 xor year_month zerofill action bit date enum no text time timestamp share mode offset "
    "sql_buffer_result sql_cache sql_no_cache fields dumpfile rollup full escape some any microsecond second "
    "minute hour day week month quarter year end bool boolean datetime geometry point linestring polygon "
    "multigeometry multipoint multilinestring multipolygon nchar nvarchar national fixed cast f_connections "
    "f_cpu_busy f_cursor_rows f_datefirst f_dbts f_error f_fetch_status f_identity f_idle f_io_busy f_langid "
    "f_language f_lock_timeout f_max_connections f_max_precision f_nestlevel f_options f_pack_received "
    "f_pack_sent f_packet_errors f_procid f_remserver f_rowcount f_servername f_servicename f_spid f_textsize "
    "f_timeticks f_total_errors f_total_read f_total_write f_trancount f_version stdev extract timezone_hour "
    "timezone_minute";

const char16_t* const kMySQLBuiltins[] = {
    u"If", u"IfNull", u"NullIf", u"ASCII", u"Bin", u"Bit_Length", u"Char_Length", u"Char", u"Character_Length",
    u"Concat_Ws", u"Concat", u"Conv", u"ELT", u"Export_Set", u"Field", u"Find_In_Set", u"Format", u"Hex",
    u"Insert", u"Instr", u"LCase", u"Left", u"Length", u"Load_File", u"Locate", u"Lower", u"LPad", u"LTrim",
    u"Make_Set", u"Mid", u"Oct", u"Octet_Length", u"Ord", u"Position", u"Quote", u"Repeat", u"Replace",
    u"Reverse", u"Right", u"RPad", u"RTrim", u"SoundEx", u"Space", u"StrCmp", u"SubString_Index", u"SubString",
    u"SibStr", u"Trim", u"UCase", u"UnHex", u"Upper", u"AddDate", u"AddTime", u"Convert_TZ", u"CurDate",
    u"Current_Date", u"Current_Time", u"Current_TimeStamp", u"CurTime", u"Date_Add", u"Date_Format",
    u"Date_Sub", u"Date", u"DateDiff", u"Day", u"DayName", u"DayOfMonth", u"DayOfWeek", u"DayOfYear",
    u"Extract", u"From_Days", u"From_UnixTime", u"Get_Format", u"Hour", u"Last_Day", u"LocalTime",
    u"LocalTimestamp", u"MakeDate", u"MakeTime", u"Microsecond", u"Minute", u"Month", u"MonthName", u"Now",
    u"Period_Add", u"Period_Diff", u"Quarter", u"Sec_To_Time", u"Second", u"Str_To_Date", u"SubDate",
    u"SubTime", u"SysDate", u"Time_Format", u"Time_To_Sec", u"Time", u"TimeDiff", u"Timestamp",
    u"TimestampAdd", u"TimestampDiff", u"To_Days", u"Unix_Timestamp", u"UTC_Date", u"UTC_Time",
    u"UTC_Timestamp", u"Week", u"WeekDay", u"WeekOfYear", u"Year", u"YearWeek", u"Cast", u"ExtractValue",
    u"UpdateXML", u"AES_Decrypt", u"AES_Encrypt", u"Benchmark", u"Bit_Count", u"Charset", u"Coercibility",
    u"Collation", u"Compress", u"Connection_Id", u"Current_User", u"Database", u"Decode", u"Default",
    u"DES_Decrypt", u"DES_Encrypt", u"Encode", u"Encrypt", u"Found_Rows", u"Get_Lock", u"INet_AToN",
    u"INet_NToA", u"Is_Free_Lock", u"Is_Used_Lock", u"Last_Insert_Id", u"Master_Pos_Wait", u"MD5",
    u"Name_Const", u"Old_Password", u"Password", u"Release_Lock", u"Row_Count", u"Schema", u"Session_User",
    u"SHA1", u"SHA", u"Sleep", u"System_User", u"Uncompress", u"Uncompressed_Length", u"User", u"UUID",
    u"Values", u"Version", u"Coalesce", u"Greatest", u"Interval", u"Least"};

// The number of a limit text; anything but an integer raises EConvertError.
int32_t LimitNumber(WideStringView text) {
  int value = 0;
  if (!TryStrToInt(text, value)) throw EConvertError(u"'" + WideString(text) + u"' is not a valid integer value");
  return value;
}

// A part of a version text: one digit stands for its tens.
std::string VersionPart(int part) {
  if (part > 9 && part % 10 == 0) return std::to_string(part / 10);
  if (part == 0) return "0";
  return (part < 10 ? "0" : "") + std::to_string(part);
}

}  // namespace

int ParseServerVersionMySQL(std::string_view text) {
  size_t pos = 0;
  // The next run of digits: its value and its length.
  auto run = [&](int& digits) {
    int value = 0;
    digits = 0;
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9' && digits < 9) {
      value = value * 10 + (text[pos++] - '0');
      ++digits;
    }
    return value;
  };
  auto skip = [&] {
    while (pos < text.size() && (text[pos] < '0' || text[pos] > '9')) ++pos;
  };
  int digits = 0;
  const int major = run(digits);
  if (digits == 0) throw Exception(UTF8Decode(text) + u" is invalid version value");
  int version = major * 10000;
  skip();
  const int minor = run(digits);
  version += digits == 1 ? minor * 1000 : minor * 100;
  skip();
  const int release = run(digits);
  version += digits == 1 ? release * 10 : release;
  return version;
}

std::string ServerVersionTextMySQL(int version) {
  std::string text = std::to_string(version / 10000) + "." + VersionPart(version / 100 % 100);
  if (version % 100 != 0) text += "." + VersionPart(version % 100);
  return text;
}

WideString GetStrToDateStringValue(const TSQLExpressionItem* expression) {
  while (const auto* brackets = TmvCast<TSQLExpressionBrackets>(expression)) expression = brackets->Expression.get();
  const auto* call = TmvCast<TSQLExpressionFunction>(expression);
  if (!call || !call->Name || call->Name->GetCount() != 1 || !call->Params || call->Params->GetCount() < 1) return {};
  const auto* name = TmvCast<TastToken>(call->Name->GetItems(0));
  if (!name || !WideSameText(name->Token, u"str_to_date")) return {};
  const auto* constant = TmvCast<TSQLExpressionConstant>(call->Params->GetItems(0));
  if (!constant || constant->GetCount() != 1) return {};
  const auto* string = TmvCast<TastTokenString>(constant->Items.Item(0));
  return string ? SQLUnquoteString(string->Token) : WideString();
}

TmvMYSQLSyntaxProvider::TmvMYSQLSyntaxProvider() : TmvMatrixSyntaxProvider("TmvMYSQLSyntaxProvider") {
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(),
                   TMYSQLSubQuerySelectExpressionExtender::StaticClass());
  RegisterExtender(TSQLGroupByList::StaticClass(), TMYSQLGroupByListExtender::StaticClass());
  RegisterExtender(TastTokenString::StaticClass(), TMYSQLastTokenStringExtender::StaticClass());
}

void TmvMYSQLSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_MYSQLNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kMySQLKeywords);
}

void TmvMYSQLSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvMYSQLSyntaxProvider>(source)) {
    ansiQuotes_ = other->ansiQuotes_;
    tryToSelectLinksViaDriver_ = other->tryToSelectLinksViaDriver_;
    serverVersion_ = other->serverVersion_;
  }
}

const TmvScannerClass& TmvMYSQLSyntaxProvider::GetScannerClass() const {
  return ansiQuotes_ ? MYSQLANSIScanner::ScannerClass() : MYSQLScanner::ScannerClass();
}

const TmvParserClass& TmvMYSQLSyntaxProvider::GetParserClass() const { return MYSQLParser::ParserClass(); }

void TmvMYSQLSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  parser.DenyIntoClause = GetDenyIntoClause();
}

std::vector<int32_t> TmvMYSQLSyntaxProvider::GetStringTokenIds() const { return {MYSQLScanner::tkStringToken}; }

int TmvMYSQLSyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  return setting == TmvCapabilitySetting::ServerVersion ? serverVersion_ : 0;
}

void TmvMYSQLSyntaxProvider::SetAnsiQuotes(bool value) {
  if (ansiQuotes_ == value) return;
  ansiQuotes_ = value;
  SendNotifications();
}

void TmvMYSQLSyntaxProvider::SetTryToSelectLinksViaDriver(bool value) {
  if (tryToSelectLinksViaDriver_ == value) return;
  tryToSelectLinksViaDriver_ = value;
  SendNotifications();
}

void TmvMYSQLSyntaxProvider::SetServerVersionInt(int value) {
  if (serverVersion_ == value) return;
  serverVersion_ = value;
  SendNotifications();
}

std::string TmvMYSQLSyntaxProvider::GetServerVersion() const { return ServerVersionTextMySQL(serverVersion_); }

void TmvMYSQLSyntaxProvider::SetServerVersion(std::string_view text) {
  SetServerVersionInt(ParseServerVersionMySQL(text));
}

std::vector<WideString> TmvMYSQLSyntaxProvider::GetKeywords() const {
  std::vector<WideString> list;
  if (const std::vector<std::string>* words = FindKeywordResource(KeywordResourceName(ProviderClass().ClassName())))
    for (const std::string& word : *words) list.push_back(WideFromAscii(word));
  return list;
}

void TmvMYSQLSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name : kMySQLBuiltins) list.AddBuiltin(name);
}

bool TmvMYSQLSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"varchar", u"binary", u"varbinary"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

bool TmvMYSQLSyntaxProvider::IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const {
  if (!statement) return false;
  if (TmvBaseSyntaxProvider::IsQueryWithIntoClause(statement)) return true;
  auto* first = statement->GetCount() > 0 ? TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0)) : nullptr;
  auto* extender = MySQLExtenderOf<TMYSQLSubQuerySelectExpressionExtender>(first);
  return extender && extender->IntoFile;
}

// --- Limits ---

namespace {

// The only select of a statement, or null.
TSQLSubQuerySelectExpression* SingleSelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  auto* select = statement->GetItems(0);
  return select && &select->ClassType() == &TSQLSubQuerySelectExpression::StaticClass()
             ? static_cast<TSQLSubQuerySelectExpression*>(select)
             : nullptr;
}

}  // namespace

bool TmvMYSQLSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                            WideString& count) const {
  offset.clear();
  count.clear();
  auto* extender = MySQLExtenderOf<TMYSQLSubQuerySelectExpressionExtender>(SingleSelect(statement));
  const TSQLLimit* limit = extender ? extender->Limit.get() : nullptr;
  if (!limit) return false;
  count = IntToWide(limit->Limit);
  if (auto* withOffset = TmvCast<TSQLOffsetLimit>(limit)) offset = IntToWide(withOffset->Offset);
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvMYSQLSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                              WideStringView offset,
                                                                              WideStringView count) const {
  if (!SingleSelect(statement)) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  TSQLSubQuerySelectExpression* select = SingleSelect(result.get());
  auto* extender = MySQLExtenderOf<TMYSQLSubQuerySelectExpressionExtender>(select);
  if (!extender) throw EmvQueryBuilderError(u"The statement was not made by the MySQL syntax provider");
  extender->Limit.Reset();
  if (!count.empty()) {
    if (offset.empty()) {
      auto limit = TastCreate<TSQLLimit>(context);
      limit->Limit = LimitNumber(count);
      extender->Limit.Set(std::move(limit));
    } else {
      auto limit = TastCreate<TSQLLimitOffset>(context);
      limit->Limit = LimitNumber(count);
      limit->Offset = LimitNumber(offset);
      extender->Limit.Set(std::move(limit));
    }
    // The limit prints after the select's own order; an order of the
    // statement would come after it, where the server refuses it.
    if (result->OrderBy && !select->OrderBy) select->OrderBy.Set(result->OrderBy.Release());
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- Dates ---

WideString TmvMYSQLSyntaxProvider::GetDateString(TmvDateTime value) const {
  return u"str_to_date('" + FormatDateTime(u"yyyy-mm-dd", value) + u"', '%Y-%m-%d')";
}

WideString TmvMYSQLSyntaxProvider::GetDateTimeString(TmvDateTime value) const {
  const bool dateOnly = TimeOf(value).value == 0;
  return u"str_to_date('" + FormatDateTime(dateOnly ? u"yyyy-mm-dd" : u"yyyy-mm-dd hh:nn:ss", value) + u"', '" +
         (dateOnly ? u"%Y-%m-%d" : u"%Y-%m-%d %H:%i:%s") + u"')";
}

WideString TmvMYSQLSyntaxProvider::GetTimeString(TmvDateTime value) const {
  return u"str_to_date('" + FormatDateTime(u"hh:nn:ss", value) + u"', '%H:%i:%s')";
}

WideString TmvMYSQLSyntaxProvider::GetDate(const TSQLExpressionItem* expression) const {
  WideString text = GetStrToDateStringValue(expression);
  return text.empty() ? TmvMatrixSyntaxProvider::GetDate(expression) : text;
}

WideString TmvMYSQLSyntaxProvider::GetTime(const TSQLExpressionItem* expression) const {
  WideString text = GetStrToDateStringValue(expression);
  return text.empty() ? TmvMatrixSyntaxProvider::GetTime(expression) : text;
}

WideString TmvMYSQLSyntaxProvider::GetDateTime(const TSQLExpressionItem* expression) const {
  WideString text = GetStrToDateStringValue(expression);
  return text.empty() ? TmvMatrixSyntaxProvider::GetDateTime(expression) : text;
}

// --- The server's catalog ---

void TmvMYSQLSyntaxProvider::DetectVersionFor(TmvBaseSQLContext* context) {
  if (GetDetectServerVersion() && context && context->MetadataProvider())
    DoDetectServerVersion(context->MetadataProvider(), nullptr);
}

TmvSyntaxSupportConectedServer TmvMYSQLSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsMySQL(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

void TmvMYSQLSyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) {
  TmvMatrixSyntaxProvider::DoDetectServerVersion(metadataProvider, owner);
  SetServerVersionInt(
      CalcServerVersionMySQL(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr));
}

void TmvMYSQLSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                              std::vector<WideString>& list) {
  DetectVersionFor(context);
  if (!GetDatabasesListMySQL(context, connection, list))
    TmvMatrixSyntaxProvider::GetDatabasesList(context, connection, list);
}

TmvOwned<TSQLQualifiedName> TmvMYSQLSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                           TmvConnection* connection) {
  DetectVersionFor(context);
  if (auto name = GetDefaultDatabaseNameMySQL(context, connection)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvMYSQLSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                 const TSQLQualifiedName* database) {
  DetectVersionFor(context);
  if (!LoadMetadataObjectsMySQL(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvMYSQLSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                   const TSQLQualifiedName* database) {
  DetectVersionFor(context);
  if (!LoadMetadataRelationsMySQL(context, connection, container, filter, database) && tryToSelectLinksViaDriver_)
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvMYSQLSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                           TmvMetadataObject* object) {
  DetectVersionFor(context);
  if (!LoadFieldsForObjectMySQL(context, connection, object, serverVersion_))
    TmvMatrixSyntaxProvider::LoadFieldsForObjectFromServer(context, connection, object);
}

// --- end of the server's catalog ---

}  // namespace mv
