// The Firebird catalog read from the throw-away Firebird server: Chinook and
// the tables with awkward names give the same objects, fields, keys and
// foreign keys as the SQLite file they were copied from; a table of our own
// whose name is SQL text, a view and a procedure join them.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "ChinookLoader.h"
#include "FirebirdChinook.h"
#include "RunTool.h"
#include "SQL92Context.h"
#include "dialects/firebird/FirebirdCatalog.h"
#include "dialects/firebird/FirebirdSyntaxProvider.h"
#include "dialects/EngineInit.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataRelation.h"
#include "metadata/dataset/FirebirdConnection.h"
#include "metadata/dataset/SQLiteCatalog.h"
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

// SQLite's declared types as the loader maps them, by the names of the
// Firebird catalog, with the length in bytes of UTF8 text.
std::string ServerType(WideStringView declared) {
  static const std::map<std::string, std::string> types = {
      {"integer", "LONG"}, {"nvarchar", "VARYING"}, {"varchar", "VARYING"}, {"numeric", "INT64"},
      {"datetime", "TIMESTAMP"}, {"varying", "VARYING"}, {"long", "LONG"}, {"int64", "INT64"},
      {"timestamp", "TIMESTAMP"}};
  const std::string lower = UTF8Encode(WideLowerCase(declared));
  const auto found = types.find(lower);
  return found == types.end() ? lower : found->second;
}

// The user objects, their fields and foreign keys as lines: for a field its
// type, the length of a string in characters, precision and scale of a
// decimal, "null" and "pk" (a key field counts as not null).
std::vector<std::string> Lines(TmvMetadataContainer& container, int bytesPerCharacter) {
  std::vector<std::string> lines;
  for (int i = 0; i < container.Count(); ++i) {
    TmvMetadataObject* object = container.Items(i);
    if (object->System()) continue;
    const std::string name = UTF8Encode(object->NameStrNotQuoted());
    lines.push_back(name);
    for (int f = 0; f < object->GetFields()->Count(); ++f) {
      const TmvMetadataField* field = object->GetFields()->Items(f);
      const std::string type = ServerType(field->FieldTypeName());
      std::string line = name + "." + UTF8Encode(field->NameStrNotQuoted()) + " " + type;
      if (type == "VARYING") line += "(" + std::to_string(field->Size() / bytesPerCharacter) + ")";
      if (type == "INT64") line += "(" + std::to_string(field->Precision()) + "," + std::to_string(field->Scale()) + ")";
      lines.push_back(line + (field->Nullable() && !field->PrimaryKey() ? " null" : "") +
                      (field->PrimaryKey() ? " pk" : ""));
    }
  }
  const auto fields = [](const TmvMetadataQualifiedNamesList* list) {
    std::string text;
    for (int i = 0; i < list->Count(); ++i)
      text += (i ? "," : "") + UTF8Encode(list->Items(i)->GetQualifiedNameWithoutQuotes());
    return text;
  };
  for (TmvMetadataRelation* relation : container.GetRelations())
    lines.push_back(UTF8Encode(relation->GetKeyMetadataObject()->NameStrNotQuoted()) + " -> " +
                    UTF8Encode(relation->ChildNameStrNotQuoted()) + " [" + fields(relation->KeyFields()) + "] [" +
                    fields(relation->ChildFields()) + "]");
  std::sort(lines.begin(), lines.end());
  return lines;
}

class FirebirdCatalogTest : public mvtest::SQL92ContextTest {
 protected:
  FirebirdCatalogTest() { context.SetSyntaxProvider(&firebird); }
  ~FirebirdCatalogTest() override {
    for (auto* c : {&context, &liteContext}) {
      c->SetMetadataContainer(nullptr);
      c->SetMetadataProvider(nullptr);
      c->SetSyntaxProvider(nullptr);
    }
  }

  TmvOwned<TmvMetadataContainer> Attach(TmvBaseSQLContext& ctx, TmvConnectionMetadataProvider& metadata,
                                        TmvConnection* connection) {
    metadata.SetConnection(connection);
    ctx.SetMetadataProvider(&metadata);
    auto container = TmvCreate<TmvMetadataContainer>(nullptr, &ctx);
    ctx.SetMetadataContainer(container.get());
    return container;
  }

  std::vector<std::string> SqliteLines() {
    mvtest::TempFile copy("", ".sqlite");
    std::filesystem::copy_file(mvtest::ChinookSqlitePath(), copy.path(),
                               std::filesystem::copy_options::overwrite_existing);
    {
      mvtest::SqliteDatabase writable(copy.path(), true);
      for (const std::string& statement : mvtest::HostileNamesSql()) writable.Exec(statement);
    }
    TmvSQLiteConnection lite(UTF8Decode(copy.path()), somReadOnly);
    liteContext.SetSyntaxProvider(&provider);
    TmvConnectionMetadataProvider liteMetadata;
    auto liteContainer = Attach(liteContext, liteMetadata, &lite);
    LoadSQLiteCatalog(&liteContext, liteContainer.get());
    std::vector<std::string> lines = Lines(*liteContainer, 1);
    liteContext.SetMetadataContainer(nullptr);
    liteContext.SetMetadataProvider(nullptr);
    return lines;
  }

  TmvFirebirdSyntaxProvider firebird;
  TmvConnectionMetadataProvider metadata;
  TmvBaseSQLContext liteContext;
};

TEST_F(FirebirdCatalogTest, ChinookAndOwnObjectsAsTheServerHasThem) {
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  const std::vector<std::string> expected = SqliteLines();
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
  EXPECT_EQ(Lines(*container, 4), expected);
  bool system = false;
  for (int i = 0; i < container->Count(); ++i)
    system = system || (container->Items(i)->NameStrNotQuoted() == u"RDB$RELATIONS" && container->Items(i)->System());
  EXPECT_TRUE(system);

  // The same through the engine's road under the Firebird dialect, which the
  // automatic provider finds from the connection (the InterBase provider
  // before it in the list does not probe).
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
  EXPECT_EQ(Lines(*container, 4), own);
  EXPECT_EQ(fb.Query(R"(SELECT COUNT(*) FROM "keep")").at(0).at(0), "0");
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
