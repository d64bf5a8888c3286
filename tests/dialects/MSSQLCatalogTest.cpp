// The SQL Server provider reading a catalog through the metadata provider.
// No server of that family runs here: a scripted connection answers each
// catalog query the provider is expected to send with rows, and fails on
// any other, so each test shows which queries went out and where their rows
// landed.
#include <gtest/gtest.h>

#include "ScriptedServer.h"
#include "dialects/EngineInit.h"
#include "dialects/mssql/MSSQLCatalog.h"
#include "dialects/mssql/MSSQLCatalogQueries.h"
#include "dialects/mssql/MSSQLSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataRelation.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "tree/QualifiedNames.h"
#include "tree/Tokens.h"

using namespace mv;

namespace {

TmvMemoryTable Column(const char16_t* name, std::initializer_list<TmvVariant> values) {
  TmvMemoryTable table;
  table.AddColumn(name, ftWideString, 128);
  for (const TmvVariant& value : values) table.AddRow({value});
  return table;
}

class MSSQLCatalogTest : public mvtest::CatalogFixture<TmvMSSQLSyntaxProvider> {
 protected:
  void AnswerVersion(int major) {
    server_.AddResult(kMSSQLVersionQuery, TmvMemoryTable().AddColumn(u"VersionMajor", ftInteger).AddRow({major}));
  }
  std::string Objects() const {
    std::string text;
    for (int i = 0; i < container_->Count(); ++i) {
      const TmvMetadataObject* object = container_->Items(i);
      text += (i ? " " : "") + UTF8Encode(object->SchemedNameStrNotQuoted()) + ":" + std::string(object->ClassType().ClassName()) +
              (object->System() ? ":system" : "");
    }
    return text;
  }
};

}  // namespace

TEST_F(MSSQLCatalogTest, ProbesAndVersion) {
  server_.AddResult(kMSSQLProbeQuery, Column(u"attribute_value", {u"microsoft sql server"}));
  EXPECT_EQ(provider_.IsSupportConnectedServer(&metadata_, nullptr), scsSupport);
  TmvMSSQLCESyntaxProvider compact;
  // No compact probe scripted: the compact edition is not there.
  EXPECT_EQ(compact.IsSupportConnectedServer(&metadata_, nullptr), scsNotSupport);

  struct Case {
    int major;
    TmvQBServerVersionMSSQL version;
  };
  for (const Case& c : {Case{8, svMSSQL2000}, Case{10, svMSSQL2008}, Case{15, svMSSQL2014}, Case{5, svMSSQL7}}) {
    TmvMemoryConnection server;
    server.AddResult(kMSSQLVersionQuery, TmvMemoryTable().AddColumn(u"VersionMajor", ftInteger).AddRow({c.major}));
    server.Open();
    TmvConnectionMetadataProvider metadata;
    metadata.SetConnection(&server);
    TmvMSSQLSyntaxProvider provider;
    provider.DoDetectServerVersion(&metadata, nullptr);
    EXPECT_EQ(provider.GetServerVersion(), c.version) << c.major;
    EXPECT_FALSE(provider.GetDetectServerVersion());
  }
}

TEST_F(MSSQLCatalogTest, DatabasesAndSchemasByVersion) {
  AnswerVersion(8);
  server_.AddResult(MSSQLDatabasesQuery(8), Column(u"DATABASE_NAME", {u"master", u"sales"}));
  server_.AddResult(kMSSQLDefaultDatabaseQuery, Column(u"CATALOG_NAME", {u"master"}));
  server_.AddResult(MSSQLSchemasQuery(8, u"sales"), Column(u"NAME", {u"dbo", u"guest"}));
  std::vector<WideString> databases, schemas;
  provider_.GetDatabasesList(&context_, nullptr, databases);
  auto sales = context_.ParseQualifiedName(u"sales");
  provider_.GetSchemasList(&context_, nullptr, schemas, sales.get());
  EXPECT_EQ(databases, (std::vector<WideString>{u"master", u"sales"}));
  EXPECT_EQ(schemas, (std::vector<WideString>{u"dbo", u"guest"}));
  EXPECT_EQ(provider_.GetServerVersion(), svMSSQL2000);
  // The version once, then each list; the other database gets its prefix.
  EXPECT_EQ(Sent(), (std::vector<WideString>{kMSSQLVersionQuery, MSSQLDatabasesQuery(8), kMSSQLDefaultDatabaseQuery,
                                             MSSQLSchemasQuery(8, u"sales")}));
}

