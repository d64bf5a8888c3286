// Multicast events. An event keeps a list of handlers, each a callback with
// an identity, and calls them all in the order they were added when it fires.
//
// A handler's identity is what `RemoveHandler` and `FindHandler` look for:
// an owner pointer and a code part, equal when both halves are. A member
// function handler takes the object and the member pointer as identity, so
// the same pair removes it again:
//
//   ctx->GetOnUpdated().AddHandler(this, &TmvQuery::ContextUpdated);
//   ...
//   ctx->GetOnUpdated().RemoveHandler(this, &TmvQuery::ContextUpdated);
//
// A lambda gets an identity from its owner and a key of the owner's choice,
// or a fresh one from `TmvHandlerId::Unique()`.
//
// Removal leaves a hole in place, so indexes stay stable while the event
// fires: a handler may add or remove handlers (itself included) during
// `Fire`; a removed handler that was not reached yet is not called, and an
// added one is called in the same firing. Holes are compacted outside a
// firing: when the array is full and more than 8 holes exist on `AddHandler`,
// and after a firing that leaves 9 or more.
//
// Events are not locked; they belong to the thread of the model they are in.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/Class.h"
#include "support/Exceptions.h"

namespace mv {

class TmvHandlerId {
 public:
  constexpr TmvHandlerId() = default;
  // An owner and a key that tells the owner's handlers apart.
  TmvHandlerId(const void* owner, uintptr_t key) : owner_(owner) {
    std::memcpy(code_.data(), &key, sizeof key);
  }
  // The identity of a member function handler: the object and the member pointer.
  template <class C, class M>
    requires std::is_member_function_pointer_v<M>
  static TmvHandlerId Method(const C* object, M method) {
    static_assert(sizeof(M) <= kCodeSize, "member pointer larger than a handler identity");
    TmvHandlerId id;
    id.owner_ = object;
    std::memcpy(id.code_.data(), &method, sizeof(M));
    return id;
  }
  // A new identity, different from all others of the process.
  static TmvHandlerId Unique() {
    static std::atomic<uintptr_t> counter{0};
    static const char anchor = 0;
    return TmvHandlerId(&anchor, ++counter);
  }

  const void* Owner() const { return owner_; }
  // Both halves null: no identity (what a hole holds).
  bool IsNull() const { return owner_ == nullptr && code_ == std::array<unsigned char, kCodeSize>{}; }
  bool operator==(const TmvHandlerId& other) const = default;

 private:
  static constexpr size_t kCodeSize = 2 * sizeof(void*);
  const void* owner_ = nullptr;
  std::array<unsigned char, kCodeSize> code_{};
};

template <class... Args>
class TmvEvent {
 public:
  using Handler = std::function<void(Args...)>;

  TmvEvent() = default;
  TmvEvent(const TmvEvent&) = delete;
  TmvEvent& operator=(const TmvEvent&) = delete;

  // Adds a handler at the end and returns its index, which a caller may keep
  // as the hint for `RemoveHandler`. The identity must not be null and the
  // handler not empty (EmvQueryBuilderError).
  int AddHandler(const TmvHandlerId& id, Handler handler);
  template <class C, class M>
    requires std::is_member_function_pointer_v<M>
  int AddHandler(C* object, M method) {
    return AddHandler(TmvHandlerId::Method(object, method),
                      [object, method](Args... args) { std::invoke(method, object, args...); });
  }

  // Removes the handler with this identity, testing `hintIndex` first (-1:
  // none). Nothing happens if it is not there.
  void RemoveHandler(const TmvHandlerId& id, int hintIndex = -1);
  template <class C, class M>
    requires std::is_member_function_pointer_v<M>
  void RemoveHandler(C* object, M method, int hintIndex = -1) {
    RemoveHandler(TmvHandlerId::Method(object, method), hintIndex);
  }

  // The index of the handler with this identity, or -1. Tests the entry at
  // `hintIndex` first (the last entry for -1 or an index beyond the end),
  // then all entries from the first.
  int FindHandler(const TmvHandlerId& id, int hintIndex = -1) const;
  template <class C, class M>
    requires std::is_member_function_pointer_v<M>
  int FindHandler(C* object, M method, int hintIndex = -1) const {
    return FindHandler(TmvHandlerId::Method(object, method), hintIndex);
  }

  // Calls every handler in order. A handler's exception passes out; the
  // firing is closed all the same.
  void Fire(Args... args);

