// The bases of scalar and logical expressions, the operator and type nodes,
// and the expression list.
//
// Conditions of WHERE, HAVING and joins print through BuildSQLCosmetic,
// which applies the condition formats; elsewhere expressions print through
// BuildSQL. A condition can have its left side taken out and put back,
// because the query model keeps a criterion apart from the expression it
// applies to.
#pragma once

#include "tree/QualifiedNames.h"

namespace mv {

class TSQLBuilderConditionFormat;

class TSQLExpressionItem : public TastNode {
  MV_AST_NODE(TSQLExpressionItem);

 public:
  // Strips `expression` (compared by its server text) from the left side of
  // the condition. Nodes that pass the call on to their operands do so
  // through PassRemoveLExpression.
  virtual void RemoveLExpression(const TSQLExpressionItem* expression);
  // Puts a clone of `expression` where the left side is missing; passed on
  // through PassRestoreLExpression.
  virtual void RestoreLExpression(const TSQLExpressionItem* expression);
  // Whether the value is a truth value.
  virtual bool IsLogical() const { return false; }
  // Turns a condition into an expression followed by a predicate: `item` is
  // consumed and the node that replaces it is returned; `expression` is set
  // to the expression the predicate applies to (or null). Goes down through
  // brackets, Not and first items of collections in a loop.
  static TmvOwned<TSQLExpressionItem> FindExpressionItem(TmvOwned<TSQLExpressionItem> item,
                                                         TSQLExpressionItem*& expression);
  // Prints a condition under a condition format. `inBrackets`: a bracket is
  // already open for this node; `level`: the logical nesting.
  virtual void BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool inBrackets,
                                int level, const TSQLBuilderConditionFormat& conditionFormat);

 protected:
  // FindExpressionItem of a node where the search ends, which `self` owns.
  virtual TmvOwned<TSQLExpressionItem> DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                            TSQLExpressionItem*& expression);
  // For a node where FindExpressionItem goes on into an operand: takes that
  // operand out. Null (the default): the search ends here, DoFindExpressionItem.
  virtual TmvOwned<TSQLExpressionItem> ExtractFindOperand() { return nullptr; }
  // Takes back what the search made of that operand (`before` was the
  // operand) and returns the node that replaces this one, which `self` owns.
  virtual TmvOwned<TSQLExpressionItem> PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                          TmvOwned<TSQLExpressionItem> found,
                                                          const TSQLExpressionItem* before);

  // Pass RemoveLExpression / RestoreLExpression on to an operand. A call
  // passed on while one of the same operation runs on this thread waits and
  // runs after it, so nesting of any depth is walked in a loop; all of them
  // have run when the outermost call returns.
  static void PassRemoveLExpression(TSQLExpressionItem* operand, const TSQLExpressionItem* expression);
  static void PassRestoreLExpression(TSQLExpressionItem* operand, const TSQLExpressionItem* expression);
};

class TSQLExpressionItemWithList : public TSQLExpressionItem, public TastListOps<TSQLExpressionItemWithList> {
  MV_AST_NODE(TSQLExpressionItemWithList);

 public:
  int GetCount() const { return Items.Count(); }
};

class TSQLExpressionItemWithExpressionList : public TSQLExpressionItemWithList {
  MV_AST_NODE(TSQLExpressionItemWithExpressionList);

 public:
  TSQLExpressionItem* Expression(int index) const { return TmvCast<TSQLExpressionItem>(Items.Item(index)); }
  TSQLExpressionItem* Add(TmvOwned<TSQLExpressionItem> expression);
  void Insert(int index, TmvOwned<TSQLExpressionItem> expression);
  TmvOwned<TSQLExpressionItem> Extract(int index);
  // Puts expression at index and hands back the one that was there.
  TmvOwned<TSQLExpressionItem> Exchange(int index, TmvOwned<TSQLExpressionItem> expression);
};

// An expression with one operand.
class TSQLExpressionExpressionItem : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionExpressionItem);

 public:
  TSQLExpressionExpressionItem(TmvBaseSQLContext* context, TmvOwned<TSQLExpressionItem> expression)
      : TSQLExpressionExpressionItem(context) {
    Expression.Set(std::move(expression));
  }
};

