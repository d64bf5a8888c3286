#include "support/Event.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Persistent.h"

using namespace mv;

namespace {

// Exposes the protected array operations of the event for inspection.
class ProbeEvent : public TmvNotificationEvent {
 public:
  using TmvNotificationEvent::ShrinkHandlersArray;
};

struct Listener {
  std::vector<std::string>* log;
  std::string name;
  void Handle(TmvObject*) { log->push_back(name); }
  void Other(TmvObject*) { log->push_back(name + ".other"); }
};

TmvHandlerId Key(const void* owner, uintptr_t key) { return TmvHandlerId(owner, key); }

}  // namespace

TEST(HandlerId, EqualWhenBothHalvesAre) {
  Listener a{nullptr, "a"}, b{nullptr, "b"};
  EXPECT_EQ(TmvHandlerId::Method(&a, &Listener::Handle), TmvHandlerId::Method(&a, &Listener::Handle));
  EXPECT_NE(TmvHandlerId::Method(&a, &Listener::Handle), TmvHandlerId::Method(&a, &Listener::Other));
  EXPECT_NE(TmvHandlerId::Method(&a, &Listener::Handle), TmvHandlerId::Method(&b, &Listener::Handle));
  EXPECT_NE(Key(&a, 1), Key(&a, 2));
  EXPECT_TRUE(TmvHandlerId().IsNull());
  EXPECT_FALSE(Key(nullptr, 1).IsNull());
  EXPECT_NE(TmvHandlerId::Unique(), TmvHandlerId::Unique());
}

TEST(Event, FiresInOrderOfAddingWithTheSender) {
  std::vector<std::string> log;
  Listener a{&log, "a"}, b{&log, "b"};
  TmvNotificationEvent event;
  TmvObject* seen = nullptr;
  TmvPersistent sender;
  EXPECT_EQ(event.AddHandler(&a, &Listener::Handle), 0);
  EXPECT_EQ(event.AddHandler(Key(&b, 7), [&](TmvObject* s) { seen = s, log.push_back("lambda"); }), 1);
  EXPECT_EQ(event.AddHandler(&b, &Listener::Handle), 2);
  event.Fire(&sender);
  EXPECT_EQ(log, (std::vector<std::string>{"a", "lambda", "b"}));
  EXPECT_EQ(seen, &sender);
}

TEST(Event, FindUsesTheHintThenSearchesFromTheFirst) {
  std::vector<std::string> log;
  Listener a{&log, "a"}, b{&log, "b"};
  TmvNotificationEvent event;
  event.AddHandler(&a, &Listener::Handle);
  event.AddHandler(&b, &Listener::Handle);
  event.AddHandler(&a, &Listener::Other);
  EXPECT_EQ(event.FindHandler(&b, &Listener::Handle), 1);
  EXPECT_EQ(event.FindHandler(&b, &Listener::Handle, 1), 1);
  EXPECT_EQ(event.FindHandler(&b, &Listener::Handle, 0), 1);   // wrong hint
  EXPECT_EQ(event.FindHandler(&b, &Listener::Handle, 99), 1);  // beyond the end
  EXPECT_EQ(event.FindHandler(&a, &Listener::Other), 2);
  EXPECT_EQ(event.FindHandler(&b, &Listener::Other), -1);
  EXPECT_EQ(event.FindHandler(TmvHandlerId()), -1);  // a hole is never found
  TmvNotificationEvent empty;
  EXPECT_EQ(empty.FindHandler(&a, &Listener::Handle), -1);
}

TEST(Event, RemovingLeavesAHoleExceptAtTheEnd) {
  std::vector<std::string> log;
  Listener a{&log, "a"}, b{&log, "b"}, c{&log, "c"};
  TmvNotificationEvent event;
  event.AddHandler(&a, &Listener::Handle);
  event.AddHandler(&b, &Listener::Handle);
  const int hint = event.AddHandler(&c, &Listener::Handle);
  event.RemoveHandler(&b, &Listener::Handle);
  EXPECT_EQ(event.Count(), 3);
  EXPECT_EQ(event.HoleCount(), 1);
  event.RemoveHandler(&c, &Listener::Handle, hint);
  EXPECT_EQ(event.Count(), 2);
  EXPECT_EQ(event.HoleCount(), 1);
  event.RemoveHandler(&c, &Listener::Handle);  // not there: nothing happens
  EXPECT_EQ(event.Count(), 2);
  event.Fire(nullptr);
  EXPECT_EQ(log, std::vector<std::string>{"a"});
  EXPECT_FALSE(event.IsEmpty());
  event.RemoveHandler(&a, &Listener::Handle);
  EXPECT_TRUE(event.IsEmpty());
}

