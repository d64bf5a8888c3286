// Masks in the language of SQL LIKE, as the metadata filter uses them on
// the client: AnyChar (%) stands for any run of characters, OneChar (_) for
// one; a stretch between double quotes or square brackets is literal, marks
// excluded, wildcards included ("50[%]" matches "50%"). "%_" means "%".
//
// A compiled mask has at most 129 steps, of which at most 30 may follow an
// AnyChar; a longer mask, or one with an unclosed stretch, raises
// "Invalid Mask".
#pragma once

#include <vector>

#include "support/WideString.h"

namespace mv {

class TMask {
 public:
  explicit TMask(WideStringView mask, char16_t anyChar = u'%', char16_t oneChar = u'_');
  bool Matches(WideStringView text, bool caseSensitive) const;

  static constexpr int kMaxSteps = 129;
  static constexpr int kMaxAnySteps = 30;

 private:
  struct Step {
    bool anyBefore;  // any run of characters may stand before it
    bool single;     // a one-character wildcard
    char16_t ch;     // the literal; 0 for the end of the text
  };
  void AddStep(bool& any, bool single, char16_t ch);

  std::vector<Step> steps_;
  int anySteps_ = 0;
};

bool MatchesMask(WideStringView text, WideStringView mask, bool caseSensitive, char16_t anyChar = u'%',
                 char16_t oneChar = u'_');

}  // namespace mv
