// The link itself: its state, its ends and sides, and what happens to it
// when a datasource goes or is replaced.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/Datasources.h"
#include "model/Links.h"

#include "support/WideFormat.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "support/MessageCatalog.h"
#include "support/WideFormat.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/QualifiedNames.h"

namespace mv {

MV_DEFINE_CLASS(TmvLink, TmvQueryBuilderControlOwner)

namespace {

TmvDatasource* DatasourceOfColumn(const TSQLObjectColumn* column) {
  return column && column->FromSource ? TmvCast<TmvDatasource>(column->FromSource->Datasource) : nullptr;
}

// The datasources the node refers to, each once, in the order of reference.
TmvDatasourceList ReferencedDatasourcesOf(TastNodeBase* node) {
  TmvDatasourceList list;
  if (!node) return list;
  TSQLFromSourceList sources;
  node->GetReferencedDatasourcesRecursive(sources);
  for (TSQLFromSource* source : sources) {
    auto* datasource = TmvCast<TmvDatasource>(source ? source->Datasource : nullptr);
    if (datasource && std::find(list.begin(), list.end(), datasource) == list.end()) list.push_back(datasource);
  }
  return list;
}

// The one datasource the operand refers to, or null when it refers to none or several.
TmvDatasource* SoleDatasourceOf(TSQLExpressionItem* operand) {
  TmvDatasourceList list = ReferencedDatasourcesOf(operand);
  return list.size() == 1 ? list.front() : nullptr;
}

TmvBaseSyntaxProvider* ProviderOf(const TmvQueryBuilderControlOwner* owner) {
  return owner->SQLContext() ? owner->SQLContext()->SyntaxProvider() : nullptr;
}

// "*=" and "=*" lose their star.
void RemoveTransactSQLMarks(TSQLExpressionItem* expression) {
  TSQLExpressionOperatorBinary* binary = ExpressionGetTompostBinaryOperator(expression);
  if (!binary || !binary->Operator) return;
  WideString& text = binary->Operator->Text;
  if (text == u"*=")
    text = u"=";
  else if (text == u"=*")
    text = u"=";
}

void SetOraclePlus(TSQLExpressionItem* expression, bool flag, const std::function<bool(TSQLObjectColumn*)>& which) {
  if (!expression) return;
  TSQLObjectColumnList columns;
  expression->GetReferencedColumnsRecursive(columns);
  for (TSQLObjectColumn* column : columns)
    if (which(column)) column->OuterJoinMark = flag;
}

}  // namespace

TmvLink::TmvLink(TmvQueryModelHost* host, TmvDatasourceGroup* group)
    : TmvQueryBuilderControlOwner(host, group), datasourceGroup_(group) {}

TmvLink::~TmvLink() = default;

TmvUnionSubQuery* TmvLink::UnionSubQuery() const {
  return datasourceGroup_ ? datasourceGroup_->UnionSubQuery() : nullptr;
}

void TmvLink::Destroying() {
  ClearEnds();
  if (datasourceGroup_ && !datasourceGroup_->IsDestroying()) {
    if (joinOwner_ && !joinOwner_->IsDestroying()) joinOwner_->NotifySQLUpdated();
    datasourceGroup_->UnregisterLink(this);
    // The owner's join may have nothing left to join on.
    datasourceGroup_->NotifyReorderNeeded();
  }
  TmvQueryBuilderControlOwner::Destroying();
}

// --- Ends ---

void TmvLink::HookEnd(TmvDatasource* datasource) {
  if (datasource) datasource->OnDestroying().AddHandler(this, &TmvLink::EndDestroying);
}

void TmvLink::UnhookEnd(TmvDatasource* datasource) {
  if (datasource) datasource->OnDestroying().RemoveHandler(this, &TmvLink::EndDestroying);
}

void TmvLink::SetLeftDatasource(TmvDatasource* datasource) {
  if (datasource == leftDatasource_) return;
  if (leftDatasource_ != rightDatasource_) UnhookEnd(leftDatasource_);
  leftDatasource_ = datasource;
  if (datasource && datasource != rightDatasource_) HookEnd(datasource);
  Realign();
}

void TmvLink::SetRightDatasource(TmvDatasource* datasource) {
  if (datasource == rightDatasource_) return;
  if (leftDatasource_ != rightDatasource_) UnhookEnd(rightDatasource_);
  rightDatasource_ = datasource;
  if (datasource && datasource != leftDatasource_) HookEnd(datasource);
  Realign();
}

void TmvLink::ClearEnds() {
  UnhookEnd(leftDatasource_);
  if (rightDatasource_ != leftDatasource_) UnhookEnd(rightDatasource_);
  leftDatasource_ = rightDatasource_ = nullptr;
  leftField_.reset();
  rightField_.reset();
}

void TmvLink::EndDestroying(TmvObject* sender) {
  const bool left = sender == leftDatasource_, right = sender == rightDatasource_;
  if (left) leftDatasource_ = nullptr;
  if (right) rightDatasource_ = nullptr;
  if (IsDestroying()) return;
  // While the SELECT or a group above is being freed there is nothing to redraw.
  for (TmvDatasourceGroup* group = datasourceGroup_; group; group = group->Group())
    if (group->IsDestroying()) return;
  if (TmvUnionSubQuery* member = UnionSubQuery(); !member || member->IsDestroying()) return;
  // A link that lives on (its expression does not refer to the datasource)
  // draws to another end.
  RecalcSideDatasources();
  Realign();
}

ImvLinkControl* TmvLink::GetLinkControl() const { return dynamic_cast<ImvLinkControl*>(GetControls(0)); }

void TmvLink::Realign() {
  if (ImvLinkControl* control = GetLinkControl()) control->Realign();
}

bool TmvLink::RefersTo(const TmvDatasource* datasource) const {
  TmvDatasourceList list = ReferencedDatasourcesOf(linkExpression_.get());
  return std::find(list.begin(), list.end(), datasource) != list.end();
}

// --- The expression ---

void TmvLink::GetReferencedColumns(TSQLExpressionItem* expression, TSQLObjectColumnList& list) {
  list.clear();
  if (!expression) return;
  TSQLObjectColumnList all;
  expression->GetReferencedColumnsRecursive(all);
  TmvBaseSQLContext* context = expression->SQLContext();
  std::vector<WideString> texts;
  for (TSQLObjectColumn* column : all) {
    WideString text = context ? column->SimpleSQL(context->SQLBuilderExpression()) : column->GetQualifiedName();
    if (std::find(texts.begin(), texts.end(), text) != texts.end()) continue;
    texts.push_back(std::move(text));
    list.push_back(column);
  }
}

void TmvLink::LoadDatasourcesList() {
  referencedDatasources_ = ReferencedDatasourcesOf(linkExpression_.get());
  RecalcSameLevelDatasources(joinOwner_);
}

void TmvLink::RecalcSameLevelDatasources(TmvDatasourceBase* owner) {
  TmvDatasourceList rest = referencedDatasources_;
  sameLevelDatasources_.clear();
  if (owner) {
    sameLevelDatasources_.push_back(owner);
    std::erase(rest, owner);
  }
  TmvDatasourceGroup* group = datasourceGroup_;
  if (!group) return;
  for (auto it = rest.begin(); it != rest.end();) {
    if (group->IndexOf(*it) >= 0) {
      if (std::find(sameLevelDatasources_.begin(), sameLevelDatasources_.end(), *it) == sameLevelDatasources_.end())
        sameLevelDatasources_.push_back(*it);
      it = rest.erase(it);
    } else {
      ++it;
    }
  }
  for (int i = 0; i < group->Count() && !rest.empty(); ++i) {
    auto* nested = TmvCast<TmvDatasourceGroup>(group->Items(i));
    if (!nested) continue;
    auto found = std::find_if(rest.begin(), rest.end(), [nested](TmvDatasource* d) {
      return nested->ContainsDatasource(d, true);
    });
    if (found == rest.end()) continue;
    if (std::find(sameLevelDatasources_.begin(), sameLevelDatasources_.end(), nested) == sameLevelDatasources_.end())
      sameLevelDatasources_.push_back(nested);
    rest.erase(found);
  }
}

namespace {

// The index of the item of `group` that is or holds `datasource`; -1 if none.
int ItemIndexOf(const TmvDatasourceGroup* group, const TmvDatasourceBase* datasource) {
  if (!group || !datasource) return -1;
  for (int i = 0; i < group->Count(); ++i)
    if (group->Items(i)->ContainsDatasource(datasource, true)) return i;
  return -1;
}

// Whether `datasource` lies in an item of the group before `owner`.
bool LiesBefore(const TmvDatasourceGroup* group, const TmvDatasourceBase* datasource, const TmvDatasourceBase* owner) {
  const int at = ItemIndexOf(group, datasource), bound = group ? group->IndexOf(owner) : -1;
  return at >= 0 && bound >= 0 && at < bound;
}

}  // namespace

void TmvLink::SetLinkParamsInternal(TmvDatasourceBase* owner, TmvOwned<TSQLExpressionItem> expression, bool isNew,
                                    TmvQueryBuilderLinkPlace place) {
  TmvUpdateScope update(this);
  if (joinOwner_ && joinOwner_ != owner && !joinOwner_->IsDestroying()) joinOwner_->NotifySQLUpdated();
  isNew_ = isNew;
  linkPlace_ = place;
  linkExpression_ = std::move(expression);
  isSimple_ = false;
  joinOwner_ = owner;
  LoadDatasourcesList();

  TmvDatasource* left = nullptr;
  TmvDatasource* right = nullptr;
  TSQLObjectColumn* leftColumn = nullptr;
  TSQLObjectColumn* rightColumn = nullptr;
  if (!sameLevelDatasources_.empty() && sameLevelDatasources_.size() <= 2) {
    TSQLObjectColumnList columns;
    GetReferencedColumns(linkExpression_.get(), columns);
    TmvDatasource* d1 = columns.size() == 2 ? DatasourceOfColumn(columns[0]) : nullptr;
    TmvDatasource* d2 = columns.size() == 2 ? DatasourceOfColumn(columns[1]) : nullptr;
    if (d1 && d2 && d1 != d2) {
      if (!owner) {
        left = d1, right = d2, leftColumn = columns[0], rightColumn = columns[1];
      } else if (LiesBefore(datasourceGroup_, d2, owner) && owner->ContainsDatasource(d1, true)) {
        left = d2, right = d1, leftColumn = columns[1], rightColumn = columns[0];
      } else if (LiesBefore(datasourceGroup_, d1, owner) && owner->ContainsDatasource(d2, true)) {
        left = d1, right = d2, leftColumn = columns[0], rightColumn = columns[1];
      }
    }
  }
  ClearEnds();
  if (left && right) {
    isSimple_ = true;
    SetLeftDatasource(left);
    SetRightDatasource(right);
    leftField_ = leftColumn->CloneAs<TSQLQualifiedName>();
    rightField_ = rightColumn->CloneAs<TSQLQualifiedName>();
    if (place == lpFrom) {
      // An ON clause has no use for the marks of outer joins in WHERE.
      SetOraclePlus(linkExpression_.get(), false, [](TSQLObjectColumn*) { return true; });
      RemoveTransactSQLMarks(linkExpression_.get());
    }
  }
  CalcLeftTypeInternal();
  CalcRightTypeInternal();
  LoadSubQueries(linkExpression_.get());
  if (isSimple_) {
    CalcCardinality();
  } else {
    ResetCardinality();
    RecalcSideDatasources();
  }
  NotifySQLUpdated();
  if (joinOwner_) joinOwner_->NotifySQLUpdated();
  Realign();
}

void TmvLink::SetLinkExpression(TmvOwned<TSQLExpressionItem> expression) {
  if (!expression) return;
  TmvUpdateScope update(datasourceGroup_);
  SetLinkParamsInternal(joinOwner_, std::move(expression), isNew_, linkPlace_);
  if (datasourceGroup_) datasourceGroup_->NotifyReorderNeeded();
}

WideString TmvLink::GetLinkExpressionString() {
  if (!linkExpression_ || !SQLContext()) return {};
  return linkExpression_->SimpleSQL(SQLContext()->SQLBuilderExpression());
}

void TmvLink::SetLinkExpressionString(const WideString& text) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context) return;
  TmvOwned<TSQLExpressionItem> expression = context->ParseLogicalExpression(text);
  if (!expression) throw EmvQueryBuilderError(MessageFormat(mvQBBadExpression, {text}));
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  if (TmvUnionSubQuery* member = UnionSubQuery()) member->GatherPrepareAndFixupContext(cteList, fromSources, true);
  expression->PrepareAndFixupRecursive(cteList, fromSources);
  SetLinkExpression(std::move(expression));
}

