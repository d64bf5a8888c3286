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
};

}  // namespace mv
