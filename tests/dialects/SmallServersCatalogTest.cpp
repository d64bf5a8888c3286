// The catalog loads of Netezza, Mimer SQL and Advantage through the metadata
// provider. No such server runs here: a scripted connection answers the
// catalog statements with rows and refuses any other, among them a table
// whose name is SQL text. A refused load falls back on the metadata
// provider, which raises for objects.
#include <gtest/gtest.h>

#include "CatalogLines.h"
#include "ScriptedServer.h"
#include "dialects/advantage/AdvantageCatalogQueries.h"
#include "dialects/advantage/AdvantageSyntaxProvider.h"
#include "dialects/mimersql/MimerSQLCatalogQueries.h"
#include "dialects/mimersql/MimerSQLSyntaxProvider.h"
#include "dialects/netezza/NetezzaCatalogQueries.h"
#include "dialects/netezza/NetezzaSyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "metadata/fetchers/InformationSchemaCatalog.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"
#include "tree/Tokens.h"

using namespace mv;
using mvtest::TextColumn;
using mvtest::TextTable;

namespace {

const WideString kHostile = u"x'; drop table t; --\"";
const TmvVariant kNull = TmvVariant::Null();

// "type(size)" or "type(size,scale)", then null and pk.
std::string Describe(const TmvMetadataField& field) {
  return UTF8Encode(field.FieldTypeName()) + "(" + std::to_string(field.Size()) +
         (field.Scale() > 0 ? "," + std::to_string(field.Scale()) : "") + ")" + mvtest::NullAndKey(field);
}

// Each object as name:kind[:system], then the catalog lines of all.
std::vector<std::string> Loaded(const TmvMetadataContainer& container) {
  std::vector<std::string> lines;
  for (int i = 0; i < container.Count(); ++i) {
    const TmvMetadataObject* object = container.Items(i);
    lines.push_back(UTF8Encode(object->SchemedNameStrNotQuoted()) + ":" + std::string(object->ClassType().ClassName()) +
                    (object->System() ? ":system" : ""));
  }
  for (const std::string& line : mvtest::CatalogLines(container, [](const TmvMetadataObject&) { return true; }, Describe))
    lines.push_back(line);
  return lines;
}

template <class Provider>
class SmallServerCatalogTest : public mvtest::CatalogFixture<Provider> {
 protected:
  using Base = mvtest::CatalogFixture<Provider>;
  // Loads objects and keys, then the fields of every table.
  std::vector<std::string> LoadAll() {
    this->provider_.LoadMetadataObjects(&this->context_, nullptr, this->container_.get(), nullptr, nullptr);
    this->provider_.LoadMetadataRelations(&this->context_, nullptr, this->container_.get(), nullptr, nullptr);
    for (int i = 0; i < this->container_->Count(); ++i)
      if (this->container_->Items(i)->ClassType().ClassName() == std::string("TmvMetadataTable"))
        this->provider_.LoadFieldsForObjectFromServer(&this->context_, nullptr, this->container_->Items(i));
    return Loaded(*this->container_);
  }
  // A server that refuses everything: the probe says no, the objects' load
  // falls back on the metadata provider, fields stay empty.
  void ExpectRefusals() {
    mvtest::ScriptedServer refusing;
    this->context_.SetMetadataProvider(&refusing.metadata);
    EXPECT_EQ(this->provider_.IsSupportConnectedServer(&refusing.metadata, nullptr), scsNotSupport);
    EXPECT_THROW(this->provider_.LoadMetadataObjects(&this->context_, nullptr, this->container_.get(), nullptr, nullptr),
                 EmvQueryBuilderError);
    TmvMetadataObject* table = this->container_->AddTable(WideStringView(u"T"));
    this->provider_.LoadFieldsForObjectFromServer(&this->context_, nullptr, table);
    EXPECT_EQ(table->GetFields()->Count(), 0);
    EXPECT_EQ(Provider().IsSupportConnectedServer(nullptr, nullptr), scsDontKnow);
    this->context_.SetMetadataProvider(&this->metadata_);
  }
  TmvOwned<TSQLQualifiedName> Database(const WideString& name) {
    auto database = TastCreate<TSQLQualifiedName>(&this->context_);
    database->AddName(name, false);
    return database;
  }
};

using NetezzaCatalogTest = SmallServerCatalogTest<TmvNetezzaSyntaxProvider>;
using MimerSQLCatalogTest = SmallServerCatalogTest<TmvMimerSQLSyntaxProvider>;
using AdvantageCatalogTest = SmallServerCatalogTest<TmvAdvantageSyntaxProvider>;

}  // namespace

