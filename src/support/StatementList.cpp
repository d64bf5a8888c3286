#include "support/StatementList.h"

#include "support/TextFile.h"

namespace mv {

namespace {

bool IsSeparatorLine(WideStringView line) {
  size_t i = 0, n = line.size();
  while (i < n && (line[i] == u' ' || line[i] == u'\t')) ++i;
  while (n > i && (line[n - 1] == u' ' || line[n - 1] == u'\t' || line[n - 1] == u'\r')) --n;
  return n - i == 2 && line[i] == u';' && line[i + 1] == u';';
}

bool IsBlankText(WideStringView text) {
  for (char16_t c : text)
    if (c > u' ') return false;
  return true;
}

// Drops leading and trailing line ends (not other blanks: they may be part of the layout).
WideString TrimLineEnds(WideStringView text) {
  size_t b = 0, e = text.size();
  while (b < e && (text[b] == u'\r' || text[b] == u'\n')) ++b;
  while (e > b && (text[e - 1] == u'\r' || text[e - 1] == u'\n')) --e;
  return WideString(text.substr(b, e - b));
}

}  // namespace

std::vector<TmvStatementEntry> SplitStatementList(WideStringView text) {
  std::vector<TmvStatementEntry> entries;
  int entryNumber = 1;
  int line = 1;
  int entryLine = 1;
  size_t entryStart = 0;
  size_t pos = 0;
  auto flush = [&](size_t end) {
    WideStringView body = text.substr(entryStart, end - entryStart);
    if (!IsBlankText(body)) {
      // The entry starts at its first line that holds more than a line end.
      int first = entryLine;
      size_t k = 0;
      while (k < body.size() && (body[k] == u'\r' || body[k] == u'\n')) {
        if (body[k] == u'\n') ++first;
        ++k;
      }
      entries.push_back({entryNumber, first, TrimLineEnds(body)});
    }
    ++entryNumber;
  };
  while (pos <= text.size()) {
    size_t eol = text.find(u'\n', pos);
    const size_t lineEnd = eol == WideString::npos ? text.size() : eol;
    if (IsSeparatorLine(text.substr(pos, lineEnd - pos))) {
      flush(pos);
      entryStart = eol == WideString::npos ? text.size() : eol + 1;
      entryLine = line + 1;
    }
    if (eol == WideString::npos) break;
    pos = eol + 1;
    ++line;
  }
  if (entryStart < text.size()) flush(text.size());
  return entries;
}

std::vector<TmvStatementEntry> ReadStatementList(const std::string& path) {
  return SplitStatementList(ReadTextFile(path));
}

}  // namespace mv
