// The provider's query tools over a small catalog: stars expanded into
// columns with unique names, the names a select gives its columns, and a
// statement wrapped one level down with its order moved out.
#include <gtest/gtest.h>

#include "dialects/EngineInit.h"
#include "dialects/sql2003/SQL2003SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class QueryToolsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  void SetUp() override {
    context_.SetSyntaxProvider(&provider_);
    container_ = TmvCreate<TmvMetadataContainer>(nullptr, &context_);
    context_.SetMetadataContainer(container_.get());
    container_->SetWorkOffline(true);
    AddTable(u"t", {u"a", u"b", u"e"});
    AddTable(u"u", {u"a", u"c", u"e"});
  }
  void AddTable(const char16_t* name, std::initializer_list<const char16_t*> fields) {
    TmvMetadataTable* table = container_->AddTable(name);
    for (const char16_t* field : fields) table->GetFields()->AddField(WideStringView(field));
  }
  void TearDown() override {
    context_.SetMetadataContainer(nullptr);
    container_.reset();
    context_.SetSyntaxProvider(nullptr);
  }

  TmvOwned<TSQLSubSelectStatement> Bound(const char16_t* text) {
    TmvOwned<TSQLSubSelectStatement> statement = context_.ParseSelect(text);
    statement->PrepareAndFixupRecursive();
    return statement;
  }
  static std::string Print(TastNode* node) {
    TSQLBuilderFast builder;
    return UTF8Encode(node->SimpleSQL(builder));
  }
  static std::string Join(const std::vector<WideString>& names) {
    std::string text;
    for (size_t i = 0; i < names.size(); ++i) text += (i ? "," : "") + UTF8Encode(names[i]);
    return text;
  }

  TmvSQL2003SyntaxProvider provider_;
  TmvBaseSQLContext context_;
  TmvOwned<TmvMetadataContainer> container_;
};

}  // namespace

TEST_F(QueryToolsTest, ExpandQueryColumns) {
  struct Case {
    const char16_t* query;
    const char* names;      // before the expansion
    bool duplicated;
    const char* expanded;   // the print after it
    const char* unique;     // the names it returns
  };
  const Case cases[] = {
      {u"select a, b from t", "a,b", false, "Select t.a, t.b From t", "a,b"},
      {u"select * from t", "a,b,e", false, "Select t.a, t.b, t.e From t", "a,b,e"},
      {u"select x.* from t x", "a,b,e", false, "Select x.a, x.b, x.e From t x", "a,b,e"},
      {u"select * from t, u", "a,b,e,a,c,e", true, "Select t.a, t.b, t.e, u.a As a1, u.c, u.e As e1 From t, u",
       "a,b,e,a1,c,e1"},
      {u"select u.*, t.a from t, u", "a,c,e,a", true, "Select u.a, u.c, u.e, t.a As a1 From t, u", "a,c,e,a1"},
      {u"select a + 1, b c, 2 from t", ",c,", false, "Select t.a + 1 As Column1, t.b c, 2 As Column2 From t",
       "Column1,c,Column2"},
      {u"select b Column1, a + 1 from t", "Column1,", false, "Select t.b Column1, t.a + 1 As Column2 From t",
       "Column1,Column2"},
      // Each item in turn: a name an earlier item took is taken.
      {u"select a, b A, a A1 from t", "a,A,A1", true, "Select t.a, t.b As A1, t.a As A11 From t", "a,A1,A11"},
      {u"select a from t union select c from u", "a", false, "Select t.a From t union Select u.c From u", "a"},
      // Sources that offer no columns leave the star as it stands.
      {u"select *, a from nowhere", "a", false, "Select *, a From nowhere", "a"},
      {u"select * from (select * from t) d", "a,b,e", false, "Select d.a, d.b, d.e From (Select * From t) d",
       "a,b,e"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(UTF8Encode(c.query));
    auto statement = Bound(c.query);
    EXPECT_EQ(Join(provider_.GetQueryColumnNames(statement.get())), c.names);
    EXPECT_EQ(provider_.IsQueryHaveDuplicatedColumnNames(statement.get()), c.duplicated);
    EXPECT_EQ(Join(provider_.ExpandQueryColumns(statement.get())), c.unique);
    EXPECT_EQ(Print(statement.get()), c.expanded);
    EXPECT_FALSE(provider_.IsQueryHaveDuplicatedColumnNames(statement.get()));
  }
}

TEST_F(QueryToolsTest, WrapQuery) {
  struct Case {
    const char16_t* query;
    const char* wrapped;
  };
  const Case cases[] = {
      {u"select a from t", "Select q.a From (Select t.a From t) q"},
      {u"select a, b from t order by b desc, 1", "Select q.a, q.b From (Select t.a, t.b From t) q Order By q.b Desc, 1"},
      {u"select a x from t order by t.a", "Select q.x From (Select t.a x From t) q Order By q.x"},
      {u"select a x from t order by x", "Select q.x From (Select t.a x From t) q Order By q.x"},
      {u"select a from t union select c from u order by a",
       "Select q.a From (Select t.a From t union Select u.c From u) q Order By q.a"},
      {u"with w as (select a from t) select a from w order by a",
       "With w As (Select t.a From t) Select q.a From (Select w.a From w) q Order By q.a"},
      {u"select * from t, u", "Select q.a, q.b, q.e, q.a1, q.c, q.e1 From (Select t.a, t.b, t.e, u.a As a1, u.c, "
                              "u.e As e1 From t, u) q"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(UTF8Encode(c.query));
    auto statement = Bound(c.query);
    provider_.ExpandQueryColumns(statement.get());
    auto wrapped = provider_.WrapQuery(std::move(statement));
    wrapped->PrepareAndFixupRecursive();
    provider_.ExpandQueryColumns(wrapped.get());
    const std::string print = Print(wrapped.get());
    EXPECT_EQ(print, c.wrapped);
    // The wrapped text reads and binds to the same print.
    auto again = Bound(UTF8Decode(print).c_str());
    EXPECT_EQ(Print(again.get()), print);
  }
}

TEST_F(QueryToolsTest, UniqueColumnNames) {
  const std::vector<WideString> taken = {u"A", u"column1", u"b1", u"B"};
  struct Case {
    const char16_t* name;
    const char16_t* unique;
  };
  for (const Case& c : {Case{u"c", u"c"}, Case{u"a", u"a1"}, Case{u"", u"Column2"}, Case{u"b", u"b2"}})
    EXPECT_EQ(TmvBaseSyntaxProvider::CreateUniqueColumnName(c.name, taken), c.unique);
}