TEST_F(MSSQLCatalogTest, DefaultDatabaseAndSchemas) {
  provider_.SetServerVersion(svMSSQL2008);
  server_.AddResult(kMSSQLDefaultDatabaseQuery, Column(u"CATALOG_NAME", {u"sales"}));
  server_.AddResult(kMSSQLDefaultSchemaQuery, Column(u"user_name", {u"alice"}));
  EXPECT_EQ(provider_.GetDefaultDatabaseName(&context_, nullptr)->GetQualifiedNameWithoutQuotes(), u"sales");
  auto names = TastCreate<TSQLIdentifiersCollection>(&context_);
  provider_.GetDefaultSchemaNames(&context_, nullptr, *names);
  ASSERT_EQ(names->GetCount(), 2);
  EXPECT_EQ(names->Identifier(0)->Token, u"alice");
  EXPECT_EQ(names->Identifier(1)->Token, u"dbo");
}

TEST_F(MSSQLCatalogTest, ObjectsAndRelationsFromTheCatalogViews) {
  provider_.SetServerVersion(svMSSQL2008);
  TmvMemoryTable objects;
  for (const char16_t* column : {u"TABLE_OWNER", u"TABLE_NAME", u"TABLE_TYPE", u"DESCRIPTION",
                                 u"REFERENCED_OBJECT_NAME"})
    objects.AddColumn(column, ftWideString, 128);
  objects.AddColumn(u"SYSTEM", ftBoolean);
  objects.AddRow({u"dbo", u"Orders", u"U", u"All orders", TmvVariant::Null(), false})
      .AddRow({u"dbo", u"Customers", u"U", TmvVariant::Null(), TmvVariant::Null(), false})
      .AddRow({u"sys", u"objects", u"V", TmvVariant::Null(), TmvVariant::Null(), true})
      .AddRow({u"dbo", u"Top5", u"IF", TmvVariant::Null(), TmvVariant::Null(), false});
  server_.AddResult(MSSQLObjectsQuery(10, u""), objects);
  TmvMemoryTable relations;
  for (const char16_t* column : {u"PK_TABLE_DATABASE", u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", u"PK_FIELD_NAME",
                                 u"FK_TABLE_DATABASE", u"FK_SCHEMA_NAME", u"FK_TABLE_NAME", u"FK_FIELD_NAME"})
    relations.AddColumn(column, ftWideString, 128);
  relations.AddColumn(u"ORDINAL", ftInteger);
  relations.AddRow({u"", u"dbo", u"Customers", u"Id", u"", u"dbo", u"Orders", u"CustomerId", 1});
  server_.AddResult(MSSQLRelationsQuery(10, u""), relations);

  provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
  provider_.LoadMetadataRelations(&context_, nullptr, container_.get(), nullptr, nullptr);
  EXPECT_EQ(Objects(),
            "dbo.Orders:TmvMetadataTable dbo.Customers:TmvMetadataTable sys.objects:TmvMetadataView:system "
            "dbo.Top5:TmvMetadataProcedure");
  EXPECT_EQ(container_->Items(0)->ShortDescription(), u"All orders");
  ASSERT_EQ(container_->GetRelations().size(), 1u);
  EXPECT_EQ(container_->GetRelations()[0]->ChildName()->Token, u"Orders");
  EXPECT_EQ(Sent(), (std::vector<WideString>{MSSQLObjectsQuery(10, u""), MSSQLRelationsQuery(10, u"")}));
}

