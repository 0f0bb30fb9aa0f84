// The notifications by which the system tells of changes to its time,
// posted on the main thread by SystemTimeWatcher (nil object, no user info):
//
// - NSCalendarDayChanged: the calendar day of the current zone is another
//   than at the last check (midnight passed, or the clock or zone moved).
// - NSSystemTimeZoneDidChange: TimeZone::current() names another zone (TZ
//   changed in the process, or the system's zone files were replaced).
// - NSSystemClockDidChange: the wall clock was set, or moved apart from the
//   time that passed (a step by the time service, a resume from sleep).
#pragma once

#include <string_view>

namespace kestrona {

inline constexpr std::string_view NSCalendarDayChanged = "NSCalendarDayChanged";
inline constexpr std::string_view NSSystemTimeZoneDidChange = "NSSystemTimeZoneDidChange";
inline constexpr std::string_view NSSystemClockDidChange = "NSSystemClockDidChange";

}  // namespace kestrona
