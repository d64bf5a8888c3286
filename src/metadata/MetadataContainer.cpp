#include "metadata/MetadataContainer.h"

#include <algorithm>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataNames.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/Connection.h"
#include "support/Exceptions.h"

namespace mv {

MV_DEFINE_METADATA_CLASS(TmvMetadataContainer, TmvMetadataBase)

namespace {

// An identifier of the token's text (null for null).
TmvOwned<TastTokenIdentifier> ToIdentifier(TmvBaseSQLContext* context, const TastToken* token) {
  if (!token) return nullptr;
  TmvOwned<TastTokenIdentifier> id = TastCreate<TastTokenIdentifier>(context);
  AssignIdentifier(*id, token);
  return id;
}

// The context of an operation that cannot do without one (comparisons of
// names, parsing): "Syntax provider is not specified" without it.
const TmvBaseSQLContext& RequireContext(const TmvBaseSQLContext* context) {
  if (!context) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
  return *context;
}

// Clears the abort flag when a load ends, by any road.
class TmvAbortReset {
 public:
  explicit TmvAbortReset(std::atomic<bool>& flag) : flag_(flag) { flag_.store(false); }
  ~TmvAbortReset() { flag_.store(false); }
  TmvAbortReset(const TmvAbortReset&) = delete;
  TmvAbortReset& operator=(const TmvAbortReset&) = delete;

 private:
  std::atomic<bool>& flag_;
};

}  // namespace

TmvMetadataContainer::TmvMetadataContainer(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataBase(parent, context),
      defaultDatabaseName_(TastCreate<TSQLQualifiedName>(context)),
      defaultSchemaNames_(TastCreate<TSQLIdentifiersCollection>(context)),
      customAggregateFunctions_(TmvCreate<TmvMetadataQualifiedNamesList>(this, context)) {}

TmvMetadataContainer::~TmvMetadataContainer() {
  hash_.Clear();
  items_.clear();
}

void TmvMetadataContainer::BeforeDestruction() {
  try {
    TmvUpdateBatch batch(*this);
    Clear();
  } catch (...) {
    // A handler's failure must not stop the container from going.
  }
  TmvMetadataBase::BeforeDestruction();
}

// --- Lookups ---

bool TmvMetadataContainer::SupportsSchemas() const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  return !provider || provider->IsSupportSchemas();
}

bool TmvMetadataContainer::SupportsDatabases() const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  return !provider || provider->IsSupportDatabases();
}

TmvMetadataObject* TmvMetadataContainer::FindByNameAndClass(const TastTokenIdentifier* name,
                                                            const TastTokenIdentifier* schema,
                                                            const TmvClass& objectClass,
                                                            const TSQLQualifiedName* database) const {
  const TmvMetadataObjectHashBucket& bucket = hash_.Bucket(hash_.HashOfName(name));
  const auto* objects = bucket.Find(TmvMetadataObjectHash::KeyOf(name ? name->Token : WideString()));
  if (!objects) return nullptr;
  for (TmvMetadataObject* object : *objects)
    if (object->InheritsFrom(objectClass) && object->IsNameEqual(name, schema, database)) return object;
  return nullptr;
}

TmvMetadataObject* TmvMetadataContainer::FindCandidate(const TSQLQualifiedName* candidate,
                                                       const TmvClass& objectClass) const {
  const TmvMetadataObjectHashBucket& bucket = hash_.Bucket(hash_.HashOfFullName(candidate));
  const WideString key =
      TmvMetadataObjectHash::KeyOf(candidate->GetCount() > 0 ? candidate->Token(0)->Token : WideString());
  const auto* objects = bucket.Find(key);
  if (!objects) return nullptr;
  for (TmvMetadataObject* object : *objects)
    if (object->InheritsFrom(objectClass) && object->IsFullNameEqual(candidate)) return object;
  return nullptr;
}

