// The interface a host's own expression editor gets: what the cell's row
// refers to, the way back into the row, and what remains once the row is gone.
#include <gtest/gtest.h>

#include <string>

#include "ReferenceDialect.h"
#include "Thrown.h"
#include "component/ExpressionBuilderParams.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "support/MainThread.h"

namespace {

using namespace mv;

class ExpressionBuilderParamsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  ExpressionBuilderParamsTest() {
    builder->SetSyntaxProvider(provider.get());
    TmvMetadataTable* orders = builder->MetadataContainer()->AddTable(u"orders");
    for (const char16_t* field : {u"id", u"total"}) orders->GetFields()->AddField(field);
    builder->SetSql(u"SELECT o.id, Sum(o.total) AS s, 1 AS one FROM orders o WHERE o.id > 1 GROUP BY o.id "
                    u"HAVING Sum(o.total) > 5");
  }
  ~ExpressionBuilderParamsTest() override { MainThreadDispatcher().ProcessPending(); }

  TmvSelectItem* Row(int index) const { return builder->Query()->FirstSelect()->SelectList()->Items(index); }
  std::shared_ptr<ImvExpressionBuilderParams> Params(int row, int condition) {
    return TmvExpressionBuilderParams::Create(builder.get(), Row(row), condition, 10, 20, 300, 18,
                                              u"old text", {u"o.id", u"o.total"});
  }
  std::string Sql() { return UTF8Encode(builder->GetSql()); }

  TmvOwned<TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
  TmvOwned<TmvQueryBuilder> builder = TmvCreate<TmvQueryBuilder>();
};

}  // namespace

TEST_F(ExpressionBuilderParamsTest, KindAndWhatTheRowRefersTo) {
  struct Case {
    int row;
    int condition;
    TmvExpressionBuilderExpressionKind kind;
    const char* expression;
    const char* field;   // "" for none
    const char* object;  // "" for none
  };
  const Case cases[] = {
      {0, -1, ekExpression, "o.id", "id", "orders"},
      {0, 0, ekWhere, "o.id", "id", "orders"},
      // The aggregate stands apart from the row's expression.
      {1, 0, ekHaving, "o.total", "total", "orders"},
      {1, -1, ekExpression, "o.total", "total", "orders"},
      {2, -1, ekExpression, "1", "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.row) + "/" + std::to_string(c.condition));
    std::shared_ptr<ImvExpressionBuilderParams> params = Params(c.row, c.condition);
    EXPECT_TRUE(params->Get_Valid());
    EXPECT_EQ(params->Get_SelectItem(), Row(c.row));
    EXPECT_EQ(params->Get_ConditionIndex(), c.condition);
    EXPECT_EQ(params->Get_ExpressionKind(), c.kind);
    EXPECT_EQ(UTF8Encode(params->Get_RelatedExpression()), c.expression);
    TmvMetadataField* field = params->Get_RelatedField();
    EXPECT_EQ(field ? UTF8Encode(field->NameStr()) : std::string(), c.field);
    TmvMetadataObject* object = params->Get_RelatedObject();
    EXPECT_EQ(object ? UTF8Encode(object->NameStr()) : std::string(), c.object);
  }
}

// The edited text goes into the row: the expression for -1, else the
// criteria of that condition column.
TEST_F(ExpressionBuilderParamsTest, NewExpressionAndNewCondition) {
  int updates = 0;
  builder->OnSQLUpdated = [&updates](TmvQueryModelHost*) { ++updates; };
  Params(0, -1)->Set_NewExpression(u"o.total");
  Params(0, 0)->Set_NewExpression(u"< 100");
  EXPECT_EQ(updates, 2);
  EXPECT_EQ(Sql(),
            "Select o.total, Sum(o.total) As s, 1 As one From orders o Where o.total < 100 Group By o.total "
            "Having Sum(o.total) > 5");
}

// A host may keep the interface across a change of the query: once the row
// is gone it says so, refuses new text and refers to nothing, while what it
// was made with stays readable.
TEST_F(ExpressionBuilderParamsTest, OutlivesTheRow) {
  std::shared_ptr<ImvExpressionBuilderParams> params = Params(0, 0);
  builder->SetSql(u"SELECT x FROM t");
  EXPECT_FALSE(params->Get_Valid());
  EXPECT_EQ(params->Get_SelectItem(), nullptr);
  EXPECT_EQ(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { params->Set_NewExpression(u"= 2"); }),
            u"This TmvExpressionBuilderParams object is not valid.");
  EXPECT_EQ(params->Get_ExpressionKind(), ekExpression);
  EXPECT_EQ(params->Get_RelatedExpression(), u"");
  EXPECT_EQ(params->Get_RelatedField(), nullptr);
  EXPECT_EQ(params->Get_RelatedObject(), nullptr);
  EXPECT_EQ((std::vector<int>{params->Get_Left(), params->Get_Top(), params->Get_Width(), params->Get_Height(),
                              params->Get_ConditionIndex()}),
            (std::vector<int>{10, 20, 300, 18, 0}));
  EXPECT_EQ(params->Get_OldExpression(), u"old text");
  EXPECT_EQ(params->Get_CompletionsList(), (std::vector<WideString>{u"o.id", u"o.total"}));
  EXPECT_EQ(Sql(), "Select x From t");

  // Released before its row, it leaves no handler behind on the row.
  TmvNotificationEvent& destroying = Row(0)->OnDestroying();
  auto live = [&destroying] { return destroying.Count() - destroying.HoleCount(); };
  const int before = live();
  params = Params(0, -1);
  EXPECT_EQ(live(), before + 1);
  params.reset();
  EXPECT_EQ(live(), before);
}
