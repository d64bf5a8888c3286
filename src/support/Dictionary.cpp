#include "support/Dictionary.h"

#include <algorithm>

#include "support/Exceptions.h"

namespace mv {

TmvDictionary::~TmvDictionary() { Clear(); }

void TmvDictionary::Add(TmvObject* key, TmvObject* value) { pairs_.emplace_back(key, value); }

void TmvDictionary::Remove(TmvObject* key) { FreePairAt(CheckedIndexOfKey(key)); }

void TmvDictionary::Clear() {
  while (!pairs_.empty()) FreePairAt(Count() - 1);
}

bool TmvDictionary::ContainsValue(const TmvObject* value) const {
  return std::any_of(pairs_.begin(), pairs_.end(), [value](const Pair& p) { return p.second == value; });
}

bool TmvDictionary::TryGet(const TmvObject* key, TmvObject*& value) const {
  const int index = IndexOfKey(key);
  if (index < 0) return false;
  value = pairs_[index].second;
  return true;
}

TmvObject* TmvDictionary::GetItem(const TmvObject* key) const { return pairs_[CheckedIndexOfKey(key)].second; }

void TmvDictionary::SetItem(const TmvObject* key, TmvObject* value) {
  Pair& pair = pairs_[CheckedIndexOfKey(key)];
  TmvObject* old = pair.second;
  pair.second = value;
  // The old value goes unless the dictionary still owns it elsewhere.
  if (ownsValues_ && old && !StillOwned(old)) TmvDeleter()(old);
}

bool TmvDictionary::ExtractPair(const TmvObject* key, Pair& pair) {
  const int index = IndexOfKey(key);
  if (index < 0) return false;
  pair = pairs_[index];
  pairs_.erase(pairs_.begin() + index);
  return true;
}

std::vector<TmvObject*> TmvDictionary::KeysList() const {
  std::vector<TmvObject*> keys;
  keys.reserve(pairs_.size());
  for (const Pair& p : pairs_) keys.push_back(p.first);
  return keys;
}

int TmvDictionary::IndexOfKey(const TmvObject* key) const {
  for (size_t i = 0; i < pairs_.size(); ++i) {
    if (pairs_[i].first == key) return static_cast<int>(i);
  }
  return -1;
}

int TmvDictionary::CheckedIndexOfKey(const TmvObject* key) const {
  const int index = IndexOfKey(key);
  if (index < 0) throw EListError(u"Key not found in the dictionary (list index out of bounds (-1))");
  return index;
}

bool TmvDictionary::StillOwned(const TmvObject* object) const {
  return std::any_of(pairs_.begin(), pairs_.end(), [this, object](const Pair& p) {
    return (ownsKeys_ && p.first == object) || (ownsValues_ && p.second == object);
  });
}

void TmvDictionary::FreePairAt(int index) {
  const Pair pair = pairs_[index];
  pairs_.erase(pairs_.begin() + index);
  // An object that another pair still owns is freed with the last of them,
  // so an object added twice is never freed twice.
  const bool freeKey = ownsKeys_ && pair.first && !StillOwned(pair.first);
  const bool freeValue =
      ownsValues_ && pair.second && !StillOwned(pair.second) && !(freeKey && pair.second == pair.first);
  if (freeKey) TmvDeleter()(pair.first);
  if (freeValue) TmvDeleter()(pair.second);
}

}  // namespace mv
