// Links the model makes by itself: ON clauses that move into WHERE when the
// dialect has no joins in FROM, links from the relations of the metadata and
// from equal field names (with the host's veto), and the cardinality of a
// link's ends read from the relation it follows.
#include <algorithm>
#include <functional>

#include "ModelTestSupport.h"
#include "metadata/MetadataQualifiedNamesList.h"
#include "metadata/MetadataRelation.h"
#include "model/Links.h"

namespace {

using namespace mvtest;

// --- The dialect changes to one without joins in FROM ---

struct ProviderCase {
  const char* Name;
  bool Oracle;
  const char* Sql;
  const char* Printed;
};

class ProviderChangeTest : public ModelTest, public ::testing::WithParamInterface<ProviderCase> {
 public:
  ~ProviderChangeTest() override { host->SetSyntaxProvider(&provider); }
  TCapabilityProvider noJoins;
};

const ProviderCase kProviderCases[] = {
    {"InnerJoinGoesToWhere", false, "SELECT * FROM a INNER JOIN b ON a.x = b.y",
     "select * from a, b where a.x = b.y"},
    {"OuterSideIsMarkedWhereTheDialectCan", true, "SELECT * FROM a LEFT JOIN b ON a.x = b.y",
     "select * from a, b where a.x = b.y(+)"},
    {"OuterSideIsLostWithoutMarks", false, "SELECT * FROM a LEFT JOIN b ON a.x = b.y",
     "select * from a, b where a.x = b.y"},
    {"ConditionsThatAreNoLinkGoAlong", false, "SELECT * FROM a INNER JOIN b ON a.x = b.y AND b.z = 1 WHERE a.w = 2",
     "select * from a, b where a.x = b.y and b.z = 1 and a.w = 2"},
    {"ThreeTables", false, "SELECT * FROM a INNER JOIN b ON a.x = b.y INNER JOIN c ON b.y = c.z",
     "select * from a, b, c where a.x = b.y and b.y = c.z"},
};

TEST_P(ProviderChangeTest, TurnsFromLinksIntoWhereLinks) {
  const ProviderCase& row = GetParam();
  Load(row.Sql);
  noJoins.ANSIJoins = false;
  noJoins.OracleJoins = row.Oracle;
  host->SetSyntaxProvider(&noJoins);
  EXPECT_EQ(Lower(Sql()), row.Printed);
  std::vector<mv::TmvLink*> links;
  First()->Datasources()->GetLinksRecursive(links);
  for (mv::TmvLink* link : links) EXPECT_EQ(link->LinkPlace(), mv::lpWhere);
}

INSTANTIATE_TEST_SUITE_P(Cases, ProviderChangeTest, ::testing::ValuesIn(kProviderCases),
                         [](const ::testing::TestParamInfo<ProviderCase>& info) { return info.param.Name; });

// --- Links from relations and equal names ---

// Customers(id, name, region) is the key side of Orders(id, customer_id,
// name, region) by customer_id; Regions(region) has no relation.
class AutomaticLinksTest : public ModelTest {
 public:
  AutomaticLinksTest() {
    customers = AddTable(u"Customers", {u"id", u"name", u"region"});
    AddTable(u"Orders", {u"id", u"customer_id", u"name", u"region"});
    AddTable(u"Regions", {u"region"});
    mv::TmvMetadataRelation* relation = customers->GetRelations()->Add();
    relation->KeyFields()->Add(mv::WideStringView(u"id"));
    relation->ChildFields()->Add(mv::WideStringView(u"customer_id"));
    relation->SetChildTable(host->SQLContext()->ParseQualifiedName(u"Orders").get());
    relation->SetKeyCardinality(mv::mrcOne);
    relation->SetChildCardinality(mv::mrcMany);
    host->OnLinkCreating = [this](mv::TmvQueryModelHost*, mv::TmvUnionSubQuery*, mv::TmvDatasource*,
                                  mv::TmvMetadataField*, mv::TmvDatasource*, mv::TmvMetadataField* toField,
                                  mv::TmvMetadataRelation* withRelation, bool& allow) {
      asked.push_back(U8(toField ? toField->NameStrNotQuoted() : u"?") + (withRelation ? "@fk" : ""));
      allow = veto.empty() || asked.back() != veto;
    };
    host->OnLinkCreated = [this](mv::TmvQueryModelHost*, mv::TmvLink*) { ++created; };
    First()->SetSql(u"");
  }
  ~AutomaticLinksTest() override {
    host->OnLinkCreating = nullptr;
    host->OnLinkCreated = nullptr;
  }

