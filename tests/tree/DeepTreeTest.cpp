// Trees as deep as they are long: long operator sequences (left and right
// nested), long runs of Not and unary minus, collections nested in each
// other. Every operation runs on a thread with a small stack, where
// recursion that grows with the depth overflows at once; nesting that is
// still printed recursively ends with a clear error at the limit.
#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <string>

#include "OnStackOf.h"
#include "ReferenceDialect.h"
#include "TestNodes.h"
#include "TestProvider.h"
#include "TreeTestUtil.h"
#include "dialects/EngineInit.h"
#include "support/Exceptions.h"
#include "tree/NestingGuard.h"
#include "tree/NodeRegistry.h"

using namespace mv;
using namespace mv::test;

namespace {

// Small enough that a few thousand nested calls of any tree operation
// overflow it, also under the address sanitizer.
constexpr size_t kSmallStack = 256 * 1024;

// Runs `work` on a thread with a stack of `bytes`; an exception that leaves
// it fails the test.
void OnStackOf(size_t bytes, const std::function<void()>& work) {
  std::string failure;
  mvtest::RunOnStackOf(bytes, [&] {
    try {
      work();
    } catch (const std::exception& e) {
      failure = e.what();
    }
  });
  EXPECT_EQ(failure, "");
}

void OnSmallStack(const std::function<void()>& work) { OnStackOf(kSmallStack, work); }

WideString Number(int i) { return IntToWide(i); }

// "1 op 2 op ... op n".
WideString Sequence(int n, const WideString& op) {
  WideString text = u"1";
  for (int i = 2; i <= n; ++i) text += u" " + op + u" " + Number(i);
  return text;
}

// `count` times `unit`, then `tail`.
WideString Repeated(int count, const WideString& unit, const WideString& tail) {
  WideString text;
  text.reserve(size_t(count) * unit.size() + tail.size());
  for (int i = 0; i < count; ++i) text += unit;
  return text + tail;
}

int CountBelow(TastNodeBase* root) {
  TastNodeBaseList all;
  root->GetMyChildrenRecursive(all);
  return int(all.size());
}

// Counts the nodes a visitor enters and exits, and the deepest nesting.
class CountingVisitor : public TastNodeVisitor {
 public:
  int entered = 0, exited = 0, open = 0, deepest = 0;

 protected:
  TmvOwned<TmvObject> EnterIntoNode(TastNodeBase*, TastNodeBase*, TmvObject*) override {
    ++entered;
    deepest = std::max(deepest, ++open);
    return nullptr;
  }
  void ExitFromNode(TastNodeBase*, TastNodeBase*, TmvObject*, TmvObject*) override {
    ++exited;
    --open;
  }
};

class DeepTree : public ::testing::Test {
 protected:
  DeepTree() { context.SetSyntaxProvider(&provider); }
  ~DeepTree() override { context.SetSyntaxProvider(nullptr); }

  TmvBaseSQLContext* c() { return &context; }

  // 1 op 2 op ... op n, nested to the left as the parser nests it.
  Expr LeftSequence(int n, const WideString& op) {
    Expr e = Num(c(), u"1");
    for (int i = 2; i <= n; ++i) e = Bin(std::move(e), op, Num(c(), Number(i)));
    return e;
  }

  // The same nested to the right: 1 op (2 op (... op n)).
  Expr RightSequence(int n, const WideString& op) {
    Expr e = Num(c(), Number(n));
    for (int i = n - 1; i >= 1; --i) e = Bin(Num(c(), Number(i)), op, std::move(e));
    return e;
  }

  template <class T>
  Expr Prefixed(int count, const WideString& op, Expr e) {
    for (int i = 0; i < count; ++i) {
      auto prefix = TastCreate<T>(c());
      prefix->Operator.Set(TastCreate<TSQLOperator>(c(), op));
      prefix->Expression.Set(std::move(e));
      e = std::move(prefix);
    }
    return e;
  }

  Expr Nots(int count, Expr e) {
    for (int i = 0; i < count; ++i) e = Not(std::move(e));
    return e;
  }

