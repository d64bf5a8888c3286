#include "metadata/dataset/SQLParamScanner.h"

namespace mv {

namespace {

bool IsNameStart(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c >= 0x80;
}

bool IsNameChar(char16_t c) { return IsNameStart(c) || (c >= u'0' && c <= u'9') || c == u'$'; }

// Walks SQL text and skips what cannot hold a placeholder. Each Skip...
// starts at the opening character and returns the position after the end
// (the end of the text when the construct is not closed).
class TParamScanner {
 public:
  TParamScanner(WideStringView sql, const TmvSQLParamScanOptions& options) : s_(sql), options_(options) {}

  std::vector<TmvSQLParamRef> Scan() {
    std::vector<TmvSQLParamRef> refs;
    size_t i = 0;
    while (i < s_.size()) {
      const char16_t c = s_[i];
      const char16_t next = At(i + 1);
      if (c == u'\'') {
        i = SkipQuoted(i, u'\'', options_.BackslashEscapes || IsEscapePrefix(i));
      } else if (c == u'"' || c == u'`') {
        i = SkipQuoted(i, c, false);
      } else if (c == u'[' && options_.BracketIdentifiers) {
        i = SkipQuoted(i, u']', false);
      } else if (c == u'-' && next == u'-') {
        i = SkipLine(i);
      } else if (c == u'#' && options_.HashComments) {
        i = SkipLine(i);
      } else if (c == u'/' && next == u'*') {
        const size_t end = s_.find(u"*/", i + 2);
        i = end == WideStringView::npos ? s_.size() : end + 2;
      } else if (c == u'$' && options_.DollarQuotes && (i == 0 || !IsNameChar(s_[i - 1]))) {
        i = SkipDollarQuoted(i);
      } else if (c == u':') {
        if (next == u':') {
          i += 2;  // a cast, and the type name after it
        } else if (next == u'"') {
          bool closed = false;
          const size_t end = SkipQuoted(i + 1, u'"', false, &closed);
          if (closed && end > i + 3) refs.push_back({Unquote(s_.substr(i + 2, end - i - 3)), i, end - i});
          i = end;
        } else if (IsNameStart(next)) {
          size_t end = i + 1;
          while (end < s_.size() && IsNameChar(s_[end])) ++end;
          refs.push_back({WideString(s_.substr(i + 1, end - i - 1)), i, end - i});
          i = end;
        } else {
          ++i;
        }
      } else {
        ++i;
      }
    }
    return refs;
  }

 private:
  char16_t At(size_t i) const { return i < s_.size() ? s_[i] : u'\0'; }

  // E'..' (and e'..') takes backslash escapes when the E is a word of its own.
  bool IsEscapePrefix(size_t quote) const {
    if (quote == 0 || (s_[quote - 1] != u'E' && s_[quote - 1] != u'e')) return false;
    return quote == 1 || !IsNameChar(s_[quote - 2]);
  }

  // A quoted text whose closing character doubles to stand for itself.
  size_t SkipQuoted(size_t open, char16_t close, bool escapes, bool* closed = nullptr) const {
    if (closed) *closed = false;
    size_t i = open + 1;
    while (i < s_.size()) {
      const char16_t c = s_[i];
      if (escapes && c == u'\\') {
        i += 2;
      } else if (c == close) {
        if (At(i + 1) == close) {
          i += 2;
        } else {
          if (closed) *closed = true;
          return i + 1;
        }
      } else {
        ++i;
      }
    }
    return s_.size();
  }

  size_t SkipLine(size_t start) const {
    const size_t end = s_.find_first_of(u"\r\n", start);
    return end == WideStringView::npos ? s_.size() : end;
  }

  // $$..$$ or $tag$..$tag$; a `$` that opens no such string is passed over.
  size_t SkipDollarQuoted(size_t start) const {
    size_t i = start + 1;
    if (i < s_.size() && IsNameStart(s_[i]))
      while (i < s_.size() && IsNameChar(s_[i]) && s_[i] != u'$') ++i;
    if (i >= s_.size() || s_[i] != u'$') return start + 1;
    const WideStringView tag = s_.substr(start, i - start + 1);
    const size_t end = s_.find(tag, i + 1);
    return end == WideStringView::npos ? s_.size() : end + tag.size();
  }

  // The text between quotes of `:"name"`, with doubled quotes made single.
  static WideString Unquote(WideStringView text) {
    WideString name;
    for (size_t i = 0; i < text.size(); ++i) {
      name += text[i];
      if (text[i] == u'"' && i + 1 < text.size() && text[i + 1] == u'"') ++i;
    }
    return name;
  }

  WideStringView s_;
  const TmvSQLParamScanOptions& options_;
};

}  // namespace

std::vector<TmvSQLParamRef> FindSQLParams(WideStringView sql, const TmvSQLParamScanOptions& options) {
  return TParamScanner(sql, options).Scan();
}

TmvTranslatedSQL TranslateSQLParams(WideStringView sql, TmvParamMarker marker, const TmvSQLParamScanOptions& options) {
  TmvTranslatedSQL result;
  size_t copied = 0;
  for (const TmvSQLParamRef& ref : FindSQLParams(sql, options)) {
    result.Text.append(sql.substr(copied, ref.Pos - copied));
    copied = ref.Pos + ref.Length;
    if (marker == TmvParamMarker::pmQuestion) {
      result.Text += u'?';
      result.Names.push_back(ref.Name);
      continue;
    }
    size_t number = 0;
    while (number < result.Names.size() && !WideSameText(result.Names[number], ref.Name)) ++number;
    if (number == result.Names.size()) result.Names.push_back(ref.Name);
    result.Text += marker == TmvParamMarker::pmDollar ? u'$' : u'?';
    result.Text += IntToWide(static_cast<int64_t>(number + 1));
  }
  result.Text.append(sql.substr(copied));
  return result;
}

}  // namespace mv
