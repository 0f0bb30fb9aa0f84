#include "Platform/SystemTime/SystemTimeWatcher.h"

#include <gtest/gtest.h>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/SystemTime/ManualRunLoopScheduler.h"
#include "Platform/SystemTime/SystemTimeNotifications.h"
#include "tests/Platform/SystemTime/HandSignals.h"
#include "tests/Platform/Time/TestDates.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::HandSignals;
using testing::utc;

class SystemTimeWatcherTest : public ::testing::Test {
 protected:
  SystemTimeWatcherTest() {
    environment.set("TZ", "Europe/Berlin");
    auto source = std::make_unique<HandSignals>();
    signals = source.get();
    watcher = std::make_unique<SystemTimeWatcher>(center, [this] { return clock.now(); }, scheduler,
                                                  std::move(source));
    token = center.addObserver(std::nullopt, nullptr, [this](const Notification& n) { posted.push_back(n.name); });
  }
  // What was posted since the last call.
  std::vector<std::string> taken() { return std::exchange(posted, {}); }

  testing::ScopedEnvironment environment;
  ManualClock clock{utc(2026, 3, 28, 22, 58, 30)};  // 23:58:30 in Berlin, the day before summer time
  ManualRunLoopScheduler scheduler{clock};
  NotificationCenter center;
  HandSignals* signals = nullptr;
  std::unique_ptr<SystemTimeWatcher> watcher;
  ObserverToken token;
  std::vector<std::string> posted;
};

using Names = std::vector<std::string>;

TEST_F(SystemTimeWatcherTest, DayChangeComesJustAfterMidnightAndQuietTimePostsNothing) {
  watcher->start();
  EXPECT_DOUBLE_EQ(scheduler.nextFireDelay().value(), 60);
  scheduler.advance(60);
  EXPECT_EQ(taken(), Names{});
  EXPECT_NEAR(scheduler.nextFireDelay().value(), 30.1, 1e-6);  // midnight + 0.1 s
  scheduler.advance(30.1);
  EXPECT_EQ(taken(), Names{std::string(NSCalendarDayChanged)});
  // The 23-hour day passes without a clock or zone change.
  scheduler.advance(23 * 3600);
  EXPECT_EQ(taken(), Names{std::string(NSCalendarDayChanged)});
  watcher->stop();
  scheduler.advance(2 * 86400);
  EXPECT_EQ(taken(), Names{});
  EXPECT_EQ(scheduler.validTimerCount(), 0u);
}

TEST_F(SystemTimeWatcherTest, ClockJumpsAreToldBySignalOrByTheNextCheck) {
  watcher->start();
  // A set that the system signals is posted at once, however small.
  clock.advance(0.5);
  signals->send(SystemTimeSignal::clockSet);
  EXPECT_EQ(taken(), Names{std::string(NSSystemClockDidChange)});
  // A jump across midnight with no signal (a resume from sleep) is found by the next check.
  clock.advance(3 * 3600);
  scheduler.advance(60);
  EXPECT_EQ(taken(), (Names{std::string(NSSystemClockDidChange), std::string(NSCalendarDayChanged)}));
  // Drift within the tolerance is no change.
  clock.advance(-0.9);
  scheduler.advance(60);
  EXPECT_EQ(taken(), Names{});
}

TEST_F(SystemTimeWatcherTest, ZoneChangesAreToldOnceWhetherSignalledOrFoundInTheEnvironment) {
  watcher->start();
  environment.set("TZ", "America/New_York");  // 17:58:30 there, the same day
  signals->send(SystemTimeSignal::timeZoneFilesChanged);
  EXPECT_EQ(taken(), Names{std::string(NSSystemTimeZoneDidChange)});
  signals->send(SystemTimeSignal::timeZoneFilesChanged);
  EXPECT_EQ(taken(), Names{});
  // Without a signal the next check finds it; Tokyo is on the next day already.
  environment.set("TZ", "Asia/Tokyo");
  scheduler.advance(60);
  EXPECT_EQ(taken(), (Names{std::string(NSSystemTimeZoneDidChange), std::string(NSCalendarDayChanged)}));
}

}  // namespace
}  // namespace kestrona
