#include "sqlgen/SQLBuilder.h"

#include <cmath>

namespace mv {

MV_DEFINE_CLASS(TSQLBuilder, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TSQLBuilderPlainText, TSQLBuilder)
MV_DEFINE_CLASS(TSQLBuilderFast, TSQLBuilder)

TSQLBuilder::TSQLBuilder()
    : mainQueryFormat_(this), expressionsSubQueryFormat_(this), fromSubQueryFormat_(this), cteSubQueryFormat_(this) {
  Properties().StoreDefaults(*this);
}

const TmvPropertyTable& TSQLBuilder::Properties() {
  using T = TSQLBuilder;
  static const TmvPropertyTable table = [] {
    // RightMargin keeps MarginWidth in step also when stored directly.
    TmvPropertyEntry rightMargin =
        TmvScalarProperty<&T::rightMargin_, &T::SetRightMargin>(u"RightMargin", 80, u"right-margin");
    rightMargin.Store = [](TmvPersistent& object, int64_t value) {
      auto& builder = static_cast<TSQLBuilder&>(object);
      builder.rightMargin_ = int(value);
      builder.marginWidth_ = value < 1 ? 2147483647.0 : double(value);
    };
    return TmvPropertyTable(
      "TSQLBuilder",
      {
          rightMargin,
          TmvScalarProperty<&T::keywordFormat_, &T::SetKeywordFormat>(u"KeywordFormat", akfFirstUpper,
                                                                      u"keyword-format"),
          // Stored as the builder component's "quote-all-identifiers", a boolean view.
          TmvScalarProperty<&T::quoteIdentifiers_, &T::SetQuoteIdentifiers>(u"QuoteIdentifiers", icIfNeed),
          TmvObjectProperty<&T::mainQueryFormat_>(u"MainQueryFormat", u"main-query-format/"),
          // A sub-query inside an expression keeps to its line as far as it can.
          TmvObjectProperty<&T::expressionsSubQueryFormat_>(u"ExpressionsSubQueryFormat",
                                                            u"expressions-subquery-format/",
                                                            {{u"MainPartsFromNewLine", false},
                                                             {u"FromClauseFormat.NewLineAfterDatasource", false},
                                                             {u"FromClauseFormat.NewLineAfterJoin", false},
                                                             {u"FromClauseFormat.NewLineBeforeJoinExpression", false},
                                                             {u"FromClauseFormat.NewLineBeforeComma", false}}),
          TmvObjectProperty<&T::fromSubQueryFormat_>(u"FromSubQueryFormat", u"from-subquery-format/"),
          TmvObjectProperty<&T::cteSubQueryFormat_>(u"CTESubQueryFormat"),
          TmvScalarProperty<&T::objectPrefixSkipping_, &T::SetObjectPrefixSkipping>(
              u"ObjectPrefixSkipping", opsSkipAll, u"object-prefix-skipping"),
          TmvScalarProperty<&T::useAltNames_, &T::SetUseAltNames>(u"UseAltNames", true,
                                                                  u"use-alternative-object-names"),
          TmvScalarProperty<&T::expandVirtualFields_, &T::SetExpandVirtualFields>(u"ExpandVirtualFields", false),
          TmvScalarProperty<&T::expandVirtualObjects_, &T::SetExpandVirtualObjects>(u"ExpandVirtualObjects", false),
          TmvScalarProperty<&T::outerKeywordInLinks_, &T::SetOuterKeywordInLinks>(
              u"OuterKeywordInLinks", skDontCare, u"outer-keyword-in-links"),
          TmvScalarProperty<&T::innerKeywordInLinks_, &T::SetInnerKeywordInLinks>(
              u"InnerKeywordInLinks", skDontCare, u"inner-keyword-in-links"),
          TmvScalarProperty<&T::asKeywordInExpressionAlias_, &T::SetAsKeywordInExpressionAlias>(
              u"AsKeywordInExpressionAlias", skDontCare),
          TmvScalarProperty<&T::asKeywordInObjectAlias_, &T::SetAsKeywordInObjectAlias>(u"AsKeywordInObjectAlias",
                                                                                        skDontCare),
          TmvScalarProperty<&T::parenthesizeANDGroups_, &T::SetParenthesizeANDGroups>(u"ParenthesizeANDGroups",
                                                                                      true),
          TmvScalarProperty<&T::parenthesizeSingleCriterion_, &T::SetParenthesizeSingleCriterion>(
              u"ParenthesizeSingleCriterion", false),
      });
  }();
  return table;
}

void TSQLBuilder::DescribeProperties(TmvPropertyWriter& writer) const {
  TmvUpdatablePersistent::DescribeProperties(writer);
  PropertyTable().Describe(*this, writer);
}

TSQLBuilder::~TSQLBuilder() = default;

void TSQLBuilder::Assign(const TmvPersistent* persistent) {
  const auto* typed = TmvCast<TSQLBuilder>(persistent);
  if (!typed) {
    TmvUpdatablePersistent::Assign(persistent);
    return;
  }
  if (typed == this) return;
  const TSQLBuilder& source = *typed;
  TmvUpdateBatch batch(*this);
  SetRightMargin(source.rightMargin_);
  SetKeywordFormat(source.keywordFormat_);
  SetQuoteIdentifiers(source.quoteIdentifiers_);
  mainQueryFormat_.Assign(source.mainQueryFormat_);
  expressionsSubQueryFormat_.Assign(source.expressionsSubQueryFormat_);
  fromSubQueryFormat_.Assign(source.fromSubQueryFormat_);
  cteSubQueryFormat_.Assign(source.cteSubQueryFormat_);
  SetObjectPrefixSkipping(source.objectPrefixSkipping_);
  SetUseAltNames(source.useAltNames_);
  SetExpandVirtualFields(source.expandVirtualFields_);
  SetExpandVirtualObjects(source.expandVirtualObjects_);
  SetParenthesizeANDGroups(source.parenthesizeANDGroups_);
  SetParenthesizeSingleCriterion(source.parenthesizeSingleCriterion_);
}

void TSQLBuilder::SetRightMargin(int value) {
  if (rightMargin_ == value) return;
  rightMargin_ = value;
  marginWidth_ = value < 1 ? 2147483647.0 : double(value);
  NotifyUpdated();
}

void TSQLBuilder::BeginBuild() {
  BeginBuildInternal();
  indentTop_ = -1;
  atLineStart_ = true;
  spacePending_ = false;
  spacePriority_ = 2147483647;
}

void TSQLBuilder::EndBuild() { EndBuildInternal(); }

void TSQLBuilder::BeginBuildInternal() { resultText_.Clear(); }

void TSQLBuilder::CheckIndentWritten() {
  if (!atLineStart_) return;
  WriteIndent();
  // A blank requested at the start of a line vanishes.
  spacePending_ = false;
  atLineStart_ = false;
}

void TSQLBuilder::CheckSpaceWritten() {
  if (!spacePending_) return;
  spacePending_ = false;
  SpaceInternal(spacePriority_);
}

void TSQLBuilder::WriteKeyword(WideStringView text) {
  CheckIndentWritten();
  CheckSpaceWritten();
  switch (keywordFormat_) {
    case akfUpperCase: WriteKeywordInternal(WideUpperCase(text)); break;
    case akfLowerCase: WriteKeywordInternal(WideLowerCase(text)); break;
    case akfFirstUpper: WriteKeywordInternal(text); break;
  }
  atLineStart_ = false;
}

void TSQLBuilder::WriteKeywordAndSpace(WideStringView text, int priority) {
  WriteKeyword(text);
  Space(priority);
}

#define MV_BUILDER_WRITE(Name)                       \
  void TSQLBuilder::Name(WideStringView text) {      \
    CheckIndentWritten();                            \
    CheckSpaceWritten();                             \
    Name##Internal(text);                            \
    atLineStart_ = false;                            \
  }
MV_BUILDER_WRITE(WriteBuiltin)
MV_BUILDER_WRITE(WriteIdentifier)
MV_BUILDER_WRITE(WriteSymbol)
MV_BUILDER_WRITE(WriteNumber)
MV_BUILDER_WRITE(WriteString)
#undef MV_BUILDER_WRITE

void TSQLBuilder::Space(int priority) {
  if (!spacePending_) {
    spacePending_ = true;
    spacePriority_ = priority;
  } else if (priority < spacePriority_) {
    spacePriority_ = priority;
  }
}

void TSQLBuilder::NewLineOrSpace(bool newLine, int priority) {
  if (newLine)
    NewLine();
  else
    Space(priority);
}

void TSQLBuilder::GoodNewLinePos(int priority) { GoodNewLinePosInternal(priority); }

void TSQLBuilder::NewLine() {
  // Two requests in a row give one break, and a text never starts with one.
  if (!atLineStart_) NewLineInternal();
  atLineStart_ = true;
  spacePending_ = false;
}

// Goes through WriteSymbol, so a blank pending at this moment is written
// before the line end.
void TSQLBuilder::NewLineInternal() { WriteSymbol(newLineText_); }

void TSQLBuilder::SpaceInternal(int) { WriteSymbol(u" "); }

void TSQLBuilder::AddIndent(double value) { DoAddIndent(value); }
void TSQLBuilder::EndIndent() { DoEndIndent(); }
void TSQLBuilder::WriteIndent() { WriteIndentInternal(); }
void TSQLBuilder::WriteIndentInternal() { DoIndent(); }

void TSQLBuilder::DoAddIndent(double value) {
  ++indentTop_;
  if (int(indentStack_.size()) <= indentTop_) indentStack_.resize(indentTop_ + 10);
  indentStack_[indentTop_] = indentTop_ == 0 ? value : indentStack_[indentTop_ - 1] + value;
}

void TSQLBuilder::DoEndIndent() {
  if (indentTop_ < 0) return;
  indentStack_[indentTop_] = 0.0;
  --indentTop_;
}

void TSQLBuilder::DoIndent() {
  double indent = CurrentIndent();
  if (indent <= 0.0) return;
  int count = int(std::ceil(indent / CalcWeight(u" ")));
  WriteStringToResult(WideString(count, u' '));
}

double TSQLBuilder::CalcWeight(WideStringView text) { return double(text.size()); }

void TSQLBuilder::DoBeginBuildSQLForNode(TastNode* node) {
  if (OnBeginBuildSQLForNode) OnBeginBuildSQLForNode(this, node);
}

void TSQLBuilder::DoEndBuildSQLForNode(TastNode* node) {
  if (OnEndBuildSQLForNode) OnEndBuildSQLForNode(this, node);
}

TSQLBuilderFast::TSQLBuilderFast() { newLineText_.assign(1, u' '); }

}  // namespace mv
