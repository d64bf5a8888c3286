#include "model/QueryStatistics.h"

#include <set>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/NodeStatistics.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

MV_DEFINE_CLASS(TmvStatisticsBase, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TmvStatisticsDatabaseObject, TmvStatisticsBase)
MV_DEFINE_CLASS(TmvStatisticsColumn, TmvStatisticsBase)
MV_DEFINE_CLASS(TmvStatisticsOutputColumn, TmvStatisticsBase)
MV_DEFINE_CLASS(TmvQueryStatistics, TmvStatisticsBase)

namespace {

TmvOwned<TSQLQualifiedName> PlainName(TmvBaseSQLContext* context, const TSQLQualifiedName* name) {
  auto copy = TastCreate<TSQLQualifiedName>(context);
  if (name) copy->Assign(*name);
  return copy;
}

TmvOwned<TastTokenIdentifier> IdentifierOf(TmvBaseSQLContext* context, const TastToken* token) {
  if (const auto* id = TmvCast<TastTokenIdentifier>(token)) return id->CloneAs<TastTokenIdentifier>(context);
  return TastCreate<TastTokenIdentifier>(context, token ? WideStringView(token->Token) : WideStringView(), false);
}

// An object's name split into its parts, held inside out: the object's own
// name first, then the schema where the dialect has schemas, and what
// remains is the database. False when the name does not start with an identifier.
struct SplitName {
  TmvOwned<TastTokenIdentifier> Schema;
  TmvOwned<TastTokenIdentifier> Object;
  TmvOwned<TSQLQualifiedName> Database;
};

bool Split(TmvBaseSQLContext* context, const TSQLQualifiedName* name, SplitName& parts, bool allowEmpty) {
  TmvOwned<TSQLQualifiedName> rest = PlainName(context, name);
  if (rest->GetCount() == 0) {
    if (!allowEmpty) return false;
    parts.Object = IdentifierOf(context, nullptr);
    parts.Schema = IdentifierOf(context, nullptr);
    parts.Database = std::move(rest);
    return true;
  }
  if (!TmvCast<TastTokenIdentifier>(rest->Token(0))) return false;
  TmvOwned<TastToken> object = rest->ExtractName();
  parts.Object = IdentifierOf(context, object.get());
  const TmvBaseSyntaxProvider* provider = context->SyntaxProvider();
  TmvOwned<TastToken> schema;
  if (rest->GetCount() > 0 && provider && provider->IsSupportSchemas()) schema = rest->ExtractName();
  parts.Schema = IdentifierOf(context, schema.get());
  parts.Database = std::move(rest);
  return true;
}

void SplitMetadataObject(TmvBaseSQLContext* context, const TmvMetadataObject* object, SplitName& parts) {
  parts.Object = IdentifierOf(context, object->Name());
  parts.Schema = IdentifierOf(context, object->Schema());
  parts.Database = PlainName(context, object->Database());
}

// The select members of a union, nested groups walked in order.
void CollectSelects(TSQLSubQueryExpression* expression, std::vector<TSQLSubQuerySelectExpression*>& list) {
  if (auto* select = TmvCast<TSQLSubQuerySelectExpression>(expression)) {
    list.push_back(select);
    return;
  }
  auto* group = TmvCast<TSQLSubQueryExpressions>(expression);
  if (!group) return;
  for (int i = 0; i < group->GetCount(); ++i) CollectSelects(group->GetItems(i), list);
}

void CollectSources(TSQLFromSource* source, std::vector<TSQLFromSource*>& list) {
  if (auto* group = TmvCast<TSQLFromGroup>(source)) {
    for (int i = 0; i < group->GetCount(); ++i) CollectSources(group->GetItems(i), list);
    return;
  }
  list.push_back(source);
}

WideString Print(const TastNode* node, TSQLBuilder& builder) {
  return node ? const_cast<TastNode*>(node)->SimpleSQL(builder) : WideString();
}

}  // namespace

// --- TmvStatisticsBase ---

TmvStatisticsBase::TmvStatisticsBase(TmvQueryModelHost* host) : host_(host) {}

TmvBaseSQLContext* TmvStatisticsBase::SQLContext() const { return host_ ? host_->SQLContext() : nullptr; }

void TmvStatisticsBase::SetStatisticsInvalid() {
  valid_ = false;
  SetStatisticsInvalidInternal();
}

template <class Item>
void TmvStatisticsList<Item>::MakeValid() {
  if (Valid()) return;
  TmvQueryModelHost* host = QueryBuilder();
  if (host && !host->IsDestroying()) host->ReloadStatistics();
}

