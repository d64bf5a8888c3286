#include "surface/LinkPainters.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QPolygon>

#include "model/Links.h"

namespace mv {

namespace {

// The marks at an end of the path: a triangle pointing at the box for an
// outer side, an ellipse for an inner one; `size` out from the box.
void PaintEndMark(QPainter& painter, QPoint point, TmvQueryBuilderLinkConnectToSide side, bool outer, int size,
                  int halfHeight) {
  const int s = side == csRight ? size : -size;
  const int x = point.x(), y = point.y();
  if (outer)
    painter.drawPolygon(QPolygon({QPoint(x, y), QPoint(x + s, y - 4), QPoint(x + s, y + 4)}));
  else
    painter.drawEllipse(QRect(QPoint(std::min(x, x + s), y - halfHeight), QSize(std::abs(s), 2 * halfHeight)));
}

QPoint Middle(QPoint a, QPoint b) { return (a + b) / 2; }

// The cardinality at a stub: "1" or "∞" above its middle.
void PaintCardinalitySymbol(QPainter& painter, QPoint at, TmvQueryBuilderLinkCardinality cardinality) {
  if (cardinality == qblcUnknown) return;
  const QString symbol = cardinality == qblcOne ? QStringLiteral("1") : QString(QChar(0x221E));
  const QRect box = painter.fontMetrics().boundingRect(symbol);
  painter.drawText(QPoint(at.x() - box.width() / 2, at.y() - 4), symbol);
}

}  // namespace

TmvQueryBuilderLinkPainter::TmvQueryBuilderLinkPainter() {
  const QPalette palette = QGuiApplication::palette();
  MarkColor = palette.color(QPalette::Button);
  MarkColorFocused = palette.color(QPalette::Dark);
}

void TmvQueryBuilderLinkPainter::DrawLine(QPainter& painter, const TmvLinkPath& path, bool focused) const {
  painter.setPen(QPen(LinkColor, focused ? 2 : 1));
  painter.drawPolyline(path.Points.data(), static_cast<int>(path.Points.size()));
}

void TmvQueryBuilderLinkPainter::PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused,
                                           const TmvLink&) const {
  DrawLine(painter, path, focused);
}

void TmvQueryBuilderLinkPainter::DrawLeftSideMark(QPainter& painter, QPoint c, int d, int r) {
  painter.drawPolygon(QPolygon({QPoint(c.x(), c.y() - r), QPoint(c.x() - r * d, c.y() - r),
                                QPoint(c.x() - r * d, c.y() + r), QPoint(c.x(), c.y() + r)}));
}

void TmvQueryBuilderLinkPainter::DrawRightSideMark(QPainter& painter, QPoint c, int d, int r) {
  painter.drawPolygon(QPolygon({QPoint(c.x(), c.y() - r), QPoint(c.x() + r * d, c.y() - r),
                                QPoint(c.x() + r * d, c.y() + r), QPoint(c.x(), c.y() + r)}));
}

void TmvQueryBuilderLinkPainter::DrawCenterMark(QPainter& painter, QPoint c, int r) {
  painter.drawPolygon(QPolygon({QPoint(c.x(), c.y() - r), QPoint(c.x() + r, c.y()), QPoint(c.x(), c.y() + r),
                                QPoint(c.x() - r, c.y())}));
}

void TmvQueryBuilderLinkPainterSimple::PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused,
                                                 const TmvLink& link) const {
  DrawLine(painter, path, focused);
  painter.setBrush(LinkShapesColor);
  painter.setPen(QPen(LinkColor, 1));
  PaintEndMark(painter, path.Points[0], path.LeftSide, link.LeftType() == ltOuter, 8, 4);
  PaintEndMark(painter, path.Points[3], path.RightSide, link.RightType() == ltOuter, 8, 4);
}

TmvQueryBuilderLinkPainterMSSQL::TmvQueryBuilderLinkPainterMSSQL() { LinkColorFocused = MarkColorFocused; }

void TmvQueryBuilderLinkPainterMSSQL::PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused,
                                                const TmvLink& link) const {
  DrawLine(painter, path, focused);
  painter.setBrush(LinkColorFocused);
  painter.setPen(QPen(LinkBorderColor, 1));
  const QPoint c = Middle(path.Points[1], path.Points[2]);
  const int d = path.Points[0].x() > path.Points[3].x() ? -1 : 1;
  if (link.LeftType() == ltOuter) DrawLeftSideMark(painter, c, d, 7);
  if (link.RightType() == ltOuter) DrawRightSideMark(painter, c, d, 7);
  DrawCenterMark(painter, c, 7);
}

