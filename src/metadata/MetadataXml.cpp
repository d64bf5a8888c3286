#include "metadata/MetadataXml.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

#include "metadata/MetadataContainer.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataNames.h"
#include "support/FieldTypeNames.h"
#include "support/TextFile.h"

namespace mv {

// --- Writing ---

pugi::xml_node CreateNodeParent(pugi::xml_node parent, const char* name) { return parent.append_child(name); }

TmvVariant TransformNodeValue(const TmvVariant& value) {
  if (value.VarType() == TmvVarType::vtBoolean) return TmvVariant(value.AsBoolean() ? 1 : 0);
  return value;
}

pugi::xml_node CreateNodeWithValueParent(pugi::xml_node parent, const char* name, const TmvVariant& value) {
  pugi::xml_node element = parent.append_child(name);
  const WideString text = VarToWideStr(TransformNodeValue(value));
  if (!text.empty()) element.text().set(UTF8Encode(text).c_str());
  return element;
}

// --- Reading ---

pugi::xml_node FindChildElByName(const char* name, pugi::xml_node node) {
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling())
    if (child.type() == pugi::node_element && std::strcmp(child.name(), name) == 0) return child;
  return {};
}

pugi::xml_node FindChildByNameAndAttribute(const char* name, const char* attributeName, const char* value,
                                           pugi::xml_node node) {
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element || std::strcmp(child.name(), name) != 0) continue;
    pugi::xml_attribute attribute = child.attribute(attributeName);
    if (attribute && std::strcmp(attribute.value(), value) == 0) return child;
  }
  return {};
}

namespace {

pugi::xml_node FirstTextChild(pugi::xml_node element) {
  pugi::xml_node first = element.first_child();
  return first && (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata) ? first
                                                                                           : pugi::xml_node();
}

}  // namespace

bool XMLNodeHasText(pugi::xml_node element) { return bool(FirstTextChild(element)); }

WideString XMLNodeText(pugi::xml_node element) {
  pugi::xml_node text = FirstTextChild(element);
  return text ? UTF8Decode(text.value()) : WideString();
}

TmvVariant GetValueFromChildNode(pugi::xml_node element, const char* name) {
  pugi::xml_node child = FindChildElByName(name, element);
  if (!child || !XMLNodeHasText(child)) return {};
  return TmvVariant(XMLNodeText(child));
}

bool XMLNodeBool(pugi::xml_node element) {
  const WideString text = WideTrim(XMLNodeText(element));
  return !(text == u"0" || WideSameText(text, u"false"));
}

int32_t XMLNodeInt(pugi::xml_node element, int32_t fallback) {
  int value = 0;
  return TryStrToInt(WideTrim(XMLNodeText(element)), value) ? value : fallback;
}

namespace {

[[noreturn]] void RaiseUnknownType(const WideString& text, pugi::xml_node element) {
  throw EmvMetadataXMLError(MetadataMessageFormat(mvQBErrorXMLUnknownFieldType, {text}), element);
}

TFieldType OrdinalType(const WideString& text, int64_t ordinal, pugi::xml_node element) {
  if (ordinal < 0 || ordinal >= kFieldTypeCount) RaiseUnknownType(text, element);
  return static_cast<TFieldType>(ordinal);
}

}  // namespace

TFieldType ReadXMLFieldType(pugi::xml_node element) {
  const WideString text = WideTrim(XMLNodeText(element));
  if (text.empty()) return ftUnknown;
  const char* platform = element.attribute("platform").value();
  int64_t number = 0;
  const bool isNumber = TryStrToInt(text, number);
  // Names and JDBC numbers that the reader does not know read as an unknown
  // type (the field's type_name keeps the server's spelling); an ordinal
  // outside the type table cannot be kept and refuses the document.
  if (AnsiSameText(platform, "native")) return isNumber ? OrdinalType(text, number, element) : ftUnknown;
  if (AnsiSameText(platform, "net")) return DBTypeXMLToFieldType(text);
  if (AnsiSameText(platform, "java"))
    return isNumber && number >= INT32_MIN && number <= INT32_MAX ? JavaTypeXMLToFieldType(int(number)) : ftUnknown;
  return isNumber ? OrdinalType(text, number, element) : DBTypeXMLToFieldType(text);
}

