// The provider of Informix (versions 8 to 11, read from the server). A row
// limit is SKIP and FIRST, LIMIT or MIDDLE on the one select expression,
// kept and written as plain texts: a text that is no number reaches the
// server as it is. The catalog statements of the family are in
// InformixCatalogQueries.h.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

enum TmvInformixVersion : uint8_t {
  svInformixDS8,
  svInformixDS9,
  svInformixDS10,
  svInformixDS11,
};

class TmvInformixSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvInformixSyntaxProvider();

  // Registers the provider class, its node classes and its keyword resource
  // with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  TmvInformixVersion GetServerVersion() const { return serverVersion_; }
  // A new value sends the provider's notifications.
  void SetServerVersion(TmvInformixVersion value);
  bool CanDetectServerVersion() const override { return true; }
  // The base, then the major version the server names.
  void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) override;
  // The probe of the family (dbinfo from systables): supported when it
  // answers, not when the server refuses it; without SQL the base.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  // The owners of the server's tables, after reading the version when
  // DetectServerVersion is on; where the server refuses, the metadata
  // provider's.
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                      const TSQLQualifiedName* database) override;
  // The server's tables, views and foreign keys, after reading the version
  // when DetectServerVersion is on; where the server refuses, the metadata
  // provider's.
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
  // The version of a major version number: 8, 9 and 10 their own, any other 11.
  static TmvInformixVersion VersionOfMajor(int major);

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for the character types that take a length (char, nchar,
  // varchar, nvarchar and their long forms).
  bool IsFixedSizeType(WideStringView typeName) const override;

  // True with one select expression that has a skip or a count text: the
  // count text, and the skip text as the offset when the word is First or
  // Limit (Middle counts rows around the middle, no offset).
  bool LimitsOfSelect(const TSQLSubQuerySelectExpression* select, WideString& offset, WideString& count) const;
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // The clone, a union wrapped first, with Skip offset and First count on its
  // select expression, the texts taken as they are.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

 private:
  // Reads the version first when DetectServerVersion is on.
  void DetectServerVersionIfNeeded(TmvBaseSQLContext* context);

  TmvInformixVersion serverVersion_ = svInformixDS11;
};

// The keyword list of Informix, separated by blanks.
extern const char* const kInformixKeywords;

}  // namespace mv
