#include "model/QueryStructureXML.h"

#include <pugixml.hpp>

#include <sstream>
#include <string>

#include "frontend/SQLContext.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataXml.h"
#include "model/QueryModelHost.h"
#include "model/QueryStatistics.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/Variant.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/NodeStatistics.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

// What the visit of one node leaves for its children: the element they
// attach to, and the names the node gave them. The names are few per node,
// so a run through them in order is all the lookup needs (the first entry
// for a node wins).
class TmvQueryXMLVisitRecord : public TmvObject {
 public:
  TmvQueryXMLVisitRecord(TmvQueryXMLVisitRecord* parent, TastNodeBase* node) : Parent(parent), Node(node) {
    if (parent) Element = parent->Element;
  }

  void SetChildName(const TastNodeBase* child, const char* name) {
    if (!child) return;
    childNodes_.push_back(child);
    childNames_.push_back(name);
  }
  // Empty text when the node gave `child` no name.
  const char* FindChildName(const TastNodeBase* child) const {
    for (size_t i = 0; i < childNodes_.size(); ++i)
      if (childNodes_[i] == child) return childNames_[i];
    return "";
  }

  TmvQueryXMLVisitRecord* const Parent;
  TastNodeBase* const Node;
  pugi::xml_node Element;
  // Of a sub-select: the group element its members stand in, made when
  // the first member is met.
  pugi::xml_node GroupElement;

 private:
  std::vector<const TastNodeBase*> childNodes_;
  std::vector<const char*> childNames_;
};

namespace {

using Record = TmvQueryXMLVisitRecord;

// The name the parent gave the node, else the class's default (may be null).
const char* ElementName(const TastNodeBase* node, const Record& record, const char* defaultName) {
  const char* given = record.Parent ? record.Parent->FindChildName(node) : "";
  if (*given) return given;
  return defaultName ? defaultName : "";
}

void SetAttribute(pugi::xml_node element, const char* name, const WideString& value) {
  element.append_attribute(name).set_value(UTF8Encode(value).c_str());
}

void SetText(pugi::xml_node element, const WideString& value) {
  element.text().set(UTF8Encode(value).c_str());
}

// The operator of a member that joins it to the one before; none for the
// first member of a group, whose operator prints nowhere.
void WriteUnionOperator(pugi::xml_node element, TSQLSubQueryExpression* member, TastNodeBase* parent,
                        TSQLBuilder& builder) {
  auto* group = TmvCast<TSQLSubQueryExpressions>(parent);
  if (!element || !group || group->GetCount() == 0 || group->GetItems(0) == member) return;
  const WideString text = member->GetSimpleUnionOperator(builder);
  if (!text.empty()) SetAttribute(element, "union_operator", text);
}

// The element a child attaches to. A sub-select is its own union group in
// the tree, but the document gives its members the group element that a
// statement has: statement > union_group > union_subquery.
pugi::xml_node ParentElementOf(const TastNodeBase* child, Record& parent) {
  auto* statement = TmvCast<TSQLSubSelectStatement>(parent.Node);
  const auto* member = TmvCast<TSQLSubQueryExpression>(child);
  if (!statement || !parent.Element || !member || statement->Items.IndexOf(member) < 0) return parent.Element;
  if (!parent.GroupElement) parent.GroupElement = parent.Element.append_child("union_group");
  return parent.GroupElement;
}

void NameListItems(Record& record, const TastNodeWithList& list, const char* name) {
  for (int i = 0; i < list.Items.Count(); ++i) record.SetChildName(list.Items.Item(i), name);
}

}  // namespace

void CreateQueryXML(TSQLSelectStatement* statement, TSQLBuilder& builder, pugi::xml_document& document) {
  if (!statement) return;
  TmvQueryXMLCreator creator(builder, document);
  creator.Visit(statement, nullptr);
}

TmvQueryXMLCreator::TmvQueryXMLCreator(TSQLBuilder& builder, pugi::xml_document& document)
    : builder_(builder), document_(document) {}

TmvQueryXMLCreator::~TmvQueryXMLCreator() = default;

