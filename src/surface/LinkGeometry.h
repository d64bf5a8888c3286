// Where a link between two field rows runs: the sides of the boxes it
// leaves by, the rectangle it needs with room for its marks, its path of
// two 16-pixel stubs and a diagonal, and whether a point is on it.
#pragma once

#include <QPoint>
#include <QRect>
#include <array>

namespace mv {

enum TmvQueryBuilderLinkConnectToSide { csLeft, csRight };

struct TmvLinkPath {
  TmvQueryBuilderLinkConnectToSide LeftSide = csRight;
  TmvQueryBuilderLinkConnectToSide RightSide = csLeft;
  // The link's own rectangle: 4 pixels beside and below, 20 above.
  QRect Bounds;
  // The left stub's start and end, the right stub's end and start.
  std::array<QPoint, 4> Points;
};

// The path between row `a` of the left box and row `b` of the right one,
// each spanning its box from edge to edge (frame included).
TmvLinkPath AlignLink(const QRect& a, const QRect& b);

// Whether `point` lies within `tolerance` pixels of the path.
bool IsPointOnLink(const std::array<QPoint, 4>& points, const QPoint& point, int tolerance = 6);

}  // namespace mv
