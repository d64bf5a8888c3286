// Background work: the task's states and cancel points, a statement task on
// SQLite and on a scripted connection, and the background metadata load
// (Chinook from the shared corpus) with cancels in the middle. Nothing here
// sleeps: tests wait on the task, on gates the workers open, or drain the
// main-thread dispatcher (WaitFor).
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <tuple>

#include "Corpus.h"
#include "MetadataTestSupport.h"
#include "Thrown.h"
#include "metadata/AsyncSql.h"
#include "metadata/EventMetadataProvider.h"
#include "metadata/MetadataLoadingThread.h"
#include "metadata/MetadataProvider.h"
#include "metadata/Task.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/Exceptions.h"
#include "support/MainThread.h"
#include "support/TextHelpers.h"

using namespace mv;
using namespace mv::test;

namespace {

// Drains the main-thread dispatcher until `done` holds.
void DrainUntil(const std::function<bool()>& done) {
  ASSERT_TRUE(IsMainThread());
  ASSERT_TRUE(MainThreadDispatcher().WaitFor(done, std::chrono::seconds(30))) << "timed out";
}

// Lets go of a task and waits until it is freed (on the main thread, after
// its worker has let go), so that what its handlers use may go.
template <class T>
void ReleaseAndWait(std::shared_ptr<T>& task) {
  std::weak_ptr<T> weak = task;
  task.reset();
  DrainUntil([&] { return weak.expired(); });
}

// A gate a worker waits at until the test opens it.
class TGate {
 public:
  void Open() {
    {
      std::lock_guard guard(lock_);
      open_ = true;
    }
    changed_.notify_all();
  }
  void Pass() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return open_; });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  bool open_ = false;
};

// What the events of a task saw, in order, with the thread each ran on.
struct TTaskLog {
  std::mutex lock;
  std::vector<std::string> events;
  bool rightThreads = true;
  std::atomic<bool> stopped{false};

  void Record(const char* event, bool mainThread) {
    std::lock_guard guard(lock);
    events.emplace_back(event);
    if (IsMainThread() != mainThread) rightThreads = false;
  }
  void Attach(ImvTask& task) {
    task.SetOnStarting([this](TmvObject*) { Record("Starting", true); });
    task.SetOnInitThread([this](TmvObject*) { Record("InitThread", false); });
    task.SetOnCompleted([this](TmvObject*) { Record("Completed", true); });
    task.SetOnFaulted([this](TmvObject*) { Record("Faulted", true); });
    task.SetOnCanceled([this](TmvObject*) { Record("Canceled", true); });
    task.SetOnStopped([this](TmvObject*) {
      Record("Stopped", true);
      stopped = true;
    });
    task.SetOnCleanupThread([this](TmvObject*) { Record("CleanupThread", false); });
  }
  std::vector<std::string> Events() {
    std::lock_guard guard(lock);
    return events;
  }
};

// A task whose run waits at a gate and then ends as it is told; its cancel
// answers as it is told and opens the gate.
class TScriptedTask : public TmvTask {
 public:
  enum class End { Return, ThrowStd, ThrowOther };

  TScriptedTask() : TmvTask(nullptr) {}

  bool canCancel = true;
  bool cancelAnswer = true;
  bool failPrepare = false;
  End end = End::Return;
  TGate runGate;
  std::atomic<bool> running{false};
  std::atomic<int> cancelCalls{0};
  // When set, CancelInternal waits here (the task stays mvtCanceling).
  TGate* cancelGate = nullptr;
  std::atomic<bool> inCancel{false};

 protected:
  bool GetCanCancel() const override { return canCancel; }
  bool CancelInternal() override {
    ++cancelCalls;
    inCancel = true;
    if (cancelGate) cancelGate->Pass();
    // A driver's cancel ends the statement, which then fails.
    if (cancelAnswer) {
      end = End::ThrowStd;
      runGate.Open();
    }
    return cancelAnswer;
  }
  void PrepareInternal() override {
    if (failPrepare) throw EmvQueryBuilderError(u"cannot prepare");
  }
  void RunInternal() override {
    running = true;
    runGate.Pass();
    if (end == End::ThrowStd) throw std::runtime_error("the statement failed");
    if (end == End::ThrowOther) throw 42;
  }
};

