// The list of all node and extender classes, for lookup by name and for
// code that works over every class (tests sweep it). The classes of the core
// tree are added on first use; a dialect adds its own table from the
// library's start-up function.
#pragma once

#include <string_view>
#include <vector>

#include "tree/NodeClass.h"

namespace mv {

class TastNodeClassRegistry {
 public:
  void Add(const TastNodeClass& nodeClass);
  const std::vector<const TastNodeClass*>& Classes() const { return classes_; }
  // Case-blind lookup by class name; null when unknown.
  const TastNodeClass* Find(std::string_view name) const;

 private:
  std::vector<const TastNodeClass*> classes_;
};

// The process-wide registry, with the core classes in it.
TastNodeClassRegistry& TastNodeClasses();

}  // namespace mv
