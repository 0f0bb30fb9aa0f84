#include "SharedCore/Support/TimeText/DateExtensions.h"

#include <gtest/gtest.h>

#include <limits>

#include "SharedCore/Support/TimeText/DateIntervalExtensions.h"
#include "SharedCore/Support/TimeText/LocaleExtensions.h"
#include "tests/Platform/Time/TestDates.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::calendar;
using testing::utc;

// The user's zone and locale are fixed for every test here, because the
// month and year starts and the date texts read them.
class DateExtensions : public ::testing::Test {
 protected:
  void SetUp() override {
    environment.set("TZ", "Europe/Berlin");
    environment.set("LC_ALL", std::nullopt);
    environment.set("LC_TIME", std::nullopt);
    environment.set("LC_MESSAGES", std::nullopt);
    environment.set("LANGUAGE", std::nullopt);
    environment.set("LANG", "de_DE.UTF-8");
  }
  testing::ScopedEnvironment environment;
};

struct Expected {
  DateForType type;
  Date date;
};

void expectPeriods(Date date, const Calendar& cal, std::initializer_list<Expected> rows) {
  for (const Expected& row : rows) {
    EXPECT_EQ(dateFor(date, row.type, cal), row.date) << static_cast<int>(row.type);
  }
}

TEST_F(DateExtensions, PeriodsOfTheBerlinSpringChangeWithMondayWeeks) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  expectPeriods(utc(2026, 3, 29, 10), berlin,  // Sunday 12:00, on the 23-hour day
                {{DateForType::startOfDay, utc(2026, 3, 28, 23)},
                 {DateForType::endOfDay, utc(2026, 3, 29, 22)},
                 {DateForType::startOfWeek, utc(2026, 3, 22, 23)},
                 {DateForType::endOfWeek, utc(2026, 3, 29, 22)},
                 {DateForType::startOfMonth, utc(2026, 2, 28, 23)},
                 {DateForType::endOfMonth, utc(2026, 3, 31, 22)},
                 {DateForType::startOfYear, utc(2025, 12, 31, 23)},
                 {DateForType::endOfYear, utc(2026, 12, 31, 23)}});
  // The first instant of a period is in it; the end is the next period's start.
  EXPECT_EQ(dateFor(utc(2026, 3, 29, 22), DateForType::startOfDay, berlin), utc(2026, 3, 29, 22));
  EXPECT_EQ(dateFor(utc(2026, 3, 29, 22), DateForType::startOfWeek, berlin), utc(2026, 3, 29, 22));
  EXPECT_EQ(dateFor(utc(2026, 3, 29, 21, 59, 59), DateForType::endOfWeek, berlin), utc(2026, 3, 29, 22));
}

TEST_F(DateExtensions, PeriodsOfTheNewYorkAutumnChangeWithSundayAndMondayWeeks) {
  environment.set("TZ", "America/New_York");
  environment.set("LANG", "en_US.UTF-8");
  Calendar newYork = calendar("America/New_York", "en_US");
  Date sundayNoon = utc(2026, 11, 1, 17);  // on the 25-hour day
  expectPeriods(sundayNoon, newYork,
                {{DateForType::startOfDay, utc(2026, 11, 1, 4)},
                 {DateForType::endOfDay, utc(2026, 11, 2, 5)},
                 {DateForType::startOfWeek, utc(2026, 11, 1, 4)},
                 {DateForType::endOfWeek, utc(2026, 11, 8, 5)},
                 {DateForType::startOfMonth, utc(2026, 11, 1, 4)},
                 {DateForType::endOfMonth, utc(2026, 12, 1, 5)}});
  newYork.setFirstWeekday(2);
  expectPeriods(sundayNoon, newYork,
                {{DateForType::startOfWeek, utc(2026, 10, 26, 4)}, {DateForType::endOfWeek, utc(2026, 11, 2, 5)}});
}

