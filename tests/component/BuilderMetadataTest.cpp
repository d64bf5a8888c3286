// The query builder's metadata operations against a server's catalog. No
// server runs here: a scripted connection answers the INFORMATION_SCHEMA
// queries of the standard catalog readers with rows (and fails on any
// other), so each test shows which queries went out, what landed in the
// container and how the query's datasources took it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "Thrown.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "metadata/fetchers/InformationSchemaCatalog.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "support/LogHelper.h"
#include "support/MainThread.h"
#include "tree/QualifiedNames.h"
#include "tree/Tokens.h"

namespace {

using namespace mv;

TmvMemoryTable Rows(std::initializer_list<const char16_t*> columns,
                    std::initializer_list<std::vector<TmvVariant>> rows) {
  TmvMemoryTable table;
  for (const char16_t* column : columns) table.AddColumn(column, ftWideString, 128);
  for (const auto& row : rows) table.AddRow(row);
  return table;
}

TmvMemoryTable FieldRows(const std::vector<const char16_t*>& names) {
  TmvMemoryTable table = Rows({u"COLUMN_NAME", u"DATA_TYPE", u"CHARACTER_MAXIMUM_LENGTH", u"NUMERIC_PRECISION",
                               u"IS_NULLABLE", u"COLUMN_DEFAULT", u"PRIMARY_KEY"},
                              {});
  for (const char16_t* name : names)
    table.AddRow({name, u"integer", TmvVariant::Null(), u"32", u"NO", TmvVariant::Null(), TmvVariant::Null()});
  return table;
}

// The reference dialect reading its server's catalog from the standard
// views; the server's user works in schema "public". A catalog the readers
// cannot read is an error here, not a silent fallback.
class TCatalogProvider : public mvtest::TReferenceDialectProvider {
 public:
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override {
    return GetDefaultDatabaseNameSQL92(context, connection);
  }
  void GetDefaultSchemaNames(TmvBaseSQLContext*, TmvConnection*, TSQLIdentifiersCollection& names) override {
    names.Clear();
    names.AddIdentifier(u"public");
  }
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override {
    if (!LoadMetadataObjectsSQL92(context, connection, container, filter, database))
      throw EmvQueryBuilderError(u"the catalog cannot be read");
  }
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override {
    if (!LoadMetadataRelationsSQL92(context, connection, container, filter, database))
      throw EmvQueryBuilderError(u"the relations cannot be read");
  }
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override {
    LoadFieldsForObjectSQL92(context, connection, object);
  }
};

// The test dialect is no registered class: a background load gets a copy of
// it this way.
class TCatalogBuilder : public TmvQueryBuilder {
 public:
  TmvOwned<TmvBaseSyntaxProvider> CloneSyntaxProvider(const TmvBaseSyntaxProvider&) override {
    return TmvCreate<TCatalogProvider>();
  }
};

// The messages the builder logs, without its prefix.
class TLines : public ImvLogger {
 public:
  explicit TLines(WideString prefix) : prefix_(std::move(prefix)) {}
  void Debug(WideStringView message) override { Add(message); }
  void Info(WideStringView message) override { Add(message); }
  void Warn(WideStringView message) override { Add(message); }
  void Error(WideStringView message) override { Add(message); }
  void Fatal(WideStringView message) override { Add(message); }
  // The lines of partial loading since the last call.
  std::vector<std::string> Take() {
    std::vector<std::string> taken;
    taken.swap(lines_);
    return taken;
  }

