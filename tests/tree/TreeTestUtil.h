// Short ways to build trees by hand and print them, for the tree tests.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>

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
