#include "tree/NodeStatistics.h"

#include "frontend/SQLContext.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

// A plain name with the parts and link of `name`, never a bound one; null for null.
TmvOwned<TSQLQualifiedName> PlainCopy(TmvBaseSQLContext* context, const TSQLQualifiedName* name) {
  TmvOwned<TSQLQualifiedName> copy = TastCreate<TSQLQualifiedName>(context);
  if (name) copy->Assign(*name);
  return copy;
}

bool NamesEqual(TmvBaseSQLContext* context, const TSQLQualifiedName* a, const TSQLQualifiedName* b) {
  return context ? context->IsQualifiedNamesEqual(a, b) : a == b;
}

}  // namespace

// --- TmvStatsObject ---

TmvStatsObject::TmvStatsObject(TmvBaseSQLContext* context, TmvMetadataObject* metadataObject,
                               const TSQLQualifiedName* name)
    : context_(context), metadataObject_(metadataObject), name_(PlainCopy(context, name)) {}

TmvStatsObject::~TmvStatsObject() = default;

int TmvStatsObject::AliasCount() const { return aliases_ ? aliases_->Items.Count() : 0; }

const TastTokenIdentifier* TmvStatsObject::Alias(int index) const { return aliases_->Identifier(index); }

void TmvStatsObject::AddAlias(const TastTokenIdentifier* alias) {
  if (!alias || alias->IsEmpty()) return;
  if (aliases_ && aliases_->FindByIdToken(alias) >= 0) return;
  if (!aliases_) aliases_ = TastCreate<TastIdentifiersList>(context_);
  aliases_->Add(alias->CloneAs<TastToken>(context_));
}

void TmvStatsObject::AddAliases(const TastIdentifiersList* aliases) {
  if (!aliases) return;
  for (int i = 0; i < aliases->Items.Count(); ++i) AddAlias(aliases->Identifier(i));
}

// --- TmvStatsObjects ---

TmvStatsObject* TmvStatsObjects::AddObject(TmvMetadataObject* metadataObject, const TSQLQualifiedName* name) {
  items_.push_back(std::make_unique<TmvStatsObject>(context_, metadataObject, name));
  return items_.back().get();
}

TmvStatsObject* TmvStatsObjects::FindObject(const TmvMetadataObject* metadataObject,
                                            const TSQLQualifiedName* name) const {
  for (const auto& item : items_) {
    if (metadataObject) {
      if (item->MetadataObject() == metadataObject) return item.get();
    } else if (!item->MetadataObject() && NamesEqual(context_, item->Name(), name)) {
      return item.get();
    }
  }
  return nullptr;
}

int TmvStatsObjects::AddObjectIfNotExists(TmvMetadataObject* metadataObject, const TSQLQualifiedName* name,
                                          const TastTokenIdentifier* alias) {
  int added = 0;
  TmvStatsObject* entry = FindObject(metadataObject, name);
  if (!entry) {
    entry = AddObject(metadataObject, name);
    added = 1;
  }
  entry->AddAlias(alias);
  return added;
}

int TmvStatsObjects::AddObjects(const TmvStatsObjects* other) {
  if (!other || other == this) return 0;
  int added = 0;
  for (const auto& item : other->items_) {
    TmvStatsObject* entry = FindObject(item->MetadataObject(), item->Name());
    if (!entry) {
      entry = AddObject(item->MetadataObject(), item->Name());
      ++added;
    }
    entry->AddAliases(item->Aliases());
  }
  return added;
}

void TmvStatsObjects::Assign(const TmvStatsObjects* other) {
  if (other == this) return;
  Clear();
  if (!other) return;
  for (const auto& item : other->items_) AddObject(item->MetadataObject(), item->Name())->AddAliases(item->Aliases());
}

// --- TmvStatsColumn ---

TmvStatsColumn::TmvStatsColumn(TmvBaseSQLContext* context, TmvMetadataObject* metadataObject,
                               const TSQLQualifiedName* objectName, const TSQLQualifiedName* columnName,
                               TmvMetadataField* field)
    : context_(context),
      field_(field),
      metadataObject_(metadataObject),
      objectName_(PlainCopy(context, objectName)),
      columnName_(PlainCopy(context, columnName)) {}

TmvStatsColumn::~TmvStatsColumn() = default;

// --- TmvStatsColumns ---

TmvStatsColumn* TmvStatsColumns::AddColumn(TmvMetadataObject* metadataObject, const TSQLQualifiedName* objectName,
                                           const TSQLQualifiedName* columnName, TmvMetadataField* field) {
  items_.push_back(std::make_unique<TmvStatsColumn>(context_, metadataObject, objectName, columnName, field));
  return items_.back().get();
}

