#include "tree/QualifiedNamesList.h"

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>

#include "frontend/SQLContext.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"

namespace mv {

TSQLQualifiedNamesList::TSQLQualifiedNamesList(TmvBaseSQLContext* context, bool ownsObjects)
    : context_(context), ownsObjects_(ownsObjects) {}

TSQLQualifiedNamesList::~TSQLQualifiedNamesList() { Clear(); }

int TSQLQualifiedNamesList::Add(TSQLQualifiedName* name) {
  items_.push_back(name);
  return Count() - 1;
}

int TSQLQualifiedNamesList::Add(WideStringView sqlText) {
  TmvOwned<TSQLDatabaseObject> parsed = context_->ParseObjectNameQuoteIfNeed(WideString(sqlText));
  if (!parsed) throw Exception(MessageText(mvQBBadObjectName));
  TmvOwned<TSQLQualifiedName> name = NewName();
  name->Assign(*parsed);
  return Add(std::move(name));
}

int TSQLQualifiedNamesList::FindByName(WideStringView sqlText) const {
  TmvOwned<TSQLQualifiedName> name = context_->ParseQualifiedNameQuoteIfNeed(WideString(sqlText));
  return name ? FindByName(name.get()) : -1;
}

TmvOwned<TSQLQualifiedName> TSQLQualifiedNamesList::NewName() const { return TastCreate<TSQLQualifiedName>(context_); }

TSQLQualifiedName* TSQLQualifiedNamesList::AddBuiltin(WideStringView text) {
  TmvOwned<TSQLQualifiedName> name = NewName();
  name->AddName(TastCreate<TastTokenBuiltin>(context_, text));
  TSQLQualifiedName* raw = name.get();
  Add(std::move(name));
  return raw;
}

TSQLQualifiedName* TSQLQualifiedNamesList::AddIdentifier(WideStringView text, bool quoted) {
  TmvOwned<TSQLQualifiedName> name = NewName();
  name->AddName(text, quoted);
  TSQLQualifiedName* raw = name.get();
  Add(std::move(name));
  return raw;
}

void TSQLQualifiedNamesList::Insert(int index, TSQLQualifiedName* name) { items_.insert(items_.begin() + index, name); }

TSQLQualifiedName* TSQLQualifiedNamesList::Extract(TSQLQualifiedName* name) {
  auto it = std::find(items_.begin(), items_.end(), name);
  if (it == items_.end()) return nullptr;
  items_.erase(it);
  return name;
}

int TSQLQualifiedNamesList::Remove(TSQLQualifiedName* name) {
  auto it = std::find(items_.begin(), items_.end(), name);
  if (it == items_.end()) return -1;
  int index = int(it - items_.begin());
  items_.erase(it);
  if (ownsObjects_) TmvDeleter()(name);
  return index;
}

void TSQLQualifiedNamesList::Clear() {
  std::vector<TSQLQualifiedName*> old;
  old.swap(items_);
  if (ownsObjects_)
    for (TSQLQualifiedName* name : old) TmvDeleter()(name);
}

void TSQLQualifiedNamesList::Assign(const TSQLQualifiedNamesList& other) {
  if (&other == this) return;
  Clear();
  for (TSQLQualifiedName* name : other.items_)
    Add(ownsObjects_ ? name->CloneAs<TSQLQualifiedName>(context_).release() : name);
}

int TSQLQualifiedNamesList::FindByName(const TSQLQualifiedName* name) const {
  if (!name) return -1;
  for (int i = 0; i < Count(); ++i)
    if (context_->CompareQualifiedNames(items_[i], name) == 0) return i;
  return -1;
}

void TSQLQualifiedNamesList::SortByNames() {
  std::stable_sort(items_.begin(), items_.end(), [this](const TSQLQualifiedName* a, const TSQLQualifiedName* b) {
    return context_->CompareQualifiedNames(a, b) < 0;
  });
}

pugi::xml_node TSQLQualifiedNamesList::GetXMLNode(pugi::xml_node parent, const char* tag, const char* itemTag) const {
  pugi::xml_node element = parent.append_child(tag);
  for (const TSQLQualifiedName* name : items_) name->GetXMLNode(element, itemTag, "item");
  return element;
}

void TSQLQualifiedNamesList::LoadFromXMLNode(pugi::xml_node element, const char* itemTag) {
  Clear();
  // A list that only refers to names cannot hold names it made itself.
  if (!ownsObjects_) return;
  for (pugi::xml_node child : element.children(itemTag)) {
    TmvOwned<TSQLQualifiedName> name = NewName();
    name->LoadFromXMLNode(child, "item");
    Add(std::move(name));
  }
}

std::string TSQLQualifiedNamesList::GetXML() const {
  pugi::xml_document document;
  GetXMLNode(document, "names", "item");
  std::ostringstream out;
  document.save(out, "", pugi::format_raw);
  return out.str();
}

bool TSQLQualifiedNamesList::SetXML(std::string_view xml) {
  pugi::xml_document document;
  if (!document.load_buffer(xml.data(), xml.size())) return false;
  pugi::xml_node root = document.child("names");
  if (!root) return false;
  LoadFromXMLNode(root, "item");
  return true;
}

TmvOwned<TSQLQualifiedName> TSQLDatabaseObjectsList::NewName() const {
  return TastCreate<TSQLDatabaseObject>(SQLContext());
}

TSQLDatabaseObject* TSQLDatabaseObjectsList::CreateSQLDatabaseObject() {
  TmvOwned<TSQLDatabaseObject> object = TastCreate<TSQLDatabaseObject>(SQLContext());
  TSQLDatabaseObject* raw = object.get();
  Add(object.release());
  return raw;
}

TmvOwned<TSQLQualifiedName> TSQLObjectColumnsList::NewName() const { return TastCreate<TSQLObjectColumn>(SQLContext()); }

int TSQLObjectColumnsList::FindByNameAndDatasource(const TSQLObjectColumn* column) const {
  for (int i = 0; i < Count(); ++i) {
    const TSQLObjectColumn* item = Column(i);
    if (item && item->FromSource == column->FromSource && SQLContext()->IsQualifiedNamesEqual(item, column)) return i;
  }
  return -1;
}

TSQLQualifiedName* TmvFieldsList::AddFieldId(const TastTokenIdentifier* token) {
  TmvOwned<TSQLQualifiedName> name = NewName();
  name->AddName(token->CloneAs<TastToken>(SQLContext()));
  TSQLQualifiedName* raw = name.get();
  Add(std::move(name));
  return raw;
}

int TmvFieldsList::FindFieldByName(WideStringView text) const {
  TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(SQLContext());
  name->AddName(text, false);
  return FindByName(name.get());
}

}  // namespace mv
