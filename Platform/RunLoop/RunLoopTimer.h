// Timers on the main loop.
//
// A RunLoopTimer calls its action on its loop's thread: once after a delay,
// repeatedly at a fixed interval, or aligned to the wall-clock minute (just
// after each full minute, and every 60 seconds after that).
//
// Repeating timers do not drift: the n-th firing is scheduled for
// start + n * interval, however long the actions take. A firing that comes so
// late that later ones have passed as well skips those, as a run-loop timer
// does: it never fires twice in a row to catch up (nextFireDate()).
//
// The minute-aligned timer fires first at delayToNextFullMinute(now) from
// now, that is 0.1 s after the next full minute, then every 60 seconds from
// that first firing. Its first delay is reckoned from Date::now() (the
// process's current clock); the schedule after it runs on the steady clock,
// as a repeating timer's does.
//
// A timer is owned by whoever made it. Cancelling it (cancel() or
// destruction) guarantees its action is never called afterwards, even when
// its firing was already due. A one-shot timer is spent after it fires.
// The action may cancel or destroy its own timer.
//
// Threading: make, cancel and destroy timers on the loop's thread (or before
// the loop runs). The loop must outlive its timers.
#pragma once

#include <functional>
#include <memory>

#include "Platform/RunLoop/MainLoop.h"
#include "Platform/Time/Date.h"

namespace kestrona {

class RunLoopTimer {
 public:
  using Action = std::function<void()>;

  // Fires once, delay seconds from now (at once when delay <= 0).
  static std::unique_ptr<RunLoopTimer> once(MainLoop& loop, double delay, Action action);
  // Fires every interval seconds (interval > 0), the first time one interval
  // from now.
  static std::unique_ptr<RunLoopTimer> repeating(MainLoop& loop, double interval, Action action);
  // Fires just after each full minute of the wall clock.
  static std::unique_ptr<RunLoopTimer> everyFullMinute(MainLoop& loop, Action action);

  ~RunLoopTimer();
  RunLoopTimer(const RunLoopTimer&) = delete;
  RunLoopTimer& operator=(const RunLoopTimer&) = delete;

  void cancel() noexcept;
  // False after cancel() and after a one-shot timer has fired.
  bool isValid() const noexcept;

  // Schedule arithmetic, in seconds on any one time line.
  //
  // The firing after the one scheduled for previous, given that the present
  // is now: previous + interval, or, when that has passed already, the first
  // previous + n * interval after now. interval must be positive.
  static double nextFireDate(double previous, double interval, double now) noexcept;
  // Seconds from now to 0.1 s after the next full minute of the wall clock:
  // 60 - (seconds since 1970 modulo 60) + 0.1, so above 0.1 and at most 60.1.
  static double delayToNextFullMinute(Date now) noexcept;

 // Internal; public so that the handlers in the source file can name it.
  struct State;

 private:
  explicit RunLoopTimer(std::shared_ptr<State> state);

  std::shared_ptr<State> state_;
};

}  // namespace kestrona