  Expr Brackets(int count, Expr e) {
    for (int i = 0; i < count; ++i) e = Br(std::move(e));
    return e;
  }

  Expr IsNull(Expr e) {
    auto test = TastCreate<TSQLExpressionIsNull>(c());
    test->Expression.Set(std::move(e));
    return test;
  }

  // f(f(...f(1)...)): each level a function and its parameter list.
  Expr Calls(int depth) {
    Expr e = Num(c(), u"1");
    for (int i = 0; i < depth; ++i) {
      auto call = TastCreate<TSQLExpressionFunction>(c());
      call->Name.Set(Name(c(), {u"f"}));
      call->Params.Set(TastCreate<TSQLExpressionsList>(c()));
      call->Params->Add(std::move(e));
      e = std::move(call);
    }
    return e;
  }

  // Print, clone into this and into another context, assign, compare, walk,
  // simplify and free `e` on a small stack; the prints must read `expected`.
  void EveryOperation(Expr e, const WideString& expected) {
    OnSmallStack([&] {
      EXPECT_EQ(Fast(e), expected);
      const int nodes = CountBelow(e.get());

      Expr copy = e->CloneAs<TSQLExpressionItem>();
      EXPECT_EQ(Fast(copy), expected);
      EXPECT_EQ(CountBelow(copy.get()), nodes);
      EXPECT_TRUE(IsExpressionsEqual(e.get(), copy.get()));
      TmvBaseSQLContext other;
      Expr elsewhere = e->CloneAs<TSQLExpressionItem>(&other);
      EXPECT_EQ(elsewhere->SQLContext(), &other);
      EXPECT_EQ(Fast(elsewhere), expected);
      elsewhere.reset();

      // Assign over a tree of the same class that already has children.
      Expr assigned(static_cast<TSQLExpressionItem*>(e->NodeClass().CreateRaw(c())));
      assigned->Assign(*copy);
      EXPECT_EQ(Fast(assigned), expected);
      assigned->Assign(*e);
      EXPECT_EQ(Fast(assigned), expected);
      assigned.reset();

      int depthFirst = 0, siblingFirst = 0;
      copy->TraverseASTTreeDepthFirst([&](TastNodeBase*) { ++depthFirst; });
      copy->TraverseASTTreeSiblingFirst([&](TastNodeBase*) { ++siblingFirst; });
      EXPECT_EQ(depthFirst, nodes);
      EXPECT_EQ(siblingFirst, nodes);
      CountingVisitor visitor;
      visitor.Visit(copy.get(), nullptr);
      EXPECT_EQ(visitor.entered, nodes + 1);
      EXPECT_EQ(visitor.exited, nodes + 1);
      EXPECT_EQ(visitor.open, 0);

      copy->SimplifyTreeRecursive();
      copy->RestoreColumnPrefixRecursive(true);
      TSQLFromSourceList sources;
      copy->GetReferencedDatasourcesRecursive(sources);
      TSQLObjectColumnList columns;
      copy->GetReferencedColumnsRecursive(columns);
      auto source = FromObject(c(), {u"t"});
      EXPECT_FALSE(copy->ReplaceReferencesToDatasourceRecursive(source.get(), nullptr));
      EXPECT_TRUE(copy->RemoveReferencesToDatasource(source.get()));
      copy->MoveSubQueryInProxyRecursive(nullptr, TestProxyClass());
      EXPECT_EQ(Fast(copy), expected);

      copy.reset();
      e.reset();
    });
  }

  TTestSyntaxProvider provider;
  TmvBaseSQLContext context;
};

}  // namespace

// --- Operator sequences ---

// Suites whose names end in Slow carry the CTest label slow.
using DeepTreeSlow = DeepTree;

