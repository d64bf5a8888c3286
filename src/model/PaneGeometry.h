// The arithmetic of boxes on the design pane: where a new datasource box
// goes, and how a moved or resized box keeps to the grid. Plain functions of
// rectangles and measures, so that the rules hold (and are tested) without
// any visual control.
#pragma once

#include <vector>

#include "model/ModelControls.h"
#include "model/QueryModelHost.h"

namespace mv {

// The spacing of boxes (the design pane options).
struct TmvPaneSpacing {
  int HorzMargin = 20;    // from the left edge of the pane
  int VertMargin = 10;    // from the top edge
  int HorzInterval = 60;  // between two boxes side by side
  int VertInterval = 20;  // between two boxes one above the other
};

// The first free place for a box of `width` x `height` among the boxes
// `others`, row by row from the top left, keeping the intervals to every
// other box. `clientWidth` is the width of the pane (0: unknown, taken as
// 800; under 300 taken as 500). With no room anywhere the box stands at the
// margins.
TmvPoint FindFreePlace(const std::vector<TmvRect>& others, int width, int height, int clientWidth,
                       const TmvPaneSpacing& spacing);

// A box being moved or resized from `current` to `proposed` (Left, Top,
// Right, Bottom in the coordinates of its parent): its top left goes down to
// the grid of `gridSize` pixels (0: no grid), counted from the origin of the
// scrolled area, and a change of width or height grows by what the edge
// moved, so that a box resized by its left or top edge keeps its right or
// bottom edge. In a work area (`inWorkArea`) the box never crosses the top
// left of the scrolled area.
TmvRect SnapBoxToGrid(const TmvRect& current, const TmvRect& proposed, int gridSize, int scrollX, int scrollY,
                      bool inWorkArea);

}  // namespace mv
