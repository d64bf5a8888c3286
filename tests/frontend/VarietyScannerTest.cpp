// A scanner generated from grammars/Variety.tokens: the forms that differ
// between dialects come out of a description as the description says.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ParseHelpers.h"
#include "VarietyScan.h"

namespace {

using mv::VarietyScanner;
using mv::WideString;
using Tok = mvtest::ScannedToken;

std::vector<Tok> Scan(const WideString& text, bool withHidden = false) {
  return mvtest::ScanTokens<VarietyScanner>(text, withHidden);
}

constexpr int32_t kName = VarietyScanner::tkIdentifierToken;
constexpr int32_t kString = VarietyScanner::tkStringToken;
constexpr int32_t kQuoted = VarietyScanner::tkQuotedIdentifierToken;

TEST(VarietyScanner, QuoteStringsEndAtTheNextQuoteAndTakeBackslashes) {
  EXPECT_EQ(Scan(u"'a''b'"), (std::vector<Tok>{{kString, u"'a'"}, {kString, u"'b'"}}));
  EXPECT_EQ(Scan(u"'a\\'b'"), (std::vector<Tok>{{kString, u"'a\\'b'"}}));
  EXPECT_EQ(Scan(u"'open"), (std::vector<Tok>{{kString, u"'open"}})) << "never partial";
}

TEST(VarietyScanner, DollarQuotedStrings) {
  EXPECT_EQ(Scan(u"$$abc$$ x"), (std::vector<Tok>{{kString, u"$$abc$$"}, {kName, u"x"}}));
  EXPECT_EQ(Scan(u"$tag$a $b$ c$tag$"), (std::vector<Tok>{{kString, u"$tag$a $b$ c$tag$"}}));
  // Without the closing delimiter the automaton reads the $ as the start of a
  // name (here one that may also end in $).
  EXPECT_EQ(Scan(u"$$abc"), (std::vector<Tok>{{kName, u"$$"}, {kName, u"abc"}}));
  EXPECT_EQ(Scan(u"$1"), (std::vector<Tok>{{kName, u"$1"}}));
}

TEST(VarietyScanner, QuotedNamesInBracketsAndBackQuotes) {
  EXPECT_EQ(Scan(u"[a]]b]"), (std::vector<Tok>{{kQuoted, u"[a]]b]"}}));
  EXPECT_EQ(Scan(u"`a``b`"), (std::vector<Tok>{{kQuoted, u"`a``b`"}}));
  EXPECT_EQ(Scan(u"[open"), (std::vector<Tok>{{kQuoted, u"[open", true}}));
  EXPECT_EQ(Scan(u"\"a\\\"b\"\"c\""), (std::vector<Tok>{{VarietyScanner::tkDoubleQuotedString, u"\"a\\\"b\"\"c\""}}));
}

TEST(VarietyScanner, PrefixedStringsAreOneToken) {
  EXPECT_EQ(Scan(u"N'abc' n'x''y'"),
            (std::vector<Tok>{{VarietyScanner::tkNationalString, u"N'abc'"}, {VarietyScanner::tkNationalString, u"n'x''y'"}}));
  EXPECT_EQ(Scan(u"nx"), (std::vector<Tok>{{kName, u"nx"}}));
}

TEST(VarietyScanner, NameCharacters) {
  EXPECT_EQ(Scan(u"a/b"), (std::vector<Tok>{{kName, u"a/b"}}));
  EXPECT_EQ(Scan(u"ab$c"), (std::vector<Tok>{{kName, u"ab$"}, {kName, u"c"}})) << "$ ends a name";
  EXPECT_EQ(Scan(u"\u00e9t\u00e9"), (std::vector<Tok>{{kName, u"\u00e9t\u00e9"}}));
  EXPECT_EQ(Scan(u"{"), (std::vector<Tok>{{VarietyScanner::NoSym, u"{"}}));
}

TEST(VarietyScanner, VariablesParametersAndKeywordsBehindThem) {
  EXPECT_EQ(Scan(u"@a @@rowcount @@ROWCOUNT @@other :p"),
            (std::vector<Tok>{{VarietyScanner::tkVariable, u"@a"},
                              {VarietyScanner::kwROWCOUNT, u"@@rowcount"},
                              {VarietyScanner::kwROWCOUNT, u"@@ROWCOUNT"},
                              {VarietyScanner::tkVariable, u"@@other"},
                              {VarietyScanner::tkParameter, u":p"}}));
  EXPECT_EQ(Scan(u"@"), (std::vector<Tok>{{VarietyScanner::tkVariable, u"@", true}}));
}

TEST(VarietyScanner, OperatorRunsAreOneTokenThatCheckLiteralSortsOut) {
  EXPECT_EQ(Scan(u"a<>b || ~*"),
            (std::vector<Tok>{{kName, u"a"},
                              {VarietyScanner::tkOperator, u"<>"},
                              {kName, u"b"},
                              {VarietyScanner::kwCONCAT, u"||"},
                              {VarietyScanner::tkOperator, u"~*"}}));
}

TEST(VarietyScanner, PartialForms) {
  EXPECT_EQ(Scan(u"0x1f"), (std::vector<Tok>{{VarietyScanner::tkIntegerToken, u"0x", true}, {VarietyScanner::tkIntegerToken, u"1"}, {kName, u"f"}}));
  EXPECT_EQ(Scan(u"0 1. 1.5"),
            (std::vector<Tok>{{VarietyScanner::tkIntegerToken, u"0"}, {VarietyScanner::tkRealToken, u"1.", true},
                              {VarietyScanner::tkRealToken, u"1.5"}}));
}

TEST(VarietyScanner, CommentsAreTestedInTheirOrder) {
  EXPECT_EQ(Scan(u"a # x\nb // y\nc /* 1 /* 2 */ 3 */ d", true),
            (std::vector<Tok>{{kName, u"a"},
                              {2, u" "},
                              {VarietyScanner::tkHashComment, u"# x"},
                              {1, u"\r"},
                              {kName, u"b"},
                              {2, u" "},
                              {VarietyScanner::tkSlashComment, u"// y"},
                              {1, u"\r"},
                              {kName, u"c"},
                              {2, u" "},
                              {VarietyScanner::tkBlockComment, u"/* 1 /* 2 */ 3 */"},
                              {2, u" "},
                              {kName, u"d"}}));
  // A slash that opens no comment is an ordinary character: here it starts nothing.
  EXPECT_EQ(Scan(u"/ x"), (std::vector<Tok>{{VarietyScanner::NoSym, u"/"}, {kName, u"x"}}));
}

}  // namespace
