// Named node builders for the actions of the generated parsers, so that a
// grammar file reads like the rules it implements: an action names what it
// builds and leaves the wiring to these.
//
// Second-pass rules hand the node they make back through an out-parameter
// `Node*&`. The adapters below let such a rule write straight into an owning
// place: `expression(Into(select->Where))` puts the expression into the child
// field when the call is over, `selectItem(Append<TSQLSelectItem>(items))`
// appends the item to a list, `identifier(Prepend(name))` inserts a part at
// the inner end of a dotted name.
#pragma once

#include <type_traits>

#include "frontend/SQLContext.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

// Takes over a node made by a rule.
template <class T>
TmvOwned<T> Own(T* node) {
  return TmvOwned<T>(node);
}

// Takes over the node a holder kept, as `U` when given; the holder ends empty.
template <class U = void, class T>
TmvOwned<std::conditional_t<std::is_void_v<U>, T, U>> Own(TmvHeld<T>& held) {
  return TmvOwned<std::conditional_t<std::is_void_v<U>, T, U>>(held.Release());
}

// The out-parameter of a rule whose node goes to a child field.
template <class N, class F>
class TastIntoField {
 public:
  explicit TastIntoField(TastChild<F>& field) : field_(field) {}
  ~TastIntoField() {
    if (node_) field_.Reset(node_);
  }
  TastIntoField(const TastIntoField&) = delete;
  TastIntoField& operator=(const TastIntoField&) = delete;
  operator N*&() { return node_; }

 private:
  TastChild<F>& field_;
  N* node_ = nullptr;
};

// Into(field) for a rule that makes a node of the field's class, Into<N>(field)
// for one that makes a node of a derived class N.
template <class N = void, class F>
TastIntoField<std::conditional_t<std::is_void_v<N>, F, N>, F> Into(TastChild<F>& field) {
  return TastIntoField<std::conditional_t<std::is_void_v<N>, F, N>, F>(field);
}

// The out-parameter of a rule whose node is appended to a list.
template <class N, class L>
class TastAppendItem {
 public:
  explicit TastAppendItem(L* list) : list_(list) {}
  ~TastAppendItem() {
    if (node_) list_->Add(TmvOwned<N>(node_));
  }
  TastAppendItem(const TastAppendItem&) = delete;
  TastAppendItem& operator=(const TastAppendItem&) = delete;
  operator N*&() { return node_; }

 private:
  L* list_;
  N* node_ = nullptr;
};

template <class N, class L>
TastAppendItem<N, L> Append(L* list) {
  return TastAppendItem<N, L>(list);
}

// The out-parameter of an identifier rule whose token becomes the new inner
// part (Items[0]) of a dotted name: names are read from the outside in.
class TastPrependName {
 public:
  explicit TastPrependName(TSQLQualifiedName* name) : name_(name) {}
  ~TastPrependName() {
    if (node_) name_->Insert(0, TmvOwned<TastToken>(node_));
  }
  TastPrependName(const TastPrependName&) = delete;
  TastPrependName& operator=(const TastPrependName&) = delete;
  operator TastTokenIdentifier*&() { return node_; }

 private:
  TSQLQualifiedName* name_;
  TastTokenIdentifier* node_ = nullptr;
};

inline TastPrependName Prepend(TSQLQualifiedName* name) { return TastPrependName(name); }

// --- Builders. Each returns a node its caller owns (or that went where the
// parameters say). ---

// Puts `left` as the left operand under a new binary operation of `op`,
// which takes its place in `left`; the caller parses the right operand into it.
TSQLExpressionOperatorBinary* WrapBinary(TmvBaseSQLContext* context, TSQLExpressionItem*& item, WideStringView op);

// At the first operator of a logical list: a new collection C that takes the
// operand read so far and takes its place; later operators reuse it.
template <class C>
C* CollectOperand(TmvBaseSQLContext* context, C*& collection, TSQLExpressionItem*& item) {
  if (!collection) {
    collection = TastCreate<C>(context).release();
    collection->Add(Own(item));
    item = collection;
  }
  return collection;
}

// A prefix operation of `op` (its operand follows).
TSQLExpressionOperator* MakePrefix(TmvBaseSQLContext* context, WideStringView op);

// `left op right` where the right side is a constant keyword ("True", "False").
TSQLExpressionOperatorBinary* MakeTruthComparison(TmvBaseSQLContext* context, TSQLExpressionItem* left,
                                                  WideStringView keyword);

// A parameter: the prefix symbol ("?", ":") and an optional tail (a number
// or a name).
TSQLExpressionParameter* MakeParameter(TmvBaseSQLContext* context, WideStringView prefix);

// A call of `name` with `params` (null when empty) after an optional ALL or
// DISTINCT (mode 1): an aggregate when the dialect or the metadata knows the
// name as one, with the name in the list's spelling; otherwise a function,
// and the mode word is dropped.
TSQLExpressionItem* MakeFunctionCall(TmvBaseSQLContext* context, TSQLQualifiedName* name, uint8_t mode,
                                     TSQLExpressionsList* params);

// Name(*): an aggregate with no argument, the name as written.
TSQLExpressionAggregate* MakeStarAggregate(TmvBaseSQLContext* context, TSQLQualifiedName* name);

// Joined tables that follow the right side of a join before its ON: a new
// group takes the right side as its first item and takes its place; the
// joined tables are added to the group, which is returned.
TSQLFromGroup* NestJoins(TmvBaseSQLContext* context, TSQLFromSource*& source);

// The node list of a special form (ODBC escapes, EXTRACT).
TSQLExpressionNodesList* MakeNodesList(TmvBaseSQLContext* context);

}  // namespace mv
