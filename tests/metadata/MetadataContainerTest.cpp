// The metadata container: the name index, name resolution under default
// database and schemas, the list and its events, and names printed from it.
#include <gtest/gtest.h>

#include <string>

#include "MetadataTestSupport.h"
#include "Thrown.h"
#include "metadata/MetadataFilter.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "tree/FromClause.h"

using namespace mv;
using namespace mv::test;

TEST(MetadataObjectHashTest, HashRotatesAndXorsUpperCaseUnits) {
  EXPECT_EQ(TmvMetadataObjectHash::HashOfString(u""), 0u);
  EXPECT_EQ(TmvMetadataObjectHash::HashOfString(u"A"), 65u);
  EXPECT_EQ(TmvMetadataObjectHash::HashOfString(u"AB"), (65u << 2) ^ 66u);
  EXPECT_EQ(TmvMetadataObjectHash::HashOfString(u"ab"), TmvMetadataObjectHash::HashOfString(u"AB"));
  // The top bits come round to the bottom.
  WideString longName(20, u'Z');
  uint32_t expected = 0;
  for (char16_t c : longName) expected = ((expected << 2) | (expected >> 30)) ^ uint32_t(c);
  EXPECT_EQ(TmvMetadataObjectHash::HashOfString(longName), expected);
}

TEST_F(MetadataTest, ExactLookupsMatchAllThreeParts) {
  TmvMetadataTable* table = Table({u"db", u"dbo", u"Orders"});
  EXPECT_EQ(container->FindTableByName(Id(u"orders").get(), Id(u"DBO").get(), Name({u"DB"}).get()), table);
  EXPECT_EQ(container->FindTableByName(Id(u"orders").get(), Id(u"dbo").get()), nullptr);
  EXPECT_EQ(container->FindTableByName(Id(u"orders").get(), nullptr, Name({u"db"}).get()), nullptr);
  // A name in quotes keeps its case on this dialect.
  EXPECT_EQ(container->FindTableByName(Id(u"orders", true).get(), Id(u"dbo").get(), Name({u"db"}).get()), nullptr);
  EXPECT_EQ(container->FindObjectByName(Id(u"ORDERS").get(), Id(u"dbo").get(), Name({u"db"}).get()), table);
}

TEST_F(MetadataTest, LookupsOfAClassSkipObjectsOfAnother) {
  TmvMetadataTable* table = Table({u"x"});
  TmvMetadataView* view = View({u"x"});
  EXPECT_EQ(container->FindViewByName(Id(u"x").get()), view);
  EXPECT_EQ(container->FindTableByName(Id(u"x").get()), table);
  EXPECT_EQ(container->FindObjectByName(Id(u"x").get()), table);
  EXPECT_EQ(container->FindProcedureByFullName(Name({u"x"}).get()), nullptr);
  EXPECT_EQ(container->FindViewByFullName(Name({u"x"}).get()), view);
}

TEST_F(MetadataTest, NamesDifferingInCaseAloneAreTwoObjectsOnACaseSensitiveDialect) {
  TmvMetadataTable* lower = container->AddTable(nullptr, Id(u"abc", true).get());
  TmvMetadataTable* upper = container->AddTable(nullptr, Id(u"ABC", true).get());
  EXPECT_EQ(container->FindTableByFullName(Name({u"abc"}, true).get()), lower);
  EXPECT_EQ(container->FindTableByFullName(Name({u"ABC"}, true).get()), upper);
  // Unquoted names fold to upper case here.
  EXPECT_EQ(container->FindTableByFullName(Name({u"abc"}).get()), upper);
  provider.SetIdentCaseSens(icsSensitiveLowerCase);
  EXPECT_EQ(container->FindTableByFullName(Name({u"ABC"}).get()), lower);
  // Without a case rule, the first in the bucket wins.
  provider.SetIdentCaseSens(icsNonSensitive);
  EXPECT_EQ(container->FindTableByFullName(Name({u"ABC"}, true).get()), lower);
}

TEST_F(MetadataTest, DefaultSchemasAreTriedInOrder) {
  SetDefaults({u"D"}, {u"dbo", u"sales"});
  TmvMetadataTable* sales = Table({u"D", u"sales", u"t"});
  TmvMetadataTable* dbo = Table({u"D", u"dbo", u"t"});
  Table({u"D", u"sales", u"u"});
  EXPECT_EQ(container->FindTableByFullName(Name({u"t"}).get()), dbo);
  EXPECT_EQ(container->FindTableByFullName(Name({u"sales", u"t"}).get()), sales);
  EXPECT_EQ(container->FindTableByFullName(Name({u"D", u"sales", u"t"}).get()), sales);
  EXPECT_NE(container->FindTableByFullName(Name({u"u"}).get()), nullptr);
  EXPECT_EQ(container->FindTableByFullName(Name({u"E", u"dbo", u"t"}).get()), nullptr);
}

