// The SQL builder: the text sink that node code prints through. Nodes call
// typed writes (keyword, identifier, symbol, number, string, built-in name)
// and layout requests (Space with a break priority, NewLine, indents, good
// break points); the builder owns keyword case, line ends (CR LF), indents
// and, in the piped form (SQLBuilderPiped.h), wrapping at a right margin.
//
//   TSQLBuilder           hard line breaks and indents written at once
//   TSQLBuilderPlainText  the same, for hosts
//   TSQLBuilderFast       one line: NewLine is a blank, no indents
//
// The settings of a builder, its four select formats included, are listed
// with their defaults in its property table (`Properties()`), through which
// they are also read and written by name ("RightMargin",
// "MainQueryFormat.WhereFormat.NewLineAfter").
#pragma once

#include <functional>
#include <vector>

#include "sqlgen/SQLFormat.h"
#include "sqlgen/SQLOptions.h"
#include "sqlgen/SimpleStringBuilder.h"
#include "support/UpdatablePersistent.h"

namespace mv {

class TastNode;
class TSQLBuilder;

using TmvOnBeginBuildSQLForNode = std::function<void(TSQLBuilder* sender, TastNode* node)>;
using TmvOnEndBuildSQLForNode = std::function<void(TSQLBuilder* sender, TastNode* node)>;

class TSQLBuilder : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  TSQLBuilder();
  ~TSQLBuilder() override;

  // From another builder, inside one batch: the layout settings (not the
  // keyword modes, not the events). Other sources fall to the inherited Assign.
  void Assign(const TmvPersistent* source) override;
  void Assign(const TSQLBuilder& source) { Assign(&source); }

  // The settings with their defaults and XML keys; a descendant with
  // settings of its own answers its own table in PropertyTable().
  static const TmvPropertyTable& Properties();
  virtual const TmvPropertyTable& PropertyTable() const { return Properties(); }
  void DescribeProperties(TmvPropertyWriter& writer) const override;

  // --- Properties. ---
  int RightMargin() const { return rightMargin_; }  // 80; below 1 turns wrapping off
  void SetRightMargin(int value);  // also sets MarginWidth
  TmvKeywordFormat KeywordFormat() const { return keywordFormat_; }  // akfFirstUpper
  void SetKeywordFormat(TmvKeywordFormat value) { SetValueAndNotify(*this, keywordFormat_, value); }
  TmvIdentQuotation QuoteIdentifiers() const { return quoteIdentifiers_; }  // icIfNeed
  void SetQuoteIdentifiers(TmvIdentQuotation value) { SetValueAndNotify(*this, quoteIdentifiers_, value); }
  TmvObjectPrefixSkipping ObjectPrefixSkipping() const { return objectPrefixSkipping_; }  // opsSkipAll
  void SetObjectPrefixSkipping(TmvObjectPrefixSkipping value) {
    SetValueAndNotify(*this, objectPrefixSkipping_, value);
  }
  bool UseAltNames() const { return useAltNames_; }  // true
  void SetUseAltNames(bool value) { SetValueAndNotify(*this, useAltNames_, value); }
  bool ExpandVirtualFields() const { return expandVirtualFields_; }  // false
  void SetExpandVirtualFields(bool value) { SetValueAndNotify(*this, expandVirtualFields_, value); }
  bool ExpandVirtualObjects() const { return expandVirtualObjects_; }  // false
  void SetExpandVirtualObjects(bool value) { SetValueAndNotify(*this, expandVirtualObjects_, value); }
  TmvSkipKeywordMode OuterKeywordInLinks() const { return outerKeywordInLinks_; }  // skDontCare
  void SetOuterKeywordInLinks(TmvSkipKeywordMode value) { SetValueAndNotify(*this, outerKeywordInLinks_, value); }
  TmvSkipKeywordMode InnerKeywordInLinks() const { return innerKeywordInLinks_; }  // skDontCare
  void SetInnerKeywordInLinks(TmvSkipKeywordMode value) { SetValueAndNotify(*this, innerKeywordInLinks_, value); }
  TmvSkipKeywordMode AsKeywordInExpressionAlias() const { return asKeywordInExpressionAlias_; }  // skDontCare
  void SetAsKeywordInExpressionAlias(TmvSkipKeywordMode value) {
    SetValueAndNotify(*this, asKeywordInExpressionAlias_, value);
  }
  TmvSkipKeywordMode AsKeywordInObjectAlias() const { return asKeywordInObjectAlias_; }  // skDontCare
  void SetAsKeywordInObjectAlias(TmvSkipKeywordMode value) { SetValueAndNotify(*this, asKeywordInObjectAlias_, value); }
  bool ParenthesizeANDGroups() const { return parenthesizeANDGroups_; }  // true
  void SetParenthesizeANDGroups(bool value) { SetValueAndNotify(*this, parenthesizeANDGroups_, value); }
  bool ParenthesizeSingleCriterion() const { return parenthesizeSingleCriterion_; }  // false
  void SetParenthesizeSingleCriterion(bool value) { SetValueAndNotify(*this, parenthesizeSingleCriterion_, value); }

