#include "support/Class.h"

#include "support/WideString.h"

namespace mv {

const TmvClass& TmvObject::StaticClass() {
  static const TmvClass info("TObject", nullptr);
  return info;
}

bool SameClassName(std::string_view a, std::string_view b) { return AnsiSameText(a, b); }

}  // namespace mv
