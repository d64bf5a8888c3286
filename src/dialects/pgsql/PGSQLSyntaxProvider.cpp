#include "dialects/pgsql/PGSQLSyntaxProvider.h"

#include "PGSQLPars.h"
#include "PGSQLScan.h"
#include "dialects/pgsql/PGSQLCatalog.h"
#include "dialects/pgsql/PGSQLNodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvPGSQLSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kPostgreSQLKeywordResource = "POSTGRESQLSYNTAXPROVIDER_KEYWORDS";

const char* const kPostgreSQLKeywords =
    "notnull isnull is avg min max sum count like between in limit offset order by asc desc nulls first last "
    "union except intersect all where having into temporary temp table select distinct group as from cross "
    "join inner left right full outer on or and not ilike similar to escape overlaps true false null unknown "
    "some any exists char_length character_length octet_length bit_length extract timezone_hour "
    "timezone_minute second year month day hour minute bigint int8 bigserial serial8 int int4 integer bool "
    "boolean box bytea cidr circle date double precision float8 inet line lseg macaddr money path point "
    "polygon real float4 smallint int2 serial serial4 text time timetz timestamp timestamptz bit varying "
    "varbit char character interval float nchar nvarchar varchar binary varbinary decimal numeric without "
    "with zone operator case when then else end cast ada c catalog_name character_set_catalog "
    "character_set_name character_set_schema class_origin cobol collation_catalog collation_name "
    "collation_schema column_name command_function committed condition_number connection_name "
    "constraint_catalog constraint_name constraint_schema cursor_name data datetime_interval_code "
    "datetime_interval_precision dynamic_function fortran length message_length message_octet_length "
    "message_text more mumps name nullable number pascal pli repeatable returned_length "
    "returned_octet_length returned_sqlstate row_count scale schema_name serializable server_name "
    "subclass_origin table_name type uncommitted unnamed array";

