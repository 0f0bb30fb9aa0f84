// An absolute instant.
//
// A Date is seconds since 1970-01-01T00:00:00Z in a double, as every date in
// this system is (widget files write exactly this number). It has no time
// zone and no calendar; Calendar turns it into days and months. Date() is
// the reference instant 1970 itself, not the present: the present moment is
// Date::now(), which asks the process's current Clock (see Clock.h), so
// tests can fix it. Values are immutable and thread-safe.
#pragma once

#include <compare>
#include <functional>

namespace kestrona {

class Date {
 public:
  constexpr Date() = default;
  constexpr explicit Date(double timeIntervalSince1970) : seconds_(timeIntervalSince1970) {}

  // The present moment by the process's current clock.
  static Date now();

  static constexpr Date distantPast() { return Date(-62135769600.0); }
  static constexpr Date distantFuture() { return Date(64092211200.0); }

  // Fixed lengths in seconds, for arithmetic that ignores the calendar.
  // A year here is the tropical year, not 365 days.
  static constexpr double minuteInSeconds() { return 60; }
  static constexpr double hourInSeconds() { return 3600; }
  static constexpr double dayInSeconds() { return 86400; }
  static constexpr double weekInSeconds() { return 604800; }
  static constexpr double yearInSeconds() { return 31556926; }

  constexpr double timeIntervalSince1970() const noexcept { return seconds_; }
  constexpr double timeIntervalSince(Date other) const noexcept { return seconds_ - other.seconds_; }
  constexpr Date addingTimeInterval(double seconds) const noexcept { return Date(seconds_ + seconds); }

  friend constexpr bool operator==(Date, Date) = default;
  friend constexpr auto operator<=>(Date, Date) = default;

 private:
  double seconds_ = 0;
};

}  // namespace kestrona

template <>
struct std::hash<kestrona::Date> {
  std::size_t operator()(kestrona::Date date) const noexcept {
    return std::hash<double>{}(date.timeIntervalSince1970());
  }
};
