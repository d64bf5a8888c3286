// The automatic provider: no grammar of its own, it stands for the provider
// of the server behind the connection. Every operation of the contract goes
// to the provider it detected (the inner provider) or, before that, to one
// universal provider that all automatic providers share. The operations
// that need a connection detect first: the registered provider classes are
// asked whether they serve the server, and when none is sure a universal
// provider for an unknown server takes the inner place. Without a connected
// metadata provider nothing is detected.
#pragma once

#include "dialects/universal/UniversalSyntaxProvider.h"

namespace mv {

class TmvAutoSyntaxProvider : public TmvBaseSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvAutoSyntaxProvider();

  // Registers the provider class with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  // The provider that answers: the inner one, or the shared fallback.
  TmvBaseSyntaxProvider* GetSyntaxProviderInternal() const;
  bool IsSyntaxProviderDetected() const { return inner_ != nullptr; }
  // The class of the inner provider; null before detection.
  const TmvSyntaxProviderClass* GetSyntaxProviderInternalClass() const;
  // Frees the inner provider and makes one of that class (none for null).
  void SetSyntaxProviderInternalClass(const TmvSyntaxProviderClass* providerClass);
  // Detects the provider of the server behind the context's metadata provider.
  void DetectSyntaxProvider(TmvBaseSQLContext* context, TmvObject* owner);

