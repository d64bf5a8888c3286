// The SQL context on the SQL-92 dialect: the parse entries and what each
// raises or answers, the exact messages, the statement test, the identifier
// check, the quote-if-needed entries, comparisons under the case rules,
// the name caches and a change of dialect.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "SQL92Context.h"
#include "Thrown.h"
#include "dialects/EngineInit.h"
#include "frontend/ParseTreeDump.h"
#include "frontend/SQLContext.h"
#include "frontend/Scanner.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNamesList.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class SQLContextTest : public mvtest::SQL92ContextTest {
 protected:
  // The EmvSQLError ParseSelect raises for `text`.
  EmvSQLError SelectError(const WideString& text) {
    return mvtest::Thrown<EmvSQLError>([&] { context.ParseSelect(text); }).value_or(EmvSQLError(u"", nullptr));
  }

  WideString Fast(TastNode* node) {
    TSQLBuilderFast builder;
    return node->SimpleSQL(builder);
  }
};

}  // namespace

// --- Whole statements ---

TEST_F(SQLContextTest, EmptyTextIsNotASelect) {
  EmvSQLError e = SelectError(u"");
  EXPECT_EQ(e.Message(), u"Not a SELECT SQL statement.\r\n Unexpected token \"EOF\" at line 1, pos 1");
  EXPECT_EQ(e.Kind, ekNotSelectStatement);
  EXPECT_EQ(e.TokenText, u"EOF");
  EXPECT_EQ(e.Pos, 0);
  EXPECT_EQ(e.Line, 1);
  EXPECT_EQ(e.Col, 1);
  EXPECT_STREQ(e.ClassName(), "EmvSQLError");
}

TEST_F(SQLContextTest, WithBeforeAnInsertIsNotASelect) {
  EmvSQLError e = SelectError(u"WITH x AS (SELECT 1) INSERT INTO t SELECT 2");
  EXPECT_EQ(e.Message(), u"Not a SELECT SQL statement.\r\n Unexpected token \"INSERT\" at line 1, pos 22");
  EXPECT_EQ(e.Kind, ekNotSelectStatement);
  EXPECT_EQ(e.TokenText, u"INSERT");
  EXPECT_EQ(e.Pos, 21);
  // The first word names itself; brackets and comments before it are stepped over.
  EXPECT_EQ(SelectError(u"\r\n  update t set a = 1").Message(),
            u"Not a SELECT SQL statement.\r\n Unexpected token \"update\" at line 2, pos 3");
  EXPECT_NO_THROW(context.ParseSelect(u"(SELECT 1)"));
  EXPECT_NO_THROW(context.ParseSelect(u"/* c */ ((SELECT 1)) -- end"));
}

TEST_F(SQLContextTest, ASyntaxErrorNamesTheFirstTokenNoWayCouldRead) {
  EmvSQLError e = SelectError(u"SELECT select FROM t");
  EXPECT_EQ(e.Message(), u"Invalid SELECT statement.\r\n Unexpected token \"select\" at line 1, pos 8");
  EXPECT_EQ(e.Kind, ekInvalidSelectStatement);
  EXPECT_EQ(e.Pos, 7);
  // An error at the very end blames the end token.
  EXPECT_EQ(SelectError(u"SELECT a FROM t WHERE").Message(),
            u"Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 22");
  EXPECT_EQ(SelectError(u"SELECT a\r\nFROM t WHERE").TokenText, u"EOF");
  EXPECT_EQ(SelectError(u"SELECT a\r\nFROM t WHERE").Line, 2);
  // WITH is no SQL-92 syntax: it passes the statement test and fails the grammar.
  EXPECT_EQ(SelectError(u"WITH x AS (SELECT 1) SELECT * FROM x").Kind, ekInvalidSelectStatement);
}