// --- Outer sides ---

namespace {

// Which sides the marks of a where-link make outer: "(+)" first, then the
// operators "*=" and "=*".
void WhereLinkSides(const TmvLink& link, bool& leftOuter, bool& rightOuter) {
  leftOuter = rightOuter = false;
  TSQLExpressionItem* expression = link.GetLinkExpression();
  if (!expression) return;
  TSQLObjectColumnList columns;
  expression->GetReferencedColumnsRecursive(columns);
  TmvDatasourceBase* owner = link.JoinOwner();
  for (TSQLObjectColumn* column : columns) {
    if (!column->OuterJoinMark) continue;
    TmvDatasource* datasource = DatasourceOfColumn(column);
    const bool inOwner = owner && datasource && owner->ContainsDatasource(datasource, true);
    (inOwner ? leftOuter : rightOuter) = true;
  }
  if (leftOuter || rightOuter) return;
  TSQLExpressionOperatorBinary* binary = ExpressionGetTompostBinaryOperator(expression);
  if (!binary || !binary->Operator) return;
  const WideString& text = binary->Operator->Text;
  TmvDatasource* marked = nullptr;
  if (text == u"*=")
    marked = SoleDatasourceOf(binary->Expression.get());
  else if (text == u"=*")
    marked = SoleDatasourceOf(binary->Right.get());
  if (!marked) return;
  if (marked == link.LeftDatasource()) leftOuter = true;
  if (marked == link.RightDatasource()) rightOuter = true;
}

}  // namespace

