#include <gtest/gtest.h>

#include <vector>

#include "Extension/WidgetWindow/WidgetArrangement.h"

namespace kestrona {
namespace {

constexpr Size kSmall{170, 170};
constexpr Size kMedium{364, 170};
constexpr Size kLarge{364, 382};

TEST(WidgetArrangementTest, WidgetsFlowIntoRowsThatTheWidthAllows) {
  const struct {
    std::vector<Size> sizes;
    double width;
    std::vector<Point> origins;
    Size content;
  } cases[] = {
      // One widget wide: a column.
      {{kMedium, kMedium, kMedium}, 396, {{16, 16}, {16, 202}, {16, 388}}, {396, 574}},
      // Exactly two small ones fit (16 + 170 + 16 + 170 + 16).
      {{kSmall, kSmall, kMedium}, 388, {{16, 16}, {202, 16}, {16, 202}}, {396, 388}},
      {{kSmall, kSmall}, 387, {{16, 16}, {16, 202}}, {202, 388}},
      // A row is as tall as its tallest; the next row starts below it.
      {{kLarge, kSmall, kMedium}, 800, {{16, 16}, {396, 16}, {16, 414}}, {582, 600}},
      // Too narrow for any: each still gets a row, uncut at the left.
      {{kMedium, kSmall}, 100, {{16, 16}, {16, 202}}, {396, 388}},
      {{}, 500, {}, {16, 16}},
  };
  for (const auto& example : cases) {
    const std::vector<Rect> frames = arrangeWidgets(example.sizes, example.width);
    ASSERT_EQ(frames.size(), example.origins.size()) << "width " << example.width;
    for (std::size_t index = 0; index < frames.size(); ++index) {
      EXPECT_EQ(frames[index], (Rect{example.origins[index], example.sizes[index]}))
          << "widget " << index << " at width " << example.width;
    }
    EXPECT_EQ(arrangedSize(example.sizes, example.width), example.content) << "width " << example.width;
  }
  EXPECT_EQ(narrowestWidth({kSmall, kLarge}), 396);
}

}  // namespace
}  // namespace kestrona
