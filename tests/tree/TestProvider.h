// A syntax provider for tests whose answers are plain settable fields.
#pragma once

#include <vector>

#include "ReferenceDialect.h"
#include "frontend/SyntaxProvider.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

class TTestSyntaxProvider : public TmvBaseSyntaxProvider {
 public:
  WideString quoteBegin = u"\"";
  WideString quoteEnd = u"\"";
  // Words that cannot stand as bare identifiers.
  std::vector<WideString> reserved = {u"select", u"from", u"where", u"order", u"group", u"table", u"and", u"or"};
  std::vector<const char16_t*> builtinFunctions;
  bool bracketsInComplexJoin = false;
  bool emptyBrackets = true;
  bool innerMandatory = false;
  bool outerMandatory = false;
  bool asInExpressionAliasMandatory = false;
  bool asInObjectAliasMandatory = false;
  bool objectNamesAsAliases = false;
  bool databases = true;
  bool schemas = true;
  WideString objectNameSeparator = u".";

  // The reference dialect's grammar reads names; the fields below decide the rest.
  const TmvScannerClass& GetScannerClass() const override { return reference_->GetScannerClass(); }
  const TmvParserClass& GetParserClass() const override { return reference_->GetParserClass(); }
  std::vector<int32_t> GetStringTokenIds() const override { return reference_->GetStringTokenIds(); }

  WideString GetQuoteBegin() const override { return quoteBegin; }
  WideString GetQuoteEnd() const override { return quoteEnd; }
  // Letters, digits, "_" and "$", not starting with a digit, not reserved.
  bool IsValidIdent(WideStringView text) const override {
    if (text.empty() || (text[0] >= u'0' && text[0] <= u'9')) return false;
    for (char16_t c : text) {
      bool ok = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' ||
                c == u'$' || c >= 0x80;
      if (!ok) return false;
    }
    for (const WideString& word : reserved)
      if (WideSameText(word, text)) return false;
    return true;
  }
  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override {
    list.Clear();
    for (const char16_t* name : builtinFunctions) list.AddBuiltin(name);
  }
  bool IsBracketsInComplexJoinMandatory() const override { return bracketsInComplexJoin; }
  bool IsSupportEmptyBracketsInStoredProcs() const override { return emptyBrackets; }
  bool IsInnerKeywordInLinksMandatory() const override { return innerMandatory; }
  bool IsOuterKeywordInLinksMandatory() const override { return outerMandatory; }
  bool IsAsKeywordInExpressionAliasMandatory() const override { return asInExpressionAliasMandatory; }
  bool IsAsKeywordInObjectAliasMandatory() const override { return asInObjectAliasMandatory; }
  bool GetUseObjectNamesAsDefaultAliases() const override { return objectNamesAsAliases; }
  bool IsSupportDatabases() const override { return databases; }
  bool IsSupportSchemas() const override { return schemas; }
  WideString GetObjectNameSeparator() const override { return objectNameSeparator; }

 private:
  TmvOwned<TmvBaseSyntaxProvider> reference_ = mvtest::NewReferenceProvider();
};

}  // namespace mv
