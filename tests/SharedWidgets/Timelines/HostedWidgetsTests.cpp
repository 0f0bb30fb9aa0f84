// The widgets of the bundle under the widget host over a simulated day:
// reloads come at the moments the timelines ask for, and at once when the
// application rewrites a file.
#include <map>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "Platform/WidgetHost/WidgetHost.h"
#include "SharedWidgets/Timelines/TimeTrackedWidgetEntry.h"
#include "SharedWidgets/Timelines/TimerWidgetEntry.h"
#include "SharedWidgets/Widgets/ChartWidgets.h"
#include "SharedWidgets/Widgets/TimerWidget.h"
#include "WidgetData/Records/RecordCoding.h"
#include "WidgetData/Records/TimeTrackedWidgetDataVO.h"
#include "WidgetData/Records/TimerStateVO.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;

// Midnights in Europe/Berlin, March 2026.
constexpr double kMonday9 = 1773010800;
constexpr double kTuesday10 = 1773097200;
constexpr double kWednesday11 = 1773183600;
constexpr double kThursday12 = 1773270000;
constexpr double kHour = 3600;
constexpr char kGroup[] = "group.test";

class ReportedChanges final : public FileChangeMonitor {
 public:
  void watch(const fs::path&) override {}
  std::vector<fs::path> takeChangedFiles() override { return std::exchange(changed, {}); }
  std::vector<fs::path> changed;
};

std::string runningTimer(double begin, std::optional<double> end) {
  TimerStateVO state;
  state.taskId = "x-kestrona://S/Task/p1";
  state.taskName = "Write";
  state.timeEntryBeginTimestamp = begin;
  state.timeEntryEndTimestamp = end;
  return encodeWidgetRecord(state);
}

std::string weekSoFar(double runningBegin) {
  TimeTrackedWidgetDataVO data;
  for (double day : {kMonday9, kTuesday10, kWednesday11}) {
    data.bars.push_back(ChartBarVO{.date = day,
                                   .timeEntryCount = 1,
                                   .segments = {{"x-kestrona://S/Task/p1", ColorTransferable{1, 0, 0, 1}, 1800}},
                                   .totalValue = 1800});
  }
  data.currentTimeEntry = CurrentTimeEntryVO{"x-kestrona://S/Task/p1", runningBegin, ColorTransferable{1, 0, 0, 1}};
  data.firstDayOfWeek = 2;
  return encodeWidgetRecord(data);
}

class HostedWidgetsTest : public ::testing::Test {
 protected:
  HostedWidgetsTest() {
    environment.set("TZ", "Europe/Berlin");
    environment.set("LC_ALL", "en_US.UTF-8");
    environment.set("XDG_DATA_HOME", data.path().string());
  }

  fs::path file(std::string_view kind) const { return data.path() / kGroup / "widgetData" / kind; }

  // Runs the host until end, writing each scripted file at its moment and
  // reporting it, as the application and the monitor would.
  void runUntil(Date end, std::map<double, std::pair<std::string, std::string>> writes) {
    for (;;) {
      std::optional<Date> next = host->nextUpdateDate();
      if (!writes.empty() && (!next || Date(writes.begin()->first) <= *next)) next = Date(writes.begin()->first);
      if (!next || *next > end) break;
      clock.set(*next);
      while (!writes.empty() && Date(writes.begin()->first) <= clock.now()) {
        testing::writeFile(file(writes.begin()->second.first), writes.begin()->second.second);
        monitor->changed.push_back(file(writes.begin()->second.first));
        writes.erase(writes.begin());
      }
      host->update();
    }
    clock.set(end);
  }

  std::vector<double> reloads(std::string_view kind) const {
    std::vector<double> moments;
    for (const WidgetHostEvent& event : events) {
      if (event.kind == WidgetHostEvent::Kind::timelineReloaded && event.widgetKind == kind &&
          event.family == WidgetFamily::systemMedium) {
        moments.push_back(event.date.timeIntervalSince1970());
      }
    }
    return moments;
  }

