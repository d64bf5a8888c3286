// A piece of work that runs once on a thread of its own: `Run` prepares it on
// the caller's thread and starts the worker; `Wait` waits for its end;
// `Cancel` asks it to stop where the task knows how.
//
// The worker, in order:
//   1. OnInitThread (on the worker);
//   2. RunInternal, if the task is still running;
//   3. state to mvtCompleted if it is still running; on an exception the
//      exception is kept and the state goes to mvtFaulted (an exception after
//      a successful cancel is dropped);
//   4. the completion event is set (Wait returns from here);
//   5. on the main thread (Synchronize): DoCompleted, DoFaulted or
//      DoCancelled by the state, then DoStopped;
//   6. OnCleanupThread (on the worker).
// OnStarting runs on the caller of Run; OnCompleted, OnFaulted, OnCanceled and
// OnStopped on the main thread, so a headless host drains the main-thread
// dispatcher (ProcessPending, or WaitFor) to hear of them.
//
// A task is reference counted (the reference-counted object with an
// interface that tasks are): it is made by `TmvCreateTask` as a
// std::shared_ptr, and the worker (and a CancelAsync thread) holds a
// reference of its own while it runs, so the task lives to its end whoever
// else lets go of it. Those threads let go of their references on the main
// thread (a posted call), so a task whose last holder was its worker is
// freed there once the host drains the dispatcher, and its destructor joins
// the worker.
//
// State changes are made under the task's lock, and the worker's end waits
// while a Cancel is between mvtCanceling and its outcome.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "support/Class.h"

namespace mv {

enum TmvTaskState : uint8_t {
  mvtCreated,
  mvtRunning,
  mvtCompleted,
  mvtCanceling,
  mvtCanceled,
  mvtFaulted,
};

// The name of a state ("mvtRunning"), for messages and logs.
const char* TaskStateName(TmvTaskState state);

// An event of a task; the sender is the task.
using TmvTaskEvent = std::function<void(TmvObject* sender)>;

// The task as its holders see it.
class ImvTask {
 public:
  virtual ~ImvTask() = default;
  // Prepares the task on this thread and starts its worker. A failure of the
  // preparation raises here, and the worker never starts. Raises when the
  // task has been run before.
  virtual void Run() = 0;
  // True if the task has ended within `milliseconds` (-1: no limit).
  virtual bool Wait(int milliseconds) = 0;
  // Asks the task to stop; see TmvTask::Cancel.
  virtual bool Cancel() = 0;
  // Cancel on a small thread of its own, for a caller that must not be held
  // up by a driver's cancel call.
  virtual void CancelAsync() = 0;
  virtual TmvTaskState State() const = 0;
  // The object given at construction (not owned).
  virtual TmvObject* Tag() const = 0;
  // The failure of the run, once the task is mvtFaulted; null otherwise.
  virtual std::exception_ptr Exception() const = 0;

  virtual TmvTaskEvent OnStarting() const = 0;
  virtual void SetOnStarting(TmvTaskEvent event) = 0;
  virtual TmvTaskEvent OnCompleted() const = 0;
  virtual void SetOnCompleted(TmvTaskEvent event) = 0;
  virtual TmvTaskEvent OnFaulted() const = 0;
  virtual void SetOnFaulted(TmvTaskEvent event) = 0;
  virtual TmvTaskEvent OnCanceled() const = 0;
  virtual void SetOnCanceled(TmvTaskEvent event) = 0;
  virtual TmvTaskEvent OnStopped() const = 0;
  virtual void SetOnStopped(TmvTaskEvent event) = 0;
  virtual TmvTaskEvent OnInitThread() const = 0;
  virtual void SetOnInitThread(TmvTaskEvent event) = 0;
  virtual TmvTaskEvent OnCleanupThread() const = 0;
  virtual void SetOnCleanupThread(TmvTaskEvent event) = 0;
};

class TmvTask : public TmvObject, public virtual ImvTask, public std::enable_shared_from_this<TmvTask> {
  MV_DECLARE_CLASS()
 public:
  explicit TmvTask(TmvObject* tag);
  // Runs where the last reference goes (on the main thread when the worker
  // held it); joins the worker and the cancel threads.
  ~TmvTask() override;
  TmvTask(const TmvTask&) = delete;
  TmvTask& operator=(const TmvTask&) = delete;

