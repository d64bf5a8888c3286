// The SQL-92 grammar: the trees it builds for the forms with
// something to decide (aliases, joins, predicates, parameters, the ODBC
// escapes, names), what it refuses, and the limits of nesting.
#include <gtest/gtest.h>

#include <algorithm>

#include "OnStackOf.h"
#include "SQL92Context.h"
#include "SQL92Pars.h"
#include "Thrown.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/ParseTreeDump.h"
#include "frontend/SQLContext.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class SQL92GrammarTest : public mvtest::SQL92ContextTest {
 protected:
  std::string Select(const WideString& text) { return DumpParseTree(context.ParseSelect(text).get()); }
  std::string Expression(const WideString& text) { return DumpParseTree(context.ParseExpression(text).get()); }
  std::string Logical(const WideString& text) { return DumpParseTree(context.ParseLogicalExpression(text).get()); }
  std::string Source(const WideString& text) { return DumpParseTree(context.ParseDatasource(text).get()); }
  WideString Print(const WideString& text) {
    TSQLBuilderFast builder;
    return context.ParseSelect(text)->SimpleSQL(builder);
  }
  bool Parses(const WideString& text) {
    try {
      context.ParseSelect(text);
      return true;
    } catch (const EmvSQLError&) {
      return false;
    }
  }
};

// Whether `text` holds `part`.
::testing::AssertionResult Holds(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "no\n" << part << "\nin\n" << text;
}

}  // namespace

TEST_F(SQL92GrammarTest, AnEmptySelectListAndAnEmptyFrom) {
  EXPECT_EQ(Select(u"SELECT FROM"),
            "TSQLSelectStatement\n"
            "  TSQLSubQuerySelectExpression\n"
            "    TSQLSelectItems\n"
            "    TSQLFromClause\n");
  EXPECT_EQ(Print(u"select from"), u"Select From");
}

TEST_F(SQL92GrammarTest, AliasesOfSelectItems) {
  const std::string tree = Select(u"SELECT a b, c AS d, 'x' y FROM t");
  EXPECT_TRUE(Holds(tree,
                    "      TSQLSelectItemExpression\n"
                    "        TSQLAliasExpressionAlias\n"
                    "          TastTokenIdentifier \"b\"\n"));
  EXPECT_TRUE(Holds(tree, "        TSQLAliasExpressionAlias as\n          TastTokenIdentifier \"d\"\n"));
  EXPECT_TRUE(Holds(tree,
                    "        TSQLAliasExpressionAlias\n"
                    "          TastTokenIdentifier \"y\"\n"
                    "        TSQLExpressionConstant\n"
                    "          TastTokenString \"'x'\"\n"));
  // The alias written first, with "=".
  EXPECT_TRUE(Holds(Select(u"SELECT x = 1 FROM t"),
                    "      TSQLSelectItemExpression\n"
                    "        TSQLAliasEqualsExpression\n"
                    "          TastTokenIdentifier \"x\"\n"
                    "        TSQLExpressionConstant\n"
                    "          TastTokenNumber \"1\"\n"));
  EXPECT_TRUE(Holds(Select(u"SELECT 'n' = 1"), "        TSQLAliasEqualsExpression\n          TastTokenString \"'n'\"\n"));
  EXPECT_EQ(Print(u"SELECT a b, c AS d, 'x' y, x = 1 FROM t"), u"Select a b, c As d, 'x' y, x = 1 From t");
}

TEST_F(SQL92GrammarTest, AllColumnsOfATable) {
  // ".*" is one token, so no column can take t.
  EXPECT_TRUE(Holds(Select(u"SELECT t.*, s.t.* FROM t"),
                    "      TSQLSelectItemAllTableColumns\n"
                    "        TSQLDatabaseObject\n"
                    "          TastTokenIdentifier \"t\"\n"));
  EXPECT_EQ(Print(u"SELECT *, s.t.* FROM s.t"), u"Select *, s.t.* From s.t");
}

TEST_F(SQL92GrammarTest, KeywordsAsNames) {
  EXPECT_TRUE(Holds(Select(u"SELECT count FROM t"), "TSQLObjectColumn\n            TastTokenIdentifier \"count\"\n"));
  EXPECT_TRUE(Parses(u"SELECT t.avg, sum.max, call FROM t"));
  EXPECT_FALSE(Parses(u"SELECT select FROM t"));
  EXPECT_FALSE(Parses(u"SELECT fn FROM t"));
}

