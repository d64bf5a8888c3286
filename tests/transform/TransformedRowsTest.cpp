// Transformed queries run on the Chinook sample database in SQLite and, when
// a PostgreSQL server can run here, on its copy there, each in its own
// dialect: the rows of each must be the rows of the untransformed query
// filtered, sorted, totalled or paged here in C++. A sort adds its own row
// after the query's columns (its value under the name of the sorting
// expression), so only as many leading columns are compared as the expected
// rows have.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "ChinookLoader.h"
#include "MariaDbChinook.h"
#include "Corpus.h"
#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataContainer.h"
#include "sqlgen/DialectConversion.h"
#include "sqlgen/SQLBuilder.h"
#include "metadata/MetadataProvider.h"
#include "QueryRows.h"
#include "metadata/dataset/SQLiteCatalog.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/MainThread.h"
#include "support/Variant.h"
#include "transform/QueryTransformer.h"

namespace {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;
using mv::TmvQueryTransformer;

Rows RunQuery(mv::TmvConnection& connection, const mv::WideString& sql) {
  return mvtest::QueryRows(connection, sql, "%.6f");
}

double Num(const Row& row, size_t column) { return std::stod(row.at(column)); }

std::string Fixed(double value) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.6f", value);
  return buffer;
}

Rows Where(const Rows& rows, const std::function<bool(const Row&)>& keep) {
  Rows result;
  std::copy_if(rows.begin(), rows.end(), std::back_inserter(result), keep);
  return result;
}

// Rows in descending order of a numeric column, ties in their order.
Rows ByNumberDescending(Rows rows, size_t column) {
  std::stable_sort(rows.begin(), rows.end(),
                   [column](const Row& a, const Row& b) { return Num(a, column) > Num(b, column); });
  return rows;
}

// Real numbers rounded alike on both sides.
Rows Normalized(Rows rows) {
  for (Row& row : rows)
    for (std::string& value : row)
      if (value.find('.') != std::string::npos && value.find_first_not_of("-0123456789.") == std::string::npos)
        value = Fixed(std::stod(value));
  return rows;
}

struct RowsCase {
  const char* name;
  const char* sql;
  std::function<void(TmvQueryTransformer&)> transform;
  // The expected rows, made from the untransformed query's rows.
  std::function<Rows(const Rows&)> expected;
  // The column whose order must match (-1: the order is free).
  int orderedBy = -1;
  // Why a server refuses the statement the transformer is to write here;
  // such a case must stay refused (it is a known divergence).
  const char* refused = nullptr;
};

class TransformedRowsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  ~TransformedRowsTest() override { mv::MainThreadDispatcher().ProcessPending(); }
};