TEST_F(MetadataTest, WithoutDefaultSchemasANameWithoutSchemaFindsOnlyObjectsWithoutOne) {
  Table({u"dbo", u"t"});
  EXPECT_EQ(container->FindTableByFullName(Name({u"t"}).get()), nullptr);
  TmvMetadataTable* bare = Table({u"t"});
  EXPECT_EQ(container->FindTableByFullName(Name({u"t"}).get()), bare);
}

TEST_F(MetadataTest, TheDefaultDatabaseCompletesAShortName) {
  container->SetDefaultDatabaseName(Name({u"D"}).get());
  TmvMetadataTable* inDefault = Table({u"D", u"dbo", u"t"});
  EXPECT_EQ(container->FindTableByFullName(Name({u"dbo", u"t"}).get()), inDefault);
  // A dialect without databases ignores the default.
  provider.databases = false;
  EXPECT_EQ(container->FindTableByFullName(Name({u"dbo", u"t"}).get()), nullptr);
}

TEST_F(MetadataTest, ADialectWithoutSchemasReadsTheSecondPartAsTheDatabase) {
  provider.schemas = false;
  TmvMetadataTable* table = Table({u"main", u"t"});
  EXPECT_TRUE(table->Schema()->IsEmpty());
  EXPECT_EQ(table->DatabaseStr(), u"main");
  EXPECT_EQ(container->FindTableByFullName(Name({u"main", u"t"}).get()), table);
  container->SetDefaultDatabaseName(Name({u"main"}).get());
  EXPECT_EQ(container->FindTableByFullName(Name({u"t"}).get()), table);
}

TEST_F(MetadataTest, ALinkTakesPartInTheComparison) {
  TmvMetadataTable* local = Table({u"t"});
  TmvMetadataTable* remote = Table({u"t"});
  remote->SetDBLink(Name({u"far"}).get());
  auto linked = Name({u"t"});
  linked->DatabaseLink.Set(Name({u"far"}));
  EXPECT_EQ(container->FindTableByFullName(linked.get()), remote);
  EXPECT_EQ(container->FindTableByFullName(Name({u"t"}).get()), local);
  linked->DatabaseLink.Set(Name({u"near"}));
  EXPECT_EQ(container->FindTableByFullName(linked.get()), nullptr);
}

TEST_F(MetadataTest, NameResolutionMatrix) {
  struct Case {
    TmvIdentCaseSensitivity rule;
    bool quoted;
    const char16_t* spelling;
    bool found;
  };
  // The table is stored as the server reports it: "Sales" in quotes.
  const Case cases[] = {
      {icsNonSensitive, false, u"sales", true},        {icsNonSensitive, true, u"SALES", true},
      {icsSensitiveUpperCase, false, u"Sales", false}, {icsSensitiveUpperCase, true, u"Sales", true},
      {icsSensitiveUpperCase, true, u"sales", false},  {icsSensitiveLowerCase, false, u"sales", false},
      {icsSensitiveLowerCase, true, u"Sales", true},
  };
  struct Defaults {
    std::vector<const char16_t*> database;
    std::vector<const char16_t*> schemas;
    std::vector<const char16_t*> stored;  // the table's parts, outermost first
    bool shortNameResolves;               // whether the bare name reaches it
  };
  const Defaults defaults[] = {
      {{}, {}, {u"Sales"}, true},
      // A default database alone does not supply the schema the table has.
      {{u"D"}, {}, {u"D", u"dbo", u"Sales"}, false},
      {{u"D"}, {u"dbo"}, {u"D", u"dbo", u"Sales"}, true},
  };
  auto build = [&](const std::vector<const char16_t*>& parts) {
    TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(&context);
    for (const char16_t* part : parts) name->AddName(part, false);
    return name;
  };
  for (const Defaults& d : defaults) {
    container->Clear();
    provider.SetIdentCaseSens(icsSensitiveUpperCase);
    container->SetDefaultDatabaseName(build(d.database).get());
    for (const char16_t* schema : d.schemas) container->DefaultSchemaNames()->AddIdentifier(schema);
    TmvOwned<TSQLQualifiedName> stored = build(d.stored);
    TmvCast<TastTokenIdentifier>(stored->Token(0))->Quoted = true;
    TmvMetadataTable* table = container->AddTable(stored.get());
    for (const Case& c : cases) {
      provider.SetIdentCaseSens(c.rule);
      TmvMetadataTable* found = container->FindTableByFullName(Name({c.spelling}, c.quoted).get());
      EXPECT_EQ(found == table, c.found && d.shortNameResolves)
          << "rule " << int(c.rule) << " quoted " << c.quoted << " stored parts " << d.stored.size();
    }
    // The full name reaches it under every rule that keeps its spelling.
    TmvOwned<TSQLQualifiedName> full = build(d.stored);
    TmvCast<TastTokenIdentifier>(full->Token(0))->Quoted = true;
    EXPECT_EQ(container->FindTableByFullName(full.get()), table);
  }
}

