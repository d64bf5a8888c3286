#include "support/FormatSettings.h"

#include <charconv>
#include <cstdio>
#include <ctime>
#include <string>
#include <system_error>

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// A cursor over the text being scanned.
struct Scanner {
  WideStringView text;
  size_t pos = 0;

  void SkipBlanks() {
    while (pos < text.size() && text[pos] == u' ') ++pos;
  }
  bool AtEnd() {
    SkipBlanks();
    return pos >= text.size();
  }
  // Blanks, then `c`.
  bool Char(char16_t c) {
    SkipBlanks();
    if (pos < text.size() && text[pos] == c) {
      ++pos;
      return true;
    }
    return false;
  }
  // Blanks, then `word` without regard to case.
  bool Word(WideStringView word) {
    SkipBlanks();
    if (pos + word.size() > text.size() || !WideSameText(text.substr(pos, word.size()), word)) return false;
    pos += word.size();
    return true;
  }
  // Blanks, then up to nine digits; `length` is the number of digits.
  bool Number(int& value, int& length) {
    SkipBlanks();
    value = 0;
    length = 0;
    while (pos < text.size() && IsDigit(text[pos])) {
      if (length == 9) return false;
      value = value * 10 + (text[pos++] - u'0');
      ++length;
    }
    return length > 0;
  }
};

enum class DateOrder { MDY, DMY, YMD };

DateOrder OrderOf(WideStringView format) {
  for (char16_t c : format) {
    switch (WideUpCase(c)) {
      case u'Y': return DateOrder::YMD;
      case u'M': return DateOrder::MDY;
      case u'D': return DateOrder::DMY;
      default: break;
    }
  }
  return DateOrder::MDY;
}

int CurrentYear() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local.tm_year + 1900;
}

bool ScanDate(Scanner& s, TmvDateTime& date, const TmvFormatSettings& settings) {
  int n1, n2, n3, l1, l2, l3;
  if (!(s.Number(n1, l1) && s.Char(settings.DateSeparator) && s.Number(n2, l2))) return false;
  const DateOrder order = OrderOf(settings.ShortDateFormat);
  int year, month, day;
  if (s.Char(settings.DateSeparator)) {
    if (!s.Number(n3, l3)) return false;
    int yearLength;
    switch (order) {
      case DateOrder::MDY: year = n3, yearLength = l3, month = n1, day = n2; break;
      case DateOrder::DMY: year = n3, yearLength = l3, month = n2, day = n1; break;
      default: year = n1, yearLength = l1, month = n2, day = n3; break;
    }
    if (yearLength <= 2) {
      const int window = settings.TwoDigitYearCenturyWindow;
      const int centuryBase = CurrentYear() - window;
      year += centuryBase / 100 * 100;
      if (window > 0 && year < centuryBase) year += 100;
    }
  } else {
    year = CurrentYear();
    if (order == DateOrder::DMY) {
      day = n1, month = n2;
    } else {
      month = n1, day = n2;
    }
  }
  s.Char(settings.DateSeparator);  // a separator may end the date
  return TryEncodeDate(year, month, day, date);
}

// -1: no marker, 0: AM, 12: PM.
int ScanAmPm(Scanner& s) {
  if (s.Word(u"AM")) return 0;
  if (s.Word(u"PM")) return 12;
  return -1;
}

bool ScanTime(Scanner& s, TmvDateTime& time, const TmvFormatSettings& settings) {
  int baseHour = ScanAmPm(s);
  int hour, minute = 0, second = 0, millisecond = 0, length;
  if (!s.Number(hour, length)) return false;
  if (s.Char(settings.TimeSeparator)) {
    if (!s.Number(minute, length)) return false;
    if (s.Char(settings.TimeSeparator)) {
      if (!s.Number(second, length)) return false;
      if (s.Char(settings.DecimalSeparator)) {
        // Digits of a fraction: keep three places.
        s.SkipBlanks();
        int digits = 0;
        while (s.pos < s.text.size() && IsDigit(s.text[s.pos])) {
          if (digits < 3) millisecond = millisecond * 10 + (s.text[s.pos] - u'0');
          ++digits, ++s.pos;
        }
        if (digits == 0) return false;
        for (; digits < 3; ++digits) millisecond *= 10;
      }
    }
  }
  if (baseHour < 0) baseHour = ScanAmPm(s);
  if (baseHour >= 0) {
    if (hour == 0 || hour > 12) return false;
    if (hour == 12) hour = 0;
    hour += baseHour;
  }
  return TryEncodeTime(hour, minute, second, millisecond, time);
}

WideString Padded(int value, int width) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%0*d", width, value);
  return WideFromAscii(buf);
}

}  // namespace

// --- Numbers ---

