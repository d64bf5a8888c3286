// The reorder of a FROM clause: the links of a group decide which entries
// are joined to which, with which join kind, in what order and inside which
// brackets. It runs once per group at the end of the outermost update in
// which a change asked for it (NotifyReorderNeeded), nested groups first.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/QueryTree.h"
#include "tree/FromClause.h"

namespace mv {

namespace {

template <class List, class T>
bool Has(const List& list, const T* item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

bool IsOuter(TmvQueryBuilderLinkSideType type) { return type == ltOuter; }

// One connected part of the FROM clause: entries joined by links.
struct TmvDatasourceSet {
  std::vector<TmvDatasourceBase*> Items;
  std::vector<TmvLink*> Links;
};

}  // namespace


bool TmvDatasourceGroup::IsReorderRequired() const {
  const std::vector<TmvLink*>& links = GetLinks();
  if (Count() == 0) return !links.empty();
  for (TmvLink* link : links)
    if (link->IsNew()) return true;
  if (Count() == 1 && TmvCast<TmvDatasourceGroup>(Items(0))) return true;
  for (int i = 0; i < Count(); ++i) {
    TmvDatasourceBase* item = Items(i);
    const TSQLJoinKind* kind = item->FromSource() ? item->FromSource()->JoinKind.get() : nullptr;
    bool owns = false;
    for (TmvLink* link : links) {
      if (link->LinkPlace() != lpFrom || link->JoinOwner() != item) continue;
      owns = true;
      if (!kind) continue;
      for (TmvDatasourceBase* entry : link->SameLevelDatasources()) {
        const int at = IndexOf(entry);
        if (at < 0 || at > i) return true;
      }
      if (IsOuter(link->LeftType()) != kind->IsLeftOuter() || IsOuter(link->RightType()) != kind->IsRightOuter())
        return true;
    }
    if (owns && (i == 0 || !kind)) return true;
    if (!owns && kind && !TmvCast<TSQLJoinKindCross>(kind)) return true;
    if (auto* group = TmvCast<TmvDatasourceGroup>(item); group && group->Count() == 0) return true;
  }
  return false;
}

namespace {

int reorderRuns = 0;

// Drops the cached trees of the entries below a group. The group acts on
// news already, so news of its entries would only cost another pass.
void DropCachedTrees(TmvDatasourceGroup* group) {
  for (int i = 0; i < group->Count(); ++i) {
    TmvDatasourceBase* item = group->Items(i);
    item->DestroyCachedResultASTs();
    if (auto* nested = TmvCast<TmvDatasourceGroup>(item)) DropCachedTrees(nested);
  }
}

void DestroyLink(TmvLink* link) {
  if (TmvQueryBuilderControlOwner* owner = link->Parent()) owner->DestroyChild(link);
}

// Whether the expression of the link refers to a datasource inside `item`.
bool ReachesInto(const TmvLink* link, const TmvDatasourceBase* item) {
  for (TmvDatasource* datasource : link->ReferencedDatasources())
    if (item->ContainsDatasource(datasource, true)) return true;
  return false;
}

// The owner of a link after entries moved between groups: the item of its
// group that holds the latest datasource the expression refers to.
void RecalcLinkOwner(TmvLink* link) {
  TmvDatasourceGroup* group = link->DatasourceGroup();
  TmvDatasourceBase* owner = nullptr;
  int ownerIndex = -1;
  for (int i = 0; i < group->Count(); ++i)
    if (ReachesInto(link, group->Items(i))) {
      owner = group->Items(i);
      ownerIndex = i;
    }
  if (ownerIndex < 0) owner = link->JoinOwner();
  link->SetJoinOwner(owner);
  link->RecalcSameLevelDatasources(owner);
  link->RecalcSideDatasources();
}

// The connected sets of a group: an entry and every entry that a link
// reaches from it.
class TmvSetSplitter {
 public:
  TmvSetSplitter(std::vector<TmvLink*> pending, std::vector<TmvDatasourceBase*> rest)
      : pending_(std::move(pending)), rest_(std::move(rest)) {}

  std::vector<TmvDatasourceSet> Split() {
    std::vector<TmvDatasourceSet> sets;
    while (!rest_.empty()) {
      sets.emplace_back();
      Collect(rest_.front(), sets.back());
    }
    return sets;
  }

