#include "ReferenceDialect.h"

#include <stdexcept>
#include <string>

#include "dialects/EngineInit.h"
#include "frontend/SyntaxProvidersList.h"

namespace mvtest {

mv::TmvOwned<mv::TmvBaseSyntaxProvider> NewReferenceProvider() {
  mv::InitializeEngine();
  const mv::TmvSyntaxProviderClass* c = mv::SyntaxProvidersList().FindClassByClassName(kReferenceDialect);
  if (!c) throw std::logic_error(std::string("the engine registers no ") + kReferenceDialect);
  return mv::TmvOwned<mv::TmvBaseSyntaxProvider>(c->CreateRaw());
}

TReferenceDialectProvider::TReferenceDialectProvider() : reference_(NewReferenceProvider()) {
  SetIdentCaseSens(reference_->GetIdentCaseSens());
}

}  // namespace mvtest
