// A chart widget of the bundle under the widget host over a simulated day:
// the host reloads at the moments the timelines ask for, and the bars go
// when the file's last day has passed.
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "Platform/WidgetHost/WidgetHost.h"
#include "SharedWidgets/Timelines/TimeTrackedWidgetEntry.h"
#include "SharedWidgets/Widgets/ChartWidgets.h"
#include "WidgetData/Records/RecordCoding.h"
#include "WidgetData/Records/TimeTrackedWidgetDataVO.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

// Midnights in Europe/Berlin, March 2026.
constexpr double kMonday9 = 1773010800;
constexpr double kWednesday11 = 1773183600;
constexpr double kThursday12 = 1773270000;
constexpr double kHour = 3600;

TEST(HostedWidgets, ChartsReloadEveryQuarterHourAndGoEmptyAfterTheLastBarsDay) {
  testing::TemporaryDirectory data;
  testing::ScopedEnvironment environment;
  environment.set("TZ", "Europe/Berlin");
  environment.set("LC_ALL", "en_US.UTF-8");
  environment.set("XDG_DATA_HOME", data.path().string());
  ManualClock clock{Date(kWednesday11 + 10 * kHour)};
  ScopedClock scopedClock{clock};

  TimeTrackedWidgetDataVO week;
  for (double day = kMonday9; day <= kWednesday11; day += 24 * kHour) {
    week.bars.push_back(ChartBarVO{.date = day,
                                   .timeEntryCount = 1,
                                   .segments = {{"x-kestrona://S/Task/p1", ColorTransferable{1, 0, 0, 1}, 1800}},
                                   .totalValue = 1800});
  }
  week.currentTimeEntry = CurrentTimeEntryVO{"x-kestrona://S/Task/p1", kWednesday11 + 9 * kHour, {1, 0, 0, 1}};
  week.firstDayOfWeek = 2;
  testing::writeFile(data.path() / "group.test" / "widgetData" / "weeklyTimeTrackedChart", encodeWidgetRecord(week));

  WidgetHost host({TimeTrackedWeeklyChartWidget("group.test").configuration()}, clock, nullptr);
  std::vector<double> reloads;
  host.setObserver([&reloads](const WidgetHostEvent& event) {
    if (event.kind == WidgetHostEvent::Kind::timelineReloaded && event.family == WidgetFamily::systemMedium) {
      reloads.push_back(event.date.timeIntervalSince1970());
    }
  });
  host.start();
  const auto shown = [&host] {
    return *host.currentEntry("weeklyTimeTrackedChart", WidgetFamily::systemMedium)->as<TimeTrackedWidgetEntry>();
  };
  EXPECT_EQ(shown().chartBars.at(2).totalValue, 1800 + kHour) << "the running entry counts up to the reload";
  while (host.nextUpdateDate() && *host.nextUpdateDate() <= Date(kThursday12 + 12 * kHour)) {
    clock.set(*host.nextUpdateDate());
    host.update();
  }
  ASSERT_EQ(reloads.size(), 1u + 26 * 4);
  for (std::size_t index = 1; index < reloads.size(); ++index) EXPECT_EQ(reloads[index] - reloads[index - 1], 900);
  EXPECT_TRUE(shown().chartBars.empty()) << "Thursday noon: Wednesday's file is stale";
}

}  // namespace
}  // namespace kestrona
