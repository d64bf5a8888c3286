// Node classes and extenders of the MySQL dialect (fields in MYSQLNodes.def):
// the file of SELECT ... INTO OUTFILE or DUMPFILE, and the extenders that
// keep with a select its options, into file, limit, procedure and lock
// mode, with a group list WITH ROLLUP, and with a string its character set
// introducer and collation, printing them where the dialect wants them.
#pragma once

#include "tree/AstNode.h"
#include "tree/ExpressionBase.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

// The select options, in the order they print.
enum TMYSQLSubQuerySelectOption : uint8_t {
  myopHighPriority,
  myopStraightJoin,
  myopSQLSmallResult,
  myopSQLBigResult,
  myopSQLBufferResult,
  myopSQLCache,
  myopSQLNoCache,
  myopSQLCalcFoundRows,
};

enum TMYSQLSubQueryLockMode : uint8_t { mylmNone, mylmForUpdate, mylmLockInShare };

// The bit of an option in a TMYSQLSubQuerySelectExpressionExtender's set.
constexpr uint8_t MySQLOptionBit(TMYSQLSubQuerySelectOption option) { return static_cast<uint8_t>(1u << option); }
// The word of an option as it prints.
const char16_t* MySQLOptionWord(TMYSQLSubQuerySelectOption option);
// The unit of an INTERVAL as it prints (Day_Hour for day_hour).
WideString MySQLIntervalUnit(WideStringView text);

}  // namespace mv

#include "dialects/mysql/MYSQLNodes.gen.h"

namespace mv {

// Prints nothing of its own; see the two below.
class TMYSQLSelectIntoFile : public TastNode {
  MV_AST_NODE(TMYSQLSelectIntoFile);
};

// Into Outfile 'name' [Fields [Terminated By s] [[Optionally] Enclosed By s]
// [Escaped By s]] [Lines [Starting By s] [Terminated By s]]
class TMYSQLSelectIntoOutfile : public TMYSQLSelectIntoFile {
  MV_AST_NODE(TMYSQLSelectIntoOutfile);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Into Dumpfile 'name'
class TMYSQLSelectIntoDumpFile : public TMYSQLSelectIntoFile {
  MV_AST_NODE(TMYSQLSelectIntoDumpFile);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Select [mode] [options] items [into file] From ... Where ... Group By ...
// Having ... Order By ... [Limit] [Procedure f(...)] [For Update | Lock In
// Share Mode].
class TMYSQLSubQuerySelectExpressionExtender : public TastExtender {
  MV_AST_NODE(TMYSQLSubQuerySelectExpressionExtender);

 public:
  bool HasOption(TMYSQLSubQuerySelectOption option) const { return (Options & MySQLOptionBit(option)) != 0; }
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The group list, then With Rollup.
class TMYSQLGroupByListExtender : public TastExtender {
  MV_AST_NODE(TMYSQLGroupByListExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The introducer right before the string, then Collate name.
class TMYSQLastTokenStringExtender : public TastExtender {
  MV_AST_NODE(TMYSQLastTokenStringExtender);

 public:
  void BuildSQLForNode(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// The extender of that class on a node, or null.
template <class T>
T* MySQLExtenderOf(const TastNode* node) {
  return node ? TmvCast<T>(node->Extender.get()) : nullptr;
}

}  // namespace mv
