#include "support/WideFormat.h"

#include <gtest/gtest.h>

#include "support/Exceptions.h"

using namespace mv;

TEST(WideFormat, IndexedArgumentsAsLanguageFilesUseThem) {
  EXPECT_EQ(WideFormat(u"%1:s-%0:s", {u"a", u"b"}), u"b-a");
  EXPECT_EQ(WideFormat(u"Error executing query:\r%0:s\rMessage:\r%1:s", {u"SELECT 1", u"boom"}),
            u"Error executing query:\rSELECT 1\rMessage:\rboom");
  EXPECT_EQ(WideFormat(u"%0:s has %1:d rows", {u"t", 12}), u"t has 12 rows");
  // After an index, a plain specifier takes the next argument.
  EXPECT_EQ(WideFormat(u"%1:s %s %0:s", {u"a", u"b", u"c"}), u"b c a");
  // The same argument twice.
  EXPECT_EQ(WideFormat(u"%0:s%0:s", {u"x"}), u"xx");
}

TEST(WideFormat, PlainSpecifiersWidthAndPrecision) {
  EXPECT_EQ(WideFormat(u"%d%%", {5}), u"5%");
  EXPECT_EQ(WideFormat(u"%s: %s: %s: %s", {u"12:00:00.000", u"0000ABCD", u"Inf", u"m"}),
            u"12:00:00.000: 0000ABCD: Inf: m");
  EXPECT_EQ(WideFormat(u"[%5d]", {42}), u"[   42]");
  EXPECT_EQ(WideFormat(u"[%-5d]", {42}), u"[42   ]");
  EXPECT_EQ(WideFormat(u"[%.4d]", {-42}), u"[-0042]");
  EXPECT_EQ(WideFormat(u"[%*d]", {4, 7}), u"[   7]");
  EXPECT_EQ(WideFormat(u"%.2s", {u"abcdef"}), u"ab");
  EXPECT_EQ(WideFormat(u"%x", {255}), u"FF");
  EXPECT_EQ(WideFormat(u"%.8x", {0x3A1F}), u"00003A1F");
  EXPECT_EQ(WideFormat(u"%d", {INT64_MIN}), u"-9223372036854775808");
}

TEST(WideFormat, FloatingPointForms) {
  EXPECT_EQ(WideFormat(u"%f", {1.5}), u"1.50");
  EXPECT_EQ(WideFormat(u"%.3f", {2.0}), u"2.000");
  EXPECT_EQ(WideFormat(u"%n", {1234567.891}), u"1,234,567.89");
  EXPECT_EQ(WideFormat(u"%g", {0.5}), u"0.5");
  EXPECT_EQ(WideFormat(u"%e", {1500.0}), u"1.50000000000000E+003");
  EXPECT_EQ(WideFormat(u"%.3e", {-0.000125}), u"-1.25E-004");
  EXPECT_EQ(WideFormat(u"%g", {1e20}), u"1E+020");
  // A huge precision from the arguments is bounded, not a crash.
  EXPECT_EQ(WideFormat(u"%.*f", {1000000, 1.0}).size(), 1002u);
}

TEST(WideFormat, MismatchAndMissingArgumentsRaise) {
  EXPECT_THROW(WideFormat(u"%d", {u"text"}), EConvertError);
  EXPECT_THROW(WideFormat(u"%s", {3}), EConvertError);
  EXPECT_THROW(WideFormat(u"%f", {3}), EConvertError);
  EXPECT_THROW(WideFormat(u"%s %s", {u"one"}), EConvertError);
  EXPECT_THROW(WideFormat(u"%2:s", {u"a", u"b"}), EConvertError);
  EXPECT_THROW(WideFormat(u"abc %", {}), EConvertError);
  EXPECT_THROW(WideFormat(u"%q", {1}), EConvertError);
  // Text without specifiers needs no arguments.
  EXPECT_EQ(WideFormat(u"100 percent", {}), u"100 percent");
}
