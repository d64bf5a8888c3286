// What each expression class prints, through the one-line builder.
#include <gtest/gtest.h>

#include "TestProvider.h"
#include "TreeTestUtil.h"

using namespace mv;
using namespace mv::test;

namespace {

class ExpressionPrint : public TreeTest {
 protected:
  // Expression [op] with an operator child.
  template <class T>
  TmvOwned<T> WithOperator(Expr operand, WideStringView op) {
    auto node = Make<T>();
    node->Expression.Set(std::move(operand));
    node->Operator.Set(TastCreate<TSQLOperator>(&context, op));
    return node;
  }

  TmvOwned<TSQLTypeStandard> Type(const char16_t* word) {
    auto type = Make<TSQLTypeStandard>();
    type->Tokens.Set(Make<TastNodeWithList>());
    type->Tokens->AddKeyword(word);
    return type;
  }

  TmvOwned<TSQLExpressionsList> List(std::initializer_list<const char16_t*> numbers) {
    auto list = Make<TSQLExpressionsList>();
    for (const char16_t* n : numbers) list->Add(Num(&context, n));
    return list;
  }

  // Select <column> From <table>, a one-member sub-select.
  TmvOwned<TSQLSubSelectStatement> SubSelect(const char16_t* column, const char16_t* table) {
    return Select(&context).Items({column}).From(table).SubSelect();
  }

  template <class T>
  TmvOwned<T> Is(Expr operand, bool negated) {
    auto node = Make<T>();
    node->Expression.Set(std::move(operand));
    node->Negated = negated;
    return node;
  }
};

}  // namespace

TEST_F(ExpressionPrint, OperatorsAndTheirBlanks) {
  EXPECT_EQ(Fast(Bin(Col(c(), {u"t", u"a"}), u"=", Num(c(), u"1"))), u"t.a = 1");
  EXPECT_EQ(Fast(Bin(Num(c(), u"1"), u"+", WithOperator<TSQLExpressionOperatorPrefix>(Col(c(), {u"x"}), u"-"))),
            u"1 + -x");
  EXPECT_EQ(Fast(WithOperator<TSQLExpressionOperatorPrefix>(Col(c(), {u"x"}), u"-")), u"-x");
  EXPECT_EQ(Fast(WithOperator<TSQLExpressionOperatorPrefixWithSpace>(Col(c(), {u"x"}), u"~")), u"~ x");
  EXPECT_EQ(Fast(WithOperator<TSQLExpressionOperatorPostfix>(Col(c(), {u"n"}), u"!")), u"n!");
  EXPECT_EQ(Fast(Br(Bin(Col(c(), {u"a"}), u"||", Str(c(), u"'x'")))), u"(a || 'x')");
  EXPECT_EQ(Fast(Not(Col(c(), {u"a"}))), u"Not a");
}

TEST_F(ExpressionPrint, Casts) {
  auto cast = Make<TSQLExpressionCast>();
  cast->Expression.Set(Col(c(), {u"a"}));
  cast->TargetType.Set(Type(u"Int"));
  EXPECT_EQ(Fast(cast), u"Cast(a As Int)");
  auto castOperator = Make<TSQLExpressionCastOperator>();
  castOperator->Expression.Set(Col(c(), {u"a"}));
  castOperator->TargetType.Set(Type(u"Int"));
  EXPECT_EQ(Fast(castOperator), u"a::Int");
  auto convert = Make<TSQLExpressionConvert>();
  convert->Expression.Set(Col(c(), {u"a"}));
  convert->TargetType.Set(Type(u"VarChar"));
  EXPECT_EQ(Fast(convert), u"Convert(VarChar,a)");
  convert->Style.Set(Num(c(), u"112"));
  EXPECT_EQ(Fast(convert), u"Convert(VarChar,a,112)");
  auto reverse = Make<TSQLExpressionConvertReverse>();
  reverse->Expression.Set(Col(c(), {u"a"}));
  reverse->TargetType.Set(Type(u"Char"));
  EXPECT_EQ(Fast(reverse), u"Convert(a, Char)");
  auto user = Make<TSQLTypeUser>();
  user->Name.Set(Name(c(), {u"dbo", u"money"}));
  EXPECT_EQ(Fast(user), u"dbo.money");
}

TEST_F(ExpressionPrint, MemberAccess) {
  auto field = Make<TSQLExpressionFieldSelection>();
  field->Expression.Set(Br(Col(c(), {u"r"})));
  EXPECT_EQ(Fast(field), u"(r).*");
  field->Field.Set(Id(c(), u"f"));
  EXPECT_EQ(Fast(field), u"(r).f");
  auto call = Make<TSQLExpressionMethodCall>();
  call->Expression.Set(Col(c(), {u"shape"}));
  call->Method.Set(Id(c(), u"Area"));
  EXPECT_EQ(Fast(call), u"shape.Area");
}

