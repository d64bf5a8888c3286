#include "metadata/QueryFixup.h"

#include <algorithm>
#include <atomic>
#include <memory>

#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "support/MessageCatalog.h"
#include "support/WideFormat.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

// The data of one node on the walk. A param shares its parent's lists of
// with items and sources in sight; one that opens a scope (a statement or a
// select) cuts them back to their length at its start when it is freed, so
// what a select adds goes with it while what enclosing selects added stays
// in sight inside it.
class TmvPrepareAndFixupParam : public TmvObject {
 public:
  TmvPrepareAndFixupParam(TmvPrepareAndFixupParam* parent, TastNodeBase* node) : Parent(parent), Node(node) {
    if (parent) {
      WithItems = parent->WithItems;
      FromSources = parent->FromSources;
      ParameterGroup = parent->ParameterGroup;
    } else {
      OwnsLists = true;
      WithItems = &ownWithItems_;
      FromSources = &ownFromSources_;
    }
  }
  ~TmvPrepareAndFixupParam() override {
    if (!ScopeMarked) return;
    WithItems->resize(std::min(WithItems->size(), SavedWithCount));
    FromSources->resize(std::min(FromSources->size(), SavedFromCount));
  }

  void MarkScope() {
    ScopeMarked = true;
    SavedWithCount = WithItems->size();
    SavedFromCount = FromSources->size();
  }

  TmvPrepareAndFixupParam* Parent;
  TastNodeBase* Node;
  bool ScopeMarked = false;
  size_t SavedWithCount = 0;
  size_t SavedFromCount = 0;
  bool OwnsLists = false;
  TSQLWithClauseItemList* WithItems;
  TSQLFromSourceList* FromSources;
  // Select items with an identifier alias, on a GROUP BY or ORDER BY clause.
  std::unique_ptr<std::vector<TSQLSelectItemExpression*>> SelectAliases;
  // Number of the innermost operand of an And or Or.
  int32_t ParameterGroup = 0;

 private:
  TSQLWithClauseItemList ownWithItems_;
  TSQLFromSourceList ownFromSources_;
};

