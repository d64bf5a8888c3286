#include "dialects/interbase/IBCatalogQueries.h"

#include "support/TextHelpers.h"

namespace mv {

const char16_t* const kIBProbeQuery = u"select * from rdb$relations";
const char16_t* const kIBTablesQuery =
    u"select rdb$relation_name table_name,rdb$system_flag table_system from rdb$relations where rdb$view_blr is null";
const char16_t* const kIBViewsQuery =
    u"select rdb$relation_name table_name,rdb$system_flag table_system from rdb$relations where rdb$view_blr is not "
    u"null";
const char16_t* const kIBProceduresProbeQuery = u"select * from RDB$PROCEDURES where 1 = 0";
const char16_t* const kIBProceduresQuery = u"select RDB$PROCEDURE_NAME as TABLE_NAME from RDB$PROCEDURES";
const char16_t* const kIBRelationsQuery =
    u"select pt.RDB$RELATION_NAME as PK_TABLE_NAME, pc.RDB$FIELD_NAME as PK_FIELD_NAME, ct.RDB$RELATION_NAME as "
    u"FK_TABLE_NAME, cc.RDB$FIELD_NAME as FK_FIELD_NAME, cc.RDB$FIELD_POSITION as ORDINAL from rdb$indices pt, "
    u"rdb$index_segments pc, rdb$indices ct, rdb$index_segments cc where pt.RDB$INDEX_NAME=ct.RDB$FOREIGN_KEY and "
    u"pc.RDB$INDEX_NAME=pt.RDB$INDEX_NAME and cc.RDB$INDEX_NAME=ct.RDB$INDEX_NAME and "
    u"pc.RDB$FIELD_POSITION=cc.RDB$FIELD_POSITION";

WideString IBFieldsQuery(WideStringView objectName) {
  return u"select rf.rdb$field_name as field_name, "
         u"t.rdb$type_name as field_type, "
         u"f.rdb$field_length as field_length, f.rdb$field_precision as field_precision, "
         u"f.rdb$field_scale as field_scale, "
         u"coalesce(rf.rdb$null_flag, f.rdb$null_flag, 0) as field_not_null_constraint, "
         u"coalesce(rf.rdb$default_source, f.rdb$default_source) as field_default_value, "
         u"(select count(*) from rdb$relation_constraints rc "
         u"join rdb$indices i on i.rdb$index_name = rc.rdb$index_name "
         u"join rdb$index_segments s on s.rdb$index_name = i.rdb$index_name "
         u"where rc.rdb$relation_name = rf.rdb$relation_name and rc.rdb$constraint_type = 'PRIMARY KEY' "
         u"and s.rdb$field_name = rf.rdb$field_name) as field_pk, "
         u"rf.rdb$description as field_description "
         u"from rdb$relation_fields rf "
         u"join rdb$fields f on f.rdb$field_name = rf.rdb$field_source "
         u"left join rdb$types t on t.rdb$field_name = 'RDB$FIELD_TYPE' and t.rdb$type = f.rdb$field_type "
         u"where rf.rdb$relation_name = " +
         SQLQuoteString(objectName) + u" order by rf.rdb$field_position";
}

}  // namespace mv
