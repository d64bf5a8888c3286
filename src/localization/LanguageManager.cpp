#include "localization/LanguageManager.h"

#include <algorithm>
#include <filesystem>

#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

// The current language as the message catalog sees it.
class TmvLanguageMessageSource : public ImvMessageSource {
 public:
  explicit TmvLanguageMessageSource(TmvQBLanguageSourceBase* language) : language_(language) {}
  bool TryGetText(WideStringView key, WideString& text) const override {
    return language_->ReadWideString(kMorvaneSection, key, text, u"");
  }

 private:
  TmvQBLanguageSourceBase* language_;
};

}  // namespace

// --- TmvQBLanguageManager ---

TmvQBLanguageManager::TmvQBLanguageManager(bool drivesMessages) : drivesMessages_(drivesMessages) {
  // The catalog is made first so that it outlives a manager of static duration.
  if (drivesMessages_) MessageCatalog();
}

TmvQBLanguageManager::~TmvQBLanguageManager() {
  if (drivesMessages_ && current_) MessageCatalog().SetSource(nullptr);
}

int TmvQBLanguageManager::AddLanguage(std::unique_ptr<TmvQBLanguageSourceBase> language, bool isDefault) {
  languages_.push_back(std::move(language));
  if (isDefault) default_ = languages_.back().get();
  return LanguagesCount() - 1;
}

int TmvQBLanguageManager::AddLanguageFromFile(WideStringView name, const std::string& fileName, bool isDefault) {
  return AddLanguage(std::make_unique<TmvQBLanguageSourceFile>(name, fileName), isDefault);
}

int TmvQBLanguageManager::AddLanguageFromResource(WideStringView name, WideStringView resourceName,
                                                  WideStringView resourceType, bool isDefault) {
  return AddLanguage(std::make_unique<TmvQBLanguageSourceResource>(name, resourceName, resourceType), isDefault);
}

int TmvQBLanguageManager::AddLanguageFromString(WideStringView name, WideStringView text, bool isDefault) {
  return AddLanguage(std::make_unique<TmvQBLanguageSourceString>(name, text), isDefault);
}

int TmvQBLanguageManager::AddLanguageEventBased(WideStringView name, TmvQBReadAnsiStringEvent readAnsi,
                                                TmvQBReadWideStringEvent readWide, TmvQBReadStringsEvent readStrings,
                                                bool isDefault) {
  return AddLanguage(std::make_unique<TmvQBLanguageSourceEvents>(name, std::move(readAnsi), std::move(readWide),
                                                                 std::move(readStrings)),
                     isDefault);
}

void TmvQBLanguageManager::AddBuiltinLanguages() {
  for (const TmvBuiltinLanguage& language : BuiltinLanguages())
    if (FindBuiltinLanguageFile(language.resourceName))
      AddLanguageFromResource(language.name, language.resourceName);
}

void TmvQBLanguageManager::DeleteLanguage(int index) {
  TmvQBLanguageSourceBase* language = Language(index);
  if (language == current_) SetCurrentLanguageIndex(-1);
  if (language == default_) default_ = nullptr;
  languages_.erase(languages_.begin() + index);
  // The current language may have moved down.
  if (current_)
    for (int i = 0; i < LanguagesCount(); ++i)
      if (languages_[size_t(i)].get() == current_) currentIndex_ = i;
}

int TmvQBLanguageManager::IndexOfName(WideStringView name) const {
  for (int i = 0; i < LanguagesCount(); ++i)
    if (WideSameText(languages_[size_t(i)]->Name(), name)) return i;
  return -1;
}

void TmvQBLanguageManager::SetCurrentLanguage(TmvQBLanguageSourceBase* language) {
  int index = -1;
  for (int i = 0; i < LanguagesCount(); ++i)
    if (languages_[size_t(i)].get() == language) index = i;
  SetCurrentLanguageIndex(index);
}

void TmvQBLanguageManager::SetCurrentLanguageIndex(int index) {
  if (index < -1 || index >= LanguagesCount()) index = -1;
  if (index == currentIndex_) return;
  currentIndex_ = index;
  current_ = index < 0 ? nullptr : languages_[size_t(index)].get();
  InstallMessageSource();
  // A copy: a localizer may unregister while it localizes.
  std::vector<TmvQBLocalizerBase*> localizers = localizers_;
  for (TmvQBLocalizerBase* localizer : localizers) localizer->Localize();
}

