// What a drag within the designer carries: a field row of a datasource box
// (dropped on a field of another box: a link), a metadata object (dropped
// on the work area: a datasource) or a part of a union (dropped on another
// part in the navigator). Pointers, valid in this process only.
#pragma once

#include <QMimeData>

#include "surface/UnionDragDrop.h"

namespace mv {

class TmvMetadataObject;
class TmvQueryBuilderDataSourceControl;

// New mime data the caller (a QDrag) takes over.
QMimeData* NewFieldDrag(TmvQueryBuilderDataSourceControl* box, int row);
QMimeData* NewMetadataObjectDrag(TmvMetadataObject* object);
QMimeData* NewUnionItemDrag(const TmvUnionDragItem& item);

// False / null when the data carries no such thing.
bool ReadFieldDrag(const QMimeData* mime, TmvQueryBuilderDataSourceControl*& box, int& row);
TmvMetadataObject* ReadMetadataObjectDrag(const QMimeData* mime);
bool ReadUnionItemDrag(const QMimeData* mime, TmvUnionDragItem& item);

}  // namespace mv
