// The option objects and the query builder's property registry: defaults,
// setters, Assign, corrections, and what the model reads of them. Most
// checks walk the property tables themselves, so that every row is covered.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "support/Exceptions.h"

namespace {

using mv::TmvPropertyTable;
using mv::WideString;

std::string Utf8(const WideString& text) { return mv::UTF8Encode(text); }

// The value of a scalar entry as its number.
int64_t ValueOf(const TmvPropertyTable& table, const mv::TmvPersistent& object, const mv::TmvPropertyLeaf& leaf) {
  return TmvPropertyTable::ParseValue(*leaf.Entry, table.GetText(object, leaf.Path));
}

// A value other than the present one, as text.
WideString OtherValue(const TmvPropertyTable& table, const mv::TmvPersistent& object,
                      const mv::TmvPropertyLeaf& leaf) {
  const mv::TmvPropertyEntry& entry = *leaf.Entry;
  if (entry.Type == mv::ptString) return table.GetText(object, leaf.Path) + u"x";
  const int64_t value = ValueOf(table, object, leaf);
  int64_t other = value + 1;
  switch (entry.Type) {
    case mv::ptBoolean: other = !value; break;
    case mv::ptEnumeration: other = (value + 1) % int64_t(entry.Enum->Members.size()); break;
    case mv::ptColor:
    case mv::ptSet: other = value ^ 1; break;
    default: break;
  }
  return TmvPropertyTable::ValueText(entry, other);
}

// Every property of `table` on `object` holds the table's default.
void ExpectDefaults(const TmvPropertyTable& table, const mv::TmvPersistent& object) {
  for (const mv::TmvPropertyLeaf& leaf : table.Leaves()) {
    SCOPED_TRACE(std::string(table.ClassName()) + "." + Utf8(leaf.Path));
    if (leaf.Entry->Type == mv::ptString)
      EXPECT_EQ(Utf8(table.GetText(object, leaf.Path)), Utf8(leaf.Entry->DefaultText));
    else
      EXPECT_EQ(ValueOf(table, object, leaf), leaf.Default);
  }
}

class OptionsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  OptionsTest() {
    builder->SetSyntaxProvider(provider.get());
    properties.GetOnUpdated().AddHandler(mv::TmvHandlerId::Unique(), [this](mv::TmvObject*) { ++updates; });
  }

  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  mv::TmvQueryBuilderProperties& properties = builder->Properties();
  const TmvPropertyTable& table = properties.PropertyTable();
  int updates = 0;
};

// Each option class, made on its own, and the builder with all its objects
// hold the defaults of their tables.
TEST_F(OptionsTest, EveryDefaultFollowsItsTable) {
  ExpectDefaults(table, properties);
  const std::function<void()> classes[] = {
      [] { mv::TmvOptionsView o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvDesignPaneOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvDatasourceOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvLinkOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvFieldsListBaseColumnOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvFieldsListMarkColumnOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvFieldsListNameColumnOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvFieldsListTypeColumnOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvFieldsListDescriptionColumnOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvFieldsListOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvSelectListOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvAddObjectFormOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvTreeOptions o; ExpectDefaults(o.PropertyTable(), o); },
      [] { mv::TmvMetadataTreeOptions o; ExpectDefaults(o.PropertyTable(), o); },
  };
  for (const auto& check : classes) check();
}

// The tables against the defaults that are easiest to get wrong.
TEST_F(OptionsTest, TrickyDefaults) {
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"BorderColor", "$00800000"},  // navy, not a system colour
      {u"Color", "$80000005"},
      {u"SubqueriesTabColor", "$1FFFFFFF"},
      {u"GridSize", "2"},
      {u"LinkPainterClassName", "TmvQueryBuilderLinkPainterAccess"},
      {u"FieldsListOptions.DescriptionColumnOptions.Visible", "False"},
      {u"FieldsListOptions.DescriptionColumnOptions.DrawOrder", "3"},
      {u"FieldsListOptions.MarkColumnOptions.Width", "10"},
      {u"FieldsListOptions.TypeColumnOptions.Margin", "3"},
      {u"FieldsListOptions.NameColumnOptions.PKFontStyle", "[fstBold]"},
      {u"SelectListOptions.UseCustomExpressionBuilder", "[mvColumnExpressions, mvColumnConditions]"},
      {u"SelectListOptions.SortOrderColumnWidth", "55"},
      {u"AddObjectFormOptions.Constraints.MinHeight", "342"},
      {u"TreeOptionsMetadata.DefaultExpandLevel", "-1"},
      {u"TreeOptions.UnionsNodeText", "UNIONS"},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(Utf8(table.GetText(properties, path)), expected) << Utf8(path);
  EXPECT_EQ(int(builder->AddObjectFormOptions().ListViewStyle()), 2);
  EXPECT_EQ(int(builder->AddObjectFormOptions().Position()), 6);
}

