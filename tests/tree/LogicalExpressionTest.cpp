// Conditions: cosmetic printing under the condition formats, left sides
// taken out and put back, and the rewriting of conditions.
#include <gtest/gtest.h>

#include "TestProvider.h"
#include "TreeTestUtil.h"

using namespace mv;
using namespace mv::test;

namespace {

class Logical : public TreeTest {
 protected:
  WideString Where(TSQLExpressionItem* e) { return Cosmetic(e, piped, format); }
  Expr IsNull(Expr operand) {
    auto node = TastCreate<TSQLExpressionIsNull>(c());
    node->Expression.Set(std::move(operand));
    return node;
  }

  TSQLBuilderPiped piped;
  TSQLBuilderConditionFormat format;
};

}  // namespace

// --- Cosmetic printing (whole layouts under each condition format are
// FormatLayoutTest's; here what only shows on bare conditions) ---

TEST_F(Logical, BracketsAroundGroupsAndCriteria) {
  // An Or group inside an And always has brackets, even with AND groups bare.
  piped.SetParenthesizeANDGroups(false);
  auto e = And(c(), Eq(u"a", u"1"), Or(c(), Eq(u"b", u"2"), Eq(u"c", u"3")));
  EXPECT_EQ(Where(e.get()), u"a = 1 And (b = 2 Or c = 3)");
  // A single-item And at the top adds neither brackets nor a level, and an
  // empty condition prints nothing.
  piped.SetParenthesizeSingleCriterion(true);
  auto single = And(c(), Eq(u"a", u"1"));
  EXPECT_EQ(Where(single.get()), u"a = 1");
  auto empty = TastCreate<TSQLExpressionOr>(c());
  EXPECT_EQ(Where(empty.get()), u"");
  // The one-line builder: no break, and BuildSQL joins plainly.
  EXPECT_EQ(Fast(Or(c(), And(c(), Eq(u"a", u"1"), Eq(u"b", u"2")), Eq(u"c", u"3"))), u"a = 1 And b = 2 Or c = 3");
}

// --- Left expressions ---

TEST_F(Logical, LeftSideComesOutAndGoesBack) {
  auto column = Col(c(), {u"c"});
  auto criterion = Bin(Col(c(), {u"c"}), u"=", Num(c(), u"5"));
  criterion->RemoveLExpression(column.get());
  EXPECT_EQ(Fast(criterion), u"= 5");
  criterion->RestoreLExpression(column.get());
  EXPECT_EQ(Fast(criterion), u"c = 5");
  // Another expression is left alone.
  criterion->RemoveLExpression(Col(c(), {u"d"}).get());
  EXPECT_EQ(Fast(criterion), u"c = 5");

  auto conditions = And(c(), Bin(Col(c(), {u"c"}), u">", Num(c(), u"1")), Not(IsNull(Col(c(), {u"c"}))),
                        Br(Bin(Col(c(), {u"d"}), u"<", Num(c(), u"2"))));
  conditions->RemoveLExpression(column.get());
  EXPECT_EQ(Fast(conditions), u"> 1 And Not Is Null And (d < 2)");
  conditions->RestoreLExpression(column.get());
  EXPECT_EQ(Fast(conditions), u"c > 1 And Not c Is Null And (d < 2)");

  // A nested operation with a missing left side is restored too.
  auto nested = Bin(nullptr, u"=", Bin(nullptr, u"+", Num(c(), u"1")));
  nested->RestoreLExpression(column.get());
  EXPECT_EQ(Fast(nested), u"c = c + 1");
}

TEST_F(Logical, ExpressionsAreEqualWhenTheyPrintAlikeForTheServer) {
  provider.SetIdentCaseSens(icsSensitiveUpperCase);
  auto a = Bin(Col(c(), {u"T", u"A"}), u"=", Num(c(), u"1"));
  auto quoted = TastCreate<TSQLExpressionColumn>(c());
  quoted->Column.Set(TastCreate<TSQLObjectColumn>(c()));
  quoted->Column->AddName(u"A", true);
  quoted->Column->AddPrefix(u"T", true);
  auto b = Bin(std::move(quoted), u"=", Num(c(), u"1"));
  EXPECT_TRUE(IsExpressionsEqual(a.get(), b.get()));
  EXPECT_FALSE(IsExpressionsEqual(a.get(), Eq(u"a", u"2").get()));
  EXPECT_TRUE(IsExpressionsEqual(nullptr, nullptr));
  EXPECT_FALSE(IsExpressionsEqual(a.get(), nullptr));
}

