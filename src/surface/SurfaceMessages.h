// The captions of the design surface: language keys with their English
// texts, registered with the message catalog on first use, so that the
// current language answers them and a missing one falls back to English.
#pragma once

#include <QString>

namespace mv {

// The caption of `key` in the current language.
QString SurfaceText(const char16_t* key);

inline constexpr const char16_t* mvQBUnionButtonCaption = u"mvQBUnionButtonCaption";
inline constexpr const char16_t* mvQBNewUnionSubQuery = u"mvQBNewUnionSubQuery";

}  // namespace mv
