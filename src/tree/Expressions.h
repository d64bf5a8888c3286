// The concrete scalar expressions and predicates. Each is a record of child
// fields (see the node table) with a print rule; words go through
// WriteKeyword, punctuation through WriteSymbol, and blanks carry the
// builder's break priorities (3 for an ordinary blank, 2 before the right
// operand of a binary operator).
#pragma once

#include "tree/ExpressionBase.h"

namespace mv {

// --- Values ---

// Tokens composed with the list language, printed with nothing between them.
class TSQLExpressionConstant : public TSQLExpressionItemWithList {
  MV_AST_NODE(TSQLExpressionConstant);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionParameter : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionParameter);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionVariable : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionVariable);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionColumn : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionColumn);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionParameterlessFunction : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionParameterlessFunction);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Name(params). A built-in name prints part by part through WriteBuiltin.
class TSQLExpressionFunction : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionFunction);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

 protected:
  void BuildFunctionName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
};

class TSQLExpressionLogicalFunction : public TSQLExpressionFunction {
  MV_AST_NODE(TSQLExpressionLogicalFunction);

 public:
  bool IsLogical() const override { return true; }
};

// SubString(a From b [For c]).
class TSQLExpressionFunctionSubString : public TSQLExpressionFunction {
  MV_AST_NODE(TSQLExpressionFunctionSubString);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A scalar sub-query, under the builder's ExpressionsSubQueryFormat.
class TSQLExpressionSelect : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionSelect);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLCaseFunctionItem : public TastNode {
  MV_AST_NODE(TSQLCaseFunctionItem);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Case [Subject] When ... Then ... [Else ...] End; items are TSQLCaseFunctionItem.
class TSQLExpressionCaseFunction : public TSQLExpressionItemWithList {
  MV_AST_NODE(TSQLExpressionCaseFunction);

 public:
  TSQLCaseFunctionItem* CaseItem(int index) const { return TmvCast<TSQLCaseFunctionItem>(Items.Item(index)); }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionIfExpression : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionIfExpression);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// An aggregate call: Name([Distinct|Unique] Argument [Order By ...]) or Name(*).
class TSQLExpressionAggregate : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionAggregate);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // A known aggregate prints as built-in words; any other name as an object name.
  void BuildFunctionName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
};

// --- Casts ---

class TSQLExpressionCast : public TSQLExpressionTypeCast {
  MV_AST_NODE(TSQLExpressionCast);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionCastOperator : public TSQLExpressionTypeCast {
  MV_AST_NODE(TSQLExpressionCastOperator);
};

class TSQLExpressionConvert : public TSQLExpressionTypeCast {
  MV_AST_NODE(TSQLExpressionConvert);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionConvertReverse : public TSQLExpressionTypeCast {
  MV_AST_NODE(TSQLExpressionConvertReverse);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// --- Member access ---

class TSQLExpressionFieldSelection : public TSQLExpressionExpressionItem {
  MV_AST_NODE(TSQLExpressionFieldSelection);
};

class TSQLExpressionMethodCall : public TSQLExpressionExpressionItem {
  MV_AST_NODE(TSQLExpressionMethodCall);
};

// --- Operators ---
// These and the member accesses print in parts (see TastNode::BuildSQLPart):
// a long sequence of operators prints in a loop.

class TSQLExpressionOperatorPrefix : public TSQLExpressionOperator {
  MV_AST_NODE(TSQLExpressionOperatorPrefix);
};

class TSQLExpressionOperatorPrefixWithSpace : public TSQLExpressionOperator {
  MV_AST_NODE(TSQLExpressionOperatorPrefixWithSpace);
};

class TSQLExpressionOperatorPostfix : public TSQLExpressionOperator {
  MV_AST_NODE(TSQLExpressionOperatorPostfix);
};

// Expression Operator Right; a comparison when the operator is one of the
// context's comparison operators.
class TSQLExpressionOperatorBinary : public TSQLExpressionOperator {
  MV_AST_NODE(TSQLExpressionOperatorBinary);

 public:
  bool IsLogical() const override;
  // Restores the left side, then passes the call to Right.
  void RestoreLExpression(const TSQLExpressionItem* expression) override;
};

// --- Predicates ---

class TSQLExpressionIsNull : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsNull);

