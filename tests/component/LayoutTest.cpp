// The picture of a query: boxes keep their places when new text replaces the
// model (with controls), and the layout document carries text and places.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "component/Layout.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "support/MainThread.h"

namespace {

using mv::TmvQueryBuilderControlOwner;
using mv::UTF8Decode;
using mv::UTF8Encode;

// Trivial controls for every object, counting the updates each owner sends.
class TFactory : public mv::ImvControlFactory {
 public:
  struct TPlain : mv::ImvControl {
    explicit TPlain(TFactory& f) : factory(f) {}
    void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override { ++factory.updates[owner]; }
    TFactory& factory;
  };
  struct TBox : mv::ImvDatasourceControl {
    explicit TBox(TFactory& f) : factory(f) {}
    void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override { ++factory.updates[owner]; }
    void ReloadFieldsList() override {}
    void UpdateChecksOnFields() override {}
    mv::WideString GetCaption() override { return {}; }
    void SetCaption(const mv::WideString&) override {}
    mv::TmvRect CalcFieldRect(const mv::WideString&) override { return {}; }
    void SetOptimalHeight() override {}
    void TuneSize() override {}
    TFactory& factory;
  };
  mv::ImvControl* CreateControl(TmvQueryBuilderControlOwner* owner, int) override {
    if (mv::TmvCast<mv::TmvDatasource>(owner)) return controls.emplace_back(new TBox(*this)).get();
    return controls.emplace_back(new TPlain(*this)).get();
  }
  void ShowControl(mv::ImvControl*, bool) override {}
  void DestroyControl(mv::ImvControl* control) override {
    std::erase_if(controls, [control](auto& owned) { return owned.get() == control; });
  }
  std::vector<std::unique_ptr<mv::ImvControl>> controls;
  std::map<TmvQueryBuilderControlOwner*, int> updates;
};

struct TBox {
  int left = 0, top = 0, width = 0, height = 0;
  bool operator==(const TBox&) const = default;
};

std::ostream& operator<<(std::ostream& out, const TBox& box) {
  return out << "{" << box.left << ", " << box.top << ", " << box.width << ", " << box.height << "}";
}

class LayoutTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  ~LayoutTest() override { mv::MainThreadDispatcher().ProcessPending(); }

  static mv::TmvOwned<mv::TmvQueryBuilder> NewBuilder(mv::TmvBaseSyntaxProvider* provider, TFactory* factory) {
    auto builder = mv::TmvCreate<mv::TmvQueryBuilder>();
    builder->SetSyntaxProvider(provider);
    if (factory) {
      builder->SetControlFactory(factory);
      builder->CreateControls();
    }
    return builder;
  }
  void WithControls() { builder = NewBuilder(provider.get(), &factory); }

  void Set(const std::string& sql) { builder->SetSql(UTF8Decode(sql)); }
  std::string Sql() { return UTF8Encode(builder->GetSql()); }
  // The datasource of that name in any SELECT (null if none).
  static mv::TmvDatasource* Find(mv::TmvQueryBuilder& in, const std::string& name) {
    for (mv::TmvUnionSubQuery* member : in.GetUnionSubQueriesList()) {
      mv::TmvDatasourceList list;
      member->Datasources()->GetDatasources(list);
      for (mv::TmvDatasource* datasource : list)
        if (mv::WideSameText(datasource->GetNameInQuery(), UTF8Decode(name))) return datasource;
    }
    return nullptr;
  }
  mv::TmvDatasource* Find(const std::string& name) { return Find(*builder, name); }
  static void Place(mv::TmvDatasource* datasource, TBox box) {
    datasource->SetLeft(box.left);
    datasource->SetTop(box.top);
    datasource->SetWidth(box.width);
    datasource->SetHeight(box.height);
  }
  static TBox BoxOf(mv::TmvDatasource* datasource) {
    if (!datasource) return {-1, -1, -1, -1};
    return {datasource->Left(), datasource->Top(), datasource->Width(), datasource->Height()};
  }
  TBox BoxOf(const std::string& name) { return BoxOf(Find(name)); }

  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  TFactory factory;  // outlives the builders
  mv::TmvOwned<mv::TmvQueryBuilder> builder = NewBuilder(provider.get(), nullptr);
};

const TBox kA{10, 20, 100, 80}, kB{200, 30, 120, 90}, kZ{0, 40, 50, 50}, kNone{};
const char* const kBase = "SELECT a.x, b.y, z.w FROM a INNER JOIN b ON a.id = b.id, z";

