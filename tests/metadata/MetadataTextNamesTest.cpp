// Names given as SQL text: lookups, adding, setters that parse, and the
// default names as text.
#include <gtest/gtest.h>

#include "MetadataTestSupport.h"
#include "Thrown.h"
#include "support/Exceptions.h"
#include "tree/FromClause.h"

using namespace mv;
using namespace mv::test;

TEST_F(MetadataTest, TextLookupsParseTheirArguments) {
  TmvMetadataTable* table = container->AddTable(u"db.dbo.\"Order Lines\"");
  EXPECT_EQ(table->NameStrNotQuoted(), u"Order Lines");
  EXPECT_EQ(container->FindTableByFullName(u"db.dbo.\"Order Lines\""), table);
  EXPECT_EQ(container->FindTableByFullName(u"DB.DBO.\"Order Lines\""), table);
  EXPECT_EQ(container->FindTableByFullName(u"db.dbo.\"order lines\""), nullptr);
  EXPECT_EQ(container->FindTableByName(u"\"Order Lines\"", u"dbo", u"db"), table);
  EXPECT_EQ(container->FindTableByName(u"\"Order Lines\"", u"dbo"), nullptr);
  EXPECT_EQ(container->FindObjectByName(u"", u"dbo", u"db"), nullptr);
  table->SetAltName(u"Lines");
  EXPECT_EQ(container->FindTableByAltName(u"LINES", false), table);
  EXPECT_EQ(container->FindTableByAltName(u"lines", true), nullptr);
}

// Text that no quoting makes a name: a closing quote inside.
constexpr const char16_t* kNoName = u"a\"b";

TEST_F(MetadataTest, TextThatIsNoNameFindsNothingAndRaisesNothing) {
  Table({u"t"});
  EXPECT_EQ(container->FindTableByFullName(u""), nullptr);
  EXPECT_EQ(container->FindTableByFullName(kNoName), nullptr);
  EXPECT_EQ(container->FindTableByName(kNoName), nullptr);
  // A plain text that is no SQL name is taken as a quoted name.
  TmvMetadataTable* spaced = container->AddTable(u"a b");
  EXPECT_EQ(spaced->NameStr(), u"\"a b\"");
  EXPECT_EQ(container->FindTableByFullName(u"a b"), spaced);
}

TEST_F(MetadataTest, AddingByTextRaisesForTextThatIsNoName) {
  EXPECT_EQ(mvtest::ThrownMessage([&] { container->AddTable(kNoName); }), u"Invalid object name");
  EXPECT_EQ(container->Count(), 0);
  TmvMetadataView* view = container->AddView(u"sales", u"recent", false, u"db");
  EXPECT_EQ(view->FullNameStr(), u"db.sales.recent");
  TmvMetadataProcedure* procedure = container->AddProcedure(u"dbo.refresh", true);
  EXPECT_TRUE(procedure->System());
  EXPECT_EQ(procedure->SchemaStr(), u"dbo");
  TmvMetadataSynonym* synonym = container->AddSynonym(u"s", u"sales.recent");
  EXPECT_EQ(synonym->GetReferencedObject(), nullptr);  // the view lives in database db
  synonym->SetReferencedFullNameStr(u"db.sales.recent");
  EXPECT_EQ(synonym->GetReferencedObject(), view);
  EXPECT_EQ(mvtest::ThrownMessage([&] { synonym->SetReferencedFullNameStr(kNoName); }), u"Invalid object name");
}

TEST_F(MetadataTest, NameSettersReadSQLText) {
  TmvMetadataTable* table = Table({u"t"});
  table->SetNameStr(u"\"Mixed Case\"");
  EXPECT_EQ(table->NameStrNotQuoted(), u"Mixed Case");
  EXPECT_TRUE(table->Name()->Quoted);
  EXPECT_EQ(container->FindTableByFullName(u"\"Mixed Case\""), table);
  table->SetSchemaStr(u"dbo");
  EXPECT_EQ(table->FullNameStr(), u"dbo.\"Mixed Case\"");

  table->SetDatabaseStr(u"srv.db");
  EXPECT_EQ(table->Database()->GetCount(), 2);
  EXPECT_EQ(mvtest::ThrownMessage([&] { table->SetDatabaseStr(kNoName); }), u"Invalid object name");
  EXPECT_EQ(table->DatabaseStr(), u"srv.db");
  int updates = 0;
  const TmvHandlerId counter = TmvHandlerId::Unique();
  table->GetOnUpdated().AddHandler(counter, [&](TmvObject*) { ++updates; });
  table->SetDatabaseStr(u"srv.db");
  EXPECT_EQ(updates, 0);
  table->SetDatabaseStr(u"");
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(table->Database()->GetCount(), 0);
  table->GetOnUpdated().RemoveHandler(counter);

  table->SetDBLinkStr(u"remote");
  EXPECT_EQ(table->FullNameStr(), u"dbo.\"Mixed Case\"@remote");
}

