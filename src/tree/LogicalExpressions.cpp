#include "tree/LogicalExpressions.h"

#include "sqlgen/SQLBuilder.h"
#include "tree/Expressions.h"

namespace mv {

// --- TSQLExpressionBrackets ---

bool TSQLExpressionBrackets::IsLogical() const { return Expression && Expression->IsLogical(); }

void TSQLExpressionBrackets::RemoveLExpression(const TSQLExpressionItem* expression) {
  if (Expression) Expression->RemoveLExpression(expression);
}

void TSQLExpressionBrackets::RestoreLExpression(const TSQLExpressionItem* expression) {
  if (Expression) Expression->RestoreLExpression(expression);
}

void TSQLExpressionBrackets::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteSymbol(u"(");
  BuildASTField(Expression.get(), builder, format);
  builder.WriteSymbol(u")");
}

void TSQLExpressionBrackets::BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool,
                                              int level, const TSQLBuilderConditionFormat& conditionFormat) {
  builder.WriteSymbol(u"(");
  const bool indent = conditionFormat.IndentNestedConditions() > 0;
  if (indent) builder.AddIndent(conditionFormat.IndentNestedConditions());
  // The bracket is open: a collection right inside adds none of its own.
  if (Expression) Expression->BuildSQLCosmetic(builder, format, true, level + 1, conditionFormat);
  if (indent) builder.EndIndent();
  builder.WriteSymbol(u")");
}

TmvOwned<TSQLExpressionItem> TSQLExpressionBrackets::DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                                          TSQLExpressionItem*& expression) {
  expression = nullptr;
  if (Expression) Expression.Set(FindExpressionItem(Expression.Release(), expression));
  return self;
}

// --- TSQLExpressionNot ---

void TSQLExpressionNot::RemoveLExpression(const TSQLExpressionItem* expression) {
  if (Expression) Expression->RemoveLExpression(expression);
}

void TSQLExpressionNot::RestoreLExpression(const TSQLExpressionItem* expression) {
  if (Expression) Expression->RestoreLExpression(expression);
}

void TSQLExpressionNot::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Not");
  builder.Space(4);
  BuildASTField(Expression.get(), builder, format);
}

namespace {

// The constant of one keyword token, upper-cased; empty for anything else.
WideString SingleKeywordOf(const TastNode* node) {
  const auto* constant = TmvCast<TSQLExpressionConstant>(node);
  if (!constant || constant->Items.Count() != 1) return {};
  const auto* keyword = TmvCast<TastTokenKeyword>(constant->Items.Item(0));
  return keyword ? WideUpperCase(keyword->Token) : WideString();
}

bool IsEqualsOperator(const TSQLExpressionOperatorBinary& binary) {
  return binary.Operator && binary.Operator->Text == u"=";
}

}  // namespace

TmvOwned<TSQLExpressionItem> TSQLExpressionNot::DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                                     TSQLExpressionItem*& expression) {
  expression = nullptr;
  if (!Expression) return self;
  TSQLExpressionItem* before = Expression.get();
  TmvOwned<TSQLExpressionItem> found = FindExpressionItem(Expression.Release(), expression);
  auto* binary = TmvCast<TSQLExpressionOperatorBinary>(found.get());
  // A bare value x became "x = True" here: NOT x is "x = False", and the Not goes.
  if (found.get() != before && binary && IsEqualsOperator(*binary) && SingleKeywordOf(binary->Right.get()) == u"TRUE") {
    auto* truth = static_cast<TSQLExpressionConstant*>(binary->Right.get());
    truth->Items.Set(0, TastCreate<TastTokenKeyword>(SQLContext(), u"False"));
    return found;  // `self` (the Not, now empty) is freed on return
  }
  Expression.Set(std::move(found));
  return self;
}

// --- And / Or ---

namespace {

bool BreakAt(TSQLBuilderConditionFormatNL mode, int level, bool isOr) {
  if (mode == nlAllLogical) return true;
  if (level != 0) return false;
  return mode == nlTopmostLogical || (isOr && mode == nlTopmostOr);
}

// An item of a logical collection, in the brackets it needs unless a caller
// opened them already. Brackets written here indent their content as a
// bracket node of the tree does, so that a printed condition parsed again
// (now with bracket nodes) lays out the same.
void BuildItemInBrackets(TSQLExpressionItem* item, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                         bool inBrackets, bool needsBrackets, int level,
                         const TSQLBuilderConditionFormat& conditionFormat) {
  const bool open = needsBrackets && !inBrackets;
  const bool indent = open && conditionFormat.IndentNestedConditions() > 0;
  if (open) builder.WriteSymbol(u"(");
  if (indent) builder.AddIndent(conditionFormat.IndentNestedConditions());
  item->BuildSQLCosmetic(builder, format, inBrackets || needsBrackets, level, conditionFormat);
  if (indent) builder.EndIndent();
  if (open) builder.WriteSymbol(u")");
}

}  // namespace

void TSQLExpressionAnd::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  for (int i = 0; i < Items.Count(); ++i) {
    if (i > 0) {
      builder.Space(1);
      builder.WriteKeyword(u"And");
      builder.Space(1);
    }
    Items.Item(i)->BuildSQL(builder, format);
  }
}

