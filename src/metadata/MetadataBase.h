// The root of the metadata model and its collections. Every metadata object
// is made with a parent and a SQL context: the context gives it the dialect
// under which its names are compared and printed, and the parent takes its
// change notifications into its own batches (a field's change reaches its
// object, and the object's its container).
//
//   TmvMetadataBase
//     TmvMetadataCollectionItemBase   field, parameter, relation
//     TmvMetadataCollectionBase       owning list of items of one class
//     TmvMetadataQualifiedNamesList, TmvMetadataObject, TmvMetadataContainer
//
// Classes are values (TmvMetadataClass) with a factory taking (parent,
// context), so that Clone and the container's Add... operations make an
// object of the class the caller names.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "support/Class.h"
#include "support/UpdatablePersistent.h"

namespace pugi {
class xml_node;
}

namespace mv {

class TmvBaseSQLContext;
class TmvBaseSyntaxProvider;
class TmvMetadataBase;

using TmvMetadataClass = TmvClassOf<TmvMetadataBase, TmvMetadataBase*, TmvBaseSQLContext*>;

class TmvMetadataBase : public TmvUpdatablePersistent {
 public:
  static const TmvMetadataClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }
  // The class with its factory, for Clone.
  virtual const TmvMetadataClass& MetadataClass() const { return StaticClass(); }

  TmvMetadataBase(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataBase() override;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  // The context's syntax provider; null without either.
  TmvBaseSyntaxProvider* SyntaxProvider() const;
  // True while the object has its context.
  bool IsAlive() const { return context_ != nullptr; }
  TmvMetadataBase* Parent() const { return parent_; }

  // One word of the caller's data; copied by Assign.
  int32_t Tag() const { return tag_; }
  void SetTag(int32_t value) { tag_ = value; }

  // From another metadata object: the tag. Subclasses copy their own state
  // and call the inherited one.
  void Assign(const TmvPersistent* source) override;
  void Assign(const TmvMetadataBase& source) { Assign(&source); }

  // A new object of this object's class under `parent` and `context`, assigned from this one.
  TmvOwned<TmvMetadataBase> Clone(TmvMetadataBase* parent, TmvBaseSQLContext* context) const;
  template <class T>
  TmvOwned<T> CloneAs(TmvMetadataBase* parent, TmvBaseSQLContext* context) const {
    return TmvOwned<T>(static_cast<T*>(Clone(parent, context).release()));
  }

  // Appends the object's XML element `nodeName` to `parent` (see
  // MetadataXml.h); an empty element at this level.
  virtual pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName);

 protected:
  // The frame of every Assign override: a source of class T other than this
  // object is copied in one update batch, first by `inherited()` (the base
  // class's Assign) and then by `copy(other)`, and reported once; any other
  // source goes to `inherited()` alone; this object itself is left as it is.
  template <class T, class Inherited, class Copy>
  void AssignFrom(const TmvPersistent* source, Inherited inherited, Copy copy) {
    const T* other = TmvCast<T>(source);
    if (!other) {
      inherited();
      return;
    }
    if (other == this) return;
    TmvUpdateBatch batch(*this);
    inherited();
    copy(*other);
    NotifyUpdated();
  }
  // Moves the object under another parent (null: none), batches included.
  void SetMetadataParent(TmvMetadataBase* parent);

 private:
  TmvBaseSQLContext* context_;
  TmvMetadataBase* parent_;
  int32_t tag_ = 0;
};

class TmvMetadataCollectionBase;

class TmvMetadataCollectionItemBase : public TmvMetadataBase {
 public:
  static const TmvMetadataClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }
  const TmvMetadataClass& MetadataClass() const override { return StaticClass(); }

  using TmvMetadataBase::TmvMetadataBase;
  // The collection that holds the item (its parent), or null.
  TmvMetadataCollectionBase* Collection() const;
  // Reads the item from its XML element; nothing at this level.
  virtual void LoadFromXMLNode(pugi::xml_node element);
};

