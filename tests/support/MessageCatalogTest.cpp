#include "support/MessageCatalog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>
#include <vector>

#include "support/Exceptions.h"

using namespace mv;

namespace {

class MapLanguage : public ImvMessageSource {
 public:
  explicit MapLanguage(std::map<WideString, WideString> texts) : texts_(std::move(texts)) {}
  bool TryGetText(WideStringView key, WideString& text) const override {
    auto it = texts_.find(WideString(key));
    if (it == texts_.end()) return false;
    text = it->second;
    return true;
  }

 private:
  std::map<WideString, WideString> texts_;
};

}  // namespace

TEST(MessageCatalog, DefaultsServeWithoutALanguage) {
  TmvMessageCatalog catalog;
  catalog.Register({{u"mvQBBadObjectName", u"Invalid object name"},
                    {u"mvQBErrorBadXML", u"Error parsing XML: %s"}});
  EXPECT_TRUE(catalog.IsRegistered(u"mvQBBadObjectName"));
  EXPECT_FALSE(catalog.IsRegistered(u"mvqbbadobjectname"));  // keys compare exactly
  EXPECT_EQ(catalog.Text(u"mvQBBadObjectName"), u"Invalid object name");
  EXPECT_EQ(catalog.Format(u"mvQBErrorBadXML", {u"Unknown error"}), u"Error parsing XML: Unknown error");
  EXPECT_EQ(catalog.DefaultText(u"mvQBBadObjectName"), u"Invalid object name");
  EXPECT_EQ(catalog.DefaultText(u"nope"), u"");
  EXPECT_EQ(catalog.Keys(), (std::vector<WideString>{u"mvQBBadObjectName", u"mvQBErrorBadXML"}));
}

TEST(MessageCatalog, TheLanguageWinsAndTheDefaultFillsItsGaps) {
  TmvMessageCatalog catalog;
  catalog.Register(u"mvQBFields", u"Fields");
  catalog.Register(u"mvQBRelations", u"Relations");
  catalog.SetSource(std::make_shared<MapLanguage>(std::map<WideString, WideString>{{u"mvQBFields", u"Felder"}}));
  EXPECT_EQ(catalog.Text(u"mvQBFields"), u"Felder");
  EXPECT_EQ(catalog.Text(u"mvQBRelations"), u"Relations");
  EXPECT_EQ(catalog.DefaultText(u"mvQBFields"), u"Fields");
  // A key known to neither shows itself; one only the language knows, its text.
  EXPECT_EQ(catalog.Text(u"mvQBNotRegistered"), u"mvQBNotRegistered");
  catalog.SetSource(std::make_shared<MapLanguage>(std::map<WideString, WideString>{{u"mvQBOnlyThere", u"x"}}));
  EXPECT_EQ(catalog.Text(u"mvQBOnlyThere"), u"x");
  catalog.SetSource(nullptr);
  EXPECT_EQ(catalog.Text(u"mvQBFields"), u"Fields");
}

TEST(MessageCatalog, RegisteringTwiceMustAgree) {
  TmvMessageCatalog catalog;
  catalog.Register(u"k", u"text");
  EXPECT_NO_THROW(catalog.Register(u"k", u"text"));
  EXPECT_THROW(catalog.Register(u"k", u"other text"), EmvQueryBuilderError);
  EXPECT_EQ(catalog.Text(u"k"), u"text");
}

TEST(MessageCatalog, ReadsFromManyThreadsWhileTheLanguageChanges) {
  TmvMessageCatalog catalog;
  catalog.Register(u"mvQBFields", u"Fields");
  auto german = std::make_shared<MapLanguage>(std::map<WideString, WideString>{{u"mvQBFields", u"Felder"}});
  std::atomic<bool> stop{false};
  std::atomic<int> bad{0};
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; ++t) {
    readers.emplace_back([&] {
      while (!stop) {
        const WideString text = catalog.Text(u"mvQBFields");
        if (text != u"Fields" && text != u"Felder") ++bad;
      }
    });
  }
  for (int i = 0; i < 500; ++i) {
    catalog.SetSource(i % 2 ? nullptr : german);
    catalog.Register(u"key" + IntToWide(i), u"text");
  }
  stop = true;
  for (auto& r : readers) r.join();
  EXPECT_EQ(bad.load(), 0);
  EXPECT_EQ(catalog.Keys().size(), 501u);
}

TEST(MessageCatalog, TheProcessCatalogAndItsShortcuts) {
  MessageCatalog().Register(u"mvTestShortcutKey", u"Value %d");
  EXPECT_EQ(MessageText(u"mvTestShortcutKey"), u"Value %d");
  EXPECT_EQ(MessageFormat(u"mvTestShortcutKey", {3}), u"Value 3");
}