  mv::TmvMetadataTable* customers;
  std::vector<std::string> asked;
  std::string veto;
  int created = 0;
};

struct AutoCase {
  const char* Name;
  bool IdenticalNames;
  const char* Veto;  // the field (and "@fk") the host refuses
  std::vector<const char16_t*> Added;
  const char* From;
  int Created;
};

class AutomaticLinksCases : public AutomaticLinksTest, public ::testing::WithParamInterface<AutoCase> {};

const AutoCase kAutoCases[] = {
    {"KeySideAddedSecond", false, "", {u"Orders", u"Customers"},
     "from orders inner join customers on orders.customer_id = customers.id", 1},
    {"ChildSideAddedSecond", false, "", {u"Customers", u"Orders"},
     "from customers inner join orders on orders.customer_id = customers.id", 1},
    {"NoRelationNoLink", false, "", {u"Customers", u"Regions"}, "from customers, regions", 0},
    {"HostRefusesTheRelation", false, "id@fk", {u"Orders", u"Customers"}, "from orders, customers", 0},
    {"EqualNamesToo", true, "", {u"Customers", u"Regions"},
     "from customers inner join regions on customers.region = regions.region", 1},
    {"EqualNamesAndTheRelation", true, "", {u"Customers", u"Orders"},
     "from customers inner join orders on orders.customer_id = customers.id and customers.id = orders.id and "
     "customers.name = orders.name and customers.region = orders.region",
     4},
    {"HostRefusesOneName", true, "name", {u"Customers", u"Orders"},
     "from customers inner join orders on orders.customer_id = customers.id and customers.id = orders.id and "
     "customers.region = orders.region",
     3},
};

TEST_P(AutomaticLinksCases, AddObjectWithFKLinksAsTheOptionsAndTheHostSay) {
  const AutoCase& row = GetParam();
  host->Options.CreateLinksByIdenticalFieldNames = row.IdenticalNames;
  veto = row.Veto;
  for (const char16_t* name : row.Added) ASSERT_NE(First()->AddObjectWithFK(name, u""), nullptr);
  const std::string sql = Lower(Sql());
  EXPECT_EQ(sql.substr(sql.find("from")), row.From);
  EXPECT_EQ(created, row.Created);
}

INSTANTIATE_TEST_SUITE_P(Cases, AutomaticLinksCases, ::testing::ValuesIn(kAutoCases),
                         [](const ::testing::TestParamInfo<AutoCase>& info) { return info.param.Name; });

TEST_F(AutomaticLinksTest, CardinalityFollowsTheRelation) {
  auto* orders = First()->AddObject(u"Orders", u"");
  auto* regions = First()->AddObject(u"Regions", u"");
  auto* customers = First()->AddObject(u"Customers", u"");
  EXPECT_EQ(First()->AddFKLinksForObject(customers), 1);
  mv::TmvLink* link = First()->FindLink(orders, u"customer_id", u"id", customers);
  ASSERT_NE(link, nullptr);
  EXPECT_NE(link->GetRelation(), nullptr);
  // The key side is the one of many rows' partner: one customer, many orders.
  EXPECT_EQ(link->LeftDatasource() == customers ? link->LeftCardinality() : link->RightCardinality(), mv::qblcOne);
  EXPECT_EQ(link->LeftDatasource() == orders ? link->LeftCardinality() : link->RightCardinality(), mv::qblcMany);
  // A link no relation stands behind knows nothing of its ends.
  mv::TmvLink* other = First()->AddLink(orders, u"region", u"region", regions);
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(other->GetRelation(), nullptr);
  other->CalcCardinality();
  EXPECT_EQ(other->LeftCardinality(), mv::qblcUnknown);
  EXPECT_EQ(other->RightCardinality(), mv::qblcUnknown);
}

TEST_F(AutomaticLinksTest, LinkedObjectOfTheMenuComesWithItsLinks) {
  auto* orders = First()->AddObject(u"Orders", u"");
  mv::TmvMetadataRelation* relation = customers->GetRelations()->Items(0);
  mv::TmvDataSourceObject* added = First()->AddLinkedObject(orders, relation);
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(Lower(Sql()), "select * from orders inner join customers on orders.customer_id = customers.id");
  // Asked again, the present object serves and the link is not doubled.
  EXPECT_EQ(First()->AddLinkedObject(orders, relation), added);
  EXPECT_EQ(First()->Datasources()->LinksCount(), 1);
  // The menu offers no more what a link follows already.
  const mv::TmvMenu menu = orders->GetPopupMenu(nullptr);
  auto linked = std::find_if(menu.begin(), menu.end(),
                             [](const mv::TmvMenuItem& item) { return U8(item.Key) == "mvQBAddLinkedObject"; });
  ASSERT_NE(linked, menu.end());
  ASSERT_EQ(linked->SubItems.size(), 1u);
  EXPECT_FALSE(linked->SubItems[0].Enabled);
}

}  // namespace
