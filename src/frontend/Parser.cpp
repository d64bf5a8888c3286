#include "frontend/Parser.h"

#include <algorithm>

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

MV_DEFINE_CLASS(TmvBaseParser, TmvObject)

namespace {

// The two forms of a kind set behind one test, for the templates below.
struct KindArray {
  TmvTokenKinds kinds;
  bool Contains(int32_t kind) const {
    for (int32_t k : kinds) {
      if (k == kind) return true;
    }
    return false;
  }
};

// Whether the way whose last token is `last` goes on with a token of
// `kinds`. Hidden tokens are stepped over whatever the scanner's flags say,
// but each is tested on the way.
template <class Kinds>
inline __attribute__((always_inline)) bool NextIsIn(const TmvBaseScanner& scanner, int32_t last,
                                                   const Kinds& kinds) {
  for (int32_t i = last + 1;; ++i) {
    const TmvTokenLook& t = scanner.GetLook(i);
    if (kinds.Contains(t.Kind)) return true;
    if (!t.Hidden) return false;
  }
}

bool ContainsText(const TmvAnsiStrings& strings, const std::string& text) {
  for (const std::string& s : strings) {
    if (AnsiSameText(s, text)) return true;
  }
  return false;
}

// Holds the driver's reference on the root of a first pass.
class RootPoint {
 public:
  RootPoint() : point_(WayPointCache().Get(nullptr, 0)) { ++point_->RefCount; }
  ~RootPoint() { ReleaseWayPoint(point_); }
  RootPoint(const RootPoint&) = delete;
  RootPoint& operator=(const RootPoint&) = delete;
  TmvWayPoint* get() const { return point_; }

 private:
  TmvWayPoint* point_;
};

}  // namespace

TmvBaseParser::TmvBaseParser(TmvBaseScanner* scanner, TmvBaseSQLContext* context)
    : Context(context), Scanner(scanner), Way(WayPointListCache().Get()),
      listStack_(&TmvWayListStack::OfThisThread()),
      stock_(&TmvWayPointStock::OfThisThread()) {}

TmvBaseParser::~TmvBaseParser() { WayPointListCache().Put(Way); }

void TmvBaseParser::EntryWayCalc(TmvParserEntry entry, TmvWayPointsList& list) {
  switch (entry) {
    case TmvParserEntry::peSelect: ParseSelectWayCalc(list); break;
    case TmvParserEntry::peSubQuery: ParseSubQueryWayCalc(list); break;
    case TmvParserEntry::peObjectName: ParseObjectNameWayCalc(list); break;
    case TmvParserEntry::peExpression: ParseExpressionWayCalc(list); break;
    case TmvParserEntry::peSelectItem: ParseSelectItemWayCalc(list); break;
    case TmvParserEntry::peLogicalExpression: ParseLogicalExpressionWayCalc(list); break;
    case TmvParserEntry::peFromSource: ParseFromSourceWayCalc(list); break;
    case TmvParserEntry::peIdentifier: ParseIdentifierWayCalc(list); break;
  }
}

// --- The driver. ------------------------------------------------------------

bool TmvBaseParser::RunFirstPass(const std::function<void(TmvWayPointsList&)>& firstPass,
                                 bool unroll) {
  limitExceeded_ = false;
  ruleDepth_ = 0;
  ruleCalls_ = 0;
  ruleCallBudget_ = MinRuleCallBudget + MaxRuleCallsPerToken * static_cast<int64_t>(Scanner->GetTokens().size());
  // The helpers' lists and the way points come from the thread that runs the pass.
  listStack_ = &TmvWayListStack::OfThisThread();
  stock_ = &TmvWayPointStock::OfThisThread();
  RootPoint root;
  TmvPooledWayList list;
  list->Add(root.get());
  firstPass(*list);
  Expect(*list, tkEndOfText);
  ruleCallBudget_ = std::numeric_limits<int64_t>::max();
  const bool found = !list->IsEmpty() && !limitExceeded_;
  if (found && unroll) {
    UnrollWay((*list)[0]);
    GetWayNode();  // the root
  }
  return found;
}

bool TmvBaseParser::FindWay(const std::function<void(TmvWayPointsList&)>& firstPass) {
  return RunFirstPass(firstPass, true);
}

bool TmvBaseParser::FindWay(TmvParserEntry entry) {
  return RunFirstPass([this, entry](TmvWayPointsList& list) { EntryWayCalc(entry, list); }, true);
}

bool TmvBaseParser::TestWay(const std::function<void(TmvWayPointsList&)>& firstPass) {
  return RunFirstPass(firstPass, false);
}

bool TmvBaseParser::Abort(TmvWayPointsList& list) {
  limitExceeded_ = true;
  list.Clear();
  return false;
}

// --- First pass. --------------------------------------------------------------

