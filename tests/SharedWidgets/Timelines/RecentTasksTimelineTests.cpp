#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "SharedWidgets/Timelines/RecentTasksTimelineProvider.h"
#include "tests/SharedWidgets/Timelines/TimelineTestSupport.h"

namespace kestrona {
namespace {

using testing::InMemoryWidgetFile;
using testing::snapshotOf;
using testing::timelineOf;

constexpr double kNow = 1773219600;

RecentTaskVO task(std::string name, std::optional<double> runningBegin) {
  return RecentTaskVO{.taskId = "x-kestrona://S/Task/" + name,
                      .taskName = name,
                      .taskColor = ColorTransferable{0.1, 0.2, 0.3, 1},
                      .taskBackgroundColorOptimizedForLightContent = ColorTransferable{0.3, 0.2, 0.1, 1},
                      .confirmedDuration = 60,
                      .runningEntryBeginTimestamp = runningBegin};
}

class RecentTasksTimelineTest : public ::testing::Test {
 protected:
  ManualClock clock{Date(kNow)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<InMemoryWidgetFile> file = std::make_shared<InMemoryWidgetFile>();
  RecentTasksTimelineProvider provider{file};
};

// The file's tasks in its order, an empty list included; the first running
// task in list order reloads 100 h 5 s after its begin.
TEST_F(RecentTasksTimelineTest, TheFilesTasksAndTheFirstRunningTaskSetTheReload) {
  const std::pair<std::vector<RecentTaskVO>, TimelineReloadPolicy> cases[] = {
      {{}, TimelineReloadPolicy::never()},
      {{task("A", std::nullopt), task("B", std::nullopt)}, TimelineReloadPolicy::never()},
      {{task("Idle", std::nullopt), task("Later", kNow - 100), task("Earlier", kNow - 5000)},
       TimelineReloadPolicy::after(Date(kNow - 100 + 360005))},
  };
  for (const auto& [tasks, policy] : cases) {
    file->setRecord(RecentTasksWidgetDataVO{.tasks = tasks});
    Timeline<RecentTasksEntry> timeline = timelineOf(provider);
    EXPECT_EQ(timeline.entries, std::vector{(RecentTasksEntry{.date = Date(kNow), .tasks = tasks})});
    EXPECT_EQ(timeline.policy, policy);
  }
}

TEST_F(RecentTasksTimelineTest, UnreadableFileGivesTheSampleMadeOncePerProcess) {
  file->setContent("{\"tasks\": [{\"taskId\": 1}]}");
  const RecentTasksEntry& sample = RecentTasksTimelineProvider::sampleEntry();
  Timeline<RecentTasksEntry> timeline = timelineOf(provider);
  EXPECT_EQ(timeline.entries, std::vector{sample});
  EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(sample.date.addingTimeInterval(-8334 + 360005)))
      << "the sample's running task sets the reload";
  EXPECT_EQ(snapshotOf(provider), sample);

  clock.advance(86400);
  RecentTasksTimelineProvider other{std::make_shared<InMemoryWidgetFile>()};
  EXPECT_EQ(&RecentTasksTimelineProvider::sampleEntry(), &sample);
  EXPECT_EQ(other.placeholder(TimelineProviderContext{}), sample) << "later providers share the sample";
}

TEST_F(RecentTasksTimelineTest, SampleHoldsTheEightTasksWithDarkDisplayP3Colours) {
  const RecentTasksEntry& sample = RecentTasksTimelineProvider::sampleEntry();
  std::vector<std::string> names;
  for (const RecentTaskVO& sampleTask : sample.tasks) {
    names.push_back(sampleTask.taskName);
    EXPECT_EQ(sampleTask.taskId, sampleTask.taskName);
    EXPECT_EQ(sampleTask.isRunning(), sampleTask.taskName == "Sketching");
  }
  EXPECT_EQ(names, (std::vector<std::string>{"Concept", "Sketching", "Development", "Design", "Video Blog", "Fitness",
                                             "Remodeling", "My Website"}));
  EXPECT_EQ(sample.tasks[3].confirmedDuration, 44220);
  // "Concept" is red, whose dark base colour is #FF0048 in Display P3: a
  // red beyond the device range, kept unclamped.
  RGBAComponents expected = convertDisplayP3ToDeviceRGB(RGBAComponents{1, 0, 72.0 / 255, 1});
  EXPECT_DOUBLE_EQ(sample.tasks[0].taskColor.redComponent, expected.red);
  EXPECT_DOUBLE_EQ(sample.tasks[0].taskColor.blueComponent, expected.blue);
  EXPECT_GT(sample.tasks[0].taskColor.redComponent, 1.0);
}

}  // namespace
}  // namespace kestrona
