// Building the transformed statement: the source's text goes into a scratch
// query builder, which is wrapped, filtered, sorted, limited and aggregated
// there step by step, each step as text that the scratch builder reads
// again; the last tree is cloned into the source's context.
#include <vector>

#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "transform/OutputColumnSource.h"
#include "transform/QueryTransformer.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

namespace {

WideString Print(TastNode* node, TmvQueryBuilder* builder) {
  return node->SimpleSQL(builder->SQLContext()->SQLBuilderExpressionForServer());
}

TSQLSubQuerySelectExpression* FirstUnionSubQuery(TmvQueryBuilder* builder) {
  TSQLSelectStatement* tree = builder->GetResultQueryAST();
  return tree ? tree->FirstUnionSubQuery() : nullptr;
}

TmvSelectList* FirstSelectList(TmvQueryBuilder* builder) {
  TmvUnionSubQuery* first = builder->Query()->FirstSelect();
  if (!first) throw EmvQueryBuilderError(u"The query has no SELECT to transform");
  return first->SelectList();
}

// The dialect reads limits in the statement back, and there are some.
bool HasLimits(TmvQueryBuilder* builder) {
  WideString offset, count;
  return builder->SyntaxProvider()->GetQueryLimits(builder->GetResultQueryAST(), offset, count) &&
         (!offset.empty() || !count.empty());
}

// Every column of the tree loses its prefixes and is read from the wrapper.
void PrefixColumnsWithWrapper(TastNode* node) {
  std::vector<TSQLObjectColumn*> columns;
  node->TraverseASTTreeDepthFirst([&columns](TastNodeBase* each) {
    if (auto* column = TmvCast<TSQLObjectColumn>(each)) columns.push_back(column);
  });
  for (TSQLObjectColumn* column : columns) {
    if (column->GetCount() == 0) continue;
    while (column->GetCount() > 1) column->RemoveFirstPrefix();
    column->FromSource = nullptr;
    column->AddPrefix(TmvBaseSyntaxProvider::kWrapQueryAlias, false);
  }
}

// Puts the scratch builder's query one level down: SELECT * FROM (query) q.
// The ORDER BY goes to the outer level, each of its columns read from q by
// its own name, unless the query has limits (and no unions), which need it
// inside. Answers the names of the inner columns.
std::vector<WideString> WrapInSubQuery(TmvQueryBuilder* scratch) {
  TmvBaseSQLContext* context = scratch->SQLContext();
  TmvBaseSyntaxProvider* provider = scratch->SyntaxProvider();
  const bool moveOrder = TransformerQueryHasUnions(scratch) || !HasLimits(scratch);
  TmvOwned<TSQLSubSelectStatement> inner = scratch->GetResultQueryAST()->CloneAs<TSQLSubSelectStatement>(context);
  inner->PrepareAndFixupRecursive();
  std::vector<WideString> names = provider->ExpandQueryColumns(inner.get());
  inner->RestoreColumnPrefixRecursive(true);
  TmvOwned<TSQLOrderByClause> moved;
  if (moveOrder) {
    auto* lone = inner->GetCount() == 1 ? TmvCast<TSQLSubQuerySelectExpression>(inner->GetItems(0)) : nullptr;
    if (inner->OrderBy)
      moved = inner->OrderBy.Release();
    else if (lone && lone->OrderBy)
      moved = lone->OrderBy.Release();
  }
  TmvOwned<TSQLSubSelectStatement> outer = provider->WrapQuery(std::move(inner));
  if (moved) {
    PrefixColumnsWithWrapper(moved.get());
    outer->OrderBy.Set(std::move(moved));
  }
  scratch->SetSql(Print(outer.get(), scratch));
  return names;
}

}  // namespace

