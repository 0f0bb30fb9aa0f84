// A RunLoopScheduler whose time moves only when a test says so.
//
// advance(seconds) moves elapsed time and the ManualClock it was given
// forward together, and fires every timer that falls due on the way, in the
// order of their due times (in the order they were made when equal), with
// the clock standing at each timer's due time while its action runs. A
// repeating timer fires once per interval passed. Moving the ManualClock by
// itself (set) is a jump of the wall clock: elapsed time stays, no timer
// fires. dispatchToMain runs the work at once: the test's thread is the
// main thread.
//
// Threading: one thread, the test's.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/SystemTime/RunLoopScheduler.h"
#include "Platform/Time/Clock.h"

namespace kestrona {

class ManualRunLoopScheduler final : public RunLoopScheduler {
 public:
  explicit ManualRunLoopScheduler(ManualClock& clock) : clock_(clock) {}

  std::unique_ptr<ScheduledTimer> scheduledTimer(double interval, bool repeats, Action action) override;
  void dispatchToMain(Action work) override { work(); }
  double uptime() const override { return uptime_; }

  void advance(double seconds);
  // Seconds from now to the earliest valid timer; none without one.
  std::optional<double> nextFireDelay() const;
  // Valid timers, one-shot and repeating.
  std::size_t validTimerCount() const;

  struct Entry;

 private:
  std::shared_ptr<Entry> earliestDue() const;

  ManualClock& clock_;
  double uptime_ = 0;
  std::uint64_t made_ = 0;
  std::vector<std::weak_ptr<Entry>> entries_;
};

}  // namespace kestrona
