// Short ways to build trees by hand and print them, for the tree tests.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "TestProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv::test {

using Expr = TmvOwned<TSQLExpressionItem>;

inline TmvOwned<TastTokenIdentifier> Id(TmvBaseSQLContext* c, WideStringView text, bool quoted = false) {
  return TastCreate<TastTokenIdentifier>(c, text, quoted);
}

// A name written outermost first: Name<>(c, {u"db", u"dbo", u"t"}) holds [t, dbo, db].
template <class T = TSQLQualifiedName>
TmvOwned<T> Name(TmvBaseSQLContext* c, std::initializer_list<const char16_t*> parts) {
  TmvOwned<T> name = TastCreate<T>(c);
  for (const char16_t* part : parts) name->AddName(part, false);
  return name;
}

inline Expr Col(TmvBaseSQLContext* c, std::initializer_list<const char16_t*> parts) {
  auto column = TastCreate<TSQLExpressionColumn>(c);
  column->Column.Set(Name<TSQLObjectColumn>(c, parts));
  return column;
}

inline Expr Num(TmvBaseSQLContext* c, WideStringView text) {
  auto constant = TastCreate<TSQLExpressionConstant>(c);
  constant->AddNumber(text);
  return constant;
}

inline Expr Str(TmvBaseSQLContext* c, WideStringView text) {
  auto constant = TastCreate<TSQLExpressionConstant>(c);
  constant->AddString(text);
  return constant;
}

inline Expr Kw(TmvBaseSQLContext* c, WideStringView text) {
  auto constant = TastCreate<TSQLExpressionConstant>(c);
  constant->AddKeyword(text);
  return constant;
}

inline Expr Bin(Expr left, WideStringView op, Expr right) {
  TmvBaseSQLContext* c = left ? left->SQLContext() : right->SQLContext();
  auto binary = TastCreate<TSQLExpressionOperatorBinary>(c);
  binary->Expression.Set(std::move(left));
  binary->Operator.Set(TastCreate<TSQLOperator>(c, op));
  binary->Right.Set(std::move(right));
  return binary;
}

inline Expr Br(Expr e) {
  TmvBaseSQLContext* c = e->SQLContext();
  return TastCreate<TSQLExpressionBrackets>(c, std::move(e));
}

inline Expr Not(Expr e) {
  TmvBaseSQLContext* c = e->SQLContext();
  return TastCreate<TSQLExpressionNot>(c, std::move(e));
}

template <class Collection, class... Items>
Expr Collect(TmvBaseSQLContext* c, Items... items) {
  auto collection = TastCreate<Collection>(c);
  (collection->Add(std::move(items)), ...);
  return collection;
}

template <class... Items>
Expr And(TmvBaseSQLContext* c, Items... items) {
  return Collect<TSQLExpressionAnd>(c, std::move(items)...);
}

template <class... Items>
Expr Or(TmvBaseSQLContext* c, Items... items) {
  return Collect<TSQLExpressionOr>(c, std::move(items)...);
}

// A logical function call f(x) with no parameters printed as "f()".
inline Expr LogicalFn(TmvBaseSQLContext* c, const char16_t* name) {
  auto function = TastCreate<TSQLExpressionLogicalFunction>(c);
  function->Name.Set(Name(c, {name}));
  return function;
}

// A FROM object source: name parts outermost first, optional alias.
inline TmvOwned<TSQLFromObject> FromObject(TmvBaseSQLContext* c, std::initializer_list<const char16_t*> parts,
                                           const char16_t* alias = nullptr, bool asKeyword = false) {
  auto source = TastCreate<TSQLFromObject>(c);
  source->Object.Set(Name<TSQLDatabaseObject>(c, parts));
  source->Object->FromSource = source.get();
  if (alias) {
    auto a = TastCreate<TSQLAliasObjectAlias>(c);
    a->Name.Set(Id(c, alias));
    a->AsKeyword = asKeyword;
    source->Alias.Set(std::move(a));
  }
  return source;
}

// An order by clause of columns, each with its descending flag.
inline TmvOwned<TSQLOrderByClause> OrderByClause(TmvBaseSQLContext* c,
                                                 std::initializer_list<std::pair<const char16_t*, bool>> items) {
  auto clause = TastCreate<TSQLOrderByClause>(c);
  for (auto [column, descending] : items) {
    auto item = TastCreate<TSQLOrderByItem>(c);
    item->Expression.Set(Col(c, {column}));
    item->Descending = descending;
    clause->Add(std::move(item));
  }
  return clause;
}

// A select expression composed clause by clause:
//   Select(c).Items({u"a"}).From(u"t").Where(...).Statement()
struct Select {
  TmvBaseSQLContext* c;
  TmvOwned<TSQLSubQuerySelectExpression> s;