namespace {

// Operands of logical collections are numbered across the process, so that
// parameters of one operand share a number.
std::atomic<int32_t> parameterGroupCounter{0};

using Param = TmvPrepareAndFixupParam;

Param& ParamOf(TmvObject* data) { return *static_cast<Param*>(data); }

void Remove(TastNodeBaseList& list, const TastNodeBase* node) {
  if (node) list.erase(std::remove(list.begin(), list.end(), node), list.end());
}

void MoveToFront(TastNodeBaseList& list, TastNodeBase* node) {
  if (!node || std::find(list.begin(), list.end(), node) == list.end()) return;
  Remove(list, node);
  list.insert(list.begin(), node);
}

void MoveToEnd(TastNodeBaseList& list, TastNodeBase* node) {
  if (!node || std::find(list.begin(), list.end(), node) == list.end()) return;
  Remove(list, node);
  list.push_back(node);
}

const TastTokenIdentifier* OnlyIdentifier(const TSQLQualifiedName* name) {
  return name && name->GetCount() == 1 ? TmvCast<TastTokenIdentifier>(name->Token(0)) : nullptr;
}

// The outermost part of a name (names hold their parts from the inside out).
const TastTokenIdentifier* PrefixIdentifier(const TSQLQualifiedName* name) {
  return name->GetCount() >= 2 ? TmvCast<TastTokenIdentifier>(name->Token(name->GetCount() - 1)) : nullptr;
}

const TastTokenIdentifier* AliasName(const TSQLFromSource* source) {
  return source->Alias ? source->Alias->Name.get() : nullptr;
}

const TSQLDatabaseObject* ObjectName(const TSQLFromSource* source) {
  if (const auto* object = TmvCast<TSQLFromObject>(source)) return object->Object.get();
  return nullptr;
}

// The source's own name as one identifier: the last part of its object name.
const TastTokenIdentifier* OwnNameIdentifier(const TSQLFromSource* source) {
  const TSQLDatabaseObject* name = ObjectName(source);
  return name && name->GetCount() > 0 ? TmvCast<TastTokenIdentifier>(name->Token(0)) : nullptr;
}

bool SameIdentifier(const TmvBaseSQLContext* context, const TastTokenIdentifier* a, const TastTokenIdentifier* b) {
  return a && b && context->CompareIdentifiers(a, b) == 0;
}

// Whether a name stands for an object by the object's alternate name.
bool IsAltNameToken(const TmvBaseSQLContext* context, const TastTokenIdentifier* name,
                    const TastTokenIdentifier* altName) {
  return SameIdentifier(context, name, altName);
}

const TastTokenIdentifier* MetadataAltNameOf(const TSQLFromSource* source) {
  const TmvMetadataObject* object = source->GetMetadataObject();
  return object && !object->AltName().empty() ? object->AltNameId() : nullptr;
}

void RemovePrefixes(TSQLObjectColumn* column, int count) {
  for (int i = 0; i < count && column->GetCount() > 1; ++i) column->RemoveFirstPrefix();
}

void FreeDatabaseLink(TSQLQualifiedName* name) { name->DatabaseLink.Reset(); }

// Whether two names are written alike, part by part (text and quotes).
bool SameSpelling(const TSQLQualifiedName* a, const TSQLQualifiedName* b) {
  if (a->GetCount() != b->GetCount()) return false;
  for (int i = 0; i < a->GetCount(); ++i) {
    const TastToken* x = a->Token(i);
    const TastToken* y = b->Token(i);
    const auto* xId = TmvCast<TastTokenIdentifier>(x);
    const auto* yId = TmvCast<TastTokenIdentifier>(y);
    if (x->Token != y->Token || !xId || !yId || xId->Quoted != yId->Quoted) return false;
  }
  return true;
}

// A field of `source` becomes the column's: the column takes the name as
// the metadata spells it, and refers to the metadata object's own field
// where the source reads one (the source's list holds copies).
void TakeField(TSQLObjectColumn* column, TSQLFromSource* source) {
  const TmvBaseSyntaxProvider* provider = column->SQLContext()->SyntaxProvider();
  TmvMetadataFieldsList* fields = source->FieldsList();
  const int index = provider->FindFieldInFieldsList(column, fields);
  if (index < 0) return;
  TmvMetadataField* field = fields->Items(index);
  if (field->Name() && field->Name()->GetCount() > 0 && !SameSpelling(column, field->Name())) {
    while (column->GetCount() > 0) column->RemoveLastName();
    column->AddName(field->Name());
  }
  TmvMetadataField* own = field;
  if (const TmvMetadataObject* object = source->GetMetadataObject()) {
    const int ownIndex = object->GetFields()->FindFieldByName(field->Name());
    own = ownIndex >= 0 ? object->GetFields()->Items(ownIndex) : nullptr;
  }
  column->SetMetadataField(own);
}

bool IsSelectAlias(const TmvBaseSQLContext* context, const TSQLObjectColumn* column,
                   const std::vector<TSQLSelectItemExpression*>& aliases) {
  const TastTokenIdentifier* name = OnlyIdentifier(column);
  if (!name) return false;
  for (auto it = aliases.rbegin(); it != aliases.rend(); ++it) {
    const auto* alias = TmvCast<TastTokenIdentifier>((*it)->Alias->Name.get());
    if (context->IsIdentifiersEqual(name, alias)) return true;
  }
  return false;
}

// The select items with an identifier alias of the select that holds a
// GROUP BY or ORDER BY clause.
void CollectSelectAliases(Param& param, TastNodeBase* parent) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(parent);
  if (!select || !select->SelectItems) return;
  param.SelectAliases = std::make_unique<std::vector<TSQLSelectItemExpression*>>();
  for (int i = 0; i < select->SelectItems->GetCount(); ++i) {
    auto* item = TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(i));
    if (item && item->Alias && TmvCast<TastTokenIdentifier>(item->Alias->Name.get()))
      param.SelectAliases->push_back(item);
  }
}

// Copies of the fields of `source` that are not virtual calculated ones.
void AppendSourceFields(TmvMetadataFieldsList* result, TSQLFromSource* source) {
  TmvMetadataFieldsList* fields = source->FieldsList();
  for (int i = 0; i < fields->Count(); ++i)
    if (!fields->Items(i)->IsVirtualCalculatedField()) result->Add()->Assign(fields->Items(i));
}

// Every source of a FROM tree, nested groups depth first.
void CollectSources(TSQLFromSource* source, std::vector<TSQLFromSource*>& sources) {
  if (auto* group = TmvCast<TSQLFromGroup>(source)) {
    for (int i = 0; i < group->GetCount(); ++i) CollectSources(group->GetItems(i), sources);
  } else if (source) {
    sources.push_back(source);
  }
}

