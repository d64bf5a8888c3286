// The query builder as a host uses it: text in, model, text out, and the
// events around each change.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/MainThread.h"

namespace {

using mv::UTF8Decode;
using mv::UTF8Encode;

class QueryBuilderTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  QueryBuilderTest() {
    builder->SetSyntaxProvider(provider.get());
    builder->OnSQLUpdated = [this](mv::TmvQueryModelHost*) { events.push_back("updated"); };
    builder->OnSleep = [this](mv::TmvQueryBuilder*) { events.push_back("sleep"); };
    builder->OnWake = [this](mv::TmvQueryBuilder*) { events.push_back("wake"); };
  }
  ~QueryBuilderTest() override { mv::MainThreadDispatcher().ProcessPending(); }

  void Set(const std::string& sql) { builder->SetSql(UTF8Decode(sql)); }
  // Lower case: the case of printed keywords is the SQL builder's business.
  std::string Sql() { return Lower(UTF8Encode(builder->GetSql())); }
  static std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
  }
  int Count(const std::string& event) const { return static_cast<int>(std::count(events.begin(), events.end(), event)); }
  void AddTable(const char16_t* name, std::initializer_list<const char16_t*> fields) {
    mv::TmvMetadataTable* table = builder->MetadataContainer()->AddTable(name);
    for (const char16_t* field : fields) table->GetFields()->AddField(field);
  }

  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  std::vector<std::string> events;
};

// Text that prints as the model does changes nothing: no event, no reload.
TEST_F(QueryBuilderTest, EqualTextChangesNothing) {
  Set("SELECT a.x, b.y FROM a INNER JOIN b ON a.id = b.id WHERE a.x > 1");
  std::string text = Sql();
  mv::TmvDatasourceBase* first = builder->Query()->FirstSelect()->Datasources()->Items(0);
  events.clear();
  for (const std::string& same : {text, std::string("select  a.x,b.y from a inner join b on a.id = b.id where a.x>1")})
    Set(same);
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(builder->Query()->FirstSelect()->Datasources()->Items(0), first);
  Set(text + " AND a.x < 9");
  EXPECT_EQ(Count("updated"), 1);
}

TEST_F(QueryBuilderTest, EmptyTextIsTheClearedQuery) {
  for (const char* text : {"", "   ", "\r\n\t"}) {
    Set("SELECT x FROM t");
    events.clear();
    Set(text);
    EXPECT_EQ(Sql(), "") << "[" << text << "]";
    EXPECT_EQ(Count("sleep"), 0);
    EXPECT_EQ(builder->Query()->UnionSubQueries().size(), 1u);
  }
  builder->Clear();
  EXPECT_EQ(Sql(), "");
}

// A text that is not a SELECT sleeps: held unchanged and given back.
TEST_F(QueryBuilderTest, SleepModeHoldsOtherStatements) {
  Set("SELECT x FROM t");
  const std::string insert = "INSERT INTO t VALUES (1)";
  Set(insert);
  Set(insert);
  EXPECT_EQ(UTF8Encode(builder->GetSql()), insert);
  EXPECT_EQ(Count("sleep"), 1);
  EXPECT_TRUE(builder->SleepMode());
  EXPECT_EQ(builder->Query()->FirstSelect()->Datasources()->Count(), 0);
  // Waking comes before the parse; a failed parse leaves it awake and empty.
  std::vector<std::string> errors;
  builder->OnSQLError = [&](mv::TmvQueryBuilder*, const mv::WideString&, const mv::WideString& error,
                            const mv::WideString&, int, int) { errors.push_back(UTF8Encode(error)); };
  Set("SELECT FROM WHERE");
  EXPECT_EQ(events.back(), "wake");
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_FALSE(builder->SleepMode());
  EXPECT_EQ(Sql(), "");
  // The same statement sleeps again, and clears what was loaded meanwhile.
  Set("SELECT x FROM t");
  Set(insert);
  EXPECT_EQ(UTF8Encode(builder->GetSql()), insert);
  EXPECT_EQ(builder->Query()->FirstSelect()->Datasources()->Count(), 0);
}