TEST_F(DeepTree, ShortSequencesPrintAsTheLongOnesAreExpectedTo) {
  EXPECT_EQ(Fast(LeftSequence(3, u"+")), u"1 + 2 + 3");
  EXPECT_EQ(Fast(RightSequence(3, u"||")), u"1 || 2 || 3");
  EXPECT_EQ(Fast(Nots(3, Num(c(), u"1"))), u"Not Not Not 1");
  EXPECT_EQ(Fast(Prefixed<TSQLExpressionOperatorPrefix>(3, u"-", Num(c(), u"1"))), u"- - -1");
  EXPECT_EQ(Fast(Prefixed<TSQLExpressionOperatorPrefixWithSpace>(2, u"~", Num(c(), u"1"))), u"~ ~ 1");
  EXPECT_EQ(Fast(Brackets(3, Num(c(), u"1"))), u"(((1)))");
}

TEST_F(DeepTreeSlow, AHundredThousandTermsOfEachOperator) {
  for (const char16_t* op : {u"+", u"||", u"*", u"-", u"/"}) {
    SCOPED_TRACE(UTF8Encode(op));
    EveryOperation(LeftSequence(100'000, op), Sequence(100'000, op));
  }
}

TEST_F(DeepTreeSlow, AHundredThousandTermsNestedToTheRight) {
  EveryOperation(RightSequence(100'000, u"+"), Sequence(100'000, u"+"));
}

TEST_F(DeepTreeSlow, AMillionTerms) {
  EveryOperation(LeftSequence(1'000'000, u"+"), Sequence(1'000'000, u"+"));
}

TEST_F(DeepTreeSlow, MixedOperatorsAndMixedNesting) {
  // 1 + 2 * 3 - 4 * 5 ...: products to the right of a sum to the left.
  const int n = 50'000;
  Expr e = Num(c(), u"1");
  WideString expected = u"1";
  for (int i = 2; i + 1 <= n; i += 2) {
    const WideString op = i % 4 ? u"-" : u"+";
    e = Bin(std::move(e), op, Bin(Num(c(), Number(i)), u"*", Num(c(), Number(i + 1))));
    expected += u" " + op + u" " + Number(i) + u" * " + Number(i + 1);
  }
  EveryOperation(std::move(e), expected);

  // Alternately nested to the left and to the right, through brackets,
  // prefixes and member access: every node prints in parts.
  Expr zigzag = Num(c(), u"0");
  WideString text = u"0";
  for (int i = 1; i <= 30'000; ++i) {
    if (i % 2) {
      zigzag = Br(Bin(std::move(zigzag), u"+", Num(c(), Number(i))));
      // The blank a prefix asks for before its operator stays after "(".
      text = (text[0] == u'-' ? u"( " : u"(") + text + u" + " + Number(i) + u")";
    } else {
      zigzag = Prefixed<TSQLExpressionOperatorPrefix>(1, u"-", Bin(Num(c(), Number(i)), u"*", std::move(zigzag)));
      text = u"-" + Number(i) + u" * " + text;
    }
  }
  EveryOperation(std::move(zigzag), text);
}

// --- Unary chains ---

TEST_F(DeepTreeSlow, LongRunsOfNotMinusAndBrackets) {
  const int n = 100'000;
  EveryOperation(Nots(n, Num(c(), u"1")), Repeated(n, u"Not ", u"1"));
  EveryOperation(Prefixed<TSQLExpressionOperatorPrefix>(n, u"-", Num(c(), u"1")), Repeated(n - 1, u"- ", u"-1"));
  EveryOperation(Prefixed<TSQLExpressionOperatorPrefixWithSpace>(n, u"~", Num(c(), u"1")), Repeated(n, u"~ ", u"1"));
  EveryOperation(Brackets(n, Num(c(), u"1")), Repeated(n, u"(", u"1") + WideString(size_t(n), u')'));
  // A million Not, as the parser never builds them but a caller may.
  EveryOperation(Nots(1'000'000, Num(c(), u"1")), Repeated(1'000'000, u"Not ", u"1"));
}

// --- Conditions ---

