// Brackets, Not, And and Or, and the rewriting of conditions: removal of
// brackets, TRUE/FALSE comparisons, double negation, De Morgan and the
// flattening of nested collections. All four print in parts, and the
// rewritings run in loops, so conditions nested to any depth are no concern;
// only their printing under condition formats (BuildSQLCosmetic) recurses,
// one TastNestingGuard level for each bracket and collection.
#pragma once

#include "tree/ExpressionBase.h"

namespace mv {

class TSQLExpressionBrackets : public TSQLExpressionExpressionItem {
  MV_AST_NODE(TSQLExpressionBrackets);

 public:
  bool IsLogical() const override;
  void RemoveLExpression(const TSQLExpressionItem* expression) override;
  void RestoreLExpression(const TSQLExpressionItem* expression) override;
  void BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool inBrackets, int level,
                        const TSQLBuilderConditionFormat& conditionFormat) override;

 protected:
  // FindExpressionItem goes on into the content.
  TmvOwned<TSQLExpressionItem> DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                    TSQLExpressionItem*& expression) override;
  TmvOwned<TSQLExpressionItem> ExtractFindOperand() override;
  TmvOwned<TSQLExpressionItem> PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                  TmvOwned<TSQLExpressionItem> found,
                                                  const TSQLExpressionItem* before) override;
};

class TSQLExpressionNot : public TSQLExpressionExpressionItem {
  MV_AST_NODE(TSQLExpressionNot);

 public:
  bool IsLogical() const override { return true; }
  void RemoveLExpression(const TSQLExpressionItem* expression) override;
  void RestoreLExpression(const TSQLExpressionItem* expression) override;

 protected:
  // FindExpressionItem goes on into the operand; when that is a bare value
  // that became "x = True", the Not goes and it becomes "x = False".
  TmvOwned<TSQLExpressionItem> DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                    TSQLExpressionItem*& expression) override;
  TmvOwned<TSQLExpressionItem> ExtractFindOperand() override;
  TmvOwned<TSQLExpressionItem> PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                  TmvOwned<TSQLExpressionItem> found,
                                                  const TSQLExpressionItem* before) override;
};

class TSQLExpressionAnd : public TSQLExpressionLogicalCollection {
  MV_AST_NODE(TSQLExpressionAnd);

 public:
  void BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool inBrackets, int level,
                        const TSQLBuilderConditionFormat& conditionFormat) override;
  // BuildSQL: items joined by "And" with blanks of priority 1.

 protected:
  // Brackets around a collection item (or around every item under
  // ParenthesizeSingleCriterion), unless a bracket is already open.
  void BuildLogicalCollectionItem(TSQLExpressionItem* item, TSQLBuilder& builder,
                                  const TSQLBuilderSelectFormat& format, bool inBrackets, int level,
                                  const TSQLBuilderConditionFormat& conditionFormat);
};

class TSQLExpressionOr : public TSQLExpressionLogicalCollection {
  MV_AST_NODE(TSQLExpressionOr);

 public:
  void BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool inBrackets, int level,
                        const TSQLBuilderConditionFormat& conditionFormat) override;
  // BuildSQL: items joined by "Or" with blanks of priority 0.

 protected:
  // Brackets around an And group under ParenthesizeANDGroups, around a single
  // criterion under ParenthesizeSingleCriterion, unless a bracket is already open.
  void BuildLogicalCollectionItem(TSQLExpressionItem* item, TSQLBuilder& builder,
                                  const TSQLBuilderSelectFormat& format, bool inBrackets, int level,
                                  const TSQLBuilderConditionFormat& conditionFormat);
};

// The first node inside any number of brackets (the node itself when it is
// none); null stays null.
TSQLExpressionItem* ExpressionRemoveBrackets(TSQLExpressionItem* expression);
// The same, cutting the inner node free of the innermost bracket: `expression`
// keeps the bracket shell (null when there was none) and the inner node is returned.
TmvOwned<TSQLExpressionItem> ExpressionExtractFromBrackets(TmvOwned<TSQLExpressionItem>& expression);
// The binary operator inside any brackets, or null.
class TSQLExpressionOperatorBinary;
TSQLExpressionOperatorBinary* ExpressionGetTompostBinaryOperator(TSQLExpressionItem* expression);

// Each consumes `expression` and returns what replaces it.
// x = TRUE becomes x and x = FALSE becomes NOT x, for a logical x, inside
// logical collections, Not and brackets.
TmvOwned<TSQLExpressionItem> TransformExpression(TmvOwned<TSQLExpressionItem> expression);
// Removes double negation, pushes Not into And/Or, flattens nested
// collections of the same kind and drops brackets except around an Or inside
// an And. May return null when nothing is left.
TmvOwned<TSQLExpressionItem> SimplifyLogicalExpression(TmvOwned<TSQLExpressionItem> expression);
// Outer brackets off, then simplified: the form in which conditions enter the query model.
TmvOwned<TSQLExpressionItem> PrepareLogicalExpressionForLoading(TmvOwned<TSQLExpressionItem> expression);

}  // namespace mv
