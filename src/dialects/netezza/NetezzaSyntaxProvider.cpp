#include "dialects/netezza/NetezzaSyntaxProvider.h"

#include "NetezzaPars.h"
#include "NetezzaScan.h"
#include "dialects/netezza/NetezzaCatalog.h"
#include "dialects/netezza/NetezzaNodes.h"
#include "dialects/pgsql/PGSQLSyntaxProvider.h"
#include "frontend/KeywordResources.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvNetezzaSyntaxProvider, TmvSQL2003SyntaxProvider)

const char* const kNetezzaKeywords =
    "abort admin aggregate align all allocate analyse analyze and anytoken as asc between binary bit both case "
    "cast char character check cluster coalesce collate collation column constraint copy cross current "
    "currentcatalog currentdate currentdb currentschema currentsid currenttime currenttimestamp currentuser "
    "currentuserid currentuseroid deallocate dec decimal decode default deferrable desc distinct distribute do "
    "else endtoken except exclude exists explain express extend external extract false first float following "
    "for foreign fromtoken full function genstats global group having identifiercase ilike in index initially "
    "inner inout intersect interval into leading left like limit listen load local lock materialized minus move "
    "natural nchar new not notnull null nullif nulls numeric nvl nvl2 off offset old on online only or order "
    "others out outer over overlaps partition position preceding precision preserve primary reset reuse right "
    "rows rowsetlimit rule search select sequence sessionuser setof show some substring system table then ties "
    "time timestamp totoken trailing transaction trigger trim true unbounded union unique user using vacuum "
    "varchar verbose version view when where with write";

namespace {

// The number of a limit text; anything but a non-negative integer that fits
// raises, naming the text.
int32_t RowCount(WideStringView text, const char16_t* what) {
  int64_t value = 0;
  bool ok = !text.empty() && text.size() <= 10;
  for (char16_t c : text) ok = ok && c >= u'0' && c <= u'9' && (value = value * 10 + (c - u'0')) <= INT32_MAX;
  if (!ok) throw EmvQueryBuilderError(WideString(u"The ") + what + u" \"" + WideString(text) + u"\" is not a whole number");
  return static_cast<int32_t>(value);
}

}  // namespace

TmvNetezzaSyntaxProvider::TmvNetezzaSyntaxProvider() : TmvSQL2003SyntaxProvider("TmvNetezzaSyntaxProvider") {
  RegisterExtender(TSQLSubSelectStatement::StaticClass(), TmvNetezzaSubSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSelectStatement::StaticClass(), TmvNetezzaSelectStatementExtender::StaticClass());
}

void TmvNetezzaSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_NetezzaNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kNetezzaKeywords);
}

const TmvScannerClass& TmvNetezzaSyntaxProvider::GetScannerClass() const { return NetezzaScanner::ScannerClass(); }

const TmvParserClass& TmvNetezzaSyntaxProvider::GetParserClass() const { return NetezzaParser::ParserClass(); }

std::vector<int32_t> TmvNetezzaSyntaxProvider::GetStringTokenIds() const { return {NetezzaScanner::tkStringToken}; }

void TmvNetezzaSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  TmvPGSQLSyntaxProvider().GetBuiltinFunctionNames(list);
}

bool TmvNetezzaSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"character", u"varchar", u"character varying", u"bit", u"varbit", u"bit varying"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

bool TmvNetezzaSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                              WideString& count) const {
  offset.clear();
  count.clear();
  if (!statement) return false;
  auto* extender = NetezzaExtenderOf(statement);
  if (!extender) return true;
  if (extender->Limit) count = IntToWide(extender->Limit->Limit);
  if (extender->Offset) offset = IntToWide(extender->Offset->Offset);
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvNetezzaSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                                WideStringView offset,
                                                                                WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  auto* extender = NetezzaExtenderOf(result.get());
  if (!extender) throw EmvQueryBuilderError(u"The statement was not made by the Netezza syntax provider");
  extender->Limit.Reset();
  if (!count.empty()) {
    auto limit = TastCreate<TSQLLimit>(context);
    limit->Limit = RowCount(count, u"row count");
    extender->Limit.Set(std::move(limit));
  }
  extender->Offset.Reset();
  if (!offset.empty()) {
    auto node = TastCreate<TSQLOffset>(context);
    node->Offset = RowCount(offset, u"row offset");
    extender->Offset.Set(std::move(node));
  }
  result->PrepareAndFixupRecursive();
  return result;
}

TmvSyntaxSupportConectedServer TmvNetezzaSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* /*owner*/) const {
  return IsConnectedServerIsNetezza(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
}

TmvOwned<TSQLQualifiedName> TmvNetezzaSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                             TmvConnection* connection) {
  if (auto name = GetDefaultDatabaseNameNetezza(context, connection)) return name;
  return TmvSQL2003SyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvNetezzaSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TSQLIdentifiersCollection& names) {
  if (!GetDefaultSchemaNamesNetezza(context, connection, names))
    TmvSQL2003SyntaxProvider::GetDefaultSchemaNames(context, connection, names);
}

void TmvNetezzaSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                              std::vector<WideString>& list, const TSQLQualifiedName* database) {
  if (!GetSchemasListNetezza(context, connection, database, list))
    TmvSQL2003SyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvNetezzaSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                   const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsNetezza(context, connection, container, filter, database))
    TmvSQL2003SyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvNetezzaSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                     const TSQLQualifiedName* database) {
  if (!LoadMetadataRelationsNetezza(context, connection, container, filter, database))
    TmvSQL2003SyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvNetezzaSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                             TmvMetadataObject* object) {
  LoadFieldsForObjectNetezza(context, connection, object);
}

}  // namespace mv
