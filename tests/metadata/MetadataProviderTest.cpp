// Metadata providers: the base contract on a scripted connection, the field
// load from the driver, the event provider with and without SQL, the
// registry, and the loading road from the container through the context.
#include <gtest/gtest.h>

#include "MetadataTestSupport.h"
#include "Thrown.h"
#include "metadata/EventMetadataProvider.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "support/Exceptions.h"

using namespace mv;
using namespace mv::test;

namespace {

class MetadataProviderTest : public MetadataTest {
 protected:
  MetadataProviderTest() {
    metadataProvider.SetConnection(&server);
    context.SetMetadataProvider(&metadataProvider);
  }
  ~MetadataProviderTest() override { context.SetMetadataProvider(nullptr); }

  TmvMemoryConnection server;
  TmvConnectionMetadataProvider metadataProvider;
};

TmvFieldDef Column(const char16_t* name, TFieldType type, int size = 0, TFieldAttributes attributes = 0) {
  TmvFieldDef def;
  def.Name = name;
  def.DataType = type;
  def.Size = size;
  def.Attributes = attributes;
  return def;
}

}  // namespace

TEST(MetadataProviderTrimTest, SpacesGoBeforeQuotes) {
  TmvConnectionMetadataProvider provider;
  EXPECT_EQ(provider.TrimName(u"  \"x\" "), u"x");
  EXPECT_EQ(provider.TrimName(u"\"a\"\"b\""), u"a\"b");
  EXPECT_EQ(provider.TrimName(u"[x]"), u"[x]");
  EXPECT_EQ(provider.TrimName(u"`x`"), u"`x`");
  provider.SetTrimQuotes(false);
  EXPECT_EQ(provider.TrimName(u" \"x\" "), u"\"x\"");
  provider.SetTrimSpaces(false);
  provider.SetTrimQuotes(true);
  EXPECT_EQ(provider.TrimName(u" \"x\""), u" \"x\"");
}

TEST(MetadataProviderRegistryTest, EngineProvidersAreRegisteredByClassName) {
  const TmvMetadataProviderClass* found = MetadataProvidersList().FindClassByClassName("tmveventmetadataprovider");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found, &TmvEventMetadataProvider::StaticClass());
  std::unique_ptr<TmvBaseMetadataProvider> made(found->CreateRaw());
  EXPECT_EQ(made->ClassName(), "TmvEventMetadataProvider");
  EXPECT_NE(MetadataProvidersList().FindClassByClassName("TmvConnectionMetadataProvider"), nullptr);
  EXPECT_EQ(MetadataProvidersList().FindClassByClassName("TmvNoSuchProvider"), nullptr);
  const int count = MetadataProvidersList().Count();
  MetadataProvidersList().RegisterMetadataProvider(TmvEventMetadataProvider::StaticClass());
  EXPECT_EQ(MetadataProvidersList().Count(), count);
}

TEST_F(MetadataProviderTest, ContractMessages) {
  TmvConnectionMetadataProvider unconnected;
  EXPECT_EQ(mvtest::ThrownMessage([&] { unconnected.CheckConnectionSet(); }),
            u"Connection object is not specified (property Connection is not assigned)");
  EXPECT_EQ(mvtest::ThrownMessage([&] { container->LoadMetadataByFilter(nullptr); }),
            u"Automatic loading of metadata is not supported by this metadata provider");
  EXPECT_EQ(mvtest::ThrownMessage([&] { container->LoadMetadataByFilter(nullptr, Name({u"sales"}).get()); }),
            u"Automatic loading of metadata is not supported for database sales by this metadata provider");
  provider.databases = false;
  provider.schemas = false;
  EXPECT_EQ(mvtest::ThrownMessage([&] { provider.GetDefaultDatabaseName(&context, nullptr); }),
            u"The server doesn't support queries with objects from different databases.");
  TSQLIdentifiersCollection& schemas = *container->DefaultSchemaNames();
  EXPECT_EQ(mvtest::ThrownMessage([&] { provider.GetDefaultSchemaNames(&context, nullptr, schemas); }),
            u"The server doesn't support schemas.");
}

