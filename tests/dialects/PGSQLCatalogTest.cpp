// The PostgreSQL catalog read from the throw-away test server: Chinook and
// the tables with awkward names give the same objects, fields, keys and
// foreign keys as the SQLite file they were copied from; a schema of our own
// adds a view, a key of three columns, a comment, an aggregate and a table
// whose name is SQL text.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "ChinookLoader.h"
#include "RunTool.h"
#include "SQL92Context.h"
#include "dialects/pgsql/PGSQLCatalog.h"
#include "dialects/pgsql/PGSQLSyntaxProvider.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataRelation.h"
#include "metadata/dataset/PostgresConnection.h"
#include "metadata/dataset/SQLiteCatalog.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "tree/QualifiedNames.h"

using namespace mv;

namespace {

const char* const kOwnSchema = R"(
  create schema "Odd ""Schema""";
  create schema mv_keep;
  create table "Odd ""Schema""".parent (a integer, b varchar(10), c date, primary key (a, b, c));
  create table "Odd ""Schema""".child (id integer primary key, a integer not null, b varchar(10) not null,
    c date not null, note text default 'x', amount numeric(8,3), foreign key (a, b, c) references "Odd ""Schema""".parent);
  comment on column "Odd ""Schema""".child.note is 'the note';
  create view "Odd ""Schema""".v as select id, note from "Odd ""Schema""".child;
  create table mv_keep.keep (k integer);
  create table "Odd ""Schema"""."x'); drop table mv_keep.keep; --" (x integer, "y;'z" text);
  create aggregate public.my_sum(integer) (sfunc = int4pl, stype = integer);
)";

// The objects, fields and foreign keys of a container as lines, for
// comparison: names without quotes; for a field its size, precision and
// scale, "null" and "pk" (a key field counts as not null).
std::vector<std::string> Lines(TmvMetadataContainer& container, WideStringView schema) {
  std::vector<std::string> lines;
  for (int i = 0; i < container.Count(); ++i) {
    TmvMetadataObject* object = container.Items(i);
    if (object->SchemaStrNotQuoted() != schema) continue;
    const std::string name = UTF8Encode(object->NameStrNotQuoted());
    lines.push_back(name + (object->System() ? " system" : ""));
    for (int f = 0; f < object->GetFields()->Count(); ++f) {
      const TmvMetadataField* field = object->GetFields()->Items(f);
      lines.push_back(name + "." + UTF8Encode(field->NameStrNotQuoted()) + " " + std::to_string(field->Size()) + "/" +
                      std::to_string(field->Precision()) + "," + std::to_string(field->Scale()) +
                      (field->Nullable() && !field->PrimaryKey() ? " null" : "") + (field->PrimaryKey() ? " pk" : ""));
    }
  }
  const auto fields = [](const TmvMetadataQualifiedNamesList* list) {
    std::string text;
    for (int i = 0; i < list->Count(); ++i) text += (i ? "," : "") + UTF8Encode(list->Items(i)->GetQualifiedNameWithoutQuotes());
    return text;
  };
  for (TmvMetadataRelation* relation : container.GetRelations())
    if (relation->GetKeyMetadataObject()->SchemaStrNotQuoted() == schema)
      lines.push_back(UTF8Encode(relation->GetKeyMetadataObject()->NameStrNotQuoted()) + " -> " +
                      UTF8Encode(relation->ChildNameStrNotQuoted()) + " [" + fields(relation->KeyFields()) + "] [" +
                      fields(relation->ChildFields()) + "]");
  std::sort(lines.begin(), lines.end());
  return lines;
}

class PGSQLCatalogTest : public mvtest::SQL92ContextTest {
 protected:
  ~PGSQLCatalogTest() override {
    for (auto* c : {&context, &liteContext}) {
      c->SetMetadataContainer(nullptr);
      c->SetMetadataProvider(nullptr);
      c->SetSyntaxProvider(nullptr);
    }
  }

