// The format objects that node code reads while it prints: how lists,
// conditions, the FROM clause and a whole select statement are laid out.
// A builder owns four select formats; each select format owns its nested
// formats. Nested objects are never replaced: setters copy into them.
//
// Each class lists its properties with their defaults in one property table
// (`Properties()`, PropertyTable.h): the constructor stores the defaults
// from it, `Assign` copies what it lists, and options are read and written
// by name through it ("WhereFormat.NewLineAfter").
#pragma once

#include "sqlgen/PropertyTable.h"
#include "sqlgen/SQLOptions.h"
#include "sqlgen/TablePersistent.h"
#include "support/UpdatablePersistent.h"

namespace mv {

// Base of the format objects: change-checked setters that notify, and
// copying and describing through the class's property table. A nested
// format has its owner as update parent, so a change deep inside reaches the
// builder.
class TSQLBuilderFormatBase : public TmvTablePersistent {};

// How a comma-separated list is broken.
class TSQLBuilderItemsListFormat : public TSQLBuilderFormatBase {
  MV_DECLARE_CLASS()
 public:
  explicit TSQLBuilderItemsListFormat(ImvBatchUpdatable* parent = nullptr);
  using TSQLBuilderFormatBase::Assign;
  void Assign(const TSQLBuilderItemsListFormat& source) { Assign(&source); }
  static const TmvPropertyTable& Properties();
  const TmvPropertyTable& PropertyTable() const override { return Properties(); }

  // After the comma: a line break, otherwise a blank. Default true.
  bool NewLineAfterItem() const { return newLineAfterItem_; }
  void SetNewLineAfterItem(bool value) { SetValueAndNotify(*this, newLineAfterItem_, value); }
  // A line break before the comma. Default false.
  bool NewLineBeforeComma() const { return newLineBeforeComma_; }
  void SetNewLineBeforeComma(bool value) { SetValueAndNotify(*this, newLineBeforeComma_, value); }

 private:
  // Defaults come from Properties().
  bool newLineAfterItem_{};
  bool newLineBeforeComma_{};
};

// How a logical condition is broken and indented.
class TSQLBuilderConditionFormat : public TSQLBuilderFormatBase {
  MV_DECLARE_CLASS()
 public:
  explicit TSQLBuilderConditionFormat(ImvBatchUpdatable* parent = nullptr);
  using TSQLBuilderFormatBase::Assign;
  void Assign(const TSQLBuilderConditionFormat& source) { Assign(&source); }
  static const TmvPropertyTable& Properties();
  const TmvPropertyTable& PropertyTable() const override { return Properties(); }

  // Line break before "And"/"Or". Default nlNone.
  TSQLBuilderConditionFormatNL NewLineBefore() const { return newLineBefore_; }
  void SetNewLineBefore(TSQLBuilderConditionFormatNL value) { SetValueAndNotify(*this, newLineBefore_, value); }
  // Line break after "And"/"Or". Default nlTopmostOr.
  TSQLBuilderConditionFormatNL NewLineAfter() const { return newLineAfter_; }
  void SetNewLineAfter(TSQLBuilderConditionFormatNL value) { SetValueAndNotify(*this, newLineAfter_, value); }
  // Indent inside the brackets of a bracketed condition; 0 or less adds none. Default 2.
  int IndentNestedConditions() const { return indentNestedConditions_; }
  void SetIndentNestedConditions(int value) { SetValueAndNotify(*this, indentNestedConditions_, value); }

 private:
  TSQLBuilderConditionFormatNL newLineBefore_{};
  TSQLBuilderConditionFormatNL newLineAfter_{};
  int indentNestedConditions_{};
};

// How the FROM clause is broken.
class TSQLBuilderFromClauseFormat : public TSQLBuilderFormatBase {
  MV_DECLARE_CLASS()
 public:
  explicit TSQLBuilderFromClauseFormat(ImvBatchUpdatable* parent = nullptr);
  using TSQLBuilderFormatBase::Assign;
  void Assign(const TSQLBuilderFromClauseFormat& source) { Assign(&source); }
  static const TmvPropertyTable& Properties();
  const TmvPropertyTable& PropertyTable() const override { return Properties(); }

  // Line break before a join operator and after a comma. Default true.
  bool NewLineAfterDatasource() const { return newLineAfterDatasource_; }
  void SetNewLineAfterDatasource(bool value) { SetValueAndNotify(*this, newLineAfterDatasource_, value); }
  // Line break after the join operator. Default false.
  bool NewLineAfterJoin() const { return newLineAfterJoin_; }
  void SetNewLineAfterJoin(bool value) { SetValueAndNotify(*this, newLineAfterJoin_, value); }
  // Line break before the comma between sources. Default false.
  bool NewLineBeforeComma() const { return newLineBeforeComma_; }
  void SetNewLineBeforeComma(bool value) { SetValueAndNotify(*this, newLineBeforeComma_, value); }
  // Line break before "On". Default false.
  bool NewLineBeforeJoinExpression() const { return newLineBeforeJoinExpression_; }
  void SetNewLineBeforeJoinExpression(bool value) { SetValueAndNotify(*this, newLineBeforeJoinExpression_, value); }
  // Format of the join conditions; an owned object.
  TSQLBuilderConditionFormat& JoinConditionFormat() { return joinConditionFormat_; }
  const TSQLBuilderConditionFormat& JoinConditionFormat() const { return joinConditionFormat_; }
  void SetJoinConditionFormat(const TSQLBuilderConditionFormat& value) { joinConditionFormat_.Assign(value); }