TEST_F(MetadataTest, RenamingReindexesAtOnce) {
  TmvMetadataTable* table = Table({u"old_name"});
  table->SetName(Id(u"new_name").get());
  EXPECT_EQ(container->FindTableByFullName(Name({u"new_name"}).get()), table);
  EXPECT_EQ(container->FindTableByFullName(Name({u"old_name"}).get()), nullptr);
  table->SetSchema(Id(u"s").get());
  EXPECT_EQ(container->FindTableByName(Id(u"new_name").get(), Id(u"s").get()), table);
  EXPECT_EQ(table->FullNameStr(), u"s.new_name");
}

TEST_F(MetadataTest, AlternateNamesFormAnIndexOfTheirOwn) {
  TmvMetadataTable* table = Table({u"t_cust"});
  table->SetAltName(u"Customers");
  // The case flag is clear: the name folds like an unquoted identifier.
  EXPECT_EQ(container->FindTableByAltName(Id(u"customers").get()), table);
  EXPECT_EQ(container->FindTableByAltName(Id(u"customers", true).get()), nullptr);
  table->SetAltNameCaseSensitive(true);
  EXPECT_EQ(container->FindTableByAltName(Id(u"Customers", true).get()), table);
  EXPECT_EQ(container->FindTableByAltName(Id(u"CUSTOMERS").get()), nullptr);
  EXPECT_EQ(container->FindTableByFullName(Name({u"Customers"}).get()), nullptr);
  table->SetAltName(u"Clients");
  EXPECT_EQ(container->FindTableByAltName(Id(u"Customers", true).get()), nullptr);
  EXPECT_EQ(container->FindTableByAltName(Id(u"Clients", true).get()), table);
  // An object without an alternate name is never found by one.
  Table({u"Plain"});
  EXPECT_EQ(container->FindObjectByAltName(Id(u"PLAIN").get()), nullptr);
}

TEST_F(MetadataTest, OnlyItemsEnterTheIndexAndLookupsMakeBuckets) {
  const int before = container->CalcUsedBuckets();
  {
    // Made for the container, as a fetcher does, and dropped.
    TmvOwned<TmvMetadataTable> stray = TmvCreate<TmvMetadataTable>(container.get(), &context);
    stray->SetName(Id(u"never_added_name").get());
    stray->SetAltName(u"never_added_alt");
  }
  EXPECT_EQ(container->CalcUsedBuckets(), before);
  EXPECT_EQ(container->FindTableByFullName(Name({u"never_added_name"}).get()), nullptr);
  EXPECT_EQ(container->CalcUsedBuckets(), before + 1);
  Table({u"never_added_name"});
  EXPECT_EQ(container->CalcUsedBuckets(), before + 1);
}

TEST_F(MetadataTest, ClearTwiceKeepsTheCustomAggregates) {
  SetDefaults({u"D"}, {u"dbo"});
  Table({u"t"});
  container->CustomAggregateFunctions()->Add(Name({u"median"}).get());
  container->Clear();
  container->Clear();
  EXPECT_EQ(container->Count(), 0);
  EXPECT_FALSE(container->Loaded());
  EXPECT_TRUE(IsQualifiedNameEmpty(container->DefaultDatabaseName()));
  EXPECT_EQ(container->DefaultSchemaNames()->GetCount(), 0);
  EXPECT_EQ(container->CustomAggregateFunctions()->Count(), 1);
  EXPECT_EQ(container->FindTableByFullName(Name({u"t"}).get()), nullptr);
}