TSQLObjectColumn* ColumnOf(TSQLExpressionItem* expression) {
  auto* column = TmvCast<TSQLExpressionColumn>(ExpressionRemoveBrackets(expression));
  return column ? column->Column.get() : nullptr;
}

TSQLExpressionParameter* ParameterOf(TSQLExpressionItem* expression) {
  return TmvCast<TSQLExpressionParameter>(ExpressionRemoveBrackets(expression));
}

// ">" and "<" (and their "=" forms) swap when the parameter stands on the left.
WideString MirroredOperator(const WideString& text) {
  if (text == u">") return u"<";
  if (text == u"<") return u">";
  if (text == u">=") return u"<=";
  if (text == u"<=") return u">=";
  return text;
}

// What a parameter learns from the column it is compared with, and how.
void LoadParameterProps(TSQLExpressionParameter* parameter, const WideString& operatorText, int32_t index,
                        TSQLObjectColumn* column) {
  TmvBaseSQLContext* context = parameter->SQLContext();
  TSQLBuilder& builder = context->SQLBuilderExpressionForServer();
  parameter->Index = index;
  parameter->Name = operatorText;
  TastToken* firstName = column->GetCount() > 0 ? column->Token(0) : nullptr;
  TSQLFromSource* source = column->FromSource;
  if (!source) {
    if (firstName) parameter->ColumnName = firstName->SimpleSQL(builder);
    return;
  }
  if (source->Alias && source->Alias->Name) {
    parameter->ObjectName = source->Alias->Name->SimpleSQL(builder);
  } else if (auto* object = TmvCast<TSQLFromObject>(source); object && object->Object) {
    parameter->ObjectName = object->Object->SimpleSQL(builder);
  } else if (auto* function = TmvCast<TSQLFromFunction>(source); function && function->Name) {
    parameter->ObjectName = function->Name->SimpleSQL(builder);
  }
  parameter->MetadataObject = source->GetMetadataObject();
  parameter->Field = column->GetMetadataField();
  TmvMetadataFieldsList* fields = source->FieldsList();
  const int found = fields->FindFieldByName(static_cast<const TSQLQualifiedName*>(column));
  if (found >= 0) {
    const TmvMetadataField* field = fields->Items(found);
    parameter->ExpressionType = uint8_t(field->FieldType());
    parameter->ExpressionTypeName = field->FieldTypeName();
    TSQLQualifiedName* name = const_cast<TSQLQualifiedName*>(field->Name());
    if (name) parameter->ColumnName = name->SimpleSQL(builder);
  } else if (firstName) {
    parameter->ColumnName = firstName->SimpleSQL(builder);
  }
}

}  // namespace

// --- The entry ---

void TastNodeBase::PrepareAndFixupRecursive(const TSQLWithClauseItemList& withItems,
                                            const TSQLFromSourceList& fromSources, TmvConnection* connection) {
  if (!connection && SQLContext() && SQLContext()->MetadataProvider())
    connection = SQLContext()->MetadataProvider()->Connection();
  TmvPrepareAndFixupVisitor visitor(connection);
  visitor.FixupInContext(this, withItems, fromSources);
}

void TmvPrepareAndFixupVisitor::Fixup(TastNodeBase* node) { FixupInContext(node, {}, {}); }

void TmvPrepareAndFixupVisitor::FixupInContext(TastNodeBase* node, const TSQLWithClauseItemList& withItems,
                                               const TSQLFromSourceList& fromSources) {
  if (!node) return;
  ClearDatasourceReferences(node);
  Param root(nullptr, nullptr);
  root.WithItems->assign(withItems.begin(), withItems.end());
  root.FromSources->assign(fromSources.begin(), fromSources.end());
  Visit(node, &root);
}

void TmvPrepareAndFixupVisitor::ClearDatasourceReferences(TastNodeBase* node) {
  // A name bound by an earlier pass lost the prefix its source now prints;
  // it gets it back first, so that binding twice reads the text as written.
  auto clear = [](TastNodeBase* each) {
    if (auto* object = TmvCast<TSQLDatabaseObject>(each)) {
      if (object->FromSource && !object->IsOwnNameOfSource()) object->RestoreColumnPrefix();
      object->FromSource = nullptr;
    } else if (auto* column = TmvCast<TSQLObjectColumn>(each)) {
      column->RestoreColumnPrefix();
    }
  };
  clear(node);
  node->TraverseASTTreeDepthFirst(clear);
}

