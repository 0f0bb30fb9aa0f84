#include "SharedWidgets/Views/RecentTasks/RecentTasksWidgetView.h"

#include <gtest/gtest.h>

#include "SharedWidgets/Timelines/RecentTasksTimelineProvider.h"
#include "tests/Platform/View/LayoutSnapshot.h"
#include "tests/SharedWidgets/Views/ViewTestSupport.h"

namespace kestrona {
namespace {

using testing::kNow;
using testing::layOutWidget;

RecentTaskVO idleTask(std::string name) {
  return RecentTaskVO{
      .taskId = "x-kestrona://4F0C7A38-1D52-4B5E-9A0E-6C1F2B3D4E5F/Task/" + name,
      .taskName = name,
      .taskColor = ColorTransferable{0.9, 0.3, 0.2, 1},
      .taskBackgroundColorOptimizedForLightContent = ColorTransferable{0.6, 0.15, 0.1, 1},
      .confirmedDuration = 8280,
      .runningEntryBeginTimestamp = std::nullopt,
  };
}

RecentTaskVO runningTask(std::string name) {
  RecentTaskVO task = idleTask(std::move(name));
  task.runningEntryBeginTimestamp = kNow.timeIntervalSince1970() - 65;
  return task;
}

RecentTasksEntry entryOf(int count) {
  RecentTasksEntry entry{.date = kNow, .tasks = {}};
  for (int index = 1; index <= count; ++index) entry.tasks.push_back(idleTask("Task " + std::to_string(index)));
  return entry;
}

LayoutTree layOutRecentTasks(const RecentTasksEntry& entry, WidgetFamily family) {
  return layOutWidget(makeRecentTasksWidgetView(entry, family).body(), family);
}

// The grid of each family with its plates, names, times, signs and
// presses, as stored: the empty state; the sample (the small family shows
// "Concept" and "Sketching"); three tasks in the medium family (the second
// row has one plate and an empty cell), one of them running (its time
// counts from its begin, not from its confirmed time) and one whose name
// holds a line break and a tab (drawn as spaces, the plate keeps its
// shape); nine tasks in the large family (eight plates).
TEST(RecentTasksWidgetViewTest, EachFamilyMatchesItsSnapshot) {
  for (const WidgetFamily family : allCases<WidgetFamily>) {
    testing::expectSnapshot(layOutRecentTasks(entryOf(0), family),
                            "RecentTasks/empty-" + std::string(rawValue(family)));
  }
  testing::expectSnapshot(layOutRecentTasks(RecentTasksTimelineProvider::sampleEntry(), WidgetFamily::systemSmall),
                          "RecentTasks/sample-systemSmall");
  const RecentTasksEntry three{.date = kNow,
                               .tasks = {runningTask("Sketching"), idleTask("Client\ncalls\tQ3"), idleTask("Concept")}};
  testing::expectSnapshot(layOutRecentTasks(three, WidgetFamily::systemMedium), "RecentTasks/three-systemMedium");
  testing::expectSnapshot(layOutRecentTasks(entryOf(9), WidgetFamily::systemLarge), "RecentTasks/nine-systemLarge");
}

class RecentTasksPressTest : public testing::PressingTest {};

TEST_F(RecentTasksPressTest, PlatesPauseTheRunningTaskAndStartAnyOther) {
  const RecentTasksEntry entry{.date = kNow, .tasks = {runningTask("Sketching"), idleTask("Concept")}};
  const LayoutTree tree = layOutRecentTasks(entry, WidgetFamily::systemMedium);
  const auto targets = tree.nodesOfKind(ViewKind::pressTarget);
  ASSERT_EQ(targets.size(), 2u);
  EXPECT_EQ(pressAt(tree, *targets[0]), "pause");
  EXPECT_EQ(pressAt(tree, *targets[1]), "start " + entry.tasks[1].taskId);
  EXPECT_FALSE(recentTaskAppIntent(entry.tasks[0]).taskId.value().has_value());
  // The empty cells and the margin open the application.
  EXPECT_EQ(press(tree, {100, 120}), "link deeplink-openApp://");
  EXPECT_EQ(press(tree, {5, 5}), "link deeplink-openApp://");
}

TEST_F(RecentTasksPressTest, WithoutPlateActionPlatesOnlyOpenTheApplication) {
  const RecentTasksWidgetView view{
      .entry = entryOf(2), .plateAction = std::nullopt, .family = WidgetFamily::systemSmall};
  const LayoutTree tree = layOutWidget(view.body(), WidgetFamily::systemSmall);
  EXPECT_TRUE(tree.nodesOfKind(ViewKind::pressTarget).empty());
  EXPECT_EQ(pressAt(tree, *tree.findText("Task 1")), "link deeplink-openApp://");
}

}  // namespace
}  // namespace kestrona
