#include "transform/QueryTransformer.h"

#include <pugixml.hpp>
#include <string>

#include "component/QueryBuilder.h"
#include "component/SQLBuilderComponents.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataMessages.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "tree/SelectStatement.h"

namespace mv {

MV_DEFINE_CLASS(TmvQueryTransformer, TmvObject)

namespace {

// The state document leaves the Not flags out; a copy takes them junction
// by junction from a tree of the same shape.
void CopyNotFlags(const TmvFilterConditionJunction& from, TmvFilterConditionJunction& to) {
  to.SetNot(from.Not());
  for (int i = 0; i < from.Count() && i < to.Count(); ++i) {
    auto* source = TmvCast<TmvFilterConditionJunction>(from.Items(i));
    auto* target = TmvCast<TmvFilterConditionJunction>(to.Items(i));
    if (source && target) CopyNotFlags(*source, *target);
  }
}

}  // namespace

TmvQueryTransformer::TmvQueryTransformer() = default;

TmvQueryTransformer::~TmvQueryTransformer() = default;

void TmvQueryTransformer::AfterConstruction() {
  TmvObject::AfterConstruction();
  updatable_ = TmvCreate<TmvUpdatablePersistent>();
  columns_ = TmvCreate<TmvOutputColumnsList>();
  filters_ = TmvCreate<TmvFilterConditionJunction>(jtOr);
  sortings_ = TmvCreate<TmvSortedColumnsList>();
  aggregations_ = TmvCreate<TmvAggregatedColumnsList>();
  columns_->SetParent(updatable_.get());
  filters_->SetParent(updatable_.get());
  sortings_->SetParent(updatable_.get());
  aggregations_->SetParent(updatable_.get());
  updatable_->GetOnUpdated().AddHandler(this, &TmvQueryTransformer::Changed);
}

void TmvQueryTransformer::BeforeDestruction() {
  destroying_ = true;
  HookSource(false);
  HookSqlBuilder(false);
  queryBuilder_ = nullptr;
  sqlBuilder_ = nullptr;
  TmvObject::BeforeDestruction();
}

// --- Following the source ---

void TmvQueryTransformer::HookSource(bool hook) {
  if (!queryBuilder_) return;
  TmvBaseSQLContext* context = queryBuilder_->SQLContext();
  if (hook) {
    queryBuilder_->DestroyingNotification.AddHandler(this, &TmvQueryTransformer::SourceDestroying);
    queryBuilder_->SQLUpdatedNotification.AddHandler(this, &TmvQueryTransformer::SourceSQLUpdated);
    if (context) context->GetOnSyntaxProviderChanged().AddHandler(this, &TmvQueryTransformer::SourceProviderChanged);
  } else {
    queryBuilder_->DestroyingNotification.RemoveHandler(this, &TmvQueryTransformer::SourceDestroying);
    queryBuilder_->SQLUpdatedNotification.RemoveHandler(this, &TmvQueryTransformer::SourceSQLUpdated);
    if (context) context->GetOnSyntaxProviderChanged().RemoveHandler(this, &TmvQueryTransformer::SourceProviderChanged);
  }
}

void TmvQueryTransformer::SetQueryBuilder(TmvQueryBuilder* value) {
  if (value == queryBuilder_) return;
  HookSource(false);
  queryBuilder_ = value;
  sourceTree_ = nullptr;
  HookSource(true);
  TakeSourceTree();
}

void TmvQueryTransformer::SourceDestroying(TmvObject*) {
  HookSource(false);
  queryBuilder_ = nullptr;
  sourceTree_ = nullptr;
  updatable_->NotifyUpdated();
}

void TmvQueryTransformer::SourceSQLUpdated(TmvObject*) { TakeSourceTree(); }

void TmvQueryTransformer::SourceProviderChanged(TmvObject*) { updatable_->NotifyUpdated(); }

void TmvQueryTransformer::TakeSourceTree() {
  TmvUpdateBatch batch(*updatable_);
  const bool transformable = IsTransformable();
  sourceTree_ = transformable ? queryBuilder_->GetResultQueryAST() : nullptr;
  columns_->UpdateColumns(queryBuilder_, transformable);
  CleanupFilters(*filters_);
  CleanupSortings();
  RebindAggregations();
  updatable_->NotifyUpdated();
}

void TmvQueryTransformer::HookSqlBuilder(bool hook) {
  if (!sqlBuilder_) return;
  auto& changed = sqlBuilder_->Builder().GetOnUpdated();
  if (hook) {
    sqlBuilder_->DestroyingNotification.AddHandler(this, &TmvQueryTransformer::SqlBuilderDestroying);
    changed.AddHandler(this, &TmvQueryTransformer::SqlBuilderChanged);
  } else {
    sqlBuilder_->DestroyingNotification.RemoveHandler(this, &TmvQueryTransformer::SqlBuilderDestroying);
    changed.RemoveHandler(this, &TmvQueryTransformer::SqlBuilderChanged);
  }
}

void TmvQueryTransformer::SetSqlBuilder(TmvBaseSQLBuilder* value) {
  if (value == sqlBuilder_) return;
  HookSqlBuilder(false);
  sqlBuilder_ = value;
  HookSqlBuilder(true);
  updatable_->NotifyUpdated();
}

void TmvQueryTransformer::SqlBuilderDestroying(TmvObject*) {
  HookSqlBuilder(false);
  sqlBuilder_ = nullptr;
  updatable_->NotifyUpdated();
}

void TmvQueryTransformer::SqlBuilderChanged(TmvObject*) { updatable_->NotifyUpdated(); }

bool TmvQueryTransformer::IsTransformable() const {
  if (!queryBuilder_ || queryBuilder_->IsDestroying() || queryBuilder_->SleepMode()) return false;
  TmvBaseSyntaxProvider* provider = queryBuilder_->SyntaxProvider();
  return provider && !provider->IsQueryWithIntoClause(queryBuilder_->GetResultQueryAST());
}

bool TmvQueryTransformer::GetIsSupportLimitCount() const {
  return queryBuilder_ && queryBuilder_->SQLContext() && queryBuilder_->SyntaxProvider() &&
         queryBuilder_->SyntaxProvider()->IsSupportLimitCount();
}

bool TmvQueryTransformer::GetIsSupportLimitOffset() const {
  return queryBuilder_ && queryBuilder_->SQLContext() && queryBuilder_->SyntaxProvider() &&
         queryBuilder_->SyntaxProvider()->IsSupportLimitOffset();
}

// --- Cleaning up after the source changed ---

void TmvQueryTransformer::CleanupFilters(TmvFilterConditionJunction& junction) {
  const bool transformable = IsTransformable();
  for (int i = junction.Count() - 1; i >= 0; --i) {
    TmvFilterCondition* item = junction.Items(i);
    if (!transformable) {
      junction.Delete(i);
    } else if (auto* nested = TmvCast<TmvFilterConditionJunction>(item)) {
      CleanupFilters(*nested);
      if (nested->Count() == 0) junction.Delete(i);
    } else if (auto* condition = TmvCast<TmvFilterColumnCondition>(item); condition && condition->Column()) {
      TmvOutputColumn* found = nullptr;
      for (int c = 0; c < columns_->Count() && !found; ++c)
        if (columns_->Items(c)->GetExpressionForFiltration() == condition->ColumnExpression())
          found = columns_->Items(c);
      if (found)
        condition->SetColumn(found);
      else
        junction.Delete(i);
    }
  }
}

void TmvQueryTransformer::CleanupSortings() {
  const bool transformable = IsTransformable();
  for (int i = sortings_->Count() - 1; i >= 0; --i) {
    TmvSortedColumn* item = sortings_->Items(i);
    if (!transformable) {
      sortings_->Delete(i);
      continue;
    }
    if (!item->Column()) continue;
    TmvOutputColumn* found = nullptr;
    for (int c = 0; c < columns_->Count() && !found; ++c)
      if (columns_->Items(c)->GetExpressionForSorting() == item->ColumnExpression()) found = columns_->Items(c);
    if (found)
      item->SetColumn(found);
    else
      sortings_->Delete(i);
  }
}

// An aggregate keeps its text; its column is the one of the same name, if any.
void TmvQueryTransformer::RebindAggregations() {
  for (int i = 0; i < aggregations_->Count(); ++i) {
    TmvAggregatedColumn* item = aggregations_->Items(i);
    if (item->Column() || !item->ColumnName().empty())
      item->SetColumn(columns_->FindColumnByOriginalName(item->ColumnName()));
  }
}

// --- Settings ---

void TmvQueryTransformer::SetResultOffset(const WideString& value) {
  SetValueAndNotify(*updatable_, resultOffset_, value);
}

void TmvQueryTransformer::SetResultCount(const WideString& value) {
  SetValueAndNotify(*updatable_, resultCount_, value);
}

void TmvQueryTransformer::SetAlwaysWrapInSubQuery(bool value) {
  SetValueAndNotify(*updatable_, alwaysWrapInSubQuery_, value);
}

void TmvQueryTransformer::SetAlwaysExpandColumnsInQuery(bool value) {
  SetValueAndNotify(*updatable_, alwaysExpandColumnsInQuery_, value);
}

void TmvQueryTransformer::SetRenameDuplicatedColumns(bool value) {
  SetValueAndNotify(*updatable_, renameDuplicatedColumns_, value);
}

void TmvQueryTransformer::SetSelectMode(TmvQueryTransformerSelectMode value) {
  SetValueAndNotify(*updatable_, selectMode_, value);
}

// --- Fluent operations ---

TmvQueryTransformer& TmvQueryTransformer::Select(TmvOwned<TmvAggregatedColumn> aggregate, const WideString& alias) {
  aggregations_->Add(std::move(aggregate), alias);
  return *this;
}

TmvQueryTransformer& TmvQueryTransformer::SelectRecordsCount(const WideString& alias) {
  aggregations_->Add(TmvCreate<TmvAggregatedColumn>(nullptr, WideString(), WideString(u"Count(*)")), alias);
  return *this;
}

TmvQueryTransformer& TmvQueryTransformer::Skip(const WideString& text) {
  SetResultOffset(text);
  return *this;
}

TmvQueryTransformer& TmvQueryTransformer::Take(const WideString& text) {
  SetResultCount(text);
  return *this;
}

TmvQueryTransformer& TmvQueryTransformer::OrderBy(TmvOwned<TmvSortedColumn> sorted) {
  sortings_->Add(std::move(sorted));
  return *this;
}

TmvQueryTransformer& TmvQueryTransformer::OrderBy(TmvOutputColumn* column, bool ascending) {
  if (!column) throw EmvQueryBuilderError(u"No column to sort by");
  return OrderBy(ascending ? column->Asc() : column->Desc());
}

TmvQueryTransformer& TmvQueryTransformer::OrderBy(const WideString& expression, bool ascending) {
  return OrderBy(TmvCreate<TmvSortedColumn>(nullptr, ascending ? stAsc : stDesc, expression));
}

TmvQueryTransformer& TmvQueryTransformer::Where(TmvOwned<TmvFilterCondition> condition) {
  filters_->Add(std::move(condition));
  return *this;
}

TmvQueryTransformer& TmvQueryTransformer::Where(const WideString& text) {
  return Where(TmvCreate<TmvFilterColumnCondition>(nullptr, text));
}

// --- Updates and the result ---

void TmvQueryTransformer::BeginUpdate() { updatable_->BeginUpdate(); }

void TmvQueryTransformer::EndUpdate() { updatable_->EndUpdate(); }

bool TmvQueryTransformer::IsUpdating() const { return updatable_->GetIsUpdating(); }

void TmvQueryTransformer::Changed(TmvObject*) {
  ClearResult();
  if (destroying_) return;
  if (OnSQLUpdated) OnSQLUpdated(this);
  OnSQLUpdatedEvent.Fire(this);
}

void TmvQueryTransformer::ClearResult() {
  resultTree_.reset();
  resultGenerated_ = false;
}

TSQLSelectStatement* TmvQueryTransformer::GetResultAst() {
  if (!resultGenerated_) {
    resultTree_ = GenerateResult();
    resultGenerated_ = true;
  }
  return resultTree_.get();
}

WideString TmvQueryTransformer::GetSql() {
  if (!IsTransformable()) return queryBuilder_ ? queryBuilder_->GetSql() : WideString();
  TSQLSelectStatement* tree = GetResultAst();
  if (!tree || !tree->FirstUnionSubQuery()) return {};
  TSQLBuilder& builder =
      sqlBuilder_ ? sqlBuilder_->Builder() : queryBuilder_->SQLContext()->SQLBuilderExpressionForServer();
  return tree->SimpleSQL(builder);
}

void TmvQueryTransformer::Assign(const TmvQueryTransformer& other) {
  if (&other == this) return;
  TmvUpdateBatch batch(*updatable_);
  columns_->Assign(other.columns_.get());
  {
    pugi::xml_document document;
    other.filters_->Write(document);
    filters_->Read(document.child("junction"), columns_.get());
    CopyNotFlags(*other.filters_, *filters_);
  }
  sortings_->Clear();
  for (int i = 0; i < other.sortings_->Count(); ++i) {
    TmvSortedColumn* item = other.sortings_->Items(i);
    TmvOutputColumn* column = item->Column() ? columns_->FindColumnByOriginalName(item->Column()->OriginalName()) : nullptr;
    sortings_->Add(TmvCreate<TmvSortedColumn>(column, item->SortType(), item->Expression()));
  }
  aggregations_->Clear();
  for (int i = 0; i < other.aggregations_->Count(); ++i) {
    TmvAggregatedColumn* item = other.aggregations_->Items(i);
    TmvOutputColumn* column = item->Column() ? columns_->FindColumnByOriginalName(item->Column()->OriginalName()) : nullptr;
    aggregations_->Add(TmvCreate<TmvAggregatedColumn>(column, WideString(), item->Expression()), item->Alias());
  }
  SetSelectMode(other.selectMode_);
  SetResultOffset(other.resultOffset_);
  SetResultCount(other.resultCount_);
  SetAlwaysWrapInSubQuery(other.alwaysWrapInSubQuery_);
  SetAlwaysExpandColumnsInQuery(other.alwaysExpandColumnsInQuery_);
}

// --- State as XML ---

WideString TmvQueryTransformer::GetStateXml() const {
  pugi::xml_document document;
  pugi::xml_node root = document.append_child("transformer");
  if (selectMode_ != smDefault) root.append_attribute("select_mode").set_value(selectMode_ == smAll ? "all" : "distinct");
  if (!resultOffset_.empty()) root.append_attribute("result_offset").set_value(UTF8Encode(resultOffset_).c_str());
  if (!resultCount_.empty()) root.append_attribute("result_count").set_value(UTF8Encode(resultCount_).c_str());
  columns_->Write(root);
  filters_->Write(root);
  sortings_->Write(root);
  aggregations_->Write(root);
  std::string text;
  struct Writer : pugi::xml_writer {
    std::string* out;
    void write(const void* data, size_t size) override { out->append(static_cast<const char*>(data), size); }
  } writer;
  writer.out = &text;
  document.save(writer, "  ", pugi::format_indent | pugi::format_no_declaration, pugi::encoding_utf8);
  return UTF8Decode(text);
}

void TmvQueryTransformer::SetStateXml(const WideString& text) {
  pugi::xml_document document;
  const std::string bytes = UTF8Encode(text);
  pugi::xml_parse_result parsed = document.load_buffer(bytes.data(), bytes.size());
  if (!parsed)
    throw EmvQueryBuilderError(MetadataMessageFormat(mvQBErrorBadXML, {UTF8Decode(parsed.description())}));
  pugi::xml_node root = document.child("transformer");
  if (!root) throw EmvQueryBuilderError(MetadataMessageFormat(mvQBErrorBadXMLTagNotFound, {WideString(u"transformer")}));
  TmvUpdateBatch batch(*updatable_);
  const std::string mode = root.attribute("select_mode").as_string();
  SetSelectMode(mode == "all" ? smAll : mode == "distinct" ? smDistinct : smDefault);
  SetResultOffset(UTF8Decode(root.attribute("result_offset").as_string()));
  SetResultCount(UTF8Decode(root.attribute("result_count").as_string()));
  if (pugi::xml_node columns = root.child("columns_list")) columns_->Read(columns);
  if (pugi::xml_node junction = root.child("junction"))
    filters_->Read(junction, columns_.get());
  else
    filters_->Clear();
  if (pugi::xml_node sorts = root.child("sort_list"))
    sortings_->Read(sorts, columns_.get());
  else
    sortings_->Clear();
  if (pugi::xml_node aggregations = root.child("aggregation_list"))
    aggregations_->Read(aggregations, columns_.get());
  else
    aggregations_->Clear();
}

}  // namespace mv
