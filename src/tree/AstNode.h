// The root of the syntax tree. A node owns its children, refers to its SQL
// context, and declares once (in the node table) which of its fields hold
// children; freeing, Assign, Clone and every walk of the tree work from that
// declaration alone. A node prints itself only through `BuildSQL`, where a
// dialect's extender may take over.
//
// Depth. A long operator sequence (a + b + c ...) is a chain as deep as it
// is long, so the generic operations never recurse with the depth of the
// tree: freeing, Clone, Assign and the walks below run in loops, whatever
// the shape. Printing runs in a loop through the nodes that print in parts
// (see BuildSQLPart) and recurses elsewhere, under TastMaxNestingDepth
// (tree/NestingGuard.h).
//
//   TastNodeBase   context, tag, generic Assign/Clone and the tree walks
//   TastExtender   a dialect's extra data and printing for one node
//   TastNode       a node proper: its extender, its slot in the context's registry
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "support/Class.h"
#include "support/WideString.h"
#include "tree/NodeFields.h"
#include "tree/TreeNodes.gen.h"

namespace mv {

class TSQLBuilder;
class TSQLBuilderSelectFormat;
class TSQLFromSource;
class TSQLObjectColumn;
class TSQLWithClauseItem;
class TmvConnection;
class TmvStatsObjects;
class TmvStatsColumns;

using TSQLFromSourceList = std::vector<TSQLFromSource*>;
using TSQLWithClauseItemList = std::vector<TSQLWithClauseItem*>;
using TSQLObjectColumnList = std::vector<TSQLObjectColumn*>;

class TastNodeBase : public TmvObject {
 public:
  static const TastNodeClass& StaticClass();
  const TmvClass& ClassType() const override { return StaticClass(); }
  virtual const TastNodeClass& NodeClass() const { return StaticClass(); }
  static const TastClassFields& StaticClassFields();
  virtual const TastClassFields& ClassFields() const { return StaticClassFields(); }

  TastNodeBase(const TastNodeBase&) = delete;
  TastNodeBase& operator=(const TastNodeBase&) = delete;

  TmvBaseSQLContext* SQLContext() const { return context_; }

  int32_t Tag = 0;  // one word of the caller's data; copied by Assign

  // Copies Tag and, field by field, clones of the source's children: a field
  // takes the source's child when the source has a field at the same index
  // declared by the same class, and is emptied otherwise. Lists alike.
  // Within a Clone, the copy's Assign leaves its children to that Clone,
  // which fills them in after it (see AfterChildrenAssigned).
  virtual void Assign(const TastNodeBase& source);
  // A deep copy under `context` (this node's own when null), made in a loop:
  // each copy is made by CloneInternal, and its children are filled in after
  // its Assign has returned.
  TmvOwned<TastNodeBase> Clone(TmvBaseSQLContext* context = nullptr) const;
  template <class T>
  TmvOwned<T> CloneAs(TmvBaseSQLContext* context = nullptr) const {
    return TmvOwned<T>(TmvCast<T>(Clone(context).release()));
  }
  // Makes a node of the own class and assigns this one to it. Called inside
  // a Clone, its copy is complete only when that Clone returns: call Clone
  // for a copy to work on.
  virtual TmvOwned<TastNodeBase> CloneInternal(TmvBaseSQLContext* context) const;

  // The child fields as addresses with their declaring classes, base first.
  void GetASTFields(TastFieldsList& list) const;

  // --- Walks. Children are listed in field order; list items stand at the
  // position of the class that declares the list. Lists are snapshots. The
  // recursive walks visit the nodes in the order that recursion would, but
  // keep their way down in a list of their own. ---
  virtual void GetMyChildren(TastNodeBaseList& list) const;
  // All children of this level, then each child's, recursively.
  void GetMyChildrenRecursive(TastNodeBaseList& list) const;
  using TastNodeCallback = std::function<void(TastNodeBase* node)>;
  // For each child: the callback, then its subtree.
  void TraverseASTTreeDepthFirst(const TastNodeCallback& callback) const;
  // The callback for all children first, then a depth-first walk of each.
  void TraverseASTTreeSiblingFirst(const TastNodeCallback& callback) const;
  // The number of non-null child fields before the first field declared by
  // `declaringClass` or a descendant of it.
  int FindFirstChildIndexForClass(const TmvClass& declaringClass) const;