TEST_F(DateExtensions, PeriodsAroundTheMidnightThatSaoPauloSkipped) {
  // On 2018-11-04 the clocks went from 00:00 straight to 01:00 (-03 to -02).
  environment.set("TZ", "America/Sao_Paulo");
  Calendar saoPaulo = calendar("America/Sao_Paulo", "pt_BR");  // weeks begin on Sunday
  expectPeriods(utc(2018, 11, 4, 15), saoPaulo,
                {{DateForType::startOfDay, utc(2018, 11, 4, 3)},
                 {DateForType::endOfDay, utc(2018, 11, 5, 2)},
                 {DateForType::startOfWeek, utc(2018, 11, 4, 3)},
                 {DateForType::endOfWeek, utc(2018, 11, 11, 2)},
                 {DateForType::startOfMonth, utc(2018, 11, 1, 3)},
                 {DateForType::endOfMonth, utc(2018, 12, 1, 2)},
                 {DateForType::startOfYear, utc(2018, 1, 1, 2)},
                 {DateForType::endOfYear, utc(2019, 1, 1, 2)}});
  // The day and week before end where the skipped day begins, at 01:00.
  expectPeriods(utc(2018, 11, 3, 15), saoPaulo,
                {{DateForType::endOfDay, utc(2018, 11, 4, 3)}, {DateForType::endOfWeek, utc(2018, 11, 4, 3)}});
}

// Around each change of the clocks, every period's end is the start of the
// next one and every start the end of the one before, so periods tile the
// time line: a gap or an overlap of an hour shows up here.
TEST_F(DateExtensions, PeriodsTileTheTimeLineAcrossDaylightSavingChanges) {
  struct Change {
    const char* zone;
    const char* locale;
    Date at;
  };
  const Change changes[] = {
      {"Europe/Berlin", "de_DE", utc(2026, 3, 29, 1)},      {"Europe/Berlin", "de_DE", utc(2026, 10, 25, 1)},
      {"America/New_York", "en_US", utc(2026, 3, 8, 7)},    {"America/New_York", "en_US", utc(2026, 11, 1, 6)},
      {"America/Sao_Paulo", "pt_BR", utc(2018, 11, 4, 3)},  {"America/Sao_Paulo", "pt_BR", utc(2019, 2, 17, 2)},
  };
  const std::pair<DateForType, DateForType> periods[] = {{DateForType::startOfDay, DateForType::endOfDay},
                                                         {DateForType::startOfWeek, DateForType::endOfWeek},
                                                         {DateForType::startOfMonth, DateForType::endOfMonth},
                                                         {DateForType::startOfYear, DateForType::endOfYear}};
  for (const Change& change : changes) {
    environment.set("TZ", change.zone);
    Calendar cal = calendar(change.zone, change.locale);
    for (double offset = -9 * testing::kDay; offset <= 9 * testing::kDay; offset += 5 * testing::kHour + 1234) {
      Date date = change.at.addingTimeInterval(offset);
      for (auto [startType, endType] : periods) {
        SCOPED_TRACE(::testing::Message() << change.zone << " " << date.timeIntervalSince1970() << " "
                                          << static_cast<int>(startType));
        Date start = dateFor(date, startType, cal);
        Date end = dateFor(date, endType, cal);
        EXPECT_LE(start, date);
        EXPECT_LT(date, end);
        EXPECT_EQ(dateFor(end, startType, cal), end);
        EXPECT_EQ(dateFor(start.addingTimeInterval(-1), endType, cal), start);
      }
    }
  }
}

TEST_F(DateExtensions, WeekAcrossTheYearEnd) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Date newYearsEve = utc(2025, 12, 31, 12);
  EXPECT_EQ(dateFor(newYearsEve, DateForType::startOfWeek, berlin), utc(2025, 12, 28, 23));
  EXPECT_EQ(dateFor(newYearsEve, DateForType::endOfWeek, berlin), utc(2026, 1, 4, 23));
  Calendar sundays = berlin;
  sundays.setFirstWeekday(1);
  EXPECT_EQ(dateFor(newYearsEve, DateForType::startOfWeek, sundays), utc(2025, 12, 27, 23));
  EXPECT_EQ(dateFor(utc(2026, 1, 3, 12), DateForType::startOfWeek, sundays), utc(2025, 12, 27, 23));
}

TEST_F(DateExtensions, MonthAndYearStartsComeFromTheUsersCalendar) {
  // The user is in New York; the report's calendar is Berlin's. 1 March
  // 03:00 UTC is still 28 February in New York.
  environment.set("TZ", "America/New_York");
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Date date = utc(2026, 3, 1, 3);
  EXPECT_EQ(dateFor(date, DateForType::startOfMonth, berlin), utc(2026, 2, 1, 5));
  // The month is then added in the given calendar: 1 February 06:00 in
  // Berlin plus one month.
  EXPECT_EQ(dateFor(date, DateForType::endOfMonth, berlin), utc(2026, 3, 1, 5));
  EXPECT_EQ(dateFor(date, DateForType::startOfYear, berlin), utc(2026, 1, 1, 5));
  EXPECT_EQ(dateFor(date, DateForType::startOfDay, berlin), utc(2026, 2, 28, 23));
}

