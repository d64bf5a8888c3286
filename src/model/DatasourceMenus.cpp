// The popup menus of datasources, as data, and the linked objects that the
// foreign keys of a datasource's metadata object offer.
#include <algorithm>
#include <map>

#include "metadata/MetadataObject.h"
#include "metadata/MetadataQualifiedNamesList.h"
#include "metadata/MetadataRelation.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/PropertyForms.h"
#include "model/QueryTree.h"
#include "tree/QualifiedNames.h"

namespace mv {

TmvMenuItem& AddMenuItem(TmvMenu& menu, const char16_t* key, std::function<void()> action, bool enabled) {
  TmvMenuItem item;
  item.Key = key;
  item.Caption = item.IsSeparator() ? WideString(u"-") : MessageText(key);
  item.Enabled = enabled;
  if (enabled) item.Action = std::move(action);
  menu.push_back(std::move(item));
  return menu.back();
}

TmvMenuItem& AddEditPropsItem(TmvMenu& menu, TmvQueryBuilderControlOwner* object) {
  return AddMenuItem(menu, mvQBEdit, [object] { EditProps(object); }, CanEditProps(object));
}

namespace {

// The other end of a relation of `object`, or null.
TmvMetadataObject* OtherSide(const TmvMetadataRelation* relation, const TmvMetadataObject* object) {
  TmvMetadataObject* key = relation->GetKeyMetadataObject();
  return key == object ? relation->GetChildMetadataObject() : key;
}

WideString ColumnsText(const TmvMetadataQualifiedNamesList* columns) {
  WideString text;
  for (int i = 0; i < columns->Count(); ++i) {
    if (i > 0) text += u", ";
    text += columns->Items(i)->GetQualifiedNameWithoutQuotes();
  }
  return text;
}

}  // namespace

void TmvDatasource::AddLinkedObjectsMenu(TmvMenu& menu) {
  TmvMetadataObject* object = GetMetadataObject();
  if (!object) return;
  TmvMenuItem linked;
  linked.Key = mvQBAddLinkedObject;
  linked.Caption = MessageText(mvQBAddLinkedObject);
  TmvUnionSubQuery* member = UnionSubQuery();
  // Relations that lead to another object: the objects that refer to this
  // one, a line, then the objects this one refers to; one entry per target,
  // or per relation with its columns where a target has several.
  const std::vector<TmvMetadataRelation*> groups[2] = {object->GetReferencingRelations(),
                                                       object->GetReferencedRelations()};
  // Relations that a link of this datasource follows already are left out.
  std::vector<TmvLink*> links;
  if (member) member->Datasources()->GetLinksRecursive(links);
  std::vector<TmvMetadataRelation*> used;
  for (TmvLink* link : links)
    if (link->LeftDatasource() == this || link->RightDatasource() == this)
      if (TmvMetadataRelation* relation = link->GetRelation()) used.push_back(relation);
  for (const auto& relations : groups) {
    std::map<TmvMetadataObject*, std::vector<TmvMetadataRelation*>> byTarget;
    std::vector<TmvMetadataObject*> order;
    for (TmvMetadataRelation* relation : relations) {
      TmvMetadataObject* target = OtherSide(relation, object);
      if (!target || relation->KeyFields()->Count() == 0 || relation->ChildFields()->Count() == 0) continue;
      if (std::find(used.begin(), used.end(), relation) != used.end()) continue;
      if (!byTarget.count(target)) order.push_back(target);
      byTarget[target].push_back(relation);
    }
    if (order.empty()) continue;
    if (!linked.SubItems.empty()) {
      TmvMenuItem line;
      line.Key = line.Caption = u"-";
      linked.SubItems.push_back(std::move(line));
    }
    for (TmvMetadataObject* target : order) {
      const auto& list = byTarget[target];
      for (TmvMetadataRelation* relation : list) {
        TmvMenuItem entry;
        entry.Key = mvQBAddLinkedObject;
        entry.Caption = target->NameStrNotQuoted();
        if (list.size() > 1) entry.Caption += u" (" + ColumnsText(relation->ChildFields()) + u")";
        // The other end (found in the SELECT or added) and a link per column pair.
        entry.Action = [member, relation, this] { member->AddLinkedObject(this, relation); };
        linked.SubItems.push_back(std::move(entry));
      }
    }
  }
  if (linked.SubItems.empty()) {
    TmvMenuItem none;
    none.Key = mvQBNoLinkedObjects;
    none.Caption = MessageText(mvQBNoLinkedObjects);
    none.Enabled = false;
    linked.SubItems.push_back(std::move(none));
  }
  menu.push_back(std::move(linked));
}

namespace {

void AutofitHeight(TmvDatasource* datasource) {
  if (auto* control = dynamic_cast<ImvDatasourceControl*>(datasource->GetControls(0))) control->TuneSize();
}

}  // namespace

TmvMenu TmvDatasource::GetPopupMenu(ImvControl*) {
  TmvMenu menu;
  AddMenuItem(menu, mvQBCheckAll, [this] { CheckAllFields(); });
  AddMenuItem(menu, mvQBUncheckAll, [this] { UncheckAllFields(); });
  AddMenuItem(menu, u"-", nullptr);
  AddMenuItem(menu, mvQBRemove, [this] { RequestDestroy(); });
  AddEditPropsItem(menu, this);
  AddMenuItem(menu, mvQBAftofitHeight, [this] { AutofitHeight(this); });
  AddLinkedObjectsMenu(menu);
  return menu;
}

TmvMenu TmvDataSourceObject::GetPopupMenu(ImvControl*) {
  TmvMenu menu;
  AddMenuItem(menu, mvQBCheckAll, [this] { CheckAllFields(); });
  AddMenuItem(menu, mvQBUncheckAll, [this] { UncheckAllFields(); });
  AddMenuItem(menu, u"-", nullptr);
  AddMenuItem(menu, mvQBRemove, [this] { RequestDestroy(); });
  if (TmvSubQuery* cte = CteSubQuery()) AddMenuItem(menu, mvQBDeleteCTE, [cte] { cte->RemoveCTEEvent(); });
  AddLinkedObjectsMenu(menu);
  AddEditPropsItem(menu, this);
  AddMenuItem(menu, mvQBAftofitHeight, [this] { AutofitHeight(this); });
  return menu;
}

TmvMenu TmvDatasourceQuery::GetPopupMenu(ImvControl*) {
  TmvMenu menu;
  AddMenuItem(menu, mvQBCheckAll, [this] { CheckAllFields(); });
  AddMenuItem(menu, mvQBUncheckAll, [this] { UncheckAllFields(); });
  AddMenuItem(menu, u"-", nullptr);
  AddMenuItem(menu, mvQBSwitchToDerivedTable, [this] {
    if (SubQuery() && Host()) Host()->SetActiveSubQuery(SubQuery());
  });
  AddMenuItem(menu, mvQBRemove, [this] { RequestDestroy(); });
  AddEditPropsItem(menu, this);
  AddMenuItem(menu, mvQBAftofitHeight, [this] { AutofitHeight(this); });
  return menu;
}

}  // namespace mv
