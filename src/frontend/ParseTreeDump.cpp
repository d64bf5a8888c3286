#include "frontend/ParseTreeDump.h"

#include <vector>

#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

std::string Quoted(const WideString& text) {
  std::string out = "\"";
  for (char c : UTF8Encode(text)) {
    if (c == '"' || c == '\\') out += '\\';
    if (c == '\r') {
      out += "\\r";
    } else if (c == '\n') {
      out += "\\n";
    } else {
      out += c;
    }
  }
  return out + "\"";
}

// The fields that tell one node of a class from another.
std::string KeyFields(const TastNodeBase* node) {
  std::string out;
  auto flag = [&out](bool set, const char* name) {
    if (set) out += std::string(" ") + name;
  };
  if (const auto* token = TmvCast<TastToken>(node)) out += " " + Quoted(token->Token);
  if (const auto* id = TmvCast<TastTokenIdentifier>(node)) flag(id->Quoted, "quoted");
  if (const auto* op = TmvCast<TSQLOperator>(node)) out += " " + Quoted(op->Text);
  if (const auto* is = TmvCast<TSQLExpressionIs>(node)) flag(is->Negated, "not");
  if (const auto* in = TmvCast<TSQLExpressionIn>(node)) flag(in->Negated, "not");
  if (const auto* between = TmvCast<TSQLExpressionBetween>(node)) flag(between->Negated, "not");
  if (const auto* like = TmvCast<TSQLExpressionLikeTemplate>(node)) {
    out += " " + Quoted(like->Keyword);
    flag(like->Negated, "not");
  }
  if (const auto* alias = TmvCast<TSQLAliasExpressionAlias>(node)) flag(alias->AsKeyword, "as");
  if (const auto* alias = TmvCast<TSQLAliasObjectAlias>(node)) flag(alias->AsKeyword, "as");
  if (const auto* inner = TmvCast<TSQLJoinKindInner>(node)) flag(inner->InnerKeyword, "inner");
  if (const auto* outer = TmvCast<TSQLJoinKindOuter>(node)) flag(outer->OuterKeyword, "outer");
  if (const auto* aggregate = TmvCast<TSQLExpressionAggregate>(node)) {
    if (aggregate->Mode) out += " mode=" + std::to_string(aggregate->Mode);
  }
  if (const auto* comparison = TmvCast<TSQLExpressionCompWithSet>(node))
    out += " quantifier=" + std::to_string(comparison->Quantifier);
  if (const auto* item = TmvCast<TSQLOrderByItem>(node)) flag(item->Descending, "desc");
  return out;
}

// One node to write: its depth, and whether it is a union member after the
// first (it then shows the operator that joins it to the one before).
struct Pending {
  const TastNodeBase* node;
  int depth;
  bool unionMember;
};

}  // namespace

std::string DumpParseTree(const TastNodeBase* root, const TastDumpAnnotation& annotate) {
  std::string out;
  // A stack instead of recursion: a long chain of operators nests as deep
  // as it is long.
  std::vector<Pending> pending{{root, 0, false}};
  while (!pending.empty()) {
    const Pending current = pending.back();
    pending.pop_back();
    const TastNodeBase* node = current.node;
    if (!node || TmvCast<TastNodeSpace>(node) || TmvCast<TastNodeNewLine>(node)) continue;
    out.append(size_t(current.depth) * 2, ' ');
    out += std::string(node->ClassName()) + KeyFields(node);
    if (const auto* member = TmvCast<TSQLSubQueryExpression>(node); member && current.unionMember)
      out += " " + Quoted(member->UnionOperator) + (member->UnionAll ? " all" : "");
    if (annotate) out += annotate(node);
    out += "\n";
    TastNodeBaseList children;
    node->GetMyChildren(children);
    const bool isUnion = TmvCast<TSQLSubQueryExpressions>(node) != nullptr;
    std::vector<Pending> next;
    bool first = true;
    for (const TastNodeBase* child : children) {
      const bool member = isUnion && TmvCast<TSQLSubQueryExpression>(child) != nullptr;
      next.push_back({child, current.depth + 1, member && !first});
      if (member) first = false;
    }
    pending.insert(pending.end(), next.rbegin(), next.rend());
  }
  return out;
}

}  // namespace mv