  // --- Operations each class may refine, and their walks. ---
  virtual void SimplifyTree() {}
  void SimplifyTreeRecursive();  // own first, then the children
  virtual void RestoreColumnPrefix() {}
  // Own RestoreColumnPrefix when withSelf; then each child, with withSelf as
  // RestoresColumnPrefixOf says.
  void RestoreColumnPrefixRecursive(bool withSelf);
  // Whether RestoreColumnPrefixRecursive restores the prefix of `child` itself
  // (true; a source says false for its own name).
  virtual bool RestoresColumnPrefixOf(const TastNodeBase*) const { return true; }
  virtual void GetReferencedDatasources(TSQLFromSourceList&) {}
  void GetReferencedDatasourcesRecursive(TSQLFromSourceList& list);
  virtual void GetReferencedColumns(TSQLObjectColumnList&) {}
  void GetReferencedColumnsRecursive(TSQLObjectColumnList& list);
  virtual bool ReplaceReferencesToDatasource(TSQLFromSource*, TSQLFromSource*) { return false; }
  // Own first, then every child except the child that is `oldSource` itself.
  bool ReplaceReferencesToDatasourceRecursive(TSQLFromSource* oldSource, TSQLFromSource* newSource);
  // Children first, then own; true when nothing below refers to `source` any more.
  bool RemoveReferencesToDatasource(TSQLFromSource* source);
  // Frees each child field whose subtree refers to `source`. (Within
  // RemoveReferencesToDatasource the subtrees' answers are known already.)
  virtual void RemoveReferencesToDatasourceInternal(TSQLFromSource* source);
  // Puts a proxy of `proxyClass` in place of each sub-select held in a child
  // field or list; the proxy takes the statement over.
  virtual void MoveSubQueryInProxy(TmvObject* owner, const TSQLSubSelectStatementProxyClass& proxyClass);
  void MoveSubQueryInProxyRecursive(TmvObject* owner, const TSQLSubSelectStatementProxyClass& proxyClass);
  // Binds the names of this subtree: sources to metadata objects and with
  // items, columns to the sources they come from, parameters to the columns
  // they are compared with; fills the field lists on the way. `withItems`
  // and `fromSources` are what the surroundings put in sight (outer sources
  // first). A null connection means the metadata provider's own. Defined by
  // the metadata layer (metadata/QueryFixup.cpp).
  void PrepareAndFixupRecursive(const TSQLWithClauseItemList& withItems = {},
                                const TSQLFromSourceList& fromSources = {}, TmvConnection* connection = nullptr);

  // --- Statistics: the objects and columns the node and its subtree read
  // (tree/NodeStatistics.h). A caller runs PrepareCalcStatisticsRecursive,
  // then CalcStatisticsRecursive until it adds nothing. ---
  // Null until PrepareCalcStatistics makes them.
  TmvStatsObjects* StatsObjects() const;
  TmvStatsColumns* StatsColumns() const;
  // Makes the two lists when missing and clears them.
  virtual void PrepareCalcStatistics();
  // Own first, then the children.
  void PrepareCalcStatisticsRecursive();
  // Adds the children's lists to the own; the number of entries added.
  virtual int CalcStatistics();
  // The children's, each before its parent, then own; the sum of the entries added.
  int CalcStatisticsRecursive();
  // The children in the order the statistics gather them (all of them).
  virtual void GetStatisticsChildren(TastNodeBaseList& list) const { GetMyChildren(list); }

  // --- Helpers for subclasses. ---
  // Frees the destination's node and puts a clone of the source's under this node's context.
  void AssignASTField(TastFieldBase& destination, const TastFieldBase& source) const;
  static void DestroyASTField(TastFieldBase& field) { field.Reset(); }
  // For an Assign written by hand whose last steps need the node's children
  // complete: runs `fixUp` at once, or, when this node is a copy whose
  // children a Clone is still filling in, when that Clone has filled them
  // (the deepest copies' fix-ups first).
  void AfterChildrenAssigned(std::function<void()> fixUp);

 protected:
  explicit TastNodeBase(TmvBaseSQLContext* context) : context_(context) {}

 private:
  // Copies of the source's statistics lists, when it has them.
  void AssignStatistics(const TastNodeBase& source);