 private:
  void Add(WideStringView message) {
    WideString text(message);
    if (text.starts_with(prefix_)) text.erase(0, prefix_.size());
    if (text.find(u"DoPartialMetadataLoding") != WideString::npos) lines_.push_back(UTF8Encode(text));
  }
  WideString prefix_;
  std::vector<std::string> lines_;
};

// A gate that a worker waits at until the test opens it.
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

class BuilderMetadataTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  BuilderMetadataTest() {
    server.AddResult(kInformationSchemaDefaultDatabaseQuery, Rows({u"CATALOG_NAME"}, {{u"shop"}}));
    // The handler runs on the thread of the load; a test may hold it there.
    server.AddHandler(InformationSchemaTablesQuery(u"", u""), [this](const TmvParams&) {
      if (holdNextLoad.exchange(false)) {
        held = true;
        gate.Pass();
        heldLoadReleased = true;
      }
      return Rows({u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE"},
                  {{u"public", u"orders", u"BASE TABLE"},
                   {u"public", u"customers", u"BASE TABLE"},
                   {u"public", u"items", u"BASE TABLE"},
                   {u"sales", u"archive", u"BASE TABLE"}});
    });
    server.AddResult(InformationSchemaViewsQuery(u"", u""),
                     Rows({u"TABLE_SCHEMA", u"TABLE_NAME"}, {{u"public", u"recent"}}));
    server.AddResult(InformationSchemaRelationsQuery(u""),
                     Rows({u"PK_TABLE_DATABASE", u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", u"PK_FIELD_NAME",
                           u"FK_TABLE_DATABASE", u"FK_SCHEMA_NAME", u"FK_TABLE_NAME", u"FK_FIELD_NAME", u"ORDINAL"},
                          {{u"shop", u"public", u"customers", u"id", u"shop", u"public", u"orders", u"customer_id",
                            u"1"}}));
    for (const auto& [table, fields] : Tables()) {
      server.AddResult(FieldsQuery(table), FieldRows(fields));
      // An object the container lacks is bound by the columns of a query on it.
      TmvMemoryTable columns;
      for (const char16_t* field : fields) columns.AddColumn(field, ftInteger);
      server.AddResult(ColumnsQuery(table), columns);
    }
    server.Open();
    metadata.SetConnection(&server);
    builder->SetSyntaxProvider(&provider);
    builder->SetMetadataProvider(&metadata);
    builder->OnMetadataLoaded = [this](TmvQueryBuilder*) { ++loadedEvents; };
  }
  ~BuilderMetadataTest() override {
    gate.Open();
    builder.reset();
    MainThreadDispatcher().ProcessPending();
  }

  static std::vector<std::pair<const char16_t*, std::vector<const char16_t*>>> Tables() {
    return {{u"orders", {u"id", u"customer_id"}}, {u"customers", {u"id", u"name"}},
            {u"items", {u"id", u"order_id", u"price"}}};
  }
  static WideString FieldsQuery(const char16_t* table) { return InformationSchemaFieldsQuery(u"shop", u"public", table); }
  WideString ColumnsQuery(const char16_t* table) const { return provider.GetQueryToLoadFieldsForObject(u"", table); }

  // The statements the server received since the last call, by a short name.
  std::vector<std::string> Sent() {
    std::vector<std::string> sent;
    for (const auto& statement : server.Received()) {
      const WideString& sql = statement.Sql;
      if (sql == kInformationSchemaDefaultDatabaseQuery)
        sent.push_back("database");
      else if (sql == InformationSchemaTablesQuery(u"", u""))
        sent.push_back("tables");
      else if (sql == InformationSchemaViewsQuery(u"", u""))
        sent.push_back("views");
      else if (sql == InformationSchemaRelationsQuery(u""))
        sent.push_back("relations");
      else
        for (const auto& [table, fields] : Tables())
          if (sql == FieldsQuery(table)) sent.push_back("fields " + UTF8Encode(table));
    }
    server.ClearReceived();
    return sent;
  }
  // The objects of the builder's container, in order.
  std::string Objects() const {
    std::string text;
    TmvMetadataContainer* container = builder->MetadataContainer();
    for (int i = 0; i < container->Count(); ++i)
      text += (i ? " " : "") + UTF8Encode(container->Items(i)->SchemedNameStrNotQuoted());
    return text;
  }
  // The datasources of the first SELECT: each object's name and its field
  // count, "?" for one the container does not know.
  std::string Datasources() const {
    std::string text;
    TmvDatasourceGroup* group = builder->Query()->FirstSelect()->Datasources();
    for (int i = 0; i < group->Count(); ++i) {
      auto* datasource = TmvCast<TmvDatasource>(group->Items(i));
      TmvMetadataObject* object = datasource ? datasource->GetMetadataObject() : nullptr;
      text += (i ? " " : "") +
              (object ? UTF8Encode(object->NameStr()) + ":" + std::to_string(datasource->GetFields()->Count())
                      : std::string("?"));
    }
    return text;
  }
  // Drains the main-thread queue until the background load has ended and
  // its last step has run.
  void DrainLoad() {
    ASSERT_TRUE(MainThreadDispatcher().WaitFor(
        [this] { return !builder->IsLoadingMetadataAsync() && !MainThreadDispatcher().HasPending(); },
        std::chrono::seconds(30)))
        << "the load did not end";
  }

  TmvMemoryConnection server;
  TmvConnectionMetadataProvider metadata;
  TCatalogProvider provider;
  TmvOwned<TmvQueryBuilder> builder = TmvCreate<TCatalogBuilder>();
  int loadedEvents = 0;
  std::atomic<bool> holdNextLoad{false};
  std::atomic<bool> held{false};
  std::atomic<bool> heldLoadReleased{false};
  TGate gate;
};

}  // namespace

