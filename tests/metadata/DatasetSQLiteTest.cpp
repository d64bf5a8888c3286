// The SQLite adapter beyond the common contract: catalog reads, declared
// types, parameters in awkward places, files and modes, cancel, and the
// Chinook sample database of the shared corpus.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "Corpus.h"
#include "RunTool.h"
#include "Thrown.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "metadata/dataset/SQLiteTypes.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

std::vector<WideString> Column(TmvDataSet& query, WideStringView field) {
  std::vector<WideString> values;
  for (query.First(); !query.Eof(); query.Next()) values.push_back(query.FieldByName(field).AsWideString());
  return values;
}

class DatasetSQLiteTest : public ::testing::Test {
 protected:
  std::unique_ptr<TmvSQLiteConnection> db_ = TmvSQLiteConnection::CreateInMemory();
};

TEST_F(DatasetSQLiteTest, ReadsTheCatalogTable) {
  db_->ExecSQL(u"create table a (id integer primary key); create view v as select id from a; create index ia on a(id)");
  auto query = db_->OpenQuery(u"select * from sqlite_master order by name");
  // The catalog calls its columns `name`, `type`; loaders ask in capitals.
  EXPECT_EQ(query->FieldByName(u"NAME").FieldName(), u"name");
  EXPECT_EQ(query->FieldByName(u"TYPE").FieldName(), u"type");
  ASSERT_NE(query->FindField(u"tbl_name"), nullptr);
  ASSERT_NE(query->FindField(u"rootpage"), nullptr);
  EXPECT_EQ(Column(*query, u"NAME"), (std::vector<WideString>{u"a", u"ia", u"v"}));
  EXPECT_EQ(Column(*query, u"type"), (std::vector<WideString>{u"table", u"index", u"view"}));
}

TEST_F(DatasetSQLiteTest, DeclaredTypesBecomeFieldTypes) {
  db_->ExecSQL(
      u"create table t (k integer primary key autoincrement, small smallint, big bigint, flag boolean, "
      u"price decimal(12, 4), money money, born date, at time, stamp timestamp, code char(3) not null, "
      u"title nvarchar(160), body clob, picture blob, raw varbinary(16), g uuid, other whatever, bare)");
  auto query = db_->CreateQuery(u"select * from t");
  query->UpdateFieldDefs();
  const TmvFieldDefs& defs = query->FieldDefs();
  struct TExpected {
    const char16_t* Name;
    TFieldType Type;
    int Size;
  };
  const TExpected expected[] = {
      {u"k", ftAutoInc, 0},      {u"small", ftSmallint, 0},   {u"big", ftLargeint, 0},  {u"flag", ftBoolean, 0},
      {u"price", ftBCD, 0},      {u"money", ftCurrency, 0},   {u"born", ftDate, 0},     {u"at", ftTime, 0},
      {u"stamp", ftDateTime, 0}, {u"code", ftFixedChar, 3},   {u"title", ftWideString, 160},
      {u"body", ftMemo, 0},      {u"picture", ftBlob, 0},     {u"raw", ftVarBytes, 16}, {u"g", ftGuid, 0},
      {u"other", ftUnknown, 0},  {u"bare", ftUnknown, 0},
  };
  ASSERT_EQ(defs.Count(), static_cast<int>(std::size(expected)));
  for (const TExpected& e : expected) {
    const TmvFieldDef* def = defs.Find(e.Name);
    ASSERT_NE(def, nullptr) << UTF8Encode(e.Name);
    EXPECT_EQ(def->DataType, e.Type) << UTF8Encode(e.Name);
    EXPECT_EQ(def->Size, e.Size) << UTF8Encode(e.Name);
    EXPECT_FALSE(def->ReadOnly()) << UTF8Encode(e.Name);
  }
  EXPECT_EQ(defs.Find(u"price")->Precision, 12);
  EXPECT_EQ(defs.Find(u"price")->Scale, 4);
  EXPECT_EQ(defs.Find(u"title")->TypeName, u"nvarchar(160)");
  EXPECT_TRUE(defs.Find(u"code")->Required());
  EXPECT_FALSE(defs.Find(u"title")->Required());
}