struct TCancelCase {
  const char* name;
  std::function<void(TScriptedTask&)> setUp;
  // Cancels at its point of the run; the task is started and waits at its gate.
  std::function<bool(TScriptedTask&)> cancel;
  bool cancelResult;
  TmvTaskState stateAfterCancel;
  TmvTaskState finalState;
  bool exceptionKept;
  const char* endEvent;
};

}  // namespace

// Every cancel point of the task, with the state it leaves and the event
// that reports the end on the main thread.
TEST(TaskTest, CancelPointsAndStates) {
  const TCancelCase cases[] = {
      {"running, cancel succeeds", nullptr, [](TScriptedTask& t) { return t.Cancel(); }, true, mvtCanceled, mvtCanceled,
       false, "Canceled"},
      {"running, cancel refused", [](TScriptedTask& t) { t.cancelAnswer = false; },
       [](TScriptedTask& t) { return t.Cancel(); }, false, mvtRunning, mvtCompleted, false, "Completed"},
      {"running, cannot cancel", [](TScriptedTask& t) { t.canCancel = false; },
       [](TScriptedTask& t) { return t.Cancel(); }, false, mvtRunning, mvtCompleted, false, "Completed"},
      {"twice on a cancelled task", nullptr, [](TScriptedTask& t) { return t.Cancel() && t.Cancel(); }, true,
       mvtCanceled, mvtCanceled, false, "Canceled"},
      {"no cancel, the run fails", [](TScriptedTask& t) { t.end = TScriptedTask::End::ThrowStd; },
       [](TScriptedTask&) { return false; }, false, mvtRunning, mvtFaulted, true, "Faulted"},
      {"no cancel, the run throws no std::exception", [](TScriptedTask& t) { t.end = TScriptedTask::End::ThrowOther; },
       [](TScriptedTask&) { return false; }, false, mvtRunning, mvtFaulted, true, "Faulted"},
  };
  for (const TCancelCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto task = TmvCreateTask<TScriptedTask>();
    if (c.setUp) c.setUp(*task);
    TTaskLog log;
    log.Attach(*task);
    task->Run();
    DrainUntil([&] { return task->running.load(); });
    // A wait shorter than the run: false, and the state stays.
    EXPECT_FALSE(task->Wait(1));
    EXPECT_EQ(task->State(), mvtRunning);
    EXPECT_EQ(c.cancel(*task), c.cancelResult);
    EXPECT_EQ(task->State(), c.stateAfterCancel);
    task->runGate.Open();
    EXPECT_TRUE(task->Wait(-1));
    EXPECT_EQ(task->State(), c.finalState);
    EXPECT_EQ(task->Exception() != nullptr, c.exceptionKept);
    // The end is told on the main thread only, so not before it drains.
    EXPECT_FALSE(log.stopped.load());
    DrainUntil([&] { return log.stopped.load(); });
    // After the end, a cancel changes nothing.
    EXPECT_EQ(task->Cancel(), c.finalState == mvtCanceled);
    EXPECT_EQ(task->State(), c.finalState);
    ReleaseAndWait(task);
    const std::vector<std::string> expected = {"Starting", "InitThread", c.endEvent, "Stopped", "CleanupThread"};
    EXPECT_EQ(log.Events(), expected);
    EXPECT_TRUE(log.rightThreads);
  }
}

TEST(TaskTest, CancelBeforeRunChangesNothingAndATaskRunsOnce) {
  auto task = TmvCreateTask<TScriptedTask>();
  EXPECT_FALSE(task->Cancel());
  EXPECT_EQ(task->State(), mvtCreated);
  EXPECT_FALSE(task->Wait(-1)) << "nothing runs yet";
  task->runGate.Open();
  task->Run();
  EXPECT_TRUE(task->Wait(-1));
  EXPECT_EQ(task->State(), mvtCompleted);
  EXPECT_EQ(task->cancelCalls.load(), 0);
  EXPECT_THROW(task->Run(), EmvQueryBuilderError);
  ReleaseAndWait(task);
}

