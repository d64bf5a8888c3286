#include "metadata/MetadataObjectHash.h"

#include <algorithm>

#include "metadata/MetadataObject.h"

namespace mv {

// --- TmvMetadataObjectHashBucket ---

const std::vector<TmvMetadataObject*>* TmvMetadataObjectHashBucket::Find(const WideString& key) const {
  auto found = byKey_.find(key);
  return found == byKey_.end() ? nullptr : &found->second;
}

void TmvMetadataObjectHashBucket::Add(TmvMetadataObject* object, const WideString& key) {
  byKey_[key].push_back(object);
  ++count_;
}

void TmvMetadataObjectHashBucket::Remove(TmvMetadataObject* object, const WideString& key) {
  auto found = byKey_.find(key);
  if (found == byKey_.end()) return;
  std::vector<TmvMetadataObject*>& objects = found->second;
  auto at = std::find(objects.begin(), objects.end(), object);
  if (at == objects.end()) return;
  objects.erase(at);
  --count_;
  if (objects.empty()) byKey_.erase(found);
}

void TmvMetadataObjectHashBucket::Clear() {
  byKey_.clear();
  count_ = 0;
}

// --- TmvMetadataObjectHash ---

TmvMetadataObjectHash::TmvMetadataObjectHash(int bucketCount) : buckets_(size_t(bucketCount > 0 ? bucketCount : 1)) {}

TmvMetadataObjectHash::~TmvMetadataObjectHash() = default;

uint32_t TmvMetadataObjectHash::HashOfString(WideStringView text) {
  uint32_t hash = 0;
  for (char16_t unit : text) hash = ((hash << 2) | (hash >> 30)) ^ uint32_t(WideUpCase(unit));
  return hash;
}

uint32_t TmvMetadataObjectHash::HashOfName(const TastToken* token) const {
  if (!token || token->IsEmpty()) return uint32_t(buckets_.size() - 1);
  return HashOfString(token->Token);
}

uint32_t TmvMetadataObjectHash::HashOfFullName(const TSQLQualifiedName* name) const {
  if (!name || name->GetCount() == 0) return uint32_t(buckets_.size() - 1);
  return HashOfName(name->Token(0));
}

TmvMetadataObjectHashBucket& TmvMetadataObjectHash::Bucket(uint32_t hash) {
  std::unique_ptr<TmvMetadataObjectHashBucket>& slot = buckets_[hash % buckets_.size()];
  if (!slot) slot = std::make_unique<TmvMetadataObjectHashBucket>();
  return *slot;
}

int TmvMetadataObjectHash::CalcUsedBuckets() const {
  return int(std::count_if(buckets_.begin(), buckets_.end(), [](const auto& bucket) { return bucket != nullptr; }));
}

void TmvMetadataObjectHash::AddByName(TmvMetadataObject* object) {
  RemoveByName(object);
  object->nameKey_ = KeyOf(object->Name()->Token);
  object->nameBucket_ = &Bucket(HashOfName(object->Name()));
  object->nameBucket_->Add(object, object->nameKey_);
}

void TmvMetadataObjectHash::AddByAltName(TmvMetadataObject* object) {
  RemoveByAltName(object);
  if (object->AltName().empty()) return;
  object->altNameKey_ = KeyOf(object->AltName());
  object->altNameBucket_ = &Bucket(HashOfName(object->AltNameId()));
  object->altNameBucket_->Add(object, object->altNameKey_);
}

void TmvMetadataObjectHash::RemoveByName(TmvMetadataObject* object) {
  if (!object->nameBucket_) return;
  object->nameBucket_->Remove(object, object->nameKey_);
  object->nameBucket_ = nullptr;
  object->nameKey_.clear();
}

void TmvMetadataObjectHash::RemoveByAltName(TmvMetadataObject* object) {
  if (!object->altNameBucket_) return;
  object->altNameBucket_->Remove(object, object->altNameKey_);
  object->altNameBucket_ = nullptr;
  object->altNameKey_.clear();
}

void TmvMetadataObjectHash::Clear() {
  for (const auto& bucket : buckets_) {
    if (!bucket) continue;
    for (const auto& [key, objects] : bucket->Entries())
      for (TmvMetadataObject* object : objects) {
        if (object->nameBucket_ == bucket.get()) {
          object->nameBucket_ = nullptr;
          object->nameKey_.clear();
        }
        if (object->altNameBucket_ == bucket.get()) {
          object->altNameBucket_ = nullptr;
          object->altNameKey_.clear();
        }
      }
    bucket->Clear();
  }
}

}  // namespace mv