TEST_F(MSSQLCatalogTest, ObjectsFallBackStepByStep) {
  // 2000: sp_tables is refused with exec and without, the standard views answer.
  provider_.SetServerVersion(svMSSQL2000);
  server_.AddError(MSSQLObjectsQuery(8, u""), u"Could not find stored procedure");
  server_.AddError(u"dbo.sp_tables", u"Incorrect syntax");
  TmvMemoryTable tables;
  for (const char16_t* column : {u"TABLE_OWNER", u"TABLE_NAME", u"TABLE_TYPE"}) tables.AddColumn(column, ftWideString);
  tables.AddRow({u"dbo", u"Orders", u"BASE TABLE"}).AddRow({u"INFORMATION_SCHEMA", u"TABLES", u"VIEW"});
  server_.AddResult(u"as TABLE_TYPE from INFORMATION_SCHEMA.TABLES", tables, TmvScriptMatch::smContains);
  provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
  EXPECT_EQ(Objects(), "dbo.Orders:TmvMetadataTable INFORMATION_SCHEMA.TABLES:TmvMetadataView:system");
  // Refused statements leave no record: only the one that answered.
  ASSERT_EQ(Sent().size(), 1u);
  EXPECT_NE(Sent()[0].find(u"from INFORMATION_SCHEMA.TABLES"), WideString::npos);
}

TEST_F(MSSQLCatalogTest, SpTablesThenTableFunctionsAndSynonyms) {
  // The first attempt is refused (not scripted), sp_tables without exec
  // answers; the table-valued functions follow, and from 2005 on the
  // synonyms where sys.all_objects opens.
  struct Case {
    int major;
    TmvQBServerVersionMSSQL version;
    WideString database;
    bool catalogViews;
    std::string objects;
  };
  const std::string tables = "dbo.Orders:TmvMetadataTable dbo.Top5:TmvMetadataProcedure "
                             "sys.fn_helpcollations:TmvMetadataProcedure:system";
  const Case cases[] = {
      {10, svMSSQL2008, u"", true, tables + " dbo.OrdersAlias:TmvMetadataSynonym"},
      {10, svMSSQL2008, u"", false, tables},
      {8, svMSSQL2000, u"", true, tables},
      {12, svMSSQL2014, u"x]; drop table t; --", true, tables + " dbo.OrdersAlias:TmvMetadataSynonym"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.major);
    TmvMemoryConnection server;
    metadata_.SetConnection(&server);
    server.Open();
    container_->Clear();
    provider_.SetServerVersion(c.version);
    std::vector<WideString> sent;
    TmvOwned<TSQLQualifiedName> database;
    if (!c.database.empty()) {
      database = TastCreate<TSQLQualifiedName>(&context_);
      database->AddName(c.database, false);
      server.AddResult(kMSSQLDefaultDatabaseQuery, Column(u"CATALOG_NAME", {u"master"}));
      sent.push_back(kMSSQLDefaultDatabaseQuery);
    }
    TmvMemoryTable spTables;
    for (const char16_t* column : {u"TABLE_OWNER", u"TABLE_NAME", u"TABLE_TYPE"}) spTables.AddColumn(column, ftWideString);
    spTables.AddRow({u"dbo", u"Orders", u"TABLE"});
    sent.push_back(MSSQLDatabasePrefix(c.database) + u"dbo.sp_tables");
    server.AddResult(sent.back(), spTables);
    TmvMemoryTable functions;
    for (const char16_t* column : {u"PROCEDURE_SCHEMA", u"PROCEDURE_NAME", u"PROCEDURE_TYPE"})
      functions.AddColumn(column, ftWideString);
    functions.AddRow({u"dbo", u"Top5", u"PROCEDURE"}).AddRow({u"sys", u"fn_helpcollations", u"SYSTEM PROCEDURE"});
    sent.push_back(MSSQLTableFunctionsQuery(c.major, c.database));
    server.AddResult(sent.back(), functions);
    if (c.catalogViews) {
      server.AddResult(MSSQLAllObjectsProbeQuery(c.database), Column(u"object_id", {}));
      TmvMemoryTable synonyms;
      for (const char16_t* column : {u"SYNONYM_SCHEMA", u"SYNONYM_NAME", u"SYNONYM_TYPE", u"REFERENCED_OBJECT_NAME"})
        synonyms.AddColumn(column, ftWideString);
      synonyms.AddRow({u"dbo", u"OrdersAlias", u"SYNONYM", u"dbo.Orders"});
      server.AddResult(MSSQLSynonymsQuery(c.database), synonyms);
      if (c.major >= 9) {
        sent.push_back(MSSQLAllObjectsProbeQuery(c.database));
        sent.push_back(MSSQLSynonymsQuery(c.database));
      }
    }

    provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, database.get());
    EXPECT_EQ(Objects(), c.objects);
    std::vector<WideString> received;
    for (const auto& statement : server.Received()) received.push_back(statement.Sql);
    EXPECT_EQ(received, sent);
    ASSERT_GT(container_->Count(), 0);
    const auto* synonym = dynamic_cast<const TmvMetadataSynonym*>(container_->Items(container_->Count() - 1));
    if (synonym) {
      ASSERT_NE(synonym->ReferencedName(), nullptr);
      EXPECT_EQ(synonym->ReferencedName()->Token, u"Orders");
    }
  }
  metadata_.SetConnection(&server_);
}

