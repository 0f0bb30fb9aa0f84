// Posts the system's time notifications (SystemTimeNotifications.h) on
// Linux, where nothing else does.
//
// The watcher remembers, at each check, the wall-clock date, the elapsed
// time (the scheduler's uptime), the zone (TimeZone::current()) and the
// calendar day in that zone. A check compares the present with them and
// posts, in this order and each at most once: NSSystemTimeZoneDidChange when
// the zone's identifier changed; NSSystemClockDidChange when the wall clock
// moved more than clockTolerance seconds apart from the elapsed time, or the
// operating system said it was set; NSCalendarDayChanged when the day is
// another. A check runs every checkInterval seconds of elapsed time, and
// just after (0.1 s) each midnight of the current zone, so a day change is
// posted on time; and at once on each signal of the SystemTimeSignalSource
// (clock set, zone files changed). A change of TZ inside the process, which
// no signal reports, is posted by the next check, within checkInterval.
//
// start() takes the present as the reference, so nothing is posted for what
// was before; it is idempotent. A signal source that fails to start is
// logged (label "SystemTime") and the periodic checks carry on without it.
// stop() ends checks and signals. main() is the process's watcher: the
// default centre, the current clock, the main loop and the Linux source;
// nothing starts it but a caller.
//
// Threading: everything on the main thread; notifications are posted there.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Time/Date.h"

namespace kestrona {

class NotificationCenter;
class RunLoopScheduler;
class ScheduledTimer;
class SystemTimeSignalSource;

class SystemTimeWatcher {
 public:
  static constexpr double checkInterval = 60;
  static constexpr double clockTolerance = 1;

  SystemTimeWatcher(NotificationCenter& center, std::function<Date()> now, RunLoopScheduler& scheduler,
                    std::unique_ptr<SystemTimeSignalSource> source);
  ~SystemTimeWatcher();
  SystemTimeWatcher(const SystemTimeWatcher&) = delete;
  SystemTimeWatcher& operator=(const SystemTimeWatcher&) = delete;

  static SystemTimeWatcher& main();

  void start();
  void stop() noexcept;
  bool isRunning() const noexcept { return running_; }
  // Compares the present with the last check, posts what changed, and plans
  // the next check. clockWasSet reports a set the system has signalled.
  void check(bool clockWasSet = false);

 private:
  using Day = std::array<int, 3>;
  void remember();
  void scheduleNextCheck();

  NotificationCenter& center_;
  std::function<Date()> now_;
  RunLoopScheduler& scheduler_;
  std::unique_ptr<SystemTimeSignalSource> source_;
  std::unique_ptr<ScheduledTimer> nextCheck_;
  bool running_ = false;
  Date lastDate_;
  double lastUptime_ = 0;
  std::string zone_;
  Day day_{};
};

}  // namespace kestrona
