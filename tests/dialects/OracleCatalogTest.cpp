// The Oracle provider loading objects, keys and fields through the metadata
// provider. No Oracle server runs here: a scripted connection answers the
// catalog statements (each kind of object by a part of its statement) and
// refuses any other, among them a table whose name is SQL text.
#include <gtest/gtest.h>

#include "CatalogLines.h"
#include "ScriptedServer.h"
#include "dialects/oracle/OracleCatalogQueries.h"
#include "dialects/oracle/OracleSyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"

using namespace mv;
using mvtest::TextColumn;
using mvtest::TextTable;

namespace {

const WideString kHostile = u"x'; drop table t; --\"";
const TmvVariant kNull = TmvVariant::Null();

// "type(size)" or "type(precision,scale)", then null and pk.
std::string Describe(const TmvMetadataField& field) {
  const std::string size = field.Precision() > 0
                               ? std::to_string(field.Precision()) + "," + std::to_string(field.Scale())
                               : std::to_string(field.Size());
  return UTF8Encode(field.FieldTypeName()) + "(" + size + ")" + mvtest::NullAndKey(field);
}

class OracleCatalogTest : public mvtest::CatalogFixture<TmvOracleSyntaxProvider> {};

}  // namespace

// The version read before the first load decides on pipelined functions; a
// catalog without all_mview_comments gives materialized views no comments.
TEST_F(OracleCatalogTest, ObjectsKeysAndFieldsByVersion) {
  struct Case {
    const char16_t* banner;
    bool mviewComments;
    TmvQBServerVersionOracle version;
    std::vector<std::string> pipelined;  // the lines pipelined functions add
  };
  const Case cases[] = {
      {u"CORE\t11.2.0.4.0\tProduction", true, svOracle11, {"SCOTT.F_ROWS:TmvMetadataProcedure"}},
      {u"CORE\t8.1.7.0.0\tProduction", false, svOracle8, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(UTF8Encode(c.banner));
    TmvMemoryConnection server;
    metadata_.SetConnection(&server);
    server.Open();
    container_->Clear();
    provider_.SetDetectServerVersion(true);
    server.AddResult(kOracleVersionQuery, TextColumn(u"BANNER", {c.banner}));
    server.AddResult(u"from all_tables t, all_tab_comments c",
                     TextTable({u"OWNER", u"TABLE_NAME", u"COMMENTS"}, {{u"SCOTT", u"EMP", u"employees"},
                                                                         {u"SCOTT", u"DEPT", kNull},
                                                                         {u"SCOTT", kHostile, kNull},
                                                                         {u"SYS", u"DUAL", kNull}}),
                     TmvScriptMatch::smContains);
    server.AddResult(u"from all_views t", TextTable({u"OWNER", u"VIEW_NAME", u"COMMENTS"}, {{u"SCOTT", u"V", kNull}}),
                     TmvScriptMatch::smContains);
    if (c.mviewComments) server.AddResult(OracleMViewCommentsProbe(u""), TextColumn(u"MVIEW_NAME", {}));
    server.AddResult(c.mviewComments ? u"all_mview_comments c" : u"null as COMMENTS from all_mviews t",
                     TextTable({u"OWNER", u"MVIEW_NAME", u"COMMENTS"}, {{u"SCOTT", u"MV", u"daily"}}),
                     TmvScriptMatch::smContains);
    server.AddResult(u"from all_synonyms s",
                     TextTable({u"OWNER", u"SYNONYM_NAME", u"TABLE_OWNER", u"TABLE_NAME", u"DB_LINK"},
                               {{u"SCOTT", u"E", u"SCOTT", u"EMP", kNull}, {u"SCOTT", u"R", u"HR", u"JOBS", u"FAR"}}),
                     TmvScriptMatch::smContains);
    server.AddResult(u"from all_procedures", TextTable({u"OWNER", u"OBJECT_NAME"}, {{u"SCOTT", u"F_ROWS"}}),
                     TmvScriptMatch::smContains);
    server.AddResult(u"from ALL_CONSTRAINTS fk",
                     TextTable({u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", u"PK_FIELD_NAME", u"FK_SCHEMA_NAME",
                                u"FK_TABLE_NAME", u"FK_FIELD_NAME", u"ORDINAL"},
                               {{u"SCOTT", u"DEPT", u"DEPTNO", u"SCOTT", u"EMP", u"DEPTNO", u"1"}}),
                     TmvScriptMatch::smContains);
    // The owner and name come as parameters.
    server.AddHandler(kOracleFieldsQuery, [](const TmvParams& params) {
      TmvMemoryTable table = TextTable({u"COLUMN_NAME", u"DATA_TYPE", u"NULLABLE"}, {});
      for (const char16_t* column : {u"DATA_LENGTH", u"DATA_PRECISION", u"DATA_SCALE"})
        table.AddColumn(column, ftInteger);
      const WideString owner = params.ParamByName(u"ObjectSchema").Value().AsWideString();
      const WideString name = params.ParamByName(u"ObjectName").Value().AsWideString();
      if (owner == u"SCOTT" && name == u"EMP")
        table.AddRow({u"EMPNO", u"NUMBER", u"N", 22, 4, 0})
            .AddRow({u"ENAME", u"VARCHAR2", u"Y", 10, kNull, kNull})
            .AddRow({u"SAL", u"NUMBER", u"Y", 22, 7, 2});
      if (owner == u"SCOTT" && name == kHostile) table.AddRow({u"Y", u"CHAR", u"Y", 1, kNull, kNull});
      return table;
    });

    provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr);
    provider_.LoadMetadataRelations(&context_, nullptr, container_.get(), nullptr, nullptr);
    EXPECT_EQ(provider_.GetServerVersion(), c.version);
    std::vector<std::string> kinds;
    for (int i = 0; i < container_->Count(); ++i) {
      TmvMetadataObject* object = container_->Items(i);
      kinds.push_back(UTF8Encode(object->SchemedNameStrNotQuoted()) + ":" +
                      std::string(object->ClassType().ClassName()) + (object->System() ? ":system" : ""));
      if (auto* synonym = TmvCast<TmvMetadataSynonym>(object))
        kinds.back() += " -> " + UTF8Encode(synonym->ReferencedFullName()->GetQualifiedNameWithoutQuotes());
      provider_.LoadFieldsForObjectFromServer(&context_, nullptr, object);
    }
    std::vector<std::string> expected = {"SCOTT.EMP:TmvMetadataTable",
                                         "SCOTT.DEPT:TmvMetadataTable",
                                         "SCOTT." + UTF8Encode(kHostile) + ":TmvMetadataTable",
                                         "SYS.DUAL:TmvMetadataTable:system",
                                         "SCOTT.V:TmvMetadataView",
                                         "SCOTT.MV:TmvMetadataView",
                                         "SCOTT.E:TmvMetadataSynonym -> SCOTT.EMP",
                                         "SCOTT.R:TmvMetadataSynonym -> FAR.HR.JOBS"};
    expected.insert(expected.end(), c.pipelined.begin(), c.pipelined.end());
    EXPECT_EQ(kinds, expected);
    EXPECT_EQ(container_->Items(0)->ShortDescription(), u"employees");
    const auto lines = mvtest::CatalogLines(
        *container_, [](const TmvMetadataObject& o) { return o.GetFields()->Count() > 0 || o.NameStrNotQuoted() == u"DEPT"; },
        Describe);
    // A synonym's fields are those of what it stands for.
    EXPECT_EQ(lines, (std::vector<std::string>{"DEPT", "DEPT -> EMP [DEPTNO] [DEPTNO]", "E", "E.EMPNO NUMBER(4,0)",
                                               "E.ENAME VARCHAR2(10) null", "E.SAL NUMBER(7,2) null", "EMP",
                                               "EMP.EMPNO NUMBER(4,0)",
                                               "EMP.ENAME VARCHAR2(10) null", "EMP.SAL NUMBER(7,2) null",
                                               UTF8Encode(kHostile), UTF8Encode(kHostile) + ".Y CHAR(1) null"}));
  }
  metadata_.SetConnection(&server_);
}

// Where the server refuses the tables' statement, the metadata provider
// answers (and raises); refused keys and fields load nothing.
TEST_F(OracleCatalogTest, RefusedStatementsFallBack) {
  provider_.SetDetectServerVersion(false);
  EXPECT_THROW(provider_.LoadMetadataObjects(&context_, nullptr, container_.get(), nullptr, nullptr),
               EmvQueryBuilderError);
  provider_.LoadMetadataRelations(&context_, nullptr, container_.get(), nullptr, nullptr);
  EXPECT_TRUE(container_->GetRelations().empty());
  TmvMetadataObject* table = container_->AddTable(WideStringView(u"SCOTT.EMP"));
  provider_.LoadFieldsForObjectFromServer(&context_, nullptr, table);
  EXPECT_EQ(table->GetFields()->Count(), 0);
}
