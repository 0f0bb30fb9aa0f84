// Presses on a laid-out recent tasks widget, through a host that takes a
// turn of the loop for every command, so that overlapping presses would show.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Extension/WidgetProcess/WidgetPresser.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/RunLoop/Async.h"
#include "SharedWidgets/Timelines/RecentTasksEntry.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"
#include "tests/support/RunLoopDriving.h"

namespace kestrona {
namespace {

class TurnTakingHost final : public TimerWidgetIntentHosting {
 public:
  asio::awaitable<bool> startTimer(std::string taskId) override {
    log.push_back("begin start " + taskId);
    co_await asio::post(co_await asio::this_coro::executor, asio::use_awaitable);
    log.push_back("end start " + taskId);
    co_return taskId != "refused";
  }
  asio::awaitable<void> pauseTimer() override {
    log.push_back("pause");
    co_return;
  }

  std::vector<std::string> log;
};

RecentTaskVO task(std::string taskId, bool running = false) {
  RecentTaskVO made;
  made.taskId = made.taskName = std::move(taskId);
  if (running) made.runningEntryBeginTimestamp = 1000;
  return made;
}

TEST(WidgetPresserTest, PressesRunOneAtATimeInOrderAndSayWhatTheyHandedOver) {
  MainLoop loop;
  auto host = std::make_shared<TurnTakingHost>();
  TimerWidgetIntentHost::setCurrent(host);
  const RecentTasksEntry entry{Date(2000), {task("a"), task("refused"), task("b", true)}};
  const LayoutTree tree = layOutWidget("recentTasks", AnyTimelineEntry(entry), WidgetFamily::systemMedium);
  const std::vector<const LaidOutNode*> plates = tree.nodesOfKind(ViewKind::pressTarget);
  ASSERT_EQ(plates.size(), 3u);
  auto middle = [](const LaidOutNode* node) { return Point{node->frame.midX(), node->frame.midY()}; };

  std::vector<nlohmann::ordered_json> outcomes;
  auto record = [&](WidgetPressOutcome outcome) { outcomes.push_back(pressOutcomeJSON(outcome)); };
  WidgetPresser presser(loop);
  for (const LaidOutNode* plate : plates) presser.press(tree, middle(plate), record);
  presser.press(tree, {182, 165}, record);
  EXPECT_TRUE(outcomes.empty()) << "completions never run inside press()";
  testing::runUntil(loop, [&] { return outcomes.size() == 4; });

  EXPECT_EQ(host->log, (std::vector<std::string>{"begin start a", "end start a", "begin start refused",
                                                 "end start refused", "pause"}));
  const std::vector<std::string> expected = {
      R"({"pressed":"intent","intent":"Timer","command":"start","taskId":"a",)"
      R"("deepLink":"deeplink-startTimer://?taskId=a","result":"performed"})",
      R"({"pressed":"intent","intent":"Timer","command":"start","taskId":"refused",)"
      R"("deepLink":"deeplink-startTimer://?taskId=refused","result":"failed","error":)"
      R"({"domain":"TimerWidgetAppIntent.AppIntentError","code":1,"description":"Task not found"}})",
      R"({"pressed":"intent","intent":"Timer","command":"pause","deepLink":"deeplink-pauseTimer://",)"
      R"("result":"performed"})",
      R"({"pressed":"link","url":"deeplink-openApp://","isWidgetURL":true})",
  };
  ASSERT_EQ(outcomes.size(), expected.size());
  for (std::size_t index = 0; index < expected.size(); ++index) EXPECT_EQ(outcomes[index].dump(), expected[index]);
  EXPECT_EQ(TimerWidgetIntentHost::current(), host) << "the registered host is back in place";
  TimerWidgetIntentHost::setCurrent(nullptr);
}

}  // namespace
}  // namespace kestrona
