// What the grid of the select list calls on a row: the ...UI setters, which
// keep the other rows of the SELECT consistent, ask for aliases and report
// conflicts of column names; the expression and alias text of a row; the
// output names of rows and the unique aliases made from them; the texts of
// the grouping column; the popup menu of a row.
#include <algorithm>
#include <climits>

#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "model/SubSelectProxy.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/Expressions.h"
#include "tree/QualifiedNamesList.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

TmvDatasourceList DatasourcesOf(const TmvSelectItem* row) {
  TmvDatasourceList list;
  if (TmvUnionSubQuery* member = row->UnionSubQuery()) member->Datasources()->GetDatasources(list);
  return list;
}

// Appends the unquoted names of the fields of a source.
void AddFieldNames(const TmvMetadataFieldsList* fields, std::vector<WideString>& names) {
  for (int i = 0; fields && i < fields->Count(); ++i) names.push_back(fields->Items(i)->NameStrNotQuoted());
}

bool Contains(const std::vector<WideString>& names, WideStringView name) {
  return std::any_of(names.begin(), names.end(), [&](const WideString& n) { return WideSameText(n, name); });
}

// The columns an expression refers to.
TSQLObjectColumnList ReferencedColumns(TastNode* expression) {
  TSQLObjectColumnList columns;
  if (expression) {
    if (auto* column = TmvCast<TSQLObjectColumn>(expression)) columns.push_back(column);
    expression->GetReferencedColumnsRecursive(columns);
  }
  return columns;
}

// A selected row without alias is named: an unnamed column gets an alias
// where the options ask for one.
void NameUnnamedColumn(TmvSelectItem* row) {
  if (row->Select() && row->Host()->Options.CreateColumnAliasesForUnnamedColumns && row->IsSupportsAlias() &&
      row->IsUnnamedColumn())
    row->CreateUniqueAlias();
}

// The steps of selecting a row that concern its name: an alias against a
// conflict (or the report of one), then an alias for an unnamed column.
void ResolveNameConflicts(TmvSelectItem* row) {
  TmvQueryModelHost* host = row->Host();
  if (row->IsColumnNamesConflict() && !row->Alias()) {
    if (row->IsSupportsAlias()) {
      row->CreateUniqueAlias();
    } else if (!host->Options.ResolveColumnNamingConflictsAutomatically) {
      host->DoUserMessage(mvMsgSelectingExpressionCauseConflict);
    } else {
      row->SelectList()->AssignAliasesToDuplicateColumnNames();
      if (row->IsColumnNamesConflict()) host->DoUserMessage(mvMsgSelectingExpressionCauseConflict);
    }
  }
  NameUnnamedColumn(row);
}

}  // namespace

// --- Expression text ---

bool TmvSelectItem::ParseNewExpression(const WideString& text, TmvOwned<TastNode>& node,
                                       TmvOwned<TSQLAliasExpression>& alias) {
  node.reset();
  alias.reset();
  if (text.empty()) return true;
  TmvBaseSQLContext* context = SQLContext();
  if (context->IsValidIdent(text)) {
    const TmvDatasourceList datasources = DatasourcesOf(this);
    for (auto it = datasources.rbegin(); it != datasources.rend(); ++it) {
      TmvMetadataFieldsList* fields = (*it)->GetFields();
      const int index = fields ? fields->FindFieldByName(WideStringView(text)) : -1;
      if (index < 0) continue;
      TmvMetadataField* field = fields->Items(index);
      auto column = TastCreate<TSQLObjectColumn>(context);
      if (field->Name())
        column->AddName(field->Name());
      else
        column->AddName(WideStringView(text));
      column->FromSource = (*it)->FromSource();
      column->SetMetadataField(field);
      auto expression = TastCreate<TSQLExpressionColumn>(context);
      expression->Column.Set(std::move(column));
      node = std::move(expression);
      return true;
    }
  }
  if (TmvOwned<TSQLSelectItem> item = context->ParseSelectItem(text)) {
    if (auto* expression = TmvCast<TSQLSelectItemExpression>(item.get())) {
      node = expression->Expression.Release();
      alias = expression->Alias.Release();
    } else {
      node = std::move(item);
    }
    return true;
  }
  if (TmvOwned<TSQLExpressionItem> logical = context->ParseLogicalExpression(text, true)) {
    node = std::move(logical);
    return true;
  }
  return false;
}

