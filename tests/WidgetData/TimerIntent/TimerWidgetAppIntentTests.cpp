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

TEST_F(TimerWidgetAppIntentTest, WithoutAHostFailsBeforeLookingAtParameters) {
  EXPECT_EQ(perform(TimerWidgetAppIntent()), Code::cannotInitializeTimer);
  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::start, std::nullopt)), Code::cannotInitializeTimer);
  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::pause, std::nullopt)), Code::cannotInitializeTimer);
}

TEST_F(TimerWidgetAppIntentTest, PauseIgnoresTheTaskAndCannotFail) {
  auto host = registerHost(false);
  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::pause, "x-kestrona://A/Task/p1")), std::nullopt);
  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::pause, std::nullopt)), std::nullopt);
  EXPECT_EQ(host->calls, (std::vector<std::string>{"pause", "pause"}));
}

TEST_F(TimerWidgetAppIntentTest, StartNeedsAnActionAndATaskButPassesAnEmptyOne) {
  auto host = registerHost(true);
  TimerWidgetAppIntent noAction;
  noAction.taskId = "x-kestrona://A/Task/p1";
  EXPECT_EQ(perform(noAction), Code::actionIsRequired);
  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::start, std::nullopt)), Code::taskIdNotPassed);
  EXPECT_TRUE(host->calls.empty());

  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::start, "")), std::nullopt);
  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::start, "x-kestrona://A/Task/p1")), std::nullopt);
  EXPECT_EQ(host->calls, (std::vector<std::string>{"start ", "start x-kestrona://A/Task/p1"}));
}

TEST_F(TimerWidgetAppIntentTest, AStartTheHostCouldNotHandOverIsTaskNotFound) {
  auto host = registerHost(false);
  EXPECT_EQ(perform(TimerWidgetAppIntent(TimerActionType::start, "x-kestrona://A/Task/p1")), Code::taskNotFound);
  EXPECT_EQ(host->calls, (std::vector<std::string>{"start x-kestrona://A/Task/p1"}));
  EXPECT_EQ(TimerWidgetIntentHost::current(), host) << "a failure must leave the host registered";
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
