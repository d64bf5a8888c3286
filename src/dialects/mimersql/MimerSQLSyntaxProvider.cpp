#include "dialects/mimersql/MimerSQLSyntaxProvider.h"

#include "MimerSQLPars.h"
#include "MimerSQLScan.h"
#include "dialects/mimersql/MimerSQLCatalog.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
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

TmvSyntaxSupportConectedServer TmvMimerSQLSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* /*owner*/) const {
  return IsConnectedServerIsMimerSQL(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
}

TmvOwned<TSQLQualifiedName> TmvMimerSQLSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* /*context*/,
                                                                              TmvConnection* /*connection*/) {
  return nullptr;
}

void TmvMimerSQLSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                    const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsMimerSQL(context, connection, container, filter, database))
    TmvSQL2003SyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvMimerSQLSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                      TmvMetadataContainer* container,
                                                      const TmvMetadataFilter* filter,
                                                      const TSQLQualifiedName* database) {
  if (!LoadMetadataRelationsMimerSQL(context, connection, container, filter, database))
    TmvSQL2003SyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvMimerSQLSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                              TmvMetadataObject* object) {
  LoadFieldsForObjectMimerSQL(context, connection, object);
}

}  // namespace mv
