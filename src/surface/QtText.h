// Text between the engine (UTF-16 wide strings) and Qt (QString, also
// UTF-16): a copy of the code units, nothing converted.
#pragma once

#include <QString>

#include "support/WideString.h"

namespace mv {

inline QString ToQString(WideStringView text) {
  return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

inline WideString FromQString(const QString& text) {
  return WideString(reinterpret_cast<const char16_t*>(text.utf16()), static_cast<size_t>(text.size()));
}

}  // namespace mv
