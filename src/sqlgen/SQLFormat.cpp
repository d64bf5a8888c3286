#include "sqlgen/SQLFormat.h"

namespace mv {

MV_DEFINE_CLASS(TSQLBuilderItemsListFormat, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TSQLBuilderConditionFormat, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TSQLBuilderFromClauseFormat, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TSQLBuilderSelectFormat, TmvUpdatablePersistent)

// --- The tables. The XML keys are those of the builder component's
// properties document; a property without one is not stored there. ---

const TmvPropertyTable& TSQLBuilderItemsListFormat::Properties() {
  using T = TSQLBuilderItemsListFormat;
  static const TmvPropertyTable table(
      "TSQLBuilderItemsListFormat",
      {
          TmvScalarProperty<&T::newLineAfterItem_, &T::SetNewLineAfterItem>(u"NewLineAfterItem", true,
                                                                            u"new-line-after-item"),
          TmvScalarProperty<&T::newLineBeforeComma_, &T::SetNewLineBeforeComma>(u"NewLineBeforeComma", false),
      });
  return table;
}

const TmvPropertyTable& TSQLBuilderConditionFormat::Properties() {
  using T = TSQLBuilderConditionFormat;
  static const TmvPropertyTable table(
      "TSQLBuilderConditionFormat",
      {
          TmvScalarProperty<&T::newLineBefore_, &T::SetNewLineBefore>(u"NewLineBefore", nlNone),
          TmvScalarProperty<&T::newLineAfter_, &T::SetNewLineAfter>(u"NewLineAfter", nlTopmostOr, u"new-line-after"),
          TmvScalarProperty<&T::indentNestedConditions_, &T::SetIndentNestedConditions>(
              u"IndentNestedConditions", 2, u"indent-nested-conditions"),
      });
  return table;
}

const TmvPropertyTable& TSQLBuilderFromClauseFormat::Properties() {
  using T = TSQLBuilderFromClauseFormat;
  static const TmvPropertyTable table(
      "TSQLBuilderFromClauseFormat",
      {
          TmvScalarProperty<&T::newLineAfterDatasource_, &T::SetNewLineAfterDatasource>(
              u"NewLineAfterDatasource", true, u"new-line-after-datasource"),
          TmvScalarProperty<&T::newLineAfterJoin_, &T::SetNewLineAfterJoin>(u"NewLineAfterJoin", false,
                                                                            u"new-line-after-join"),
          TmvScalarProperty<&T::newLineBeforeComma_, &T::SetNewLineBeforeComma>(u"NewLineBeforeComma", false),
          TmvScalarProperty<&T::newLineBeforeJoinExpression_, &T::SetNewLineBeforeJoinExpression>(
              u"NewLineBeforeJoinExpression", false),
          TmvObjectProperty<&T::joinConditionFormat_>(u"JoinConditionFormat", u"join-conditions-format/"),
      });
  return table;
}

const TmvPropertyTable& TSQLBuilderSelectFormat::Properties() {
  using T = TSQLBuilderSelectFormat;
  static const TmvPropertyTable table(
      "TSQLBuilderSelectFormat",
      {
          TmvScalarProperty<&T::indentGlobal_, &T::SetIndentGlobal>(u"IndentGlobal", 0, u"indent-global"),
          TmvScalarProperty<&T::mainPartsFromNewLine_, &T::SetMainPartsFromNewLine>(u"MainPartsFromNewLine", true,
                                                                                    u"main-parts-from-new-line"),
          TmvScalarProperty<&T::indentInPart_, &T::SetIndentInPart>(u"IndentInPart", 2, u"indent-in-part"),
          TmvScalarProperty<&T::newLineAfterPartKeywords_, &T::SetNewLineAfterPartKeywords>(
              u"NewLineAfterPartKeywords", false, u"new-line-after-part-keywords"),
          TmvObjectProperty<&T::selectListFormat_>(u"SelectListFormat", u"select-list-format/"),
          TmvObjectProperty<&T::fromClauseFormat_>(u"FromClauseFormat", u"from-clause-format/"),
          TmvObjectProperty<&T::whereFormat_>(u"WhereFormat", u"where-format/"),
          TmvObjectProperty<&T::groupByFormat_>(u"GroupByFormat", u"group-by-format/"),
          TmvObjectProperty<&T::havingFormat_>(u"HavingFormat", u"having-format/"),
          TmvObjectProperty<&T::windowFormat_>(u"WindowFormat"),
          TmvObjectProperty<&T::orderByFormat_>(u"OrderByFormat", u"order-by-format/"),
      });
  return table;
}

// --- Constructors: the defaults first, then the update parent, so that
// storing them reports nothing. ---

TSQLBuilderItemsListFormat::TSQLBuilderItemsListFormat(ImvBatchUpdatable* parent) {
  Properties().StoreDefaults(*this);
  SetParent(parent);
}

TSQLBuilderConditionFormat::TSQLBuilderConditionFormat(ImvBatchUpdatable* parent) {
  Properties().StoreDefaults(*this);
  SetParent(parent);
}

TSQLBuilderFromClauseFormat::TSQLBuilderFromClauseFormat(ImvBatchUpdatable* parent)
    : joinConditionFormat_(this) {
  Properties().StoreDefaults(*this);
  SetParent(parent);
}

TSQLBuilderSelectFormat::TSQLBuilderSelectFormat(ImvBatchUpdatable* parent)
    : selectListFormat_(this),
      fromClauseFormat_(this),
      whereFormat_(this),
      groupByFormat_(this),
      havingFormat_(this),
      windowFormat_(this),
      orderByFormat_(this) {
  Properties().StoreDefaults(*this);
  SetParent(parent);
}

}  // namespace mv
