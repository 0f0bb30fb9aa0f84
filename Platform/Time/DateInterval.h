// A span of time between two instants, both included.
//
// A DateInterval has a start and a duration of zero or more seconds; its end
// is start plus duration. contains() and intersects() treat it as closed, so
// intervals that only touch intersect, and an interval of zero length
// intersects what holds its one instant. A start after the end, or a
// negative duration, is a programming error and stops the process. Values
// are immutable and thread-safe.
#pragma once

#include <compare>
#include <optional>

#include "Platform/Time/Date.h"

namespace kestrona {

class DateInterval {
 public:
  // The empty interval at the reference instant of 1970.
  DateInterval() = default;
  DateInterval(Date start, Date end);
  DateInterval(Date start, double duration);

  Date start() const noexcept { return start_; }
  Date end() const noexcept { return start_.addingTimeInterval(duration_); }
  double duration() const noexcept { return duration_; }

  bool contains(Date date) const noexcept { return start_ <= date && date <= end(); }
  bool intersects(const DateInterval& other) const noexcept {
    return start_ <= other.end() && other.start_ <= end();
  }
  // The common part of two intersecting intervals, or none.
  std::optional<DateInterval> intersection(const DateInterval& other) const;

  // Ordered by start, then by duration.
  friend bool operator==(const DateInterval&, const DateInterval&) = default;
  friend auto operator<=>(const DateInterval&, const DateInterval&) = default;

 private:
  Date start_;
  double duration_ = 0;
};

}  // namespace kestrona
