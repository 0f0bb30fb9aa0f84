#include "Platform/Time/DateInterval.h"

#include <algorithm>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

DateInterval::DateInterval(Date start, Date end) : start_(start), duration_(end.timeIntervalSince(start)) {
  precondition(start <= end, "DateInterval: the end lies before the start");
}

DateInterval::DateInterval(Date start, double duration) : start_(start), duration_(duration) {
  precondition(duration >= 0, "DateInterval: the duration is negative");
}

std::optional<DateInterval> DateInterval::intersection(const DateInterval& other) const {
  if (!intersects(other)) return std::nullopt;
  return DateInterval(std::max(start_, other.start_), std::min(end(), other.end()));
}

}  // namespace kestrona