  // The four select formats, owned; setters copy into them.
  // The statement being built.
  TSQLBuilderSelectFormat& MainQueryFormat() { return mainQueryFormat_; }
  const TSQLBuilderSelectFormat& MainQueryFormat() const { return mainQueryFormat_; }
  // A sub-query inside an expression: by default its main parts stay on the
  // line, and its FROM clause breaks nowhere.
  TSQLBuilderSelectFormat& ExpressionsSubQueryFormat() { return expressionsSubQueryFormat_; }
  const TSQLBuilderSelectFormat& ExpressionsSubQueryFormat() const { return expressionsSubQueryFormat_; }
  // A derived table in the FROM clause.
  TSQLBuilderSelectFormat& FromSubQueryFormat() { return fromSubQueryFormat_; }
  const TSQLBuilderSelectFormat& FromSubQueryFormat() const { return fromSubQueryFormat_; }
  // The query of a common table expression.
  TSQLBuilderSelectFormat& CTESubQueryFormat() { return cteSubQueryFormat_; }
  const TSQLBuilderSelectFormat& CTESubQueryFormat() const { return cteSubQueryFormat_; }
  void SetMainQueryFormat(const TSQLBuilderSelectFormat& value) { mainQueryFormat_.Assign(value); }
  void SetExpressionsSubQueryFormat(const TSQLBuilderSelectFormat& value) { expressionsSubQueryFormat_.Assign(value); }
  void SetFromSubQueryFormat(const TSQLBuilderSelectFormat& value) { fromSubQueryFormat_.Assign(value); }
  void SetCTESubQueryFormat(const TSQLBuilderSelectFormat& value) { cteSubQueryFormat_.Assign(value); }

  TmvOnBeginBuildSQLForNode OnBeginBuildSQLForNode;
  TmvOnEndBuildSQLForNode OnEndBuildSQLForNode;

  // --- A build: BeginBuild, writes, EndBuild, GetResult. ---
  void BeginBuild();
  void EndBuild();
  WideString GetResult() const { return resultText_.ToWideString(); }

  // --- Writes. Each writes an owed indent, then a pending blank, then the text. ---
  void WriteKeyword(WideStringView text);
  void WriteKeywordAndSpace(WideStringView text, int priority);
  void WriteBuiltin(WideStringView text);
  void WriteIdentifier(WideStringView text);
  void WriteSymbol(WideStringView text);
  void WriteNumber(WideStringView text);
  void WriteString(WideStringView text);

  // --- Layout. ---
  // Requests one blank; several requests before the next write give one
  // blank with the best (lowest) break priority among them.
  void Space(int priority);
  void NewLineOrSpace(bool newLine, int priority);
  void GoodNewLinePos(int priority);
  virtual void NewLine();
  virtual void AddIndent(double value);
  virtual void EndIndent();
  virtual void WriteIndent();
  double CurrentIndent() const { return indentTop_ >= 0 ? indentStack_[indentTop_] : 0.0; }

  virtual void DoBeginBuildSQLForNode(TastNode* node);
  virtual void DoEndBuildSQLForNode(TastNode* node);

  // Width of a text in the unit of RightMargin and indents: characters here.
  virtual double CalcWeight(WideStringView text);

 protected:
  virtual void DoAddIndent(double value);
  virtual void DoEndIndent();
  virtual void BeginBuildInternal();
  virtual void EndBuildInternal() {}
  virtual void SpaceInternal(int priority);
  virtual void NewLineInternal();
  virtual void WriteIndentInternal();
  virtual void GoodNewLinePosInternal(int) {}
  virtual void WriteKeywordInternal(WideStringView text) { WriteStringToResult(text); }
  virtual void WriteBuiltinInternal(WideStringView text) { WriteStringToResult(text); }
  virtual void WriteIdentifierInternal(WideStringView text) { WriteStringToResult(text); }
  virtual void WriteSymbolInternal(WideStringView text) { WriteStringToResult(text); }
  virtual void WriteNumberInternal(WideStringView text) { WriteStringToResult(text); }
  virtual void WriteStringInternal(WideStringView text) { WriteStringToResult(text); }

  void CheckIndentWritten();
  void CheckSpaceWritten();
  void DoIndent();
  void WriteStringToResult(WideStringView text) { resultText_.Append(text); }

  // Run-time state of a build.
  bool atLineStart_ = true;      // the indent of this line is still owed
  bool spacePending_ = false;    // a blank was requested and not yet written
  int spacePriority_ = 2147483647;
  double marginWidth_ = 2147483647.0;  // follows RightMargin
  std::vector<double> indentStack_;  // absolute indents
  int indentTop_ = -1;
  WideString newLineText_ = u"\r\n";
  TmvSimpleStringBuilder resultText_;

 private:
  // Defaults come from Properties().
  int rightMargin_{};
  TmvKeywordFormat keywordFormat_{};
  TmvIdentQuotation quoteIdentifiers_{};
  TmvObjectPrefixSkipping objectPrefixSkipping_{};
  bool useAltNames_{};
  bool expandVirtualFields_{};
  bool expandVirtualObjects_{};
  TmvSkipKeywordMode outerKeywordInLinks_{};
  TmvSkipKeywordMode innerKeywordInLinks_{};
  TmvSkipKeywordMode asKeywordInExpressionAlias_{};
  TmvSkipKeywordMode asKeywordInObjectAlias_{};
  bool parenthesizeANDGroups_{};
  bool parenthesizeSingleCriterion_{};
  TSQLBuilderSelectFormat mainQueryFormat_;
  TSQLBuilderSelectFormat expressionsSubQueryFormat_;
  TSQLBuilderSelectFormat fromSubQueryFormat_;
  TSQLBuilderSelectFormat cteSubQueryFormat_;
};

// The base builder under the name hosts use; the system itself never makes one.
class TSQLBuilderPlainText : public TSQLBuilder {
  MV_DECLARE_CLASS()
};

// One line with single blanks: NewLine becomes a blank of priority 3 and
// indents are ignored. Used wherever text is compared, shown in a cell or stored.
class TSQLBuilderFast : public TSQLBuilder {
  MV_DECLARE_CLASS()
 public:
  TSQLBuilderFast();
  void NewLine() override { Space(3); }

 protected:
  void DoAddIndent(double) override {}
  void DoEndIndent() override {}
};

}  // namespace mv
