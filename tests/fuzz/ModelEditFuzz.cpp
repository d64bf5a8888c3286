// Editing the query model: the input is a SELECT (up to the first newline)
// and then a script of edits, one byte for the edit and one for whom it is
// done to (a sub-query, a SELECT, a datasource, counted modulo the number
// there are). Refusals and bad names are errors of the edit, not failures.
// After every edit the model keeps its promises:
// - no update is left open anywhere;
// - each sub-query's list of SELECTs is its union groups' SELECTs in order;
// - each select list ends in exactly one empty row;
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
#include "model/Links.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"
#include "tree/FromClause.h"

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
  TmvLink* Link() {
    TmvUnionSubQuery* member = Member();
    if (!member) return nullptr;
    std::vector<TmvLink*> links;
    member->Datasources()->GetLinksRecursive(links);
    return links.empty() ? nullptr : links[who / 5 % links.size()];
  }
  TmvSelectItem* Row() {
    TmvUnionSubQuery* member = Member();
    if (!member) return nullptr;
    TmvSelectList* list = member->SelectList();
    return list->Count() == 0 ? nullptr : list->Items(who / 5 % list->Count());
  }
  const char16_t* Text(std::initializer_list<const char16_t*> texts) { return texts.begin()[who % texts.size()]; }
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
    TmvLink* link = Link();
    TmvSelectItem* row = Row();
    TmvSelectList* list = member ? member->SelectList() : nullptr;
    TmvDatasourceList all;
    if (member) member->Datasources()->GetDatasources(all);
    TmvDatasource* other = all.size() > 1 ? all[(who / 3 + 1) % all.size()] : nullptr;
    switch (edit % 36) {
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
      // Links and join kinds.
      case 20: if (datasource && other) member->AddLink(datasource, Text({u"x", u"k"}), u"x", other); break;
      case 21: if (datasource && other) member->AddLink(datasource, other, Text({u"t.x < u.k", u"x = 1 OR k = 2"})); break;
      case 22: if (link) link->SetLeftType(who % 2 ? ltOuter : ltInner); break;
      case 23: if (link) link->SetRightType(who % 2 ? ltOuter : ltInner); break;
      case 24: if (link) link->FlipLink(); break;
      case 25: if (link) link->RequestDestroy(); break;
      case 26:
        if (datasource) {
          const TastNodeClass* kinds[] = {&TSQLJoinKindLeft::StaticClass(), &TSQLJoinKindRight::StaticClass(),
                                          &TSQLJoinKindFull::StaticClass(), &TSQLJoinKindInner::StaticClass(),
                                          &TSQLJoinKindCross::StaticClass()};
          datasource->SetJoinKindClass(kinds[who % 5]);
        }
        break;
      case 27: if (auto* object = TmvCast<TmvDataSourceObject>(datasource)) member->AddFKLinksForObject(object); break;
      case 28: if (auto* object = TmvCast<TmvDataSourceObject>(datasource)) member->AddIdenticalFieldsLinksForObject(object); break;
      // The grid.
      case 29: if (row) row->SetConditionString(who % 3, Text({u"10", u"abc", u"a%", u"Null", u"> 5", u"IN (1, 2)", u"", u"x"})); break;
      case 30: if (row) row->SetSelectUI(!row->Select()); break;
      case 31: if (row) row->SetExpressionStringUI(Text({u"x", u"t.k + 1", u"COUNT(*)", u"", u"k = 1", u"(SELECT 1)"})); break;
      case 32: if (row) row->SetAliasStringUI(Text({u"x", u"", u"a b"})); break;
      case 33: if (row) row->SetGroupingUI(!row->Grouping()); break;
      case 34:
        if (row) {
          row->SetSortTypeString(Text({u"Ascending", u"Descending", u""}));
          row->SetAggregateStringUI(Text({u"Count", u"Sum", u"", u"Max"}));
        }
        break;
      case 35:
        if (list && datasource) {
          if (who % 3 == 0) list->RemoveFields(datasource, u"x");
          else list->AddField(datasource, Text({u"x", u"k", u""}));
        }
        break;
    }
  }

  void Check() {
    MV_FUZZ_CHECK(!host.GetIsUpdating(), std::string("an update stays open"));
    for (TmvSubQuery* subQuery : host.SubQueries()) {
      MV_FUZZ_CHECK(!subQuery->GetIsUpdating(), std::string("a sub-query's update stays open"));
      MV_FUZZ_CHECK(subQuery->GetUnionSubQueriesList() == subQuery->UnionSubQueries(),
                    std::string("the SELECTs of a sub-query are out of order"));
    }
    for (TmvSubQuery* subQuery : host.SubQueries())
      for (TmvUnionSubQuery* member : subQuery->UnionSubQueries()) {
        TmvSelectList* list = member->SelectList();
        MV_FUZZ_CHECK(list->Count() > 0 && !list->Items(list->Count() - 1)->Expression(),
                      std::string("a select list lost its empty last row"));
        MV_FUZZ_CHECK(list->Count() < 2 || list->Items(list->Count() - 2)->Expression(),
                      std::string("a select list ends in two empty rows"));
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
