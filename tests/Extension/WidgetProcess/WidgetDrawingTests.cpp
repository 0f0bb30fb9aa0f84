// What the widget process draws for a widget is the host's current entry.
#include <gtest/gtest.h>

#include <string>

#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/WidgetHost/WidgetHost.h"
#include "SharedWidgets/Timelines/TimerWidgetEntry.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

TEST(WidgetDrawing, TheTimerShowsTheHostsEntry) {
  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
  environment.set("XDG_DATA_HOME", directory.path().string());
  environment.set("TZ", "UTC");
  ManualClock clock{Date(1796119200)};
  ScopedClock scopedClock{clock};
  testing::writeFile(directory.path() / KestronaWidgets::kAppGroupName / "widgetData" / "timer",
                     R"({"taskId":"t","taskName":"Sketching","timeEntryBeginTimestamp":1796110920})");
  WidgetHost host(KestronaWidgets().body(), clock, nullptr);
  host.start();
  const LayoutTree tree =
      layOutWidget("timer", *host.currentEntry("timer", WidgetFamily::systemSmall), WidgetFamily::systemSmall);
  EXPECT_EQ(tree.canvasSize(), widgetCanvasSize(WidgetFamily::systemSmall));
  EXPECT_NE(tree.findText("Sketching"), nullptr);
  EXPECT_NE(tree.findText("2:18:00"), nullptr) << "8280 seconds of a running entry at the host's moment";
  EXPECT_EQ(tree.nodesOfKind(ViewKind::pressTarget).size(), 1u) << "the start and pause button";
}

TEST(WidgetViewsDeathTest, AnEntryOfAnotherWidgetIsAProgrammingError) {
  const AnyTimelineEntry timerEntry{TimerWidgetEntry{}};
  EXPECT_DEATH(widgetView("recentTasks", timerEntry, WidgetFamily::systemSmall),
               "The widget 'recentTasks' was given an entry of another widget");
  EXPECT_DEATH(widgetView("stopwatch", timerEntry, WidgetFamily::systemSmall),
               "No view for the widget kind 'stopwatch'");
}

}  // namespace
}  // namespace kestrona
