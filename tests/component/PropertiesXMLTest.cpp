// The properties XML of the query builder and of the builder components:
// the document, its filters, and what reading one does.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "component/PropertiesXML.h"
#include "component/QueryBuilder.h"
#include "component/SQLBuilderComponents.h"
#include "dialects/EngineInit.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"

namespace {

using mv::WideString;

std::string Utf8(const WideString& text) { return mv::UTF8Encode(text); }

// An entry as a document of its own.
std::string Entry(const std::string& path, const std::string& value) {
  std::string open, close;
  size_t start = 0;
  while (start < path.size()) {
    size_t slash = path.find('/', start);
    if (slash == std::string::npos) slash = path.size();
    const std::string name = path.substr(start, slash - start);
    open += "<" + name + ">";
    close = "</" + name + ">" + close;
    start = slash + 1;
  }
  return "<properties>" + open + "<value>" + value + "</value>" + close + "</properties>";
}

size_t Occurrences(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class PropertiesXMLTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  PropertiesXMLTest() {
    builder->SetSyntaxProvider(provider.get());
    builder->Properties().GetOnUpdated().AddHandler(mv::TmvHandlerId::Unique(), [this](mv::TmvObject*) { ++updates; });
    builder->OnSQLUpdated = [this](mv::TmvQueryModelHost*) { ++sqlUpdates; };
  }

  std::string Xml() { return Utf8(builder->GetPropertiesXML()); }
  void Apply(const std::string& text) { builder->SetPropertiesXML(mv::UTF8Decode(text)); }
  // Every property but `except` as NAME=VALUE lines.
  std::string Dump(const WideString& except = {}) {
    std::string dump;
    const mv::TmvPropertyTable& table = builder->Properties().PropertyTable();
    for (const mv::TmvPropertyLeaf& leaf : table.Leaves())
      if (leaf.Path != except) dump += Utf8(leaf.Path) + "=" + Utf8(table.GetText(builder->Properties(), leaf.Path)) + "\n";
    return dump;
  }

  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  int updates = 0;
  int sqlUpdates = 0;
};

// A fresh builder's document: every keyed entry in the documented order,
// nesting and value forms (golden file).
TEST_F(PropertiesXMLTest, DefaultDocument) {
  const std::string golden = mv::UTF8Encode(mv::ReadTextFile(MV_TEST_DATA_DIR "/component/properties-default.xml"));
  EXPECT_EQ(Xml(), golden);
  EXPECT_EQ(Occurrences(Xml(), "<value>"), 59u);
}

// Reading the document written changes nothing: no notice, no value; on
// another builder it carries every entry over.
TEST_F(PropertiesXMLTest, RoundTripChangesNothing) {
  builder->SetGridSize(8);
  builder->SetBorderStyle(mv::qbbsFlat);
  builder->TreeOptions().SetShowFrom(false);
  builder->SetWorkOffline(true);
  builder->SetLinkPainterClassName(u"TmvQueryBuilderLinkPainterMSSQL");
  const std::string text = Xml();
  const std::string before = Dump();
  updates = sqlUpdates = 0;
  Apply(text);
  EXPECT_EQ(updates, 0);
  EXPECT_EQ(sqlUpdates, 0);
  EXPECT_EQ(Dump(), before);

  mv::TmvOwned<mv::TmvQueryBuilder> other = mv::TmvCreate<mv::TmvQueryBuilder>();
  other->SetPropertiesXML(mv::UTF8Decode(text));
  EXPECT_EQ(Utf8(other->GetPropertiesXML()), text);
}

// One entry changes that property and nothing else, in one update.
TEST_F(PropertiesXMLTest, SingleEntry) {
  const std::string others = Dump(u"GridSize");
  Apply(Entry("visual/query-designer/work-area/grid-size", "7"));
  EXPECT_EQ(builder->GridSize(), 7);
  EXPECT_EQ(Dump(u"GridSize"), others);
  EXPECT_EQ(updates, 1);
}

// What a document does to one property: corrections, value forms, and
// documents that change nothing.
TEST_F(PropertiesXMLTest, EntriesAndCorrections) {
  struct Case {
    std::string document;
    const char16_t* property;
    std::string expected;
  };
  const Case cases[] = {
      {Entry("visual/query-designer/work-area/grid-size", "500"), u"GridSize", "100"},
      {Entry("visual/query-builder/border-style", "2"), u"BorderStyle", "qbbsUltraFlat"},
      {Entry("visual/query-builder/border-style", "qbbsNone"), u"BorderStyle", "qbbsNone"},
      {Entry("visual/query-designer/work-area/snap-to-grid", "0"), u"SnapToGrid", "False"},
      {Entry("visual/query-designer/work-area/snap-to-grid", "false"), u"SnapToGrid", "False"},
      {Entry("system/offline-mode", "true"), u"WorkOffline", "True"},
      {Entry("system/offline-mode", "1"), u"WorkOffline", "True"},
      {Entry("visual/query-builder/color", "-2147483643"), u"Color", "$80000005"},
      {Entry("visual/query-builder/color", "$00FF00"), u"Color", "$0000FF00"},
      {Entry("visual/query-designer/link/type", "TSomePainter"), u"LinkPainterClassName",
       "TmvQueryBuilderLinkPainterAccess"},
      {Entry("system/use-custom-expression-builder", "0"), u"SelectListOptions.UseCustomExpressionBuilder", "[]"},
      {Entry("visual/query-designer/table/max-height", "300"), u"DatasourceOptions.MaxTableHeight", "300"},
      {Entry("visual/metadata-tree/grouping-type", "ogtType"), u"TreeOptionsMetadata.GroupingType", "ogtType"},
      {Entry("visual/query-designer/grid/use-MS-style-grouping", "1"), u"SelectListOptions.UseMSStyleGrouping",
       "True"},
      // Nothing: malformed text, an empty value, a path that is not there,
      // another case of a name.
      {"<properties><visual><query-designer><work-area><grid-size><value>9</value>", u"GridSize", "2"},
      {"grid-size=9", u"GridSize", "2"},
      {Entry("visual/query-designer/work-area/grid-size", ""), u"GridSize", "2"},
      {Entry("visual/query-designer/work-area/grid-sizes", "9"), u"GridSize", "2"},
      {Entry("visual/query-designer/grid/use-ms-style-grouping", "1"), u"SelectListOptions.UseMSStyleGrouping",
       "False"},
      {"", u"GridSize", "2"},
  };
  for (const Case& c : cases) {
    mv::TmvOwned<mv::TmvQueryBuilder> fresh = mv::TmvCreate<mv::TmvQueryBuilder>();
    fresh->SetPropertiesXML(mv::UTF8Decode(c.document));
    mv::TmvQueryBuilderProperties& properties = fresh->Properties();
    EXPECT_EQ(Utf8(properties.PropertyTable().GetText(properties, c.property)), c.expected) << c.document;
  }
}

// A value a property does not take raises, naming the entry; what came
// before it is applied.
TEST_F(PropertiesXMLTest, BadValueRaisesNamingTheEntry) {
  const std::string text =
      "<properties><system><offline-mode><value>1</value></offline-mode></system><visual><query-builder>"
      "<border-style><value>qbbsRound</value></border-style></query-builder></visual></properties>";
  try {
    Apply(text);
    ADD_FAILURE() << "no error";
  } catch (const mv::EConvertError& e) {
    EXPECT_NE(Utf8(e.Message()).find("visual/query-builder/border-style"), std::string::npos) << Utf8(e.Message());
  }
  EXPECT_TRUE(builder->WorkOffline());
  EXPECT_FALSE(builder->GetIsUpdating());
}

TEST_F(PropertiesXMLTest, Filters) {
  const std::string system = Utf8(builder->GetPropertiesXMLByTypes(true, false));
  const std::string visual = Utf8(builder->GetPropertiesXMLByTypes(false, true));
  EXPECT_EQ(Occurrences(system, "<value>"), 7u);
  EXPECT_EQ(Occurrences(system, "<visual>"), 0u);
  EXPECT_EQ(Occurrences(visual, "<value>"), 52u);
  EXPECT_EQ(Occurrences(visual, "<system>"), 0u);
  EXPECT_EQ(Utf8(builder->GetPropertiesXMLByTypes(true, true)), Xml());
  EXPECT_EQ(Occurrences(Utf8(builder->GetPropertiesXMLByTypes(false, false)), "<value>"), 0u);

  const std::string trees = Utf8(builder->GetPropertiesXMLByXPath(u"//metadata-tree | //structure-tree", u"//color"));
  EXPECT_EQ(Occurrences(trees, "<value>"), 21u);  // 14 + 9 entries, less the two colours
  EXPECT_EQ(Occurrences(trees, "<query-designer>"), 0u);
  // A filtered document applies as well.
  builder->TreeOptions().SetTreeWidth(99);
  const std::string structure = Utf8(builder->GetPropertiesXMLByXPath(u"/properties/visual/structure-tree", {}));
  mv::TmvOwned<mv::TmvQueryBuilder> other = mv::TmvCreate<mv::TmvQueryBuilder>();
  other->SetPropertiesXML(mv::UTF8Decode(structure));
  EXPECT_EQ(other->TreeOptions().TreeWidth(), 99);

  EXPECT_THROW(builder->GetPropertiesXMLByXPath(u"//[", {}), mv::EmvQueryBuilderError);
}

// The builder components keep their formats in the same kind of document.
TEST(SQLBuilderComponentPropertiesTest, KeysAndRoundTrip) {
  mv::TmvOwned<mv::TmvSQLBuilderPlainText> source = mv::TmvCreate<mv::TmvSQLBuilderPlainText>();
  source->Builder().SetRightMargin(60);
  source->Builder().SetKeywordFormat(mv::akfUpperCase);
  source->SetQuoteAllIdentifiers(true);
  source->Builder().MainQueryFormat().WhereFormat().SetNewLineAfter(mv::nlAllLogical);
  const std::string text = Utf8(source->GetPropertiesXML());
  for (const char* key : {"<right-margin>", "<keyword-format>", "<quote-all-identifiers>", "<object-prefix-skipping>",
                          "<use-alternative-object-names>", "<outer-keyword-in-links>", "<inner-keyword-in-links>",
                          "<main-query-format>", "<expressions-subquery-format>", "<from-subquery-format>"})
    EXPECT_EQ(Occurrences(text, key), 1u) << key;
  EXPECT_EQ(Occurrences(text, "<join-conditions-format>"), 3u);
  EXPECT_EQ(Occurrences(text, "<cte"), 0u);

  mv::TmvOwned<mv::TmvSQLBuilderPlainText> dest = mv::TmvCreate<mv::TmvSQLBuilderPlainText>();
  int fired = 0;
  dest->OnSQLUpdated = [&](mv::TmvBaseSQLBuilder*) { ++fired; };
  dest->SetPropertiesXML(mv::UTF8Decode(text));
  EXPECT_EQ(fired, 1);
  EXPECT_EQ(dest->Builder().RightMargin(), 60);
  EXPECT_EQ(dest->Builder().KeywordFormat(), mv::akfUpperCase);
  EXPECT_TRUE(dest->QuoteAllIdentifiers());
  EXPECT_EQ(dest->Builder().MainQueryFormat().WhereFormat().NewLineAfter(), mv::nlAllLogical);
  fired = 0;
  dest->SetPropertiesXML(mv::UTF8Decode(text));
  EXPECT_EQ(fired, 0);
  EXPECT_EQ(Utf8(dest->GetPropertiesXML()), text);
}

}  // namespace
