#include "SharedWidgets/Views/Timer/TimerWidgetView.h"

#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "SharedWidgets/Timelines/TimerWidgetTimelineProvider.h"
#include "SharedWidgets/Views/Timer/DurationView.h"
#include "tests/Platform/View/LayoutSnapshot.h"
#include "tests/SharedWidgets/Timelines/TimelineTestSupport.h"
#include "tests/SharedWidgets/Views/ViewTestSupport.h"

namespace kestrona {
namespace {

using testing::kNow;
using testing::layOutWidget;

constexpr char kTaskId[] = "x-kestrona://4F0C7A38-1D52-4B5E-9A0E-6C1F2B3D4E5F/Task/p7";

TimerWidgetEntry finishedEntry() {
  return TimerWidgetEntry{
      .date = kNow,
      .taskId = kTaskId,
      .taskName = "Concept",
      .taskColor = Color::deviceRGB(0.2, 0.5, 0.9, 1),
      .startButtonBackgroundOpacity = 0.25F,
      .taskBackgroundColorOptimizedForLightContent = Color::deviceRGB(0.1, 0.3, 0.6, 1),
      .folderName = "Design",
      .timeEntryBegin = kNow.addingTimeInterval(-7200),
      .timeEntryEnd = kNow.addingTimeInterval(-7200 + 3725),
  };
}

TimerWidgetEntry runningEntry() {
  TimerWidgetEntry entry = finishedEntry();
  entry.timeEntryBegin = kNow.addingTimeInterval(-3725);
  entry.timeEntryEnd = std::nullopt;
  return entry;
}

LayoutTree layOutTimer(const TimerWidgetEntry& entry, WidgetFamily family) {
  return layOutWidget(makeTimerWidgetView(entry, family).body(), family);
}

// Every state in both families: texts, fonts, colours, the button's signs
// and disc, the running layer and the links, as stored.
TEST(TimerWidgetViewTest, EachStateInEachFamilyMatchesItsSnapshot) {
  ManualClock clock{kNow};
  ScopedClock scopedClock{clock};
  TimerWidgetEntry noFolder = finishedEntry();
  noFolder.folderName = std::nullopt;
  TimerWidgetEntry longName = finishedEntry();
  longName.taskName = "Concept sketches for the spring campaign";
  TimerWidgetEntry noOpacity = finishedEntry();
  noOpacity.startButtonBackgroundOpacity = std::nullopt;
  TimerWidgetEntry damagedOpacity = runningEntry();
  damagedOpacity.startButtonBackgroundOpacity = 7.5F;
  const std::pair<const char*, TimerWidgetEntry> states[] = {
      {"placeholder", TimerWidgetTimelineProvider(std::make_shared<testing::InMemoryWidgetFile>()).placeholderEntry()},
      {"finished", finishedEntry()},
      {"running", runningEntry()},
      {"noFolder", noFolder},
      {"longName", longName},
      {"noOpacity", noOpacity},
      {"damagedOpacity", damagedOpacity},
  };
  for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
    for (const auto& [name, entry] : states) {
      testing::expectSnapshot(layOutTimer(entry, family),
                              "Timer/" + std::string(name) + "-" + std::string(rawValue(family)));
    }
  }
  const TimerWidgetView pictureOnly{
      .entry = runningEntry(), .mainAction = std::nullopt, .family = WidgetFamily::systemMedium};
  testing::expectSnapshot(layOutWidget(pictureOnly.body(), WidgetFamily::systemMedium), "Timer/pictureOnly-medium");
}

// The button's column is as wide as the duration under it; the names beside
// it take all the rest of the row rather than half of it.
TEST(TimerWidgetViewTest, MediumNamesTakeTheWidthTheDurationLeaves) {
  TimerWidgetEntry entry = finishedEntry();
  entry.taskName = "Concept sketches for";  // 240 points at 24, 192 at 0.8
  const LayoutTree tree = layOutTimer(entry, WidgetFamily::systemMedium);
  const LaidOutNode& name = *tree.findText(*entry.taskName);
  const LaidOutNode& duration = *tree.findText("1:02:05");
  EXPECT_FALSE(name.text->isTruncated);
  EXPECT_NEAR(duration.frame.maxX(), 344, 1e-9);
  EXPECT_LE(name.frame.maxX(), duration.frame.minX() - kDefaultSpacing);
}

class TimerWidgetPressTest : public testing::PressingTest {};

TEST_F(TimerWidgetPressTest, TheButtonPausesARunningTimerAndStartsTheEntrysTaskOtherwise) {
  TimerWidgetEntry withoutTask = finishedEntry();
  withoutTask.taskId = std::nullopt;
  const std::string taskIdNotPassed =
      "error " + std::to_string(static_cast<int>(TimerWidgetAppIntent::AppIntentErrorCode::taskIdNotPassed));
  const std::pair<TimerWidgetEntry, std::string> cases[] = {
      {runningEntry(), "pause"},
      {finishedEntry(), std::string("start ") + kTaskId},
      {withoutTask, taskIdNotPassed},
  };
  for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
    for (const auto& [entry, expected] : cases) {
      const LayoutTree tree = layOutTimer(entry, family);
      EXPECT_EQ(pressAt(tree, *tree.nodesOfKind(ViewKind::pressTarget).at(0)), expected);
    }
  }
  EXPECT_FALSE(timerWidgetAppIntent(runningEntry()).taskId.value().has_value());
}

