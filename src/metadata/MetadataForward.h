// Forward declarations of the metadata model and its provider, for headers
// that only name them (the context, the syntax and metadata providers).
#pragma once

namespace mv {

class TmvBaseMetadataProvider;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TmvMetadataTable;
class TmvMetadataView;
class TmvMetadataProcedure;
class TmvMetadataSynonym;
class TmvMetadataField;
class TmvMetadataFieldsList;

}  // namespace mv