TEST_F(SQL92GrammarTest, NotBeforeAPredicateAndBeforeAnExpression) {
  EXPECT_EQ(Logical(u"a NOT LIKE 'x'").rfind("TSQLExpressionLikeTemplate \"Like\" not\n", 0), 0u);
  const std::string prefixed = Logical(u"NOT a LIKE 'x' ESCAPE '!'");
  EXPECT_EQ(prefixed.rfind("TSQLExpressionNot\n  TSQLExpressionLikeTemplate \"Like\"\n", 0), 0u);
  EXPECT_TRUE(Holds(prefixed, "    TSQLExpressionConstant\n      TastTokenString \"'!'\"\n"));
  EXPECT_TRUE(Holds(Logical(u"a NOT BETWEEN 1 AND 2"), "TSQLExpressionBetween not\n"));
  EXPECT_TRUE(Holds(Logical(u"a NOT IN (1)"), "TSQLExpressionInSet not\n"));
  EXPECT_TRUE(Holds(Logical(u"a IS NOT NULL"), "TSQLExpressionIsNull not\n"));
  EXPECT_TRUE(Holds(Logical(u"NOT NOT a = 1"), "TSQLExpressionNot\n  TSQLExpressionNot\n"));
}

TEST_F(SQL92GrammarTest, BracketsOfAnExpressionAndOfACondition) {
  EXPECT_EQ(Logical(u"(a) = 1").rfind("TSQLExpressionOperatorBinary\n  TSQLExpressionBrackets\n", 0), 0u);
  EXPECT_TRUE(Holds(Logical(u"(a = 1)"), "TSQLExpressionBrackets\n  TSQLExpressionOperatorBinary\n"));
  EXPECT_TRUE(Holds(Logical(u"(SELECT 1) = 1"), "TSQLExpressionOperatorBinary\n  TSQLExpressionSelect\n"));
}

TEST_F(SQL92GrammarTest, OperatorsNestToTheLeftAndAndBindsFirst) {
  // (a + b) - c: the first operator sits one level deeper than the second.
  const std::string sequence = Expression(u"a + b - c");
  EXPECT_EQ(sequence.rfind("TSQLExpressionOperatorBinary\n  TSQLExpressionOperatorBinary\n", 0), 0u);
  EXPECT_TRUE(Holds(sequence, "\n    TSQLOperator \"+\"\n"));
  EXPECT_TRUE(Holds(sequence, "\n  TSQLOperator \"-\"\n  TSQLExpressionColumn\n"));
  EXPECT_TRUE(Holds(Expression(u"a + b * c"), "  TSQLOperator \"+\"\n  TSQLExpressionOperatorBinary\n"));
  EXPECT_TRUE(Holds(Expression(u"-a || ~ b"), "TSQLExpressionOperatorBinary\n  TSQLExpressionOperatorPrefix\n"));
  // "~b" is one name to the scanner, so the tilde keeps its blank in print.
  EXPECT_EQ(Print(u"SELECT ~ CASE WHEN c > 1 THEN a END, ~ b, ~b, - -1 FROM t"),
            u"Select ~ Case When c > 1 Then a End, ~ b, ~b, - -1 From t");
  const std::string logical = Logical(u"a = 1 OR b = 2 AND c = 3");
  EXPECT_EQ(logical.rfind("TSQLExpressionOr\n", 0), 0u);
  EXPECT_TRUE(Holds(logical, "\n  TSQLExpressionAnd\n"));
  EXPECT_EQ(Logical(u"a = 1 AND b = 2").rfind("TSQLExpressionAnd\n", 0), 0u);
  EXPECT_EQ(Logical(u"a = 1").rfind("TSQLExpressionOperatorBinary\n", 0), 0u);
}