// New text for the whole query: what stays keeps its box; a new alias or a
// replaced table takes the place of what it is most like; a box at Left 0
// is not restored, nor is a new table given a place.
TEST_F(LayoutTest, BoxesKeepTheirPlacesAcrossNewText) {
  struct TCase {
    const char* sql;
    std::map<std::string, TBox> boxes;
  };
  const std::vector<TCase> cases = {
      {"SELECT a.x, b.y, z.w FROM a INNER JOIN b ON a.id = b.id INNER JOIN c ON b.id = c.id, z",
       {{"a", kA}, {"b", kB}, {"c", kNone}, {"z", kNone}}},
      {"SELECT q.x, b.y, z.w FROM a q INNER JOIN b ON q.id = b.id, z", {{"q", kA}, {"b", kB}, {"z", kNone}}},
      {"SELECT b.y FROM b", {{"b", kB}}},
      {"SELECT d.x, b.y FROM d INNER JOIN b ON d.id = b.id", {{"d", kA}, {"b", kB}}},
      {"SELECT b.y FROM b, a", {{"b", kB}, {"a", kA}}},
  };
  WithControls();
  for (const TCase& c : cases) {
    builder->Clear();
    Set(kBase);
    Place(Find("a"), kA);
    Place(Find("b"), kB);
    Place(Find("z"), kZ);
    Set(c.sql);
    ASSERT_NE(Sql(), kBase);
    for (const auto& [name, box] : c.boxes) EXPECT_EQ(BoxOf(name), box) << c.sql << ": " << name;
  }
}

// The grid's widths, the page's split and boxes inside a derived table come
// back too, also through the SetSql of one SELECT and of a sub-query.
TEST_F(LayoutTest, NestedPartsKeepTheirPlaces) {
  WithControls();
  Set("SELECT q.x FROM (SELECT a.x FROM a) q UNION SELECT b.y FROM b");
  mv::TmvUnionSubQuery* first = builder->Query()->FirstSelect();
  first->SetRatio(0.6);
  first->SelectList()->SetGeneralColumnsWidth({50, 60});
  first->SelectList()->SetConditionsColumnsWidth({70});
  Place(Find("q"), kB);
  Place(Find("a"), kA);
  Set("SELECT q.x, c.z FROM (SELECT a.x FROM a) q, c UNION SELECT b.y FROM b");
  first = builder->Query()->FirstSelect();
  EXPECT_EQ(first->Ratio(), 0.6);
  EXPECT_EQ(first->SelectList()->GeneralColumnsWidth(), (std::vector<int32_t>{50, 60}));
  EXPECT_EQ(first->SelectList()->ConditionsColumnsWidth(), (std::vector<int32_t>{70}));
  EXPECT_EQ(BoxOf("q"), kB);
  EXPECT_EQ(BoxOf("a"), kA);

  first->SetSql(u"SELECT q.x FROM (SELECT a.x FROM a) q, d");
  EXPECT_EQ(builder->Query()->FirstSelect(), first);
  EXPECT_EQ(first->Ratio(), 0.6);
  EXPECT_EQ(BoxOf("q"), kB);
  EXPECT_EQ(BoxOf("a"), kA);
  EXPECT_EQ(BoxOf("d"), kNone);

  auto* table = mv::TmvCast<mv::TmvDatasourceQuery>(Find("q"));
  ASSERT_NE(table, nullptr);
  mv::TmvSubQuery* derived = table->SubQuery();
  derived->SetSql(u"SELECT a.x, e.y FROM a, e");
  EXPECT_EQ(BoxOf("a"), kA);
  EXPECT_EQ(BoxOf("e"), kNone);
  EXPECT_EQ(Sql(), "Select q.x From (Select a.x, e.y From a, e) q, d UNION Select b.y From b");
}

