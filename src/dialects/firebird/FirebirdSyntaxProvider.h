// The Firebird provider. Its server version gives the parser a language
// level (CASE from 1.5, derived tables from 2, IS DISTINCT FROM and SIMILAR
// TO from 2.5) and decides the capability answers that depend on it; it is
// set, never detected. A row limit is FIRST/SKIP on the one select of the
// statement; a union is wrapped first.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

enum TmvFirebirdVersion : uint8_t {
  svFirebird1,
  svFirebird1_5,
  svFirebird2,
  svFirebird2_5,
};

class TmvFirebirdSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvFirebirdSyntaxProvider();

  // Registers the provider, its node classes and its keyword resource.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The base's settings, DenyIntoClause and the language level of the
  // version (10, 15, 20, 25).
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  TmvFirebirdVersion GetServerVersion() const { return serverVersion_; }
  // Notifies only on a new value.
  void SetServerVersion(TmvFirebirdVersion value);
  // The level SetParserParams gives the parser for a version.
  static int32_t LanguageLevel(TmvFirebirdVersion version);

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for the character types that take a length.
  bool IsFixedSizeType(WideStringView typeName) const override;

  // True for a statement of one select with FIRST [SKIP]: the count is the
  // First text and the offset the Skip text, as the server reads them.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // A clone whose one select (a union is wrapped first) has FIRST count
  // SKIP offset, each only when given; bad text raises the parser's error.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // --- The server's catalog (FirebirdCatalog.h): the probe decides unless
  // it cannot run SQL; objects and fields fall back on the base where the
  // catalog gives no answer. Relations and databases stay with the base. ---
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // RDB$RELATION_FIELDS with the domain, or the type's name for a domain of the server's own.
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
  // --- end of the server's catalog ---

 private:
  TmvFirebirdVersion serverVersion_ = svFirebird2;
};

// The reserved words of Firebird, separated by blanks, and the name of
// their resource.
extern const char* const kFirebirdKeywords;
extern const char* const kFirebirdKeywordResource;

}  // namespace mv
