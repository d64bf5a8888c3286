#include "dialects/universal/AutoSyntaxProvider.h"

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvAutoSyntaxProvider, TmvBaseSyntaxProvider)

namespace {

// The universal provider that answers for every automatic provider before
// it has detected its own.
TmvUniversalSyntaxProvider& Fallback() {
  static TmvOwned<TmvUniversalSyntaxProvider> fallback = TmvCreate<TmvUniversalSyntaxProvider>();
  return *fallback;
}

}  // namespace

TmvAutoSyntaxProvider::TmvAutoSyntaxProvider() = default;

void TmvAutoSyntaxProvider::RegisterDialect() { SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass()); }

TmvBaseSyntaxProvider* TmvAutoSyntaxProvider::GetSyntaxProviderInternal() const {
  return inner_ ? inner_.get() : &Fallback();
}

const TmvSyntaxProviderClass* TmvAutoSyntaxProvider::GetSyntaxProviderInternalClass() const {
  return inner_ ? SyntaxProvidersList().FindClassByClassName(inner_->ClassName()) : nullptr;
}

void TmvAutoSyntaxProvider::SetSyntaxProviderInternalClass(const TmvSyntaxProviderClass* providerClass) {
  SetInner(providerClass ? TmvOwned<TmvBaseSyntaxProvider>(providerClass->CreateRaw()) : nullptr);
  SendNotifications();
}

void TmvAutoSyntaxProvider::SetInner(TmvOwned<TmvBaseSyntaxProvider> provider) {
  if (inner_) inner_->GetOnUpdate().RemoveHandler(this, &TmvAutoSyntaxProvider::InnerUpdated);
  inner_ = std::move(provider);
  if (inner_) inner_->GetOnUpdate().AddHandler(this, &TmvAutoSyntaxProvider::InnerUpdated);
}

// A setting of the inner provider changes what this one answers.
void TmvAutoSyntaxProvider::InnerUpdated(TmvObject*) { SendNotifications(); }

void TmvAutoSyntaxProvider::DetectSyntaxProvider(TmvBaseSQLContext* context, TmvObject* owner) {
  LogHelper().Info(u"TmvAutoSyntaxProvider.DetectSyntaxProvider: start syntax detection");
  SetInner(nullptr);
  TmvBaseMetadataProvider* metadataProvider = context ? context->MetadataProvider() : nullptr;
  if (const TmvSyntaxProviderClass* found = AutodetectSyntaxProvider(metadataProvider, owner)) {
    LogHelper().Info(u"TmvAutoSyntaxProvider.DetectSyntaxProvider: detected " + WideFromAscii(found->ClassName()));
    SetInner(TmvOwned<TmvBaseSyntaxProvider>(found->CreateRaw()));
  } else {
    LogHelper().Info(u"TmvAutoSyntaxProvider.DetectSyntaxProvider: autodetection failed, use TmvUniversalSyntaxProvider");
    auto universal = TmvCreate<TmvUniversalSyntaxProvider>();
    universal->SetAutoDetectServer(false);
    universal->SetPreferredServer(ustUnknown);
    universal->SetUsedServer(ustUnknown);
    SetInner(std::move(universal));
  }
  // Contexts take the new scanner and parser classes.
  SendNotifications();
  LogHelper().Info(u"TmvAutoSyntaxProvider.DetectSyntaxProvider: end syntax detection");
}

void TmvAutoSyntaxProvider::EnsureDetected(TmvBaseSQLContext* context) {
  if (IsSyntaxProviderDetected()) return;
  TmvBaseMetadataProvider* metadataProvider = context ? context->MetadataProvider() : nullptr;
  if (metadataProvider && metadataProvider->IsConnected()) DetectSyntaxProvider(context, nullptr);
}

const TmvSyntaxProviderClass* AutodetectSyntaxProvider(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) {
  if (!metadataProvider) return nullptr;
  const TmvSyntaxProviderClass* maybe = nullptr;
  for (const TmvSyntaxProviderClass* c : SyntaxProvidersList().Classes()) {
    if (c == &TmvAutoSyntaxProvider::ProviderClass()) continue;
    TmvOwned<TmvBaseSyntaxProvider> probe(c->CreateRaw());
    TmvSyntaxSupportConectedServer answer = scsNotSupport;
    try {
      answer = probe->IsSupportConnectedServer(metadataProvider, owner);
    } catch (const std::exception&) {
      continue;  // a probe that fails counts as no support
    }
    if (answer == scsSupport) return c;
    if (answer == scsMaybeSupport && !maybe) maybe = c;
  }
  return maybe;
}

