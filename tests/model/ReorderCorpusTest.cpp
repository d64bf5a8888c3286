// No reorder where none is due: every statement of the corpus that parses
// under the reference dialect and has a FROM clause is loaded into the model
// with the reorder switched off, and each group of every SELECT is asked
// whether its order needs one. A FROM clause that is valid as it was written
// (judged here on the parsed text, not by the model) must need none.
#include <iostream>
#include <set>

#include "Corpus.h"
#include "ModelTestSupport.h"
#include "tree/FromClause.h"

namespace mvtest {
namespace {

using SourceSet = std::set<const mv::TSQLFromSource*>;

// The source and, for a group, every source inside it.
void Collect(const mv::TSQLFromSource* source, SourceSet& set) {
  set.insert(source);
  if (auto* group = mv::TmvCast<mv::TSQLFromGroup>(source))
    for (int i = 0; i < group->GetCount(); ++i) Collect(group->GetItems(i), set);
}

// Whether a group of the FROM clause `all` is in an order the model keeps:
// not empty and no bracket around a lone bracket; the first entry without a
// join; a join (cross joins aside) with an ON clause and a comma without;
// an ON clause that refers to sources of this FROM only in the entries up to
// its own.
bool IsValidGroup(const mv::TSQLFromGroup* group, const SourceSet& all) {
  if (group->GetCount() == 0) return false;
  if (group->GetCount() == 1 && mv::TmvCast<mv::TSQLFromGroup>(group->GetItems(0))) return false;
  SourceSet before;
  for (int i = 0; i < group->GetCount(); ++i) {
    mv::TSQLFromSource* item = group->GetItems(i);
    Collect(item, before);
    const bool joined = item->JoinKind && !mv::TmvCast<mv::TSQLJoinKindCross>(item->JoinKind.get());
    const bool on = static_cast<bool>(item->JoinExpression);
    if (i == 0 ? on || item->JoinKind : joined != on) return false;
    if (on) {
      mv::TSQLFromSourceList referenced;
      item->JoinExpression->GetReferencedDatasourcesRecursive(referenced);
      for (mv::TSQLFromSource* source : referenced)
        if (all.count(source) && !before.count(source)) return false;
    }
    auto* nested = mv::TmvCast<mv::TSQLFromGroup>(item);
    if (nested && !IsValidGroup(nested, all)) return false;
  }
  return true;
}

// Whether the statement has a FROM clause, and whether all of its FROM
// clauses (sub-selects too) are valid.
void JudgeFromClauses(mv::TSQLSelectStatement& statement, bool& hasFrom, bool& valid) {
  hasFrom = false;
  valid = true;
  statement.TraverseASTTreeDepthFirst([&](mv::TastNodeBase* node) {
    auto* clause = mv::TmvCast<mv::TSQLFromClause>(node);
    if (!clause || clause->GetCount() == 0) return;
    hasFrom = true;
    SourceSet all;
    Collect(clause, all);
    if (!IsValidGroup(clause, all)) valid = false;
  });
}

// The groups of every SELECT of the model that want a reorder.
int RequiredReorders(mv::TmvQueryModelHost* host) {
  int required = 0;
  std::function<void(mv::TmvDatasourceGroup*)> visit = [&](mv::TmvDatasourceGroup* group) {
    required += group->IsReorderRequired();
    for (int i = 0; i < group->Count(); ++i)
      if (auto* nested = mv::TmvCast<mv::TmvDatasourceGroup>(group->Items(i))) visit(nested);
  };
  for (mv::TmvSubQuery* subQuery : host->SubQueries())
    for (mv::TmvUnionSubQuery* member : subQuery->UnionSubQueries()) visit(member->Datasources());
  return required;
}

class ReorderCorpusSlow : public ModelTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(ReorderCorpusSlow, ValidFromClausesNeedNoReorder) {
  MV_CORPUS_SELECTS(entries, GetParam());
  host->Options.CanReorderDatasources = false;
  int parsed = 0, withFrom = 0, asked = 0, required = 0, invalid = 0, spurious = 0;
  for (const mv::TmvStatementEntry& entry : entries) {
    bool hasFrom = false, valid = true;
    try {
      mv::TmvOwned<mv::TSQLSelectStatement> statement = host->SQLContext()->ParseSelect(entry.Text);
      statement->PrepareAndFixupRecursive();
      ++parsed;
      JudgeFromClauses(*statement, hasFrom, valid);
    } catch (const mv::Exception&) {
      continue;
    }
    if (!hasFrom) continue;
    ++withFrom;
    try {
      Query()->SetSql(entry.Text);
    } catch (const mv::Exception&) {
      continue;
    }
    ++asked;
    invalid += !valid;
    const int groups = RequiredReorders(host.get());
    required += groups > 0;
    if (valid && groups > 0 && ++spurious <= 5)
      ADD_FAILURE() << GetParam() << " line " << entry.Line << ": a reorder of a valid FROM\n" << U8(entry.Text);
  }
  EXPECT_EQ(spurious, 0);
  std::cout << "  " << GetParam() << ": " << entries.size() << " statements, " << parsed << " parse, " << withFrom
            << " with FROM, " << asked << " reorder asked, " << required << " reorder required (" << invalid
            << " FROM not valid as written)\n";
}

INSTANTIATE_TEST_SUITE_P(Corpus, ReorderCorpusSlow, ::testing::ValuesIn(kCorpusSelectFolders),
                         [](const auto& info) { return CorpusTestName(info.param); });

}  // namespace
}  // namespace mvtest
