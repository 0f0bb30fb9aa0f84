#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "SharedWidgets/Timelines/ChartWidgetProvider.h"
#include "tests/SharedWidgets/Timelines/TimelineTestSupport.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::InMemoryWidgetFile;
using testing::snapshotOf;
using testing::timelineOf;

// Midnights in Europe/Berlin, March 2026 (CET, UTC+1).
constexpr double kMonday9 = 1773010800;
constexpr double kTuesday10 = 1773097200;
constexpr double kWednesday11 = 1773183600;
constexpr double kMonday16 = 1773615600;
constexpr double kApril1 = 1774994400;
constexpr double kHour = 3600;

const ColorTransferable kTaskColor{0.5, 0.25, 0.75, 1};
const ColorTransferable kOtherColor{0.1, 0.9, 0.1, 1};
const std::string kTask = "x-kestrona://S/Task/p1";
const std::string kOther = "x-kestrona://S/Task/p2";

ChartBarVO bar(double date, std::vector<ChartBarSegmentVO> segments) {
  double total = 0;
  for (const ChartBarSegmentVO& segment : segments) total += segment.value;
  return ChartBarVO{.date = date, .timeEntryCount = 1, .segments = std::move(segments), .totalValue = total};
}

class ChartTimelineTest : public ::testing::Test {
 protected:
  ChartTimelineTest() {
    environment.set("TZ", "Europe/Berlin");
    environment.set("LC_ALL", "en_US.UTF-8");
    environment.set("LANG", "en_US.UTF-8");
  }

  // A file whose bars are Monday 9 and Tuesday 10, with kOther on both days
  // and kTask on Tuesday, and a running entry of kTask.
  TimeTrackedWidgetDataVO twoDays(std::optional<double> runningBegin, std::string runningTask = kTask) {
    return TimeTrackedWidgetDataVO{
        .bars = {bar(kMonday9, {{kOther, kOtherColor, 600}}),
                 bar(kTuesday10, {{kOther, kOtherColor, 1200}, {kTask, kTaskColor, 300}})},
        .currentTimeEntry = CurrentTimeEntryVO{.taskId = std::move(runningTask), .begin = runningBegin, .taskColor = kTaskColor},
        .firstDayOfWeek = 2};
  }

