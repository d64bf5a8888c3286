// The way-point parsing engine: a two-pass parser for grammars that are not
// LL(1). The first pass walks the grammar with every alternative alive at
// once, recording each decision as a way point (frontend/WayPoint.h); the
// survivors at the end of the text are the complete parses, and list order
// alone ranks them. The second pass replays the first survivor as an
// ordinary recursive-descent parser that never tests a token: it reads each
// decision back and builds the syntax tree.
//
// Each dialect's parser is generated from its grammar file by
// tools/grammargen. For every rule it has a first-pass `<rule>WayCalc(list)`
// (with its body in `<rule>WayBody`), numbered `OptN`/`IterN`/`AltN` helpers
// (each with an `...Explore` part for the lists one token does not settle),
// and a second-pass `<rule>(...)`.
//
// Order of preference among complete ways, by construction of the combinators:
// - an option: the way that took it before the same way having skipped it;
// - a choice: all ways through alternative 0 before those through 1, ...;
// - a repetition: a way that left earlier before one that went on (it is not
//   greedy);
// - each combinator regroups the whole list stably, so a later decision
//   outranks every earlier one, as in a radix sort ending at the last one.
//
// Shared work. Every way of one list goes on through the same grammar, so
// what happens to a way depends only on its token position: of two ways of a
// list at the same position the later one can never be picked, and the
// driver's first pass drops it (the grammar's equivalent readings, such as
// doubled brackets read as a bracketed sub-query or as a bracketed
// expression holding one, are thus settled once). A rule entered again at the
// same positions while a choice still had alternatives to try reuses its
// first result (frontend/RuleMemo.h), so that readings inside each other
// never redo each other's work. Most choices need no exploring at all: the
// generator tabulates for every choice, option and repetition which of its
// branches each token kind may start (its first kinds, and what may follow
// it where it may read nothing), and a list of one way whose next token
// starts only one branch takes that branch alone, recording the same
// decision without copying the list. A recursive rule's result is shared;
// the others read a bounded piece of text. The picked way, the blamed token and the tree are those
// of the plain exploration, which ReferenceMode keeps for tests: there every
// way is explored on its own.
//
// Limits. The design itself sets none; this implementation ends a first pass
// with the ordinary syntax failure (no way found, `LimitExceeded()` true) when
// - rule calls nest deeper than MaxRuleDepth: a bracket level costs four
//   rule calls in a condition and five in an expression, and a way that
//   tries the outer brackets of a condition as those of an expression goes
//   five deep per level, so 200 nested brackets need about 1,000 and the
//   limit leaves room for them inside sub-queries. Both passes together
//   take under 0.09 KB of stack per rule call in an optimised build and
//   0.5 KB with the address sanitizer (measured: the limit fits in 128 KB
//   and in 768 KB), so a parse at the limit stays inside a 1 MB thread stack;
// - a way list holds more than MaxLiveWays ways, or
// - a first pass makes more rule calls than MinRuleCallBudget plus
//   MaxRuleCallsPerToken for each token. Real statements make about ten
//   calls a token and keep a few ways alive; with the shared work above
//   neither the corpus nor the bench's adversarial shapes come near these
//   counts, so they guard against hostile text and a grammar that lets
//   ways run away, and bound the plain exploration (ReferenceMode),
//   where brackets left open inside each other's select lists make the calls
//   grow exponentially with the nesting. A pass ended by either reports
//   TooComplex(); the nesting limit is the ordinary syntax failure.
// Long flat text (a list of 100,000 items) is no concern: repetitions loop
// instead of recursing, a way leaves a repetition only where a token that may
// follow it stands (so a list keeps no leaving way per item), and ways are
// released iteratively.
#pragma once

#include <array>
#include <limits>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "frontend/RuleMemo.h"
#include "frontend/Scanner.h"
#include "frontend/Token.h"
#include "frontend/WayPoint.h"
#include "support/Class.h"

