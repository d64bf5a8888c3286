// The character-level helpers of a scan: the source text with its read
// position (TmvBuffer), the set of ignored characters (TmvCharSet), the table
// of start states (TmvStartTable) and the growing text of the token being
// scanned (TmvSimpleCharBuffer).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "support/WideString.h"

namespace mv {

// The character source of one scan.
class TmvBuffer {
 public:
  // Stores the text and moves to its start.
  void Fill(WideString text);
  // The next code unit, advancing; -1 at or past the end (and no advance).
  int32_t Read() { return position_ < length_ ? text_[position_++] : -1; }
  // The next code unit without advancing; -1 at the end.
  int32_t Peek() const { return position_ < length_ ? text_[position_] : -1; }
  // The substring starting at `beg` that is `end - beg - 1` units long.
  WideString GetString(int32_t beg, int32_t end) const;
  // Nothing when `pos` is the position; a positive `pos` moves to the smaller
  // of `pos` and the length, anything else to 1.
  void SetPos(int32_t pos);

  int32_t GetPos() const { return position_; }
  int32_t GetLength() const { return length_; }
  const WideString& GetText() const { return text_; }

 private:
  WideString text_;
  int32_t length_ = 0;
  int32_t position_ = 0;
};

// A set of UTF-16 code units, one flag per unit. The units below 256 live in
// the object; the flags of all others are allocated the first time one of
// them is set, so that a scanner (made once per parse) costs no 64 KB table.
class TmvCharSet {
 public:
  bool Items(char16_t ch) const {
    if (ch < kLowSize) return low_[ch] != 0;
    return high_ && (*high_)[ch] != 0;
  }
  void SetItems(char16_t ch, bool value);

 private:
  static constexpr char16_t kLowSize = 256;
  std::array<uint8_t, kLowSize> low_{};
  std::unique_ptr<std::array<uint8_t, 65536>> high_;
};

// Maps the first character of a token to the state its automaton starts in.
// Entries are kept in insertion order and searched linearly; characters
// below 128, the common case, are also mirrored in a direct table.
class TmvStartTable {
 public:
  TmvStartTable();

  int16_t DefaultState = 0;

  // The entry's state, or DefaultState without an entry.
  int16_t Items(char16_t ch) const {
    if (ch < kFastSize) {
      int16_t v = fast_[ch];
      return v == kNoEntry ? DefaultState : v;
    }
    int32_t i = FindEntry(ch);
    return i < 0 ? DefaultState : Values[i];
  }
  // Replaces the entry's state or adds an entry.
  void SetItems(char16_t ch, int16_t state);
  // Index of the entry of `ch`, or -1.
  int32_t FindEntry(char16_t ch) const;
  // Appends an entry; the arrays grow by 32 entries when full.
  void AddEntry(char16_t ch, int16_t state);

  int32_t Count = 0;
  std::vector<char16_t> Keys;
  std::vector<int16_t> Values;

 private:
  static constexpr char16_t kFastSize = 128;
  static constexpr int16_t kNoEntry = INT16_MIN;
  std::array<int16_t, kFastSize> fast_;
};

// The text of the token being scanned. Storage starts at 64 units and doubles
// when full, so a token costs one string allocation however long it is.
class TmvSimpleCharBuffer {
 public:
  TmvSimpleCharBuffer() : storage_(kInitialSize, u'\0') {}

  void Append(char16_t ch) {
    if (static_cast<int32_t>(storage_.size()) <= count_) storage_.resize(storage_.size() * 2);
    storage_[count_++] = ch;
  }
  void Append(WideStringView text);
  WideString ToWideString() const { return storage_.substr(0, count_); }
  // Back to 64 units of storage and no text.
  void Clear();
  int32_t GetCount() const { return count_; }

 private:
  static constexpr size_t kInitialSize = 64;
  WideString storage_;
  int32_t count_ = 0;
};

}  // namespace mv
