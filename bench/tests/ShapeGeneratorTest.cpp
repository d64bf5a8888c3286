#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>

#include "ShapeGenerator.h"

namespace {

int Count(const std::string& text, const std::string& what) {
  int n = 0;
  for (size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + what.size())) ++n;
  return n;
}

// Deepest bracket nesting; -1 when the brackets do not balance.
int MaxDepth(const std::string& text) {
  int depth = 0, deepest = 0;
  for (char c : text) {
    if (c == '(') deepest = std::max(deepest, ++depth);
    if (c == ')' && --depth < 0) return -1;
  }
  return depth == 0 ? deepest : -1;
}

bool HasShape(const std::string& kind, int size) {
  const auto& shapes = mv::BenchShapes();
  return std::any_of(shapes.begin(), shapes.end(),
                     [&](const mv::TmvBenchShape& s) { return s.Kind == kind && s.Size == size; });
}

TEST(ShapeGenerator, ListHoldsTheRequiredSizesWithUniqueNames) {
  for (auto [kind, size] : {std::pair<std::string, int>{"brackets", 30}, {"brackets", 100}, {"brackets", 200},
                            {"and", 1000}, {"and", 10000}, {"in", 10000}, {"in", 20000}, {"subquery", 50}})
    EXPECT_TRUE(HasShape(kind, size)) << kind << " " << size;
  std::set<std::string> names;
  for (const auto& shape : mv::BenchShapes()) {
    EXPECT_TRUE(names.insert(shape.Name()).second) << shape.Name();
    EXPECT_FALSE(shape.Description.empty()) << shape.Name();
  }
  EXPECT_EQ(mv::BenchShapes().front().Name(), "brackets-30");
}

TEST(ShapeGenerator, BracketsNestTheConditionToTheGivenDepth) {
  for (int depth : {1, 30, 200}) {
    const std::string sql = mv::MakeShapeSql("brackets", depth);
    EXPECT_EQ(sql.rfind("SELECT a FROM t WHERE (", 0), 0u) << sql;
    EXPECT_EQ(MaxDepth(sql), depth);
    EXPECT_EQ(Count(sql, "a = 1"), 1);
    EXPECT_NE(sql.find(std::string(static_cast<size_t>(depth), '(') + "a = 1" +
                       std::string(static_cast<size_t>(depth), ')')),
              std::string::npos);
  }
}

TEST(ShapeGenerator, AndChainHasOneComparisonPerTerm) {
  const std::string sql = mv::MakeShapeSql("and", 1000);
  EXPECT_EQ(Count(sql, " AND "), 999);
  EXPECT_EQ(Count(sql, " = "), 1000);
  EXPECT_NE(sql.find("WHERE c1 = 1 AND c2 = 2 AND"), std::string::npos);
  EXPECT_TRUE(sql.ends_with("AND c1000 = 1000"));
  EXPECT_EQ(mv::MakeShapeSql("and", 1), "SELECT a FROM t WHERE c1 = 1");
}

TEST(ShapeGenerator, InListHoldsEveryNumberOnce) {
  const std::string sql = mv::MakeShapeSql("in", 20000);
  EXPECT_EQ(sql.rfind("SELECT a FROM t WHERE a IN (1, 2, 3, ", 0), 0u);
  EXPECT_TRUE(sql.ends_with(", 19999, 20000)"));
  EXPECT_EQ(Count(sql, ", "), 19999);
  EXPECT_EQ(MaxDepth(sql), 1);
}

TEST(ShapeGenerator, SubqueriesNestToTheGivenDepth) {
  const std::string sql = mv::MakeShapeSql("subquery", 50);
  EXPECT_EQ(Count(sql, "SELECT "), 51);
  EXPECT_EQ(MaxDepth(sql), 50);
  EXPECT_EQ(sql.rfind("SELECT a FROM t0 WHERE a IN (SELECT a FROM t1 WHERE", 0), 0u);
  EXPECT_NE(sql.find("(SELECT a FROM t50)"), std::string::npos);
  EXPECT_EQ(mv::MakeShapeSql("subquery", 1), "SELECT a FROM t0 WHERE a IN (SELECT a FROM t1)");
}

TEST(ShapeGenerator, DoubledBracketsHoldOneSubQueryPerLevel) {
  for (const std::string kind : {"select-brackets", "in-brackets", "from-brackets"}) {
    const std::string sql = mv::MakeShapeSql(kind, 50);
    EXPECT_EQ(Count(sql, "SELECT "), 51) << kind;
    EXPECT_EQ(Count(sql, "(("), 50) << kind;
    EXPECT_EQ(MaxDepth(sql), 100) << kind;
  }
  EXPECT_EQ(mv::MakeShapeSql("from-brackets", 1), "SELECT a FROM ((SELECT a FROM t)) q");
}

TEST(ShapeGenerator, SizeGrowsLinearlyWithinAKind) {
  // Byte counts drive the time-per-byte figures: doubling the terms must
  // roughly double the text, or the growth they show would be the generator's.
  for (const std::string kind : {"brackets", "and", "in", "subquery", "select-brackets", "in-brackets", "from-brackets"}) {
    const double small = static_cast<double>(mv::MakeShapeSql(kind, 1000).size());
    const double large = static_cast<double>(mv::MakeShapeSql(kind, 2000).size());
    EXPECT_GT(large / small, 1.8) << kind;
    EXPECT_LT(large / small, 2.3) << kind;
  }
}

TEST(ShapeGenerator, SameInputGivesSameTextAndAsciiOnly) {
  for (const auto& shape : mv::BenchShapes()) {
    const std::string sql = mv::MakeShapeSql(shape.Kind, shape.Size);
    EXPECT_EQ(sql, mv::MakeShapeSql(shape.Kind, shape.Size));
    EXPECT_TRUE(std::all_of(sql.begin(), sql.end(), [](char c) { return c >= 0x20 && c < 0x7f; }))
        << shape.Name();
  }
}

TEST(ShapeGenerator, RejectsUnknownKindsAndEmptySizes) {
  EXPECT_THROW(mv::MakeShapeSql("union", 10), std::invalid_argument);
  EXPECT_THROW(mv::MakeShapeSql("and", 0), std::invalid_argument);
  EXPECT_THROW(mv::MakeShapeSql("brackets", -5), std::invalid_argument);
}

}  // namespace