  // --- The contract, forwarded. ---
  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  void SetScannerParams(TmvBaseScanner& a0) const override;
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  TmvIdentCaseSensitivity GetIdentCaseSens() const override;
  void SetIdentCaseSens(TmvIdentCaseSensitivity value) override;
  WideString GetQuoteBegin() const override;
  WideString GetQuoteEnd() const override;
  bool IsValidIdent(WideStringView a0) const override;
  const TastNodeClass* FindExtenderClass(const TmvClass& nodeClass, bool inherited) const override;
  void GetStarAggregateNames(TSQLQualifiedNamesList& list) const override;
  void Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const override;
  void GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const override;
  void GetMultiParamAggregateNames(TSQLQualifiedNamesList& list) const override;
  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  void GetComparisonOperators(std::vector<std::string>& list) const override;
  void GetUnionOperatorsList(std::vector<WideString>& list) const override;
  bool IsSupportANSIJoins() const override;
  bool IsForceBinaryANSIJoins() const override;
  bool IsBracketsInComplexJoinMandatory() const override;
  bool IsSupportOracleJoins() const override;
  bool IsSupportTransactSQLJoins() const override;
  bool IsSupportCrossJoin() const override;
  bool IsSupportLeftANSIJoin() const override;
  bool IsSupportRightANSIJoin() const override;
  bool IsSupportFullANSIJoin() const override;
  bool IsUniversalExpressions() const override;
  bool IsSupportAllTableFieldsSelection() const override;
  bool IsSupportOrderByAlias() const override;
  bool IsSupportViews() const override;
  bool IsSupportProcedures() const override;
  bool IsSupportSynonyms() const override;
  bool IsSupportUnions() const override;
  bool IsSupportBracketsInUnions() const override;
  bool IsSupportDerivedTables() const override;
  bool IsSupportCTE() const override;
  bool IsCTEColumnNamesMandatory() const override;
  bool IsSupportRecursiveCTE() const override;
  bool IsSupportNullOrdering() const override;
  bool IsSupportGroupByStar() const override;
  bool IsSupportGroupByAlias() const override;
  bool IsSupportSubQueryUnions() const override;
  bool IsSupportSubQueryBracketsInUnions() const override;
  bool IsSupportSubQueryDerivedTables() const override;
  bool IsSupportSubQueryCTE() const override;
  bool IsSupportDatabases() const override;
  bool IsSupportSchemas() const override;
  bool IsSupportEmptyBracketsInStoredProcs() const override;
  bool IsOuterKeywordInLinksMandatory() const override;
  bool IsInnerKeywordInLinksMandatory() const override;
  bool IsAsKeywordInExpressionAliasMandatory() const override;
  bool IsAsKeywordInObjectAliasMandatory() const override;
  bool IsFromClauseMandatory() const override;
  WideString GetObjectNameSeparator() const override;
  bool GetUseObjectNamesAsDefaultAliases() const override;
  WideString GetSimpleEmptyFromSubquery() const override;
  WideString GetUpperCaseFunctionName() const override;
  WideString ServerName() const override;
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* a0, TmvObject* a1) const override;
  bool CanDetectServerVersion() const override;
  void SetDetectServerVersion(bool value) override;
  void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) override;
  WideString GetQueryToLoadFieldsForObject(WideStringView fields, WideStringView objectName) const override;
  WideString GetQueryToLoadFieldsForTable(WideStringView fields, WideStringView name) const override;
  WideString GetQueryToLoadFieldsForView(WideStringView fields, WideStringView name) const override;
  WideString GetQueryToLoadFieldsForProcedure(WideStringView fields, WideStringView name, WideStringView params) const override;
  WideString GetQueryToLoadFieldsForSynonym(WideStringView fields, WideStringView name) const override;
  WideString CreateWrapperForStoredProc(WideStringView call) const override;
  void BeginBuildWrapperForStoredProc(TSQLBuilder& a0, const TSQLBuilderSelectFormat& a1) const override;
  void EndBuildWrapperForStoredProc(TSQLBuilder& a0, const TSQLBuilderSelectFormat& a1) const override;
  bool IsVariablePrecisionType(WideStringView typeName) const override;
  bool IsFixedSizeType(WideStringView a0) const override;
  WideString GetEditPropsFormClass(TmvEditPropsTarget target) const override;
  bool IsSelectKeyword(WideStringView upperCaseWord) const override;
  bool CalcAggregateCallType(TSQLExpressionAggregate* aggregate) const override;
  bool CalcFunctionCallType(TSQLExpressionFunction* a0) const override;
  int FindFieldInFieldsList(const TSQLObjectColumn* column, const TmvMetadataFieldsList* fields) const override;
  int IsColumnOfDBObject(const TSQLObjectColumn* column, const TSQLDatabaseObject* object) const override;
  bool IsQueryWithIntoClause(const TSQLSubSelectStatement* a0) const override;
  bool IsSupportLimitOffset() const override;
  bool IsSupportLimitCount() const override;
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement, WideStringView offset, WideStringView count) const override;
  WideString GetDateString(TmvDateTime value) const override;
  WideString GetTimeString(TmvDateTime value) const override;
  WideString GetDateTimeString(TmvDateTime value) const override;
  WideString GetDate(const TSQLExpressionItem* expression) const override;
  WideString GetTime(const TSQLExpressionItem* expression) const override;
  WideString GetDateTime(const TSQLExpressionItem* expression) const override;
  bool TryParseDate(WideStringView text, TmvDateTime& value) const override;
  bool TryParseTime(WideStringView text, TmvDateTime& value) const override;
  bool TryParseDateTime(WideStringView text, TmvDateTime& value) const override;
  WideString QuoteDateLiteral(WideStringView text) const override;
  std::vector<WideString> GetKeywords() const override;
  void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) override;
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list, const TSQLQualifiedName* database) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container, const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container, const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataCustomAggregateNames(TmvBaseSQLContext* a0, TmvConnection* a1, TmvMetadataContainer* a2, const TSQLQualifiedName* a3) override;
  void LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table) override;
  void LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataView* view) override;
  void LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataProcedure* procedure) override;
  void LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataSynonym* synonym) override;
  void LoadFieldsForQuery(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql, TmvMetadataFieldsList& fields) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* a0, TmvConnection* a1, TmvMetadataObject* a2) override;
  void LoadFieldsForTableFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table) override;
  void LoadFieldsForViewFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataView* view) override;
  void LoadParamsForProcedureFromServer(TmvBaseSQLContext* a0, TmvConnection* a1, TmvMetadataProcedure* a2) override;
  void LoadFieldsForProcedureFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataProcedure* procedure) override;
  void LoadFieldsForSynonymFromServer(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataSynonym* synonym) override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection, TSQLIdentifiersCollection& names) override;
  TmvOwned<TastTokenIdentifier> GetEmptySchemaName(TmvBaseSQLContext* context) const override;

 private:
  TmvBaseSyntaxProvider* Internal() const { return GetSyntaxProviderInternal(); }
  // Detects once, before an operation that needs a connection.
  void EnsureDetected(TmvBaseSQLContext* context);
  void SetInner(TmvOwned<TmvBaseSyntaxProvider> provider);
  void InnerUpdated(TmvObject* sender);

  TmvOwned<TmvBaseSyntaxProvider> inner_;
};

// The provider class that serves the server behind `metadataProvider`: the
// first registered class sure of it, else the first that may serve it; null
// when none, or when a probe is all that fails.
const TmvSyntaxProviderClass* AutodetectSyntaxProvider(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner);

}  // namespace mv
