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
        {mvQBErrorBadXML, u"Error parsing XML: %s"},
        {mvQBErrorBadXMLTagNotFound, u"Bad XML file: tag \"%s\" not found."},
        {mvQBErrorXMLUnknownFieldType, u"Unknown field type \"%s\""},
        {mvQBErrorXMLDuplicateObject, u"Duplicate %0:s \"%1:s\""},
        {mvQBErrorXMLInFile, u"File \"%0:s\", %1:s: %2:s"},
        {mvQBErrorXMLInText, u"XML text, %0:s: %1:s"},
        {mvQBErrorXMLAtLineElement, u"line %0:d, element <%1:s>"},
        {mvQBErrorXMLAtLineNearElement, u"line %0:d, near element <%1:s>"},
        {mvQBErrorXMLAtElement, u"element <%s>"},
        {mvQBErrorXMLAtLine, u"line %d"},
        {mvQBErrorXMLCannotWrite, u"Cannot write the file \"%s\""},
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
