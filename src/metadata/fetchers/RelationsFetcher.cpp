#include "metadata/fetchers/RelationsFetcher.h"

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataNames.h"

namespace mv {

// --- TmvBaseMetadataRelationsFetcher ---

TmvBaseMetadataRelationsFetcher::TmvBaseMetadataRelationsFetcher(TmvBaseSQLContext* context,
                                                                 TmvConnection* connection)
    : TmvBaseMetadataFetcher(context, connection) {}

TmvBaseMetadataRelationsFetcher::~TmvBaseMetadataRelationsFetcher() = default;

TmvBaseMetadataRelationsFetcher::TObjectParts TmvBaseMetadataRelationsFetcher::ParseConstantParts(
    WideStringView database, WideStringView schema, WideStringView name) const {
  TmvBaseSQLContext* context = SQLContext();
  const auto identifier = [context](WideStringView text) -> TmvOwned<TastTokenIdentifier> {
    const WideString trimmed = WideTrim(text);
    return trimmed.empty() ? nullptr : context->ParseIdentifierQuoteIfNeed(trimmed);
  };
  TObjectParts parts;
  if (const WideString trimmed = WideTrim(database); !trimmed.empty())
    parts.Database = context->ParseQualifiedNameQuoteIfNeed(trimmed);
  parts.Schema = identifier(schema);
  parts.Name = identifier(name);
  return parts;
}

void TmvBaseMetadataRelationsFetcher::InitIterations() {
  primaryConstant_ = ParseConstantParts(PrimaryDatabase, PrimarySchema, PrimaryName);
  childConstant_ = ParseConstantParts(ChildDatabase, ChildSchema, ChildName);
}

void TmvBaseMetadataRelationsFetcher::EndIterations() {
  primaryConstant_ = {};
  childConstant_ = {};
}

void TmvBaseMetadataRelationsFetcher::CopyPart(TastTokenIdentifier& target,
                                               const TmvOwned<TastTokenIdentifier>& part) {
  if (part) AssignIdentifier(target, part.get());
}

void TmvBaseMetadataRelationsFetcher::CopyPart(TSQLQualifiedName& target, const TmvOwned<TSQLQualifiedName>& part) {
  if (part) AssignQualifiedName(target, part.get());
}

void TmvBaseMetadataRelationsFetcher::CalcPrimaryObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                                                            TastTokenIdentifier& name) {
  CopyPart(database, primaryConstant_.Database);
  CopyPart(schema, primaryConstant_.Schema);
  CopyPart(name, primaryConstant_.Name);
}

void TmvBaseMetadataRelationsFetcher::CalcChildObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                                                          TastTokenIdentifier& name) {
  CopyPart(database, childConstant_.Database);
  CopyPart(schema, childConstant_.Schema);
  CopyPart(name, childConstant_.Name);
}

void TmvBaseMetadataRelationsFetcher::LoadMetadata(TmvMetadataContainer* container, const TmvMetadataFilter*,
                                                   const TSQLQualifiedName* database) {
  if (!container) return;
  Log().Debug(u"TmvBaseMetadataRelationsFetcher.LoadMetadata: begin loading relations");
  TmvBaseSQLContext* context = SQLContext();
  TmvUpdateBatch batch(*container);
  for (TObjectParts* parts : {&primary_, &child_}) {
    parts->Database = TastCreate<TSQLQualifiedName>(context);
    parts->Schema = TastCreate<TastTokenIdentifier>(context, u"", false);
    parts->Name = TastCreate<TastTokenIdentifier>(context, u"", false);
  }
  // Names without a database are in the one given, else in the container's default.
  TmvOwned<TSQLQualifiedName> fallbackDatabase;
  if (SyntaxProvider().IsSupportDatabases() && IsQualifiedNameEmpty(database)) {
    fallbackDatabase = TastCreate<TSQLQualifiedName>(context);
    AssignQualifiedName(*fallbackDatabase, container->DefaultDatabaseName());
  }
  InitIterations();
  WalkThenEnd(
      [&] {
        FirstIteration();
        for (; !IsEndOfIterations() && !container->IsAborted(); NextRelation())
          LoadRelation(container, database, fallbackDatabase.get());
      },
      [&] { EndIterations(); });
  primary_ = {};
  child_ = {};
  Log().Debug(u"TmvBaseMetadataRelationsFetcher.LoadMetadata: end loading relations");
}