TEST_F(SQL92GrammarTest, JoinsNestAsWritten) {
  // b and c form a group joined to a; the inner join carries x = 1.
  const std::string tree = Select(u"SELECT * FROM a JOIN b JOIN c ON x = 1 ON y = 2");
  EXPECT_TRUE(Holds(tree, "      TSQLFromGroup\n        TSQLJoinKindInner inner\n        TSQLExpressionOperatorBinary\n"));
  EXPECT_TRUE(Holds(tree, "        TSQLFromObject\n          TSQLJoinKindInner inner\n          TSQLExpressionOperatorBinary\n"));
  EXPECT_EQ(Print(u"SELECT * FROM a JOIN b JOIN c ON x = 1 ON y = 2"),
            u"Select * From a Inner Join (b Inner Join c On x = 1) On y = 2");
  // One ON for two joins is no SQL-92.
  EXPECT_FALSE(Parses(u"SELECT * FROM a JOIN b JOIN c ON x = 1"));
}

TEST_F(SQL92GrammarTest, JoinKinds) {
  const std::string tree = Select(u"SELECT * FROM a JOIN b ON x = 1, c CROSS JOIN d LEFT OUTER JOIN e ON 1 = 1 "
                                  u"RIGHT JOIN f ON 1 = 1 FULL OUTER JOIN g ON 1 = 1 INNER JOIN h ON 1 = 1");
  // A comma source after a join has no join kind.
  EXPECT_TRUE(Holds(tree,
                    "      TSQLFromObject\n"
                    "        TSQLDatabaseObject\n"
                    "          TastTokenIdentifier \"c\"\n"));
  EXPECT_TRUE(Holds(tree, "        TSQLJoinKindCross\n        TSQLDatabaseObject\n          TastTokenIdentifier \"d\"\n"));
  EXPECT_TRUE(Holds(tree, "        TSQLJoinKindLeft outer\n"));
  EXPECT_TRUE(Holds(tree, "        TSQLJoinKindRight\n"));
  EXPECT_TRUE(Holds(tree, "        TSQLJoinKindFull outer\n"));
  EXPECT_EQ(Print(u"SELECT * FROM a LEFT JOIN b ON 1 = 1, (c CROSS JOIN d)"),
            u"Select * From a Left Join b On 1 = 1, (c Cross Join d)");
}

TEST_F(SQL92GrammarTest, SourcesOfTheFromClause) {
  EXPECT_TRUE(Holds(Source(u"(SELECT 1) AS q"), "TSQLFromQuery\n  TSQLAliasObjectAlias as\n"));
  const std::string function = Source(u"s.f(1, 2) x");
  EXPECT_EQ(function.rfind("TSQLFromFunction\n  TSQLAliasObjectAlias\n    TastTokenIdentifier \"x\"\n", 0), 0u);
  EXPECT_TRUE(Holds(function, "  TSQLExpressionsList\n    TSQLExpressionConstant\n      TastTokenNumber \"1\"\n"));
  EXPECT_TRUE(Holds(Source(u"f()"), "TSQLFromFunction\n  TSQLDatabaseObject\n    TastTokenIdentifier \"f\"\n"));
  EXPECT_TRUE(Holds(Source(u"(a, b)"), "TSQLFromGroup\n  TSQLFromObject\n"));
  // A group takes no alias in SQL-92.
  EXPECT_THROW(context.ParseDatasource(u"(a, b) x"), EmvSQLError);
}

TEST_F(SQL92GrammarTest, TheFiveODBCEscapes) {
  for (const char16_t* text : {u"{d '2001-01-01'}", u"{guid '6F9619FF-8B86-D011-B42D-00C04FC964FF'}", u"{fn f(1)}",
                               u"{call p(1)}", u"{?= call p}", u"{ts '2001-01-01 10:00:00'}", u"{T '10:00:00'}"}) {
    auto expression = context.ParseExpression(text);
    ASSERT_TRUE(expression) << UTF8Encode(text);
    EXPECT_EQ(std::string(expression->ClassName()), "TSQLExpressionNodesList");
  }
  EXPECT_EQ(Print(u"SELECT {d '2001-01-01'}, {fn f(1)}, {call p(1)}, {?= call p}"),
            u"Select {d '2001-01-01'}, {fn f(1)}, {call p(1)}, {?= call p}");
  EXPECT_TRUE(Holds(Expression(u"{?= CALL p}"),
                    "  TastNodeWithList\n"
                    "    TastTokenSymbol \"{\"\n"
                    "    TastTokenSymbol \"?=\"\n"
                    "    TastTokenBuiltin \"CALL\"\n"
                    "    TastTokenIdentifier \"p\"\n"
                    "    TastTokenSymbol \"}\"\n"));
}

