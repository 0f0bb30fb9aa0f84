#include "SharedCore/Support/TimeText/TimeIntervalParsing.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

struct Case {
  const char* text;
  std::optional<double> seconds;
};

void expectAll(std::initializer_list<Case> cases) {
  for (const Case& c : cases) EXPECT_EQ(toTimeInterval(c.text), c.seconds) << '"' << c.text << '"';
}

TEST(TimeIntervalParsing, PlainNumbersAreMinutes) {
  expectAll({{"0", 0},
             {"90", 5400},
             {"1.5", 90},
             {"1,5", 90},
             {"  \n 90 \t", 5400},
             {"1 5", 900},  // blanks inside are deleted
             {"-5", -300},
             {"+5", 300},
             {"1e1", 600},
             {"1E1", 600},
             {"2.5e-1", 15},
             {"0x10", 960}});
  EXPECT_TRUE(std::isinf(*toTimeInterval("inf")));
  EXPECT_TRUE(std::isnan(*toTimeInterval("NaN")));
}

TEST(TimeIntervalParsing, ClockTimes) {
  expectAll({{"01:30:15", 5415},
             {"1:30:15", 5415},
             {"23:59:59", 86399},
             {"1:30", 5400},
             {"01:30", 5400},
             {"0:05", 300},
             {"25:00", std::nullopt},
             {"24:00", std::nullopt},
             {"24:00:00", std::nullopt},
             {"1:75", std::nullopt},
             {"1:5", std::nullopt},
             {"1:30:75", std::nullopt}});
}

TEST(TimeIntervalParsing, UnitsForHoursMinutesAndSeconds) {
  expectAll({{"1h30m15s", 5415},
             {"1h 30m 15sec", 5415},
             {"1h 30m", 5400},
             {"1 H 30 Min", 5400},
             {"2h30m", 9000},
             {"2h", 7200},
             {"0.5h", 1800},
             {"1.5h", 5400},
             {"1,5h", 5400},
             {"90m", 5400},
             {"15 min", 900},
             {"15MIN", 900}});
}

TEST(TimeIntervalParsing, GapsOfTheGrammarAreKept) {
  expectAll({{"", std::nullopt},
             {"   ", std::nullopt},
             {"90s", std::nullopt},
             {"45sec", std::nullopt},
             {"1h30", std::nullopt},
             {"2m30s", std::nullopt},
             {"1h2m3s4", std::nullopt},  // four numbers, and no step takes four
             {"1.5.5h", std::nullopt},
             {"1\t5", std::nullopt},
             {"1:30pm", std::nullopt},
             {"abc", std::nullopt},
             {"h", std::nullopt}});
  // strtod stops at a NUL, so a number must not hold one.
  EXPECT_EQ(toTimeInterval(std::string_view("\0" "5", 2)), std::nullopt);
  EXPECT_EQ(toTimeInterval(std::string_view("5\0", 2)), std::nullopt);
}

// The hours and minutes steps read the numbers that their inner pattern
// finds anywhere in the text, by the same rule as a whole text: a number
// may not begin with white space. "." does not cross a line end, so after
// one the inner pattern starts its match at a tab inside the text.
TEST(TimeIntervalParsing, NumbersFoundInsideTheTextMayNotBeginWithWhiteSpace) {
  expectAll({{"a\n2h", 7200},
             {"a\n\t2h", std::nullopt},
             {"a\n30m", 1800},
             {"a\n\t30m", std::nullopt},
             {"x\r\t1.5h", std::nullopt}});
}

TEST(TimeIntervalParsing, DoesNotDependOnTheMachinesZoneOrLocale) {
  testing::ScopedEnvironment environment;
  for (const char* zone : {"Pacific/Kiritimati", "America/St_Johns", "UTC"}) {
    environment.set("TZ", zone);
    environment.set("LC_ALL", "ar_EG.UTF-8");
    EXPECT_EQ(toTimeInterval("01:30:15"), 5415) << zone;
    EXPECT_EQ(toTimeInterval("1:30"), 5400) << zone;
    EXPECT_EQ(toTimeInterval("1,5"), 90) << zone;
  }
}

}  // namespace
}  // namespace kestrona
