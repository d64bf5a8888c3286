// The model's stand-in for a sub-select in a syntax tree. When the model
// takes a node over, every sub-select below it is replaced by a proxy, and
// the proxy makes a sub-query of the model from it. Printing or cloning the
// tree through the proxy yields the sub-query's present result tree, so the
// generic tree operations see the model's state.
#pragma once

#include "tree/SelectStatement.h"

namespace mv {

class TmvQueryBuilderControlOwner;
class TmvSubQuery;

class TmvSubSelectStatementProxy : public TSQLSubSelectStatementProxy {
 public:
  // The class facility by hand: the proxy is made only through ProxyClass,
  // so its node class has no factory; it has no fields of its own.
  static const TastNodeClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }
  const TastNodeClass& NodeClass() const override { return StaticClass(); }

  // `owner` is the model object that keeps `parent`; it owns the new sub-query.
  TmvSubSelectStatementProxy(TmvBaseSQLContext* context, TmvObject* owner, TastNodeBase* parent,
                             TSQLSubSelectStatement* statement);
  ~TmvSubSelectStatementProxy() override;
  // Makes the sub-query from the statement.
  void AfterConstruction() override;

  // The class to pass to MoveSubQueryInProxyRecursive.
  static const TSQLSubSelectStatementProxyClass& ProxyClass();

  TmvSubQuery* SubQuery() const { return subQuery_; }
  TmvQueryBuilderControlOwner* OwnerObject() const { return ownerObject_; }
  // The node through which the sub-select was reached.
  TastNodeBase* RootNode() const { return ParentNode(); }

  TmvOwned<TSQLSubSelectStatement> GenerateASTTree(TmvBaseSQLContext* context) override;
  TSQLSubQuerySelectExpression* FirstUnionSubQuery() const override;

 private:
  // Keeps the sub-query's Fields equal to its output columns.
  void SubqueryChanged(TmvObject* sender);
  void UpdateFields();
  void SubQueryDestroying(TmvObject* sender);
  // Unhooks from the sub-query and hands it back (null if there is none).
  TmvSubQuery* ReleaseSubQuery();

  TmvQueryBuilderControlOwner* ownerObject_ = nullptr;
  TmvSubQuery* subQuery_ = nullptr;
};

}  // namespace mv
