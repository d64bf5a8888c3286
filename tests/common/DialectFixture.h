// A test fixture over one dialect: its provider, a context on it, and the
// one-line print of a tree, or of a text ("error: " and the parser's message,
// with its position, when the text does not parse).
//
//   class PGSQLDialectTest : public mvtest::DialectFixture<mv::TmvPGSQLSyntaxProvider> {};
//   TEST_F(PGSQLDialectTest, Reads) { EXPECT_EQ(Print("select a from t"), "Select a From t"); }
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/SelectStatement.h"

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

  Provider provider_;
  mv::TmvBaseSQLContext context_;
};

}  // namespace mvtest
