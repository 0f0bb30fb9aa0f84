#include "Platform/Time/Calendar.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "Platform/Time/Clock.h"
#include "tests/Platform/Time/TestDates.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::calendar;
using testing::kDay;
using testing::kHour;
using testing::utc;
using Component = Calendar::Component;

Date startOf(const Calendar& cal, Component component, Date date) {
  return cal.dateIntervalOf(component, date).value().start();
}
Date endOf(const Calendar& cal, Component component, Date date) {
  return cal.dateIntervalOf(component, date).value().end();
}

// Europe/Berlin in 2026: clocks go from 02:00 to 03:00 on 29 March (01:00
// UTC) and from 03:00 back to 02:00 on 25 October (01:00 UTC).
TEST(CalendarDaylightSaving, BerlinSpringDayHasTwentyThreeHours) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Date noon = utc(2026, 3, 29, 10);  // 12:00 CEST
  EXPECT_EQ(berlin.startOfDay(noon), utc(2026, 3, 28, 23));
  auto day = berlin.dateIntervalOf(Component::day, noon).value();
  EXPECT_EQ(day.start(), utc(2026, 3, 28, 23));
  EXPECT_EQ(day.end(), utc(2026, 3, 29, 22));
  EXPECT_EQ(day.duration(), 23 * kHour);
  // The days either side are ordinary.
  EXPECT_EQ(berlin.dateIntervalOf(Component::day, utc(2026, 3, 28, 12))->duration(), 24 * kHour);
  EXPECT_EQ(berlin.dateIntervalOf(Component::day, utc(2026, 3, 30, 12))->duration(), 24 * kHour);
  // The first and last instants of the short day belong to it.
  EXPECT_EQ(berlin.startOfDay(utc(2026, 3, 29, 21, 59, 59)), utc(2026, 3, 28, 23));
  EXPECT_EQ(berlin.startOfDay(utc(2026, 3, 29, 22)), utc(2026, 3, 29, 22));
}

TEST(CalendarDaylightSaving, BerlinAutumnDayHasTwentyFiveHours) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Date evening = utc(2026, 10, 25, 20);
  auto day = berlin.dateIntervalOf(Component::day, evening).value();
  EXPECT_EQ(day.start(), utc(2026, 10, 24, 22));
  EXPECT_EQ(day.end(), utc(2026, 10, 25, 23));
  EXPECT_EQ(day.duration(), 25 * kHour);
  // In the repeated hour (02:00-03:00 local happens twice) the day is the same.
  EXPECT_EQ(berlin.startOfDay(utc(2026, 10, 25, 0, 30)), utc(2026, 10, 24, 22));
  EXPECT_EQ(berlin.startOfDay(utc(2026, 10, 25, 1, 30)), utc(2026, 10, 24, 22));
}

TEST(CalendarDaylightSaving, NewYorkDaysAroundBothChanges) {
  // 2026: 8 March 02:00 EST becomes 03:00 EDT; 1 November 02:00 EDT becomes 01:00 EST.
  Calendar newYork = calendar("America/New_York", "en_US");
  auto spring = newYork.dateIntervalOf(Component::day, utc(2026, 3, 8, 17)).value();
  EXPECT_EQ(spring.start(), utc(2026, 3, 8, 5));
  EXPECT_EQ(spring.end(), utc(2026, 3, 9, 4));
  EXPECT_EQ(spring.duration(), 23 * kHour);
  auto autumn = newYork.dateIntervalOf(Component::day, utc(2026, 11, 1, 17)).value();
  EXPECT_EQ(autumn.start(), utc(2026, 11, 1, 4));
  EXPECT_EQ(autumn.end(), utc(2026, 11, 2, 5));
  EXPECT_EQ(autumn.duration(), 25 * kHour);
}

TEST(CalendarDaylightSaving, DayWhoseMidnightIsSkippedStartsAtItsFirstInstant) {
  // Sao Paulo moved its clocks from 00:00 to 01:00 on 4 November 2018, so
  // that day began at 01:00 local (03:00 UTC).
  Calendar saoPaulo = calendar("America/Sao_Paulo", "pt_BR");
  EXPECT_EQ(saoPaulo.startOfDay(utc(2018, 11, 4, 15)), utc(2018, 11, 4, 3));
  EXPECT_EQ(saoPaulo.dateIntervalOf(Component::day, utc(2018, 11, 4, 15))->duration(), 23 * kHour);
}

