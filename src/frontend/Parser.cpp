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
  tooComplex_ = false;
  ruleDepth_ = 0;
  ruleCalls_ = 0;
  ruleCallBudget_ = MinRuleCallBudget + MaxRuleCallsPerToken * static_cast<int64_t>(Scanner->GetTokens().size());
  // The helpers' lists and the way points come from the thread that runs the pass.
  listStack_ = &TmvWayListStack::OfThisThread();
  stock_ = &TmvWayPointStock::OfThisThread();
  sharing_ = !ReferenceMode;
  skipRun_.clear();
  pendingBranches_ = 0;
  laterBranches_ = 0;
  bool found = false;
  try {
    RootPoint root;
    TmvPooledWayList list;
    list->Add(root.get());
    firstPass(*list);
    Expect(*list, tkEndOfText);
    found = !list->IsEmpty() && !limitExceeded_;
    // The picked way is unrolled while the shared results it may join are kept.
    if (found && unroll) {
      UnrollWay((*list)[0]);
      GetWayNode();  // the root
    }
  } catch (...) {
    EndFirstPass();
    throw;
  }
  EndFirstPass();
  return found;
}

void TmvBaseParser::EndFirstPass() {
  ruleCallBudget_ = std::numeric_limits<int64_t>::max();
  sharing_ = false;
  memo_.Clear();
  skipRun_.clear();
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

bool TmvBaseParser::Abort(TmvWayPointsList& list, bool tooComplex) {
  limitExceeded_ = true;
  tooComplex_ = tooComplex_ || tooComplex;
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
  if (limitExceeded_) return Abort(list, false);
  const TmvBaseScanner& scanner = *Scanner;
  list.Filter([&](TmvWayPoint* p) { return NextIsIn(scanner, p->TokenIndex, kinds); });
  return !list.IsEmpty();
}

template <class Kinds>
bool TmvBaseParser::KeepNextNotIn(TmvWayPointsList& list, const Kinds& kinds) {
  if (list.IsEmpty()) return false;
  if (limitExceeded_) return Abort(list, false);
  const TmvBaseScanner& scanner = *Scanner;
  list.Filter([&](TmvWayPoint* p) { return !NextIsIn(scanner, p->TokenIndex, kinds); });
  return !list.IsEmpty();
}

template <class Kinds>
bool TmvBaseParser::KeepSecondNotIn(TmvWayPointsList& list, const Kinds& kinds) {
  if (list.IsEmpty()) return false;
  if (limitExceeded_) return Abort(list, false);
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
      Abort(dest, true);
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
  if (limitExceeded_) return Abort(list, false);
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
  if (limitExceeded_) return Abort(list, false);
  const TmvBaseScanner& scanner = *Scanner;
  list.Filter([&](TmvWayPoint* p) { return kinds.Contains(scanner.GetLook(SkipRun(p->TokenIndex, skip)).Kind); });
  return !list.IsEmpty();
}

int32_t TmvBaseParser::SkipRun(int32_t last, TmvKindBits skip) {
  const TmvBaseScanner& scanner = *Scanner;
  const size_t count = scanner.GetTokens().size() + 1;
  if (skipRun_.size() != count || !(skipRunKinds_ == skip)) {
    skipRun_.assign(count, -1);
    skipRunKinds_ = skip;
  }
  const auto known = [&](int32_t i) { return static_cast<size_t>(i) < count ? skipRun_[static_cast<size_t>(i)] : -1; };
  // Walk to the end of the run, or to a token whose answer is known ...
  int32_t i = last + 1;
  while (known(i) < 0) {
    const TmvTokenLook& t = scanner.GetLook(i);
    if (!t.Hidden && !skip.Contains(t.Kind)) break;
    ++i;
  }
  const int32_t answer = known(i) >= 0 ? known(i) : i;
  // ... and give every token of the walk the answer.
  for (int32_t j = last + 1; j <= i && static_cast<size_t>(j) < count; ++j) skipRun_[static_cast<size_t>(j)] = answer;
  return answer;
}

void TmvBaseParser::AddWayNode(TmvWayPointsList& list, int32_t choice) {
  if (list.Count() > MaxLiveWays) {
    Abort(list, true);
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
    Abort(dest, true);
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

// --- Shared work. ---------------------------------------------------------------

void TmvBaseParser::DropRepeatedPositions(TmvWayPointsList& list) {
  if (list.Count() <= 8) {
    // Short lists, the usual ones, compare pairwise.
    std::vector<TmvWayPoint*>& items = list.Raw();
    size_t out = 0;
    for (size_t i = 0; i < items.size(); ++i) {
      TmvWayPoint* p = items[i];
      bool repeated = false;
      for (size_t j = 0; j < out && !repeated; ++j) repeated = items[j]->TokenIndex == p->TokenIndex;
      if (repeated) {
        ReleaseWayPoint(p);
      } else {
        items[out++] = p;
      }
    }
    items.resize(out);
    return;
  }
  const size_t size = Scanner->GetTokens().size() + 2;
  if (seen_.size() < size) seen_.resize(size, 0);
  if (++seenStamp_ == 0) {
    std::fill(seen_.begin(), seen_.end(), 0);
    seenStamp_ = 1;
  }
  list.Filter([&](TmvWayPoint* p) {
    uint32_t& mark = seen_[static_cast<size_t>(p->TokenIndex + 1)];
    if (mark == seenStamp_) return false;
    mark = seenStamp_;
    return true;
  });
}

int32_t TmvBaseParser::BeginSharedRule(int32_t rule, TmvWayPointsList& list) {
  DropRepeats(list);
  // Only a later alternative of a choice can meet a rule again where an
  // earlier one entered it; where the rule may be recorded, it is looked up
  // first, so that it is recorded once.
  if (pendingBranches_ == 0 && laterBranches_ == 0) return kRunPlainly;
  const int32_t entry = memo_.IsEmpty() ? -1 : memo_.Find(rule, list);
  if (entry < 0) {
    // Only a choice with alternatives still to try can bring the rule back here.
    if (pendingBranches_ > 0) memo_.Add(rule, list);
    return kRunPlainly;
  }
  switch (memo_.StateOf(entry)) {
    case TmvRuleMemo::State::Done:
      Replay(entry, list);
      return kReplayed;
    case TmvRuleMemo::State::Computing:
      return kRunPlainly;
    case TmvRuleMemo::State::Entered:
      break;
  }
  return entry;
}

int32_t TmvBaseParser::OpenSharedRule(int32_t entry, const TmvWayPointsList& list, TmvWayPointsList& roots) {
  memo_.SetState(entry, TmvRuleMemo::State::Computing);
  TmvWayPointStock& stock = *stock_;
  for (int32_t i = 0; i < list.Count(); ++i) {
    TmvWayPoint* root = stock.New(nullptr, kLocalRootChoice);
    root->TokenIndex = list[i]->TokenIndex;
    root->Origin = i;
    roots.Add(root);
  }
  // The tokens the rule reads from here are counted apart, for the replays.
  const int32_t saved = MaxTokenIndex;
  MaxTokenIndex = -1;
  return saved;
}

void TmvBaseParser::CloseSharedRule(int32_t entry, int32_t savedMaxTokenIndex, TmvWayPointsList& list,
                                    const TmvWayPointsList& roots) {
  const int32_t reached = MaxTokenIndex;
  MaxTokenIndex = std::max(savedMaxTokenIndex, reached);
  if (limitExceeded_) {
    list.Clear();
    return;
  }
  memo_.Store(entry, roots, reached);
  Replay(entry, list);
}

void TmvBaseParser::Replay(int32_t entry, TmvWayPointsList& list) {
  MaxTokenIndex = std::max(MaxTokenIndex, memo_.MaxTokenIndexOf(entry));
  const int32_t first = memo_.FirstResultOf(entry);
  const int32_t count = memo_.ResultCountOf(entry);
  if (count > MaxLiveWays) {
    Abort(list, true);
    return;
  }
  TmvWayPointStock& stock = *stock_;
  TmvScopedWayList out(*this);
  out->Reserve(static_cast<size_t>(count));
  for (int32_t i = first; i < first + count; ++i) {
    const TmvRuleMemo::Result& result = memo_.ResultAt(i);
    TmvWayPoint* join = stock.New(list[result.Origin], TmvRuleMemo::JoinChoice(i));
    join->TokenIndex = result.Tip->TokenIndex;
    out->Add(join);
  }
  list.MoveFrom(*out);
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
  // Walking back from the tip, a join point stands for the chain of the result
  // it joins, read back to its local root; then the walk goes on before the join.
  std::vector<TmvWayPoint*> chain;
  std::vector<TmvWayPoint*> resume;
  TmvWayPoint* p = tip;
  for (;;) {
    if (!p || p->Choice == kLocalRootChoice) {
      if (resume.empty()) break;
      p = resume.back();
      resume.pop_back();
      continue;
    }
    if (IsJoinPoint(p)) {
      resume.push_back(p->Prev);
      p = memo_.JoinedResult(p).Tip;
      continue;
    }
    chain.push_back(p);
    p = p->Prev;
  }
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

std::string TmvBaseParser::WayStr() const {
  std::string out;
  for (const TmvWayPoint* p : Way->Raw()) out += std::to_string(p->Choice);
  return out;
}

std::string TmvBaseParser::UnrollWayStr(const TmvWayPoint* point) {
  std::vector<int32_t> choices;
  for (const TmvWayPoint* p = point; p; p = p->Prev) choices.push_back(p->Choice);
  std::string out;
  for (size_t i = choices.size(); i-- > 0;) out += std::to_string(choices[i]);
  return out;
}

}  // namespace mv