// --- The contract, forwarded ---

const TmvScannerClass& TmvAutoSyntaxProvider::GetScannerClass() const {
  return Internal()->GetScannerClass();
}

const TmvParserClass& TmvAutoSyntaxProvider::GetParserClass() const {
  return Internal()->GetParserClass();
}

void TmvAutoSyntaxProvider::SetScannerParams(TmvBaseScanner& a0) const {
  Internal()->SetScannerParams(a0);
}

void TmvAutoSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  Internal()->SetParserParams(parser);
}

std::vector<int32_t> TmvAutoSyntaxProvider::GetStringTokenIds() const {
  return Internal()->GetStringTokenIds();
}

TmvIdentCaseSensitivity TmvAutoSyntaxProvider::GetIdentCaseSens() const {
  return Internal()->GetIdentCaseSens();
}

void TmvAutoSyntaxProvider::SetIdentCaseSens(TmvIdentCaseSensitivity value) {
  Internal()->SetIdentCaseSens(value);
}

WideString TmvAutoSyntaxProvider::GetQuoteBegin() const {
  return Internal()->GetQuoteBegin();
}

WideString TmvAutoSyntaxProvider::GetQuoteEnd() const {
  return Internal()->GetQuoteEnd();
}

bool TmvAutoSyntaxProvider::IsValidIdent(WideStringView a0) const {
  return Internal()->IsValidIdent(a0);
}

const TastNodeClass* TmvAutoSyntaxProvider::FindExtenderClass(const TmvClass& nodeClass, bool inherited) const {
  return Internal()->FindExtenderClass(nodeClass, inherited);
}

void TmvAutoSyntaxProvider::GetStarAggregateNames(TSQLQualifiedNamesList& list) const {
  Internal()->GetStarAggregateNames(list);
}

void TmvAutoSyntaxProvider::Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const {
  Internal()->Get1ParamAggregateNames(list);
}

void TmvAutoSyntaxProvider::GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const {
  Internal()->GetPrefixed1ParamAggregateNames(list);
}

void TmvAutoSyntaxProvider::GetMultiParamAggregateNames(TSQLQualifiedNamesList& list) const {
  Internal()->GetMultiParamAggregateNames(list);
}

void TmvAutoSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  Internal()->GetBuiltinFunctionNames(list);
}

void TmvAutoSyntaxProvider::GetComparisonOperators(std::vector<std::string>& list) const {
  Internal()->GetComparisonOperators(list);
}

void TmvAutoSyntaxProvider::GetUnionOperatorsList(std::vector<WideString>& list) const {
  Internal()->GetUnionOperatorsList(list);
}

bool TmvAutoSyntaxProvider::IsSupportANSIJoins() const {
  return Internal()->IsSupportANSIJoins();
}

bool TmvAutoSyntaxProvider::IsForceBinaryANSIJoins() const {
  return Internal()->IsForceBinaryANSIJoins();
}

bool TmvAutoSyntaxProvider::IsBracketsInComplexJoinMandatory() const {
  return Internal()->IsBracketsInComplexJoinMandatory();
}

bool TmvAutoSyntaxProvider::IsSupportOracleJoins() const {
  return Internal()->IsSupportOracleJoins();
}

bool TmvAutoSyntaxProvider::IsSupportTransactSQLJoins() const {
  return Internal()->IsSupportTransactSQLJoins();
}

bool TmvAutoSyntaxProvider::IsSupportCrossJoin() const {
  return Internal()->IsSupportCrossJoin();
}

bool TmvAutoSyntaxProvider::IsSupportLeftANSIJoin() const {
  return Internal()->IsSupportLeftANSIJoin();
}

bool TmvAutoSyntaxProvider::IsSupportRightANSIJoin() const {
  return Internal()->IsSupportRightANSIJoin();
}

bool TmvAutoSyntaxProvider::IsSupportFullANSIJoin() const {
  return Internal()->IsSupportFullANSIJoin();
}

bool TmvAutoSyntaxProvider::IsUniversalExpressions() const {
  return Internal()->IsUniversalExpressions();
}

bool TmvAutoSyntaxProvider::IsSupportAllTableFieldsSelection() const {
  return Internal()->IsSupportAllTableFieldsSelection();
}

bool TmvAutoSyntaxProvider::IsSupportOrderByAlias() const {
  return Internal()->IsSupportOrderByAlias();
}

bool TmvAutoSyntaxProvider::IsSupportViews() const {
  return Internal()->IsSupportViews();
}

bool TmvAutoSyntaxProvider::IsSupportProcedures() const {
  return Internal()->IsSupportProcedures();
}

