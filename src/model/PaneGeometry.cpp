#include "model/PaneGeometry.h"

#include <algorithm>

namespace mv {

namespace {

// The lowest line of the grid of rows: far below anything a pane shows.
constexpr int kBottomLine = 2146483647;

// The index of the last line at or before `value`.
size_t LastLineAtOrBefore(const std::vector<int>& lines, int value) {
  size_t index = 0;
  for (size_t i = 0; i < lines.size() && lines[i] <= value; ++i) index = i;
  return index;
}

// The index of the first line at or beyond `value` (the count when none).
size_t FirstLineAtOrBeyond(const std::vector<int>& lines, int value) {
  return std::lower_bound(lines.begin(), lines.end(), value) - lines.begin();
}

}  // namespace

TmvPoint FindFreePlace(const std::vector<TmvRect>& others, int width, int height, int clientWidth,
                       const TmvPaneSpacing& spacing) {
  if (clientWidth <= 0) clientWidth = 800;
  std::vector<int> columns{0, clientWidth < 300 ? 500 : clientWidth};
  std::vector<int> rows{0, kBottomLine};
  // The new box counts at the origin, the others where they stand.
  columns.insert(columns.end(), {0, width});
  rows.insert(rows.end(), {0, height});
  for (const TmvRect& box : others) {
    columns.insert(columns.end(), {box.Left, box.Right});
    rows.insert(rows.end(), {box.Top, box.Bottom});
  }
  std::sort(columns.begin(), columns.end());
  std::sort(rows.begin(), rows.end());

  // A cell per pair of lines; the last row and column are never free.
  std::vector<std::vector<char>> taken(rows.size(), std::vector<char>(columns.size(), 0));
  for (auto& row : taken) row.back() = 1;
  std::fill(taken.back().begin(), taken.back().end(), 1);
  for (const TmvRect& box : others) {
    const size_t firstRow = LastLineAtOrBefore(rows, box.Top), endRow = FirstLineAtOrBeyond(rows, box.Bottom);
    const size_t firstColumn = LastLineAtOrBefore(columns, box.Left),
                 endColumn = FirstLineAtOrBeyond(columns, box.Right);
    for (size_t r = firstRow; r < endRow; ++r)
      for (size_t c = firstColumn; c < endColumn; ++c) taken[r][c] = 1;
  }

  const long long neededWidth = static_cast<long long>(width) + spacing.HorzInterval;
  const long long neededHeight = static_cast<long long>(height) + spacing.VertInterval;
  auto hasRoom = [&](size_t row, size_t column) {
    for (size_t r = row; r < rows.size() && static_cast<long long>(rows[r]) - rows[row] < neededHeight; ++r)
      for (size_t c = column; c < columns.size() && static_cast<long long>(columns[c]) - columns[column] < neededWidth;
           ++c)
        if (taken[r][c]) return false;
    return true;
  };
  for (size_t r = 0; r < rows.size(); ++r)
    for (size_t c = 0; c < columns.size(); ++c) {
      if (taken[r][c] || !hasRoom(r, c)) continue;
      return {columns[c] + (columns[c] <= 0 ? spacing.HorzMargin : spacing.HorzInterval),
              rows[r] + (rows[r] <= 0 ? spacing.VertMargin : spacing.VertInterval)};
    }
  return {spacing.HorzMargin, spacing.VertMargin};
}

TmvRect SnapBoxToGrid(const TmvRect& current, const TmvRect& proposed, int gridSize, int scrollX, int scrollY,
                      bool inWorkArea) {
  int left = proposed.Left, top = proposed.Top;
  int width = proposed.Right - proposed.Left, height = proposed.Bottom - proposed.Top;
  if (!inWorkArea) scrollX = scrollY = 0;
  if (gridSize > 0) {
    const int dx = (left + scrollX) % gridSize, dy = (top + scrollY) % gridSize;
    left -= dx;
    top -= dy;
    if (width != current.Right - current.Left) width += dx;
    if (height != current.Bottom - current.Top) height += dy;
  }
  if (inWorkArea) {
    left = std::max(left, -scrollX);
    top = std::max(top, -scrollY);
  }
  return {left, top, left + width, top + height};
}

}  // namespace mv
