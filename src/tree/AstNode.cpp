#include "tree/AstNode.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <unordered_set>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/NodeLists.h"
#include "tree/FromClause.h"
#include "tree/NestingGuard.h"
#include "tree/SelectStatement.h"

namespace mv {

// --- Freeing ---

namespace {

// The nodes that a free under way on this thread has still to free; null
// when none is under way.
thread_local std::deque<TastNodeBase*>* pendingFrees = nullptr;

}  // namespace

void TastFreeNode(TastNodeBase* node) {
  if (!node) return;
  if (pendingFrees) {
    pendingFrees->push_back(node);
    return;
  }
  // The outermost free: each destructor queues the children it frees, and
  // they are freed here one after the other.
  std::deque<TastNodeBase*> pending{node};
  pendingFrees = &pending;
  struct Restore {
    ~Restore() { pendingFrees = nullptr; }
  } restore;
  while (!pending.empty()) {
    TastNodeBase* next = pending.front();
    pending.pop_front();
    TmvDeleter()(next);
  }
}

// --- Fields and lists ---

void TastFieldBase::Reset(TastNodeBase* node) {
  if (node == node_) return;
  TastNodeBase* old = node_;
  node_ = node;
  TastFreeNode(old);
}

namespace {

void FreeItems(std::vector<TmvOwned<TastNode>>& items) {
  for (TmvOwned<TastNode>& item : items) TastFreeNode(item.release());
  items.clear();
}

}  // namespace

TastNodeList::TastNodeList() = default;
TastNodeList::~TastNodeList() { FreeItems(items_); }

void TastNodeList::Add(TmvOwned<TastNode> node) { items_.push_back(std::move(node)); }

void TastNodeList::Insert(int index, TmvOwned<TastNode> node) {
  items_.insert(items_.begin() + index, std::move(node));
}

void TastNodeList::Set(int index, TmvOwned<TastNode> node) {
  // The old item goes only after the new one is in place.
  TmvOwned<TastNode> old = std::move(items_[index]);
  items_[index] = std::move(node);
}

TmvOwned<TastNode> TastNodeList::Exchange(int index, TmvOwned<TastNode> node) {
  std::swap(items_[index], node);
  return node;
}

void TastNodeList::InsertAll(int index, TastNodeList& source) {
  if (&source == this) return;
  items_.insert(items_.begin() + index, std::make_move_iterator(source.items_.begin()),
                std::make_move_iterator(source.items_.end()));
  source.items_.clear();
}

void TastNodeList::Delete(int index) { Extract(index); }

int TastNodeList::Remove(const TastNode* node) {
  int index = IndexOf(node);
  if (index >= 0) Delete(index);
  return index;
}

void TastNodeList::Clear() {
  std::vector<TmvOwned<TastNode>> old;
  old.swap(items_);
  FreeItems(old);
}

int TastNodeList::IndexOf(const TastNode* node) const {
  for (size_t i = 0; i < items_.size(); ++i)
    if (items_[i].get() == node) return int(i);
  return -1;
}

TmvOwned<TastNode> TastNodeList::Extract(const TastNode* node) {
  int index = IndexOf(node);
  return index >= 0 ? Extract(index) : TmvOwned<TastNode>();
}

TmvOwned<TastNode> TastNodeList::Extract(int index) {
  TmvOwned<TastNode> node = std::move(items_[index]);
  items_.erase(items_.begin() + index);
  return node;
}

// --- Clone sessions ---

namespace {

// A Clone under way on this thread. The Assign of each copy that the clone
// makes (through the default CloneInternal) does not clone the source's
// children at once: it queues them here, and the clone fills them in one
// after the other, so that a chain of any length is copied in a loop.
// Fix-ups that need a copy's children complete wait for the end.
class TastCloneSession {
 public:
  TastCloneSession() : outer_(current_) { current_ = this; }
  ~TastCloneSession() { current_ = outer_; }
  TastCloneSession(const TastCloneSession&) = delete;
  TastCloneSession& operator=(const TastCloneSession&) = delete;

  static TastCloneSession* Current() { return current_; }

  // The next Assign of `copy` queues its children.
  void QueueChildrenOf(TastNodeBase* copy) { queueFor_ = copy; }
  // Whether the Assign of `node` is to queue its children (asked once, by that Assign).
  bool TakeQueueFor(const TastNodeBase* node) {
    if (queueFor_ != node) return false;
    queueFor_ = nullptr;
    filling_ = node;
    return true;
  }
  // Whether `node` is the copy whose children the last queueing Assign left to this clone.
  bool IsFilling(const TastNodeBase* node) const { return node && filling_ == node; }

