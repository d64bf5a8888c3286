// The catalog loads of Informix that the provider runs through the metadata
// provider (texts in InformixCatalogQueries.h). Each answers false when it
// cannot run SQL or the server refuses the statement, so that the metadata
// provider answers instead.
#pragma once

#include "frontend/SyntaxProvider.h"

namespace mv {

// Tables (T, S) and views (V) of systables; INFORMIX's are the system's.
bool LoadMetadataObjectsInformix(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database);
// The foreign keys by the first column of each side.
bool LoadMetadataRelationsInformix(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database);

// The columns of a table or view: name, type code (COLTYPE as the catalog
// keeps it) and length.
bool LoadFieldsForObjectInformix(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
