// The in-memory dataset and the scripted connection that later subsystems
// use in their tests: scripting, the record of statements, failures.
#include <gtest/gtest.h>

#include "Thrown.h"
#include "metadata/dataset/MemoryDataSet.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

TmvMemoryTable Objects() {
  TmvMemoryTable table;
  table.AddColumn(u"SCHEMA_NAME", ftWideString, 128).AddColumn(u"OBJECT_NAME", ftWideString, 128, faRequired);
  table.AddRow({u"public", u"a"}).AddRow({TmvVariant(), u"b"});
  return table;
}

TEST(DatasetMemory, StandaloneDatasetReadsItsOwnRows) {
  TmvMemoryDataSet data(Objects());
  EXPECT_EQ(data.Connection(), nullptr);
  EXPECT_EQ(data.RecordCount(), 0);
  data.UpdateFieldDefs();
  ASSERT_EQ(data.FieldDefs().Count(), 2);
  EXPECT_TRUE(data.FieldDefs()[1].Required());
  data.Open();
  EXPECT_EQ(data.RecordCount(), 2);
  EXPECT_EQ(data.FieldByName(u"object_name").AsWideString(), u"a");
  data.Next();
  EXPECT_TRUE(data.FieldByName(u"schema_name").IsNull()) << "an Empty cell is NULL";
  data.Next();
  EXPECT_TRUE(data.Eof());

  TmvMemoryTable other;
  other.AddColumn(u"x", ftInteger).AddRow({7});
  data.SetTable(other);
  EXPECT_FALSE(data.Active());
  data.Open();
  EXPECT_EQ(data.FieldCount(), 1);
  EXPECT_EQ(data.FieldByName(u"X").AsInteger(), 7);
}

TEST(DatasetMemory, RowsMustFitTheColumns) {
  TmvMemoryTable table;
  table.AddColumn(u"a", ftInteger);
  EXPECT_THROW(table.AddRow({1, 2}), EmvQueryBuilderError);
  EXPECT_THROW(table.AddRow({}), EmvQueryBuilderError);
  EXPECT_TRUE(table.Rows.empty());
}

TEST(DatasetMemory, ScriptAnswersAndRecordsStatements) {
  TmvMemoryConnection server;
  server.AddResult(u"select * from objects", Objects());
  server.AddResult(u"pg_constraint", Objects(), TmvScriptMatch::smContains);
  server.AddError(u"select * from forbidden", u"permission denied for table forbidden");

  auto query = server.CreateQuery(u"  select * from objects\r\n");
  query->Open();
  EXPECT_EQ(query->FieldByName(u"OBJECT_NAME").AsWideString(), u"a");
  EXPECT_TRUE(server.Connected()) << "a dataset opens its connection";

  auto relations = server.CreateQuery(u"select c.conname from pg_constraint c where c.conname = :Name");
  relations->ParamByName(u"name").SetAsWideString(u"fk_1");
  relations->Open();
  EXPECT_FALSE(relations->IsEmpty());

  const auto e = mvtest::Thrown<EmvQueryBuilderError>([&] { server.OpenQuery(u"select * from forbidden"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->Message(), u"permission denied for table forbidden");
  EXPECT_EQ(e->Text(), u"select * from forbidden");
  EXPECT_THROW(server.OpenQuery(u"select * from nowhere"), EmvQueryBuilderError);
  EXPECT_EQ(server.ExecSQL(u"delete from anything"), 0);
  EXPECT_THROW(server.ExecSQL(u"select * from forbidden"), EmvQueryBuilderError);

  const auto received = server.Received();
  ASSERT_EQ(received.size(), 3u) << "failed statements are not recorded";
  EXPECT_EQ(received[0].Sql, u"  select * from objects\r\n");
  EXPECT_FALSE(received[0].Executed);
  EXPECT_EQ(received[1].Params.ParamByName(u"NAME").Value(), TmvVariant(u"fk_1"));
  EXPECT_EQ(received[2].Sql, u"delete from anything");
  EXPECT_TRUE(received[2].Executed);
  server.ClearReceived();
  EXPECT_TRUE(server.Received().empty());
}

TEST(DatasetMemory, HandlersSeeTheParameterValues) {
  TmvMemoryConnection server;
  int calls = 0;
  server.AddHandler(u"select :n as n", [&](const TmvParams& params) {
    ++calls;
    TmvMemoryTable table;
    table.AddColumn(u"n", ftInteger);
    if (params.ParamByName(u"n").Bound()) table.AddRow({params.ParamByName(u"n").Value()});
    return table;
  });
  auto query = server.CreateQuery(u"select :n as n");
  query->UpdateFieldDefs();
  EXPECT_EQ(query->FieldDefs().Count(), 1);
  query->ParamByName(u"n").SetAsInteger(5);
  query->Open();
  EXPECT_EQ(query->FieldByName(u"n").AsInteger(), 5);
  EXPECT_EQ(calls, 2);
}

TEST(DatasetMemory, OpenFailureAndClones) {
  TmvMemoryConnection server;
  server.AddResult(u"select 1", TmvMemoryTable().AddColumn(u"one", ftInteger).AddRow({1}));
  server.SetOpenError(u"could not connect to server");
  EXPECT_EQ(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { server.Open(); }), u"could not connect to server");
  EXPECT_FALSE(server.Connected());
  EXPECT_THROW(server.OpenQuery(u"select 1"), EmvQueryBuilderError);

  server.SetOpenError({});
  server.OpenQuery(u"select 1");
  auto clone = server.CloneClosed();
  EXPECT_FALSE(clone->Connected());
  EXPECT_FALSE(clone->SupportsCancel());
  EXPECT_FALSE(clone->Cancel());
  EXPECT_EQ(clone->OpenQuery(u"select 1")->FieldByName(u"one").AsInteger(), 1);
  EXPECT_EQ(server.Received().size(), 1u);
  EXPECT_EQ(static_cast<TmvMemoryConnection&>(*clone).Received().size(), 1u);
}

}  // namespace
