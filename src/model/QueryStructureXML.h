// The structure of a statement as an XML tree, for hosts that inspect a
// query without a parser: the statement with its union groups and
// sub-queries, each select's clauses, the expressions down to the leaves
// that have a name of their own, and, at the root, the objects and columns
// the statement uses (from the statistics its nodes gathered, see
// tree/NodeStatistics.h).
//
//   <statement sql="...">           the root; "subquery" for a sub-select
//     <used_objects>, <used_columns>
//     <union_group>                 the statement's members; a bracketed
//                                   group of members is one more
//       <union_subquery sql="...">  one SELECT: select_clause, from_clause,
//                                   where_clause, group_by_clause,
//                                   having_clause, order_by_clause
//     <order_by_clause>             of the whole statement, always last
//
// An element's name is the one its parent gave the node, else the default
// of the node's class; a node with neither writes nothing itself, and what
// it names attaches to the nearest element above it. The "sql" attributes
// are the nodes' text through the builder given.
#pragma once

#include <memory>
#include <vector>

#include "tree/AstNode.h"

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

namespace mv {

class TSQLBuilder;
class TSQLJoinKind;
class TSQLQualifiedName;
class TSQLSelectStatement;
class TmvMetadataObject;
class TmvQueryXMLVisitRecord;

// Where the root says its schema is.
inline constexpr const char* kQuerySchemaLocation = "http://www.morvane.org/schemas/query.xsd";

// Writes the structure of `statement` into `document`, which should be
// empty. Raises EmvQueryBuilderError for a join kind of a class it has no
// word for, leaving the document partly written.
void CreateQueryXML(TSQLSelectStatement* statement, TSQLBuilder& builder, pugi::xml_document& document);

class TmvQueryXMLCreator : public TastNodeVisitor {
 public:
  // Borrows both for the life of the creator.
  TmvQueryXMLCreator(TSQLBuilder& builder, pugi::xml_document& document);
  ~TmvQueryXMLCreator() override;

  // "cross", "inner", "left", "right" or "full"; any other class raises.
  static const char* JoinKindWord(const TSQLJoinKind& kind);
  // The parts of the object's name that are not empty, as child elements
  // "database", "schema" and "name" of `parent`.
  void WriteObjectName(pugi::xml_node parent, const TmvMetadataObject& object);

 protected:
  // The base's order, but a sub-select's own order by clause comes last.
  TastNodeBaseList GetNodeChildren(TastNodeBase* node, TastNodeBase* parent, TmvObject* data,
                                   TmvObject* nodeData) override;
  TmvOwned<TmvObject> EnterIntoNode(TastNodeBase* node, TastNodeBase* parent, TmvObject* data) override;

 private:
  // Opens the node's element (see the file comment) and makes it the
  // record's; with no name the record keeps the parent's element and
  // the answer is false.
  bool OpenElement(TastNode* node, TmvQueryXMLVisitRecord& record, const char* defaultName, bool withStatistics,
                   bool withSql);
  // The node as a named element with `value` as its text, or nothing.
  void WriteLeaf(TastNode* node, TmvQueryXMLVisitRecord& record, const WideString& value);
  void WriteFromSource(TastNode* node, TmvQueryXMLVisitRecord& record);
  void WriteUsedObjects(pugi::xml_node root, TastNode* statement);
  void WriteUsedColumns(pugi::xml_node root, TastNode* statement);
  // The node's text through the builder; empty for none.
  WideString Print(const TastNode* node);
  // The object's full name, or the name as written when the object is unknown.
  WideString ObjectNameText(const TmvMetadataObject* object, const TSQLQualifiedName* name);

  TSQLBuilder& builder_;
  pugi::xml_document& document_;
};

}  // namespace mv