TmvOwned<TSQLSelectStatement> TmvQueryTransformer::GenerateResult() {
  if (!IsTransformable()) return nullptr;
  TmvOwned<TmvQueryBuilder> scratch = TmvCreate<TmvQueryBuilder>();
  try {
    scratch->AllowSleepMode = false;
    scratch->SetSyntaxProvider(queryBuilder_->SyntaxProvider());
    scratch->SetMetadataProvider(queryBuilder_->MetadataProvider());
    scratch->MetadataContainer()->Assign(queryBuilder_->MetadataContainer());
    scratch->SetWorkOffline(queryBuilder_->WorkOffline());
    scratch->SetSql(queryBuilder_->GetSql());
  } catch (const Exception&) {
    return nullptr;
  }
  TmvBaseSQLContext* context = scratch->SQLContext();
  TmvBaseSyntaxProvider* provider = scratch->SyntaxProvider();

  // 1-3: names, and whether the query goes one level down.
  bool anyHidden = false;
  for (int i = 0; i < columns_->Count(); ++i) {
    columns_->Items(i)->SetResultName(WideString());
    anyHidden = anyHidden || !columns_->Items(i)->Visible();
  }
  const bool hasDuplicates =
      renameDuplicatedColumns_ && provider->IsQueryHaveDuplicatedColumnNames(FirstUnionSubQuery(scratch.get()));
  const bool wrap = alwaysWrapInSubQuery_ || TransformerQueryHasUnions(scratch.get()) || HasLimits(scratch.get()) ||
                    anyHidden || hasDuplicates;
  std::vector<WideString> names =
      wrap ? WrapInSubQuery(scratch.get()) : provider->GetQueryColumnNames(FirstUnionSubQuery(scratch.get()));

  // 4: the filter, ANDed to the WHERE of the first select (the wrapper's,
  // when there is one), each column by its filtration expression.
  if (filters_->Count() > 0) {
    const WideString text = filters_->GetCondition();
    TmvErrorList errors;
    TmvOwned<TSQLExpressionItem> condition = context->ParseLogicalExpression(u"(" + text + u")", true, false, &errors);
    if (!condition) throw EmvSQLError(errors.empty() ? text : errors.front(), nullptr);
    TmvSelectList* list = FirstSelectList(scratch.get());
    TmvOwned<TSQLExpressionItem> current = list->GetConditionTree(TmvConditionsTypes{ctWhere});
    for (auto* collection = TmvCast<TSQLExpressionLogicalCollection>(current.get());
         collection && collection->GetCount() == 1;
         collection = TmvCast<TSQLExpressionLogicalCollection>(current.get()))
      current = collection->Extract(0);
    auto both = TastCreate<TSQLExpressionAnd>(context);
    if (current) both->Add(std::move(current));
    both->Add(std::move(condition));
    TmvUpdateScope update(list);
    for (int i = 0; i < list->Count(); ++i) {
      TmvSelectItem* row = list->Items(i);
      if (row->ConditionsType() != ctWhere) continue;
      for (int c = 0; c < row->ConditionsListCount(); ++c) row->SetASTCondition(c, nullptr);
    }
    list->LoadConditionFromAST(std::move(both), ctWhere);
  }

  // 5: ALL or DISTINCT.
  if (selectMode_ != smDefault) {
    TmvUnionSubQuery* first = scratch->Query()->FirstSelect();
    if (TSQLSubQuerySelectExpression* select = first ? first->SelectAST() : nullptr) {
      if (selectMode_ == smAll)
        select->SelectMode.Set(TastCreate<TSQLSubQuerySelectModeAll>(context));
      else
        select->SelectMode.Set(TastCreate<TSQLSubQuerySelectModeDistinct>(context));
      first->NotifySQLUpdated();
    }
  }

  // 6: the sorting replaces the query's own.
  if (sortings_->Count() > 0) {
    TmvSelectList* list = FirstSelectList(scratch.get());
    TmvUpdateScope update(list);
    for (int i = 0; i < list->Count(); ++i) list->Items(i)->SetSortType(stNone);
    for (int i = 0; i < sortings_->Count(); ++i) {
      TmvSortedColumn* sorted = sortings_->Items(i);
      const WideString own = sorted->Expression();
      TmvSelectItem* row = nullptr;
      if (wrap) {
        // Read from the wrapper: every column by its own name under q.
        const WideString text = own.empty() && sorted->Column() ? sorted->Column()->GetExpressionForSorting() : own;
        TmvOwned<TSQLSelectItem> item = context->ParseSelectItem(text);
        auto* expression = TmvCast<TSQLSelectItemExpression>(item.get());
        if (!expression || !expression->Expression)
          throw EmvSQLError(u"Invalid sort expression: " + text, nullptr);
        PrefixColumnsWithWrapper(expression->Expression.get());
        row = list->AddASTExpression(TmvOwned<TastNode>(expression->Expression.Release()));
      } else if (own.empty() && sorted->Column()) {
        // The column's own select row, repeated under the name of its
        // sorting expression, where it can sort; else that expression.
        TmvOutputColumn* column = sorted->Column();
        const TmvSelectItem* sourceRow = column->StatisticsColumn().SelectItem;
        if (sourceRow && sourceRow->IsCanSort()) {
          row = list->AddExpression(sourceRow->GetExpressionString());
          row->SetAggregateString(sourceRow->GetAggregateString());
          row->SetAliasString(column->GetExpressionForSorting());
        } else {
          row = list->AddExpression(column->GetExpressionForSorting());
        }
      } else {
        row = list->AddExpression(own);
      }
      // The row keeps the Select that AddExpression gave it.
      if (row) row->SetSortType(sorted->SortType());
    }
  }

  // 7: limits in the dialect's own way.
  if ((!resultOffset_.empty() || !resultCount_.empty()) &&
      (provider->IsSupportLimitCount() || provider->IsSupportLimitOffset())) {
    TmvOwned<TSQLSubSelectStatement> limited =
        provider->TransformQueryLimits(scratch->GetResultQueryAST(), resultOffset_, resultCount_);
    if (limited) {
      scratch->BeginUpdate();
      try {
        scratch->SetSql(Print(limited.get(), scratch.get()));
      } catch (...) {
        scratch->EndUpdate();
        throw;
      }
      scratch->EndUpdate();
    }
  }

  // 8: every column by name.
  if (alwaysExpandColumnsInQuery_) {
    TmvOwned<TSQLSelectStatement> clone = scratch->GetResultQueryAST()->CloneAs<TSQLSelectStatement>(context);
    clone->PrepareAndFixupRecursive();
    names = provider->ExpandQueryColumns(clone->FirstUnionSubQuery());
    clone->RestoreColumnPrefixRecursive(true);
    scratch->SetSql(Print(clone.get(), scratch.get()));
  }

  // 9-10: the visible columns by name, and the names they get.
  if (hasDuplicates || anyHidden) {
    TmvSelectList* list = FirstSelectList(scratch.get());
    TmvUpdateScope update(list);
    for (int i = 0; i < columns_->Count(); ++i) {
      TmvOutputColumn* column = columns_->Items(i);
      if (!column->Visible() || i >= static_cast<int>(names.size())) continue;
      // The wrapper's column as the server names it: quoted where the bare
      // name would read as another.
      auto name = TastCreate<TastTokenIdentifier>(context, names[static_cast<size_t>(i)], true);
      TmvSelectItem* row = list->AddExpression(Print(name.get(), scratch.get()));
      row->SetSelect(true);
      if (!column->PreassignedName().empty()) row->SetAliasString(column->PreassignedName());
    }
  }
  for (int i = 0; i < columns_->Count(); ++i) {
    TmvOutputColumn* column = columns_->Items(i);
    if (!column->Visible()) continue;
    if (!column->PreassignedName().empty())
      column->SetResultName(column->PreassignedName());
    else if (i < static_cast<int>(names.size()))
      column->SetResultName(names[static_cast<size_t>(i)]);
  }

  // 11: the aggregates over the query wrapped once more.
  if (aggregations_->Count() > 0) {
    WrapInSubQuery(scratch.get());
    TmvSelectList* list = FirstSelectList(scratch.get());
    TmvUpdateScope update(list);
    for (int i = 0; i < list->Count(); ++i) {
      list->Items(i)->SetSortType(stNone);
      list->Items(i)->SetSelect(false);
    }
    for (int i = 0; i < aggregations_->Count(); ++i) {
      TmvAggregatedColumn* aggregate = aggregations_->Items(i);
      TmvSelectItem* row = list->AddExpression(aggregate->Expression());
      row->SetSelect(true);
      if (!aggregate->Alias().empty() && row->IsSupportsAlias()) row->SetAliasString(aggregate->Alias());
    }
  }

  // 12: the result in the source's context.
  TSQLSelectStatement* tree = scratch->GetResultQueryAST();
  if (!tree) return nullptr;
  TmvOwned<TSQLSelectStatement> result = tree->CloneAs<TSQLSelectStatement>(queryBuilder_->SQLContext());
  result->RestoreColumnPrefixRecursive(true);
  result->PrepareAndFixupRecursive();
  return result;
}

}  // namespace mv
