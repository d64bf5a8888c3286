// The builder behind all formatted SQL a user sees: it buffers the elements
// of each hard line and, when the line is complete, breaks it at the best
// break candidates so that it fits the right margin.
//
// Break candidates are blanks (Space) and good break points (GoodNewLinePos),
// each with a priority (lower is better). Scanning a line from its start, the
// builder scores each candidate until the first element that crosses the
// margin; the best score wins, the last of equal scores. When nothing
// crosses the margin the line is written whole, and when an element crosses
// it with no candidate before it the rest of the line is written unbroken.
#pragma once

#include <deque>

#include "sqlgen/SQLBuilder.h"

namespace mv {

enum TSQLBuilderElementType : uint8_t {
  mvetString,
  mvetSpace,
  mvetNewLinePoint,
  mvetAddIndent,
  mvetEndIndent,
  mvetIndent,
};

// One buffered item of a line.
struct TSQLBuilderElement {
  TSQLBuilderElementType ElementType = mvetString;
  int Priority = 0;          // break quality of a space or break point; -1 forbids a break
  double IndentValue = 0.0;  // amount of an mvetAddIndent
  double Weight = 0.0;       // width on the line
  WideString Text;           // the measured text
  WideString PrintText;      // the written text
};

class TSQLBuilderPiped : public TSQLBuilder {
  MV_DECLARE_CLASS()
 public:
  TSQLBuilderPiped();
  using TSQLBuilder::Assign;
  // Also copies the two dynamic flags from another piped builder.
  void Assign(const TmvPersistent* source) override;

  // The builder's settings and the two dynamic flags.
  static const TmvPropertyTable& Properties();
  const TmvPropertyTable& PropertyTable() const override { return Properties(); }

  // Continuation lines align under the text after the keyword, instead of
  // the configured indent. Default false.
  bool DynamicIndents() const { return dynamicIndents_; }
  void SetDynamicIndents(bool value) { SetValueAndNotify(*this, dynamicIndents_, value); }
  // The margin bounds each line's width from its own indent. Default false.
  bool DynamicRightMargin() const { return dynamicRightMargin_; }
  void SetDynamicRightMargin(bool value) { SetValueAndNotify(*this, dynamicRightMargin_, value); }

  void AddIndent(double value) override;
  void EndIndent() override;

  // Score of breaking at a candidate of `priority` that stands `distance`
  // units before the margin. The last ten units count almost alike.
  static double BreakScore(int priority, double distance);

 protected:
  void BeginBuildInternal() override;
  void EndBuildInternal() override { WriteBuffer(); }
  void SpaceInternal(int priority) override;
  void NewLineInternal() override;
  void WriteIndentInternal() override;
  void GoodNewLinePosInternal(int priority) override;
  void WriteKeywordInternal(WideStringView text) override { AddNewStringNode(text, {}); }
  void WriteBuiltinInternal(WideStringView text) override { AddNewStringNode(text, {}); }
  void WriteIdentifierInternal(WideStringView text) override { AddNewStringNode(text, {}); }
  void WriteSymbolInternal(WideStringView text) override { AddNewStringNode(text, {}); }
  void WriteNumberInternal(WideStringView text) override { AddNewStringNode(text, {}); }
  void WriteStringInternal(WideStringView text) override { AddNewStringNode(text, {}); }

  // Buffers a string; printText, when not empty, is written in place of text.
  void AddNewStringNode(WideStringView text, WideStringView printText);
  // Writes the buffered line, breaking it where it overflows.
  void WriteBuffer();

 private:
  TSQLBuilderElement& AddElement(TSQLBuilderElementType type);
  void EmitAddIndent(const TSQLBuilderElement& element, double pos);

  // Defaults come from Properties().
  bool dynamicIndents_{};
  bool dynamicRightMargin_{};
  std::deque<TSQLBuilderElement> elements_;
};

}  // namespace mv
