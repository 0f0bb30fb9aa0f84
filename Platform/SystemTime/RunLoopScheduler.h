// The seam between code that schedules by elapsed time on the main loop
// and the loop's real timers.
//
// A RunLoopScheduler makes timers that fire on the main thread after an
// interval of elapsed time (once, or again every interval), runs work on the
// main thread (dispatchToMain: at once when called there, else queued), and
// reads a clock of elapsed time that only runs forward (uptime), against
// which code can tell a jump of the wall clock from time that really passed.
// MainLoopScheduler is the real one, over RunLoopTimer and the steady clock;
// ManualRunLoopScheduler (beside it) lets tests move time without sleeping.
//
// A ScheduledTimer belongs to whoever made it. invalidate(), or destroying
// it, guarantees its action is never called afterwards, even when its firing
// was due; the action may invalidate or destroy its own timer. A one-shot
// timer is spent (not valid) once it has fired.
//
// Threading: make, invalidate and destroy timers on the main thread;
// dispatchToMain and uptime from any thread.
#pragma once

#include <functional>
#include <memory>

namespace kestrona {

class MainLoop;
class RunLoopTimer;

class ScheduledTimer {
 public:
  virtual ~ScheduledTimer() = default;
  virtual void invalidate() noexcept = 0;
  virtual bool isValid() const noexcept = 0;
};

class RunLoopScheduler {
 public:
  using Action = std::function<void()>;

  virtual ~RunLoopScheduler() = default;
  // Fires interval seconds from now, and with repeats every interval seconds
  // after that, without drift (interval > 0 when repeating).
  [[nodiscard]] virtual std::unique_ptr<ScheduledTimer> scheduledTimer(double interval, bool repeats,
                                                                       Action action) = 0;
  virtual void dispatchToMain(Action work) = 0;
  // Seconds of elapsed time since an arbitrary fixed moment.
  virtual double uptime() const = 0;
};

// The main loop's own timers.
class MainLoopScheduler final : public RunLoopScheduler {
 public:
  explicit MainLoopScheduler(MainLoop& loop) : loop_(loop) {}
  // The scheduler of MainLoop::main(), made on first use.
  static MainLoopScheduler& main();

  std::unique_ptr<ScheduledTimer> scheduledTimer(double interval, bool repeats, Action action) override;
  void dispatchToMain(Action work) override;
  double uptime() const override;

 private:
  MainLoop& loop_;
};

}  // namespace kestrona