void TmvBaseMetadataRelationsFetcher::LoadRelation(TmvMetadataContainer* container, const TSQLQualifiedName* database,
                                                   const TSQLQualifiedName* fallbackDatabase) {
  const bool databases = SyntaxProvider().IsSupportDatabases();
  const auto completeDatabase = [&](TSQLQualifiedName& target) {
    if (!databases || !IsQualifiedNameEmpty(&target)) return;
    if (!IsQualifiedNameEmpty(database))
      AssignQualifiedName(target, database);
    else if (!IsQualifiedNameEmpty(fallbackDatabase))
      AssignQualifiedName(target, fallbackDatabase);
  };

  primary_.Database->Clear();
  primary_.Schema->Clear();
  primary_.Name->Clear();
  CalcPrimaryObjectName(*primary_.Database, *primary_.Schema, *primary_.Name);
  if (primary_.Name->IsEmpty()) return SkipRelation();
  completeDatabase(*primary_.Database);

  const bool caseSensitive = IsIdentifiersCaseSensitive();
  child_.Database->Clear();
  child_.Schema->Clear();
  child_.Schema->Quoted = caseSensitive;
  child_.Name->Clear();
  child_.Name->Quoted = caseSensitive;
  CalcChildObjectName(*child_.Database, *child_.Schema, *child_.Name);
  if (child_.Name->IsEmpty()) return SkipRelation();
  completeDatabase(*child_.Database);

  // Inverted, the relation hangs on the object that holds the key and names
  // the referenced one.
  const bool inverted = container->LoadInvertedRelations();
  const TObjectParts& holder = inverted ? child_ : primary_;
  const TObjectParts& other = inverted ? primary_ : child_;
  TmvMetadataObject* object =
      container->FindObjectByName(holder.Name.get(), holder.Schema.get(), holder.Database.get());
  if (!object) return SkipRelation();

  TmvMetadataRelationsList* relations = object->GetRelations();
  TmvMetadataRelation* relation = relations->Add();
  {
    TmvUpdateBatch relationBatch(*relation);
    relation->SetChildSchema(other.Schema.get());
    relation->SetChildName(other.Name.get());
    relation->SetChildDatabase(other.Database.get());
    if (inverted) relation->SetForeignKey(true);
  }
  BeginRelation(object, relation);
  BeginCalcFields(object, relation);
  ReadRelationFields(object, relation, inverted);
  EndCalcFields(object, relation);
  EndRelation(object, relation);

  // The same key read again: the later copy stays.
  const int older = relations->FindRelation(&relation->KeyFields()->List(), relation->ChildSchema(),
                                            relation->ChildDatabase(), &relation->ChildFields()->List(),
                                            relation->ChildName());
  if (older >= 0 && older < relations->IndexOf(relation)) relations->Delete(older);
}

void TmvBaseMetadataRelationsFetcher::ReadRelationFields(TmvMetadataObject* object, TmvMetadataRelation* relation,
                                                         bool inverted) {
  TmvOwned<TSQLQualifiedName> childField = TastCreate<TSQLQualifiedName>(SQLContext());
  TmvOwned<TSQLQualifiedName> primaryField = TastCreate<TSQLQualifiedName>(SQLContext());
  bool primaryFieldMissing = false;
  for (; !IsEndOfRelation(object, relation); NextRelationFields(object, relation)) {
    childField->Clear();
    primaryField->Clear();
    CalcRelationFieldNames(object, relation, *childField, *primaryField);
    if (IsQualifiedNameEmpty(primaryField.get())) primaryFieldMissing = true;
    relation->KeyFields()->Add(inverted ? childField.get() : primaryField.get());
    relation->ChildFields()->Add(inverted ? primaryField.get() : childField.get());
  }
  // A key with a field of the primary side unknown cannot be joined on.
  if (primaryFieldMissing) relation->KeyFields()->Clear();
}

void TmvBaseMetadataRelationsFetcher::SkipRelation() {
  BeginCalcFields(nullptr, nullptr);
  while (!IsEndOfRelation(nullptr, nullptr)) NextRelationFields(nullptr, nullptr);
  EndCalcFields(nullptr, nullptr);
}

// --- TmvMetadataRelationsFetcherFromDataset ---

std::vector<WideString> SplitFieldList(WideStringView text, WideStringView separator) {
  std::vector<WideString> entries;
  if (separator.empty()) separator = u";";
  size_t from = 0;
  while (from <= text.size()) {
    size_t at = text.find(separator, from);
    if (at == WideStringView::npos) at = text.size();
    if (WideString entry = WideTrim(text.substr(from, at - from)); !entry.empty()) entries.push_back(std::move(entry));
    from = at + separator.size();
  }
  return entries;
}

void TmvMetadataRelationsFetcherFromDataset::InitIterations() {
  TmvBaseMetadataRelationsFetcher::InitIterations();
  OpenCatalogDataset(dataset_);
  keyPosition_.reset();
  relationId_.reset();
  primaryFields_.clear();
  childFields_.clear();
  listPosition_ = 0;
}

WideString TmvMetadataRelationsFetcherFromDataset::ColumnText(WideStringView columnName) const {
  return TrimName(CatalogText(FindCatalogColumn(dataset_, columnName)));
}

std::optional<int64_t> TmvMetadataRelationsFetcherFromDataset::ColumnInteger(WideStringView columnName) const {
  const TmvField* column = FindCatalogColumn(dataset_, columnName);
  if (!column || column->IsNull()) return std::nullopt;
  return column->AsLargeInt();
}