  // A container on `ctx` over `provider` and `connection`.
  TmvOwned<TmvMetadataContainer> Attach(TmvBaseSQLContext& ctx, TmvConnectionMetadataProvider& metadata,
                                        TmvConnection* connection) {
    metadata.SetConnection(connection);
    ctx.SetMetadataProvider(&metadata);
    auto container = TmvCreate<TmvMetadataContainer>(nullptr, &ctx);
    ctx.SetMetadataContainer(container.get());
    return container;
  }

  void LoadAll(TmvMetadataContainer& container, const TmvMetadataFilter* filter = nullptr) {
    ASSERT_TRUE(LoadMetadataObjectsPostgreSQL(&context, nullptr, &container, filter, nullptr));
    ASSERT_TRUE(LoadMetadataRelationsPostgreSQL(&context, nullptr, &container, filter, nullptr));
    for (int i = 0; i < container.Count(); ++i) {
      if (container.Items(i)->System()) continue;
      EXPECT_TRUE(LoadFieldsForObjectPostgreSQL(&context, nullptr, container.Items(i)))
          << UTF8Encode(container.Items(i)->NameStrNotQuoted());
    }
  }

  TmvMetadataObject* Find(TmvMetadataContainer& container, WideStringView schema, WideStringView name) {
    for (int i = 0; i < container.Count(); ++i)
      if (container.Items(i)->SchemaStrNotQuoted() == schema && container.Items(i)->NameStrNotQuoted() == name)
        return container.Items(i);
    return nullptr;
  }

  // SQLite's names: no databases, no schemas, no case rule.
  class TLiteProvider : public mvtest::TReferenceDialectProvider {
   public:
    TLiteProvider() { SetIdentCaseSens(icsNonSensitive); }
    bool IsSupportDatabases() const override { return false; }
    bool IsSupportSchemas() const override { return false; }
  };

  TmvConnectionMetadataProvider metadata, liteMetadata;
  TLiteProvider liteProvider;
  TmvBaseSQLContext liteContext;
};