TEST_F(QueryBuilderTest, WithoutSleepModeOtherStatementsFail) {
  builder->AllowSleepMode = false;
  EXPECT_THROW(Set("INSERT INTO t VALUES (1)"), mv::EmvSQLError);
  EXPECT_EQ(Count("sleep"), 0);
}

// A refused change on the pane while asleep is undone later by a silent clear.
TEST_F(QueryBuilderTest, RefusedWakeKeepsTheSleepingText) {
  Set("DELETE FROM t");
  builder->OnWakeQuery = [](mv::TmvQueryBuilder*, bool& allow) { allow = false; };
  builder->Query()->FirstSelect()->AddObject(u"t", u"");
  EXPECT_TRUE(builder->IsSilentClearPosted());
  EXPECT_EQ(Sql(), "delete from t");
  mv::MainThreadDispatcher().ProcessPending();
  EXPECT_EQ(builder->Query()->FirstSelect()->Datasources()->Count(), 0);
  EXPECT_EQ(Sql(), "delete from t");
  // Allowed, the change wakes the builder.
  builder->OnWakeQuery = nullptr;
  builder->Query()->FirstSelect()->AddObject(u"t", u"");
  EXPECT_FALSE(builder->SleepMode());
  EXPECT_EQ(Sql(), "select * from t");
}

TEST_F(QueryBuilderTest, NestedUpdatesGiveOneEvent) {
  mv::TmvUnionSubQuery* select = builder->Query()->FirstSelect();
  for (int i = 0; i < 3; ++i) {
    builder->BeginUpdate();
    select->AddObject(u"t" + mv::IntToWide(i), u"");
  }
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Count("updated"), 0);
    builder->EndUpdate();
  }
  EXPECT_EQ(Count("updated"), 1);
  EXPECT_EQ(Sql(), "select * from t0, t1, t2");
}

// Stored-form loading: changes meanwhile give one event, from Loaded.
TEST_F(QueryBuilderTest, LoadingFiresOnceFromLoaded) {
  builder->BeginLoading();
  Set("SELECT x FROM t");
  Set("SELECT y FROM t");
  EXPECT_EQ(Count("updated"), 0);
  builder->Loaded();
  EXPECT_EQ(Count("updated"), 1);
}

// The statement of the trace: the model's rows, and the text that comes back.
TEST_F(QueryBuilderTest, TraceQueryGoesRound) {
  Set("SELECT a.x, COUNT(*) FROM a LEFT JOIN b ON a.id = b.id WHERE a.y > 1 GROUP BY a.x ORDER BY 2 DESC");
  EXPECT_EQ(Sql(),
            "select a.x, count(*) from a left join b on a.id = b.id where a.y > 1 group by a.x order by 2 desc");
  mv::TmvSelectList* rows = builder->Query()->FirstSelect()->SelectList();
  // Four rows and the grid's empty one.
  ASSERT_EQ(rows->Count(), 5);
  EXPECT_EQ(UTF8Encode(rows->Items(4)->GetExpressionString()), "");
  struct Row {
    const char* expression;
    bool selected;
    mv::TmvConditionsType type;
  } const expected[] = {{"a.x", true, mv::ctWhere}, {"*", true, mv::ctHaving}, {"a.y", false, mv::ctWhere},
                        {"2", false, mv::ctWhere}};
  for (int i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(UTF8Encode(rows->Items(i)->GetExpressionString()), expected[i].expression);
    EXPECT_EQ(rows->Items(i)->Select(), expected[i].selected);
    if (i < 3) {
      EXPECT_EQ(rows->Items(i)->ConditionsType(), expected[i].type);
    }
  }
  EXPECT_EQ(UTF8Encode(rows->Items(1)->GetAggregateString()), "COUNT");
  EXPECT_TRUE(rows->Items(0)->Grouping());
  EXPECT_EQ(rows->Items(3)->SortType(), mv::stDesc);
}

// What the model has no place for stays on its node and comes back.
TEST_F(QueryBuilderTest, KeptClausesSurviveEdits) {
  Set("SELECT DISTINCT x FROM t UNION ALL SELECT y FROM u ORDER BY 1");
  mv::TmvUnionSubQuery* second = builder->Query()->UnionSubQueries().at(1);
  second->AddObject(u"v", u"");
  builder->Query()->FirstSelect()->AddObject(u"w", u"");
  EXPECT_EQ(Sql(), "select distinct x from t, w union all select y from u, v order by 1");
  // One member replaced keeps its operator and flag.
  second->SetSql(u"SELECT z FROM s");
  EXPECT_EQ(Sql(), "select distinct x from t, w union all select z from s order by 1");
}