TmvStatsColumn* TmvStatsColumns::FindColumn(const TmvMetadataObject* metadataObject,
                                            const TSQLQualifiedName* objectName,
                                            const TSQLQualifiedName* columnName,
                                            const TmvMetadataField* field) const {
  for (const auto& item : items_) {
    bool match;
    if (metadataObject && field)
      match = item->MetadataObject() == metadataObject && item->Field() == field;
    else if (metadataObject)
      match = item->MetadataObject() == metadataObject && NamesEqual(context_, item->ColumnName(), columnName);
    else if (field)
      match = item->Field() == field && NamesEqual(context_, item->ObjectName(), objectName);
    else
      match = NamesEqual(context_, item->ObjectName(), objectName) &&
              NamesEqual(context_, item->ColumnName(), columnName);
    if (match) return item.get();
  }
  return nullptr;
}

int TmvStatsColumns::AddColumnIfNotExists(TmvMetadataObject* metadataObject, const TSQLQualifiedName* objectName,
                                          const TSQLQualifiedName* columnName, TmvMetadataField* field) {
  if (FindColumn(metadataObject, objectName, columnName, field)) return 0;
  AddColumn(metadataObject, objectName, columnName, field);
  return 1;
}

int TmvStatsColumns::AddColumns(const TmvStatsColumns* other) {
  if (!other || other == this) return 0;
  int added = 0;
  for (const auto& item : other->items_)
    added += AddColumnIfNotExists(item->MetadataObject(), item->ObjectName(), item->ColumnName(), item->Field());
  return added;
}

void TmvStatsColumns::Assign(const TmvStatsColumns* other) {
  if (other == this) return;
  Clear();
  if (!other) return;
  for (const auto& item : other->items_)
    AddColumn(item->MetadataObject(), item->ObjectName(), item->ColumnName(), item->Field());
}

// --- The node's part ---

struct TastNodeBase::TastNodeStatistics {
  explicit TastNodeStatistics(TmvBaseSQLContext* context) : Objects(context), Columns(context) {}
  TmvStatsObjects Objects;
  TmvStatsColumns Columns;
};

void TastNodeBase::TastNodeStatisticsDeleter::operator()(TastNodeStatistics* statistics) const { delete statistics; }

TmvStatsObjects* TastNodeBase::StatsObjects() const { return statistics_ ? &statistics_->Objects : nullptr; }

TmvStatsColumns* TastNodeBase::StatsColumns() const { return statistics_ ? &statistics_->Columns : nullptr; }

void TastNodeBase::PrepareCalcStatistics() {
  if (!statistics_) {
    statistics_.reset(new TastNodeStatistics(context_));
    return;
  }
  statistics_->Objects.Clear();
  statistics_->Columns.Clear();
}

void TastNodeBase::PrepareCalcStatisticsRecursive() {
  PrepareCalcStatistics();
  TraverseASTTreeDepthFirst([](TastNodeBase* node) { node->PrepareCalcStatistics(); });
}

int TastNodeBase::CalcStatistics() {
  if (!statistics_) statistics_.reset(new TastNodeStatistics(context_));
  TastNodeBaseList children;
  GetMyChildren(children);
  int added = 0;
  for (TastNodeBase* child : children) {
    added += statistics_->Objects.AddObjects(child->StatsObjects());
    added += statistics_->Columns.AddColumns(child->StatsColumns());
  }
  return added;
}

int TastNodeBase::CalcStatisticsRecursive() {
  // Children before their parent, in a loop: each node is entered once to
  // list its children and left once, when they are done.
  struct Pending {
    TastNodeBase* node;
    bool expanded;
  };
  std::vector<Pending> stack{{this, false}};
  TastNodeBaseList children;
  int added = 0;
  while (!stack.empty()) {
    Pending& top = stack.back();
    if (top.expanded) {
      added += top.node->CalcStatistics();
      stack.pop_back();
      continue;
    }
    top.expanded = true;
    children.clear();
    top.node->GetStatisticsChildren(children);
    for (auto it = children.rbegin(); it != children.rend(); ++it) stack.push_back({*it, false});
  }
  return added;
}

void TastNodeBase::AssignStatistics(const TastNodeBase& source) {
  if (!source.statistics_) return;
  if (!statistics_) statistics_.reset(new TastNodeStatistics(context_));
  statistics_->Objects.Assign(&source.statistics_->Objects);
  statistics_->Columns.Assign(&source.statistics_->Columns);
}

}  // namespace mv