TEST(TaskTest, FailedPreparationRaisesToTheCallerAndStartsNothing) {
  auto task = TmvCreateTask<TScriptedTask>();
  task->failPrepare = true;
  TTaskLog log;
  log.Attach(*task);
  EXPECT_THROW(task->Run(), EmvQueryBuilderError);
  EXPECT_EQ(task->State(), mvtCreated);
  EXPECT_FALSE(task->Wait(0));
  EXPECT_EQ(log.Events(), std::vector<std::string>{"Starting"});
}

// A second Cancel while the first is between mvtCanceling and its outcome
// waits for the worker and answers the outcome.
TEST(TaskTest, CancelWhileCancelingWaitsForTheWorker) {
  auto task = TmvCreateTask<TScriptedTask>();
  TGate cancelGate;
  task->cancelGate = &cancelGate;
  TTaskLog log;
  log.Attach(*task);
  task->Run();
  DrainUntil([&] { return task->running.load(); });
  task->CancelAsync();
  DrainUntil([&] { return task->inCancel.load(); });
  EXPECT_EQ(task->State(), mvtCanceling);
  std::atomic<bool> second{false};
  std::thread waiter([&] { second = task->Cancel(); });
  cancelGate.Open();
  waiter.join();
  EXPECT_TRUE(second.load());
  EXPECT_EQ(task->State(), mvtCanceled);
  DrainUntil([&] { return log.stopped.load(); });
  ReleaseAndWait(task);
}

// The worker holds the task: let go of it while it runs, and it still ends.
TEST(TaskTest, ReleasedWhileRunningKeepsGoing) {
  auto task = TmvCreateTask<TScriptedTask>();
  TTaskLog log;
  log.Attach(*task);
  std::weak_ptr<TScriptedTask> weak = task;
  TGate* gate = &task->runGate;
  task->Run();
  task.reset();
  EXPECT_FALSE(weak.expired());
  gate->Open();
  DrainUntil([&] { return log.stopped.load(); });
  DrainUntil([&] { return weak.expired(); });
  EXPECT_EQ(log.Events().back(), "CleanupThread");
}

// --- Statement tasks ---

namespace {

class AsyncSqlTest : public ::testing::Test {
 protected:
  AsyncSqlTest() {
    database->ExecSQL(
        u"create table t (id integer primary key, name text);"
        u"insert into t values (1, 'one'), (2, 'two'), (3, 'three')");
    provider.SetConnection(database.get());
  }

  std::unique_ptr<TmvSQLiteConnection> database = TmvSQLiteConnection::CreateInMemory();
  TmvConnectionMetadataProvider provider;
};

}  // namespace

TEST_F(AsyncSqlTest, ResultsArriveOnTheMainThreadWhenItDrains) {
  std::shared_ptr<ImvAsyncSql> task = provider.CreateSqlAsync();
  TTaskLog log;
  log.Attach(*task);
  std::vector<WideString> names;
  task->SetOnCompleted([&](TmvObject* sender) {
    log.Record("Completed", true);
    EXPECT_EQ(sender, dynamic_cast<TmvObject*>(task.get()));
    for (TmvDataSet* rows = task->Dataset(); !rows->Eof(); rows->Next())
      names.push_back(rows->FieldByName(u"NAME").AsWideString());
  });
  task->SetSql(u"select id, name from t where id >= :first order by id");
  ASSERT_EQ(task->Params().Count(), 1);
  task->Params().ParamByName(u"first").SetAsInteger(2);
  task->Run();
  auto* sql = dynamic_cast<TmvAsyncSql*>(task.get());
  ASSERT_NE(sql, nullptr);
  EXPECT_TRUE(sql->OwnConnection());
  EXPECT_NE(task->Connection(), database.get()) << "the task runs on a copy of the connection";
  EXPECT_TRUE(task->Wait(-1));
  EXPECT_EQ(task->State(), mvtCompleted);
  EXPECT_TRUE(names.empty()) << "nothing reaches the main thread before it drains";
  DrainUntil([&] { return log.stopped.load(); });
  EXPECT_EQ(names, (std::vector<WideString>{u"two", u"three"}));
  ReleaseAndWait(task);
  EXPECT_TRUE(log.rightThreads);
}

