#include "Platform/Workspace/PosixProcessLauncher.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <optional>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/Platform/Workspace/ProgramFixtures.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::readFile;
using testing::TemporaryDirectory;
using testing::writeScript;

class PosixProcessLauncherTest : public ::testing::TestWithParam<PosixProcessLauncher::ExitWatch> {
 protected:
  ProcessOutcome run(ProcessLaunchRequest request) {
    std::optional<ProcessOutcome> outcome;
    launcher_.launch(std::move(request), [&](ProcessOutcome result) { outcome = result; });
    EXPECT_FALSE(outcome.has_value()) << "the completion ran inside launch()";
    testing::runUntil(loop_, [&] { return outcome.has_value(); });
    return outcome.value_or(ProcessLaunchFailed{-1});
  }

  ProcessLaunchRequest script(const std::string& name, const std::string& body) {
    ProcessLaunchRequest request;
    request.executable = directory_.path() / name;
    writeScript(request.executable, body);
    return request;
  }

  // Waits until pid has died (it may stay a zombie of its new parent), for at
  // most a few seconds; whether it did.
  static bool diesSoon(pid_t pid) {
    int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (descriptor < 0) return errno == ESRCH;
    pollfd watch{descriptor, POLLIN, 0};
    bool died = ::poll(&watch, 1, 5000) == 1;
    ::close(descriptor);
    return died;
  }

  TemporaryDirectory directory_;
  MainLoop loop_;
  PosixProcessLauncher launcher_{loop_, GetParam()};
};

TEST_P(PosixProcessLauncherTest, PassesArgumentsAndEnvironmentWithoutAShell) {
  ProcessLaunchRequest request = script("record", R"(
printf '%s\n' "$0" "$#" "$1" "$2" "$KESTRONA_TEST_VALUE" > "$(dirname "$0")/recorded"
read line && echo "stdin was not empty" >> "$(dirname "$0")/recorded"
exit 0)");
  request.arguments = {"open-url", "deeplink-startTimer://?taskId=a b;$(touch injected)&c"};
  request.environment = {{"KESTRONA_TEST_VALUE", "x y"}};

  EXPECT_EQ(run(request), ProcessOutcome(ProcessExited{0}));
  EXPECT_EQ(readFile(directory_.path() / "recorded"),
            request.executable.string() + "\n2\nopen-url\ndeeplink-startTimer://?taskId=a b;$(touch injected)&c\nx y\n");
  EXPECT_FALSE(std::filesystem::exists(directory_.path() / "injected"));
}

TEST_P(PosixProcessLauncherTest, ReportsExitStatusAndSignal) {
  EXPECT_EQ(run(script("fails", "exit 3")), ProcessOutcome(ProcessExited{3}));
  EXPECT_EQ(run(script("crashes", "kill -SEGV $$")), ProcessOutcome(ProcessSignaled{SIGSEGV}));
}

TEST_P(PosixProcessLauncherTest, KillsAndReapsAProgramPastItsLimitWithWhatItStarted) {
  ProcessLaunchRequest request = script("hangs", R"(
sleep 60 &
echo $! > "$(dirname "$0")/child"
wait)");
  request.timeLimit = 0.3;
  EXPECT_EQ(run(request), ProcessOutcome(ProcessTimedOut{}));

  std::string child = readFile(directory_.path() / "child");
  ASSERT_FALSE(child.empty());
  EXPECT_TRUE(diesSoon(std::stoi(child))) << "the program's own child " << child << " was not killed";
  // Reaped: no child of ours is left to wait for.
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_P(PosixProcessLauncherTest, AProgramThatEndsWithinItsLimitIsNotKilled) {
  ProcessLaunchRequest request = script("quick", "exit 7");
  request.timeLimit = 30;
  EXPECT_EQ(run(request), ProcessOutcome(ProcessExited{7}));
}

TEST_P(PosixProcessLauncherTest, ReportsWhyAProgramCouldNotStart) {
  ProcessLaunchRequest missing;
  missing.executable = directory_.path() / "missing";
  EXPECT_EQ(run(missing), ProcessOutcome(ProcessLaunchFailed{ENOENT}));

  ProcessLaunchRequest notExecutable;
  notExecutable.executable = directory_.path() / "plain";
  testing::writeFile(notExecutable.executable, "#!/bin/sh\nexit 0\n");
  std::filesystem::permissions(notExecutable.executable, std::filesystem::perms::owner_read);
  ProcessOutcome outcome = run(notExecutable);
  // Root may read any file but still needs an execute bit somewhere to run it.
  EXPECT_EQ(outcome, ProcessOutcome(ProcessLaunchFailed{EACCES}));

  ProcessLaunchRequest noInterpreter;
  noInterpreter.executable = directory_.path() / "noShebang";
  testing::writeFile(noInterpreter.executable, "exit 0\n");
  std::filesystem::permissions(noInterpreter.executable, std::filesystem::perms::owner_all);
  EXPECT_EQ(run(noInterpreter), ProcessOutcome(ProcessLaunchFailed{ENOEXEC}));
}

INSTANTIATE_TEST_SUITE_P(ExitWatches, PosixProcessLauncherTest,
                         ::testing::Values(PosixProcessLauncher::ExitWatch::processDescriptor,
                                           PosixProcessLauncher::ExitWatch::polling),
                         [](const ::testing::TestParamInfo<PosixProcessLauncher::ExitWatch>& watch) {
                           return watch.param == PosixProcessLauncher::ExitWatch::polling ? "Polling"
                                                                                         : "ProcessDescriptor";
                         });

}  // namespace
}  // namespace kestrona
