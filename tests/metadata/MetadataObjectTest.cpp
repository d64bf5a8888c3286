// The metadata object model: defaults, names, fields and their loaded flag,
// synonyms, relations and the copies Assign makes.
#include <gtest/gtest.h>

#include "MetadataTestSupport.h"
#include "metadata/dataset/FieldDef.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"

using namespace mv;
using namespace mv::test;

namespace {

// A virtual calculated field: any parsed expression makes it one.
void MakeVirtual(TmvMetadataField* field, TmvBaseSQLContext* context) {
  auto expression = TastCreate<TSQLExpressionConstant>(context);
  expression->AddNumber(u"1");
  field->SetExpressionAST(std::move(expression), u"1");
}

}  // namespace

TEST_F(MetadataTest, NewFieldsAndRelationsHaveTheDefaultsLoadersRelyOn) {
  // Loaders only ever narrow these: a field is nullable until told otherwise,
  // a relation one-to-many and not a foreign key.
  TmvMetadataTable* table = Table({u"t"});
  EXPECT_TRUE(table->GetFields()->Add()->Nullable());
  TmvMetadataRelation* relation = table->GetRelations()->Add();
  EXPECT_TRUE(relation->KeyCardinality() == mrcOne && relation->ChildCardinality() == mrcMany);
  EXPECT_FALSE(relation->ForeignKey());
}

TEST_F(MetadataTest, TypeNameAndSizeFollowTheDialectsTypeLists) {
  TmvMetadataField* field = Table({u"t"})->GetFields()->Add();
  field->SetFieldTypeName(u"NUMERIC");
  field->SetPrecision(10);
  field->SetScale(2);
  field->SetSize(8);
  EXPECT_EQ(field->GetFieldTypeNameAndSize(), u"NUMERIC(10,2)");

  field->SetFieldTypeName(u"VARCHAR");
  field->SetPrecision(0);
  field->SetSize(30);
  EXPECT_EQ(field->GetFieldTypeNameAndSize(), u"VARCHAR(30)");
  field->SetSize(0);
  EXPECT_EQ(field->GetFieldTypeNameAndSize(), u"VARCHAR");

  // A type the dialect prints without a size keeps its bare name.
  field->SetFieldTypeName(u"INTEGER");
  field->SetSize(4);
  EXPECT_EQ(field->GetFieldTypeNameAndSize(), u"INTEGER");
  // With a precision but no variable precision type, the size decides.
  field->SetFieldTypeName(u"varchar");
  field->SetPrecision(5);
  EXPECT_EQ(field->GetFieldTypeNameAndSize(), u"varchar(4)");
}

TEST_F(MetadataTest, FullNameCountsNameSchemaAndDatabaseParts) {
  TmvMetadataTable* bare = Table({u"t"});
  EXPECT_EQ(bare->FullName()->GetCount(), 1);
  TmvMetadataTable* schemed = Table({u"dbo", u"t2"});
  EXPECT_EQ(schemed->FullName()->GetCount(), 2);
  TmvMetadataTable* full = Table({u"srv", u"db", u"dbo", u"t3"});
  EXPECT_EQ(full->FullName()->GetCount(), 4);
  EXPECT_EQ(full->Database()->GetCount(), 2);
  EXPECT_EQ(full->FullNameStr(), u"srv.db.dbo.t3");
  EXPECT_EQ(full->SchemedNameStr(), u"dbo.t3");

  // A link stands in the link slot and adds no part.
  full->SetDBLink(Name({u"remote"}).get());
  EXPECT_EQ(full->FullName()->GetCount(), 4);
  ASSERT_TRUE(full->FullName()->DatabaseLink);
  EXPECT_EQ(full->FullNameStr(), u"srv.db.dbo.t3@remote");
}

TEST_F(MetadataTest, NameTextsQuoteAsTheContextWritesThem) {
  TmvMetadataTable* table = container->AddTable(Id(u"My Schema", true).get(), Id(u"Order Lines", true).get());
  EXPECT_EQ(table->NameStr(), u"\"Order Lines\"");
  EXPECT_EQ(table->NameStrNotQuoted(), u"Order Lines");
  EXPECT_EQ(table->SchemaStr(), u"\"My Schema\"");
  EXPECT_EQ(table->FullNameStr(), u"\"My Schema\".\"Order Lines\"");
  EXPECT_EQ(table->FullNameStrNotQuoted(), u"My Schema.Order Lines");
}

