#include "Platform/RunLoop/RunLoopTimer.h"

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <cmath>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {
namespace {

using SteadyClock = std::chrono::steady_clock;

double secondsOf(SteadyClock::time_point time) {
  return std::chrono::duration<double>(time.time_since_epoch()).count();
}

SteadyClock::time_point timePointOf(double seconds) {
  return SteadyClock::time_point(
      std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(seconds)));
}

SteadyClock::duration durationOf(double seconds) {
  return std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(seconds));
}

}  // namespace

struct RunLoopTimer::State {
  State(MainLoop& loop, double repeatInterval, Action timerAction)
      : timer(loop.context()), interval(repeatInterval), action(std::move(timerAction)) {}

  asio::steady_timer timer;
  // Zero for a one-shot timer.
  double interval;
  Action action;
  bool valid = true;
};

namespace {

// The handler holds the state weakly: a timer destroyed before it fires
// leaves nothing behind, and the handler then finds nothing to call.
void arm(const std::shared_ptr<RunLoopTimer::State>& state) {
  std::weak_ptr<RunLoopTimer::State> weak = state;
  state->timer.async_wait([weak](const std::error_code& error) {
    std::shared_ptr<RunLoopTimer::State> strong = weak.lock();
    // A cancelled timer may still find its handler queued: valid says no.
    if (error || !strong || !strong->valid) return;
    if (strong->interval > 0) {
      double next = RunLoopTimer::nextFireDate(secondsOf(strong->timer.expiry()), strong->interval,
                                               secondsOf(SteadyClock::now()));
      strong->timer.expires_at(timePointOf(next));
      arm(strong);
    } else {
      strong->valid = false;
    }
    // The strong reference keeps the action alive even if it destroys its
    // own timer.
    strong->action();
  });
}

}  // namespace

RunLoopTimer::RunLoopTimer(std::shared_ptr<State> state) : state_(std::move(state)) {}

RunLoopTimer::~RunLoopTimer() { cancel(); }

std::unique_ptr<RunLoopTimer> RunLoopTimer::once(MainLoop& loop, double delay, Action action) {
  auto state = std::make_shared<State>(loop, 0.0, std::move(action));
  state->timer.expires_after(durationOf(std::max(delay, 0.0)));
  arm(state);
  return std::unique_ptr<RunLoopTimer>(new RunLoopTimer(std::move(state)));
}

std::unique_ptr<RunLoopTimer> RunLoopTimer::repeating(MainLoop& loop, double interval, Action action) {
  precondition(interval > 0, "a repeating timer needs a positive interval");
  auto state = std::make_shared<State>(loop, interval, std::move(action));
  state->timer.expires_after(durationOf(interval));
  arm(state);
  return std::unique_ptr<RunLoopTimer>(new RunLoopTimer(std::move(state)));
}

std::unique_ptr<RunLoopTimer> RunLoopTimer::everyFullMinute(MainLoop& loop, Action action) {
  auto state = std::make_shared<State>(loop, 60.0, std::move(action));
  state->timer.expires_after(durationOf(delayToNextFullMinute(Date::now())));
  arm(state);
  return std::unique_ptr<RunLoopTimer>(new RunLoopTimer(std::move(state)));
}

void RunLoopTimer::cancel() noexcept {
  if (!state_->valid) return;
  state_->valid = false;
  state_->timer.cancel();
}

bool RunLoopTimer::isValid() const noexcept { return state_->valid; }

double RunLoopTimer::nextFireDate(double previous, double interval, double now) noexcept {
  double next = previous + interval;
  if (next > now) return next;
  // Late by more than an interval: skip the firings that have passed.
  double skipped = std::floor((now - previous) / interval) + 1;
  next = previous + skipped * interval;
  // Rounding may leave the sum at now; the next firing is always later.
  while (next <= now) next += interval;
  return next;
}

double RunLoopTimer::delayToNextFullMinute(Date now) noexcept {
  double intoMinute = std::fmod(now.timeIntervalSince1970(), 60.0);
  // Before 1970 fmod is negative; the position within the minute is not.
  if (intoMinute < 0) intoMinute += 60.0;
  return 60.0 - intoMinute + 0.1;
}

}  // namespace kestrona