void TmvLink::CalcLeftTypeInternal() {
  if (linkPlace_ == lpFrom) {
    TSQLJoinKind* kind = joinOwner_ ? joinOwner_->GetJoinKind() : nullptr;
    leftType_ = kind && kind->IsLeftOuter() ? ltOuter : ltInner;
    return;
  }
  bool leftOuter, rightOuter;
  WhereLinkSides(*this, leftOuter, rightOuter);
  leftType_ = leftOuter ? ltOuter : ltInner;
}

void TmvLink::CalcRightTypeInternal() {
  if (linkPlace_ == lpFrom) {
    TSQLJoinKind* kind = joinOwner_ ? joinOwner_->GetJoinKind() : nullptr;
    rightType_ = kind && kind->IsRightOuter() ? ltOuter : ltInner;
    return;
  }
  bool leftOuter, rightOuter;
  WhereLinkSides(*this, leftOuter, rightOuter);
  rightType_ = rightOuter ? ltOuter : ltInner;
}

void TmvLink::SetSideTypesInternal(TmvQueryBuilderLinkSideType left, TmvQueryBuilderLinkSideType right) {
  if (left == leftType_ && right == rightType_) return;
  leftType_ = left;
  rightType_ = right;
  NotifySQLUpdated();
  Realign();
}

