#include "SharedCore/Support/TimeText/DateExtensions.h"

#include <cmath>
#include <cstdio>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Time/DateFormatter.h"
#include "SharedCore/Support/TimeText/LocaleExtensions.h"

namespace kestrona {
namespace {

using Component = Calendar::Component;

Date startOfWeek(Date date, const Calendar& calendar) {
  DateComponents week = calendar.dateComponents({Component::yearForWeekOfYear, Component::weekOfYear}, date);
  return calendar.dateFromComponents(week).value_or(date);
}

// The first instant of the month (or, without month, the year) of date,
// both in the user's calendar; monthsAhead moves it to a later month (or
// year). Where midnight does not exist that day, the first instant is the
// end of the gap.
Date startOfMonthOrYear(Date date, bool month, int monthsAhead = 0) {
  Calendar current = Calendar::current();
  DateComponents components = current.dateComponents({Component::year, Component::month}, date);
  if (!components.year || !components.month) return date;
  int year = *components.year;
  int monthIndex = month ? *components.month - 1 + monthsAhead : 12 * monthsAhead;
  year += monthIndex / 12;
  DateComponents start;
  start.year = year;
  start.month = monthIndex % 12 + 1;
  start.day = 1;
  start.hour = 0;
  start.minute = 0;
  start.second = 0;
  return current.dateFromComponents(start).value_or(date);
}

// The first instant of the day or week after the one that starts at start:
// the start of the period that holds start + length days. Taking it by the
// same rule as the start itself is what keeps consecutive periods free of
// gaps and overlaps where midnight is skipped (America/Sao_Paulo,
// 2018-11-04 begins at 01:00, and the day before still ends at its start).
template <typename StartOf>
Date startOfNext(Date start, int lengthInDays, const Calendar& calendar, StartOf startOf) {
  std::optional<Date> inNext = calendar.dateByAdding(Component::day, lengthInDays, start);
  return inNext ? startOf(*inNext) : start;
}

}  // namespace

std::string toSecondsString(Date date) {
  char text[16];
  std::snprintf(text, sizeof text, "%02d", Calendar::current().component(Component::second, date));
  return text;
}

Date flooredToSeconds(Date date) { return Date(std::floor(date.timeIntervalSince1970())); }

std::string localizedShortTimeString(Date date) {
  DateFormatter formatter;
  formatter.setLocale(preferredLocale());
  formatter.setDateStyle(DateFormatter::Style::noStyle);
  formatter.setTimeStyle(DateFormatter::Style::shortStyle);
  return formatter.string(date);
}

Date roundedTo(Date date, int minutes) {
  precondition(minutes != 0, "roundedTo: a grid of 0 minutes");
  const double step = minutes * 60.0;
  return Date(step * std::round(date.timeIntervalSince1970() / step));
}

int numberOfDaysSince(Date date, Date other, const Calendar& calendar) {
  DateComponents difference =
      calendar.dateComponents({Component::day}, calendar.startOfDay(other), calendar.startOfDay(date));
  return difference.day.value_or(0);
}

Date dateFor(Date date, DateForType type, const Calendar& calendar) {
  if (!std::isfinite(date.timeIntervalSince1970())) return date;
  switch (type) {
    case DateForType::startOfDay:
      return calendar.startOfDay(date);
    case DateForType::endOfDay:
      return startOfNext(calendar.startOfDay(date), 1, calendar, [&](Date d) { return calendar.startOfDay(d); });
    case DateForType::startOfWeek:
      return startOfWeek(date, calendar);
    case DateForType::endOfWeek:
      return startOfNext(startOfWeek(date, calendar), 7, calendar, [&](Date d) { return startOfWeek(d, calendar); });
    case DateForType::startOfMonth:
      return startOfMonthOrYear(date, true);
    case DateForType::endOfMonth:
      return startOfMonthOrYear(date, true, 1);
    case DateForType::startOfYear:
      return startOfMonthOrYear(date, false);
    case DateForType::endOfYear:
      return startOfMonthOrYear(date, false, 1);
  }
  return date;
}

bool compare(Date date, const DateCompareType& type, const Calendar& calendar) {
  return std::visit([&](const IsSameDay& sameDay) { return calendar.isDateInSameDayAs(date, sameDay.as); }, type);
}

std::string toString(Date date, DateStringFormat format, DateStringTimeZone, const Locale& locale) {
  DateFormatter formatter;
  formatter.setDateFormat(std::string(rawValue(format)));
  formatter.setTimeZone(TimeZone::current());
  formatter.setLocale(locale);
  return formatter.string(date);
}

}  // namespace kestrona