TEST_F(SQLContextTest, WithoutAProviderTheStatementEntriesRaise) {
  TmvBaseSQLContext bare;
  for (auto parse : {+[](TmvBaseSQLContext& c) { c.ParseSelect(u"SELECT 1"); },
                     +[](TmvBaseSQLContext& c) { c.ParseSubQuery(u"SELECT 1"); },
                     +[](TmvBaseSQLContext& c) { c.ParseDatasource(u"t"); },
                     +[](TmvBaseSQLContext& c) { c.ParseExpression(u"1"); },
                     +[](TmvBaseSQLContext& c) { c.ParseSelectItem(u"1"); },
                     +[](TmvBaseSQLContext& c) { c.IsSelectStatement(WideString(u"SELECT 1")); }}) {
    try {
      parse(bare);
      ADD_FAILURE() << "no exception";
    } catch (const EmvSQLError&) {
      ADD_FAILURE() << "a plain exception was expected";
    } catch (const Exception& e) {
      EXPECT_EQ(e.Message(), u"Syntax provider is not specified");
      EXPECT_STREQ(e.ClassName(), "Exception");
    }
  }
  // The name entries take the text as one name.
  auto id = bare.ParseIdentifier(u" a b");
  ASSERT_TRUE(id);
  EXPECT_EQ(id->Token, u" a b");
  EXPECT_FALSE(id->Quoted);
  auto object = bare.ParseObjectName(u"x.y");
  ASSERT_EQ(object->GetCount(), 1);
  EXPECT_EQ(object->Token(0)->Token, u"x.y");
  EXPECT_EQ(bare.ParseQualifiedName(u"q")->GetCount(), 1);
  EXPECT_FALSE(bare.IsValidIdent(u"a"));
}