  explicit Select(TmvBaseSQLContext* context) : c(context), s(TastCreate<TSQLSubQuerySelectExpression>(context)) {
    s->SelectItems.Set(TastCreate<TSQLSelectItems>(c));
  }
  Select& Item(Expr e, const char16_t* alias = nullptr, bool asKeyword = false) {
    auto item = TastCreate<TSQLSelectItemExpression>(c);
    item->Expression.Set(std::move(e));
    if (alias) {
      auto a = TastCreate<TSQLAliasExpressionAlias>(c);
      a->Name.Set(Id(c, alias));
      a->AsKeyword = asKeyword;
      item->Alias.Set(std::move(a));
    }
    s->SelectItems->Add(std::move(item));
    return *this;
  }
  Select& Items(std::initializer_list<const char16_t*> columns) {
    for (const char16_t* column : columns) Item(Col(c, {column}));
    return *this;
  }
  Select& Star() {
    s->SelectItems->Add(TastCreate<TSQLSelectItemAllColumns>(c));
    return *this;
  }
  Select& From(TmvOwned<TSQLFromSource> source) {
    if (!s->FromClause) s->FromClause.Set(TastCreate<TSQLFromClause>(c));
    s->FromClause->Add(std::move(source));
    return *this;
  }
  Select& From(const char16_t* table, const char16_t* alias = nullptr) { return From(FromObject(c, {table}, alias)); }
  Select& Join(TmvOwned<TSQLJoinKind> kind, TmvOwned<TSQLFromSource> source, Expr on) {
    source->JoinKind.Set(std::move(kind));
    source->JoinExpression.Set(std::move(on));
    return From(std::move(source));
  }
  Select& Where(Expr e) {
    s->Where.Set(std::move(e));
    return *this;
  }
  Select& GroupBy(std::initializer_list<const char16_t*> columns) {
    s->GroupBy.Set(TastCreate<TSQLGroupByList>(c));
    for (const char16_t* column : columns) s->GroupBy->Add(Col(c, {column}));
    return *this;
  }
  Select& Having(Expr e) {
    s->Having.Set(std::move(e));
    return *this;
  }
  Select& OrderBy(std::initializer_list<std::pair<const char16_t*, bool>> items) {
    s->OrderBy.Set(OrderByClause(c, items));
    return *this;
  }
  TmvOwned<TSQLSelectStatement> Statement() {
    auto statement = TastCreate<TSQLSelectStatement>(c);
    statement->Add(std::move(s));
    return statement;
  }
  TmvOwned<TSQLSubSelectStatement> SubSelect() {
    auto statement = TastCreate<TSQLSubSelectStatement>(c);
    statement->Add(std::move(s));
    return statement;
  }
};

// A context on a TTestSyntaxProvider whose answers a test may change.
class TreeTest : public ::testing::Test {
 protected:
  TreeTest() { context.SetSyntaxProvider(&provider); }
  ~TreeTest() override { context.SetSyntaxProvider(nullptr); }

  TmvBaseSQLContext* c() { return &context; }
  template <class T>
  TmvOwned<T> Make() {
    return TastCreate<T>(&context);
  }
  Expr Eq(Expr a, Expr b) { return Bin(std::move(a), u"=", std::move(b)); }
  // column = number
  Expr Eq(const char16_t* column, const char16_t* value) { return Eq(Col(c(), {column}), Num(c(), value)); }

  TTestSyntaxProvider provider;
  TmvBaseSQLContext context;
};

// The text of a node through a builder.
inline WideString Print(TastNode* node, TSQLBuilder& builder) { return node->SimpleSQL(builder); }
inline WideString Print(const TmvOwned<TastNode>& node, TSQLBuilder& builder) { return node->SimpleSQL(builder); }
template <class T>
WideString Print(const TmvOwned<T>& node, TSQLBuilder& builder) {
  return node->SimpleSQL(builder);
}
template <class T>
WideString Print(const TastChild<T>& node, TSQLBuilder& builder) {
  return node->SimpleSQL(builder);
}

// The text through a one-line builder with default settings.
template <class T>
WideString Fast(const T& node) {
  TSQLBuilderFast builder;
  return Print(node, builder);
}

// The text of a condition through BuildSQLCosmetic at level 0 under `format`.
inline WideString Cosmetic(TSQLExpressionItem* e, TSQLBuilder& builder, const TSQLBuilderConditionFormat& format) {
  builder.BeginBuild();
  e->BuildSQLCosmetic(builder, builder.MainQueryFormat(), false, 0, format);
  builder.EndBuild();
  return builder.GetResult();
}

}  // namespace mv::test
