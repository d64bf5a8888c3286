#include "localization/LanguageFile.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "support/WideFormat.h"

namespace mv {

// --- TmvWideStrings ---

TmvWideStrings::TmvWideStrings(const TmvWideStrings& other) { *this = other; }

TmvWideStrings& TmvWideStrings::operator=(const TmvWideStrings& other) {
  if (this == &other) return *this;
  std::vector<Item> copy;
  copy.reserve(other.items_.size());
  for (const Item& item : other.items_)
    copy.push_back({item.text, item.object ? std::make_unique<TmvWideStrings>(*item.object) : nullptr});
  items_ = std::move(copy);
  return *this;
}

int TmvWideStrings::Add(WideStringView s, std::unique_ptr<TmvWideStrings> object) {
  items_.push_back({WideString(s), std::move(object)});
  return Count() - 1;
}

void TmvWideStrings::Delete(int index) { items_.erase(items_.begin() + index); }

void TmvWideStrings::Clear() { items_.clear(); }

WideString TmvWideStrings::Names(int index) const {
  const WideString& s = Strings(index);
  size_t eq = s.find(u'=');
  return eq == WideString::npos ? WideString() : s.substr(0, eq);
}

WideString TmvWideStrings::ValueFromIndex(int index) const {
  const WideString& s = Strings(index);
  size_t eq = s.find(u'=');
  return eq == WideString::npos ? WideString() : s.substr(eq + 1);
}

WideString TmvWideStrings::Values(WideStringView name) const {
  int i = IndexOfName(name);
  return i < 0 ? WideString() : ValueFromIndex(i);
}

int TmvWideStrings::IndexOf(WideStringView s) const {
  for (int i = 0; i < Count(); ++i)
    if (Strings(i) == s) return i;
  return -1;
}

int TmvWideStrings::IndexOfName(WideStringView name) const {
  for (int i = 0; i < Count(); ++i) {
    const WideString& s = Strings(i);
    size_t eq = s.find(u'=');
    if (eq != WideString::npos && WideStringView(s).substr(0, eq) == name) return i;
  }
  return -1;
}

WideString TmvWideStrings::GetText() const {
  WideString text;
  for (const Item& item : items_) text += item.text + u"\r\n";
  return text;
}

void TmvWideStrings::SetText(WideStringView text) {
  items_.clear();
  for (WideString& line : SplitLanguageLines(text)) items_.push_back({std::move(line), nullptr});
}

void TmvWideStrings::CustomSort(const std::function<int(const TmvWideStrings&, int, int)>& compare) {
  // Sorts an index permutation with the caller's comparison, then applies it.
  std::vector<int> order(items_.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = int(i);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return compare(*this, a, b) < 0; });
  std::vector<Item> sorted;
  sorted.reserve(items_.size());
  for (int i : order) sorted.push_back(std::move(items_[size_t(i)]));
  items_ = std::move(sorted);
}

void TmvWideStrings::CustomSortNames(const std::function<int(WideStringView, WideStringView)>& compare) {
  CustomSort([&](const TmvWideStrings& list, int a, int b) { return compare(list.Names(a), list.Names(b)); });
}

void TmvWideStrings::SaveToStream(std::ostream& stream) const {
  for (const Item& item : items_) stream << UTF8Encode(item.text) << "\r\n";
}

std::vector<WideString> SplitLanguageLines(WideStringView text) {
  std::vector<WideString> lines;
  size_t start = 0;
  size_t i = 0;
  auto flush = [&](size_t end) {
    if (end > start) lines.emplace_back(text.substr(start, end - start));
  };
  while (i < text.size()) {
    char16_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      i += 2;  // a surrogate pair is one character
      continue;
    }
    if (c == u'\n' || c == u'\f' || c == u'\r' || c == 0x0085 || c == 0x2028 || c == 0x2029) {
      flush(i);
      i += (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ? 2 : 1;
      start = i;
      continue;
    }
    ++i;
  }
  flush(text.size());
  return lines;
}

// --- TmvWideStringMemIniFile ---

namespace {

size_t CountReplacements(WideStringView text) { return size_t(std::count(text.begin(), text.end(), u'\xFFFD')); }

size_t CountEncodedReplacements(std::string_view bytes) {
  size_t n = 0;
  for (size_t p = bytes.find("\xEF\xBF\xBD"); p != std::string_view::npos; p = bytes.find("\xEF\xBF\xBD", p + 3)) ++n;
  return n;
}

bool IsLineEnd(char16_t c) {
  return c == u'\n' || c == u'\f' || c == u'\r' || c == 0x0085 || c == 0x2028 || c == 0x2029;
}

}  // namespace

void TmvWideStringMemIniFile::LoadFromStream(std::istream& stream) {
  std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (stream.bad()) problems_.push_back(u"The stream could not be read to its end");
  LoadFromBytes(bytes);
}

