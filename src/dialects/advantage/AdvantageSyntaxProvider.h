// The provider of Advantage Database Server. A row limit is TOP count
// [START AT offset] on the one select expression; a statement of more
// selects is wrapped first. The catalog statements of the family are in
// AdvantageCatalogQueries.h.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvAdvantageSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvAdvantageSyntaxProvider();

  // Registers the provider class, its node classes and its keyword resource
  // with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  // A name that starts with "[" reads as a name in brackets: it is valid
  // only quoted.
  bool IsValidIdent(WideStringView text) const override;

  // The catalog of the server (AdvantageCatalog.h) by its system
  // procedures; each operation but the probe and the fields falls back on
  // the base where the server refuses.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                        std::vector<WideString>& list) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for char, varchar, binary and varbinary.
  bool IsFixedSizeType(WideStringView typeName) const override;

  // True with one select expression that has a top: its count and its start
  // as texts for the server; a top in percent gives no texts.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // The clone, a union wrapped first, with Top count Start At offset on its
  // select (each part only for a text that is not empty), or no top at all.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // 'yyyy-mm-dd', 'yyyy-mm-dd hh:nn:ss', 'hh:nn:ss'.
  WideString GetDateString(TmvDateTime value) const override;
  WideString GetDateTimeString(TmvDateTime value) const override;
  WideString GetTimeString(TmvDateTime value) const override;
  // The text of a lone string constant, brackets around it left out; empty
  // for anything else.
  WideString GetDate(const TSQLExpressionItem* expression) const override;
  WideString GetTime(const TSQLExpressionItem* expression) const override;
  WideString GetDateTime(const TSQLExpressionItem* expression) const override;
};

// The keyword list of Advantage, separated by blanks.
extern const char* const kAdvantageKeywords;

}  // namespace mv
