// The link itself: its state, its ends and sides, and what happens to it
// when a datasource goes or is replaced.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/QueryTree.h"
#include "tree/ExpressionBase.h"
#include "tree/QualifiedNames.h"

namespace mv {

MV_DEFINE_CLASS(TmvLink, TmvQueryBuilderControlOwner)

TmvLink::TmvLink(TmvQueryModelHost* host, TmvDatasourceGroup* group)
    : TmvQueryBuilderControlOwner(host, group), datasourceGroup_(group) {}

TmvLink::~TmvLink() = default;

TmvUnionSubQuery* TmvLink::UnionSubQuery() const {
  return datasourceGroup_ ? datasourceGroup_->UnionSubQuery() : nullptr;
}

void TmvLink::Destroying() {
  UnhookEnd(leftDatasource_);
  UnhookEnd(rightDatasource_);
  leftDatasource_ = rightDatasource_ = nullptr;
  if (datasourceGroup_ && !datasourceGroup_->IsDestroying()) {
    if (joinOwner_ && !joinOwner_->IsDestroying()) joinOwner_->NotifySQLUpdated();
    datasourceGroup_->UnregisterLink(this);
    datasourceGroup_->NotifySQLUpdated();
  }
  TmvQueryBuilderControlOwner::Destroying();
}

void TmvLink::HookEnd(TmvDatasource* datasource) {
  if (datasource && datasource != leftDatasource_ && datasource != rightDatasource_)
    datasource->OnDestroying().AddHandler(this, &TmvLink::EndDestroying);
}

void TmvLink::UnhookEnd(TmvDatasource* datasource) {
  if (!datasource) return;
  // Both ends may be the same datasource: unhook once, when the last goes.
  const int uses = (datasource == leftDatasource_) + (datasource == rightDatasource_);
  if (uses <= 1) datasource->OnDestroying().RemoveHandler(this, &TmvLink::EndDestroying);
}

void TmvLink::EndDestroying(TmvObject* sender) {
  if (sender == leftDatasource_) leftDatasource_ = nullptr;
  if (sender == rightDatasource_) rightDatasource_ = nullptr;
}

bool TmvLink::NotifyDatasourceDestroyingInternal(TmvDatasource*) { return false; }

void TmvLink::NotifyDatasourceReplacedInternal(TmvDatasource*, TmvDatasource*) {}

// --- TmvDatasourceGroup's links ---

TmvLink* TmvDatasourceGroup::Links(int index) const {
  if (index < 0 || index >= LinksCount()) RaiseListIndexError(index, LinksCount());
  return links_[index];
}

void TmvDatasourceGroup::RegisterLink(TmvLink* link) {
  if (std::find(links_.begin(), links_.end(), link) == links_.end()) links_.push_back(link);
}

void TmvDatasourceGroup::UnregisterLink(TmvLink* link) { std::erase(links_, link); }

TmvLink* TmvDatasourceGroup::CreateLink() {
  auto owned = TmvCreate<TmvLink>(Host(), this);
  TmvLink* link = owned.get();
  RegisterChild(std::move(owned));
  RegisterLink(link);
  link->SetUpdateParent(this);
  return link;
}

void TmvDatasourceGroup::GetLinksRecursive(std::vector<TmvLink*>& list) const {
  list.insert(list.end(), links_.begin(), links_.end());
  for (TmvDatasourceBase* item : items_)
    if (auto* group = TmvCast<TmvDatasourceGroup>(item)) group->GetLinksRecursive(list);
}

void TmvDatasourceBase::LoadJoins() {}

void TmvDatasourceGroup::LoadJoins() {
  for (TmvDatasourceBase* item : std::vector<TmvDatasourceBase*>(items_)) item->LoadJoins();
}

}  // namespace mv