void TmvBaseParser::Expect(TmvWayPointsList& list, int32_t kind) {
  if (list.IsEmpty()) return;
  if (limitExceeded_) {
    list.Clear();
    return;
  }
  const TmvBaseScanner& scanner = *Scanner;
  // The hidden tokens this scanner's flags step over.
  const uint8_t skip = static_cast<uint8_t>((scanner.SkipSpaces ? TmvTokenLook::kLineOrSpace : 0) |
                                            (scanner.SkipComments ? TmvTokenLook::kComment : 0));
  int32_t maxIndex = MaxTokenIndex;
  list.Filter([&](TmvWayPoint* p) {
    for (int32_t i = p->TokenIndex + 1;; ++i) {
      const TmvTokenLook& t = scanner.GetLook(i);
      // The match comes first, so that a grammar may expect a hidden kind.
      if (t.Kind == kind) {
        p->TokenIndex = i;
        if (i > maxIndex) maxIndex = i;
        return true;
      }
      if (t.Kind == tkNone) return false;
      if (t.Hidden & skip) continue;
      return false;
    }
  });
  MaxTokenIndex = maxIndex;
}

bool TmvBaseParser::CheckLAToken(TmvWayPointsList& list, int32_t kind) {
  const int32_t kinds[] = {kind};
  return CheckLAToken(list, kinds);
}

// The lookahead tests, one template per test for both forms of kind sets.
template <class Kinds>
bool TmvBaseParser::KeepNextIn(TmvWayPointsList& list, const Kinds& kinds) {
  if (list.IsEmpty()) return false;
  if (limitExceeded_) return Abort(list);
  const TmvBaseScanner& scanner = *Scanner;
  list.Filter([&](TmvWayPoint* p) { return NextIsIn(scanner, p->TokenIndex, kinds); });
  return !list.IsEmpty();
}

template <class Kinds>
bool TmvBaseParser::KeepNextNotIn(TmvWayPointsList& list, const Kinds& kinds) {
  if (list.IsEmpty()) return false;
  if (limitExceeded_) return Abort(list);
  const TmvBaseScanner& scanner = *Scanner;
  list.Filter([&](TmvWayPoint* p) { return !NextIsIn(scanner, p->TokenIndex, kinds); });
  return !list.IsEmpty();
}

template <class Kinds>
bool TmvBaseParser::KeepSecondNotIn(TmvWayPointsList& list, const Kinds& kinds) {
  if (list.IsEmpty()) return false;
  if (limitExceeded_) return Abort(list);
  const TmvBaseScanner& scanner = *Scanner;
  // The next visible token is found without testing; the tests start after it.
  for (TmvWayPoint* p : list.Raw()) {
    int32_t i = p->TokenIndex + 1;
    while (scanner.GetToken(i).IsHidden()) ++i;
    if (scanner.GetToken(i).Kind == tkNone) return false;
  }
  list.Filter([&](TmvWayPoint* p) {
    int32_t i = p->TokenIndex + 1;
    while (scanner.GetToken(i).IsHidden()) ++i;
    return !NextIsIn(scanner, i, kinds);
  });
  return !list.IsEmpty();
}

template <class Kinds>
bool TmvBaseParser::AddNextIn(TmvWayPointsList& dest, const TmvWayPointsList& src, int32_t choice,
                              const Kinds& follow) {
  if (src.IsEmpty()) return !dest.IsEmpty();
  if (limitExceeded_) return !dest.IsEmpty();
  const TmvBaseScanner& scanner = *Scanner;
  TmvWayPointStock& stock = *stock_;
  for (TmvWayPoint* tip : src.Raw()) {
    // The same test as CheckLAToken, on a way that stays in `src`.
    if (!NextIsIn(scanner, tip->TokenIndex, follow)) continue;
    if (dest.Count() >= MaxLiveWays) {
      Abort(dest);
      return false;
    }
    dest.Add(stock.New(tip, choice));
  }
  return !dest.IsEmpty();
}

bool TmvBaseParser::CheckLAToken(TmvWayPointsList& list, TmvTokenKinds kinds) {
  return KeepNextIn(list, KindArray{kinds});
}

bool TmvBaseParser::CheckLAToken(TmvWayPointsList& list, TmvKindBits kinds) { return KeepNextIn(list, kinds); }

bool TmvBaseParser::CheckLANotToken(TmvWayPointsList& list, int32_t kind) {
  const int32_t kinds[] = {kind};
  return CheckLANotToken(list, kinds);
}

bool TmvBaseParser::CheckLANotToken(TmvWayPointsList& list, TmvTokenKinds kinds) {
  return KeepNextNotIn(list, KindArray{kinds});
}

bool TmvBaseParser::CheckLANotToken(TmvWayPointsList& list, TmvKindBits kinds) {
  return KeepNextNotIn(list, kinds);
}

bool TmvBaseParser::CheckLA2NotToken(TmvWayPointsList& list, TmvTokenKinds kinds) {
  return KeepSecondNotIn(list, KindArray{kinds});
}

bool TmvBaseParser::CheckLA2NotToken(TmvWayPointsList& list, TmvKindBits kinds) {
  return KeepSecondNotIn(list, kinds);
}

