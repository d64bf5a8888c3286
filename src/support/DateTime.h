// Calendar arithmetic on TmvDateTime values: days since 1899-12-30, the
// fraction being the time of day. Before that day the value is negative and
// the time still counts forward from midnight: -1.25 is 1899-12-29 06:00.
// Years 1 to 9999; times to the millisecond.
#pragma once

#include "support/Variant.h"

namespace mv {

// False for a date that does not exist (month 13, 30 February, year 0).
bool TryEncodeDate(int year, int month, int day, TmvDateTime& result);
// Raises EConvertError "Invalid argument to date encode".
TmvDateTime EncodeDate(int year, int month, int day);
// False unless hour < 24, minute < 60, second < 60, millisecond < 1000.
bool TryEncodeTime(int hour, int minute, int second, int millisecond, TmvDateTime& result);
// Raises EConvertError "Invalid argument to time encode".
TmvDateTime EncodeTime(int hour, int minute, int second, int millisecond);

// Joins a date (whole days) and a time of day (a fraction from 0 to 1).
TmvDateTime ComposeDateTime(TmvDateTime date, TmvDateTime time);

// The parts of a value. The time is rounded to the millisecond; a time that
// rounds up to midnight belongs to the next day.
void DecodeDate(TmvDateTime value, int& year, int& month, int& day);
void DecodeTime(TmvDateTime value, int& hour, int& minute, int& second, int& millisecond);
void DecodeDateTime(TmvDateTime value, int& year, int& month, int& day, int& hour, int& minute, int& second,
                    int& millisecond);

// The date part alone, and the time of day alone.
TmvDateTime DateOf(TmvDateTime value);
TmvDateTime TimeOf(TmvDateTime value);

// The same date, hours and minutes, with seconds and milliseconds 0.
TmvDateTime TruncSeconds(TmvDateTime value);

}  // namespace mv