void TSQLExpressionOr::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  for (int i = 0; i < Items.Count(); ++i) {
    if (i > 0) {
      builder.Space(0);
      builder.WriteKeyword(u"Or");
      builder.Space(0);
    }
    Items.Item(i)->BuildSQL(builder, format);
  }
}

void TSQLExpressionAnd::BuildLogicalCollectionItem(TSQLExpressionItem* item, TSQLBuilder& builder,
                                                   const TSQLBuilderSelectFormat& format, bool inBrackets, int level,
                                                   const TSQLBuilderConditionFormat& conditionFormat) {
  const bool isCollection = TmvCast<TSQLExpressionLogicalCollection>(item) != nullptr;
  const bool isBrackets = TmvCast<TSQLExpressionBrackets>(item) != nullptr;
  const bool needsBrackets = (builder.ParenthesizeSingleCriterion() || isCollection) && !isBrackets;
  BuildItemInBrackets(item, builder, format, inBrackets, needsBrackets, level, conditionFormat);
}

void TSQLExpressionOr::BuildLogicalCollectionItem(TSQLExpressionItem* item, TSQLBuilder& builder,
                                                  const TSQLBuilderSelectFormat& format, bool inBrackets, int level,
                                                  const TSQLBuilderConditionFormat& conditionFormat) {
  const bool isCollection = TmvCast<TSQLExpressionLogicalCollection>(item) != nullptr;
  const bool isBrackets = TmvCast<TSQLExpressionBrackets>(item) != nullptr;
  const bool needsBrackets = ((isCollection && builder.ParenthesizeANDGroups()) ||
                              (!isCollection && builder.ParenthesizeSingleCriterion())) &&
                             !isBrackets;
  BuildItemInBrackets(item, builder, format, inBrackets, needsBrackets, level, conditionFormat);
}

void TSQLExpressionAnd::BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool inBrackets,
                                         int level, const TSQLBuilderConditionFormat& conditionFormat) {
  if (Items.Count() == 0) return;
  // A single criterion at the top adds neither brackets nor a level.
  if (level == 0 && Items.Count() == 1) {
    Expression(0)->BuildSQLCosmetic(builder, format, false, 0, conditionFormat);
    return;
  }
  for (int i = 0; i < Items.Count(); ++i) {
    if (i > 0) {
      builder.NewLineOrSpace(BreakAt(conditionFormat.NewLineBefore(), level, false), 1);
      builder.WriteKeyword(u"And");
      builder.NewLineOrSpace(BreakAt(conditionFormat.NewLineAfter(), level, false), 1);
    }
    BuildLogicalCollectionItem(Expression(i), builder, format, inBrackets, level + 1, conditionFormat);
  }
}

void TSQLExpressionOr::BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool inBrackets,
                                        int level, const TSQLBuilderConditionFormat& conditionFormat) {
  if (Items.Count() == 0) return;
  if (Items.Count() == 1) {
    Expression(0)->BuildSQLCosmetic(builder, format, inBrackets, level, conditionFormat);
    return;
  }
  for (int i = 0; i < Items.Count(); ++i) {
    if (i > 0) {
      builder.NewLineOrSpace(BreakAt(conditionFormat.NewLineBefore(), level, true), 1);
      builder.WriteKeyword(u"Or");
      builder.NewLineOrSpace(BreakAt(conditionFormat.NewLineAfter(), level, true), 1);
    }
    BuildLogicalCollectionItem(Expression(i), builder, format, inBrackets, level + 1, conditionFormat);
  }
}

// --- Brackets helpers ---

TSQLExpressionItem* ExpressionRemoveBrackets(TSQLExpressionItem* expression) {
  while (auto* brackets = TmvCast<TSQLExpressionBrackets>(expression)) {
    if (!brackets->Expression) return brackets;
    expression = brackets->Expression.get();
  }
  return expression;
}

TmvOwned<TSQLExpressionItem> ExpressionExtractFromBrackets(TmvOwned<TSQLExpressionItem>& expression) {
  auto* brackets = TmvCast<TSQLExpressionBrackets>(expression.get());
  if (!brackets) return std::move(expression);
  // Down to the innermost bracket whose content is no bracket.
  while (auto* inner = TmvCast<TSQLExpressionBrackets>(brackets->Expression.get())) brackets = inner;
  return brackets->Expression.Release();
}

TSQLExpressionOperatorBinary* ExpressionGetTompostBinaryOperator(TSQLExpressionItem* expression) {
  return TmvCast<TSQLExpressionOperatorBinary>(ExpressionRemoveBrackets(expression));
}

// --- Rewriting ---