TEST_F(MetadataTest, ExpressionsMakeVirtualObjectsAndFields) {
  TmvMetadataView* view = View({u"v"});
  view->SetExpression(u"(select 1 as x) q");
  EXPECT_TRUE(view->IsVirtualCalculatedObject());
  EXPECT_NE(TmvCast<TSQLFromQuery>(view->ExpressionAST()), nullptr);
  view->SetExpression(u"");
  EXPECT_FALSE(view->IsVirtualCalculatedObject());
  EXPECT_EQ(view->Expression(), u"(select 1 as x) q");

  TmvMetadataField* field = view->GetFields()->AddField(u"total");
  field->SetExpression(u"price * qty");
  EXPECT_TRUE(field->IsVirtualCalculatedField());
  EXPECT_THROW(field->SetExpression(u"price *"), EmvQueryBuilderError);
  EXPECT_EQ(field->Expression(), u"price * qty");
  EXPECT_TRUE(field->IsVirtualCalculatedField());
}

TEST_F(MetadataTest, FieldNamesFromText) {
  TmvMetadataFieldsList* fields = Table({u"t"})->GetFields();
  TmvMetadataField* spaced = fields->AddField(u"\"Unit Price\"");
  TmvMetadataField* plain = fields->AddField(u"qty");
  EXPECT_EQ(mvtest::ThrownMessage([&] { fields->AddField(kNoName); }), u"Invalid object name");
  EXPECT_EQ(fields->FindFieldByName(u"\"Unit Price\""), 0);
  EXPECT_EQ(fields->FindFieldByName(u"QTY"), 1);
  EXPECT_EQ(fields->FindFieldByName(u"\"qty\""), -1);
  EXPECT_EQ(fields->FindFieldByName(kNoName), -1);
  plain->SetNameStr(u"t.qty");
  EXPECT_EQ(plain->Name()->GetCount(), 2);
  EXPECT_EQ(mvtest::ThrownMessage([&] { spaced->SetNameStr(kNoName); }), u"Invalid object name");
  EXPECT_EQ(spaced->NameStrNotQuoted(), u"Unit Price");

  // Without a syntax provider the upper-case texts are compared.
  context.SetSyntaxProvider(nullptr);
  EXPECT_EQ(fields->FindFieldByName(u"unit price"), 0);
  context.SetSyntaxProvider(&provider);
}

TEST_F(MetadataTest, DefaultNamesAsText) {
  container->SetDefaultDatabaseNameStr(u"D");
  container->SetDefaultSchemaNamesStr(u"dbo;\"a;b\"; sales");
  ASSERT_EQ(container->DefaultSchemaNames()->GetCount(), 3);
  EXPECT_EQ(container->DefaultSchemaNames()->Identifier(1)->Token, u"a;b");
  EXPECT_TRUE(container->DefaultSchemaNames()->Identifier(1)->Quoted);
  EXPECT_EQ(container->DefaultSchemaNamesStr(), u"dbo;\"a;b\";sales");
  TmvMetadataTable* table = container->AddTable(u"D.sales.t");
  EXPECT_EQ(container->FindTableByFullName(u"t"), table);
  EXPECT_EQ(container->FindTableByFullName(u"sales.t"), table);
  EXPECT_THROW(container->SetDefaultDatabaseNameStr(kNoName), Exception);
  EXPECT_EQ(container->DefaultDatabaseNameStr(), u"D");
}

TEST_F(MetadataTest, NameListsAndRelationsFromText) {
  TmvMetadataQualifiedNamesList* aggregates = container->CustomAggregateFunctions();
  aggregates->Add(u"stats.median");
  EXPECT_EQ(aggregates->FindByName(u"STATS.MEDIAN"), 0);
  EXPECT_EQ(aggregates->FindByName(u"median"), -1);
  EXPECT_EQ(mvtest::ThrownMessage([&] { aggregates->Add(kNoName); }), u"Invalid object name");

  TmvMetadataRelation* relation = Table({u"t"})->GetRelations()->Add();
  relation->SetChildDatabaseStr(u"db");
  relation->SetChildName(Id(u"c").get());
  EXPECT_EQ(relation->ChildTableStr(), u"db.c");
  EXPECT_EQ(mvtest::ThrownMessage([&] { relation->SetChildDatabaseStr(kNoName); }), u"Invalid object name");
}
