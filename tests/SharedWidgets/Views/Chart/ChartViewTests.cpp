#include "SharedWidgets/Views/Chart/ChartView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Platform/Time/Clock.h"
#include "SharedWidgets/Views/Chart/ChartBarView.h"
#include "tests/SharedWidgets/Views/ViewTestSupport.h"

namespace kestrona {
namespace {

using testing::barOf;
using testing::layOutWidget;
using testing::utcDay;

constexpr double kHour = 3600;

std::vector<ChartBar> week(Date start, const std::vector<double>& totals) {
  std::vector<ChartBar> bars;
  for (std::size_t index = 0; index < totals.size(); ++index) {
    bars.push_back(barOf(start.addingTimeInterval(86400.0 * static_cast<double>(index)), {totals[index]}));
  }
  return bars;
}

ChartView timeChart(std::vector<ChartBar> bars, ChartView::DateRangeType range = ChartView::DateRangeType::weekly) {
  return ChartView{std::move(bars),
                   1,
                   range,
                   [](double v) { return std::to_string(int(v)); },
                   kHour,
                   WidgetFamily::systemMedium,
                   testing::utcCalendar()};
}

// The columns of a laid-out chart, left to right.
std::vector<const LaidOutNode*> columnsOf(const LayoutTree& tree) {
  std::vector<const LaidOutNode*> columns = tree.nodesOfKind(ViewKind::clip);
  std::stable_sort(columns.begin(), columns.end(),
                   [](const LaidOutNode* a, const LaidOutNode* b) { return a->frame.minX() < b->frame.minX(); });
  return columns;
}

TEST(ColumnRepresentationTest, KeepsSegmentsOfTwoPointsOrMoreAndMergesTheRestIntoOneGraySegmentOnTop) {
  const struct {
    std::vector<double> values;
    double columnHeight;
    std::optional<double> totalValue;  // the sum of the values unless given
    std::vector<std::pair<std::string, double>> drawn;
  } cases[] = {
      // In a 100-point column of 100, a segment of 2 is exactly 2 points.
      {{50, 2, 48}, 100, std::nullopt, {{"t2", 48}, {"t1", 2}, {"t0", 50}}},
      {{1, 97, 1.5, 0.5}, 100, std::nullopt, {{"OtherTasks", 3}, {"t1", 97}}},
      {{10, 20, 30}, 3, std::nullopt, {{"OtherTasks", 60}}},
      // A bar with no total draws only what its segments add up to.
      {{5, 7}, 100, 0, {{"OtherTasks", 12}}},
      {{0, 0}, 100, std::nullopt, {}},
  };
  for (const auto& c : cases) {
    ChartBar bar = barOf(Date(), c.values);
    if (c.totalValue) bar.totalValue = *c.totalValue;
    const ChartBarView view{bar, 20, c.columnHeight, true, {}, WidgetFamily::systemMedium};
    std::vector<std::pair<std::string, double>> drawn;
    for (const ChartBarSegment& segment : view.columnRepresentationSegments()) {
      drawn.emplace_back(segment.taskId, segment.value);
      if (segment.taskId == ChartBarView::kOtherTasksId) {
        EXPECT_EQ(segment.color, ChartBarView::otherTasksColor());
      }
    }
    EXPECT_EQ(drawn, c.drawn) << ::testing::PrintToString(c.values);
  }
}

// Time charts scale to at least one hour; a chart without a minimum and
// without a positive total has bars of no height; a negative total (a
// damaged file, a refund) draws no column and leaves the scale of the
// other bars alone.
TEST(ChartViewTest, ColumnsScaleToTheGreatestTotalAndNegativeTotalsDrawNone) {
  const struct {
    std::vector<double> totals;
    double minBarValue;
    std::vector<double> heights;  // of the 100 points above the label row
  } cases[] = {
      {{0, 1800, 900}, kHour, {0, 50, 25}},
      {{0, 2 * kHour, kHour}, kHour, {0, 100, 50}},
      {{0, 0, 0}, 0, {0, 0, 0}},
      {{300, -500, 150}, 0, {100, 0, 50}},
      {{-100, -50}, 0, {0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.totals));
    ChartView chart = timeChart(week(utcDay(2026, 11, 22), c.totals));
    chart.minBarValue = c.minBarValue;
    const LayoutTree tree = layOutWidget(chart.body(), Size{180, 120});
    std::vector<double> heights;
    for (const LaidOutNode* column : columnsOf(tree)) {
      heights.push_back(std::round(column->frame.height() * 100) / 100);
      EXPECT_NEAR(column->frame.maxY(), 100, 1e-9);  // columns stand on the label row
    }
    EXPECT_EQ(heights, c.heights);
  }
}

TEST(ChartViewTest, CrowdedMonthlyLabelsThinOutButAlwaysShowToday) {
  // 30 days in 324 points: every second day is labelled, today (the 10th)
  // always, and its neighbours never.
  ManualClock clock(utcDay(2026, 11, 10).addingTimeInterval(8 * kHour));
  ScopedClock scoped(clock);
  std::vector<ChartBar> bars;
  for (int day = 1; day <= 30; ++day) bars.push_back(ChartBar{utcDay(2026, 11, day), {}, 0});
  const ChartView month = timeChart(bars, ChartView::DateRangeType::monthly);
  std::vector<std::string> shown;
  for (const std::string& label : month.labels(324)) {
    if (!label.empty()) shown.push_back(label);
  }
  EXPECT_EQ(shown,
            (std::vector<std::string>{"1", "3", "5", "7", "10", "13", "15", "17", "19", "21", "23", "25", "27", "29"}));
  // A roomy month labels every day.
  const ChartView roomy =
      timeChart(std::vector<ChartBar>(bars.begin(), bars.begin() + 7), ChartView::DateRangeType::monthly);
  EXPECT_EQ(roomy.labels(324), (std::vector<std::string>{"1", "2", "3", "4", "5", "6", "7"}));
}

}  // namespace
}  // namespace kestrona
