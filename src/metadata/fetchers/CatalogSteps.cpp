#include "metadata/fetchers/CatalogSteps.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/NamesFetchers.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"
#include "tree/Tokens.h"

namespace mv {

WideString FirstColumnOrEmpty(TmvBaseMetadataProvider& provider, TmvConnection* connection, WideStringView sql) {
  try {
    auto dataset = provider.ExecSQLDatasetUR(connection, sql, nullptr);
    if (!dataset || dataset->Eof() || dataset->FieldCount() == 0) return {};
    return dataset->Fields()[0].AsWideString();
  } catch (const Exception&) {
    return {};
  }
}

namespace {

// Every row names a key column.
class TKeyColumnsFetcher final : public TmvMetadataFieldsFetcherFromQuery {
 public:
  using TmvMetadataFieldsFetcherFromQuery::TmvMetadataFieldsFetcherFromQuery;

 protected:
  bool CanCalcPrimaryKey() override { return true; }
  bool CalcIsPrimaryKey() override { return true; }
};

}  // namespace

TmvSyntaxSupportConectedServer CatalogProbeAnswer(TmvBaseMetadataProvider* provider, TmvConnection* connection,
                                                  WideStringView sql) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    auto dataset = provider->ExecSQLDatasetUR(connection, sql, nullptr);
    return dataset && !dataset->Eof() ? scsSupport : scsNotSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

WideString OtherDatabaseName(TmvBaseSQLContext* context, const TSQLQualifiedName* database,
                             const TSQLQualifiedName* current) {
  if (!database || database->GetCount() == 0) return {};
  if (current && context && context->IsQualifiedNamesEqual(current, database)) return {};
  return database->GetQualifiedNameWithoutQuotes();
}

bool TryMarkCatalogKeyFields(TmvBaseSQLContext* context, TmvConnection* connection, const WideString& sql,
                             WideStringView nameField, TmvMetadataObject* object) {
  if (!object) return false;
  TKeyColumnsFetcher fetcher(context, connection);
  fetcher.SQL = sql;
  fetcher.NameFieldName = WideString(nameField);
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogFields(fetcher, object);
}

WideString FirstNamePart(const TSQLQualifiedName* database) {
  if (!database || database->GetCount() == 0 || !database->Token(0)) return {};
  return database->Token(0)->Token;
}

TmvOwned<TSQLQualifiedName> OnePartCatalogName(TmvBaseSQLContext* context, const WideString& name) {
  if (name.empty()) return nullptr;
  auto result = TastCreate<TSQLQualifiedName>(context);
  result->AddName(name, false);
  return result;
}

void UseStandardRelationColumns(TmvMetadataRelationsFetcherFromQuery& fetcher, bool withSchemas) {
  if (withSchemas) {
    fetcher.PrimarySchemaFieldName = u"PK_SCHEMA_NAME";
    fetcher.ChildSchemaFieldName = u"FK_SCHEMA_NAME";
  }
  fetcher.PrimaryNameFieldName = u"PK_TABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PK_FIELD_NAME";
  fetcher.ChildNameFieldName = u"FK_TABLE_NAME";
  fetcher.ChildFieldFieldName = u"FK_FIELD_NAME";
}

bool AddDefaultSchemaName(TSQLIdentifiersCollection& names, const WideString& name) {
  if (name.empty()) return false;
  if (!names.ContainsSameIdStr(name)) names.AddIdentifier(name);
  return true;
}

bool LoadCatalogSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql,
                            WideStringView nameField, std::vector<WideString>& list, bool trimSpaces) {
  if (!CatalogSqlProvider(context)) return false;
  TmvMetadataSchemasFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = WideString(sql);
  fetcher.NameFieldName = WideString(nameField);
  if (trimSpaces) fetcher.SetTrimSpaces(true);
  if (!TryCreateCatalogDataset(fetcher)) return false;
  auto schemas = TastCreate<TSQLIdentifiersCollection>(context);
  fetcher.LoadSchemas(*schemas);
  list.clear();
  for (int i = 0; i < schemas->GetCount(); ++i) list.push_back(schemas->Identifier(i)->Token);
  return true;
}

bool LoadCatalogDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql,
                              WideStringView nameField, std::vector<WideString>& list) {
  if (!CatalogSqlProvider(context)) return false;
  TmvMetadataDatabasesFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = WideString(sql);
  fetcher.NameFieldName = WideString(nameField);
  if (!TryCreateCatalogDataset(fetcher)) return false;
  TSQLQualifiedNamesList names(context, true);
  fetcher.LoadDatabases(names);
  list.clear();
  for (int i = 0; i < names.Count(); ++i) list.push_back(names.Items(i)->GetQualifiedNameWithoutQuotes());
  return true;
}

}  // namespace mv
