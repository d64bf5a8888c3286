#include "localization/LanguageSources.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <fstream>

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

// --- Character sets and code pages ---

const std::vector<TmvCharSetInfo>& CharSetTable() {
  static const std::vector<TmvCharSetInfo> table = {
      {u"ANSI_CHARSET", 0, 1250},          {u"DEFAULT_CHARSET", 1, 1250},     {u"SYMBOL_CHARSET", 2, 1250},
      {u"MAC_CHARSET", 77, 1250},          {u"SHIFTJIS_CHARSET", 128, 932},   {u"HANGEUL_CHARSET", 129, 949},
      {u"JOHAB_CHARSET", 130, 1361},       {u"GB2312_CHARSET", 134, 936},     {u"CHINESEBIG5_CHARSET", 136, 950},
      {u"GREEK_CHARSET", 161, 1253},       {u"TURKISH_CHARSET", 162, 1254},   {u"VIETNAMESE_CHARSET", 163, 1258},
      {u"HEBREW_CHARSET", 177, 1255},      {u"ARABIC_CHARSET", 178, 1256},    {u"BALTIC_CHARSET", 186, 1257},
      {u"RUSSIAN_CHARSET", 204, 1251},     {u"THAI_CHARSET", 222, 874},       {u"EASTEUROPE_CHARSET", 238, 28592},
      {u"OEM_CHARSET", 255, 1250},
  };
  return table;
}

int GetCodePage(uint8_t charSet) {
  for (const TmvCharSetInfo& info : CharSetTable())
    if (info.number == charSet) return info.codePage;
  return 1250;
}

bool CharSetFromName(WideStringView name, uint8_t& charSet) {
  for (const TmvCharSetInfo& info : CharSetTable())
    if (name == info.name) {
      charSet = info.number;
      return true;
    }
  return false;
}

WideString CharSetToName(uint8_t charSet) {
  for (const TmvCharSetInfo& info : CharSetTable())
    if (info.number == charSet) return info.name;
  return u"DEFAULT_CHARSET";
}

namespace {

struct ConverterCloser {
  void operator()(UConverter* c) const { ucnv_close(c); }
};

std::unique_ptr<UConverter, ConverterCloser> OpenCodePage(int codePage) {
  std::string name = codePage == 28592 ? "iso-8859-2" : "windows-" + std::to_string(codePage);
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(name.c_str(), &status);
  if (U_FAILURE(status)) {
    status = U_ZERO_ERROR;
    converter = ucnv_open(("cp" + std::to_string(codePage)).c_str(), &status);
  }
  if (U_FAILURE(status)) return nullptr;
  return std::unique_ptr<UConverter, ConverterCloser>(converter);
}

}  // namespace

