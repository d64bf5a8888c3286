// LoadSQLiteCatalog: the Chinook sample database (from the shared corpus)
// read through the fetchers and compared with what the file reports through
// the dataset layer, and a scratch database whose names are hostile to SQL
// text read back exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "Corpus.h"
#include "MetadataTestSupport.h"
#include "RunTool.h"
#include "Thrown.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "metadata/dataset/SQLiteCatalog.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "metadata/dataset/SQLiteTypes.h"
#include "support/TextHelpers.h"

using namespace mv;
using namespace mv::test;

namespace {

std::string ChinookPath() {
  const std::string dir = mvtest::CorpusDir();
  if (dir.empty()) return {};
  const std::string path = dir + "/chinook/Chinook_Sqlite.sqlite";
  return std::filesystem::exists(path) ? path : std::string();
}

WideString Quoted(WideStringView name) { return CreateQuotedIdentifier(name, u"\"", u"\""); }

class SQLiteCatalogTest : public MetadataTest {
 protected:
  SQLiteCatalogTest() {
    // SQLite's names: no databases, no schemas, no case rule.
    provider.databases = false;
    provider.schemas = false;
    provider.SetIdentCaseSens(icsNonSensitive);
  }
  ~SQLiteCatalogTest() override { context.SetMetadataProvider(nullptr); }

  void Use(std::unique_ptr<TmvSQLiteConnection> connection) {
    database = std::move(connection);
    metadata.SetConnection(database.get());
    context.SetMetadataProvider(&metadata);
  }

  std::unique_ptr<TmvDataSet> Query(WideStringView sql, WideStringView table) {
    TmvParams params;
    params.CreateParam(ftWideString, u"t").SetAsWideString(table);
    return database->OpenQuery(sql, &params);
  }

  // What the file says, through the dataset layer: the user tables and views, ...
  std::vector<WideString> FileTables() {
    std::vector<WideString> names;
    for (auto query = database->OpenQuery(u"select name from sqlite_master where type in ('table', 'view') and "
                                          u"name not like 'sqlite%'");
         !query->Eof(); query->Next())
      names.push_back(query->FieldByName(u"name").AsWideString());
    std::sort(names.begin(), names.end());
    return names;
  }

  // ... the columns of each, from the driver's description of the table's
  // rows and the primary key positions ...
  std::vector<std::string> FileFields(const WideString& table) {
    auto rows = database->CreateQuery(u"select * from " + Quoted(table));
    rows->UpdateFieldDefs();
    std::map<WideString, bool> keys;
    for (auto info = Query(u"select name, pk from pragma_table_info(:t)", table); !info->Eof(); info->Next())
      keys[info->FieldByName(u"name").AsWideString()] = info->FieldByName(u"pk").AsInteger() > 0;
    std::vector<std::string> fields;
    for (const TmvFieldDef& def : rows->FieldDefs()) {
      const TmvSQLiteColumnType type = SQLiteColumnType(def.TypeName);
      fields.push_back(Describe(def.Name, WideTrim(WideStringView(def.TypeName).substr(0, def.TypeName.find(u'('))),
                                type.DataType, def.Size, def.Precision, def.Scale, !def.Required(), keys[def.Name]));
    }
    return fields;
  }

  // ... and the foreign keys, as "primary -> child [primary fields] [child fields]".
  std::vector<std::string> FileRelations(const std::vector<WideString>& tables) {
    std::vector<std::string> relations;
    for (const WideString& table : tables) {
      std::map<int64_t, std::pair<WideString, std::pair<std::string, std::string>>> keys;
      for (auto fk = Query(u"select * from pragma_foreign_key_list(:t) order by id, seq", table); !fk->Eof();
           fk->Next()) {
        auto& key = keys[fk->FieldByName(u"id").AsLargeInt()];
        key.first = fk->FieldByName(u"table").AsWideString();
        const auto add = [](std::string& list, const WideString& name) {
          list += (list.empty() ? "" : ",") + UTF8Encode(name);
        };
        add(key.second.first, fk->FieldByName(u"to").AsWideString());
        add(key.second.second, fk->FieldByName(u"from").AsWideString());
      }
      for (const auto& [id, key] : keys)
        relations.push_back(UTF8Encode(key.first) + " -> " + UTF8Encode(table) + " [" + key.second.first + "] [" +
                            key.second.second + "]");
    }
    std::sort(relations.begin(), relations.end());
    return relations;
  }