// --- Order of the walk ---

TastNodeBaseList TmvPrepareAndFixupVisitor::GetNodeChildren(TastNodeBase* node, TastNodeBase* parent,
                                                            TmvObject* data, TmvObject* nodeData) {
  TastNodeBaseList children = TastNodeVisitor::GetNodeChildren(node, parent, data, nodeData);
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node)) {
    MoveToFront(children, statement->With.get());
    MoveToFront(children, statement->OrderBy.get());
  } else if (auto* select = TmvCast<TSQLSubQuerySelectExpression>(node)) {
    // A member of a with item's query: the first member alone in the item's
    // first walk, the others (which may name the item) in its second.
    const Param* up = ParamOf(nodeData).Parent;
    while (up && (TmvCast<TSQLSubQuerySelectExpression>(up->Node) || TmvCast<TSQLSubQueryExpressions>(up->Node)))
      up = up->Parent;
    if (auto* item = up ? TmvCast<TSQLWithClauseItem>(up->Node) : nullptr) {
      const TSQLSubQuerySelectExpression* first = item->Query ? item->Query->FirstUnionSubQuery() : nullptr;
      if ((select == first) == IsPassed(item)) {
        children.clear();
        return children;
      }
    }
    MoveToFront(children, select->FromClause.get());
    MoveToEnd(children, select->OrderBy.get());
  } else if (auto* with = TmvCast<TSQLWithClause>(node)) {
    // Each item twice: the second walk sees the item itself.
    TastNodeBaseList items;
    for (int i = 0; i < with->GetCount(); ++i) items.push_back(with->GetItems(i));
    for (TastNodeBase* item : items) Remove(children, item);
    children.insert(children.begin(), items.begin(), items.end());
    children.insert(children.end(), items.begin(), items.end());
  } else if (auto* source = TmvCast<TSQLFromSource>(node)) {
    if (IsPassed(source)) {
      // The second walk of a source: its ON condition alone.
      children.clear();
      if (source->JoinExpression) children.push_back(source->JoinExpression.get());
      return children;
    }
    Remove(children, source->JoinExpression.get());
    if (auto* group = TmvCast<TSQLFromGroup>(source)) {
      for (int i = group->GetCount() - 1; i >= 0; --i) MoveToFront(children, group->GetItems(i));
      TastNodeBaseList doubled;
      for (TastNodeBase* child : children) {
        doubled.push_back(child);
        if (TmvCast<TSQLFromSource>(child)) doubled.push_back(child);
      }
      children = std::move(doubled);
    }
  }
  return children;
}

TmvOwned<TmvObject> TmvPrepareAndFixupVisitor::EnterIntoNode(TastNodeBase* node, TastNodeBase* parent,
                                                            TmvObject* data) {
  auto param = TmvCreate<Param>(static_cast<Param*>(data), node);
  if (TmvCast<TSQLSubSelectStatement>(node) || TmvCast<TSQLSubQuerySelectExpression>(node)) {
    param->MarkScope();
    return param;
  }
  if (TmvCast<TSQLFromGroup>(node)) return param;
  // A source's own name refers to the source, which keeps name resolution
  // away from it.
  if (auto* object = TmvCast<TSQLFromObject>(node)) {
    if (object->Object) object->Object->FromSource = object;
  } else if (auto* function = TmvCast<TSQLFromFunction>(node)) {
    if (function->Name) function->Name->FromSource = function;
  }
  const TmvBaseSQLContext* context = node->SQLContext();
  const TmvBaseSyntaxProvider* provider = context ? context->SyntaxProvider() : nullptr;
  if (!provider) return param;
  const Param* parentParam = static_cast<Param*>(data);
  if (provider->IsSupportGroupByAlias()) {
    if (TmvCast<TSQLGroupByList>(node)) {
      CollectSelectAliases(*param, parent);
    } else if (auto* column = TmvCast<TSQLExpressionColumn>(node)) {
      if (parentParam && parentParam->SelectAliases && TmvCast<TSQLGroupByList>(parentParam->Node) &&
          IsSelectAlias(context, column->Column.get(), *parentParam->SelectAliases))
        groupByAliases_.insert(column->Column.get());
    }
  }
  if (provider->IsSupportOrderByAlias()) {
    if (TmvCast<TSQLOrderByClause>(node)) {
      CollectSelectAliases(*param, parent);
    } else if (auto* item = TmvCast<TSQLOrderByItem>(node)) {
      auto* column = TmvCast<TSQLExpressionColumn>(item->Expression.get());
      if (column && parentParam && parentParam->SelectAliases &&
          IsSelectAlias(context, column->Column.get(), *parentParam->SelectAliases))
        orderByAliases_.insert(column->Column.get());
    }
  }
  return param;
}

