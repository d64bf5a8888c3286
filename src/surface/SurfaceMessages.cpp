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
        {u"mvQBGCSelect", u"Output"},
        {u"mvQBGCExpression", u"Expression"},
        {u"mvQBGCAggregate", u"Aggregate"},
        {u"mvQBGCAlias", u"Alias"},
        {u"mvQBGCSortType", u"Sort Type"},
        {u"mvQBGCSortOrder", u"Sort Order"},
        {u"mvQBGCGrouping", u"Grouping"},
        {u"mvQBGCCriteria", u"Criteria"},
        {u"mvQBGCOr", u"Or..."},
        {u"mvQBMetadataTreeLoading", u"Loading..."},
        {u"mvQBExpressionBuilder", u"Build expression..."},
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