  void Queue(TastFieldBase& field, const TastNodeBase* source, TmvBaseSQLContext* context) {
    pending_.push_back({&field, nullptr, source, context});
  }
  void Queue(TastNodeList& list, const TastNodeBase* source, TmvBaseSQLContext* context) {
    pending_.push_back({nullptr, &list, source, context});
  }
  void AddFixUp(std::function<void()> fixUp) { fixUps_.push_back(std::move(fixUp)); }

  // Clones what is queued (which queues more), then runs the fix-ups, those
  // of the deepest copies first.
  void Finish() {
    while (!pending_.empty()) {
      const Pending next = pending_.front();
      pending_.pop_front();
      filling_ = nullptr;
      TmvOwned<TastNodeBase> copy = next.source->CloneInternal(next.context);
      if (!copy) continue;
      if (next.field)
        next.field->Reset(copy.release());
      else
        next.list->Add(TmvOwned<TastNode>(static_cast<TastNode*>(copy.release())));
    }
    filling_ = nullptr;
    while (!fixUps_.empty()) {
      std::function<void()> fixUp = std::move(fixUps_.back());
      fixUps_.pop_back();
      fixUp();
    }
  }

 private:
  // A child field or list of a copy, and the source node whose clone goes there.
  struct Pending {
    TastFieldBase* field;
    TastNodeList* list;
    const TastNodeBase* source;
    TmvBaseSQLContext* context;
  };

