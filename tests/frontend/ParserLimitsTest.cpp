// Size and concurrency: long lists, deep nesting, ways that multiply, and
// several threads parsing at once.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ExprToyPars.h"
#include "OnStackOf.h"
#include "ParseHelpers.h"
#include "WayToyPars.h"

namespace {

using mv::ExprToyParser;
using mv::WayToyParser;
using mvtest::ToyParse;

std::u16string LongList(int items) {
  std::u16string text;
  for (int i = 0; i < items; ++i) {
    if (i) text += u", ";
    text += i % 2 ? u"name" : u"12";
  }
  return text;
}

TEST(ParserLimits, ALongListScansAndParsesWithoutDeepRecursion) {
  // 150,000 items: 300,000 visible tokens and as many blanks, more items than
  // a way list may hold ways.
  const int items = 150'000;
  static_assert(items > mv::TmvBaseParser::MaxLiveWays);
  const std::u16string text = LongList(items);
  bool found = false;
  int count = 0;
  int32_t tokens = 0;
  mvtest::RunOnStackOf(512 * 1024, [&] {
    ToyParse<ExprToyParser> p(text);
    tokens = p.scanner().GetCount();
    found = p.Find(&ExprToyParser::listWayCalc);
    if (found) p.parser().list(count);
  });
  EXPECT_GT(tokens, 2 * items);
  ASSERT_TRUE(found);
  EXPECT_EQ(count, items);
}

TEST(ParserLimits, OperatorsOfOneLevelNestToTheLeft) {
  ToyParse<ExprToyParser> p(u"a + b + c");
  ASSERT_TRUE(p.Find(&ExprToyParser::expressionWayCalc));
  std::unique_ptr<ToyNode> tree;
  p.parser().expression(tree);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->Dump(), "((a + b) + c)");

  ToyParse<ExprToyParser> mixed(u"a - b * c / -x || (e + f)");
  ASSERT_TRUE(mixed.Find(&ExprToyParser::expressionWayCalc));
  mixed.parser().expression(tree);
  EXPECT_EQ(tree->Dump(), "((a - ((b * c) / (- x))) || (e + f))");
}

TEST(ParserLimits, ALongChainOfOperatorsStaysFlat) {
  std::u16string text = u"a";
  for (int i = 0; i < 50'000; ++i) text += u" + a";
  bool found = false;
  mvtest::RunOnStackOf(512 * 1024, [&] {
    ToyParse<ExprToyParser> p(text);
    found = p.Find(&ExprToyParser::expressionWayCalc);
    if (found) {
      std::unique_ptr<ToyNode> tree;
      p.parser().expression(tree);
    }
  });
  EXPECT_TRUE(found);
}

std::u16string Brackets(int depth) {
  return std::u16string(depth, u'(') + u"a" + std::u16string(depth, u')');
}

TEST(ParserLimits, NestingThatPeopleWritePasses) {
  ToyParse<ExprToyParser> p(Brackets(150));
  ASSERT_TRUE(p.Find(&ExprToyParser::expressionWayCalc));
  EXPECT_FALSE(p.parser().LimitExceeded());
  std::unique_ptr<ToyNode> tree;
  p.parser().expression(tree);
  EXPECT_EQ(tree->Dump(), "a");
}

TEST(ParserLimits, DeeperNestingEndsInTheOrdinarySyntaxFailure) {
  bool found = true;
  bool limit = false;
  mvtest::RunOnStackOf(1024 * 1024, [&] {
    ToyParse<ExprToyParser> p(Brackets(100'000));
    found = p.Find(&ExprToyParser::expressionWayCalc);
    limit = p.parser().LimitExceeded();
  });
  EXPECT_FALSE(found);
  EXPECT_TRUE(limit);
}

TEST(ParserLimits, WaysThatMultiplyAreSettledOnceAndExploredOnlyByTheReference) {
  // Each name doubles the ways of the plain exploration: 15 names stay under
  // its limit, 40 do not. Settled once, 40 names or 100,000 parse, and pick
  // the way the plain exploration picks where it finishes.
  std::u16string few, many, lots;
  for (int i = 0; i < 15; ++i) few += u"a ";
  for (int i = 0; i < 40; ++i) many += u"a ";
  for (int i = 0; i < 100'000; ++i) lots += u"a ";
  ToyParse<WayToyParser> reference(few);
  reference.parser().ReferenceMode = true;
  ASSERT_TRUE(reference.Find(&WayToyParser::explodeWayCalc));
  ToyParse<WayToyParser> settled(few);
  ASSERT_TRUE(settled.Find(&WayToyParser::explodeWayCalc));
  EXPECT_EQ(settled.Way(), reference.Way());

  ToyParse<WayToyParser> large(many);
  large.parser().ReferenceMode = true;
  EXPECT_FALSE(large.Find(&WayToyParser::explodeWayCalc));
  EXPECT_TRUE(large.parser().LimitExceeded());
  // The parser is fit for another pass afterwards, also without the reference mode.
  large.parser().ReferenceMode = false;
  EXPECT_TRUE(large.Find(&WayToyParser::explodeWayCalc));
  ToyParse<WayToyParser> huge(lots);
  EXPECT_TRUE(huge.Find(&WayToyParser::explodeWayCalc));
}

TEST(ParserLimits, EightThreadsParseAtOnce) {
  const std::u16string texts[] = {u"a + b * (c - e) / f", u"(x || y) + -z", u"1 + 2 + 3 + 4 + 5"};
  const std::string dumps[] = {"(a + ((b * (c - e)) / f))", "((x || y) + (- z))", "((((1 + 2) + 3) + 4) + 5)"};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 300; ++round) {
        const int k = (t + round) % 3;
        ToyParse<ExprToyParser> p(texts[k]);
        std::unique_ptr<ToyNode> tree;
        if (!p.Find(&ExprToyParser::expressionWayCalc)) {
          ++failures;
          continue;
        }
        p.parser().expression(tree);
        if (tree->Dump() != dumps[k]) ++failures;
        ToyParse<ExprToyParser> list(LongList(200));
        int count = 0;
        if (!list.Find(&ExprToyParser::listWayCalc)) {
          ++failures;
          continue;
        }
        list.parser().list(count);
        if (count != 200) ++failures;
        ToyParse<ExprToyParser> bad(u"a + + b");
        if (bad.Find(&ExprToyParser::expressionWayCalc) || bad.BadTokenText() != u"+") ++failures;
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
}

}  // namespace