TEST_F(MetadataTest, WorkOfflineChangesOnlyTheFlag) {
  Table({u"t"});
  int updates = 0;
  const TmvHandlerId counter = TmvHandlerId::Unique();
  container->GetOnUpdated().AddHandler(counter, [&](TmvObject*) { ++updates; });
  container->SetWorkOffline(true);
  EXPECT_TRUE(container->WorkOffline());
  EXPECT_EQ(updates, 0);
  container->GetOnUpdated().RemoveHandler(counter);
  EXPECT_EQ(container->Count(), 1);
  EXPECT_TRUE(container->Loaded());
}

TEST_F(MetadataTest, ListChangesFireTheSingleHandlerThenTheBroadcast) {
  std::u16string log;
  container->OnMetadataObjectAdded = [&](TmvObject*, TmvMetadataObject* o) { log += u"+" + o->NameStr(); };
  container->OnMetadataObjectRemoving = [&](TmvObject*, TmvMetadataObject* o) { log += u"-" + o->NameStr(); };
  container->OnMetadataObjectExtracting = [&](TmvObject*, TmvMetadataObject* o) { log += u"^" + o->NameStr(); };
  const TmvHandlerId broadcast = TmvHandlerId::Unique();
  container->GetMetadataObjectAddedEvent().AddHandler(broadcast, [&](TmvObject*, TmvMetadataObject*) { log += u"!"; });
  TmvMetadataTable* a = Table({u"a"});
  TmvMetadataTable* b = Table({u"b"});
  Table({u"c"});
  EXPECT_EQ(log, u"+a!+b!+c!");
  log.clear();

  TmvOwned<TmvMetadataObject> extracted = container->Extract(b);
  ASSERT_EQ(extracted.get(), b);
  EXPECT_EQ(container->FindTableByFullName(Name({u"b"}).get()), nullptr);
  EXPECT_EQ(extracted->Container(), nullptr);
  container->Remove(a);
  EXPECT_EQ(log, u"^b-a");
  EXPECT_EQ(container->Count(), 1);
  // The extracted object can join again.
  container->Add(std::move(extracted));
  EXPECT_EQ(container->FindTableByFullName(Name({u"b"}).get()), b);
  EXPECT_EQ(b->Container(), container.get());
  // The handlers write to `log`, which goes before the container.
  container->OnMetadataObjectAdded = nullptr;
  container->OnMetadataObjectRemoving = nullptr;
  container->OnMetadataObjectExtracting = nullptr;
  container->GetMetadataObjectAddedEvent().RemoveHandler(broadcast);
}

TEST_F(MetadataTest, SortByNamesOrdersByDatabaseSchemaAndName) {
  Table({u"db2", u"a", u"x"});
  Table({u"db1", u"b", u"x"});
  Table({u"db1", u"a", u"y"});
  Table({u"db1", u"a", u"x"});
  container->SortByNames();
  std::vector<WideString> names;
  for (int i = 0; i < container->Count(); ++i) names.push_back(container->Items(i)->FullNameStr());
  EXPECT_EQ(names, (std::vector<WideString>{u"db1.a.x", u"db1.a.y", u"db1.b.x", u"db2.a.x"}));
  container->Move(0, 3);
  EXPECT_EQ(container->Items(3)->FullNameStr(), u"db1.a.x");
  EXPECT_EQ(container->FindTableByFullName(Name({u"db1", u"a", u"x"}).get()), container->Items(3));
}

TEST_F(MetadataTest, AssignClonesTheObjectsIntoAFreshIndex) {
  SetDefaults({u"D"}, {u"dbo"});
  TmvMetadataTable* table = Table({u"D", u"dbo", u"t"});
  table->SetAltName(u"Tee");
  table->GetFields()->AddField(Name({u"id"}).get());
  container->CustomAggregateFunctions()->Add(Name({u"median"}).get());

  TmvOwned<TmvMetadataContainer> copy = TmvCreate<TmvMetadataContainer>(nullptr, &context);
  copy->Assign(container.get());
  ASSERT_EQ(copy->Count(), 1);
  TmvMetadataTable* cloned = copy->FindTableByFullName(Name({u"t"}).get());
  ASSERT_NE(cloned, nullptr);
  EXPECT_NE(cloned, table);
  EXPECT_EQ(cloned->Container(), copy.get());
  EXPECT_EQ(copy->FindTableByAltName(Id(u"TEE").get()), cloned);
  EXPECT_EQ(cloned->GetFields()->Count(), 1);
  EXPECT_EQ(copy->DefaultDatabaseNameStr(), u"D");
  EXPECT_EQ(copy->DefaultSchemaNamesStr(), u"dbo");
  EXPECT_TRUE(copy->Loaded());
  // Custom aggregates are not part of what Assign copies.
  EXPECT_EQ(copy->CustomAggregateFunctions()->Count(), 0);
}

