#include "dialects/oracle/OracleSyntaxProvider.h"

#include "ORACLEPars.h"
#include "ORACLEScan.h"
#include "dialects/oracle/OracleCatalog.h"
#include "dialects/oracle/OracleNodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "sqlgen/SQLBuilder.h"
#include "support/DateTime.h"
#include "support/FormatSettings.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvOracleSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kOracleKeywords =
    "avg sum count max min stdev stdevp var varp access add all alter and any as asc audit between by char "
    "check cluster column comment compress connect create current date decimal default delete desc distinct "
    "drop else exclusive exists file float for from grant group having identified immediate in increment "
    "index initial insert integer intersect into is level like lock long maxextents minus mlslabel mode "
    "modify noaudit nocompress not nowait null number of offline on online option or order pctfree prior "
    "privileges public raw rename resource revoke row rows select session set share size smallint start "
    "successful synonym sysdate table then to trigger uid union unique update user validate values varchar "
    "varchar2 view whenever where with nulls first last nocycle model main rules upsert automatic sequental "
    "iterate until reference dimension measures partition return updated ignore nav keep single wait true "
    "false escape some extract timezone_hour timezone_minute second year month day hour minute over range "
    "unbounded preceding following byte nvarchar2 binary_float binary_double long_raw rowid urowid nchar "
    "clob nclob blob bfile int real double precision national character varying bit dec numeric time "
    "timestamp local zone interval cast only read constraint subpartition sample block seed cross join "
    "inner left right full outer substring case when end rownum auto base64 binary concat cube elements "
    "expand explicit fast fastfirstrow force hash keepfixed loop maxdop merge nolock paglock readcommited "
    "readpast readuncommited remote repeatableread robust rollup rowlock serializable tablock tablockx ties "
    "updlock views xlock xml xmldata siblings";