TEST_F(MetadataTest, SynonymReadsAndWritesItsTargetsListsWhileTheTargetIsThere) {
  TmvMetadataTable* target = Table({u"dbo", u"orders"});
  target->GetFields()->AddField(Name({u"id"}).get());
  TmvMetadataSynonym* synonym = container->AddSynonym(Name({u"o"}).get(), Name({u"dbo", u"orders"}).get());
  ASSERT_EQ(synonym->GetReferencedObject(), target);
  EXPECT_EQ(synonym->ReferencedFullNameStr(), u"dbo.orders");
  EXPECT_EQ(synonym->GetFields(), target->GetFields());
  EXPECT_EQ(synonym->GetFields()->Count(), 1);

  // Writing through the synonym changes the target.
  TmvOwned<TmvMetadataFieldsList> fields = TmvCreate<TmvMetadataFieldsList>(nullptr, &context);
  fields->AddField(Name({u"a"}).get());
  fields->AddField(Name({u"b"}).get());
  synonym->SetFields(fields.get());
  EXPECT_EQ(target->GetFields()->Count(), 2);

  // Without the target the synonym's own, empty, lists serve.
  container->Remove(target);
  EXPECT_EQ(synonym->GetReferencedObject(), nullptr);
  EXPECT_EQ(synonym->GetFields()->Count(), 0);
  EXPECT_EQ(synonym->GetRelations()->Count(), 0);
}

TEST_F(MetadataTest, SynonymsThatNameEachOtherFallBackOnTheirOwnLists) {
  TmvMetadataSynonym* a = container->AddSynonym(Name({u"a"}).get(), Name({u"b"}).get());
  TmvMetadataSynonym* b = container->AddSynonym(Name({u"b"}).get(), Name({u"a"}).get());
  TmvMetadataSynonym* self = container->AddSynonym(Name({u"c"}).get(), Name({u"c"}).get());
  EXPECT_EQ(self->GetReferencedObject(), nullptr);
  EXPECT_NE(a->GetFields(), nullptr);
  EXPECT_NE(b->GetRelations(), nullptr);
  EXPECT_EQ(self->GetFields()->Count(), 0);
}

TEST_F(MetadataTest, RecommendedAliasesAreMadeOnReadAndAssignDropsThem) {
  TmvMetadataTable* source = Table({u"s"});
  TmvMetadataTable* target = Table({u"t"});
  EXPECT_FALSE(target->HasRecomendedAliases());
  target->RecomendedAliases()->Add(Id(u"x"));
  EXPECT_TRUE(target->HasRecomendedAliases());

  target->Assign(source);
  EXPECT_FALSE(target->HasRecomendedAliases());

  source->RecomendedAliases()->Add(Id(u"y"));
  target->Assign(source);
  ASSERT_TRUE(target->HasRecomendedAliases());
  EXPECT_EQ(target->RecomendedAliases()->Token(0)->Token, u"y");
}

TEST_F(MetadataTest, AdjacentVirtualFieldsAreAllDeleted) {
  TmvMetadataTable* table = Table({u"t"});
  TmvMetadataFieldsList* fields = table->GetFields();
  for (const char16_t* name : {u"a", u"v1", u"v2", u"b", u"v3"}) fields->AddField(Name({name}).get());
  for (int i : {1, 2, 4}) MakeVirtual(fields->Items(i), &context);
  table->DeleteVirtualCalculatedFields();
  ASSERT_EQ(fields->Count(), 2);
  EXPECT_EQ(fields->Items(0)->NameStr(), u"a");
  EXPECT_EQ(fields->Items(1)->NameStr(), u"b");
}

TEST_F(MetadataTest, ClearingTheExpressionKeepsItsText) {
  TmvMetadataView* view = View({u"v"});
  view->SetExpressionAST(TastCreate<TSQLFromQuery>(&context), u"(select 1)");
  EXPECT_TRUE(view->IsVirtualCalculatedObject());
  view->SetExpressionAST(nullptr, u"");
  EXPECT_FALSE(view->IsVirtualCalculatedObject());
  EXPECT_EQ(view->Expression(), u"(select 1)");
}

