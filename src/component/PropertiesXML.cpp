#include "component/PropertiesXML.h"

#include <pugixml.hpp>

#include <sstream>
#include <unordered_set>

#include "metadata/MetadataXml.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

// The object that holds the scalar at a dotted path, and its entry.
std::pair<TmvPersistent*, const TmvPropertyEntry*> ResolveLeaf(const TmvPropertyTable& table, TmvPersistent& object,
                                                              WideStringView path) {
  TmvPersistent* current = &object;
  const TmvPropertyTable* currentTable = &table;
  for (;;) {
    const size_t dot = path.find(u'.');
    const TmvPropertyEntry* entry = currentTable->Find(path.substr(0, dot));
    if (dot == WideStringView::npos) return {current, entry};
    current = entry->Object(*current);
    currentTable = &entry->ObjectTable();
    path.remove_prefix(dot + 1);
  }
}

std::vector<WideStringView> SplitKey(WideStringView path) {
  std::vector<WideStringView> parts;
  size_t start = 0;
  while (start <= path.size()) {
    size_t slash = path.find(u'/', start);
    if (slash == WideStringView::npos) slash = path.size();
    if (slash > start) parts.push_back(path.substr(start, slash - start));
    start = slash + 1;
  }
  return parts;
}

pugi::xpath_node_set SelectNodes(pugi::xml_node root, WideStringView xpath) {
  const std::string expression = UTF8Encode(xpath);
  try {
    pugi::xpath_query query(expression.c_str());
    if (!query)
      throw EmvQueryBuilderError(WideFormat(u"Bad XPath expression \"%s\": %s",
                                            {WideString(xpath), UTF8Decode(query.result().description())}));
    return query.evaluate_node_set(root);
  } catch (const pugi::xpath_exception& e) {
    throw EmvQueryBuilderError(
        WideFormat(u"Bad XPath expression \"%s\": %s", {WideString(xpath), UTF8Decode(e.result().description())}));
  }
}

// The elements of a selection (an attribute or text counts as its element).
std::unordered_set<pugi::xml_node_struct*> SelectedElements(pugi::xml_node root, WideStringView xpath) {
  std::unordered_set<pugi::xml_node_struct*> selected;
  for (const pugi::xpath_node& node : SelectNodes(root, xpath)) {
    pugi::xml_node element = node.attribute() ? node.parent() : node.node();
    while (element && element.type() != pugi::node_element && element.type() != pugi::node_document)
      element = element.parent();
    if (element) selected.insert(element.internal_object());
  }
  return selected;
}

// Keeps the selected elements and the elements above them; answers whether
// anything of `node` stays.
bool KeepSelected(pugi::xml_node node, const std::unordered_set<pugi::xml_node_struct*>& selected) {
  if (selected.count(node.internal_object())) return true;
  bool kept = false;
  for (pugi::xml_node child = node.first_child(); child;) {
    pugi::xml_node next = child.next_sibling();
    if (KeepSelected(child, selected))
      kept = true;
    else
      node.remove_child(child);
    child = next;
  }
  return kept;
}

}  // namespace

WideString XMLPropertyText(const TmvPropertyEntry& entry, const TmvPersistent& object) {
  if (entry.Type == ptBoolean) return entry.Get(object) ? u"1" : u"0";
  return TmvPropertyTable::EntryText(entry, object);
}

std::vector<TmvXMLProperty> XMLPropertiesOf(const TmvPropertyTable& table, TmvPersistent& object) {
  std::vector<TmvXMLProperty> entries;
  for (const TmvPropertyLeaf& leaf : table.Leaves()) {
    if (leaf.XMLPath.empty()) continue;
    // Named copies, not a structured binding: older compilers cannot capture those.
    const auto resolved = ResolveLeaf(table, object, leaf.Path);
    auto* holder = resolved.first;
    auto* entry = resolved.second;
    entries.push_back({leaf.XMLPath, [holder, entry] { return XMLPropertyText(*entry, *holder); },
                       [holder, entry](WideStringView text) {
                         TmvPropertyTable::SetEntryText(*entry, *holder, text);
                       }});
  }
  return entries;
}

