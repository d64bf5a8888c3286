// A SQL context on the SQL-92 dialect, the engine's registries filled: the
// fixture of the tests that parse real SQL.
#pragma once

#include <gtest/gtest.h>

#include "ReferenceDialect.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"

namespace mvtest {

class SQL92ContextTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  SQL92ContextTest() { context.SetSyntaxProvider(&provider); }
  ~SQL92ContextTest() override { context.SetSyntaxProvider(nullptr); }

  TReferenceDialectProvider provider;
  mv::TmvBaseSQLContext context;
};

}  // namespace mvtest
