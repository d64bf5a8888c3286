#include "surface/DragData.h"

namespace mv {

namespace {

const QString kFieldMimeType = QStringLiteral("application/x-morvane-datasource-field");
const QString kObjectMimeType = QStringLiteral("application/x-morvane-metadata-object");
const QString kUnionMimeType = QStringLiteral("application/x-morvane-union-part");

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

QMimeData* NewUnionItemDrag(const TmvUnionDragItem& item) {
  auto* mime = new QMimeData;
  mime->setData(kUnionMimeType, PointerText(item.Object) + ' ' + QByteArray::number(int(item.Which)));
  return mime;
}

bool ReadUnionItemDrag(const QMimeData* mime, TmvUnionDragItem& item) {
  if (!mime || !mime->hasFormat(kUnionMimeType)) return false;
  const QList<QByteArray> parts = mime->data(kUnionMimeType).split(' ');
  bool pointerRead = false, kindRead = false;
  if (parts.size() == 2) {
    item.Object = reinterpret_cast<TmvQueryBase*>(parts[0].toULongLong(&pointerRead));
    const int kind = parts[1].toInt(&kindRead);
    kindRead = kindRead && kind >= TmvUnionDragItem::Button && kind <= TmvUnionDragItem::RightBracket;
    item.Which = static_cast<TmvUnionDragItem::Kind>(kind);
  }
  return pointerRead && kindRead && item.Object;
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
