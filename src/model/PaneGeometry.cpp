#include "model/PaneGeometry.h"

#include <algorithm>

namespace mv {

namespace {

// The lowest line of the grid of rows: far below anything a pane shows.
constexpr int kBottomLine = 2146483647;

// The index of the last line at or before `value` (0 when none is).
size_t LastLineAtOrBefore(const std::vector<int>& lines, int value) {
  const size_t after = std::upper_bound(lines.begin(), lines.end(), value) - lines.begin();
  return after > 0 ? after - 1 : 0;
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
  // A repeated line only adds cells of no width or height, which never
  // hold a box: one of each is enough.
  for (std::vector<int>* lines : {&columns, &rows}) {
    std::sort(lines->begin(), lines->end());
    lines->erase(std::unique(lines->begin(), lines->end()), lines->end());
  }
  const size_t rowCount = rows.size(), columnCount = columns.size();

  // A cell per pair of lines; the last row and column are never free, nor
  // the cells a box covers. Each covered block is marked at its corners,
  // summed into a count per cell, then into a summed-area table, so that
  // whether a block of cells is free is one sum.
  const size_t stride = columnCount + 1;
  std::vector<int> marks((rowCount + 1) * stride, 0);
  auto mark = [&](size_t firstRow, size_t endRow, size_t firstColumn, size_t endColumn) {
    if (firstRow >= endRow || firstColumn >= endColumn) return;
    ++marks[firstRow * stride + firstColumn];
    --marks[firstRow * stride + endColumn];
    --marks[endRow * stride + firstColumn];
    ++marks[endRow * stride + endColumn];
  };
  mark(0, rowCount, columnCount - 1, columnCount);
  mark(rowCount - 1, rowCount, 0, columnCount);
  for (const TmvRect& box : others)
    mark(LastLineAtOrBefore(rows, box.Top), FirstLineAtOrBeyond(rows, box.Bottom), LastLineAtOrBefore(columns, box.Left),
         FirstLineAtOrBeyond(columns, box.Right));
  auto sumUpAndLeft = [&](std::vector<int>& table) {
    for (size_t r = 0; r <= rowCount; ++r)
      for (size_t c = 1; c <= columnCount; ++c) table[r * stride + c] += table[r * stride + c - 1];
    for (size_t r = 1; r <= rowCount; ++r)
      for (size_t c = 0; c <= columnCount; ++c) table[r * stride + c] += table[(r - 1) * stride + c];
  };
  sumUpAndLeft(marks);  // now the number of marks on each cell
  // taken[r][c]: the taken cells above row r and left of column c.
  std::vector<int> taken((rowCount + 1) * stride, 0);
  for (size_t r = 0; r < rowCount; ++r)
    for (size_t c = 0; c < columnCount; ++c) taken[(r + 1) * stride + c + 1] = marks[r * stride + c] > 0;
  sumUpAndLeft(taken);
  auto takenIn = [&](size_t r0, size_t r1, size_t c0, size_t c1) {
    return taken[r1 * stride + c1] - taken[r0 * stride + c1] - taken[r1 * stride + c0] + taken[r0 * stride + c0];
  };

  // Room: every cell from this one on while the lines stay nearer than the
  // box and its interval; the block ends at the first line that is not.
  auto reach = [](const std::vector<int>& lines, size_t from, long long needed) {
    const long long limit = lines[from] + needed;
    const size_t end = std::lower_bound(lines.begin() + from, lines.end(), limit,
                                        [](int line, long long value) { return line < value; }) -
                       lines.begin();
    return std::max(end, from + 1);
  };
  const long long neededWidth = static_cast<long long>(width) + spacing.HorzInterval;
  const long long neededHeight = static_cast<long long>(height) + spacing.VertInterval;
  std::vector<size_t> columnReach(columnCount);
  for (size_t c = 0; c < columnCount; ++c) columnReach[c] = reach(columns, c, neededWidth);
  for (size_t r = 0; r < rowCount; ++r) {
    const size_t rowEnd = reach(rows, r, neededHeight);
    for (size_t c = 0; c < columnCount; ++c) {
      if (takenIn(r, rowEnd, c, columnReach[c])) continue;
      return {columns[c] + (columns[c] <= 0 ? spacing.HorzMargin : spacing.HorzInterval),
              rows[r] + (rows[r] <= 0 ? spacing.VertMargin : spacing.VertInterval)};
    }
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