namespace {

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

bool SetType(TSQLExpressionItem* expression, TFieldType type, WideStringView name) {
  expression->ExpressionType = uint8_t(type);
  expression->ExpressionTypeName = WideString(name);
  return true;
}

// The type of the n-th argument (from 0) of a call, as CalcExpressionType
// finds it.
bool TypeOfArgument(const TmvOracleSyntaxProvider& provider, TSQLExpressionItem* call, TSQLExpressionsList* params,
                    int n) {
  if (!params || params->GetCount() <= n) return false;
  auto* argument = TmvCast<TSQLExpressionItem>(params->GetItems(n));
  if (!argument || !provider.CalcExpressionType(argument)) return false;
  call->ExpressionType = argument->ExpressionType;
  call->ExpressionTypeName = argument->ExpressionTypeName;
  return true;
}

// Result types of the dialect's functions; an empty type name takes the type
// of the argument numbered by `argument`.
struct TFunctionType {
  const char16_t* names;
  TFieldType type;
  const char16_t* typeName;
  int argument;
};

const TFunctionType kFunctionTypes[] = {
    {u"ACos,ASin,ATan,ATan2,CosH,SinH,TanH,Sqrt,NanVl,Bin_To_Num,To_Binary_Double,To_Binary_Float,To_Number,"
     u"Cluster_Probability,Prediction_Cost,Prediction_Probability",
     ftFloat, u"NUMBER", 0},
    {u"BitAnd,Ceil,Floor,Round,Sign,Width_Bucket,NLS_Charset_Decl_Len,NLS_Charset_Id,ASCII,Instr,Length,"
     u"RegExp_Instr,Months_Between,Timestamp_To_SCN,Cardinality,Cluster_Id,Feature_Id,Depth,ExistsNode,Ora_Hash,"
     u"VSize",
     ftInteger, u"Integer", 0},
    {u"Chr,Concat,InitCap,Lower,LPad,LTrim,NLS_InitCap,NLS_Lower,NLSSort,NLS_Upper,RegExp_Replace,RegExp_SubStr,"
     u"Replace,RPad,RTrim,SoundEx,Substr,Translate,Treat,Trim,Upper,NLS_Charset_Name,To_Char,To_NChar,ASCIIStr,"
     u"Compose,Convert,Decompose,RowIdToChar,RowIdToNChar,RawToHex,RawToNHex,To_Multi_Byte,To_Single_Byte,UniStr,"
     u"Sys_Connect_By_Path,Prediction_Details,Extract,ExtractValue,Path,Sys_DbURIGen,XmlCData,XMLColAttVal,"
     u"XMLComment,XMLConcat,XMLDiff,XMLElement,AppendChildXML,DeleteXML,InsertChildXML,InsertXMLBefore,Sys_XMLGen,"
     u"UpdateXML,XMLForest,XMLParse,XMLPatch,XMLPi,XMLQuery,XMLRoot,XMLSequence,XMLSerialize,XMLTable,"
     u"XMLTransform,Dump,Sys_Context,Sys_GUID,Sys_TypeId,UserEnv",
     ftString, u"Varchar2", 0},
    {u"Regexp_Like,LnNVL,XmlExists", ftBoolean, u"BOOLEAN", 0},
    {u"CharToRowId", ftString, u"Rowid", 0},
    {u"Add_Months,Last_Day,New_Time,Next_Day,To_Date", ftDate, u"Date", 0},
    {u"TZ_Offset", ftTime, u"Time", 0},
    {u"Current_Timestamp,From_TZ,LocalTimestamp,Sys_Extract_UTC,To_Timestamp,To_Timestamp_TZ,SCN_To_Timestamp",
     ftDateTime, u"Timestamp", 0},
    {u"NumToDSInterval,NumToYMInterval,To_DSInterval,To_YMInterval", ftUnknown, u"Interval", 0},
    {u"HexToRaw", ftBytes, u"Raw", 0},
    {u"to_clob,to_nclob,Empty_CLOB", ftMemo, u"CLOB", 0},
    {u"to_lob,Empty_BLOB,BFileName", ftBlob, u"BLOB", 0},
    {u"PowerMultiSet,PowerMultiSet_By_Cardinality,Set", ftDataSet, u"TABLE", 0},
    {u"Cluster_Set,Feature_Set,Prediction_Set", ftArray, u"VARRAY", 0},
    {u"Prediction_Bounds,Value", ftADT, u"Object", 0},
    {u"Abs,Power,Remainder,Trunc,Greatest,Least,Coalesce,NVL,NVL2,Feature_Value,Prediction,NullIf", ftUnknown,
     u"", 0},
    {u"Decode", ftUnknown, u"", 2},
};

// The items of a comma list.
std::vector<WideString> Split(WideStringView list) {
  std::vector<WideString> items(1);
  for (char16_t c : list) {
    if (c == u',')
      items.emplace_back();
    else
      items.back() += c;
  }
  return items;
}

bool ListHas(const char16_t* list, const WideString& name) {
  for (const WideString& item : Split(list))
    if (WideSameText(item, name)) return true;
  return false;
}

// The only name of a one-part qualified name; empty otherwise.
WideString SingleName(const TSQLQualifiedName* name) {
  if (!name || name->GetCount() != 1) return {};
  const TastToken* token = name->Token(0);
  return token ? token->Token : WideString();
}

}  // namespace

TmvOracleSyntaxProvider::TmvOracleSyntaxProvider() : TmvMatrixSyntaxProvider("TmvOracleSyntaxProvider") {
  RegisterExtender(TSQLFromQuery::StaticClass(), ToraSQLFromQueryExtender::StaticClass());
  RegisterExtender(TSQLFromSource::StaticClass(), ToraSQLFromSourceExtender::StaticClass());
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(), ToraSQLSubQueryExtender::StaticClass());
  RegisterExtender(TSQLSelectStatement::StaticClass(), ToraSQLSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLWithClauseItem::StaticClass(), ToraWithClauseItemExtender::StaticClass());
  SetDetectServerVersion(true);
}

void TmvOracleSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_OracleNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kOracleKeywords);
}

void TmvOracleSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvOracleSyntaxProvider>(source)) {
    serverVersion_ = other->serverVersion_;
    denyIntoClause_ = other->denyIntoClause_;
  }
}

const TmvScannerClass& TmvOracleSyntaxProvider::GetScannerClass() const { return ORACLEScanner::ScannerClass(); }

const TmvParserClass& TmvOracleSyntaxProvider::GetParserClass() const { return ORACLEParser::ParserClass(); }

int32_t TmvOracleSyntaxProvider::LanguageLevel(TmvQBServerVersionOracle version) {
  switch (version) {
    case svOracle7: return 7;
    case svOracle8: return 8;
    case svOracle9: return 9;
    case svOracle10:
    case svOracle11: return 10;
  }
  return 10;
}

void TmvOracleSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  parser.ServerVersion = LanguageLevel(serverVersion_);
}

std::vector<int32_t> TmvOracleSyntaxProvider::GetStringTokenIds() const {
  return {ORACLEScanner::tkStringToken, ORACLEScanner::tkNationalStringToken};
}

int TmvOracleSyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  return setting == TmvCapabilitySetting::ServerVersion ? serverVersion_ : 0;
}

void TmvOracleSyntaxProvider::SetServerVersion(TmvQBServerVersionOracle value) {
  if (value == serverVersion_) return;
  serverVersion_ = value;
  SendNotifications();
}

void TmvOracleSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const WideString& name : Split(
           u"Abs,ACos,ASin,ATan,ATan2,BitAnd,Ceil,Cos,CosH,Exp,Floor,Ln,Log,Mod,NanVl,Power,Remainder,Round,Sign,"
           u"Sin,SinH,SqRt,Tan,TanH,Trunc,Width_Bucket,Chr,Concat,InitCap,Lower,LPad,LTrim,NLS_InitCap,NLS_Lower,"
           u"NLSSort,NLS_Upper,RegExp_Replace,RegExp_SubStr,Replace,RPad,RTrim,SoundEx,SubStr,Translate,Treat,Trim,"
           u"Upper,RegExp_Like,NLS_Charset_Decl_Len,NLS_Charset_Id,NLS_Charset_Name,ASCII,Instr,Length,"
           u"RegExp_Instr,Add_Months,Current_Timestamp,DbTimeZone,Extract,From_TZ,Last_Day,LocalTimestamp,"
           u"Months_Between,New_Time,Next_Day,NumToDSInterval,NumToYMInterval,SessionTimeZone,Sys_Extract_UTC,"
           u"SysDate,SysTimestamp,To_Char,To_Timestamp,To_Timestamp_TZ,To_DSInterval,To_YMInterval,TZ_Offset,"
           u"Greatest,Least,ASCIIStr,Bin_To_Num,Cast,CharToRowId,Compose,Convert,Decompose,HexToRaw,RawToHex,"
           u"RawToNHex,RowIdToChar,RowIdToNChar,SCN_To_Timestamp,Timestamp_To_SCN,To_Binary_Double,"
           u"To_Binary_Float,To_CLOB,To_Date,To_LOB,To_Multi_Byte,To_NChar,To_NCLOB,To_Number,To_Single_Byte,"
           u"UniStr,BFileName,Empty_BLOB,Empty_CLOB,Cardinality,Collect,PowerMultiSet,"
           u"PowerMultiSet_By_Cardinality,SET,Sys_Connect_By_Path,Cluster_Id,Cluster_Probability,Cluster_Set,"
           u"Feature_Id,Feature_Set,Feature_Value,Prediction,Prediction_Bounds,Prediction_Cost,Prediction_Details,"
           u"Prediction_Probability,Prediction_Set,AppendChildXML,DeleteXML,Depth,ExistsNode,ExtractValue,"
           u"InsertChildXML,InsertXMLBefore,Path,Sys_DbURIGen,Sys_XMLAgg,Sys_XMLGen,UpdateXML,XMLAgg,XMLCast,"
           u"XMLCData,XMLColAttVal,XMLComment,XMLConcat,XMLDiff,XMLElement,XMLExists,XMLForest,XMLParse,XMLPatch,"
           u"XMLPi,XMLQuery,XMLRoot,XMLSequence,XMLSerialize,XMLTable,XMLTransform,Decode,Dump,Ora_Hash,VSize,"
           u"Coalesce,LnNVL,NullIf,NVL,NVL2,Sys_Context,Sys_GUID,Sys_TypeId,UId,User,UserEnv,Value"))
    list.AddBuiltin(name);
}

bool TmvOracleSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"nchar", u"varchar", u"nvarchar", u"varchar2", u"nvarchar2", u"raw"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

TmvOwned<TastTokenIdentifier> TmvOracleSyntaxProvider::GetEmptySchemaName(TmvBaseSQLContext* context) const {
  return TastCreate<TastTokenIdentifier>(context, u"PUBLIC", false);
}

WideString TmvOracleSyntaxProvider::CreateWrapperForStoredProc(WideStringView call) const {
  return u"TABLE(" + WideString(call) + u")";
}

void TmvOracleSyntaxProvider::BeginBuildWrapperForStoredProc(TSQLBuilder& builder,
                                                             const TSQLBuilderSelectFormat&) const {
  builder.WriteKeyword(u"Table");
  builder.WriteSymbol(u"(");
}

void TmvOracleSyntaxProvider::EndBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) const {
  builder.WriteSymbol(u")");
}