TEST_F(NetezzaCatalogTest, ObjectsKeysFieldsSchemasAndRefusal) {
  server_.AddResult(kNetezzaProbeQuery, TextTable({u"VERSION", u"T"}, {{u"Release 7", u"1"}}));
  server_.AddResult(kNetezzaDefaultDatabaseQuery, TextColumn(u"CAST", {u"SALES  "}));
  server_.AddResult(kNetezzaDefaultSchemaQuery, TextColumn(u"CAST", {u"ADMIN"}));
  server_.AddResult(u"select * from _v_odbc_tables3 where table_cat=current_catalog",
                    TextTable({u"TABLE_SCHEM", u"TABLE_NAME", u"TABLE_TYPE", u"DESCRIPTION"},
                              {{u"ADMIN", u"ORDERS", u"TABLE", u"today's orders"},
                               {u"ADMIN", u"CUSTOMERS", u"TABLE", kNull},
                               {u"ADMIN", kHostile, u"TABLE", kNull},
                               {u"ADMIN", u"BIG", u"VIEW", kNull},
                               {u"DEFINITION_SCHEMA", u"_T_OBJECT", u"SYSTEM TABLE", kNull},
                               {u"DEFINITION_SCHEMA", u"_V_SESSION", u"MANAGEMENT VIEW", kNull},
                               {u"ADMIN", u"SEQ1", u"SEQUENCE", kNull}}));
  server_.AddResult(u"select * from _v_odbc_foreignkeys3 where fktable_cat=current_catalog",
                    TextTable({u"PKTABLE_CAT", u"PKTABLE_SCHEM", u"PKTABLE_NAME", u"PKCOLUMN_NAME", u"FKTABLE_CAT",
                               u"FKTABLE_SCHEM", u"FKTABLE_NAME", u"FKCOLUMN_NAME", u"key_seq"},
                              {{u"SALES", u"ADMIN", u"CUSTOMERS", u"ID", u"SALES", u"ADMIN", u"ORDERS", u"CUSTOMER",
                                u"1"}}));
  const auto columns = [](std::initializer_list<std::vector<TmvVariant>> rows) {
    return TextTable({u"COLUMN_NAME", u"TYPE_NAME", u"COLUMN_SIZE", u"NUM_PREC_RADIX", u"DECIMAL_DIGITS",
                      u"NULLABLE", u"REMARKS"},
                     rows);
  };
  server_.AddResult(NetezzaFieldsQuery(u"SALES", u"ADMIN", u"ORDERS"),
                    columns({{u"ID", u"INTEGER", u"10", u"10", u"0", u"0", kNull},
                             {u"AMOUNT", u"NUMERIC", u"12", u"10", u"2", u"1", u"gross"},
                             {u"CUSTOMER", u"INTEGER", u"10", u"10", u"0", u"1", kNull}}));
  server_.AddResult(NetezzaPrimaryKeysQuery(u"SALES", u"ADMIN", u"ORDERS"), TextColumn(u"COLUMN_NAME", {u"ID"}));
  // The hostile name stays inside its quotes; its key statement is refused.
  server_.AddResult(u"select * from \"SALES\".._v_odbc_columns3 where table_cat='SALES' and table_schem='ADMIN' and "
                    u"table_name='x''; drop table t; --\"'",
                    columns({{u"Y", u"VARCHAR", u"5", kNull, kNull, u"1", kNull}}));
  container_->SetDefaultDatabaseNameStr(u"SALES");

  const std::string hostile = UTF8Encode(kHostile);
  EXPECT_EQ(LoadAll(), (std::vector<std::string>{
                           "ADMIN.ORDERS:TmvMetadataTable", "ADMIN.CUSTOMERS:TmvMetadataTable",
                           "ADMIN." + hostile + ":TmvMetadataTable", "ADMIN.BIG:TmvMetadataView",
                           "DEFINITION_SCHEMA._T_OBJECT:TmvMetadataTable:system",
                           "DEFINITION_SCHEMA._V_SESSION:TmvMetadataView:system", "BIG", "CUSTOMERS",
                           "CUSTOMERS -> ORDERS [ID] [CUSTOMER]", "ORDERS", "ORDERS.AMOUNT NUMERIC(12,2) null",
                           "ORDERS.CUSTOMER INTEGER(10) null", "ORDERS.ID INTEGER(10) pk", "_T_OBJECT", "_V_SESSION",
                           hostile, hostile + ".Y VARCHAR(5) null"}));
  EXPECT_EQ(container_->Items(0)->ShortDescription(), u"today's orders");
  EXPECT_EQ(provider_.IsSupportConnectedServer(&metadata_, nullptr), scsSupport);
  auto database = provider_.GetDefaultDatabaseName(&context_, nullptr);
  EXPECT_EQ(database ? database->GetQualifiedNameWithoutQuotes() : WideString(), u"SALES");
  auto schemas = TastCreate<TSQLIdentifiersCollection>(&context_);
  provider_.GetDefaultSchemaNames(&context_, nullptr, *schemas);
  ASSERT_EQ(schemas->GetCount(), 1);
  EXPECT_EQ(schemas->Identifier(0)->Token, u"ADMIN");

  // The schemas: the connected database's without a prefix; another's
  // quoted, and its default schema where the server has no _v_schema.
  server_.AddResult(u"select schema as schema_name from _v_schema where database=current_catalog",
                    TextColumn(u"SCHEMA_NAME", {u"ADMIN", u"DEFINITION_SCHEMA"}));
  server_.AddResult(u"select defschema as schema_name from _v_database where database='x''; drop table t; --\"'",
                    TextColumn(u"SCHEMA_NAME", {u"OTHER"}));
  const std::pair<WideString, std::vector<WideString>> lists[] = {
      {u"", {u"ADMIN", u"DEFINITION_SCHEMA"}}, {u"SALES", {u"ADMIN", u"DEFINITION_SCHEMA"}}, {kHostile, {u"OTHER"}}};
  for (const auto& [name, expected] : lists) {
    std::vector<WideString> list;
    provider_.GetSchemasList(&context_, nullptr, list, name.empty() ? nullptr : Database(name).get());
    EXPECT_EQ(list, expected) << UTF8Encode(name);
  }
  // The statement a server without _v_schema refuses.
  server_.AddResult(u"select schema as schema_name from \"x'; drop table t; --\"\"\".._v_schema where "
                    u"database='x''; drop table t; --\"'",
                    TextColumn(u"SCHEMA_NAME", {u"S1", u"S2"}));
  std::vector<WideString> list;
  provider_.GetSchemasList(&context_, nullptr, list, Database(kHostile).get());
  EXPECT_EQ(list, (std::vector<WideString>{u"S1", u"S2"}));
  ExpectRefusals();
}

