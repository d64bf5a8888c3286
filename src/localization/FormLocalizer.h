// The localizer of a form: the form registers its localizable properties by
// their dotted paths ("Caption", "pDatasource.lAlias.Caption",
// "gbAppearance.cbBorderStyle.Items"), each with a getter and a setter; the
// paths listed in `Properties` are localized from the section named after the
// form's class. The design-time texts are saved first as defaults, so that a
// language lacking a key, or no language at all, shows them again.
#pragma once

#include <functional>
#include <vector>

#include "localization/LanguageManager.h"

namespace mv {

class TmvQBLocalizerForm : public TmvQBLocalizerBase {
 public:
  explicit TmvQBLocalizerForm(WideStringView formClassName, TmvQBLanguageManager& manager = mvQBLanguageManager());

  WideString GetSectionName() const override { return sectionName_; }
  bool IsRequireDefaultsStoring() const override { return true; }

  // The paths to localize; a registered property not listed is left alone.
  std::vector<WideString> Properties;

  void RegisterText(WideStringView path, std::function<WideString()> get, std::function<void(WideStringView)> set);
  void RegisterStrings(WideStringView path, std::function<std::vector<WideString>()> get,
                       std::function<void(const std::vector<WideString>&)> set);
  // Called on every localization with the current language's reading order
  // and character set (left to right and DEFAULT_CHARSET with no language).
  std::function<void(TmvBiDiMode, uint8_t charSet)> OnApplyLanguage;

  // Loading is done: saves the defaults and localizes, as a form made at run
  // time shows the current language from its first display.
  void Loaded();

 protected:
  void SaveDefaultsInternal() override;
  void LocalizeInternal() override;

 private:
  bool IsListed(WideStringView path) const;

  struct TextProperty {
    WideString path;
    std::function<WideString()> get;
    std::function<void(WideStringView)> set;
  };
  struct StringsProperty {
    WideString path;
    std::function<std::vector<WideString>()> get;
    std::function<void(const std::vector<WideString>&)> set;
  };
  WideString sectionName_;
  std::vector<TextProperty> texts_;
  std::vector<StringsProperty> lists_;
};

}  // namespace mv
