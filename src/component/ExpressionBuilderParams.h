// What the query builder hands a host's own expression editor when the user
// presses the button of an expression or criteria cell of the grid
// (OnCustomExpressionBuilder): where the cell is, what it holds, what the
// row refers to, and the way back (Set_NewExpression).
//
//   builder->OnCustomExpressionBuilder = [](TmvQueryBuilder*, std::shared_ptr<ImvExpressionBuilderParams> params) {
//     WideString text = EditInMyDialog(params->Get_OldExpression());
//     if (params->Get_Valid()) params->Set_NewExpression(text);
//   };
//
// The host may keep the interface as long as it likes, also across a change
// of the query: once the row is gone it is no longer valid (Get_Valid is
// false and Set_NewExpression raises), but it stays safe to call.
#pragma once

#include <memory>
#include <vector>

#include "support/WideString.h"

namespace mv {

class TmvMetadataField;
class TmvMetadataObject;
class TmvObject;
class TmvQueryBuilder;
class TmvSelectItem;

enum TmvExpressionBuilderExpressionKind { ekExpression, ekWhere, ekHaving };

class ImvExpressionBuilderParams {
 public:
  virtual ~ImvExpressionBuilderParams() = default;
  // The screen rectangle of the cell.
  virtual int Get_Left() const = 0;
  virtual int Get_Top() const = 0;
  virtual int Get_Width() const = 0;
  virtual int Get_Height() const = 0;
  // The text of the cell when the editor was asked for.
  virtual WideString Get_OldExpression() const = 0;
  // Puts the edited text into the cell's row (the expression, or the
  // criteria of the cell's condition column). Raises EmvQueryBuilderError
  // once the row is gone.
  virtual void Set_NewExpression(const WideString& text) = 0;
  // The row still exists.
  virtual bool Get_Valid() const = 0;
  // The row; null once it is gone.
  virtual TmvSelectItem* Get_SelectItem() const = 0;
  // Names the editor may offer.
  virtual const std::vector<WideString>& Get_CompletionsList() const = 0;
  // A criteria cell of a WHERE or HAVING row, else the expression.
  virtual TmvExpressionBuilderExpressionKind Get_ExpressionKind() const = 0;
  // The row's expression as text.
  virtual WideString Get_RelatedExpression() const = 0;
  // The field the row's expression is, or null.
  virtual TmvMetadataField* Get_RelatedField() const = 0;
  // The metadata object of the datasource of the row's expression, or null.
  virtual TmvMetadataObject* Get_RelatedObject() const = 0;
  // -1 for the expression cell, else the condition column.
  virtual int Get_ConditionIndex() const = 0;
};

class TmvExpressionBuilderParams final : public ImvExpressionBuilderParams {
 public:
  // Listens to the row's OnDestroying from here on.
  TmvExpressionBuilderParams(TmvQueryBuilder* queryBuilder, TmvSelectItem* selectItem, int conditionIndex, int left,
                             int top, int width, int height, WideString oldExpression,
                             std::vector<WideString> completions);
  ~TmvExpressionBuilderParams() override;
  TmvExpressionBuilderParams(const TmvExpressionBuilderParams&) = delete;
  TmvExpressionBuilderParams& operator=(const TmvExpressionBuilderParams&) = delete;

  // The interface as OnCustomExpressionBuilder hands it out.
  static std::shared_ptr<ImvExpressionBuilderParams> Create(TmvQueryBuilder* queryBuilder, TmvSelectItem* selectItem,
                                                            int conditionIndex, int left, int top, int width,
                                                            int height, WideString oldExpression,
                                                            std::vector<WideString> completions = {});

  // Not owned; meaningful while the interface is valid (the builder frees
  // its rows before it goes).
  TmvQueryBuilder* QueryBuilder() const { return queryBuilder_; }

  int Get_Left() const override { return left_; }
  int Get_Top() const override { return top_; }
  int Get_Width() const override { return width_; }
  int Get_Height() const override { return height_; }
  WideString Get_OldExpression() const override { return oldExpression_; }
  void Set_NewExpression(const WideString& text) override;
  bool Get_Valid() const override { return selectItem_ != nullptr; }
  TmvSelectItem* Get_SelectItem() const override { return selectItem_; }
  const std::vector<WideString>& Get_CompletionsList() const override { return completions_; }
  TmvExpressionBuilderExpressionKind Get_ExpressionKind() const override;
  WideString Get_RelatedExpression() const override;
  TmvMetadataField* Get_RelatedField() const override;
  TmvMetadataObject* Get_RelatedObject() const override;
  int Get_ConditionIndex() const override { return conditionIndex_; }

 private:
  // Raises "This TmvExpressionBuilderParams object is not valid." without a row.
  void CheckValid() const;
  void SelectItemDestroying(TmvObject* sender);
  void Detach();

  TmvQueryBuilder* queryBuilder_;
  TmvSelectItem* selectItem_;
  int conditionIndex_;
  int left_;
  int top_;
  int width_;
  int height_;
  WideString oldExpression_;
  std::vector<WideString> completions_;
};

}  // namespace mv
