#include "dialects/firebird/FirebirdNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

namespace {

void SpacedKeyword(TSQLBuilder& builder, const char16_t* word) {
  builder.Space(3);
  builder.WriteKeyword(word);
}

}  // namespace

void TFirebirdSQLForUpdateClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"For");
  SpacedKeyword(builder, u"Update");
  if (GetCount() == 0) return;
  SpacedKeyword(builder, u"Of");
  for (int i = 0; i < GetCount(); ++i) {
    if (i > 0) builder.WriteSymbol(u",");
    builder.Space(3);
    GetItems(i)->BuildSQL(builder, format);
  }
}

void TSQLExpressionContaining::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Negated) SpacedKeyword(builder, u"Not");
  SpacedKeyword(builder, u"Containing");
  builder.Space(3);
  BuildASTField(Second.get(), builder, format);
}

void TSQLExpressionStarting::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Negated) SpacedKeyword(builder, u"Not");
  SpacedKeyword(builder, u"Starting");
  if (WithKeyword) SpacedKeyword(builder, u"With");
  builder.Space(3);
  BuildASTField(Second.get(), builder, format);
}

void TFirebirdSQLSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                          const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Rows.get(), ForUpdate.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TFirebirdSQLSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
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
    if (FirstSkip) {
      builder.Space(3);
      FirstSkip->BuildSQL(builder, format);
    }
  });
  select->BuildFromClause(builder, format);
  select->BuildWhereClause(builder, format);
  select->BuildGroupByClause(builder, format);
  select->BuildHavingClause(builder, format);
  if (Plan) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    builder.WriteKeyword(u"Plan");
    builder.AddIndent(format.IndentInPart());
    if (format.NewLineAfterPartKeywords())
      builder.NewLine();
    else
      builder.Space(3);
    Plan->BuildSQL(builder, format);
    builder.EndIndent();
  }
  select->BuildOrderByClause(builder, format);
}

}  // namespace mv
