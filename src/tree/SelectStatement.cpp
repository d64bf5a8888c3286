#include "tree/SelectStatement.h"

#include <algorithm>
#include <vector>

#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "tree/FromClause.h"
#include "tree/SelectClauses.h"

namespace mv {

namespace {

// A main part: on its own line (or after a blank of the given priority), its
// keywords, then its content indented.
template <class Keywords, class Content>
void BuildPart(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, int priority, Keywords keywords,
               Content content) {
  builder.NewLineOrSpace(format.MainPartsFromNewLine(), priority);
  keywords();
  builder.AddIndent(format.IndentInPart());
  builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
  content();
  builder.EndIndent();
}

void BuildOrderByPart(TSQLOrderByClause* orderBy, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!orderBy) return;
  BuildPart(
      builder, format, 1, [&] { orderBy->BuildOrderByKeywords(builder); },
      [&] { orderBy->BuildOrderByList(builder, format, &format.OrderByFormat()); });
}

}  // namespace

// --- TSQLSubQueryExpression ---

void TSQLSubQueryExpression::BuildUnionOperator(TSQLBuilder& builder) {
  builder.WriteKeyword(UnionOperator);
  if (UnionAll) {
    builder.Space(3);
    builder.WriteKeyword(u"All");
  }
}

WideString TSQLSubQueryExpression::GetSimpleUnionOperator(TSQLBuilder& builder) {
  builder.BeginBuild();
  BuildUnionOperator(builder);
  builder.EndBuild();
  return builder.GetResult();
}

// --- TSQLSubQuerySelectExpression ---

void TSQLSubQuerySelectExpression::BuildSelectMode(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!SelectMode) return;
  builder.Space(3);
  SelectMode->BuildSQL(builder, format);
}

void TSQLSubQuerySelectExpression::BuildSelectListItems(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!SelectItems) return;
  // The separator of select items: a line break or a blank of priority 2 after the comma.
  const TSQLBuilderItemsListFormat& list = format.SelectListFormat();
  builder.DoBeginBuildSQLForNode(SelectItems.get());
  for (int i = 0; i < SelectItems->GetCount(); ++i) {
    if (i > 0) {
      if (list.NewLineBeforeComma()) builder.NewLine();
      builder.WriteSymbol(u",");
      builder.NewLineOrSpace(list.NewLineAfterItem(), 2);
    }
    SelectItems->GetItems(i)->BuildSQL(builder, format);
  }
  builder.DoEndBuildSQLForNode(SelectItems.get());
}

void TSQLSubQuerySelectExpression::BuildSelectList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                                                   const std::function<void()>& beforeMode,
                                                   const std::function<void()>& afterMode) {
  builder.WriteKeyword(u"Select");
  builder.AddIndent(format.IndentInPart());
  if (beforeMode) beforeMode();
  BuildSelectMode(builder, format);
  if (afterMode) afterMode();
  if (format.NewLineAfterPartKeywords())
    builder.NewLine();
  else if (SelectItems && SelectItems->GetCount() > 0)
    builder.Space(3);
  BuildSelectListItems(builder, format);
  builder.EndIndent();
}

void TSQLSubQuerySelectExpression::BuildFromClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!FromClause) return;
  BuildPart(
      builder, format, 0, [&] { builder.WriteKeyword(u"From"); }, [&] { FromClause->BuildSQL(builder, format); });
}

void TSQLSubQuerySelectExpression::BuildWhereClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Where) return;
  BuildPart(
      builder, format, 0, [&] { builder.WriteKeyword(u"Where"); },
      [&] { Where->BuildSQLCosmetic(builder, format, false, 0, format.WhereFormat()); });
}

void TSQLSubQuerySelectExpression::BuildGroupByClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!GroupBy) return;
  BuildPart(
      builder, format, 1, [&] { GroupBy->BuildGroupByKeywords(builder); }, [&] { GroupBy->BuildSQL(builder, format); });
}

void TSQLSubQuerySelectExpression::BuildHavingClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Having) return;
  BuildPart(
      builder, format, 1, [&] { builder.WriteKeyword(u"Having"); },
      [&] { Having->BuildSQLCosmetic(builder, format, false, 0, format.HavingFormat()); });
}

