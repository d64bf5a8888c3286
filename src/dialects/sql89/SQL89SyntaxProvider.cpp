#include "dialects/sql89/SQL89SyntaxProvider.h"

#include "SQL89Pars.h"
#include "SQL89Scan.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SyntaxProvidersList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvSQL89SyntaxProvider, TmvBaseSyntaxProvider)

TmvSQL89SyntaxProvider::TmvSQL89SyntaxProvider() : TmvMatrixSyntaxProvider("TmvSQL89SyntaxProvider") {}

// No keyword resource of its own: GetKeywords finds the base provider's.
void TmvSQL89SyntaxProvider::RegisterDialect() { SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass()); }

const TmvScannerClass& TmvSQL89SyntaxProvider::GetScannerClass() const { return SQL89Scanner::ScannerClass(); }

const TmvParserClass& TmvSQL89SyntaxProvider::GetParserClass() const { return SQL89Parser::ParserClass(); }

std::vector<int32_t> TmvSQL89SyntaxProvider::GetStringTokenIds() const { return {SQL89Scanner::tkStringToken}; }

bool TmvSQL89SyntaxProvider::IsFixedSizeType(WideStringView typeName) const { return !IsAnsiSizedType(typeName); }

}  // namespace mv
