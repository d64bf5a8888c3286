#include "tree/NodeRegistry.h"

#include "tree/TreeNodes.gen.h"

namespace mv {

void TastNodeClassRegistry::Add(const TastNodeClass& nodeClass) {
  for (const TastNodeClass* known : classes_)
    if (known == &nodeClass) return;
  classes_.push_back(&nodeClass);
}

const TastNodeClass* TastNodeClassRegistry::Find(std::string_view name) const {
  for (const TastNodeClass* known : classes_)
    if (SameClassName(known->ClassName(), name)) return known;
  return nullptr;
}

TastNodeClassRegistry& TastNodeClasses() {
  static TastNodeClassRegistry registry;
  static const bool coreAdded = (RegisterNodeClasses_TreeNodes(registry), true);
  (void)coreAdded;
  return registry;
}

}  // namespace mv
