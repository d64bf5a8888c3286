// The metadata fetchers over in-memory datasets and a scripted connection:
// objects (classes and system flags from type values, trimming, filter,
// filter macros in the statement sent, string lists), fields (type text,
// sizes, flags from values), relations (grouping by key sequence, relation id
// and separated lists, inverted relations, keys of absent objects,
// duplicates), and databases and schemas.
#include <gtest/gtest.h>

#include "MetadataTestSupport.h"
#include "Thrown.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/FilterMacros.h"
#include "metadata/fetchers/NamesFetchers.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/TextHelpers.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;
using namespace mv::test;

namespace {

using TRow = std::vector<TmvVariant>;

// Columns of text, except those named in `integers`.
TmvMemoryTable Rows(std::initializer_list<const char16_t*> columns, std::vector<TRow> rows,
                    std::initializer_list<const char16_t*> integers = {}) {
  TmvMemoryTable table;
  for (const char16_t* column : columns) {
    bool integer = false;
    for (const char16_t* name : integers) integer = integer || WideString(name) == column;
    table.AddColumn(column, integer ? ftInteger : ftWideString, integer ? 0 : 100);
  }
  for (TRow& row : rows) table.AddRow(std::move(row));
  return table;
}

// A provider that cannot run SQL.
class TNoSQLProvider : public TmvConnectionMetadataProvider {
 public:
  bool GetCanExecSQL() const override { return false; }
};

// Counts EndIterations, which must run also when the walk ends at once.
template <class Fetcher>
class TCountingFetcher : public Fetcher {
 public:
  using Fetcher::Fetcher;
  int ends = 0;

 protected:
  void EndIterations() override {
    ++ends;
    Fetcher::EndIterations();
  }
};

class FetchersTest : public MetadataTest {
 protected:
  FetchersTest() {
    provider.databases = false;
    metadata.SetConnection(&server);
    context.SetMetadataProvider(&metadata);
  }
  ~FetchersTest() override { context.SetMetadataProvider(nullptr); }

  // "schema.name" of each object, with its class and a "!" for a system one.
  std::vector<std::string> Objects() const {
    std::vector<std::string> result;
    for (int i = 0; i < container->Count(); ++i) {
      TmvMetadataObject* object = container->Items(i);
      result.push_back(std::string(object->ClassName()) + " " + UTF8Encode(object->SchemedNameStrNotQuoted()) +
                       (object->System() ? "!" : ""));
    }
    return result;
  }

  // Each relation as "holder -> child [key fields] [child fields]", "fk" when flagged.
  std::vector<std::string> Relations() const {
    const auto fields = [](const TmvMetadataQualifiedNamesList* list) {
      std::string text;
      for (int i = 0; i < list->Count(); ++i)
        text += (i ? "," : "") + UTF8Encode(list->Items(i)->GetQualifiedNameWithoutQuotes());
      return text;
    };
    std::vector<std::string> result;
    for (int i = 0; i < container->Count(); ++i) {
      TmvMetadataObject* object = container->Items(i);
      TmvMetadataRelationsList* relations = object->GetRelations();
      for (int r = 0; r < relations->Count(); ++r) {
        TmvMetadataRelation* relation = relations->Items(r);
        result.push_back(UTF8Encode(object->NameStrNotQuoted()) + " -> " +
                         UTF8Encode(relation->ChildTableStrNotQuoted()) + " [" + fields(relation->KeyFields()) +
                         "] [" + fields(relation->ChildFields()) + "]" + (relation->ForeignKey() ? " fk" : ""));
      }
    }
    return result;
  }