TmvMetadataObject* TmvMetadataContainer::FindByFullNameAndClass(const TSQLQualifiedName* name,
                                                                const TmvClass& objectClass) const {
  if (!name || name->GetCount() == 0 || !TmvCast<TastTokenIdentifier>(name->Token(0))) return nullptr;
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TSQLQualifiedName> rest = name->CloneAs<TSQLQualifiedName>(context);
  TmvOwned<TastToken> objectName = rest->ExtractName();
  TmvOwned<TastToken> schema;
  const bool schemas = SupportsSchemas();
  if (schemas && rest->GetCount() > 0 && TmvCast<TastTokenIdentifier>(rest->Token(0))) schema = rest->ExtractName();
  if (rest->GetCount() == 1 && rest->Token(0)->IsEmpty()) rest->RemoveLastName();
  if (IsQualifiedNameEmpty(rest.get()) && SupportsDatabases() && !IsQualifiedNameEmpty(defaultDatabaseName_.get()))
    rest->AddName(defaultDatabaseName_.get());

  if (TmvMetadataObject* found = FindCandidate(name, objectClass)) return found;
  auto tryCandidate = [&](const TastToken* schemaPart) -> TmvMetadataObject* {
    TmvOwned<TSQLQualifiedName> candidate = rest->CloneAs<TSQLQualifiedName>(context);
    if (schemaPart) candidate->AddName(schemaPart->CloneAs<TastToken>(context));
    candidate->AddName(objectName->CloneAs<TastToken>(context));
    return FindCandidate(candidate.get(), objectClass);
  };
  if (!schemas) return tryCandidate(nullptr);
  if (schema && !schema->IsEmpty()) return tryCandidate(schema.get());
  for (int i = 0; i < defaultSchemaNames_->GetCount(); ++i)
    if (TmvMetadataObject* found = tryCandidate(defaultSchemaNames_->Identifier(i))) return found;
  return nullptr;
}

TmvMetadataObject* TmvMetadataContainer::FindByAltNameAndClass(const TastTokenIdentifier* name,
                                                               const TmvClass& objectClass) const {
  if (!name) return nullptr;
  const TmvBaseSQLContext& context = RequireContext(SQLContext());
  const TmvMetadataObjectHashBucket& bucket = hash_.Bucket(hash_.HashOfName(name));
  const auto* objects = bucket.Find(TmvMetadataObjectHash::KeyOf(name->Token));
  if (!objects) return nullptr;
  for (TmvMetadataObject* object : *objects)
    if (!object->AltName().empty() && object->InheritsFrom(objectClass) &&
        context.CompareIdentifiers(object->AltNameId(), name) == 0)
      return object;
  return nullptr;
}

// --- Adding ---

TmvMetadataObject* TmvMetadataContainer::AddObject(const TastTokenIdentifier* schema, const TastTokenIdentifier* name,
                                                   const TmvMetadataClass& objectClass, bool system,
                                                   const TSQLQualifiedName* database) {
  loaded_ = true;
  TmvOwned<TmvMetadataBase> made(objectClass.CreateRaw(this, SQLContext()));
  if (!TmvCast<TmvMetadataObject>(made.get()))
    throw EmvQueryBuilderError(u"Cannot add an object of the class " + WideFromAscii(objectClass.ClassName()));
  TmvOwned<TmvMetadataObject> object(static_cast<TmvMetadataObject*>(made.release()));
  {
    TmvUpdateBatch batch(*object);
    object->SetSchema(schema);
    object->SetName(name);
    object->SetDatabase(database);
    object->SetSystem(system);
  }
  TmvMetadataObject* raw = object.get();
  Add(std::move(object));
  return raw;
}

TmvMetadataObject* TmvMetadataContainer::AddObject(const TSQLQualifiedName* fullName,
                                                   const TmvMetadataClass& objectClass, bool system) {
  CheckSyntaxProvider();
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TastTokenIdentifier> name = ToIdentifier(context, context->ExtractNameFromFullName(fullName).get());
  TmvOwned<TastTokenIdentifier> schema = ToIdentifier(context, context->ExtractSchemaFromFullName(fullName).get());
  TmvOwned<TSQLQualifiedName> database = context->ExtractDatabaseFromFullName(fullName);
  const TSQLQualifiedName* databasePart =
      IsQualifiedNameEmpty(database.get()) ? defaultDatabaseName_.get() : database.get();
  TmvMetadataObject* object = AddObject(schema.get(), name.get(), objectClass, system, databasePart);
  if (fullName && !IsQualifiedNameEmpty(fullName->DatabaseLink.get())) object->SetDBLink(fullName->DatabaseLink.get());
  return object;
}

