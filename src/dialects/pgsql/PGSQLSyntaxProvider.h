// The PostgreSQL provider. It has no server versions. Its comparison
// operators are a property: the parser reads a listed operator as a
// comparison and any other run of operator characters as a generic
// operator, so changing the list changes how the same text parses. LIMIT and
// OFFSET sit on the statement, so a row limit never needs a wrapper.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvPGSQLSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvPGSQLSyntaxProvider();

  // Registers the provider, its node classes and its keyword resource.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The base's settings, DenyIntoClause and the comparison operators.
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;

  const std::vector<WideString>& GetComparisonOperatorsProperty() const { return comparisonOperators_; }
  void SetComparisonOperators(const std::vector<WideString>& value);
  // The comma text of the property ("=,>,<").
  void SetComparisonOperatorsText(WideStringView commaText);
  void GetComparisonOperators(std::vector<std::string>& list) const override;

  // The resource POSTGRESQLSYNTAXPROVIDER_KEYWORDS.
  std::vector<WideString> GetKeywords() const override;
  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for the character and bit types that take a length.
  bool IsFixedSizeType(WideStringView typeName) const override;
  // The base's answer, or the first select's INTO clause.
  bool IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const override;

  // True for any statement (texts empty without limits); false for none.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // A clone with LIMIT and OFFSET set from the texts (integers) on the
  // statement itself, a union included.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // --- The server's catalog (PGSQLCatalog.h). The probe decides unless it
  // cannot run SQL; each load falls back on the base where the catalog gives
  // no answer. ---
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
  // The server's aggregates of one argument beside the dialect's.
  void LoadMetadataCustomAggregateNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                        TmvMetadataContainer* container, const TSQLQualifiedName* database) override;
  // Types, sizes, nullability, defaults, primary key and comments from pg_attribute.
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
  // --- end of the server's catalog ---

 private:
  std::vector<WideString> comparisonOperators_;
};

// The reserved words of PostgreSQL, separated by blanks, and the name of
// their resource.
extern const char* const kPostgreSQLKeywords;
extern const char* const kPostgreSQLKeywordResource;

}  // namespace mv
