// One token of scanned SQL text. The scanner turns the whole text into an
// indexed list of these before parsing starts; spaces, line ends and comments
// are tokens too, and readers of the list step over them.
#pragma once

#include <cstdint>

#include "support/WideString.h"

namespace mv {

// Kinds every scanner shares; all other kind numbers belong to a dialect's scanner.
enum : int32_t {
  tkEndOfText = 0,  // always the last token of a list, exactly once; Text is "EOF"
  tkNewLine = 1,    // one line end (CR LF, CR or LF)
  tkSpace = 2,      // a run of white space without line ends
  tkNone = -1,      // reserved: no scanner produces it; token loops stop at it
};

struct TmvToken {
  int32_t Kind = tkEndOfText;
  int32_t Pos = 0;   // zero-based index of the first character, in UTF-16 code units
  int32_t Col = 1;   // one-based column: Pos minus the start of its line, plus 1
  int32_t Line = 1;  // one-based line number
  WideString Text;   // as written; "EOF" for the end token
  bool IsComment = false;
  // The scanner stopped in a state that is not final (an unterminated string,
  // a number cut off after its exponent mark); Kind is the nearest complete form.
  bool IsPartial = false;

  // Line ends, blanks and comments are hidden; everything else (the end token
  // included) is visible.
  bool IsHidden() const { return Kind == tkNewLine || Kind == tkSpace || IsComment; }
};

// What the lookahead of the parser's first pass reads of a token: its kind
// and why it is hidden. The scanner keeps these apart from the tokens, eight
// bytes each, because the first pass reads them far more often than
// anything else of a token.
struct TmvTokenLook {
  enum : uint8_t {
    kLineOrSpace = 1,  // Kind is tkNewLine or tkSpace
    kComment = 2,      // IsComment
  };
  int32_t Kind = tkEndOfText;
  uint8_t Hidden = 0;  // the reasons above; 0 for a visible token
};

}  // namespace mv