TEST(CalendarDaylightSaving, AddingDaysKeepsTheWallClockAndAddingHoursDoesNot) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Date saturdayNoon = utc(2026, 3, 28, 11);  // 12:00 CET
  EXPECT_EQ(berlin.dateByAdding(Component::day, 1, saturdayNoon), utc(2026, 3, 29, 10));  // 12:00 CEST
  EXPECT_EQ(berlin.dateByAdding(Component::hour, 24, saturdayNoon), utc(2026, 3, 29, 11));
  EXPECT_EQ(berlin.dateByAdding(Component::day, -1, utc(2026, 3, 29, 10)), saturdayNoon);
  EXPECT_EQ(berlin.dateByAdding(Component::weekOfYear, 1, utc(2026, 10, 20, 10)), utc(2026, 10, 27, 11));
  // Fractions of a second survive day arithmetic.
  EXPECT_EQ(berlin.dateByAdding(Component::day, 1, saturdayNoon.addingTimeInterval(0.25)),
            utc(2026, 3, 29, 10).addingTimeInterval(0.25));
}

TEST(CalendarDaylightSaving, WallTimesThatDoNotExistMoveForwardAndRepeatedOnesTakeTheFirst) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  DateComponents skipped{.year = 2026, .month = 3, .day = 29, .hour = 2, .minute = 30};
  EXPECT_EQ(berlin.dateFromComponents(skipped), utc(2026, 3, 29, 1, 30));  // 03:30 CEST
  DateComponents repeated{.year = 2026, .month = 10, .day = 25, .hour = 2, .minute = 30};
  EXPECT_EQ(berlin.dateFromComponents(repeated), utc(2026, 10, 25, 0, 30));  // first 02:30, CEST
}

TEST(CalendarDaylightSaving, DayDifferencesCountCalendarDaysNotSpansOf24Hours) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  // 28 March 00:00 to 30 March 00:00 is 47 hours and 2 days.
  auto difference = berlin.dateComponents({Component::day, Component::hour}, utc(2026, 3, 27, 23), utc(2026, 3, 29, 22));
  EXPECT_EQ(difference.day, 2);
  EXPECT_EQ(difference.hour, 0);
  EXPECT_EQ(berlin.dateComponents({Component::day}, utc(2026, 3, 29, 22), utc(2026, 3, 27, 23)).day, -2);
  // Less than a whole day is no day, in either direction.
  EXPECT_EQ(berlin.dateComponents({Component::day}, utc(2026, 3, 1, 10), utc(2026, 3, 2, 9)).day, 0);
  EXPECT_EQ(berlin.dateComponents({Component::day}, utc(2026, 3, 2, 9), utc(2026, 3, 1, 10)).day, 0);
  auto mixed = berlin.dateComponents({Component::day, Component::hour, Component::minute},
                                     utc(2026, 1, 31, 9), utc(2026, 3, 2, 8, 30));
  EXPECT_EQ(mixed.day, 29);
  EXPECT_EQ(mixed.hour, 23);
  EXPECT_EQ(mixed.minute, 30);
}

TEST(CalendarWeeks, WeekFollowsFirstWeekdayAcrossTheSpringChange) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  ASSERT_EQ(berlin.firstWeekday(), 2);  // Monday in Germany
  Date sunday = utc(2026, 3, 29, 10);
  auto week = berlin.dateIntervalOf(Component::weekOfYear, sunday).value();
  EXPECT_EQ(week.start(), utc(2026, 3, 22, 23));  // Monday 23 March, 00:00 CET
  EXPECT_EQ(week.end(), utc(2026, 3, 29, 22));    // Monday 30 March, 00:00 CEST
  EXPECT_EQ(week.duration(), 7 * kDay - kHour);

  Calendar sundayFirst = berlin;
  sundayFirst.setFirstWeekday(1);
  auto sundayWeek = sundayFirst.dateIntervalOf(Component::weekOfYear, sunday).value();
  EXPECT_EQ(sundayWeek.start(), utc(2026, 3, 28, 23));  // that Sunday itself
  EXPECT_EQ(sundayWeek.end(), utc(2026, 4, 4, 22));
  // The copy changed, the original did not.
  EXPECT_EQ(berlin.firstWeekday(), 2);
  EXPECT_FALSE(berlin == sundayFirst);
}

