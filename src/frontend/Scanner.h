// The dialect-independent half of every scanner. `Init` turns the whole text
// into an indexed token list before parsing starts, because the parser keeps
// many alternatives alive at once, each at its own token position. Nothing is
// dropped: spaces, line ends and comments are tokens too, and the readers of
// the list step over them.
//
// A dialect's scanner is generated from its token description by
// tools/grammargen: it fills the start table in `InitInternal` and runs its
// automaton in `NextToken`, using the character routines below. All
// classification works on the lower-cased `Ch`; token text is built from
// `RawCh`, so the spelling of the source survives.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "frontend/ScanBuffers.h"
#include "frontend/Token.h"
#include "support/Class.h"
#include "support/WideString.h"

namespace mv {

// One word that CheckLiteral turns into a keyword kind (generated tables).
struct TmvKeywordEntry {
  const char* Text;  // in small letters
  int32_t Kind;
};

class TmvBaseScanner;
// A scanner class as a value: a syntax provider hands one out and the
// context creates the scanner from it (both construction phases run).
using TmvScannerClass = TmvClassOf<TmvBaseScanner>;

class TmvBaseScanner : public TmvObject {
  MV_DECLARE_CLASS()

 public:
  ~TmvBaseScanner() override;

  // Fills the start table (the second construction phase).
  void AfterConstruction() override { InitInternal(); }

  // Scans the whole text; the tokens of an earlier call are discarded.
  void Init(const WideString& text);
  int32_t GetCount() const { return static_cast<int32_t>(Tokens.size()); }
  // The token at `index`; below 0 or past the end it is the last token, the
  // end token, so readers may run past the end without a test.
  const TmvToken& GetToken(int32_t index) const {
    if (index < 0 || index >= static_cast<int32_t>(Tokens.size())) return LastToken();
    return Tokens[index];
  }
  const std::vector<TmvToken>& GetTokens() const { return Tokens; }
  // The kind and hiddenness of the token at `index`, read the same way as
  // GetToken (past either end: the end token).
  const TmvTokenLook& GetLook(int32_t index) const {
    if (static_cast<uint32_t>(index) >= looks_.size()) return LastLook();
    return looks_[index];
  }

  // Reclassifies a name token whose text is a keyword of the dialect.
  virtual void CheckLiteral(TmvToken& token) = 0;
  // Scans the token at Ch.
  virtual TmvToken NextToken() = 0;

  // Advances one character: RawCh as written, Ch lower-cased, -1 at the end.
  void NextCh() {
    Ch = Buffer->Read();
    ++Pos;
    RawCh = static_cast<char16_t>(Ch);
    if (Ch != -1) Ch = WideLoCase(RawCh);
  }
  // The token of the line end at Ch (CR LF, CR or LF), or nothing when Ch is
  // no line end. A lone CR and a lone LF both get the text CR.
  std::optional<TmvToken> NewLineToken();

  // The first pass of the parser steps over comments and over line ends and
  // white space while these are set.
  bool SkipComments = true;
  bool SkipSpaces = true;

 protected:
  TmvBaseScanner();

  virtual void InitInternal() = 0;

  // Comment routines of generated scanners; each starts at Ch, the first
  // character of its opener. When the rest of the opener does not follow,
  // the scanner is put back where it was and the result is empty.
  //
  // To the end of the line (which is left for NewLineToken); `second` is the
  // opener's second character, or 0 for a one-character opener.
  std::optional<TmvToken> ScanLineComment(char16_t second, int32_t kind);
  // Up to the closer; with `nested`, each opener inside raises the level.
  // Line ends inside are counted; the end of the text ends the comment.
  std::optional<TmvToken> ScanBlockComment(char16_t second, char16_t close1, char16_t close2,
                                           bool nested, int32_t kind);
  // A string of the kind `kind` at ' or $: a quote string in which a
  // backslash takes the next character with it, or a dollar-quoted string
  // $tag$...$tag$. Empty when Ch starts neither (a $ without its closing
  // delimiter is left for the automaton).
  std::optional<TmvToken> ScanTaggedString(int32_t kind);

  // A token that starts at the current character.
  TmvToken StartToken() const {
    TmvToken token;
    token.Pos = Pos;
    token.Col = Pos - LineStart + 1;
    token.Line = Line;
    return token;
  }

  std::vector<TmvToken> Tokens;
  TmvStartTable StartTable;
  std::unique_ptr<TmvBuffer> Buffer;  // exists only while Init runs
  int32_t Ch = -1;
  char16_t RawCh = 0xFFFF;
  int32_t Pos = -1;
  int32_t Line = 1;
  int32_t LineStart = 0;
  TmvCharSet IgnoreSet;
  // The text of the token being scanned, reused from token to token.
  TmvSimpleCharBuffer TokenText;

 private:
  struct SavedState;
  SavedState Save() const;
  void Restore(const SavedState& state);
  const TmvToken& LastToken() const;
  const TmvTokenLook& LastLook() const;

  std::vector<TmvTokenLook> looks_;  // one per token, made at the end of Init
};

}  // namespace mv
