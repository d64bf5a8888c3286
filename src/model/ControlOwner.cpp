#include "model/ControlOwner.h"

#include <algorithm>
#include <utility>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/QueryModelHost.h"
#include "model/SubSelectProxy.h"
#include "tree/AstNode.h"

namespace mv {

MV_DEFINE_CLASS(TmvQueryBuilderControlOwner, TmvObject)

TmvUpdateScope::~TmvUpdateScope() noexcept(false) {
  if (!owner_) return;
  if (std::uncaught_exceptions() == 0) {
    owner_->EndUpdate();
    return;
  }
  try {
    owner_->EndUpdate();
  } catch (...) {
    // The exception that ends the scope is the one to report.
  }
}

void TmvDestroyWatch::Watch(TmvQueryBuilderControlOwner* object) {
  if (object_) object_->OnDestroying().RemoveHandler(TmvHandlerId(this, 0));
  object_ = object;
  if (object_) object_->OnDestroying().AddHandler(TmvHandlerId(this, 0), [this](TmvObject*) { object_ = nullptr; });
}

TmvQueryBuilderControlOwner::TmvQueryBuilderControlOwner(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* parent)
    : host_(host), context_(host ? host->SQLContext() : nullptr), parent_(parent) {}

TmvQueryBuilderControlOwner::~TmvQueryBuilderControlOwner() = default;

void TmvQueryBuilderControlOwner::BeforeDestruction() {
  destroying_ = true;
  onDestroying_.Fire(this);
  DestroyControl();
  Destroying();
  while (!children_.empty()) {
    // Last first; a child's destruction may free siblings (cascades), so
    // the list is read again each time.
    TmvOwned<TmvQueryBuilderControlOwner> child = std::move(children_.back());
    children_.pop_back();
    child.reset();
  }
  SetUpdateParent(nullptr);
  for (auto* child : std::vector<TmvQueryBuilderControlOwner*>(updateChildren_)) child->SetUpdateParent(nullptr);
  updateChildren_.clear();
  cachedResultAST_.reset();
  subQueryProxies_.clear();
  TmvObject::BeforeDestruction();
}

// --- Ownership ---

TmvQueryBuilderControlOwner* TmvQueryBuilderControlOwner::GetChild(int index) const {
  if (index < 0 || index >= GetChildCount()) RaiseListIndexError(index, GetChildCount());
  return children_[index].get();
}

void TmvQueryBuilderControlOwner::RegisterChild(TmvOwned<TmvQueryBuilderControlOwner> child) {
  child->parent_ = this;
  children_.push_back(std::move(child));
}

TmvOwned<TmvQueryBuilderControlOwner> TmvQueryBuilderControlOwner::UnregisterChild(
    TmvQueryBuilderControlOwner* child) {
  auto found = std::find_if(children_.begin(), children_.end(), [child](auto& c) { return c.get() == child; });
  if (found == children_.end()) return nullptr;
  TmvOwned<TmvQueryBuilderControlOwner> owned = std::move(*found);
  children_.erase(found);
  owned->parent_ = nullptr;
  return owned;
}

void TmvQueryBuilderControlOwner::DestroyChild(TmvQueryBuilderControlOwner* child) {
  TmvOwned<TmvQueryBuilderControlOwner> owned = UnregisterChild(child);
  if (owned) owned->parent_ = this;  // the child still sees its owner while it goes
}

bool TmvQueryBuilderControlOwner::RequestDestroy() {
  if (destroying_) return true;
  if (!CanDestroy()) return false;
  if (parent_) parent_->DestroyChild(this);
  return true;
}

// --- Update protocol ---

void TmvQueryBuilderControlOwner::BeginUpdate() {
  if (++updateCount_ == 1) BeginUpdateParent();
}

void TmvQueryBuilderControlOwner::EndUpdate() {
  if (updateCount_ <= 0) throw EmvQueryBuilderError(u"EndUpdate without BeginUpdate");
  if (--updateCount_ == 0) EndUpdateParent();
}

void TmvQueryBuilderControlOwner::BeginUpdateParent() {
  ++parentUpdateCount_;
  if (updateParent_)
    updateParent_->BeginUpdateParent();
  else
    BeginUpdateInternal();
}

void TmvQueryBuilderControlOwner::EndUpdateParent() {
  --parentUpdateCount_;
  if (updateParent_)
    updateParent_->EndUpdateParent();
  else
    EndUpdateInternal();
}

const TmvQueryBuilderControlOwner* TmvQueryBuilderControlOwner::Top() const {
  const TmvQueryBuilderControlOwner* top = this;
  while (top->updateParent_) top = top->updateParent_;
  return top;
}

TmvQueryBuilderControlOwner* TmvQueryBuilderControlOwner::Top() {
  return const_cast<TmvQueryBuilderControlOwner*>(std::as_const(*this).Top());
}

void TmvQueryBuilderControlOwner::BeginUpdateInternal() {
  ++updateDepth_;
  ++internalUpdateCount_;
}

void TmvQueryBuilderControlOwner::EndUpdateInternal() {
  --internalUpdateCount_;
  if (updateDepth_ == 1) ProcessPendingChanges();
  --updateDepth_;
}

void TmvQueryBuilderControlOwner::ProcessPendingChanges() {
  processing_ = true;
  bool all = false;
  do {
    newsWhileProcessing_ = false;
    ProcessPendingSubtree(all, ++pass_);
    // News that came while acting may stand below an object acted on
    // already: the next pass looks at every object.
    all = true;
  } while (newsWhileProcessing_ && !destroying_);
  processing_ = false;
}

void TmvQueryBuilderControlOwner::ProcessPendingSubtree(bool all, int pass) {
  // The news of a change climbs to the top, so an object without news has
  // none below it, unless news came while acting (then `all`).
  if (!all && !sqlUpdatedPending_ && updateParent_) return;
  // Children first, last to first; a child freed meanwhile is skipped.
  std::vector<TmvQueryBuilderControlOwner*> children(updateChildren_);
  for (auto it = children.rbegin(); it != children.rend(); ++it)
    if (std::find(updateChildren_.begin(), updateChildren_.end(), *it) != updateChildren_.end())
      (*it)->ProcessPendingSubtree(all, pass);
  // A change made while acting comes round again here.
  if (sqlUpdatedPending_) processedPass_ = pass;
  while (sqlUpdatedPending_ && !destroying_) {
    DoSQLUpdated();
    sqlUpdatedPending_ = false;
    DestroyCachedResultASTs();
    DoAfterUpdated();
    onUpdated_.Fire(this);
  }
}

void TmvQueryBuilderControlOwner::NotifySQLUpdated() {
  const bool opened = !GetIsUpdating();
  if (opened) BeginUpdate();
  sqlUpdatedPending_ = true;
  DestroyCachedResultASTs();
  // News for an object acted on already in this pass needs another pass.
  if (TmvQueryBuilderControlOwner* top = Top(); top->processing_ && processedPass_ == top->pass_)
    top->newsWhileProcessing_ = true;
  if (updateParent_) updateParent_->NotifySQLUpdated();
  if (opened) EndUpdate();
}

void TmvQueryBuilderControlOwner::NotifySQLUpdatedRecursive() {
  const bool opened = !GetIsUpdating();
  if (opened) BeginUpdate();
  NotifySQLUpdated();
  for (size_t i = 0; i < updateChildren_.size(); ++i) updateChildren_[i]->NotifySQLUpdatedRecursive();
  if (opened) EndUpdate();
}

void TmvQueryBuilderControlOwner::SetUpdateParent(TmvQueryBuilderControlOwner* parent) {
  TmvQueryBuilderControlOwner* old = updateParent_;
  if (parent == old) return;
  const bool wasUpdating = GetIsUpdating();
  if (old) old->updateChildren_.erase(std::find(old->updateChildren_.begin(), old->updateChildren_.end(), this));
  updateParent_ = nullptr;
  // The open updates that passed this object now pass the new parent.
  for (int i = 0; i < parentUpdateCount_; ++i) {
    if (parent) parent->BeginUpdateParent();
    if (old) old->EndUpdateParent();
  }
  // As a top of its own, the object counts the updates opened inside its tree.
  internalUpdateCount_ = updateDepth_ = parent ? 0 : parentUpdateCount_;
  updateParent_ = parent;
  if (parent) parent->updateChildren_.push_back(this);
  // News of this subtree not acted on yet goes on to the new tree (and is
  // acted on now if that tree has no update open); a subtree that left open
  // updates to stand alone acts on its news now.
  if (sqlUpdatedPending_ && parent) {
    parent->NotifySQLUpdated();
  } else if (!parent && wasUpdating && !GetIsUpdating()) {
    BeginUpdateInternal();
    EndUpdateInternal();
  }
}

// --- Result tree ---

TastNode* TmvQueryBuilderControlOwner::GetResultASTInternal() {
  if (!cachedResultAST_) cachedResultAST_ = CreateResultAST();
  return cachedResultAST_.get();
}

TmvOwned<TastNode> TmvQueryBuilderControlOwner::GetResultAST() {
  TastNode* tree = GetResultASTInternal();
  return tree ? tree->CloneAs<TastNode>(context_) : nullptr;
}

TmvOwned<TastNode> TmvQueryBuilderControlOwner::MakeResultAST() {
  if (cachedResultAST_) return cachedResultAST_->CloneAs<TastNode>(context_);
  return CreateResultAST();
}

WideString TmvQueryBuilderControlOwner::GetResultSQL() {
  if (!context_) return {};
  return GetResultSQL(context_->SQLBuilderExpression());
}

WideString TmvQueryBuilderControlOwner::GetResultSQL(TSQLBuilder& builder) {
  TastNode* tree = GetResultASTInternal();
  return tree ? tree->SimpleSQL(builder) : WideString();
}

void TmvQueryBuilderControlOwner::DestroyCachedResultASTs() { cachedResultAST_.reset(); }

// --- Proxies ---

void TmvQueryBuilderControlOwner::RegisterSubQueryProxy(TmvSubSelectStatementProxy* proxy) {
  subQueryProxies_.push_back(proxy);
}

void TmvQueryBuilderControlOwner::UnregisterSubQueryProxy(TmvSubSelectStatementProxy* proxy) {
  std::erase(subQueryProxies_, proxy);
}

void TmvQueryBuilderControlOwner::CollectSubqueryProxiesByRootNode(std::vector<TmvSubSelectStatementProxy*>& list,
                                                                   const TastNode* node) const {
  for (TmvSubSelectStatementProxy* proxy : subQueryProxies_)
    if (proxy->RootNode() == node) list.push_back(proxy);
}

int TmvQueryBuilderControlOwner::GetSubqueriesCountByRootNode(const TastNode* node) const {
  std::vector<TmvSubSelectStatementProxy*> list;
  CollectSubqueryProxiesByRootNode(list, node);
  return static_cast<int>(list.size());
}

void TmvQueryBuilderControlOwner::LoadSubQueries(TastNode* node) {
  if (node) node->MoveSubQueryInProxyRecursive(this, TmvSubSelectStatementProxy::ProxyClass());
}

// --- Controls ---

ImvControlFactory* TmvQueryBuilderControlOwner::ControlFactory() const {
  return host_ ? host_->ControlFactory() : nullptr;
}

bool TmvQueryBuilderControlOwner::CanCreateControls() const { return parent_ && parent_->HasControls(); }

ImvControl* TmvQueryBuilderControlOwner::GetControls(int index) const {
  if (!hasControls_ || index < 0 || index >= static_cast<int>(controls_.size())) return nullptr;
  return controls_[index];
}

ImvControl* TmvQueryBuilderControlOwner::CreateControlInternal(int index) {
  ImvControlFactory* factory = ControlFactory();
  return factory ? factory->CreateControl(this, index) : nullptr;
}

void TmvQueryBuilderControlOwner::CreateControl() {
  ImvControlFactory* factory = ControlFactory();
  if (hasControls_ || !factory) return;
  controls_.assign(GetControlsCount(), nullptr);
  for (int i = 0; i < GetControlsCount(); ++i) {
    ImvControl* control = CreateControlInternal(i);
    controls_[i] = control;
    if (!control) continue;
    if (auto* saver = dynamic_cast<ImvStateSaver*>(control)) saver->RestoreControlStateFromOwner(this);
    control->UpdateControlVisualParams(this);
    factory->AfterCreateControl(this, control);
    if (MakeVisible(i)) factory->ShowControl(control, true);
  }
  hasControls_ = true;
  for (size_t i = 0; i < children_.size(); ++i)
    if (children_[i]->CanCreateControls()) children_[i]->CreateControl();
}

void TmvQueryBuilderControlOwner::DestroyControl() {
  if (!hasControls_) return;
  for (auto& child : children_) child->DestroyControl();
  hasControls_ = false;
  ImvControlFactory* factory = ControlFactory();
  for (ImvControl*& control : controls_) {
    if (!control) continue;
    if (factory) factory->BeforeDestroyControl(this, control);
    if (auto* saver = dynamic_cast<ImvStateSaver*>(control); saver && !destroying_)
      saver->SaveControlStateToOwner(this);
    if (factory) factory->DestroyControl(control);
    control = nullptr;
  }
  controls_.clear();
}

void TmvQueryBuilderControlOwner::DoUpdateContolParams() {
  for (ImvControl* control : controls_)
    if (control) control->UpdateControlVisualParams(this);
  for (auto& child : children_) child->DoUpdateContolParams();
}

// --- Fix-up context ---

void TmvQueryBuilderControlOwner::GatherPrepareAndFixupContext(std::vector<TSQLWithClauseItem*>& cteList,
                                                               std::vector<TSQLFromSource*>& fromSources,
                                                               bool includeOwn) {
  if (parent_) parent_->GatherPrepareAndFixupContext(cteList, fromSources, includeOwn);
}

TmvDatasourceList TmvQueryBuilderControlOwner::GetVisibleDatasources() {
  TmvDatasourceList list;
  CollectVisibleDatasources(list);
  return list;
}

std::vector<TSQLWithClauseItem*> TmvQueryBuilderControlOwner::GetVisibleCte() {
  std::vector<TSQLWithClauseItem*> list;
  CollectVisibleCte(list);
  return list;
}

void TmvQueryBuilderControlOwner::CollectVisibleDatasources(TmvDatasourceList& list) {
  if (parent_) parent_->CollectVisibleDatasources(list);
}

void TmvQueryBuilderControlOwner::CollectVisibleCte(std::vector<TSQLWithClauseItem*>& list) {
  if (parent_) parent_->CollectVisibleCte(list);
}

// --- Datasource news ---

bool TmvQueryBuilderControlOwner::NotifyDatasourceDestroying(TmvDatasource* datasource) {
  TmvUpdateScope update(this);
  if (NotifyDatasourceDestroyingInternal(datasource)) return true;
  for (int i = GetChildCount() - 1; i >= 0; --i) {
    if (i >= GetChildCount()) continue;
    TmvQueryBuilderControlOwner* child = children_[i].get();
    if (child == datasource) continue;
    if (child->NotifyDatasourceDestroying(datasource)) {
      DestroyChild(child);
      NotifySQLUpdated();
    }
  }
  return false;
}

void TmvQueryBuilderControlOwner::NotifyDatasourceReplaced(TmvDatasource* oldDatasource,
                                                           TmvDatasource* newDatasource) {
  if (this == oldDatasource) return;
  NotifyDatasourceReplacedInternal(oldDatasource, newDatasource);
  for (int i = GetChildCount() - 1; i >= 0; --i) children_[i]->NotifyDatasourceReplaced(oldDatasource, newDatasource);
}

void TmvQueryBuilderControlOwner::DoAfterUpdated() {
  if (parent_ && !parent_->IsDestroying()) parent_->NotifySQLUpdated();
}

}  // namespace mv
