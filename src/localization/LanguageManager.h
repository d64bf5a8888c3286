// The language manager owns the languages and knows the current one; the
// localizers read their texts through it. `mvQBLanguageManager()` is the one
// manager of the process, made on first use with the built-in languages;
// `QueryBuilderLocalizer()` serves the messages of the section "Morvane".
// While a language is current, the message catalog of the engine asks it
// first for every message ("Morvane" section); a key it lacks gives the
// registered English default.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "localization/LanguageSources.h"

namespace mv {

class TmvQBLocalizerBase;

class TmvQBLanguageManager {
 public:
  // A manager that drives the messages makes its current language the one the
  // message catalog asks; that is the manager of the process.
  explicit TmvQBLanguageManager(bool drivesMessages = false);
  ~TmvQBLanguageManager();
  TmvQBLanguageManager(const TmvQBLanguageManager&) = delete;
  TmvQBLanguageManager& operator=(const TmvQBLanguageManager&) = delete;

  // Each returns the index of the new language. A file that cannot be opened
  // raises, and nothing is added.
  int AddLanguageFromFile(WideStringView name, const std::string& fileName, bool isDefault = false);
  int AddLanguageFromResource(WideStringView name, WideStringView resourceName,
                              WideStringView resourceType = u"LANGUAGE", bool isDefault = false);
  int AddLanguageFromString(WideStringView name, WideStringView text, bool isDefault = false);
  int AddLanguageEventBased(WideStringView name, TmvQBReadAnsiStringEvent readAnsi, TmvQBReadWideStringEvent readWide,
                            TmvQBReadStringsEvent readStrings, bool isDefault = false);
  int AddLanguage(std::unique_ptr<TmvQBLanguageSourceBase> language, bool isDefault = false);
  // Adds the built-in languages that this build carries, in their order.
  void AddBuiltinLanguages();
  void DeleteLanguage(int index);

  int LanguagesCount() const { return int(languages_.size()); }
  TmvQBLanguageSourceBase* Language(int index) const { return languages_.at(size_t(index)).get(); }
  // The index of the language named `name` (case-blind), or -1.
  int IndexOfName(WideStringView name) const;

  TmvQBLanguageSourceBase* CurrentLanguage() const { return current_; }
  // A language not in the list makes none current.
  void SetCurrentLanguage(TmvQBLanguageSourceBase* language);
  int CurrentLanguageIndex() const { return currentIndex_; }
  // -1: no language, defaults show. Every localizer is localized after a change.
  void SetCurrentLanguageIndex(int index);
  TmvQBLanguageSourceBase* DefaultLanguage() const { return default_; }

  void AddLocalizer(TmvQBLocalizerBase* localizer);
  void RemoveLocalizer(TmvQBLocalizerBase* localizer);

 private:
  void InstallMessageSource();

  std::vector<std::unique_ptr<TmvQBLanguageSourceBase>> languages_;
  TmvQBLanguageSourceBase* current_ = nullptr;
  int currentIndex_ = -1;
  TmvQBLanguageSourceBase* default_ = nullptr;
  std::vector<TmvQBLocalizerBase*> localizers_;  // not owned
  bool drivesMessages_ = false;
};

// The manager of the process.
TmvQBLanguageManager& mvQBLanguageManager();

// Picks a language for a host: a name of the manager's list (case-blind) or
// the path of a .LNG file, which is added under its file name. Returns the
// index made current; raises EmvQueryBuilderError when it is neither.
int SelectLanguage(TmvQBLanguageManager& manager, const std::string& nameOrFile);

using TmvQBLocalizeNotification = std::function<void(TmvQBLocalizerBase* sender)>;

class TmvQBLocalizerBase {
 public:
  explicit TmvQBLocalizerBase(TmvQBLanguageManager& manager = mvQBLanguageManager());
  virtual ~TmvQBLocalizerBase();
  TmvQBLocalizerBase(const TmvQBLocalizerBase&) = delete;
  TmvQBLocalizerBase& operator=(const TmvQBLocalizerBase&) = delete;

  TmvQBLanguageManager& Manager() const { return manager_; }
  virtual WideString GetSectionName() const = 0;
  virtual bool IsRequireDefaultsStoring() const { return false; }