TEST_F(SQLContextTest, SubQueriesAndTheirUnwrapping) {
  auto sub = context.ParseSubQuery(u"SELECT a FROM t UNION SELECT b FROM u ORDER BY 1");
  EXPECT_EQ(sub->GetCount(), 2);
  EXPECT_TRUE(sub->OrderBy);
  // A sub-query reads no closing ";".
  EXPECT_THROW(context.ParseSubQuery(u"SELECT a FROM t;"), EmvSQLError);
  EXPECT_NO_THROW(context.ParseSelect(u"SELECT a FROM t;"));

  auto single = context.ParseUnionSubQuery(u"SELECT a FROM t ORDER BY a DESC");
  ASSERT_TRUE(single->OrderBy);  // the statement's order moves to the select
  EXPECT_EQ(Fast(single.get()), u"Select a From t Order By a Desc");
  const auto e =
      mvtest::Thrown<EmvSQLError>([&] { context.ParseUnionSubQuery(u"SELECT a FROM t UNION SELECT b FROM u"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->Message(), u"SQL query must be single SELECT statement");
  EXPECT_EQ(e->Kind, ekNotASingleSelectStatement);
  EXPECT_EQ(e->Pos, -1);
  EXPECT_EQ(e->Col, -1);
  EXPECT_EQ(e->Line, 0);
  EXPECT_EQ(e->TokenText, u"");
  // One member in brackets is a group, not a select.
  EXPECT_THROW(context.ParseUnionSubQuery(u"(SELECT a FROM t)"), EmvSQLError);
}

TEST_F(SQLContextTest, ADatasource) {
  auto source = context.ParseDatasource(u"db.s.t AS x");
  ASSERT_TRUE(TmvCast<TSQLFromObject>(source.get()));
  EXPECT_EQ(Fast(source.get()), u"db.s.t As x");
  const auto e = mvtest::Thrown<EmvSQLError>([&] { context.ParseDatasource(u"t x y"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->Message(), u"Invalid FROM object expression\r\n Unexpected token \"y\" at line 1, pos 5");
  EXPECT_EQ(e->Kind, ekInvalidSelectStatement);
}

// --- Fragments ---

TEST_F(SQLContextTest, AnExpressionThatFailsAddsItsLineToTheErrors) {
  TmvErrorList errors;
  EXPECT_FALSE(context.ParseExpression(u"a +", &errors));
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0], u" Unexpected token \"EOF\" at line 1, pos 4");
  EXPECT_FALSE(context.ParseExpression(u"a = 1"));  // no list: nothing but null
  auto expression = context.ParseExpression(u"a + b * 2", &errors);
  ASSERT_TRUE(expression);
  EXPECT_EQ(errors.size(), 1u);
  EXPECT_FALSE(context.ParseLogicalExpression(u"a = = 1", true, false, &errors));
  EXPECT_EQ(errors.back(), u" Unexpected token \"=\" at line 1, pos 5");
}

TEST_F(SQLContextTest, APredicateWithoutItsLeftSide) {
  // A criterion cell: only where the caller allows the left side to be missing.
  for (const char16_t* text : {u"= 5", u"Is Null", u"NOT LIKE 'x'", u"in (1, 2)", u"between 1 and 2", u"<> ALL (SELECT 1)"}) {
    EXPECT_FALSE(context.ParseLogicalExpression(text)) << UTF8Encode(text);
    auto predicate = context.ParseLogicalExpression(text, false);
    ASSERT_TRUE(predicate) << UTF8Encode(text);
  }
  EXPECT_EQ(Fast(context.ParseLogicalExpression(u"NOT LIKE 'x'", false).get()), u"Not Like 'x'");
  EXPECT_EQ(Fast(context.ParseLogicalExpression(u"= 5 OR = 6", false).get()), u"= 5 Or = 6");
  // "= TRUE" is a truth test without a left side, and TRUE a name with one.
  auto truth = context.ParseLogicalExpression(u"= TRUE", false, true);
  ASSERT_TRUE(truth);
  EXPECT_NE(DumpParseTree(truth.get()).find("TastTokenKeyword \"True\""), std::string::npos);
  auto named = context.ParseLogicalExpression(u"x = TRUE");
  ASSERT_TRUE(named);
  EXPECT_NE(DumpParseTree(named.get()).find("TastTokenIdentifier \"TRUE\""), std::string::npos);
}

TEST_F(SQLContextTest, ASelectItem) {
  EXPECT_TRUE(TmvCast<TSQLSelectItemAllTableColumns>(context.ParseSelectItem(u"t.*").get()));
  EXPECT_EQ(Fast(context.ParseSelectItem(u"a + 1 AS b").get()), u"a + 1 As b");
  EXPECT_FALSE(context.ParseSelectItem(u"a b c"));
}

TEST_F(SQLContextTest, AnIdentifierIsOneBareToken) {
  auto plain = context.ParseIdentifier(u"abc");
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->Token, u"abc");
  EXPECT_FALSE(plain->Quoted);
  auto quoted = context.ParseIdentifier(u"\"a\"\"b\"");
  ASSERT_TRUE(quoted);
  EXPECT_EQ(quoted->Token, u"a\"b");
  EXPECT_TRUE(quoted->Quoted);
  EXPECT_EQ(context.ParseIdentifier(u"Count")->Token, u"Count");  // a keyword that may be a name
  EXPECT_FALSE(context.ParseIdentifier(u""));
  EXPECT_FALSE(context.ParseIdentifier(u" a"));
  EXPECT_FALSE(context.ParseIdentifier(u"a "));
  EXPECT_FALSE(context.ParseIdentifier(u"a/**/"));
  EXPECT_FALSE(context.ParseIdentifier(u"a.b"));
  EXPECT_FALSE(context.ParseIdentifier(u"select"));
}

TEST_F(SQLContextTest, QuoteIfNeedTriesHarder) {
  // Step 2: a leading blank makes the name quoted, the blank kept.
  auto blank = context.ParseIdentifierQuoteIfNeed(u" a");
  ASSERT_TRUE(blank);
  EXPECT_EQ(blank->Token, u" a");
  EXPECT_TRUE(blank->Quoted);
  // Step 3: the closing quote inside is doubled.
  auto quote = context.ParseIdentifierQuoteIfNeed(u"a\"b");
  ASSERT_TRUE(quote);
  EXPECT_EQ(quote->Token, u"a\"b");
  EXPECT_TRUE(quote->Quoted);
  EXPECT_EQ(Fast(quote.get()), u"\"a\"\"b\"");
  auto reserved = context.ParseIdentifierQuoteIfNeed(u"select");
  ASSERT_TRUE(reserved);
  EXPECT_EQ(Fast(reserved.get()), u"\"select\"");

  EXPECT_FALSE(context.ParseObjectNameQuoteIfNeed(u""));
  EXPECT_FALSE(context.ParseQualifiedNameQuoteIfNeed(u""));
  EXPECT_FALSE(context.ParseQualifiedName(u""));
  auto spaced = context.ParseObjectNameQuoteIfNeed(u"Order Details");
  ASSERT_TRUE(spaced);
  ASSERT_EQ(spaced->GetCount(), 1);
  EXPECT_EQ(spaced->Token(0)->Token, u"Order Details");
  auto dotted = context.ParseQualifiedNameQuoteIfNeed(u"db.s.t");
  ASSERT_EQ(dotted->GetCount(), 3);
  EXPECT_EQ(dotted->Token(0)->Token, u"t");  // the object's own name first
  EXPECT_TRUE(TmvCast<TSQLDatabaseObject>(dotted.get()));
}

TEST_F(SQLContextTest, ValidIdentifiers) {
  EXPECT_TRUE(context.IsValidIdent(u"abc"));
  EXPECT_TRUE(context.IsValidIdent(u"count"));  // a keyword the grammar takes as a name
  EXPECT_TRUE(context.IsValidIdent(u"t"));
  EXPECT_FALSE(context.IsValidIdent(u"select"));
  EXPECT_FALSE(context.IsValidIdent(u"fn"));  // a keyword of the scanner only
  EXPECT_FALSE(context.IsValidIdent(u""));
  EXPECT_FALSE(context.IsValidIdent(u"a b"));
  EXPECT_FALSE(context.IsValidIdent(u"\"a\""));
  EXPECT_FALSE(context.IsValidIdent(u"\"abc"));
  EXPECT_FALSE(context.IsValidIdent(u"1a"));
  EXPECT_FALSE(context.IsValidIdent(u" a"));
}

namespace {
// A dialect that also vetoes names starting with x.
class TTestVetoSyntaxProvider : public mvtest::TReferenceDialectProvider {
 public:
  bool IsValidIdent(WideStringView text) const override { return text.empty() || text[0] != u'x'; }
};
}  // namespace

TEST_F(SQLContextTest, TheProviderHasTheLastWordOnValidity) {
  TTestVetoSyntaxProvider veto;
  context.SetSyntaxProvider(&veto);
  EXPECT_FALSE(context.IsValidIdent(u"xyz"));
  EXPECT_TRUE(context.IsValidIdent(u"abc"));
  EXPECT_FALSE(context.IsValidIdent(u"select"));
  context.SetSyntaxProvider(&provider);
}

TEST_F(SQLContextTest, ThreadsCheckIdentifiersOnOneContext) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < 300; ++i) {
        if (!context.IsValidIdent(u"name" + IntToWide(t * 1000 + i))) ++wrong;
        if (context.IsValidIdent(u"from")) ++wrong;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
}

