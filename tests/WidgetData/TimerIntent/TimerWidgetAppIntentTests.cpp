#include "WidgetData/TimerIntent/TimerWidgetAppIntent.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/RunLoop/Async.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"
#include "tests/Platform/Workspace/ProgramFixtures.h"
#include "tests/support/RawValueContract.h"

namespace kestrona {
namespace {

using Code = TimerWidgetAppIntent::AppIntentErrorCode;

// Records the commands it gets and answers startTimer with a fixed result,
// after one suspension on the loop, as a real host would.
class RecordingHost final : public TimerWidgetIntentHosting {
 public:
  explicit RecordingHost(bool answer) : answer_(answer) {}

  asio::awaitable<bool> startTimer(std::string taskId) override {
    co_await asio::post(co_await asio::this_coro::executor, asio::use_awaitable);
    calls.push_back("start " + taskId);
    co_return answer_;
  }
  asio::awaitable<void> pauseTimer() override {
    co_await asio::post(co_await asio::this_coro::executor, asio::use_awaitable);
    calls.push_back("pause");
  }

  std::vector<std::string> calls;

 private:
  bool answer_;
};

class TimerWidgetAppIntentTest : public ::testing::Test {
 protected:
  ~TimerWidgetAppIntentTest() override { TimerWidgetIntentHost::setCurrent(nullptr); }

  std::shared_ptr<RecordingHost> registerHost(bool answer) {
    auto host = std::make_shared<RecordingHost>(answer);
    TimerWidgetIntentHost::setCurrent(host);
    return host;
  }

  // Performs the intent on the loop; the error code it threw, or none.
  std::optional<Code> perform(const TimerWidgetAppIntent& intent) {
    bool done = false;
    std::exception_ptr error;
    AnyAppIntent(intent).run(loop_, [&](std::exception_ptr thrown) {
      error = thrown;
      done = true;
    });
    testing::runUntil(loop_, [&] { return done; });
    if (!error) return std::nullopt;
    try {
      std::rethrow_exception(error);
    } catch (const TimerWidgetAppIntent::AppIntentError& intentError) {
      EXPECT_EQ(intentError.domain(), "TimerWidgetAppIntent.AppIntentError");
      return intentError.kind();
    }
  }

  MainLoop loop_;
};

// The host comes first, then the action; a pause ignores the task, a start
// needs one (the empty one passes) and fails as taskNotFound when the host
// could not hand it over, which leaves the host registered.
TEST_F(TimerWidgetAppIntentTest, PerformChecksHostActionAndTaskInThatOrder) {
  const std::string task = "x-kestrona://A/Task/p1";
  const struct {
    std::optional<bool> hostAnswer;  // none: no host registered
    std::optional<TimerActionType> action;
    std::optional<std::string> taskId;
    std::optional<Code> error;
    std::vector<std::string> calls;
  } cases[] = {
      {std::nullopt, std::nullopt, std::nullopt, Code::cannotInitializeTimer, {}},
      {std::nullopt, TimerActionType::start, task, Code::cannotInitializeTimer, {}},
      {std::nullopt, TimerActionType::pause, std::nullopt, Code::cannotInitializeTimer, {}},
      {false, TimerActionType::pause, task, std::nullopt, {"pause"}},
      {true, std::nullopt, task, Code::actionIsRequired, {}},
      {true, TimerActionType::start, std::nullopt, Code::taskIdNotPassed, {}},
      {true, TimerActionType::start, "", std::nullopt, {"start "}},
      {true, TimerActionType::start, task, std::nullopt, {"start " + task}},
      {false, TimerActionType::start, task, Code::taskNotFound, {"start " + task}},
  };
  for (const auto& each : cases) {
    TimerWidgetIntentHost::setCurrent(nullptr);
    std::shared_ptr<RecordingHost> host = each.hostAnswer ? registerHost(*each.hostAnswer) : nullptr;
    TimerWidgetAppIntent intent;
    intent.action = each.action;
    intent.taskId = each.taskId;
    EXPECT_EQ(perform(intent), each.error) << each.calls.size();
    if (host) {
      EXPECT_EQ(host->calls, each.calls);
      EXPECT_EQ(TimerWidgetIntentHost::current(), host);
    }
  }
}

TEST_F(TimerWidgetAppIntentTest, TheHostIsReadWhenTheIntentRunsAndReplacingItReleasesTheOldOne) {
  TimerWidgetAppIntent intent(TimerActionType::pause, std::nullopt);
  auto first = registerHost(true);
  std::weak_ptr<RecordingHost> weakFirst = first;
  first.reset();
  auto second = registerHost(true);
  EXPECT_TRUE(weakFirst.expired());
  EXPECT_EQ(perform(intent), std::nullopt);
  EXPECT_EQ(second->calls, (std::vector<std::string>{"pause"}));
}

TEST(TimerWidgetAppIntentValue, ErrorsTextsAndActions) {
  const std::pair<Code, const char*> texts[] = {{Code::taskIdNotPassed, "Task ID not passed"},
                                                {Code::taskNotFound, "Task not found"},
                                                {Code::cannotInitializeTimer, "Cannot initialize timer"},
                                                {Code::actionIsRequired, "Action is required"}};
  for (const auto& [code, text] : texts) {
    EXPECT_EQ(TimerWidgetAppIntent::AppIntentError(code).localizedDescription(), text);
  }
  testing::expectRawValues<TimerActionType>({"start", "pause"});
  EXPECT_EQ(AppEnumDisplay<TimerActionType>::caseDisplayRepresentation(TimerActionType::pause), "Pause");
}

}  // namespace
}  // namespace kestrona
