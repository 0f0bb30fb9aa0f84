#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Platform/Time/Clock.h"
#include "Platform/View/Renderer.h"
#include "Platform/View/WidgetCanvas.h"
#include "SharedWidgets/Views/Chart/ChartWidgetView.h"
#include "WidgetData/TimerIntent/KestronaWidgetDeepLinkScheme.h"
#include "tests/SharedWidgets/Views/Chart/ChartLayoutSupport.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::barWithSegments;
using testing::layOutForTest;
using testing::utcDay;

constexpr double kHour = 3600;

std::vector<ChartBar> bars(Date start, const std::vector<std::vector<double>>& days) {
  std::vector<ChartBar> result;
  for (std::size_t index = 0; index < days.size(); ++index) {
    result.push_back(barWithSegments(start.addingTimeInterval(86400.0 * static_cast<double>(index)), days[index]));
  }
  return result;
}

TEST(ChartTotalsTest, TheDailyAverageCountsOnlyDaysWithValue) {
  EXPECT_DOUBLE_EQ(chartTotalValue({}), 0);
  EXPECT_DOUBLE_EQ(chartDailyAverage({}), 0);

  // Three days of two hours and four empty days: 2 h a day, not 6/7 h.
  const auto week = bars(utcDay(2026, 11, 23), {{kHour, kHour}, {}, {2 * kHour}, {}, {}, {1800, 5400}, {}});
  EXPECT_DOUBLE_EQ(chartTotalValue(week), 6 * kHour);
  EXPECT_DOUBLE_EQ(chartDailyAverage(week), 2 * kHour);

  EXPECT_DOUBLE_EQ(chartDailyAverage(bars(utcDay(2026, 11, 23), {{}, {}})), 0);

  // A widget with no bars shows zeros and an empty chart.
  const auto empty = layOutForTest(
      ChartWidgetView::forTimeTracked({}, ChartView::DateRangeType::weekly, WidgetFamily::systemMedium).body(),
      widgetcanvas::kMedium);
  EXPECT_NE(empty.findText("0:00"), nullptr);
  EXPECT_TRUE(empty.nodesOfKind(ViewKind::clip).empty());
}

TEST(ChartWidgetViewTest, TimeTrackedWidgetsShowTotalAndAverageAsHoursAndMinutes) {
  const TimeTrackedWidgetEntry entry{utcDay(2026, 11, 24), bars(utcDay(2026, 11, 23), {{kHour, kHour}, {}, {2 * kHour}}),
                                     2};
  const ChartWidgetView weekly = ChartWidgetView::forTimeTracked(entry, ChartView::DateRangeType::weekly,
                                                                 WidgetFamily::systemMedium, testing::utcCalendar());
  EXPECT_DOUBLE_EQ(weekly.primaryValue, 4 * kHour);
  EXPECT_DOUBLE_EQ(weekly.secondaryValue, 2 * kHour);
  EXPECT_DOUBLE_EQ(weekly.minBarValue, 3600);
  EXPECT_EQ(weekly.firstDayOfWeek, 2);
  EXPECT_FALSE(weekly.chartValueFormatter.has_value());
  EXPECT_EQ(weekly.widgetURL, url(KestronaWidgetDeepLinkScheme::openWeeklyReports));

  const auto medium = layOutForTest(weekly.body(), widgetcanvas::kMedium);
  EXPECT_NE(medium.findText("Time tracked"), nullptr);
  EXPECT_NE(medium.findText("4:00"), nullptr);
  EXPECT_NE(medium.findText("Daily avg."), nullptr);
  EXPECT_NE(medium.findText("2:00"), nullptr);
  const auto links = medium.nodesOfKind(ViewKind::link);
  ASSERT_EQ(links.size(), 1u);
  EXPECT_TRUE(links[0]->as<LinkNode>()->isWidgetURL);
  EXPECT_EQ(links[0]->as<LinkNode>()->url, *url(KestronaWidgetDeepLinkScheme::openWeeklyReports));

  // The small family shows the short title and the total only.
  ChartWidgetView small = weekly;
  small.family = WidgetFamily::systemSmall;
  const auto smallTree = layOutForTest(small.body(), widgetcanvas::kSmall);
  EXPECT_NE(smallTree.findText(weekly.smallPrimaryTitle), nullptr);
  EXPECT_NE(smallTree.findText("4:00"), nullptr);
  EXPECT_EQ(smallTree.findText("Daily avg."), nullptr);
  EXPECT_EQ(smallTree.findText("2:00"), nullptr);

  const ChartWidgetView monthly = ChartWidgetView::forTimeTracked(entry, ChartView::DateRangeType::monthly,
                                                                  WidgetFamily::systemMedium, testing::utcCalendar());
  EXPECT_EQ(monthly.widgetURL, url(KestronaWidgetDeepLinkScheme::openMonthlyReports));
  EXPECT_NE(monthly.smallPrimaryTitle, weekly.smallPrimaryTitle);
}