WideString XMLElementPath(pugi::xml_node node) {
  std::vector<std::string> steps;
  for (; node && node.type() != pugi::node_document; node = node.parent()) {
    if (node.type() != pugi::node_element) continue;
    std::string step = node.name();
    int position = 0;
    int count = 0;
    for (pugi::xml_node sibling = node.parent().first_child(); sibling; sibling = sibling.next_sibling()) {
      if (sibling.type() != pugi::node_element || std::strcmp(sibling.name(), node.name()) != 0) continue;
      ++count;
      if (sibling == node) position = count;
    }
    if (count > 1) {
      step += '[';
      step += std::to_string(position);
      step += ']';
    }
    steps.push_back(std::move(step));
  }
  std::string path;
  for (auto it = steps.rbegin(); it != steps.rend(); ++it) {
    if (!path.empty()) path += '/';
    path += *it;
  }
  return UTF8Decode(path);
}

int XMLLineOfOffset(std::string_view text, std::ptrdiff_t offset) {
  if (offset < 0) return 0;
  const size_t end = std::min(text.size(), size_t(offset));
  return 1 + int(std::count(text.begin(), text.begin() + std::ptrdiff_t(end), '\n'));
}

// --- EmvMetadataXMLError ---

EmvMetadataXMLError::EmvMetadataXMLError(WideString reason, pugi::xml_node element)
    : EmvQueryBuilderError(reason), reason_(std::move(reason)), element_(element.internal_object()) {}

void EmvMetadataXMLError::Locate(WideStringView fileName, std::string_view text, std::ptrdiff_t offset) {
  pugi::xml_node element(element_);
  // An offset of its own is a parse error's, in or after the element.
  const bool near = offset >= 0;
  if (offset < 0 && element) offset = element.offset_debug();
  // Without the text (a document built in memory) the line is not known.
  SetPlace(fileName, element ? XMLElementPath(element) : WideString(),
           text.data() ? XMLLineOfOffset(text, offset) : 0, near);
}

void EmvMetadataXMLError::SetPlace(WideStringView fileName, WideStringView elementPath, int line, bool near) {
  element_ = nullptr;
  located_ = true;
  fileName_ = WideString(fileName);
  elementPath_ = WideString(elementPath);
  line_ = line;
  WideString place;
  if (line_ > 0 && !elementPath_.empty())
    place = MetadataMessageFormat(near ? mvQBErrorXMLAtLineNearElement : mvQBErrorXMLAtLineElement,
                                  {line_, elementPath_});
  else if (!elementPath_.empty())
    place = MetadataMessageFormat(mvQBErrorXMLAtElement, {elementPath_});
  else
    place = MetadataMessageFormat(mvQBErrorXMLAtLine, {line_});
  SetMessage(fileName_.empty() ? MetadataMessageFormat(mvQBErrorXMLInText, {place, reason_})
                               : MetadataMessageFormat(mvQBErrorXMLInFile, {fileName_, place, reason_}));
}

// --- The container ---

namespace {

struct TmvObjectElement {
  const char* name;
  const TmvMetadataClass& (*objectClass)();
};

const TmvObjectElement kObjectElements[] = {
    {"table", &TmvMetadataTable::StaticClass},
    {"view", &TmvMetadataView::StaticClass},
    {"procedure", &TmvMetadataProcedure::StaticClass},
    {"synonym", &TmvMetadataSynonym::StaticClass},
};

const TmvMetadataClass* ObjectClassOfElement(const char* name) {
  for (const TmvObjectElement& entry : kObjectElements)
    if (std::strcmp(entry.name, name) == 0) return &entry.objectClass();
  return nullptr;
}

// Writes the serialized document to a sink, raw carriage returns as
// character references: a reader that normalizes line ends (ours does) would
// turn them into line feeds. The writer puts none elsewhere than in values.
template <class Sink>
class TmvXMLOutput : public pugi::xml_writer {
 public:
  explicit TmvXMLOutput(Sink sink) : sink_(std::move(sink)) {}
  void write(const void* data, size_t size) override {
    const char* text = static_cast<const char*>(data);
    const char* end = text + size;
    for (const char* cr; (cr = static_cast<const char*>(std::memchr(text, '\r', size_t(end - text)))) != nullptr;) {
      sink_(text, size_t(cr - text));
      sink_("&#13;", 5);
      text = cr + 1;
    }
    sink_(text, size_t(end - text));
  }

