#include "metadata/Task.h"

#include "support/Exceptions.h"
#include "support/MainThread.h"

namespace mv {

MV_DEFINE_CLASS(TmvTask, TmvObject)

namespace {

// A thread that may be the calling one: the last reference to a task can go
// on its own worker, which cannot join itself.
void JoinOrDetach(std::thread& thread) {
  if (!thread.joinable()) return;
  if (thread.get_id() == std::this_thread::get_id())
    thread.detach();
  else
    thread.join();
}

}  // namespace

const char* TaskStateName(TmvTaskState state) {
  switch (state) {
    case mvtCreated:
      return "mvtCreated";
    case mvtRunning:
      return "mvtRunning";
    case mvtCompleted:
      return "mvtCompleted";
    case mvtCanceling:
      return "mvtCanceling";
    case mvtCanceled:
      return "mvtCanceled";
    case mvtFaulted:
      return "mvtFaulted";
  }
  return "?";
}

TmvTask::TmvTask(TmvObject* tag) : tag_(tag) {}

TmvTask::~TmvTask() {
  // Whoever held the task has let go, the worker and the cancel threads
  // included (they let go on the main thread), so what is left of them is
  // their return.
  JoinOrDetach(worker_);
  for (std::thread& thread : cancelThreads_) JoinOrDetach(thread);
}

TmvTaskState TmvTask::State() const {
  std::lock_guard guard(lock_);
  return state_;
}

std::exception_ptr TmvTask::Exception() const {
  std::lock_guard guard(lock_);
  return exception_;
}

bool TmvTask::IsEnded() const {
  std::lock_guard guard(lock_);
  return ended_;
}

TmvTaskEvent TmvTask::GetEvent(const TmvTaskEvent& event) const {
  std::lock_guard guard(lock_);
  return event;
}

void TmvTask::SetEvent(TmvTaskEvent& event, TmvTaskEvent value) {
  std::lock_guard guard(lock_);
  event = std::move(value);
}

void TmvTask::Fire(const TmvTaskEvent& event) {
  if (event) event(this);
}

void TmvTask::DoStarting() { Fire(OnStarting()); }
void TmvTask::DoCompleted() { Fire(OnCompleted()); }
void TmvTask::DoFaulted() { Fire(OnFaulted()); }
void TmvTask::DoCancelled() { Fire(OnCanceled()); }
void TmvTask::DoStopped() { Fire(OnStopped()); }

void TmvTask::Run() {
  {
    std::lock_guard guard(lock_);
    if (started_ || state_ != mvtCreated)
      throw EmvQueryBuilderError(u"The task has already been run; a task runs once");
  }
  // The worker's own reference; raises for a task that no shared_ptr holds.
  std::shared_ptr<TmvTask> self = shared_from_this();
  DoStarting();
  PrepareInternal();
  std::lock_guard guard(lock_);
  state_ = mvtRunning;
  started_ = true;
  worker_ = std::thread([self]() mutable {
    self->Execute();
    // The worker's reference goes on the main thread, so that the task,
    // if it was the last one, is freed there, where its destructor joins
    // this thread: whoever frees what the task used (a provider) then
    // knows the worker is done with it.
    Post([self = std::move(self)]() mutable { self.reset(); });
  });
}

void TmvTask::Execute() {
  std::exception_ptr failure;
  try {
    Fire(OnInitThread());
    if (State() == mvtRunning) RunInternal();
  } catch (...) {
    failure = std::current_exception();
  }
  TmvTaskState ended;
  {
    std::unique_lock guard(lock_);
    // A cancel under way decides first.
    changed_.wait(guard, [this] { return state_ != mvtCanceling; });
    if (failure) {
      // After a successful cancel the failure is the cancel's echo.
      if (state_ != mvtCanceled) {
        exception_ = failure;
        if (state_ == mvtRunning) state_ = mvtFaulted;
      }
    } else if (state_ == mvtRunning) {
      state_ = mvtCompleted;
    }
    ended_ = true;
    ended = state_;
  }
  changed_.notify_all();
  // The events of the end run on the main thread; a failing handler there
  // must not end the worker.
  try {
    Synchronize([this, ended] {
      try {
        if (ended == mvtCompleted)
          DoCompleted();
        else if (ended == mvtFaulted)
          DoFaulted();
        else if (ended == mvtCanceled)
          DoCancelled();
      } catch (...) {
        DoStopped();
        throw;
      }
      DoStopped();
    });
  } catch (...) {
    // A handler's failure on the main thread is its own; the worker ends all the same.
  }
  try {
    Fire(OnCleanupThread());
  } catch (...) {
    // Nothing is left to tell of a failing clean-up.
  }
}

bool TmvTask::Wait(int milliseconds) {
  std::unique_lock guard(lock_);
  // Before Run there is no worker whose end could be waited for.
  if (!started_) return false;
  if (milliseconds < 0) {
    changed_.wait(guard, [this] { return ended_; });
    return true;
  }
  return changed_.wait_for(guard, std::chrono::milliseconds(milliseconds), [this] { return ended_; });
}

bool TmvTask::Cancel() {
  std::unique_lock guard(lock_);
  switch (state_) {
    case mvtCanceled:
      return true;
    case mvtCanceling:
      changed_.wait(guard, [this] { return ended_; });
      return state_ == mvtCanceled;
    case mvtRunning:
      break;
    default:
      return false;
  }
  if (!GetCanCancel()) return false;
  state_ = mvtCanceling;
  guard.unlock();
  bool canceled = false;
  try {
    canceled = CancelInternal();
  } catch (...) {
    guard.lock();
    state_ = mvtRunning;
    guard.unlock();
    changed_.notify_all();
    throw;
  }
  guard.lock();
  state_ = canceled ? mvtCanceled : mvtRunning;
  guard.unlock();
  changed_.notify_all();
  return canceled;
}

void TmvTask::CancelAsync() {
  std::shared_ptr<TmvTask> self = shared_from_this();
  std::thread thread([self]() mutable {
    try {
      self->Cancel();
    } catch (...) {
      // A driver that fails to cancel leaves the task running.
    }
    Post([self = std::move(self)]() mutable { self.reset(); });
  });
  std::lock_guard guard(lock_);
  cancelThreads_.push_back(std::move(thread));
}

}  // namespace mv