const char* TmvQueryXMLCreator::JoinKindWord(const TSQLJoinKind& kind) {
  if (TmvCast<TSQLJoinKindCross>(&kind)) return "cross";
  if (TmvCast<TSQLJoinKindInner>(&kind)) return "inner";
  if (TmvCast<TSQLJoinKindLeft>(&kind)) return "left";
  if (TmvCast<TSQLJoinKindRight>(&kind)) return "right";
  if (TmvCast<TSQLJoinKindFull>(&kind)) return "full";
  throw EmvQueryBuilderError(u"Don't know how to write join class: " + UTF8Decode(std::string(kind.ClassName())));
}

void TmvQueryXMLCreator::WriteObjectName(pugi::xml_node parent, const TmvMetadataObject& object) {
  if (!IsQualifiedNameEmpty(object.Database())) SetText(parent.append_child("database"), Print(object.Database()));
  if (object.Schema() && !object.Schema()->IsEmpty()) SetText(parent.append_child("schema"), Print(object.Schema()));
  if (object.Name() && !object.Name()->IsEmpty()) SetText(parent.append_child("name"), Print(object.Name()));
}

TastNodeBaseList TmvQueryXMLCreator::GetNodeChildren(TastNodeBase* node, TastNodeBase* parent, TmvObject* data,
                                                     TmvObject* nodeData) {
  TastNodeBaseList children = TastNodeVisitor::GetNodeChildren(node, parent, data, nodeData);
  auto* statement = TmvCast<TSQLSubSelectStatement>(node);
  if (statement && statement->OrderBy) {
    for (size_t i = 0; i < children.size(); ++i) {
      if (children[i] != statement->OrderBy.get()) continue;
      children.erase(children.begin() + std::ptrdiff_t(i));
      children.push_back(statement->OrderBy.get());
      break;
    }
  }
  return children;
}

bool TmvQueryXMLCreator::OpenElement(TastNode* node, Record& record, const char* defaultName, bool withStatistics,
                                     bool withSql) {
  const char* name = ElementName(node, record, defaultName);
  if (!*name) return false;  // the record keeps the parent's element
  pugi::xml_node element;
  if (record.Parent) {
    element = ParentElementOf(node, *record.Parent).append_child(name);
  } else {
    element = document_.append_child(name);
    element.append_attribute("xmlns:xsi").set_value(kXMLSchemaInstanceNamespace);
    element.append_attribute("xsi:noNamespaceSchemaLocation").set_value(kQuerySchemaLocation);
    if (withStatistics) {
      WriteUsedObjects(element, node);
      WriteUsedColumns(element, node);
    }
  }
  if (withSql) SetAttribute(element, "sql", node->SimpleSQL(builder_));
  record.Element = element;
  return true;
}

void TmvQueryXMLCreator::WriteLeaf(TastNode* node, Record& record, const WideString& value) {
  const char* name = ElementName(node, record, nullptr);
  if (!*name) {
    record.Element = pugi::xml_node();
    return;
  }
  pugi::xml_node element = record.Parent ? ParentElementOf(node, *record.Parent).append_child(name) : pugi::xml_node();
  SetText(element, VarToWideStr(TransformNodeValue(TmvVariant(value))));
  record.Element = element;
}