TEST(Event, HandlerThatRemovesItselfDoesNotStopTheOthers) {
  std::vector<std::string> log;
  TmvNotificationEvent event;
  const TmvHandlerId self = TmvHandlerId::Unique();
  event.AddHandler(Key(&log, 1), [&](TmvObject*) { log.push_back("first"); });
  // The lambda's captures must stay valid while it runs after its removal.
  std::string name = "self";
  event.AddHandler(self, [&event, &log, self, name](TmvObject*) {
    event.RemoveHandler(self);
    log.push_back(name);
  });
  event.AddHandler(Key(&log, 3), [&](TmvObject*) { log.push_back("third"); });
  event.Fire(nullptr);
  event.Fire(nullptr);
  EXPECT_EQ(log, (std::vector<std::string>{"first", "self", "third", "first", "third"}));
}

TEST(Event, RemovedBeforeReachedIsNotCalledAddedIsCalledInTheSameFiring) {
  std::vector<std::string> log;
  TmvNotificationEvent event;
  const TmvHandlerId victim = Key(&log, 2);
  event.AddHandler(Key(&log, 1), [&](TmvObject*) {
    log.push_back("remover");
    event.RemoveHandler(victim);
    event.AddHandler(Key(&log, 4), [&](TmvObject*) { log.push_back("added"); });
  });
  event.AddHandler(victim, [&](TmvObject*) { log.push_back("victim"); });
  event.Fire(nullptr);
  EXPECT_EQ(log, (std::vector<std::string>{"remover", "added"}));
}

TEST(Event, GrowingDuringAFiringKeepsTheRunningHandlerIntact) {
  TmvNotificationEvent event;
  std::vector<int> calls;
  // The first handler adds enough handlers to make the array grow twice
  // while it runs, then reads its own captured state.
  std::vector<int> big(100, 7);
  event.AddHandler(TmvHandlerId::Unique(), [&event, &calls, big](TmvObject*) {
    for (int i = 0; i < 40; ++i) event.AddHandler(TmvHandlerId::Unique(), [&calls, i](TmvObject*) { calls.push_back(i); });
    calls.push_back(big[99]);
  });
  event.Fire(nullptr);
  EXPECT_EQ(event.Capacity(), 64);
  ASSERT_EQ(calls.size(), 41u);  // the running one, then all 40 added ones
  EXPECT_EQ(calls[0], 7);
  EXPECT_EQ(calls[40], 39);
}

TEST(Event, NinthHoleIsCompactedAfterTheFiringInWhichItArose) {
  std::vector<int> calls;
  TmvNotificationEvent event;
  for (int i = 0; i < 12; ++i) event.AddHandler(Key(&calls, i + 1), [&calls, i](TmvObject*) { calls.push_back(i); });
  for (int i = 0; i < 8; ++i) event.RemoveHandler(Key(&calls, i + 1));
  EXPECT_EQ(event.HoleCount(), 8);
  // The ninth removal happens inside a firing: no compaction until it ends.
  int countDuringFiring = -1, holesDuringFiring = -1;
  event.AddHandler(Key(&calls, 100), [&](TmvObject*) {
    event.RemoveHandler(Key(&calls, 9));
    countDuringFiring = event.Count();
    holesDuringFiring = event.HoleCount();
    EXPECT_FALSE(event.CanShrink());
  });
  event.Fire(nullptr);
  EXPECT_EQ(countDuringFiring, 13);
  EXPECT_EQ(holesDuringFiring, 9);
  EXPECT_EQ(event.HoleCount(), 0);
  EXPECT_EQ(event.Count(), 4);
  EXPECT_EQ(event.Capacity(), 16);  // compaction keeps the length
  EXPECT_TRUE(event.CanShrink());
  // Order is kept by the compaction, and the hint of the last one moved.
  calls.clear();
  event.Fire(nullptr);
  EXPECT_EQ(calls, (std::vector<int>{9, 10, 11}));
  EXPECT_EQ(event.FindHandler(Key(&calls, 100)), 3);
}

