#include "support/UpdatablePersistent.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Thrown.h"

using namespace mv;

namespace {

class Node : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  explicit Node(std::string name) : name(std::move(name)) {}
  std::string name;
  int doUpdatedCalls = 0;
  std::vector<TmvObject*> childrenSeen;  // UpdatedChildren as DoUpdated saw them

 protected:
  void DoUpdated() override {
    ++doUpdatedCalls;
    childrenSeen = GetUpdatedChildren();
    TmvUpdatablePersistent::DoUpdated();
  }
};
MV_DEFINE_CLASS(Node, TmvUpdatablePersistent)

// Records the three events of one or more objects, in order.
struct Recorder {
  std::vector<std::string> log;
  void Watch(Node& node) {
    node.GetOnBeginUpdate().AddHandler(TmvHandlerId(this, 1 + 3 * watched),
                                       [this](TmvObject* s) { log.push_back(Name(s) + ":begin"); });
    node.GetOnUpdated().AddHandler(TmvHandlerId(this, 2 + 3 * watched),
                                   [this](TmvObject* s) { log.push_back(Name(s) + ":updated"); });
    node.GetOnEndUpdate().AddHandler(TmvHandlerId(this, 3 + 3 * watched),
                                     [this](TmvObject* s) { log.push_back(Name(s) + ":end"); });
    ++watched;
  }
  static std::string Name(TmvObject* sender) { return static_cast<Node*>(sender)->name; }
  int watched = 0;
};

using Log = std::vector<std::string>;

}  // namespace

TEST(UpdatablePersistent, BatchesFireBeginUpdatedEndOnceAtTheOutermostEnd) {
  // Each script: 'B' BeginUpdate, 'E' EndUpdate, 'N' NotifyUpdated.
  const struct {
    const char* script;
    Log log;
    int doUpdated;
  } cases[] = {
      {"N", {"n:begin", "n:updated", "n:end"}, 1},
      {"BNNNE", {"n:begin", "n:updated", "n:end"}, 1},
      {"BE", {"n:begin", "n:end"}, 0},
      {"BBNEBNEE", {"n:begin", "n:updated", "n:end"}, 1},
      {"E", {}, 0},  // an unbalanced end is ignored
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.script);
    Node node("n");
    Recorder rec;
    rec.Watch(node);
    for (const char* op = c.script; *op; ++op) {
      if (*op == 'B') node.BeginUpdate();
      if (*op == 'E') node.EndUpdate();
      if (*op == 'N') node.NotifyUpdated();
      // Nothing but the begin shows before the outermost end.
      if (node.GetIsUpdating()) {
        EXPECT_EQ(rec.log, Log{"n:begin"});
      }
    }
    EXPECT_EQ(rec.log, c.log);
    EXPECT_EQ(node.doUpdatedCalls, c.doUpdated);
    EXPECT_FALSE(node.GetIsUpdated());
    EXPECT_EQ(node.GetUpdateCount(), 0);
  }
}

TEST(UpdatablePersistent, ChildChangeReachesTheParentAsAListOfChangedObjects) {
  Node parent("p"), child("c");
  child.SetParent(&parent);
  Recorder rec;
  rec.Watch(parent);
  rec.Watch(child);
  child.NotifyUpdated();
  EXPECT_EQ(rec.log, (Log{"c:begin", "c:updated", "p:begin", "p:updated", "p:end", "c:end"}));
  EXPECT_EQ(parent.childrenSeen, std::vector<TmvObject*>{&child});
  // The parent's own flag stays clear and its list is emptied at its end.
  EXPECT_FALSE(parent.GetIsUpdated());
  EXPECT_TRUE(parent.GetUpdatedChildren().empty());
}

TEST(UpdatablePersistent, GrandchildChangeInAGrandparentBatchFiresOnceAtItsEnd) {
  Node grandparent("g"), parent("p"), child("c");
  parent.SetParent(&grandparent);
  child.SetParent(&parent);
  Recorder rec;
  rec.Watch(grandparent);
  grandparent.BeginUpdate();
  child.NotifyUpdated();
  child.NotifyUpdated();
  EXPECT_EQ(rec.log, Log{"g:begin"});
  EXPECT_EQ(grandparent.doUpdatedCalls, 0);
  // Everything collects at the grandparent while its batch is open; the
  // grandchild itself travels up, not the parent in between.
  EXPECT_EQ(grandparent.GetUpdatedChildren(), (std::vector<TmvObject*>{&child, &child}));
  grandparent.EndUpdate();
  EXPECT_EQ(rec.log, (Log{"g:begin", "g:updated", "g:end"}));
  EXPECT_EQ(grandparent.doUpdatedCalls, 1);
  EXPECT_EQ(grandparent.childrenSeen, (std::vector<TmvObject*>{&child, &child}));
  EXPECT_EQ(parent.doUpdatedCalls, 2);
}

