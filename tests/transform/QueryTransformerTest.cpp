// The query transformer over a query builder of the reference dialect: the
// shapes of the statements it makes, how it follows the source, its lists
// and its state document. After each case the source's own text is
// checked to be what it was.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLError.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "support/MainThread.h"
#include "transform/QueryTransformer.h"

namespace {

using mv::TmvQueryTransformer;
using mv::UTF8Decode;
using mv::UTF8Encode;

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

class QueryTransformerTest : public ::testing::Test {
 public:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  QueryTransformerTest() {
    builder->SetSyntaxProvider(provider.get());
    AddTable(u"t", {u"a", u"b", u"c"});
    AddTable(u"u", {u"a", u"d"});
    transformer->SetQueryBuilder(builder.get());
  }
  ~QueryTransformerTest() override {
    // The source's text never changes under the transformer.
    EXPECT_EQ(UTF8Encode(builder->GetSql()), sourceText) << "the source's query changed";
    transformer.reset();
    mv::MainThreadDispatcher().ProcessPending();
  }
  void AddTable(const char16_t* name, std::initializer_list<const char16_t*> fields) {
    mv::TmvMetadataTable* table = builder->MetadataContainer()->AddTable(name);
    for (const char16_t* field : fields) table->GetFields()->AddField(field);
  }
  void Set(const std::string& sql) {
    builder->SetSql(UTF8Decode(sql));
    sourceText = UTF8Encode(builder->GetSql());
  }
  std::string Sql() { return Lower(UTF8Encode(transformer->GetSql())); }
  mv::TmvOutputColumn* Column(const char16_t* name) { return transformer->Columns().ColumnByOriginalName(name); }

  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  mv::TmvOwned<TmvQueryTransformer> transformer = mv::TmvCreate<TmvQueryTransformer>();
  std::string sourceText;
};

struct ShapeCase {
  const char* name;
  const char* source;
  std::function<void(QueryTransformerTest&, TmvQueryTransformer&)> setup;
  const char* expected;  // lower case, one line
};

TEST_F(QueryTransformerTest, Shapes) {
  using T = QueryTransformerTest;
  const std::vector<ShapeCase> cases = {
      {"a plain query prints unwrapped", "SELECT t.a, t.b FROM t", [](T&, TmvQueryTransformer&) {},
       "select t.a, t.b from t"},
      {"a hidden column lists the visible ones by name", "SELECT t.a, t.b, t.c FROM t",
       [](T& f, TmvQueryTransformer&) { f.Column(u"b")->SetVisible(false); },
       "select q.a, q.c from (select t.a, t.b, t.c from t) q"},
      {"two column conditions are alternatives, anded to the old where", "SELECT t.a, t.b FROM t WHERE t.c = 1",
       [](T& f, TmvQueryTransformer& x) { x.Where(f.Column(u"a")->Greater(u"1")).Where(f.Column(u"b")->Less(u"5")); },
       "select t.a, t.b from t where t.c = 1 and (t.a > 1 or t.b < 5)"},
      {"an expression without alias filters in brackets", "SELECT t.a + 1 FROM t",
       [](T&, TmvQueryTransformer& x) { x.Where(x.Columns().Items(0)->Equal(u"2")); },
       "select t.a + 1 from t where (t.a + 1) = 2"},
      {"an order without limits moves out with the prefix q", "SELECT t.a, t.b FROM t ORDER BY t.b",
       [](T&, TmvQueryTransformer& x) { x.SetAlwaysWrapInSubQuery(true); },
       "select * from (select t.a, t.b from t) q order by q.b"},
      {"records count over the wrapped query, sortings gone", "SELECT t.a FROM t ORDER BY t.a",
       [](T& f, TmvQueryTransformer& x) { x.OrderBy(f.Column(u"a"), false).SelectRecordsCount(u"cnt"); },
       "select count(*) as cnt from (select t.a, t.a as \"t.a\" from t) q"},
      {"a sum of a column reads it through the wrapper", "SELECT t.a, t.b FROM t",
       [](T& f, TmvQueryTransformer& x) { x.Select(f.Column(u"b")->Sum(), u"total"); },
       "select sum(q.b) as total from (select t.a, t.b from t) q"},
      // The column's row again, named by its sorting expression, sorts.
      {"a sort replaces the query's own", "SELECT t.a, t.b FROM t ORDER BY t.a",
       [](T& f, TmvQueryTransformer& x) { x.OrderBy(f.Column(u"b"), false); },
       "select t.a, t.b, t.b as \"t.b\" from t order by \"t.b\" desc"},
      {"a sort on a wrapped query reads the wrapper", "SELECT t.a, t.b FROM t",
       [](T& f, TmvQueryTransformer& x) {
         f.Column(u"b")->SetVisible(false);
         x.OrderBy(f.Column(u"b"), false);
       },
       "select q.b, q.a from (select t.a, t.b from t) q order by q.b desc"},
      {"a filter on a wrapped query names the column as the source does", "SELECT t.a, t.b FROM t",
       [](T& f, TmvQueryTransformer& x) {
         f.Column(u"b")->SetVisible(false);
         x.Where(f.Column(u"b")->Equal(u"2"));
       },
       "select q.a from (select t.a, t.b from t) q where t.b = 2"},
      {"distinct", "SELECT t.a FROM t", [](T&, TmvQueryTransformer& x) { x.SetSelectMode(mv::smDistinct); },
       "select distinct t.a from t"},
      {"a plain text condition", "SELECT t.a FROM t", [](T&, TmvQueryTransformer& x) { x.Where(u"t.a in (1, 2)"); },
       "select t.a from t where t.a in (1, 2)"},
      {"duplicate names renamed through the wrapper", "SELECT t.a, u.a FROM t, u",
       [](T&, TmvQueryTransformer& x) { x.SetRenameDuplicatedColumns(true); },
       "select q.a, q.a1 from (select t.a, u.a as a1 from t, u) q"},
  };
  for (const ShapeCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto fresh = mv::TmvCreate<TmvQueryTransformer>();
    transformer = std::move(fresh);
    Set(c.source);
    transformer->SetQueryBuilder(builder.get());
    c.setup(*this, *transformer);
    EXPECT_EQ(Sql(), c.expected);
    EXPECT_EQ(UTF8Encode(builder->GetSql()), sourceText);
  }
}

TEST_F(QueryTransformerTest, NotOperatorsMapToTheirOpposites) {
  Set("SELECT t.a FROM t");
  mv::TmvOutputColumn* a = Column(u"a");
  using Make = std::function<mv::TmvOwned<mv::TmvFilterColumnCondition>()>;
  const std::vector<std::pair<Make, const char*>> cases = {
      {[&] { return a->Equal(u"1"); }, "t.a = 1"},
      {[&] { return a->Not_Equal(u"1"); }, "t.a <> 1"},
      {[&] { return a->Not_Greater(u"1"); }, "t.a <= 1"},
      {[&] { return a->Not_GreaterEqual(u"1"); }, "t.a < 1"},
      {[&] { return a->Not_Less(u"1"); }, "t.a >= 1"},
      {[&] { return a->Not_LessEqual(u"1"); }, "t.a > 1"},
      {[&] { return a->Not_Like(u"'x%'"); }, "t.a not like 'x%'"},
      {[&] { return a->Not_In(u"(1, 2)"); }, "t.a not in (1, 2)"},
      {[&] { return a->Not_Between(u"1", u"2"); }, "t.a not between 1 and 2"},
      {[&] { return a->Not_IsNull(); }, "t.a is not null"},
      {[&] { return a->IsNotNull(); }, "t.a is not null"},
      {[&] { return a->IsNull(); }, "t.a is null"},
  };
  for (const auto& [make, expected] : cases) EXPECT_EQ(UTF8Encode(make()->GetCondition()), expected);
}

TEST_F(QueryTransformerTest, JunctionsBracketTheirItems) {
  Set("SELECT t.a, t.b FROM t");
  auto both = mv::TmvFilterFactory::And_();
  EXPECT_EQ(both->GetCondition(), u"");
  both->Add(Column(u"a")->Equal(u"1"));
  both->Add(mv::TmvCreate<mv::TmvFilterColumnCondition>(nullptr, u""));
  auto either = mv::TmvFilterFactory::Or_();
  either->Add(Column(u"b")->Less(u"2"));
  either->Add(mv::TmvCreate<mv::TmvFilterColumnCondition>(nullptr, u"{column} stays"));
  either->SetNot(true);
  both->Add(std::move(either));
  EXPECT_EQ(UTF8Encode(both->GetCondition()), "(t.a = 1) and () and (not ((t.b < 2) or ({column} stays)))");
  // Only the first macro is replaced.
  EXPECT_EQ(Column(u"a")->Condition(u" = {column}")->GetCondition(), u"t.a = {column}");
}

TEST_F(QueryTransformerTest, NameLookupTreatsSharedNamesAsNone) {
  Set("SELECT t.a, u.a, t.b AS B2 FROM t, u");
  mv::TmvOutputColumnsList& columns = transformer->Columns();
  ASSERT_EQ(columns.Count(), 3);
  EXPECT_EQ(columns.FindColumnByOriginalName(u"A"), nullptr);
  EXPECT_EQ(columns.IndexOfByOriginalName(u"a"), -1);
  EXPECT_EQ(columns.FindColumnByOriginalName(u"b2"), columns.Items(2));
  try {
    columns.ColumnByOriginalName(u"a");
    FAIL() << "no exception";
  } catch (const mv::Exception& e) {
    EXPECT_EQ(e.Message(), u"Column with name a is not found in query.");
  }
}

TEST_F(QueryTransformerTest, ColumnsWithoutExpressionCannotFilterOrSort) {
  mv::TmvOutputColumn* column = transformer->Columns().Add(builder.get(), {});
  const std::vector<std::pair<std::function<void()>, std::u16string>> cases = {
      {[&] { column->Equal(u"1"); }, u"Cannot filter by this column."},
      {[&] { column->Asc(); }, u"Cannot sort by this column."},
      {[&] { column->Descending(); }, u"Cannot sort by this column."},
  };
  for (const auto& [call, message] : cases) {
    try {
      call();
      ADD_FAILURE() << "no exception";
    } catch (const mv::Exception& e) {
      EXPECT_EQ(e.Message(), message);
    }
  }
}

TEST_F(QueryTransformerTest, FiltersFollowTheSource) {
  Set("SELECT t.a, t.b FROM t");
  transformer->Filters().SetOperator(mv::jtAnd);
  transformer->Where(Column(u"a")->Greater(u"1")).Where(Column(u"b")->Less(u"5")).Where(u"1 = 1");
  transformer->OrderBy(Column(u"b"), true);
  Set("SELECT t.a, t.c FROM t");
  ASSERT_EQ(transformer->Filters().Count(), 2);
  auto* kept = mv::TmvCast<mv::TmvFilterColumnCondition>(transformer->Filters().Items(0));
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->Column(), Column(u"a"));
  EXPECT_EQ(transformer->Sortings().Count(), 0);
  EXPECT_EQ(Sql(), "select t.a, t.c from t where t.a > 1 and 1 = 1");
}

