#include "dialects/informix/InformixCatalogQueries.h"

#include "support/TextHelpers.h"

namespace mv {

const char16_t* const kInformixProbeQuery = u"select first 1 dbinfo('version', 'full') from systables";
const char16_t* const kInformixVersionQuery = u"select first 1 dbinfo('version', 'major') from systables";
const char16_t* const kInformixSchemasQuery = u"select distinct OWNER as NAME from SYSTABLES order by NAME";
const char16_t* const kInformixOwnersQuery = u"select distinct owner as TABLE_OWNER from systables";
const char16_t* const kInformixObjectsQuery =
    u"select tabname as TABLE_NAME, owner as TABLE_OWNER, tabtype as TABLE_TYPE from systables";
const char16_t* const kInformixRelationsQuery =
    u"select n.owner as PK_SCHEMA_NAME, n.tabname as PK_TABLE_NAME, p.colname as PK_FIELD_NAME, t.owner as "
    u"FK_SCHEMA_NAME, t.tabname as FK_TABLE_NAME, c.colname as FK_FIELD_NAME from syscolumns c, systables t, "
    u"sysconstraints s, sysreferences r, systables n, sysindexes i, syscolumns p where s.constrtype = 'R' and "
    u"s.tabid = t.tabid and r.constrid = s.constrid and n.tabid = r.ptabid and i.idxname = s.idxname and "
    u"i.tabid = t.tabid and c.tabid = t.tabid and i.part1 = c.colno and p.tabid = n.tabid and p.colno = 1";
const char16_t* const kInformixSystemSchema = u"INFORMIX";

WideString InformixFieldsQuery(WideStringView owner, WideStringView object) {
  return u"select c.COLNAME, c.COLTYPE, c.COLLENGTH from SYSCOLUMNS c join SYSTABLES t on t.TABID = c.TABID where "
         u"t.OWNER = " +
         SQLQuoteString(owner) + u" and t.TABNAME = " + SQLQuoteString(object) + u" order by t.TABID, c.COLNO";
}

}  // namespace mv
