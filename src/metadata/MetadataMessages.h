// Message keys of the metadata layer. Texts are read through the message
// catalog, so a language can replace them; the English defaults are
// registered on first use.
#pragma once

#include <initializer_list>

#include "frontend/SQLError.h"
#include "support/WideFormat.h"
#include "support/WideString.h"

namespace mv {

// mvQBBadObjectName and mvQBNoSyntaxProvider are the front end's (SQLError.h).
inline constexpr const char16_t* mvQBNoMetadataProvider = u"mvQBNoMetadataProvider";
inline constexpr const char16_t* mvQBNoConnectionObject = u"mvQBNoConnectionObject";
inline constexpr const char16_t* mvQBMetaProviderCantLoadMetadata = u"mvQBMetaProviderCantLoadMetadata";
inline constexpr const char16_t* mvQBMetaProviderCantLoadMetadataForDatabase =
    u"mvQBMetaProviderCantLoadMetadataForDatabase";
inline constexpr const char16_t* mvQBMetadataProviderCantExecSQL = u"mvQBMetadataProviderCantExecSQL";
inline constexpr const char16_t* mvQBErrorExecQuery = u"mvQBErrorExecQuery";
// Metadata XML: the document refused, and where.
inline constexpr const char16_t* mvQBErrorBadXML = u"mvQBErrorBadXML";
inline constexpr const char16_t* mvQBErrorBadXMLTagNotFound = u"mvQBErrorBadXMLTagNotFound";
inline constexpr const char16_t* mvQBErrorXMLUnknownFieldType = u"mvQBErrorXMLUnknownFieldType";
inline constexpr const char16_t* mvQBErrorXMLDuplicateObject = u"mvQBErrorXMLDuplicateObject";
inline constexpr const char16_t* mvQBErrorXMLInFile = u"mvQBErrorXMLInFile";
inline constexpr const char16_t* mvQBErrorXMLInText = u"mvQBErrorXMLInText";
inline constexpr const char16_t* mvQBErrorXMLAtLineElement = u"mvQBErrorXMLAtLineElement";
inline constexpr const char16_t* mvQBErrorXMLAtLineNearElement = u"mvQBErrorXMLAtLineNearElement";
inline constexpr const char16_t* mvQBErrorXMLAtElement = u"mvQBErrorXMLAtElement";
inline constexpr const char16_t* mvQBErrorXMLAtLine = u"mvQBErrorXMLAtLine";
inline constexpr const char16_t* mvQBErrorXMLCannotWrite = u"mvQBErrorXMLCannotWrite";

// Texts without a key.
inline constexpr const char16_t* kInvalidMaskText = u"Invalid Mask";
inline constexpr const char16_t* kNoDatabasesText =
    u"The server doesn't support queries with objects from different databases.";
inline constexpr const char16_t* kNoSchemasText = u"The server doesn't support schemas.";
// LoadSQLiteCatalog on a provider whose connection is another database's (%s: its description).
inline constexpr const char16_t* kNotSQLiteConnectionText =
    u"The connection of the metadata provider is not a SQLite database: %s";

// Registers the keys above, and the two of the front end that this layer
// raises, with their English texts (once per process).
void RegisterMetadataMessages();
// The current text of a key of this layer.
WideString MetadataMessage(WideStringView key);
WideString MetadataMessageFormat(WideStringView key, std::initializer_list<TmvFormatArg> args);

}  // namespace mv
