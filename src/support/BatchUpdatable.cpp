#include "support/BatchUpdatable.h"

#include <exception>

namespace mv {

TmvNotificationEvent& TmvBatchUpdatableBase::MakeEvent(std::unique_ptr<TmvNotificationEvent>& event) {
  if (!event) event = std::make_unique<TmvNotificationEvent>();
  return *event;
}

void TmvBatchUpdatableBase::NotifyUpdated() {
  if (GetIsUpdating()) {
    isUpdated_ = true;
    return;
  }
  BeginUpdate();
  isUpdated_ = true;
  EndUpdate();
}

void TmvBatchUpdatableBase::BeginUpdate() {
  if (++updateCount_ != 1) return;
  try {
    DoBeginUpdate();
  } catch (...) {
    // The caller gets no EndUpdate to make: the batch did not open.
    --updateCount_;
    throw;
  }
}

void TmvBatchUpdatableBase::EndUpdate() {
  // An EndUpdate without its BeginUpdate is ignored rather than let the
  // count go below zero, which would silence the object for good.
  if (updateCount_ <= 0) return;
  if (updateCount_ > 1) {
    --updateCount_;
    return;
  }
  // The outermost end. DoUpdated and DoEndUpdate run with the count still at
  // 1, so changes that they or their listeners make to this object are
  // covered by the clearing below and not reported again. A listener's
  // exception passes out, but only after the batch is closed.
  std::exception_ptr failure;
  try {
    if (isUpdated_ || (updatedChildren_ && !updatedChildren_->empty())) DoUpdated();
  } catch (...) {
    failure = std::current_exception();
  }
  try {
    DoEndUpdate();
  } catch (...) {
    if (!failure) failure = std::current_exception();
  }
  isUpdated_ = false;
  ClearUpdatedChildrenList();
  --updateCount_;
  if (failure) std::rethrow_exception(failure);
}

void TmvBatchUpdatableBase::NotifyChildUpdated(TmvObject* child) {
  if (!updatedChildren_) updatedChildren_ = std::make_unique<std::vector<TmvObject*>>();
  updatedChildren_->push_back(child);
}

const std::vector<TmvObject*>& TmvBatchUpdatableBase::GetUpdatedChildren() const {
  static const std::vector<TmvObject*> kNone;
  return updatedChildren_ ? *updatedChildren_ : kNone;
}

void TmvBatchUpdatableBase::ClearUpdatedChildrenList() {
  if (updatedChildren_) updatedChildren_->clear();
}

void TmvBatchUpdatableBase::DoUpdated() {
  std::exception_ptr failure;
  try {
    GetOnUpdated().Fire(UpdateSender());
  } catch (...) {
    failure = std::current_exception();
  }
  if (ImvBatchUpdatable* parent = parent_) {
    parent->BeginUpdate();
    try {
      // The changed descendants travel up, then this object if it changed
      // itself; the parent's own flag stays clear.
      if (updatedChildren_) {
        for (TmvObject* child : *updatedChildren_) parent->NotifyChildUpdated(child);
      }
      if (isUpdated_) parent->NotifyChildUpdated(UpdateSender());
    } catch (...) {
      parent->EndUpdate();
      throw;
    }
    parent->EndUpdate();
  }
  if (failure) std::rethrow_exception(failure);
}

void TmvBatchUpdatableBase::DoBeginUpdate() {
  if (onBeginUpdate_) onBeginUpdate_->Fire(UpdateSender());
}

void TmvBatchUpdatableBase::DoEndUpdate() {
  if (onEndUpdate_) onEndUpdate_->Fire(UpdateSender());
}

}  // namespace mv
