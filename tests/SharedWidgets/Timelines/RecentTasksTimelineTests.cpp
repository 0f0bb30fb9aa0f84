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

TEST_F(RecentTasksTimelineTest, EmptyListIsShownAsItStandsAndNeverReloads) {
  file->setRecord(RecentTasksWidgetDataVO{});
  Timeline<RecentTasksEntry> timeline = timelineOf(provider);
  ASSERT_EQ(timeline.entries.size(), 1u);
  EXPECT_TRUE(timeline.entries[0].tasks.empty()) << "an empty file is not replaced by the sample";
  EXPECT_EQ(timeline.entries[0].date, Date(kNow));
  EXPECT_EQ(timeline.policy, TimelineReloadPolicy::never());
}

TEST_F(RecentTasksTimelineTest, FirstRunningTaskInListOrderSetsTheReloadMoment) {
  std::vector<RecentTaskVO> tasks = {task("Idle", std::nullopt), task("Later", kNow - 100),
                                     task("Earlier", kNow - 5000)};
  file->setRecord(RecentTasksWidgetDataVO{.tasks = tasks});
  Timeline<RecentTasksEntry> timeline = timelineOf(provider);
  EXPECT_EQ(timeline.entries[0].tasks, tasks) << "the file's order is kept";
  EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(Date(kNow - 100 + 360005)));
}

TEST_F(RecentTasksTimelineTest, NoRunningTaskNeverReloads) {
  file->setRecord(RecentTasksWidgetDataVO{.tasks = {task("A", std::nullopt), task("B", std::nullopt)}});
  EXPECT_EQ(timelineOf(provider).policy, TimelineReloadPolicy::never());
}

TEST_F(RecentTasksTimelineTest, UnreadableFileGivesTheSampleWhoseRunningTaskSetsTheReload) {
  file->setContent("{\"tasks\": [{\"taskId\": 1}]}");
  const RecentTasksEntry& sample = RecentTasksTimelineProvider::sampleEntry();
  Timeline<RecentTasksEntry> timeline = timelineOf(provider);
  EXPECT_EQ(timeline.entries[0], sample);
  ASSERT_TRUE(sample.tasks.at(1).runningEntryBegin().has_value());
  EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(sample.tasks[1].runningEntryBegin()->addingTimeInterval(360005)));
  EXPECT_EQ(snapshotOf(provider), sample);
  EXPECT_EQ(provider.placeholder(TimelineProviderContext{}), sample);
}

TEST_F(RecentTasksTimelineTest, SampleIsMadeOncePerProcess) {
  const RecentTasksEntry& first = RecentTasksTimelineProvider::sampleEntry();
  clock.advance(86400);
  RecentTasksTimelineProvider other{std::make_shared<InMemoryWidgetFile>()};
  EXPECT_EQ(&RecentTasksTimelineProvider::sampleEntry(), &first);
  EXPECT_EQ(other.placeholder(TimelineProviderContext{}).date, first.date) << "later providers share the sample";
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
  EXPECT_EQ(sample.tasks[1].runningEntryBegin(), sample.date.addingTimeInterval(-8334));
  EXPECT_EQ(sample.tasks[0].confirmedDuration, 8280);
  EXPECT_EQ(sample.tasks[3].confirmedDuration, 44220);

  // "Concept" is red, whose dark base colour is #FF0048 in Display P3: a
  // red beyond the device range, kept unclamped.
  RGBAComponents expected = convertDisplayP3ToDeviceRGB(RGBAComponents{1, 0, 72.0 / 255, 1});
  const ColorTransferable& conceptColor = sample.tasks[0].taskColor;
  EXPECT_DOUBLE_EQ(conceptColor.redComponent, expected.red);
  EXPECT_DOUBLE_EQ(conceptColor.greenComponent, expected.green);
  EXPECT_DOUBLE_EQ(conceptColor.blueComponent, expected.blue);
  EXPECT_GT(conceptColor.redComponent, 1.0);
  // Violett's dark background (#8E39B9) differs from its light one (#A33BD7).
  RGBAComponents violettDark = convertDisplayP3ToDeviceRGB(RGBAComponents{0x8E / 255.0, 0x39 / 255.0, 0xB9 / 255.0, 1});
  EXPECT_DOUBLE_EQ(sample.tasks[1].taskBackgroundColorOptimizedForLightContent.redComponent, violettDark.red);
  EXPECT_DOUBLE_EQ(sample.tasks[1].taskBackgroundColorOptimizedForLightContent.blueComponent, violettDark.blue);
}

}  // namespace
}  // namespace kestrona