TEST_F(AsyncSqlTest, StatementForItsEffectOnTheCallersConnection) {
  std::shared_ptr<ImvAsyncSql> task = provider.CreateSqlAsync(database.get(), nullptr);
  TTaskLog log;
  log.Attach(*task);
  task->SetReturnResults(false);
  task->SetSql(u"insert into t values (4, 'four')");
  task->Run();
  EXPECT_TRUE(task->Wait(-1));
  EXPECT_EQ(task->State(), mvtCompleted);
  EXPECT_EQ(task->Dataset(), nullptr);
  ReleaseAndWait(task);
  EXPECT_EQ(database->OpenQuery(u"select count(*) as n from t")->FieldByName(u"n").AsInteger(), 4);
}

TEST_F(AsyncSqlTest, FailingStatementIsRaisedOnTheMainThread) {
  std::shared_ptr<ImvAsyncSql> task = provider.CreateSqlAsync();
  TTaskLog log;
  log.Attach(*task);
  WideString raised;
  bool raisedOnMain = false;
  task->SetOnFaulted([&](TmvObject*) {
    log.Record("Faulted", true);
    raisedOnMain = IsMainThread();
    try {
      std::rethrow_exception(task->Exception());
    } catch (const std::exception& e) {
      raised = ExceptionMessage(e);
    }
  });
  task->SetSql(u"select * from no_such_table");
  task->Run();
  EXPECT_TRUE(task->Wait(-1)) << "a failed run ends all the same";
  EXPECT_EQ(task->State(), mvtFaulted);
  EXPECT_TRUE(raised.empty());
  DrainUntil([&] { return log.stopped.load(); });
  ReleaseAndWait(task);
  EXPECT_TRUE(raisedOnMain);
  EXPECT_NE(raised.find(u"no_such_table"), WideString::npos) << UTF8Encode(raised);
}

TEST_F(AsyncSqlTest, PreparationWithoutAConnectionRaisesOnRun) {
  TmvConnectionMetadataProvider bare;
  std::shared_ptr<ImvAsyncSql> task = bare.CreateSqlAsync();
  EXPECT_THROW(task->Run(), EmvQueryBuilderError);
  EXPECT_EQ(task->State(), mvtCreated);
  EXPECT_THROW(bare.ExecSQLDatasetURAsync(u"select 1"), EmvQueryBuilderError);
}

namespace {

// A provider over a scripted connection whose statement waits at a gate on
// the worker; its cancel and its closing of a connection open the gate.
class TBlockingProvider : public TmvConnectionMetadataProvider {
 public:
  bool cancels = false;
  std::atomic<int> cancelCalls{0};
  std::atomic<int> closeCalls{0};
  std::shared_ptr<TGate> gate = std::make_shared<TGate>();
  std::shared_ptr<std::atomic<bool>> running = std::make_shared<std::atomic<bool>>(false);

  void Script(TmvMemoryConnection& server) {
    server.AddHandler(u"select slowly", [gate = gate, running = running](const TmvParams&) {
      if (!IsMainThread()) {
        *running = true;
        gate->Pass();
      }
      return TmvMemoryTable().AddColumn(u"x", ftInteger).AddRow({TmvVariant(int64_t(1))});
    });
  }
  bool SupportCancelAsyncExecSql() const override { return cancels; }
  bool CancelSQLDatasetAsync(TmvConnection*, TmvDataSet*) override {
    ++cancelCalls;
    gate->Open();
    return true;
  }
  void CloseConnection(TmvConnection*) override {
    // Stands for a close that ends the statement.
    ++closeCalls;
    gate->Open();
  }
};

}  // namespace

