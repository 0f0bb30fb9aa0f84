// The parts of a date in a calendar: year, month, day, time of day, weekday
// and week numbers, each optional.
//
// Calendar fills a DateComponents from a date, makes a date from one, adds
// one to a date and measures the difference between two dates in them. A
// field that is absent is not asked for or not given. Numbers follow the
// Gregorian calendar: months 1 to 12, days from 1, weekdays 1 (Sunday) to 7
// (Saturday). Plain data, thread-safe as any value.
#pragma once

#include <optional>

namespace kestrona {

struct DateComponents {
  std::optional<int> era = std::nullopt;
  std::optional<int> year = std::nullopt;
  std::optional<int> month = std::nullopt;
  std::optional<int> day = std::nullopt;
  std::optional<int> hour = std::nullopt;
  std::optional<int> minute = std::nullopt;
  std::optional<int> second = std::nullopt;
  std::optional<int> nanosecond = std::nullopt;
  std::optional<int> weekday = std::nullopt;
  std::optional<int> weekdayOrdinal = std::nullopt;
  std::optional<int> weekOfMonth = std::nullopt;
  std::optional<int> weekOfYear = std::nullopt;
  std::optional<int> yearForWeekOfYear = std::nullopt;

  friend bool operator==(const DateComponents&, const DateComponents&) = default;
};

}  // namespace kestrona