void TmvPrepareAndFixupVisitor::VisitingNode(TastNodeBase*, TastNodeBase* parent, TmvObject*, TmvObject* nodeData) {
  if (TmvCast<TSQLExpressionOr>(parent) || TmvCast<TSQLExpressionAnd>(parent))
    ParamOf(nodeData).ParameterGroup = ++parameterGroupCounter;
}

void TmvPrepareAndFixupVisitor::ExitFromNode(TastNodeBase* node, TastNodeBase*, TmvObject*, TmvObject* nodeData) {
  Param& param = ParamOf(nodeData);
  if (TmvCast<TSQLSubSelectStatement>(node)) return;
  if (auto* select = TmvCast<TSQLSubQuerySelectExpression>(node)) {
    FixupUnionSubQuery(select);
  } else if (auto* item = TmvCast<TSQLWithClauseItem>(node)) {
    if (IsPassed(item)) return;
    passedWithItems_.insert(item);
    FixupWithItem(item);
    param.WithItems->push_back(item);
  } else if (auto* source = TmvCast<TSQLFromSource>(node)) {
    if (IsPassed(source)) return;
    passedFromSources_.insert(source);
    if (TmvCast<TSQLFromGroup>(source)) return;
    if (TmvCast<TSQLFromObject>(source))
      FixupFromObject(source, param);
    else if (TmvCast<TSQLFromFunction>(source))
      FixupFromFunction(source, param);
    else
      FixupFromItem(source, param);
    param.FromSources->push_back(source);
  } else if (auto* column = TmvCast<TSQLObjectColumn>(node)) {
    FixupColumnName(column, param);
  } else if (auto* object = TmvCast<TSQLDatabaseObject>(node)) {
    FixupObjectName(object, param);
  } else {
    FixupParameters(node, param);
  }
}

// --- Sources ---

void TmvPrepareAndFixupVisitor::FixupFromObject(TSQLFromSource* node, Param& param) {
  auto* source = static_cast<TSQLFromObject*>(node);
  source->WithItem = nullptr;
  source->SetMetadataObject(nullptr);
  TmvBaseSQLContext* context = source->SQLContext();
  const TastTokenIdentifier* single = OnlyIdentifier(source->Object.get());
  if (single) {
    for (auto it = param.WithItems->rbegin(); it != param.WithItems->rend(); ++it) {
      if ((*it)->Name && context->CompareIdentifiers((*it)->Name.get(), single) == 0) {
        source->WithItem = *it;
        break;
      }
    }
  }
  if (!source->WithItem && source->Object) {
    if (const TmvMetadataContainer* container = context->MetadataContainer()) {
      TmvMetadataObject* object = single ? container->FindObjectByAltName(single) : nullptr;
      if (!object) object = container->FindObjectByFullName(source->Object.get());
      source->SetMetadataObject(object);
    }
  }
  FixupFromItem(source, param);
  if (source->Object) source->Object->FromSource = source;
}

void TmvPrepareAndFixupVisitor::FixupFromFunction(TSQLFromSource* node, Param& param) {
  auto* source = static_cast<TSQLFromFunction*>(node);
  source->SetMetadataObject(nullptr);
  TmvBaseSQLContext* context = source->SQLContext();
  if (const TmvMetadataContainer* container = context->MetadataContainer(); container && source->Name) {
    // A quoted name is looked up as written, another as the dialect folds it.
    TmvMetadataObject* object = nullptr;
    if (const TastTokenIdentifier* single = OnlyIdentifier(source->Name.get())) {
      const TmvBaseSyntaxProvider* provider = context->SyntaxProvider();
      WideString text = single->Token;
      if (!single->Quoted && provider && provider->IsNonQuotedIdentifiersToUpperCase()) text = WideUpperCase(text);
      object = container->FindObjectByAltName(text, single->Quoted);
    }
    if (!object) object = container->FindObjectByFullName(source->Name.get());
    source->SetMetadataObject(object);
  }
  FixupFromItem(source, param);
  if (source->Name) source->Name->FromSource = source;
}

