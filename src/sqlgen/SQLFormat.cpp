#include "sqlgen/SQLFormat.h"

namespace mv {

MV_DEFINE_CLASS(TSQLBuilderItemsListFormat, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TSQLBuilderConditionFormat, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TSQLBuilderFromClauseFormat, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TSQLBuilderSelectFormat, TmvUpdatablePersistent)

void TSQLBuilderItemsListFormat::Assign(const TmvPersistent* persistent) {
  const auto* typed = TmvCast<TSQLBuilderItemsListFormat>(persistent);
  if (!typed) {
    TmvUpdatablePersistent::Assign(persistent);
    return;
  }
  if (typed == this) return;
  const TSQLBuilderItemsListFormat& source = *typed;
  TmvUpdateBatch batch(*this);
  SetNewLineAfterItem(source.newLineAfterItem_);
  SetNewLineBeforeComma(source.newLineBeforeComma_);
}

void TSQLBuilderConditionFormat::Assign(const TmvPersistent* persistent) {
  const auto* typed = TmvCast<TSQLBuilderConditionFormat>(persistent);
  if (!typed) {
    TmvUpdatablePersistent::Assign(persistent);
    return;
  }
  if (typed == this) return;
  const TSQLBuilderConditionFormat& source = *typed;
  TmvUpdateBatch batch(*this);
  SetNewLineBefore(source.newLineBefore_);
  SetNewLineAfter(source.newLineAfter_);
  SetIndentNestedConditions(source.indentNestedConditions_);
}

TSQLBuilderFromClauseFormat::TSQLBuilderFromClauseFormat(ImvBatchUpdatable* parent)
    : joinConditionFormat_(this) {
  SetParent(parent);
}

void TSQLBuilderFromClauseFormat::Assign(const TmvPersistent* persistent) {
  const auto* typed = TmvCast<TSQLBuilderFromClauseFormat>(persistent);
  if (!typed) {
    TmvUpdatablePersistent::Assign(persistent);
    return;
  }
  if (typed == this) return;
  const TSQLBuilderFromClauseFormat& source = *typed;
  TmvUpdateBatch batch(*this);
  SetNewLineAfterDatasource(source.newLineAfterDatasource_);
  SetNewLineAfterJoin(source.newLineAfterJoin_);
  SetNewLineBeforeComma(source.newLineBeforeComma_);
  SetNewLineBeforeJoinExpression(source.newLineBeforeJoinExpression_);
  joinConditionFormat_.Assign(source.joinConditionFormat_);
}

TSQLBuilderSelectFormat::TSQLBuilderSelectFormat(ImvBatchUpdatable* parent)
    : selectListFormat_(this),
      fromClauseFormat_(this),
      whereFormat_(this),
      groupByFormat_(this),
      havingFormat_(this),
      windowFormat_(this),
      orderByFormat_(this) {
  SetParent(parent);
}

void TSQLBuilderSelectFormat::Assign(const TmvPersistent* persistent) {
  const auto* typed = TmvCast<TSQLBuilderSelectFormat>(persistent);
  if (!typed) {
    TmvUpdatablePersistent::Assign(persistent);
    return;
  }
  if (typed == this) return;
  const TSQLBuilderSelectFormat& source = *typed;
  TmvUpdateBatch batch(*this);
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
}

}  // namespace mv
