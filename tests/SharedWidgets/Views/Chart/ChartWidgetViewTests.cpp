#include "SharedWidgets/Views/Chart/ChartWidgetView.h"

#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "tests/Platform/View/LayoutSnapshot.h"
#include "tests/SharedWidgets/Views/ViewTestSupport.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::barOf;
using testing::utcDay;
using Range = ChartView::DateRangeType;

constexpr double kHour = 3600;

// Days from start with the given segment values, one bar a day.
std::vector<ChartBar> days(Date start, const std::vector<std::vector<double>>& values) {
  std::vector<ChartBar> bars;
  for (std::size_t index = 0; index < values.size(); ++index) {
    bars.push_back(barOf(start.addingTimeInterval(86400.0 * static_cast<double>(index)), values[index]));
  }
  return bars;
}

// count days from a Monday as a person might track them up to the day
// tracked (its index): weekends and later days empty, two tasks on the
// others, unit per hour.
std::vector<ChartBar> trackedDays(Date monday, int count, int tracked, double unit) {
  std::vector<std::vector<double>> values;
  for (int day = 0; day < count; ++day) {
    const double hours = 1 + (day * 37 % 11) / 4.0;
    values.push_back(day % 7 >= 5 || day > tracked ? std::vector<double>{}
                                                   : std::vector<double>{hours * unit * 0.6, hours * unit * 0.4});
  }
  return days(monday, values);
}

TEST(ChartTotalsTest, TheDailyAverageCountsOnlyDaysWithValue) {
  EXPECT_DOUBLE_EQ(chartTotalValue({}), 0);
  EXPECT_DOUBLE_EQ(chartDailyAverage({}), 0);
  // Three days of two hours and four empty days: 2 h a day, not 6/7 h.
  const auto week = days(utcDay(2026, 11, 23), {{kHour, kHour}, {}, {2 * kHour}, {}, {}, {1800, 5400}, {}});
  EXPECT_DOUBLE_EQ(chartTotalValue(week), 6 * kHour);
  EXPECT_DOUBLE_EQ(chartDailyAverage(week), 2 * kHour);
  EXPECT_DOUBLE_EQ(chartDailyAverage(days(utcDay(2026, 11, 23), {{}, {}})), 0);
}

// The four widgets in the families they are offered in: titles, totals,
// averages, columns with their segments and totals, day labels with today
// set apart, and the reports link, as stored.
TEST(ChartWidgetViewTest, EachWidgetMatchesItsSnapshot) {
  ManualClock clock(utcDay(2026, 11, 26).addingTimeInterval(10 * kHour));
  ScopedClock scoped(clock);
  // Thursday 26 November 2026; the month's first Monday is the 2nd.
  const TimeTrackedWidgetEntry timeWeek{clock.now(), trackedDays(utcDay(2026, 11, 23), 7, 3, kHour), 2};
  const RevenueWidgetEntry revenueWeek{clock.now(), trackedDays(utcDay(2026, 11, 23), 7, 3, 85), 2, "de_DE"};
  const RevenueWidgetEntry revenueMonth{clock.now(), trackedDays(utcDay(2026, 11, 2), 29, 24, 85), 2, "en_US"};
  const std::pair<std::string, ChartWidgetView> widgets[] = {
      {"timeWeekly-medium",
       ChartWidgetView::forTimeTracked(timeWeek, Range::weekly, WidgetFamily::systemMedium, testing::utcCalendar())},
      {"timeWeekly-small",
       ChartWidgetView::forTimeTracked(timeWeek, Range::weekly, WidgetFamily::systemSmall, testing::utcCalendar())},
      {"revenueWeekly-medium",
       ChartWidgetView::forRevenue(revenueWeek, Range::weekly, WidgetFamily::systemMedium, testing::utcCalendar())},
      {"revenueMonthly-medium",
       ChartWidgetView::forRevenue(revenueMonth, Range::monthly, WidgetFamily::systemMedium, testing::utcCalendar())},
      {"noBars-medium", ChartWidgetView::forTimeTracked(TimeTrackedWidgetEntry{}, Range::weekly,
                                                        WidgetFamily::systemMedium, testing::utcCalendar())},
  };
  for (const auto& [name, widget] : widgets) {
    testing::expectSnapshot(testing::layOutWidget(widget.body(), widget.family), "Chart/" + name);
  }
}

// Revenue is money in the record's locale; a record that names no locale
// with a currency (the placeholder's empty one, an unknown one) is written
// in the system's currency, and with none there either as a plain number,
// never with the generic currency sign.
TEST(ChartWidgetViewTest, RevenueFallsBackToTheSystemsCurrencyThenToAPlainNumber) {
  const struct {
    const char* record;
    const char* lcAll;
    const char* lcMonetary;
    const char* lang;
    const char* total;  // of 1500
  } cases[] = {
      {"de_DE", "en_US.UTF-8", nullptr, nullptr, "1,5K €"}, {"", nullptr, "en_GB.UTF-8", "de_DE.UTF-8", "£1.5K"},
      {"xx", nullptr, nullptr, "de_DE.UTF-8", "1,5K €"},    {"zz_ZZ", "fr_FR.UTF-8", nullptr, nullptr, "1,5K €"},
      {"", "C.UTF-8", nullptr, "de_DE.UTF-8", "1500"},      {"", nullptr, nullptr, nullptr, "1500"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.record);
    testing::ScopedEnvironment environment;
    environment.set("LC_ALL", c.lcAll ? std::optional<std::string>(c.lcAll) : std::nullopt);
    environment.set("LC_MONETARY", c.lcMonetary ? std::optional<std::string>(c.lcMonetary) : std::nullopt);
    environment.set("LANG", c.lang ? std::optional<std::string>(c.lang) : std::nullopt);
    const RevenueWidgetEntry entry{testing::kNow, days(utcDay(2026, 11, 23), {{1000, 500}}), 2, c.record};
    const ChartWidgetView widget = ChartWidgetView::forRevenue(entry, Range::weekly, WidgetFamily::systemMedium);
    EXPECT_EQ(widget.totalValueFormatter(widget.primaryValue), c.total);
  }
}

}  // namespace
}  // namespace kestrona