void TmvPrepareAndFixupVisitor::FixupFromItem(TSQLFromSource* node, Param& param) {
  node->CalcFieldsList(*param.WithItems, *param.FromSources, connection_);
  if (!node->ColumnNames) return;
  TmvMetadataFieldsList* fields = node->FieldsList();
  for (int i = 0; i < node->ColumnNames->GetCount(); ++i) {
    auto* alias = TmvCast<TSQLAliasExpression>(node->ColumnNames->GetItems(i));
    TmvMetadataField* field = i < fields->Count() ? fields->Items(i) : fields->Add();
    if (alias)
      field->SetNameAlias(alias);
    else if (auto* id = TmvCast<TastTokenIdentifier>(node->ColumnNames->GetItems(i)))
      field->SetNameToken(id);
  }
}

// --- With items and selects ---

void TmvPrepareAndFixupVisitor::FixupWithItem(TSQLWithClauseItem* item) {
  TmvMetadataFieldsList* fields = item->FieldsList();
  fields->Clear();
  const TSQLSubQuerySelectExpression* first = item->Query ? item->Query->FirstUnionSubQuery() : nullptr;
  if (first) fields->Assign(first->ResultFields());
  // The column names of the item stay as written where the first member's
  // columns are not all known: a count that knows only some would cut them.
  const bool complete = first && partialResults_.count(first) == 0;
  TmvBaseSQLContext* context = item->SQLContext();
  if (fields->Count() == 0) {
    if (complete) item->ColumnNames.Reset();
    return;
  }
  const TmvBaseSyntaxProvider* provider = context->SyntaxProvider();
  if (!item->ColumnNames && provider && provider->IsCTEColumnNamesMandatory())
    item->ColumnNames.Set(TastCreate<TastAliasExpressionsList>(context));
  if (!item->ColumnNames) return;
  TastNodeWithList* names = item->ColumnNames.get();
  if (complete)
    while (names->GetCount() > fields->Count()) names->Delete(names->GetCount() - 1);
  const int written = names->GetCount();
  for (int i = written; i < fields->Count(); ++i) {
    const TSQLQualifiedName* fieldName = fields->Items(i)->Name();
    const TastToken* first = fieldName && fieldName->GetCount() > 0 ? fieldName->Token(0) : nullptr;
    auto alias = TastCreate<TSQLAliasExpression>(context);
    if (const auto* id = TmvCast<TastTokenIdentifier>(first))
      alias->Name.Set(id->CloneAs<TastToken>(context));
    else
      alias->Name.Set(TastCreate<TastTokenIdentifier>(context, fields->Items(i)->NameStrNotQuoted()));
    names->Add(std::move(alias));
  }
  for (int i = 0; i < std::min(written, fields->Count()); ++i)
    if (auto* alias = TmvCast<TSQLAliasExpression>(names->GetItems(i))) fields->Items(i)->SetNameAlias(alias);
}

void TmvPrepareAndFixupVisitor::FixupUnionSubQuery(TSQLSubQuerySelectExpression* select) {
  TmvMetadataFieldsList* result = select->ResultFields();
  TmvUpdateBatch batch(*result);
  result->Clear();
  partialResults_.erase(select);
  if (!select->SelectItems) return;
  const TmvBaseSyntaxProvider* provider = select->SQLContext()->SyntaxProvider();
  auto addAll = [&](const std::vector<TSQLFromSource*>& sources) {
    for (TSQLFromSource* source : sources) {
      if (source->FieldsList()->Count() == 0) partialResults_.insert(select);
      AppendSourceFields(result, source);
    }
  };
  for (int i = 0; i < select->SelectItems->GetCount(); ++i) {
    TastNode* entry = select->SelectItems->GetItems(i);
    if (auto* item = TmvCast<TSQLSelectItemExpression>(entry)) {
      auto* expressionColumn = TmvCast<TSQLExpressionColumn>(item->Expression.get());
      TSQLObjectColumn* column = expressionColumn ? expressionColumn->Column.get() : nullptr;
      TmvMetadataField* field = nullptr;
      if (column) {
        const int found = column->FromSource ? column->FromSource->FieldsList()->FindFieldByName(
                                                   static_cast<const TSQLQualifiedName*>(column))
                                             : -1;
        if (found >= 0) {
          field = result->Add();
          field->Assign(column->FromSource->FieldsList()->Items(found));
          field->SetExpressionAST(nullptr, u"");
        } else {
          field = result->AddField(static_cast<const TSQLQualifiedName*>(column));
        }
        if (item->Alias) field->SetNameAlias(item->Alias.get());
      } else {
        field = item->Alias ? result->AddField(item->Alias->Name.get()) : result->Add();
        if (provider && item->Expression && provider->CalcExpressionType(item->Expression.get())) {
          field->SetFieldType(TFieldType(item->Expression->ExpressionType));
          field->SetFieldTypeName(item->Expression->ExpressionTypeName);
        }
      }
    } else if (auto* table = TmvCast<TSQLSelectItemAllTableColumns>(entry)) {
      if (select->FromClause && table->Object && table->Object->FromSource) addAll({table->Object->FromSource});
    } else if (TmvCast<TSQLSelectItemAllColumns>(entry) && select->FromClause) {
      std::vector<TSQLFromSource*> sources;
      CollectSources(select->FromClause.get(), sources);
      addAll(sources);
    }
  }
}

