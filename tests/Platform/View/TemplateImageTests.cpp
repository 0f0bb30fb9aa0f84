#include "Platform/View/TemplateImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace kestrona {
namespace {

// Whether point lies inside the triangle, at least margin from every side.
bool insideTriangle(const std::vector<Point>& corners, Point point, double margin) {
  const double signedArea = (corners[1].x - corners[0].x) * (corners[2].y - corners[0].y) -
                            (corners[2].x - corners[0].x) * (corners[1].y - corners[0].y);
  for (std::size_t index = 0; index < 3; ++index) {
    const Point from = corners[index];
    const Point to = corners[(index + 1) % 3];
    const double cross = (to.x - from.x) * (point.y - from.y) - (to.y - from.y) * (point.x - from.x);
    const double distance = cross / std::hypot(to.x - from.x, to.y - from.y);
    if ((signedArea > 0 ? distance : -distance) < margin) return false;
  }
  return true;
}

TEST(TemplateImageTest, PlaySignIsHalfTheEdgeHighWithItsCentroidOnTheCentre) {
  for (double edge : {36.0, 48.0}) {
    SCOPED_TRACE(edge);
    const TemplateSymbolOutline outline = templateSymbolOutline(TemplateSymbol::play, edge);
    ASSERT_EQ(outline.polygons.size(), 1u);
    const std::vector<Point>& corners = outline.polygons.front();
    ASSERT_EQ(corners.size(), 3u);
    EXPECT_DOUBLE_EQ(corners[2].y - corners[0].y, edge / 2);
    EXPECT_DOUBLE_EQ((corners[0].x + corners[1].x + corners[2].x) / 3, edge / 2);
    EXPECT_DOUBLE_EQ((corners[0].y + corners[1].y + corners[2].y) / 3, edge / 2);
  }
}

// A running timer's button shows its play sign grown fivefold about the
// button's centre, with the sign set off by half its leading inset of 3:
// the sign must then cover the whole circle, or the button shows a crescent
// of its own colour beside the pause sign.
TEST(TemplateImageTest, PlaySignGrownFivefoldCoversTheRoundButton) {
  constexpr double kScale = 5;
  constexpr double kInsetShift = 1.5;
  for (double edge : {36.0, 48.0}) {
    SCOPED_TRACE(edge);
    const TemplateSymbolOutline outline = templateSymbolOutline(TemplateSymbol::play, edge);
    std::vector<Point> grown;
    for (Point corner : outline.polygons.front()) {
      grown.push_back({(corner.x + kInsetShift - edge / 2) * kScale, (corner.y - edge / 2) * kScale});
    }
    for (int step = 0; step < 360; ++step) {
      const double angle = step * std::numbers::pi / 180;
      const Point onCircle{std::cos(angle) * edge / 2, std::sin(angle) * edge / 2};
      EXPECT_TRUE(insideTriangle(grown, onCircle, 1)) << "uncovered at " << step << " degrees";
    }
  }
}

}  // namespace
}  // namespace kestrona
