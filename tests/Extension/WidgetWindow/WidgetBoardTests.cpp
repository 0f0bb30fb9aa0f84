// The window's widgets on a manual clock, with widget files written by hand
// and their changes reported by hand: what is redrawn, when, and where the
// keyboard's focus goes.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Extension/WidgetWindow/WidgetBoard.h"
#include "WidgetData/Records/RecentTasksWidgetDataVO.h"
#include "WidgetData/Records/RecordCoding.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;

// 1 December 2026, 10:00 UTC.
constexpr double kNow = 1796119200;

class ReportedChanges final : public FileChangeMonitor {
 public:
  void watch(const fs::path&) override {}
  std::vector<fs::path> takeChangedFiles() override { return std::exchange(changed, {}); }
  std::vector<fs::path> changed;
};

std::string recentTasks(int count) {
  RecentTasksWidgetDataVO data;
  data.tasks.resize(static_cast<std::size_t>(count));
  for (RecentTaskVO& task : data.tasks) task.taskId = "t" + std::to_string(&task - data.tasks.data());
  return encodeWidgetRecord(data);
}

class WidgetBoardTest : public ::testing::Test {
 protected:
  WidgetBoardTest() {
    environment.set("TZ", "UTC");
    environment.set("XDG_DATA_HOME", directory.path().string());
  }

  // Writes a widget file, and reports it changed when the board is there.
  void write(const std::string& kind, const std::string& content) {
    testing::writeFile(widgetData / kind, content);
    monitor->changed.push_back(widgetData / kind);
  }

  WidgetBoard& makeBoard(std::vector<WidgetChoice> choices) {
    monitor->changed.clear();
    board = std::make_unique<WidgetBoard>(KestronaWidgets().body(), std::move(choices), clock, monitor, widgetData);
    board->setObserver([this](std::size_t index) { redrawn.push_back(index); });
    return *board;
  }

  std::string timerText(std::size_t index) const {
    for (const LaidOutNode* node : board->placements()[index].tree.nodesOfKind(ViewKind::text)) {
      if (std::holds_alternative<LiveTimer>(node->as<TextNode>()->content)) return node->text->string;
    }
    return "";
  }

  testing::TemporaryDirectory directory;
  const fs::path widgetData = directory.path() / KestronaWidgets::kAppGroupName / "widgetData";
  testing::ScopedEnvironment environment;
  ManualClock clock{Date(kNow + 0.25)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<ReportedChanges> monitor = std::make_shared<ReportedChanges>();
  std::unique_ptr<WidgetBoard> board;
  std::vector<std::size_t> redrawn;
};

TEST_F(WidgetBoardTest, ARunningTimerRedrawsOnlyItsOwnWidgetAtEachNewSecond) {
  write("timer", R"({"taskId":"t","taskName":"Write","timeEntryBeginTimestamp":)" + std::to_string(kNow - 8280) + "}");
  WidgetBoard& widgets = makeBoard({{"weeklyTimeTrackedChart", WidgetFamily::systemMedium},
                                    {"timer", WidgetFamily::systemSmall}});
  EXPECT_EQ(timerText(1), "2:18:00");
  ASSERT_TRUE(widgets.nextUpdateDate());
  EXPECT_NEAR(widgets.nextUpdateDate()->timeIntervalSince1970(), kNow + 1, 0.05) << "just after the next second";

  clock.advance(0.5);
  widgets.update();
  EXPECT_TRUE(redrawn.empty()) << "the text has not changed within the second";
  clock.advance(0.3);
  widgets.update();
  EXPECT_EQ(redrawn, std::vector<std::size_t>{1});
  EXPECT_EQ(timerText(1), "2:18:01");

  write("timer", R"({"taskId":"t","taskName":"Write","timeEntryBeginTimestamp":1,"timeEntryEndTimestamp":2})");
  widgets.update();
  EXPECT_EQ(redrawn, (std::vector<std::size_t>{1, 1})) << "the rewritten file, and again only the timer";
  EXPECT_EQ(timerText(1), "");
  EXPECT_GT(widgets.nextUpdateDate().value_or(Date(kNow + 1e6)).timeIntervalSince1970(), kNow + 60)
      << "no more ticks once the timer stopped";
}

TEST_F(WidgetBoardTest, FocusGoesRoundTheButtonsOfAllWidgetsAndFollowsARewrittenWidget) {
  write("recentTasks", recentTasks(3));
  WidgetBoard& widgets = makeBoard({{"timer", WidgetFamily::systemMedium},
                                    {"weeklyTimeTrackedChart", WidgetFamily::systemMedium},
                                    {"recentTasks", WidgetFamily::systemMedium}});
  auto focus = [&] {
    std::optional<WidgetBoard::FocusedButton> button = widgets.focusedButton();
    return button ? std::pair<int, int>(button->placement, button->button) : std::pair(-1, -1);
  };
  const std::vector<std::pair<int, int>> forward = {{0, 0}, {2, 0}, {2, 1}, {2, 2}, {0, 0}};
  for (const auto& expected : forward) {
    widgets.moveFocus(WidgetBoard::FocusDirection::forward);
    EXPECT_EQ(focus(), expected) << "the chart has no button";
  }
  EXPECT_EQ(widgets.focusedButton()->outline.kind(), Shape::Kind::circle) << "the timer's round button";
  widgets.moveFocus(WidgetBoard::FocusDirection::backward);
  EXPECT_EQ(focus(), std::pair(2, 2)) << "backwards from the first wraps to the last";
  EXPECT_EQ(widgets.focusedButton()->frame, widgets.placements()[2].tree.nodesOfKind(ViewKind::pressTarget)[2]->frame);
  EXPECT_EQ(widgets.focusedButton()->outline.kind(), Shape::Kind::roundedRectangle) << "a plate";

  redrawn.clear();
  write("recentTasks", recentTasks(1));
  widgets.update();
  EXPECT_EQ(focus(), std::pair(2, 0)) << "the same widget keeps the focus on a button it still has";
  write("recentTasks", recentTasks(0));
  widgets.update();
  EXPECT_EQ(focus(), std::pair(-1, -1));
  EXPECT_EQ(redrawn, (std::vector<std::size_t>{2, 2}));
}

}  // namespace
}  // namespace kestrona