namespace {

TastNodeClassRef JoinKindClassFor(bool leftOuter, bool rightOuter) {
  if (leftOuter && rightOuter) return &TSQLJoinKindFull::StaticClass();
  if (leftOuter) return &TSQLJoinKindLeft::StaticClass();
  if (rightOuter) return &TSQLJoinKindRight::StaticClass();
  return &TSQLJoinKindInner::StaticClass();
}

}  // namespace

void TmvLink::SetLeftType(TmvQueryBuilderLinkSideType type) {
  SetJoinKindClass(JoinKindClassFor(type == ltOuter, rightType_ == ltOuter));
}

void TmvLink::SetRightType(TmvQueryBuilderLinkSideType type) {
  SetJoinKindClass(JoinKindClassFor(leftType_ == ltOuter, type == ltOuter));
}

void TmvLink::SelectAllRowsFromLeft() {
  TmvUpdateScope update(this);
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  const bool bothMayBeOuter =
      linkPlace_ != lpWhere && provider && provider->IsSupportFullANSIJoin() && provider->IsSupportRightANSIJoin();
  if (leftType_ == ltInner)
    SetJoinKindClass(JoinKindClassFor(true, bothMayBeOuter && rightType_ == ltOuter));
  else
    SetJoinKindClass(JoinKindClassFor(false, rightType_ == ltOuter));
}

