#include "dialects/SyntaxProvider.h"

#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_CLASS(TmvBaseSyntaxProvider, TmvObject)

TmvBaseSyntaxProvider::TmvBaseSyntaxProvider() = default;

TmvBaseSyntaxProvider::~TmvBaseSyntaxProvider() {
  // A destructor must not throw: a listener's exception ends here.
  try {
    onDestroying_.Fire(this);
  } catch (...) {
  }
}

void TmvBaseSyntaxProvider::SetIdentCaseSens(TmvIdentCaseSensitivity value) {
  if (value == GetIdentCaseSens()) return;
  identCaseSens_ = value;
  SendNotifications();
}

void TmvBaseSyntaxProvider::RegisterExtender(const TastNodeClass& nodeClass, const TastNodeClass& extenderClass) {
  for (const ExtenderEntry& entry : extenders_)
    if (entry.nodeClass == &nodeClass)
      throw Exception(u"Extender for \"" + WideFromAscii(nodeClass.ClassName()) + u"\" already registered!");
  extenders_.push_back({&nodeClass, &extenderClass});
}

void TmvBaseSyntaxProvider::RegisterExtender(std::initializer_list<const TastNodeClass*> nodeClasses,
                                             const TastNodeClass& extenderClass) {
  for (const TastNodeClass* nodeClass : nodeClasses) RegisterExtender(*nodeClass, extenderClass);
}

void TmvBaseSyntaxProvider::UnregisterExtender(const TastNodeClass& nodeClass) {
  for (size_t i = 0; i < extenders_.size(); ++i)
    if (extenders_[i].nodeClass == &nodeClass) {
      extenders_.erase(extenders_.begin() + i);
      return;
    }
}

const TastNodeClass* TmvBaseSyntaxProvider::FindExtenderClass(const TmvClass& nodeClass, bool inherited) const {
  const TastNodeClass* best = nullptr;
  int bestDistance = 0;
  for (const ExtenderEntry& entry : extenders_) {
    if (entry.nodeClass == &nodeClass) return entry.extenderClass;
    if (!inherited) continue;
    int distance = 0;
    for (const TmvClass* c = &nodeClass; c; c = c->ClassParent(), ++distance) {
      if (c != entry.nodeClass) continue;
      if (!best || distance < bestDistance) {
        best = entry.extenderClass;
        bestDistance = distance;
      }
      break;
    }
  }
  return best;
}

void TmvBaseSyntaxProvider::GetStarAggregateNames(TSQLQualifiedNamesList& list) const { list.AddBuiltin(u"Count"); }

void TmvBaseSyntaxProvider::Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const { list.Clear(); }

void TmvBaseSyntaxProvider::GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const {
  for (const char16_t* name : {u"Avg", u"Count", u"Max", u"Min", u"Sum"}) list.AddBuiltin(name);
}

void TmvBaseSyntaxProvider::GetMultiParamAggregateNames(TSQLQualifiedNamesList&) const {}

void TmvBaseSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const { list.Clear(); }

void TmvBaseSyntaxProvider::GetComparisonOperators(std::vector<std::string>& list) const {
  list.insert(list.end(), {"=", ">", ">=", "<", "<=", "<>"});
}

}  // namespace mv
