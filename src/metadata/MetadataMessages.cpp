#include "metadata/MetadataMessages.h"

#include "support/MessageCatalog.h"

namespace mv {

void RegisterMetadataMessages() {
  static const bool registered = [] {
    MessageCatalog().Register({
        {mvQBBadObjectName, u"Invalid object name"},
        {mvQBNoSyntaxProvider, u"Syntax provider is not specified"},
        {mvQBNoMetadataProvider, u"Metadata provider is not specified"},
        {mvQBNoConnectionObject, u"Connection object is not specified (property %s is not assigned)"},
        {mvQBMetaProviderCantLoadMetadata, u"Automatic loading of metadata is not supported by this metadata provider"},
        {mvQBMetaProviderCantLoadMetadataForDatabase,
         u"Automatic loading of metadata is not supported for database %s by this metadata provider"},
        {mvQBMetadataProviderCantExecSQL, u"Executing SQL queries is not supported by this metadata provider."},
        {mvQBErrorExecQuery, u"Error executing query:\r%0:s\rMessage:\r%1:s"},
    });
    return true;
  }();
  (void)registered;
}

WideString MetadataMessage(WideStringView key) {
  RegisterMetadataMessages();
  return MessageText(key);
}

WideString MetadataMessageFormat(WideStringView key, std::initializer_list<TmvFormatArg> args) {
  RegisterMetadataMessages();
  return MessageFormat(key, args);
}

}  // namespace mv
