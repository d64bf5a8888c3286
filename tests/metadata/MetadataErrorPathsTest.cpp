// Failures on the metadata roads: what a statement's failure becomes, an
// abort that passes untouched, a container without a context, and loads that
// a provider breaks or aborts in the middle, which must leave the container
// whole and usable.
#include <gtest/gtest.h>

#include <stdexcept>

#include "MetadataTestSupport.h"
#include "Thrown.h"
#include "metadata/EventMetadataProvider.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "support/Exceptions.h"

using namespace mv;
using namespace mv::test;
using mvtest::ThrownMessage;

namespace {

// Throws what the case says when the statement opens.
enum class TFailure { Abort, StdError, QueryBuilderError, NoStdException };

void Raise(TFailure failure) {
  switch (failure) {
    case TFailure::Abort:
      throw EAbort();
    case TFailure::StdError:
      throw std::runtime_error("disk I/O error");
    case TFailure::QueryBuilderError:
      throw EmvQueryBuilderError(u"no such table: t");
    case TFailure::NoStdException:
      throw 42;
  }
}

}  // namespace

TEST(ExecSQLDatasetURFailureTest, AbortPassesAndEveryOtherFailureIsTheQueryError) {
  const struct {
    TFailure failure;
    const char16_t* message;  // null: the abort itself comes out
  } cases[] = {
      {TFailure::Abort, nullptr},
      {TFailure::StdError, u"Error executing query:\rselect x from t\rMessage:\rdisk I/O error"},
      {TFailure::QueryBuilderError, u"Error executing query:\rselect x from t\rMessage:\rno such table: t"},
      {TFailure::NoStdException, u"Error executing query:\rselect x from t\rMessage:\rUnknown error"},
  };
  for (const auto& c : cases) {
    TmvMemoryConnection server;
    server.AddHandler(u"select x from t", [&c](const TmvParams&) -> TmvMemoryTable {
      Raise(c.failure);
      return {};
    });
    TmvConnectionMetadataProvider provider;
    provider.SetConnection(&server);
    try {
      provider.ExecSQLDatasetUR(u"select x from t");
      ADD_FAILURE() << "no exception";
    } catch (const EAbort& e) {
      EXPECT_EQ(c.message, nullptr) << UTF8Encode(e.Message());
    } catch (const EmvQueryBuilderError& e) {
      ASSERT_NE(c.message, nullptr);
      EXPECT_EQ(e.Message(), c.message);
      EXPECT_EQ(e.Text(), u"select x from t");
    }
  }
}

TEST(ContainerWithoutContextTest, OperationsThatNeedOneSaySo) {
  TmvOwned<TmvMetadataContainer> container = TmvCreate<TmvMetadataContainer>(nullptr, nullptr);
  const WideString expected = u"Syntax provider is not specified";
  TmvOwned<TastTokenIdentifier> name = TastCreate<TastTokenIdentifier>(nullptr, u"t", false);
  EXPECT_EQ(ThrownMessage([&] { container->SortByNames(); }), expected);
  EXPECT_EQ(ThrownMessage([&] { container->ClearMetadataByFilter(nullptr); }), expected);
  EXPECT_EQ(ThrownMessage([&] { container->FindTableByAltName(name.get()); }), expected);
  EXPECT_EQ(ThrownMessage([&] { container->LoadMetadataByFilter(static_cast<TmvConnection*>(nullptr), nullptr); }),
            expected);
  EXPECT_EQ(ThrownMessage([&] { container->AddTable(u"t"); }), expected);
  EXPECT_EQ(container->FindTableByFullName(u"t"), nullptr) << "a lookup by text finds nothing";
  EXPECT_FALSE(container->IsAborted());
}

