#include "dialects/mssql/MSSQLCatalog.h"

#include "dialects/mssql/MSSQLCatalogQueries.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"
#include "tree/QualifiedNames.h"
#include "tree/Tokens.h"

namespace mv {

const char16_t* const kMSSQLCompactObjectsQuery = u"select TABLE_NAME, TABLE_TYPE from INFORMATION_SCHEMA.TABLES";
const char16_t* const kMSSQLCompactRelationsQuery =
    u"select pf.TABLE_NAME as PK_TABLE_NAME, pf.COLUMN_NAME as PK_FIELD_NAME, ff.TABLE_NAME as FK_TABLE_NAME, "
    u"ff.COLUMN_NAME as FK_FIELD_NAME, pf.ORDINAL_POSITION as ORDINAL from "
    u"INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS rc inner join INFORMATION_SCHEMA.KEY_COLUMN_USAGE ff on "
    u"rc.CONSTRAINT_NAME = ff.CONSTRAINT_NAME inner join INFORMATION_SCHEMA.KEY_COLUMN_USAGE pf on "
    u"rc.UNIQUE_CONSTRAINT_NAME = pf.CONSTRAINT_NAME and ff.ORDINAL_POSITION = pf.ORDINAL_POSITION order by "
    u"pf.TABLE_NAME, ff.TABLE_NAME, pf.ORDINAL_POSITION";

namespace {

constexpr const char16_t* kObjectsFromInformationSchema =
    u"select cast(TABLE_SCHEMA as varchar(255)) as TABLE_OWNER, cast(TABLE_NAME as varchar(255)) as TABLE_NAME, "
    u"cast(TABLE_TYPE as varchar(255)) as TABLE_TYPE from %sINFORMATION_SCHEMA.TABLES";

// The prefix a database gives the catalog queries: none for no database or
// the connected one (asked of the server again for each load).
WideString DatabaseOf(TmvBaseMetadataProvider& provider, TmvConnection* connection,
                      const TSQLQualifiedName* database) {
  if (!database || database->GetCount() == 0) return {};
  const WideString name = database->Token(0)->Token;
  WideString current;
  try {
    current = FirstCatalogValue(provider, connection, kMSSQLDefaultDatabaseQuery, u"CATALOG_NAME");
  } catch (const Exception&) {
  }
  return WideUpperCase(current) == WideUpperCase(name) ? WideString() : name;
}

// The settings objects of sp_tables and INFORMATION_SCHEMA share.
void ReadTablesAndViews(TmvMetadataObjectFetcherFromQuery& fetcher, TmvBaseSQLContext* context) {
  fetcher.SchemaFieldName = u"TABLE_OWNER";
  fetcher.NameFieldName = u"TABLE_NAME";
  fetcher.TypeFieldName = u"TABLE_TYPE";
  fetcher.UserTableTypeValue = TmvVariantArray{u"TABLE", u"BASE TABLE"};
  fetcher.SystemTableTypeValue = u"SYSTEM TABLE";
  fetcher.UserViewTypeValue = u"VIEW";
  fetcher.SystemViewTypeValue = u"SYSTEM VIEW";
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  system->AddIdentifier(u"sys");
  system->AddIdentifier(u"INFORMATION_SCHEMA");
  fetcher.SetSystemSchemaNames(system.get());
}

// Runs the fetcher's statement; true when it opened and its rows were read.
bool TryLoad(TmvMetadataObjectFetcherFromQuery& fetcher, TmvMetadataContainer* container,
             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

// What sp_tables leaves out: the table-valued functions as procedures and,
// where the catalog views exist, the synonyms. Either may be refused; the
// objects already read stay.
void LoadTableFunctionsAndSynonyms(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                                   const WideString& other, TmvMetadataContainer* container,
                                   const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  TmvMetadataObjectFetcherFromQuery functions(context, connection);
  functions.SQL = MSSQLTableFunctionsQuery(major, other);
  functions.SchemaFieldName = u"PROCEDURE_SCHEMA";
  functions.NameFieldName = u"PROCEDURE_NAME";
  functions.TypeFieldName = u"PROCEDURE_TYPE";
  functions.UserProcedureTypeValue = u"PROCEDURE";
  functions.SystemProcedureTypeValue = u"SYSTEM PROCEDURE";
  TryLoad(functions, container, filter, database);
  if (major < 9) return;
  try {
    context->MetadataProvider()->ExecSQLDatasetUR(connection, MSSQLAllObjectsProbeQuery(other), nullptr);
  } catch (const Exception&) {
    return;
  }
  TmvMetadataObjectFetcherFromQuery synonyms(context, connection);
  synonyms.SQL = MSSQLSynonymsQuery(other);
  synonyms.SchemaFieldName = u"SYNONYM_SCHEMA";
  synonyms.NameFieldName = u"SYNONYM_NAME";
  synonyms.TypeFieldName = u"SYNONYM_TYPE";
  synonyms.ReferencedFullNameFieldName = u"REFERENCED_OBJECT_NAME";
  synonyms.UserSynonymTypeValue = u"SYNONYM";
  synonyms.SystemSynonymTypeValue = u"SYSTEM SYNONYM";
  TryLoad(synonyms, container, filter, database);
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsMSSQL(TmvBaseMetadataProvider* provider,
                                                        TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    const WideString value = FirstCatalogValue(*provider, connection, kMSSQLProbeQuery, u"attribute_value");
    return WideUpperCase(value) == WideUpperCase(u"Microsoft SQL Server") ? scsSupport : scsNotSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

TmvSyntaxSupportConectedServer IsConnectedServerIsMSSQLCompact(TmvBaseMetadataProvider* provider,
                                                               TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    provider->ExecSQLDatasetUR(connection, kMSSQLCompactProbeQuery, nullptr);
    return scsSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

int ReadServerVersionMSSQL(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return CalcServerVersionMSSQL(0, false);
  try {
    const WideString value = FirstCatalogValue(*provider, connection, kMSSQLVersionQuery, u"VersionMajor");
    int major = 0;
    const bool read = TryStrToInt(value, major);
    return CalcServerVersionMSSQL(major, read);
  } catch (const Exception&) {
    return CalcServerVersionMSSQL(0, false);
  }
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameMSSQL(TmvBaseSQLContext* context, TmvConnection* connection) {
  return CatalogNameFromQuery(context, connection, kMSSQLDefaultDatabaseQuery, u"CATALOG_NAME");
}

bool GetDefaultSchemaNamesMSSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  WideString user;
  try {
    user = provider->TrimName(FirstCatalogValue(*provider, connection, kMSSQLDefaultSchemaQuery, u"user_name"));
  } catch (const Exception&) {
    return false;
  }
  return AddDefaultSchemaName(names, user);
}

bool GetDatabasesListMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                           std::vector<WideString>& list) {
  return LoadCatalogDatabasesList(context, connection, MSSQLDatabasesQuery(major), u"DATABASE_NAME", list);
}

bool GetSchemasListMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                         const TSQLQualifiedName* database, std::vector<WideString>& list) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  return LoadCatalogSchemasList(context, connection,
                                MSSQLSchemasQuery(major, DatabaseOf(*provider, connection, database)), u"NAME", list);
}

bool LoadMetadataObjectsMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                              TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                              const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  // A linked server and one of its catalogs.
  if (database && database->GetCount() == 2) {
    TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
    fetcher.SQL = MSSQLLinkedServerTablesQuery(database->Token(1)->Token, database->Token(0)->Token);
    ReadTablesAndViews(fetcher, context);
    fetcher.SchemaFieldName = u"TABLE_SCHEM";
    return TryLoad(fetcher, container, filter, database);
  }
  const WideString other = DatabaseOf(*provider, connection, database);
  if (major >= 9) {
    TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
    fetcher.SQL = MSSQLObjectsQuery(major, other);
    fetcher.SchemaFieldName = u"TABLE_OWNER";
    fetcher.NameFieldName = u"TABLE_NAME";
    fetcher.TypeFieldName = u"TABLE_TYPE";
    fetcher.SystemFieldName = u"SYSTEM";
    fetcher.SystemFlagValue = TmvVariantArray{1, true};
    fetcher.ShortDescriptionFieldName = u"DESCRIPTION";
    fetcher.ReferencedFullNameFieldName = u"REFERENCED_OBJECT_NAME";
    fetcher.UserTableTypeValue = TmvVariantArray{u"U", u"S"};
    fetcher.UserViewTypeValue = u"V";
    fetcher.UserSynonymTypeValue = u"SN";
    fetcher.UserProcedureTypeValue = TmvVariantArray{u"IF", u"TF"};
    if (TryLoad(fetcher, container, filter, database)) return true;
  } else {
    TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
    fetcher.SQL = MSSQLObjectsQuery(major, other);
    ReadTablesAndViews(fetcher, context);
    if (TryLoad(fetcher, container, filter, database)) return true;
  }
  // sp_tables as a plain statement, then the standard views.
  TmvMetadataObjectFetcherFromQuery plain(context, connection);
  plain.SQL = MSSQLDatabasePrefix(other) + u"dbo.sp_tables";
  ReadTablesAndViews(plain, context);
  if (TryLoad(plain, container, filter, database)) {
    LoadTableFunctionsAndSynonyms(context, connection, major, other, container, filter, database);
    return true;
  }
  TmvMetadataObjectFetcherFromQuery standard(context, connection);
  standard.SQL = WideFormat(kObjectsFromInformationSchema, {MSSQLDatabasePrefix(other)});
  ReadTablesAndViews(standard, context);
  return TryLoad(standard, container, filter, database);
}

namespace {

bool LoadRelations(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql, bool withSchemas,
                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                   const TSQLQualifiedName* database) {
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = WideString(sql);
  if (withSchemas) {
    fetcher.PrimaryDatabaseFieldName = u"PK_TABLE_DATABASE";
    fetcher.ChildDatabaseFieldName = u"FK_TABLE_DATABASE";
  }
  UseStandardRelationColumns(fetcher, withSchemas);
  fetcher.KeySequenceFieldName = u"ORDINAL";
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

}  // namespace

bool LoadMetadataRelationsMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  const WideString other = DatabaseOf(*provider, connection, database);
  return LoadRelations(context, connection, MSSQLRelationsQuery(major, other), true, container, filter, database);
}

bool LoadMetadataObjectsMSSQLCompact(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kMSSQLCompactObjectsQuery;
  fetcher.NameFieldName = u"TABLE_NAME";
  fetcher.TypeFieldName = u"TABLE_TYPE";
  fetcher.UserTableTypeValue = TmvVariantArray{u"TABLE", u"BASE TABLE"};
  fetcher.SystemTableTypeValue = u"SYSTEM TABLE";
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  system->AddIdentifier(u"INFORMATION_SCHEMA");
  fetcher.SetSystemSchemaNames(system.get());
  return TryLoad(fetcher, container, filter, nullptr);
}

bool LoadMetadataRelationsMSSQLCompact(TmvBaseSQLContext* context, TmvConnection* connection,
                                       TmvMetadataContainer* container, const TmvMetadataFilter* filter) {
  if (!CatalogSqlProvider(context) || !container) return false;
  return LoadRelations(context, connection, kMSSQLCompactRelationsQuery, false, container, filter, nullptr);
}

}  // namespace mv
