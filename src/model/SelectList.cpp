// The select list of one SELECT: its rows, the invariant that keeps one
// empty row at the end, and the loading of the select clause.
#include "model/SelectList.h"

#include <algorithm>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "tree/SelectClauses.h"

namespace mv {

MV_DEFINE_CLASS(TmvSelectList, TmvQueryBuilderControlOwner)

TmvSelectList::TmvSelectList(TmvQueryModelHost* host, TmvUnionSubQuery* unionSubQuery)
    : TmvQueryBuilderControlOwner(host, unionSubQuery), unionSubQuery_(unionSubQuery) {}

TmvSelectList::~TmvSelectList() = default;

void TmvSelectList::AfterConstruction() { TmvQueryBuilderControlOwner::AfterConstruction(); }

void TmvSelectList::Destroying() { TmvQueryBuilderControlOwner::Destroying(); }

TmvSelectItem* TmvSelectList::Items(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
  return items_[index];
}

int TmvSelectList::IndexOf(const TmvSelectItem* item) const {
  auto found = std::find(items_.begin(), items_.end(), item);
  return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
}

void TmvSelectList::ItemDestroying(TmvSelectItem* item) {
  auto drop = [item](std::vector<TmvSelectItem*>& list) { std::erase(list, item); };
  drop(items_);
  drop(whereOrder_);
  drop(havingOrder_);
  drop(orderBy_);
}

void TmvSelectList::DoAfterUpdated() { TmvQueryBuilderControlOwner::DoAfterUpdated(); }

TmvOwned<TastNode> TmvSelectList::CreateResultAST() { return nullptr; }

}  // namespace mv
