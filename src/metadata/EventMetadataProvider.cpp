#include "metadata/EventMetadataProvider.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataNames.h"
#include "metadata/dataset/DataSet.h"

namespace mv {

// --- TSQLMetadataRelation ---

TSQLMetadataRelation::TSQLMetadataRelation(TmvBaseSQLContext* context)
    : context_(context),
      tableName_(TastCreate<TSQLQualifiedName>(context)),
      keyFields_(std::make_unique<TmvFieldsList>(context, true)),
      childTable_(TastCreate<TSQLQualifiedName>(context)),
      childFields_(std::make_unique<TmvFieldsList>(context, true)) {}

TSQLMetadataRelation::~TSQLMetadataRelation() = default;

// --- TmvEventMetadataProvider ---

const TmvMetadataProviderClass& TmvEventMetadataProvider::StaticClass() {
  static const TmvMetadataProviderClass info(
      "TmvEventMetadataProvider", &TmvBaseMetadataProvider::StaticClass(),
      []() -> TmvBaseMetadataProvider* { return new TmvEventMetadataProvider(); });
  return info;
}

void TmvEventMetadataProvider::AssignProvider(const TmvBaseMetadataProvider& source) {
  TmvBaseMetadataProvider::AssignProvider(source);
  const auto* events = TmvCast<TmvEventMetadataProvider>(&source);
  if (!events) return;
  OnGetTables = events->OnGetTables;
  OnGetSystemTables = events->OnGetSystemTables;
  OnGetViews = events->OnGetViews;
  OnGetSystemViews = events->OnGetSystemViews;
  OnGetProcedures = events->OnGetProcedures;
  OnGetSystemProcedures = events->OnGetSystemProcedures;
  OnGetSynonyms = events->OnGetSynonyms;
  OnGetSystemSynonyms = events->OnGetSystemSynonyms;
  OnGetSQLFieldNames = events->OnGetSQLFieldNames;
  OnGetTableRelations = events->OnGetTableRelations;
  OnLoadObjectMetadata = events->OnLoadObjectMetadata;
  OnCreateSQLDataset = events->OnCreateSQLDataset;
  OnExecSQLDatasetUR = events->OnExecSQLDatasetUR;
}

std::unique_ptr<TmvDataSet> TmvEventMetadataProvider::CreateSQLDatasetInternal(TmvConnection* connection,
                                                                               bool unidirectional, bool readOnly) {
  std::unique_ptr<TmvDataSet> dataset;
  if (OnCreateSQLDataset) OnCreateSQLDataset(this, connection, unidirectional, readOnly, dataset);
  return dataset;
}

std::unique_ptr<TmvDataSet> TmvEventMetadataProvider::ExecSQLDatasetUR(TmvConnection*, WideStringView sql,
                                                                       const TmvParams* params) {
  std::unique_ptr<TmvDataSet> dataset;
  if (OnExecSQLDatasetUR) OnExecSQLDatasetUR(this, sql, params, dataset);
  return dataset;
}

namespace {

// The name callbacks in their order, with the class and the system flag of
// the objects they name.
struct TmvObjectNamesSource {
  TmvGetObjectNamesEvent TmvEventMetadataProvider::*event;
  const TmvMetadataClass& (*objectClass)();
  bool system;
};

const TmvObjectNamesSource kObjectNamesSources[] = {
    {&TmvEventMetadataProvider::OnGetTables, &TmvMetadataTable::StaticClass, false},
    {&TmvEventMetadataProvider::OnGetSystemTables, &TmvMetadataTable::StaticClass, true},
    {&TmvEventMetadataProvider::OnGetViews, &TmvMetadataView::StaticClass, false},
    {&TmvEventMetadataProvider::OnGetSystemViews, &TmvMetadataView::StaticClass, true},
    {&TmvEventMetadataProvider::OnGetProcedures, &TmvMetadataProcedure::StaticClass, false},
    {&TmvEventMetadataProvider::OnGetSystemProcedures, &TmvMetadataProcedure::StaticClass, true},
    {&TmvEventMetadataProvider::OnGetSynonyms, &TmvMetadataSynonym::StaticClass, false},
    {&TmvEventMetadataProvider::OnGetSystemSynonyms, &TmvMetadataSynonym::StaticClass, true},
};

// An identifier of a token, for name parts that the host gave as any token.
TmvOwned<TastTokenIdentifier> IdentifierOf(TmvBaseSQLContext* context, const TastToken* token) {
  TmvOwned<TastTokenIdentifier> id = TastCreate<TastTokenIdentifier>(context);
  AssignIdentifier(*id, token);
  return id;
}

}  // namespace

void TmvEventMetadataProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                   const TSQLQualifiedName* database) {
  if (database && database->GetCount() > 0) {
    TmvBaseMetadataProvider::LoadMetadataObjects(context, connection, container, filter, database);
    return;
  }
  TSQLDatabaseObjectsList names(context, true);
  for (const TmvObjectNamesSource& source : kObjectNamesSources) {
    const TmvGetObjectNamesEvent& event = this->*source.event;
    if (!event) continue;
    names.Clear();
    event(this, names);
    for (int i = 0; i < names.Count(); ++i) {
      if (container->IsAborted()) return;
      const TSQLQualifiedName* name = names.Items(i);
      TmvOwned<TmvMetadataBase> made(source.objectClass().CreateRaw(container, context));
      TmvOwned<TmvMetadataObject> object(static_cast<TmvMetadataObject*>(made.release()));
      {
        TmvUpdateBatch batch(*object);
        if (name->GetCount() > 1) object->SetSchema(IdentifierOf(context, name->Token(1)).get());
        if (name->GetCount() > 0) object->SetName(IdentifierOf(context, name->Token(0)).get());
        object->SetSystem(source.system);
      }
      if (!filter || filter->FilterMetadataObject(object.get())) container->Add(std::move(object));
    }
  }
}

void TmvEventMetadataProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                     const TSQLQualifiedName* database) {
  if (database && database->GetCount() > 0) {
    TmvBaseMetadataProvider::LoadMetadataRelations(context, connection, container, filter, database);
    return;
  }
  if (!OnGetTableRelations) return;
  TSQLMetadataRelations relations;
  for (int i = 0; i < container->Count() && !container->IsAborted(); ++i) {
    auto* table = TmvCast<TmvMetadataTable>(container->Items(i));
    if (!table) continue;
    relations.clear();
    OnGetTableRelations(this, *table->FullName(), relations);
    for (const auto& relation : relations) {
      if (!relation || !context->IsQualifiedNamesEqual(&relation->TableName(), table->FullName())) continue;
      const TSQLQualifiedName& child = relation->ChildTable();
      TmvOwned<TastTokenIdentifier> childSchema =
          IdentifierOf(context, child.GetCount() > 1 ? child.Token(1) : nullptr);
      TmvOwned<TastTokenIdentifier> childName = IdentifierOf(context, child.GetCount() > 0 ? child.Token(0) : nullptr);
      table->GetRelations()->AddRelation(&relation->KeyFields(), childSchema.get(), childName.get(), nullptr,
                                         &relation->ChildFields());
    }
  }
}

void TmvEventMetadataProvider::AfterObjectLoad(TmvBaseSQLContext* context, TmvConnection* connection,
                                               TmvMetadataObject* object) {
  if (OnLoadObjectMetadata) OnLoadObjectMetadata(this, context, object);
  TmvMetadataFieldsList* fields = object->GetFields();
  if (!fields->Loaded()) LoadFieldsForQuery(context, connection, object->GetQueryToLoadFields(u""), *fields);
}

void TmvEventMetadataProvider::LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TmvMetadataTable* table) {
  TmvBaseMetadataProvider::LoadMetadataForTable(context, connection, table);
  AfterObjectLoad(context, connection, table);
}

void TmvEventMetadataProvider::LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataView* view) {
  TmvBaseMetadataProvider::LoadMetadataForView(context, connection, view);
  AfterObjectLoad(context, connection, view);
}

void TmvEventMetadataProvider::LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection,
                                                        TmvMetadataProcedure* procedure) {
  TmvBaseMetadataProvider::LoadMetadataForProcedure(context, connection, procedure);
  AfterObjectLoad(context, connection, procedure);
}

void TmvEventMetadataProvider::LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection,
                                                      TmvMetadataSynonym* synonym) {
  TmvBaseMetadataProvider::LoadMetadataForSynonym(context, connection, synonym);
  AfterObjectLoad(context, connection, synonym);
}

void TmvEventMetadataProvider::LoadFieldsForQuery(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  WideStringView sql, TmvMetadataFieldsList& fields) {
  if (GetCanExecSQL()) {
    TmvBaseMetadataProvider::LoadFieldsForQuery(context, connection, sql, fields);
    return;
  }
  TmvUpdateBatch batch(fields);
  fields.Clear();
  if (OnGetSQLFieldNames) {
    TmvFieldsList names(context, true);
    OnGetSQLFieldNames(this, sql, names);
    for (int i = 0; i < names.Count(); ++i) fields.AddField(names.Items(i));
  }
  fields.SetLoaded(true);
}

}  // namespace mv
