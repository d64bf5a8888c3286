#include "tree/LogicalExpressions.h"

#include <vector>

#include "sqlgen/SQLBuilder.h"
#include "tree/Expressions.h"
#include "tree/NestingGuard.h"

namespace mv {

// --- TSQLExpressionBrackets ---

bool TSQLExpressionBrackets::IsLogical() const {
  // Empty brackets, however deep, are no truth value.
  const TSQLExpressionItem* inside = ExpressionRemoveBrackets(const_cast<TSQLExpressionBrackets*>(this));
  return !TmvCast<TSQLExpressionBrackets>(inside) && inside->IsLogical();
}

void TSQLExpressionBrackets::RemoveLExpression(const TSQLExpressionItem* expression) {
  PassRemoveLExpression(Expression.get(), expression);
}

void TSQLExpressionBrackets::RestoreLExpression(const TSQLExpressionItem* expression) {
  PassRestoreLExpression(Expression.get(), expression);
}

bool TSQLExpressionBrackets::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                          TastNode*& child) {
  switch (index) {
    case 0: builder.WriteSymbol(u"("); child = Expression.get(); return true;
    case 1: builder.WriteSymbol(u")"); return true;
    default: return false;
  }
}

void TSQLExpressionBrackets::BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool,
                                              int level, const TSQLBuilderConditionFormat& conditionFormat) {
  TastNestingGuard nesting;
  builder.WriteSymbol(u"(");
  const bool indent = conditionFormat.IndentNestedConditions() > 0;
  if (indent) builder.AddIndent(conditionFormat.IndentNestedConditions());
  // The bracket is open: a collection right inside adds none of its own.
  if (Expression) Expression->BuildSQLCosmetic(builder, format, true, level + 1, conditionFormat);
  if (indent) builder.EndIndent();
  builder.WriteSymbol(u")");
}

// Empty brackets: the search ends here.
TmvOwned<TSQLExpressionItem> TSQLExpressionBrackets::DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                                          TSQLExpressionItem*& expression) {
  expression = nullptr;
  return self;
}

TmvOwned<TSQLExpressionItem> TSQLExpressionBrackets::ExtractFindOperand() { return Expression.Release(); }

TmvOwned<TSQLExpressionItem> TSQLExpressionBrackets::PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                                        TmvOwned<TSQLExpressionItem> found,
                                                                        const TSQLExpressionItem*) {
  Expression.Set(std::move(found));
  return self;
}

// --- TSQLExpressionNot ---

void TSQLExpressionNot::RemoveLExpression(const TSQLExpressionItem* expression) {
  PassRemoveLExpression(Expression.get(), expression);
}

void TSQLExpressionNot::RestoreLExpression(const TSQLExpressionItem* expression) {
  PassRestoreLExpression(Expression.get(), expression);
}

bool TSQLExpressionNot::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                     TastNode*& child) {
  if (index > 0) return false;
  builder.WriteKeyword(u"Not");
  builder.Space(4);
  child = Expression.get();
  return true;
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

// Not without an operand: the search ends here.
TmvOwned<TSQLExpressionItem> TSQLExpressionNot::DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                                     TSQLExpressionItem*& expression) {
  expression = nullptr;
  return self;
}

TmvOwned<TSQLExpressionItem> TSQLExpressionNot::ExtractFindOperand() { return Expression.Release(); }

TmvOwned<TSQLExpressionItem> TSQLExpressionNot::PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                                   TmvOwned<TSQLExpressionItem> found,
                                                                   const TSQLExpressionItem* before) {
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
  TastNestingGuard nesting;
  const bool open = needsBrackets && !inBrackets;
  const bool indent = open && conditionFormat.IndentNestedConditions() > 0;
  if (open) builder.WriteSymbol(u"(");
  if (indent) builder.AddIndent(conditionFormat.IndentNestedConditions());
  item->BuildSQLCosmetic(builder, format, inBrackets || needsBrackets, level, conditionFormat);
  if (indent) builder.EndIndent();
  if (open) builder.WriteSymbol(u")");
}

}  // namespace

namespace {

// Part i of a collection: item i, after the word between items when it is not the first.
bool CollectionPart(const TastNodeList& items, int index, const char16_t* word, int priority,
                    TSQLBuilder& builder, TastNode*& child) {
  if (index >= items.Count()) return false;
  if (index > 0) {
    builder.Space(priority);
    builder.WriteKeyword(word);
    builder.Space(priority);
  }
  child = items.Item(index);
  return true;
}

}  // namespace

