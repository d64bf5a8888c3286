// The language file format: INI text in UTF-8 with a byte order mark (UTF-16
// LE with its mark and UTF-8 without one are read too), lines ended by CR LF.
// `TmvWideStrings` is a list of lines with an owned object beside each;
// `TmvWideStringMemIniFile` keeps the sections of a file in memory, each a list
// of its lines as they stand (untrimmed; a line without "=" is a name-less
// entry that no read finds). Section names and keys compare exactly.
//
// Loading never fails: what cannot be read (a bad byte order mark, malformed
// UTF-8, an odd UTF-16 byte, a header without "]", a last line cut short) is
// listed in `Problems()` and the rest is loaded.
#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/WideString.h"

namespace mv {

class TmvWideStrings {
 public:
  TmvWideStrings() = default;
  TmvWideStrings(const TmvWideStrings& other);
  TmvWideStrings& operator=(const TmvWideStrings& other);
  TmvWideStrings(TmvWideStrings&&) = default;
  TmvWideStrings& operator=(TmvWideStrings&&) = default;

  int Add(WideStringView s, std::unique_ptr<TmvWideStrings> object = nullptr);
  void Delete(int index);
  void Clear();
  int Count() const { return int(items_.size()); }
  const WideString& Strings(int index) const { return items_[size_t(index)].text; }
  void SetStrings(int index, WideStringView s) { items_[size_t(index)].text = WideString(s); }
  TmvWideStrings* Objects(int index) const { return items_[size_t(index)].object.get(); }
  void SetObjects(int index, std::unique_ptr<TmvWideStrings> object) { items_[size_t(index)].object = std::move(object); }

  // The part before the first "=" (empty for a line without one).
  WideString Names(int index) const;
  // The part after the first "=" (empty for a line without one).
  WideString ValueFromIndex(int index) const;
  // The value of the first line named `name`; empty when there is none.
  WideString Values(WideStringView name) const;
  int IndexOf(WideStringView s) const;
  int IndexOfName(WideStringView name) const;

  // The lines joined by CR LF, each ended by one.
  WideString GetText() const;
  // Splits at LF, FF, CR, CR LF, U+0085, U+2028 and U+2029; empty lines are dropped.
  void SetText(WideStringView text);

  void CustomSort(const std::function<int(const TmvWideStrings&, int, int)>& compare);
  void CustomSortNames(const std::function<int(WideStringView, WideStringView)>& compare);
  // UTF-8 lines with CR LF, no byte order mark.
  void SaveToStream(std::ostream& stream) const;

 private:
  struct Item {
    WideString text;
    std::unique_ptr<TmvWideStrings> object;
  };
  std::vector<Item> items_;
};

// Splits text at the line ends of the format; empty lines are dropped.
std::vector<WideString> SplitLanguageLines(WideStringView text);

class TmvWideStringMemIniFile {
 public:
  // Reads the whole stream; see `LoadFromBytes`.
  void LoadFromStream(std::istream& stream);
  // FF FE: UTF-16 LE; EF BB BF: UTF-8; else the whole is UTF-8. Adds to what is loaded.
  void LoadFromBytes(std::string_view bytes);
  void LoadFromWideString(WideStringView text);
  // EF BB BF, then each section ("[name]" and its lines), CR LF CR LF between sections.
  void SaveToStream(std::ostream& stream) const;
  std::string SaveToBytes() const;
  void Clear();

  // What the last loads could not read, one text each (empty when all was read).
  const std::vector<WideString>& Problems() const { return problems_; }

  TmvWideStrings* AddSection(WideStringView section);
  TmvWideStrings* FindSection(WideStringView section) const;
  TmvWideStrings* GetSection(WideStringView section);  // creates it when missing
  bool IsSectionExists(WideStringView section) const { return FindSection(section) != nullptr; }
  void DeleteSection(WideStringView section);
  void ClearSection(WideStringView section);
  const TmvWideStrings& Sections() const { return sections_; }

  // The names of the section's entries, name-less lines included as empty names.
  void ReadSection(WideStringView section, std::vector<WideString>& names) const;
  // Replaces the section's lines.
  void WriteSection(WideStringView section, const TmvWideStrings& lines);
  // The section's lines, as they stand.
  void ReadSectionValues(WideStringView section, TmvWideStrings& lines) const;
  WideString ReadString(WideStringView section, WideStringView key, WideStringView defaultValue) const;
  bool TryReadString(WideStringView section, WideStringView key, WideString& value) const;
  void WriteString(WideStringView section, WideStringView key, WideStringView value);
  bool IsStringStartsExists(WideStringView section, WideStringView prefix) const;
  void ClearStringStarts(WideStringView section, WideStringView prefix);

 private:
  TmvWideStrings sections_;
  std::vector<WideString> problems_;
};

}  // namespace mv
