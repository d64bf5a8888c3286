// Way points: the persistent record of the decisions the first pass of the
// parser has taken. A way point is one decision; a way is the chain from a tip
// back to the root; ways share their common prefix, so the tree of points is
// the only copy of the decisions. A way list is the set of ways alive at one
// place of the grammar, in order of preference.
//
// Reference rules:
// - A new point has RefCount 0; it takes one reference on Prev and copies
//   Prev's TokenIndex (-1 without Prev).
// - Adding a point to a way list adds a reference; removing it releases one.
// - Releasing walks the chain iteratively: a point whose last reference goes
//   is freed and the walk goes on with its Prev; the first point that keeps
//   references stops it. Ways are as long as the text has decisions, so this
//   never recurses.
//
// A parse, its lists and its points belong to one thread, so the counts are
// plain integers. Records and lists come from two process-wide pools shared by
// all threads; each thread keeps a small private stock in front of them so
// that the hot path takes no lock.
#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace mv {

struct TmvWayPoint {
  TmvWayPoint* Prev;   // the decision before this one; null at the root; holds a reference
  int32_t RefCount;    // references from successors and from way lists
  int32_t TokenIndex;  // index of the last token this way has read; -1 when none
  int32_t Choice;      // the decision's value; 0 at the root
  // Which way of the list a shared rule result started from (see
  // TmvRuleMemo); copied from Prev, 0 without one.
  int32_t Origin;
};

// Choices that are no decision of the grammar. A shared rule result starts at
// a local root of its own, and the ways that reuse it hold a join point in
// its place: its Choice, below zero, names the result (TmvRuleMemo). Unrolled
// ways hold neither.
constexpr int32_t kLocalRootChoice = INT32_MIN;
inline bool IsJoinPoint(const TmvWayPoint* p) { return p->Choice < 0 && p->Choice != kLocalRootChoice; }

// Frees `point`, whose last reference goes, and releases its Prev chain.
void FreeWayPointChain(TmvWayPoint* point);

// Releases one reference on `point` (none for null) and frees what is no
// longer referenced. Most releases only count down, so that part is inline.
inline void ReleaseWayPoint(TmvWayPoint* point) {
  if (!point) return;
  if (point->RefCount > 1) {
    --point->RefCount;
    return;
  }
  FreeWayPointChain(point);
}

// The spare way point records of one thread, a chain linked by Prev. Records
// come from slabs of a process-wide stock; chains of kBatch records travel
// between the threads and the stock under its lock, so the hot path takes no
// lock. A parser keeps the stock of the thread that runs its first pass at
// hand, so that making a point is a few instructions.
class TmvWayPointStock {
 public:
  static constexpr size_t kBatch = 512;               // records moved to or from the stock at once
  static constexpr size_t kLocalLimit = 4 * kBatch;  // a thread keeps at most this many spare

  TmvWayPointStock() = default;
  TmvWayPointStock(const TmvWayPointStock&) = delete;
  TmvWayPointStock& operator=(const TmvWayPointStock&) = delete;

  // A new point after `prev` (which gains a reference) with `choice`; it has
  // no reference yet and copies Prev's TokenIndex (-1 without Prev).
  TmvWayPoint* New(TmvWayPoint* prev, int32_t choice) {
    if (!head_) Refill();
    TmvWayPoint* p = head_;
    head_ = p->Prev;
    --count_;
    ++live_;
    p->Prev = prev;
    p->RefCount = 0;
    p->Choice = choice;
    if (prev) {
      ++prev->RefCount;
      p->TokenIndex = prev->TokenIndex;
      p->Origin = prev->Origin;
    } else {
      p->TokenIndex = -1;
      p->Origin = 0;
    }
    return p;
  }

  // Takes a record back; its Prev is not released.
  void Free(TmvWayPoint* p) {
    --live_;
    p->Prev = head_;
    head_ = p;
    if (++count_ > kLocalLimit) GiveBatch();
  }

  // Records made and not yet freed by this thread.
  int64_t Live() const { return live_; }

  // Gives the spare records back to the process-wide stock; the stock stays
  // usable and takes from there again when it needs records.
  void ReturnSpare();

  // The stock of the calling thread.
  static TmvWayPointStock& OfThisThread();

 private:
  void Refill();
  void GiveBatch();

  TmvWayPoint* head_ = nullptr;
  size_t count_ = 0;
  int64_t live_ = 0;
};

// A list of way points that counts its references.
class TmvWayPointsList {
 public:
  TmvWayPointsList() = default;
  ~TmvWayPointsList() { Clear(); }
  TmvWayPointsList(const TmvWayPointsList&) = delete;
  TmvWayPointsList& operator=(const TmvWayPointsList&) = delete;

  int32_t Count() const { return static_cast<int32_t>(items_.size()); }
  bool IsEmpty() const { return items_.empty(); }
  TmvWayPoint* Items(int32_t index) const { return items_[index]; }
  TmvWayPoint* operator[](int32_t index) const { return items_[index]; }
  // Stores the pointer without touching any count.
  void SetItems(int32_t index, TmvWayPoint* point) { items_[index] = point; }