WideString CodePageToWide(std::string_view text, int codePage) {
  auto converter = OpenCodePage(codePage);
  if (!converter) {  // no table for the page: Latin-1
    WideString wide;
    for (char c : text) wide.push_back(char16_t(uint8_t(c)));
    return wide;
  }
  WideString wide(text.size() * 2 + 1, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  int32_t n = ucnv_toUChars(converter.get(), wide.data(), int32_t(wide.size()), text.data(), int32_t(text.size()),
                            &status);
  wide.resize(U_FAILURE(status) ? 0 : size_t(n));
  return wide;
}

std::string WideToCodePage(WideStringView text, int codePage) {
  auto converter = OpenCodePage(codePage);
  if (!converter) return WideToAnsi(text);
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setSubstChars(converter.get(), "?", 1, &status);
  status = U_ZERO_ERROR;
  std::string out(text.size() * 4 + 1, '\0');
  int32_t n = ucnv_fromUChars(converter.get(), out.data(), int32_t(out.size()), text.data(), int32_t(text.size()),
                              &status);
  out.resize(U_FAILURE(status) ? 0 : size_t(n));
  return out;
}

// --- TmvQBLanguageSourceBase ---

bool TmvQBLanguageSourceBase::ReadAnsiString(WideStringView section, WideStringView key, std::string& value,
                                             const std::string& defaultValue) {
  WideString wide;
  bool found = ReadWideString(section, key, wide, CodePageToWide(defaultValue, CodePage()));
  value = WideToCodePage(wide, CodePage());
  return found;
}

void TmvQBLanguageSourceBase::WriteAnsiString(WideStringView section, WideStringView key, const std::string& value) {
  WriteWideString(section, key, CodePageToWide(value, CodePage()));
}

void TmvQBLanguageSourceBase::ClearAnsiString(WideStringView section, WideStringView key) {
  ClearWideString(section, key);
}

bool TmvQBLanguageSourceBase::ReadStrings(WideStringView, WideStringView, const std::vector<WideString>& defaultValue,
                                          std::vector<WideString>& result) {
  result = defaultValue;
  return false;
}

void TmvQBLanguageSourceBase::WriteStrings(WideStringView, WideStringView, const std::vector<WideString>&) {}
void TmvQBLanguageSourceBase::ClearStrings(WideStringView, WideStringView) {}
void TmvQBLanguageSourceBase::ClearSection(WideStringView) {}
void TmvQBLanguageSourceBase::DeleteSection(WideStringView) {}

// --- TmvQBLanguageSourceIniFile ---

namespace {

// A numbered entry: Key.N (or bare Key as line 0) / Key.ItemN.
struct NumberedLine {
  int64_t number;
  WideString value;
};

// The entries of `lines` named `key` (as line 0, when `bareIsZero`) or
// key + infix + integer, in file order.
std::vector<NumberedLine> CollectNumbered(const TmvWideStrings& lines, WideStringView key, WideStringView infix,
                                          bool bareIsZero) {
  std::vector<NumberedLine> found;
  for (int i = 0; i < lines.Count(); ++i) {
    if (lines.Strings(i).find(u'=') == WideString::npos) continue;
    WideString name = lines.Names(i);
    if (!WideStringView(name).starts_with(key)) continue;
    if (name.size() == key.size()) {
      if (bareIsZero) found.push_back({0, lines.ValueFromIndex(i)});
      continue;
    }
    WideStringView rest = WideStringView(name).substr(key.size());
    if (!rest.starts_with(infix)) continue;
    rest.remove_prefix(infix.size());
    // Only plain decimal digits count as a line number.
    if (rest.empty() || rest.size() > 9 ||
        !std::all_of(rest.begin(), rest.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; }))
      continue;
    int64_t number = 0;
    TryStrToInt(rest, number);
    found.push_back({number, lines.ValueFromIndex(i)});
  }
  return found;
}

void ClearNumbered(TmvWideStrings& lines, WideStringView key, WideStringView infix, bool bare) {
  for (int i = lines.Count() - 1; i >= 0; --i) {
    if (lines.Strings(i).find(u'=') == WideString::npos) continue;
    WideString name = lines.Names(i);
    if (!WideStringView(name).starts_with(key)) continue;
    WideStringView rest = WideStringView(name).substr(key.size());
    bool numbered = rest.starts_with(infix) && rest.size() > infix.size() &&
                    std::all_of(rest.begin() + infix.size(), rest.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; });
    if ((bare && rest.empty()) || numbered) lines.Delete(i);
  }
}

std::vector<WideString> SplitValueLines(WideStringView value) {
  std::vector<WideString> lines;
  size_t start = 0;
  for (size_t i = 0; i <= value.size(); ++i) {
    if (i == value.size() || value[i] == u'\r' || value[i] == u'\n') {
      lines.emplace_back(value.substr(start, i - start));
      if (i + 1 < value.size() && value[i] == u'\r' && value[i + 1] == u'\n') ++i;
      start = i + 1;
    }
  }
  return lines;
}

}  // namespace

bool TmvQBLanguageSourceIniFile::ReadWideString(WideStringView section, WideStringView key, WideString& value,
                                                WideStringView defaultValue) {
  TmvWideStrings lines;
  ini_.ReadSectionValues(section, lines);
  std::vector<NumberedLine> found = CollectNumbered(lines, key, u".", true);
  if (found.empty()) {
    value = WideString(defaultValue);
    return false;
  }
  // The line count comes from the last entry that stayed, as the files are ordered.
  int64_t last = found.back().number;
  value.clear();
  for (int64_t i = 0; i <= last; ++i) {
    if (i > 0) value += u"\r\n";
    auto it = std::find_if(found.begin(), found.end(), [i](const NumberedLine& l) { return l.number == i; });
    if (it != found.end()) value += it->value;
  }
  return true;
}

