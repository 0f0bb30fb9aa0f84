#include "SharedCore/Timer/SystemTimeUpdateNotificator.h"

#include <gtest/gtest.h>

#include "Platform/SystemTime/ManualRunLoopScheduler.h"
#include "Platform/SystemTime/SystemTimeNotifications.h"
#include "Platform/SystemTime/SystemTimeWatcher.h"
#include "tests/Platform/SystemTime/HandSignals.h"
#include "tests/Platform/Time/TestDates.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::HandSignals;
using testing::utc;
using Names = std::vector<std::string>;

const std::string kHour(KSHourChanged);
const std::string kMinute(KSMinuteChanged);

// The notificator and the system's watcher on one manual clock, posting to
// one centre; the user is in Berlin (UTC+1 in January).
class Notificator : public ::testing::Test {
 protected:
  Notificator() { environment.set("TZ", "Europe/Berlin"); }
  void startAt(Date date) {
    clock.set(date);
    watcher.start();
    notificator.start();
  }
  // The clock notifications since the last call, the system's left out.
  Names taken() {
    Names clockNames;
    for (const auto& name : std::exchange(posted, {})) {
      if (name == kHour || name == kMinute) clockNames.push_back(name);
    }
    return clockNames;
  }

  testing::ScopedEnvironment environment;
  ManualClock clock;
  ManualRunLoopScheduler scheduler{clock};
  NotificationCenter center;
  HandSignals* signals = new HandSignals;
  SystemTimeWatcher watcher{center, [this] { return clock.now(); }, scheduler,
                            std::unique_ptr<SystemTimeSignalSource>(signals)};
  SystemTimeUpdateNotificator notificator{center, [this] { return clock.now(); }, scheduler};
  ObserverToken token = center.addObserver(std::nullopt, nullptr, [this](const Notification& n) {
    posted.push_back(n.name);
  });
  Names posted;
};

TEST_F(Notificator, FirstCheckComesJustAfterTheFullMinute) {
  struct Row {
    Date start;
    double delay;
    Names firstPosts;
  };
  const Row rows[] = {
      {utc(2026, 1, 15, 11, 0, 59.95), 0.15, {kMinute}},
      {utc(2026, 1, 15, 11, 0, 0), 60.1, {kMinute}},
      {utc(2026, 1, 15, 11, 59, 59), 1.1, {kHour, kMinute}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.delay);
    clock.set(row.start);
    notificator.start();
    EXPECT_EQ(taken(), Names{});
    EXPECT_NEAR(scheduler.nextFireDelay().value(), row.delay, 1e-6);
    scheduler.advance(row.delay);
    EXPECT_EQ(taken(), row.firstPosts);
    notificator.stop();
  }
}

TEST_F(Notificator, RepeatsEveryMinuteAndPostsTheHourFirst) {
  startAt(utc(2026, 1, 15, 11, 30, 20));
  scheduler.advance(40.1);
  EXPECT_EQ(taken(), Names{kMinute});
  scheduler.advance(28 * 60);  // to 12:59:00.1 in Berlin
  EXPECT_EQ(taken(), Names(28, kMinute));
  scheduler.advance(60);
  EXPECT_EQ(taken(), (Names{kHour, kMinute}));
  // A check of its own when the clock has not moved on posts nothing.
  notificator.update();
  EXPECT_EQ(taken(), Names{});
  notificator.stop();
  scheduler.advance(3600);
  EXPECT_EQ(taken(), Names{});
}

TEST_F(Notificator, ClockAndZoneChangesPostAtOnceAndRealign) {
  startAt(utc(2026, 1, 15, 11, 0, 10));
  // Set forward across minutes: the system event brings the check, then a new alignment.
  clock.set(utc(2026, 1, 15, 11, 5, 30));
  signals->send(SystemTimeSignal::clockSet);
  EXPECT_EQ(taken(), Names{kMinute});
  EXPECT_NEAR(scheduler.nextFireDelay().value(), 30.1, 1e-6);
  // Set back by whole hours: the minute stays, only the hour is told.
  clock.set(utc(2026, 1, 15, 9, 5, 40));
  signals->send(SystemTimeSignal::clockSet);
  EXPECT_EQ(taken(), Names{kHour});
  // Kolkata is 4 h 30 min ahead of Berlin: a zone change moves both.
  environment.set("TZ", "Asia/Kolkata");
  signals->send(SystemTimeSignal::timeZoneFilesChanged);
  EXPECT_EQ(taken(), (Names{kHour, kMinute}));
}

}  // namespace
}  // namespace kestrona
