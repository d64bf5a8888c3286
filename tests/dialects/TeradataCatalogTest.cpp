// The catalog loads of Teradata through the metadata provider. No such
// server runs here: a scripted connection answers the DBC statements with
// rows and refuses any other, among them a table whose name is SQL text.
#include <gtest/gtest.h>

#include <algorithm>

#include "CatalogLines.h"
#include "ScanTokens.h"
#include "ScriptedServer.h"
#include "TeradataScan.h"
#include "dialects/teradata/TeradataCatalogQueries.h"
#include "dialects/teradata/TeradataSyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"

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

class TeradataCatalogTest : public mvtest::CatalogFixture<TmvTeradataSyntaxProvider> {
 protected:
  // Columns as the fields statement answers them (sizes and scales as text).
  static TmvMemoryTable Columns(std::initializer_list<std::vector<TmvVariant>> rows) {
    return TextTable({u"COLUMN_NAME", u"TYPE_NAME", u"COLUMN_SIZE", u"DECIMAL_DIGITS", u"NULLABLE", u"PRIMARY_KEY",
                      u"REMARKS"},
                     rows);
  }
};

}  // namespace

// Objects with the server's own databases as system ones, the constraints
// and the columns of two tables, one of them named with SQL text.
TEST_F(TeradataCatalogTest, ObjectsKeysAndFields) {
  server_.AddResult(kTeradataObjectsQuery,
                    TextTable({u"DatabaseName", u"TableName", u"TableKind", u"CommentString"},
                              {{u"sales  ", u"Customers ", u"T", u"who buys"},
                               {u"sales", u"Orders", u"T", kNull},
                               {u"sales", kHostile, u"T", kNull},
                               {u"sales", u"Order View", u"V", kNull},
                               {u"DBC", u"TVM", u"T", kNull},
                               {u"Sys_Calendar", u"CALENDAR", u"V", kNull}}));
  server_.AddResult(kTeradataRelationsQuery,
                    TextTable({u"ParentDB", u"ParentTable", u"ParentKeyColumn", u"ChildDB", u"ChildTable",
                               u"ChildKeyColumn", u"IndexID"},
                              {{u"sales", u"Customers", u"Id", u"sales", u"Orders", u"CustomerId", u"1"},
                               {u"sales", u"Customers", u"Region", u"sales", u"Orders", u"Region", u"1"},
                               {u"sales", u"Orders", u"Id", u"sales", kHostile, u"y;'z", u"2"}}));
  server_.AddResult(TeradataFieldsQuery(u"sales", u"Orders"),
                    Columns({{u"Id", u"Integer", u"4", u"0", u"N", u"1", kNull},
                             {u"CustomerId", u"Integer", u"4", u"0", u"Y", u"0", kNull},
                             {u"Amount", u"Decimal(10,2)", u"8", u"2", u"Y", u"0", u"total"}}));
  server_.AddResult(TeradataFieldsQuery(u"sales", kHostile), Columns({{u"y;'z", u"VarChar", u"5", u"0", u"Y", u"0", kNull}}));
  provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
  provider_.LoadMetadataRelations(&context_, nullptr, container_.get(), nullptr, nullptr);
  mvtest::ExpectObjects(*container_, {{u"sales.Customers", "TmvMetadataTable", false},
                                      {u"sales.Orders", "TmvMetadataTable", false},
                                      {(u"sales." + kHostile).c_str(), "TmvMetadataTable", false},
                                      {u"sales.Order View", "TmvMetadataView", false},
                                      {u"DBC.TVM", "TmvMetadataTable", true},
                                      {u"Sys_Calendar.CALENDAR", "TmvMetadataView", true}});
  EXPECT_EQ(container_->Items(0)->ShortDescription(), u"who buys");
  for (int i : {1, 2}) provider_.LoadFieldsForObjectFromServer(&context_, nullptr, container_->Items(i));
  const std::string hostile = UTF8Encode(kHostile);
  std::vector<std::string> expected = {"CALENDAR", "Customers", "Customers -> Orders [Id,Region] [CustomerId,Region]",
                                       "Order View", "Orders", "Orders -> " + hostile + " [Id] [y;'z]",
                                       "Orders.Amount Decimal(8,2) null", "Orders.CustomerId Integer(4) null",
                                       "Orders.Id Integer(4) pk", "TVM", hostile, hostile + ".y;'z VarChar(5) null"};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(mvtest::CatalogLines(*container_, [](const TmvMetadataObject&) { return true; }, Describe), expected);
}

// The probe wants the VERSION column; the schemas and the default schema
// come from their statements, and where those are refused the default
// schema stays unknown.
TEST_F(TeradataCatalogTest, ProbeSchemasAndDefaultSchema) {
  struct Probe {
    const char16_t* column;  // of dbc.dbcinfo's answer; null: refused
    TmvSyntaxSupportConectedServer answer;
  };
  for (const Probe& p : {Probe{nullptr, scsNotSupport}, Probe{u"InfoKey", scsNotSupport},
                         Probe{u"VERSION", scsSupport}}) {
    mvtest::ScriptedServer server;
    if (p.column) server.AddResult(kTeradataProbeQuery, TextColumn(p.column, {u"16.20"}));
    EXPECT_EQ(provider_.IsSupportConnectedServer(&server.metadata, nullptr), p.answer);
  }
  auto names = TastCreate<TSQLIdentifiersCollection>(&context_);
  provider_.GetDefaultSchemaNames(&context_, nullptr, *names);
  EXPECT_EQ(names->GetCount(), 0);
  server_.AddResult(kTeradataDefaultSchemaQuery, TextColumn(u"Database", {u"sales   "}));
  server_.AddResult(kTeradataSchemasQuery, TextColumn(u"DATABASE_NAME", {u"DBC  ", u"sales"}));
  provider_.GetDefaultSchemaNames(&context_, nullptr, *names);
  ASSERT_EQ(names->GetCount(), 1);
  EXPECT_EQ(names->Identifier(0)->Token, u"sales");
  std::vector<WideString> schemas;
  provider_.GetSchemasList(&context_, nullptr, schemas, nullptr);
  EXPECT_EQ(schemas, (std::vector<WideString>{u"DBC", u"sales"}));
}

// A name in the fields statement stays one string: the statement scans to
// the same kinds of tokens whatever the name.
TEST_F(TeradataCatalogTest, FieldsStatementQuotesNames) {
  EXPECT_NE(TeradataFieldsQuery(u"", u"t").find(u"c.DatabaseName = database and c.TableName = 't'"), WideString::npos);
  const auto kinds = [](const WideString& text) {
    std::vector<int32_t> result;
    for (const mvtest::ScannedToken& token : mvtest::ScanTokens<TeradataScanner>(text)) result.push_back(token.kind);
    return result;
  };
  const std::vector<int32_t> plain = kinds(TeradataFieldsQuery(u"d", u"t"));
  for (const WideString& name : {kHostile, WideString(u"o'brien' or 1=1 --"), WideString(u"''/*")})
    EXPECT_EQ(kinds(TeradataFieldsQuery(name, name)), plain) << UTF8Encode(name);
}