bool TryStrToFloat(WideStringView text, double& value, const TmvFormatSettings& settings) {
  // The text is checked here and handed to from_chars in the C form, which
  // depends on no locale.
  Scanner s{text};
  s.SkipBlanks();
  std::string ascii;
  bool negative = false;
  if (s.pos < text.size() && (text[s.pos] == u'+' || text[s.pos] == u'-')) negative = text[s.pos++] == u'-';
  int mantissaDigits = 0;
  for (; s.pos < text.size() && IsDigit(text[s.pos]); ++s.pos, ++mantissaDigits) ascii += char(text[s.pos]);
  if (s.pos < text.size() && text[s.pos] == settings.DecimalSeparator) {
    ascii += '.';
    for (++s.pos; s.pos < text.size() && IsDigit(text[s.pos]); ++s.pos, ++mantissaDigits) ascii += char(text[s.pos]);
  }
  if (mantissaDigits == 0) return false;
  if (s.pos < text.size() && (text[s.pos] == u'e' || text[s.pos] == u'E')) {
    ascii += 'e';
    ++s.pos;
    if (s.pos < text.size() && (text[s.pos] == u'+' || text[s.pos] == u'-')) ascii += char(text[s.pos++]);
    int exponentDigits = 0;
    for (; s.pos < text.size() && IsDigit(text[s.pos]); ++s.pos, ++exponentDigits) ascii += char(text[s.pos]);
    if (exponentDigits == 0) return false;
  }
  if (!s.AtEnd()) return false;
  double parsed = 0;
  const auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), parsed);
  if (error != std::errc() || end != ascii.data() + ascii.size()) return false;
  value = negative ? -parsed : parsed;
  return true;
}

double StrToFloat(WideStringView text, const TmvFormatSettings& settings) {
  double value;
  if (!TryStrToFloat(text, value, settings))
    throw EConvertError(WideFormat(u"'%s' is not a valid floating point value", {text}));
  return value;
}

// --- Dates and times ---

bool TryStrToDate(WideStringView text, TmvDateTime& value, const TmvFormatSettings& settings) {
  Scanner s{text};
  TmvDateTime date;
  if (!ScanDate(s, date, settings) || !s.AtEnd()) return false;
  value = date;
  return true;
}

bool TryStrToTime(WideStringView text, TmvDateTime& value, const TmvFormatSettings& settings) {
  Scanner s{text};
  TmvDateTime time;
  if (!ScanTime(s, time, settings) || !s.AtEnd()) return false;
  value = time;
  return true;
}

bool TryStrToDateTime(WideStringView text, TmvDateTime& value, const TmvFormatSettings& settings) {
  Scanner s{text};
  TmvDateTime date, time;
  if (ScanDate(s, date, settings)) {
    if (s.AtEnd()) {
      value = date;
      return true;
    }
    if (ScanTime(s, time, settings) && s.AtEnd()) {
      value = ComposeDateTime(date, time);
      return true;
    }
  }
  return TryStrToTime(text, value, settings);
}

WideString FormatDateTime(WideStringView format, TmvDateTime value, const TmvFormatSettings& settings) {
  int year, month, day, hour, minute, second, millisecond;
  DecodeDateTime(value, year, month, day, hour, minute, second, millisecond);
  // With an am/pm marker the hours count from 1 to 12.
  const bool twelveHours = WidePosText(u"am/pm", format) != WideString::npos;
  WideString out;
  bool afterHour = false;  // an "m" right after an hour means minutes
  size_t i = 0;
  while (i < format.size()) {
    const char16_t c = format[i];
    const char16_t upper = WideUpCase(c);
    size_t run = 1;
    while (i + run < format.size() && WideUpCase(format[i + run]) == upper) ++run;
    switch (upper) {
      case u'Y':
        out += run <= 2 ? Padded(year % 100, 2) : Padded(year, 4);
        afterHour = false;
        break;
      case u'M':
        if (afterHour) {
          out += run >= 2 ? Padded(minute, 2) : IntToWide(minute);
        } else {
          out += run >= 2 ? Padded(month, 2) : IntToWide(month);
        }
        afterHour = false;
        break;
      case u'D':
        out += run >= 2 ? Padded(day, 2) : IntToWide(day);
        afterHour = false;
        break;
      case u'H': {
        int h = hour;
        if (twelveHours) h = hour % 12 == 0 ? 12 : hour % 12;
        out += run >= 2 ? Padded(h, 2) : IntToWide(h);
        afterHour = true;
        break;
      }
      case u'N':
        out += run >= 2 ? Padded(minute, 2) : IntToWide(minute);
        afterHour = false;
        break;
      case u'S':
        out += run >= 2 ? Padded(second, 2) : IntToWide(second);
        afterHour = false;
        break;
      case u'Z':
        out += run >= 3 ? Padded(millisecond, 3) : IntToWide(millisecond);
        afterHour = false;
        break;
      case u'A':
        if (i + 5 <= format.size() && WideSameText(format.substr(i, 5), u"am/pm")) {
          const bool pm = hour >= 12;
          const bool lower = c == u'a';
          out += pm ? (lower ? u"pm" : u"PM") : (lower ? u"am" : u"AM");
          run = 5;
        } else {
          out.append(run, c);
        }
        break;
      case u'/':
        out.append(run, settings.DateSeparator);
        break;
      case u':':
        out.append(run, settings.TimeSeparator);
        break;
      case u'"':
      case u'\'': {
        const size_t close = format.find(c, i + 1);
        const size_t end = close == WideStringView::npos ? format.size() : close;
        out.append(format.substr(i + 1, end - i - 1));
        run = (close == WideStringView::npos ? end : close + 1) - i;
        break;
      }
      default:
        out.append(run, c);
        break;
    }
    i += run;
  }
  return out;
}

}  // namespace mv
