#include "sqlgen/SimpleUpdatable.h"

namespace mv {

void TmvSimpleUpdatable::BeginUpdate() {
  if (updateCount_++ == 0) DoBeginUpdate();
  if (parent_) parent_->BeginUpdate();
}

void TmvSimpleUpdatable::EndUpdate() {
  // The parent's batch closes after ours, so it hears of our change first.
  if (--updateCount_ == 0) {
    DoEndUpdate();
    if (isUpdated_) {
      isUpdated_ = false;
      DoUpdated();
    }
  }
  if (parent_) parent_->EndUpdate();
}

void TmvSimpleUpdatable::NotifyUpdated() {
  if (updateCount_ > 0) {
    isUpdated_ = true;
    return;
  }
  DoUpdated();
}

void TmvSimpleUpdatable::NotifyChildUpdated(TmvSimpleUpdatable*) { NotifyUpdated(); }

void TmvSimpleUpdatable::DoUpdated() {
  if (OnUpdated) OnUpdated(this);
  if (parent_) parent_->NotifyChildUpdated(this);
}

}  // namespace mv
