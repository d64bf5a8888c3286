// The process-wide list of syntax provider classes (classes, not objects).
// The dialects of the build register their classes when the library starts
// (InitializeEngine, dialects/EngineInit.h); the order of registration decides ties when a
// provider is detected from a connection.
#pragma once

#include <mutex>
#include <string_view>
#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TmvSyntaxProvidersList {
 public:
  // Adds a class; a class registered before stays where it is.
  void RegisterSyntaxProvider(const TmvSyntaxProviderClass& providerClass);
  int Count() const;
  const TmvSyntaxProviderClass& Items(int index) const;
  // The class of that name, compared without regard to case; null if none.
  const TmvSyntaxProviderClass* FindClassByClassName(std::string_view name) const;
  // The classes in order of registration.
  std::vector<const TmvSyntaxProviderClass*> Classes() const;

 private:
  mutable std::mutex lock_;
  std::vector<const TmvSyntaxProviderClass*> classes_;
};

TmvSyntaxProvidersList& SyntaxProvidersList();

}  // namespace mv