void TmvQBLanguageSourceIniFile::WriteWideString(WideStringView section, WideStringView key, WideStringView value) {
  ini_.ClearStringStarts(section, key);
  std::vector<WideString> lines = SplitValueLines(value);
  if (lines.size() == 1) {
    ini_.WriteString(section, key, value);
    return;
  }
  for (size_t i = 0; i < lines.size(); ++i)
    ini_.WriteString(section, WideString(key) + u"." + IntToWide(int64_t(i)), lines[i]);
}

void TmvQBLanguageSourceIniFile::ClearWideString(WideStringView section, WideStringView key) {
  if (TmvWideStrings* lines = ini_.FindSection(section)) ClearNumbered(*lines, key, u".", true);
}

bool TmvQBLanguageSourceIniFile::ReadStrings(WideStringView section, WideStringView key,
                                             const std::vector<WideString>& defaultValue,
                                             std::vector<WideString>& result) {
  TmvWideStrings lines;
  ini_.ReadSectionValues(section, lines);
  std::vector<NumberedLine> found = CollectNumbered(lines, key, u".Item", false);
  std::stable_sort(found.begin(), found.end(),
                   [](const NumberedLine& a, const NumberedLine& b) { return a.number < b.number; });
  result = defaultValue;
  for (size_t i = 0; i < result.size() && i < found.size(); ++i) result[i] = found[i].value;
  return !found.empty();
}

void TmvQBLanguageSourceIniFile::WriteStrings(WideStringView section, WideStringView key,
                                              const std::vector<WideString>& strings) {
  ini_.ClearStringStarts(section, WideString(key) + u".Item");
  for (size_t i = 0; i < strings.size(); ++i)
    ini_.WriteString(section, WideString(key) + u".Item" + IntToWide(int64_t(i)), strings[i]);
}

void TmvQBLanguageSourceIniFile::ClearStrings(WideStringView section, WideStringView key) {
  if (TmvWideStrings* lines = ini_.FindSection(section)) ClearNumbered(*lines, key, u".Item", false);
}

void TmvQBLanguageSourceIniFile::ClearSection(WideStringView section) { ini_.ClearSection(section); }
void TmvQBLanguageSourceIniFile::DeleteSection(WideStringView section) { ini_.DeleteSection(section); }

std::vector<WideString> TmvQBLanguageSourceIniFile::Problems() const {
  std::vector<WideString> all = ini_.Problems();
  all.insert(all.end(), paramProblems_.begin(), paramProblems_.end());
  return all;
}

void TmvQBLanguageSourceIniFile::ReadParams() {
  paramProblems_.clear();
  uint8_t charSet = DEFAULT_CHARSET;
  WideString name;
  if (ini_.TryReadString(kGeneralSettingsSection, u"CharSet", name) &&
      !CharSetFromName(WideUpperCase(name), charSet))
    paramProblems_.push_back(WideFormat(u"Unknown CharSet \"%s\"; DEFAULT_CHARSET is used", {name}));
  SetCharSet(charSet);
  WideString mode;
  if (ini_.TryReadString(kGeneralSettingsSection, u"BiDiMode", mode))
    SetBiDiMode(mode == u"BiDiLeftToRight" ? bdLeftToRight : bdRightToLeft);
  else
    SetBiDiMode(charSet == 177 || charSet == 178 ? bdRightToLeft : bdLeftToRight);
}

void TmvQBLanguageSourceIniFile::WriteParams() {
  ini_.WriteString(kGeneralSettingsSection, u"CharSet", CharSetToName(CharSet()));
  ini_.WriteString(kGeneralSettingsSection, u"BiDiMode",
                   BiDiMode() == bdLeftToRight ? u"BiDiLeftToRight" : u"BiDiRightToLeft");
}

// --- The sources ---

TmvQBLanguageSourceFile::TmvQBLanguageSourceFile(WideStringView name, const std::string& fileName)
    : TmvQBLanguageSourceIniFile(name), fileName_(fileName) {
  std::ifstream stream(fileName, std::ios::binary);
  if (!stream)
    throw EmvQueryBuilderError(WideFormat(u"Cannot open file \"%s\"", {UTF8Decode(fileName)}));
  IniFile().LoadFromStream(stream);
  ReadParams();
}