TEST_F(Logical, WhatCountsAsLogical) {
  EXPECT_TRUE(Eq(u"a", u"1")->IsLogical());
  EXPECT_FALSE(Bin(Col(c(), {u"a"}), u"+", Num(c(), u"1"))->IsLogical());
  EXPECT_FALSE(Bin(Col(c(), {u"a"}), u"!=", Num(c(), u"1"))->IsLogical());  // not among the comparison operators
  EXPECT_TRUE(Br(Eq(u"a", u"1"))->IsLogical());
  EXPECT_FALSE(Br(Col(c(), {u"a"}))->IsLogical());
  EXPECT_FALSE(TastCreate<TSQLExpressionBrackets>(c())->IsLogical());
  EXPECT_TRUE(Not(Col(c(), {u"a"}))->IsLogical());
  EXPECT_TRUE(LogicalFn(c(), u"f")->IsLogical());
  EXPECT_FALSE(TastCreate<TSQLExpressionCompWithSubQuery>(c())->IsLogical());
  EXPECT_TRUE(TastCreate<TSQLExpressionExists>(c())->IsLogical());
}

// --- FindExpressionItem ---

TEST_F(Logical, FindExpressionItemGivesTheExpressionOfACondition) {
  TSQLExpressionItem* found = nullptr;
  Expr criterion = Eq(u"c", u"5");
  TSQLExpressionItem* left = static_cast<TSQLExpressionOperatorBinary*>(criterion.get())->Expression.get();
  Expr same = TSQLExpressionItem::FindExpressionItem(std::move(criterion), found);
  EXPECT_EQ(found, left);
  EXPECT_EQ(Fast(same), u"c = 5");

  // A bare value becomes "value = True".
  Expr bare = Col(c(), {u"flag"});
  TSQLExpressionItem* raw = bare.get();
  Expr wrapped = TSQLExpressionItem::FindExpressionItem(std::move(bare), found);
  EXPECT_EQ(found, raw);
  EXPECT_EQ(Fast(wrapped), u"flag = True");

  // NOT x of a bare logical function is "x = False"; the Not goes.
  Expr negated = Not(LogicalFn(c(), u"f"));
  Expr result = TSQLExpressionItem::FindExpressionItem(std::move(negated), found);
  EXPECT_TRUE(TmvCast<TSQLExpressionOperatorBinary>(result.get()));
  EXPECT_EQ(Fast(result), u"f() = False");
  EXPECT_EQ(Fast(found), u"f()");

  // Collections and brackets look at their first operand.
  Expr collection = And(c(), Col(c(), {u"x"}), Eq(u"y", u"1"));
  Expr sameCollection = TSQLExpressionItem::FindExpressionItem(std::move(collection), found);
  EXPECT_EQ(Fast(sameCollection), u"x = True And y = 1");
  EXPECT_EQ(Fast(found), u"x");
  Expr brackets = Br(Col(c(), {u"z"}));
  Expr sameBrackets = TSQLExpressionItem::FindExpressionItem(std::move(brackets), found);
  EXPECT_EQ(Fast(sameBrackets), u"(z = True)");
  // NOT of a predicate keeps its Not.
  Expr notPredicate = Not(Eq(u"a", u"1"));
  Expr kept = TSQLExpressionItem::FindExpressionItem(std::move(notPredicate), found);
  EXPECT_EQ(Fast(kept), u"Not a = 1");
  EXPECT_EQ(Fast(found), u"a");
}

// --- Rewriting ---

TEST_F(Logical, TruthComparisonsOfLogicalValuesAreUndone) {
  Expr t = TransformExpression(Bin(LogicalFn(c(), u"f"), u"=", Kw(c(), u"TRUE")));
  EXPECT_EQ(Fast(t), u"f()");
  Expr f = TransformExpression(Bin(LogicalFn(c(), u"f"), u"=", Kw(c(), u"False")));
  EXPECT_EQ(Fast(f), u"Not f()");
  // A value that is not logical keeps its comparison.
  Expr kept = TransformExpression(Bin(Col(c(), {u"x"}), u"=", Kw(c(), u"True")));
  EXPECT_EQ(Fast(kept), u"x = True");
  // Inside collections, Not and brackets, from the last item to the first.
  Expr nested = TransformExpression(And(c(), Bin(LogicalFn(c(), u"f"), u"=", Kw(c(), u"True")),
                                        Not(Br(Bin(LogicalFn(c(), u"g"), u"=", Kw(c(), u"False"))))));
  EXPECT_EQ(Fast(nested), u"f() And Not (Not g())");
  // Only "=" with a single truth keyword.
  Expr other = TransformExpression(Bin(LogicalFn(c(), u"f"), u"<>", Kw(c(), u"True")));
  EXPECT_EQ(Fast(other), u"f() <> True");
}

TEST_F(Logical, DoubleNegationGoes) {
  EXPECT_EQ(Fast(SimplifyLogicalExpression(Not(Not(Col(c(), {u"a"}))))), u"a");
  EXPECT_EQ(Fast(SimplifyLogicalExpression(Not(Br(Not(Col(c(), {u"a"})))))), u"a");
  EXPECT_EQ(Fast(SimplifyLogicalExpression(Not(Not(Not(Col(c(), {u"a"})))))), u"Not a");
  // Anything else is returned as it is.
  EXPECT_EQ(Fast(SimplifyLogicalExpression(Br(Eq(u"a", u"1")))), u"(a = 1)");
}