TEST(Event, ArrayGrowsFrom16ByDoublingAndCompactsPastEightHoles) {
  TmvNotificationEvent event;
  EXPECT_EQ(event.Capacity(), 0);
  for (int i = 0; i < 16; ++i) event.AddHandler(Key(&event, i + 1), [](TmvObject*) {});
  EXPECT_EQ(event.Capacity(), 16);
  // Eight holes stay through a firing.
  for (int i = 0; i < 8; ++i) event.RemoveHandler(Key(&event, i + 1));
  event.Fire(nullptr);
  EXPECT_EQ(event.HoleCount(), 8);
  EXPECT_EQ(event.Count(), 16);
  // Adding to a full array with nine holes compacts instead of growing: the
  // seven live ones move down, the new one after them.
  event.RemoveHandler(Key(&event, 9));
  EXPECT_EQ(event.AddHandler(Key(&event, 50), [](TmvObject*) {}), 7);
  EXPECT_EQ(event.Capacity(), 16);
  EXPECT_EQ(event.HoleCount(), 0);
  for (int i = 0; i < 9; ++i) event.AddHandler(Key(&event, 100 + i), [](TmvObject*) {});
  EXPECT_EQ(event.Capacity(), 32);

  // A manual shrink keeps order and length.
  std::vector<int> calls;
  ProbeEvent probe;
  for (int i = 0; i < 5; ++i) probe.AddHandler(Key(&calls, i + 1), [&calls, i](TmvObject*) { calls.push_back(i); });
  probe.RemoveHandler(Key(&calls, 2));
  probe.RemoveHandler(Key(&calls, 4));
  probe.ShrinkHandlersArray();
  EXPECT_EQ(probe.Count(), 3);
  EXPECT_EQ(probe.HoleCount(), 0);
  EXPECT_EQ(probe.Capacity(), 16);
  probe.Fire(nullptr);
  EXPECT_EQ(calls, (std::vector<int>{0, 2, 4}));
}

TEST(Event, ExceptionPassesOutAndTheFiringIsClosed) {
  TmvNotificationEvent event;
  for (int i = 0; i < 10; ++i) event.AddHandler(Key(&event, i + 1), [](TmvObject*) {});
  event.AddHandler(Key(&event, 99), [&](TmvObject*) {
    for (int i = 0; i < 9; ++i) event.RemoveHandler(Key(&event, i + 1));
    throw EmvQueryBuilderError(u"boom");
  });
  EXPECT_THROW(event.Fire(nullptr), EmvQueryBuilderError);
  EXPECT_TRUE(event.CanShrink());
  EXPECT_EQ(event.HoleCount(), 0);  // AfterFiring ran
  EXPECT_EQ(event.Count(), 2);
}

TEST(Event, NestedFiringDefersCompactionToTheOutermost) {
  TmvNotificationEvent event;
  int depth = 0;
  std::vector<int> calls;
  for (int i = 0; i < 10; ++i) event.AddHandler(Key(&event, i + 1), [&calls, i](TmvObject*) { calls.push_back(i); });
  event.AddHandler(Key(&event, 50), [&](TmvObject*) {
    if (depth++ > 0) return;
    for (int i = 0; i < 9; ++i) event.RemoveHandler(Key(&event, i + 1));
    event.Fire(nullptr);  // the inner firing ends while the outer one goes on
    EXPECT_EQ(event.HoleCount(), 9);
  });
  event.AddHandler(Key(&event, 51), [&](TmvObject*) { calls.push_back(51); });
  event.Fire(nullptr);
  EXPECT_EQ(event.HoleCount(), 0);
  // Outer: 0..9, then the nesting handler; inner: 9 and 51; outer goes on with 51.
  EXPECT_EQ(calls, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 51, 51}));
}

TEST(Event, RejectsAHandlerWithoutIdentityOrCallback) {
  TmvNotificationEvent event;
  EXPECT_THROW(event.AddHandler(TmvHandlerId(), [](TmvObject*) {}), EmvQueryBuilderError);
  EXPECT_THROW(event.AddHandler(TmvHandlerId::Unique(), TmvNotifyHandler()), EmvQueryBuilderError);
  EXPECT_EQ(event.Count(), 0);
}

TEST(Event, EventsWithMoreArguments) {
  TmvEvent<TmvObject*, int, bool&> event;
  event.AddHandler(TmvHandlerId::Unique(), [](TmvObject*, int value, bool& visible) { visible = value > 2; });
  bool visible = true;
  event.Fire(nullptr, 1, visible);
  EXPECT_FALSE(visible);
  event.Fire(nullptr, 3, visible);
  EXPECT_TRUE(visible);
}
