// The picture of a query: where the boxes of the datasources stand, how wide
// the grid's columns are, where each page's splitter is. The SQL text says
// nothing of it, so two things keep it:
//
// - a snapshot (TmvLayout): a tree of TmvLayoutItem taken from the model
//   before new text replaces it and put back on whatever objects of the new
//   model correspond to the old ones, matched by kind, name and children;
// - the layout document (TmvQueryBuilder::GetLayout / SetLayout): the query's
//   text and its boxes as XML, for a host that stores a query with its
//   picture:
//
//   <MorvaneLayout>
//     <SQL>Select ...</SQL>
//     <SubQueries>
//       <SubQuery SQL="Select ...">          one per sub-query, list order
//         <UnionSubQuery>                    one per member of the root group
//           <DataSource SQL="a" X="10" Y="20" Width="120" Height="0"/>
//         </UnionSubQuery>
//       </SubQuery>
//     </SubQueries>
//   </MorvaneLayout>
//
// A box is found again by its text; Height 0 is a collapsed box.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "support/WideString.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace mv {

class TmvDatasourceBase;
class TmvQueryBuilderControlOwner;
class TmvSubQuery;
class TmvUnionSubQuery;
class TSQLBuilder;
class TSQLBuilderFast;
class TmvBaseSQLContext;

enum TmvLayoutItemType { mvliSubQuery, mvliUnionSubQuery, mvliDatasource, mvliSelectList };

// What the snapshot keeps of one object.
struct TmvLayoutItem {
  TmvLayoutItemType ItemType = mvliSubQuery;
  // The items of the objects below, grouping objects skipped.
  std::vector<std::unique_ptr<TmvLayoutItem>> Children;
  // The box of a datasource. On a union member, Height -1: no ratio held.
  int32_t Top = 0, Left = 0, Height = 0, Width = 0;
  // A datasource's name in the query (its alias or its object's name).
  WideString Name;
  // The grid of a select list.
  std::vector<int32_t> GeneralColumnsWidth, ConditionsColumnsWidth;
  // The splitter of a union member's page.
  double Ratio = 0;
};

// The snapshot's operations.
class TmvLayout {
 public:
  using TmvObjects = std::vector<TmvQueryBuilderControlOwner*>;
  using TmvItems = std::vector<const TmvLayoutItem*>;

  // A datasource, a union member, a select list; anything else counts as a
  // sub-query.
  static TmvLayoutItemType GetItemType(const TmvQueryBuilderControlOwner* object);
  // The children of `object` that have an item of their own; any other
  // child (a union group, a datasource group, a row) is walked in its place.
  static void CollectLayoutChildren(const TmvQueryBuilderControlOwner* object, TmvObjects& list);
  static std::unique_ptr<TmvLayoutItem> GetLayout(TmvQueryBuilderControlOwner* object);
  // Puts the item on the object and its children on the matching objects
  // below. A box with a zero side or coordinate is not restored.
  static void SetLayout(TmvQueryBuilderControlOwner* object, const TmvLayoutItem& item);
  // 0 for a perfect match; -1000 for another kind; less for each
  // difference: another name, each child item, plus each child matched.
  static int CompareLayout(TmvQueryBuilderControlOwner* object, const TmvLayoutItem& item);
  // For each object the item it takes, or null: first equal places, then
  // perfect matches anywhere, then the best match left.
  static TmvItems CalcLayoutOrder(const TmvObjects& objects, const TmvItems& items);
};

// --- The layout document's parts (TmvQueryBuilder::GetLayout, SetLayout) ---

// The builder that prints the texts of the document: a one-line copy of the
// server builder of `context` that shows virtual fields and objects as the
// user sees them.
std::unique_ptr<TSQLBuilderFast> CreateLayoutBuilder(TmvBaseSQLContext* context);

// Writes the part of the object under `parent`: a sub-query its SubQuery
// element, a member its UnionSubQuery element, a datasource group each of its
// datasources, a datasource its DataSource element.
void SaveLayout(TmvSubQuery* subQuery, pugi::xml_node parent, TSQLBuilder& builder);
void SaveLayout(TmvUnionSubQuery* member, pugi::xml_node parent, TSQLBuilder& builder);
void SaveLayout(TmvDatasourceBase* datasource, pugi::xml_node parent, TSQLBuilder& builder);

// Reads the part of the object from `element`: a sub-query finds its
// SubQuery child by its text, a member reads the UnionSubQuery element it is
// given, a datasource finds its DataSource child by its text. What matches
// nothing is left alone.
void LoadLayout(TmvSubQuery* subQuery, pugi::xml_node element, TSQLBuilder& builder);
void LoadLayout(TmvUnionSubQuery* member, pugi::xml_node element, TSQLBuilder& builder);
void LoadLayout(TmvDatasourceBase* datasource, pugi::xml_node element, TSQLBuilder& builder);

// The integer attribute of a layout element. Missing or not an integer:
// EConvertError naming the element and the attribute.
int32_t LayoutIntAttribute(pugi::xml_node element, const char* name);
// Reads every number of the DataSource elements below `subQueries` (a null
// node has none), so that a document with a bad one is refused whole.
void CheckLayoutNumbers(pugi::xml_node subQueries);

}  // namespace mv
