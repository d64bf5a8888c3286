// The catalog of a server that offers the standard INFORMATION_SCHEMA views,
// read through the metadata provider by the generic fetchers: the probe, the
// default database, tables and views, foreign keys and the fields of one
// object. A database other than the connected one prefixes the views with its
// name as the server prints it; names and masks that go into a statement are
// string literals with doubled quotes. A loader answers false when the
// provider cannot run SQL or the server refuses the statement, so that the
// caller can fall back on the metadata provider.
#pragma once

#include "frontend/SyntaxProvider.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TSQLQualifiedName;

extern const char16_t* const kInformationSchemaProbeQuery;
extern const char16_t* const kInformationSchemaDefaultDatabaseQuery;

// The statements, `prefix` being "" or the printed database name and ".".
WideString InformationSchemaTablesQuery(WideStringView prefix, WideStringView database);
WideString InformationSchemaViewsQuery(WideStringView prefix, WideStringView database);
WideString InformationSchemaRelationsQuery(WideStringView prefix);
// The columns of one object, its name's parts as literals.
WideString InformationSchemaFieldsQuery(WideStringView database, WideStringView schema, WideStringView name);

// scsSupport when the probe runs, scsNotSupport when it fails, scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsSQL92(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// The first catalog name the server reports; null when none (or no SQL).
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSQL92(TmvBaseSQLContext* context, TmvConnection* connection);
bool LoadMetadataObjectsSQL92(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter, const TSQLQualifiedName* database);
bool LoadMetadataRelationsSQL92(TmvBaseSQLContext* context, TmvConnection* connection,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database);
// The fields of `object` (names, types, sizes, nullability, defaults, primary key).
bool LoadFieldsForObjectSQL92(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
