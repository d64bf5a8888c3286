// The row-limit forms of the dialects (Top, First/Skip, Rows, Limit/Offset).
// They are not fields of a select expression: a dialect's extender of the
// select holds them and prints them where its dialect wants them.
#pragma once

#include "tree/AstNode.h"

namespace mv {

class TSQLSubQueryTopPart : public TastNode {
  MV_AST_NODE(TSQLSubQueryTopPart);
};

class TSQLSubQueryTopWithTies : public TastNode {
  MV_AST_NODE(TSQLSubQueryTopWithTies);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLSubQueryTopStartingAt : public TastNode {
  MV_AST_NODE(TSQLSubQueryTopStartingAt);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Top n [Start At m] [With Ties]
class TSQLSubQueryTopRows : public TSQLSubQueryTopPart {
  MV_AST_NODE(TSQLSubQueryTopRows);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Top n Percent [With Ties]
class TSQLSubQueryTopPercent : public TSQLSubQueryTopRows {
  MV_AST_NODE(TSQLSubQueryTopPercent);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// First [n] [Skip m]
class TSQLSubQueryFirstSkipClause : public TSQLSubQueryTopPart {
  MV_AST_NODE(TSQLSubQueryFirstSkipClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Rows low [To|By high] [Percent] [With Ties]
class TSQLSubQueryRowsClause : public TSQLSubQueryTopPart {
  MV_AST_NODE(TSQLSubQueryRowsClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The numbers of these four are plain integers printed in decimal.
class TSQLLimit : public TastNode {
  MV_AST_NODE(TSQLLimit);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLOffset : public TastNode {
  MV_AST_NODE(TSQLOffset);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Limit offset, limit
class TSQLOffsetLimit : public TSQLLimit {
  MV_AST_NODE(TSQLOffsetLimit);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Limit limit Offset offset
class TSQLLimitOffset : public TSQLOffsetLimit {
  MV_AST_NODE(TSQLLimitOffset);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

}  // namespace mv
