#include "surface/SurfaceMessages.h"

#include "support/MessageCatalog.h"
#include "surface/QtText.h"

namespace mv {

namespace {

void RegisterOnce() {
  static const bool registered = [] {
    MessageCatalog().Register({
        {mvQBUnionButtonCaption, u"Q"},
        {mvQBNewUnionSubQuery, u"New Union Sub-Query"},
    });
    return true;
  }();
  (void)registered;
}

}  // namespace

QString SurfaceText(const char16_t* key) {
  RegisterOnce();
  return ToQString(MessageText(key));
}

}  // namespace mv
