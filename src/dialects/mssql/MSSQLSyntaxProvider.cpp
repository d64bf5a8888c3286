#include "dialects/mssql/MSSQLSyntaxProvider.h"

#include "MSSQLPars.h"
#include "MSSQLScan.h"
#include "dialects/mssql/MSSQLCatalog.h"
#include "dialects/mssql/MSSQLNodes.h"
#include "metadata/MetadataProvider.h"
#include "frontend/KeywordResources.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "sqlgen/SQLBuilder.h"
#include "support/DateTime.h"
#include "support/FormatSettings.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"
#include "tree/SelectClauses.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvMSSQLSyntaxProvider, TmvBaseSyntaxProvider)
MV_DEFINE_SYNTAX_PROVIDER(TmvMSSQLCESyntaxProvider, TmvMSSQLSyntaxProvider)

const char* const kMSSQLKeywords =
    "add all alter and any as asc authorization backup begin between break browse bulk by cascade case check "
    "checkpoint close clustered collate column commit compute constraint contains continue create cross current "
    "current_date current_time cursor database dbcc deallocate declare default delete deny desc disk distinct "
    "distributed double drop dump else end errlvl escape except exec execute exists exit external fetch file "
    "fillfactor for foreign freetext from full function goto grant group having holdlock identity identity_insert "
    "identitycol if in index inner insert intersect into is join key kill left like lineno load merge national "
    "nocheck nonclustered not null of off offsets on open openrowset option or order outer over percent pivot plan "
    "precision primary print proc procedure public read readtext reconfigure references replication restore "
    "restrict return revert revoke right rollback rowcount rowguidcol rule save schema securityaudit select set "
    "shutdown some statistics table tablesample textsize then to top tran transaction trigger truncate tsequal "
    "union unique unpivot update updatetext use user values varying view waitfor when where while with writetext "
    "dummy go ties cube rollup hash concat loop fast force maxdop robust keep keepfixed expand views xml raw auto "
    "explicit xmldata elements binary base64 true false unknown partition text char character remote fastfirstrow "
    "nolock paglock readcommitted readpast readuncommitted repeatableread rowlock serializable tablock tablockx "
    "updlock xlock nchar bigint int integer smallint tinyint bit real money smallmoney datetime smalldatetime ntext "
    "image sql_variant timestamp rowversion uniqueidentifier float nvarchar varchar varbinary decimal dec numeric";

namespace {

// The text of a node through the context's builder for server expressions.
WideString ServerText(const TastNode* node) {
  if (!node || !node->SQLContext()) return {};
  return const_cast<TastNode*>(node)->SimpleSQL(node->SQLContext()->SQLBuilderExpressionForServer());
}

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

// The offset and fetch clauses of a statement or of its select: true when
// there is either.
bool ReadOffsetFetch(const TSQLResultOffsetClause* resultOffset, const TSQLFetchFirstClause* fetchFirst,
                     WideString& offset, WideString& count) {
  if (!resultOffset && !fetchFirst) return false;
  offset = resultOffset ? ServerText(resultOffset->Offset.get()) : WideString();
  count = fetchFirst ? ServerText(fetchFirst->Count.get()) : WideString();
  return true;
}

bool ReadTop(const TSQLSubQuerySelectExpression* select, WideString& count) {
  auto* extender = MSSQLExtenderOf<TMSSQLSubQuerySelectExpressionExtender>(select);
  if (!extender || !extender->Top) return false;
  auto* rows = TmvCast<TSQLSubQueryTopRows>(extender->Top.get());
  if (rows && !TmvCast<TSQLSubQueryTopPercent>(rows)) count = ServerText(rows->Count.get());
  return true;
}

// The clone of a statement, prepared; a union or a group put one level
// down first, its columns named so that the outer level can refer to them.
TmvOwned<TSQLSubSelectStatement> CloneForLimits(const TmvBaseSyntaxProvider& provider,
                                                const TSQLSubSelectStatement& statement) {
  auto result = statement.CloneAs<TSQLSubSelectStatement>(statement.SQLContext());
  result->PrepareAndFixupRecursive();
  if (!OnlySelect(result.get())) {
    provider.ExpandQueryColumns(result.get());
    result = provider.WrapQuery(std::move(result));
    result->PrepareAndFixupRecursive();
  }
  return result;
}

}  // namespace

TmvMSSQLSyntaxProvider::TmvMSSQLSyntaxProvider() : TmvMSSQLSyntaxProvider("TmvMSSQLSyntaxProvider") {}