TEST_F(MetadataTest, RelationsOfAllObjectsIncludeASynonymsTarget) {
  TmvMetadataTable* table = Table({u"t"});
  table->GetRelations()->AddRelation(nullptr, nullptr, Id(u"u").get(), nullptr, nullptr);
  container->AddSynonym(Name({u"s"}).get(), Name({u"t"}).get());
  EXPECT_EQ(container->GetRelations().size(), 2u);
}

TEST_F(MetadataTest, ClearByFilterDeletesMatchingObjectsOfTheDatabase) {
  Table({u"tmp_a"});
  Table({u"keep"});
  TmvMetadataTable* elsewhere = Table({u"other", u"dbo", u"tmp_b"});
  TmvMetadataFilter filter;
  filter.Add()->SetObjectMask(u"tmp%");
  container->ClearMetadataByFilter(&filter);
  ASSERT_EQ(container->Count(), 2);
  EXPECT_EQ(container->Items(0)->NameStr(), u"keep");
  EXPECT_EQ(container->Items(1), elsewhere);
  container->ClearMetadataByMask(u"%", u"%", Name({u"other"}).get());
  EXPECT_EQ(container->Count(), 1);
}

TEST_F(MetadataTest, VisibilityIsTheHandlersAnswer) {
  TmvMetadataTable* table = Table({u"t"});
  table->SetVisible(false);
  EXPECT_TRUE(container->IsMetadataObjectVisible(table));
  container->GetMetadataObjectVisible = [](TmvObject*, TmvMetadataObject* o, bool& visible) {
    visible = o->NameStr() != u"t";
  };
  EXPECT_FALSE(container->IsMetadataObjectVisible(table));
}

TEST_F(MetadataTest, LoadingNeedsBothProviders) {
  EXPECT_EQ(mvtest::ThrownMessage([&] { container->LoadMetadataByFilter(nullptr); }),
            u"Metadata provider is not specified");
  context.SetSyntaxProvider(nullptr);
  EXPECT_EQ(
      mvtest::ThrownMessage([&] { container->LoadMetadataByFilter(static_cast<TmvConnection*>(nullptr), nullptr); }),
      u"Syntax provider is not specified");
  EXPECT_THROW(container->ClearMetadataByMask(u"%", u"%"), Exception);
}

TEST_F(MetadataTest, CustomAggregatesAreKnownUnderTheirVariants) {
  SetDefaults({u"D"}, {u"dbo", u"stats"});
  container->CustomAggregateFunctions()->Add(Name({u"D", u"stats", u"median"}).get());
  EXPECT_TRUE(context.IsNameOfCustomAggregate(Name({u"median"}).get()));
  EXPECT_TRUE(context.IsNameOfCustomAggregate(Name({u"stats", u"MEDIAN"}).get()));
  EXPECT_TRUE(context.IsNameOfCustomAggregate(Name({u"D", u"stats", u"median"}).get()));
  EXPECT_FALSE(context.IsNameOfCustomAggregate(Name({u"dbo", u"median"}).get()));
  EXPECT_FALSE(context.IsNameOfCustomAggregate(Name({u"mode"}).get()));

  // Normalizing gives the container's spelling.
  auto name = Name({u"MEDIAN"});
  context.AggregateNormalize(name.get());
  EXPECT_EQ(name->GetQualifiedName(), u"D.stats.median");
  context.SetMetadataContainer(nullptr);
  EXPECT_FALSE(context.IsNameOfCustomAggregate(Name({u"median"}).get()));
}

// --- Names printed through the container ---

class MetadataPrintTest : public MetadataTest {
 protected:
  // FROM source "parts" (outermost first), bound to `object` when given.
  TmvOwned<TSQLFromObject> Source(std::initializer_list<const char16_t*> parts, TmvMetadataObject* object) {
    TmvOwned<TSQLFromObject> source = TastCreate<TSQLFromObject>(&context);
    TmvOwned<TSQLDatabaseObject> name = TastCreate<TSQLDatabaseObject>(&context);
    for (const char16_t* part : parts) name->AddName(part, false);
    source->Object.Set(std::move(name));
    source->Object->FromSource = source.get();
    source->SetMetadataObject(object);
    return source;
  }
  WideString Print(TastNode* node, TmvObjectPrefixSkipping skipping, bool altNames = true, bool expand = false) {
    TSQLBuilderFast builder;
    builder.SetObjectPrefixSkipping(skipping);
    builder.SetUseAltNames(altNames);
    builder.SetExpandVirtualObjects(expand);
    return node->SimpleSQL(builder);
  }
};