TEST_F(DeepTreeSlow, AndOrOfAHundredThousandConditions) {
  const int n = 100'000;
  // Flat: a = 1 And b = 2 Or ..., as the parser collects them.
  auto disjunction = TastCreate<TSQLExpressionOr>(c());
  WideString flat;
  for (int i = 0; i < n; i += 2) {
    disjunction->Add(And(c(), Bin(Col(c(), {u"a"}), u"=", Num(c(), Number(i))),
                         Bin(Col(c(), {u"b"}), u"<>", Num(c(), Number(i + 1)))));
    flat += (i ? u" Or a = " : u"a = ") + Number(i) + u" And b <> " + Number(i + 1);
  }
  EveryOperation(std::move(disjunction), flat);

  // Nested: x0 And (x1 Or (x2 And ...)) without brackets, as a caller may build it.
  Expr nested = Col(c(), {u"x"});
  WideString text = u"x";
  for (int i = 0; i < n; ++i) {
    if (i % 2)
      nested = Or(c(), Col(c(), {u"y"}), std::move(nested));
    else
      nested = And(c(), Col(c(), {u"y"}), std::move(nested));
    text = (i % 2 ? u"y Or " : u"y And ") + text;
  }
  EveryOperation(std::move(nested), text);
}

TEST_F(DeepTreeSlow, RewritingConditionsRunsInLoops) {
  OnSmallStack([&] {
    const int n = 100'000;
    // An even number of Not cancels out, an odd one leaves one.
    Expr even = SimplifyLogicalExpression(Nots(n, LogicalFn(c(), u"f")));
    EXPECT_EQ(Fast(even), u"f()");
    Expr odd = SimplifyLogicalExpression(Nots(n + 1, LogicalFn(c(), u"f")));
    EXPECT_EQ(Fast(odd), u"Not f()");

    // And in And in And ... flattens to one And; And and Or alternating
    // in brackets stays nested, with brackets only around Or in And.
    Expr same = Col(c(), {u"x"});
    for (int i = 0; i < n; ++i) same = And(c(), LogicalFn(c(), u"f"), Br(std::move(same)));
    same = SimplifyLogicalExpression(std::move(same));
    auto* conjunction = TmvCast<TSQLExpressionAnd>(same.get());
    ASSERT_TRUE(conjunction);
    EXPECT_EQ(conjunction->GetCount(), n + 1);
    Expr alternating = Col(c(), {u"x"});
    WideString expected = u"x";
    for (int i = 0; i < 20'000; ++i) {
      if (i % 2) {
        alternating = And(c(), LogicalFn(c(), u"f"), Br(std::move(alternating)));
        expected = u"f() And (" + expected + u")";
      } else {
        alternating = Or(c(), LogicalFn(c(), u"g"), Br(std::move(alternating)));
        expected = u"g() Or " + expected;
      }
    }
    alternating = SimplifyLogicalExpression(std::move(alternating));
    EXPECT_EQ(Fast(alternating), expected);

    // NOT (a AND NOT (b AND NOT ...)): De Morgan at every level.
    Expr morgan = LogicalFn(c(), u"z");
    for (int i = 0; i < 20'000; ++i) morgan = Not(Br(And(c(), LogicalFn(c(), u"f"), std::move(morgan))));
    morgan = SimplifyLogicalExpression(std::move(morgan));
    WideString alternated = u"z()";
    // Innermost first: the bottom level is reached through NOT NOT, and is an And.
    for (int i = 0; i < 20'000; ++i) alternated = (i % 2 ? u"Not f() Or " : u"f() And ") + alternated;
    EXPECT_EQ(Fast(morgan), alternated);

    // x = TRUE at the bottom of a long run of Not and brackets.
    Expr truth = Bin(LogicalFn(c(), u"f"), u"=", Kw(c(), u"True"));
    Expr wrapped = TransformExpression(Nots(n, Brackets(n, std::move(truth))));
    EXPECT_EQ(Fast(wrapped), Repeated(n, u"Not ", Repeated(n, u"(", u"f()") + WideString(size_t(n), u')')));
  });
}

TEST_F(DeepTreeSlow, FindingAndStrippingTheLeftSideGoesDownInALoop) {
  OnSmallStack([&] {
    const int n = 100'000;
    // Not ... Not (((a Is Null))): the left side is a, at the bottom.
    Expr condition = Nots(n, Brackets(n, IsNull(Col(c(), {u"a"}))));
    TSQLExpressionItem* left = nullptr;
    condition = TSQLExpressionItem::FindExpressionItem(std::move(condition), left);
    ASSERT_TRUE(left);
    EXPECT_EQ(Fast(left), u"a");
    const WideString closing(size_t(n), u')');
    EXPECT_EQ(Fast(condition), Repeated(n, u"Not ", Repeated(n, u"(", u"a Is Null") + closing));

    Expr a = Col(c(), {u"a"});
    condition->RemoveLExpression(a.get());
    // The blank that stood before "Is" stays after the bracket.
    EXPECT_EQ(Fast(condition), Repeated(n, u"Not ", Repeated(n, u"(", u" Is Null") + closing));
    condition->RestoreLExpression(a.get());
    EXPECT_EQ(Fast(condition), Repeated(n, u"Not ", Repeated(n, u"(", u"a Is Null") + closing));
    EXPECT_TRUE(condition->IsLogical());
    EXPECT_FALSE(Brackets(n, Col(c(), {u"a"}))->IsLogical());

    // A bare value under a long run of Not: the innermost Not goes and the
    // value is compared with False.
    Expr bare = Nots(n, LogicalFn(c(), u"f"));
    bare = TSQLExpressionItem::FindExpressionItem(std::move(bare), left);
    EXPECT_EQ(Fast(left), u"f()");
    EXPECT_EQ(Fast(bare), Repeated(n - 1, u"Not ", u"f() = False"));

    // Restoring passes on to the right side of a long right-nested sequence.
    Expr right = IsNull(nullptr);
    for (int i = 0; i < n; ++i) right = Bin(Col(c(), {u"b"}), u"=", std::move(right));
    right->RestoreLExpression(a.get());
    EXPECT_EQ(Fast(right), Repeated(n, u"b = ", u"a Is Null"));
  });
}

// --- Parsed text ---

namespace {

class DeepParsedTree : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  DeepParsedTree() { context.SetSyntaxProvider(&provider); }
  ~DeepParsedTree() override { context.SetSyntaxProvider(nullptr); }

  // "SELECT a1 op a2 ... FROM t" with n terms, in the given words.
  static WideString Statement(int n, const WideString& op, const WideString& select = u"SELECT",
                              const WideString& from = u"FROM") {
    WideString text = select + u" a1";
    for (int i = 2; i <= n; ++i) text += u" " + op + u" a" + Number(i);
    return text + u" " + from + u" t";
  }

  void ParseAndOperate(int n, const WideString& op) {
    TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(Statement(n, op));
    ASSERT_TRUE(statement);
    const WideString want = Statement(n, op, u"Select", u"From");
    OnSmallStack([&] {
      EXPECT_EQ(Fast(statement), want);
      TmvOwned<TSQLSelectStatement> copy = statement->CloneAs<TSQLSelectStatement>();
      EXPECT_EQ(Fast(copy), want);
      copy->SimplifyTreeRecursive();
      copy->RestoreColumnPrefixRecursive(true);
      TSQLObjectColumnList columns;
      copy->GetReferencedColumnsRecursive(columns);
      EXPECT_EQ(int(columns.size()), n);
      copy.reset();
      statement.reset();
    });
  }

  mvtest::TReferenceDialectProvider provider;
  TmvBaseSQLContext context;
};

}  // namespace

using DeepParsedTreeSlow = DeepParsedTree;

TEST_F(DeepParsedTreeSlow, AHundredThousandTermsOfEachOperator) {
  for (const char16_t* op : {u"+", u"||", u"*"}) {
    SCOPED_TRACE(UTF8Encode(op));
    ParseAndOperate(100'000, op);
  }
}

TEST_F(DeepParsedTreeSlow, ConditionsOfAHundredThousandTerms) {
  const int n = 100'000;
  WideString text = u"SELECT a FROM t WHERE NOT a = 0";
  // The printer puts each And of more than one term inside an Or in brackets.
  WideString printed = u"Select a From t Where ";
  WideString group = u"Not a = 0";
  int terms = 1;
  auto closeGroup = [&] { printed += terms > 1 ? u"(" + group + u")" : group; };
  for (int i = 1; i < n; ++i) {
    text += (i % 3 ? u" AND a + " : u" OR a || ") + Number(i) + u" = b";
    if (i % 3) {
      group += u" And a + " + Number(i) + u" = b";
      ++terms;
    } else {
      closeGroup();
      printed += u" Or ";
      group = u"a || " + Number(i) + u" = b";
      terms = 1;
    }
  }
  closeGroup();
  TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(text);
  ASSERT_TRUE(statement);
  OnSmallStack([&] {
    EXPECT_EQ(Fast(statement), printed);
    auto* select = TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
    ASSERT_TRUE(select);
    Expr where = PrepareLogicalExpressionForLoading(select->Where.Release());
    EXPECT_TRUE(where->IsLogical());
    statement.reset();
  });
}

// --- The limit of what still recurses ---

TEST_F(DeepTree, PrintingNestedCallsEndsWithAnErrorPastTheLimit) {
  // Each call is two levels (the call and its parameter list).
  const int fits = (TastMaxNestingDepth - 1) / 2;
  OnStackOf(64 * 1024 * 1024, [&] {
    Expr inside = Calls(fits);
    WideString expected = Repeated(fits, u"f(", u"1") + WideString(size_t(fits), u')');
    EXPECT_EQ(Fast(inside), expected);
    EXPECT_EQ(TastNestingGuard::Depth(), 0);

    Expr deep = Calls(100'000);
    try {
      Fast(deep);
      ADD_FAILURE() << "no error";
    } catch (const EmvQueryBuilderError& e) {
      EXPECT_EQ(e.Message(), u"The expression is nested too deeply: more than " +
                                 Number(TastMaxNestingDepth) + u" levels");
    }
    EXPECT_EQ(TastNestingGuard::Depth(), 0);
    // Everything else still works on it, and a smaller part of it prints.
    Expr copy = deep->CloneAs<TSQLExpressionItem>();
    EXPECT_EQ(CountBelow(copy.get()), CountBelow(deep.get()));
    deep.reset();
    copy.reset();
  });
}

TEST_F(DeepTree, CosmeticPrintingOfNestedConditionsEndsWithAnErrorPastTheLimit) {
  OnStackOf(64 * 1024 * 1024, [&] {
    Expr deep = Brackets(100'000, Bin(Col(c(), {u"a"}), u"=", Num(c(), u"1")));
    TSQLBuilderFast builder;
    TSQLBuilderConditionFormat format;
    EXPECT_THROW(Cosmetic(deep.get(), builder, format), EmvQueryBuilderError);
    EXPECT_EQ(TastNestingGuard::Depth(), 0);
    // Plain printing goes through brackets in a loop.
    EXPECT_EQ(Fast(deep), Repeated(100'000, u"(", u"a = 1") + WideString(100'000, u')'));
    Expr shallow = Brackets(100, Bin(Col(c(), {u"a"}), u"=", Num(c(), u"1")));
    EXPECT_EQ(Cosmetic(shallow.get(), builder, format), Repeated(100, u"(", u"a = 1") + WideString(100, u')'));
  });
}

TEST_F(DeepTreeSlow, FreeingALongChainOnASmallStack) {
  OnSmallStack([&] {
    // Straight from the fields' destructors, from a list, and through Reset.
    Expr chain = LeftSequence(300'000, u"+");
    chain.reset();
    auto list = TastCreate<TSQLExpressionsList>(c());
    list->Add(Nots(300'000, Num(c(), u"1")));
    list->Add(LeftSequence(1000, u"-"));
    list->Clear();
    list->Add(Nots(300'000, Num(c(), u"1")));
    list.reset();
    auto holder = TastCreate<TSQLExpressionNot>(c());
    holder->Expression.Set(RightSequence(300'000, u"*"));
    holder->Expression.Reset();
    // And in And in ... through the lists of collections.
    Expr nested = Col(c(), {u"x"});
    for (int i = 0; i < 300'000; ++i) nested = And(c(), std::move(nested));
    nested.reset();
  });
}