TEST_F(QueryTransformerTest, HiddenColumnsStayHiddenByName) {
  Set("SELECT t.a, t.b FROM t");
  Column(u"b")->SetVisible(false);
  Set("SELECT t.b, t.c FROM t");
  EXPECT_FALSE(Column(u"b")->Visible());
  EXPECT_TRUE(Column(u"c")->Visible());
}

TEST_F(QueryTransformerTest, IntoClauseAndSleepPassThrough) {
  builder->SetSql(u"UPDATE t SET a = 1");
  sourceText = UTF8Encode(builder->GetSql());
  EXPECT_FALSE(transformer->IsTransformable());
  EXPECT_EQ(UTF8Encode(transformer->GetSql()), sourceText);
  EXPECT_EQ(transformer->GetResultAst(), nullptr);
  EXPECT_EQ(transformer->Columns().Count(), 0);
}

TEST_F(QueryTransformerTest, ABadFilterRaisesTheParserError) {
  Set("SELECT t.a FROM t");
  transformer->Where(u"t.a >");
  EXPECT_THROW(transformer->GetSql(), mv::EmvSQLError);
}

TEST_F(QueryTransformerTest, ChangesInOneUpdateGiveOneNoticeAndClearTheResult) {
  Set("SELECT t.a, t.b FROM t");
  int plain = 0, multicast = 0;
  transformer->OnSQLUpdated = [&](TmvQueryTransformer*) { ++plain; };
  transformer->OnSQLUpdatedEvent.AddHandler(mv::TmvHandlerId::Unique(), [&](mv::TmvObject*) { ++multicast; });
  EXPECT_EQ(Sql(), "select t.a, t.b from t");
  transformer->BeginUpdate();
  transformer->Where(Column(u"a")->Equal(u"1")).OrderBy(u"t.b", false).Skip(u"1");
  EXPECT_TRUE(transformer->IsUpdating());
  transformer->EndUpdate();
  EXPECT_EQ(plain, 1);
  EXPECT_EQ(multicast, 1);
  transformer->Skip(u"1");  // unchanged: no notice
  EXPECT_EQ(plain, 1);
  EXPECT_EQ(Sql(), "select t.a, t.b, t.b from t where t.a = 1 order by t.b desc");
}

