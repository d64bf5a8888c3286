// The provider of Netezza: the SQL-2003 provider with PostgreSQL's row
// limits (LIMIT and OFFSET on the statement, whole numbers only) and
// built-in names, its own keyword list and its scanner and parser. The
// catalog statements of the family are in NetezzaCatalogQueries.h.
#pragma once

#include "dialects/sql2003/SQL2003SyntaxProvider.h"

namespace mv {

class TmvNetezzaSyntaxProvider : public TmvSQL2003SyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvNetezzaSyntaxProvider();

  // Registers the provider class, its node classes and its keyword resource
  // with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;

  // PostgreSQL's names.
  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for char, character, varchar, character varying, bit, varbit and
  // bit varying.
  bool IsFixedSizeType(WideStringView typeName) const override;

  // The catalog of the server (NetezzaCatalog.h); each operation but the
  // probe and the fields falls back on the base where the server refuses.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                             TSQLIdentifiersCollection& names) override;
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                      const TSQLQualifiedName* database) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

  // True for any statement: the texts of its LIMIT and OFFSET.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // The clone with LIMIT count and OFFSET offset, each only for a text that
  // is not empty; a text that is no whole number raises.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;
};

// The keyword list of Netezza, separated by blanks.
extern const char* const kNetezzaKeywords;

}  // namespace mv
