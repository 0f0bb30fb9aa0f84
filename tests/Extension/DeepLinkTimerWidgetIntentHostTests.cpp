#include "Extension/DeepLinkTimerWidgetIntentHost.h"

#include <gtest/gtest.h>

#include <mutex>

#include "Extension/KestronaWidgetsPackage.h"
#include "Platform/Bundle/MainBundleLocator.h"
#include "Platform/Logging/LogHandler.h"
#include "Platform/Logging/LoggingSystem.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/Workspace/PosixProcessLauncher.h"
#include "tests/Platform/Workspace/ProgramFixtures.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::readFile;
using testing::TemporaryDirectory;

struct LoggedLine {
  Logger::Level level;
  std::string label;
  std::string message;
  std::string subsystem;
};

// Keeps every line logged in this process.
class RecordingLogHandler final : public LogHandler {
 public:
  void log(const LogRecord& record) noexcept override {
    std::lock_guard lock(mutex_);
    std::string subsystem;
    if (auto found = record.metadata.find("subsystem"); found != record.metadata.end() && found->second.string()) {
      subsystem = *found->second.string();
    }
    lines_.push_back({record.level, std::string(record.label), std::string(record.message), subsystem});
  }
  Logger::Level initialLogLevel() const noexcept override { return Logger::Level::trace; }

  std::vector<LoggedLine> take() {
    std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<LoggedLine> lines_;
};

RecordingLogHandler& recordingHandler() {
  static auto handler = std::make_shared<RecordingLogHandler>();
  static std::once_flag bootstrapped;
  std::call_once(bootstrapped, [] { LoggingSystem::bootstrap([](const std::string&) { return handler; }); });
  return *handler;
}

asio::awaitable<void> startAndRecord(std::shared_ptr<TimerWidgetIntentHosting> host, std::string taskId,
                                     std::optional<bool>* result) {
  bool handedOver = co_await host->startTimer(std::move(taskId));
  *result = handedOver;
}

asio::awaitable<void> pauseAndRecord(std::shared_ptr<TimerWidgetIntentHosting> host, bool* done) {
  co_await host->pauseTimer();
  *done = true;
}

class DeepLinkTimerWidgetIntentHostTest : public ::testing::Test {
 protected:
  DeepLinkTimerWidgetIntentHostTest() {
    recordingHandler().take();
    workspace_ = Workspace::make(loop_, std::make_shared<PosixProcessLauncher>(loop_));
    host_ = DeepLinkTimerWidgetIntentHost::make(workspace_);
  }
  ~DeepLinkTimerWidgetIntentHostTest() override { setMainExecutablePathForTesting(std::nullopt); }

  // Installs the application with applicationBody as its program and runs as
  // its widget bundle.
  void installApplication(const std::string& applicationBody) {
    std::filesystem::path application = testing::layOutApplication(directory_.path(), applicationBody);
    setMainExecutablePathForTesting(testing::widgetBundleIn(application) / "bin/kestrona-widgets");
  }

  bool start(const std::string& taskId) {
    std::optional<bool> result;
    spawn(loop_, startAndRecord(host_, taskId, &result));
    testing::runUntil(loop_, [&] { return result.has_value(); });
    return result.value_or(false);
  }

  void pause() {
    bool done = false;
    spawn(loop_, pauseAndRecord(host_, &done));
    testing::runUntil(loop_, [&] { return done; });
  }

  // The one line logged since the last call; fails unless there is exactly one.
  std::string loggedError() {
    std::vector<LoggedLine> lines = recordingHandler().take();
    EXPECT_EQ(lines.size(), 1u);
    if (lines.empty()) return {};
    EXPECT_EQ(lines.front().level, Logger::Level::error);
    EXPECT_EQ(lines.front().label, "TimerWidgetIntent");
    EXPECT_EQ(lines.front().subsystem, "app.kestrona.widgets");
    return lines.front().message;
  }

  std::filesystem::path recorded() const { return directory_.path() / "Kestrona.app/Contents/recorded"; }

  static constexpr const char* kRecordingApplication = R"(printf '%s|%s|%s|%s' "$#" "$1" "$2" "$KESTRONA_OPEN_ACTIVATES$KESTRONA_OPEN_PROMPTS_USER" >> "$(dirname "$0")/../recorded")";
  static constexpr const char* kTaskId = "x-kestrona://3F1C2A4B-0D6E-4F1A-9C3B-5E7D8A9B0C1D/Task/p12";

