#include "dialects/EngineInit.h"

#include "dialects/SyntaxProvidersList.h"
#include "frontend/SQLError.h"
#include "metadata/MetadataMessages.h"

namespace mv {

void InitializeEngine() {
  RegisterFrontendMessages();
  RegisterMetadataMessages();
  RegisterBuiltinSyntaxProviders();
}

}  // namespace mv