void TmvQBLanguageManager::InstallMessageSource() {
  if (!drivesMessages_) return;
  MessageCatalog().SetSource(current_ ? std::make_shared<TmvLanguageMessageSource>(current_) : nullptr);
}

void TmvQBLanguageManager::AddLocalizer(TmvQBLocalizerBase* localizer) { localizers_.push_back(localizer); }

void TmvQBLanguageManager::RemoveLocalizer(TmvQBLocalizerBase* localizer) {
  localizers_.erase(std::remove(localizers_.begin(), localizers_.end(), localizer), localizers_.end());
}

TmvQBLanguageManager& mvQBLanguageManager() {
  static TmvQBLanguageManager manager(true);
  static const bool builtins = (manager.AddBuiltinLanguages(), true);
  (void)builtins;
  return manager;
}

int SelectLanguage(TmvQBLanguageManager& manager, const std::string& nameOrFile) {
  int index = manager.IndexOfName(UTF8Decode(nameOrFile));
  if (index < 0) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(nameOrFile, error))
      throw EmvQueryBuilderError(WideFormat(u"Unknown language \"%s\": neither a language name nor a file",
                                            {UTF8Decode(nameOrFile)}));
    index = manager.AddLanguageFromFile(UTF8Decode(std::filesystem::path(nameOrFile).stem().string()), nameOrFile);
  }
  manager.SetCurrentLanguageIndex(index);
  return index;
}

// --- TmvQBLocalizerBase ---

TmvQBLocalizerBase::TmvQBLocalizerBase(TmvQBLanguageManager& manager) : manager_(manager) {
  manager_.AddLocalizer(this);
}

TmvQBLocalizerBase::~TmvQBLocalizerBase() { manager_.RemoveLocalizer(this); }

std::string TmvQBLocalizerBase::ReadString(WideStringView key, const std::string& defaultValue) const {
  return ReadString(GetSectionName(), key, defaultValue);
}
WideString TmvQBLocalizerBase::ReadWideString(WideStringView key, WideStringView defaultValue) const {
  return ReadWideString(GetSectionName(), key, defaultValue);
}
void TmvQBLocalizerBase::ReadStrings(WideStringView key, std::vector<WideString>& result,
                                     const std::vector<WideString>& def) const {
  ReadStrings(GetSectionName(), key, result, def);
}
std::string TmvQBLocalizerBase::ReadString(WideStringView section, WideStringView key,
                                           const std::string& defaultValue) const {
  return ReadStringFromLanguage(manager_.CurrentLanguage(), section, key, defaultValue);
}
WideString TmvQBLocalizerBase::ReadWideString(WideStringView section, WideStringView key,
                                              WideStringView defaultValue) const {
  return ReadWideStringFromLanguage(manager_.CurrentLanguage(), section, key, defaultValue);
}
void TmvQBLocalizerBase::ReadStrings(WideStringView section, WideStringView key, std::vector<WideString>& result,
                                     const std::vector<WideString>& def) const {
  ReadStringsFromLanguage(manager_.CurrentLanguage(), section, key, result, def);
}
void TmvQBLocalizerBase::WriteString(WideStringView key, const std::string& value) {
  WriteStringToLanguage(manager_.CurrentLanguage(), GetSectionName(), key, value);
}
void TmvQBLocalizerBase::WriteWideString(WideStringView key, WideStringView value) {
  WriteWideStringToLanguage(manager_.CurrentLanguage(), GetSectionName(), key, value);
}
void TmvQBLocalizerBase::WriteStrings(WideStringView key, const std::vector<WideString>& value) {
  WriteStringsToLanguage(manager_.CurrentLanguage(), GetSectionName(), key, value);
}
void TmvQBLocalizerBase::ClearString(WideStringView key) {
  ClearStringInLanguage(manager_.CurrentLanguage(), GetSectionName(), key);
}