  static thread_local TastCloneSession* current_;
  TastCloneSession* outer_;
  const TastNodeBase* queueFor_ = nullptr;
  const TastNodeBase* filling_ = nullptr;
  std::deque<Pending> pending_;
  std::vector<std::function<void()>> fixUps_;
};

thread_local TastCloneSession* TastCloneSession::current_ = nullptr;

// Walks depth first from the nodes in `pending` (the first to visit last):
// `visit` is called for each node, parents before their children and
// children in field order, without recursion. The children of a node are
// read after `visit` returns for it, and only when it returns true.
template <class Visit>
void Walk(std::vector<TastNodeBase*> pending, Visit visit) {
  TastNodeBaseList children;
  while (!pending.empty()) {
    TastNodeBase* node = pending.back();
    pending.pop_back();
    if (!visit(node)) continue;
    children.clear();
    node->GetMyChildren(children);
    pending.insert(pending.end(), children.rbegin(), children.rend());
  }
}

// The walk from `root`.
template <class Visit>
void WalkPreOrder(TastNodeBase* root, Visit visit) {
  Walk({root}, visit);
}

// The walk below `root`, without `root` itself.
template <class Visit>
void WalkBelow(const TastNodeBase* root, Visit visit) {
  TastNodeBaseList children;
  root->GetMyChildren(children);
  Walk(std::vector<TastNodeBase*>(children.rbegin(), children.rend()), visit);
}

}  // namespace

// --- TastNodeBase ---

const TastNodeClass& TastNodeBase::StaticClass() {
  static const TastNodeClass info("TastNodeBase", &TmvObject::StaticClass(), nullptr);
  return info;
}

const TastClassFields& TastNodeBase::StaticClassFields() {
  static const TastClassFields fields(nullptr, {});
  return fields;
}

void TastNodeBase::Assign(const TastNodeBase& source) {
  if (&source == this) return;
  Tag = source.Tag;
  AssignStatistics(source);
  // A copy that a clone made: its children are left to that clone.
  TastCloneSession* session = TastCloneSession::Current();
  const bool queue = session && session->TakeQueueFor(this);
  const TastClassFields& own = ClassFields();
  const TastClassFields& other = source.ClassFields();
  auto& self = *this;
  auto& from = const_cast<TastNodeBase&>(source);
  for (int i = 0; i < own.Count(); ++i) {
    const TastFieldInfo& info = own[i];
    const bool matches = i < other.Count() && other[i].DeclaringClass == info.DeclaringClass;
    if (info.Kind == TastFieldKind::Child) {
      TastFieldBase& field = info.ChildAt(self);
      if (!matches) {
        field.Reset();
      } else if (queue) {
        field.Reset();
        if (const TastNodeBase* child = other[i].ChildAt(from).Node()) session->Queue(field, child, context_);
      } else {
        AssignASTField(field, other[i].ChildAt(from));
      }
    } else {
      TastNodeList& list = info.ListAt(self);
      if (!matches) {
        list.Clear();
        continue;
      }
      const TastNodeList& sourceList = other[i].ListAt(from);
      if (queue) {
        list.Clear();
        for (int k = 0; k < sourceList.Count(); ++k) session->Queue(list, sourceList.Item(k), context_);
        continue;
      }
      // Clone first, then replace: the old items may still be read by the source.
      std::vector<TmvOwned<TastNode>> clones;
      clones.reserve(sourceList.Count());
      for (int k = 0; k < sourceList.Count(); ++k) {
        TmvOwned<TastNode> clone(static_cast<TastNode*>(sourceList.Item(k)->Clone(context_).release()));
        if (clone) clones.push_back(std::move(clone));
      }
      list.Clear();
      for (auto& clone : clones) list.Add(std::move(clone));
    }
  }
}

void TastNodeBase::AfterChildrenAssigned(std::function<void()> fixUp) {
  TastCloneSession* session = TastCloneSession::Current();
  if (session && session->IsFilling(this))
    session->AddFixUp(std::move(fixUp));
  else
    fixUp();
}

void TastNodeBase::AssignASTField(TastFieldBase& destination, const TastFieldBase& source) const {
  if (&destination == &source) return;
  TmvOwned<TastNodeBase> clone = source.Node() ? source.Node()->Clone(context_) : nullptr;
  destination.Reset(clone.release());
}

TmvOwned<TastNodeBase> TastNodeBase::Clone(TmvBaseSQLContext* context) const {
  TastCloneSession session;
  TmvOwned<TastNodeBase> copy = CloneInternal(context ? context : context_);
  session.Finish();
  return copy;
}

TmvOwned<TastNodeBase> TastNodeBase::CloneInternal(TmvBaseSQLContext* context) const {
  TmvOwned<TastNodeBase> copy(NodeClass().CreateRaw(context));
  if (!copy) return copy;
  if (TastCloneSession* session = TastCloneSession::Current()) session->QueueChildrenOf(copy.get());
  copy->Assign(*this);
  return copy;
}

void TastNodeBase::GetASTFields(TastFieldsList& list) const {
  auto& self = const_cast<TastNodeBase&>(*this);
  for (const TastFieldInfo& info : ClassFields().Entries())
    if (info.Kind == TastFieldKind::Child) list.Add(&info.ChildAt(self), info.DeclaringClass);
}

void TastNodeBase::GetMyChildren(TastNodeBaseList& list) const {
  auto& self = const_cast<TastNodeBase&>(*this);
  for (const TastFieldInfo& info : ClassFields().Entries()) {
    if (info.Kind == TastFieldKind::Child) {
      if (TastNodeBase* child = info.ChildAt(self).Node()) list.push_back(child);
    } else {
      const TastNodeList& items = info.ListAt(self);
      for (int i = 0; i < items.Count(); ++i) list.push_back(items.Item(i));
    }
  }
}

void TastNodeBase::GetMyChildrenRecursive(TastNodeBaseList& list) const {
  // Each level's children are appended together; then, for each of them in
  // turn, all that lies below it. A range of the list per level, not a call.
  struct Range {
    size_t next, end;
  };
  size_t first = list.size();
  GetMyChildren(list);
  std::vector<Range> ranges{{first, list.size()}};
  while (!ranges.empty()) {
    Range& range = ranges.back();
    if (range.next == range.end) {
      ranges.pop_back();
      continue;
    }
    TastNodeBase* node = list[range.next++];
    size_t start = list.size();
    node->GetMyChildren(list);
    ranges.push_back({start, list.size()});
  }
}

void TastNodeBase::TraverseASTTreeDepthFirst(const TastNodeCallback& callback) const {
  WalkBelow(this, [&callback](TastNodeBase* node) {
    callback(node);
    return true;
  });
}

void TastNodeBase::TraverseASTTreeSiblingFirst(const TastNodeCallback& callback) const {
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) callback(child);
  for (TastNodeBase* child : children) child->TraverseASTTreeDepthFirst(callback);
}

int TastNodeBase::FindFirstChildIndexForClass(const TmvClass& declaringClass) const {
  auto& self = const_cast<TastNodeBase&>(*this);
  int count = 0;
  for (const TastFieldInfo& info : ClassFields().Entries()) {
    if (info.DeclaringClass->InheritsFrom(declaringClass)) break;
    if (info.Kind == TastFieldKind::Child && !info.ChildAt(self).IsNull()) ++count;
  }
  return count;
}