  void Run() override;
  bool Wait(int milliseconds) override;
  // By the state:
  //   mvtCanceled              nothing; true
  //   mvtCanceling             waits for the worker; whether it ended canceled
  //   mvtRunning, can cancel   mvtCanceling, CancelInternal, then mvtCanceled
  //                            if that said yes, else mvtRunning again; its answer
  //   any other                nothing; false
  bool Cancel() override;
  void CancelAsync() override;
  TmvTaskState State() const override;
  TmvObject* Tag() const override { return tag_; }
  std::exception_ptr Exception() const override;

  TmvTaskEvent OnStarting() const override { return GetEvent(onStarting_); }
  void SetOnStarting(TmvTaskEvent event) override { SetEvent(onStarting_, std::move(event)); }
  TmvTaskEvent OnCompleted() const override { return GetEvent(onCompleted_); }
  void SetOnCompleted(TmvTaskEvent event) override { SetEvent(onCompleted_, std::move(event)); }
  TmvTaskEvent OnFaulted() const override { return GetEvent(onFaulted_); }
  void SetOnFaulted(TmvTaskEvent event) override { SetEvent(onFaulted_, std::move(event)); }
  TmvTaskEvent OnCanceled() const override { return GetEvent(onCanceled_); }
  void SetOnCanceled(TmvTaskEvent event) override { SetEvent(onCanceled_, std::move(event)); }
  TmvTaskEvent OnStopped() const override { return GetEvent(onStopped_); }
  void SetOnStopped(TmvTaskEvent event) override { SetEvent(onStopped_, std::move(event)); }
  TmvTaskEvent OnInitThread() const override { return GetEvent(onInitThread_); }
  void SetOnInitThread(TmvTaskEvent event) override { SetEvent(onInitThread_, std::move(event)); }
  TmvTaskEvent OnCleanupThread() const override { return GetEvent(onCleanupThread_); }
  void SetOnCleanupThread(TmvTaskEvent event) override { SetEvent(onCleanupThread_, std::move(event)); }

 protected:
  // Whether Cancel may try; false in the base.
  virtual bool GetCanCancel() const { return false; }
  // Stops the running work; true when it did. Runs on the thread that
  // cancels, while the worker may be inside RunInternal. False in the base.
  virtual bool CancelInternal() { return false; }
  // On the caller of Run, before the worker starts.
  virtual void PrepareInternal() {}
  // On the worker.
  virtual void RunInternal() {}
  // Each fires its event, if one is set.
  virtual void DoStarting();
  virtual void DoCompleted();
  virtual void DoFaulted();
  virtual void DoCancelled();
  virtual void DoStopped();

  // Whether the worker has ended (the completion event is set).
  bool IsEnded() const;

 private:
  void Execute();
  void Fire(const TmvTaskEvent& event);
  TmvTaskEvent GetEvent(const TmvTaskEvent& event) const;
  void SetEvent(TmvTaskEvent& event, TmvTaskEvent value);

  TmvObject* const tag_;
  mutable std::mutex lock_;
  // Signalled on every change of the state and when the worker ends.
  std::condition_variable changed_;
  TmvTaskState state_ = mvtCreated;
  bool started_ = false;
  bool ended_ = false;
  std::exception_ptr exception_;
  std::thread worker_;
  std::vector<std::thread> cancelThreads_;
  TmvTaskEvent onStarting_;
  TmvTaskEvent onCompleted_;
  TmvTaskEvent onFaulted_;
  TmvTaskEvent onCanceled_;
  TmvTaskEvent onStopped_;
  TmvTaskEvent onInitThread_;
  TmvTaskEvent onCleanupThread_;
};

// Makes a task of class T (a TmvTask) held by a std::shared_ptr, the
// reference count of the task.
template <class T, class... Args>
std::shared_ptr<T> TmvCreateTask(Args&&... args) {
  auto task = std::make_shared<T>(std::forward<Args>(args)...);
  task->AfterConstruction();
  return task;
}

}  // namespace mv
