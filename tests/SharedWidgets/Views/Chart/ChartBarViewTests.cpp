#include <gtest/gtest.h>

#include "SharedWidgets/Views/Chart/ChartBarView.h"
#include "SharedWidgets/Views/Chart/ColorSegmentView.h"
#include "tests/SharedWidgets/Views/Chart/ChartLayoutSupport.h"

namespace kestrona {
namespace {

using testing::barWithSegments;
using testing::layOutForTest;

ChartBarView barView(ChartBar bar, double columnHeight, WidgetFamily family = WidgetFamily::systemMedium) {
  return ChartBarView{std::move(bar), 20, columnHeight, true, [](double v) { return std::to_string(int(v)); }, family};
}

std::vector<std::string> taskIds(const std::vector<ChartBarSegment>& segments) {
  std::vector<std::string> ids;
  for (const ChartBarSegment& segment : segments) ids.push_back(segment.taskId);
  return ids;
}

TEST(ColumnRepresentationTest, KeepsSegmentsOfAtLeastTwoPointsInReverseOrder) {
  // In a 100-point column of 100, a segment of 2 is exactly 2 points high.
  const auto segments = barView(barWithSegments(Date(), {50, 2, 48}), 100).columnRepresentationSegments();
  EXPECT_EQ(taskIds(segments), (std::vector<std::string>{"t2", "t1", "t0"}));
  EXPECT_DOUBLE_EQ(segments[1].value, 2);
}

TEST(ColumnRepresentationTest, MergesThinSegmentsIntoOneGraySegmentAtTheTop) {
  const auto segments = barView(barWithSegments(Date(), {1, 97, 1.5, 0.5}), 100).columnRepresentationSegments();
  ASSERT_EQ(taskIds(segments), (std::vector<std::string>{"OtherTasks", "t1"}));
  EXPECT_DOUBLE_EQ(segments[0].value, 3);
  EXPECT_EQ(segments[0].color, ChartBarView::otherTasksColor());
}

TEST(ColumnRepresentationTest, EverySegmentTooThinGivesOneSegmentWithTheWholeTotal) {
  // A short column: every segment is below 2 points.
  const auto segments = barView(barWithSegments(Date(), {10, 20, 30}), 3).columnRepresentationSegments();
  ASSERT_EQ(segments.size(), 1u);
  EXPECT_EQ(segments[0].taskId, "OtherTasks");
  EXPECT_DOUBLE_EQ(segments[0].value, 60);
}

TEST(ColumnRepresentationTest, ABarWithNoTotalDrawsOnlyWhatItsSegmentsAddUpTo) {
  ChartBar zeroTotal = barWithSegments(Date(), {5, 7});
  zeroTotal.totalValue = 0;
  const auto merged = barView(zeroTotal, 100).columnRepresentationSegments();
  ASSERT_EQ(merged.size(), 1u);
  EXPECT_DOUBLE_EQ(merged[0].value, 12);

  ChartBar empty = barWithSegments(Date(), {0, 0});
  EXPECT_TRUE(barView(empty, 100).columnRepresentationSegments().empty());
}

TEST(ChartBarViewTest, CornerRadiusFollowsTheFamily) {
  EXPECT_DOUBLE_EQ(barView({}, 10, WidgetFamily::systemSmall).cornerRadius(), 10);
  EXPECT_DOUBLE_EQ(barView({}, 10, WidgetFamily::systemMedium).cornerRadius(), 4);
  EXPECT_DOUBLE_EQ(barView({}, 10, WidgetFamily::systemLarge).cornerRadius(), 4);
  ChartBarView narrow = barView({}, 10, WidgetFamily::systemMedium);
  narrow.width = 5;
  EXPECT_DOUBLE_EQ(narrow.cornerRadius(), 2.5);
  const auto shape = narrow.columnShape();
  EXPECT_EQ(shape.corners, RectCorner::topLeft | RectCorner::topRight);
}

TEST(ChartBarViewTest, StacksSegmentsWithSeparatorsTakenFromTheirOwnHeight) {
  const ChartBarView view = barView(barWithSegments(Date(), {30, 70}), 100);
  const LayoutTree tree = layOutForTest(view.body().frame(20, 130, Alignment::bottom()), {20, 130});
  const auto columns = testing::columnsOf(tree);
  ASSERT_EQ(columns.size(), 1u);
  EXPECT_DOUBLE_EQ(columns[0]->frame.height(), 100);
  EXPECT_DOUBLE_EQ(columns[0]->frame.maxY(), 130);
  EXPECT_DOUBLE_EQ(columns[0]->frame.width(), 20);

  // The total stands above the column with 2 points below it.
  const LaidOutNode* total = tree.findText("100");
  ASSERT_NE(total, nullptr);
  EXPECT_DOUBLE_EQ(total->frame.maxY(), columns[0]->frame.minY() - 2);

  // Segments from the top: t1 (70 points), then t0 (30) opened by a
  // transparent strip of one point.
  std::vector<const LaidOutNode*> fills;
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::shape)) fills.push_back(node);
  ASSERT_EQ(fills.size(), 3u);
  EXPECT_DOUBLE_EQ(fills[0]->frame.height(), 70);
  EXPECT_DOUBLE_EQ(fills[1]->frame.height(), 1);
  EXPECT_DOUBLE_EQ(fills[1]->color->alpha, 0);
  EXPECT_DOUBLE_EQ(fills[2]->frame.height(), 29);
  EXPECT_DOUBLE_EQ(fills[2]->frame.maxY(), 130);
}

TEST(ChartBarViewTest, DrawsNoTotalInTheSmallFamilyOrForAnEmptyDay) {
  const auto small = layOutForTest(barView(barWithSegments(Date(), {30}), 50, WidgetFamily::systemSmall).body(), {20, 80});
  EXPECT_TRUE(small.nodesOfKind(ViewKind::text).empty());
  const auto empty = layOutForTest(barView(ChartBar{}, 0).body(), {20, 80});
  EXPECT_TRUE(empty.nodesOfKind(ViewKind::text).empty());
  ChartBarView hidden = barView(barWithSegments(Date(), {30}), 50);
  hidden.displayTotalValue = false;
  EXPECT_TRUE(layOutForTest(hidden.body(), {20, 80}).nodesOfKind(ViewKind::text).empty());
}

}  // namespace
}  // namespace kestrona
