// Statements and their union structure. A statement is a tree of union
// members: a select expression is one member, a bracketed group of members
// is another; a sub-select is a group with the clauses that apply to the
// whole union, and a select statement is that group at the top of a text.
#pragma once

#include <functional>

#include <initializer_list>

#include "tree/ExpressionBase.h"
#include "tree/MetadataHooks.h"

namespace mv {

class TSQLSubQueryExpression : public TastNode {
  MV_AST_NODE(TSQLSubQueryExpression);

 public:
  // The operator that joins this member to the one before it, with "All".
  void BuildUnionOperator(TSQLBuilder& builder);
  WideString GetSimpleUnionOperator(TSQLBuilder& builder);
};

// One select: select list, from, where, group by, having, window, order by,
// result offset, fetch first.
class TSQLSubQuerySelectExpression : public TSQLSubQueryExpression {
  MV_AST_NODE(TSQLSubQuerySelectExpression);

 public:
  // "Select", the mode and the items; a dialect's own words (Top, First,
  // options) go before or after the mode.
  void BuildSelectList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                       const std::function<void()>& beforeMode = nullptr, const std::function<void()>& afterMode = nullptr);
  void BuildSelectMode(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildSelectListItems(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildFromClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildWhereClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildGroupByClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildHavingClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildWindowClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildOrderByClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildResultOffsetClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildFetchFirstClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

  // The columns this select returns, as the last fix-up found them.
  TmvMetadataFieldsList* ResultFields() const { return resultFields_.Get(SQLContext()); }

  // Also gives each field of ResultFields what its select item reads (for
  // an item of all columns, what each source field behind it reads), in the
  // order the fix-up made them (metadata/TreeStatistics.cpp).
  void PrepareCalcStatistics() override;
  int CalcStatistics() override;

 private:
  mutable TastOwnedFieldsList resultFields_;
};

// A bracketed group of members; the members are not child fields but a list.
class TSQLSubQueryExpressions : public TSQLSubQueryExpression {
  MV_AST_NODE(TSQLSubQueryExpressions);

 public:
  virtual TSQLSubQueryExpression* GetItems(int index) const;
  virtual int GetCount() const;
  virtual TSQLSubQueryExpression* Add(TmvOwned<TSQLSubQueryExpression> expression);
  virtual int Remove(const TastNode* node);
  virtual void Delete(int index);
  virtual TmvOwned<TSQLSubQueryExpression> Extract(const TSQLSubQueryExpression* expression);
  virtual TmvOwned<TSQLSubQueryExpression> Extract(int index);
  virtual void Clear();
  // The first select expression, looking into groups in order; null if none.
  virtual TSQLSubQuerySelectExpression* FirstUnionSubQuery() const;

  // The members joined by their union operators; a group member in brackets.
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLSubSelectStatement : public TSQLSubQueryExpressions {
  MV_AST_NODE(TSQLSubSelectStatement);

 public:
  void BuildWithClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildSelects(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildOrderByClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildResultOffsetClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildFetchFirstClause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // The With clause first, so that the members read what its items learnt.
  void GetStatisticsChildren(TastNodeBaseList& list) const override;
};

// The statement of a whole text, indented by the format's IndentGlobal.
class TSQLSelectStatement : public TSQLSubSelectStatement {
  MV_AST_NODE(TSQLSelectStatement);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Stands in a tree where the query model took a sub-select over: the tree
// keeps its shape while the model owns the content. It prints, and clones
// into, the statement that GenerateASTTree makes; it has no members of its own.
class TSQLSubSelectStatementProxy : public TSQLSubSelectStatement {
  MV_AST_NODE(TSQLSubSelectStatementProxy);

 public:
  // Takes `statement` over.
  TSQLSubSelectStatementProxy(TmvBaseSQLContext* context, TmvObject* owner, TastNodeBase* parent,
                              TSQLSubSelectStatement* statement);
  ~TSQLSubSelectStatementProxy() override;

  TmvObject* Owner() const { return owner_; }
  TastNodeBase* ParentNode() const { return parent_; }
  // The statement taken over (null once released).
  TSQLSubSelectStatement* Statement() const { return statement_.get(); }

  // A new statement that reflects the present state, owned by the caller.
  virtual TmvOwned<TSQLSubSelectStatement> GenerateASTTree(TmvBaseSQLContext* context) = 0;

  void BuildSQL(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  TmvOwned<TastNodeBase> CloneInternal(TmvBaseSQLContext* context) const override;
  // Assign (by hand) raises: a proxy is never assigned.
  void GetMyChildren(TastNodeBaseList& list) const override;
  TSQLSubQueryExpression* GetItems(int index) const override;
  int GetCount() const override;
  // Raises: a proxy has no members.
  TSQLSubQueryExpression* Add(TmvOwned<TSQLSubQueryExpression> expression) override;
  int Remove(const TastNode* node) override;
  void Delete(int index) override;
  TmvOwned<TSQLSubQueryExpression> Extract(const TSQLSubQueryExpression* expression) override;
  TmvOwned<TSQLSubQueryExpression> Extract(int index) override;
  void Clear() override;
  TSQLSubQuerySelectExpression* FirstUnionSubQuery() const override;

 protected:
  TmvOwned<TSQLSubSelectStatement> ReleaseStatement() { return std::move(statement_); }

 private:
  TmvObject* owner_ = nullptr;
  TastNodeBase* parent_ = nullptr;
  TmvOwned<TSQLSubSelectStatement> statement_;
};

// What a dialect's statement extender prints: the statement as the standard
// prints it, then each of `clauses` that is set, after a break of the main
// parts; `whole` indents the lot as a whole statement does.
void BuildStatementWithClauses(TSQLSubSelectStatement& statement, TSQLBuilder& builder,
                               const TSQLBuilderSelectFormat& format, std::initializer_list<TastNode*> clauses,
                               bool whole);

}  // namespace mv
