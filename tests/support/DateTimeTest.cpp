#include "support/DateTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <thread>
#include <vector>

#include "Thrown.h"
#include "support/Exceptions.h"
#include "support/FormatSettings.h"

using namespace mv;

namespace {

struct Parts {
  int y, m, d, h, n, s, z;
  bool operator==(const Parts&) const = default;
};

Parts Decode(TmvDateTime v) {
  Parts p{};
  DecodeDateTime(v, p.y, p.m, p.d, p.h, p.n, p.s, p.z);
  return p;
}

int ThisYear() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local.tm_year + 1900;
}

TmvFormatSettings Settings(const char16_t* dateFormat, char16_t dateSeparator) {
  TmvFormatSettings s;
  s.ShortDateFormat = dateFormat;
  s.DateSeparator = dateSeparator;
  return s;
}

}  // namespace

TEST(DateTime, DaysCountFrom18991230) {
  EXPECT_EQ(EncodeDate(1899, 12, 30).value, 0);
  EXPECT_EQ(EncodeDate(1900, 1, 1).value, 2);
  EXPECT_EQ(EncodeDate(2000, 1, 1).value, 36526);
  EXPECT_EQ(EncodeDate(1899, 12, 29).value, -1);
  EXPECT_EQ(EncodeDate(1, 1, 1).value, -693593);
  EXPECT_EQ(EncodeDate(9999, 12, 31).value, 2958465);
  EXPECT_EQ(EncodeTime(12, 0, 0, 0).value, 0.5);
  EXPECT_EQ(EncodeTime(6, 0, 0, 0).value, 0.25);
}

TEST(DateTime, InvalidPartsAreRefused) {
  TmvDateTime v;
  EXPECT_FALSE(TryEncodeDate(2023, 2, 29, v));
  EXPECT_TRUE(TryEncodeDate(2024, 2, 29, v));
  EXPECT_FALSE(TryEncodeDate(1900, 2, 29, v));
  EXPECT_TRUE(TryEncodeDate(2000, 2, 29, v));
  EXPECT_FALSE(TryEncodeDate(0, 1, 1, v));
  EXPECT_FALSE(TryEncodeDate(10000, 1, 1, v));
  EXPECT_FALSE(TryEncodeDate(2024, 13, 1, v));
  EXPECT_FALSE(TryEncodeDate(2024, 4, 31, v));
  EXPECT_FALSE(TryEncodeTime(24, 0, 0, 0, v));
  EXPECT_FALSE(TryEncodeTime(0, 60, 0, 0, v));
  EXPECT_FALSE(TryEncodeTime(0, 0, 0, 1000, v));
  EXPECT_THROW(EncodeDate(2024, 2, 30), EConvertError);
  EXPECT_THROW(EncodeTime(25, 0, 0, 0), EConvertError);
  int y, m, d;
  EXPECT_THROW(DecodeDate(TmvDateTime{1e300}, y, m, d), EConvertError);
  EXPECT_THROW(TruncSeconds(TmvDateTime{std::nan("")}), EConvertError);
}

TEST(DateTime, DecodeRoundTripsEveryDayOfSomeYears) {
  for (int year : {1, 1600, 1899, 1900, 2000, 2024, 9999}) {
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= 31; ++day) {
        TmvDateTime date;
        if (!TryEncodeDate(year, month, day, date)) continue;
        int y, m, d;
        DecodeDate(date, y, m, d);
        ASSERT_EQ((std::vector<int>{y, m, d}), (std::vector<int>{year, month, day}));
      }
    }
  }
}

