#include "dialects/mssql/MSSQLNodes.h"

#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"
#include "tree/FromClause.h"

namespace mv {

void TMSSQLCollate::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Collate");
  builder.Space(3);
  BuildASTField(Name.get(), builder, format);
}

void TSQLFromFullTextQuery::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(FunctionName.get(), builder, format);
  builder.WriteSymbol(u"(");
  BuildASTField(Object.get(), builder, format);
  builder.WriteSymbol(u",");
  builder.Space(2);
  if (Columns)
    Columns->BuildSQL(builder, format);
  else
    builder.WriteSymbol(u"*");
  builder.WriteSymbol(u",");
  builder.Space(2);
  BuildASTField(SearchText.get(), builder, format);
  if (TopCount) {
    builder.WriteSymbol(u",");
    builder.Space(2);
    TopCount->BuildSQL(builder, format);
  }
  builder.WriteSymbol(u")");
}

void TSQLComputeItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  // The aggregate in the spelling of the dialect's lists (sum prints Sum).
  TmvBaseSQLContext* context = SQLContext();
  if (Name && context) {
    auto name = TastCreate<TSQLQualifiedName>(context);
    name->AddName(Name->Token, false);
    context->AggregateNormalize(name.get());
    TastCreate<TastTokenBuiltin>(context, name->GetCount() == 1 ? name->Token(0)->Token : Name->Token)
        ->BuildSQL(builder, format);
  } else {
    BuildASTField(Name.get(), builder, format);
  }
  builder.WriteSymbol(u"(");
  BuildASTField(Expression.get(), builder, format);
  builder.WriteSymbol(u")");
}

void TSQLComputeClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Compute");
  builder.Space(3);
  builder.AddIndent(format.IndentInPart());
  BuildSQLList(builder, format, u",", nullptr);
  if (By) {
    builder.Space(3);
    builder.WriteKeyword(u"By");
    builder.Space(3);
    By->BuildSQLList(builder, format, u",", nullptr);
  }
  builder.EndIndent();
}

void TMSSQLExpressionItemExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                   const TSQLBuilderSelectFormat& format) {
  TastExtender::BuildSQLForNode(node, builder, format);
  if (Collate) {
    builder.Space(3);
    Collate->BuildSQL(builder, format);
  }
}

void TMSSQLSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
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
  select->BuildResultOffsetClause(builder, format);
  select->BuildFetchFirstClause(builder, format);
}

void TMSSQLGroupByListExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                const TSQLBuilderSelectFormat& format) {
  if (All) {
    builder.WriteKeyword(u"All");
    builder.Space(3);
  }
  TastExtender::BuildSQLForNode(node, builder, format);
  if (WithKind == 1 || WithKind == 2) {
    builder.Space(3);
    builder.WriteKeyword(u"With");
    builder.Space(3);
    builder.WriteKeyword(WithKind == 1 ? u"Cube" : u"Rollup");
  }
}

void TMSSQLSubSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                       const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Compute.get(), For.get(), Option.get()}, false);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TMSSQLSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                    const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {Compute.get(), For.get(), Option.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TMSSQLFromSourceExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                               const TSQLBuilderSelectFormat& format) {
  TastExtender::BuildSQLForNode(node, builder, format);
  if (Hints) {
    builder.Space(3);
    Hints->BuildSQL(builder, format);
  }
}

void TMSSQLJoinKindExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                             const TSQLBuilderSelectFormat& format) {
  if (Hint.empty()) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  // A hint needs the kind spelled out: Inner is written too.
  if (auto* outer = TmvCast<TSQLJoinKindOuter>(node)) {
    builder.WriteKeyword(TmvCast<TSQLJoinKindLeft>(node) ? u"Left" : TmvCast<TSQLJoinKindRight>(node) ? u"Right" : u"Full");
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
