#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Thrown.h"
#include "support/Exceptions.h"

using namespace mv;

TEST(SQLQuoting, QuoteDoublesEachSingleQuote) {
  EXPECT_EQ(SQLQuoteStringContent(u"it's"), u"it''s");
  EXPECT_EQ(SQLQuoteStringContent(u"''"), u"''''");
  EXPECT_EQ(SQLQuoteString(u""), u"''");
  // One quote makes the text two characters (the outer quotes) and one quote longer.
  const WideString text = u"O'Brien";
  const WideString quoted = SQLQuoteString(text);
  EXPECT_EQ(quoted, u"'O''Brien'");
  EXPECT_EQ(quoted.size(), text.size() + 3);
}

TEST(SQLQuoting, UnquoteLeavesShortOrUnquotedTextAlone) {
  EXPECT_EQ(SQLUnquoteString(u"'"), u"'");
  EXPECT_EQ(SQLUnquoteString(u""), u"");
  EXPECT_EQ(SQLUnquoteString(u"abc"), u"abc");
  EXPECT_EQ(SQLUnquoteString(u"'abc"), u"'abc");
  EXPECT_EQ(SQLUnquoteString(u"abc'"), u"abc'");
  EXPECT_EQ(SQLUnquoteString(u"\"abc\""), u"\"abc\"");
  EXPECT_EQ(SQLUnquoteString(u"''"), u"");
  EXPECT_EQ(SQLUnquoteString(u"'a''b'"), u"a'b");
  EXPECT_EQ(SQLUnquoteString(u"''''"), u"'");
}

TEST(SQLQuoting, RoundTripsAnyText) {
  const WideString samples[] = {u"", u"'", u"''", u"a'b'c", u"'lead", u"trail'", u"ünï'cødé 世界", u"x''y"};
  for (const WideString& s : samples) EXPECT_EQ(SQLUnquoteString(SQLQuoteString(s)), s) << UTF8Encode(s);
  std::mt19937 random(42);
  for (int round = 0; round < 200; ++round) {
    WideString s;
    const int length = random() % 12;
    for (int i = 0; i < length; ++i) s += u"'a b"[random() % 4];
    EXPECT_EQ(SQLUnquoteString(SQLQuoteString(s)), s);
  }
}

TEST(HTMLEncodeParams, EscapesTheListedCharacters) {
  EXPECT_EQ(HTMLEncodeParams(u" "), u"%20");
  EXPECT_EQ(HTMLEncodeParams(u"a*b#c%d<e>f[g]h"), u"a%2Ab%23c%25d%3Ce%3Ef%5Bg%5Dh");
  EXPECT_EQ(HTMLEncodeParams(u"plain-text_1.2/x?y=z&w"), u"plain-text_1.2/x?y=z&w");
  EXPECT_EQ(HTMLEncodeParams(WideString(1, u'\0') + u"\t\n\x1F!"), u"%00%09%0A%1F!");
}

TEST(HTMLEncodeParams, EightBitAndWiderCharacters) {
  // 128 stays, 129 to 255 by their code.
  EXPECT_EQ(HTMLEncodeParams(u"\x80"), u"\x80");
  EXPECT_EQ(HTMLEncodeParams(u"\x81\xE9\xFF"), u"%81%E9%FF");
  // From 256 up: each UTF-8 byte.
  EXPECT_EQ(HTMLEncodeParams(u"\u20AC"), u"%E2%82%AC");
  EXPECT_EQ(HTMLEncodeParams(u"\U0001F600"), u"%F0%9F%98%80");  // a surrogate pair is one character
  EXPECT_EQ(HTMLEncodeParams(WideString(1, char16_t(0xD800)) + u"x"), u"%EF%BF%BDx");
}

TEST(BoolToStr, NumbersOrWords) {
  EXPECT_EQ(BoolToStr(true), u"-1");
  EXPECT_EQ(BoolToStr(false), u"0");
  EXPECT_EQ(BoolToStr(true, true), u"True");
  EXPECT_EQ(BoolToStr(false, true), u"False");
}

TEST(RLE, EncodesPairsOfCountMinusOneAndByte) {
  EXPECT_EQ(RLEEncode(""), "");
  EXPECT_EQ(RLEEncode("aaab"), std::string("\x02" "a" "\x00" "b", 4));
  EXPECT_EQ(RLEEncode("abab"), std::string("\0a\0b\0a\0b", 8));
}

TEST(RLE, LongRunsAreSplitAt256) {
  const std::string encoded = RLEEncode(std::string(300, 'x'));
  ASSERT_EQ(encoded.size(), 4u);
  EXPECT_EQ(static_cast<unsigned char>(encoded[0]), 255);
  EXPECT_EQ(encoded[1], 'x');
  EXPECT_EQ(static_cast<unsigned char>(encoded[2]), 43);
  EXPECT_EQ(encoded[3], 'x');
  EXPECT_EQ(RLEEncode(std::string(256, 'y')), std::string("\xFFy", 2));
  EXPECT_EQ(RLEEncode(std::string(257, 'y')), std::string("\xFFy\0y", 4));
}

TEST(RLE, DecodeOfEncodeIsTheInputForAllBytes) {
  std::string all;
  for (int b = 0; b < 256; ++b) all += static_cast<char>(b);
  EXPECT_EQ(RLEDecode(RLEEncode(all)), all);
  for (int b = 0; b < 256; ++b) {
    const std::string run(b + 1, static_cast<char>(b));
    EXPECT_EQ(RLEDecode(RLEEncode(run)), run) << b;
  }
  std::mt19937 random(7);
  for (int round = 0; round < 100; ++round) {
    std::string s;
    const int pieces = random() % 20;
    for (int i = 0; i < pieces; ++i) s.append(random() % 600, static_cast<char>(random() % 3));
    EXPECT_EQ(RLEDecode(RLEEncode(s)), s);
  }
}

TEST(RLE, OddLengthRaisesAPlainException) {
  const auto e = mvtest::Thrown<Exception>([] { RLEDecode(std::string("\x02" "a" "\x01", 3)); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->Message(), u"Bad encoded string length");
  EXPECT_STREQ(e->ClassName(), "Exception");
  EXPECT_EQ(RLEDecode(std::string("\xFF\0", 2)), std::string(256, '\0'));
}
