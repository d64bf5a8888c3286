#include "metadata/dataset/SQLiteCatalog.h"

#include <map>

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "metadata/dataset/SQLiteTypes.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/FilterMacros.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"

namespace mv {

namespace {

// The tables and views of the main database, without SQLite's own
// (sqlite_...). The outer select lets the filter's conditions name the
// columns; the schema column is empty, as SQLite names have no schema.
WideString ObjectsStatement() {
  return WideString(
             u"select SCHEMA_NAME, OBJECT_NAME, OBJECT_TYPE from (\n"
             u"  select '' as SCHEMA_NAME, name as OBJECT_NAME, type as OBJECT_TYPE from main.sqlite_master\n"
             u"  where type in ('table', 'view') and name not like 'sqlite\\_%' escape '\\')\n"
             u"where (OBJECT_TYPE = 'table' and (") +
         mvQBTableFilterMacro + u"))\n   or (OBJECT_TYPE = 'view' and (" + mvQBViewFilterMacro +
         u"))\norder by OBJECT_NAME";
}

// The columns of one table or view, named by the parameter.
constexpr const char16_t* kFieldsStatement =
    u"select p.name as FIELD_NAME, p.type as FIELD_TYPE, p.\"notnull\" as NOT_NULL, p.pk as KEY_POSITION,\n"
    u"  p.dflt_value as DEFAULT_VALUE\n"
    u"from pragma_table_info(:ObjectName, 'main') p\n"
    u"order by p.cid";

// Every foreign key of the main database, one row per pair of fields. A key
// that names the referenced table in another case gets the table's own
// spelling, and one that names no referenced columns refers to its primary key.
constexpr const char16_t* kRelationsStatement =
    u"select coalesce((select t.name from main.sqlite_master t\n"
    u"                 where t.type = 'table' and t.name = f.\"table\" collate nocase), f.\"table\") as PRIMARY_NAME,\n"
    u"  m.name as CHILD_NAME,\n"
    u"  coalesce(f.\"to\", (select k.name from pragma_table_info(f.\"table\", 'main') k where k.pk = f.seq + 1))\n"
    u"    as PRIMARY_FIELD,\n"
    u"  f.\"from\" as CHILD_FIELD, f.id as RELATION_ID, f.seq as KEY_SEQUENCE\n"
    u"from main.sqlite_master m join pragma_foreign_key_list(m.name, 'main') f\n"
    u"where m.type = 'table' and m.name not like 'sqlite\\_%' escape '\\'\n"
    u"order by m.name, f.id, f.seq";

// The fields of one object. Size, precision and scale come from the declared
// type as the dataset layer reads it ("NUMERIC(10,2)" has a precision and a
// scale, "NVARCHAR(200)" a size), and so does the generic type, which the
// walk keeps by field name for the caller.
class TSQLiteFieldsFetcher final : public TmvMetadataFieldsFetcherFromQuery {
 public:
  TSQLiteFieldsFetcher(TmvBaseSQLContext* context, TmvConnection* connection)
      : TmvMetadataFieldsFetcherFromQuery(context, connection) {
    SQL = kFieldsStatement;
    NameFieldName = u"FIELD_NAME";
    TypeFieldName = u"FIELD_TYPE";
    NullableFieldName = u"NOT_NULL";
    NullableFalseValue = 1;
    PrimaryFieldName = u"KEY_POSITION";
    PrimaryFalseValue = 0;
    DefaultValueFieldName = u"DEFAULT_VALUE";
  }

  void Load(TmvMetadataObject* object) {
    Params().Clear();
    Params().CreateParam(ftWideString, u"ObjectName").SetAsWideString(object->NameStrNotQuoted());
    types_.clear();
    TmvMetadataFieldsList* fields = object->GetFields();
    TmvUpdateBatch batch(*fields);
    LoadFields(fields);
    for (int i = 0; i < fields->Count(); ++i) {
      TmvMetadataField* field = fields->Items(i);
      if (auto type = types_.find(field->NameStrNotQuoted()); type != types_.end())
        field->SetFieldType(type->second);
    }
    // Read whole, even when the object has no columns: nothing is fetched later.
    fields->SetLoaded(true);
  }

 protected:
  WideString CalcTypeOnServer() override {
    const WideString declared = TmvMetadataFieldsFetcherFromQuery::CalcTypeOnServer();
    current_ = SQLiteColumnType(declared);
    types_[TrimName(RequireCatalogColumn(Dataset(), NameFieldName).AsWideString())] = current_.DataType;
    return declared;
  }
  bool CanCalcSize() override { return true; }
  int CalcSize() override { return current_.Size; }
  bool CanCalcPrecision() override { return true; }
  int CalcPrecision() override { return current_.Precision; }
  bool CanCalcScale() override { return true; }
  int CalcScale() override { return current_.Scale; }

 private:
  TmvSQLiteColumnType current_;
  std::map<WideString, TFieldType> types_;
};

}  // namespace

void LoadSQLiteCatalog(TmvBaseSQLContext* context, TmvMetadataContainer* container, const TmvMetadataFilter* filter) {
  if (!container) return;
  if (!context || !context->SyntaxProvider()) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
  TmvBaseMetadataProvider* provider = context->MetadataProvider();
  if (!provider) throw EmvQueryBuilderError(MetadataMessage(mvQBNoMetadataProvider));
  TmvConnection* connection = provider->Connection();
  if (!connection) throw EmvQueryBuilderError(MetadataMessageFormat(mvQBNoConnectionObject, {u"Connection"}));
  if (!dynamic_cast<TmvSQLiteConnection*>(connection))
    throw EmvQueryBuilderError(connection->Description(),
                               WideFormat(kNotSQLiteConnectionText, {connection->Description()}));

  TmvUpdateBatch batch(*container);
  container->SetLoaded(true);
  const int firstNew = container->Count();
  // The objects fetcher would load the fields of a container that works
  // offline through the dialect's own road; this reader loads them itself
  // right after, and the container works offline again when it is done.
  const bool workOffline = container->WorkOffline();
  container->SetWorkOffline(false);
  struct TOfflineRestore {
    TmvMetadataContainer* container;
    bool value;
    ~TOfflineRestore() { container->SetWorkOffline(value); }
  } offlineRestore{container, workOffline};

  TmvMetadataObjectFetcherFromQuery objects(context, connection);
  objects.SQL = ObjectsStatement();
  objects.SchemaFieldName = u"SCHEMA_NAME";
  objects.NameFieldName = u"OBJECT_NAME";
  objects.TypeFieldName = u"OBJECT_TYPE";
  objects.UserTableTypeValue = u"table";
  objects.UserViewTypeValue = u"view";
  objects.LoadMetadata(container, filter, nullptr);

  TSQLiteFieldsFetcher fields(context, connection);
  for (int i = firstNew; i < container->Count() && !container->IsAborted(); ++i)
    fields.Load(container->Items(i));

  TmvMetadataRelationsFetcherFromQuery relations(context, connection);
  relations.SQL = kRelationsStatement;
  relations.PrimaryNameFieldName = u"PRIMARY_NAME";
  relations.ChildNameFieldName = u"CHILD_NAME";
  relations.PrimaryFieldFieldName = u"PRIMARY_FIELD";
  relations.ChildFieldFieldName = u"CHILD_FIELD";
  relations.RelationIdFieldName = u"RELATION_ID";
  relations.KeySequenceFieldName = u"KEY_SEQUENCE";
  relations.LoadMetadata(container, filter, nullptr);
}

}  // namespace mv
