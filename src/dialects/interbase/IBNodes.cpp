#include "dialects/interbase/IBNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

namespace {

void SpacedKeyword(TSQLBuilder& builder, const char16_t* word) {
  builder.Space(3);
  builder.WriteKeyword(word);
}

// The items of a list with "," and a blank between them.
void CommaList(TastNodeWithList& list, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  for (int i = 0; i < list.GetCount(); ++i) {
    if (i > 0) {
      builder.WriteSymbol(u",");
      builder.Space(3);
    }
    list.GetItems(i)->BuildSQL(builder, format);
  }
}

}  // namespace

void TIBSQLForUpdateClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"FOR");
  SpacedKeyword(builder, u"UPDATE");
  if (GetCount() == 0) return;
  SpacedKeyword(builder, u"OF");
  builder.Space(3);
  CommaList(*this, builder, format);
}

void TIBSQLExpressionContaining::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Negated) SpacedKeyword(builder, u"Not");
  SpacedKeyword(builder, u"Containing");
  builder.Space(3);
  BuildASTField(Second.get(), builder, format);
}

void TIBSQLExpressionStarting::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Negated) SpacedKeyword(builder, u"Not");
  SpacedKeyword(builder, u"Starting");
  if (WithKeyword) SpacedKeyword(builder, u"With");
  builder.Space(3);
  BuildASTField(Second.get(), builder, format);
}

void TIBSQLPlanExpression::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  switch (Kind) {
    case ptJoin: builder.WriteKeyword(u"Join"); break;
    case ptMerge: builder.WriteKeyword(u"Merge"); break;
    case ptSort: builder.WriteKeyword(u"Sort"); break;
    case ptSortMerge:
      builder.WriteKeyword(u"Sort");
      SpacedKeyword(builder, u"Merge");
      break;
    default: break;
  }
  if (Kind != ptNone) builder.Space(3);
  builder.WriteSymbol(u"(");
  CommaList(*this, builder, format);
  builder.WriteSymbol(u")");
}

void TIBSQLPlanItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Table.get(), builder, format);
  SpacedKeyword(builder, Kind == piIndex ? u"Index" : Kind == piOrder ? u"Order" : u"Natural");
  if (GetCount() == 0) return;
  builder.Space(3);
  if (Kind != piIndex) {
    CommaList(*this, builder, format);
    return;
  }
  builder.WriteSymbol(u"(");
  CommaList(*this, builder, format);
  builder.WriteSymbol(u")");
}

void TIBSQLSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                    const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Rows.get(), ForUpdate.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TIBSQLSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                             const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  select->BuildSelectList(builder, format, [&] {
    if (Transaction) {
      SpacedKeyword(builder, u"Transaction");
      builder.Space(3);
      Transaction->BuildSQL(builder, format);
    }
  });
  select->BuildFromClause(builder, format);
  select->BuildWhereClause(builder, format);
  select->BuildGroupByClause(builder, format);
  select->BuildHavingClause(builder, format);
  if (Plan) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    builder.WriteKeyword(u"Plan");
    builder.Space(3);
    Plan->BuildSQL(builder, format);
  }
  select->BuildOrderByClause(builder, format);
}

}  // namespace mv
