#include "support/MainThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace mv;
using namespace std::chrono_literals;

// Each test makes its own dispatcher, bound to the test's (main) thread.

TEST(MainThread, TheProcessDispatcherIsBoundToTheStartingThread) {
  EXPECT_TRUE(IsMainThread());
  bool other = true;
  std::thread([&] { other = IsMainThread(); }).join();
  EXPECT_FALSE(other);
}

TEST(MainThread, SynchronizeFromTheMainThreadRunsInline) {
  TmvMainThreadDispatcher d;
  bool ran = false;
  d.Synchronize([&] { ran = true; });
  EXPECT_TRUE(ran);
  EXPECT_FALSE(d.HasPending());
  EXPECT_THROW(d.Synchronize([] { throw std::runtime_error("inline"); }), std::runtime_error);
}

TEST(MainThread, PostNeverRunsInlineKeepsOrderAndAnExceptionLeavesTheRestQueued) {
  TmvMainThreadDispatcher d;
  std::vector<int> order;
  d.Post([&] { order.push_back(1); });
  d.Post([&] {
    order.push_back(2);
    d.Post([&] { order.push_back(5); });  // queued while draining: waits for the next round
  });
  d.Post([] { throw std::runtime_error("posted"); });
  d.Post([&] { order.push_back(4); });
  EXPECT_TRUE(order.empty());
  EXPECT_TRUE(d.HasPending());
  EXPECT_THROW(d.ProcessPending(), std::runtime_error);
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
  EXPECT_EQ(d.ProcessPending(), 2u);
  EXPECT_EQ(order, (std::vector<int>{1, 2, 4, 5}));
  EXPECT_EQ(d.ProcessPending(), 0u);
}

TEST(MainThread, ProcessPendingOffTheMainThreadRunsNothing) {
  TmvMainThreadDispatcher d;
  d.Post([] {});
  size_t ran = 99;
  std::thread([&] { ran = d.ProcessPending(); }).join();
  EXPECT_EQ(ran, 0u);
  EXPECT_TRUE(d.HasPending());
  d.ProcessPending();
}

TEST(MainThread, WorkerSynchronizeRunsOnTheMainThreadAndPassesBackItsException) {
  TmvMainThreadDispatcher d;
  std::atomic<bool> finished{false};
  std::thread::id ranOn;
  int result = 0;
  std::string caught;
  std::thread worker([&] {
    d.Synchronize([&] {
      ranOn = std::this_thread::get_id();
      result = 42;
    });
    try {
      d.Synchronize([] { throw std::runtime_error("failed on main"); });
    } catch (const std::runtime_error& e) {
      caught = e.what();
    }
    finished = true;
  });
  EXPECT_TRUE(d.WaitFor([&] { return finished.load(); }, 10s));
  worker.join();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_EQ(result, 42);
  EXPECT_EQ(caught, "failed on main");
}

TEST(MainThread, ManyWorkersKeepTheirOwnOrder) {
  TmvMainThreadDispatcher d;
  constexpr int kWorkers = 4, kCalls = 50;
  std::vector<std::vector<int>> seen(kWorkers);  // touched on the main thread only
  std::atomic<int> done{0};
  std::vector<std::thread> workers;
  for (int w = 0; w < kWorkers; ++w) {
    workers.emplace_back([&, w] {
      for (int i = 0; i < kCalls; ++i) {
        if (i % 2) {
          d.Synchronize([&, w, i] { seen[w].push_back(i); });
        } else {
          d.Post([&, w, i] { seen[w].push_back(i); });
        }
      }
      ++done;
    });
  }
  EXPECT_TRUE(d.WaitFor([&] { return done.load() == kWorkers && !d.HasPending(); }, 20s));
  for (auto& w : workers) w.join();
  for (int w = 0; w < kWorkers; ++w) {
    ASSERT_EQ(seen[w].size(), static_cast<size_t>(kCalls));
    for (int i = 0; i < kCalls; ++i) EXPECT_EQ(seen[w][i], i);
  }
}

TEST(MainThread, WaitForAFutureAndATimeout) {
  TmvMainThreadDispatcher d;
  std::promise<int> promise;
  std::future<int> future = promise.get_future();
  EXPECT_FALSE(d.WaitFor(future, 20ms));
  std::thread worker([&] {
    d.Synchronize([] {});  // needs the main thread before it can answer
    promise.set_value(7);
  });
  EXPECT_TRUE(d.WaitFor(future, 10s));
  EXPECT_EQ(future.get(), 7);
  worker.join();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(d.WaitFor([] { return false; }, 30ms));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
}

TEST(MainThread, WaitOffTheMainThreadWaitsWithoutDraining) {
  TmvMainThreadDispatcher d;
  d.Post([] {});
  std::atomic<bool> flag{false};
  bool answer = false;
  std::thread waiter([&] { answer = d.WaitFor([&] { return flag.load(); }, 10s); });
  std::this_thread::sleep_for(5ms);
  flag = true;
  waiter.join();
  EXPECT_TRUE(answer);
  EXPECT_TRUE(d.HasPending());  // the waiter did not run main-thread work
  d.ProcessPending();
}

TEST(MainThread, WakeUpHookFiresForEachQueuedCall) {
  TmvMainThreadDispatcher d;
  std::atomic<int> wakes{0};
  d.SetWakeUpHook([&] { ++wakes; });
  d.Post([] {});
  std::thread([&] { d.Post([] {}); }).join();
  EXPECT_EQ(wakes.load(), 2);
  d.SetWakeUpHook({});
  d.Post([] {});
  EXPECT_EQ(wakes.load(), 2);
  EXPECT_EQ(d.ProcessPending(), 3u);
}

TEST(MainThread, BindToAnotherThread) {
  TmvMainThreadDispatcher d;
  std::atomic<bool> stop{false};
  std::atomic<bool> bound{false};
  size_t ran = 0;
  d.Post([] {});
  std::thread host([&] {
    d.BindToCurrentThread();
    bound = true;
    EXPECT_TRUE(d.IsMainThread());
    d.WaitFor([&] { return stop.load(); }, 10s);
    ran = d.ProcessPending();
  });
  while (!bound) std::this_thread::yield();
  EXPECT_FALSE(d.IsMainThread());
  int value = 0;
  d.Synchronize([&] { value = 5; });  // now a worker: runs on the host thread
  EXPECT_EQ(value, 5);
  stop = true;
  host.join();
  EXPECT_EQ(ran, 0u);
}
