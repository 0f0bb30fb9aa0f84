#include "Platform/Time/Calendar.h"

#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>

#include <array>
#include <cmath>
#include <mutex>

#include "Platform/Time/IcuBridge.h"

namespace kestrona {

// One ICU calendar shared by the copies of a Calendar. ICU calendars keep
// the date being worked on inside them, so every use holds the mutex from
// setting the date to reading the answer.
struct Calendar::Impl {
  Impl(TimeZone zone, Locale loc) : timeZone(std::move(zone)), locale(std::move(loc)) {}

  TimeZone timeZone;
  Locale locale;
  // The week rules set on this calendar, which outlive a change of locale.
  std::optional<int> firstWeekday;
  std::optional<int> minimumDaysInFirstWeek;
  std::unique_ptr<icu::GregorianCalendar> calendar;
  std::mutex mutex;
};

namespace {

using Component = Calendar::Component;

std::unique_ptr<icu::GregorianCalendar> makeGregorian(const TimeZone& timeZone, const Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto calendar =
      std::make_unique<icu::GregorianCalendar>(icubridge::zone(timeZone), icubridge::locale(locale), status);
  if (U_FAILURE(status)) {
    status = U_ZERO_ERROR;
    calendar = std::make_unique<icu::GregorianCalendar>(icubridge::zone(timeZone), icu::Locale::getRoot(), status);
  }
  calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
  calendar->setSkippedWallTimeOption(UCAL_WALLTIME_LAST);
  return calendar;
}

std::optional<UCalendarDateFields> fieldOf(Component component) {
  switch (component) {
    case Component::era: return UCAL_ERA;
    case Component::year: return UCAL_YEAR;
    case Component::month: return UCAL_MONTH;
    case Component::day: return UCAL_DATE;
    case Component::hour: return UCAL_HOUR_OF_DAY;
    case Component::minute: return UCAL_MINUTE;
    case Component::second: return UCAL_SECOND;
    case Component::weekday: return UCAL_DAY_OF_WEEK;
    case Component::weekdayOrdinal: return UCAL_DAY_OF_WEEK_IN_MONTH;
    case Component::weekOfMonth: return UCAL_WEEK_OF_MONTH;
    case Component::weekOfYear: return UCAL_WEEK_OF_YEAR;
    case Component::yearForWeekOfYear: return UCAL_YEAR_WOY;
    case Component::nanosecond: return std::nullopt;
  }
  return std::nullopt;
}

std::optional<int>& slot(DateComponents& components, Component component) {
  switch (component) {
    case Component::era: return components.era;
    case Component::year: return components.year;
    case Component::month: return components.month;
    case Component::day: return components.day;
    case Component::hour: return components.hour;
    case Component::minute: return components.minute;
    case Component::second: return components.second;
    case Component::nanosecond: return components.nanosecond;
    case Component::weekday: return components.weekday;
    case Component::weekdayOrdinal: return components.weekdayOrdinal;
    case Component::weekOfMonth: return components.weekOfMonth;
    case Component::weekOfYear: return components.weekOfYear;
    case Component::yearForWeekOfYear: return components.yearForWeekOfYear;
  }
  return components.era;
}

bool isFinite(Date date) { return std::isfinite(date.timeIntervalSince1970()); }

// Nanoseconds past the whole second, cut down, as the date's double holds them.
int nanosecondOf(Date date) {
  double seconds = date.timeIntervalSince1970();
  return static_cast<int>((seconds - std::floor(seconds)) * 1e9);
}

// Reads one field of the calendar's current date; month counts from 1.
int read(icu::Calendar& calendar, Component component, Date date) {
  if (component == Component::nanosecond) return nanosecondOf(date);
  UErrorCode status = U_ZERO_ERROR;
  int value = calendar.get(*fieldOf(component), status);
  return component == Component::month ? value + 1 : value;
}

std::optional<Date> timeOf(icu::Calendar& calendar) {
  UErrorCode status = U_ZERO_ERROR;
  UDate millis = calendar.getTime(status);
  if (U_FAILURE(status)) return std::nullopt;
  return icubridge::dateFromMillis(millis);
}

// The first instant of the given day; the day may be out of range and rolls.
// The year is the extended year (1 BC is 0); month0 counts from 0.
std::optional<Date> firstInstantOfDay(icu::Calendar& calendar, int year, int month0, int day) {
  calendar.clear();
  calendar.set(UCAL_EXTENDED_YEAR, year);
  calendar.set(UCAL_MONTH, month0);
  calendar.set(UCAL_DATE, day);
  return timeOf(calendar);
}

// The ICU field that adding a component changes: a weekday is a day, and
// the ordinal of a weekday in its month is a week.
std::optional<UCalendarDateFields> addedFieldOf(Component component) {
  switch (component) {
    case Component::weekday: return UCAL_DATE;
    case Component::weekdayOrdinal:
    case Component::weekOfMonth: return UCAL_WEEK_OF_YEAR;
    case Component::nanosecond: return std::nullopt;
    default: return fieldOf(component);
  }
}

std::optional<Date> addLocked(icu::Calendar& calendar, Component component, int value, Date date) {
  if (!isFinite(date)) return std::nullopt;
  if (component == Component::nanosecond) return date.addingTimeInterval(value / 1e9);
  auto field = addedFieldOf(component);
  if (!field) return std::nullopt;
  // ICU works in whole milliseconds; the date's fraction of one is carried over.
  const double millis = icubridge::millis(date);
  const double whole = std::floor(millis);
  UErrorCode status = U_ZERO_ERROR;
  calendar.setTime(whole, status);
  calendar.add(*field, value, status);
  if (U_FAILURE(status)) return std::nullopt;
  UDate result = calendar.getTime(status);
  if (U_FAILURE(status)) return std::nullopt;
  return icubridge::dateFromMillis(result + (millis - whole));
}

std::vector<std::string> weekdays(const Locale& locale, icu::DateFormatSymbols::DtWidthType width) {
  UErrorCode status = U_ZERO_ERROR;
  icu::DateFormatSymbols symbols(icubridge::locale(locale), status);
  std::vector<std::string> names;
  if (U_FAILURE(status)) return names;
  int32_t count = 0;
  const icu::UnicodeString* list = symbols.getWeekdays(count, icu::DateFormatSymbols::FORMAT, width);
  // ICU's list is indexed by UCAL_SUNDAY (1) to UCAL_SATURDAY (7).
  for (int32_t index = UCAL_SUNDAY; index < count && index <= UCAL_SATURDAY; ++index) {
    names.push_back(icubridge::utf8(list[index]));
  }
  return names;
}

}  // namespace

Calendar::Calendar(const TimeZone& timeZone, const Locale& locale)
    : impl_(std::make_shared<Impl>(timeZone, locale)) {
  impl_->calendar = makeGregorian(timeZone, locale);
}

Calendar Calendar::current() { return Calendar(TimeZone::current(), Locale::current()); }

Calendar::Impl& Calendar::mutableImpl() {
  if (impl_.use_count() > 1) {
    auto copy = std::make_shared<Impl>(impl_->timeZone, impl_->locale);
    copy->firstWeekday = impl_->firstWeekday;
    copy->minimumDaysInFirstWeek = impl_->minimumDaysInFirstWeek;
    std::lock_guard lock(impl_->mutex);
    copy->calendar.reset(impl_->calendar->clone());
    impl_ = std::move(copy);
  }
  return *impl_;
}

const TimeZone& Calendar::timeZone() const noexcept { return impl_->timeZone; }

void Calendar::setTimeZone(const TimeZone& timeZone) {
  Impl& impl = mutableImpl();
  impl.timeZone = timeZone;
  impl.calendar->setTimeZone(icubridge::zone(timeZone));
}

const Locale& Calendar::locale() const noexcept { return impl_->locale; }

void Calendar::setLocale(const Locale& locale) {
  // The week rules come with the locale, except those set on this calendar.
  Impl& impl = mutableImpl();
  impl.locale = locale;
  impl.calendar = makeGregorian(impl.timeZone, locale);
  if (impl.firstWeekday) impl.calendar->setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(*impl.firstWeekday));
  if (impl.minimumDaysInFirstWeek) {
    impl.calendar->setMinimalDaysInFirstWeek(static_cast<uint8_t>(*impl.minimumDaysInFirstWeek));
  }
}

