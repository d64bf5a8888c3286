// Properties XML: a small document that keeps chosen settings of an object
// apart from the query. The root is "properties"; each property stands in
// nested elements named by the parts of its key, its value in a child
// element "value":
//
//   <properties><visual><query-designer><work-area><grid-size>
//     <value>2</value>
//   </grid-size></work-area></query-designer></visual></properties>
//
// The entries are the properties of a property table (PropertyTable.h)
// that have a key, in the table's order, nested option objects at their
// place under their own key. Values are written as the table writes them
// (enumerations by name, colours "$80000005"), booleans as 1 and 0; they
// are read as the table reads them (booleans also true/false, enumerations
// also by ordinal).
#pragma once

#include <functional>
#include <vector>

#include "sqlgen/PropertyTable.h"
#include "support/WideString.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace mv {

// One entry of a document: its key ("visual/query-designer/work-area/grid-size")
// and how its value is read and written as text.
struct TmvXMLProperty {
  WideString Path;
  std::function<WideString()> Get;
  std::function<void(WideStringView)> Set;
};

// The entries of a table's properties with a key, for `object`, in order.
std::vector<TmvXMLProperty> XMLPropertiesOf(const TmvPropertyTable& table, TmvPersistent& object);

// The value of a table entry as text in properties XML (booleans 1 and 0).
WideString XMLPropertyText(const TmvPropertyEntry& entry, const TmvPersistent& object);

// One entry: the elements of the path are found or made below `root`, and
// a "value" element with the text is added.
void WritePropertyToXML(pugi::xml_node root, WideStringView path, WideStringView value);
// One entry: nothing when an element of the path or the value is missing;
// else the entry's Set with the text. A value the property does not take
// raises EConvertError naming the key.
void ReadPropertyFromXML(pugi::xml_node root, const TmvXMLProperty& entry);

// Every entry under `root`, and back, in order.
void GetPropertiesXMLNodes(pugi::xml_node root, const std::vector<TmvXMLProperty>& entries);
void SetPropertiesXMLNodes(pugi::xml_node root, const std::vector<TmvXMLProperty>& entries);

// The whole document as text. When `include` (an XPath expression) is not
// empty, only the elements it selects are kept, with the elements above
// them; then the elements `exclude` selects go. A bad expression raises
// EmvQueryBuilderError naming it.
WideString GetPropertiesXMLByXPath(const std::vector<TmvXMLProperty>& entries, WideStringView include,
                                   WideStringView exclude);
// The document with the non-visual settings ("/properties/system"), the
// visual ones ("/properties/visual"), both (the whole document) or neither
// (an empty root).
WideString GetPropertiesXMLByTypes(const std::vector<TmvXMLProperty>& entries, bool nonVisual, bool visual);
// Applies a document: empty text or text that is not well-formed XML does
// nothing; a missing entry keeps its value. Answers whether the text was a
// document (its root's name is not checked).
bool SetPropertiesXML(const std::vector<TmvXMLProperty>& entries, WideStringView text);

// The XML helpers of the filters: the elements below `root` that the
// expression selects go, or all but them (and the elements above them).
void RemoveAllNodes(pugi::xml_node root, WideStringView xpath);
void RemoveAllNodesExcept(pugi::xml_node root, WideStringView xpath);

}  // namespace mv
