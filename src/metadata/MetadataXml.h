// The metadata XML file: the DOM helpers through which the metadata classes
// write and read themselves (GetXMLNode / LoadFromXMLNode), and the error
// that a file the reader refuses raises.
//
// The file is a root "metadata" with the default names, the custom
// aggregates and one element per object (table, view, procedure, synonym).
// Three building blocks recur:
//   token element   <schema name="dbo" case_sens="0"/>
//   name element    <database><item name="db" case_sens="0"/></database>,
//                   a "dblink" child first when the name has a link, then
//                   one "item" per part, the object name (innermost) first
//   value element   <size>30</size>; booleans are written 1 or 0 and read
//                   as false from "0" and "false" (any case), true otherwise
// A reader skips elements it does not know, so older and newer files load.
//
// The container's side (GetXML, SaveToXMLFile, LoadFromXML[File],
// AddFromXML[File]) is declared with the container and defined in
// MetadataXml.cpp: a load reads into a scratch container and takes its
// objects over only when the whole document has been read, so a refused
// file leaves the container as it was.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "support/Exceptions.h"
#include "support/FieldType.h"
#include "support/Variant.h"
#include "support/WideString.h"

namespace pugi {
class xml_node;
struct xml_node_struct;
}  // namespace pugi

namespace mv {

// The namespace of XML Schema instances and our schema's location, the two
// attributes of the root.
inline constexpr const char* kXMLSchemaInstanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";
inline constexpr const char* kMetadataSchemaLocation = "http://www.morvane.org/schemas/metadata.xsd";

// --- Writing ---

// A new element `name`, appended to `parent`.
pugi::xml_node CreateNodeParent(pugi::xml_node parent, const char* name);
// A boolean becomes the integer 1 or 0; any other value stays as it is.
TmvVariant TransformNodeValue(const TmvVariant& value);
// A new element `name` with the value as its text (see TransformNodeValue;
// integers in decimal, text as it stands), appended to `parent`.
pugi::xml_node CreateNodeWithValueParent(pugi::xml_node parent, const char* name, const TmvVariant& value);

// --- Reading ---

// The first child element named exactly `name`; a null node if none.
pugi::xml_node FindChildElByName(const char* name, pugi::xml_node node);
// The first child element named `name` whose attribute `attributeName` is
// `value`; a null node if none.
pugi::xml_node FindChildByNameAndAttribute(const char* name, const char* attributeName, const char* value,
                                           pugi::xml_node node);
// Whether the element has a first child that carries text (text or CDATA).
bool XMLNodeHasText(pugi::xml_node element);
// The text of the element's first child; empty when it has none.
WideString XMLNodeText(pugi::xml_node element);
// The text of the child element `name`: Empty when there is no such child
// or it holds no text.
TmvVariant GetValueFromChildNode(pugi::xml_node element, const char* name);
// A boolean element: false for "0" and "false" (any case), true otherwise.
bool XMLNodeBool(pugi::xml_node element);
// An integer element: its text as a decimal integer, or `fallback`.
int32_t XMLNodeInt(pugi::xml_node element, int32_t fallback);
// The type of a "type" element, by its attribute "platform": "native" (an
// ordinal), "net" (a database type name), "java" (a JDBC type number), or,
// missing or other, the text's form (an integer is an ordinal, other text a
// database type name). Empty text is ftUnknown. A name, ordinal or text that
// names no type raises EmvMetadataXMLError at the element; a JDBC number
// without a type of its own is ftUnknown.
TFieldType ReadXMLFieldType(pugi::xml_node element);

// Where a node stands, from the root: "metadata/table[2]/fields/field/type",
// an element's position given where siblings share its name.
WideString XMLElementPath(pugi::xml_node node);
// The line (from 1) of a byte offset in a text.
int XMLLineOfOffset(std::string_view text, std::ptrdiff_t offset);

// A metadata XML document the reader refuses: text that does not parse, a
// wrong root, an unknown field type, an object twice. The message names the
// source (file or text), the line and the element, and the reason.
class EmvMetadataXMLError : public EmvQueryBuilderError {
 public:
  // A failure at `element` (null: the document as a whole) while a
  // document is read; the message is the reason until Locate.
  EmvMetadataXMLError(WideString reason, pugi::xml_node element);
  const char* ClassName() const override { return "EmvMetadataXMLError"; }

  const WideString& Reason() const { return reason_; }
  // The file name; empty for text.
  const WideString& FileName() const { return fileName_; }
  // As XMLElementPath; empty when the failure is at no element.
  const WideString& ElementPath() const { return elementPath_; }
  // From 1; 0 when the element's place in the text is not known.
  int Line() const { return line_; }
  // Whether the place has been added to the message.
  bool Located() const { return located_; }

  // Completes the message while the document lives: the file (empty for
  // text), the element's path, and its line in `text` (the text parsed; a
  // null view when there is none). `offset` overrides the element's own
  // place (a parse error's offset); -1 takes the element's.
  void Locate(WideStringView fileName, std::string_view text, std::ptrdiff_t offset = -1);
  // The same with the parts known already; `near`: the failure stands in
  // the element or in the text after it (a parse error).
  void SetPlace(WideStringView fileName, WideStringView elementPath, int line, bool near = false);

 private:
  WideString reason_;
  pugi::xml_node_struct* element_;
  WideString fileName_;
  WideString elementPath_;
  int line_ = 0;
  bool located_ = false;
};

}  // namespace mv
