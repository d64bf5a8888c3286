// The ODBC adapter through two drivers of Debian: SQLite's on a scratch file
// (types, values and NULLs, parameters, a failed statement and the next one)
// and PostgreSQL's on the throw-away server (the same rows as libpq gives, a
// server that is not there, cancel). Tests skip where a driver is not
// installed, never under CI.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include "ChinookLoader.h"
#include "PostgresServer.h"
#include "metadata/dataset/OdbcConnection.h"
#include "support/DateTime.h"
#include "support/Exceptions.h"

using namespace mv;
using Clock = std::chrono::steady_clock;

namespace {

// Whether unixODBC knows a driver of that name.
bool HasDriver(const std::string& name) {
  for (const char* file : {"/etc/odbcinst.ini", "/usr/local/etc/odbcinst.ini"}) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
      if (line == "[" + name + "]") return true;
  }
  return false;
}

#define MV_REQUIRE_ODBC_DRIVER(name)                                                        \
  if (!HasDriver(name)) {                                                                   \
    if (mvtest::RunningInCI()) FAIL() << "the ODBC driver " << name << " is not installed"; \
    GTEST_SKIP() << "the ODBC driver " << name << " is not installed (scripts/setup.sh)";  \
  }

std::string Scratch(const char* name) {
  const auto path = std::filesystem::temp_directory_path() / (std::string("mv-odbc-") + name);
  std::filesystem::remove(path);
  return path.string();
}

// The rows of a query as text, NULL as "NULL".
std::vector<std::string> Rows(TmvConnection& connection, const WideString& sql) {
  std::vector<std::string> rows;
  auto query = connection.OpenQuery(sql);
  for (; !query->Eof(); query->Next()) {
    std::string row;
    for (int i = 0; i < query->FieldCount(); ++i) {
      const TmvField& field = query->Fields()[i];
      row += (i ? "|" : "") + (field.IsNull() ? std::string("NULL") : UTF8Encode(field.AsWideString()));
    }
    rows.push_back(row);
  }
  return rows;
}

}  // namespace

TEST(OdbcConnection, TypesParametersAndFailuresThroughTheSQLiteDriver) {
  MV_REQUIRE_ODBC_DRIVER("SQLite3");
  const std::string path = Scratch("types.db");
  TmvOdbcConnection odbc(UTF8Decode("DRIVER=SQLite3;Database=" + path));
  odbc.ExecSQL(u"create table t (i integer not null, r real, s varchar(20), b blob, d timestamp)");
  auto insert = odbc.CreateQuery(u"insert into t values (:i, :r, :s, :b, :d)");
  insert->ParamByName(u"i").SetValue(TmvVariant(int64_t(42)));
  insert->ParamByName(u"r").SetValue(TmvVariant(2.5));
  insert->ParamByName(u"s").SetValue(TmvVariant(u"Grüße \"quoted\""));
  insert->ParamByName(u"b").SetValue(TmvVariant::Null());
  insert->ParamByName(u"d").SetValue(TmvVariant::Null());
  EXPECT_EQ(insert->ExecSQL(), 1);
  odbc.ExecSQL(u"insert into t values (7, null, null, x'00ff', '2024-02-29 13:45:10')");

  auto query = odbc.CreateQuery(u"select i, r, s, b, d from t order by i desc");
  query->UpdateFieldDefs();
  struct Column {
    const char16_t* name;
    TFieldType type;
  };
  const Column columns[] = {
      {u"i", ftInteger}, {u"r", ftFloat}, {u"s", ftWideString}, {u"b", ftUnknown}, {u"d", ftDateTime}};
  ASSERT_EQ(query->FieldDefs().Count(), 5);
  for (int c = 0; c < 5; ++c) {
    EXPECT_EQ(query->FieldDefs()[c].Name, columns[c].name);
    if (columns[c].type != ftUnknown) {
      EXPECT_EQ(query->FieldDefs()[c].DataType, columns[c].type) << c;
    }
  }
  query->Open();
  EXPECT_EQ(query->FieldByName(u"i").AsWideString(), u"42");
  EXPECT_DOUBLE_EQ(query->FieldByName(u"r").AsFloat(), 2.5);
  EXPECT_EQ(query->FieldByName(u"s").AsWideString(), u"Grüße \"quoted\"");
  EXPECT_TRUE(query->FieldByName(u"b").IsNull());
  EXPECT_TRUE(query->FieldByName(u"d").IsNull());
  query->Next();
  EXPECT_TRUE(query->FieldByName(u"r").IsNull());
  TmvDateTime day, time;
  ASSERT_TRUE(TryEncodeDate(2024, 2, 29, day) && TryEncodeTime(13, 45, 10, 0, time));
  EXPECT_DOUBLE_EQ(query->FieldByName(u"d").AsVariant().AsDateTime().value, day.value + time.value);
  query->Next();
  EXPECT_TRUE(query->Eof());

  // A refused statement names the source, hides the password, and the connection goes on.
  TmvOdbcConnection secret(UTF8Decode("DRIVER=SQLite3;Database=" + path + ";PWD=hunter2"));
  try {
    secret.OpenQuery(u"select x from nowhere");
    FAIL() << "the statement ran";
  } catch (const EmvQueryBuilderError& e) {
    EXPECT_NE(e.Message().find(u"PWD=***"), WideString::npos) << UTF8Encode(e.Message());
    EXPECT_EQ(e.Message().find(u"hunter2"), WideString::npos);
    EXPECT_NE(e.Message().find(u"nowhere"), WideString::npos) << UTF8Encode(e.Message());
  }
  EXPECT_EQ(Rows(secret, u"select count(*) from t"), std::vector<std::string>{"2"});
  std::filesystem::remove(path);
}