TmvMetadataObject* TmvMetadataContainer::AddObject(WideStringView fullName, const TmvMetadataClass& objectClass,
                                                   bool system) {
  CheckSyntaxProvider();
  return AddObject(ParseName(SQLContext(), fullName).get(), objectClass, system);
}

TmvMetadataObject* TmvMetadataContainer::AddObjectByTexts(WideStringView schema, WideStringView name,
                                                          const TmvMetadataClass& objectClass, bool system,
                                                          WideStringView database) {
  TmvOwned<TastTokenIdentifier> schemaToken;
  TmvOwned<TastTokenIdentifier> nameToken;
  TmvOwned<TSQLQualifiedName> databaseName;
  ParseObjectNames(schema, name, database, schemaToken, nameToken, databaseName);
  if (!name.empty() && IsIdentifierEmpty(nameToken.get()))
    throw EmvQueryBuilderError(MetadataMessage(mvQBBadObjectName));
  return AddObject(schemaToken.get(), nameToken.get(), objectClass, system, databaseName.get());
}

TmvMetadataSynonym* TmvMetadataContainer::AddSynonym(const TSQLQualifiedName* name,
                                                     const TSQLQualifiedName* referencedName, bool system) {
  auto* synonym = static_cast<TmvMetadataSynonym*>(AddObject(name, TmvMetadataSynonym::StaticClass(), system));
  if (!IsQualifiedNameEmpty(referencedName)) synonym->SetReferencedFullName(referencedName);
  return synonym;
}

TmvMetadataSynonym* TmvMetadataContainer::AddSynonym(WideStringView name, WideStringView referencedName, bool system) {
  CheckSyntaxProvider();
  TmvOwned<TSQLQualifiedName> synonymName = ParseName(SQLContext(), name);
  TmvOwned<TSQLQualifiedName> target = ParseOptionalName(SQLContext(), referencedName);
  return AddSynonym(synonymName.get(), target.get(), system);
}

// --- Lookups by text ---

void TmvMetadataContainer::ParseObjectNames(WideStringView schema, WideStringView name, WideStringView database,
                                            TmvOwned<TastTokenIdentifier>& schemaToken,
                                            TmvOwned<TastTokenIdentifier>& nameToken,
                                            TmvOwned<TSQLQualifiedName>& databaseName) const {
  TmvBaseSQLContext* context = SQLContext();
  auto identifier = [context](WideStringView text) {
    TmvOwned<TastTokenIdentifier> token =
        !text.empty() && context ? context->ParseIdentifierQuoteIfNeed(WideString(text)) : nullptr;
    return token ? std::move(token) : TastCreate<TastTokenIdentifier>(context);
  };
  schemaToken = identifier(schema);
  nameToken = identifier(name);
  databaseName = ParseNameOrNull(context, database);
  if (!databaseName) databaseName = TastCreate<TSQLQualifiedName>(context);
}

TmvMetadataObject* TmvMetadataContainer::FindByNameAndClass(WideStringView name, WideStringView schema,
                                                            const TmvClass& objectClass,
                                                            WideStringView database) const {
  TmvOwned<TastTokenIdentifier> schemaToken;
  TmvOwned<TastTokenIdentifier> nameToken;
  TmvOwned<TSQLQualifiedName> databaseName;
  ParseObjectNames(schema, name, database, schemaToken, nameToken, databaseName);
  if (IsIdentifierEmpty(nameToken.get())) return nullptr;
  return FindByNameAndClass(nameToken.get(), schemaToken.get(), objectClass, databaseName.get());
}

TmvMetadataObject* TmvMetadataContainer::FindByFullNameAndClass(WideStringView name,
                                                                const TmvClass& objectClass) const {
  TmvOwned<TSQLQualifiedName> parsed = ParseNameOrNull(SQLContext(), name);
  return parsed ? FindByFullNameAndClass(parsed.get(), objectClass) : nullptr;
}

