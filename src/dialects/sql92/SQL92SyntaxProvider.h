// The ANSI SQL-92 provider: the reference dialect whose grammar all others
// are told against. Its capability answers, texts and name lists are its row
// of the capability matrix (case-insensitive names, Except and Intersect
// among the set operators); its own are the SQL-92 built-in functions.
#pragma once

#include "dialects/sql92/InformationSchemaSyntaxProvider.h"

namespace mv {

class TmvSQL92SyntaxProvider : public TmvInformationSchemaSyntaxProvider {
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
};

// The types whose size the ANSI providers print: the character and binary
// types (IsFixedSizeType is false for them).
bool IsAnsiSizedType(WideStringView typeName);

}  // namespace mv