// --- Names ---

void TmvPrepareAndFixupVisitor::FixupColumnName(TSQLObjectColumn* column, Param& param) {
  if (groupByAliases_.count(column) || orderByAliases_.count(column)) return;
  const TmvBaseSQLContext* context = column->SQLContext();
  const TmvBaseSyntaxProvider* provider = context->SyntaxProvider();
  if (!provider) return;
  const int names = column->GetCount();
  const TastTokenIdentifier* prefix = PrefixIdentifier(column);
  const TSQLFromSourceList& sources = *param.FromSources;
  TSQLFromSource* bound = nullptr;
  auto bind = [&](TSQLFromSource* source, int prefixesToRemove, bool freeLink) {
    RemovePrefixes(column, prefixesToRemove);
    if (freeLink) FreeDatabaseLink(column);
    column->FromSource = source;
    bound = source;
  };

  // First search: the sources in sight from the last (the innermost) back.
  for (auto it = sources.rbegin(); it != sources.rend() && !bound; ++it) {
    TSQLFromSource* source = *it;
    const TastTokenIdentifier* alias = AliasName(source);
    const bool fromObject = TmvCast<TSQLFromObject>(source) != nullptr;
    if (names == 1 && source->FieldsList()->Count() == 0) break;
    if (names >= 2 && alias && prefix && SameIdentifier(context, prefix, alias)) {
      bind(source, 1, false);
    } else if (names == 2 && !alias && prefix && MetadataAltNameOf(source) &&
               IsAltNameToken(context, prefix, MetadataAltNameOf(source))) {
      bind(source, 1, false);
    } else if (names == 2 && !alias && fromObject && prefix &&
               SameIdentifier(context, prefix, OwnNameIdentifier(source))) {
      bind(source, 1, true);
    } else if (names >= 2 && fromObject && !alias) {
      const int count = provider->IsColumnOfDBObject(column, ObjectName(source));
      if (count >= 0)
        bind(source, count, true);
      else if (provider->FindFieldInFieldsList(column, source->FieldsList()) >= 0)
        bind(source, 0, false);
    } else if (provider->FindFieldInFieldsList(column, source->FieldsList()) >= 0) {
      bind(source, 0, false);
    }
  }

  // Second search: sources reached by the object's own name in spite of an alias.
  for (auto it = sources.rbegin(); it != sources.rend() && !bound && names >= 2; ++it) {
    TSQLFromSource* source = *it;
    if (!AliasName(source)) continue;
    const TastTokenIdentifier* altName = MetadataAltNameOf(source);
    if (prefix && altName && WideUpperCase(altName->Token) == WideUpperCase(prefix->Token)) {
      bind(source, 1, false);
    } else if (TmvCast<TSQLFromObject>(source) && prefix &&
               SameIdentifier(context, prefix, OwnNameIdentifier(source))) {
      bind(source, 1, false);
    } else if (TmvCast<TSQLFromObject>(source)) {
      const int count = provider->IsColumnOfDBObject(column, ObjectName(source));
      if (count >= 0) bind(source, count, true);
    }
  }
  if (bound) TakeField(column, bound);
}