  // On the current language, in the localizer's section or another one. With
  // no language a read gives Default, a write or clear does nothing.
  std::string ReadString(WideStringView key, const std::string& defaultValue) const;
  WideString ReadWideString(WideStringView key, WideStringView defaultValue) const;
  void ReadStrings(WideStringView key, std::vector<WideString>& result, const std::vector<WideString>& def) const;
  std::string ReadString(WideStringView section, WideStringView key, const std::string& defaultValue) const;
  WideString ReadWideString(WideStringView section, WideStringView key, WideStringView defaultValue) const;
  void ReadStrings(WideStringView section, WideStringView key, std::vector<WideString>& result,
                   const std::vector<WideString>& def) const;
  void WriteString(WideStringView key, const std::string& value);
  void WriteWideString(WideStringView key, WideStringView value);
  void WriteStrings(WideStringView key, const std::vector<WideString>& value);
  void ClearString(WideStringView key);

  // On a given language (null: as with no language).
  WideString ReadWideStringFromLanguage(TmvQBLanguageSourceBase* language, WideStringView section, WideStringView key,
                                        WideStringView defaultValue) const;
  std::string ReadStringFromLanguage(TmvQBLanguageSourceBase* language, WideStringView section, WideStringView key,
                                     const std::string& defaultValue) const;
  void ReadStringsFromLanguage(TmvQBLanguageSourceBase* language, WideStringView section, WideStringView key,
                               std::vector<WideString>& result, const std::vector<WideString>& def) const;
  void WriteStringToLanguage(TmvQBLanguageSourceBase* language, WideStringView section, WideStringView key,
                             const std::string& value);
  void WriteWideStringToLanguage(TmvQBLanguageSourceBase* language, WideStringView section, WideStringView key,
                                 WideStringView value);
  void WriteStringsToLanguage(TmvQBLanguageSourceBase* language, WideStringView section, WideStringView key,
                              const std::vector<WideString>& value);
  void ClearStringInLanguage(TmvQBLanguageSourceBase* language, WideStringView section, WideStringView key);

  // Runs LocalizeInternal, the notifications in order, then OnLocalize;
  // nothing when defaults are required and not yet saved.
  void Localize();
  void SaveDefaults();
  bool DefaultsSaved() const { return defaultsSaved_; }
  // `owner` identifies the entry; unregistering removes the last entry of that owner.
  void RegisterLocalizeNotification(const void* owner, TmvQBLocalizeNotification event);
  void UnregisterLocalizeNotification(const void* owner);
  std::function<void(TmvQBLocalizerBase* sender)> OnLocalize;

  // The design-time defaults, by case-blind name.
  bool IsStrHaveDefValue(WideStringView name) const;
  bool IsWStrHaveDefValue(WideStringView name) const;
  bool IsStringsHaveDefValue(WideStringView name) const;
  std::string GetStrDefValue(WideStringView name) const;
  WideString GetWStrDefValue(WideStringView name) const;
  std::vector<WideString> GetStringsDefValue(WideStringView name) const;
  void SetStrDefValue(WideStringView name, const std::string& value);
  void SetWStrDefValue(WideStringView name, WideStringView value);
  void SetStringsDefValue(WideStringView name, const std::vector<WideString>& value);

 protected:
  virtual void SaveDefaultsInternal() {}
  virtual void LocalizeInternal() {}

 private:
  TmvQBLanguageManager& manager_;
  std::map<WideString, std::string> strDefaults_;
  std::map<WideString, WideString> wstrDefaults_;
  std::map<WideString, std::vector<WideString>> stringsDefaults_;
  std::vector<std::pair<const void*, TmvQBLocalizeNotification>> notifications_;
  bool defaultsSaved_ = false;
};

class TmvQBLocalizerStandalone : public TmvQBLocalizerBase {
 public:
  explicit TmvQBLocalizerStandalone(WideStringView sectionName,
                                    TmvQBLanguageManager& manager = mvQBLanguageManager())
      : TmvQBLocalizerBase(manager), sectionName_(sectionName) {}
  WideString GetSectionName() const override { return sectionName_; }
  void SetSectionName(WideStringView name) { sectionName_ = WideString(name); }

 private:
  WideString sectionName_;
};

// The localizer of the engine's messages: section "Morvane" of the manager of the process.
TmvQBLocalizerStandalone& QueryBuilderLocalizer();

inline constexpr char16_t kMorvaneSection[] = u"Morvane";

}  // namespace mv
