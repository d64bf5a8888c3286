// The update protocol of model objects: news of a change climbs to the top
// and is acted on once, children first, at the end of the outermost update.
#include <functional>
#include <string>
#include <vector>

#include "ModelTestSupport.h"
#include "model/ControlOwner.h"

namespace mvtest {
namespace {

using mv::TmvQueryBuilderControlOwner;

// Records when its change is acted on; can make a change of its own then.
class TRecorder : public TmvQueryBuilderControlOwner {
 public:
  TRecorder(std::string name, std::vector<std::string>& log)
      : TmvQueryBuilderControlOwner(nullptr, nullptr), name_(std::move(name)), log_(log) {}
  std::function<void()> OnSQLUpdated;

 protected:
  void DoSQLUpdated() override {
    log_.push_back(name_);
    if (auto action = std::exchange(OnSQLUpdated, nullptr)) action();
  }
  void DoAfterUpdated() override {}

 private:
  std::string name_;
  std::vector<std::string>& log_;
};

class UpdateProtocolTest : public ::testing::Test {
 protected:
  // top <- middle <- leaf, and top <- other.
  UpdateProtocolTest() {
    middle->SetUpdateParent(top.get());
    leaf->SetUpdateParent(middle.get());
    other->SetUpdateParent(top.get());
  }
  ~UpdateProtocolTest() override {
    for (auto* object : All()) object->SetUpdateParent(nullptr);
  }
  std::vector<TmvQueryBuilderControlOwner*> All() { return {leaf.get(), middle.get(), other.get(), top.get()}; }
  void ExpectAllIdle() {
    for (auto* object : All()) {
      EXPECT_FALSE(object->GetIsUpdating());
      EXPECT_EQ(object->UpdateCount(), 0);
      EXPECT_EQ(object->ParentUpdateCount(), 0);
      EXPECT_EQ(object->InternalUpdateCount(), 0);
      EXPECT_FALSE(object->SQLUpdatedPending());
    }
  }

  std::vector<std::string> log;
  mv::TmvOwned<TRecorder> top = mv::TmvCreate<TRecorder>("top", log);
  mv::TmvOwned<TRecorder> middle = mv::TmvCreate<TRecorder>("middle", log);
  mv::TmvOwned<TRecorder> leaf = mv::TmvCreate<TRecorder>("leaf", log);
  mv::TmvOwned<TRecorder> other = mv::TmvCreate<TRecorder>("other", log);
};

TEST_F(UpdateProtocolTest, NestedUpdatesActOnceChildrenFirst) {
  leaf->BeginUpdate();
  top->BeginUpdate();
  for (int i = 0; i < 3; ++i) leaf->NotifySQLUpdated();
  other->NotifySQLUpdated();
  leaf->EndUpdate();
  EXPECT_TRUE(log.empty()) << "an update is still open on the top";
  EXPECT_TRUE(leaf->GetIsUpdating());
  top->EndUpdate();
  EXPECT_EQ(log, (std::vector<std::string>{"other", "leaf", "middle", "top"}));
  ExpectAllIdle();
}

TEST_F(UpdateProtocolTest, ChangeMadeWhileActingIsActedOnInTheSameEndUpdate) {
  // The top's own change comes while the leaf's news is acted on, and the
  // leaf changes again while the top's is: the second round reaches the
  // objects below the top, whose own news was being acted on.
  leaf->OnSQLUpdated = [this] { top->NotifySQLUpdated(); };
  top->OnSQLUpdated = [this] { leaf->NotifySQLUpdated(); };
  leaf->BeginUpdate();
  leaf->NotifySQLUpdated();
  leaf->EndUpdate();
  EXPECT_EQ(log, (std::vector<std::string>{"leaf", "middle", "top", "leaf", "middle"}));
  ExpectAllIdle();
}

TEST_F(UpdateProtocolTest, MovingInsideOpenUpdatesKeepsCountersBalanced) {
  leaf->BeginUpdate();
  leaf->BeginUpdate();
  other->BeginUpdate();
  leaf->SetUpdateParent(other.get());  // from middle to other, both under top
  leaf->NotifySQLUpdated();
  middle->SetUpdateParent(nullptr);  // becomes a top of its own while top is open
  leaf->EndUpdate();
  leaf->EndUpdate();
  other->EndUpdate();
  EXPECT_EQ(log, (std::vector<std::string>{"leaf", "other", "top"}));
  ExpectAllIdle();
  // Moving out of an open tree: the subtree stays in its own updates.
  log.clear();
  leaf->BeginUpdate();
  leaf->SetUpdateParent(nullptr);
  EXPECT_EQ(leaf->InternalUpdateCount(), 1);
  EXPECT_EQ(top->InternalUpdateCount(), 0);
  leaf->NotifySQLUpdated();
  leaf->EndUpdate();
  EXPECT_EQ(log, (std::vector<std::string>{"leaf"}));
  ExpectAllIdle();
}

TEST_F(UpdateProtocolTest, EndUpdateWithoutBeginIsAnError) { EXPECT_THROW(leaf->EndUpdate(), mv::EmvQueryBuilderError); }

}  // namespace
}  // namespace mvtest
