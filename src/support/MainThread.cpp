#include "support/MainThread.h"

#include <exception>

namespace mv {

namespace {

// How long a waiting thread sleeps at most before it asks `done` again, for
// state that changes without a call being queued.
constexpr std::chrono::milliseconds kPollInterval(2);

}  // namespace

TmvMainThreadDispatcher::TmvMainThreadDispatcher() : mainThread_(std::this_thread::get_id()) {}

void TmvMainThreadDispatcher::BindToCurrentThread() { mainThread_ = std::this_thread::get_id(); }

bool TmvMainThreadDispatcher::IsMainThread() const { return mainThread_.load() == std::this_thread::get_id(); }

void TmvMainThreadDispatcher::Synchronize(Call call) {
  if (IsMainThread()) {
    call();
    return;
  }
  // The outcome of one call, handed from the main thread to the caller.
  struct Outcome {
    std::mutex lock;
    std::condition_variable ready;
    bool done = false;
    std::exception_ptr error;
  };
  auto outcome = std::make_shared<Outcome>();
  Enqueue([outcome, call = std::move(call)]() mutable {
    std::exception_ptr error;
    try {
      call();
    } catch (...) {
      error = std::current_exception();
    }
    // The call's captures (often references into the caller's frame) go
    // before the caller goes on; the exception is handed over whole, so the
    // caller ends up its only holder.
    call = nullptr;
    {
      std::lock_guard<std::mutex> guard(outcome->lock);
      outcome->error = std::move(error);
      outcome->done = true;
    }
    outcome->ready.notify_one();
  });
  std::unique_lock<std::mutex> guard(outcome->lock);
  outcome->ready.wait(guard, [&] { return outcome->done; });
  std::exception_ptr error = std::move(outcome->error);
  guard.unlock();
  if (error) std::rethrow_exception(error);
}

void TmvMainThreadDispatcher::Post(Call call) { Enqueue(std::move(call)); }

void TmvMainThreadDispatcher::Enqueue(Call call) {
  std::shared_ptr<const Call> hook;
  {
    std::lock_guard<std::mutex> guard(lock_);
    queue_.push_back(std::move(call));
    hook = wakeUpHook_;
  }
  queued_.notify_all();
  if (hook) (*hook)();
}

size_t TmvMainThreadDispatcher::ProcessPending() {
  if (!IsMainThread()) return 0;
  std::deque<Call> batch;
  {
    std::lock_guard<std::mutex> guard(lock_);
    batch.swap(queue_);
  }
  size_t done = 0;
  while (!batch.empty()) {
    Call call = std::move(batch.front());
    batch.pop_front();
    try {
      call();
    } catch (...) {
      // Put the rest back in front of whatever was queued meanwhile.
      std::lock_guard<std::mutex> guard(lock_);
      queue_.insert(queue_.begin(), std::make_move_iterator(batch.begin()), std::make_move_iterator(batch.end()));
      throw;
    }
    ++done;
  }
  return done;
}

bool TmvMainThreadDispatcher::HasPending() const {
  std::lock_guard<std::mutex> guard(lock_);
  return !queue_.empty();
}

void TmvMainThreadDispatcher::SetWakeUpHook(Call hook) {
  auto shared = hook ? std::make_shared<const Call>(std::move(hook)) : nullptr;
  std::lock_guard<std::mutex> guard(lock_);
  wakeUpHook_ = std::move(shared);
}

bool TmvMainThreadDispatcher::WaitFor(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
  // A limit of years is no limit (and must not overflow the clock).
  if (timeout >= std::chrono::hours(24 * 365 * 10)) return WaitUntil(done, nullptr);
  const Clock::time_point deadline = Clock::now() + timeout;
  return WaitUntil(done, &deadline);
}

bool TmvMainThreadDispatcher::WaitFor(const std::function<bool()>& done) { return WaitUntil(done, nullptr); }

bool TmvMainThreadDispatcher::WaitUntil(const std::function<bool()>& done, const Clock::time_point* deadline) {
  const bool onMain = IsMainThread();
  for (;;) {
    if (done()) return true;
    if (onMain && ProcessPending() > 0) continue;
    const Clock::time_point now = Clock::now();
    if (deadline && now >= *deadline) return done();
    Clock::time_point wakeAt = now + kPollInterval;
    if (deadline && *deadline < wakeAt) wakeAt = *deadline;
    std::unique_lock<std::mutex> guard(lock_);
    queued_.wait_until(guard, wakeAt, [&] { return onMain && !queue_.empty(); });
  }
}

TmvMainThreadDispatcher& MainThreadDispatcher() {
  static TmvMainThreadDispatcher dispatcher;
  return dispatcher;
}

namespace {

// Made during static start-up, so that the main thread is the thread that
// loaded the program rather than whichever thread asks first.
[[maybe_unused]] TmvMainThreadDispatcher& gStartUpDispatcher = MainThreadDispatcher();

}  // namespace

}  // namespace mv
