// The members of the SQL context that reach the metadata layer: custom
// aggregates of the container, the metadata forwarders and the hook on the
// metadata provider. They are defined here, with the layer they use, so that
// the front end itself stays free of metadata headers.
#include <vector>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

// Key of the context's handler on its metadata provider's destroying event.
constexpr uintptr_t kMetadataProviderDestroying = 3;

// The names under which a custom aggregate may stand in the container: the
// name itself, then the name completed with its (or the default) database
// and its own schema or each default schema.
std::vector<TmvOwned<TSQLQualifiedName>> CustomAggregateVariants(TmvBaseSQLContext& context,
                                                                 const TSQLQualifiedName* name,
                                                                 const TmvMetadataContainer& container) {
  std::vector<TmvOwned<TSQLQualifiedName>> variants;
  variants.push_back(name->CloneAs<TSQLQualifiedName>(&context));
  TmvBaseSyntaxProvider* provider = context.SyntaxProvider();
  if (!provider) return variants;
  TmvOwned<TastToken> objectName = context.ExtractNameFromFullName(name);
  if (!objectName) return variants;
  TmvOwned<TastToken> schema = context.ExtractSchemaFromFullName(name);
  TmvOwned<TSQLQualifiedName> database = context.ExtractDatabaseFromFullName(name);
  const TSQLQualifiedName* databasePart = database ? database.get() : container.DefaultDatabaseName();
  auto make = [&](const TastToken* schemaPart) {
    TmvOwned<TSQLQualifiedName> variant = TastCreate<TSQLQualifiedName>(&context);
    if (databasePart) variant->AddName(databasePart);
    if (schemaPart) variant->AddName(schemaPart->CloneAs<TastToken>(&context));
    variant->AddName(objectName->CloneAs<TastToken>(&context));
    variants.push_back(std::move(variant));
  };
  if (!provider->IsSupportSchemas()) {
    make(nullptr);
  } else if (schema) {
    make(schema.get());
  } else {
    const TSQLIdentifiersCollection* schemas = container.DefaultSchemaNames();
    for (int i = 0; i < schemas->GetCount(); ++i) make(schemas->Identifier(i));
  }
  return variants;
}

}  // namespace

bool TmvBaseSQLContext::IsNameOfCustomAggregate(const TSQLQualifiedName* name) {
  if (!metadataContainer_ || !name) return false;
  const TmvMetadataQualifiedNamesList* aggregates = metadataContainer_->CustomAggregateFunctions();
  if (aggregates->Count() == 0) return false;
  for (const auto& variant : CustomAggregateVariants(*this, name, *metadataContainer_))
    if (aggregates->FindByName(variant.get()) >= 0) return true;
  return false;
}

bool TmvBaseSQLContext::NormalizeCustomAggregate(TSQLQualifiedName* name) {
  if (!metadataContainer_ || !name) return false;
  const TmvMetadataQualifiedNamesList* aggregates = metadataContainer_->CustomAggregateFunctions();
  if (aggregates->Count() == 0) return false;
  // A later variant overrides an earlier one.
  const TSQLQualifiedName* entry = nullptr;
  for (const auto& variant : CustomAggregateVariants(*this, name, *metadataContainer_)) {
    int index = aggregates->FindByName(variant.get());
    if (index >= 0) entry = aggregates->Items(index);
  }
  if (!entry) return false;
  name->Assign(*entry);
  return true;
}

void TmvBaseSQLContext::HookMetadataProvider(bool hook) {
  if (!metadataProvider_) return;
  const TmvHandlerId id(this, kMetadataProviderDestroying);
  if (hook)
    metadataProvider_->GetOnDestroying().AddHandler(id, [this](TmvObject*) { metadataProvider_ = nullptr; });
  else
    metadataProvider_->GetOnDestroying().RemoveHandler(id);
}

void TmvBaseSQLContext::GetDatabasesList(TmvConnection* connection, std::vector<WideString>& list) {
  RequireSyntaxProvider();
  syntaxProvider_->GetDatabasesList(this, connection, list);
}

void TmvBaseSQLContext::LoadFieldsForQuery(TmvConnection* connection, WideStringView sql,
                                           TmvMetadataFieldsList& fields) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadFieldsForQuery(this, connection, sql, fields);
}

void TmvBaseSQLContext::LoadMetadataCustomAggregateNames(TmvConnection* connection, TmvMetadataContainer* container,
                                                         const TSQLQualifiedName* database) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadMetadataCustomAggregateNames(this, connection, container, database);
}

void TmvBaseSQLContext::LoadMetadataForProcedure(TmvConnection* connection, TmvMetadataProcedure* procedure) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadMetadataForProcedure(this, connection, procedure);
}

void TmvBaseSQLContext::LoadMetadataForSynonym(TmvConnection* connection, TmvMetadataSynonym* synonym) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadMetadataForSynonym(this, connection, synonym);
}

void TmvBaseSQLContext::LoadMetadataForTable(TmvConnection* connection, TmvMetadataTable* table) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadMetadataForTable(this, connection, table);
}

void TmvBaseSQLContext::LoadMetadataForView(TmvConnection* connection, TmvMetadataView* view) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadMetadataForView(this, connection, view);
}

void TmvBaseSQLContext::LoadMetadataObjects(TmvConnection* connection, TmvMetadataContainer* container,
                                            const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadMetadataObjects(this, connection, container, filter, database);
}

void TmvBaseSQLContext::LoadMetadataRelations(TmvConnection* connection, TmvMetadataContainer* container,
                                              const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  RequireSyntaxProvider();
  syntaxProvider_->LoadMetadataRelations(this, connection, container, filter, database);
}

bool TmvBaseSQLContext::IsTableExists(TmvConnection* connection, WideStringView name) {
  if (!metadataProvider_ || !metadataProvider_->GetCanExecSQL()) return false;
  try {
    std::unique_ptr<TmvDataSet> dataset =
        metadataProvider_->ExecSQLDatasetUR(connection ? connection : metadataProvider_->Connection(),
                                            u"select 1 as dummy_value from " + WideString(name), nullptr);
    return dataset != nullptr;
  } catch (const EAbort&) {
    throw;
  } catch (...) {
    // Any failure of the probe, whatever its kind, means no such table.
    return false;
  }
}

}  // namespace mv
