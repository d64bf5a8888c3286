// What every dataset adapter must do, written once and run against each
// backend: the scripted in-memory connection and SQLite. A backend sets up the
// table `people` with the same rows and answers the statements below.
#include <gtest/gtest.h>

#include "Thrown.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

constexpr const char16_t* kSelectAll = u"select id, name, note, score from people order by id";
constexpr const char16_t* kSelectById = u"select id, name from people where id = :id";
constexpr const char16_t* kSelectNone = u"select id, name from people where 1 = 0";
constexpr const char16_t* kEcho = u"select :text as echo";
constexpr const char16_t* kMissingTable = u"select * from no_such_table";

const WideString kNonAscii = u"Zo\u00EB \u65E5\u672C \U0001F600 \u017Elu\u0165ou\u010Dk\u00FD";

struct TPerson {
  int Id;
  WideString Name;
  TmvVariant Note;
  TmvVariant Score;
};

const std::vector<TPerson>& People() {
  static const std::vector<TPerson> people = {
      {1, u"Ann", TmvVariant(u"first"), TmvVariant(1.5)},
      {2, u"bob", TmvVariant::Null(), TmvVariant::Null()},
      {3, kNonAscii, TmvVariant(u""), TmvVariant(-2.25)},
  };
  return people;
}

class SQLiteBackend {
 public:
  static constexpr const char16_t* kMissingTableMessage = u"no such table: no_such_table";

  static std::unique_ptr<TmvConnection> Create() {
    std::unique_ptr<TmvConnection> connection = TmvSQLiteConnection::CreateInMemory();
    connection->ExecSQL(
        u"create table people (id integer not null primary key, name varchar(30) not null, note text, "
        u"score numeric(8,2))");
    for (const TPerson& person : People()) {
      TmvParams params;
      params.CreateParam(ftInteger, u"id").SetAsInteger(person.Id);
      params.CreateParam(ftWideString, u"name").SetAsWideString(person.Name);
      params.CreateParam(ftMemo, u"note").SetValue(person.Note);
      params.CreateParam(ftBCD, u"score").SetValue(person.Score);
      connection->ExecSQL(u"insert into people values (:id, :name, :note, :score)", &params);
    }
    return connection;
  }
};

class MemoryBackend {
 public:
  static constexpr const char16_t* kMissingTableMessage = u"No result is scripted";

  static std::unique_ptr<TmvConnection> Create() {
    auto connection = std::make_unique<TmvMemoryConnection>();
    connection->AddResult(kSelectAll, PeopleTable([](const TPerson&) { return true; }, true));
    connection->AddHandler(kSelectById, [](const TmvParams& params) {
      const TmvVariant id = params.ParamByName(u"id").Value();
      return PeopleTable([&](const TPerson& p) { return !id.IsClear() && id == TmvVariant(p.Id); }, false);
    });
    connection->AddResult(kSelectNone, PeopleTable([](const TPerson&) { return false; }, false));
    connection->AddHandler(kEcho, [](const TmvParams& params) {
      TmvMemoryTable table;
      table.AddColumn(u"echo", ftWideString, 0, faReadonly);
      const TmvVariant text = params.ParamByName(u"text").Value();
      table.AddRow({text.IsEmpty() ? TmvVariant::Null() : text});
      return table;
    });
    return connection;
  }

 private:
  template <class Filter>
  static TmvMemoryTable PeopleTable(Filter keep, bool allColumns) {
    TmvMemoryTable table;
    table.AddColumn(u"id", ftInteger, 0, faRequired).AddColumn(u"name", ftWideString, 30, faRequired);
    if (allColumns) {
      table.AddColumn(u"note", ftMemo);
      TmvFieldDef score;
      score.Name = u"score";
      score.DataType = ftBCD;
      score.Precision = 8;
      score.Scale = 2;
      table.AddColumn(score);
    }
    for (const TPerson& p : People()) {
      if (!keep(p)) continue;
      if (allColumns)
        table.AddRow({p.Id, p.Name, p.Note, p.Score});
      else
        table.AddRow({p.Id, p.Name});
    }
    return table;
  }
};

