#include "component/SQLBuilderComponents.h"

#include "component/QueryBuilder.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/Exceptions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

MV_DEFINE_CLASS(TmvBaseSQLBuilder, TmvObject)
MV_DEFINE_CLASS(TmvSQLBuilderPlainText, TmvBaseSQLBuilder)

namespace {

// The identities of the component's handlers on the query builder's events.
enum HandlerKey : uintptr_t { kDestroying = 1, kUpdated, kSubQueryChanging, kSubQueryChanged, kMemberChanging,
                              kMemberChanged, kBuilderUpdated };

}  // namespace

TmvBaseSQLBuilder::TmvBaseSQLBuilder() = default;
TmvBaseSQLBuilder::~TmvBaseSQLBuilder() = default;

void TmvBaseSQLBuilder::AfterConstruction() {
  TmvObject::AfterConstruction();
  builder_ = CreateSQLBuilder();
  // A change of any format reads as a change of the text.
  builder_->GetOnUpdated().AddHandler(TmvHandlerId(this, kBuilderUpdated), [this](TmvObject*) { SQLUpdated(); });
}

void TmvBaseSQLBuilder::BeforeDestruction() {
  DestroyingNotification.Fire(this);
  Detach();
  queryBuilder_ = nullptr;
  TmvObject::BeforeDestruction();
}

void TmvBaseSQLBuilder::SetQueryBuilder(TmvQueryBuilder* value) {
  if (value == queryBuilder_) return;
  Detach();
  queryBuilder_ = value;
  Attach();
  SQLUpdated();
}

void TmvBaseSQLBuilder::Attach() {
  if (!queryBuilder_) return;
  TmvQueryBuilder* q = queryBuilder_;
  q->DestroyingNotification.AddHandler(TmvHandlerId(this, kDestroying), [this](TmvObject*) {
    Detach();
    queryBuilder_ = nullptr;
  });
  q->SQLUpdatedNotification.AddHandler(TmvHandlerId(this, kUpdated), [this](TmvObject*) { SQLUpdated(); });
  q->ActiveSubQueryChangingNotification.AddHandler(TmvHandlerId(this, kSubQueryChanging), [this](TmvObject*) {
    if (targetQueryPart_ == mvqpSubQuery && OnQueryPartChanging) OnQueryPartChanging(this);
  });
  q->ActiveSubQueryChangedNotification.AddHandler(TmvHandlerId(this, kSubQueryChanged), [this](TmvObject*) {
    if (targetQueryPart_ != mvqpSubQuery) return;
    SQLUpdated();
    if (OnQueryPartChanged) OnQueryPartChanged(this);
  });
  q->ActiveUnionSubQueryChangingNotification.AddHandler(TmvHandlerId(this, kMemberChanging), [this](TmvObject*) {
    if (targetQueryPart_ == mvqpUnionSubQuery && OnQueryPartChanging) OnQueryPartChanging(this);
  });
  q->ActiveUnionSubQueryChangedNotification.AddHandler(TmvHandlerId(this, kMemberChanged), [this](TmvObject*) {
    if (targetQueryPart_ != mvqpUnionSubQuery) return;
    if (queryBuilder_ && !queryBuilder_->GetIsUpdating()) SQLUpdated();
    if (OnQueryPartChanged) OnQueryPartChanged(this);
  });
}

void TmvBaseSQLBuilder::Detach() {
  if (!queryBuilder_) return;
  TmvQueryBuilder* q = queryBuilder_;
  q->DestroyingNotification.RemoveHandler(TmvHandlerId(this, kDestroying));
  q->SQLUpdatedNotification.RemoveHandler(TmvHandlerId(this, kUpdated));
  q->ActiveSubQueryChangingNotification.RemoveHandler(TmvHandlerId(this, kSubQueryChanging));
  q->ActiveSubQueryChangedNotification.RemoveHandler(TmvHandlerId(this, kSubQueryChanged));
  q->ActiveUnionSubQueryChangingNotification.RemoveHandler(TmvHandlerId(this, kMemberChanging));
  q->ActiveUnionSubQueryChangedNotification.RemoveHandler(TmvHandlerId(this, kMemberChanged));
}

