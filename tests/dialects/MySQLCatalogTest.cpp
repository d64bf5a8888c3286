// The MySQL catalog read from the throw-away MariaDB server: Chinook and the
// tables with awkward names give the same objects, fields, keys and foreign
// keys as the SQLite file they were copied from; a database of our own with
// a quote and a backslash in its name adds a view, a key of three columns, a
// comment and a table whose name is SQL text.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "CatalogLines.h"
#include "MariaDbChinook.h"
#include "SQL92Context.h"
#include "dialects/mysql/MYSQLSyntaxProvider.h"
#include "dialects/mysql/MySQLCatalog.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MariaDbConnection.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "tree/QualifiedNames.h"

using namespace mv;

namespace {

// A database whose name holds a quote and a backslash, and in it a table
// named as SQL text.
const char16_t* const kOwnDatabase = u"mv odd'db\\";
const char* const kOwnSchema = R"(
  CREATE DATABASE `mv odd'db\`;
  CREATE TABLE `mv odd'db\`.parent (a int, b varchar(10), c date, PRIMARY KEY (a, b, c));
  CREATE TABLE `mv odd'db\`.child (id int PRIMARY KEY, a int NOT NULL, b varchar(10) NOT NULL, c date NOT NULL,
    note text DEFAULT 'x' COMMENT 'the note', amount decimal(8,3),
    FOREIGN KEY (a, b, c) REFERENCES `mv odd'db\`.parent (a, b, c));
  CREATE VIEW `mv odd'db\`.v AS SELECT id, note FROM `mv odd'db\`.child;
  CREATE TABLE test.keep (k int);
  CREATE TABLE `mv odd'db\`.`x\'); drop table test.keep; #` (x int, `y;'z\` text);
)";

// A field as the server has it: SQLite's declared types as the loader maps
// them, the length of a string, precision and scale of a decimal.
std::string Describe(const TmvMetadataField& field) {
  static const std::map<std::string, std::string> types = {
      {"integer", "int"}, {"nvarchar", "varchar"}, {"numeric", "decimal"}};
  std::string type = UTF8Encode(WideLowerCase(field.FieldTypeName()));
  if (const auto found = types.find(type); found != types.end()) type = found->second;
  if (type == "varchar") type += "(" + std::to_string(field.Size()) + ")";
  if (type == "decimal") type += "(" + std::to_string(field.Precision()) + "," + std::to_string(field.Scale()) + ")";
  return type + mvtest::NullAndKey(field);
}

// The lines of the objects of one database.
std::vector<std::string> Lines(const TmvMetadataContainer& container, WideStringView database) {
  return mvtest::CatalogLines(
      container, [&](const TmvMetadataObject& object) { return object.DatabaseStrNotQuoted() == database; },
      Describe);
}

class MySQLCatalogTest : public mvtest::SQL92ContextTest {
 protected:
  MySQLCatalogTest() { context.SetSyntaxProvider(&mysql); }
  ~MySQLCatalogTest() override {
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

  // Objects, foreign keys and the fields of the user objects of `database`
  // (null: the current one, or all).
  void LoadAll(TmvMetadataContainer& container, const TSQLQualifiedName* database = nullptr) {
    ASSERT_TRUE(LoadMetadataObjectsMySQL(&context, nullptr, &container, nullptr, database));
    ASSERT_TRUE(LoadMetadataRelationsMySQL(&context, nullptr, &container, nullptr, database));
    for (int i = 0; i < container.Count(); ++i) {
      if (container.Items(i)->System()) continue;
      EXPECT_TRUE(LoadFieldsForObjectMySQL(&context, nullptr, container.Items(i), mysql.GetServerVersionInt()))
          << UTF8Encode(container.Items(i)->NameStrNotQuoted());
    }
  }

  static mvtest::MariaDbServer& Server() {
    mvtest::MariaDbServer& db = mvtest::ChinookOnMariaDb();
    static bool own = false;
    if (!own) db.Exec(kOwnSchema);
    own = true;
    return db;
  }

  TmvMYSQLSyntaxProvider mysql;
  TmvConnectionMetadataProvider metadata;
};

const std::vector<std::string> kOwnLines = {
    "child",
    "child.a int",
    "child.amount decimal(8,3) null",
    "child.b varchar(10)",
    "child.c date",
    "child.id int pk",
    "child.note text null",
    "parent",
    "parent -> child [a,b,c] [a,b,c]",
    "parent.a int pk",
    "parent.b varchar(10) pk",
    "parent.c date pk",
    "v",
    "v.id int",
    "v.note text null",
    "x\\'); drop table test.keep; #",
    "x\\'); drop table test.keep; #.x int null",
    "x\\'); drop table test.keep; #.y;'z\\ text null",
};

TEST_F(MySQLCatalogTest, ChinookAndOwnDatabaseAsTheServerHasThem) {
  MV_REQUIRE_MARIADB_CHINOOK();
  mvtest::MariaDbServer& db = Server();
  TmvMariaDbConnection server(UTF8Decode(db.Uri(mvtest::kMariaDbChinookDatabase)));
  auto container = Attach(context, metadata, &server);

  EXPECT_EQ(IsConnectedServerIsMySQL(&metadata, &server), scsSupport);
  const int version = CalcServerVersionMySQL(&metadata, &server);
  EXPECT_EQ(version, ParseServerVersionMySQL(db.Query("select version()").at(0).at(0).value()));
  EXPECT_GE(version, kMySQLInformationSchemaVersion);
  EXPECT_EQ(GetDefaultDatabaseNameMySQL(&context, nullptr)->GetQualifiedNameWithoutQuotes(), u"chinook");
  std::vector<WideString> databases;
  ASSERT_TRUE(GetDatabasesListMySQL(&context, nullptr, databases));
  for (const char16_t* name : {u"chinook", u"information_schema", u"test", kOwnDatabase})
    EXPECT_NE(std::find(databases.begin(), databases.end(), name), databases.end()) << UTF8Encode(name);

  // The current database: Chinook as in SQLite.
  LoadAll(*container);
  const std::vector<std::string> expected = mvtest::SqliteChinookCatalogLines(Describe);
  EXPECT_EQ(expected.size(), 13u + 12u + 64u + 9u) << "tables, foreign keys, fields";
  EXPECT_EQ(Lines(*container, u"chinook"), expected);
  EXPECT_EQ(container->DefaultDatabaseNameStr(), u"chinook");

  // Another database by name: quote and backslash in its name, a key of
  // three columns, a view, a comment, a table named as SQL text; nothing of it ran.
  auto own = TastCreate<TSQLQualifiedName>(&context);
  own->AddName(kOwnDatabase, false);
  LoadAll(*container, own.get());
  EXPECT_EQ(Lines(*container, kOwnDatabase), kOwnLines);
  EXPECT_EQ(db.Query("select count(*) from information_schema.tables where table_name='keep'").at(0).at(0), "1");
  for (int i = 0; i < container->Count(); ++i) {
    TmvMetadataObject* object = container->Items(i);
    if (object->DatabaseStrNotQuoted() != kOwnDatabase) continue;
    EXPECT_EQ(object->MetadataClass().InheritsFrom(TmvMetadataView::StaticClass()), object->NameStrNotQuoted() == u"v");
    if (object->NameStrNotQuoted() != u"child") continue;
    EXPECT_EQ(object->GetFields()->Items(4)->ShortDescription(), u"the note");
    EXPECT_EQ(object->GetFields()->Items(5)->GetFieldTypeNameAndSize(), u"decimal(8,3)");
  }

  // Before 5.0.0 the fields come from "show columns", the names in back quotes.
  for (int i = 0; i < container->Count(); ++i) {
    TmvMetadataObject* object = container->Items(i);
    if (object->DatabaseStrNotQuoted() != kOwnDatabase || object->NameStrNotQuoted()[0] != u'x') continue;
    object->GetFields()->Clear();
    ASSERT_TRUE(LoadFieldsForObjectMySQL(&context, nullptr, object, 40100));
    ASSERT_EQ(object->GetFields()->Count(), 2);
    EXPECT_EQ(object->GetFields()->Items(1)->NameStrNotQuoted(), u"y;'z\\");
    EXPECT_EQ(object->GetFields()->Items(0)->FieldTypeName(), u"int");
    EXPECT_TRUE(object->GetFields()->Items(1)->Nullable());
  }

  // The engine's road under the MySQL dialect, which the automatic provider
  // finds from the connection; the version is read from the server.
  EXPECT_EQ(AutodetectSyntaxProvider(&metadata, nullptr), &TmvMYSQLSyntaxProvider::ProviderClass());
  {
    TmvMYSQLSyntaxProvider dialect;
    dialect.SetAutoCalcServerVersion(true);
    TmvBaseSQLContext dialectContext;
    dialectContext.SetSyntaxProvider(&dialect);
    TmvConnectionMetadataProvider dialectMetadata;
    auto loaded = Attach(dialectContext, dialectMetadata, &server);
    loaded->LoadMetadataByMask(u"%", u"%");
    loaded->LoadFields();
    EXPECT_EQ(dialect.GetServerVersionInt(), version);
    EXPECT_EQ(loaded->DefaultDatabaseNameStr(), u"chinook");
    EXPECT_EQ(Lines(*loaded, u"chinook"), expected);
    dialectContext.SetMetadataContainer(nullptr);
    loaded.reset();
    dialectContext.SetMetadataProvider(nullptr);
    dialectContext.SetSyntaxProvider(nullptr);
  }
}

// Without a current database every database is read; information_schema's
// views are system views. A filter's masks pick objects; a refused catalog
// query is no error, only a false answer.
TEST_F(MySQLCatalogTest, AllDatabasesFiltersAndRefusals) {
  MV_REQUIRE_MARIADB_CHINOOK();
  mvtest::MariaDbServer& db = Server();
  TmvMariaDbConnection server(UTF8Decode(db.Uri("")));
  auto container = Attach(context, metadata, &server);
  EXPECT_EQ(GetDefaultDatabaseNameMySQL(&context, nullptr), nullptr);
  ASSERT_TRUE(LoadMetadataObjectsMySQL(&context, nullptr, container.get(), nullptr, nullptr));
  ASSERT_TRUE(LoadMetadataRelationsMySQL(&context, nullptr, container.get(), nullptr, nullptr));
  const std::vector<std::string> all = Lines(*container, u"chinook");
  EXPECT_EQ(all.size(), 13u + 12u);
  EXPECT_NE(std::find(all.begin(), all.end(), "Invoice -> InvoiceLine [InvoiceId] [InvoiceId]"), all.end());
  EXPECT_EQ(Lines(*container, kOwnDatabase).size(), 4u + 1u) << "objects, foreign keys";
  bool systemViews = false;
  for (int i = 0; i < container->Count(); ++i)
    if (container->Items(i)->DatabaseStrNotQuoted() == u"information_schema")
      systemViews = systemViews || container->Items(i)->System();
  EXPECT_TRUE(systemViews);

  const std::vector<std::pair<const char16_t*, std::vector<std::string>>> cases = {
      {u"Inv%", {"Invoice", "Invoice -> InvoiceLine [InvoiceId] [InvoiceId]", "InvoiceLine"}},
      {u"Odd%", {"Odd Table", "Odd Table -> order [Row Id] [Odd Table Row]"}},
      {u"x' or 'a'='a", {}},
  };
  auto chinook = TastCreate<TSQLQualifiedName>(&context);
  chinook->AddName(u"chinook", false);
  for (const auto& [mask, lines] : cases) {
    container->Clear();
    TmvMetadataFilter filter;
    filter.Add()->SetObjectMask(mask);
    ASSERT_TRUE(LoadMetadataObjectsMySQL(&context, nullptr, container.get(), &filter, chinook.get()));
    ASSERT_TRUE(LoadMetadataRelationsMySQL(&context, nullptr, container.get(), &filter, chinook.get()));
    EXPECT_EQ(Lines(*container, u"chinook"), lines) << UTF8Encode(mask);
  }

  TmvSQLiteConnection lite(u":memory:");
  metadata.SetConnection(&lite);
  EXPECT_EQ(IsConnectedServerIsMySQL(&metadata, &lite), scsNotSupport);
  EXPECT_EQ(CalcServerVersionMySQL(&metadata, &lite), kMySQLHighestServerVersion);
  EXPECT_FALSE(LoadMetadataObjectsMySQL(&context, nullptr, container.get(), nullptr, chinook.get()));
  EXPECT_FALSE(LoadMetadataRelationsMySQL(&context, nullptr, container.get(), nullptr, nullptr));
  EXPECT_EQ(GetDefaultDatabaseNameMySQL(&context, nullptr), nullptr);
}

// Names and texts that go into a statement stay one literal or one name,
// whether or not the server reads a backslash as an escape.
TEST(MySQLCatalogQueries, QuotedNames) {
  const std::vector<std::tuple<const char16_t*, const char16_t*, const char16_t*>> cases = {
      {u"shop", u"'shop'", u"`shop`"},
      {u"it's", u"'it''s'", u"`it's`"},
      {u"a\\' or 1=1 #", u"'a\\\\'' or 1=1 #'", u"`a\\' or 1=1 #`"},
      {u"back`quote", u"'back`quote'", u"`back``quote`"},
  };
  for (const auto& [text, literal, name] : cases) {
    EXPECT_EQ(MySQLQuoteString(text), literal);
    EXPECT_EQ(MySQLQuoteName(text), name);
  }
}

}  // namespace