  static std::string Describe(const WideString& name, const WideString& type, TFieldType dataType, int size,
                              int precision, int scale, bool nullable, bool primary) {
    return UTF8Encode(name) + " " + UTF8Encode(type) + "(" + std::to_string(size) + "/" + std::to_string(precision) +
           "," + std::to_string(scale) + ") " + std::to_string(int(dataType)) + (nullable ? " null" : "") +
           (primary ? " pk" : "");
  }

  // What the container holds.
  std::vector<WideString> ContainerTables() {
    std::vector<WideString> names;
    for (int i = 0; i < container->Count(); ++i) names.push_back(container->Items(i)->NameStrNotQuoted());
    std::sort(names.begin(), names.end());
    return names;
  }
  std::vector<std::string> ContainerFields(const WideString& table) {
    TmvMetadataObject* object = container->FindObjectByName(Id(table).get());
    EXPECT_NE(object, nullptr) << UTF8Encode(table);
    std::vector<std::string> fields;
    if (!object) return fields;
    EXPECT_TRUE(object->GetFields()->Loaded());
    for (int i = 0; i < object->GetFields()->Count(); ++i) {
      const TmvMetadataField* field = object->GetFields()->Items(i);
      fields.push_back(Describe(field->NameStrNotQuoted(), field->FieldTypeName(), field->FieldType(), field->Size(),
                                field->Precision(), field->Scale(), field->Nullable(), field->PrimaryKey()));
    }
    return fields;
  }
  std::vector<std::string> ContainerRelations() {
    const auto fields = [](const TmvMetadataQualifiedNamesList* list) {
      std::string text;
      for (int i = 0; i < list->Count(); ++i)
        text += (i ? "," : "") + UTF8Encode(list->Items(i)->GetQualifiedNameWithoutQuotes());
      return text;
    };
    std::vector<std::string> relations;
    for (TmvMetadataRelation* relation : container->GetRelations())
      relations.push_back(UTF8Encode(relation->GetKeyMetadataObject()->NameStrNotQuoted()) + " -> " +
                          UTF8Encode(relation->ChildNameStrNotQuoted()) + " [" + fields(relation->KeyFields()) +
                          "] [" + fields(relation->ChildFields()) + "]");
    std::sort(relations.begin(), relations.end());
    return relations;
  }

  void ExpectContainerIsTheFile() {
    const std::vector<WideString> tables = FileTables();
    EXPECT_EQ(ContainerTables(), tables);
    for (const WideString& table : tables) EXPECT_EQ(ContainerFields(table), FileFields(table)) << UTF8Encode(table);
    EXPECT_EQ(ContainerRelations(), FileRelations(tables));
  }

