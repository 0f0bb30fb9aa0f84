#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "Platform/RunLoop/MainLoop.h"
#include "Platform/RunLoop/RunLoopTimer.h"

namespace kestrona {
namespace {

TEST(RepeatingSchedule, LateActionsDoNotShiftLaterFirings) {
  // Each firing is handled 0.3 s late; the schedule stays on whole seconds.
  double fire = 100.0;
  for (int n = 1; n <= 1000; ++n) {
    fire = RunLoopTimer::nextFireDate(fire, 1.0, fire + 0.3);
    ASSERT_EQ(fire, 100.0 + n);
  }
  // A fractional interval accumulates no more than rounding.
  double tick = 0;
  for (int n = 1; n <= 600; ++n) tick = RunLoopTimer::nextFireDate(tick, 0.1, tick + 0.05);
  EXPECT_NEAR(tick, 60.0, 1e-9);
}

TEST(RepeatingSchedule, AFiringLateByMoreThanAnIntervalSkipsThePassedOnes) {
  EXPECT_EQ(RunLoopTimer::nextFireDate(100.0, 1.0, 102.5), 103.0);
  // Exactly on a scheduled instant: that one has passed too.
  EXPECT_EQ(RunLoopTimer::nextFireDate(100.0, 1.0, 102.0), 103.0);
  EXPECT_EQ(RunLoopTimer::nextFireDate(0.0, 60.0, 3599.9), 3600.0);
  EXPECT_EQ(RunLoopTimer::nextFireDate(0.0, 60.0, 59.0), 60.0);
  for (double now : {0.1 * 3, 1e6 + 0.7, 12345.6789}) {
    double next = RunLoopTimer::nextFireDate(0.0, 0.1, now);
    EXPECT_GT(next, now);
    EXPECT_LE(next - now, 0.1 + 1e-9);
  }
}

TEST(MinuteAlignment, DelayEndsJustAfterTheNextFullMinute) {
  // 2023-11-14T22:13:00Z is a full minute.
  const double minute = 1699999980.0;
  EXPECT_NEAR(RunLoopTimer::delayToNextFullMinute(Date(minute + 59.95)), 0.15, 1e-6);
  EXPECT_NEAR(RunLoopTimer::delayToNextFullMinute(Date(minute)), 60.1, 1e-6);
  EXPECT_NEAR(RunLoopTimer::delayToNextFullMinute(Date(minute + 0.05)), 60.05, 1e-6);
  EXPECT_NEAR(RunLoopTimer::delayToNextFullMinute(Date(minute + 30)), 30.1, 1e-6);
  // The firing lands 0.1 s into the next minute, from anywhere in this one.
  for (double into = 0; into < 60; into += 0.7) {
    double fire = minute + into + RunLoopTimer::delayToNextFullMinute(Date(minute + into));
    EXPECT_NEAR(fire, minute + 60.1, 1e-6) << into;
  }
  // Before 1970 too.
  EXPECT_NEAR(RunLoopTimer::delayToNextFullMinute(Date(-30.0)), 30.1, 1e-9);
  EXPECT_NEAR(RunLoopTimer::delayToNextFullMinute(Date(-60.0)), 60.1, 1e-9);
}

TEST(RunLoopTimer, OneShotFiresOnceOnTheLoopThread) {
  MainLoop loop;
  int fired = 0;
  auto timer = RunLoopTimer::once(loop, 0, [&] {
    ++fired;
    EXPECT_TRUE(loop.isMainThread());
    loop.post([&] { loop.stop(); });
  });
  EXPECT_TRUE(timer->isValid());
  loop.run();
  EXPECT_EQ(fired, 1);
  EXPECT_FALSE(timer->isValid());
}

TEST(RunLoopTimer, CancelledOrDestroyedTimersNeverFire) {
  MainLoop loop;
  int fired = 0;
  auto cancelled = RunLoopTimer::once(loop, 0, [&] { ++fired; });
  auto destroyed = RunLoopTimer::once(loop, 0, [&] { ++fired; });
  cancelled->cancel();
  destroyed.reset();
  EXPECT_FALSE(cancelled->isValid());
  auto last = RunLoopTimer::once(loop, 0.001, [&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(fired, 0);
}

TEST(RunLoopTimer, ATimerCancelledWhileItsFiringIsQueuedDoesNotFire) {
  MainLoop loop;
  // Both expire before the loop runs, so both firings are ready together:
  // whichever runs first cancels the other, whose firing must then not run.
  std::unique_ptr<RunLoopTimer> first, second;
  int fired = 0;
  first = RunLoopTimer::once(loop, 0, [&] {
    ++fired;
    second->cancel();
  });
  second = RunLoopTimer::once(loop, 0, [&] {
    ++fired;
    first->cancel();
  });
  auto last = RunLoopTimer::once(loop, 0.001, [&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(fired, 1);
}

TEST(RunLoopTimer, RepeatingTimerFiresUntilItDestroysItself) {
  MainLoop loop;
  int fired = 0;
  std::unique_ptr<RunLoopTimer> timer;
  timer = RunLoopTimer::repeating(loop, 0.0005, [&] {
    if (++fired == 3) {
      timer.reset();
      loop.post([&] { loop.stop(); });
    }
  });
  loop.run();
  EXPECT_EQ(fired, 3);
}

TEST(RunLoopTimer, MinuteTimerIsPendingUntilCancelled) {
  MainLoop loop;
  bool fired = false;
  auto timer = RunLoopTimer::everyFullMinute(loop, [&] { fired = true; });
  EXPECT_TRUE(timer->isValid());
  // At most 60.1 s away: nothing is ready now.
  EXPECT_EQ(loop.poll(), 0u);
  timer->cancel();
  EXPECT_FALSE(timer->isValid());
  // The cancelled wait completes as aborted, calling nothing.
  loop.poll();
  EXPECT_FALSE(fired);
}

}  // namespace
}  // namespace kestrona