  TemporaryDirectory directory_;
  MainLoop loop_;
  std::shared_ptr<Workspace> workspace_;
  std::shared_ptr<DeepLinkTimerWidgetIntentHost> host_;
};

TEST_F(DeepLinkTimerWidgetIntentHostTest, HandsTheDeepLinkToTheApplicationInTheBackground) {
  installApplication(kRecordingApplication);
  EXPECT_EQ(DeepLinkTimerWidgetIntentHost::containingApplicationURL(),
            URL::fileURLWithPath(directory_.path() / "Kestrona.app", true));

  EXPECT_TRUE(start(kTaskId));
  EXPECT_EQ(readFile(recorded()),
            std::string("2|open-url|deeplink-startTimer://?taskId=") + kTaskId + "|00");
  std::filesystem::remove(recorded());

  EXPECT_TRUE(start("id with blank & amp"));
  std::string link = "deeplink-startTimer://?taskId=id%20with%20blank%20%26%20amp";
  EXPECT_EQ(readFile(recorded()), "2|open-url|" + link + "|00");
  EXPECT_EQ(TimerWidgetDeepLink::fromURL(*URL::fromString(link)), TimerWidgetDeepLink::start("id with blank & amp"));
  std::filesystem::remove(recorded());

  pause();
  EXPECT_EQ(readFile(recorded()), "2|open-url|deeplink-pauseTimer://|00");
  EXPECT_TRUE(recordingHandler().take().empty());
}

TEST_F(DeepLinkTimerWidgetIntentHostTest, AnExtensionNotThreeLevelsUnderAnAppHasNoApplication) {
  std::filesystem::path bundle = directory_.path() / "Kestrona.bundle";
  testing::layOutApplication(directory_.path(), kRecordingApplication);
  std::filesystem::rename(directory_.path() / "Kestrona.app", bundle);
  setMainExecutablePathForTesting(testing::widgetBundleIn(bundle) / "bin/kestrona-widgets");
  EXPECT_EQ(DeepLinkTimerWidgetIntentHost::containingApplicationURL(), std::nullopt);

  EXPECT_FALSE(start(kTaskId));
  EXPECT_EQ(loggedError(), std::string("No URL or containing app for start(taskId: \"") + kTaskId + "\")");
  pause();
  EXPECT_EQ(loggedError(), "No URL or containing app for pause");
  EXPECT_FALSE(std::filesystem::exists(bundle / "Contents/recorded"));

  // One level too deep: the folder three levels up is Contents, not the app.
  std::filesystem::path deeper = directory_.path() / "Deep.app/Contents/PlugIns/Extra/KestronaWidgets.appex";
  testing::writeFile(deeper / "Info.json",
                     R"({"identifier": "app.kestrona.widgets", "executable": "bin/kestrona-widgets"})");
  testing::writeScript(deeper / "bin/kestrona-widgets", "exit 0");
  setMainExecutablePathForTesting(deeper / "bin/kestrona-widgets");
  EXPECT_EQ(DeepLinkTimerWidgetIntentHost::containingApplicationURL(), std::nullopt);
}

// A start that the application does not take fails and logs why; a pause
// that fails is only logged.
TEST_F(DeepLinkTimerWidgetIntentHostTest, AnApplicationThatDoesNotTakeTheLinkFailsTheStart) {
  const struct {
    const char* body;
    WorkspaceErrorCode code;
    double timeLimit;
  } applications[] = {
      {"", WorkspaceErrorCode::executableMissing, 30},  // first: later rows write the executable
      {"exit 1", WorkspaceErrorCode::applicationFailed, 30},
      {"kill -SEGV $$", WorkspaceErrorCode::applicationCrashed, 30},
      {"sleep 60", WorkspaceErrorCode::timedOut, 0.3},
  };
  for (const auto& [body, code, timeLimit] : applications) {
    installApplication(body);
    workspace_->setTimeLimit(timeLimit);
    const std::string expectedError = "(WorkspaceError " + std::to_string(static_cast<int>(code)) + ")";
    EXPECT_FALSE(start(kTaskId)) << body;
    std::string message = loggedError();
    EXPECT_EQ(message.rfind(std::string("Opening deeplink-startTimer://?taskId=") + kTaskId + " at the app failed: ", 0),
              0u) << message;
    EXPECT_NE(message.find(expectedError), std::string::npos) << message;
    pause();
    EXPECT_NE(loggedError().find("Opening deeplink-pauseTimer:// at the app failed: "), std::string::npos);
  }
}

}  // namespace
}  // namespace kestrona
