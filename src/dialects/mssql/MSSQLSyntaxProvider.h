// The providers of SQL Server and SQL Server Compact Edition. The server
// version decides the parser's language level, the capability answers that
// depend on it and how a row limit is written (TOP; a ROW_NUMBER() wrapper
// for 2005 and 2008; OFFSET and FETCH otherwise). The extenders of
// MSSQLNodes.h are registered with each provider.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

enum TmvQBServerVersionMSSQL : uint8_t {
  svMSSQLAuto,
  svMSSQL7,
  svMSSQL2000,
  svMSSQL2005,
  svMSSQL2008,
  svMSSQL2012,
  svMSSQL2014,
};

class TmvMSSQLSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvMSSQLSyntaxProvider();

  // Registers both providers and their keyword resources with the engine.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The language level of the version (7 to 12; 12 while the version is
  // detected) and DenyIntoClause.
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  TmvQBServerVersionMSSQL GetServerVersion() const { return serverVersion_; }
  // Detection is on exactly when the new version is svMSSQLAuto.
  void SetServerVersion(TmvQBServerVersionMSSQL value);
  bool CanDetectServerVersion() const override { return true; }
  // On: the version goes to svMSSQLAuto; off while it is svMSSQLAuto: to 2008.
  void SetDetectServerVersion(bool value) override;
  // The version of a server's major version number (7 to 12); others leave
  // the version as it is.
  void SetServerVersionFromMajor(int major);
  const WideString& GetDefaultSchema() const { return defaultSchema_; }
  void SetDefaultSchema(WideStringView value) { defaultSchema_ = WideString(value); }

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // A name the scanner would read as a variable, a system variable or a
  // binary constant is quoted.
  bool IsValidIdent(WideStringView text) const override;
  bool IsFixedSizeType(WideStringView typeName) const override;
  bool IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const override;
  // The server's answer (the user's schema), else the metadata provider's;
  // DefaultSchema ("dbo") beside it.
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                             TSQLIdentifiersCollection& names) override;

  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // --- The server's catalog (MSSQLCatalog.h); each load first reads the
  // version when DetectServerVersion is on, and falls back on the metadata
  // provider when the catalog gives no answer. ---
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  // The base, then the version the server reports.
  void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) override;
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                      const TSQLQualifiedName* database) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // The server has no catalog query of its own for these: the version is
  // detected first (as for every catalog load), then the base answers.
  void LoadMetadataCustomAggregateNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                        TmvMetadataContainer* container, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

  WideString GetDateString(TmvDateTime value) const override;
  WideString GetTimeString(TmvDateTime value) const override;
  WideString GetDateTimeString(TmvDateTime value) const override;
  WideString GetDate(const TSQLExpressionItem* expression) const override;
  WideString GetTime(const TSQLExpressionItem* expression) const override;
  WideString GetDateTime(const TSQLExpressionItem* expression) const override;
  // The unquoted string of Convert(typeName, 'text'[, style]); empty for
  // anything else.
  static WideString GetConvertedStringValue(const TSQLExpressionItem* expression, WideStringView typeName);

 protected:
  explicit TmvMSSQLSyntaxProvider(std::string_view className);
  void RegisterExtenders();
  // Reads the version first when DetectServerVersion is on.
  void DetectServerVersionIfNeeded(TmvBaseSQLContext* context);
  // The major version number of ServerVersion (12 while it is detected).
  int ServerMajor() const;

 private:
  TmvQBServerVersionMSSQL serverVersion_ = svMSSQLAuto;
  WideString defaultSchema_ = u"dbo";
};

class TmvMSSQLCESyntaxProvider : public TmvMSSQLSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvMSSQLCESyntaxProvider();

  bool CanDetectServerVersion() const override { return false; }
  // The compact edition's probe; on scsDontKnow the server's.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  // Sets svMSSQLAuto only.
  void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) override;
  // Tables and foreign keys of INFORMATION_SCHEMA, without schemas.
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // The top count only.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // A TOP of the count; an offset is not applied.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;
};

// The reserved words of SQL Server, separated by blanks.
extern const char* const kMSSQLKeywords;

}  // namespace mv