void TmvBaseSQLBuilder::SetTargetQueryPart(TmvQueryPart value) {
  if (value == targetQueryPart_) return;
  targetQueryPart_ = value;
  SQLUpdated();
}

void TmvBaseSQLBuilder::SQLUpdated() {
  if (loading_) {
    updatePending_ = true;
    return;
  }
  updatePending_ = false;
  if (OnSQLUpdated) OnSQLUpdated(this);
}

void TmvBaseSQLBuilder::Loaded() {
  loading_ = false;
  if (updatePending_) SQLUpdated();
}

WideString TmvBaseSQLBuilder::GetSql() {
  if (!queryBuilder_) return {};
  if (queryBuilder_->SleepMode()) return queryBuilder_->GetSql();
  TastNode* tree = nullptr;
  TmvOwned<TastNode> own;
  switch (targetQueryPart_) {
    case mvqpQuery:
      tree = queryBuilder_->GetResultQueryAST();
      if (IsQueryTreeEmpty(TmvCast<TSQLSubSelectStatement>(tree))) tree = nullptr;
      break;
    case mvqpSubQuery:
      if (TmvSubQuery* subQuery = queryBuilder_->ActiveSubQuery()) own = subQuery->GetResultAST();
      tree = own.get();
      break;
    case mvqpUnionSubQuery: {
      TmvSubQuery* subQuery = queryBuilder_->ActiveSubQuery();
      TmvUnionSubQuery* member = subQuery ? subQuery->ActiveUnionSubQuery() : nullptr;
      if (!member) break;
      TmvOwned<TSQLSubQuerySelectExpression> select = member->GetResultQueryAST();
      // A SELECT shown alone takes the sort its rows hold.
      if (select && !select->OrderBy) select->OrderBy.Set(member->SelectList()->GetOrderByClause());
      own = std::move(select);
      tree = own.get();
      break;
    }
  }
  return tree ? tree->SimpleSQL(*builder_) : WideString();
}

void TmvBaseSQLBuilder::SetSql(const WideString& text) {
  if (!queryBuilder_) throw Exception(u"TmvBaseSqlBuilder.QueryBuilder property is not assigned");
  if (queryBuilder_->SleepMode() || targetQueryPart_ == mvqpQuery) {
    queryBuilder_->SetSql(text);
    return;
  }
  TmvSubQuery* subQuery = queryBuilder_->ActiveSubQuery();
  if (!subQuery) return;
  if (targetQueryPart_ == mvqpSubQuery)
    subQuery->SetSql(text);
  else if (TmvUnionSubQuery* member = subQuery->ActiveUnionSubQuery())
    member->SetSql(text);
}

bool TmvBaseSQLBuilder::QuoteAllIdentifiers() const { return builder_->QuoteIdentifiers() == icAll; }

void TmvBaseSQLBuilder::SetQuoteAllIdentifiers(bool value) { builder_->SetQuoteIdentifiers(value ? icAll : icIfNeed); }

void TmvBaseSQLBuilder::BeginUpdate() { builder_->BeginUpdate(); }
void TmvBaseSQLBuilder::EndUpdate() { builder_->EndUpdate(); }
bool TmvBaseSQLBuilder::GetIsUpdating() const { return builder_->GetIsUpdating(); }

void TmvBaseSQLBuilder::Assign(const TmvBaseSQLBuilder& source) {
  BeginUpdate();
  targetQueryPart_ = source.targetQueryPart_;
  builder_->Assign(source.Builder());
  EndUpdate();
}

TmvOwned<TSQLBuilder> TmvSQLBuilderPlainText::CreateSQLBuilder() { return TmvCreate<TSQLBuilderPiped>(); }

TSQLBuilderPiped& TmvSQLBuilderPlainText::Piped() const { return static_cast<TSQLBuilderPiped&>(Builder()); }
bool TmvSQLBuilderPlainText::DynamicIndents() const { return Piped().DynamicIndents(); }
void TmvSQLBuilderPlainText::SetDynamicIndents(bool value) { Piped().SetDynamicIndents(value); }
bool TmvSQLBuilderPlainText::DynamicRightMargin() const { return Piped().DynamicRightMargin(); }
void TmvSQLBuilderPlainText::SetDynamicRightMargin(bool value) { Piped().SetDynamicRightMargin(value); }

}  // namespace mv
