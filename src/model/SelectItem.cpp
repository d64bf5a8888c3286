// One row of the select list: what it holds, what it can be, and the plain
// setters that change the row alone.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataQualifiedNamesList.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/QualifiedNamesList.h"
#include "tree/SelectClauses.h"

namespace mv {

MV_DEFINE_CLASS(TmvSelectItem, TmvQueryBuilderControlOwner)

namespace {

// Whether the node refers to no column; a clone is asked, so that a
// sub-select in it is looked at as the tree it prints.
bool IsConstantExpression(const TastNode* node) {
  TmvOwned<TastNodeBase> clone = node->Clone();
  TSQLObjectColumnList columns;
  clone->GetReferencedColumnsRecursive(columns);
  return columns.empty();
}

// A constant of one integer token.
bool IsIntegerConstant(const TastNode* node) {
  auto* constant = TmvCast<TSQLExpressionConstant>(ExpressionRemoveBrackets(
      const_cast<TSQLExpressionItem*>(TmvCast<TSQLExpressionItem>(node))));
  if (!constant || constant->Items.Count() != 1) return false;
  auto* number = TmvCast<TastTokenNumber>(constant->Items.Item(0));
  int64_t value = 0;
  return number && TryStrToInt(number->Token, value);
}

// An aggregate at or below the node; sub-selects are not entered.
bool ContainsAggregate(const TastNode* node) {
  std::vector<const TastNodeBase*> stack{node};
  while (!stack.empty()) {
    const TastNodeBase* current = stack.back();
    stack.pop_back();
    if (TmvCast<TSQLExpressionAggregate>(current)) return true;
    if (TmvCast<TSQLSubSelectStatement>(current)) continue;
    TastNodeBaseList children;
    current->GetMyChildren(children);
    for (TastNodeBase* child : children)
      if (child) stack.push_back(child);
  }
  return false;
}

bool RefersToSource(const TastNode* node, TSQLFromSource* source) {
  if (!node || !source) return false;
  TSQLFromSourceList sources;
  const_cast<TastNode*>(node)->GetReferencedDatasourcesRecursive(sources);
  return std::find(sources.begin(), sources.end(), source) != sources.end();
}

}  // namespace

TmvSelectItem::TmvSelectItem(TmvQueryModelHost* host, TmvSelectList* selectList)
    : TmvQueryBuilderControlOwner(host, selectList), selectList_(selectList) {}

TmvSelectItem::~TmvSelectItem() = default;

TmvUnionSubQuery* TmvSelectItem::UnionSubQuery() const { return selectList_->UnionSubQuery(); }

int TmvSelectItem::Index() const { return selectList_->IndexOf(this); }

TSQLExpressionItem* TmvSelectItem::Conditions(int index) const {
  return index >= 0 && index < ConditionsListCount() ? conditions_[index].get() : nullptr;
}

void TmvSelectItem::Destroying() {
  selectList_->ItemDestroying(this);
  TmvQueryBuilderControlOwner::Destroying();
}

void TmvSelectItem::Clear() {
  TmvUpdateScope update(this);
  selectList_->RemoveFromOrderBy(this);
  select_ = false;
  sortType_ = stNone;
  sortNullOrdering_ = noNone;
  orderByItem_.reset();
  grouping_ = false;
  conditionsType_ = ctWhere;
  conditions_.clear();
  alias_.reset();
  aggregate_.reset();
  expressionFromSource_ = nullptr;
  expressionFieldName_ = nullptr;
  TmvOwned<TastNode> old = std::move(expression_);
  old.reset();
  NotifySQLUpdated();
}

// --- Capabilities ---

bool TmvSelectItem::IsLogicalExpression() const {
  auto* expression = TmvCast<TSQLExpressionItem>(expression_.get());
  return expression && expression->IsLogical();
}

bool TmvSelectItem::IsCanSelect() const {
  if (!expression_) return false;
  if (TmvCast<TSQLSelectItem>(expression_.get())) return true;
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  return (provider && provider->IsUniversalExpressions()) || !IsLogicalExpression();
}

bool TmvSelectItem::IsCanSort() const {
  if (!expression_) return false;
  if (TmvCast<TSQLSelectItem>(expression_.get())) return aggregate_ != nullptr;
  return IsCanSelect();
}

bool TmvSelectItem::IsSupportsAlias() const { return IsCanSort(); }

bool TmvSelectItem::IsCanGrouping() const {
  if (!TmvCast<TSQLExpressionItem>(expression_.get())) return false;
  return IsIntegerConstant(expression_.get()) || !IsConstantExpression(expression_.get());
}

bool TmvSelectItem::IsSupportConditions() const {
  if (TmvCast<TSQLExpressionItem>(expression_.get())) return true;
  return TmvCast<TSQLSelectItem>(expression_.get()) && aggregate_;
}

bool TmvSelectItem::IsAggregatedExpression() const {
  return expression_ && (aggregate_ || ContainsAggregate(expression_.get()));
}

bool TmvSelectItem::IsExpressionOnly() const { return expression_ && GetConditionsCount() == 0; }

bool TmvSelectItem::IsEqualExpression(const TastNode* expression) const {
  if (!expression || !expression_ || !SQLContext()) return false;
  TmvOwned<TastNode> own = GetExpression();
  TSQLBuilder& builder = SQLContext()->SQLBuilderExpressionForServer();
  return own->SimpleSQL(builder) == const_cast<TastNode*>(expression)->SimpleSQL(builder);
}

TmvDatasource* TmvSelectItem::GetExpressionDatasource() const {
  if (!expressionFromSource_) return nullptr;
  TmvDatasourceGroup* group = UnionSubQuery() ? UnionSubQuery()->Datasources() : nullptr;
  return group ? group->FindDatasourceByAST(expressionFromSource_) : nullptr;
}

TmvMetadataField* TmvSelectItem::GetExpressionField() const {
  TmvDatasource* datasource = GetExpressionDatasource();
  if (!datasource || !expressionFieldName_) return nullptr;
  TmvMetadataFieldsList* fields = datasource->GetFields();
  if (!fields) return nullptr;
  const int index = fields->FindFieldByName(expressionFieldName_);
  return index >= 0 ? fields->Items(index) : nullptr;
}

int TmvSelectItem::GetConditionsCount() const {
  int count = ConditionsListCount();
  while (count > 0 && !conditions_[count - 1]) --count;
  return count;
}

// --- Expression ---

TmvOwned<TastNode> TmvSelectItem::GetExpression() const {
  if (!expression_) return nullptr;
  TmvBaseSQLContext* context = SQLContext();
  if (!aggregate_) return TmvOwned<TastNode>(static_cast<TastNode*>(expression_->Clone(context).release()));
  auto aggregate = aggregate_->CloneAs<TSQLExpressionAggregate>(context);
  aggregate->Argument.Reset();
  // The argument in a list of one, as the parser gives it.
  if (TmvCast<TSQLExpressionItem>(expression_.get())) {
    auto arguments = TastCreate<TSQLExpressionsList>(context);
    arguments->Items.Add(TmvOwned<TastNode>(static_cast<TastNode*>(expression_->Clone(context).release())));
    aggregate->Argument.Set(std::move(arguments));
  }
  return aggregate;
}

WideString TmvSelectItem::GetExpressionString() const {
  if (!expression_ || !SQLContext()) return {};
  return expression_->SimpleSQL(SQLContext()->SQLBuilderExpression());
}

TmvOwned<TSQLSelectItem> TmvSelectItem::GetSelectItem() const {
  if (!expression_) return nullptr;
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TastNode> expression = GetExpression();
  if (auto* item = TmvCast<TSQLExpressionItem>(expression.get())) {
    auto selectItem = TastCreate<TSQLSelectItemExpression>(context);
    expression.release();
    selectItem->Expression.Set(TmvOwned<TSQLExpressionItem>(item));
    if (alias_) selectItem->Alias.Set(alias_->CloneAs<TSQLAliasExpression>(context));
    return selectItem;
  }
  return expression_->CloneAs<TSQLSelectItem>(context);
}

TmvOwned<TastNode> TmvSelectItem::CreateResultAST() { return GetSelectItem(); }

void TmvSelectItem::CalcColumnAndDatasource() {
  expressionFromSource_ = nullptr;
  expressionFieldName_ = nullptr;
  if (auto* all = TmvCast<TSQLSelectItemAllTableColumns>(expression_.get())) {
    if (all->Object) expressionFromSource_ = all->Object->FromSource;
    return;
  }
  auto* column = TmvCast<TSQLExpressionColumn>(ExpressionRemoveBrackets(TmvCast<TSQLExpressionItem>(expression_.get())));
  if (column && column->Column) {
    expressionFieldName_ = column->Column.get();
    expressionFromSource_ = column->Column->FromSource;
  }
}

void TmvSelectItem::SetExpressionInternal(TmvOwned<TastNode> expression) {
  // The old expression goes last: its sub-queries leave with it.
  TmvOwned<TastNode> old = std::move(expression_);
  expression_ = std::move(expression);
  CalcColumnAndDatasource();
  LoadSubQueries(expression_.get());
  old.reset();
}

void TmvSelectItem::LoadFromAST(TastNode* node) {
  if (!node) return;
  LoadFromAST(TmvOwned<TastNode>(static_cast<TastNode*>(node->Clone(SQLContext()).release())));
}

void TmvSelectItem::LoadFromAST(TmvOwned<TastNode> node) {
  if (!node) return;
  TmvUpdateScope update(this);
  if (auto* item = TmvCast<TSQLSelectItemExpression>(node.get())) {
    alias_ = item->Alias.Release();
    TmvOwned<TSQLExpressionItem> expression = item->Expression.Release();
    SetExpressionInternal(std::move(expression));
  } else if (TmvCast<TSQLSelectItem>(node.get())) {
    SetExpressionInternal(std::move(node));
  } else if (TmvCast<TSQLExpressionItem>(node.get())) {
    node->RestoreColumnPrefixRecursive(true);
    FixupExpression(node.get());
    SetExpressionInternal(std::move(node));
  }
  NotifySQLUpdated();
}

void TmvSelectItem::SetASTExpression(TmvOwned<TastNode> expression) {
  if (!expression) {
    Clear();
    return;
  }
  TmvUpdateScope update(this);
  SetExpressionInternal(std::move(expression));
  NotifySQLUpdated();
}

// --- Output flag ---

void TmvSelectItem::SetSelect(bool value) {
  if (value && !IsCanSelect()) throw EmvQueryBuilderError(MessageText(mvQBCantSelectExpression));
  if (select_ == value) return;
  select_ = value;
  NotifySQLUpdated();
}

// --- Aggregate ---

void TmvSelectItem::SetAggregate(const TSQLExpressionAggregate* aggregate) {
  if (aggregate && aggregate == aggregate_.get()) return;
  TmvUpdateScope update(this);
  if (!aggregate) {
    aggregate_.reset();
  } else if (!aggregate_ || &aggregate_->ClassType() != &aggregate->ClassType()) {
    aggregate_ = aggregate->CloneAs<TSQLExpressionAggregate>(SQLContext());
  } else {
    aggregate_->Assign(*aggregate);
  }
  // The aggregate is held apart from the expression it applies to.
  if (aggregate_) aggregate_->Argument.Reset();
  if (aggregate_) {
    grouping_ = false;
    conditionsType_ = ctHaving;
  } else {
    conditionsType_ = ctWhere;
  }
  NotifySQLUpdated();
}

WideString TmvSelectItem::GetAggregateName() const {
  return aggregate_ && aggregate_->Name ? aggregate_->Name->GetQualifiedName() : WideString();
}

TmvAggregatePrefix TmvSelectItem::GetAggregatePrefix() const {
  return aggregate_ ? static_cast<TmvAggregatePrefix>(aggregate_->Mode) : apNone;
}

void TmvSelectItem::SetAggregatePrefix(TmvAggregatePrefix prefix) {
  if (!aggregate_ || aggregate_->Mode == prefix) return;
  aggregate_->Mode = prefix;
  NotifySQLUpdated();
}

WideString TmvSelectItem::GetAggregateString() const {
  if (!aggregate_) return {};
  WideString text = GetAggregateName();
  if (aggregate_->Mode == apDistinct) text += u" Distinct";
  if (aggregate_->Mode == apUnique) text += u" Unique";
  return text;
}

void TmvSelectItem::GetAggregateNameList(TSQLQualifiedNamesList& simpleNames, TSQLQualifiedNamesList& oneParamNames,
                                         TSQLQualifiedNamesList& prefixedNames) const {
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  if (!provider || !expression_) return;
  if (TmvCast<TSQLExpressionItem>(expression_.get())) {
    if (IsLogicalExpression() && !provider->IsUniversalExpressions()) return;
    provider->Get1ParamAggregateNames(oneParamNames);
    provider->GetPrefixed1ParamAggregateNames(prefixedNames);
    TmvMetadataContainer* container = Host() ? Host()->MetadataContainer() : nullptr;
    if (container && container->CustomAggregateFunctions()) {
      const TSQLQualifiedNamesList& custom = container->CustomAggregateFunctions()->List();
      for (int i = 0; i < custom.Count(); ++i)
        oneParamNames.Add(custom.Items(i)->CloneAs<TSQLQualifiedName>(SQLContext()));
    }
  } else if (TmvCast<TSQLSelectItemAllColumns>(expression_.get())) {
    provider->GetStarAggregateNames(simpleNames);
  }
}

std::vector<WideString> TmvSelectItem::GetAggregateStringList() const {
  std::vector<WideString> list{WideString()};
  TSQLQualifiedNamesList simple(SQLContext(), true), oneParam(SQLContext(), true), prefixed(SQLContext(), true);
  GetAggregateNameList(simple, oneParam, prefixed);
  auto add = [&list](const WideString& text) {
    if (std::find(list.begin(), list.end(), text) == list.end()) list.push_back(text);
  };
  for (const TSQLQualifiedNamesList* names : {&simple, &oneParam, &prefixed})
    for (int i = 0; i < names->Count(); ++i) add(names->Items(i)->GetQualifiedName());
  for (int i = 0; i < prefixed.Count(); ++i) add(prefixed.Items(i)->GetQualifiedName() + u" Distinct");
  return list;
}

namespace {

// Cuts a prefix word off the end of an upper-cased aggregate text.
TmvAggregatePrefix CalcAggregatePrefixFromAggregateString(WideString& text) {
  struct Suffix {
    const char16_t* Word;
    TmvAggregatePrefix Prefix;
  };
  for (const Suffix& suffix : {Suffix{u" DISTINCT", apDistinct}, Suffix{u" ALL", apNone}, Suffix{u" UNIQUE", apUnique}}) {
    const WideStringView word(suffix.Word);
    if (text.size() > word.size() && WideStringView(text).substr(text.size() - word.size()) == word) {
      text = WideTrimRight(WideStringView(text).substr(0, text.size() - word.size()));
      return suffix.Prefix;
    }
  }
  return apNone;
}

const TSQLQualifiedName* FindAggregateName(const TSQLQualifiedNamesList& list, const WideString& name) {
  for (int i = 0; i < list.Count(); ++i)
    if (WideCompareText(list.Items(i)->GetQualifiedName(), name) == 0) return list.Items(i);
  return nullptr;
}

}  // namespace

void TmvSelectItem::SetAggregateString(const WideString& text) {
  WideString name = WideUpperCase(WideTrim(text));
  if (name.empty()) {
    SetAggregate(nullptr);
    return;
  }
  const TmvAggregatePrefix prefix = CalcAggregatePrefixFromAggregateString(name);
  TSQLQualifiedNamesList simple(SQLContext(), true), oneParam(SQLContext(), true), prefixed(SQLContext(), true);
  GetAggregateNameList(simple, oneParam, prefixed);
  const TSQLQualifiedName* found = FindAggregateName(prefixed, name);
  TmvAggregatePrefix mode = prefix;
  if (!found && prefix == apNone) {
    found = FindAggregateName(oneParam, name);
    if (!found) found = FindAggregateName(simple, name);
  }
  if (!found) return;
  auto aggregate = TastCreate<TSQLExpressionAggregate>(SQLContext());
  aggregate->Name.Set(found->CloneAs<TSQLQualifiedName>(SQLContext()));
  SQLContext()->AggregateNormalize(aggregate->Name.get());
  aggregate->Mode = mode;
  SetAggregate(aggregate.get());
}

void TmvSelectItem::SetAggregateName(const WideString& name) {
  if (aggregate_ && WideCompareText(GetAggregateName(), WideTrim(name)) == 0) {
    SetAggregate(nullptr);
    return;
  }
  TSQLQualifiedNamesList simple(SQLContext(), true), oneParam(SQLContext(), true), prefixed(SQLContext(), true);
  GetAggregateNameList(simple, oneParam, prefixed);
  const WideString trimmed = WideTrim(name);
  const TSQLQualifiedName* found = FindAggregateName(prefixed, trimmed);
  const bool isPrefixed = found != nullptr;
  if (!found) found = FindAggregateName(oneParam, trimmed);
  if (!found) found = FindAggregateName(simple, trimmed);
  if (!found) return;
  auto aggregate = TastCreate<TSQLExpressionAggregate>(SQLContext());
  aggregate->Name.Set(found->CloneAs<TSQLQualifiedName>(SQLContext()));
  SQLContext()->AggregateNormalize(aggregate->Name.get());
  aggregate->Mode = isPrefixed ? GetAggregatePrefix() : apNone;
  SetAggregate(aggregate.get());
}

// --- Grouping and conditions type ---

void TmvSelectItem::SetGrouping(bool value) {
  if (grouping_ == value) return;
  grouping_ = value;
  NotifySQLUpdated();
}

void TmvSelectItem::SetConditionsType(TmvConditionsType type) {
  if (conditionsType_ == type) return;
  conditionsType_ = type;
  NotifySQLUpdated();
}

// --- Conditions ---

WideString TmvSelectItem::GetConditionString(int index) const {
  TSQLExpressionItem* condition = Conditions(index);
  if (!condition || !SQLContext()) return {};
  return condition->SimpleSQL(SQLContext()->SQLBuilderExpression());
}

void TmvSelectItem::SetASTCondition(int index, TmvOwned<TSQLExpressionItem> condition) {
  if (index < 0) return;
  if (!condition && index >= ConditionsListCount()) return;
  if (index >= ConditionsListCount()) conditions_.resize(index + 1);
  // The old entry goes last: its sub-queries leave with it.
  TmvOwned<TSQLExpressionItem> old = std::move(conditions_[index]);
  conditions_[index] = std::move(condition);
  old.reset();
  NotifySQLUpdated();
}

void TmvSelectItem::ShrinkConditionsList() { conditions_.resize(GetConditionsCount()); }

// --- Datasource news ---

void TmvSelectItem::DoSQLUpdated() {
  if (!IsCanSelect()) select_ = false;
  if (!IsSupportsAlias()) alias_.reset();
  if (!IsCanSort() && (sortType_ != stNone || GetSortOrder() >= 0)) {
    selectList_->RemoveFromOrderBy(this);
    sortType_ = stNone;
    orderByItem_.reset();
  }
  if (!IsCanGrouping()) grouping_ = false;
  if (!IsSupportConditions()) conditions_.clear();
}

bool TmvSelectItem::NotifyDatasourceDestroyingInternal(TmvDatasource* datasource) {
  TSQLFromSource* source = datasource->FromSource();
  if (!source) return false;
  if (expression_ && (expressionFromSource_ == source || RefersToSource(expression_.get(), source))) return true;
  bool changed = false;
  for (auto& condition : conditions_)
    if (condition && RefersToSource(condition.get(), source)) {
      condition.reset();
      changed = true;
    }
  if (changed) NotifySQLUpdated();
  return false;
}

void TmvSelectItem::NotifyDatasourceReplacedInternal(TmvDatasource* oldDatasource, TmvDatasource* newDatasource) {
  TSQLFromSource* oldSource = oldDatasource->FromSource();
  TSQLFromSource* newSource = newDatasource->FromSource();
  if (!oldSource || !newSource) return;
  bool changed = expression_ && expression_->ReplaceReferencesToDatasourceRecursive(oldSource, newSource);
  for (auto& condition : conditions_)
    if (condition && condition->ReplaceReferencesToDatasourceRecursive(oldSource, newSource)) changed = true;
  if (!changed) return;
  CalcColumnAndDatasource();
  NotifySQLUpdated();
}

}  // namespace mv