void TmvQueryBuilderLinkPainterAccess::PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused,
                                                 const TmvLink& link) const {
  DrawLine(painter, path, focused);
  // A known cardinality thickens its stub and names itself above it.
  auto stub = [&](QPoint end, QPoint start, TmvQueryBuilderLinkCardinality cardinality) {
    if (cardinality == qblcUnknown) return;
    painter.setPen(QPen(LinkColor, 2));
    painter.drawLine(end, start);
    PaintCardinalitySymbol(painter, QPoint((end.x() + start.x()) / 2, end.y()), cardinality);
  };
  stub(path.Points[0], path.Points[1], link.LeftCardinality());
  stub(path.Points[3], path.Points[2], link.RightCardinality());
  painter.setPen(QPen(LinkColor, 1));
  if (MarkStyle == msAccess) {
    // Each end shows the far end's type: the arrow of an outer join points
    // at the table whose rows are not all kept.
    painter.setBrush(LinkColor);
    auto end = [&](QPoint at, TmvQueryBuilderLinkConnectToSide side, TmvQueryBuilderLinkSideType markType,
                   TmvQueryBuilderLinkCardinality own) {
      if (markType == ltInner && own != qblcUnknown) return;
      PaintEndMark(painter, at, side, markType != ltInner, 4, 2);
    };
    end(path.Points[0], path.LeftSide, link.RightType(), link.LeftCardinality());
    end(path.Points[3], path.RightSide, link.LeftType(), link.RightCardinality());
    return;
  }
  painter.setBrush(focused ? MarkColorFocused : MarkColor);
  const QPoint c = Middle(path.Points[1], path.Points[2]);
  const int d = path.Points[1].x() > path.Points[2].x() ? -1 : 1;
  if (link.LeftType() == ltOuter) DrawLeftSideMark(painter, c, d, 7);
  if (link.RightType() == ltOuter) DrawRightSideMark(painter, c, d, 7);
  DrawCenterMark(painter, c, 7);
}

// --- The list of painter classes ---

void TmvQueryBuilderLinkPainters::RegisterPainter(const QString& className, Factory factory) {
  entries_.push_back({className, std::move(factory)});
}

std::unique_ptr<TmvQueryBuilderLinkPainter> TmvQueryBuilderLinkPainters::CreateByName(const QString& className) const {
  for (const Entry& entry : entries_)
    if (entry.className.compare(className, Qt::CaseInsensitive) == 0) return entry.factory();
  return std::make_unique<TmvQueryBuilderLinkPainterAccess>();
}

std::unique_ptr<TmvQueryBuilderLinkPainter> TmvQueryBuilderLinkPainters::CreateByUserName(const QString& style) const {
  for (const Entry& entry : entries_) {
    std::unique_ptr<TmvQueryBuilderLinkPainter> painter = entry.factory();
    if (painter->PainterStyle().compare(style, Qt::CaseInsensitive) == 0) return painter;
  }
  return std::make_unique<TmvQueryBuilderLinkPainterAccess>();
}

std::vector<QString> TmvQueryBuilderLinkPainters::GetUserNames() const {
  std::vector<QString> names;
  for (const Entry& entry : entries_) names.push_back(entry.factory()->PainterStyle());
  return names;
}

TmvQueryBuilderLinkPainters& LinkPainters() {
  static TmvQueryBuilderLinkPainters painters = [] {
    TmvQueryBuilderLinkPainters list;
    list.RegisterPainter(QStringLiteral("TmvQueryBuilderLinkPainterSimple"),
                         [] { return std::make_unique<TmvQueryBuilderLinkPainterSimple>(); });
    list.RegisterPainter(QStringLiteral("TmvQueryBuilderLinkPainterMSSQL"),
                         [] { return std::make_unique<TmvQueryBuilderLinkPainterMSSQL>(); });
    list.RegisterPainter(QStringLiteral("TmvQueryBuilderLinkPainterAccess"),
                         [] { return std::make_unique<TmvQueryBuilderLinkPainterAccess>(); });
    return list;
  }();
  return painters;
}

}  // namespace mv
