#include "tree/SelectClauses.h"

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/FromClause.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

void ModeWord(TSQLBuilder& builder, const char16_t* word) {
  builder.Space(3);
  builder.WriteKeyword(word);
}

}  // namespace

void TSQLSubQuerySelectModeAll::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { ModeWord(builder, u"All"); }
void TSQLSubQuerySelectModeDistinct::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { ModeWord(builder, u"Distinct"); }
void TSQLSubQuerySelectModeDistinctRow::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { ModeWord(builder, u"DistinctRow"); }
void TSQLSubQuerySelectModeUnique::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { ModeWord(builder, u"Unique"); }

// --- Select items ---

void TSQLSelectItems::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TastBuildCommaList(Items, builder, format);
}

void TSQLSelectItemAllColumns::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  builder.WriteSymbol(u"*");
}

void TSQLSelectItemAllTableColumns::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  // A source that cannot be named prints nothing: the name its own parts.
  if (Object && Object->FromSource && Object->FromSource->BuildColumnPrefix(builder, format)) {
    builder.WriteSymbol(u".*");
    Object->FromSource->BuildColumnSuffix(builder, format);
    return;
  }
  BuildASTField(Object.get(), builder, format);
  builder.WriteSymbol(u".*");
}

void TSQLSelectItemExpression::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  const bool aliasFirst = TmvCast<TSQLAliasEqualsExpression>(Alias.get()) != nullptr;
  if (aliasFirst) {
    Alias->BuildSQL(builder, format);
    builder.Space(3);
    builder.WriteSymbol(u"=");
    builder.Space(3);
  }
  BuildASTField(Expression.get(), builder, format);
  if (Alias && !aliasFirst) {
    builder.Space(3);
    Alias->BuildSQL(builder, format);
  }
  // The alias an expanded virtual field gets joins with the metadata model.
}

void TSQLAliasExpression::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Name.get(), builder, format);
}

void TSQLAliasExpressionAlias::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  const bool mandatory = provider && provider->IsAsKeywordInExpressionAliasMandatory();
  const TmvSkipKeywordMode mode = builder.AsKeywordInExpressionAlias();
  if (mandatory || mode == skPrintAlways || (mode == skDontCare && AsKeyword)) {
    builder.WriteKeyword(u"As");
    builder.Space(3);
  }
  BuildASTField(Name.get(), builder, format);
}

// --- Group by, order by, window ---

void TSQLGroupByList::BuildGroupByKeywords(TSQLBuilder& builder) {
  builder.WriteKeyword(u"Group");
  builder.Space(3);
  builder.WriteKeyword(u"By");
}

void TSQLGroupByList::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (GroupingKind == 1 || GroupingKind == 2) {
    builder.WriteKeyword(GroupingKind == 1 ? u"Cube" : u"Rollup");
    builder.WriteSymbol(u"(");
  }
  if (Star)
    builder.WriteSymbol(u"*");
  else
    BuildSQLList(builder, format, u",", &format.GroupByFormat());
  if (GroupingKind == 1 || GroupingKind == 2) builder.WriteSymbol(u")");
}

void TSQLOrderByClause::BuildOrderByKeywords(TSQLBuilder& builder) {
  builder.WriteKeyword(u"Order");
  if (Siblings) {
    builder.Space(3);
    builder.WriteKeyword(u"Siblings");
  }
  builder.Space(3);
  builder.WriteKeyword(u"By");
}

void TSQLOrderByClause::BuildOrderByList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                                         const TSQLBuilderItemsListFormat* listFormat) {
  BuildSQLList(builder, format, u",", listFormat);
}

void TSQLOrderByClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildOrderByList(builder, format, nullptr);
}

void TSQLOrderByItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Descending) {
    builder.Space(3);
    builder.WriteKeyword(u"Desc");
  }
  if (NullOrdering == 1 || NullOrdering == 2) {
    builder.Space(3);
    builder.WriteKeyword(u"Nulls");
    builder.Space(3);
    builder.WriteKeyword(NullOrdering == 1 ? u"First" : u"Last");
  }
  if (Collate) {
    builder.Space(3);
    Collate->BuildSQL(builder, format);
  }
}

void TSQLWindowClause::BuildWindowKeyword(TSQLBuilder& builder) { builder.WriteKeyword(u"Window"); }

void TSQLWindowClause::BuildWindowList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                                       const TSQLBuilderItemsListFormat* listFormat) {
  BuildSQLList(builder, format, u",", listFormat);
}

void TSQLWindowClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildWindowList(builder, format, nullptr);
}

void TSQLWindowItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Name.get(), builder, format, true);
  builder.WriteKeyword(u"As");
  builder.Space(3);
  builder.WriteSymbol(u"(");
  BuildASTField(Definition.get(), builder, format);
  builder.WriteSymbol(u")");
}

// --- With ---

void TSQLWithClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"With");
  if (Modifier) {
    builder.Space(3);
    Modifier->BuildSQL(builder, format);
  }
  builder.AddIndent(format.IndentInPart());
  builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
  for (int i = 0; i < Items.Count(); ++i) {
    if (i > 0) {
      builder.WriteSymbol(u",");
      builder.NewLine();
    }
    Items.Item(i)->BuildSQL(builder, format);
  }
  builder.EndIndent();
}

void TastBuildColumnNames(TastNodeWithList& names, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteSymbol(u"(");
  builder.AddIndent(format.IndentInPart());
  TastBuildCommaList(names.Items, builder, format);
  builder.EndIndent();
  builder.WriteSymbol(u")");
}

void TSQLWithClauseItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Name.get(), builder, format);
  if (ColumnNames) TastBuildColumnNames(*ColumnNames, builder, format);
  builder.Space(3);
  builder.WriteKeyword(u"As");
  builder.Space(3);
  builder.WriteSymbol(u"(");
  builder.AddIndent(format.IndentInPart());
  try {
    BuildASTField(Query.get(), builder, builder.CTESubQueryFormat());
  } catch (...) {
    builder.EndIndent();
    throw;
  }
  builder.EndIndent();
  builder.WriteSymbol(u")");
}

// --- Result offset and fetch first ---

void TSQLResultOffsetClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Offset");
  builder.AddIndent(format.IndentInPart());
  builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
  BuildASTField(Offset.get(), builder, format);
  builder.Space(3);
  builder.WriteKeyword(u"Rows");
  builder.EndIndent();
}

void TSQLFetchFirstClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Fetch");
  builder.Space(3);
  builder.WriteKeyword(u"First");
  builder.AddIndent(format.IndentInPart());
  builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
  if (Count) {
    Count->BuildSQL(builder, format);
    builder.Space(3);
    if (Percent) {
      builder.WriteKeyword(u"Percent");
      builder.Space(3);
    }
    builder.WriteKeyword(u"Rows");
    builder.Space(3);
    if (WithTies) {
      builder.WriteKeyword(u"With");
      builder.Space(3);
      builder.WriteKeyword(u"Ties");
    } else {
      builder.WriteKeyword(u"Only");
    }
  } else {
    builder.WriteKeyword(u"Row");
    builder.Space(3);
    builder.WriteKeyword(u"Only");
  }
  builder.EndIndent();
}

}  // namespace mv
