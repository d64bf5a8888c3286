#include "model/QueryModelHost.h"

#include <algorithm>

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/QueryStatistics.h"
#include "model/PropertyForms.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"

namespace mv {

MV_DEFINE_CLASS(TmvQueryModelHost, TmvObject)

TmvQueryModelHost::TmvQueryModelHost() : context_(TmvCreate<TmvBaseSQLContext>()) {
  RegisterModelMessages();
  RegisterModelPropertiesForms();
  container_ = TmvCreate<TmvMetadataContainer>(nullptr, context_.get());
  context_->SetMetadataContainer(container_.get());
  logHelper_.SetPrefix(WideFormat(u"TmvQueryBuilder(%p).", {static_cast<const void*>(this)}));
}

TmvQueryModelHost::~TmvQueryModelHost() = default;

TmvQueryStatistics* TmvQueryModelHost::QueryStatistics() {
  if (!statistics_) statistics_ = TmvCreate<TmvQueryStatistics>(this);
  return statistics_.get();
}

void TmvQueryModelHost::AfterConstruction() {
  TmvObject::AfterConstruction();
  query_ = TmvCreate<TmvQuery>(this, nullptr);
  activeSubQuery_ = query_.get();
  query_->LoadFromStatement(nullptr);
}

void TmvQueryModelHost::BeforeDestruction() {
  destroying_ = true;
  statistics_.reset();
  query_.reset();
  activeSubQuery_ = nullptr;
  // The container's names belong to the context: they go first.
  context_->SetMetadataContainer(nullptr);
  container_.reset();
  TmvObject::BeforeDestruction();
}

TmvBaseSyntaxProvider* TmvQueryModelHost::SyntaxProvider() const { return context_->SyntaxProvider(); }

void TmvQueryModelHost::SetSyntaxProvider(TmvBaseSyntaxProvider* provider) {
  if (provider == SyntaxProvider()) return;
  context_->SetSyntaxProvider(provider);
  if (!query_) return;
  BeginUpdate();
  for (TmvSubQuery* subQuery : std::vector<TmvSubQuery*>(subQueries_))
    for (TmvUnionSubQuery* member : subQuery->UnionSubQueries()) member->Datasources()->SyntaxProviderChanged();
  query_->NotifySQLUpdatedRecursive();
  EndUpdate();
}

void TmvQueryModelHost::RegisterSubQuery(TmvSubQuery* subQuery) {
  if (std::find(subQueries_.begin(), subQueries_.end(), subQuery) == subQueries_.end())
    subQueries_.push_back(subQuery);
}

void TmvQueryModelHost::UnregisterSubQuery(TmvSubQuery* subQuery) {
  std::erase(subQueries_, subQuery);
  if (activeSubQuery_ == subQuery) activeSubQuery_ = destroying_ ? nullptr : query_.get();
}

void TmvQueryModelHost::SetActiveSubQuery(TmvSubQuery* subQuery) {
  if (subQuery == activeSubQuery_) return;
  if (!DoActiveSubQueryChanging(subQuery) && !settingSql_) return;
  activeSubQuery_ = subQuery;
  DoActiveSubQueryChanged(subQuery);
}

bool TmvQueryModelHost::DoActiveSubQueryChanging(TmvSubQuery* subQuery) {
  bool allow = true;
  if (OnActiveSubQueryChanging) OnActiveSubQueryChanging(this, subQuery, allow);
  return allow && (!subQuery || DoActiveUnionSubQueryChanging(subQuery));
}

void TmvQueryModelHost::DoActiveSubQueryChanged(TmvSubQuery* subQuery) {
  if (OnActiveSubQueryChanged) OnActiveSubQueryChanged(this, subQuery);
  if (subQuery) DoActiveUnionSubQueryChanged(subQuery);
}

bool TmvQueryModelHost::DoActiveUnionSubQueryChanging(TmvSubQuery* subQuery) {
  bool allow = true;
  if (OnActiveUnionSubQueryChanging) OnActiveUnionSubQueryChanging(this, subQuery, allow);
  return allow;
}

void TmvQueryModelHost::DoActiveUnionSubQueryChanged(TmvSubQuery* subQuery) {
  if (OnActiveUnionSubQueryChanged) OnActiveUnionSubQueryChanged(this, subQuery);
}

bool TmvQueryModelHost::NotifyActiveUnionSubQueryChanging(TmvSubQuery* subQuery) {
  return DoActiveUnionSubQueryChanging(subQuery) || settingSql_;
}

void TmvQueryModelHost::NotifyActiveUnionSubQueryChanged(TmvSubQuery* subQuery, TmvUnionSubQuery*) {
  DoActiveUnionSubQueryChanged(subQuery);
}

WideString TmvQueryModelHost::CreateUniqueQueryNameStr() {
  for (;;) {
    WideString name = u"Query" + IntToWide(uniqueQueryNameCounter_++);
    if (IsUniqueQueryName(name)) return name;
  }
}

bool TmvQueryModelHost::IsUniqueQueryName(const WideString& name) const {
  for (TmvSubQuery* subQuery : subQueries_)
    for (TmvUnionSubQuery* member : subQuery->UnionSubQueries())
      if (!member->IsUniqueAlias(name)) return false;
  return true;
}

void TmvQueryModelHost::BeginUpdate() {
  if (query_) query_->BeginUpdate();
}

void TmvQueryModelHost::EndUpdate() {
  if (query_) query_->EndUpdate();
}

bool TmvQueryModelHost::GetIsUpdating() const { return query_ && query_->GetIsUpdating(); }

void TmvQueryModelHost::SQLUpdated() {
  if (OnSQLUpdated) OnSQLUpdated(this);
}

void TmvQueryModelHost::DoUserMessage(TmvUserMessageId id) {
  const char16_t* key = nullptr;
  switch (id) {
    case mvMsgColumnNameAlreadyUsed: key = mvQBColumnNameAlreadyUsed; break;
    case mvMsgDeletingAliasCauseConflict: key = mvQBDeletingAliasCauseConflict; break;
    case mvMsgSelectingExpressionCauseConflict: key = mvQBSelectingExpressionCauseConflict; break;
  }
  if (!key) throw Exception(u"Unknown user message ID: " + IntToWide(static_cast<int>(id)));
  TmvUserMessageParams params{id, MessageText(key)};
  if (OnUserMessage)
    OnUserMessage(this, params);
  else
    logHelper_.Warn(params.MessageText);
}

void TmvQueryModelHost::CreateControls() {
  if (hasControls_ || !controlFactory_ || !query_) return;
  hasControls_ = true;
  query_->CreateControl();
}

void TmvQueryModelHost::DestroyControls() {
  if (!hasControls_) return;
  if (query_) query_->DestroyControl();
  hasControls_ = false;
}

}  // namespace mv