// The filter decides what a refresh loads; a query loaded before gets its
// objects and fields afterwards, and each refresh starts from an empty container.
TEST_F(BuilderMetadataTest, RefreshMetadataLoadsWhatTheFilterSelectsAndRebinds) {
  builder->SetSql(u"SELECT * FROM orders o INNER JOIN customers c ON o.customer_id = c.id");
  EXPECT_EQ(Datasources(), "? ?");
  EXPECT_TRUE(Sent().empty());

  struct Case {
    const char* name;
    std::function<void(TmvMetadataFilter&)> setUp;
    std::string objects;
    std::string datasources;
    // The catalog is read again each time; then the fields of what the query binds.
    std::vector<std::string> sent = {"tables", "database", "views", "relations", "fields orders", "fields customers"};
  };
  const Case cases[] = {
      {"no filter", nullptr, "public.orders public.customers public.items sales.archive public.recent",
       "orders:2 customers:2"},
      {"one schema", [](TmvMetadataFilter& f) { f.Add()->SetSchemaMask(u"public"); },
       "public.orders public.customers public.items public.recent", "orders:2 customers:2"},
      {"a schema left out",
       [](TmvMetadataFilter& f) {
         TmvMetadataFilterItem* item = f.Add();
         item->SetSchemaMask(u"sales");
         item->SetExclude(true);
       },
       "public.orders public.customers public.items public.recent", "orders:2 customers:2"},
      {"objects by mask", [](TmvMetadataFilter& f) { f.Add()->SetObjectMask(u"%s"); },
       "public.orders public.customers public.items", "orders:2 customers:2"},
      {"one object", [](TmvMetadataFilter& f) { f.Add()->SetObjectMask(u"orders"); }, "public.orders", "orders:2 ?",
       {"tables", "database", "views", "relations", "fields orders"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    builder->MetadataFilter()->Clear();
    if (c.setUp) c.setUp(*builder->MetadataFilter());
    builder->RefreshMetadata();
    EXPECT_EQ(Objects(), c.objects);
    EXPECT_EQ(Datasources(), c.datasources);
    EXPECT_EQ(Sent(), c.sent);
  }
  EXPECT_EQ(UTF8Encode(builder->MetadataContainer()->DefaultDatabaseNameStr()), "shop");
}

// Clearing takes the objects of one database that the masks match, with
// regard to case. The loaded objects carry the server's default database,
// so clearing without one leaves them.
TEST_F(BuilderMetadataTest, ClearMetadataByMask) {
  TmvOwned<TSQLQualifiedName> shop = builder->SQLContext()->ParseQualifiedName(u"shop");
  const std::string all = "public.orders public.customers public.items sales.archive public.recent";
  struct Case {
    const char16_t* objectMask;
    const char16_t* schemaMask;
    const TSQLQualifiedName* database;
    std::string left;
  };
  const Case cases[] = {
      {u"orders", u"", shop.get(), "public.customers public.items sales.archive public.recent"},
      {u"%s", u"public", shop.get(), "sales.archive public.recent"},
      {u"", u"sales", shop.get(), "public.orders public.customers public.items public.recent"},
      {u"ORDERS", u"", shop.get(), all},
      {u"orders", u"", nullptr, all},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(UTF8Encode(c.objectMask) + "/" + UTF8Encode(c.schemaMask) + (c.database ? " of shop" : ""));
    builder->RefreshMetadata();
    builder->ClearMetadataByMask(c.objectMask, c.schemaMask, c.database);
    EXPECT_EQ(Objects(), c.left);
  }
  builder->ClearMetadata();
  EXPECT_EQ(Objects(), all);
  builder->ClearMetadata(shop.get());
  EXPECT_EQ(Objects(), "");
}

// With partial loading on, each new query looks up the objects it names
// that the container lacks, once, at the end of its update, and nothing more.
TEST_F(BuilderMetadataTest, PartialLoadingLooksUpWhatTheQueryNames) {
  auto lines = std::make_shared<TLines>(builder->LogHelper().GetPrefix());
  builder->LogHelper().SetLogger(lines);
  builder->PartialMetadataLoading = true;

  struct Step {
    const char16_t* sql;
    std::vector<std::string> log;
    std::vector<std::string> sent;
    std::string objects;
    std::string datasources;
  };
  const std::string start = "DoPartialMetadataLoding: start";
  const std::string end = "DoPartialMetadataLoding: end";
  const Step steps[] = {
      {u"SELECT 1", {start, "\tDoPartialMetadataLoding: query does not reference any object", end}, {}, "", ""},
      {u"SELECT o.id FROM orders o INNER JOIN customers c ON o.customer_id = c.id",
       {start, "\tDoPartialMetadataLoding: unresolved reference to orders found",
        "\tDoPartialMetadataLoding: unresolved reference to customers found",
        "\tDoPartialMetadataLoding: loading metadata", "\tDoPartialMetadataLoding: loading default database name",
        "\tDoPartialMetadataLoding: loading default schema names",
        "\tDoPartialMetadataLoding: loaded 2 suitable objects", "\tDoPartialMetadataLoding: re-fixup loaded query",
        end},
       {"tables", "database", "views", "relations", "fields orders", "fields customers"},
       "public.orders public.customers",
       "orders:2 customers:2"},
      // Only the new name is looked up.
      {u"SELECT * FROM orders, items",
       {start, "\tDoPartialMetadataLoding: unresolved reference to items found",
        "\tDoPartialMetadataLoding: loading metadata", "\tDoPartialMetadataLoding: loaded 1 suitable objects",
        "\tDoPartialMetadataLoding: re-fixup loaded query", end},
       {"tables", "database", "views", "relations", "fields items"},
       "public.orders public.customers public.items",
       "orders:2 items:3"},
      // Everything known: no query goes out.
      {u"SELECT * FROM customers", {start, end}, {}, "public.orders public.customers public.items", "customers:2"},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(UTF8Encode(step.sql));
    builder->SetSql(step.sql);
    EXPECT_EQ(Datasources(), step.datasources);
    EXPECT_EQ(lines->Take(), step.log);
    EXPECT_EQ(Sent(), step.sent);
    EXPECT_EQ(Objects(), step.objects);
  }
  EXPECT_EQ(UTF8Encode(builder->MetadataContainer()->DefaultDatabaseNameStr()), "shop");
  TSQLIdentifiersCollection* schemas = builder->MetadataContainer()->DefaultSchemaNames();
  ASSERT_EQ(schemas->GetCount(), 1);
  EXPECT_EQ(schemas->Identifier(0)->Token, u"public");
}

TEST_F(BuilderMetadataTest, PartialLoadingDoesNothingOffline) {
  auto lines = std::make_shared<TLines>(builder->LogHelper().GetPrefix());
  builder->LogHelper().SetLogger(lines);
  builder->PartialMetadataLoading = true;
  builder->SetWorkOffline(true);
  builder->SetSql(u"SELECT * FROM orders");
  builder->DoPartialMetadataLoading();
  EXPECT_TRUE(lines->Take().empty());
  EXPECT_TRUE(Sent().empty());
  EXPECT_EQ(Objects(), "");
  EXPECT_EQ(Datasources(), "?");
}

// The background load hands its objects over on the main thread, when the
// host drains the queue: then OnMetadataLoaded fires and the datasources
// take the new objects.
TEST_F(BuilderMetadataTest, AsyncLoadCompletesThroughTheMainThread) {
  builder->SetSql(u"SELECT * FROM orders");
  builder->LoadMetadataAsync();
  EXPECT_EQ(Objects(), "");
  EXPECT_EQ(loadedEvents, 0);
  DrainLoad();
  EXPECT_EQ(loadedEvents, 1);
  EXPECT_EQ(Objects(), "public.orders public.customers public.items sales.archive public.recent");
  EXPECT_EQ(builder->MetadataContainer()->GetRelations().size(), 1u);
  EXPECT_EQ(Datasources(), "orders:2");
  // The load ran on a copy of the connection; the fields come on demand
  // through the builder's own.
  EXPECT_EQ(Sent(), std::vector<std::string>{"fields orders"});
}

// A second load cancels the first and waits for its thread: the first,
// held in the middle of its table list, is released only while the second
// call waits, and hands nothing over.
TEST_F(BuilderMetadataTest, SecondAsyncLoadCancelsTheFirstAndWaitsForIt) {
  holdNextLoad = true;
  builder->LoadMetadataAsync();
  ASSERT_TRUE(MainThreadDispatcher().WaitFor([this] { return held.load(); }, std::chrono::seconds(30)));
  // Runs only while the second call waits for the first thread.
  Post([this] { gate.Open(); });
  builder->LoadMetadataAsync();
  EXPECT_TRUE(heldLoadReleased.load()) << "the second call returned before the first load ended";
  DrainLoad();
  EXPECT_EQ(loadedEvents, 1);
  EXPECT_EQ(Objects(), "public.orders public.customers public.items sales.archive public.recent");
}

// A failing background load is raised on the main thread by the deferred
// call, never inside the call that started it; the container stays as it was.
TEST_F(BuilderMetadataTest, FailingAsyncLoadIsRaisedOnTheMainThread) {
  builder->MetadataContainer()->AddTable(u"kept");
  // The builder's connection is open; the copy the load opens fails.
  server.SetOpenError(u"The server went away");
  builder->LoadMetadataAsync();
  EXPECT_EQ(mvtest::ThrownMessage([this] { DrainLoad(); }), u"The server went away");
  EXPECT_FALSE(MainThreadDispatcher().HasPending());
  EXPECT_EQ(loadedEvents, 0);
  EXPECT_EQ(Objects(), "kept");
}
