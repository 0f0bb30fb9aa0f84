#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "Platform/View/WidgetCanvas.h"
#include "SharedWidgets/Views/Timer/TimerWidgetView.h"
#include "tests/SharedWidgets/Views/Timer/WidgetRenderingSupport.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

TEST(TimerWidgetRenderingTest, DrawsEveryStateInEveryFamilyToPNGAndSVG) {
  ManualClock clock{testing::kNow};
  ScopedClock scopedClock{clock};
  testing::TemporaryDirectory directory;

  TimerWidgetEntry placeholder;
  placeholder.taskId = "123";
  placeholder.taskName = "Task";
  placeholder.startButtonBackgroundOpacity = 0.5F;
  TimerWidgetEntry finished{
      .date = testing::kNow,
      .taskId = "x-kestrona://4F0C7A38-1D52-4B5E-9A0E-6C1F2B3D4E5F/Task/p7",
      .taskName = "Concept sketches for the spring campaign",
      .taskColor = Color::displayP3(0.37, 0.36, 0.9, 1),
      .startButtonBackgroundOpacity = 0.2F,
      .taskBackgroundColorOptimizedForLightContent = Color::displayP3(0.3, 0.28, 0.78, 1),
      .folderName = "Client Work",
      .timeEntryBegin = testing::kNow.addingTimeInterval(-9000),
      .timeEntryEnd = testing::kNow.addingTimeInterval(-9000 + 8334),
  };
  TimerWidgetEntry running = finished;
  running.taskName = "Sketching";
  running.timeEntryBegin = testing::kNow.addingTimeInterval(-8334);
  running.timeEntryEnd = std::nullopt;

  const struct {
    const char* name;
    const TimerWidgetEntry* entry;
  } states[] = {{"placeholder", &placeholder}, {"finished", &finished}, {"running", &running}};
  for (const auto& state : states) {
    testing::renderWidgetFiles(makeTimerWidgetView(*state.entry, WidgetFamily::systemSmall).body(),
                               widgetcanvas::kSmall, directory.path(), std::string("timer-small-") + state.name);
    testing::renderWidgetFiles(makeTimerWidgetView(*state.entry, WidgetFamily::systemMedium).body(),
                               widgetcanvas::kMedium, directory.path(), std::string("timer-medium-") + state.name);
  }
}

}  // namespace
}  // namespace kestrona