TEST_F(DateExtensions, PeriodsOfADateThatIsNotFiniteAreTheDateItself) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  const Date infinity(std::numeric_limits<double>::infinity());
  for (DateForType type : {DateForType::startOfDay, DateForType::endOfWeek, DateForType::startOfMonth,
                           DateForType::endOfYear}) {
    EXPECT_EQ(dateFor(infinity, type, berlin), infinity);
  }
  EXPECT_EQ(toString(infinity, DateStringFormat::isoDate, DateStringTimeZone::local, Locale::current()), "");
}

TEST_F(DateExtensions, RoundingToMinutesOnTheEpochGrid) {
  EXPECT_EQ(roundedTo(utc(2026, 5, 4, 10, 7, 30), 15), utc(2026, 5, 4, 10, 15));
  EXPECT_EQ(roundedTo(utc(2026, 5, 4, 10, 7, 29.999), 15), utc(2026, 5, 4, 10));
  EXPECT_EQ(roundedTo(utc(2026, 5, 4, 10, 52, 30), 15), utc(2026, 5, 4, 11));
  // Before 1970 halves still go away from zero, that is down.
  EXPECT_EQ(roundedTo(Date(-450), 15), Date(-900));
  EXPECT_EQ(roundedTo(Date(-449), 15), Date(0));
  // The grid counts from 1970, not from midnight: 7-minute steps of 420 s.
  EXPECT_EQ(roundedTo(Date(1000), 7), Date(840));
  EXPECT_EQ(roundedTo(Date(1050), 7), Date(1260));
}

TEST_F(DateExtensions, DaysSinceCountsCalendarDays) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Date justAfterMidnight = utc(2026, 5, 4, 22, 1);  // 00:01 on 5 May
  Date justBefore = utc(2026, 5, 4, 21, 59);        // 23:59 on 4 May
  EXPECT_EQ(numberOfDaysSince(justAfterMidnight, justBefore, berlin), 1);
  EXPECT_EQ(numberOfDaysSince(justBefore, justAfterMidnight, berlin), -1);
  EXPECT_EQ(numberOfDaysSince(justBefore, utc(2026, 5, 3, 22), berlin), 0);
  // Over the short and the long day.
  EXPECT_EQ(numberOfDaysSince(utc(2026, 3, 29, 22, 30), utc(2026, 3, 28, 23, 30), berlin), 1);
  EXPECT_EQ(numberOfDaysSince(utc(2026, 3, 30, 21), utc(2026, 3, 27, 23), berlin), 2);
  // 25 hours from the start of 25 October to that of the 26th: one day;
  // 24 hours 59 minutes within the 25th: none.
  EXPECT_EQ(numberOfDaysSince(utc(2026, 10, 25, 23), utc(2026, 10, 24, 22), berlin), 1);
  EXPECT_EQ(numberOfDaysSince(utc(2026, 10, 25, 22, 59), utc(2026, 10, 24, 22), berlin), 0);
}

TEST_F(DateExtensions, SameDayInTheGivenCalendar) {
  Calendar berlin = calendar("Europe/Berlin", "de_DE");
  Calendar newYork = calendar("America/New_York", "en_US");
  Date late = utc(2026, 5, 4, 21, 59);
  Date early = utc(2026, 5, 4, 22, 1);
  EXPECT_FALSE(compare(late, IsSameDay{early}, berlin));
  EXPECT_TRUE(compare(late, IsSameDay{early}, newYork));
  EXPECT_TRUE(compare(early, IsSameDay{utc(2026, 5, 5, 21, 59)}, berlin));
}

TEST_F(DateExtensions, DateTextsInTheLocalZone) {
  Date lateEvening = utc(2026, 3, 28, 23, 30);
  EXPECT_EQ(rawValue(DateStringFormat::isoDate), "yyyy-MM-dd");
  EXPECT_EQ(toString(lateEvening, DateStringFormat::isoDate, DateStringTimeZone::local, Locale::current()),
            "2026-03-29");
  environment.set("TZ", "UTC");
  EXPECT_EQ(toString(lateEvening, DateStringFormat::isoDate, DateStringTimeZone::local, Locale("en_US_POSIX")),
            "2026-03-28");
}