TEST(CalendarWeeks, NewYorkWeekStartingSundayOverTheChange) {
  Calendar newYork = calendar("America/New_York", "en_US");
  ASSERT_EQ(newYork.firstWeekday(), 1);
  Date wednesday = utc(2026, 3, 11, 15);
  EXPECT_EQ(startOf(newYork, Component::weekOfYear, wednesday), utc(2026, 3, 8, 5));
  EXPECT_EQ(endOf(newYork, Component::weekOfYear, wednesday), utc(2026, 3, 15, 4));
  // The week from its components agrees with the interval.
  auto components = newYork.dateComponents({Component::yearForWeekOfYear, Component::weekOfYear}, wednesday);
  EXPECT_EQ(newYork.dateFromComponents(components), utc(2026, 3, 8, 5));
}

TEST(CalendarWeeks, WeekAcrossTheYearEndBelongsToTheNextYear) {
  Date newYearsEve = utc(2025, 12, 31, 12);  // a Wednesday
  // ISO rules in Germany: Monday first, four days make the first week.
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  auto iso = berlin.dateComponents({Component::yearForWeekOfYear, Component::weekOfYear, Component::year}, newYearsEve);
  EXPECT_EQ(iso.year, 2025);
  EXPECT_EQ(iso.yearForWeekOfYear, 2026);
  EXPECT_EQ(iso.weekOfYear, 1);
  EXPECT_EQ(berlin.dateFromComponents(iso), utc(2025, 12, 28, 23));  // Monday 29 December
  // US rules: Sunday first, the week holding 1 January is week 1.
  Calendar newYork = calendar("America/New_York", "en_US");
  auto us = newYork.dateComponents({Component::yearForWeekOfYear, Component::weekOfYear}, newYearsEve);
  EXPECT_EQ(us.yearForWeekOfYear, 2026);
  EXPECT_EQ(us.weekOfYear, 1);
  EXPECT_EQ(newYork.dateFromComponents(us), utc(2025, 12, 28, 5));  // Sunday 28 December
  // And a week that stays in the old year: ISO week 53 of 2026.
  auto late = berlin.dateComponents({Component::yearForWeekOfYear, Component::weekOfYear}, utc(2026, 12, 31, 12));
  EXPECT_EQ(late.yearForWeekOfYear, 2026);
  EXPECT_EQ(late.weekOfYear, 53);
}

TEST(CalendarWeeks, FirstWeekdayOutsideTheWeekIsIgnored) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  berlin.setFirstWeekday(0);
  EXPECT_EQ(berlin.firstWeekday(), 2);
  berlin.setFirstWeekday(8);
  EXPECT_EQ(berlin.firstWeekday(), 2);
  berlin.setFirstWeekday(7);
  EXPECT_EQ(berlin.firstWeekday(), 7);
  EXPECT_EQ(startOf(berlin, Component::weekOfYear, utc(2026, 3, 29, 10)), utc(2026, 3, 27, 23));  // Saturday
}

TEST(CalendarPeriods, MonthAndYearBoundsInTheCalendarsZone) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  auto october = berlin.dateIntervalOf(Component::month, utc(2026, 10, 25, 12)).value();
  EXPECT_EQ(october.start(), utc(2026, 9, 30, 22));
  EXPECT_EQ(october.end(), utc(2026, 10, 31, 23));
  auto year = berlin.dateIntervalOf(Component::year, utc(2026, 6, 1)).value();
  EXPECT_EQ(year.start(), utc(2025, 12, 31, 23));
  EXPECT_EQ(year.end(), utc(2026, 12, 31, 23));
  // Instants on the bounds: the start belongs to the period, the end does not.
  EXPECT_EQ(startOf(berlin, Component::month, utc(2026, 9, 30, 22)), utc(2026, 9, 30, 22));
  EXPECT_EQ(startOf(berlin, Component::month, utc(2026, 9, 30, 21, 59, 59)), utc(2026, 8, 31, 22));
  EXPECT_FALSE(berlin.dateIntervalOf(Component::hour, utc(2026, 1, 1)).has_value());
}

