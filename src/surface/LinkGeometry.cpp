#include "surface/LinkGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace mv {

namespace {

constexpr int kStub = 16;

// The stub out of a row: from the side's edge, 16 pixels outwards, at mid-row.
std::array<QPoint, 2> EnterLine(const QRect& row, TmvQueryBuilderLinkConnectToSide side) {
  const int y = (row.top() + row.bottom() + 1) / 2;
  const int edge = side == csRight ? row.right() + 1 : row.left();
  return {QPoint(edge, y), QPoint(side == csRight ? edge + kStub : edge - kStub, y)};
}

// Manhattan distance of `point` to the segment's point at position `at`
// along the segment's longer axis.
int DistanceAt(const QPoint& from, const QPoint& to, bool alongX, int at, const QPoint& point) {
  const double t = alongX ? double(at - from.x()) / (to.x() - from.x()) : double(at - from.y()) / (to.y() - from.y());
  const int other = static_cast<int>(std::lround(alongX ? from.y() + t * (to.y() - from.y())
                                                        : from.x() + t * (to.x() - from.x())));
  return alongX ? std::abs(point.x() - at) + std::abs(point.y() - other)
                : std::abs(point.y() - at) + std::abs(point.x() - other);
}

bool IsPointOnSegment(const QPoint& from, const QPoint& to, const QPoint& point, int tolerance) {
  if (from.x() == to.x())
    return point.y() >= std::min(from.y(), to.y()) && point.y() <= std::max(from.y(), to.y()) &&
           std::abs(point.x() - from.x()) <= tolerance;
  if (from.y() == to.y())
    return point.x() >= std::min(from.x(), to.x()) && point.x() <= std::max(from.x(), to.x()) &&
           std::abs(point.y() - from.y()) <= tolerance;
  // A search along the longer axis for the nearest position, halving the
  // interval toward the side where the distance falls.
  const bool alongX = std::abs(to.x() - from.x()) >= std::abs(to.y() - from.y());
  int low = alongX ? std::min(from.x(), to.x()) : std::min(from.y(), to.y());
  int high = alongX ? std::max(from.x(), to.x()) : std::max(from.y(), to.y());
  while (low < high) {
    const int middle = low + (high - low) / 2;
    if (DistanceAt(from, to, alongX, middle, point) <= DistanceAt(from, to, alongX, middle + 1, point))
      high = middle;
    else
      low = middle + 1;
  }
  return DistanceAt(from, to, alongX, low, point) <= tolerance;
}

}  // namespace

TmvLinkPath AlignLink(const QRect& a, const QRect& b) {
  TmvLinkPath path;
  const int aRight = a.right() + 1, bRight = b.right() + 1;
  const int y = std::min(a.top(), b.top());
  const int h = std::max(a.bottom(), b.bottom()) + 1 - y;
  int x = 0, w = 0;
  if (b.left() > aRight) {
    path.LeftSide = csRight, path.RightSide = csLeft;
    x = aRight, w = b.left() - aRight;
  } else if (a.left() > bRight) {
    path.LeftSide = csLeft, path.RightSide = csRight;
    x = bRight, w = a.left() - bRight;
  } else if (std::abs(a.left() - b.left()) <= std::abs(aRight - bRight)) {
    path.LeftSide = path.RightSide = csLeft;
    x = std::min(a.left(), b.left()) - kStub;
    w = std::max(a.left(), b.left()) - x;
  } else {
    path.LeftSide = path.RightSide = csRight;
    x = std::min(aRight, bRight);
    w = std::max(aRight, bRight) + kStub - x;
  }
  // A narrow gap still leaves room for both stubs.
  if (w < kStub) {
    x = x + w - kStub;
    w = 2 * kStub - w;
  }
  path.Bounds = QRect(x - 4, y - 20, w + 8, h + 24);
  const auto left = EnterLine(a, path.LeftSide), right = EnterLine(b, path.RightSide);
  path.Points = {left[0], left[1], right[1], right[0]};
  return path;
}

bool IsPointOnLink(const std::array<QPoint, 4>& points, const QPoint& point, int tolerance) {
  for (size_t i = 0; i + 1 < points.size(); ++i)
    if (IsPointOnSegment(points[i], points[i + 1], point, tolerance)) return true;
  return false;
}

}  // namespace mv
