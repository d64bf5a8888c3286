// The Firebird catalog read from the throw-away Firebird server: Chinook and
// the tables with awkward names give the same objects, fields, keys and
// foreign keys as the SQLite file they were copied from; a table of our own
// whose name is SQL text, a view and a procedure join them. InterBase's
// loaders read the same catalog.
#include <gtest/gtest.h>

#include <map>

#include "CatalogLines.h"
#include "FirebirdChinook.h"
#include "SQL92Context.h"
#include "dialects/firebird/FirebirdCatalog.h"
#include "dialects/firebird/FirebirdSyntaxProvider.h"
#include "dialects/interbase/IBCatalog.h"
#include "dialects/interbase/IBSyntaxProvider.h"
#include "dialects/EngineInit.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/FirebirdConnection.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

const std::vector<std::string> kOwnSchema = {
    R"(CREATE TABLE "keep" (k integer))",
    R"(CREATE TABLE "x'); drop table ""keep""; --" (x integer NOT NULL PRIMARY KEY, "y;'z" varchar(5)))",
    R"(CREATE VIEW "Big Keys" AS SELECT k, CAST('k' AS varchar(10)) AS "Label" FROM "keep" WHERE k > 1)",
    R"(CREATE PROCEDURE "Keep Count" RETURNS (n integer) AS BEGIN SELECT COUNT(*) FROM "keep" INTO :n; SUSPEND; END)",
};

// A field as the server has it: SQLite's declared types as the loader maps
// them, by the names of the Firebird catalog, the length of a string in
// characters (the catalog counts bytes, four a character in UTF8),
// precision and scale of a decimal.
mvtest::FieldText Describe(int bytesPerCharacter) {
  return [bytesPerCharacter](const TmvMetadataField& field) {
    static const std::map<std::string, std::string> types = {
        {"integer", "LONG"}, {"nvarchar", "VARYING"}, {"varchar", "VARYING"}, {"numeric", "INT64"},
        {"datetime", "TIMESTAMP"}, {"varying", "VARYING"}, {"long", "LONG"}, {"int64", "INT64"},
        {"timestamp", "TIMESTAMP"}};
    std::string type = UTF8Encode(WideLowerCase(field.FieldTypeName()));
    if (const auto found = types.find(type); found != types.end()) type = found->second;
    if (type == "VARYING") type += "(" + std::to_string(field.Size() / bytesPerCharacter) + ")";
    if (type == "INT64") type += "(" + std::to_string(field.Precision()) + "," + std::to_string(field.Scale()) + ")";
    return type + mvtest::NullAndKey(field);
  };
}

// The lines of the user objects.
std::vector<std::string> Lines(const TmvMetadataContainer& container) {
  return mvtest::CatalogLines(
      container, [](const TmvMetadataObject& object) { return !object.System(); }, Describe(4));
}

class FirebirdCatalogTest : public mvtest::SQL92ContextTest {
 protected:
  FirebirdCatalogTest() { context.SetSyntaxProvider(&firebird); }
  ~FirebirdCatalogTest() override {
    context.SetMetadataContainer(nullptr);
    context.SetMetadataProvider(nullptr);
  }

  TmvOwned<TmvMetadataContainer> Attach(TmvBaseSQLContext& ctx, TmvConnectionMetadataProvider& metadata,
                                        TmvConnection* connection) {
    metadata.SetConnection(connection);
    ctx.SetMetadataProvider(&metadata);
    auto container = TmvCreate<TmvMetadataContainer>(nullptr, &ctx);
    ctx.SetMetadataContainer(container.get());
    return container;
  }

  TmvFirebirdSyntaxProvider firebird;
  TmvConnectionMetadataProvider metadata;
};

TEST_F(FirebirdCatalogTest, ChinookAndOwnObjectsAsTheServerHasThem) {
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  const std::vector<std::string> expected = mvtest::SqliteChinookCatalogLines(Describe(1));
  EXPECT_EQ(expected.size(), 13u + 12u + 64u + 9u) << "tables, foreign keys, fields";

  // Chinook alone: as in SQLite.
  TmvFirebirdConnection server(UTF8Decode(fb.Dsn(mvtest::kFirebirdChinookDatabase)),
                               UTF8Decode(mvtest::FirebirdServer::kUser),
                               UTF8Decode(mvtest::FirebirdServer::kPassword));
  auto container = Attach(context, metadata, &server);
  EXPECT_EQ(IsConnectedServerIsFirebird(&metadata, &server), scsSupport);
  ASSERT_TRUE(LoadMetadataObjectsFirebird(&context, nullptr, container.get(), nullptr));
  ASSERT_TRUE(LoadMetadataRelationsFirebird(&context, nullptr, container.get(), nullptr));
  for (int i = 0; i < container->Count(); ++i) {
    if (container->Items(i)->System()) continue;
    EXPECT_TRUE(LoadFieldsForObjectFirebird(&context, nullptr, container->Items(i)));
  }
  EXPECT_EQ(Lines(*container), expected);
  bool system = false;
  for (int i = 0; i < container->Count(); ++i)
    system = system || (container->Items(i)->NameStrNotQuoted() == u"RDB$RELATIONS" && container->Items(i)->System());
  EXPECT_TRUE(system);

  // The same through the engine's road under the Firebird dialect, which the
  // automatic provider finds from the connection (the InterBase provider
  // before it in the list passes the same probe but answers only maybe).
  EXPECT_EQ(AutodetectSyntaxProvider(&metadata, nullptr), &TmvFirebirdSyntaxProvider::ProviderClass());

  // Our objects in the test database: a table named as SQL text, a view, a
  // procedure; nothing of the name ran.
  for (const std::string& statement : kOwnSchema) fb.Exec(statement);
  TmvFirebirdConnection test(UTF8Decode(fb.Dsn()), UTF8Decode(mvtest::FirebirdServer::kUser),
                             UTF8Decode(mvtest::FirebirdServer::kPassword));
  metadata.SetConnection(&test);
  container->Clear();
  container->LoadMetadataByMask(u"%", u"%");
  container->LoadFields();
  const std::vector<std::string> own = {
      "Big Keys",
      "Big Keys.K LONG null",
      "Big Keys.Label VARYING(10) null",
      "Keep Count",
      "Keep Count.N LONG null",
      "keep",
      "keep.K LONG null",
      "x'); drop table \"keep\"; --",
      "x'); drop table \"keep\"; --.X LONG pk",
      "x'); drop table \"keep\"; --.y;'z VARYING(5) null",
  };
  EXPECT_EQ(Lines(*container), own);
  EXPECT_EQ(fb.Query(R"(SELECT COUNT(*) FROM "keep")").at(0).at(0), "0");
}