void TmvLink::SelectAllRowsFromRight() {
  TmvUpdateScope update(this);
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  const bool bothMayBeOuter =
      linkPlace_ != lpWhere && provider && provider->IsSupportFullANSIJoin() && provider->IsSupportRightANSIJoin();
  if (rightType_ == ltInner)
    SetJoinKindClass(JoinKindClassFor(bothMayBeOuter && leftType_ == ltOuter, true));
  else
    SetJoinKindClass(JoinKindClassFor(leftType_ == ltOuter, false));
}

bool TmvLink::CanSelectAllRows() const {
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  if (!provider || !IsSupportOuterJoins() || !leftDatasource_ || !rightDatasource_) return false;
  return linkPlace_ == lpFrom || !provider->IsSupportOracleJoins() || !provider->IsSupportTransactSQLJoins();
}

TmvMenu TmvLink::GetPopupMenu(ImvControl*) {
  TmvMenu menu;
  AddMenuItem(menu, mvQBRemove, [this] { RequestDestroy(); });
  AddMenuItem(menu, u"-", nullptr);
  if (CanSelectAllRows()) {
    auto side = [&](TmvDatasource* datasource, bool outer, std::function<void()> action) {
      TmvMenuItem& item = AddMenuItem(menu, mvQBSelectAllRowsFrom, std::move(action));
      item.Caption = WideFormat(item.Caption, {datasource->Caption()});
      item.Checked = outer;
    };
    side(leftDatasource_, leftType_ == ltOuter, [this] { SelectAllRowsFromLeft(); });
    side(rightDatasource_, rightType_ == ltOuter, [this] { SelectAllRowsFromRight(); });
    AddMenuItem(menu, u"-", nullptr);
  }
  AddEditPropsItem(menu, this).Default = true;
  return menu;
}

bool TmvLink::IsSupportOuterJoins() const {
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  if (!provider) return false;
  if (provider->IsSupportANSIJoins() || provider->IsSupportOracleJoins()) return true;
  if (provider->IsSupportTransactSQLJoins()) {
    TSQLExpressionOperatorBinary* binary = ExpressionGetTompostBinaryOperator(linkExpression_.get());
    if (!binary || !binary->Operator) return false;
    const WideString& text = binary->Operator->Text;
    return text == u"=" || text == u"*=" || text == u"=*";
  }
  return false;
}

// Both sides ask the same question: whether the link can be outer at all.
bool TmvLink::LeftTypeSupportOuter() const { return IsSupportOuterJoins(); }
bool TmvLink::RightTypeSupportOuter() const { return IsSupportOuterJoins(); }