TEST(DatasetSQLiteTypes, MapsSpellingsAndFallsBackOnAffinity) {
  struct TCase {
    const char16_t* Declared;
    TFieldType Type;
    int Size, Precision, Scale;
  };
  const TCase cases[] = {
      {u"INTEGER", ftInteger, 0, 0, 0},
      {u"  unsigned   big int ", ftLargeint, 0, 0, 0},
      {u"Character Varying(40)", ftWideString, 40, 0, 0},
      {u"NUMERIC(10,2)", ftBCD, 0, 10, 2},
      {u"numeric( 7 )", ftBCD, 0, 7, 0},
      {u"double precision", ftFloat, 0, 0, 0},
      {u"varchar", ftWideString, 0, 0, 0},
      {u"mediumint unsigned", ftLargeint, 0, 0, 0},  // contains INT
      {u"national varying character(5)", ftWideString, 5, 0, 0},  // contains CHAR, sized
      {u"longvarchar", ftMemo, 0, 0, 0},           // contains CHAR, no size
      {u"binary large blob", ftBlob, 0, 0, 0},
      {u"float64", ftFloat, 0, 0, 0},
      {u"floating point", ftLargeint, 0, 0, 0},  // SQLite's rule: POINT contains INT
      {u"datetime2", ftUnknown, 0, 0, 0},  // numeric affinity: no exact type
      {u"", ftUnknown, 0, 0, 0},
  };
  for (const TCase& c : cases) {
    const TmvSQLiteColumnType type = SQLiteColumnType(c.Declared);
    EXPECT_EQ(type.DataType, c.Type) << UTF8Encode(c.Declared);
    EXPECT_EQ(type.Size, c.Size) << UTF8Encode(c.Declared);
    EXPECT_EQ(type.Precision, c.Precision) << UTF8Encode(c.Declared);
    EXPECT_EQ(type.Scale, c.Scale) << UTF8Encode(c.Declared);
  }
}

TEST_F(DatasetSQLiteTest, ExpressionsTakeTheirTypeFromTheFirstRow) {
  auto query = db_->CreateQuery(u"select 1 as i, 'x' as t, 2.5 as f, x'00ff41' as b, null as n");
  query->UpdateFieldDefs();
  for (const TmvFieldDef& def : query->FieldDefs()) {
    EXPECT_EQ(def.DataType, ftUnknown) << UTF8Encode(def.Name);
    EXPECT_TRUE(def.ReadOnly()) << UTF8Encode(def.Name);
  }
  query->Open();
  EXPECT_EQ(query->FieldByName(u"i").DataType(), ftLargeint);
  EXPECT_EQ(query->FieldByName(u"t").DataType(), ftWideString);
  EXPECT_EQ(query->FieldByName(u"f").DataType(), ftFloat);
  EXPECT_EQ(query->FieldByName(u"b").DataType(), ftBlob);
  EXPECT_EQ(query->FieldByName(u"n").DataType(), ftUnknown);
  EXPECT_EQ(query->FieldByName(u"b").AsString(), std::string("\x00\xff\x41", 3));
  EXPECT_EQ(query->FieldDefs()[0].DataType, ftLargeint);
}

TEST_F(DatasetSQLiteTest, BooleanColumnsGiveBooleansAndBlobsRoundTrip) {
  db_->ExecSQL(u"create table f (flag boolean, data blob)");
  TmvParams params;
  params.CreateParam(ftBoolean, u"flag").SetAsBoolean(true);
  params.CreateParam(ftBlob, u"data").SetAsWideString(WideString(u"\u0000\u00ff\u0080", 3));
  db_->ExecSQL(u"insert into f values (:flag, :data)", &params);
  auto query = db_->OpenQuery(u"select flag, data, typeof(data) as kind from f");
  EXPECT_EQ(query->FieldByName(u"flag").AsVariant().VarType(), TmvVarType::vtBoolean);
  EXPECT_TRUE(query->FieldByName(u"flag").AsBoolean());
  EXPECT_EQ(query->FieldByName(u"data").AsString(), std::string("\x00\xff\x80", 3));
  EXPECT_EQ(query->FieldByName(u"kind").AsWideString(), u"blob");
}

