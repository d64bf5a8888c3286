// Class objects of the syntax tree: every node class and every extender class
// has one, with a factory that makes an instance for a SQL context. Dialect
// extenders, cloning and the provider's extender table all work with them.
#pragma once

#include "support/Class.h"

namespace mv {

class TmvBaseSQLContext;
class TastNodeBase;
class TastNode;
class TastExtender;
class TSQLSubSelectStatement;
class TSQLSubSelectStatementProxy;

// A node or extender class: name, parent and a factory taking the context.
using TastNodeClass = TmvClassOf<TastNodeBase, TmvBaseSQLContext*>;
// A class reference as a plain field value.
using TastNodeClassRef = const TastNodeClass*;

// A class of sub-query proxies: made from (context, owner object, parent node,
// statement); the proxy takes over the statement.
using TSQLSubSelectStatementProxyClass =
    TmvClassOf<TSQLSubSelectStatementProxy, TmvBaseSQLContext*, TmvObject*, TastNodeBase*, TSQLSubSelectStatement*>;

}  // namespace mv
