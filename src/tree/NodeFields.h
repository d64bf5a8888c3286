// How a node holds its children. A child field is a `TastChild<T>`: it owns
// the node in it and frees it with the field. A list is a `TastList<T>`: an
// owning sequence of nodes. Each node class lists its child fields and its
// list in one per-class table (`TastClassFields`, generated from the node
// table), base class first; generic free, assign, clone and the walks of the
// tree use nothing else.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

#include "tree/NodeClass.h"

namespace mv {

// Frees a node and everything below it. A node freed while another free is
// under way on this thread (that is, from the destructor of a node being
// freed) waits in that free's queue, so a chain of nodes of any length is
// freed in a loop instead of by nested destructors. Fields and lists free
// their nodes through it.
void TastFreeNode(TastNodeBase* node);

// The part of a child field that generic code sees.
class TastFieldBase {
 public:
  TastFieldBase() = default;
  TastFieldBase(const TastFieldBase&) = delete;
  TastFieldBase& operator=(const TastFieldBase&) = delete;
  ~TastFieldBase() { Reset(); }

  TastNodeBase* Node() const { return node_; }
  bool IsNull() const { return node_ == nullptr; }
  // Frees the node held (through TastFreeNode) and takes `node` instead
  // (null empties the field).
  void Reset(TastNodeBase* node = nullptr);
  // Gives the node up without freeing it.
  TastNodeBase* ReleaseNode() {
    TastNodeBase* node = node_;
    node_ = nullptr;
    return node;
  }

 protected:
  TastNodeBase* node_ = nullptr;
};

// An owned child node of class T (or a descendant).
template <class T>
class TastChild : public TastFieldBase {
 public:
  using ItemType = T;
  T* get() const { return static_cast<T*>(node_); }
  T* operator->() const { return get(); }
  T& operator*() const { return *get(); }
  explicit operator bool() const { return node_ != nullptr; }
  // Takes the node, freeing the one held before.
  template <class U>
  void Set(TmvOwned<U> node) {
    T* raw = node.release();
    Reset(raw);
  }
  TmvOwned<T> Release() { return TmvOwned<T>(static_cast<T*>(ReleaseNode())); }
};

// An owned list of nodes. Items are TastNode objects; the typed view below
// says which kind of node a list is meant to hold.
class TastNodeList {
 public:
  TastNodeList();
  TastNodeList(const TastNodeList&) = delete;
  TastNodeList& operator=(const TastNodeList&) = delete;
  ~TastNodeList();

  int Count() const { return int(items_.size()); }
  bool IsEmpty() const { return items_.empty(); }
  TastNode* Item(int index) const { return items_[index].get(); }
  void Add(TmvOwned<TastNode> node);
  void Insert(int index, TmvOwned<TastNode> node);
  // Replaces the item at index, freeing the old one.
  void Set(int index, TmvOwned<TastNode> node);
  // Puts node at index and hands back the item that was there.
  TmvOwned<TastNode> Exchange(int index, TmvOwned<TastNode> node);
  // Moves every item of source, in order, to index: one shift of the items
  // after index however many arrive.
  void InsertAll(int index, TastNodeList& source);
  void Delete(int index);
  // Frees the node if it is in the list; its former index, or -1.
  int Remove(const TastNode* node);
  // Frees every item (through TastFreeNode).
  void Clear();
  int IndexOf(const TastNode* node) const;
  TmvOwned<TastNode> Extract(const TastNode* node);
  TmvOwned<TastNode> Extract(int index);

 private:
  std::vector<TmvOwned<TastNode>> items_;
};

template <class T>
class TastList : public TastNodeList {
 public:
  using ItemType = T;
  T* Items(int index) const { return static_cast<T*>(Item(index)); }
  T* operator[](int index) const { return Items(index); }
};

// One entry of a class's field table.
enum class TastFieldKind : uint8_t { Child, List };

struct TastFieldInfo {
  const char* Name;
  TastFieldKind Kind;
  const TmvClass* DeclaringClass;  // the class that declares the field
  const TmvClass* NodeType;        // the class of the child, or of the list's items
  TastFieldBase& (*ChildAt)(TastNodeBase& node);
  TastNodeList& (*ListAt)(TastNodeBase& node);
};

// The field table of one class: the parent's entries, then its own.
class TastClassFields {
 public:
  TastClassFields(const TastClassFields* parent, std::initializer_list<TastFieldInfo> own) {
    if (parent) entries_ = parent->entries_;
    entries_.insert(entries_.end(), own.begin(), own.end());
  }
  const std::vector<TastFieldInfo>& Entries() const { return entries_; }
  int Count() const { return int(entries_.size()); }
  const TastFieldInfo& operator[](int index) const { return entries_[index]; }

 private:
  std::vector<TastFieldInfo> entries_;
};

template <class Owner, auto Member>
TastFieldInfo TastChildFieldInfo(const char* name) {
  using FieldType = std::remove_reference_t<decltype(std::declval<Owner&>().*Member)>;
  return {name, TastFieldKind::Child, &Owner::StaticClass(), &FieldType::ItemType::StaticClass(),
          [](TastNodeBase& node) -> TastFieldBase& { return static_cast<Owner&>(node).*Member; }, nullptr};
}

template <class Owner, auto Member>
TastFieldInfo TastListFieldInfo(const char* name) {
  using FieldType = std::remove_reference_t<decltype(std::declval<Owner&>().*Member)>;
  return {name, TastFieldKind::List, &Owner::StaticClass(), &FieldType::ItemType::StaticClass(), nullptr,
          [](TastNodeBase& node) -> TastNodeList& { return static_cast<Owner&>(node).*Member; }};
}

// The child fields of a node as addresses with their declaring classes.
struct TastFieldsList {
  std::vector<TastFieldBase*> ASTFields;
  std::vector<const TmvClass*> ASTTypes;
  int Count() const { return int(ASTFields.size()); }
  void Add(TastFieldBase* field, const TmvClass* declaringClass) {
    ASTFields.push_back(field);
    ASTTypes.push_back(declaringClass);
  }
};

// Expands the generated part of a node class body: class facility,
// constructor from a context, Assign and the fields, as the node table says.
#define MV_AST_NODE(Class) MV_AST_NODE_##Class()

// A snapshot of children, of referenced sources or columns: plain references.
using TastNodeBaseList = std::vector<TastNodeBase*>;

}  // namespace mv
