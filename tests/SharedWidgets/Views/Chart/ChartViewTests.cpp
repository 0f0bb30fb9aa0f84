#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Platform/Time/Clock.h"
#include "SharedCore/Support/Colors/NamedColors.h"
#include "SharedWidgets/Views/Chart/ChartView.h"
#include "tests/SharedWidgets/Views/Chart/ChartLayoutSupport.h"

namespace kestrona {
namespace {

using testing::barWithSegments;
using testing::columnsOf;
using testing::layOutForTest;
using testing::utcDay;

constexpr double kHour = 3600;

// Seven bars from start, one day apart, with the given totals.
std::vector<ChartBar> week(Date start, const std::vector<double>& totals) {
  std::vector<ChartBar> bars;
  for (std::size_t index = 0; index < totals.size(); ++index) {
    const Date day = start.addingTimeInterval(86400.0 * static_cast<double>(index));
    bars.push_back(totals[index] > 0 ? barWithSegments(day, {totals[index]}) : ChartBar{day, {}, 0});
  }
  return bars;
}

ChartView timeChart(std::vector<ChartBar> bars, ChartView::DateRangeType range = ChartView::DateRangeType::weekly,
                    WidgetFamily family = WidgetFamily::systemMedium) {
  return ChartView{std::move(bars), 1, range, [](double v) { return std::to_string(int(v)); }, kHour, family,
                   testing::utcCalendar()};
}

TEST(ChartViewTest, BarsAndGapsFillTheWidthExactly) {
  // Medium weekly: gap factor 0.5, so 7 bars of 18 and 6 gaps of 9 in 180.
  const auto tree = layOutForTest(timeChart(week(utcDay(2026, 11, 22), {kHour, 0, 0, 0, 0, 0, kHour})).body(), {180, 120});
  const auto columns = columnsOf(tree);
  ASSERT_EQ(columns.size(), 7u);
  for (std::size_t index = 0; index < columns.size(); ++index) {
    EXPECT_NEAR(columns[index]->frame.minX(), 27.0 * static_cast<double>(index), 1e-9);
    EXPECT_NEAR(columns[index]->frame.width(), 18, 1e-9);
  }
  EXPECT_NEAR(columns.back()->frame.maxX(), 180, 1e-9);

  // Small monthly: gap factor 0.3; 30 bars of 170 / 38.7.
  const ChartView small = timeChart({}, ChartView::DateRangeType::monthly, WidgetFamily::systemSmall);
  ChartView month = small;
  month.bars.resize(30);
  EXPECT_DOUBLE_EQ(month.barWidth(170), 170 / (30 + 0.3 * 29));
  EXPECT_DOUBLE_EQ(small.barWidth(170), 0);
}

TEST(ChartViewTest, TimeChartsScaleToAtLeastOneHour) {
  // A week whose largest day is 30 minutes: that bar is half of the 100
  // points above the 20-point label row.
  const auto halfTree = layOutForTest(timeChart(week(utcDay(2026, 11, 22), {0, 1800, 900, 0, 0, 0, 0})).body(), {180, 120});
  const auto half = columnsOf(halfTree);
  ASSERT_EQ(half.size(), 7u);
  EXPECT_NEAR(half[1]->frame.height(), 50, 1e-9);
  EXPECT_NEAR(half[2]->frame.height(), 25, 1e-9);
  EXPECT_NEAR(half[0]->frame.height(), 0, 1e-9);
  // Columns stand on the label row.
  EXPECT_NEAR(half[1]->frame.maxY(), 100, 1e-9);

  // Past one hour the largest day fills the height.
  const auto fullTree =
      layOutForTest(timeChart(week(utcDay(2026, 11, 22), {0, 2 * kHour, kHour, 0, 0, 0, 0})).body(), {180, 120});
  const auto full = columnsOf(fullTree);
  EXPECT_NEAR(full[1]->frame.height(), 100, 1e-9);
  EXPECT_NEAR(full[2]->frame.height(), 50, 1e-9);

  // Without a minimum an all-zero chart has no scale and flat bars.
  ChartView revenue = timeChart(week(utcDay(2026, 11, 22), {0, 0, 0, 0, 0, 0, 0}));
  revenue.minBarValue = 0;
  EXPECT_DOUBLE_EQ(revenue.scale(), 0);
  const auto flatTree = layOutForTest(revenue.body(), {180, 120});
  for (const LaidOutNode* column : columnsOf(flatTree)) {
    EXPECT_DOUBLE_EQ(column->frame.height(), 0);
  }
}

TEST(ChartViewTest, WeeklyBarsShowTheirTotalsAndMonthlyBarsDoNot) {
  const auto weekly = layOutForTest(timeChart(week(utcDay(2026, 11, 22), {0, 1800, 0, 0, 0, 0, 0})).body(), {180, 120});
  EXPECT_NE(weekly.findText("1800"), nullptr);
  const auto monthly = layOutForTest(
      timeChart(week(utcDay(2026, 11, 22), {0, 1800, 0, 0, 0, 0, 0}), ChartView::DateRangeType::monthly).body(),
      {180, 120});
  EXPECT_EQ(monthly.findText("1800"), nullptr);
}

struct LabelRow {
  std::vector<std::string> texts;
  std::vector<const LaidOutNode*> nodes;
};

LabelRow labelRow(const LayoutTree& tree) {
  LabelRow row;
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::text)) {
    row.texts.push_back(node->text->string);
    row.nodes.push_back(node);
  }
  return row;
}