  TmvMemoryConnection server;
  TmvConnectionMetadataProvider metadata;
};

// --- Objects ---

const TmvMemoryTable kObjectRows = Rows({u"SCH", u"NAM", u"TYP", u"SYS", u"USR"},
                                        {
                                            {u"dbo", u"T1", u"BASE TABLE", {}, {}},
                                            {u"sys", u"X", u"SYSTEM TABLE", {}, {}},
                                            {u"dbo", u"V", u"VIEW", {}, {}},
                                            {u"dbo", u"P", u"PROC", {}, {}},
                                            {u"dbo", u"F", u"FUNC", {}, {}},
                                            {u"dbo", u"Odd", u"SEQUENCE", {}, {}},
                                            {u"dbo", u"NoType", {}, {}, {}},
                                            {u"app", u"Mine", u"SYSTEM TABLE", {}, u"Y"},
                                            {u"app", u"Theirs", u"BASE TABLE", {}, u"N"},
                                            {u"app", u"Flagged", u"BASE TABLE", int64_t(1), {}},
                                            {u"app", u"Unflagged", u"SYSTEM TABLE", int64_t(0), {}},
                                            {u"app", u"", u"BASE TABLE", {}, {}},
                                        },
                                        {u"SYS"});

void UseObjectColumns(TmvMetadataObjectFetcherFromDataset& fetcher) {
  fetcher.SchemaFieldName = u"SCH";
  fetcher.NameFieldName = u"NAM";
  fetcher.TypeFieldName = u"TYP";
  fetcher.SystemFieldName = u"SYS";
  fetcher.UserFieldName = u"USR";
  fetcher.UserTableTypeValue = u"BASE TABLE";
  fetcher.SystemTableTypeValue = u"SYSTEM TABLE";
  fetcher.UserViewTypeValue = u"VIEW";
  fetcher.UserProcedureTypeValue = TmvVariantArray{u"PROC", u"FUNC"};
  fetcher.SystemFlagValue = 1;
  fetcher.UserFlagValue = u"Y";
}

TEST_F(FetchersTest, ObjectClassesAndSystemFlagsComeFromTheTypeSystemAndUserValues) {
  struct {
    const TmvMetadataClass* defaultClass;
    std::vector<std::string> expected;
  } cases[] = {
      // A type that matches no setting (or none at all) adds nothing without
      // a default class. The user value wins over the type: "Mine" is a
      // SYSTEM TABLE whose user value is the user flag.
      {nullptr,
       {"TmvMetadataTable dbo.T1", "TmvMetadataTable sys.X!", "TmvMetadataView dbo.V", "TmvMetadataProcedure dbo.P",
        "TmvMetadataProcedure dbo.F", "TmvMetadataTable app.Mine", "TmvMetadataTable app.Theirs!",
        "TmvMetadataTable app.Flagged!", "TmvMetadataTable app.Unflagged"}},
      // With a default class those rows become objects of it.
      {&TmvMetadataView::StaticClass(),
       {"TmvMetadataTable dbo.T1", "TmvMetadataTable sys.X!", "TmvMetadataView dbo.V", "TmvMetadataProcedure dbo.P",
        "TmvMetadataProcedure dbo.F", "TmvMetadataView dbo.Odd", "TmvMetadataView dbo.NoType",
        "TmvMetadataTable app.Mine", "TmvMetadataTable app.Theirs!", "TmvMetadataTable app.Flagged!",
        "TmvMetadataTable app.Unflagged"}},
  };
  for (const auto& test : cases) {
    container->Clear();
    TmvMemoryDataSet rows(kObjectRows);
    TmvMetadataObjectFetcherFromDataset fetcher(&context, nullptr);
    UseObjectColumns(fetcher);
    fetcher.SetDefaultObjectClass(test.defaultClass);
    fetcher.SetDataset(&rows);
    fetcher.LoadMetadata(container.get(), nullptr, nullptr);
    EXPECT_EQ(Objects(), test.expected);
  }
  // Names carry the dialect's case flag (case-sensitive here).
  EXPECT_TRUE(container->FindTableByName(Id(u"T1", true).get(), Id(u"dbo", true).get()));
  EXPECT_FALSE(container->FindTableByName(Id(u"T1").get(), Id(u"dbo").get()));
}

TEST_F(FetchersTest, SystemSchemasTheFilterAndTrimming) {
  const TmvMemoryTable rows = Rows({u"SCH", u"NAM", u"TYP"}, {
                                                                 {u" sys ", u"Objects  ", u"BASE TABLE"},
                                                                 {u"dbo", u"\"Orders\"", u"BASE TABLE"},
                                                                 {u"dbo", u"Temp1", u"BASE TABLE"},
                                                             });
  TmvOwned<TSQLIdentifiersCollection> systemSchemas = TastCreate<TSQLIdentifiersCollection>(&context);
  systemSchemas->AddIdentifier(u"sys")->Quoted = true;
  TmvMetadataFilter filter;
  TmvMetadataFilterItem* exclude = filter.Add();
  exclude->SetObjectMask(u"Temp%");
  exclude->SetExclude(true);

  struct {
    bool trim;
    std::vector<std::string> expected;
  } cases[] = {
      {false, {"TmvMetadataTable  sys .Objects  ", "TmvMetadataTable dbo.\"Orders\""}},
      {true, {"TmvMetadataTable sys.Objects!", "TmvMetadataTable dbo.Orders"}},
  };
  for (const auto& test : cases) {
    container->Clear();
    TmvMemoryDataSet dataset(rows);
    TmvMetadataObjectFetcherFromDataset fetcher(&context, nullptr);
    fetcher.SchemaFieldName = u"SCH";
    fetcher.NameFieldName = u"NAM";
    fetcher.TypeFieldName = u"TYP";
    fetcher.UserTableTypeValue = u"BASE TABLE";
    fetcher.SetSystemSchemaNames(systemSchemas.get());
    fetcher.SetTrimSpaces(test.trim);
    fetcher.SetTrimQuotes(test.trim);
    fetcher.SetDataset(&dataset);
    fetcher.LoadMetadata(container.get(), &filter, nullptr);
    EXPECT_EQ(Objects(), test.expected) << "trim " << test.trim;
  }
}

TEST_F(FetchersTest, FilterMacrosBecomeConditionsOrTrue) {
  TmvMetadataFilter filter;
  TmvMetadataFilterItem* item = filter.Add();
  item->SetObjectMask(u"Ord%");
  item->SetApplyFor(MetadataFilterKindBit(mfTables));
  const WideString condition = filter.CreatePrefilterCondition(&context, u"SCH", u"NAM", mfTables);
  ASSERT_FALSE(condition.empty());
  const WideString table = mvQBTableFilterMacro;
  const WideString view = mvQBViewFilterMacro;

  struct {
    WideString sql;
    const TmvMetadataFilter* filter;
    WideString sent;
  } cases[] = {
      {u"select SCH, NAM from tables", &filter, u"select SCH, NAM from tables"},
      {u"select SCH, NAM from t where " + table, nullptr, u"select SCH, NAM from t where (0=0)"},
      {u"select SCH, NAM from t where " + table + u" or " + table, &filter,
       u"select SCH, NAM from t where " + condition + u" or " + condition},
      // The item names tables only: the views' condition is empty.
      {u"select SCH, NAM from v where " + view, &filter, u"select SCH, NAM from v where (0=0)"},
  };
  for (const auto& test : cases) {
    server.ClearReceived();
    server.AddResult(test.sent, Rows({u"SCH", u"NAM"}, {{u"dbo", u"Orders"}}));
    TmvMetadataObjectFetcherFromQuery fetcher(&context, nullptr);
    fetcher.SQL = test.sql;
    fetcher.SchemaFieldName = u"SCH";
    fetcher.NameFieldName = u"NAM";
    fetcher.SetDefaultObjectClass(&TmvMetadataTable::StaticClass());
    fetcher.LoadMetadata(container.get(), test.filter, nullptr);
    ASSERT_EQ(server.Received().size(), 1u);
    EXPECT_EQ(server.Received()[0].Sql, test.sent);
    EXPECT_FALSE(fetcher.IsDatasetCreated());
  }
}

TEST_F(FetchersTest, AQueryFetcherNeedsAProviderThatRunsSQL) {
  TNoSQLProvider noSQL;
  context.SetMetadataProvider(&noSQL);
  TmvMetadataObjectFetcherFromQuery fetcher(&context, nullptr);
  fetcher.SQL = u"select 1";
  EXPECT_EQ(mvtest::ThrownMessage([&] { fetcher.CreateDataset(); }),
            u"Executing SQL queries is not supported by this metadata provider.");
  context.SetMetadataProvider(&metadata);

  // A refused statement fails in CreateDataset, before any walk.
  server.AddError(u"select bad", u"no such table");
  fetcher.SQL = u"select bad";
  EXPECT_NE(mvtest::ThrownMessage([&] { fetcher.CreateDataset(); }).find(u"no such table"), WideString::npos);
  // A dataset without the required name column raises its own error.
  server.AddResult(u"select 1 as X", Rows({u"X"}, {{u"1"}}));
  fetcher.SQL = u"select 1 as X";
  fetcher.NameFieldName = u"NAME";
  fetcher.SetDefaultObjectClass(&TmvMetadataTable::StaticClass());
  EXPECT_EQ(mvtest::ThrownMessage([&] { fetcher.LoadMetadata(container.get(), nullptr, nullptr); }),
            u"Field 'NAME' not found");
}

TEST_F(FetchersTest, AnEmptyDatasetEndsTheWalkAtOnce) {
  TmvMemoryDataSet empty(Rows({u"NAM"}, {}));
  TCountingFetcher<TmvMetadataObjectFetcherFromDataset> objects(&context, nullptr);
  objects.NameFieldName = u"NAM";
  objects.SetDefaultObjectClass(&TmvMetadataTable::StaticClass());
  objects.SetDataset(&empty);
  objects.LoadMetadata(container.get(), nullptr, nullptr);
  EXPECT_EQ(objects.ends, 1);
  EXPECT_EQ(container->Count(), 0);

  TCountingFetcher<TmvMetadataRelationsFetcherFromDataset> relations(&context, nullptr);
  relations.SetDataset(&empty);
  relations.LoadMetadata(container.get(), nullptr, nullptr);
  EXPECT_EQ(relations.ends, 1);
}

TEST_F(FetchersTest, AContainerThatWorksOfflineGetsTheFieldsAtOnce) {
  server.AddResult(u"where 0<>0", TmvMemoryTable().AddColumn(u"ID", ftInteger).AddColumn(u"NAME", ftWideString, 20),
                   TmvScriptMatch::smContains);
  TmvMemoryDataSet rows(Rows({u"NAM"}, {{u"T1"}, {u"T2"}}));
  TmvMetadataObjectFetcherFromDataset fetcher(&context, nullptr);
  fetcher.NameFieldName = u"NAM";
  fetcher.SetDefaultObjectClass(&TmvMetadataTable::StaticClass());
  fetcher.SetDataset(&rows);
  container->SetWorkOffline(true);
  fetcher.LoadMetadata(container.get(), nullptr, nullptr);
  ASSERT_EQ(container->Count(), 2);
  for (int i = 0; i < container->Count(); ++i) {
    EXPECT_TRUE(container->Items(i)->GetFields()->Loaded());
    EXPECT_EQ(container->Items(i)->GetFields()->Count(), 2);
  }
}

TEST_F(FetchersTest, SynonymTargetsFromPartsOrOneQualifiedText) {
  const TmvMemoryTable rows =
      Rows({u"NAM", u"TYP", u"FULL", u"RDB", u"RSCH", u"RNAM"}, {
                                                                   {u"S1", u"SYN", u"hr.emp", {}, {}, {}},
                                                                   {u"S2", u"SYN", {}, u"D2", u"sys", u"tab"},
                                                               });
  provider.databases = true;
  container->SetDefaultDatabaseName(Name({u"D1"}).get());
  TmvOwned<TSQLIdentifiersCollection> systemSchemas = TastCreate<TSQLIdentifiersCollection>(&context);
  systemSchemas->AddIdentifier(u"sys")->Quoted = true;
  for (bool parts : {false, true}) {
    container->Clear();
    container->SetDefaultDatabaseName(Name({u"D1"}).get());
    TmvMemoryDataSet dataset(rows);
    TmvMetadataObjectFetcherFromDataset fetcher(&context, nullptr);
    fetcher.NameFieldName = u"NAM";
    fetcher.TypeFieldName = u"TYP";
    fetcher.UserSynonymTypeValue = u"SYN";
    fetcher.SetSystemSchemaNames(systemSchemas.get());
    (parts ? fetcher.ReferencedNameFieldName : fetcher.ReferencedFullNameFieldName) = parts ? u"RNAM" : u"FULL";
    fetcher.ReferencedSchemaFieldName = u"RSCH";
    fetcher.ReferencedDatabaseFieldName = u"RDB";
    fetcher.SetDataset(&dataset);
    fetcher.LoadMetadata(container.get(), nullptr, nullptr);
    ASSERT_EQ(container->Count(), 2);
    auto* synonym = TmvCast<TmvMetadataSynonym>(container->Items(parts ? 1 : 0));
    ASSERT_NE(synonym, nullptr);
    // A target without a database is in the objects' database; one in a
    // system schema makes the synonym a system object.
    EXPECT_EQ(synonym->ReferencedFullName()->GetQualifiedNameWithoutQuotes(), parts ? u"D2.sys.tab" : u"D1.hr.emp");
    EXPECT_EQ(synonym->System(), parts);
    EXPECT_EQ(synonym->DatabaseStrNotQuoted(), u"D1");
  }
}

TEST_F(FetchersTest, StringListsCompleteEachOther) {
  struct {
    std::vector<WideString> user, system, all;
    std::vector<std::string> expected;
  } cases[] = {
      {{u"dbo.A"}, {u"sys.B"}, {u"C"},
       {"TmvMetadataTable C!", "TmvMetadataTable dbo.A", "TmvMetadataTable sys.B!"}},
      {{}, {u"sys.B"}, {u"dbo.A", u"sys.b"}, {"TmvMetadataTable dbo.A", "TmvMetadataTable sys.b!"}},
      {{u"\"Mixed\".\"Case\""}, {}, {}, {"TmvMetadataTable Mixed.Case"}},
  };
  for (const auto& test : cases) {
    container->Clear();
    TmvMetadataObjectsFetcherFromStringLists fetcher(&context, nullptr);
    fetcher.SetDefaultObjectClass(&TmvMetadataTable::StaticClass());
    fetcher.UserObjects = test.user;
    fetcher.SystemObjects = test.system;
    fetcher.AllObjects = test.all;
    fetcher.LoadMetadata(container.get(), nullptr, nullptr);
    std::vector<std::string> objects = Objects();
    std::sort(objects.begin(), objects.end());
    EXPECT_EQ(objects, test.expected);
  }
  TmvMetadataObjectsFetcherFromStringLists bad(&context, nullptr);
  bad.SetDefaultObjectClass(&TmvMetadataTable::StaticClass());
  bad.AllObjects = {u"a\"b"};
  EXPECT_EQ(mvtest::ThrownMessage([&] { bad.LoadMetadata(container.get(), nullptr, nullptr); }),
            MetadataMessage(mvQBBadObjectName));
}

// --- Fields ---

TEST_F(FetchersTest, FieldsTakeTypeSizesAndFlagsFromTheirColumns) {
  const TmvMemoryTable rows = Rows(
      {u"NAM", u"TYP", u"LEN", u"PREC", u"SCL", u"PK", u"NUL", u"RO", u"DSC"},
      {
          {u"id", u"int", {}, {}, {}, u"Y", u"NO", true, u"key"},
          {u"title", u" varchar(30) ", int64_t(30), {}, {}, u"N", u"YES", false, u"new"},
          {u"code", u"char(10)", int64_t(12), {}, {}, {}, {}, u"1", {}},
          {u"price", u"numeric(10,2)", u"", int64_t(10), int64_t(2), u"N", u"YES", u"maybe", {}},
          {u"", u"int", {}, {}, {}, {}, {}, {}, {}},
      },
      {u"LEN", u"PREC", u"SCL"});
  TmvMetadataTable* table = Table({u"T"});
  TmvMetadataFieldsList* fields = table->GetFields();
  fields->AddField(u"\"title\"")->SetShortDescription(u"kept");

  TmvMemoryDataSet dataset(rows);
  TmvMetadataFieldsFetcherFromDataset fetcher(&context, nullptr);
  fetcher.NameFieldName = u"NAM";
  fetcher.TypeFieldName = u"TYP";
  fetcher.SizeFieldName = u"LEN";
  fetcher.PrecisionFieldName = u"PREC";
  fetcher.ScaleFieldName = u"SCL";
  fetcher.PrimaryFieldName = u"PK";
  fetcher.PrimaryTrueValue = u"Y";
  fetcher.NullableFieldName = u"NUL";
  fetcher.NullableFalseValue = u"NO";
  fetcher.ReadOnlyFieldName = u"RO";
  fetcher.ShortDescriptionFieldName = u"DSC";
  fetcher.LongDescriptionFieldName = u"NO_SUCH_COLUMN";  // optional: unused
  fetcher.SetDataset(&dataset);
  fetcher.LoadFields(fields);

  struct {
    const char16_t* name;
    const char16_t* type;
    int size, precision, scale;
    bool primary, nullable, readOnly;
    const char16_t* description;
  } expected[] = {
      // A field found keeps its description.
      {u"title", u"varchar", 30, 0, 0, false, true, false, u"kept"},
      {u"id", u"int", 0, 0, 0, true, false, true, u"key"},
      // Empty values give the defaults; "1" converts to true.
      {u"code", u"char", 12, 0, 0, false, true, true, u""},
      // "maybe" is no boolean: the default.
      {u"price", u"numeric", 0, 10, 2, false, true, false, u""},
  };
  ASSERT_EQ(fields->Count(), int(std::size(expected)));
  for (int i = 0; i < fields->Count(); ++i) {
    const TmvMetadataField* field = fields->Items(i);
    const auto& want = expected[i];
    SCOPED_TRACE(UTF8Encode(want.name));
    EXPECT_EQ(field->NameStrNotQuoted(), want.name);
    EXPECT_EQ(field->FieldTypeName(), want.type);
    EXPECT_EQ(field->Size(), want.size);
    EXPECT_EQ(field->Precision(), want.precision);
    EXPECT_EQ(field->Scale(), want.scale);
    EXPECT_EQ(field->PrimaryKey(), want.primary);
    EXPECT_EQ(field->Nullable(), want.nullable);
    EXPECT_EQ(field->ReadOnly(), want.readOnly);
    EXPECT_EQ(field->ShortDescription(), want.description);
  }
}

TEST_F(FetchersTest, AFieldsQueryRunsWithACopyOfItsParams) {
  const WideString sql = u"select NAME from cols where tab = :tab";
  server.AddResult(sql, Rows({u"NAME"}, {{u"a"}, {u"b"}}));
  TmvMetadataFieldsFetcherFromQuery fetcher(&context, nullptr);
  fetcher.SQL = sql;
  fetcher.NameFieldName = u"NAME";
  TmvParams params;
  params.CreateParam(ftWideString, u"tab").SetAsWideString(u"we'ird");
  fetcher.SetParams(params);
  params.ParamByName(u"tab").SetAsWideString(u"changed");
  TmvMetadataTable* table = Table({u"T"});
  fetcher.LoadFields(table->GetFields());
  EXPECT_EQ(table->GetFields()->Count(), 2);
  ASSERT_EQ(server.Received().size(), 1u);
  EXPECT_EQ(server.Received()[0].Sql, sql);
  EXPECT_EQ(server.Received()[0].Params.ParamByName(u"tab").AsWideString(), u"we'ird");
}

// --- Relations ---

struct TRelationCase {
  const char* description;
  TmvMemoryTable rows;
  bool keySequence, relationId, inverted;
  WideString separator;
  std::vector<std::string> expected;
};

TEST_F(FetchersTest, RowsBecomeRelations) {
  const auto keys = [](std::vector<TRow> rows) {
    return Rows({u"PK_TAB", u"FK_TAB", u"PK_COL", u"FK_COL", u"SEQ", u"RID"}, std::move(rows), {u"SEQ", u"RID"});
  };
  using I = int64_t;
  // A<-B on one field, A<-B on two, a key of the absent D, A<-C, then the
  // first key again.
  const std::vector<TRow> fromOne = {
      {u"A", u"B", u"id", u"a_id", I(1), I(7)},  {u"A", u"B", u"x", u"bx", I(1), I(8)},
      {u"A", u"B", u"y", u"by", I(2), I(8)},     {u"D", u"B", u"id", u"d_id", I(1), I(9)},
      {u"D", u"B", u"id2", u"d_id2", I(2), I(9)}, {u"A", u"C", u"id", u"a_id", I(1), I(10)},
      {u"A", u"B", u"id", u"a_id", I(1), I(11)},
  };
  std::vector<TRow> fromZero = fromOne;
  for (TRow& row : fromZero) row[4] = TmvVariant(row[4].AsInt64() - 1);
  std::vector<TRow> idsOnly = fromOne;
  for (TRow& row : idsOnly) row[4] = TmvVariant();
  const std::vector<std::string> onPrimary = {"A -> B [x,y] [bx,by]", "A -> C [id] [a_id]", "A -> B [id] [a_id]"};

  const TRelationCase cases[] = {
      {"key sequence from 1", keys(fromOne), true, false, false, u"", onPrimary},
      {"key sequence from 0", keys(fromZero), true, false, false, u"", onPrimary},
      {"relation ids", keys(idsOnly), false, true, false, u"", onPrimary},
      {"both", keys(fromOne), true, true, false, u"", onPrimary},
      {"inverted",
       keys(fromOne),
       true,
       false,
       true,
       u"",
       // The key of the absent D hangs on B, which holds it.
       {"B -> A [bx,by] [x,y] fk", "B -> D [d_id,d_id2] [id,id2] fk", "B -> A [a_id] [id] fk",
        "C -> A [a_id] [id] fk"}},
      {"a missing primary field empties the key fields",
       keys({{u"A", u"B", {}, u"a_id", I(1), I(1)}, {u"A", u"C", u"id", u"a_id", I(1), I(2)}}),
       true,
       false,
       false,
       u"",
       {"A -> B [] [a_id]", "A -> C [id] [a_id]"}},
      {"separated lists",
       keys({{u"A", u"B", u"x; y", u"bx ;by", {}, {}},
             {u"D", u"B", u"id", u"d_id", {}, {}},
             {u"A", u"C", u"", u"", {}, {}},
             {u"A", u"B", u"id", u"a_id", {}, {}}}),
       false,
       false,
       false,
       u";",
       {"A -> B [x,y] [bx,by]", "A -> C [] []", "A -> B [id] [a_id]"}},
  };
  for (const TRelationCase& test : cases) {
    SCOPED_TRACE(test.description);
    container->Clear();
    for (const char16_t* name : {u"A", u"B", u"C"}) Table({name});
    container->SetLoadInvertedRelations(test.inverted);
    TmvMemoryDataSet dataset(test.rows);
    TmvMetadataRelationsFetcherFromDataset fetcher(&context, nullptr);
    fetcher.PrimaryNameFieldName = u"PK_TAB";
    fetcher.ChildNameFieldName = u"FK_TAB";
    fetcher.PrimaryFieldFieldName = u"PK_COL";
    fetcher.ChildFieldFieldName = u"FK_COL";
    if (test.keySequence) fetcher.KeySequenceFieldName = u"SEQ";
    if (test.relationId) fetcher.RelationIdFieldName = u"RID";
    fetcher.FieldListSeparator = test.separator;
    fetcher.SetDataset(&dataset);
    fetcher.LoadMetadata(container.get(), nullptr, nullptr);
    EXPECT_EQ(Relations(), test.expected);
    EXPECT_TRUE(dataset.Eof());
  }
}

TEST_F(FetchersTest, ConstantPartsNameTheSideTheRowsLeaveOut) {
  TmvMetadataTable* orders = container->AddTable(u"sales", u"Orders", false);
  container->AddTable(u"sales", u"Lines", false);
  server.AddResult(u"select * from fk", Rows({u"CHILD", u"PCOL", u"CCOL"}, {{u"Lines", u"id", u"order_id"}}));
  TmvMetadataRelationsFetcherFromQuery fetcher(&context, nullptr);
  fetcher.SQL = u"select * from fk";
  fetcher.PrimarySchema = u" sales ";
  fetcher.PrimaryName = u"Orders";
  fetcher.ChildSchema = u"sales";
  fetcher.PrimaryNameFieldName = u"NO_SUCH_COLUMN_IS_FINE_FOR_A_CONSTANT";
  fetcher.ChildNameFieldName = u"CHILD";
  fetcher.PrimaryFieldFieldName = u"PCOL";
  fetcher.ChildFieldFieldName = u"CCOL";
  // The required name column of the rows is missing: the dataset's error.
  EXPECT_EQ(mvtest::ThrownMessage([&] { fetcher.LoadMetadata(container.get(), nullptr, nullptr); }),
            u"Field 'NO_SUCH_COLUMN_IS_FINE_FOR_A_CONSTANT' not found");
  EXPECT_FALSE(fetcher.IsDatasetCreated());

  server.AddResult(u"select '' as PARENT, * from fk",
                   Rows({u"PARENT", u"CHILD", u"PCOL", u"CCOL"}, {{u"", u"LINES", u"id", u"order_id"}}));
  fetcher.SQL = u"select '' as PARENT, * from fk";
  fetcher.PrimaryNameFieldName = u"PARENT";
  fetcher.LoadMetadata(container.get(), nullptr, nullptr);
  ASSERT_EQ(orders->GetRelations()->Count(), 1);
  EXPECT_EQ(orders->GetRelations()->Items(0)->ChildTableStrNotQuoted(), u"sales.LINES");
}

// --- Databases and schemas ---

TEST_F(FetchersTest, DatabasesAndSchemasFromDatasetsAndLists) {
  const TmvMemoryTable rows = Rows({u"NAME"}, {{u"one"}, {u""}, {u"two"}, {u"one"}, {TmvVariant()}});
  {
    TmvMemoryDataSet dataset(rows);
    TmvMetadataDatabasesFetcherFromDataset fromDataset(&context, nullptr);
    fromDataset.NameFieldName = u"name";
    fromDataset.SetDataset(&dataset);
    TSQLQualifiedNamesList databases(&context, true);
    fromDataset.LoadDatabases(databases);
    TmvMetadataDatabasesFetcherFromStringList fromList(&context, nullptr);
    fromList.Names = {u"three", u"", u" four "};
    fromList.SetTrimSpaces(true);
    fromList.LoadDatabases(databases);
    std::vector<WideString> names;
    for (int i = 0; i < databases.Count(); ++i) names.push_back(databases.Items(i)->GetQualifiedNameWithoutQuotes());
    EXPECT_EQ(names, (std::vector<WideString>{u"one", u"two", u"one", u"three", u"four"}));
    EXPECT_TRUE(TmvCast<TastTokenIdentifier>(databases.Items(0)->Token(0))->Quoted);
  }
  {
    server.AddResult(u"select NAME from schemata", rows);
    TmvMetadataSchemasFetcherFromQuery fromQuery(&context, nullptr);
    fromQuery.SQL = u"select NAME from schemata";
    fromQuery.NameFieldName = u"NAME";
    TmvOwned<TSQLIdentifiersCollection> schemas = TastCreate<TSQLIdentifiersCollection>(&context);
    fromQuery.LoadSchemas(*schemas);
    TmvMetadataSchemasFetcherFromStringList fromList(&context, nullptr);
    fromList.Names = {u"two", u"three", u"ONE"};
    fromList.LoadSchemas(*schemas);
    std::vector<WideString> names;
    for (int i = 0; i < schemas->GetCount(); ++i) names.push_back(schemas->Identifier(i)->Token);
    // Case-sensitive dialect: "ONE" is another schema than "one".
    EXPECT_EQ(names, (std::vector<WideString>{u"one", u"two", u"three", u"ONE"}));
  }
}

}  // namespace