TmvMetadataObject* TmvMetadataContainer::FindByAltNameAndClass(WideStringView name, bool caseSensitive,
                                                               const TmvClass& objectClass) const {
  TmvOwned<TastTokenIdentifier> token = TastCreate<TastTokenIdentifier>(SQLContext(), name, caseSensitive);
  return FindByAltNameAndClass(token.get(), objectClass);
}

// --- The list ---

void TmvMetadataContainer::SetCapacity(int value) {
  std::lock_guard guard(lock_);
  if (value > Capacity()) {
    items_.reserve(size_t(value));
    members_.reserve(size_t(value));
  }
}

TmvMetadataObject* TmvMetadataContainer::Items(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
  return items_[size_t(index)].get();
}

void TmvMetadataContainer::TakeObject(TmvMetadataObject* object) {
  if (object->container_ != this || object->Parent() != this) {
    object->container_ = this;
    object->SetMetadataParent(this);
  }
}

int TmvMetadataContainer::Add(TmvOwned<TmvMetadataObject> object) {
  int index = Count();
  Insert(index, std::move(object));
  return index;
}

void TmvMetadataContainer::Insert(int index, TmvOwned<TmvMetadataObject> object) {
  if (!object) return;
  if (index < 0 || index > Count()) RaiseListIndexError(index, Count());
  if (Contains(object.get())) throw EmvQueryBuilderError(u"The object is in the container already");
  TmvMetadataObject* raw = object.get();
  TakeObject(raw);
  {
    std::lock_guard guard(lock_);
    items_.insert(items_.begin() + index, std::move(object));
    members_.insert(raw);
  }
  Notify(raw, TmvNotifyAction::Added);
  NotifyUpdated();
}

void TmvMetadataContainer::Delete(int index) {
  TmvMetadataObject* object = Items(index);
  Notify(object, TmvNotifyAction::Deleted);
  TmvOwned<TmvMetadataObject> owned;
  {
    std::lock_guard guard(lock_);
    // Still at its place, unless a handler moved it.
    auto at =
        index < Count() && items_[size_t(index)].get() == object
            ? items_.begin() + index
            : std::find_if(items_.begin(), items_.end(), [object](const auto& item) { return item.get() == object; });
    if (at == items_.end()) return;
    owned = std::move(*at);
    items_.erase(at);
    members_.erase(object);
  }
  owned.reset();
  NotifyUpdated();
}

int TmvMetadataContainer::Remove(TmvMetadataObject* object) {
  int index = IndexOf(object);
  if (index >= 0) Delete(index);
  return index;
}

TmvOwned<TmvMetadataObject> TmvMetadataContainer::Extract(TmvMetadataObject* object) {
  if (!Contains(object)) return nullptr;
  Notify(object, TmvNotifyAction::Extracted);
  TmvOwned<TmvMetadataObject> owned;
  {
    std::lock_guard guard(lock_);
    auto at = std::find_if(items_.begin(), items_.end(), [object](const auto& item) { return item.get() == object; });
    if (at == items_.end()) return nullptr;
    owned = std::move(*at);
    items_.erase(at);
    members_.erase(object);
  }
  // The caller owns it now: it reports to nobody.
  owned->container_ = nullptr;
  owned->SetMetadataParent(nullptr);
  NotifyUpdated();
  return owned;
}

int TmvMetadataContainer::IndexOf(const TmvMetadataObject* object) const {
  if (!Contains(object)) return -1;
  for (size_t i = 0; i < items_.size(); ++i)
    if (items_[i].get() == object) return int(i);
  return -1;
}

bool TmvMetadataContainer::Contains(const TmvMetadataObject* object) const {
  return object && members_.count(object) != 0;
}

void TmvMetadataContainer::Move(int from, int to) {
  if (from < 0 || from >= Count()) RaiseListIndexError(from, Count());
  if (to < 0 || to >= Count()) RaiseListIndexError(to, Count());
  if (from == to) return;
  {
    std::lock_guard guard(lock_);
    TmvOwned<TmvMetadataObject> object = std::move(items_[size_t(from)]);
    items_.erase(items_.begin() + from);
    items_.insert(items_.begin() + to, std::move(object));
  }
  objectsUpdated_ = true;
  NotifyUpdated();
}

