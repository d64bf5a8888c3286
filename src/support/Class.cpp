#include "support/Class.h"

#include "support/WideString.h"

namespace mv {

bool TmvClass::InheritsFrom(const TmvClass& ancestor) const {
  for (const TmvClass* c = this; c; c = c->parent_) {
    if (c == &ancestor) return true;
  }
  return false;
}

const TmvClass& TmvObject::StaticClass() {
  static const TmvClass info("TObject", nullptr);
  return info;
}

bool SameClassName(std::string_view a, std::string_view b) { return AnsiSameText(a, b); }

}  // namespace mv
