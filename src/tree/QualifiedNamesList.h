// Lists of qualified names that are not part of a tree: name caches of the
// context, the names of a metadata object's fields, the objects and columns
// a statement uses. A list may own its names or only refer to them.
#pragma once

#include <string>
#include <vector>

#include "tree/QualifiedNames.h"

namespace mv {

class TSQLQualifiedNamesList {
 public:
  TSQLQualifiedNamesList(TmvBaseSQLContext* context, bool ownsObjects);
  virtual ~TSQLQualifiedNamesList();
  TSQLQualifiedNamesList(const TSQLQualifiedNamesList&) = delete;
  TSQLQualifiedNamesList& operator=(const TSQLQualifiedNamesList&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }
  bool OwnsObjects() const { return ownsObjects_; }
  int Count() const { return int(items_.size()); }
  TSQLQualifiedName* Items(int index) const { return items_[index]; }
  TSQLQualifiedName* First() const { return items_.empty() ? nullptr : items_.front(); }
  TSQLQualifiedName* Last() const { return items_.empty() ? nullptr : items_.back(); }

  // Adds a name; an owning list takes it over.
  int Add(TSQLQualifiedName* name);
  int Add(TmvOwned<TSQLQualifiedName> name) { return Add(name.release()); }
  // A name given as SQL text (an owning list). Raises Exception "Invalid
  // object name" for text that is no name.
  int Add(WideStringView sqlText);
  // A new name of one built-in word.
  TSQLQualifiedName* AddBuiltin(WideStringView text);
  // A new name of one identifier.
  TSQLQualifiedName* AddIdentifier(WideStringView text, bool quoted);
  void Insert(int index, TSQLQualifiedName* name);
  // Takes the name out, freeing it in an owning list; its former index or -1.
  int Remove(TSQLQualifiedName* name);
  // Takes the name out and gives it to the caller.
  TSQLQualifiedName* Extract(TSQLQualifiedName* name);
  void Clear();
  // Clones of the other's names (an owning list) or the same names.
  void Assign(const TSQLQualifiedNamesList& other);

  // The first index whose name compares equal by CompareQualifiedNames; -1 if none.
  int FindByName(const TSQLQualifiedName* name) const;
  // The same for a name given as SQL text; -1 also when it is no name.
  int FindByName(WideStringView sqlText) const;
  // Sorts by CompareQualifiedNames: by the number of parts, then the parts.
  void SortByNames();

  // An element `tag` with one name element `itemTag` per name.
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* tag, const char* itemTag) const;
  // Reads the names into an owning list; a list that does not own its names stays empty.
  void LoadFromXMLNode(pugi::xml_node element, const char* itemTag);
  // The list as a document of its own (root "names"), and back.
  std::string GetXML() const;
  // False (the list unchanged) when the text is no such document.
  bool SetXML(std::string_view xml);

 protected:
  virtual TmvOwned<TSQLQualifiedName> NewName() const;

 private:
  TmvBaseSQLContext* context_;
  bool ownsObjects_;
  std::vector<TSQLQualifiedName*> items_;
};

class TSQLDatabaseObjectsList : public TSQLQualifiedNamesList {
 public:
  using TSQLQualifiedNamesList::TSQLQualifiedNamesList;
  TSQLDatabaseObject* Object(int index) const { return TmvCast<TSQLDatabaseObject>(Items(index)); }
  // A new object name, added to the list.
  TSQLDatabaseObject* CreateSQLDatabaseObject();

 protected:
  TmvOwned<TSQLQualifiedName> NewName() const override;
};

class TSQLObjectColumnsList : public TSQLQualifiedNamesList {
 public:
  using TSQLQualifiedNamesList::TSQLQualifiedNamesList;
  TSQLObjectColumn* Column(int index) const { return TmvCast<TSQLObjectColumn>(Items(index)); }
  // The first column with an equal name bound to the same source; -1 if none.
  int FindByNameAndDatasource(const TSQLObjectColumn* column) const;

 protected:
  TmvOwned<TSQLQualifiedName> NewName() const override;
};

// Names of fields.
class TmvFieldsList : public TSQLQualifiedNamesList {
 public:
  using TSQLQualifiedNamesList::TSQLQualifiedNamesList;
  TSQLQualifiedName* AddField(WideStringView text, bool quoted) { return AddIdentifier(text, quoted); }
  TSQLQualifiedName* AddFieldId(const TastTokenIdentifier* token);
  // The field of that name, the text standing unquoted; -1 if none.
  int FindFieldByName(WideStringView text) const;
};

}  // namespace mv
