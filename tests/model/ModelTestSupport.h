// The fixture of the query model's tests: a host on the reference dialect
// whose capability answers a test can change, and short ways to load text
// and read it back.
#pragma once

#include <cctype>
#include <string>

#include <gtest/gtest.h>

#include <string>

#include "ReferenceDialect.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "support/WideString.h"

namespace mvtest {

// The reference dialect with settable answers for the capabilities the
// model asks before it changes anything.
class TCapabilityProvider : public TReferenceDialectProvider {
 public:
  bool Unions = true, SubQueryUnions = true;
  bool BracketsInUnions = true, SubQueryBracketsInUnions = true;
  bool DerivedTables = true, SubQueryDerivedTables = true;
  bool CTE = true, RecursiveCTE = true;
  bool CrossJoin = true, LeftJoin = true, RightJoin = true, FullJoin = true;
  bool FromClauseMandatory = false;
  bool ANSIJoins = true, OracleJoins = false, TransactSQLJoins = false, ForceBinaryJoins = false;

  bool IsSupportUnions() const override { return Unions; }
  bool IsSupportSubQueryUnions() const override { return SubQueryUnions; }
  bool IsSupportBracketsInUnions() const override { return BracketsInUnions; }
  bool IsSupportSubQueryBracketsInUnions() const override { return SubQueryBracketsInUnions; }
  bool IsSupportDerivedTables() const override { return DerivedTables; }
  bool IsSupportSubQueryDerivedTables() const override { return SubQueryDerivedTables; }
  bool IsSupportCTE() const override { return CTE; }
  bool IsSupportRecursiveCTE() const override { return RecursiveCTE; }
  bool IsSupportCrossJoin() const override { return CrossJoin; }
  bool IsSupportLeftANSIJoin() const override { return LeftJoin; }
  bool IsSupportRightANSIJoin() const override { return RightJoin; }
  bool IsSupportFullANSIJoin() const override { return FullJoin; }
  bool IsFromClauseMandatory() const override { return FromClauseMandatory; }
  bool IsSupportANSIJoins() const override { return ANSIJoins; }
  bool IsSupportOracleJoins() const override { return OracleJoins; }
  bool IsSupportTransactSQLJoins() const override { return TransactSQLJoins; }
  bool IsForceBinaryANSIJoins() const override { return ForceBinaryJoins; }
};

// Lower case: the case of printed keywords is the builder's business.
inline std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

inline std::string U8(const mv::WideString& text) { return mv::UTF8Encode(text); }
inline mv::WideString U16(const std::string& text) { return mv::UTF8Decode(text); }

class ModelTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  ModelTest() { host->SetSyntaxProvider(&provider); }
  ~ModelTest() override {
    // Handlers of a test may capture its locals, which are gone by now.
    host->OnSQLUpdated = nullptr;
    host->OnActiveUnionSubQueryChanging = nullptr;
    host->OnActiveUnionSubQueryChanged = nullptr;
    host->OnGetTabHeaderText = nullptr;
    host->SetUserInteraction(nullptr);
  }

 public:

  mv::TmvQuery* Query() const { return host->Query(); }
  void Load(const std::string& sql) { Query()->SetSql(U16(sql)); }
  std::string Sql() const { return U8(Query()->GetSql()); }
  mv::TmvUnionSubQuery* Member(int index) const { return Query()->UnionSubQueries().at(index); }
  mv::TmvUnionSubQuery* First() const { return Query()->FirstSelect(); }
  mv::TmvUnionGroup* Group(int index) const { return mv::TmvCast<mv::TmvUnionGroup>(Query()->Items(index)); }
  // The sub-query of the first SELECT's derived table at `index`.
  mv::TmvSubQuery* Derived(int index = 0) const {
    auto* table = mv::TmvCast<mv::TmvDatasourceQuery>(First()->Datasources()->Items(index));
    return table ? table->SubQuery() : nullptr;
  }

  // Adds a table of these fields to the host's metadata (the first field
  // is the primary key).
  mv::TmvMetadataTable* AddTable(const char16_t* name, std::initializer_list<const char16_t*> fields) {
    mv::TmvMetadataTable* table = host->MetadataContainer()->AddTable(name);
    bool first = true;
    for (const char16_t* field : fields) {
      table->GetFields()->AddField(field)->SetPrimaryKey(first);
      first = false;
    }
    return table;
  }

  // Declared first: the host, freed first, still sees its dialect.
  TCapabilityProvider provider;
  mv::TmvOwned<mv::TmvQueryModelHost> host = mv::TmvCreate<mv::TmvQueryModelHost>();
};

}  // namespace mvtest