template class TmvStatisticsList<TmvStatisticsDatabaseObject>;
template class TmvStatisticsList<TmvStatisticsColumn>;
template class TmvStatisticsList<TmvStatisticsOutputColumn>;

// --- Objects ---

TmvStatisticsDatabaseObject::TmvStatisticsDatabaseObject(TmvQueryModelHost* host, TmvMetadataObject* metadataObject,
                                                         TmvOwned<TastTokenIdentifier> schema,
                                                         TmvOwned<TastTokenIdentifier> objectName,
                                                         TmvOwned<TSQLQualifiedName> database,
                                                         TmvOwned<TSQLQualifiedName> fullName,
                                                         const TastIdentifiersList* aliases)
    : TmvStatisticsBase(host),
      metadataObject_(metadataObject),
      schema_(std::move(schema)),
      objectName_(std::move(objectName)),
      database_(std::move(database)),
      fullName_(std::move(fullName)),
      aliases_(TastCreate<TastIdentifiersList>(SQLContext())) {
  if (aliases) aliases_->Assign(*aliases);
}

TmvStatisticsDatabaseObject::~TmvStatisticsDatabaseObject() = default;

void TmvStatisticsDatabaseObjectsList::ReloadStatistics(TSQLSelectStatement* statement) {
  ClearItems();
  TmvBaseSQLContext* context = SQLContext();
  const TmvStatsObjects* entries = statement ? statement->StatsObjects() : nullptr;
  for (int i = 0; entries && i < entries->GetCount(); ++i) {
    const TmvStatsObject* entry = entries->GetItems(i);
    SplitName parts;
    TmvOwned<TSQLQualifiedName> fullName;
    if (TmvMetadataObject* object = entry->MetadataObject()) {
      SplitMetadataObject(context, object, parts);
      fullName = PlainName(context, object->FullName());
    } else {
      if (!Split(context, entry->Name(), parts, false)) continue;
      fullName = PlainName(context, entry->Name());
    }
    AddItem(TmvCreate<TmvStatisticsDatabaseObject>(QueryBuilder(), entry->MetadataObject(), std::move(parts.Schema),
                                                   std::move(parts.Object), std::move(parts.Database),
                                                   std::move(fullName), entry->Aliases()));
  }
  SetStatisticsValid();
}

// --- Columns ---

TmvStatisticsColumn::TmvStatisticsColumn(TmvQueryModelHost* host, TmvMetadataObject* metadataObject,
                                         TmvMetadataField* field, TmvOwned<TSQLQualifiedName> columnName,
                                         TmvOwned<TastTokenIdentifier> schema,
                                         TmvOwned<TastTokenIdentifier> objectName,
                                         TmvOwned<TSQLQualifiedName> database, bool selected)
    : TmvStatisticsBase(host),
      metadataObject_(metadataObject),
      field_(field),
      columnName_(std::move(columnName)),
      schema_(std::move(schema)),
      objectName_(std::move(objectName)),
      database_(std::move(database)),
      fullName_(PlainName(SQLContext(), columnName_.get())),
      selected_(selected) {
  TmvBaseSQLContext* context = SQLContext();
  if (!objectName_->IsEmpty()) fullName_->AddPrefix(objectName_->CloneAs<TastToken>(context));
  if (!schema_->IsEmpty()) fullName_->AddPrefix(schema_->CloneAs<TastToken>(context));
  fullName_->AddPrefix(database_.get());
}

TmvStatisticsColumn::~TmvStatisticsColumn() = default;

TFieldType TmvStatisticsColumn::GetFieldType() const { return field_ ? field_->FieldType() : TFieldType(0); }

WideString TmvStatisticsColumn::GetFieldTypeName() const { return field_ ? field_->FieldTypeName() : WideString(); }