TEST_F(SQL92GrammarTest, TheFourParameterForms) {
  EXPECT_EQ(Expression(u"?"), "TSQLExpressionParameter\n  TastTokenSymbol \"?\"\n");
  EXPECT_EQ(Expression(u"?1"), "TSQLExpressionParameter\n  TastTokenSymbol \"?\"\n  TastTokenNumber \"1\"\n");
  EXPECT_EQ(Expression(u":a"), "TSQLExpressionParameter\n  TastTokenSymbol \":\"\n  TastTokenIdentifier \"a\"\n");
  EXPECT_EQ(Expression(u":1"), "TSQLExpressionParameter\n  TastTokenSymbol \":\"\n  TastTokenNumber \"1\"\n");
  EXPECT_EQ(Print(u"SELECT ?, ?1, :a, :1 FROM t WHERE a = :b"), u"Select ?, ?1, :a, :1 From t Where a = :b");
}

TEST_F(SQL92GrammarTest, HowManyPartsANameMayHave) {
  EXPECT_TRUE(Parses(u"SELECT a.b.c.d.e FROM a.b.c.d"));
  EXPECT_FALSE(Parses(u"SELECT a.b.c.d.e.f FROM t"));
  EXPECT_FALSE(Parses(u"SELECT a FROM a.b.c.d.e"));
  // Parts are held from the inside out.
  EXPECT_EQ(Source(u"db.s.t"),
            "TSQLFromObject\n"
            "  TSQLDatabaseObject\n"
            "    TastTokenIdentifier \"t\"\n"
            "    TastTokenIdentifier \"s\"\n"
            "    TastTokenIdentifier \"db\"\n");
  EXPECT_TRUE(Holds(Expression(u"\"My \"\"Col\"\"\""), "TastTokenIdentifier \"My \\\"Col\\\"\" quoted\n"));
}

TEST_F(SQL92GrammarTest, UnionsKeepTheirOperatorsAsWritten) {
  const std::string tree = Select(u"SELECT a FROM t UNION ALL (SELECT b FROM u EXCEPT SELECT c FROM v) intersect SELECT d");
  EXPECT_TRUE(Holds(tree, "  TSQLSubQueryExpressions \"UNION\" all\n"));
  EXPECT_TRUE(Holds(tree, "    TSQLSubQuerySelectExpression \"EXCEPT\"\n"));
  EXPECT_TRUE(Holds(tree, "  TSQLSubQuerySelectExpression \"intersect\"\n"));
  EXPECT_TRUE(Parses(u"SELECT a FROM t UNION SELECT b FROM u ORDER BY 1;"));
}

TEST_F(SQL92GrammarTest, ConstantsAndTypes) {
  EXPECT_EQ(Print(u"SELECT date '2001-01-01', TIME '10:00', timestamp '2001-01-01 10:00', current_timestamp, "
                  u"session_user, null, 0x1f, 1., .5e-3"),
            u"Select Date '2001-01-01', Time '10:00', TimeStamp '2001-01-01 10:00', Current_TimeStamp, "
            u"Session_User, Null, 0x1f, 1., .5e-3");
  EXPECT_EQ(Print(u"SELECT cast(a as double precision), cast(a as national character varying(10)), "
                  u"cast(a as numeric(10,2)), cast(a as time(3) with time zone), "
                  u"cast(a as interval day(2) to second(3)), cast(a as interval second(2, 3)), cast(a as s.my_type)"),
            u"Select Cast(a As Double Precision), Cast(a As National Character Varying(10)), "
            u"Cast(a As Numeric(10, 2)), Cast(a As Time(3) With Time Zone), "
            u"Cast(a As Interval Day(2) To Second(3)), Cast(a As Interval Second(2, 3)), Cast(a As s.my_type)");
}

