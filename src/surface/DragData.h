// What a drag within the designer carries: a field row of a datasource box
// (dropped on a field of another box: a link) or a metadata object (dropped
// on the work area: a datasource). Pointers, valid in this process only.
#pragma once

#include <QMimeData>

namespace mv {

class TmvMetadataObject;
class TmvQueryBuilderDataSourceControl;

// New mime data the caller (a QDrag) takes over.
QMimeData* NewFieldDrag(TmvQueryBuilderDataSourceControl* box, int row);
QMimeData* NewMetadataObjectDrag(TmvMetadataObject* object);

// False / null when the data carries no such thing.
bool ReadFieldDrag(const QMimeData* mime, TmvQueryBuilderDataSourceControl*& box, int& row);
TmvMetadataObject* ReadMetadataObjectDrag(const QMimeData* mime);

}  // namespace mv