void TmvQBLanguageSourceFile::SaveLanguage() {
  std::ofstream stream(fileName_, std::ios::binary | std::ios::trunc);
  if (!stream) throw EmvQueryBuilderError(WideFormat(u"Cannot create file \"%s\"", {UTF8Decode(fileName_)}));
  IniFile().SaveToStream(stream);
  if (!stream.flush()) throw EmvQueryBuilderError(WideFormat(u"Cannot write file \"%s\"", {UTF8Decode(fileName_)}));
  ReadParams();
}

TmvQBLanguageSourceResource::TmvQBLanguageSourceResource(WideStringView name, WideStringView resourceName,
                                                         WideStringView resourceType)
    : TmvQBLanguageSourceIniFile(name) {
  const TmvBuiltinLanguageFile* file = resourceType == u"LANGUAGE" ? FindBuiltinLanguageFile(resourceName) : nullptr;
  if (!file)
    throw EmvQueryBuilderError(
        WideFormat(u"Resource %0:s of type %1:s not found", {WideString(resourceName), WideString(resourceType)}));
  IniFile().LoadFromBytes(std::string_view(reinterpret_cast<const char*>(file->data), file->size));
  ReadParams();
}

TmvQBLanguageSourceString::TmvQBLanguageSourceString(WideStringView name, WideStringView text)
    : TmvQBLanguageSourceIniFile(name) {
  IniFile().LoadFromWideString(text);
  ReadParams();
}

TmvQBLanguageSourceEvents::TmvQBLanguageSourceEvents(WideStringView name, TmvQBReadAnsiStringEvent readAnsi,
                                                     TmvQBReadWideStringEvent readWide,
                                                     TmvQBReadStringsEvent readStrings)
    : TmvQBLanguageSourceBase(name),
      readAnsi_(std::move(readAnsi)),
      readWide_(std::move(readWide)),
      readStrings_(std::move(readStrings)) {}

bool TmvQBLanguageSourceEvents::ReadAnsiString(WideStringView section, WideStringView key, std::string& value,
                                               const std::string& defaultValue) {
  value = defaultValue;
  return readAnsi_ ? readAnsi_(this, section, key, value, defaultValue) : false;
}

bool TmvQBLanguageSourceEvents::ReadWideString(WideStringView section, WideStringView key, WideString& value,
                                               WideStringView defaultValue) {
  value = WideString(defaultValue);
  return readWide_ ? readWide_(this, section, key, value, defaultValue) : false;
}

bool TmvQBLanguageSourceEvents::ReadStrings(WideStringView section, WideStringView key,
                                            const std::vector<WideString>& defaultValue,
                                            std::vector<WideString>& result) {
  result = defaultValue;
  return readStrings_ ? readStrings_(this, section, key, defaultValue, result) : false;
}

// --- Built-in languages ---

const std::vector<TmvBuiltinLanguage>& BuiltinLanguages() {
  static const std::vector<TmvBuiltinLanguage> languages = {
      {u"English", u"ENGLISH.LNG"},
      {u"German", u"GERMAN.LNG"},
      {u"Spanish", u"SPANISH.LNG"},
      {u"Italian", u"ITALIAN.LNG"},
      {u"Chinese", u"CHINESE.LNG"},
      {u"Czech", u"CZECH.LNG"},
      {u"Portuguese(Brazil)", u"PORTUGUESE_BRAZIL.LNG"},
      {u"Turkish", u"TURKISH.LNG"},
      {u"Japanese", u"JAPANESE.LNG"},
      {u"Russian", u"RUSSIAN.LNG"},
      {u"Swedish", u"SWEDISH.LNG"},
      {u"French", u"FRENCH.LNG"},
      {u"Bulgarian", u"BULGARIAN.LNG"},
      {u"Greek", u"GREEK.LNG"},
      {u"Farsi", u"FARSI.LNG"},
      {u"Polish", u"POLISH.LNG"},
  };
  return languages;
}

const TmvBuiltinLanguageFile* FindBuiltinLanguageFile(WideStringView resourceName) {
  for (const TmvBuiltinLanguageFile& file : BuiltinLanguageFiles())
    if (WideSameText(UTF8Decode(file.resourceName), resourceName)) return &file;
  return nullptr;
}

}  // namespace mv