namespace {

const char16_t* const kPostgreSQLBuiltins =
    u"Abbrev,Abs,Acos,Age,Area,Array_Agg,Array_Append,Array_Cat,Array_Dims,Array_Fill,Array_Length,"
    "Array_Lower,Array_NDims,Array_Prepend,Array_To_String,Array_Upper,Ascii,ASin,ATan,ATan2,Avg,Bit_And,"
    "Bit_Length,Bit_Or,Bool_And,Bool_Or,Box,Broadcast,BTrim,CbRt,Ceil,Ceiling,Center,Char_Length,Chr,Circle,"
    "Clock_Timestamp,Coalesce,Col_Description,Concat,Concat_Ws,Convert,Convert_From,Convert_To,Corr,Cos,Cot,"
    "Count,Covar_Pop,Covar_Samp,Cume_Dist,Current_Database,Current_Query,Current_Schema,Current_Schemas,"
    "Current_Setting,CurrVal,Cursor_To_Xml,Cursor_To_XmlSchema,Database_To_Xml,Database_To_Xml_And_XmlSchema,"
    "Database_To_XmlSchema,Date_Part,Date_Trunc,Decode,Degrees,Dense_Rank,Diameter,Div,Encode,Enum_First,"
    "Enum_Last,Enum_Range,Every,Exp,Extract,Family,First_Value,Floor,Format,Format_Type,Generate_Series,"
    "Generate_Subscripts,Get_Bit,Get_Byte,Get_Current_Ts_Config,Greatest,Has_Any_Column_Privilege,"
    "Has_Column_Privilege,Has_Database_Privilege,Has_Foreign_Data_Wrapper_Privilege,Has_Function_Privilege,"
    "Has_Language_Privilege,Has_Schema_Privilege,Has_Sequence_Privilege,Has_Server_Privilege,"
    "Has_Table_Privilege,Has_Tablespace_Privilege,Height,Host,Hostmask,Inet_Client_Addr,Inet_Client_Port,"
    "Inet_Server_Addr,Inet_Server_Port,InitCap,IsClosed,IsFinite,IsOpen,Justify_Days,Justify_Hours,"
    "Justify_Interval,Lag,LastVal,Last_value,Lead,Least,Left,Length,Ln,Log,Lower,LPad,LSeg,LTrim,MaskLen,Max,"
    "md5,Min,Mod,NetMask,Network,NextVal,Now,NPoints,Nth_Value,NTile,NullIf,NumNode,Obj_Description,"
    "Octet_Length,Overlay,Path,PClose,Percent_Rank,pg_Advisory_Lock,pg_Advisory_Lock_Shared,"
    "pg_Advisory_Unlock,pg_Advisory_Unlock_All,pg_Advisory_Unlock_Shared,pg_Advisory_xact_Lock,"
    "pg_Advisory_xact_Lock_Shared,pg_Backend_Pid,pg_Cancel_Backend,pg_Client_Encoding,"
    "pg_Collation_Is_Visible,pg_Column_Size,pg_Conf_Load_Time,pg_Conversion_Is_Visible,"
    "pg_Create_Restore_Point,pg_Current_xlog_Insert_Location,pg_Current_xlog_Location,pg_Database_Size,"
    "pg_Describe_Object,pg_Function_Is_Visible,pg_Get_ConstraintDef,pg_Get_Expr,pg_Get_Function_Arguments,"
    "pg_Get_FunctionDef,pg_Get_Function_Identity_Arguments,pg_Get_Function_Result,pg_Get_IndexDef,"
    "pg_Get_Keywords,pg_Get_RuleDef,pg_Get_Serial_Sequence,pg_Get_TriggerDef,pg_Get_UserById,pg_Get_ViewDef,"
    "pg_Has_Role,pg_Indexes_Size,pg_Is_In_Recovery,pg_Is_Other_Temp_Schema,pg_Is_xlog_Teplay_Paused,"
    "pg_Last_xact_Replay_Timestamp,pg_Last_xlog_Receive_Location,pg_Last_xlog_Replay_Location,"
    "pg_Listening_Channels,pg_Ls_Dir,pg_My_Temp_Schema,pg_OpClass_Is_Visible,pg_Operator_Is_Visible,"
    "pg_Options_To_Table,pg_Postmaster_Start_Time,pg_Read_Binary_File,pg_Read_File,pg_Relation_FileNode,"
    "pg_Relation_FilePath,pg_Relation_Size,pg_Reload_Conf,pg_Rotate_Logfile,pg_Size_Pretty,pg_Sleep,"
    "pg_Start_Backup,pg_Stat_File,pg_Stop_Backup,pg_Switch_xlog,pg_Table_Is_Visible,pg_Table_Size,"
    "pg_Tablespace_Databases,pg_Tablespace_Size,pg_Terminate_Backend,pg_Total_Relation_Size,"
    "pg_Try_Advisory_Lock,pg_Try_Advisory_Lock_Shared,pg_Try_Advisory_xact_Lock,"
    "pg_Try_Advisory_xact_Lock_Shared,pg_Ts_Config_Is_Visible,pg_Ts_Dict_Is_Visible,pg_Ts_Parser_Is_Visible,"
    "pg_Ts_Template_Is_Visible,pg_Type_Is_Visible,pg_TypeOf,pg_xlogFile_Name,pg_xlogFile_Name_Offset,"
    "pg_xlog_Replay_Pause,pg_xlog_Replay_Resume,Pi,PlainTo_TsQuery,Point,Polygon,POpen,Position,Power,"
    "Query_To_Xml,Query_To_Xml_And_XmlSchema,Query_To_XmlSchema,QueryTree,Quote_Ident,Quote_Literal,"
    "Quote_Nullable,Radians,Radius,Random,Rank,Regexp_Matches,Regexp_Replace,Regexp_Split_To_Array,"
    "Regexp_Split_To_Table,Regr_AvgX,Regr_AvgY,Regr_Count,Regr_Intercept,Regr_r2,Regr_Slope,Regr_sxx,"
    "Regr_sxy,Regr_syy,Repeat,Replace,Reverse,Right,Round,Row_Number,RPad,RTrim,Schema_To_Xml,"
    "Schema_To_Xml_And_XmlSchema,Schema_To_XmlSchema,Set_Bit,Set_Byte,Set_Config,Set_MaskLen,SetSeed,SetVal,"
    "SetWeight,ShObj_Description,Sign,Sin,Split_Part,SqRt,Statement_Timestamp,StdDev,StdDev_Pop,StdDev_Samp,"
    "String_Agg,String_To_Array,Strip,StrPos,Substr,Substring,Sum,Table_To_Xml,Table_To_Xml_and_XmlSchema,"
    "Table_To_XmlSchema,Tan,Text,TimeOfDay,To_Ascii,To_Char,To_Date,To_Hex,To_Number,To_Timestamp,To_TsQuery,"
    "To_TsVector,Transaction_Timestamp,Translate,Trim,Trunc,Ts_Debug,Ts_HeadLine,Ts_Lexize,Ts_Parse,Ts_Rank,"
    "Ts_Rank_Cd,Ts_Rewrite,Ts_Stat,Ts_Token_Type,TsVector_Update_Trigger,TsVector_Update_Trigger_Column,"
    "txid_Current,txid_Current_Snapshot,txid_Snapshot_XIp,txid_Snapshot_XMax,txid_Snapshot_XMin,"
    "txid_Visible_In_Snapshot,UnNest,Upper,Variance,Var_pop,Var_samp,Version,Width,Width_Bucket,World,XmlAgg,"
    "XmlComment,XmlConcat,XmlElement,XmlExists,XmlForest,Xml_Is_Well_Formed,Xml_Is_Well_Formed_Content,"
    "Xml_Is_Well_Formed_Document,XmlPi,XmlRoot,XPath,XPath_Exists";

std::vector<WideString> SplitComma(WideStringView text) {
  std::vector<WideString> list;
  size_t start = 0;
  while (start <= text.size()) {
    const size_t comma = text.find(u',', start);
    const WideStringView item = text.substr(start, comma == WideStringView::npos ? WideStringView::npos : comma - start);
    if (!item.empty()) list.emplace_back(item);
    if (comma == WideStringView::npos) break;
    start = comma + 1;
  }
  return list;
}

// The number of a limit text; anything but a non-negative integer that fits
// raises, naming the text.
int32_t RowCount(WideStringView text, const char16_t* what) {
  int64_t value = 0;
  bool ok = !text.empty() && text.size() <= 10;
  for (char16_t c : text) ok = ok && c >= u'0' && c <= u'9' && (value = value * 10 + (c - u'0')) <= INT32_MAX;
  if (!ok) throw EmvQueryBuilderError(WideString(u"The ") + what + u" \"" + WideString(text) + u"\" is not a whole number");
  return static_cast<int32_t>(value);
}

}  // namespace

