// The provider's query tools: putting a statement one level down in a
// derived table, and naming the columns of a select so that the outer level
// can refer to each of them. The columns a star stands for are the fields
// the fix-up gave its sources, which is why this lives beside the metadata.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "support/TextHelpers.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

TSQLSubQuerySelectExpression* FirstSelect(const TSQLSubQueryExpression* expression) {
  if (auto* select = TmvCast<TSQLSubQuerySelectExpression>(expression))
    return const_cast<TSQLSubQuerySelectExpression*>(select);
  auto* group = TmvCast<TSQLSubQueryExpressions>(expression);
  return group ? group->FirstUnionSubQuery() : nullptr;
}

WideString FieldName(const TmvMetadataField* field) {
  const TSQLQualifiedName* name = field->Name();
  return name && name->GetCount() > 0 ? name->Token(0)->Token : WideString();
}

// Whether every column a source offers is known: it offers some, and a
// derived table's first select has no star left over sources that are not.
bool ColumnsKnown(const TSQLFromSource* source, int depth = 0) {
  if (!source || source->FieldsList()->Count() == 0 || depth > 64) return false;
  auto* query = TmvCast<TSQLFromQuery>(source);
  const TSQLSubQuerySelectExpression* first = query && query->SubQuery ? query->SubQuery->FirstUnionSubQuery() : nullptr;
  if (!first || !first->SelectItems) return true;
  for (int i = 0; i < first->SelectItems->GetCount(); ++i) {
    TastNode* item = first->SelectItems->GetItems(i);
    if (auto* table = TmvCast<TSQLSelectItemAllTableColumns>(item)) {
      if (!table->Object || !ColumnsKnown(table->Object->FromSource, depth + 1)) return false;
    } else if (TmvCast<TSQLSelectItemAllColumns>(item)) {
      const auto sources = TmvBaseSyntaxProvider::GetFromSources(first->FromClause.get());
      if (sources.empty()) return false;
      for (const TSQLFromSource* each : sources)
        if (!ColumnsKnown(each, depth + 1)) return false;
    }
  }
  return true;
}

// The sources a star item stands for; empty for any other item.
std::vector<TSQLFromSource*> StarSources(const TSQLSubQuerySelectExpression* select, TastNode* item) {
  if (auto* table = TmvCast<TSQLSelectItemAllTableColumns>(item)) {
    if (table->Object && table->Object->FromSource) return {table->Object->FromSource};
    return {};
  }
  if (TmvCast<TSQLSelectItemAllColumns>(item)) return TmvBaseSyntaxProvider::GetFromSources(select->FromClause.get());
  return {};
}

bool SameUpper(WideStringView a, WideStringView b) { return WideUpperCase(a) == WideUpperCase(b); }

bool Contains(const std::vector<WideString>& names, WideStringView name) {
  return std::any_of(names.begin(), names.end(), [&](const WideString& each) { return SameUpper(each, name); });
}

// The name that refers to a source from its columns: the alias, else the
// last part of an object's name.
WideString SourceName(const TSQLFromSource* source) {
  if (source->Alias && source->Alias->Name) return source->Alias->Name->Token;
  auto* object = TmvCast<TSQLFromObject>(source);
  return object && object->Object && object->Object->GetCount() > 0 ? object->Object->Token(0)->Token : WideString();
}

// Whether a select item's column is the column of an ORDER BY: the same
// source where the order's column is bound, else the same prefix as written.
bool SameColumn(const TSQLObjectColumn* selected, const TSQLObjectColumn* column) {
  if (!selected || selected->GetCount() == 0 || !SameUpper(selected->Token(0)->Token, column->Token(0)->Token))
    return false;
  if (column->FromSource) return selected->FromSource == column->FromSource;
  if (column->GetCount() < 2) return true;
  return selected->FromSource && SameUpper(SourceName(selected->FromSource), column->Token(1)->Token);
}

// The name a column of an ORDER BY has in the select list of `select`: the
// name of the item that selects that very column, else its own.
WideString OutputNameOf(const TSQLSubQuerySelectExpression* select, const TSQLObjectColumn* column) {
  if (column->GetCount() == 0) return {};
  const WideString own = column->Token(0)->Token;
  if (!select || !select->SelectItems) return own;
  for (int i = 0; i < select->SelectItems->GetCount(); ++i) {
    auto* item = TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(i));
    auto* expression = item ? TmvCast<TSQLExpressionColumn>(ExpressionRemoveBrackets(item->Expression.get())) : nullptr;
    if (expression && SameColumn(expression->Column.get(), column))
      return TmvBaseSyntaxProvider::GetColumnNameSelectItemExpression(item);
  }
  return own;
}

