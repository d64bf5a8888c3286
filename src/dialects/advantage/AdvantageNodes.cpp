#include "dialects/advantage/AdvantageNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

void TAdvantageSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                              const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  builder.WriteKeyword(u"Select");
  builder.AddIndent(format.IndentInPart());
  select->BuildSelectMode(builder, format);
  if (Top) {
    builder.Space(3);
    Top->BuildSQL(builder, format);
  }
  if (format.NewLineAfterPartKeywords())
    builder.NewLine();
  else if (select->SelectItems && select->SelectItems->GetCount() > 0)
    builder.Space(3);
  select->BuildSelectListItems(builder, format);
  builder.EndIndent();
  if (IntoTable) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 0);
    builder.WriteKeyword(u"Into");
    builder.AddIndent(format.IndentInPart());
    builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
    IntoTable->BuildSQL(builder, format);
    builder.EndIndent();
  }
  select->BuildFromClause(builder, format);
  select->BuildWhereClause(builder, format);
  select->BuildGroupByClause(builder, format);
  select->BuildHavingClause(builder, format);
  select->BuildOrderByClause(builder, format);
  // Clauses the dialect cannot read, brought along by a tree of another
  // dialect, are printed rather than dropped.
  select->BuildResultOffsetClause(builder, format);
  select->BuildFetchFirstClause(builder, format);
}

}  // namespace mv