 private:
  bool newLineAfterDatasource_{};
  bool newLineAfterJoin_{};
  bool newLineBeforeComma_{};
  bool newLineBeforeJoinExpression_{};
  TSQLBuilderConditionFormat joinConditionFormat_;
};

// The layout of one select statement.
class TSQLBuilderSelectFormat : public TSQLBuilderFormatBase {
  MV_DECLARE_CLASS()
 public:
  explicit TSQLBuilderSelectFormat(ImvBatchUpdatable* parent = nullptr);
  using TSQLBuilderFormatBase::Assign;
  void Assign(const TSQLBuilderSelectFormat& source) { Assign(&source); }
  static const TmvPropertyTable& Properties();
  const TmvPropertyTable& PropertyTable() const override { return Properties(); }

  // Indent of the whole statement. Default 0.
  int IndentGlobal() const { return indentGlobal_; }
  void SetIndentGlobal(int value) { SetValueAndNotify(*this, indentGlobal_, value); }
  // Each main part starts on a new line, otherwise after a blank. Default true.
  bool MainPartsFromNewLine() const { return mainPartsFromNewLine_; }
  void SetMainPartsFromNewLine(bool value) { SetValueAndNotify(*this, mainPartsFromNewLine_, value); }
  // Indent of a part's content, a join condition, a Case, a with item. Default 2.
  int IndentInPart() const { return indentInPart_; }
  void SetIndentInPart(int value) { SetValueAndNotify(*this, indentInPart_, value); }
  // Line break after a part keyword, otherwise a blank. Default false.
  bool NewLineAfterPartKeywords() const { return newLineAfterPartKeywords_; }
  void SetNewLineAfterPartKeywords(bool value) { SetValueAndNotify(*this, newLineAfterPartKeywords_, value); }

  TSQLBuilderItemsListFormat& SelectListFormat() { return selectListFormat_; }
  const TSQLBuilderItemsListFormat& SelectListFormat() const { return selectListFormat_; }
  void SetSelectListFormat(const TSQLBuilderItemsListFormat& value) { selectListFormat_.Assign(value); }
  TSQLBuilderFromClauseFormat& FromClauseFormat() { return fromClauseFormat_; }
  const TSQLBuilderFromClauseFormat& FromClauseFormat() const { return fromClauseFormat_; }
  void SetFromClauseFormat(const TSQLBuilderFromClauseFormat& value) { fromClauseFormat_.Assign(value); }
  TSQLBuilderConditionFormat& WhereFormat() { return whereFormat_; }
  const TSQLBuilderConditionFormat& WhereFormat() const { return whereFormat_; }
  void SetWhereFormat(const TSQLBuilderConditionFormat& value) { whereFormat_.Assign(value); }
  TSQLBuilderItemsListFormat& GroupByFormat() { return groupByFormat_; }
  const TSQLBuilderItemsListFormat& GroupByFormat() const { return groupByFormat_; }
  void SetGroupByFormat(const TSQLBuilderItemsListFormat& value) { groupByFormat_.Assign(value); }
  TSQLBuilderConditionFormat& HavingFormat() { return havingFormat_; }
  const TSQLBuilderConditionFormat& HavingFormat() const { return havingFormat_; }
  void SetHavingFormat(const TSQLBuilderConditionFormat& value) { havingFormat_.Assign(value); }
  TSQLBuilderItemsListFormat& WindowFormat() { return windowFormat_; }
  const TSQLBuilderItemsListFormat& WindowFormat() const { return windowFormat_; }
  void SetWindowFormat(const TSQLBuilderItemsListFormat& value) { windowFormat_.Assign(value); }
  TSQLBuilderItemsListFormat& OrderByFormat() { return orderByFormat_; }
  const TSQLBuilderItemsListFormat& OrderByFormat() const { return orderByFormat_; }
  void SetOrderByFormat(const TSQLBuilderItemsListFormat& value) { orderByFormat_.Assign(value); }

 private:
  int indentGlobal_{};
  bool mainPartsFromNewLine_{};
  int indentInPart_{};
  bool newLineAfterPartKeywords_{};
  TSQLBuilderItemsListFormat selectListFormat_;
  TSQLBuilderFromClauseFormat fromClauseFormat_;
  TSQLBuilderConditionFormat whereFormat_;
  TSQLBuilderItemsListFormat groupByFormat_;
  TSQLBuilderConditionFormat havingFormat_;
  TSQLBuilderItemsListFormat windowFormat_;
  TSQLBuilderItemsListFormat orderByFormat_;
};

}  // namespace mv