// Every column of an ORDER BY moved out of `inner` refers to `outer` by the
// name `inner` gives it.
void RebindOrder(TSQLOrderByClause* order, const TSQLSubQuerySelectExpression* inner, TSQLFromQuery* outer) {
  std::vector<TSQLObjectColumn*> columns;
  order->TraverseASTTreeDepthFirst([&columns](TastNodeBase* node) {
    if (auto* column = TmvCast<TSQLObjectColumn>(node)) columns.push_back(column);
  });
  for (TSQLObjectColumn* column : columns) {
    const WideString name = OutputNameOf(inner, column);
    if (name.empty()) continue;
    column->Clear();
    // The output name as the server has it (quoted; it prints bare where it may).
    column->AddName(name, true);
    column->SetMetadataField(nullptr);
    column->FromSource = outer;
  }
}

}  // namespace

std::vector<TSQLFromSource*> TmvBaseSyntaxProvider::GetFromSources(const TSQLFromGroup* group) {
  std::vector<TSQLFromSource*> sources;
  if (!group) return sources;
  for (int i = 0; i < group->GetCount(); ++i) {
    TSQLFromSource* source = group->GetItems(i);
    if (auto* inner = TmvCast<TSQLFromGroup>(source)) {
      for (TSQLFromSource* each : GetFromSources(inner)) sources.push_back(each);
    } else if (source) {
      sources.push_back(source);
    }
  }
  return sources;
}

void TmvBaseSyntaxProvider::CollectFromSourceColumnNames(const TSQLFromSource* source, std::vector<WideString>& names) {
  if (!source) return;
  const TmvMetadataFieldsList* fields = source->FieldsList();
  for (int i = 0; i < fields->Count(); ++i)
    if (!fields->Items(i)->IsVirtualCalculatedField()) names.push_back(FieldName(fields->Items(i)));
}

int TmvBaseSyntaxProvider::SelectAllFromSourceFields(TSQLSubQuerySelectExpression* select, TSQLFromSource* source,
                                                     int index) const {
  if (!select || !select->SelectItems || !source) return 0;
  TmvBaseSQLContext* context = select->SQLContext();
  const TmvMetadataFieldsList* fields = source->FieldsList();
  int added = 0;
  for (int i = 0; i < fields->Count(); ++i) {
    const TmvMetadataField* field = fields->Items(i);
    // A column without a name cannot be referred to from outside.
    if (field->IsVirtualCalculatedField() || FieldName(field).empty()) continue;
    auto column = TastCreate<TSQLObjectColumn>(context);
    column->AddName(field->Name());
    column->FromSource = source;
    auto expression = TastCreate<TSQLExpressionColumn>(context);
    expression->Column.Set(std::move(column));
    auto item = TastCreate<TSQLSelectItemExpression>(context);
    item->Expression.Set(std::move(expression));
    select->SelectItems->Insert(index + added, std::move(item));
    ++added;
  }
  return added;
}

WideString TmvBaseSyntaxProvider::CreateUniqueColumnName(WideStringView name, const std::vector<WideString>& names) {
  if (!name.empty() && !Contains(names, name)) return WideString(name);
  const WideString base = name.empty() ? WideString(u"Column") : WideString(name);
  for (int number = 1;; ++number) {
    WideString candidate = base + IntToWide(number);
    if (!Contains(names, candidate)) return candidate;
  }
}

WideString TmvBaseSyntaxProvider::GetColumnNameFromExpression(const TSQLExpressionItem* expression) {
  auto* column =
      TmvCast<TSQLExpressionColumn>(ExpressionRemoveBrackets(const_cast<TSQLExpressionItem*>(expression)));
  if (!column || !column->Column || column->Column->GetCount() == 0) return {};
  return column->Column->Token(0)->Token;
}

WideString TmvBaseSyntaxProvider::GetColumnNameSelectItemExpression(const TSQLSelectItemExpression* item) {
  if (!item) return {};
  if (item->Alias && item->Alias->Name) {
    const TastToken* token = item->Alias->Name.get();
    return TmvCast<TastTokenString>(token) ? SQLUnquoteString(token->Token) : token->Token;
  }
  return GetColumnNameFromExpression(item->Expression.get());
}