// The cases, each over a query of Chinook.
std::vector<RowsCase> ChinookCases() {
  auto col = [](TmvQueryTransformer& x, const char16_t* name) { return x.Columns().ColumnByOriginalName(name); };
  const std::vector<RowsCase> cases = {
      {"filter and sort on a plain column", R"(SELECT "Track"."Name", "Track"."Milliseconds" FROM "Track")",
       [col](TmvQueryTransformer& x) {
         x.Where(col(x, u"Milliseconds")->Greater(u"1000000")).OrderBy(col(x, u"Milliseconds"), false);
       },
       [](const Rows& rows) {
         return ByNumberDescending(Where(rows, [](const Row& r) { return Num(r, 1) > 1000000; }), 1);
       },
       1},
      {"two conditions are alternatives", R"(SELECT "Invoice"."InvoiceId", "Invoice"."BillingCountry", "Invoice"."Total" FROM "Invoice")",
       [col](TmvQueryTransformer& x) {
         x.Where(col(x, u"BillingCountry")->Equal(u"'Norway'")).Where(col(x, u"Total")->GreaterEqual(u"20"));
       },
       [](const Rows& rows) {
         return Where(rows, [](const Row& r) { return r[1] == "Norway" || Num(r, 2) >= 20; });
       }},
      {"like, between and a sort over a join",
       R"(SELECT "Album"."Title", "Artist"."Name" FROM "Album" INNER JOIN "Artist" ON "Album"."ArtistId" = "Artist"."ArtistId")",
       [col](TmvQueryTransformer& x) {
         x.Filters().SetOperator(mv::jtAnd);
         x.Where(col(x, u"Name")->Like(u"'B%'")).Where(col(x, u"Title")->Not_Between(u"'C'", u"'M'"));
         x.OrderBy(col(x, u"Title"), true);
       },
       [](const Rows& rows) {
         Rows result = Where(rows, [](const Row& r) { return r[1][0] == 'B' && !(r[0] >= "C" && r[0] <= "M"); });
         std::stable_sort(result.begin(), result.end(), [](const Row& a, const Row& b) { return a[0] < b[0]; });
         return result;
       },
       0},
      {"totals over the filtered query", R"(SELECT "Invoice"."BillingCountry", "Invoice"."Total" FROM "Invoice")",
       [col](TmvQueryTransformer& x) {
         x.Where(col(x, u"BillingCountry")->In_(u"('USA', 'Canada')"));
         x.Select(col(x, u"Total")->Sum(), u"s").Select(col(x, u"Total")->Max(), u"m").SelectRecordsCount(u"n");
       },
       [](const Rows& rows) {
         double sum = 0, max = 0;
         long count = 0;
         for (const Row& r : rows) {
           if (r[0] != "USA" && r[0] != "Canada") continue;
           sum += Num(r, 1);
           max = std::max(max, Num(r, 1));
           ++count;
         }
         return Rows{{Fixed(sum), Fixed(max), std::to_string(count)}};
       }},
      {"null tests and distinct", R"(SELECT "Track"."Composer" FROM "Track")",
       [col](TmvQueryTransformer& x) {
         x.Where(col(x, u"Composer")->IsNotNull());
         x.SetSelectMode(mv::smDistinct);
       },
       [](const Rows& rows) {
         Rows result = Where(rows, [](const Row& r) { return r[0] != "NULL"; });
         std::sort(result.begin(), result.end());
         result.erase(std::unique(result.begin(), result.end()), result.end());
         return result;
       }},
      {"a hidden column filtered and sorted through the wrapper",
       R"(SELECT "Customer"."FirstName", "Customer"."LastName", "Customer"."Country" FROM "Customer")",
       [col](TmvQueryTransformer& x) {
         col(x, u"Country")->SetVisible(false);
         x.Where(col(x, u"Country")->Equal(u"'Brazil'")).OrderBy(col(x, u"LastName"), false);
       },
       [](const Rows& rows) {
         Rows result;
         for (const Row& r : rows)
           if (r[2] == "Brazil") result.push_back({r[0], r[1]});
         std::stable_sort(result.begin(), result.end(), [](const Row& a, const Row& b) { return a[1] > b[1]; });
         return result;
       },
       1, "the filter names the column as the source query does, which the wrapper does not know"},
      {"an expression column and an aggregate column of a grouped query",
       R"(SELECT "Invoice"."BillingCountry" AS "Country", Count(*) AS "Invoices", Sum("Invoice"."Total") AS "Spent" )"
       R"(FROM "Invoice" GROUP BY "Invoice"."BillingCountry")",
       [col](TmvQueryTransformer& x) {
         x.SetAlwaysWrapInSubQuery(true);
         x.Where(col(x, u"Spent")->Greater(u"100")).OrderBy(col(x, u"Spent"), false);
       },
       [](const Rows& rows) {
         return ByNumberDescending(Where(rows, [](const Row& r) { return Num(r, 2) > 100; }), 2);
       },
       2, "the filter repeats the aggregate expression in the wrapper's WHERE"},
      {"a page of a sorted query", R"(SELECT "Track"."TrackId", "Track"."Name" FROM "Track")",
       [col](TmvQueryTransformer& x) { x.OrderBy(col(x, u"TrackId"), true).Skip(u"10").Take(u"5"); },
       [](const Rows& rows) {
         Rows sorted = rows;
         std::stable_sort(sorted.begin(), sorted.end(), [](const Row& a, const Row& b) { return Num(a, 0) < Num(b, 0); });
         return Rows(sorted.begin() + 10, sorted.begin() + 15);
       },
       0},
      {"a page that runs past the last row of a filtered query",
       R"(SELECT "Invoice"."InvoiceId", "Invoice"."Total" FROM "Invoice")",
       [col](TmvQueryTransformer& x) {
         x.Where(col(x, u"Total")->Greater(u"20")).OrderBy(col(x, u"InvoiceId"), false).Skip(u"2").Take(u"30");
       },
       [](const Rows& rows) {
         Rows result = Where(rows, [](const Row& r) { return Num(r, 1) > 20; });
         std::stable_sort(result.begin(), result.end(), [](const Row& a, const Row& b) { return Num(a, 0) > Num(b, 0); });
         return Rows(result.begin() + 2, result.end());  // fewer than 30 are left
       },
       0},
  };
  return cases;
}