namespace {

// A load through host callbacks: tables, then views, then relations; a
// callback may break the load where a test says.
class BrokenLoadTest : public MetadataTest {
 protected:
  BrokenLoadTest() {
    provider.schemas = false;
    context.SetMetadataProvider(&events);
    events.OnGetTables = [](TmvObject*, TSQLDatabaseObjectsList& names) {
      for (const char16_t* name : {u"A", u"B", u"C", u"D", u"E"}) names.CreateSQLDatabaseObject()->AddName(name, false);
    };
    events.OnGetViews = [this](TmvObject*, TSQLDatabaseObjectsList& names) {
      if (failViews) failViews();
      names.CreateSQLDatabaseObject()->AddName(u"V", false);
    };
    events.OnGetTableRelations = [this](TmvObject*, const TSQLQualifiedName&, TSQLMetadataRelations&) {
      ++relationCalls;
    };
    container->GetOnUpdated().AddHandler(counting, [this](TmvObject*) { ++updates; });
  }
  // The container outlives this part of the fixture: its count of updates goes first.
  ~BrokenLoadTest() override {
    container->GetOnUpdated().RemoveHandler(counting);
    context.SetMetadataProvider(nullptr);
  }

  // Every object is found by its name, and the container takes a new load.
  void ExpectWhole(int count) {
    ASSERT_EQ(container->Count(), count);
    for (int i = 0; i < count; ++i) {
      TmvMetadataObject* object = container->Items(i);
      EXPECT_EQ(container->FindObjectByFullName(object->NameStr()), object) << UTF8Encode(object->NameStr());
    }
    EXPECT_FALSE(container->IsAborted());
    failViews = nullptr;
    container->OnMetadataObjectAdded = nullptr;
    container->Clear();
    container->LoadMetadataByFilter(nullptr);
    EXPECT_EQ(container->Count(), 6) << "the next load runs in full";
  }

  TmvEventMetadataProvider events;
  const TmvHandlerId counting = TmvHandlerId::Unique();
  std::function<void()> failViews;
  int relationCalls = 0;
  int updates = 0;
};

}  // namespace

// A provider that fails in the middle: the failure passes as it is, the
// update pair is closed, and the objects fetched so far stay, whole.
TEST_F(BrokenLoadTest, ProviderFailureInTheMiddle) {
  for (TFailure failure : {TFailure::StdError, TFailure::NoStdException, TFailure::Abort}) {
    SCOPED_TRACE(int(failure));
    container->Clear();
    failViews = [failure] { Raise(failure); };
    const int updatesBefore = updates;
    bool raised = false;
    try {
      container->LoadMetadataByFilter(nullptr);
    } catch (...) {
      raised = true;
    }
    EXPECT_TRUE(raised);
    EXPECT_EQ(updates, updatesBefore + 1) << "the update pair is closed once";
    EXPECT_EQ(relationCalls, 0);
    ExpectWhole(5);
    relationCalls = 0;
  }
}

// An abort from a handler after the third object: the load stops between
// objects, fetches no relations, and clears the flag.
TEST_F(BrokenLoadTest, AbortInTheMiddle) {
  int added = 0;
  container->OnMetadataObjectAdded = [&](TmvObject*, TmvMetadataObject*) {
    if (++added == 3) container->AbortMetadataLoading();
  };
  container->LoadMetadataByFilter(nullptr);
  EXPECT_EQ(relationCalls, 0);
  ExpectWhole(3);
}

namespace {

// A catalog that adds a field and then fails.
class TFailingCatalogProvider : public TMetadataTestProvider {
 public:
  void LoadFieldsForTableFromServer(TmvBaseSQLContext*, TmvConnection*, TmvMetadataTable* table) override {
    table->GetFields()->AddField(u"half");
    throw 42;
  }
};

}  // namespace

TEST(FieldLoadFailureTest, CatalogFailureLeavesNoHalfFilledList) {
  TFailingCatalogProvider syntax;
  TmvMemoryConnection server;
  TmvConnectionMetadataProvider metadata;
  metadata.SetConnection(&server);
  TmvBaseSQLContext context;
  context.SetSyntaxProvider(&syntax);
  context.SetMetadataProvider(&metadata);
  {
    TmvOwned<TmvMetadataContainer> container = TmvCreate<TmvMetadataContainer>(nullptr, &context);
    TmvMetadataTable* table = container->AddTable(u"t");
    EXPECT_THROW(context.LoadMetadataForTable(&server, table), int);
    EXPECT_EQ(table->GetFields()->Count(), 0);
    EXPECT_FALSE(table->GetFields()->Loaded());
  }
  context.SetMetadataProvider(nullptr);
  context.SetSyntaxProvider(nullptr);
}
