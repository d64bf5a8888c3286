// The message catalog: every message a user may read has a key ("mvQB...")
// and an English default. A message is looked up in the current language and
// the default serves when the language lacks it.
//
// Subsystems register their keys when the library starts (from their init
// function, not from static constructors), and read texts through `Text`:
//
//   MessageCatalog().Register({{u"mvQBBadObjectName", u"Invalid object name"}});
//   throw EmvQueryBuilderError(MessageText(u"mvQBBadObjectName"));
//
// The language comes from an `ImvMessageSource`, which the localization
// subsystem provides; none is set at start, so defaults show. Reads are safe
// from any thread; a source must answer from several threads at once.
#pragma once

#include <initializer_list>
#include <map>
#include <memory>
#include <shared_mutex>
#include <vector>

#include "support/WideFormat.h"
#include "support/WideString.h"

namespace mv {

// A language as the catalog sees it: texts by message key.
class ImvMessageSource {
 public:
  virtual ~ImvMessageSource() = default;
  // The language's text of `key`; false when it has none.
  virtual bool TryGetText(WideStringView key, WideString& text) const = 0;
};

struct TmvMessageDefinition {
  const char16_t* key;
  const char16_t* defaultText;
};

class TmvMessageCatalog {
 public:
  // Registers keys with their English defaults. Registering a key again
  // with the same text does nothing; with another text it raises
  // EmvQueryBuilderError (two subsystems would disagree on one message).
  void Register(WideStringView key, WideStringView defaultText);
  void Register(std::initializer_list<TmvMessageDefinition> definitions);

  bool IsRegistered(WideStringView key) const;
  // The registered default; empty for an unknown key.
  WideString DefaultText(WideStringView key) const;
  // The language's text, else the default, else (an unregistered key that
  // the language lacks) the key itself, so that the gap shows.
  WideString Text(WideStringView key) const;
  // WideFormat of Text(key).
  WideString Format(WideStringView key, const TmvFormatArgs& args) const;
  // The registered keys in order.
  std::vector<WideString> Keys() const;

  // Sets the language; null returns to the defaults.
  void SetSource(std::shared_ptr<const ImvMessageSource> source);
  std::shared_ptr<const ImvMessageSource> GetSource() const;

 private:
  mutable std::shared_mutex lock_;
  std::map<WideString, WideString, std::less<>> defaults_;
  std::shared_ptr<const ImvMessageSource> source_;
};

// The catalog of the process.
TmvMessageCatalog& MessageCatalog();

inline WideString MessageText(WideStringView key) { return MessageCatalog().Text(key); }
inline WideString MessageFormat(WideStringView key, std::initializer_list<TmvFormatArg> args) {
  return MessageCatalog().Format(key, TmvFormatArgs(args));
}

}  // namespace mv
