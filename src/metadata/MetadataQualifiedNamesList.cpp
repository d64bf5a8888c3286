#include "metadata/MetadataQualifiedNamesList.h"

#include <pugixml.hpp>

#include "metadata/MetadataNames.h"
#include "support/Exceptions.h"

namespace mv {

MV_DEFINE_METADATA_CLASS(TmvMetadataQualifiedNamesList, TmvMetadataBase)

TmvMetadataQualifiedNamesList::TmvMetadataQualifiedNamesList(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataBase(parent, context), list_(std::make_unique<TSQLQualifiedNamesList>(context, true)) {}

TmvMetadataQualifiedNamesList::~TmvMetadataQualifiedNamesList() = default;

void TmvMetadataQualifiedNamesList::Assign(const TmvPersistent* source) {
  AssignFrom<TmvMetadataQualifiedNamesList>(
      source, [&] { TmvMetadataBase::Assign(source); },
      [&](const TmvMetadataQualifiedNamesList& other) {
        list_->Clear();
        for (int i = 0; i < other.Count(); ++i) list_->Add(other.Items(i)->CloneAs<TSQLQualifiedName>(SQLContext()));
      });
}

void TmvMetadataQualifiedNamesList::CheckIndex(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
}

TSQLQualifiedName* TmvMetadataQualifiedNamesList::Items(int index) const {
  CheckIndex(index);
  return list_->Items(index);
}

int TmvMetadataQualifiedNamesList::IndexOf(const TSQLQualifiedName* name) const {
  for (int i = 0; i < Count(); ++i)
    if (list_->Items(i) == name) return i;
  return -1;
}

TSQLQualifiedName* TmvMetadataQualifiedNamesList::Add(const TastTokenIdentifier* token) {
  TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(SQLContext());
  if (token) name->AddName(token->CloneAs<TastToken>(SQLContext()));
  TSQLQualifiedName* raw = name.get();
  list_->Add(std::move(name));
  NotifyUpdated();
  return raw;
}

TSQLQualifiedName* TmvMetadataQualifiedNamesList::Add(const TSQLQualifiedName* name) { return Insert(Count(), name); }

TSQLQualifiedName* TmvMetadataQualifiedNamesList::Add(WideStringView text) {
  return Add(ParseName(SQLContext(), text).get());
}

int TmvMetadataQualifiedNamesList::FindByName(WideStringView text) const {
  TmvOwned<TSQLQualifiedName> name = ParseNameOrNull(SQLContext(), text);
  return name ? FindByName(name.get()) : -1;
}

TSQLQualifiedName* TmvMetadataQualifiedNamesList::Insert(int index, const TSQLQualifiedName* name) {
  if (index < 0 || index > Count()) RaiseListIndexError(index, Count());
  TmvOwned<TSQLQualifiedName> copy =
      name ? name->CloneAs<TSQLQualifiedName>(SQLContext()) : TastCreate<TSQLQualifiedName>(SQLContext());
  TSQLQualifiedName* raw = copy.release();
  list_->Insert(index, raw);
  NotifyUpdated();
  return raw;
}

void TmvMetadataQualifiedNamesList::Delete(int index) {
  CheckIndex(index);
  list_->Remove(list_->Items(index));
  NotifyUpdated();
}

int TmvMetadataQualifiedNamesList::Remove(const TSQLQualifiedName* name) {
  int index = IndexOf(name);
  if (index >= 0) Delete(index);
  return index;
}

void TmvMetadataQualifiedNamesList::Move(int from, int to) {
  CheckIndex(from);
  CheckIndex(to);
  if (from == to) return;
  TSQLQualifiedName* name = list_->Extract(list_->Items(from));
  list_->Insert(to, name);
  NotifyUpdated();
}

void TmvMetadataQualifiedNamesList::Clear() {
  if (Count() == 0) return;
  list_->Clear();
  NotifyUpdated();
}

pugi::xml_node TmvMetadataQualifiedNamesList::GetXMLNode(pugi::xml_node parent, const char* nodeName,
                                                        const char* itemName) const {
  return list_->GetXMLNode(parent, nodeName, itemName);
}

void TmvMetadataQualifiedNamesList::LoadFromXMLNode(pugi::xml_node element, const char* itemName) {
  list_->LoadFromXMLNode(element, itemName);
  NotifyUpdated();
}

}  // namespace mv