TEST_F(ExpressionPrint, FunctionsAndBuiltInNames) {
  provider.builtinFunctions = {u"Left"};
  provider.reserved.push_back(u"left");
  context.NotifySyntaxProviderChanged();
  auto call = [&](const char16_t* name, TmvOwned<TSQLExpressionsList> params) {
    auto f = Make<TSQLExpressionFunction>();
    f->Name.Set(Name(c(), {name}));
    f->Params.Set(std::move(params));
    return f;
  };
  EXPECT_EQ(Fast(call(u"f", List({u"1", u"2"}))), u"f(1, 2)");
  EXPECT_EQ(Fast(call(u"f", nullptr)), u"f()");
  // A built-in name goes out as it is, word by word, never quoted; another
  // name that is reserved needs quotes.
  TSQLBuilderFast upper;
  upper.SetKeywordFormat(akfUpperCase);
  EXPECT_EQ(Print(call(u"left", List({u"1"})), upper), u"left(1)");
  provider.builtinFunctions.clear();
  context.NotifySyntaxProviderChanged();
  EXPECT_EQ(Fast(call(u"left", List({u"1"}))), u"\"LEFT\"(1)");

  auto substring = Make<TSQLExpressionFunctionSubString>();
  substring->Params.Set(List({u"1", u"2"}));
  substring->Params->Insert(0, Col(c(), {u"s"}));
  // A blank before the bracket after a length, none after a start alone:
  // the print order of SubString, which parses back to the same tree.
  EXPECT_EQ(Fast(substring), u"SubString(s From 1 For 2 )");
  substring->Params->Delete(2);
  EXPECT_EQ(Fast(substring), u"SubString(s From 1)");

  auto parameterless = Make<TSQLExpressionParameterlessFunction>();
  parameterless->Name.Set(TastCreate<TastTokenKeyword>(c(), u"Current_Date"));
  EXPECT_EQ(Fast(parameterless), u"Current_Date");
  auto variable = Make<TSQLExpressionVariable>();
  variable->Name.Set(Id(c(), u"version"));
  EXPECT_EQ(Fast(variable), u"@@version");
  auto parameter = Make<TSQLExpressionParameter>();
  parameter->Prefix.Set(TastCreate<TastTokenSymbol>(c(), u":"));
  parameter->Tail.Set(Id(c(), u"p"));
  EXPECT_EQ(Fast(parameter), u":p");
}

TEST_F(ExpressionPrint, Aggregates) {
  auto aggregate = [&](std::initializer_list<const char16_t*> name, Expr argument, uint8_t mode) {
    auto a = Make<TSQLExpressionAggregate>();
    a->Name.Set(Name(c(), name));
    a->Argument.Set(std::move(argument));
    a->Mode = mode;
    return a;
  };
  // Known aggregates are built-in words, written as they stand.
  EXPECT_EQ(Fast(aggregate({u"count"}, nullptr, 0)), u"count(*)");
  EXPECT_EQ(Fast(aggregate({u"Sum"}, Col(c(), {u"a"}), 1)), u"Sum(Distinct a)");
  EXPECT_EQ(Fast(aggregate({u"Avg"}, Col(c(), {u"a"}), 2)), u"Avg(Unique a)");
  // Another name prints as an object name: schema and name.
  auto custom = aggregate({u"dbo", u"ListAgg"}, Col(c(), {u"a"}), 0);
  custom->OrderBy.Set(Make<TSQLOrderByClause>());
  auto by = Make<TSQLOrderByItem>();
  by->Expression.Set(Col(c(), {u"b"}));
  by->Descending = true;
  custom->OrderBy->Add(std::move(by));
  EXPECT_EQ(Fast(custom), u"dbo.ListAgg(a Order By b Desc)");
  EXPECT_EQ(Fast(aggregate({u"db", u"dbo", u"agg"}, Col(c(), {u"a"}), 0)), u"db.dbo.agg(a)");
}