TEST_F(DatasetSQLiteTest, TextWrittenWithoutParameterCheckBindsNativeMarkers) {
  auto query = db_->CreateQuery();
  query->SetParamCheck(false);
  query->SetCommandText(u"select :a as a, @b as b");
  EXPECT_EQ(query->Params().Count(), 0);
  query->Params().CreateParam(ftInteger, u"a").SetAsInteger(7);
  query->Params().CreateParam(ftWideString, u"b").SetAsWideString(u"seven");
  query->Open();
  EXPECT_EQ(query->FieldByName(u"a").AsInteger(), 7);
  EXPECT_EQ(query->FieldByName(u"b").AsWideString(), u"seven");
}

TEST_F(DatasetSQLiteTest, ExecRunsEveryStatementAndCountsChanges) {
  db_->ExecSQL(u"create table n (v integer, w text); -- setup\n");
  TmvParams params;
  params.CreateParam(ftInteger, u"v").SetAsInteger(5);
  EXPECT_EQ(db_->ExecSQL(u"insert into n values (:v, 'a'); insert into n values (:v + 1, 'b:c');", &params), 2);
  EXPECT_EQ(db_->ExecSQL(u"update n set w = 'z' where v >= :V", &params), 2);
  auto query = db_->OpenQuery(u"select sum(v) as total from n");
  EXPECT_EQ(query->FieldByName(u"total").AsInteger(), 11);
}

TEST_F(DatasetSQLiteTest, DatesAreBoundAsText) {
  TmvParams params;
  params.CreateParam(ftDateTime, u"d").SetAsDateTime(TmvDateTime{45351 + 49530.25 / 86400});
  auto query = db_->OpenQuery(u"select :d as d", &params);
  EXPECT_EQ(query->FieldByName(u"d").AsWideString(), u"2024-02-29 13:45:30.250");
}

TEST_F(DatasetSQLiteTest, ErrorsCarryTheDriverMessage) {
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { db_->OpenQuery(u"selec 1"); }).find(u"syntax error"),
            WideString::npos);
  db_->ExecSQL(u"create table u (id integer primary key)");
  db_->ExecSQL(u"insert into u values (1)");
  const WideString message =
      mvtest::ThrownMessage<EmvQueryBuilderError>([&] { db_->ExecSQL(u"insert into u values (1)"); });
  EXPECT_NE(message.find(u"UNIQUE constraint failed: u.id"), WideString::npos) << UTF8Encode(message);
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { db_->OpenQuery(u"  "); }).find(u"no statement"),
            WideString::npos);
}

TEST(DatasetSQLiteFiles, ReadOnlyAndMissingFiles) {
  mvtest::TempFile file("", ".sqlite");  // an empty file is an empty database
  {
    TmvSQLiteConnection writer(WideFromAscii(file.path()));
    writer.ExecSQL(u"create table t (v text); insert into t values ('kept')");
  }
  TmvSQLiteConnection reader(WideFromAscii(file.path()), somReadOnly);
  auto query = reader.OpenQuery(u"select v from t");
  EXPECT_EQ(query->FieldByName(u"v").AsWideString(), u"kept");
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] {
              reader.ExecSQL(u"insert into t values ('x')");
            }).find(u"readonly"),
            WideString::npos);

  const WideString missing = WideFromAscii(file.path() + ".absent");
  TmvSQLiteConnection absent(missing, somReadOnly);
  const WideString message = mvtest::ThrownMessage<EmvQueryBuilderError>([&] { absent.Open(); });
  EXPECT_NE(message.find(u"unable to open"), WideString::npos) << UTF8Encode(message);
  EXPECT_NE(message.find(missing), WideString::npos) << UTF8Encode(message);
  EXPECT_FALSE(absent.Connected());
  EXPECT_FALSE(std::filesystem::exists(file.path() + ".absent"));
}

