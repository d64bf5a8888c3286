// Filter conditions of the query transformer: a condition on one output
// column (text with a "{column}" macro), and junctions that join conditions
// with "and" or "or". Each is updatable: a change anywhere reaches the
// transformer through the parent chain.
//
//   auto both = TmvFilterFactory::And_();
//   both->Add(total->Greater(u"10"));
//   both->Add(country->Equal(u"'USA'"));
//   transformer->Where(std::move(both));
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "support/Class.h"
#include "support/UpdatablePersistent.h"
#include "support/WideString.h"

namespace pugi {
class xml_node;
}

namespace mv {

class TmvOutputColumn;

enum TmvFilterConditionJunctionType { jtOr, jtAnd };

class TmvFilterCondition : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  // The SQL condition text, each column by its filtration expression.
  virtual WideString GetCondition() const = 0;
  // Saves the condition as a child of `parent`.
  virtual void Write(pugi::xml_node parent) const = 0;
};

class TmvFilterColumnCondition : public TmvFilterCondition {
  MV_DECLARE_CLASS()
 public:
  // Keeps the column's filtration expression, by which the condition finds
  // its column again after the query changed. A null column: plain text.
  TmvFilterColumnCondition(TmvOutputColumn* column, WideString text);

  TmvOutputColumn* Column() const { return column_; }
  // Takes another column (or none) and its filtration expression.
  void SetColumn(TmvOutputColumn* column);
  const WideString& Text() const { return text_; }
  void SetText(const WideString& text) { SetValueAndNotify(*this, text_, text); }
  // The filtration expression of the column when the condition took it.
  const WideString& ColumnExpression() const { return columnExpression_; }

  // The first "{column}" replaced by the column's text; without a column
  // the text as it stands.
  WideString GetCondition() const override;
  void Write(pugi::xml_node parent) const override;

 private:
  TmvOutputColumn* column_;
  WideString text_;
  WideString columnExpression_;
};

class TmvFilterConditionJunction : public TmvFilterCondition {
  MV_DECLARE_CLASS()
 public:
  explicit TmvFilterConditionJunction(TmvFilterConditionJunctionType op = jtAnd) : operator_(op) {}

  TmvFilterConditionJunctionType Operator() const { return operator_; }
  void SetOperator(TmvFilterConditionJunctionType value) { SetValueAndNotify(*this, operator_, value); }
  bool Not() const { return not_; }
  void SetNot(bool value) { SetValueAndNotify(*this, not_, value); }

  // The junction takes the condition over and answers it.
  TmvFilterCondition* Add(TmvOwned<TmvFilterCondition> condition);
  TmvFilterCondition* Insert(int index, TmvOwned<TmvFilterCondition> condition);
  void Delete(int index);
  // Deletes the condition; -1 if it is not an item.
  int Remove(const TmvFilterCondition* condition);
  int IndexOf(const TmvFilterCondition* condition) const;
  void Clear();
  int Count() const { return static_cast<int>(items_.size()); }
  TmvFilterCondition* Items(int index) const;

  // Each item in brackets, joined by " and " or " or "; "not (...)" round
  // the whole with Not; empty without items.
  WideString GetCondition() const override;
  // The Not flag is not saved.
  void Write(pugi::xml_node parent) const override;
  // Replaces the items and the operator by those of a "junction" element;
  // column names are looked up in `columns` (absent when not found).
  void Read(pugi::xml_node element, class TmvOutputColumnsList* columns);

 private:
  TmvFilterConditionJunctionType operator_;
  bool not_ = false;
  std::vector<TmvOwned<TmvFilterCondition>> items_;
};

// New junctions.
class TmvFilterFactory {
 public:
  static TmvOwned<TmvFilterConditionJunction> Conjunction();
  static TmvOwned<TmvFilterConditionJunction> And_() { return Conjunction(); }
  static TmvOwned<TmvFilterConditionJunction> Disjunction();
  static TmvOwned<TmvFilterConditionJunction> Or_() { return Disjunction(); }
};

}  // namespace mv
