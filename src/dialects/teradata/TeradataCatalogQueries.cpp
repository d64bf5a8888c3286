#include "dialects/teradata/TeradataCatalogQueries.h"

#include "support/TextHelpers.h"

namespace mv {

const char16_t* const kTeradataProbeQuery = u"select * from dbc.dbcinfo";
const char16_t* const kTeradataDefaultSchemaQuery = u"select database";
const char16_t* const kTeradataSchemasQuery = u"SELECT DatabaseName AS DATABASE_NAME FROM dbc.DatabasesX";
const char16_t* const kTeradataObjectsQuery =
    u"select DatabaseName, TableName, TableKind, CommentString from dbc.TablesX where (TableKind in ('T','V'))";
const char16_t* const kTeradataRelationsQuery = u"select * from dbc.all_ri_parents";
const char16_t* const kTeradataSystemSchemas[13] = {
    u"DBC",        u"SQLJ",      u"SYSLIB",   u"SYSSPATIAL",  u"TDStats",  u"TDPUSER",      u"SYSUDTLIB",
    u"Crashdumps", u"TD_SYSFNLIB", u"SysAdmin", u"SystemFe", u"Sys_Calendar", u"dbcmngr"};

namespace {

// The ColumnType codes and the type names they stand for; Decimal and the
// sized types add their digits or length after the CASE.
constexpr const char16_t* kColumnTypes[][2] = {
    {u"A1", u"Array"},
    {u"AN", u"Array"},
    {u"AT", u"Time"},
    {u"BF", u"Byte"},
    {u"BO", u"Blob"},
    {u"BV", u"VarByte"},
    {u"CF", u"Char"},
    {u"CO", u"Clob"},
    {u"CV", u"VarChar"},
    {u"DA", u"Date"},
    {u"DH", u"Interval Day To Hour"},
    {u"DM", u"Interval Day To Minute"},
    {u"DS", u"Interval Day To Second"},
    {u"DY", u"Interval Day"},
    {u"F", u"Float"},
    {u"GF", u"Graphic"},
    {u"GV", u"VarGraphic"},
    {u"HM", u"Interval Hour To Minute"},
    {u"HR", u"Interval Hour"},
    {u"HS", u"Interval Hour To Second"},
    {u"I1", u"ByteInt"},
    {u"I2", u"SmallInt"},
    {u"I8", u"BigInt"},
    {u"I", u"Integer"},
    {u"JN", u"JSON"},
    {u"MI", u"Interval Minute"},
    {u"MO", u"Interval Month"},
    {u"MS", u"Interval Minute To Second"},
    {u"N", u"Number"},
    {u"PD", u"Period(Date)"},
    {u"PM", u"Period(Timestamp With Time Zone)"},
    {u"PS", u"Period(Timestamp)"},
    {u"PT", u"Period(Time)"},
    {u"PZ", u"Period(Time With Time Zone)"},
    {u"SC", u"Interval Second"},
    {u"SZ", u"Timestamp With Time Zone"},
    {u"TS", u"Timestamp"},
    {u"TZ", u"Time With Time Zone"},
    {u"UT", u"UDT"},
    {u"XM", u"XML"},
    {u"YM", u"Interval Year To Month"},
    {u"YR", u"Interval Year"},
};

WideString TypeNameCase() {
  WideString text = u"case trim(c.ColumnType)";
  // 'D' is the one code whose name carries its digits.
  text += u" when 'D' then 'Decimal(' || trim(c.DecimalTotalDigits) || ',' || trim(c.DecimalFractionalDigits) || ')'";
  for (const auto& type : kColumnTypes)
    text += u" when '" + WideString(type[0]) + u"' then '" + WideString(type[1]) + u"'";
  return text + u" else trim(c.ColumnType) end";
}

}  // namespace

WideString TeradataFieldsQuery(WideStringView database, WideStringView object) {
  return u"select c.ColumnName as COLUMN_NAME, " + TypeNameCase() +
         u" as TYPE_NAME, c.ColumnLength as COLUMN_SIZE, c.DecimalFractionalDigits as DECIMAL_DIGITS,"
         u" c.Nullable as NULLABLE, case when exists (select 1 from dbc.IndicesV i where i.DatabaseName ="
         u" c.DatabaseName and i.TableName = c.TableName and i.ColumnName = c.ColumnName and i.IndexType = 'K')"
         u" then 1 else 0 end as PRIMARY_KEY, c.CommentString as REMARKS from dbc.ColumnsV c where c.DatabaseName = " +
         (database.empty() ? WideString(u"database") : SQLQuoteString(database)) +
         u" and c.TableName = " + SQLQuoteString(object) + u" order by c.ColumnId";
}

}  // namespace mv
