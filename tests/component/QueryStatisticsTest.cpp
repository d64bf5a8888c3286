// What a query reads and returns, as the query builder's statistics tell it:
// the objects (with their aliases, split into database/schema/object), their
// columns (* when a select list reads them) and the columns returned.
#include <gtest/gtest.h>

#include <string>

#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/QueryStatistics.h"
#include "support/MainThread.h"
#include "tree/NodeStatistics.h"
#include "tree/QualifiedNames.h"

namespace {

using mv::UTF8Decode;
using mv::UTF8Encode;

// The reference dialect, with or without schemas.
class TSchemasProvider : public mvtest::TReferenceDialectProvider {
 public:
  bool IsSupportSchemas() const override { return schemas; }
  bool schemas = true;
};

class QueryStatisticsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  QueryStatisticsTest() {
    builder->SetSyntaxProvider(provider.get());
    t = AddTable(u"t", {u"a", u"b", u"c"});
    AddTable(u"u", {u"a", u"d"});
    // A virtual object that reads u.
    mv::TmvMetadataObject* view = builder->MetadataContainer()->AddView(u"v");
    view->GetFields()->AddField(u"a");
    view->GetFields()->AddField(u"d");
    view->SetExpression(u"(SELECT a, d FROM u) q");
  }
  ~QueryStatisticsTest() override { mv::MainThreadDispatcher().ProcessPending(); }

  mv::TmvMetadataTable* AddTable(const char16_t* name, std::initializer_list<const char16_t*> fields) {
    mv::TmvMetadataTable* table = builder->MetadataContainer()->AddTable(name);
    for (const char16_t* field : fields) table->GetFields()->AddField(field);
    return table;
  }
  void Set(const std::string& sql) { builder->SetSql(UTF8Decode(sql)); }

  template <class List, class Describe>
  static std::string Join(List* list, Describe describe) {
    std::string text;
    for (int i = 0; i < list->GetCount(); ++i) text += (i ? " " : "") + describe(list->GetItems(i));
    return text;
  }
  // database/schema/object(aliases), "?" first when the container lacks it
  std::string Objects() {
    return Join(builder->GetQueryStatistics()->UsedDatabaseObjects(), [](mv::TmvStatisticsDatabaseObject* o) {
      std::string text = (o->MetadataObject() ? "" : "?") + UTF8Encode(o->Database()->GetQualifiedName()) + "/" +
                         UTF8Encode(o->Schema()->Token) + "/" + UTF8Encode(o->ObjectName()->Token);
      const mv::TastIdentifiersList* aliases = o->Aliases();
      for (int i = 0; i < aliases->Items.Count(); ++i)
        text += (i ? "," : "(") + UTF8Encode(aliases->Identifier(i)->Token) + (i + 1 == aliases->Items.Count() ? ")" : "");
      return text;
    });
  }
  // full name, "*" when selected
  std::string Columns() {
    return Join(builder->GetQueryStatistics()->UsedColumns(), [](mv::TmvStatisticsColumn* c) {
      return UTF8Encode(c->FullName()->GetQualifiedName()) + (c->Selected() ? "*" : "");
    });
  }
  // name of the source in the query "." column name ("-" when empty)
  std::string Output() {
    return Join(builder->GetQueryStatistics()->OutputColumns(), [](mv::TmvStatisticsOutputColumn* c) {
      std::string source = UTF8Encode(c->ObjectNameInQuery());
      return (source.empty() ? "" : source + ".") + (c->ColumnName().empty() ? "-" : UTF8Encode(c->ColumnName()));
    });
  }

  mv::TmvOwned<TSchemasProvider> provider = mv::TmvCreate<TSchemasProvider>();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  mv::TmvMetadataTable* t = nullptr;
};