void TmvSelectItem::SetExpressionString(const WideString& text) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context || !context->SyntaxProvider()) throw Exception(MessageText(mvQBNoSyntaxProvider));
  if (selectList_->Filling()) return;
  const WideString value = WideTrim(text);
  if (value == GetExpressionString()) return;
  TmvUpdateScope update(this);
  TmvOwned<TastNode> node;
  TmvOwned<TSQLAliasExpression> alias;
  if (!ParseNewExpression(value, node, alias)) {
    // Text that is no expression is kept as a literal.
    auto constant = TastCreate<TSQLExpressionConstant>(context);
    constant->AddString(SQLQuoteString(value));
    node = std::move(constant);
  }
  if (!node) {
    Clear();
    NotifySQLUpdated();
    return;
  }
  FixupExpression(node.get());
  // The old expression goes last: the new one may refer to what it held.
  TmvOwned<TastNode> old = std::move(expression_);
  expression_ = std::move(node);
  if (alias && alias->Name) SetAliasString(alias->Name->SimpleSQL(context->SQLBuilderExpression()));
  if (aggregate_) {
    TSQLQualifiedNamesList simpleNames(context, true), oneParamNames(context, true), prefixedNames(context, true);
    GetAggregateNameList(simpleNames, oneParamNames, prefixedNames);
    const TSQLQualifiedName* name = aggregate_->Name.get();
    const bool prefixed = name && prefixedNames.FindByName(name) >= 0;
    if (!name || (!prefixed && simpleNames.FindByName(name) < 0 && oneParamNames.FindByName(name) < 0))
      SetAggregate(nullptr);
    else if (!prefixed && aggregate_->Mode != apNone)
      SetAggregatePrefix(apNone);
  }
  CalcColumnAndDatasource();
  LoadSubQueries(expression_.get());
  NotifySQLUpdated();
}

void TmvSelectItem::SetExpressionStringUI(const WideString& text) {
  TmvUpdateScope update(selectList_);
  const bool wasEmpty = expression_ == nullptr;
  SetExpressionString(text);
  if (wasEmpty && IsCanSelect()) SetSelect(true);
  if (Select() && selectList_->IsQueryWithGrouping() && !IsAggregatedExpression()) SetGrouping(true);
  if (!Select() && IsLogicalExpression()) {
    // A new condition row joins each branch of its kind that exists.
    const TmvConditionsTypes types{ConditionsType()};
    const int columns = selectList_->GetMaxConditionCountInternal(types);
    for (int column = 0; column < columns; ++column) {
      std::vector<TmvSelectItem*> rows;
      selectList_->GetSelectItemsWithConditionsOfTypeInColumn(column, types, rows);
      if (std::any_of(rows.begin(), rows.end(), [this](TmvSelectItem* row) { return row != this; }))
        SetConditionString(column, u"=TRUE");
    }
  }
  if (Select() && expression_ && !alias_) ResolveNameConflicts(this);
}

