#include "dialects/sqlite/SQLiteNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"
#include "support/Exceptions.h"

namespace mv {

int32_t SQLiteLimitNumber(WideStringView text) {
  int value = 0;
  if (!TryStrToInt(text, value)) throw EConvertError(u"'" + WideString(text) + u"' is not a valid integer value");
  return value;
}

WideString SQLiteLikeWord(WideStringView text) {
  for (const char16_t* word : {u"Glob", u"Regexp", u"Match"})
    if (WideSameText(text, word)) return word;
  return u"Like";
}

void TSQLiteCollate::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Collate");
  builder.Space(3);
  BuildASTField(Name.get(), builder, format);
}

void TSQLiteExpressionInTable::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildInPrefix(builder, format);
  builder.WriteSymbol(u"(");
  BuildASTField(Table.get(), builder, format);
  builder.WriteSymbol(u")");
}

void TSQLtSubSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                      const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Limit.get()}, false);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TSQLtSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                   const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Limit.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TSQLOrderByItemExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                              const TSQLBuilderSelectFormat& format) {
  auto* item = TmvCast<TSQLOrderByItem>(node);
  if (!item) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  TastNode::BuildASTField(item->Expression.get(), builder, format);
  if (Collate) {
    builder.Space(3);
    Collate->BuildSQL(builder, format);
  }
  if (item->Descending) {
    builder.Space(3);
    builder.WriteKeyword(u"Desc");
  }
  if (item->NullOrdering == 1 || item->NullOrdering == 2) {
    builder.Space(3);
    builder.WriteKeyword(u"Nulls");
    builder.Space(3);
    builder.WriteKeyword(item->NullOrdering == 1 ? u"First" : u"Last");
  }
  // A collation of the standard field (from another dialect's tree) stays
  // where that dialect prints it.
  if (item->Collate) {
    builder.Space(3);
    item->Collate->BuildSQL(builder, format);
  }
}

}  // namespace mv
