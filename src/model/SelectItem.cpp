// One row of the select list: what it holds, what it can be, and the plain
// setters that change the row alone.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"

namespace mv {

MV_DEFINE_CLASS(TmvSelectItem, TmvQueryBuilderControlOwner)

TmvSelectItem::TmvSelectItem(TmvQueryModelHost* host, TmvSelectList* selectList)
    : TmvQueryBuilderControlOwner(host, selectList), selectList_(selectList) {}

TmvSelectItem::~TmvSelectItem() = default;

TmvUnionSubQuery* TmvSelectItem::UnionSubQuery() const { return selectList_->UnionSubQuery(); }

int TmvSelectItem::Index() const { return selectList_->IndexOf(this); }

TSQLExpressionItem* TmvSelectItem::Conditions(int index) const {
  return index >= 0 && index < ConditionsListCount() ? conditions_[index].get() : nullptr;
}

void TmvSelectItem::Destroying() {
  selectList_->ItemDestroying(this);
  TmvQueryBuilderControlOwner::Destroying();
}

void TmvSelectItem::DoSQLUpdated() {}

bool TmvSelectItem::NotifyDatasourceDestroyingInternal(TmvDatasource*) { return false; }

void TmvSelectItem::NotifyDatasourceReplacedInternal(TmvDatasource*, TmvDatasource*) {}

TmvOwned<TastNode> TmvSelectItem::CreateResultAST() { return nullptr; }

}  // namespace mv
