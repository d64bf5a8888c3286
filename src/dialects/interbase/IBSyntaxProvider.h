// The InterBase provider. It has no server versions and no language
// levels. A row limit is ROWS on the outermost statement, a union's
// included (the dialect has no derived tables to wrap a union in): ROWS
// count for a count alone, ROWS offset + 1 TO offset + count for both.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvIBSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvIBSyntaxProvider();

  // Registers the provider and its node classes; its keywords are the base's.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The base's settings and DenyIntoClause.
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;

  // None.
  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for the character types that take a length.
  bool IsFixedSizeType(WideStringView typeName) const override;

  // True for a ROWS clause without PERCENT on the statement: ROWS n gives
  // the count n; ROWS o + 1 TO o + c (what TransformQueryLimits writes)
  // gives o and c, and ROWS m TO n with whole numbers the offset m - 1 and
  // the count n - m + 1. Any other ROWS answers false.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // A clone with the ROWS clause of the texts. An offset without a count
  // has no ROWS form and raises EmvQueryBuilderError; bad text raises the
  // parser's error.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // --- The server's catalog (IBCatalog.h); objects and fields fall back on
  // the base where the catalog gives no answer. Relations and databases stay
  // with the base. ---
  // The probe's answer, but a server that passes it is only maybe InterBase:
  // Firebird passes the same probe, and its provider, later in the list,
  // claims such a server. Without SQL the base.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // RDB$RELATION_FIELDS with the name of the type.
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
  // --- end of the server's catalog ---
};

}  // namespace mv