TEST(ChartWidgetViewTest, RevenueWidgetsFormatMoneyInTheEntrysLocale) {
  const RevenueWidgetEntry entry{utcDay(2026, 11, 24), bars(utcDay(2026, 11, 23), {{800, 450}, {}, {250}}), 2, "de_DE"};
  const ChartWidgetView weekly = ChartWidgetView::forRevenue(entry, ChartView::DateRangeType::weekly,
                                                             WidgetFamily::systemMedium, testing::utcCalendar());
  EXPECT_DOUBLE_EQ(weekly.minBarValue, 0);
  ASSERT_TRUE(weekly.chartValueFormatter.has_value());
  const auto tree = layOutForTest(weekly.body(), widgetcanvas::kMedium);
  EXPECT_NE(tree.findText("Revenue"), nullptr);
  EXPECT_NE(tree.findText("1,5K €"), nullptr);          // the total, 1500
  EXPECT_NE(tree.findText("750,0\u00A0€"), nullptr);    // the average over two days
  EXPECT_NE(tree.findText("1,2K"), nullptr);            // the first bar, 1250
  EXPECT_NE(tree.findText("250"), nullptr);             // the third bar

  const ChartWidgetView monthly = ChartWidgetView::forRevenue(entry, ChartView::DateRangeType::monthly,
                                                              WidgetFamily::systemMedium, testing::utcCalendar());
  EXPECT_EQ((*monthly.chartValueFormatter)(1250.4), "1250");
  EXPECT_EQ(monthly.widgetURL, url(KestronaWidgetDeepLinkScheme::openMonthlyReports));
}

// A month of varied days, as a person might track it.
std::vector<ChartBar> sampleBars(Date start, int days, double unit) {
  std::vector<std::vector<double>> values;
  for (int day = 0; day < days; ++day) {
    if (day % 7 == 5 || day % 7 == 6) {
      values.push_back({});
    } else {
      const double base = unit * (1 + (day * 37 % 11) / 4.0);
      values.push_back({base * 0.5, base * 0.3, base * 0.15, base * 0.02, base * 0.03});
    }
  }
  return bars(start, values);
}

TEST(ChartWidgetRenderingTest, DrawsEveryChartWidgetInEachOfItsFamilies) {
  ManualClock clock(utcDay(2026, 11, 26).addingTimeInterval(10 * kHour));
  ScopedClock scoped(clock);
  testing::TemporaryDirectory directory;
  // KESTRONA_CHART_RENDER_DIR keeps the drawings for a person to look at.
  const char* keep = std::getenv("KESTRONA_CHART_RENDER_DIR");
  const std::filesystem::path folder = keep ? std::filesystem::path(keep) : directory.path();

  const TimeTrackedWidgetEntry week{clock.now(), sampleBars(utcDay(2026, 11, 23), 7, 2 * kHour), 2};
  const TimeTrackedWidgetEntry month{clock.now(), sampleBars(utcDay(2026, 11, 1), 30, 2 * kHour), 2};
  const RevenueWidgetEntry revenueWeek{clock.now(), sampleBars(utcDay(2026, 11, 23), 7, 180), 2, "en_US"};
  const RevenueWidgetEntry revenueMonth{clock.now(), sampleBars(utcDay(2026, 11, 1), 30, 180), 2, "de_DE"};

  struct Family {
    WidgetFamily family;
    Size canvas;
  };
  for (const Family family : {Family{WidgetFamily::systemMedium, widgetcanvas::kMedium},
                              Family{WidgetFamily::systemSmall, widgetcanvas::kSmall}}) {
    const std::pair<std::string, ChartWidgetView> widgets[] = {
        {"timeWeekly", ChartWidgetView::forTimeTracked(week, ChartView::DateRangeType::weekly, family.family,
                                                       testing::utcCalendar())},
        {"timeMonthly", ChartWidgetView::forTimeTracked(month, ChartView::DateRangeType::monthly, family.family,
                                                        testing::utcCalendar())},
        {"revenueWeekly", ChartWidgetView::forRevenue(revenueWeek, ChartView::DateRangeType::weekly, family.family,
                                                      testing::utcCalendar())},
        {"revenueMonthly", ChartWidgetView::forRevenue(revenueMonth, ChartView::DateRangeType::monthly, family.family,
                                                       testing::utcCalendar())},
    };
    for (const auto& [name, widget] : widgets) {
      const std::string stem = name + "-" + std::string(rawValue(family.family));
      SCOPED_TRACE(stem);
      const LayoutTree tree = layout(widget.body(), family.canvas);
      ASSERT_NO_THROW(renderPNG(tree, folder / (stem + ".png")));
      ASSERT_NO_THROW(renderSVG(tree, folder / (stem + ".svg")));
      EXPECT_GT(std::filesystem::file_size(folder / (stem + ".png")), 1000u);
      std::ifstream svg(folder / (stem + ".svg"));
      std::string head(5, '\0');
      svg.read(head.data(), 5);
      EXPECT_EQ(head, "<?xml");
      // The columns of days with time were drawn with height.
      std::size_t drawnColumns = 0;
      for (const LaidOutNode* column : tree.nodesOfKind(ViewKind::clip)) {
        if (column->frame.height() > 0) ++drawnColumns;
      }
      EXPECT_GT(drawnColumns, 0u);
    }
  }
}

}  // namespace
}  // namespace kestrona
