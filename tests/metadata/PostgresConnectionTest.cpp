// The libpq adapter on the throw-away test server: column types and values,
// NULLs, parameters, a failed statement and the connection after it, a
// server that is not there, a wrong password, and cancel.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <future>
#include <iostream>
#include <sstream>
#include <thread>

#include "PostgresServer.h"
#include "Thrown.h"
#include "metadata/dataset/PostgresConnection.h"
#include "support/DateTime.h"
#include "support/Exceptions.h"

using namespace mv;
using Clock = std::chrono::steady_clock;

namespace {

std::unique_ptr<TmvPostgresConnection> Connect(const std::string& extra = {}) {
  mvtest::PostgresServer& pg = mvtest::PostgresServer::Shared();
  return std::make_unique<TmvPostgresConnection>(UTF8Decode(pg.ConnectionString() + extra));
}

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct TypeCase {
  const char* Declaration;  // column type on the server
  const char* Literal;      // the value stored in the first row
  TFieldType DataType;
  const char16_t* TypeName;
  int Size, Precision, Scale;
  TmvVariant Expected;
};

// A port on which nothing listens.
int ClosedPort() {
  const int s = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t length = sizeof address;
  getsockname(s, reinterpret_cast<sockaddr*>(&address), &length);
  close(s);
  return ntohs(address.sin_port);
}

bool Contains(const WideString& text, WideStringView part) { return text.find(part) != WideString::npos; }

bool Required(const TypeCase& c) { return std::string(c.Declaration).find("not null") != std::string::npos; }

TEST(PostgresConnection, ColumnTypesValuesAndNulls) {
  MV_REQUIRE_POSTGRES();
  const WideString nonAscii = u"Zo\u00EB \u65E5\u672C \U0001F600";
  const std::vector<TypeCase> cases = {
      {"integer not null", "42", ftInteger, u"int4", 0, 0, 0, TmvVariant(42)},
      {"smallint", "-7", ftSmallint, u"int2", 0, 0, 0, TmvVariant(-7)},
      {"bigint", "9007199254740993", ftLargeint, u"int8", 0, 0, 0, TmvVariant(int64_t{9007199254740993})},
      {"boolean", "true", ftBoolean, u"bool", 0, 0, 0, TmvVariant(true)},
      {"numeric(10,2)", "1234.5", ftBCD, u"numeric", 0, 10, 2, TmvVariant(1234.5)},
      {"double precision", "-2.25", ftFloat, u"float8", 0, 0, 0, TmvVariant(-2.25)},
      {"real", "0.5", ftFloat, u"float4", 0, 0, 0, TmvVariant(0.5)},
      {"varchar(30) not null", "'Zo\u00EB \u65E5\u672C \U0001F600'", ftWideString, u"varchar", 30, 0, 0,
       TmvVariant(nonAscii)},
      {"char(3)", "'ab'", ftFixedChar, u"bpchar", 3, 0, 0, TmvVariant(u"ab ")},
      {"text", "'it''s'", ftMemo, u"text", 0, 0, 0, TmvVariant(u"it's")},
      {"date", "'2009-01-31'", ftDate, u"date", 0, 0, 0, TmvVariant(EncodeDate(2009, 1, 31))},
      {"timestamp", "'2009-01-02 03:04:05.678'", ftDateTime, u"timestamp", 0, 0, 0,
       TmvVariant(ComposeDateTime(EncodeDate(2009, 1, 2), EncodeTime(3, 4, 5, 678)))},
      {"time", "'23:59:58'", ftTime, u"time", 0, 0, 0, TmvVariant(EncodeTime(23, 59, 58, 0))},
      {"timestamp", "'infinity'", ftDateTime, u"timestamp", 0, 0, 0, TmvVariant(u"infinity")},
      {"bytea", "'\\x00ff41'::bytea", ftBlob, u"bytea", 0, 0, 0, TmvVariant(WideString(u"\u0000\u00ff" u"A", 3))},
      {"uuid", "'a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11'", ftGuid, u"uuid", 0, 0, 0,
       TmvVariant(u"a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11")},
      {"integer[]", "'{1,2}'", ftWideString, u"_int4", 0, 0, 0, TmvVariant(u"{1,2}")},
  };
  auto db = Connect();
  std::string create = "create table types (", first = "insert into types values (", second = first;
  for (size_t i = 0; i < cases.size(); ++i) {
    const std::string sep = i ? ", " : "";
    create += sep + "c" + std::to_string(i) + " " + cases[i].Declaration;
    first += sep + cases[i].Literal;
    second += sep + (Required(cases[i]) ? std::string(cases[i].Literal) : "null");
  }
  db->ExecSQL(UTF8Decode(create + "); " + first + "); " + second + ")"));

  // Described without running.
  auto query = db->CreateQuery(u"select t.*, 1 + 1 as two from types t order by c3 nulls last");
  query->UpdateFieldDefs();
  EXPECT_FALSE(query->Active());
  ASSERT_EQ(query->FieldDefs().Count(), static_cast<int>(cases.size()) + 1);
  const TmvFieldDef& two = query->FieldDefs()[static_cast<int>(cases.size())];
  EXPECT_EQ(two.DataType, ftInteger);
  EXPECT_TRUE(two.ReadOnly());
  query->Open();
  for (size_t i = 0; i < cases.size(); ++i) {
    const TypeCase& c = cases[i];
    const TmvFieldDef& def = query->FieldDefs()[static_cast<int>(i)];
    SCOPED_TRACE(c.Declaration);
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

TEST(PostgresConnection, ParametersFailedStatementsAndTheConnectionAfter) {
  MV_REQUIRE_POSTGRES();
  auto db = Connect();
  EXPECT_EQ(db->ExecSQL(u"create table p (id integer primary key, name text, tags integer[])"), -1) << "not told";
  TmvParams params;
  params.CreateParam(ftInteger, u"id");
  params.CreateParam(ftWideString, u"name");
  for (const auto& [id, name] : std::vector<std::pair<int, TmvVariant>>{
           {1, TmvVariant(u"Ann")}, {2, TmvVariant::Null()}, {3, TmvVariant(u"\u017Elu\u0165ou\u010Dk\u00FD :x $1")}}) {
    params.ParamByName(u"id").SetAsInteger(id);
    params.ParamByName(u"name").SetValue(name);
    EXPECT_EQ(db->ExecSQL(u"insert into p values (:id, :name, array[:id, :id * 2])", &params), 1);
  }
  EXPECT_EQ(db->ExecSQL(u"update p set name = name || '!' where id <> 2"), 2);

  // A name used twice is one parameter; brackets are subscripts, ':x' text and '::' casts stay.
  auto query = db->CreateQuery(
      u"select id, name, tags[1:1]::text as first, ':x' as lit from p where id = :id or (:id = 0 and name is null)");
  ASSERT_EQ(query->Params().Count(), 1);
  const std::vector<std::pair<int, TmvVariant>> lookups = {
      {1, TmvVariant(u"Ann!")}, {0, TmvVariant::Null()}, {3, TmvVariant(u"\u017Elu\u0165ou\u010Dk\u00FD :x $1!")}};
  for (const auto& [id, name] : lookups) {
    query->ParamByName(u"ID").SetAsInteger(id);
    query->Open();
    ASSERT_FALSE(query->IsEmpty()) << id;
    EXPECT_EQ(query->FieldByName(u"name").AsVariant(), name) << id;
    EXPECT_EQ(query->FieldByName(u"lit").AsWideString(), u":x");
    query->Close();
  }
  query->ParamByName(u"id").SetAsInteger(2);
  query->Open();
  EXPECT_EQ(query->FieldByName(u"first").AsWideString(), u"{2}");
  query->First();  // again from the kept result
  EXPECT_EQ(query->FieldByName(u"id").AsInteger(), 2);

  // A refused statement names the server and gives its reason; the
  // connection serves the next statement, and the failed one after a fix.
  const std::vector<std::pair<const char16_t*, const char16_t*>> failures = {
      {u"select * from no_such_table", u"relation \"no_such_table\" does not exist"},
      {u"select 1/0", u"division by zero"},
      {u"selec 1", u"syntax error at or near \"selec\""},
      {u"insert into p values (1, 'again')", u"duplicate key value violates unique constraint"},
  };
  const WideString server = db->ServerText();
  EXPECT_TRUE(Contains(server, UTF8Decode("127.0.0.1:" + std::to_string(mvtest::PostgresServer::Shared().Port()))))
      << UTF8Encode(server);
  EXPECT_TRUE(Contains(server, u"postgres"));
  for (const auto& [sql, reason] : failures) {
    auto failing = db->CreateQuery(sql);
    const auto e = mvtest::Thrown<EmvQueryBuilderError>([&] { failing->Open(); });
    ASSERT_TRUE(e) << UTF8Encode(sql);
    EXPECT_TRUE(Contains(e->Message(), server)) << e->what();
    EXPECT_TRUE(Contains(e->Message(), reason)) << e->what();
    EXPECT_EQ(e->Text(), sql);
    EXPECT_EQ(db->OpenQuery(u"select count(*) as n from p")->FieldByName(u"n").AsInteger(), 3);
  }
  EXPECT_THROW(db->ExecSQL(u"insert into p values (9, 'x'); insert into nowhere values (1)"), EmvQueryBuilderError);
  EXPECT_EQ(db->OpenQuery(u"select count(*) as n from p")->FieldByName(u"n").AsInteger(), 3)
      << "statements of one text run as one transaction";

  EXPECT_EQ(db->Description(),
            UTF8Decode("PostgreSQL: 127.0.0.1:" + std::to_string(mvtest::PostgresServer::Shared().Port()) + "/postgres"));
  EXPECT_EQ(db->ServerVersion().substr(0, 3), u"15.");
  std::unique_ptr<TmvConnection> clone = db->CloneClosed();
  EXPECT_FALSE(clone->Connected());
  EXPECT_EQ(clone->Description(), db->Description());
  EXPECT_EQ(clone->OpenQuery(u"select count(*) as n from p")->FieldByName(u"n").AsInteger(), 3);
}

// Failures to connect end within seconds, naming the server and the reason.
TEST(PostgresConnection, ServerDownAndWrongPasswordFailFast) {
  MV_REQUIRE_POSTGRES();
  mvtest::PostgresServer& pg = mvtest::PostgresServer::Shared();
  const int closed = ClosedPort();
  TmvPostgresConnection down(UTF8Decode("host=127.0.0.1 port=" + std::to_string(closed) + " dbname=shop user=x"));
  Clock::time_point start = Clock::now();
  WideString message = mvtest::ThrownMessage<EmvQueryBuilderError>([&] { down.Open(); });
  const double downSeconds = SecondsSince(start);
  EXPECT_LT(downSeconds, 3.0);
  EXPECT_TRUE(Contains(message, UTF8Decode("127.0.0.1:" + std::to_string(closed) + ", database shop")))
      << UTF8Encode(message);
  EXPECT_TRUE(Contains(message, u"Connection refused")) << UTF8Encode(message);
  EXPECT_FALSE(down.Connected());

  // The fixture trusts every local login: a line before the others makes
  // this role give its password.
  pg.Exec("create role mv_login login password 'right one'");
  const std::string hba = pg.Folder() + "/data/pg_hba.conf";
  std::stringstream lines;
  lines << std::ifstream(hba).rdbuf();
  std::ofstream(hba) << "host all mv_login 127.0.0.1/32 scram-sha-256\n" << lines.str();
  pg.Exec("select pg_reload_conf()");
  const std::string login = "host=127.0.0.1 port=" + std::to_string(pg.Port()) + " dbname=postgres user=mv_login";
  TmvPostgresConnection wrong(UTF8Decode(login + " password=wrong"));
  for (auto end = Clock::now() + std::chrono::seconds(5); Clock::now() < end;) {  // the reload takes a moment
    try {
      wrong.Open();
      wrong.Close();
    } catch (const EmvQueryBuilderError&) {
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  start = Clock::now();
  message = mvtest::ThrownMessage<EmvQueryBuilderError>([&] { wrong.Open(); });
  const double passwordSeconds = SecondsSince(start);
  EXPECT_LT(passwordSeconds, 3.0);
  EXPECT_TRUE(Contains(message, u"password authentication failed for user \"mv_login\"")) << UTF8Encode(message);
  EXPECT_TRUE(Contains(message, wrong.ServerText())) << UTF8Encode(message);
  const auto error = mvtest::Thrown<EmvQueryBuilderError>([&] { wrong.Open(); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->Text(), wrong.Description()) << "the connection string with its password stays out";
  TmvPostgresConnection right(UTF8Decode(login + " password='right one'"));
  EXPECT_EQ(right.OpenQuery(u"select current_user as u")->FieldByName(u"u").AsWideString(), u"mv_login");
  std::cout << "[ timing ] server down: " << downSeconds << " s, wrong password: " << passwordSeconds << " s\n";
}

TEST(PostgresConnection, CancelEndsARunningStatement) {
  MV_REQUIRE_POSTGRES();
  auto db = Connect();
  EXPECT_FALSE(db->Cancel()) << "nothing to cancel before connecting";
  db->Open();
  auto sleeping = std::async(std::launch::async, [&] {
    return mvtest::ThrownMessage<EmvQueryBuilderError>([&] { db->OpenQuery(u"select pg_sleep(10)"); });
  });
  const Clock::time_point start = Clock::now();
  // The request reaches only a statement already running: repeat it until
  // the query ends.
  while (sleeping.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready &&
         SecondsSince(start) < 15)
    db->Cancel();
  EXPECT_LT(SecondsSince(start), 1.5);
  EXPECT_TRUE(Contains(sleeping.get(), u"canceling statement due to user request"));
  EXPECT_EQ(db->OpenQuery(u"select 7 as n")->FieldByName(u"n").AsInteger(), 7);
  // Freed datasets leave no prepared statements behind.
  EXPECT_EQ(db->OpenQuery(u"select count(*) as n from pg_prepared_statements")->FieldByName(u"n").AsInteger(), 1);
}

}  // namespace