void TmvMetadataContainer::Clear() {
  loaded_ = false;
  for (int i = Count() - 1; i >= 0; --i) Notify(items_[size_t(i)].get(), TmvNotifyAction::Deleted);
  std::vector<TmvOwned<TmvMetadataObject>> freed;
  {
    std::lock_guard guard(lock_);
    defaultDatabaseName_->Clear();
    defaultSchemaNames_->Clear();
    freed.swap(items_);
    members_.clear();
  }
  // The last first, outside the lock (an object's handlers may reach the container).
  while (!freed.empty()) freed.pop_back();
  NotifyUpdated();
}

void TmvMetadataContainer::SortItems(
    const std::function<int(const TmvMetadataObject*, const TmvMetadataObject*)>& compare) {
  {
    std::lock_guard guard(lock_);
    std::stable_sort(items_.begin(), items_.end(),
                     [&compare](const auto& a, const auto& b) { return compare(a.get(), b.get()) < 0; });
  }
  objectsUpdated_ = true;
  NotifyUpdated();
}

void TmvMetadataContainer::SortByNames() {
  const TmvBaseSQLContext& context = RequireContext(SQLContext());
  SortItems([&context](const TmvMetadataObject* a, const TmvMetadataObject* b) {
    int result = context.CompareQualifiedNames(a->Database(), b->Database());
    if (result == 0) result = context.CompareIdentifiers(a->Schema(), b->Schema());
    if (result == 0) result = context.CompareIdentifiers(a->Name(), b->Name());
    return result;
  });
}

std::vector<TmvMetadataRelation*> TmvMetadataContainer::GetRelations() const {
  std::vector<TmvMetadataRelation*> result;
  for (const auto& object : items_) {
    const TmvMetadataRelationsList* relations = object->GetRelations();
    for (int i = 0; i < relations->Count(); ++i) result.push_back(relations->Items(i));
  }
  return result;
}

// --- Index maintenance and notification ---

void TmvMetadataContainer::Notify(TmvMetadataObject* object, TmvNotifyAction action) {
  switch (action) {
    case TmvNotifyAction::Added:
      loaded_ = true;
      ReHashByName(object);
      ReHashByAltName(object);
      Fire(OnMetadataObjectAdded, addedEvent_, object);
      break;
    case TmvNotifyAction::Extracted:
      hash_.RemoveByName(object);
      hash_.RemoveByAltName(object);
      Fire(OnMetadataObjectExtracting, extractingEvent_, object);
      break;
    case TmvNotifyAction::Deleted:
      hash_.RemoveByName(object);
      hash_.RemoveByAltName(object);
      Fire(OnMetadataObjectRemoving, removingEvent_, object);
      break;
  }
  objectsUpdated_ = true;
}

void TmvMetadataContainer::Fire(const TmvMetadataObjectNotification& handler, TmvMetadataObjectNotificationEvent& event,
                                TmvMetadataObject* object) {
  if (handler) handler(this, object);
  event.Fire(this, object);
}

void TmvMetadataContainer::ReHashByName(TmvMetadataObject* object) {
  if (Contains(object)) hash_.AddByName(object);
}

void TmvMetadataContainer::ReHashByAltName(TmvMetadataObject* object) {
  if (Contains(object)) hash_.AddByAltName(object);
}

void TmvMetadataContainer::RebuildNamesHash() {
  hash_.Clear();
  for (const auto& object : items_) {
    hash_.AddByName(object.get());
    hash_.AddByAltName(object.get());
  }
}

void TmvMetadataContainer::DoUpdated() {
  TmvMetadataBase::DoUpdated();
  objectsUpdated_ = false;
}

void TmvMetadataContainer::DoObjectMetadataLoading(TmvMetadataObject* object) {
  if (OnObjectMetadataLoading) OnObjectMetadataLoading(this, object);
}

void TmvMetadataContainer::DoObjectMetadataLoaded(TmvMetadataObject* object) {
  if (OnObjectMetadataLoaded) OnObjectMetadataLoaded(this, object);
}