  testing::ScopedEnvironment environment;
  ManualClock clock{Date(kTuesday10 + 10 * kHour)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<InMemoryWidgetFile> file = std::make_shared<InMemoryWidgetFile>();
  TimeTrackedWidgetProvider weekly{WidgetDateRangeType::weekly, file};
  RevenueWidgetProvider weeklyRevenue{WidgetDateRangeType::weekly, file};
};

TEST_F(ChartTimelineTest, UnreadableFileGivesAnEmptyChart) {
  file->setContent("not json");
  TimeTrackedWidgetEntry entry = snapshotOf(weekly);
  EXPECT_EQ(entry, (TimeTrackedWidgetEntry{.date = clock.now(), .chartBars = {}, .firstDayOfWeek = 0}));
  RevenueWidgetEntry revenue = weeklyRevenue.placeholder(TimelineProviderContext{});
  EXPECT_TRUE(revenue.chartBars.empty());
  EXPECT_EQ(revenue.currencyLocalIdentifier, "");
  EXPECT_EQ(revenue.firstDayOfWeek, 0);
}

TEST_F(ChartTimelineTest, BarsAreKeptUpToTheEndOfTheLastBarsDayAndDroppedAfter) {
  file->setRecord(twoDays(std::nullopt));
  EXPECT_EQ(snapshotOf(weekly).chartBars, chartBarsFromRecords(twoDays(std::nullopt).bars))
      << "a running entry without begin changes nothing";
  // The range ends one day after the last bar's date, and its end is inside.
  EXPECT_EQ(weekly.entryFor(Date(kWednesday11)).chartBars.size(), 2u);
  EXPECT_EQ(weekly.entryFor(Date(kMonday9)).chartBars.size(), 2u);
  EXPECT_TRUE(weekly.entryFor(Date(kWednesday11 + 1)).chartBars.empty());
  EXPECT_TRUE(weekly.entryFor(Date(kMonday9 - 1)).chartBars.empty());
  EXPECT_EQ(weekly.entryFor(Date(kWednesday11 + 1)).firstDayOfWeek, 2) << "only the bars are dropped";
}

TEST_F(ChartTimelineTest, RunningEntryThatBeganBeforeTheFirstBarCountsOnlyWithinEachBarsDay) {
  clock.set(Date(kTuesday10 + 10 * kHour));
  file->setRecord(TimeTrackedWidgetDataVO{
      .bars = {bar(kTuesday10, {{kTask, kTaskColor, 300}}), bar(kWednesday11, {})},
      .currentTimeEntry = CurrentTimeEntryVO{.taskId = kTask, .begin = kMonday9 + 22 * kHour, .taskColor = kTaskColor},
      .firstDayOfWeek = 2});
  TimeTrackedWidgetEntry entry = snapshotOf(weekly);
  ASSERT_EQ(entry.chartBars.size(), 2u);
  ASSERT_EQ(entry.chartBars[0].segments.size(), 1u);
  EXPECT_EQ(entry.chartBars[0].segments[0].value, 300 + 10 * kHour) << "Monday's two hours are not in Tuesday's bar";
  EXPECT_EQ(entry.chartBars[0].totalValue, 300 + 10 * kHour);
  EXPECT_TRUE(entry.chartBars[1].segments.empty()) << "Wednesday lies after the present moment";
  EXPECT_EQ(entry.chartBars[1].totalValue, 0);
}

TEST_F(ChartTimelineTest, RunningEntryOfATaskWithoutSegmentGetsItsOwnSegmentAtTheEnd) {
  clock.set(Date(kTuesday10 + 2 * kHour));
  file->setRecord(twoDays(kTuesday10 + kHour, "x-kestrona://S/Task/p9"));
  TimeTrackedWidgetEntry entry = snapshotOf(weekly);
  const ChartBar& tuesday = entry.chartBars.at(1);
  ASSERT_EQ(tuesday.segments.size(), 3u);
  EXPECT_EQ(tuesday.segments[2],
            (ChartBarSegment{.taskId = "x-kestrona://S/Task/p9", .color = kTaskColor.color(), .value = kHour}));
  EXPECT_EQ(tuesday.totalValue, 1500 + kHour);
  EXPECT_EQ(entry.chartBars[0].segments.size(), 1u) << "Monday is untouched";
}

TEST_F(ChartTimelineTest, RevenueAppliesTheHourlyRateAndWithoutOneAddsAZeroSegment) {
  clock.set(Date(kTuesday10 + 3 * kHour));
  RevenueWidgetDataVO record{.bars = {bar(kTuesday10, {{kOther, kOtherColor, 40}})},
                             .currentTimeEntry = CurrentTimeEntryVO{.taskId = kTask, .begin = kTuesday10 + 1.5 * kHour,
                                                                    .taskColor = kTaskColor},
                             .currentTimeEntryHourRate = std::nullopt,
                             .currencyLocalIdentifier = "de_DE",
                             .firstDayOfWeek = 2};
  file->setRecord(record);
  RevenueWidgetEntry unpriced = snapshotOf(weeklyRevenue);
  ASSERT_EQ(unpriced.chartBars[0].segments.size(), 2u);
  EXPECT_EQ(unpriced.chartBars[0].segments[1].value, 0);
  EXPECT_EQ(unpriced.chartBars[0].totalValue, 40);
  EXPECT_EQ(unpriced.currencyLocalIdentifier, "de_DE");

  record.currentTimeEntryHourRate = 80;
  file->setRecord(record);
  RevenueWidgetEntry priced = snapshotOf(weeklyRevenue);
  EXPECT_DOUBLE_EQ(priced.chartBars[0].segments[1].value, 120) << "1.5 hours at 80 an hour";
  EXPECT_DOUBLE_EQ(priced.chartBars[0].totalValue, 160);
}

TEST_F(ChartTimelineTest, TimelineHasTwoEntriesFifteenMinutesApartAndReloadsAtItsEnd) {
  clock.set(Date(kTuesday10 + 10 * kHour));
  file->setRecord(twoDays(kTuesday10 + 9 * kHour));
  Timeline<TimeTrackedWidgetEntry> timeline = timelineOf(weekly);
  ASSERT_EQ(timeline.entries.size(), 2u);
  EXPECT_EQ(timeline.entries[0].date, clock.now());
  EXPECT_EQ(timeline.entries[1].date, clock.now().addingTimeInterval(900));
  EXPECT_EQ(timeline.policy, TimelineReloadPolicy::atEnd());
  EXPECT_EQ(file->readCount(), 2) << "the second entry reads the file again";
  // Both entries count the running entry up to the moment they are made,
  // not up to their own date.
  EXPECT_EQ(timeline.entries[0].chartBars, timeline.entries[1].chartBars);
  EXPECT_EQ(timeline.entries[0].chartBars[1].segments[1].value, 300 + kHour);
}

TEST_F(ChartTimelineTest, OnTheLastSecondOfAPeriodTheSecondEntryIsAtItsChange) {
  TimeTrackedWidgetDataVO record{.bars = {}, .currentTimeEntry = std::nullopt, .firstDayOfWeek = 2};
  file->setRecord(record);
  clock.set(Date(kMonday16 - 1));  // Sunday 23:59:59; weeks start on Monday
  EXPECT_EQ(timelineOf(weekly).entries[1].date, Date(kMonday16 + 1));

  record.firstDayOfWeek = 1;  // weeks start on Sunday: Sunday night is mid-week
  file->setRecord(record);
  EXPECT_EQ(timelineOf(weekly).entries[1].date, Date(kMonday16 - 1 + 900));

  TimeTrackedWidgetProvider monthly{WidgetDateRangeType::monthly, file};
  clock.set(Date(kApril1 - 1));
  EXPECT_EQ(timelineOf(monthly).entries[1].date, Date(kApril1 + 1));
  clock.set(Date(kApril1 - 901));
  EXPECT_EQ(timelineOf(monthly).entries[1].date, Date(kApril1 - 1)) << "fifteen minutes come first";
}

}  // namespace
}  // namespace kestrona
