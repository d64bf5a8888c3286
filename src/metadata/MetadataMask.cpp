#include "metadata/MetadataMask.h"

#include "metadata/MetadataMessages.h"
#include "support/Exceptions.h"

namespace mv {

TMask::TMask(WideStringView mask, char16_t anyChar, char16_t oneChar) {
  bool any = false;
  for (size_t i = 0; i < mask.size(); ++i) {
    const char16_t c = mask[i];
    if (c == anyChar) {
      any = true;
    } else if (c == oneChar) {
      // Right after AnyChar it adds nothing: "%_" is "%".
      if (!any) AddStep(any, true, 0);
    } else if (c == u'"' || c == u'[') {
      const char16_t closer = c == u'"' ? u'"' : u']';
      size_t end = mask.find(closer, i + 1);
      if (end == WideStringView::npos) throw Exception(kInvalidMaskText);
      for (size_t j = i + 1; j < end; ++j) AddStep(any, false, mask[j]);
      i = end;
    } else {
      AddStep(any, false, c);
    }
  }
  AddStep(any, false, 0);
}

void TMask::AddStep(bool& any, bool single, char16_t ch) {
  if (any && ++anySteps_ > kMaxAnySteps) throw Exception(kInvalidMaskText);
  if (int(steps_.size()) >= kMaxSteps) throw Exception(kInvalidMaskText);
  steps_.push_back({any, single, ch});
  any = false;
}

namespace {

bool SameChar(char16_t a, char16_t b, bool caseSensitive) {
  return a == b || (!caseSensitive && WideUpCase(a) == WideUpCase(b));
}

}  // namespace

bool TMask::Matches(WideStringView text, bool caseSensitive) const {
  // A step after AnyChar tries the first place that holds its character;
  // the next place waits on the stack for a later mismatch.
  struct Retry {
    size_t step;
    size_t from;
  };
  Retry stack[kMaxAnySteps];
  int depth = 0;
  size_t step = 0;
  size_t pos = 0;
  for (;;) {
    const Step& s = steps_[step];
    bool ok;
    if (s.anyBefore) {
      size_t at = WideStringView::npos;
      if (s.ch == 0) {
        at = text.size();
      } else {
        for (size_t p = pos; p < text.size(); ++p)
          if (SameChar(text[p], s.ch, caseSensitive)) {
            at = p;
            break;
          }
      }
      ok = at != WideStringView::npos;
      if (ok) {
        if (s.ch == 0) return true;
        stack[depth++] = {step, at + 1};
        pos = at + 1;
      }
    } else if (s.single) {
      ok = pos < text.size();
      if (ok) ++pos;
    } else if (s.ch == 0) {
      ok = pos == text.size();
      if (ok) return true;
    } else {
      ok = pos < text.size() && SameChar(text[pos], s.ch, caseSensitive);
      if (ok) ++pos;
    }
    if (ok) {
      ++step;
      continue;
    }
    if (depth == 0) return false;
    const Retry retry = stack[--depth];
    step = retry.step;
    pos = retry.from;
  }
}

bool MatchesMask(WideStringView text, WideStringView mask, bool caseSensitive, char16_t anyChar, char16_t oneChar) {
  return TMask(mask, anyChar, oneChar).Matches(text, caseSensitive);
}

}  // namespace mv
