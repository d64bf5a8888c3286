// The Chinook sample database (SQLite, from the shared corpus) read into a
// container through the event provider: by host callbacks that read the
// catalog through the dataset layer, and by the driver road.
#include <gtest/gtest.h>

#include <filesystem>

#include "Corpus.h"
#include "MetadataTestSupport.h"
#include "metadata/EventMetadataProvider.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/TextHelpers.h"

using namespace mv;
using namespace mv::test;

namespace {

const char16_t* const kChinookTables[] = {u"Album",    u"Artist",        u"Customer",    u"Employee",
                                          u"Genre",    u"Invoice",       u"InvoiceLine", u"MediaType",
                                          u"Playlist", u"PlaylistTrack", u"Track"};

std::string ChinookPath() {
  const std::string dir = mvtest::CorpusDir();
  if (dir.empty()) return {};
  const std::string path = dir + "/chinook/Chinook_Sqlite.sqlite";
  return std::filesystem::exists(path) ? path : std::string();
}

// "NUMERIC(10,2)" -> NUMERIC, 10, 2; "NVARCHAR(200)" -> NVARCHAR, 200.
void SetDeclaredType(TmvMetadataField& field, WideStringView declared) {
  const size_t open = declared.find(u'(');
  field.SetFieldTypeName(WideTrim(declared.substr(0, open)));
  if (open == WideStringView::npos) return;
  const size_t comma = declared.find(u',', open);
  const size_t close = declared.find(u')', open);
  int first = 0;
  int second = 0;
  TryStrToInt(declared.substr(open + 1, std::min(comma, close) - open - 1), first);
  if (comma != WideStringView::npos && comma < close) {
    TryStrToInt(declared.substr(comma + 1, close - comma - 1), second);
    field.SetPrecision(first);
    field.SetScale(second);
  } else {
    field.SetSize(first);
  }
}

class ChinookTest : public MetadataTest {
 protected:
  ChinookTest() {
    // SQLite's names: no schemas, no case rule.
    provider.schemas = false;
    provider.SetIdentCaseSens(icsNonSensitive);
    context.SetMetadataProvider(&events);
  }
  ~ChinookTest() override { context.SetMetadataProvider(nullptr); }

  void SetUp() override {
    const std::string path = ChinookPath();
    if (path.empty()) GTEST_SKIP() << "Chinook_Sqlite.sqlite is not in the shared corpus";
    database = std::make_unique<TmvSQLiteConnection>(UTF8Decode(path), somReadOnly);
    // The host names the tables as the server spells them; the case flag
    // follows the dialect, as a fetcher sets it.
    events.OnGetTables = [this](TmvObject*, TSQLDatabaseObjectsList& names) {
      auto query = database->OpenQuery(
          u"select name from sqlite_master where type = 'table' and name not like 'sqlite%' order by name");
      const bool quoted = provider.IsIdentifiersCaseSensitive();
      for (; !query->Eof(); query->Next())
        names.CreateSQLDatabaseObject()->AddName(query->FieldByName(u"NAME").AsWideString(), quoted);
    };
  }

  void UseCatalogCallbacks() {
    events.OnLoadObjectMetadata = [this](TmvObject*, TmvBaseSQLContext* ctx, TmvMetadataObject* object) {
      auto query = database->OpenQuery(u"pragma table_info(" + SQLQuoteString(object->NameStrNotQuoted()) + u")");
      TmvMetadataFieldsList* fields = object->GetFields();
      for (; !query->Eof(); query->Next()) {
        TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(ctx);
        name->AddName(query->FieldByName(u"name").AsWideString(), provider.IsIdentifiersCaseSensitive());
        TmvMetadataField* field = fields->AddField(name.get());
        SetDeclaredType(*field, query->FieldByName(u"type").AsWideString());
        field->SetNullable(query->FieldByName(u"notnull").AsInteger() == 0);
        field->SetPrimaryKey(query->FieldByName(u"pk").AsInteger() != 0);
      }
    };
    events.OnGetTableRelations = [this](TmvObject*, const TSQLQualifiedName& table, TSQLMetadataRelations& relations) {
      const WideString tableName = table.GetQualifiedNameWithoutQuotes();
      auto query = database->OpenQuery(u"pragma foreign_key_list(" + SQLQuoteString(tableName) + u")");
      for (; !query->Eof(); query->Next()) {
        auto relation = std::make_unique<TSQLMetadataRelation>(&context);
        relation->TableName().AddName(tableName, false);
        relation->KeyFields().AddField(query->FieldByName(u"from").AsWideString(), false);
        relation->ChildTable().AddName(query->FieldByName(u"table").AsWideString(), false);
        relation->ChildFields().AddField(query->FieldByName(u"to").AsWideString(), false);
        relations.push_back(std::move(relation));
      }
    };
  }

  std::unique_ptr<TmvSQLiteConnection> database;
  TmvEventMetadataProvider events;
};

}  // namespace

