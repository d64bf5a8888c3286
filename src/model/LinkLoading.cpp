// Links made from conditions: an ON clause split into simple links, join
// conditions taken out of WHERE as where-links, and the way back: the
// where-links in front of WHERE.
#include <algorithm>
#include <functional>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/ModelMessages.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "support/MessageCatalog.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"

namespace mv {

namespace {

// The chain of items from the top group down to `datasource`.
std::vector<TmvDatasourceBase*> GroupChain(TmvDatasourceGroup* top, TmvDatasource* datasource) {
  std::vector<TmvDatasourceBase*> chain;
  for (TmvDatasourceBase* item = datasource; item && item != top; item = item->Group()) chain.push_back(item);
  std::reverse(chain.begin(), chain.end());
  return chain;
}

void MakeControl(TmvLink* link) {
  if (link->CanCreateControls()) link->CreateControl();
}

}  // namespace

TmvLink* TmvDatasourceGroup::AddLinkAST(TmvDatasourceBase* owner, TmvOwned<TSQLExpressionItem> expression,
                                        bool isNew, TmvQueryBuilderLinkPlace place) {
  if (!expression) return nullptr;
  if (!owner) {
    TmvDatasourceGroup* top = TopGroup();
    TmvDatasourceList all;
    top->GetDatasources(all);
    TSQLFromSourceList sources;
    expression->GetReferencedDatasourcesRecursive(sources);
    std::vector<std::vector<TmvDatasourceBase*>> chains;
    TmvDatasourceList seen;
    for (TSQLFromSource* source : sources) {
      auto* datasource = TmvCast<TmvDatasource>(source ? source->Datasource : nullptr);
      if (!datasource || std::find(all.begin(), all.end(), datasource) == all.end()) continue;
      if (std::find(seen.begin(), seen.end(), datasource) != seen.end()) continue;
      seen.push_back(datasource);
      chains.push_back(GroupChain(top, datasource));
    }
    // Down to the lowest common level: the first elements are then items of one group.
    auto firstsEqual = [&chains] {
      for (auto& chain : chains)
        if (chain.empty() || chain.front() != chains.front().front()) return false;
      return true;
    };
    while (chains.size() >= 2 && firstsEqual())
      for (auto& chain : chains) chain.erase(chain.begin());
    if (chains.size() < 2) RaiseListIndexError(1, static_cast<int64_t>(chains.size()));
    for (auto& chain : chains) {
      if (chain.empty()) RaiseListIndexError(0, 0);
      TmvDatasourceBase* first = chain.front();
      if (!owner || first->Group()->IndexOf(first) > owner->Group()->IndexOf(owner)) owner = first;
    }
  }
  TmvDatasourceGroup* group = owner->Group() ? owner->Group() : this;
  TmvUpdateScope update(group);
  TmvLink* link = group->CreateLink();
  link->SetLinkParamsInternal(owner, std::move(expression), isNew, place);
  MakeControl(link);
  link->Realign();
  group->NotifyReorderNeeded();
  return link;
}

namespace {

// Takes every operand of an AND (nested ANDs too) that `isLink` accepts out to
// `take`; what remains comes back, null when nothing does. An OR or any other
// logical collection stays whole; a lone expression is tried by itself. With
// `unwrapSingle` an AND left with one operand gives that operand.
TmvOwned<TSQLExpressionItem> TakeLinksOut(TmvOwned<TSQLExpressionItem> item,
                                          const std::function<bool(TSQLExpressionItem*)>& isLink,
                                          const std::function<void(TmvOwned<TSQLExpressionItem>)>& take,
                                          bool unwrapSingle) {
  TSQLExpressionItem* bare = ExpressionRemoveBrackets(item.get());
  if (auto* conjunction = TmvCast<TSQLExpressionAnd>(bare)) {
    for (int i = 0; i < conjunction->GetCount();) {
      TSQLExpressionItem* operand = conjunction->Expression(i);
      if (TmvCast<TSQLExpressionAnd>(ExpressionRemoveBrackets(operand))) {
        // What comes back, in whatever form, takes the operand's place.
        TmvOwned<TSQLExpressionItem> rest = TakeLinksOut(conjunction->Extract(i), isLink, take, unwrapSingle);
        if (rest) conjunction->Insert(i++, std::move(rest));
      } else if (isLink(operand)) {
        take(conjunction->Extract(i));
      } else {
        ++i;
      }
    }
    if (conjunction->GetCount() == 0) return nullptr;
    if (unwrapSingle && conjunction->GetCount() == 1) return conjunction->Extract(0);
    return item;
  }
  if (TmvCast<TSQLExpressionLogicalCollection>(bare)) return item;
  if (isLink(item.get())) {
    take(std::move(item));
    return nullptr;
  }
  return item;
}

}  // namespace

std::vector<TmvLink*> TmvDatasourceBase::AddLinksFromExpression(TmvOwned<TSQLExpressionItem> expression) {
  std::vector<TmvLink*> result;
  TmvDatasourceGroup* group = Group();
  if (!group || group->IndexOf(this) <= 0)
    throw EmvQueryBuilderError(MessageText(mvQBLinksToFirstDatasource));
  if (!expression) return result;
  TmvUpdateScope update(group);
  auto addLink = [&](TmvOwned<TSQLExpressionItem> item) {
    TmvLink* link = group->CreateLink();
    link->SetLinkParamsInternal(this, std::move(item), false, lpFrom);
    if (HasControls()) MakeControl(link);
    result.push_back(link);
  };
  auto isLink = [this](TSQLExpressionItem* item) { return TmvLink::CanLoadExpressionAsSimpleLink(this, item); };
  if (TmvOwned<TSQLExpressionItem> rest = TakeLinksOut(std::move(expression), isLink, addLink, false))
    addLink(std::move(rest));
  group->NotifyReorderNeeded();
  NotifySQLUpdated();
  return result;
}

void TmvDatasourceBase::LoadJoins() {
  if (!pendingJoinExpression_ || !Group() || Group()->IndexOf(this) <= 0) return;
  AddLinksFromExpression(std::move(pendingJoinExpression_));
}

void TmvDatasourceGroup::LoadJoins() {
  TmvDatasourceBase::LoadJoins();
  for (TmvDatasourceBase* item : std::vector<TmvDatasourceBase*>(items_)) item->LoadJoins();
}

TmvOwned<TSQLExpressionItem> TmvDatasourceGroup::LoadWhereJoins(TmvOwned<TSQLExpressionItem> where) {
  if (!where || !Host() || !Host()->Options.LoadJoinsFromWhereClause || !SQLContext() ||
      !SQLContext()->SyntaxProvider())
    return where;
  TmvUpdateScope update(this);
  auto addLink = [this](TmvOwned<TSQLExpressionItem> item) {
    TmvLink* link = AddLinkAST(nullptr, std::move(item), false, lpWhere);
    if (link) MakeControl(link);
  };
  auto isLink = [this](TSQLExpressionItem* item) { return TmvLink::CanLoadExpressionAsSimpleWhereLink(this, item); };
  return TakeLinksOut(std::move(where), isLink, addLink, true);
}

void TmvDatasourceGroup::GetWhereJoinConditions(TSQLExpressionAnd& conditions) const {
  std::vector<TmvLink*> links;
  GetLinksRecursive(links);
  for (TmvLink* link : links)
    if (link->LinkPlace() == lpWhere && link->GetLinkExpression())
      conditions.Add(link->GetLinkExpression()->CloneAs<TSQLExpressionItem>(SQLContext()));
}

TmvOwned<TSQLExpressionItem> TmvDatasourceGroup::AddWhereJoinConditions(TmvOwned<TSQLExpressionItem> where) const {
  auto joins = TastCreate<TSQLExpressionAnd>(SQLContext());
  GetWhereJoinConditions(*joins);
  if (joins->GetCount() == 0) return where;
  if (!where) return joins;
  // The links go in front of the items of an AND that WHERE is already.
  auto putInFront = [&joins](TSQLExpressionAnd* conjunction) {
    for (int i = joins->GetCount() - 1; i >= 0; --i) conjunction->Insert(0, joins->Extract(i));
  };
  TSQLExpressionItem* bare = ExpressionRemoveBrackets(where.get());
  if (auto* disjunction = TmvCast<TSQLExpressionOr>(bare); disjunction && disjunction->GetCount() == 1) {
    if (auto* conjunction = TmvCast<TSQLExpressionAnd>(ExpressionRemoveBrackets(disjunction->Expression(0)))) {
      putInFront(conjunction);
      return where;
    }
  } else if (auto* conjunction = TmvCast<TSQLExpressionAnd>(bare)) {
    putInFront(conjunction);
    return where;
  }
  joins->Add(std::move(where));
  return joins;
}

}  // namespace mv
