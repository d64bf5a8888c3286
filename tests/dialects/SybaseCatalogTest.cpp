// The Sybase provider loading objects, keys and fields through the metadata
// provider. No server of the family runs here: a scripted connection answers
// the catalog statements of ASA or ASE with rows (unscripted statements fail
// like a refused one), among them a table whose name is SQL text.
#include <gtest/gtest.h>

#include <algorithm>

#include "CatalogLines.h"
#include "ScriptedServer.h"
#include "dialects/EngineInit.h"
#include "dialects/sybase/SybaseCatalog.h"
#include "dialects/sybase/SybaseCatalogQueries.h"
#include "dialects/sybase/SybaseSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "tree/QualifiedNames.h"

using namespace mv;

namespace {

const WideString kHostile = u"x]; drop table t; --'";

TmvMemoryTable Table(std::initializer_list<const char16_t*> columns) {
  TmvMemoryTable table;
  for (const char16_t* column : columns) table.AddColumn(column, ftWideString, 128);
  return table;
}

// "type(size)", or "type(precision,scale)" with a precision, then null and pk.
std::string Describe(const TmvMetadataField& field) {
  const std::string size = field.Precision() > 0
                               ? std::to_string(field.Precision()) + "," + std::to_string(field.Scale())
                               : std::to_string(field.Size());
  return UTF8Encode(field.FieldTypeName()) + "(" + size + ")" + mvtest::NullAndKey(field);
}

class SybaseCatalogTest : public mvtest::CatalogFixture<TmvSybaseSyntaxProvider> {};

}  // namespace

