// Where new boxes land on the design pane and how moved boxes keep to the grid.
#include <gtest/gtest.h>

#include <vector>

#include "model/PaneGeometry.h"

namespace {

using mv::TmvRect;

mv::TmvRect Box(int left, int top, int width, int height) { return {left, top, left + width, top + height}; }

// Places `count` boxes of one size one after another, each among those before it.
std::vector<TmvRect> PlaceMany(int count, int width, int height, int clientWidth) {
  std::vector<TmvRect> placed;
  for (int i = 0; i < count; ++i) {
    const mv::TmvPoint at = mv::FindFreePlace(placed, width, height, clientWidth, {});
    placed.push_back(Box(at.X, at.Y, width, height));
  }
  return placed;
}

TEST(PaneGeometryTest, NewBoxesFillRowsFromTheTopLeft) {
  // 160 wide on a pane 800 wide: three in a row, the fourth 20 below the lowest.
  const std::vector<TmvRect> row = PlaceMany(4, 160, 100, 800);
  const int expected[][2] = {{20, 10}, {240, 10}, {460, 10}, {20, 130}};
  for (size_t i = 0; i < row.size(); ++i) {
    EXPECT_EQ(row[i].Left, expected[i][0]) << i;
    EXPECT_EQ(row[i].Top, expected[i][1]) << i;
  }
  // A box of another height below a taller one still keeps the interval.
  std::vector<TmvRect> mixed{Box(20, 10, 160, 300), Box(240, 10, 160, 50)};
  const mv::TmvPoint third = mv::FindFreePlace(mixed, 160, 50, 800, {});
  EXPECT_EQ(third.X, 460);
  EXPECT_EQ(third.Y, 10);
}

TEST(PaneGeometryTest, PaneWidthsAndBoxesThatFitNowhere) {
  struct Case {
    int clientWidth, boxWidth, boxes, lastX, lastY;
  } cases[] = {
      {0, 160, 4, 20, 130},    // unknown width counts as 800
      {200, 160, 2, 240, 10},  // under 300 counts as 500: two fit side by side
      {200, 160, 3, 20, 130},  // ... and the third goes below
      {800, 900, 1, 20, 10},   // wider than the pane: no cell, the margins
      {800, 900, 2, 20, 10},   // the same for the next one
  };
  for (const Case& c : cases) {
    const std::vector<TmvRect> placed = PlaceMany(c.boxes, c.boxWidth, 100, c.clientWidth);
    EXPECT_EQ(placed.back().Left, c.lastX) << c.clientWidth << " " << c.boxWidth << " " << c.boxes;
    EXPECT_EQ(placed.back().Top, c.lastY) << c.clientWidth << " " << c.boxWidth << " " << c.boxes;
  }
}

TEST(PaneGeometryTest, MovesAndResizesKeepToTheGrid) {
  struct Case {
    const char* what;
    TmvRect current, proposed;
    int grid, scrollX, scrollY;
    bool inWorkArea;
    TmvRect expected;
  } cases[] = {
      {"move snaps down", Box(20, 10, 160, 100), Box(33, 47, 160, 100), 10, 0, 0, true, Box(30, 40, 160, 100)},
      {"grid counts from the scrolled origin", Box(20, 10, 160, 100), Box(33, 47, 160, 100), 10, 5, 0, true,
       Box(25, 40, 160, 100)},
      {"no grid: to the pixel", Box(20, 10, 160, 100), Box(33, 47, 160, 100), 0, 0, 0, true, Box(33, 47, 160, 100)},
      {"left edge resize keeps the right edge", Box(20, 10, 160, 100), Box(13, 10, 167, 100), 10, 0, 0, true,
       Box(10, 10, 170, 100)},
      {"right edge resize: left stays, width not rounded", Box(20, 10, 160, 100), Box(20, 10, 173, 100), 10, 0, 0,
       true, Box(20, 10, 173, 100)},
      {"cannot cross the top left", Box(20, 10, 160, 100), Box(-15, -3, 160, 100), 0, 0, 0, true,
       Box(0, 0, 160, 100)},
      {"scrolled: held at the scrolled origin", Box(20, 10, 160, 100), Box(-50, -50, 160, 100), 0, 30, 20, true,
       Box(-30, -20, 160, 100)},
      {"outside a work area: no clamp, no scroll", Box(20, 10, 160, 100), Box(-17, 7, 160, 100), 5, 30, 20, false,
       Box(-15, 5, 160, 100)},
  };
  for (const Case& c : cases) {
    const TmvRect got = mv::SnapBoxToGrid(c.current, c.proposed, c.grid, c.scrollX, c.scrollY, c.inWorkArea);
    EXPECT_EQ(got.Left, c.expected.Left) << c.what;
    EXPECT_EQ(got.Top, c.expected.Top) << c.what;
    EXPECT_EQ(got.Right, c.expected.Right) << c.what;
    EXPECT_EQ(got.Bottom, c.expected.Bottom) << c.what;
  }
}

}  // namespace