bool TmvAutoSyntaxProvider::IsSupportSynonyms() const {
  return Internal()->IsSupportSynonyms();
}

bool TmvAutoSyntaxProvider::IsSupportUnions() const {
  return Internal()->IsSupportUnions();
}

bool TmvAutoSyntaxProvider::IsSupportBracketsInUnions() const {
  return Internal()->IsSupportBracketsInUnions();
}

bool TmvAutoSyntaxProvider::IsSupportDerivedTables() const {
  return Internal()->IsSupportDerivedTables();
}

bool TmvAutoSyntaxProvider::IsSupportCTE() const {
  return Internal()->IsSupportCTE();
}

bool TmvAutoSyntaxProvider::IsCTEColumnNamesMandatory() const {
  return Internal()->IsCTEColumnNamesMandatory();
}

bool TmvAutoSyntaxProvider::IsSupportRecursiveCTE() const {
  return Internal()->IsSupportRecursiveCTE();
}

bool TmvAutoSyntaxProvider::IsSupportNullOrdering() const {
  return Internal()->IsSupportNullOrdering();
}

bool TmvAutoSyntaxProvider::IsSupportGroupByStar() const {
  return Internal()->IsSupportGroupByStar();
}

bool TmvAutoSyntaxProvider::IsSupportGroupByAlias() const {
  return Internal()->IsSupportGroupByAlias();
}

bool TmvAutoSyntaxProvider::IsSupportSubQueryUnions() const {
  return Internal()->IsSupportSubQueryUnions();
}

bool TmvAutoSyntaxProvider::IsSupportSubQueryBracketsInUnions() const {
  return Internal()->IsSupportSubQueryBracketsInUnions();
}

bool TmvAutoSyntaxProvider::IsSupportSubQueryDerivedTables() const {
  return Internal()->IsSupportSubQueryDerivedTables();
}

bool TmvAutoSyntaxProvider::IsSupportSubQueryCTE() const {
  return Internal()->IsSupportSubQueryCTE();
}

bool TmvAutoSyntaxProvider::IsSupportDatabases() const {
  return Internal()->IsSupportDatabases();
}

bool TmvAutoSyntaxProvider::IsSupportSchemas() const {
  return Internal()->IsSupportSchemas();
}

bool TmvAutoSyntaxProvider::IsSupportEmptyBracketsInStoredProcs() const {
  return Internal()->IsSupportEmptyBracketsInStoredProcs();
}

bool TmvAutoSyntaxProvider::IsOuterKeywordInLinksMandatory() const {
  return Internal()->IsOuterKeywordInLinksMandatory();
}

bool TmvAutoSyntaxProvider::IsInnerKeywordInLinksMandatory() const {
  return Internal()->IsInnerKeywordInLinksMandatory();
}

bool TmvAutoSyntaxProvider::IsAsKeywordInExpressionAliasMandatory() const {
  return Internal()->IsAsKeywordInExpressionAliasMandatory();
}

bool TmvAutoSyntaxProvider::IsAsKeywordInObjectAliasMandatory() const {
  return Internal()->IsAsKeywordInObjectAliasMandatory();
}

bool TmvAutoSyntaxProvider::IsFromClauseMandatory() const {
  return Internal()->IsFromClauseMandatory();
}

WideString TmvAutoSyntaxProvider::GetObjectNameSeparator() const {
  return Internal()->GetObjectNameSeparator();
}

bool TmvAutoSyntaxProvider::GetUseObjectNamesAsDefaultAliases() const {
  return Internal()->GetUseObjectNamesAsDefaultAliases();
}

WideString TmvAutoSyntaxProvider::GetSimpleEmptyFromSubquery() const {
  return Internal()->GetSimpleEmptyFromSubquery();
}

WideString TmvAutoSyntaxProvider::GetUpperCaseFunctionName() const {
  return Internal()->GetUpperCaseFunctionName();
}

WideString TmvAutoSyntaxProvider::ServerName() const {
  return Internal()->ServerName();
}

TmvSyntaxSupportConectedServer TmvAutoSyntaxProvider::IsSupportConnectedServer(TmvBaseMetadataProvider* a0, TmvObject* a1) const {
  return Internal()->IsSupportConnectedServer(a0, a1);
}

bool TmvAutoSyntaxProvider::CanDetectServerVersion() const {
  return Internal()->CanDetectServerVersion();
}

void TmvAutoSyntaxProvider::SetDetectServerVersion(bool value) {
  Internal()->SetDetectServerVersion(value);
}

void TmvAutoSyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) {
  Internal()->DoDetectServerVersion(metadataProvider, owner);
}

WideString TmvAutoSyntaxProvider::GetQueryToLoadFieldsForObject(WideStringView fields, WideStringView objectName) const {
  return Internal()->GetQueryToLoadFieldsForObject(fields, objectName);
}

WideString TmvAutoSyntaxProvider::GetQueryToLoadFieldsForTable(WideStringView fields, WideStringView name) const {
  return Internal()->GetQueryToLoadFieldsForTable(fields, name);
}

WideString TmvAutoSyntaxProvider::GetQueryToLoadFieldsForView(WideStringView fields, WideStringView name) const {
  return Internal()->GetQueryToLoadFieldsForView(fields, name);
}

WideString TmvAutoSyntaxProvider::GetQueryToLoadFieldsForProcedure(WideStringView fields, WideStringView name, WideStringView params) const {
  return Internal()->GetQueryToLoadFieldsForProcedure(fields, name, params);
}

WideString TmvAutoSyntaxProvider::GetQueryToLoadFieldsForSynonym(WideStringView fields, WideStringView name) const {
  return Internal()->GetQueryToLoadFieldsForSynonym(fields, name);
}

WideString TmvAutoSyntaxProvider::CreateWrapperForStoredProc(WideStringView call) const {
  return Internal()->CreateWrapperForStoredProc(call);
}

void TmvAutoSyntaxProvider::BeginBuildWrapperForStoredProc(TSQLBuilder& a0, const TSQLBuilderSelectFormat& a1) const {
  Internal()->BeginBuildWrapperForStoredProc(a0, a1);
}

void TmvAutoSyntaxProvider::EndBuildWrapperForStoredProc(TSQLBuilder& a0, const TSQLBuilderSelectFormat& a1) const {
  Internal()->EndBuildWrapperForStoredProc(a0, a1);
}

bool TmvAutoSyntaxProvider::IsVariablePrecisionType(WideStringView typeName) const {
  return Internal()->IsVariablePrecisionType(typeName);
}

bool TmvAutoSyntaxProvider::IsFixedSizeType(WideStringView a0) const {
  return Internal()->IsFixedSizeType(a0);
}

WideString TmvAutoSyntaxProvider::GetEditPropsFormClass(TmvEditPropsTarget target) const {
  return Internal()->GetEditPropsFormClass(target);
}

bool TmvAutoSyntaxProvider::IsSelectKeyword(WideStringView upperCaseWord) const {
  return Internal()->IsSelectKeyword(upperCaseWord);
}

bool TmvAutoSyntaxProvider::CalcAggregateCallType(TSQLExpressionAggregate* aggregate) const {
  return Internal()->CalcAggregateCallType(aggregate);
}

bool TmvAutoSyntaxProvider::CalcFunctionCallType(TSQLExpressionFunction* a0) const {
  return Internal()->CalcFunctionCallType(a0);
}

int TmvAutoSyntaxProvider::FindFieldInFieldsList(const TSQLObjectColumn* column, const TmvMetadataFieldsList* fields) const {
  return Internal()->FindFieldInFieldsList(column, fields);
}

int TmvAutoSyntaxProvider::IsColumnOfDBObject(const TSQLObjectColumn* column, const TSQLDatabaseObject* object) const {
  return Internal()->IsColumnOfDBObject(column, object);
}

bool TmvAutoSyntaxProvider::IsQueryWithIntoClause(const TSQLSubSelectStatement* a0) const {
  return Internal()->IsQueryWithIntoClause(a0);
}

bool TmvAutoSyntaxProvider::IsSupportLimitOffset() const {
  return Internal()->IsSupportLimitOffset();
}

bool TmvAutoSyntaxProvider::IsSupportLimitCount() const {
  return Internal()->IsSupportLimitCount();
}

bool TmvAutoSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const {
  return Internal()->GetQueryLimits(statement, offset, count);
}

TmvOwned<TSQLSubSelectStatement> TmvAutoSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement, WideStringView offset, WideStringView count) const {
  return Internal()->TransformQueryLimits(statement, offset, count);
}

WideString TmvAutoSyntaxProvider::GetDateString(TmvDateTime value) const {
  return Internal()->GetDateString(value);
}

WideString TmvAutoSyntaxProvider::GetTimeString(TmvDateTime value) const {
  return Internal()->GetTimeString(value);
}

WideString TmvAutoSyntaxProvider::GetDateTimeString(TmvDateTime value) const {
  return Internal()->GetDateTimeString(value);
}