TEST_F(MimerSQLCatalogTest, ObjectsSynonymsKeysFieldsAndRefusal) {
  server_.AddResult(kMimerSQLProbeQuery, TextColumn(u"C", {u"1"}));
  server_.AddResult(kMimerSQLObjectsQuery, TextTable({u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE"},
                                                     {{u"SHOP", u"ORDERS", u"BASE TABLE"},
                                                      {u"SHOP", u"CUSTOMERS", u"BASE TABLE"},
                                                      {u"SHOP", kHostile, u"BASE TABLE"},
                                                      {u"SHOP", u"BIG", u"VIEW"},
                                                      {u"SYSTEM", u"MANAGERS", u"BASE TABLE"},
                                                      {u"INFORMATION_SCHEMA", u"TABLES", u"VIEW"},
                                                      {u"SHOP", u"X", u"GLOBAL TEMPORARY"}}));
  server_.AddResult(kMimerSQLSynonymsQuery,
                    TextTable({u"SYNONYM_SCHEMA", u"SYNONYM_NAME"}, {{u"SHOP", u"ORD"}, {u"ODBC", u"TYPES"}}));
  server_.AddResult(InformationSchemaRelationsQuery(u""),
                    TextTable({u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", u"PK_FIELD_NAME", u"FK_SCHEMA_NAME",
                               u"FK_TABLE_NAME", u"FK_FIELD_NAME", u"ORDINAL"},
                              {{u"SHOP", u"CUSTOMERS", u"ID", u"SHOP", u"ORDERS", u"CUSTOMER", u"1"}}));
  TmvMemoryTable fields = TextTable({u"COLUMN", u"DATATYPE", u"NULLABLE"}, {});
  fields.AddColumn(u"LENGTH", ftInteger).AddColumn(u"SCALE", ftInteger).AddColumn(u"PRIMARY_KEY", ftInteger);
  fields.AddRow({u"ID", u"INTEGER", u"NO", 10, 0, 1})
      .AddRow({u"AMOUNT", u"DECIMAL", u"YES", 12, 2, kNull})
      .AddRow({u"CUSTOMER", u"INTEGER", u"YES", 10, 0, kNull});
  server_.AddResult(MimerSQLFieldsQuery(u"SHOP", u"ORDERS"), fields);
  TmvMemoryTable odd = TextTable({u"COLUMN", u"DATATYPE", u"NULLABLE"}, {});
  odd.AddColumn(u"LENGTH", ftInteger).AddColumn(u"SCALE", ftInteger).AddColumn(u"PRIMARY_KEY", ftInteger);
  odd.AddRow({u"Y", u"VARCHAR", u"NO", 5, 0, 2});
  server_.AddResult(u"where c.CREATOR = 'SHOP' and c.TABLE_NAME = 'x''; drop table t; --\"' order by c.COLNO", odd,
                    TmvScriptMatch::smContains);

  const std::string hostile = UTF8Encode(kHostile);
  EXPECT_EQ(LoadAll(),
            (std::vector<std::string>{"SHOP.ORDERS:TmvMetadataTable", "SHOP.CUSTOMERS:TmvMetadataTable",
                                      "SHOP." + hostile + ":TmvMetadataTable", "SHOP.BIG:TmvMetadataView",
                                      "SYSTEM.MANAGERS:TmvMetadataTable:system",
                                      "INFORMATION_SCHEMA.TABLES:TmvMetadataView:system",
                                      "SHOP.ORD:TmvMetadataSynonym", "ODBC.TYPES:TmvMetadataSynonym:system", "BIG",
                                      "CUSTOMERS", "CUSTOMERS -> ORDERS [ID] [CUSTOMER]", "MANAGERS", "ORD", "ORDERS",
                                      "ORDERS.AMOUNT DECIMAL(12,2) null", "ORDERS.CUSTOMER INTEGER(10) null",
                                      "ORDERS.ID INTEGER(10) pk", "TABLES", "TYPES", hostile, hostile + ".Y VARCHAR(5) pk"}));
  EXPECT_EQ(provider_.IsSupportConnectedServer(&metadata_, nullptr), scsSupport);
  // No default database, even where the standard views would name one.
  provider_.SetUseInformationSchema(true);
  server_.AddResult(kInformationSchemaDefaultDatabaseQuery, TextColumn(u"CATALOG_NAME", {u"SHOP"}));
  server_.ClearReceived();
  EXPECT_EQ(provider_.GetDefaultDatabaseName(&context_, nullptr), nullptr);
  EXPECT_TRUE(Sent().empty());
  provider_.SetUseInformationSchema(false);

  // Without the synonyms' view the tables and views still load.
  mvtest::ScriptedServer older;
  older.AddResult(kMimerSQLObjectsQuery,
                  TextTable({u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE"}, {{u"SHOP", u"ORDERS", u"BASE TABLE"}}));
  context_.SetMetadataProvider(&older.metadata);
  container_->Clear();
  provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
  EXPECT_EQ(Loaded(*container_), (std::vector<std::string>{"SHOP.ORDERS:TmvMetadataTable", "ORDERS"}));
  context_.SetMetadataProvider(&metadata_);
  ExpectRefusals();
}

TEST_F(AdvantageCatalogTest, ObjectsKeysFieldsDatabasesAndRefusal) {
  server_.AddResult(kAdvantageProbeQuery, TextTable({u"USER", u"APP"}, {{u"adssys", u"1"}}));
  server_.AddResult(kAdvantageDefaultDatabaseQuery, TextColumn(u"EXPR", {u"shop"}));
  server_.AddResult(kAdvantageDatabasesQuery, TextColumn(u"TABLE_CAT", {u"archive", u"shop"}));
  const auto objects = TextTable({u"TABLE_NAME", u"TABLE_TYPE"}, {{u"ORDERS", u"TABLE"},
                                                                   {u"CUSTOMERS", u"TABLE"},
                                                                   {kHostile, u"TABLE"},
                                                                   {u"BIG", u"VIEW"},
                                                                   {u"SYS_X", u"SYSTEM TABLE"}});
  server_.AddResult(u"execute procedure sp_GetTables(Database(),null,null,null)", objects);
  server_.AddResult(u"execute procedure sp_GetForeignKeyColumns(Database(),null,null,null)",
                    TextTable({u"PKTABLE_NAME", u"PKCOLUMN_NAME", u"FKTABLE_NAME", u"FKCOLUMN_NAME", u"KEY_SEQ"},
                              {{u"CUSTOMERS", u"ID", u"ORDERS", u"CUSTOMER", u"1"}}));
  const auto columns = [](std::initializer_list<std::vector<TmvVariant>> rows) {
    return TextTable({u"COLUMN_NAME", u"TYPE_NAME", u"COLUMN_SIZE", u"NUM_PREC_RADIX", u"DECIMAL_DIGITS", u"NULLABLE"},
                     rows);
  };
  server_.AddResult(u"execute procedure sp_GetColumns(Database(),null,'ORDERS',null)",
                    columns({{u"ID", u"Integer", u"4", u"10", u"0", u"0"},
                             {u"AMOUNT", u"Numeric", u"12", u"10", u"2", u"1"},
                             {u"CUSTOMER", u"Integer", u"4", u"10", u"0", u"1"}}));
  server_.AddResult(u"execute procedure sp_GetPrimaryKeys(Database(),null,'ORDERS')",
                    TextColumn(u"COLUMN_NAME", {u"ID"}));
  server_.AddResult(u"execute procedure sp_GetColumns(Database(),null,'x''; drop table t; --\"',null)",
                    columns({{u"Y", u"Char", u"5", kNull, kNull, u"1"}}));
  server_.AddResult(u"execute procedure sp_GetPrimaryKeys(Database(),null,'x''; drop table t; --\"')",
                    TextColumn(u"COLUMN_NAME", {u"Y"}));

  const std::string hostile = UTF8Encode(kHostile);
  EXPECT_EQ(LoadAll(), (std::vector<std::string>{"ORDERS:TmvMetadataTable", "CUSTOMERS:TmvMetadataTable",
                                                 hostile + ":TmvMetadataTable", "BIG:TmvMetadataView", "BIG",
                                                 "CUSTOMERS", "CUSTOMERS -> ORDERS [ID] [CUSTOMER]", "ORDERS",
                                                 "ORDERS.AMOUNT Numeric(12,2) null", "ORDERS.CUSTOMER Integer(4) null",
                                                 "ORDERS.ID Integer(4) pk", hostile, hostile + ".Y Char(5) pk"}));
  EXPECT_EQ(provider_.IsSupportConnectedServer(&metadata_, nullptr), scsSupport);
  std::vector<WideString> databases;
  provider_.GetDatabasesList(&context_, nullptr, databases);
  EXPECT_EQ(databases, (std::vector<WideString>{u"archive", u"shop"}));
  // The connected database is Database(), another one a text.
  server_.AddResult(u"execute procedure sp_GetTables('x''; drop table t; --\"',null,null,null)", objects);
  const std::pair<WideString, int> loads[] = {{u"shop", 4}, {kHostile, 4}, {u"nowhere", -1}};
  for (const auto& [name, count] : loads) {
    container_->Clear();
    if (count < 0) {
      EXPECT_THROW(
          provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, Database(name).get()),
          EmvQueryBuilderError);
      continue;
    }
    provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, Database(name).get());
    EXPECT_EQ(container_->Count(), count) << UTF8Encode(name);
  }
  ExpectRefusals();
}