TmvPGSQLSyntaxProvider::TmvPGSQLSyntaxProvider() : TmvMatrixSyntaxProvider("TmvPGSQLSyntaxProvider") {
  RegisterExtender(TSQLSubSelectStatement::StaticClass(), TPgSQLSubSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSelectStatement::StaticClass(), TPgSQLSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(), TPgSQLSubQuerySelectExpressionExtender::StaticClass());
  std::vector<std::string> defaults;
  TmvMatrixSyntaxProvider::GetComparisonOperators(defaults);
  for (const std::string& op : defaults) comparisonOperators_.push_back(WideFromAscii(op));
}

void TmvPGSQLSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_PGSQLNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(kPostgreSQLKeywordResource, kPostgreSQLKeywords);
}

void TmvPGSQLSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvPGSQLSyntaxProvider>(source)) comparisonOperators_ = other->comparisonOperators_;
}

const TmvScannerClass& TmvPGSQLSyntaxProvider::GetScannerClass() const { return PGSQLScanner::ScannerClass(); }

const TmvParserClass& TmvPGSQLSyntaxProvider::GetParserClass() const { return PGSQLParser::ParserClass(); }

void TmvPGSQLSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  parser.DenyIntoClause = GetDenyIntoClause();
  if (auto* pg = TmvCast<PGSQLParser>(&parser)) pg->SetComparisonOperators(comparisonOperators_);
}

std::vector<int32_t> TmvPGSQLSyntaxProvider::GetStringTokenIds() const {
  return {PGSQLScanner::tkStringToken, PGSQLScanner::tkEscapeStringToken, PGSQLScanner::tkUnicodeStringToken,
          PGSQLScanner::tkLiteralToken};
}

void TmvPGSQLSyntaxProvider::SetComparisonOperators(const std::vector<WideString>& value) {
  comparisonOperators_ = value;
  SendNotifications();
}

void TmvPGSQLSyntaxProvider::SetComparisonOperatorsText(WideStringView commaText) {
  SetComparisonOperators(SplitComma(commaText));
}

