#include "dialects/sybase/SybaseNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

WideString SybaseTypeWord(const WideString& text) {
  static const char16_t* const kWords[] = {
      u"BigInt",   u"Int",       u"Integer",    u"SmallInt", u"TinyInt",    u"Bit",         u"Real",
      u"Money",    u"SmallMoney", u"DateTime",  u"SmallDateTime", u"Text",  u"NText",       u"Image",
      u"Cursor",   u"Sql_Variant", u"Table",    u"TimeStamp", u"RowVersion", u"UniqueIdentifier", u"Xml",
      u"Float",    u"NChar",     u"NVarChar",   u"VarChar",  u"Char",       u"Character",   u"Decimal",
      u"Dec",      u"Numeric",   u"Keep",       u"KeepFixed"};
  for (const char16_t* word : kWords)
    if (WideSameText(text, word)) return word;
  return text;
}

void TSybaseSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                              const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  select->BuildSelectList(builder, format, nullptr, [&] {
    if (Top) {
      builder.Space(3);
      Top->BuildSQL(builder, format);
    }
  });
  select->BuildFromClause(builder, format);
  select->BuildWhereClause(builder, format);
  select->BuildGroupByClause(builder, format);
  select->BuildHavingClause(builder, format);
  select->BuildOrderByClause(builder, format);
  // Clauses another dialect's tree may bring along are printed, not dropped.
  select->BuildResultOffsetClause(builder, format);
  select->BuildFetchFirstClause(builder, format);
}

void TSybaseSubSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                        const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {For.get(), Option.get()}, false);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TSybaseSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                     const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {For.get(), Option.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TSybaseFromSourceExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                const TSQLBuilderSelectFormat& format) {
  TastExtender::BuildSQLForNode(node, builder, format);
  if (Hints) {
    builder.Space(3);
    Hints->BuildSQL(builder, format);
  }
}

void TSybaseJoinKindExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                              const TSQLBuilderSelectFormat& format) {
  if (Bare) {
    builder.WriteKeyword(u"Join");
    return;
  }
  if (Hint.empty()) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  // A hint needs the kind spelled out: Inner is written too.
  if (auto* outer = TmvCast<TSQLJoinKindOuter>(node)) {
    builder.WriteKeyword(TmvCast<TSQLJoinKindLeft>(node)    ? u"Left"
                         : TmvCast<TSQLJoinKindRight>(node) ? u"Right"
                                                            : u"Full");
    builder.Space(3);
    if (outer->OuterKeyword) {
      builder.WriteKeyword(u"Outer");
      builder.Space(3);
    }
  } else {
    builder.WriteKeyword(u"Inner");
    builder.Space(3);
  }
  builder.WriteKeyword(Hint);
  builder.Space(3);
  builder.WriteKeyword(u"Join");
}

}  // namespace mv
