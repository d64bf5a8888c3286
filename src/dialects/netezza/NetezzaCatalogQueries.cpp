#include "dialects/netezza/NetezzaCatalogQueries.h"

#include "support/TextHelpers.h"

namespace mv {

const char16_t* const kNetezzaProbeQuery = u"select cast(version() as char(10)), current_useroid as t";
const char16_t* const kNetezzaDefaultDatabaseQuery = u"select cast(current_catalog as varchar(255))";
const char16_t* const kNetezzaDefaultSchemaQuery = u"select cast(current_schema as varchar(255))";

namespace {

// The database as a text to compare with, current_catalog when none.
WideString DatabaseValue(WideStringView database) {
  return database.empty() ? WideString(u"current_catalog") : SQLQuoteString(database);
}

// "db".. before a catalog view, nothing when no database is named.
WideString DatabasePrefix(WideStringView database) {
  return database.empty() ? WideString() : NetezzaQuoteName(database) + u"..";
}

WideString ObjectCondition(WideStringView database, WideStringView schema, WideStringView object) {
  return u" where table_cat=" + SQLQuoteString(database) + u" and table_schem=" + SQLQuoteString(schema) +
         u" and table_name=" + SQLQuoteString(object);
}

}  // namespace

WideString NetezzaQuoteName(WideStringView name) {
  WideString quoted = u"\"";
  for (char16_t c : name) {
    quoted += c;
    if (c == u'"') quoted += c;
  }
  return quoted + u"\"";
}

WideString NetezzaSchemasQuery(WideStringView database) {
  return u"select schema as schema_name from " + DatabasePrefix(database) + u"_v_schema where database=" +
         DatabaseValue(database);
}

WideString NetezzaDefaultSchemaOfDatabaseQuery(WideStringView database) {
  return u"select defschema as schema_name from _v_database where database=" + DatabaseValue(database);
}

WideString NetezzaObjectsQuery(WideStringView database) {
  return u"select * from " + DatabasePrefix(database) + u"_v_odbc_tables3 where table_cat=" + DatabaseValue(database);
}

WideString NetezzaRelationsQuery(WideStringView database) {
  return u"select * from " + DatabasePrefix(database) + u"_v_odbc_foreignkeys3 where fktable_cat=" +
         DatabaseValue(database);
}

WideString NetezzaFieldsQuery(WideStringView database, WideStringView schema, WideStringView object) {
  return u"select * from " + NetezzaQuoteName(database) + u".._v_odbc_columns3" +
         ObjectCondition(database, schema, object);
}

WideString NetezzaPrimaryKeysQuery(WideStringView database, WideStringView schema, WideStringView object) {
  return u"select * from " + NetezzaQuoteName(database) + u".._v_odbc_primarykeys3" +
         ObjectCondition(database, schema, object);
}

}  // namespace mv