  std::unique_ptr<TmvSQLiteConnection> database;
  TmvConnectionMetadataProvider metadata;
};

TEST_F(SQLiteCatalogTest, ChinookTablesFieldsKeysAndForeignKeys) {
  const std::string path = ChinookPath();
  if (path.empty()) GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus";
  Use(std::make_unique<TmvSQLiteConnection>(UTF8Decode(path), somReadOnly));
  LoadSQLiteCatalog(&context, container.get());
  ASSERT_EQ(container->Count(), 11);
  ExpectContainerIsTheFile();
  EXPECT_EQ(container->GetRelations().size(), 11u);

  // Everything was read: the container answers without its provider.
  container->SetWorkOffline(true);
  context.SetMetadataProvider(nullptr);
  TmvMetadataTable* track = container->FindTableByFullName(u"track");
  ASSERT_NE(track, nullptr);
  track->LoadFieldsOnDemand();
  EXPECT_EQ(track->GetFields()->Count(), 9);
  EXPECT_EQ(track->GetFields()->Items(8)->GetFieldTypeNameAndSize(), u"NUMERIC(10,2)");
}

TEST_F(SQLiteCatalogTest, AFilterLimitsTheObjectsAndTheirKeys) {
  const std::string path = ChinookPath();
  if (path.empty()) GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus";
  Use(std::make_unique<TmvSQLiteConnection>(UTF8Decode(path), somReadOnly));
  TmvMetadataFilter filter;
  filter.Add()->SetObjectMask(u"Inv%");
  LoadSQLiteCatalog(&context, container.get(), &filter);
  EXPECT_EQ(ContainerTables(), (std::vector<WideString>{u"Invoice", u"InvoiceLine"}));
  // Only the keys between the two hang on them.
  EXPECT_EQ(ContainerRelations(), (std::vector<std::string>{"Invoice -> InvoiceLine [InvoiceId] [InvoiceId]"}));
}

TEST_F(SQLiteCatalogTest, HostileNamesAreReadBackExactly) {
  const std::vector<WideString> names = {
      u"we\"ird", u"[br]acket", u"semi;colon'); drop table x;--", u"new\nline", u"emoji \U0001F600 \u00DF",
      u"'quote'",  u"  padded  ", u"\"quoted\"", u"colon :param ?1 $x @y", u"back`tick`",
  };
  mvtest::TempFile file("", ".sqlite");
  Use(std::make_unique<TmvSQLiteConnection>(UTF8Decode(file.path())));
  database->ExecSQL(u"create view " + Quoted(u"v;iew\"") + u" as select 1 as " + Quoted(u"o\"ne"));
  for (size_t i = 0; i < names.size(); ++i) {
    const WideString key = names[i] + u" key";
    WideString sql = u"create table " + Quoted(names[i]) + u" (" + Quoted(key) + u" integer primary key, " +
                     Quoted(names[i] + u" text") + u" varchar(30) not null";
    if (i > 0)
      sql += u", " + Quoted(u"pa\nrent\"") + u" integer references " + Quoted(names[i - 1]) + u"(" +
             Quoted(names[i - 1] + u" key") + u")";
    database->ExecSQL(sql + u")");
  }
  LoadSQLiteCatalog(&context, container.get());
  ASSERT_EQ(container->Count(), int(names.size()) + 1);
  ExpectContainerIsTheFile();
  EXPECT_EQ(ContainerRelations().size(), names.size() - 1);
  TmvMetadataView* view = container->FindViewByName(Id(u"v;iew\"").get());
  ASSERT_NE(view, nullptr);
  ASSERT_EQ(view->GetFields()->Count(), 1);
  EXPECT_EQ(view->GetFields()->Items(0)->NameStrNotQuoted(), u"o\"ne");
}

TEST_F(SQLiteCatalogTest, TheProviderMustStandOnASQLiteConnection) {
  TmvMemoryConnection memory;
  metadata.SetConnection(&memory);
  context.SetMetadataProvider(&metadata);
  EXPECT_NE(mvtest::ThrownMessage([&] { LoadSQLiteCatalog(&context, container.get()); }).find(u"not a SQLite database"),
            WideString::npos);
  metadata.SetConnection(nullptr);
  EXPECT_EQ(mvtest::ThrownMessage([&] { LoadSQLiteCatalog(&context, container.get()); }),
            u"Connection object is not specified (property Connection is not assigned)");
  context.SetMetadataProvider(nullptr);
  EXPECT_EQ(mvtest::ThrownMessage([&] { LoadSQLiteCatalog(&context, container.get()); }),
            u"Metadata provider is not specified");
}

}  // namespace
