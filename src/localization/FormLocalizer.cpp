#include "localization/FormLocalizer.h"

#include <algorithm>

namespace mv {

TmvQBLocalizerForm::TmvQBLocalizerForm(WideStringView formClassName, TmvQBLanguageManager& manager)
    : TmvQBLocalizerBase(manager), sectionName_(formClassName) {}

void TmvQBLocalizerForm::RegisterText(WideStringView path, std::function<WideString()> get,
                                      std::function<void(WideStringView)> set) {
  texts_.push_back({WideString(path), std::move(get), std::move(set)});
}

void TmvQBLocalizerForm::RegisterStrings(WideStringView path, std::function<std::vector<WideString>()> get,
                                         std::function<void(const std::vector<WideString>&)> set) {
  lists_.push_back({WideString(path), std::move(get), std::move(set)});
}

void TmvQBLocalizerForm::Loaded() {
  SaveDefaults();
  Localize();
}

bool TmvQBLocalizerForm::IsListed(WideStringView path) const {
  return std::find(Properties.begin(), Properties.end(), path) != Properties.end();
}

void TmvQBLocalizerForm::SaveDefaultsInternal() {
  for (const TextProperty& p : texts_)
    if (IsListed(p.path)) SetWStrDefValue(p.path, p.get());
  for (const StringsProperty& p : lists_)
    if (IsListed(p.path)) SetStringsDefValue(p.path, p.get());
}

void TmvQBLocalizerForm::LocalizeInternal() {
  TmvQBLanguageSourceBase* language = Manager().CurrentLanguage();
  if (OnApplyLanguage)
    OnApplyLanguage(language ? language->BiDiMode() : bdLeftToRight, language ? language->CharSet() : DEFAULT_CHARSET);
  for (const TextProperty& p : texts_)
    if (IsListed(p.path)) p.set(ReadWideString(p.path, GetWStrDefValue(p.path)));
  for (const StringsProperty& p : lists_) {
    if (!IsListed(p.path)) continue;
    std::vector<WideString> lines;
    ReadStrings(p.path, lines, GetStringsDefValue(p.path));
    p.set(lines);
  }
}

}  // namespace mv