 protected:
  const char16_t* IsWord() const override { return u"Null"; }
};

class TSQLExpressionIsTrue : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsTrue);

 protected:
  const char16_t* IsWord() const override { return u"True"; }
};

class TSQLExpressionIsFalse : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsFalse);

 protected:
  const char16_t* IsWord() const override { return u"False"; }
};

class TSQLExpressionIsUnknown : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsUnknown);

 protected:
  const char16_t* IsWord() const override { return u"Unknown"; }
};

class TSQLExpressionIsNaN : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsNaN);

 protected:
  const char16_t* IsWord() const override { return u"NaN"; }
};

class TSQLExpressionIsEmpty : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsEmpty);

 protected:
  const char16_t* IsWord() const override { return u"Empty"; }
};

// Expression Is [Not] Of [Type] (types).
class TSQLExpressionIsOfType : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsOfType);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Expression Is [Not] Value.
class TSQLExpressionIsValue : public TSQLExpressionIs {
  MV_AST_NODE(TSQLExpressionIsValue);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionIsNullOp : public TSQLExpressionOperation {
  MV_AST_NODE(TSQLExpressionIsNullOp);
};

class TSQLExpressionNotNull : public TSQLExpressionOperation {
  MV_AST_NODE(TSQLExpressionNotNull);
};

class TSQLExpressionInSet : public TSQLExpressionIn {
  MV_AST_NODE(TSQLExpressionInSet);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionInSubQuery : public TSQLExpressionIn {
  MV_AST_NODE(TSQLExpressionInSubQuery);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionExists : public TSQLExpressionSubQueryOperation {
  MV_AST_NODE(TSQLExpressionExists);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionSingular : public TSQLExpressionSubQueryOperation {
  MV_AST_NODE(TSQLExpressionSingular);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionCompWithSubQuery : public TSQLExpressionCompWithSet {
  MV_AST_NODE(TSQLExpressionCompWithSubQuery);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionCompWithSetExpression : public TSQLExpressionCompWithSet {
  MV_AST_NODE(TSQLExpressionCompWithSetExpression);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionCompWithSetSetOfExpressions : public TSQLExpressionCompWithSet {
  MV_AST_NODE(TSQLExpressionCompWithSetSetOfExpressions);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionBetween : public TSQLExpressionLogicalOperation {
  MV_AST_NODE(TSQLExpressionBetween);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// (Expression, Second) Overlaps (Third, Fourth).
class TSQLExpressionOverlaps : public TSQLExpressionLogicalOperation {
  MV_AST_NODE(TSQLExpressionOverlaps);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionOverlapsSimple : public TSQLExpressionOperation {
  MV_AST_NODE(TSQLExpressionOverlapsSimple);

 public:
  bool IsLogical() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionLikeTemplate : public TSQLExpressionLogicalOperation {
  MV_AST_NODE(TSQLExpressionLikeTemplate);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionIsDistinctFrom : public TSQLExpressionLogicalOperation {
  MV_AST_NODE(TSQLExpressionIsDistinctFrom);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// --- Lists as expressions ---

// (a, b, ...)
class TSQLExpressionExpressionsList : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionExpressionsList);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Nodes as the action composed them (EXTRACT, the ODBC escapes).
class TSQLExpressionNodesList : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionNodesList);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLExpressionFulltextSearchItem : public TSQLExpressionItem {
  MV_AST_NODE(TSQLExpressionFulltextSearchItem);

 public:
  bool IsLogical() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

}  // namespace mv