TEST_F(MetadataProviderTest, StatementFailuresNameTheStatementAndTheCause) {
  server.AddError(u"select broken", u"no such table: broken");
  const auto e = mvtest::Thrown<EmvQueryBuilderError>([&] { metadataProvider.ExecSQLDatasetUR(u"select broken"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->Message(), u"Error executing query:\rselect broken\rMessage:\rno such table: broken");
  EXPECT_EQ(e->Text(), u"select broken");
}

TEST_F(MetadataProviderTest, EmptyParamsLeaveTheDatasetsParamsAlone) {
  server.AddResult(u"select :a as x", TmvMemoryTable().AddColumn(u"x", ftInteger).AddRow({TmvVariant(int64_t(1))}));
  int paramEvents = 0;
  metadataProvider.OnDatasetSetParams = [&](TmvObject*, TmvDataSet*, const TmvParams&) { ++paramEvents; };
  TmvParams empty;
  std::unique_ptr<TmvDataSet> dataset;
  // The parameter parsed from the statement has no value: the empty set did not replace it.
  EXPECT_THROW(dataset = metadataProvider.ExecSQLDatasetUR(&server, u"select :a as x", &empty), EmvQueryBuilderError);
  EXPECT_EQ(paramEvents, 0);

  TmvParams params;
  params.CreateParam(ftInteger, u"a").SetAsInteger(5);
  dataset = metadataProvider.ExecSQLDatasetUR(&server, u"select :a as x", &params);
  EXPECT_EQ(paramEvents, 1);
  ASSERT_TRUE(dataset->Active());
  EXPECT_EQ(server.Received().back().Params.ParamByName(u"a").AsWideString(), u"5");
}

TEST_F(MetadataProviderTest, IsTableExistsAsksTheServer) {
  server.AddResult(u"select 1 as dummy_value from t", TmvMemoryTable().AddColumn(u"dummy_value", ftInteger));
  EXPECT_TRUE(context.IsTableExists(nullptr, u"t"));
  EXPECT_FALSE(context.IsTableExists(nullptr, u"missing"));
}

TEST_F(MetadataProviderTest, DestroyingTheProviderClearsItFromEveryContext) {
  TmvBaseSQLContext other;
  {
    TmvEventMetadataProvider shortLived;
    context.SetMetadataProvider(&shortLived);
    other.SetMetadataProvider(&shortLived);
    EXPECT_EQ(context.MetadataProvider(), &shortLived);
  }
  EXPECT_EQ(context.MetadataProvider(), nullptr);
  EXPECT_EQ(other.MetadataProvider(), nullptr);
  TmvOwned<TmvEventMetadataProvider> owned = TmvCreate<TmvEventMetadataProvider>();
  context.SetMetadataProvider(owned.get());
  other.SetMetadataProvider(owned.get());
  owned.reset();
  EXPECT_EQ(context.MetadataProvider(), nullptr);
  EXPECT_EQ(other.MetadataProvider(), nullptr);
}

TEST_F(MetadataProviderTest, DriverSharpensACatalogListWithoutWeakeningIt) {
  TmvMetadataTable* table = Table({u"t"});
  TmvMetadataFieldsList* fields = table->GetFields();
  // What a catalog query found, in the server's own order and spelling (a
  // case-sensitive dialect: the names carry the case flag).
  TmvMetadataField* b = fields->AddField(Name({u"b"}, true).get(), ftUnknown, 0, true, true);
  b->SetFieldTypeName(u"varchar");
  TmvMetadataField* a = fields->AddField(Name({u"a"}, true).get(), ftUnknown, 7, true);
  fields->SetLoaded(false);

  TmvMemoryTable described;
  described.AddColumn(Column(u"a", ftInteger, 4, faRequired));
  described.AddColumn(Column(u"b", ftString, 30));
  described.AddColumn(Column(u"c", ftFloat, 0, faReadonly));
  server.AddResult(u"select * from t a where 0<>0", described);
  metadataProvider.LoadFieldsForObjectFromDriver(&context, nullptr, table);

  ASSERT_EQ(fields->Count(), 3);
  EXPECT_TRUE(fields->Loaded());
  EXPECT_EQ(fields->Items(0), b);
  EXPECT_EQ(fields->Items(1), a);
  EXPECT_EQ(b->FieldTypeName(), u"varchar");
  EXPECT_EQ(b->FieldType(), ftString);
  EXPECT_EQ(b->Size(), 30);
  EXPECT_TRUE(b->ReadOnly());   // stays read-only
  EXPECT_EQ(a->Size(), 7);      // a size the catalog gave stays
  EXPECT_FALSE(a->Nullable());  // sharpened to not null
  TmvMetadataField* c = fields->Items(2);
  EXPECT_EQ(c->NameStrNotQuoted(), u"c");
  EXPECT_TRUE(c->ReadOnly());
  EXPECT_EQ(c->FieldType(), ftFloat);
}

TEST_F(MetadataProviderTest, QuotedDriverNamesStayQuotedWithoutTrimQuotes) {
  TmvMetadataTable* table = Table({u"t"});
  server.AddResult(u"select * from t a where 0<>0",
                   TmvMemoryTable().AddColumn(u"\"Quoted\"", ftInteger).AddColumn(u" plain ", ftInteger));
  metadataProvider.SetTrimQuotes(false);
  metadataProvider.LoadFieldsForObjectFromDriver(&context, nullptr, table);
  ASSERT_EQ(table->GetFields()->Count(), 2);
  EXPECT_EQ(table->GetFields()->Items(0)->NameStrNotQuoted(), u"\"Quoted\"");
  EXPECT_EQ(table->GetFields()->Items(1)->NameStrNotQuoted(), u"plain");
}

TEST_F(MetadataProviderTest, AFailedObjectQueryDescribesKnownFieldsOneByOne) {
  TmvMetadataTable* table = Table({u"t"});
  table->GetFields()->AddField(Name({u"x"}).get());
  table->GetFields()->AddField(Name({u"y"}).get());
  server.AddError(u"select * from t a where 0<>0", u"permission denied");
  server.AddResult(u"select x from t a where 0<>0", TmvMemoryTable().AddColumn(u"x", ftInteger, 0, faRequired));
  server.AddError(u"select y from t a where 0<>0", u"permission denied");
  metadataProvider.LoadFieldsForObjectFromDriver(&context, nullptr, table);
  EXPECT_EQ(table->GetFields()->Items(0)->FieldType(), ftInteger);
  EXPECT_FALSE(table->GetFields()->Items(0)->Nullable());
  EXPECT_EQ(table->GetFields()->Items(1)->FieldType(), ftUnknown);
  EXPECT_EQ(table->GetFields()->Count(), 2);
}

TEST_F(MetadataProviderTest, FieldsLoadOnDemandUnlessOffline) {
  TmvMetadataTable* table = Table({u"t"});
  server.AddResult(u"select * from t a where 0<>0", TmvMemoryTable().AddColumn(u"id", ftInteger));
  int statements = 0;
  metadataProvider.OnDatasetSetSql = [&](TmvObject*, TmvDataSet*, WideStringView) { ++statements; };
  std::u16string events;
  container->OnObjectMetadataLoading = [&](TmvObject*, TmvMetadataObject*) { events += u"<"; };
  container->OnObjectMetadataLoaded = [&](TmvObject*, TmvMetadataObject*) { events += u">"; };

  container->SetWorkOffline(true);
  table->LoadFieldsOnDemand();
  EXPECT_EQ(table->GetFields()->Count(), 0);
  EXPECT_FALSE(table->GetFields()->Loaded());
  EXPECT_EQ(statements, 0);
  EXPECT_EQ(events, u"<>");

  // A forced load fetches all the same, once.
  table->LoadFields();
  EXPECT_EQ(table->GetFields()->Count(), 1);
  table->LoadFields();
  EXPECT_EQ(statements, 1);
  EXPECT_EQ(events, u"<><>");
}

TEST_F(MetadataProviderTest, ContainerLoadsTheFieldsOfEveryObject) {
  Table({u"t"});
  Table({u"u"})->GetFields()->SetLoaded(true);
  server.AddResult(u"select * from t a where 0<>0", TmvMemoryTable().AddColumn(u"id", ftInteger));
  std::vector<WideString> statements;
  metadataProvider.OnDatasetSetSql = [&](TmvObject*, TmvDataSet*, WideStringView sql) { statements.emplace_back(sql); };
  container->LoadFields();
  EXPECT_EQ(statements, std::vector<WideString>{u"select * from t a where 0<>0"});
  EXPECT_EQ(container->Items(0)->GetFields()->Count(), 1);
}

TEST_F(MetadataProviderTest, ContextForwardersNeedASyntaxProvider) {
  context.SetSyntaxProvider(nullptr);
  TmvOwned<TmvMetadataFieldsList> fields = TmvCreate<TmvMetadataFieldsList>(nullptr, &context);
  EXPECT_EQ(mvtest::ThrownMessage([&] { context.LoadFieldsForQuery(nullptr, u"select 1", *fields); }),
            u"Syntax provider is not specified");
  EXPECT_EQ(mvtest::ThrownMessage([&] { context.LoadMetadataObjects(nullptr, container.get(), nullptr, nullptr); }),
            u"Syntax provider is not specified");
}

// --- The event provider ---

class EventMetadataProviderTest : public MetadataTest {
 protected:
  EventMetadataProviderTest() { context.SetMetadataProvider(&events); }
  ~EventMetadataProviderTest() override { context.SetMetadataProvider(nullptr); }

  // A callback that names objects given as "schema.name" or "name".
  static TmvGetObjectNamesEvent Names(std::vector<std::pair<const char16_t*, const char16_t*>> names) {
    return [names](TmvObject*, TSQLDatabaseObjectsList& list) {
      for (const auto& [schema, name] : names) {
        TSQLDatabaseObject* object = list.CreateSQLDatabaseObject();
        if (schema) object->AddName(schema, false);
        object->AddName(name, false);
      }
    };
  }

  TmvEventMetadataProvider events;
};

TEST_F(EventMetadataProviderTest, NoCallbacksGiveAnEmptyContainer) {
  EXPECT_FALSE(events.GetCanExecSQL());
  container->LoadMetadataByFilter(nullptr);
  EXPECT_EQ(container->Count(), 0);
  EXPECT_TRUE(container->Loaded());
  EXPECT_EQ(mvtest::ThrownMessage([&] { container->LoadMetadataByFilter(nullptr, Name({u"db2"}).get()); }),
            u"Automatic loading of metadata is not supported for database db2 by this metadata provider");
}

TEST_F(EventMetadataProviderTest, ObjectsComeFromTheNameCallbacksThroughTheFilter) {
  events.OnGetTables = Names({{u"dbo", u"orders"}, {u"dbo", u"tmp_x"}, {nullptr, u"bare"}});
  events.OnGetSystemTables = Names({{u"sys", u"objects"}});
  events.OnGetViews = Names({{u"dbo", u"recent"}});
  events.OnGetProcedures = Names({{u"dbo", u"refresh"}});
  events.OnGetSystemSynonyms = Names({{u"pub", u"syn"}});
  TmvMetadataFilter filter;
  TmvMetadataFilterItem* exclude = filter.Add();
  exclude->SetObjectMask(u"tmp%");
  exclude->SetExclude(true);
  const int bucketsBefore = container->CalcUsedBuckets();
  container->LoadMetadataByFilter(&filter);

  std::vector<WideString> names;
  for (int i = 0; i < container->Count(); ++i) names.push_back(container->Items(i)->FullNameStr());
  EXPECT_EQ(names, (std::vector<WideString>{u"dbo.orders", u"bare", u"sys.objects", u"dbo.recent", u"dbo.refresh",
                                            u"pub.syn"}));
  EXPECT_NE(container->FindTableByName(Id(u"objects").get(), Id(u"sys").get()), nullptr);
  EXPECT_TRUE(container->FindTableByName(Id(u"objects").get(), Id(u"sys").get())->System());
  EXPECT_FALSE(container->FindTableByName(Id(u"orders").get(), Id(u"dbo").get())->System());
  EXPECT_NE(container->FindViewByName(Id(u"recent").get(), Id(u"dbo").get()), nullptr);
  EXPECT_NE(container->FindProcedureByName(Id(u"refresh").get(), Id(u"dbo").get()), nullptr);
  EXPECT_TRUE(container->FindSynonymByName(Id(u"syn").get(), Id(u"pub").get())->System());
  // The filtered-out table never entered the index: only the lookups above made buckets.
  EXPECT_EQ(container->FindTableByName(Id(u"tmp_x").get(), Id(u"dbo").get()), nullptr);
  EXPECT_LE(container->CalcUsedBuckets(), bucketsBefore + 7);
}

TEST_F(EventMetadataProviderTest, RelationsComeFromTheCallbackPerTable) {
  events.OnGetTables = Names({{nullptr, u"customers"}, {nullptr, u"orders"}});
  events.OnGetTableRelations = [this](TmvObject*, const TSQLQualifiedName& table, TSQLMetadataRelations& relations) {
    if (table.GetQualifiedName() != u"customers") return;
    auto relation = std::make_unique<TSQLMetadataRelation>(&context);
    relation->TableName().AddName(u"customers", false);
    relation->KeyFields().AddField(u"id", false);
    relation->ChildTable().AddName(u"sales", false);
    relation->ChildTable().AddName(u"orders", false);
    relation->ChildFields().AddField(u"customer_id", false);
    relations.push_back(std::move(relation));
    // An entry for another table is ignored.
    auto stray = std::make_unique<TSQLMetadataRelation>(&context);
    stray->TableName().AddName(u"orders", false);
    relations.push_back(std::move(stray));
  };
  container->LoadMetadataByFilter(nullptr);
  TmvMetadataTable* customers = container->FindTableByName(Id(u"customers").get());
  ASSERT_EQ(customers->GetRelations()->Count(), 1);
  TmvMetadataRelation* relation = customers->GetRelations()->Items(0);
  EXPECT_EQ(relation->ChildTableStr(), u"sales.orders");
  EXPECT_EQ(relation->KeyFields()->Items(0)->GetQualifiedName(), u"id");
  EXPECT_EQ(relation->ChildFields()->Items(0)->GetQualifiedName(), u"customer_id");
  EXPECT_EQ(container->FindTableByName(Id(u"orders").get())->GetRelations()->Count(), 0);
}

TEST_F(EventMetadataProviderTest, FieldsComeFromTheObjectCallbackOrTheFieldNames) {
  events.OnGetTables = Names({{nullptr, u"filled"}, {nullptr, u"named"}});
  events.OnLoadObjectMetadata = [](TmvObject*, TmvBaseSQLContext* context, TmvMetadataObject* object) {
    if (object->NameStr() != u"filled") return;
    TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(context);
    name->AddName(u"id", false);
    object->GetFields()->AddField(name.get(), ftInteger);
  };
  WideString asked;
  events.OnGetSQLFieldNames = [&](TmvObject*, WideStringView sql, TmvFieldsList& fields) {
    asked = WideString(sql);
    fields.AddField(u"x", false);
    fields.AddField(u"y", true);
  };
  container->LoadMetadataByFilter(nullptr);
  TmvMetadataTable* filled = container->FindTableByName(Id(u"filled").get());
  TmvMetadataTable* named = container->FindTableByName(Id(u"named").get());

  filled->LoadFieldsOnDemand();
  ASSERT_EQ(filled->GetFields()->Count(), 1);
  EXPECT_EQ(filled->GetFields()->Items(0)->FieldType(), ftInteger);
  EXPECT_TRUE(asked.empty());

  named->LoadFieldsOnDemand();
  EXPECT_EQ(asked, u"select * from named a where 0<>0");
  ASSERT_EQ(named->GetFields()->Count(), 2);
  EXPECT_TRUE(named->GetFields()->Items(1)->Nullable());
  EXPECT_EQ(named->GetFields()->Items(1)->NameStr(), u"\"y\"");

  // Without the field names callback the list is marked loaded all the same.
  events.OnGetSQLFieldNames = nullptr;
  TmvMetadataTable* empty = container->AddTable(nullptr, Id(u"empty").get());
  empty->LoadFieldsOnDemand();
  EXPECT_TRUE(empty->GetFields()->Loaded());
  EXPECT_EQ(empty->GetFields()->Count(), 0);
}

TEST_F(EventMetadataProviderTest, ADatasetCallbackOpensTheDriverRoad) {
  TmvMemoryConnection server;
  server.AddResult(u"select * from t a where 0<>0", TmvMemoryTable().AddColumn(u"id", ftInteger, 0, faRequired));
  events.OnCreateSQLDataset = [&](TmvObject*, TmvConnection*, bool, bool, std::unique_ptr<TmvDataSet>& dataset) {
    dataset = server.CreateQuery();
  };
  int objectCallbacks = 0;
  events.OnLoadObjectMetadata = [&](TmvObject*, TmvBaseSQLContext*, TmvMetadataObject*) { ++objectCallbacks; };
  EXPECT_TRUE(events.GetCanExecSQL());
  TmvMetadataTable* table = container->AddTable(nullptr, Id(u"t").get());
  table->LoadFieldsOnDemand();
  ASSERT_EQ(table->GetFields()->Count(), 1);
  EXPECT_FALSE(table->GetFields()->Items(0)->Nullable());
  // The syntax provider took the driver road; the object callback is for hosts without SQL.
  EXPECT_EQ(objectCallbacks, 0);

  // Statements run through the dataset callback, which gives an open dataset.
  events.OnExecSQLDatasetUR = [&](TmvObject*, WideStringView sql, const TmvParams*, std::unique_ptr<TmvDataSet>& ds) {
    ds = server.OpenQuery(sql);
  };
  std::unique_ptr<TmvDataSet> dataset = events.ExecSQLDatasetUR(nullptr, u"select * from t a where 0<>0", nullptr);
  ASSERT_NE(dataset, nullptr);
  EXPECT_TRUE(dataset->Active());
}