TmvOwned<TmvObject> TmvQueryXMLCreator::EnterIntoNode(TastNodeBase* base, TastNodeBase* parent, TmvObject* data) {
  auto record = TmvCreate<Record>(static_cast<Record*>(data), base);
  auto* node = TmvCast<TastNode>(base);
  if (!node) return record;
  Record& r = *record;

  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node)) {
    const bool root = TmvCast<TSQLSelectStatement>(node) != nullptr;
    OpenElement(node, r, root ? "statement" : "subquery", root, true);
    r.SetChildName(statement->OrderBy.get(), "order_by_clause");
  } else if (auto* group = TmvCast<TSQLSubQueryExpressions>(node)) {
    OpenElement(node, r, "union_group", false, false);
    WriteUnionOperator(r.Element, group, parent, builder_);
  } else if (auto* select = TmvCast<TSQLSubQuerySelectExpression>(node)) {
    OpenElement(node, r, "union_subquery", false, true);
    WriteUnionOperator(r.Element, select, parent, builder_);
    r.SetChildName(select->SelectItems.get(), "select_clause");
    r.SetChildName(select->FromClause.get(), "from_clause");
    r.SetChildName(select->Where.get(), "where_clause");
    r.SetChildName(select->GroupBy.get(), "group_by_clause");
    r.SetChildName(select->Having.get(), "having_clause");
    r.SetChildName(select->OrderBy.get(), "order_by_clause");
  } else if (TmvCast<TSQLSelectItems>(node)) {
    OpenElement(node, r, nullptr, false, false);
  } else if (TmvCast<TSQLSelectItem>(node)) {
    const bool opened = OpenElement(node, r, "select_item", false, true);
    const char* type = "all_columns";
    if (auto* item = TmvCast<TSQLSelectItemExpression>(node)) {
      type = "expression";
      r.SetChildName(item->Expression.get(), "expression");
      r.SetChildName(item->Alias.get(), "expression_alias");
    } else if (TmvCast<TSQLSelectItemAllTableColumns>(node)) {
      type = "all_object_columns";
    }
    if (opened) r.Element.append_attribute("type").set_value(type);
  } else if (TmvCast<TSQLExpressionItem>(node)) {
    OpenElement(node, r, nullptr, false, true);
    if (auto* any = TmvCast<TSQLExpressionOr>(node)) {
      for (int i = 0; i < any->GetCount(); ++i) r.SetChildName(any->Items.Item(i), "or");
    } else if (auto* all = TmvCast<TSQLExpressionAnd>(node)) {
      for (int i = 0; i < all->GetCount(); ++i) r.SetChildName(all->Items.Item(i), "and");
    } else if (auto* negation = TmvCast<TSQLExpressionNot>(node)) {
      r.SetChildName(negation->Expression.get(), "not");
    } else if (auto* parameter = TmvCast<TSQLExpressionParameter>(node)) {
      r.SetChildName(parameter->Prefix.get(), "param_symbol");
      r.SetChildName(parameter->Tail.get(), "param_name");
    }
  } else if (auto* alias = TmvCast<TSQLAliasExpression>(node)) {
    WriteLeaf(node, r, alias->Name ? alias->Name->Token : WideString());
  } else if (auto* objectAlias = TmvCast<TSQLAliasObjectAlias>(node)) {
    WriteLeaf(node, r, objectAlias->Name ? objectAlias->Name->Token : WideString());
  } else if (TmvCast<TSQLFromClause>(node)) {
    OpenElement(node, r, nullptr, false, false);
  } else if (auto* fromGroup = TmvCast<TSQLFromGroup>(node)) {
    OpenElement(node, r, "from_group", false, false);
    r.SetChildName(fromGroup->JoinKind.get(), "join_kind");
    r.SetChildName(fromGroup->JoinExpression.get(), "join_expression");
  } else if (auto* kind = TmvCast<TSQLJoinKind>(node)) {
    const char* word = JoinKindWord(*kind);
    WriteLeaf(node, r, UTF8Decode(word));
  } else if (TmvCast<TSQLFromSource>(node)) {
    WriteFromSource(node, r);
  } else if (auto* groupBy = TmvCast<TSQLGroupByList>(node)) {
    OpenElement(node, r, nullptr, false, true);
    NameListItems(r, *groupBy, "group_by_item");
  } else if (auto* orderBy = TmvCast<TSQLOrderByClause>(node)) {
    OpenElement(node, r, nullptr, false, true);
    NameListItems(r, *orderBy, "order_by_item");
  } else if (auto* orderItem = TmvCast<TSQLOrderByItem>(node)) {
    const bool opened = OpenElement(node, r, nullptr, false, true);
    r.SetChildName(orderItem->Expression.get(), "expression");
    if (opened && orderItem->Descending)
      r.Element.append_attribute("sort_type").set_value("desc");
  } else if (TmvCast<TSQLWithClause>(node)) {
    OpenElement(node, r, "with_clause", false, false);
  } else if (auto* withItem = TmvCast<TSQLWithClauseItem>(node)) {
    OpenElement(node, r, "with_item", false, true);
    r.SetChildName(withItem->Name.get(), "with_name");
    r.SetChildName(withItem->Query.get(), "with_subquery");
  } else if (auto* token = TmvCast<TastToken>(node)) {
    WriteLeaf(node, r, token->Token);
  }
  // Any other node has no element: its children attach to the parent's.
  return record;
}