void TastNodeBase::SimplifyTreeRecursive() {
  WalkPreOrder(this, [](TastNodeBase* node) {
    node->SimplifyTree();
    return true;
  });
}

void TastNodeBase::RestoreColumnPrefixRecursive(bool withSelf) {
  struct Pending {
    TastNodeBase* node;
    bool withSelf;
  };
  std::vector<Pending> pending{{this, withSelf}};
  TastNodeBaseList children;
  while (!pending.empty()) {
    const Pending next = pending.back();
    pending.pop_back();
    if (next.withSelf) next.node->RestoreColumnPrefix();
    children.clear();
    next.node->GetMyChildren(children);
    for (auto child = children.rbegin(); child != children.rend(); ++child)
      pending.push_back({*child, next.node->RestoresColumnPrefixOf(*child)});
  }
}

namespace {

// Collects what each node of the tree reports into list, once each. A node
// reports into a list of its own, so that the check for what is already
// there costs a set look-up rather than a pass over everything found.
template <class Item, class Report>
void CollectOnce(TastNodeBase* root, std::vector<Item*>& list, Report report) {
  std::unordered_set<Item*> seen(list.begin(), list.end());
  std::vector<Item*> found;
  WalkPreOrder(root, [&](TastNodeBase* node) {
    report(node, found);
    for (Item* item : found)
      if (seen.insert(item).second) list.push_back(item);
    found.clear();
    return true;
  });
}

}  // namespace

void TastNodeBase::GetReferencedDatasourcesRecursive(TSQLFromSourceList& list) {
  CollectOnce(this, list, [](TastNodeBase* node, TSQLFromSourceList& found) { node->GetReferencedDatasources(found); });
}

void TastNodeBase::GetReferencedColumnsRecursive(TSQLObjectColumnList& list) {
  CollectOnce(this, list, [](TastNodeBase* node, TSQLObjectColumnList& found) { node->GetReferencedColumns(found); });
}

bool TastNodeBase::ReplaceReferencesToDatasourceRecursive(TSQLFromSource* oldSource, TSQLFromSource* newSource) {
  bool changed = false;
  WalkPreOrder(this, [&](TastNodeBase* node) {
    // The old source itself is left as it is, below the node where the walk starts.
    if (node != this && oldSource && node == static_cast<TastNodeBase*>(oldSource)) return false;
    if (node->ReplaceReferencesToDatasource(oldSource, newSource)) changed = true;
    return true;
  });
  return changed;
}

namespace {

bool OwnRefersTo(TastNodeBase* node, TSQLFromSource* source) {
  TSQLFromSourceList list;
  node->GetReferencedDatasources(list);
  return std::find(list.begin(), list.end(), source) != list.end();
}

bool RefersTo(TastNodeBase* node, TSQLFromSource* source) {
  TSQLFromSourceList list;
  node->GetReferencedDatasourcesRecursive(list);
  return std::find(list.begin(), list.end(), source) != list.end();
}

// While RemoveReferencesToDatasource runs on this thread: for each node it
// has finished (and whose parent it has not), whether a reference to the
// source is left in its subtree. Spares RemoveReferencesToDatasourceInternal
// a walk of each child's subtree, which would make a long chain quadratic.
thread_local std::unordered_map<const TastNodeBase*, bool>* referenceLeft = nullptr;

bool ReferenceLeftBelow(TastNodeBase* node, TSQLFromSource* source) {
  if (referenceLeft) {
    auto found = referenceLeft->find(node);
    if (found != referenceLeft->end()) return found->second;
  }
  return RefersTo(node, source);
}

}  // namespace

