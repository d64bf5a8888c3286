// The name index of a metadata container. One table of a fixed number of
// buckets serves two indexes: an object enters the bucket of its name and
// the bucket of its alternate name, and remembers both, so that leaving
// needs no search. A bucket is made on its first use (by a lookup too) and
// stays.
//
// The bucket of a name is given by the rotate-and-xor hash of its upper-case
// text, so names that differ in case alone share a bucket whatever the
// dialect's case rule; the rule is applied when the bucket's objects are
// compared. Within a bucket the objects are kept per upper-case text, so a
// lookup compares only the objects whose names can match, and stays at
// constant cost however many objects share the bucket.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "support/WideString.h"

namespace mv {

class TastToken;
class TSQLQualifiedName;
class TmvMetadataObject;

class TmvMetadataObjectHashBucket {
 public:
  // The objects that entered under `key` (an upper-case text), in the order
  // they entered; null if none.
  const std::vector<TmvMetadataObject*>* Find(const WideString& key) const;
  void Add(TmvMetadataObject* object, const WideString& key);
  void Remove(TmvMetadataObject* object, const WideString& key);
  void Clear();
  int Count() const { return count_; }
  // Every key with its objects.
  const std::unordered_map<WideString, std::vector<TmvMetadataObject*>>& Entries() const { return byKey_; }

 private:
  std::unordered_map<WideString, std::vector<TmvMetadataObject*>> byKey_;
  int count_ = 0;
};

class TmvMetadataObjectHash {
 public:
  explicit TmvMetadataObjectHash(int bucketCount);
  ~TmvMetadataObjectHash();
  TmvMetadataObjectHash(const TmvMetadataObjectHash&) = delete;
  TmvMetadataObjectHash& operator=(const TmvMetadataObjectHash&) = delete;

  int BucketCount() const { return int(buckets_.size()); }
  // Rotate left by 2 and exclude-or each UTF-16 unit of the upper-case text; 0 for an empty text.
  static uint32_t HashOfString(WideStringView text);
  // The hash of the token's text; (bucket count - 1) for an empty or absent token.
  uint32_t HashOfName(const TastToken* token) const;
  // The hash of the object name (item 0); (bucket count - 1) for a name without parts.
  uint32_t HashOfFullName(const TSQLQualifiedName* name) const;
  // The bucket of a hash, made on first use.
  TmvMetadataObjectHashBucket& Bucket(uint32_t hash);
  // The number of buckets made so far.
  int CalcUsedBuckets() const;

  // Enter (or leave) the bucket of the object's name or alternate name. An
  // object with an empty alternate name does not enter that index.
  void AddByName(TmvMetadataObject* object);
  void AddByAltName(TmvMetadataObject* object);
  void RemoveByName(TmvMetadataObject* object);
  void RemoveByAltName(TmvMetadataObject* object);
  // Empties every bucket and forgets every object's buckets.
  void Clear();

  // The key a name is kept under within its bucket.
  static WideString KeyOf(WideStringView text) { return WideUpperCase(text); }

 private:
  std::vector<std::unique_ptr<TmvMetadataObjectHashBucket>> buckets_;
};

}  // namespace mv
