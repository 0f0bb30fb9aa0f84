#include <poll.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "Platform/WidgetHost/InotifyFileChangeMonitor.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;

// Collects reported changes until expected has been seen or the kernel has
// stayed silent for a while; returns everything reported.
std::set<fs::path> changesUntil(InotifyFileChangeMonitor& monitor, const std::set<fs::path>& expected) {
  std::set<fs::path> seen;
  for (int round = 0; round < 20; ++round) {
    for (const fs::path& file : monitor.takeChangedFiles()) seen.insert(file);
    if (std::includes(seen.begin(), seen.end(), expected.begin(), expected.end()) && !expected.empty()) break;
    pollfd descriptor{.fd = monitor.fileDescriptor(), .events = POLLIN, .revents = 0};
    if (::poll(&descriptor, 1, expected.empty() ? 50 : 500) == 0 && expected.empty()) break;
  }
  return seen;
}

class InotifyFileChangeMonitorTest : public ::testing::Test {
 protected:
  testing::TemporaryDirectory directory;
  fs::path folder = directory.path() / "group" / "widgetData";
  fs::path timer = folder / "timer";
  fs::path recent = folder / "recentTasks";
  std::unique_ptr<InotifyFileChangeMonitor> monitor = InotifyFileChangeMonitor::make();
};

TEST_F(InotifyFileChangeMonitorTest, FolderMadeAfterTheWatchIsPickedUpWithItsFiles) {
  monitor->watch(timer);
  monitor->watch(recent);
  EXPECT_TRUE(changesUntil(*monitor, {}).empty());
  testing::writeFile(timer, "{}");
  std::set<fs::path> seen = changesUntil(*monitor, {timer});
  EXPECT_TRUE(seen.count(timer));
  EXPECT_FALSE(seen.count(recent)) << "a file that is not there has not changed";
}

TEST_F(InotifyFileChangeMonitorTest, InPlaceWritesRenamesAndRemovalsOfWatchedFilesAreReported) {
  testing::writeFile(timer, "{}");
  monitor->watch(timer);
  monitor->watch(recent);
  EXPECT_TRUE(changesUntil(*monitor, {}).empty());

  testing::writeFile(timer, R"({"taskName":"Write"})");
  EXPECT_EQ(changesUntil(*monitor, {timer}), std::set<fs::path>{timer});

  testing::writeFile(folder / "unrelated", "x");
  testing::writeFile(folder / "recentTasks.tmp", "{}");
  fs::rename(folder / "recentTasks.tmp", recent);
  EXPECT_EQ(changesUntil(*monitor, {recent}), std::set<fs::path>{recent});

  fs::remove(timer);
  EXPECT_EQ(changesUntil(*monitor, {timer}), std::set<fs::path>{timer});
}

TEST_F(InotifyFileChangeMonitorTest, RemovedFolderReportsItsFilesAndIsWatchedAgainWhenRemade) {
  testing::writeFile(timer, "{}");
  monitor->watch(timer);
  fs::remove_all(folder);
  EXPECT_TRUE(changesUntil(*monitor, {timer}).count(timer));
  testing::writeFile(timer, "{}");
  EXPECT_TRUE(changesUntil(*monitor, {timer}).count(timer));
}

}  // namespace
}  // namespace kestrona
