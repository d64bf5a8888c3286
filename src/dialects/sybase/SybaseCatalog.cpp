#include "dialects/sybase/SybaseCatalog.h"

#include "dialects/sybase/SybaseCatalogQueries.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/FetcherBase.h"
#include "metadata/fetchers/NamesFetchers.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"
#include "tree/Tokens.h"

namespace mv {

namespace {

// The first column of the first row of a probe; empty when the server
// refuses it.
WideString ProbeValue(TmvBaseMetadataProvider& provider, TmvConnection* connection, const char16_t* sql) {
  try {
    auto dataset = provider.ExecSQLDatasetUR(connection, sql, nullptr);
    if (!dataset || dataset->Eof() || dataset->FieldCount() == 0) return {};
    return dataset->Fields()[0].AsWideString();
  } catch (const Exception&) {
    return {};
  }
}

}  // namespace

bool IsConnectedServerIsSybaseASA(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  return provider && provider->GetCanExecSQL() &&
         IsSybaseASAProbeAnswer(ProbeValue(*provider, connection, kSybaseASAProbeQuery));
}

TmvSyntaxSupportConectedServer IsConnectedServerIsSybase(TmvBaseMetadataProvider* provider,
                                                         TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  if (IsConnectedServerIsSybaseASA(provider, connection)) return scsSupport;
  return IsSybaseASEProbeAnswer(ProbeValue(*provider, connection, kSybaseASEProbeQuery)) ? scsSupport
                                                                                         : scsNotSupport;
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSybase(TmvBaseSQLContext* context, TmvConnection* connection) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return nullptr;
  const WideString name = provider->TrimName(ProbeValue(*provider, connection, kSybaseDefaultDatabaseQuery));
  if (name.empty()) return nullptr;
  auto result = TastCreate<TSQLQualifiedName>(context);
  result->AddName(name, false);
  return result;
}

bool GetDefaultSchemaNamesSybase(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  const WideString user = provider->TrimName(ProbeValue(*provider, connection, kSybaseDefaultSchemaQuery));
  if (user.empty()) return false;
  if (!names.ContainsSameIdStr(user)) names.AddIdentifier(user);
  return true;
}

bool GetDatabasesListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  if (!CatalogSqlProvider(context)) return false;
  TmvMetadataDatabasesFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kSybaseDatabasesQuery;
  fetcher.NameFieldName = u"DATABASE_NAME";
  TSQLQualifiedNamesList names(context, true);
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadDatabases(names);
  list.clear();
  for (int i = 0; i < names.Count(); ++i) list.push_back(names.Items(i)->GetQualifiedNameWithoutQuotes());
  return true;
}

bool GetSchemasListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  if (!CatalogSqlProvider(context)) return false;
  TmvMetadataSchemasFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kSybaseSchemasQuery;
  fetcher.NameFieldName = u"NAME";
  auto schemas = TastCreate<TSQLIdentifiersCollection>(context);
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadSchemas(*schemas);
  list.clear();
  for (int i = 0; i < schemas->GetCount(); ++i) list.push_back(schemas->Identifier(i)->Token);
  return true;
}

}  // namespace mv