namespace mv {

class TmvBaseSQLContext;
class TSQLSelectStatement;
class TSQLSubSelectStatement;
class TSQLDatabaseObject;
class TSQLExpressionItem;
class TSQLSelectItem;
class TSQLFromSource;
class TastTokenIdentifier;

class TmvBaseParser;
// A parser class as a value; the syntax provider hands one out and the
// context creates the parser from it with its scanner and itself.
using TmvParserClass = TmvClassOf<TmvBaseParser, TmvBaseScanner*, TmvBaseSQLContext*>;

// The eight entries of every parser, each a pair of first-pass and
// second-pass operations.
enum class TmvParserEntry {
  peSelect,
  peSubQuery,
  peObjectName,
  peExpression,
  peSelectItem,
  peLogicalExpression,
  peFromSource,
  peIdentifier,
};

// A literal array of token kinds, as hand-written tests and guards write them.
using TmvTokenKinds = std::span<const int32_t>;

// A set of token kinds as bits, as generated code writes its first, follow
// and guard sets: `static constexpr auto kFirst = KindBits<KindWords>({5, 6});`.
// Testing a kind is one shift and mask instead of a walk over an array,
// which matters because every way of a list tests its next tokens against
// the sets of every alternative it meets.
class TmvKindBits {
 public:
  template <size_t Words>
  constexpr TmvKindBits(const std::array<uint64_t, Words>& words) : words_(words.data()), count_(Words) {}

  // Two sets with the same kinds are equal, wherever their words are.
  bool operator==(const TmvKindBits& other) const {
    if (words_ == other.words_ && count_ == other.count_) return true;
    for (size_t i = 0; i < std::max(count_, other.count_); ++i) {
      if ((i < count_ ? words_[i] : 0) != (i < other.count_ ? other.words_[i] : 0)) return false;
    }
    return true;
  }

  // Kinds outside the set's words (tkNone among them) are not in it.
  bool Contains(int32_t kind) const {
    const uint32_t k = static_cast<uint32_t>(kind);
    return k / 64 < count_ && ((words_[k / 64] >> (k % 64)) & 1) != 0;
  }

 private:
  const uint64_t* words_;
  size_t count_;
};

// The words of a TmvKindBits holding `kinds` (each below 64 * Words).
template <size_t Words>
constexpr std::array<uint64_t, Words> KindBits(std::initializer_list<int32_t> kinds) {
  std::array<uint64_t, Words> words{};
  for (int32_t k : kinds) words[static_cast<size_t>(k) / 64] |= uint64_t(1) << (static_cast<size_t>(k) % 64);
  return words;
}
// Texts for CheckLANotIn; compared without regard to case.
using TmvAnsiStrings = std::vector<std::string>;

class TmvBaseParser : public TmvObject {
  MV_DECLARE_CLASS()

 public:
  static constexpr int32_t MaxRuleDepth = 1500;
  static constexpr int32_t MaxLiveWays = 100000;
  static constexpr int64_t MinRuleCallBudget = 100000;
  static constexpr int64_t MaxRuleCallsPerToken = 1000;

  TmvBaseParser(TmvBaseScanner* scanner, TmvBaseSQLContext* context);
  ~TmvBaseParser() override;
  TmvBaseParser(const TmvBaseParser&) = delete;
  TmvBaseParser& operator=(const TmvBaseParser&) = delete;

  // --- Fields. ---
  TmvBaseSQLContext* Context;  // given to every node created; not owned
  TmvBaseScanner* Scanner;     // not owned; read only
  int32_t MaxTokenIndex = -1;  // highest token index matched by any Expect
  // False lets a logical predicate start without its left expression.
  bool RequireLeftOperand = true;
  // With RequireLeftOperand false: the missing left side is a logical value.
  bool LeftIsLogical = false;
  int32_t TokenIndex = -1;          // second pass: index of the current token
  const TmvToken* Token = nullptr;  // second pass: the current token
  int32_t WayIndex = -1;            // second pass: index of the decision last read
  TmvWayPointsList* Way;            // second pass: the picked way, root first
  int32_t ServerVersion = 0;        // dialect level set by the syntax provider
  // Set by the syntax provider: grammars refuse a select INTO clause.
  bool DenyIntoClause = false;
  // Explore every way on its own, without dropping repeated ways or sharing
  // rule results: slower, with the same outcome; tests compare the two.
  bool ReferenceMode = false;

