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

class TimerTimelineTest : public ::testing::Test {
 protected:
  ManualClock clock{Date(kCreated)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<InMemoryWidgetFile> file = std::make_shared<InMemoryWidgetFile>();
  TimerWidgetTimelineProvider provider{file};
};

// A formatter without a format reads no date: the wished-for times of the
// placeholder stay absent, and it keeps its date of creation.
TEST_F(TimerTimelineTest, UnreadableOrDamagedFileFallsBackOnThePlaceholderAndNeverReloads) {
  clock.advance(600);
  const TimerWidgetEntry placeholder{.date = Date(kCreated),
                                     .taskId = "123",
                                     .taskName = "Task",
                                     .taskColor = Color::white(),
                                     .startButtonBackgroundOpacity = 0.5f,
                                     .taskBackgroundColorOptimizedForLightContent = Color::white(),
                                     .folderName = std::nullopt,
                                     .timeEntryBegin = std::nullopt,
                                     .timeEntryEnd = std::nullopt};
  EXPECT_EQ(provider.placeholder(TimelineProviderContext{}), placeholder);
  for (std::optional<std::string> content : {std::optional<std::string>(), std::optional<std::string>("{\"taskId\":"),
                                             std::optional<std::string>("[]")}) {
    file->setContent(content);
    Timeline<TimerWidgetEntry> timeline = timelineOf(provider);
    EXPECT_EQ(timeline.entries, std::vector{placeholder});
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::never());
    EXPECT_EQ(snapshotOf(provider), placeholder);
  }
}

TEST_F(TimerTimelineTest, EntryTakesTheRecordAtThePresentMomentWithWhiteForAbsentColours) {
  clock.advance(7200);
  file->setRecord(TimerStateVO{.taskId = "x-kestrona://S/Task/p1",
                               .taskName = "Write",
                               .taskColor = ColorTransferable{0.5, 0.25, 0.125, 1},
                               .taskBackgroundColorOptimizedForLightContent = std::nullopt,
                               .startButtonBackgroundOpacity = 0.25f,
                               .folderName = "Clients",
                               .timeEntryBeginTimestamp = kCreated - 100,
                               .timeEntryEndTimestamp = std::nullopt});
  EXPECT_EQ(snapshotOf(provider), (TimerWidgetEntry{.date = clock.now(),
                                                    .taskId = "x-kestrona://S/Task/p1",
                                                    .taskName = "Write",
                                                    .taskColor = Color::rgb(0.5, 0.25, 0.125, 1),
                                                    .startButtonBackgroundOpacity = 0.25f,
                                                    .taskBackgroundColorOptimizedForLightContent = Color::white(),
                                                    .folderName = "Clients",
                                                    .timeEntryBegin = Date(kCreated - 100),
                                                    .timeEntryEnd = std::nullopt}));
  clock.advance(30);
  file->setRecord(timerState(std::nullopt, std::nullopt));
  EXPECT_EQ(snapshotOf(provider).date, clock.now()) << "each snapshot reads the file anew";
  EXPECT_EQ(file->readCount(), 2);
}

// The reload moment is begin + 1 h whenever there is a begin, running or
// not, even when it has passed; without a begin there is none.
TEST_F(TimerTimelineTest, ReloadsAnHourAfterAnyBeginAndNeverWithoutOne) {
  const struct {
    std::optional<double> begin, end;
    bool running;
    TimelineReloadPolicy policy;
  } cases[] = {
      {kCreated - 7200, std::nullopt, true, TimelineReloadPolicy::after(Date(kCreated - 3600))},
      {kCreated - 50, kCreated - 10, false, TimelineReloadPolicy::after(Date(kCreated - 50 + 3600))},
      {std::nullopt, kCreated, false, TimelineReloadPolicy::never()},
      {std::nullopt, std::nullopt, false, TimelineReloadPolicy::never()},
  };
  for (const auto& each : cases) {
    file->setRecord(timerState(each.begin, each.end));
    Timeline<TimerWidgetEntry> timeline = timelineOf(provider);
    ASSERT_EQ(timeline.entries.size(), 1u);
    EXPECT_EQ(timeline.entries[0].isTimerRunning(), each.running);
    EXPECT_EQ(timeline.policy, each.policy);
    EXPECT_NE(timeline.entries[0].taskId, "123") << "a record without task is not the placeholder";
  }
}

}  // namespace
}  // namespace kestrona
