// Languages: named stores that answer texts by section and key. A language
// held as INI text (a file, a built-in data file, a string) reads long values
// from `Key`/`Key.N` lines and lists from `Key.ItemN` lines; an event-based
// language asks the host's callbacks. `[General Settings]` gives the
// language's character set and reading order.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "localization/LanguageFile.h"
#include "support/WideString.h"

namespace mv {

enum TmvBiDiMode { bdLeftToRight, bdRightToLeft };

// The character set names of `[General Settings] CharSet`.
struct TmvCharSetInfo {
  const char16_t* name;
  uint8_t number;
  int codePage;
};
const std::vector<TmvCharSetInfo>& CharSetTable();
constexpr uint8_t DEFAULT_CHARSET = 1;
// The code page of a character set number; 1250 for a number not in the table.
int GetCodePage(uint8_t charSet);
// Name to number (exact, upper case); false for an unknown name.
bool CharSetFromName(WideStringView name, uint8_t& charSet);
WideString CharSetToName(uint8_t charSet);

// 8-bit text in a Windows code page to wide and back (characters the page
// lacks become '?').
WideString CodePageToWide(std::string_view text, int codePage);
std::string WideToCodePage(WideStringView text, int codePage);

inline constexpr char16_t kGeneralSettingsSection[] = u"General Settings";

class TmvQBLanguageSourceBase {
 public:
  explicit TmvQBLanguageSourceBase(WideStringView name) : name_(name) {}
  virtual ~TmvQBLanguageSourceBase() = default;
  TmvQBLanguageSourceBase(const TmvQBLanguageSourceBase&) = delete;
  TmvQBLanguageSourceBase& operator=(const TmvQBLanguageSourceBase&) = delete;

  const WideString& Name() const { return name_; }
  TmvBiDiMode BiDiMode() const { return biDiMode_; }
  void SetBiDiMode(TmvBiDiMode mode) { biDiMode_ = mode; }
  uint8_t CharSet() const { return charSet_; }
  void SetCharSet(uint8_t charSet) { charSet_ = charSet; }
  int CodePage() const { return GetCodePage(charSet_); }

  // Each read sets Value (Default when the language lacks the key) and tells
  // whether the language had it.
  virtual bool ReadAnsiString(WideStringView section, WideStringView key, std::string& value,
                              const std::string& defaultValue);
  virtual void WriteAnsiString(WideStringView section, WideStringView key, const std::string& value);
  virtual void ClearAnsiString(WideStringView section, WideStringView key);
  virtual bool ReadWideString(WideStringView section, WideStringView key, WideString& value,
                              WideStringView defaultValue) = 0;
  virtual void WriteWideString(WideStringView section, WideStringView key, WideStringView value) = 0;
  virtual void ClearWideString(WideStringView section, WideStringView key) = 0;
  // Result gets exactly as many lines as Default: each line the language has, else Default's.
  virtual bool ReadStrings(WideStringView section, WideStringView key, const std::vector<WideString>& defaultValue,
                           std::vector<WideString>& result);
  virtual void WriteStrings(WideStringView section, WideStringView key, const std::vector<WideString>& strings);
  virtual void ClearStrings(WideStringView section, WideStringView key);
  virtual void ClearSection(WideStringView section);
  virtual void DeleteSection(WideStringView section);
  virtual void SaveLanguage() {}

  // What loading the language could not read (bad bytes, unknown charset name).
  virtual std::vector<WideString> Problems() const { return {}; }

 private:
  WideString name_;
  TmvBiDiMode biDiMode_ = bdLeftToRight;
  uint8_t charSet_ = DEFAULT_CHARSET;
};

class TmvQBLanguageSourceIniFile : public TmvQBLanguageSourceBase {
 public:
  explicit TmvQBLanguageSourceIniFile(WideStringView name) : TmvQBLanguageSourceBase(name) {}

  bool ReadWideString(WideStringView section, WideStringView key, WideString& value,
                      WideStringView defaultValue) override;
  void WriteWideString(WideStringView section, WideStringView key, WideStringView value) override;
  void ClearWideString(WideStringView section, WideStringView key) override;
  bool ReadStrings(WideStringView section, WideStringView key, const std::vector<WideString>& defaultValue,
                   std::vector<WideString>& result) override;
  void WriteStrings(WideStringView section, WideStringView key, const std::vector<WideString>& strings) override;
  void ClearStrings(WideStringView section, WideStringView key) override;
  void ClearSection(WideStringView section) override;
  void DeleteSection(WideStringView section) override;
  std::vector<WideString> Problems() const override;