  // --- The entries. Second-pass results belong to the caller. ---
  virtual void ParseSelectWayCalc(TmvWayPointsList& list) = 0;
  virtual TSQLSelectStatement* ParseSelect() = 0;
  virtual void ParseSubQueryWayCalc(TmvWayPointsList& list) = 0;
  virtual TSQLSubSelectStatement* ParseSubQuery() = 0;
  virtual void ParseObjectNameWayCalc(TmvWayPointsList& list) = 0;
  virtual TSQLDatabaseObject* ParseObjectName() = 0;
  virtual void ParseExpressionWayCalc(TmvWayPointsList& list) = 0;
  virtual TSQLExpressionItem* ParseExpression() = 0;
  virtual void ParseSelectItemWayCalc(TmvWayPointsList& list) = 0;
  virtual TSQLSelectItem* ParseSelectItem() = 0;
  virtual void ParseLogicalExpressionWayCalc(TmvWayPointsList& list) = 0;
  virtual TSQLExpressionItem* ParseLogicalExpression() = 0;
  virtual void ParseFromSourceWayCalc(TmvWayPointsList& list) = 0;
  virtual TSQLFromSource* ParseFromSource() = 0;
  virtual void ParseIdentifierWayCalc(TmvWayPointsList& list) = 0;
  virtual TastTokenIdentifier* ParseIdentifier() = 0;

  // The first-pass operation of an entry.
  void EntryWayCalc(TmvParserEntry entry, TmvWayPointsList& list);

  // --- The driver. ---
  // Runs a first pass from a fresh root and keeps the ways that read up to the
  // end token. With a survivor, the first one is unrolled into Way (its root
  // already stepped over), the second pass may run, and the result is true.
  // Without one the result is false and GetBadToken names the token to blame.
  bool FindWay(const std::function<void(TmvWayPointsList&)>& firstPass);
  bool FindWay(TmvParserEntry entry);
  // The same test without preparing a second pass (identifier checks).
  bool TestWay(const std::function<void(TmvWayPointsList&)>& firstPass);
  // The last first pass ran into one of the limits above.
  bool LimitExceeded() const { return limitExceeded_; }
  // ... into the rule-call budget or the way limit, which only statements
  // too complex to parse meet; the nesting limit is an ordinary failure.
  bool TooComplex() const { return tooComplex_; }

  // --- First-pass primitives. Each works on every way of the list and only
  // deletes ways; survivors keep their order. The CheckLA... tests answer
  // whether a way is left, false also for a list that was empty. ---

  // Consumes one token of `kind` on every way, or deletes the way.
  void Expect(TmvWayPointsList& list, int32_t kind);
  // Deletes each way whose next token is not of a listed kind.
  bool CheckLAToken(TmvWayPointsList& list, int32_t kind);
  bool CheckLAToken(TmvWayPointsList& list, TmvTokenKinds kinds);
  bool CheckLAToken(TmvWayPointsList& list, TmvKindBits kinds);
  // Deletes each way whose next token is of a listed kind.
  bool CheckLANotToken(TmvWayPointsList& list, int32_t kind);
  bool CheckLANotToken(TmvWayPointsList& list, TmvTokenKinds kinds);
  bool CheckLANotToken(TmvWayPointsList& list, TmvKindBits kinds);
  // The same for the token after the next.
  bool CheckLA2NotToken(TmvWayPointsList& list, TmvTokenKinds kinds);
  bool CheckLA2NotToken(TmvWayPointsList& list, TmvKindBits kinds);
  // Deletes each way whose next token's text is one of `strings`.
  bool CheckLANotIn(TmvWayPointsList& list, const TmvAnsiStrings& strings);
  // A dialect's own guard (@check) answers as the tests above do: true if and
  // only if a way is left. The generated code passes the answer through this,
  // which raises EmvQueryBuilderError naming `check` when the two disagree.
  bool CheckedGuard(TmvWayPointsList& list, bool answer, const char* check) const;
  // Deletes each way whose next token, after any number of tokens of a `skip`
  // kind, is not of a `kinds` kind (the guard @starts: brackets, then what
  // starts a rule).
  bool CheckLATokenAfter(TmvWayPointsList& list, TmvKindBits skip, TmvKindBits kinds);
  // Replaces each tip by a new point with `choice`.
  void AddWayNode(TmvWayPointsList& list, int32_t choice);
  // Appends to `dest`, for each way of `src` in order, a new point with `choice`.
  void ListAddWithWayNode(TmvWayPointsList& dest, const TmvWayPointsList& src, int32_t choice);
  // The same for the ways of `src` whose next token is of a `follow` kind.
  // Repetitions leave through it: a way that leaves where nothing that may
  // follow stands would die at its next token anyway, and a long list would
  // otherwise keep one leaving way per item alive to its end.
  void ListAddWithWayNode(TmvWayPointsList& dest, const TmvWayPointsList& src, int32_t choice,
                          TmvTokenKinds follow);
  // With the kinds as bits. Generated choices and options also use it, into
  // an empty `dest`, for a copy of their input that only takes the ways an
  // alternative's first tokens (or what may follow a skipped option) admit,
  // so that ways an alternative cannot read are never copied. Returns
  // whether `dest` holds a way.
  bool ListAddWithWayNode(TmvWayPointsList& dest, const TmvWayPointsList& src, int32_t choice,
                          TmvKindBits follow);