TmvMSSQLSyntaxProvider::TmvMSSQLSyntaxProvider(std::string_view className) : TmvMatrixSyntaxProvider(className) {
  RegisterExtenders();
  SetDetectServerVersion(true);
}

void TmvMSSQLSyntaxProvider::RegisterExtenders() {
  RegisterExtender(TSQLExpressionItem::StaticClass(), TMSSQLExpressionItemExtender::StaticClass());
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(), TMSSQLSubQuerySelectExpressionExtender::StaticClass());
  RegisterExtender(TSQLGroupByList::StaticClass(), TMSSQLGroupByListExtender::StaticClass());
  RegisterExtender(TSQLSubSelectStatement::StaticClass(), TMSSQLSubSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSelectStatement::StaticClass(), TMSSQLSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLFromSource::StaticClass(), TMSSQLFromSourceExtender::StaticClass());
  RegisterExtender(TSQLJoinKind::StaticClass(), TMSSQLJoinKindExtender::StaticClass());
}

void TmvMSSQLSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_MSSQLNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  for (const TmvSyntaxProviderClass* providerClass : {&ProviderClass(), &TmvMSSQLCESyntaxProvider::ProviderClass()}) {
    SyntaxProvidersList().RegisterSyntaxProvider(*providerClass);
    RegisterKeywordResource(KeywordResourceName(providerClass->ClassName()), kMSSQLKeywords);
  }
}

void TmvMSSQLSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvMSSQLSyntaxProvider>(source)) {
    serverVersion_ = other->serverVersion_;
    defaultSchema_ = other->defaultSchema_;
  }
}

const TmvScannerClass& TmvMSSQLSyntaxProvider::GetScannerClass() const { return MSSQLScanner::ScannerClass(); }

const TmvParserClass& TmvMSSQLSyntaxProvider::GetParserClass() const { return MSSQLParser::ParserClass(); }

void TmvMSSQLSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  static constexpr int32_t kLevels[] = {12, 7, 8, 9, 10, 11, 12};
  parser.ServerVersion = kLevels[serverVersion_];
  parser.DenyIntoClause = GetDenyIntoClause();
}

std::vector<int32_t> TmvMSSQLSyntaxProvider::GetStringTokenIds() const {
  return {MSSQLScanner::tkStringToken, MSSQLScanner::tkNationalStringToken};
}

int TmvMSSQLSyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  return setting == TmvCapabilitySetting::ServerVersion ? serverVersion_ : 0;
}

void TmvMSSQLSyntaxProvider::SetServerVersion(TmvQBServerVersionMSSQL value) {
  serverVersion_ = value;
  TmvBaseSyntaxProvider::SetDetectServerVersion(value == svMSSQLAuto);
  SendNotifications();
}

void TmvMSSQLSyntaxProvider::SetDetectServerVersion(bool value) {
  TmvBaseSyntaxProvider::SetDetectServerVersion(value);
  if (GetDetectServerVersion())
    serverVersion_ = svMSSQLAuto;
  else if (serverVersion_ == svMSSQLAuto)
    serverVersion_ = svMSSQL2008;
}

void TmvMSSQLSyntaxProvider::SetServerVersionFromMajor(int major) {
  if (major >= 7 && major <= 12) SetServerVersion(static_cast<TmvQBServerVersionMSSQL>(major - 6));
}

void TmvMSSQLSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name :
       {u"Rank", u"Dense_Rank", u"NTile", u"Row_Number", u"DateAdd", u"DateDiff", u"DateName", u"DatePart", u"Day",
        u"GetDate", u"GetUTCDate", u"Month", u"Year", u"Abs", u"Degrees", u"Rand", u"ACos", u"Exp", u"Round", u"ASin",
        u"Floor", u"Sign", u"ATan", u"Log", u"Sin", u"ATn2", u"Log10", u"SqRt", u"Ceiling", u"Pi", u"Square", u"Cos",
        u"Power", u"Tan", u"Cot", u"Radians", u"Col_Length", u"FullTextCatalogProperty", u"Col_Name",
        u"FullTextServiceProperty", u"ColumnProperty", u"Index_Col", u"DatabaseProperty", u"IndexKey_Property",
        u"DatabasePropertyEx", u"IndexProperty", u"Db_Id", u"Object_Id", u"Db_Name", u"Object_Name", u"File_Id",
        u"ObjectProperty", u"File_IdEx", u"ObjectPropertyEx", u"File_Name", u"SQL_Variant_Property", u"FileGroup_Id",
        u"Type_Id", u"FileGroup_Name", u"Type_Name", u"FileGroupProperty", u"TypeProperty", u"FileProperty",
        u"Has_Perms_By_Name", u"Is_Member", u"Is_SrvRoleMember", u"Permissions", u"Schema_Id", u"Schema_Name",
        u"SUser_Id", u"SUser_SId", u"SUser_SName", u"SUser_Name", u"User_Id", u"User_Name", u"ASCII", u"NChar",
        u"SoundEx", u"Char", u"PatIndex", u"Space", u"CharIndex", u"QuoteName", u"Str", u"Difference", u"Replace",
        u"Stuff", u"Left", u"Replicate", u"SubString", u"Len", u"Reverse", u"Unicode", u"Lower", u"Right", u"Upper",
        u"LTrim", u"RTrim", u"App_Name", u"Cast", u"Convert", u"Coalesce", u"CollationProperty", u"Columns_Updated",
        u"DataLength", u"Error_Line", u"Error_Message", u"Error_Number", u"Error_Procedure", u"Error_Severity",
        u"Error_State", u"FormatMessage", u"GetANSINull", u"Host_Id", u"Host_Name", u"Ident_Current", u"IdntT_Incr",
        u"Ident_Seed", u"Identity", u"IsDate", u"IsNull", u"IsNumeric", u"NewId", u"NullIf", u"ParseName",
        u"RowCount_Big", u"Scope_Identity", u"ServerProperty", u"sessionProperty", u"Stats_Date", u"Update",
        u"XAct_State", u"Patindex", u"TextValid", u"TextPtr", u"Parse", u"Try_Convert", u"Try_Parse",
        u"DateFromParts", u"Datetime2FromParts", u"DatetimeFromParts", u"DatetomeOffsetFromParts", u"EOMonth",
        u"SmallDatetimeFromParts", u"TimeFromParts", u"Choose", u"IIF", u"Concat", u"Format", u"Cume_Dist", u"Lead",
        u"First_Value", u"Percentile_Cont", u"Lag", u"Percentile_Disc", u"Last_Value", u"Percent_Rank"})
    list.AddBuiltin(name);
}

bool TmvMSSQLSyntaxProvider::IsValidIdent(WideStringView text) const {
  // A name that starts with a quote would read back as a quoted one.
  return text.empty() || (text.front() != u'@' && text.front() != u'"' && text.front() != u'[' &&
                          !(text.size() > 1 && text[0] == u'0' && (text[1] | 0x20) == u'x'));
}

bool TmvMSSQLSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"varchar", u"nchar", u"nvarchar", u"binary", u"varbinary"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

bool TmvMSSQLSyntaxProvider::IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const {
  if (!statement) return false;
  if (TmvBaseSyntaxProvider::IsQueryWithIntoClause(statement)) return true;
  auto* first = statement->GetCount() > 0 ? TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0)) : nullptr;
  auto* extender = MSSQLExtenderOf<TMSSQLSubQuerySelectExpressionExtender>(first);
  return extender && extender->IntoTable;
}

void TmvMSSQLSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TSQLIdentifiersCollection& names) {
  DetectServerVersionIfNeeded(context);
  if (!GetDefaultSchemaNamesMSSQL(context, connection, names))
    TmvMatrixSyntaxProvider::GetDefaultSchemaNames(context, connection, names);
  if (!defaultSchema_.empty() && !names.ContainsSameIdStr(defaultSchema_)) names.AddIdentifier(defaultSchema_);
}

// --- The server's catalog ---

int TmvMSSQLSyntaxProvider::ServerMajor() const { return serverVersion_ == svMSSQLAuto ? 12 : serverVersion_ + 6; }

void TmvMSSQLSyntaxProvider::DetectServerVersionIfNeeded(TmvBaseSQLContext* context) {
  if (GetDetectServerVersion() && context && context->MetadataProvider())
    DoDetectServerVersion(context->MetadataProvider(), nullptr);
}

TmvSyntaxSupportConectedServer TmvMSSQLSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsMSSQL(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

void TmvMSSQLSyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) {
  TmvMatrixSyntaxProvider::DoDetectServerVersion(metadataProvider, owner);
  SetServerVersionFromMajor(
      ReadServerVersionMSSQL(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr));
}