TEST_F(PGSQLCatalogTest, ChinookAndOwnSchemaAsTheServerHasThem) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();
  pg.Exec(kOwnSchema);
  TmvPostgresConnection server(UTF8Decode(pg.ConnectionString()));
  auto container = Attach(context, metadata, &server);

  EXPECT_EQ(IsConnectedServerIsPostgreSQL(&metadata, &server), scsSupport);
  EXPECT_EQ(GetDefaultDatabaseNamePostgreSQL(&context, nullptr)->GetQualifiedNameWithoutQuotes(), u"postgres");
  auto defaults = TastCreate<TSQLIdentifiersCollection>(&context);
  ASSERT_TRUE(GetDefaultSchemaNamesPostgreSQL(&context, nullptr, *defaults));
  ASSERT_EQ(defaults->GetCount(), 2);
  EXPECT_EQ(defaults->Identifier(0)->Token, u"pg_catalog");
  EXPECT_EQ(defaults->Identifier(1)->Token, u"public");
  std::vector<WideString> schemas;
  ASSERT_TRUE(GetSchemasListPostgreSQL(&context, nullptr, nullptr, schemas));
  for (const char16_t* schema : {u"Odd \"Schema\"", u"information_schema", u"pg_catalog", u"pg_toast", u"public"})
    EXPECT_NE(std::find(schemas.begin(), schemas.end(), schema), schemas.end()) << UTF8Encode(schema);

  LoadAll(*container);

  // Chinook and the awkward tables: as the SQLite file with the same statements.
  mvtest::TempFile copy("", ".sqlite");
  std::filesystem::copy_file(mvtest::ChinookSqlitePath(), copy.path(),
                             std::filesystem::copy_options::overwrite_existing);
  {
    mvtest::SqliteDatabase writable(copy.path(), true);
    for (const std::string& statement : mvtest::HostileNamesSql()) writable.Exec(statement);
  }
  TmvSQLiteConnection lite(UTF8Decode(copy.path()), somReadOnly);
  liteContext.SetSyntaxProvider(&liteProvider);
  auto liteContainer = Attach(liteContext, liteMetadata, &lite);
  LoadSQLiteCatalog(&liteContext, liteContainer.get());
  const std::vector<std::string> expected = Lines(*liteContainer, u"");
  EXPECT_EQ(expected.size(), 13u + 12u + 64u + 9u) << "tables, foreign keys, fields";
  EXPECT_EQ(Lines(*container, u"public"), expected);

  // Our schema: a view, a key of three columns from one row, a comment, and a
  // name that is SQL text; nothing of it ran.
  const std::vector<std::string> own = {
      "child",
      "child.a 0/0,0",
      "child.amount 0/8,3 null",
      "child.b 10/0,0",
      "child.c 0/0,0",
      "child.id 0/0,0 pk",
      "child.note 0/0,0 null",
      "parent",
      "parent -> child [a,b,c] [a,b,c]",
      "parent.a 0/0,0 pk",
      "parent.b 10/0,0 pk",
      "parent.c 0/0,0 pk",
      "v",
      "v.id 0/0,0 null",
      "v.note 0/0,0 null",
      "x'); drop table mv_keep.keep; --",
      "x'); drop table mv_keep.keep; --.x 0/0,0 null",
      "x'); drop table mv_keep.keep; --.y;'z 0/0,0 null",
  };
  EXPECT_EQ(Lines(*container, u"Odd \"Schema\""), own);
  EXPECT_EQ(pg.Query("select count(*) from mv_keep.keep").at(0).at(0), "0");
  TmvMetadataObject* child = Find(*container, u"Odd \"Schema\"", u"child");
  ASSERT_NE(child, nullptr);
  EXPECT_EQ(child->GetFields()->Items(1)->FieldTypeName(), u"int4");
  EXPECT_EQ(child->GetFields()->Items(4)->FieldTypeName(), u"text");
  EXPECT_EQ(child->GetFields()->Items(4)->ShortDescription(), u"the note");
  EXPECT_EQ(child->GetFields()->Items(5)->GetFieldTypeNameAndSize(), u"numeric(8,3)");
  EXPECT_TRUE(Find(*container, u"Odd \"Schema\"", u"v")->MetadataClass().InheritsFrom(TmvMetadataView::StaticClass()));

  // System objects: the catalog schemas and any schema starting with pg_.
  for (const auto& [schema, name] : std::vector<std::pair<const char16_t*, const char16_t*>>{
           {u"pg_catalog", u"pg_class"}, {u"information_schema", u"sql_features"}, {u"pg_catalog", u"pg_tables"}}) {
    TmvMetadataObject* object = Find(*container, schema, name);
    ASSERT_NE(object, nullptr) << UTF8Encode(name);
    EXPECT_TRUE(object->System()) << UTF8Encode(name);
  }
  bool toast = false;
  for (int i = 0; i < container->Count(); ++i)
    if (container->Items(i)->SchemaStrNotQuoted() == u"pg_toast") toast = toast || container->Items(i)->System();
  EXPECT_TRUE(toast);

  // The same through the engine's road under the PostgreSQL dialect, which
  // the automatic provider finds from the connection.
  EXPECT_EQ(AutodetectSyntaxProvider(&metadata, nullptr), &TmvPGSQLSyntaxProvider::ProviderClass());
  {
    TmvPGSQLSyntaxProvider pgProvider;
    TmvBaseSQLContext pgContext;
    pgContext.SetSyntaxProvider(&pgProvider);
    TmvConnectionMetadataProvider pgMetadata;
    auto loaded = Attach(pgContext, pgMetadata, &server);
    loaded->LoadMetadataByMask(u"%", u"public");
    loaded->LoadFields();
    EXPECT_EQ(loaded->DefaultDatabaseNameStr(), u"postgres");
    EXPECT_EQ(Lines(*loaded, u"public"), expected);
    pgContext.SetMetadataContainer(nullptr);
    loaded.reset();
    pgContext.SetMetadataProvider(nullptr);
    pgContext.SetSyntaxProvider(nullptr);
  }

  // The server's one-argument aggregates beside the dialect's: ours is there,
  // the dialect's own are not, the search path's schemas are left off.
  container->SetDefaultSchemaNamesStr(u"pg_catalog;public");
  ASSERT_TRUE(LoadMetadataCustomAggregateNamesPostgreSQL(&context, nullptr, container.get()));
  const TmvMetadataQualifiedNamesList* aggregates = container->CustomAggregateFunctions();
  std::vector<WideString> names;
  for (int i = 0; i < aggregates->Count(); ++i) names.push_back(aggregates->Items(i)->GetQualifiedNameWithoutQuotes());
  EXPECT_NE(std::find(names.begin(), names.end(), u"my_sum"), names.end());
  EXPECT_NE(std::find(names.begin(), names.end(), u"bool_and"), names.end());
  for (const WideString& name : names) {
    EXPECT_EQ(name.find(u'.'), WideString::npos) << UTF8Encode(name);
    EXPECT_NE(WideLowerCase(name), u"avg");
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << UTF8Encode(name);
  }
}