  // --- Second-pass primitives. ---

  // The next decision of the picked way.
  TmvWayPoint* GetWayNode();
  // The next decision's choice, which must be below `count` (the number of
  // alternatives; 2 for an option or a repetition round). Anything else means
  // the two passes disagree: EmvQueryBuilderError, never a silent fall-through.
  int32_t ReadChoice(int32_t count) {
    const int32_t choice = GetWayNode()->Choice;
    if (static_cast<uint32_t>(choice) >= static_cast<uint32_t>(count)) UnexpectedChoice(choice, count);
    return choice;
  }
  // Moves to the next visible token and returns it (also in Token).
  const TmvToken& Get();
  // Prepares the second pass from a tip.
  void UnrollWay(TmvWayPoint* tip);
  // After a failed first pass: the index of the first visible token that no
  // way could consume. Never -1; GetToken of it always exists.
  int32_t GetBadToken() const;
  // The decimal Choice values of a way, root first, without separators. The
  // tip of a way that went through a shared rule result leads back through a
  // join point; WayStr spells the unrolled way instead.
  static std::string UnrollWayStr(const TmvWayPoint* point);
  // The decimal Choice values of the picked way (Way), root first.
  std::string WayStr() const;

 protected:
  // A scratch way list of a first-pass helper for the lifetime of a scope.
  // Helpers nest strictly, so their lists come from a stack of the thread
  // (TmvWayListStack) that keeps their storage from use to use. The stack is
  // the one of the thread that runs the first pass (or, for helpers called
  // outside a first pass, of the thread that made the parser).
  class TmvScopedWayList {
   public:
    explicit TmvScopedWayList(TmvBaseParser& parser) : stack_(*parser.listStack_), list_(stack_.Push()) {}
    ~TmvScopedWayList() { stack_.Pop(); }
    TmvScopedWayList(const TmvScopedWayList&) = delete;
    TmvScopedWayList& operator=(const TmvScopedWayList&) = delete;
    TmvWayPointsList& operator*() const { return list_; }
    TmvWayPointsList* operator->() const { return &list_; }

   private:
    TmvWayListStack& stack_;
    TmvWayPointsList& list_;
  };

  // Runs `body`, the first pass of rule number `rule` of the grammar, on
  // `list`, sharing its work with earlier entries at the same positions.
  template <class P>
  void ShareRule(P& self, void (P::*body)(TmvWayPointsList&), int32_t rule, TmvWayPointsList& list) {
    if (!sharing_) {
      (self.*body)(list);
      return;
    }
    const int32_t entry = BeginSharedRule(rule, list);
    if (entry == kRunPlainly) {
      (self.*body)(list);
    } else if (entry != kReplayed) {
      RunFromLocalRoots(self, body, entry, list);
    }
  }