TEST_F(Logical, NegationMovesIntoCollections) {
  Expr e = SimplifyLogicalExpression(Not(Br(And(c(), Eq(u"a", u"1"), Eq(u"b", u"2")))));
  ASSERT_TRUE(TmvCast<TSQLExpressionOr>(e.get()));
  EXPECT_EQ(Fast(e), u"Not a = 1 Or Not b = 2");
  Expr o = SimplifyLogicalExpression(Not(Or(c(), Col(c(), {u"a"}), Not(Col(c(), {u"b"})))));
  ASSERT_TRUE(TmvCast<TSQLExpressionAnd>(o.get()));
  EXPECT_EQ(Fast(o), u"Not a And b");
}

TEST_F(Logical, CollectionsFlattenAndKeepBracketsOnlyAroundOrInAnd) {
  // (a AND b) AND c: three items.
  Expr flat = SimplifyLogicalExpression(And(c(), Br(And(c(), Eq(u"a", u"1"), Eq(u"b", u"2"))), Eq(u"c", u"3")));
  ASSERT_EQ(static_cast<TSQLExpressionAnd*>(flat.get())->GetCount(), 3);
  EXPECT_EQ(Fast(flat), u"a = 1 And b = 2 And c = 3");
  // (a OR b) AND c keeps its brackets.
  Expr kept = SimplifyLogicalExpression(And(c(), Br(Or(c(), Eq(u"a", u"1"), Eq(u"b", u"2"))), Br(Eq(u"c", u"3"))));
  ASSERT_EQ(static_cast<TSQLExpressionAnd*>(kept.get())->GetCount(), 2);
  EXPECT_EQ(Fast(kept), u"(a = 1 Or b = 2) And c = 3");
  // In an Or all brackets go, also inside its And groups (but around an Or).
  Expr inOr = SimplifyLogicalExpression(
      Or(c(), Br(And(c(), Br(Eq(u"a", u"1")), Br(Or(c(), Eq(u"b", u"2"), Eq(u"x", u"0"))))), Br(Eq(u"c", u"3"))));
  EXPECT_EQ(Fast(inOr), u"a = 1 And (b = 2 Or x = 0) Or c = 3");
  EXPECT_EQ(Where(inOr.get()), u"(a = 1 And (b = 2 Or x = 0)) Or\r\nc = 3");
  // A collection of one item gives way to the item.
  Expr single = SimplifyLogicalExpression(Or(c(), And(c(), Eq(u"a", u"1")), Eq(u"b", u"2")));
  EXPECT_EQ(static_cast<TSQLExpressionOr*>(single.get())->GetCount(), 2);
  EXPECT_EQ(Fast(single), u"a = 1 Or b = 2");
}

TEST_F(Logical, CollectionWhoseItemsVanishDisappears) {
  Expr e = SimplifyLogicalExpression(
      And(c(), TastCreate<TSQLExpressionOr>(c()), Br(TastCreate<TSQLExpressionAnd>(c()))));
  EXPECT_EQ(e, nullptr);
  EXPECT_EQ(context.AstNodeCount(), 0);
}

TEST_F(Logical, BracketsAreRemovedAndExtracted) {
  Expr e = Br(Br(Eq(u"a", u"1")));
  TSQLExpressionItem* inner = ExpressionRemoveBrackets(e.get());
  EXPECT_EQ(Fast(inner), u"a = 1");
  EXPECT_EQ(ExpressionGetTompostBinaryOperator(e.get()), inner);
  EXPECT_EQ(ExpressionGetTompostBinaryOperator(Br(Col(c(), {u"a"})).get()), nullptr);
  EXPECT_EQ(ExpressionRemoveBrackets(nullptr), nullptr);
  Expr cut = ExpressionExtractFromBrackets(e);
  EXPECT_EQ(cut.get(), inner);
  ASSERT_TRUE(e);  // the shell stays with the caller
  EXPECT_EQ(Fast(e), u"(())");
  Expr plain = Eq(u"b", u"2");
  Expr same = ExpressionExtractFromBrackets(plain);
  EXPECT_FALSE(plain);
  EXPECT_EQ(Fast(same), u"b = 2");
  // Conditions enter the model without outer brackets, simplified.
  Expr loaded = PrepareLogicalExpressionForLoading(Br(Br(And(c(), Br(And(c(), Eq(u"a", u"1"))), Eq(u"b", u"2")))));
  EXPECT_EQ(Fast(loaded), u"a = 1 And b = 2");
}

TEST_F(Logical, TakeItemsFromMovesItemsAndTheExtender) {
  auto from = And(c(), Eq(u"a", u"1"), Eq(u"b", u"2"));
  auto to = TastCreate<TSQLExpressionOr>(c());
  to->Add(Eq(u"z", u"0"));
  to->TakeItemsFrom(*static_cast<TSQLExpressionLogicalCollection*>(from.get()), true);
  EXPECT_EQ(Fast(to), u"z = 0 Or Not a = 1 Or Not b = 2");
  EXPECT_EQ(static_cast<TSQLExpressionAnd*>(from.get())->GetCount(), 0);
}