  // Adds a reference and appends.
  void Add(TmvWayPoint* point) {
    ++point->RefCount;
    items_.push_back(point);
  }
  // Adds a reference and inserts.
  void Insert(int32_t index, TmvWayPoint* point);
  // Removes and releases.
  void Delete(int32_t index);
  // Releases from last to first and empties the list.
  void Clear();
  // Adds each non-null point of `src` in order; `src` is unchanged.
  void AddFrom(const TmvWayPointsList& src);
  // Clear, then add each point of `src` in order.
  void CopyFrom(const TmvWayPointsList& src);
  // Clear, then take over the points of `src` in order without touching
  // counts; `src` ends empty.
  void MoveFrom(TmvWayPointsList& src);
  // Appends the points of `src` in order without touching counts; `src`
  // ends empty (AddFrom followed by clearing `src`, without the counting).
  void AppendFrom(TmvWayPointsList& src);

  // Keeps the points for which `keep(point)` holds, in order, and releases
  // the others: the deleting walk of the first-pass primitives.
  template <class Keep>
  void Filter(Keep keep) {
    size_t out = 0;
    for (size_t i = 0; i < items_.size(); ++i) {
      TmvWayPoint* p = items_[i];
      if (keep(p)) {
        items_[out++] = p;
      } else {
        ReleaseWayPoint(p);
      }
    }
    items_.resize(out);
  }

  // Makes room for `count` items; capacity grows at least twofold, so that
  // lists that grow a little at a time are not copied again and again.
  void Reserve(size_t count) {
    if (count > items_.capacity()) items_.reserve(std::max(count, 2 * items_.capacity()));
  }

  // Direct access for the engine's loops.
  std::vector<TmvWayPoint*>& Raw() { return items_; }
  const std::vector<TmvWayPoint*>& Raw() const { return items_; }

 private:
  std::vector<TmvWayPoint*> items_;
};

// The one place where way points are made and freed.
class TmvQBWayPointsCache {
 public:
  TmvQBWayPointsCache() = default;
  ~TmvQBWayPointsCache();
  TmvQBWayPointsCache(const TmvQBWayPointsCache&) = delete;
  TmvQBWayPointsCache& operator=(const TmvQBWayPointsCache&) = delete;

  // A new point after `prev` (which gains a reference) with `choice`.
  TmvWayPoint* Get(TmvWayPoint* prev, int32_t choice);
  // Releases the point's Prev, if any, and frees the record.
  void Put(TmvWayPoint* point);

  // Points made and not yet freed by the calling thread. A parse makes and
  // frees its points on one thread, so this returns to its earlier value
  // once the parse and its parser are gone (tests check the reference rules
  // with it).
  static int64_t LiveRecordsOfThisThread();
};

// A pool of empty way lists.
class TmvQBWayPointListsCache {
 public:
  TmvQBWayPointListsCache() = default;
  ~TmvQBWayPointListsCache();
  TmvQBWayPointListsCache(const TmvQBWayPointListsCache&) = delete;
  TmvQBWayPointListsCache& operator=(const TmvQBWayPointListsCache&) = delete;

  TmvWayPointsList* Get();
  // Clears the list (releasing its points) and pools it.
  void Put(TmvWayPointsList* list);
};

// The scratch way lists of the first passes that run on one thread. The
// helpers of a first pass open and close their lists strictly nested, so the
// lists form a stack; each keeps its storage when it is closed, so that a
// helper's list costs no allocation once the thread has parsed a little.
class TmvWayListStack {
 public:
  // The next list, empty.
  TmvWayPointsList& Push() {
    if (depth_ == lists_.size()) lists_.push_back(std::make_unique<TmvWayPointsList>());
    return *lists_[depth_++];
  }
  // Clears the last list pushed (releasing its points) and closes it.
  void Pop() { lists_[--depth_]->Clear(); }
  size_t Depth() const { return depth_; }

  // The stack of the calling thread.
  static TmvWayListStack& OfThisThread();

 private:
  std::vector<std::unique_ptr<TmvWayPointsList>> lists_;
  size_t depth_ = 0;
};

// The process-wide instances, shared by all parsers on all threads.
TmvQBWayPointsCache& WayPointCache();
TmvQBWayPointListsCache& WayPointListCache();

// A way list taken from the pool for the lifetime of a scope.
class TmvPooledWayList {
 public:
  TmvPooledWayList() : list_(WayPointListCache().Get()) {}
  ~TmvPooledWayList() { WayPointListCache().Put(list_); }
  TmvPooledWayList(const TmvPooledWayList&) = delete;
  TmvPooledWayList& operator=(const TmvPooledWayList&) = delete;
  TmvWayPointsList& operator*() const { return *list_; }
  TmvWayPointsList* operator->() const { return list_; }

 private:
  TmvWayPointsList* list_;
};

}  // namespace mv