  // The rare step of ShareRule apart, so that the frames of the common one,
  // which every rule call of a deep nesting stacks, stay small.
  template <class P>
  [[gnu::noinline]] void RunFromLocalRoots(P& self, void (P::*body)(TmvWayPointsList&), int32_t entry,
                                           TmvWayPointsList& list) {
    TmvScopedWayList roots(*this);
    const int32_t saved = OpenSharedRule(entry, list, *roots);
    (self.*body)(*roots);
    CloseSharedRule(entry, saved, list, *roots);
  }

  // The first pass the driver runs, unless ReferenceMode: repeated ways are
  // dropped, rule results shared, and a single way that can take only one
  // branch of a choice or option takes it without copying.
  bool SharedWork() const { return sharing_; }

  // For a list of one way: the bits `table` gives the kind of its next token
  // (and of each hidden token before it), or-ed. Generated choices and
  // options find with it the branches the way can start.
  template <class Mask, size_t N>
  Mask NextPick(const TmvWayPointsList& list, const std::array<Mask, N>& table) const {
    return PickAfter(list[0]->TokenIndex, table);
  }

  // The same for a list of any length: the bits of all its ways, or-ed.
  template <class Mask, size_t N>
  uint64_t NextPickAll(const TmvWayPointsList& list, const std::array<Mask, N>& table) const {
    uint64_t mask = 0;
    for (const TmvWayPoint* p : list.Raw()) mask |= PickAfter(p->TokenIndex, table);
    return mask;
  }

  // Drops the later of two ways at the same position (see above); generated
  // options, repetitions and choices end with it.
  void DropRepeats(TmvWayPointsList& list) {
    if (sharing_ && list.Count() > 1) DropRepeatedPositions(list);
  }

  // Held while a choice tries one of its alternatives. With `later` (an
  // alternative after it will still run) the rules entered meanwhile are
  // recorded, since that one may enter them again; with `earlier` (one before
  // it ran) they are looked up among those recorded.
  class TmvBranchScope {
   public:
    TmvBranchScope(TmvBaseParser& parser, bool later, bool earlier)
        : parser_(parser), later_(parser.sharing_ && later), earlier_(parser.sharing_ && earlier) {
      parser_.pendingBranches_ += later_;
      parser_.laterBranches_ += earlier_;
    }
    ~TmvBranchScope() {
      parser_.pendingBranches_ -= later_;
      parser_.laterBranches_ -= earlier_;
      if ((later_ | earlier_) && parser_.pendingBranches_ == 0 && parser_.laterBranches_ == 0) parser_.Settled();
    }
    TmvBranchScope(const TmvBranchScope&) = delete;
    TmvBranchScope& operator=(const TmvBranchScope&) = delete;

   private:
    TmvBaseParser& parser_;
    int32_t later_;
    int32_t earlier_;
  };

  // Opens a rule of the first pass; generated rules hold one for their whole
  // body. It is false when there is nothing to do: the list is empty, or the
  // rule nesting went past MaxRuleDepth, which ends the parse.
  class TmvRuleScope {
   public:
    TmvRuleScope(TmvBaseParser& parser, TmvWayPointsList& list) : parser_(parser) {
      ++parser.ruleDepth_;
      ++parser.ruleCalls_;
      ok_ = !list.IsEmpty() && ((parser.ruleDepth_ <= MaxRuleDepth && parser.ruleCalls_ <= parser.ruleCallBudget_) ||
                                parser.Abort(list, parser.ruleCalls_ > parser.ruleCallBudget_));
    }
    ~TmvRuleScope() { --parser_.ruleDepth_; }
    TmvRuleScope(const TmvRuleScope&) = delete;
    TmvRuleScope& operator=(const TmvRuleScope&) = delete;
    explicit operator bool() const { return ok_; }

   private:
    TmvBaseParser& parser_;
    bool ok_;
  };