void TmvWideStringMemIniFile::LoadFromBytes(std::string_view bytes) {
  WideString text;
  // Below four bytes no mark is looked for.
  bool marked = bytes.size() >= 4;
  if (marked && bytes.substr(0, 2) == "\xFF\xFE") {
    size_t n = (bytes.size() - 2) / 2;
    text.resize(n);
    for (size_t i = 0; i < n; ++i)
      text[i] = char16_t(uint8_t(bytes[2 + 2 * i]) | (uint8_t(bytes[3 + 2 * i]) << 8));
    if ((bytes.size() - 2) % 2) problems_.push_back(u"UTF-16 text ends in half a character; the odd byte is dropped");
  } else {
    std::string_view body = marked && bytes.substr(0, 3) == "\xEF\xBB\xBF" ? bytes.substr(3) : bytes;
    if (body.size() == bytes.size() && bytes.size() >= 2 &&
        (bytes.substr(0, 2) == "\xFE\xFF" || bytes.substr(0, 2) == "\xFF\xFE" ||
         (uint8_t(bytes[0]) == 0xEF && uint8_t(bytes[1]) == 0xBB)))
      problems_.push_back(u"Unknown byte order mark; the text is read as UTF-8");
    text = UTF8Decode(body);
    size_t bad = CountReplacements(text) - CountEncodedReplacements(body);
    if (bad) problems_.push_back(WideFormat(u"%d malformed UTF-8 bytes replaced by U+FFFD", {int64_t(bad)}));
  }
  // A file's lines all end in CR LF: one without an end was cut short.
  if (!text.empty() && !IsLineEnd(text.back()) && WideTrim(text).size() > 0 && bytes.size() >= 4)
    problems_.push_back(u"The last line has no line end (the file may be cut short)");
  LoadFromWideString(text);
}

void TmvWideStringMemIniFile::LoadFromWideString(WideStringView text) {
  TmvWideStrings* current = nullptr;
  int number = 0;
  for (const WideString& line : SplitLanguageLines(text)) {
    ++number;
    WideString trimmed = WideTrim(line);
    if (trimmed.empty()) continue;
    if (trimmed[0] == u';') continue;
    if (trimmed[0] == u'[') {
      if (trimmed.back() == u']') {
        current = GetSection(WideStringView(trimmed).substr(1, trimmed.size() - 2));
        continue;
      }
      problems_.push_back(WideFormat(u"Line %d: a section header without \"]\": %s", {number, trimmed}));
    }
    if (current)
      current->Add(line);
  }
}

void TmvWideStringMemIniFile::SaveToStream(std::ostream& stream) const { stream << SaveToBytes(); }

std::string TmvWideStringMemIniFile::SaveToBytes() const {
  std::string out = "\xEF\xBB\xBF";
  for (int i = 0; i < sections_.Count(); ++i) {
    if (i > 0) out += "\r\n\r\n";
    out += "[" + UTF8Encode(sections_.Strings(i)) + "]\r\n";
    const TmvWideStrings* lines = sections_.Objects(i);
    for (int j = 0; j < lines->Count(); ++j) out += UTF8Encode(lines->Strings(j)) + "\r\n";
  }
  return out;
}

void TmvWideStringMemIniFile::Clear() {
  sections_.Clear();
  problems_.clear();
}

TmvWideStrings* TmvWideStringMemIniFile::AddSection(WideStringView section) {
  return sections_.Objects(sections_.Add(section, std::make_unique<TmvWideStrings>()));
}

TmvWideStrings* TmvWideStringMemIniFile::FindSection(WideStringView section) const {
  int i = sections_.IndexOf(section);
  return i < 0 ? nullptr : sections_.Objects(i);
}

TmvWideStrings* TmvWideStringMemIniFile::GetSection(WideStringView section) {
  TmvWideStrings* found = FindSection(section);
  return found ? found : AddSection(section);
}

void TmvWideStringMemIniFile::DeleteSection(WideStringView section) {
  int i = sections_.IndexOf(section);
  if (i >= 0) sections_.Delete(i);
}

void TmvWideStringMemIniFile::ClearSection(WideStringView section) {
  if (TmvWideStrings* lines = FindSection(section)) lines->Clear();
}

void TmvWideStringMemIniFile::ReadSection(WideStringView section, std::vector<WideString>& names) const {
  names.clear();
  if (const TmvWideStrings* lines = FindSection(section))
    for (int i = 0; i < lines->Count(); ++i) names.push_back(lines->Names(i));
}

void TmvWideStringMemIniFile::WriteSection(WideStringView section, const TmvWideStrings& lines) {
  *GetSection(section) = lines;
}

void TmvWideStringMemIniFile::ReadSectionValues(WideStringView section, TmvWideStrings& lines) const {
  if (const TmvWideStrings* found = FindSection(section))
    lines = *found;
  else
    lines.Clear();
}

bool TmvWideStringMemIniFile::TryReadString(WideStringView section, WideStringView key, WideString& value) const {
  const TmvWideStrings* lines = FindSection(section);
  int i = lines ? lines->IndexOfName(key) : -1;
  if (i < 0) return false;
  value = lines->ValueFromIndex(i);
  return true;
}

WideString TmvWideStringMemIniFile::ReadString(WideStringView section, WideStringView key,
                                               WideStringView defaultValue) const {
  WideString value;
  return TryReadString(section, key, value) ? value : WideString(defaultValue);
}

void TmvWideStringMemIniFile::WriteString(WideStringView section, WideStringView key, WideStringView value) {
  TmvWideStrings* lines = GetSection(section);
  WideString line = WideString(key) + u"=" + WideString(value);
  int i = lines->IndexOfName(key);
  if (i >= 0)
    lines->SetStrings(i, line);
  else
    lines->Add(line);
}

bool TmvWideStringMemIniFile::IsStringStartsExists(WideStringView section, WideStringView prefix) const {
  const TmvWideStrings* lines = FindSection(section);
  if (!lines) return false;
  for (int i = 0; i < lines->Count(); ++i)
    if (WideStringView(lines->Strings(i)).find(u'=') != WideStringView::npos && lines->Names(i).starts_with(prefix))
      return true;
  return false;
}

void TmvWideStringMemIniFile::ClearStringStarts(WideStringView section, WideStringView prefix) {
  TmvWideStrings* lines = FindSection(section);
  if (!lines) return;
  for (int i = lines->Count() - 1; i >= 0; --i)
    if (lines->Strings(i).find(u'=') != WideString::npos && lines->Names(i).starts_with(prefix)) lines->Delete(i);
}

}  // namespace mv
