// The ANSI SQL-92 provider: the reference dialect whose grammar all others
// are told against. Its answers are the contract's defaults, with
// case-insensitive names, Except and Intersect among the set operators, and
// the SQL-92 built-in functions.
#pragma once

#include "frontend/SyntaxProvider.h"

namespace mv {

class TmvSQL92SyntaxProvider : public TmvBaseSyntaxProvider {
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
  void GetUnionOperatorsList(std::vector<WideString>& list) const override;
  bool IsFixedSizeType(WideStringView typeName) const override;
  WideString ServerName() const override { return u"ANSI SQL92"; }

  // Metadata from INFORMATION_SCHEMA queries; while false every metadata
  // operation is the base's.
  bool GetUseInformationSchema() const { return useInformationSchema_; }
  void SetUseInformationSchema(bool value) { useInformationSchema_ = value; }

 private:
  bool useInformationSchema_ = false;
};

// The types whose size the ANSI providers print: the character and binary
// types (IsFixedSizeType is false for them).
bool IsAnsiSizedType(WideStringView typeName);

}  // namespace mv