 private:
  void Collect(TmvDatasourceBase* datasource, TmvDatasourceSet& set) {
    std::erase(rest_, datasource);
    if (!Has(set.Items, datasource)) set.Items.push_back(datasource);
    for (int i = static_cast<int>(pending_.size()) - 1; i >= 0; --i) {
      // The recursion below may have taken links: back to the last one left.
      if (i >= static_cast<int>(pending_.size())) i = static_cast<int>(pending_.size()) - 1;
      if (i < 0) break;
      TmvLink* link = pending_[i];
      // A link whose other entries are all taken goes with the last entry left.
      if (!Has(link->SameLevelDatasources(), datasource) && !Has(set.Items, link->LeftDatasource()) &&
          rest_.size() != 1)
        continue;
      set.Links.push_back(link);
      pending_.erase(pending_.begin() + i);
      for (TmvDatasourceBase* entry : std::vector<TmvDatasourceBase*>(link->SameLevelDatasources()))
        if (!Has(set.Items, entry)) Collect(entry, set);
    }
  }

  std::vector<TmvLink*> pending_;
  std::vector<TmvDatasourceBase*> rest_;
};

// Places the entries of one set in an order in which every join refers only
// to entries before it, and gives each its join kind.
class TmvSetPlacer {
 public:
  TmvSetPlacer(TmvDatasourceSet& set, TmvBaseSyntaxProvider* provider) : set_(set), provider_(provider) {}

  // Whether `link` joins `candidate` now: the candidate is its last entry
  // not yet placed.
  bool Applies(TmvLink* link, TmvDatasourceBase* candidate) const {
    if (link->IsSimple()) {
      if (!candidate->ContainsDatasource(link->LeftDatasource(), true) &&
          !candidate->ContainsDatasource(link->RightDatasource(), true))
        return false;
    } else if (link->JoinOwner() != candidate) {
      return false;
    }
    int missing = 0;
    bool isCandidate = false;
    for (TmvDatasourceBase* entry : link->SameLevelDatasources())
      if (!Has(placed_, entry)) {
        ++missing;
        isCandidate = entry == candidate;
      }
    return missing == 1 && isCandidate;
  }

  // Whether the candidate can be placed next: the first entry of a set
  // cannot carry a join; any other needs one, and the links that were
  // there before must agree on its outer sides.
  bool CanPlace(TmvDatasourceBase* candidate) const {
    bool any = false, wanted = false, left = false, right = false;
    for (TmvLink* link : links_) {
      if (!Applies(link, candidate)) continue;
      any = true;
      if (placed_.empty()) return false;
      if (link->IsNew()) continue;
      bool l = IsOuter(link->LeftType()), r = IsOuter(link->RightType());
      if (!wanted) {
        const bool asIs = candidate == link->JoinOwner() ||
                          (link->IsSimple() && candidate->ContainsDatasource(link->RightDatasource(), true));
        if (!asIs) std::swap(l, r);
        left = l;
        right = r;
        wanted = true;
      } else if (link->LinkPlace() == lpFrom) {
        if (candidate != link->JoinOwner()) std::swap(l, r);
        if (l != left || r != right) return false;
      }
    }
    return placed_.empty() || any;
  }

  const TastNodeClass* CrossOrNothing() const {
    return provider_ && provider_->IsSupportCrossJoin() ? &TSQLJoinKindCross::StaticClass() : nullptr;
  }

  std::vector<TmvDatasourceBase*> Place(bool topGroup) {
    links_ = set_.Links;
    while (!set_.Items.empty()) {
      TmvDatasourceBase* candidate = nullptr;
      for (TmvDatasourceBase* item : set_.Items)
        if (CanPlace(item)) {
          candidate = item;
          break;
        }
      const TastNodeClass* kind = CrossOrNothing();
      std::vector<TmvLink*> applied;
      if (candidate) {
        TmvLink* first = nullptr;
        for (int i = static_cast<int>(links_.size()) - 1; i >= 0; --i) {
          TmvLink* link = links_[i];
          if (!Applies(link, candidate)) continue;
          links_.erase(links_.begin() + i);
          if (link->IsSimple() && candidate != link->JoinOwner()) link->FlipLink();
          if (link->JoinOwner() != candidate) {
            link->SetJoinOwner(candidate);
            link->RecalcSameLevelDatasources(candidate);
          }
          first = link;
          applied.push_back(link);
        }
        if (first) {
          const bool l = IsOuter(first->LeftType()), r = IsOuter(first->RightType());
          kind = l && r  ? &TSQLJoinKindFull::StaticClass()
                 : l     ? &TSQLJoinKindLeft::StaticClass()
                 : r     ? &TSQLJoinKindRight::StaticClass()
                         : &TSQLJoinKindInner::StaticClass();
        }
      } else {
        candidate = set_.Items.front();
      }
      std::erase(set_.Items, candidate);
      SetKind(candidate, topGroup && placed_.empty() ? nullptr : kind, topGroup && placed_.empty());
      // The links under the entry follow its kind (new ones had not bound it).
      const TSQLJoinKind* placedKind = candidate->GetJoinKind();
      const bool left = placedKind && placedKind->IsLeftOuter(), right = placedKind && placedKind->IsRightOuter();
      for (TmvLink* link : applied) {
        const bool turned = link->IsSimple() && !candidate->ContainsDatasource(link->RightDatasource(), true);
        link->SetSideTypesInternal((turned ? right : left) ? ltOuter : ltInner,
                                   (turned ? left : right) ? ltOuter : ltInner);
      }
      placed_.push_back(candidate);
    }
    return placed_;
  }

