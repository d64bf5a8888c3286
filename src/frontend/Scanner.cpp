#include "frontend/Scanner.h"

namespace mv {

MV_DEFINE_CLASS(TmvBaseScanner, TmvObject)

struct TmvBaseScanner::SavedState {
  int32_t pos, line, lineStart, bufferPos, ch;
  char16_t rawCh;
};

TmvBaseScanner::TmvBaseScanner() { IgnoreSet.SetItems(u' ', true); }

TmvBaseScanner::~TmvBaseScanner() = default;

void TmvBaseScanner::Init(const WideString& text) {
  Buffer = std::make_unique<TmvBuffer>();
  Buffer->Fill(text);
  Pos = -1;
  Line = 1;
  LineStart = 0;
  NextCh();
  Tokens.clear();
  // A rough guess that saves most of the regrowth on long texts.
  Tokens.reserve(text.size() / 3 + 1);
  do {
    Tokens.push_back(NextToken());
  } while (Tokens.back().Kind != tkEndOfText);
  Tokens.back().Text = u"EOF";
  Buffer.reset();
  looks_.resize(Tokens.size());
  for (size_t i = 0; i < Tokens.size(); ++i) {
    const TmvToken& t = Tokens[i];
    looks_[i].Kind = t.Kind;
    looks_[i].Hidden = static_cast<uint8_t>((t.Kind == tkNewLine || t.Kind == tkSpace ? TmvTokenLook::kLineOrSpace : 0) |
                                            (t.IsComment ? TmvTokenLook::kComment : 0));
  }
}

const TmvTokenLook& TmvBaseScanner::LastLook() const {
  if (!looks_.empty()) return looks_.back();
  static const TmvTokenLook endLook{};
  return endLook;
}

const TmvToken& TmvBaseScanner::LastToken() const {
  if (!Tokens.empty()) return Tokens.back();
  // Before the first Init there is no list; readers still get an end token.
  static const TmvToken endToken{tkEndOfText, 0, 1, 1, u"EOF", false, false};
  return endToken;
}

std::optional<TmvToken> TmvBaseScanner::NewLineToken() {
  if (Ch != 13 && Ch != 10) return std::nullopt;
  TmvToken token = StartToken();
  token.Kind = tkNewLine;
  if (Ch == 13) {
    NextCh();
    if (Ch == 10) {
      token.Text = u"\r\n";
      NextCh();
    } else {
      token.Text = u"\r";
    }
  } else {
    // A lone LF is stored as CR, like a lone CR.
    token.Text = u"\r";
    NextCh();
  }
  ++Line;
  LineStart = Pos;
  return token;
}

TmvBaseScanner::SavedState TmvBaseScanner::Save() const {
  return SavedState{Pos, Line, LineStart, Buffer->GetPos(), Ch, RawCh};
}

void TmvBaseScanner::Restore(const SavedState& state) {
  Pos = state.pos;
  Line = state.line;
  LineStart = state.lineStart;
  Buffer->SetPos(state.bufferPos);
  Ch = state.ch;
  RawCh = state.rawCh;
}

std::optional<TmvToken> TmvBaseScanner::ScanLineComment(char16_t second, int32_t kind) {
  const SavedState saved = Save();
  TmvToken token = StartToken();
  TokenText.Clear();
  TokenText.Append(RawCh);
  NextCh();
  if (second != 0) {
    if (Ch != second) {
      Restore(saved);
      return std::nullopt;
    }
    TokenText.Append(RawCh);
    NextCh();
  }
  while (Ch != -1 && Ch != 13 && Ch != 10) {
    TokenText.Append(RawCh);
    NextCh();
  }
  token.Kind = kind;
  token.IsComment = true;
  token.Text = TokenText.ToWideString();
  return token;
}

std::optional<TmvToken> TmvBaseScanner::ScanBlockComment(char16_t second, char16_t close1,
                                                         char16_t close2, bool nested,
                                                         int32_t kind) {
  const SavedState saved = Save();
  const char16_t first = static_cast<char16_t>(Ch);
  TmvToken token = StartToken();
  TokenText.Clear();
  TokenText.Append(RawCh);
  NextCh();
  if (Ch != second) {
    Restore(saved);
    return std::nullopt;
  }
  TokenText.Append(RawCh);
  NextCh();
  int level = 1;
  while (Ch != -1) {
    if (Ch == 13 || Ch == 10) {
      // Counted like any line end; the comment keeps the line end's text.
      TokenText.Append(NewLineToken()->Text);
      continue;
    }
    const int32_t ch = Ch;
    TokenText.Append(RawCh);
    NextCh();
    if (nested && ch == first && Ch == second) {
      TokenText.Append(RawCh);
      NextCh();
      ++level;
    } else if (ch == close1 && Ch == close2) {
      TokenText.Append(RawCh);
      NextCh();
      if (--level == 0) break;
    }
  }
  token.Kind = kind;
  token.IsComment = true;
  token.Text = TokenText.ToWideString();
  return token;
}

std::optional<TmvToken> TmvBaseScanner::ScanTaggedString(int32_t kind) {
  if (Ch == u'\'') {
    TmvToken token = StartToken();
    TokenText.Clear();
    TokenText.Append(RawCh);
    NextCh();
    while (Ch != -1 && Ch != u'\'') {
      if (Ch == u'\\') {
        TokenText.Append(RawCh);
        NextCh();
        if (Ch == -1) break;
      }
      TokenText.Append(RawCh);
      NextCh();
    }
    if (Ch == u'\'') {
      TokenText.Append(RawCh);
      NextCh();
    }
    token.Kind = kind;
    token.Text = TokenText.ToWideString();
    return token;
  }
  if (Ch != u'$') return std::nullopt;

  const SavedState saved = Save();
  TmvToken token = StartToken();
  TokenText.Clear();
  TokenText.Append(RawCh);
  NextCh();
  while (Ch != -1 && Ch != u'$') {
    TokenText.Append(RawCh);
    NextCh();
  }
  if (Ch == -1) {
    Restore(saved);
    return std::nullopt;
  }
  TokenText.Append(RawCh);
  NextCh();
  const WideString delimiter = TokenText.ToWideString();
  const WideString& text = Buffer->GetText();
  const size_t closer = Pos < 0 ? WideString::npos : text.find(delimiter, static_cast<size_t>(Pos));
  if (closer == WideString::npos) {
    Restore(saved);
    return std::nullopt;
  }
  const int32_t end = static_cast<int32_t>(closer + delimiter.size());
  while (Pos < end) {
    TokenText.Append(RawCh);
    NextCh();
  }
  token.Kind = kind;
  token.Text = TokenText.ToWideString();
  return token;
}

}  // namespace mv