// The same catalog through ASA's and ASE's statements, the version detected
// by the probe before the first load.
TEST_F(SybaseCatalogTest, ObjectsKeysAndFieldsOfEitherVersion) {
  TmvMemoryTable objects = Table({u"TABLE_QUALIFIER", u"TABLE_OWNER", u"TABLE_NAME", u"TABLE_TYPE", u"REMARKS"});
  objects.AddRow({u"sales", u"dbo", u"Customers", u"TABLE", TmvVariant::Null()})
      .AddRow({u"sales", u"dbo", u"Orders", u"TABLE", TmvVariant::Null()})
      .AddRow({u"sales", u"dbo", kHostile, u"TABLE", TmvVariant::Null()})
      .AddRow({u"sales", u"dbo", u"Order View", u"VIEW", TmvVariant::Null()})
      .AddRow({u"sales", u"sys", u"SYSTABLE", u"SYSTEM TABLE", TmvVariant::Null()})
      .AddRow({u"sales", u"rs_systabgroup", u"rs_lastcommit", u"TABLE", TmvVariant::Null()});
  struct Case {
    bool asa;
    std::vector<std::string> fields;  // the lines of the fields of Orders and the hostile table
  };
  const std::string hostile = UTF8Encode(kHostile);
  const Case cases[] = {
      {true,
       {"Orders.CustomerId integer(4) null", "Orders.Id integer(4) pk", "Orders.Region varchar(20) null",
        hostile + ".y;'z varchar(5) null"}},
      {false,
       {"Orders.Amount numeric(10,2) null", "Orders.CustomerId int(4) null", "Orders.Id int(4)",
        hostile + ".y;'z varchar(5) null"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.asa ? "ASA" : "ASE");
    TmvMemoryConnection server;
    metadata_.SetConnection(&server);
    server.Open();
    container_->Clear();
    container_->SetDefaultDatabaseNameStr(u"sales");
    provider_.SetDetectServerVersion(true);  // the first load detects, once
    if (c.asa) server.AddResult(kSybaseASAProbeQuery, Table({u"CompanyName"}).AddRow({u"iAnywhere Solutions"}));
    server.AddResult(SybaseObjectsQuery(u""), objects);

    // ASE names the databases of both sides too.
    TmvMemoryTable keys = Table({u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", u"PK_FIELD_NAME", u"FK_SCHEMA_NAME",
                                 u"FK_TABLE_NAME", u"FK_FIELD_NAME"});
    keys.AddColumn(u"FOREIGN_KEY_ID", ftInteger);
    if (!c.asa) keys.AddColumn(u"PK_DATABASE_NAME", ftWideString).AddColumn(u"FK_DATABASE_NAME", ftWideString);
    const auto key = [&](std::vector<TmvVariant> row) {
      if (!c.asa) row.insert(row.end(), {u"sales", u"sales"});
      keys.AddRow(row);
    };
    key({u"dbo", u"Customers", u"Id", u"dbo", u"Orders", u"CustomerId", 1});
    key({u"dbo", u"Customers", u"Region", u"dbo", u"Orders", u"Region", 1});
    key({u"dbo", u"Orders", u"Id", u"dbo", kHostile, u"y;'z", 2});
    server.AddResult(c.asa ? SybaseASARelationsQuery(u"") : SybaseASERelationsQuery(u""), keys);

    if (c.asa) {
      TmvMemoryTable fields = Table({u"cname", u"coltype", u"default_value", u"nulls", u"in_primary_key"});
      fields.AddColumn(u"length", ftInteger);
      fields.AddRow({u"Id", u"integer", TmvVariant::Null(), u"N", u"Y", 4})
          .AddRow({u"CustomerId", u"integer", TmvVariant::Null(), u"Y", u"N", 4})
          .AddRow({u"Region", u"varchar", u"'north'", u"Y", u"N", 20});
      server.AddResult(SybaseASAFieldsQuery(u"dbo", u"Orders"), fields);
      TmvMemoryTable odd = Table({u"cname", u"coltype", u"default_value", u"nulls", u"in_primary_key"});
      odd.AddColumn(u"length", ftInteger).AddRow({u"y;'z", u"varchar", TmvVariant::Null(), u"Y", u"N", 5});
      server.AddResult(SybaseASAFieldsQuery(u"dbo", kHostile), odd);
    } else {
      TmvMemoryTable fields = Table({u"name", u"column_type"});
      for (const char16_t* column : {u"length", u"prec", u"scale", u"nulls"}) fields.AddColumn(column, ftInteger);
      fields.AddRow({u"Id", u"int", 4, TmvVariant::Null(), TmvVariant::Null(), 0})
          .AddRow({u"CustomerId", u"int", 4, TmvVariant::Null(), TmvVariant::Null(), 1})
          .AddRow({u"Amount", u"numeric", 9, 10, 2, 1});
      server.AddResult(SybaseASEFieldsQuery(u"dbo", u"Orders"), fields);
      TmvMemoryTable odd = Table({u"name", u"column_type"});
      for (const char16_t* column : {u"length", u"prec", u"scale", u"nulls"}) odd.AddColumn(column, ftInteger);
      odd.AddRow({u"y;'z", u"varchar", 5, TmvVariant::Null(), TmvVariant::Null(), 1});
      server.AddResult(SybaseASEFieldsQuery(u"dbo", kHostile), odd);
    }

    provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
    provider_.LoadMetadataRelations(&context_, nullptr, container_.get(), nullptr, nullptr);
    EXPECT_EQ(provider_.GetServerVersion(), c.asa ? svSybaseASA : svSybaseASE);
    std::string kinds;
    for (int i = 0; i < container_->Count(); ++i) {
      TmvMetadataObject* object = container_->Items(i);
      kinds += UTF8Encode(object->SchemedNameStrNotQuoted()) + ":" + std::string(object->ClassType().ClassName()) +
               (object->System() ? ":system " : " ");
      if (object->NameStrNotQuoted() == u"Orders" || object->NameStrNotQuoted() == kHostile)
        provider_.LoadFieldsForObjectFromServer(&context_, nullptr, object);
    }
    EXPECT_EQ(kinds, "dbo.Customers:TmvMetadataTable dbo.Orders:TmvMetadataTable dbo." + hostile +
                         ":TmvMetadataTable dbo.Order View:TmvMetadataView sys.SYSTABLE:TmvMetadataTable:system "
                         "rs_systabgroup.rs_lastcommit:TmvMetadataTable:system ");
    std::vector<std::string> expected = {"Customers", "Customers -> Orders [Id,Region] [CustomerId,Region]",
                                         "Order View", "Orders",  "Orders -> " + hostile + " [Id] [y;'z]",
                                         "SYSTABLE",   hostile,   "rs_lastcommit"};
    expected.insert(expected.end(), c.fields.begin(), c.fields.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(mvtest::CatalogLines(*container_, [](const TmvMetadataObject&) { return true; }, Describe), expected);
  }
  metadata_.SetConnection(&server_);
}

// Another database gives the statements its quoted prefix, the connected
// one (in any case) none; a refused statement answers false.
TEST_F(SybaseCatalogTest, DatabasePrefixAndRefusal) {
  server_.AddResult(kSybaseDefaultDatabaseQuery, Table({u"name"}).AddRow({u"sales"}));
  const WideString objects = u"sp_tables";
  server_.AddResult(objects, Table({u"TABLE_OWNER", u"TABLE_NAME", u"TABLE_TYPE"}).AddRow({u"dbo", u"t", u"TABLE"}),
                    TmvScriptMatch::smContains);
  struct Case {
    const char16_t* database;
    WideString sent;
  };
  const Case cases[] = {
      {u"SALES", SybaseObjectsQuery(u"")},
      {u"x].dbo.t; --", SybaseObjectsQuery(u"x].dbo.t; --")},
  };
  for (const Case& c : cases) {
    server_.ClearReceived();
    auto database = TastCreate<TSQLQualifiedName>(&context_);
    database->AddName(c.database, false);
    EXPECT_TRUE(LoadMetadataObjectsSybase(&context_, nullptr, container_.get(), nullptr, database.get()));
    EXPECT_EQ(Sent(), (std::vector<WideString>{kSybaseDefaultDatabaseQuery, c.sent})) << UTF8Encode(c.database);
  }
  for (bool asa : {true, false}) {
    EXPECT_FALSE(LoadMetadataRelationsSybase(&context_, nullptr, asa, container_.get(), nullptr, nullptr));
    EXPECT_FALSE(LoadFieldsForObjectSybase(&context_, nullptr, asa, container_->Items(0)));
  }
}
