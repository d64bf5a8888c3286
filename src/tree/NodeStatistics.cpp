#include "tree/NodeStatistics.h"

#include <algorithm>

#include "frontend/SQLContext.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

// A plain name with the parts and link of `name`, never a bound one, and
// without the statistics of the tree's name; empty for null.
TmvOwned<TSQLQualifiedName> PlainCopy(TmvBaseSQLContext* context, const TSQLQualifiedName* name) {
  TmvOwned<TSQLQualifiedName> copy = TastCreate<TSQLQualifiedName>(context);
  if (name) copy->AssignParts(*name);
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

namespace {

// Whether `from` has an alias that `to` lacks.
bool HasNewAlias(const TmvStatsObject* to, const TmvStatsObject* from) {
  for (int i = 0; i < from->AliasCount(); ++i)
    if (!to->Aliases() || to->Aliases()->FindByIdToken(from->Alias(i)) < 0) return true;
  return false;
}

}  // namespace

const TmvStatsObject* TmvStatsObjects::AddObject(TmvMetadataObject* metadataObject, const TSQLQualifiedName* name) {
  owned_.push_back(std::make_unique<TmvStatsObject>(context_, metadataObject, name));
  items_.push_back({owned_.back().get(), true});
  return items_.back().Entry;
}

TmvStatsObject* TmvStatsObjects::AddCopy(const TmvStatsObject* entry) {
  owned_.push_back(std::make_unique<TmvStatsObject>(context_, entry->MetadataObject(), entry->Name()));
  owned_.back()->AddAliases(entry->Aliases());
  return owned_.back().get();
}

TmvStatsObject* TmvStatsObjects::OwnEntry(size_t index) {
  Item& item = items_[index];
  if (!item.Owned) {
    item.Entry = AddCopy(item.Entry);
    item.Owned = true;
  }
  return item.Entry;
}

int TmvStatsObjects::IndexOf(const TmvStatsObject* entry) const {
  for (size_t i = 0; i < items_.size(); ++i)
    if (items_[i].Entry == entry) return int(i);
  return -1;
}

const TmvStatsObject* TmvStatsObjects::FindObject(const TmvMetadataObject* metadataObject,
                                                  const TSQLQualifiedName* name) const {
  for (const Item& item : items_) {
    const TmvStatsObject* entry = item.Entry;
    if (metadataObject) {
      if (entry->MetadataObject() == metadataObject) return entry;
    } else if (!entry->MetadataObject() && NamesEqual(context_, entry->Name(), name)) {
      return entry;
    }
  }
  return nullptr;
}

int TmvStatsObjects::AddObjectIfNotExists(TmvMetadataObject* metadataObject, const TSQLQualifiedName* name,
                                          const TastTokenIdentifier* alias) {
  const TmvStatsObject* found = FindObject(metadataObject, name);
  if (!found) {
    AddObject(metadataObject, name);
    OwnEntry(items_.size() - 1)->AddAlias(alias);
    return 1;
  }
  if (alias && !alias->IsEmpty() && (!found->Aliases() || found->Aliases()->FindByIdToken(alias) < 0))
    OwnEntry(size_t(IndexOf(found)))->AddAlias(alias);
  return 0;
}

int TmvStatsObjects::AddObjects(const TmvStatsObjects* other, bool copy) {
  if (!other || other == this) return 0;
  int added = 0;
  for (const Item& from : other->items_) {
    const TmvStatsObject* entry = from.Entry;
    int index = IndexOf(entry);
    if (index < 0) {
      if (const TmvStatsObject* found = FindObject(entry->MetadataObject(), entry->Name())) index = IndexOf(found);
    }
    if (index < 0) {
      items_.push_back(copy ? Item{AddCopy(entry), true} : Item{from.Entry, false});
      ++added;
    } else if (items_[size_t(index)].Entry != entry && HasNewAlias(items_[size_t(index)].Entry, entry)) {
      OwnEntry(size_t(index))->AddAliases(entry->Aliases());
    }
  }
  return added;
}

void TmvStatsObjects::Assign(const TmvStatsObjects* other) {
  if (other == this) return;
  Clear();
  if (!other) return;
  for (const Item& item : other->items_) items_.push_back({AddCopy(item.Entry), true});
}

void TmvStatsObjects::Clear() {
  items_.clear();
  owned_.clear();
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

const TmvStatsColumn* TmvStatsColumns::AddColumn(TmvMetadataObject* metadataObject,
                                                 const TSQLQualifiedName* objectName,
                                                 const TSQLQualifiedName* columnName, TmvMetadataField* field) {
  owned_.push_back(std::make_unique<TmvStatsColumn>(context_, metadataObject, objectName, columnName, field));
  items_.push_back(owned_.back().get());
  return items_.back();
}

const TmvStatsColumn* TmvStatsColumns::FindColumn(const TmvMetadataObject* metadataObject,
                                                  const TSQLQualifiedName* objectName,
                                                  const TSQLQualifiedName* columnName,
                                                  const TmvMetadataField* field) const {
  for (const TmvStatsColumn* item : items_) {
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
    if (match) return item;
  }
  return nullptr;
}

int TmvStatsColumns::AddColumnIfNotExists(TmvMetadataObject* metadataObject, const TSQLQualifiedName* objectName,
                                          const TSQLQualifiedName* columnName, TmvMetadataField* field) {
  if (FindColumn(metadataObject, objectName, columnName, field)) return 0;
  AddColumn(metadataObject, objectName, columnName, field);
  return 1;
}

int TmvStatsColumns::AddColumns(const TmvStatsColumns* other, bool copy) {
  if (!other || other == this) return 0;
  int added = 0;
  for (TmvStatsColumn* entry : other->items_) {
    if (std::find(items_.begin(), items_.end(), entry) != items_.end()) continue;
    if (FindColumn(entry->MetadataObject(), entry->ObjectName(), entry->ColumnName(), entry->Field())) continue;
    if (copy)
      AddColumn(entry->MetadataObject(), entry->ObjectName(), entry->ColumnName(), entry->Field());
    else
      items_.push_back(entry);
    ++added;
  }
  return added;
}

void TmvStatsColumns::Assign(const TmvStatsColumns* other) {
  if (other == this) return;
  Clear();
  if (!other) return;
  for (const TmvStatsColumn* item : other->items_)
    AddColumn(item->MetadataObject(), item->ObjectName(), item->ColumnName(), item->Field());
}

void TmvStatsColumns::Clear() {
  items_.clear();
  owned_.clear();
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
  // Own first, then the children, in a loop: this runs on every node at
  // every gathering.
  std::vector<TastNodeBase*> stack{this};
  TastNodeBaseList children;
  while (!stack.empty()) {
    TastNodeBase* node = stack.back();
    stack.pop_back();
    node->PrepareCalcStatistics();
    children.clear();
    node->GetMyChildren(children);
    for (auto it = children.rbegin(); it != children.rend(); ++it) stack.push_back(*it);
  }
}

int TastNodeBase::CalcStatistics() {
  if (!statistics_) statistics_.reset(new TastNodeStatistics(context_));
  // One buffer per thread: the walk calls this once per node.
  static thread_local TastNodeBaseList children;
  children.clear();
  GetMyChildren(children);
  int added = 0;
  for (TastNodeBase* child : children) {
    const TastNodeStatistics* from = child->statistics_.get();
    if (!from) continue;
    if (from->Objects.GetCount()) added += statistics_->Objects.AddObjects(&from->Objects);
    if (from->Columns.GetCount()) added += statistics_->Columns.AddColumns(&from->Columns);
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
  // Most nodes read nothing: a copy of empty lists needs no lists.
  const bool empty = !source.statistics_->Objects.GetCount() && !source.statistics_->Columns.GetCount();
  if (!statistics_ && empty) return;
  if (!statistics_) statistics_.reset(new TastNodeStatistics(context_));
  statistics_->Objects.Assign(&source.statistics_->Objects);
  statistics_->Columns.Assign(&source.statistics_->Columns);
}

}  // namespace mv
