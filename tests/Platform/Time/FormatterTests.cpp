#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "Platform/Time/DateFormatter.h"
#include "Platform/Time/NumberFormatter.h"
#include "tests/Platform/Time/TestDates.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::utc;
using testing::zone;

constexpr const char* kNoBreakSpace = "\u00A0";
constexpr const char* kNarrowNoBreakSpace = "\u202F";

DateFormatter patternFormatter(const char* pattern, const char* zoneIdentifier = "UTC",
                               const char* locale = "en_US_POSIX") {
  DateFormatter formatter;
  formatter.setDateFormat(pattern);
  formatter.setTimeZone(zone(zoneIdentifier));
  formatter.setLocale(Locale(locale));
  return formatter;
}

TEST(DateFormatter, WritesPatternsInItsZone) {
  Date lateEvening = utc(2026, 3, 28, 23, 30);
  EXPECT_EQ(patternFormatter("yyyy-MM-dd", "UTC").string(lateEvening), "2026-03-28");
  EXPECT_EQ(patternFormatter("yyyy-MM-dd HH:mm", "Europe/Berlin").string(lateEvening), "2026-03-29 00:30");
  EXPECT_EQ(patternFormatter("yyyy-MM-dd HH:mm", "America/New_York").string(lateEvening), "2026-03-28 19:30");
  EXPECT_EQ(patternFormatter("EEEE d MMMM", "UTC", "de_DE").string(lateEvening), "Samstag 28 März");
}

TEST(DateFormatter, ReadsOnlyWholeTextsWithFieldsInRange) {
  DateFormatter clock = patternFormatter("HH:mm");
  EXPECT_EQ(clock.date("01:30"), utc(1970, 1, 1, 1, 30));
  EXPECT_EQ(clock.date("1:30"), utc(1970, 1, 1, 1, 30));
  EXPECT_EQ(clock.date("23:59"), utc(1970, 1, 1, 23, 59));
  EXPECT_EQ(clock.date(" 01:30"), utc(1970, 1, 1, 1, 30));
  for (const char* rejected : {"24:00", "25:00", "1:75", "1:60", "1:5", "01:30x", "01:30 ", "01:30:00", "", "1h30", "-1:30"}) {
    EXPECT_EQ(clock.date(rejected), std::nullopt) << rejected;
  }
  DateFormatter withSeconds = patternFormatter("HH:mm:ss");
  EXPECT_EQ(withSeconds.date("01:30:15"), utc(1970, 1, 1, 1, 30, 15));
  EXPECT_EQ(withSeconds.date("01:30:60"), std::nullopt);
}

TEST(DateFormatter, ReadsInItsZoneAndLenientlyWhenAsked) {
  DateFormatter day = patternFormatter("yyyy-MM-dd HH:mm", "Europe/Berlin");
  EXPECT_EQ(day.date("2026-10-25 12:00"), utc(2026, 10, 25, 11));
  EXPECT_EQ(day.date("2026-02-30 12:00"), std::nullopt);
  day.setLenient(true);
  EXPECT_TRUE(day.isLenient());
  EXPECT_EQ(day.date("2026-02-30 12:00"), utc(2026, 3, 2, 11));
}

TEST(DateFormatter, WithoutAFormatWritesNothingAndReadsNothing) {
  DateFormatter formatter;
  EXPECT_EQ(formatter.string(utc(2020, 12, 9, 9, 15)), "");
  EXPECT_EQ(formatter.date("09 December 2020 09:15:00"), std::nullopt);
  EXPECT_EQ(formatter.date(""), std::nullopt);
}

TEST(DateFormatter, ShortTimeStyleFollowsTheLocale) {
  DateFormatter formatter;
  formatter.setTimeZone(zone("Europe/Berlin"));
  formatter.setTimeStyle(DateFormatter::Style::shortStyle);
  Date morning = utc(2026, 1, 15, 8, 5);
  formatter.setLocale(Locale("en_US"));
  EXPECT_EQ(formatter.string(morning), std::string("9:05") + kNarrowNoBreakSpace + "AM");
  formatter.setLocale(Locale("de_DE"));
  EXPECT_EQ(formatter.string(morning), "09:05");
  formatter.setDateStyle(DateFormatter::Style::shortStyle);
  EXPECT_EQ(formatter.string(morning), "15.01.26, 09:05");
}

