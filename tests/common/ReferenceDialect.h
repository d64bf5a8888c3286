// The dialect the tests of the core parse with, reached through the engine's
// registry like any host would: the core's tests never name a concrete
// dialect's class. TReferenceDialectProvider answers as the registered
// SQL-92 provider does, and tests derive from it to change an answer.
#pragma once

#include "frontend/SyntaxProvider.h"

namespace mvtest {

// The class name of the reference dialect in the registry.
inline constexpr const char* kReferenceDialect = "TmvSQL92SyntaxProvider";

// A new provider of the reference dialect (InitializeEngine is called first).
mv::TmvOwned<mv::TmvBaseSyntaxProvider> NewReferenceProvider();

class TReferenceDialectProvider : public mv::TmvBaseSyntaxProvider {
 public:
  TReferenceDialectProvider();

  const mv::TmvScannerClass& GetScannerClass() const override { return reference_->GetScannerClass(); }
  const mv::TmvParserClass& GetParserClass() const override { return reference_->GetParserClass(); }
  std::vector<int32_t> GetStringTokenIds() const override { return reference_->GetStringTokenIds(); }
  void GetBuiltinFunctionNames(mv::TSQLQualifiedNamesList& list) const override {
    reference_->GetBuiltinFunctionNames(list);
  }
  void GetUnionOperatorsList(std::vector<mv::WideString>& list) const override {
    reference_->GetUnionOperatorsList(list);
  }
  bool IsFixedSizeType(mv::WideStringView typeName) const override { return reference_->IsFixedSizeType(typeName); }
  mv::WideString GetEditPropsFormClass(mv::TmvEditPropsTarget target) const override {
    return reference_->GetEditPropsFormClass(target);
  }
  mv::WideString ServerName() const override { return reference_->ServerName(); }

 private:
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> reference_;
};

}  // namespace mvtest
