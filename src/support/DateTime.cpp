#include "support/DateTime.h"

#include <cmath>
#include <cstdint>

namespace mv {

namespace {

constexpr int64_t kMsPerDay = 86400000;
// Days from 1970-01-01 back to 1899-12-30.
constexpr int64_t kEpochOffset = 25569;

// Days since 1970-01-01 of a proleptic Gregorian date.
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int& year, int& month, int& day) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(static_cast<int64_t>(yoe) + era * 400 + (month <= 2));
}

bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int DaysInMonth(int year, int month) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

// The calendar day (as a day number) and the millisecond of that day.
void Split(TmvDateTime value, int64_t& day, int64_t& ms) {
  // Far outside any calendar, or not a number at all.
  if (!(std::fabs(value.value) < 1e9)) throw EConvertError(u"Invalid date and time value");
  const double whole = std::trunc(value.value);
  day = static_cast<int64_t>(whole);
  ms = std::llround(std::fabs(value.value - whole) * kMsPerDay);
  if (ms >= kMsPerDay) {
    ++day;
    ms = 0;
  }
}

TmvDateTime Join(int64_t day, int64_t ms) {
  return ComposeDateTime(TmvDateTime{static_cast<double>(day)}, TmvDateTime{static_cast<double>(ms) / kMsPerDay});
}

}  // namespace

bool TryEncodeDate(int year, int month, int day, TmvDateTime& result) {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month))
    return false;
  result.value = static_cast<double>(DaysFromCivil(year, month, day) + kEpochOffset);
  return true;
}

TmvDateTime EncodeDate(int year, int month, int day) {
  TmvDateTime result;
  if (!TryEncodeDate(year, month, day, result)) throw EConvertError(u"Invalid argument to date encode");
  return result;
}

bool TryEncodeTime(int hour, int minute, int second, int millisecond, TmvDateTime& result) {
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59 || millisecond < 0 ||
      millisecond > 999)
    return false;
  const int64_t ms = ((int64_t(hour) * 60 + minute) * 60 + second) * 1000 + millisecond;
  result.value = static_cast<double>(ms) / kMsPerDay;
  return true;
}

TmvDateTime EncodeTime(int hour, int minute, int second, int millisecond) {
  TmvDateTime result;
  if (!TryEncodeTime(hour, minute, second, millisecond, result))
    throw EConvertError(u"Invalid argument to time encode");
  return result;
}

TmvDateTime ComposeDateTime(TmvDateTime date, TmvDateTime time) {
  return TmvDateTime{date.value >= 0 ? date.value + time.value : date.value - time.value};
}

void DecodeDate(TmvDateTime value, int& year, int& month, int& day) {
  int64_t days, ms;
  Split(value, days, ms);
  CivilFromDays(days - kEpochOffset, year, month, day);
}

void DecodeTime(TmvDateTime value, int& hour, int& minute, int& second, int& millisecond) {
  int64_t days, ms;
  Split(value, days, ms);
  millisecond = static_cast<int>(ms % 1000);
  second = static_cast<int>(ms / 1000 % 60);
  minute = static_cast<int>(ms / 60000 % 60);
  hour = static_cast<int>(ms / 3600000);
}

void DecodeDateTime(TmvDateTime value, int& year, int& month, int& day, int& hour, int& minute, int& second,
                    int& millisecond) {
  DecodeDate(value, year, month, day);
  DecodeTime(value, hour, minute, second, millisecond);
}

TmvDateTime DateOf(TmvDateTime value) {
  int64_t days, ms;
  Split(value, days, ms);
  return TmvDateTime{static_cast<double>(days)};
}

TmvDateTime TimeOf(TmvDateTime value) {
  int64_t days, ms;
  Split(value, days, ms);
  return TmvDateTime{static_cast<double>(ms) / kMsPerDay};
}

TmvDateTime TruncSeconds(TmvDateTime value) {
  int64_t days, ms;
  Split(value, days, ms);
  return Join(days, ms - ms % 60000);
}

}  // namespace mv