bool TastNodeBase::RemoveReferencesToDatasource(TSQLFromSource* source) {
  std::unordered_map<const TastNodeBase*, bool> left;
  std::unordered_map<const TastNodeBase*, bool>* outer = referenceLeft;
  referenceLeft = &left;
  struct Restore {
    std::unordered_map<const TastNodeBase*, bool>* outer;
    ~Restore() { referenceLeft = outer; }
  } restore{outer};

  // Children first, then the node: a node is expanded when first met and
  // finished when met again.
  struct Pending {
    TastNodeBase* node;
    bool expanded;
  };
  std::vector<Pending> pending{{this, false}};
  TastNodeBaseList children;
  bool result = true;
  while (!pending.empty()) {
    Pending& next = pending.back();
    TastNodeBase* node = next.node;
    if (!next.expanded) {
      next.expanded = true;
      children.clear();
      node->GetMyChildren(children);
      for (auto child = children.rbegin(); child != children.rend(); ++child) pending.push_back({*child, false});
      continue;
    }
    pending.pop_back();
    TastNodeBaseList before;
    node->GetMyChildren(before);
    node->RemoveReferencesToDatasourceInternal(source);
    children.clear();
    node->GetMyChildren(children);
    bool refers = OwnRefersTo(node, source);
    for (TastNodeBase* child : children)
      if (!refers && ReferenceLeftBelow(child, source)) refers = true;
    // The children's answers are no longer needed (and some of them are freed).
    for (TastNodeBase* child : before) left.erase(child);
    left[node] = refers;
    if (node == this) result = !refers;
  }
  return result;
}

void TastNodeBase::RemoveReferencesToDatasourceInternal(TSQLFromSource* source) {
  auto& self = *this;
  for (const TastFieldInfo& info : ClassFields().Entries()) {
    if (info.Kind != TastFieldKind::Child) continue;
    TastFieldBase& field = info.ChildAt(self);
    if (field.Node() && ReferenceLeftBelow(field.Node(), source)) field.Reset();
  }
}

namespace {

// A proxy in place of the statement, or null when `node` is no sub-select
// or already a proxy.
TmvOwned<TastNode> MakeProxy(TastNodeBase* parent, TastNodeBase* node, TmvObject* owner,
                             const TSQLSubSelectStatementProxyClass& proxyClass,
                             const std::function<TmvOwned<TSQLSubSelectStatement>()>& take) {
  if (proxyClass.IsAbstract()) return nullptr;
  if (!TmvCast<TSQLSubSelectStatement>(node) || TmvCast<TSQLSubSelectStatementProxy>(node)) return nullptr;
  TmvOwned<TSQLSubSelectStatement> statement = take();
  return TmvOwned<TastNode>(proxyClass.CreateRaw(parent->SQLContext(), owner, parent, statement.release()));
}

}  // namespace

void TastNodeBase::MoveSubQueryInProxy(TmvObject* owner, const TSQLSubSelectStatementProxyClass& proxyClass) {
  auto& self = *this;
  for (const TastFieldInfo& info : ClassFields().Entries()) {
    if (info.Kind == TastFieldKind::Child) {
      TastFieldBase& field = info.ChildAt(self);
      TmvOwned<TastNode> proxy = MakeProxy(this, field.Node(), owner, proxyClass, [&field] {
        return TmvOwned<TSQLSubSelectStatement>(static_cast<TSQLSubSelectStatement*>(field.ReleaseNode()));
      });
      if (proxy) field.Reset(proxy.release());
    } else {
      TastNodeList& items = info.ListAt(self);
      for (int i = 0; i < items.Count(); ++i) {
        TmvOwned<TastNode> proxy = MakeProxy(this, items.Item(i), owner, proxyClass, [&items, i] {
          return TmvOwned<TSQLSubSelectStatement>(static_cast<TSQLSubSelectStatement*>(items.Extract(i).release()));
        });
        if (proxy) items.Insert(i, std::move(proxy));
      }
    }
  }
}

void TastNodeBase::MoveSubQueryInProxyRecursive(TmvObject* owner,
                                                const TSQLSubSelectStatementProxyClass& proxyClass) {
  WalkPreOrder(this, [owner, &proxyClass](TastNodeBase* node) {
    node->MoveSubQueryInProxy(owner, proxyClass);
    return true;
  });
}

// --- TastExtender ---

bool TastExtender::EditPropsForNode(TastNode* node, TmvObject* sender) { return node->EditPropsInternal(node, sender); }

void TastExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  node->BuildSQLDirect(builder, format);
}

// --- TastNode ---

TastNode::TastNode(TmvBaseSQLContext* context) : TastExtender(context) {
  if (context) contextIndex_ = context->RegisterAstNode(this);
}

TastNode::~TastNode() {
  if (TmvBaseSQLContext* context = SQLContext()) context->UnregisterAstNode(this, contextIndex_);
}

void TastNode::AfterConstruction() {
  TastExtender::AfterConstruction();
  UpdateExtender();
}