// Who may cancel a statement task, and how it is done.
TEST(AsyncSqlCancelTest, CancelTable) {
  struct Case {
    const char* name;
    bool providerCancels;
    bool ownConnection;
    bool canCancel;
    int cancelCalls;
    int closeCalls;
  } cases[] = {
      {"provider cancels, caller's connection", true, false, true, 1, 0},
      {"provider cancels, own connection", true, true, true, 1, 0},
      {"provider cannot, own connection: closed", false, true, true, 0, 1},
      {"provider cannot, caller's connection", false, false, false, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TmvMemoryConnection server;
    TBlockingProvider provider;
    provider.cancels = c.providerCancels;
    provider.Script(server);
    provider.SetConnection(&server);
    std::shared_ptr<ImvAsyncSql> task =
        c.ownConnection ? provider.CreateSqlAsync() : provider.CreateSqlAsync(&server, nullptr);
    TTaskLog log;
    log.Attach(*task);
    task->SetSql(u"select slowly");
    task->Run();
    DrainUntil([&] { return provider.running->load(); });
    EXPECT_EQ(task->Cancel(), c.canCancel);
    EXPECT_EQ(provider.cancelCalls.load(), c.cancelCalls);
    EXPECT_EQ(provider.closeCalls.load(), c.closeCalls);
    provider.gate->Open();
    EXPECT_TRUE(task->Wait(-1));
    EXPECT_EQ(task->State(), c.canCancel ? mvtCanceled : mvtCompleted);
    ReleaseAndWait(task);
  }
}

// --- The background metadata load ---

namespace {

std::string ChinookPath() {
  const std::string dir = mvtest::CorpusDir();
  if (dir.empty()) return {};
  const std::string path = dir + "/chinook/Chinook_Sqlite.sqlite";
  return std::filesystem::exists(path) ? path : std::string();
}

// The builder's side of a load: counts what it is told, on which thread.
class TLoadingOwner : public ImvMetadataLoadingOwner {
 public:
  TLoadingOwner(TmvMetadataContainer* container, const TMetadataTestProvider& syntax)
      : container_(container), syntax_(syntax) {}

  TmvMetadataContainer* MetadataContainer() override { return container_; }
  void NotifyAsyncLoadingStarted() override { Count(started); }
  void NotifyAsyncLoadingCompleted() override { Count(completed); }
  void MetadataLoaded() override {
    Count(loaded);
    if (onLoaded) onLoaded();
  }
  void PostRaiseAsyncException(std::exception_ptr error) override {
    Count(failed);
    failure = error;
  }
  // The test dialect is no registered class: copy its answers.
  TmvOwned<TmvBaseSyntaxProvider> CloneSyntaxProvider(const TmvBaseSyntaxProvider&) override {
    auto clone = TmvCreate<TMetadataTestProvider>();
    clone->Assign(&syntax_);
    clone->schemas = syntax_.schemas;
    clone->databases = syntax_.databases;
    return clone;
  }

  int started = 0;
  int completed = 0;
  int loaded = 0;
  int failed = 0;
  bool onMain = true;
  std::function<void()> onLoaded;
  std::exception_ptr failure;

 private:
  void Count(int& counter) {
    ++counter;
    if (!IsMainThread()) onMain = false;
  }
  TmvMetadataContainer* container_;
  const TMetadataTestProvider& syntax_;
};

class BackgroundLoadTest : public MetadataTest {
 protected:
  BackgroundLoadTest() {
    provider.schemas = false;
    provider.SetIdentCaseSens(icsNonSensitive);
    context.SetMetadataProvider(&events);
  }
  ~BackgroundLoadTest() override { context.SetMetadataProvider(nullptr); }

  void SetUp() override {
    const std::string path = ChinookPath();
    if (path.empty()) GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus";
    chinook = std::make_unique<TmvSQLiteConnection>(UTF8Decode(path), somReadOnly);
    events.SetConnection(chinook.get());
    // The host reads the catalog on the connection of the provider that asks:
    // the background load's copy on its thread.
    events.OnGetTables = [this](TmvObject* sender, TSQLDatabaseObjectsList& names) {
      TmvConnection* connection = static_cast<TmvBaseMetadataProvider*>(sender)->Connection();
      lastConnection = connection;
      auto query = connection->OpenQuery(
          u"select name from sqlite_master where type = 'table' and name not like 'sqlite%' order by name");
      for (; !query->Eof(); query->Next()) {
        names.CreateSQLDatabaseObject()->AddName(query->FieldByName(u"NAME").AsWideString(), false);
        if (afterRow && !afterRow(names.Count())) return;
      }
    };
    events.OnGetTableRelations = [](TmvObject* sender, const TSQLQualifiedName& table,
                                    TSQLMetadataRelations& relations) {
      auto* self = static_cast<TmvBaseMetadataProvider*>(sender);
      const WideString tableName = table.GetQualifiedNameWithoutQuotes();
      auto query = self->Connection()->OpenQuery(u"pragma foreign_key_list(" + SQLQuoteString(tableName) + u")");
      for (; !query->Eof(); query->Next()) {
        auto relation = std::make_unique<TSQLMetadataRelation>(table.SQLContext());
        relation->TableName().AddName(tableName, false);
        relation->KeyFields().AddField(query->FieldByName(u"from").AsWideString(), false);
        relation->ChildTable().AddName(query->FieldByName(u"table").AsWideString(), false);
        relation->ChildFields().AddField(query->FieldByName(u"to").AsWideString(), false);
        relations.push_back(std::move(relation));
      }
    };
    container->AddTable(u"Existing");
  }

  // Names of the container's objects and its relation count, to compare loads.
  static std::pair<std::vector<WideString>, size_t> Summary(const TmvMetadataContainer& c) {
    std::vector<WideString> names;
    for (int i = 0; i < c.Count(); ++i) names.push_back(c.Items(i)->NameStr());
    return {names, c.GetRelations().size()};
  }

  // Starts a load whose worker stops after `row` rows of the table list and
  // waits there until the load is cancelled (a fetcher reads the abort
  // between rows); returns once the worker waits.
  void StartAndHoldAtRow(TmvMetadataAsyncLoading& loading, int row) {
    afterRow = [this, row](int rows) {
      rowsRead = rows;
      if (rows < row) return true;
      holding = true;
      while (!held.load() || !held.load()->Terminated()) std::this_thread::yield();
      return false;
    };
    loading.LoadMetadataAsync(&provider, &events, nullptr);
    held = loading.Thread();
    DrainUntil([&] { return holding.load(); });
  }

  // Called on the worker after each row of the table list with the count so
  // far; false ends the list there.
  std::function<bool(int)> afterRow;
  std::atomic<TmvMetadataLoadingThread*> held{nullptr};
  std::atomic<bool> holding{false};
  std::atomic<int> rowsRead{0};
  // The connection the table list was last read on.
  std::atomic<TmvConnection*> lastConnection{nullptr};
  std::unique_ptr<TmvSQLiteConnection> chinook;
  TmvEventMetadataProvider events;
};

}  // namespace

TEST_F(BackgroundLoadTest, LoadEqualsTheForegroundLoadAndArrivesWhole) {
  // The same load in the foreground, into a container of its own.
  TmvOwned<TmvMetadataContainer> foreground = TmvCreate<TmvMetadataContainer>(nullptr, &context);
  foreground->AddTable(u"Existing");
  foreground->LoadMetadataByFilter(nullptr);
  ASSERT_GT(foreground->Count(), 1);

  TLoadingOwner owner(container.get(), provider);
  TmvMetadataAsyncLoading loading(owner);
  std::atomic<bool> offMain{true};
  afterRow = [&](int) {
    if (IsMainThread()) offMain = false;
    return true;
  };
  loading.LoadMetadataAsync(&provider, &events, nullptr);
  EXPECT_EQ(container->Count(), 1) << "nothing arrives before the main thread drains";
  DrainUntil([&] { return !loading.IsLoading(); });
  EXPECT_TRUE(offMain.load());
  EXPECT_EQ(Summary(*container), Summary(*foreground));
  EXPECT_NE(container->FindTableByFullName(u"Track"), nullptr);
  EXPECT_EQ(container->FindTableByFullName(u"Track")->SQLContext(), &context);
  EXPECT_EQ((std::tuple{owner.started, owner.completed, owner.loaded, owner.failed}), (std::tuple{1, 1, 1, 0}));
  EXPECT_TRUE(owner.onMain);
  EXPECT_NE(lastConnection.load(), nullptr);
  EXPECT_NE(lastConnection.load(), chinook.get()) << "the load runs on a copy of the connection";
}

// The cancel comes while the worker is in the middle of the table list: it
// waits there until the main thread has asked to stop.
TEST_F(BackgroundLoadTest, CancelInTheMiddleLeavesTheContainerAsItWas) {
  TLoadingOwner owner(container.get(), provider);
  TmvMetadataAsyncLoading loading(owner);
  StartAndHoldAtRow(loading, 4);
  loading.CancelAsyncMetadataLoading();
  EXPECT_EQ(loading.Thread(), nullptr);
  EXPECT_EQ(rowsRead.load(), 4);
  EXPECT_EQ(container->Count(), 1);
  EXPECT_NE(container->FindTableByFullName(u"Existing"), nullptr);
  EXPECT_EQ((std::tuple{owner.started, owner.completed, owner.loaded, owner.failed}), (std::tuple{1, 1, 0, 0}));
}

TEST_F(BackgroundLoadTest, SecondLoadCancelsTheFirst) {
  TLoadingOwner owner(container.get(), provider);
  TmvMetadataAsyncLoading loading(owner);
  std::atomic<TmvMetadataLoadingThread*> first{nullptr};
  std::atomic<bool> reached{false};
  std::atomic<int> loads{0};
  afterRow = [&](int rows) {
    if (rows == 1) ++loads;
    if (loads.load() > 1 || rows < 3) return true;
    reached = true;
    while (!first.load() || !first.load()->Terminated()) std::this_thread::yield();
    return false;
  };
  loading.LoadMetadataAsync(&provider, &events, nullptr);
  first = loading.Thread();
  DrainUntil([&] { return reached.load(); });
  loading.LoadMetadataAsync(&provider, &events, nullptr);
  DrainUntil([&] { return !loading.IsLoading(); });

  TmvOwned<TmvMetadataContainer> foreground = TmvCreate<TmvMetadataContainer>(nullptr, &context);
  foreground->AddTable(u"Existing");
  afterRow = nullptr;
  foreground->LoadMetadataByFilter(nullptr);
  EXPECT_EQ(Summary(*container), Summary(*foreground)) << "the first load left nothing behind";
  EXPECT_EQ((std::tuple{owner.started, owner.completed, owner.loaded, owner.failed}), (std::tuple{2, 2, 1, 0}));
}

TEST_F(BackgroundLoadTest, FailureThatIsNoStdExceptionReachesTheOwnerOnTheMainThread) {
  TLoadingOwner owner(container.get(), provider);
  TmvMetadataAsyncLoading loading(owner);
  afterRow = [](int rows) {
    if (rows == 5) throw 7;
    return true;
  };
  loading.LoadMetadataAsync(&provider, &events, nullptr);
  DrainUntil([&] { return !loading.IsLoading(); });
  EXPECT_EQ((std::tuple{owner.started, owner.completed, owner.loaded, owner.failed}), (std::tuple{1, 1, 0, 1}));
  EXPECT_TRUE(owner.onMain);
  ASSERT_NE(owner.failure, nullptr);
  EXPECT_THROW(std::rethrow_exception(owner.failure), int);
  EXPECT_EQ(container->Count(), 1);
}

TEST_F(BackgroundLoadTest, ClosingDuringALoadWaitsForTheThread) {
  TLoadingOwner owner(container.get(), provider);
  std::atomic<bool> reached{false};
  {
    TmvMetadataAsyncLoading loading(owner);
    afterRow = [&](int rows) {
      if (rows == 2) reached = true;
      return true;
    };
    loading.LoadMetadataAsync(&provider, &events, nullptr);
    DrainUntil([&] { return reached.load(); });
  }
  EXPECT_EQ(owner.loaded, 0) << "a load cut short by the close hands nothing over";
  EXPECT_EQ(owner.started, owner.completed);
  EXPECT_EQ(container->Count(), 1);
}

TEST_F(BackgroundLoadTest, ProvidersMustBeSet) {
  TLoadingOwner owner(container.get(), provider);
  TmvMetadataAsyncLoading loading(owner);
  EXPECT_EQ(mvtest::ThrownMessage([&] { loading.LoadMetadataAsync(nullptr, &events, nullptr); }),
            u"Syntax provider is not specified");
  EXPECT_EQ(mvtest::ThrownMessage([&] { loading.LoadMetadataAsync(&provider, nullptr, nullptr); }),
            u"Metadata provider is not specified");
  EXPECT_EQ(loading.Thread(), nullptr);
}

// A new load started from the end of the last one (a step of its thread on
// the main thread) cannot wait for that thread there; it is freed later.
TEST_F(BackgroundLoadTest, LoadStartedFromTheEndOfTheLastOne) {
  TLoadingOwner owner(container.get(), provider);
  TmvMetadataAsyncLoading loading(owner);
  owner.onLoaded = [&] {
    if (owner.loaded == 1) loading.LoadMetadataAsync(&provider, &events, nullptr);
  };
  loading.LoadMetadataAsync(&provider, &events, nullptr);
  DrainUntil([&] { return owner.loaded == 2 && !loading.IsLoading(); });
  EXPECT_EQ((std::tuple{owner.started, owner.completed, owner.failed}), (std::tuple{2, 2, 0}));
}

TEST_F(BackgroundLoadTest, DefaultCopiesOfTheProviders) {
  TLoadingOwner owner(container.get(), provider);
  ImvMetadataLoadingOwner& base = owner;
  TmvOwned<TmvBaseSyntaxProvider> reference = mvtest::NewReferenceProvider();
  reference->SetIdentCaseSens(icsSensitiveLowerCase);
  TmvOwned<TmvBaseSyntaxProvider> syntax = base.ImvMetadataLoadingOwner::CloneSyntaxProvider(*reference);
  EXPECT_EQ(syntax->ClassName(), reference->ClassName());
  EXPECT_EQ(syntax->GetIdentCaseSens(), icsSensitiveLowerCase);
  EXPECT_THROW(base.ImvMetadataLoadingOwner::CloneSyntaxProvider(provider), EmvQueryBuilderError)
      << "a class the registry does not know";
  events.SetTrimQuotes(false);
  TmvOwned<TmvBaseMetadataProvider> metadata = base.ImvMetadataLoadingOwner::CloneMetadataProvider(events);
  auto* copy = TmvCast<TmvEventMetadataProvider>(metadata.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_TRUE(copy->OnGetTables && copy->OnGetTableRelations && !copy->OnGetViews);
  EXPECT_FALSE(copy->TrimQuotes());
  EXPECT_EQ(copy->Connection(), nullptr) << "a copy gets a connection of its own";
}

// Another queued call that fails while a cancel waits: the wait goes on to
// the thread's end, and the failure comes out after it.
TEST_F(BackgroundLoadTest, QueuedFailureDuringACancelComesOutAfterTheThreadsEnd) {
  TLoadingOwner owner(container.get(), provider);
  TmvMetadataAsyncLoading loading(owner);
  StartAndHoldAtRow(loading, 2);
  Post([] { throw std::runtime_error("a queued call failed"); });
  EXPECT_THROW(loading.CancelAsyncMetadataLoading(), std::runtime_error);
  EXPECT_EQ(loading.Thread(), nullptr);
  EXPECT_EQ((std::tuple{owner.started, owner.completed, owner.loaded, owner.failed}), (std::tuple{1, 1, 0, 0}));
  EXPECT_EQ(container->Count(), 1);
}
