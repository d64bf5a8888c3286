// Change notification for the builders, their format objects and the SQL
// context: a setter that changes a value calls `NotifyUpdated`; changes made
// between `BeginUpdate` and `EndUpdate` (which nest) are reported once, at the
// outermost end, and the report climbs to the parent.
//
// This is the small subset of the support library's updatable base that the
// text generation needs; the classes that derive from it switch to the full
// base by changing their base class name.
#pragma once

#include <functional>

#include "support/Class.h"

namespace mv {

class TmvSimpleUpdatable : public TmvObject {
 public:
  TmvSimpleUpdatable() = default;
  TmvSimpleUpdatable(const TmvSimpleUpdatable&) = delete;
  TmvSimpleUpdatable& operator=(const TmvSimpleUpdatable&) = delete;

  void BeginUpdate();
  void EndUpdate();
  // Marks a change; reported at once outside a batch.
  void NotifyUpdated();
  // A child reports its change; the parent counts it as its own.
  void NotifyChildUpdated(TmvSimpleUpdatable* child);

  bool GetIsUpdating() const { return updateCount_ > 0; }
  bool GetIsUpdated() const { return isUpdated_; }
  TmvSimpleUpdatable* GetParent() const { return parent_; }
  void SetParent(TmvSimpleUpdatable* parent) { parent_ = parent; }

  // Fired once per reported change, with this object as sender.
  std::function<void(TmvObject* sender)> OnUpdated;

 protected:
  virtual void DoUpdated();
  virtual void DoBeginUpdate() {}
  virtual void DoEndUpdate() {}

 private:
  int updateCount_ = 0;
  bool isUpdated_ = false;
  TmvSimpleUpdatable* parent_ = nullptr;
};

}  // namespace mv