void TmvSelectItem::SetFieldExpression(TmvDatasource* datasource, const TSQLQualifiedName* fieldName) {
  if (!datasource) return;
  TmvBaseSQLContext* context = SQLContext();
  TmvUpdateScope update(this);
  WideString altName;
  if (IsQualifiedNameEmpty(fieldName)) {
    auto all = TastCreate<TSQLSelectItemAllTableColumns>(context);
    auto object = TastCreate<TSQLDatabaseObject>(context);
    object->FromSource = datasource->FromSource();
    all->Object.Set(std::move(object));
    LoadFromAST(all.get());
  } else {
    auto column = TastCreate<TSQLObjectColumn>(context);
    column->AddName(fieldName);
    column->FromSource = datasource->FromSource();
    TmvMetadataFieldsList* fields = datasource->GetFields();
    const int index = fields && context->SyntaxProvider()
                          ? context->SyntaxProvider()->FindFieldInFieldsList(column.get(), fields)
                          : -1;
    if (index >= 0) {
      TmvMetadataField* field = fields->Items(index);
      if (field->Name()) {
        column->Items.Clear();
        column->AddName(field->Name());
      }
      column->SetMetadataField(field);
      if (Host()->Options.CreateColumnAliasesFromAltNames) altName = field->AltName();
    }
    auto expression = TastCreate<TSQLExpressionColumn>(context);
    expression->Column.Set(std::move(column));
    LoadFromAST(expression.get());
  }
  if (!altName.empty()) SetAliasString(selectList_->CreateUniqueAlias(altName, 0));
  for (int i = 0; i < selectList_->Count(); ++i) {
    TmvSelectItem* row = selectList_->Items(i);
    if (row->Grouping() || row->ConditionsType() == ctHaving) {
      SetGrouping(true);
      SetConditionsType(ctWhere);
      break;
    }
  }
  NotifySQLUpdated();
}

void TmvSelectItem::SetFieldExpression(TmvDatasource* datasource, const WideString& fieldName) {
  TmvOwned<TSQLQualifiedName> name;
  if (!WideTrim(fieldName).empty()) {
    name = SQLContext()->ParseQualifiedName(WideTrim(fieldName));
    if (!name) throw EmvQueryBuilderError(MessageFormat(mvQBBadFieldName, {fieldName}));
  }
  SetFieldExpression(datasource, name.get());
}

// --- Output flag ---

void TmvSelectItem::SetSelectUI(bool value) {
  TmvUpdateScope update(selectList_);
  SetSelect(value);
  if (!value) return;
  if (selectList_->IsQueryWithGrouping() && !IsAggregatedExpression()) SetGrouping(true);
  TmvUnionSubQuery* member = UnionSubQuery();
  TmvSubQuery* root = member ? member->RootQuery() : nullptr;
  TmvMetadataField* field = GetExpressionField();
  if (root && root->GetIsSubQuery() && field && field->IsVirtualCalculatedField() && GetAliasString().empty())
    CreateAliasFromFieldName();
  ResolveNameConflicts(this);
}

// --- Alias ---

WideString TmvSelectItem::GetAliasString() const {
  if (!alias_ || !alias_->Name || !SQLContext()) return {};
  return alias_->Name->SimpleSQL(SQLContext()->SQLBuilderExpression());
}

void TmvSelectItem::SetAliasString(const WideString& text) {
  if (selectList_->Filling()) return;
  const WideString value = WideTrim(text);
  if (value == GetAliasString()) return;
  TmvOwned<TastTokenIdentifier> name;
  if (!value.empty() && IsSupportsAlias()) name = SQLContext()->ParseIdentifierQuoteIfNeed(value);
  if (name) {
    if (!alias_) {
      auto alias = TastCreate<TSQLAliasExpressionAlias>(SQLContext());
      alias->AsKeyword = true;
      alias_ = std::move(alias);
    }
    alias_->Name.Set(std::move(name));
  } else {
    alias_.reset();
  }
  // Sub-queries in the expression are captioned by the alias.
  for (TmvSubSelectStatementProxy* proxy : SubQueryProxies())
    if (TmvSubQuery* subQuery = proxy->SubQuery()) subQuery->UpdateCaption();
  NotifySQLUpdated();
}