TEST(DateTime, TruncSecondsKeepsDateHoursAndMinutes) {
  const TmvDateTime date = EncodeDate(2024, 3, 9);
  const TmvDateTime value = ComposeDateTime(date, EncodeTime(12, 34, 56, 789));
  EXPECT_EQ(Decode(TruncSeconds(value)), (Parts{2024, 3, 9, 12, 34, 0, 0}));
  EXPECT_EQ(TruncSeconds(date), date);
  EXPECT_EQ(DateOf(value), date);
  EXPECT_EQ(TimeOf(value), EncodeTime(12, 34, 56, 789));
  // Negative values count the time forward from midnight.
  const TmvDateTime before = ComposeDateTime(EncodeDate(1899, 12, 29), EncodeTime(6, 0, 0, 0));
  EXPECT_EQ(before.value, -1.25);
  EXPECT_EQ(Decode(before), (Parts{1899, 12, 29, 6, 0, 0, 0}));
  EXPECT_EQ(Decode(TruncSeconds(ComposeDateTime(EncodeDate(1800, 5, 6), EncodeTime(7, 8, 9, 10)))),
            (Parts{1800, 5, 6, 7, 8, 0, 0}));
  // Time that rounds up to midnight belongs to the next day.
  const TmvDateTime almost{EncodeDate(2024, 12, 31).value + 0.9999999999};
  EXPECT_EQ(Decode(almost), (Parts{2025, 1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(TruncSeconds(almost), EncodeDate(2025, 1, 1));
}

TEST(FormatSettings, FloatsWithTheGivenDecimalSeparator) {
  double v = 0;
  EXPECT_TRUE(TryStrToFloat(u" -12.5e2 ", v));
  EXPECT_EQ(v, -1250);
  EXPECT_TRUE(TryStrToFloat(u".5", v));
  EXPECT_EQ(v, 0.5);
  EXPECT_TRUE(TryStrToFloat(u"+3.", v));
  EXPECT_EQ(v, 3);
  for (const char16_t* bad : {u"", u" ", u"1,5", u"1.2.3", u"e5", u"1e", u"inf", u"nan", u"0x10", u"1 2", u"-"})
    EXPECT_FALSE(TryStrToFloat(bad, v)) << UTF8Encode(bad);
  TmvFormatSettings comma;
  comma.DecimalSeparator = u',';
  EXPECT_TRUE(TryStrToFloat(u"1,25", v, comma));
  EXPECT_EQ(v, 1.25);
  EXPECT_FALSE(TryStrToFloat(u"1.25", v, comma));
  EXPECT_EQ(StrToFloat(u"2,5", comma), 2.5);
  EXPECT_EQ(mvtest::ThrownMessage<EConvertError>([&] { StrToFloat(u"abc", comma); }),
            u"'abc' is not a valid floating point value");
  EXPECT_FALSE(TryStrToFloat(u"1e999", v));  // out of range
}

TEST(FormatSettings, DatesInTheOrderOfTheShortFormat) {
  TmvDateTime v;
  const std::tuple<const char16_t*, TmvFormatSettings, TmvDateTime> good[] = {
      {u"2024-03-09", TmvFormatSettings(), EncodeDate(2024, 3, 9)},
      {u"09.03.2024", Settings(u"dd.mm.yyyy", u'.'), EncodeDate(2024, 3, 9)},
      {u"3/9/2024", Settings(u"m/d/yyyy", u'/'), EncodeDate(2024, 3, 9)},
      {u" 9 - 3 - 2024 ", Settings(u"dd-mm-yyyy", u'-'), EncodeDate(2024, 3, 9)},
      // Two numbers: day and month of this year.
      {u"9-3", Settings(u"dd-mm-yy", u'-'), EncodeDate(ThisYear(), 3, 9)},
  };
  for (const auto& [text, settings, date] : good) {
    ASSERT_TRUE(TryStrToDate(text, v, settings)) << UTF8Encode(text);
    EXPECT_EQ(v, date) << UTF8Encode(text);
  }
  // A wrong separator, no such day, text after the date, nothing.
  for (const char16_t* bad : {u"2024/03/09", u"2024-02-30", u"2024-03-09 x", u""})
    EXPECT_FALSE(TryStrToDate(bad, v, TmvFormatSettings())) << UTF8Encode(bad);
}

TEST(FormatSettings, TwoDigitYearsUseTheCenturyWindow) {
  TmvDateTime v;
  const int base = ThisYear() - 50;
  const int twoDigits = (base + 1) % 100;  // just inside the window
  const TmvFormatSettings dmy = Settings(u"dd-mm-yy", u'-');
  ASSERT_TRUE(TryStrToDate(u"01-01-" + WideFromAscii(std::to_string(100 + twoDigits).substr(1)), v, dmy));
  int y, m, d;
  DecodeDate(v, y, m, d);
  EXPECT_EQ(y, base + 1);
  ASSERT_TRUE(TryStrToDate(u"01-01-" + WideFromAscii(std::to_string(100 + base % 100).substr(1)), v, dmy));
  DecodeDate(v, y, m, d);
  EXPECT_EQ(y, base);
  ASSERT_TRUE(TryStrToDate(u"01-01-0024", v, dmy));  // four digits are taken as written
  DecodeDate(v, y, m, d);
  EXPECT_EQ(y, 24);
}

TEST(FormatSettings, TimesWithSecondsFractionAndMarkers) {
  const TmvFormatSettings s;
  TmvDateTime v;
  const std::pair<const char16_t*, TmvDateTime> good[] = {
      {u"12:34:56.789", EncodeTime(12, 34, 56, 789)}, {u"7", EncodeTime(7, 0, 0, 0)},
      {u"7:05", EncodeTime(7, 5, 0, 0)},              {u"1:02:03.5", EncodeTime(1, 2, 3, 500)},
      {u"1:02:03.12345", EncodeTime(1, 2, 3, 123)},   {u"12:15 am", EncodeTime(0, 15, 0, 0)},
      {u"PM 3:00", EncodeTime(15, 0, 0, 0)},
  };
  for (const auto& [text, time] : good) {
    ASSERT_TRUE(TryStrToTime(text, v, s)) << UTF8Encode(text);
    EXPECT_EQ(v, time) << UTF8Encode(text);
  }
  for (const char16_t* bad : {u"13:00 PM", u"24:00", u"12:", u"12:00:00."}) EXPECT_FALSE(TryStrToTime(bad, v, s));
  TmvFormatSettings dots;
  dots.TimeSeparator = u'.';
  dots.DecimalSeparator = u',';
  ASSERT_TRUE(TryStrToTime(u"12.34.56,7", v, dots));
  EXPECT_EQ(v, EncodeTime(12, 34, 56, 700));
}

TEST(FormatSettings, DateTimeIsADateWithAnOptionalTimeOrATimeAlone) {
  const TmvFormatSettings s;
  TmvDateTime v;
  ASSERT_TRUE(TryStrToDateTime(u"2024-03-09 12:34:56", v, s));
  EXPECT_EQ(v, ComposeDateTime(EncodeDate(2024, 3, 9), EncodeTime(12, 34, 56, 0)));
  ASSERT_TRUE(TryStrToDateTime(u"2024-03-09", v, s));
  EXPECT_EQ(v, EncodeDate(2024, 3, 9));
  ASSERT_TRUE(TryStrToDateTime(u"10:30", v, s));
  EXPECT_EQ(v, EncodeTime(10, 30, 0, 0));
  ASSERT_TRUE(TryStrToDateTime(u"1899-12-29 06:00", v, s));
  EXPECT_EQ(v.value, -1.25);
  EXPECT_FALSE(TryStrToDateTime(u"2024-03-09 25:00", v, s));
  EXPECT_FALSE(TryStrToDateTime(u"yesterday", v, s));
}

TEST(FormatSettings, FormatDateTimeWritesTheLetters) {
  const TmvDateTime v = ComposeDateTime(EncodeDate(2024, 3, 9), EncodeTime(7, 5, 3, 42));
  EXPECT_EQ(FormatDateTime(u"yyyy-mm-dd hh:nn:ss.zzz", v), u"2024-03-09 07:05:03.042");
  EXPECT_EQ(FormatDateTime(u"d/m/yy h:n:s z", v), u"9-3-24 7:5:3 42");
  EXPECT_EQ(FormatDateTime(u"hh:mm", v), u"07:05");  // m after an hour: minutes
  EXPECT_EQ(FormatDateTime(u"h:nn am/pm", ComposeDateTime(EncodeDate(2024, 3, 9), EncodeTime(15, 0, 0, 0))),
            u"3:00 pm");
  EXPECT_EQ(FormatDateTime(u"hh AM/PM", EncodeDate(2024, 3, 9)), u"12 AM");
  EXPECT_EQ(FormatDateTime(u"'at' hh \"o'clock\"", v), u"at 07 o'clock");
  TmvFormatSettings dots = Settings(u"dd.mm.yyyy", u'.');
  dots.TimeSeparator = u'-';
  EXPECT_EQ(FormatDateTime(u"dd/mm/yyyy hh:nn", v, dots), u"09.03.2024 07-05");
}

TEST(FormatSettings, ConversionsRunOnManyThreadsWithDifferentSettings) {
  std::vector<std::thread> threads;
  std::vector<int> failures(4, 0);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t, &failures] {
      TmvFormatSettings s = t % 2 ? Settings(u"dd.mm.yyyy", u'.') : Settings(u"yyyy-mm-dd", u'-');
      s.DecimalSeparator = t % 2 ? u',' : u'.';
      const WideString date = t % 2 ? u"09.03.2024" : u"2024-03-09";
      const WideString number = t % 2 ? u"1,5" : u"1.5";
      for (int i = 0; i < 2000; ++i) {
        TmvDateTime v;
        double d;
        if (!TryStrToDate(date, v, s) || v != EncodeDate(2024, 3, 9)) ++failures[t];
        if (!TryStrToFloat(number, d, s) || d != 1.5) ++failures[t];
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures, (std::vector<int>{0, 0, 0, 0}));
}
