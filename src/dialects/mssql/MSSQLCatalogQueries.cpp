#include "dialects/mssql/MSSQLCatalogQueries.h"

#include "support/TextHelpers.h"

namespace mv {

const char16_t* const kMSSQLProbeQuery = u"exec sp_server_info 1";
const char16_t* const kMSSQLCompactProbeQuery = u"select top (0) * from INFORMATION_SCHEMA.INDEXES";
const char16_t* const kMSSQLVersionQuery = u"SELECT (@@microsoftversion / 0x1000000) & 0xff AS [VersionMajor]";
const char16_t* const kMSSQLDefaultDatabaseQuery =
    u"select distinct cast(TABLE_CATALOG as varchar(255)) as CATALOG_NAME from INFORMATION_SCHEMA.TABLES";
const char16_t* const kMSSQLDefaultSchemaQuery = u"select cast(USER_NAME() as varchar(255)) as user_name";
const char16_t* const kMSSQLSynonymsQuery =
    u"SELECT SCHEMA_NAME(syn.schema_id) AS SYNONYM_SCHEMA, syn.name AS SYNONYM_NAME, CASE syn.is_ms_shipped "
    u"WHEN 0 THEN N'SYNONYM' WHEN 1 THEN N'SYSTEM SYNONYM' END AS SYNONYM_TYPE,  syn.base_object_name as "
    u"REFERENCED_OBJECT_NAME FROM sys.synonyms AS syn ORDER BY SYNONYM_SCHEMA,SYNONYM_NAME";

WideString MSSQLQuoteName(WideStringView name) {
  WideString quoted = u"[";
  for (char16_t c : name) {
    quoted += c;
    if (c == u']') quoted += c;
  }
  return quoted + u"]";
}

WideString MSSQLDatabasePrefix(WideStringView database) {
  return database.empty() ? WideString() : MSSQLQuoteName(database) + u".";
}

int CalcServerVersionMSSQL(int major, bool executed) {
  if (!executed) return 12;
  if (major >= 7 && major <= 12) return major;
  return major < 11 ? 7 : 12;
}

WideString MSSQLDatabasesQuery(int major) {
  if (major >= 9) return u"SELECT dtb.name AS DATABASE_NAME FROM master.sys.databases AS dtb ORDER BY DATABASE_NAME ASC";
  if (major == 8)
    return u"SELECT dtb.name AS DATABASE_NAME FROM master.dbo.sysdatabases AS dtb ORDER BY DATABASE_NAME ASC";
  return u"EXEC sp_databases";
}

WideString MSSQLSchemasQuery(int major, WideStringView database) {
  const WideString prefix = MSSQLDatabasePrefix(database);
  if (major >= 9) return u"select NAME from " + prefix + u"SYS.SCHEMAS order by NAME";
  return u"select NAME from " + prefix + u"SYSUSERS where ISSQLROLE=0 and ISAPPROLE=0 order by NAME";
}

WideString MSSQLObjectsQuery(int major, WideStringView database) {
  const WideString prefix = MSSQLDatabasePrefix(database);
  if (major < 9) return u"exec " + prefix + u"dbo.sp_tables";
  return u"SELECT sh.name AS TABLE_OWNER, ao.name AS TABLE_NAME, RTRIM(ao.type) AS TABLE_TYPE, "
         u"CAST(xp.value as NVARCHAR(4000)) as DESCRIPTION, ao.is_ms_shipped AS SYSTEM, "
         u"s.base_object_name AS REFERENCED_OBJECT_NAME FROM " +
         prefix + u"sys.all_objects AS ao LEFT OUTER JOIN " + prefix +
         u"sys.schemas AS sh ON sh.schema_id = ao.schema_id LEFT OUTER JOIN " + prefix +
         u"sys.extended_properties AS xp ON xp.major_id = ao.object_id AND xp.minor_id = 0 AND "
         u"xp.name = 'MS_Description' LEFT OUTER JOIN " +
         prefix +
         u"sys.synonyms AS s ON s.object_id = ao.object_id WHERE ao.type in ('IF','S','SN','TF','U','V') AND "
         u"HAS_PERMS_BY_NAME(" +
         (database.empty() ? WideString() : SQLQuoteString(MSSQLQuoteName(database) + u".") + u" + ") +
         u"QUOTENAME(sh.name) + '.' + QUOTENAME(ao.name), 'object', 'select')=1";
}

WideString MSSQLLinkedServerTablesQuery(WideStringView server, WideStringView catalog) {
  return u"exec dbo.sp_tables_ex @table_server=" + SQLQuoteString(server) + u", @table_catalog=" +
         SQLQuoteString(catalog);
}

WideString MSSQLRelationsQuery(int major, WideStringView database) {
  const WideString prefix = MSSQLDatabasePrefix(database);
  if (major >= 9) {
    const WideString databaseName =
        database.empty() ? WideString(u"DB_NAME()") : u"DB_NAME(DB_ID(" + SQLQuoteString(database) + u"))";
    return u"SELECT " + databaseName + u" as PK_TABLE_DATABASE, sp.name as PK_SCHEMA_NAME, op.name as "
           u"PK_TABLE_NAME, cp.name as PK_FIELD_NAME, " + databaseName + u" as FK_TABLE_DATABASE, sf.name as "
           u"FK_SCHEMA_NAME, of1.name as FK_TABLE_NAME, cf.name as FK_FIELD_NAME, fk.constraint_column_id as ORDINAL "
           u"FROM " + prefix + u"sys.foreign_key_columns fk INNER JOIN " + prefix +
           u"sys.all_objects op ON op.object_id = fk.referenced_object_id INNER JOIN " + prefix +
           u"sys.schemas sp ON sp.schema_id = op.schema_id INNER JOIN " + prefix +
           u"sys.all_columns cp ON cp.object_id = fk.referenced_object_id AND cp.column_id = "
           u"fk.referenced_column_id INNER JOIN " + prefix +
           u"sys.all_objects of1 ON of1.object_id = fk.parent_object_id INNER JOIN " + prefix +
           u"sys.schemas sf ON sf.schema_id = of1.schema_id INNER JOIN " + prefix +
           u"sys.all_columns cf ON cf.object_id = fk.parent_object_id AND cf.column_id = fk.parent_column_id "
           u"ORDER BY fk.referenced_object_id, fk.parent_object_id, fk.constraint_column_id";
  }
  return u"select cast(pf.TABLE_CATALOG as varchar(255)) as PK_TABLE_DATABASE, cast(pf.TABLE_SCHEMA as "
         u"varchar(255)) as PK_SCHEMA_NAME, cast(pf.TABLE_NAME as varchar(255)) as PK_TABLE_NAME, "
         u"cast(pf.COLUMN_NAME as varchar(255)) as PK_FIELD_NAME, cast(ff.TABLE_CATALOG as varchar(255)) as "
         u"FK_TABLE_DATABASE, cast(ff.TABLE_SCHEMA as varchar(255)) as FK_SCHEMA_NAME, cast(ff.TABLE_NAME as "
         u"varchar(255)) as FK_TABLE_NAME, cast(ff.COLUMN_NAME as varchar(255)) as FK_FIELD_NAME, "
         u"pf.ORDINAL_POSITION as ORDINAL from " + prefix + u"INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS rc inner join " +
         prefix + u"INFORMATION_SCHEMA.KEY_COLUMN_USAGE ff on rc.CONSTRAINT_NAME = ff.CONSTRAINT_NAME and "
         u"rc.CONSTRAINT_SCHEMA = ff.CONSTRAINT_SCHEMA and rc.CONSTRAINT_CATALOG = ff.CONSTRAINT_CATALOG inner join " +
         prefix + u"INFORMATION_SCHEMA.KEY_COLUMN_USAGE pf on rc.UNIQUE_CONSTRAINT_NAME = pf.CONSTRAINT_NAME and "
         u"rc.UNIQUE_CONSTRAINT_SCHEMA = pf.CONSTRAINT_SCHEMA and rc.UNIQUE_CONSTRAINT_CATALOG = "
         u"pf.CONSTRAINT_CATALOG and ff.ORDINAL_POSITION = pf.ORDINAL_POSITION order by pf.TABLE_SCHEMA, "
         u"pf.TABLE_NAME, ff.TABLE_SCHEMA, ff.TABLE_NAME, pf.ORDINAL_POSITION";
}

WideString MSSQLTableFunctionsQuery(int major, WideStringView database) {
  const WideString prefix = MSSQLDatabasePrefix(database);
  if (major >= 9)
    return u"SELECT sudf.name AS PROCEDURE_SCHEMA, udf.name AS PROCEDURE_NAME, CASE udf.is_ms_shipped WHEN 1 THEN "
           u"N'SYSTEM PROCEDURE' ELSE N'PROCEDURE' END AS PROCEDURE_TYPE FROM " +
           prefix + u"sys.all_objects AS udf INNER JOIN " + prefix +
           u"sys.schemas AS sudf ON sudf.schema_id = udf.schema_id WHERE udf.type in ('TF', 'FN', 'IF', 'FS', 'FT') "
           u"AND udf.type_desc like N'%TABLE_VALUED_FUNCTION' AND udf.name not like N'#%' "
           u"ORDER BY PROCEDURE_SCHEMA, PROCEDURE_NAME";
  return u"SELECT sudf.name AS PROCEDURE_SCHEMA, udf.name AS PROCEDURE_NAME, CASE OBJECTPROPERTY(udf.id, "
         u"N'IsMSShipped') WHEN 1 THEN N'SYSTEM PROCEDURE' ELSE N'PROCEDURE' END AS PROCEDURE_TYPE FROM " +
         prefix + u"dbo.sysobjects AS udf INNER JOIN " + prefix +
         u"dbo.sysusers AS sudf ON sudf.uid = udf.uid WHERE udf.xtype in ('TF', 'FN', 'IF') AND "
         u"OBJECTPROPERTY(udf.id, N'IsTableFunction') = 1 AND udf.name not like N'#%' "
         u"ORDER BY PROCEDURE_SCHEMA, PROCEDURE_NAME";
}

WideString MSSQLAllObjectsProbeQuery(WideStringView database) {
  return u"select top (0) object_id from " + MSSQLDatabasePrefix(database) + u"sys.all_objects";
}

WideString MSSQLSynonymsQuery(WideStringView database) {
  if (database.empty()) return kMSSQLSynonymsQuery;
  // SCHEMA_NAME reads the connected database: another one joins its own schemas.
  const WideString prefix = MSSQLDatabasePrefix(database);
  return u"SELECT sh.name AS SYNONYM_SCHEMA, syn.name AS SYNONYM_NAME, CASE syn.is_ms_shipped WHEN 0 THEN "
         u"N'SYNONYM' WHEN 1 THEN N'SYSTEM SYNONYM' END AS SYNONYM_TYPE,  syn.base_object_name as "
         u"REFERENCED_OBJECT_NAME FROM " +
         prefix + u"sys.synonyms AS syn INNER JOIN " + prefix +
         u"sys.schemas AS sh ON sh.schema_id = syn.schema_id ORDER BY SYNONYM_SCHEMA,SYNONYM_NAME";
}

}  // namespace mv
