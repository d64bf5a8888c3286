#include "tree/AstNode.h"

#include <algorithm>

#include "dialects/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/NodeLists.h"
#include "tree/FromClause.h"
#include "tree/SelectStatement.h"

namespace mv {

// --- Fields and lists ---

void TastFieldBase::Reset(TastNodeBase* node) {
  if (node == node_) return;
  TastNodeBase* old = node_;
  node_ = node;
  TmvDeleter()(old);
}

TastNodeList::TastNodeList() = default;
TastNodeList::~TastNodeList() = default;

void TastNodeList::Add(TmvOwned<TastNode> node) { items_.push_back(std::move(node)); }

void TastNodeList::Insert(int index, TmvOwned<TastNode> node) {
  items_.insert(items_.begin() + index, std::move(node));
}

void TastNodeList::Set(int index, TmvOwned<TastNode> node) {
  // The old item goes only after the new one is in place.
  TmvOwned<TastNode> old = std::move(items_[index]);
  items_[index] = std::move(node);
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
  const TastClassFields& own = ClassFields();
  const TastClassFields& other = source.ClassFields();
  auto& self = *this;
  auto& from = const_cast<TastNodeBase&>(source);
  for (int i = 0; i < own.Count(); ++i) {
    const TastFieldInfo& info = own[i];
    const bool matches = i < other.Count() && other[i].DeclaringClass == info.DeclaringClass;
    if (info.Kind == TastFieldKind::Child) {
      TastFieldBase& field = info.ChildAt(self);
      if (matches)
        AssignASTField(field, other[i].ChildAt(from));
      else
        field.Reset();
    } else {
      TastNodeList& list = info.ListAt(self);
      if (!matches) {
        list.Clear();
        continue;
      }
      // Clone first, then replace: the old items may still be read by the source.
      const TastNodeList& sourceList = other[i].ListAt(from);
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

void TastNodeBase::AssignASTField(TastFieldBase& destination, const TastFieldBase& source) const {
  if (&destination == &source) return;
  TmvOwned<TastNodeBase> clone = source.Node() ? source.Node()->Clone(context_) : nullptr;
  destination.Reset(clone.release());
}

TmvOwned<TastNodeBase> TastNodeBase::Clone(TmvBaseSQLContext* context) const {
  return CloneInternal(context ? context : context_);
}

TmvOwned<TastNodeBase> TastNodeBase::CloneInternal(TmvBaseSQLContext* context) const {
  TmvOwned<TastNodeBase> copy(NodeClass().CreateRaw(context));
  if (copy) copy->Assign(*this);
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
  size_t first = list.size();
  GetMyChildren(list);
  size_t last = list.size();
  for (size_t i = first; i < last; ++i) list[i]->GetMyChildrenRecursive(list);
}

void TastNodeBase::TraverseASTTreeDepthFirst(const TastNodeCallback& callback) const {
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) {
    callback(child);
    child->TraverseASTTreeDepthFirst(callback);
  }
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
  SimplifyTree();
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) child->SimplifyTreeRecursive();
}

void TastNodeBase::RestoreColumnPrefixRecursive(bool withSelf) {
  if (withSelf) RestoreColumnPrefix();
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) child->RestoreColumnPrefixRecursive(true);
}

void TastNodeBase::GetReferencedDatasourcesRecursive(TSQLFromSourceList& list) {
  GetReferencedDatasources(list);
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) child->GetReferencedDatasourcesRecursive(list);
}

void TastNodeBase::GetReferencedColumnsRecursive(TSQLObjectColumnList& list) {
  GetReferencedColumns(list);
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) child->GetReferencedColumnsRecursive(list);
}

bool TastNodeBase::ReplaceReferencesToDatasourceRecursive(TSQLFromSource* oldSource, TSQLFromSource* newSource) {
  bool changed = ReplaceReferencesToDatasource(oldSource, newSource);
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) {
    if (oldSource && child == static_cast<TastNodeBase*>(oldSource)) continue;
    if (child->ReplaceReferencesToDatasourceRecursive(oldSource, newSource)) changed = true;
  }
  return changed;
}

namespace {

bool RefersTo(TastNodeBase* node, TSQLFromSource* source) {
  TSQLFromSourceList list;
  node->GetReferencedDatasourcesRecursive(list);
  return std::find(list.begin(), list.end(), source) != list.end();
}

}  // namespace

bool TastNodeBase::RemoveReferencesToDatasource(TSQLFromSource* source) {
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) child->RemoveReferencesToDatasource(source);
  RemoveReferencesToDatasourceInternal(source);
  return !RefersTo(this, source);
}

void TastNodeBase::RemoveReferencesToDatasourceInternal(TSQLFromSource* source) {
  auto& self = *this;
  for (const TastFieldInfo& info : ClassFields().Entries()) {
    if (info.Kind != TastFieldKind::Child) continue;
    TastFieldBase& field = info.ChildAt(self);
    if (field.Node() && RefersTo(field.Node(), source)) field.Reset();
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
  MoveSubQueryInProxy(owner, proxyClass);
  TastNodeBaseList children;
  GetMyChildren(children);
  for (TastNodeBase* child : children) child->MoveSubQueryInProxyRecursive(owner, proxyClass);
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
  builder.DoBeginBuildSQLForNode(this);
  if (Extender)
    Extender->BuildSQLForNode(this, builder, format);
  else
    BuildSQLDirect(builder, format);
  builder.DoEndBuildSQLForNode(this);
}

void TastNode::BuildSQLDirect(TSQLBuilder&, const TSQLBuilderSelectFormat&) {}

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

void TastNodeVisitor::Visit(TastNodeBase* node, TmvObject* data) { VisitNodeInternal(node, nullptr, data); }

TastNodeBaseList TastNodeVisitor::GetNodeChildren(TastNodeBase* node, TastNodeBase*, TmvObject*, TmvObject*) {
  TastNodeBaseList children;
  node->GetMyChildren(children);
  return children;
}

void TastNodeVisitor::VisitNodeInternal(TastNodeBase* node, TastNodeBase* parent, TmvObject* data) {
  TmvOwned<TmvObject> nodeData = EnterIntoNode(node, parent, data);
  VisitingNode(node, parent, data, nodeData.get());
  TastNodeBaseList children = GetNodeChildren(node, parent, data, nodeData.get());
  for (TastNodeBase* child : children) VisitNodeInternal(child, node, nodeData.get());
  children.clear();
  ExitFromNode(node, parent, data, nodeData.get());
}

}  // namespace mv
