// The Gregorian calendar: days, weeks, months and years of instants in a
// time zone, with the week conventions of a locale.
//
// A Calendar answers the date questions of this system: the components of a
// date, the date of given components, adding days, months or years, the
// start of a day, the bounds of a day, week, month or year, and differences
// between dates. All work happens in the calendar's time zone, so a day is
// 23 or 25 hours long across a daylight-saving change. Where a wall-clock
// time does not exist (the hour skipped in spring) the later offset applies
// and the result moves forward past the gap; where it exists twice (the
// hour repeated in autumn) the first occurrence is taken. So the start of a
// day is always its first instant.
//
// Weeks follow firstWeekday (1 is Sunday, 2 Monday, ..., 7 Saturday) and
// minimumDaysInFirstWeek, both from the locale's region unless set; a value
// that was set is kept when the locale changes. A week that straddles a
// year end belongs to the year that holds at least minimumDaysInFirstWeek
// of its days; yearForWeekOfYear tells which.
//
// A date that is not finite lies on no day: it has no components (0 or
// absent), nothing can be added to it, its start of day is itself, and it
// is on the same day as nothing.
//
// Calendar is a value: copies are cheap (they share one ICU calendar until
// one of them is changed) and every const member may be called from any
// thread. A setter changes only the copy it is called on, and must not run
// while other threads use that same copy.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/Time/Date.h"
#include "Platform/Time/DateComponents.h"
#include "Platform/Time/DateInterval.h"
#include "Platform/Time/Locale.h"
#include "Platform/Time/TimeZone.h"

namespace kestrona {

class Calendar {
 public:
  enum class Component {
    era,
    year,
    month,
    day,
    hour,
    minute,
    second,
    nanosecond,
    weekday,
    weekdayOrdinal,
    weekOfMonth,
    weekOfYear,
    yearForWeekOfYear,
  };

  Calendar(const TimeZone& timeZone, const Locale& locale);

  // The user's calendar: TimeZone::current() and Locale::current(), read
  // from the environment on every call.
  static Calendar current();

  const TimeZone& timeZone() const noexcept;
  void setTimeZone(const TimeZone& timeZone);
  const Locale& locale() const noexcept;
  void setLocale(const Locale& locale);

  int firstWeekday() const;
  // A value outside 1...7 is ignored: the calendar keeps its first weekday.
  void setFirstWeekday(int weekday);
  int minimumDaysInFirstWeek() const;
  // A value outside 1...7 is ignored.
  void setMinimumDaysInFirstWeek(int days);

  int component(Component component, Date date) const;
  DateComponents dateComponents(const std::set<Component>& components, Date date) const;
  // The difference from one date to another in the given components, the
  // larger ones first, in whole units truncated towards zero: in days and
  // hours, 31 January 2026 10:00 to 2 March 09:00 is 29 days and 23 hours.
  // Negative when to lies before from. Supported: era,
  // year, month, weekOfYear, weekOfMonth (both count weeks), day, hour,
  // minute, second and nanosecond; others stay absent.
  DateComponents dateComponents(const std::set<Component>& components, Date from, Date to) const;

  // The date of the given components. Absent fields take their lowest
  // value from 1970-01-01 00:00:00; a week without weekday starts on
  // firstWeekday; a weekday beside a day of the month is not checked. Out-of-range values roll over (month 13 is January of the
  // next year). None when the fields cannot be resolved.
  std::optional<Date> dateFromComponents(const DateComponents& components) const;
  // Adds value units of component, keeping the wall-clock time for days and
  // larger units and clamping the day to the length of the month (31 January
  // plus one month is 28 or 29 February). Hours and smaller units are
  // elapsed time. None for a component that cannot be added.
  std::optional<Date> dateByAdding(Component component, int value, Date date) const;
  // Adds every present field, the larger ones first.
  std::optional<Date> dateByAdding(const DateComponents& components, Date date) const;

  Date startOfDay(Date date) const;
  // The day, week (weekOfYear or weekOfMonth), month or year that holds
  // date, from its first instant to the first instant of the next one. None
  // for other components.
  std::optional<DateInterval> dateIntervalOf(Component component, Date date) const;
  bool isDateInSameDayAs(Date date, Date other) const;
  // Whether date falls on the day of Date::now().
  bool isDateInToday(Date date) const;

  // Weekday names in the locale, Sunday first whatever firstWeekday says:
  // "Sunday", "Sun", "S" in English.
  std::vector<std::string> weekdaySymbols() const;
  std::vector<std::string> shortWeekdaySymbols() const;
  std::vector<std::string> veryShortWeekdaySymbols() const;

  // Equal when zone, locale and week rules are equal.
  friend bool operator==(const Calendar& a, const Calendar& b);

 private:
  struct Impl;
  explicit Calendar(std::shared_ptr<Impl> impl) : impl_(std::move(impl)) {}
  // Gives this copy an ICU calendar of its own before a change.
  Impl& mutableImpl();

  std::shared_ptr<Impl> impl_;
};

}  // namespace kestrona