// --- Assign ---

void TmvMetadataContainer::Assign(const TmvPersistent* source) {
  const auto* other = TmvCast<TmvMetadataContainer>(source);
  if (!other) {
    TmvMetadataBase::Assign(source);
    return;
  }
  if (other == this) return;
  TmvUpdateBatch batch(*this);
  Clear();
  TmvMetadataBase::Assign(source);
  SetCapacity(other->Capacity());
  for (const auto& object : other->items_) Add(object->CloneAs<TmvMetadataObject>(this, SQLContext()));
  RebuildNamesHash();
  loaded_ = other->loaded_;
  AssignQualifiedName(*defaultDatabaseName_, other->defaultDatabaseName_.get());
  defaultSchemaNames_->Assign(*other->defaultSchemaNames_);
  objectsUpdated_ = true;
  NotifyUpdated();
}

// --- Loading ---

void TmvMetadataContainer::CheckSyntaxProvider() const {
  if (!SyntaxProvider()) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
}

void TmvMetadataContainer::CheckMetadataProvider() const {
  if (!SQLContext() || !SQLContext()->MetadataProvider())
    throw EmvQueryBuilderError(MetadataMessage(mvQBNoMetadataProvider));
}

void TmvMetadataContainer::LoadMetadataByFilter(const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  CheckMetadataProvider();
  LoadMetadataByFilter(SQLContext()->MetadataProvider()->Connection(), filter, database);
}

void TmvMetadataContainer::LoadMetadataByFilter(TmvConnection* connection, const TmvMetadataFilter* filter,
                                                const TSQLQualifiedName* database) {
  TmvAbortReset abortReset(abort_);
  loaded_ = true;
  CheckSyntaxProvider();
  CheckMetadataProvider();
  TmvBaseSQLContext* context = SQLContext();
  if (TmvBaseMetadataProvider* provider = context->MetadataProvider(); provider->Log().IsActive())
    provider->Log().Info(u"LoadMetadataByFilter: %s; filter items: %d",
                         connection ? connection->Description() : WideString(u"(no connection)"),
                         filter ? filter->Count() : 0);
  TmvUpdateBatch batch(*this);
  context->LoadMetadataObjects(connection, this, filter, database);
  // An abort keeps what is loaded, whole objects only, and fetches no more.
  if (!abort_.load()) context->LoadMetadataRelations(connection, this, filter, database);
  if (!abort_.load()) context->LoadMetadataCustomAggregateNames(connection, this, database);
}

namespace {

std::unique_ptr<TmvMetadataFilter> MaskFilter(WideStringView objectMask, WideStringView schemaMask,
                                              bool caseSensitive) {
  auto filter = std::make_unique<TmvMetadataFilter>();
  TmvMetadataFilterItem* item = filter->Add();
  item->SetObjectMask(objectMask);
  item->SetObjectMaskCaseSensitive(caseSensitive);
  item->SetSchemaMask(schemaMask);
  item->SetSchemaMaskCaseSensitive(caseSensitive);
  return filter;
}

}  // namespace

void TmvMetadataContainer::LoadMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                                              const TSQLQualifiedName* database, bool caseSensitive) {
  LoadMetadataByFilter(MaskFilter(objectMask, schemaMask, caseSensitive).get(), database);
}

void TmvMetadataContainer::LoadMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                                              WideStringView database, bool caseSensitive) {
  TmvOwned<TSQLQualifiedName> databaseName = ParseDatabaseText(database);
  LoadMetadataByMask(objectMask, schemaMask, databaseName.get(), caseSensitive);
}

void TmvMetadataContainer::ClearMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                                               WideStringView database, bool caseSensitive) {
  TmvOwned<TSQLQualifiedName> databaseName = ParseDatabaseText(database);
  ClearMetadataByMask(objectMask, schemaMask, databaseName.get(), caseSensitive);
}

TmvOwned<TSQLQualifiedName> TmvMetadataContainer::ParseDatabaseText(WideStringView database) const {
  if (database.empty()) return nullptr;
  CheckSyntaxProvider();
  return ParseName(SQLContext(), database);
}

