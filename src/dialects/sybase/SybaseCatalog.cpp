#include "dialects/sybase/SybaseCatalog.h"

#include "dialects/sybase/SybaseCatalogQueries.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"
#include "tree/Tokens.h"

namespace mv {

namespace {

// The database a load names when it is not the connected one; empty for
// none or the connected one.
WideString OtherDatabase(TmvBaseMetadataProvider& provider, TmvConnection* connection,
                         const TSQLQualifiedName* database) {
  if (!database || database->GetCount() == 0) return {};
  const WideString name = database->Token(0)->Token;
  const WideString current = provider.TrimName(FirstColumnOrEmpty(provider, connection, kSybaseDefaultDatabaseQuery));
  return WideUpperCase(current) == WideUpperCase(name) ? WideString() : name;
}

}  // namespace

bool IsConnectedServerIsSybaseASA(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  return provider && provider->GetCanExecSQL() &&
         IsSybaseASAProbeAnswer(FirstColumnOrEmpty(*provider, connection, kSybaseASAProbeQuery));
}

TmvSyntaxSupportConectedServer IsConnectedServerIsSybase(TmvBaseMetadataProvider* provider,
                                                         TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  if (IsConnectedServerIsSybaseASA(provider, connection)) return scsSupport;
  return IsSybaseASEProbeAnswer(FirstColumnOrEmpty(*provider, connection, kSybaseASEProbeQuery)) ? scsSupport
                                                                                                 : scsNotSupport;
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSybase(TmvBaseSQLContext* context, TmvConnection* connection) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return nullptr;
  return OnePartCatalogName(context,
                            provider->TrimName(FirstColumnOrEmpty(*provider, connection, kSybaseDefaultDatabaseQuery)));
}

bool GetDefaultSchemaNamesSybase(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  return AddDefaultSchemaName(names,
                              provider->TrimName(FirstColumnOrEmpty(*provider, connection, kSybaseDefaultSchemaQuery)));
}

bool GetDatabasesListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  return LoadCatalogDatabasesList(context, connection, kSybaseDatabasesQuery, u"DATABASE_NAME", list);
}

bool GetSchemasListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  return LoadCatalogSchemasList(context, connection, kSybaseSchemasQuery, u"NAME", list);
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
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
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
  UseStandardRelationColumns(fetcher, true);
  fetcher.RelationIdFieldName = u"FOREIGN_KEY_ID";
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
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
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