TmvOwned<TSQLQualifiedName> TmvMSSQLSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                           TmvConnection* connection) {
  DetectServerVersionIfNeeded(context);
  if (auto name = GetDefaultDatabaseNameMSSQL(context, connection)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvMSSQLSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                              std::vector<WideString>& list) {
  DetectServerVersionIfNeeded(context);
  if (!GetDatabasesListMSSQL(context, connection, ServerMajor(), list))
    TmvMatrixSyntaxProvider::GetDatabasesList(context, connection, list);
}

void TmvMSSQLSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                            std::vector<WideString>& list, const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!GetSchemasListMSSQL(context, connection, ServerMajor(), database, list))
    TmvMatrixSyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvMSSQLSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                 const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataObjectsMSSQL(context, connection, ServerMajor(), container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvMSSQLSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                   const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataRelationsMSSQL(context, connection, ServerMajor(), container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvMSSQLSyntaxProvider::LoadMetadataCustomAggregateNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                              TmvMetadataContainer* container,
                                                              const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  TmvMatrixSyntaxProvider::LoadMetadataCustomAggregateNames(context, connection, container, database);
}

void TmvMSSQLSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                           TmvMetadataObject* object) {
  DetectServerVersionIfNeeded(context);
  TmvMatrixSyntaxProvider::LoadFieldsForObjectFromServer(context, connection, object);
}

// --- Limits ---

bool TmvMSSQLSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                            WideString& count) const {
  offset.clear();
  count.clear();
  if (!statement) return false;
  if (ReadOffsetFetch(statement->ResultOffset.get(), statement->FetchFirst.get(), offset, count)) return true;
  TSQLSubQuerySelectExpression* select = OnlySelect(statement);
  if (!select) return false;
  if (ReadOffsetFetch(select->ResultOffset.get(), select->FetchFirst.get(), offset, count)) return true;
  return ReadTop(select, count);
}