int Calendar::firstWeekday() const {
  std::lock_guard lock(impl_->mutex);
  UErrorCode status = U_ZERO_ERROR;
  return impl_->calendar->getFirstDayOfWeek(status);
}

void Calendar::setFirstWeekday(int weekday) {
  if (weekday < UCAL_SUNDAY || weekday > UCAL_SATURDAY) return;
  Impl& impl = mutableImpl();
  impl.firstWeekday = weekday;
  impl.calendar->setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(weekday));
}

int Calendar::minimumDaysInFirstWeek() const {
  std::lock_guard lock(impl_->mutex);
  return impl_->calendar->getMinimalDaysInFirstWeek();
}

void Calendar::setMinimumDaysInFirstWeek(int days) {
  if (days < 1 || days > 7) return;
  Impl& impl = mutableImpl();
  impl.minimumDaysInFirstWeek = days;
  impl.calendar->setMinimalDaysInFirstWeek(static_cast<uint8_t>(days));
}

int Calendar::component(Component component, Date date) const {
  if (!isFinite(date)) return 0;
  std::lock_guard lock(impl_->mutex);
  UErrorCode status = U_ZERO_ERROR;
  impl_->calendar->setTime(icubridge::millis(date), status);
  return read(*impl_->calendar, component, date);
}

