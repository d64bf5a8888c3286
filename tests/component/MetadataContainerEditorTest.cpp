// The metadata container editor: the tree under its tool buttons, the
// property panes, deletion with its confirmation, file names, OK and Cancel.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "component/MetadataContainerEditor.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"

namespace {

using namespace mv;
using E = TmvMetadataContainerEditor;

void Outline(const std::vector<std::unique_ptr<E::Node>>& nodes, std::vector<std::string>& lines,
             const std::string& indent = "") {
  for (const auto& node : nodes) {
    lines.push_back(indent + UTF8Encode(node->Text));
    Outline(node->Children, lines, indent + "  ");
  }
}

class MetadataContainerEditorTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  MetadataContainerEditorTest() {
    context->SetSyntaxProvider(provider.get());
    TmvMetadataTable* orders = caller->AddTable(u"sales", u"orders", false);
    orders->GetFields()->AddField(u"id");
    caller->AddView(u"sales", u"big", false);
    caller->AddTable(u"sys", u"cat", true);
    caller->SetLoaded(true);
  }
  ~MetadataContainerEditorTest() override {
    caller.reset();
    context->SetSyntaxProvider(nullptr);
  }
  std::vector<std::string> Tree(const E& editor) {
    std::vector<std::string> lines;
    Outline(editor.Tree(), lines);
    return lines;
  }

  TmvOwned<TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  TmvOwned<TmvBaseSQLContext> context = TmvCreate<TmvBaseSQLContext>();
  TmvOwned<TmvMetadataContainer> caller = TmvCreate<TmvMetadataContainer>(nullptr, context.get());
};

TEST_F(MetadataContainerEditorTest, ToolButtonsFilterTheTree) {
  E editor(*caller, false, nullptr);
  struct Row {
    E::Tool tool;
    bool down;
    std::vector<std::string> tree;
  } rows[] = {
      {E::sbUserObjects, true, {"sales", "  orders", "    Fields", "      id", "  big"}},
      {E::sbSystemObjects, true, {"sales", "  orders", "    Fields", "      id", "  big", "sys", "  cat"}},
      {E::sbTables, false, {"sales", "  big"}},
      {E::sbUserObjects, false, {}},
  };
  for (const Row& row : rows) {
    editor.SetToolDown(row.tool, row.down);
    EXPECT_EQ(Tree(editor), row.tree) << row.tool;
  }
}

TEST_F(MetadataContainerEditorTest, PanesSaveWhenLeftAndOnlyOkReachesTheCaller) {
  {
    E editor(*caller, false, nullptr);
    editor.Select(editor.FindNode(u"sales/orders/Fields"));
    EXPECT_EQ(editor.CurrentPane(), E::pNone);
    editor.Select(editor.FindNode(u"sales/orders"));
    ASSERT_EQ(editor.CurrentPane(), E::pObjectProps);
    EXPECT_EQ(editor.ObjectPane().Type, u"Table");
    EXPECT_EQ(editor.ObjectPane().Schema, u"sales");
    editor.ObjectPane().AltName = u"Orders";
    editor.ObjectPane().ShortDescription = u"all orders";
    editor.PaneChanged();
    editor.Select(editor.FindNode(u"sales/orders/Fields/id"));
    ASSERT_EQ(editor.CurrentPane(), E::pFieldProps);
    EXPECT_EQ(editor.Container().FindTableByName(u"orders", u"sales")->AltName(), u"Orders");
    editor.FieldPane().Name = u"order_id";
    editor.PaneChanged();
    editor.Select(nullptr);
    EXPECT_NE(editor.FindNode(u"sales/orders/Fields/order_id"), nullptr);
    // Closed without OK: the caller keeps its own.
  }
  EXPECT_EQ(caller->FindTableByName(u"orders", u"sales")->AltName(), u"");
  E editor(*caller, true, nullptr);
  editor.Select(editor.FindNode(u"sales/big"));
  EXPECT_EQ(editor.ObjectPane().Type, u"View");
  editor.ObjectPane().Visible = false;
  editor.PaneChanged();
  editor.Ok();  // saves the pane first
  EXPECT_FALSE(caller->FindViewByName(u"big", u"sales")->Visible());
}

TEST_F(MetadataContainerEditorTest, DeleteAsksOnlyForTheFirstNode) {
  E editor(*caller, false, nullptr);
  std::vector<std::string> asked;
  bool answer = false;
  editor.OnConfirm = [&](WideStringView question) {
    asked.push_back(UTF8Encode(question));
    return answer;
  };
  editor.Select(editor.FindNode(u"sales/orders/Fields/id"));
  editor.DeleteSelected();  // a field goes without a question
  EXPECT_TRUE(asked.empty());
  EXPECT_EQ(editor.Container().FindTableByName(u"orders", u"sales")->GetFields()->Count(), 0);
  EXPECT_EQ(editor.Selected(), editor.FindNode(u"sales/orders/Fields"));  // the neighbour, else the parent
  editor.Select(editor.FindNode(u"sales/big"));
  editor.DeleteSelected();
  EXPECT_EQ(editor.Container().Count(), 2);
  EXPECT_EQ(editor.Selected(), editor.FindNode(u"sales/orders"));
  editor.Select(editor.FindNode(u"sales"));
  editor.DeleteSelected();  // no
  EXPECT_EQ(editor.Container().Count(), 2);
  answer = true;
  editor.DeleteSelected();
  EXPECT_EQ(asked, (std::vector<std::string>{"Clear Metadata Container?", "Clear Metadata Container?"}));
  EXPECT_EQ(editor.Container().Count(), 0);
  EXPECT_TRUE(editor.Tree().empty());
  EXPECT_EQ(caller->Count(), 3);
}

TEST(MetadataContainerEditorFiles, XMLFileName) {
  struct Row {
    const char16_t* name;
    bool xmlFilter;
    const char16_t* result;
  } rows[] = {
      {u"meta", true, u"meta.xml"},
      {u"meta.XML", true, u"meta.XML"},
      {u"meta.xmlx", true, u"meta.xmlx.xml"},
      {u"meta", false, u"meta"},
  };
  for (const Row& row : rows) EXPECT_EQ(E::XMLFileName(row.name, row.xmlFilter), row.result);
}

}  // namespace