void TSQLSubQuerySelectExpression::BuildWindowClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Window) return;
  BuildPart(
      builder, format, 1, [&] { Window->BuildWindowKeyword(builder); },
      [&] { Window->BuildWindowList(builder, format, &format.WindowFormat()); });
}

void TSQLSubQuerySelectExpression::BuildOrderByClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildOrderByPart(OrderBy.get(), builder, format);
}

void TSQLSubQuerySelectExpression::BuildResultOffsetClause(TSQLBuilder& builder,
                                                           const TSQLBuilderSelectFormat& format) {
  if (!ResultOffset) return;
  builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
  ResultOffset->BuildSQL(builder, format);
}

void TSQLSubQuerySelectExpression::BuildFetchFirstClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!FetchFirst) return;
  builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
  FetchFirst->BuildSQL(builder, format);
}

void TSQLSubQuerySelectExpression::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildSelectList(builder, format);
  BuildFromClause(builder, format);
  BuildWhereClause(builder, format);
  BuildGroupByClause(builder, format);
  BuildHavingClause(builder, format);
  BuildWindowClause(builder, format);
  BuildOrderByClause(builder, format);
  BuildResultOffsetClause(builder, format);
  BuildFetchFirstClause(builder, format);
}

// --- TSQLSubQueryExpressions ---

TSQLSubQueryExpression* TSQLSubQueryExpressions::GetItems(int index) const { return Items.Items(index); }
int TSQLSubQueryExpressions::GetCount() const { return Items.Count(); }

TSQLSubQueryExpression* TSQLSubQueryExpressions::Add(TmvOwned<TSQLSubQueryExpression> expression) {
  TSQLSubQueryExpression* raw = expression.get();
  Items.Add(std::move(expression));
  return raw;
}

int TSQLSubQueryExpressions::Remove(const TastNode* node) { return Items.Remove(node); }
void TSQLSubQueryExpressions::Delete(int index) { Items.Delete(index); }

TmvOwned<TSQLSubQueryExpression> TSQLSubQueryExpressions::Extract(const TSQLSubQueryExpression* expression) {
  return TmvOwned<TSQLSubQueryExpression>(static_cast<TSQLSubQueryExpression*>(Items.Extract(expression).release()));
}

TmvOwned<TSQLSubQueryExpression> TSQLSubQueryExpressions::Extract(int index) {
  return TmvOwned<TSQLSubQueryExpression>(static_cast<TSQLSubQueryExpression*>(Items.Extract(index).release()));
}

void TSQLSubQueryExpressions::Clear() { Items.Clear(); }

TSQLSubQuerySelectExpression* TSQLSubQueryExpressions::FirstUnionSubQuery() const {
  // Plain bracketed groups are searched in a loop, however deep they nest;
  // another kind of group answers for itself.
  struct Open {
    const TSQLSubQueryExpressions* group;
    int next;
  };
  std::vector<Open> open{{this, 0}};
  while (!open.empty()) {
    Open& level = open.back();
    if (level.next >= level.group->GetCount()) {
      open.pop_back();
      continue;
    }
    TSQLSubQueryExpression* member = level.group->GetItems(level.next++);
    if (auto* select = TmvCast<TSQLSubQuerySelectExpression>(member)) return select;
    auto* group = TmvCast<TSQLSubQueryExpressions>(member);
    if (!group) continue;
    if (&group->NodeClass() == &TSQLSubQueryExpressions::StaticClass())
      open.push_back({group, 0});
    else if (TSQLSubQuerySelectExpression* found = group->FirstUnionSubQuery())
      return found;
  }
  return nullptr;
}

void TSQLSubQueryExpressions::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  for (int i = 0; i < GetCount(); ++i) {
    TSQLSubQueryExpression* member = GetItems(i);
    if (i > 0) {
      // The first member's operator is never printed.
      builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
      member->BuildUnionOperator(builder);
      builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    }
    const bool group = TmvCast<TSQLSubQueryExpressions>(member) != nullptr;
    if (group) builder.WriteSymbol(u"(");
    member->BuildSQL(builder, format);
    if (group) builder.WriteSymbol(u")");
  }
}

// --- TSQLSubSelectStatement ---

void TSQLSubSelectStatement::BuildWithClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!With) return;
  With->BuildSQL(builder, format);
  builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
}

