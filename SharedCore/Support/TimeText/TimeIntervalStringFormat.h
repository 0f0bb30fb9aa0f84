// Durations as text, and the duration rule of time entries.
//
// Every duration in this system is a double of seconds. TimeIntervalStringFormat
// names the ways one is written; toString() writes it. Hours, minutes and
// seconds are taken from the magnitude and cut down, never rounded, so 59.9
// seconds are "0:00:59". Hours are not limited to a day: 90000 seconds are
// "25:00". The sign is written before the hours of the digital forms; the
// decimal form writes it and then the signed value, so that -1800 seconds are
// "--0.50": that doubling is the required text, not a slip.
//
// A duration that is not finite, or whose whole hours do not fit a signed
// 64-bit integer, is a programming error: hours(), minutes(), seconds() and
// toString() stop the process on it.
//
// All functions are pure and thread-safe.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/RawRepresentable.h"
#include "Platform/Time/Date.h"

namespace kestrona {

// For 3725 s and -3725 s:
enum class TimeIntervalStringFormat : int {
  digitalHours = 0,                               // "1" and "1"
  digitalHoursMinutes = 1,                        // "1:02" and "-1:02"
  digitalHoursMinutesWithLeadingZero = 2,         // "01:02" and "-01:02"
  digitalHoursMinutesSeconds = 3,                 // "1:02:05" and "-1:02:05"
  digitalHoursMinutesSecondsWithLeadingZero = 4,  // "01:02:05" and "-01:02:05"
  seconds = 5,                                    // "05" and "05"
  decimalHours = 6,                               // "1.03" and "--1.03"
};

template <>
struct RawRepresentable<TimeIntervalStringFormat> {
  using RawValue = int;
  static constexpr RawValue rawValue(TimeIntervalStringFormat format) { return static_cast<int>(format); }
  static constexpr std::optional<TimeIntervalStringFormat> fromRawValue(RawValue raw) {
    if (raw < 0 || raw > 6) return std::nullopt;
    return static_cast<TimeIntervalStringFormat>(raw);
  }
};

template <>
inline constexpr std::array<TimeIntervalStringFormat, 7> allCases<TimeIntervalStringFormat> = {
    TimeIntervalStringFormat::digitalHours,
    TimeIntervalStringFormat::digitalHoursMinutes,
    TimeIntervalStringFormat::digitalHoursMinutesWithLeadingZero,
    TimeIntervalStringFormat::digitalHoursMinutesSeconds,
    TimeIntervalStringFormat::digitalHoursMinutesSecondsWithLeadingZero,
    TimeIntervalStringFormat::seconds,
    TimeIntervalStringFormat::decimalHours,
};

// floor(|duration| / 3600).
std::int64_t hours(double duration);
// floor(|duration| / 60) modulo 60.
std::int64_t minutes(double duration);
// floor(|duration|) modulo 60.
std::int64_t seconds(double duration);

std::string toString(double duration, TimeIntervalStringFormat format);

// The duration of a time entry from one date to another: both are cut down
// to whole seconds first, and a result of zero or less is 0.
double effectiveDuration(Date from, Date to);

}  // namespace kestrona