void TmvStatisticsColumnsList::ReloadStatistics(TSQLSelectStatement* statement) {
  ClearItems();
  TmvBaseSQLContext* context = SQLContext();
  const TmvStatsColumns* entries = statement ? statement->StatsColumns() : nullptr;
  if (!entries) {
    SetStatisticsValid();
    return;
  }
  // The entries that a select item of a member reads.
  std::set<const TmvStatsColumn*> selected;
  std::vector<TSQLSubQuerySelectExpression*> selects;
  CollectSelects(statement, selects);
  for (TSQLSubQuerySelectExpression* select : selects) {
    for (int i = 0; select->SelectItems && i < select->SelectItems->GetCount(); ++i) {
      const TmvStatsColumns* read = select->SelectItems->GetItems(i)->StatsColumns();
      for (int k = 0; read && k < read->GetCount(); ++k) {
        const TmvStatsColumn* column = read->GetItems(k);
        if (const TmvStatsColumn* found = entries->FindColumn(column->MetadataObject(), column->ObjectName(),
                                                              column->ColumnName(), column->Field()))
          selected.insert(found);
      }
    }
  }
  for (int i = 0; i < entries->GetCount(); ++i) {
    const TmvStatsColumn* entry = entries->GetItems(i);
    SplitName parts;
    TmvOwned<TSQLQualifiedName> columnName;
    if (TmvMetadataObject* object = entry->MetadataObject()) {
      SplitMetadataObject(context, object, parts);
      const TSQLQualifiedName* fieldName = entry->Field() ? entry->Field()->Name() : nullptr;
      columnName = PlainName(context, fieldName && fieldName->GetCount() ? fieldName : entry->ColumnName());
    } else {
      if (!Split(context, entry->ObjectName(), parts, true)) continue;
      columnName = PlainName(context, entry->ColumnName());
    }
    AddItem(TmvCreate<TmvStatisticsColumn>(QueryBuilder(), entry->MetadataObject(),
                                           entry->MetadataObject() ? entry->Field() : nullptr, std::move(columnName),
                                           std::move(parts.Schema), std::move(parts.Object),
                                           std::move(parts.Database), selected.count(entry) > 0));
  }
  SetStatisticsValid();
}

// --- Output columns ---

TmvStatisticsOutputColumn::TmvStatisticsOutputColumn(TmvQueryModelHost* host, Data data)
    : TmvStatisticsBase(host), data_(std::move(data)) {
  if (data_.Datasource)
    objectNameInQuery_ = data_.Datasource->GetNameInQuery();
  else if (!data_.ObjectAlias.empty())
    objectNameInQuery_ = data_.ObjectAlias;
  else
    objectNameInQuery_ = data_.ObjectName;
  if (!data_.Alias.empty())
    columnNameInQuery_ = data_.Alias;
  else if (data_.Field)
    columnNameInQuery_ = data_.Field->NameStrNotQuoted();
  else if (!data_.ResultFieldName.empty())
    columnNameInQuery_ = data_.ResultFieldName;
  else
    columnNameInQuery_ = data_.ColumnName;
}

TFieldType TmvStatisticsOutputColumn::GetFieldType() const {
  return data_.Field ? data_.Field->FieldType() : data_.ResultFieldType;
}

WideString TmvStatisticsOutputColumn::GetFieldTypeName() const {
  return data_.Field ? data_.Field->FieldTypeName() : data_.ResultFieldTypeName;
}

