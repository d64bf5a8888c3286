// What the metadata tree and the add-object dialog share: the kind of a
// metadata object, whether the tree options show it, and the order they
// sort objects in.
#pragma once

#include <vector>

namespace mv {

class TmvMetadataObject;
class TmvMetadataTreeOptions;
class TSQLBuilder;

enum TmvMetadataObjectKind { mokTable, mokView, mokProcedure, mokSynonym, mokOther };

TmvMetadataObjectKind MetadataObjectKind(const TmvMetadataObject* object);
// Visible, of a kind the tree lists, and shown for its user or system side.
bool IsShownByTreeOptions(const TmvMetadataObject* object, const TmvMetadataTreeOptions& options);
// By SortingType: none, type then location then name, location then name,
// location then type then name; names as `print` names them.
void SortMetadataObjects(std::vector<TmvMetadataObject*>& objects, const TmvMetadataTreeOptions& options,
                         const TSQLBuilder& print);

}  // namespace mv