TmvOwned<TSQLExpressionItem> TransformExpression(TmvOwned<TSQLExpressionItem> expression) {
  if (!expression) return expression;
  if (auto* collection = TmvCast<TSQLExpressionLogicalCollection>(expression.get())) {
    for (int i = collection->GetCount(); i-- > 0;) collection->Insert(i, TransformExpression(collection->Extract(i)));
    return expression;
  }
  if (TmvCast<TSQLExpressionNot>(expression.get()) || TmvCast<TSQLExpressionBrackets>(expression.get())) {
    auto* holder = static_cast<TSQLExpressionExpressionItem*>(expression.get());
    if (holder->Expression) holder->Expression.Set(TransformExpression(holder->Expression.Release()));
    return expression;
  }
  auto* binary = TmvCast<TSQLExpressionOperatorBinary>(expression.get());
  if (!binary || !binary->Expression || !binary->Expression->IsLogical() || !IsEqualsOperator(*binary))
    return expression;
  const WideString truth = SingleKeywordOf(binary->Right.get());
  if (truth == u"TRUE") return binary->Expression.Release();
  if (truth == u"FALSE")
    return TastCreate<TSQLExpressionNot>(binary->SQLContext(), binary->Expression.Release());
  return expression;
}

namespace {

bool IsCollection(const TSQLExpressionItem* e) { return TmvCast<TSQLExpressionLogicalCollection>(e) != nullptr; }

// Cuts the brackets off item i of the collection.
void CutBrackets(TSQLExpressionLogicalCollection& collection, int i) {
  TmvOwned<TSQLExpressionItem> item = collection.Extract(i);
  TmvOwned<TSQLExpressionItem> inner = ExpressionExtractFromBrackets(item);
  collection.Insert(i, std::move(inner));
}

// Brackets stay only around an Or inside an And.
void CutBracketsInAnd(TSQLExpressionAnd& conjunction) {
  for (int i = 0; i < conjunction.GetCount(); ++i)
    if (!TmvCast<TSQLExpressionOr>(ExpressionRemoveBrackets(conjunction.Expression(i)))) CutBrackets(conjunction, i);
}

}  // namespace

TmvOwned<TSQLExpressionItem> SimplifyLogicalExpression(TmvOwned<TSQLExpressionItem> expression) {
  auto core = [&expression] { return ExpressionRemoveBrackets(expression.get()); };
  if (!expression || (!TmvCast<TSQLExpressionNot>(core()) && !IsCollection(core()))) return expression;

  // NOT NOT x is x.
  while (auto* outer = TmvCast<TSQLExpressionNot>(core())) {
    auto* inner = TmvCast<TSQLExpressionNot>(ExpressionRemoveBrackets(outer->Expression.get()));
    if (!inner) break;
    TmvOwned<TSQLExpressionItem> operand = inner->Expression.Release();
    expression = std::move(operand);
    if (!expression) return expression;
  }

  // NOT (a AND b) is NOT a OR NOT b, and the other way round.
  if (auto* negation = TmvCast<TSQLExpressionNot>(core())) {
    auto* collection = TmvCast<TSQLExpressionLogicalCollection>(ExpressionRemoveBrackets(negation->Expression.get()));
    if (collection) {
      TmvOwned<TSQLExpressionLogicalCollection> opposite;
      if (TmvCast<TSQLExpressionAnd>(collection))
        opposite = TastCreate<TSQLExpressionOr>(collection->SQLContext());
      else
        opposite = TastCreate<TSQLExpressionAnd>(collection->SQLContext());
      opposite->TakeItemsFrom(*collection, true);
      expression = std::move(opposite);
    }
  }

  // Simplify the items of a collection; splice in the items of a nested
  // collection of the same kind, or of one with fewer than two items.
  auto* collection = TmvCast<TSQLExpressionLogicalCollection>(core());
  if (!collection) return expression;
  for (int i = collection->GetCount(); i-- > 0;) {
    TmvOwned<TSQLExpressionItem> item = SimplifyLogicalExpression(collection->Extract(i));
    if (!item) continue;
    auto* nested = TmvCast<TSQLExpressionLogicalCollection>(ExpressionRemoveBrackets(item.get()));
    if (nested && (&nested->NodeClass() == &collection->NodeClass() || nested->GetCount() < 2)) {
      for (int k = nested->GetCount(); k-- > 0;) collection->Insert(i, nested->Extract(k));
      continue;  // the emptied shell is freed here
    }
    collection->Insert(i, std::move(item));
  }
  if (collection->GetCount() == 0) return nullptr;

  if (TmvCast<TSQLExpressionOr>(collection)) {
    for (int i = 0; i < collection->GetCount(); ++i) {
      CutBrackets(*collection, i);
      if (auto* conjunction = TmvCast<TSQLExpressionAnd>(collection->Expression(i))) CutBracketsInAnd(*conjunction);
    }
  } else if (auto* conjunction = TmvCast<TSQLExpressionAnd>(collection)) {
    CutBracketsInAnd(*conjunction);
  }
  return expression;
}

TmvOwned<TSQLExpressionItem> PrepareLogicalExpressionForLoading(TmvOwned<TSQLExpressionItem> expression) {
  TmvOwned<TSQLExpressionItem> inner = ExpressionExtractFromBrackets(expression);
  expression.reset();  // the bracket shell, if there was one
  return SimplifyLogicalExpression(std::move(inner));
}

}  // namespace mv
