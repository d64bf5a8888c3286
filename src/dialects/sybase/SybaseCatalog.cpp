#include "dialects/sybase/SybaseCatalog.h"

#include "dialects/sybase/SybaseCatalogQueries.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/FetcherBase.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/NamesFetchers.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
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

// The database a load names when it is not the connected one; empty for
// none or the connected one.
WideString OtherDatabase(TmvBaseMetadataProvider& provider, TmvConnection* connection,
                         const TSQLQualifiedName* database) {
  if (!database || database->GetCount() == 0) return {};
  const WideString name = database->Token(0)->Token;
  const WideString current = provider.TrimName(ProbeValue(provider, connection, kSybaseDefaultDatabaseQuery));
  return WideUpperCase(current) == WideUpperCase(name) ? WideString() : name;
}

// Opens the fetcher's statement; false when the server refuses it.
template <class Fetcher>
bool TryCreate(Fetcher& fetcher) {
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  return true;
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

bool LoadMetadataObjectsSybase(TmvBaseSQLContext* context, TmvConnection* connection,
                               TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                               const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = SybaseObjectsQuery(OtherDatabase(*provider, connection, database));
  fetcher.SchemaFieldName = u"TABLE_OWNER";
  fetcher.NameFieldName = u"TABLE_NAME";
  fetcher.TypeFieldName = u"TABLE_TYPE";
  fetcher.UserTableTypeValue = u"TABLE";
  fetcher.SystemTableTypeValue = u"SYSTEM TABLE";
  fetcher.UserViewTypeValue = u"VIEW";
  fetcher.SystemViewTypeValue = u"SYSTEM VIEW";
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  system->AddIdentifier(u"sys");
  system->AddIdentifier(u"rs_systabgroup");
  fetcher.SetSystemSchemaNames(system.get());
  fetcher.SetFilter(filter);
  if (!TryCreate(fetcher)) return false;
  fetcher.LoadMetadata(container, filter, database);
  return true;
}

bool LoadMetadataRelationsSybase(TmvBaseSQLContext* context, TmvConnection* connection, bool asa,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  const WideString other = OtherDatabase(*provider, connection, database);
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = asa ? SybaseASARelationsQuery(other) : SybaseASERelationsQuery(other);
  if (!asa) {
    fetcher.PrimaryDatabaseFieldName = u"PK_DATABASE_NAME";
    fetcher.ChildDatabaseFieldName = u"FK_DATABASE_NAME";
  }
  fetcher.PrimarySchemaFieldName = u"PK_SCHEMA_NAME";
  fetcher.PrimaryNameFieldName = u"PK_TABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PK_FIELD_NAME";
  fetcher.ChildSchemaFieldName = u"FK_SCHEMA_NAME";
  fetcher.ChildNameFieldName = u"FK_TABLE_NAME";
  fetcher.ChildFieldFieldName = u"FK_FIELD_NAME";
  fetcher.RelationIdFieldName = u"FOREIGN_KEY_ID";
  if (!TryCreate(fetcher)) return false;
  fetcher.LoadMetadata(container, filter, database);
  return true;
}

bool LoadFieldsForObjectSybase(TmvBaseSQLContext* context, TmvConnection* connection, bool asa,
                               TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  const WideString schema = object->Schema() ? object->SchemaStrNotQuoted() : WideString();
  if (asa) {
    fetcher.SQL = SybaseASAFieldsQuery(schema, object->NameStrNotQuoted());
    fetcher.NameFieldName = u"cname";
    fetcher.TypeFieldName = u"coltype";
    fetcher.DefaultValueFieldName = u"default_value";
    fetcher.NullableFieldName = u"nulls";
    fetcher.NullableTrueValue = u"Y";
    fetcher.NullableFalseValue = u"N";
    fetcher.PrimaryFieldName = u"in_primary_key";
    fetcher.PrimaryTrueValue = u"Y";
    fetcher.PrimaryFalseValue = u"N";
  } else {
    fetcher.SQL = SybaseASEFieldsQuery(schema, object->NameStrNotQuoted());
    fetcher.NameFieldName = u"name";
    fetcher.TypeFieldName = u"column_type";
    fetcher.PrecisionFieldName = u"prec";
    fetcher.ScaleFieldName = u"scale";
    fetcher.NullableFieldName = u"nulls";
  }
  fetcher.SizeFieldName = u"length";
  if (!TryCreate(fetcher)) return false;
  fetcher.LoadFields(object->GetFields());
  return true;
}

}  // namespace mv
