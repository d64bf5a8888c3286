// The Firebird client adapter on the throw-away test server: column types
// and values, NULLs, parameters, a failed statement and the connection after
// it, a server that is not there, a wrong password, and cancel.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <iostream>

#include "FirebirdServer.h"
#include "ScratchServer.h"
#include "Thrown.h"
#include "metadata/dataset/FirebirdConnection.h"
#include "support/DateTime.h"
#include "support/Exceptions.h"

using namespace mv;
using Clock = std::chrono::steady_clock;

namespace {

std::unique_ptr<TmvFirebirdConnection> Connect() {
  mvtest::FirebirdServer& server = mvtest::FirebirdServer::Shared();
  return std::make_unique<TmvFirebirdConnection>(UTF8Decode(server.Dsn()), UTF8Decode(server.kUser),
                                                 UTF8Decode(server.kPassword));
}

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

bool Contains(const WideString& text, WideStringView part) { return text.find(part) != WideString::npos; }

struct TypeCase {
  const char* Declaration;  // column type on the server
  const char* Literal;      // the value stored in the first row
  TFieldType DataType;
  const char16_t* TypeName;
  int Size, Precision, Scale;
  TmvVariant Expected;
};

bool Required(const TypeCase& c) { return std::string(c.Declaration).find("NOT NULL") != std::string::npos; }

TEST(FirebirdConnection, ColumnTypesValuesAndNulls) {
  MV_REQUIRE_FIREBIRD();
  const WideString nonAscii = u"Zo\u00EB \u65E5\u672C \U0001F600";
  const std::vector<TypeCase> cases = {
      {"INTEGER NOT NULL", "42", ftInteger, u"INTEGER", 0, 0, 0, TmvVariant(42)},
      {"SMALLINT", "-7", ftSmallint, u"SMALLINT", 0, 0, 0, TmvVariant(-7)},
      {"BIGINT", "9007199254740993", ftLargeint, u"BIGINT", 0, 0, 0, TmvVariant(int64_t{9007199254740993})},
      {"NUMERIC(10,2)", "1234.5", ftBCD, u"NUMERIC", 0, 18, 2, TmvVariant(1234.5)},
      {"DECIMAL(6,1)", "-0.1", ftBCD, u"DECIMAL", 0, 9, 1, TmvVariant(-0.1)},
      {"NUMERIC(3,2)", "1.25", ftBCD, u"NUMERIC", 0, 4, 2, TmvVariant(1.25)},
      {"FLOAT", "2.5", ftFloat, u"FLOAT", 0, 0, 0, TmvVariant(2.5)},
      {"DOUBLE PRECISION", "-2.25", ftFloat, u"DOUBLE PRECISION", 0, 0, 0, TmvVariant(-2.25)},
      {"VARCHAR(30) NOT NULL", "'Zo\u00EB \u65E5\u672C \U0001F600'", ftWideString, u"VARCHAR", 30, 0, 0,
       TmvVariant(nonAscii)},
      {"CHAR(3)", "'\u00E9b'", ftFixedChar, u"CHAR", 3, 0, 0, TmvVariant(u"\u00E9b ")},
      {"BLOB SUB_TYPE TEXT", "'it''s \\ ' || RPAD('', 300, 'x')", ftMemo, u"BLOB SUB_TYPE TEXT", 0, 0, 0,
       TmvVariant(u"it's \\ " + WideString(300, u'x'))},
      {"BLOB", "x'00FF41'", ftBlob, u"BLOB", 0, 0, 0, TmvVariant(WideString(u"\u0000\u00ff" u"A", 3))},
      {"VARCHAR(4) CHARACTER SET OCTETS", "x'00FF41'", ftVarBytes, u"VARCHAR", 4, 0, 0,
       TmvVariant(WideString(u"\u0000\u00ff" u"A", 3))},
      {"DATE", "'2009-01-31'", ftDate, u"DATE", 0, 0, 0, TmvVariant(EncodeDate(2009, 1, 31))},
      {"TIMESTAMP", "'2009-01-02 03:04:05.678'", ftDateTime, u"TIMESTAMP", 0, 0, 0,
       TmvVariant(ComposeDateTime(EncodeDate(2009, 1, 2), EncodeTime(3, 4, 5, 678)))},
      {"TIME", "'23:59:58'", ftTime, u"TIME", 0, 0, 0, TmvVariant(EncodeTime(23, 59, 58, 0))},
      {"BOOLEAN", "TRUE", ftBoolean, u"BOOLEAN", 0, 0, 0, TmvVariant(true)},
  };
  auto db = Connect();
  std::string create = "CREATE TABLE types (", first = "INSERT INTO types VALUES (", second = first;
  for (size_t i = 0; i < cases.size(); ++i) {
    const std::string sep = i ? ", " : "";
    create += sep + "c" + std::to_string(i) + " " + cases[i].Declaration;
    first += sep + cases[i].Literal;
    second += sep + (Required(cases[i]) ? std::string(cases[i].Literal) : "NULL");
  }
  db->ExecSQL(UTF8Decode(create + ")"));
  EXPECT_EQ(db->ExecSQL(UTF8Decode(first + ")")), 1);
  EXPECT_EQ(db->ExecSQL(UTF8Decode(second + ")")), 1);

  // Described without running.
  auto query = db->CreateQuery(u"SELECT t.*, 1 + 1 AS two FROM types t ORDER BY c1 NULLS LAST");
  query->UpdateFieldDefs();
  EXPECT_FALSE(query->Active());
  ASSERT_EQ(query->FieldDefs().Count(), static_cast<int>(cases.size()) + 1);
  EXPECT_TRUE(query->FieldDefs()[static_cast<int>(cases.size())].ReadOnly());
  query->Open();
  for (size_t i = 0; i < cases.size(); ++i) {
    const TypeCase& c = cases[i];
    const TmvFieldDef& def = query->FieldDefs()[static_cast<int>(i)];
    SCOPED_TRACE(c.Declaration);
    EXPECT_EQ(def.Name, UTF8Decode("C" + std::to_string(i)));
    EXPECT_EQ(def.DataType, c.DataType);
    EXPECT_EQ(def.TypeName, c.TypeName);
    EXPECT_EQ(def.Size, c.Size);
    EXPECT_EQ(def.Precision, c.Precision);
    EXPECT_EQ(def.Scale, c.Scale);
    EXPECT_EQ(def.Required(), Required(c));
    EXPECT_FALSE(def.ReadOnly());
    EXPECT_EQ(query->Fields()[static_cast<int>(i)].AsVariant(), c.Expected);
  }
  query->Next();
  for (size_t i = 0; i < cases.size(); ++i)
    EXPECT_EQ(query->Fields()[static_cast<int>(i)].IsNull(), !Required(cases[i])) << cases[i].Declaration;
  query->Next();
  EXPECT_TRUE(query->Eof());
}

TEST(FirebirdConnection, ParametersFailedStatementsAndTheConnectionAfter) {
  MV_REQUIRE_FIREBIRD();
  auto db = Connect();
  db->ExecSQL(u"CREATE TABLE p (id INTEGER PRIMARY KEY, name VARCHAR(40), born DATE, note BLOB SUB_TYPE TEXT)");
  TmvParams params;
  params.CreateParam(ftInteger, u"id");
  params.CreateParam(ftWideString, u"name");
  params.CreateParam(ftDate, u"born");
  params.CreateParam(ftMemo, u"note");
  const WideString longNote(40000, u'n');
  const struct {
    int Id;
    TmvVariant Name, Born, Note;
  } rows[] = {
      {1, TmvVariant(u"Ann"), TmvVariant(EncodeDate(1999, 12, 31)), TmvVariant(u"short")},
      {2, TmvVariant::Null(), TmvVariant::Null(), TmvVariant::Null()},
      {3, TmvVariant(u"\u017Elu\u0165ou\u010Dk\u00FD :x ?"), TmvVariant(u"2001-02-03"), TmvVariant(longNote)},
  };
  for (const auto& row : rows) {
    params.ParamByName(u"id").SetAsInteger(row.Id);
    params.ParamByName(u"name").SetValue(row.Name);
    params.ParamByName(u"born").SetValue(row.Born);
    params.ParamByName(u"note").SetValue(row.Note);
    EXPECT_EQ(db->ExecSQL(u"INSERT INTO p VALUES (:id, :name, :born, :note)", &params), 1);
  }
  EXPECT_EQ(db->ExecSQL(u"UPDATE p SET name = name || '!' WHERE id <> 2"), 2);

  // A name used twice is one parameter bound twice; ':x' in strings and
  // comments stays.
  auto query = db->CreateQuery(
      u"SELECT id, name, born, note, ':x '' :y' AS lit FROM p /* :z */ -- :w\n"
      u" WHERE id = :id OR (:id = 0 AND name IS NULL)");
  ASSERT_EQ(query->Params().Count(), 1);
  const std::vector<std::tuple<int, TmvVariant, TmvVariant, TmvVariant>> lookups = {
      {1, TmvVariant(u"Ann!"), TmvVariant(EncodeDate(1999, 12, 31)), TmvVariant(u"short")},
      {0, TmvVariant::Null(), TmvVariant::Null(), TmvVariant::Null()},
      {3, TmvVariant(u"\u017Elu\u0165ou\u010Dk\u00FD :x ?!"), TmvVariant(EncodeDate(2001, 2, 3)), TmvVariant(longNote)}};
  for (const auto& [id, name, born, note] : lookups) {
    query->ParamByName(u"ID").SetAsInteger(id);
    query->Open();
    ASSERT_FALSE(query->IsEmpty()) << id;
    EXPECT_EQ(query->FieldByName(u"name").AsVariant(), name) << id;
    EXPECT_EQ(query->FieldByName(u"born").AsVariant(), born) << id;
    EXPECT_EQ(query->FieldByName(u"note").AsVariant(), note) << id;
    EXPECT_EQ(query->FieldByName(u"lit").AsWideString(), u":x ' :y");
    query->First();  // again from the kept result
    EXPECT_EQ(query->FieldByName(u"id").AsInteger(), id == 0 ? 2 : id);
    query->Close();
  }
  // Other kinds of values, each converted by the server to the column's type.
  auto typed = db->CreateQuery(u"SELECT COUNT(*) AS n FROM p WHERE CAST(id AS DOUBLE PRECISION) > :f AND (:b OR name IS NULL) AND id < :s");
  typed->ParamByName(u"f").SetAsFloat(1.5);
  typed->ParamByName(u"b").SetAsBoolean(true);
  typed->ParamByName(u"s").SetAsWideString(u"10");
  typed->Open();
  EXPECT_EQ(typed->FieldByName(u"n").AsInteger(), 2);

  // A refused statement names the server and gives its reason; the
  // connection serves the next statement.
  const std::vector<std::pair<const char16_t*, const char16_t*>> failures = {
      {u"SELECT * FROM no_such_table", u"Table unknown; NO_SUCH_TABLE"},
      {u"SELEC 1 FROM rdb$database", u"Token unknown"},
      {u"INSERT INTO p (id, name) VALUES (1, 'again')", u"violation of PRIMARY or UNIQUE KEY constraint"},
      {u"SELECT 1 / 0 FROM rdb$database", u"Integer divide by zero"},
  };
  const WideString server = db->ServerText();
  EXPECT_EQ(server, UTF8Decode("Firebird server 127.0.0.1/" + std::to_string(mvtest::FirebirdServer::Shared().Port()) +
                               ", database test"));
  for (const auto& [sql, reason] : failures) {
    auto failing = db->CreateQuery(sql);
    const auto e = mvtest::Thrown<EmvQueryBuilderError>([&] { failing->Open(); });
    ASSERT_TRUE(e) << UTF8Encode(sql);
    EXPECT_TRUE(Contains(e->Message(), server)) << e->what();
    EXPECT_TRUE(Contains(e->Message(), reason)) << e->what();
    EXPECT_EQ(e->Text(), sql);
    EXPECT_EQ(db->OpenQuery(u"SELECT COUNT(*) AS n FROM p")->FieldByName(u"n").AsInteger(), 3);
  }

  EXPECT_TRUE(Contains(db->ServerVersion(), u"Firebird 3.")) << UTF8Encode(db->ServerVersion());
  std::unique_ptr<TmvConnection> clone = db->CloneClosed();
  EXPECT_FALSE(clone->Connected());
  EXPECT_EQ(clone->Description(), db->Description());
  EXPECT_EQ(clone->OpenQuery(u"SELECT COUNT(*) AS n FROM p")->FieldByName(u"n").AsInteger(), 3);
}

// Failures to connect end within seconds, naming the server and the reason;
// the error's text is the description, without the password.
TEST(FirebirdConnection, ServerDownAndWrongPasswordFailFast) {
  MV_REQUIRE_FIREBIRD();
  mvtest::FirebirdServer& server = mvtest::FirebirdServer::Shared();
  const std::string port = std::to_string(server.Port()),
                    closed = std::to_string(mvtest::FreeLoopbackPort("Firebird"));
  const struct {
    std::string Dsn, User, Password, Server, Reason;
  } cases[] = {
      {"127.0.0.1/" + closed + ":shop", "x", "y", "127.0.0.1/" + closed + ", database shop",
       "Unable to complete network request to host \"127.0.0.1\""},
      {"127.0.0.1/" + port + ":test", "TEST", "wrong one", "127.0.0.1/" + port + ", database test",
       "Your user name and password are not defined"},
      {"127.0.0.1/" + port + ":nope", "TEST", "test", "127.0.0.1/" + port + ", database nope",
       "I/O error during \"open\" operation for file \"nope\""},
      {"127.0.0.1/99999:test", "TEST", "test", "127.0.0.1/-1, database test", "the port is not a number"},
  };
  for (const auto& c : cases) {
    TmvFirebirdConnection db(UTF8Decode(c.Dsn), UTF8Decode(c.User), UTF8Decode(c.Password));
    const Clock::time_point start = Clock::now();
    const auto e = mvtest::Thrown<EmvQueryBuilderError>([&] { db.Open(); });
    const double seconds = SecondsSince(start);
    ASSERT_TRUE(e) << c.Dsn;
    EXPECT_LT(seconds, 3.0) << c.Dsn;
    EXPECT_TRUE(Contains(e->Message(), UTF8Decode("Firebird server " + c.Server))) << e->what();
    EXPECT_TRUE(Contains(e->Message(), UTF8Decode(c.Reason))) << e->what();
    EXPECT_EQ(e->Text(), db.Description());
    EXPECT_FALSE(Contains(e->Message(), u"wrong one"));
    EXPECT_FALSE(db.Connected());
    std::cout << "[ timing ] " << c.Reason << ": " << seconds << " s\n";
  }
}

TEST(FirebirdConnection, CancelEndsARunningStatement) {
  MV_REQUIRE_FIREBIRD();
  auto db = Connect();
  EXPECT_FALSE(db->Cancel()) << "nothing to cancel before connecting";
  db->Open();
  auto running = std::async(std::launch::async, [&] {
    return mvtest::ThrownMessage<EmvQueryBuilderError>([&] {
      db->OpenQuery(u"SELECT COUNT(*) AS n FROM rdb$types a, rdb$types b, rdb$types c, rdb$types d");
    });
  });
  const Clock::time_point start = Clock::now();
  // The request reaches only a statement already running: repeat it until
  // the query ends.
  while (running.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready && SecondsSince(start) < 15)
    db->Cancel();
  EXPECT_LT(SecondsSince(start), 1.5);
  const WideString message = running.get();
  EXPECT_TRUE(Contains(message, u"the statement was cancelled")) << UTF8Encode(message);
  EXPECT_EQ(db->OpenQuery(u"SELECT 7 AS n FROM rdb$database")->FieldByName(u"n").AsInteger(), 7);
}

}  // namespace
