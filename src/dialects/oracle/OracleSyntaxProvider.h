// The provider of Oracle. The server version decides the parser's language
// level (7 to 10; 11 reads as 10), which opens WITH, the hierarchical
// clause, WAIT and the joins by keyword from 9 and NOCYCLE and SEED from 10,
// and the capability answers that depend on it. A row limit has no clause:
// it is written as ROWNUM conditions in the where of the one select
// expression, and no limit is read back from a query.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

enum TmvQBServerVersionOracle : uint8_t {
  svOracle7,
  svOracle8,
  svOracle9,
  svOracle10,
  svOracle11,
};

class TmvOracleSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvOracleSyntaxProvider();

  // Registers the provider class, its node classes and its keyword resource
  // with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The language level of a version: its number, 10 for Oracle 11.
  static int32_t LanguageLevel(TmvQBServerVersionOracle version);
  void SetParserParams(TmvBaseParser& parser) const override;
  // Strings and national strings (N'...').
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  TmvQBServerVersionOracle GetServerVersion() const { return serverVersion_; }
  // A new value sends the provider's notifications.
  void SetServerVersion(TmvQBServerVersionOracle value);
  bool CanDetectServerVersion() const override { return true; }
  // The base, then the major version from the server's banner; a major
  // outside 7 to 11 leaves the version as it is.
  void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) override;
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  // The session's current schema, else the metadata provider's answer.
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                             TSQLIdentifiersCollection& names) override;
  // The users that own tables, else the metadata provider's answer.
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                      const TSQLQualifiedName* database) override;
  // Objects and foreign keys by the catalog (OracleCatalog.h), else the
  // metadata provider's answer.
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // The columns by the catalog, the object's owner and name as parameters.
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
  // No effect: the grammar has no select into.
  bool GetDenyIntoClause() const { return denyIntoClause_; }
  void SetDenyIntoClause(bool value) { denyIntoClause_ = value; }

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for the types that take a length (char, nchar, varchar, nvarchar,
  // varchar2, nvarchar2, raw), true for all others.
  bool IsFixedSizeType(WideStringView typeName) const override;
  // "PUBLIC", the schema of a public synonym.
  TmvOwned<TastTokenIdentifier> GetEmptySchemaName(TmvBaseSQLContext* context) const override;
  // TABLE(call), and "Table(" ... ")" around a procedure used as a source.
  WideString CreateWrapperForStoredProc(WideStringView call) const override;
  void BeginBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;
  void EndBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;
  // The base, then the dialect's aggregates of one name part.
  bool CalcAggregateCallType(TSQLExpressionAggregate* aggregate) const override;
  // The base, then the dialect's functions of one name part by the table of
  // result types.
  bool CalcFunctionCallType(TSQLExpressionFunction* function) const override;

  // Always false with both texts empty: a ROWNUM condition is an ordinary
  // condition here.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // The clone (a union wrapped first) with RowNum > offset and RowNum <= the
  // last row put before the where condition in one And.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // to_date('yyyy-mm-dd', 'YYYY-MM-DD') and its time forms.
  WideString GetDateString(TmvDateTime value) const override;
  WideString GetTimeString(TmvDateTime value) const override;
  WideString GetDateTimeString(TmvDateTime value) const override;
  // The string of a to_date('...', ...) call, else the base.
  WideString GetDate(const TSQLExpressionItem* expression) const override;
  WideString GetTime(const TSQLExpressionItem* expression) const override;
  WideString GetDateTime(const TSQLExpressionItem* expression) const override;
  // The first argument of a call of to_date when it is a string constant,
  // without its quotes; empty otherwise.
  static WideString GetToDateStringValue(const TSQLExpressionItem* expression);

 private:
  // Reads the version first when DetectServerVersion is on.
  void DetectServerVersionIfNeeded(TmvBaseSQLContext* context);

  TmvQBServerVersionOracle serverVersion_ = svOracle11;
  bool denyIntoClause_ = false;
};

// The keyword list of Oracle, separated by blanks.
extern const char* const kOracleKeywords;

}  // namespace mv
