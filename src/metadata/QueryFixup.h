// The binding pass that follows every parse: it gives the names of a tree
// their meaning. A FROM object becomes a common table expression in scope or
// an object of the metadata container; a column is bound to the source it
// comes from (its prefix then comes from the source when printed); each
// source, select and with item learns the columns it offers; a parameter
// learns the column it is compared with.
//
// The walk is ordered so that each name is met after what it can refer to:
// a select's FROM clause before its other clauses, each source of a join
// group twice (first the source, then its ON condition, which sees that
// source and those before it), each with item twice (the first union member
// alone, then the recursive members, which see the item). Sources of an
// enclosing select stay in sight inside its sub-queries. A name that
// resolves to nothing is left as written.
//
//   PrepareAndFixupRecursive (tree/AstNode.h)  the entry for a subtree
//   TmvPrepareAndFixupVisitor                  one run of the pass
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "tree/AstNode.h"

namespace mv {

class TSQLAliasExpression;
class TSQLObjectColumn;
class TSQLSubQuerySelectExpression;
class TSQLSelectItemExpression;
class TmvPrepareAndFixupParam;

class TmvPrepareAndFixupVisitor : public TastNodeVisitor {
 public:
  explicit TmvPrepareAndFixupVisitor(TmvConnection* connection) : connection_(connection) {}

  // Unbinds the subtree, then binds it afresh.
  void Fixup(TastNodeBase* node);
  // The same with with items and sources of the surroundings in sight.
  void FixupInContext(TastNodeBase* node, const TSQLWithClauseItemList& withItems,
                      const TSQLFromSourceList& fromSources);
  // Forgets every binding of names to sources below `node`; names that
  // print through their source get their prefix back.
  static void ClearDatasourceReferences(TastNodeBase* node);

 protected:
  TastNodeBaseList GetNodeChildren(TastNodeBase* node, TastNodeBase* parent, TmvObject* data,
                                   TmvObject* nodeData) override;
  TmvOwned<TmvObject> EnterIntoNode(TastNodeBase* node, TastNodeBase* parent, TmvObject* data) override;
  void VisitingNode(TastNodeBase* node, TastNodeBase* parent, TmvObject* data, TmvObject* nodeData) override;
  void ExitFromNode(TastNodeBase* node, TastNodeBase* parent, TmvObject* data, TmvObject* nodeData) override;

 private:
  bool IsPassed(const TSQLFromSource* source) const { return passedFromSources_.count(source) != 0; }
  bool IsPassed(const TSQLWithClauseItem* item) const { return passedWithItems_.count(item) != 0; }

  void FixupFromObject(TSQLFromSource* node, TmvPrepareAndFixupParam& param);
  void FixupFromFunction(TSQLFromSource* node, TmvPrepareAndFixupParam& param);
  void FixupFromItem(TSQLFromSource* node, TmvPrepareAndFixupParam& param);
  void FixupWithItem(TSQLWithClauseItem* item);
  void FixupUnionSubQuery(TSQLSubQuerySelectExpression* select);
  void FixupColumnName(TSQLObjectColumn* column, TmvPrepareAndFixupParam& param);
  void FixupObjectName(TSQLDatabaseObject* object, TmvPrepareAndFixupParam& param);
  void FixupParameters(TastNodeBase* node, TmvPrepareAndFixupParam& param);

  TmvConnection* connection_;
  std::unordered_set<const TSQLWithClauseItem*> passedWithItems_;
  std::unordered_set<const TSQLFromSource*> passedFromSources_;
  std::unordered_set<const TSQLObjectColumn*> groupByAliases_;
  std::unordered_set<const TSQLObjectColumn*> orderByAliases_;
  // Selects whose columns are not all known (a "*" over a source whose
  // columns are unknown): their count must not cut a with item's names.
  std::unordered_set<const TSQLSubQuerySelectExpression*> partialResults_;
};

// For hosts that refuse unknown objects: after binding, the first FROM
// object that names neither a metadata object nor a common table expression
// raises EmvSQLError "Unknown object name: "name"".
void CheckUnknownObjects(TastNodeBase* node);

// What a name of a bound tree refers to, as a tree dump shows it after the
// node (UTF-8): for a column ` -> field "Total" of "Invoice" (source "i")`,
// ` -> column "x" of "q"` or ` -> not bound`; for a source's own name
// ` -> object "Invoice"`, ` -> with item "c"` or ` -> not bound`; for a name
// that refers to a source (t.*) ` -> source "t"`. Empty for other nodes.
std::string DescribeBinding(const TastNodeBase* node);

}  // namespace mv
