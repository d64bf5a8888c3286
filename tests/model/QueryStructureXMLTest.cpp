// The structure of a statement as an XML document: element names, the
// placement of the children, the leaves and the lists of what the statement
// uses, checked by XPath on the document written for bound statements.
#include <pugixml.hpp>

#include "ModelTestSupport.h"
#include "Thrown.h"
#include "model/QueryStructureXML.h"
#include "tree/FromClause.h"
#include "tree/SelectStatement.h"

namespace mvtest {
namespace {

class QueryStructureXMLTest : public ModelTest {
 protected:
  QueryStructureXMLTest() {
    host->MetadataContainer()->SetWorkOffline(true);
    AddTable(u"t", {u"a", u"b"});
    AddTable(u"u", {u"a", u"c"});
  }

  // The statement bound to the metadata, with its statistics gathered.
  mv::TmvOwned<mv::TSQLSelectStatement> Bind(const std::string& sql) {
    mv::TmvOwned<mv::TSQLSelectStatement> statement = host->SQLContext()->ParseSelect(U16(sql));
    statement->PrepareAndFixupRecursive();
    statement->PrepareCalcStatisticsRecursive();
    while (statement->CalcStatisticsRecursive() > 0) {
    }
    return statement;
  }

  void Write(mv::TSQLSelectStatement* statement, pugi::xml_document& document) {
    mv::CreateQueryXML(statement, host->SQLContext()->SQLBuilderExpressionForServer(), document);
  }
};

struct XPathCase {
  const char* sql;
  const char* xpath;  // evaluated as a string
  const char* expected;
};

const XPathCase kCases[] = {
    // A union: the members in their group, the operator on the second
    // only, the order by of the whole after the group.
    {"SELECT a FROM t UNION ALL SELECT c FROM u ORDER BY 1", "count(/statement/union_group/union_subquery)", "2"},
    {"SELECT a FROM t UNION ALL SELECT c FROM u ORDER BY 1",
     "concat(count(//union_subquery[1]/@union_operator), '|', //union_subquery[2]/@union_operator)", "0|UNION All"},
    {"SELECT a FROM t UNION ALL SELECT c FROM u ORDER BY 1", "name(/statement/*[last()])", "order_by_clause"},
    {"SELECT a FROM t ORDER BY a", "name(/statement/*[last()])", "order_by_clause"},
    {"SELECT a FROM t UNION (SELECT c FROM u UNION SELECT a FROM t)",
     "concat(count(/statement/union_group/union_group/union_subquery), '|',"
     " /statement/union_group/union_group/@union_operator)",
     "2|UNION"},
    // Expressions without a name write nothing; what they name falls to
    // the nearest element.
    {"SELECT a + b FROM t", "concat(//select_item/expression/@sql, '|', count(//select_item/expression/*))",
     "t.a + t.b|0"},
    {"SELECT a FROM t WHERE f(:p) = 1", "concat(//where_clause/param_symbol, //where_clause/param_name)", ":p"},
    {"SELECT a FROM t WHERE a = 1 OR NOT b = 2 AND a = b",
     "concat(count(//where_clause/or), '|', count(//or/and), '|', //and/not/@sql)", "2|2|t.b = 2"},
    {"SELECT a x FROM t", "concat(//select_item/@type, '|', //select_item/expression_alias)", "expression|x"},
    // Kinds of select items.
    {"SELECT * FROM t", "string(//select_item/@type)", "all_columns"},
    {"SELECT s.* FROM t s", "string(//select_item/@type)", "all_object_columns"},
    // Sources: a known table names itself, an unknown one does not.
    {"SELECT s.a FROM t s", "concat(//from_item/@type, '|', //from_item/name, '|', //from_item/object_alias)",
     "object|t|s"},
    {"SELECT a FROM nowhere",
     "concat(count(//from_item/*), '|', //used_object/@object_name, '|', count(//used_object/*))",
     "0|nowhere|0"},
    {"SELECT a FROM t, nowhere", "concat(//used_object[1]/name, '|', count(//used_object[2]/*))", "t|0"},
    {"SELECT q.a FROM (SELECT a FROM t) q", "concat(//from_item/@type, '|', name(//from_item/derived_table/*[1]))",
     "derived_table|union_group"},
    {"SELECT t.a FROM t LEFT JOIN u ON t.a = u.a CROSS JOIN u v",
     "concat(//from_item[2]/join_kind, '|', //from_item[2]/join_expression/@sql, '|', //from_item[3]/join_kind)",
     "left|t.a = u.a|cross"},
    // Order items: only a descending one says so.
    {"SELECT a FROM t ORDER BY a, b DESC",
     "concat(count(//order_by_item[1]/@sort_type), '|', //order_by_item[2]/@sort_type)", "0|desc"},
    {"SELECT a FROM t GROUP BY a, b HAVING COUNT(*) > 1",
     "concat(count(//group_by_clause/group_by_item), '|', //having_clause/@sql)", "2|COUNT(*) > 1"},
    // What the statement uses comes first, sub-queries seen through.
    {"SELECT q.a FROM (SELECT a FROM t WHERE b > 0) q",
     "concat(name(/statement/*[1]), name(/statement/*[2]), '|', count(//used_object), '|', "
     "//used_column[@column_name='b']/@object_name)",
     "used_objectsused_columns|1|t"},
};

TEST_F(QueryStructureXMLTest, ElementsOfTheDocument) {
  for (const XPathCase& c : kCases) {
    SCOPED_TRACE(std::string(c.sql) + "  " + c.xpath);
    mv::TmvOwned<mv::TSQLSelectStatement> statement = Bind(c.sql);
    pugi::xml_document document;
    Write(statement.get(), document);
    EXPECT_EQ(pugi::xpath_query(c.xpath).evaluate_string(document), c.expected);
  }
}

TEST_F(QueryStructureXMLTest, RootNamesItsSchema) {
  mv::TmvOwned<mv::TSQLSelectStatement> statement = Bind("SELECT a FROM t");
  pugi::xml_document document;
  Write(statement.get(), document);
  pugi::xml_node root = document.document_element();
  EXPECT_STREQ(root.attribute("xmlns:xsi").value(), "http://www.w3.org/2001/XMLSchema-instance");
  const std::string location = root.attribute("xsi:noNamespaceSchemaLocation").value();
  EXPECT_TRUE(location.ends_with("/schemas/query.xsd")) << location;
  mv::TSQLBuilder& server = host->SQLContext()->SQLBuilderExpressionForServer();
  EXPECT_EQ(root.attribute("sql").value(), U8(statement->SimpleSQL(server)));
}

TEST_F(QueryStructureXMLTest, UnknownJoinClassIsRefused) {
  mv::TmvOwned<mv::TSQLSelectStatement> statement = Bind("SELECT t.a FROM t INNER JOIN u ON t.a = u.a");
  mv::TSQLFromSource* joined = statement->FirstUnionSubQuery()->FromClause->GetItems(1);
  joined->JoinKind.Set(mv::TastCreate<mv::TSQLJoinKindOuter>(host->SQLContext()));
  pugi::xml_document document;
  EXPECT_EQ(U8(ThrownMessage<mv::EmvQueryBuilderError>([&] { Write(statement.get(), document); })),
            "Don't know how to write join class: TSQLJoinKindOuter");
}

}  // namespace
}  // namespace mvtest
