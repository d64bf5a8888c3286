// The two trees beside the design pane, built as plain nodes so that any
// tree control can show them (the surface's do) and tests can read them:
// the metadata tree (the container's objects, grouped and sorted as the
// query builder's TreeOptionsMetadata ask) and the query structure tree
// (sub-queries, unions, fields and datasources of the query).
#pragma once

#include <memory>
#include <vector>

#include "support/WideString.h"

namespace mv {

class TmvDatasource;
class TmvMetadataObject;
class TmvObject;
class TmvQueryBuilder;
class TmvUnionSubQuery;
struct TmvPoint;

struct TmvTreeNode {
  WideString Text;
  int ImageIndex = -1;
  // The model or metadata object shown; null for a group node.
  TmvObject* Data = nullptr;
  bool Expanded = false;
  std::vector<std::unique_ptr<TmvTreeNode>> Children;

  TmvTreeNode* AddChild(WideString text, int imageIndex, TmvObject* data);
};
using TmvTreeNodes = std::vector<std::unique_ptr<TmvTreeNode>>;

// The top nodes of the metadata tree; none without a syntax provider.
TmvTreeNodes BuildMetadataTree(TmvQueryBuilder& builder);

// The top node of the query structure tree: the main query.
TmvTreeNodes BuildQueryStructureTree(TmvQueryBuilder& builder);

// An object of the metadata tree added to a SELECT (null: the active one)
// at a point of its work area ((0, 0): the pane chooses), in one update:
// with the links of its relations and of equal field names where the link
// options ask for them, and every field checked where the fields list
// options do. The new datasource, or null when none was made.
TmvDatasource* AddMetadataObject(TmvQueryBuilder& builder, TmvUnionSubQuery* member, TmvMetadataObject* object,
                                 const TmvPoint& at);

}  // namespace mv
