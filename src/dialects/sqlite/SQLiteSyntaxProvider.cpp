#include "dialects/sqlite/SQLiteSyntaxProvider.h"

#include "SQLitePars.h"
#include "SQLiteScan.h"
#include "dialects/sqlite/SQLiteMetadataHelpers.h"
#include "dialects/sqlite/SQLiteNodes.h"
#include "metadata/MetadataProvider.h"
#include "frontend/KeywordResources.h"
#include "frontend/SyntaxProvidersList.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvSQLiteSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kSQLiteKeywords =
    "avg min max sum count like between in order by collate asc desc limit offset union all except intersect where "
    "having select distinct group as from cross join inner left right full outer on or and not is null glob regexp "
    "escape notnull isnull exists case when then else end bigint int8 bigserial serial8 int int4 integer bool "
    "boolean box bytea cidr circle date double precision float8 inet line lseg macaddr money path point polygon real "
    "float4 smallint int2 serial serial4 text time timetz timestamp timestamptz bit varying varbit char character "
    "varchar interval float nchar nvarchar binary varbinary decimal numeric without with zone cast rowid oid";

TmvSQLiteSyntaxProvider::TmvSQLiteSyntaxProvider() : TmvMatrixSyntaxProvider("TmvSQLiteSyntaxProvider") {
  RegisterExtender(TSQLSubSelectStatement::StaticClass(), TSQLtSubSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSelectStatement::StaticClass(), TSQLtSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLOrderByItem::StaticClass(), TSQLOrderByItemExtender::StaticClass());
}

void TmvSQLiteSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_SQLiteNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kSQLiteKeywords);
}

const TmvScannerClass& TmvSQLiteSyntaxProvider::GetScannerClass() const { return SQLiteScanner::ScannerClass(); }

const TmvParserClass& TmvSQLiteSyntaxProvider::GetParserClass() const { return SQLiteParser::ParserClass(); }

std::vector<int32_t> TmvSQLiteSyntaxProvider::GetStringTokenIds() const { return {SQLiteScanner::tkStringToken}; }

void TmvSQLiteSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name :
       {u"Date", u"Time", u"DateTime", u"JulianDay", u"StrfTime", u"Abs", u"Changes", u"Coalesce", u"Glob",
        u"IfNull", u"Hex", u"Last_Insert_Rowid", u"Length", u"Like", u"Load_Eextension", u"Lower", u"LTrim", u"Max",
        u"Min", u"NullIf", u"Quote", u"Random", u"RandomBlob", u"Replace", u"Round", u"RTrim", u"SoundEx",
        u"SQLite_CompileOption_Get", u"SQLite_CompileOption_Used", u"SQLite_Source_Id", u"SQLite_Version", u"SubStr",
        u"Total_Changes", u"Trim", u"TypeOf", u"Upper", u"ZeroBlob"})
    list.AddBuiltin(name);
}

bool TmvSQLiteSyntaxProvider::IsValidIdent(WideStringView text) const {
  return text.empty() || (text.front() != u'[' && text.front() != u'`');
}

// --- Limits ---

bool TmvSQLiteSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                             WideString& count) const {
  offset.clear();
  count.clear();
  if (!statement) return false;
  auto* extender = SQLiteExtenderOf<TSQLtSubSelectStatementExtender>(statement);
  if (const TSQLLimit* limit = extender ? extender->Limit.get() : nullptr) {
    count = IntToWide(limit->Limit);
    if (auto* withOffset = TmvCast<TSQLOffsetLimit>(limit)) offset = IntToWide(withOffset->Offset);
  }
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvSQLiteSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                               WideStringView offset,
                                                                               WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  auto* extender = SQLiteExtenderOf<TSQLtSubSelectStatementExtender>(result.get());
  if (extender) extender->Limit.Reset();
  if (extender && !count.empty()) {
    if (offset.empty()) {
      auto limit = TastCreate<TSQLLimit>(context);
      limit->Limit = SQLiteLimitNumber(count);
      extender->Limit.Set(std::move(limit));
    } else {
      auto limit = TastCreate<TSQLLimitOffset>(context);
      limit->Limit = SQLiteLimitNumber(count);
      limit->Offset = SQLiteLimitNumber(offset);
      extender->Limit.Set(std::move(limit));
    }
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- The catalog ---

TmvSyntaxSupportConectedServer TmvSQLiteSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsSQLite(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

TmvOwned<TSQLQualifiedName> TmvSQLiteSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                            TmvConnection* connection) {
  if (auto name = GetDefaultDatabaseNameSQLite(context, connection)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvSQLiteSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                               std::vector<WideString>& list) {
  if (!GetDatabasesListSQLite(context, connection, list))
    TmvMatrixSyntaxProvider::GetDatabasesList(context, connection, list);
}

void TmvSQLiteSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                  const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsSQLite(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvSQLiteSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                            TmvMetadataObject* object) {
  LoadFieldsSQLite(context, connection, object);
}

void TmvSQLiteSyntaxProvider::LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataTable* table) {
  TmvMatrixSyntaxProvider::LoadMetadataForTable(context, connection, table);
  LoadRelationsOfTableSQLite(context, connection, table);
}

}  // namespace mv
