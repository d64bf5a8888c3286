#include "frontend/WayPoint.h"

#include <memory>
#include <mutex>
#include <utility>

namespace mv {

// ---------------------------------------------------------------------------
// Records. Way points are allocated in slabs and recycled through free chains
// linked by Prev. Each thread keeps a private chain; chains of kBatch records
// travel between the threads and the process-wide stock under its lock.

namespace {

constexpr size_t kSlabSize = 4096;  // records per allocation

struct Chain {
  TmvWayPoint* head = nullptr;
  size_t count = 0;
};


struct TmvWayPointRecords {
  std::mutex lock;
  std::vector<std::unique_ptr<TmvWayPoint[]>> slabs;
  std::vector<Chain> spare;

  // A chain for a thread that has run dry: a spare one, or a new slab.
  Chain Take() {
    std::lock_guard<std::mutex> guard(lock);
    if (!spare.empty()) {
      Chain c = spare.back();
      spare.pop_back();
      return c;
    }
    slabs.push_back(std::make_unique<TmvWayPoint[]>(kSlabSize));
    TmvWayPoint* slab = slabs.back().get();
    for (size_t i = 0; i + 1 < kSlabSize; ++i) slab[i].Prev = &slab[i + 1];
    slab[kSlabSize - 1].Prev = nullptr;
    return Chain{slab, kSlabSize};
  }

