// Node classes and extenders of the Netezza dialect (fields in
// NetezzaNodes.def): the left-out part of database..table, and the
// extenders that keep LIMIT and OFFSET with the statement and print them
// after its order.
#pragma once

#include "tree/AstNode.h"
#include "tree/RowLimits.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "dialects/netezza/NetezzaNodes.gen.h"

namespace mv {

// Prints nothing: the dots around it stand for it.
class TNetezzaEmptyNamePart : public TastTokenIdentifier {
  MV_AST_NODE(TNetezzaEmptyNamePart);

 public:
  void BuildSQLDirect(TSQLBuilder&, const TSQLBuilderSelectFormat&) override {}
};

// With, the union members, Order By, then Limit and Offset.
class TmvNetezzaSubSelectStatementExtender : public TastExtender {
  MV_AST_NODE(TmvNetezzaSubSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The same, indented as a whole statement.
class TmvNetezzaSelectStatementExtender : public TmvNetezzaSubSelectStatementExtender {
  MV_AST_NODE(TmvNetezzaSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of the dialect on a statement, or null.
inline TmvNetezzaSubSelectStatementExtender* NetezzaExtenderOf(const TastNode* node) {
  return node ? TmvCast<TmvNetezzaSubSelectStatementExtender>(node->Extender.get()) : nullptr;
}

}  // namespace mv
