#include "component/ExpressionBuilderParams.h"

#include "model/Datasources.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"

namespace mv {

TmvExpressionBuilderParams::TmvExpressionBuilderParams(TmvQueryBuilder* queryBuilder, TmvSelectItem* selectItem,
                                                       int conditionIndex, int left, int top, int width, int height,
                                                       WideString oldExpression, std::vector<WideString> completions)
    : queryBuilder_(queryBuilder),
      selectItem_(selectItem),
      conditionIndex_(conditionIndex),
      left_(left),
      top_(top),
      width_(width),
      height_(height),
      oldExpression_(std::move(oldExpression)),
      completions_(std::move(completions)) {
  if (selectItem_) selectItem_->OnDestroying().AddHandler(this, &TmvExpressionBuilderParams::SelectItemDestroying);
}

TmvExpressionBuilderParams::~TmvExpressionBuilderParams() { Detach(); }

std::shared_ptr<ImvExpressionBuilderParams> TmvExpressionBuilderParams::Create(
    TmvQueryBuilder* queryBuilder, TmvSelectItem* selectItem, int conditionIndex, int left, int top, int width,
    int height, WideString oldExpression, std::vector<WideString> completions) {
  return std::make_shared<TmvExpressionBuilderParams>(queryBuilder, selectItem, conditionIndex, left, top, width,
                                                      height, std::move(oldExpression), std::move(completions));
}

void TmvExpressionBuilderParams::Detach() {
  if (!selectItem_) return;
  selectItem_->OnDestroying().RemoveHandler(this, &TmvExpressionBuilderParams::SelectItemDestroying);
  selectItem_ = nullptr;
}

void TmvExpressionBuilderParams::SelectItemDestroying(TmvObject*) { Detach(); }

void TmvExpressionBuilderParams::CheckValid() const {
  if (!selectItem_) throw EmvQueryBuilderError(u"This TmvExpressionBuilderParams object is not valid.");
}

void TmvExpressionBuilderParams::Set_NewExpression(const WideString& text) {
  CheckValid();
  if (conditionIndex_ != -1)
    selectItem_->SetConditionString(conditionIndex_, text);
  else
    selectItem_->SetExpressionStringUI(text);
}

TmvExpressionBuilderExpressionKind TmvExpressionBuilderParams::Get_ExpressionKind() const {
  if (!selectItem_ || conditionIndex_ < 0) return ekExpression;
  switch (selectItem_->ConditionsType()) {
    case ctWhere: return ekWhere;
    case ctHaving: return ekHaving;
    default: return ekExpression;
  }
}

WideString TmvExpressionBuilderParams::Get_RelatedExpression() const {
  return selectItem_ ? selectItem_->GetExpressionString() : WideString();
}

TmvMetadataField* TmvExpressionBuilderParams::Get_RelatedField() const {
  return selectItem_ ? selectItem_->GetExpressionField() : nullptr;
}

TmvMetadataObject* TmvExpressionBuilderParams::Get_RelatedObject() const {
  TmvDatasource* datasource = selectItem_ ? selectItem_->GetExpressionDatasource() : nullptr;
  return datasource ? datasource->GetMetadataObject() : nullptr;
}

}  // namespace mv