bool TmvBaseParser::CheckLANotIn(TmvWayPointsList& list, const TmvAnsiStrings& strings) {
  if (list.IsEmpty()) return false;
  if (limitExceeded_) return Abort(list);
  const TmvBaseScanner& scanner = *Scanner;
  list.Filter([&](TmvWayPoint* p) {
    for (int32_t i = p->TokenIndex + 1;; ++i) {
      const TmvToken& t = scanner.GetToken(i);
      if (ContainsText(strings, WideToAnsi(t.Text))) return false;
      if (!t.IsHidden()) return true;
    }
  });
  return !list.IsEmpty();
}

bool TmvBaseParser::CheckLATokenAfter(TmvWayPointsList& list, TmvKindBits skip, TmvKindBits kinds) {
  if (list.IsEmpty()) return false;
  if (limitExceeded_) return Abort(list);
  const TmvBaseScanner& scanner = *Scanner;
  list.Filter([&](TmvWayPoint* p) {
    for (int32_t i = p->TokenIndex + 1;; ++i) {
      const TmvTokenLook& t = scanner.GetLook(i);
      if (t.Hidden || skip.Contains(t.Kind)) continue;
      return kinds.Contains(t.Kind);
    }
  });
  return !list.IsEmpty();
}

void TmvBaseParser::AddWayNode(TmvWayPointsList& list, int32_t choice) {
  if (list.Count() > MaxLiveWays) {
    Abort(list);
    return;
  }
  TmvWayPointStock& stock = *stock_;
  for (TmvWayPoint*& slot : list.Raw()) {
    TmvWayPoint* tip = slot;
    TmvWayPoint* point = stock.New(tip, choice);
    // The list's reference on the old tip passes to the new point.
    --tip->RefCount;
    ++point->RefCount;
    slot = point;
  }
}

void TmvBaseParser::ListAddWithWayNode(TmvWayPointsList& dest, const TmvWayPointsList& src,
                                       int32_t choice) {
  if (src.IsEmpty()) return;
  if (dest.Count() + src.Count() > MaxLiveWays) {
    Abort(dest);
    return;
  }
  TmvWayPointStock& stock = *stock_;
  dest.Reserve(dest.Raw().size() + src.Count());
  for (int32_t i = 0; i < src.Count(); ++i) dest.Add(stock.New(src[i], choice));
}

void TmvBaseParser::ListAddWithWayNode(TmvWayPointsList& dest, const TmvWayPointsList& src, int32_t choice,
                                       TmvTokenKinds follow) {
  AddNextIn(dest, src, choice, KindArray{follow});
}

bool TmvBaseParser::ListAddWithWayNode(TmvWayPointsList& dest, const TmvWayPointsList& src, int32_t choice,
                                       TmvKindBits follow) {
  return AddNextIn(dest, src, choice, follow);
}

// --- Second pass. -------------------------------------------------------------

void TmvBaseParser::UnexpectedChoice(int32_t choice, int32_t count) {
  throw EmvQueryBuilderError(WideFormat(u"The parser read the decision %d where the grammar has %d choices",
                                        {choice, count}));
}

bool TmvBaseParser::CheckedGuard(TmvWayPointsList& list, bool answer, const char* check) const {
  if (answer != !list.IsEmpty()) {
    throw EmvQueryBuilderError(WideFormat(u"The grammar check %s answered %s with %d ways left",
                                          {UTF8Decode(check), answer ? u"true" : u"false", list.Count()}));
  }
  return answer;
}

TmvWayPoint* TmvBaseParser::GetWayNode() {
  ++WayIndex;
  if (WayIndex >= Way->Count()) {
    // The two passes of a rule read different decisions: a generator fault.
    throw EmvQueryBuilderError(u"The parser read more decisions than its first pass recorded");
  }
  return (*Way)[WayIndex];
}

const TmvToken& TmvBaseParser::Get() {
  const TmvBaseScanner& scanner = *Scanner;
  do {
    ++TokenIndex;
  } while (scanner.GetToken(TokenIndex).IsHidden());
  Token = &scanner.GetToken(TokenIndex);
  return *Token;
}

void TmvBaseParser::UnrollWay(TmvWayPoint* tip) {
  Way->Clear();
  std::vector<TmvWayPoint*> chain;
  for (TmvWayPoint* p = tip; p; p = p->Prev) chain.push_back(p);
  Way->Raw().reserve(chain.size());
  for (size_t i = chain.size(); i-- > 0;) Way->Add(chain[i]);
  TokenIndex = -1;
  Token = nullptr;
  WayIndex = -1;
  MaxTokenIndex = -1;
}

int32_t TmvBaseParser::GetBadToken() const {
  int32_t i = MaxTokenIndex + 1;
  while (Scanner->GetToken(i).IsHidden()) ++i;
  return i;
}

std::string TmvBaseParser::UnrollWayStr(const TmvWayPoint* point) {
  std::vector<int32_t> choices;
  for (const TmvWayPoint* p = point; p; p = p->Prev) choices.push_back(p->Choice);
  std::string out;
  for (size_t i = choices.size(); i-- > 0;) out += std::to_string(choices[i]);
  return out;
}

}  // namespace mv