TEST_F(MSSQLCatalogTest, CompactEditionHasItsOwnLoaders) {
  TmvMSSQLCESyntaxProvider compact;
  Use(compact);
  server_.AddResult(kMSSQLCompactProbeQuery, TmvMemoryTable().AddColumn(u"TABLE_NAME", ftWideString));
  EXPECT_EQ(compact.IsSupportConnectedServer(&metadata_, nullptr), scsSupport);
  TmvMemoryTable tables;
  tables.AddColumn(u"TABLE_NAME", ftWideString).AddColumn(u"TABLE_TYPE", ftWideString);
  tables.AddRow({u"Orders", u"TABLE"}).AddRow({u"Customers", u"TABLE"});
  server_.AddResult(kMSSQLCompactObjectsQuery, tables);
  TmvMemoryTable keys;
  for (const char16_t* column : {u"PK_TABLE_NAME", u"PK_FIELD_NAME", u"FK_TABLE_NAME", u"FK_FIELD_NAME"})
    keys.AddColumn(column, ftWideString);
  keys.AddColumn(u"ORDINAL", ftInteger).AddRow({u"Customers", u"Id", u"Orders", u"CustomerId", 1});
  server_.AddResult(kMSSQLCompactRelationsQuery, keys);
  compact.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
  compact.LoadMetadataRelations(&context_, nullptr, container_.get(), nullptr, nullptr);
  EXPECT_EQ(Objects(), "Orders:TmvMetadataTable Customers:TmvMetadataTable");
  EXPECT_EQ(container_->GetRelations().size(), 1u);
  EXPECT_EQ(Sent(), (std::vector<WideString>{kMSSQLCompactProbeQuery, kMSSQLCompactObjectsQuery,
                                             kMSSQLCompactRelationsQuery}));
}

TEST_F(MSSQLCatalogTest, AggregatesAndFieldsDetectTheVersionFirst) {
  AnswerVersion(10);
  provider_.LoadMetadataCustomAggregateNames(&context_, nullptr, container_.get(), nullptr);
  EXPECT_EQ(provider_.GetServerVersion(), svMSSQL2008);
  ASSERT_FALSE(Sent().empty());
  EXPECT_EQ(Sent().front(), kMSSQLVersionQuery);
}