void TmvLink::SetWhereLinkTypeTransactSQL(TmvQueryBuilderLinkSideType type, TmvDatasource* datasource) {
  TSQLExpressionOperatorBinary* binary = ExpressionGetTompostBinaryOperator(linkExpression_.get());
  if (!binary || !binary->Operator || !datasource) return;
  WideString& text = binary->Operator->Text;
  auto refers = [datasource](TSQLExpressionItem* operand) {
    TmvDatasourceList list = ReferencedDatasourcesOf(operand);
    return std::find(list.begin(), list.end(), datasource) != list.end();
  };
  if (refers(binary->Expression.get())) {
    const bool starred = !text.empty() && text.front() == u'*';
    if (type == ltOuter && !starred) text.insert(text.begin(), u'*');
    if (type == ltInner && starred) text.erase(text.begin());
  }
  if (refers(binary->Right.get())) {
    const bool starred = !text.empty() && text.back() == u'*';
    if (type == ltOuter && !starred) text.push_back(u'*');
    if (type == ltInner && starred) text.pop_back();
  }
}

void TmvLink::SetOraclePlusForDatasource(TmvDatasource* datasource, bool flag) {
  SetOraclePlus(linkExpression_.get(), flag,
                [datasource](TSQLObjectColumn* column) { return DatasourceOfColumn(column) == datasource; });
}

void TmvLink::SetJoinKindClass(TastNodeClassRef joinKindClass) {
  if (linkPlace_ == lpFrom) {
    if (joinOwner_) joinOwner_->SetJoinKindClass(joinKindClass);
    return;
  }
  if (!isSimple_) return;
  bool wantLeft = false, wantRight = false;
  if (joinKindClass) {
    TmvOwned<TSQLJoinKind> kind = TastCreateOfClass<TSQLJoinKind>(*joinKindClass, SQLContext());
    if (kind) wantLeft = kind->IsLeftOuter(), wantRight = kind->IsRightOuter();
  }
  TmvUpdateScope update(this);
  TmvBaseSyntaxProvider* provider = ProviderOf(this);
  if (provider && provider->IsSupportOracleJoins()) {
    const bool left = wantLeft && LeftTypeSupportOuter();
    const bool right = wantRight && RightTypeSupportOuter();
    // Left outer keeps all rows of the left side: the right side's columns take the mark.
    SetOraclePlusForDatasource(rightDatasource_, left);
    SetOraclePlusForDatasource(leftDatasource_, right);
  } else if (provider && provider->IsSupportTransactSQLJoins()) {
    SetOraclePlus(linkExpression_.get(), false, [](TSQLObjectColumn*) { return true; });
    SetWhereLinkTypeTransactSQL(wantLeft && LeftTypeSupportOuter() ? ltOuter : ltInner, leftDatasource_);
    SetWhereLinkTypeTransactSQL(wantRight && RightTypeSupportOuter() ? ltOuter : ltInner, rightDatasource_);
  } else {
    SetOraclePlus(linkExpression_.get(), false, [](TSQLObjectColumn*) { return true; });
    RemoveTransactSQLMarks(linkExpression_.get());
  }
  CalcLeftTypeInternal();
  CalcRightTypeInternal();
  NotifySQLUpdated();
  Realign();
}

// --- Shape ---

void TmvLink::FlipLink() {
  TmvDatasource* oldLeft = leftDatasource_;
  TmvDatasource* oldRight = rightDatasource_;
  std::swap(leftDatasource_, rightDatasource_);
  std::swap(leftType_, rightType_);
  std::swap(leftField_, rightField_);
  std::swap(leftCardinality_, rightCardinality_);
  TmvDatasourceBase* owner = oldRight == joinOwner_ ? oldLeft : oldRight;
  // The owner is an item of the group: the one that holds that datasource.
  if (owner && datasourceGroup_ && datasourceGroup_->IndexOf(owner) < 0) {
    const int at = ItemIndexOf(datasourceGroup_, owner);
    if (at >= 0) owner = datasourceGroup_->Items(at);
  }
  if (owner != joinOwner_) {
    if (joinOwner_) joinOwner_->NotifySQLUpdated();
    joinOwner_ = owner;
    RecalcSameLevelDatasources(joinOwner_);
    if (joinOwner_) joinOwner_->NotifySQLUpdated();
  }
  NotifySQLUpdated();
  Realign();
}

