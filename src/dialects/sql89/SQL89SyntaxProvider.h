// The ANSI SQL-89 provider: sources listed with commas only (no joined
// tables, hence no ANSI or cross joins), case-sensitive names folded to upper
// case, no built-in functions, and the base provider's reserved words. Its
// capability answers, texts and name lists are its row of the capability
// matrix.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvSQL89SyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvSQL89SyntaxProvider();

  // Registers the provider class with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  bool IsFixedSizeType(WideStringView typeName) const override;
};

}  // namespace mv
