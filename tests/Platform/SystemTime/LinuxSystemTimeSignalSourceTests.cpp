#include "Platform/SystemTime/LinuxSystemTimeSignalSource.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "Platform/Foundation/Error.h"
#include "Platform/RunLoop/MainLoop.h"
#include "Platform/RunLoop/RunLoopTimer.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

// The kernel's own events: a zone file replaced in a folder of the test's.
// Setting the real clock needs privileges a test does not have; that the
// clock timer arms is shown by start() succeeding.
TEST(LinuxSystemTimeSignalSource, ReplacingAZoneFileSignalsOnTheLoop) {
  testing::TemporaryDirectory folder;
  MainLoop loop;
  LinuxSystemTimeSignalSource source(loop, folder.path().string());
  std::vector<SystemTimeSignal> signals;
  source.start([&](SystemTimeSignal signal) {
    signals.push_back(signal);
    loop.stop();
  });
  testing::writeFile(folder.path() / "unrelated", "x");
  testing::writeFile(folder.path() / "localtime.tmp", "TZif");
  std::filesystem::rename(folder.path() / "localtime.tmp", folder.path() / "localtime");
  // A bound on the wait, so a missing event fails instead of hanging.
  auto limit = RunLoopTimer::once(loop, 10, [&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(signals, std::vector<SystemTimeSignal>{SystemTimeSignal::timeZoneFilesChanged});

  source.stop();
  testing::writeFile(folder.path() / "timezone", "Europe/Berlin\n");
  loop.restart();
  loop.poll();
  EXPECT_EQ(signals.size(), 1u);
}

TEST(LinuxSystemTimeSignalSource, AFolderThatCannotBeWatchedIsAPosixError) {
  MainLoop loop;
  LinuxSystemTimeSignalSource source(loop, "/nonexistent/zone/files");
  try {
    source.start([](SystemTimeSignal) {});
    FAIL() << "start() should have thrown";
  } catch (const Error& error) {
    EXPECT_TRUE(error.is("NSPOSIXErrorDomain", ENOENT)) << error.what();
  }
}

}  // namespace
}  // namespace kestrona