TmvOwned<TSQLSubSelectStatement> TmvMSSQLSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                              WideStringView offset,
                                                                              WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = CloneForLimits(*this, *statement);
  TSQLSubQuerySelectExpression* select = OnlySelect(result.get());
  auto* extender = MSSQLExtenderOf<TMSSQLSubQuerySelectExpressionExtender>(select);
  extender->Top.Reset();
  select->ResultOffset.Reset();
  select->FetchFirst.Reset();
  result->ResultOffset.Reset();
  result->FetchFirst.Reset();
  const WideString offsetText(offset), countText(count);
  if (!offsetText.empty()) {
    if (serverVersion_ == svMSSQL2005 || serverVersion_ == svMSSQL2008) {
      // Row numbers over the order of the query, counted on the outer level.
      ExpandQueryColumns(select);
      TSQLOrderByClause* order = result->OrderBy ? result->OrderBy.get() : select->OrderBy.get();
      const WideString orderText =
          order ? u"order by " + order->SimpleSQL(context->SQLBuilderExpression()) : WideString(u"order by @@version");
      select->SelectItems->Add(context->ParseSelectItem(u"ROW_NUMBER() OVER (" + orderText + u") as RNColumn"));
      result = WrapQuery(std::move(result));
      WideString where = u"(RNColumn > " + offsetText + u")";
      if (!countText.empty()) where += u" And (RNColumn <= " + offsetText + u" + " + countText + u")";
      TSQLSubQuerySelectExpression* outer = OnlySelect(result.get());
      outer->Where.Set(context->ParseLogicalExpression(where));
      result->PrepareAndFixupRecursive();
      ExpandQueryColumns(outer);
      if (outer->SelectItems->GetCount() > 1) outer->SelectItems->Delete(outer->SelectItems->GetCount() - 1);
    } else {
      result->ResultOffset.Set(TastCreate<TSQLResultOffsetClause>(context));
      result->ResultOffset->Offset.Set(context->ParseExpression(offsetText));
      if (!countText.empty()) {
        result->FetchFirst.Set(TastCreate<TSQLFetchFirstClause>(context));
        result->FetchFirst->Count.Set(context->ParseExpression(countText));
      }
      // OFFSET and FETCH need an order.
      if (!result->OrderBy && !select->OrderBy) {
        result->OrderBy.Set(TastCreate<TSQLOrderByClause>(context));
        auto item = TastCreate<TSQLOrderByItem>(context);
        item->Expression.Set(context->ParseExpression(u"'a'"));
        result->OrderBy->Add(std::move(item));
      }
    }
  } else if (!countText.empty()) {
    auto top = TastCreate<TSQLSubQueryTopRows>(context);
    top->Count.Set(context->ParseExpression(countText));
    extender->Top.Set(std::move(top));
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- Dates ---

WideString TmvMSSQLSyntaxProvider::GetDateString(TmvDateTime value) const {
  return u"convert(datetime, '" + FormatDateTime(u"yyyy-mm-dd", value) + u"', 120)";
}

WideString TmvMSSQLSyntaxProvider::GetDateTimeString(TmvDateTime value) const {
  const WideString text = FormatDateTime(TimeOf(value).value == 0 ? u"yyyy-mm-dd" : u"yyyy-mm-dd hh:nn:ss", value);
  return u"convert(datetime, '" + text + u"', 120)";
}

WideString TmvMSSQLSyntaxProvider::GetTimeString(TmvDateTime value) const {
  return u"convert(time, '" + FormatDateTime(u"hh:nn:ss", value) + u"', 108)";
}

WideString TmvMSSQLSyntaxProvider::GetConvertedStringValue(const TSQLExpressionItem* expression,
                                                          WideStringView typeName) {
  while (const auto* brackets = TmvCast<TSQLExpressionBrackets>(expression)) expression = brackets->Expression.get();
  const auto* convert = TmvCast<TSQLExpressionConvert>(expression);
  if (!convert) return {};
  const auto* type = TmvCast<TSQLTypeStandard>(convert->TargetType.get());
  if (!type || !type->Tokens || type->Tokens->GetCount() != 1) return {};
  const auto* name = TmvCast<TSQLQualifiedName>(type->Tokens->GetItems(0));
  const auto* word = name && name->GetCount() == 1 ? TmvCast<TastToken>(name->GetItems(0))
                                                   : TmvCast<TastToken>(type->Tokens->GetItems(0));
  if (!word || !WideSameText(word->Token, typeName)) return {};
  const auto* constant = TmvCast<TSQLExpressionConstant>(convert->Expression.get());
  if (!constant || constant->GetCount() != 1) return {};
  const auto* string = TmvCast<TastTokenString>(constant->Items.Item(0));
  return string ? SQLUnquoteString(string->Token) : WideString();
}

WideString TmvMSSQLSyntaxProvider::GetDate(const TSQLExpressionItem* expression) const {
  WideString text = GetConvertedStringValue(expression, u"DateTime");
  return text.empty() ? TmvBaseSyntaxProvider::GetDate(expression) : text;
}

WideString TmvMSSQLSyntaxProvider::GetTime(const TSQLExpressionItem* expression) const {
  WideString text = GetConvertedStringValue(expression, u"Time");
  return text.empty() ? TmvBaseSyntaxProvider::GetTime(expression) : text;
}

WideString TmvMSSQLSyntaxProvider::GetDateTime(const TSQLExpressionItem* expression) const {
  WideString text = GetConvertedStringValue(expression, u"DateTime");
  return text.empty() ? TmvBaseSyntaxProvider::GetDateTime(expression) : text;
}

// --- Compact Edition ---

TmvMSSQLCESyntaxProvider::TmvMSSQLCESyntaxProvider() : TmvMSSQLSyntaxProvider("TmvMSSQLCESyntaxProvider") {}

TmvSyntaxSupportConectedServer TmvMSSQLCESyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer = IsConnectedServerIsMSSQLCompact(
      metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMSSQLSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

void TmvMSSQLCESyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider*, TmvObject*) {
  SetServerVersion(svMSSQLAuto);
}

void TmvMSSQLCESyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                   const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsMSSQLCompact(context, connection, container, filter))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvMSSQLCESyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                     const TSQLQualifiedName* database) {
  if (!LoadMetadataRelationsMSSQLCompact(context, connection, container, filter))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

bool TmvMSSQLCESyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                              WideString& count) const {
  offset.clear();
  count.clear();
  TSQLSubQuerySelectExpression* select = OnlySelect(statement);
  return select && ReadTop(select, count);
}

TmvOwned<TSQLSubSelectStatement> TmvMSSQLCESyntaxProvider::TransformQueryLimits(
    const TSQLSubSelectStatement* statement, WideStringView, WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = CloneForLimits(*this, *statement);
  auto* extender = MSSQLExtenderOf<TMSSQLSubQuerySelectExpressionExtender>(OnlySelect(result.get()));
  extender->Top.Reset();
  if (!count.empty()) {
    auto top = TastCreate<TSQLSubQueryTopRows>(context);
    top->Count.Set(context->ParseExpression(WideString(count)));
    extender->Top.Set(std::move(top));
  }
  result->PrepareAndFixupRecursive();
  return result;
}

}  // namespace mv
