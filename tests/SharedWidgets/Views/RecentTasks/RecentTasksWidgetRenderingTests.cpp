#include <gtest/gtest.h>

#include "Platform/View/WidgetCanvas.h"
#include "SharedWidgets/Timelines/RecentTasksTimelineProvider.h"
#include "SharedWidgets/Views/RecentTasks/RecentTasksWidgetView.h"
#include "tests/SharedWidgets/Views/Timer/WidgetRenderingSupport.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

TEST(RecentTasksWidgetRenderingTest, DrawsTheSampleAndTheEmptyStateInEveryFamilyToPNGAndSVG) {
  testing::TemporaryDirectory directory;
  const RecentTasksEntry empty{.date = testing::kNow, .tasks = {}};
  const struct {
    WidgetFamily family;
    Size canvas;
  } families[] = {{WidgetFamily::systemSmall, widgetcanvas::kSmall},
                  {WidgetFamily::systemMedium, widgetcanvas::kMedium},
                  {WidgetFamily::systemLarge, widgetcanvas::kLarge}};
  for (const auto& family : families) {
    const std::string name = "recentTasks-" + std::string(rawValue(family.family));
    testing::renderWidgetFiles(
        makeRecentTasksWidgetView(RecentTasksTimelineProvider::sampleEntry(), family.family).body(), family.canvas,
        directory.path(), name + "-sample");
    testing::renderWidgetFiles(makeRecentTasksWidgetView(empty, family.family).body(), family.canvas, directory.path(),
                               name + "-empty");
  }
}

}  // namespace
}  // namespace kestrona