// A predicate or operation on a left operand (Expression).
class TSQLExpressionOperation : public TSQLExpressionExpressionItem {
  MV_AST_NODE(TSQLExpressionOperation);

 public:
  void RemoveLExpression(const TSQLExpressionItem* expression) override;
  void RestoreLExpression(const TSQLExpressionItem* expression) override;

 protected:
  TmvOwned<TSQLExpressionItem> DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                    TSQLExpressionItem*& expression) override;
};

class TSQLExpressionLogicalOperation : public TSQLExpressionOperation {
  MV_AST_NODE(TSQLExpressionLogicalOperation);

 public:
  bool IsLogical() const override { return true; }
};

class TSQLExpressionOperationExpression : public TSQLExpressionOperation {
  MV_AST_NODE(TSQLExpressionOperationExpression);
};

class TSQLExpressionTypeCast : public TSQLExpressionOperation {
  MV_AST_NODE(TSQLExpressionTypeCast);
};

class TSQLExpressionOperator : public TSQLExpressionOperation {
  MV_AST_NODE(TSQLExpressionOperator);
};

// Expression IS [NOT] <word>.
class TSQLExpressionIs : public TSQLExpressionLogicalOperation {
  MV_AST_NODE(TSQLExpressionIs);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

 protected:
  // The word after Is (and Not).
  virtual const char16_t* IsWord() const { return u""; }
};

class TSQLExpressionIn : public TSQLExpressionLogicalOperation {
  MV_AST_NODE(TSQLExpressionIn);

 protected:
  // Expression [Not] In.
  void BuildInPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
};

class TSQLExpressionSubQueryOperation : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionSubQueryOperation);

 public:
  bool IsLogical() const override { return true; }

 protected:
  // <word> ( SubQuery ), the sub-query under the builder's ExpressionsSubQueryFormat.
  void BuildWithWord(TSQLBuilder& builder, const char16_t* word);
};

// All, Some or Any before a set.
class TSQLExpressionCompWithSet : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionCompWithSet);

 public:
  const char16_t* QuantifierWord() const;
};

// And or Or of any number of conditions.
class TSQLExpressionLogicalCollection : public TSQLExpressionItemWithExpressionList {
  MV_AST_NODE(TSQLExpressionLogicalCollection);

 public:
  bool IsLogical() const override { return true; }
  void RemoveLExpression(const TSQLExpressionItem* expression) override;
  void RestoreLExpression(const TSQLExpressionItem* expression) override;
  // Moves all items of `other` here, each wrapped in a Not when `negate`;
  // the extender of `other` is assigned to this one's when both have one.
  void TakeItemsFrom(TSQLExpressionLogicalCollection& other, bool negate);

 protected:
  // FindExpressionItem goes on into the first item.
  TmvOwned<TSQLExpressionItem> DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                    TSQLExpressionItem*& expression) override;
  TmvOwned<TSQLExpressionItem> ExtractFindOperand() override;
  TmvOwned<TSQLExpressionItem> PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                  TmvOwned<TSQLExpressionItem> found,
                                                  const TSQLExpressionItem* before) override;
};

// An operator symbol.
class TSQLOperator : public TastNode {
  MV_AST_NODE(TSQLOperator);

 public:
  TSQLOperator(TmvBaseSQLContext* context, WideStringView text) : TSQLOperator(context) { Text = WideString(text); }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Expressions joined by "," and a blank of priority 2.
class TSQLExpressionsList : public TastNodeWithList {
  MV_AST_NODE(TSQLExpressionsList);

 public:
  TSQLExpressionItem* Expression(int index) const { return TmvCast<TSQLExpressionItem>(Items.Item(index)); }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Type names.
class TSQLType : public TastNode {
  MV_AST_NODE(TSQLType);
};

class TSQLTypeWithTypeBase : public TSQLType {
  MV_AST_NODE(TSQLTypeWithTypeBase);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A standard type: its keywords, brackets and numbers as read.
class TSQLTypeStandard : public TSQLType {
  MV_AST_NODE(TSQLTypeStandard);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLTypeUser : public TSQLType {
  MV_AST_NODE(TSQLTypeUser);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Whether two expressions print the same text for the server; both null are equal.
bool IsExpressionsEqual(const TSQLExpressionItem* a, const TSQLExpressionItem* b);

}  // namespace mv