template <class Backend>
class DatasetContractTest : public ::testing::Test {
 protected:
  void SetUp() override { connection_ = Backend::Create(); }

  std::vector<int> ReadIds(TmvDataSet& query) {
    std::vector<int> ids;
    for (; !query.Eof(); query.Next()) ids.push_back(query.FieldByName(u"id").AsInteger());
    return ids;
  }

  std::unique_ptr<TmvConnection> connection_;
};

class BackendNames {
 public:
  template <class T>
  static std::string GetName(int) {
    return std::is_same_v<T, SQLiteBackend> ? "SQLite" : "Memory";
  }
};

using Backends = ::testing::Types<MemoryBackend, SQLiteBackend>;
TYPED_TEST_SUITE(DatasetContractTest, Backends, BackendNames);

TYPED_TEST(DatasetContractTest, OpensAndWalksTheRowsInOrder) {
  auto query = this->connection_->CreateQuery(kSelectAll);
  EXPECT_FALSE(query->Active());
  EXPECT_TRUE(query->Eof());
  query->Open();
  EXPECT_TRUE(query->Active());
  EXPECT_FALSE(query->IsEmpty());
  EXPECT_EQ(query->FieldCount(), 4);
  EXPECT_EQ(this->ReadIds(*query), (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(query->Eof());
  query->Next();  // past the end stays there
  EXPECT_TRUE(query->Eof());
  EXPECT_FALSE(query->IsEmpty());
  const int64_t count = query->RecordCount();
  EXPECT_TRUE(count == -1 || count == 3) << count;
  // First returns to the first row, also from the end.
  query->First();
  EXPECT_EQ(query->FieldByName(u"id").AsInteger(), 1);
  EXPECT_EQ(this->ReadIds(*query), (std::vector<int>{1, 2, 3}));
}

TYPED_TEST(DatasetContractTest, FieldsAreFoundWithoutRegardToCase) {
  auto query = this->connection_->OpenQuery(kSelectAll);
  EXPECT_EQ(query->FieldByName(u"NAME").FieldName(), u"name");
  EXPECT_EQ(query->FieldByName(u"NAME").AsWideString(), u"Ann");
  ASSERT_NE(query->FindField(u"Note"), nullptr);
  EXPECT_EQ(query->FindField(u"Note")->Index(), 2);
  EXPECT_EQ(query->Fields()[3].FieldName(), u"score");
  EXPECT_EQ(query->FindField(u"missing_column"), nullptr);
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] {
              query->FieldByName(u"missing_column");
            }).find(u"missing_column"),
            WideString::npos);
}

TYPED_TEST(DatasetContractTest, FieldDefinitionsWithoutOpening) {
  auto query = this->connection_->CreateQuery(kSelectAll);
  query->UpdateFieldDefs();
  EXPECT_FALSE(query->Active());
  const TmvFieldDefs& defs = query->FieldDefs();
  ASSERT_EQ(defs.Count(), 4);
  EXPECT_EQ(defs[0].Name, u"id");
  EXPECT_EQ(defs[0].DataType, ftInteger);
  EXPECT_TRUE(defs[0].Required());
  EXPECT_EQ(defs[1].Name, u"name");
  EXPECT_EQ(defs[1].DataType, ftWideString);
  EXPECT_EQ(defs[1].Size, 30);
  EXPECT_TRUE(defs[1].Required());
  EXPECT_FALSE(defs[1].ReadOnly());
  EXPECT_EQ(defs[2].DataType, ftMemo);
  EXPECT_FALSE(defs[2].Required());
  EXPECT_EQ(defs[3].DataType, ftBCD);
  EXPECT_EQ(defs[3].Precision, 8);
  EXPECT_EQ(defs[3].Scale, 2);
  EXPECT_EQ(defs.IndexOf(u"SCORE"), 3);
  EXPECT_EQ(defs.Find(u"nothing"), nullptr);

  // The way the metadata provider asks: clear, then update through the list.
  query->FieldDefs().Clear();
  query->FieldDefs().Update();
  EXPECT_EQ(query->FieldDefs().Count(), 4);
  EXPECT_FALSE(query->Active());
}

