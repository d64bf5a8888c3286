// The provider of Mimer SQL: the SQL-2003 provider with its own scanner and
// parser, names in upper case unless quoted, no row limits (a request
// raises) and no wrapper around a procedure as a source. Its catalog
// statements are in MimerSQLCatalogQueries.h.
#pragma once

#include "dialects/sql2003/SQL2003SyntaxProvider.h"

namespace mv {

class TmvMimerSQLSyntaxProvider : public TmvSQL2003SyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvMimerSQLSyntaxProvider();

  // Registers the provider class with the engine; InitializeEngine calls it.
  // It has no keyword resource: the list is SQL-2003's.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;

  // The catalog of the server (MimerSQLCatalog.h): objects and foreign keys
  // fall back on the base where the server refuses; there is no default
  // database.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

  // False for the character, national character and binary types that take
  // a length, their large-object forms included.
  bool IsFixedSizeType(WideStringView typeName) const override;
  // A procedure as a source is written as it is called.
  WideString CreateWrapperForStoredProc(WideStringView call) const override;
  void BeginBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;
  void EndBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;
};

}  // namespace mv