void TmvMetadataRelationsFetcherFromDataset::CalcObjectName(WideStringView databaseColumn, WideStringView schemaColumn,
                                                            WideStringView nameColumn, TSQLQualifiedName& database,
                                                            TastTokenIdentifier& schema, TastTokenIdentifier& name) {
  if (const WideString text = TrimName(RequireCatalogColumn(dataset_, nameColumn).AsWideString()); !text.empty())
    SetCatalogIdentifier(name, text);
  if (const WideString text = ColumnText(schemaColumn); !text.empty()) SetCatalogIdentifier(schema, text);
  if (const WideString text = ColumnText(databaseColumn); !text.empty()) SetCatalogName(database, text);
}

void TmvMetadataRelationsFetcherFromDataset::CalcPrimaryObjectName(TSQLQualifiedName& database,
                                                                   TastTokenIdentifier& schema,
                                                                   TastTokenIdentifier& name) {
  TmvBaseMetadataRelationsFetcher::CalcPrimaryObjectName(database, schema, name);
  CalcObjectName(PrimaryDatabaseFieldName, PrimarySchemaFieldName, PrimaryNameFieldName, database, schema, name);
}

void TmvMetadataRelationsFetcherFromDataset::CalcChildObjectName(TSQLQualifiedName& database,
                                                                 TastTokenIdentifier& schema,
                                                                 TastTokenIdentifier& name) {
  TmvBaseMetadataRelationsFetcher::CalcChildObjectName(database, schema, name);
  CalcObjectName(ChildDatabaseFieldName, ChildSchemaFieldName, ChildNameFieldName, database, schema, name);
}

// The position is forgotten at the start of every relation, also one that is
// read past (which gets BeginCalcFields alone): the first pair of a relation
// never ends it, so every relation takes at least one row and the walk moves on.
void TmvMetadataRelationsFetcherFromDataset::StartRelationRows() {
  keyPosition_.reset();
  relationId_ = ColumnInteger(RelationIdFieldName);
}

void TmvMetadataRelationsFetcherFromDataset::BeginRelation(TmvMetadataObject*, TmvMetadataRelation*) {
  StartRelationRows();
}

void TmvMetadataRelationsFetcherFromDataset::BeginCalcFields(TmvMetadataObject*, TmvMetadataRelation*) {
  if (!Separated()) {
    StartRelationRows();
    return;
  }
  listPosition_ = 0;
  primaryFields_.clear();
  childFields_.clear();
  if (IsCatalogWalkOver(dataset_)) return;
  for (WideString& entry : SplitFieldList(RequireCatalogColumn(dataset_, PrimaryFieldFieldName).AsWideString(),
                                          FieldListSeparator))
    primaryFields_.push_back(TrimName(entry));
  for (WideString& entry :
       SplitFieldList(RequireCatalogColumn(dataset_, ChildFieldFieldName).AsWideString(), FieldListSeparator))
    childFields_.push_back(TrimName(entry));
}

void TmvMetadataRelationsFetcherFromDataset::CalcRelationFieldNames(TmvMetadataObject*, TmvMetadataRelation*,
                                                                    TSQLQualifiedName& childField,
                                                                    TSQLQualifiedName& primaryField) {
  if (Separated()) {
    if (listPosition_ >= primaryFields_.size() || listPosition_ >= childFields_.size()) return;
    SetCatalogName(primaryField, primaryFields_[listPosition_]);
    SetCatalogName(childField, childFields_[listPosition_]);
    return;
  }
  SetCatalogName(primaryField, TrimName(RequireCatalogColumn(dataset_, PrimaryFieldFieldName).AsWideString()));
  SetCatalogName(childField, TrimName(RequireCatalogColumn(dataset_, ChildFieldFieldName).AsWideString()));
  if (FindCatalogColumn(dataset_, KeySequenceFieldName)) keyPosition_ = ColumnInteger(KeySequenceFieldName);
}

bool TmvMetadataRelationsFetcherFromDataset::IsEndOfRelation(TmvMetadataObject*, TmvMetadataRelation*) {
  if (!dataset_ || dataset_->Eof()) return true;
  if (Separated()) return listPosition_ >= primaryFields_.size() || listPosition_ >= childFields_.size();
  if (FindCatalogColumn(dataset_, KeySequenceFieldName)) {
    const std::optional<int64_t> sequence = ColumnInteger(KeySequenceFieldName);
    if (keyPosition_ && sequence && *sequence <= *keyPosition_) return true;
  }
  if (FindCatalogColumn(dataset_, RelationIdFieldName) && ColumnInteger(RelationIdFieldName) != relationId_)
    return true;
  return false;
}

void TmvMetadataRelationsFetcherFromDataset::NextRelationFields(TmvMetadataObject*, TmvMetadataRelation*) {
  if (Separated()) {
    ++listPosition_;
    return;
  }
  // The row left behind sets the position also where its fields were not
  // read (a relation read past).
  if (FindCatalogColumn(dataset_, KeySequenceFieldName)) keyPosition_ = ColumnInteger(KeySequenceFieldName);
  dataset_->Next();
}

void TmvMetadataRelationsFetcherFromDataset::NextRelation() {
  if (Separated()) dataset_->Next();
}

}  // namespace mv