TEST_F(SQLContextTest, QuotedIdentifiersOut) {
  EXPECT_EQ(ExtractQuotedIdentifier(u"[a]]b]", u"[", u"]"), u"a]b");
  EXPECT_EQ(ExtractQuotedIdentifier(u"\"a\"\"b\"", u"\"", u"\""), u"a\"b");
  // Too short, or not starting with the opening quote: as it stands.
  EXPECT_EQ(ExtractQuotedIdentifier(u"\"\"", u"\"", u"\""), u"\"\"");
  EXPECT_EQ(ExtractQuotedIdentifier(u"abc", u"\"", u"\""), u"abc");
  // The opening quote is compared without regard to case.
  EXPECT_EQ(ExtractQuotedIdentifier(u"Qabcq", u"q", u"q"), u"abc");
}

// --- Vocabulary and a change of dialect ---

namespace {
// SQL-92 with one more aggregate, so that a change of dialect shows.
class TTestMedianSyntaxProvider : public mvtest::TReferenceDialectProvider {
 public:
  void Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const override {
    list.Clear();
    list.AddBuiltin(u"Median");
  }
};
}  // namespace

TEST_F(SQLContextTest, AChangeOfProviderRefillsTheCachesAndReachesEveryNode) {
  auto median = context.ParseQualifiedName(u"MEDIAN");
  EXPECT_FALSE(context.IsNameOfAggregate(median.get()));
  auto call = context.ParseExpression(u"median(x)");
  EXPECT_TRUE(TmvCast<TSQLExpressionFunction>(call.get()));
  auto name = context.ParseIdentifier(u"fn2");
  ASSERT_TRUE(name->ValidIdentifier);

  int changes = 0;
  context.GetOnSyntaxProviderChanged().AddHandler(TmvHandlerId::Unique(), [&](TmvObject* sender) {
    EXPECT_EQ(sender, &context);
    ++changes;
  });
  TTestMedianSyntaxProvider other;
  context.SetSyntaxProvider(&other);
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(context.IsNameOfAggregate(median.get()));
  auto aggregate = context.ParseExpression(u"median(x)");
  ASSERT_TRUE(TmvCast<TSQLExpressionAggregate>(aggregate.get()));
  EXPECT_EQ(Fast(aggregate.get()), u"Median(x)");  // the list's spelling
  context.SetSyntaxProvider(&provider);
  EXPECT_FALSE(context.IsNameOfAggregate(median.get()));
}

TEST_F(SQLContextTest, AProviderThatGoesAwayIsForgotten) {
  auto other = std::make_unique<TTestMedianSyntaxProvider>();
  context.SetSyntaxProvider(other.get());
  auto name = context.ParseIdentifier(u"abc");
  EXPECT_TRUE(name->ValidIdentifier);
  other.reset();
  EXPECT_EQ(context.SyntaxProvider(), nullptr);
  EXPECT_FALSE(name->ValidIdentifier);  // no dialect, no valid names
  context.SetSyntaxProvider(&provider);
  EXPECT_TRUE(name->ValidIdentifier);
}