TEST_F(QueryTransformerTest, StateXmlRoundTripLosesOnlyTheNotFlag) {
  Set("SELECT t.a, t.b, t.c FROM t");
  Column(u"c")->SetVisible(false);
  transformer->SetSelectMode(mv::smDistinct);
  transformer->Skip(u"10").Take(u"5");
  auto nested = mv::TmvFilterFactory::And_();
  nested->Add(Column(u"a")->Greater(u"1"));
  nested->Add(mv::TmvCreate<mv::TmvFilterColumnCondition>(nullptr, u"t.b < 3"));
  nested->SetNot(true);
  transformer->Where(std::move(nested)).Where(Column(u"b")->IsNull());
  transformer->OrderBy(Column(u"a"), false).OrderBy(u"t.c", true);
  transformer->Select(Column(u"b")->Max(), u"mx").SelectRecordsCount(u"n");
  const mv::WideString state = transformer->GetStateXml();

  auto copy = mv::TmvCreate<TmvQueryTransformer>();
  copy->SetQueryBuilder(builder.get());
  copy->SetStateXml(state);
  EXPECT_EQ(copy->GetStateXml(), state);
  EXPECT_FALSE(copy->Columns().ColumnByOriginalName(u"c")->Visible());
  auto* junction = mv::TmvCast<mv::TmvFilterConditionJunction>(copy->Filters().Items(0));
  ASSERT_NE(junction, nullptr);
  EXPECT_FALSE(junction->Not());
  EXPECT_EQ(copy->Aggregations().Items(0)->Column(), copy->Columns().ColumnByOriginalName(u"b"));
  // Assign copies everything, the Not flag too.
  auto assigned = mv::TmvCreate<TmvQueryTransformer>();
  assigned->SetQueryBuilder(builder.get());
  assigned->Assign(*transformer);
  EXPECT_EQ(assigned->GetStateXml(), state);
  EXPECT_TRUE(mv::TmvCast<mv::TmvFilterConditionJunction>(assigned->Filters().Items(0))->Not());
  EXPECT_EQ(assigned->GetSql(), transformer->GetSql());

  const std::vector<std::pair<const char16_t*, const char16_t*>> bad = {
      {u"<transformer", u"Error parsing XML"},
      {u"<state/>", u"Bad XML file: tag \"transformer\" not found."},
  };
  for (const auto& [text, message] : bad) {
    try {
      copy->SetStateXml(text);
      ADD_FAILURE() << "no exception";
    } catch (const mv::Exception& e) {
      EXPECT_EQ(e.Message().substr(0, std::u16string(message).size()), message);
    }
  }
  copy->SetStateXml(u"<transformer/>");
  EXPECT_EQ(copy->Filters().Count() + copy->Sortings().Count() + copy->Aggregations().Count(), 0);
}

TEST_F(QueryTransformerTest, SourceDestroyedLeavesTheListsAlone) {
  Set("SELECT t.a FROM t");
  transformer->Where(Column(u"a")->Equal(u"1"));
  builder.reset();
  EXPECT_EQ(transformer->QueryBuilder(), nullptr);
  EXPECT_EQ(transformer->Filters().Count(), 1);
  EXPECT_EQ(transformer->GetSql(), u"");
  builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  builder->SetSyntaxProvider(provider.get());
  sourceText = UTF8Encode(builder->GetSql());
}

}  // namespace
