// The small date arithmetic and date text that the core shares.
//
// Periods. dateFor() gives the bounds of the day, week, month or year that
// holds a date. A start is the period's first instant; where midnight does
// not exist that day (America/Sao_Paulo on 2018-11-04) it is the end of the
// skipped hour. Every end is exactly the start of the next period, an
// exclusive bound, not the last second of this one and not this start plus
// a length: so consecutive periods never overlap or leave a gap, and the
// end of 2018-11-03 in Sao Paulo is 2018-11-04 01:00 while the end of
// 2018-11-04 is 2018-11-05 00:00. Days and weeks are taken in the given
// calendar (weeks by its yearForWeekOfYear and weekOfYear, so they follow
// its firstWeekday). Months and years, starts and ends alike, are taken in
// Calendar::current(), the user's calendar, whatever calendar is given:
// reports rely on exactly this. When a calendar cannot give a date, as for
// a date that is not finite, the date itself is the answer.
//
// Rounding. roundedTo() rounds to a grid of whole minutes counted from the
// Unix epoch, not from the local midnight, with halves away from zero.
//
// Text. toSecondsString() and localizedShortTimeString() read the
// environment's zone and locale on every call; toString() writes a fixed
// pattern.
//
// All functions are pure apart from reading the environment, and
// thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Platform/Foundation/RawRepresentable.h"
#include "Platform/Time/Calendar.h"
#include "Platform/Time/Date.h"
#include "Platform/Time/Locale.h"

namespace kestrona {

enum class DateForType {
  startOfDay,
  endOfDay,
  startOfWeek,
  endOfWeek,
  startOfMonth,
  endOfMonth,
  startOfYear,
  endOfYear,
};

// The ways two dates are compared; the only one is whether they fall on the
// same day.
struct IsSameDay {
  Date as;
};
using DateCompareType = std::variant<IsSameDay>;

// Fixed date patterns, with the pattern as raw value.
enum class DateStringFormat { isoDate };

template <>
struct RawRepresentable<DateStringFormat> {
  using RawValue = std::string_view;
  static constexpr RawValue rawValue(DateStringFormat) { return "yyyy-MM-dd"; }
  static constexpr std::optional<DateStringFormat> fromRawValue(RawValue raw) {
    if (raw == "yyyy-MM-dd") return DateStringFormat::isoDate;
    return std::nullopt;
  }
};

// The zones date text is written in: local is TimeZone::current().
enum class DateStringTimeZone { local };

// The seconds of the date in the current calendar, two digits: "05".
std::string toSecondsString(Date date);
// The date cut down to a whole second since 1970.
Date flooredToSeconds(Date date);
// The time of day in the short style of preferredLocale(), in the current
// zone, with no date part: "9:05 AM" in en_US, "09:05" in de_DE.
std::string localizedShortTimeString(Date date);
// The date on the grid of minutes * 60 seconds from the epoch nearest to
// it, halves away from zero. minutes must not be 0.
Date roundedTo(Date date, int minutes);
// Days from the start of other's day to the start of date's day in the
// calendar; negative when other lies on a later day.
int numberOfDaysSince(Date date, Date other, const Calendar& calendar);
Date dateFor(Date date, DateForType type, const Calendar& calendar);
bool compare(Date date, const DateCompareType& type, const Calendar& calendar);
std::string toString(Date date, DateStringFormat format, DateStringTimeZone timeZone, const Locale& locale);

}  // namespace kestrona