TEST_F(SQL92GrammarTest, SpecialFunctions) {
  EXPECT_EQ(Print(u"SELECT EXTRACT(timezone_hour FROM d), substring(a FROM 2), substring(a, 1, 2), "
                  u"position(a), coalesce(a, b), CASE WHEN a = 1 THEN 2 WHEN a = 2 THEN 3 ELSE 4 END"),
            u"Select Extract(TimeZone_Hour From d), SubString(a From 2), SubString(a, 1, 2), Position(a), "
            u"Coalesce(a, b), Case When a = 1 Then 2 When a = 2 Then 3 Else 4 End");
  EXPECT_TRUE(Holds(Expression(u"extract(year from d)"),
                    "  TastNodeWithList\n"
                    "    TastTokenBuiltin \"Extract\"\n"
                    "    TastTokenSymbol \"(\"\n"
                    "    TastTokenKeyword \"Year\"\n"
                    "    TastTokenKeyword \"From\"\n"));
}

TEST_F(SQL92GrammarTest, QuantifiedComparisons) {
  EXPECT_TRUE(Holds(Logical(u"a > ALL (SELECT b FROM t)"), "TSQLExpressionCompWithSubQuery quantifier=0\n"));
  EXPECT_TRUE(Holds(Logical(u"a > SOME (SELECT b FROM t)"), "TSQLExpressionCompWithSubQuery quantifier=1\n"));
  EXPECT_TRUE(Holds(Logical(u"a !> ANY (SELECT b FROM t)"), "TSQLExpressionCompWithSubQuery quantifier=2\n"));
  EXPECT_TRUE(Holds(Logical(u"EXISTS (SELECT 1)"), "TSQLExpressionExists\n"));
  EXPECT_TRUE(Holds(Logical(u"a IN (SELECT b FROM t)"), "TSQLExpressionInSubQuery\n"));
}

// --- Limits ---

namespace {

WideString Nested(int depth, const WideString& inner) {
  return WideString(size_t(depth), u'(') + inner + WideString(size_t(depth), u')');
}

}  // namespace

TEST_F(SQL92GrammarTest, TwoHundredNestedBracketsParseOnASmallStack) {
  bool condition = false, expression = false;
  mvtest::RunOnStackOf(2 * 1024 * 1024, [&] {
    condition = Parses(u"SELECT a FROM t WHERE " + Nested(200, u"a = 1"));
    expression = Parses(u"SELECT " + Nested(200, u"a") + u" FROM t");
  });
  EXPECT_TRUE(condition);
  EXPECT_TRUE(expression);
}