TEST_F(TimerWidgetPressTest, APressBesideTheButtonOrOnAPictureOnlyButtonOpensTheApplication) {
  const std::string openApp = "link deeplink-openApp://";
  const LayoutTree tree = layOutTimer(runningEntry(), WidgetFamily::systemMedium);
  EXPECT_EQ(press(tree, {20, 150}), openApp);
  EXPECT_EQ(pressAt(tree, *tree.findText("Concept")), openApp);
  // The corner of the button's square lies outside its circle.
  const Rect button = tree.nodesOfKind(ViewKind::pressTarget).at(0)->frame;
  EXPECT_EQ(press(tree, {button.minX() + 1, button.minY() + 1}), openApp);

  const TimerWidgetView pictureOnly{
      .entry = runningEntry(), .mainAction = std::nullopt, .family = WidgetFamily::systemSmall};
  const LayoutTree picture = layOutWidget(pictureOnly.body(), WidgetFamily::systemSmall);
  EXPECT_TRUE(picture.nodesOfKind(ViewKind::pressTarget).empty());
  EXPECT_EQ(pressAt(picture, *picture.nodesOfKind(ViewKind::image).at(0)), openApp);
}

TEST(DurationViewTest, ShowsTheEntrysLengthNeverNegativeAndCountsUpWhileRunning) {
  ManualClock clock{kNow};
  ScopedClock scopedClock{clock};
  auto at = [](double seconds) { return std::optional(kNow.addingTimeInterval(seconds)); };
  const struct {
    bool isRunning;
    std::optional<Date> begin;
    std::optional<Date> end;
    const char* shown;
  } cases[] = {
      {false, at(-90000), at(-89999.5), "0:00:00"},
      {false, at(-90000), at(-90000 + 3725.9), "1:02:05"},
      {false, at(-90000), at(-99999), "0:00:00"},  // an end before the begin is the begin
      {false, at(-90000), kNow, "25:00:00"},
      {false, std::nullopt, std::nullopt, "0:00:00"},  // missing dates are the present
      {false, at(-65), std::nullopt, "0:01:05"},
      {false, std::nullopt, at(-65), "0:00:00"},
      {true, at(-65), kNow, "1:05"},
      {true, std::nullopt, std::nullopt, ""},  // nothing is drawn
  };
  for (const auto& c : cases) {
    const DurationView view{.isRunning = c.isRunning, .begin = c.begin, .end = c.end};
    const LayoutTree tree = layOutWidget(view.body(), WidgetFamily::systemSmall);
    const auto texts = tree.nodesOfKind(ViewKind::text);
    EXPECT_EQ(texts.empty() ? "" : texts[0]->text->string, c.shown);
  }
}

}  // namespace
}  // namespace kestrona
