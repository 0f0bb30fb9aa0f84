// Every widget of the bundle, in every family it offers, drawn from the
// entries the widget host gives it, to PNG and to SVG: with no application
// data (placeholders and samples) and with a running timer.
#include <gtest/gtest.h>

#include <string>

#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/View/Renderer.h"
#include "Platform/WidgetHost/WidgetHost.h"
#include "SharedWidgets/Timelines/TimerWidgetEntry.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;

// 1 December 2026, 10:00 UTC.
const Date kNow(1796119200);

class WidgetDrawingTest : public ::testing::Test {
 protected:
  WidgetDrawingTest() {
    environment.set("XDG_DATA_HOME", (directory.path() / "data").string());
    environment.set("TZ", "UTC");
    environment.set("LC_ALL", "en_US.UTF-8");
  }

  // Draws every instance the host has to both formats and checks what came out.
  void drawEveryWidget(const std::string& round) {
    WidgetHost host(bundle.body(), clock, nullptr);
    host.start();
    std::size_t drawn = 0;
    for (const WidgetConfiguration& widget : host.widgets()) {
      for (WidgetFamily family : widget.supportedFamilies()) {
        const std::string name = round + "-" + widget.kind() + "-" + std::string(rawValue(family));
        SCOPED_TRACE(name);
        const AnyTimelineEntry* entry = host.currentEntry(widget.kind(), family);
        ASSERT_NE(entry, nullptr);
        const LayoutTree tree = layOutWidget(widget.kind(), *entry, family);
        const Size canvas = widgetCanvasSize(family);
        EXPECT_EQ(tree.canvasSize(), canvas);
        EXPECT_FALSE(tree.nodesOfKind(ViewKind::text).empty()) << "every widget shows some text";

        std::vector<unsigned char> png;
        ASSERT_NO_THROW(png = renderPNGData(tree));
        ASSERT_GT(png.size(), 24u);
        const auto readNumber = [&png](std::size_t at) {
          return (png[at] << 24) | (png[at + 1] << 16) | (png[at + 2] << 8) | png[at + 3];
        };
        EXPECT_EQ(readNumber(16), static_cast<int>(canvas.width * 2));
        EXPECT_EQ(readNumber(20), static_cast<int>(canvas.height * 2));

        const fs::path svg = directory.path() / (name + ".svg");
        ASSERT_NO_THROW(renderSVG(tree, svg));
        const std::string document = testing::readFile(svg);
        EXPECT_NE(document.find("<svg"), std::string::npos);
        EXPECT_NE(document.find("<path"), std::string::npos) << "the widget drew shapes or glyphs";
        ++drawn;
      }
    }
    EXPECT_EQ(drawn, 13u) << "six widgets: 2 + 3 + 4 x 2 instances";
  }

  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
  ManualClock clock{kNow};
  ScopedClock scopedClock{clock};
  KestronaWidgets bundle;
};

TEST_F(WidgetDrawingTest, DrawsEveryWidgetInEveryFamilyToPNGAndSVG) {
  drawEveryWidget("empty");
  testing::writeFile(directory.path() / "data" / KestronaWidgets::kAppGroupName / "widgetData" / "timer",
                     R"({"taskId":"t","taskName":"Sketching","startButtonBackgroundOpacity":0.2,)"
                     R"("timeEntryBeginTimestamp":1796110920})");
  drawEveryWidget("running");
}

TEST_F(WidgetDrawingTest, TheTimerShowsTheHostsEntry) {
  testing::writeFile(directory.path() / "data" / KestronaWidgets::kAppGroupName / "widgetData" / "timer",
                     R"({"taskId":"t","taskName":"Sketching","timeEntryBeginTimestamp":1796110920})");
  WidgetHost host(bundle.body(), clock, nullptr);
  host.start();
  const LayoutTree tree =
      layOutWidget("timer", *host.currentEntry("timer", WidgetFamily::systemSmall), WidgetFamily::systemSmall);
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