WideString TmvBaseSyntaxProvider::RenameSelectItemExpressionIfConflict(TSQLSelectItemExpression* item,
                                                                       std::vector<WideString>& names) const {
  const WideString name = GetColumnNameSelectItemExpression(item);
  const WideString unique = CreateUniqueColumnName(name, names);
  if (item && unique != name) {
    TmvBaseSQLContext* context = item->SQLContext();
    auto alias = TastCreate<TSQLAliasExpressionAlias>(context);
    alias->AsKeyword = true;
    alias->Name.Set(context->ParseIdentifierQuoteIfNeed(unique));
    item->Alias.Set(std::move(alias));
  }
  names.push_back(unique);
  return unique;
}

std::vector<WideString> TmvBaseSyntaxProvider::ExpandQueryColumns(TSQLSubQueryExpression* expression) const {
  std::vector<WideString> names;
  TSQLSubQuerySelectExpression* select = FirstSelect(expression);
  if (!select || !select->SelectItems) return names;
  // The stars first, each where every source it stands for is known.
  for (int i = 0; i < select->SelectItems->GetCount();) {
    TastNode* item = select->SelectItems->GetItems(i);
    const std::vector<TSQLFromSource*> sources = StarSources(select, item);
    const bool known = !sources.empty() && std::all_of(sources.begin(), sources.end(),
                                                       [](const TSQLFromSource* each) { return ColumnsKnown(each); });
    if (!known) {
      ++i;
      continue;
    }
    select->SelectItems->Delete(i);
    for (TSQLFromSource* source : sources) i += SelectAllFromSourceFields(select, source, i);
  }
  for (int i = 0; i < select->SelectItems->GetCount(); ++i)
    if (auto* item = TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(i)))
      RenameSelectItemExpressionIfConflict(item, names);
  return names;
}

std::vector<WideString> TmvBaseSyntaxProvider::GetQueryColumnNames(const TSQLSubQueryExpression* expression) const {
  std::vector<WideString> names;
  const TSQLSubQuerySelectExpression* select = FirstSelect(expression);
  if (!select || !select->SelectItems) return names;
  for (int i = 0; i < select->SelectItems->GetCount(); ++i) {
    TastNode* item = select->SelectItems->GetItems(i);
    if (auto* selected = TmvCast<TSQLSelectItemExpression>(item))
      names.push_back(GetColumnNameSelectItemExpression(selected));
    else
      for (const TSQLFromSource* source : StarSources(select, item)) CollectFromSourceColumnNames(source, names);
  }
  return names;
}

bool TmvBaseSyntaxProvider::IsQueryHaveDuplicatedColumnNames(const TSQLSubQueryExpression* expression) const {
  std::vector<WideString> seen;
  for (const WideString& name : GetQueryColumnNames(expression)) {
    if (name.empty()) continue;
    if (Contains(seen, name)) return true;
    seen.push_back(name);
  }
  return false;
}

TmvOwned<TSQLSubSelectStatement> TmvBaseSyntaxProvider::WrapQuery(TmvOwned<TSQLSubSelectStatement> statement) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = TastCreate<TSQLSubSelectStatement>(context);
  if (statement->With) result->With.Set(statement->With.Release());
  auto select = TastCreate<TSQLSubQuerySelectExpression>(context);
  select->SelectItems.Set(TastCreate<TSQLSelectItems>(context));
  select->SelectItems->Add(TastCreate<TSQLSelectItemAllColumns>(context));
  select->FromClause.Set(TastCreate<TSQLFromClause>(context));
  auto source = TastCreate<TSQLFromQuery>(context);
  auto alias = TastCreate<TSQLAliasObjectAlias>(context);
  alias->Name.Set(context->ParseIdentifierQuoteIfNeed(kWrapQueryAlias));
  source->Alias.Set(std::move(alias));
  TSQLFromQuery* outer = source.get();
  TmvOwned<TSQLOrderByClause> order = statement->OrderBy.Release();
  if (order) RebindOrder(order.get(), statement->FirstUnionSubQuery(), outer);
  source->SubQuery.Set(std::move(statement));
  select->FromClause->Add(std::move(source));
  result->Add(std::move(select));
  if (order) result->OrderBy.Set(std::move(order));
  return result;
}

}  // namespace mv
