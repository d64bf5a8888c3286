// The ANSI SQL-2003 provider: common table expressions, NULLS FIRST and
// LAST, universal expressions, a procedure as a source written in TABLE( ),
// the SQL-2003 built-in functions and reserved words. Its capability answers,
// texts and name lists are its row of the capability matrix.
#pragma once

#include "dialects/sql92/InformationSchemaSyntaxProvider.h"

namespace mv {

class TmvSQL2003SyntaxProvider : public TmvInformationSchemaSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvSQL2003SyntaxProvider();

  // Registers the provider class and its keyword resource with the engine;
  // InitializeEngine calls it.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // TRUE and FALSE read as names only where no constant may stand, so a
  // name spelled so is always quoted.
  bool IsValidIdent(WideStringView text) const override;
  bool IsFixedSizeType(WideStringView typeName) const override;
  // "TABLE(" + call + ")", and the same around a procedure source in print.
  WideString CreateWrapperForStoredProc(WideStringView call) const override;
  void BeginBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;
  void EndBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;

 protected:
  // A provider built on this one that has its own row of the capability
  // matrix.
  explicit TmvSQL2003SyntaxProvider(std::string_view className) : TmvInformationSchemaSyntaxProvider(className) {}
};

// The reserved words of SQL-2003, separated by blanks.
extern const char* const kSQL2003Keywords;

}  // namespace mv
