// The catalog loads of DB2 that the provider runs through the metadata
// provider (texts in DB2CatalogQueries.h). Each answers false when it cannot
// run SQL or the server refuses the statement, so that the metadata provider
// answers instead.
#pragma once

#include "frontend/SyntaxProvider.h"

namespace mv {

// Whether the server reads `table` (a query of it opens).
bool DB2TableExists(TmvBaseSQLContext* context, TmvConnection* connection, const char16_t* table);
// Tables (H L P T U), views (V W M S) and synonyms (A N) of SYSIBM's catalog,
// or of QSYS2's on DB2 for i.
bool LoadMetadataObjectsDB2(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                            const TmvMetadataFilter* filter, const TSQLQualifiedName* database, bool qsys2);
// The foreign keys, a column pair a row, in key order.
bool LoadMetadataRelationsDB2(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter, const TSQLQualifiedName* database);

// The columns of a table or view, from SYSIBM's or QSYS2's catalog: type
// (a user type as its quoted schema and name), length, scale, nullable (Y),
// key (a key sequence above 0), generated always (read-only) and remarks.
bool LoadFieldsForObjectDB2(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object,
                            bool qsys2);

}  // namespace mv