 private:
  [[noreturn]] static void UnexpectedChoice(int32_t choice, int32_t count);
  // Ends the running first pass: every way dies from here on. Returns false.
  // `tooComplex` tells a budget of work from the nesting limit.
  bool Abort(TmvWayPointsList& list, bool tooComplex);
  // The lookahead tests for both forms of kind sets (TmvTokenKinds, TmvKindBits).
  template <class Kinds>
  bool KeepNextIn(TmvWayPointsList& list, const Kinds& kinds);
  template <class Kinds>
  bool KeepNextNotIn(TmvWayPointsList& list, const Kinds& kinds);
  template <class Kinds>
  bool KeepSecondNotIn(TmvWayPointsList& list, const Kinds& kinds);
  template <class Kinds>
  bool AddNextIn(TmvWayPointsList& dest, const TmvWayPointsList& src, int32_t choice, const Kinds& follow);
  bool RunFirstPass(const std::function<void(TmvWayPointsList&)>& firstPass, bool unroll);
  void EndFirstPass();
  // The first token after `last` that is neither hidden nor of a `skip`
  // kind. A run of such tokens (brackets inside brackets) is walked once a
  // pass, however many guards look past it.
  int32_t SkipRun(int32_t last, TmvKindBits skip);

  // The bits `table` gives the tokens after token `last` up to the first
  // visible one, or-ed.
  template <class Mask, size_t N>
  Mask PickAfter(int32_t last, const std::array<Mask, N>& table) const {
    Mask mask = 0;
    const TmvBaseScanner& scanner = *Scanner;
    for (int32_t i = last + 1;; ++i) {
      const TmvTokenLook& t = scanner.GetLook(i);
      if (static_cast<uint32_t>(t.Kind) < N) mask |= table[static_cast<uint32_t>(t.Kind)];
      if (!t.Hidden) return mask;
    }
  }

  // The steps of ShareRule. BeginSharedRule answers kRunPlainly (run the
  // body on the list), kReplayed (the list holds the kept result), or the
  // entry to run from local roots: OpenSharedRule fills `roots` and returns
  // the MaxTokenIndex to restore, CloseSharedRule keeps the result and
  // replays it on the list.
  static constexpr int32_t kRunPlainly = -1;
  static constexpr int32_t kReplayed = -2;
  int32_t BeginSharedRule(int32_t rule, TmvWayPointsList& list);
  int32_t OpenSharedRule(int32_t entry, const TmvWayPointsList& list, TmvWayPointsList& roots);
  void CloseSharedRule(int32_t entry, int32_t savedMaxTokenIndex, TmvWayPointsList& list,
                       const TmvWayPointsList& roots);
  void Replay(int32_t entry, TmvWayPointsList& list);
  void DropRepeatedPositions(TmvWayPointsList& list);
  // No open choice has an alternative left to try or one that ran before:
  // the entries were made for choices that are all closed, and a later one
  // meets few of them again. A long memo forgets them (a rule met again is
  // only run again), so that a long statement keeps the entries of the piece
  // it is in, not of all it has read.
  void Settled() {
    if (memo_.EntryCount() >= kForgetEntries) memo_.ForgetEntries();
  }
  static constexpr size_t kForgetEntries = 4096;

  int32_t ruleDepth_ = 0;
  int64_t ruleCalls_ = 0;
  // Set for the first pass the driver runs; rules called directly (tests of
  // a grammar's pieces) have none.
  int64_t ruleCallBudget_ = std::numeric_limits<int64_t>::max();
  bool limitExceeded_ = false;
  bool tooComplex_ = false;
  // Shared work is on for the first pass the driver runs, unless ReferenceMode.
  bool sharing_ = false;
  int32_t pendingBranches_ = 0;  // open TmvBranchScopes with `later`
  int32_t laterBranches_ = 0;    // ... with `earlier`
  TmvRuleMemo memo_;
  // SkipRun's answers for the kinds `skipRunKinds_`, by token index; -1 where
  // not known yet. Empty until a pass needs them.
  static constexpr std::array<uint64_t, 1> kNoKindWords{};
  std::vector<int32_t> skipRun_;
  TmvKindBits skipRunKinds_{kNoKindWords};
  // DropRepeatedPositions marks positions here with a stamp of its call.
  std::vector<uint32_t> seen_;
  uint32_t seenStamp_ = 0;
  TmvWayListStack* listStack_;
  TmvWayPointStock* stock_;
};

}  // namespace mv
