#include "dialects/sybase/SybaseCatalogQueries.h"

#include "support/TextHelpers.h"
#include "support/WideFormat.h"

namespace mv {

const char16_t* const kSybaseASAProbeQuery = u"select xp_msver('CompanyName')";
const char16_t* const kSybaseASEProbeQuery = u"select @@version";
const char16_t* const kSybaseDefaultDatabaseQuery = u"select cast(DB_NAME(DB_ID()) as varchar(255))";
const char16_t* const kSybaseDefaultSchemaQuery = u"select cast(user_name() as varchar(255))";
const char16_t* const kSybaseDatabasesQuery = u"exec sp_databases";
const char16_t* const kSybaseSchemasQuery = u"select NAME from SYSUSERS order by NAME";

namespace {

bool Holds(WideStringView value, WideStringView part) {
  return WideUpperCase(WideString(value)).find(WideUpperCase(WideString(part))) != WideString::npos;
}

// One key column pair of sysreferences: the n-th.
WideString ASEKeyPair(int n, const WideString& prefix, const WideString& fallback) {
  return WideFormat(
      u"select r.constrid as FOREIGN_KEY_ID, isnull(r.pmrydbname, %2:s) as PK_DATABASE_NAME, "
      u"user_name(object_owner_id(r.reftabid)) as PK_SCHEMA_NAME, object_name(r.reftabid) as PK_TABLE_NAME, "
      u"col_name(r.reftabid, r.refkey%0:d) as PK_FIELD_NAME, isnull(r.frgndbname, %2:s) as FK_DATABASE_NAME, "
      u"user_name(object_owner_id(r.tableid)) as FK_SCHEMA_NAME, object_name(r.tableid) as FK_TABLE_NAME, "
      u"col_name(r.tableid, r.fokey%0:d) as FK_FIELD_NAME from %1:sdbo.sysreferences r where r.keycnt >= %0:d",
      {n, prefix, fallback});
}

}  // namespace

bool IsSybaseASAProbeAnswer(WideStringView value) { return Holds(value, u"Sybase") || Holds(value, u"iAnywhere"); }

bool IsSybaseASEProbeAnswer(WideStringView value) { return Holds(value, u"Adaptive Server Enterprise"); }

WideString SybaseQuoteName(WideStringView name) {
  WideString quoted = u"[";
  for (char16_t c : name) {
    quoted += c;
    if (c == u']') quoted += c;
  }
  return quoted + u"]";
}

WideString SybaseDatabasePrefix(WideStringView database) {
  return database.empty() ? WideString() : SybaseQuoteName(database) + u".";
}

WideString SybaseObjectsQuery(WideStringView database) {
  return u"exec " + SybaseDatabasePrefix(database) + u"dbo.sp_tables";
}

WideString SybaseASARelationsQuery(WideStringView database) {
  const WideString prefix = SybaseDatabasePrefix(database);
  return WideFormat(
      u"select fk.foreign_key_id as FOREIGN_KEY_ID, pu.user_name as PK_SCHEMA_NAME, pt.table_name as PK_TABLE_NAME, "
      u"pc.column_name as PK_FIELD_NAME, fu.user_name as FK_SCHEMA_NAME, ft.table_name as FK_TABLE_NAME, "
      u"fc.column_name as FK_FIELD_NAME from %0:sSYS.SYSFOREIGNKEY fk join %0:sSYS.SYSFKCOL k on "
      u"k.foreign_table_id = fk.foreign_table_id and k.foreign_key_id = fk.foreign_key_id join %0:sSYS.SYSCOLUMN fc "
      u"on fc.table_id = k.foreign_table_id and fc.column_id = k.foreign_column_id join %0:sSYS.SYSCOLUMN pc on "
      u"pc.table_id = fk.primary_table_id and pc.column_id = k.primary_column_id join %0:sSYS.SYSTABLE ft on "
      u"ft.table_id = fk.foreign_table_id join %0:sSYS.SYSTABLE pt on pt.table_id = fk.primary_table_id join "
      u"%0:sSYS.SYSUSERPERM fu on fu.user_id = ft.creator join %0:sSYS.SYSUSERPERM pu on pu.user_id = pt.creator "
      u"order by pu.user_name, pt.table_name, fu.user_name, ft.table_name, fk.foreign_key_id",
      {prefix});
}

WideString SybaseASERelationsQuery(WideStringView database) {
  const WideString prefix = SybaseDatabasePrefix(database);
  const WideString fallback = database.empty() ? WideString(u"db_name()") : SQLQuoteString(database);
  WideString query;
  for (int n = 1; n <= 4; ++n) query += (n > 1 ? u" union all " : u"") + ASEKeyPair(n, prefix, fallback);
  return query + u" order by PK_SCHEMA_NAME, PK_TABLE_NAME, FK_SCHEMA_NAME, FK_TABLE_NAME, FOREIGN_KEY_ID";
}

WideString SybaseASAFieldsQuery(WideStringView schema, WideStringView object) {
  return u"select cname, coltype, length, default_value, nulls, in_primary_key from SYS.SYSCOLUMNS where tname = " +
         SQLQuoteString(object) + (schema.empty() ? WideString() : u" and creator = " + SQLQuoteString(schema)) +
         u" order by colno";
}

WideString SybaseASEFieldsQuery(WideStringView schema, WideStringView object) {
  const WideString name = schema.empty() ? WideString(object) : WideString(schema) + u"." + WideString(object);
  return u"select c.name, t.name as column_type, c.length, c.prec, c.scale, convert(bit, c.status & 8) as nulls "
         u"from syscolumns c join systypes t on t.usertype = c.usertype where c.id = object_id(" +
         SQLQuoteString(name) + u") order by c.colid";
}

}  // namespace mv