// Every setter stores a new value with one notice, and a value equal to the
// present one with none.
TEST_F(OptionsTest, SettersNotifyOnlyOnChange) {
  for (const mv::TmvPropertyLeaf& leaf : table.Leaves()) {
    SCOPED_TRACE(Utf8(leaf.Path));
    const WideString before = table.GetText(properties, leaf.Path);
    const WideString other = OtherValue(table, properties, leaf);
    updates = 0;
    table.SetText(properties, leaf.Path, other);
    const WideString after = table.GetText(properties, leaf.Path);
    if (leaf.Path != u"LinkPainterClassName") {
      EXPECT_EQ(Utf8(after), Utf8(other));
    }
    EXPECT_EQ(updates, after == before ? 0 : 1);
    updates = 0;
    table.SetText(properties, leaf.Path, after);
    EXPECT_EQ(updates, 0);
  }
}

// Assign copies every property, nested objects too, in one update.
TEST_F(OptionsTest, AssignCopiesEverythingInOneUpdate) {
  mv::TmvFieldsListOptions source, dest;
  const TmvPropertyTable& fields = source.PropertyTable();
  for (const mv::TmvPropertyLeaf& leaf : fields.Leaves())
    fields.SetText(source, leaf.Path, OtherValue(fields, source, leaf));
  int destUpdates = 0;
  dest.GetOnUpdated().AddHandler(mv::TmvHandlerId::Unique(), [&](mv::TmvObject*) { ++destUpdates; });
  dest.Assign(&source);
  EXPECT_EQ(destUpdates, 1);
  for (const mv::TmvPropertyLeaf& leaf : fields.Leaves())
    EXPECT_EQ(Utf8(fields.GetText(dest, leaf.Path)), Utf8(fields.GetText(source, leaf.Path))) << Utf8(leaf.Path);
  // A builder's setter of an option object assigns: the object stays.
  mv::TmvFieldsListOptions* held = &builder->FieldsListOptions();
  builder->SetFieldsListOptions(source);
  EXPECT_EQ(held, &builder->FieldsListOptions());
  EXPECT_EQ(held->SortType(), source.SortType());
  EXPECT_THROW(dest.Assign(&builder->LinkOptions()), mv::EConvertError);
}

TEST_F(OptionsTest, ColumnsAreOrderedByDrawOrder) {
  mv::TmvFieldsListOptions& fields = builder->FieldsListOptions();
  using Columns = std::vector<mv::TmvFieldsListBaseColumnOptions*>;
  mv::TmvFieldsListBaseColumnOptions* mark = &fields.MarkColumnOptions();
  mv::TmvFieldsListBaseColumnOptions* name = &fields.NameColumnOptions();
  mv::TmvFieldsListBaseColumnOptions* type = &fields.TypeColumnOptions();
  mv::TmvFieldsListBaseColumnOptions* description = &fields.DescriptionColumnOptions();
  EXPECT_EQ(fields.OrderedColumns(), (Columns{mark, name, type, description}));
  mark->SetDrawOrder(5);
  description->SetDrawOrder(0);
  EXPECT_EQ(fields.OrderedColumns(), (Columns{description, name, type, mark}));
}

