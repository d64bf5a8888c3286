// The standard providers reading INFORMATION_SCHEMA through the metadata
// provider. No libpq adapter exists yet, so a scripted connection stands in
// for the server: it answers each expected statement with rows and fails on
// any other.
#include <gtest/gtest.h>

#include "ScriptedServer.h"
#include "dialects/EngineInit.h"
#include "dialects/sql2003/SQL2003SyntaxProvider.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataRelation.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "metadata/fetchers/InformationSchemaCatalog.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

TmvMemoryTable Table(std::initializer_list<const char16_t*> columns,
                     std::initializer_list<std::vector<TmvVariant>> rows) {
  TmvMemoryTable table;
  for (const char16_t* column : columns) table.AddColumn(column, ftWideString, 128);
  for (const auto& row : rows) table.AddRow(row);
  return table;
}

class InformationSchemaCatalogTest : public mvtest::CatalogFixture<TmvSQL92SyntaxProvider> {
 protected:
  void SetUp() override {
    CatalogFixture::SetUp();
    server_.AddResult(kInformationSchemaDefaultDatabaseQuery, Table({u"CATALOG_NAME"}, {{u"shop"}}));
  }
};

}  // namespace

TEST_F(InformationSchemaCatalogTest, OffLeavesEverythingToTheBase) {
  EXPECT_THROW(provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr),
               EmvQueryBuilderError);
  EXPECT_TRUE(Sent().empty());
}

TEST_F(InformationSchemaCatalogTest, ObjectsRelationsAndFields) {
  provider_.SetUseInformationSchema(true);
  server_.AddResult(InformationSchemaTablesQuery(u"", u""),
                    Table({u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE"},
                          {{u"public", u"orders", u"BASE TABLE"}, {u"public", u"customers", u"BASE TABLE"},
                           {u"pg_catalog", u"pg_class", u"SYSTEM TABLE"}}));
  server_.AddResult(InformationSchemaViewsQuery(u"", u""),
                    Table({u"TABLE_SCHEMA", u"TABLE_NAME"}, {{u"public", u"big_orders"}}));
  server_.AddResult(InformationSchemaRelationsQuery(u""),
                    Table({u"PK_TABLE_DATABASE", u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", u"PK_FIELD_NAME",
                           u"FK_TABLE_DATABASE", u"FK_SCHEMA_NAME", u"FK_TABLE_NAME", u"FK_FIELD_NAME", u"ORDINAL"},
                          {{u"shop", u"public", u"customers", u"id", u"shop", u"public", u"orders", u"customer_id",
                            u"1"}}));
  server_.AddResult(InformationSchemaFieldsQuery(u"shop", u"public", u"orders"),
                    Table({u"COLUMN_NAME", u"DATA_TYPE", u"CHARACTER_MAXIMUM_LENGTH", u"NUMERIC_PRECISION",
                           u"IS_NULLABLE", u"COLUMN_DEFAULT", u"PRIMARY_KEY"},
                          {{u"id", u"integer", TmvVariant::Null(), u"32", u"NO", TmvVariant::Null(), u"id"},
                           {u"note", u"character varying", u"200", TmvVariant::Null(), u"YES", u"'none'",
                            TmvVariant::Null()}}));

  provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
  provider_.LoadMetadataRelations(&context_, nullptr, container_.get(), nullptr, nullptr);
  ASSERT_EQ(container_->Count(), 4);
  struct Expected {
    const char16_t* name;
    const char* kind;
    bool system;
  };
  const Expected expected[] = {{u"public.orders", "TmvMetadataTable", false},
                               {u"public.customers", "TmvMetadataTable", false},
                               {u"pg_catalog.pg_class", "TmvMetadataTable", true},
                               {u"public.big_orders", "TmvMetadataView", false}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(container_->Items(i)->SchemedNameStrNotQuoted(), expected[i].name);
    EXPECT_EQ(container_->Items(i)->ClassType().ClassName(), expected[i].kind);
    EXPECT_EQ(container_->Items(i)->System(), expected[i].system);
  }
  ASSERT_EQ(container_->GetRelations().size(), 1u);
  EXPECT_EQ(container_->GetRelations()[0]->ChildName()->Token, u"orders");

  // Objects take the connected database as theirs, and the fields query names it.
  TmvMetadataObject* orders = container_->Items(0);
  provider_.LoadFieldsForObjectFromServer(&context_, nullptr, orders);
  ASSERT_EQ(orders->GetFields()->Count(), 2);
  const TmvMetadataField* id = orders->GetFields()->Items(0);
  const TmvMetadataField* note = orders->GetFields()->Items(1);
  EXPECT_EQ(id->NameStrNotQuoted(), u"id");
  EXPECT_TRUE(id->PrimaryKey());
  EXPECT_FALSE(id->Nullable());
  EXPECT_FALSE(note->PrimaryKey());
  EXPECT_TRUE(note->Nullable());
  EXPECT_EQ(note->FieldTypeName(), u"character varying");
  EXPECT_EQ(provider_.GetDefaultDatabaseName(&context_, nullptr)->GetQualifiedNameWithoutQuotes(), u"shop");
}

TEST_F(InformationSchemaCatalogTest, AnotherDatabaseAndHostileNames) {
  // SQL-2003 reads the same views; a database other than the connected one
  // prefixes them, and names reach the statement as literals only.
  TmvSQL2003SyntaxProvider sql2003;
  sql2003.SetUseInformationSchema(true);
  context_.SetSyntaxProvider(&sql2003);
  auto archive = context_.ParseQualifiedName(u"\"arch'ive\"");
  const WideString prefix = archive->GetQualifiedNameForServer() + u".";
  server_.AddResult(InformationSchemaTablesQuery(prefix, u"arch'ive"),
                    Table({u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE"}, {{u"s", u"t", u"TABLE"}}));
  server_.AddResult(InformationSchemaViewsQuery(prefix, u"arch'ive"), Table({u"TABLE_SCHEMA", u"TABLE_NAME"}, {}));
  sql2003.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, archive.get());
  EXPECT_EQ(container_->Count(), 1);
  const std::vector<WideString> sent = Sent();
  ASSERT_EQ(sent.size(), 3u);
  EXPECT_NE(sent[1].find(u"from \"arch'ive\".information_schema.tables where TABLE_CATALOG='arch''ive'"),
            WideString::npos);
  EXPECT_NE(InformationSchemaFieldsQuery(u"", u"x' or '1'='1", u"t").find(u"c.TABLE_SCHEMA='x'' or ''1''=''1'"),
            WideString::npos);
}