 private:
  Sink sink_;
};

template <class Sink>
void SerializeDocument(const pugi::xml_document& document, unsigned flags, Sink sink) {
  TmvXMLOutput<Sink> output(std::move(sink));
  document.save(output, "  ", flags, pugi::encoding_utf8);
}

// The options of every load: the defaults (escapes, line ends), and text
// that is nothing but blanks kept where it is an element's only content.
constexpr unsigned kParseOptions = pugi::parse_default | pugi::parse_ws_pcdata_single;

// The last element read, for a parse error: the deepest, at each level the
// last child that starts before the error.
pugi::xml_node ElementBefore(const pugi::xml_document& document, std::ptrdiff_t offset) {
  pugi::xml_node found;
  for (pugi::xml_node level = document;;) {
    pugi::xml_node next;
    for (pugi::xml_node child = level.first_child(); child; child = child.next_sibling())
      if (child.type() == pugi::node_element && child.offset_debug() <= offset) next = child;
    if (!next) return found;
    found = next;
    level = next;
  }
}

}  // namespace

pugi::xml_node TmvMetadataContainer::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  pugi::xml_node element = parent.append_child(nodeName);
  element.append_attribute("xmlns:xsi").set_value(kXMLSchemaInstanceNamespace);
  element.append_attribute("xsi:noNamespaceSchemaLocation").set_value(kMetadataSchemaLocation);
  if (!IsQualifiedNameEmpty(defaultDatabaseName_.get()))
    defaultDatabaseName_->GetXMLNode(element, "default_database", "item");
  if (defaultSchemaNames_->GetCount() > 0) defaultSchemaNames_->GetXMLNode(element, "default_schemas");
  if (customAggregateFunctions_->Count() > 0)
    customAggregateFunctions_->GetXMLNode(element, "custom_aggregate_functions", "custom_aggregate_function");
  for (int i = 0; i < Count(); ++i) {
    TmvMetadataObject* object = items_[size_t(i)].get();
    object->GetXMLNode(element, object->GetXMLItemName());
  }
  return element;
}

void TmvMetadataContainer::ReadXMLNode(pugi::xml_node element, bool replace) {
  if (std::strcmp(element.name(), "metadata") != 0)
    throw EmvMetadataXMLError(MetadataMessageFormat(mvQBErrorBadXMLTagNotFound, {u"metadata"}), element);

  // Everything is read into a scratch container first; this one changes
  // only when the whole element has been read.
  TmvOwned<TmvMetadataContainer> scratch = TmvCreate<TmvMetadataContainer>(nullptr, SQLContext());
  pugi::xml_node defaultDatabase = FindChildElByName("default_database", element);
  pugi::xml_node defaultSchemas = FindChildElByName("default_schemas", element);
  pugi::xml_node customAggregates = FindChildElByName("custom_aggregate_functions", element);
  {
    TmvUpdateBatch batch(*scratch);
    if (defaultDatabase) scratch->defaultDatabaseName_->LoadFromXMLNode(defaultDatabase, "item");
    if (defaultSchemas) scratch->defaultSchemaNames_->LoadFromXMLNode(defaultSchemas);
    if (customAggregates)
      scratch->customAggregateFunctions_->LoadFromXMLNode(customAggregates, "custom_aggregate_function");
    int children = 0;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) ++children;
    scratch->SetCapacity(children);
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
      if (child.type() != pugi::node_element) continue;
      const TmvMetadataClass* objectClass = ObjectClassOfElement(child.name());
      if (!objectClass) continue;
      TmvOwned<TmvMetadataBase> made(objectClass->CreateRaw(scratch.get(), SQLContext()));
      TmvOwned<TmvMetadataObject> owned(static_cast<TmvMetadataObject*>(made.release()));
      TmvMetadataObject* object = owned.get();
      scratch->Add(std::move(owned));
      try {
        object->LoadFromXMLNode(child);
      } catch (const EmvMetadataXMLError&) {
        throw;
      } catch (const Exception& e) {
        throw EmvMetadataXMLError(e.Message(), child);
      }
      // An object of the same class and full name read before this one.
      // Objects without a name may be many.
      if (object->Name()->IsEmpty()) continue;
      TmvMetadataObject* other =
          scratch->FindByNameAndClass(object->Name(), object->Schema(), *objectClass, object->Database());
      if (other && other != object && other->IsFullNameEqual(object->FullName()))
        throw EmvMetadataXMLError(MetadataMessageFormat(mvQBErrorXMLDuplicateObject,
                                                        {UTF8Decode(child.name()), object->FullNameStrNotQuoted()}),
                                  child);
    }
  }

  // Take it over in one batch.
  TmvUpdateBatch batch(*this);
  if (replace) Clear();
  if (defaultDatabase) AssignQualifiedName(*defaultDatabaseName_, scratch->defaultDatabaseName_.get());
  if (defaultSchemas) defaultSchemaNames_->Assign(*scratch->defaultSchemaNames_);
  if (customAggregates) customAggregateFunctions_->Assign(scratch->customAggregateFunctions_.get());
  std::vector<TmvOwned<TmvMetadataObject>> objects;
  {
    std::lock_guard guard(scratch->lock_);
    scratch->hash_.Clear();
    scratch->members_.clear();
    objects.swap(scratch->items_);
  }
  SetCapacity(Count() + int(objects.size()));
  for (TmvOwned<TmvMetadataObject>& object : objects) Add(std::move(object));
  objectsUpdated_ = true;
  NotifyUpdated();
}