void TmvPGSQLSyntaxProvider::GetComparisonOperators(std::vector<std::string>& list) const {
  list.clear();
  for (const WideString& op : comparisonOperators_) list.push_back(WideToAnsi(op));
}

std::vector<WideString> TmvPGSQLSyntaxProvider::GetKeywords() const {
  std::vector<WideString> list;
  if (const std::vector<std::string>* words = FindKeywordResource(kPostgreSQLKeywordResource))
    for (const std::string& word : *words) list.push_back(WideFromAscii(word));
  return list;
}

void TmvPGSQLSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const WideString& name : SplitComma(kPostgreSQLBuiltins)) list.AddBuiltin(name);
}

bool TmvPGSQLSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"character", u"varchar", u"character varying", u"bit", u"varbit", u"bit varying"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

bool TmvPGSQLSyntaxProvider::IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const {
  if (!statement) return false;
  if (TmvBaseSyntaxProvider::IsQueryWithIntoClause(statement)) return true;
  auto* first = statement->GetCount() > 0 ? TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0)) : nullptr;
  auto* extender = PgSQLExtenderOf<TPgSQLSubQuerySelectExpressionExtender>(first);
  return extender && extender->Into;
}

// --- Limits ---

bool TmvPGSQLSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                            WideString& count) const {
  offset.clear();
  count.clear();
  if (!statement) return false;
  auto* extender = PgSQLExtenderOf<TPgSQLSubSelectStatementExtender>(statement);
  if (!extender) return true;
  if (TSQLLimit* limit = extender->Limit.get()) {
    count = IntToWide(limit->Limit);
    if (auto* offsetLimit = TmvCast<TSQLOffsetLimit>(limit)) offset = IntToWide(offsetLimit->Offset);
  }
  if (extender->Offset) offset = IntToWide(extender->Offset->Offset);
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvPGSQLSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                              WideStringView offset,
                                                                              WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  auto* extender = PgSQLExtenderOf<TPgSQLSubSelectStatementExtender>(result.get());
  if (!extender) throw EmvQueryBuilderError(u"The statement was not made by the PostgreSQL syntax provider");
  extender->Limit.Reset();
  if (!count.empty()) {
    auto limit = TastCreate<TSQLLimit>(context);
    limit->Limit = RowCount(count, u"row count");
    extender->Limit.Set(std::move(limit));
  }
  extender->Offset.Reset();
  if (!offset.empty()) {
    auto node = TastCreate<TSQLOffset>(context);
    node->Offset = RowCount(offset, u"row offset");
    extender->Offset.Set(std::move(node));
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- The server's catalog ---

TmvSyntaxSupportConectedServer TmvPGSQLSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsPostgreSQL(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

TmvOwned<TSQLQualifiedName> TmvPGSQLSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                           TmvConnection* connection) {
  if (auto name = GetDefaultDatabaseNamePostgreSQL(context, connection)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvPGSQLSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TSQLIdentifiersCollection& names) {
  if (!GetDefaultSchemaNamesPostgreSQL(context, connection, names))
    TmvMatrixSyntaxProvider::GetDefaultSchemaNames(context, connection, names);
}

void TmvPGSQLSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                            std::vector<WideString>& list, const TSQLQualifiedName* database) {
  if (!GetSchemasListPostgreSQL(context, connection, database, list))
    TmvMatrixSyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvPGSQLSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                 const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsPostgreSQL(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvPGSQLSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                   const TSQLQualifiedName* database) {
  if (!LoadMetadataRelationsPostgreSQL(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvPGSQLSyntaxProvider::LoadMetadataCustomAggregateNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                              TmvMetadataContainer* container,
                                                              const TSQLQualifiedName* database) {
  if (!LoadMetadataCustomAggregateNamesPostgreSQL(context, connection, container))
    TmvMatrixSyntaxProvider::LoadMetadataCustomAggregateNames(context, connection, container, database);
}

void TmvPGSQLSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                           TmvMetadataObject* object) {
  if (!LoadFieldsForObjectPostgreSQL(context, connection, object))
    TmvMatrixSyntaxProvider::LoadFieldsForObjectFromServer(context, connection, object);
}

// --- end of the server's catalog ---

}  // namespace mv
