// The load metadata wizard walked page by page: its checks, the pages it
// skips, the log of a load, and what reaches the target container and file.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "ChinookLoader.h"
#include "ScriptedServer.h"
#include "Thrown.h"
#include "component/MetadataLoadWizard.h"
#include "metadata/EventMetadataProvider.h"

namespace {

using namespace mv;
using W = TmvMetadataLoadWizard;

class MetadataLoadWizardTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  TmvOwned<TmvBaseSQLContext> context = TmvCreate<TmvBaseSQLContext>();
  TmvOwned<TmvMetadataContainer> target = TmvCreate<TmvMetadataContainer>(nullptr, context.get());
  W wizard{*target};
};

TEST_F(MetadataLoadWizardTest, WalksChinookPageByPage) {
  MV_REQUIRE_CHINOOK();
  const std::string xml = (std::filesystem::temp_directory_path() / "wizard59-chinook").string();
  // Each row: an action, then Next; the page it ends on and the refusal, if any.
  struct Row {
    std::function<void()> action;
    W::Page page;
    const char16_t* refusal;
  } rows[] = {
      {[] {}, W::tsSyntax, nullptr},
      {[] {}, W::tsSyntax, u"Please select Syntax Provider to proceed."},
      {[&] { ASSERT_TRUE(wizard.ChooseSyntaxProvider("TmvSQLiteSyntaxProvider")); }, W::tsMetadata, nullptr},
      {[] {}, W::tsMetadata, u"Please select Connection Type to proceed."},
      {[&] { ASSERT_TRUE(wizard.ChooseConnectionType("TmvConnectionMetadataProvider")); }, W::tsMetadataOpts, nullptr},
      {[&] { wizard.Frame()->SetConnectionText(u"/nonexistent/none.sqlite"); }, W::tsMetadataOpts,
       u"Can not connect to Database. Error message:\r\n"},
      {[&] { wizard.Frame()->SetConnectionText(UTF8Decode(mvtest::ChinookSqlitePath())); }, W::tsLoadOpts, nullptr},
      {[&] { wizard.Databases().front().Checked = false; }, W::tsLoadOpts,
       u"You must select one or more databases to load metadata from!"},
      {[&] { wizard.Databases().front().Checked = true; }, W::tsFilter, nullptr},
      {[&] {
         wizard.AddFilterItem();
         wizard.ClearFilterItems();  // an emptied list loads everything
         wizard.SetDontLoadSystemObjects(true);
       },
       W::tsSaveToFile, nullptr},
      {[] {}, W::tsSaveToFile, u"You must specify File Name to save metadata!"},
  };
  for (const Row& row : rows) {
    row.action();
    const WideString refusal = row.refusal ? mvtest::ThrownMessage([&] { wizard.Next(); }) : WideString();
    if (!row.refusal) wizard.Next();
    EXPECT_EQ(wizard.CurrentPage(), row.page) << UTF8Encode(W::PageTitle(row.page));
    if (row.refusal) {
      EXPECT_EQ(refusal.substr(0, WideStringView(row.refusal).size()), row.refusal);
    }
  }
  EXPECT_TRUE(wizard.LoadShown());
  wizard.SetFileName(UTF8Decode(xml));
  wizard.Next();  // Load
  EXPECT_EQ(wizard.CurrentPage(), W::tsLoading);
  EXPECT_TRUE(wizard.Finished());
  const std::vector<WideString>& log = wizard.Log();
  ASSERT_GE(log.size(), 6u);
  EXPECT_EQ(log[0], u"Loading metadata from default database...");
  EXPECT_EQ(log[1], u"Loading metadata object list...success");
  EXPECT_EQ(log[2], u"Loading metadata relation list...success");
  EXPECT_EQ(log[4], u"11 objects found...");
  EXPECT_EQ(log.back(), u"Loading completed successfully...");
  ASSERT_EQ(target->Count(), 11);
  TmvMetadataObject* track = nullptr;  // the target's context has no dialect to read a name with
  for (int i = 0; i < target->Count(); ++i)
    if (target->Items(i)->NameStrNotQuoted() == u"Track") track = target->Items(i);
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->GetFields()->Count(), 9);
  // Relations sit with the key side: InvoiceLine and PlaylistTrack refer to Track.
  EXPECT_EQ(track->GetRelations()->Count(), 2);
  // The file holds the same objects.
  TmvOwned<TmvMetadataContainer> reread = TmvCreate<TmvMetadataContainer>(nullptr, context.get());
  reread->LoadFromXMLFile(UTF8Decode(xml));
  EXPECT_EQ(reread->Count(), 11);
  std::filesystem::remove(xml);
}