TEST_F(QueryBuilderTest, UnknownObjectsAndMissingProvider) {
  AddTable(u"known", {u"id"});
  builder->ParsingErrorOnUnknownObjects = true;
  Set("SELECT id FROM known");
  try {
    Set("SELECT * FROM nosuch");
    FAIL() << "no error";
  } catch (const mv::EmvSQLError& error) {
    EXPECT_EQ(UTF8Encode(error.Message()), "Unknown object name: \"nosuch\"");
  }
  EXPECT_EQ(Sql(), "select known.id from known");
  std::string reported;
  builder->OnSQLError = [&](mv::TmvQueryBuilder*, const mv::WideString&, const mv::WideString& error,
                            const mv::WideString&, int, int) { reported = UTF8Encode(error); };
  Set("SELECT * FROM nosuch");
  EXPECT_EQ(reported, "Unknown object name: \"nosuch\"");
  EXPECT_EQ(Sql(), "select known.id from known");

  mv::TmvOwned<mv::TmvQueryBuilder> bare = mv::TmvCreate<mv::TmvQueryBuilder>();
  for (auto call : {+[](mv::TmvQueryBuilder* b) { b->ParseSQL(u"SELECT 1"); },
                    +[](mv::TmvQueryBuilder* b) { b->RefreshMetadata(); }}) {
    try {
      call(bare.get());
      ADD_FAILURE() << "no error";
    } catch (const mv::Exception& error) {
      EXPECT_EQ(UTF8Encode(error.Message()), "Syntax provider is not specified");
    }
  }
  bare->SetSyntaxProvider(provider.get());
  try {
    bare->RefreshMetadata();
    ADD_FAILURE() << "no error";
  } catch (const mv::Exception& error) {
    EXPECT_EQ(UTF8Encode(error.Message()), "Metadata provider is not specified");
  }
}

// The parameters come from the result tree, which a read generates.
TEST_F(QueryBuilderTest, ParametersFollowTheText) {
  Set("SELECT x FROM t WHERE x = :p1 AND y > ?");
  mv::TmvParametersList& parameters = builder->ParametersList();
  ASSERT_EQ(parameters.GetCount(), 2);
  EXPECT_EQ(UTF8Encode(parameters.GetItem(0).GetFullName()), ":p1");
  EXPECT_EQ(UTF8Encode(parameters.GetItem(1).GetFullName()), "?");
  builder->Query()->FirstSelect()->SelectList()->Items(1)->SetConditionString(0, u"= :p2");
  EXPECT_FALSE(builder->IsResultQueryASTGenerated());
  ASSERT_EQ(parameters.GetCount(), 2);
  EXPECT_TRUE(builder->IsResultQueryASTGenerated());
  EXPECT_EQ(UTF8Encode(parameters.GetItem(1).GetFullName()), ":p2");
}