void TmvStatisticsOutputColumnsList::ReloadStatistics(TSQLSelectStatement* statement) {
  ClearItems();
  TSQLSubQuerySelectExpression* first = statement ? statement->FirstUnionSubQuery() : nullptr;
  if (!first || !first->SelectItems) {
    SetStatisticsValid();
    return;
  }
  TmvQueryModelHost* host = QueryBuilder();
  TmvBaseSQLContext* context = SQLContext();
  TSQLBuilder& builder = context->SQLBuilderExpressionForServer();
  TSQLBuilder& bare = context->SQLBuilderExpressionForServerWithoutQuotes();
  TSQLSelectItems* items = first->SelectItems.get();
  const TmvMetadataFieldsList* resultFields = first->ResultFields();

  // The model's rows and datasources of the first SELECT, matched to the
  // tree by their places: the tree was made from them in that order.
  std::vector<TmvSelectItem*> rows;
  TmvDatasourceList datasources;
  std::vector<TSQLFromSource*> sources;
  if (first->FromClause) CollectSources(first->FromClause.get(), sources);
  if (TmvUnionSubQuery* member = host && host->Query() ? host->Query()->FirstSelect() : nullptr) {
    if (TmvSelectList* list = member->SelectList())
      for (int i = 0; i < list->Count(); ++i)
        if (TmvSelectItem* row = list->Items(i); row->Select() && row->Expression()) rows.push_back(row);
    if (member->Datasources()) member->Datasources()->GetDatasources(datasources);
  }
  if (int(rows.size()) != items->GetCount()) rows.clear();
  if (datasources.size() != sources.size()) datasources.clear();
  auto datasourceOf = [&](const TSQLFromSource* source) -> TmvDatasource* {
    for (size_t i = 0; i < datasources.size(); ++i)
      if (sources[i] == source) return datasources[i];
    return nullptr;
  };
  auto aliasOf = [&](const TSQLFromSource* source) {
    return source->Alias && source->Alias->Name ? Print(source->Alias->Name.get(), bare) : WideString();
  };

  int next = 0;  // the running index over the result fields
  auto addSource = [&](TSQLFromSource* source, TmvSelectItem* row, TSQLSelectItem* node) {
    TmvStatisticsOutputColumn::Data common;
    common.SelectItem = row;
    common.SelectItemNode = node;
    common.Datasource = datasourceOf(source);
    common.ObjectAlias = aliasOf(source);
    const TmvMetadataFieldsList* fields = source->FieldsList();
    auto* from = TmvCast<TSQLFromObject>(source);
    if (TmvMetadataObject* object = from ? from->GetMetadataObject() : nullptr) {
      common.MetadataObject = object;
      common.ObjectName = object->FullNameStr();
      fields = object->GetFields();
    }
    const WideString& prefix = !common.ObjectAlias.empty() ? common.ObjectAlias : common.ObjectName;
    for (int k = 0; k < fields->Count(); ++k, ++next) {
      TmvMetadataField* field = fields->Items(k);
      TmvStatisticsOutputColumn::Data data = common;
      data.Field = field;
      data.ColumnName = Print(field->Name(), bare);
      data.Expression = prefix.empty() ? field->NameStr() : prefix + u"." + field->NameStr();
      if (next < resultFields->Count()) data.ResultFieldName = resultFields->Items(next)->NameStrNotQuoted();
      AddItem(TmvCreate<TmvStatisticsOutputColumn>(host, std::move(data)));
    }
  };

  for (int i = 0; i < items->GetCount(); ++i) {
    TmvSelectItem* row = rows.empty() ? nullptr : rows[size_t(i)];
    TastNode* entry = items->GetItems(i);
    if (auto* item = TmvCast<TSQLSelectItemExpression>(entry)) {
      TmvStatisticsOutputColumn::Data data;
      data.SelectItem = row;
      data.SelectItemNode = item;
      data.Expression = Print(item->Expression.get(), builder);
      if (item->Alias && item->Alias->Name) data.Alias = Print(item->Alias->Name.get(), bare);
      const auto* expression = TmvCast<TSQLExpressionColumn>(ExpressionRemoveBrackets(item->Expression.get()));
      if (const TSQLObjectColumn* column = expression ? expression->Column.get() : nullptr;
          column && column->GetCount() > 0) {
        data.ColumnName = Print(column->Token(0), bare);
        if (TSQLFromSource* source = column->FromSource) {
          data.Datasource = datasourceOf(source);
          data.ObjectAlias = aliasOf(source);
          data.MetadataObject = source->GetMetadataObject();
          if (data.MetadataObject) data.ObjectName = data.MetadataObject->FullNameStr();
          data.Field = column->GetMetadataField();
          if (!data.Field) {
            const int found = source->FieldsList()->FindFieldByName(column->Token(0));
            if (found >= 0) data.Field = source->FieldsList()->Items(found);
          }
        }
      }
      if (next < resultFields->Count()) {
        const TmvMetadataField* result = resultFields->Items(next);
        data.ResultFieldName = result->NameStrNotQuoted();
        data.ResultFieldType = result->FieldType();
        data.ResultFieldTypeName = result->FieldTypeName();
      }
      ++next;
      if (data.ColumnName.empty()) data.ColumnName = data.Alias;
      AddItem(TmvCreate<TmvStatisticsOutputColumn>(host, std::move(data)));
    } else if (auto* table = TmvCast<TSQLSelectItemAllTableColumns>(entry)) {
      if (table->Object && table->Object->FromSource) addSource(table->Object->FromSource, row, table);
    } else if (auto* all = TmvCast<TSQLSelectItemAllColumns>(entry)) {
      for (TSQLFromSource* source : sources) addSource(source, row, all);
    }
  }
  SetStatisticsValid();
}

// --- TmvQueryStatistics ---

TmvQueryStatistics::TmvQueryStatistics(TmvQueryModelHost* host)
    : TmvStatisticsBase(host),
      usedDatabaseObjects_(TmvCreate<TmvStatisticsDatabaseObjectsList>(host)),
      usedColumns_(TmvCreate<TmvStatisticsColumnsList>(host)),
      outputColumns_(TmvCreate<TmvStatisticsOutputColumnsList>(host)) {}

TmvQueryStatistics::~TmvQueryStatistics() = default;

void TmvQueryStatistics::ReloadStatistics(TSQLSelectStatement* statement) {
  usedDatabaseObjects_->ReloadStatistics(statement);
  usedColumns_->ReloadStatistics(statement);
  outputColumns_->ReloadStatistics(statement);
  statement_ = statement;
  SetStatisticsValid();
}

void TmvQueryStatistics::SetStatisticsInvalidInternal() {
  statement_ = nullptr;
  usedDatabaseObjects_->SetStatisticsInvalid();
  usedColumns_->SetStatisticsInvalid();
  outputColumns_->SetStatisticsInvalid();
}

}  // namespace mv
