#include "dialects/access/AccessNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

void TAccessSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                              const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  BuildSelectWithTopAndInto(*select, Top.get(), IntoTable.get(), builder, format);
}

void BuildSelectWithTopAndInto(TSQLSubQuerySelectExpression& select, TastNode* top, TastNode* into,
                               TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  select.BuildSelectList(builder, format, nullptr, [&] {
    if (top) {
      builder.Space(3);
      top->BuildSQL(builder, format);
    }
  });
  if (into) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 0);
    builder.WriteKeyword(u"Into");
    builder.AddIndent(format.IndentInPart());
    builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
    into->BuildSQL(builder, format);
    builder.EndIndent();
  }
  select.BuildFromClause(builder, format);
  select.BuildWhereClause(builder, format);
  select.BuildGroupByClause(builder, format);
  select.BuildHavingClause(builder, format);
  select.BuildOrderByClause(builder, format);
  // Clauses the dialect cannot read, brought along by a tree of another
  // dialect, are printed rather than dropped.
  select.BuildResultOffsetClause(builder, format);
  select.BuildFetchFirstClause(builder, format);
}

}  // namespace mv