TYPED_TEST(DatasetContractTest, ParametersAreParsedAndBoundByName) {
  auto query = this->connection_->CreateQuery(kSelectById);
  ASSERT_EQ(query->Params().Count(), 1);
  EXPECT_EQ(query->Params()[0].Name(), u"id");
  query->ParamByName(u"ID").SetAsInteger(2);
  query->Open();
  ASSERT_FALSE(query->IsEmpty());
  EXPECT_EQ(query->FieldByName(u"name").AsWideString(), u"bob");
  query->Close();
  query->ParamByName(u"id").SetAsInteger(3);
  query->Open();
  EXPECT_EQ(query->FieldByName(u"name").AsWideString(), kNonAscii);
  query->Next();
  EXPECT_TRUE(query->Eof());
}

TYPED_TEST(DatasetContractTest, UnassignedParameterIsAnError) {
  auto query = this->connection_->CreateQuery(kSelectById);
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { query->Open(); }).find(u"No value for parameter 'id'"),
            WideString::npos);
  EXPECT_FALSE(query->Active());
  query->ParamByName(u"id").SetNull();  // Null is a value: no row matches it
  query->Open();
  EXPECT_TRUE(query->IsEmpty());
}

TYPED_TEST(DatasetContractTest, NullsReadAsEmptyValues) {
  auto query = this->connection_->OpenQuery(kSelectAll);
  query->Next();
  const TmvField& note = query->FieldByName(u"note");
  EXPECT_TRUE(note.IsNull());
  EXPECT_EQ(note.AsWideString(), u"");
  EXPECT_EQ(note.AsString(), "");
  EXPECT_EQ(note.AsInteger(), 0);
  EXPECT_FALSE(note.AsBoolean());
  EXPECT_TRUE(note.AsVariant().IsNull());
  EXPECT_TRUE(query->FieldByName(u"score").IsNull());
  EXPECT_FALSE(query->FieldByName(u"name").IsNull());
  query->Next();
  EXPECT_FALSE(note.IsNull()) << "an empty text is not NULL";
  EXPECT_EQ(note.AsWideString(), u"");
  EXPECT_DOUBLE_EQ(query->FieldByName(u"score").AsFloat(), -2.25);
}

TYPED_TEST(DatasetContractTest, ValuesConvertAndBadConversionsNameTheField) {
  auto query = this->connection_->OpenQuery(kSelectAll);
  const TmvField& id = query->FieldByName(u"id");
  EXPECT_EQ(id.AsInteger(), 1);
  EXPECT_EQ(id.AsLargeInt(), 1);
  EXPECT_EQ(id.AsWideString(), u"1");
  EXPECT_EQ(id.AsString(), "1");
  EXPECT_TRUE(id.AsVariant().IsNumeric());
  EXPECT_DOUBLE_EQ(query->FieldByName(u"score").AsFloat(), 1.5);
  EXPECT_NE(mvtest::ThrownMessage<EConvertError>([&] { query->FieldByName(u"name").AsInteger(); }).find(u"name"),
            WideString::npos);
}

TYPED_TEST(DatasetContractTest, NonAsciiTextRoundTrips) {
  auto query = this->connection_->CreateQuery(kEcho);
  query->ParamByName(u"text").SetAsWideString(kNonAscii);
  query->Open();
  const TmvField& echo = query->FieldByName(u"ECHO");
  EXPECT_EQ(echo.AsWideString(), kNonAscii);
  EXPECT_EQ(echo.AsString(), UTF8Encode(kNonAscii));
  EXPECT_EQ(echo.AsVariant(), TmvVariant(kNonAscii));
  EXPECT_TRUE(echo.ReadOnly()) << "an expression cannot be written";
}

TYPED_TEST(DatasetContractTest, EmptyResult) {
  auto query = this->connection_->OpenQuery(kSelectNone);
  EXPECT_TRUE(query->Active());
  EXPECT_TRUE(query->IsEmpty());
  EXPECT_TRUE(query->Eof());
  EXPECT_EQ(query->FieldCount(), 2);
  EXPECT_TRUE(query->FieldByName(u"name").IsNull());
  query->First();
  EXPECT_TRUE(query->Eof());
}

