// The query structure tree: the main query, its unions and SELECTs with
// their output fields and datasources, and the nested sub-queries.
#include "component/QueryBuilder.h"
#include "component/TreeNodes.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"

namespace mv {

namespace {

class StructureTreeBuilder {
 public:
  explicit StructureTreeBuilder(TmvQueryBuilder& builder) : options_(builder.TreeOptions()) {}

  void SubQuery(TmvTreeNode& parent, TmvSubQuery* subQuery) {
    TmvTreeNode* node = parent.AddChild(subQuery->GetCaption(), options_.QueriesImageIndex(), subQuery);
    node->Expanded = options_.ExpandQueryNodes();
    auto* single = subQuery->Count() == 1 ? TmvCast<TmvUnionSubQuery>(subQuery->Items(0)) : nullptr;
    if (single) {
      Member(*node, single);
    } else {
      TmvTreeNode* unions = node->AddChild(options_.UnionsNodeText(), options_.QueriesImageIndex(), subQuery);
      unions->Expanded = options_.ExpandQueryNodes();
      Group(*unions, subQuery);
    }
    for (int i = 0; i < subQuery->SubQueries().Count(); ++i) SubQuery(*node, subQuery->SubQueries().Item(i));
  }

 private:
  void Group(TmvTreeNode& parent, TmvUnionGroup* group) {
    for (int i = 0; i < group->Count(); ++i) {
      TmvQueryBase* item = group->Items(i);
      if (auto* member = TmvCast<TmvUnionSubQuery>(item)) {
        TmvTreeNode* node = parent.AddChild(member->GetResultSQL(), options_.QueriesImageIndex(), member);
        node->Expanded = options_.ExpandQueryNodes();
        Member(*node, member);
      } else if (auto* nested = TmvCast<TmvUnionGroup>(item)) {
        TmvTreeNode* node = parent.AddChild(u"()", options_.QueriesImageIndex(), nested);
        node->Expanded = options_.ExpandQueryNodes();
        Group(*node, nested);
      }
    }
  }

  // The output fields and the datasources of one SELECT.
  void Member(TmvTreeNode& parent, TmvUnionSubQuery* member) {
    if (options_.ShowFields()) {
      TmvSelectList* list = member->SelectList();
      TmvTreeNode* fields = parent.AddChild(options_.FieldsNodeText(), options_.FieldsImageIndex(), list);
      fields->Expanded = options_.ExpandFieldsNodes();
      for (int i = 0; i < list->Count(); ++i) {
        TmvSelectItem* row = list->Items(i);
        if (!row->Select()) continue;
        const WideString alias = row->GetAliasString();
        const WideString expression = row->GetExpressionString();
        fields->AddChild(alias.empty() ? expression : alias + u" " + expression, options_.FieldImageIndex(), row);
      }
    }
    if (options_.ShowFrom() && member->Datasources()) {
      TmvTreeNode* from = parent.AddChild(options_.FromNodeText(), options_.FromImageIndex(), member->Datasources());
      from->Expanded = options_.ExpandFromNodes();
      TmvDatasourceList datasources;
      member->Datasources()->GetDatasources(datasources);
      for (TmvDatasource* datasource : datasources) {
        const WideString name = datasource->GetObjectNameInQuery();
        const WideString alias = datasource->GetAlias();
        from->AddChild(alias.empty() || WideSameText(alias, name) ? name : name + u" " + alias,
                       options_.FromObjImageIndex(), datasource);
      }
    }
  }

  const TmvTreeOptions& options_;
};

}  // namespace

TmvTreeNodes BuildQueryStructureTree(TmvQueryBuilder& builder) {
  TmvTreeNode top;
  if (builder.Query()) StructureTreeBuilder(builder).SubQuery(top, builder.Query());
  if (!top.Children.empty()) top.Children.front()->Expanded = true;
  return std::move(top.Children);
}

}  // namespace mv
