#include "frontend/SyntaxProvidersList.h"

#include "support/Exceptions.h"

namespace mv {

void TmvSyntaxProvidersList::RegisterSyntaxProvider(const TmvSyntaxProviderClass& providerClass) {
  std::lock_guard<std::mutex> guard(lock_);
  for (const TmvSyntaxProviderClass* c : classes_)
    if (c == &providerClass) return;
  classes_.push_back(&providerClass);
}

int TmvSyntaxProvidersList::Count() const {
  std::lock_guard<std::mutex> guard(lock_);
  return int(classes_.size());
}

const TmvSyntaxProviderClass& TmvSyntaxProvidersList::Items(int index) const {
  std::lock_guard<std::mutex> guard(lock_);
  if (index < 0 || index >= int(classes_.size())) RaiseListIndexError(index, int64_t(classes_.size()));
  return *classes_[index];
}

const TmvSyntaxProviderClass* TmvSyntaxProvidersList::FindClassByClassName(std::string_view name) const {
  std::lock_guard<std::mutex> guard(lock_);
  for (const TmvSyntaxProviderClass* c : classes_)
    if (SameClassName(c->ClassName(), name)) return c;
  return nullptr;
}

std::vector<const TmvSyntaxProviderClass*> TmvSyntaxProvidersList::Classes() const {
  std::lock_guard<std::mutex> guard(lock_);
  return classes_;
}

TmvSyntaxProvidersList& SyntaxProvidersList() {
  static TmvSyntaxProvidersList list;
  return list;
}

}  // namespace mv
