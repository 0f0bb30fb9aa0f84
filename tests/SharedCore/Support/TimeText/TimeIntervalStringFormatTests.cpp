#include "SharedCore/Support/TimeText/TimeIntervalStringFormat.h"

#include <gtest/gtest.h>

#include <limits>

namespace kestrona {
namespace {

using Format = TimeIntervalStringFormat;

struct Row {
  Format format;
  const char* positive;  // 3725 s
  const char* negative;  // -3725 s
};

TEST(TimeIntervalStringFormat, EveryFormWritesBothSignsAsRequired) {
  const Row rows[] = {
      {Format::digitalHours, "1", "1"},
      {Format::digitalHoursMinutes, "1:02", "-1:02"},
      {Format::digitalHoursMinutesWithLeadingZero, "01:02", "-01:02"},
      {Format::digitalHoursMinutesSeconds, "1:02:05", "-1:02:05"},
      {Format::digitalHoursMinutesSecondsWithLeadingZero, "01:02:05", "-01:02:05"},
      {Format::seconds, "05", "05"},
      {Format::decimalHours, "1.03", "--1.03"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(toString(3725, row.format), row.positive) << rawValue(row.format);
    EXPECT_EQ(toString(-3725, row.format), row.negative) << rawValue(row.format);
  }
}

TEST(TimeIntervalStringFormat, ZeroFractionsAndLongDurations) {
  EXPECT_EQ(toString(0, Format::digitalHours), "0");
  EXPECT_EQ(toString(0, Format::digitalHoursMinutes), "0:00");
  EXPECT_EQ(toString(0, Format::digitalHoursMinutesSecondsWithLeadingZero), "00:00:00");
  EXPECT_EQ(toString(0, Format::decimalHours), "0.00");
  // Fractions of a second are cut off, never rounded up.
  EXPECT_EQ(toString(59.9, Format::seconds), "59");
  EXPECT_EQ(toString(59.9, Format::digitalHoursMinutesSeconds), "0:00:59");
  EXPECT_EQ(toString(3599.99, Format::digitalHoursMinutes), "0:59");
  // The decimal form keeps the value's own sign: two minus signs.
  EXPECT_EQ(toString(-1800, Format::decimalHours), "--0.50");
  EXPECT_EQ(toString(-0.5, Format::digitalHoursMinutesSeconds), "-0:00:00");
  // Hours run past a day, and past two digits.
  EXPECT_EQ(toString(90000, Format::digitalHoursMinutes), "25:00");
  EXPECT_EQ(toString(360000 + 61, Format::digitalHoursMinutesSecondsWithLeadingZero), "100:01:01");
  // Near the limit the hours are those of the double, 8.888...e18.
  EXPECT_EQ(toString(3.2e22, Format::digitalHours), "8888888888888889344");
}

TEST(TimeIntervalStringFormat, ComponentsOfTheMagnitude) {
  EXPECT_EQ(hours(-7325.7), 2);
  EXPECT_EQ(minutes(-7325.7), 2);
  EXPECT_EQ(seconds(-7325.7), 5);
  EXPECT_EQ(minutes(3600), 0);
  EXPECT_EQ(seconds(119.999), 59);
}

TEST(TimeIntervalStringFormat, RawValuesAreTheDeclaredOrder) {
  int expected = 0;
  for (Format format : allCases<Format>) {
    EXPECT_EQ(rawValue(format), expected);
    EXPECT_EQ(fromRawValue<Format>(expected), format);
    ++expected;
  }
  EXPECT_EQ(fromRawValue<Format>(7), std::nullopt);
  EXPECT_EQ(fromRawValue<Format>(-1), std::nullopt);
}

TEST(TimeIntervalStringFormatDeathTest, UnusableDurationsStopTheProcess) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_DEATH(toString(nan, Format::digitalHoursMinutes), "Fatal error: Duration is not finite");
  EXPECT_DEATH(toString(infinity, Format::decimalHours), "Fatal error: Duration is not finite");
  EXPECT_DEATH(toString(-infinity, Format::seconds), "Fatal error: Duration is not finite");
  EXPECT_DEATH(toString(3.4e22, Format::seconds), "Fatal error: Duration is too large");
  EXPECT_DEATH(hours(1e300), "Fatal error: Duration is too large");
  EXPECT_DEATH(seconds(nan), "Fatal error: Duration is not finite");
}

TEST(EffectiveDuration, WholeSecondsOfFlooredDatesAndNeverNegative) {
  EXPECT_EQ(effectiveDuration(Date(100), Date(100)), 0);
  EXPECT_EQ(effectiveDuration(Date(200), Date(100)), 0);
  EXPECT_EQ(effectiveDuration(Date(100), Date(160)), 60);
  // Both ends are floored first: 10.9 to 20.1 is 10 to 20.
  EXPECT_EQ(effectiveDuration(Date(10.9), Date(20.1)), 10);
  EXPECT_EQ(effectiveDuration(Date(10.1), Date(10.9)), 0);
  EXPECT_EQ(effectiveDuration(Date(-0.5), Date(0.5)), 1);
}

}  // namespace
}  // namespace kestrona
