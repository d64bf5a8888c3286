#include "metadata/fetchers/NamesFetchers.h"

#include "frontend/SQLContext.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

// --- Databases ---

void TmvBaseMetadataDatabasesFetcher::LoadDatabases(TSQLQualifiedNamesList& list) {
  Log().Debug(u"TmvBaseMetadataDatabasesFetcher.LoadDatabases: begin loading databases");
  InitIterations();
  WalkThenEnd(
      [&] {
        FirstIteration();
        for (; !IsEndOfIterations(); NextIteration()) {
          TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(SQLContext());
          CalcDatabaseName(*name);
          if (!IsQualifiedNameEmpty(name.get())) list.Add(std::move(name));
        }
      },
      [&] { EndIterations(); });
  Log().Debug(u"TmvBaseMetadataDatabasesFetcher.LoadDatabases: end loading databases");
}

void TmvMetadataDatabasesFetcherFromDataset::CalcDatabaseName(TSQLQualifiedName& name) {
  SetCatalogName(name, TrimName(RequireCatalogColumn(dataset_, NameFieldName).AsWideString()));
}

void TmvMetadataDatabasesFetcherFromStringList::CalcDatabaseName(TSQLQualifiedName& name) {
  SetCatalogName(name, TrimName(Names[index_]));
}

// --- Schemas ---

void TmvBaseMetadataSchemasFetcher::LoadSchemas(TSQLIdentifiersCollection& collection) {
  Log().Debug(u"TmvBaseMetadataSchemasFetcher.LoadSchemas: begin loading schemas");
  InitIterations();
  WalkThenEnd(
      [&] {
        FirstIteration();
        TmvOwned<TastTokenIdentifier> name = TastCreate<TastTokenIdentifier>(SQLContext(), u"", false);
        for (; !IsEndOfIterations(); NextIteration()) {
          name->Clear();
          CalcSchemaName(*name);
          if (name->IsEmpty() || collection.ContainsSameId(name.get())) continue;
          if (auto* added = TmvCast<TastTokenIdentifier>(collection.Add())) added->Assign(*name);
        }
      },
      [&] { EndIterations(); });
  Log().Debug(u"TmvBaseMetadataSchemasFetcher.LoadSchemas: end loading schemas");
}

void TmvMetadataSchemasFetcherFromDataset::CalcSchemaName(TastTokenIdentifier& name) {
  SetCatalogIdentifier(name, TrimName(RequireCatalogColumn(dataset_, NameFieldName).AsWideString()));
}

void TmvMetadataSchemasFetcherFromStringList::CalcSchemaName(TastTokenIdentifier& name) {
  SetCatalogIdentifier(name, TrimName(Names[index_]));
}

}  // namespace mv