TEST(DateFormatter, TemplatesResolveToTheLocalesClock) {
  EXPECT_EQ(DateFormatter::dateFormatFromTemplate("j", Locale("en_US")), std::string("h") + kNarrowNoBreakSpace + "a");
  EXPECT_EQ(DateFormatter::dateFormatFromTemplate("j", Locale("de_DE")), "HH 'Uhr'");
  EXPECT_EQ(DateFormatter::dateFormatFromTemplate("j", Locale("en_GB")), "HH");
  EXPECT_EQ(DateFormatter::dateFormatFromTemplate("yMMMd", Locale("en_US")), "MMM d, y");
}

TEST(DateFormatter, NewFormattersTakeTheEnvironmentsZoneAndLocale) {
  testing::ScopedEnvironment environment;
  environment.set("TZ", "Asia/Tokyo");
  environment.set("LC_ALL", "ja_JP.UTF-8");
  DateFormatter formatter;
  EXPECT_EQ(formatter.timeZone().identifier(), "Asia/Tokyo");
  EXPECT_EQ(formatter.locale().identifier(), "ja_JP");
  formatter.setDateFormat("HH:mm");
  EXPECT_EQ(formatter.string(utc(2026, 1, 1)), "09:00");
}

TEST(DateFormatter, SharedFormatterIsSafeFromManyThreads) {
  DateFormatter formatter = patternFormatter("yyyy-MM-dd HH:mm:ss", "Europe/Berlin");
  std::vector<std::thread> threads;
  std::vector<int> failures(4, 0);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) {
        Date date = utc(2026, 1 + static_cast<unsigned>(t), 1 + static_cast<unsigned>(i % 28), i % 24);
        if (formatter.date(formatter.string(date)) != date) ++failures[static_cast<std::size_t>(t)];
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures, std::vector<int>(4, 0));
}

NumberFormatter numberFormatter(NumberFormatter::Style style, const char* locale) {
  NumberFormatter formatter;
  formatter.setLocale(Locale(locale));
  formatter.setNumberStyle(style);
  return formatter;
}

TEST(NumberFormatter, DecimalSeparatorsAndGroupingByLocale) {
  using Style = NumberFormatter::Style;
  EXPECT_EQ(numberFormatter(Style::decimal, "en_US").string(1234567.8912), "1,234,567.891");
  EXPECT_EQ(numberFormatter(Style::decimal, "de_DE").string(1234567.8912), "1.234.567,891");
  EXPECT_EQ(numberFormatter(Style::decimal, "fr_FR").string(1234567.8912),
            std::string("1") + kNarrowNoBreakSpace + "234" + kNarrowNoBreakSpace + "567,891");
  EXPECT_EQ(numberFormatter(Style::decimal, "en_US").string(-0.5), "-0.5");
  // The plain style: no grouping, no fraction, halves to even.
  NumberFormatter plain = numberFormatter(Style::noStyle, "de_DE");
  EXPECT_EQ(plain.string(1234.5), "1234");
  EXPECT_EQ(plain.string(1235.5), "1236");
  plain.setMaximumFractionDigits(1);
  EXPECT_EQ(plain.string(1.25), "1,2");
  EXPECT_EQ(plain.string(0.5), "0,5");
}

TEST(NumberFormatter, CurrencyByLocaleWithItsSpaces) {
  using Style = NumberFormatter::Style;
  EXPECT_EQ(numberFormatter(Style::currency, "en_US").string(1234.5), "$1,234.50");
  EXPECT_EQ(numberFormatter(Style::currency, "de_DE").string(1234.5), std::string("1.234,50") + kNoBreakSpace + "€");
  EXPECT_EQ(numberFormatter(Style::currency, "fr_FR").string(1234.5),
            std::string("1") + kNarrowNoBreakSpace + "234,50" + kNoBreakSpace + "€");
  EXPECT_EQ(numberFormatter(Style::currency, "ja_JP").string(1234.5), "￥1,234");
  NumberFormatter euroInUS = numberFormatter(Style::currency, "en_US");
  euroInUS.setCurrencyCode("EUR");
  EXPECT_EQ(euroInUS.string(3), "€3.00");
  EXPECT_EQ(euroInUS.currencySymbol(), "€");
  EXPECT_EQ(numberFormatter(Style::currency, "en_US").currencySymbol(), "$");
  EXPECT_EQ(numberFormatter(Style::currency, "de_DE").currencySymbol(), "€");
  EXPECT_EQ(numberFormatter(Style::currency, "de_DE").currencyCode(), "EUR");
}