  testing::TemporaryDirectory data;
  testing::ScopedEnvironment environment;
  ManualClock clock{Date(kWednesday11 + 10 * kHour)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<ReportedChanges> monitor = std::make_shared<ReportedChanges>();
  std::unique_ptr<WidgetHost> host;
  std::vector<WidgetHostEvent> events;

  void startHost() {
    host = std::make_unique<WidgetHost>(
        std::vector{TimerWidget(kGroup).configuration(), TimeTrackedWeeklyChartWidget(kGroup).configuration()}, clock,
        monitor);
    host->setObserver([this](const WidgetHostEvent& event) { events.push_back(event); });
    host->watchDataFile("timer", file("timer"));
    host->watchDataFile("weeklyTimeTrackedChart", file("weeklyTimeTrackedChart"));
    host->start();
  }
};

TEST_F(HostedWidgetsTest, ChartsReloadEveryQuarterHourAndGoEmptyAfterMidnight) {
  testing::writeFile(file("weeklyTimeTrackedChart"), weekSoFar(kWednesday11 + 9 * kHour));
  startHost();
  runUntil(Date(kThursday12 + 12 * kHour), {});
  std::vector<double> moments = reloads("weeklyTimeTrackedChart");
  ASSERT_EQ(moments.size(), 1u + 26 * 4);
  for (std::size_t index = 1; index < moments.size(); ++index) EXPECT_EQ(moments[index] - moments[index - 1], 900);

  // Just before midnight the running entry counts up to the reload moment.
  clock.set(Date(kThursday12 - 60));
  host->reloadTimelines("weeklyTimeTrackedChart");
  const auto* evening = host->currentEntry("weeklyTimeTrackedChart", WidgetFamily::systemMedium)->as<TimeTrackedWidgetEntry>();
  EXPECT_EQ(evening->chartBars.at(2).totalValue, 1800 + 15 * kHour - 60);
  // Midnight itself still shows the last bar's day; a quarter past does not.
  clock.set(Date(kThursday12 + 900));
  host->reloadTimelines("weeklyTimeTrackedChart");
  const AnyTimeline* night = host->timeline("weeklyTimeTrackedChart", WidgetFamily::systemMedium);
  EXPECT_TRUE(night->entries.at(0).as<TimeTrackedWidgetEntry>()->chartBars.empty());
}

TEST_F(HostedWidgetsTest, ChartReloadsExactlyAtTheChangeOfWeek) {
  clock.set(Date(kMonday9 + 7 * 24 * kHour - 10 * 60));  // Sunday 23:50
  testing::writeFile(file("weeklyTimeTrackedChart"), weekSoFar(kWednesday11));
  startHost();
  EXPECT_EQ(host->reloadDate("weeklyTimeTrackedChart", WidgetFamily::systemSmall),
            Date(kMonday9 + 7 * 24 * kHour + 1));
}

TEST_F(HostedWidgetsTest, TimerReloadsAnHourAfterBeginAndAtOnceWhenTheFileIsRewritten) {
  double begin = kWednesday11 + 9.5 * kHour;
  testing::writeFile(file("timer"), runningTimer(begin, std::nullopt));
  startHost();
  EXPECT_TRUE(host->currentEntry("timer", WidgetFamily::systemSmall)->as<TimerWidgetEntry>()->isTimerRunning());

  double stop = kWednesday11 + 10.2 * kHour;
  double restart = kWednesday11 + 15 * kHour;
  runUntil(Date(kWednesday11 + 17 * kHour), {{stop, {"timer", runningTimer(begin, stop)}},
                                            {restart, {"timer", runningTimer(restart, std::nullopt)}}});
  std::vector<double> moments = reloads("timer");
  ASSERT_GE(moments.size(), 4u);
  EXPECT_EQ(moments[0], kWednesday11 + 10 * kHour) << "at start";
  EXPECT_EQ(moments[1], stop) << "the rewritten file, before the hour is up";
  EXPECT_EQ(moments[2], begin + kHour) << "a finished entry still asks for begin + 1 h";
  EXPECT_EQ(moments[3], begin + kHour + 300) << "a moment past is asked again after the minimum interval";
  auto atRestart = std::find(moments.begin(), moments.end(), restart);
  ASSERT_NE(atRestart, moments.end());
  ASSERT_NE(atRestart + 1, moments.end());
  EXPECT_EQ(*(atRestart + 1), restart + kHour);
  for (auto later = atRestart + 2; later != moments.end(); ++later) EXPECT_EQ(*later - *(later - 1), 300);
}

}  // namespace
}  // namespace kestrona
