#include "frontend/SQLContext.h"

#include "frontend/SyntaxProvider.h"
#include "frontend/Parser.h"
#include "frontend/Scanner.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"
#include "tree/Tokens.h"

namespace mv {

MV_DEFINE_CLASS(TmvBaseSQLContext, TmvUpdatablePersistent)

TmvBaseSQLContext::TmvBaseSQLContext() {
  for (auto& builder : builders_) {
    builder = std::make_unique<TSQLBuilderFast>();
    builder->SetParenthesizeANDGroups(false);
    builder->SetParenthesizeSingleCriterion(false);
  }
  SQLBuilderExpressionQuoted().SetQuoteIdentifiers(icAll);
  SQLBuilderExpressionNonQuoted().SetQuoteIdentifiers(icNone);
  for (TSQLBuilderFast* forServer : {&SQLBuilderExpressionForServer(), &SQLBuilderExpressionForServerWithoutQuotes()}) {
    forServer->SetUseAltNames(false);
    forServer->SetExpandVirtualFields(true);
    forServer->SetExpandVirtualObjects(true);
  }
  SQLBuilderExpressionForServerWithoutQuotes().SetQuoteIdentifiers(icNone);
  SQLBuilderMetadata().SetQuoteIdentifiers(icNone);
  astNodes_.reserve(2048);
  logHelper_.SetPrefix(TmvLogHelper::ObjectPrefix(this));
  // The messages of failed parses read right even where the host has not
  // started the library (registration is done once).
  RegisterFrontendMessages();
}

namespace {

// Keys of the context's handlers on its provider's events.
enum : uintptr_t { kProviderChanged = 1, kProviderDestroying = 2 };

}  // namespace

TmvBaseSQLContext::~TmvBaseSQLContext() {
  HookSyntaxProvider(false);
  HookMetadataProvider(false);
  FreeIdentifierParsing();
  // The cached names are nodes of this context: they go while the registry
  // they unregister from is still there.
  InvalidateAggregateNamesCache();
  InvalidateBuiltinFunctionNamesCache();
}

void TmvBaseSQLContext::Assign(const TmvPersistent* persistent) {
  const auto* source = TmvCast<TmvBaseSQLContext>(persistent);
  if (!source) {
    TmvUpdatablePersistent::Assign(persistent);
    return;
  }
  if (source == this) return;
  TmvUpdateBatch batch(*this);
  SetSyntaxProvider(source->syntaxProvider_);
  SetMetadataProvider(source->metadataProvider_);
  for (int i = 0; i < 6; ++i) SetBuilder(i, *source->builders_[i]);
}

void TmvBaseSQLContext::SetBuilder(int index, const TSQLBuilder& value) {
  if (&value == builders_[index].get()) return;
  builders_[index]->Assign(value);
  NotifyUpdated();
}

void TmvBaseSQLContext::SetSyntaxProvider(TmvBaseSyntaxProvider* provider) {
  if (provider == syntaxProvider_) return;
  TmvUpdateBatch batch(*this);
  HookSyntaxProvider(false);
  syntaxProvider_ = provider;
  HookSyntaxProvider(true);
  NotifySyntaxProviderChanged();
}

void TmvBaseSQLContext::HookSyntaxProvider(bool hook) {
  if (!syntaxProvider_) return;
  const TmvHandlerId changed(this, kProviderChanged);
  const TmvHandlerId destroying(this, kProviderDestroying);
  if (!hook) {
    syntaxProvider_->GetOnUpdate().RemoveHandler(changed);
    syntaxProvider_->GetOnDestroying().RemoveHandler(destroying);
    return;
  }
  syntaxProvider_->GetOnUpdate().AddHandler(changed, [this](TmvObject*) { NotifySyntaxProviderChanged(); });
  syntaxProvider_->GetOnDestroying().AddHandler(destroying, [this](TmvObject*) { SyntaxProviderDestroying(); });
}

void TmvBaseSQLContext::SyntaxProviderDestroying() {
  syntaxProvider_ = nullptr;
  NotifySyntaxProviderChanged();
}

void TmvBaseSQLContext::SetMetadataProvider(TmvBaseMetadataProvider* provider) {
  if (provider == metadataProvider_) return;
  HookMetadataProvider(false);
  metadataProvider_ = provider;
  HookMetadataProvider(true);
  NotifyUpdated();
}

void TmvBaseSQLContext::SetMetadataContainer(TmvMetadataContainer* container) {
  if (container == metadataContainer_) return;
  metadataContainer_ = container;
  NotifyUpdated();
}

void TmvBaseSQLContext::NotifySyntaxProviderChanged() {
  syntaxProviderChanged_ = true;
  // What depends on the dialect goes before the nodes recompute anything:
  // identifier validity must follow the new grammar.
  FreeIdentifierParsing();
  comparisonOperators_.reset();
  InvalidateAggregateNamesCache();
  InvalidateBuiltinFunctionNamesCache();
  // By index, re-reading the size: nodes may be made (appended, or put in a
  // freed slot, already under the new dialect) or freed (slot nulled) while
  // a node updates its extender.
  for (size_t i = 0; i < astNodes_.size(); ++i)
    if (TastNode* node = astNodes_[i]) node->SyntaxProviderChanged();
  NotifyUpdated();
}

void TmvBaseSQLContext::DoUpdated() {
  if (syntaxProviderChanged_) {
    syntaxProviderChanged_ = false;
    FreeIdentifierParsing();
    comparisonOperators_.reset();
    onSyntaxProviderChanged_.Fire(this);
  }
  TmvUpdatablePersistent::DoUpdated();
}

int TmvBaseSQLContext::RegisterAstNode(TastNode* node) {
  if (!freeAstNodeSlots_.empty()) {
    int slot = freeAstNodeSlots_.back();
    freeAstNodeSlots_.pop_back();
    astNodes_[slot] = node;
    return slot;
  }
  astNodes_.push_back(node);
  return int(astNodes_.size()) - 1;
}

void TmvBaseSQLContext::UnregisterAstNode(TastNode* node, int slot) {
  if (slot < 0 || slot >= int(astNodes_.size()) || astNodes_[slot] != node) return;
  astNodes_[slot] = nullptr;
  freeAstNodeSlots_.push_back(slot);
}

void TmvBaseSQLContext::RequireSyntaxProvider() const {
  if (!syntaxProvider_) throw Exception(MessageText(mvQBNoSyntaxProvider));
}

// --- Identifiers ---

void TmvBaseSQLContext::FreeIdentifierParsing() {
  std::lock_guard<std::recursive_mutex> guard(identifiersCriticalSection_);
  identifiersParser_.reset();
  identifiersScanner_.reset();
}

TmvBaseScanner* TmvBaseSQLContext::GetIdentifiersScanner() const {
  if (!identifiersScanner_ && syntaxProvider_) {
    identifiersScanner_ = syntaxProvider_->CreateScanner();
    // Only a single bare token may pass.
    identifiersScanner_->SkipComments = false;
    identifiersScanner_->SkipSpaces = false;
  }
  return identifiersScanner_.get();
}

TmvBaseParser* TmvBaseSQLContext::GetIdentifiersParser() const {
  if (!identifiersParser_ && syntaxProvider_)
    identifiersParser_ = syntaxProvider_->CreateParser(GetIdentifiersScanner(), const_cast<TmvBaseSQLContext*>(this));
  return identifiersParser_.get();
}

bool TmvBaseSQLContext::IsValidIdent(WideStringView text) const {
  if (!syntaxProvider_ || text.empty()) return false;
  const WideString quoteBegin = syntaxProvider_->GetQuoteBegin();
  if (!quoteBegin.empty() && WideStartsStr(quoteBegin, text)) return false;
  bool found;
  {
    std::lock_guard<std::recursive_mutex> guard(identifiersCriticalSection_);
    TmvBaseScanner* scanner = GetIdentifiersScanner();
    TmvBaseParser* parser = GetIdentifiersParser();
    scanner->Init(WideString(text));
    // The first pass alone: no tree is built.
    found = parser->TestWay([parser](TmvWayPointsList& list) { parser->ParseIdentifierWayCalc(list); });
  }
  return found && syntaxProvider_->IsValidIdent(text);
}

namespace {

// The form an identifier is compared in: quoted names keep their case where
// the dialect is case-sensitive; unquoted ones are folded as the server folds them.
WideString ComparisonForm(const TastTokenIdentifier* id, const TmvBaseSyntaxProvider* provider) {
  if (!provider) return id->Quoted ? id->Token : WideUpperCase(id->Token);
  if (!provider->IsIdentifiersCaseSensitive()) return WideUpperCase(id->Token);
  if (id->Quoted) return id->Token;
  return provider->IsNonQuotedIdentifiersToUpperCase() ? WideUpperCase(id->Token) : WideLowerCase(id->Token);
}

}  // namespace

int TmvBaseSQLContext::CompareIdentifiers(const TastTokenIdentifier* a, const TastTokenIdentifier* b) const {
  return WideCompareStr(ComparisonForm(a, syntaxProvider_), ComparisonForm(b, syntaxProvider_));
}

bool TmvBaseSQLContext::IsIdentifiersEqual(const TastTokenIdentifier* a, const TastTokenIdentifier* b) const {
  return a == b || (a && b && CompareIdentifiers(a, b) == 0);
}

int TmvBaseSQLContext::CompareTokens(const TastToken* a, const TastToken* b) const {
  const auto* ia = TmvCast<TastTokenIdentifier>(a);
  const auto* ib = TmvCast<TastTokenIdentifier>(b);
  if (ia && ib) return CompareIdentifiers(ia, ib);
  return WideCompareText(a->Token, b->Token);
}

namespace {

int CompareTokenLists(const TmvBaseSQLContext& context, const TastTokenRefs& a, const TastTokenRefs& b) {
  if (b.size() > a.size()) return -1;
  if (b.size() < a.size()) return 1;
  for (size_t i = a.size(); i-- > 0;) {
    int result = context.CompareTokens(a[i], b[i]);
    if (result != 0) return result;
  }
  return 0;
}

}  // namespace

int TmvBaseSQLContext::CompareQualifiedNames(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const {
  TastTokenRefs ta, tb;
  a->GetTokensToCompare(ta);
  b->GetTokensToCompare(tb);
  return CompareTokenLists(*this, ta, tb);
}

int TmvBaseSQLContext::CompareQualifiedNamesFull(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const {
  TastTokenRefs ta, tb;
  a->GetAllTokensToCompare(ta);
  b->GetAllTokensToCompare(tb);
  return CompareTokenLists(*this, ta, tb);
}

bool TmvBaseSQLContext::IsQualifiedNamesEqual(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const {
  if (a == b) return true;
  if (!a || !b) {
    TastTokenRefs tokens;
    (a ? a : b)->GetTokensToCompare(tokens);
    return tokens.empty();
  }
  const bool aLink = !IsQualifiedNameEmpty(a->DatabaseLink.get());
  const bool bLink = !IsQualifiedNameEmpty(b->DatabaseLink.get());
  // Equal under any case rule means equal without regard to case: a cheap
  // rejection by the innermost parts before any list is made.
  if (!aLink && !bLink && a->GetCount() && b->GetCount() && a->Token(0) && b->Token(0) &&
      !WideSameText(a->Token(0)->Token, b->Token(0)->Token))
    return false;
  TastTokenRefs ta, tb;
  a->GetTokensToCompare(ta);
  b->GetTokensToCompare(tb);
  if (ta.empty() && tb.empty() && !aLink && !bLink) return true;
  if (ta.size() != tb.size()) return false;
  return CompareTokenLists(*this, ta, tb) == 0;
}

bool TmvBaseSQLContext::IsQualifiedNamesFullEqual(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const {
  if (a == b) return true;
  if (!a || !b) return false;
  return CompareQualifiedNamesFull(a, b) == 0;
}

const std::vector<std::string>& TmvBaseSQLContext::GetComparisonOperators() {
  if (!comparisonOperators_) {
    comparisonOperators_ = std::make_unique<std::vector<std::string>>();
    if (syntaxProvider_) syntaxProvider_->GetComparisonOperators(*comparisonOperators_);
  }
  return *comparisonOperators_;
}

// --- Name caches ---

void TmvBaseSQLContext::FillAggregateNamesCache() {
  if (prefixedAggregateNames_) return;
  prefixedAggregateNames_ = std::make_unique<TSQLQualifiedNamesList>(this, true);
  aggregateNames_ = std::make_unique<TSQLQualifiedNamesList>(this, true);
  starAggregateNames_ = std::make_unique<TSQLQualifiedNamesList>(this, true);
  multiparamAggregateNames_ = std::make_unique<TSQLQualifiedNamesList>(this, true);
  if (!syntaxProvider_) return;
  syntaxProvider_->GetPrefixed1ParamAggregateNames(*prefixedAggregateNames_);
  syntaxProvider_->Get1ParamAggregateNames(*aggregateNames_);
  syntaxProvider_->GetStarAggregateNames(*starAggregateNames_);
  syntaxProvider_->GetMultiParamAggregateNames(*multiparamAggregateNames_);
}

void TmvBaseSQLContext::FillBuiltinFunctionNamesCache() {
  if (builtinFunctionNames_) return;
  builtinFunctionNames_ = std::make_unique<TSQLQualifiedNamesList>(this, true);
  if (syntaxProvider_) syntaxProvider_->GetBuiltinFunctionNames(*builtinFunctionNames_);
}

void TmvBaseSQLContext::InvalidateAggregateNamesCache() {
  prefixedAggregateNames_.reset();
  aggregateNames_.reset();
  starAggregateNames_.reset();
  multiparamAggregateNames_.reset();
}

void TmvBaseSQLContext::InvalidateBuiltinFunctionNamesCache() { builtinFunctionNames_.reset(); }

bool TmvBaseSQLContext::IsNameOfAggregate(const TSQLQualifiedName* name) {
  FillAggregateNamesCache();
  return aggregateNames_->FindByName(name) >= 0;
}

bool TmvBaseSQLContext::IsNameOfPrefixedAggregate(const TSQLQualifiedName* name) {
  FillAggregateNamesCache();
  return prefixedAggregateNames_->FindByName(name) >= 0;
}

bool TmvBaseSQLContext::IsNameOfStarAggregate(const TSQLQualifiedName* name) {
  FillAggregateNamesCache();
  return starAggregateNames_->FindByName(name) >= 0;
}

bool TmvBaseSQLContext::IsNameOfMultiparamAggregate(const TSQLQualifiedName* name) {
  FillAggregateNamesCache();
  return multiparamAggregateNames_->FindByName(name) >= 0;
}

bool TmvBaseSQLContext::IsNameOfBuiltinFunction(const TSQLQualifiedName* name) {
  FillBuiltinFunctionNamesCache();
  return builtinFunctionNames_->FindByName(name) >= 0;
}

void TmvBaseSQLContext::AggregateNormalize(TSQLQualifiedName* name) {
  FillAggregateNamesCache();
  for (TSQLQualifiedNamesList* list :
       {prefixedAggregateNames_.get(), aggregateNames_.get(), starAggregateNames_.get(),
        multiparamAggregateNames_.get()}) {
    int index = list->FindByName(name);
    if (index >= 0) {
      name->Assign(*list->Items(index));
      return;
    }
  }
  NormalizeCustomAggregate(name);
}

void TmvBaseSQLContext::BuiltinFunctionNormalize(TSQLQualifiedName* name) {
  FillBuiltinFunctionNamesCache();
  int index = builtinFunctionNames_->FindByName(name);
  if (index < 0) return;
  name->Clear();
  name->Assign(*builtinFunctionNames_->Items(index));
}

// --- Parts of names ---

TmvOwned<TastToken> TmvBaseSQLContext::ExtractNameFromFullName(const TSQLQualifiedName* name) const {
  if (!name || name->GetCount() == 0 || name->Token(0)->IsEmpty()) return nullptr;
  return name->Token(0)->CloneAs<TastToken>();
}

TmvOwned<TastToken> TmvBaseSQLContext::ExtractSchemaFromFullName(const TSQLQualifiedName* name) const {
  RequireSyntaxProvider();
  if (!name || IsQualifiedNameEmpty(name) || !syntaxProvider_->IsSupportSchemas() || name->GetCount() <= 1 ||
      name->Token(1)->IsEmpty())
    return nullptr;
  return name->Token(1)->CloneAs<TastToken>();
}

TmvOwned<TSQLQualifiedName> TmvBaseSQLContext::ExtractDatabaseFromFullName(const TSQLQualifiedName* name) {
  if (!name || IsQualifiedNameEmpty(name)) return nullptr;
  RequireSyntaxProvider();
  TmvOwned<TSQLQualifiedName> rest = name->CloneAs<TSQLQualifiedName>(this);
  if (rest->GetCount() > 0) rest->RemoveLastName();
  if (syntaxProvider_->IsSupportSchemas() && rest->GetCount() > 0) rest->RemoveLastName();
  if (rest->GetCount() == 0) return nullptr;
  return rest;
}

}  // namespace mv
