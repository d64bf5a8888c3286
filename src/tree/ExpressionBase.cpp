#include "tree/ExpressionBase.h"

#include <deque>
#include <utility>

#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectStatement.h"

namespace mv {

// --- TSQLExpressionItem ---

void TSQLExpressionItem::RemoveLExpression(const TSQLExpressionItem*) {}
void TSQLExpressionItem::RestoreLExpression(const TSQLExpressionItem*) {}

void TSQLExpressionItem::BuildSQLCosmetic(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, bool, int,
                                          const TSQLBuilderConditionFormat&) {
  BuildSQL(builder, format);
}

TmvOwned<TSQLExpressionItem> TSQLExpressionItem::FindExpressionItem(TmvOwned<TSQLExpressionItem> item,
                                                                    TSQLExpressionItem*& expression) {
  expression = nullptr;
  if (!item) return item;
  // Down to the node where the search ends, each node on the way with its
  // operand taken out; then back up, each taking back what became of it.
  struct Step {
    TmvOwned<TSQLExpressionItem> node;
    const TSQLExpressionItem* operand;
  };
  std::vector<Step> path;
  for (TmvOwned<TSQLExpressionItem> operand; (operand = item->ExtractFindOperand());) {
    const TSQLExpressionItem* before = operand.get();
    path.push_back({std::move(item), before});
    item = std::move(operand);
  }
  TSQLExpressionItem* last = item.get();
  TmvOwned<TSQLExpressionItem> found = last->DoFindExpressionItem(std::move(item), expression);
  while (!path.empty()) {
    Step step = std::move(path.back());
    path.pop_back();
    TSQLExpressionItem* node = step.node.get();
    found = node->PutBackFindOperand(std::move(step.node), std::move(found), step.operand);
  }
  return found;
}

TmvOwned<TSQLExpressionItem> TSQLExpressionItem::PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                                    TmvOwned<TSQLExpressionItem>,
                                                                    const TSQLExpressionItem*) {
  return self;
}

namespace {

// The calls of one operation passed on to operands, waiting for the one that
// runs on this thread.
struct TPassedCalls {
  bool running = false;
  std::deque<std::pair<TSQLExpressionItem*, const TSQLExpressionItem*>> waiting;
};

template <void (TSQLExpressionItem::*Call)(const TSQLExpressionItem*)>
void PassOn(TPassedCalls& calls, TSQLExpressionItem* operand, const TSQLExpressionItem* expression) {
  if (!operand) return;
  if (calls.running) {
    calls.waiting.emplace_back(operand, expression);
    return;
  }
  calls.running = true;
  struct Done {
    TPassedCalls& calls;
    ~Done() {
      calls.running = false;
      calls.waiting.clear();
    }
  } done{calls};
  (operand->*Call)(expression);
  while (!calls.waiting.empty()) {
    const auto [next, nextExpression] = calls.waiting.front();
    calls.waiting.pop_front();
    (next->*Call)(nextExpression);
  }
}

thread_local TPassedCalls removeCalls;
thread_local TPassedCalls restoreCalls;

}  // namespace

void TSQLExpressionItem::PassRemoveLExpression(TSQLExpressionItem* operand, const TSQLExpressionItem* expression) {
  PassOn<&TSQLExpressionItem::RemoveLExpression>(removeCalls, operand, expression);
}

void TSQLExpressionItem::PassRestoreLExpression(TSQLExpressionItem* operand, const TSQLExpressionItem* expression) {
  PassOn<&TSQLExpressionItem::RestoreLExpression>(restoreCalls, operand, expression);
}

// A bare value used as a condition becomes "value = True".
TmvOwned<TSQLExpressionItem> TSQLExpressionItem::DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                                      TSQLExpressionItem*& expression) {
  TmvBaseSQLContext* context = SQLContext();
  expression = self.get();
  TmvOwned<TSQLExpressionOperatorBinary> binary = TastCreate<TSQLExpressionOperatorBinary>(context);
  binary->Expression.Set(std::move(self));
  binary->Operator.Set(TastCreate<TSQLOperator>(context, u"="));
  TmvOwned<TSQLExpressionConstant> truth = TastCreate<TSQLExpressionConstant>(context);
  truth->AddKeyword(u"True");
  binary->Right.Set(std::move(truth));
  return binary;
}

// --- Lists ---

TSQLExpressionItem* TSQLExpressionItemWithExpressionList::Add(TmvOwned<TSQLExpressionItem> expression) {
  TSQLExpressionItem* raw = expression.get();
  Items.Add(std::move(expression));
  return raw;
}

void TSQLExpressionItemWithExpressionList::Insert(int index, TmvOwned<TSQLExpressionItem> expression) {
  Items.Insert(index, std::move(expression));
}

TmvOwned<TSQLExpressionItem> TSQLExpressionItemWithExpressionList::Extract(int index) {
  return TmvOwned<TSQLExpressionItem>(static_cast<TSQLExpressionItem*>(Items.Extract(index).release()));
}

