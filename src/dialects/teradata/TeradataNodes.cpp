#include "dialects/teradata/TeradataNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

void TmvTeradataStringLiteralExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                       const TSQLBuilderSelectFormat& format) {
  if (!CharacterSet.empty()) {
    builder.WriteKeyword(CharacterSet);
    builder.Space(3);
  }
  TastExtender::BuildSQLForNode(node, builder, format);
  if (!Suffix.empty()) builder.WriteKeyword(Suffix);
  if (!UEscape.empty()) {
    builder.Space(3);
    builder.WriteKeyword(u"UEscape");
    builder.Space(3);
    builder.WriteString(UEscape);
  }
}

void TmvTeradataIdentifierExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                    const TSQLBuilderSelectFormat& format) {
  auto* identifier = TmvCast<TastTokenIdentifier>(node);
  if (!identifier || UEscape.empty()) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  // The escapes in the name mean something only inside U&"...".
  builder.WriteSymbol(u"U&");
  identifier->BuildIdentifier(builder, format, icAll);
  builder.Space(3);
  builder.WriteKeyword(u"UEscape");
  builder.Space(3);
  builder.WriteString(UEscape);
}

void TmvTeradataSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
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
  if (Qualify) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    builder.WriteKeyword(u"Qualify");
    builder.AddIndent(format.IndentInPart());
    builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
    Qualify->BuildSQLCosmetic(builder, format, false, 0, format.HavingFormat());
    builder.EndIndent();
  }
  select->BuildOrderByClause(builder, format);
  // Clauses the dialect cannot read, brought along by a tree of another
  // dialect, are printed rather than dropped.
  select->BuildResultOffsetClause(builder, format);
  select->BuildFetchFirstClause(builder, format);
}

}  // namespace mv
