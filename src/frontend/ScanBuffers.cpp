#include "frontend/ScanBuffers.h"

#include <algorithm>

namespace mv {

void TmvBuffer::Fill(WideString text) {
  text_ = std::move(text);
  length_ = static_cast<int32_t>(text_.size());
  position_ = 0;
  SetPos(0);
}

WideString TmvBuffer::GetString(int32_t beg, int32_t end) const {
  int32_t count = end - beg - 1;
  if (beg < 0 || count <= 0 || beg >= length_) return WideString();
  return text_.substr(beg, std::min(count, length_ - beg));
}

void TmvBuffer::SetPos(int32_t pos) {
  if (pos == position_) return;
  position_ = pos > 0 ? std::min(pos, length_) : 1;
}

void TmvCharSet::SetItems(char16_t ch, bool value) {
  if (ch < kLowSize) {
    low_[ch] = value ? 1 : 0;
    return;
  }
  if (!high_) {
    if (!value) return;
    high_ = std::make_unique<std::array<uint8_t, 65536>>();
    high_->fill(0);
  }
  (*high_)[ch] = value ? 1 : 0;
}

TmvStartTable::TmvStartTable() { fast_.fill(kNoEntry); }

void TmvStartTable::SetItems(char16_t ch, int16_t state) {
  int32_t i = FindEntry(ch);
  if (i < 0) {
    AddEntry(ch, state);
    return;
  }
  Values[i] = state;
  if (ch < kFastSize) fast_[ch] = state;
}

int32_t TmvStartTable::FindEntry(char16_t ch) const {
  for (int32_t i = 0; i < Count; ++i) {
    if (Keys[i] == ch) return i;
  }
  return -1;
}

void TmvStartTable::AddEntry(char16_t ch, int16_t state) {
  if (Count == static_cast<int32_t>(Keys.size())) {
    Keys.resize(Keys.size() + 32);
    Values.resize(Values.size() + 32);
  }
  Keys[Count] = ch;
  Values[Count] = state;
  ++Count;
  if (ch < kFastSize && fast_[ch] == kNoEntry) fast_[ch] = state;
}

void TmvSimpleCharBuffer::Append(WideStringView text) {
  for (char16_t ch : text) Append(ch);
}

void TmvSimpleCharBuffer::Clear() {
  if (storage_.size() != kInitialSize) storage_.assign(kInitialSize, u'\0');
  count_ = 0;
}

}  // namespace mv
