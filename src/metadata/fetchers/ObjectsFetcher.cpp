#include "metadata/fetchers/ObjectsFetcher.h"

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataNames.h"
#include "metadata/fetchers/FilterMacros.h"
#include "support/Exceptions.h"

namespace mv {

// --- TmvBaseMetadataObjectsFetcher ---

TmvBaseMetadataObjectsFetcher::TmvBaseMetadataObjectsFetcher(TmvBaseSQLContext* context, TmvConnection* connection)
    : TmvBaseMetadataFetcher(context, connection),
      systemSchemaNames_(TastCreate<TSQLIdentifiersCollection>(context)) {}

TmvBaseMetadataObjectsFetcher::~TmvBaseMetadataObjectsFetcher() = default;

void TmvBaseMetadataObjectsFetcher::SetSystemSchemaNames(const TSQLIdentifiersCollection* value) {
  systemSchemaNames_->Clear();
  if (!value) return;
  for (int i = 0; i < value->GetCount(); ++i)
    if (auto* id = TmvCast<TastTokenIdentifier>(systemSchemaNames_->Add())) id->Assign(*value->Identifier(i));
}

bool TmvBaseMetadataObjectsFetcher::IsSystemSchema(const TastTokenIdentifier* schema) const {
  return !IsIdentifierEmpty(schema) && systemSchemaNames_->GetCount() > 0 && systemSchemaNames_->ContainsSameId(schema);
}

void TmvBaseMetadataObjectsFetcher::LoadMetadata(TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                 const TSQLQualifiedName* database) {
  if (!container) return;
  Log().Debug(u"TmvBaseMetadataObjectsFetcher.LoadMetadata: begin loading objects");
  TmvBaseSyntaxProvider& syntax = SyntaxProvider();
  TmvBaseSQLContext* context = SQLContext();
  filter_ = filter;
  container_ = container;
  struct TContainerReset {
    TmvMetadataContainer*& target;
    ~TContainerReset() { target = nullptr; }
  } containerReset{container_};
  TmvUpdateBatch batch(*container);

  // The database of the objects: the one given, else the container's
  // default, asked from the server when the container has none.
  TmvOwned<TSQLQualifiedName> objectsDatabase = TastCreate<TSQLQualifiedName>(context);
  AssignQualifiedName(*objectsDatabase, database);
  if (syntax.IsSupportDatabases() && IsQualifiedNameEmpty(database)) {
    if (IsQualifiedNameEmpty(container->DefaultDatabaseName())) {
      TmvOwned<TSQLQualifiedName> defaultName = syntax.GetDefaultDatabaseName(context, Connection());
      container->SetDefaultDatabaseName(defaultName.get());
    }
    AssignQualifiedName(*objectsDatabase, container->DefaultDatabaseName());
  }
  if (syntax.IsSupportSchemas() && container->DefaultSchemaNames()->GetCount() == 0)
    syntax.GetDefaultSchemaNames(context, Connection(), *container->DefaultSchemaNames());

  InitIterations();
  WalkThenEnd(
      [&] {
        FirstIteration();
        TmvOwned<TastTokenIdentifier> schema = TastCreate<TastTokenIdentifier>(context, u"", false);
        TmvOwned<TastTokenIdentifier> name = TastCreate<TastTokenIdentifier>(context, u"", false);
        const TmvOwned<TastTokenIdentifier> emptySchema = syntax.GetEmptySchemaName(context);
        for (; !IsEndOfIterations() && !container->IsAborted(); NextIteration())
          LoadRow(objectsDatabase.get(), emptySchema.get(), *schema, *name);
      },
      [&] { EndIterations(); });
  // A container that works offline can fetch nothing later: every object's
  // fields are read now.
  if (container->WorkOffline()) container->LoadFields(Connection());
  Log().Debug(u"TmvBaseMetadataObjectsFetcher.LoadMetadata: end loading objects");
}

bool TmvBaseMetadataObjectsFetcher::LoadRow(const TSQLQualifiedName* database, const TastTokenIdentifier* emptySchema,
                                            TastTokenIdentifier& schema, TastTokenIdentifier& name) {
  const TmvMetadataClass* objectClass = CalcMetadataObjectClass();
  if (!objectClass) return false;
  bool system = CalcSystemFlag();
  const bool caseSensitive = IsIdentifiersCaseSensitive();
  schema.Clear();
  schema.Quoted = caseSensitive;
  name.Clear();
  name.Quoted = caseSensitive;
  CalcObjectName(schema, name);
  if (name.IsEmpty()) return false;

  TmvBaseSQLContext* context = SQLContext();
  // Made without a parent: until it is added, nothing of the container hears of it.
  TmvOwned<TmvMetadataBase> made(objectClass->CreateRaw(nullptr, context));
  if (!TmvCast<TmvMetadataObject>(made.get()))
    throw EmvQueryBuilderError(u"Cannot add an object of the class " + WideFromAscii(objectClass->ClassName()));
  TmvOwned<TmvMetadataObject> object(static_cast<TmvMetadataObject*>(made.release()));

  if (!system && SyntaxProvider().IsSupportSchemas() && !schema.IsEmpty()) system = IsSystemSchema(&schema);
  if (emptySchema && context->IsIdentifiersEqual(emptySchema, &schema)) schema.Clear();
  {
    TmvUpdateBatch objectBatch(*object);
    object->SetDatabase(database);
    object->SetSchema(&schema);
    object->SetName(&name);
    object->SetSystem(system);
    object->SetShortDescription(GetShortDescription());
    object->SetLongDescription(GetLongDescription());
  }
  // Built whole before the filter sees it: a rejected object never enters
  // the container's indexes.
  if (filter_ && !filter_->FilterMetadataObject(object.get())) return false;

  TmvMetadataObject* added = object.get();
  container_->Add(std::move(object));
  if (Log().IsActive())
    Log().Debug(u"TmvBaseMetadataObjectsFetcher.LoadMetadata: %s %s", WideFromAscii(added->ClassName()),
                added->FullNameStr());
  if (TmvCast<TmvMetadataSynonym>(added)) LoadReferencedName(added, database, emptySchema);
  added->SetVisible(container_->IsMetadataObjectVisible(added));
  return true;
}

void TmvBaseMetadataObjectsFetcher::LoadReferencedName(TmvMetadataObject* object, const TSQLQualifiedName* database,
                                                       const TastTokenIdentifier* emptySchema) {
  auto* synonym = static_cast<TmvMetadataSynonym*>(object);
  TmvBaseSQLContext* context = SQLContext();
  const bool caseSensitive = IsIdentifiersCaseSensitive();
  TmvOwned<TSQLQualifiedName> targetDatabase = TastCreate<TSQLQualifiedName>(context);
  TmvOwned<TastTokenIdentifier> targetSchema = TastCreate<TastTokenIdentifier>(context, u"", caseSensitive);
  TmvOwned<TastTokenIdentifier> targetName = TastCreate<TastTokenIdentifier>(context, u"", caseSensitive);
  CalcReferencedObjectName(*targetDatabase, *targetSchema, *targetName);
  if (IsQualifiedNameEmpty(targetDatabase.get())) AssignQualifiedName(*targetDatabase, database);
  if (emptySchema && context->IsIdentifiersEqual(emptySchema, targetSchema.get())) targetSchema->Clear();
  TmvUpdateBatch batch(*synonym);
  synonym->SetReferencedDatabase(targetDatabase.get());
  synonym->SetReferencedSchema(targetSchema.get());
  synonym->SetReferencedName(targetName.get());
  if (!synonym->System() && IsSystemSchema(targetSchema.get())) synonym->SetSystem(true);
}

// --- Variants ---

const TmvMetadataClass* TmvBaseMetadataObjectsFetcherVariants::CalcMetadataObjectClass() {
  const TmvVariant type = GetType();
  if (type.IsClear()) return DefaultObjectClass();
  const struct {
    const TmvVariant& User;
    const TmvVariant& System;
    const TmvMetadataClass& Class;
  } kinds[] = {
      {UserTableTypeValue, SystemTableTypeValue, TmvMetadataTable::StaticClass()},
      {UserViewTypeValue, SystemViewTypeValue, TmvMetadataView::StaticClass()},
      {UserProcedureTypeValue, SystemProcedureTypeValue, TmvMetadataProcedure::StaticClass()},
      {UserSynonymTypeValue, SystemSynonymTypeValue, TmvMetadataSynonym::StaticClass()},
  };
  for (const auto& kind : kinds)
    if (IsValueLikeVariant(type, kind.User) || IsValueLikeVariant(type, kind.System)) return &kind.Class;
  return DefaultObjectClass();
}

bool TmvBaseMetadataObjectsFetcherVariants::CalcSystemFlag() {
  if (const TmvVariant user = GetUser(); !user.IsClear()) return !IsValueLikeVariant(user, UserFlagValue);
  if (const TmvVariant system = GetSystem(); !system.IsClear()) return IsValueLikeVariant(system, SystemFlagValue);
  if (const TmvVariant type = GetType(); !type.IsClear())
    return IsValueLikeVariant(type, SystemTableTypeValue) || IsValueLikeVariant(type, SystemViewTypeValue) ||
           IsValueLikeVariant(type, SystemProcedureTypeValue) || IsValueLikeVariant(type, SystemSynonymTypeValue);
  return false;
}

// --- TmvMetadataObjectFetcherFromDataset ---

TmvVariant TmvMetadataObjectFetcherFromDataset::GetType() {
  return CatalogValue(FindCatalogColumn(dataset_, TypeFieldName));
}

TmvVariant TmvMetadataObjectFetcherFromDataset::GetSystem() {
  return CatalogValue(FindCatalogColumn(dataset_, SystemFieldName));
}

TmvVariant TmvMetadataObjectFetcherFromDataset::GetUser() {
  return CatalogValue(FindCatalogColumn(dataset_, UserFieldName));
}

WideString TmvMetadataObjectFetcherFromDataset::ColumnText(WideStringView columnName) const {
  return TrimName(CatalogText(FindCatalogColumn(dataset_, columnName)));
}

void TmvMetadataObjectFetcherFromDataset::CalcObjectName(TastTokenIdentifier& schema, TastTokenIdentifier& name) {
  SetCatalogIdentifier(name, TrimName(RequireCatalogColumn(dataset_, NameFieldName).AsWideString()));
  if (const WideString schemaText = ColumnText(SchemaFieldName); !schemaText.empty())
    SetCatalogIdentifier(schema, schemaText);
}

void TmvMetadataObjectFetcherFromDataset::CalcReferencedObjectName(TSQLQualifiedName& database,
                                                                   TastTokenIdentifier& schema,
                                                                   TastTokenIdentifier& name) {
  if (FindCatalogColumn(dataset_, ReferencedNameFieldName)) {
    SetCatalogIdentifier(name, ColumnText(ReferencedNameFieldName));
    if (const WideString schemaText = ColumnText(ReferencedSchemaFieldName); !schemaText.empty())
      SetCatalogIdentifier(schema, schemaText);
    if (const WideString databaseText = ColumnText(ReferencedDatabaseFieldName); !databaseText.empty())
      database.AddName(databaseText, IsIdentifiersCaseSensitive());
    return;
  }
  if (!FindCatalogColumn(dataset_, ReferencedFullNameFieldName)) return;
  // One qualified text: name, then schema where the dialect has schemas,
  // then the database.
  TmvOwned<TSQLQualifiedName> target =
      SQLContext()->ParseQualifiedNameQuoteIfNeed(ColumnText(ReferencedFullNameFieldName));
  if (IsQualifiedNameEmpty(target.get())) return;
  AssignIdentifier(name, target->Token(0));
  int next = 1;
  if (SyntaxProvider().IsSupportSchemas() && target->GetCount() > 1) AssignIdentifier(schema, target->Token(next++));
  for (; next < target->GetCount(); ++next) database.AddName(target->Token(next)->CloneAs<TastToken>(SQLContext()));
}

WideString TmvMetadataObjectFetcherFromDataset::GetShortDescription() {
  return CatalogText(FindCatalogColumn(dataset_, ShortDescriptionFieldName));
}

WideString TmvMetadataObjectFetcherFromDataset::GetLongDescription() {
  return CatalogText(FindCatalogColumn(dataset_, LongDescriptionFieldName));
}

// --- TmvMetadataObjectFetcherFromQuery ---

WideString TmvMetadataObjectFetcherFromQuery::StatementText() const {
  return ReplaceFilterMacros(SQL, SQLContext(), Filter(), SchemaFieldName, NameFieldName);
}

// --- TmvMetadataObjectsFetcherFromStringLists ---

namespace {

bool ContainsText(const std::vector<WideString>& list, WideStringView text) {
  for (const WideString& item : list)
    if (WideSameText(item, text)) return true;
  return false;
}

}  // namespace

void TmvMetadataObjectsFetcherFromStringLists::InitIterations() {
  for (const std::vector<WideString>* part : {&UserObjects, &SystemObjects})
    for (const WideString& entry : *part)
      if (!ContainsText(AllObjects, entry)) AllObjects.push_back(entry);
  if (UserObjects.empty())
    for (const WideString& entry : AllObjects)
      if (!ContainsText(SystemObjects, entry)) UserObjects.push_back(entry);
  if (SystemObjects.empty())
    for (const WideString& entry : AllObjects)
      if (!ContainsText(UserObjects, entry)) SystemObjects.push_back(entry);
  index_ = 0;
}

bool TmvMetadataObjectsFetcherFromStringLists::CalcSystemFlag() {
  return !ContainsText(UserObjects, AllObjects[index_]);
}

void TmvMetadataObjectsFetcherFromStringLists::CalcObjectName(TastTokenIdentifier& schema, TastTokenIdentifier& name) {
  TmvOwned<TSQLQualifiedName> parsed = SQLContext()->ParseQualifiedNameQuoteIfNeed(AllObjects[index_]);
  if (IsQualifiedNameEmpty(parsed.get()))
    throw EmvQueryBuilderError(AllObjects[index_], MetadataMessage(mvQBBadObjectName));
  if (parsed->GetCount() > 1) AssignIdentifier(schema, parsed->Token(1));
  AssignIdentifier(name, parsed->Token(0));
}

}  // namespace mv
