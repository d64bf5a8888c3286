#include "sqlgen/SQLFormat.h"

namespace mv {

MV_DEFINE_CLASS(TSQLBuilderItemsListFormat, TmvObject)
MV_DEFINE_CLASS(TSQLBuilderConditionFormat, TmvObject)
MV_DEFINE_CLASS(TSQLBuilderFromClauseFormat, TmvObject)
MV_DEFINE_CLASS(TSQLBuilderSelectFormat, TmvObject)

void TSQLBuilderItemsListFormat::Assign(const TSQLBuilderItemsListFormat& source) {
  if (&source == this) return;
  BeginUpdate();
  SetNewLineAfterItem(source.newLineAfterItem_);
  SetNewLineBeforeComma(source.newLineBeforeComma_);
  EndUpdate();
}

void TSQLBuilderConditionFormat::Assign(const TSQLBuilderConditionFormat& source) {
  if (&source == this) return;
  BeginUpdate();
  SetNewLineBefore(source.newLineBefore_);
  SetNewLineAfter(source.newLineAfter_);
  SetIndentNestedConditions(source.indentNestedConditions_);
  EndUpdate();
}

TSQLBuilderFromClauseFormat::TSQLBuilderFromClauseFormat(TmvSimpleUpdatable* parent)
    : joinConditionFormat_(this) {
  SetParent(parent);
}

void TSQLBuilderFromClauseFormat::Assign(const TSQLBuilderFromClauseFormat& source) {
  if (&source == this) return;
  BeginUpdate();
  SetNewLineAfterDatasource(source.newLineAfterDatasource_);
  SetNewLineAfterJoin(source.newLineAfterJoin_);
  SetNewLineBeforeComma(source.newLineBeforeComma_);
  SetNewLineBeforeJoinExpression(source.newLineBeforeJoinExpression_);
  joinConditionFormat_.Assign(source.joinConditionFormat_);
  EndUpdate();
}

TSQLBuilderSelectFormat::TSQLBuilderSelectFormat(TmvSimpleUpdatable* parent)
    : selectListFormat_(this),
      fromClauseFormat_(this),
      whereFormat_(this),
      groupByFormat_(this),
      havingFormat_(this),
      windowFormat_(this),
      orderByFormat_(this) {
  SetParent(parent);
}

void TSQLBuilderSelectFormat::Assign(const TSQLBuilderSelectFormat& source) {
  if (&source == this) return;
  BeginUpdate();
  SetIndentGlobal(source.indentGlobal_);
  SetMainPartsFromNewLine(source.mainPartsFromNewLine_);
  SetIndentInPart(source.indentInPart_);
  SetNewLineAfterPartKeywords(source.newLineAfterPartKeywords_);
  selectListFormat_.Assign(source.selectListFormat_);
  fromClauseFormat_.Assign(source.fromClauseFormat_);
  whereFormat_.Assign(source.whereFormat_);
  groupByFormat_.Assign(source.groupByFormat_);
  havingFormat_.Assign(source.havingFormat_);
  windowFormat_.Assign(source.windowFormat_);
  orderByFormat_.Assign(source.orderByFormat_);
  EndUpdate();
}

}  // namespace mv