TEST_F(MetadataTest, FindFieldByNameFormsCompareAsTheirKinds) {
  TmvMetadataFieldsList* fields = Table({u"t"})->GetFields();
  fields->AddField(Name({u"x", u"id"}).get());  // two parts: never found by a token
  fields->AddField(Name({u"ID"}).get());
  fields->AddField(Name({u"Amount"}, true).get());

  EXPECT_EQ(fields->FindFieldByName(Id(u"id").get()), 1);
  EXPECT_EQ(fields->FindFieldByName(static_cast<const TastToken*>(Id(u"id").get())), 1);
  EXPECT_EQ(fields->FindFieldByName(Name({u"x", u"id"}).get()), 0);
  // A quoted name keeps its case on this case-sensitive dialect.
  EXPECT_EQ(fields->FindFieldByName(Id(u"Amount", true).get()), 2);
  EXPECT_EQ(fields->FindFieldByName(Id(u"amount").get()), -1);
  auto keyword = TastCreate<TastTokenKeyword>(&context, u"AMOUNT");
  EXPECT_EQ(fields->FindFieldByName(static_cast<const TastToken*>(keyword.get())), 2);
}

TEST_F(MetadataTest, LoadedFlagIsSetByAddingAndCopiedByAssign) {
  TmvMetadataFieldsList* fields = Table({u"t"})->GetFields();
  EXPECT_FALSE(fields->Loaded());
  fields->AddField(Name({u"a"}).get());
  EXPECT_TRUE(fields->Loaded());
  // An empty list stays loaded: it is not fetched again.
  fields->Clear();
  EXPECT_TRUE(fields->Loaded());

  TmvOwned<TmvMetadataFieldsList> copy = TmvCreate<TmvMetadataFieldsList>(nullptr, &context);
  TmvOwned<TmvMetadataFieldsList> unloaded = TmvCreate<TmvMetadataFieldsList>(nullptr, &context);
  copy->Assign(fields);
  EXPECT_TRUE(copy->Loaded());
  copy->Assign(unloaded.get());
  EXPECT_FALSE(copy->Loaded());

  TmvMetadataParametersList* parameters = container->AddProcedure(Name({u"p"}).get())->Parameters();
  EXPECT_FALSE(parameters->Loaded());
  parameters->Insert(0);
  EXPECT_TRUE(parameters->Loaded());
}

TEST_F(MetadataTest, FieldFromAColumnDescription) {
  TmvFieldDef def;
  def.Name = u"Total";
  def.DataType = ftBCD;
  def.Size = 12;
  def.Precision = 10;
  def.Attributes = faRequired | faReadonly;
  TmvMetadataField* field = Table({u"t"})->GetFields()->AddField(def);
  EXPECT_EQ(field->NameStrNotQuoted(), u"Total");
  // The dialect tells case apart, so the driver's name keeps its case.
  auto* id = TmvCast<TastTokenIdentifier>(field->Name()->Token(0));
  ASSERT_NE(id, nullptr);
  EXPECT_TRUE(id->Quoted);
  EXPECT_EQ(field->FieldType(), ftBCD);
  EXPECT_EQ(field->Size(), 12);
  EXPECT_EQ(field->Precision(), 10);
  EXPECT_FALSE(field->Nullable());
  EXPECT_TRUE(field->ReadOnly());

  provider.SetIdentCaseSens(icsNonSensitive);
  def.Attributes = 0;
  TmvMetadataField* other = Table({u"u"})->GetFields()->AddField(def);
  EXPECT_FALSE(TmvCast<TastTokenIdentifier>(other->Name()->Token(0))->Quoted);
  EXPECT_TRUE(other->Nullable());
}

