// The catalog operations of the Sybase family that the provider runs
// through the metadata provider (texts in SybaseCatalogQueries.h). Each
// answers false or nothing when it cannot run SQL or the server refuses the
// statement, so that the metadata provider answers instead; the objects and
// keys read before a refusal stay. A database that is empty or the one
// connected (asked of the server for each load) gives the statements no
// prefix.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TSQLIdentifiersCollection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;

// Sybase when the ASA or the ASE probe names the family; scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsSybase(TmvBaseMetadataProvider* provider,
                                                         TmvConnection* connection);
// True when the ASA probe names the family.
bool IsConnectedServerIsSybaseASA(TmvBaseMetadataProvider* provider, TmvConnection* connection);
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSybase(TmvBaseSQLContext* context, TmvConnection* connection);
bool GetDefaultSchemaNamesSybase(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names);
bool GetDatabasesListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
bool GetSchemasListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
// The tables and views sp_tables gives, each with its owner as the schema;
// the type values "SYSTEM TABLE" and "SYSTEM VIEW" and the owners sys and
// rs_systabgroup make system objects.
bool LoadMetadataObjectsSybase(TmvBaseSQLContext* context, TmvConnection* connection,
                               TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                               const TSQLQualifiedName* database);
// The foreign keys by the ASA or the ASE catalog, one row a column pair; a
// key ends where FOREIGN_KEY_ID changes.
bool LoadMetadataRelationsSybase(TmvBaseSQLContext* context, TmvConnection* connection, bool asa,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database);
// The fields of a table or view by the ASA or the ASE catalog, the object
// named by its schema and name. ASA writes nullability and the key as Y or N.
bool LoadFieldsForObjectSybase(TmvBaseSQLContext* context, TmvConnection* connection, bool asa,
                               TmvMetadataObject* object);

}  // namespace mv