void WritePropertyToXML(pugi::xml_node root, WideStringView path, WideStringView value) {
  pugi::xml_node node = root;
  for (WideStringView part : SplitKey(path)) {
    const std::string name = UTF8Encode(part);
    pugi::xml_node child = FindChildElByName(name.c_str(), node);
    node = child ? child : CreateNodeParent(node, name.c_str());
  }
  CreateNodeWithValueParent(node, "value", TmvVariant(WideString(value)));
}

void ReadPropertyFromXML(pugi::xml_node root, const TmvXMLProperty& entry) {
  pugi::xml_node node = root;
  for (WideStringView part : SplitKey(entry.Path)) {
    node = FindChildElByName(UTF8Encode(part).c_str(), node);
    if (!node) return;
  }
  pugi::xml_node value = FindChildElByName("value", node);
  if (!value || !XMLNodeHasText(value)) return;
  try {
    entry.Set(XMLNodeText(value));
  } catch (const EConvertError& e) {
    throw EConvertError(WideFormat(u"Properties XML, entry \"%s\": %s", {entry.Path, e.Message()}));
  }
}

void GetPropertiesXMLNodes(pugi::xml_node root, const std::vector<TmvXMLProperty>& entries) {
  for (const TmvXMLProperty& entry : entries) WritePropertyToXML(root, entry.Path, entry.Get());
}

void SetPropertiesXMLNodes(pugi::xml_node root, const std::vector<TmvXMLProperty>& entries) {
  for (const TmvXMLProperty& entry : entries) ReadPropertyFromXML(root, entry);
}

void RemoveAllNodes(pugi::xml_node root, WideStringView xpath) {
  const auto selected = SelectedElements(root, xpath);
  // Only the outermost of nested selections: a removed element frees its
  // descendants.
  std::vector<pugi::xml_node> outermost;
  for (pugi::xml_node_struct* raw : selected) {
    pugi::xml_node node(raw);
    bool nested = false;
    for (pugi::xml_node up = node.parent(); up && !nested; up = up.parent()) nested = selected.count(up.internal_object());
    if (!nested) outermost.push_back(node);
  }
  for (pugi::xml_node node : outermost)
    if (node.parent()) node.parent().remove_child(node);
}

void RemoveAllNodesExcept(pugi::xml_node root, WideStringView xpath) {
  const auto selected = SelectedElements(root, xpath);
  for (pugi::xml_node up = root; up; up = up.parent())
    if (selected.count(up.internal_object())) return;  // all of root stays
  KeepSelected(root, selected);
}

WideString GetPropertiesXMLByXPath(const std::vector<TmvXMLProperty>& entries, WideStringView include,
                                   WideStringView exclude) {
  pugi::xml_document document;
  pugi::xml_node root = document.append_child("properties");
  GetPropertiesXMLNodes(root, entries);
  if (!include.empty()) RemoveAllNodesExcept(root, include);
  if (!exclude.empty()) RemoveAllNodes(root, exclude);
  std::ostringstream output;
  document.save(output, "  ", pugi::format_indent | pugi::format_no_declaration, pugi::encoding_utf8);
  return UTF8Decode(output.str());
}

WideString GetPropertiesXMLByTypes(const std::vector<TmvXMLProperty>& entries, bool nonVisual, bool visual) {
  // The non-visual settings are written under "system".
  static constexpr const char16_t* kNonVisual = u"/properties/system";
  static constexpr const char16_t* kVisual = u"/properties/visual";
  if (nonVisual && visual) return GetPropertiesXMLByXPath(entries, {}, {});
  if (nonVisual) return GetPropertiesXMLByXPath(entries, kNonVisual, {});
  if (visual) return GetPropertiesXMLByXPath(entries, kVisual, {});
  return GetPropertiesXMLByXPath(entries, {}, WideString(kNonVisual) + u" | " + kVisual);
}

bool SetPropertiesXML(const std::vector<TmvXMLProperty>& entries, WideStringView text) {
  if (text.empty()) return false;
  const std::string bytes = UTF8Encode(text);
  pugi::xml_document document;
  if (!document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default, pugi::encoding_utf8)) return false;
  pugi::xml_node root = document.document_element();
  if (!root) return false;
  SetPropertiesXMLNodes(root, entries);
  return true;
}

}  // namespace mv
