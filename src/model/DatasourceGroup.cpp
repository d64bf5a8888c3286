// Datasources in general and groups of them: the node each keeps, the tree
// it generates, and the FROM order.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "tree/ExpressionBase.h"
#include "tree/FromClause.h"

namespace mv {

MV_DEFINE_CLASS(TmvDatasourceBase, TmvQueryBuilderControlOwner)
MV_DEFINE_CLASS(TmvDatasourceGroup, TmvDatasourceBase)

// --- TmvDatasourceBase ---

TmvDatasourceBase::TmvDatasourceBase(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* owner,
                                     TmvDatasourceGroup* group, TmvUnionSubQuery* unionSubQuery)
    : TmvQueryBuilderControlOwner(host, owner), group_(group), unionSubQuery_(unionSubQuery) {}

TmvDatasourceBase::~TmvDatasourceBase() {
  if (fromSource_) fromSource_->Datasource = nullptr;
}

void TmvDatasourceBase::LoadFromAST(TmvOwned<TSQLFromSource> node) {
  if (fromSource_) fromSource_->Datasource = nullptr;
  fromSource_ = std::move(node);
  if (!fromSource_) return;
  fromSource_->Datasource = this;
  pendingJoinExpression_ = fromSource_->JoinExpression.Release();
}

TmvOwned<TSQLFromSource> TmvDatasourceBase::TakeFromSource() {
  if (fromSource_) fromSource_->Datasource = nullptr;
  return std::move(fromSource_);
}

TmvOwned<TastNode> TmvDatasourceBase::CreateResultAST() {
  if (!fromSource_) return nullptr;
  auto source = fromSource_->CloneAs<TSQLFromSource>(SQLContext());
  if (TmvOwned<TSQLExpressionItem> on = CreateJoinExpression()) source->JoinExpression.Set(std::move(on));
  return source;
}

WideString TmvDatasourceBase::GetDataSourceName() { return GetResultSQL(); }

bool TmvDatasourceBase::ContainsDatasource(const TmvDatasourceBase* datasource, bool) const {
  return datasource == this;
}

// --- TmvDatasourceGroup ---

TmvDatasourceGroup* TmvDatasourceGroup::TopGroup() const {
  return Group() ? Group()->TopGroup() : const_cast<TmvDatasourceGroup*>(this);
}

void TmvDatasourceGroup::Destroying() {
  // A nested group's entries belong to the top group: they go with the group.
  // (A group freed by the group around it has no Group() any more: its owner
  // is the top group all the same.)
  TmvDatasourceGroup* top = Group() ? TopGroup() : TmvCast<TmvDatasourceGroup>(Parent());
  if (top && top != this) {
    while (!items_.empty()) {
      TmvDatasourceBase* item = items_.back();
      items_.pop_back();
      item->group_ = nullptr;
      top->DestroyChild(item);
    }
    if (Group()) Group()->ExtractInternal(this);
  }
  items_.clear();
  TmvDatasourceBase::Destroying();
}

TmvDatasourceBase* TmvDatasourceGroup::Items(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
  return items_[index];
}

int TmvDatasourceGroup::IndexOf(const TmvDatasourceBase* item) const {
  auto found = std::find(items_.begin(), items_.end(), item);
  return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
}

void TmvDatasourceGroup::AddInternal(TmvDatasourceBase* datasource) { InsertInternal(Count(), datasource); }

void TmvDatasourceGroup::InsertInternal(int index, TmvDatasourceBase* datasource) {
  if (datasource->group_ && datasource->group_ != this) datasource->group_->ExtractInternal(datasource);
  std::erase(items_, datasource);
  items_.insert(items_.begin() + std::clamp(index, 0, Count()), datasource);
  datasource->group_ = this;
  datasource->SetUpdateParent(this);
}

void TmvDatasourceGroup::ExtractInternal(TmvDatasourceBase* datasource) { std::erase(items_, datasource); }

void TmvDatasourceGroup::Add(TmvDatasourceBase* datasource) {
  TmvUpdateScope update(this);
  AddInternal(datasource);
  NotifySQLUpdated();
}

bool TmvDatasourceGroup::Remove(TmvDatasourceBase* datasource) {
  if (IndexOf(datasource) < 0) return false;
  return datasource->RequestDestroy();
}

bool TmvDatasourceGroup::Delete(int index) { return Remove(Items(index)); }

void TmvDatasourceGroup::Clear() {
  TmvUpdateScope update(this);
  TmvDatasourceGroup* top = TopGroup();
  while (!items_.empty()) top->DestroyChild(items_.back());
  NotifySQLUpdated();
}

TmvDatasourceGroup* TmvDatasourceGroup::CreateNestedGroup(TmvOwned<TSQLFromSource> node) {
  return CreateDatasource<TmvDatasourceGroup>(std::move(node));
}

void TmvDatasourceGroup::LoadFromAST(TmvOwned<TSQLFromSource> node) {
  TmvUpdateScope update(this);
  TmvDatasourceBase::LoadFromAST(std::move(node));
  auto* groupNode = TmvCast<TSQLFromGroup>(FromSource());
  if (!groupNode) return;
  while (groupNode->GetCount() > 0) {
    TmvOwned<TSQLFromSource> item = groupNode->Extract(0);
    TmvDatasourceBase* datasource;
    if (TmvCast<TSQLFromGroup>(item.get()))
      datasource = CreateNestedGroup(std::move(item));
    else if (TmvCast<TSQLFromObject>(item.get()))
      datasource = CreateDatasource<TmvDataSourceObject>(std::move(item));
    else if (TmvCast<TSQLFromQuery>(item.get()))
      datasource = CreateDatasource<TmvDatasourceQuery>(std::move(item));
    else
      datasource = CreateDatasource<TmvDatasource>(std::move(item));
    if (datasource->CanCreateControls()) datasource->CreateControl();
  }
  NotifySQLUpdated();
}

TmvOwned<TastNode> TmvDatasourceGroup::CreateResultAST() {
  TmvOwned<TastNode> tree = TmvDatasourceBase::CreateResultAST();
  // A SELECT loaded without FROM gets one for the entries added since.
  if (!tree && !FromSource() && !items_.empty()) {
    if (Group())
      tree = TastCreate<TSQLFromGroup>(SQLContext());
    else
      tree = TastCreate<TSQLFromClause>(SQLContext());
  }
  auto* group = TmvCast<TSQLFromGroup>(tree.get());
  if (!group) return tree;
  for (TmvDatasourceBase* item : items_) {
    TmvOwned<TastNode> entry = item->GetResultAST();
    if (auto* source = TmvCast<TSQLFromSource>(entry.get())) {
      entry.release();
      group->Add(TmvOwned<TSQLFromSource>(source));
    }
  }
  return tree;
}

void TmvDatasourceGroup::UpdateChecks() {
  for (TmvDatasourceBase* item : items_) item->UpdateChecks();
}

void TmvDatasourceGroup::GetDatasources(TmvDatasourceList& list) {
  for (TmvDatasourceBase* item : items_) item->GetDatasources(list);
}

bool TmvDatasourceGroup::ContainsDatasource(const TmvDatasourceBase* datasource, bool recursive) const {
  if (datasource == this) return true;
  for (TmvDatasourceBase* item : items_)
    if (item == datasource || (recursive && item->ContainsDatasource(datasource, true))) return true;
  return false;
}

bool TmvDatasourceGroup::ContainsDatasourceBefore(const TmvDatasourceBase* datasource,
                                                  const TmvDatasourceBase* bound) const {
  TmvDatasourceList order;
  const_cast<TmvDatasourceGroup*>(this)->GetDatasources(order);
  auto at = [&order](const TmvDatasourceBase* d) { return std::find(order.begin(), order.end(), d); };
  return at(datasource) != order.end() && at(datasource) < at(bound);
}

TmvDatasource* TmvDatasourceGroup::FindDatasourceByAST(const TSQLFromSource* node) const {
  TmvDatasourceList all;
  const_cast<TmvDatasourceGroup*>(this)->GetDatasources(all);
  for (TmvDatasource* datasource : all)
    if (datasource->FromSource() == node) return datasource;
  return nullptr;
}

TmvDatasourceList TmvDatasourceGroup::FindDatasourcesByMetadataObject(const TmvMetadataObject* object) const {
  TmvDatasourceList all, found;
  const_cast<TmvDatasourceGroup*>(this)->GetDatasources(all);
  for (TmvDatasource* datasource : all)
    if (object && datasource->GetMetadataObject() == object) found.push_back(datasource);
  return found;
}

TmvDatasource* TmvDatasourceGroup::FindDatasourceByMetadataObject(const TmvMetadataObject* object) const {
  TmvDatasourceList found = FindDatasourcesByMetadataObject(object);
  return found.empty() ? nullptr : found.front();
}

void TmvDatasourceGroup::NotifyReorderNeeded() {
  for (TmvDatasourceGroup* group = this; group; group = group->Group()) {
    group->reorderNeeded_ = true;
    group->NotifySQLUpdated();
  }
}

void TmvDatasourceGroup::DoSQLUpdated() {
  if (!reorderNeeded_) return;
  ReorderDatasourcesInternal();
  // What the reorder itself asked of this group is done with it.
  reorderNeeded_ = false;
}

}  // namespace mv