void TmvMetadataContainer::LoadFromXMLNode(pugi::xml_node element) {
  try {
    ReadXMLNode(element, false);
  } catch (EmvMetadataXMLError& e) {
    if (!e.Located()) e.Locate(u"", {});
    throw;
  }
}

WideString TmvMetadataContainer::GetXML() {
  pugi::xml_document document;
  GetXMLNode(document, "metadata");
  std::string text;
  SerializeDocument(document, pugi::format_indent | pugi::format_no_declaration,
                    [&text](const char* data, size_t size) { text.append(data, size); });
  return UTF8Decode(text);
}

void TmvMetadataContainer::SaveToXMLFile(WideStringView fileName) {
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  declaration.append_attribute("version").set_value("1.0");
  declaration.append_attribute("encoding").set_value("UTF-8");
  GetXMLNode(document, "metadata");
  std::ofstream out(UTF8Encode(fileName), std::ios::binary | std::ios::trunc);
  if (out) {
    SerializeDocument(document, pugi::format_indent,
                      [&out](const char* data, size_t size) { out.write(data, std::streamsize(size)); });
    out.close();
  }
  if (!out) throw EmvQueryBuilderError(MetadataMessageFormat(mvQBErrorXMLCannotWrite, {WideString(fileName)}));
}

void TmvMetadataContainer::ReadXMLText(std::string text, WideStringView fileName, bool replace,
                                       const std::function<std::string()>& original) {
  pugi::xml_document document;
  // Parsed where it stands, which changes the text: the line of a failure
  // is counted in the original.
  pugi::xml_parse_result result =
      document.load_buffer_inplace(text.data(), text.size(), kParseOptions, pugi::encoding_auto);
  try {
    if (!result) {
      EmvMetadataXMLError error(MetadataMessageFormat(mvQBErrorBadXML, {UTF8Decode(result.description())}),
                                ElementBefore(document, result.offset));
      error.Locate(fileName, original(), result.offset);
      throw error;
    }
    pugi::xml_node root = document.document_element();
    if (root) ReadXMLNode(root, replace);
  } catch (EmvMetadataXMLError& e) {
    if (!e.Located()) e.Locate(fileName, original());
    throw;
  }
}

namespace {

// The bytes of a file, read in one piece.
std::string ReadFileBytes(WideStringView fileName) {
  const std::string path = UTF8Encode(fileName);
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  std::string bytes;
  if (in) {
    const std::streamoff size = in.tellg();
    if (size >= 0) {
      bytes.resize(size_t(size));
      in.seekg(0);
      in.read(bytes.data(), size);
    }
    if (in && size >= 0) return bytes;
  }
  // Reading it the ordinary way names the file and the reason.
  return ReadAllBytes(path);
}

// The text of a file again, for the line of a failure, in UTF-8 as the
// parser counted its offsets; empty if it cannot be read.
std::string ReadAgain(WideStringView fileName) {
  try {
    std::string bytes = ReadFileBytes(fileName);
    const bool utf16 = bytes.size() >= 2 && ((bytes[0] == '\xFF' && bytes[1] == '\xFE') ||
                                             (bytes[0] == '\xFE' && bytes[1] == '\xFF'));
    return utf16 ? UTF8Encode(DecodeText(bytes)) : bytes;
  } catch (const Exception&) {
    return {};
  }
}

}  // namespace

void TmvMetadataContainer::LoadFromXML(WideStringView text) {
  ReadXMLText(UTF8Encode(text), u"", true, [text] { return UTF8Encode(text); });
}

void TmvMetadataContainer::AddFromXML(WideStringView text) {
  ReadXMLText(UTF8Encode(text), u"", false, [text] { return UTF8Encode(text); });
}

void TmvMetadataContainer::LoadFromXMLFile(WideStringView fileName) {
  ReadXMLText(ReadFileBytes(fileName), fileName, true, [fileName] { return ReadAgain(fileName); });
}

void TmvMetadataContainer::AddFromXMLFile(WideStringView fileName) {
  ReadXMLText(ReadFileBytes(fileName), fileName, false, [fileName] { return ReadAgain(fileName); });
}

}  // namespace mv
