// The main-thread dispatcher: how other threads get work done on the main
// (user interface) thread, and how the query builder defers a call until the
// present handler has ended.
//
//   Synchronize(f)   run f on the main thread and wait for it; from the main
//                    thread itself f runs at once. f's exception passes to
//                    the caller.
//   Post(f)          run f later on the main thread; never at once.
//   ProcessPending() run what is queued, in order (main thread only). A GUI
//                    host calls it from its event loop when the wake-up hook
//                    fires; a headless host calls it itself.
//   WaitFor(done)    wait on the main thread for something that may need
//                    the main thread to finish (a worker blocked in
//                    Synchronize), running queued work meanwhile. A plain
//                    join there would deadlock.
//
// The main thread is the one that loaded the program (static start-up), or
// the one that calls `BindToCurrentThread`.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

namespace mv {

class TmvMainThreadDispatcher {
 public:
  using Call = std::function<void()>;
  using Clock = std::chrono::steady_clock;

  // Binds the constructing thread as the main thread.
  TmvMainThreadDispatcher();
  TmvMainThreadDispatcher(const TmvMainThreadDispatcher&) = delete;
  TmvMainThreadDispatcher& operator=(const TmvMainThreadDispatcher&) = delete;

  void BindToCurrentThread();
  bool IsMainThread() const;

  void Synchronize(Call call);
  void Post(Call call);
  // Runs the calls queued before it started, in order, and returns their
  // number; calls queued meanwhile wait for the next round. Only on the main
  // thread (elsewhere it runs nothing and returns 0). A posted call's
  // exception passes out; the calls after it stay queued.
  size_t ProcessPending();
  bool HasPending() const;

  // Called from the queueing thread after each Synchronize or Post, so that
  // a GUI host can wake its event loop (e.g. post an event to itself). An
  // empty hook removes it. The hook must be cheap and must not block.
  void SetWakeUpHook(Call hook);

  // Waits until `done` answers true or the timeout passes, and answers
  // `done` at the end. On the main thread it runs queued calls while it
  // waits. `done` is asked again whenever a call was queued or run, and at
  // least every few milliseconds.
  bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds timeout);
  bool WaitFor(const std::function<bool()>& done);  // no time limit
  template <class T>
  bool WaitFor(const std::future<T>& future, std::chrono::milliseconds timeout) {
    return WaitFor([&future] { return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
                   timeout);
  }

 private:
  bool WaitUntil(const std::function<bool()>& done, const Clock::time_point* deadline);
  void Enqueue(Call call);

  mutable std::mutex lock_;
  std::condition_variable queued_;
  std::deque<Call> queue_;
  std::shared_ptr<const Call> wakeUpHook_;
  std::atomic<std::thread::id> mainThread_;
};

// The dispatcher of the process.
TmvMainThreadDispatcher& MainThreadDispatcher();

inline bool IsMainThread() { return MainThreadDispatcher().IsMainThread(); }
inline void Synchronize(std::function<void()> call) { MainThreadDispatcher().Synchronize(std::move(call)); }
inline void Post(std::function<void()> call) { MainThreadDispatcher().Post(std::move(call)); }
inline size_t ProcessPending() { return MainThreadDispatcher().ProcessPending(); }
inline bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
  return MainThreadDispatcher().WaitFor(done, timeout);
}

}  // namespace mv
