#include "dialects/advantage/AdvantageCatalogQueries.h"

#include "support/TextHelpers.h"

namespace mv {

const char16_t* const kAdvantageProbeQuery = u"select USER(),APPLICATIONID() from system.iota";
const char16_t* const kAdvantageDefaultDatabaseQuery = u"select DATABASE() from system.iota";
const char16_t* const kAdvantageDatabasesQuery = u"execute procedure sp_GetCatalogs()";

namespace {

WideString Catalog(WideStringView database) {
  return database.empty() ? WideString(u"Database()") : SQLQuoteString(database);
}

}  // namespace

WideString AdvantageObjectsQuery(WideStringView database) {
  return u"execute procedure sp_GetTables(" + Catalog(database) + u",null,null,null)";
}

WideString AdvantageRelationsQuery(WideStringView database) {
  return u"execute procedure sp_GetForeignKeyColumns(" + Catalog(database) + u",null,null,null)";
}

WideString AdvantageFieldsQuery(WideStringView database, WideStringView object) {
  return u"execute procedure sp_GetColumns(" + Catalog(database) + u",null," + SQLQuoteString(object) + u",null)";
}

WideString AdvantagePrimaryKeysQuery(WideStringView database, WideStringView object) {
  return u"execute procedure sp_GetPrimaryKeys(" + Catalog(database) + u",null," + SQLQuoteString(object) + u")";
}

}  // namespace mv
