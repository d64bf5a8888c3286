// Node classes and extenders of the Oracle dialect (fields in
// OracleNodes.def): FOR UPDATE, the hierarchical clause in its two orders,
// the MODEL clause and its parts, ONLY and TABLE sources, partitions and
// samples of a table, WITH READ ONLY and WITH CHECK OPTION, and the
// extenders that keep them with the standard nodes and print them in the
// places the dialect wants them.
#pragma once

#include <cstdint>

#include "tree/AstNode.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

enum ToraSQLForUpdateWaitMode : uint8_t { owmDefault, owmNoWait, owmWait };
enum ToraNavType : uint8_t { ntNone, ntIgnore, ntKeep };
enum ToraUniqueType : uint8_t { uqtNone, uqtDimension, uqtSingleReference };
enum ToraModelReturnRows : uint8_t { rrAll, rrUpdated };
enum ToraSQLModelUpdateType : uint8_t { utNone, utUpdate, utUpsert, utUpsertAll };
enum ToraSQLModelOrderType : uint8_t { otNone, otAutomatic, otSequental };
enum ToraPartitionType : uint8_t { opPartition, opSubPartition };
enum ToraSQLSubQueryRestriction : uint8_t { osrWithReadOnly, osrWithCheckOption };

}  // namespace mv

#include "dialects/oracle/OracleNodes.gen.h"

namespace mv {


// For Update [Of columns] [NoWait | Wait n]
class ToraSQLForUpdateClause : public TastNodeWithList {
  MV_AST_NODE(ToraSQLForUpdateClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Start With condition, then Connect By [NoCycle] condition.
class ToraSQLHierarchicalQueryClause : public TastNode {
  MV_AST_NODE(ToraSQLHierarchicalQueryClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // Nothing without a start condition.
  void BuildStartWith(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildConnectBy(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
};

// The same parts, Connect By first.
class ToraSQLHierarchicalQueryClause2 : public ToraSQLHierarchicalQueryClause {
  MV_AST_NODE(ToraSQLHierarchicalQueryClause2);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// [Ignore Nav | Keep Nav] [Unique Dimension | Unique Single Reference]
class ToraSQLModelCellReferenceOptions : public TastNode {
  MV_AST_NODE(ToraSQLModelCellReferenceOptions);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Return All | Updated Rows
class ToraSQLModelReturnRowsClause : public TastNode {
  MV_AST_NODE(ToraSQLModelReturnRowsClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// expression [[As] alias]
class ToraSQLModelColumn : public TastNode {
  MV_AST_NODE(ToraSQLModelColumn);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class ToraSQLModelColumnsList : public TastNodeWithList {
  MV_AST_NODE(ToraSQLModelColumnsList);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// [Partition By ... [alias]] Dimension By (...) Measures (...)
class ToraSQLModelColumnClauses : public TastNode {
  MV_AST_NODE(ToraSQLModelColumnClauses);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// measure[items]
class ToraSQLModelCellAssignment : public TastNodeWithList {
  MV_AST_NODE(ToraSQLModelCellAssignment);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// [Update | Upsert [All]] cell [Order By ...] = expression
class ToraSQLModelRuleItem : public TastNode {
  MV_AST_NODE(ToraSQLModelRuleItem);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Rules [Update | Upsert [All]] [Automatic | Sequental Order]
// [Iterate(n) [Until (condition)]] (rules)
class ToraSQLModelRulesClause : public TastNodeWithList {
  MV_AST_NODE(ToraSQLModelRulesClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Reference name On (query) columns [options]
class ToraSQLModelReference : public TastNode {
  MV_AST_NODE(ToraSQLModelReference);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// [MAIN name] columns [options] rules
class ToraSQLModelMain : public TastNode {
  MV_AST_NODE(ToraSQLModelMain);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Model [options] [return rows] [references] main
class ToraSQLModelClause : public TastNodeWithList {
  MV_AST_NODE(ToraSQLModelClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Only (object)
class ToraSQLFromObjectOnly : public TSQLFromObject {
  MV_AST_NODE(ToraSQLFromObjectOnly);

 public:
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Partition (name) | SubPartition (name)
class ToraSQLPartitionClause : public TastNode {
  MV_AST_NODE(ToraSQLPartitionClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Sample [Block] (percentage) [Seed (value)]
class ToraSQLSampleClause : public TastNode {
  MV_AST_NODE(ToraSQLSampleClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Table (collection [(arguments)])
class ToraSQLFromCollection : public TSQLFromSource {
  MV_AST_NODE(ToraSQLFromCollection);

 public:
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// With Read Only | With Check Option [Constraint name]
class ToraSQLSubQueryRestrictionClause : public TastNode {
  MV_AST_NODE(ToraSQLSubQueryRestrictionClause);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A derived table: (query [restriction]) alias.
class ToraSQLFromQueryExtender : public TastExtender {
  MV_AST_NODE(ToraSQLFromQueryExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A source with its partition and sample before the alias and its query
// partition after it.
class ToraSQLFromSourceExtender : public TastExtender {
  MV_AST_NODE(ToraSQLFromSourceExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A select expression with its hierarchical clause after the where and its
// model clause after the having; no row limit of any kind.
class ToraSQLSubQueryExtender : public TastExtender {
  MV_AST_NODE(ToraSQLSubQueryExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A statement with For Update and the restriction after its order.
class ToraSQLSelectStatementExtender : public TastExtender {
  MV_AST_NODE(ToraSQLSelectStatementExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A with item with its search and cycle clauses.
class ToraWithClauseItemExtender : public TastExtender {
  MV_AST_NODE(ToraWithClauseItemExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* OracleExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

// A keyword of the dialect in its usual spelling (varchar2 -> VarChar2,
// sysdate -> SysDate); a word not known keeps its text.
WideString OracleTypeWord(const WideString& text);

}  // namespace mv