DateComponents Calendar::dateComponents(const std::set<Component>& components, Date date) const {
  if (!isFinite(date)) return {};
  std::lock_guard lock(impl_->mutex);
  UErrorCode status = U_ZERO_ERROR;
  impl_->calendar->setTime(icubridge::millis(date), status);
  DateComponents result;
  for (Component component : components) slot(result, component) = read(*impl_->calendar, component, date);
  return result;
}

DateComponents Calendar::dateComponents(const std::set<Component>& components, Date from, Date to) const {
  // Larger units first, so that each difference is taken from what the
  // larger ones left over.
  static constexpr Component kOrder[] = {Component::era,         Component::year,   Component::month,
                                         Component::weekOfYear,  Component::day,    Component::hour,
                                         Component::minute,      Component::second};
  if (!isFinite(from) || !isFinite(to)) return {};
  std::lock_guard lock(impl_->mutex);
  icu::Calendar& calendar = *impl_->calendar;
  UErrorCode status = U_ZERO_ERROR;
  calendar.setTime(icubridge::millis(from), status);
  const double target = icubridge::millis(to);
  DateComponents result;
  for (Component component : kOrder) {
    bool wanted = components.contains(component) ||
                  (component == Component::weekOfYear && components.contains(Component::weekOfMonth));
    if (!wanted) continue;
    status = U_ZERO_ERROR;
    int difference = calendar.fieldDifference(target, *fieldOf(component), status);
    if (U_FAILURE(status)) continue;
    if (component == Component::weekOfYear) {
      if (components.contains(Component::weekOfYear)) result.weekOfYear = difference;
      if (components.contains(Component::weekOfMonth)) result.weekOfMonth = difference;
    } else {
      slot(result, component) = difference;
    }
  }
  if (components.contains(Component::nanosecond)) {
    status = U_ZERO_ERROR;
    double reached = calendar.getTime(status);
    result.nanosecond = static_cast<int>(std::trunc((target - reached) * 1e6));
  }
  return result;
}

std::optional<Date> Calendar::dateFromComponents(const DateComponents& components) const {
  std::lock_guard lock(impl_->mutex);
  icu::Calendar& calendar = *impl_->calendar;
  calendar.clear();
  // ICU resolves the date from the fields set last, so the week fields,
  // when given, are set after the day of the month.
  auto set = [&](UCalendarDateFields field, const std::optional<int>& value, int offset = 0) {
    if (value) calendar.set(field, *value + offset);
  };
  set(UCAL_ERA, components.era);
  set(UCAL_YEAR, components.year);
  set(UCAL_MONTH, components.month, -1);
  set(UCAL_DATE, components.day);
  set(UCAL_DAY_OF_WEEK_IN_MONTH, components.weekdayOrdinal);
  set(UCAL_WEEK_OF_MONTH, components.weekOfMonth);
  set(UCAL_YEAR_WOY, components.yearForWeekOfYear);
  set(UCAL_WEEK_OF_YEAR, components.weekOfYear);
  // A weekday beside a day of the month only describes it; set, it would
  // make ICU resolve the date from the weekday instead.
  if (components.weekday && !components.day) {
    calendar.set(UCAL_DAY_OF_WEEK, *components.weekday);
  } else if (components.weekOfYear || components.weekOfMonth) {
    UErrorCode status = U_ZERO_ERROR;
    calendar.set(UCAL_DAY_OF_WEEK, calendar.getFirstDayOfWeek(status));
  }
  set(UCAL_HOUR_OF_DAY, components.hour);
  set(UCAL_MINUTE, components.minute);
  set(UCAL_SECOND, components.second);
  auto date = timeOf(calendar);
  if (date && components.nanosecond) return date->addingTimeInterval(*components.nanosecond / 1e9);
  return date;
}

std::optional<Date> Calendar::dateByAdding(Component component, int value, Date date) const {
  std::lock_guard lock(impl_->mutex);
  return addLocked(*impl_->calendar, component, value, date);
}