TEST_F(SQL92GrammarTest, DeeperNestingIsAnOrdinarySyntaxError) {
  for (const WideString& text : {u"SELECT a FROM t WHERE " + Nested(2000, u"a = 1"), u"SELECT " + Nested(5000, u"a")}) {
    const auto e = mvtest::Thrown<EmvSQLError>([&] { context.ParseSelect(text); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->Kind, ekInvalidSelectStatement);
    EXPECT_EQ(e->Message().rfind(u"Invalid SELECT statement.\r\n Unexpected token ", 0), 0u);
  }
}

TEST_F(SQL92GrammarTest, BracketsLeftOpenInsideEachOthersSelectListsEndQuickly) {
  // Every "(" may open a sub-query or an expression, and each unclosed one
  // makes the alternatives try the rest again. The parser shares that work
  // and ends with the ordinary error; exploring every way on its own, it
  // meets its budget of rule calls and says that the statement is too complex.
  const WideString level = u"(((((((((SELECT e5, c8, b5 + 919 + c2, a7 + a((((((((((\n";
  WideString text = u"SELECT a FROM t WHERE ";
  for (int i = 0; i < 8; ++i) text += level;
  const auto e = mvtest::Thrown<EmvSQLError>([&] { context.ParseSelect(text); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->Message().rfind(u"Invalid SELECT statement.\r\n Unexpected token ", 0), 0u);
  context.ReferenceParsing = true;
  const auto budget = mvtest::Thrown<EmvSQLError>([&] { context.ParseSelect(text); });
  context.ReferenceParsing = false;
  ASSERT_TRUE(budget);
  EXPECT_EQ(budget->Message().rfind(u"Invalid SELECT statement.\r\n The statement is too complex to parse: ", 0), 0u);
  EXPECT_EQ(budget->Kind, ekInvalidSelectStatement);
  EXPECT_GT(budget->Pos, 0);
  // Closed properly, the same nesting parses.
  WideString closed = u"SELECT a FROM t WHERE x IN ";
  for (int i = 0; i < 8; ++i) closed += u"((SELECT e5, a7 + a(b) FROM t WHERE x IN ";
  closed += u"(1)";
  for (int i = 0; i < 8; ++i) closed += u"))";
  EXPECT_TRUE(Parses(closed));
}

TEST_F(SQL92GrammarTest, DoubledBracketsAroundSubQueriesFiftyDeep) {
  // Each level reads two ways (a bracketed sub-query, or a bracketed
  // expression holding one); the readings are settled once, not multiplied.
  struct Shape {
    const char* where;
    WideString (*level)(const WideString& inner, int i);
    const char16_t* innermost;
  };
  const Shape shapes[] = {
      {"select list", [](const WideString& inner, int) { return u"SELECT ((" + inner + u")) FROM t"; }, u"SELECT 1 FROM t"},
      {"IN", [](const WideString& inner, int) { return u"SELECT e FROM t WHERE x IN ((" + inner + u"))"; },
       u"SELECT e FROM t"},
      {"FROM", [](const WideString& inner, int) { return u"SELECT a FROM ((" + inner + u")) q"; }, u"SELECT a FROM t"},
  };
  for (const Shape& shape : shapes) {
    WideString text = shape.innermost;
    for (int i = 0; i < 50; ++i) text = shape.level(text, i);
    WideString print;
    ASSERT_NO_THROW(print = Print(text)) << shape.where;
    // Every level keeps its sub-query and both of its brackets.
    size_t selects = 0;
    for (size_t at = 0; (at = print.find(u"Select", at)) != WideString::npos; ++at) ++selects;
    EXPECT_EQ(selects, 51u) << shape.where;
    EXPECT_EQ(std::count(print.begin(), print.end(), u'('), 100) << shape.where;
    EXPECT_EQ(Print(print), print) << shape.where;
  }
}

TEST_F(SQL92GrammarTest, ASecondPassThatFailsAnywhereLeavesNoNodeBehind) {
  // The second pass is made to fail at each decision of the way in turn (a
  // decision no grammar has); whatever the actions had made by then is freed.
  const WideString statements[] = {
      u"SELECT DISTINCT a.b AS x, COUNT(*), SUM(c + 1) * 2, CASE WHEN d IS NULL THEN 'n' ELSE e END "
      u"FROM t1 a LEFT OUTER JOIN t2 b ON a.k = b.k JOIN (SELECT k FROM t3) c ON c.k = a.k "
      u"WHERE a.x BETWEEN 1 AND 2 AND NOT b.y LIKE 'z%' OR a.z IN (SELECT k FROM t4 UNION ALL SELECT 5) "
      u"GROUP BY a.b HAVING COUNT(*) > 1 ORDER BY 1 DESC",
      u"SELECT EXTRACT(YEAR FROM d), CAST(x AS DECIMAL(10, 2)), SUBSTRING(s FROM 1 FOR 2), {fn NOW()}, "
      u"{d '2001-01-01'}, :p, ? FROM t WHERE EXISTS (SELECT 1 FROM u) AND x = ANY (SELECT y FROM v)",
  };
  for (const WideString& text : statements) {
    // A whole parse first, so that the names the context keeps for its
    // look-ups (aggregates) are made before the counting starts.
    ASSERT_TRUE(Parses(text));
    int32_t decisions = 0;
    for (int32_t at = 1; at == 1 || at < decisions; ++at) {
      const int before = context.AstNodeCount();
      {
        TmvOwned<TmvBaseScanner> scanner = context.SyntaxProvider()->CreateScanner();
        scanner->Init(text);
        TmvOwned<TmvBaseParser> parser = context.SyntaxProvider()->CreateParser(scanner.get(), &context);
        ASSERT_TRUE(parser->FindWay(TmvParserEntry::peSelect)) << UTF8Encode(text);
        decisions = parser->Way->Count();
        parser->Way->Items(at)->Choice = 1000;
        EXPECT_THROW(parser->ParseSelect(), EmvQueryBuilderError) << "decision " << at;
      }
      ASSERT_EQ(context.AstNodeCount(), before) << "decision " << at << " of " << UTF8Encode(text);
    }
  }
}
