#include "dialects/mysql/MYSQLNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

const char16_t* MySQLOptionWord(TMYSQLSubQuerySelectOption option) {
  static const char16_t* const kWords[] = {u"High_Priority",    u"Straight_Join", u"SQL_Small_Result",
                                           u"SQL_Big_Result",   u"SQL_Buffer_Result", u"SQL_Cache",
                                           u"SQL_No_Cache",     u"SQL_Calc_Found_Rows"};
  return kWords[option];
}

WideString MySQLIntervalUnit(WideStringView text) {
  static const char16_t* const kUnits[] = {
      u"Microsecond",        u"Second",      u"Minute",          u"Hour",        u"Day",        u"Week",
      u"Month",              u"Quarter",     u"Year",            u"Second_Microsecond", u"Minute_Microsecond",
      u"Minute_Second",      u"Hour_Microsecond", u"Hour_Second", u"Hour_Minute", u"Day_Microsecond",
      u"Day_Second",         u"Day_Minute",  u"Day_Hour",        u"Year_Month"};
  for (const char16_t* unit : kUnits)
    if (WideSameText(text, unit)) return unit;
  return WideString(text);
}

namespace {

// Space(3) and the word.
void Word(TSQLBuilder& builder, const char16_t* word) {
  builder.Space(3);
  builder.WriteKeyword(word);
}

// Space(3), the words, Space(3) and the value, when there is one.
void Clause(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, std::initializer_list<const char16_t*> words,
            TastNode* value) {
  if (!value) return;
  for (const char16_t* word : words) Word(builder, word);
  builder.Space(3);
  value->BuildSQL(builder, format);
}

}  // namespace

void TMYSQLSelectIntoOutfile::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"Into");
  Word(builder, u"Outfile");
  builder.Space(3);
  builder.AddIndent(format.IndentInPart());
  BuildASTField(FileName.get(), builder, format);
  if (FieldsTerminatedBy || FieldsEnclosedBy || FieldsEscapedBy) {
    Word(builder, u"Fields");
    Clause(builder, format, {u"Terminated", u"By"}, FieldsTerminatedBy.get());
    if (FieldsEnclosedBy && Optionally) Word(builder, u"Optionally");
    Clause(builder, format, {u"Enclosed", u"By"}, FieldsEnclosedBy.get());
    Clause(builder, format, {u"Escaped", u"By"}, FieldsEscapedBy.get());
  }
  if (LinesStartingBy || LinesTerminatedBy) {
    Word(builder, u"Lines");
    Clause(builder, format, {u"Starting", u"By"}, LinesStartingBy.get());
    Clause(builder, format, {u"Terminated", u"By"}, LinesTerminatedBy.get());
  }
  builder.EndIndent();
}

void TMYSQLSelectIntoDumpFile::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"Into");
  Word(builder, u"Dumpfile");
  builder.Space(3);
  builder.AddIndent(format.IndentInPart());
  BuildASTField(FileName.get(), builder, format);
  builder.EndIndent();
}

void TMYSQLSubQuerySelectExpressionExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                             const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  select->BuildSelectList(builder, format, nullptr, [&] {
    for (uint8_t option = myopHighPriority; option <= myopSQLCalcFoundRows; ++option)
      if (HasOption(static_cast<TMYSQLSubQuerySelectOption>(option)))
        Word(builder, MySQLOptionWord(static_cast<TMYSQLSubQuerySelectOption>(option)));
  });
  if (IntoFile) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    IntoFile->BuildSQL(builder, format);
  }
  select->BuildFromClause(builder, format);
  select->BuildWhereClause(builder, format);
  select->BuildGroupByClause(builder, format);
  select->BuildHavingClause(builder, format);
  select->BuildOrderByClause(builder, format);
  if (Limit) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    Limit->BuildSQL(builder, format);
  }
  if (Procedure) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    builder.WriteKeyword(u"Procedure");
    builder.Space(3);
    builder.AddIndent(format.IndentInPart());
    Procedure->BuildSQL(builder, format);
    builder.EndIndent();
  }
  if (LockMode == mylmForUpdate || LockMode == mylmLockInShare) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    builder.AddIndent(format.IndentInPart());
    if (LockMode == mylmForUpdate) {
      builder.WriteKeyword(u"For");
      Word(builder, u"Update");
    } else {
      builder.WriteKeyword(u"Lock");
      for (const char16_t* word : {u"In", u"Share", u"Mode"}) Word(builder, word);
    }
    builder.EndIndent();
  }
}

void TMYSQLGroupByListExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                const TSQLBuilderSelectFormat& format) {
  TastExtender::BuildSQLForNode(node, builder, format);
  if (WithRollup && TmvCast<TSQLGroupByList>(node)) {
    Word(builder, u"With");
    Word(builder, u"Rollup");
  }
}

void TMYSQLastTokenStringExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                   const TSQLBuilderSelectFormat& format) {
  if (Introducer) Introducer->BuildSQL(builder, format);
  TastExtender::BuildSQLForNode(node, builder, format);
  if (Collation) {
    Word(builder, u"Collate");
    builder.Space(3);
    Collation->BuildSQL(builder, format);
  }
}

}  // namespace mv