TEST_F(SQLContextTest, AggregatesAndFunctions) {
  auto dump = [&](const char16_t* text) { return DumpParseTree(context.ParseExpression(text).get()); };
  EXPECT_EQ(Fast(context.ParseExpression(u"count(DISTINCT a)").get()), u"Count(Distinct a)");
  EXPECT_EQ(Fast(context.ParseExpression(u"SUM(ALL a)").get()), u"Sum(a)");
  EXPECT_EQ(Fast(context.ParseExpression(u"count(*)").get()), u"count(*)");  // as written
  EXPECT_EQ(dump(u"f(DISTINCT a)").rfind("TSQLExpressionFunction", 0), 0u);  // the word is dropped
  EXPECT_EQ(Fast(context.ParseExpression(u"f(DISTINCT a)").get()), u"f(a)");
  EXPECT_EQ(Fast(context.ParseExpression(u"upper(a)").get()), u"Upper(a)");
  EXPECT_EQ(Fast(context.ParseExpression(u"f()").get()), u"f()");
}

TEST_F(SQLContextTest, NamePartsAsText) {
  EXPECT_EQ(context.ExtractNameFromFullName(WideString(u"db.s.\"my t\"")), u"\"my t\"");
  EXPECT_EQ(context.ExtractSchemaFromFullName(WideString(u"db.s.t")), u"s");
  EXPECT_EQ(context.ExtractDatabaseFromFullName(WideString(u"db.s.t")), u"db");
  EXPECT_EQ(context.ExtractDatabaseFromFullName(WideString(u"srv.db.s.t")), u"srv.db");
  EXPECT_EQ(context.ExtractSchemaFromFullName(WideString(u"t")), u"");
  EXPECT_EQ(context.ExtractDatabaseFromFullName(WideString(u"s.t")), u"");
  EXPECT_EQ(context.ExtractNameFromFullName(WideString(u"")), u"");
}

TEST_F(SQLContextTest, FromObjectsMadeFromNames) {
  auto source = context.CreateSQLFromObject(u"dbo.Order Details", u"od");
  ASSERT_TRUE(source->Object);
  EXPECT_EQ(source->Object->FromSource, source.get());
  EXPECT_EQ(Fast(source.get()), u"\"dbo.Order Details\" od");
  auto plain = context.CreateSQLFromObject(u"s.t", u"");
  EXPECT_FALSE(plain->Alias);
  EXPECT_EQ(plain->Object->GetCount(), 2);
  auto copy = context.CreateSQLFromObject(plain->Object.get(), context.ParseIdentifier(u"x").get());
  EXPECT_EQ(Fast(copy.get()), u"s.t x");
  EXPECT_EQ(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { context.CreateSQLFromObject(u"", u""); }),
            u"Invalid object name");
}

TEST_F(SQLContextTest, TheStatementTestOnScannedText) {
  EXPECT_TRUE(context.IsSelectStatement(WideString(u"  -- c\r\n ( select 1)")));
  EXPECT_TRUE(context.IsSelectStatement(WideString(u"WITH x AS (SELECT 1) SELECT * FROM x")));
  EXPECT_FALSE(context.IsSelectStatement(WideString(u"WITH x AS (SELECT 1) UPDATE t SET a = 1")));
  // Every later token counts, wherever it stands.
  EXPECT_FALSE(context.IsSelectStatement(WideString(u"WITH x AS (SELECT 1) SELECT insert FROM x")));
  EXPECT_FALSE(context.IsSelectStatement(WideString(u"VALUES (1)")));
}

// A host may keep its context in a static object. The program's end frees
// it after the thread's own objects and the statics made after it: its
// parser must still give its way points and lists back cleanly.
TEST(SQLContextLifetime, AStaticContextThatParsedIsFreedAtProgramEnd) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        struct Holder {
          Holder() { context.SetSyntaxProvider(&provider); }
          ~Holder() { context.SetSyntaxProvider(nullptr); }
          mvtest::TReferenceDialectProvider provider;
          TmvBaseSQLContext context;
        };
        InitializeEngine();
        static Holder holder;
        TmvOwned<TSQLSelectStatement> statement = holder.context.ParseSelect(u"SELECT a FROM t WHERE b = 1");
        statement.reset();
        std::exit(statement ? 1 : 0);
      },
      ::testing::ExitedWithCode(0), "");
}
