// Dates for tests, made without the code under test: a UTC calendar date
// and time through std::chrono, and zones and locales that must exist.
#pragma once

#include <chrono>

#include "Platform/Time/Calendar.h"
#include "Platform/Time/Date.h"
#include "Platform/Time/Locale.h"
#include "Platform/Time/TimeZone.h"

namespace kestrona::testing {

inline Date utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0, double second = 0) {
  using namespace std::chrono;
  const sys_days days{std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day}};
  const double seconds = static_cast<double>(days.time_since_epoch().count()) * 86400.0;
  return Date(seconds + hour * 3600.0 + minute * 60.0 + second);
}

inline TimeZone zone(const char* identifier) { return TimeZone::fromIdentifier(identifier).value(); }

inline Calendar calendar(const char* zoneIdentifier, const char* localeIdentifier) {
  return Calendar(zone(zoneIdentifier), Locale(localeIdentifier));
}

constexpr double kHour = 3600;
constexpr double kDay = 86400;

}  // namespace kestrona::testing
