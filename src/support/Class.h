// The run-time class facility: a class object per class (name, parent, and an
// optional factory), so that code can hold "a class" as a value, find one by
// name, ask `InheritsFrom`, and create an instance of it. Node classes and
// their extenders, syntax providers, SQL builders, link painters and form
// classes all use it.
//
// Objects are made in two phases: the constructor, then the virtual
// `AfterConstruction()`, where virtual calls are safe. They are freed in two
// phases too: `BeforeDestruction()` (which may fire notifications and still
// sees the most-derived object), then the destructor. `TmvOwned<T>` and
// `TmvCreate<T>()` carry this out, so an owner that frees what it owns never
// skips the first phase.
#pragma once

#include <memory>
#include <string_view>
#include <utility>

namespace mv {

class TmvObject;

// Describes one class. Instances are static objects that live for the whole
// process; compare them by address.
class TmvClass {
 public:
  constexpr TmvClass(std::string_view name, const TmvClass* parent)
      : name_(name), parent_(parent), depth_(parent ? parent->depth_ + 1 : 0) {}
  TmvClass(const TmvClass&) = delete;
  TmvClass& operator=(const TmvClass&) = delete;

  std::string_view ClassName() const { return name_; }
  const TmvClass* ClassParent() const { return parent_; }
  // True for the class itself and every class it derives from. An ancestor
  // stands exactly (depth - its depth) steps up, so a failed test climbs that
  // far at most instead of to the root: casts fail far more often than not.
  bool InheritsFrom(const TmvClass& ancestor) const {
    if (ancestor.depth_ > depth_) return false;
    const TmvClass* c = this;
    for (unsigned steps = depth_ - ancestor.depth_; steps > 0; --steps) c = c->parent_;
    return c == &ancestor;
  }
  bool InheritsFrom(const TmvClass* ancestor) const { return ancestor && InheritsFrom(*ancestor); }

 private:
  std::string_view name_;
  const TmvClass* parent_;
  unsigned depth_;  // steps to the root class
};

// A class of one family whose members are all made with the same constructor
// arguments (e.g. every node class takes its context). `Create` runs both
// construction phases; an abstract class has no factory and cannot be created.
template <class Base, class... Args>
class TmvClassOf : public TmvClass {
 public:
  using Factory = Base* (*)(Args...);
  constexpr TmvClassOf(std::string_view name, const TmvClass* parent, Factory factory)
      : TmvClass(name, parent), factory_(factory) {}
  bool IsAbstract() const { return factory_ == nullptr; }
  // Makes a new instance; the caller owns it. Null for an abstract class.
  Base* CreateRaw(Args... args) const;

 private:
  Factory factory_;
};

// Root of all classes that take part in the class facility.
class TmvObject {
 public:
  virtual ~TmvObject() = default;
  static const TmvClass& StaticClass();
  virtual const TmvClass& ClassType() const { return StaticClass(); }
  std::string_view ClassName() const { return ClassType().ClassName(); }
  bool InheritsFrom(const TmvClass& ancestor) const { return ClassType().InheritsFrom(ancestor); }

  // Second construction phase: runs right after the constructor, with the
  // object's full type in place.
  virtual void AfterConstruction() {}
  // First destruction phase: runs before the destructor while the object is
  // still whole. Owners call it through TmvDeleter.
  virtual void BeforeDestruction() {}
  // Whether the object agrees to be freed now. An owner asks before it frees
  // anything, so a refusal leaves everything as it was.
  virtual bool CanDestroy() const { return true; }

 protected:
  TmvObject() = default;
  TmvObject(const TmvObject&) = default;
  TmvObject& operator=(const TmvObject&) = default;
};

// Deleter that runs both destruction phases.
struct TmvDeleter {
  void operator()(TmvObject* object) const {
    if (object) {
      object->BeforeDestruction();
      delete object;
    }
  }
};

template <class T>
using TmvOwned = std::unique_ptr<T, TmvDeleter>;

// An owner that a function fills through a `T*&` out-parameter: the
// generated parsers' rules hand back what they make that way, and whatever
// they made is freed if the parse fails before it is passed on.
template <class T>
class TmvHeld {
 public:
  TmvHeld() = default;
  ~TmvHeld() { TmvOwned<T> drop(pointer_); }
  TmvHeld(const TmvHeld&) = delete;
  TmvHeld& operator=(const TmvHeld&) = delete;
  // Takes `object`, freeing what was held before.
  TmvHeld& operator=(T* object) {
    if (object != pointer_) TmvOwned<T> drop(pointer_);
    pointer_ = object;
    return *this;
  }
  // The out-parameter of a rule: what it writes is held.
  operator T*&() { return pointer_; }
  T* operator->() const { return pointer_; }
  T* get() const { return pointer_; }
  // Passes the object on; the holder ends empty.
  T* Release() {
    T* object = pointer_;
    pointer_ = nullptr;
    return object;
  }
  TmvOwned<T> Take() { return TmvOwned<T>(Release()); }

 private:
  T* pointer_ = nullptr;
};

// Creates an object in both construction phases.
template <class T, class... Args>
TmvOwned<T> TmvCreate(Args&&... args) {
  TmvOwned<T> object(new T(std::forward<Args>(args)...));
  object->AfterConstruction();
  return object;
}

// Runs the second construction phase on an object made with `new` and takes ownership of it.
template <class T>
TmvOwned<T> TmvAdopt(T* object) {
  TmvOwned<T> owned(object);
  if (owned) owned->AfterConstruction();
  return owned;
}

template <class Base, class... Args>
Base* TmvClassOf<Base, Args...>::CreateRaw(Args... args) const {
  if (!factory_) return nullptr;
  Base* object = factory_(std::forward<Args>(args)...);
  object->AfterConstruction();
  return object;
}

// Casts that follow the class facility rather than RTTI.
template <class T>
T* TmvCast(TmvObject* object) {
  return object && object->InheritsFrom(T::StaticClass()) ? static_cast<T*>(object) : nullptr;
}
template <class T>
const T* TmvCast(const TmvObject* object) {
  return object && object->InheritsFrom(T::StaticClass()) ? static_cast<const T*>(object) : nullptr;
}

// Compares class names without regard to case (class names are ASCII).
bool SameClassName(std::string_view a, std::string_view b);

}  // namespace mv

// Declares the class facility members inside a class body. `ClassType()` must
// be overridden in every class so that `ClassName()` names the most-derived class.
#define MV_DECLARE_CLASS()                         \
 public:                                          \
  static const ::mv::TmvClass& StaticClass();     \
  const ::mv::TmvClass& ClassType() const override { return StaticClass(); }

// Defines StaticClass() for a class with no factory.
#define MV_DEFINE_CLASS(Class, Parent)                                      \
  const ::mv::TmvClass& Class::StaticClass() {                              \
    static const ::mv::TmvClass info(#Class, &Parent::StaticClass());       \
    return info;                                                            \
  }
