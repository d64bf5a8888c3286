#include "dialects/oracle/OracleCatalogQueries.h"

#include "metadata/fetchers/FilterMacros.h"
#include "support/WideFormat.h"

namespace mv {

const char16_t* const kOracleProbeQuery = u"select * from sys.V_$VERSION at where RowNum<2";
const char16_t* const kOracleVersionQuery = u"select BANNER from SYS.V_$VERSION where BANNER like 'CORE%'";
const char16_t* const kOracleDefaultSchemaQuery = u"select sys_context('userenv','current_schema') from dual";
const char16_t* const kOracleSchemasQuery =
    u"select u.USERNAME as NAME from ALL_USERS u where exists(select * from ALL_TABLES t where "
    u"t.OWNER=u.USERNAME) order by u.USERNAME";
const char16_t* const kOracleSystemSchemas[10] = {u"SYS",   u"SYSTEM", u"OUTLN", u"WMSYS", u"CTXSYS",
                                                  u"ORDSYS", u"XDB",   u"MDSYS", u"TSMSYS", u"LBACSYS"};
const char16_t* const kOracleFieldsQuery =
    u"select COLUMN_NAME, DATA_TYPE, DATA_LENGTH, DATA_PRECISION, DATA_SCALE, NULLABLE from ALL_TAB_COLUMNS "
    u"where OWNER=:ObjectSchema and TABLE_NAME=:ObjectName order by COLUMN_ID";

namespace {

// select * from (inner) q where (macro)
WideString Wrapped(const WideString& inner, const char16_t* macro) {
  return u"select * from (" + inner + u") q where (" + macro + u")";
}

}  // namespace

bool IsOracleProbeAnswer(WideStringView value) { return WidePosText(u"Oracle", value) != WideString::npos; }

int ParseServerVersionOracle(WideStringView banner) {
  // The second run of non-blank characters.
  size_t i = 0;
  auto blank = [&](size_t at) { return banner[at] == u' ' || banner[at] == u'\t'; };
  for (int group = 0; group < 1; ++group) {
    while (i < banner.size() && blank(i)) ++i;
    while (i < banner.size() && !blank(i)) ++i;
  }
  while (i < banner.size() && blank(i)) ++i;
  int major = 0, digits = 0;
  for (; i < banner.size() && banner[i] >= u'0' && banner[i] <= u'9' && digits < 4; ++i, ++digits)
    major = major * 10 + (banner[i] - u'0');
  if (digits == 0) return 11;
  return major < 7 ? 7 : major > 11 ? 11 : major;
}

WideString OracleQuoteName(WideStringView name) {
  WideString quoted = u"\"";
  for (char16_t c : name) {
    quoted += c;
    if (c == u'"') quoted += c;
  }
  return quoted + u"\"";
}

WideString OracleLinkSuffix(WideStringView link) {
  return link.empty() ? WideString() : u"@" + OracleQuoteName(link);
}

WideString OracleTablesQuery(WideStringView link) {
  return Wrapped(WideFormat(u"select t.OWNER, t.TABLE_NAME, c.COMMENTS from all_tables%0:s t, all_tab_comments%0:s c "
                            u"where (t.owner=c.owner(+))and(t.table_name=c.table_name(+))",
                            {OracleLinkSuffix(link)}),
                 mvQBTableFilterMacro);
}

WideString OracleViewsQuery(WideStringView link) {
  return Wrapped(WideFormat(u"select t.OWNER, t.VIEW_NAME, c.COMMENTS from all_views%0:s t, all_tab_comments%0:s c "
                            u"where (t.owner=c.owner(+))and(t.view_name=c.table_name(+))",
                            {OracleLinkSuffix(link)}),
                 mvQBViewFilterMacro);
}

WideString OracleMViewsQuery(WideStringView link, bool withComments) {
  const WideString suffix = OracleLinkSuffix(link);
  const WideString inner =
      withComments ? WideFormat(u"select t.OWNER, t.MVIEW_NAME, c.COMMENTS from all_mviews%0:s t, "
                                u"all_mview_comments%0:s c where (t.owner=c.owner(+))and(t.mview_name=c.mview_name(+))",
                                {suffix})
                   : WideFormat(u"select t.OWNER, t.MVIEW_NAME, null as COMMENTS from all_mviews%0:s t", {suffix});
  return Wrapped(inner, mvQBViewFilterMacro);
}

WideString OracleMViewCommentsProbe(WideStringView link) {
  return u"select * from all_mview_comments" + OracleLinkSuffix(link) + u" where RowNum<2";
}

WideString OracleSynonymsQuery(WideStringView link) {
  return Wrapped(WideFormat(u"select s.owner, s.synonym_name, s.table_owner, s.table_name, s.db_link from "
                            u"all_synonyms%0:s s, all_objects%0:s o where s.table_owner=o.owner and "
                            u"s.table_name=o.object_name and o.object_type in ('TABLE','VIEW','SYNONYM')",
                            {OracleLinkSuffix(link)}),
                 mvQBSynonymFilterMacro);
}

WideString OraclePipelinedFunctionsQuery(WideStringView link) {
  return Wrapped(u"select distinct owner, object_name from all_procedures" + OracleLinkSuffix(link) +
                     u" where pipelined<>'NO' and procedure_name is null",
                 mvQBProcedureFilterMacro);
}

WideString OracleRelationsQuery(WideStringView link, WideStringView pkCondition, WideStringView fkCondition) {
  return WideFormat(
      u"select * from (select pkc.OWNER as PK_SCHEMA_NAME, pkc.TABLE_NAME as PK_TABLE_NAME, pkc.COLUMN_NAME as "
      u"PK_FIELD_NAME, fkc.OWNER as FK_SCHEMA_NAME, fkc.TABLE_NAME as FK_TABLE_NAME, fkc.COLUMN_NAME as "
      u"FK_FIELD_NAME, pkc.POSITION as ORDINAL from ALL_CONSTRAINTS%2:s fk, ALL_CONS_COLUMNS%2:s fkc, "
      u"ALL_CONS_COLUMNS%2:s pkc where (fk.CONSTRAINT_TYPE in ('R'))and(fkc.OWNER = fk.OWNER)and"
      u"(fkc.CONSTRAINT_NAME = fk.CONSTRAINT_NAME)and(pkc.OWNER = fk.R_OWNER)and(pkc.CONSTRAINT_NAME = "
      u"fk.R_CONSTRAINT_NAME)and(fkc.POSITION = pkc.POSITION)) r where (%0:s) or (%1:s)",
      {WideString(pkCondition.empty() ? mvQBSQLTrue : pkCondition),
       WideString(fkCondition.empty() ? mvQBSQLTrue : fkCondition), OracleLinkSuffix(link)});
}

}  // namespace mv
