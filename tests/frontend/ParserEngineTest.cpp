// The first-pass primitives of the parser base and, through generated toy
// grammars, the order the combinators give complete ways, the guards, the
// driver and the blamed token.
#include <gtest/gtest.h>

#include <vector>

#include "DerivedToyPars.h"
#include "ParseHelpers.h"
#include "Thrown.h"
#include "WayToyPars.h"

namespace {

using mv::TmvWayPoint;
using mv::TmvWayPointsList;
using mv::WayToyParser;
using mvtest::ToyParse;

int64_t Live() { return mv::TmvQBWayPointsCache::LiveRecordsOfThisThread(); }

// A list of one way that has read `index` tokens' worth.
struct OneWay {
  explicit OneWay(int32_t tokenIndex) {
    TmvWayPoint* p = mv::WayPointCache().Get(nullptr, 0);
    p->TokenIndex = tokenIndex;
    list.Add(p);
  }
  TmvWayPointsList list;
};

TEST(FirstPassPrimitives, DoNothingOnAnEmptyList) {
  ToyParse<WayToyParser> p(u"a b");
  WayToyParser& parser = p.parser();
  TmvWayPointsList empty, other;
  const int32_t kinds[] = {5, 9};
  parser.Expect(empty, 5);
  EXPECT_FALSE(parser.CheckLAToken(empty, 5));
  EXPECT_FALSE(parser.CheckLAToken(empty, kinds));
  EXPECT_FALSE(parser.CheckLANotToken(empty, 5));
  EXPECT_FALSE(parser.CheckLANotToken(empty, kinds));
  EXPECT_FALSE(parser.CheckLA2NotToken(empty, kinds));
  EXPECT_FALSE(parser.CheckLANotIn(empty, {"a"}));
  parser.AddWayNode(empty, 1);
  parser.ListAddWithWayNode(other, empty, 1);
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_TRUE(other.IsEmpty());
  EXPECT_EQ(parser.MaxTokenIndex, -1);
  // Every generated rule and helper returns at once as well.
  parser.dbObjectWayCalc(empty);
  parser.radixWayCalc(empty);
  parser.repeatThenSameWayCalc(empty);
  EXPECT_TRUE(empty.IsEmpty());
}

TEST(FirstPassPrimitives, ExpectStepsOverHiddenTokensByTheScannerFlags) {
  ToyParse<WayToyParser> p(u"a /* c */ b ");
  WayToyParser& parser = p.parser();
  // Tokens: a(0) space(1) comment(2) space(3) b(4) space(5) end(6).
  OneWay w(0);
  parser.Expect(w.list, 5);
  ASSERT_EQ(w.list.Count(), 1);
  EXPECT_EQ(w.list[0]->TokenIndex, 4);
  EXPECT_EQ(parser.MaxTokenIndex, 4);
  parser.Expect(w.list, mv::tkEndOfText);
  ASSERT_EQ(w.list.Count(), 1) << "only hidden tokens were left before the end";
  EXPECT_EQ(w.list[0]->TokenIndex, 6);

  p.scanner().SkipSpaces = false;
  p.scanner().SkipComments = false;
  OneWay spaced(4);
  parser.Expect(spaced.list, mv::tkEndOfText);
  EXPECT_TRUE(spaced.list.IsEmpty()) << "with both flags clear a trailing space ends the way";

  // Lookahead steps over the hidden tokens whatever the flags say; the Expect
  // after it then deletes the way.
  OneWay look(0);
  EXPECT_TRUE(parser.CheckLAToken(look.list, 5));
  parser.Expect(look.list, 5);
  EXPECT_TRUE(look.list.IsEmpty());

  // A grammar may expect a hidden kind itself.
  OneWay hidden(0);
  parser.Expect(hidden.list, 2);
  ASSERT_EQ(hidden.list.Count(), 1);
  EXPECT_EQ(hidden.list[0]->TokenIndex, 1);
}

TEST(FirstPassPrimitives, LookaheadTests) {
  ToyParse<WayToyParser> spaced(u"a  b");
  WayToyParser& parser = spaced.parser();
  // Hidden tokens on the way are tested too.
  OneWay space(0);
  EXPECT_TRUE(parser.CheckLAToken(space.list, 2)) << "a listed hidden kind is seen";
  OneWay notSpace(0);
  EXPECT_FALSE(parser.CheckLANotToken(notSpace.list, 2));
  OneWay past(0);
  EXPECT_TRUE(parser.CheckLANotToken(past.list, 9)) << "kept at the first visible token that is not listed";
  EXPECT_EQ(parser.MaxTokenIndex, -1) << "lookahead matches nothing";

  // CheckLA2NotToken looks at the token after the next.
  ToyParse<WayToyParser> notLike(u"not like x");
  const int32_t like[] = {mv::SQL92Scanner::kwLIKE};
  const int32_t x[] = {5};
  for (auto [from, kinds, kept] : {std::tuple{-1, std::span<const int32_t>(like), false}, {-1, x, true}, {0, x, false}}) {
    OneWay w(from);
    EXPECT_EQ(notLike.parser().CheckLA2NotToken(w.list, kinds), kept) << from;
  }

  // CheckLANotIn compares text without case.
  ToyParse<WayToyParser> foo(u"Foo");
  OneWay w1(-1);
  EXPECT_FALSE(foo.parser().CheckLANotIn(w1.list, {"bar", "FOO"}));
  OneWay w2(-1);
  EXPECT_TRUE(foo.parser().CheckLANotIn(w2.list, {"bar"}));
}

TEST(FirstPassPrimitives, DecisionsGrowWaysWithoutTouchingTheirSource) {
  const int64_t before = Live();
  {
    ToyParse<WayToyParser> p(u"a");
    WayToyParser& parser = p.parser();
    TmvWayPointsList src, dest;
    src.Add(mv::WayPointCache().Get(nullptr, 0));
    src.Add(mv::WayPointCache().Get(nullptr, 0));
    parser.ListAddWithWayNode(dest, src, 7);
    ASSERT_EQ(dest.Count(), 2);
    EXPECT_EQ(dest[0]->Prev, src[0]);
    EXPECT_EQ(dest[1]->Choice, 7);
    parser.AddWayNode(src, 3);
    EXPECT_EQ(src[0]->Choice, 3);
    EXPECT_EQ(src[0]->Prev, dest[0]->Prev) << "the old tip lives on through both";
    EXPECT_EQ(dest[0]->Prev->RefCount, 2);
  }
  EXPECT_EQ(Live(), before);
}

// --- Through generated code. ---------------------------------------------------

TEST(WayOrder, TheWorkedExampleGives01000) {
  ToyParse<WayToyParser> p(u"a.b");
  ASSERT_TRUE(p.Find(&WayToyParser::dbObjectWayCalc));
  EXPECT_EQ(p.Way(), "01000");
  std::vector<std::u16string> names;
  p.parser().dbObject(names);
  EXPECT_EQ(names, (std::vector<std::u16string>{u"b", u"a"})) << "Items[0] is the object's own name";
  EXPECT_EQ(p.parser().WayIndex, p.parser().Way->Count() - 1) << "the second pass read every decision";
}

TEST(WayOrder, NamesOfOneToFourParts) {
  struct Case {
    std::u16string text;
    const char* way;
  };
  for (const Case& c : {Case{u"a", "000"}, Case{u"a.b.c", "0110000"}, Case{u"aa.bb.cc.dd", "01110000"}}) {
    ToyParse<WayToyParser> p(c.text);
    ASSERT_TRUE(p.Find(&WayToyParser::dbObjectWayCalc)) << mv::UTF8Encode(c.text);
    EXPECT_EQ(p.Way(), c.way) << mv::UTF8Encode(c.text);
  }
}

TEST(WayOrder, CommentsAndBlanksChangeNoDecision) {
  ToyParse<WayToyParser> plain(u"a.b");
  ToyParse<WayToyParser> commented(u"a /* x */ .\n-- y\n b ");
  ASSERT_TRUE(plain.Find(&WayToyParser::dbObjectWayCalc));
  ASSERT_TRUE(commented.Find(&WayToyParser::dbObjectWayCalc));
  EXPECT_EQ(commented.Way(), plain.Way());
  std::vector<std::u16string> names;
  commented.parser().dbObject(names);
  EXPECT_EQ(names, (std::vector<std::u16string>{u"b", u"a"}));
}

TEST(WayOrder, DecisionsOfRepetitionsOptionsAndChoices) {
  using Calc = void (WayToyParser::*)(TmvWayPointsList&);
  const struct {
    const char* rule;
    std::u16string text;
    Calc calc;
    std::vector<std::string> survivors;  // best first
  } cases[] = {
      // { X } X [ X ]: a repetition followed by its own first token keeps both
      // ways, and the one with fewer rounds comes first.
      {"repeatThenSame", u"x x", &WayToyParser::repeatThenSameWayCalc, {"001", "0100"}},
      // { ( X | X X ) }: two rounds of one name, or one round of two.
      {"roundsOfOneOrTwo", u"x x", &WayToyParser::roundsOfOneOrTwoWayCalc, {"0110", "010100"}},
      // [ X ] X { X }: an option followed by the same token prefers the taken way.
      {"optionThenSame", u"x x", &WayToyParser::optionThenSameWayCalc, {"010", "0010"}},
      // ( X | X ) [ ";" ] [ ";" ]: later decisions outrank earlier ones, as in
      // a radix sort.
      {"radix", u"x ;", &WayToyParser::radixWayCalc, {"0001", "0101", "0010", "0110"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rule);
    ToyParse<WayToyParser> p(c.text);
    EXPECT_EQ(p.Survivors(c.calc), c.survivors);
    ASSERT_TRUE(p.Find(c.calc));
    EXPECT_EQ(p.Way(), c.survivors.front());
  }
}

TEST(BadToken, AnErrorAtTheEndBlamesTheEndToken) {
  ToyParse<WayToyParser> p(u"a.");
  EXPECT_FALSE(p.Find(&WayToyParser::dbObjectWayCalc));
  EXPECT_EQ(p.BadToken().Kind, mv::tkEndOfText);
  EXPECT_EQ(p.BadTokenText(), u"EOF");
}

TEST(BadToken, BlamesTheFirstTokenNoWayCouldRead) {
  ToyParse<WayToyParser> p(u"p.q.r.s . e");
  EXPECT_FALSE(p.Find(&WayToyParser::dbObjectWayCalc));
  EXPECT_EQ(p.BadTokenText(), u".");
  EXPECT_EQ(p.BadToken().Col, 9);
  ToyParse<WayToyParser> first(u"  ; a");
  EXPECT_FALSE(first.Find(&WayToyParser::dbObjectWayCalc));
  EXPECT_EQ(first.BadTokenText(), u";") << "nothing matched: the first visible token";
  ToyParse<WayToyParser> empty(u"");
  EXPECT_FALSE(empty.Find(&WayToyParser::dbObjectWayCalc));
  EXPECT_EQ(empty.BadTokenText(), u"EOF");
}

TEST(Guards, AVersionGuardedAlternativeFailsBelowItsVersion) {
  ToyParse<WayToyParser> low(u"a.b");
  low.parser().ServerVersion = 10;
  EXPECT_FALSE(low.Find(&WayToyParser::versionedWayCalc));
  EXPECT_EQ(low.BadTokenText(), u".");
  ToyParse<WayToyParser> high(u"a.b");
  high.parser().ServerVersion = 11;
  ASSERT_TRUE(high.Find(&WayToyParser::versionedWayCalc));
  EXPECT_EQ(high.Way(), "00");
  ToyParse<WayToyParser> plain(u"a");
  plain.parser().ServerVersion = 10;
  ASSERT_TRUE(plain.Find(&WayToyParser::versionedWayCalc));
  EXPECT_EQ(plain.Way(), "01");
}

TEST(Guards, TheLeftOperandMayBeLeftOutOnlyWhenAllowed) {
  ToyParse<WayToyParser> required(u"= b");
  EXPECT_FALSE(required.Find(&WayToyParser::predicateWayCalc));
  ToyParse<WayToyParser> optional(u"= b");
  optional.parser().RequireLeftOperand = false;
  ASSERT_TRUE(optional.Find(&WayToyParser::predicateWayCalc));
  EXPECT_EQ(optional.Way(), "00");
  ToyParse<WayToyParser> both(u"a = b");
  ASSERT_TRUE(both.Find(&WayToyParser::predicateWayCalc));
  EXPECT_EQ(both.Way(), "01");
}

TEST(Guards, NotBeforeLikeIsNoPrefix) {
  ToyParse<WayToyParser> p(u"NOT LIKE 'x'");
  EXPECT_EQ(p.Survivors(&WayToyParser::notExpressionWayCalc), (std::vector<std::string>{"0101"}))
      << "only the predicate with its own NOT";
  ToyParse<WayToyParser> prefix(u"NOT a LIKE 'x'");
  EXPECT_EQ(prefix.Survivors(&WayToyParser::notExpressionWayCalc), (std::vector<std::string>{"00110"}));
}

TEST(Guards, TextAndKindExclusions) {
  for (const auto& [text, passes] : std::vector<std::pair<std::u16string, bool>>{
           {u"name", true}, {u"foo", false}, {u"BAR", false}, {u"select", true}, {u"'foo'", true}}) {
    ToyParse<WayToyParser> p(text);
    EXPECT_EQ(p.Survivors(&WayToyParser::textWayCalc).size(), passes ? 1u : 0u) << mv::UTF8Encode(text);
  }
  ToyParse<WayToyParser> keyword(u"select");
  EXPECT_EQ(keyword.Survivors(&WayToyParser::textWayCalc), (std::vector<std::string>{"01"}))
      << "a keyword is no name here";
}

TEST(Guards, ADialectsOwnCheck) {
  ToyParse<WayToyParser> ok(u"ab abc abcde");
  EXPECT_TRUE(ok.Find(&WayToyParser::checkedWayCalc));
  ToyParse<WayToyParser> refused(u"ab abcd");
  EXPECT_FALSE(refused.Find(&WayToyParser::checkedWayCalc));
  EXPECT_EQ(refused.BadTokenText(), u"abcd");
}

TEST(Entries, DeclaredEntriesRunTheirRuleAndOthersParseNothing) {
  ToyParse<WayToyParser> p(u"a");
  EXPECT_TRUE(p.parser().FindWay(mv::TmvParserEntry::peIdentifier));
  EXPECT_EQ(p.parser().ParseIdentifier(), nullptr);
  EXPECT_FALSE(p.parser().FindWay(mv::TmvParserEntry::peSelect));
  EXPECT_FALSE(p.parser().FindWay(mv::TmvParserEntry::peExpression));
  EXPECT_EQ(p.parser().ParseSelect(), nullptr);
  // A bare token only: with both flags clear, a blank makes it fail.
  ToyParse<WayToyParser> spaced(u" a");
  spaced.scanner().SkipSpaces = false;
  EXPECT_FALSE(spaced.parser().TestWay(
      [&](TmvWayPointsList& l) { spaced.parser().EntryWayCalc(mv::TmvParserEntry::peIdentifier, l); }));
}

TEST(Entries, TheParserClassCreatesAParser) {
  const mv::TmvParserClass& cls = WayToyParser::ParserClass();
  EXPECT_EQ(cls.ClassName(), "WayToyParser");
  EXPECT_TRUE(cls.InheritsFrom(mv::TmvBaseParser::StaticClass()));
  auto scanner = mv::TmvCreate<mv::SQL92Scanner>();
  scanner->Init(u"x");
  mv::TmvOwned<mv::TmvBaseParser> parser(cls.CreateRaw(scanner.get(), nullptr));
  EXPECT_TRUE(parser->FindWay(mv::TmvParserEntry::peIdentifier));
}

TEST(Entries, HiddenKindsCanBeExpected) {
  ToyParse<WayToyParser> p(u"a b");
  EXPECT_TRUE(p.Find(&WayToyParser::spacedWayCalc));
  ToyParse<WayToyParser> joined(u"a/**/b");
  EXPECT_FALSE(joined.Find(&WayToyParser::spacedWayCalc));
}

TEST(References, AParseLeavesNoWayPointBehind) {
  const int64_t before = Live();
  {
    ToyParse<WayToyParser> p(u"a.b.c");
    ASSERT_TRUE(p.Find(&WayToyParser::dbObjectWayCalc));
    EXPECT_GT(Live(), before) << "the picked way is held by the parser";
    ToyParse<WayToyParser> failed(u"a..");
    EXPECT_FALSE(failed.Find(&WayToyParser::dbObjectWayCalc));
  }
  EXPECT_EQ(Live(), before);
}

TEST(DerivedGrammar, OverridesAddsAndDeletesRules) {
  // T is a name in the derived grammar only.
  ToyParse<WayToyParser> base(u"t.x");
  EXPECT_FALSE(base.Find(&WayToyParser::dbObjectWayCalc));
  ToyParse<mv::DerivedToyParser> derived(u"t.x");
  ASSERT_TRUE(derived.Find(&mv::DerivedToyParser::dbObjectWayCalc));
  // Outer option taken, middle skipped, then the keyword alternative of
  // identifier with T as alternative 5 of keywordAsIdentifier, then x.
  EXPECT_EQ(derived.Way(), "010250");
  ToyParse<mv::DerivedToyParser> pair(u"a.count");
  ASSERT_TRUE(pair.Find(&mv::DerivedToyParser::pairWayCalc));
  std::vector<std::u16string> names;
  pair.parser().pair(names);
  EXPECT_EQ(names, (std::vector<std::u16string>{u"count", u"a"}));
  // Members and the guards' own checks come along with the included rules.
  ToyParse<mv::DerivedToyParser> checked(u"abcd");
  EXPECT_FALSE(checked.Find(&mv::DerivedToyParser::checkedWayCalc));
}

// The generated code holds the grammar to its contracts: a check answers
// as the engine's tests do, and the second pass reads only choices that its
// rule has. Either fault is an error, not a wrong tree.
TEST(Guards, BrokenContractsRaiseInsteadOfFallingThrough) {
  ToyParse<WayToyParser> lying(u"a b");
  EXPECT_EQ(mvtest::ThrownMessage<mv::EmvQueryBuilderError>([&] { lying.Find(&WayToyParser::lyingWayCalc); }),
            u"The grammar check CheckThatLies answered false with 1 ways left");

  ToyParse<WayToyParser> term(u"((a))");
  ASSERT_TRUE(term.Find(&WayToyParser::termWayCalc));
  mv::TmvWayPointsList& way = *term.parser().Way;
  way[way.Count() - 1]->Choice = 3;  // the innermost term has three alternatives: 0 to 2
  EXPECT_EQ(mvtest::ThrownMessage<mv::EmvQueryBuilderError>([&] { term.parser().term(); }),
            u"The parser read the decision 3 where the grammar has 3 choices");
}

// @starts takes its tokens from the first set of the rule as the grammar
// that includes it defines that rule: a query that may start with WITH keeps
// its brackets in the derived grammar only.
TEST(Guards, StartsFollowsTheRuleOfTheIncludingGrammar) {
  const struct {
    const char16_t* text;
    bool base, derived;
    const char* way;  // of the derived grammar: the root, then term's and query's choices
  } cases[] = {
      {u"((select a))", true, true, "0010"},
      {u"((with a select b))", false, true, "0011"},
      {u"(with a select b)", false, true, "011"},
      {u"((a))", true, true, "0002"},
      {u"((with a))", false, false, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(mv::UTF8Encode(c.text));
    ToyParse<WayToyParser> base(c.text);
    EXPECT_EQ(base.Find(&WayToyParser::termWayCalc), c.base);
    ToyParse<mv::DerivedToyParser> derived(c.text);
    ASSERT_EQ(derived.Find(&mv::DerivedToyParser::termWayCalc), c.derived);
    if (c.derived) {
      EXPECT_EQ(derived.Way(), c.way);
    }
  }
}

}  // namespace