TEST_F(MetadataLoadWizardTest, FailingRelationsAreLoggedAndFieldsStillLoad) {
  wizard.SetSaveToFile(false);
  wizard.SetClearBeforeLoading(true);
  target->AddTable(u"", u"stale", false);
  wizard.Next();
  ASSERT_TRUE(wizard.ChooseSyntaxProvider("TmvSQL92SyntaxProvider"));
  wizard.Next();
  ASSERT_TRUE(wizard.ChooseConnectionType("TmvEventMetadataProvider"));
  EXPECT_FALSE(wizard.PageEnabled(W::tsMetadataOpts));  // no frame
  auto* events = static_cast<TmvEventMetadataProvider*>(wizard.MetadataProvider());
  events->OnGetTables = [](TmvObject*, TSQLDatabaseObjectsList& names) {
    names.CreateSQLDatabaseObject()->AddName(u"t", false);
  };
  events->OnGetSystemTables = [](TmvObject*, TSQLDatabaseObjectsList& names) {
    names.CreateSQLDatabaseObject()->AddName(u"sys_t", false);
  };
  events->OnGetTableRelations = [](TmvObject*, const TSQLQualifiedName&, TSQLMetadataRelations&) {
    throw EmvQueryBuilderError(u"relations refused");
  };
  events->OnLoadObjectMetadata = [](TmvObject*, TmvBaseSQLContext*, TmvMetadataObject* object) {
    object->GetFields()->AddField(u"id");
  };
  wizard.Next();
  // No list and no name from the server: the default database alone, checked.
  ASSERT_EQ(wizard.CurrentPage(), W::tsLoadOpts);
  ASSERT_EQ(wizard.Databases().size(), 1u);
  EXPECT_TRUE(wizard.Databases()[0].Checked);
  EXPECT_EQ(wizard.Databases()[0].Caption, u"(current database)");
  wizard.Next();
  EXPECT_EQ(wizard.CurrentPage(), W::tsFilter);
  EXPECT_TRUE(wizard.LoadShown());  // the save page is off
  wizard.SetDontLoadSystemObjects(true);
  wizard.Next();
  const std::vector<WideString> expected = {
      u"Loading metadata from default database...",
      u"Loading metadata object list...success",
      u"Loading metadata relation list...Loading FAILED. Error message: ",
      u"Loading custom aggregate list...success",
      u"1 objects found...",  // sys_t dropped
      u"Loading fields list for object t...success",
      u"Writing metadata to MetadataContainer...",
      u"Loading completed successfully...",
  };
  std::string all;
  for (const WideString& line : wizard.Log()) all += UTF8Encode(line) + "\n";
  ASSERT_EQ(wizard.Log().size(), expected.size()) << all;
  for (size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(wizard.Log()[i].substr(0, expected[i].size()), expected[i]) << i;
  EXPECT_NE(wizard.Log()[2].find(u"relations refused"), WideString::npos);
  ASSERT_EQ(target->Count(), 1);  // the stale table went first
  EXPECT_FALSE(target->Items(0)->System());
  EXPECT_EQ(target->Items(0)->GetFields()->Count(), 1);
}

TEST_F(MetadataLoadWizardTest, DatabasePageOnlyForProvidersWithDatabases) {
  const struct Row {
    const char* provider;
    W::Page after;
  } rows[] = {{"TmvSQLiteSyntaxProvider", W::tsLoadOpts},
              {"TmvFirebirdSyntaxProvider", W::tsFilter},
              {"TmvOracleSyntaxProvider", W::tsFilter}};
  for (const Row& row : rows) {
    mvtest::ScriptedServer server;
    W walk(*target);
    walk.Next();
    ASSERT_TRUE(walk.ChooseSyntaxProvider(row.provider));
    walk.Next();
    ASSERT_TRUE(walk.ChooseConnectionType("TmvConnectionMetadataProvider"));
    walk.Next();
    walk.Frame()->SetHostConnection(&server);
    walk.Next();
    EXPECT_EQ(walk.CurrentPage(), row.after) << row.provider;
    walk.Back();
    EXPECT_EQ(walk.CurrentPage(), W::tsMetadataOpts) << row.provider;
  }
}

TEST(MetadataLoadWizardText, FilterItemLines) {
  TmvMetadataFilter filter;
  struct Row {
    bool exclude;
    const char16_t* schema;
    const char16_t* object;
    TmvMetadataFilterApplyForSet kinds;
    const char16_t* text;
  } rows[] = {
      {false, u"%", u"%", kMetadataFilterAllKinds, u"+ %.% (All)"},
      {true, u"", u"", MetadataFilterKindBit(mfTables), u"- % (T)"},
      {false, u"dbo", u"a_%", MetadataFilterKindBit(mfViews) | MetadataFilterKindBit(mfSynonyms), u"+ dbo.a_% (V,S)"},
  };
  for (const Row& row : rows) {
    TmvMetadataFilterItem* item = filter.Add();
    item->SetExclude(row.exclude);
    item->SetSchemaMask(row.schema);
    item->SetObjectMask(row.object);
    item->SetApplyFor(row.kinds);
    EXPECT_EQ(W::FilterItemText(*item), row.text);
  }
}

}  // namespace
