#include "dialects/mimersql/MimerSQLSyntaxProvider.h"

#include "MimerSQLPars.h"
#include "MimerSQLScan.h"
#include "frontend/SyntaxProvidersList.h"
#include "support/TextHelpers.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvMimerSQLSyntaxProvider, TmvSQL2003SyntaxProvider)

TmvMimerSQLSyntaxProvider::TmvMimerSQLSyntaxProvider() : TmvSQL2003SyntaxProvider("TmvMimerSQLSyntaxProvider") {}

void TmvMimerSQLSyntaxProvider::RegisterDialect() {
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
}

const TmvScannerClass& TmvMimerSQLSyntaxProvider::GetScannerClass() const { return MimerSQLScanner::ScannerClass(); }

const TmvParserClass& TmvMimerSQLSyntaxProvider::GetParserClass() const { return MimerSQLParser::ParserClass(); }

std::vector<int32_t> TmvMimerSQLSyntaxProvider::GetStringTokenIds() const {
  return {MimerSQLScanner::tkStringToken, MimerSQLScanner::tkNationalStringToken, MimerSQLScanner::tkHexStringToken,
          MimerSQLScanner::tkUnicodeStringToken};
}

bool TmvMimerSQLSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized :
       {u"char", u"character", u"character large object", u"char large object", u"clob", u"varchar", u"char varying",
        u"character varying", u"nchar", u"national char", u"national character", u"national character large object",
        u"national char large object", u"nchar large object", u"nclob", u"nvarchar", u"nchar varying",
        u"national char varying", u"national character varying", u"binary", u"binary varying", u"varbinary",
        u"binary large object", u"blob"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

WideString TmvMimerSQLSyntaxProvider::CreateWrapperForStoredProc(WideStringView call) const {
  return WideString(call);
}

void TmvMimerSQLSyntaxProvider::BeginBuildWrapperForStoredProc(TSQLBuilder&, const TSQLBuilderSelectFormat&) const {}

void TmvMimerSQLSyntaxProvider::EndBuildWrapperForStoredProc(TSQLBuilder&, const TSQLBuilderSelectFormat&) const {}

}  // namespace mv
