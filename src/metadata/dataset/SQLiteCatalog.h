// The catalog of a SQLite database read into a metadata container by the
// generic fetchers: catalog statements over sqlite_master and the
// table-valued pragma functions, in which every name travels as a column
// value or a parameter and never becomes statement text. Defined among the
// fetchers (metadata/fetchers/SQLiteCatalog.cpp), which this folder may not include.
#pragma once

namespace mv {

class TmvBaseSQLContext;
class TmvMetadataContainer;
class TmvMetadataFilter;

// Reads the tables and views, their fields (types, sizes, primary keys, nullability), and the foreign keys of
// the SQLite database behind the context's metadata provider into `container`, through the generic fetchers.
void LoadSQLiteCatalog(TmvBaseSQLContext* context, TmvMetadataContainer* container, const TmvMetadataFilter* filter = nullptr);

}  // namespace mv