TEST_F(DateExtensions, SecondsAndFlooring) {
  EXPECT_EQ(toSecondsString(Date(65.9)), "05");
  EXPECT_EQ(toSecondsString(Date(-0.5)), "59");
  // The seconds are those of the user's calendar: Monrovia kept a clock
  // 44 minutes 30 seconds behind GMT until 1972.
  environment.set("TZ", "Africa/Monrovia");
  EXPECT_EQ(toSecondsString(Date(65)), "35");
  EXPECT_EQ(flooredToSeconds(Date(1.9)), Date(1));
  EXPECT_EQ(flooredToSeconds(Date(-0.5)), Date(-1));
  EXPECT_EQ(flooredToSeconds(Date(3)), Date(3));
}

TEST_F(DateExtensions, ShortTimeInThePreferredLanguage) {
  Date morning = utc(2026, 1, 15, 8, 5);  // 09:05 in Berlin
  EXPECT_EQ(localizedShortTimeString(morning), "09:05");
  environment.set("LANG", "en_US.UTF-8");
  EXPECT_EQ(localizedShortTimeString(morning), "9:05\u202FAM");
  environment.set("LANGUAGE", "de:en");
  EXPECT_EQ(localizedShortTimeString(morning), "09:05");
}

TEST_F(DateExtensions, PreferredLocaleAndTheTwentyFourHourClock) {
  environment.set("LANG", "fr_FR.UTF-8");
  environment.set("LANGUAGE", "de_DE:en");
  EXPECT_EQ(preferredLocale().identifier(), "de-DE");
  environment.set("LANGUAGE", std::nullopt);
  EXPECT_EQ(preferredLocale().identifier(), "fr-FR");
  // With no language the current locale serves.
  environment.set("LC_ALL", "C");
  EXPECT_EQ(preferredLocale().identifier(), "en_US_POSIX");

  EXPECT_FALSE(is24HoursFormat(Locale("en_US")));
  EXPECT_FALSE(is24HoursFormat(Locale("ko_KR")));
  EXPECT_TRUE(is24HoursFormat(Locale("de_DE")));
  EXPECT_TRUE(is24HoursFormat(Locale("en_GB")));
  EXPECT_TRUE(is24HoursFormat(Locale("ja_JP")));
}

TEST_F(DateExtensions, RoundingToZeroMinutesIsAProgrammingError) {
  EXPECT_DEATH(roundedTo(Date(100), 0), "Fatal error: roundedTo: a grid of 0 minutes");
}

TEST(IntersectsStrict, TouchingIntervalsWithLengthDoNotCount) {
  DateInterval ten(Date(10 * 3600), Date(11 * 3600));
  DateInterval eleven(Date(11 * 3600), Date(12 * 3600));
  EXPECT_FALSE(intersectsStrict(ten, eleven));
  EXPECT_FALSE(intersectsStrict(eleven, ten));
  EXPECT_TRUE(intersectsStrict(ten, DateInterval(Date(10.5 * 3600), Date(12 * 3600))));
  EXPECT_TRUE(intersectsStrict(ten, ten));
  EXPECT_FALSE(intersectsStrict(ten, DateInterval(Date(12 * 3600), Date(13 * 3600))));
}

TEST(IntersectsStrict, ZeroLengthIntervalsCountAtEitherEnd) {
  DateInterval ten(Date(10 * 3600), Date(11 * 3600));
  DateInterval atEleven(Date(11 * 3600), 0.0);
  DateInterval atTen(Date(10 * 3600), 0.0);
  EXPECT_TRUE(intersectsStrict(ten, atEleven));
  EXPECT_TRUE(intersectsStrict(atEleven, ten));
  EXPECT_TRUE(intersectsStrict(ten, atTen));
  EXPECT_TRUE(intersectsStrict(atTen, atTen));
  EXPECT_TRUE(intersectsStrict(ten, DateInterval(Date(10.5 * 3600), 0.0)));
  EXPECT_FALSE(intersectsStrict(ten, DateInterval(Date(11 * 3600 + 1), 0.0)));
  EXPECT_FALSE(intersectsStrict(atTen, atEleven));
}

}  // namespace
}  // namespace kestrona
