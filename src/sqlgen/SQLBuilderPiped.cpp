#include "sqlgen/SQLBuilderPiped.h"

namespace mv {

MV_DEFINE_CLASS(TSQLBuilderPiped, TSQLBuilder)

TSQLBuilderPiped::TSQLBuilderPiped() { Properties().StoreDefaults(*this); }

const TmvPropertyTable& TSQLBuilderPiped::Properties() {
  using T = TSQLBuilderPiped;
  static const TmvPropertyTable table(
      "TSQLBuilderPiped",
      {
          TmvScalarProperty<&T::dynamicIndents_, &T::SetDynamicIndents>(u"DynamicIndents", false),
          TmvScalarProperty<&T::dynamicRightMargin_, &T::SetDynamicRightMargin>(u"DynamicRightMargin", false),
      },
      &TSQLBuilder::Properties());
  return table;
}

void TSQLBuilderPiped::Assign(const TmvPersistent* source) {
  if (source == this) return;
  TmvUpdateBatch batch(*this);
  TSQLBuilder::Assign(source);
  if (const auto* piped = TmvCast<TSQLBuilderPiped>(source)) {
    SetDynamicIndents(piped->dynamicIndents_);
    SetDynamicRightMargin(piped->dynamicRightMargin_);
  }
}

double TSQLBuilderPiped::BreakScore(int priority, double distance) {
  if (distance < 10.0) distance = distance / 10.0 + 10.0;
  return 100.0 - priority * distance;
}

TSQLBuilderElement& TSQLBuilderPiped::AddElement(TSQLBuilderElementType type) {
  TSQLBuilderElement& element = elements_.emplace_back();
  element.ElementType = type;
  return element;
}

void TSQLBuilderPiped::AddNewStringNode(WideStringView text, WideStringView printText) {
  TSQLBuilderElement& element = AddElement(mvetString);
  element.Text = WideString(text);
  element.Weight = CalcWeight(text);
  element.PrintText = WideString(printText.empty() ? text : printText);
}

void TSQLBuilderPiped::BeginBuildInternal() {
  TSQLBuilder::BeginBuildInternal();
  elements_.clear();
}

void TSQLBuilderPiped::SpaceInternal(int priority) {
  TSQLBuilderElement& element = AddElement(mvetSpace);
  element.Priority = priority;
  element.PrintText.assign(1, u' ');
  element.Weight = CalcWeight(u" ");
}

void TSQLBuilderPiped::NewLineInternal() {
  WriteBuffer();
  WriteStringToResult(newLineText_);
}

void TSQLBuilderPiped::WriteIndentInternal() { AddElement(mvetIndent); }

void TSQLBuilderPiped::GoodNewLinePosInternal(int priority) { AddElement(mvetNewLinePoint).Priority = priority; }

void TSQLBuilderPiped::AddIndent(double value) { AddElement(mvetAddIndent).IndentValue = value; }

void TSQLBuilderPiped::EndIndent() { AddElement(mvetEndIndent); }

void TSQLBuilderPiped::EmitAddIndent(const TSQLBuilderElement& element, double pos) {
  if (!dynamicIndents_ || element.IndentValue <= 0.0) {
    DoAddIndent(element.IndentValue);
    return;
  }
  // Align under the text that follows: the current column, one further when
  // a blank comes before that text.
  double amount = pos - CurrentIndent();
  if (elements_.size() > 1) {
    for (const TSQLBuilderElement& next : elements_) {
      if (next.ElementType == mvetNewLinePoint || next.ElementType == mvetAddIndent ||
          next.ElementType == mvetEndIndent)
        continue;
      if (next.ElementType == mvetSpace) amount += 1.0;
      break;
    }
  }
  DoAddIndent(amount);
}

void TSQLBuilderPiped::WriteBuffer() {
  bool softBreakPending = false;
  while (!elements_.empty()) {
    // Scan for the best break candidate before the first element that
    // crosses the margin. Indents in the buffer count only once emitted.
    const double indent = CurrentIndent();
    size_t best = elements_.size();
    double bestScore = 0.0;
    double pos = 0.0;
    bool overflow = false;
    for (size_t i = 0; i < elements_.size(); ++i) {
      const TSQLBuilderElement& element = elements_[i];
      bool candidate = element.ElementType == mvetNewLinePoint ||
                       (element.ElementType == mvetSpace && element.Priority != -1);
      if (candidate) {
        double linePos = dynamicRightMargin_ ? pos : indent + pos;
        double score = BreakScore(element.Priority, marginWidth_ - linePos);
        if (best == elements_.size() || bestScore <= score) {
          best = i;
          bestScore = score;
        }
      }
      double total = pos + element.Weight + (dynamicRightMargin_ ? 0.0 : indent);
      if (total > marginWidth_) {
        overflow = true;
        break;
      }
      pos += element.Weight;
    }
    const bool breakAtBest = overflow && best != elements_.size();

    // Emit up to the chosen break, or everything.
    pos = CurrentIndent();
    size_t remaining = breakAtBest ? best : elements_.size();
    for (; remaining > 0; --remaining) {
      TSQLBuilderElement& element = elements_.front();
      switch (element.ElementType) {
        case mvetString:
          if (softBreakPending) {
            DoIndent();
            softBreakPending = false;
          }
          WriteStringToResult(element.PrintText);
          pos += element.Weight;
          break;
        case mvetSpace:
          WriteStringToResult(element.PrintText);
          pos += element.Weight;
          break;
        case mvetNewLinePoint:
          break;
        case mvetAddIndent:
          EmitAddIndent(element, pos);
          break;
        case mvetEndIndent:
          DoEndIndent();
          break;
        case mvetIndent:
          DoIndent();
          break;
      }
      elements_.pop_front();
    }
    if (breakAtBest) {
      // The chosen candidate is dropped: a blank used as a break disappears.
      elements_.pop_front();
      WriteStringToResult(newLineText_);
      softBreakPending = true;
    }
  }
}

}  // namespace mv