 private:
  static void SetKind(TmvDatasourceBase* entry, const TastNodeClass* kind, bool clear) {
    TSQLFromSource* node = entry->FromSource();
    if (!node) return;
    TSQLJoinKind* old = node->JoinKind.get();
    if (clear) {
      node->JoinKind.Reset();
    } else if (!old) {
      if (kind) node->JoinKind.Set(TastCreateOfClass<TSQLJoinKind>(*kind, node->SQLContext()));
    } else if (&old->NodeClass() != kind) {
      if (!kind) {
        node->JoinKind.Reset();
      } else {
        TmvOwned<TSQLJoinKind> replacement = TastCreateOfClass<TSQLJoinKind>(*kind, node->SQLContext());
        replacement->Assign(*old);
        node->JoinKind.Set(std::move(replacement));
      }
    }
  }

  TmvDatasourceSet& set_;
  TmvBaseSyntaxProvider* provider_;
  std::vector<TmvLink*> links_;
  std::vector<TmvDatasourceBase*> placed_;
};

// Folds the placed entries of a set into brackets of two, left-deep:
// ((a JOIN b) JOIN c) JOIN d.
void FoldBinary(TmvDatasourceGroup* group, std::vector<TmvDatasourceBase*>& placed) {
  while (placed.size() > 2) {
    TmvDatasourceBase* first = placed[0];
    TmvDatasourceBase* second = placed[1];
    TmvDatasourceGroup* bracket = group->CreateNestedGroup(TastCreate<TSQLFromGroup>(group->SQLContext()));
    group->ExtractInternal(bracket);
    // The bracket takes the place of its first entry, with its join kind.
    if (first->FromSource() && first->FromSource()->JoinKind)
      bracket->FromSource()->JoinKind.Set(first->FromSource()->JoinKind.Release());
    bracket->InsertInternal(0, first);
    bracket->InsertInternal(1, second);
    for (TmvLink* link : std::vector<TmvLink*>(group->GetLinks())) {
      const auto& level = link->SameLevelDatasources();
      const bool inside = !level.empty() && std::all_of(level.begin(), level.end(), [&](TmvDatasourceBase* entry) {
        return entry == first || entry == second;
      });
      if (inside) {
        link->SetDatasourceGroup(bracket);
        continue;
      }
      if (Has(level, first)) link->MoveDatasourceIntoGroup(first, bracket);
      if (Has(link->SameLevelDatasources(), second)) link->MoveDatasourceIntoGroup(second, bracket);
    }
    first->DestroyCachedResultASTs();
    second->DestroyCachedResultASTs();
    placed.erase(placed.begin(), placed.begin() + 2);
    placed.insert(placed.begin(), bracket);
  }
}

void FixNewWhereLinks(const std::vector<TmvLink*>& links) {
  for (TmvLink* link : links) {
    if (link->LinkPlace() != lpWhere || !link->IsSimple() || !link->IsNew()) continue;
    for (TmvLink* other : links) {
      if (other == link || !other->IsSimple() || other->IsNew()) continue;
      const bool same = other->LeftDatasource() == link->LeftDatasource() &&
                        other->RightDatasource() == link->RightDatasource();
      const bool against = other->LeftDatasource() == link->RightDatasource() &&
                           other->RightDatasource() == link->LeftDatasource();
      if (!same && !against) continue;
      const bool l = IsOuter(other->LeftType()), r = IsOuter(other->RightType());
      // Both sides outer: a full join gives both flags.
      const TastNodeClass& kind = !l && !r                ? TSQLJoinKindInner::StaticClass()
                                  : l && r                ? TSQLJoinKindFull::StaticClass()
                                  : (same ? l : !l)       ? TSQLJoinKindLeft::StaticClass()
                                                          : TSQLJoinKindRight::StaticClass();
      link->SetJoinKindClass(&kind);
      break;
    }
  }
}

}  // namespace

int TmvDatasourceGroup::ReorderCount() { return reorderRuns; }

void TmvDatasourceGroup::ReorderDatasourcesInternal() {
  TmvQueryModelHost* host = Host();
  if (!host || !host->Options.CanReorderDatasources || !IsReorderRequired()) {
    // The order stands; what the entries print (their ON clauses) may not.
    DropCachedTrees(this);
    for (TmvLink* link : GetLinks()) link->SetIsNew(false);
    return;
  }
  ++reorderRuns;
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  TmvUpdateScope update(this);

  // 1-2. Connected sets.
  std::vector<TmvLink*> pending;
  for (TmvLink* link : GetLinks())
    if (link->LinkPlace() == lpFrom) pending.push_back(link);
  std::vector<TmvDatasourceSet> sets = TmvSetSplitter(pending, items_).Split();

  for (TmvDatasourceSet& set : sets) {
    // 3. A lone entry has nothing to be joined to.
    if (set.Items.size() == 1) {
      for (TmvLink* link : set.Links) DestroyLink(link);
      set.Links.clear();
    }
    // 4. The present order of the group.
    std::sort(set.Items.begin(), set.Items.end(),
              [this](TmvDatasourceBase* a, TmvDatasourceBase* b) { return IndexOf(a) < IndexOf(b); });
  }

  // 5. A bracket that is joined to nothing dissolves into this group.
  for (auto it = sets.rbegin(); it != sets.rend(); ++it) {
    auto* nested = it->Items.size() == 1 ? TmvCast<TmvDatasourceGroup>(it->Items.front()) : nullptr;
    if (!nested) continue;
    it->Items.clear();
    int at = IndexOf(nested);
    for (TmvDatasourceBase* item : std::vector<TmvDatasourceBase*>(nested->items_)) {
      InsertInternal(++at, item);
      it->Items.push_back(item);
    }
    for (TmvLink* link : std::vector<TmvLink*>(nested->GetLinks())) {
      link->SetDatasourceGroup(this);
      if (link->LinkPlace() == lpFrom) it->Links.push_back(link);
    }
    // Links here that reached into the bracket now reach its entries.
    for (TmvLink* link : GetLinks())
      if (Has(link->SameLevelDatasources(), nested)) RecalcLinkOwner(link);
    TopGroup()->DestroyChild(nested);
  }

  // 6. A bracket keeps only what is joined inside it.
  if (TmvDatasourceGroup* parent = Group()) {
    for (auto it = sets.rbegin(); it != sets.rend(); ++it) {
      if (!it->Links.empty() || it->Items.empty()) continue;
      int at = parent->IndexOf(this);
      for (TmvDatasourceBase* item : it->Items) parent->InsertInternal(++at, item);
      for (TmvLink* link : parent->GetLinks()) {
        if (!Has(link->SameLevelDatasources(), this)) continue;
        for (TmvDatasourceBase* item : it->Items)
          if (Has(link->SameLevelDatasources(), item) || ReachesInto(link, item)) {
            RecalcLinkOwner(link);
            break;
          }
      }
      it->Items.clear();
      parent->NotifyReorderNeeded();
    }
  }

  // 7. Empty sets go, and with them empty brackets.
  for (int i = static_cast<int>(sets.size()) - 1; i >= 0; --i) {
    std::vector<TmvDatasourceBase*>& items = sets[i].Items;
    auto* empty = items.size() == 1 ? TmvCast<TmvDatasourceGroup>(items.front()) : nullptr;
    if (empty && empty->Count() > 0) empty = nullptr;
    if (!items.empty() && !empty) continue;
    if (empty) {
      ExtractInternal(empty);
      TopGroup()->DestroyChild(empty);
    }
    sets.erase(sets.begin() + i);
  }

  // 8-9. The sets in order, each placed. Folding moves links into new
  // brackets: the fix-up and the end of newness reach them there too.
  const std::vector<TmvLink*> links = GetLinks();
  items_.clear();
  for (TmvDatasourceSet& set : sets) {
    std::vector<TmvDatasourceBase*> placed = TmvSetPlacer(set, provider).Place(Group() == nullptr);
    if (placed.size() > 2 && provider && provider->IsForceBinaryANSIJoins()) FoldBinary(this, placed);
    for (TmvDatasourceBase* item : placed) {
      item->DestroyCachedResultASTs();
      AddInternal(item);
    }
  }

  // 10. A new where-link takes the outer sides of the link it repeats.
  FixNewWhereLinks(links);
  for (TmvLink* link : links) link->SetIsNew(false);
}

}  // namespace mv