void TmvLink::SetDatasourceGroup(TmvDatasourceGroup* group) {
  if (group == datasourceGroup_ || !group) return;
  TmvDatasourceGroup* old = datasourceGroup_;
  TmvOwned<TmvQueryBuilderControlOwner> self = old ? old->UnregisterChild(this) : nullptr;
  if (old) old->UnregisterLink(this);
  datasourceGroup_ = group;
  if (self) group->RegisterChild(std::move(self));
  group->RegisterLink(this);
  SetUpdateParent(group);
  RecalcSameLevelDatasources(joinOwner_);
  if (old && !old->IsDestroying()) old->NotifyReorderNeeded();
  if (!group->IsDestroying()) group->NotifyReorderNeeded();
}

void TmvLink::MoveDatasourceIntoGroup(TmvDatasourceBase* item, TmvDatasourceGroup* group) {
  if (!item || !group) return;
  if (joinOwner_ == item) joinOwner_ = group;
  for (TmvDatasourceBase*& entry : sameLevelDatasources_)
    if (entry == item) entry = group;
  // One entry for the group, however many of its items the link touched.
  TmvDatasourceBaseList unique;
  for (TmvDatasourceBase* entry : sameLevelDatasources_)
    if (std::find(unique.begin(), unique.end(), entry) == unique.end()) unique.push_back(entry);
  sameLevelDatasources_ = std::move(unique);
  NotifySQLUpdated();
}

void TmvLink::RecalcSideDatasources() {
  if (isSimple_ || !datasourceGroup_) return;
  TmvDatasourceGroup* group = datasourceGroup_;
  auto alive = [](TmvDatasource* d) { return d && !d->IsDestroying(); };
  // O: inside the owner; P: in the items before it.
  TmvDatasourceList inOwner, before;
  const int ownerIndex = joinOwner_ ? group->IndexOf(joinOwner_) : -1;
  if (joinOwner_) joinOwner_->GetDatasources(inOwner);
  for (int i = 0; i < ownerIndex; ++i) group->Items(i)->GetDatasources(before);
  std::erase_if(inOwner, [&](TmvDatasource* d) { return !alive(d); });
  std::erase_if(before, [&](TmvDatasource* d) { return !alive(d); });
  auto contains = [](const TmvDatasourceList& list, TmvDatasource* d) {
    return std::find(list.begin(), list.end(), d) != list.end();
  };
  TmvDatasourceList ownerReferenced, otherReferenced;
  for (TmvDatasource* d : referencedDatasources_) {
    if (!alive(d)) continue;
    (contains(inOwner, d) ? ownerReferenced : otherReferenced).push_back(d);
  }
  // O', P': the members of O and P that simple links between them touch.
  TmvDatasourceList ownerTouched, beforeTouched;
  for (TmvLink* link : group->GetLinks()) {
    if (link == this || !link->IsSimple()) continue;
    for (auto [a, b] : {std::pair{link->LeftDatasource(), link->RightDatasource()},
                        std::pair{link->RightDatasource(), link->LeftDatasource()}}) {
      if (contains(inOwner, a) && contains(before, b)) {
        ownerTouched.push_back(a);
        beforeTouched.push_back(b);
      }
    }
  }
  auto firstIn = [&](const TmvDatasourceList& list, const TmvDatasourceList& in) -> TmvDatasource* {
    for (TmvDatasource* d : list)
      if (contains(in, d)) return d;
    return nullptr;
  };
  TmvDatasource* right = firstIn(ownerReferenced, ownerTouched);
  if (!right && !ownerReferenced.empty()) right = ownerReferenced.front();
  if (!right && !ownerTouched.empty()) right = ownerTouched.front();
  if (!right && !inOwner.empty()) right = inOwner.front();

  TmvDatasource* left = firstIn(otherReferenced, beforeTouched);
  if (!left && !otherReferenced.empty()) left = otherReferenced.front();
  if (!left && !beforeTouched.empty()) left = beforeTouched.front();
  if (!left) {
    // The item just before the owner, or the same-level item other than the
    // owner with the highest index; down through groups to a datasource.
    TmvDatasourceBase* item = ownerIndex > 0 ? group->Items(ownerIndex - 1) : nullptr;
    int best = -1;
    for (TmvDatasourceBase* entry : sameLevelDatasources_)
      if (entry != joinOwner_) best = std::max(best, group->IndexOf(entry));
    if (best >= 0) item = group->Items(best);
    while (auto* nested = TmvCast<TmvDatasourceGroup>(item)) item = nested->Count() > 0 ? nested->Items(0) : nullptr;
    if (auto* datasource = TmvCast<TmvDatasource>(item); alive(datasource)) left = datasource;
  }
  SetLeftDatasource(left);
  SetRightDatasource(right);
}