TEST(ChartViewTest, WeekdayLabelsFollowTheBarsWithTodaySetApart) {
  // Tuesday 24 November 2026, noon UTC.
  ManualClock clock(utcDay(2026, 11, 24).addingTimeInterval(12 * kHour));
  ScopedClock scoped(clock);
  const RGBAComponents secondary = NamedColors::secondaryLabel().resolved(Appearance::dark()).components();

  struct Case {
    std::int64_t firstDayOfWeek;
    Date start;
    std::vector<std::string> labels;
    std::size_t today;
  };
  const Case cases[] = {
      {1, utcDay(2026, 11, 22), {"S", "M", "T", "W", "T", "F", "S"}, 2},
      {2, utcDay(2026, 11, 23), {"M", "T", "W", "T", "F", "S", "S"}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.firstDayOfWeek);
    ChartView chart = timeChart(week(c.start, {0, 0, 0, 0, 0, 0, 0}));
    chart.firstDayOfWeek = c.firstDayOfWeek;
    const auto tree = layOutForTest(chart.body(), {180, 120});
    const LabelRow row = labelRow(tree);
    ASSERT_EQ(row.texts, c.labels);
    const auto columns = columnsOf(tree);
    for (std::size_t index = 0; index < row.nodes.size(); ++index) {
      SCOPED_TRACE(index);
      const LaidOutNode& label = *row.nodes[index];
      EXPECT_NEAR(label.frame.midX(), columns[index]->frame.midX(), 1e-9);
      EXPECT_GE(label.frame.minY(), 100);
      const bool isToday = index == c.today;
      EXPECT_EQ(label.text->font.weight == Font::Weight::bold, isToday);
      if (isToday) {
        EXPECT_DOUBLE_EQ(label.text->color.alpha, 1);
      } else {
        EXPECT_DOUBLE_EQ(label.text->color.alpha, secondary.alpha);
      }
    }
  }
}

TEST(ChartViewTest, CrowdedMonthlyLabelsThinOutButAlwaysShowToday) {
  // 30 days in 324 points: every second day is labelled, today (the 10th)
  // always, and no label comes closer than 14 points to another.
  ManualClock clock(utcDay(2026, 11, 10).addingTimeInterval(8 * kHour));
  ScopedClock scoped(clock);
  std::vector<ChartBar> bars;
  for (int day = 1; day <= 30; ++day) bars.push_back(ChartBar{utcDay(2026, 11, day), {}, 0});
  const auto tree = layOutForTest(timeChart(bars, ChartView::DateRangeType::monthly).body(), {324, 120});
  const LabelRow row = labelRow(tree);
  ASSERT_FALSE(row.texts.empty());
  EXPECT_EQ(row.texts.front(), "1");
  const auto today = std::find(row.texts.begin(), row.texts.end(), "10");
  ASSERT_NE(today, row.texts.end());
  EXPECT_EQ(row.nodes[today - row.texts.begin()]->text->font.weight, Font::Weight::bold);
  EXPECT_EQ(std::find(row.texts.begin(), row.texts.end(), "9"), row.texts.end());
  EXPECT_EQ(std::find(row.texts.begin(), row.texts.end(), "11"), row.texts.end());
  for (std::size_t index = 1; index < row.nodes.size(); ++index) {
    EXPECT_GE(row.nodes[index]->frame.midX() - row.nodes[index - 1]->frame.midX(), 14);
  }

  // A roomy month labels every day.
  ChartView roomy = timeChart(std::vector<ChartBar>(bars.begin(), bars.begin() + 7), ChartView::DateRangeType::monthly);
  EXPECT_EQ(roomy.labels(324), (std::vector<std::string>{"1", "2", "3", "4", "5", "6", "7"}));
}

TEST(ChartViewTest, TheSmallFamilyHasNoLabelRow) {
  ManualClock clock(utcDay(2026, 11, 24));
  ScopedClock scoped(clock);
  const auto tree = layOutForTest(
      timeChart(week(utcDay(2026, 11, 22), {0, kHour, 0, 0, 0, 0, 0}), ChartView::DateRangeType::weekly,
                WidgetFamily::systemSmall)
          .body(),
      {140, 100});
  EXPECT_TRUE(tree.nodesOfKind(ViewKind::text).empty());
  const auto columns = columnsOf(tree);
  ASSERT_EQ(columns.size(), 7u);
  EXPECT_NEAR(columns[1]->frame.height(), 100, 1e-9);
  EXPECT_NEAR(columns[1]->frame.maxY(), 100, 1e-9);
}

}  // namespace
}  // namespace kestrona
