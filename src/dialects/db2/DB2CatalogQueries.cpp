#include "dialects/db2/DB2CatalogQueries.h"

#include "support/TextHelpers.h"
#include "support/WideFormat.h"

namespace mv {

const char16_t* const kDB2ProbeQuery = u"select USER as USER_NAME from SYSIBM.SYSDUMMY1";
const char16_t* const kDB2DefaultDatabaseQuery = u"select CURRENT_SERVER as CATALOG_NAME from SYSIBM.SYSDUMMY1";
const char16_t* const kDB2DefaultSchemaQuery = u"select CURRENT SQLID as DEF_SCHEMA from SYSIBM.SYSDUMMY1";
const char16_t* const kDB2SchemasQuery = u"select SCHEMANAME as NAME from SYSCAT.SCHEMATA order by NAME";
const char16_t* const kDB2RelationsQuery =
    u"select * from sysibm.sqlforeignkeys where pktable_schem<>fktable_schem or pktable_name<>fktable_name or "
    u"pkcolumn_name<>fkcolumn_name order by pktable_schem, pktable_name, fktable_schem, fktable_name, key_seq for "
    u"fetch only";
const char16_t* const kDB2SystemSchemas = u"syscat,sysfun,sysibm,sysstat,sysproc,systools,sysibmadm";
const char16_t* const kDB2QSYS2SystemSchemas = u"syscat,sysfun,sysibm,sysstat,sysproc,systools,sysibmadm,qsys,qsys2";

WideString DB2QuoteName(WideStringView name) {
  WideString quoted = u"\"";
  for (char16_t c : name) {
    quoted += c;
    if (c == u'"') quoted += c;
  }
  return quoted + u"\"";
}

WideString DB2DatabasePrefix(WideStringView database) {
  return database.empty() ? WideString() : DB2QuoteName(database) + u".";
}

WideString DB2ObjectsQuery(bool qsys2, WideStringView database, WideStringView tableCondition,
                           WideStringView viewCondition, WideStringView synonymCondition) {
  return WideFormat(
      u"select * from (select cast(creator as varchar(254)) as TABLE_SCHEMA, cast(name as varchar(254)) as "
      u"TABLE_NAME, cast(type as char(1)) as TABLE_TYPE, cast(%1:s as varchar(254)) as REF_TABLE_SCHEMA, "
      u"cast(%2:s as varchar(254)) as REF_TABLE_NAME from %0:s%3:s.systables) as q where (TABLE_TYPE in "
      u"('H','L','P','T','U'))and(%4:s) or (TABLE_TYPE in ('V','W','M','S'))and(%5:s) or (TABLE_TYPE in "
      u"('A','N'))and(%6:s) for fetch only",
      {DB2DatabasePrefix(database), WideString(qsys2 ? u"base_table_schema" : u"base_schema"),
       WideString(qsys2 ? u"base_table_name" : u"base_name"), WideString(qsys2 ? u"qsys2" : u"sysibm"),
       WideString(tableCondition), WideString(viewCondition), WideString(synonymCondition)});
}

WideString DB2TableFunctionsQuery(bool qsys2, WideStringView condition) {
  return WideFormat(u"select * from %0:s.sysroutines where routinetype = 'F' and function_type = 'T' and (%1:s) FOR "
                    u"FETCH ONLY",
                    {WideString(qsys2 ? u"qsys2" : u"sysibm"), WideString(condition)});
}

WideString DB2FieldsQuery(bool qsys2, WideStringView schema, WideStringView object) {
  const WideString owner = SQLQuoteString(schema), name = SQLQuoteString(object);
  if (!qsys2)
    return WideFormat(
        u"select NAME, '\"' concat rtrim(TYPESCHEMA) concat '\".\"' concat rtrim(TYPENAME) concat '\"' as COLTYPE, "
        u"LENGTH, SCALE, DEFAULT, NULLS, KEYSEQ, GENERATED, REMARKS, COLNO from sysibm.syscolumns where tbcreator "
        u"= %0:s and tbname = %1:s and hidden <> 'S' and typeschema <> 'SYSIBM' union all select NAME, COLTYPE, "
        u"LENGTH, SCALE, DEFAULT, NULLS, KEYSEQ, GENERATED, REMARKS, COLNO from sysibm.syscolumns where tbcreator "
        u"= %0:s and tbname = %1:s and hidden <> 'S' and typeschema = 'SYSIBM' order by COLNO for fetch only",
        {owner, name});
  return WideFormat(
      u"select c.NAME, '\"' concat rtrim(c.TYPESCHEMA) concat '\".\"' concat rtrim(c.TYPENAME) concat '\"' as "
      u"COLTYPE, c.LENGTH, c.SCALE, c.DEFAULT, c.NULLS, s.CARDINALITY AS keyseq, c.GENERATED, c.REMARKS, c.COLNO "
      u"from QSYS2.syscolumns c left join SYSIBM.SQLSTATS s on s.dbname = c.dbname and s.tbname = c.tbname where "
      u"c.dbname = %0:s and c.tbname = %1:s and c.typeschema <> 'QSYS2' union all select c.NAME, c.COLTYPE, "
      u"c.LENGTH, c.SCALE, c.DEFAULT, c.NULLS, s.CARDINALITY AS keyseq, c.GENERATED, c.REMARKS, c.COLNO from "
      u"QSYS2.syscolumns c left join SYSIBM.SQLSTATS s on s.dbname = c.dbname and s.tbname = c.tbname where "
      u"c.dbname = %0:s and c.tbname = %1:s and (c.typeschema is null or c.typeschema = 'QSYS2') order by COLNO "
      u"for fetch only",
      {owner, name});
}

}  // namespace mv