  // Entries in use, holes included.
  int Count() const { return count_; }
  // Removed entries that still take up a place.
  int HoleCount() const { return holeCount_; }
  // Length of the handler array.
  int Capacity() const { return static_cast<int>(handlers_.size()); }
  // False while the event fires: no compaction then.
  bool CanShrink() const { return firingDepth_ == 0; }
  // No live handler.
  bool IsEmpty() const { return count_ == holeCount_; }

 protected:
  void BeforeFiring() { ++firingDepth_; }
  void AfterFiring();
  // Doubles the array, or makes it 16 long from empty.
  void ExpandHandlersArray();
  // Moves the live entries down in order; Count becomes their number and
  // HoleCount 0. The array keeps its length.
  void ShrinkHandlersArray();

 private:
  struct Entry {
    TmvHandlerId id;
    // Boxed, so that a handler keeps its place in memory while it runs even
    // if it makes the array grow.
    std::unique_ptr<Handler> handler;
  };

  std::vector<Entry> handlers_;
  int count_ = 0;
  int holeCount_ = 0;
  // Nested firings count; the flag of "can shrink" is its being zero.
  int firingDepth_ = 0;
  // Handlers removed during a firing; freed when the firing ends, since one
  // of them may be the handler that is running.
  std::vector<std::unique_ptr<Handler>> retired_;
};

// The event of the update notification: handlers take the sender.
class TmvNotificationEvent : public TmvEvent<TmvObject*> {};
using TmvNotifyHandler = TmvNotificationEvent::Handler;

// --- Implementation ---

template <class... Args>
int TmvEvent<Args...>::AddHandler(const TmvHandlerId& id, Handler handler) {
  if (id.IsNull()) throw EmvQueryBuilderError(u"An event handler needs an identity");
  if (!handler) throw EmvQueryBuilderError(u"An event handler needs a callback");
  if (count_ == Capacity() && CanShrink() && holeCount_ > 8) ShrinkHandlersArray();
  if (count_ == Capacity()) ExpandHandlersArray();
  Entry& entry = handlers_[count_];
  entry.id = id;
  entry.handler = std::make_unique<Handler>(std::move(handler));
  return count_++;
}

template <class... Args>
int TmvEvent<Args...>::FindHandler(const TmvHandlerId& id, int hintIndex) const {
  if (count_ < 1 || id.IsNull()) return -1;
  if (hintIndex < 0 || hintIndex >= count_) hintIndex = count_ - 1;
  if (handlers_[hintIndex].id == id) return hintIndex;
  for (int i = 0; i < count_; ++i) {
    if (handlers_[i].id == id) return i;
  }
  return -1;
}

template <class... Args>
void TmvEvent<Args...>::RemoveHandler(const TmvHandlerId& id, int hintIndex) {
  const int index = FindHandler(id, hintIndex);
  if (index < 0) return;
  Entry& entry = handlers_[index];
  entry.id = TmvHandlerId();
  if (firingDepth_ > 0) {
    retired_.push_back(std::move(entry.handler));
  } else {
    entry.handler.reset();
  }
  if (index == count_ - 1) {
    --count_;
  } else {
    ++holeCount_;
  }
}

template <class... Args>
void TmvEvent<Args...>::Fire(Args... args) {
  struct FiringScope {
    TmvEvent* event;
    ~FiringScope() { event->AfterFiring(); }
  };
  BeforeFiring();
  FiringScope scope{this};
  // Count and the array are read anew on each step: handlers may change both.
  for (int index = 0; index < count_; ++index) {
    Handler* handler = handlers_[index].handler.get();
    if (handler) (*handler)(args...);
  }
}

template <class... Args>
void TmvEvent<Args...>::AfterFiring() {
  if (--firingDepth_ > 0) return;
  retired_.clear();
  if (holeCount_ >= 9) ShrinkHandlersArray();
}

template <class... Args>
void TmvEvent<Args...>::ExpandHandlersArray() {
  handlers_.resize(handlers_.empty() ? 16 : handlers_.size() * 2);
}

template <class... Args>
void TmvEvent<Args...>::ShrinkHandlersArray() {
  int live = 0;
  for (int i = 0; i < count_; ++i) {
    if (handlers_[i].id.IsNull()) continue;
    if (live != i) handlers_[live] = std::move(handlers_[i]);
    ++live;
  }
  for (int i = live; i < count_; ++i) handlers_[i] = Entry();
  count_ = live;
  holeCount_ = 0;
}

}  // namespace mv