bool TmvOracleSyntaxProvider::CalcAggregateCallType(TSQLExpressionAggregate* aggregate) const {
  if (TmvMatrixSyntaxProvider::CalcAggregateCallType(aggregate)) return true;
  const WideString name = SingleName(aggregate->Name.get());
  if (name.empty()) return false;
  if (WideSameText(name, u"Collect")) return SetType(aggregate, ftDataSet, u"TABLE");
  if (ListHas(u"Grouping,Grouping_id", name)) return SetType(aggregate, ftInteger, u"Integer");
  if (ListHas(u"XmlAgg,Sys_XmlAgg", name)) return SetType(aggregate, ftString, u"Varchar2");
  if (ListHas(u"StdDev,Variance,Median,StdDev_Pop,StdDev_Samp,Var_Pop,Var_Samp", name))
    return SetType(aggregate, ftFloat, u"Number");
  // Stats_Mode and the others: the type of the argument.
  TastNode* argument = aggregate->Argument.get();
  if (auto* list = TmvCast<TSQLExpressionsList>(argument)) argument = list->GetCount() > 0 ? list->GetItems(0) : nullptr;
  auto* value = TmvCast<TSQLExpressionItem>(argument);
  if (!value || !CalcExpressionType(value)) return false;
  aggregate->ExpressionType = value->ExpressionType;
  aggregate->ExpressionTypeName = value->ExpressionTypeName;
  return true;
}

bool TmvOracleSyntaxProvider::CalcFunctionCallType(TSQLExpressionFunction* function) const {
  if (TmvMatrixSyntaxProvider::CalcFunctionCallType(function)) return true;
  const WideString name = SingleName(function->Name.get());
  if (name.empty()) return false;
  for (const TFunctionType& row : kFunctionTypes) {
    if (!ListHas(row.names, name)) continue;
    if (row.typeName[0] != 0) return SetType(function, row.type, row.typeName);
    return TypeOfArgument(*this, function, function->Params.get(), row.argument);
  }
  return false;
}

// --- Limits ---

bool TmvOracleSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement*, WideString& offset,
                                             WideString& count) const {
  offset.clear();
  count.clear();
  return false;
}

TmvOwned<TSQLSubSelectStatement> TmvOracleSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                              WideStringView offset,
                                                                              WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  if (offset.empty() && count.empty()) return result;
  if (!OnlySelect(result.get())) {
    if (result->GetCount() > 0) ExpandQueryColumns(result->GetItems(0));
    result = WrapQuery(std::move(result));
    result->PrepareAndFixupRecursive();
  }
  TSQLSubQuerySelectExpression* select = OnlySelect(result.get());
  if (!select) return result;
  TmvOwned<TSQLExpressionItem> offsetValue = offset.empty() ? nullptr : context->ParseExpression(WideString(offset));
  TmvOwned<TSQLExpressionItem> countValue = count.empty() ? nullptr : context->ParseExpression(WideString(count));
  // RowNum as the keyword it is.
  auto rowNum = [&] {
    auto column = TastCreate<TSQLExpressionColumn>(context);
    column->Column.Set(TastCreate<TSQLObjectColumn>(context));
    column->Column->Insert(0, TmvOwned<TastToken>(TastCreate<TastTokenKeyword>(context, u"RowNum").release()));
    return column;
  };
  auto comparison = [&](const char16_t* op, TmvOwned<TSQLExpressionItem> right) {
    auto binary = TastCreate<TSQLExpressionOperatorBinary>(context);
    binary->Expression.Set(rowNum());
    binary->Operator.Set(TastCreate<TSQLOperator>(context, op));
    binary->Right.Set(std::move(right));
    return binary;
  };
  auto conditions = TastCreate<TSQLExpressionAnd>(context);
  if (offsetValue) conditions->Add(comparison(u">", offsetValue->CloneAs<TSQLExpressionItem>(context)));
  if (countValue) {
    TmvOwned<TSQLExpressionItem> last;
    int64_t offsetNumber = 0, countNumber = 0;
    if (!offsetValue) {
      last = std::move(countValue);
    } else if (TryStrToInt(WideString(offset), offsetNumber) && TryStrToInt(WideString(count), countNumber)) {
      last = context->ParseExpression(IntToWide(offsetNumber + countNumber));
    } else {
      auto sum = TastCreate<TSQLExpressionOperatorBinary>(context);
      sum->Expression.Set(std::move(offsetValue));
      sum->Operator.Set(TastCreate<TSQLOperator>(context, u"+"));
      sum->Right.Set(std::move(countValue));
      last = TastCreate<TSQLExpressionBrackets>(context);
      TmvCast<TSQLExpressionBrackets>(last.get())->Expression.Set(std::move(sum));
    }
    conditions->Add(comparison(u"<=", std::move(last)));
  }
  if (select->Where) conditions->Add(TmvOwned<TSQLExpressionItem>(select->Where.Release()));
  select->Where.Set(std::move(conditions));
  result->PrepareAndFixupRecursive();
  return result;
}

