#include "support/UpdatablePersistent.h"

namespace mv {

MV_DEFINE_CLASS(TmvUpdatablePersistent, TmvPersistent)

TmvUpdatablePersistent::~TmvUpdatablePersistent() {
  if (!isDestroying_) {
    // Freed without the first phase. A destructor must not throw, so a
    // listener's exception ends here.
    try {
      FireDestroying();
    } catch (...) {
    }
  }
  SetParent(nullptr);
}

void TmvUpdatablePersistent::BeforeDestruction() {
  TmvPersistent::BeforeDestruction();
  if (!isDestroying_) FireDestroying();
}

TmvNotificationEvent& TmvUpdatablePersistent::GetOnDestroying() {
  if (!onDestroying_) onDestroying_ = std::make_unique<TmvNotificationEvent>();
  return *onDestroying_;
}

void TmvUpdatablePersistent::FireDestroying() {
  isDestroying_ = true;
  if (onDestroying_) onDestroying_->Fire(this);
}

}  // namespace mv