// An owning list of items of one class. Every change ends in NotifyUpdated.
class TmvMetadataCollectionBase : public TmvMetadataBase {
 public:
  static const TmvMetadataClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }
  const TmvMetadataClass& MetadataClass() const override { return StaticClass(); }

  TmvMetadataCollectionBase(TmvMetadataBase* parent, TmvBaseSQLContext* context, const TmvMetadataClass& itemClass);
  ~TmvMetadataCollectionBase() override;

  const TmvMetadataClass& ItemClass() const { return *itemClass_; }
  int Count() const { return int(items_.size()); }
  int Capacity() const { return int(items_.capacity()); }
  void SetCapacity(int value);
  // EListError for an index out of range.
  TmvMetadataCollectionItemBase* ItemAt(int index) const;
  int IndexOf(const TmvMetadataCollectionItemBase* item) const;

  // A new item of the item class, with the collection as its parent.
  TmvMetadataCollectionItemBase* AddItem();
  TmvMetadataCollectionItemBase* InsertItem(int index);
  void Clear();
  void Delete(int index);
  void Move(int from, int to);
  // Frees the item; its former index or -1.
  int Remove(const TmvMetadataCollectionItemBase* item);
  // Stable sort; `compare` answers <0, 0, >0.
  void Sort(
      const std::function<int(const TmvMetadataCollectionItemBase*, const TmvMetadataCollectionItemBase*)>& compare);

  // From a collection: empties the list and adds a clone of every source
  // item, in one batch.
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataBase::Assign;

  // The element of each item in the list's XML.
  virtual const char* GetXMLItemName() const { return "item"; }
  // An element `nodeName` with one GetXMLItemName() element per item.
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName) override;
  // Clears, then adds and reads an item for every child element named GetXMLItemName().
  void LoadFromXMLNode(pugi::xml_node element);

 protected:
  // Told of each item that Add or Insert made.
  virtual void ItemInserted(TmvMetadataCollectionItemBase*) {}
  void CheckIndex(int index, int count) const;

 private:
  const TmvMetadataClass* itemClass_;
  std::vector<TmvOwned<TmvMetadataCollectionItemBase>> items_;
};

// Typed access to a collection of `Item`s.
template <class Item>
class TmvMetadataCollectionOf : public TmvMetadataCollectionBase {
 public:
  TmvMetadataCollectionOf(TmvMetadataBase* parent, TmvBaseSQLContext* context)
      : TmvMetadataCollectionBase(parent, context, Item::StaticClass()) {}
  Item* Items(int index) const { return static_cast<Item*>(ItemAt(index)); }
  Item* Add() { return static_cast<Item*>(AddItem()); }
  Item* Insert(int index) { return static_cast<Item*>(InsertItem(index)); }
};

// A typed collection with a loaded flag apart from its count, false at
// first: Add and Insert set it, and only a list whose flag is clear is ever
// fetched. So a list with no items but a set flag is not fetched again, and
// a list filled by hand is never replaced by a fetch.
template <class Item>
class TmvMetadataLoadedListOf : public TmvMetadataCollectionOf<Item> {
 public:
  using TmvMetadataCollectionOf<Item>::TmvMetadataCollectionOf;

  bool Loaded() const { return loaded_; }
  void SetLoaded(bool value) { loaded_ = value; }

  // Items and the loaded flag of another list of the same items.
  void Assign(const TmvPersistent* source) override {
    TmvMetadataCollectionOf<Item>::Assign(source);
    if (const auto* other = dynamic_cast<const TmvMetadataLoadedListOf*>(source)) loaded_ = other->loaded_;
  }
  using TmvMetadataCollectionOf<Item>::Assign;

 protected:
  void ItemInserted(TmvMetadataCollectionItemBase*) override { loaded_ = true; }

 private:
  bool loaded_ = false;
};

}  // namespace mv

// Declares the class facility members of a metadata class.
#define MV_DECLARE_METADATA_CLASS()                                          \
 public:                                                                     \
  static const ::mv::TmvMetadataClass& StaticClass();                        \
  const ::mv::TmvClass& ClassType() const override { return StaticClass(); } \
  const ::mv::TmvMetadataClass& MetadataClass() const override { return StaticClass(); }

// Defines them for a class made with (parent, context).
#define MV_DEFINE_METADATA_CLASS(Class, Parent)                                                         \
  const ::mv::TmvMetadataClass& Class::StaticClass() {                                                  \
    static const ::mv::TmvMetadataClass info(                                                           \
        #Class, &Parent::StaticClass(),                                                                 \
        [](::mv::TmvMetadataBase* parent, ::mv::TmvBaseSQLContext* context) -> ::mv::TmvMetadataBase* { \
          return new Class(parent, context);                                                            \
        });                                                                                             \
    return info;                                                                                        \
  }

// Defines them for a class that cannot be made.
#define MV_DEFINE_ABSTRACT_METADATA_CLASS(Class, Parent)                               \
  const ::mv::TmvMetadataClass& Class::StaticClass() {                                 \
    static const ::mv::TmvMetadataClass info(#Class, &Parent::StaticClass(), nullptr); \
    return info;                                                                       \
  }
