#include "dialects/sql92/SQL92SyntaxProvider.h"

#include "SQL92Pars.h"
#include "SQL92Scan.h"
#include "frontend/KeywordResources.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/fetchers/InformationSchemaCatalog.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvSQL92SyntaxProvider, TmvBaseSyntaxProvider)

TmvSQL92SyntaxProvider::TmvSQL92SyntaxProvider() : TmvInformationSchemaSyntaxProvider("TmvSQL92SyntaxProvider") {}

void TmvSQL92SyntaxProvider::RegisterDialect() {
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  // The SQL-92 reserved words are the base provider's.
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kBaseSyntaxProviderKeywords);
}

const TmvScannerClass& TmvSQL92SyntaxProvider::GetScannerClass() const { return SQL92Scanner::ScannerClass(); }

const TmvParserClass& TmvSQL92SyntaxProvider::GetParserClass() const { return SQL92Parser::ParserClass(); }

std::vector<int32_t> TmvSQL92SyntaxProvider::GetStringTokenIds() const { return {SQL92Scanner::tkStringToken}; }

void TmvSQL92SyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name : {u"Position", u"Char_Length", u"Character_Length", u"Octet_Length", u"Bit_Length",
                               u"Extract", u"SubString", u"Upper", u"Lower", u"Convert", u"Translate", u"Trim",
                               u"Current_Time", u"Current_Timestamp", u"NullIf", u"Coalesce"})
    list.AddBuiltin(name);
}

bool TmvSQL92SyntaxProvider::IsFixedSizeType(WideStringView typeName) const { return !IsAnsiSizedType(typeName); }

bool IsAnsiSizedType(WideStringView typeName) {
  // "national chararacter" is spelled so in the list the ANSI providers
  // share; the correctly spelled name therefore counts as fixed.
  static constexpr const char16_t* kSized[] = {
      u"char",          u"character",          u"nchar",     u"national char",          u"national chararacter",
      u"varchar",       u"char varying",       u"character varying", u"nvarchar",      u"national char varying",
      u"national character varying", u"binary", u"varbinary"};
  for (const char16_t* name : kSized)
    if (WideSameText(name, typeName)) return true;
  return false;
}

}  // namespace mv
