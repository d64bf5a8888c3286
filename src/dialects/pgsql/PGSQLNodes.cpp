#include "dialects/pgsql/PGSQLNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

void TPgSQLSelectIntoClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Into");
  builder.AddIndent(format.IndentInPart());
  builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
  if (Temporary) {
    builder.WriteKeyword(u"Temporary");
    builder.Space(3);
  }
  builder.WriteKeyword(u"Table");
  builder.Space(3);
  BuildASTField(Table.get(), builder, format);
  builder.EndIndent();
}

void TPGSQLOperator::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Operator");
  builder.WriteSymbol(u"(");
  if (Schema) {
    Schema->BuildSQL(builder, format);
    builder.WriteSymbol(u".");
  }
  builder.WriteSymbol(Text);
  builder.WriteSymbol(u")");
}

void TPGSQLPositionalParam::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  builder.WriteSymbol(u"$");
  builder.WriteNumber(IntToWide(Number));
}

void TPGSQLExpressionArraySelection::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  builder.WriteSymbol(u"[");
  BuildASTField(First.get(), builder, format);
  if (Second) {
    builder.WriteSymbol(u":");
    Second->BuildSQL(builder, format);
  }
  builder.WriteSymbol(u"]");
}

void TPgSQLSubSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                       const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Limit.get(), Offset.get()}, false);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TPgSQLSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                    const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Limit.get(), Offset.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TPgSQLSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                             const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select || !Into) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  select->BuildSelectList(builder, format);
  builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
  Into->BuildSQL(builder, format);
  select->BuildFromClause(builder, format);
  select->BuildWhereClause(builder, format);
  select->BuildGroupByClause(builder, format);
  select->BuildHavingClause(builder, format);
  select->BuildWindowClause(builder, format);
  select->BuildOrderByClause(builder, format);
  select->BuildResultOffsetClause(builder, format);
  select->BuildFetchFirstClause(builder, format);
}

}  // namespace mv
