// Conversions between text and numbers, dates and times under explicit
// formats. Nothing here reads or changes process-wide settings, so every
// routine may run on any thread.
#pragma once

#include "support/DateTime.h"
#include "support/WideString.h"

namespace mv {

struct TmvFormatSettings {
  // The order of day, month and year in a date is that of the first of the
  // letters d, m, y in ShortDateFormat ("dd-mm-yy": day, month, year).
  WideString ShortDateFormat = u"yyyy-mm-dd";
  WideString ShortTimeFormat = u"hh:nn:ss";
  char16_t DateSeparator = u'-';
  char16_t TimeSeparator = u':';
  char16_t DecimalSeparator = u'.';
  // A two-digit year falls into the hundred years that end this many years
  // after the current one (0: the current century).
  int TwoDigitYearCenturyWindow = 50;
};

// --- Numbers ---

// Blanks, an optional sign, digits with at most one decimal separator, and
// an optional exponent ("E-3"). No thousands separators, no "inf" or "nan".
bool TryStrToFloat(WideStringView text, double& value, const TmvFormatSettings& settings);
inline bool TryStrToFloat(WideStringView text, double& value) {
  return TryStrToFloat(text, value, TmvFormatSettings());
}
// Raises EConvertError "'text' is not a valid floating point value".
double StrToFloat(WideStringView text, const TmvFormatSettings& settings);

// --- Dates and times ---

// A date: two or three numbers joined by DateSeparator, in the order of
// ShortDateFormat; two numbers are day and month of the current year; a
// year of one or two digits takes its century from the window.
bool TryStrToDate(WideStringView text, TmvDateTime& value, const TmvFormatSettings& settings);
// A time: hours [":" minutes [":" seconds ["." fraction]]], with
// TimeSeparator and DecimalSeparator, and "AM" or "PM" before or after.
// The fraction counts in tenths, hundredths and thousandths of a second;
// further digits are dropped.
bool TryStrToTime(WideStringView text, TmvDateTime& value, const TmvFormatSettings& settings);
// A date optionally followed by a time, or a time alone.
bool TryStrToDateTime(WideStringView text, TmvDateTime& value, const TmvFormatSettings& settings);

// The value written by a format of the letters
//   yyyy yy  m mm  d dd  h hh  n nn  s ss  z zzz  am/pm
// where "m" right after an hour means minutes, "/" stands for DateSeparator
// and ":" for TimeSeparator, text in quotes is copied without the quotes,
// and any other character is copied. "yyyy-mm-dd hh:nn:ss.zzz" gives
// "2024-03-09 07:05:03.042".
WideString FormatDateTime(WideStringView format, TmvDateTime value, const TmvFormatSettings& settings);
inline WideString FormatDateTime(WideStringView format, TmvDateTime value) {
  return FormatDateTime(format, value, TmvFormatSettings());
}

}  // namespace mv
