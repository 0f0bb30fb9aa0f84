#include "Platform/Workspace/Workspace.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

#include "Platform/Bundle/Bundle.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/Workspace/PosixProcessLauncher.h"
#include "tests/Platform/Workspace/ProgramFixtures.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::TemporaryDirectory;

// Records each request and answers with the outcome it was given, on the
// loop, as the real launcher does.
class ScriptedLauncher final : public ProcessLauncher {
 public:
  ScriptedLauncher(MainLoop& loop, ProcessOutcome outcome) : loop_(loop), outcome_(outcome) {}

  void launch(ProcessLaunchRequest request, Completion completion) override {
    requests.push_back(std::move(request));
    loop_.post([completion = std::move(completion), outcome = outcome_] { completion(outcome); });
  }

  std::vector<ProcessLaunchRequest> requests;

 private:
  MainLoop& loop_;
  ProcessOutcome outcome_;
};

class WorkspaceTest : public ::testing::Test {
 protected:
  WorkspaceTest() { application_ = testing::layOutApplication(directory_.path(), "exit 0"); }

  std::shared_ptr<ScriptedLauncher> launcherAnswering(ProcessOutcome outcome) {
    auto launcher = std::make_shared<ScriptedLauncher>(loop_, outcome);
    workspace_ = Workspace::make(loop_, launcher);
    return launcher;
  }

  // Opens urls at the application and gives the error, or null on success.
  std::exception_ptr open(const std::vector<URL>& urls, const URL& application,
                          Workspace::OpenConfiguration configuration = {}) {
    bool done = false;
    std::exception_ptr result;
    workspace_->openURLs(urls, application, configuration, [&](std::exception_ptr error) {
      done = true;
      result = error;
    });
    EXPECT_FALSE(done) << "the completion ran inside openURLs()";
    testing::runUntil(loop_, [&] { return done; });
    return result;
  }

  static WorkspaceError errorOf(std::exception_ptr error) {
    return testing::errorIn<WorkspaceError>(error).value_or(WorkspaceError(WorkspaceErrorCode::noURLs, ""));
  }

  URL applicationURL() const { return URL::fileURLWithPath(application_, true); }
  URL link() const { return *URL::fromString("deeplink-startTimer://?taskId=x-kestrona://3F1C/Task/p12"); }

  TemporaryDirectory directory_;
  std::filesystem::path application_;
  MainLoop loop_;
  std::shared_ptr<Workspace> workspace_;
};

TEST_F(WorkspaceTest, StartsTheBundlesExecutableWithOpenURLAndTheConfiguration) {
  auto launcher = launcherAnswering(ProcessExited{0});
  workspace_->setTimeLimit(1.5);
  Workspace::OpenConfiguration configuration;
  configuration.setActivates(false);
  configuration.setPromptsUserIfNeeded(false);
  URL second = *URL::fromString("deeplink-pauseTimer://");

  EXPECT_EQ(open({link(), second}, applicationURL(), configuration), nullptr);
  ASSERT_EQ(launcher->requests.size(), 1u);
  const ProcessLaunchRequest& request = launcher->requests.front();
  EXPECT_EQ(request.executable, application_ / "Contents/bin/kestrona");
  EXPECT_EQ(request.arguments, (std::vector<std::string>{"open-url", link().absoluteString(), "deeplink-pauseTimer://"}));
  EXPECT_EQ(request.environment, (std::vector<std::pair<std::string, std::string>>{
                                     {"KESTRONA_OPEN_ACTIVATES", "0"}, {"KESTRONA_OPEN_PROMPTS_USER", "0"}}));
  EXPECT_EQ(request.timeLimit, 1.5);

  open({link()}, applicationURL());
  EXPECT_EQ(launcher->requests.back().environment.front().second, "1");
  EXPECT_EQ(launcher->requests.back().timeLimit, 1.5);
}