void TmvMetadataContainer::ClearMetadataByFilter(const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  const TmvBaseSQLContext& context = RequireContext(SQLContext());
  TmvAbortReset abortReset(abort_);
  TmvUpdateBatch batch(*this);
  for (int i = Count() - 1; i >= 0 && !abort_.load(); --i) {
    TmvMetadataObject* object = items_[size_t(i)].get();
    if (!context.IsQualifiedNamesEqual(object->Database(), database)) continue;
    if (!filter || filter->FilterMetadataObject(object)) Delete(i);
  }
}

void TmvMetadataContainer::ClearMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                                               const TSQLQualifiedName* database, bool caseSensitive) {
  CheckSyntaxProvider();
  ClearMetadataByFilter(MaskFilter(objectMask, schemaMask, caseSensitive).get(), database);
}

void TmvMetadataContainer::LoadFields(TmvConnection* connection) {
  TmvUpdateBatch batch(*this);
  for (int i = 0; i < Count(); ++i) {
    TmvMetadataObject* object = items_[size_t(i)].get();
    if (!object->GetFields()->Loaded()) object->LoadFields(connection);
  }
}

// --- Defaults ---

void TmvMetadataContainer::SetDefaultDatabaseName(const TSQLQualifiedName* value) {
  AssignQualifiedName(*defaultDatabaseName_, value);
  NotifyUpdated();
}

WideString TmvMetadataContainer::DefaultDatabaseNameStr() const { return defaultDatabaseName_->GetQualifiedName(); }

void TmvMetadataContainer::SetDefaultDatabaseNameStr(WideStringView value) {
  defaultDatabaseName_->SetQualifiedName(value);
  NotifyUpdated();
}

void TmvMetadataContainer::SetDefaultSchemaNamesStr(WideStringView value) {
  if (value == DefaultSchemaNamesStr()) return;
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  const WideString quoteBegin = provider ? provider->GetQuoteBegin() : WideString(u"\"");
  const WideString quoteEnd = provider ? provider->GetQuoteEnd() : WideString(u"\"");
  // The pieces between the ";" that stand outside quotes.
  std::vector<WideString> pieces(1);
  bool quoted = false;
  for (size_t i = 0; i < value.size();) {
    const WideStringView rest = value.substr(i);
    if (!quoted && !quoteBegin.empty() && rest.starts_with(quoteBegin)) {
      quoted = true;
      pieces.back() += quoteBegin;
      i += quoteBegin.size();
    } else if (quoted && !quoteEnd.empty() && rest.starts_with(quoteEnd)) {
      quoted = false;
      pieces.back() += quoteEnd;
      i += quoteEnd.size();
    } else if (!quoted && value[i] == u';') {
      pieces.emplace_back();
      ++i;
    } else {
      pieces.back() += value[i++];
    }
  }
  TmvUpdateBatch batch(*this);
  defaultSchemaNames_->Clear();
  TmvBaseSQLContext* context = SQLContext();
  for (const WideString& untrimmed : pieces) {
    // Blanks around a piece are no part of the name.
    const WideString piece = WideTrim(untrimmed);
    if (piece.empty()) continue;
    TmvOwned<TastTokenIdentifier> id = context ? context->ParseIdentifierQuoteIfNeed(piece) : nullptr;
    if (!id) id = TastCreate<TastTokenIdentifier>(context, piece, false);
    defaultSchemaNames_->Insert(defaultSchemaNames_->GetCount())->Assign(*id);
  }
  NotifyUpdated();
}

WideString TmvMetadataContainer::DefaultSchemaNamesStr() const {
  WideString text;
  for (int i = 0; i < defaultSchemaNames_->GetCount(); ++i) {
    if (i > 0) text += u";";
    text += TokenSQL(defaultSchemaNames_->Identifier(i));
  }
  return text;
}

bool TmvMetadataContainer::IsMetadataObjectVisible(TmvMetadataObject* object) {
  bool visible = true;
  if (GetMetadataObjectVisible) GetMetadataObjectVisible(this, object, visible);
  return visible;
}

}  // namespace mv