void TSQLSubSelectStatement::BuildSelects(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TSQLSubQueryExpressions::BuildSQLDirect(builder, format);
}

void TSQLSubSelectStatement::BuildOrderByClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildOrderByPart(OrderBy.get(), builder, format);
}

void TSQLSubSelectStatement::BuildResultOffsetClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!ResultOffset) return;
  builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
  ResultOffset->BuildSQL(builder, format);
}

void TSQLSubSelectStatement::BuildFetchFirstClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!FetchFirst) return;
  builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
  FetchFirst->BuildSQL(builder, format);
}

void TSQLSubSelectStatement::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildWithClause(builder, format);
  BuildSelects(builder, format);
  BuildOrderByClause(builder, format);
  BuildResultOffsetClause(builder, format);
  BuildFetchFirstClause(builder, format);
}

void TSQLSelectStatement::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.AddIndent(format.IndentGlobal());
  TSQLSubSelectStatement::BuildSQLDirect(builder, format);
  builder.EndIndent();
}

void BuildStatementWithClauses(TSQLSubSelectStatement& statement, TSQLBuilder& builder,
                               const TSQLBuilderSelectFormat& format, std::initializer_list<TastNode*> clauses,
                               bool whole) {
  if (whole) builder.AddIndent(format.IndentGlobal());
  statement.TSQLSubSelectStatement::BuildSQLDirect(builder, format);
  for (TastNode* clause : clauses) {
    if (!clause) continue;
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    clause->BuildSQL(builder, format);
  }
  if (whole) builder.EndIndent();
}

// --- TSQLSubSelectStatementProxy ---

TSQLSubSelectStatementProxy::TSQLSubSelectStatementProxy(TmvBaseSQLContext* context, TmvObject* owner,
                                                         TastNodeBase* parent, TSQLSubSelectStatement* statement)
    : TSQLSubSelectStatementProxy(context) {
  owner_ = owner;
  parent_ = parent;
  statement_.reset(statement);
}

TSQLSubSelectStatementProxy::~TSQLSubSelectStatementProxy() = default;

void TSQLSubSelectStatementProxy::BuildSQL(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TmvOwned<TSQLSubSelectStatement> generated = GenerateASTTree(SQLContext());
  if (generated) generated->BuildSQL(builder, format);
}

TmvOwned<TastNodeBase> TSQLSubSelectStatementProxy::CloneInternal(TmvBaseSQLContext* context) const {
  // A clone of a proxy is a real statement.
  return const_cast<TSQLSubSelectStatementProxy*>(this)->GenerateASTTree(context);
}

void TSQLSubSelectStatementProxy::Assign(const TastNodeBase&) {
  throw Exception(u"Assign can't be called with TSQLSubSelectStatementProxy");
}

void TSQLSubSelectStatementProxy::GetMyChildren(TastNodeBaseList&) const {}
TSQLSubQueryExpression* TSQLSubSelectStatementProxy::GetItems(int) const { return nullptr; }
int TSQLSubSelectStatementProxy::GetCount() const { return 0; }

TSQLSubQueryExpression* TSQLSubSelectStatementProxy::Add(TmvOwned<TSQLSubQueryExpression>) {
  throw Exception(u"Add can't be called with TSQLSubSelectStatementProxy");
}

int TSQLSubSelectStatementProxy::Remove(const TastNode*) { return -1; }
void TSQLSubSelectStatementProxy::Delete(int) {}
TmvOwned<TSQLSubQueryExpression> TSQLSubSelectStatementProxy::Extract(const TSQLSubQueryExpression*) { return nullptr; }
TmvOwned<TSQLSubQueryExpression> TSQLSubSelectStatementProxy::Extract(int) { return nullptr; }
void TSQLSubSelectStatementProxy::Clear() {}
TSQLSubQuerySelectExpression* TSQLSubSelectStatementProxy::FirstUnionSubQuery() const { return nullptr; }

}  // namespace mv

namespace mv {

void TSQLSubSelectStatement::GetStatisticsChildren(TastNodeBaseList& list) const {
  const size_t first = list.size();
  GetMyChildren(list);
  if (!With) return;
  auto it = std::find(list.begin() + first, list.end(), static_cast<TastNodeBase*>(With.get()));
  if (it != list.end()) std::rotate(list.begin() + first, it, it + 1);
}

}  // namespace mv
