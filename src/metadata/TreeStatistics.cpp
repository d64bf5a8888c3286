// The statistics of the nodes that read the metadata model: what a FROM
// source stands for, what a column of it reads, and how the select items of
// a select hand what they read to the fields of its result, from where the
// derived tables and with items that read them pass it on.
#include "frontend/SQLContext.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "tree/FromClause.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

const TastTokenIdentifier* SourceAlias(const TSQLFromSource* source) {
  return source->Alias ? source->Alias->Name.get() : nullptr;
}

// Makes the field's lists and empties them.
void ResetFieldStatistics(TmvMetadataField* field) {
  field->PrepareStatsCollections();
  field->UsedDatabaseObjects()->Clear();
  field->UsedDatabaseObjectColumns()->Clear();
}

// Adds what `from` reads to the lists; the number of entries added. `copy`
// for a field of another tree (a virtual object's expression).
int AddFieldStatistics(const TmvMetadataField* from, TmvStatsObjects* objects, TmvStatsColumns* columns,
                       bool copy = false) {
  if (!from) return 0;
  return objects->AddObjects(from->UsedDatabaseObjects(), copy) +
         columns->AddColumns(from->UsedDatabaseObjectColumns(), copy);
}

int AddFieldStatistics(const TmvMetadataField* from, TmvMetadataField* to, bool copy = false) {
  if (!from || !from->UsedDatabaseObjects() || from == to) return 0;
  to->PrepareStatsCollections();
  return AddFieldStatistics(from, to->UsedDatabaseObjects(), to->UsedDatabaseObjectColumns(), copy);
}

int AddNodeStatistics(const TastNodeBase* from, TmvMetadataField* to) {
  if (!from || !from->StatsObjects()) return 0;
  to->PrepareStatsCollections();
  return to->UsedDatabaseObjects()->AddObjects(from->StatsObjects()) +
         to->UsedDatabaseObjectColumns()->AddColumns(from->StatsColumns());
}

// The select members of a union, nested groups walked in order.
void CollectSelects(const TSQLSubQueryExpression* expression, std::vector<const TSQLSubQuerySelectExpression*>& list) {
  if (const auto* select = TmvCast<TSQLSubQuerySelectExpression>(expression)) {
    list.push_back(select);
    return;
  }
  const auto* group = TmvCast<TSQLSubQueryExpressions>(expression);
  if (!group) return;
  for (int i = 0; i < group->GetCount(); ++i) CollectSelects(group->GetItems(i), list);
}

// Field i of `fields` learns what field i of every member's result reads
// (the members of a union share their columns).
int PassResultStatistics(const TSQLSubSelectStatement* query, TmvMetadataFieldsList* fields) {
  if (!query) return 0;
  std::vector<const TSQLSubQuerySelectExpression*> selects;
  CollectSelects(query, selects);
  int added = 0;
  for (const TSQLSubQuerySelectExpression* select : selects) {
    const TmvMetadataFieldsList* result = select->ResultFields();
    const int count = std::min(result->Count(), fields->Count());
    for (int i = 0; i < count; ++i) added += AddFieldStatistics(result->Items(i), fields->Items(i));
  }
  return added;
}

// The sources of a FROM group, nested groups walked in order.
void CollectSources(TSQLFromSource* source, std::vector<TSQLFromSource*>& list) {
  if (auto* group = TmvCast<TSQLFromGroup>(source)) {
    for (int i = 0; i < group->GetCount(); ++i) CollectSources(group->GetItems(i), list);
    return;
  }
  list.push_back(source);
}

// The objects `source` stands for, under its alias: a with item's or a
// virtual object's inner objects, a table's or function's metadata object,
// or its name. Nothing for a derived table: its select is a child node.
int AddSourceObjects(const TSQLFromSource* source, TmvStatsObjects* objects) {
  const TastTokenIdentifier* alias = SourceAlias(source);
  if (const auto* from = TmvCast<TSQLFromObject>(source)) {
    if (const TSQLWithClauseItem* item = from->WithItem) return objects->AddObjects(item->StatsObjects());
    TmvMetadataObject* object = from->GetMetadataObject();
    const TSQLFromSource* expression = object ? object->ExpressionAST() : nullptr;
    if (expression && expression->StatsObjects() && expression->StatsObjects()->GetCount() > 0)
      return objects->AddObjects(expression->StatsObjects(), true);
    if (object) return objects->AddObjectIfNotExists(object, object->FullName(), alias);
    return from->Object ? objects->AddObjectIfNotExists(nullptr, from->Object.get(), alias) : 0;
  }
  if (const auto* function = TmvCast<TSQLFromFunction>(source)) {
    TmvMetadataObject* object = function->GetMetadataObject();
    if (object) return objects->AddObjectIfNotExists(object, object->FullName(), alias);
    return function->Name ? objects->AddObjectIfNotExists(nullptr, function->Name.get(), alias) : 0;
  }
  return 0;
}