// Runs each case: the untransformed and the transformed query on the same
// server, through `run`.
// `rewrite` turns a case's text (double-quoted names) into the builder's dialect.
void RunCases(mv::TmvQueryBuilder& builder, const std::function<Rows(const mv::WideString&)>& run,
              const std::function<mv::WideString(const mv::WideString&)>& rewrite = {}) {
  for (const RowsCase& c : ChinookCases()) {
    SCOPED_TRACE(c.name);
    builder.SetSql(rewrite ? rewrite(mv::UTF8Decode(c.sql)) : mv::UTF8Decode(c.sql));
    const mv::WideString source = builder.GetSql();
    const Rows original = run(source);
    ASSERT_FALSE(original.empty());
    auto transformer = mv::TmvCreate<TmvQueryTransformer>();
    transformer->SetQueryBuilder(&builder);
    c.transform(*transformer);
    const mv::WideString sql = transformer->GetSql();
    SCOPED_TRACE(mv::UTF8Encode(sql));
    if (std::getenv("MV_SHOW_SQL")) std::cout << c.name << ":\n  " << mv::UTF8Encode(sql) << "\n";
    if (c.refused) {
      EXPECT_ANY_THROW(run(sql)) << "no longer refused (" << c.refused << "): remove the mark";
      continue;
    }
    Rows actual, expected = Normalized(c.expected(original));
    ASSERT_NO_THROW(actual = Normalized(run(sql)));
    for (Row& row : actual)
      if (!expected.empty() && row.size() > expected.front().size()) row.resize(expected.front().size());
    EXPECT_EQ(builder.GetSql(), source);
    if (c.orderedBy >= 0) {
      auto key = [&](const Rows& rows) {
        std::vector<std::string> keys;
        for (const Row& r : rows) keys.push_back(r.at(size_t(c.orderedBy)));
        return keys;
      };
      EXPECT_EQ(key(actual), key(expected));
    }
    std::sort(actual.begin(), actual.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(actual.size(), expected.size());
    EXPECT_TRUE(actual == expected);
  }
}

// A query builder over the catalog of the Chinook SQLite file, offline, in
// the dialect of the server the queries run on.
struct ChinookBuilder {
  ChinookBuilder(const std::string& path, const char* dialect)
      : connection(mv::UTF8Decode(path), mv::somReadOnly),
        provider(mv::SyntaxProvidersList().FindClassByClassName(dialect)->CreateRaw()) {
    metadata.SetConnection(&connection);
    builder->SetSyntaxProvider(provider.get());
    builder->SQLContext()->SetMetadataProvider(&metadata);
    mv::LoadSQLiteCatalog(builder->SQLContext(), builder->MetadataContainer());
    builder->SetWorkOffline(true);
  }
  mv::TmvSQLiteConnection connection;
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider;
  mv::TmvConnectionMetadataProvider metadata;
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
};

TEST_F(TransformedRowsTest, ChinookOnSQLite) {
  MV_REQUIRE_CORPUS();
  const std::string path = mvtest::CorpusDir() + "/chinook/Chinook_Sqlite.sqlite";
  if (!std::ifstream(path)) GTEST_SKIP() << "no " << path;
  ChinookBuilder chinook(path, "TmvSQLiteSyntaxProvider");
  RunCases(*chinook.builder, [&](const mv::WideString& sql) { return RunQuery(chinook.connection, sql); });
}

Rows AsRows(const mvtest::SqlRows& sqlRows) {
  Rows rows;
  for (const mvtest::SqlRow& row : sqlRows) {
    Row values;
    for (const auto& value : row) values.push_back(value ? *value : "NULL");
    rows.push_back(std::move(values));
  }
  return rows;
}

// The same cases on PostgreSQL, whose copy of Chinook spells its names as
// SQLite does: the cases quote them.
TEST_F(TransformedRowsTest, ChinookOnPostgres) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  ChinookBuilder chinook(mvtest::ChinookSqlitePath(), "TmvPGSQLSyntaxProvider");
  mvtest::PostgresServer& server = mvtest::ChinookOnPostgres();
  RunCases(*chinook.builder, [&](const mv::WideString& sql) { return AsRows(server.Query(sql)); });
}

// And on MariaDB, the cases converted to MySQL's back-quoted names first.
TEST_F(TransformedRowsTest, ChinookOnMariaDb) {
  MV_REQUIRE_MARIADB_CHINOOK();
  ChinookBuilder chinook(mvtest::ChinookSqlitePath(), "TmvMYSQLSyntaxProvider");
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> written(
      mv::SyntaxProvidersList().FindClassByClassName("TmvPGSQLSyntaxProvider")->CreateRaw());
  mvtest::MariaDbServer& server = mvtest::ChinookOnMariaDb();
  server.Exec(std::string("USE ") + mvtest::kMariaDbChinookDatabase);
  RunCases(
      *chinook.builder, [&](const mv::WideString& sql) { return AsRows(server.Query(sql)); },
      [&](const mv::WideString& sql) {
        mv::TSQLBuilderFast builder;
        return mv::ConvertSelectDialect(sql, *written, *chinook.provider, builder);
      });
  server.Exec("USE test");
}

}  // namespace