TEST(CalendarArithmetic, MonthsClampToTheirLastDayAndYearsRollOver) {
  Calendar utcCalendar = calendar("UTC", "en_US");
  EXPECT_EQ(utcCalendar.dateByAdding(Component::month, 1, utc(2026, 1, 31, 10)), utc(2026, 2, 28, 10));
  EXPECT_EQ(utcCalendar.dateByAdding(Component::month, 1, utc(2024, 1, 31, 10)), utc(2024, 2, 29, 10));
  EXPECT_EQ(utcCalendar.dateByAdding(Component::year, 1, utc(2024, 2, 29)), utc(2025, 2, 28));
  EXPECT_EQ(utcCalendar.dateByAdding(Component::month, -13, utc(2026, 3, 15)), utc(2025, 2, 15));
  DateComponents mixed{.year = 1, .month = 1, .day = 1, .hour = 1};
  EXPECT_EQ(utcCalendar.dateByAdding(mixed, utc(2026, 1, 31)), utc(2027, 3, 1, 1));
  // Out-of-range components roll over when making a date.
  EXPECT_EQ(utcCalendar.dateFromComponents({.year = 2026, .month = 13, .day = 1}), utc(2027, 1, 1));
  EXPECT_EQ(utcCalendar.dateFromComponents({.year = 2026, .month = 3, .day = 0}), utc(2026, 2, 28));
}

TEST(CalendarComponents, ComponentsOfADateInTheCalendarsZone) {
  Calendar newYork = calendar("America/New_York", "en_US");
  Date date = utc(2026, 1, 1, 3, 4, 5.5);  // 31 December 2025, 22:04:05.5 EST, a Wednesday
  auto c = newYork.dateComponents({Component::year, Component::month, Component::day, Component::hour,
                                   Component::minute, Component::second, Component::nanosecond, Component::weekday},
                                  date);
  EXPECT_EQ(c.year, 2025);
  EXPECT_EQ(c.month, 12);
  EXPECT_EQ(c.day, 31);
  EXPECT_EQ(c.hour, 22);
  EXPECT_EQ(c.minute, 4);
  EXPECT_EQ(c.second, 5);
  EXPECT_EQ(c.nanosecond, 500000000);
  EXPECT_EQ(c.weekday, 4);
  EXPECT_FALSE(c.era.has_value());
  EXPECT_EQ(newYork.component(Component::second, utc(1969, 12, 31, 23, 59, 58.75)), 58);
  EXPECT_EQ(newYork.dateFromComponents(c), date);
}

TEST(CalendarComponents, SameDayFollowsTheZone) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Calendar newYork = calendar("America/New_York", "en_US");
  Date lateBerlin = utc(2026, 5, 4, 21, 59);   // 23:59 in Berlin
  Date earlyBerlin = utc(2026, 5, 4, 22, 1);   // 00:01 on the next day in Berlin
  EXPECT_FALSE(berlin.isDateInSameDayAs(lateBerlin, earlyBerlin));
  EXPECT_TRUE(newYork.isDateInSameDayAs(lateBerlin, earlyBerlin));
  EXPECT_TRUE(berlin.isDateInSameDayAs(utc(2026, 5, 4, 22), utc(2026, 5, 5, 21, 59, 59)));
}

TEST(CalendarComponents, TodayIsReadFromTheClock) {
  ManualClock clock(utc(2026, 5, 4, 23, 30));
  ScopedClock scoped(clock);
  Calendar berlin = calendar("Europe/Berlin", "de_DE");  // it is 01:30 on 5 May there
  EXPECT_TRUE(berlin.isDateInToday(utc(2026, 5, 4, 22)));
  EXPECT_FALSE(berlin.isDateInToday(utc(2026, 5, 4, 21, 59)));
  clock.advance(kDay);
  EXPECT_FALSE(berlin.isDateInToday(utc(2026, 5, 4, 22)));
}

