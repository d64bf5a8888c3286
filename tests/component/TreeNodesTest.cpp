// The metadata tree and the query structure tree as nodes: grouping,
// sorting, expansion and the outline of a query.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "component/TreeNodes.h"
#include "dialects/EngineInit.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"

namespace {

using namespace mv;

// One line per node: indentation by depth, the text, "+" when expanded.
void Outline(const TmvTreeNodes& nodes, std::vector<std::string>& lines, const std::string& indent = "") {
  for (const auto& node : nodes) {
    lines.push_back(indent + UTF8Encode(node->Text) + (node->Expanded && !node->Children.empty() ? " +" : ""));
    Outline(node->Children, lines, indent + "  ");
  }
}

class TreeNodesTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  TreeNodesTest() { builder->SetSyntaxProvider(provider.get()); }
  std::vector<std::string> Metadata() {
    std::vector<std::string> lines;
    Outline(BuildMetadataTree(*builder), lines);
    return lines;
  }
  void Objects() {
    TmvMetadataContainer* container = builder->MetadataContainer();
    container->AddTable(u"sales", u"orders", false);
    container->AddView(u"sales", u"big_orders", false);
    container->AddTable(u"hr", u"staff", false);
    container->AddTable(u"sys", u"catalog", true);  // a system table: hidden
    container->AddTable(u"hr", u"bonus", false);
  }

  TmvOwned<TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  TmvOwned<TmvQueryBuilder> builder = TmvCreate<TmvQueryBuilder>();
};

TEST_F(TreeNodesTest, MetadataGroupingAndSorting) {
  EXPECT_TRUE(Metadata().empty());  // an empty container
  Objects();
  auto& options = builder->TreeOptionsMetadata();
  struct Case {
    TmvQBObjectsGroupingType grouping;
    TmvQBObjectsSortingType sorting;
    int expandLevel;
    std::vector<std::string> outline;
  } cases[] = {
      // One database: no database level; schemas in name order, their objects too.
      {ogtDatabaseSchema, ostName, -1, {"hr +", "  bonus", "  staff", "sales +", "  big_orders", "  orders"}},
      // By kind: the kinds in the order of their first object, schema in the text.
      {ogtType, ostTypeName, -1, {"Tables +", "  hr.bonus", "  hr.staff", "  sales.orders", "Views +", "  sales.big_orders"}},
      {ogtNone, ostName, -1, {"hr.bonus", "hr.staff", "sales.big_orders", "sales.orders"}},
      // Closed top level.
      {ogtDatabaseSchema, ostName, 0, {"hr", "  bonus", "  staff", "sales", "  big_orders", "  orders"}},
  };
  for (const Case& c : cases) {
    options.SetGroupingType(c.grouping);
    options.SetSortingType(c.sorting);
    options.SetDefaultExpandLevel(c.expandLevel);
    EXPECT_EQ(Metadata(), c.outline) << int(c.grouping);
  }
  // Shown database level: objects without a database share "(current database)".
  options.SetHideSingleDatabaseNode(false);
  options.SetGroupingType(ogtDatabase);
  options.SetDefaultExpandLevel(1);
  EXPECT_EQ(Metadata(), (std::vector<std::string>{"(current database) +", "  hr.bonus", "  hr.staff",
                                                  "  sales.big_orders", "  sales.orders"}));
}

TEST_F(TreeNodesTest, QueryStructureOutline) {
  builder->SetSql(u"SELECT o.id AS n, o.total FROM orders o, (SELECT id FROM staff) s UNION SELECT 1, 2 FROM bonus");
  std::vector<std::string> lines;
  Outline(BuildQueryStructureTree(*builder), lines);
  ASSERT_GE(lines.size(), 8u);
  EXPECT_EQ(lines[1], "  UNIONS +");
  EXPECT_EQ(lines[3], "      FIELDS +");
  EXPECT_EQ(lines[4], "        n o.id");
  EXPECT_EQ(lines[5], "        o.total");
  EXPECT_EQ(lines[6], "      FROM +");
  EXPECT_EQ(lines[7], "        orders o");
  // The derived table is a nested sub-query of the main query, after its unions.
  EXPECT_EQ(lines[lines.size() - 5], "  s +");
  EXPECT_EQ(lines.back(), "      staff");
  builder->TreeOptions().SetShowFields(false);
  lines.clear();
  Outline(BuildQueryStructureTree(*builder), lines);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "      FIELDS +"), 0);
}

}  // namespace