TEST_F(WorkspaceTest, TurnsEveryUnsuccessfulEndIntoItsError) {
  struct Case {
    ProcessOutcome outcome;
    WorkspaceErrorCode code;
    const char* key;
    std::int64_t value;
  };
  const Case cases[] = {
      {ProcessExited{2}, WorkspaceErrorCode::applicationFailed, "status", 2},
      {ProcessExited{-1}, WorkspaceErrorCode::applicationFailed, "status", -1},
      {ProcessSignaled{SIGABRT}, WorkspaceErrorCode::applicationCrashed, "signal", SIGABRT},
      {ProcessLaunchFailed{ENOENT}, WorkspaceErrorCode::executableMissing, "errno", ENOENT},
      {ProcessLaunchFailed{EACCES}, WorkspaceErrorCode::executableNotExecutable, "errno", EACCES},
      {ProcessLaunchFailed{ENOEXEC}, WorkspaceErrorCode::executableNotExecutable, "errno", ENOEXEC},
      {ProcessLaunchFailed{E2BIG}, WorkspaceErrorCode::launchFailed, "errno", E2BIG},
  };
  for (const Case& testCase : cases) {
    launcherAnswering(testCase.outcome);
    WorkspaceError error = errorOf(open({link()}, applicationURL()));
    EXPECT_EQ(error.domain(), "WorkspaceError");
    EXPECT_EQ(error.kind(), testCase.code) << error.what();
    ASSERT_NE(error.userInfoValue<std::int64_t>(testCase.key), nullptr) << testCase.key;
    EXPECT_EQ(*error.userInfoValue<std::int64_t>(testCase.key), testCase.value);
    EXPECT_EQ(*error.userInfoValue<std::string>("executable"), (application_ / "Contents/bin/kestrona").string());
  }

  launcherAnswering(ProcessTimedOut{});
  workspace_->setTimeLimit(0.25);
  WorkspaceError timedOut = errorOf(open({link()}, applicationURL()));
  EXPECT_EQ(timedOut.kind(), WorkspaceErrorCode::timedOut);
  EXPECT_EQ(*timedOut.userInfoValue<double>("timeLimit"), 0.25);
}

TEST_F(WorkspaceTest, StartsNothingWithoutURLsOrARunnableBundle) {
  auto launcher = launcherAnswering(ProcessExited{0});
  EXPECT_EQ(errorOf(open({}, applicationURL())).kind(), WorkspaceErrorCode::noURLs);

  WorkspaceError missing = errorOf(open({link()}, URL::fileURLWithPath(directory_.path() / "Other.app", true)));
  EXPECT_EQ(missing.kind(), WorkspaceErrorCode::applicationNotFound);
  ASSERT_NE(missing.underlyingError(), nullptr);
  EXPECT_TRUE(missing.underlyingError()->is("BundleError", static_cast<int>(BundleErrorCode::notFound)));

  testing::writeFile(directory_.path() / "Broken.app/Info.json", "{");
  WorkspaceError broken = errorOf(open({link()}, URL::fileURLWithPath(directory_.path() / "Broken.app", true)));
  EXPECT_EQ(broken.kind(), WorkspaceErrorCode::applicationNotFound);
  EXPECT_TRUE(broken.underlyingError()->is("BundleError", static_cast<int>(BundleErrorCode::infoMalformed)));

  std::filesystem::create_directories(directory_.path() / "Empty.app");
  EXPECT_EQ(errorOf(open({link()}, URL::fileURLWithPath(directory_.path() / "Empty.app", true))).kind(),
            WorkspaceErrorCode::executableMissing);
  EXPECT_TRUE(launcher->requests.empty());
}

asio::awaitable<void> openAndRecord(std::shared_ptr<Workspace> workspace, URL url, URL application,
                                    std::exception_ptr* error, bool* done) {
  std::vector<URL> urls;
  urls.push_back(std::move(url));
  try {
    co_await workspace->open(std::move(urls), std::move(application), Workspace::OpenConfiguration());
  } catch (...) {
    *error = std::current_exception();
  }
  *done = true;
}

TEST_F(WorkspaceTest, OpenAsACoroutineThrowsTheErrorAndKeepsTheWorkspaceAlive) {
  std::exception_ptr error;
  bool done = false;
  launcherAnswering(ProcessSignaled{SIGKILL});
  spawn(loop_, openAndRecord(workspace_, link(), applicationURL(), &error, &done));
  std::weak_ptr<Workspace> weak = workspace_;
  workspace_.reset();
  testing::runUntil(loop_, [&] { return done; });
  EXPECT_EQ(errorOf(error).kind(), WorkspaceErrorCode::applicationCrashed);

  done = false;
  error = nullptr;
  launcherAnswering(ProcessExited{0});
  spawn(loop_, openAndRecord(workspace_, link(), applicationURL(), &error, &done));
  testing::runUntil(loop_, [&] { return done; });
  EXPECT_EQ(error, nullptr);
}

TEST_F(WorkspaceTest, OpensAtARealApplicationThatGetsTheURLAsItsArgument) {
  testing::writeScript(application_ / "Contents/bin/kestrona",
                       R"(printf '%s %s %s' "$1" "$2" "$KESTRONA_OPEN_ACTIVATES" > "$(dirname "$0")/got")");
  workspace_ = Workspace::make(loop_, std::make_shared<PosixProcessLauncher>(loop_));
  Workspace::OpenConfiguration configuration;
  configuration.setActivates(false);
  EXPECT_EQ(open({link()}, applicationURL(), configuration), nullptr);
  EXPECT_EQ(testing::readFile(application_ / "Contents/bin/got"), "open-url " + link().absoluteString() + " 0");
}

}  // namespace
}  // namespace kestrona
