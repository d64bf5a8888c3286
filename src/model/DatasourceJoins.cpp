// The joins of FROM entries: the join kind each entry keeps on its node,
// the links a group owns, and the ON clause made of an entry's links.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/QueryTree.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"

namespace mv {

// --- The group's links ---

TmvLink* TmvDatasourceGroup::Links(int index) const {
  if (index < 0 || index >= LinksCount()) RaiseListIndexError(index, LinksCount());
  return links_[index];
}

void TmvDatasourceGroup::RegisterLink(TmvLink* link) {
  if (std::find(links_.begin(), links_.end(), link) == links_.end()) links_.push_back(link);
}

void TmvDatasourceGroup::UnregisterLink(TmvLink* link) { std::erase(links_, link); }

TmvLink* TmvDatasourceGroup::CreateLink() {
  auto owned = TmvCreate<TmvLink>(Host(), this);
  TmvLink* link = owned.get();
  RegisterChild(std::move(owned));
  RegisterLink(link);
  link->SetUpdateParent(this);
  return link;
}

void TmvDatasourceGroup::GetLinksRecursive(std::vector<TmvLink*>& list) const {
  list.insert(list.end(), links_.begin(), links_.end());
  for (TmvDatasourceBase* item : items_)
    if (auto* group = TmvCast<TmvDatasourceGroup>(item)) group->GetLinksRecursive(list);
}

// --- Join kinds ---

TSQLJoinKind* TmvDatasourceBase::GetJoinKind() const { return fromSource_ ? fromSource_->JoinKind.get() : nullptr; }

TastNodeClassRef TmvDatasourceBase::GetJoinKindClass() const {
  TSQLJoinKind* kind = GetJoinKind();
  return kind ? &kind->NodeClass() : nullptr;
}

void TmvDatasourceBase::SetFromSourceJoinKind(TmvOwned<TSQLJoinKind> kind) {
  if (!fromSource_) return;
  fromSource_->JoinKind.Reset();
  if (kind) fromSource_->JoinKind.Set(std::move(kind));
  NotifySQLUpdated();
}

void TmvDatasourceBase::SetJoinKindClass(TastNodeClassRef kindClass) {
  if (kindClass == GetJoinKindClass()) return;
  TmvOwned<TSQLJoinKind> kind;
  if (kindClass) {
    kind = TastCreateOfClass<TSQLJoinKind>(*kindClass, SQLContext());
    if (kind && GetJoinKind()) kind->Assign(*GetJoinKind());
  }
  SetJoinKind(std::move(kind));
}

std::vector<TmvLink*> TmvDatasourceBase::GetOwnedLinks() const {
  std::vector<TmvLink*> owned;
  if (!group_) return owned;
  for (TmvLink* link : group_->GetLinks())
    if (link->JoinOwner() == this) owned.push_back(link);
  return owned;
}

void TmvDatasourceBase::SetJoinKind(TmvOwned<TSQLJoinKind> kind) {
  TmvDatasourceGroup* group = group_;
  {
    TmvUpdateScope update(group ? static_cast<TmvQueryBuilderControlOwner*>(group) : this);
    SetFromSourceJoinKind(std::move(kind));
    TSQLJoinKind* now = GetJoinKind();
    const bool left = now && now->IsLeftOuter(), right = now && now->IsRightOuter();
    TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
    const bool whereMarks = provider && (provider->IsSupportOracleJoins() || provider->IsSupportTransactSQLJoins());
    const std::vector<TmvLink*> links = GetOwnedLinks();
    for (TmvLink* link : links) {
      if (link->LinkPlace() == lpWhere && !whereMarks) continue;
      const bool turned = link->IsSimple() && !ContainsDatasource(link->RightDatasource(), true);
      const bool linkLeft = turned ? right : left, linkRight = turned ? left : right;
      link->SetSideTypesInternal(linkLeft ? ltOuter : ltInner, linkRight ? ltOuter : ltInner);
    }
    // A dialect without right joins gets a left join: the entry moves in
    // front of its partners and its links turn round.
    if (right && provider && !provider->IsSupportRightANSIJoin() && group && !links.empty()) {
      int lowest = group->IndexOf(this);
      for (TmvLink* link : links)
        for (TmvDatasourceBase* entry : link->SameLevelDatasources())
          if (const int at = group->IndexOf(entry); at >= 0) lowest = std::min(lowest, at);
      group->InsertInternal(lowest, this);
      group->NotifyReorderNeeded();
      for (TmvLink* link : links) {
        link->FlipLink();
        link->RecalcSideDatasources();
      }
    }
    NotifySQLUpdated();
  }
  RealignLinks();
  InvalidateLinks();
}

void TmvDatasourceBase::RealignLinks() {
  if (!group_) return;
  TmvDatasourceList own;
  GetDatasources(own);
  for (TmvDatasourceGroup* group = group_; group; group = group->Group())
    for (TmvLink* link : group->GetLinks())
      if (link->JoinOwner() == this || std::find(own.begin(), own.end(), link->LeftDatasource()) != own.end() ||
          std::find(own.begin(), own.end(), link->RightDatasource()) != own.end())
        link->Realign();
}

void TmvDatasourceBase::InvalidateLinks() {
  for (TmvLink* link : GetOwnedLinks()) link->NotifySQLUpdated();
}

// --- The ON clause ---

TmvOwned<TSQLExpressionItem> TmvDatasourceBase::CreateJoinExpression() const {
  auto conditions = TastCreate<TSQLExpressionAnd>(SQLContext());
  for (TmvLink* link : GetOwnedLinks())
    if (link->LinkPlace() == lpFrom && link->GetLinkExpression())
      conditions->Add(link->GetLinkExpression()->CloneAs<TSQLExpressionItem>(SQLContext()));
  if (conditions->GetCount() > 0) return SimplifyLogicalExpression(std::move(conditions));
  // An ON clause no link was made of (the first entry's) stays as it came.
  if (pendingJoinExpression_) return pendingJoinExpression_->CloneAs<TSQLExpressionItem>(SQLContext());
  return nullptr;
}

}  // namespace mv