TEST(OdbcConnection, AnUnknownDriverIsAClearError) {
  TmvOdbcConnection odbc(u"DRIVER={No Such Driver};Server=127.0.0.1");
  try {
    odbc.Open();
    FAIL() << "connected";
  } catch (const EmvQueryBuilderError& e) {
    EXPECT_EQ(e.Message().rfind(u"Cannot connect to ODBC: DRIVER={No Such Driver};Server=127.0.0.1: ", 0), 0u)
        << UTF8Encode(e.Message());
  }
}

// Chinook through PostgreSQL's ODBC driver gives the rows libpq gives; a
// closed port fails within seconds; a long statement is cancelled.
TEST(OdbcConnection, PostgresThroughItsDriver) {
  MV_REQUIRE_ODBC_DRIVER("PostgreSQL Unicode");
  MV_REQUIRE_POSTGRES_CHINOOK();
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();
  const std::string source = "DRIVER={PostgreSQL Unicode};Server=127.0.0.1;Port=" + std::to_string(pg.Port()) +
                             ";Database=postgres;Uid=postgres";
  TmvOdbcConnection odbc(UTF8Decode(source));
  const char* sql = R"(SELECT "TrackId", "Name", "Composer", "UnitPrice" FROM "Track" WHERE "AlbumId" < 4 ORDER BY 1)";
  const std::vector<std::string> rows = Rows(odbc, UTF8Decode(sql));
  std::vector<std::string> expected;
  for (const mvtest::SqlRow& row : pg.Query(sql)) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      std::string value = row[i].value_or("NULL");
      if (i == 3) value = UTF8Encode(TmvVariant(std::stod(value)).AsWideString());
      line += (i ? "|" : "") + value;
    }
    expected.push_back(line);
  }
  EXPECT_EQ(rows, expected);
  EXPECT_NE(odbc.ServerVersion().find(u"PostgreSQL"), WideString::npos);

  auto sleeper = odbc.CreateQuery(u"select pg_sleep(10)");
  auto running = std::async(std::launch::async, [&] {
    try {
      sleeper->Open();
      return false;
    } catch (const EmvQueryBuilderError&) {
      return true;
    }
  });
  const auto start = Clock::now();
  while (running.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready &&
         Clock::now() - start < std::chrono::seconds(8))
    odbc.Cancel();
  EXPECT_TRUE(running.get());
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(3));

  TmvOdbcConnection down(u"DRIVER={PostgreSQL Unicode};Server=127.0.0.1;Port=1;Database=postgres;Uid=postgres");
  const auto begin = Clock::now();
  EXPECT_THROW(down.Open(), EmvQueryBuilderError);
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(6));
}