TYPED_TEST(DatasetContractTest, ClosingFreesTheFields) {
  auto query = this->connection_->OpenQuery(kSelectAll);
  query->Close();
  EXPECT_FALSE(query->Active());
  EXPECT_TRUE(query->Eof());
  EXPECT_TRUE(query->IsEmpty());
  EXPECT_EQ(query->FieldCount(), 0);
  EXPECT_EQ(query->FindField(u"id"), nullptr);
  EXPECT_THROW(query->Next(), EmvQueryBuilderError);
  EXPECT_THROW(query->First(), EmvQueryBuilderError);
  query->SetActive(true);  // and opens again
  EXPECT_EQ(this->ReadIds(*query), (std::vector<int>{1, 2, 3}));
}

TYPED_TEST(DatasetContractTest, FailuresCarryTheDriverMessageAndTheStatement) {
  auto query = this->connection_->CreateQuery(kMissingTable);
  const auto e = mvtest::Thrown<EmvQueryBuilderError>([&] { query->Open(); });
  ASSERT_TRUE(e);
  EXPECT_NE(e->Message().find(TypeParam::kMissingTableMessage), WideString::npos) << e->what();
  EXPECT_EQ(e->Text(), kMissingTable);
  EXPECT_FALSE(query->Active());
  EXPECT_THROW(query->UpdateFieldDefs(), EmvQueryBuilderError);
}

TYPED_TEST(DatasetContractTest, ClosingTheConnectionClosesItsDatasets) {
  auto query = this->connection_->OpenQuery(kSelectAll);
  auto prepared = this->connection_->CreateQuery(kSelectNone);
  prepared->UpdateFieldDefs();
  // A clone keeps an in-memory database alive while the original closes.
  auto keeper = this->connection_->CloneClosed();
  keeper->Open();
  this->connection_->Close();
  EXPECT_FALSE(this->connection_->Connected());
  EXPECT_FALSE(query->Active());
  query->Open();  // reconnects
  EXPECT_TRUE(this->connection_->Connected());
  EXPECT_EQ(this->ReadIds(*query), (std::vector<int>{1, 2, 3}));
  prepared->Open();
  EXPECT_TRUE(prepared->IsEmpty());
}

TYPED_TEST(DatasetContractTest, CloneIsClosedAndReachesTheSameData) {
  std::unique_ptr<TmvConnection> clone = this->connection_->CloneClosed();
  EXPECT_FALSE(clone->Connected());
  EXPECT_EQ(clone->Description(), this->connection_->Description());
  auto query = clone->OpenQuery(kSelectAll);
  EXPECT_TRUE(clone->Connected());
  EXPECT_EQ(this->ReadIds(*query), (std::vector<int>{1, 2, 3}));
}

TYPED_TEST(DatasetContractTest, NewCommandTextKeepsValuesOfParametersThatStay) {
  auto query = this->connection_->CreateQuery(kSelectById);
  query->ParamByName(u"id").SetAsInteger(2);
  query->SetCommandText(u"select name from people where id = :ID and name <> :other");
  ASSERT_EQ(query->Params().Count(), 2);
  EXPECT_EQ(query->ParamByName(u"id").Value(), TmvVariant(2));
  EXPECT_FALSE(query->ParamByName(u"other").Bound());
  query->SetCommandText(kSelectById);
  EXPECT_EQ(query->ParamByName(u"id").Value(), TmvVariant(2));
  query->Open();
  EXPECT_EQ(query->FieldByName(u"name").AsWideString(), u"bob");
}

TYPED_TEST(DatasetContractTest, DatasetsOutlivingTheirConnectionFailCleanly) {
  auto query = this->connection_->OpenQuery(kSelectAll);
  auto idle = this->connection_->CreateQuery(kSelectAll);
  this->connection_.reset();
  EXPECT_EQ(query->Connection(), nullptr);
  EXPECT_FALSE(query->Active());
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { idle->Open(); }).find(u"no connection"),
            WideString::npos);
}

}  // namespace
