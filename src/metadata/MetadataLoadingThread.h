// A load of metadata on a thread of its own, for the designer: the objects
// come into a private container, in a private context, on copies of the
// providers and of the connection, so that the thread shares nothing with
// the main thread while it runs. The result reaches the owner's container on
// the main thread, whole, once the load has ended without a cancel.
//
// On the thread:
//   1. on the main thread: the owner's NotifyAsyncLoadingStarted;
//   2. the copy of the connection is opened, and the private container loads
//      (LoadMetadataByFilter: objects, relations, custom aggregates);
//   3. on the main thread, whatever happened: NotifyAsyncLoadingCompleted;
//   4. without a failure, on the main thread: LoadingComplete (below);
//      on a failure, on the main thread: the owner's PostRaiseAsyncException.
// LoadingComplete adds clones of the private objects to the owner's
// container in one update, with the default database and the default schemas
// it lacks, then calls the owner's MetadataLoaded. A load that was cancelled
// (Terminate) hands nothing over, neither objects nor a failure: the owner's
// container stays as it was.
//
// The main thread reaches the owner only through the main-thread dispatcher
// (Synchronize), so a headless host drains it (ProcessPending, WaitFor); the
// private container's abort flag and the thread's own terminated flag are
// the only values written from outside while it runs.
#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <thread>

#include "support/Class.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvBaseSyntaxProvider;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TSQLQualifiedName;

// What a background load needs from the one it loads for (the query builder).
// Every member is called on the main thread.
class ImvMetadataLoadingOwner {
 public:
  virtual ~ImvMetadataLoadingOwner() = default;
  // The container that the objects of a finished load go to.
  virtual TmvMetadataContainer* MetadataContainer() = 0;
  // The metadata tree shows its loading node, and drops it.
  virtual void NotifyAsyncLoadingStarted() {}
  virtual void NotifyAsyncLoadingCompleted() {}
  // The objects are in the container: OnMetadataLoaded, and the datasources
  // refresh from the new metadata.
  virtual void MetadataLoaded() {}
  // A failed load: the owner raises the failure from its message loop.
  virtual void PostRaiseAsyncException(std::exception_ptr error) = 0;
  // Copies of the providers for the thread. By default: a provider of the
  // same registered class with the source's settings (Assign), and the
  // metadata provider's CloneProvider.
  virtual TmvOwned<TmvBaseSyntaxProvider> CloneSyntaxProvider(const TmvBaseSyntaxProvider& source);
  virtual TmvOwned<TmvBaseMetadataProvider> CloneMetadataProvider(const TmvBaseMetadataProvider& source);
};

class TmvMetadataLoadingThread {
 public:
  // Made on the main thread and not started: copies of both providers, a
  // copy of the metadata provider's connection (CreateConnectionCopy), a
  // context and a container of its own, and copies of the filter (null: all
  // objects) and of the database (null: the default one). The owner's
  // container's WorkOffline and LoadInvertedRelations carry over.
  TmvMetadataLoadingThread(ImvMetadataLoadingOwner& owner, const TmvBaseSyntaxProvider& syntaxProvider,
                           TmvBaseMetadataProvider& metadataProvider, const TmvMetadataFilter* filter,
                           const TSQLQualifiedName* database);
  // Waits for the thread (running queued main-thread work meanwhile), then
  // frees the container, the context, the provider copies, and the copy of
  // the connection through the provider it was copied from.
  ~TmvMetadataLoadingThread();
  TmvMetadataLoadingThread(const TmvMetadataLoadingThread&) = delete;
  TmvMetadataLoadingThread& operator=(const TmvMetadataLoadingThread&) = delete;

  void Start();
  // Asks the load to stop (the private container's abort flag) and to hand
  // nothing over. From any thread; returns at once.
  void Terminate();
  bool Terminated() const { return terminated_.load(); }
  // Waits until the thread has ended and joins it; on the main thread it
  // runs queued main-thread work meanwhile (the thread's own steps among
  // it). A queued call that fails meanwhile is raised after the join.
  void WaitFor();
  // Whether the thread has ended (or was never started).
  bool Finished() const { return !started_ || finished_.load(); }
  // Whether one of the thread's steps runs on the main thread now (main thread only).
  bool InMainThreadStep() const { return inMainThreadStep_; }

  // The private state of the load. Touch it from the thread of the load
  // only (its providers' callbacks), or once Finished.
  TmvMetadataContainer* Container() const { return container_.get(); }
  TmvBaseSQLContext* Context() const { return context_.get(); }
  TmvBaseMetadataProvider* MetadataProvider() const { return metadataProvider_.get(); }
  TmvConnection* Connection() const { return connection_.get(); }

 private:
  void Execute();
  // Runs `step` on the main thread, marked as one of this thread's steps.
  template <class Step>
  void OnMainThread(Step step);
  // On the main thread: the objects into the owner's container.
  void LoadingComplete();

  ImvMetadataLoadingOwner& owner_;
  TmvBaseMetadataProvider& sourceProvider_;
  TmvOwned<TmvBaseSyntaxProvider> syntaxProvider_;
  TmvOwned<TmvBaseMetadataProvider> metadataProvider_;
  std::unique_ptr<TmvConnection> connection_;
  TmvOwned<TmvBaseSQLContext> context_;
  TmvOwned<TmvMetadataContainer> container_;
  std::unique_ptr<TmvMetadataFilter> filter_;
  TmvOwned<TSQLQualifiedName> database_;
  std::atomic<bool> terminated_{false};
  std::atomic<bool> finished_{false};
  bool started_ = false;
  bool inMainThreadStep_ = false;
  std::thread thread_;
};

// The one background load of an owner (the query builder's slot): a new load
// cancels the one before, and the slot's end waits for the thread.
class TmvMetadataAsyncLoading {
 public:
  explicit TmvMetadataAsyncLoading(ImvMetadataLoadingOwner& owner) : owner_(owner) {}
  // CancelAsyncMetadataLoading.
  ~TmvMetadataAsyncLoading();
  TmvMetadataAsyncLoading(const TmvMetadataAsyncLoading&) = delete;
  TmvMetadataAsyncLoading& operator=(const TmvMetadataAsyncLoading&) = delete;

  // Raises "Syntax provider is not specified" or "Metadata provider is not
  // specified" without one; connects the metadata provider (if it has a
  // connection), cancels a load under way, and starts a new one.
  void LoadMetadataAsync(const TmvBaseSyntaxProvider* syntaxProvider, TmvBaseMetadataProvider* metadataProvider,
                         const TmvMetadataFilter* filter, const TSQLQualifiedName* database = nullptr);
  // Aborts the load under way, if any, waits for its thread and frees it.
  // Called from one of the load's own steps on the main thread, it cannot
  // wait there: the thread is then left to end and freed after that step.
  void CancelAsyncMetadataLoading();
  // Whether a load runs (its thread has not ended).
  bool IsLoading() const { return thread_ && !thread_->Finished(); }
  // The present or last load, kept until the next one or a cancel; null if none.
  TmvMetadataLoadingThread* Thread() const { return thread_.get(); }

 private:
  ImvMetadataLoadingOwner& owner_;
  std::shared_ptr<TmvMetadataLoadingThread> thread_;
};

}  // namespace mv