// The name by which a column of `source` names its object when no field tells more.
TmvOwned<TSQLQualifiedName> SourceObjectName(const TSQLFromSource* source, TmvMetadataObject*& object) {
  TmvBaseSQLContext* context = source->SQLContext();
  auto name = TastCreate<TSQLQualifiedName>(context);
  object = source->GetMetadataObject();
  if (object) {
    name->AssignParts(*object->FullName());
  } else if (const auto* from = TmvCast<TSQLFromObject>(source); from && from->Object) {
    name->AssignParts(*from->Object);
  } else if (const auto* function = TmvCast<TSQLFromFunction>(source); function && function->Name) {
    name->AssignParts(*function->Name);
  } else if (const TastTokenIdentifier* alias = SourceAlias(source)) {
    name->AddName(alias->CloneAs<TastToken>(context));
  }
  return name;
}

// What a virtual object's expression reads, gathered on the expression
// itself, bound to the container first.
// Virtual objects that read each other stop at a depth.
void GatherExpressionStatistics(TSQLFromSource* expression) {
  static thread_local int depth = 0;
  if (depth >= 8) return;
  ++depth;
  try {
    expression->PrepareAndFixupRecursive();
    expression->PrepareCalcStatisticsRecursive();
    while (expression->CalcStatisticsRecursive() > 0) {
    }
  } catch (...) {
    --depth;
    throw;
  }
  --depth;
}

}  // namespace

// --- Names ---

int TSQLDatabaseObject::CalcStatistics() {
  int added = TastNodeBase::CalcStatistics();
  if (FromSource) added += AddSourceObjects(FromSource, StatsObjects());
  return added;
}

int TSQLObjectColumn::CalcStatistics() {
  int added = TastNodeBase::CalcStatistics();
  TmvStatsObjects* objects = StatsObjects();
  TmvStatsColumns* columns = StatsColumns();
  TmvBaseSQLContext* context = SQLContext();
  if (GetCount() == 0) return added;
  auto columnName = [&] {
    auto name = TastCreate<TSQLQualifiedName>(context);
    name->AddName(Token(0)->CloneAs<TastToken>(context));
    return name;
  };
  if (!FromSource) {
    if (GetCount() < 2) return added;
    auto objectName = GetNameWithoutNames(1);
    return added + columns->AddColumnIfNotExists(nullptr, objectName.get(), columnName().get(), nullptr);
  }
  added += AddSourceObjects(FromSource, objects);
  TmvMetadataFieldsList* fields = FromSource->FieldsList();
  const int index = fields->FindFieldByName(Token(0));
  const TmvMetadataField* field = index >= 0 ? fields->Items(index) : nullptr;
  if (field && field->UsedDatabaseObjects()) return added + AddFieldStatistics(field, objects, columns);
  // A known field of a known object is found without names: the gathering
  // repeats until nothing is added, so most calls find their entry.
  TmvMetadataObject* known = FromSource->GetMetadataObject();
  if (known && GetMetadataField() && columns->FindColumn(known, nullptr, nullptr, GetMetadataField())) return added;
  TmvMetadataObject* object = nullptr;
  auto objectName = SourceObjectName(FromSource, object);
  return added + columns->AddColumnIfNotExists(object, objectName.get(), columnName().get(), GetMetadataField());
}

// --- FROM sources ---