// --- Checks of expressions ---

bool TmvLink::CanLoadExpressionAsSimpleLink(TmvDatasourceBase* owner, TSQLExpressionItem* expression) {
  if (!owner || !expression) return false;
  TSQLObjectColumnList columns;
  GetReferencedColumns(expression, columns);
  if (columns.size() != 2) return false;
  TmvDatasource* d1 = DatasourceOfColumn(columns[0]);
  TmvDatasource* d2 = DatasourceOfColumn(columns[1]);
  if (!d1 || !d2 || d1 == d2) return false;
  TmvDatasourceGroup* group = owner->Group();
  return (LiesBefore(group, d1, owner) && owner->ContainsDatasource(d2, true)) ||
         (LiesBefore(group, d2, owner) && owner->ContainsDatasource(d1, true));
}

bool TmvLink::CanLoadExpressionAsSimpleWhereLink(TmvDatasourceGroup* group, TSQLExpressionItem* expression) {
  if (!group || !ExpressionGetTompostBinaryOperator(expression)) return false;
  TSQLObjectColumnList columns;
  GetReferencedColumns(expression, columns);
  if (columns.size() != 2) return false;
  if (columns[0]->FromSource == columns[1]->FromSource) return false;
  TmvDatasource* d1 = DatasourceOfColumn(columns[0]);
  TmvDatasource* d2 = DatasourceOfColumn(columns[1]);
  if (!d1 || !d2) return false;
  TmvDatasourceGroup* top = group->TopGroup();
  return top->ContainsDatasource(d1, true) && top->ContainsDatasource(d2, true);
}

// --- Datasource news ---

bool TmvLink::NotifyDatasourceDestroyingInternal(TmvDatasource* datasource) {
  if (RefersTo(datasource)) return true;
  if (!isSimple_ && datasource == joinOwner_) return true;
  TmvDatasourceGroup* group = datasourceGroup_;
  if (!group) return false;
  if (group->Count() == 2 && group->IndexOf(datasource) >= 0) return true;
  // The owner would become the first entry.
  return group->IndexOf(datasource) == 0 && joinOwner_ && group->IndexOf(joinOwner_) == 1;
}

void TmvLink::NotifyDatasourceReplacedInternal(TmvDatasource* oldDatasource, TmvDatasource* newDatasource) {
  if (!oldDatasource || !newDatasource) return;
  for (TmvDatasource*& entry : referencedDatasources_)
    if (entry == oldDatasource) entry = newDatasource;
  for (TmvDatasourceBase*& entry : sameLevelDatasources_)
    if (entry == oldDatasource) entry = newDatasource;
  if (linkExpression_ && oldDatasource->FromSource() && newDatasource->FromSource())
    linkExpression_->ReplaceReferencesToDatasourceRecursive(oldDatasource->FromSource(), newDatasource->FromSource());
  if (leftDatasource_ == oldDatasource) SetLeftDatasource(newDatasource);
  if (rightDatasource_ == oldDatasource) SetRightDatasource(newDatasource);
  if (joinOwner_ == oldDatasource) {
    joinOwner_ = newDatasource;
    // The new owner has no join kind yet and may stand elsewhere.
    if (datasourceGroup_) datasourceGroup_->NotifyReorderNeeded();
  }
  NotifySQLUpdated();
}

}  // namespace mv