// A filter's masks become conditions of the catalog query; hostile masks
// change nothing but the answer.
TEST_F(PGSQLCatalogTest, FiltersAndHostileMasks) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();
  TmvPostgresConnection server(UTF8Decode(pg.ConnectionString()));
  auto container = Attach(context, metadata, &server);
  const std::vector<std::pair<std::vector<const char16_t*>, std::vector<std::string>>> cases = {
      {{u"public", u"Inv%"}, {"Invoice", "Invoice -> InvoiceLine [InvoiceId] [InvoiceId]", "InvoiceLine"}},
      // A key hangs on its primary object, loaded or not its child.
      {{u"public", u"Odd%"}, {"Odd Table", "Odd Table -> order [Row Id] [Odd Table Row]"}},
      {{u"public", u"x' or 'a'='a"}, {}},
      {{u"public'); drop table \"Genre\"; --", u"%"}, {}},
  };
  for (const auto& [masks, lines] : cases) {
    container->Clear();
    TmvMetadataFilter filter;
    TmvMetadataFilterItem* item = filter.Add();
    item->SetSchemaMask(masks[0]);
    item->SetObjectMask(masks[1]);
    ASSERT_TRUE(LoadMetadataObjectsPostgreSQL(&context, nullptr, container.get(), &filter, nullptr));
    ASSERT_TRUE(LoadMetadataRelationsPostgreSQL(&context, nullptr, container.get(), &filter, nullptr));
    std::vector<std::string> got = Lines(*container, u"public");
    EXPECT_EQ(got, lines) << UTF8Encode(masks[1]);
  }
  EXPECT_EQ(pg.Query("select count(*) from \"Genre\"").at(0).at(0), "25");

  // Another database is out of this connection's reach; a refused catalog
  // query is no error, only a false answer.
  auto other = TastCreate<TSQLQualifiedName>(&context);
  other->AddName(u"template1", false);
  EXPECT_FALSE(LoadMetadataObjectsPostgreSQL(&context, nullptr, container.get(), nullptr, other.get()));
  TmvSQLiteConnection lite(u":memory:");
  metadata.SetConnection(&lite);
  EXPECT_EQ(IsConnectedServerIsPostgreSQL(&metadata, &lite), scsNotSupport);
  EXPECT_FALSE(LoadMetadataObjectsPostgreSQL(&context, nullptr, container.get(), nullptr, nullptr));
  EXPECT_FALSE(LoadMetadataRelationsPostgreSQL(&context, nullptr, container.get(), nullptr, nullptr));
  EXPECT_EQ(GetDefaultDatabaseNamePostgreSQL(&context, nullptr), nullptr);
}

}  // namespace