WideString TmvQBLocalizerBase::ReadWideStringFromLanguage(TmvQBLanguageSourceBase* language, WideStringView section,
                                                          WideStringView key, WideStringView defaultValue) const {
  WideString value(defaultValue);
  if (language) language->ReadWideString(section, key, value, defaultValue);
  return value;
}
std::string TmvQBLocalizerBase::ReadStringFromLanguage(TmvQBLanguageSourceBase* language, WideStringView section,
                                                       WideStringView key, const std::string& defaultValue) const {
  std::string value = defaultValue;
  if (language) language->ReadAnsiString(section, key, value, defaultValue);
  return value;
}
void TmvQBLocalizerBase::ReadStringsFromLanguage(TmvQBLanguageSourceBase* language, WideStringView section,
                                                 WideStringView key, std::vector<WideString>& result,
                                                 const std::vector<WideString>& def) const {
  result = def;
  if (language) language->ReadStrings(section, key, def, result);
}
void TmvQBLocalizerBase::WriteStringToLanguage(TmvQBLanguageSourceBase* language, WideStringView section,
                                               WideStringView key, const std::string& value) {
  if (language) language->WriteAnsiString(section, key, value);
}
void TmvQBLocalizerBase::WriteWideStringToLanguage(TmvQBLanguageSourceBase* language, WideStringView section,
                                                   WideStringView key, WideStringView value) {
  if (language) language->WriteWideString(section, key, value);
}
void TmvQBLocalizerBase::WriteStringsToLanguage(TmvQBLanguageSourceBase* language, WideStringView section,
                                                WideStringView key, const std::vector<WideString>& value) {
  if (language) language->WriteStrings(section, key, value);
}
void TmvQBLocalizerBase::ClearStringInLanguage(TmvQBLanguageSourceBase* language, WideStringView section,
                                               WideStringView key) {
  if (language) language->ClearWideString(section, key);
}

void TmvQBLocalizerBase::Localize() {
  if (IsRequireDefaultsStoring() && !defaultsSaved_) return;
  LocalizeInternal();
  // A copy: a notification may register or unregister others.
  auto notifications = notifications_;
  for (auto& entry : notifications) entry.second(this);
  if (OnLocalize) OnLocalize(this);
}

void TmvQBLocalizerBase::SaveDefaults() {
  SaveDefaultsInternal();
  defaultsSaved_ = true;
}

void TmvQBLocalizerBase::RegisterLocalizeNotification(const void* owner, TmvQBLocalizeNotification event) {
  notifications_.emplace_back(owner, std::move(event));
}

void TmvQBLocalizerBase::UnregisterLocalizeNotification(const void* owner) {
  for (size_t i = notifications_.size(); i-- > 0;)
    if (notifications_[i].first == owner) {
      notifications_.erase(notifications_.begin() + std::ptrdiff_t(i));
      return;
    }
}

bool TmvQBLocalizerBase::IsStrHaveDefValue(WideStringView name) const {
  return strDefaults_.count(WideUpperCase(name)) > 0;
}
bool TmvQBLocalizerBase::IsWStrHaveDefValue(WideStringView name) const {
  return wstrDefaults_.count(WideUpperCase(name)) > 0;
}
bool TmvQBLocalizerBase::IsStringsHaveDefValue(WideStringView name) const {
  return stringsDefaults_.count(WideUpperCase(name)) > 0;
}
std::string TmvQBLocalizerBase::GetStrDefValue(WideStringView name) const {
  auto it = strDefaults_.find(WideUpperCase(name));
  return it == strDefaults_.end() ? std::string() : it->second;
}
WideString TmvQBLocalizerBase::GetWStrDefValue(WideStringView name) const {
  auto it = wstrDefaults_.find(WideUpperCase(name));
  return it == wstrDefaults_.end() ? WideString() : it->second;
}
std::vector<WideString> TmvQBLocalizerBase::GetStringsDefValue(WideStringView name) const {
  auto it = stringsDefaults_.find(WideUpperCase(name));
  return it == stringsDefaults_.end() ? std::vector<WideString>() : it->second;
}
void TmvQBLocalizerBase::SetStrDefValue(WideStringView name, const std::string& value) {
  strDefaults_[WideUpperCase(name)] = value;
}
void TmvQBLocalizerBase::SetWStrDefValue(WideStringView name, WideStringView value) {
  wstrDefaults_[WideUpperCase(name)] = WideString(value);
}
void TmvQBLocalizerBase::SetStringsDefValue(WideStringView name, const std::vector<WideString>& value) {
  stringsDefaults_[WideUpperCase(name)] = value;
}

TmvQBLocalizerStandalone& QueryBuilderLocalizer() {
  static TmvQBLocalizerStandalone localizer(kMorvaneSection, mvQBLanguageManager());
  return localizer;
}

}  // namespace mv