TEST(CalendarSymbols, WeekdaySymbolsStartOnSundayInTheLocalesLanguage) {
  Calendar english = calendar("UTC", "en_US");
  english.setFirstWeekday(2);
  EXPECT_EQ(english.weekdaySymbols(),
            (std::vector<std::string>{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"}));
  EXPECT_EQ(english.shortWeekdaySymbols(),
            (std::vector<std::string>{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"}));
  EXPECT_EQ(english.veryShortWeekdaySymbols(), (std::vector<std::string>{"S", "M", "T", "W", "T", "F", "S"}));
  Calendar german = calendar("UTC", "de_DE");
  EXPECT_EQ(german.veryShortWeekdaySymbols(), (std::vector<std::string>{"S", "M", "D", "M", "D", "F", "S"}));
  EXPECT_EQ(german.weekdaySymbols().front(), "Sonntag");
}

TEST(CalendarCurrent, ZoneAndWeekRulesComeFromTheEnvironment) {
  testing::ScopedEnvironment environment;
  environment.set("TZ", "Europe/Berlin");
  environment.set("LC_ALL", std::nullopt);
  environment.set("LC_TIME", std::nullopt);
  environment.set("LANG", "de_DE.UTF-8");
  Calendar german = Calendar::current();
  EXPECT_EQ(german.timeZone().identifier(), "Europe/Berlin");
  EXPECT_EQ(german.locale().identifier(), "de_DE");
  EXPECT_EQ(german.firstWeekday(), 2);
  EXPECT_EQ(german.minimumDaysInFirstWeek(), 4);

  environment.set("TZ", "America/New_York");
  environment.set("LANG", "en_US.UTF-8");
  Calendar american = Calendar::current();
  EXPECT_EQ(american.firstWeekday(), 1);
  EXPECT_EQ(american.minimumDaysInFirstWeek(), 1);
  EXPECT_EQ(american.startOfDay(utc(2026, 3, 8, 17)), utc(2026, 3, 8, 5));
  EXPECT_FALSE(german == american);
  EXPECT_TRUE(american == Calendar::current());
}

TEST(CalendarCurrent, ChangingZoneOrLocaleOfACopyLeavesTheOriginal) {
  Calendar original = calendar("Europe/Berlin", "de_DE");
  Calendar moved = original;
  moved.setTimeZone(testing::zone("America/New_York"));
  moved.setLocale(Locale("en_US"));
  EXPECT_EQ(original.timeZone().identifier(), "Europe/Berlin");
  EXPECT_EQ(original.startOfDay(utc(2026, 3, 29, 10)), utc(2026, 3, 28, 23));
  EXPECT_EQ(moved.startOfDay(utc(2026, 3, 29, 10)), utc(2026, 3, 29, 4));
  EXPECT_EQ(moved.firstWeekday(), 1);
  // Week rules that were set survive a change of locale.
  Calendar custom = calendar("Europe/Berlin", "de_DE");
  custom.setFirstWeekday(7);
  custom.setLocale(Locale("en_US"));
  EXPECT_EQ(custom.firstWeekday(), 7);
  EXPECT_EQ(custom.minimumDaysInFirstWeek(), 1);
  custom.setMinimumDaysInFirstWeek(4);
  Calendar copy = custom;
  copy.setLocale(Locale("de_DE"));
  EXPECT_EQ(copy.firstWeekday(), 7);
  EXPECT_EQ(copy.minimumDaysInFirstWeek(), 4);
  EXPECT_EQ(custom.locale().identifier(), "en_US");
}

TEST(CalendarComponents, DatesThatAreNotFiniteLieOnNoDay) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  const Date nan(std::numeric_limits<double>::quiet_NaN());
  const Date infinity(std::numeric_limits<double>::infinity());
  EXPECT_EQ(berlin.component(Component::year, infinity), 0);
  EXPECT_EQ(berlin.dateComponents({Component::day}, nan), DateComponents{});
  EXPECT_EQ(berlin.dateComponents({Component::day}, Date(0), infinity), DateComponents{});
  EXPECT_EQ(berlin.dateByAdding(Component::day, 1, infinity), std::nullopt);
  EXPECT_EQ(berlin.startOfDay(infinity), infinity);
  EXPECT_EQ(berlin.dateIntervalOf(Component::day, nan), std::nullopt);
  EXPECT_FALSE(berlin.isDateInSameDayAs(nan, nan));
}

TEST(CalendarThreads, OneCalendarAndItsCopiesServeManyThreads) {
  Calendar shared = calendar("Europe/Berlin", "de_DE");
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);
  for (std::size_t t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      // Half the threads use the shared calendar, half a copy that changes.
      Calendar own = shared;
      for (int i = 0; i < 300; ++i) {
        const Calendar& cal = t % 2 == 0 ? shared : own;
        if (t % 2 == 1) own.setFirstWeekday(i % 2 == 0 ? 1 : 2);
        Date day = utc(2026, 3, 29, 10).addingTimeInterval(i * kDay);
        Date start = cal.startOfDay(day);
        if (cal.component(Component::hour, start) != 0 || cal.dateByAdding(Component::day, 1, start) <= day) {
          ++wrong[t];
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
  EXPECT_EQ(shared.firstWeekday(), 2);
}

}  // namespace
}  // namespace kestrona