TEST_F(MetadataTest, CloneKeepsTheClassAndEverythingAssignCopies) {
  TmvMetadataProcedure* procedure = container->AddProcedure(Name({u"db", u"dbo", u"p"}).get(), true);
  procedure->SetAltName(u"Pretty");
  procedure->SetShortDescription(u"short");
  procedure->SetTag(7);
  procedure->GetFields()->AddField(Name({u"r"}).get());
  procedure->Parameters()->Add()->SetName(Id(u"x").get());

  TmvOwned<TmvMetadataObject> copy = procedure->CloneAs<TmvMetadataObject>(nullptr, &context);
  auto* clone = TmvCast<TmvMetadataProcedure>(copy.get());
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(clone->FullNameStr(), u"db.dbo.p");
  EXPECT_TRUE(clone->System());
  EXPECT_EQ(clone->AltName(), u"Pretty");
  EXPECT_EQ(clone->ShortDescription(), u"short");
  EXPECT_EQ(clone->Tag(), 7);
  EXPECT_EQ(clone->GetFields()->Count(), 1);
  EXPECT_TRUE(clone->GetFields()->Loaded());
  ASSERT_EQ(clone->Parameters()->Count(), 1);
  EXPECT_EQ(clone->Parameters()->Items(0)->Name()->Token, u"x");
  // The copy has its own parts.
  procedure->SetName(Id(u"renamed").get());
  EXPECT_EQ(clone->NameStr(), u"p");
}

TEST_F(MetadataTest, NameAsObjectLeavesOutDefaultsAsTheSettingAllows) {
  SetDefaults({u"D"}, {u"dbo", u"sales"});
  TmvMetadataTable* table = Table({u"D", u"dbo", u"t"});
  auto text = [&](TmvObjectPrefixSkipping skipping) {
    return table->GetNameAsObject(true, true, skipping, true)->GetQualifiedName();
  };
  EXPECT_EQ(text(opsSkipAll), u"t");
  EXPECT_EQ(text(opsSkipDatabase), u"dbo.t");
  EXPECT_EQ(text(opsSkipNone), u"D.dbo.t");

  // A schema that is no default stays; so does a database that is no default.
  EXPECT_EQ(Table({u"D", u"hr", u"t"})->GetNameAsObject(true, true, opsSkipAll, true)->GetQualifiedName(), u"hr.t");
  EXPECT_EQ(Table({u"E", u"dbo", u"t"})->GetNameAsObject(true, true, opsSkipAll, true)->GetQualifiedName(), u"E.dbo.t");
  // A link keeps every part, and goes into the link slot.
  table->SetDBLink(Name({u"remote"}).get());
  EXPECT_EQ(text(opsSkipAll), u"D.dbo.t@remote");
  // Parts can be left out on request.
  EXPECT_EQ(table->GetNameAsObject(false, false, opsSkipNone, true)->GetQualifiedName(), u"t");

  TSQLBuilderFast builder;
  builder.SetObjectPrefixSkipping(opsSkipDatabase);
  table->SetDBLink(nullptr);
  EXPECT_EQ(table->GetNameAsString(true, true, true, builder), u"dbo.t");
}

TEST_F(MetadataTest, ReferencesFollowTheForeignKeyFlag) {
  TmvMetadataTable* customers = Table({u"customers"});
  TmvMetadataTable* orders = Table({u"orders"});
  TmvFieldsList keys(&context, true);
  keys.AddField(u"id", false);
  TmvFieldsList children(&context, true);
  children.AddField(u"customer_id", false);

  // Stored on the referenced side, flag clear: orders refer to customers.
  TmvMetadataRelation* relation =
      customers->GetRelations()->AddRelation(&keys, nullptr, Id(u"orders").get(), nullptr, &children);
  EXPECT_EQ(relation->GetKeyMetadataObject(), customers);
  EXPECT_EQ(relation->GetChildMetadataObject(), orders);
  EXPECT_EQ(customers->GetReferencingObjects(), std::vector<TmvMetadataObject*>{orders});
  EXPECT_EQ(orders->GetReferencedObjects(), std::vector<TmvMetadataObject*>{customers});
  EXPECT_TRUE(customers->GetReferencedObjects().empty());
  EXPECT_EQ(orders->GetReferencedRelations(), std::vector<TmvMetadataRelation*>{relation});

  // Stored on the referencing side, flag set: the same direction.
  customers->GetRelations()->Clear();
  TmvMetadataRelation* foreignKey =
      orders->GetRelations()->AddRelation(&children, nullptr, Id(u"customers").get(), nullptr, &keys);
  foreignKey->SetForeignKey(true);
  EXPECT_EQ(orders->GetReferencedObjects(), std::vector<TmvMetadataObject*>{customers});
  EXPECT_EQ(customers->GetReferencingObjects(), std::vector<TmvMetadataObject*>{orders});
  EXPECT_EQ(customers->GetReferencingRelations(), std::vector<TmvMetadataRelation*>{foreignKey});
  EXPECT_TRUE(orders->GetReferencingObjects().empty());
}