WideString TmvAutoSyntaxProvider::GetDate(const TSQLExpressionItem* expression) const {
  return Internal()->GetDate(expression);
}

WideString TmvAutoSyntaxProvider::GetTime(const TSQLExpressionItem* expression) const {
  return Internal()->GetTime(expression);
}

WideString TmvAutoSyntaxProvider::GetDateTime(const TSQLExpressionItem* expression) const {
  return Internal()->GetDateTime(expression);
}

bool TmvAutoSyntaxProvider::TryParseDate(WideStringView text, TmvDateTime& value) const {
  return Internal()->TryParseDate(text, value);
}

bool TmvAutoSyntaxProvider::TryParseTime(WideStringView text, TmvDateTime& value) const {
  return Internal()->TryParseTime(text, value);
}

bool TmvAutoSyntaxProvider::TryParseDateTime(WideStringView text, TmvDateTime& value) const {
  return Internal()->TryParseDateTime(text, value);
}

WideString TmvAutoSyntaxProvider::QuoteDateLiteral(WideStringView text) const {
  return Internal()->QuoteDateLiteral(text);
}

std::vector<WideString> TmvAutoSyntaxProvider::GetKeywords() const {
  return Internal()->GetKeywords();
}

void TmvAutoSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  EnsureDetected(context);
  Internal()->GetDatabasesList(context, connection, list);
}

void TmvAutoSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list, const TSQLQualifiedName* database) {
  EnsureDetected(context);
  Internal()->GetSchemasList(context, connection, list, database);
}

void TmvAutoSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container, const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  EnsureDetected(context);
  Internal()->LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvAutoSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container, const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  EnsureDetected(context);
  Internal()->LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvAutoSyntaxProvider::LoadMetadataCustomAggregateNames(TmvBaseSQLContext* a0, TmvConnection* a1, TmvMetadataContainer* a2, const TSQLQualifiedName* a3) {
  EnsureDetected(a0);
  Internal()->LoadMetadataCustomAggregateNames(a0, a1, a2, a3);
}

void TmvAutoSyntaxProvider::LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table) {
  Internal()->LoadMetadataForTable(context, connection, table);
}

void TmvAutoSyntaxProvider::LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataView* view) {
  Internal()->LoadMetadataForView(context, connection, view);
}

void TmvAutoSyntaxProvider::LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataProcedure* procedure) {
  Internal()->LoadMetadataForProcedure(context, connection, procedure);
}

void TmvAutoSyntaxProvider::LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataSynonym* synonym) {
  Internal()->LoadMetadataForSynonym(context, connection, synonym);
}

void TmvAutoSyntaxProvider::LoadFieldsForQuery(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql, TmvMetadataFieldsList& fields) {
  Internal()->LoadFieldsForQuery(context, connection, sql, fields);
}

void TmvAutoSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* a0, TmvConnection* a1, TmvMetadataObject* a2) {
  EnsureDetected(a0);
  Internal()->LoadFieldsForObjectFromServer(a0, a1, a2);
}

void TmvAutoSyntaxProvider::LoadFieldsForTableFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table) {
  Internal()->LoadFieldsForTableFromServer(context, connection, table);
}

void TmvAutoSyntaxProvider::LoadFieldsForViewFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataView* view) {
  Internal()->LoadFieldsForViewFromServer(context, connection, view);
}

void TmvAutoSyntaxProvider::LoadParamsForProcedureFromServer(TmvBaseSQLContext* a0, TmvConnection* a1, TmvMetadataProcedure* a2) {
  Internal()->LoadParamsForProcedureFromServer(a0, a1, a2);
}

void TmvAutoSyntaxProvider::LoadFieldsForProcedureFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataProcedure* procedure) {
  Internal()->LoadFieldsForProcedureFromServer(context, connection, procedure);
}

void TmvAutoSyntaxProvider::LoadFieldsForSynonymFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataSynonym* synonym) {
  Internal()->LoadFieldsForSynonymFromServer(context, connection, synonym);
}

TmvOwned<TSQLQualifiedName> TmvAutoSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) {
  EnsureDetected(context);
  return Internal()->GetDefaultDatabaseName(context, connection);
}

void TmvAutoSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection, TSQLIdentifiersCollection& names) {
  EnsureDetected(context);
  Internal()->GetDefaultSchemaNames(context, connection, names);
}

TmvOwned<TastTokenIdentifier> TmvAutoSyntaxProvider::GetEmptySchemaName(TmvBaseSQLContext* context) const {
  return Internal()->GetEmptySchemaName(context);
}

}  // namespace mv
