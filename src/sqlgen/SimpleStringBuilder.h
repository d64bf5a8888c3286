// Collects pieces of text and joins them once, so that printed SQL is never
// built by repeated concatenation.
#pragma once

#include <vector>

#include "support/WideString.h"

namespace mv {

class TmvSimpleStringBuilder {
 public:
  void Append(WideStringView text) {
    if (!text.empty()) pieces_.emplace_back(text);
  }
  void Clear() { pieces_.clear(); }
  bool IsEmpty() const { return pieces_.empty(); }
  // One allocation of the total length.
  WideString ToWideString() const {
    if (pieces_.empty()) return {};
    if (pieces_.size() == 1) return pieces_.front();
    size_t total = 0;
    for (const WideString& piece : pieces_) total += piece.size();
    WideString result;
    result.reserve(total);
    for (const WideString& piece : pieces_) result += piece;
    return result;
  }

 private:
  std::vector<WideString> pieces_;
};

}  // namespace mv