TEST_F(MetadataPrintTest, DefaultPrefixesAreLeftOutAsTheSettingAllows) {
  SetDefaults({u"db"}, {u"sales"});
  auto name = TastCreate<TSQLDatabaseObject>(&context);
  for (const char16_t* part : {u"db", u"sales", u"t"}) name->AddName(part, false);
  EXPECT_EQ(Print(name.get(), opsSkipAll), u"t");
  EXPECT_EQ(Print(name.get(), opsSkipDatabase), u"sales.t");
  EXPECT_EQ(Print(name.get(), opsSkipNone), u"db.sales.t");
  // Another schema always prints.
  auto other = TastCreate<TSQLDatabaseObject>(&context);
  for (const char16_t* part : {u"db", u"hr", u"t"}) other->AddName(part, false);
  EXPECT_EQ(Print(other.get(), opsSkipAll), u"hr.t");
  // With no container the name prints in full.
  context.SetMetadataContainer(nullptr);
  EXPECT_EQ(Print(name.get(), opsSkipAll), u"db.sales.t");
}

TEST_F(MetadataPrintTest, BoundSourcesPrintTheMetadatasSpellingAndAlternateName) {
  SetDefaults({u"db"}, {u"dbo"});
  TmvMetadataTable* table =
      container->AddTable(Id(u"dbo").get(), Id(u"Orders", true).get(), false, Name({u"db"}).get());
  auto source = Source({u"orders"}, table);
  EXPECT_EQ(Print(source.get(), opsSkipAll), u"\"Orders\"");
  EXPECT_EQ(Print(source.get(), opsSkipDatabase), u"dbo.\"Orders\"");
  EXPECT_EQ(Print(source.get(), opsSkipNone), u"db.dbo.\"Orders\"");

  table->SetAltName(u"Sales orders");
  table->SetAltNameCaseSensitive(true);
  EXPECT_EQ(Print(source.get(), opsSkipAll), u"\"Sales orders\"");
  EXPECT_EQ(Print(source.get(), opsSkipAll, false), u"\"Orders\"");

  // Once the object leaves the container the source prints its own name.
  container->Remove(table);
  EXPECT_EQ(source->GetMetadataObject(), nullptr);
  EXPECT_EQ(Print(source.get(), opsSkipAll), u"orders");
}

TEST_F(MetadataPrintTest, VirtualObjectsExpandUnderTheirName) {
  TmvMetadataView* view = View({u"recent"});
  auto expression = TastCreate<TSQLFromObject>(&context);
  auto typed = TastCreate<TSQLDatabaseObject>(&context);
  typed->AddName(u"orders", false);
  expression->Object.Set(std::move(typed));
  view->SetExpressionAST(std::move(expression), u"orders");
  auto source = Source({u"recent"}, view);
  EXPECT_EQ(Print(source.get(), opsSkipAll, true, true), u"orders recent");
  view->SetAltName(u"Latest");
  EXPECT_EQ(Print(source.get(), opsSkipAll, true, true), u"orders Latest");
  EXPECT_EQ(Print(source.get(), opsSkipAll, false, false), u"recent");
}

TEST_F(MetadataPrintTest, ColumnsPrintTheirFieldsAlternateName) {
  TmvMetadataTable* table = Table({u"t"});
  TmvMetadataField* field = table->GetFields()->AddField(Name({u"qty"}).get());
  field->SetAltName(u"Quantity");
  auto source = Source({u"t"}, table);
  auto column = TastCreate<TSQLObjectColumn>(&context);
  column->AddName(u"qty", false);
  column->FromSource = source.get();
  column->SetMetadataField(field);
  EXPECT_EQ(Print(column.get(), opsSkipAll), u"t.Quantity");
  EXPECT_EQ(Print(column.get(), opsSkipAll, false), u"t.qty");
  // A field that left its object is no longer used.
  table->GetFields()->Clear();
  EXPECT_EQ(column->GetMetadataField(), nullptr);
  EXPECT_EQ(Print(column.get(), opsSkipAll), u"t.qty");
}