TEST_F(QueryStatisticsTest, ObjectsColumnsAndOutput) {
  struct Case {
    bool schemas;
    const char* sql;
    const char* objects;
    const char* columns;
    const char* output;
  };
  const Case cases[] = {
      // A derived table is seen through; its fields are what * returns.
      {true, "SELECT * FROM (SELECT a, b FROM t) x", "//t", "t.a* t.b*", "x.a x.b"},
      {true, "SELECT y.a FROM (SELECT x.a FROM (SELECT a FROM t) x) y", "//t", "t.a*", "y.a"},
      // One object, two aliases.
      {true, "SELECT t1.a, t2.b FROM t t1, t t2", "//t(t1,t2)", "t.a* t.b*", "t1.a t2.b"},
      // A virtual object counts as what it reads.
      {true, "SELECT a FROM v", "//u", "u.a*", "v.a"},
      // Unknown objects: the name split, the schema only where the dialect has schemas.
      {true, "SELECT x.a FROM db1.s1.zz x", "?db1/s1/zz(x)", "db1.s1.zz.a*", "x.a"},
      {true, "SELECT x.a FROM db1.zz x", "?/db1/zz(x)", "db1.zz.a*", "x.a"},
      {false, "SELECT x.a FROM db1.zz x", "?db1//zz(x)", "db1.zz.a*", "x.a"},
      // Union: the first member returns; every member's select list selects.
      {true, "SELECT a FROM t UNION SELECT d FROM u WHERE u.a = 1", "//t //u", "t.a* u.d* u.a", "t.a"},
      {true, "SELECT a FROM t WHERE b = 1", "//t", "t.a* t.b", "t.a"},
      {true, "SELECT COUNT(*), COUNT(*) AS n FROM t", "//t", "", "- n"},
      {true, "SELECT t.* FROM t", "//t", "t.a* t.b* t.c*", "t.a t.b t.c"},
      {true, "", "", "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sql);
    provider->schemas = c.schemas;
    builder->SetSyntaxProvider(nullptr);
    builder->SetSyntaxProvider(provider.get());
    Set(c.sql);
    EXPECT_EQ(Objects(), c.objects);
    EXPECT_EQ(Columns(), c.columns);
    EXPECT_EQ(Output(), c.output);
  }
}

// Output columns carry their field, type and model objects where known.
TEST_F(QueryStatisticsTest, OutputColumnDetails) {
  t->GetFields()->Items(0)->SetFieldType(mv::ftInteger);
  Set("SELECT x.a AS k, 1 + 2 FROM t x");
  mv::TmvStatisticsOutputColumnsList* output = builder->GetQueryStatistics()->OutputColumns();
  ASSERT_EQ(output->GetCount(), 2);
  mv::TmvStatisticsOutputColumn* named = output->GetItems(0);
  EXPECT_EQ(named->ColumnNameInQuery(), u"k");
  EXPECT_EQ(named->ObjectAlias(), u"x");
  EXPECT_EQ(named->ObjectName(), u"t");
  EXPECT_EQ(named->GetFieldType(), mv::ftInteger);
  EXPECT_NE(named->Datasource(), nullptr);
  EXPECT_NE(named->SelectItem(), nullptr);
  EXPECT_EQ(output->GetItems(1)->Field(), nullptr);
  EXPECT_EQ(output->GetItems(1)->Expression(), u"1 + 2");
}

// A node's column list matches by what is known: object and field, object
// and column name, object name and field, or both names.
TEST_F(QueryStatisticsTest, ColumnEntriesMatchByWhatIsKnown) {
  mv::TmvBaseSQLContext* context = builder->SQLContext();
  auto name = [context](const char16_t* text) {
    auto qualified = mv::TastCreate<mv::TSQLQualifiedName>(context);
    qualified->SetQualifiedName(text);
    return qualified;
  };
  mv::TmvMetadataObject* u = builder->MetadataContainer()->AddTable(u"uu");
  mv::TmvMetadataField* a = t->GetFields()->Items(0);
  mv::TmvMetadataField* c = t->GetFields()->Items(2);
  mv::TmvStatsColumns columns(context);
  columns.AddColumn(t, name(u"t").get(), name(u"a").get(), a);
  columns.AddColumn(nullptr, name(u"x").get(), name(u"b").get(), nullptr);
  columns.AddColumn(nullptr, name(u"y").get(), name(u"c").get(), c);
  columns.AddColumn(t, name(u"t").get(), name(u"d").get(), nullptr);
  struct Case {
    mv::TmvMetadataObject* object;
    const char16_t* objectName;
    const char16_t* columnName;
    mv::TmvMetadataField* field;
    int found;
  };
  const Case cases[] = {
      {t, u"zz", u"zz", a, 0},          {t, u"q", u"D", nullptr, 3},   {nullptr, u"y", u"other", c, 2},
      {nullptr, u"X", u"B", nullptr, 1}, {u, u"t", u"a", a, -1},        {nullptr, u"x", u"c", nullptr, -1},
  };
  for (const Case& k : cases) {
    const mv::TmvStatsColumn* found = columns.FindColumn(k.object, name(k.objectName).get(), name(k.columnName).get(), k.field);
    EXPECT_EQ(found, k.found < 0 ? nullptr : columns.GetItems(k.found)) << UTF8Encode(k.columnName);
  }
  EXPECT_EQ(columns.AddColumnIfNotExists(nullptr, name(u"x").get(), name(u"b").get(), nullptr), 0);
  EXPECT_EQ(columns.AddColumnIfNotExists(nullptr, name(u"x").get(), name(u"e").get(), nullptr), 1);

  // Objects: a new alias of a known entry adds nothing to the count.
  mv::TmvStatsObjects objects(context), other(context);
  auto alias = [context](const char16_t* text) { return mv::TastCreate<mv::TastTokenIdentifier>(context, text, false); };
  EXPECT_EQ(objects.AddObjectIfNotExists(t, t->FullName(), alias(u"t1").get()), 1);
  EXPECT_EQ(objects.AddObjectIfNotExists(t, name(u"other").get(), alias(u"t2").get()), 0);
  EXPECT_EQ(objects.AddObjectIfNotExists(nullptr, name(u"db.zz").get(), nullptr), 1);
  EXPECT_EQ(objects.GetItems(0)->AliasCount(), 2);
  other.AddObjectIfNotExists(nullptr, name(u"DB.ZZ").get(), alias(u"z").get());
  other.AddObjectIfNotExists(u, u->FullName(), nullptr);
  EXPECT_EQ(objects.AddObjects(&other), 1);
  EXPECT_EQ(objects.AddObjects(nullptr), 0);
  ASSERT_EQ(objects.GetCount(), 3);
  EXPECT_EQ(objects.GetItems(1)->AliasCount(), 1);
}

TEST_F(QueryStatisticsTest, NewTextInvalidates) {
  Set("SELECT a FROM t");
  mv::TmvQueryStatistics* statistics = builder->GetQueryStatistics();
  EXPECT_EQ(Objects(), "//t");
  Set("SELECT d FROM u");
  EXPECT_FALSE(statistics->Valid());
  EXPECT_EQ(statistics->Statement(), nullptr);
  // A list asked by itself gathers again.
  mv::TmvStatisticsDatabaseObjectsList* objects = statistics->UsedDatabaseObjects();
  ASSERT_EQ(objects->GetCount(), 1);
  EXPECT_EQ(objects->GetItems(0)->ObjectName()->Token, u"u");
  EXPECT_EQ(Columns(), "u.d*");
}

TEST_F(QueryStatisticsTest, MetadataChangeInvalidates) {
  Set("SELECT w.a FROM w");
  EXPECT_EQ(Objects(), "?//w");
  mv::TmvQueryStatistics* statistics = builder->GetQueryStatistics();
  AddTable(u"w", {u"a"});
  EXPECT_FALSE(statistics->Valid());
  builder->RefreshDatasourcesMetadata();
  EXPECT_EQ(Objects(), "//w");
  EXPECT_EQ(Columns(), "w.a*");
}

}  // namespace

// A common table expression is seen through like a derived table: the
// objects and columns are those it reads, the output names the with item.
TEST_F(QueryStatisticsTest, CommonTableExpressionsAreSeenThrough) {
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> sql2003(
      mv::SyntaxProvidersList().FindClassByClassName("TmvSQL2003SyntaxProvider")->CreateRaw());
  builder->SetSyntaxProvider(sql2003.get());
  struct Case {
    const char* sql;
    const char* objects;
    const char* columns;
    const char* output;
  };
  const Case cases[] = {
      // t.b is read by the with item only: no select list of the main query reads it.
      {"WITH c AS (SELECT a, b FROM t) SELECT c.a FROM c", "//t", "t.a* t.b", "c.a"},
      {"WITH c (x) AS (SELECT d FROM u WHERE u.a = 1) SELECT * FROM c, t WHERE c.x = t.b", "//u //t",
       "u.d* t.b* u.a t.a* t.c*", "c.x t.a t.b t.c"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sql);
    Set(c.sql);
    EXPECT_EQ(Objects(), c.objects);
    EXPECT_EQ(Columns(), c.columns);
    EXPECT_EQ(Output(), c.output);
  }
  builder->SetSyntaxProvider(provider.get());
}
