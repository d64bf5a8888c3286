// Editing the query model: the input is a SELECT (up to the first newline)
// and then a script of edits, one byte for the edit and one for whom it is
// done to (a sub-query, a SELECT, a datasource, counted modulo the number
// there are). Refusals and bad names are errors of the edit, not failures.
// After every edit the model keeps its promises:
// - no update is left open anywhere;
// - each sub-query's list of SELECTs is its union groups' SELECTs in order;
// - the text can be read, and freeing the model leaves nothing behind
//   (the sanitizers watch that).
#include <string_view>
#include <vector>

#include "FuzzTarget.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"

using namespace mv;

namespace {

constexpr size_t kMaxInput = 4096;

struct Edits {
  TmvQueryModelHost& host;
  uint8_t who = 0;

  TmvSubQuery* SubQuery() { return host.SubQueries()[who % host.SubQueries().size()]; }
  TmvUnionSubQuery* Member() {
    const auto& members = SubQuery()->UnionSubQueries();
    return members.empty() ? nullptr : members[who / 7 % members.size()];
  }
  TmvDatasource* Datasource() {
    TmvUnionSubQuery* member = Member();
    if (!member) return nullptr;
    TmvDatasourceList all;
    member->Datasources()->GetDatasources(all);
    return all.empty() ? nullptr : all[who / 3 % all.size()];
  }
  TmvUnionGroup* Group() {
    TmvSubQuery* subQuery = SubQuery();
    for (int i = 0; i < subQuery->Count(); ++i)
      if (auto* group = TmvCast<TmvUnionGroup>(subQuery->Items(i))) return group;
    return nullptr;
  }

  void Run(uint8_t edit) {
    TmvUnionSubQuery* member = Member();
    TmvDatasource* datasource = Datasource();
    TmvUnionGroup* group = Group();
    switch (edit % 20) {
      case 0: if (member) member->MoveLeftEvent(); break;
      case 1: if (member) member->MoveRightEvent(); break;
      case 2: if (member) member->BracketsEvent(); break;
      case 3: if (group) group->RemoveBracketsEvent(); break;
      case 4: if (group) group->MoveLeftForwardEvent(); break;
      case 5: if (group) group->MoveRightForwardEvent(); break;
      case 6: if (group) group->MoveLeftBackwardEvent(); break;
      case 7: if (group) group->MoveRightBackwardEvent(); break;
      case 8: if (member) member->RemoveEvent(); break;
      case 9: if (member) member->NewEvent(); break;
      case 10: if (member) member->CopyToNewEvent(); break;
      case 11: if (member) member->AddObject(who % 2 ? u"t" : u"u", u""); break;
      case 12: if (datasource) datasource->RequestDestroy(); break;
      case 13: if (datasource) datasource->SetAlias(who % 3 ? u"a" : u""); break;
      case 14: if (member && datasource) member->ConvertDatasourceToDerivedTable(datasource); break;
      case 15: if (member) member->AddSubQueryEvent(); break;
      case 16: if (member) member->AddNewCTEEvent(); break;
      case 17: SubQuery()->SetSql(u"SELECT x, k FROM t UNION SELECT x, k FROM u"); break;
      case 18: if (member) member->SetSql(u"SELECT t.x FROM t"); break;
      case 19: if (member) SubQuery()->SetActiveUnionSubquery(member); break;
    }
  }

  void Check() {
    MV_FUZZ_CHECK(!host.GetIsUpdating(), std::string("an update stays open"));
    for (TmvSubQuery* subQuery : host.SubQueries()) {
      MV_FUZZ_CHECK(!subQuery->GetIsUpdating(), std::string("a sub-query's update stays open"));
      MV_FUZZ_CHECK(subQuery->GetUnionSubQueriesList() == subQuery->UnionSubQueries(),
                    std::string("the SELECTs of a sub-query are out of order"));
    }
    (void)host.Query()->GetSql();
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  static TmvOwned<TmvSQL92SyntaxProvider> provider = [] {
    InitializeEngine();
    return TmvCreate<TmvSQL92SyntaxProvider>();
  }();
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const size_t end = std::min(input.find('\n'), input.size());
  TmvOwned<TmvQueryModelHost> host = TmvCreate<TmvQueryModelHost>();
  host->SetSyntaxProvider(provider.get());
  for (const char16_t* name : {u"t", u"u"}) {
    TmvMetadataTable* table = host->MetadataContainer()->AddTable(name);
    for (const char16_t* field : {u"x", u"k"}) table->GetFields()->AddField(WideStringView(field));
  }
  try {
    host->Query()->SetSql(DecodeText(input.substr(0, end)));
  } catch (const Exception&) {
    return 0;  // not a statement: the parser's business
  }
  Edits edits{*host};
  for (size_t i = end + 1; i + 1 < size; i += 2) {
    edits.who = data[i + 1];
    try {
      edits.Run(data[i]);
    } catch (const Exception&) {
      // a refusal or a bad name: the model stays as it was
    }
    edits.Check();
  }
  return 0;
}
