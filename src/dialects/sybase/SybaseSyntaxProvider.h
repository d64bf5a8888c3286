// The provider of the two Sybase families, ASA and ASE. The server version
// decides the parser's language level (9 for ASA, which opens EXCEPT,
// INTERSECT and the truth tests; 0 for ASE) and the capability answers that
// depend on it (common table expressions, EXCEPT and INTERSECT for ASA
// only). A row limit is the TOP of the select expression (SybaseNodes.h);
// the catalog is probed and read as SybaseCatalog.h says.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

enum TmvQBServerVersionSybase : uint8_t {
  svSybaseASA,
  svSybaseASE,
};

class TmvSybaseSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvSybaseSyntaxProvider();

  // Registers the provider class, its node classes and its keyword resource
  // with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The language level of the version: 9 for ASA, 0 for ASE.
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  TmvQBServerVersionSybase GetServerVersion() const { return serverVersion_; }
  // A new value sends the provider's notifications.
  void SetServerVersion(TmvQBServerVersionSybase value);
  bool CanDetectServerVersion() const override { return true; }
  // The base, then ASA when the server answers the ASA probe, ASE otherwise.
  void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) override;
  // The schema added for unqualified names ("dbo").
  const WideString& GetDefaultSchema() const { return defaultSchema_; }
  void SetDefaultSchema(WideStringView value) { defaultSchema_ = WideString(value); }

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for the types that take a length (char, nchar, varchar, nvarchar,
  // binary, varbinary), true for all others.
  bool IsFixedSizeType(WideStringView typeName) const override;

  // True with one select expression that has a top: the count of TOP n (its
  // start is not read as an offset), "1" for FIRST. The offset stays empty.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // The clone, a union wrapped first, with TOP count on its select
  // expression; the offset is not applied (IsSupportLimitOffset is false).
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // --- The catalog (SybaseCatalog.h); each load first reads the version
  // when DetectServerVersion is on, and falls back on the metadata provider
  // when the catalog gives no answer. ---
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  // The server's answer (the user's name), else the metadata provider's;
  // DefaultSchema beside it.
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                             TSQLIdentifiersCollection& names) override;
  void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) override;
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                      const TSQLQualifiedName* database) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // ASA's or ASE's catalog by the version.
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

 private:
  // Reads the version first when DetectServerVersion is on.
  void DetectServerVersionIfNeeded(TmvBaseSQLContext* context);

  TmvQBServerVersionSybase serverVersion_ = svSybaseASA;
  WideString defaultSchema_ = u"dbo";
};

// The keyword list of Sybase, separated by blanks.
extern const char* const kSybaseKeywords;

}  // namespace mv
