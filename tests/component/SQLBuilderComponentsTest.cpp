// The formatted-text component following a query builder.
#include <gtest/gtest.h>

#include <string>

#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "component/SQLBuilderComponents.h"
#include "dialects/EngineInit.h"
#include "model/QueryTree.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/Exceptions.h"

namespace {

using mv::UTF8Decode;
using mv::UTF8Encode;

class SQLBuilderComponentsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  SQLBuilderComponentsTest() {
    builder->SetSyntaxProvider(provider.get());
    text->Builder().SetKeywordFormat(mv::akfUpperCase);
    text->Builder().SetRightMargin(0);
    text->OnSQLUpdated = [this](mv::TmvBaseSQLBuilder*) { ++updates; };
  }
  std::string Text() { return UTF8Encode(text->GetSql()); }

  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  mv::TmvOwned<mv::TmvSQLBuilderPlainText> text = mv::TmvCreate<mv::TmvSQLBuilderPlainText>();
  int updates = 0;
};

TEST_F(SQLBuilderComponentsTest, PrintsTheTargetPartAndFollowsChanges) {
  EXPECT_EQ(Text(), "");
  EXPECT_THROW(text->SetSql(u"SELECT 1"), mv::Exception);
  text->SetQueryBuilder(builder.get());
  // An empty query prints as nothing.
  EXPECT_EQ(Text(), "");
  updates = 0;
  text->SetSql(u"SELECT x FROM (SELECT y FROM u) q UNION SELECT z FROM v ORDER BY 1");
  EXPECT_EQ(updates, 1);
  EXPECT_NE(Text().find("UNION"), std::string::npos);

  mv::TmvSubQuery* derived = builder->SubQueries().at(1);
  text->SetTargetQueryPart(mv::mvqpSubQuery);
  int changed = 0;
  text->OnQueryPartChanged = [&](mv::TmvBaseSQLBuilder*) { ++changed; };
  builder->SetActiveSubQuery(derived);
  EXPECT_EQ(changed, 1);
  EXPECT_EQ(Text(), "SELECT y\r\nFROM u");
  // A part's text goes to that part (seen in the SELECT below).
  text->SetSql(u"SELECT w FROM u");
  builder->SetActiveSubQuery(builder->Query());
  text->SetTargetQueryPart(mv::mvqpUnionSubQuery);
  // A SELECT shown alone takes the query's sort.
  EXPECT_EQ(Text(), "SELECT x\r\nFROM (SELECT w\r\n  FROM u) q\r\nORDER BY 1");

  // A format change is a change of the text; the sleeping text comes back as it is.
  updates = 0;
  text->Builder().SetKeywordFormat(mv::akfLowerCase);
  EXPECT_EQ(updates, 1);
  builder->SetSql(u"UPDATE t SET x = 1");
  EXPECT_EQ(Text(), "UPDATE t SET x = 1");

  // The builder going away leaves the component empty.
  builder.reset();
  EXPECT_EQ(text->QueryBuilder(), nullptr);
  EXPECT_EQ(Text(), "");
}

TEST_F(SQLBuilderComponentsTest, QuoteAllIdentifiersIsABooleanView) {
  text->Builder().SetQuoteIdentifiers(mv::icNone);
  EXPECT_FALSE(text->QuoteAllIdentifiers());
  text->SetQuoteAllIdentifiers(false);
  EXPECT_EQ(text->Builder().QuoteIdentifiers(), mv::icIfNeed);
  text->SetQuoteAllIdentifiers(true);
  EXPECT_EQ(text->Builder().QuoteIdentifiers(), mv::icAll);

  mv::TmvOwned<mv::TmvSQLBuilderPlainText> copy = mv::TmvCreate<mv::TmvSQLBuilderPlainText>();
  text->SetTargetQueryPart(mv::mvqpSubQuery);
  copy->Assign(*text);
  EXPECT_EQ(copy->TargetQueryPart(), mv::mvqpSubQuery);
  EXPECT_TRUE(copy->QuoteAllIdentifiers());
}

}  // namespace