// InterBase keeps its catalog in the same RDB$ tables: its loaders, run on
// the Firebird server, read Chinook as Firebird's do. The one difference is
// a column of a domain of our own, which InterBase names by its type.
TEST_F(FirebirdCatalogTest, InterBaseLoadersReadTheSameCatalog) {
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  TmvIBSyntaxProvider interbase;
  context.SetSyntaxProvider(&interbase);
  TmvFirebirdConnection server(UTF8Decode(fb.Dsn(mvtest::kFirebirdChinookDatabase)),
                               UTF8Decode(mvtest::FirebirdServer::kUser),
                               UTF8Decode(mvtest::FirebirdServer::kPassword));
  auto container = Attach(context, metadata, &server);
  EXPECT_EQ(IsConnectedServerIsInterbase(&metadata, &server), scsSupport);
  EXPECT_EQ(interbase.IsSupportConnectedServer(&metadata, nullptr), scsMaybeSupport);
  interbase.LoadMetadataObjects(&context, nullptr, container.get(), nullptr, nullptr);
  ASSERT_TRUE(LoadMetadataRelationsInterbase(&context, nullptr, container.get(), nullptr));
  for (int i = 0; i < container->Count(); ++i)
    if (!container->Items(i)->System()) interbase.LoadFieldsForObjectFromServer(&context, nullptr, container->Items(i));
  EXPECT_EQ(Lines(*container), mvtest::SqliteChinookCatalogLines(Describe(1)));

  fb.Exec(R"(CREATE DOMAIN "Price" AS numeric(10,2))");
  fb.Exec(R"(CREATE TABLE "priced" (p "Price"))");
  TmvFirebirdConnection test(UTF8Decode(fb.Dsn()), UTF8Decode(mvtest::FirebirdServer::kUser),
                             UTF8Decode(mvtest::FirebirdServer::kPassword));
  metadata.SetConnection(&test);
  container->Clear();
  ASSERT_TRUE(LoadMetadataObjectsInterbase(&context, nullptr, container.get(), nullptr));
  TmvMetadataObject* priced = nullptr;
  for (int i = 0; i < container->Count(); ++i)
    if (container->Items(i)->NameStrNotQuoted() == u"priced") priced = container->Items(i);
  ASSERT_NE(priced, nullptr);
  std::vector<WideString> types;
  for (auto load : {LoadFieldsForObjectInterbase, LoadFieldsForObjectFirebird}) {
    ASSERT_TRUE(load(&context, nullptr, priced));
    ASSERT_EQ(priced->GetFields()->Count(), 1);
    types.push_back(priced->GetFields()->Items(0)->FieldTypeName());
  }
  EXPECT_EQ(types, (std::vector<WideString>{u"INT64", u"Price"}));
  context.SetSyntaxProvider(&firebird);
}

// A server that answers none of the probes: the automatic provider takes a
// universal provider for an unknown server.
TEST(AutoSyntaxProviderOnServers, UnknownServerFallsBackOnUniversal) {
  class TSilentServer : public TmvConnectionMetadataProvider {
   public:
    std::unique_ptr<TmvDataSet> ExecSQLDatasetUR(TmvConnection*, WideStringView sql, const TmvParams*) override {
      throw EmvQueryBuilderError(u"unknown statement: " + WideString(sql));
    }
  };
  InitializeEngine();
  TmvSQLiteConnection connection(u":memory:");
  TSilentServer silent;
  silent.SetConnection(&connection);
  EXPECT_EQ(AutodetectSyntaxProvider(&silent, nullptr), nullptr);
  auto automatic = TmvCreate<TmvAutoSyntaxProvider>();
  TmvBaseSQLContext context;
  context.SetSyntaxProvider(automatic.get());
  context.SetMetadataProvider(&silent);
  automatic->DetectSyntaxProvider(&context, nullptr);
  EXPECT_EQ(automatic->GetSyntaxProviderInternalClass(), &TmvUniversalSyntaxProvider::ProviderClass());
  auto* universal = dynamic_cast<TmvUniversalSyntaxProvider*>(automatic->GetSyntaxProviderInternal());
  ASSERT_NE(universal, nullptr);
  EXPECT_EQ(universal->GetUsedServer(), ustUnknown);
  context.SetMetadataProvider(nullptr);
  context.SetSyntaxProvider(nullptr);
}

}  // namespace
