// A test fixture over one dialect: its provider, a context on it, and the
// one-line print of a tree, or of a text ("error: " and the parser's message,
// with its position, when the text does not parse).
//
//   class PGSQLDialectTest : public mvtest::DialectFixture<mv::TmvPGSQLSyntaxProvider> {};
//   TEST_F(PGSQLDialectTest, Reads) { EXPECT_EQ(Print("select a from t"), "Select a From t"); }
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/SelectStatement.h"
#include "SqlRows.h"

namespace mvtest {

template <class Provider>
class DialectFixture : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  void SetUp() override { context_.SetSyntaxProvider(&provider_); }
  void TearDown() override { context_.SetSyntaxProvider(nullptr); }

  static std::string Print(mv::TastNode* node) {
    mv::TSQLBuilderFast builder;
    return mv::UTF8Encode(node->SimpleSQL(builder));
  }
  std::string Print(const std::string& text) {
    try {
      return Print(context_.ParseSelect(mv::UTF8Decode(text)).get());
    } catch (const mv::EmvSQLError& e) {
      return "error: " + mv::UTF8Encode(e.Message());
    }
  }

  // Each case's `text` prints as its `print` (or gives that error), and a
  // print that is no error reads again to itself.
  template <class Cases>
  void ExpectPrintsBack(const Cases& cases) {
    for (const auto& c : cases) {
      const std::string print = Print(c.text);
      EXPECT_EQ(print, c.print) << c.text;
      if (print.rfind("error", 0) != 0) {
        EXPECT_EQ(Print(print), print) << c.text;
      }
    }
  }

  // Row limits set by the provider on `text`, run on a server by `query`:
  // each case gives the rows [from, from + rows) of the unlimited query.
  struct LimitsCase {
    const char16_t* offset;
    const char16_t* count;
    size_t from, rows;
  };
  void ExpectLimitsOnServer(const mv::WideString& text, const std::vector<LimitsCase>& cases,
                            const std::function<SqlRows(const mv::WideString&)>& query) {
    const SqlRows all = query(text);
    ASSERT_GT(all.size(), 20u) << mv::UTF8Encode(text);
    auto statement = context_.ParseSelect(text);
    for (const LimitsCase& c : cases) {
      auto limited = provider_.TransformQueryLimits(statement.get(), c.offset, c.count);
      ASSERT_NE(limited, nullptr);
      mv::TSQLBuilderFast builder;
      const mv::WideString sql = limited->SimpleSQL(builder);
      const auto begin = all.begin() + static_cast<std::ptrdiff_t>(std::min(c.from, all.size()));
      const auto end = begin + static_cast<std::ptrdiff_t>(std::min(c.rows, size_t(all.end() - begin)));
      EXPECT_EQ(query(sql), SqlRows(begin, end)) << mv::UTF8Encode(sql);
    }
  }
  // The cases every dialect with both limits passes: a count, an offset,
  // both, and an offset past the end.
  static std::vector<LimitsCase> CommonLimitsCases() {
    return {{u"", u"5", 0, 5}, {u"3", u"", 3, ~size_t(0)}, {u"4", u"6", 4, 6}, {u"1000", u"2", 1000, 0}};
  }

  Provider provider_;
  mv::TmvBaseSQLContext context_;
};

}  // namespace mvtest