void TmvSelectItem::SetAliasStringUI(const WideString& text) {
  const WideString value = WideTrim(text);
  TmvOwned<TastTokenIdentifier> name;
  if (!value.empty()) name = SQLContext()->ParseIdentifierQuoteIfNeed(value);
  const TastToken* present = alias_ ? alias_->Name.get() : nullptr;
  if ((!name && !present) || (name && present && SQLContext()->CompareTokens(present, name.get()) == 0)) return;
  TmvUpdateScope update(selectList_);
  SetAliasString(value);
  if (IsSupportsAlias() && IsColumnNamesConflict())
    Host()->DoUserMessage(alias_ ? mvMsgColumnNameAlreadyUsed : mvMsgDeletingAliasCauseConflict);
}

// --- Grouping, conditions type, aggregate ---

void TmvSelectItem::SetGroupingUI(bool value) {
  if (value == grouping_) return;
  TmvUpdateScope update(selectList_);
  const TmvModelOptions& options = Host()->Options;
  if (!selectList_->IsQueryWithGrouping()) {
    if (value) {
      SetAggregate(nullptr);
      SetConditionsType(ctWhere);
      SetGrouping(true);
      // The query starts grouping: every shown or sorted plain row is a key
      // (this one too), its criteria in HAVING under the MS style.
      for (int i = 0; i < selectList_->Count(); ++i) {
        TmvSelectItem* row = selectList_->Items(i);
        if (!(row->Select() || row->SortType() != stNone) || row->IsAggregatedExpression()) continue;
        row->SetGrouping(true);
        row->SetConditionsType(options.UseMSStyleGrouping ? ctHaving : ctWhere);
      }
    } else {
      SetGrouping(false);
      SetConditionsType(IsAggregatedExpression() ? ctHaving : ctWhere);
    }
  } else if (value) {
    SetAggregate(nullptr);
    SetConditionsType(ctWhere);
    SetGrouping(true);
  } else {
    SetGrouping(false);
    if (IsAggregatedExpression()) {
      SetConditionsType(ctHaving);
    } else {
      SetConditionsType(ctWhere);
      SetSelect(false);
      SetSortType(stNone);
    }
  }
}

void TmvSelectItem::SetConditionsTypeUI(TmvConditionsType type) {
  if (type == conditionsType_) return;
  TmvUpdateScope update(selectList_);
  SetConditionsType(type);
  if (type == ctWhere)
    SetAggregate(nullptr);
  else if (!IsAggregatedExpression())
    SetGrouping(true);
}

void TmvSelectItem::SetAggregateStringUI(const WideString& text) {
  TmvUpdateScope update(selectList_);
  SetAggregateString(text);
  if (IsAggregatedExpression()) {
    if (!selectList_->IsQueryWithGrouping())
      for (int i = 0; i < selectList_->Count(); ++i) {
        TmvSelectItem* row = selectList_->Items(i);
        row->SetGrouping(row->Select() && !row->IsAggregatedExpression());
      }
  } else if (selectList_->IsQueryWithGrouping() && Select()) {
    SetGrouping(true);
  }
  NameUnnamedColumn(this);
}

namespace {

const char16_t* const kGroupBy = u"Group By";

}  // namespace

WideString TmvSelectItem::GetGroupingTypeString() const {
  if (!aggregate_) {
    if (!grouping_ && conditionsType_ == ctWhere) return MessageText(mvQBConditionsTypeWhere);
    if (grouping_ && conditionsType_ == ctHaving) return kGroupBy;
    if (!grouping_ && conditionsType_ == ctHaving) return MessageText(mvQBConditionsTypeHaving);
  } else if (!grouping_ && conditionsType_ == ctHaving) {
    return GetAggregateString();
  }
  return {};
}

std::vector<WideString> TmvSelectItem::GetGroupingTypeStringList() const {
  std::vector<WideString> list;
  if (IsSupportConditions()) list.push_back(MessageText(mvQBConditionsTypeWhere));
  list.push_back(kGroupBy);
  if (IsSupportConditions()) list.push_back(MessageText(mvQBConditionsTypeHaving));
  std::vector<WideString> aggregates = GetAggregateStringList();
  if (!aggregates.empty() && aggregates.front().empty()) aggregates.erase(aggregates.begin());
  list.insert(list.end(), aggregates.begin(), aggregates.end());
  return list;
}

