// Tells the process when the wall-clock minute and hour change.
//
// After start(), a one-shot timer fires 0.1 s after the next full minute,
// then a repeating timer every 60 s; each firing runs update() on the main
// thread, which compares the hour and minute of now() (in the current
// calendar) with those of the last check and posts KSHourChanged, then
// KSMinuteChanged, for each that differs (by inequality, so a clock set back
// posts too; nil object, no user info). The system's time events
// (NSCalendarDayChanged, NSSystemTimeZoneDidChange, NSSystemClockDidChange)
// run update() and then syncTimer(), which aligns the cycle anew. The first
// check after start() compares with values taken in that start(), so
// nothing is posted at once. stop() ends timers and subscriptions; the last
// hour and minute keep their stale values.
//
// The default notificator posts on the default centre, reads Date::now(),
// schedules on the main loop, and its start() starts the process's
// SystemTimeWatcher, which posts the system's time events on Linux; stop()
// leaves the watcher running, since others may listen to those events too.
// Tests give the centre, the clock and a ManualRunLoopScheduler instead.
//
// Threading: main thread only. The object must outlive nothing it scheduled:
// stop() and destruction cancel everything, including work dispatched but not
// yet run.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/Time/Date.h"

namespace kestrona {

class RunLoopScheduler;
class ScheduledTimer;
class SystemTimeWatcher;

inline constexpr std::string_view KSMinuteChanged = "KSMinuteChanged";
inline constexpr std::string_view KSHourChanged = "KSHourChanged";

class SystemTimeUpdateNotificator {
 public:
  SystemTimeUpdateNotificator();
  // The seams of the class's behaviour; watcher, when given, is started by
  // start() (and is not owned).
  SystemTimeUpdateNotificator(NotificationCenter& notificationCenter, std::function<Date()> now,
                              RunLoopScheduler& scheduler, SystemTimeWatcher* watcher = nullptr);
  ~SystemTimeUpdateNotificator();
  SystemTimeUpdateNotificator(const SystemTimeUpdateNotificator&) = delete;
  SystemTimeUpdateNotificator& operator=(const SystemTimeUpdateNotificator&) = delete;

  void start();
  void stop();
  void syncTimer();
  void update();
  void systemTimeDidChange();

  int lastHour() const noexcept { return lastHour_; }
  int lastMinute() const noexcept { return lastMinute_; }

 private:
  void syncingTimerDidFire();
  void invalidateTimers();
  // Runs work on the main thread unless this object is gone by then.
  void onMain(void (SystemTimeUpdateNotificator::*work)());

  int lastHour_ = 0;
  int lastMinute_ = 0;
  std::unique_ptr<ScheduledTimer> syncingTimer_;
  std::unique_ptr<ScheduledTimer> timer_;
  NotificationCenter& notificationCenter_;
  std::function<Date()> now_;
  RunLoopScheduler& scheduler_;
  SystemTimeWatcher* watcher_;
  std::vector<ObserverToken> subscriptions_;
  std::shared_ptr<SystemTimeUpdateNotificator*> self_;
};

}  // namespace kestrona
