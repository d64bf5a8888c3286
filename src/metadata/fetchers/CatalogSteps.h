// Small steps the dialects' catalog loaders share: opening a fetcher's
// statement without letting a refusal escape, the names lists a single
// query answers, the first value of a probe and the first part of a name.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"
#include "metadata/fetchers/FetcherBase.h"
#include "support/Exceptions.h"

namespace mv {

class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TmvMetadataRelationsFetcherFromQuery;
class TSQLIdentifiersCollection;
class TSQLQualifiedName;

// Opens the fetcher's statement; false when the server refuses it.
template <class Fetcher>
bool TryCreateCatalogDataset(Fetcher& fetcher) {
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  return true;
}

// Opens the fetcher's statement and loads its rows into `container`; false
// (and nothing loaded) when the server refuses the statement.
template <class Fetcher>
bool TryLoadCatalogMetadata(Fetcher& fetcher, TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                            const TSQLQualifiedName* database) {
  if (!TryCreateCatalogDataset(fetcher)) return false;
  fetcher.LoadMetadata(container, filter, database);
  return true;
}

// Opens the fetcher's statement and reads its rows as the fields of
// `object`; false when the server refuses the statement.
template <class Fetcher, class Object>
bool TryLoadCatalogFields(Fetcher& fetcher, Object* object) {
  if (!TryCreateCatalogDataset(fetcher)) return false;
  fetcher.LoadFields(object->GetFields());
  return true;
}

// The first column of the first row of `sql`; empty when there is none or
// the server refuses the statement.
WideString FirstColumnOrEmpty(TmvBaseMetadataProvider& provider, TmvConnection* connection, WideStringView sql);

// A probe's answer: scsDontKnow without SQL, scsSupport when `sql` gives a
// row, scsNotSupport when it gives none or the server refuses it.
TmvSyntaxSupportConectedServer CatalogProbeAnswer(TmvBaseMetadataProvider* provider, TmvConnection* connection,
                                                  WideStringView sql);

// The name of `database` without quotes when it names another database than
// `current` (the connected one, may be null); empty for none or the same.
WideString OtherDatabaseName(TmvBaseSQLContext* context, const TSQLQualifiedName* database,
                             const TSQLQualifiedName* current);

// Marks as key columns the fields of `object` that the column `nameField` of
// `sql` names (a field not listed yet is added); false when the server
// refuses the statement.
bool TryMarkCatalogKeyFields(TmvBaseSQLContext* context, TmvConnection* connection, const WideString& sql,
                             WideStringView nameField, TmvMetadataObject* object);

// The first part of `database` (a database link, a server); empty for none.
WideString FirstNamePart(const TSQLQualifiedName* database);

// `name` as a one-part database name; null for an empty name.
TmvOwned<TSQLQualifiedName> OnePartCatalogName(TmvBaseSQLContext* context, const WideString& name);

// Adds `name` to `names` unless an equal identifier is there; false for an
// empty name.
bool AddDefaultSchemaName(TSQLIdentifiersCollection& names, const WideString& name);

// The key columns most catalog queries name their relations' rows with:
// PK_TABLE_NAME, PK_FIELD_NAME, FK_TABLE_NAME, FK_FIELD_NAME and, with
// `withSchemas`, PK_SCHEMA_NAME and FK_SCHEMA_NAME.
void UseStandardRelationColumns(TmvMetadataRelationsFetcherFromQuery& fetcher, bool withSchemas);

// The schema names of the column `nameField` of `sql` replace `list`;
// false without SQL or when the server refuses the statement.
bool LoadCatalogSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql,
                            WideStringView nameField, std::vector<WideString>& list, bool trimSpaces = false);

// The same for database names.
bool LoadCatalogDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql,
                              WideStringView nameField, std::vector<WideString>& list);

}  // namespace mv
