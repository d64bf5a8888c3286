#include "metadata/MetadataLoadingThread.h"

#include <vector>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataNames.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/Connection.h"
#include "support/Exceptions.h"
#include "support/MainThread.h"
#include "tree/QualifiedNames.h"

namespace mv {

// --- ImvMetadataLoadingOwner ---

TmvOwned<TmvBaseSyntaxProvider> ImvMetadataLoadingOwner::CloneSyntaxProvider(const TmvBaseSyntaxProvider& source) {
  const TmvSyntaxProviderClass* providerClass = SyntaxProvidersList().FindClassByClassName(source.ClassName());
  TmvOwned<TmvBaseSyntaxProvider> clone(providerClass ? providerClass->CreateRaw() : nullptr);
  if (!clone)
    throw EmvQueryBuilderError(u"The syntax provider " + WideFromAscii(source.ClassName()) +
                               u" is not registered and cannot be copied for a background load");
  clone->Assign(&source);
  return clone;
}

TmvOwned<TmvBaseMetadataProvider> ImvMetadataLoadingOwner::CloneMetadataProvider(
    const TmvBaseMetadataProvider& source) {
  return source.CloneProvider();
}

// --- TmvMetadataLoadingThread ---

TmvMetadataLoadingThread::TmvMetadataLoadingThread(ImvMetadataLoadingOwner& owner,
                                                   const TmvBaseSyntaxProvider& syntaxProvider,
                                                   TmvBaseMetadataProvider& metadataProvider,
                                                   const TmvMetadataFilter* filter, const TSQLQualifiedName* database)
    : owner_(owner), sourceProvider_(metadataProvider) {
  syntaxProvider_ = owner.CloneSyntaxProvider(syntaxProvider);
  metadataProvider_ = owner.CloneMetadataProvider(metadataProvider);
  connection_ = metadataProvider.CreateConnectionCopy();
  metadataProvider_->SetConnection(connection_.get());
  context_ = TmvCreate<TmvBaseSQLContext>();
  context_->SetSyntaxProvider(syntaxProvider_.get());
  context_->SetMetadataProvider(metadataProvider_.get());
  container_ = TmvCreate<TmvMetadataContainer>(nullptr, context_.get());
  context_->SetMetadataContainer(container_.get());
  // A load clears the abort flag as it starts, which may undo a Terminate
  // that came just before: each object it adds then raises the flag again.
  container_->GetMetadataObjectAddedEvent().AddHandler(TmvHandlerId::Unique(), [this](TmvObject*, TmvMetadataObject*) {
    if (terminated_.load()) container_->AbortMetadataLoading();
  });
  if (const TmvMetadataContainer* target = owner.MetadataContainer()) {
    container_->SetWorkOffline(target->WorkOffline());
    container_->SetLoadInvertedRelations(target->LoadInvertedRelations());
  }
  if (filter) {
    filter_ = std::make_unique<TmvMetadataFilter>();
    filter_->Assign(filter);
  }
  if (database) {
    database_ = TastCreate<TSQLQualifiedName>(context_.get());
    AssignQualifiedName(*database_, database);
  }
}

TmvMetadataLoadingThread::~TmvMetadataLoadingThread() {
  Terminate();
  try {
    WaitFor();
  } catch (...) {
    // A failure of another queued call; the thread has ended and is joined.
  }
  context_->SetMetadataContainer(nullptr);
  container_.reset();
  database_.reset();
  context_->SetMetadataProvider(nullptr);
  context_->SetSyntaxProvider(nullptr);
  context_.reset();
  syntaxProvider_.reset();
  metadataProvider_->SetConnection(nullptr);
  if (connection_) sourceProvider_.FreeConnection(std::move(connection_));
  metadataProvider_.reset();
}

void TmvMetadataLoadingThread::Start() {
  if (started_) return;
  started_ = true;
  thread_ = std::thread([this] { Execute(); });
}

void TmvMetadataLoadingThread::Terminate() {
  terminated_.store(true);
  if (container_) container_->AbortMetadataLoading();
}

void TmvMetadataLoadingThread::WaitFor() {
  if (!started_) return;
  // Another queued call that fails while we drain is raised once the thread
  // has ended, so that the wait itself always ends with the thread joined.
  std::exception_ptr queuedFailure;
  for (;;) {
    try {
      MainThreadDispatcher().WaitFor([this] { return finished_.load(); });
      break;
    } catch (...) {
      if (!queuedFailure) queuedFailure = std::current_exception();
    }
  }
  if (thread_.joinable()) thread_.join();
  if (queuedFailure) std::rethrow_exception(queuedFailure);
}

template <class Step>
void TmvMetadataLoadingThread::OnMainThread(Step step) {
  Synchronize([this, &step] {
    inMainThreadStep_ = true;
    try {
      step();
    } catch (...) {
      inMainThreadStep_ = false;
      throw;
    }
    inMainThreadStep_ = false;
  });
}

void TmvMetadataLoadingThread::Execute() {
  std::exception_ptr failure;
  try {
    OnMainThread([this] { owner_.NotifyAsyncLoadingStarted(); });
    if (!terminated_.load()) {
      if (connection_ && !metadataProvider_->IsConnectionConnected(connection_.get()))
        metadataProvider_->OpenConnection(connection_.get());
      container_->LoadMetadataByFilter(connection_.get(), filter_.get(), database_.get());
    }
  } catch (...) {
    failure = std::current_exception();
  }
  try {
    OnMainThread([this] { owner_.NotifyAsyncLoadingCompleted(); });
  } catch (...) {
    if (!failure) failure = std::current_exception();
  }
  if (!failure) {
    try {
      OnMainThread([this] {
        // A cancelled load hands nothing over, however far it got.
        if (!terminated_.load()) LoadingComplete();
      });
    } catch (...) {
      failure = std::current_exception();
    }
  }
  if (failure) {
    try {
      OnMainThread([this, failure] {
        if (!terminated_.load()) owner_.PostRaiseAsyncException(failure);
      });
    } catch (...) {
      // The owner could not take the failure; nothing is left to tell it to.
    }
  }
  finished_.store(true);
}

void TmvMetadataLoadingThread::LoadingComplete() {
  TmvMetadataContainer* target = owner_.MetadataContainer();
  if (!target) return;
  // Copies first, so that a failure leaves the owner's container untouched.
  std::vector<TmvOwned<TmvMetadataObject>> clones;
  clones.reserve(size_t(container_->Count()));
  for (int i = 0; i < container_->Count(); ++i)
    clones.push_back(container_->Items(i)->CloneAs<TmvMetadataObject>(target, target->SQLContext()));
  {
    TmvUpdateBatch batch(*target);
    target->SetCapacity(target->Count() + container_->Count());
    if (!IsQualifiedNameEmpty(container_->DefaultDatabaseName()))
      target->SetDefaultDatabaseName(container_->DefaultDatabaseName());
    TSQLIdentifiersCollection* schemas = target->DefaultSchemaNames();
    const TSQLIdentifiersCollection* loaded = container_->DefaultSchemaNames();
    for (int i = 0; i < loaded->GetCount(); ++i) {
      const TastTokenIdentifier* schema = loaded->Identifier(i);
      if (schema && schemas->IndexOf(schema) < 0) schemas->Insert(schemas->GetCount())->Assign(*schema);
    }
    for (TmvOwned<TmvMetadataObject>& clone : clones) target->Add(std::move(clone));
  }
  owner_.MetadataLoaded();
}

// --- TmvMetadataAsyncLoading ---

TmvMetadataAsyncLoading::~TmvMetadataAsyncLoading() {
  try {
    CancelAsyncMetadataLoading();
  } catch (...) {
    // A failure of another queued call met while waiting; a destructor cannot report it.
  }
}

void TmvMetadataAsyncLoading::LoadMetadataAsync(const TmvBaseSyntaxProvider* syntaxProvider,
                                                TmvBaseMetadataProvider* metadataProvider,
                                                const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  if (!syntaxProvider) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
  if (!metadataProvider) throw EmvQueryBuilderError(MetadataMessage(mvQBNoMetadataProvider));
  if (metadataProvider->Connection()) metadataProvider->Connect();
  CancelAsyncMetadataLoading();
  auto thread =
      std::make_shared<TmvMetadataLoadingThread>(owner_, *syntaxProvider, *metadataProvider, filter, database);
  thread->Start();
  thread_ = std::move(thread);
}

void TmvMetadataAsyncLoading::CancelAsyncMetadataLoading() {
  if (!thread_) return;
  std::shared_ptr<TmvMetadataLoadingThread> thread = std::move(thread_);
  thread->Terminate();
  if (thread->InMainThreadStep()) {
    // The thread waits for the step that called us: it is freed once that
    // step has returned and the thread has ended.
    Post([thread] { thread->WaitFor(); });
    return;
  }
  thread->WaitFor();
}

}  // namespace mv