TmvOwned<TSQLExpressionItem> TSQLExpressionItemWithExpressionList::Exchange(int index,
                                                                          TmvOwned<TSQLExpressionItem> expression) {
  return TmvOwned<TSQLExpressionItem>(static_cast<TSQLExpressionItem*>(Items.Exchange(index, std::move(expression)).release()));
}

// --- Operations on a left operand ---

void TSQLExpressionOperation::RemoveLExpression(const TSQLExpressionItem* expression) {
  if (Expression && IsExpressionsEqual(Expression.get(), expression)) Expression.Reset();
}

void TSQLExpressionOperation::RestoreLExpression(const TSQLExpressionItem* expression) {
  if (!Expression && expression) Expression.Set(expression->CloneAs<TSQLExpressionItem>(SQLContext()));
}

TmvOwned<TSQLExpressionItem> TSQLExpressionOperation::DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                                           TSQLExpressionItem*& expression) {
  expression = Expression.get();
  return self;
}

void TSQLExpressionIs::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  builder.Space(3);
  builder.WriteKeyword(u"Is");
  if (Negated) {
    builder.Space(3);
    builder.WriteKeyword(u"Not");
  }
  // The Is forms with an operand of their own (Of (types), a value) have no word here.
  if (const char16_t* word = IsWord(); *word) {
    builder.Space(3);
    builder.WriteKeyword(word);
  }
}

void TSQLExpressionIn::BuildInPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Negated) {
    builder.Space(3);
    builder.WriteKeyword(u"Not");
  }
  builder.Space(3);
  builder.WriteKeyword(u"In");
  builder.Space(3);
}

void TSQLExpressionSubQueryOperation::BuildWithWord(TSQLBuilder& builder, const char16_t* word) {
  builder.WriteKeyword(word);
  builder.WriteSymbol(u"(");
  BuildASTField(SubQuery.get(), builder, builder.ExpressionsSubQueryFormat());
  builder.WriteSymbol(u")");
}

const char16_t* TSQLExpressionCompWithSet::QuantifierWord() const {
  switch (Quantifier) {
    case 1: return u"Some";
    case 2: return u"Any";
    default: return u"All";
  }
}

// --- Logical collections ---

void TSQLExpressionLogicalCollection::RemoveLExpression(const TSQLExpressionItem* expression) {
  for (int i = 0; i < Items.Count(); ++i) PassRemoveLExpression(Expression(i), expression);
}

void TSQLExpressionLogicalCollection::RestoreLExpression(const TSQLExpressionItem* expression) {
  for (int i = 0; i < Items.Count(); ++i) PassRestoreLExpression(Expression(i), expression);
}

void TSQLExpressionLogicalCollection::TakeItemsFrom(TSQLExpressionLogicalCollection& other, bool negate) {
  if (Extender && other.Extender) Extender->Assign(*other.Extender);
  const int first = GetCount();
  Items.InsertAll(first, other.Items);
  if (negate)
    for (int i = first; i < GetCount(); ++i)
      Exchange(i, TastCreate<TSQLExpressionNot>(SQLContext(), Exchange(i, nullptr)));
}

// An empty collection: the search ends here.
TmvOwned<TSQLExpressionItem> TSQLExpressionLogicalCollection::DoFindExpressionItem(TmvOwned<TSQLExpressionItem> self,
                                                                                   TSQLExpressionItem*& expression) {
  expression = nullptr;
  return self;
}

TmvOwned<TSQLExpressionItem> TSQLExpressionLogicalCollection::ExtractFindOperand() {
  return Items.Count() > 0 ? Extract(0) : nullptr;
}

TmvOwned<TSQLExpressionItem> TSQLExpressionLogicalCollection::PutBackFindOperand(TmvOwned<TSQLExpressionItem> self,
                                                                                 TmvOwned<TSQLExpressionItem> found,
                                                                                 const TSQLExpressionItem*) {
  Insert(0, std::move(found));
  return self;
}

// --- Operator, lists, types ---

void TSQLOperator::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.WriteSymbol(Text); }

void TSQLExpressionsList::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TastBuildCommaList(Items, builder, format);
}

void TSQLTypeWithTypeBase::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(TypeBase.get(), builder, format);
}

void TSQLTypeStandard::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Tokens.get(), builder, format);
}

void TSQLTypeUser::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Name.get(), builder, format);
}

bool IsExpressionsEqual(const TSQLExpressionItem* a, const TSQLExpressionItem* b) {
  if (!a && !b) return true;
  if (!a || !b) return false;
  auto print = [](const TSQLExpressionItem* e) {
    auto* node = const_cast<TSQLExpressionItem*>(e);
    if (TmvBaseSQLContext* context = e->SQLContext()) return node->SimpleSQL(context->SQLBuilderExpressionForServer());
    TSQLBuilderFast builder;
    return node->SimpleSQL(builder);
  };
  return print(a) == print(b);
}

}  // namespace mv