void TmvPrepareAndFixupVisitor::FixupObjectName(TSQLDatabaseObject* object, Param& param) {
  if (object->FromSource) return;
  const TmvBaseSQLContext* context = object->SQLContext();
  const TastTokenIdentifier* single = OnlyIdentifier(object);
  const TSQLFromSourceList& sources = *param.FromSources;
  auto byName = [&](TSQLFromSource* source, bool withAlias) {
    if (!withAlias && source->Alias) return false;
    if (auto* from = TmvCast<TSQLFromObject>(source))
      return from->Object && context->IsQualifiedNamesEqual(from->Object.get(), object);
    if (auto* function = TmvCast<TSQLFromFunction>(source))
      return function->Name && context->IsQualifiedNamesEqual(function->Name.get(), object);
    return false;
  };
  TSQLFromSource* bound = nullptr;
  for (auto it = sources.rbegin(); it != sources.rend() && !bound; ++it) {
    TSQLFromSource* source = *it;
    const TastTokenIdentifier* alias = AliasName(source);
    if (single && alias) {
      if (SameIdentifier(context, single, alias)) bound = source;
    } else if (single && !alias && MetadataAltNameOf(source) &&
               IsAltNameToken(context, single, MetadataAltNameOf(source))) {
      bound = source;
    } else if (byName(source, false)) {
      bound = source;
    }
  }
  for (auto it = sources.rbegin(); it != sources.rend() && !bound; ++it)
    if (byName(*it, true)) bound = *it;
  if (!bound) return;
  // It prints through its source from now on; a function or a derived table
  // without an alias cannot be named, so there the name keeps its parts.
  object->FromSource = bound;
  const bool unnamed = !bound->Alias && (TmvCast<TSQLFromFunction>(bound) || TmvCast<TSQLFromQuery>(bound));
  if (!unnamed) object->Clear();
}

// --- Parameters ---

void TmvPrepareAndFixupVisitor::FixupParameters(TastNodeBase* node, Param& param) {
  const int32_t group = param.ParameterGroup;
  if (auto* parameter = TmvCast<TSQLExpressionParameter>(node)) {
    parameter->Index = group;
  } else if (auto* binary = TmvCast<TSQLExpressionOperatorBinary>(node)) {
    if (!binary->IsLogical() || !binary->Operator) return;
    TSQLObjectColumn* leftColumn = ColumnOf(binary->Expression.get());
    TSQLObjectColumn* rightColumn = ColumnOf(binary->Right.get());
    if (TSQLExpressionParameter* right = ParameterOf(binary->Right.get()); right && leftColumn)
      LoadParameterProps(right, binary->Operator->Text, group, leftColumn);
    else if (TSQLExpressionParameter* left = ParameterOf(binary->Expression.get()); left && rightColumn)
      LoadParameterProps(left, MirroredOperator(binary->Operator->Text), group, rightColumn);
  } else if (auto* between = TmvCast<TSQLExpressionBetween>(node)) {
    TSQLObjectColumn* column = ColumnOf(between->Expression.get());
    if (!column) return;
    if (TSQLExpressionParameter* low = ParameterOf(between->Low.get()))
      LoadParameterProps(low, between->Negated ? u"<" : u">=", group, column);
    if (TSQLExpressionParameter* high = ParameterOf(between->High.get()))
      LoadParameterProps(high, between->Negated ? u">" : u"<=", group, column);
  } else if (auto* like = TmvCast<TSQLExpressionLikeTemplate>(node)) {
    TSQLObjectColumn* column = ColumnOf(like->Expression.get());
    TSQLExpressionParameter* parameter = ParameterOf(like->Template.get());
    if (column && parameter)
      LoadParameterProps(parameter, like->Negated ? u"Not " + like->Keyword : like->Keyword, group, column);
  } else if (auto* in = TmvCast<TSQLExpressionInSet>(node)) {
    TSQLObjectColumn* column = ColumnOf(in->Expression.get());
    if (!column || !in->Values) return;
    for (int i = 0; i < in->Values->GetCount(); ++i)
      if (TSQLExpressionParameter* parameter = ParameterOf(in->Values->Expression(i)))
        LoadParameterProps(parameter, in->Negated ? u"Not In" : u"In", group, column);
  }
}

// --- Unknown objects ---

void CheckUnknownObjects(TastNodeBase* node) {
  auto check = [](TastNodeBase* each) {
    auto* source = TmvCast<TSQLFromObject>(each);
    if (!source || IsQualifiedNameEmpty(source->Object.get()) || source->WithItem || source->GetMetadataObject())
      return;
    RegisterFrontendMessages();
    TSQLBuilder& builder = source->SQLContext()->SQLBuilderExpression();
    throw EmvSQLError(WideFormat(MessageText(mvQBUnknownObjectName), {source->Object->SimpleSQL(builder)}), nullptr);
  };
  check(node);
  node->TraverseASTTreeDepthFirst(check);
}

}  // namespace mv
