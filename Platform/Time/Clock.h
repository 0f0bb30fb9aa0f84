// The one seam through which this system reads the wall clock.
//
// Code that needs "now" calls Date::now(), which reads Clock::current().
// Long-lived objects that schedule by the clock (hosts, timers) take a
// Clock& in their constructor instead, so tests hand them a ManualClock and
// move time forward without sleeping.
//
// Threading: Clock::current() may be read from any thread. Replacing the
// current clock (ScopedClock) is for tests and the start of main only, while
// no other thread reads it.
#pragma once

#include <atomic>

#include "Platform/Time/Date.h"

namespace kestrona {

class Clock {
 public:
  virtual ~Clock() = default;
  virtual Date now() const = 0;

  // The operating system's real-time clock.
  static Clock& system();
  // The clock Date::now() reads: the system clock unless a ScopedClock is alive.
  static Clock& current();

 private:
  friend class ScopedClock;
  static std::atomic<Clock*> current_;
};

// A clock that stands still until told to move. Thread-safe.
class ManualClock final : public Clock {
 public:
  explicit ManualClock(Date start = Date()) : seconds_(start.timeIntervalSince1970()) {}

  Date now() const override { return Date(seconds_.load()); }
  void set(Date date) { seconds_.store(date.timeIntervalSince1970()); }
  void advance(double seconds) { set(now().addingTimeInterval(seconds)); }

 private:
  std::atomic<double> seconds_;
};

// Makes clock the current one for its lifetime and then restores the previous.
class ScopedClock {
 public:
  explicit ScopedClock(Clock& clock) : previous_(Clock::current_.exchange(&clock)) {}
  ~ScopedClock() { Clock::current_.store(previous_); }
  ScopedClock(const ScopedClock&) = delete;
  ScopedClock& operator=(const ScopedClock&) = delete;

 private:
  Clock* previous_;
};

}  // namespace kestrona
