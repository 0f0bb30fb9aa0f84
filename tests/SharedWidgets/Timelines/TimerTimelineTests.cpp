#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "SharedWidgets/Timelines/TimerWidgetTimelineProvider.h"
#include "tests/SharedWidgets/Timelines/TimelineTestSupport.h"

namespace kestrona {
namespace {

using testing::InMemoryWidgetFile;
using testing::snapshotOf;
using testing::timelineOf;

constexpr double kCreated = 1773219600;  // 2026-03-11 10:00 in Berlin

TimerStateVO timerState(std::optional<double> begin, std::optional<double> end) {
  TimerStateVO state;
  state.timeEntryBeginTimestamp = begin;
  state.timeEntryEndTimestamp = end;
  return state;
}

TimerStateVO named(std::string name) {
  TimerStateVO state;
  state.taskName = std::move(name);
  return state;
}

class TimerTimelineTest : public ::testing::Test {
 protected:
  ManualClock clock{Date(kCreated)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<InMemoryWidgetFile> file = std::make_shared<InMemoryWidgetFile>();
  TimerWidgetTimelineProvider provider{file};
};

TEST_F(TimerTimelineTest, PlaceholderIsTheDefaultTaskWithoutTimesDatedAtCreation) {
  clock.advance(120);
  TimerWidgetEntry placeholder = provider.placeholder(TimelineProviderContext{});
  EXPECT_EQ(placeholder.date, Date(kCreated));
  EXPECT_EQ(placeholder.taskId, "123");
  EXPECT_EQ(placeholder.taskName, "Task");
  EXPECT_EQ(placeholder.taskColor, Color::white());
  EXPECT_EQ(placeholder.taskBackgroundColorOptimizedForLightContent, Color::white());
  EXPECT_EQ(placeholder.startButtonBackgroundOpacity, 0.5f);
  EXPECT_FALSE(placeholder.folderName.has_value());
  // A formatter without a format reads no date: the wished-for times stay absent.
  EXPECT_FALSE(placeholder.timeEntryBegin.has_value());
  EXPECT_FALSE(placeholder.timeEntryEnd.has_value());
  EXPECT_FALSE(placeholder.isTimerRunning());
}

TEST_F(TimerTimelineTest, UnreadableOrDamagedFileFallsBackOnThePlaceholderAndNeverReloads) {
  clock.advance(600);
  for (std::optional<std::string> content : {std::optional<std::string>(), std::optional<std::string>("{\"taskId\":"),
                                             std::optional<std::string>("[]")}) {
    file->setContent(content);
    Timeline<TimerWidgetEntry> timeline = timelineOf(provider);
    ASSERT_EQ(timeline.entries.size(), 1u);
    EXPECT_EQ(timeline.entries[0], provider.placeholderEntry()) << "the placeholder keeps its date of creation";
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::never());
    EXPECT_EQ(snapshotOf(provider), provider.placeholderEntry());
  }
}

TEST_F(TimerTimelineTest, RunningEntryReloadsAnHourAfterItsBeginEvenWhenThatHasPassed) {
  clock.advance(7200);
  file->setRecord(TimerStateVO{.taskId = "x-kestrona://S/Task/p1",
                               .taskName = "Write",
                               .taskColor = ColorTransferable{0.5, 0.25, 0.125, 1},
                               .taskBackgroundColorOptimizedForLightContent = std::nullopt,
                               .startButtonBackgroundOpacity = 0.25f,
                               .folderName = "Clients",
                               .timeEntryBeginTimestamp = kCreated - 100,
                               .timeEntryEndTimestamp = std::nullopt});
  Timeline<TimerWidgetEntry> timeline = timelineOf(provider);
  ASSERT_EQ(timeline.entries.size(), 1u);
  const TimerWidgetEntry& entry = timeline.entries[0];
  EXPECT_EQ(entry.date, clock.now());
  EXPECT_TRUE(entry.isTimerRunning());
  EXPECT_EQ(entry.taskId, "x-kestrona://S/Task/p1");
  EXPECT_EQ(entry.folderName, "Clients");
  EXPECT_EQ(entry.startButtonBackgroundOpacity, 0.25f);
  EXPECT_EQ(entry.taskColor, Color::rgb(0.5, 0.25, 0.125, 1));
  EXPECT_EQ(entry.taskBackgroundColorOptimizedForLightContent, Color::white()) << "an absent colour is white";
  EXPECT_EQ(entry.timeEntryBegin, Date(kCreated - 100));
  EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(Date(kCreated - 100 + 3600)));
  EXPECT_LT(*timeline.policy.date(), clock.now()) << "the reload moment is kept though it has passed";
}

TEST_F(TimerTimelineTest, FinishedEntryStillReloadsAnHourAfterItsBegin) {
  file->setRecord(timerState(kCreated - 50, kCreated - 10));
  Timeline<TimerWidgetEntry> timeline = timelineOf(provider);
  EXPECT_FALSE(timeline.entries[0].isTimerRunning());
  EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(Date(kCreated - 50 + 3600)));
}

TEST_F(TimerTimelineTest, WithoutBeginTheTimelineNeverReloads) {
  file->setRecord(TimerStateVO{});
  Timeline<TimerWidgetEntry> neither = timelineOf(provider);
  EXPECT_FALSE(neither.entries[0].isTimerRunning());
  EXPECT_FALSE(neither.entries[0].taskId.has_value()) << "a record without task is not the placeholder";
  EXPECT_EQ(neither.policy, TimelineReloadPolicy::never());

  file->setRecord(timerState(std::nullopt, kCreated));
  Timeline<TimerWidgetEntry> endOnly = timelineOf(provider);
  EXPECT_FALSE(endOnly.entries[0].isTimerRunning());
  EXPECT_EQ(endOnly.entries[0].timeEntryEnd, Date(kCreated));
  EXPECT_EQ(endOnly.policy, TimelineReloadPolicy::never());
}

TEST_F(TimerTimelineTest, SnapshotReadsTheFileAnewAndIsDatedNow) {
  file->setRecord(named("First"));
  EXPECT_EQ(snapshotOf(provider).taskName, "First");
  clock.advance(30);
  file->setRecord(named("Second"));
  TimerWidgetEntry snapshot = snapshotOf(provider);
  EXPECT_EQ(snapshot.taskName, "Second");
  EXPECT_EQ(snapshot.date, Date(kCreated + 30));
  EXPECT_EQ(file->readCount(), 2);
}

}  // namespace
}  // namespace kestrona
