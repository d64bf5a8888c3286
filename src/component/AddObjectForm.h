// The add-object window without its widgets: the schema choice, the four
// lists of objects (tables, views, procedures, synonyms) that the metadata
// tree's options show, filtered by the choice and sorted as the tree sorts,
// and the adding of the chosen objects to the active SELECT.
#pragma once

#include <vector>

#include "support/WideString.h"

namespace mv {

class TmvMetadataObject;
class TmvQueryBuilder;

class TmvAddObjectForm {
 public:
  enum Tab { tsTables, tsViews, tsProcedures, tsSynonyms };
  struct Item {
    WideString Caption;
    TmvMetadataObject* Data;
  };

  explicit TmvAddObjectForm(TmvQueryBuilder& builder);

  // LoadSchemas, then LoadMetadata; the former schema choice stays when it
  // still exists.
  void Load();
  // "(All objects)" first, then each database and database.schema of the
  // container's objects once, sorted, without quotes.
  const std::vector<WideString>& Schemas() const { return schemas_; }
  bool SchemasEnabled() const { return schemas_.size() >= 2 && !schemas_[1].empty(); }
  int SchemaIndex() const { return schemaIndex_; }
  // Chooses a schema and fills the lists again.
  void SetSchemaIndex(int index);
  // The tabs the options show, in order.
  std::vector<Tab> VisibleTabs() const;
  const std::vector<Item>& Items(Tab tab) const { return lists_[tab]; }
  // Adds the items of the tab at those indexes to the active SELECT: tables
  // with the links of their relations where the link options ask, views and
  // synonyms by name, procedures as calls aliased by name + "_". The number
  // of datasources added.
  int AddObjects(Tab tab, const std::vector<int>& indexes);

 private:
  void LoadSchemas();
  void LoadMetadata();

  TmvQueryBuilder& builder_;
  std::vector<WideString> schemas_;
  int schemaIndex_ = 0;
  std::vector<Item> lists_[4];
};

}  // namespace mv
