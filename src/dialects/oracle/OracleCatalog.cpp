#include "dialects/oracle/OracleCatalog.h"

#include "dialects/oracle/OracleCatalogQueries.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/FetcherBase.h"
#include "metadata/fetchers/NamesFetchers.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

// The first column of the first row; empty when the server refuses the
// statement.
WideString FirstValue(TmvBaseMetadataProvider& provider, TmvConnection* connection, const char16_t* sql) {
  try {
    auto dataset = provider.ExecSQLDatasetUR(connection, sql, nullptr);
    if (!dataset || dataset->Eof() || dataset->FieldCount() == 0) return {};
    return dataset->Fields()[0].AsWideString();
  } catch (const Exception&) {
    return {};
  }
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  return IsOracleProbeAnswer(FirstValue(*provider, connection, kOracleProbeQuery)) ? scsSupport : scsNotSupport;
}

int CalcServerVersionOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return 11;
  return ParseServerVersionOracle(FirstValue(*provider, connection, kOracleVersionQuery));
}

bool GetDefaultSchemaNamesOracle(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  const WideString schema = provider->TrimName(FirstValue(*provider, connection, kOracleDefaultSchemaQuery));
  if (schema.empty()) return false;
  if (!names.ContainsSameIdStr(schema)) names.AddIdentifier(schema);
  return true;
}

bool GetSchemasListOracle(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  if (!CatalogSqlProvider(context)) return false;
  TmvMetadataSchemasFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kOracleSchemasQuery;
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
