#include "dialects/EngineInit.h"

#include "dialects/SyntaxProvidersList.h"
#include "frontend/SQLError.h"

namespace mv {

void InitializeEngine() {
  RegisterFrontendMessages();
  RegisterBuiltinSyntaxProviders();
}

}  // namespace mv