TEST(NumberFormatter, FractionDigitsStayConsistent) {
  NumberFormatter dollars = numberFormatter(NumberFormatter::Style::currency, "en_US");
  EXPECT_EQ(dollars.minimumFractionDigits(), 2);
  dollars.setMaximumFractionDigits(1);
  EXPECT_EQ(dollars.minimumFractionDigits(), 1);
  dollars.setMinimumFractionDigits(0);
  EXPECT_EQ(dollars.string(999), "$999");
  EXPECT_EQ(dollars.string(1.25), "$1.2");
  dollars.setMinimumFractionDigits(3);
  EXPECT_EQ(dollars.maximumFractionDigits(), 3);
  EXPECT_EQ(dollars.string(1.5), "$1.500");
  // Setting the style again restores its defaults.
  dollars.setNumberStyle(NumberFormatter::Style::currency);
  EXPECT_EQ(dollars.string(1.5), "$1.50");
}

TEST(NumberFormatter, RoundingModes) {
  NumberFormatter formatter = numberFormatter(NumberFormatter::Style::decimal, "en_US");
  formatter.setMaximumFractionDigits(2);
  EXPECT_EQ(formatter.roundingMode(), NumberFormatter::RoundingMode::halfEven);
  EXPECT_EQ(formatter.string(0.125), "0.12");
  EXPECT_EQ(formatter.string(-0.125), "-0.12");
  formatter.setRoundingMode(NumberFormatter::RoundingMode::halfUp);
  EXPECT_EQ(formatter.string(0.125), "0.13");
  EXPECT_EQ(formatter.string(-0.125), "-0.13");
  formatter.setRoundingMode(NumberFormatter::RoundingMode::floor);
  EXPECT_EQ(formatter.string(-0.121), "-0.13");
  formatter.setRoundingMode(NumberFormatter::RoundingMode::down);
  EXPECT_EQ(formatter.string(-0.129), "-0.12");
}

TEST(NumberFormatter, PercentGroupingAndCompactForms) {
  using Style = NumberFormatter::Style;
  EXPECT_EQ(numberFormatter(Style::percent, "en_US").string(0.256), "26%");
  EXPECT_EQ(numberFormatter(Style::percent, "de_DE").string(0.256), std::string("26") + kNoBreakSpace + "%");
  NumberFormatter ungrouped = numberFormatter(Style::decimal, "en_US");
  ungrouped.setUsesGroupingSeparator(false);
  EXPECT_EQ(ungrouped.string(1234567), "1234567");

  NumberFormatter compact = numberFormatter(Style::decimal, "en_US");
  compact.setNotation(NumberFormatter::Notation::compactShort);
  compact.setMaximumFractionDigits(1);
  EXPECT_EQ(compact.string(1234), "1.2K");
  EXPECT_EQ(compact.string(999), "999");
  EXPECT_EQ(compact.string(2500000), "2.5M");
  NumberFormatter compactDollars = numberFormatter(Style::currency, "en_US");
  compactDollars.setNotation(NumberFormatter::Notation::compactShort);
  compactDollars.setMinimumFractionDigits(0);
  compactDollars.setMaximumFractionDigits(1);
  EXPECT_EQ(compactDollars.string(1234), "$1.2K");
  NumberFormatter compactEuros = numberFormatter(Style::currency, "de_DE");
  compactEuros.setNotation(NumberFormatter::Notation::compactShort);
  compactEuros.setMinimumFractionDigits(0);
  compactEuros.setMaximumFractionDigits(1);
  EXPECT_EQ(compactEuros.string(1234567), std::string("1,2") + kNoBreakSpace + "Mio." + kNoBreakSpace + "€");
}

TEST(NumberFormatter, NonFiniteValuesAreWritten) {
  NumberFormatter formatter = numberFormatter(NumberFormatter::Style::decimal, "en_US");
  EXPECT_EQ(formatter.string(std::numeric_limits<double>::quiet_NaN()), "NaN");
  EXPECT_EQ(formatter.string(-std::numeric_limits<double>::infinity()), "-∞");
}

}  // namespace
}  // namespace kestrona