  void Give(Chain c) {
    if (!c.head) return;
    std::lock_guard<std::mutex> guard(lock);
    spare.push_back(c);
  }
};

// Never destroyed: parsers held by static objects free their way points
// while the program ends, after the function statics made later are gone.
TmvWayPointRecords& Records() {
  static TmvWayPointRecords* records = new TmvWayPointRecords;
  return *records;
}

// Hands the spare records of a thread back to the stock when the thread ends.
struct StockReturner {
  TmvWayPointStock* stock;
  ~StockReturner() { stock->ReturnSpare(); }
};

}  // namespace

void TmvWayPointStock::ReturnSpare() {
  Records().Give(Chain{head_, count_});
  head_ = nullptr;
  count_ = 0;
}

void TmvWayPointStock::Refill() {
  Chain c = Records().Take();
  head_ = c.head;
  count_ = c.count;
}

void TmvWayPointStock::GiveBatch() {
  // Hand a batch to the stock so that a thread that frees what others
  // allocate does not hoard records.
  Chain batch{head_, kBatch};
  TmvWayPoint* last = head_;
  for (size_t i = 1; i < kBatch; ++i) last = last->Prev;
  head_ = last->Prev;
  count_ -= kBatch;
  last->Prev = nullptr;
  Records().Give(batch);
}

TmvWayPointStock& TmvWayPointStock::OfThisThread() {
  // The stock itself has no destructor, so it stays usable while the
  // thread's other objects go away (and with them parsers that free their
  // way points); the returner gives its spare records back once.
  thread_local TmvWayPointStock stock;
  thread_local StockReturner returner{&stock};
  return stock;
}

void FreeWayPointChain(TmvWayPoint* point) {
  TmvWayPointStock& stock = TmvWayPointStock::OfThisThread();
  while (point) {
    if (point->RefCount > 1) {
      --point->RefCount;
      return;
    }
    TmvWayPoint* prev = point->Prev;
    stock.Free(point);
    point = prev;
  }
}

TmvQBWayPointsCache::~TmvQBWayPointsCache() = default;

TmvWayPoint* TmvQBWayPointsCache::Get(TmvWayPoint* prev, int32_t choice) {
  return TmvWayPointStock::OfThisThread().New(prev, choice);
}

void TmvQBWayPointsCache::Put(TmvWayPoint* point) {
  TmvWayPoint* prev = point->Prev;
  TmvWayPointStock::OfThisThread().Free(point);
  if (prev) ReleaseWayPoint(prev);
}

int64_t TmvQBWayPointsCache::LiveRecordsOfThisThread() { return TmvWayPointStock::OfThisThread().Live(); }

// ---------------------------------------------------------------------------
// Lists.

void TmvWayPointsList::Insert(int32_t index, TmvWayPoint* point) {
  ++point->RefCount;
  items_.insert(items_.begin() + index, point);
}

void TmvWayPointsList::Delete(int32_t index) {
  TmvWayPoint* p = items_[index];
  items_.erase(items_.begin() + index);
  ReleaseWayPoint(p);
}

void TmvWayPointsList::Clear() {
  for (size_t i = items_.size(); i-- > 0;) {
    TmvWayPoint* p = items_[i];
    items_[i] = nullptr;
    ReleaseWayPoint(p);
  }
  items_.clear();
}

void TmvWayPointsList::AddFrom(const TmvWayPointsList& src) {
  Reserve(items_.size() + src.items_.size());
  for (TmvWayPoint* p : src.items_) {
    if (p) Add(p);
  }
}

void TmvWayPointsList::CopyFrom(const TmvWayPointsList& src) {
  Clear();
  Reserve(src.items_.size());
  for (TmvWayPoint* p : src.items_) Add(p);
}

void TmvWayPointsList::MoveFrom(TmvWayPointsList& src) {
  Clear();
  items_.swap(src.items_);
}

void TmvWayPointsList::AppendFrom(TmvWayPointsList& src) {
  if (items_.empty()) {
    // Swapping keeps both storages alive for later use.
    items_.swap(src.items_);
    return;
  }
  items_.insert(items_.end(), src.items_.begin(), src.items_.end());
  src.items_.clear();
}

TmvWayListStack& TmvWayListStack::OfThisThread() {
  thread_local TmvWayListStack stack;
  return stack;
}

namespace {

constexpr size_t kLocalLists = 64;  // spare lists a thread keeps for itself

struct SharedLists {
  std::mutex lock;
  std::vector<std::unique_ptr<TmvWayPointsList>> pool;
};

// Never destroyed, for the same reason as the records.
SharedLists& Lists() {
  static SharedLists* lists = new SharedLists;
  return *lists;
}

// Set once a thread's own lists are gone: lists taken or given back later
// in its end (by parsers that static objects hold) go to the shared pool.
thread_local bool threadListsGone = false;

struct ThreadLists {
  std::vector<TmvWayPointsList*> pool;
  ~ThreadLists() {
    threadListsGone = true;
    SharedLists& shared = Lists();
    std::lock_guard<std::mutex> guard(shared.lock);
    for (TmvWayPointsList* l : pool) shared.pool.emplace_back(l);
  }
};

thread_local ThreadLists threadLists;

}  // namespace

TmvQBWayPointListsCache::~TmvQBWayPointListsCache() = default;

TmvWayPointsList* TmvQBWayPointListsCache::Get() {
  if (!threadListsGone && !threadLists.pool.empty()) {
    auto& local = threadLists.pool;
    TmvWayPointsList* l = local.back();
    local.pop_back();
    return l;
  }
  SharedLists& shared = Lists();
  {
    std::lock_guard<std::mutex> guard(shared.lock);
    if (!shared.pool.empty()) {
      TmvWayPointsList* l = shared.pool.back().release();
      shared.pool.pop_back();
      return l;
    }
  }
  return new TmvWayPointsList();
}

void TmvQBWayPointListsCache::Put(TmvWayPointsList* list) {
  if (!list) return;
  list->Clear();
  if (!threadListsGone && threadLists.pool.size() < kLocalLists) {
    threadLists.pool.push_back(list);
    return;
  }
  SharedLists& shared = Lists();
  std::lock_guard<std::mutex> guard(shared.lock);
  shared.pool.emplace_back(list);
}

TmvQBWayPointsCache& WayPointCache() {
  static TmvQBWayPointsCache cache;
  return cache;
}

TmvQBWayPointListsCache& WayPointListCache() {
  static TmvQBWayPointListsCache cache;
  return cache;
}

}  // namespace mv