TEST_F(ExpressionPrint, CaseAndIf) {
  auto searched = Make<TSQLExpressionCaseFunction>();
  auto when = Make<TSQLCaseFunctionItem>();
  when->When.Set(Bin(Col(c(), {u"a"}), u"=", Num(c(), u"1")));
  when->Then.Set(Str(c(), u"'one'"));
  searched->Items.Add(std::move(when));
  searched->ElseValue.Set(Str(c(), u"'other'"));
  EXPECT_EQ(Fast(searched), u"Case When a = 1 Then 'one' Else 'other' End");
  auto simple = Make<TSQLExpressionCaseFunction>();
  simple->Subject.Set(Col(c(), {u"a"}));
  for (const char16_t* n : {u"1", u"2"}) {
    auto item = Make<TSQLCaseFunctionItem>();
    item->When.Set(Num(c(), n));
    item->Then.Set(Num(c(), n));
    simple->Items.Add(std::move(item));
  }
  EXPECT_EQ(Fast(simple), u"Case a When 1 Then 1 When 2 Then 2 End");
  // Break points of priority 0 before each branch: the last one before the
  // margin wins; the content is indented.
  TSQLBuilderPiped piped;
  piped.SetRightMargin(20);
  EXPECT_EQ(Print(simple, piped), u"Case a When 1 Then 1\r\n  When 2 Then 2 End");
  // The indent ends before "End", so a broken Case closes at its own column.
  piped.SetRightMargin(16);
  EXPECT_EQ(Print(simple, piped), u"Case a\r\n  When 1 Then 1\r\n  When 2 Then 2\r\nEnd");
  auto ifExpression = Make<TSQLExpressionIfExpression>();
  ifExpression->Condition.Set(Col(c(), {u"c"}));
  ifExpression->ThenValue.Set(Num(c(), u"1"));
  EXPECT_EQ(Fast(ifExpression), u"If c Then 1 EndIf");
  ifExpression->ElseValue.Set(Num(c(), u"2"));
  EXPECT_EQ(Fast(ifExpression), u"If c Then 1 Else 2 EndIf");
}

TEST_F(ExpressionPrint, IsPredicates) {
  EXPECT_EQ(Fast(Is<TSQLExpressionIsNull>(Col(c(), {u"a"}), false)), u"a Is Null");
  EXPECT_EQ(Fast(Is<TSQLExpressionIsNull>(Col(c(), {u"a"}), true)), u"a Is Not Null");
  EXPECT_EQ(Fast(Is<TSQLExpressionIsTrue>(Col(c(), {u"a"}), false)), u"a Is True");
  EXPECT_EQ(Fast(Is<TSQLExpressionIsFalse>(Col(c(), {u"a"}), true)), u"a Is Not False");
  EXPECT_EQ(Fast(Is<TSQLExpressionIsUnknown>(Col(c(), {u"a"}), false)), u"a Is Unknown");
  EXPECT_EQ(Fast(Is<TSQLExpressionIsNaN>(Col(c(), {u"a"}), false)), u"a Is NaN");
  EXPECT_EQ(Fast(Is<TSQLExpressionIsEmpty>(Col(c(), {u"a"}), false)), u"a Is Empty");
  auto ofType = Is<TSQLExpressionIsOfType>(Col(c(), {u"a"}), true);
  ofType->Types.Set(Make<TastNodeWithList>());
  ofType->Types->Add(Type(u"Int"));
  ofType->Types->Add(Type(u"Text"));
  EXPECT_EQ(Fast(ofType), u"a Is Not Of (Int, Text)");
  ofType->WithTypeWord = true;
  ofType->Negated = false;
  EXPECT_EQ(Fast(ofType), u"a Is Of Type (Int, Text)");
  auto value = Is<TSQLExpressionIsValue>(Col(c(), {u"a"}), false);
  EXPECT_EQ(Fast(value), u"a Is");
  value->Value.Set(TastCreate<TastTokenKeyword>(c(), u"Json"));
  EXPECT_EQ(Fast(value), u"a Is Json");
  auto isNull = Make<TSQLExpressionIsNullOp>();
  isNull->Expression.Set(Col(c(), {u"a"}));
  EXPECT_EQ(Fast(isNull), u"a IsNull");
  auto notNull = Make<TSQLExpressionNotNull>();
  notNull->Expression.Set(Col(c(), {u"a"}));
  EXPECT_EQ(Fast(notNull), u"a NotNull");
}

