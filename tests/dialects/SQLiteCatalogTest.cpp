// The SQLite provider reading a real SQLite database: the automatic
// provider detects it, and the catalog (default database, databases,
// objects of the main and of an attached database, fields and foreign keys
// read table by table) comes back with names that are hostile to SQL text.
// Dates keep the text the provider prints, also where SQLite reads it
// otherwise.
#include <gtest/gtest.h>

#include "dialects/EngineInit.h"
#include "dialects/sqlite/SQLiteMetadataHelpers.h"
#include "dialects/sqlite/SQLiteSyntaxProvider.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataRelation.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/DateTime.h"
#include "tree/QualifiedNames.h"
#include "tree/Tokens.h"

using namespace mv;

namespace {

class SQLiteCatalogTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  void SetUp() override {
    database_ = TmvSQLiteConnection::CreateInMemory();
    database_->Open();
    database_->ExecSQL(
        u"create table \"Odd \"\"T\"\"\" (\"Id\" integer primary key, \"it's\" text not null);"
        u"create table child (id integer primary key, oddId integer references \"Odd \"\"T\"\"\" (\"Id\"));"
        u"create view v as select id from child;"
        u"attach ':memory:' as other;"
        u"create table other.far (x int);"
        u"create temp table near (y int);");
    metadata_.SetConnection(database_.get());
    context_.SetSyntaxProvider(&provider_);
    context_.SetMetadataProvider(&metadata_);
    container_ = TmvCreate<TmvMetadataContainer>(nullptr, &context_);
    context_.SetMetadataContainer(container_.get());
  }
  void TearDown() override {
    context_.SetMetadataContainer(nullptr);
    container_.reset();
    context_.SetMetadataProvider(nullptr);
    context_.SetSyntaxProvider(nullptr);
  }
  std::string Objects() const {
    std::string text;
    for (int i = 0; i < container_->Count(); ++i)
      text += (i ? " " : "") + UTF8Encode(container_->Items(i)->FullNameStrNotQuoted()) + ":" +
              std::string(container_->Items(i)->ClassType().ClassName());
    return text;
  }

  std::unique_ptr<TmvSQLiteConnection> database_;
  TmvConnectionMetadataProvider metadata_;
  TmvSQLiteSyntaxProvider provider_;
  TmvBaseSQLContext context_;
  TmvOwned<TmvMetadataContainer> container_;
};

}  // namespace

TEST_F(SQLiteCatalogTest, AutomaticProviderDetectsSQLite) {
  EXPECT_EQ(provider_.IsSupportConnectedServer(&metadata_, nullptr), scsSupport);
  const TmvSyntaxProviderClass* detected = AutodetectSyntaxProvider(&metadata_, nullptr);
  ASSERT_NE(detected, nullptr);
  EXPECT_EQ(std::string(detected->ClassName()), "TmvSQLiteSyntaxProvider");
  TmvAutoSyntaxProvider automatic;
  context_.SetSyntaxProvider(&automatic);
  automatic.DetectSyntaxProvider(&context_, nullptr);
  ASSERT_TRUE(automatic.IsSyntaxProviderDetected());
  EXPECT_EQ(std::string(automatic.GetSyntaxProviderInternalClass()->ClassName()), "TmvSQLiteSyntaxProvider");
  context_.SetSyntaxProvider(&provider_);
}

TEST_F(SQLiteCatalogTest, DatabasesAndObjects) {
  EXPECT_EQ(provider_.GetDefaultDatabaseName(&context_, database_.get())->GetQualifiedNameWithoutQuotes(), u"main");
  std::vector<WideString> databases;
  provider_.GetDatabasesList(&context_, database_.get(), databases);
  EXPECT_EQ(databases, (std::vector<WideString>{u"main", u"temp", u"other"}));
  provider_.LoadMetadataObjects(&context_, database_.get(), container_.get(), nullptr, nullptr);
  EXPECT_EQ(Objects(), "main.Odd \"T\":TmvMetadataTable main.child:TmvMetadataTable main.v:TmvMetadataView");
  auto other = TastCreate<TSQLQualifiedName>(&context_);
  other->AddName(u"other", false);
  provider_.LoadMetadataObjects(&context_, database_.get(), container_.get(), nullptr, other.get());
  EXPECT_NE(Objects().find("other.far:TmvMetadataTable"), std::string::npos) << Objects();
  auto temp = TastCreate<TSQLQualifiedName>(&context_);
  temp->AddName(u"temp", false);
  provider_.LoadMetadataObjects(&context_, database_.get(), container_.get(), nullptr, temp.get());
  EXPECT_NE(Objects().find("temp.near:TmvMetadataTable"), std::string::npos) << Objects();
}

TEST_F(SQLiteCatalogTest, FieldsAndKeysTableByTable) {
  // Objects without their fields, as a container filled from elsewhere has them.
  auto oddName = TastCreate<TastTokenIdentifier>(&context_, u"Odd \"T\"", true);
  auto childName = TastCreate<TastTokenIdentifier>(&context_, u"child", false);
  TmvMetadataTable* odd = container_->AddTable(nullptr, oddName.get());
  TmvMetadataTable* child = container_->AddTable(nullptr, childName.get());
  provider_.LoadFieldsForObjectFromServer(&context_, database_.get(), odd);
  ASSERT_EQ(odd->GetFields()->Count(), 2);
  EXPECT_TRUE(odd->GetFields()->Items(0)->PrimaryKey());
  EXPECT_EQ(odd->GetFields()->Items(1)->NameStrNotQuoted(), u"it's");
  EXPECT_FALSE(odd->GetFields()->Items(1)->Nullable());
  provider_.LoadMetadataForTable(&context_, database_.get(), child);
  int relations = 0;
  for (TmvMetadataTable* table : {odd, child}) relations += table->GetRelations()->Count();
  EXPECT_EQ(relations, 1);
  EXPECT_EQ(SQLitePragmaQuery(u"table_info", u"x\"y", u"a\"b"), u"pragma \"x\"\"y\".table_info(\"a\"\"b\");");
}

TEST_F(SQLiteCatalogTest, DatesAreTheDefaultTexts) {
  // Known divergence: the text is the default cast, which SQLite reads as a
  // number (numeric affinity of "date"): 2024 instead of the date.
  const TmvDateTime date = EncodeDate(2024, 2, 29);
  EXPECT_EQ(provider_.GetDateString(date), u"cast('2024-02-29' as date)");
  auto rows = database_->OpenQuery(u"select " + provider_.GetDateString(date) + u" as d");
  EXPECT_EQ(rows->FieldByName(u"d").AsWideString(), u"2024");
}