  TmvWideStringMemIniFile& IniFile() { return ini_; }
  const TmvWideStringMemIniFile& IniFile() const { return ini_; }
  // Takes CharSet and BiDiMode from `[General Settings]`.
  void ReadParams();
  // Writes them there.
  void WriteParams();

 protected:
  std::vector<WideString> paramProblems_;

 private:
  TmvWideStringMemIniFile ini_;
};

class TmvQBLanguageSourceFile : public TmvQBLanguageSourceIniFile {
 public:
  // Raises EmvQueryBuilderError when the file cannot be opened.
  TmvQBLanguageSourceFile(WideStringView name, const std::string& fileName);
  void SaveLanguage() override;
  const std::string& FileName() const { return fileName_; }

 private:
  std::string fileName_;
};

// A language from a data file built into the library, by resource name ("GERMAN.LNG").
class TmvQBLanguageSourceResource : public TmvQBLanguageSourceIniFile {
 public:
  // Raises EmvQueryBuilderError for an unknown resource.
  TmvQBLanguageSourceResource(WideStringView name, WideStringView resourceName,
                              WideStringView resourceType = u"LANGUAGE");
};

class TmvQBLanguageSourceString : public TmvQBLanguageSourceIniFile {
 public:
  TmvQBLanguageSourceString(WideStringView name, WideStringView text);
};

// The host's callbacks, the sender first; each returns whether it had the key.
using TmvQBReadAnsiStringEvent = std::function<bool(TmvQBLanguageSourceBase* sender, WideStringView section,
                                                    WideStringView key, std::string& value, const std::string& def)>;
using TmvQBReadWideStringEvent = std::function<bool(TmvQBLanguageSourceBase* sender, WideStringView section,
                                                    WideStringView key, WideString& value, WideStringView def)>;
using TmvQBReadStringsEvent =
    std::function<bool(TmvQBLanguageSourceBase* sender, WideStringView section, WideStringView key,
                       const std::vector<WideString>& def, std::vector<WideString>& result)>;

class TmvQBLanguageSourceEvents : public TmvQBLanguageSourceBase {
 public:
  TmvQBLanguageSourceEvents(WideStringView name, TmvQBReadAnsiStringEvent readAnsi,
                            TmvQBReadWideStringEvent readWide, TmvQBReadStringsEvent readStrings);
  bool ReadAnsiString(WideStringView section, WideStringView key, std::string& value,
                      const std::string& defaultValue) override;
  bool ReadWideString(WideStringView section, WideStringView key, WideString& value,
                      WideStringView defaultValue) override;
  bool ReadStrings(WideStringView section, WideStringView key, const std::vector<WideString>& defaultValue,
                   std::vector<WideString>& result) override;
  // Writes and clears do nothing: the host owns the texts.
  void WriteAnsiString(WideStringView, WideStringView, const std::string&) override {}
  void ClearAnsiString(WideStringView, WideStringView) override {}
  void WriteWideString(WideStringView, WideStringView, WideStringView) override {}
  void ClearWideString(WideStringView, WideStringView) override {}
  void WriteStrings(WideStringView, WideStringView, const std::vector<WideString>&) override {}
  void ClearStrings(WideStringView, WideStringView) override {}
  void ClearSection(WideStringView) override {}
  void DeleteSection(WideStringView) override {}

 private:
  TmvQBReadAnsiStringEvent readAnsi_;
  TmvQBReadWideStringEvent readWide_;
  TmvQBReadStringsEvent readStrings_;
};

// The built-in data files: resource name and bytes.
struct TmvBuiltinLanguageFile {
  const char* resourceName;
  const unsigned char* data;
  size_t size;
};
const std::vector<TmvBuiltinLanguageFile>& BuiltinLanguageFiles();
const TmvBuiltinLanguageFile* FindBuiltinLanguageFile(WideStringView resourceName);

// The built-in languages in the order they are added: display name, resource name.
struct TmvBuiltinLanguage {
  const char16_t* name;
  const char16_t* resourceName;
};
const std::vector<TmvBuiltinLanguage>& BuiltinLanguages();

}  // namespace mv
