#include "surface/DragData.h"

namespace mv {

namespace {

const QString kFieldMimeType = QStringLiteral("application/x-morvane-datasource-field");
const QString kObjectMimeType = QStringLiteral("application/x-morvane-metadata-object");

QByteArray PointerText(const void* pointer) { return QByteArray::number(reinterpret_cast<quintptr>(pointer)); }

}  // namespace

QMimeData* NewFieldDrag(TmvQueryBuilderDataSourceControl* box, int row) {
  auto* mime = new QMimeData;
  mime->setData(kFieldMimeType, PointerText(box) + ' ' + QByteArray::number(row));
  return mime;
}

QMimeData* NewMetadataObjectDrag(TmvMetadataObject* object) {
  auto* mime = new QMimeData;
  mime->setData(kObjectMimeType, PointerText(object));
  return mime;
}

bool ReadFieldDrag(const QMimeData* mime, TmvQueryBuilderDataSourceControl*& box, int& row) {
  if (!mime || !mime->hasFormat(kFieldMimeType)) return false;
  const QList<QByteArray> parts = mime->data(kFieldMimeType).split(' ');
  bool pointerRead = false, rowRead = false;
  if (parts.size() == 2) {
    box = reinterpret_cast<TmvQueryBuilderDataSourceControl*>(parts[0].toULongLong(&pointerRead));
    row = parts[1].toInt(&rowRead);
  }
  return pointerRead && rowRead && box;
}

TmvMetadataObject* ReadMetadataObjectDrag(const QMimeData* mime) {
  if (!mime || !mime->hasFormat(kObjectMimeType)) return nullptr;
  bool read = false;
  auto* object = reinterpret_cast<TmvMetadataObject*>(mime->data(kObjectMimeType).toULongLong(&read));
  return read ? object : nullptr;
}

}  // namespace mv