void TastNode::UpdateExtender() {
  TmvBaseSQLContext* context = SQLContext();
  TmvBaseSyntaxProvider* provider = context ? context->SyntaxProvider() : nullptr;
  const TastNodeClass* extenderClass = provider ? provider->FindExtenderClass(NodeClass(), true) : nullptr;
  if (!extenderClass) {
    Extender.Reset();
    return;
  }
  if (Extender && &Extender->NodeClass() == extenderClass) return;
  TmvOwned<TastExtender> extender = TastCreateOfClass<TastExtender>(*extenderClass, context);
  if (!extender) return;
  if (Extender) extender->Assign(*Extender.get());
  Extender.Reset(extender.release());
}

void TastNode::SyntaxProviderChanged() { UpdateExtender(); }

bool TastNode::EditPropsInternal(TastNode*, TmvObject*) { return false; }

void TastNode::BuildSQL(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TastNestingGuard level;
  builder.DoBeginBuildSQLForNode(this);
  if (Extender)
    Extender->BuildSQLForNode(this, builder, format);
  else
    BuildSQLDirect(builder, format);
  builder.DoEndBuildSQLForNode(this);
}

void TastNode::BuildSQLDirect(TSQLBuilder&, const TSQLBuilderSelectFormat&) {}

bool TastNode::BuildSQLPart(int, TSQLBuilder&, const TSQLBuilderSelectFormat&, TastNode*&) { return false; }

void TastNode::BuildSQLInParts(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  // The nodes whose parts are being printed, this one first, each with its next part.
  struct Open {
    TastNode* node;
    int part;
  };
  std::vector<Open> open{{this, 0}};
  while (!open.empty()) {
    TastNode* node = open.back().node;
    TastNode* child = nullptr;
    if (!node->BuildSQLPart(open.back().part++, builder, format, child)) {
      open.pop_back();
      // This node's own end event is BuildSQL's.
      if (!open.empty()) builder.DoEndBuildSQLForNode(node);
      continue;
    }
    if (!child) continue;
    if (child->PrintsInParts() && !child->Extender) {
      // What child->BuildSQL would do, without going deeper on the stack.
      builder.DoBeginBuildSQLForNode(child);
      open.push_back({child, 0});
    } else {
      child->BuildSQL(builder, format);
    }
  }
}

WideString TastNode::SimpleSQL(TSQLBuilder& builder) {
  builder.BeginBuild();
  BuildSQL(builder, builder.MainQueryFormat());
  builder.EndBuild();
  return builder.GetResult();
}

bool TastNode::EditProps(TmvObject* sender) {
  TmvOwned<TastNode> clone(static_cast<TastNode*>(Clone().release()));
  if (!clone) return false;
  bool accepted =
      Extender ? Extender->EditPropsForNode(clone.get(), sender) : EditPropsInternal(clone.get(), sender);
  if (accepted) Assign(*clone);
  return accepted;
}

void TastNode::BuildASTField(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                             bool withSpace) {
  if (!node) return;
  node->BuildSQL(builder, format);
  if (withSpace) builder.Space(3);
}

// --- TastNodeVisitor ---

void TastNodeVisitor::Visit(TastNodeBase* node, TmvObject* data) {
  // The open nodes, outermost first, each with its scope and its children
  // still to visit.
  struct Open {
    TastNodeBase* node;
    TastNodeBase* parent;
    TmvObject* data;
    TmvOwned<TmvObject> nodeData;
    TastNodeBaseList children;
    size_t next = 0;
  };
  std::vector<Open> open;
  auto enter = [this, &open](TastNodeBase* entered, TastNodeBase* parent, TmvObject* scope) {
    Open frame{entered, parent, scope, EnterIntoNode(entered, parent, scope), {}};
    VisitingNode(entered, parent, scope, frame.nodeData.get());
    frame.children = GetNodeChildren(entered, parent, scope, frame.nodeData.get());
    open.push_back(std::move(frame));
  };
  enter(node, nullptr, data);
  while (!open.empty()) {
    Open& top = open.back();
    if (top.next < top.children.size()) {
      TastNodeBase* child = top.children[top.next++];
      enter(child, top.node, top.nodeData.get());
      continue;
    }
    top.children.clear();
    ExitFromNode(top.node, top.parent, top.data, top.nodeData.get());
    open.pop_back();
  }
}

TastNodeBaseList TastNodeVisitor::GetNodeChildren(TastNodeBase* node, TastNodeBase*, TmvObject*, TmvObject*) {
  TastNodeBaseList children;
  node->GetMyChildren(children);
  return children;
}

}  // namespace mv