// The snapshot matches by kind, name and children: equal places first, then
// perfect matches anywhere, then the best one left.
TEST_F(LayoutTest, LayoutOrderMatchesByKindAndName) {
  Set("SELECT * FROM a, b, c");
  mv::TmvLayout::TmvObjects boxes;
  mv::TmvLayout::CollectLayoutChildren(builder->Query()->FirstSelect(), boxes);
  ASSERT_EQ(boxes.size(), 4u);  // three boxes and the select list
  auto item = [](mv::TmvLayoutItemType type, const char16_t* name) {
    auto result = std::make_unique<mv::TmvLayoutItem>();
    result->ItemType = type;
    result->Name = name;
    return result;
  };
  const auto b = item(mv::mvliDatasource, u"B"), a = item(mv::mvliDatasource, u"a"),
             x = item(mv::mvliDatasource, u"x"), list = item(mv::mvliSelectList, u""),
             query = item(mv::mvliSubQuery, u"");
  using Items = mv::TmvLayout::TmvItems;
  struct TCase {
    Items items;
    Items expected;
  };
  const std::vector<TCase> cases = {
      {{a.get(), b.get(), x.get(), list.get()}, {a.get(), b.get(), x.get(), list.get()}},
      {{b.get(), a.get()}, {a.get(), b.get(), nullptr, nullptr}},
      {{x.get(), query.get()}, {x.get(), nullptr, nullptr, nullptr}},
      {{list.get(), x.get()}, {x.get(), nullptr, nullptr, list.get()}},
      {{}, {nullptr, nullptr, nullptr, nullptr}},
  };
  for (size_t i = 0; i < cases.size(); ++i)
    EXPECT_EQ(mv::TmvLayout::CalcLayoutOrder(boxes, cases[i].items), cases[i].expected) << "case " << i;
  EXPECT_EQ(mv::TmvLayout::CompareLayout(boxes[0], *a), 0);
  EXPECT_EQ(mv::TmvLayout::CompareLayout(boxes[0], *x), -1);
  EXPECT_EQ(mv::TmvLayout::CompareLayout(boxes[0], *list), -1000);
  EXPECT_EQ(mv::TmvLayout::CompareLayout(builder->Query(), *mv::TmvLayout::GetLayout(builder->Query())), 0);
}

// Without controls nothing is carried across new text, but the document
// still takes text and places from one builder to another.
TEST_F(LayoutTest, HeadlessDocumentRoundTrips) {
  Set(kBase);
  Place(Find("a"), kA);
  Place(Find("b"), kB);
  builder->Query()->FirstSelect()->SetRatio(0.7);
  const mv::WideString layout = builder->GetLayout();
  Set("SELECT a.x, b.y FROM a INNER JOIN b ON a.id = b.id");
  EXPECT_EQ(BoxOf("a"), kNone);
  EXPECT_EQ(builder->Query()->FirstSelect()->Ratio(), 0.3);

  auto other = NewBuilder(provider.get(), nullptr);
  other->SetLayout(layout);
  EXPECT_EQ(UTF8Encode(other->GetSql()), "Select a.x, b.y, z.w From a Inner Join b On a.id = b.id, z");
  EXPECT_EQ(BoxOf(Find(*other, "a")), kA);
  EXPECT_EQ(BoxOf(Find(*other, "b")), kB);
  EXPECT_EQ(BoxOf(Find(*other, "z")), kNone);
  EXPECT_EQ(other->GetLayout(), layout);
}

// The document's exact shape: elements, attributes and their order, one
// SubQuery per sub-query; collapsed boxes are written with Height 0.
TEST_F(LayoutTest, DocumentShape) {
  WithControls();
  Set("SELECT a.x FROM a INNER JOIN (SELECT y FROM c) q ON a.id = q.y");
  Place(Find("a"), kA);
  Place(Find("q"), kB);
  Place(Find("c"), {5, 6, 7, 8});
  Find("q")->Collapse();
  EXPECT_EQ(UTF8Encode(builder->GetLayout()),
            "<MorvaneLayout>\n"
            "  <SQL>Select a.x From a Inner Join (Select y From c) q On a.id = q.y</SQL>\n"
            "  <SubQueries>\n"
            "    <SubQuery SQL=\"Select a.x From a Inner Join (Select y From c) q On a.id = q.y\">\n"
            "      <UnionSubQuery>\n"
            "        <DataSource SQL=\"a\" X=\"10\" Y=\"20\" Width=\"100\" Height=\"80\" />\n"
            "        <DataSource SQL=\"(Select y From c) q\" X=\"200\" Y=\"30\" Width=\"120\" Height=\"0\" />\n"
            "      </UnionSubQuery>\n"
            "    </SubQuery>\n"
            "    <SubQuery SQL=\"Select y From c\">\n"
            "      <UnionSubQuery>\n"
            "        <DataSource SQL=\"c\" X=\"5\" Y=\"6\" Width=\"7\" Height=\"8\" />\n"
            "      </UnionSubQuery>\n"
            "    </SubQuery>\n"
            "  </SubQueries>\n"
            "</MorvaneLayout>\n");
  // A collapsed box comes back collapsed on a pane.
  TFactory otherFactory;
  auto other = NewBuilder(provider.get(), &otherFactory);
  other->SetLayout(builder->GetLayout());
  EXPECT_TRUE(Find(*other, "q")->Collapsed());
  EXPECT_FALSE(Find(*other, "a")->Collapsed());
  EXPECT_EQ(BoxOf(Find(*other, "q")).left, 200);
  EXPECT_EQ(BoxOf(Find(*other, "c")), (TBox{5, 6, 7, 8}));
}

