// Way points and way lists: the reference rules, iterative release, and the
// process-wide pools used from several threads.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "frontend/WayPoint.h"

namespace {

using mv::TmvWayPoint;
using mv::TmvWayPointsList;
using mv::WayPointCache;

int64_t Live() { return mv::TmvQBWayPointsCache::LiveRecordsOfThisThread(); }

TEST(TmvWayPoint, ANewPointTakesAReferenceOnItsPrevAndCopiesItsTokenIndex) {
  const int64_t before = Live();
  TmvWayPoint* root = WayPointCache().Get(nullptr, 0);
  EXPECT_EQ(root->RefCount, 0);
  EXPECT_EQ(root->TokenIndex, -1);
  EXPECT_EQ(root->Choice, 0);
  EXPECT_EQ(root->Prev, nullptr);
  root->TokenIndex = 4;
  TmvWayPoint* next = WayPointCache().Get(root, 3);
  EXPECT_EQ(root->RefCount, 1);
  EXPECT_EQ(next->TokenIndex, 4);
  EXPECT_EQ(next->Choice, 3);
  EXPECT_EQ(next->Prev, root);
  EXPECT_EQ(Live(), before + 2);
  // Put frees the record and releases its Prev, the last reference on root.
  WayPointCache().Put(next);
  EXPECT_EQ(Live(), before);
}

TEST(TmvWayPoint, ReleaseStopsAtTheFirstSharedPoint) {
  const int64_t before = Live();
  TmvWayPointsList a, b;
  TmvWayPoint* root = WayPointCache().Get(nullptr, 0);
  TmvWayPoint* shared = WayPointCache().Get(root, 1);
  a.Add(WayPointCache().Get(shared, 2));
  b.Add(WayPointCache().Get(shared, 3));
  EXPECT_EQ(shared->RefCount, 2);
  a.Clear();
  EXPECT_EQ(shared->RefCount, 1);
  EXPECT_EQ(root->RefCount, 1);
  EXPECT_EQ(Live(), before + 3);
  b.Clear();
  EXPECT_EQ(Live(), before);
}

TEST(TmvWayPoint, AVeryLongWayIsReleasedWithoutRecursion) {
  const int64_t before = Live();
  TmvWayPointsList list;
  TmvWayPoint* tip = WayPointCache().Get(nullptr, 0);
  for (int i = 0; i < 2'000'000; ++i) tip = WayPointCache().Get(tip, i & 1);
  list.Add(tip);
  EXPECT_EQ(Live(), before + 2'000'001);
  list.Clear();
  EXPECT_EQ(Live(), before);
}

TEST(TmvWayPointsList, CountsReferencesOfEveryOperation) {
  const int64_t before = Live();
  {
    TmvWayPointsList list, other;
    TmvWayPoint* p = WayPointCache().Get(nullptr, 1);
    TmvWayPoint* q = WayPointCache().Get(nullptr, 2);
    list.Add(p);
    list.Insert(0, q);
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(list[0], q);
    EXPECT_EQ(p->RefCount, 1);

    other.AddFrom(list);
    EXPECT_EQ(p->RefCount, 2);
    other.AddFrom(list);
    EXPECT_EQ(other.Count(), 4);
    EXPECT_EQ(q->RefCount, 3);

    other.CopyFrom(list);
    EXPECT_EQ(other.Count(), 2);
    EXPECT_EQ(q->RefCount, 2);

    TmvWayPointsList moved;
    moved.MoveFrom(other);
    EXPECT_TRUE(other.IsEmpty());
    EXPECT_EQ(moved.Count(), 2);
    EXPECT_EQ(moved[0], q);
    EXPECT_EQ(q->RefCount, 2) << "moving touches no count";

    moved.Delete(0);
    EXPECT_EQ(q->RefCount, 1);
    EXPECT_EQ(moved[0], p);

    // Writing an item stores the pointer and nothing else.
    moved.SetItems(0, q);
    EXPECT_EQ(q->RefCount, 1);
    EXPECT_EQ(p->RefCount, 2);
    moved.SetItems(0, p);
  }
  EXPECT_EQ(Live(), before) << "the lists released everything when they went";
}

TEST(TmvWayPointsList, AddFromSkipsNullItems) {
  TmvWayPointsList src, dest;
  TmvWayPoint* p = WayPointCache().Get(nullptr, 0);
  src.Add(p);
  src.Add(p);
  src.SetItems(1, nullptr);
  --p->RefCount;  // the slot written with null held one
  dest.AddFrom(src);
  EXPECT_EQ(dest.Count(), 1);
  EXPECT_EQ(p->RefCount, 2);
  src.Raw().pop_back();
  src.Clear();
  dest.Clear();
}

TEST(TmvWayPointsList, FilterKeepsTheOrderOfTheSurvivors) {
  const int64_t before = Live();
  TmvWayPointsList list;
  for (int i = 0; i < 10; ++i) list.Add(WayPointCache().Get(nullptr, i));
  list.Filter([](TmvWayPoint* p) { return p->Choice % 3 != 0; });
  ASSERT_EQ(list.Count(), 6);
  const int expected[] = {1, 2, 4, 5, 7, 8};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(list[i]->Choice, expected[i]);
  EXPECT_EQ(Live(), before + 6);
  list.Clear();
  EXPECT_EQ(Live(), before);
}

TEST(WayPointListCache, GivesEmptyListsAndTakesThemBackCleared) {
  const int64_t before = Live();
  TmvWayPointsList* list = mv::WayPointListCache().Get();
  EXPECT_TRUE(list->IsEmpty());
  list->Add(WayPointCache().Get(nullptr, 0));
  mv::WayPointListCache().Put(list);
  EXPECT_EQ(Live(), before) << "Put released the points";
  TmvWayPointsList* again = mv::WayPointListCache().Get();
  EXPECT_TRUE(again->IsEmpty());
  mv::WayPointListCache().Put(again);
}

TEST(WayPointCache, ThreadsShareThePoolsSafely) {
  // Each thread builds and frees ways of its own; records and lists move
  // between the threads' stocks and the shared one.
  std::vector<std::thread> threads;
  std::vector<int> ok(8, 0);
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t, &ok] {
      const int64_t before = Live();
      for (int round = 0; round < 50; ++round) {
        mv::TmvPooledWayList list;
        TmvWayPoint* tip = WayPointCache().Get(nullptr, 0);
        for (int i = 0; i < 3000; ++i) tip = WayPointCache().Get(tip, t);
        list->Add(tip);
        mv::TmvPooledWayList copy;
        copy->CopyFrom(*list);
      }
      ok[t] = Live() == before;
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 0; t < 8; ++t) EXPECT_TRUE(ok[t]) << "thread " << t;
}

}  // namespace