std::optional<Date> Calendar::dateByAdding(const DateComponents& components, Date date) const {
  static constexpr Component kOrder[] = {
      Component::era,    Component::year,   Component::month,      Component::weekOfYear,
      Component::weekOfMonth, Component::day, Component::weekday, Component::weekdayOrdinal,
      Component::hour,   Component::minute, Component::second,     Component::nanosecond};
  std::lock_guard lock(impl_->mutex);
  std::optional<Date> result = date;
  DateComponents copy = components;
  for (Component component : kOrder) {
    const std::optional<int>& value = slot(copy, component);
    if (!value) continue;
    result = addLocked(*impl_->calendar, component, *value, *result);
    if (!result) return std::nullopt;
  }
  return result;
}

Date Calendar::startOfDay(Date date) const {
  if (!isFinite(date)) return date;
  std::lock_guard lock(impl_->mutex);
  icu::Calendar& calendar = *impl_->calendar;
  UErrorCode status = U_ZERO_ERROR;
  calendar.setTime(icubridge::millis(date), status);
  int year = calendar.get(UCAL_EXTENDED_YEAR, status);
  int month = calendar.get(UCAL_MONTH, status);
  int day = calendar.get(UCAL_DATE, status);
  if (U_FAILURE(status)) return date;
  return firstInstantOfDay(calendar, year, month, day).value_or(date);
}

std::optional<DateInterval> Calendar::dateIntervalOf(Component component, Date date) const {
  if (!isFinite(date)) return std::nullopt;
  std::lock_guard lock(impl_->mutex);
  icu::Calendar& calendar = *impl_->calendar;
  UErrorCode status = U_ZERO_ERROR;
  calendar.setTime(icubridge::millis(date), status);
  const int year = calendar.get(UCAL_EXTENDED_YEAR, status);
  const int month = calendar.get(UCAL_MONTH, status);
  const int day = calendar.get(UCAL_DATE, status);
  const int dayOfWeek = calendar.get(UCAL_DAY_OF_WEEK, status);
  const int firstDay = calendar.getFirstDayOfWeek(status);
  if (U_FAILURE(status)) return std::nullopt;
  std::optional<Date> start;
  std::optional<Date> end;
  switch (component) {
    case Component::day:
      start = firstInstantOfDay(calendar, year, month, day);
      end = firstInstantOfDay(calendar, year, month, day + 1);
      break;
    case Component::weekOfYear:
    case Component::weekOfMonth: {
      // Days back to the first weekday; the month and year roll as needed.
      int back = (dayOfWeek - firstDay + 7) % 7;
      start = firstInstantOfDay(calendar, year, month, day - back);
      end = firstInstantOfDay(calendar, year, month, day - back + 7);
      break;
    }
    case Component::month:
      start = firstInstantOfDay(calendar, year, month, 1);
      end = firstInstantOfDay(calendar, year, month + 1, 1);
      break;
    case Component::year:
      start = firstInstantOfDay(calendar, year, UCAL_JANUARY, 1);
      end = firstInstantOfDay(calendar, year + 1, UCAL_JANUARY, 1);
      break;
    default:
      return std::nullopt;
  }
  if (!start || !end || *end < *start) return std::nullopt;
  return DateInterval(*start, *end);
}

bool Calendar::isDateInSameDayAs(Date date, Date other) const {
  if (!isFinite(date) || !isFinite(other)) return false;
  std::lock_guard lock(impl_->mutex);
  icu::Calendar& calendar = *impl_->calendar;
  auto day = [&](Date instant) {
    UErrorCode status = U_ZERO_ERROR;
    calendar.setTime(icubridge::millis(instant), status);
    return std::array<int, 3>{calendar.get(UCAL_EXTENDED_YEAR, status), calendar.get(UCAL_MONTH, status),
                              calendar.get(UCAL_DATE, status)};
  };
  return day(date) == day(other);
}

bool Calendar::isDateInToday(Date date) const { return isDateInSameDayAs(date, Date::now()); }

std::vector<std::string> Calendar::weekdaySymbols() const {
  return weekdays(impl_->locale, icu::DateFormatSymbols::WIDE);
}

std::vector<std::string> Calendar::shortWeekdaySymbols() const {
  return weekdays(impl_->locale, icu::DateFormatSymbols::ABBREVIATED);
}

std::vector<std::string> Calendar::veryShortWeekdaySymbols() const {
  return weekdays(impl_->locale, icu::DateFormatSymbols::NARROW);
}

bool operator==(const Calendar& a, const Calendar& b) {
  return a.timeZone() == b.timeZone() && a.locale() == b.locale() && a.firstWeekday() == b.firstWeekday() &&
         a.minimumDaysInFirstWeek() == b.minimumDaysInFirstWeek();
}

}  // namespace kestrona