// Applying the document the builder gave keeps the model and its places;
// two boxes of equal text take the first element found.
TEST_F(LayoutTest, OwnDocumentKeepsTheModel) {
  WithControls();
  Set("SELECT * FROM a, a");
  Place(mv::TmvCast<mv::TmvDatasource>(builder->Query()->FirstSelect()->Datasources()->Items(0)), kA);
  Place(mv::TmvCast<mv::TmvDatasource>(builder->Query()->FirstSelect()->Datasources()->Items(1)), kB);
  mv::TmvDatasourceBase* first = builder->Query()->FirstSelect()->Datasources()->Items(0);
  int updates = 0;
  builder->OnSQLUpdated = [&](mv::TmvQueryModelHost*) { ++updates; };
  builder->SetLayout(builder->GetLayout());
  EXPECT_EQ(updates, 0);
  EXPECT_EQ(builder->Query()->FirstSelect()->Datasources()->Items(0), first);
  EXPECT_EQ(BoxOf(mv::TmvCast<mv::TmvDatasource>(first)), kA);
  EXPECT_EQ(BoxOf(mv::TmvCast<mv::TmvDatasource>(builder->Query()->FirstSelect()->Datasources()->Items(1))), kA);
}

// A place is no text: a setter updates the box's control on a change only,
// and no change of the query is announced.
TEST_F(LayoutTest, PlacesAreNoText) {
  WithControls();
  Set("SELECT * FROM a");
  mv::TmvDatasource* a = Find("a");
  int updates = 0;
  builder->OnSQLUpdated = [&](mv::TmvQueryModelHost*) { ++updates; };
  const int before = factory.updates[a];
  Place(a, kA);
  Place(a, kA);
  a->Collapse();
  a->Collapse();
  EXPECT_EQ(factory.updates[a] - before, 5);
  EXPECT_EQ(updates, 0);
}

// What isn't a layout document of this query changes nothing; a box with a
// number that isn't one is refused before anything changes.
TEST_F(LayoutTest, BadDocumentsChangeNothing) {
  Set("SELECT a.x FROM a");
  Place(Find("a"), kA);
  const std::string other = "<MorvaneLayout><SQL>Select a.x From a</SQL><SubQueries><SubQuery SQL=\"Select b\">"
                            "<UnionSubQuery><DataSource SQL=\"a\" X=\"1\" Y=\"2\" Width=\"3\" Height=\"4\"/>"
                            "</UnionSubQuery></SubQuery></SubQueries></MorvaneLayout>";
  for (const char* text : {"", "not xml", "<MorvaneLayout><SQL>Select * From b</SQL>", other.c_str()}) {
    builder->SetLayout(UTF8Decode(text));
    EXPECT_EQ(Sql(), "Select a.x From a") << text;
    EXPECT_EQ(BoxOf("a"), kA) << text;
  }
  for (const char* x : {"X=\"\"", "X=\"1.5\"", "X=\"x\"", "X=\"99999999999\"", ""}) {
    const std::string bad = "<MorvaneLayout><SQL>Select * From b</SQL><SubQueries><SubQuery SQL=\"Select * From b\">"
                            "<UnionSubQuery><DataSource SQL=\"b\" " +
                            std::string(x) +
                            " Y=\"2\" Width=\"3\" Height=\"4\"/></UnionSubQuery></SubQuery></SubQueries>"
                            "</MorvaneLayout>";
    try {
      builder->SetLayout(UTF8Decode(bad));
      ADD_FAILURE() << "no error for [" << x << "]";
    } catch (const mv::EConvertError& error) {
      EXPECT_NE(UTF8Encode(error.Message()).find("MorvaneLayout/SubQueries/SubQuery/UnionSubQuery/DataSource"),
                std::string::npos)
          << UTF8Encode(error.Message());
    }
    EXPECT_EQ(Sql(), "Select a.x From a");
  }
}

}  // namespace
