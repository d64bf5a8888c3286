// The base of almost every object of the engine that can change: the SQL
// context, builders and their formats, metadata, options, the query model.
// It is a persistent object with batched change notification (see
// BatchUpdatable.h) and an OnDestroying event.
//
//   class TmvRightMarginOption : public TmvUpdatablePersistent {
//    public:
//     void SetValue(int v) { if (v != value_) { value_ = v; NotifyUpdated(); } }
//   };
//
// Destruction: free it through `TmvOwned` / `TmvDeleter` (or as an owned
// child of an owner that does), so that `BeforeDestruction` sets IsDestroying
// and fires OnDestroying while the object is still whole. An object deleted
// without the first phase still fires OnDestroying, from this base's
// destructor, when its derived parts are already gone.
#pragma once

#include <memory>

#include "support/BatchUpdatable.h"
#include "support/Persistent.h"

namespace mv {

class ImvDestroyNotification {
 public:
  virtual bool GetIsDestroying() const = 0;
  virtual TmvNotificationEvent& GetOnDestroying() = 0;

 protected:
  ImvDestroyNotification() = default;
  ImvDestroyNotification(const ImvDestroyNotification&) = default;
  ImvDestroyNotification& operator=(const ImvDestroyNotification&) = default;
  ~ImvDestroyNotification() = default;
};

class TmvUpdatablePersistent : public TmvPersistent,
                               public TmvBatchUpdatableBase,
                               public ImvDestroyNotification {
  MV_DECLARE_CLASS()
 public:
  TmvUpdatablePersistent() = default;
  ~TmvUpdatablePersistent() override;

  // First destruction phase: IsDestroying := true, then OnDestroying fires
  // (if anybody asked for the event). Subclasses call the inherited one.
  void BeforeDestruction() override;

  bool GetIsDestroying() const override { return isDestroying_; }
  // Made on first access.
  TmvNotificationEvent& GetOnDestroying() override;

 protected:
  TmvObject* UpdateSender() override { return this; }

 private:
  void FireDestroying();

  bool isDestroying_ = false;
  std::unique_ptr<TmvNotificationEvent> onDestroying_;
};

}  // namespace mv
