// The form sections of the built-in language files against the forms
// themselves: English holds each caption as the code writes it, every other
// language but the small Polish file answers every key, and a form's
// localizer shows the current language.
#include <gtest/gtest.h>

#include <cctype>
#include <map>

#include "dialects/EngineInit.h"
#include "frontend/PropertiesForm.h"
#include "localization/FormLocalizer.h"
#include "localization/LanguageSources.h"
#include "model/PropertyForms.h"

namespace mv {
namespace {

using Keys = std::vector<std::pair<WideString, WideString>>;  // key, English text

// The form's own caption and each control's that has one. With `other` (the
// same form made with another argument) a caption that differs between the
// two is made at run time and stays out of the files.
Keys CaptionKeys(const TmvQBPropertiesForm& form, const TmvQBPropertiesForm* other = nullptr) {
  Keys keys{{u"Caption", form.Caption()}};
  for (const TmvFormControl& control : form.Controls())
    if (!control.Caption.empty() && (!other || other->FindControl(control.Name)->Caption == control.Caption))
      keys.emplace_back(control.Name + u".Caption", control.Caption);
  return keys;
}

std::map<WideString, Keys> FormSections() {
  InitializeEngine();
  RegisterModelPropertiesForms();
  std::map<WideString, Keys> sections;
  for (const WideString& name : RegisteredPropertiesFormClasses())
    sections[name] = CaptionKeys(*CreatePropertiesForm(name, {}));
  const TmvProcedureParamsForm params(u"P"), other(u"Q");
  sections[params.ClassName()] = CaptionKeys(params, &other);
  // The add-object window belongs to the design surface; these are its captions.
  sections[u"TmvAddObjectForm"] = {{u"Caption", u"Add new object"},
                                   {u"lSchemas.Caption", u"Filter objects by Schema name:"},
                                   {u"bAdd.Caption", u"&Add Object"},
                                   {u"bClose.Caption", u"Close"},
                                   {u"pcObjects.tsTables.Caption", u"Tables"},
                                   {u"pcObjects.tsViews.Caption", u"Views"},
                                   {u"pcObjects.tsProcedures.Caption", u"Procedures"},
                                   {u"pcObjects.tsSynonyms.Caption", u"Synonyms"}};
  return sections;
}

// SQL words and punctuation are not translated.
bool IsUntranslated(const WideString& text) {
  for (char16_t c : text)
    if (c < 128 && std::islower(c)) return false;
  return true;
}

TEST(FormLanguageSections, EveryLanguageButPolishHasEveryCaptionAndEnglishIsTheCode) {
  const std::map<WideString, Keys> sections = FormSections();
  ASSERT_GE(sections.size(), 17u);
  const WideString missing = u"\x1F(missing)";
  for (const TmvBuiltinLanguage& language : BuiltinLanguages()) {
    const WideString file = language.resourceName;
    if (file == u"POLISH.LNG") continue;
    TmvQBLanguageSourceResource source(language.name, file);
    for (const auto& [section, keys] : sections)
      for (const auto& [key, english] : keys) {
        WideString text;
        source.ReadWideString(section, key, text, missing);
        SCOPED_TRACE(UTF8Encode(file + u" [" + section + u"] " + key));
        EXPECT_NE(text, missing);
        if (file == u"ENGLISH.LNG" || IsUntranslated(english)) {
          EXPECT_EQ(text, english);
        }
      }
  }
}

TEST(FormLanguageSections, AFormLocalizerShowsTheCurrentLanguage) {
  InitializeEngine();
  std::unique_ptr<TmvQBPropertiesForm> form = CreatePropertiesForm(u"TmvQueryPropsSbForm", {});
  ASSERT_TRUE(form);
  WideString caption = form->FindControl(u"rbAllRecords")->Caption;
  TmvQBLanguageManager& manager = mvQBLanguageManager();
  TmvQBLocalizerForm localizer(form->ClassName(), manager);
  localizer.Properties = {u"rbAllRecords.Caption"};
  localizer.RegisterText(u"rbAllRecords.Caption", [&] { return caption; }, [&](WideStringView v) { caption = v; });
  localizer.Loaded();
  manager.SetCurrentLanguageIndex(manager.IndexOfName(u"German"));
  EXPECT_EQ(caption, u"Alle Datensätze");
  manager.SetCurrentLanguageIndex(-1);
  EXPECT_EQ(caption, u"All records");
}

}  // namespace
}  // namespace mv
