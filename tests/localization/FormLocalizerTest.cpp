// The form localizer over registered properties.
#include <gtest/gtest.h>

#include "localization/FormLocalizer.h"

namespace mv {
namespace {

struct Form {
  WideString caption = u"Add Object";
  WideString alias = u"Alias:";
  WideString hint = u"design hint";
  std::vector<WideString> items = {u"None", u"Single", u"Sizeable"};
};

TEST(FormLocalizer, ListedPathsFollowTheLanguageAndFallBackToDesignTexts) {
  TmvQBLanguageManager manager;
  manager.AddLanguageFromString(u"German",
                                u"[General Settings]\nCharSet=ANSI_CHARSET\n[TmvAddObjectForm]\n"
                                u"Caption=Objekt hinzufügen\nhint=nicht gelistet\n"
                                u"cbBorder.Items.Item0=Keiner\ncbBorder.Items.Item1=Einfach\n");
  manager.AddLanguageFromString(u"Farsi", u"[General Settings]\nCharSet=ARABIC_CHARSET\n");
  Form form;
  TmvQBLocalizerForm localizer(u"TmvAddObjectForm", manager);
  localizer.Properties = {u"Caption", u"pDatasource.lAlias.Caption", u"cbBorder.Items"};
  localizer.RegisterText(u"Caption", [&] { return form.caption; }, [&](WideStringView v) { form.caption = v; });
  localizer.RegisterText(u"pDatasource.lAlias.Caption", [&] { return form.alias; },
                         [&](WideStringView v) { form.alias = v; });
  localizer.RegisterText(u"hint", [&] { return form.hint; }, [&](WideStringView v) { form.hint = v; });
  localizer.RegisterStrings(u"cbBorder.Items", [&] { return form.items; },
                            [&](const std::vector<WideString>& v) { form.items = v; });
  TmvBiDiMode mode = bdLeftToRight;
  localizer.OnApplyLanguage = [&](TmvBiDiMode m, uint8_t) { mode = m; };

  manager.SetCurrentLanguageIndex(0);  // before the defaults are saved: nothing happens
  EXPECT_EQ(form.caption, u"Add Object");
  localizer.Loaded();
  EXPECT_EQ(form.caption, u"Objekt hinzufügen");
  EXPECT_EQ(form.alias, u"Alias:");  // the language lacks the key: the design text
  EXPECT_EQ(form.hint, u"design hint");  // not listed: left alone
  EXPECT_EQ(form.items, (std::vector<WideString>{u"Keiner", u"Einfach", u"Sizeable"}));
  manager.SetCurrentLanguageIndex(1);
  EXPECT_EQ(mode, bdRightToLeft);
  EXPECT_EQ(form.caption, u"Add Object");
  manager.SetCurrentLanguageIndex(-1);
  EXPECT_EQ(mode, bdLeftToRight);
  EXPECT_EQ(form.items, (std::vector<WideString>{u"None", u"Single", u"Sizeable"}));
}

}  // namespace
}  // namespace mv
