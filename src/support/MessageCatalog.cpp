#include "support/MessageCatalog.h"

#include <mutex>

#include "support/Exceptions.h"

namespace mv {

void TmvMessageCatalog::Register(WideStringView key, WideStringView defaultText) {
  std::unique_lock<std::shared_mutex> guard(lock_);
  auto it = defaults_.find(key);
  if (it == defaults_.end()) {
    defaults_.emplace(WideString(key), WideString(defaultText));
  } else if (it->second != defaultText) {
    throw EmvQueryBuilderError(WideFormat(u"Message \"%s\" registered twice with different texts: \"%s\" and \"%s\"",
                                          {key, it->second, defaultText}));
  }
}

void TmvMessageCatalog::Register(std::initializer_list<TmvMessageDefinition> definitions) {
  for (const TmvMessageDefinition& d : definitions) Register(d.key, d.defaultText);
}

bool TmvMessageCatalog::IsRegistered(WideStringView key) const {
  std::shared_lock<std::shared_mutex> guard(lock_);
  return defaults_.find(key) != defaults_.end();
}

WideString TmvMessageCatalog::DefaultText(WideStringView key) const {
  std::shared_lock<std::shared_mutex> guard(lock_);
  auto it = defaults_.find(key);
  return it == defaults_.end() ? WideString() : it->second;
}

WideString TmvMessageCatalog::Text(WideStringView key) const {
  std::shared_ptr<const ImvMessageSource> source;
  WideString text;
  bool registered;
  {
    std::shared_lock<std::shared_mutex> guard(lock_);
    source = source_;
    auto it = defaults_.find(key);
    registered = it != defaults_.end();
    if (registered) text = it->second;
  }
  // The language is asked without the lock: it may take its time.
  WideString translated;
  if (source && source->TryGetText(key, translated)) return translated;
  return registered ? text : WideString(key);
}

WideString TmvMessageCatalog::Format(WideStringView key, const TmvFormatArgs& args) const {
  return WideFormat(Text(key), args);
}

std::vector<WideString> TmvMessageCatalog::Keys() const {
  std::shared_lock<std::shared_mutex> guard(lock_);
  std::vector<WideString> keys;
  keys.reserve(defaults_.size());
  for (const auto& entry : defaults_) keys.push_back(entry.first);
  return keys;
}

void TmvMessageCatalog::SetSource(std::shared_ptr<const ImvMessageSource> source) {
  std::unique_lock<std::shared_mutex> guard(lock_);
  source_ = std::move(source);
}

std::shared_ptr<const ImvMessageSource> TmvMessageCatalog::GetSource() const {
  std::shared_lock<std::shared_mutex> guard(lock_);
  return source_;
}

TmvMessageCatalog& MessageCatalog() {
  static TmvMessageCatalog catalog;
  return catalog;
}

}  // namespace mv