TEST(DatasetSQLiteFiles, PrivateMemoryDatabasesAreNotShared) {
  TmvSQLiteConnection first(u":memory:");
  first.ExecSQL(u"create table t (v integer)");
  auto clone = first.CloneClosed();
  EXPECT_NE(
      mvtest::ThrownMessage<EmvQueryBuilderError>([&] { clone->OpenQuery(u"select * from t"); }).find(u"no such table"),
      WideString::npos);
  auto other = TmvSQLiteConnection::CreateInMemory();
  EXPECT_NE(other->Description(), TmvSQLiteConnection::CreateInMemory()->Description());
}

TEST_F(DatasetSQLiteTest, VersionAndDescription) {
  EXPECT_EQ(db_->ServerVersion().substr(0, 2), u"3.");
  EXPECT_EQ(db_->Description().substr(0, 8), u"SQLite: ");
  EXPECT_TRUE(db_->SupportsCancel());
  EXPECT_FALSE(db_->Cancel()) << "nothing to cancel before the connection opens";
}

TEST_F(DatasetSQLiteTest, CancelInterruptsALongQueryFromAnotherThread) {
  auto query = db_->CreateQuery(
      u"with recursive c(x) as (select 1 union all select x + 1 from c) select count(*) as n from c");
  query->UpdateFieldDefs();  // connected and prepared: the worker only runs it
  std::atomic<bool> done{false};
  WideString failure;
  std::thread worker([&] {
    try {
      query->Open();
    } catch (const EmvQueryBuilderError& e) {
      failure = e.Message();
    }
    done = true;
  });
  // An interrupt reaches only a statement already running, so repeat it.
  const auto start = std::chrono::steady_clock::now();
  while (!done && std::chrono::steady_clock::now() - start < std::chrono::seconds(20)) {
    EXPECT_TRUE(db_->Cancel());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  worker.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_NE(failure.find(u"interrupted"), WideString::npos) << UTF8Encode(failure);
  EXPECT_FALSE(query->Active());
  // The connection stays usable.
  EXPECT_EQ(db_->OpenQuery(u"select 42 as v")->FieldByName(u"v").AsInteger(), 42);
}

// --- The Chinook sample database of the shared corpus ---

std::string ChinookFile() {
  const auto files = mvtest::CorpusFiles("chinook", {".sqlite"});
  return files.empty() ? std::string() : files.front();
}

TEST(DatasetSQLiteChinook, DescribesTheColumnsOfATable) {
  MV_REQUIRE_CORPUS();
  const std::string path = ChinookFile();
  if (path.empty()) GTEST_SKIP() << "no Chinook .sqlite file in the corpus";
  TmvSQLiteConnection chinook(WideFromAscii(path), somReadOnly);

  // The tables themselves are read through the metadata provider in MetadataChinookTest.
  auto track = chinook.CreateQuery(u"select * from Track");
  track->UpdateFieldDefs();
  const TmvFieldDefs& defs = track->FieldDefs();
  ASSERT_EQ(defs.Count(), 9);
  EXPECT_EQ(defs[0].Name, u"TrackId");
  EXPECT_EQ(defs[0].DataType, ftInteger);
  EXPECT_TRUE(defs[0].Required());
  EXPECT_EQ(defs.Find(u"name")->DataType, ftWideString);
  EXPECT_EQ(defs.Find(u"name")->Size, 200);
  EXPECT_TRUE(defs.Find(u"name")->Required());
  EXPECT_EQ(defs.Find(u"Composer")->Size, 220);
  EXPECT_FALSE(defs.Find(u"Composer")->Required());
  EXPECT_EQ(defs.Find(u"UnitPrice")->DataType, ftBCD);
  EXPECT_EQ(defs.Find(u"UnitPrice")->Precision, 10);
  EXPECT_EQ(defs.Find(u"UnitPrice")->Scale, 2);

  track->SetCommandText(u"select count(*) as n, max(length(Name)) as longest from Track");
  track->Open();
  EXPECT_GT(track->FieldByName(u"n").AsInteger(), 0);
  EXPECT_LE(track->FieldByName(u"longest").AsInteger(), 200);
}

}  // namespace