TEST_F(MetadataTest, FindRelationComparesChildAndFieldsPairwise) {
  TmvMetadataRelationsList* relations = Table({u"t"})->GetRelations();
  TmvFieldsList ab(&context, true);
  ab.AddField(u"a", false);
  ab.AddField(u"b", false);
  TmvFieldsList ba(&context, true);
  ba.AddField(u"b", false);
  ba.AddField(u"a", false);
  relations->AddRelation(&ab, Id(u"s").get(), Id(u"c").get(), nullptr, &ab);
  EXPECT_EQ(relations->FindRelation(&ab, Id(u"S").get(), nullptr, &ab, Id(u"C").get()), 0);
  EXPECT_EQ(relations->FindRelation(&ba, Id(u"s").get(), nullptr, &ab, Id(u"c").get()), -1);
  EXPECT_EQ(relations->FindRelation(&ab, nullptr, nullptr, &ab, Id(u"c").get()), -1);
  EXPECT_EQ(relations->FindRelation(&ab, Id(u"s").get(), Name({u"db"}).get(), &ab, Id(u"c").get()), -1);
}

TEST_F(MetadataTest, ChildTableIsSplitAndRebuilt) {
  TmvMetadataRelation* relation = Table({u"t"})->GetRelations()->Add();
  relation->SetChildTable(Name({u"db", u"dbo", u"child"}).get());
  EXPECT_EQ(relation->ChildNameStr(), u"child");
  EXPECT_EQ(relation->ChildSchemaStr(), u"dbo");
  EXPECT_EQ(relation->ChildDatabaseStr(), u"db");
  EXPECT_EQ(relation->ChildTableStr(), u"db.dbo.child");
  relation->SetChildSchema(nullptr);
  EXPECT_EQ(relation->ChildTableStr(), u"db.child");
  relation->SetChildTable(nullptr);
  EXPECT_EQ(relation->ChildTable()->GetCount(), 1);
  EXPECT_TRUE(relation->ChildName()->IsEmpty());
}

TEST_F(MetadataTest, FieldsQueriesComeFromTheDialectsTemplate) {
  TmvMetadataTable* table = Table({u"dbo", u"t"});
  EXPECT_EQ(table->GetQueryToLoadFields(u""), u"select * from dbo.t a where 0<>0");
  EXPECT_EQ(table->GetQueryToLoadFields(u"x"), u"select x from dbo.t a where 0<>0");
  provider.SetQueryToLoadFieldsTemplate(u"select {0} from {1} limit 0");
  EXPECT_EQ(table->GetQueryToLoadFields(u""), u"select * from dbo.t limit 0");
  provider.SetQueryToLoadFieldsTemplate(u"select %0:s from %1:s limit 0");
  EXPECT_EQ(table->GetQueryToLoadFields(u""), u"select * from dbo.t limit 0");
  provider.SetAppendLimitsForFieldsQuery(false);
  EXPECT_EQ(table->GetQueryToLoadFields(u""), u"select * from dbo.t a");
  provider.SetAppendLimitsForFieldsQuery(true);
  provider.SetQueryToLoadFieldsTemplate(provider.GetQueryToLoadFieldsTemplate());
  provider.SetQueryToLoadFieldsTemplate(u"select %0:s from %1:s a where 0<>0");
  EXPECT_TRUE(provider.GetQueryToLoadFieldsTemplateProperty().empty());

  // A procedure is called with one null per known parameter.
  TmvMetadataProcedure* procedure = container->AddProcedure(Name({u"p"}).get());
  EXPECT_EQ(procedure->GetQueryToLoadFields(u""), u"select * from p() a where 0<>0");
  procedure->Parameters()->Add();
  procedure->Parameters()->Add();
  EXPECT_EQ(procedure->GetQueryToLoadFields(u""), u"select * from p(null,null) a where 0<>0");
}