void TmvSelectItem::SetGroupingTypeString(const WideString& text) {
  TmvUpdateScope update(selectList_);
  const WideString word = WideUpperCase(WideTrim(text));
  if (word == u"WHERE") {
    SetConditionsTypeUI(ctWhere);
    SetAggregate(nullptr);
    SetGroupingUI(false);
  } else if (word == u"GROUP BY") {
    SetGroupingUI(true);
    SetAggregate(nullptr);
    SetConditionsTypeUI(ctHaving);
  } else if (word == u"HAVING") {
    SetAggregate(nullptr);
    SetGroupingUI(false);
    SetConditionsType(ctHaving);
  } else {
    SetGrouping(false);
    SetConditionsType(ctHaving);
    SetAggregateString(text);
  }
}

// --- Names ---

std::vector<WideString> TmvSelectItem::GetOccupiedColumnNames() const {
  std::vector<WideString> names;
  if (const auto* alias = alias_ ? TmvCast<TastTokenIdentifier>(alias_->Name.get()) : nullptr) {
    // An alias names the column whatever the expression is.
    names.push_back(alias->Token);
    return names;
  }
  if (aggregate_) return names;
  if (expressionFieldName_ && TmvCast<TSQLExpressionItem>(expression_.get())) {
    if (expressionFieldName_->Items.Count() == 1) names.push_back(expressionFieldName_->Token(0)->Token);
  } else if (TmvCast<TSQLSelectItemAllTableColumns>(expression_.get())) {
    if (expressionFromSource_) AddFieldNames(expressionFromSource_->FieldsList(), names);
  } else if (TmvCast<TSQLSelectItemAllColumns>(expression_.get())) {
    for (TmvDatasource* datasource : DatasourcesOf(this)) AddFieldNames(datasource->GetFields(), names);
  }
  return names;
}

bool TmvSelectItem::IsUnnamedColumn() const { return GetOccupiedColumnNames().empty(); }

bool TmvSelectItem::IsColumnNamesConflict() const {
  for (const WideString& name : GetOccupiedColumnNames())
    if (!selectList_->IsUniqueColumnName(name, this)) return true;
  return false;
}

WideString TmvSelectItem::GetAliasBaseName() const {
  WideString base;
  if (!aggregate_ && expressionFieldName_ && expressionFieldName_->Items.Count() > 0) {
    base = expressionFieldName_->Token(0)->Token;
  } else {
    const TSQLObjectColumnList columns = ReferencedColumns(expression_.get());
    base = columns.size() == 1 && columns[0]->Items.Count() > 0 ? columns[0]->Token(0)->Token : WideString(u"Column");
  }
  if (aggregate_ && aggregate_->Name) base += u"_" + aggregate_->Name->GetQualifiedNameWithoutQuotes();
  return base;
}

int TmvSelectItem::GetAliasStartIndex() const {
  if (!aggregate_ && expressionFieldName_ && expressionFieldName_->Items.Count() > 0) return 0;
  return ReferencedColumns(expression_.get()).size() == 1 ? 0 : 1;
}

void TmvSelectItem::CreateUniqueAlias() {
  SetAliasString(selectList_->CreateUniqueAlias(GetAliasBaseName(), GetAliasStartIndex()));
}

void TmvSelectItem::CreateAliasFromFieldName() {
  TmvMetadataField* field = GetExpressionField();
  if (!field || !field->Name() || field->Name()->Items.Count() == 0) return;
  SetAliasString(selectList_->CreateUniqueAlias(field->Name()->Token(0)->Token, 0));
}

bool TmvSelectList::IsUniqueColumnName(const WideString& name, const TmvSelectItem* exceptItem) const {
  for (TmvSelectItem* row : items_)
    if (row != exceptItem && row->Select() && Contains(row->GetOccupiedColumnNames(), name)) return false;
  return true;
}

