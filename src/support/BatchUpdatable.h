// Batched change notification along a chain of parents.
//
// A change raises a flag (`NotifyUpdated`); changes made between
// `BeginUpdate` and `EndUpdate` (which nest) are reported once, when the
// outermost batch ends; and a report climbs the parent chain as a list of the
// changed objects, so a listener at the top hears of a change anywhere below
// it when the outermost batch up there ends.
//
// `ImvBatchUpdatable` is the interface by which a child reaches its parent.
// Such references never own: the parent pointer is weak, and the interface
// cannot be deleted through.
//
// `TmvBatchUpdatableBase` carries the state and the algorithms; the three
// updatable classes (persistent, collection item, collection) mix it into
// their framework base.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <vector>

#include "support/Event.h"

namespace mv {

class ImvBatchUpdatable {
 public:
  virtual TmvNotificationEvent& GetOnUpdated() = 0;
  virtual TmvNotificationEvent& GetOnBeginUpdate() = 0;
  virtual TmvNotificationEvent& GetOnEndUpdate() = 0;
  virtual bool GetIsUpdating() const = 0;
  virtual bool GetIsUpdated() const = 0;
  virtual ImvBatchUpdatable* GetParent() const = 0;
  virtual void SetParent(ImvBatchUpdatable* parent) = 0;
  // To be called after each change.
  virtual void NotifyUpdated() = 0;
  virtual void BeginUpdate() = 0;
  virtual void EndUpdate() = 0;
  // Called by a child on its parent with the object that changed.
  virtual void NotifyChildUpdated(TmvObject* child) = 0;

 protected:
  ImvBatchUpdatable() = default;
  ImvBatchUpdatable(const ImvBatchUpdatable&) = default;
  ImvBatchUpdatable& operator=(const ImvBatchUpdatable&) = default;
  ~ImvBatchUpdatable() = default;
};

// The body of a property setter: stores a changed value in a field of
// `object` and reports the change; an equal value changes nothing.
template <class T, class V>
void SetValueAndNotify(ImvBatchUpdatable& object, T& field, const V& value) {
  if (field == value) return;
  field = value;
  object.NotifyUpdated();
}

class TmvBatchUpdatableBase : public ImvBatchUpdatable {
 public:
  TmvBatchUpdatableBase() = default;
  TmvBatchUpdatableBase(const TmvBatchUpdatableBase&) = delete;
  TmvBatchUpdatableBase& operator=(const TmvBatchUpdatableBase&) = delete;

  // The events are made on first access.
  TmvNotificationEvent& GetOnUpdated() override { return MakeEvent(onUpdated_); }
  TmvNotificationEvent& GetOnBeginUpdate() override { return MakeEvent(onBeginUpdate_); }
  TmvNotificationEvent& GetOnEndUpdate() override { return MakeEvent(onEndUpdate_); }
  bool GetIsUpdating() const override { return updateCount_ > 0; }
  bool GetIsUpdated() const override { return isUpdated_; }
  ImvBatchUpdatable* GetParent() const override { return parent_; }
  void SetParent(ImvBatchUpdatable* parent) override { parent_ = parent; }
  void NotifyUpdated() override;
  void BeginUpdate() override;
  void EndUpdate() override;
  void NotifyChildUpdated(TmvObject* child) override;

  // Depth of open batches.
  int32_t GetUpdateCount() const { return updateCount_; }
  // The objects reported by descendants in the open batch, in order; the
  // same object may stand more than once.
  const std::vector<TmvObject*>& GetUpdatedChildren() const;
  void ClearUpdatedChildrenList();
  // Whether an event was made (asked for) already; for a caller that must
  // not make one.
  bool HasOnUpdated() const { return onUpdated_ != nullptr; }

 protected:
  ~TmvBatchUpdatableBase() = default;

  // The object that stands for this one as sender and as changed child.
  virtual TmvObject* UpdateSender() = 0;

  // Runs at the end of the outermost batch that saw a change, before
  // OnEndUpdate: fires OnUpdated, then reports the changed objects to the
  // parent inside one batch of the parent's. Subclasses act on the change
  // and call the inherited one last.
  virtual void DoUpdated();
  // Fires OnBeginUpdate when the outermost batch opens.
  virtual void DoBeginUpdate();
  // Fires OnEndUpdate when the outermost batch closes.
  virtual void DoEndUpdate();

 private:
  static TmvNotificationEvent& MakeEvent(std::unique_ptr<TmvNotificationEvent>& event);

  std::unique_ptr<TmvNotificationEvent> onBeginUpdate_;
  int32_t updateCount_ = 0;
  std::unique_ptr<TmvNotificationEvent> onUpdated_;
  bool isUpdated_ = false;
  std::unique_ptr<TmvNotificationEvent> onEndUpdate_;
  ImvBatchUpdatable* parent_ = nullptr;
  // Made on first need: most objects never have a changed child.
  std::unique_ptr<std::vector<TmvObject*>> updatedChildren_;
};

// Opens a batch on an object for the length of a scope:
//
//   { TmvUpdateBatch batch(*format); format->SetA(1); format->SetB(2); }   // one report
//
// A listener's exception from the closing EndUpdate passes out, unless the
// scope is left by another exception already (then the batch is closed and
// the listener's exception dropped, since two cannot travel at once).
class TmvUpdateBatch {
 public:
  explicit TmvUpdateBatch(ImvBatchUpdatable& object)
      : object_(object), exceptionsAtStart_(std::uncaught_exceptions()) {
    object_.BeginUpdate();
  }
  ~TmvUpdateBatch() noexcept(false) {
    if (std::uncaught_exceptions() > exceptionsAtStart_) {
      try {
        object_.EndUpdate();
      } catch (...) {
      }
    } else {
      object_.EndUpdate();
    }
  }
  TmvUpdateBatch(const TmvUpdateBatch&) = delete;
  TmvUpdateBatch& operator=(const TmvUpdateBatch&) = delete;

 private:
  ImvBatchUpdatable& object_;
  int exceptionsAtStart_;
};

}  // namespace mv