TEST_F(ChinookTest, TablesAndColumnsComeThroughTheCatalogCallbacks) {
  UseCatalogCallbacks();
  container->LoadMetadataByFilter(nullptr);
  ASSERT_EQ(container->Count(), 11);
  for (const char16_t* name : kChinookTables)
    EXPECT_NE(container->FindTableByFullName(Name({name}).get()), nullptr) << UTF8Encode(name);

  container->LoadFields();
  TmvMetadataTable* track = container->FindTableByFullName(Name({u"Track"}).get());
  ASSERT_NE(track, nullptr);
  TmvMetadataFieldsList* fields = track->GetFields();
  ASSERT_EQ(fields->Count(), 9);
  EXPECT_EQ(fields->Items(0)->NameStr(), u"TrackId");
  EXPECT_TRUE(fields->Items(0)->PrimaryKey());
  EXPECT_EQ(fields->Items(1)->GetFieldTypeNameAndSize(), u"NVARCHAR(200)");
  EXPECT_FALSE(fields->Items(1)->Nullable());
  EXPECT_EQ(fields->Items(8)->GetFieldTypeNameAndSize(), u"NUMERIC(10,2)");
  EXPECT_GE(fields->FindFieldByName(Id(u"milliseconds").get()), 0);

  // Track refers to MediaType, Genre and Album.
  EXPECT_EQ(track->GetRelations()->Count(), 3);
  EXPECT_EQ(track->GetReferencingObjects().size(), 3u);
  TmvMetadataTable* album = container->FindTableByFullName(Name({u"Album"}).get());
  EXPECT_EQ(album->GetReferencedObjects(), std::vector<TmvMetadataObject*>{track});
  EXPECT_EQ(container->GetRelations().size(), 11u);
}

TEST_F(ChinookTest, ColumnsComeFromTheDriverThroughADatasetCallback) {
  events.OnCreateSQLDataset = [this](TmvObject*, TmvConnection*, bool, bool, std::unique_ptr<TmvDataSet>& dataset) {
    dataset = database->CreateQuery();
  };
  container->LoadMetadataByFilter(nullptr);
  ASSERT_EQ(container->Count(), 11);
  TmvMetadataTable* invoiceLine = container->FindTableByFullName(Name({u"invoiceline"}).get());
  ASSERT_NE(invoiceLine, nullptr);
  invoiceLine->LoadFieldsOnDemand();
  TmvMetadataFieldsList* fields = invoiceLine->GetFields();
  ASSERT_EQ(fields->Count(), 5);
  EXPECT_EQ(fields->Items(0)->NameStrNotQuoted(), u"InvoiceLineId");
  EXPECT_EQ(fields->Items(0)->FieldType(), ftInteger);
  EXPECT_FALSE(fields->Items(1)->Nullable());
  EXPECT_EQ(fields->Items(3)->GetFieldTypeNameAndSize(), u"NUMERIC(10,2)");
}

TEST_F(ChinookTest, NamesResolveUnderTheDialectsCaseRule) {
  container->LoadMetadataByFilter(nullptr);
  TmvMetadataTable* track = container->FindTableByFullName(Name({u"Track"}).get());
  ASSERT_NE(track, nullptr);
  // Case-insensitive, as SQLite: every spelling, quoted or not.
  EXPECT_EQ(container->FindTableByFullName(Name({u"Track"}, true).get()), track);
  EXPECT_EQ(container->FindTableByFullName(Name({u"track"}).get()), track);
  EXPECT_EQ(container->FindTableByFullName(Name({u"TRACK"}, true).get()), track);
  for (const char16_t* text : {u"Track", u"\"Track\"", u"track", u"\"TRACK\""})
    EXPECT_EQ(container->FindTableByFullName(text), track) << UTF8Encode(text);
  EXPECT_EQ(container->FindTableByFullName(u"Tracks"), nullptr);

  // On a case-sensitive dialect that folds bare names to upper case, the
  // names are loaded with the case flag: only the quoted spelling reaches them.
  container->Clear();
  provider.SetIdentCaseSens(icsSensitiveUpperCase);
  container->LoadMetadataByFilter(nullptr);
  track = container->FindTableByFullName(Name({u"Track"}, true).get());
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(container->FindTableByFullName(Name({u"Track"}).get()), nullptr);
  EXPECT_EQ(container->FindTableByFullName(Name({u"track"}).get()), nullptr);
  EXPECT_EQ(container->FindTableByFullName(Name({u"track"}, true).get()), nullptr);
  EXPECT_EQ(container->FindTableByFullName(u"\"Track\""), track);
  EXPECT_EQ(container->FindTableByFullName(u"Track"), nullptr);
  EXPECT_EQ(container->FindTableByFullName(u"track"), nullptr);
  EXPECT_EQ(track->NameStr(), u"\"Track\"");
}
