// The provider of Teradata: no versions, no row limits (a request raises),
// the keyword list of the base, its scanner and parser, the extenders of
// its strings, Unicode names and selects (TOP and QUALIFY), and its catalog
// through the DBC views (TeradataCatalog.h).
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvTeradataSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvTeradataSyntaxProvider();

  // Registers the provider class and its node classes with the engine;
  // InitializeEngine calls it. It has no keyword resource: the list is the
  // base's.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  // True and False read as names only where no value may stand, so they
  // keep their quotes.
  bool IsValidIdent(WideStringView text) const override;

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for char, varchar, varying, binary and varbinary.
  bool IsFixedSizeType(WideStringView typeName) const override;
  // SEL is Teradata's short SELECT.
  bool IsSelectKeyword(WideStringView upperCaseWord) const override {
    return upperCaseWord == u"SELECT" || upperCaseWord == u"SEL";
  }

  // The probe of dbc.dbcinfo; without SQL the base.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  // The DBC views; where the server refuses, the metadata provider's.
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                      const TSQLQualifiedName* database) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // The current database only, nothing when it cannot be read.
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                             TSQLIdentifiersCollection& names) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
};

}  // namespace mv
