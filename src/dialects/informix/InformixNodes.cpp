#include "dialects/informix/InformixNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

WideString InformixWord(const WideString& text) {
  static const char16_t* const kWords[] = {
      u"First",    u"Limit",     u"Middle",   u"Int",      u"Integer",   u"SmallInt", u"Int8",     u"SmallFloat",
      u"Real",     u"Text",      u"Byte",     u"Date",     u"Boolean",   u"Blob",     u"Clob",     u"Collection",
      u"Char",     u"Character", u"NChar",    u"LVarChar", u"Serial",    u"Serial8",  u"Float",    u"NVarChar",
      u"VarChar",  u"Decimal",   u"Dec",      u"Numeric",  u"Money",     u"Interval", u"DateTime", u"Row",
      u"Set",      u"MultiSet",  u"List",     u"Year",     u"Month",     u"Day",      u"Hour",     u"Minute",
      u"Second",   u"Fraction",  u"Current_Role", u"Current_User", u"DbServerName", u"SiteName", u"Today",
      u"User",     u"CurVal",    u"NextVal"};
  for (const char16_t* word : kWords)
    if (WideSameText(text, word)) return word;
  if (text.empty()) return text;
  return WideUpperCase(text.substr(0, 1)) + WideLowerCase(text.substr(1));
}

void InformixAddField(TmvBaseSQLContext* context, TSQLExpressionItem*& item, TastToken* part) {
  TmvOwned<TastToken> owned(part);
  auto* column = TmvCast<TSQLExpressionColumn>(item);
  if (owned && column && column->Column) {
    column->Column->Insert(0, std::move(owned));
    return;
  }
  auto field = TastCreate<TSQLExpressionFieldSelection>(context);
  field->Expression.Reset(item);
  if (owned) field->Field.Reset(owned.release());
  item = field.release();
}

void TinfSQLSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                              const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  select->BuildSelectList(builder, format, [&] {
    if (!SkipText.empty()) {
      builder.Space(3);
      builder.WriteKeyword(u"Skip");
      builder.Space(3);
      builder.WriteNumber(SkipText);
    }
    if (LimitWord) {
      builder.Space(3);
      LimitWord->BuildSQL(builder, format);
      builder.Space(3);
      builder.WriteNumber(CountText);
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

void TinfSQLSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                     const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {For.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TinfSQLSubstringOperator::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  builder.WriteSymbol(u"[");
  builder.WriteNumber(First);
  builder.WriteSymbol(u",");
  builder.WriteNumber(Last);
  builder.WriteSymbol(u"]");
}

void TinfSQLConctructorExpression::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(Word);
  builder.WriteSymbol(u"(");
  for (int i = 0; i < Items.Count(); ++i) {
    if (i > 0) {
      builder.WriteSymbol(u",");
      builder.Space(2);
    }
    Items.Item(i)->BuildSQL(builder, format);
  }
  builder.WriteSymbol(u")");
}

void TinfSQLCollectionSubquery::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(Word);
  TSQLExpressionSelect::BuildSQLDirect(builder, format);
}

}  // namespace mv