void TmvQueryXMLCreator::WriteFromSource(TastNode* node, Record& r) {
  auto* source = static_cast<TSQLFromSource*>(node);
  const bool opened = OpenElement(node, r, "from_item", false, true);
  r.SetChildName(source->JoinKind.get(), "join_kind");
  r.SetChildName(source->JoinExpression.get(), "join_expression");
  r.SetChildName(source->Alias.get(), "object_alias");
  if (!opened) return;
  if (auto* object = TmvCast<TSQLFromObject>(node)) {
    r.Element.append_attribute("type").set_value("object");
    if (const TmvMetadataObject* metadataObject = object->GetMetadataObject())
      WriteObjectName(r.Element, *metadataObject);
  } else if (auto* query = TmvCast<TSQLFromQuery>(node)) {
    r.Element.append_attribute("type").set_value("derived_table");
    r.SetChildName(query->SubQuery.get(), "derived_table");
  } else if (TmvCast<TSQLFromFunction>(node)) {
    r.Element.append_attribute("type").set_value("function");
  }
}

WideString TmvQueryXMLCreator::Print(const TastNode* node) {
  return node ? const_cast<TastNode*>(node)->SimpleSQL(builder_) : WideString();
}

WideString TmvQueryXMLCreator::ObjectNameText(const TmvMetadataObject* object, const TSQLQualifiedName* name) {
  return object && object->FullName() ? Print(object->FullName()) : Print(name);
}

void TmvQueryXMLCreator::WriteUsedObjects(pugi::xml_node root, TastNode* statement) {
  pugi::xml_node list = root.append_child("used_objects");
  const TmvStatsObjects* objects = statement->StatsObjects();
  for (int i = 0; objects && i < objects->GetCount(); ++i) {
    const TmvStatsObject* entry = objects->GetItems(i);
    pugi::xml_node element = list.append_child("used_object");
    const TmvMetadataObject* object = entry->MetadataObject();
    SetAttribute(element, "object_name", ObjectNameText(object, entry->Name()));
    if (object) WriteObjectName(element, *object);
  }
}

void TmvQueryXMLCreator::WriteUsedColumns(pugi::xml_node root, TastNode* statement) {
  pugi::xml_node list = root.append_child("used_columns");
  const TmvStatsColumns* columns = statement->StatsColumns();
  for (int i = 0; columns && i < columns->GetCount(); ++i) {
    const TmvStatsColumn* entry = columns->GetItems(i);
    pugi::xml_node element = list.append_child("used_column");
    const TmvMetadataObject* object = entry->MetadataObject();
    SetAttribute(element, "object_name", ObjectNameText(object, entry->ObjectName()));
    const TmvMetadataField* field = entry->Field();
    const WideString columnName = field ? Print(field->Name()) : Print(entry->ColumnName());
    SetAttribute(element, "column_name", columnName);
    if (field && object && !object->AltName().empty()) SetText(element.append_child("column"), columnName);
  }
}

// --- The statistics' view of it ---

WideString TmvQueryStatistics::GetQueryStructureXML() {
  TmvQueryModelHost* host = QueryBuilder();
  if (!Valid() && host && !host->IsDestroying()) host->ReloadStatistics();
  TmvBaseSQLContext* context = SQLContext();
  if (!context) return WideString();
  // A copy of the server's builder that prints virtual fields and objects
  // by their names, as the query names them.
  const TSQLBuilderFast& server = context->SQLBuilderExpressionForServer();
  TSQLBuilderFast builder;
  builder.Assign(server);
  builder.SetOuterKeywordInLinks(server.OuterKeywordInLinks());
  builder.SetInnerKeywordInLinks(server.InnerKeywordInLinks());
  builder.SetAsKeywordInExpressionAlias(server.AsKeywordInExpressionAlias());
  builder.SetAsKeywordInObjectAlias(server.AsKeywordInObjectAlias());
  builder.SetExpandVirtualFields(false);
  builder.SetExpandVirtualObjects(false);
  pugi::xml_document document;
  CreateQueryXML(Statement(), builder, document);
  std::ostringstream out;
  document.save(out, "  ", pugi::format_indent | pugi::format_no_declaration, pugi::encoding_utf8);
  return UTF8Decode(out.str());
}

}  // namespace mv
