#include "dialects/sybase/SybaseSyntaxProvider.h"

#include "SybasePars.h"
#include "SybaseScan.h"
#include "dialects/sybase/SybaseCatalog.h"
#include "dialects/sybase/SybaseNodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "sqlgen/SQLBuilder.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvSybaseSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kSybaseKeywords =
    "avg sum count count_big max min like between in with as order by asc desc union all except "
    "intersect where having select distinct first top starting at group option hash join concat merge "
    "loop fast force maxdop robust plan keep keepfixed expand views for browse xml raw auto explicit "
    "xmldata elements binary base64 or and not true false is null unknown escape exists some any bigint "
    "int integer smallint tinyint bit real money smallmoney datetime smalldatetime text ntext national "
    "image cursor double precision sql_variant table timestamp rowversion uniqueidentifier float nchar "
    "nvarchar varchar char character varying varbinary decimal dec numeric cast convert from cross inner "
    "left right full outer on remote fastfirstrow holdlock nolock paglock readcommited readpast "
    "readuncommited repeatableread rowlock serializable tablock tablockx updlock xlock if then else "
    "endif case when end identitycol rowguidcol f_connections f_cpu_busy f_cursor_rows f_datefirst "
    "f_dbts f_error f_fetch_status f_identity f_idle f_io_busy f_langid f_language f_lock_timeout "
    "f_max_connections f_max_precision f_nestlevel f_options f_pack_received f_pack_sent f_packet_errors "
    "f_procid f_remserver f_rowcount f_servername f_servicename f_spid f_textsize f_timeticks "
    "f_total_errors f_total_read f_total_write f_trancount f_version cube rollup ties current_timestamp "
    "current_user session_user system_user";

namespace {

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

// The text of a node through the context's builder for server expressions.
WideString ServerText(const TastNode* node) {
  if (!node || !node->SQLContext()) return {};
  return const_cast<TastNode*>(node)->SimpleSQL(node->SQLContext()->SQLBuilderExpressionForServer());
}

}  // namespace

TmvSybaseSyntaxProvider::TmvSybaseSyntaxProvider() : TmvMatrixSyntaxProvider("TmvSybaseSyntaxProvider") {
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(),
                   TSybaseSubQuerySelectExpressionExtender::StaticClass());
  RegisterExtender(TSQLSubSelectStatement::StaticClass(), TSybaseSubSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSelectStatement::StaticClass(), TSybaseSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLFromSource::StaticClass(), TSybaseFromSourceExtender::StaticClass());
  RegisterExtender(TSQLJoinKind::StaticClass(), TSybaseJoinKindExtender::StaticClass());
  SetDetectServerVersion(true);
}

void TmvSybaseSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_SybaseNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kSybaseKeywords);
}

void TmvSybaseSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvSybaseSyntaxProvider>(source)) {
    serverVersion_ = other->serverVersion_;
    defaultSchema_ = other->defaultSchema_;
  }
}

const TmvScannerClass& TmvSybaseSyntaxProvider::GetScannerClass() const { return SybaseScanner::ScannerClass(); }

const TmvParserClass& TmvSybaseSyntaxProvider::GetParserClass() const { return SybaseParser::ParserClass(); }

void TmvSybaseSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  // The level that opens what ASA has beyond ASE (EXCEPT, INTERSECT, the
  // truth tests), in line with the union operators the version offers.
  parser.ServerVersion = serverVersion_ == svSybaseASA ? 9 : 0;
}

std::vector<int32_t> TmvSybaseSyntaxProvider::GetStringTokenIds() const { return {SybaseScanner::tkStringToken}; }

int TmvSybaseSyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  return setting == TmvCapabilitySetting::ServerVersion ? serverVersion_ : 0;
}

void TmvSybaseSyntaxProvider::SetServerVersion(TmvQBServerVersionSybase value) {
  if (value == serverVersion_) return;
  serverVersion_ = value;
  SendNotifications();
}

void TmvSybaseSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name : {
        u"Cast", u"Convert", u"HexToInt", u"IntToHex", u"IsDate", u"IsNumeric", u"Date", u"DateAdd",
        u"DateDiff", u"DateFormat", u"DateName", u"DatePart", u"DateTime", u"Day", u"DayName", u"Days", u"DoW",
        u"GetDate", u"Hour", u"Hours", u"Minute", u"Minutes", u"Month", u"MonthName", u"Months", u"Now",
        u"Quarter", u"Second", u"Seconds", u"Today", u"Weeks", u"Year", u"Years", u"YMD", u"ArgN", u"Coalesce",
        u"Compress", u"Conflict", u"Decompress", u"Decrypt", u"Encrypt", u"ErrorMsg", u"Estimate",
        u"Estimate_Source", u"Expirience_Estimate", u"Explanation", u"ExprType", u"Get_Identity",
        u"Graphical_Plan", u"Graphical_ULPlan", u"Greather", u"Hash", u"Identity", u"IfNull",
        u"Index_Estimate", u"IsNull", u"Lesser", u"Long_ULPlan", u"NewId", u"NullIf", u"Number", u"Plan",
        u"ReWrite", u"Short_ULPlan", u"SQLDialect", u"TraceBack", u"TransactSQL", u"VarExists", u"WatcomSQL",
        u"Abs", u"ACos", u"ASin", u"ATan", u"ATn2", u"Ceiling", u"Cos", u"Cot", u"Degrees", u"Exp", u"Floor",
        u"Log", u"Log10", u"Mod", u"Pi", u"Power", u"Radians", u"Rand", u"Remainder", u"Round", u"Sign",
        u"Sin", u"SqRt", u"Tan", u"Truncate", u"TruncNum", u"HTML_Decode", u"HTML_Encode", u"HTTP_Decode",
        u"HTTP_Encode", u"HTTP_Variable", u"Next_HTTP_Header", u"Next_HTTP_Variable", u"ASCII",
        u"Base64_Decode", u"Base64_Encode", u"Byte_Length", u"Byte_Substr", u"Char", u"CharIndex",
        u"Char_Length", u"Compare", u"CSConvert", u"Difference", u"InsertStr", u"LCase", u"Left", u"Length",
        u"Locate", u"Lower", u"LTrim", u"OpenXML", u"PatIndex", u"Repeat", u"Replace", u"Replicate", u"Right",
        u"RTrim", u"Similar", u"SortKey", u"SoundEx", u"Space", u"Str", u"String", u"StrToUUID", u"Stuff",
        u"SubString", u"Trim", u"UCase", u"Upper", u"UUIDToStr", u"XMLAgg", u"XMLConcat", u"XMLElement",
        u"XMLForest", u"XMLGen", u"Connection_Property", u"DataLength", u"Db_Id", u"Db_Name",
        u"Db_Extended_Property", u"Db_Property", u"Event_Condition", u"Event_Condition_Name",
        u"Event_Parameter", u"Next_Connection", u"Next_Database", u"Property", u"Property_Description",
        u"Property_Name", u"Property_Number", u"Col_Length", u"Col_Name", u"CurUnreservedPgs", u"Data_Pgs",
        u"Host_Id", u"Host_Name", u"Index_Col", u"Lct_Admin", u"Object_Id", u"Object_Name", u"Proc_Role",
        u"Reserved_Pgs", u"RowCnt", u"Show_Role", u"SUser_Id", u"SUser_Name", u"TSEqual", u"Used_Pgs",
        u"User_Id", u"User_Name", u"Valid_Name", u"Valid_User", u"TextPtr"})
    list.AddBuiltin(name);
}

bool TmvSybaseSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"nchar", u"varchar", u"nvarchar", u"binary", u"varbinary"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

// --- Limits ---

bool TmvSybaseSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                             WideString& count) const {
  offset.clear();
  count.clear();
  auto* extender = SybaseExtenderOf<TSybaseSubQuerySelectExpressionExtender>(OnlySelect(statement));
  if (!extender || !extender->Top) return false;
  if (TmvCast<TSQLSubQueryFirstSkipClause>(extender->Top.get())) {
    count = WideString(1, u'1');
  } else if (auto* rows = TmvCast<TSQLSubQueryTopRows>(extender->Top.get())) {
    // A percentage is no row count.
    if (!TmvCast<TSQLSubQueryTopPercent>(rows)) count = ServerText(rows->Count.get());
  }
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvSybaseSyntaxProvider::TransformQueryLimits(
    const TSQLSubSelectStatement* statement, WideStringView, WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  if (!OnlySelect(result.get())) {
    result = WrapQuery(std::move(result));
    result->PrepareAndFixupRecursive();
  }
  if (auto* extender = SybaseExtenderOf<TSybaseSubQuerySelectExpressionExtender>(OnlySelect(result.get()))) {
    extender->Top.Reset();
    if (!count.empty()) {
      if (auto value = context->ParseExpression(WideString(count))) {
        auto top = TastCreate<TSQLSubQueryTopRows>(context);
        top->Count.Set(std::move(value));
        extender->Top.Set(std::move(top));
      }
    }
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- The catalog ---

void TmvSybaseSyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) {
  TmvMatrixSyntaxProvider::DoDetectServerVersion(metadataProvider, owner);
  if (!metadataProvider || !metadataProvider->GetCanExecSQL()) return;
  SetServerVersion(IsConnectedServerIsSybaseASA(metadataProvider, metadataProvider->Connection()) ? svSybaseASA
                                                                                                   : svSybaseASE);
}

void TmvSybaseSyntaxProvider::DetectServerVersionIfNeeded(TmvBaseSQLContext* context) {
  if (GetDetectServerVersion() && context && context->MetadataProvider())
    DoDetectServerVersion(context->MetadataProvider(), nullptr);
}

TmvSyntaxSupportConectedServer TmvSybaseSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsSybase(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

TmvOwned<TSQLQualifiedName> TmvSybaseSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                            TmvConnection* connection) {
  DetectServerVersionIfNeeded(context);
  if (auto name = GetDefaultDatabaseNameSybase(context, connection)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvSybaseSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TSQLIdentifiersCollection& names) {
  DetectServerVersionIfNeeded(context);
  if (!GetDefaultSchemaNamesSybase(context, connection, names))
    TmvMatrixSyntaxProvider::GetDefaultSchemaNames(context, connection, names);
  if (!defaultSchema_.empty() && !names.ContainsSameIdStr(defaultSchema_)) names.AddIdentifier(defaultSchema_);
}

void TmvSybaseSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                               std::vector<WideString>& list) {
  DetectServerVersionIfNeeded(context);
  if (!GetDatabasesListSybase(context, connection, list))
    TmvMatrixSyntaxProvider::GetDatabasesList(context, connection, list);
}

void TmvSybaseSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                             std::vector<WideString>& list, const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!GetSchemasListSybase(context, connection, list))
    TmvMatrixSyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvSybaseSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                  const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataObjectsSybase(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvSybaseSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                    const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataRelationsSybase(context, connection, serverVersion_ == svSybaseASA, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvSybaseSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                            TmvMetadataObject* object) {
  DetectServerVersionIfNeeded(context);
  if (!LoadFieldsForObjectSybase(context, connection, serverVersion_ == svSybaseASA, object))
    TmvMatrixSyntaxProvider::LoadFieldsForObjectFromServer(context, connection, object);
}

}  // namespace mv
