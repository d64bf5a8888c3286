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

class TmvObject;
class TmvQueryBuilder;

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

}  // namespace mv
