// The builder components' settings as properties XML.
#include <algorithm>

#include "component/PropertiesXML.h"
#include "component/SQLBuilderComponents.h"
#include "sqlgen/SQLBuilder.h"

namespace mv {

namespace {

// The keyed settings of the inner builder, the flat ones first (with the
// component's "quote-all-identifiers" after "keyword-format"), then the
// format subtrees.
std::vector<TmvXMLProperty> ComponentXMLProperties(TmvBaseSQLBuilder& component) {
  TSQLBuilder& builder = component.Builder();
  std::vector<TmvXMLProperty> entries = XMLPropertiesOf(builder.PropertyTable(), builder);
  std::stable_partition(entries.begin(), entries.end(),
                        [](const TmvXMLProperty& entry) { return entry.Path.find(u'/') == WideString::npos; });
  auto keywordFormat = std::find_if(entries.begin(), entries.end(),
                                    [](const TmvXMLProperty& entry) { return entry.Path == u"keyword-format"; });
  if (keywordFormat != entries.end()) ++keywordFormat;
  entries.insert(keywordFormat,
                 {u"quote-all-identifiers", [&component] { return WideString(component.QuoteAllIdentifiers() ? u"1" : u"0"); },
                  [&component](WideStringView text) {
                    // Only a change: false must not turn icNone into icIfNeed.
                    const bool value = TmvPropertyTable::ParseValue(TmvPropertyEntry{}, text) != 0;
                    if (value != component.QuoteAllIdentifiers()) component.SetQuoteAllIdentifiers(value);
                  }});
  return entries;
}

}  // namespace

WideString TmvBaseSQLBuilder::GetPropertiesXMLByXPath(WideStringView include, WideStringView exclude) {
  return mv::GetPropertiesXMLByXPath(ComponentXMLProperties(*this), include, exclude);
}

void TmvBaseSQLBuilder::SetPropertiesXML(WideStringView text) {
  if (text.empty()) return;
  TmvUpdateBatch batch(Builder());
  mv::SetPropertiesXML(ComponentXMLProperties(*this), text);
}

}  // namespace mv