// Corrections and the values that live elsewhere.
TEST_F(OptionsTest, CorrectionsAndPassThroughs) {
  builder->SetGridSize(500);
  EXPECT_EQ(builder->GridSize(), 100);
  builder->SetGridSize(-3);
  EXPECT_EQ(builder->GridSize(), 0);
  builder->SetLinkPainterClassName(u"tmvquerybuilderlinkpaintersimple");
  EXPECT_EQ(Utf8(builder->LinkPainterClassName()), "TmvQueryBuilderLinkPainterSimple");
  builder->SetLinkPainterClassName(u"TNoSuchPainter");
  EXPECT_EQ(Utf8(builder->LinkPainterClassName()), "TmvQueryBuilderLinkPainterAccess");

  builder->SetDefaultTableWidth(200);
  EXPECT_EQ(builder->DatasourceOptions().DefaultTableWidth(), 200);
  builder->SetColumnWidthExpression(120);
  EXPECT_EQ(builder->SelectListOptions().ExpressionColumnWidth(), 120);

  properties.SetUseCustomExpressionBuilder(false);
  EXPECT_TRUE(builder->SelectListOptions().UseCustomExpressionBuilder().Empty());
  EXPECT_FALSE(builder->UseCustomExpressionBuilder);
  builder->SelectListOptions().SetUseCustomExpressionBuilder({mv::mvColumnConditions});
  EXPECT_TRUE(properties.UseCustomExpressionBuilder());
  EXPECT_TRUE(builder->UseCustomExpressionBuilder);

  // The model reads its options from the option objects.
  builder->LinkOptions().SetCreateLinksFromRelations(false);
  builder->SelectListOptions().SetUseMSStyleGrouping(true);
  builder->FieldsListOptions().SetSortType(mv::flsName);
  EXPECT_FALSE(builder->Options.CreateLinksFromRelations);
  EXPECT_TRUE(builder->Options.UseMSStyleGrouping);
  EXPECT_EQ(builder->Options.SortType, mv::flsName);

  // Settings of the SQL builders go to the context's builders.
  table.SetText(properties, u"QuoteAllIdentifiers", u"True");
  table.SetText(properties, u"OuterKeywordInLinks", u"skPrintAlways");
  EXPECT_EQ(builder->SQLContext()->SQLBuilderExpression().QuoteIdentifiers(), mv::icAll);
  EXPECT_EQ(builder->SQLContext()->SQLBuilderExpression().OuterKeywordInLinks(), mv::skPrintAlways);
}

// Text forms of colours and sets, and the errors that name the property.
TEST_F(OptionsTest, ValuesAsText) {
  const std::pair<const char16_t*, const char*> colours[] = {
      {u"$00FF0000", "$00FF0000"}, {u"0x80000005", "$80000005"}, {u"255", "$000000FF"}, {u"-2147483643", "$80000005"}};
  for (const auto& [text, expected] : colours) {
    table.SetText(properties, u"Color", text);
    EXPECT_EQ(Utf8(table.GetText(properties, u"Color")), expected) << Utf8(text);
  }
  table.SetText(properties, u"SelectListOptions.DisableDirectEditingIn", u"[mvColumnConditions, 0]");
  EXPECT_EQ(builder->SelectListOptions().DisableDirectEditingIn().Bits(), 3u);
  table.SetText(properties, u"SelectListOptions.DisableDirectEditingIn", u"[]");
  EXPECT_TRUE(builder->SelectListOptions().DisableDirectEditingIn().Empty());

  const std::pair<const char16_t*, const char16_t*> bad[] = {
      {u"Color", u"$123456789"}, {u"Color", u"red"}, {u"SelectListOptions.DisableDirectEditingIn", u"[mvColumnX]"},
      {u"BorderStyle", u"qbbsRound"}, {u"GridSize", u"ten"}};
  for (const auto& [path, value] : bad) {
    try {
      table.SetText(properties, path, value);
      ADD_FAILURE() << "no error for " << Utf8(path) << "=" << Utf8(value);
    } catch (const mv::EConvertError& e) {
      EXPECT_NE(Utf8(e.Message()).find(Utf8(path)), std::string::npos) << Utf8(e.Message());
    }
  }
  EXPECT_THROW(table.SetText(properties, u"NoSuchOption", u"1"), mv::EmvQueryBuilderError);
}

}  // namespace