bool TmvSelectList::IsUniqueColumnName(const TastTokenIdentifier* identifier, const TmvSelectItem* exceptItem) const {
  return !identifier || IsUniqueColumnName(identifier->Token, exceptItem);
}

bool TmvSelectList::IsAliasAssigned(const WideString& name) const {
  for (TmvSelectItem* row : items_) {
    const auto* alias = row->Alias() ? TmvCast<TastToken>(row->Alias()->Name.get()) : nullptr;
    if (alias && WideSameText(alias->Token, name)) return true;
  }
  return false;
}

bool TmvSelectList::IsAliasAssigned(const TastTokenIdentifier* identifier) const {
  return identifier && IsAliasAssigned(identifier->Token);
}

WideString TmvSelectList::CreateUniqueAlias(const WideString& base, int startIndex) const {
  for (int i = std::max(startIndex, 0); i < INT_MAX; ++i) {
    const WideString name = i == 0 ? base : base + IntToWide(i);
    if (IsUniqueColumnName(name, nullptr) && !IsAliasAssigned(name)) return name;
  }
  return base;
}

void TmvSelectList::AssignAliasesToDuplicateColumnNames() {
  TmvUpdateScope update(this);
  for (int i = 0; i < Count(); ++i) {
    TmvSelectItem* row = items_[i];
    if (row->Select() && row->IsSupportsAlias() && row->IsColumnNamesConflict()) row->CreateUniqueAlias();
  }
}

// --- Row menu ---

bool TmvSelectItem::CanAcceptMoveUpEvent() const {
  const int index = Index();
  return index > 0 && index < selectList_->Count() - 1;
}

bool TmvSelectItem::CanAcceptMoveDownEvent() const { return Index() < selectList_->Count() - 1; }
bool TmvSelectItem::CanAcceptRemoveEvent() const { return Index() < selectList_->Count() - 1; }
bool TmvSelectItem::CanAcceptInsertEmptyEvent() const { return Index() < selectList_->Count() - 1; }

namespace {

// Moves the row by `step`; the grid's current row follows it.
void MoveRow(TmvSelectList* list, int index, int step) {
  ImvSelectListControl* control = list->SelectListControl();
  const bool current = control && control->GetCurrentRow() == index;
  list->Move(index, index + step);
  if (current) control->SetCurrentRow(index + step);
}

}  // namespace

void TmvSelectItem::MoveUpEvent() {
  if (CanAcceptMoveUpEvent()) MoveRow(selectList_, Index(), -1);
}

void TmvSelectItem::MoveDownEvent() {
  if (CanAcceptMoveDownEvent()) MoveRow(selectList_, Index(), 1);
}

void TmvSelectItem::RemoveEvent() {
  if (CanAcceptRemoveEvent()) selectList_->Delete(Index());
}

void TmvSelectItem::InsertEmptyEvent() {
  if (CanAcceptInsertEmptyEvent()) selectList_->InsertEmptyRow(Index());
}

TmvMenu TmvSelectItem::GetPopupMenu(ImvControl*) {
  TmvMenu menu;
  auto add = [&menu](const char16_t* key, bool enabled, std::function<void()> action) {
    TmvMenuItem item;
    item.Key = key;
    item.Caption = item.IsSeparator() ? WideString(key) : MessageText(key);
    item.Enabled = enabled;
    if (enabled) item.Action = std::move(action);
    menu.push_back(std::move(item));
  };
  add(mvQBMoveUp, CanAcceptMoveUpEvent(), [this] { MoveUpEvent(); });
  add(mvQBMoveDown, CanAcceptMoveDownEvent(), [this] { MoveDownEvent(); });
  add(u"-", true, nullptr);
  add(mvQBRemoveItem, CanAcceptRemoveEvent(), [this] { RemoveEvent(); });
  add(mvQBInsertEmtyItem, CanAcceptInsertEmptyEvent(), [this] { InsertEmptyEvent(); });
  return menu;
}

}  // namespace mv