TEST(UpdatablePersistent, OwnChangeAndChildChangeTravelUpTogether) {
  Node grandparent("g"), parent("p"), child("c");
  parent.SetParent(&grandparent);
  child.SetParent(&parent);
  parent.BeginUpdate();
  child.NotifyUpdated();
  parent.NotifyUpdated();
  parent.EndUpdate();
  EXPECT_EQ(grandparent.doUpdatedCalls, 1);
  EXPECT_EQ(grandparent.childrenSeen, (std::vector<TmvObject*>{&child, &parent}));
}

TEST(UpdatablePersistent, ChangesMadeByListenersAtTheEndAreNotReportedAgain) {
  Node node("n");
  int updated = 0;
  node.GetOnUpdated().AddHandler(TmvHandlerId::Unique(), [&](TmvObject*) {
    ++updated;
    node.NotifyUpdated();  // still inside the batch: only the flag, cleared at the end
  });
  node.NotifyUpdated();
  EXPECT_EQ(updated, 1);
  EXPECT_FALSE(node.GetIsUpdated());
  node.NotifyUpdated();
  EXPECT_EQ(updated, 2);
}

TEST(UpdatablePersistent, ListenerExceptionPassesOutAndTheBatchIsClosed) {
  Node parent("p"), node("n");
  node.SetParent(&parent);
  int ends = 0;
  node.GetOnUpdated().AddHandler(TmvHandlerId::Unique(),
                                 [](TmvObject*) { throw EmvQueryBuilderError(u"listener failed"); });
  node.GetOnEndUpdate().AddHandler(TmvHandlerId::Unique(), [&](TmvObject*) { ++ends; });
  EXPECT_THROW(node.NotifyUpdated(), EmvQueryBuilderError);
  EXPECT_EQ(ends, 1);
  EXPECT_FALSE(node.GetIsUpdating());
  EXPECT_FALSE(node.GetIsUpdated());
  EXPECT_EQ(parent.doUpdatedCalls, 1);  // the parent still heard of it
}

TEST(UpdatablePersistent, UpdateBatchScopeReportsOnceAndClosesOnException) {
  Node node("n");
  {
    TmvUpdateBatch batch(node);
    node.NotifyUpdated();
    node.NotifyUpdated();
    EXPECT_TRUE(node.GetIsUpdating());
  }
  EXPECT_EQ(node.doUpdatedCalls, 1);
  EXPECT_FALSE(node.GetIsUpdating());
  try {
    TmvUpdateBatch batch(node);
    node.NotifyUpdated();
    throw EmvQueryBuilderError(u"setter failed");
  } catch (const EmvQueryBuilderError&) {
  }
  EXPECT_FALSE(node.GetIsUpdating());
  EXPECT_EQ(node.doUpdatedCalls, 2);
  // A listener's exception at the end of the scope passes out.
  node.GetOnEndUpdate().AddHandler(TmvHandlerId::Unique(), [](TmvObject*) { throw EConvertError(u"listener"); });
  EXPECT_THROW({ TmvUpdateBatch batch(node); }, EConvertError);
  EXPECT_FALSE(node.GetIsUpdating());
}

TEST(UpdatablePersistent, OnDestroyingFiresOnceWithOrWithoutTheFirstPhase) {
  std::vector<std::string> log;
  auto node = TmvCreate<Node>("n");
  node->GetOnDestroying().AddHandler(TmvHandlerId::Unique(), [&](TmvObject* sender) {
    auto* n = static_cast<Node*>(sender);
    // In the first phase the object is whole: its most-derived class still answers.
    log.push_back(std::string(sender->ClassName()) + ":" + n->name + (n->GetIsDestroying() ? ":destroying" : ""));
  });
  EXPECT_FALSE(node->GetIsDestroying());
  node.reset();
  EXPECT_EQ(log, Log{"Node:n:destroying"});
  int fired = 0;
  {
    Node plain("plain");
    plain.GetOnDestroying().AddHandler(TmvHandlerId::Unique(), [&](TmvObject*) { ++fired; });
  }
  EXPECT_EQ(fired, 1);
}

TEST(UpdatablePersistent, DestroyingListenerCanDetachItsHandlers) {
  // A typical listener: it holds a weak reference and drops it, together
  // with its handler on another event of the dying object.
  auto node = TmvCreate<Node>("n");
  Node* watched = node.get();
  const TmvHandlerId onUpdatedId = TmvHandlerId::Unique();
  node->GetOnUpdated().AddHandler(onUpdatedId, [](TmvObject*) {});
  node->GetOnDestroying().AddHandler(TmvHandlerId::Unique(), [&](TmvObject*) {
    watched->GetOnUpdated().RemoveHandler(onUpdatedId);
    watched = nullptr;
  });
  node.reset();
  EXPECT_EQ(watched, nullptr);
}

TEST(Persistent, AssignOfAnUnknownClassRaises) {
  Node a("a"), b("b");
  EXPECT_EQ(mvtest::ThrownMessage<EConvertError>([&] { a.Assign(&b); }), u"Cannot assign a Node to a Node");
  EXPECT_EQ(mvtest::ThrownMessage<EConvertError>([&] { a.Assign(nullptr); }), u"Cannot assign a nil to a Node");
}