  struct TastNodeStatistics;
  struct TastNodeStatisticsDeleter {
    void operator()(TastNodeStatistics* statistics) const;
  };
  TmvBaseSQLContext* context_;
  std::unique_ptr<TastNodeStatistics, TastNodeStatisticsDeleter> statistics_;
};

// Frees the node in the field and empties the field.
inline void ClearASTField(TastFieldBase& field) { field.Reset(); }

// Makes a node in both construction phases; the caller owns it.
template <class T, class... Args>
TmvOwned<T> TastCreate(Args&&... args) {
  return TmvCreate<T>(std::forward<Args>(args)...);
}

// Makes an object of a class held as a value; null (nothing leaks) when the
// class is abstract or its objects are no T.
template <class T>
TmvOwned<T> TastCreateOfClass(const TastNodeClass& nodeClass, TmvBaseSQLContext* context) {
  TmvOwned<TastNodeBase> object(nodeClass.CreateRaw(context));
  if (!TmvCast<T>(object.get())) return nullptr;
  return TmvOwned<T>(static_cast<T*>(object.release()));
}

// A dialect's extension of one node: extra clauses as child fields, and the
// power to print or edit instead of the node.
class TastExtender : public TastNodeBase {
  MV_AST_NODE(TastExtender);

 public:
  // Default: the node's own property editing.
  virtual bool EditPropsForNode(TastNode* node, TmvObject* sender);
  // Default: the node's own printing; an extender may print before, after or instead.
  virtual void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
};

class TastNode : public TastExtender {
  MV_AST_NODE(TastNode);

 public:
  ~TastNode() override;
  // Gives the node the extender its dialect registers for its class.
  void AfterConstruction() override;

  // This node's slot in the context's registry; -1 without a context.
  int32_t ContextIndex() const { return contextIndex_; }

  virtual bool EditPropsInternal(TastNode* node, TmvObject* sender);
  // Asks the provider for the extender class of this node's class: none
  // frees the extender, a new class replaces it (carrying over what Assign can).
  virtual void UpdateExtender();
  // The dialect of the context changed.
  virtual void SyntaxProviderChanged();
  // The one way to print a node: the builder's begin event, the extender's
  // printing or the node's own, the end event. Each call is one level of
  // TastNestingGuard.
  virtual void BuildSQL(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // The node's own printing; children are printed through BuildSQL.
  virtual void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);

  // --- Printing in parts. A node whose text is that of its children with
  // words, symbols and blanks between them describes it part by part; its
  // class is marked "parts" in the node table, which makes its BuildSQLDirect
  // (final) print the parts and PrintsInParts true. Children that print in
  // parts and have no extender are printed in the same loop, with the
  // builder's begin and end events that BuildSQL would fire, so a chain of
  // such nodes of any length needs no deep recursion. ---
  // Part `index`: writes its words and symbols, and may name a child to print
  // after them (`child`, null for none); false past the last part.
  virtual bool BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                            TastNode*& child);
  virtual bool PrintsInParts() const { return false; }
  // The node's text as that builder alone prints it.
  WideString SimpleSQL(TSQLBuilder& builder);
  // Edits a clone (through the extender if any) and takes it over when accepted.
  bool EditProps(TmvObject* sender);

  // Prints a node when it is there, and then Space(3) when asked.
  static void BuildASTField(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                            bool withSpace = false);

 protected:
  // The BuildSQLDirect of a class that prints in parts.
  void BuildSQLInParts(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);

 private:
  int32_t contextIndex_ = -1;
};

// A pluggable walk: a subclass carries a scope down the tree by returning a
// scope object from EnterIntoNode, and may visit children in its own order.
// The walk keeps the open nodes in a list of its own, not on the stack.
class TastNodeVisitor {
 public:
  virtual ~TastNodeVisitor() = default;
  // Starts a walk at `node` with no parent.
  void Visit(TastNodeBase* node, TmvObject* data);

 protected:
  // Default: the node's children in declaration order.
  virtual TastNodeBaseList GetNodeChildren(TastNodeBase* node, TastNodeBase* parent, TmvObject* data,
                                           TmvObject* nodeData);
  virtual TmvOwned<TmvObject> EnterIntoNode(TastNodeBase* node, TastNodeBase* parent, TmvObject* data) = 0;
  virtual void VisitingNode(TastNodeBase*, TastNodeBase*, TmvObject*, TmvObject*) {}
  virtual void ExitFromNode(TastNodeBase*, TastNodeBase*, TmvObject*, TmvObject*) {}

};

}  // namespace mv