// Each part as text, and the active parts as they follow the text.
TEST_F(QueryBuilderTest, ActivePartsAndTheirText) {
  Set("SELECT x FROM (SELECT y FROM u) q UNION SELECT z FROM v");
  EXPECT_EQ(builder->ActiveSubQuery(), builder->Query());
  EXPECT_EQ(Lower(UTF8Encode(builder->GetActivePartSQL(mv::mvqpQuery))),
            "select x from (select y from u) q union select z from v");
  mv::TmvSubQuery* derived = builder->SubQueries().at(1);
  std::vector<std::string> changes;
  builder->OnActiveSubQueryChanged = [&](mv::TmvQueryModelHost*, mv::TmvSubQuery* s) {
    changes.push_back(UTF8Encode(s->GetCaption()));
  };
  builder->SetActiveSubQuery(derived);
  EXPECT_EQ(changes, std::vector<std::string>{"q"});
  EXPECT_EQ(Lower(UTF8Encode(builder->GetActivePartSQL(mv::mvqpSubQuery))), "select y from u");
  builder->Query()->SetActiveUnionSubquery(builder->Query()->UnionSubQueries().at(1));
  builder->SetActiveSubQuery(builder->Query());
  EXPECT_EQ(Lower(UTF8Encode(builder->GetActivePartSQL(mv::mvqpUnionSubQuery))), "select z from v");
  // Tabs by part: the active sub-query's parents and children only.
  builder->FilterTabsByCurrentQueryPart = mv::mvqpUnionSubQuery;
  EXPECT_EQ(builder->VisibleSubQueries(), std::vector<mv::TmvSubQuery*>{builder->Query()});
  builder->Query()->SetActiveUnionSubquery(builder->Query()->FirstSelect());
  EXPECT_EQ(builder->VisibleSubQueries(), (std::vector<mv::TmvSubQuery*>{builder->Query(), derived}));
  // New text makes the main query active again.
  builder->SetActiveSubQuery(derived);
  Set("SELECT 1");
  EXPECT_EQ(builder->ActiveSubQuery(), builder->Query());
}

// Settings of the builders reach the text.
TEST_F(QueryBuilderTest, BuilderSettingsChangeTheText) {
  Set("SELECT t.x FROM t LEFT JOIN u ON t.id = u.id");
  builder->SetOuterKeywordInLinks(mv::skSkipIfPossible);
  EXPECT_EQ(Sql(), "select t.x from t left join u on t.id = u.id");
  builder->SetQuoteAllIdentifiers(true);
  EXPECT_TRUE(builder->GetQuoteAllIdentifiers());
  EXPECT_EQ(Sql(), "select \"t\".\"x\" from \"t\" left join \"u\" on \"t\".\"id\" = \"u\".\"id\"");
}

TEST_F(QueryBuilderTest, MetadataNamesAndVisibility) {
  AddTable(u"orders", {u"id"});
  AddTable(u"secret", {u"id"});
  builder->MetadataContainer()->AddView(u"recent");
  builder->OnFilterTable = [](mv::TmvQueryBuilder*, const mv::WideString& name, bool& visible) {
    visible = name != u"secret";
  };
  std::vector<mv::TmvNamedObject> tables = builder->GetTableNames();
  ASSERT_EQ(tables.size(), 1u);
  EXPECT_EQ(UTF8Encode(tables[0].Name), "orders");
  EXPECT_EQ(builder->GetViewNames().size(), 1u);
  EXPECT_TRUE(builder->IsNameOfTable(u"orders"));
  EXPECT_FALSE(builder->IsNameOfTable(u"recent"));
  EXPECT_TRUE(builder->IsNameOfView(u"recent"));
}

}  // namespace

namespace {

// Controls handed to the builder are freed by the deferred call, not at once,
// and not while in use.
class CountingFactory : public mv::ImvControlFactory {
 public:
  struct Control : mv::ImvControl {
    void UpdateControlVisualParams(mv::TmvQueryBuilderControlOwner*) override {}
  };
  mv::ImvControl* CreateControl(mv::TmvQueryBuilderControlOwner*, int) override { return nullptr; }
  void ShowControl(mv::ImvControl*, bool) override {}
  void DestroyControl(mv::ImvControl* control) override {
    ++destroyed;
    delete control;
  }
  int destroyed = 0;
};

TEST_F(QueryBuilderTest, WaitingControlsAreFreedByTheDeferredCall) {
  CountingFactory factory;
  builder->SetControlFactory(&factory);
  auto* used = new CountingFactory::Control;
  auto* idle = new CountingFactory::Control;
  builder->PreventInternalControlDestroying(used);
  builder->DestroyInternalControl(used);
  builder->DestroyInternalControl(idle);
  EXPECT_TRUE(builder->IsDestroyContainedControlsMsgPosted());
  EXPECT_EQ(factory.destroyed, 0);
  mv::MainThreadDispatcher().ProcessPending();
  EXPECT_EQ(factory.destroyed, 1);
  builder->AllowInternalControlDestroying(used);
  mv::MainThreadDispatcher().ProcessPending();
  EXPECT_EQ(factory.destroyed, 2);
  builder->SetControlFactory(nullptr);
}

}  // namespace