// --- Dates ---

WideString TmvOracleSyntaxProvider::GetDateString(TmvDateTime value) const {
  return u"to_date('" + FormatDateTime(u"yyyy-mm-dd", value) + u"', 'YYYY-MM-DD')";
}

WideString TmvOracleSyntaxProvider::GetDateTimeString(TmvDateTime value) const {
  if (TimeOf(value).value == 0)
    return u"to_date('" + FormatDateTime(u"yyyy-mm-dd", value) + u"', 'YYYY-MM-DD')";
  return u"to_date('" + FormatDateTime(u"yyyy-mm-dd hh:nn:ss", value) + u"', 'YYYY-MM-DD HH24:MI:SS')";
}

WideString TmvOracleSyntaxProvider::GetTimeString(TmvDateTime value) const {
  return u"to_date('" + FormatDateTime(u"hh:nn:ss", value) + u"', 'HH24:MI:SS')";
}

WideString TmvOracleSyntaxProvider::GetToDateStringValue(const TSQLExpressionItem* expression) {
  while (const auto* brackets = TmvCast<TSQLExpressionBrackets>(expression)) expression = brackets->Expression.get();
  const auto* call = TmvCast<TSQLExpressionFunction>(expression);
  if (!call || !WideSameText(SingleName(call->Name.get()), u"to_date") || !call->Params ||
      call->Params->GetCount() < 1)
    return {};
  const auto* constant = TmvCast<TSQLExpressionConstant>(call->Params->GetItems(0));
  if (!constant || constant->GetCount() != 1) return {};
  const auto* string = TmvCast<TastTokenString>(constant->Items.Item(0));
  return string ? SQLUnquoteString(string->Token) : WideString();
}

WideString TmvOracleSyntaxProvider::GetDate(const TSQLExpressionItem* expression) const {
  WideString text = GetToDateStringValue(expression);
  return text.empty() ? TmvBaseSyntaxProvider::GetDate(expression) : text;
}

WideString TmvOracleSyntaxProvider::GetTime(const TSQLExpressionItem* expression) const {
  WideString text = GetToDateStringValue(expression);
  return text.empty() ? TmvBaseSyntaxProvider::GetTime(expression) : text;
}

WideString TmvOracleSyntaxProvider::GetDateTime(const TSQLExpressionItem* expression) const {
  WideString text = GetToDateStringValue(expression);
  return text.empty() ? TmvBaseSyntaxProvider::GetDateTime(expression) : text;
}

// --- The catalog ---

void TmvOracleSyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) {
  TmvMatrixSyntaxProvider::DoDetectServerVersion(metadataProvider, owner);
  if (!metadataProvider || !metadataProvider->GetCanExecSQL()) return;
  const int major = CalcServerVersionOracle(metadataProvider, metadataProvider->Connection());
  if (major >= 7 && major <= 11) SetServerVersion(TmvQBServerVersionOracle(major - 7));
}

void TmvOracleSyntaxProvider::DetectServerVersionIfNeeded(TmvBaseSQLContext* context) {
  if (GetDetectServerVersion() && context && context->MetadataProvider())
    DoDetectServerVersion(context->MetadataProvider(), nullptr);
}

TmvSyntaxSupportConectedServer TmvOracleSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsOracle(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

void TmvOracleSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TSQLIdentifiersCollection& names) {
  DetectServerVersionIfNeeded(context);
  if (!GetDefaultSchemaNamesOracle(context, connection, names))
    TmvMatrixSyntaxProvider::GetDefaultSchemaNames(context, connection, names);
}

void TmvOracleSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                             std::vector<WideString>& list, const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!GetSchemasListOracle(context, connection, list))
    TmvMatrixSyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvOracleSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                  const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataObjectsOracle(context, connection, 7 + serverVersion_, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvOracleSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                    const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataRelationsOracle(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvOracleSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                            TmvMetadataObject* object) {
  LoadFieldsForObjectOracle(context, connection, object);
}

}  // namespace mv
