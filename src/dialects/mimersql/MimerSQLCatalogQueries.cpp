#include "dialects/mimersql/MimerSQLCatalogQueries.h"

#include "support/TextHelpers.h"

namespace mv {

const char16_t* const kMimerSQLProbeQuery = u"select 1 from mimer.tables";
const char16_t* const kMimerSQLObjectsQuery =
    u"select cast(table_schema as varchar(255)) as TABLE_SCHEMA, cast(table_name as varchar(255)) as TABLE_NAME, "
    u"cast(table_type as varchar(255)) as TABLE_TYPE from information_schema.tables";
const char16_t* const kMimerSQLSynonymsQuery = u"select * from information_schema.ext_synonyms";
const char16_t* const kMimerSQLSystemSchemas = u"SYSTEM,MIMER,INFORMATION_SCHEMA,INFO_SCHEM,FIPS_DOCUMENTATION,ODBC";

WideString MimerSQLFieldsQuery(WideStringView creator, WideStringView object) {
  const WideString owner = SQLQuoteString(creator), name = SQLQuoteString(object);
  return u"select c.COLUMN_NAME as \"COLUMN\", c.DATATYPE, c.LENGTH, c.SCALE, c.NULLABLE, k.SEQNO as PRIMARY_KEY "
         u"from MIMER.COLUMNS c left join MIMER.PRIMARY_KEYS k on k.COLUMN_NAME = c.COLUMN_NAME and k.TABLE_NAME = "
         u"c.TABLE_NAME and k.CREATOR = c.CREATOR where c.CREATOR = " +
         owner + u" and c.TABLE_NAME = " + name + u" order by c.COLNO";
}

}  // namespace mv