TEST_F(ExpressionPrint, SetAndRangePredicates) {
  auto in = Is<TSQLExpressionInSet>(Col(c(), {u"a"}), true);
  in->Values.Set(List({u"1", u"2", u"3"}));
  EXPECT_EQ(Fast(in), u"a Not In (1, 2, 3)");
  auto inQuery = Is<TSQLExpressionInSubQuery>(Col(c(), {u"a"}), false);
  inQuery->SubQuery.Set(SubSelect(u"b", u"u"));
  EXPECT_EQ(Fast(inQuery), u"a In (Select b From u)");
  auto between = Is<TSQLExpressionBetween>(Col(c(), {u"a"}), true);
  between->Low.Set(Num(c(), u"1"));
  between->High.Set(Num(c(), u"9"));
  EXPECT_EQ(Fast(between), u"a Not Between 1 And 9");
  auto like = Is<TSQLExpressionLikeTemplate>(Col(c(), {u"a"}), true);
  like->Template.Set(Str(c(), u"'x!%'"));
  like->Escape.Set(Str(c(), u"'!'"));
  EXPECT_EQ(Fast(like), u"a Not Like 'x!%' Escape '!'");
  like->Keyword = u"ILike";
  like->Negated = false;
  like->Escape.Reset();
  EXPECT_EQ(Fast(like), u"a ILike 'x!%'");
  auto distinct = Is<TSQLExpressionIsDistinctFrom>(Col(c(), {u"a"}), true);
  distinct->Right.Set(Col(c(), {u"b"}));
  EXPECT_EQ(Fast(distinct), u"a Is Not Distinct From b");
  distinct->Negated = false;
  EXPECT_EQ(Fast(distinct), u"a Is Distinct From b");
  auto overlaps = Make<TSQLExpressionOverlaps>();
  overlaps->Expression.Set(Col(c(), {u"s1"}));
  overlaps->Second.Set(Col(c(), {u"e1"}));
  overlaps->Third.Set(Col(c(), {u"s2"}));
  overlaps->Fourth.Set(Col(c(), {u"e2"}));
  EXPECT_EQ(Fast(overlaps), u"(s1,e1) Overlaps (s2,e2)");
  auto simple = Make<TSQLExpressionOverlapsSimple>();
  simple->Expression.Set(Col(c(), {u"p"}));
  simple->Right.Set(Col(c(), {u"q"}));
  EXPECT_EQ(Fast(simple), u"p Overlaps q");
}

TEST_F(ExpressionPrint, SubQueriesInExpressions) {
  auto exists = Make<TSQLExpressionExists>();
  exists->SubQuery.Set(SubSelect(u"b", u"u"));
  EXPECT_EQ(Fast(exists), u"Exists(Select b From u)");
  auto singular = Make<TSQLExpressionSingular>();
  singular->SubQuery.Set(SubSelect(u"b", u"u"));
  EXPECT_EQ(Fast(singular), u"Singular(Select b From u)");
  auto scalar = Make<TSQLExpressionSelect>();
  scalar->SubQuery.Set(SubSelect(u"b", u"u"));
  EXPECT_EQ(Fast(Bin(Col(c(), {u"a"}), u"=", std::move(scalar))), u"a = (Select b From u)");
  auto all = Make<TSQLExpressionCompWithSubQuery>();
  all->SubQuery.Set(SubSelect(u"b", u"u"));
  EXPECT_EQ(Fast(Bin(Col(c(), {u"a"}), u">", std::move(all))), u"a > All(Select b From u)");
  auto some = Make<TSQLExpressionCompWithSetSetOfExpressions>();
  some->Quantifier = 1;
  some->Values.Set(List({u"1", u"2"}));
  EXPECT_EQ(Fast(some), u"Some(1, 2)");
  auto any = Make<TSQLExpressionCompWithSetExpression>();
  any->Quantifier = 2;
  any->Value.Set(Col(c(), {u"arr"}));
  EXPECT_EQ(Fast(any), u"Any(arr)");
  // In a formatted text the expression sub-query keeps to its line.
  auto inQuery = Is<TSQLExpressionInSubQuery>(Col(c(), {u"a"}), false);
  inQuery->SubQuery.Set(SubSelect(u"b", u"u"));
  TSQLBuilderPiped piped;
  EXPECT_EQ(Print(inQuery, piped), u"a In (Select b From u)");
}

TEST_F(ExpressionPrint, ConstantsAndLists) {
  auto date = Make<TSQLExpressionConstant>();
  date->AddKeyword(u"Date");
  date->AddString(u"'2001-01-01'", true);
  EXPECT_EQ(Fast(date), u"Date '2001-01-01'");
  auto list = Make<TSQLExpressionExpressionsList>();
  list->List.Set(List({u"1", u"2"}));
  EXPECT_EQ(Fast(list), u"(1, 2)");
  auto nodes = Make<TSQLExpressionNodesList>();
  nodes->List.Set(Make<TastNodeWithList>());
  nodes->List->Symbol(u"{").Builtin(u"fn").Space().Identifier(u"f").Symbol(u"(").Number(u"1").Symbol(u")").Symbol(u"}");
  EXPECT_EQ(Fast(nodes), u"{fn f(1)}");
  auto search = Make<TSQLExpressionFulltextSearchItem>();
  search->Name.Set(TastCreate<TastTokenBuiltin>(c(), u"Contains"));
  search->Text.Set(Str(c(), u"'word'"));
  EXPECT_EQ(Fast(search), u"Contains(*,'word')");
  search->Columns.Set(Id(c(), u"body"));
  EXPECT_EQ(Fast(search), u"Contains(body,'word')");
}
