// The ANSI SQL-92 provider: the reference dialect whose grammar all others
// are told against. Its capability answers, texts and name lists are its row
// of the capability matrix (case-insensitive names, Except and Intersect
// among the set operators); its own are the SQL-92 built-in functions.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvSQL92SyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvSQL92SyntaxProvider();

  // Registers the dialect with the engine: the provider class and its
  // keyword resource. InitializeEngine calls it.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  bool IsFixedSizeType(WideStringView typeName) const override;

  // Metadata from INFORMATION_SCHEMA queries; while false every metadata
  // operation is the base's.
  bool GetUseInformationSchema() const { return useInformationSchema_; }
  void SetUseInformationSchema(bool value) { useInformationSchema_ = value; }
  // With UseInformationSchema: the default database, objects, relations
  // and fields from INFORMATION_SCHEMA, the base where that gives no answer.
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

 private:
  bool useInformationSchema_ = false;
};

// The types whose size the ANSI providers print: the character and binary
// types (IsFixedSizeType is false for them).
bool IsAnsiSizedType(WideStringView typeName);

}  // namespace mv
