// A small list of (key, value) pairs of objects, keys compared by identity,
// kept in the order of adding. With OwnsKeys / OwnsValues the dictionary
// frees keys / values (in both destruction phases) when a pair goes, and
// frees the old value when `SetItem` replaces it.
#pragma once

#include <utility>
#include <vector>

#include "support/Class.h"

namespace mv {

class TmvDictionary {
 public:
  using Pair = std::pair<TmvObject*, TmvObject*>;

  TmvDictionary(bool ownsKeys, bool ownsValues) : ownsKeys_(ownsKeys), ownsValues_(ownsValues) {}
  ~TmvDictionary();
  TmvDictionary(const TmvDictionary&) = delete;
  TmvDictionary& operator=(const TmvDictionary&) = delete;

  bool OwnsKeys() const { return ownsKeys_; }
  bool OwnsValues() const { return ownsValues_; }

  // Appends a pair without looking for the key: with a key added twice the
  // first pair is the one found.
  void Add(TmvObject* key, TmvObject* value);
  // Frees the first pair of the key. EListError if the key is not there.
  void Remove(TmvObject* key);
  // Frees all pairs, from the last to the first.
  void Clear();
  bool ContainsKey(const TmvObject* key) const { return IndexOfKey(key) >= 0; }
  bool ContainsValue(const TmvObject* value) const;
  // The value of the key, or false when the key is not there.
  bool TryGet(const TmvObject* key, TmvObject*& value) const;
  // The value of the key; EListError if the key is not there.
  TmvObject* GetItem(const TmvObject* key) const;
  // Replaces the value of the key (freeing the old one with OwnsValues);
  // EListError if the key is not there.
  void SetItem(const TmvObject* key, TmvObject* value);
  // Takes the pair of the key out without freeing anything; false if the
  // key is not there.
  bool ExtractPair(const TmvObject* key, Pair& pair);
  // The keys in order, in a new list of the caller's.
  std::vector<TmvObject*> KeysList() const;
  int Count() const { return static_cast<int>(pairs_.size()); }

 private:
  int IndexOfKey(const TmvObject* key) const;
  int CheckedIndexOfKey(const TmvObject* key) const;
  // Whether a pair still owns `object` as its key or value.
  bool StillOwned(const TmvObject* object) const;
  // Removes the pair at `index` and frees what the dictionary owns of it.
  void FreePairAt(int index);

  std::vector<Pair> pairs_;
  bool ownsKeys_;
  bool ownsValues_;
};

}  // namespace mv
