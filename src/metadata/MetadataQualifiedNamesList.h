// A metadata-owned list of qualified names: the key and child fields of a
// relation, the custom aggregate names of a container.
#pragma once

#include <memory>

#include "metadata/MetadataBase.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

class TmvMetadataQualifiedNamesList : public TmvMetadataBase {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataQualifiedNamesList(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataQualifiedNamesList() override;

  // The names of another list, cloned.
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataBase::Assign;

  // The owning list itself, for reading and for passing to name operations.
  const TSQLQualifiedNamesList& List() const { return *list_; }
  int Count() const { return list_->Count(); }
  TSQLQualifiedName* Items(int index) const;
  int IndexOf(const TSQLQualifiedName* name) const;

  // A one-part name of a clone of the token.
  TSQLQualifiedName* Add(const TastTokenIdentifier* token);
  // A clone of the name.
  TSQLQualifiedName* Add(const TSQLQualifiedName* name);
  // A name read from SQL text; "Invalid object name" for text that is no name.
  TSQLQualifiedName* Add(WideStringView text);
  TSQLQualifiedName* Insert(int index, const TSQLQualifiedName* name);
  void Delete(int index);
  // Frees the name; its former index or -1.
  int Remove(const TSQLQualifiedName* name);
  void Move(int from, int to);
  void Clear();

  // The index of the first name equal by CompareQualifiedNames, or -1.
  int FindByName(const TSQLQualifiedName* name) const { return list_->FindByName(name); }
  // SQL text; text that is no name finds nothing.
  int FindByName(WideStringView text) const;

  // An element `nodeName` with one name element `itemName` per name, and the reading of it.
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName, const char* itemName) const;
  void LoadFromXMLNode(pugi::xml_node element, const char* itemName);
  using TmvMetadataBase::GetXMLNode;

 private:
  void CheckIndex(int index) const;
  std::unique_ptr<TSQLQualifiedNamesList> list_;
};

}  // namespace mv