bool TSQLExpressionAnd::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                     TastNode*& child) {
  return CollectionPart(Items, index, u"And", 1, builder, child);
}

bool TSQLExpressionOr::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                    TastNode*& child) {
  return CollectionPart(Items, index, u"Or", 0, builder, child);
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

namespace {

bool IsCollection(const TSQLExpressionItem* e) { return TmvCast<TSQLExpressionLogicalCollection>(e) != nullptr; }

// The nodes whose operands TransformExpression rewrites: collections, Not and brackets.
bool IsTransformedInside(const TSQLExpressionItem* e) {
  return IsCollection(e) || TmvCast<TSQLExpressionNot>(e) || TmvCast<TSQLExpressionBrackets>(e);
}

// x = TRUE is x and x = FALSE is NOT x, for a logical x; anything else stays.
TmvOwned<TSQLExpressionItem> TransformComparison(TmvOwned<TSQLExpressionItem> expression) {
  auto* binary = TmvCast<TSQLExpressionOperatorBinary>(expression.get());
  if (!binary || !binary->Expression || !binary->Expression->IsLogical() || !IsEqualsOperator(*binary))
    return expression;
  const WideString truth = SingleKeywordOf(binary->Right.get());
  if (truth == u"TRUE") return binary->Expression.Release();
  if (truth == u"FALSE")
    return TastCreate<TSQLExpressionNot>(binary->SQLContext(), binary->Expression.Release());
  return expression;
}

}  // namespace

TmvOwned<TSQLExpressionItem> TransformExpression(TmvOwned<TSQLExpressionItem> expression) {
  if (!expression || !IsTransformedInside(expression.get())) return TransformComparison(std::move(expression));
  // A collection, Not or brackets stays and has its operands rewritten; the
  // ones of that kind among them wait in `inside` for their own turn.
  std::vector<TSQLExpressionItem*> inside{expression.get()};
  auto rewrite = [&inside](TmvOwned<TSQLExpressionItem> operand) {
    if (operand && IsTransformedInside(operand.get())) {
      inside.push_back(operand.get());
      return operand;
    }
    return TransformComparison(std::move(operand));
  };
  while (!inside.empty()) {
    TSQLExpressionItem* node = inside.back();
    inside.pop_back();
    if (auto* collection = TmvCast<TSQLExpressionLogicalCollection>(node)) {
      for (int i = collection->GetCount(); i-- > 0;) collection->Insert(i, rewrite(collection->Extract(i)));
    } else {
      auto* holder = static_cast<TSQLExpressionExpressionItem*>(node);
      if (holder->Expression) holder->Expression.Set(rewrite(holder->Expression.Release()));
    }
  }
  return expression;
}

namespace {

// Cuts the brackets off item i of the collection, in place.
void CutBrackets(TSQLExpressionLogicalCollection& collection, int i) {
  if (!TmvCast<TSQLExpressionBrackets>(collection.Expression(i))) return;
  TmvOwned<TSQLExpressionItem> item = collection.Exchange(i, nullptr);
  collection.Exchange(i, ExpressionExtractFromBrackets(item));
}

// Brackets stay only around an Or inside an And.
void CutBracketsInAnd(TSQLExpressionAnd& conjunction) {
  for (int i = 0; i < conjunction.GetCount(); ++i)
    if (!TmvCast<TSQLExpressionOr>(ExpressionRemoveBrackets(conjunction.Expression(i)))) CutBrackets(conjunction, i);
}

// The first steps on an expression: NOT NOT x is x, and NOT (a AND b) is
// NOT a OR NOT b (and the other way round). Returns the collection (inside
// any brackets) whose items are to be simplified next, or null when the
// expression is done as it is.
TSQLExpressionLogicalCollection* SimplifyOuter(TmvOwned<TSQLExpressionItem>& expression) {
  auto core = [&expression] { return ExpressionRemoveBrackets(expression.get()); };
  if (!expression || (!TmvCast<TSQLExpressionNot>(core()) && !IsCollection(core()))) return nullptr;

  while (auto* outer = TmvCast<TSQLExpressionNot>(core())) {
    auto* inner = TmvCast<TSQLExpressionNot>(ExpressionRemoveBrackets(outer->Expression.get()));
    if (!inner) break;
    TmvOwned<TSQLExpressionItem> operand = inner->Expression.Release();
    expression = std::move(operand);
    if (!expression) return nullptr;
  }

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
  return TmvCast<TSQLExpressionLogicalCollection>(core());
}

// Puts the simplified item i back: the items of a nested collection of the
// same kind, or of one with fewer than two items, take its place.
void PutBackSimplified(TSQLExpressionLogicalCollection& collection, int i, TmvOwned<TSQLExpressionItem> item) {
  if (!item) return;
  auto* nested = TmvCast<TSQLExpressionLogicalCollection>(ExpressionRemoveBrackets(item.get()));
  if (nested && (&nested->NodeClass() == &collection.NodeClass() || nested->GetCount() < 2)) {
    collection.Items.InsertAll(i, nested->Items);
    return;  // the emptied shell is freed here
  }
  collection.Insert(i, std::move(item));
}

// The last steps, once the items are simplified: an empty collection is
// nothing, and brackets stay only around an Or inside an And.
TmvOwned<TSQLExpressionItem> SimplifyInner(TmvOwned<TSQLExpressionItem> expression,
                                           TSQLExpressionLogicalCollection& collection) {
  if (collection.GetCount() == 0) return nullptr;
  if (TmvCast<TSQLExpressionOr>(&collection)) {
    for (int i = 0; i < collection.GetCount(); ++i) {
      CutBrackets(collection, i);
      if (auto* conjunction = TmvCast<TSQLExpressionAnd>(collection.Expression(i))) CutBracketsInAnd(*conjunction);
    }
  } else if (auto* conjunction = TmvCast<TSQLExpressionAnd>(&collection)) {
    CutBracketsInAnd(*conjunction);
  }
  return expression;
}

}  // namespace

TmvOwned<TSQLExpressionItem> SimplifyLogicalExpression(TmvOwned<TSQLExpressionItem> expression) {
  // The collections whose items are being simplified, outermost first; each
  // item goes through the same steps, last item first, and a nested
  // collection opens a level here rather than a call.
  struct Open {
    TmvOwned<TSQLExpressionItem> expression;
    TSQLExpressionLogicalCollection* collection;
    int next;  // the item being simplified; those after it are done
  };
  std::vector<Open> open;
  TmvOwned<TSQLExpressionItem> done;  // the expression just simplified
  auto start = [&open, &done](TmvOwned<TSQLExpressionItem> next) {
    TSQLExpressionLogicalCollection* collection = SimplifyOuter(next);
    if (collection)
      open.push_back({std::move(next), collection, collection->GetCount()});
    else
      done = std::move(next);
    return collection == nullptr;
  };
  bool finished = start(std::move(expression));
  while (!open.empty()) {
    Open& level = open.back();
    if (finished) {
      PutBackSimplified(*level.collection, level.next, std::move(done));
      finished = false;
    }
    if (level.next > 0) {
      --level.next;
      TmvOwned<TSQLExpressionItem> item = level.collection->Extract(level.next);
      TSQLExpressionLogicalCollection* nested = SimplifyOuter(item);
      if (nested && &nested->NodeClass() == &level.collection->NodeClass()) {
        // A collection of the same kind dissolves into this one before its
        // items are simplified, here: And in And in And ... stays one level.
        const int count = nested->GetCount();
        level.collection->Items.InsertAll(level.next, nested->Items);
        level.next += count;
        continue;  // the emptied shell is freed here
      }
      if (nested)
        open.push_back({std::move(item), nested, nested->GetCount()});
      else
        done = std::move(item);
      finished = nested == nullptr;
      continue;
    }
    Open last = std::move(open.back());
    open.pop_back();
    done = SimplifyInner(std::move(last.expression), *last.collection);
    finished = true;
  }
  return done;
}

TmvOwned<TSQLExpressionItem> PrepareLogicalExpressionForLoading(TmvOwned<TSQLExpressionItem> expression) {
  TmvOwned<TSQLExpressionItem> inner = ExpressionExtractFromBrackets(expression);
  expression.reset();  // the bracket shell, if there was one
  return SimplifyLogicalExpression(std::move(inner));
}

}  // namespace mv