void TSQLFromSource::PrepareCalcStatistics() {
  TastNodeBase::PrepareCalcStatistics();
  TmvMetadataFieldsList* fields = FieldsList();
  for (int i = 0; i < fields->Count(); ++i) ResetFieldStatistics(fields->Items(i));
  const auto* from = TmvCast<TSQLFromObject>(this);
  if (from && from->WithItem) return;
  if (!from && !TmvCast<TSQLFromFunction>(this)) return;
  TmvMetadataObject* object = nullptr;
  auto objectName = SourceObjectName(this, object);
  // A virtual object reads what its expression reads: its fields pass on
  // what the expression's fields of the same names read.
  const TSQLFromSource* expression = object ? object->ExpressionAST() : nullptr;
  if (expression) GatherExpressionStatistics(object->ExpressionAST());
  const TmvMetadataFieldsList* inner =
      expression && expression->StatsObjects() && expression->StatsObjects()->GetCount() > 0
          ? expression->FieldsList()
          : nullptr;
  const TmvMetadataFieldsList* own = object ? object->GetFields() : nullptr;
  for (int i = 0; i < fields->Count(); ++i) {
    TmvMetadataField* field = fields->Items(i);
    if (inner) {
      const int found = inner->FindFieldByName(field->Name());
      if (found >= 0) AddFieldStatistics(inner->Items(found), field, true);
      continue;
    }
    // The list holds copies: the column names the object's own field.
    TmvMetadataField* ownField = nullptr;
    if (own) {
      const bool same = i < own->Count() && SQLContext()->IsQualifiedNamesEqual(own->Items(i)->Name(), field->Name());
      const int found = same ? i : own->FindFieldByName(field->Name());
      ownField = found >= 0 ? own->Items(found) : nullptr;
    }
    field->UsedDatabaseObjects()->AddObjectIfNotExists(object, objectName.get(), nullptr);
    field->UsedDatabaseObjectColumns()->AddColumnIfNotExists(object, objectName.get(), field->Name(), ownField);
  }
}

int TSQLFromSource::CalcStatistics() {
  int added = TastNodeBase::CalcStatistics();
  if (const auto* query = TmvCast<TSQLFromQuery>(this)) return added + PassResultStatistics(query->SubQuery.get(), FieldsList());
  const auto* from = TmvCast<TSQLFromObject>(this);
  if (!from || !from->WithItem) return added;
  const TmvMetadataFieldsList* itemFields = from->WithItem->FieldsList();
  TmvMetadataFieldsList* fields = FieldsList();
  const int count = std::min(itemFields->Count(), fields->Count());
  for (int i = 0; i < count; ++i) added += AddFieldStatistics(itemFields->Items(i), fields->Items(i));
  return added;
}

// --- With items ---

void TSQLWithClauseItem::PrepareCalcStatistics() {
  TastNodeBase::PrepareCalcStatistics();
  TmvMetadataFieldsList* fields = FieldsList();
  for (int i = 0; i < fields->Count(); ++i) ResetFieldStatistics(fields->Items(i));
}

int TSQLWithClauseItem::CalcStatistics() {
  return TastNodeBase::CalcStatistics() + PassResultStatistics(Query.get(), FieldsList());
}

// --- Selects ---

void TSQLSubQuerySelectExpression::PrepareCalcStatistics() {
  TastNodeBase::PrepareCalcStatistics();
  TmvMetadataFieldsList* fields = ResultFields();
  for (int i = 0; i < fields->Count(); ++i) ResetFieldStatistics(fields->Items(i));
}

int TSQLSubQuerySelectExpression::CalcStatistics() {
  int added = 0;
  TmvMetadataFieldsList* result = ResultFields();
  int next = 0;
  // Each item takes the fields that the fix-up made for it: one for an
  // expression, one per source field for an item of all columns.
  auto takeSource = [&](TSQLSelectItem* item, TSQLFromSource* source) {
    if (!item->StatsObjects()) return;
    const TmvMetadataFieldsList* fields = source->FieldsList();
    added += AddSourceObjects(source, item->StatsObjects());
    for (int k = 0; k < fields->Count(); ++k) {
      const TmvMetadataField* field = fields->Items(k);
      added += AddFieldStatistics(field, item->StatsObjects(), item->StatsColumns());
      if (next < result->Count()) {
        TmvMetadataField* target = result->Items(next);
        added += AddFieldStatistics(field, target);
        target->PrepareStatsCollections();
        added += AddSourceObjects(source, target->UsedDatabaseObjects());
      }
      ++next;
    }
  };
  if (SelectItems) {
    for (int i = 0; i < SelectItems->GetCount(); ++i) {
      TastNode* entry = SelectItems->GetItems(i);
      if (TmvCast<TSQLSelectItemExpression>(entry)) {
        if (next < result->Count()) added += AddNodeStatistics(entry, result->Items(next));
        ++next;
      } else if (auto* table = TmvCast<TSQLSelectItemAllTableColumns>(entry)) {
        if (FromClause && table->Object && table->Object->FromSource) takeSource(table, table->Object->FromSource);
      } else if (auto* all = TmvCast<TSQLSelectItemAllColumns>(entry); all && FromClause) {
        std::vector<TSQLFromSource*> sources;
        CollectSources(FromClause.get(), sources);
        for (TSQLFromSource* source : sources) takeSource(all, source);
      }
    }
  }
  return added + TastNodeBase::CalcStatistics();
}

}  // namespace mv
